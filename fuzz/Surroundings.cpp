// The process, the clock and the files in memory that a fuzz target runs with.

#include "Surroundings.h"

#include "support/Platform.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <filesystem>
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
    : output(memfd_create("output", MFD_CLOEXEC)), trueOutput(dup(STDOUT_FILENO)),
      trueError(std::cerr.rdbuf(error.rdbuf()))
{
    Require(output >= 0 && trueOutput >= 0, "no descriptors for the surroundings");
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
    close(output);
    close(trueOutput);
    for (const auto& [name, file] : logs) {
        close(file);
    }
}

/// Before main: the fuzzer's own threads call some of these at any time.
const bool Surroundings::installed = [] {
    platform.getpid.Use([] { return current != nullptr ? current->process : platform.getpid.Real(); });
    platform.pthread_self.Use(
        []() -> pthread_t { return isShown ? current->thread : platform.pthread_self.Real(); });
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
    platform.localtime_r.Use(
        [](const std::time_t* moment, std::tm* record) { return gmtime_r(moment, record); });
    platform.gethostname.Use([](char* text, std::size_t size) {
        return current != nullptr && current->GetHost(text, size) ? 0 : -1;
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
        if (current != nullptr && current->writeLimit) {
            const ssize_t limit = current->writeLimit(size);
            if (limit < 0) {
                errno = static_cast<int>(-limit);
                return -1;
            }
            size = std::min(size, static_cast<std::size_t>(limit));
        }
        return platform.pwrite.Real(file, bytes, size, place);
    });
    return true;
}();

int Surroundings::Open(const char* name, int flags, mode_t mode)
{
    if ((flags & O_TMPFILE) == O_TMPFILE) {
        errno = EOPNOTSUPP;  // so that a log is opened by its name
        return -1;
    }
    // The layer opens its logs by whole paths.
    const std::filesystem::path path(name);
    const bool isHere = !path.has_parent_path() || path.parent_path() == std::filesystem::current_path();
    const bool isLog = isHere && path.extension() == ".xml";
    if (!isLog) {
        return platform.open.Real(name, flags, mode);
    }
    if (openError != 0) {
        errno = openError;
        return -1;
    }
    auto& file = logs.try_emplace(path.filename().string(), -1).first->second;
    if (file < 0) {
        file = memfd_create("log", MFD_CLOEXEC);
    } else if ((flags & O_EXCL) != 0) {
        errno = EEXIST;
        return -1;
    }
    Require((flags & O_TRUNC) == 0 || ftruncate(file, 0) == 0, "a log can't be emptied");
    return fcntl(file, F_DUPFD_CLOEXEC, 0);
}

bool Surroundings::GetHost(char* text, std::size_t size) const
{
    if (host.empty() || host.size() >= size) {
        return false;
    }
    std::strcpy(text, host.c_str());
    return true;
}

std::string Surroundings::LogText(const std::string& fileName) const
{
    const auto log = logs.find(fileName);
    if (log == logs.end()) {
        return {};
    }
    struct stat status;
    Require(fstat(log->second, &status) == 0, "a log can't be looked at");
    std::string text(static_cast<std::size_t>(status.st_size), '\0');
    Require(pread(log->second, text.data(), text.size(), 0) == status.st_size, "a log can't be read");
    return text;
}

std::string Surroundings::TakePrinted()
{
    std::fflush(stdout);
    struct stat status;
    Require(fstat(output, &status) == 0 && status.st_size == 0, "printed past puts");
    const std::string printed = error.str() + put;
    error.str("");
    put.clear();
    return printed;
}

}  // namespace ScrivelFuzz
