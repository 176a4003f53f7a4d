// How the file under a log is opened: which names lead to one, and what the process shows of it.

#include "stream/StreamTest.h"

#include <cerrno>
#include <filesystem>
#include <fstream>

#include <fcntl.h>
#include <sys/stat.h>
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

TEST_F(OpenFile, FileThatCantBeLookedAtFails)
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
