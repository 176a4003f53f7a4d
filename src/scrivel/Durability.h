// What a log outlives as a document, and what that takes of a folder. Tested by
// tests/stream/SyncedFlushTest.cpp, tests/stream/SynchronisedFolderTest.cpp and
// tests/layer/DurabilityTest.cpp.

#ifndef SCRIVEL_SCRIVEL_DURABILITY_H
#define SCRIVEL_SCRIVEL_DURABILITY_H

#include <string>

namespace Scrivel2
{

enum class Durability
{
    Process,  ///< the death of its process
    Machine   ///< that of the machine, too: each step of a flush waits for the disk
};

/// Waits until the disk has the names in a folder; false, with the reason in errno, when it doesn't.
[[gnu::visibility("default")]] bool SynchroniseFolder(const std::string& folder);

}  // namespace Scrivel2

#endif
