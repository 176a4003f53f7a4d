// How an element is opened and closed, for the writers in base/, runbase/ and generators/, and the small
// conversions that they share. Internal: not installed.

#ifndef SCRIVEL_BASE_ELEMENTFORMS_H
#define SCRIVEL_BASE_ELEMENTFORMS_H

#include "ScrivelXmlGen.h"

#include "base/LogText.h"
#include "base/Values.h"
#include "base/WholeElements.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace Scrivel2
{

/// One line: the start tag, the value, the end tag.
template <typename Name, typename Value>
void ScrivelXmlGenBase::WriteValue(const Name& ident, const Value& value)
{
    if (!WholeElements(*this).PutElement(ident, value)) {
        WriteElement(ident, [&] { value.Append(logFile); });
    }
}

/// The tags of one line, through the table, around what `writeContents` appends to the log file. Kept out
/// of the writers, so that the compiler finds room in them for what is put down whole.
template <typename Name, typename WriteContents>
[[gnu::noinline]] void ScrivelXmlGenBase::WriteElement(const Name& ident, WriteContents writeContents)
{
    WriteIdent(StringOf(ident), true, false);
    writeContents();
    WriteIdentWithoutTabs(StringOf(ident));
}

/// Tags on lines of their own around the children.
template <typename WriteChildren>
void ScrivelXmlGenBase::WriteContainer(const std::string& ident, WriteChildren writeChildren)
{
    WriteTag(ident, true);
    writeChildren();
    WriteTag(ident, false);
}

template <typename... Fields>
void ScrivelXmlGenBase::WriteRecord(const std::string& ident, const Fields&... fields)
{
    if (!WholeElements(*this).PutRecord(ident, fields...)) {
        WriteContainer(ident,
                       [&] { (WriteElement(fields.name, [&] { fields.value.Append(logFile); }), ...); });
    }
}

inline unsigned int EntriesIn(unsigned int count)
{
    return count;
}

inline unsigned int EntriesIn(const unsigned int* count)
{
    return count == nullptr ? 0 : *count;
}

/// A container of what `writeItem` makes of each item, or of one null element.
template <typename Item, typename Count, typename WriteItem>
void ScrivelXmlGenBase::WriteItems(const std::string& ident, Item* items, Count count,
                                   std::string_view nullName, WriteItem writeItem)
{
    WriteContainer(ident, [&] {
        if (items == nullptr) {
            WriteNULLPointer(std::string(nullName));
            return;
        }
        for (unsigned int i = 0; i < EntriesIn(count); ++i) {
            writeItem(items[i]);
        }
    });
}

/// A container of integers, in decimal or in as many hexadecimal digits as their type holds.
template <typename Integer, typename Name>
void ScrivelXmlGenBase::WriteIntegers(const std::string& ident, const Integer* items, unsigned int count,
                                      bool hex, std::string_view nullName, const Name& childName)
{
    WriteContainer(ident, [&] {
        if (items == nullptr) {
            WriteNULLPointer(std::string(nullName));
            return;
        }
        WholeElements whole(*this);
        const bool tagsAreKept = whole.TagsAreKept();
        for (unsigned int i = 0; i < count;) {
            if (tagsAreKept) {
                i += hex ? whole.PutHexLines(childName, items + i, count - i)
                         : whole.PutDecimalLines(childName, items + i, count - i);
            }
            if (i < count) {  // all go through the table, or the next one needs memory first
                const Integer item = items[i++];
                WriteElement(childName, [&] {
                    if (hex) {
                        AppendHex(logFile, item, 2 * sizeof(Integer));
                    } else {
                        AppendDecimal(logFile, item);
                    }
                });
            }
        }
    });
}

/// What `writeOne` makes of the value pointed to, or a null element.
template <typename Value, typename WriteOne>
void ScrivelXmlGenBase::WritePointee(const std::string& ident, Value* pointer, WriteOne writeOne)
{
    if (pointer == nullptr) {
        WriteNULLPointer(ident);
    } else {
        writeOne(*pointer);
    }
}

/// The name at an enumerator's place in its table; null for a value outside, negative ones included.
template <std::size_t size, typename Enumeration>
std::string_view NameAt(const std::string_view (&table)[size], Enumeration value)
{
    const auto index = static_cast<std::uint32_t>(value);
    return index < size ? table[index] : std::string_view();
}

/// The low 32 bits, which is all that the log shows of most 64-bit fields.
template <typename Integer>
constexpr std::uint64_t Low32(Integer value)
{
    return static_cast<std::uint32_t>(value);
}

/// A bit set as text: the prefix and the words of the bits that are set, lowest first, in braces when
/// there are several. Bits above the last word are written as one number, shifted down by as many bits
/// as there are words. No bits give an empty text.
template <std::size_t size>
std::string FlagText(const char* prefix, const char* const (&words)[size], unsigned int bits)
{
    if (bits == 0) {
        return {};
    }
    std::string names;
    const auto add = [&names](const std::string& name) {
        names += names.empty() ? "" : ", ";
        names += name;
    };
    for (std::size_t i = 0; i < size; ++i) {
        if ((bits >> i & 1U) != 0) {
            add(words[i]);
        }
    }
    if (const unsigned int rest = bits >> size; rest != 0) {
        add(HexText(rest));
    }
    const bool several = (bits & (bits - 1)) != 0;
    return prefix + ((several ? "{" : "") + names) + (several ? "}" : "");
}

}  // namespace Scrivel2

#endif
