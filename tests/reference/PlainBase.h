// What all plain generators share: the file, the frame of calls, scalars, pointed-to values, arrays.

#ifndef SCRIVEL_TESTS_REFERENCE_PLAINBASE_H
#define SCRIVEL_TESTS_REFERENCE_PLAINBASE_H

#include <cctype>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <iomanip>
#include <iostream>
#include <locale>
#include <sstream>
#include <string>
#include <vector>

#include <sys/time.h>
#include <unistd.h>

#include <CADITypes.h>

namespace ScrivelTest
{

template <typename File>
class PlainBase
{
public:
    PlainBase(const char* name, const char* version) : logName(name), cadiVersion(version)
    {
        logFile.imbue(std::locale::classic());
    }
    PlainBase(const PlainBase&) = delete;
    PlainBase& operator=(const PlainBase&) = delete;
    virtual ~PlainBase() = default;

    // ---- Life of a log --------------------------------------------------------------------------

    virtual void SetWriteSecure(bool secure) { writeSecure = secure; }

    virtual void StartLogging()
    {
        callNo = 0;
        depth = 0;

        std::ostringstream fileName;
        fileName.imbue(std::locale::classic());
        fileName << logName << "-" << getpid() << ".xml";
        errno = 0;
        logFile.open(fileName.str());
        if (!logFile.good()) {
            std::cerr << "Scrivel: Unable to open logfile \"" << fileName.str() << "\"." << std::endl;
            if (errno != 0) {
                std::cerr << "    Error given by OS: " << strerror(errno) << std::endl;
            }
        }

        logFile << "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";
        logFile << "<" << logName << "-" << getpid() << "\n";
        gettimeofday(&startTime, nullptr);
        char buffer[256];
        const std::time_t now = time(nullptr);
        strftime(buffer, 32, "%Y-%m-%d %H:%M:%S", localtime(&now));
        logFile << " time=\"" << buffer << "\"\n";
        logFile << " CADI_version=\"" << cadiVersion << "\"\n";
        if (gethostname(buffer, 255) == 0) {
            logFile << " hostname=\"" << buffer << "\"\n";
        } else {
            logFile << " hostname=\"" << buffer << "*\"\n";
        }
        logFile << " OS=\"Linux\">\n";
        depth = depth + 1;
        FlushOutput(true, "");
    }

    virtual void EndLogging()
    {
        if (writeSecure) {
            logFile.seekp(lastFilePos);
        }
        FlushOutput(true, "");
        logFile.close();
    }

    virtual void FlushOutput(bool finalTag, std::string callName)
    {
        std::string tail;
        if (writeSecure) {
            lastFilePos = logFile.tellp();
            tail = finalTag ? GetFileEndTag() : "    </" + callName + ">\n";
        }
        pendingTail = tail;
        logFile << pendingTail;
        logFile.flush();
    }

    std::string GetFileEndTag()
    {
        std::ostringstream tag;
        tag.imbue(std::locale::classic());
        tag << "</" << logName << "-" << getpid() << ">\n";
        return tag.str();
    }

    void UpdateFilePointerPosition()
    {
        if (writeSecure) {
            lastFilePos = logFile.tellp();
        }
    }

    void SeekFilePointerPosition()
    {
        if (writeSecure) {
            logFile.seekp(lastFilePos);
        }
    }

    std::streamoff GetLastFilePointerPosition() { return lastFilePos; }
    std::streamoff GetCurrentFilePointerPosition() { return logFile.tellp(); }

    // ---- Calls and tags -------------------------------------------------------------------------

    virtual void WriteCloseInterruptedFunction(std::string callName)
    {
        const std::string rootEndTag = GetFileEndTag();
        if (rootEndTag != pendingTail && writeSecure) {
            lastFilePos = logFile.tellp();
        }
        if (writeSecure) {
            logFile.seekp(lastFilePos);
        }
        if (depth > 1) {
            WriteIdent(openCallName, false, true);
            std::ostringstream comment;
            comment.imbue(std::locale::classic());
            comment << "Call " << callNo << " (\"" << openCallName << "\") interrupted";
            WriteComment(comment.str());
        }
        openCallName = callName;
        callOpen = true;
    }

    virtual void WriteContinueFunction(unsigned int number, std::string callName)
    {
        if (writeSecure) {
            logFile.seekp(lastFilePos);
        }
        const bool elementIsOpen = number == callNo && callOpen;
        if (!elementIsOpen) {
            if (number != callNo) {
                if (callOpen) {
                    WriteIdent(openCallName, false, true);
                }
                std::ostringstream comment;
                comment.imbue(std::locale::classic());
                comment << "Continuing call " << number << " (\"" << callName << "\")";
                WriteComment(comment.str());
            }
            WriteTabs(true);
            logFile << "<" << callName << " call_num=\"" << number << "\">\n";
            depth = depth + 1;
        }
        WriteTimestamp("return_time", true);
        callOpen = false;
    }

    void WriteComment(std::string text)
    {
        if (writeSecure) {
            logFile.seekp(lastFilePos);
        }
        WriteTabs(false);
        logFile << "\n<!-- " << text << " -->\n\n";
        logFile.flush();
    }

    virtual void WriteTimestamp(const std::string& name, bool asElement)
    {
        timeval now;
        gettimeofday(&now, nullptr);
        long seconds = now.tv_sec - startTime.tv_sec;
        long microseconds = now.tv_usec - startTime.tv_usec;
        if (microseconds < 0) {
            microseconds = microseconds + 1000000;
            seconds = seconds - 1;
        }
        std::ostringstream elapsed;
        elapsed.imbue(std::locale::classic());
        elapsed << static_cast<std::uint32_t>(seconds) << "." << std::setw(6) << std::setfill('0')
                << static_cast<std::uint32_t>(microseconds) << " s";
        if (asElement) {
            WriteTabs(true);
            logFile << "<" << name << ">" << CheckString(elapsed.str()) << "</" << name << ">\n";
        } else {
            WriteTabs(false);
            logFile << " " << name << "=\"" << elapsed.str() << "\"";
        }
    }

    virtual void WriteIdent(std::string name, bool openTag, bool newline)
    {
        WriteTabs(openTag);
        logFile << "<";
        if (!openTag) {
            logFile << "/";
        }
        logFile << Cleaned(name) << ">";
        if (openTag) {
            depth = depth + 1;
        } else {
            depth = depth - 1;
        }
        if (newline) {
            logFile << "\n";
        }
    }

    virtual void WriteDetailedIdent(std::string name)
    {
        logFile << "    <" << Cleaned(name) << " call_num=\"" << callNo << "\"";
        WriteTimestamp("call_time", false);
        logFile << ">\n";
        depth = depth + 1;
    }

    virtual void WriteIdentWithoutTabs(std::string name)
    {
        logFile << "</" << Cleaned(name) << ">";
        depth = depth - 1;
        logFile << "\n";
    }

    virtual void WriteTabs(bool openTag)
    {
        for (unsigned int i = openTag ? 0 : 1; i < depth; ++i) {
            logFile << "    ";
        }
    }

    virtual void IncCallNo() { callNo = callNo + 1; }
    virtual unsigned int GetCallNo() { return callNo; }

    // ---- Scalars --------------------------------------------------------------------------------

    static std::string CheckChar(char character) { return CheckString(std::string(1, character)); }

    static std::string CheckString(std::string text)
    {
        std::string escaped;
        for (const char c : text) {
            const int byte = static_cast<unsigned char>(c);
            if (isprint(byte) == 0) {
                char piece[8];
                std::sprintf(piece, "\\x%02x", static_cast<unsigned int>(byte));
                escaped += piece;
            } else if (c == '"') {
                escaped += "&quot;";
            } else if (c == '&') {
                escaped += "&amp;";
            } else if (c == '\'') {
                escaped += "&apos;";
            } else if (c == '<') {
                escaped += "&lt;";
            } else if (c == '>') {
                escaped += "&gt;";
            } else {
                escaped += c;
            }
        }
        return escaped;
    }

    virtual void WriteNULLPointer(std::string ident)
    {
        WriteIdent(ident, true, false);
        logFile << "NULL";
        WriteIdentWithoutTabs(ident);
    }

    virtual void WriteAddress(std::string ident, unsigned long address)
    {
        WriteIdent(ident, true, false);
        if (address == 0) {
            logFile << "NULL";
        } else {
            InsertHex(address, 16);
        }
        WriteIdentWithoutTabs(ident);
    }

    void WriteChar(std::string ident, char value)
    {
        WriteIdent(ident, true, false);
        logFile << value;
        WriteIdentWithoutTabs(ident);
    }

    void WriteDecimal(std::string ident, unsigned long value)
    {
        WriteIdent(ident, true, false);
        logFile << value;
        WriteIdentWithoutTabs(ident);
    }

    void WriteString(std::string ident, std::string value)
    {
        const std::string escaped = CheckString(value);
        WriteIdent(ident, true, false);
        for (const char c : escaped) {
            logFile << c;
        }
        WriteIdentWithoutTabs(ident);
    }

    void WriteBool(std::string ident, bool value)
    {
        WriteIdent(ident, true, false);
        logFile << (value ? "true" : "false");
        WriteIdentWithoutTabs(ident);
    }

    void WriteByte(std::string ident, const unsigned char* bytes)
    {
        WriteIdent(ident, true, false);
        for (int i = 15; i >= 0; --i) {
            char digits[4];
            std::sprintf(digits, "%02x", static_cast<unsigned int>(bytes[i]));
            logFile << digits;
            if (i == 12 || i == 8 || i == 4 || i == 0) {
                logFile << " ";
            }
        }
        WriteIdentWithoutTabs(ident);
    }

    void WriteHex(std::string ident, unsigned long value, unsigned int digits)
    {
        WriteIdent(ident, true, false);
        InsertHex(value, digits);
        WriteIdentWithoutTabs(ident);
    }

    void WriteBin(std::string ident, unsigned long value, int)
    {
        WriteIdent(ident, true, false);
        for (int bit = 4; bit >= 0; --bit) {
            logFile << ((value >> bit) % 2 == 1);
        }
        WriteIdentWithoutTabs(ident);
    }

    void WriteCharString(std::string ident, const char* text)
    {
        if (text == nullptr) {
            WriteNULLPointer(ident);
        } else {
            WriteString(ident, text);
        }
    }

    // ---- Pointed-to values ----------------------------------------------------------------------

    void WriteCharPtrVal(std::string ident, char* value)
    {
        if (value == nullptr) {
            WriteNULLPointer(ident);
            return;
        }
        WriteIdent(ident, true, false);
        logFile << *value;
        WriteIdentWithoutTabs(ident);
    }

    void WriteDecimalPtrVal(std::string ident, unsigned int* value)
    {
        if (value == nullptr) {
            WriteNULLPointer(ident);
            return;
        }
        WriteDecimal(ident, *value);
    }

    void WriteDecimalPtrVal(std::string ident, unsigned long* value)
    {
        if (value == nullptr) {
            WriteNULLPointer(ident);
            return;
        }
        WriteDecimal(ident, *value);
    }

    void WriteDecimalPtrVal(std::string ident, std::nullptr_t) { WriteNULLPointer(ident); }

    void WriteStringPtrVal(std::string ident, std::string* value)
    {
        if (value == nullptr) {
            WriteNULLPointer(ident);
            return;
        }
        WriteString(ident, *value);
    }

    void WriteBoolPtrVal(std::string ident, bool* value)
    {
        if (value == nullptr) {
            WriteNULLPointer(ident);
            return;
        }
        WriteBool(ident, *value);
    }

    void WriteHexPtrVal(std::string ident, unsigned long* value, unsigned int digits)
    {
        if (value == nullptr) {
            WriteNULLPointer(ident);
            return;
        }
        WriteHex(ident, *value, digits);
    }

    void WriteBinPtrVal(std::string ident, unsigned long* value, int bits)
    {
        if (value == nullptr) {
            WriteNULLPointer(ident);
            return;
        }
        WriteBin(ident, *value, bits);
    }

    // ---- Arrays ---------------------------------------------------------------------------------

    void WriteBoolArray(std::string ident, const bool* items, unsigned int count)
    {
        WriteIdent(ident, true, true);
        if (items == nullptr) {
            WriteNULLPointer("bool_array");
        } else {
            for (unsigned int i = 0; i < count; ++i) {
                WriteBool("bool_array", items[i]);
            }
        }
        WriteIdent(ident, false, true);
    }

    void WriteCharArray(std::string ident, const char* items, unsigned int count)
    {
        WriteIdent(ident, true, true);
        if (items == nullptr) {
            WriteNULLPointer("string");
        } else {
            for (unsigned int i = 0; i < count; ++i) {
                WriteIdent(ident, true, false);
                logFile << CheckChar(items[i]);
                WriteIdentWithoutTabs(ident);
            }
        }
        WriteIdent(ident, false, true);
    }

    void WriteStringArray(std::string ident, char** items, unsigned int count)
    {
        WriteIdent(ident, true, true);
        if (items == nullptr) {
            WriteNULLPointer("string");
        } else {
            for (unsigned int i = 0; i < count; ++i) {
                WriteIdent(ident, true, false);
                WriteString(ident, items[i]);
                WriteIdentWithoutTabs(ident);
            }
        }
        WriteIdent(ident, false, true);
    }

    void WriteLinesByteArray(std::string ident, const unsigned char* data, unsigned int lineCount,
                             unsigned int bytesPerLine)
    {
        WriteIdent(ident, true, true);
        if (data == nullptr) {
            WriteNULLPointer(ident);
        } else {
            const unsigned char* const start = data + lineCount;
            const unsigned char* const end = start + bytesPerLine;
            for (unsigned int line = 0; line < lineCount; ++line) {
                for (const unsigned char* p = start; p < end; ++p) {
                    WriteByte("value", p);
                }
            }
        }
        WriteIdent(ident, false, true);
    }

    void WriteUint8Array(std::string ident, const unsigned char* items, unsigned int count, bool hex)
    {
        WriteIdent(ident, true, true);
        if (items == nullptr) {
            WriteNULLPointer(ident);
        } else {
            for (unsigned int i = 0; i < count; ++i) {
                if (hex) {
                    WriteHex("value", items[i], 2);
                } else {
                    WriteDecimal("value", items[i]);
                }
            }
        }
        WriteIdent(ident, false, true);
    }

    void WriteUint32Array(std::string ident, const unsigned int* items, unsigned int count, bool hex)
    {
        WriteIdent(ident, true, true);
        if (items == nullptr) {
            WriteNULLPointer(ident);
        } else {
            for (unsigned int i = 0; i < count; ++i) {
                if (hex) {
                    WriteHex("value", items[i], 8);
                } else {
                    WriteDecimal("value", items[i]);
                }
            }
        }
        WriteIdent(ident, false, true);
    }

    void WriteUint64Array(std::string ident, const unsigned long* items, unsigned int count, bool hex)
    {
        WriteIdent(ident, true, true);
        if (items == nullptr) {
            WriteNULLPointer("int");
        } else {
            for (unsigned int i = 0; i < count; ++i) {
                if (hex) {
                    WriteHex("int", items[i], 16);
                } else {
                    WriteDecimal("int", items[i]);
                }
            }
        }
        WriteIdent(ident, false, true);
    }

    // ---- Data -----------------------------------------------------------------------------------

    std::string logName;
    std::string cadiVersion;
    std::string pendingTail;
    File logFile;
    bool writeSecure = true;
    std::streamoff lastFilePos = 0;
    unsigned int callNo = 0;
    unsigned int depth = 0;
    std::string openCallName;
    bool callOpen = false;
    timeval startTime = {};
    std::vector<std::string> factoryErrorNames = {
        "CADIFACT_ERROR_OK",
        "CADIFACT_ERROR_GENERAL",
        "CADIFACT_ERROR_PARAMETER_UNKNOWN",
        "CADIFACT_ERROR_PARAMETER_MISSING",
        "CADIFACT_ERROR_PARAMETER_WRONG_TYPE",
        "CADIFACT_ERROR_PARAMETER_OUT_OF_RANGE",
        "CADIFACT_ERROR_PARAMETER_CONFLICT",
        "CADIFACT_ERROR_LICENCE_NOT_FOUND",
        "CADIFACT_ERROR_LICENCE_EXPIRED",
        "CADIFACT_ERROR_LICENCE_IN_USE",
        "CADIFACT_ERROR_TOO_MANY_INSTANCES",
        "CADIFACT_ERROR_INSTANCE_NAME_IN_USE",
        "CADIFACT_ERROR_OUT_OF_MEMORY",
        "CADIFACT_ERROR_RESOURCE_UNAVAILABLE",
    };

protected:
    static std::string Cleaned(const std::string& name)
    {
        if (name.empty()) {
            return "emptyIdent";
        }
        std::string cleaned;
        for (std::size_t i = 0; i < name.size(); ++i) {
            const int byte = static_cast<unsigned char>(name[i]);
            const bool letter = byte < 0x80 && isalpha(byte) != 0;
            const bool digit = byte >= '0' && byte <= '9' && i > 0;
            if (letter || digit || byte == '_' || byte == '-' || byte == '.') {
                cleaned += name[i];
            } else {
                cleaned += '_';
            }
        }
        return cleaned;
    }

    void InsertHex(unsigned long value, unsigned int digits)
    {
        logFile << "0x" << std::setw(static_cast<int>(digits)) << std::setfill('0') << std::hex << value
                << std::setw(0) << std::dec;
    }

    /// A name of the table, or the message and the value.
    void WriteNamed(const std::string& ident, const std::vector<std::string>& names, std::int32_t value,
                    const char* message)
    {
        WriteIdent(ident, true, false);
        if (value >= 0 && value < static_cast<std::int64_t>(names.size())) {
            logFile << names[static_cast<std::size_t>(value)];
        } else {
            logFile << message << std::hex << value << std::dec;
        }
        WriteIdentWithoutTabs(ident);
    }

    static unsigned long LowHalf(std::uint64_t value) { return value % (1UL << 32); }
    static unsigned long LowHalf(std::int64_t value)
    {
        return LowHalf(static_cast<std::uint64_t>(value));
    }

    // Connection-phase and run-phase generators write these alike.

    void ReturnType(const std::string& ident, eslapi::CADIReturn_t value)
    {
        WriteNamed(ident,
                   {"CADI_STATUS_OK", "CADI_STATUS_GeneralError", "CADI_STATUS_UnknownCommand",
                    "CADI_STATUS_IllegalArgument", "CADI_STATUS_CmdNotSupported",
                    "CADI_STATUS_ArgNotSupported", "CADI_STATUS_InsufficientResources",
                    "CADI_STATUS_TargetNotResponding", "CADI_STATUS_TargetBusy", "CADI_STATUS_BufferSize",
                    "CADI_STATUS_SecurityViolation", "CADI_STATUS_PermissionDenied"},
                   value, "Invalid return type: 0x");
    }

    void ValueDataType(const std::string& ident, eslapi::CADIValueDataType_t value)
    {
        WriteNamed(ident,
                   {"CADI_PARAM_INVALID", "CADI_PARAM_STRING", "CADI_PARAM_BOOL", "CADI_PARAM_INT"},
                   value, "Invalid value data type: 0x");
    }

    void ParameterInfo(const std::string& ident, const eslapi::CADIParameterInfo_t& info)
    {
        WriteIdent(ident, true, true);
        WriteDecimal("id", info.id);
        WriteString("name", info.name);
        ValueDataType("dataType", info.dataType);
        WriteString("description", info.description);
        WriteDecimal("isRunTime", info.isRunTime);
        WriteDecimal("minValue", LowHalf(info.minValue));
        WriteDecimal("maxValue", LowHalf(info.maxValue));
        WriteDecimal("defaultValue", LowHalf(info.defaultValue));
        WriteString("defaultString", info.defaultString);
        WriteIdent(ident, false, true);
    }

    void ParameterValue(const std::string& ident, const eslapi::CADIParameterValue_t& value)
    {
        WriteIdent(ident, true, true);
        WriteDecimal("parameterID", value.parameterID);
        ValueDataType("dataType", value.dataType);
        WriteDecimal("intValue", LowHalf(value.intValue));
        WriteString("stringValue", value.stringValue);
        WriteIdent(ident, false, true);
    }

    void TwelveFieldsOf(const eslapi::CADITargetInfo_t& info)
    {
        WriteDecimal("id", info.id);
        WriteString("targetName", info.targetName);
        WriteString("instanceName", info.instanceName);
        WriteString("version", info.version);
        WriteString("description", info.description);
        WriteString("componentType", info.componentType);
        WriteDecimal("numberOfParameters", info.numberOfParameters);
        WriteBool("executesSoftware", info.executesSoftware);
        WriteDecimal("isHardwareModel", info.isHardwareModel);
        WriteString("systemName", info.systemName);
        WriteDecimal("systemID", info.systemID);
        WriteString("systemDescription", info.systemDescription);
    }
};

}  // namespace ScrivelTest

#endif
