// Where a fuzz target runs a generator: a process and a clock that don't change, a log file in memory,
// and a watch on what is printed.

#ifndef SCRIVEL_FUZZ_SURROUNDINGS_H
#define SCRIVEL_FUZZ_SURROUNDINGS_H

#include <cstdint>
#include <functional>
#include <sstream>
#include <streambuf>
#include <string>
#include <string_view>

#include <sys/time.h>
#include <sys/types.h>

namespace ScrivelFuzz
{

/// Ends the process, which is how a target reports a finding, unless `holds`.
void Require(bool holds, std::string_view what);

/// As Require(found == expected), and shows where the two part.
void RequireEqual(std::string_view found, std::string_view expected, std::string_view what);

/// One input's world. A log "trace" opened while it lives is a file in memory, trace-4242.xml by name.
class Surroundings
{
public:
    Surroundings();
    ~Surroundings();
    Surroundings(const Surroundings&) = delete;
    Surroundings& operator=(const Surroundings&) = delete;

    /// The moment that the clock shows.
    void SetClock(long seconds, long microseconds) { now = {seconds, microseconds}; }

    /// From now on asked before each write to the log: an error number fails it, 0 lets it through.
    void FailWrites(std::function<int()> nextError) { writeError = std::move(nextError); }

    /// The bytes of the log.
    std::string LogText() const;

    /// What the library has printed so far must be exactly this; other output is none of its own.
    void RequirePrinted(std::string_view onStandardOutput, std::string_view onStandardError) const;

private:
    static const bool installed;  // the functions of the platform that lead here

    int Open(const char* name, int flags, mode_t mode);

    timeval now{1000, 0};
    std::function<int()> writeError;
    int logFile;
    int output;       // what reaches the descriptor of standard output
    int trueOutput;   // that descriptor meanwhile
    std::string put;  // what puts was given
    std::ostringstream error;
    std::streambuf* trueError;
};

}  // namespace ScrivelFuzz

#endif
