// Kills processes at random instants while they log calls of 100 bytes to 100 kilobytes, each followed by
// a final flush, and reads what they leave.
//
//     crash_killed_process --count 20000 --signal kill    SIGKILL from outside
//     crash_killed_process --count 5000 --signal segv     a second thread reads memory that isn't there
//
// The logging process notes in shared memory when it begins a flush and when the flush has returned.
// Instants are counted from the moment the log is open: before its first flush the file is empty.
//
// Fails when libxml2 rejects a file, or when a call whose flush had returned isn't in it whole.

#include "crash/LogReader.h"
#include "crash/Options.h"
#include "crash/Progress.h"
#include "crash/Scratch.h"

#include <chrono>
#include <csignal>
#include <cstdio>
#include <filesystem>
#include <random>
#include <stdexcept>
#include <string>
#include <thread>

#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace ScrivelTest;

namespace
{

using Microseconds = std::chrono::microseconds;

[[noreturn]] void LogUntilKilled(Progress& progress, Load& load, int started)
{
    WatchedGenerator log("trace", progress);
    log.StartLogging();
    if (write(started, "", 1) != 1) {
        _exit(1);
    }
    for (;;) {
        load.WriteNextCall(log);
        log.FlushOutput(true, "");
    }
}

void ReadUnmappedMemory()
{
    const auto size = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    const volatile auto* const page =
        static_cast<char*>(mmap(nullptr, size, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
    static_cast<void>(*page);
}

/// Runs in the child: what is to happen there until it dies.
[[noreturn]] void RunChild(Progress& progress, Load& load, int started, int deadlySignal,
                           Microseconds delay)
{
    if (deadlySignal == SIGSEGV) {
        std::signal(SIGSEGV, SIG_DFL);  // a sanitizer's runtime would make it an ordinary exit
        prctl(PR_SET_DUMPABLE, 0);      // no core file
        int pipeEnds[2];
        if (pipe(pipeEnds) != 0) {
            _exit(1);
        }
        std::thread([=] {
            char byte;
            if (read(pipeEnds[0], &byte, 1) == 1 && write(started, "", 1) == 1) {
                std::this_thread::sleep_for(delay);
                ReadUnmappedMemory();
            }
            _exit(1);
        }).detach();
        started = pipeEnds[1];
    }
    LogUntilKilled(progress, load, started);
}

/// Starts a logging process, lets it die of the signal, and returns its id.
pid_t KillOne(Progress& progress, Load& load, int deadlySignal, Microseconds delay)
{
    progress.begun = 0;
    progress.done = 0;
    int started[2];
    if (pipe(started) != 0) {
        throw std::runtime_error("no pipe");
    }
    const pid_t child = fork();
    if (child == 0) {
        RunChild(progress, load, started[1], deadlySignal, delay);
    }
    close(started[1]);
    char byte;
    const bool running = child > 0 && read(started[0], &byte, 1) == 1;
    close(started[0]);
    if (running && deadlySignal == SIGKILL) {
        std::this_thread::sleep_for(delay);
        kill(child, SIGKILL);
    }
    int status = 0;
    if (!running || waitpid(child, &status, 0) != child || !WIFSIGNALED(status) ||
        WTERMSIG(status) != deadlySignal) {
        throw std::runtime_error("the logging process did not die of the signal");
    }
    return child;
}

}  // namespace

int main(int argc, char** argv)
{
    const Options options(
        argc, argv,
        {{"count", "300"}, {"seed", "1"}, {"directory", "."}, {"signal", "kill"}, {"longest", "3000"}});
    const int deadlySignal = options.Text("signal") == "segv" ? SIGSEGV : SIGKILL;
    const unsigned int seed = options.Number("seed");
    const unsigned int kills = options.Number("count");
    std::mt19937 random(seed);
    std::uniform_int_distribution<unsigned int> delays(0, options.Number("longest"));

    Scratch scratch(options.Text("directory"));
    Progress& progress = Progress::Shared();
    unsigned int insideFlush = 0;
    unsigned int rejected = 0;
    unsigned int missing = 0;
    for (unsigned int i = 0; i < kills; ++i) {
        Load load(seed * 1000003ULL + i, 100, 100'000);
        const pid_t child = KillOne(progress, load, deadlySignal, Microseconds(delays(random)));
        const std::string fileName = "trace-" + std::to_string(child) + ".xml";
        const std::string bytes = FileBytes(fileName);
        std::filesystem::remove(fileName);

        const LogContents contents = ReadLog(bytes, &load);
        insideFlush += progress.begun > progress.done ? 1U : 0U;
        if (!contents.accepted) {
            ++rejected;
            scratch.Keep(bytes, "rejected: " + contents.problem);
        } else if (contents.calls + 1 < progress.done) {  // the first flush is the header's
            missing += progress.done - 1 - contents.calls;
            scratch.Keep(bytes, "calls missing: " + contents.problem);
        }
    }
    std::printf(
        "%s on %s: %u kills, %u of them inside a flush: %u files rejected, %u flushed calls missing\n",
        deadlySignal == SIGKILL ? "SIGKILL" : "SIGSEGV in a second thread", Scratch::FileSystem(), kills,
        insideFlush, rejected, missing);
    return rejected == 0 && missing == 0 && insideFlush > 0 ? 0 : 1;
}
