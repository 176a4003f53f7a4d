// Flushes of more text than memory may hold.

#include "stream/StreamTest.h"

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <string>
#include <utility>

namespace
{

namespace fs = std::filesystem;
using ScrivelTest::forEver;
using ScrivelTest::IsDocument;
using ScrivelTest::pageSize;
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
    WritePieces(63);
    EXPECT_EQ(CallsOnTheFile(), 0U);
    WritePieces(1);
    EXPECT_EQ(platform.pwrite.Calls(), 2U);
    EXPECT_EQ(platform.ftruncate.Calls(), 0U);
    WritePieces(6);
    log << endTag << std::flush;
    EXPECT_TRUE(log.good());
    EXPECT_TRUE(File() == document + Pieces(63) + Pieces(1) + Pieces(6) + endTag);
    EXPECT_EQ(log.tellp(), static_cast<std::streamoff>(document.size() + 70 * piece + 7));

    Grow(Element(5000));
    EXPECT_TRUE(File() == document + Pieces(63) + Pieces(1) + Pieces(6) + Element(5000) + endTag);
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
    WritePieces(63);
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

/// Flushes whose pieces are small, stopped between any two pages.
class SmallPieces : public HugeFlush
{
protected:
    static constexpr std::size_t limit = 4 * ScrivelTest::pageSize;

    /// Opens a document and replaces its tail by elements that are several times the limit, with `extra`
    /// in the midst of them. Returns what the file is to hold.
    std::string GrowInPieces(std::size_t before, const std::string& lastBefore = "<bbbbb/>\n",
                             const std::string& tail = endTag, const std::string& extra = {},
                             std::size_t elements = 60)
    {
        const std::string document = Begin(before, lastBefore, tail);
        log.SetMostInMemory(limit);
        log.seekp(static_cast<std::streamoff>(document.size()));
        StopBetweenPages();
        std::string text;
        for (std::size_t i = 0; i < elements; ++i) {
            const std::string element =
                Element(10 + 37 * i % 1900) + (i == elements / 2 ? extra : std::string());
            log << element;
            text += element;
        }
        log << tail << std::flush;
        platform.pwrite.Reset();
        return document + text + tail;
    }

    /// Writes elements of 1000 bytes, and returns them.
    std::string WriteElements(unsigned int count)
    {
        std::string text;
        for (unsigned int i = 0; i < count; ++i) {
            log << Element(1000);
            text += Element(1000);
        }
        return text;
    }

    /// Whether text that is not flushed yet stands in the place of the end tag.
    static bool IsOverTheTail(const std::string& document)
    {
        const std::string tail(endTag);
        return File().compare(document.size(), tail.size(), tail) != 0;
    }
};

TEST_F(SmallPieces, LeaveADocumentWhereverTheTailStands)
{
    for (std::size_t before = pageSize - 20; before < pageSize + 3; ++before) {
        for (const std::size_t elements : {40U, 41U, 42U, 60U}) {
            const std::string expected = GrowInPieces(before, "<bbbbb/>\n", endTag, {}, elements);
            EXPECT_TRUE(log.good());
            ASSERT_TRUE(File() == expected) << before;
            EXPECT_GT(std::exchange(stops, 0), 10U);
        }
    }
}

TEST_F(SmallPieces, LeaveADocumentWhateverTheTailHolds)
{
    for (const char* const tail : {"<!--x--></log>\n", "<a>]</a></log>\n"}) {
        for (std::size_t before = 2 * pageSize - 30; before < 2 * pageSize + 3; ++before) {
            SCOPED_TRACE(tail + std::to_string(before));
            const std::string expected = GrowInPieces(before, "<bbbbb/>\n", tail);
            ASSERT_TRUE(File() == expected) << before << tail;
        }
    }
    EXPECT_GT(stops, 1000U);
}

TEST_F(SmallPieces, LeaveADocumentWhereverTheLastOneEnds)
{
    for (std::size_t added = 0; added < 2 * pageSize; added += 13) {
        const std::string document = Begin(pageSize - 3, "<bbbbb/>\n");
        log.SetMostInMemory(limit);
        log.seekp(static_cast<std::streamoff>(document.size()));
        StopBetweenPages();
        std::string text;
        for (const std::size_t size : {limit, limit / 2, std::size_t{7}, added}) {
            text += Element(size);
            log << Element(size);
        }
        log << endTag << std::flush;
        platform.pwrite.Reset();
        ASSERT_TRUE(File() == document + text + endTag) << added;
    }
    EXPECT_GT(stops, 1000U);
}

TEST_F(SmallPieces, TextThatWouldEndItsHidingIsWrittenOverTheTail)
{
    for (const char* const extra : {"<!-- ?> -->", "<?y ?>", "<!-- ]]> ?> -->"}) {
        for (const std::size_t before : {std::size_t{100}, pageSize - 3}) {
            for (const int place : {0, 20}) {
                const std::string document = Begin(before, "<bbbbb/>\n");
                log.SetMostInMemory(limit);
                log.seekp(static_cast<std::streamoff>(document.size()));
                std::string text;
                for (int i = 0; i < 50; ++i) {
                    text += Element(1000) + (i == place ? extra : "");
                    log << Element(1000) << (i == place ? extra : "");
                }
                EXPECT_TRUE(IsOverTheTail(document));
                log << endTag << std::flush;
                EXPECT_TRUE(log.good());
                EXPECT_TRUE(File() == document + text + endTag) << extra;
            }
        }
    }
}

TEST_F(SmallPieces, EndOfAnInstructionOrASectionAcrossTwoPiecesIsSeen)
{
    constexpr std::size_t twoPieces = 2 * (3 * pageSize / 4 * 3);  // a quarter stays in memory
    const struct
    {
        std::size_t before;
        const char* ending;
    } cases[] = {{100, "?>"}, {pageSize - 3, "]]>"}};
    for (const auto& [before, ending] : cases) {
        for (std::size_t first = twoPieces - 30; first < twoPieces + 10; ++first) {
            const std::string document = Begin(before, "<bbbbb/>\n");
            log.SetMostInMemory(limit);
            log.seekp(static_cast<std::streamoff>(document.size()));
            const std::string text =
                "<!-- " + std::string(first, 'x') + ending + " -->" + Element(30'000);
            for (const char character : text) {
                log.put(character);
            }
            ASSERT_TRUE(IsOverTheTail(document)) << ending << first;
            log << endTag << std::flush;
            ASSERT_TRUE(File() == document + text + endTag) << ending << first;
        }
    }
}

TEST_F(SmallPieces, TailThatNothingCanHideIsWrittenOver)
{
    const std::string document = Begin(2 * pageSize - 3, std::string(2000, ' '));  // no markup nearby
    log.SetMostInMemory(limit);
    log.seekp(static_cast<std::streamoff>(document.size()));
    const std::string text = WriteElements(30);
    EXPECT_TRUE(IsOverTheTail(document));
    log << endTag << std::flush;
    EXPECT_TRUE(File() == document + text + endTag);
}

TEST_F(SmallPieces, TextThatDoesNotReachBeyondTheTailIsWrittenOverIt)
{
    std::string expected = Begin(20 * pageSize) + endTag;
    log.SetMostInMemory(limit);
    log.seekp(10);
    const std::string text = WriteElements(30);
    log.flush();
    EXPECT_TRUE(log.good());
    expected.replace(10, text.size(), text);
    EXPECT_TRUE(File() == expected);
}

TEST_F(SmallPieces, TailThatCantBeReadBackIsWrittenOver)
{
    const std::string document = Begin(100);
    log << "<!-- -->" << std::flush;  // all that is in memory from now on
    log.SetMostInMemory(limit);
    log.seekp(static_cast<std::streamoff>(document.size()));
    platform.pread.Use([](int, void*, std::size_t, off_t) -> ssize_t {
        errno = EIO;
        return -1;
    });
    const std::string text = WriteElements(30);
    log << endTag << std::flush;
    EXPECT_TRUE(log.good());
    EXPECT_TRUE(File() == document + text + endTag);
}

TEST_F(SmallPieces, WithoutMemoryToHideThemTheyAreWrittenOverTheTail)
{
    constexpr std::size_t largerLimit = 40 * pageSize;
    static unsigned int asked;
    static unsigned int refused;
    const auto refuseOneSmallBlock = [](std::size_t size) { return size < 15'000 && asked++ == refused; };
    // What is written last, the marks of the first piece, and those of a larger one after it.
    for (refused = 0; refused < 3; ++refused) {
        Scrivel2::LogStream().swap(log);
        const std::string document = Begin(100);
        log.SetMostInMemory(largerLimit);
        log.seekp(static_cast<std::streamoff>(document.size()));
        log.Append(Element(largerLimit * 5 / 8));
        asked = 0;
        refuseMemory = refuseOneSmallBlock;
        log.Append(Element(largerLimit * 7 / 8));
        EXPECT_EQ(IsOverTheTail(document), refused < 2);
        log.Append(Element(largerLimit * 7 / 8));
        EXPECT_TRUE(IsOverTheTail(document)) << refused;
        refuseMemory = nullptr;
        log << endTag << std::flush;
        EXPECT_TRUE(log.good());
        EXPECT_TRUE(File() == document + Element(largerLimit * 5 / 8) + Element(largerLimit * 7 / 8) +
                                  Element(largerLimit * 7 / 8) + endTag);
    }
}

TEST_F(SmallPieces, TextAfterAPlaceThatWasSoughtIsWrittenFromThere)
{
    const std::string document = Begin(100);
    log.SetMostInMemory(limit);
    log.seekp(static_cast<std::streamoff>(document.size()));
    log << std::string(10'000, 'a');
    log.seekp(static_cast<std::streamoff>(document.size() + 8000));
    log.Append(std::string(9000, 'b'));
    const std::string text = WriteElements(20);
    EXPECT_TRUE(IsOverTheTail(document));
    log << endTag << std::flush;
    EXPECT_TRUE(File() == document + std::string(8000, 'a') + std::string(9000, 'b') + text + endTag);
}

TEST_F(SmallPieces, TrailerThatCantBeCutStaysAfterTheNewDocument)
{
    const std::string document = Begin(100);
    log.SetMostInMemory(limit);
    log.seekp(static_cast<std::streamoff>(document.size()));
    const std::string text = WriteElements(30);
    log << endTag;
    platform.ftruncate.Use([](int, off_t) {
        errno = EIO;
        return -1;
    });
    log.flush();
    EXPECT_TRUE(log.bad());
    EXPECT_TRUE(File() == document + text + endTag + "<?x ?>");
}

TEST_F(SmallPieces, OldDocumentComesBackWhicheverWriteFails)
{
    constexpr int nowhere = 60;
    for (const std::size_t before : {std::size_t{100}, pageSize - 3}) {
        for (const int endOfInstruction : {20, 59, nowhere}) {
            unsigned int number = 0;
            do {
                const std::string old = Begin(before, "<bbbbb/>\n") + endTag;
                log.SetMostInMemory(limit);
                log.seekp(-7, std::ios_base::end);
                ++number;
                FailWrites(number, number);
                for (int i = 0; i < 60; ++i) {
                    log << Element(1000) << (i == endOfInstruction ? "<?y ?>" : "");
                }
                log << endTag << std::flush;
                platform.pwrite.Reset();
                if (log.good()) {
                    break;
                }
                ASSERT_EQ(File(), old) << "write " << number;
                log.clear();
            } while (number < 100);
            EXPECT_GE(number, 8U);
            EXPECT_LT(number, 100U);
        }
    }
}

TEST_F(SmallPieces, LeaveADocumentWhenTheOldOneCantEvenBePutBack)
{
    unsigned int number = 0;
    do {
        Begin(pageSize - 3, "<bbbbb/>\n");
        log.SetMostInMemory(limit);
        log.seekp(-7, std::ios_base::end);
        ++number;
        FailWrites(number, forEver);
        for (int i = 0; i < 60; ++i) {
            log << Element(1000);
        }
        log << endTag << std::flush;
        platform.pwrite.Reset();
        ASSERT_TRUE(IsDocument(File())) << "from write " << number << " on";
    } while (log.bad() && number < 100);
    EXPECT_GE(number, 8U);
    EXPECT_LT(number, 100U);
}

TEST_F(SmallPieces, OldDocumentComesBackWhenTheirEndCantBeCutOff)
{
    const std::string old = Begin(100) + endTag;
    log.SetMostInMemory(limit);
    log.seekp(-7, std::ios_base::end);
    WriteElements(20);
    platform.ftruncate.Use([](int file, off_t size) {
        if (platform.ftruncate.Calls() == 1) {
            errno = EIO;
            return -1;
        }
        return platform.ftruncate.Real(file, size);
    });
    log << "<?y ?>";
    WriteElements(20);
    EXPECT_TRUE(log.bad());
    EXPECT_EQ(File(), old);
}

TEST_F(SmallPieces, TakeNoMoreMemoryThanTheirLimit)
{
    const std::string document = Begin(100);
    log.SetMostInMemory(limit);
    log.seekp(-7, std::ios_base::end);
    refuseMemory = [](std::size_t size) { return size > 4 * limit; };
    for (int i = 0; i < 40'000; ++i) {
        log.Append("<a>some text or other, and so on</a>\n");
    }
    log << endTag << std::flush;
    refuseMemory = nullptr;
    EXPECT_TRUE(log.good());
    EXPECT_GT(fs::file_size("log"), 50 * limit);
    EXPECT_TRUE(ScrivelTest::IsDocument(File()));
}

TEST_F(SmallPieces, TextIsDroppedFromAPlaceOnThatIsInNoPieceOrInAny)
{
    for (const std::size_t kept : {std::size_t{0}, std::size_t{20}, limit / 2, 3 * pageSize}) {
        for (const std::size_t dropped : {std::size_t{10}, limit, 10 * limit}) {
            const std::string document = Begin(pageSize - 3, "<bbbbb/>\n");
            log.SetMostInMemory(limit);
            log.seekp(static_cast<std::streamoff>(document.size()));
            StopBetweenPages();
            log << std::string(kept, ' ');
            const std::streamoff place = log.tellp();
            for (std::size_t i = 0; i < dropped / 10; ++i) {
                log << "<a>text...";
            }
            log.DropFrom(place);
            EXPECT_EQ(log.tellp(), place);
            EXPECT_TRUE(ScrivelTest::IsDocument(File()));
            log << "<c/>" << endTag << std::flush;
            platform.pwrite.Reset();
            ASSERT_TRUE(File() == document + std::string(kept, ' ') + "<c/>" + endTag)
                << kept << " and " << dropped;
        }
    }
}

TEST_F(SmallPieces, AllIsLostWhereMemoryCantHoldWhatComesBeforeWhatIsDropped)
{
    const struct
    {
        std::size_t mostInMemory;
        std::size_t kept;
        bool hasMemory;
        bool canBeRead;
    } cases[] = {
        {limit, 3 * limit - 9000, true, true},
        {5 * pageSize, 18'000, false, true},
        {limit, 10'000, true, false},
    };
    for (const auto& [mostInMemory, kept, hasMemory, canBeRead] : cases) {
        const std::string old = Begin(100) + endTag;
        log.SetMostInMemory(mostInMemory);
        log.seekp(-7, std::ios_base::end);
        const std::streamoff place = log.tellp() + static_cast<std::streamoff>(kept);
        for (std::size_t i = 0; i < 6 * mostInMemory / 100; ++i) {
            log << std::string(100, ' ');
        }
        if (!hasMemory) {
            refuseMemory = [](std::size_t) { return true; };
        }
        if (!canBeRead) {
            platform.pread.Use([](int, void*, std::size_t, off_t) -> ssize_t { return 0; });
        }
        log.DropFrom(place);
        refuseMemory = nullptr;
        platform.pread.Reset();
        EXPECT_TRUE(log.bad());
        EXPECT_TRUE(log.IsOutOfMemory());
        EXPECT_EQ(File(), old);
        log.TakeBack(place);
        EXPECT_TRUE(log.good());
    }
}

TEST_F(SmallPieces, TextOverTheTailIsDroppedToo)
{
    const std::string old = Begin(100) + endTag;
    log.SetMostInMemory(limit);
    log.seekp(-7, std::ios_base::end);
    const std::string kept = std::string(1000, ' ') + "<c/><?y ?>";
    log << kept;
    const std::streamoff place = log.tellp();
    for (int i = 0; i < 3000; ++i) {
        log << "<a>text...";
    }
    log.DropFrom(place);
    EXPECT_EQ(File(), old);
    log << endTag << std::flush;
    EXPECT_EQ(File(), old.substr(0, old.size() - 7) + kept + endTag);
}

}  // namespace
