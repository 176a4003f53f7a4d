#include "scrivel/LogStream.h"

#include "support/GeneratorTest.h"
#include "support/Memory.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iomanip>
#include <limits>
#include <locale>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace
{

namespace fs = std::filesystem;
using Scrivel2::LogStream;
using ScrivelTest::IsDocument;
using ScrivelTest::platform;
using ScrivelTest::refuseMemory;
using ScrivelTest::XPath;

constexpr std::size_t pageSize = 4096;

class Stream : public ScrivelTest::ScratchTest
{
protected:
    void Open()
    {
        log.open("log");
        ASSERT_TRUE(log.good());
    }

    static std::string File() { return FileText("log"); }

    /// The descriptor of the open log.
    static int Descriptor()
    {
        const fs::path file = fs::canonical("log");
        for (const auto& entry : fs::directory_iterator("/proc/self/fd")) {
            std::error_code gone;
            if (fs::read_symlink(entry.path(), gone) == file) {
                return std::stoi(entry.path().filename());
            }
        }
        ADD_FAILURE() << "the log is not open";
        return -1;
    }

    static void ResetCounts()
    {
        platform.write.Reset();
        platform.pwrite.Reset();
        platform.pread.Reset();
        platform.lseek.Reset();
        platform.ftruncate.Reset();
        platform.fstat.Reset();
    }

    static unsigned int CallsOnTheFile()
    {
        return platform.write.Calls() + platform.pwrite.Calls() + platform.pread.Calls() +
               platform.lseek.Calls() + platform.ftruncate.Calls() + platform.fstat.Calls();
    }

    /// Lets all writes from number `first` to number `last` fail with ENOSPC.
    static void FailWrites(unsigned int first, unsigned int last)
    {
        platform.pwrite.Reset();
        platform.pwrite.Use(
            [=](int file, const void* bytes, std::size_t size, off_t position) -> ssize_t {
                if (platform.pwrite.Calls() >= first && platform.pwrite.Calls() <= last) {
                    errno = ENOSPC;
                    return -1;
                }
                return platform.pwrite.Real(file, bytes, size, position);
            });
    }

    LogStream log;
};

// ---- Opening and closing ------------------------------------------------------------------------

TEST_F(Stream, NewStreamIsClosedAndGood)
{
    EXPECT_FALSE(log.is_open());
    EXPECT_TRUE(log.good());
}

TEST_F(Stream, OpeningCreatesAnEmptyFile)
{
    Open();
    EXPECT_TRUE(log.is_open());
    EXPECT_EQ(File(), "");
}

TEST_F(Stream, OpeningEmptiesAFile)
{
    std::ofstream("log") << "before";
    Open();
    EXPECT_EQ(File(), "");
}

TEST_F(Stream, OpeningInAMissingFolderFailsWithTheReasonInErrno)
{
    errno = 0;
    log.open("missing/log");
    EXPECT_EQ(errno, ENOENT);
    EXPECT_EQ(log.rdstate(), std::ios_base::failbit);
    EXPECT_FALSE(log.is_open());
}

TEST_F(Stream, OpeningAFolderFailsWithTheReasonInErrno)
{
    fs::create_directory("log");
    errno = 0;
    log.open("log");
    EXPECT_EQ(errno, EISDIR);
    EXPECT_TRUE(log.fail());
}

TEST_F(Stream, OpeningWhileOpenFailsAndLeavesErrnoAndTheFile)
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

TEST_F(Stream, OpeningClearsTheErrorState)
{
    log.setstate(std::ios_base::badbit | std::ios_base::failbit);
    Open();
    EXPECT_TRUE(log.good());
}

TEST_F(Stream, FifoWithoutAReaderFailsAtOnce)
{
    ASSERT_EQ(mkfifo("log", 0600), 0);
    errno = 0;
    log.open("log");
    EXPECT_EQ(errno, ESPIPE);
    EXPECT_EQ(log.rdstate(), std::ios_base::failbit);
    EXPECT_FALSE(log.is_open());
}

TEST_F(Stream, FifoWithAReaderFailsToo)
{
    ASSERT_EQ(mkfifo("log", 0600), 0);
    const int reader = open("log", O_RDONLY | O_NONBLOCK);
    ASSERT_GE(reader, 0);
    log.open("log");
    EXPECT_EQ(log.rdstate(), std::ios_base::failbit);
    EXPECT_FALSE(log.is_open());
    close(reader);
}

TEST_F(Stream, FileThatCantBeLookedAtFails)
{
    platform.fstat.Use([](int, struct stat*) {
        errno = EIO;
        return -1;
    });
    log.open("log");
    EXPECT_EQ(errno, EIO);
    EXPECT_EQ(log.rdstate(), std::ios_base::failbit);
    EXPECT_FALSE(log.is_open());
    EXPECT_EQ(platform.close.Calls(), 1U);
}

TEST_F(Stream, FileThatMayNotBeReadIsOpenedForWriting)
{
    platform.open.Use([](const char* name, int flags, mode_t mode) {
        if ((flags & O_ACCMODE) == O_RDWR) {
            errno = EACCES;
            return -1;
        }
        return platform.open.Real(name, flags, mode);
    });
    log.open("log");
    log << "text" << std::flush;
    EXPECT_TRUE(log.good());
    EXPECT_EQ(fs::file_size("log"), 4U);
}

TEST_F(Stream, TextOfMoreThanAMebibyteIsAppendedWhole)
{
    log.open("log");
    const std::string text = std::string(3 * 1024 * 1024, 'x') + "end";
    log.Append(text);
    log.Append("!");
    log.flush();
    EXPECT_EQ(File(), text + "!");
}

TEST_F(Stream, OpeningWithoutMemoryFails)
{
    for (int left = 0; left < 2; ++left) {
        int asked = 0;
        refuseMemory = [&](std::size_t) { return asked++ == left; };
        log.open("log");
        EXPECT_EQ(log.rdstate(), std::ios_base::failbit);
        EXPECT_FALSE(log.is_open());
        EXPECT_EQ(asked, left + 1);
        refuseMemory = nullptr;
    }
    EXPECT_FALSE(fs::exists("log"));
    Open();
}

TEST_F(Stream, DescriptorIsClosedOnExec)
{
    Open();
    EXPECT_EQ(fcntl(Descriptor(), F_GETFD) & FD_CLOEXEC, FD_CLOEXEC);
}

TEST_F(Stream, PermissionsFollowTheUmask)
{
    const mode_t before = umask(027);
    Open();
    umask(before);
    struct stat status;
    ASSERT_EQ(stat("log", &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0640U);
}

TEST_F(Stream, ClosingFlushes)
{
    Open();
    log << "text";
    log.close();
    EXPECT_TRUE(log.good());
    EXPECT_FALSE(log.is_open());
    EXPECT_EQ(File(), "text");
}

TEST_F(Stream, ClosingAClosedStreamFails)
{
    log.close();
    EXPECT_EQ(log.rdstate(), std::ios_base::failbit);
}

TEST_F(Stream, ClosingFailsWhenItsFlushFailsAndClosesAllTheSame)
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

TEST_F(Stream, ClosingFailsWhenTheSystemSaysSo)
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

TEST_F(Stream, StreamIsAsNewWhenItIsOpenedAgain)
{
    Open();
    log << std::string(3 * pageSize, 'x');
    log.close();
    Open();
    EXPECT_EQ(log.tellp(), 0);
    log << "new" << std::flush;
    EXPECT_EQ(File(), "new");
}

TEST_F(Stream, DestroyingWritesNothingAndClosesTheFile)
{
    {
        LogStream other;
        other.open("log");
        other << "flushed" << std::flush << " lost";
        ResetCounts();
    }
    EXPECT_EQ(CallsOnTheFile(), 0U);
    EXPECT_EQ(platform.close.Calls(), 1U);
    EXPECT_EQ(File(), "flushed");
}

// ---- Output without a file ----------------------------------------------------------------------

TEST_F(Stream, OutputToAClosedStreamFails)
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

TEST_F(Stream, OutputBehindTheCloseOfAFileFails)
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

TEST_F(Stream, EmptyOutputToAClosedStreamIsNoFailure)
{
    log << "" << std::string();
    log.Append("");
    log.flush();
    EXPECT_TRUE(log.good());
}

TEST_F(Stream, PutPositionOfAClosedStreamIsMinusOneAndSeekingThereFails)
{
    EXPECT_EQ(log.tellp(), -1);
    EXPECT_TRUE(log.good());
    log.seekp(0);
    EXPECT_EQ(log.rdstate(), std::ios_base::failbit);
    log.clear();
    log.seekp(0, std::ios_base::end);
    EXPECT_EQ(log.rdstate(), std::ios_base::failbit);
}

TEST_F(Stream, PutPositionOfAFailedStreamIsMinusOneAndItsOutputVanishes)
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

// ---- Output -------------------------------------------------------------------------------------

TEST_F(Stream, FormattedOutputAndAppendedTextKeepTheirOrder)
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

TEST_F(Stream, SingleCharactersAreKeptHoweverManyTheyAre)
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

TEST_F(Stream, EndOfFileIsNoCharacterToWrite)
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

TEST_F(Stream, NumbersHaveTheClassicLocaleWhateverTheGlobalOneIs)
{
    const std::locale before =
        std::locale::global(std::locale(std::locale::classic(), new std::numpunct<char>));
    const LogStream other;
    std::locale::global(before);
    EXPECT_EQ(other.getloc(), std::locale::classic());
}

TEST_F(Stream, OutputThatMemoryCantHoldFailsAndLeavesTheFile)
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

// ---- Between flushes ----------------------------------------------------------------------------

TEST_F(Stream, NothingReachesTheFileBetweenFlushes)
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

TEST_F(Stream, FlushWithoutTextWritesNothing)
{
    Open();
    log << "text" << std::flush;
    ResetCounts();
    log.flush();
    log.seekp(0);
    log.flush();
    EXPECT_EQ(CallsOnTheFile(), 0U);
}

TEST_F(Stream, FlushWithinAPageIsOneWrite)
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

TEST_F(Stream, FlushThatEndsWithItsPageIsOneWrite)
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

TEST_F(Stream, HeldFlushDoesNothingAndTheNextOneWritesAll)
{
    Open();
    {
        const LogStream::FlushHold hold(log);
        log << "a" << std::flush;
        {
            const LogStream::FlushHold inner(log);
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

TEST_F(Stream, HeldFlushIsNoHoldForClosing)
{
    Open();
    const LogStream::FlushHold hold(log);
    log << "text";
    log.close();
    EXPECT_EQ(File(), "text");
}

// ---- Seeking ------------------------------------------------------------------------------------

TEST_F(Stream, SeekingPastTheEndLeavesAHole)
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

TEST_F(Stream, SeekingAloneMakesNoHole)
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

TEST_F(Stream, SeekingFromTheEndCountsFromTheEndOfTheText)
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

TEST_F(Stream, SeekingFromTheBeginningIsSeekingToAPlace)
{
    Open();
    log << "abc";
    log.seekp(1, std::ios_base::beg);
    EXPECT_EQ(log.tellp(), 1);
    log << "X" << std::flush;
    EXPECT_EQ(File(), "aXc");
}

TEST_F(Stream, SeekForwardThatMemoryCantFollowWritesThePendingTextFirst)
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

TEST_F(Stream, LongTailThatMemoryCantHoldIsReadFromTheFileLater)
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

TEST_F(Stream, SeekingBeforeTheBeginningFailsAndKeepsThePlace)
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

TEST_F(Stream, TextBehindThePutPositionStays)
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

TEST_F(Stream, SeekingBackBehindWhatMemoryHoldsReadsTheFile)
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

/// Random writes, seeks and flushes on a LogStream and on a std::ofstream.
class StreamBesideOfstream : public Stream
{
protected:
    unsigned int Below(unsigned int limit)
    {
        return std::uniform_int_distribution<unsigned int>(0, limit - 1)(random);
    }

    std::string Text()
    {
        static constexpr unsigned int lengths[] = {1, 8, 60, 300, 4096, 5000, 20000};
        std::string text(Below(lengths[Below(std::size(lengths))]) + 1, '\0');
        for (char& c : text) {
            c = static_cast<char>(Below(256));
        }
        return text;
    }

    std::mt19937 random;
};

TEST_F(StreamBesideOfstream, LeaveTheSameBytesAfterEveryFlush)
{
    const char* const firstSeed = std::getenv("SCRIVEL_WALK_SEED");
    const unsigned long first = firstSeed == nullptr ? 1 : std::strtoul(firstSeed, nullptr, 10);
    for (unsigned long seed = first; seed < first + 150; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        random.seed(static_cast<std::mt19937::result_type>(seed));
        std::ofstream reference;
        const unsigned int steps = 1 + Below(120);
        for (unsigned int i = 0; i < steps; ++i) {
            if (!log.is_open()) {
                log.open("log");
                reference.open("reference", std::ios_base::binary);
            }
            const auto both = [&](const auto& step) {
                step(static_cast<std::ostream&>(log));
                step(static_cast<std::ostream&>(reference));
            };
            const auto end = static_cast<unsigned int>(std::max<std::streamoff>(
                {fs::exists("reference") ? static_cast<std::streamoff>(fs::file_size("reference")) : 0,
                 static_cast<std::streamoff>(reference.tellp()), 1}));
            const unsigned int operation = Below(12);
            SCOPED_TRACE("step " + std::to_string(i) + ", operation " + std::to_string(operation));
            switch (operation) {
            case 0:
            case 1:
            case 2: {
                const std::string text = Text();
                both([&](std::ostream& stream) { stream << text; });
                break;
            }
            case 3: {
                const std::string text = Text();
                log.Append(text);
                reference << text;
                break;
            }
            case 4: {
                const unsigned int number = Below(100000);
                both([&](std::ostream& stream) { stream << number << ' ' << std::setw(9) << number; });
                break;
            }
            case 5:
                both([](std::ostream& stream) { stream.put('c'); });
                break;
            case 6: {
                const std::streamoff place = Below(end + (Below(4) == 0 ? 9000 : 1));
                both([&](std::ostream& stream) { stream.seekp(place); });
                break;
            }
            case 7: {
                const auto distance = static_cast<std::streamoff>(Below(600)) - 300;
                both([&](std::ostream& stream) { stream.seekp(distance, std::ios_base::cur); });
                break;
            }
            case 8: {
                const auto distance = static_cast<std::streamoff>(Below(600)) - 500;
                both([&](std::ostream& stream) { stream.seekp(distance, std::ios_base::end); });
                break;
            }
            case 9:
                if (Below(10) == 0) {
                    log.close();
                    reference.close();
                    ASSERT_EQ(File(), FileText("reference"));
                }
                break;
            default:
                both([](std::ostream& stream) { stream.flush(); });
            }
            ASSERT_EQ(log.rdstate(), reference.rdstate());
            both([](std::ostream& stream) { stream.clear(); });
            ASSERT_EQ(log.tellp(), reference.tellp());
            if (i % 8 == 7) {
                both([](std::ostream& stream) { stream.flush(); });
                ASSERT_EQ(File(), FileText("reference"));
            }
        }
        if (log.is_open()) {
            log.close();
            reference.close();
        }
        ASSERT_EQ(File(), FileText("reference"));
    }
}

// ---- Flushes that span pages --------------------------------------------------------------------

/// A document that grows by a flush over its end tag.
class SteppedFlush : public Stream
{
protected:
    static constexpr const char* endTag = "</log>\n";

    /// Opens a document that ends in `tail`, with about `size` bytes before it.
    std::string Begin(std::size_t size, const std::string& lastBefore = "<b/>\n",
                      const std::string& tail = endTag)
    {
        if (log.is_open()) {
            log.close();
        }
        Open();
        std::string document = "<log>\n";
        const std::size_t rest = size - std::min(size, document.size());
        document.append(rest - std::min(rest, lastBefore.size()), ' ');
        document += rest < lastBefore.size() ? "" : lastBefore;
        log << document << tail << std::flush;
        return document;
    }

    /// Replaces the end tag by `text` and an end tag.
    void Grow(const std::string& text)
    {
        log.seekp(-static_cast<std::streamoff>(std::string(endTag).size()), std::ios_base::end);
        log << text << endTag << std::flush;
    }

    static std::string Element(std::size_t length)
    {
        return "<a>" + std::string(std::max<std::size_t>(length, 7) - 7, 'x') + "</a>";
    }

    /// From now on stops each write at each page boundary, where a kill can end it, and looks at the
    /// file.
    void StopBetweenPages()
    {
        ResetCounts();
        platform.pwrite.Use([this](int file, const void* bytes, std::size_t size, off_t position) {
            const auto first = static_cast<std::size_t>(position);
            for (std::size_t page = first / pageSize + 1; page * pageSize < first + size; ++page) {
                platform.pwrite.Real(file, bytes, page * pageSize - first, position);
                EXPECT_TRUE(IsDocument(File())) << "stopped at page " << page << ":\n" << File();
                ++stops;
            }
            return platform.pwrite.Real(file, bytes, size, position);
        });
    }

    /// From now on notes the size of each write.
    void RecordSizes()
    {
        sizes.clear();
        platform.pwrite.Use([this](int file, const void* bytes, std::size_t size, off_t position) {
            sizes.push_back(size);
            return platform.pwrite.Real(file, bytes, size, position);
        });
    }

    unsigned int stops = 0;
    std::vector<std::size_t> sizes;
};

TEST_F(SteppedFlush, TakesAtMostThreeWritesAndOneCutAndLeavesTheBytes)
{
    for (const std::size_t before : {6U, 100U, 4000U, 4070U, 4080U, 4085U, 4087U, 4088U, 4089U, 4090U,
                                     4091U, 4096U, 4100U, 8185U, 12000U}) {
        for (const std::size_t added :
             {4090U, 4096U, 4100U, 5000U, 8180U, 8192U, 8200U, 20000U, 100000U}) {
            const std::string document = Begin(before);
            ResetCounts();
            Grow(Element(added));
            EXPECT_LE(platform.pwrite.Calls(), 3U);
            EXPECT_LE(platform.ftruncate.Calls(), 1U);
            EXPECT_EQ(CallsOnTheFile(), platform.pwrite.Calls() + platform.ftruncate.Calls());
            ASSERT_EQ(File(), document + Element(added) + endTag) << before << " and " << added;
        }
    }
}

TEST_F(SteppedFlush, LeavesADocumentBetweenItsWrites)
{
    unsigned int writes = 0;
    for (std::size_t before = pageSize - 100; before < pageSize + 20; ++before) {
        const std::string added = Element(4500 + before % 17);
        const std::string document = Begin(before);
        platform.pwrite.Use([&](int file, const void* bytes, std::size_t size, off_t position) {
            const ssize_t written = platform.pwrite.Real(file, bytes, size, position);
            EXPECT_TRUE(IsDocument(File())) << "write " << writes << " behind " << before << " bytes";
            ++writes;
            return written;
        });
        Grow(added);
        platform.pwrite.Reset();
        ASSERT_EQ(File(), document + added + endTag);
    }
    EXPECT_EQ(writes, 3U * 120U);
}

TEST_F(SteppedFlush, LeavesADocumentWhenItsWritesAreCutBetweenPages)
{
    // With the end of the text at each of the last places on its page, and at the first ones.
    for (std::size_t end = 3 * pageSize - 10; end < 3 * pageSize + 10; ++end) {
        const std::string document = Begin(100);
        const std::string added = Element(end - document.size() - std::string(endTag).size());
        StopBetweenPages();
        Grow(added);
        platform.pwrite.Reset();
        EXPECT_GE(std::exchange(stops, 0), 2U);
        ASSERT_EQ(File(), document + added + endTag);
    }
}

TEST_F(SteppedFlush, LeavesADocumentWhenItsWritesAreCutWithinATailAcrossPages)
{
    // With the tail, or the opening of an instruction behind it, at each place across the boundary; with
    // text that grows by less than an instruction takes, and with ends at the boundary of a later page.
    for (std::size_t before = pageSize - 14; before < pageSize; ++before) {
        for (const std::size_t added : {7U, 300U, 4000U, 4070U, 4090U, 9000U}) {
            for (const char* last : {"<b/>\n", "<!-- -->\n<b/>\n", "<b/>\n    "}) {
                const std::string document = Begin(before, last);
                StopBetweenPages();
                Grow(Element(added));
                EXPECT_LE(platform.pwrite.Calls(), 3U);
                platform.pwrite.Reset();
                ASSERT_EQ(File(), document + Element(added) + endTag);
            }
        }
    }
    EXPECT_GE(stops, 14U * 6U * 3U);
}

TEST_F(SteppedFlush, LeavesADocumentWhereverItsWritesAreCut)
{
    const char* const pieces[] = {"<a>text</a>\n",  "<!-- -->",    "- &amp; -", "    ",
                                  "<c d=\"-\"/>\n", "<a>\n</a>\n", "x"};
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
            added += std::string(place - std::min<std::size_t>(place, below(20)), ' ') + "<e/>\n";
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

TEST_F(SteppedFlush, TailThatCantBeHiddenIsReplacedInOneWrite)
{
    const std::string longTail = std::string(250, ' ') + endTag;
    const std::string questionAtPageEnd = "<a>?" + std::string(5000, 'x') + "</a>";
    const struct
    {
        std::size_t onFirstPage;  // of the tail
        std::string before;
        std::string tail;
        std::string added;
    } cases[] = {
        {5, "<b/>\n", "<!--x--></log>\n", Element(5000)},  // a comment would end early
        {5, "<b/>\n", "<?x?></log>\n", Element(5000)},     // an instruction would
        {4, "<b/>\n", endTag, questionAtPageEnd},
        {3, "<b>?", "</b></log>\n", "></b>" + Element(5000)},
        {3, std::string(300, ' '), endTag, Element(5000)},  // no markup nearby
        {5, "<b/>\n", longTail, Element(5000)},             // longer than the marks can hold
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

TEST_F(SteppedFlush, TextThatHoldsAClosingMarkIsWrittenInOneGo)
{
    const std::string document = Begin(100);
    ResetCounts();
    Grow(Element(5000) + "<?y ?>");
    EXPECT_EQ(platform.pwrite.Calls(), 1U);
    EXPECT_EQ(platform.ftruncate.Calls(), 0U);
    EXPECT_EQ(File(), document + Element(5000) + "<?y ?>" + endTag);
}

TEST_F(SteppedFlush, TextBehindTheEndOfTheFileIsWrittenInOneGo)
{
    Begin(100);
    ResetCounts();
    log << std::string(10000, ' ') << std::flush;
    EXPECT_EQ(platform.pwrite.Calls(), 1U);
    EXPECT_EQ(platform.ftruncate.Calls(), 0U);
}

TEST_F(SteppedFlush, TextThatDoesNotReachBehindTheTailIsWrittenInOneGo)
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
    const std::string document = Begin(100);
    log.seekp(-7, std::ios_base::end);
    log << Element(5000) << endTag;
    refuseMemory = [](std::size_t) { return true; };
    ResetCounts();
    log.flush();
    EXPECT_EQ(platform.pwrite.Calls(), 1U);
    EXPECT_EQ(File(), document + Element(5000) + endTag);
}

// ---- Failing writes -----------------------------------------------------------------------------

class FailingWrites : public SteppedFlush
{
protected:
    /// A disk that is full behind `limit` bytes of the file.
    static void FullBehind(off_t limit)
    {
        platform.pwrite.Use(
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

constexpr unsigned int forEver = std::numeric_limits<unsigned int>::max();

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
        for (unsigned int number = 1; number <= 3; ++number) {
            const std::string before = Begin(size) + endTag;
            FailWrites(number, number);
            Grow(Element(5000));
            platform.pwrite.Reset();
            EXPECT_TRUE(log.bad());
            EXPECT_EQ(File(), before) << "write " << number;
            log.clear();
            EXPECT_EQ(log.tellp(), static_cast<std::streamoff>(before.size() - 7));
        }
    }
}

TEST_F(FailingWrites, DocumentStaysWhenTheTailCantEvenBePutBack)
{
    const auto grow = [this](std::size_t size, unsigned int firstWriteToFail) {
        Begin(size);
        FailWrites(firstWriteToFail, forEver);
        Grow(Element(5000));
        platform.pwrite.Reset();
        EXPECT_TRUE(log.bad());
        EXPECT_TRUE(IsDocument(File())) << "write " << firstWriteToFail << ":\n" << File();
        EXPECT_EQ(XPath(File(), "concat(count(/log/b), count(/log/a))"), std::vector<std::string>{"10"});
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
            const std::string after = before.substr(0, before.size() - 7) + Element(added) + endTag;
            const off_t step = added < 1000 ? 1 : 61;
            for (auto limit = static_cast<off_t>(before.size());
                 limit < static_cast<off_t>(after.size()) + 20; limit += step) {
                Begin(size);
                FullBehind(limit);
                Grow(Element(added));
                platform.pwrite.Reset();
                ASSERT_EQ(File(), log.good() ? after : before) << size << ", " << added << ", " << limit;
                kept += log.good() ? 0U : 1U;
            }
        }
    }
    EXPECT_GT(kept, 600U);
}

TEST_F(FailingWrites, ShortWritesAreContinued)
{
    for (const std::size_t added : {50U, 5000U}) {
        const std::string document = Begin(100);
        platform.pwrite.Use([](int file, const void* bytes, std::size_t size, off_t position) {
            return platform.pwrite.Real(file, bytes, (size + 1) / 2, position);
        });
        Grow(Element(added));
        platform.pwrite.Reset();
        EXPECT_TRUE(log.good());
        EXPECT_EQ(File(), document + Element(added) + endTag);
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

TEST_F(FailingWrites, TextBehindTheEndOfTheFileIsCutOffAgain)
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

TEST_F(FailingWrites, TailThatCouldNotBeReadBackCantBePutBackEither)
{
    const std::string document = Begin(100);
    log << "behind" << std::flush;
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
    EXPECT_EQ(File(), document + endTag + "behind");
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

TEST_F(FailingWrites, TrailerThatCantBeCutStaysBehindTheNewDocument)
{
    const std::string document = Begin(100);
    platform.ftruncate.Use([](int, off_t) {
        errno = EIO;
        return -1;
    });
    Grow(Element(5000));
    EXPECT_TRUE(log.bad());
    EXPECT_EQ(File(), document + Element(5000) + endTag + "<?x ?>");
    EXPECT_TRUE(IsDocument(File()));
}

TEST_F(FailingWrites, SignalOfTheFileSizeLimitIsHeldUntilTheTailIsBack)
{
    Begin(100);
    std::vector<bool> held;
    platform.pwrite.Use([&](int file, const void* bytes, std::size_t size, off_t position) -> ssize_t {
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

TEST_F(FailingWrites, EndOfTheFileThatCantBeReadBackIsOverwrittenInOneGo)
{
    const auto readFailures = {
        std::pair<ssize_t, int>{-1, EIO},
        std::pair<ssize_t, int>{0, 0},
    };
    for (const auto& [result, error] : readFailures) {
        const std::string document = Begin(100);
        log << "behind" << std::flush;
        log.seekp(static_cast<std::streamoff>(document.size()));
        platform.pread.Use([result = result, error = error](int, void*, std::size_t, off_t) {
            errno = error;
            return result;
        });
        log << Element(5000) << endTag;
        platform.pwrite.Reset();
        log.flush();
        platform.pread.Reset();
        EXPECT_EQ(platform.pwrite.Calls(), 1U);
        EXPECT_EQ(File(), document + Element(5000) + endTag);
    }
}

TEST_F(FailingWrites, EndOfTheFileThatMemoryCantHoldIsOverwrittenWithoutLookingAtIt)
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

TEST_F(FailingWrites, InterruptedAndShortReadsOfTheEndOfTheFileAreContinued)
{
    const std::string document = Begin(100);
    log << "behind" << std::flush;
    log.seekp(static_cast<std::streamoff>(document.size()));
    platform.pread.Use([](int file, void* bytes, std::size_t size, off_t position) -> ssize_t {
        if (platform.pread.Calls() % 2 == 1) {
            errno = EINTR;
            return -1;
        }
        return platform.pread.Real(file, bytes, (size + 1) / 2, position);
    });
    log << Element(5000) << endTag;
    FailWrites(1, 1);
    log.flush();
    EXPECT_EQ(File(), document + endTag + "behind");
    EXPECT_GT(platform.pread.Calls(), 2U);
}

TEST_F(FailingWrites, SeekBackThatNeitherMemoryNorTheFileCanFollowFails)
{
    Begin(100);
    log << "behind" << std::flush << "pending";
    platform.pread.Use([](int, void*, std::size_t, off_t) -> ssize_t {
        errno = EIO;
        return -1;
    });
    FailWrites(1, 1);
    log.seekp(3);
    EXPECT_TRUE(log.fail());
}

TEST_F(FailingWrites, SeekBackThatMemoryCantFollowWritesThePendingTextFirst)
{
    const std::string document = Begin(100);
    log << "behind" << std::flush << "pending";
    platform.pread.Use([](int, void*, std::size_t, off_t) -> ssize_t {
        errno = EIO;
        return -1;
    });
    log.seekp(0);
    platform.pread.Reset();
    EXPECT_TRUE(log.good());
    log << "<LOG>" << std::flush;
    EXPECT_EQ(File(), "<LOG>" + document.substr(5) + endTag + "behindpending");
}

// ---- More than memory may hold ------------------------------------------------------------------

class HugeFlush : public SteppedFlush
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
