// How a block grows: doubling, and without an exception when memory ends. Tested by
// tests/stream/LogBufferTest.cpp.

#include "stream/Block.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <utility>

namespace Scrivel2
{

bool Block::Grow(std::size_t wanted, std::size_t used)
{
    if (wanted <= capacity) {
        return true;
    }
    const std::size_t enlarged = std::max(wanted, 2 * capacity);
    constexpr auto page = static_cast<std::size_t>(pageSize);
    std::unique_ptr<char[]> larger(new (std::nothrow) char[2 * page + enlarged + spare]);
    if (larger == nullptr) {
        return false;
    }
    void* first = larger.get();
    std::size_t length = page + 1;
    char* const largerPages = static_cast<char*>(std::align(page, 1, first, length));
    if (used > 0) {
        std::memcpy(largerPages + phase, Bytes(), used);
    }
    memory = std::move(larger);
    pages = largerPages;
    capacity = enlarged;
    return true;
}

}  // namespace Scrivel2
