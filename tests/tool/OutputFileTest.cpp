// Files that a command writes: whole under their names, or not there.

#include "OutputFile.h"

#include <csignal>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <sys/wait.h>
#include <sys/stat.h>
#include <unistd.h>

#include <gmock/gmock.h>

#include "tool/Program.h"

using namespace ScrivelTest;
using namespace ScrivelTool;
using testing::ElementsAre;
using testing::IsEmpty;

namespace
{

class OutputFiles : public ToolTest
{
protected:
    std::string Path() const { return Folder() + "/small.xml"; }

    std::vector<std::string> Names() const
    {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(Folder()))
            names.push_back(entry.path().filename());
        return names;
    }

    std::unique_ptr<OutputFile> Make(Existing existing = Existing::Keep) const
    {
        std::string error;
        auto file = OutputFile::Make(Path(), existing, {}, error);
        EXPECT_EQ(error, "");
        return file;
    }
};

TEST_F(OutputFiles, HaveNoNameBeforeTheyAreFinished)
{
    const auto file = Make();
    ASSERT_TRUE(file->Write("text"));
    EXPECT_TRUE(file->CanBeReadBack());
    EXPECT_FALSE(std::filesystem::exists(Path()));
    ASSERT_TRUE(file->Finish());
    EXPECT_EQ(Read("small.xml"), "text");
    EXPECT_THAT(Names(), ElementsAre("small.xml"));
}

TEST_F(OutputFiles, LeaveNothingUnlessTheyAreFinished)
{
    ASSERT_TRUE(Make()->Write("text"));
    EXPECT_THAT(Names(), IsEmpty());
}

TEST_F(OutputFiles, LeaveNothingOfAProcessThatIsKilled)
{
    const int unnamed = open(Folder().c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, 0600);
    if (unnamed < 0)
        GTEST_SKIP() << "this file system has no files without a name";
    close(unnamed);
    const pid_t child = fork();
    if (child == 0) {
        const auto file = Make();
        file->Write("text");
        raise(SIGKILL);
    }
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(WTERMSIG(status), SIGKILL);
    EXPECT_THAT(Names(), IsEmpty());
}

TEST_F(OutputFiles, ReplaceAFileThatMayBeReplaced)
{
    Write("small.xml", "old");
    const auto file = Make(Existing::Replace);
    ASSERT_TRUE(file->Write("new"));
    EXPECT_EQ(Read("small.xml"), "old");
    ASSERT_TRUE(file->Finish());
    EXPECT_EQ(Read("small.xml"), "new");
    EXPECT_THAT(Names(), ElementsAre("small.xml"));
}

TEST_F(OutputFiles, KeepAFileThatCameMeanwhile)
{
    const auto file = Make();
    ASSERT_TRUE(file->Write("new"));
    Write("small.xml", "meanwhile");
    EXPECT_FALSE(file->Finish());
    EXPECT_EQ(file->Error(), "File exists");
    EXPECT_EQ(Read("small.xml"), "meanwhile");
    EXPECT_THAT(Names(), ElementsAre("small.xml"));
}

TEST_F(OutputFiles, AreNoneOfTheLogs)
{
    std::ofstream(Path()) << "log";
    std::string error;
    const std::string alias = Folder() + "/./small.xml";
    EXPECT_EQ(OutputFile::Make(Path(), Existing::Replace, {"other.xml", alias}, error), nullptr);
    EXPECT_EQ(error, "a log is never written in place; name another file");
}

TEST_F(OutputFiles, AreNoStreams)
{
    std::string error;
    EXPECT_EQ(OutputFile::Make("-", Existing::Replace, {}, error), nullptr);
    EXPECT_EQ(error, "what is written is a file; ./- if it shall bear that name");
}

TEST_F(OutputFiles, HaveTheRightsOfNewFiles)
{
    const mode_t before = umask(027);
    ASSERT_TRUE(Make()->Finish());
    umask(before);
    EXPECT_EQ(std::filesystem::status(Path()).permissions(), std::filesystem::perms(0640));
}

}  // namespace
