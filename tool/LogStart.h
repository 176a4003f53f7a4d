// When a log began, by the clock on the wall.

#ifndef SCRIVEL_TOOL_LOGSTART_H
#define SCRIVEL_TOOL_LOGSTART_H

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "scrivel/Call.h"

namespace ScrivelTool
{

struct LogStart
{
    std::int64_t nanoseconds = 0;  ///< since 1970
    bool isExact = false;          ///< to a millisecond: a header has whole seconds
};

/// Of a log whose header has this time, whose last time is that, and which stands there. The last change
/// of the file minus the last time in it is the start to a millisecond, unless the file is a copy: then
/// it isn't within the header's second. Nothing when the header has no time that nanoseconds since 1970
/// can tell.
std::optional<LogStart> StartOf(const std::string& headerTime,
                                const std::optional<ScrivelReader::Time>& lastTime,
                                const std::string& path);

/// How much later than the first of them each log began, in nanoseconds; 0 when that isn't known. Unless
/// all are exact, whole seconds are what they have in common.
std::vector<std::int64_t> SinceTheFirst(const std::vector<std::optional<LogStart>>& starts);

}  // namespace ScrivelTool

#endif
