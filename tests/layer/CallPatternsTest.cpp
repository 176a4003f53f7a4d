// Which calls are logged, and what those cost that are not.

#include "LoggedCall.h"

#include "layer/Allocations.h"
#include "layer/CallReader.h"
#include "layer/Environment.h"
#include "support/GeneratorTest.h"

#include <filesystem>
#include <utility>
#include <vector>

using namespace Scrivel2;
using Layer::CallPatterns;
using ScrivelTest::Environment;

namespace
{

// ---- Patterns -----------------------------------------------------------------------------------

TEST(CallPatternss, NoPatternTakesEveryCall)
{
    for (const char* nothing : {"", " ", ",", " , ,"}) {
        EXPECT_TRUE(CallPatterns(nothing).Takes("CADIMemRead")) << nothing;
        EXPECT_TRUE(CallPatterns(nothing).Takes("")) << nothing;
    }
}

TEST(CallPatternss, NameWithoutAStarIsTakenAsItIs)
{
    const CallPatterns filter("CADIMemRead");
    EXPECT_TRUE(filter.Takes("CADIMemRead"));
    EXPECT_FALSE(filter.Takes("CADIMemReadAll"));
    EXPECT_FALSE(filter.Takes("XCADIMemRead"));
    EXPECT_FALSE(filter.Takes("CADIMemRea"));
    EXPECT_FALSE(filter.Takes("cadimemread"));
}

TEST(CallPatternss, StarStandsForAnyCharactersAndAQuestionMarkForOne)
{
    const std::vector<std::pair<const char*, const char*>> fitting = {{"*", ""},
                                                                      {"*", "abc"},
                                                                      {"a*", "a"},
                                                                      {"a*", "abc"},
                                                                      {"*c", "abc"},
                                                                      {"*c", "acbc"},
                                                                      {"a*c", "ac"},
                                                                      {"a*c", "abcbc"},
                                                                      {"*b*", "abc"},
                                                                      {"a**c", "abc"},
                                                                      {"?", "a"},
                                                                      {"a?c", "abc"},
                                                                      {"*?", "abc"},
                                                                      {"?*?", "ab"},
                                                                      {"*a*b?d", "aabacbcd"},
                                                                      {"*ab*cd", "abcabcd"}};
    for (const auto& [pattern, name] : fitting) {
        EXPECT_TRUE(CallPatterns(pattern).Takes(name)) << pattern << ' ' << name;
    }
    const std::vector<std::pair<const char*, const char*>> others = {
        {"a*", "ba"},  {"*c", "cb"}, {"a*c", "ab"},       {"?", ""},       {"?", "ab"},
        {"a?c", "ac"}, {"?*?", "a"}, {"*ab*cd", "abcdc"}, {"a*b*c", "acb"}};
    for (const auto& [pattern, name] : others) {
        EXPECT_FALSE(CallPatterns(pattern).Takes(name)) << pattern << ' ' << name;
    }
}

TEST(CallPatternss, CallFitsOneOfThePatterns)
{
    const CallPatterns filter("CADIMem*, CADIReg*");
    EXPECT_TRUE(filter.Takes("CADIMemRead"));
    EXPECT_TRUE(filter.Takes("CADIRegRead"));
    EXPECT_FALSE(filter.Takes("CADIExecStop"));
}

TEST(CallPatternss, ExclamationMarkLeavesCallsOut)
{
    const CallPatterns allBut("!CADIExec*");
    EXPECT_TRUE(allBut.Takes("CADIMemRead"));
    EXPECT_FALSE(allBut.Takes("CADIExecStop"));
    for (const char* patterns : {"CADIMem*,!CADIMemGet*", "! CADIMemGet* , CADIMem*"}) {
        const CallPatterns both(patterns);
        EXPECT_TRUE(both.Takes("CADIMemRead")) << patterns;
        EXPECT_FALSE(both.Takes("CADIMemGetSpaces")) << patterns;
        EXPECT_FALSE(both.Takes("CADIExecStop")) << patterns;
    }
}

// ---- Logs with a filter -------------------------------------------------------------------------

class FilteredLogs : public ScrivelTest::ScratchTest
{
protected:
    static LogOptions Calls(const std::string& patterns)
    {
        LogOptions options;
        options.calls = patterns;
        return options;
    }

    /// The names of calls in a log, of which three were made.
    static std::vector<std::string> Logged(const LogOptions& options)
    {
        RunLog log("run", options);
        for (const char* name : {"CADIMemRead", "CADIMemWrite", "CADIExecStop"}) {
            LoggedCall call(log, name);
            call.Arguments([](auto& xml) { xml.WriteDecimal("a", 1); });
            call.Results([](auto& xml) { xml.WriteDecimal("r", 1); });
        }
        std::vector<std::string> names;
        for (const auto& [number, call] : ScrivelTest::ReadCalls(FileText(log.FileName())).calls) {
            names.push_back(std::to_string(number) + " " + call.name);
        }
        return names;
    }
};

using Names = std::vector<std::string>;

TEST_F(FilteredLogs, HaveTheCallsThatFitNumberedInTheirOrder)
{
    EXPECT_EQ(Logged(Calls("*Write,*Stop")), (Names{"1 CADIMemWrite", "2 CADIExecStop"}));
}

TEST_F(FilteredLogs, EnvironmentTakesThePlaceOfTheOption)
{
    const Environment calls("SCRIVEL_LOG_CALLS", "!CADIMemWrite");
    EXPECT_EQ(Logged(Calls("*Write")), (Names{"1 CADIMemRead", "2 CADIExecStop"}));
}

TEST_F(FilteredLogs, EmptyEnvironmentSaysNothing)
{
    const Environment calls("SCRIVEL_LOG_CALLS", "");
    EXPECT_EQ(Logged(Calls("*Write")), (Names{"1 CADIMemWrite"}));
}

TEST_F(FilteredLogs, CallThatIsLeftOutHasNoNumberAndItsCallablesDoNotRun)
{
    RunLog log("run", Calls("CADIMem*"));
    EXPECT_TRUE(log.Takes("CADIMemRead"));
    EXPECT_FALSE(log.Takes("CADIExecStop"));
    const auto fail = [](auto&) { FAIL() << "nothing to write to"; };
    {
        LoggedCall call(log, "CADIExecStop", CallHead{1, "before", "text"}, fail);
        call.Arguments(fail);
        call.Results(fail);
        EXPECT_EQ(call.Number(), 0U);
    }
    EXPECT_EQ(FileText("run-4242.xml"), Header("run") + EndTag("run"));
}

TEST_F(FilteredLogs, CallThatIsLeftOutDoesNotInterruptTheOneThatRuns)
{
    RunLog log("run", Calls("!modeChange"));
    {
        const LoggedCall call(log, "CADIExecContinue");
        const LoggedCall callback(log, "modeChange");
    }
    EXPECT_EQ(FileText("run-4242.xml").find("interrupted"), std::string::npos);
}

// ---- Logs that are off --------------------------------------------------------------------------

class LogsThatAreOff : public FilteredLogs
{
protected:
    static LogOptions Off()
    {
        LogOptions options;
        options.folder = "logs";
        options.on = false;
        return options;
    }

    static bool FolderIsEmpty() { return std::filesystem::is_empty("."); }
};

TEST_F(LogsThatAreOff, MakeNeitherFileNorFolder)
{
    RunLog log("run", Off());
    log.Comment("lost");
    eslapi::CADIRegInfo_t reg{};
    log.LearnRegisters(&reg, 1);
    EXPECT_EQ(log.FileName(), "");
    EXPECT_FALSE(log.IsGood());
    EXPECT_FALSE(log.Takes("CADIMemRead"));
    log.EndLogging();
    EXPECT_TRUE(FolderIsEmpty());
}

TEST_F(LogsThatAreOff, AreTurnedOffAndOnByTheEnvironment)
{
    {
        const Environment off("SCRIVEL_LOG", "off");
        EXPECT_EQ(RunLog("run").FileName(), "");
        EXPECT_EQ(ConnectLog("connect").FileName(), "");
        EXPECT_TRUE(FolderIsEmpty());
    }
    const Environment on("SCRIVEL_LOG", "on");
    EXPECT_EQ(RunLog("run", Off()).FileName(), "logs/run-4242.xml");
}

TEST_F(LogsThatAreOff, EnvironmentThatSaysSomethingElseIsReportedAndChangesNothing)
{
    const Environment unclear("SCRIVEL_LOG", "of");
    testing::internal::CaptureStderr();
    EXPECT_EQ(RunLog("run").FileName(), "run-4242.xml");
    EXPECT_EQ(RunLog("run", Off()).FileName(), "");
    const std::string report = "Scrivel: SCRIVEL_LOG is neither \"on\" nor \"off\": \"of\".\n";
    EXPECT_EQ(testing::internal::GetCapturedStderr(), report + report);
}

TEST_F(LogsThatAreOff, GuardsMakeNoSystemCallAndTakeNoMemory)
{
    using ScrivelTest::platform;
    RunLog off("run", Off());
    RunLog filtered("run", Calls("CADIExecStop"));
    std::string text(100, 't');
    const std::size_t allocations = ScrivelTest::Allocations();
    for (RunLog* log : {&off, &filtered}) {
        platform.Reset();
        for (int i = 0; i < 100; ++i) {
            LoggedCall call(*log, "CADIMemReadWithANameThatIsLongerThanAStringsOwnMemory",
                            CallHead{0x8000, "before", text},
                            [&](auto& xml) { xml.WriteString("a", text); });
            call.Arguments([&](auto& xml) { xml.WriteString("b", text); });
            call.Results([&](auto& xml) { xml.WriteString("r", text); });
        }
        EXPECT_EQ(platform.getpid.Calls() + platform.gettimeofday.Calls() +
                      platform.pthread_self.Calls() + platform.pwrite.Calls() + platform.open.Calls() +
                      platform.close.Calls(),
                  0U);
    }
    EXPECT_EQ(ScrivelTest::Allocations(), allocations);
    const std::string more = text;
    EXPECT_EQ(ScrivelTest::Allocations(), allocations + 1);
}

}  // namespace
