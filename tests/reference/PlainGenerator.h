// The log written a second time, in the plainest way: a file stream of the standard library, string
// streams, sprintf, one statement after the other. The random walk compares the library with it byte by
// byte, the benchmark measures the library beside it. It shares no code with the library but the CADI
// types, and its operations have the names that the library's have.
//
// File is std::ofstream or a stream that behaves like one.

#ifndef SCRIVEL_TESTS_REFERENCE_PLAINGENERATOR_H
#define SCRIVEL_TESTS_REFERENCE_PLAINGENERATOR_H

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
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include <pthread.h>
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

template <typename File>
class PlainRunBase : public PlainBase<File>
{
public:
    using Base = PlainBase<File>;
    using Names = std::map<unsigned int, std::string>;
    using Base::callNo;
    using Base::depth;
    using Base::logFile;
    using Base::WriteBool;
    using Base::WriteDecimal;
    using Base::WriteHex;
    using Base::WriteIdent;
    using Base::WriteIdentWithoutTabs;
    using Base::WriteNULLPointer;
    using Base::WriteString;
    using Base::WriteTabs;

    using Base::Base;

    // ---- Calls ----------------------------------------------------------------------------------

    void WriteDetailedIdent(std::string callName) override { WriteDetailedIdent(callName, 0); }

    virtual void WriteDetailedIdent(std::string callName, unsigned long address)
    {
        if (!pendingElementName.empty() && !pendingElementText.empty()) {
            logFile << "    <" << pendingElementName << ">" << pendingElementText << "</"
                    << pendingElementName << ">\n";
        }
        pendingElementName = "";
        pendingElementText = "";
        WriteTabs(true);
        depth = depth + 1;
        logFile << "<" << this->Cleaned(callName) << " call_num=\"" << callNo << "\"\n";
        this->WriteTimestamp("call_time", false);
        const std::uint64_t thread = pthread_self();
        logFile << "\n";
        WriteTabs(false);
        logFile << " threadId=\"" << this->LowHalf(thread) << "\"";
        if (address != 0) {
            logFile << " disassembler_address=\"";
            this->InsertHex(address, 16);
            logFile << "\"";
        }
        logFile << ">\n";
    }

    virtual unsigned int EnterCadiCall(std::string callName)
    {
        this->WriteCloseInterruptedFunction(callName);
        callNo = callNo + 1;
        WriteDetailedIdent(callName);
        return callNo;
    }

    void SetMemSpaceNames(const Names* names) { memSpaceNames = names; }
    void SetRegisterNames(const Names* names) { registerNames = names; }
    void SetPendingElement(std::string name, std::string text)
    {
        pendingElementName = name;
        pendingElementText = text;
    }

    // ---- Enumerations ---------------------------------------------------------------------------

    void WriteReturnType(std::string ident, eslapi::CADIReturn_t value)
    {
        this->ReturnType(ident, value);
    }

    void WriteValueDataType(std::string ident, eslapi::CADIValueDataType_t value)
    {
        this->ValueDataType(ident, value);
    }

    void WriteFactoryErrorCode(std::string ident, eslapi::CADIFactoryErrorCode_t value)
    {
        this->WriteNamed(ident, this->factoryErrorNames, value, "Invalid factory error code: 0x");
    }

    void WriteFactorySeverityCode(std::string ident, eslapi::CADIFactorySeverityCode_t value)
    {
        this->WriteNamed(ident,
                         {"CADIFACT_SEVERITY_OK", "CADIFACT_SEVERITY_WARNING", "CADIFACT_SEVERITY_ERROR"},
                         value, "Invalid factory severity code: 0x");
    }

    void WriteBptType(std::string ident, eslapi::CADIBptType_t value)
    {
        if (value == 0x8000) {
            WriteIdent(ident, true, false);
            logFile << "CADI_BPT_USER_DEFINED";
            WriteIdentWithoutTabs(ident);
            return;
        }
        this->WriteNamed(ident,
                         {"CADI_BPT_PROGRAM", "CADI_BPT_MEMORY", "CADI_BPT_REGISTER",
                          "CADI_BPT_INST_STEP", "CADI_BPT_PROGRAM_RANGE", "CADI_BPT_EXCEPTION"},
                         value, "Invalid bpt type: 0x");
    }

    void WriteBptConditionOperator(std::string ident, eslapi::CADIBptConditionOperator_t value)
    {
        this->WriteNamed(ident,
                         {"CADI_BPT_COND_UNCONDITIONAL", "CADI_BPT_COND_EQUALS",
                          "CADI_BPT_COND_NOT_EQUALS", "CADI_BPT_COND_GREATER_THAN_SIGNED",
                          "CADI_BPT_COND_GREATER_THAN_OR_EQUALS_SIGNED", "CADI_BPT_COND_LESS_THAN_SIGNED",
                          "CADI_BPT_COND_LESS_THAN_OR_EQUALS_SIGNED"},
                         value, "Invalid breakpoint condition operator: 0x");
    }

    void WriteBptConfigure(std::string ident, eslapi::CADIBptConfigure_t value)
    {
        this->WriteNamed(ident, {"CADI_BPT_Disable", "CADI_BPT_Enable"}, value,
                         "Invalid CADIBptConfigure value: 0x");
    }

    void WriteExceptionAction(std::string ident, eslapi::CADIExceptionAction_t value)
    {
        this->WriteNamed(ident, {"CADI_EXCEPTION_Raise", "CADI_EXCEPTION_Lower", "CADI_EXCEPTION_Pulse"},
                         value, "Invalid exception action: 0x");
    }

    void WriteRegAccessAttribute(std::string ident, eslapi::CADIRegAccessAttribute_t value)
    {
        this->WriteNamed(ident,
                         {"CADI_REG_READ_WRITE", "CADI_REG_READ_ONLY", "CADI_REG_WRITE_ONLY",
                          "CADI_REG_READ_WRITE_RESTRICTED", "CADI_REG_READ_ONLY_RESTRICTED",
                          "CADI_REG_WRITE_ONLY_RESTRICTED"},
                         value, "Invalid reg access attribute: 0x");
    }

    void WriteRegType(std::string ident, eslapi::CADIRegType_t value)
    {
        this->WriteNamed(ident, {"CADI_REGTYPE_Simple", "CADI_REGTYPE_Compound"}, value,
                         "Invalid reg type: 0x");
    }

    void WriteRegDisplay(std::string ident, eslapi::CADIRegDisplay_t value)
    {
        this->WriteNamed(ident,
                         {"CADI_REGTYPE_HEX", "CADI_REGTYPE_UINT", "CADI_REGTYPE_INT",
                          "CADI_REGTYPE_BOOL", "CADI_REGTYPE_FLOAT", "CADI_REGTYPE_SYMBOL",
                          "CADI_REGTYPE_STRING", "CADI_REGTYPE_PC", "CADI_REGTYPE_BIN",
                          "CADI_REGTYPE_OCT"},
                         value, "Invalid reg display: 0x");
    }

    void WriteMemReadWrite(std::string ident, eslapi::CADIMemReadWrite_t value)
    {
        this->WriteNamed(ident, {"CADI_MEM_ReadOnly", "CADI_MEM_WriteOnly", "CADI_MEM_ReadWrite"}, value,
                         "Invalid mem read write: 0x");
    }

    void WriteExecMode(std::string ident, unsigned int mode)
    {
        static const char* const mode_to_string[] = {
            "CADI_EXECMODE_Stop",  "CADI_EXECMODE_Run",           "CADI_EXECMODE_Bpt",
            "CADI_EXECMODE_Error", "CADI_EXECMODE_HighLevelStep", "CADI_EXECMODE_RunUnconditionally",
        };
        WriteIdent(ident, true, false);
        if (mode <= 5) {
            logFile << mode_to_string[mode];
        } else {
            logFile << "Unknown execution mode: " << mode;
        }
        WriteIdentWithoutTabs(ident);
    }

    void WriteExecModePtrVal(std::string ident, unsigned int* mode)
    {
        if (mode == nullptr) {
            WriteNULLPointer(ident);
            return;
        }
        WriteExecMode(ident, *mode);
    }

    void WriteExecModePtrVal(std::string ident, std::nullptr_t) { WriteNULLPointer(ident); }

    void WriteTriggerType(std::string ident, unsigned int trigger)
    {
        WriteString(ident, Bits("CADI_BPT_TRIGGER_ON_", {"READ", "WRITE", "MODIFY"}, trigger));
    }

    void WriteEndianness(std::string ident, unsigned char endianness)
    {
        std::ostringstream text;
        switch (endianness) {
        case 0:
            text << "mono";
            break;
        case 1:
            text << "LE";
            break;
        case 2:
            text << "BE";
            break;
        default:
            text << "0x" << std::setw(8) << std::setfill('0') << endianness;
        }
        WriteString(ident, text.str());
    }

    void WriteRegSymbol(std::string ident, eslapi::CADIRegSymbols_t symbols)
    {
        WriteIdent(ident, true, true);
        WriteDecimal("numSymbols", symbols.numSymbols);
        if (symbols.symbols == nullptr) {
            WriteNULLPointer("Symbols");
        }
        WriteIdent(ident, false, true);
    }

    // ---- Target features ------------------------------------------------------------------------

    void WriteHandledBreakpoints(std::string ident, unsigned int breakpoints)
    {
        WriteString(ident,
                    Bits("CADI_TARGET_FEATURE_BPT_",
                         {"PROGRAM", "MEMORY", "REGISTER", "INST_STEP", "PROGRAM_RANGE", "EXCEPTION"},
                         breakpoints));
    }

    void WriteTargetFeatures(std::string ident, eslapi::CADITargetFeatures_t* features)
    {
        if (features == nullptr) {
            WriteNULLPointer(ident);
            return;
        }
        WriteIdent(ident, true, true);
        WriteString("targetName", features->targetName);
        WriteString("targetVersion", features->targetVersion);
        WriteDecimal("nrBreakpointsAvailable", features->nrBreakpointsAvailable);
        WriteDecimal("fOverlaySupportAvailable", features->fOverlaySupportAvailable ? 1 : 0);
        WriteDecimal("fProfilingAvailable", features->fProfilingAvailable ? 1 : 0);
        WriteDecimal("nrResetLevels", features->nrResetLevels);
        WriteDecimal("nrExecModes", features->nrExecModes);
        WriteDecimal("nrExceptions", features->nrExceptions);
        WriteDecimal("nrMemSpaces", features->nrMemSpaces);
        WriteDecimal("nrRegisterGroups", features->nrRegisterGroups);
        WriteDecimal("nrPipeStages", features->nrPipeStages);
        WriteDecimal("nPCRegNum", features->nPCRegNum);
        WriteHandledBreakpoints("handledBreakpoints", features->handledBreakpoints);
        WriteDecimal("nrOfHWThreads", features->nrOfHWThreads);
        WriteBool("nExtendedTargetFeaturesRegNumValid", features->nExtendedTargetFeaturesRegNumValid);
        WriteDecimal("nExtendedTargetFeaturesRegNum", features->nExtendedTargetFeaturesRegNum);
        WriteString("canonicalRegisterDescription", features->canonicalRegisterDescription);
        WriteString("canonicalMemoryDescription", features->canonicalMemoryDescription);
        WriteDecimal("canCompleteMultipleInstructionsPerCycle",
                     features->canCompleteMultipleInstructionsPerCycle ? 1 : 0);
        WriteIdent(ident, false, true);
    }

    // ---- Parameters and factory errors ----------------------------------------------------------

    void WriteParameterInfo(std::string ident, eslapi::CADIParameterInfo_t info)
    {
        this->ParameterInfo(ident, info);
    }

    void WriteParameterInfoPtrVal(std::string ident, eslapi::CADIParameterInfo_t* info)
    {
        if (info == nullptr) {
            WriteNULLPointer(ident);
            return;
        }
        WriteParameterInfo(ident, *info);
    }

    void WriteParameterValue(std::string ident, eslapi::CADIParameterValue_t value)
    {
        this->ParameterValue(ident, value);
    }

    void WriteFactoryErrorMessage(std::string ident, eslapi::CADIFactoryErrorMessage_t message)
    {
        WriteIdent(ident, true, true);
        WriteFactoryErrorCode("errorCode", message.errorCode);
        WriteDecimal("erroneousParameterId", message.erroneousParameterId);
        WriteString("message", message.message);
        WriteFactorySeverityCode("severity", message.severity);
        WriteIdent(ident, false, true);
    }

    void WriteFactoryErrorMessagePtrVal(std::string ident, eslapi::CADIFactoryErrorMessage_t* message)
    {
        if (message == nullptr) {
            WriteNULLPointer(ident);
            return;
        }
        WriteFactoryErrorMessage(ident, *message);
    }

    void WriteParameterInfoArray(std::string ident, eslapi::CADIParameterInfo_t* params,
                                 unsigned int count)
    {
        Array(ident, params, count, "param", [this](const eslapi::CADIParameterInfo_t& param) {
            WriteParameterInfo(param.name, param);
        });
    }

    void WriteParameterValueArray(std::string ident, eslapi::CADIParameterValue_t* values,
                                  unsigned int count)
    {
        Array(ident, values, count, "parameterValue", [this](const eslapi::CADIParameterValue_t& value) {
            WriteParameterValue("parameterValue", value);
        });
    }

    // ---- Registers ------------------------------------------------------------------------------

    void WriteRegGroup(eslapi::CADIRegGroup_t group)
    {
        WriteIdent(group.name, true, true);
        WriteDecimal("groupID", group.groupID);
        WriteString("description", group.description);
        WriteDecimal("numRegsInGroup", group.numRegsInGroup);
        WriteIdent(group.name, false, true);
    }

    void WriteRegDetail(std::string ident, eslapi::CADIRegDetails_t details)
    {
        WriteIdent(ident, true, true);
        WriteRegType("type", details.type);
        WriteDecimal("count", details.count);
        WriteIdent(ident, false, true);
    }

    void WriteRegInfo(eslapi::CADIRegInfo_t info)
    {
        WriteIdent(info.name, true, true);
        WriteString("description", info.description);
        WriteDecimal("regNumber", info.regNumber);
        WriteDecimal("bitsWide", info.bitsWide);
        WriteDecimal("hasSideEffects",
                     static_cast<std::uint64_t>(static_cast<std::int64_t>(info.hasSideEffects)));
        WriteRegDetail("details", info.details);
        WriteRegDisplay("display", info.display);
        if (info.display == 5) {
            WriteString("symbols", "Register is not of type CADI_REGTYPE_SYMBOL");
        } else {
            WriteRegSymbol("symbols", info.symbols);
        }
        WriteString("fpFormat", info.fpFormat);
        WriteDecimal("lsbOffset", info.lsbOffset);
        WriteDecimal("dwarfIndex", info.dwarfIndex);
        WriteBool("isProfiled", info.isProfiled);
        WriteBool("isPipeStageField", info.isPipeStageField);
        WriteDecimal("threadID", info.threadID);
        WriteRegAccessAttribute("attribute", info.attribute);
        WriteDecimal("canonicalRegisterNumber", info.canonicalRegisterNumber);
        WriteIdent(info.name, false, true);
    }

    void WriteReg(std::string ident, eslapi::CADIReg_t reg)
    {
        std::string name = Found(registerNames, reg.regNumber);
        if (name.empty()) {
            name = ident;
        }
        WriteIdent(name, true, true);
        WriteDecimal("regNumber", reg.regNumber);
        this->WriteByte("bytes", reg.bytes);
        WriteDecimal("offset128", reg.offset128);
        WriteBool("isUndefined", reg.isUndefined);
        WriteRegAccessAttribute("attribute", reg.attribute);
        WriteIdent(name, false, true);
    }

    void WriteRegGroupArray(std::string ident, eslapi::CADIRegGroup_t* groups, unsigned int count)
    {
        Array(ident, groups, count, "regGroup",
              [this](const eslapi::CADIRegGroup_t& group) { WriteRegGroup(group); });
    }

    void WriteRegInfoArray(std::string ident, eslapi::CADIRegInfo_t* infos, unsigned int count)
    {
        Array(ident, infos, count, "regInfo",
              [this](const eslapi::CADIRegInfo_t& info) { WriteRegInfo(info); });
    }

    void WriteRegArray(std::string ident, eslapi::CADIReg_t* regs, unsigned int count)
    {
        Array(ident, regs, count, "reg", [this](const eslapi::CADIReg_t& reg) { WriteReg("reg", reg); });
    }

    // ---- Memory ---------------------------------------------------------------------------------

    void WriteMemSpaceInfo(eslapi::CADIMemSpaceInfo_t space)
    {
        WriteIdent(space.name, true, true);
        WriteString("description", space.description);
        WriteDecimal("memSpaceId", space.memSpaceId);
        WriteDecimal("bitsPerMau", space.bitsPerMau);
        WriteHex("maxAddress", this->LowHalf(space.maxAddress), 16);
        WriteDecimal("nrMemBlocks", space.nrMemBlocks);
        WriteDecimal("isProgramMemory", space.isProgramMemory);
        WriteDecimal("minAddress", this->LowHalf(space.minAddress));
        WriteBool("isVirtualMemory", space.isVirtualMemory != 0);
        WriteBool("isCache", space.isCache != 0);
        WriteEndianness("endianness", space.endianness);
        WriteDecimal("invariance", space.invariance);
        WriteDecimal("dwarfMemSpaceId", space.dwarfMemSpaceId);
        WriteDecimal("canonicalMemoryNumber", space.canonicalMemoryNumber);
        WriteIdent(space.name, false, true);
    }

    void WriteMemBlockInfo(eslapi::CADIMemBlockInfo_t block)
    {
        WriteIdent(block.name, true, true);
        WriteString("description", block.description);
        WriteDecimal("id", block.id);
        WriteDecimal("parentID", block.parentID);
        WriteHex("startAddr", this->LowHalf(block.startAddr), 16);
        WriteHex("endAddr", this->LowHalf(block.endAddr), 16);
        WriteDecimal("cyclesToAccess", block.cyclesToAccess);
        WriteMemReadWrite("readWrite", block.readWrite);
        WriteIdent("supportedMultiplesOfMAU", true, true);
        for (int i = 0; i < 32; ++i) {
            WriteDecimal("value", block.supportedMultiplesOfMAU[i]);
        }
        WriteIdent("supportedMultiplesOfMAU", false, true);
        WriteEndianness("endianness", block.endianness);
        WriteDecimal("invariance", block.invariance);
        WriteIdent(block.name, false, true);
    }

    void WriteCacheInfo(std::string ident, eslapi::CADICacheInfo_t* cache)
    {
        if (cache == nullptr) {
            WriteNULLPointer(ident);
            return;
        }
        WriteIdent(ident, true, true);
        WriteDecimal("cacheLineSize", cache->cacheLineSize);
        WriteDecimal("cacheTagBits", cache->cacheTagBits);
        WriteDecimal("associativity", cache->associativity);
        WriteBool("writeThrough", cache->writeThrough);
        WriteIdent(ident, false, true);
    }

    void WriteMemSpaceInfoArray(std::string ident, eslapi::CADIMemSpaceInfo_t* spaces, unsigned int count)
    {
        Array(ident, spaces, count, "memSpaceInfo",
              [this](const eslapi::CADIMemSpaceInfo_t& space) { WriteMemSpaceInfo(space); });
    }

    void WriteMemBlockInfoArray(std::string ident, eslapi::CADIMemBlockInfo_t* blocks, unsigned int count)
    {
        Array(ident, blocks, count, "memBlockInfo",
              [this](const eslapi::CADIMemBlockInfo_t& block) { WriteMemBlockInfo(block); });
    }

    void WriteOverlayIdArray(std::string ident, unsigned int* ids, unsigned int count)
    {
        Array(ident, ids, count, "overlayId", [this](unsigned int id) { WriteDecimal("overlayId", id); });
    }

    void WriteAddr(std::string ident, eslapi::CADIAddr_t address)
    {
        WriteIdent(ident, true, true);
        WriteDecimal("spaceId", address.spaceId);
        const std::string name = Found(memSpaceNames, address.spaceId);
        WriteString("spaceName", name.empty() ? "unknown memSpaceInfo" : name);
        WriteHex("addr", address.addr, 16);
        WriteIdent(ident, false, true);
    }

    void WriteAddrComplete(std::string ident, eslapi::CADIAddrComplete_t address)
    {
        WriteIdent(ident, true, true);
        WriteDecimal("overlay", address.overlay);
        WriteAddr("location", address.location);
        WriteIdent(ident, false, true);
    }

    // ---- Breakpoints and exceptions -------------------------------------------------------------

    void WriteBptCondition(std::string ident, eslapi::CADIBptCondition_t condition)
    {
        WriteIdent(ident, true, true);
        WriteBptConditionOperator("conditionOperator", condition.conditionOperator);
        WriteDecimal("comparisonValue", condition.comparisonValue);
        WriteDecimal("threadID", condition.threadID);
        WriteDecimal("ignoreCount", condition.ignoreCount);
        WriteDecimal("bitwidth", condition.bitwidth);
        WriteIdent(ident, false, true);
    }

    void WriteBptRequest(std::string ident, eslapi::CADIBptRequest_t* request)
    {
        if (request == nullptr) {
            WriteNULLPointer(ident);
            return;
        }
        WriteIdent(ident, true, true);
        WriteAddrComplete("address", request->address);
        WriteDecimal("sizeOfAddressRange", this->LowHalf(request->sizeOfAddressRange));
        WriteDecimal("enabled", request->enabled);
        WriteString("conditions", request->conditions);
        WriteBool("useFormalCondition", request->useFormalCondition);
        WriteBptCondition("formalCondition", request->formalCondition);
        WriteBptType("type", request->type);
        WriteDecimal("regNumber", request->regNumber);
        WriteDecimal("temporary", request->temporary);
        WriteTriggerType("triggerType", request->triggerType);
        WriteBool("continueExecution", request->continueExecution != 0);
        WriteIdent(ident, false, true);
    }

    void WriteBptDescription(std::string ident, eslapi::CADIBptDescription_t description)
    {
        WriteIdent(ident, true, true);
        WriteDecimal("bptNumber", description.bptNumber);
        WriteBptRequest("bptInfo", &description.bptInfo);
        WriteIdent(ident, false, true);
    }

    void WriteBptDescriptionArray(std::string ident, eslapi::CADIBptDescription_t* descriptions,
                                  unsigned int count)
    {
        Array(ident, descriptions, count, "breakpoints",
              [this](const eslapi::CADIBptDescription_t& description) {
                  WriteBptDescription("breakpoints", description);
              });
    }

    void WriteException(std::string ident, eslapi::CADIException_t exception)
    {
        WriteIdent(ident, true, true);
        WriteDecimal("number", exception.number);
        WriteString("name", exception.name);
        WriteAddr("vector", exception.vector);
        WriteIdent(ident, false, true);
    }

    void WriteExceptionArray(std::string ident, eslapi::CADIException_t* exceptions, unsigned int count)
    {
        Array(ident, exceptions, count, "breakpoints", [this](const eslapi::CADIException_t& exception) {
            WriteException("exception", exception);
        });
    }

    // ---- Modes, reset levels, pipe stages -------------------------------------------------------

    void WriteExecMode(std::string ident, eslapi::CADIExecMode_t mode)
    {
        WriteIdent(ident, true, true);
        WriteExecMode("number", mode.number);
        WriteString("name", mode.name);
        WriteIdent(ident, false, true);
    }

    void WriteExecModePtrVal(std::string ident, eslapi::CADIExecMode_t* mode)
    {
        if (mode == nullptr) {
            WriteNULLPointer(ident);
            return;
        }
        WriteExecMode(ident, *mode);
    }

    void WriteResetLevel(std::string ident, eslapi::CADIResetLevel_t level)
    {
        WriteIdent(ident, true, true);
        WriteDecimal("number", level.number);
        WriteString("name", level.name);
        WriteIdent(ident, false, true);
    }

    void WritePipeStage(std::string ident, eslapi::CADIPipeStage_t stage)
    {
        WriteIdent(ident, true, true);
        WriteDecimal("id", stage.id);
        WriteString("name", stage.name);
        WriteDecimal("contentInfoRegisterId", stage.contentInfoRegisterId);
        WriteIdent(ident, false, true);
    }

    void WritePipeStageField(std::string ident, eslapi::CADIPipeStageField_t field)
    {
        WriteIdent(ident, true, true);
        WriteDecimal("pipeStageId", field.pipeStageId);
        WriteDecimal("registerId", field.registerId);
        WriteIdent(ident, false, true);
    }

    void WriteExecModeArray(std::string ident, eslapi::CADIExecMode_t* modes, unsigned int count)
    {
        Array(ident, modes, count, "parameterValue",
              [this](const eslapi::CADIExecMode_t& mode) { WriteExecMode("execMode", mode); });
    }

    void WriteResetLevelArray(std::string ident, eslapi::CADIResetLevel_t* levels, unsigned int count)
    {
        Array(ident, levels, count, "parameterValue",
              [this](const eslapi::CADIResetLevel_t& level) { WriteResetLevel("resetLevel", level); });
    }

    void WritePipeStageArray(std::string ident, eslapi::CADIPipeStage_t* stages, unsigned int count)
    {
        Array(ident, stages, count, "pipeStages",
              [this](const eslapi::CADIPipeStage_t& stage) { WritePipeStage("pipeStage", stage); });
    }

    void WritePipeStageFieldArray(std::string ident, eslapi::CADIPipeStageField_t* fields,
                                  unsigned int count)
    {
        Array(ident, fields, count, "pipeStageFields", [this](const eslapi::CADIPipeStageField_t& field) {
            WritePipeStageField("pipeStageField", field);
        });
    }

    // ---- Data -----------------------------------------------------------------------------------

    std::string pendingElementName;
    std::string pendingElementText;
    const Names* memSpaceNames = nullptr;
    const Names* registerNames = nullptr;

private:
    template <typename Record, typename WriteRecord>
    void Array(const std::string& ident, const Record* records, unsigned int count, const char* nullName,
               WriteRecord writeRecord)
    {
        WriteIdent(ident, true, true);
        if (records == nullptr) {
            WriteNULLPointer(nullName);
        } else {
            for (unsigned int i = 0; i < count; ++i) {
                writeRecord(records[i]);
            }
        }
        WriteIdent(ident, false, true);
    }

    static std::string Found(const Names* names, unsigned int key)
    {
        return names != nullptr && names->count(key) == 1 ? names->at(key) : "";
    }

    static std::string Bits(const std::string& prefix, const std::vector<std::string>& words,
                            unsigned int bits)
    {
        if (bits == 0) {
            return "";
        }
        int bitsSet = 0;
        for (unsigned int rest = bits; rest != 0; rest /= 2) {
            bitsSet += static_cast<int>(rest % 2);
        }
        std::ostringstream text;
        text.imbue(std::locale::classic());
        text << prefix << (bitsSet > 1 ? "{" : "");
        bool any = false;
        unsigned int rest = bits;
        for (const std::string& word : words) {
            if (rest % 2 == 1) {
                text << (any ? ", " : "") << word;
                any = true;
            }
            rest /= 2;
        }
        if (rest != 0) {
            text << (any ? ", " : "") << "0x" << std::hex << rest;
        }
        text << (bitsSet > 1 ? "}" : "");
        return text.str();
    }
};

template <typename File>
class PlainConnect : public PlainBase<File>
{
public:
    using Base = PlainBase<File>;
    using Base::WriteDecimal;
    using Base::WriteIdent;
    using Base::WriteNULLPointer;
    using Base::WriteString;

    explicit PlainConnect(const char* name) : Base(name, "CADI 2.0") {}

    void WriteSimulationFactoryArray(std::string ident, eslapi::CADISimulationFactory** factories,
                                     unsigned int* count)
    {
        WriteIdent(ident, true, true);
        if (factories == nullptr) {
            WriteNULLPointer("targetInfo");
        } else if (count != nullptr) {
            for (unsigned int i = 0; i < *count; ++i) {
                this->WriteAddress("simulationFactory", reinterpret_cast<std::uintptr_t>(factories[i]));
            }
        }
        WriteIdent(ident, false, true);
    }

    void WriteSimulationInfo(std::string ident, eslapi::CADISimulationInfo_t info)
    {
        WriteIdent(ident, true, true);
        WriteDecimal("id", info.id);
        WriteString("name", info.name);
        WriteString("description", info.description);
        WriteIdent(ident, false, true);
    }

    void WriteSimulationInfoArray(std::string ident, eslapi::CADISimulationInfo_t* infos,
                                  unsigned int* count)
    {
        WriteIdent(ident, true, true);
        if (infos == nullptr) {
            WriteNULLPointer("targetInfo");
        } else if (count != nullptr) {
            for (unsigned int i = 0; i < *count; ++i) {
                WriteSimulationInfo("simulationFactory", infos[i]);
            }
        }
        WriteIdent(ident, false, true);
    }

    void WriteValueDataType(std::string ident, eslapi::CADIValueDataType_t value)
    {
        this->ValueDataType(ident, value);
    }

    void WriteReturnType(std::string ident, eslapi::CADIReturn_t value)
    {
        this->ReturnType(ident, value);
    }

    void WriteParameterValue(std::string ident, eslapi::CADIParameterValue_t value)
    {
        this->ParameterValue(ident, value);
    }

    void WriteParameterValueArray(std::string ident, eslapi::CADIParameterValue_t* values)
    {
        WriteIdent(ident, true, true);
        if (values == nullptr) {
            WriteNULLPointer("parameterValue");
        } else {
            std::size_t count = 1;
            while (values[count - 1].parameterID != 0xffffffff) {
                ++count;
            }
            for (std::size_t i = 0; i < count; ++i) {
                WriteParameterValue("parameterValue", values[i]);
            }
        }
        WriteIdent(ident, false, true);
    }

    void WriteParameterInfo(std::string ident, eslapi::CADIParameterInfo_t info)
    {
        this->ParameterInfo(ident, info);
    }

    void WriteParameterInfoArray(std::string ident, eslapi::CADIParameterInfo_t* params,
                                 unsigned int* count)
    {
        WriteIdent(ident, true, true);
        if (params == nullptr) {
            WriteNULLPointer("param");
        } else if (count != nullptr) {
            for (unsigned int i = 0; i < *count; ++i) {
                WriteParameterInfo(params[i].name, params[i]);
            }
        }
        WriteIdent(ident, false, true);
    }

    void WriteTargetInfo(std::string ident, eslapi::CADITargetInfo_t info)
    {
        WriteIdent(ident, true, true);
        this->TwelveFieldsOf(info);
        WriteIdent(ident, false, true);
    }

    void WriteTargetInfoArray(std::string ident, eslapi::CADITargetInfo_t* infos, unsigned int* count)
    {
        WriteIdent(ident, true, true);
        if (infos == nullptr) {
            WriteNULLPointer("targetInfo");
        } else if (count != nullptr) {
            for (unsigned int i = 0; i < *count; ++i) {
                WriteTargetInfo("targetInfo", infos[i]);
            }
        }
        WriteIdent(ident, false, true);
    }
};

template <typename File>
class PlainRun : public PlainRunBase<File>
{
public:
    explicit PlainRun(const char* name) : PlainRunBase<File>(name, "CADI 2.0") {}

    void WriteTargetInfo(std::string ident, eslapi::CADITargetInfo_t info)
    {
        this->WriteIdent(ident, true, true);
        this->TwelveFieldsOf(info);
        this->WriteBool("canRunInBackground", info.canRunInBackground);
        this->WriteIdent(ident, false, true);
    }

    void WriteTargetInfoPtrVal(std::string ident, eslapi::CADITargetInfo_t* info)
    {
        if (info == nullptr) {
            this->WriteNULLPointer(ident);
            return;
        }
        WriteTargetInfo(ident, *info);
    }

    void WriteRegFloatFormat(std::string, eslapi::CADIRegFloatFormat_t)
    {
        puts("WriteRegFloatFormat not implemented !!");
    }
};

}  // namespace ScrivelTest

#endif
