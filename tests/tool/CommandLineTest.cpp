// The choice of a command, and what is said when there is none.

#include <filesystem>

#include <gmock/gmock.h>

#include "tool/Program.h"

using namespace ScrivelTest;
using testing::EndsWith;
using testing::HasSubstr;

namespace
{

class CommandLine : public ToolTest
{
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

TEST_F(CommandLine, SaysWhatTheFilterDoesntUnderstand)
{
    const Outcome outcome = Run({"calls", "-w", "nam = 1", "run.xml"});
    EXPECT_EQ(outcome.error, "scrivel: there is no field \"nam\" in \"nam = 1\"\n");
    EXPECT_EQ(outcome.status, 2);
}

}  // namespace
