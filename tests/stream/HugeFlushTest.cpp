// Flushes of more text than memory may hold.

#include "stream/StreamTest.h"

#include <algorithm>
#include <filesystem>
#include <string>

namespace
{

namespace fs = std::filesystem;
using ScrivelTest::platform;
using ScrivelTest::refuseMemory;

class HugeFlush : public ScrivelTest::GrowingDocument
{
protected:
    static constexpr std::size_t most = 64 * 1024 * 1024;
    static constexpr std::size_t piece = 1024 * 1024;

    void WritePieces(std::size_t count)
    {
        for (std::size_t i = 0; i < count; ++i) {
            log << std::string(piece, static_cast<char>('a' + i % 26));
        }
    }

    static std::string Pieces(std::size_t count)
    {
        std::string text;
        for (std::size_t i = 0; i < count; ++i) {
            text.append(piece, static_cast<char>('a' + i % 26));
        }
        return text;
    }
};

TEST_F(HugeFlush, IsWrittenOutInPiecesAheadOfTheFlush)
{
    const std::string document = Begin(100);
    log.seekp(-7, std::ios_base::end);
    ResetCounts();
    WritePieces(64);
    EXPECT_EQ(CallsOnTheFile(), 0U);
    WritePieces(1);
    EXPECT_EQ(platform.pwrite.Calls(), 1U);
    WritePieces(5);
    log << endTag << std::flush;
    EXPECT_TRUE(log.good());
    EXPECT_TRUE(File() == document + Pieces(64) + Pieces(1) + Pieces(5) + endTag);
    EXPECT_EQ(log.tellp(), static_cast<std::streamoff>(document.size() + 70 * piece + 7));

    Grow(Element(5000));
    EXPECT_TRUE(File() == document + Pieces(64) + Pieces(1) + Pieces(5) + Element(5000) + endTag);
}

TEST_F(HugeFlush, PutsTheTailBackWhenALaterWriteFails)
{
    const std::string before = Begin(100) + endTag;
    log.seekp(-7, std::ios_base::end);
    WritePieces(65);
    FailWrites(1, 1);
    log << endTag << std::flush;
    EXPECT_TRUE(log.bad());
    EXPECT_EQ(File(), before);
}

TEST_F(HugeFlush, PutsTheTailBackWhenAPieceFails)
{
    const std::string before = Begin(100) + endTag;
    log.seekp(-7, std::ios_base::end);
    WritePieces(64);
    FailWrites(1, 1);
    WritePieces(1);
    EXPECT_TRUE(log.bad());
    log.flush();
    EXPECT_EQ(File(), before);
}

TEST_F(HugeFlush, SeeksBetweenItsPieces)
{
    const std::string document = Begin(100);
    log.seekp(-7, std::ios_base::end);
    WritePieces(66);
    log.seekp(20);
    log << "X";
    log.seekp(0, std::ios_base::end);
    log << endTag << std::flush;
    std::string expected = document + Pieces(66) + endTag;
    expected[20] = 'X';
    EXPECT_TRUE(File() == expected);
}

TEST_F(HugeFlush, SeekingPastItsEndAloneMakesNoHole)
{
    Begin(100);
    WritePieces(65);
    const std::streamoff end = log.tellp();
    log.seekp(end + 1000);
    log.flush();
    log.seekp(0, std::ios_base::end);
    EXPECT_EQ(log.tellp(), end);
    EXPECT_EQ(fs::file_size("log"), static_cast<std::uintmax_t>(end));
}

TEST_F(HugeFlush, PutsTheTailBackWhenMemoryEnds)
{
    const std::string before = Begin(100) + endTag;
    log.seekp(-7, std::ios_base::end);
    WritePieces(65);
    refuseMemory = [](std::size_t) { return true; };
    EXPECT_EQ(log.Room(most + most / 2), nullptr);
    EXPECT_TRUE(log.bad());
    EXPECT_EQ(File(), before);
}

TEST_F(HugeFlush, TextFarBeforeItsEndIsWrittenWithoutReadingAllThatFollows)
{
    std::string expected = Begin(100);
    log.seekp(-7, std::ios_base::end);
    WritePieces(66);
    log << endTag << std::flush;
    expected += Pieces(66) + endTag;
    log.seekp(20);
    ResetCounts();
    log << "X" << std::flush;
    expected[20] = 'X';
    EXPECT_EQ(platform.pread.Calls(), 0U);
    EXPECT_TRUE(File() == expected);
    log.seekp(30);
    log << "Y" << std::flush;
    expected[30] = 'Y';
    EXPECT_TRUE(File() == expected);
}

TEST_F(HugeFlush, OneTextMayBeLargerThanMemoryMayHold)
{
    const std::string document = Begin(100);
    log.seekp(-7, std::ios_base::end);
    const std::string text = Pieces(70);
    log.Append(text);
    log << endTag << std::flush;
    EXPECT_TRUE(File() == document + text + endTag);
}

TEST_F(HugeFlush, SeekPastMoreThanMemoryMayHoldLeavesAHole)
{
    Open();
    log << "a";
    log.seekp(static_cast<std::streamoff>(most + 10));
    log << "b" << std::flush;
    EXPECT_EQ(fs::file_size("log"), most + 11);
    EXPECT_TRUE(log.good());
    const std::string text = File();
    EXPECT_EQ(text.front(), 'a');
    EXPECT_EQ(text.back(), 'b');
    EXPECT_EQ(std::count(text.begin(), text.end(), '\0'), static_cast<std::ptrdiff_t>(most + 9));
}

}  // namespace
