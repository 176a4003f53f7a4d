// What a log says: its header, its calls, its damage. Plain data that the reader hands out.

#ifndef SCRIVEL_READER_CALL_H
#define SCRIVEL_READER_CALL_H

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "scrivel/Tree.h"

namespace ScrivelReader
{

/// A time relative to the start of the log. The log has microseconds.
struct Time
{
    std::int64_t nanoseconds = 0;
    /// The clock had been set back past the start of the log, where seconds wrap: 4294967295.9 is -0.1 s.
    bool wrapped = false;

    double Seconds() const { return double(nanoseconds) / 1e9; }
};

/// "0.016720 s" -> 16,720,000 ns; nothing for any other text.
std::optional<Time> ParseTime(std::string_view text);

/// One element of a call, and where it stands. A call that was interrupted has several.
struct Part
{
    std::uint64_t begin;  ///< offset of the start tag's <
    std::uint64_t end;    ///< offset after the end tag's >
    std::uint64_t line;   ///< of the start tag's <, from 1
};

/// What the root element's start tag says.
struct LogHeader
{
    Part place{};                            ///< the start tag alone
    std::string root;                        ///< run-4242
    std::string name;                        ///< run
    std::optional<std::uint64_t> processId;  ///< 4242
    std::string time;                        ///< 2026-11-21 14:03:59, local time
    std::string cadiVersion;
    std::string hostName;
    std::string operatingSystem;
};

/// One call, joined from its elements.
struct Call
{
    std::uint64_t number = 0;
    /// 1, or how many calls with this number have begun so far: the second one is shown as 68#2.
    std::uint32_t occurrence = 1;
    /// How many calls were entered before it: orders calls of one log by entry.
    std::uint64_t entry = 0;
    std::string name;

    std::optional<std::uint64_t> threadId;
    /// Threads in the order of their first call, from 1; 0 without one.
    std::uint32_t thread = 0;

    std::optional<Time> callTime;    ///< none when the call's beginning is lost
    std::optional<Time> returnTime;  ///< none when it had not returned when the log ended
    std::string status;              ///< CADI_STATUS_OK; empty when it has none
    std::string disassemblerAddress;

    /// Numbers of the calls it was made in, the outermost first; of more than 64 the innermost 64.
    std::vector<std::uint64_t> ancestors;

    Tree before;  ///< lines without a number that stand in front of its first element
    Tree arguments;
    Tree results;  ///< the status too, under the name that the log gives it

    /// The first of its elements, and the last. What lies between belongs to other calls.
    std::vector<Part> parts;

    bool beginningLost = false;  ///< continued, but it never began
    /// While it was open, a time came that lies before the one that the log had before it.
    bool clockSetBack = false;

    bool Returned() const { return returnTime.has_value(); }
    bool Failed() const;  ///< it has a status, and that is not CADI_STATUS_OK
    std::optional<std::uint64_t> Parent() const;
    /// How long it took; none when it didn't return or the clock was set back meanwhile, and never less
    /// than nothing.
    std::optional<std::int64_t> Took() const;
};

/// A place where the log is no XML, and what of it could not be read.
struct Damage
{
    std::uint64_t ordinal = 1;  ///< 1 for the first damage of a log, 2 for the next one
    std::uint64_t offset = 0;  ///< where the parser gave up
    std::uint64_t line = 0;
    std::string what;  ///< "the end tag of "a" is missing", as the parser says it
    /// The element that was being read and is lost, when its start tag was whole.
    std::optional<std::uint64_t> call;
    std::string callName;
    std::uint64_t lostFrom = 0;  ///< what was dropped: from here
    std::uint64_t lostTo = 0;    ///< to here, where reading goes on; the log's end when it doesn't
};

/// What was known when the last byte had been read.
struct LogEnd
{
    bool whole = false;      ///< a strict XML parser accepts the log
    bool empty = false;      ///< there was no byte, or nothing but blanks
    bool isLog = false;      ///< a root element was read, or a call
    bool rootEnded = false;  ///< the end tag of the root element was read
    std::uint64_t size = 0;
    std::uint64_t damages = 0;
    std::uint64_t calls = 0;
    std::string lastComment;  ///< the last one between calls that is no mark of an interrupted call
    std::uint64_t lastCommentAt = 0;
};

}  // namespace ScrivelReader

#endif
