// The start of a log from its header and its file. Tested by tests/tool/LogStartTest.cpp, ExportTest.cpp
// and, for the page, by tests/page.

#include "LogStart.h"

#include <algorithm>
#include <ctime>
#include <limits>
#include <sys/stat.h>

namespace ScrivelTool
{

namespace
{

constexpr std::int64_t second = 1000 * 1000 * 1000;

}  // namespace

std::optional<LogStart> StartOf(const std::string& headerTime,
                                const std::optional<ScrivelReader::Time>& lastTime,
                                const std::string& path)
{
    std::tm local{};
    if (strptime(headerTime.c_str(), "%Y-%m-%d %H:%M:%S", &local) == nullptr)
        return {};
    local.tm_isdst = -1;
    // Nanoseconds reach to the year 2262.
    constexpr std::int64_t latest = std::numeric_limits<std::int64_t>::max() / second - 1;
    const std::int64_t seconds = std::mktime(&local);
    if (seconds < 0 || seconds > latest)
        return {};
    LogStart start{seconds * second, false};
    struct stat file
    {
    };
    if (!lastTime || path == "-" || stat(path.c_str(), &file) != 0 || !S_ISREG(file.st_mode))
        return start;
    const std::int64_t exact =
        file.st_mtim.tv_sec * second + file.st_mtim.tv_nsec - lastTime->nanoseconds;
    if (exact >= start.nanoseconds && exact < start.nanoseconds + second)
        start = {exact, true};
    return start;
}

std::vector<std::int64_t> SinceTheFirst(const std::vector<std::optional<LogStart>>& starts)
{
    const bool areExact =
        std::all_of(starts.begin(), starts.end(),
                    [](const std::optional<LogStart>& start) { return !start || start->isExact; });
    std::vector<std::int64_t> since;
    std::optional<std::int64_t> first;
    for (const std::optional<LogStart>& start : starts) {
        const std::int64_t begin = start ? start->nanoseconds : 0;
        since.push_back(areExact ? begin : begin - begin % second);
        if (start)
            first = std::min(first.value_or(since.back()), since.back());
    }
    for (std::size_t i = 0; i < starts.size(); ++i)
        since[i] = starts[i] ? since[i] - *first : 0;
    return since;
}

}  // namespace ScrivelTool
