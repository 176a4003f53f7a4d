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
    std::unique_ptr<char[]> memory(new (std::nothrow) char[enlarged + spare]);
    if (memory == nullptr) {
        return false;
    }
    if (used > 0) {
        std::memcpy(memory.get(), bytes.get(), used);
    }
    bytes = std::move(memory);
    capacity = enlarged;
    return true;
}

}  // namespace Scrivel2
