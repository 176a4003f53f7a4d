// Calls as trace events, which Perfetto's UI and chrome://tracing show: a track a thread, on which calls
// that were made in others stand below these.

#ifndef SCRIVEL_TOOL_CHROMETRACE_H
#define SCRIVEL_TOOL_CHROMETRACE_H

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "scrivel/Call.h"

namespace ScrivelTool
{

/// A document of one or several logs, each a process of its own. Its time begins with the first of them.
/// Events come in order of entry. What would not nest on its track, as the viewers demand, becomes an
/// asynchronous event.
class ChromeTrace
{
public:
    /// Nothing is written before the first log begins.
    explicit ChromeTrace(std::function<void(std::string_view)> itsWrite);

    /// A log that began so many nanoseconds after the first one.
    void BeginLog(const std::string& path, const ScrivelReader::LogHeader& header, std::int64_t since);
    /// What is kept of a call until all that were entered before it have ended: see Take.
    std::string Keep(const ScrivelReader::Call& call) const;
    /// Writes the event of a call that was kept. Calls come in order of entry.
    void Take(const std::string& kept);
    /// After one log at least.
    void Finish();

private:
    struct Head;

    void Write(const std::string& event);

    std::function<void(std::string_view)> write;
    bool isFirst = true;
    std::uint64_t process = 0;
    std::int64_t begin = 0;
    std::uint64_t nextId = 0;
    /// Of each track: when the events end that the next one may stand in, the outermost first, and when
    /// the last one began.
    struct Track
    {
        std::vector<std::int64_t> ends;
        std::int64_t lastBegin = 0;
    };
    std::map<std::uint32_t, Track> tracks;
};

}  // namespace ScrivelTool

#endif
