// The writers of arrays of scalars. Tested by tests/base/ArraysTest.cpp.

#include "base/ElementForms.h"

namespace Scrivel2
{

void ScrivelXmlGenBase::WriteBoolArray(std::string ident, const bool* items, unsigned int count)
{
    WriteItems(ident, items, count, "bool_array",
               [&](bool item) { WriteValue("bool_array", Word(item)); });
}

void ScrivelXmlGenBase::WriteCharArray(std::string ident, const char* items, unsigned int count)
{
    // The characters bear the array's own name.
    WriteItems(ident, items, count, "string", [&](char item) { WriteValue(ident, Character{item}); });
}

void ScrivelXmlGenBase::WriteStringArray(std::string ident, char** items, unsigned int count)
{
    // Each entry is an element in an element, both with the array's own name. The inner one has its
    // indentation after the outer start tag.
    WriteItems(ident, items, count, "string",
               [&](const char* item) { WriteElement(ident, [&] { WriteString(ident, item); }); });
}

void ScrivelXmlGenBase::WriteLinesByteArray(std::string ident, const unsigned char* data,
                                            unsigned int lineCount, unsigned int bytesPerLine)
{
    WriteContainer(ident, [&] {
        if (data == nullptr) {
            WriteNULLPointer(ident);
            return;
        }
        // Every line shows the same windows of 16 bytes, each a byte further than the last one: readers
        // of the log know such arrays in this form.
        for (unsigned int line = 0; line < lineCount; ++line) {
            for (unsigned int i = 0; i < bytesPerLine; ++i) {
                WriteValue("value", NumberOfBytes{data + lineCount + i});
            }
        }
    });
}

void ScrivelXmlGenBase::WriteUint8Array(std::string ident, const unsigned char* items, unsigned int count,
                                        bool hex)
{
    WriteIntegers(ident, items, count, hex, ident, "value");
}

void ScrivelXmlGenBase::WriteUint32Array(std::string ident, const unsigned int* items, unsigned int count,
                                         bool hex)
{
    WriteIntegers(ident, items, count, hex, ident, "value");
}

void ScrivelXmlGenBase::WriteUint64Array(std::string ident, const std::uint64_t* items,
                                         unsigned int count, bool hex)
{
    WriteIntegers(ident, items, count, hex, "int", "int");
}

}  // namespace Scrivel2
