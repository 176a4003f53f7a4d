// The bytes at the end of the file, as the last flush left them, that memory still has: what the next
// flush replaces is known without a look at the file, and is put back when that flush fails. Tested by
// tests/stream/FileTailTest.cpp.

#ifndef SCRIVEL_STREAM_FILETAIL_H
#define SCRIVEL_STREAM_FILETAIL_H

#include "stream/Block.h"
#include "stream/OpenFile.h"

#include <cstddef>
#include <optional>
#include <string_view>

#include <sys/types.h>

namespace Scrivel2
{

class FileTail
{
public:
    explicit FileTail(OpenFile& tailed) : file(tailed) {}

    /// Gets the memory that most tails do with; false when there is none.
    bool Reserve() { return block.Grow(Block::firstCapacity, 0); }

    /// Forgets all: the file is empty.
    void Clear() { start = end = 0; }

    off_t Start() const { return start; }
    off_t End() const { return end; }  ///< of the file

    /// Makes memory hold the file's bytes from `from` on; false when they are too many or can't be read.
    bool ReachBackTo(off_t from) { return from >= start || ReadBackTo(from); }

    /// The bytes in [from, to), which memory holds.
    std::string_view Part(off_t from, off_t to) const
    {
        return {block.Bytes() + (from - start), static_cast<std::size_t>(to - from)};
    }
    std::string_view From(off_t from) const { return Part(from, end); }

    /// Where the last markup begins that has its first byte in [from, to]; nothing when memory has none
    /// there. What looks like markup within comments, instructions and sections is none.
    std::optional<off_t> LastMarkup(off_t from, off_t to) const;

    /// Copies what the file has in [from, to), a place that memory reaches back to; zeros after its end.
    void Copy(off_t from, off_t to, char* out) const;

    /// After a flush: the text that now ends the file, [newStart, newEnd), in exchange for the memory
    /// that the tail had.
    void Take(Block& text, off_t newStart, off_t newEnd);

    /// After a failed write: writes the bytes from `from` on anew and cuts off what follows them. When
    /// they can't be written nothing is cut off, as what follows them may be what makes the file a
    /// document.
    void PutBack(off_t from);

    /// After a failed write that has not touched the tail.
    void CutOffWhatFollows() { file.CutAt(end); }

private:
    bool ReadBackTo(off_t from);

    OpenFile& file;
    Block block;  // holds [start, end)
    off_t start = 0;
    off_t end = 0;
};

}  // namespace Scrivel2

#endif
