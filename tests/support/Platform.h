// The platform functions that the library calls, defined anew in the test executable.
//
// Each forwards to the C library until a test gives it something else to do, and counts its calls.
//
//     platform.getpid.Use([] { return 4242; });
//     ...
//     EXPECT_EQ(platform.pwrite.Calls(), 2U);
//     platform.Reset();
//
// The definitions stand in the executable, so they come before the C library's for the library under
// test, static or shared, and for everything else in the process.

#ifndef SCRIVEL_TESTS_SUPPORT_PLATFORM_H
#define SCRIVEL_TESTS_SUPPORT_PLATFORM_H

#include <atomic>
#include <ctime>
#include <functional>
#include <memory>
#include <utility>

#include <pthread.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <sys/types.h>
#include <unistd.h>

namespace ScrivelTest
{

template <typename Signature>
class Replaceable;

/// One function of the platform. Initialised at compile time: some are called before any constructor
/// has run.
template <typename Result, typename... Arguments>
class Replaceable<Result(Arguments...)>
{
public:
    constexpr explicit Replaceable(const char* symbol) : name(symbol) {}

    /// From now on calls go to `function`, which may call Real. It must not throw.
    void Use(std::function<Result(Arguments...)> function)
    {
        replacement = std::make_unique<std::function<Result(Arguments...)>>(std::move(function));
    }

    /// Forwards again and counts from 0.
    void Reset()
    {
        replacement.reset();
        calls = 0;
    }

    unsigned int Calls() const { return calls; }

    /// What the C library does.
    Result Real(Arguments... arguments);

    /// What the definition in the executable does.
    Result Call(Arguments... arguments);

private:
    using Pointer = Result (*)(Arguments...);

    const char* name;
    std::unique_ptr<std::function<Result(Arguments...)>> replacement;
    std::atomic<Pointer> real{nullptr};
    std::atomic<unsigned int> calls{0};
};

struct Platform
{
    Replaceable<pid_t()> getpid{"getpid"};
    Replaceable<int(timeval*, void*)> gettimeofday{"gettimeofday"};
    Replaceable<std::time_t(std::time_t*)> time{"time"};
    Replaceable<std::tm*(const std::time_t*)> localtime{"localtime"};
    Replaceable<std::size_t(char*, std::size_t, const char*, const std::tm*)> strftime{"strftime"};
    Replaceable<int(char*, std::size_t)> gethostname{"gethostname"};
    Replaceable<char*(int)> strerror{"strerror"};
    Replaceable<pthread_t()> pthread_self{"pthread_self"};
    Replaceable<int(const char*)> puts{"puts"};  // GoogleTest prints failures through it
    Replaceable<int(int)> isalpha{"isalpha"};
    Replaceable<int(int)> isprint{"isprint"};

    Replaceable<int(const char*, int, mode_t)> open{"open"};
    Replaceable<int(int, struct stat*)> fstat{"fstat"};
    Replaceable<ssize_t(int, const void*, std::size_t)> write{"write"};
    Replaceable<ssize_t(int, const void*, std::size_t, off_t)> pwrite{"pwrite"};
    Replaceable<ssize_t(int, void*, std::size_t, off_t)> pread{"pread"};
    Replaceable<off_t(int, off_t, int)> lseek{"lseek"};
    Replaceable<int(int, off_t)> ftruncate{"ftruncate"};
    Replaceable<int(int)> close{"close"};

    void Reset();
};

extern Platform platform;

}  // namespace ScrivelTest

#endif
