// The choice of a command, and what is said when there is none.

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <sys/wait.h>

#include <gmock/gmock.h>

#include "tool/Program.h"
#include "tool/PseudoTerminal.h"

using namespace ScrivelTest;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

namespace
{

class CommandLine : public ToolTest
{
protected:
    /// The status of the program with what stands behind its name as a shell takes it; errors go into
    /// err.
    int StatusOf(const std::string& line) const
    {
        const int result = std::system(
            ("cd " + Quoted(Folder()) + " && " + Quoted(SCRIVEL_PROGRAM) + " " + line + " 2>err")
                .c_str());
        return WIFEXITED(result) ? WEXITSTATUS(result) : -1;
    }

    void WriteLog(const std::string& name, int calls = 1) const
    {
        std::string elements;
        for (int i = 1; i <= calls; ++i)
            elements +=
                "    <A call_num=\"" + std::to_string(i) + "\" call_time=\"0.000001 s\">\n    </A>\n";
        Write(name, LogOf(elements));
    }
};

TEST_F(CommandLine, NamesTheNearestCommand)
{
    const Outcome outcome = Run({"cals", "run.xml"});
    EXPECT_EQ(outcome.error,
              "scrivel: there is no command \"cals\"; did you mean calls? (scrivel --help lists them)\n");
    EXPECT_EQ(outcome.status, 2);
}

TEST_F(CommandLine, NamesTheNearestOption)
{
    const Outcome outcome = Run({"calls", "--jsn", "run.xml"});
    EXPECT_EQ(outcome.error, "scrivel: there is no option --jsn; did you mean --json? "
                             "(scrivel calls --help tells more)\n");
    EXPECT_EQ(outcome.status, 2);
}

TEST_F(CommandLine, NamesNoOptionThatIsFarOff)
{
    EXPECT_EQ(Run({"cut", "--json", "run.xml", "-o", "x.xml"}).error,
              "scrivel: there is no option --json (scrivel cut --help tells more)\n");
    EXPECT_EQ(Run({"cut", "--last", "5", "run.xml", "-o", "x.xml"}).error,
              "scrivel: there is no option --last (scrivel cut --help tells more)\n");
}

TEST_F(CommandLine, ListsTheCommands)
{
    const Outcome outcome = Run({"--help"});
    EXPECT_THAT(outcome.out, HasSubstr("\n  calls       one line a call\n"));
    EXPECT_EQ(outcome.status, 0);
}

TEST_F(CommandLine, TellsWhichLogCantBeRead)
{
    const Outcome outcome = Run({"calls", "none.xml"});
    EXPECT_EQ(outcome.error, "scrivel: none.xml: No such file or directory\n");
    EXPECT_EQ(outcome.status, 2);
}

TEST_F(CommandLine, ColoursWhenItIsAskedTo)
{
    Write("run.xml", LogOf("    <A call_num=\"1\" call_time=\"0.000001 s\">\n    </A>\n"));
    EXPECT_EQ(Run({"calls", "--color", "always", "run.xml"}).out,
              "   1\x1b[2m  0.000001            \x1b[0m\x1b[1mA\x1b[0m()" + std::string(39, ' ') +
                  "\x1b[31mNOT RETURNED\x1b[0m\n");
    EXPECT_EQ(Run({"calls", "--color", "never", "run.xml"}).out, Run({"calls", "run.xml"}).out);
}

TEST_F(CommandLine, TellsDamageInOneLineWithItsPlace)
{
    Write("cut.xml", LogOf("    <A call_num=\"1\" call_time=\"0.000001 s\">\n    </B>\n"));
    EXPECT_EQ(
        Run({"calls", "cut.xml"}).error,
        "scrivel: cut.xml:8: Opening and ending tag mismatch: A line 7 and B (byte 184, in call 1 A)\n");
}

TEST_F(CommandLine, TellsOfTheFirstTwentyDamagesOfALog)
{
    std::string elements;
    for (int i = 1; i <= 30; ++i) {
        const std::string number = std::to_string(i);
        elements += "    <A call_num=\"" + number + "\" call_time=\"0.000001 s\">\n    </B>\n";
    }
    Write("torn.xml", LogOf(elements));
    for (const char* const command : {"calls", "stats", "check"}) {
        const std::string error = Run({command, "torn.xml"}).error;
        EXPECT_EQ(std::count(error.begin(), error.end(), '\n'), 21) << command;
        EXPECT_THAT(error, HasSubstr("in call 20 A)\nscrivel: torn.xml: more places are damaged\n"));
    }
}

TEST_F(CommandLine, TellsNamesOfFilesWithoutControlCharacters)
{
    WriteLog("a\x1b[31m.xml");
    EXPECT_EQ(Run({"calls", "b\x1b[31m.xml"}).error, "scrivel: b?[31m.xml: No such file or directory\n");
    EXPECT_THAT(Run({"check", "a\x1b[31m.xml"}).out, StartsWith("a?[31m.xml: whole"));
}

TEST_F(CommandLine, SaysWhatIsNoLog)
{
    std::filesystem::create_directory(Folder() + "/empty");
    EXPECT_EQ(Run({"calls", "empty"}).error, "scrivel: empty: there is no log in this folder\n");
    Write("empty.xml", "");
    for (const char* const command : {"", "calls", "stats", "state"}) {
        const Outcome none = Run(*command == '\0' ? std::vector<std::string>{"empty.xml"}
                                                  : std::vector<std::string>{command, "empty.xml"});
        EXPECT_THAT(none.error, EndsWith("scrivel: empty.xml: the log is empty\n")) << command;
        EXPECT_EQ(none.status, 2) << command;
    }
    Write("notes.xml", "hello\n");
    const Outcome outcome = Run({"calls", "notes.xml"});
    EXPECT_THAT(outcome.error, HasSubstr("scrivel: notes.xml: this is no log\n"));
    EXPECT_EQ(outcome.status, 2);
}

TEST_F(CommandLine, TakesEveryFileForALogWhateverItsName)
{
    WriteLog("log");
    std::filesystem::create_directory(Folder() + "/a folder");
    WriteLog("a folder/log.xml");
    EXPECT_THAT(Run({"log"}).out, StartsWith("log  connection log of process 4242"));
    EXPECT_THAT(Run({"a folder"}).out, StartsWith("a folder/log.xml  connection log"));
}

TEST_F(CommandLine, TellsThatStandardOutputCannotBeWritten)
{
    WriteLog("run.xml");
    for (const char* const line : {"run.xml", "calls run.xml", "check run.xml", "show 1 run.xml",
                                   "--help", "--version", "--man", "calls --help", "--completion bash"}) {
        EXPECT_EQ(StatusOf(std::string(line) + " >/dev/full"), 2) << line;
        EXPECT_EQ(Read("err"), "scrivel: standard output: No space left on device\n") << line;
        EXPECT_EQ(StatusOf(std::string(line) + " >&-"), 2) << line;
        EXPECT_EQ(Read("err"), "scrivel: standard output: Bad file descriptor\n") << line;
    }
}

TEST_F(CommandLine, TakesNoMoreColumnsThanALineCanHave)
{
    WriteLog("run.xml");
    setenv("COLUMNS", "99999999999999999", 1);
    EXPECT_EQ(StatusOf("calls run.xml >out"), 0);
    unsetenv("COLUMNS");
    EXPECT_EQ(Read("out").size(), 10001u);
    EXPECT_EQ(Read("err"), "");
}

TEST_F(CommandLine, PrintsNoControlCharactersOfTheNamesOfFiles)
{
    const std::string name = "a\x1b[31m\a\n.xml";
    const std::string printed = "a?[31m??.xml";
    WriteLog(name);
    EXPECT_THAT(Run({"calls", name, name}).out, StartsWith("==> " + printed + "\n"));
    EXPECT_THAT(Run({"show", "1", name}).out, HasSubstr("\n  log       " + printed));
    EXPECT_THAT(Run({"recover", name, "-o", "copy.xml"}).out, StartsWith(printed + ": whole"));
    EXPECT_THAT(Run({"cut", name, "--force", "-o", "1" + name}).out, StartsWith("1" + printed + ": "));
    EXPECT_THAT(Run({"view", name, "--force", "-o", "2" + name}).out, StartsWith("2" + printed + ": "));
}

TEST_F(CommandLine, WritesIntoNoFileWhatIsForAClosedStream)
{
    WriteLog("run.xml");
    EXPECT_EQ(StatusOf("recover run.xml -o copy.xml >&- <&-"), 2);
    EXPECT_EQ(Read("copy.xml"), Read("run.xml"));
    EXPECT_EQ(StatusOf("check - <&- >out"), 2);
    EXPECT_EQ(Read("err"), "scrivel: standard input: Bad file descriptor\n");
}

TEST_F(CommandLine, PrintsLongOutputByItselfWhereThereIsNoPager)
{
    WriteLog("run.xml", 100);
    setenv("SCRIVEL_PAGER", "sed s/NOT.RETURNED/paged/", 1);
    EXPECT_THAT(PseudoTerminal(Folder(), {"calls", "run.xml"}).ScreenAtEnd(), HasSubstr("paged"));
    for (const char* const pager : {"scrivel-has-no-such-pager", "/scrivel/has/no/such/pager -R"}) {
        setenv("SCRIVEL_PAGER", pager, 1);
        const std::string screen = PseudoTerminal(Folder(), {"calls", "run.xml"}).ScreenAtEnd();
        EXPECT_THAT(screen, HasSubstr("   1  0.000001"));
        EXPECT_THAT(screen, HasSubstr(" 100  0.000001"));
        EXPECT_THAT(screen, Not(HasSubstr("not found")));
    }
    unsetenv("SCRIVEL_PAGER");
}

TEST_F(CommandLine, TakesNothingButNumbersForNumbers)
{
    WriteLog("run.xml");
    for (const std::vector<std::string>& line :
         std::vector<std::vector<std::string>>{{"calls", "--last", "-1"},
                                               {"calls", "-C", "-1"},
                                               {"calls", "-C", ""},
                                               {"calls", "--last", "x"},
                                               {"check", "--max-failed", "-1"},
                                               {"check", "--max-failed", ""},
                                               {"state", "--at", "-1"},
                                               {"calls", "--slower", "-1ms"},
                                               {"check", "--max-took", "-1ms"},
                                               {"diff", "--times", "-1ms", "run.xml"},
                                               {"calls", "-n", ""},
                                               {"calls", "-w", ""}}) {
        std::vector<std::string> arguments = line;
        arguments.emplace_back("run.xml");
        EXPECT_EQ(Run(arguments).status, 2) << line[0] << " " << line[1] << " " << line[2];
    }
    EXPECT_EQ(Run({"calls", "--last", "-1", "run.xml"}).error,
              "scrivel: --last: \"-1\" is no number (scrivel calls --help tells more)\n");
}

TEST_F(CommandLine, SaysWhatTheFilterDoesntUnderstand)
{
    const Outcome outcome = Run({"calls", "-w", "nam = 1", "run.xml"});
    EXPECT_EQ(outcome.error, "scrivel: there is no field \"nam\" in \"nam = 1\"\n");
    EXPECT_EQ(outcome.status, 2);
}

TEST_F(CommandLine, RefusesOptionsThatExcludeEachOther)
{
    for (const auto& [line, error] : std::vector<std::pair<std::vector<std::string>, std::string>>{
             {{"show", "1", "--xml", "--json"}, "--json excludes --xml (scrivel show"},
             {{"follow", "--all", "--last", "3"}, "--last excludes --all (scrivel follow"},
             {{"diff", "--times", "1ms", "--results", "run.xml"},
              "--results excludes --times (scrivel diff"}}) {
        std::vector<std::string> arguments = line;
        arguments.emplace_back("run.xml");
        const Outcome outcome = Run(arguments);
        EXPECT_EQ(outcome.error, "scrivel: " + error + " --help tells more)\n");
        EXPECT_EQ(outcome.status, 2) << line[0];
    }
}

TEST_F(CommandLine, TellsWhichOptionIsGivenMoreThanOnce)
{
    EXPECT_EQ(Run({"calls", "--last", "1", "--last", "2", "run.xml"}).error,
              "scrivel: --last is given more than once (scrivel calls --help tells more)\n");
    EXPECT_EQ(Run({"calls", "-n", "A", "--name", "B", "run.xml"}).error,
              "scrivel: --name is given more than once (scrivel calls --help tells more)\n");
    EXPECT_THAT(Run({"diff", "--with", "a", "--with", "b", "--color", "red", "run.xml"}).error,
                StartsWith("scrivel: --color: "));
}

}  // namespace
