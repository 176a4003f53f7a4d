#include "Surroundings.h"

#include "support/Platform.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <iostream>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

namespace ScrivelFuzz
{

using ScrivelTest::platform;

namespace
{

Surroundings* current = nullptr;

/// Whether this thread is the one that the log is to show; the fuzzer has others, which need their own
/// identity.
thread_local bool isShown = false;

}  // namespace

void Require(bool holds, std::string_view what)
{
    if (!holds) {
        std::fprintf(stderr, "finding: %.*s\n", static_cast<int>(what.size()), what.data());
        std::abort();
    }
}

void RequireEqual(std::string_view found, std::string_view expected, std::string_view what)
{
    if (found == expected) {
        return;
    }
    const auto differing = std::mismatch(found.begin(), found.end(), expected.begin(), expected.end());
    const auto place = static_cast<std::size_t>(differing.first - found.begin());
    const std::size_t from = place - std::min<std::size_t>(place, 80);
    const auto show = [&](const char* title, std::string_view text) {
        const std::string_view part = text.substr(std::min(from, text.size()), 200);
        std::fprintf(stderr, "%s (%zu bytes):\n%.*s\n", title, text.size(), static_cast<int>(part.size()),
                     part.data());
    };
    std::fprintf(stderr, "they part at byte %zu; shown from byte %zu on\n", place, from);
    show("found", found);
    show("expected", expected);
    Require(false, what);
}

Surroundings::Surroundings()
    : logFile(memfd_create("log", MFD_CLOEXEC)), output(memfd_create("output", MFD_CLOEXEC)),
      trueOutput(dup(STDOUT_FILENO)), trueError(std::cerr.rdbuf(error.rdbuf()))
{
    Require(logFile >= 0 && output >= 0 && trueOutput >= 0, "no descriptors for the surroundings");
    std::fflush(stdout);
    dup2(output, STDOUT_FILENO);

    isShown = true;
    current = this;
}

Surroundings::~Surroundings()
{
    current = nullptr;
    isShown = false;
    std::cerr.rdbuf(trueError);
    std::fflush(stdout);
    dup2(trueOutput, STDOUT_FILENO);
    for (const int file : {logFile, output, trueOutput}) {
        close(file);
    }
}

/// Before main: the fuzzer's own threads call some of these at any time.
const bool Surroundings::installed = [] {
    platform.getpid.Use([] { return current != nullptr ? 4242 : platform.getpid.Real(); });
    platform.pthread_self.Use(
        []() -> pthread_t { return isShown ? 1234 : platform.pthread_self.Real(); });
    platform.gettimeofday.Use([](timeval* moment, void* zone) {
        if (current == nullptr) {
            return platform.gettimeofday.Real(moment, zone);
        }
        *moment = current->now;
        return 0;
    });
    platform.time.Use([](std::time_t* moment) -> std::time_t {
        if (current == nullptr) {
            return platform.time.Real(moment);
        }
        constexpr std::time_t fixed = 1795269839;
        if (moment != nullptr) {
            *moment = fixed;
        }
        return fixed;
    });
    platform.localtime.Use([](const std::time_t* moment) { return std::gmtime(moment); });
    platform.gethostname.Use([](char* host, std::size_t) {
        std::strcpy(host, "lab7");
        return 0;
    });
    platform.puts.Use([](const char* text) {
        if (current == nullptr) {
            return platform.puts.Real(text);
        }
        current->put.append(text).append("\n");
        return 0;
    });
    platform.open.Use([](const char* name, int flags, mode_t mode) {
        return current != nullptr ? current->Open(name, flags, mode)
                                  : platform.open.Real(name, flags, mode);
    });
    platform.pwrite.Use([](int file, const void* bytes, std::size_t size, off_t place) -> ssize_t {
        if (const int reason = current != nullptr && current->writeError ? current->writeError() : 0;
            reason != 0) {
            errno = reason;
            return -1;
        }
        return platform.pwrite.Real(file, bytes, size, place);
    });
    return true;
}();

int Surroundings::Open(const char* name, int flags, mode_t mode)
{
    if (std::string_view(name) != "trace-4242.xml") {
        return platform.open.Real(name, flags, mode);
    }
    if ((flags & O_TRUNC) != 0) {
        Require(ftruncate(logFile, 0) == 0, "the log can't be emptied");
    }
    return fcntl(logFile, F_DUPFD_CLOEXEC, 0);
}

std::string Surroundings::LogText() const
{
    struct stat status;
    Require(fstat(logFile, &status) == 0, "the log can't be looked at");
    std::string text(static_cast<std::size_t>(status.st_size), '\0');
    Require(pread(logFile, text.data(), text.size(), 0) == status.st_size, "the log can't be read");
    return text;
}

void Surroundings::RequirePrinted(std::string_view onStandardOutput,
                                  std::string_view onStandardError) const
{
    std::fflush(stdout);
    struct stat status;
    Require(fstat(output, &status) == 0 && status.st_size == 0, "printed past puts");
    RequireEqual(put, onStandardOutput, "printed on standard output");
    RequireEqual(error.str(), onStandardError, "printed on standard error");
}

}  // namespace ScrivelFuzz
