// How an element is opened and closed, for the writers in base/, runbase/ and generators/, and the small
// conversions that they share. Internal: not installed.

#ifndef SCRIVEL_BASE_ELEMENTFORMS_H
#define SCRIVEL_BASE_ELEMENTFORMS_H

#include "ScrivelXmlGen.h"

#include "base/LogText.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace Scrivel2
{

/// One line: the start tag, what `writeValue` appends to the log file, the end tag.
template <typename WriteValue>
void ScrivelXmlGenBase::WriteElement(const std::string& ident, WriteValue writeValue)
{
    WriteIdent(ident, true, false);
    writeValue();
    WriteIdentWithoutTabs(ident);
}

/// Tags on lines of their own around the children.
template <typename WriteChildren>
void ScrivelXmlGenBase::WriteContainer(const std::string& ident, WriteChildren writeChildren)
{
    WriteIdent(ident, true, true);
    writeChildren();
    WriteIdent(ident, false, true);
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
                                   const std::string& nullName, WriteItem writeItem)
{
    WriteContainer(ident, [&] {
        if (items == nullptr) {
            WriteNULLPointer(nullName);
            return;
        }
        for (unsigned int i = 0; i < EntriesIn(count); ++i) {
            writeItem(items[i]);
        }
    });
}

/// A container of integers, in decimal or in as many hexadecimal digits as their type holds.
template <typename Integer>
void ScrivelXmlGenBase::WriteIntegers(const std::string& ident, const Integer* items, unsigned int count,
                                      bool hex, const std::string& nullName, const std::string& childName)
{
    constexpr unsigned int digits = 2 * sizeof(Integer);
    WriteItems(ident, items, count, nullName, [&](Integer item) {
        WriteElement(childName, [&] {
            if (hex) {
                AppendHex(logFile, item, digits);
            } else {
                AppendDecimal(logFile, item);
            }
        });
    });
}

/// What `writeValue` makes of the value pointed to, or a null element.
template <typename Value, typename WriteValue>
void ScrivelXmlGenBase::WritePointee(const std::string& ident, Value* pointer, WriteValue writeValue)
{
    if (pointer == nullptr) {
        WriteNULLPointer(ident);
    } else {
        writeValue(*pointer);
    }
}

inline std::string_view TextOf(const char* name)
{
    return name;
}

inline std::string_view TextOf(const std::string* name)
{
    return *name;
}

template <typename Name, typename Enumeration>
void ScrivelXmlGenBase::WriteName(const std::string& ident, const Name* name, std::string_view message,
                                  Enumeration value)
{
    WriteElement(ident, [&] {
        if (name != nullptr) {
            logFile.Append(TextOf(name));
        } else {
            logFile.Append(message);
            AppendHexDigits(logFile, static_cast<std::uint32_t>(value), 0);
        }
    });
}

/// The name at an enumerator's place in its table; null for a value outside, negative ones included.
template <std::size_t size, typename Enumeration>
const char* NameAt(const char* const (&table)[size], Enumeration value)
{
    const auto index = static_cast<std::uint32_t>(value);
    return index < size ? table[index] : nullptr;
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
