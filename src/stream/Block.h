// Memory that grows and is never given back, and that lies within its pages as its bytes lie within those
// of the file. Tested by tests/stream/LogBufferTest.cpp.

#ifndef SCRIVEL_STREAM_BLOCK_H
#define SCRIVEL_STREAM_BLOCK_H

#include <cstddef>
#include <memory>
#include <utility>

#include <sys/types.h>

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

    static constexpr off_t pageSize = 4096;

    /// Makes the capacity `wanted` at least and keeps the first `used` bytes; false without memory.
    bool Grow(std::size_t wanted, std::size_t used);

    /// Lets the bytes begin where that place of the file has its place within a page, so that no page of
    /// the file is written from two pages of memory: the kernel stops a write between them, too, when it
    /// has to bring in the second one and the process is killed. The bytes themselves stay where they
    /// are.
    void AlignTo(off_t place)
    {
        phase = static_cast<std::size_t>(place) % static_cast<std::size_t>(pageSize);
    }

    void Swap(Block& other)
    {
        memory.swap(other.memory);
        std::swap(pages, other.pages);
        std::swap(phase, other.phase);
        std::swap(capacity, other.capacity);
    }

    char* Bytes() const { return pages + phase; }
    std::size_t Capacity() const { return capacity; }

private:
    std::unique_ptr<char[]> memory;
    char* pages = nullptr;  // the first page that begins within it
    std::size_t phase = 0;
    std::size_t capacity = 0;
};

}  // namespace Scrivel2

#endif
