// Counts what is asked of operator new, and refuses some of it. Used by the programs whose allocations
// fail.

#include "crash/Allocations.h"

#include <cstddef>
#include <cstdlib>
#include <new>

ScrivelTest::Allocations ScrivelTest::allocations;

namespace
{

void* Allocate(std::size_t size)
{
    using ScrivelTest::allocations;
    const unsigned long number = ++allocations.made;
    const bool fails = number >= allocations.failFrom && number <= allocations.failUpTo;
    void* const memory = fails ? nullptr : std::malloc(size == 0 ? 1 : size);
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    return memory;
}

}  // namespace

// The forms that don't throw are made of these.

void* operator new(std::size_t size)
{
    return Allocate(size);
}

void* operator new[](std::size_t size)
{
    return Allocate(size);
}

void operator delete(void* memory) noexcept
{
    std::free(memory);
}

void operator delete[](void* memory) noexcept
{
    std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept
{
    std::free(memory);
}

void operator delete[](void* memory, std::size_t) noexcept
{
    std::free(memory);
}
