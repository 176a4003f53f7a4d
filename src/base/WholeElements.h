// Elements put down in one piece, for generators whose tags nobody has replaced.
//
// base/ElementForms.h writes an element as a start tag, a value and an end tag, each through the table of
// the class and each with a look at the stream's state. Where no class has replaced tags and the stream
// is as it was made, the same bytes are put down here: one check, one look for room, then indentation,
// tags and value one after the other. What is asked here are the conditions under which that makes no
// difference; where one of them doesn't hold nothing is written, and ElementForms does it:
//
//  - The object is of the very class that said KeepsTags last: not of a class derived from that one, nor
//    still in the constructor of its base.
//  - The stream is good, has no width set and writes decimal.
//  - Memory has the room already: it grows as it does without this.
//  - The text is not so long that its name could be one that a class derived from this refuses.
//  - The depth is one that documents have: one end tag too many makes it the largest number there is.
//
// Tested by tests/base/WholeElementsTest.cpp, and with every writer by the fixture in
// tests/support/GeneratorTest.h, which has each text written both ways.

#ifndef SCRIVEL_BASE_WHOLEELEMENTS_H
#define SCRIVEL_BASE_WHOLEELEMENTS_H

#include "ScrivelXmlGen.h"

#include "base/PutText.h"
#include "base/Values.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <string_view>
#include <typeinfo>

namespace Scrivel2
{

/// A child of a record: one line.
template <std::size_t size, typename Value>
struct Field
{
    const GivenName<size>& name;
    Value value;
};

template <std::size_t size, typename Value>
Field(const GivenName<size>&, Value) -> Field<size, Value>;

/// The room that a call's start tag takes up to its number, and the end of the line.
inline std::size_t RoomForCallBegin(std::string_view name)
{
    return blanksPerLevel + RoomForName(name) + LogWords::callNumber.size() + aroundAttribute +
           mostDecimalDigits + 2;  // "<", "\n"
}

class WholeElements
{
public:
    explicit WholeElements(ScrivelXmlGenBase& generator) : log(generator) {}

    // ---- Each says whether it was put down ------------------------------------------------------

    /// A tag, and the end of the line if that is wanted. The depth follows.
    bool PutTag(std::string_view name, bool opening, bool newline)
    {
        return TagsAreKept() && PutKeptTag(name, opening, newline);
    }

    /// Whether the object is of the class that keeps them. Compared by address, which is null in an
    /// object whose class was compiled without RTTI.
    bool TagsAreKept() const
    {
#ifdef __cpp_rtti
        return &typeid(log) == log.tagKeeper;
#else
        return false;
#endif
    }

    /// Whether that class leaves WriteCloseInterruptedFunction as it is, too.
    bool EntryIsKept() const
    {
        return TagsAreKept() && log.entryIsKept;
    }

    /// A line: start tag, value, end tag.
    template <typename Name, typename Value>
    bool PutElement(const Name& name, const Value& value)
    {
        char* const out =
            TagsAreKept() && value.CanBePut(log.logFile) ? Room(RoomForElement(name, value), 1) : nullptr;
        if (out == nullptr) {
            return false;
        }
        log.logFile.Advance(PutElementAt(out, log.depth, name, value, Heads()));
        return true;
    }

    /// A container of one line for each field.
    template <typename... Fields>
    bool PutRecord(std::string_view name, const Fields&... fields)
    {
        const bool canBePut = TagsAreKept() && (fields.value.CanBePut(log.logFile) && ...);
        const std::size_t most =
            2 * (RoomForName(name) + aroundTag) + (RoomForElement(fields.name, fields.value) + ...);
        char* out = canBePut ? Room(most, sizeof...(fields) + 2) : nullptr;
        if (out == nullptr) {
            return false;
        }
        const unsigned int levels = log.depth;
        const NameHeads heads = Heads();
        out = PutTagAt(out, levels, true, name, heads);
        *out++ = '\n';
        ((out = PutElementAt(out, levels + 1, fields.name, fields.value, heads)), ...);
        out = PutTagAt(out, levels, false, name, heads);
        *out++ = '\n';
        log.logFile.Advance(out);
        return true;
    }

    /// Any text of one line, at most so long without its indentation: `put` puts it down.
    template <typename PutLine>
    bool Put(std::size_t most, PutLine put)
    {
        char* const out = Room(most, 1);
        if (out == nullptr) {
            return false;
        }
        log.logFile.Advance(put(out));
        return true;
    }

    /// The indentation of an end tag stands one level further out than the depth.
    static unsigned int OutsideOf(unsigned int depth)
    {
        return depth > 1 ? depth - 1 : 0;
    }

    // ---- Arrays of numbers ----------------------------------------------------------------------

    // Each puts down as many items, of one or more, as there is room for, a line each, and says how many
    // these were.

    /// In as many hexadecimal digits as the type holds. The lines differ in their digits alone: the first
    /// one is copied, first by itself, then in blocks, and each item's digits go into its line.
    template <std::size_t size, typename Integer>
    unsigned int PutHexLines(const GivenName<size>& name, const Integer* items, unsigned int count)
    {
        constexpr std::size_t blockSize = 2048;
        constexpr std::size_t digitsOfItem = 2 * sizeof(Integer);
        constexpr std::size_t afterDigits = size - 1 + aroundTag;
        const Hex first{items[0], digitsOfItem};
        const std::size_t length = blanksPerLevel * log.depth + size + 1 + LogWords::hexPrefix.size() +
                                   digitsOfItem + afterDigits;
        const std::size_t lines =
            std::min<std::size_t>(count, std::min(log.logFile.AtHand(), longest) / length);
        char* const out = lines > 0 && first.CanBePut(log.logFile) ? Room(lines * length, 0) : nullptr;
        if (out == nullptr) {
            return 0;
        }
        PutElementAt(out, log.depth, name, first, Heads());
        const std::size_t linesOfBlock = std::max<std::size_t>(blockSize / length, 1);
        for (std::size_t copied = 1; copied < lines;) {
            const std::size_t copies = std::min({copied, linesOfBlock, lines - copied});
            std::memcpy(out + copied * length, out, copies * length);
            copied += copies;
        }
        char* digits = out + length - afterDigits - digitsOfItem;
        for (std::size_t line = 0; line < lines; ++line, digits += length) {
            PutAllHexDigits(digits, items[line]);
        }
        log.logFile.Advance(out + lines * length);
        return static_cast<unsigned int>(lines);
    }

    template <std::size_t size, typename Integer>
    unsigned int PutDecimalLines(const GivenName<size>& name, const Integer* items, unsigned int count)
    {
        unsigned int lines = 0;
        while (lines < count && PutElement(name, Decimal{items[lines]})) {
            ++lines;
        }
        return lines;
    }

private:
    static constexpr unsigned int deepest = 64;
    static constexpr std::size_t longest = 32 * 1024;
    static constexpr std::size_t aroundTag = 4;  // "</", ">", "\n"

    template <typename Name, typename Value>
    static std::size_t RoomForElement(const Name& name, const Value& value)
    {
        return 2 * (RoomForName(name) + aroundTag) + value.Most();
    }

    template <typename Name>
    static char* PutTagAt(char* out, unsigned int levels, bool opening, const Name& name, NameHeads heads)
    {
        out = PutIndentation(out, levels);
        *out++ = '<';
        if (!opening) {
            *out++ = '/';
        }
        out = PutName(out, name, heads);
        *out++ = '>';
        return out;
    }

    template <typename Name, typename Value>
    static char* PutElementAt(char* out, unsigned int levels, const Name& name, const Value& value,
                              NameHeads heads)
    {
        out = PutTagAt(out, levels, true, name, heads);
        out = value.Put(out);
        out = PutTagAt(out, 0, false, name, heads);
        *out++ = '\n';
        return out;
    }

    NameHeads Heads() const
    {
        return HeadsOf(log.mendsNames);
    }

    /// Kept out of WriteIdent, which is shorter so for those who come through the table.
    [[gnu::noinline]] bool PutKeptTag(std::string_view name, bool opening, bool newline)
    {
        char* const out = Room(RoomForName(name) + aroundTag, 1);
        if (out == nullptr) {
            return false;
        }
        const unsigned int levels = opening ? log.depth : OutsideOf(log.depth);
        char* end = PutTagAt(out, levels, opening, name, Heads());
        if (newline) {
            *end++ = '\n';
        }
        log.logFile.Advance(end);
        log.depth += opening ? 1U : -1U;
        return true;
    }

    /// The put position with room for `most` characters and the indentation of `lines` lines, if all that
    /// is asked for holds.
    char* Room(std::size_t most, std::size_t lines)
    {
        if (!TagsAreKept() || log.depth > deepest || most > longest) {
            return nullptr;
        }
        return log.logFile.RoomForPlain(most + lines * blanksPerLevel * (log.depth + 1));
    }

    ScrivelXmlGenBase& log;
};

}  // namespace Scrivel2

#endif
