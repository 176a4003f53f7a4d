// Whole or not, and what is odd about a log.

#include <gmock/gmock.h>

#include "judge/LogJudge.h"
#include "tool/Program.h"

using namespace ScrivelTest;

namespace
{

constexpr char returned[] = R"(    <CADIReset call_num="1" call_time="0.000011 s">
        <return_time>0.012011 s</return_time>
        <return>CADI_STATUS_OK</return>
    </CADIReset>
    <CADIStop call_num="2" call_time="0.013000 s">
        <return_time>0.013044 s</return_time>
        <return>CADI_STATUS_CmdNotSupported</return>
    </CADIStop>
)";

class Check : public ToolTest
{
protected:
    Check() { Write("run.xml", LogOf(returned)); }
};

TEST_F(Check, TellsOfAWholeLog)
{
    const Outcome outcome = Run({"check", "run.xml"});
    EXPECT_EQ(outcome.out, "run.xml: whole, 2 calls, 1 failed\n");
    EXPECT_EQ(outcome.error, "");
    EXPECT_EQ(outcome.status, 0);
}

TEST_F(Check, TellsWhereALogIsDamaged)
{
    std::string log = LogOf(returned);
    log.insert(log.find("<return>CADI_STATUS_OK") + 1, "-");
    Write("torn.xml", log);
    const Outcome outcome = Run({"check", "torn.xml", "run.xml"});
    EXPECT_EQ(
        outcome.out,
        "torn.xml: not whole, damaged at line 9, byte 239:\n    \"-return\" is no name that XML allows\n"
        "  1 call, 1 failed\n"
        "run.xml: whole, 2 calls, 1 failed\n");
    EXPECT_EQ(
        outcome.error,
        "scrivel: torn.xml:9: \"-return\" is no name that XML allows (byte 239, in call 1 CADIReset)\n");
    EXPECT_EQ(outcome.status, 1);
}

TEST_F(Check, TellsWhatCantBeRead)
{
    EXPECT_EQ(Run({"check", "none.xml", "run.xml"}).status, 2);
    EXPECT_EQ(Run({"check", "."}).status, 0);
    const Outcome empty = Run({"check", "-"});
    EXPECT_EQ(empty.out, "-: not whole, empty\n");
    EXPECT_EQ(empty.status, 1);
}

TEST_F(Check, TellsOnceThatCompressedDataEndTooEarly)
{
    for (const int missing : {8, 40}) {
        const std::string command =
            "gzip -c run.xml | head -c -" + std::to_string(missing) + " >cut.xml.gz";
        ASSERT_EQ(std::system(("cd " + Quoted(Folder()) + " && " + command).c_str()), 0);
        const Outcome outcome = Run({"check", "cut.xml.gz"});
        EXPECT_THAT(outcome.out,
                    testing::MatchesRegex("cut.xml.gz: not whole, damaged at line [0-9]+, "
                                          "byte [0-9]+:\n    the compressed data end too early\n"
                                          "  [12] calls?(, 1 failed)?\n"));
        EXPECT_THAT(outcome.error, testing::MatchesRegex("scrivel: cut.xml.gz:[0-9]+: the compressed "
                                                         "data end too early \\(byte [0-9]+.*\\)\n"));
        EXPECT_EQ(outcome.status, 1);
    }
}

TEST_F(Check, TellsWhatIsOddInAWholeLog)
{
    Write("odd.xml", LogOf(std::string(returned) + R"(    <CADIReset call_num="1" call_time="0.010000 s">
    </CADIReset>
    <CADIStop call_num="9">
        <return_time>4294967295.900000 s</return_time>
    </CADIStop>
)"));
    const Outcome outcome = Run({"check", "odd.xml"});
    EXPECT_EQ(outcome.out,
              "odd.xml: whole, 4 calls, 1 failed, 1 not returned\n"
              "  #1#2 CADIReset has the number of a call before it (line 15, byte 457)\n"
              "  #1#2 CADIReset is where the clock was set back by 3.04 ms (line 15, byte 457)\n"
              "  #9 CADIStop goes on, but its beginning is lost (line 17, byte 526)\n"
              "  #9 CADIStop is where the clock was set back by 110 ms (line 17, byte 526)\n"
              "  #1#2 CADIReset had not returned when the log ended (line 15, byte 457)\n");
    EXPECT_EQ(outcome.status, 0);
}

TEST_F(Check, CountsWhatIsTooMuchToTell)
{
    std::string many;
    for (int i = 0; i < 30; ++i) {
        many += "    <A call_num=\"" + std::to_string(i) + "\" call_time=\"0.000001 s\">\n    </A>\n";
    }
    Write("many.xml", LogOf(many));
    EXPECT_THAT(Run({"check", "many.xml"}).out,
                testing::HasSubstr("  and 10 more calls that had not returned\n"));
}

TEST_F(Check, MakesASessionATest)
{
    EXPECT_EQ(Run({"check", "--max-failed", "1", "--no-open", "--max-took", "12ms", "run.xml"}).status,
              0);
    const Outcome outcome = Run({"check", "--max-failed", "0", "--max-took", "5ms", "run.xml"});
    EXPECT_EQ(outcome.out, "run.xml: whole, 2 calls, 1 failed\n"
                           "  --max-failed 0: 1 call failed: #2\n"
                           "  --max-took 5ms: 1 call took longer: #1 12.00 ms\n");
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(Run({"check", "--max-took", "5ms", "-n", "CADIStop", "run.xml"}).status, 0);
    EXPECT_EQ(Run({"check", "--max-took", "soon", "run.xml"}).status, 2);
}

TEST_F(Check, NamesAsManyCallsAsALineHolds)
{
    std::string many;
    for (int i = 0; i < 9; ++i) {
        many += "    <A call_num=\"" + std::to_string(i) +
                "\" call_time=\"0.000000 s\"><return_time>0.012000 s</return_time></A>\n";
    }
    Write("many.xml", LogOf(many));
    EXPECT_THAT(Run({"check", "--max-took", "5ms", "many.xml"}).out,
                testing::EndsWith("\n  --max-took 5ms: 9 calls took longer: #0 12.00 ms #1 12.00 ms #2 "
                                  "12.00 ms #3...\n"));
}

TEST_F(Check, WantsEveryCallToReturn)
{
    Write("open.xml", LogOf("    <A call_num=\"1\" call_time=\"0.000001 s\">\n    </A>\n"));
    EXPECT_EQ(Run({"check", "open.xml"}).status, 0);
    EXPECT_EQ(Run({"check", "--no-open", "open.xml"}).status, 1);
}

TEST_F(Check, WritesJUnit)
{
    Write("a&b.xml", LogOf(returned).substr(0, 400));
    EXPECT_EQ(
        Run({"check", "--max-failed", "0", "--junit", "j.xml", "run.xml", "a&b.xml", "no.xml"}).status,
        2);
    const std::string document = Read("j.xml");
    EXPECT_EQ(XPath(document, "//testsuite/@name"),
              (std::vector<std::string>{"run.xml", "a&b.xml", "no.xml"}));
    EXPECT_EQ(XPath(document, "//testsuite/@tests"), (std::vector<std::string>{"2", "2", "1"}));
    EXPECT_EQ(XPath(document, "//testsuite/@failures"), (std::vector<std::string>{"1", "1", "0"}));
    EXPECT_EQ(XPath(document, "//testsuite/@errors"), (std::vector<std::string>{"0", "0", "1"}));
    EXPECT_EQ(XPath(document, "//testcase[@name='whole']/*/@message"),
              (std::vector<std::string>{"damaged at line 13, byte 400: the document ends too early",
                                        "it can't be read"}));
}

TEST_F(Check, TellsOfWhatHasNoNumberInItsPlace)
{
    std::string log = LogOf(returned);
    log.insert(log.find("call_num=\"2\"") + 11, "x");
    Write("digit.xml", log);
    EXPECT_THAT(
        Run({"check", "digit.xml"}).out,
        testing::ContainsRegex(
            "  CADIStop is no call, as it has no number but \"2x\" \\(line [0-9]+, byte 291\\)\n"));
    EXPECT_THAT(Run({"check", "--json", "digit.xml"}).out,
                testing::ContainsRegex("\"kind\":\"misnumbered\",\"log\":\"digit.xml\",\"offset\":291,"
                                       "\"line\":[0-9]+,\"name\":\"CADIStop\",\"number\":\"2x\"}\n"));
    EXPECT_EQ(Run({"check", "digit.xml"}).status, 0);
}

TEST_F(Check, WritesJUnitOverNoLog)
{
    const std::string log = Read("run.xml");
    EXPECT_EQ(Run({"check", "--junit", "run.xml", "run.xml"}).status, 2);
    EXPECT_EQ(Read("run.xml"), log);
    Write("other.xml", log);
    const Outcome outcome = Run({"check", "--junit", "other.xml", "run.xml"});
    EXPECT_EQ(outcome.error,
              "scrivel: other.xml: there is such a file already, and it is no JUnit report\n");
    EXPECT_EQ(outcome.status, 2);
    EXPECT_EQ(Read("other.xml"), log);
    Write("empty.xml", "");
    EXPECT_EQ(Run({"check", "--junit", "empty.xml", "run.xml"}).status, 0);
    EXPECT_EQ(Run({"check", "--junit", "empty.xml", "run.xml"}).status, 0);
    EXPECT_EQ(XPath(Read("empty.xml"), "//testsuite/@name"), std::vector<std::string>{"run.xml"});
}

TEST_F(Check, IsJsonOneObjectALine)
{
    const std::string cut = LogOf(returned).substr(0, 400);
    EXPECT_EQ(
        Run({"check", "--json", "--max-took", "5ms", "-"}, cut).out,
        R"({"schema":1,"kind":"damage","log":"-","offset":400,"line":13,"what":"the document ends too early",)"
        R"("call":2,"name":"CADIStop","lost_from":291,"lost_to":400})"
        "\n"
        R"({"schema":1,"kind":"log","log":"-","whole":false,"empty":false,"size":400,"damages":1,"calls":1,)"
        R"("failed":0,"open":0,"failures":[{"check":"max-took 5ms","what":"1 call took longer: #1 12.00 ms"}]})"
        "\n");
}

TEST_F(Check, BreaksLinesThatAreTooWide)
{
    const std::string name = "A" + std::string(100, 'n');
    Write("wide.xml",
          LogOf("    <" + name + " call_num=\"8\" call_time=\"0.1 s\">\n    </" + name + ">\n"));
    EXPECT_EQ(Run({"check", "wide.xml"}).out,
              "wide.xml: whole, 1 call, 1 not returned\n"
              "  #8\n"
              "    " +
                  name.substr(0, 73) +
                  "...\n"
                  "    had not returned when the log ended (line 7, byte 136)\n");
}

TEST_F(Check, NeverCutsThePathOfALog)
{
    const std::string path = std::string(90, 'x') + ".xml";
    Write(path, LogOf(returned));
    EXPECT_EQ(Run({"check", path}).out, path + ":\n    whole, 2 calls, 1 failed\n");
}

}  // namespace
