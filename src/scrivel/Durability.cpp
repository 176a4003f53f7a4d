// The names in a folder, on the disk. Tested by tests/stream/SynchronisedFolderTest.cpp and
// tests/layer/DurabilityTest.cpp.

#include "scrivel/Durability.h"

#include "stream/Uninterrupted.h"

#include <cerrno>

#include <fcntl.h>
#include <unistd.h>

namespace Scrivel2
{

bool SynchroniseFolder(const std::string& folder)
{
    const int descriptor =
        Uninterrupted([&] { return open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC); });
    if (descriptor < 0) {
        return false;
    }
    const bool done = Uninterrupted([&] { return fsync(descriptor); }) == 0;
    const int reason = errno;
    close(descriptor);
    errno = reason;
    return done;
}

}  // namespace Scrivel2
