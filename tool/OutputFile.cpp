// Writes without a name and gives it at the end. Tested by tests/tool/OutputFileTest.cpp and
// tests/tool/RecoverTest.cpp.

#include "OutputFile.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace ScrivelTool
{

namespace
{

std::string ErrorText(int number)
{
    return std::generic_category().message(number);
}

/// The rights that a new file has, which mkostemp doesn't give.
mode_t RightsOfNewFile()
{
    const mode_t mask = umask(0);
    umask(mask);
    return 0666 & ~mask;
}

/// folder/ of folder/name; empty without a slash.
std::string FolderOf(const std::string& path)
{
    return path.substr(0, path.rfind('/') + 1);
}

/// folder/.name.XXXXXX
std::string HiddenPattern(const std::string& path)
{
    const std::string folder = FolderOf(path);
    return folder + "." + path.substr(folder.size()) + ".XXXXXX";
}

/// By which a file that has no name can be given one.
std::string LinkTo(int descriptor)
{
    return "/proc/self/fd/" + std::to_string(descriptor);
}

/// -1 where the file system has no files without a name, or they couldn't be given one.
int OpenUnnamed(const std::string& path)
{
    const std::string folder = FolderOf(path);
    const int descriptor =
        open(folder.empty() ? "." : folder.c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, 0600);
    if (descriptor >= 0 && access(LinkTo(descriptor).c_str(), F_OK) != 0) {
        close(descriptor);
        return -1;
    }
    return descriptor;
}

bool IsSameFile(const std::string& log, const std::string& output)
{
    struct stat one
    {
    };
    struct stat other
    {
    };
    const bool isThere = log == "-" ? fstat(STDIN_FILENO, &one) == 0 : stat(log.c_str(), &one) == 0;
    return isThere && stat(output.c_str(), &other) == 0 && one.st_dev == other.st_dev &&
           one.st_ino == other.st_ino;
}

}  // namespace

std::unique_ptr<OutputFile> OutputFile::Make(const std::string& path, Existing existing,
                                             const std::vector<std::string>& logs, std::string& error)
{
    // Elsewhere a hyphen is a stream; the messages of those who write a file have standard output.
    if (path == "-") {
        error = "what is written is a file; ./- if it shall bear that name";
        return nullptr;
    }
    if (std::any_of(logs.begin(), logs.end(),
                    [&](const std::string& log) { return IsSameFile(log, path); })) {
        error = "a log is never written in place; name another file";
        return nullptr;
    }
    struct stat status
    {
    };
    const bool isThere = stat(path.c_str(), &status) == 0;
    if (isThere && S_ISDIR(status.st_mode)) {
        error = ErrorText(EISDIR);
        return nullptr;
    }
    if (isThere && !S_ISREG(status.st_mode)) {
        const int descriptor = open(path.c_str(), O_WRONLY | O_CLOEXEC | O_NOCTTY);
        if (descriptor < 0) {
            error = ErrorText(errno);
            return nullptr;
        }
        return std::unique_ptr<OutputFile>(new OutputFile(path, existing, Kind::NoFile, descriptor, {}));
    }
    if (isThere && existing == Existing::Keep) {
        error = "there is such a file already; --force replaces it";
        return nullptr;
    }

    // What a link names is replaced, not the link.
    std::string target = path;
    if (char* const resolved = isThere ? realpath(path.c_str(), nullptr) : nullptr; resolved != nullptr) {
        target = resolved;
        std::free(resolved);
    }
    Kind kind = Kind::Unnamed;
    std::string hidden;
    int descriptor = OpenUnnamed(target);
    if (descriptor < 0) {
        kind = Kind::Hidden;
        hidden = HiddenPattern(target);
        descriptor = mkostemp(hidden.data(), O_CLOEXEC);
    }
    if (descriptor < 0) {
        error = ErrorText(errno);
        return nullptr;
    }
    fchmod(descriptor, isThere ? status.st_mode & 07777 : RightsOfNewFile());
    return std::unique_ptr<OutputFile>(
        new OutputFile(std::move(target), existing, kind, descriptor, std::move(hidden)));
}

OutputFile::OutputFile(std::string itsPath, Existing itsExisting, Kind itsKind, int itsDescriptor,
                       std::string itsHiddenPath)
    : path(std::move(itsPath)), existing(itsExisting), kind(itsKind), descriptor(itsDescriptor),
      hiddenPath(std::move(itsHiddenPath))
{
}

OutputFile::~OutputFile()
{
    close(descriptor);
    if (!hiddenPath.empty()) {
        unlink(hiddenPath.c_str());
    }
}

bool OutputFile::Write(std::string_view bytes)
{
    while (!bytes.empty() && error.empty()) {
        const ssize_t count = write(descriptor, bytes.data(), bytes.size());
        if (count < 0 && errno != EINTR) {
            return Fail(errno);
        }
        if (count > 0) {
            bytes.remove_prefix(std::size_t(count));
            written += std::uint64_t(count);
        }
    }
    return error.empty();
}

bool OutputFile::Finish()
{
    if (!error.empty() || kind == Kind::NoFile) {
        return error.empty();
    }
    // Some file systems tell only now that there was no room.
    if (fsync(descriptor) != 0 || !Name()) {
        return Fail(errno);
    }
    return true;
}

/// A file that came under the name meanwhile is kept too: a link never replaces one. Where the file
/// system has no links, it is replaced.
bool OutputFile::Name()
{
    const std::string unnamed = kind == Kind::Unnamed ? LinkTo(descriptor) : hiddenPath;
    if (existing == Existing::Keep &&
        linkat(AT_FDCWD, unnamed.c_str(), AT_FDCWD, path.c_str(), AT_SYMLINK_FOLLOW) == 0) {
        return true;
    }
    const bool mayRename = existing == Existing::Replace || errno == EPERM || errno == EOPNOTSUPP;
    if (!mayRename || !Hide() || rename(hiddenPath.c_str(), path.c_str()) != 0) {
        return false;
    }
    hiddenPath.clear();
    return true;
}

/// Gives a file that has no name a hidden one: a link can't replace a file, renaming can.
bool OutputFile::Hide()
{
    constexpr int mostTries = 100;
    for (int i = 0; hiddenPath.empty() && i < mostTries; ++i) {
        std::string hidden = HiddenPattern(path);
        const int taken = mkostemp(hidden.data(), O_CLOEXEC);  // tells a name that is free
        if (taken < 0) {
            return false;
        }
        close(taken);
        unlink(hidden.c_str());
        if (linkat(AT_FDCWD, LinkTo(descriptor).c_str(), AT_FDCWD, hidden.c_str(), AT_SYMLINK_FOLLOW) ==
            0) {
            hiddenPath = hidden;
        } else if (errno != EEXIST) {
            return false;
        }
    }
    return !hiddenPath.empty();
}

bool OutputFile::Fail(int number)
{
    if (error.empty()) {
        error = ErrorText(number);
    }
    return false;
}

}  // namespace ScrivelTool
