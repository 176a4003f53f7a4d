// Threads that come to a log in the midst of logging into it, and what the lock tells them.

#include "LoggedCall.h"

#include "layer/CallReader.h"
#include "layer/LayerTest.h"

#include <cerrno>
#include <csetjmp>
#include <csignal>
#include <cstdlib>
#include <functional>
#include <memory>
#include <thread>

#include <sys/wait.h>
#include <unistd.h>

using namespace Scrivel2;
using ScrivelTest::platform;
using ScrivelTest::ReadCalls;

#ifdef __SANITIZE_THREAD__
// It objects to what is tried here: logging in handlers of signals, and an exit that leaves the lock
// locked.
extern "C" const char* __tsan_default_options()
{
    return "report_signal_unsafe=0:report_destroy_locked=0";
}
#endif

namespace
{

class LogLock : public ScrivelTest::LayerTest
{
protected:
    LogLock() { platform.pthread_self.Reset(); }  // sanitizers ask for it in new threads
};

/// What the handler of SIGUSR1 does.
std::function<void()> inHandler;

class Handler
{
public:
    explicit Handler(std::function<void()> work)
    {
        inHandler = std::move(work);
        std::signal(SIGUSR1, [](int) {
            const int before = errno;
            inHandler();
            errno = before;
        });
    }
    ~Handler()
    {
        std::signal(SIGUSR1, SIG_DFL);
        inHandler = nullptr;
    }
    Handler(const Handler&) = delete;
    Handler& operator=(const Handler&) = delete;
};

/// The status of a child process that does the work; one that hangs is ended.
int StatusOf(const std::function<void()>& work)
{
    const pid_t child = fork();
    if (child == 0) {
        alarm(120);
        work();
        _exit(0);
    }
    int status = 0;
    waitpid(child, &status, 0);
    return status;
}

/// Whether the work, done in a child process, comes to its end with true.
bool Comes(const std::function<bool()>& work)
{
    return StatusOf([&] { _exit(work() ? 0 : 1); }) == 0;
}

TEST_F(LogLock, CallMadeInsideACallableIsRefusedAndCounted)
{
    EXPECT_TRUE(Comes([] {
        RunLog log("run");
        bool refused = false;
        {
            const LoggedCall call(log, "outer", [&](auto& xml) {
                const LoggedCall inner(log, "inner", [](auto&) { std::abort(); });
                log.Comment("lost");
                refused = inner.Number() == 0 && !log.IsGood();
                xml.WriteDecimal("a", 1);
            });
        }
        return refused && log.IsGood() && log.RefusedCalls() == 1;
    }));
    const auto read = ReadCalls(InRunFile());
    ASSERT_TRUE(read.accepted);
    EXPECT_EQ(read.calls.size(), 1U);
    EXPECT_EQ(read.calls.at(1).Argument("a"), "1");
    EXPECT_EQ(read.calls.at(1).returns, 1U);
}

TEST_F(LogLock, HandlerOfASignalThatComesWhileItsThreadLogsIsRefused)
{
    EXPECT_TRUE(Comes([] {
        RunLog log("run");
        const Handler handler([&] { const LoggedCall call(log, "inHandler"); });
        {
            const LoggedCall call(log, "c", [](auto& xml) {
                xml.WriteDecimal("a", 1);
                raise(SIGUSR1);
                xml.WriteDecimal("b", 2);
            });
        }
        raise(SIGUSR1);
        return log.RefusedCalls() == 1;
    }));
    const auto read = ReadCalls(InRunFile());
    ASSERT_TRUE(read.accepted);
    EXPECT_EQ(read.calls.at(1).Argument("b"), "2");
    EXPECT_EQ(read.calls.at(2).name, "inHandler");
}

TEST_F(LogLock, HandlersThatLogAtAnyInstantNeverWait)
{
    EXPECT_TRUE(Comes([] {
        RunLog log("run");
        const Handler handler([&] { const LoggedCall call(log, "inHandler"); });
        const pthread_t logging = pthread_self();
        constexpr int signals = 2000;
        std::atomic<int> sent{0};
        std::thread sender([&] {
            for (; sent < signals; ++sent) {
                pthread_kill(logging, SIGUSR1);
                std::this_thread::yield();
            }
        });
        while (sent < signals) {
            // Each stage of a call, without memory: the handlers ask for it too.
            const bool good = log.IsGood();
            static_cast<void>(good);
        }
        sender.join();
        return true;
    }));
    EXPECT_TRUE(ReadCalls(InRunFile()).accepted);
}

TEST_F(LogLock, CrashHandlerMayEndTheLogInTheMidstOfACallable)
{
    EXPECT_TRUE(Comes([] {
        RunLog log("run");
        const LoggedCall before(log, "before");
        const Handler handler([&] {
            log.EndLogging();
            _exit(0);
        });
        const LoggedCall call(log, "c", [](auto& xml) {
            xml.WriteDecimal("a", 1);
            raise(SIGUSR1);
        });
        return false;
    }));
    const auto read = ReadCalls(InRunFile());
    ASSERT_TRUE(read.accepted);
    EXPECT_EQ(read.calls.size(), 1U);
    EXPECT_EQ(read.calls.at(1).returns, 0U);
}

TEST_F(LogLock, HandlerThatEndsTheLogAndReturnsDropsWhatHasBegun)
{
    EXPECT_TRUE(Comes([] {
        RunLog log("run");
        const Handler handler([&] { log.EndLogging(); });
        LoggedCall call(log, "c");
        call.Results([](auto& xml) {
            xml.WriteDecimal("a", 1);
            raise(SIGUSR1);
            xml.WriteDecimal("b", 2);
        });
        const LoggedCall after(log, "after");
        return after.Number() == 0 && !log.IsGood() && log.RefusedCalls() == 0;
    }));
    const auto read = ReadCalls(InRunFile());
    ASSERT_TRUE(read.accepted);
    EXPECT_EQ(read.calls.size(), 1U);
    EXPECT_TRUE(read.calls.at(1).results.empty());
    EXPECT_NE(InRunFile().find("<!-- Log ended -->"), std::string::npos);
}

TEST_F(LogLock, ExitInsideACallableLeavesTheDocument)
{
    EXPECT_EQ(StatusOf([] {
                  static RunLog log("run");
                  const LoggedCall before(log, "before");
                  const LoggedCall call(log, "c", [](auto& xml) {
                      xml.WriteDecimal("a", 1);
                      std::exit(0);
                  });
              }),
              0);
    const auto read = ReadCalls(InRunFile());
    ASSERT_TRUE(read.accepted);
    EXPECT_EQ(read.calls.size(), 1U);
}

TEST_F(LogLock, ThreadThatLeavesACallableByAJumpIsRefusedFromThenOn)
{
    EXPECT_TRUE(Comes([] {
        auto* const log = new RunLog("run");
        static std::jmp_buf place;
        const Handler handler([] { siglongjmp(place, 1); });
        if (sigsetjmp(place, 1) == 0) {
            const LoggedCall call(*log, "c", [](auto& xml) {
                xml.WriteDecimal("a", 1);
                raise(SIGUSR1);
            });
        }
        const LoggedCall after(*log, "after");
        return after.Number() == 0 && log->RefusedCalls() == 1;
    }));
    EXPECT_EQ(InRunFile(), RunFile(""));
}

TEST_F(LogLock, WhatAThreadHasBegunThatEndsInTheMidstIsTakenBackByTheNext)
{
    RunLog log("run");
    std::thread([&] {
        static std::jmp_buf place;
        const Handler handler([] { siglongjmp(place, 1); });
        if (sigsetjmp(place, 1) == 0) {
            const LoggedCall call(log, "c", [](auto& xml) {
                xml.WriteDecimal("a", 1);
                raise(SIGUSR1);
            });
        }
    }).join();
    EXPECT_EQ(LoggedCall(log, "after").Number(), 1U);
    const auto read = ReadCalls(InRunFile());
    ASSERT_TRUE(read.accepted);
    EXPECT_EQ(read.calls.at(1).name, "after");
    EXPECT_TRUE(read.calls.at(1).arguments.empty());
}

TEST_F(LogLock, ThreadThatIsCancelledEndsItsTurnFirst)
{
    RunLog log("run");
    std::thread([&] {
        const std::string text(9000, 'x');
        pthread_cancel(pthread_self());
        const LoggedCall call(log, "c", [&](auto& xml) {
            pthread_testcancel();
            xml.WriteString("text", text);
        });
        pthread_testcancel();
        ADD_FAILURE() << "the thread may be cancelled while the target runs";
    }).join();
    {
        const LoggedCall call(log, "after");
    }
    const auto read = ReadCalls(InRunFile());
    ASSERT_TRUE(read.accepted);
    EXPECT_EQ(read.calls.at(1).Argument("text"), std::string(9000, 'x'));
    EXPECT_EQ(read.calls.at(1).returns, 1U);
    EXPECT_EQ(read.calls.at(2).name, "after");
}

}  // namespace
