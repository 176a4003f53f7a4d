// Logs that outlive the machine: what they wait for, and what they do where that fails.

#include "LoggedCall.h"

#include "layer/Environment.h"
#include "layer/LayerTest.h"
#include "support/FileChanges.h"

#include <algorithm>
#include <cstddef>
#include <filesystem>
#include <string>
#include <vector>

using namespace Scrivel2;
using ScrivelTest::Environment;
using ScrivelTest::FileChange;
using ScrivelTest::FileChanges;
using Kind = ScrivelTest::FileChange::Kind;

namespace
{

namespace fs = std::filesystem;

class Durabilities : public ScrivelTest::LayerTest
{
protected:
    static LogOptions ForMachine(const std::string& folder = {}, std::uint64_t fileSize = 0)
    {
        LogOptions options;
        options.durability = Durability::Machine;
        options.folder = folder;
        options.fileSize = fileSize;
        return options;
    }

    static std::vector<Kind> KindsOf(const FileChanges& record)
    {
        std::vector<Kind> kinds;
        for (const FileChange& change : record.changes) {
            kinds.push_back(change.kind);
        }
        return kinds;
    }

    /// The folders that were synchronised, in that order, as seen from the test's own.
    static std::vector<std::string> FoldersOf(const FileChanges& record)
    {
        std::vector<std::string> folders;
        for (const FileChange& change : record.changes) {
            if (change.kind == Kind::FolderSynchronised) {
                folders.push_back(
                    fs::path(change.folder).lexically_relative(fs::canonical(".")).string());
            }
        }
        return folders;
    }

    static std::ptrdiff_t Count(const FileChanges& record, Kind kind)
    {
        const std::vector<Kind> kinds = KindsOf(record);
        return std::count(kinds.begin(), kinds.end(), kind);
    }
};

TEST_F(Durabilities, LogAppearsAfterItsHeaderIsOnTheDisk)
{
    const FileChanges record;
    const RunLog log("run", ForMachine());
    EXPECT_EQ(KindsOf(record), (std::vector<Kind>{Kind::Write, Kind::Synchronised, Kind::Named,
                                                  Kind::Synchronised, Kind::FolderSynchronised}));
    EXPECT_EQ(InRunFile(), RunFile(""));
}

TEST_F(Durabilities, EachFlushOfACallWaitsForTheDisk)
{
    RunLog log("run", ForMachine());
    FileChanges record;
    // Newlines first, then the text.
    const std::vector<Kind> once = {Kind::Write, Kind::Synchronised, Kind::Write, Kind::Synchronised};
    {
        LoggedCall call(log, "CADIExecStop");
        call.Arguments([](auto&) {});
        // The second one has nothing new: the file doesn't grow.
        EXPECT_EQ(KindsOf(record),
                  (std::vector<Kind>{Kind::Write, Kind::Synchronised, Kind::Write, Kind::Synchronised,
                                     Kind::Write, Kind::Synchronised}));
        record.changes.clear();
        call.Results([](auto& xml) { xml.WriteReturnType("return", eslapi::CADI_STATUS_OK); });
        EXPECT_EQ(KindsOf(record), once);
        record.changes.clear();
    }
    log.Comment("loaded");
    EXPECT_EQ(KindsOf(record), once);
    record.changes.clear();
    log.EndLogging();
    EXPECT_EQ(KindsOf(record), once);
}

TEST_F(Durabilities, NothingIsWaitedForUnlessTold)
{
    const FileChanges record;
    {
        RunLog log("run", {});
        LoggedCall call(log, "CADIExecStop");
        call.Results([](auto& xml) { xml.WriteString("text", std::string(20'000, 'x')); });
    }
    EXPECT_EQ(Count(record, Kind::Synchronised) + Count(record, Kind::FolderSynchronised), 0);
}

TEST_F(Durabilities, FilesThatFollowTheFirstWaitForTheDiskToo)
{
    RunLog log("run", ForMachine({}, 1));
    {
        const LoggedCall call(log, "c");
    }
    const FileChanges record;
    {
        const LoggedCall call(log, "c");
    }
    EXPECT_TRUE(fs::exists("run-4242.2.xml"));
    EXPECT_EQ(Count(record, Kind::FolderSynchronised), 1);
    EXPECT_EQ(Count(record, Kind::Synchronised), Count(record, Kind::Write) + 1);
}

TEST_F(Durabilities, FoldersThatAreMadeAreOnTheDiskInThoseAboveThem)
{
    for (const char* const end : {"", "/", "/."}) {
        fs::create_directory("there");
        const FileChanges record;
        const RunLog log("run", ForMachine(std::string("there/a/b") + end));
        EXPECT_EQ(FoldersOf(record), (std::vector<std::string>{"there/a", "there", "there/a/b"})) << end;
        const std::vector<Kind> kinds = KindsOf(record);
        EXPECT_EQ(std::count(kinds.begin(), std::find(kinds.begin(), kinds.end(), Kind::Write),
                             Kind::FolderSynchronised),
                  2);
        EXPECT_TRUE(fs::exists("there/a/b/run-4242.xml"));
        fs::remove_all("there");
    }
}

TEST_F(Durabilities, FolderThatIsThereIsSynchronisedForItsFileOnly)
{
    fs::create_directory("there");
    const FileChanges record;
    const RunLog log("run", ForMachine("there/"));
    EXPECT_EQ(FoldersOf(record), std::vector<std::string>{"there"});
}

TEST_F(Durabilities, FolderBehindALinkIsOnTheDiskWhereItLies)
{
    fs::create_directories("other/deep");
    fs::create_directory_symlink("other/deep", "link");
    const FileChanges record;
    const RunLog log("run", ForMachine("link/../logs"));
    EXPECT_EQ(FoldersOf(record), (std::vector<std::string>{"other", "other/logs"}));
    EXPECT_TRUE(fs::exists("other/logs/run-4242.xml"));
}

TEST_F(Durabilities, FileThatCantBeSynchronisedIsReportedAndLeavesNone)
{
    for (const unsigned int toFail : {1U, 2U, 3U}) {
        FileChanges record;
        record.FailSynchronisations({toFail});
        testing::internal::CaptureStderr();
        RunLog log("run", ForMachine());
        EXPECT_EQ(testing::internal::GetCapturedStderr(),
                  "Scrivel: Unable to open logfile \"run-4242.xml\".\n"
                  "    Error given by OS: Input/output error\n");
        EXPECT_FALSE(log.IsGood());
        EXPECT_FALSE(fs::exists("run-4242.xml")) << toFail;
    }
}

TEST_F(Durabilities, FolderThatCantBeSynchronisedIsReportedAndThereIsNoLog)
{
    for (const unsigned int toFail : {1U, 2U}) {
        FileChanges record;
        record.FailSynchronisations({toFail});
        testing::internal::CaptureStderr();
        {
            RunLog log("run", ForMachine("a/b"));
            EXPECT_FALSE(log.IsGood());
            const LoggedCall call(log, "CADIExecStop");
            EXPECT_EQ(call.Number(), 0U);
        }
        const fs::path folder = toFail == 1 ? fs::current_path() / "a" : fs::current_path();
        EXPECT_EQ(testing::internal::GetCapturedStderr(),
                  "Scrivel: Unable to synchronise folder \"" + folder.string() +
                      "\".\n"
                      "    Error given by OS: Input/output error\n");
        EXPECT_EQ(Count(record, Kind::Write), 0);
        EXPECT_TRUE(fs::is_empty(".")) << toFail;
    }
}

TEST_F(Durabilities, EnvironmentTakesThePlaceOfTheOption)
{
    {
        const Environment machine("SCRIVEL_LOG_DURABILITY", "machine");
        EXPECT_EQ(Layer::Settings("run", {}).durability, Durability::Machine);
    }
    {
        const Environment process("SCRIVEL_LOG_DURABILITY", "process");
        EXPECT_EQ(Layer::Settings("run", ForMachine()).durability, Durability::Process);
    }
    const Environment nothing("SCRIVEL_LOG_DURABILITY", "");
    EXPECT_EQ(Layer::Settings("run", ForMachine()).durability, Durability::Machine);
    EXPECT_EQ(Layer::Settings("run", {}).durability, Durability::Process);
}

TEST_F(Durabilities, WordThatIsNoneIsReportedAndChangesNothing)
{
    const Environment said("SCRIVEL_LOG_DURABILITY", "Machine");
    testing::internal::CaptureStderr();
    EXPECT_EQ(Layer::Settings("run", {}).durability, Durability::Process);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "Scrivel: SCRIVEL_LOG_DURABILITY is neither \"process\" nor \"machine\": \"Machine\".\n");
}

}  // namespace
