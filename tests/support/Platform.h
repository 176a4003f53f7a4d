// The platform functions that the library calls, defined anew in the test executable.
//
// Each forwards to the C library until a test gives it something else to do, and counts its calls.
//
//     platform.getpid.Use([] { return 4242; });                       // until another or Reset
//     const auto stub = platform.time.Use([&](auto*) { return now; }); // until the end of the block
//     ...
//     EXPECT_EQ(platform.pwrite.Calls(), 2U);
//     platform.Reset();
//
// Everything in the process calls these functions, the test framework and the sanitizers too. So what
// refers to a variable is in force only while a stub that the test holds lives, and the compiler insists
// that it holds one.
//
// The definitions stand in the executable, so they come before the C library's for the library under
// test, static or shared, and for everything else in the process.

#ifndef SCRIVEL_TESTS_SUPPORT_PLATFORM_H
#define SCRIVEL_TESTS_SUPPORT_PLATFORM_H

#include <atomic>
#include <ctime>
#include <functional>
#include <type_traits>
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
    using Pointer = Result (*)(Arguments...);

    class Stub;

    constexpr explicit Replaceable(const char* symbol) : name(symbol) {}

    /// From now on calls go to `function`, in place of whatever was in force. It may call Real and must
    /// not throw.
    void Use(Pointer function)
    {
        newest = nullptr;
        standing = function;
    }

    /// The same for a function that refers to something: as long as the stub lives that is returned.
    template <typename Function, typename = std::enable_if_t<!std::is_convertible_v<Function, Pointer>>>
    Stub Use(Function function)
    {
        return Stub(*this, std::move(function));
    }

    /// Forwards again and counts from 0.
    void Reset()
    {
        Use(nullptr);
        calls = 0;
    }

    unsigned int Calls() const { return calls; }

    /// What the C library does.
    Result Real(Arguments... arguments);

    /// What the definition in the executable does.
    Result Call(Arguments... arguments);

private:
    const char* name;
    Pointer standing = nullptr;
    Stub* newest = nullptr;  // each knows the one before it; comes before what is standing
    std::atomic<Pointer> real{nullptr};
    std::atomic<unsigned int> calls{0};
};

/// Something else for a function to do, until the end of the stub's life. What was in force before it is
/// then in force again.
template <typename Result, typename... Arguments>
class [[nodiscard]] Replaceable<Result(Arguments...)>::Stub
{
public:
    Stub(Replaceable& replaced, std::function<Result(Arguments...)> with)
        : function(std::move(with)), before(replaced.newest), owner(replaced)
    {
        owner.newest = this;
    }
    Stub(const Stub&) = delete;
    Stub& operator=(const Stub&) = delete;

    /// Does nothing when another Use or a Reset has ended the stub already.
    ~Stub()
    {
        for (Stub** link = &owner.newest; *link != nullptr; link = &(*link)->before) {
            if (*link == this) {
                *link = before;
                return;
            }
        }
    }

private:
    friend class Replaceable;

    std::function<Result(Arguments...)> function;
    Stub* before;
    Replaceable& owner;
};

struct Platform
{
    Replaceable<pid_t()> getpid{"getpid"};
    Replaceable<int(timeval*, void*)> gettimeofday{"gettimeofday"};
    Replaceable<std::time_t(std::time_t*)> time{"time"};
    Replaceable<std::tm*(const std::time_t*)> localtime{"localtime"};
    Replaceable<std::tm*(const std::time_t*, std::tm*)> localtime_r{"localtime_r"};
    Replaceable<std::size_t(char*, std::size_t, const char*, const std::tm*)> strftime{"strftime"};
    Replaceable<int(char*, std::size_t)> gethostname{"gethostname"};
    Replaceable<char*(int)> strerror{"strerror"};
    Replaceable<pthread_t()> pthread_self{"pthread_self"};
    Replaceable<int(const char*)> puts{"puts"};  // GoogleTest prints failures through it
    Replaceable<int(int)> isalpha{"isalpha"};
    Replaceable<int(int)> isprint{"isprint"};

    Replaceable<uid_t()> geteuid{"geteuid"};
    Replaceable<gid_t()> getegid{"getegid"};
    Replaceable<int(const char*, int)> access{"access"};
    Replaceable<int(const char*, int, mode_t)> open{"open"};
    Replaceable<int(int, struct stat*)> fstat{"fstat"};
    Replaceable<ssize_t(int, const void*, std::size_t)> write{"write"};
    Replaceable<ssize_t(int, const void*, std::size_t, off_t)> pwrite{"pwrite"};
    Replaceable<ssize_t(int, void*, std::size_t, off_t)> pread{"pread"};
    Replaceable<off_t(int, off_t, int)> lseek{"lseek"};
    Replaceable<int(int, off_t)> ftruncate{"ftruncate"};
    Replaceable<int(int)> fdatasync{"fdatasync"};
    Replaceable<int(int)> fsync{"fsync"};
    Replaceable<int(int, const char*, int, const char*, int)> linkat{"linkat"};
    Replaceable<int(int)> close{"close"};

    void Reset();
};

extern Platform platform;

/// The type of a function's stub: StubOf<&Platform::getpid>.
template <auto function>
using StubOf = typename std::remove_reference_t<decltype(std::declval<Platform&>().*function)>::Stub;

}  // namespace ScrivelTest

#endif
