// Cancels threads that log through the logging layer, at random instants, and looks how the others go on.
//
//     crash_cancelled_threads --count 900
//
// In a process of its own each time, three threads log to one log; one of them is cancelled, the others
// go on, and the log is ended. A thread may be cancelled while its target runs.
//
// Fails when a process dies or hangs, or when the log is not good before its end; when libxml2 rejects
// the file, or a call that had returned is not in it with its number and all arguments.

#include "LoggedCall.h"

#include "crash/LogReader.h"
#include "crash/Options.h"
#include "crash/Scratch.h"
#include "crash/Shared.h"

#include <array>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <random>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include <pthread.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace ScrivelTest;

namespace
{

constexpr unsigned int mostCalls = 1U << 14;

/// What the logging process tells of itself.
struct Told
{
    std::array<std::atomic<bool>, mostCalls> returned;  ///< by a call's number
    std::atomic<bool> goesOn;                           ///< after the cancellation
};

class Threads
{
public:
    Threads(const Load& sizes, Told& told) : load(sizes), tells(told), log("run")
    {
        for (std::thread& thread : threads) {
            thread = std::thread([this] { LogCalls(); });
        }
    }

    void CancelOne()
    {
        pthread_cancel(threads.front().native_handle());
        threads.front().join();
    }

    void End()
    {
        const unsigned int wanted = calls + 5;
        for (int i = 0; i < 1000 && calls < wanted; ++i) {
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        isOver = true;
        for (std::thread& thread : threads) {
            if (thread.joinable()) {
                thread.join();
            }
        }
        tells.goesOn = log.IsGood() && calls >= wanted;
        log.EndLogging();
    }

private:
    void LogCalls()
    {
        while (!isOver && calls < mostCalls / 2) {
            Scrivel2::LoggedCall call(log, "CADIMemRead");
            call.Arguments([&](auto& xml) {
                load.WriteContents(xml, call.Number());
                usleep(50);  // it may not be here
            });
            usleep(50);  // the target: the thread may be cancelled here
            call.Results([](auto& xml) { xml.WriteReturnType("return", eslapi::CADI_STATUS_OK); });
            ++calls;
            tells.returned.at(call.Number()) = true;
        }
    }

    Load load;
    Told& tells;
    Scrivel2::RunLog log;
    std::atomic<bool> isOver{false};
    std::atomic<unsigned int> calls{0};  // that have returned
    std::array<std::thread, 3> threads;
};

/// Whether the process ended well.
bool RunAndCancel(const Load& load, Told& told, std::chrono::microseconds delay, std::string& fileName)
{
    const pid_t child = fork();
    if (child == 0) {
        alarm(60);
        Threads threads(load, told);
        std::this_thread::sleep_for(delay);
        threads.CancelOne();
        threads.End();
        _exit(0);
    }
    int status = 0;
    if (child < 0 || waitpid(child, &status, 0) != child) {
        throw std::runtime_error("no child process");
    }
    fileName = "run-" + std::to_string(child) + ".xml";
    return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

}  // namespace

int main(int argc, char** argv)
{
    const Options options(argc, argv,
                          {{"count", "50"}, {"seed", "1"}, {"directory", "."}, {"longest", "2000"}});
    const unsigned int count = options.Number("count");
    std::mt19937 random(options.Number("seed"));
    std::uniform_int_distribution<unsigned int> delays(0, options.Number("longest"));
    Scratch scratch(options.Text("directory"));
    Told& told = Shared<Told>();

    unsigned int died = 0;
    unsigned int stopped = 0;
    unsigned int rejected = 0;
    unsigned int missing = 0;
    for (unsigned int i = 0; i < count; ++i) {
        for (auto& returned : told.returned) {
            returned = false;
        }
        told.goesOn = false;
        const Load load(random(), 100, 10'000);
        std::string fileName;
        if (!RunAndCancel(load, told, std::chrono::microseconds(delays(random)), fileName)) {
            ++died;
        } else if (!told.goesOn) {
            ++stopped;
        }
        std::vector<CallElement> seen(mostCalls);
        const std::string bytes = FileBytes(fileName);
        const LogContents contents =
            ReadLog(bytes, [&](const CallElement& element) { seen.at(element.number).Join(element); });
        if (!contents.accepted) {
            ++rejected;
            scratch.Keep(bytes, "rejected: " + contents.problem);
        }
        for (unsigned int number = 1; number < mostCalls; ++number) {
            if (told.returned[number] &&
                (!seen[number].returned || !(seen[number].contents == load.Contents(number)))) {
                ++missing;
                scratch.Keep(bytes, "call " + std::to_string(number) + " is missing or not whole");
            }
        }
        std::filesystem::remove(fileName);
    }
    std::printf(
        "%u threads cancelled: %u processes died, in %u the log did not go on, %u files rejected, "
        "%u calls missing\n",
        count, died, stopped, rejected, missing);
    return died + stopped + rejected + missing == 0 ? 0 : 1;
}
