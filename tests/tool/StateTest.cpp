// Registers and memory as the debugger had seen them. tests/tool/GoldenTest.cpp holds whole outputs.

#include <regex>

#include <gmock/gmock.h>

#include "tool/SessionLogs.h"

using namespace ScrivelTest;
using testing::HasSubstr;
using testing::Not;

namespace
{

class State : public SessionTest
{
};

TEST_F(State, KnowsNothingOfTheCallItself)
{
    EXPECT_THAT(Run({"state", "--at", "61", "crash-4242.xml"}).out,
                HasSubstr("\n  pc    0x00003000  wrote #54  stale: target ran (#55)\n"));
    EXPECT_THAT(Run({"state", "--at", "62", "crash-4242.xml"}).out,
                HasSubstr("\n  pc    0x00003000  wrote #61\n"));
}

TEST_F(State, IsJsonOneObjectAValue)
{
    const std::string out = Run({"state", "--json", "--at", "62", "crash-4242.xml"}).out;
    EXPECT_THAT(out, HasSubstr(R"({"schema":1,"log":"crash-4242.xml","at":62,"kind":"register",)"
                               R"("name":"pc","number":32,"offset128":0,"value":"00003000","call":61,)"
                               R"("occurrence":1,"way":"wrote","stale":false})"));
    EXPECT_THAT(out, HasSubstr(R"("kind":"memory","space":"1","space_name":"Memory",)"
                               R"("address":"0x2000","value":"39a34f41","call":41,)"
                               R"("occurrence":1,"way":"read","stale":true})"));
}

TEST_F(State, ComesFromTheCallsThatTheFilterLeaves)
{
    EXPECT_THAT(Run({"state", "--at", "62", "crash-4242.xml", "--calls", "..60"}).out,
                HasSubstr("\n  pc    0x00003000  wrote #54  stale: target ran (#55)\n"));
    EXPECT_THAT(Run({"state", "--at", "62", "crash-4242.xml", "-n", "CADIMem*"}).out,
                Not(HasSubstr("\n  pc ")));
}

TEST_F(State, KnowsFromEveryCallWhetherTheTargetRan)
{
    const std::string out = Run({"state", "--at", "54", "run-4243.xml", "-n", "CADIReg*"}).out;
    EXPECT_THAT(out, HasSubstr("\n  t0    0x12345678  read #51\n"));
    EXPECT_THAT(out, HasSubstr("\n  a0    0x00001002  read #34  stale: target ran (#46)\n"));
}

TEST_F(State, IsThatBeforeTheSecondCallOfANumberToo)
{
    const auto read = [](const std::string& digits) {
        return "    <R call_num=\"1\" call_time=\"0.1 s\">\n        <return_time>0.2 s</return_time>\n"
               "        <x><regNumber>5</regNumber><bytes>00000000 00000000 00000000 000000" +
               digits + " </bytes></x>\n    </R>\n";
    };
    Write("twice.xml", LogOf(read("11") + read("22") + read("33")));
    EXPECT_EQ(Run({"state", "--at", "1#3", "twice.xml"}).out,
              "before call 1#3 R: 1 register, 0 bytes\nregisters\n  x  0x00000022  read #1#2\n"
              "next: scrivel history x twice.xml, scrivel show 1#3 twice.xml\n");
    EXPECT_THAT(Run({"state", "--at", "1#2", "--json", "twice.xml"}).out,
                HasSubstr(R"("at":1,"at_occurrence":2,"kind":"register")"));
    EXPECT_THAT(Run({"state", "--at", "1", "twice.xml"}).out, HasSubstr("before call 1 R: nothing "));
    EXPECT_THAT(Run({"history", "x", "twice.xml"}).out,
                HasSubstr("next: scrivel show 1#3 twice.xml, scrivel state --at 1#3 twice.xml\n"));
    EXPECT_EQ(Run({"state", "--at", "1#4", "twice.xml"}).error, "scrivel: there is no call 1#4\n");
    const Outcome unclear = Run({"state", "--at", "1#0", "twice.xml"});
    EXPECT_EQ(unclear.error,
              "scrivel: \"1#0\" is no number of a call: 68, or 68#2 for the second one of it\n");
    EXPECT_EQ(unclear.status, 2);
}

TEST_F(State, TellsThatACallIsntThere)
{
    const Outcome outcome = Run({"state", "--at", "99", "crash-4242.xml"});
    EXPECT_EQ(outcome.error, "scrivel: there is no call 99\n");
    EXPECT_EQ(outcome.status, 1);
}

TEST_F(State, IsNotToldOfALogThatCantBeRead)
{
    Write("none.xml", "");
    for (const char* const option : {"--json", "--color=never"}) {
        const Outcome outcome = Run({"state", option, "nosuch.xml", "none.xml"});
        EXPECT_EQ(outcome.error,
                  "scrivel: nosuch.xml: No such file or directory\nscrivel: none.xml:1: the document "
                  "ends too early (byte 0)\nscrivel: none.xml: the log is empty\n");
        EXPECT_EQ(outcome.out, "");
        EXPECT_EQ(outcome.status, 2);
    }
    const Outcome some = Run({"state", "none.xml", "crash-4242.xml"});
    EXPECT_THAT(some.out, testing::StartsWith("at the end in crash-4242.xml: "));
    EXPECT_EQ(some.status, 2);
}

TEST_F(State, TellsThatMoreWasSeenThanThereIsRoomFor)
{
    std::string registers;
    for (int number = 0; number < 70000; ++number) {
        registers += "            <x><regNumber>" + std::to_string(number) +
                     "</regNumber><bytes>00000000 00000000 00000000 00000001 </bytes></x>\n";
    }
    Write("many.xml", LogOf("    <CADIRegRead call_num=\"1\" call_time=\"0.1 s\">\n"
                            "        <return_time>0.2 s</return_time>\n        <reg>\n" +
                            registers + "        </reg>\n    </CADIRegRead>\n"));
    EXPECT_NE(Run({"state", "many.xml"}).out.find("more than this was seen: there was no room for it\n"),
              std::string::npos);
    EXPECT_NE(Run({"history", "5", "many.xml"}).out.find("more than this was seen"), std::string::npos);
    EXPECT_EQ(
        Run({"history", "69999", "many.xml"}).error,
        "scrivel: no call reads or writes the register 69999; there was no room to look at everything\n");
}

TEST_F(State, TellsBelowThatAValueIsStaleWhereTheLineIsFull)
{
    const std::string name(20, 'x');
    Write("long.xml", std::regex_replace(Read("crash-4242.xml"), std::regex("RAM>"), name + ">"));
    EXPECT_NE(Run({"state", "--at", "68", "long.xml"})
                  .out.find("\n  Memory:0x1000  43 bytes, read #36, in " + name +
                            "\n      stale: target ran (#62)\n"),
              std::string::npos);
}

}  // namespace
