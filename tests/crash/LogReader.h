// The calls that the judge of logs finds in a log, and how much each holds.

#ifndef SCRIVEL_TESTS_CRASH_LOGREADER_H
#define SCRIVEL_TESTS_CRASH_LOGREADER_H

#include "crash/Load.h"
#include "judge/LogJudge.h"

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>

namespace ScrivelTest
{

struct LogContents
{
    bool accepted = false;     ///< the judge accepts the whole
    std::string problem;       ///< what the judge said, or which call is not whole
    unsigned int calls = 0;    ///< so many calls are there, from number 1 on, in order and whole
    std::size_t elements = 0;  ///< of any name
};

/// An element of a call, of which there are several when other calls have interrupted it.
struct CallElement
{
    unsigned int number;
    CallContents contents;
    bool returned;  ///< the time of its return is in it

    /// Adds another element of the same call.
    void Join(const CallElement& part)
    {
        number = part.number;
        contents.characters += part.contents.characters;
        contents.items += part.contents.items;
        returned = returned || part.returned;
    }
};

/// Reads a log, and hands out each call's element when it ends; counts no calls.
LogContents ReadLog(std::string_view bytes, const std::function<void(const CallElement&)>& visit);

/// Reads a log and counts its calls; null when they don't come from a load: then none is counted.
LogContents ReadLog(std::string_view bytes, const Load* load);

/// As ReadLog, without holding the file in memory.
LogContents ReadLogFile(const std::string& fileName, const Load* load);

}  // namespace ScrivelTest

#endif
