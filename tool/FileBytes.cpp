// Reads a file in places. Tested by tests/tool/RecoverTest.cpp, tests/tool/CutTest.cpp and
// tests/tool/ReportTest.cpp.

#include "FileBytes.h"

#include <cerrno>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace ScrivelTool
{

using namespace ScrivelReader;

FileBytes::FileBytes(int itsDescriptor, const std::string& itsPath, Terminal& itsTerminal)
    : descriptor(itsDescriptor), path(itsPath), terminal(itsTerminal)
{
    struct stat status
    {
    };
    if (fstat(descriptor, &status) == 0) {
        size = std::uint64_t(status.st_size);
    }
}

FileBytes::FileBytes(const LogInput& input, const std::string& itsPath, Terminal& itsTerminal)
    : FileBytes(*input.Descriptor(), itsPath, itsTerminal)
{
    cutOff = input.IsCutOff() ? input.Error() : "";
}

std::optional<std::size_t> FileBytes::ReadAt(std::uint64_t offset, char* buffer, std::size_t count)
{
    ssize_t got = 0;
    do {
        got = pread(descriptor, buffer, count, off_t(offset));
    } while (got < 0 && errno == EINTR);
    if (got < 0) {
        error = std::generic_category().message(errno);
        return {};
    }
    terminal.Progress(path, offset, size);
    return std::size_t(got);
}

}  // namespace ScrivelTool
