// Whether the process that writes a log still does.

#include <cstdlib>
#include <fcntl.h>
#include <string>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "scrivel/LogProcess.h"

using namespace ScrivelReader;

namespace
{

class LogProcess : public testing::Test
{
protected:
    LogProcess() : path(testing::TempDir() + "scrivel-process-XXXXXX"), descriptor(mkstemp(path.data()))
    {
        char name[256] = {};
        gethostname(name, sizeof name - 1);
        header.hostName = name;
    }
    ~LogProcess() override
    {
        close(descriptor);
        unlink(path.c_str());
    }

    /// A process that ends at once; its number is taken until it is waited for.
    static pid_t Ended()
    {
        const pid_t process = fork();
        if (process == 0)
            _exit(0);
        siginfo_t ignored{};
        waitid(P_PID, id_t(process), &ignored, WEXITED | WNOWAIT);
        return process;
    }

    std::string path;
    int descriptor;
    LogHeader header;
};

TEST_F(LogProcess, HasTheLogOpen)
{
    header.processId = std::uint64_t(getpid());
    EXPECT_EQ(FindWriter(header, descriptor), Writer::HasLogOpen);
}

TEST_F(LogProcess, LivesWithoutTheLog)
{
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    const pid_t process = fork();
    if (process == 0) {
        close(descriptor);
        close(ends[1]);
        char ignored = 0;
        _exit(int(read(ends[0], &ignored, 1)));  // lives until the other end is closed
    }
    header.processId = std::uint64_t(process);
    // The file is closed in the child a moment after it has begun.
    Writer writer = Writer::HasLogOpen;
    for (int tries = 0; tries < 10000 && writer == Writer::HasLogOpen; ++tries)
        writer = FindWriter(header, descriptor);
    EXPECT_EQ(writer, Writer::HasItNot);
    close(ends[0]);
    close(ends[1]);
    waitpid(process, nullptr, 0);
}

TEST_F(LogProcess, IsGoneEvenBeforeItWasWaitedFor)
{
    const pid_t process = Ended();
    header.processId = std::uint64_t(process);
    EXPECT_EQ(FindWriter(header, descriptor), Writer::Gone);
    waitpid(process, nullptr, 0);
    EXPECT_EQ(FindWriter(header, descriptor), Writer::Gone);
}

TEST_F(LogProcess, IsNotLookedForOnAnotherHost)
{
    header.processId = std::uint64_t(getpid());
    header.hostName += "x";
    EXPECT_EQ(FindWriter(header, descriptor), Writer::Elsewhere);
    header.hostName.pop_back();
    header.processId.reset();
    EXPECT_EQ(FindWriter(header, descriptor), Writer::Elsewhere);
}

}  // namespace
