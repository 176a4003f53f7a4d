// When a log began, by what its header says.

#include "LogStart.h"

#include <gtest/gtest.h>

using namespace ScrivelTool;

namespace
{

TEST(LogStart, IsTheTimeOfTheHeader)
{
    const auto start = StartOf("2026-11-21 14:03:59", {}, "-");
    const auto later = StartOf("2026-11-21 14:04:01", {}, "-");
    ASSERT_TRUE(start && later);
    EXPECT_EQ(later->nanoseconds - start->nanoseconds, 2000000000);
    EXPECT_FALSE(start->isExact);
}

TEST(LogStart, IsNotKnownOfTimesThatNanosecondsCannotTell)
{
    for (const char* const time :
         {"", "yesterday", "1960-01-01 00:00:00", "2300-01-01 00:00:00", "9999-12-31 23:59:59"})
        EXPECT_FALSE(StartOf(time, {}, "-")) << time;
    EXPECT_TRUE(StartOf("2261-12-31 23:59:59", {}, "-"));
}

}  // namespace
