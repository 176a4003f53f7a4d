// Kills processes that log through the logging layer, and reads what they leave.
//
//     crash_killed_layer --count 10000
//
// One call in five is interrupted by a call that the target makes back. Half of the kills fall at random
// instants, the other half in the midst of the target's work: before, inside or after such a callback.
// Files have a limit of size, so that many a log has several of them.
//
// Fails when libxml2 rejects a file, when a call whose arguments had been logged isn't in it with its
// number and all of them, or one that had returned lacks its return.

#include "LoggedCall.h"

#include "crash/Killing.h"
#include "crash/LogReader.h"
#include "crash/Options.h"
#include "crash/Scratch.h"
#include "crash/Shared.h"

#include <array>
#include <atomic>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <random>
#include <string>
#include <vector>

#include <unistd.h>

using namespace ScrivelTest;

namespace
{

enum class Stage : std::uint8_t
{
    Unknown,
    Argued,   ///< the arguments are logged
    Returned  ///< the results are
};

/// How far each call has got, by its number.
struct Calls
{
    std::array<std::atomic<Stage>, 1U << 14> stages;
    std::atomic<unsigned int>
        running;                   ///< the call that the target was at work for when the kill was due
    std::atomic<bool> calledBack;  ///< a callback had interrupted it, or it was one
};

/// What is to happen in the logging process.
struct Plan
{
    std::uint64_t seed;
    unsigned int dieIn;     ///< the number of the call in which the target stops; 0 for none
    bool dieAfterCallback;  ///< there, rather than at once
};

/// A debugger, its target, and the layer between them.
class Debugging
{
public:
    Debugging(const Plan& whatHappens, Calls& told, Load& loadToLog, const std::function<void()>& whenDue)
        : plan(whatHappens), calls(told), load(loadToLog), due(whenDue), random(plan.seed),
          log("run", SmallFiles())
    {
    }

    [[noreturn]] void GoOn()
    {
        if (plan.dieIn == 0) {
            due();
        }
        for (;;) {
            Call("CADIMemRead", false);
        }
    }

private:
    /// Of a size that a dozen calls fill.
    static Scrivel2::LogOptions SmallFiles()
    {
        Scrivel2::LogOptions options;
        options.fileSize = 100'000;
        return options;
    }

    void Call(const char* name, bool isCallback)
    {
        const unsigned int number = ++entered;
        const auto writeArguments = [&](auto& xml) { load.WriteContents(xml, number); };
        if (random() % 2 == 0) {
            Scrivel2::LoggedCall call(log, name, writeArguments);
            LetTargetRun(call, isCallback);
        } else {
            Scrivel2::LoggedCall call(log, name);
            call.Arguments(writeArguments);
            LetTargetRun(call, isCallback);
        }
    }

    template <typename LoggedCall>
    void LetTargetRun(LoggedCall& call, bool isCallback)
    {
        const unsigned int number = call.Number();
        calls.stages.at(number) = Stage::Argued;
        if (number == plan.dieIn && !plan.dieAfterCallback) {
            StopIn(number, isCallback);
        }
        bool interrupted = false;
        if (!isCallback && random() % 5 == 0) {
            interrupted = true;
            Call("modeChange", true);
        }
        if (number == plan.dieIn) {
            StopIn(number, isCallback || interrupted);
        }
        call.Results([](auto& xml) { xml.WriteReturnType("return", eslapi::CADI_STATUS_OK); });
        calls.stages.at(number) = Stage::Returned;
    }

    [[noreturn]] void StopIn(unsigned int number, bool calledBack)
    {
        calls.running = number;
        calls.calledBack = calledBack;
        due();
        for (;;) {
            pause();
        }
    }

    const Plan plan;
    Calls& calls;
    Load& load;
    const std::function<void()>& due;
    std::mt19937_64 random;
    unsigned int entered = 0;
    Scrivel2::RunLog log;
};

struct Figures
{
    unsigned int inTarget = 0;
    unsigned int calledBack = 0;  ///< of inTarget
    unsigned int severalFiles = 0;
    unsigned int rejected = 0;
    unsigned int missing = 0;
};

/// The names of the files that a process has left.
std::vector<std::string> FilesOf(pid_t process)
{
    const std::string stem = "run-" + std::to_string(process);
    std::vector<std::string> names;
    for (std::string name = stem + ".xml"; std::filesystem::exists(name);
         name = stem + "." + std::to_string(names.size() + 1) + ".xml") {
        names.push_back(name);
    }
    return names;
}

void Judge(const std::vector<std::string>& fileNames, const Calls& calls, const Load& load,
           Figures& figures, Scratch& scratch)
{
    std::vector<CallElement> seen(calls.stages.size());
    std::string bytes;
    for (const std::string& fileName : fileNames) {
        bytes = FileBytes(fileName);
        const LogContents contents =
            ReadLog(bytes, [&](const CallElement& element) { seen.at(element.number).Join(element); });
        if (!contents.accepted) {
            ++figures.rejected;
            scratch.Keep(bytes, "rejected: " + contents.problem);
            return;
        }
    }
    for (unsigned int number = 1; calls.stages[number] != Stage::Unknown; ++number) {
        const CallElement& call = seen[number];
        const bool whole = call.number == number && call.contents == load.Contents(number);
        if (!whole || (calls.stages[number] == Stage::Returned && !call.returned)) {
            ++figures.missing;
            scratch.Keep(bytes, "call " + std::to_string(number) + " is missing or not whole");
        }
    }
}

}  // namespace

int main(int argc, char** argv)
{
    const Options options(argc, argv,
                          {{"count", "200"}, {"seed", "1"}, {"directory", "."}, {"longest", "3000"}});
    const unsigned int kills = options.Number("count");
    std::mt19937 random(options.Number("seed"));
    std::uniform_int_distribution<unsigned int> delays(0, options.Number("longest"));
    std::uniform_int_distribution<unsigned int> callNumbers(1, 40);

    Scratch scratch(options.Text("directory"));
    Calls& calls = Shared<Calls>();
    Figures figures;
    for (unsigned int i = 0; i < kills; ++i) {
        for (auto& stage : calls.stages) {
            stage = Stage::Unknown;
        }
        calls.running = 0;
        calls.calledBack = false;

        const bool inTarget = i % 2 == 0;
        const Plan plan{random(), inTarget ? callNumbers(random) : 0, random() % 2 == 0};
        Load load(plan.seed, 100, 100'000);
        const Microseconds delay(inTarget ? 0 : delays(random));
        const pid_t child = RunUntilDead(
            SIGKILL, true, delay, [&](const auto& due) { Debugging(plan, calls, load, due).GoOn(); });
        const std::vector<std::string> fileNames = FilesOf(child);
        Judge(fileNames, calls, load, figures, scratch);
        figures.severalFiles += fileNames.size() > 1 ? 1U : 0U;
        figures.inTarget += calls.running != 0 ? 1U : 0U;
        figures.calledBack += calls.calledBack ? 1U : 0U;
        for (const std::string& fileName : fileNames) {
            std::filesystem::remove(fileName);
        }
    }
    std::printf("logging layer: %u kills, %u of them while the target ran, %u of those in or after a "
                "callback, %u "
                "of logs of several files: %u files rejected, %u calls missing or without an argument\n",
                kills, figures.inTarget, figures.calledBack, figures.severalFiles, figures.rejected,
                figures.missing);
    const bool tried = figures.calledBack > 0 && figures.severalFiles > 0;
    return tried && figures.rejected == 0 && figures.missing == 0 ? 0 : 1;
}
