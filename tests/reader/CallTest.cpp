// Times as the log writes them.

#include <gtest/gtest.h>

#include "scrivel/Call.h"

using namespace ScrivelReader;

namespace
{

TEST(Times, AreSecondsWithAUnit)
{
    const auto time = ParseTime("0.016720 s");
    ASSERT_TRUE(time);
    EXPECT_EQ(time->nanoseconds, 16720000);
    EXPECT_FALSE(time->wrapped);
}

TEST(Times, HaveUpToNineDigitsAfterThePoint)
{
    EXPECT_EQ(ParseTime("1.5 s")->nanoseconds, 1500000000);
    EXPECT_EQ(ParseTime("12.025 s")->nanoseconds, 12025000000);
    EXPECT_EQ(ParseTime("0.123456789 s")->nanoseconds, 123456789);
}

TEST(Times, BeforeTheStartOfTheLogAreNegativeAndMarked)
{
    const auto time = ParseTime("4294967295.900000 s");
    ASSERT_TRUE(time);
    EXPECT_EQ(time->nanoseconds, -100000000);
    EXPECT_TRUE(time->wrapped);
}

TEST(Times, OfAnyOtherFormAreNone)
{
    for (const char* text : {"", "s", " s", "1", "1 s", "1. s", ".5 s", "1.5s", "1,5 s", "-1.5 s",
                             "1.5 ms", "4294967296.0 s", "0x1.5 s", "1.0000000001 s", "99999999999.0 s"})
        EXPECT_FALSE(ParseTime(text)) << text;
}

TEST(Calls, TakeNoTimeAcrossAClockThatWasSetBack)
{
    Call call;
    call.callTime = ParseTime("0.500000 s");
    call.returnTime = ParseTime("0.600000 s");
    EXPECT_EQ(call.Took(), 100000000);
    call.clockSetBack = true;
    EXPECT_EQ(call.Took(), std::nullopt);
    call.clockSetBack = false;
    call.returnTime = ParseTime("4294967295.900000 s");
    EXPECT_EQ(call.Took(), std::nullopt);
    call.returnTime = ParseTime("0.499999 s");
    EXPECT_EQ(call.Took(), std::nullopt);
    call.returnTime = call.callTime;
    EXPECT_EQ(call.Took(), 0);
}

}  // namespace
