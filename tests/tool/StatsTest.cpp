// How often calls were made and how long they took. tests/tool/GoldenTest.cpp holds whole outputs.

#include <gmock/gmock.h>

#include "tool/Program.h"
#include "tool/Session.h"

using namespace ScrivelTest;
using testing::HasSubstr;

namespace
{

class Stats : public ToolTest
{
protected:
    Stats() { Write("run.xml", LogOf(session)); }
};

TEST_F(Stats, AreJsonOneObjectARow)
{
    EXPECT_EQ(Run({"stats", "--json", "-n", "CADIRegWrite,CADIMemWrite", "run.xml"}).out,
              R"({"schema":1,"by":"name","name":"CADIRegWrite","what":"calls","calls":1,"failed":1,)"
              R"("open":0,"timed":1,"total":3e-06,"median":3e-06,"p95":3e-06,"max":3e-06,)"
              R"("exact":true,"decades":[1,0,0,0,0,0,0,0]})"
              "\n"
              R"({"schema":1,"by":"name","name":"CADIMemWrite","what":"calls","calls":1,"failed":0,)"
              R"("open":1,"timed":0,"total":null,"median":null,"p95":null,"max":null,)"
              R"("exact":true,"decades":[0,0,0,0,0,0,0,0]})"
              "\n");
}

TEST_F(Stats, GapsAreTheTimesInWhichAThreadDidNothing)
{
    // Call 4 follows the return of call 1 in thread 1234; call 3 is the first of its thread.
    const std::string out = Run({"stats", "--gaps", "--json", "run.xml"}).out;
    EXPECT_THAT(out, HasSubstr(R"("name":"CADIMemWrite","what":"gaps","calls":1,"failed":0,"open":1,)"
                               R"("timed":1,"total":1.6e-05)"));
    EXPECT_THAT(out, HasSubstr(R"("name":"modeChange","what":"gaps","calls":1,"failed":0,"open":0,)"
                               R"("timed":1,"total":1.1e-05)"));
    EXPECT_THAT(out, HasSubstr(R"("name":"CADIRegWrite","what":"gaps","calls":1,"failed":1,"open":0,)"
                               R"("timed":0,"total":null)"));
}

TEST_F(Stats, CountNoTimeAcrossAClockThatWasSetBack)
{
    Write("back.xml", LogOf(setBackSession));
    const std::string out = Run({"stats", "--json", "--by", "log", "back.xml"}).out;
    EXPECT_THAT(out, HasSubstr(R"("calls":3,"failed":0,"open":0,"timed":1,"total":0.1,)"));
    // The gap before call 3 alone is one: 1.2 s to 1.3 s.
    const std::string gaps = Run({"stats", "--gaps", "--json", "--by", "log", "back.xml"}).out;
    EXPECT_THAT(gaps, HasSubstr(R"("timed":1,"total":0.1,)"));
}

TEST_F(Stats, NameNextACommandThatFindsCalls)
{
    const auto next = [&](std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), "stats");
        const std::string out = Run(arguments).out;
        return out.substr(out.rfind("next: "));
    };
    EXPECT_EQ(next({"--by", "status", "run.xml"}), "next: scrivel calls --slower 12532us run.xml\n");
    EXPECT_EQ(Run({"calls", "--slower", "12532us", "run.xml"}).status, 0);
    EXPECT_EQ(next({"--gaps", "--by", "status", "run.xml"}), "next: scrivel calls run.xml\n");

    Write("quick.xml",
          LogOf("    <A call_num=\"1\" call_time=\"0.1 s\"><return_time>0.1 s</return_time></A>\n"));
    EXPECT_EQ(next({"--by", "status", "quick.xml"}), "next: scrivel calls quick.xml\n");
    EXPECT_EQ(next({"--by", "parent", "quick.xml", "run.xml"}),
              "next: scrivel calls --slower 12532us run.xml\n");
    EXPECT_EQ(next({"--by", "thread", "quick.xml", "run.xml"}), "next: scrivel calls -t T1 run.xml\n");
    EXPECT_EQ(next({"-n", "A", "run.xml", "quick.xml"}), "next: scrivel calls -n A quick.xml\n");
}

TEST_F(Stats, SayWhatTheirRowsAre)
{
    const auto answer = [&](const std::vector<std::string>& options) {
        std::vector<std::string> arguments = {"stats", "run.xml"};
        arguments.insert(arguments.end(), options.begin(), options.end());
        const std::string out = Run(arguments).out;
        return out.substr(0, out.find('\n'));
    };
    EXPECT_THAT(answer({"--by", "parent"}), HasSubstr("; most time within (none), "));
    EXPECT_THAT(answer({"--by", "parent", "--gaps"}), HasSubstr("; most time within "));
    EXPECT_THAT(answer({"--by", "thread", "--gaps"}), HasSubstr("; most time in T"));
    EXPECT_THAT(answer({"--gaps"}), HasSubstr("; most time before "));
}

TEST_F(Stats, AreAddedUpOverLogs)
{
    EXPECT_THAT(Run({"stats", "run.xml", "run.xml"}).out,
                HasSubstr("8 calls, 2 failed, 2 not returned; most time in CADIExecContinue, 25.1 ms\n"));
}

TEST_F(Stats, AreSortedByAnyColumnAndTheOtherWayRound)
{
    const auto first = [&](const std::vector<std::string>& options) {
        std::vector<std::string> arguments = {"stats", "run.xml"};
        arguments.insert(arguments.end(), options.begin(), options.end());
        const std::string out = Run(arguments).out;
        const std::size_t line = out.find('\n', out.find('\n') + 1) + 1;
        return out.substr(line, out.find(' ', line) - line);
    };
    EXPECT_EQ(first({}), "CADIExecContinue");
    EXPECT_EQ(first({"--sort", "failed"}), "CADIRegWrite");
    EXPECT_EQ(first({"--sort", "open"}), "CADIMemWrite");
    EXPECT_EQ(first({"--sort", "name", "--reverse"}), "modeChange");
}

TEST_F(Stats, OfNoCallsAreNothing)
{
    const Outcome outcome = Run({"stats", "-n", "x", "run.xml"});
    EXPECT_EQ(outcome.out, "");
    EXPECT_EQ(outcome.status, 1);
}

/// A log of this many calls, each of which takes a microsecond longer than the one before it.
std::string ManyDurations(int count)
{
    std::string elements;
    for (int number = 1; number <= count; ++number) {
        std::string digits = std::to_string(number);
        digits.insert(0, 6 - digits.size(), '0');
        elements += "<A call_num=\"" + std::to_string(number) +
                    "\" call_time=\"0.000000 s\"><return_time>0." + digits + " s</return_time></A>\n";
    }
    return LogOf(elements);
}

TEST_F(Stats, TellThatQuantilesAreNearWhenThereAreTooManyDurations)
{
    Write("many.xml", ManyDurations(70000));
    const std::string out = Run({"stats", "many.xml"}).out;
    EXPECT_THAT(out, HasSubstr("\n~ too many different times to keep each: median and p95 are near, "
                               "not exact\n"));
    EXPECT_THAT(out, HasSubstr(" ~35.1 ms "));  // 35.0 ms, rounded up by a third of a percent
    Write("fewer.xml", ManyDurations(60000));
    EXPECT_THAT(Run({"stats", "fewer.xml"}).out, HasSubstr(" 30.0 ms"));
}

}  // namespace
