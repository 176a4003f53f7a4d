// The calls of a log that grows, as they return. That none is missing, wrong or told twice is tried by
// tests/crash/FollowedLogs.cpp.

#include "tool/Program.h"
#include "tool/PseudoTerminal.h"
#include "tool/Session.h"

#include <array>
#include <cstdlib>
#include <fcntl.h>
#include <future>
#include <regex>
#include <sys/wait.h>
#include <unistd.h>

using namespace ScrivelTest;

namespace
{

constexpr char logEnded[] = "\n<!-- Log ended -->\n\n";

/// A log of a process of this host that is gone.
std::string LogOfTheDead(const std::string& elements)
{
    std::array<char, 256> name{};
    gethostname(name.data(), name.size() - 1);
    const std::string log = std::regex_replace(LogOf(elements), std::regex("lab7"), name.data());
    return std::regex_replace(log, std::regex("run-4242"), "run-99999999");
}

class Follow : public ToolTest
{
protected:
    /// Puts the bytes in the place of the log's in one step, as they are more.
    void Grow(const std::string& bytes) const
    {
        const int log = open((Folder() + "/run.xml").c_str(), O_WRONLY | O_CREAT, 0600);
        EXPECT_EQ(pwrite(log, bytes.data(), bytes.size(), 0), ssize_t(bytes.size()));
        close(log);
    }
};

TEST_F(Follow, ShowsCallsAsTheyReturnAndEndsWithTheLog)
{
    Write("run.xml", LogOf(std::string(session) + logEnded));
    const Outcome outcome = Run({"follow", "run.xml"});
    EXPECT_EQ(outcome.out,
              "   2  0.000022      11 us T1  └ modeChange(Bpt)\n"
              "   1  0.000011   12.53 ms T1 CADIExecContinue()                               OK\n"
              "   3  0.012550       3 us T2 CADIRegWrite(zero=0x1)             PermissionDenied\n"
              "   4  0.012560            T1 CADIMemWrite(Memory:0x40000000, by...  NOT RETURNED\n"
              "run.xml: the log was ended; 1 call never returned\n");
    EXPECT_EQ(outcome.status, 0);
}

TEST_F(Follow, EndsWithTheProcess)
{
    Write("run.xml", LogOfTheDead(session));
    EXPECT_EQ(Run({"follow", "--last", "1", "run.xml"}).out,
              "   3  0.012550       3 us T2 CADIRegWrite(zero=0x1)             PermissionDenied\n"
              "   4  0.012560            T1 CADIMemWrite(Memory:0x40000000, by...  NOT RETURNED\n"
              "run.xml: process 99999999 is gone; 1 call never returned\n");
}

TEST_F(Follow, ShowsWhatTheFilterLeaves)
{
    Write("run.xml", LogOfTheDead(session));
    EXPECT_EQ(Run({"follow", "-f", "run.xml"}).out,
              "   3  0.012550       3 us T2 CADIRegWrite(zero=0x1)             PermissionDenied\n"
              "run.xml: process 99999999 is gone; 1 call never returned\n");
    EXPECT_EQ(Run({"follow", "-n", "None", "run.xml"}).status, 1);
}

TEST_F(Follow, GoesOnInTheFileThatTheLogGoesOnIn)
{
    Write(
        "run.xml",
        LogOf(
            "    <A call_num=\"1\"\n     call_time=\"0.1 s\">\n        <return_time>0.2 s</return_time>\n"
            "    </A>\n\n<!-- Log continued in run.2.xml -->\n\n"));
    Write(
        "run.2.xml",
        LogOf(
            "    <B call_num=\"2\"\n     call_time=\"0.1 s\">\n        <return_time>0.2 s</return_time>\n"
            "    </B>\n" +
            std::string(logEnded)));
    EXPECT_EQ(Run({"follow", "run.xml"}).out, "   1  0.100000     100 ms A()\n"
                                              "run.xml: the log goes on in run.2.xml\n"
                                              "==> run.2.xml\n"
                                              "   2  0.100000     100 ms B()\n"
                                              "run.2.xml: the log was ended\n");
}

TEST_F(Follow, IsJsonOneObjectACallAndOneAtTheEnd)
{
    Write("run.xml", LogOfTheDead(session));
    const std::string out = Run({"follow", "--json", "-n", "modeChange", "run.xml"}).out;
    EXPECT_EQ(out.compare(0, 44, R"({"schema":1,"call":2,"name":"modeChange","th)"), 0) << out;
    EXPECT_EQ(out.substr(out.find('\n') + 1),
              R"({"schema":1,"kind":"end","log":"run.xml","why":"gone","not_returned":1})"
              "\n");
}

TEST_F(Follow, ShowsTheCallsThatComeLater)
{
    const auto call = [](const std::string& number) {
        return "    <A call_num=\"" + number +
               "\"\n     call_time=\"0.1 s\">\n"
               "        <return_time>0.2 s</return_time>\n    </A>\n";
    };
    Grow(LogOf(call("1")));
    auto outcome = std::async(std::launch::async, [&] { return Run({"follow", "run.xml"}); });
    for (int i = 0; i < 5; ++i) {
        usleep(100000);
        Grow(LogOf(call("1") + call("2")));
    }
    Grow(LogOf(call("1") + call("2") + call("3") + logEnded));
    EXPECT_EQ(outcome.get().out, "   1  0.100000     100 ms A()\n"
                                 "   2  0.100000     100 ms A()\n"
                                 "   3  0.100000     100 ms A()\n"
                                 "run.xml: the log was ended\n");
}

/// A call of a second, or of a thread of its own that has not returned.
std::string CallB(int number)
{
    const std::string begin = std::to_string(number);
    return "    <B call_num=\"" + begin + "\"\n     call_time=\"" + begin + ".0 s\">\n        <text>" +
           std::string(100, 'x') + "</text>\n        <return_time>" + std::to_string(number + 1) +
           ".0 s</return_time>\n    </B>\n";
}

std::string OpenB(int number)
{
    const std::string begin = std::to_string(number);
    return "    <B call_num=\"" + begin + "\"\n     call_time=\"" + begin + ".0 s\"\n     threadId=\"" +
           begin + "\">\n        <text>" + std::string(100, 'x') + "</text>\n    </B>\n";
}

/// How long a call has run nobody knows before, nor how much room that leaves for the arguments.
std::string WithoutRunningTimes(const std::string& screen)
{
    return std::regex_replace(screen, std::regex("RUNNING [0-9.]+ (us|ms|s)(  T\\d+ B\\(text=)x+"),
                              "RUNNING ?$2x");
}

TEST_F(Follow, ShowsTheCallThatRunsAtTheBottomOfATerminal)
{
    Grow(LogOf(CallB(1) + OpenB(2)));
    PseudoTerminal terminal(Folder(), {"follow", "run.xml"});
    const std::string first = "   1  1.000000     1.00 s B(text=" + std::string(44, 'x') + "...\n";
    const std::string running =
        "   2  2.000000  RUNNING ?  T1 B(text=x...    (1 before: median 1.00 s)\n";
    EXPECT_EQ(WithoutRunningTimes(terminal.ScreenWith("median")), first + running);
    EXPECT_NE(terminal.Written().find("\x1b[33m   2  2.000000  RUNNING "), std::string::npos);

    // What returns comes to stand above what runs, which is drawn again below.
    Grow(LogOf(CallB(1) + CallB(2) + OpenB(3)));
    const std::string second = "   2  2.000000     1.00 s B(text=" + std::string(44, 'x') + "...\n";
    const std::string next = "   3  3.000000  RUNNING ?  T1 B(text=x...    (2 before: median 1.00 s)\n";
    EXPECT_EQ(WithoutRunningTimes(terminal.ScreenWith("2 before")), first + second + next);

    // Nothing is left of it when the log ends.
    Grow(LogOf(CallB(1) + CallB(2) + CallB(3) + logEnded));
    const std::string third = "   3  3.000000     1.00 s B(text=" + std::string(44, 'x') + "...\n";
    EXPECT_EQ(terminal.ScreenAtEnd(), first + second + third + "run.xml: the log was ended\n");
}

TEST_F(Follow, ShowsTheLastOfManyCallsThatRun)
{
    std::string elements;
    std::string expected;
    for (int number = 1; number <= 10; ++number) {
        elements += OpenB(number);
        if (number > 2) {
            std::string line = std::to_string(number);
            line = std::string(4 - line.size(), ' ') + line + "  " + line + ".000000  RUNNING ?  T" +
                   line + " B(text=x...";
            expected += line + "\n";
        }
    }
    Grow(LogOf(elements));
    PseudoTerminal terminal(Folder(), {"follow", "run.xml"});
    EXPECT_EQ(WithoutRunningTimes(terminal.ScreenWith("T10")), expected);
}

TEST_F(Follow, EndsWhenNobodyReadsOn)
{
    // The log of a process elsewhere, which may go on; the signal that ends other programs is ignored.
    Write("run.xml", LogOf(session));
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    constexpr int output = 9;  // a shell may take digits only
    ASSERT_EQ(dup2(ends[1], output), output);
    close(ends[1]);
    close(ends[0]);
    const int result = std::system(("cd " + Quoted(Folder()) + " && trap '' PIPE && timeout 60 " +
                                    Quoted(SCRIVEL_PROGRAM) + " follow run.xml >&9 2>err")
                                       .c_str());
    close(output);
    EXPECT_EQ(WEXITSTATUS(result), 0);
    EXPECT_EQ(Read("err"), "");
}

TEST_F(Follow, TakesOneLogThatIsAFile)
{
    EXPECT_EQ(Run({"follow", "a.xml", "b.xml"}).error, "scrivel: one log is followed at a time\n");
    EXPECT_EQ(Run({"follow", "a.xml"}).error, "scrivel: a.xml: No such file or directory\n");
    EXPECT_EQ(Run({"follow", "."}).error, "scrivel: .: only a file can be followed\n");
    EXPECT_EQ(Run({"follow", "."}).status, 2);
    EXPECT_EQ(Run({"follow", "-"}).error, "scrivel: standard input: only a file can be followed\n");
    EXPECT_EQ(Run({"follow", "-"}).status, 2);
}

TEST_F(Follow, RefusesALogThatIsCompressed)
{
    Write("run.xml", LogOf(session));
    ASSERT_EQ(std::system(("cd " + Quoted(Folder()) + " && gzip run.xml").c_str()), 0);
    const Outcome outcome = Run({"follow", "run.xml.gz"});
    EXPECT_EQ(outcome.error,
              "scrivel: run.xml.gz: a compressed log can't be followed: nothing is added to it\n");
    EXPECT_EQ(outcome.status, 2);
}

TEST_F(Follow, HelpTellsThatOneFileIsFollowed)
{
    EXPECT_NE(Run({"follow", "--help"}).out.find("one file, not compressed\n"), std::string::npos);
    EXPECT_NE(Run({"report", "--help"}).out.find("one log file; .gz and .zst too\n"), std::string::npos);
}

}  // namespace
