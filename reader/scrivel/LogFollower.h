// A log that is being written, read as it grows.
//
// The writer replaces the end of the file in steps, while others read: what stands there may be the old
// end, the new one or a part of either. So the follower reads the end of the file again each time it
// looks, from an element that begins well before it, and hands on an element only when it is seen to be
// complete: something of its level follows it, or it has returned and the end tag of the root element
// follows after blanks. When what it reads is no document, nothing is handed on, and the next look tells more.
//
//     LogFollower follower(handler);
//     follower.Open("run-4242.xml", error);
//     while (follower.Look() != LogFollower::Seen::Replaced && goesOn)
//         wait;
//     follower.Finish();

#ifndef SCRIVEL_READER_LOGFOLLOWER_H
#define SCRIVEL_READER_LOGFOLLOWER_H

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "scrivel/LogEnding.h"
#include "scrivel/LogReader.h"

namespace ScrivelReader
{

/// Used by one thread; any number may follow one log.
class LogFollower
{
public:
    /// The handler hears of the log as of one that LogReader reads.
    explicit LogFollower(LogHandler& handler, const ReadOptions& options = {});
    ~LogFollower();
    LogFollower(const LogFollower&) = delete;
    LogFollower& operator=(const LogFollower&) = delete;

    /// False when the file can't be opened or is none that can be followed, and error says why.
    bool Open(const std::string& path, std::string& error);

    enum class Seen
    {
        Document,  ///< what had settled was handed on
        Changing,  ///< the end is being replaced, or the log is damaged: nothing was
        Replaced,  ///< the file is another log now: what was left of the old one was handed on, with its
                   ///< calls that had not returned; the next look begins with the new one
    };
    /// Reads what has been written since the last look, and the last 8 KiB once more.
    Seen Look();

    /// No look will follow: hands on all the rest, settled or not, and the calls that have not returned.
    LogEnd Finish();

    /// As the last good look found the log; empty before there was one.
    const LogHeader& Header() const;
    LogEnding Ending() const;
    /// The call in which the log ends, when it has not returned: it is handed on when something follows
    /// it. It is read when it is asked for, once a look that finds the file changed.
    const std::optional<Call>& Last() const;
    /// Why the last look found no document: empty when it did.
    const std::string& Error() const;

    int Descriptor() const;

private:
    class Impl;
    std::unique_ptr<Impl> impl;
};

}  // namespace ScrivelReader

#endif
