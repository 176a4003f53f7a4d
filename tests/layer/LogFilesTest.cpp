// Where the file of a log is made, and under which name.

#include "LoggedCall.h"

#include "layer/Environment.h"
#include "support/GeneratorTest.h"

#include <filesystem>
#include <fstream>

using namespace Scrivel2;
using ScrivelTest::Environment;

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

}  // namespace
