// The system calls on the file under a log. Tested by tests/stream/OpenFileTest.cpp and
// tests/stream/FailingWritesTest.cpp.

#include "stream/OpenFile.h"

#include "stream/FlushText.h"
#include "stream/Uninterrupted.h"

#include <cassert>
#include <cerrno>
#include <string>
#include <utility>

#include <fcntl.h>
#include <pthread.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Scrivel2
{
namespace
{

/// The descriptor, or another of the same file when it has the number of a standard stream: where one was
/// closed, what the host prints would go into the log. Negative, with the reason in errno, when there is
/// none.
int AboveStandardStreams(int descriptor)
{
    constexpr int least = STDERR_FILENO + 1;
    if (descriptor < 0 || descriptor >= least) {
        return descriptor;
    }
    const int moved = fcntl(descriptor, F_DUPFD_CLOEXEC, least);
    const int reason = errno;
    close(descriptor);
    errno = reason;
    return moved;
}

std::string FolderOf(const std::string& name)
{
    const auto length = name.rfind('/') + 1;  // 0 without a slash
    return name.substr(0, length) + ".";
}

/// Where the process finds its open file.
std::string PlaceOf(int descriptor)
{
    return "/proc/self/fd/" + std::to_string(descriptor);
}

/// A file without a name in the folder that `name` is to be in; negative, with the reason in errno, when
/// there can be none: EOPNOTSUPP when that is for no other reason than that it has no name.
int OpenUnnamed(const std::string& name)
{
    const std::string folder = FolderOf(name);
    const int descriptor =
        AboveStandardStreams(open(folder.c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, 0666));
    if (descriptor < 0) {
        if (errno == EISDIR) {
            errno = EOPNOTSUPP;  // a kernel that doesn't know such files
        }
        return descriptor;
    }
    if (access(PlaceOf(descriptor).c_str(), F_OK) != 0) {
        close(descriptor);
        errno = EOPNOTSUPP;  // it could not be given a name
        return -1;
    }
    return descriptor;
}

}  // namespace

OpenFile::~OpenFile()
{
    if (IsOpen()) {
        Close();
    }
}

bool OpenFile::Open(const char* name)
{
    assert(!IsOpen());
    // For reading too, so that the end of the file can be looked up when it is no longer in memory.
    // O_NONBLOCK is for FIFOs and O_NOCTTY for terminals, which are turned away.
    constexpr int flags = O_CREAT | O_TRUNC | O_CLOEXEC | O_NONBLOCK | O_NOCTTY;
    descriptor = open(name, O_RDWR | flags, 0666);
    if (!IsOpen() && errno == EACCES) {
        descriptor = open(name, O_WRONLY | flags, 0666);
    }
    descriptor = AboveStandardStreams(descriptor);
    if (!IsOpen()) {
        return false;
    }
    if (lseek(descriptor, 0, SEEK_CUR) < 0 || !Identify()) {
        const int reason = errno;
        close(std::exchange(descriptor, -1));
        errno = reason;
        return false;
    }
    return true;
}

bool OpenFile::Create(const char* name)
{
    assert(!IsOpen());
    newName = name;
    state = Name::ToBeGiven;
    descriptor = OpenUnnamed(newName);
    if (!IsOpen() && errno == EOPNOTSUPP) {
        state = Name::ToBeKept;
        errno = 0;
        descriptor = AboveStandardStreams(open(name, O_CREAT | O_EXCL | O_RDWR | O_CLOEXEC, 0666));
    }
    if (IsOpen() && !Identify()) {
        const int reason = errno;
        Close();
        errno = reason;
    }
    return IsOpen();
}

bool OpenFile::Identify()
{
    struct stat status;
    if (fstat(descriptor, &status) != 0) {
        return false;
    }
    device = status.st_dev;
    inode = status.st_ino;
    return true;
}

bool OpenFile::IsAsLeft(off_t end) const
{
    struct stat status;
    return fstat(descriptor, &status) == 0 && status.st_dev == device && status.st_ino == inode &&
           (!S_ISREG(status.st_mode) || status.st_size == end);
}

bool OpenFile::GiveFirstName()
{
    if (state == Name::ToBeGiven) {
        const std::string place = PlaceOf(descriptor);
        if (linkat(AT_FDCWD, place.c_str(), AT_FDCWD, newName.c_str(), AT_SYMLINK_FOLLOW) != 0) {
            return false;
        }
    }
    state = Name::ToBeKept;
    if (synchronises && !SynchroniseName()) {
        return false;
    }
    state = Name::Given;
    return true;
}

/// The number of its names lies with the file, the name in the folder.
bool OpenFile::SynchroniseName() const
{
    if (Uninterrupted([&] { return fsync(descriptor); }) != 0) {
        return false;
    }
    return SynchroniseFolder(FolderOf(newName));
}

/// Removes the file, unless another has its name by now.
void OpenFile::Remove()
{
    struct stat made;
    struct stat found;
    if (fstat(descriptor, &made) == 0 && lstat(newName.c_str(), &found) == 0 &&
        made.st_dev == found.st_dev && made.st_ino == found.st_ino) {
        unlink(newName.c_str());
    }
}

bool OpenFile::Close()
{
    assert(IsOpen() && change == nullptr);
    if (state == Name::ToBeKept) {
        Remove();
    }
    state = Name::Given;
    return close(std::exchange(descriptor, -1)) == 0;
}

void OpenFile::Change::KeepSignalBack()
{
    if (!signalIsKeptBack) {
        sigset_t fileSize;
        sigemptyset(&fileSize);
        sigaddset(&fileSize, SIGXFSZ);
        signalIsKeptBack = pthread_sigmask(SIG_BLOCK, &fileSize, &signalsBefore) == 0;
    }
}

bool OpenFile::Read(char* out, std::size_t length, off_t offset) const
{
    while (length > 0) {
        const ssize_t got = Uninterrupted([&] { return pread(descriptor, out, length, offset); });
        if (got <= 0) {
            return false;
        }
        out += got;
        offset += got;
        length -= static_cast<std::size_t>(got);
    }
    return true;
}

bool OpenFile::Write(std::string_view bytes, off_t offset)
{
    assert(change != nullptr);
    while (!bytes.empty()) {
        const ssize_t written =
            Uninterrupted([&] { return pwrite(descriptor, bytes.data(), bytes.size(), offset); });
        if (written <= 0) {
            return false;
        }
        bytes.remove_prefix(static_cast<std::size_t>(written));
        offset += written;
        if (!bytes.empty()) {
            change->KeepSignalBack();
        }
    }
    return !synchronises || Synchronise();
}

bool OpenFile::CutAt(off_t end)
{
    assert(change != nullptr);
    return Uninterrupted([&] { return ftruncate(descriptor, end); }) == 0 &&
           (!synchronises || Synchronise());
}

bool OpenFile::CutTrailer(off_t start, off_t end)
{
    const off_t pageEnd = PageEnd(start);
    const bool hasPages = synchronises && pageEnd < end;
    return (!hasPages || CutAt(pageEnd)) && CutAt(start);
}

/// One that has failed is not repeated: the kernel may have dropped what it could not write, and a second
/// one would go well.
bool OpenFile::Synchronise() const
{
    return Uninterrupted([&] { return fdatasync(descriptor); }) == 0;
}

}  // namespace Scrivel2
