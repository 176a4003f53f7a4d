// The one grammar by which calls are chosen, for every command and everyone who shows calls.
//
//     names      CADIMem*,modeChange      globs, any of them
//     threads    T1 or 1234               by order of appearance or by threadId, any of them
//     calls      55..68  55..  ..68  68   numbers, any of the ranges
//     from, to   1.5  200ms               entered within these seconds of the log
//     slower     1ms                      took longer: ns, us, ms, s; plain numbers are seconds
//     inside     55                       made in call 55, at any depth
//     grep       ram                      this text in its name, its status or a value
//     where      name ~ Mem and took > 1ms and arg.bytes = 4
//
// Everything that is given must hold. An expression has  and  or  not  ( )  and comparisons of a field
// with a value by  = != < <= > >=  or  ~ !~ (contains, or doesn't). Values with blanks stand in quotes.
// Fields:
//     name status thread number took time return parent address
//     arg.PATH result.PATH    any argument or result whose path ends so: arg.addr, arg.location.addr
// and, alone:  failed  open  returned. Numbers are compared as numbers, whatever base they are written
// in: arg.addr = 0x3000 finds 0x0000000000003000. Bytes are one text: arg.data = e8030000.

#ifndef SCRIVEL_READER_CALLFILTER_H
#define SCRIVEL_READER_CALLFILTER_H

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "scrivel/Call.h"

namespace ScrivelReader
{

/// A filter as it is written. What is empty chooses every call.
struct FilterText
{
    std::string names;
    bool failed = false;
    bool open = false;
    std::string threads;
    std::string calls;
    std::string from;
    std::string to;
    std::string slower;
    std::string inside;
    std::string grep;
    std::string where;
};

class CallFilter
{
public:
    /// Nothing when a part isn't understood, and error says which and why.
    static std::optional<CallFilter> Make(const FilterText& text, std::string& error);

    CallFilter();
    CallFilter(CallFilter&&) noexcept;
    CallFilter& operator=(CallFilter&&) noexcept;
    ~CallFilter();

    /// For a call that has ended, read with its contents if NeedsContents().
    bool Matches(const Call& call) const;
    bool NeedsContents() const;
    bool MatchesAll() const;

private:
    class Impl;
    std::unique_ptr<const Impl> impl;
};

/// 1ms, 20us, 1.5s, 0.001 -> nanoseconds.
std::optional<std::int64_t> ParseDuration(std::string_view text);

/// Whether a name matches a glob of * and ?.
bool MatchesGlob(std::string_view name, std::string_view glob);

/// A whole number in any form that a log has: 4, 0x40000000, or the 16 bytes of a register,
/// "00000000 00000000 00000000 00003000 ", when it fits into 64 bits.
std::optional<std::uint64_t> ParseLogNumber(std::string_view text);

}  // namespace ScrivelReader

#endif
