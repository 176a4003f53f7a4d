// How many forks this process is away from the first. Tested by the children of
// tests/layer/LayerTrapsTest.cpp.

#include "scrivel/ForkCount.h"

#include <atomic>
#include <new>

#include <pthread.h>
#include <sys/mman.h>
#include <unistd.h>

namespace Scrivel2::Layer
{
namespace
{

using Count = std::atomic<unsigned int>;

Count processes{0};  // this one and those that it was forked from

/// The number of this process; 0 until it has been asked for, in each process anew: the kernel empties
/// this memory in every child, also one that no handler of a fork knows of.
Count& OwnNumber()
{
    static Count withoutSuchMemory{0};
    static Count* const number = []() -> Count* {
        const auto size = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
        void* const page =
            mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (page != MAP_FAILED && madvise(page, size, MADV_WIPEONFORK) == 0) {
            return new (page) Count{0};
        }
        pthread_atfork(nullptr, nullptr, [] { withoutSuchMemory = 0; });
        return &withoutSuchMemory;
    }();
    return *number;
}

}  // namespace

unsigned int ForkCount()
{
    Count& own = OwnNumber();
    const unsigned int known = own.load(std::memory_order_relaxed);
    if (known != 0) {
        return known;
    }
    unsigned int none = 0;
    const unsigned int next = ++processes;
    return own.compare_exchange_strong(none, next) ? next : none;
}

}  // namespace Scrivel2::Layer
