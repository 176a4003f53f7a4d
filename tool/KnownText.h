// Registers, memory and bytes as people read them.

#ifndef SCRIVEL_TOOL_KNOWNTEXT_H
#define SCRIVEL_TOOL_KNOWNTEXT_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Json.h"
#include "Terminal.h"
#include "scrivel/Knowledge.h"
#include "scrivel/LogReader.h"

namespace ScrivelTool
{

/// pc; r32 when the log has no name; v0[1] for the second 128 bits of a wider one.
std::string RegisterName(const std::string& name, std::optional<std::uint64_t> number,
                         std::uint64_t offset128);
std::string RegisterName(const ScrivelReader::KnownRegister& known);

/// 0x3000
std::string ShortHex(std::uint64_t number);
/// A register's bytes without leading zeros: 0x3000.
std::string ValueText(std::string_view bytes);
/// The last bytes of a register's value, as many as it has bits; without leading zeros when that isn't
/// known, in fours.
std::string_view Significant(std::string_view bytes, std::uint64_t bits);

/// Memory:0x3000
std::string PlaceText(const std::string& space, std::uint64_t address);

/// e8 03 00 00. Bytes that differ from what was known before are marked: *e8*03 00 00. What was known is
/// one entry a byte, none where nothing was; without any the bytes stand alone.
std::string BytesText(std::string_view bytes, const std::vector<std::optional<char>>& known,
                      const Terminal& terminal);

/// The bytes as two hexadecimal digits each, for JSON.
std::string HexDigits(std::string_view bytes);

/// 68, or 68#2 for the second call of that number.
std::string NumberText(const ScrivelReader::Source& source);
/// "read #65", "wrote #61".
std::string SourceText(const ScrivelReader::Source& source);

/// {"kind": "register", "name": "pc", "number": 32, "value": "00003000", "call": 61, "way": "wrote",
/// "stale": true}
Json KnownJson(const ScrivelReader::KnownRegister& item, const ScrivelReader::Knowledge& known);
/// {"kind": "memory", "space": "1", "space_name": "Memory", "address": "0x3000", "value": "e8030000",
/// ...}
Json KnownJson(const ScrivelReader::KnownMemory& item, const ScrivelReader::Knowledge& known);

/// How a log is read for what was known of registers and memory: of a longer array the beginning is kept,
/// unless it is one of bytes. Knowledge is incomplete then.
ScrivelReader::ReadOptions OptionsForKnowledge();

/// A file's name as a shell takes it.
std::string ShellWord(const std::string& path);

/// The items after a label, on as many lines as they need:
///
///     known      pc 0x3000 (#61, target ran since)   cause 0x2 (#65)
std::string ItemLines(const std::string& label, const std::vector<std::string>& items, std::size_t width,
                      const Terminal& terminal);

/// 1 call, 2 calls
std::string CountText(std::uint64_t count, const std::string& what);

/// What a line tells after other things.
struct Fact
{
    std::string separator;  ///< from the one before: ", "
    std::string text;
    Style style = Style::Plain;
    bool isPath = false;  ///< which is never cut
};
/// The facts in a line, which goes on below, indented, where it would be too wide. A blank between two of
/// one style has it, too.
std::string FactLines(const std::vector<Fact>& facts, std::size_t indent, const Terminal& terminal);

/// The text cut to so many columns.
std::string Clipped(std::string text, std::size_t columns);

/// How many columns a text takes.
std::size_t Columns(std::string_view text);

}  // namespace ScrivelTool

#endif
