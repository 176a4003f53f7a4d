// What differs between two runs. tests/tool/golden/ has what is printed of the example session.

#include "tool/Session.h"
#include "tool/SessionLogs.h"

#include <regex>

using namespace ScrivelTest;

namespace
{

class Diff : public ToolTest
{
protected:
    Diff() { Write("a.xml", LogOf(session)); }

    /// Writes the session into b.xml with another text in one place.
    void Change(const std::string& from, const std::string& to) const
    {
        std::string changed = session;
        const std::size_t at = changed.find(from);
        ASSERT_NE(at, std::string::npos) << from;
        changed.replace(at, from.size(), to);
        Write("b.xml", LogOf(changed));
    }

    Outcome RunDiff(std::vector<std::string> options = {}) const
    {
        options.insert(options.begin(), {"diff", "a.xml", "b.xml"});
        return Run(options);
    }
};

TEST_F(Diff, OfEqualRunsSaysSo)
{
    Write("b.xml",
          std::regex_replace(LogOf(session), std::regex(R"(time="0\.0|<return_time>0\.0)"), "$&9"));
    const Outcome outcome = RunDiff();
    EXPECT_EQ(outcome.out, "4 calls equal; times, threads ignored\n");
    EXPECT_EQ(outcome.status, 0);
}

TEST_F(Diff, ShowsTheValueThatDiffers)
{
    Change("00000001", "00000004");
    const Outcome outcome = RunDiff();
    EXPECT_EQ(outcome.out,
              "3 of 4 calls equal; times, threads ignored\n"
              "  #3 CADIRegWrite(zero=0x1)                                  after 2 equal calls\n"
              "-   arg.reg.zero  00000001\n"
              "+   arg.reg.zero  00000004                                      bits 0, 2 differ\n");
    EXPECT_EQ(outcome.status, 1);
}

TEST_F(Diff, MarksTheBytesThatDiffer)
{
    Change("0x03", "0x04");
    EXPECT_EQ(RunDiff().out,
              "3 of 4 calls equal; times, threads ignored\n"
              "  #4 CADIMemWrite(Memory:0x40000000, bytes=4, data=e8 03)    after 3 equal calls\n"
              "-   arg.data   e8*03\n"
              "+   arg.data   e8*04                                        1 of 2 bytes differs\n");
}

TEST_F(Diff, ShowsCallsThatOneRunHasAndTheOtherHasNot)
{
    Write("b.xml",
          LogOf(std::string(session) + "    <A call_num=\"5\"\n     call_time=\"0.1 s\">\n    </A>\n"));
    EXPECT_EQ(RunDiff().out,
              "4 of 4 and 5 calls equal; times, threads ignored\n"
              "+ #5 A() NOT RETURNED                                        after 4 equal calls\n");
    EXPECT_EQ(Run({"diff", "b.xml", "a.xml"}).out,
              "4 of 5 and 4 calls equal; times, threads ignored\n"
              "- #5 A() NOT RETURNED                                        after 4 equal calls\n");
}

TEST_F(Diff, LeavesOutWhatItIsTold)
{
    Change("00000001", "00000004");
    EXPECT_EQ(RunDiff({"--ignore", "arg.zero"}).status, 0);
    EXPECT_EQ(RunDiff({"--ignore", "result.zero"}).status, 1);
}

TEST_F(Diff, TakesOnePathAfterEachIgnore)
{
    Change("00000001", "00000004");
    EXPECT_EQ(Run({"diff", "--ignore", "arg.zero", "a.xml", "b.xml"}).status, 0);
    EXPECT_EQ(Run({"diff", "--ignore=arg.other", "--ignore", "arg.zero", "a.xml", "b.xml"}).status, 0);
    EXPECT_EQ(Run({"diff", "a.xml", "--ignore", "result.zero", "b.xml"}).status, 1);
}

TEST_F(Diff, ComparesTheCallsThatTheFilterLeaves)
{
    Change("00000001", "00000004");
    EXPECT_EQ(RunDiff({"-n", "CADIMem*"}).out, "1 call equal; times, threads ignored\n");
}

TEST_F(Diff, ByResultsPairsCallsThatWereAskedTheSame)
{
    Change("PermissionDenied", "OK");
    EXPECT_EQ(RunDiff({"--results"}).out,
              "3 of 4 calls equal; times, threads ignored\n"
              "  #3 CADIRegWrite(zero=0x1)                                  after 2 equal calls\n"
              "-   result.return  CADI_STATUS_PermissionDenied\n"
              "+   result.return  CADI_STATUS_OK\n");
    Change("00000001", "00000004");
    const Outcome outcome = RunDiff({"--results"});
    EXPECT_EQ(
        outcome.out,
        "3 of 4 calls equal, 1 and 1 without one that was asked the same;\n  times, threads ignored\n");
    EXPECT_EQ(outcome.status, 0);
}

TEST_F(Diff, ByTimesShowsWhatTookLonger)
{
    Change("<return_time>0.012553", "<return_time>0.022553");
    const Outcome outcome = RunDiff({"--times", "1ms"});
    EXPECT_EQ(outcome.out,
              "1 of 4 calls took longer by 1ms or more;\n  0 and 0 without one that was asked the same\n"
              "  #3 CADIRegWrite(zero=0x1)                                     3 us -> 10.00 ms\n");
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(RunDiff({"--times", "1s"}).status, 0);
    EXPECT_EQ(RunDiff({"--times", "long"}).error, "scrivel: --times: \"long\" is no time; 1ms is one\n");
}

TEST_F(Diff, IsJsonOneObjectACall)
{
    Change("00000001", "00000004");
    EXPECT_EQ(
        RunDiff({"--json"}).out,
        R"({"schema":1,"kind":"changed","left":3,"right":3,"name":"CADIRegWrite","equal_before":2,)"
        R"("pc_left":null,"pc_right":null,"differences":[{"path":"arg.reg.zero",)"
        R"("left":"00000000 00000000 00000000 00000001 ","right":"00000000 00000000 00000000 00000004 ",)"
        R"("bits":[0,2]}]})"
        "\n"
        R"({"schema":1,"kind":"summary","log_left":"a.xml","log_right":"b.xml","calls_left":4,)"
        R"("calls_right":4,"equal":3,"differing":1,"renamed":[]})"
        "\n");
}

TEST_F(Diff, AcceptsPointersThatStandForOneAnother)
{
    const auto with = [](const std::string& first, const std::string& second) {
        std::string calls;
        for (const std::string& pointer : {first, second, first}) {
            calls += "    <A call_num=\"" + std::to_string(calls.size()) +
                     "\"\n     call_time=\"0.1 s\">\n        <p>" + pointer +
                     "</p>\n        <return_time>0.1 s</return_time>\n    </A>\n";
        }
        return LogOf(calls);
    };
    Write("a.xml", with("0x00007f0000000010", "0x00007f0000000020"));
    Write("b.xml", with("0x00007f0000000110", "0x00007f0000000120"));
    const Outcome outcome = RunDiff();
    EXPECT_EQ(outcome.status, 0);
    EXPECT_NE(outcome.out.find("3 calls equal; times, threads ignored; 2 host pointers renamed ("),
              std::string::npos)
        << outcome.out;
    Write("b.xml", with("0x00007f0000000110", "0x00007f0000000110"));
    EXPECT_EQ(RunDiff().status, 1);
}

TEST_F(Diff, ComparesLogsOfOneNameWhenARunHasSeveral)
{
    const std::string connection = std::regex_replace(LogOf(""), std::regex("run-"), "connection-");
    Write("c.xml", connection);
    Write("d.xml", connection);
    Write("b.xml", LogOf(session));
    const Outcome outcome = Run({"diff", "a.xml", "c.xml", "--with", "d.xml", "--with", "b.xml"});
    EXPECT_EQ(outcome.out, "==> a.xml, b.xml\n4 calls equal; times, threads ignored\n"
                           "==> c.xml, d.xml\n0 calls equal; times, threads ignored\n");
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(Run({"diff", "a.xml", "c.xml", "--with", "b.xml"}).out,
              "only in the first run: c.xml\n4 calls equal; times, threads ignored\n");
}

TEST_F(Diff, IsTroubleWithOneLogOrADamagedOne)
{
    EXPECT_EQ(Run({"diff", "a.xml"}).error,
              "scrivel: two runs are compared: name two logs or folders, or "
              "those of the second run after --with each\n");
    Write("b.xml", LogOf(session).substr(0, 1000));
    EXPECT_EQ(RunDiff().status, 2);
    EXPECT_EQ(Run({"diff", "a.xml", "none.xml"}).error, "scrivel: none.xml: No such file or directory\n");
}

}  // namespace
