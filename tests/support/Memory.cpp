// The operator new that a test can make refuse, in the place of the one of the standard library.

#include "support/Memory.h"

#include <new>

namespace ScrivelTest
{

bool (*refuseMemory)(std::size_t) = nullptr;

}  // namespace ScrivelTest

void* operator new[](std::size_t size, const std::nothrow_t&) noexcept
{
    if (ScrivelTest::refuseMemory != nullptr && ScrivelTest::refuseMemory(size)) {
        return nullptr;
    }
    try {
        return operator new[](size);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}
