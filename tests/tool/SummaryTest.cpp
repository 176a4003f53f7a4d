// What happened, in a log's first lines. tests/tool/GoldenTest.cpp holds whole outputs.

#include <cstdint>
#include <unistd.h>

#include <gmock/gmock.h>

#include "tool/SessionLogs.h"

using namespace ScrivelTest;
using testing::HasSubstr;
using testing::StartsWith;

namespace
{

class Summary : public SessionTest
{
protected:
    /// The crash log as if a process of this host had written it.
    std::string CrashLogOf(int process) const
    {
        char host[256] = {};
        gethostname(host, sizeof host - 1);
        std::string log = Read("crash-4242.xml");
        Replace(log, "lab7", host);
        for (int tags = 0; tags < 2; ++tags)
            Replace(log, "crash-4242", "crash-" + std::to_string(process));
        return log;
    }

    static void Replace(std::string& text, const std::string& old, const std::string& by)
    {
        text.replace(text.find(old), old.size(), by);
    }

    /// A log with this call at its end.
    static std::string With(const std::string& elements)
    {
        return LogOf("    <A call_num=\"1\"\n     call_time=\"0.000001 s\"\n     threadId=\"7\">\n"
                     "        <return_time>0.000002 s</return_time>\n    </A>\n" +
                     elements);
    }
};

TEST_F(Summary, TellsThatTheProcessIsGone)
{
    Write("gone.xml", CrashLogOf(0x7ffffffe));
    EXPECT_THAT(Run({"gone.xml"}).out,
                HasSubstr("\nCALL 68 NEVER RETURNED, and process 2147483646 is gone\n"));
}

TEST_F(Summary, TellsThatTheProcessLivesWithoutTheLog)
{
    Write("lives.xml", CrashLogOf(getpid()));
    EXPECT_THAT(Run({"lives.xml"}).out,
                HasSubstr("\nCALL 68 NEVER RETURNED; a process " + std::to_string(getpid()) +
                          " lives, but has not this log open\n"));
}

TEST_F(Summary, TellsHowLongACallHasBeenRunning)
{
    Write("running.xml", CrashLogOf(getpid()));
    const std::ifstream open(Folder() + "/running.xml");
    const std::string out = Run({"running.xml"}).out;
    EXPECT_THAT(out, HasSubstr("\nCALL 68 RUNNING FOR "));
    EXPECT_THAT(out, HasSubstr(" in process " + std::to_string(getpid()) + ", which has the log open\n"));
}

TEST_F(Summary, TellsNotHowLongACallHasBeenRunningWhenTheClockWasSetBack)
{
    std::string log = CrashLogOf(getpid());
    log.insert(log.rfind("</crash-"),
               "    <A call_num=\"69\"\n     call_time=\"0.000001 s\"\n"
               "     threadId=\"7\">\n        <return_time>0.000002 s</return_time>\n"
               "    </A>\n");
    Write("running.xml", log);
    const std::ifstream open(Folder() + "/running.xml");
    EXPECT_THAT(Run({"running.xml"}).out,
                HasSubstr("\nCALL 68 RUNNING in process " + std::to_string(getpid())));
}

TEST_F(Summary, TellsWhichOfTheCallsOfANumberAValueComesFrom)
{
    const auto read = [](const std::string& number, const std::string& status) {
        return "    <R call_num=\"1\" call_time=\"0.1 s\">\n        <return_time>0.2 s</return_time>\n"
               "        <x><regNumber>" +
               number +
               "</regNumber><bytes>00000000 00000000 00000000 00000055 </bytes></x>\n        <return>" +
               status + "</return>\n    </R>\n";
    };
    Write("twice.xml", LogOf(read("5", "CADI_STATUS_OK") + read("6", "CADI_STATUS_OK") +
                             read("7", "CADI_STATUS_GeneralError")));
    const std::string summary = Run({"twice.xml"}).out;
    EXPECT_THAT(summary, HasSubstr("x read refused (#1#3)"));
    EXPECT_THAT(summary, HasSubstr("x 0x55 (#1#2)"));
    EXPECT_THAT(summary, HasSubstr("x 0x55 (#1)"));
    EXPECT_THAT(Run({"state", "twice.xml"}).out, HasSubstr("read refused #1#3"));
}

TEST_F(Summary, NamesWhichOfTheCallsOfANumberTouchedThePlaceLast)
{
    const auto write = [](const std::string& number, const std::string& rest) {
        return "    <W call_num=\"" + number +
               "\" call_time=\"0.1 s\">\n        <at><spaceId>1</spaceId><addr>0x10</addr></at>\n"
               "        <data>\n            <value>0x01</value>\n        </data>\n" +
               rest + "    </W>\n";
    };
    const std::string done = "        <return_time>0.2 s</return_time>\n";
    Write("twice.xml", LogOf(write("1", done) + write("1", done) + write("2", "")));
    EXPECT_THAT(Run({"twice.xml"}).out, HasSubstr("last touched by #1#2 (wrote)"));
}

TEST_F(Summary, ShowsOpenCallsOfAFewThreads)
{
    const auto log = [](int threads) {
        std::string calls;
        for (int number = 1; number <= threads; ++number)
            calls += "    <A call_num=\"" + std::to_string(number) +
                     "\" call_time=\"0.000001 s\" threadId=\"" + std::to_string(number) +
                     "\">\n    </A>\n";
        return LogOf(calls);
    };
    Write("eight.xml", log(8));
    EXPECT_THAT(Run({"eight.xml"}).out, HasSubstr("  #1  0.000001  T1  A()\n8 calls, 8 not returned"));
    Write("many.xml", log(300));
    EXPECT_THAT(Run({"many.xml"}).out, HasSubstr("  #293  0.000001  T293  A()\n"
                                                 "and one in each of 292 more threads\n"
                                                 "300 calls, 300 not returned"));
}

TEST_F(Summary, TellsWhatCameBeforeACallThatManyWereMadeIn)
{
    const auto call = [](int number, const std::string& name, const std::string& rest) {
        return "    <" + name + " call_num=\"" + std::to_string(number) +
               "\" call_time=\"0.000001 s\" threadId=\"7\">" + rest + "</" + name + ">\n";
    };
    const std::string done = "<return_time>0.000002 s</return_time>";
    std::string calls;
    for (int number = 1; number <= 4; ++number)
        calls += call(number, "Before", done);
    calls += call(5, "Go", "");
    for (int number = 6; number < 200; ++number)
        calls += call(number, "Within", done);
    Write("many.xml", LogOf(calls));
    EXPECT_THAT(Run({"many.xml"}).out, HasSubstr("\nbefore it  #4 Before   #3 Before   #2 Before\n"));
    EXPECT_THAT(
        Run({"many.xml", "--json"}).out,
        testing::ContainsRegex(R"("before":\[\{.*"call":4,.*"call":3,.*"call":2,.*\],"registers")"));
}

TEST_F(Summary, NamesWhichOfTheCallsOfANumberToLookAtNext)
{
    Write("twice.xml", LogOf("    <A call_num=\"1\" call_time=\"0.1 s\">\n"
                             "        <return_time>0.2 s</return_time>\n    </A>\n"
                             "    <A call_num=\"1\" call_time=\"0.3 s\">\n    </A>\n"));
    EXPECT_THAT(Run({"twice.xml"}).out,
                HasSubstr("\nnext: scrivel show 1#2 twice.xml, scrivel state --at 1#2 twice.xml\n"));
    EXPECT_THAT(Run({"show", "1#2", "twice.xml"}).out,
                testing::StartsWith("call 1#2  A  NOT RETURNED\n"));
}

TEST_F(Summary, TellsALogThatWasEndedFromOneThatMayHaveBeenKilled)
{
    Write("ended.xml", With("\n<!-- Log ended -->\n\n"));
    EXPECT_THAT(Run({"ended.xml"}).out, HasSubstr("\nevery call returned, and the log was ended\n"));
    Write("cut.xml", With(""));
    EXPECT_THAT(
        Run({"cut.xml"}).out,
        HasSubstr("\nevery call returned; a clean end and a kill after the last one look the same\n"));
    Write("on.xml", With("<!-- Log continued in on.2.xml -->"));
    EXPECT_THAT(Run({"on.xml"}).out, HasSubstr("\nthe log goes on in on.2.xml\n"));
}

TEST_F(Summary, NamesTheInnermostOpenCallOfEachThreadTheLatestFirst)
{
    const auto call = [](int number, int thread) {
        return "    <B call_num=\"" + std::to_string(number) + "\"\n     call_time=\"0.00000" +
               std::to_string(number) + " s\"\n     threadId=\"" + std::to_string(thread) +
               "\">\n    </B>\n";
    };
    Write("three.xml", With(call(2, 7) + call(3, 8) + call(4, 7)));
    EXPECT_THAT(Run({"three.xml"}).out,
                HasSubstr("\nCALL 4 HAD NOT RETURNED when the log ended\n  #4  0.000004  T1  B()\n"
                          "  within #2 B\n"
                          "call 3 had not returned when the log ended either\n"
                          "  #3  0.000003  T2  B()\n"
                          "before it  #1 A\n"));
}

TEST_F(Summary, TellsOfTheCallsThatTheFilterLeaves)
{
    const std::string out = Run({"crash-4242.xml", "-n", "CADIReg*"}).out;
    EXPECT_THAT(out, HasSubstr("\nevery call that the filter leaves returned\n"));
    EXPECT_THAT(out, testing::Not(HasSubstr("CALL 68")));
    EXPECT_THAT(out, HasSubstr("\n12 calls, 2 failed (13 52)"));
    EXPECT_THAT(Run({"crash-4242.xml", "--open"}).out, HasSubstr("\nCALL 68 "));
}

TEST_F(Summary, TellsWhoTouchedTheAddressBefore)
{
    std::string log = Read("crash-4242.xml");
    const std::size_t last = log.rfind("0x0000000040000000");
    Write("again.xml", log.replace(last, 18, "0x0000000000003000"));
    EXPECT_THAT(Run({"again.xml"}).out,
                HasSubstr("\n  0x3000 is in block RAM \"code, text and result\" (#15);\n"
                          "    last touched by #60 (wrote)\n"));
}

TEST_F(Summary, TellsWhereALogIsDamaged)
{
    Write("torn.xml", Read("crash-4242.xml").substr(0, 60000));
    const Outcome outcome = Run({"torn.xml"});
    EXPECT_THAT(outcome.out, HasSubstr(", damaged at line "));
    EXPECT_THAT(outcome.out,
                HasSubstr("(byte 60000)\n  in call 28 CADIBptGetList: the document ends too early\n"));
    EXPECT_EQ(outcome.status, 1);
}

TEST_F(Summary, TellsThatAFileIsNoLog)
{
    Write("empty.xml", "");
    const Outcome outcome = Run({"empty.xml"});
    EXPECT_EQ(outcome.error, "scrivel: empty.xml: the log is empty\n");
    EXPECT_EQ(outcome.status, 2);
}

TEST_F(Summary, IsOneObjectOfJson)
{
    const std::string out = Run({"--json", "crash-4242.xml"}).out;
    EXPECT_THAT(out, StartsWith(R"({"schema":1,"log":"crash-4242.xml","whole":true,"kind":"run",)"
                                R"("name":"crash","process":4242,"host":"lab7",)"
                                R"("started":"2026-11-21 14:03:59","size":77950,)"
                                R"("verdict":"had not returned when the log ended","ended":false,)"
                                R"("calls":68,"failed":4,"open":1,"threads":2,)"));
    EXPECT_THAT(out, HasSubstr(R"("touched":[{"space":"1","address":"0x40000000","bytes":4,)"
                               R"("block":{"name":"Timer","description":"load value and count",)"
                               R"("call":15},"before":[]}]})"));
    EXPECT_EQ(out.find('\n'), out.size() - 1);
}

TEST_F(Summary, BreaksTheLineOfTheCallThatNeverReturned)
{
    Write("wide.xml",
          LogOf("    <A call_num=\"1\" call_time=\"0.1 s\">\n<first>a b c</first><" +
                std::string(100, 'x') + ">2</" + std::string(100, 'x') + "><last>3</last>    </A>\n"));
    EXPECT_THAT(Run({"wide.xml"}).out,
                HasSubstr("\n  #1  0.100000  A(first=a b c,\n      " + std::string(74, 'x') + "\n      " +
                          std::string(26, 'x') + "=2, last=3)\n"));
}

TEST_F(Summary, TellsTenLinesOfArgumentsAtMost)
{
    const std::string name(2000, 'x');
    Write("wide.xml",
          LogOf("    <A call_num=\"1\" call_time=\"0.1 s\">\n<" + name + ">1</" + name + ">    </A>\n"));
    const std::string line = "      " + std::string(74, 'x') + "\n";
    const std::string out = Run({"wide.xml"}).out;
    EXPECT_THAT(out, HasSubstr("\n  #1  0.100000  A\n      (" + std::string(73, 'x') + "\n" + line));
    EXPECT_THAT(out, HasSubstr(line + "      " + std::string(70, 'x') + "...)\n"));
}

TEST_F(Summary, BreaksTheLineOfCountsWhereNumbersAreLong)
{
    std::string calls;
    for (std::uint64_t i = 0; i < 12; ++i)
        calls += "    <A call_num=\"" + std::to_string(9000000000 + i) +
                 "\" call_time=\"0.1 s\">\n        <return_time>0.2 s</return_time>\n"
                 "        <return>CADI_STATUS_CmdNotSupported</return>\n    </A>\n";
    Write("wide.xml", LogOf(calls));
    EXPECT_THAT(
        Run({"wide.xml"}).out,
        HasSubstr("\n12 calls, 12 failed (9000000000 9000000001 9000000002 9000000003 9000000004\n"
                  "  9000000005 9000000006 9000000007 9000000008 9000000009 ...), 200 ms\n"));
}

TEST_F(Summary, LeavesALongPathALineOfItsOwn)
{
    const std::string name = std::string(70, 'x') + ".xml";
    Write(name, Read("run-4243.xml"));
    EXPECT_THAT(Run({name}).out, StartsWith(name + "\n  run log of process 4243 on lab7,\n  2026-"));
}

}  // namespace
