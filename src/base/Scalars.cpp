// The writers of one value each, and the escaping of text. Tested by tests/base/ScalarsTest.cpp.

#include "base/ElementForms.h"
#include "format/Characters.h"
#include "format/LogWords.h"

#include <algorithm>

namespace Scrivel2
{

void ScrivelXmlGenBase::WriteNULLPointer(std::string ident)
{
    WriteElement(ident, [&] { logFile.Append(LogWords::null); });
}

void ScrivelXmlGenBase::WriteAddress(std::string ident, std::uint64_t address)
{
    WriteElement(ident, [&] {
        if (address == 0) {
            logFile.Append(LogWords::null);
        } else {
            AppendHex(logFile, address, 16);
        }
    });
}

void ScrivelXmlGenBase::WriteChar(std::string ident, char value)
{
    // Raw, unlike the characters of a string: "<" reaches the file as it is.
    WriteElement(ident, [&] { logFile.Append({&value, 1}); });
}

void ScrivelXmlGenBase::WriteDecimal(std::string ident, std::uint64_t value)
{
    WriteElement(ident, [&] { AppendDecimal(logFile, value); });
}

void ScrivelXmlGenBase::WriteString(std::string ident, std::string value)
{
    WriteElement(ident, [&] { AppendEscaped(logFile, value); });
}

void ScrivelXmlGenBase::WriteBool(std::string ident, bool value)
{
    WriteElement(ident, [&] { logFile.Append(value ? "true" : "false"); });
}

void ScrivelXmlGenBase::WriteByte(std::string ident, const unsigned char* bytes)
{
    WriteElement(ident, [&] {
        char text[16 * 2 + 4];
        char* out = text;
        for (unsigned int i = 16; i-- > 0;) {
            out = PutHexByte(out, bytes[i]);
            if (i % 4 == 0) {
                *out++ = ' ';  // after the last group too
            }
        }
        // A width that is set is the first byte's.
        logFile.Append({text, 2});
        logFile.Append({text + 2, sizeof text - 2});
    });
}

void ScrivelXmlGenBase::WriteHex(std::string ident, std::uint64_t value, unsigned int digits)
{
    WriteElement(ident, [&] { AppendHex(logFile, value, std::max(digits, 1U)); });
}

void ScrivelXmlGenBase::WriteBin(std::string ident, std::uint64_t value, int /*bits*/)
{
    // Always five digits: readers of the log count on this width.
    WriteElement(ident, [&] {
        const char digits[] = {
            (value & 16) != 0 ? '1' : '0', (value & 8) != 0 ? '1' : '0', (value & 4) != 0 ? '1' : '0',
            (value & 2) != 0 ? '1' : '0',  (value & 1) != 0 ? '1' : '0',
        };
        // A width that is set is the first digit's.
        logFile.Append({digits, 1});
        logFile.Append({digits + 1, sizeof digits - 1});
    });
}

void ScrivelXmlGenBase::WriteCharString(std::string ident, const char* text)
{
    if (text == nullptr) {
        WriteNULLPointer(ident);
    } else {
        WriteString(ident, text);
    }
}

std::string ScrivelXmlGenBase::CheckString(std::string text)
{
    return EscapedText(text);
}

std::string ScrivelXmlGenBase::CheckChar(char character)
{
    return EscapedText({&character, 1});
}

}  // namespace Scrivel2
