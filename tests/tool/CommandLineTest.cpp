// The choice of a command, and what is said when there is none.

#include <gmock/gmock.h>

#include "tool/Program.h"

using namespace ScrivelTest;
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

}  // namespace
