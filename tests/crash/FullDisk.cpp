// Lets a log run into the end of its disk and looks at the file it leaves.
//
//     crash_full_disk --count 300 --pages 44
//
// First a file-size limit at `count` places of a log, with SIGXFSZ ignored and at its default, which
// ends the process in the midst of a flush. Then a tmpfs of each size up to `pages` pages, smaller than
// the log, where this program may mount one. All that with a generator, and then through the layer.
//
// Fails when libxml2 rejects a file, or the file isn't the document of the last flush that succeeded or
// of a later one.

#include "crash/LogReader.h"
#include "crash/Options.h"
#include "crash/Scratch.h"
#include "crash/Session.h"
#include "crash/Shared.h"

#include <csignal>
#include <cstdio>
#include <filesystem>
#include <string>

#include <sched.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <unistd.h>

using namespace ScrivelTest;

namespace
{

class FullDisk
{
public:
    FullDisk(Session& sessionToBreak, Scratch& keeper)
        : session(sessionToBreak), scratch(keeper), progress(Shared<Progress>())
    {
        session.Documents();
    }

    /// `count` limits from the end of the header to the end of the log.
    bool LimitFileSize(unsigned int count)
    {
        const std::size_t header = session.Documents()[1].size();
        const std::size_t whole = session.Documents().back().size();
        unsigned int killed = 0;
        unsigned int rejected = 0;
        unsigned int lost = 0;
        for (unsigned int i = 0; i < count; ++i) {
            const std::size_t limit = header + (whole - header) * i / count;
            for (const auto action : {SIG_IGN, SIG_DFL}) {
                std::filesystem::remove(session.FileName());
                progress.done = 0;
                const ChildEnd end = InChild([&] {
                    const rlimit most = {limit, limit};
                    setrlimit(RLIMIT_FSIZE, &most);
                    std::signal(SIGXFSZ, action);
                    session.Run(progress);
                });
                const bool bySignal = end.manner == ChildEnd::Manner::Signal && end.signal == SIGXFSZ;
                const bool asExpected =
                    action == SIG_IGN ? end.manner == ChildEnd::Manner::Returned : bySignal;
                killed += bySignal ? 1U : 0U;
                Judge(asExpected, "limit of " + std::to_string(limit) + " bytes", rejected, lost);
            }
        }
        std::printf("file-size limits: %u limits, SIGXFSZ ignored and at its default, which killed %u: "
                    "%u files rejected, %u without a flushed call\n",
                    count, killed, rejected, lost);
        return rejected == 0 && lost == 0;
    }

    /// A file system of one page, two pages, and so on.
    bool FillFileSystem(unsigned int mostPages)
    {
        unsigned int rejected = 0;
        unsigned int lost = 0;
        if (static_cast<std::size_t>(mostPages) * pageSize >= session.Documents().back().size()) {
            std::fprintf(stderr, "the log is too short to fill %u pages\n", mostPages);
            return false;
        }
        if (!MayMount()) {
            std::printf("full tmpfs: skipped, mounting is not allowed here\n");
            return true;
        }
        for (unsigned int pages = 1; pages <= mostPages; ++pages) {
            progress.done = 0;
            const std::string kept = "left.xml";
            const ChildEnd end = InChild([&] {
                MountSmall(pages);
                session.Run(progress);
                std::filesystem::copy_file(session.FileName(), "../" + kept);
            });
            std::filesystem::rename(kept, session.FileName());
            Judge(end.manner == ChildEnd::Manner::Returned, std::to_string(pages) + " pages", rejected,
                  lost);
        }
        std::printf("full tmpfs: %u sizes: %u files rejected, %u without a flushed call\n", mostPages,
                    rejected, lost);
        return rejected == 0 && lost == 0;
    }

private:
    static constexpr std::size_t pageSize = 4096;

    void Judge(bool endedAsExpected, const std::string& name, unsigned int& rejected, unsigned int& lost)
    {
        const std::string bytes = FileBytes(session.FileName());
        if (!ReadLog(bytes, nullptr).accepted) {
            ++rejected;
            scratch.Keep(bytes, name + ": rejected");
        } else if (session.DocumentNumber(bytes, progress.done) < 0 || !endedAsExpected) {
            ++lost;
            scratch.Keep(bytes, name + ": a flushed call is missing, or the process ended otherwise");
        }
    }

    /// Mounts a tmpfs in a name space of this process's own and goes there.
    static void MountSmall(unsigned int pages)
    {
        const std::string size = "size=" + std::to_string(pages * pageSize);
        std::filesystem::create_directory("small");
        const bool alone = unshare(CLONE_NEWNS) == 0 || unshare(CLONE_NEWUSER | CLONE_NEWNS) == 0;
        if (!alone || mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
            mount("tmpfs", "small", "tmpfs", 0, size.c_str()) != 0) {
            throw std::runtime_error("can't mount");
        }
        std::filesystem::current_path("small");
    }

    static bool MayMount()
    {
        return InChild([] { MountSmall(1); }).manner == ChildEnd::Manner::Returned;
    }

    Session& session;
    Scratch& scratch;
    Progress& progress;
};

}  // namespace

int main(int argc, char** argv)
{
    const Options options(argc, argv,
                          {{"count", "60"}, {"pages", "44"}, {"seed", "1"}, {"directory", "."}});
    Scratch scratch(options.Text("directory"));
    bool good = true;
    for (const Writer writer : {Writer::Generator, Writer::Layer}) {
        std::printf("%s: ", writer == Writer::Generator ? "generator" : "layer");
        Session session("trace", Load(options.Number("seed"), 100, 100'000), 30, writer);
        FullDisk disk(session, scratch);
        good = disk.LimitFileSize(options.Number("count")) && good;
        good = disk.FillFileSystem(options.Number("pages")) && good;
    }
    return good ? 0 : 1;
}
