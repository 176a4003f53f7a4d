// Fails every system call of a log in turn, once and from then on, and looks at the file it leaves.
//
//     crash_failed_system_calls --count 5000
//
// A call fails with ENOSPC, EIO or EINTR, or a write writes one byte or half of what it was given. Logs
// of further seeds follow until there have been `count` cases, every second one through the layer, and
// every third one to outlive the machine: of those the synchronisations fail, too. The disk itself is not
// waited for.
//
// Fails when the file isn't the document of the last flush that succeeded or of a later one; when a short
// write, or one interrupted call, costs anything at all; when logging throws, hangs or ends the process.

#include "crash/LogReader.h"
#include "crash/Options.h"
#include "crash/Scratch.h"
#include "crash/Session.h"
#include "crash/Shared.h"

#include "support/Platform.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

#include <fcntl.h>

using namespace ScrivelTest;

namespace
{

enum class Kind
{
    Open,
    OpenFolder,
    Status,
    Seek,
    Write,
    Truncate,
    SynchroniseData,
    Synchronise,
    Link,
    Close
};

/// Of those that are repeated when a signal has interrupted them.
bool IsRepeated(Kind kind)
{
    return kind == Kind::OpenFolder || kind == Kind::Write || kind == Kind::Truncate ||
           kind == Kind::SynchroniseData || kind == Kind::Synchronise;
}

struct Fault
{
    const char* name;
    int error;                ///< 0: a short write
    std::size_t divisor = 0;  ///< of the length of a write; 0: one byte
};

constexpr Fault faults[] = {
    {"ENOSPC", ENOSPC}, {"EIO", EIO}, {"EINTR", EINTR}, {"one byte written", 0}, {"half written", 0, 2},
};

/// The system calls of a log, counted and failed as long as this lives.
class SystemCalls
{
public:
    /// From number `first` on, once or always.
    void Break(const Fault& with, std::size_t first, bool always)
    {
        fault = &with;
        begin = first;
        end = always ? std::string::npos : first + 1;
    }

    const std::vector<Kind>& Made() const { return made; }

private:
    bool Fails(Kind kind)
    {
        const std::size_t number = made.size();
        made.push_back(kind);
        if (number < begin || number >= end || (kind != Kind::Write && fault->error == 0)) {
            return false;
        }
        errno = fault->error;
        return true;
    }

    std::size_t Shortened(std::size_t size) const
    {
        return fault->divisor == 0 ? std::min<std::size_t>(size, 1)
                                   : std::max<std::size_t>(size / fault->divisor, 1);
    }

    std::vector<Kind> made;
    const Fault* fault = nullptr;
    std::size_t begin = std::string::npos;
    std::size_t end = std::string::npos;

    const StubOf<& Platform::open> opening =
        platform.open.Use([this](const char* name, int flags, mode_t mode) {
            const bool isFolder = (flags & O_TMPFILE) == O_DIRECTORY;
            return Fails(isFolder ? Kind::OpenFolder : Kind::Open)
                       ? -1
                       : platform.open.Real(name, flags, mode);
        });
    const StubOf<& Platform::fstat> asking = platform.fstat.Use([this](int file, struct stat* status) {
        return Fails(Kind::Status) ? -1 : platform.fstat.Real(file, status);
    });
    const StubOf<& Platform::lseek> seeking =
        platform.lseek.Use([this](int file, off_t offset, int whence) {
            return Fails(Kind::Seek) ? -1 : platform.lseek.Real(file, offset, whence);
        });
    const StubOf<& Platform::ftruncate> cutting = platform.ftruncate.Use([this](int file, off_t size) {
        return Fails(Kind::Truncate) ? -1 : platform.ftruncate.Real(file, size);
    });
    const StubOf<& Platform::fdatasync> synchronisingData =
        platform.fdatasync.Use([this](int) { return Fails(Kind::SynchroniseData) ? -1 : 0; });
    const StubOf<& Platform::fsync> synchronising =
        platform.fsync.Use([this](int) { return Fails(Kind::Synchronise) ? -1 : 0; });
    const StubOf<& Platform::linkat> linking = platform.linkat.Use(
        [this](int fromFolder, const char* from, int toFolder, const char* to, int flags) {
            return Fails(Kind::Link) ? -1 : platform.linkat.Real(fromFolder, from, toFolder, to, flags);
        });
    const StubOf<& Platform::close> closing = platform.close.Use([this](int file) {
        const bool fails = Fails(Kind::Close);
        const int error = errno;
        const int result = platform.close.Real(file);  // the descriptor is gone in any case
        errno = error;
        return fails ? -1 : result;
    });
    const StubOf<& Platform::pwrite> writing = platform.pwrite.Use(
        [this](int file, const void* bytes, std::size_t size, off_t offset) -> ssize_t {
            const bool broken = Fails(Kind::Write);
            if (broken && fault->error != 0) {
                return -1;
            }
            return platform.pwrite.Real(file, bytes, broken ? Shortened(size) : size, offset);
        });
};

struct Figures
{
    unsigned int cases = 0;
    unsigned int lost = 0;
    unsigned int hung = 0;
    unsigned int threwOrAborted = 0;
};

class Trial
{
public:
    Trial(Session& sessionToBreak, Progress& told, Figures& counted, Scratch& keeper)
        : session(sessionToBreak), progress(told), figures(counted), scratch(keeper)
    {
        session.Documents();
        const SystemCalls calls;
        session.Run(progress);
        made = calls.Made();
    }

    std::size_t Calls() const { return made.size(); }

    void Break(std::size_t call, const Fault& fault, bool always)
    {
        const bool isWrite = made[call] == Kind::Write;
        if (fault.error == 0 && !isWrite) {
            return;
        }
        std::filesystem::remove(session.FileName());
        progress.done = 0;
        const ChildEnd end = InChild([&] {
            SystemCalls calls;
            calls.Break(fault, call, always);
            session.Run(progress);
        });
        ++figures.cases;

        const std::string name = std::string("system call ") + std::to_string(call) + ", " + fault.name +
                                 (always ? " from then on" : " once");
        if (end.manner != ChildEnd::Manner::Returned) {
            const bool hung = end.manner == ChildEnd::Manner::Hung;
            ++(hung ? figures.hung : figures.threwOrAborted);
            std::fprintf(stderr, "%s: %s\n", name.c_str(), hung ? "hung" : "threw or aborted");
        }
        const bool harmless =
            fault.error == 0 || (fault.error == EINTR && !always && IsRepeated(made[call]));
        const auto last = static_cast<unsigned int>(session.Documents().size() - 1);
        const std::string bytes = FileBytes(session.FileName());
        if (session.DocumentNumber(bytes, harmless ? last : progress.done.load()) < 0) {
            ++figures.lost;
            scratch.Keep(bytes, name);
        }
    }

private:
    Session& session;
    Progress& progress;
    Figures& figures;
    Scratch& scratch;
    std::vector<Kind> made;
};

}  // namespace

int main(int argc, char** argv)
{
    const Options options(argc, argv, {{"count", "600"}, {"seed", "1"}, {"directory", "."}});
    Scratch scratch(options.Text("directory"));
    Progress& progress = Shared<Progress>();
    Figures figures;
    unsigned int logs = 0;
    unsigned int forMachine = 0;
    for (unsigned int seed = options.Number("seed"); figures.cases < options.Number("count");
         ++seed, ++logs) {
        const Writer writer = logs % 2 == 0 ? Writer::Generator : Writer::Layer;
        const bool outlivesMachine = logs % 3 == 1;
        forMachine += outlivesMachine ? 1 : 0;
        Session session("trace", Load(seed, 100, 8'000), 12, writer,
                        outlivesMachine ? Scrivel2::Durability::Machine : Scrivel2::Durability::Process);
        Trial trial(session, progress, figures, scratch);
        for (std::size_t call = 0; call < trial.Calls(); ++call) {
            for (const Fault& fault : faults) {
                trial.Break(call, fault, false);
                trial.Break(call, fault, true);
            }
        }
    }
    std::printf("system calls of %u logs, %u of them to outlive the machine, failed in turn: %u cases: "
                "%u lost a flushed call, %u hung, %u threw or aborted\n",
                logs, forMachine, figures.cases, figures.lost, figures.hung, figures.threwOrAborted);
    return figures.lost == 0 && figures.hung == 0 && figures.threwOrAborted == 0 ? 0 : 1;
}
