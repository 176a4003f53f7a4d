// The writers of values behind pointers. Tested by tests/base/PointerValuesTest.cpp.

#include "base/ElementForms.h"

namespace Scrivel2
{

void ScrivelXmlGenBase::WriteCharPtrVal(std::string ident, char* value)
{
    WritePointee(ident, value, [&](char pointee) { WriteChar(ident, pointee); });
}

void ScrivelXmlGenBase::WriteDecimalPtrVal(std::string ident, unsigned int* value)
{
    WritePointee(ident, value, [&](unsigned int pointee) { WriteDecimal(ident, pointee); });
}

void ScrivelXmlGenBase::WriteDecimalPtrVal(std::string ident, std::uint64_t* value)
{
    WritePointee(ident, value, [&](std::uint64_t pointee) { WriteDecimal(ident, pointee); });
}

void ScrivelXmlGenBase::WriteDecimalPtrVal(std::string ident, std::nullptr_t)
{
    WriteNULLPointer(ident);
}

void ScrivelXmlGenBase::WriteStringPtrVal(std::string ident, std::string* value)
{
    WritePointee(ident, value, [&](const std::string& pointee) { WriteString(ident, pointee); });
}

void ScrivelXmlGenBase::WriteBoolPtrVal(std::string ident, bool* value)
{
    WritePointee(ident, value, [&](bool pointee) { WriteBool(ident, pointee); });
}

void ScrivelXmlGenBase::WriteHexPtrVal(std::string ident, std::uint64_t* value, unsigned int digits)
{
    WritePointee(ident, value, [&](std::uint64_t pointee) { WriteHex(ident, pointee, digits); });
}

void ScrivelXmlGenBase::WriteBinPtrVal(std::string ident, std::uint64_t* value, int bits)
{
    WritePointee(ident, value, [&](std::uint64_t pointee) { WriteBin(ident, pointee, bits); });
}

}  // namespace Scrivel2
