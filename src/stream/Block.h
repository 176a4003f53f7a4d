// Memory that grows and is never given back. Tested by tests/stream/LogBufferTest.cpp.

#ifndef SCRIVEL_STREAM_BLOCK_H
#define SCRIVEL_STREAM_BLOCK_H

#include <cstddef>
#include <memory>

namespace Scrivel2
{

class Block
{
public:
    /// What the text of a flush, or the end of a file, may take; more than that goes through the file.
    static constexpr std::size_t mostInMemory = 64 * 1024 * 1024;

    /// What a text's memory has at first.
    static constexpr std::size_t firstCapacity = 16 * 1024;

    /// Room after the capacity, for what a stepped flush writes after its text.
    static constexpr std::size_t spare = 4096;

    /// Makes the capacity `wanted` at least and keeps the first `used` bytes; false without memory.
    bool Grow(std::size_t wanted, std::size_t used);

    char* Bytes() const { return bytes.get(); }
    std::size_t Capacity() const { return capacity; }

private:
    std::unique_ptr<char[]> bytes;
    std::size_t capacity = 0;
};

}  // namespace Scrivel2

#endif
