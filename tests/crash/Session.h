// A log that comes out the same in every run, and what a run of it with something broken leaves.

#ifndef SCRIVEL_TESTS_CRASH_SESSION_H
#define SCRIVEL_TESTS_CRASH_SESSION_H

#include "crash/Load.h"
#include "crash/Progress.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace ScrivelTest
{

/// Who writes the log of a session: a generator, with a final flush after each call, or the layer, where
/// one call in three is interrupted by the next.
enum class Writer
{
    Generator,
    Layer
};

/// Starts a log, logs calls of a load, ends the log. Process, time and thread are fixed for the whole
/// program from the first session on.
class Session
{
public:
    Session(std::string logName, const Load& load, unsigned int calls, Writer writer = Writer::Generator,
            Scrivel2::Durability durability = Scrivel2::Durability::Process);

    /// Logs all calls; `afterFlush` is called whenever a flush has returned. A generator's text of more
    /// than `mostInMemory` bytes comes in pieces, unless that is 0.
    void Run(Progress& progress, const std::function<void()>& afterFlush = {},
             std::size_t mostInMemory = 0);

    std::string FileName() const;
    const Load& Calls() const { return load; }

    /// The file after each flush, the header's being number 1; number 0 is no file, or an empty one.
    const std::vector<std::string>& Documents();

    /// The number of the flush whose document `bytes` are; -1 when they are none's, or that of a flush
    /// before number `atLeast`. Instructions of an unfinished flush belong to no call and do no harm,
    /// and neither do blanks that its last tags lack.
    int DocumentNumber(const std::string& bytes, unsigned int atLeast);

private:
    using Flushed = std::function<void()>;

    void LogByGenerator(Progress& progress, const Flushed& flushed, std::size_t mostInMemory);
    void LogThroughLayer(Progress& progress, const Flushed& flushed);
    bool HoldsAllCalls(const std::string& bytes) const;

    std::string logName;
    Load load;
    unsigned int calls;
    Writer writer;
    Scrivel2::Durability durability;
    std::vector<std::string> documents;
};

/// How a child process ended.
struct ChildEnd
{
    enum class Manner
    {
        Returned,
        BadAlloc,
        OtherException,
        Hung,
        Signal
    };

    Manner manner;
    int signal;  ///< the one that ended it
};

/// Runs `work` in a child process that says nothing on standard error and is ended after a minute.
ChildEnd InChild(const std::function<void()>& work);

}  // namespace ScrivelTest

#endif
