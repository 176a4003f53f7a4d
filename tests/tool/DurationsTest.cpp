// Quantiles of many durations, exact and near.

#include <limits>

#include <gtest/gtest.h>

#include "Durations.h"

using ScrivelTool::Durations;

namespace
{

Durations UpTo(std::int64_t last)
{
    Durations durations;
    for (std::int64_t value = last; value > 0; --value)
        durations.Add(value * 1000);
    return durations;
}

TEST(Durations, QuantilesAreTheSmallestThatAShareDoesntExceed)
{
    const Durations durations = UpTo(100);
    EXPECT_EQ(durations.Quantile(0.5), 50000);
    EXPECT_EQ(durations.Quantile(0.95), 95000);
    EXPECT_EQ(durations.Largest(), 100000);
    EXPECT_EQ(durations.Total(), 5050000);
    EXPECT_EQ(Durations().Quantile(0.5), 0);
}

TEST(Durations, TotalNoMoreThanNanosecondsCanTell)
{
    constexpr std::int64_t longest = std::int64_t(2147483648) * 1000 * 1000 * 1000;
    Durations durations;
    for (int i = 0; i < 6; ++i)
        durations.Add(longest);
    EXPECT_EQ(durations.Total(), std::numeric_limits<std::int64_t>::max());
    EXPECT_EQ(durations.Largest(), longest);
}

TEST(Durations, CoarserOnesAreNearAndTakeLess)
{
    Durations durations = UpTo(100000);
    ASSERT_TRUE(durations.Coarsen());
    EXPECT_FALSE(durations.IsExact());
    EXPECT_LT(durations.Kept(), 5000u);
    EXPECT_NEAR(double(durations.Quantile(0.5)), 5e7, 5e7 / 256);
    EXPECT_EQ(durations.Largest(), 100000000);
    while (durations.Coarsen()) {
    }
    EXPECT_LT(durations.Kept(), 64u);
    EXPECT_EQ(durations.Count(), 100000u);
}

TEST(Durations, StayWhatTheyAreWhenAClockWasSetBack)
{
    Durations durations;
    durations.Add(-5000);
    durations.Coarsen();
    EXPECT_EQ(durations.Quantile(0.5), -5000);
    EXPECT_EQ(durations.Largest(), -5000);
}

TEST(Durations, AreCountedByDecade)
{
    Durations durations;
    for (const std::int64_t value : {0, 9999, 10000, 99999, 100000, 999999999})
        durations.Add(value);
    durations.Add(std::int64_t(1) << 40);
    EXPECT_EQ(durations.Decades(), (std::vector<std::uint64_t>{2, 2, 1, 0, 0, 1, 0, 1}));
}

}  // namespace
