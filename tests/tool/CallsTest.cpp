// One line a call.

#include <sstream>

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

/// The numbers that the lines begin with, and -- between those that are apart.
std::string Numbers(const std::string& lines)
{
    std::string numbers;
    std::istringstream in(lines);
    for (std::string line; std::getline(in, line);) {
        std::string number;
        std::istringstream(line) >> number;
        numbers += (numbers.empty() ? "" : " ") + number;
    }
    return numbers;
}

TEST_F(Calls, AreTheLastThatTheFilterLeavesWithTheirContext)
{
    std::string elements;
    for (int i = 1; i <= 20; ++i) {
        const std::string number = std::to_string(i);
        const std::string name = i == 3 || i == 5 || i == 12 || i == 13 ? "Chosen" : "Other";
        elements += "    <" + name + " call_num=\"" + number + "\" call_time=\"0.000001 s\">\n    </" +
                    name + ">\n";
    }
    Write("many.xml", LogOf(elements));
    const auto shown = [&](const std::string& last, const std::string& context) {
        return Numbers(Run({"calls", "-n", "Chosen", "--last", last, "-C", context, "many.xml"}).out);
    };
    EXPECT_EQ(shown("9", "1"), "2 3 4 5 6 -- 11 12 13 14");
    EXPECT_EQ(shown("4", "1"), "2 3 4 5 6 -- 11 12 13 14");
    EXPECT_EQ(shown("3", "1"), "4 5 6 -- 11 12 13 14");
    EXPECT_EQ(shown("3", "2"), "3 4 5 6 7 -- 10 11 12 13 14 15");
    EXPECT_EQ(shown("2", "1"), "11 12 13 14");
    EXPECT_EQ(shown("1", "3"), "10 11 12 13 14 15 16");
    EXPECT_EQ(shown("1", "0"), "13");
    EXPECT_EQ(shown("0", "1"), "");
    EXPECT_EQ(Numbers(Run({"calls", "--last", "2", "many.xml"}).out), "19 20");
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

TEST_F(Calls, TakeNoTimeAcrossAClockThatWasSetBack)
{
    Write("back.xml", LogOf(setBackSession));
    EXPECT_EQ(Run({"calls", "back.xml"}).out, "   1  1.000000          ! T1 A()\n"
                                              "   2  0.500000     100 ms T1  └ B()\n"
                                              "   3  1.300000          ! T1 C()\n");
    EXPECT_EQ(Run({"calls", "--slower", "1us", "back.xml"}).out, "   2  0.500000     100 ms T1  └ B()\n");
    EXPECT_EQ(Run({"calls", "-w", "took < 1us", "back.xml"}).status, 1);
    EXPECT_THAT(Run({"calls", "--json", "--calls", "1", "back.xml"}).out,
                testing::HasSubstr(R"("clock_set_back":true,"log":"back.xml"})"));
    EXPECT_THAT(Run({"calls", "--json", "--calls", "2", "back.xml"}).out,
                testing::Not(testing::HasSubstr("clock_set_back")));
}

}  // namespace
