// Measures the memory that logging takes at most.
//
//     crash_peak_memory --count 1000000 --megabytes 40
//
// First `count` small calls, then through the layer a writer that throws after four times as many
// megabytes of text, then one call with an array of so many megabytes, which is some 35 times as much
// text.
//
// Fails when the calls after the first tenth make the peak grow, when one of the large ones takes more
// than 112 MiB besides what it is given, and when libxml2 rejects a log or finds too little in it. Where
// a sanitizer's runtime takes memory of its own, the figures are printed only.

#include "LoggedCall.h"

#include "crash/LogReader.h"
#include "crash/Options.h"
#include "crash/Progress.h"
#include "crash/Scratch.h"

#include <cstdio>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <vector>

#include <sys/resource.h>
#include <unistd.h>

using namespace ScrivelTest;

namespace
{

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool memoryIsOurOwn = false;
#elif defined(__has_feature)
constexpr bool memoryIsOurOwn = !__has_feature(address_sanitizer) && !__has_feature(thread_sanitizer) &&
                                !__has_feature(memory_sanitizer);
#else
constexpr bool memoryIsOurOwn = true;
#endif

constexpr long mostBesides = 112L * 1024;

/// The most that this process has held so far, in KiB.
long Peak()
{
    rusage usage;
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss;
}

/// Reads the only log there is, and removes it.
LogContents ReadAndRemove(const std::string& logName, const Load* load)
{
    const std::string fileName = logName + "-" + std::to_string(getpid()) + ".xml";
    const LogContents contents = ReadLogFile(fileName, load);
    std::filesystem::remove(fileName);
    return contents;
}

bool LogSmallCalls(unsigned int count)
{
    constexpr long noise = 64;
    Load load(1, 100, 400);
    Progress progress{};
    WatchedGenerator log("small", progress);
    log.StartLogging();
    long afterTenth = 0;
    for (unsigned int i = 1; i <= count; ++i) {
        load.WriteNextCall(log);
        log.FlushOutput(true, "");
        if (i == count / 10) {
            afterTenth = Peak();
        }
    }
    log.EndLogging();
    const long afterAll = Peak();

    const LogContents contents = ReadAndRemove("small", &load);
    const bool whole = contents.accepted && contents.calls == count;
    std::printf(
        "%u small calls: peak memory %ld KiB after a tenth of them, %ld KiB after all; the log is %s\n",
        count, afterTenth, afterAll, whole ? "whole" : contents.problem.c_str());
    return whole && (!memoryIsOurOwn || afterAll - afterTenth <= noise);
}

bool LogThrowingWriter(unsigned int megabytes)
{
    const std::string text(1'000'000, 'x');
    const long before = Peak();
    {
        Scrivel2::RunLog log("throwing");
        Scrivel2::LoggedCall call(log, "CADIMemRead");
        try {
            call.Results([&](auto& xml) {
                for (unsigned int i = 0; i < megabytes; ++i) {
                    xml.WriteString("text", text);
                }
                throw std::runtime_error("no more");
            });
        } catch (const std::runtime_error&) {
            // It goes on to whoever logs.
        }
    }
    const long after = Peak();

    constexpr std::size_t rootCallAndReturnTime = 3;
    const LogContents contents = ReadAndRemove("throwing", nullptr);
    const bool whole = contents.accepted && contents.elements == rootCallAndReturnTime;
    std::printf("a writer that throws after %u MB: peak memory %ld KiB, %ld KiB of it for the log; the "
                "log is %s\n",
                megabytes, after, after - before, whole ? "whole" : contents.problem.c_str());
    return whole && (!memoryIsOurOwn || after - before <= mostBesides);
}

bool LogLargeCall(unsigned int megabytes)
{
    const std::vector<unsigned char> data(megabytes * 1'000'000UL, 200);
    const long before = Peak();
    Progress progress{};
    WatchedGenerator log("large", progress);
    log.StartLogging();
    log.EnterCadiCall("CADIMemRead");
    log.WriteUint8Array("data", data.data(), static_cast<unsigned int>(data.size()), false);
    log.WriteIdent("CADIMemRead", false, true);
    log.FlushOutput(true, "");
    log.EndLogging();
    const long after = Peak();

    constexpr std::size_t elementsAround = 3;  // root, call, array
    const LogContents contents = ReadAndRemove("large", nullptr);
    const bool whole = contents.accepted && contents.elements == data.size() + elementsAround;
    std::printf("one call with an array of %u MB: peak memory %ld KiB, %ld KiB of it for the log; the "
                "log is %s\n",
                megabytes, after, after - before, whole ? "whole" : contents.problem.c_str());
    return whole && (!memoryIsOurOwn || after - before <= mostBesides);
}

}  // namespace

int main(int argc, char** argv)
{
    const Options options(argc, argv, {{"count", "30000"}, {"megabytes", "3"}, {"directory", "."}});
    const Scratch scratch(options.Text("directory"));
    const bool small = LogSmallCalls(options.Number("count"));
    const bool throwing = LogThrowingWriter(4 * options.Number("megabytes"));
    const bool large = LogLargeCall(options.Number("megabytes"));
    return small && throwing && large ? 0 : 1;
}
