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

TEST_F(History, RefusesWhatIsNoAddress)
{
    const Outcome outcome = Run({"history", "0x30z", "run-4243.xml"});
    EXPECT_EQ(outcome.error, "scrivel: \"0x30z\" is no address: 0x3000, Memory:0x3000, 0x3000+16\n");
    EXPECT_EQ(outcome.status, 2);
}

}  // namespace
