// Waiting for the names in a folder, and what keeps the disk from having them.

#include "scrivel/Durability.h"

#include "support/GeneratorTest.h"

#include <cerrno>
#include <filesystem>

namespace
{

namespace fs = std::filesystem;
using Scrivel2::SynchroniseFolder;
using ScrivelTest::platform;

class SynchronisedFolder : public ScrivelTest::ScratchTest
{
protected:
    SynchronisedFolder() { fs::create_directory("folder"); }

    /// Counts from here on.
    static void ResetCounts()
    {
        platform.open.Reset();
        platform.fsync.Reset();
        platform.close.Reset();
    }
};

TEST_F(SynchronisedFolder, IsOpenedSynchronisedAndClosed)
{
    ResetCounts();
    EXPECT_TRUE(SynchroniseFolder("folder"));
    EXPECT_EQ(platform.open.Calls(), 1U);
    EXPECT_EQ(platform.fsync.Calls(), 1U);
    EXPECT_EQ(platform.close.Calls(), 1U);
}

TEST_F(SynchronisedFolder, ThatDoesNotExistIsNoneWithTheReasonInErrno)
{
    ResetCounts();
    errno = 0;
    EXPECT_FALSE(SynchroniseFolder("missing"));
    EXPECT_EQ(errno, ENOENT);
    EXPECT_EQ(platform.close.Calls(), 0U);
}

TEST_F(SynchronisedFolder, ThatTheDiskDoesNotTakeIsTriedOnceAndClosed)
{
    ResetCounts();
    platform.fsync.Use([](int) {
        errno = EIO;
        return -1;
    });
    platform.close.Use([](int file) {
        const int result = platform.close.Real(file);
        errno = EBADF;
        return result;
    });
    EXPECT_FALSE(SynchroniseFolder("folder"));
    EXPECT_EQ(errno, EIO);
    EXPECT_EQ(platform.fsync.Calls(), 1U);
    EXPECT_EQ(platform.close.Calls(), 1U);
}

TEST_F(SynchronisedFolder, IsOpenedAgainWhenASignalHasInterruptedThat)
{
    ResetCounts();
    platform.open.Use([](const char* name, int flags, mode_t mode) {
        if (platform.open.Calls() == 1) {
            errno = EINTR;
            return -1;
        }
        return platform.open.Real(name, flags, mode);
    });
    EXPECT_TRUE(SynchroniseFolder("folder"));
    EXPECT_EQ(platform.open.Calls(), 2U);
    EXPECT_EQ(platform.fsync.Calls(), 1U);
}

TEST_F(SynchronisedFolder, IsSynchronisedAgainWhenASignalHasInterruptedThat)
{
    ResetCounts();
    platform.fsync.Use([](int) {
        errno = EINTR;
        return platform.fsync.Calls() == 1 ? -1 : 0;
    });
    EXPECT_TRUE(SynchroniseFolder("folder"));
    EXPECT_EQ(platform.open.Calls(), 1U);
    EXPECT_EQ(platform.fsync.Calls(), 2U);
}

}  // namespace
