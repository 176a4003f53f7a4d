// Writes beside the name and renames. Tested by tests/tool/RecoverTest.cpp.

#include "OutputFile.h"

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

/// folder/.name.XXXXXX
std::string HiddenPattern(const std::string& path)
{
    const std::size_t name = path.rfind('/') + 1;  // 0 when there is no slash
    return path.substr(0, name) + "." + path.substr(name) + ".XXXXXX";
}

}  // namespace

std::unique_ptr<OutputFile> OutputFile::Make(const std::string& path, Existing existing,
                                             std::string& error)
{
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
        return std::unique_ptr<OutputFile>(new OutputFile(path, existing, descriptor, {}));
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
    std::string hidden = HiddenPattern(target);
    const int descriptor = mkostemp(hidden.data(), O_CLOEXEC);
    if (descriptor < 0) {
        error = ErrorText(errno);
        return nullptr;
    }
    fchmod(descriptor, isThere ? status.st_mode & 07777 : RightsOfNewFile());
    return std::unique_ptr<OutputFile>(
        new OutputFile(std::move(target), existing, descriptor, std::move(hidden)));
}

OutputFile::OutputFile(std::string itsPath, Existing itsExisting, int itsDescriptor,
                       std::string itsHiddenPath)
    : path(std::move(itsPath)), existing(itsExisting), descriptor(itsDescriptor),
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
    if (!error.empty() || hiddenPath.empty()) {
        return error.empty();
    }
    // Some file systems tell only now that there was no room.
    if (fsync(descriptor) != 0 || !Rename()) {
        return Fail(errno);
    }
    return true;
}

/// A file that came under the name meanwhile is kept too: a link never replaces one. Where the file
/// system has no links, it is replaced.
bool OutputFile::Rename()
{
    if (existing == Existing::Keep && link(hiddenPath.c_str(), path.c_str()) == 0) {
        return true;
    }
    const bool mayRename = existing == Existing::Replace || errno == EPERM || errno == EOPNOTSUPP;
    if (!mayRename || rename(hiddenPath.c_str(), path.c_str()) != 0) {
        return false;
    }
    hiddenPath.clear();
    return true;
}

bool OutputFile::Fail(int number)
{
    if (error.empty()) {
        error = ErrorText(number);
    }
    return false;
}

}  // namespace ScrivelTool
