#include "crash/Progress.h"

#include <new>

#include <sys/mman.h>

namespace ScrivelTest
{

Progress& Progress::Shared()
{
    void* const memory =
        mmap(nullptr, sizeof(Progress), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED) {
        throw std::bad_alloc();
    }
    return *new (memory) Progress{};
}

}  // namespace ScrivelTest
