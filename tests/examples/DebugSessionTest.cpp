// The debugger's calls, found in the logs that its session leaves.

#include "DebugSession.h"
#include "LoggedBroker.h"
#include "LoggedTarget.h"
#include "SimulatedBroker.h"
#include "SimulatedTarget.h"

#include "examples/RecordingTarget.h"
#include "layer/CallReader.h"
#include "support/GeneratorTest.h"

#include <csignal>
#include <iterator>
#include <map>
#include <set>
#include <sstream>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>

using namespace ScrivelTest;

namespace
{

class DebugSessions : public ScratchTest
{
protected:
    DebugSessions()
    {
        platform.pthread_self.Reset();  // sanitizers ask for it in new threads
    }

    static std::vector<std::string> FilesOf(const std::string& log)
    {
        std::vector<std::string> files;
        for (const auto& entry : std::filesystem::directory_iterator(".")) {
            if (entry.path().filename().string().rfind(log, 0) == 0) {
                files.push_back(entry.path().filename().string());
            }
        }
        return files;
    }
};

// ---- In this process ----------------------------------------------------------------------------

TEST_F(DebugSessions, EveryCallArgumentAndResultOfTheRunIsInItsLog)
{
    Recorder recorder;
    std::ostringstream lines;
    {
        Scrivel2::RunLog log("run");
        Example::LoggedTarget logged(log, std::make_unique<Example::SimulatedTarget>(true));
        RecordingTarget target(recorder, logged);
        Example::DebugSession(target, lines).Run();
    }
    const ReadLog read = ReadCalls(FileText("run-4242.xml"));
    ASSERT_TRUE(read.accepted);
    EXPECT_EQ(read.calls.size(), recorder.Calls().size());

    std::map<std::string, std::size_t> met;
    for (const RecordedCall& made : recorder.Calls()) {
        const std::size_t index = met[made.name]++;
        const auto logged = read.Named(made.name);
        ASSERT_LT(index, logged.size()) << made.name;
        EXPECT_EQ(logged[index].arguments, made.arguments.All()) << made.name << ' ' << index;
        EXPECT_EQ(logged[index].results, made.results.All()) << made.name << ' ' << index;
        EXPECT_EQ(logged[index].returns, 1U) << made.name << ' ' << index;
    }
    EXPECT_EQ(met.size(), 41U);  // every call of the interface, and the callback
}

TEST_F(DebugSessions, CallbacksInterruptTheCallThatRuns)
{
    {
        std::ostringstream lines;
        Scrivel2::RunLog log("run");
        Example::LoggedTarget target(log, std::make_unique<Example::SimulatedTarget>(true));
        Example::DebugSession(target, lines).Run();
    }
    const std::string text = FileText("run-4242.xml");
    EXPECT_EQ(XPath(text, "count(//comment()[contains(., '(\"CADIExecContinue\") interrupted')])"),
              std::vector<std::string>{"4"});
    // After the callback of its end each run goes on in a second element; the first one's breakpoint:
    EXPECT_EQ(XPath(text, "/*/modeChange[2]/*[not(self::return_time)]"),
              (std::vector<std::string>{"CADI_EXECMODE_Bpt", "1"}));
}

TEST_F(DebugSessions, EveryCallArgumentAndResultOfTheConnectionIsInItsLog)
{
    std::ostringstream lines;
    {
        Example::SimulatedBroker simulations;
        Scrivel2::ConnectLog log("connection");
        Example::LoggedBroker broker(log, simulations);
        ASSERT_NE(Example::Connect(broker, true, lines), nullptr);
    }
    EXPECT_EQ(lines.str(), "connect      simulation 'demo \"board\"', target RV32I\n");

    const ReadLog read = ReadCalls(FileText("connection-4242.xml"));
    ASSERT_TRUE(read.accepted);
    ASSERT_EQ(read.calls.size(), 8U);
    const auto expect = [&](unsigned int number, const char* name, const Leaves& arguments,
                            const Leaves& results) {
        const ReadCall& call = read.calls.at(number);
        EXPECT_EQ(call.name, name);
        EXPECT_EQ(call.arguments, arguments.All()) << name;
        EXPECT_EQ(call.results, results.All()) << name;
        EXPECT_EQ(call.returns, 1U) << name;
    };
    const auto value = [](Leaves& leaves, const char* path, const char* id, const char* type,
                          const char* number, const char* text) -> Leaves& {
        const std::string base = path;
        return leaves.Raw(base + "/parameterID", id)
            .Raw(base + "/dataType", type)
            .Raw(base + "/intValue", number)
            .Raw(base + "/stringValue", text);
    };
    const auto list = [](unsigned long desired) {
        return Leaves().Number("start", 0).Number("desired", desired);
    };
    const auto ok = eslapi::CADI_STATUS_OK;

    const std::string address = read.calls.at(1).Result("factories/simulationFactory");
    EXPECT_THAT(address, testing::MatchesRegex("0x[0-9a-f]{16}"));
    expect(1, "GetSimulationFactories", list(1),
           Leaves().Raw("factories/simulationFactory", address).Status(ok));

    Leaves parameters;
    const std::string timer = "parameters/has_timer/";
    parameters.Raw(timer + "id", "1").Raw(timer + "name", "has_timer");
    parameters.Raw(timer + "dataType", "CADI_PARAM_BOOL");
    parameters.Raw(timer + "description", "whether the board has a timer");
    parameters.Raw(timer + "isRunTime", "0").Raw(timer + "minValue", "0").Raw(timer + "maxValue", "1");
    parameters.Raw(timer + "defaultValue", "1").Raw(timer + "defaultString", "");
    const std::string board = "parameters/board_name/";
    parameters.Raw(board + "id", "2").Raw(board + "name", "board_name");
    parameters.Raw(board + "dataType", "CADI_PARAM_STRING");
    parameters.Raw(board + "description", "what the board is called");
    parameters.Raw(board + "isRunTime", "0").Raw(board + "minValue", "0").Raw(board + "maxValue", "0");
    parameters.Raw(board + "defaultValue", "0").Raw(board + "defaultString", "board");
    expect(2, "GetParameterInfos", list(8), parameters.Status(ok));

    Leaves defaults;
    value(defaults, "values/parameterValue", "1", "CADI_PARAM_BOOL", "1", "");
    value(defaults, "values/parameterValue", "2", "CADI_PARAM_STRING", "0", "board");
    value(defaults, "values/parameterValue", "4294967295", "CADI_PARAM_INVALID", "0", "");
    expect(3, "GetDefaultValues", Leaves().Number("desired", 8), defaults.Status(ok));

    Leaves twoTimers;
    value(twoTimers, "value", "1", "CADI_PARAM_BOOL", "2", "");
    expect(4, "TestParameterValue", twoTimers,
           Leaves()
               .Raw("message", "the board takes no such value")
               .Status(eslapi::CADI_STATUS_IllegalArgument));

    Leaves chosen;
    value(chosen, "values/parameterValue", "1", "CADI_PARAM_BOOL", "1", "");
    value(chosen, "values/parameterValue", "2", "CADI_PARAM_STRING", "0", "demo \"board\"");
    value(chosen, "values/parameterValue", "4294967295", "CADI_PARAM_INVALID", "0", "");
    expect(5, "Instantiate", chosen, Leaves().Number("simulation", 0).Status(ok));

    const std::string simulation = "simulations/simulationFactory/";
    expect(6, "GetSimulationInfos", list(4),
           Leaves()
               .Number(simulation + "id", 0)
               .Raw(simulation + "name", "demo \"board\"")
               .Raw(simulation + "description", "core & timer")
               .Status(ok));

    eslapi::CADITargetInfo_t info;
    Example::SimulatedTarget::Describe(&info);
    expect(7, "GetTargetInfos", Leaves().Number("simulation", 0).Number("start", 0).Number("desired", 4),
           Leaves().Record("targets/targetInfo", info).Status(ok));

    const std::string connection = read.calls.at(8).Result("connection");
    EXPECT_THAT(connection, testing::MatchesRegex("0x[0-9a-f]{16}"));
    expect(8, "ConnectTarget", Leaves().Number("simulation", 0).Number("target", 0),
           Leaves().Raw("connection", connection).Status(ok));
}

// ---- As a program -------------------------------------------------------------------------------

struct Outcome
{
    int status;  // as waitpid gives it
    std::string output;
    std::string errors;
};

class Program : public DebugSessions
{
protected:
    static Outcome Run(const char* argument = nullptr)
    {
        const pid_t child = fork();
        if (child == 0) {
            const rlimit none{0, 0};
            setrlimit(RLIMIT_CORE, &none);
            std::signal(SIGSEGV, SIG_DFL);
            // Sanitizers leave the signal alone.
            for (const char* options : {"ASAN_OPTIONS", "TSAN_OPTIONS", "UBSAN_OPTIONS"}) {
                setenv(options, "handle_segv=0", 1);
            }
            Redirect(STDOUT_FILENO, "output.txt");
            Redirect(STDERR_FILENO, "errors.txt");
            execl(SCRIVEL_DEBUG_SESSION, "debug_session", argument, static_cast<char*>(nullptr));
            _exit(127);
        }
        Outcome outcome{};
        waitpid(child, &outcome.status, 0);
        outcome.output = FileText("output.txt");
        outcome.errors = FileText("errors.txt");
        return outcome;
    }

private:
    static void Redirect(int stream, const char* fileName)
    {
        const int file = open(fileName, O_WRONLY | O_CREAT | O_TRUNC, 0666);
        dup2(file, stream);
        close(file);
    }
};

/// What the session prints up to the crash, or to where it would be.
std::string LinesUpToTheTimer(const std::string& connectionLog, const std::string& runLog)
{
    return R"(connect      simulation 'demo "board"', target RV32I
logs         )" +
           connectionLog + ' ' + runLog + R"(
attach       board.core0, 16 breakpoints, 3 parameters
describe     34 registers, 2 memory spaces
breakpoints  2 set: the loop's head and writes to the result
result       CRC-32 0x414fa339, as it should be
run          into both breakpoints, 2200 instructions
step         three instructions, a register changed
stop         an endless loop, from a second thread
exception    cause 2, an illegal instruction
)";
}

std::multiset<std::string> NamesOf(const ReadLog& log)
{
    std::multiset<std::string> names;
    for (const auto& [number, call] : log.calls) {
        names.insert(call.name);
    }
    return names;
}

TEST_F(Program, PrintsALineForEachPhaseAndTheNamesOfItsLogs)
{
    const Outcome outcome = Run();
    ASSERT_TRUE(WIFEXITED(outcome.status));
    EXPECT_EQ(WEXITSTATUS(outcome.status), 0);
    EXPECT_EQ(outcome.errors, "");
    const auto connections = FilesOf("connection-");
    const auto runs = FilesOf("run-");
    ASSERT_EQ(connections.size(), 1U);
    ASSERT_EQ(runs.size(), 1U);
    EXPECT_EQ(outcome.output, LinesUpToTheTimer(connections[0], runs[0]) +
                                  "timer        written and read\n"
                                  "detach       the target is as it was found\n");
    EXPECT_EQ(ReadCalls(FileText(connections[0])).calls.size(), 8U);
    EXPECT_GT(ReadCalls(FileText(runs[0])).calls.size(), 60U);
}

TEST_F(Program, CrashLeavesACompleteLogThatNamesTheCallAndItsArguments)
{
    const Outcome outcome = Run("--crash");
    ASSERT_TRUE(WIFSIGNALED(outcome.status)) << outcome.output << outcome.errors;
    EXPECT_EQ(WTERMSIG(outcome.status), SIGSEGV);
    const auto connections = FilesOf("connection-");
    const auto crashes = FilesOf("crash-");
    ASSERT_EQ(connections.size(), 1U);
    ASSERT_EQ(crashes.size(), 1U);
    EXPECT_EQ(outcome.output, LinesUpToTheTimer(connections[0], crashes[0]));
    EXPECT_EQ(ReadCalls(FileText(connections[0])).calls.size(), 8U);

    ReadLog read = ReadCalls(FileText(crashes[0]));
    ASSERT_TRUE(read.accepted);
    ASSERT_FALSE(read.calls.empty());
    const ReadCall last = read.calls.rbegin()->second;
    EXPECT_EQ(last.name, "CADIMemWrite");
    EXPECT_EQ(last.arguments, Leaves()
                                  .Number("startAddress/overlay", 0)
                                  .Number("startAddress/location/spaceId", 1)
                                  .Raw("startAddress/location/spaceName", "Memory")
                                  .Raw("startAddress/location/addr", "0x0000000040000000")
                                  .Number("bytes", 4)
                                  .Raw("data/value", "0xe8")
                                  .Raw("data/value", "0x03")
                                  .Raw("data/value", "0x00")
                                  .Raw("data/value", "0x00")
                                  .All());
    EXPECT_EQ(last.returns, 0U);
    EXPECT_TRUE(last.results.empty());
    read.calls.erase(std::prev(read.calls.end()));
    for (const auto& [number, call] : read.calls) {
        EXPECT_EQ(call.returns, 1U) << number << ' ' << call.name;
    }
}

TEST_F(Program, CrashEndsTheSameSession)
{
    ASSERT_TRUE(WIFSIGNALED(Run("--crash").status));
    ASSERT_TRUE(WIFEXITED(Run().status));
    auto expected = NamesOf(ReadCalls(FileText(FilesOf("run-").at(0))));
    for (const char* afterTheCrash : {"CADIMemRead", "CADIBptClear", "CADIXfaceRemoveCallback"}) {
        expected.erase(expected.find(afterTheCrash));
    }
    EXPECT_EQ(NamesOf(ReadCalls(FileText(FilesOf("crash-").at(0)))), expected);
}

TEST_F(Program, UnknownArgumentIsRefusedInOneLine)
{
    const Outcome outcome = Run("--carsh");
    ASSERT_TRUE(WIFEXITED(outcome.status));
    EXPECT_EQ(WEXITSTATUS(outcome.status), 2);
    EXPECT_EQ(outcome.output, "");
    EXPECT_EQ(outcome.errors, "debug_session: the only argument is --crash\n");
    EXPECT_TRUE(FilesOf("run-").empty());
}

TEST_F(Program, FolderThatTakesNoLogIsReported)
{
    // As root a folder without permission takes files all the same: one that is gone takes none.
    const auto folder = std::filesystem::current_path();
    std::filesystem::create_directory("gone");
    const pid_t child = fork();
    if (child == 0) {
        std::filesystem::current_path("gone");
        std::filesystem::remove(folder / "gone");
        const int file = open((folder / "errors.txt").c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0666);
        dup2(file, STDERR_FILENO);
        dup2(file, STDOUT_FILENO);
        execl(SCRIVEL_DEBUG_SESSION, "debug_session", static_cast<char*>(nullptr));
        _exit(127);
    }
    int status = 0;
    waitpid(child, &status, 0);
    ASSERT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 1);
    EXPECT_NE(FileText("errors.txt").find("debug_session: the log can't be written\n"),
              std::string::npos);
}

}  // namespace
