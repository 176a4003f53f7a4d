// The end of the file: what is known of it, what is read anew, and what becomes of a flush without it.

#include "stream/FileTail.h"
#include "stream/StreamTest.h"

#include <cerrno>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace
{

using ScrivelTest::platform;
using ScrivelTest::refuseMemory;
using FileTail = ScrivelTest::GrowingDocument;

TEST_F(FileTail, LongTailThatMemoryCantHoldIsReadFromTheFileLater)
{
    Open();
    std::string expected(20000, 'a');
    log << expected << std::flush;
    log.seekp(0);
    log << "X";
    refuseMemory = [](std::size_t) { return true; };
    log.flush();
    refuseMemory = nullptr;
    log.seekp(10);
    log << std::string(20000, 'b') << std::flush;
    expected = "X" + std::string(9, 'a') + std::string(20000, 'b');
    EXPECT_EQ(File(), expected);
    log.seekp(5);
    log << "Y" << std::flush;
    expected[5] = 'Y';
    EXPECT_EQ(File(), expected);
}

TEST_F(FileTail, SeekingBackBeyondWhatMemoryHoldsReadsTheFile)
{
    Open();
    std::string expected(20000, 'a');
    log << expected << std::flush;
    log << "end" << std::flush;
    expected += "end";
    log << "more";
    log.seekp(100);
    log << "X" << std::flush;
    expected += "more";
    expected[100] = 'X';
    EXPECT_EQ(File(), expected);
}

TEST_F(FileTail, TailThatCouldNotBeReadBackCantBePutBackEither)
{
    const std::string document = Begin(100);
    log << "flushed" << std::flush;
    log.seekp(static_cast<std::streamoff>(document.size()));
    log << "lost";
    platform.pread.Use([](int, void*, std::size_t, off_t) -> ssize_t {
        errno = EIO;
        return -1;
    });
    FailWrites(1, 1);
    log.flush();
    EXPECT_TRUE(log.bad());
    EXPECT_EQ(platform.pwrite.Calls(), 1U);
    EXPECT_EQ(File(), document + endTag + "flushed");
}

TEST_F(FileTail, EndOfTheFileThatCantBeReadBackIsOverwrittenInOneGo)
{
    const auto readFailures = {
        std::pair<ssize_t, int>{-1, EIO},
        std::pair<ssize_t, int>{0, 0},
    };
    for (const auto& [result, error] : readFailures) {
        const std::string document = Begin(100);
        log << "flushed" << std::flush;
        log.seekp(static_cast<std::streamoff>(document.size()));
        const auto stub =
            platform.pread.Use([returned = result, code = error](int, void*, std::size_t, off_t) {
                errno = code;
                return returned;
            });
        log << Element(5000) << endTag;
        platform.pwrite.Reset();
        log.flush();
        platform.pread.Reset();
        EXPECT_EQ(platform.pwrite.Calls(), 1U);
        EXPECT_EQ(File(), document + Element(5000) + endTag);
    }
}

TEST_F(FileTail, EndOfTheFileThatMemoryCantHoldIsOverwrittenWithoutLookingAtIt)
{
    std::string expected(20000, 'a');
    Open();
    log << expected << std::flush << "end" << std::flush;
    expected += "end";
    log.seekp(100);
    refuseMemory = [](std::size_t) { return true; };
    log << "X" << std::flush;
    expected[100] = 'X';
    EXPECT_TRUE(log.good());
    EXPECT_EQ(platform.pread.Calls(), 0U);
    EXPECT_EQ(File(), expected);
}

TEST_F(FileTail, InterruptedAndShortReadsOfTheEndOfTheFileAreContinued)
{
    const std::string document = Begin(100);
    log << "flushed" << std::flush;
    log.seekp(static_cast<std::streamoff>(document.size()));
    platform.pread.Use([](int file, void* bytes, std::size_t size, off_t position) -> ssize_t {
        if (platform.pread.Calls() % 2 == 1) {
            errno = EINTR;
            return -1;
        }
        return platform.pread.Real(file, bytes, (size + 1) / 2, position);
    });
    log << Element(5000) << endTag;
    FailWrites(3, 3);  // the one over the tail, which is then put back as it was read
    log.flush();
    EXPECT_EQ(platform.pwrite.Calls(), 4U);
    EXPECT_EQ(File(), document + endTag + "flushed");
    EXPECT_GT(platform.pread.Calls(), 2U);
}

TEST_F(FileTail, ShortReadOfTheEndOfTheFileIsNotTakenForAll)
{
    std::string expected = Begin(100) + endTag;
    log << "flushed" << std::flush << "pending";
    expected += "flushedpending";
    platform.pread.Use([](int file, void* bytes, std::size_t, off_t position) {
        return platform.pread.Real(file, bytes, 1, position);
    });
    log.seekp(20);
    EXPECT_GT(platform.pread.Calls(), 50U);
    log << "X" << std::flush;
    expected[20] = 'X';
    EXPECT_EQ(File(), expected);
}

TEST_F(FileTail, TakesNoMoreMemoryTheLongerTheFileIs)
{
    std::string expected;
    Open();
    for (int i = 0; i < 100; ++i) {
        const std::string text(10000, static_cast<char>('a' + i % 26));
        log << text << std::flush;
        expected += text;
    }
    static std::vector<std::size_t> asked;
    asked.clear();
    refuseMemory = [](std::size_t size) {
        asked.push_back(size);
        return false;
    };
    for (const std::size_t back : {20U, 3000U, 9000U}) {
        log.seekp(-static_cast<std::streamoff>(back), std::ios_base::end);
        log << "X" << std::flush;
        expected[expected.size() - back] = 'X';
        ASSERT_EQ(File(), expected);
    }
    EXPECT_EQ(asked, std::vector<std::size_t>());
}

TEST_F(FileTail, SeekBackThatNeitherMemoryNorTheFileCanFollowFails)
{
    Begin(100);
    log << "flushed" << std::flush << "pending";
    platform.pread.Use([](int, void*, std::size_t, off_t) -> ssize_t {
        errno = EIO;
        return -1;
    });
    FailWrites(1, 1);
    log.seekp(3);
    EXPECT_TRUE(log.fail());
}

TEST_F(FileTail, SeekBackThatMemoryCantFollowWritesThePendingTextFirst)
{
    const std::string document = Begin(100);
    log << "flushed" << std::flush << "pending";
    platform.pread.Use([](int, void*, std::size_t, off_t) -> ssize_t {
        errno = EIO;
        return -1;
    });
    log.seekp(0);
    platform.pread.Reset();
    EXPECT_TRUE(log.good());
    log << "<LOG>" << std::flush;
    EXPECT_EQ(File(), "<LOG>" + document.substr(5) + endTag + "flushedpending");
}

/// Where the last markup of a tail begins.
std::optional<off_t> LastMarkup(std::string_view text)
{
    Scrivel2::OpenFile file;
    Scrivel2::FileTail tail(file);
    Scrivel2::Block block;
    EXPECT_TRUE(block.Grow(text.size(), 0));
    text.copy(block.Bytes(), text.size());
    const auto end = static_cast<off_t>(text.size());
    tail.Take(block, 0, end);
    return tail.LastMarkup(0, end);
}

TEST_F(FileTail, WhatIsWithinACommentAnInstructionOrASectionIsNoMarkup)
{
    EXPECT_EQ(LastMarkup("<a>"), 0);
    EXPECT_EQ(LastMarkup("<a><b>"), 3);
    EXPECT_EQ(LastMarkup("<a><!-- <b> -->"), 3);
    EXPECT_EQ(LastMarkup("<a><!-- <b> --></a>"), 15);
    EXPECT_EQ(LastMarkup("<a><?x <b> ?>"), 3);
    EXPECT_EQ(LastMarkup("<a><?x <b> ?></a>"), 13);
    EXPECT_EQ(LastMarkup("<a><![CDATA[ <b> ]]>"), 3);
    EXPECT_EQ(LastMarkup("<a><![CDATA[ <b> ]]></a>"), 20);
    EXPECT_EQ(LastMarkup("<a><!-- <b> "), 3);
    EXPECT_EQ(LastMarkup("text"), std::nullopt);
    EXPECT_EQ(LastMarkup("<a><"), 3);
}

}  // namespace
