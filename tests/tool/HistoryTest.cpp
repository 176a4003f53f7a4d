// Every read and write of a register or an address. tests/tool/GoldenTest.cpp holds whole outputs.

#include <gmock/gmock.h>

#include "tool/SessionLogs.h"

using namespace ScrivelTest;
using testing::HasSubstr;

namespace
{

class History : public SessionTest
{
};

TEST_F(History, FindsARegisterByItsNumberToo)
{
    const std::string byName = Run({"history", "a0", "run-4243.xml"}).out;
    EXPECT_THAT(byName, HasSubstr("a0 (register 10, 32 bits): 0x1002, read by #34; target ran since"));
    EXPECT_EQ(Run({"history", "10", "run-4243.xml"}).out, byName);
}

TEST_F(History, FindsAccessesThatAnAddressLiesIn)
{
    EXPECT_THAT(Run({"history", "0x1004", "run-4243.xml"}).out,
                HasSubstr("read  Memory:0x1004  71 75 69 63 6b 20 62 72 6f ... (39 bytes)\n"));
    EXPECT_THAT(Run({"history", "1:0xff0+17", "run-4243.xml"}).out, HasSubstr("Memory:0x1000  54 68 "));
    EXPECT_EQ(Run({"history", "0xff0+16", "run-4243.xml"}).status, 1);
    EXPECT_EQ(Run({"history", "2:0x1000", "run-4243.xml"}).status, 1);
}

TEST_F(History, ChangedBytesAreMarked)
{
    EXPECT_THAT(Run({"history", "pc", "run-4243.xml"}).out, HasSubstr("wrote  00 00*30*00\n"));
    EXPECT_THAT(Run({"history", "--json", "--calls", "54", "pc", "run-4243.xml"}).out,
                HasSubstr(R"("way":"wrote","bytes":4,"value":"00003000","changed":[2,3],)"
                          R"("succeeded":true,)"));
}

TEST_F(History, TellsTheNearestRegister)
{
    const Outcome outcome = Run({"history", "caus", "run-4243.xml"});
    EXPECT_EQ(outcome.error, "scrivel: no call reads or writes the register caus; did you mean cause?\n");
    EXPECT_EQ(outcome.status, 1);
}

TEST_F(History, TellsThatTheFilterLeavesNoneOfItsCalls)
{
    EXPECT_EQ(Run({"history", "pc", "-n", "CADIRegRead", "run-4243.xml"}).error,
              "scrivel: no call that the filter leaves reads or writes the register pc\n");
    EXPECT_EQ(Run({"history", "0x3000", "-n", "CADIRegRead", "run-4243.xml"}).error,
              "scrivel: no call that the filter leaves reads or writes the address 0x3000\n");
    EXPECT_EQ(Run({"history", "pcs", "-n", "CADIRegRead", "run-4243.xml"}).error,
              "scrivel: no call reads or writes the register pcs; did you mean pc?\n");
}

std::string Wrote(int number, const std::string& arguments)
{
    return "    <W call_num=\"" + std::to_string(number) + "\" call_time=\"0.000001 s\">" + arguments +
           "<return_time>0.000002 s</return_time><return>CADI_STATUS_OK</return></W>\n";
}

std::string Memory(const std::string& space, const std::string& address, const std::string& byte)
{
    return "<at><spaceId>" + space + "</spaceId><addr>" + address + "</addr></at><data><value>0x" + byte +
           "</value><value>0x" + byte + "</value></data>";
}

std::string Register(const std::string& part, const std::string& value)
{
    return "<reg><v0><regNumber>7</regNumber><bytes>00000000 00000000 00000000 " + value +
           " </bytes><offset128>" + part + "</offset128></v0></reg>";
}

TEST_F(History, SaysOfWhichPlaceTheLastValueIs)
{
    Write("spaces.xml", LogOf(Wrote(1, Memory("1", "0x10", "01")) + Wrote(2, Memory("2", "0x10", "09")) +
                              Wrote(3, Memory("1", "0x12", "05"))));
    EXPECT_THAT(Run({"history", "0x10", "spaces.xml"}).out,
                testing::StartsWith("0x10: 2:0x10 0909, written by #2\n"));
    EXPECT_THAT(Run({"history", "1:0x10", "spaces.xml"}).out,
                testing::StartsWith("1:0x10: 0101, written by #1\n"));
    EXPECT_THAT(Run({"history", "1:0x10+4", "spaces.xml"}).out,
                testing::StartsWith("1:0x10+4: 1:0x12 0505, written by #3\n"));
    Write("parts.xml", LogOf(Wrote(1, Register("0", "00000001")) + Wrote(2, Register("1", "00000002"))));
    EXPECT_THAT(Run({"history", "v0", "parts.xml"}).out,
                testing::StartsWith("v0 (register 7): [1] 0x2, written by #2\n"));
    EXPECT_THAT(Run({"history", "v0", "--json", "parts.xml"}).out,
                testing::MatchesRegex(".*\"offset128\":0}\n.*\"offset128\":1}\n"));
}

TEST_F(History, FindsAccessesAtTheEndOfTheAddresses)
{
    Write("end.xml",
          LogOf(Wrote(1, Memory("1", "0x0", "01")) + Wrote(2, Memory("1", "0xffffffffffffffff", "09"))));
    EXPECT_THAT(
        Run({"history", "1:0xfffffffffffffff0+32", "end.xml"}).out,
        testing::MatchesRegex("1:0xfffffffffffffff0.32: 1:0xffffffffffffffff 0909, written by #2\n"
                              "    #2 .*\nnext: .*\n"));
    EXPECT_THAT(Run({"history", "1:0x1+4", "end.xml"}).out,
                testing::MatchesRegex("1:0x1.4: 01, written by #1\n    #1 .*\nnext: .*\n"));
}

TEST_F(History, MarksAValueThatWasSeenAsTheTargetRan)
{
    Write("running.xml", LogOf("    <modeChange call_num=\"1\" call_time=\"0.000001 s\">"
                               "<newMode>CADI_EXECMODE_Run</newMode>"
                               "<return_time>0.000001 s</return_time></modeChange>\n" +
                               Wrote(2, Register("0", "00000001"))));
    EXPECT_THAT(Run({"history", "v0", "running.xml"}).out,
                testing::StartsWith("v0 (register 7): 0x1, written by #2; target was running\n"));
}

TEST_F(History, CountsTheCallsThatLetTheTargetRun)
{
    Write("reset.xml",
          LogOf(Wrote(1, Register("0", "00000001")) +
                "    <CADIExecReset call_num=\"2\" call_time=\"0.000001 s\">"
                "<return_time>0.000002 s</return_time><return>CADI_STATUS_OK</return></CADIExecReset>\n" +
                Wrote(3, Register("0", "00000001"))));
    EXPECT_THAT(Run({"history", "v0", "reset.xml"}).out, HasSubstr("\n        target ran (#2)\n"));
}

TEST_F(History, RefusesWhatIsNoAddress)
{
    const Outcome outcome = Run({"history", "0x30z", "run-4243.xml"});
    EXPECT_EQ(outcome.error, "scrivel: \"0x30z\" is no address: 0x3000, Memory:0x3000, 0x3000+16\n");
    EXPECT_EQ(outcome.status, 2);
}

}  // namespace
