// The text between two flushes: it stays in memory, wherever one seeks in it, until a flush writes it.

#include "stream/StreamTest.h"

#include <filesystem>
#include <string>

#include <sys/stat.h>

namespace
{

namespace fs = std::filesystem;
using ScrivelTest::platform;
using ScrivelTest::refuseMemory;
using LogBuffer = ScrivelTest::StreamTest;

TEST_F(LogBuffer, OpeningWithoutMemoryFails)
{
    static int left;
    static int asked;
    for (left = 0; left < 2; ++left) {
        asked = 0;
        refuseMemory = [](std::size_t) { return asked++ == left; };
        log.open("log");
        EXPECT_EQ(log.rdstate(), std::ios_base::failbit);
        EXPECT_FALSE(log.is_open());
        EXPECT_EQ(asked, left + 1);
        refuseMemory = nullptr;
    }
    EXPECT_FALSE(fs::exists("log"));
    Open();
}

TEST_F(LogBuffer, SingleCharactersAreKeptHoweverManyTheyAre)
{
    Open();
    std::string expected;
    for (int i = 0; i < 40000; ++i) {
        const char c = static_cast<char>('a' + i % 26);
        log.put(c);
        expected += c;
    }
    log.flush();
    EXPECT_EQ(File(), expected);
}

TEST_F(LogBuffer, EndOfFileIsNoCharacterToWrite)
{
    struct Buffer : std::streambuf
    {
        using std::streambuf::overflow;
    };
    Open();
    std::streambuf& buffer = *log.rdbuf();
    EXPECT_NE((buffer.*&Buffer::overflow)(std::char_traits<char>::eof()), std::char_traits<char>::eof());
    log << std::flush;
    EXPECT_EQ(File(), "");
}

TEST_F(LogBuffer, OutputThatMemoryCantHoldFailsAndLeavesTheFile)
{
    Open();
    log << "kept" << std::flush;
    refuseMemory = [](std::size_t) { return true; };
    log << std::string(100000, 'x');
    EXPECT_TRUE(log.bad());
    refuseMemory = nullptr;
    log << "lost" << std::flush;
    EXPECT_EQ(File(), "kept");
    log.clear();
    log.Append("a");
    refuseMemory = [](std::size_t) { return true; };
    log.Append(std::string(100000, 'x'));
    EXPECT_TRUE(log.bad());
}

TEST_F(LogBuffer, NothingReachesTheFileBetweenFlushes)
{
    Open();
    log << "before" << std::flush;
    const int descriptor = Descriptor();
    ResetCounts();

    log << std::string(1000000, 'x');
    log.Append(std::string(1000000, 'y'));
    log.seekp(3);
    EXPECT_EQ(log.tellp(), 3);
    log << "overwritten";
    log.seekp(0, std::ios_base::end);
    log.seekp(-5, std::ios_base::cur);
    log << "z";

    EXPECT_EQ(CallsOnTheFile(), 0U);
    struct stat status;
    ASSERT_EQ(platform.fstat.Real(descriptor, &status), 0);
    EXPECT_EQ(status.st_size, 6);
    EXPECT_EQ(File(), "before");
}

TEST_F(LogBuffer, FlushWithoutTextWritesNothing)
{
    Open();
    log << "text" << std::flush;
    ResetCounts();
    log.flush();
    log.seekp(0);
    log.flush();
    EXPECT_EQ(CallsOnTheFile(), 0U);
}

TEST_F(LogBuffer, FlushWithinAPageIsOneWrite)
{
    Open();
    log << "<log>\n</log>\n" << std::flush;
    for (int i = 0; i < 20; ++i) {
        ResetCounts();
        log.seekp(-7, std::ios_base::end);
        log << std::string(100, 'x') << "</log>\n" << std::flush;
        EXPECT_EQ(platform.pwrite.Calls(), 1U);
        EXPECT_EQ(CallsOnTheFile(), 1U);
    }
    EXPECT_EQ(File(), "<log>\n" + std::string(2000, 'x') + "</log>\n");
}

TEST_F(LogBuffer, FlushThatEndsWithItsPageIsOneWrite)
{
    Open();
    log << "<log>\n</log>\n" << std::flush;
    ResetCounts();
    log.seekp(-7, std::ios_base::end);
    log << std::string(4096 - 6 - 7, 'x') << "</log>\n" << std::flush;
    EXPECT_EQ(platform.pwrite.Calls(), 1U);
    EXPECT_EQ(CallsOnTheFile(), 1U);
    EXPECT_EQ(File().size(), 4096U);
}

TEST_F(LogBuffer, SeekingPastTheEndLeavesAHole)
{
    Open();
    log << "ab";
    log.seekp(5);
    log << "c" << std::flush;
    EXPECT_EQ(File(), std::string("ab\0\0\0c", 6));
    log.seekp(8);
    log << "d" << std::flush;
    EXPECT_EQ(File(), std::string("ab\0\0\0c\0\0d", 9));
}

TEST_F(LogBuffer, SeekingAloneMakesNoHole)
{
    Open();
    log << "ab";
    log.seekp(100);
    log.flush();
    EXPECT_EQ(File(), "ab");
    log.seekp(1000);
    log.seekp(2);
    log << "c" << std::flush;
    EXPECT_EQ(File(), "abc");
}

TEST_F(LogBuffer, SeekingFromTheEndCountsFromTheEndOfTheText)
{
    Open();
    log << "abc" << std::flush;
    log.seekp(100);
    log.seekp(0, std::ios_base::end);
    EXPECT_EQ(log.tellp(), 3);
    log << "def";
    log.seekp(100);
    log.seekp(-1, std::ios_base::end);
    EXPECT_EQ(log.tellp(), 5);
}

TEST_F(LogBuffer, SeekingFromTheBeginningIsSeekingToAPlace)
{
    Open();
    log << "abc";
    log.seekp(1, std::ios_base::beg);
    EXPECT_EQ(log.tellp(), 1);
    log << "X" << std::flush;
    EXPECT_EQ(File(), "aXc");
}

TEST_F(LogBuffer, SeekForwardThatMemoryCantFollowWritesThePendingTextFirst)
{
    Open();
    log << "abc";
    refuseMemory = [](std::size_t) { return true; };
    ResetCounts();
    log.seekp(100000);
    EXPECT_EQ(platform.pwrite.Calls(), 1U);
    refuseMemory = nullptr;
    log << "d" << std::flush;
    EXPECT_EQ(File(), "abc" + std::string(99997, '\0') + "d");
}

TEST_F(LogBuffer, SeekingBeforeTheBeginningFailsAndKeepsThePlace)
{
    Open();
    log << "abc";
    log.seekp(-1);
    EXPECT_EQ(log.rdstate(), std::ios_base::failbit);
    log.clear();
    log.seekp(-4, std::ios_base::cur);
    EXPECT_EQ(log.rdstate(), std::ios_base::failbit);
    log.clear();
    EXPECT_EQ(log.tellp(), 3);
    log << "d" << std::flush;
    EXPECT_EQ(File(), "abcd");
}

TEST_F(LogBuffer, TextAfterThePutPositionStays)
{
    Open();
    log << "abcdef";
    log.seekp(1);
    log << "X" << std::flush;
    EXPECT_EQ(log.tellp(), 2);
    EXPECT_EQ(File(), "aXcdef");
    log << "Y" << std::flush;
    EXPECT_EQ(File(), "aXYdef");
}

TEST_F(LogBuffer, TextIsTakenBack)
{
    Open();
    log << "kept" << std::flush << "dropped";
    log.TakeBack(2);
    EXPECT_EQ(log.tellp(), 2);
    log << "ep";
    log.close();
    EXPECT_EQ(File(), "keep");
}

TEST_F(LogBuffer, TextIsDroppedFromAPlaceOn)
{
    Open();
    log << "kept" << std::flush << " and this, not that";
    log.DropFrom(14);
    EXPECT_EQ(log.tellp(), 14);
    log << "." << std::flush;
    EXPECT_EQ(File(), "kept and this,.");
}

TEST_F(LogBuffer, WhatIsFlushedIsNotDropped)
{
    Open();
    log << "kept" << std::flush << "dropped";
    log.DropFrom(2);
    EXPECT_EQ(log.tellp(), 4);
    log << " too" << std::flush;
    EXPECT_EQ(File(), "kept too");
}

TEST_F(LogBuffer, WithoutAnOpenFileNothingIsDroppedOrTakenBack)
{
    log.DropFrom(0);
    log.TakeBack(0);
    EXPECT_TRUE(log.good());
    EXPECT_EQ(log.tellp(), -1);
    Open();
    EXPECT_EQ(log.tellp(), 0);
}

TEST_F(LogBuffer, StreamThatHasFailedStaysBadWhenItsTextIsDropped)
{
    Open();
    log << "kept" << std::flush << "lost";
    FailWrites(1, 1);
    log.flush();
    log.DropFrom(0);
    EXPECT_TRUE(log.bad());
    EXPECT_FALSE(log.IsOutOfMemory());
    EXPECT_EQ(File(), "kept");
}

TEST_F(LogBuffer, StreamThatWasOutOfMemoryIsGoodAgainWhenItsTextIsTakenBack)
{
    Open();
    log << "kept" << std::flush << "dropped";
    refuseMemory = [](std::size_t) { return true; };
    log << std::string(100'000, 'x');
    EXPECT_TRUE(log.bad());
    EXPECT_TRUE(log.IsOutOfMemory());
    log.TakeBack(4);
    refuseMemory = nullptr;
    EXPECT_TRUE(log.good());
    EXPECT_FALSE(log.IsOutOfMemory());
    log << " too";
    log.close();
    EXPECT_EQ(File(), "kept too");
}

TEST_F(LogBuffer, StreamWhoseFileHasFailedStaysBadWhenItsTextIsTakenBack)
{
    Open();
    log << "kept" << std::flush;
    FailWrites(1, 1);
    log << "lost" << std::flush;
    log.TakeBack(4);
    EXPECT_TRUE(log.bad());
    EXPECT_EQ(File(), "kept");
}

TEST_F(LogBuffer, TextMayBeLongerThanAnIntCounts)
{
    Open();
    constexpr std::size_t length = (std::size_t{1} << 31U) + 5;
    char* const place = log.Room(length);  // memory that nothing is written to
    ASSERT_NE(place, nullptr);
    log.Advance(place + length);
    EXPECT_EQ(log.tellp(), static_cast<std::streamoff>(length));
    log.TakeBack(0);
    log << "text";
    log.close();
    EXPECT_EQ(File(), "text");
}

}  // namespace
