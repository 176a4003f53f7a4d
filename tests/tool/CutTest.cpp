// A small log of a large one, as a file.

#include <filesystem>

#include <gmock/gmock.h>

#include "judge/LogJudge.h"
#include "tool/Program.h"

using namespace ScrivelTest;

namespace
{

constexpr char calls[] = R"(    <CADIReset call_num="1" call_time="0.000011 s">
        <return_time>0.000022 s</return_time>
        <return>CADI_STATUS_OK</return>
    </CADIReset>
    <CADIStop call_num="2" call_time="0.000033 s">
        <return_time>0.000044 s</return_time>
        <return>CADI_STATUS_CmdNotSupported</return>
    </CADIStop>
)";

class Cut : public ToolTest
{
protected:
    Cut() { Write("run.xml", LogOf(calls)); }
};

TEST_F(Cut, WritesTheCallsThatTheFilterLeaves)
{
    const Outcome outcome = Run({"cut", "-f", "run.xml", "-o", "small.xml"});
    EXPECT_EQ(outcome.out, "small.xml: 1 call of 2\n");
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(Read("small.xml"),
              LogOf(std::string(calls).substr(std::string(calls).find("    <CADIStop"))));
}

TEST_F(Cut, ReadsWhatOnlyTheContentsTell)
{
    EXPECT_EQ(Run({"cut", "-w", "result.return = CADI_STATUS_OK", "run.xml", "-o", "small.xml"}).status,
              0);
    EXPECT_EQ(XPath(Read("small.xml"), "//@call_num"), std::vector<std::string>{"1"});
}

TEST_F(Cut, WritesNoFileWithoutACall)
{
    const Outcome outcome = Run({"cut", "-n", "CADIMem*", "run.xml", "-o", "small.xml"});
    EXPECT_EQ(outcome.error, "scrivel: run.xml: the filter leaves no call; nothing was written\n");
    EXPECT_EQ(outcome.status, 1);
    EXPECT_FALSE(std::filesystem::exists(Folder() + "/small.xml"));
}

TEST_F(Cut, TellsOfDamageAndWritesAWholeLog)
{
    Write("torn.xml", LogOf(calls).substr(0, 350));
    const Outcome outcome = Run({"cut", "torn.xml", "-o", "small.xml"});
    EXPECT_EQ(outcome.error,
              "scrivel: torn.xml:12: the document ends too early (byte 350, in call 2 CADIStop)\n");
    EXPECT_EQ(outcome.status, 0);
    EXPECT_TRUE(IsDocument(Read("small.xml")));
}

TEST_F(Cut, OfAFileThatIsNoLogIsTrouble)
{
    Write("picture.xml", "PK\x03\x04");
    EXPECT_EQ(Run({"cut", "picture.xml", "-o", "small.xml"}).status, 2);
}

}  // namespace
