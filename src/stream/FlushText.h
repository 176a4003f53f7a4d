// The text of a flush and its place in the file; what pages are to it.

#ifndef SCRIVEL_STREAM_FLUSHTEXT_H
#define SCRIVEL_STREAM_FLUSHTEXT_H

#include "stream/Block.h"

#include <cstddef>
#include <string_view>

#include <sys/types.h>

namespace Scrivel2
{

/// What a flush brings to [start, end) of the file. It lies in a Block, with the spare room of that after
/// it.
struct FlushText
{
    char* At(off_t offset) const { return bytes + (offset - start); }
    std::string_view Part(off_t from, off_t to) const
    {
        return {At(from), static_cast<std::size_t>(to - from)};
    }
    std::string_view All() const { return Part(start, end); }

    char* bytes;
    off_t start;
    off_t end;
};

/// The end of the page that the byte at `offset` lies in.
constexpr off_t PageEnd(off_t offset)
{
    return (offset / Block::pageSize + 1) * Block::pageSize;
}

constexpr bool SpansPages(off_t from, off_t to)
{
    return to > PageEnd(from);
}

}  // namespace Scrivel2

#endif
