// Fails allocations of a host that logs through the layer, sees std::bad_alloc, and logs on.
//
//     crash_failed_layer_allocations --count 0
//
// Each allocation fails in turn: alone, and with so many after it. The host starts a log of several
// files, enters calls within calls, gives them arguments and results, and writes comments; it catches
// what each of these throws. `count` limits the cases, 0 meaning all.
//
// Fails when a file isn't a document, an empty one among them, when what the layer took without an
// exception isn't in it, or when the log doesn't go on once there is memory again.

#include "LoggedCall.h"

#include "crash/Allocations.h"
#include "crash/LogReader.h"
#include "crash/Options.h"
#include "crash/Scratch.h"
#include "crash/Session.h"
#include "crash/Shared.h"

#include <array>
#include <cstdio>
#include <filesystem>
#include <new>
#include <optional>
#include <string>
#include <vector>

using namespace ScrivelTest;

namespace
{

constexpr unsigned int mostCalls = 100;

/// What the layer has taken of the call of each number.
struct Taken
{
    std::array<bool, mostCalls> entered;
    std::array<bool, mostCalls> argued;
    std::array<bool, mostCalls> returned;
    unsigned int last;  ///< the call after all that failed
    bool ended;
};

template <typename Work>
bool Does(Work work)
{
    try {
        work();
        return true;
    } catch (const std::bad_alloc&) {
        return false;
    }
}

class Host
{
public:
    Host(Load& loadToLog, Taken& told) : load(loadToLog), taken(told) {}

    void Run(unsigned long failFrom, unsigned long failUpTo)
    {
        Scrivel2::LogOptions smallFiles;
        smallFiles.fileSize = 30'000;
        std::optional<Scrivel2::RunLog> started;
        allocations = {0, failFrom, failUpTo};
        while (!Does([&] { started.emplace("run", smallFiles); })) {
        }
        Scrivel2::RunLog& log = *started;
        for (unsigned int round = 0; round < 4; ++round) {
            LogCall(log, round);
            Does([&] { log.Comment("a comment of more characters than a string holds without memory"); });
        }
        allocationsSeen = allocations.made;
        allocations.failUpTo = 0;
        {
            const Scrivel2::LoggedCall call(log, "last");
            taken.last = call.Number();
        }
        log.EndLogging();
        taken.ended = true;
    }

    unsigned long AllocationsSeen() const { return allocationsSeen; }

private:
    /// Logs a call that so many others interrupt, each within the one before.
    void LogCall(Scrivel2::RunLog& log, unsigned int interruptions)
    {
        Does([&] {
            const Scrivel2::CallHead head{interruptions, "disassembler", "an element before the call"};
            Scrivel2::LoggedCall call(log, "CADIExecContinueUntilItStops", head);
            const unsigned int number = call.Number();
            taken.entered.at(number) = true;
            taken.argued.at(number) =
                Does([&] { call.Arguments([&](auto& xml) { load.WriteContents(xml, number); }); });
            if (interruptions > 0) {
                LogCall(log, interruptions - 1);
            }
            taken.returned.at(number) = Does([&] {
                call.Results([](auto& xml) { xml.WriteReturnType("return", eslapi::CADI_STATUS_OK); });
            });
        });
    }

    Load& load;
    Taken& taken;
    unsigned long allocationsSeen = 0;
};

/// What is wrong with the log; empty for nothing.
std::string ProblemOf(const std::vector<std::string>& files, const Taken& taken, const Load& load)
{
    std::array<CallElement, mostCalls> seen{};
    for (const std::string& bytes : files) {
        const LogContents contents =
            ReadLog(bytes, [&](const CallElement& element) { seen.at(element.number).Join(element); });
        if (!contents.accepted) {
            return "rejected: " + contents.problem;
        }
    }
    for (unsigned int number = 1; number < mostCalls; ++number) {
        const CallElement& call = seen[number];
        const bool there = call.number == number;
        if ((taken.entered[number] && !there) || (taken.returned[number] && !call.returned) ||
            (taken.argued[number] && !(call.contents == load.Contents(number)))) {
            return "call " + std::to_string(number) + " is not whole";
        }
    }
    return taken.last > 0 && taken.ended && seen.at(taken.last).returned ? "" : "the log did not go on";
}

/// The bytes of all files that are there, which are then removed.
std::vector<std::string> TakeFiles()
{
    std::vector<std::string> files;
    for (const auto& entry : std::filesystem::directory_iterator(".")) {
        files.push_back(FileBytes(entry.path().string()));
        std::filesystem::remove(entry.path());
    }
    return files;
}

}  // namespace

int main(int argc, char** argv)
{
    const Options options(argc, argv, {{"count", "0"}, {"directory", "."}});
    Scratch scratch(options.Text("directory"));
    Load load(1, 100, 20'000);
    const Session fixedProcessAndTime("unused", load, 0);
    Taken& taken = Shared<Taken>();
    Host undisturbed(load, taken);
    undisturbed.Run(0, 0);
    const std::size_t fileCount = TakeFiles().size();
    const unsigned long all = undisturbed.AllocationsSeen();

    static constexpr unsigned int further[] = {0, 1, 2, 5, 20};
    const unsigned long wanted = options.Number("count");
    const unsigned long possible = all * std::size(further);
    const unsigned long step = wanted == 0 || wanted >= possible ? 1 : possible / wanted;
    unsigned int cases = 0;
    unsigned int broken = 0;
    for (unsigned long number = 0; number < possible; number += step) {
        const unsigned long first = number / std::size(further) + 1;
        const unsigned int more = further[number % std::size(further)];
        taken = Taken{};
        const ChildEnd end = InChild([&] { Host(load, taken).Run(first, first + more); });
        const std::vector<std::string> files = TakeFiles();
        const std::string problem = end.manner == ChildEnd::Manner::Returned
                                        ? ProblemOf(files, taken, load)
                                        : "the process ended or saw another exception";
        ++cases;
        if (!problem.empty()) {
            ++broken;
            scratch.Keep(files.empty() ? "" : files.front(), "allocation " + std::to_string(first) +
                                                                 " and " + std::to_string(more) +
                                                                 " after it: " + problem);
        }
    }
    std::printf("%lu allocations of a host that logs on through the layer, failed in turn: %u cases, %u "
                "broken\n",
                all, cases, broken);
    return cases > 0 && fileCount > 1 && broken == 0 ? 0 : 1;
}
