// Where the file of a log is made, and under which name.

#include "LoggedCall.h"

#include "layer/Environment.h"
#include "support/GeneratorTest.h"

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>

#include <fcntl.h>
#include <unistd.h>

using namespace Scrivel2;
using ScrivelTest::Environment;
using ScrivelTest::platform;

namespace
{

namespace fs = std::filesystem;

class LogFiles : public ScrivelTest::ScratchTest
{
protected:
    static std::string FileOf(const std::string& name, const LogOptions& options = {})
    {
        const RunLog log(name, options);
        EXPECT_TRUE(ScrivelTest::IsDocument(FileText(log.FileName()))) << log.FileName();
        return log.FileName();
    }

    static LogOptions InFolder(const std::string& folder)
    {
        LogOptions options;
        options.folder = folder;
        return options;
    }
};

// ---- Names --------------------------------------------------------------------------------------

TEST_F(LogFiles, FileHasTheLegalFormOfTheName)
{
    EXPECT_EQ(FileOf("my run"), "my_run-4242.xml");
}

TEST_F(LogFiles, NumberTellsLogsOfOneNameApart)
{
    EXPECT_EQ(FileOf("run"), "run-4242.xml");
    EXPECT_EQ(FileOf("run"), "run-2-4242.xml");
    EXPECT_EQ(FileOf("run"), "run-3-4242.xml");
}

TEST_F(LogFiles, OldLogOfTheSameNameIsKept)
{
    std::ofstream("run-4242.xml") << "<old/>";
    EXPECT_EQ(FileOf("run"), "run-2-4242.xml");
    EXPECT_EQ(FileText("run-4242.xml"), "<old/>");
}

TEST_F(LogFiles, LogOfAnotherProcessDoesNotTakeTheName)
{
    std::ofstream("run-4243.xml") << "<old/>";
    EXPECT_EQ(FileOf("run"), "run-4242.xml");
}

// ---- Folders ------------------------------------------------------------------------------------

TEST_F(LogFiles, FolderIsMadeWithAllThoseAboveIt)
{
    EXPECT_EQ(FileOf("run", InFolder("logs/of/today")), "logs/of/today/run-4242.xml");
    EXPECT_FALSE(fs::exists("run-4242.xml"));
}

TEST_F(LogFiles, FolderThatIsThereIsTaken)
{
    fs::create_directory("logs");
    EXPECT_EQ(FileOf("run", InFolder("logs")), "logs/run-4242.xml");
    EXPECT_EQ(FileOf("run", InFolder("logs/")), "logs/run-2-4242.xml");
}

TEST_F(LogFiles, LinkToAFolderIsTakenAsOne)
{
    fs::create_directory("logs");
    fs::create_directory_symlink("logs", "link");
    EXPECT_EQ(FileOf("run", InFolder("link")), "link/run-4242.xml");
    EXPECT_TRUE(fs::exists("logs/run-4242.xml"));
}

TEST_F(LogFiles, FolderAboveOneBehindALinkLiesWhereTheLinkLeads)
{
    fs::create_directories("other/deep");
    fs::create_directory_symlink("other/deep", "link");
    EXPECT_EQ(FileOf("run", InFolder("link/../logs")), "link/../logs/run-4242.xml");
    EXPECT_TRUE(fs::exists("other/logs/run-4242.xml"));
    EXPECT_FALSE(fs::exists("logs"));
}

TEST_F(LogFiles, FolderOfTheNameIsTakenAsOne)
{
    EXPECT_EQ(FileOf("logs/run"), "logs/run-4242.xml");
    EXPECT_EQ(FileOf("logs/2nd run"), "logs/_nd_run-4242.xml");
    EXPECT_EQ(FileText("logs/run-4242.xml"), Header("run") + "\n<!-- Log ended -->\n\n" + EndTag("run"));
}

TEST_F(LogFiles, FolderOfTheNameLiesInTheOneThatIsChosen)
{
    EXPECT_EQ(FileOf("logs/run", InFolder("out")), "out/logs/run-4242.xml");
    const std::string elsewhere = fs::absolute("elsewhere").string();
    EXPECT_EQ(FileOf(elsewhere + "/run", InFolder("out")), elsewhere + "/run-4242.xml");
}

TEST_F(LogFiles, EnvironmentTakesThePlaceOfEveryOtherFolder)
{
    const Environment folder("SCRIVEL_LOG_DIR", "mine/of today");
    EXPECT_EQ(FileOf("run"), "mine/of today/run-4242.xml");
    EXPECT_EQ(FileOf("other", InFolder("out")), "mine/of today/other-4242.xml");
    EXPECT_EQ(FileOf("logs/third", InFolder("out")), "mine/of today/third-4242.xml");
    EXPECT_FALSE(fs::exists("out"));
    EXPECT_FALSE(fs::exists("logs"));
}

TEST_F(LogFiles, EmptyEnvironmentSaysNothing)
{
    const Environment folder("SCRIVEL_LOG_DIR", "");
    EXPECT_EQ(FileOf("run", InFolder("out")), "out/run-4242.xml");
}

TEST_F(LogFiles, EnvironmentOfAProgramWithOtherRightsThanItsUsersSaysNothing)
{
    const Environment folder("SCRIVEL_LOG_DIR", "mine");
    platform.geteuid.Use([] { return getuid() + 1; });
    EXPECT_EQ(FileOf("run"), "run-4242.xml");
    platform.geteuid.Reset();
    platform.getegid.Use([] { return getgid() + 1; });
    EXPECT_EQ(FileOf("other"), "other-4242.xml");
    platform.getegid.Reset();
    EXPECT_EQ(FileOf("run"), "mine/run-4242.xml");
}

TEST_F(LogFiles, FolderThatCannotBeMadeIsReportedByItsNameAndCallsAreTaken)
{
    std::ofstream("logs") << "a file";
    testing::internal::CaptureStderr();
    {
        RunLog log("run", InFolder("logs/today"));
        const LoggedCall call(log, "CADIExecStop");
        EXPECT_FALSE(log.IsGood());
    }
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "Scrivel: Unable to make folder \"logs/today\".\n"
              "    Error given by OS: Not a directory\n"
              "Scrivel: Unable to open logfile \"logs/today/run-4242.xml\".\n"
              "    Error given by OS: Not a directory\n");
    EXPECT_EQ(FileText("logs"), "a file");
}

// ---- The first instant --------------------------------------------------------------------------

/// What is to happen while a log starts, and where a file system has no files without names.
class StartOfALog : public LogFiles
{
protected:
    static void AllowNoFilesWithoutNames()
    {
        platform.open.Use([](const char* name, int flags, mode_t mode) {
            if ((flags & O_TMPFILE) == O_TMPFILE) {
                errno = EOPNOTSUPP;
                return -1;
            }
            return platform.open.Real(name, flags, mode);
        });
    }

    static unsigned int FileCount()
    {
        return static_cast<unsigned int>(std::distance(fs::directory_iterator("."), {}));
    }
};

TEST_F(StartOfALog, FileAppearsWithItsHeader)
{
    unsigned int filesAtWrite = 1;
    const auto stub =
        platform.pwrite.Use([&](int file, const void* bytes, std::size_t size, off_t offset) {
            filesAtWrite = FileCount();
            return platform.pwrite.Real(file, bytes, size, offset);
        });
    const RunLog log("run");
    EXPECT_EQ(filesAtWrite, 0U);
    EXPECT_TRUE(ScrivelTest::IsDocument(FileText("run-4242.xml")));
}

TEST_F(StartOfALog, HeaderThatCannotBeWrittenLeavesNoFile)
{
    for (const bool named : {false, true}) {
        if (named) {
            AllowNoFilesWithoutNames();
        }
        platform.pwrite.Use([](int, const void*, std::size_t, off_t) -> ssize_t {
            errno = ENOSPC;
            return -1;
        });
        testing::internal::CaptureStderr();
        RunLog log("run");
        EXPECT_FALSE(log.IsGood());
        EXPECT_EQ(testing::internal::GetCapturedStderr(),
                  "Scrivel: Unable to open logfile \"run-4242.xml\".\n"
                  "    Error given by OS: No space left on device\n");
        EXPECT_EQ(FileCount(), 0U);
        platform.pwrite.Reset();
    }
}

TEST_F(StartOfALog, FileThatTakesNothingIsReportedAlthoughTheSystemGivesNoReason)
{
    platform.pwrite.Use([](int, const void*, std::size_t, off_t) -> ssize_t {
        errno = 0;
        return 0;
    });
    testing::internal::CaptureStderr();
    const RunLog log("run");
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "Scrivel: Unable to open logfile \"run-4242.xml\".\n"
              "    Error given by OS: Input/output error\n");
    EXPECT_EQ(FileCount(), 0U);
}

TEST_F(StartOfALog, DirectoryThatIsGoneIsReported)
{
    const fs::path before = fs::current_path();
    fs::create_directory("gone");
    fs::current_path("gone");
    fs::remove(before / "gone");
    testing::internal::CaptureStderr();
    RunLog log("run");
    fs::current_path(before);
    const std::string report = "Scrivel: Unable to open logfile \"run-4242.xml\".\n";
    EXPECT_EQ(testing::internal::GetCapturedStderr().substr(0, report.size()), report);
    EXPECT_FALSE(log.IsGood());
}

TEST_F(StartOfALog, LogHasItsNameAtOnceWhereFilesCannotBeWithoutOne)
{
    AllowNoFilesWithoutNames();
    EXPECT_EQ(FileOf("run"), "run-4242.xml");
    EXPECT_EQ(FileOf("run"), "run-2-4242.xml");
    EXPECT_EQ(FileText("run-4242.xml"), Header("run") + "\n<!-- Log ended -->\n\n" + EndTag("run"));
}

TEST_F(StartOfALog, FileThatAppearsMeanwhileIsKept)
{
    for (const bool named : {false, true}) {
        if (named) {
            AllowNoFilesWithoutNames();
        }
        fs::remove("run-4242.xml");
        fs::remove("run-2-4242.xml");
        platform.gethostname.Use([](char* name, std::size_t) {
            if (!fs::exists("run-4242.xml")) {
                std::ofstream("run-4242.xml") << "<other/>";
            }
            std::strcpy(name, "host");
            return 0;
        });
        EXPECT_EQ(FileOf("run"), named ? "run-4242.xml" : "run-2-4242.xml");
        if (!named) {
            EXPECT_EQ(FileText("run-4242.xml"), "<other/>");
            EXPECT_NE(FileText("run-2-4242.xml").find("<run-2-4242\n"), std::string::npos);
        }
    }
}

TEST_F(StartOfALog, FileThatTookTheNameOfARemovedOneIsKept)
{
    AllowNoFilesWithoutNames();
    platform.pwrite.Use([](int, const void*, std::size_t, off_t) -> ssize_t {
        fs::remove("run-4242.xml");
        std::ofstream("run-4242.xml") << "<other/>";
        errno = ENOSPC;
        return -1;
    });
    testing::internal::CaptureStderr();
    const RunLog log("run");
    testing::internal::GetCapturedStderr();
    EXPECT_EQ(FileText("run-4242.xml"), "<other/>");
}

TEST_F(StartOfALog, DirectoryThatChangesMeanwhileLeadsNowhereElse)
{
    fs::create_directory("elsewhere");
    std::ofstream("elsewhere/run-4242.xml") << "<other/>";
    platform.gethostname.Use([](char* name, std::size_t) {
        fs::current_path("elsewhere");
        std::strcpy(name, "host");
        return 0;
    });
    {
        const RunLog log("run");
    }
    EXPECT_EQ(FileText("run-4242.xml"), "<other/>");
    EXPECT_TRUE(fs::exists("../run-4242.xml"));
}

}  // namespace
