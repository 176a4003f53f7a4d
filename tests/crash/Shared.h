// Memory that a process shares with the children it forks, and can still read when they are dead.

#ifndef SCRIVEL_TESTS_CRASH_SHARED_H
#define SCRIVEL_TESTS_CRASH_SHARED_H

#include <new>

#include <sys/mman.h>

namespace ScrivelTest
{

/// A record in shared memory, all zeros at first; it lives as long as the program.
template <typename Record>
Record& Shared()
{
    void* const memory =
        mmap(nullptr, sizeof(Record), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED) {
        throw std::bad_alloc();
    }
    return *new (memory) Record{};
}

}  // namespace ScrivelTest

#endif
