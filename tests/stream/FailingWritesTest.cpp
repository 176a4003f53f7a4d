// Writes, cuts and memory that fail: the file stays what the last good flush left.

#include "stream/StreamTest.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <string>
#include <vector>

namespace
{

using ScrivelTest::forEver;
using ScrivelTest::IsDocument;
using ScrivelTest::pageSize;
using ScrivelTest::platform;
using ScrivelTest::XPath;

class FailingWrites : public ScrivelTest::GrowingDocument
{
protected:
    /// A disk that is full after `limit` bytes of the file.
    void FullAfter(off_t limit)
    {
        failing.emplace(platform.pwrite,
                        [=](int file, const void* bytes, std::size_t size, off_t position) -> ssize_t {
                            if (position >= limit) {
                                errno = ENOSPC;
                                return -1;
                            }
                            const auto room = static_cast<std::size_t>(limit - position);
                            return platform.pwrite.Real(file, bytes, std::min(size, room), position);
                        });
    }

    static bool FileSizeSignalIsHeld()
    {
        sigset_t signals;
        pthread_sigmask(SIG_BLOCK, nullptr, &signals);
        return sigismember(&signals, SIGXFSZ) == 1;
    }
};

TEST_F(FailingWrites, FileStaysAsTheLastFlushLeftItAndTheStreamStaysBadUntilItIsOpenedAnew)
{
    for (const std::size_t added : {50U, 5000U}) {
        for (const unsigned int last : {1U, forEver}) {
            const std::string before = Begin(100) + endTag;
            FailWrites(1, last);
            Grow(Element(added));
            EXPECT_TRUE(log.bad());
            EXPECT_EQ(log.tellp(), -1);
            EXPECT_EQ(File(), before);

            platform.pwrite.Reset();  // a disk that has room again
            log << "lost" << std::flush;
            log.Append("lost");
            log.flush();
            EXPECT_TRUE(log.bad());
            EXPECT_EQ(File(), before);
            log.close();
            EXPECT_EQ(File(), before);

            log.open("log");
            EXPECT_TRUE(log.good());
            log << "new" << std::flush;
            EXPECT_EQ(File(), "new");
        }
    }
}

TEST_F(FailingWrites, AnyWriteOfASteppedFlushMayFailOnce)
{
    for (const std::size_t size : {std::size_t{100}, pageSize - 3}) {
        for (const std::string& added : {Element(5000), Indented(5000), Indented(9000)}) {
            for (unsigned int number = 1; number <= 4; ++number) {
                const std::string document = Begin(size);
                FailWrites(number, number);
                Grow(added);
                const bool wasMade = platform.pwrite.Calls() >= number;
                platform.pwrite.Reset();
                EXPECT_TRUE(wasMade || number == 4);
                EXPECT_EQ(log.bad(), wasMade);
                EXPECT_EQ(File(), wasMade ? document + endTag : document + added + endTag)
                    << "write " << number;
                log.clear();
                if (wasMade) {
                    EXPECT_EQ(log.tellp(), static_cast<std::streamoff>(document.size()));
                }
            }
        }
    }
}

TEST_F(FailingWrites, AnyTwoWritesOfASteppedFlushMayFail)
{
    for (const std::size_t size : {std::size_t{100}, pageSize - 3}) {
        for (unsigned int first = 1; first <= 3; ++first) {
            for (unsigned int second = first + 1; second <= 9; ++second) {
                for (const std::string& added : {Element(9000), Indented(5000), Indented(9000)}) {
                    Begin(size, "<bbbbbbbbbb/>\n");
                    FailWritesThat(
                        [=](unsigned int number) { return number == first || number == second; });
                    Grow(added);
                    platform.pwrite.Reset();
                    EXPECT_TRUE(log.bad());
                    EXPECT_TRUE(IsDocument(File())) << "writes " << first << " and " << second;
                }
            }
        }
    }
}

TEST_F(FailingWrites, CommitThatReachesOneOfItsPagesIsTakenBack)
{
    for (const bool disk : {false, true}) {
        const std::string before = Begin(100) + endTag;
        FailWritesThat([](unsigned int) { return false; });
        std::vector<std::string> documents;
        const auto stub = platform.pwrite.Use(
            [&](int file, const void* bytes, std::size_t size, off_t position) -> ssize_t {
                constexpr auto toPageEnd = pageSize - 107;
                const bool isCommit = platform.pwrite.Calls() == 3;
                if (platform.pwrite.Calls() == 4 || (disk && platform.pwrite.Calls() > 3)) {
                    errno = EIO;
                    return -1;
                }
                const ssize_t written =
                    platform.pwrite.Real(file, bytes, isCommit ? toPageEnd : size, position);
                documents.push_back(XPath(File(), "concat(count(/log/b), count(/log/c))").front());
                return written;
            });
        Grow(Indented(5000));
        platform.pwrite.Reset();
        EXPECT_TRUE(log.bad());
        log.clear();
        std::vector<std::string> expected = {"10", "10", "11"};
        if (disk) {
            EXPECT_TRUE(IsDocument(File()));  // the new one
        } else {
            expected.push_back("10");
            EXPECT_EQ(File(), before);
        }
        EXPECT_EQ(documents, expected);
    }
}

TEST_F(FailingWrites, TailAcrossPagesIsPutBackInStepsThatEachLeaveADocument)
{
    for (const char* added : {"", "<!-- ?> -->"}) {
        for (std::size_t before = pageSize - 20; before < pageSize; ++before) {
            for (unsigned int number = 2; number <= 8; ++number) {
                const std::string document = Begin(before, "<bbbbbbbbbb/>\n") + endTag;
                ResetCounts();
                const auto stub = platform.pwrite.Use(
                    [&](int file, const void* bytes, std::size_t size, off_t position) -> ssize_t {
                        const auto first = static_cast<std::size_t>(position);
                        for (std::size_t page = first / pageSize + 1; page * pageSize < first + size;
                             ++page) {
                            platform.pwrite.Real(file, bytes, page * pageSize - first, position);
                            EXPECT_TRUE(IsDocument(File())) << before << ", write " << number;
                            ++stops;
                        }
                        if (platform.pwrite.Calls() == number) {
                            errno = ENOSPC;
                            return -1;
                        }
                        const ssize_t written = platform.pwrite.Real(file, bytes, size, position);
                        EXPECT_TRUE(IsDocument(File())) << before << ", write " << number;
                        return written;
                    });
                Grow(Element(9000) + added);
                ASSERT_EQ(File() == document, log.bad()) << before << ", write " << number;
                log.clear();
            }
        }
    }
    EXPECT_GT(stops, 1000U);
}

TEST_F(FailingWrites, DocumentStaysWhenTheTailCantEvenBePutBack)
{
    const auto grow = [this](std::size_t size, unsigned int firstWriteToFail) {
        for (const std::string& added : {Element(5000), Indented(5000)}) {
            Begin(size);
            FailWrites(firstWriteToFail, forEver);
            Grow(added);
            platform.pwrite.Reset();
            EXPECT_TRUE(log.bad());
            EXPECT_TRUE(IsDocument(File())) << "write " << firstWriteToFail << ":\n" << File();
            EXPECT_EQ(XPath(File(), "concat(count(/log/b), count(//a))"), std::vector<std::string>{"10"});
        }
    };
    for (const std::size_t size : {std::size_t{100}, pageSize - 3}) {
        for (unsigned int number = 1; number <= 3; ++number) {
            grow(size, number);
            platform.ftruncate.Use([](int, off_t) {
                errno = EIO;
                return -1;
            });
            grow(size, number);
            platform.ftruncate.Reset();
        }
    }
}

TEST_F(FailingWrites, WriteThatWritesNothingIsAFailure)
{
    const std::string before = Begin(100) + endTag;
    platform.pwrite.Use([](int, const void*, std::size_t, off_t) -> ssize_t { return 0; });
    Grow(Element(50));
    EXPECT_TRUE(log.bad());
    EXPECT_EQ(File(), before);
}

TEST_F(FailingWrites, DiskThatIsFullAtAnyByteKeepsTheLastDocument)
{
    unsigned int kept = 0;
    for (const std::size_t size : {60U, 4090U, 4093U, 4000U}) {
        for (const std::size_t added : {100U, 4300U, 9000U}) {
            const std::string before = Begin(size) + endTag;
            for (const std::string& element : {Element(added), Indented(added)}) {
                const std::string after = before.substr(0, before.size() - 7) + element + endTag;
                const off_t step = added < 1000 ? 1 : 61;
                for (auto limit = static_cast<off_t>(before.size());
                     limit < static_cast<off_t>(after.size()) + 20; limit += step) {
                    Begin(size);
                    FullAfter(limit);
                    Grow(element);
                    platform.pwrite.Reset();
                    ASSERT_EQ(File(), log.good() ? after : before)
                        << size << ", " << added << ", " << limit;
                    kept += log.good() ? 0U : 1U;
                }
            }
        }
    }
    EXPECT_GT(kept, 600U);
}

TEST_F(FailingWrites, ShortWritesAreContinued)
{
    for (const std::size_t added : {50U, 5000U}) {
        for (const std::string& element : {Element(added), Indented(added)}) {
            const std::string document = Begin(100);
            platform.pwrite.Use([](int file, const void* bytes, std::size_t size, off_t position) {
                return platform.pwrite.Real(file, bytes, (size + 1) / 2, position);
            });
            Grow(element);
            platform.pwrite.Reset();
            EXPECT_TRUE(log.good());
            EXPECT_EQ(File(), document + element + endTag);
        }
    }
}

TEST_F(FailingWrites, WriteThatIsInterruptedEveryTimeIsAFailure)
{
    const std::string before = Begin(100) + endTag;
    platform.pwrite.Use([](int, const void*, std::size_t, off_t) -> ssize_t {
        errno = EINTR;
        return -1;
    });
    Grow(Element(50));
    platform.pwrite.Reset();
    EXPECT_TRUE(log.bad());
    EXPECT_EQ(File(), before);
}

TEST_F(FailingWrites, TextAfterTheEndOfTheFileIsCutOffAgain)
{
    const std::string before = Begin(100) + endTag;
    platform.pwrite.Use([](int file, const void* bytes, std::size_t size, off_t position) -> ssize_t {
        if (size < 50) {
            errno = ENOSPC;
            return -1;
        }
        return platform.pwrite.Real(file, bytes, size - 10, position);
    });
    log << std::string(100, ' ') << std::flush;
    platform.pwrite.Reset();
    EXPECT_TRUE(log.bad());
    EXPECT_EQ(File(), before);
}

TEST_F(FailingWrites, InterruptedWritesAndCutsAreRepeated)
{
    const std::string document = Begin(100);
    platform.pwrite.Use([](int file, const void* bytes, std::size_t size, off_t position) -> ssize_t {
        if (platform.pwrite.Calls() % 2 == 1) {
            errno = EINTR;
            return -1;
        }
        return platform.pwrite.Real(file, bytes, size, position);
    });
    platform.ftruncate.Use([](int file, off_t size) {
        if (platform.ftruncate.Calls() % 2 == 1) {
            errno = EINTR;
            return -1;
        }
        return platform.ftruncate.Real(file, size);
    });
    Grow(Element(5000));
    EXPECT_TRUE(log.good());
    EXPECT_EQ(File(), document + Element(5000) + endTag);
}

TEST_F(FailingWrites, TrailerThatCantBeCutStaysAfterTheNewDocument)
{
    const struct
    {
        std::size_t before;
        const char* trailer;
    } cases[] = {{100, "<?x ?>"}, {pageSize - 5, "<!-- ?></log>\n<?x --><?x ?>"}};
    for (const auto& [before, trailer] : cases) {
        const std::string document = Begin(before);
        platform.ftruncate.Use([](int, off_t) {
            errno = EIO;
            return -1;
        });
        Grow(Element(5000));
        platform.ftruncate.Reset();
        EXPECT_TRUE(log.bad());
        EXPECT_EQ(File(), document + Element(5000) + endTag + trailer);
        EXPECT_TRUE(IsDocument(File()));
        log.clear();
    }
}

TEST_F(FailingWrites, SignalOfTheFileSizeLimitIsHeldUntilTheTailIsBack)
{
    Begin(100);
    std::vector<bool> held;
    const auto stub = platform.pwrite.Use(
        [&](int file, const void* bytes, std::size_t size, off_t position) -> ssize_t {
            held.push_back(FileSizeSignalIsHeld());
            if (held.size() == 2) {
                errno = EFBIG;
                return -1;
            }
            return platform.pwrite.Real(file, bytes, held.size() == 1 ? size / 2 : size, position);
        });
    Grow(Element(50));
    EXPECT_EQ(held, (std::vector<bool>{false, true, true}));
    EXPECT_FALSE(FileSizeSignalIsHeld());
}

}  // namespace
