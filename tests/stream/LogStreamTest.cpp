// What a LogStream adds to a std::ostream: opening, closing, errors, appending, holds.

#include "stream/StreamTest.h"

#include <cerrno>
#include <iomanip>
#include <locale>
#include <ostream>
#include <sstream>
#include <streambuf>
#include <string>

namespace
{

using ScrivelTest::pageSize;
using ScrivelTest::platform;
using LogStream = ScrivelTest::StreamTest;

TEST_F(LogStream, NewStreamIsClosedAndGood)
{
    EXPECT_FALSE(log.is_open());
    EXPECT_TRUE(log.good());
}

TEST_F(LogStream, OpeningWhileOpenFailsAndLeavesErrnoAndTheFile)
{
    Open();
    log << "kept" << std::flush;
    errno = 0;
    log.open("log");
    EXPECT_EQ(errno, 0);
    EXPECT_EQ(log.rdstate(), std::ios_base::failbit);
    EXPECT_TRUE(log.is_open());
    EXPECT_EQ(File(), "kept");
}

TEST_F(LogStream, OpeningClearsTheErrorState)
{
    log.setstate(std::ios_base::badbit | std::ios_base::failbit);
    Open();
    EXPECT_TRUE(log.good());
}

TEST_F(LogStream, TextOfMoreThanAMebibyteIsAppendedWhole)
{
    log.open("log");
    const std::string text = std::string(3 * 1024 * 1024, 'x') + "end";
    log.Append(text);
    log.Append("!");
    log.flush();
    EXPECT_EQ(File(), text + "!");
}

TEST_F(LogStream, SeeksAndFlushesInTheBufferThatItHasBeenGiven)
{
    Open();
    log << "text";
    std::stringbuf other;
    std::streambuf* const own = log.rdbuf(&other);
    log << "abc";
    log.seekp(1);
    EXPECT_EQ(log.tellp(), 1);
    log << "X";
    log.flush();
    EXPECT_EQ(other.str(), "aXc");
    EXPECT_EQ(File(), "");
    log.rdbuf(own);
    EXPECT_EQ(log.tellp(), 4);
    log.flush();
    EXPECT_EQ(File(), "text");
}

TEST_F(LogStream, StreamThatItIsTiedToIsFlushedAsThatOfAnyOstream)
{
    struct Counting : std::stringbuf
    {
        int sync() override { return ++flushes, 0; }
        int flushes = 0;
    };
    const auto flushes = [](auto& stream) {
        Counting counting;
        std::ostream tied(&counting);
        stream << "text";
        stream.tie(&tied);
        stream.seekp(1);
        stream.tellp();
        stream.flush();
        stream.tie(nullptr);
        return counting.flushes;
    };
    Open();
    std::ostringstream any;
    EXPECT_EQ(flushes(log), flushes(any));
    EXPECT_EQ(File(), "text");
}

TEST_F(LogStream, UnitBufferedStreamSeeksAndTells)
{
    Open();
    log << "text" << std::unitbuf;
    log.seekp(1);
    EXPECT_EQ(log.tellp(), 1);
    log << "X";
    EXPECT_EQ(File(), "tXxt");
}

TEST_F(LogStream, ClosingFlushes)
{
    Open();
    log << "text";
    log.close();
    EXPECT_TRUE(log.good());
    EXPECT_FALSE(log.is_open());
    EXPECT_EQ(File(), "text");
}

TEST_F(LogStream, ClosingAClosedStreamFails)
{
    log.close();
    EXPECT_EQ(log.rdstate(), std::ios_base::failbit);
}

TEST_F(LogStream, ClosingFailsWhenItsFlushFailsAndClosesAllTheSame)
{
    Open();
    log << "text";
    platform.pwrite.Use([](int, const void*, std::size_t, off_t) -> ssize_t {
        errno = ENOSPC;
        return -1;
    });
    log.close();
    EXPECT_EQ(log.rdstate(), std::ios_base::failbit);
    EXPECT_FALSE(log.is_open());
    EXPECT_EQ(File(), "");
}

TEST_F(LogStream, ClosingFailsWhenTheSystemSaysSo)
{
    Open();
    log << "text";
    platform.close.Use([](int file) {
        platform.close.Real(file);
        errno = EIO;
        return -1;
    });
    log.close();
    EXPECT_EQ(log.rdstate(), std::ios_base::failbit);
    EXPECT_FALSE(log.is_open());
    EXPECT_EQ(File(), "text");
}

TEST_F(LogStream, StreamIsAsNewWhenItIsOpenedAgain)
{
    Open();
    log << std::string(3 * pageSize, 'x');
    log.close();
    Open();
    EXPECT_EQ(log.tellp(), 0);
    log << "new" << std::flush;
    EXPECT_EQ(File(), "new");
}

TEST_F(LogStream, DestroyingWritesNothingAndClosesTheFile)
{
    {
        Scrivel2::LogStream other;
        other.open("log");
        other << "flushed" << std::flush << " lost";
        ResetCounts();
    }
    EXPECT_EQ(CallsOnTheFile(), 0U);
    EXPECT_EQ(platform.close.Calls(), 1U);
    EXPECT_EQ(File(), "flushed");
}

TEST_F(LogStream, OutputToAClosedStreamFails)
{
    log << "text";
    EXPECT_TRUE(log.bad());
    log.clear();
    log.Append("text");
    EXPECT_TRUE(log.bad());
    log.clear();
    log.put('c');
    EXPECT_TRUE(log.bad());
    log.clear();
    EXPECT_EQ(log.Room(1), nullptr);
    EXPECT_TRUE(log.bad());
}

TEST_F(LogStream, OutputAfterTheCloseOfAFileFails)
{
    Open();
    log << "text" << std::flush;
    log.close();
    EXPECT_EQ(log.Room(1), nullptr);
    EXPECT_TRUE(log.bad());
    log.clear();
    log << "text";
    EXPECT_TRUE(log.bad());
    EXPECT_EQ(File(), "text");
}

TEST_F(LogStream, EmptyOutputToAClosedStreamIsNoFailure)
{
    log << "" << std::string();
    log.Append("");
    EXPECT_EQ(log.Room(0), nullptr);
    log.flush();
    EXPECT_TRUE(log.good());
}

TEST_F(LogStream, PutPositionOfAClosedStreamIsMinusOneAndSeekingThereFails)
{
    EXPECT_EQ(log.tellp(), -1);
    EXPECT_TRUE(log.good());
    log.seekp(0);
    EXPECT_EQ(log.rdstate(), std::ios_base::failbit);
    log.clear();
    log.seekp(0, std::ios_base::end);
    EXPECT_EQ(log.rdstate(), std::ios_base::failbit);
}

TEST_F(LogStream, PutPositionOfAFailedStreamIsMinusOneAndItsOutputVanishes)
{
    Open();
    log << "kept";
    log.setstate(std::ios_base::failbit);
    EXPECT_EQ(log.tellp(), -1);
    log.seekp(0);
    log << "lost" << 1;
    log.Append("lost");
    EXPECT_EQ(log.Room(1), nullptr);
    log.clear();
    EXPECT_EQ(log.tellp(), 4);
    log << std::flush;
    EXPECT_EQ(File(), "kept");
}

TEST_F(LogStream, FormattedOutputAndAppendedTextKeepTheirOrder)
{
    Open();
    log << 1;
    log.Append("a");
    log.put('b');
    log << std::hex << 255;
    log.Append("c");
    log.write("defg", 4);
    log << std::dec << std::setw(4) << std::setfill('.') << 7 << std::boolalpha << true;
    char* const place = log.Room(3);
    place[0] = 'h';
    place[1] = 'i';
    log.Advance(place + 2);
    log << 'j' << std::flush;
    EXPECT_EQ(File(), "1abffcdefg...7truehij");
}

TEST_F(LogStream, WidthGoesToTheTextAppendedNextAndIsGone)
{
    Open();
    log << std::setfill('.') << std::setw(5);
    log.Append("ab");
    log.Append("cd");
    log << std::left << std::setw(5);
    log.Append("ef");
    log << std::setw(1);
    log.Append("gh");
    log << std::setw(3);
    log.Append("");
    log << 1 << std::flush;
    EXPECT_EQ(File(), "...abcdef...gh...1");
}

TEST_F(LogStream, WidthGoesToTheTextBeforeTheRoomAndIsGone)
{
    const auto put = [this](const char* first, char character) {
        char* const place = log.RoomAfter(first, 1);
        *place = character;
        log.Advance(place + 1);
    };
    Open();
    log << std::setfill('.') << std::setw(4);
    put("ab", 'c');
    put("de", 'f');
    log << std::left << std::setw(4);
    put("gh", 'i');
    log << std::setw(1);
    put("jk", 'l');
    log << 1 << std::flush;
    EXPECT_EQ(File(), "..abcdefgh..ijkl1");
}

TEST_F(LogStream, WidthStaysWhileTextIsPutIntoTheRoom)
{
    Open();
    log << std::setw(4);
    char* const place = log.Room(1);
    *place = 'a';
    log.Advance(place + 1);
    log.Append("b");
    log.flush();
    EXPECT_EQ(File(), "a   b");
}

TEST_F(LogStream, WidthOfAFailedStreamStays)
{
    Open();
    log << std::setw(4);
    log.setstate(std::ios_base::badbit);
    log.Append("lost");
    EXPECT_EQ(log.RoomAfter("lost", 1), nullptr);
    EXPECT_EQ(log.rdstate(), std::ios_base::badbit);
    log.clear();
    log.Append("a");
    log.flush();
    EXPECT_EQ(File(), "   a");
}

TEST_F(LogStream, NumbersHaveTheClassicLocaleWhateverTheGlobalOneIs)
{
    const std::locale before =
        std::locale::global(std::locale(std::locale::classic(), new std::numpunct<char>));
    const Scrivel2::LogStream other;
    std::locale::global(before);
    EXPECT_EQ(other.getloc(), std::locale::classic());
}

TEST_F(LogStream, HeldFlushDoesNothingAndTheNextOneWritesAll)
{
    Open();
    {
        const Scrivel2::LogStream::FlushHold hold(log);
        log << "a" << std::flush;
        {
            const Scrivel2::LogStream::FlushHold inner(log);
            log << "b" << std::flush;
        }
        log << "c" << std::flush;
        EXPECT_TRUE(log.good());
        EXPECT_EQ(File(), "");
    }
    EXPECT_EQ(File(), "");
    log << "d" << std::flush;
    EXPECT_EQ(File(), "abcd");
}

TEST_F(LogStream, HeldFlushIsNoHoldForClosing)
{
    Open();
    const Scrivel2::LogStream::FlushHold hold(log);
    log << "text";
    log.close();
    EXPECT_EQ(File(), "text");
}

}  // namespace
