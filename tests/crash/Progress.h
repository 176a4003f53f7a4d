// What a process that is about to die has got done, where its parent can still read it.

#ifndef SCRIVEL_TESTS_CRASH_PROGRESS_H
#define SCRIVEL_TESTS_CRASH_PROGRESS_H

#include "ScrivelXmlGen.h"

#include <atomic>
#include <string>
#include <utility>

namespace ScrivelTest
{

/// Lies in memory that parent and child share (Shared.h) when the child is to die.
struct Progress
{
    std::atomic<unsigned int> begun;  ///< flushes
    std::atomic<unsigned int> done;   ///< flushes that have returned and left the stream good
};

/// A generator that tells of each flush; the header's is the first.
class WatchedGenerator : public Scrivel2::Scrivel2XmlGenRun
{
public:
    WatchedGenerator(const char* name, Progress& told) : Scrivel2XmlGenRun(name), progress(told) {}

    /// Lets flushes of more than that come in pieces.
    void SetMostInMemory(std::size_t size) { logFile.SetMostInMemory(size); }

    void SetDurability(Scrivel2::Durability durability) { logFile.SetDurability(durability); }

    /// Where what is written next has its place in the file.
    std::size_t Position() { return static_cast<std::size_t>(logFile.tellp()); }

    void FlushOutput(bool finalTag, std::string callName) override
    {
        const unsigned int number = ++progress.begun;
        Scrivel2XmlGenRun::FlushOutput(finalTag, std::move(callName));
        if (logFile.good()) {
            progress.done = number;
        }
    }

private:
    Progress& progress;
};

}  // namespace ScrivelTest

#endif
