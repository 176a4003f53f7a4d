// How many forks this process is away from the first. Tested by the forked children of
// tests/layer/LayerTrapsTest.cpp.

#include "scrivel/ForkCount.h"

#include <atomic>

#include <pthread.h>

namespace Scrivel2::Layer
{
namespace
{

std::atomic<unsigned int> forkCount{0};

}  // namespace

unsigned int ForkCount()
{
    static const int registered =
        pthread_atfork(nullptr, nullptr, [] { forkCount.fetch_add(1, std::memory_order_relaxed); });
    static_cast<void>(registered);
    return forkCount.load(std::memory_order_relaxed);
}

}  // namespace Scrivel2::Layer
