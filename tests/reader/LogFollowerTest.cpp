// A log that grows, step by step: what a follower hands on, and when. Against writers at full speed it is
// tried by tests/crash/FollowedLogs.cpp.

#include "scrivel/LogFollower.h"

#include "reader/Reading.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>

#include <gtest/gtest.h>

using namespace ScrivelReader;

namespace ScrivelTest
{
namespace
{

using Seen = LogFollower::Seen;

constexpr char header[] =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<run-42\n time=\"2026-11-21 14:03:59\">\n";
constexpr char rootEnd[] = "</run-42>\n";

std::string Returned(int number, const std::string& content = "")
{
    return "    <A call_num=\"" + std::to_string(number) + "\"\n     call_time=\"0.1 s\">\n" + content +
           "        <return_time>0.2 s</return_time>\n    </A>\n";
}

std::string Open(int number)
{
    return "    <B call_num=\"" + std::to_string(number) + "\"\n     call_time=\"0.1 s\">\n    </B>\n";
}

class Follower : public testing::Test, public LogHandler
{
protected:
    Follower()
    {
        std::string name = testing::TempDir() + "scrivel-follower-XXXXXX";
        EXPECT_NE(mkdtemp(name.data()), nullptr);
        folder = name;
        log = folder / "log.xml";
        Put(std::string(header) + rootEnd);
        std::string error;
        EXPECT_TRUE(follower.Open(log, error)) << error;
    }

    ~Follower() override { std::filesystem::remove_all(folder); }

    void Put(const std::string& bytes) const
    {
        std::ofstream(log, std::ios::binary | std::ios::trunc) << bytes;
    }

    /// What a look at these bytes hands on: "1 A, 2 B open, ".
    std::string Handed(const std::string& bytes, Seen expected = Seen::Document)
    {
        Put(bytes);
        handed.clear();
        EXPECT_EQ(follower.Look(), expected);
        return handed;
    }

    std::string Finished()
    {
        handed.clear();
        follower.Finish();
        return handed;
    }

    void Entered(const Call& call) override
    {
        if (call.name == "B") {
            handed += std::to_string(call.number) + " entered, ";
        }
    }
    void Ended(Call& call) override
    {
        handed += std::to_string(call.number) + (call.Returned() ? ", " : " open, ");
    }
    void Damaged(const Damage&) override { handed += "damage, "; }

    std::filesystem::path folder;
    std::filesystem::path log;
    std::string handed;
    LogFollower follower{*this};
};

TEST_F(Follower, HandsACallOnWhenItHasReturnedAndTheRootEndTagFollows)
{
    const std::string one = header + Returned(1);
    EXPECT_EQ(Handed(one + rootEnd), "1, ");
    EXPECT_EQ(Handed(one + rootEnd), "");
    EXPECT_EQ(Handed(one + Returned(2) + Returned(3) + rootEnd), "2, 3, ");
}

TEST_F(Follower, KeepsAnOpenCallBackUntilSomethingFollowsIt)
{
    const std::string open = header + Open(1);
    EXPECT_EQ(Handed(open + rootEnd), "");
    ASSERT_TRUE(follower.Last().has_value());
    EXPECT_EQ(follower.Last()->number, 1U);
    EXPECT_EQ(Handed(open + "\n<!-- Call 1 (\"B\") interrupted -->\n\n" + rootEnd), "1 entered, ");
    EXPECT_FALSE(follower.Last().has_value());
    EXPECT_EQ(Handed(open + Returned(2) + rootEnd), "2, ");
    EXPECT_EQ(Finished(), "1 open, ");
}

TEST_F(Follower, ReadsTheLastCallOnceALookThatFindsTheFileChanged)
{
    EXPECT_EQ(Handed(header + Open(1) + rootEnd), "");
    ASSERT_TRUE(follower.Last().has_value());
    Put(header + Open(2) + rootEnd);
    ASSERT_TRUE(follower.Last().has_value());
    EXPECT_EQ(follower.Last()->number, 1U);
    EXPECT_EQ(follower.Look(), Seen::Document);
    ASSERT_TRUE(follower.Last().has_value());
    EXPECT_EQ(follower.Last()->number, 2U);
}

TEST_F(Follower, ReadsOfTheLastCallNoMoreThanTheLimits)
{
    std::string items;
    for (int i = 0; i < 100; ++i) {
        items += "<value>0x1f</value>";
    }
    Put(header + std::string("    <B call_num=\"1\"\n     call_time=\"0.1 s\">\n        <data>") + items +
        "</data>\n    </B>\n" + rootEnd);
    ReadOptions options;
    options.limits.bytes = 10;
    LogFollower limited(*this, options);
    std::string error;
    ASSERT_TRUE(limited.Open(log, error)) << error;
    EXPECT_EQ(limited.Look(), Seen::Document);
    ASSERT_TRUE(limited.Last().has_value());
    EXPECT_EQ(limited.Last()->arguments.Find("data").Text().size(), 10U);
}

TEST_F(Follower, HandsNothingOnOfWhatIsNoDocument)
{
    const std::string one = header + Returned(1);
    EXPECT_EQ(Handed(one + "    <A call_num=\"2\"", Seen::Changing), "");
    EXPECT_NE(follower.Error(), "");
    EXPECT_EQ(Handed(one + Returned(2) + "</run", Seen::Changing), "");
    EXPECT_EQ(Handed(one + Returned(2) + rootEnd), "1, 2, ");
    EXPECT_EQ(follower.Error(), "");
}

TEST_F(Follower, TakesNothingBehindTheRootEndTagForContent)
{
    EXPECT_EQ(Handed(header + Returned(1) + rootEnd + "<?x " + Returned(2) + "?><?x ?>"), "1, ");
    EXPECT_EQ(Handed(header + Returned(1) + rootEnd + "<?x " + Returned(2)), "");
}

TEST_F(Follower, TakesTheTailThatHidesAFlushForNoEndOfACall)
{
    // The end tag of the open call is hidden; a copy of it stands after what is staged.
    const std::string begin = header + Returned(1) + "    <B call_num=\"2\"\n     call_time=\"0.1 s\">\n";
    EXPECT_EQ(Handed(begin + "<?x         <return_time>0.2 s</return_time>\n?>    </B>\n" + rootEnd),
              "1, ");
}

TEST_F(Follower, KeepsACallBackWhoseEndTagIsYetToGetItsPlace)
{
    const auto closed = [](const std::string& call) {
        return call.substr(0, call.find("\n    </A>")) + "</A>";
    };
    const std::string one = header + Returned(1);
    EXPECT_EQ(Handed(one + closed(Returned(2)) + "</run-42><?x  ?>"), "1, ");
    EXPECT_FALSE(follower.Last().has_value());
    // Seen while the one end was being replaced by the other.
    EXPECT_EQ(Handed(one + closed(Returned(2)) + "/A>\n" + rootEnd), "");
    EXPECT_EQ(Handed(one + Returned(2) + rootEnd), "2, ");
    EXPECT_EQ(Handed(one + Returned(2) + closed(Returned(3)) + "</run-42><?x  ?>"), "");
    EXPECT_EQ(Finished(), "3, ");
}

TEST_F(Follower, ReadsTheLastEightKilobytesAgain)
{
    const std::string filler = "        <x>" + std::string(5000, 'x') + "</x>\n";
    std::string bytes = header;
    for (int number = 1; number < 50; ++number) {
        bytes += Returned(number, filler);
        EXPECT_EQ(Handed(bytes + rootEnd), std::to_string(number) + ", ");
    }
    EXPECT_EQ(Finished(), "");
}

TEST_F(Follower, TellsAShorterFileFromAnotherLog)
{
    EXPECT_EQ(Handed(header + Returned(1) + Open(2) + Returned(3) + rootEnd), "1, 2 entered, 3, ");
    EXPECT_EQ(Handed(header + Returned(7) + rootEnd, Seen::Replaced), "2 open, ");
    EXPECT_EQ(Handed(header + Returned(7) + rootEnd), "7, ");
}

TEST_F(Follower, TellsALogOfTheSameSizeFromAnotherOne)
{
    EXPECT_EQ(Handed(header + Returned(1) + rootEnd), "1, ");
    EXPECT_EQ(Handed(header + Returned(2, "        <x>1</x>\n") + rootEnd, Seen::Replaced), "");
    EXPECT_EQ(Handed(header + Returned(2, "        <x>1</x>\n") + rootEnd), "2, ");
}

TEST_F(Follower, GoesOnInTheFileThatBearsTheName)
{
    EXPECT_EQ(Handed(header + Returned(1) + rootEnd), "1, ");
    Put(header + Returned(1) + Returned(2) + rootEnd);
    std::filesystem::rename(log, folder / "log.1.xml");
    EXPECT_EQ(Handed(header + Returned(8) + rootEnd, Seen::Replaced), "2, ");
    EXPECT_EQ(Handed(header + Returned(8) + rootEnd), "8, ");
}

TEST_F(Follower, GoesOnInAFileThatWasRemoved)
{
    std::ofstream file(log, std::ios::binary | std::ios::trunc);
    file << header << std::flush;
    std::filesystem::remove(log);
    file << Returned(1) << rootEnd << std::flush;
    EXPECT_EQ(follower.Look(), Seen::Document);
    EXPECT_EQ(handed, "1, ");
}

TEST_F(Follower, FinishesWithAllThatTheFileHolds)
{
    EXPECT_EQ(Handed(header + Returned(1) + Returned(2) + "   ", Seen::Changing), "");
    EXPECT_EQ(Finished(), "1, 2, damage, ");
}

TEST_F(Follower, TellsThatTheLogWasEnded)
{
    Handed(header + Returned(1) + rootEnd);
    EXPECT_FALSE(follower.Ending().ended);
    Handed(header + Returned(1) + "\n<!-- Log ended -->\n\n" + rootEnd);
    EXPECT_TRUE(follower.Ending().ended);
    EXPECT_EQ(follower.Header().root, "run-42");
}

TEST_F(Follower, SeesNothingBeforeItHasALog)
{
    LogFollower without(*this);
    EXPECT_EQ(without.Look(), Seen::Changing);
    EXPECT_EQ(without.Error(), "Bad file descriptor");
    EXPECT_FALSE(without.Finish().isLog);
}

TEST_F(Follower, FollowsFilesOnly)
{
    std::string error;
    EXPECT_FALSE(follower.Open(folder / "none.xml", error));
    EXPECT_EQ(error, "No such file or directory");
    EXPECT_FALSE(follower.Open(folder, error));
    EXPECT_EQ(error, "only a file can be followed");
}

}  // namespace
}  // namespace ScrivelTest
