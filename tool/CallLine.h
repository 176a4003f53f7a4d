// A call in one line, as those know it who trace system calls:
//
//     68  0.016720   12.55 ms T1 CADIMemWrite(Memory:0x40000000, bytes=4, data=e8 03 00 00) -> ...  OK

#ifndef SCRIVEL_TOOL_CALLLINE_H
#define SCRIVEL_TOOL_CALLLINE_H

#include <cstdint>
#include <optional>
#include <string>

#include "Terminal.h"
#include "scrivel/Call.h"

namespace ScrivelTool
{

/// CADIMemWrite(Memory:0x40000000, bytes=4, data=e8 03 00 00)
std::string CallText(const ScrivelReader::Call& call);
/// Memory:0x40000000, bytes=4     Registers as pc=0x3000, addresses as space:0x..., bytes in hexadecimal.
std::string ElementsText(const ScrivelReader::Tree& tree, bool results);
/// OK, PermissionDenied, NOT RETURNED or nothing.
std::string StatusText(const ScrivelReader::Call& call);
/// 68, or 68#2 for the second call of that number.
std::string NumberText(std::uint64_t number, std::uint32_t occurrence);
std::string NumberText(const ScrivelReader::Call& call);
/// 0.016720, with a mark when the clock had been set back.
std::string TimeText(const std::optional<ScrivelReader::Time>& time);
/// 12.55 ms
std::string DurationText(std::optional<std::int64_t> nanoseconds);

/// An address record, also one in its overlay, as space:0x3000; nothing for any other element.
std::optional<std::string> AddressText(ScrivelReader::Tree::Element element);
/// A register's value as pc=0x3000, as r32=0x3000 when the log has no name; nothing for any other
/// element.
std::optional<std::string> RegisterText(ScrivelReader::Tree::Element element);

/// The whole line with colours and its line end, no wider than the terminal.
std::string CallLine(const ScrivelReader::Call& call, const Terminal& terminal);

/// What the limits of reading are when lines are all that is shown: a line has no room for more.
ScrivelReader::Tree::Limits LineLimits();

}  // namespace ScrivelTool

#endif
