// How the file under a log is opened: which names lead to one, and what the process shows of it.

#include "stream/StreamTest.h"

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <fstream>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace
{

namespace fs = std::filesystem;
using ScrivelTest::platform;
using OpenFile = ScrivelTest::StreamTest;

TEST_F(OpenFile, OpeningCreatesAnEmptyFile)
{
    Open();
    EXPECT_TRUE(log.is_open());
    EXPECT_EQ(File(), "");
}

TEST_F(OpenFile, OpeningEmptiesAFile)
{
    std::ofstream("log") << "before";
    Open();
    EXPECT_EQ(File(), "");
}

TEST_F(OpenFile, OpeningInAMissingFolderFailsWithTheReasonInErrno)
{
    errno = 0;
    log.open("missing/log");
    EXPECT_EQ(errno, ENOENT);
    EXPECT_EQ(log.rdstate(), std::ios_base::failbit);
    EXPECT_FALSE(log.is_open());
}

TEST_F(OpenFile, OpeningAFolderFailsWithTheReasonInErrno)
{
    fs::create_directory("log");
    errno = 0;
    log.open("log");
    EXPECT_EQ(errno, EISDIR);
    EXPECT_TRUE(log.fail());
}

TEST_F(OpenFile, FifoWithoutAReaderFailsAtOnce)
{
    ASSERT_EQ(mkfifo("log", 0600), 0);
    errno = 0;
    log.open("log");
    EXPECT_EQ(errno, ESPIPE);
    EXPECT_EQ(log.rdstate(), std::ios_base::failbit);
    EXPECT_FALSE(log.is_open());
}

TEST_F(OpenFile, FifoWithAReaderFailsToo)
{
    ASSERT_EQ(mkfifo("log", 0600), 0);
    const int reader = open("log", O_RDONLY | O_NONBLOCK);
    ASSERT_GE(reader, 0);
    log.open("log");
    EXPECT_EQ(log.rdstate(), std::ios_base::failbit);
    EXPECT_FALSE(log.is_open());
    close(reader);
}

/// A terminal that nobody else uses.
class Terminal
{
public:
    Terminal() : controller(posix_openpt(O_RDWR | O_NOCTTY))
    {
        EXPECT_EQ(grantpt(controller), 0);
        EXPECT_EQ(unlockpt(controller), 0);
    }
    ~Terminal() { close(controller); }
    Terminal(const Terminal&) = delete;
    Terminal& operator=(const Terminal&) = delete;

    std::string Name() const { return ptsname(controller); }

private:
    int controller;
};

TEST_F(OpenFile, TerminalFailsAtOnce)
{
    const Terminal terminal;
    errno = 0;
    log.open(terminal.Name());
    EXPECT_EQ(errno, ESPIPE);
    EXPECT_EQ(log.rdstate(), std::ios_base::failbit);
    EXPECT_FALSE(log.is_open());
    EXPECT_EQ(platform.close.Calls(), 1U);
}

TEST_F(OpenFile, TerminalDoesNotBecomeThatOfTheProcess)
{
    const Terminal terminal;
    const pid_t child = fork();
    if (child == 0) {
        setsid();  // without a terminal from here on
        log.open(terminal.Name());
        _exit(open("/dev/tty", O_RDWR) < 0 && errno == ENXIO ? 0 : 1);
    }
    int status = -1;
    waitpid(child, &status, 0);
    EXPECT_EQ(status, 0);
}

TEST_F(OpenFile, DeviceThatCanSeekIsOpened)
{
    log.open("/dev/null");
    log << "text" << std::flush;
    EXPECT_TRUE(log.good());
    log << std::string(17000, ' ') << std::flush;  // after a look at what is there
    EXPECT_TRUE(log.good());
}

TEST_F(OpenFile, FileWhosePlaceTheSystemDoesNotTellFails)
{
    platform.lseek.Use([](int, off_t, int) -> off_t {
        errno = EIO;
        return -1;
    });
    log.open("log");
    EXPECT_EQ(errno, EIO);
    EXPECT_EQ(log.rdstate(), std::ios_base::failbit);
    EXPECT_FALSE(log.is_open());
    EXPECT_EQ(platform.close.Calls(), 1U);
}

TEST_F(OpenFile, FileThatTheSystemDoesNotTellApartFromOthersFails)
{
    for (const bool isNew : {false, true}) {
        fs::remove("log");
        platform.fstat.Use([](int, struct stat*) {
            errno = EIO;
            return -1;
        });
        platform.close.Reset();
        isNew ? log.create("log") : log.open("log");
        EXPECT_EQ(errno, EIO);
        EXPECT_EQ(log.rdstate(), std::ios_base::failbit);
        EXPECT_FALSE(log.is_open());
        EXPECT_EQ(platform.close.Calls(), 1U);
        platform.fstat.Reset();
        log.clear();
    }
    EXPECT_FALSE(fs::exists("log"));
}

TEST_F(OpenFile, FileMayBeNewInAnyFolder)
{
    fs::create_directory("folder");
    for (const char* const name : {"log", "./log2", "folder/log"}) {
        log.create(name);
        EXPECT_FALSE(fs::exists(name));
        log << "text" << std::flush;
        EXPECT_TRUE(log.good()) << name;
        log.close();
        EXPECT_EQ(fs::file_size(name), 4U);
    }
}

TEST_F(OpenFile, InterruptedSynchronisationOfANameIsRepeated)
{
    log.SetDurability(Scrivel2::Durability::Machine);
    log.create("log");
    platform.fsync.Reset();
    platform.fsync.Use([](int) {
        errno = EINTR;
        return platform.fsync.Calls() == 1 ? -1 : 0;
    });
    log << "text" << std::flush;
    EXPECT_TRUE(log.good());
    EXPECT_EQ(platform.fsync.Calls(), 3U);  // of the file, once more, of the folder
    platform.fsync.Reset();
    log.close();
    EXPECT_EQ(File(), "text");
}

/// Where there are no files without names a new one has its name at once.
class NamedFile : public ScrivelTest::StreamTest
{
protected:
    void ExpectNameAtOnce()
    {
        log.create("log");
        EXPECT_TRUE(log.good());
        EXPECT_TRUE(fs::exists("log"));
        log.close();
        EXPECT_FALSE(fs::exists("log"));
        log.create("log");
        log << "text" << std::flush;
        log.close();
        EXPECT_EQ(File(), "text");
    }
};

TEST_F(NamedFile, IsMadeOnAKernelThatDoesNotKnowOthers)
{
    platform.open.Use([](const char* name, int flags, mode_t mode) {
        if ((flags & O_TMPFILE) == O_TMPFILE) {
            errno = EISDIR;
            return -1;
        }
        return platform.open.Real(name, flags, mode);
    });
    ExpectNameAtOnce();
}

TEST_F(NamedFile, IsMadeWhereOthersCouldNotBeGivenOne)
{
    platform.access.Use([](const char*, int) {
        errno = ENOENT;
        return -1;
    });
    ExpectNameAtOnce();
}

TEST_F(NamedFile, IsNotRemovedWhenTheSystemDoesNotTellItApartFromOthers)
{
    platform.access.Use([](const char*, int) {
        errno = ENOENT;
        return -1;
    });
    log.create("log");
    platform.fstat.Use([](int, struct stat*) {
        errno = EIO;
        return -1;
    });
    log.close();
    EXPECT_TRUE(fs::exists("log"));
    platform.fstat.Reset();
}

TEST_F(NamedFile, IsNotRemovedWhenAnotherHasItsNameByThen)
{
    platform.access.Use([](const char*, int) { return -1; });
    log.create("log");
    // One of the same number, on another device.
    platform.fstat.Use([](int file, struct stat* status) {
        const int result = platform.fstat.Real(file, status);
        ++status->st_dev;
        return result;
    });
    log.close();
    EXPECT_TRUE(fs::exists("log"));
}

TEST_F(OpenFile, FileThatMayNotBeReadIsOpenedForWriting)
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

TEST_F(OpenFile, DescriptorIsClosedOnExec)
{
    Open();
    EXPECT_EQ(fcntl(Descriptor(), F_GETFD) & FD_CLOEXEC, FD_CLOEXEC);
}

/// Whether `holds` does in a child process without standard output and error.
template <typename Holds>
bool HoldsWithoutOutput(Holds holds)
{
    const pid_t child = fork();
    if (child == 0) {
        close(STDOUT_FILENO);
        close(STDERR_FILENO);
        _exit(holds() ? 0 : 1);
    }
    int status = -1;
    waitpid(child, &status, 0);
    return status == 0;
}

TEST_F(OpenFile, WhatTheHostSaysOnAClosedStreamDoesNotGoIntoTheLog)
{
    EXPECT_TRUE(HoldsWithoutOutput([this] {
        log.open("log");
        log << "<log/>\n" << std::flush;
        return log.good() && write(STDOUT_FILENO, "host", 4) < 0 && write(STDERR_FILENO, "host", 4) < 0;
    }));
    EXPECT_EQ(File(), "<log/>\n");
}

TEST_F(OpenFile, OpeningFailsWhenThereIsNoDescriptorAboveThoseOfTheStreams)
{
    EXPECT_TRUE(HoldsWithoutOutput([this] {
        const rlimit three{3, 3};
        setrlimit(RLIMIT_NOFILE, &three);
        errno = 0;
        log.open("log");
        return log.fail() && !log.is_open() && errno != 0 && fcntl(STDOUT_FILENO, F_GETFD) < 0;
    }));
}

/// The log's descriptor in the hands of the host.
class TakenFile : public ScrivelTest::StreamTest
{
protected:
    void SetUp() override
    {
        Open();
        log << "<log/>\n" << std::flush;
    }

    /// Flushes as often as it may take until the file is looked at.
    void FlushOften()
    {
        for (int i = 0; i < 100; ++i) {
            log << "<!-- -->" << std::flush;
        }
    }
};

TEST_F(TakenFile, DescriptorThatTheHostHasClosedAndUsesAgainIsNoticed)
{
    const int descriptor = Descriptor();
    for (const std::size_t length : {0U, 17000U}) {
        std::ofstream("host") << "<log/>\n";
        const int own = open("host", O_RDWR);
        dup2(own, descriptor);
        close(own);
        if (length == 0) {
            platform.pwrite.Reset();
            FlushOften();
            EXPECT_LE(platform.pwrite.Calls(), 99U);
        } else {
            log.clear();
            log << std::string(length, ' ') << std::flush;
            EXPECT_EQ(fs::file_size("host"), 7U);
        }
        EXPECT_TRUE(log.bad());
    }
}

TEST_F(TakenFile, FileThatWasShortenedIsNotWrittenTo)
{
    fs::resize_file("log", 3);
    log << std::string(17000, ' ') << std::flush;
    EXPECT_TRUE(log.bad());
    EXPECT_EQ(File(), "<lo");
}

TEST_F(TakenFile, DescriptorThatTheHostHasClosedIsNoticed)
{
    platform.fstat.Use([](int, struct stat*) {
        errno = EBADF;
        return -1;
    });
    log << std::string(17000, ' ') << std::flush;
    EXPECT_TRUE(log.bad());
    EXPECT_EQ(File(), "<log/>\n");
}

TEST_F(TakenFile, FileOfTheSameNumberOnAnotherDeviceIsNoticed)
{
    platform.fstat.Use([](int file, struct stat* status) {
        const int result = platform.fstat.Real(file, status);
        ++status->st_dev;
        return result;
    });
    log << std::string(17000, ' ') << std::flush;
    EXPECT_TRUE(log.bad());
    EXPECT_EQ(File(), "<log/>\n");
}

TEST_F(TakenFile, FileIsLookedAtAtEveryHundredthFlush)
{
    ResetCounts();
    FlushOften();
    EXPECT_EQ(platform.fstat.Calls(), 1U);
    EXPECT_TRUE(log.good());
}

TEST_F(TakenFile, FileIsLookedAtAtEachFlushOfManyPages)
{
    for (const std::size_t length : {5000U, 20'000U, 20'000U}) {
        ResetCounts();
        log << std::string(length, ' ') << std::flush;
        EXPECT_EQ(platform.fstat.Calls(), length > 16'000 ? 1U : 0U);
    }
}

TEST_F(OpenFile, PermissionsFollowTheUmask)
{
    const mode_t before = umask(027);
    Open();
    umask(before);
    struct stat status;
    ASSERT_EQ(stat("log", &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0640U);
}

}  // namespace
