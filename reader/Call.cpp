// What is derived from a call's data. Tested by tests/reader/CallTest.cpp.

#include "scrivel/Call.h"

#include <array>

#include "format/LogWords.h"

namespace ScrivelReader
{

std::optional<Time> ParseTime(std::string_view text)
{
    constexpr std::string_view unit = " s";
    constexpr std::uint64_t wrap = std::uint64_t(1) << 32;  // seconds have 32 bits
    // A second, a tenth of it, ... in nanoseconds.
    constexpr std::array<std::int64_t, 10> units = {1000000000, 100000000, 10000000, 1000000, 100000,
                                                    10000,      1000,      100,      10,      1};
    if (text.size() < unit.size() || text.substr(text.size() - unit.size()) != unit)
        return {};
    text.remove_suffix(unit.size());

    const std::size_t point = text.find('.');
    if (point == 0 || point > 10 || text.size() < point + 2 || text.size() > point + units.size())
        return {};
    std::uint64_t seconds = 0;
    for (const char c : text.substr(0, point)) {
        if (c < '0' || c > '9')
            return {};
        seconds = seconds * 10 + std::uint64_t(c - '0');
    }
    const std::string_view digits = text.substr(point + 1);
    std::int64_t fraction = 0;
    for (const char c : digits) {
        if (c < '0' || c > '9')
            return {};
        fraction = fraction * 10 + (c - '0');
    }
    fraction *= units[digits.size()];
    if (seconds >= wrap)
        return {};
    const bool wrapped = seconds > wrap / 2;
    const std::int64_t whole = std::int64_t(seconds) - (wrapped ? std::int64_t(wrap) : 0);
    return Time{whole * 1000 * 1000 * 1000 + fraction, wrapped};
}

bool Call::Failed() const
{
    return !status.empty() && status != Scrivel2::LogWords::statusOk;
}

std::optional<std::uint64_t> Call::Parent() const
{
    return ancestors.empty() ? std::nullopt : std::make_optional(ancestors.back());
}

std::optional<std::int64_t> Call::Took() const
{
    if (!callTime || !returnTime || callTime->wrapped != returnTime->wrapped || clockSetBack ||
        returnTime->nanoseconds < callTime->nanoseconds)
        return {};
    return returnTime->nanoseconds - callTime->nanoseconds;
}

}  // namespace ScrivelReader
