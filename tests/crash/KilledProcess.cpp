// Kills processes at random instants while they log calls of 100 bytes to 100 kilobytes, each followed by
// a final flush, and reads what they leave.
//
//     crash_killed_process --count 20000 --signal kill    SIGKILL from outside
//     crash_killed_process --count 5000 --signal segv     a second thread reads memory that isn't there
//     crash_killed_process --count 5000 --memory 20000    flushes come in pieces of 20 kilobytes
//
// --least and --most are sizes of calls, --longest is the latest instant in microseconds.
//
// The logging process notes in shared memory when it begins a flush and when the flush has returned.
// Instants are counted from the moment the log is open: before its first flush the file is empty.
//
// Fails when libxml2 rejects a file, or when a call whose flush had returned isn't in it whole.

#include "crash/Killing.h"
#include "crash/LogReader.h"
#include "crash/Options.h"
#include "crash/Progress.h"
#include "crash/Scratch.h"
#include "crash/Shared.h"

#include <atomic>
#include <csignal>
#include <cstdio>
#include <filesystem>
#include <random>
#include <string>
#include <thread>

#include <sys/mman.h>
#include <sys/prctl.h>
#include <unistd.h>

using namespace ScrivelTest;

namespace
{

std::size_t mostInMemory;

[[noreturn]] void LogForEver(Progress& progress, Load& load, const std::function<void()>& begin)
{
    WatchedGenerator log("trace", progress);
    log.SetMostInMemory(mostInMemory);
    log.StartLogging();
    begin();
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

/// As LogForEver, beside a thread that ends the process after a while.
void LogUntilFault(Progress& progress, Load& load, const std::function<void()>& begin, Microseconds delay)
{
    std::signal(SIGSEGV, SIG_DFL);  // a sanitizer's runtime would make it an ordinary exit
    prctl(PR_SET_DUMPABLE, 0);      // no core file
    std::atomic<bool> open{false};
    std::thread([&] {
        while (!open) {
            std::this_thread::yield();
        }
        begin();
        std::this_thread::sleep_for(delay);
        ReadUnmappedMemory();
    }).detach();
    LogForEver(progress, load, [&] { open = true; });
}

}  // namespace

int main(int argc, char** argv)
{
    const Options options(argc, argv,
                          {{"count", "300"},
                           {"seed", "1"},
                           {"directory", "."},
                           {"signal", "kill"},
                           {"longest", "3000"},
                           {"least", "100"},
                           {"most", "100000"},
                           {"memory", "67108864"}});
    mostInMemory = options.Number("memory");
    const bool fault = options.Text("signal") == "segv";
    const unsigned int seed = options.Number("seed");
    const unsigned int kills = options.Number("count");
    std::mt19937 random(seed);
    std::uniform_int_distribution<unsigned int> delays(0, options.Number("longest"));

    Scratch scratch(options.Text("directory"));
    Progress& progress = Shared<Progress>();
    unsigned int insideFlush = 0;
    unsigned int rejected = 0;
    unsigned int missing = 0;
    for (unsigned int i = 0; i < kills; ++i) {
        Load load(seed * 1000003ULL + i, options.Number("least"), options.Number("most"));
        const Microseconds delay(delays(random));
        progress.begun = 0;
        progress.done = 0;
        const pid_t child =
            RunUntilDead(fault ? SIGSEGV : SIGKILL, !fault, delay, [&](const auto& begin) {
                if (fault) {
                    LogUntilFault(progress, load, begin, delay);
                } else {
                    LogForEver(progress, load, begin);
                }
            });
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
        fault ? "SIGSEGV in a second thread" : "SIGKILL", Scratch::FileSystem(), kills, insideFlush,
        rejected, missing);
    return rejected == 0 && missing == 0 && insideFlush > 0 ? 0 : 1;
}
