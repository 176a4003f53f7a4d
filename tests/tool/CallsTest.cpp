// One line a call.

#include <gmock/gmock.h>

#include "tool/Program.h"
#include "tool/Session.h"

using namespace ScrivelTest;

namespace
{

class Calls : public ToolTest
{
protected:
    Calls() { Write("run.xml", LogOf(session)); }
};

TEST_F(Calls, AreShownInOrderOfEntry)
{
    EXPECT_EQ(Run({"calls", "run.xml"}).out,
              "   1  0.000011   12.53 ms T1 CADIExecContinue()                               OK\n"
              "   2  0.000022      11 us T1  └ modeChange(Bpt)\n"
              "   3  0.012550       3 us T2 CADIRegWrite(zero=0x1)             PermissionDenied\n"
              "   4  0.012560            T1 CADIMemWrite(Memory:0x40000000, by...  NOT RETURNED\n");
}

TEST_F(Calls, AreChosenByTheFilter)
{
    EXPECT_EQ(Run({"calls", "-f", "run.xml"}).out,
              "   3  0.012550       3 us T2 CADIRegWrite(zero=0x1)             PermissionDenied\n");
    EXPECT_EQ(Run({"calls", "-w", "arg.addr = 0x40000000 and open", "run.xml"}).out,
              "   4  0.012560            T1 CADIMemWrite(Memory:0x40000000, by...  NOT RETURNED\n");
    EXPECT_EQ(Run({"calls", "-n", "x*", "run.xml"}).status, 1);
}

TEST_F(Calls, AreJsonOneObjectALine)
{
    EXPECT_EQ(Run({"calls", "--json", "--calls", "4", "run.xml"}).out,
              R"({"schema":1,"call":4,"name":"CADIMemWrite","thread":1234,"call_time":0.01256,)"
              R"("return_time":null,"status":null,"parent":null,"parts":1,"arguments":[)"
              R"({"name":"startAddress","children":[{"name":"overlay","value":"0"},)"
              R"({"name":"location","children":[{"name":"spaceId","value":"1"},)"
              R"({"name":"spaceName","value":"Memory"},{"name":"addr","value":"0x0000000040000000"}]}]},)"
              R"({"name":"bytes","value":"4"},{"name":"data","value":"e803"}],"results":[],)"
              R"("occurrence":1,"offset":1089,"log":"run.xml"})"
              "\n");
}

}  // namespace
