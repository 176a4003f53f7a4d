// The writers of one value each, and the escaping of text. Tested by tests/base/ScalarsTest.cpp.

#include "base/ElementForms.h"
#include "format/LogWords.h"

#include <algorithm>

namespace Scrivel2
{

void ScrivelXmlGenBase::WriteNULLPointer(std::string ident)
{
    WriteValue(ident, Plain{LogWords::null});
}

void ScrivelXmlGenBase::WriteAddress(std::string ident, std::uint64_t address)
{
    if (address == 0) {
        WriteValue(ident, Plain{LogWords::null});
    } else {
        WriteValue(ident, Hex{address, 16});
    }
}

void ScrivelXmlGenBase::WriteChar(std::string ident, char value)
{
    // Raw, unlike the characters of a string: "<" reaches the file as it is.
    WriteValue(ident, Plain{{&value, 1}});
}

void ScrivelXmlGenBase::WriteDecimal(std::string ident, std::uint64_t value)
{
    WriteValue(ident, Decimal{value});
}

void ScrivelXmlGenBase::WriteString(std::string ident, std::string value)
{
    WriteValue(ident, Text{value});
}

void ScrivelXmlGenBase::WriteBool(std::string ident, bool value)
{
    WriteValue(ident, Word(value));
}

void ScrivelXmlGenBase::WriteByte(std::string ident, const unsigned char* bytes)
{
    WriteValue(ident, NumberOfBytes{bytes});
}

void ScrivelXmlGenBase::WriteHex(std::string ident, std::uint64_t value, unsigned int digits)
{
    WriteValue(ident, Hex{value, std::max(digits, 1U)});
}

void ScrivelXmlGenBase::WriteBin(std::string ident, std::uint64_t value, int /*bits*/)
{
    WriteValue(ident, FiveBits{value});
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
