// That a function which a test puts in place of the platform's never outlives what it refers to.

#include "support/Platform.h"

#include <gtest/gtest.h>

#include <ctime>
#include <optional>
#include <type_traits>
#include <utility>

namespace
{

using ScrivelTest::platform;

class Stubs : public testing::Test
{
protected:
    Stubs() { platform.time.Reset(); }
    ~Stubs() override { platform.time.Reset(); }
};

// A function that refers to nothing may stay; of any other a stub must be held.
using Time = decltype(platform.time);
const auto captured = [moment = std::time_t{8}](std::time_t*) { return moment; };
const auto seven = [](std::time_t*) { return std::time_t{7}; };
static_assert(std::is_same_v<decltype(std::declval<Time&>().Use(captured)), Time::Stub>);
static_assert(std::is_void_v<decltype(std::declval<Time&>().Use(seven))>);
static_assert(!std::is_copy_constructible_v<Time::Stub> && !std::is_move_constructible_v<Time::Stub>);

TEST_F(Stubs, FunctionOfThePlatformIsCalledAndCountedUntilAnotherIsUsed)
{
    EXPECT_GT(time(nullptr), 1'700'000'000);
    EXPECT_EQ(platform.time.Calls(), 1U);
    platform.time.Use(seven);
    EXPECT_EQ(time(nullptr), 7);
    EXPECT_EQ(platform.time.Calls(), 2U);
    platform.time.Reset();
    EXPECT_EQ(platform.time.Calls(), 0U);
    EXPECT_GT(time(nullptr), 1'700'000'000);
}

TEST_F(Stubs, StubEndsWithItsBlockAndWhatWasInForceBeforeItIsAgain)
{
    platform.time.Use(seven);
    {
        const auto outer = platform.time.Use(captured);
        EXPECT_EQ(time(nullptr), 8);
        {
            std::time_t moment = 10;
            const auto inner = platform.time.Use([&](std::time_t*) { return moment; });
            EXPECT_EQ(time(nullptr), 10);
            moment = 11;
            EXPECT_EQ(time(nullptr), 11);
        }
        EXPECT_EQ(time(nullptr), 8);
    }
    EXPECT_EQ(time(nullptr), 7);
}

TEST_F(Stubs, StubThatEndsBeforeALaterOneLeavesThatInForce)
{
    std::optional<Time::Stub> earlier(std::in_place, platform.time, captured);
    {
        std::time_t moment = 10;
        const auto later = platform.time.Use([&](std::time_t*) { return moment; });
        earlier.reset();
        EXPECT_EQ(time(nullptr), 10);
    }
    EXPECT_GT(time(nullptr), 1'700'000'000);
}

TEST_F(Stubs, AnotherUseAndAResetEndAStub)
{
    {
        const auto stub = platform.time.Use(captured);
        platform.time.Use(seven);
        EXPECT_EQ(time(nullptr), 7);
    }
    EXPECT_EQ(time(nullptr), 7);
    {
        const auto stub = platform.time.Use(captured);
        platform.time.Reset();
        EXPECT_GT(time(nullptr), 1'700'000'000);
    }
    EXPECT_GT(time(nullptr), 1'700'000'000);
}

}  // namespace
