// Flushes that span pages: each of their steps leaves a document, wherever a write is cut.

#include "stream/Cover.h"
#include "stream/StreamTest.h"

#include <algorithm>
#include <cstdint>
#include <random>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <pthread.h>

namespace
{

using ScrivelTest::IsDocument;
using ScrivelTest::pageSize;
using ScrivelTest::platform;
using ScrivelTest::refuseMemory;
using ScrivelTest::XPath;
using SteppedFlush = ScrivelTest::GrowingDocument;

TEST_F(SteppedFlush, TakesAtMostFourChangesAndLeavesTheBytes)
{
    for (const std::size_t before : {6U, 100U, 4000U, 4070U, 4080U, 4085U, 4087U, 4088U, 4089U, 4090U,
                                     4091U, 4096U, 4100U, 8185U, 12000U}) {
        for (const std::size_t added :
             {4090U, 4096U, 4100U, 5000U, 8180U, 8192U, 8200U, 20000U, 100000U}) {
            for (const std::string& element : {Element(added), Indented(added)}) {
                const std::string document = Begin(before);
                ResetCounts();
                Grow(element);
                EXPECT_LE(platform.pwrite.Calls() + platform.ftruncate.Calls(), 4U);
                EXPECT_LE(platform.ftruncate.Calls(), 1U);
                EXPECT_LE(platform.fstat.Calls(), 1U);
                EXPECT_EQ(CallsOnTheFile(),
                          platform.pwrite.Calls() + platform.ftruncate.Calls() + platform.fstat.Calls());
                ASSERT_EQ(File(), document + element + endTag) << before << " and " << added;
            }
        }
    }
}

TEST_F(SteppedFlush, CutsNothingWhereTheEndOfTheTextCanBeClosedUp)
{
    for (const std::size_t pages : {2U, 3U, 5U}) {
        const std::string document = Begin(100);
        ResetCounts();
        const std::string added = Indented((pages - 1) * pageSize);
        const std::string file = document + added + endTag;
        std::vector<std::string> ends;
        const auto stub =
            platform.pwrite.Use([&](int descriptor, const void* bytes, std::size_t size, off_t position) {
                const ssize_t written = platform.pwrite.Real(descriptor, bytes, size, position);
                EXPECT_EQ(File().size(), file.size());
                EXPECT_TRUE(IsDocument(File()));
                ends.push_back(XPath(File(), "concat(count(/log/b), count(/log/c))").front() + ": " +
                               File().substr(file.size() - 20));
                return written;
            });
        Grow(added);
        EXPECT_EQ(platform.ftruncate.Calls(), 0U);
        platform.pwrite.Reset();
        const std::string closedUp = "</a></c></log><?x  ?>";
        const std::string last = closedUp.substr(closedUp.size() - 20);
        std::vector<std::string> expected = {"10: " + last, "10: " + last};
        if (pages > 2) {
            expected.push_back("11: " + last);
        }
        expected.push_back("11: " + file.substr(file.size() - 20));
        EXPECT_EQ(ends, expected);
        EXPECT_EQ(File(), file);
    }
}

TEST_F(SteppedFlush, LeavesADocumentBetweenItsWrites)
{
    unsigned int writes = 0;
    for (std::size_t before = pageSize - 100; before < pageSize + 20; ++before) {
        const std::size_t length = 4500 + before % 17;
        const std::string added = before % 2 == 0 ? Element(length) : Indented(length);
        const std::string document = Begin(before);
        const auto stub =
            platform.pwrite.Use([&](int file, const void* bytes, std::size_t size, off_t position) {
                const ssize_t written = platform.pwrite.Real(file, bytes, size, position);
                EXPECT_TRUE(IsDocument(File())) << "write " << writes << " after " << before << " bytes";
                ++writes;
                return written;
            });
        Grow(added);
        platform.pwrite.Reset();
        ASSERT_EQ(File(), document + added + endTag);
    }
    EXPECT_GE(writes, 3U * 120U);
}

TEST_F(SteppedFlush, LeavesADocumentWhenItsWritesAreCutBetweenPages)
{
    // With the end of the text at each of the last places on its page, and at the first ones.
    for (const std::size_t pages : {2U, 3U}) {
        for (std::size_t end = pages * pageSize - 40; end < pages * pageSize + 40; ++end) {
            const std::string document = Begin(100);
            const std::size_t length = end - document.size() - std::string(endTag).size();
            for (const std::string& added : {Element(length), Indented(length)}) {
                Begin(100);
                StopBetweenPages();
                Grow(added);
                platform.pwrite.Reset();
                EXPECT_GE(std::exchange(stops, 0), end > pages * pageSize || pages > 2 ? 2U : 0U);
                ASSERT_EQ(File(), document + added + endTag);
            }
        }
    }
}

TEST_F(SteppedFlush, LeavesADocumentWhenItsWritesAreCutWithinATailAcrossPages)
{
    // With the tail, or the opening of an instruction after it, at each place across the boundary; with
    // text that grows by less than an instruction takes, and with ends at the boundary of a later page.
    for (std::size_t before = pageSize - 14; before < pageSize; ++before) {
        for (const std::size_t added : {7U, 300U, 4000U, 4070U, 4090U, 9000U}) {
            for (const char* last : {"<b/>\n", "<!-- -->\n<b/>\n", "<b/>\n    "}) {
                for (const std::string& element : {Element(added), Indented(added)}) {
                    const std::string document = Begin(before, last);
                    StopBetweenPages();
                    Grow(element);
                    EXPECT_LE(platform.pwrite.Calls(), 4U);
                    platform.pwrite.Reset();
                    ASSERT_EQ(File(), document + element + endTag);
                }
            }
        }
    }
    EXPECT_GE(stops, 14U * 6U * 3U * 2U);
}

TEST_F(SteppedFlush, LeavesADocumentWhereverItsWritesAreCut)
{
    const char* const pieces[] = {
        "<a>text</a>\n",        "<!-- -->",    "- &amp; -", "    ",
        "<c d=\"-\"/>\n",       "<a>\n</a>\n", "x",         "<a>x</a>\n        ",
        "<c><d>x</d>\n    </c>"};
    constexpr unsigned int seed = 20;
    std::minstd_rand random(seed);
    const auto below = [&random](std::size_t limit) { return random() % limit; };
    for (int round = 0; round < 60; ++round) {
        std::string document = Begin(pageSize - 30 + below(30));
        for (int flush = 0; flush < 6; ++flush) {
            std::string added;
            for (const std::size_t length = below(3) * pageSize + below(pageSize);
                 added.size() < length;) {
                added += pieces[below(std::size(pieces))];
            }
            // Until the tail lies across two pages, or nearly so.
            const std::size_t place = pageSize - (document.size() + added.size() + 5) % pageSize;
            added += std::string(place - std::min<std::size_t>(place, below(20)), ' ');
            added += below(2) == 0 ? "<e/>\n" : "<e></e>\n     ";
            StopBetweenPages();
            Grow(added);
            platform.pwrite.Reset();
            document += added;
            ASSERT_EQ(File(), document + endTag) << "seed " << seed;
        }
    }
    EXPECT_GT(stops, 1000U);
}

TEST_F(SteppedFlush, OldDocumentIsWholeWhileItsTailIsHidden)
{
    Begin(pageSize - 3, "<b>kept</b>\n");
    std::vector<std::string> kept;
    const auto stub =
        platform.pwrite.Use([&](int file, const void* bytes, std::size_t size, off_t position) {
            const ssize_t written = platform.pwrite.Real(file, bytes, size, position);
            for (const std::string& text : XPath(File(), "concat(count(/log/a), /log/b)")) {
                kept.push_back(text);
            }
            return written;
        });
    Grow(Element(5000));
    EXPECT_EQ(kept, (std::vector<std::string>{"0kept", "0kept", "1kept"}));
}

TEST_F(SteppedFlush, LeavesADocumentWhenTheTextOrTheTailHoldsWhatEndsAnInstructionOrAComment)
{
    const std::string questionAtPageEnd = "<a>?" + std::string(5000, 'x') + "</a>";
    const struct
    {
        std::size_t onFirstPage;  // of the tail
        std::string before;
        std::string tail;
        std::string added;
    } cases[] = {
        {5, "<b/>\n", "<!--x--></log>\n", Element(5000)},
        {5, "<b/>\n<!-- x -->", endTag, Element(5000)},
        {3, "<b/>\n<!-- x -->", endTag, Element(5000)},
        {3, "<b>--</b>", endTag, Element(5000)},
        {3, "<b/>\n<!-- a <c> -->", endTag, Element(5000)},
        {5, "<b/>\n", "<?x?></log>\n", "<!-- x -->" + Element(5000)},
        {12, "<b/>\n", "<c>123456789?></c></log>\n", Element(5000)},
        {4, "<b/>\n", endTag, questionAtPageEnd},
        {5, "<bbb/>\n", endTag, "<a>x?" + std::string(5000, 'x') + "</a>"},  // "?" before "|>\n"
        {3, "<b/>\n<b>?", "</b></log>\n", "></b>" + Element(5000)},
        {5, "<b/>\n", std::string(250, ' ') + endTag, Element(5000)},
        {900, "<b/>\n", "<!-- " + std::string(900, '.') + " --></log>\n", Element(5000)},
        {20, "<b/>\n", endTag, Element(5000) + "<!-- ?> -->"},
        {4000, "<b/>\n", endTag, Element(5000) + "<?y ?>" + Element(9000)},
        {3, "<b a='123456'/>", endTag, Element(5000) + "<!-- ?> -->"},
        {3, "<b/>", endTag, "<!-- <?x -->" + Element(5000) + "<!-- ]]> -->"},
    };
    for (const auto& [onFirstPage, before, tail, added] : cases) {
        for (const bool again : {false, true}) {
            const std::string document = Begin(2 * pageSize - onFirstPage, before, tail);
            const auto start = static_cast<std::streamoff>(document.size());
            if (again) {  // a second flush of the tail alone
                log.seekp(start);
                log << tail << std::flush;
            }
            log.seekp(start);
            log << added << endTag;
            StopBetweenPages();
            log.flush();
            platform.pwrite.Reset();
            EXPECT_GE(std::exchange(stops, 0), 1U) << before << tail;
            EXPECT_EQ(File(), document + added + endTag);
        }
    }
}

TEST_F(SteppedFlush, LeavesADocumentWhateverTheRootIsNamed)
{
    for (const std::size_t length : {4U, 30U, 250U}) {
        std::string name = "a--b";
        name.resize(length, '-');
        const std::string tail = "</" + name + ">\n";
        for (std::size_t onFirstPage = 1; onFirstPage < tail.size() + 12; ++onFirstPage) {
            for (const char* last : {"<bbbbbb/>\n", "<b/>\n<!-- -->"}) {
                const std::string before(last);
                if (log.is_open()) {
                    log.close();
                }
                Open();
                std::string document = "<" + name + ">\n";
                document.append(2 * pageSize - onFirstPage - document.size() - before.size(), ' ');
                document += before;
                log << document << tail << std::flush;
                log.seekp(static_cast<std::streamoff>(document.size()));
                log << Element(5000) << tail;
                StopBetweenPages();
                log.flush();
                platform.pwrite.Reset();
                ASSERT_EQ(File(), document + Element(5000) + tail);
            }
        }
    }
    EXPECT_GT(stops, 300U);
}

TEST_F(SteppedFlush, TailThatCantBeHiddenIsReplacedInOneWrite)
{
    const struct
    {
        std::size_t onFirstPage;  // of the tail
        std::string before;
        std::string tail;
        std::string added;
    } cases[] = {
        {3, std::string(2000, ' '), endTag, Element(5000)},             // no markup nearby
        {5, "<b/>\n", std::string(1025, ' ') + endTag, Element(5000)},  // longer than the marks can hold
        {5, "<b/>\n", "<!--?>--></log>\n", Element(5000)},              // ends whatever could hide it
        {5, "<b/>\n", "<!--x--></log>\n", Element(5000) + "<!-- ]]> -->"},
    };
    for (const auto& [onFirstPage, before, tail, added] : cases) {
        const std::string document = Begin(2 * pageSize - onFirstPage, before, tail);
        RecordSizes();
        log.seekp(static_cast<std::streamoff>(document.size()));
        log << added << endTag << std::flush;
        platform.pwrite.Reset();
        ASSERT_EQ(sizes.size(), 3U) << before << tail;
        EXPECT_GE(sizes[2], tail.size() + 4) << before << tail;
        EXPECT_EQ(File(), document + added + endTag);
    }
}

TEST_F(SteppedFlush, TailIsReplacedInOneWriteWhenMemoryCantHoldTheMarkupBeforeIt)
{
    constexpr std::size_t firstCapacity = 16 * 1024;
    const std::string document = Begin(pageSize - 3);
    log.seekp(static_cast<std::streamoff>(document.size()));
    const std::string added = Element(firstCapacity - std::string(endTag).size());
    log << added << endTag;
    refuseMemory = [](std::size_t size) { return size > firstCapacity; };
    RecordSizes();
    log.flush();
    platform.pwrite.Reset();
    ASSERT_EQ(sizes.size(), 3U);
    EXPECT_EQ(sizes[2], std::string(endTag).size() + 4);
    EXPECT_EQ(File(), document + added + endTag);
}

TEST_F(SteppedFlush, TailIsReplacedInOneWriteWhenTheMarkupBeforeItIsNotInMemory)
{
    const std::string document = Begin(pageSize - 3);
    for (const bool refused : {false, true}) {
        log.seekp(static_cast<std::streamoff>(document.size()));
        log << endTag << std::flush;  // all that is in memory from now on
        log.seekp(static_cast<std::streamoff>(document.size()));
        log << Element(5000) << endTag;
        ResetCounts();
        if (refused) {
            refuseMemory = [](std::size_t) { return true; };
        }
        log.flush();
        refuseMemory = nullptr;
        EXPECT_EQ(platform.pread.Calls(), 0U);
        EXPECT_EQ(platform.pwrite.Calls(), refused ? 1U : 3U);
        EXPECT_EQ(File(), document + Element(5000) + endTag);
        log.seekp(static_cast<std::streamoff>(document.size()));
    }
}

TEST_F(SteppedFlush, TextThatNothingCanHideIsWrittenInOneGo)
{
    const std::string document = Begin(100);
    ResetCounts();
    const std::string added = Element(5000) + "<!-- ?> ]]> -->";
    Grow(added);
    EXPECT_EQ(platform.pwrite.Calls(), 1U);
    EXPECT_EQ(platform.ftruncate.Calls(), 0U);
    EXPECT_EQ(File(), document + added + endTag);
}

TEST_F(SteppedFlush, TextAfterTheEndOfTheFileIsWrittenInOneGo)
{
    Begin(100);
    ResetCounts();
    log << std::string(10000, ' ') << std::flush;
    EXPECT_EQ(platform.pwrite.Calls(), 1U);
    EXPECT_EQ(platform.ftruncate.Calls(), 0U);
}

TEST_F(SteppedFlush, TextThatDoesNotReachBeyondTheTailIsWrittenInOneGo)
{
    const struct
    {
        std::size_t place;
        std::size_t length;
    } texts[] = {{50, 8000}, {2 * pageSize - 20, 40}, {2 * pageSize - 20, 100}};
    for (const auto& [place, length] : texts) {
        const std::size_t end = 2 * pageSize + 80;
        std::string expected = Begin(end - std::string(endTag).size()) + endTag;
        log.seekp(static_cast<std::streamoff>(place));
        ResetCounts();
        log << std::string(length, ' ') << std::flush;
        EXPECT_EQ(platform.pwrite.Calls(), 1U);
        EXPECT_EQ(platform.ftruncate.Calls(), 0U);
        expected.replace(place, length, std::string(length, ' '));
        EXPECT_EQ(File(), expected);
    }
}

TEST_F(SteppedFlush, WithoutMemoryForItsMarksTheTextIsWrittenInOneGo)
{
    for (const std::size_t before : {std::size_t{100}, pageSize - 5}) {
        Scrivel2::LogStream().swap(log);  // one that has no memory for marks yet
        const std::string document = Begin(before);
        log.seekp(-7, std::ios_base::end);
        log << Element(5000) << endTag;
        refuseMemory = [](std::size_t) { return true; };
        ResetCounts();
        log.flush();
        refuseMemory = nullptr;
        EXPECT_EQ(platform.pwrite.Calls(), 1U);
        EXPECT_EQ(File(), document + Element(5000) + endTag);
    }
}

TEST_F(SteppedFlush, TextEndsAcrossTwoPlacesWhereTheFirstHasTheBeginning)
{
    using Scrivel2::ContainsAcross;
    EXPECT_TRUE(ContainsAcross("a?", ">b", "?>"));
    EXPECT_TRUE(ContainsAcross("?", ">", "?>"));
    EXPECT_FALSE(ContainsAcross("", ">", "?>"));
    EXPECT_FALSE(ContainsAcross("?>", "b", "?>"));
    EXPECT_TRUE(ContainsAcross("]", "]>", "]]>"));
    EXPECT_TRUE(ContainsAcross("]]", ">", "]]>"));
    EXPECT_FALSE(ContainsAcross("]", ">", "]]>"));
}

TEST_F(SteppedFlush, WritesNoPageOfTheFileFromTwoPagesOfMemory)
{
    unsigned int writes = 0;
    const auto stub =
        platform.pwrite.Use([&](int file, const void* bytes, std::size_t size, off_t position) {
            EXPECT_EQ((reinterpret_cast<std::uintptr_t>(bytes) - static_cast<std::uintptr_t>(position)) %
                          pageSize,
                      0U);
            return ++writes % 7 == 0 ? -1 : platform.pwrite.Real(file, bytes, size, position);
        });
    for (std::size_t before = pageSize - 30; before < pageSize + 10; ++before) {
        for (const char* added : {"", "<!-- ?> -->"}) {
            log.clear();
            Begin(before, "<bbbbbbbbbb/>\n");
            Grow(Element(100) + added);
            Grow(Element(4500) + added);
            Grow(Indented(4500) + added);
            Grow(Element(300'000) + added);
        }
    }
    EXPECT_GT(writes, 500U);
}

TEST_F(SteppedFlush, LeavesADocumentWhereverItsTextHasBeenPagedOut)
{
    for (std::size_t before = pageSize - 30; before < pageSize + 10; ++before) {
        for (const char* added : {"", "<!-- ?> -->"}) {
            std::string expected = Begin(before, "<bbbbbbbbbb/>\n");
            log.SetMostInMemory(100 * pageSize);
            StopAtPagesOfMemory();
            for (const std::size_t length : {100U, 4500U, 30'000U}) {
                Grow(Element(length) + added);
                Grow(Indented(length) + added);
                expected += Element(length) + added + Indented(length) + added;
            }
            log.SetMostInMemory(4 * pageSize);
            log.seekp(-7, std::ios_base::end);
            for (int i = 0; i < 20; ++i) {
                log << Element(2000);
                expected += Element(2000);
            }
            log << endTag << std::flush;
            watching.reset();
            ASSERT_TRUE(File() == expected + endTag);
        }
    }
    EXPECT_GT(stops, 2000U);
}

TEST_F(SteppedFlush, FileThatIsReadAnewIsWrittenFromItsPagesToo)
{
    const std::string document = Begin(100);
    Grow(Element(100));
    log.seekp(10);
    const auto stub =
        platform.pwrite.Use([&](int file, const void* bytes, std::size_t size, off_t position) {
            EXPECT_EQ((reinterpret_cast<std::uintptr_t>(bytes) - static_cast<std::uintptr_t>(position)) %
                          pageSize,
                      0U);
            return platform.pwrite.Real(file, bytes, size, position);
        });
    log << std::string(6000, ' ') << "</log>" << std::flush;
    EXPECT_EQ(File(), document.substr(0, 10) + std::string(6000, ' ') + "</log>");
}

TEST_F(SteppedFlush, ThreadIsNotCancelledInItsMidst)
{
    platform.pthread_self.Reset();
    const std::string document = Begin(pageSize - 3);
    bool flushed = false;
    std::thread([&] {
        pthread_cancel(pthread_self());
        Grow(Element(5000));
        flushed = true;
        pthread_testcancel();
        ADD_FAILURE() << "the thread may be cancelled after the flush";
    }).join();
    EXPECT_TRUE(flushed);
    EXPECT_EQ(File(), document + Element(5000) + endTag);
    Grow(Element(5000));
    EXPECT_EQ(File(), document + Element(5000) + Element(5000) + endTag);
}

}  // namespace
