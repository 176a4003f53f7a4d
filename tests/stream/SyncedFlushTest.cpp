// Flushes that outlive the machine: a document is on the disk whichever pages of what was not
// synchronised it has.

#include "support/FileChanges.h"

#include "stream/StreamTest.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <functional>
#include <random>
#include <string>
#include <vector>

namespace
{

using ScrivelTest::Disk;
using ScrivelTest::FileChange;
using ScrivelTest::FileChanges;
using ScrivelTest::IsDocument;
using ScrivelTest::pageSize;
using ScrivelTest::platform;
using Kind = ScrivelTest::FileChange::Kind;

class SyncedFlush : public ScrivelTest::GrowingDocument
{
protected:
    SyncedFlush() { log.SetDurability(Scrivel2::Durability::Machine); }

    static void RemoveZerosAtTheEnd(std::string& file) { file.resize(file.find_last_not_of('\0') + 1); }

    /// Lets `change` change the file, and looks at what a disk may have of it at each moment. One of its
    /// synchronisations fails, if there are so many. Returns what the file went through.
    std::vector<FileChange> Watch(const std::function<void()>& change, unsigned int toFail = 0)
    {
        Disk disk(File());
        FileChanges record;
        record.FailSynchronisations({toFail});
        change();
        const auto below = [this](std::size_t limit) { return random() % limit; };
        for (const FileChange& step : record.changes) {
            disk.Add(step);
            for (std::size_t i = 0; i < std::min<std::size_t>(2 * disk.Pending(), 8); ++i) {
                for (std::string state : {disk.AnyState(below), disk.AnyStateOfAnySize(below)}) {
                    RemoveZerosAtTheEnd(state);
                    EXPECT_TRUE(state.find('\0') == std::string::npos || toFail > 0) << "seed " << seed;
                    EXPECT_TRUE(IsDocument(state)) << "seed " << seed << ":\n" << state;
                }
                ++states;
            }
        }
        EXPECT_TRUE(disk.Pending() == 0 || toFail > 0) << "the disk was not waited for";
        return record.changes;
    }

    static constexpr unsigned int seed = 11;
    std::minstd_rand random{seed};
    unsigned int states = 0;
};

std::size_t Count(const std::vector<FileChange>& changes, Kind kind)
{
    return static_cast<std::size_t>(std::count_if(
        changes.begin(), changes.end(), [&](const FileChange& change) { return change.kind == kind; }));
}

TEST_F(SyncedFlush, WithinAPageGrowsByNewlinesBeforeItHasTheText)
{
    const std::string document = Begin(100);
    const auto changes = Watch([&] { Grow(Element(50)); });
    ASSERT_EQ(changes.size(), 4U);
    EXPECT_EQ(changes[0].kind, Kind::Write);
    EXPECT_EQ(changes[0].bytes, std::string(Element(50).size(), '\n'));
    EXPECT_EQ(changes[1].kind, Kind::Synchronised);
    EXPECT_EQ(changes[2].kind, Kind::Write);
    EXPECT_EQ(changes[2].bytes, Element(50) + endTag);
    EXPECT_EQ(changes[3].kind, Kind::Synchronised);
    EXPECT_EQ(File(), document + Element(50) + endTag);
}

TEST_F(SyncedFlush, WithinAPageIsOneWriteWhereTheFileDoesNotGrow)
{
    const std::string document = Begin(100, "<b/>\n", "<b/>\n" + std::string(endTag));
    const auto changes = Watch([&] {
        log.seekp(static_cast<std::streamoff>(document.size()));
        log << "<c/>\n" << endTag << std::flush;
    });
    ASSERT_EQ(changes.size(), 2U);
    EXPECT_EQ(changes[0].kind, Kind::Write);
    EXPECT_EQ(changes[1].kind, Kind::Synchronised);
    EXPECT_EQ(File(), document + "<c/>\n" + endTag);
}

TEST_F(SyncedFlush, WithinAPageIsOneWriteWhereItEndsBeforeTheTail)
{
    const std::string document = Begin(100, "<b/>\n", "<b/>\n<b/>\n" + std::string(endTag));
    const auto changes = Watch([&] {
        log.seekp(static_cast<std::streamoff>(document.size()));
        log << "<c/>\n" << std::flush;
    });
    EXPECT_EQ(changes.size(), 2U);
    EXPECT_EQ(File(), document + "<c/>\n<b/>\n" + endTag);
}

TEST_F(SyncedFlush, NothingIsSynchronisedForTheDeathOfTheProcess)
{
    log.SetDurability(Scrivel2::Durability::Process);
    Begin(100);
    FileChanges record;
    Grow(Element(50));
    Grow(Element(20'000));
    EXPECT_EQ(Count(record.changes, Kind::Synchronised), 0U);
}

TEST_F(SyncedFlush, AcrossPagesSynchronisesOnceAPageAndFourTimesMore)
{
    const std::string document = Begin(100);
    const auto changes = Watch([&] { Grow(Element(3 * pageSize)); });
    EXPECT_EQ(Count(changes, Kind::Synchronised), 4U + 4U);
    EXPECT_EQ(Count(changes, Kind::Cut), 1U);
    for (std::size_t i = 0; i < changes.size(); i += 2) {
        EXPECT_NE(changes[i].kind, Kind::Synchronised);
        EXPECT_EQ(changes[i + 1].kind, Kind::Synchronised);
    }
    EXPECT_EQ(File(), document + Element(3 * pageSize) + endTag);
}

TEST_F(SyncedFlush, LeavesADocumentWithTheTailAndTheEndOfTheTextAtEachPlaceOfAPage)
{
    for (std::size_t before = pageSize - 14; before < pageSize + 3; ++before) {
        for (const std::size_t end :
             {pageSize - 40, pageSize - 7, pageSize - 1, pageSize, pageSize + 1}) {
            const std::string document = Begin(before, "<bbbbbbbbbb/>\n");
            const std::string added = Element(2 * pageSize + end - before - 7);
            Watch([&] { Grow(added); });
            ASSERT_EQ(File(), document + added + endTag);
        }
    }
    EXPECT_GT(states, 17U * 5U * 15U);
}

TEST_F(SyncedFlush, LeavesADocumentWhateverTheTextAndTheTailHold)
{
    const struct
    {
        std::size_t onFirstPage;  // of the tail
        std::string before;
        std::string tail;
        std::string added;
    } cases[] = {
        {5, "<b/>\n", "<!--x--></log>\n", Element(5000)},
        {3, "<b/>\n<!-- x -->", endTag, Element(5000)},
        {5, "<b/>\n", "<?x?></log>\n", "<!-- x -->" + Element(5000)},
        {3, "<b/>\n<b>?", "</b></log>\n", "></b>" + Element(5000)},
        {3, "<b/>\n<b>]", "]</b></log>\n", "> </b>" + Element(5000)},
        {7, "<bbbbbbbb/>\n", "<c a='?'/></log>\n", "<dd a='>'/>" + Element(5000)},
        {900, "<b/>\n", "<!-- " + std::string(900, '.') + " --></log>\n", Element(5000)},
        {20, "<b/>\n", endTag, Element(5000) + "<!-- ?> -->"},
        {20, "<b/>\n", endTag, Element(5000) + "<!-- ]]> -->" + Element(60 * pageSize)},
        {4000, "<b/>\n", endTag, Element(5000) + "<?y ?>" + Element(9000)},
        {2000, "<b/>\n", endTag, "<!-- <?x -->" + Element(5000) + "<!-- ]]> -->"},
        {2000, "<b/>\n", "<b/>\n" + std::string(1100, ' ') + endTag, Element(5000)},
        {2000, "<b/>\n", "<b c='--'/></log>\n", Element(5000) + "<!-- ]]> -->"},
        {2000, "<b/>\n", "<!-- ?> --></log>\n", Element(5000)},
    };
    for (const auto& [onFirstPage, before, tail, added] : cases) {
        const std::string document = Begin(2 * pageSize - onFirstPage, before, tail);
        Watch([&, &newText = added, &oldTail = tail] {
            log.seekp(-static_cast<std::streamoff>(oldTail.size()), std::ios_base::end);
            log << newText << endTag << std::flush;
        });
        EXPECT_EQ(File(), document + added + endTag);
    }
}

TEST_F(SyncedFlush, LeavesADocumentOfFlushAfterFlush)
{
    const char* const pieces[] = {"<a>text</a>\n",  "<!-- -->",    "- &amp; -", "    ",
                                  "<c d=\"-\"/>\n", "<a>\n</a>\n", "x",         "<!-- ?> -->"};
    const auto below = [this](std::size_t limit) { return random() % limit; };
    for (int round = 0; round < 20; ++round) {
        std::string document = Begin(pageSize - 30 + below(30), "<bbbbbbbb/>\n");
        for (int flush = 0; flush < 6; ++flush) {
            std::string added;
            for (const std::size_t length = below(3) * pageSize + below(pageSize);
                 added.size() < length;) {
                added += pieces[below(std::size(pieces))];
            }
            const std::string last = "<eeeeeeee/>\n";  // with room for the opening of a section
            const std::size_t end = document.size() + added.size() + last.size();
            const std::size_t place = pageSize - end % pageSize;
            added += std::string(place - std::min<std::size_t>(place, below(20)), ' ') + last;
            Watch([&] { Grow(added); });
            document += added;
            ASSERT_EQ(File(), document + endTag) << "seed " << seed;
        }
    }
    EXPECT_GT(states, 2000U);
}

TEST_F(SyncedFlush, TextAcrossPagesThatIsShorterThanTheTailIsHiddenToo)
{
    const std::string tail = "<b/>\n<c/>\n<d/>\n" + std::string(endTag);
    const std::string document = Begin(2 * pageSize - 8, "<b/>\n", tail);
    const auto changes = Watch([&] {
        log.seekp(static_cast<std::streamoff>(document.size()));
        log << "<x/>\n<yyyy/>\n" << std::flush;
    });
    EXPECT_GT(Count(changes, Kind::Synchronised), 4U);
    EXPECT_EQ(File(), document + "<x/>\n<yyyy/>\n" + tail.substr(13));
    EXPECT_EQ(log.tellp(), static_cast<std::streamoff>(document.size() + 13));
}

TEST_F(SyncedFlush, LeavesADocumentInPieces)
{
    log.SetMostInMemory(4 * pageSize);
    for (const std::size_t before : {std::size_t{100}, pageSize - 3, pageSize - 9, pageSize}) {
        std::string expected = Begin(before, "<bbbbbbbbbb/>\n");
        Watch([&] {
            log.seekp(-7, std::ios_base::end);
            for (int i = 0; i < 30; ++i) {
                const std::string element = Element(1500 + random() % 1500);
                log << element;
                expected += element;
            }
            log << endTag << std::flush;
        });
        EXPECT_TRUE(log.good());
        EXPECT_TRUE(File() == expected + endTag);
    }
}

TEST_F(SyncedFlush, IsReadyForADeathOfTheProcessToo)
{
    for (std::size_t before = pageSize - 14; before < pageSize + 3; ++before) {
        const std::string document = Begin(before, "<bbbbbbbbbb/>\n");
        const FileChanges noWaiting;
        StopBetweenPages();
        Grow(Element(9000));
        watching.reset();
        ASSERT_EQ(File(), document + Element(9000) + endTag);
    }
    EXPECT_GT(stops, 17U);
}

// ---- What fails ---------------------------------------------------------------------------------

TEST_F(SyncedFlush, AnySynchronisationMayFail)
{
    for (const std::size_t before : {std::size_t{100}, pageSize - 3}) {
        for (const std::size_t added : {50U, 9000U}) {
            const unsigned int synchronisations = added < pageSize ? 2 : 7;
            for (unsigned int toFail = 1; toFail <= synchronisations; ++toFail) {
                const std::string document = Begin(before, "<bbbbbb/>\n");
                Watch([&] { Grow(Element(added)); }, toFail);
                EXPECT_TRUE(log.bad()) << toFail;
                const bool isCommitted = toFail == synchronisations && added > pageSize;
                EXPECT_EQ(File(), document + (isCommitted ? Element(added) : "") + endTag) << toFail;
            }
        }
    }
}

TEST_F(SyncedFlush, AnySynchronisationMayFailWhereTheTrailerIsOnAPageOfItsOwn)
{
    constexpr std::size_t before = pageSize - 3;
    const std::string added = Element(2 * pageSize - 4 - 7);  // the text ends four bytes before a page
    for (unsigned int toFail = 1;; ++toFail) {
        ASSERT_LT(toFail, 10U);
        Begin(before, "<bbbbbbbbbb/>\n");
        const auto changes = Watch([&] { Grow(added); }, toFail);
        if (log.good()) {
            EXPECT_EQ(Count(changes, Kind::Cut), 2U);
            break;
        }
        EXPECT_TRUE(IsDocument(File())) << toFail;
    }
}

TEST_F(SyncedFlush, AnySynchronisationOfPiecesMayFail)
{
    log.SetMostInMemory(4 * pageSize);
    for (const std::size_t before : {pageSize - 30, pageSize - 3}) {
        for (unsigned int toFail = 1;; ++toFail) {
            ASSERT_LT(toFail, 200U);
            Begin(before, "<bbbbbbbbbb/>\n");
            Watch(
                [&] {
                    log.seekp(-7, std::ios_base::end);
                    for (int i = 0; i < 30; ++i) {
                        log << Element(1000);
                    }
                    log << endTag << std::flush;
                },
                toFail);
            if (log.good()) {
                EXPECT_GT(toFail, 10U);
                break;
            }
            EXPECT_TRUE(IsDocument(File())) << toFail;
        }
    }
}

TEST_F(SyncedFlush, AnyTwoSynchronisationsMayFail)
{
    for (unsigned int first = 1; first <= 7; ++first) {
        for (unsigned int second = first + 1; second <= first + 6; ++second) {
            Begin(pageSize - 3, "<bbbbbbbbbb/>\n");
            FileChanges record;
            record.FailSynchronisations({first, second});
            Grow(Element(9000));
            EXPECT_TRUE(log.bad());
            EXPECT_TRUE(IsDocument(File())) << first << " and " << second << ":\n" << File();
        }
    }
}

TEST_F(SyncedFlush, FileIsAsLongAsItWasWhereTheTailCantBeReadBack)
{
    for (const std::size_t added : {std::size_t{50}, 2 * pageSize}) {
        const std::string document = Begin(100);
        log << "<!-- -->" << std::flush;  // all that is in memory from now on
        log.seekp(static_cast<std::streamoff>(document.size()));
        log << Element(added) << endTag;
        platform.pread.Use([](int, void*, std::size_t, off_t) -> ssize_t {
            errno = EIO;
            return -1;
        });
        FileChanges record;
        record.synchronise = [] {
            errno = EIO;
            return -1;
        };
        log.flush();
        EXPECT_TRUE(log.bad());
        platform.pread.Reset();
        EXPECT_EQ(File().size(), document.size() + 15);  // as long as it was: no more is known of it
    }
}

TEST_F(SyncedFlush, FailedSynchronisationIsNotRepeated)
{
    Begin(100);
    ResetCounts();
    platform.fdatasync.Reset();
    platform.fdatasync.Use([](int) {
        errno = EIO;
        return -1;
    });
    Grow(Element(50));
    EXPECT_TRUE(log.bad());
    EXPECT_EQ(platform.fdatasync.Calls(), platform.pwrite.Calls() + platform.ftruncate.Calls());
    platform.fdatasync.Reset();
}

TEST_F(SyncedFlush, InterruptedSynchronisationIsRepeated)
{
    const std::string document = Begin(100);
    platform.fdatasync.Reset();
    platform.fdatasync.Use([](int) {
        errno = EINTR;
        return platform.fdatasync.Calls() < 3 ? -1 : 0;
    });
    Grow(Element(50));
    EXPECT_TRUE(log.good());
    EXPECT_EQ(platform.fdatasync.Calls(), 2U + 2U);
    platform.fdatasync.Reset();
    EXPECT_EQ(File(), document + Element(50) + endTag);
}

}  // namespace
