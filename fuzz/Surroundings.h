// Where a fuzz target runs a generator: a process and a clock that don't change, a log file in memory,
// and a watch on what is printed.

#ifndef SCRIVEL_FUZZ_SURROUNDINGS_H
#define SCRIVEL_FUZZ_SURROUNDINGS_H

#include <cstdint>
#include <functional>
#include <map>
#include <sstream>
#include <streambuf>
#include <string>
#include <string_view>

#include <pthread.h>
#include <sys/time.h>
#include <sys/types.h>

namespace ScrivelFuzz
{

/// Ends the process, which is how a target reports a finding, unless `holds`.
void Require(bool holds, std::string_view what);

/// As Require(found == expected), and shows where the two part.
void RequireEqual(std::string_view found, std::string_view expected, std::string_view what);

/// One input's world: process 4242, thread 1234, 1000 s after the epoch on the host lab7, until they are
/// set otherwise. Logs that are opened in the current directory while it lives are files in memory.
class Surroundings
{
public:
    Surroundings();
    ~Surroundings();
    Surroundings(const Surroundings&) = delete;
    Surroundings& operator=(const Surroundings&) = delete;

    void SetClock(long seconds, long microseconds) { now = {seconds, microseconds}; }
    void SetProcess(pid_t id) { process = id; }
    void SetThread(pthread_t id) { thread = id; }
    void SetHost(const std::string& name) { host = name; }  ///< an empty name can't be read

    /// From now on asked at each write to a log, which is to have so many bytes: how many are written, or
    /// a negative error number.
    using WriteLimit = std::function<ssize_t(std::size_t)>;
    void LimitWrites(WriteLimit limit) { writeLimit = std::move(limit); }

    /// Opening a log fails from now on with this error number.
    void FailOpen(int reason) { openError = reason; }

    /// The bytes of a log; empty when there is none of that name.
    std::string LogText(const std::string& fileName = "trace-4242.xml") const;

    /// What has been printed since the last time, on standard error and then by puts; nothing may have
    /// reached standard output in another way.
    std::string TakePrinted();

private:
    static const bool installed;  // the functions of the platform that lead here

    int Open(const char* name, int flags, mode_t mode);
    bool GetHost(char* text, std::size_t size) const;

    timeval now{1000, 0};
    pid_t process = 4242;
    pthread_t thread = 1234;
    std::string host = "lab7";
    WriteLimit writeLimit;
    int openError = 0;
    std::map<std::string, int> logs;
    int output;       // what reaches the descriptor of standard output
    int trueOutput;   // that descriptor meanwhile
    std::string put;  // what puts was given
    std::ostringstream error;
    std::streambuf* trueError;
};

}  // namespace ScrivelFuzz

#endif
