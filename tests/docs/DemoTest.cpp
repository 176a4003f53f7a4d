// scripts/demo, as someone types it who has built it already.

#include "docs/BuiltTree.h"

#include "support/GeneratorTest.h"

#include <gmock/gmock.h>

#include <regex>
#include <set>

namespace ScrivelDocs
{
namespace
{

namespace fs = std::filesystem;
using testing::HasSubstr;

class Demo : public ScrivelTest::ScratchTest
{
protected:
    /// What the command prints, with the numbers of the processes left out.
    std::string Printed(const std::string& command, int status = 0) const
    {
        const Outcome outcome = tree.Type({command});
        EXPECT_EQ(outcome.status, status);
        std::string printed;
        for (const std::string& line : outcome.printed) {
            printed += std::regex_replace(line, std::regex(R"(-\d+\.(xml|html))"), "-N.$1") + "\n";
        }
        return printed;
    }

    std::set<std::string> Logs() const
    {
        std::set<std::string> logs;
        for (const auto& entry : fs::directory_iterator(tree.Root() / "build/demo/logs")) {
            logs.insert(entry.path().filename());
        }
        return logs;
    }

    BuiltTree tree;
};

TEST_F(Demo, PrintsALineForEachPhaseAndWhereTheLogsAre)
{
    EXPECT_EQ(Printed("scripts/demo"), "connect      simulation 'demo \"board\"', target RV32I\n"
                                       "logs         connection-N.xml run-N.xml\n"
                                       "attach       board.core0, 16 breakpoints, 3 parameters\n"
                                       "describe     34 registers, 2 memory spaces\n"
                                       "breakpoints  2 set: the loop's head and writes to the result\n"
                                       "result       CRC-32 0x414fa339, as it should be\n"
                                       "run          into both breakpoints, 2200 instructions\n"
                                       "step         three instructions, a register changed\n"
                                       "stop         an endless loop, from a second thread\n"
                                       "exception    cause 2, an illegal instruction\n"
                                       "timer        written and read\n"
                                       "detach       the target is as it was found\n"
                                       "xmllint accepts its logs:\n"
                                       "  build/demo/logs/run-N.xml\n"
                                       "  build/demo/logs/connection-N.xml\n"
                                       "scrivel view has put them into a page for the browser:\n"
                                       "  build/demo/logs/run-N.html\n");
}

TEST_F(Demo, TellsTheCrashInWordsOfItsOwn)
{
    const std::string printed = Printed("scripts/demo --crash");
    const std::size_t begin = printed.find("exception ");
    EXPECT_EQ(printed.substr(begin, printed.find("\n$ ") - begin),
              "exception    cause 2, an illegal instruction\n"
              "The session died of SIGSEGV inside a call of the target, as it was meant to.\n"
              "xmllint accepts its logs:\n"
              "  build/demo/logs/crash-N.xml\n"
              "  build/demo/logs/connection-N.xml\n"
              "scrivel view has put them into a page for the browser:\n"
              "  build/demo/logs/crash-N.html\n");
}

TEST_F(Demo, EndsWithWhatScrivelSaysOfTheCrash)
{
    const std::string printed = Printed("scripts/demo --crash");
    const std::size_t command = printed.find("\n$ build/demo/tool/scrivel build/demo/logs/crash-N.xml\n");
    ASSERT_NE(command, std::string::npos) << printed;
    EXPECT_THAT(printed.substr(command), HasSubstr("\nCALL 68 NEVER RETURNED, and process "));
}

TEST_F(Demo, LeavesTheLogsOfTheOtherKindAlone)
{
    Printed("scripts/demo");
    const auto first = Logs();
    EXPECT_EQ(first.size(), 3U);
    Printed("scripts/demo --crash");
    auto both = Logs();
    EXPECT_EQ(both.size(), 6U);
    for (const std::string& log : first) {
        EXPECT_EQ(both.count(log), 1U) << log;
    }
}

TEST_F(Demo, TakesTheLogsOfItsOwnKindAway)
{
    for (const char* command : {"scripts/demo", "scripts/demo --crash"}) {
        Printed(command);
        const auto before = Logs();
        Printed(command);
        EXPECT_EQ(Logs().size(), before.size());
        EXPECT_NE(Logs(), before);
    }
}

TEST_F(Demo, TellsWhatTheSessionSaysWhenItFails)
{
    EXPECT_EQ(Printed("scripts/demo --carsh", 1), "debug_session: the only argument is --crash\n"
                                                  "The session ended with status 2 instead of 0.\n");
}

}  // namespace
}  // namespace ScrivelDocs
