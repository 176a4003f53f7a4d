// What stands after the end of the file while a flush is under way, and is no content: pages that are
// instructions of their own, or blank, and a trailer. Tested by tests/stream/SteppedFlushTest.cpp and
// tests/stream/HugeFlushTest.cpp.

#ifndef SCRIVEL_STREAM_STAGING_H
#define SCRIVEL_STREAM_STAGING_H

#include "stream/Block.h"
#include "stream/Cover.h"
#include "stream/FileTail.h"
#include "stream/FlushText.h"
#include "stream/OpenFile.h"

#include <string_view>

#include <sys/types.h>

namespace Scrivel2
{

class Staging
{
public:
    /// `memory` keeps what the marks cover, and is kept from flush to flush.
    Staging(OpenFile& staged, Block& memory) : file(staged), covered(memory) {}

    /// Where the first instruction begins when [from, to) is staged: at once, or on the next page when
    /// the rest of this one is too short for it; -1 when there is no room for one at all.
    static off_t PlaceOfInstruction(off_t from, off_t to);

    /// The place after the opening of an instruction at `offset`.
    static off_t AfterOpening(off_t offset);

    /// Puts down the tail from `start` on, and the opening of the instruction that follows it.
    static void PutTail(const FileTail& tail, off_t start, off_t instruction, char* out);

    /// Gets the memory for the text under the marks; false when there is none.
    bool GetMemoryFor(const FlushText& text, off_t from, std::string_view lead);

    /// Writes the text from `from`, the end of the file, on as pages that begin with `lead` and end an
    /// instruction, and the trailer after it.
    bool WriteInstructions(const FlushText& text, off_t from, std::string_view lead,
                           std::string_view trailer);

    /// Writes pages of newlines that begin with `lead` in [from, to), and the trailer after them.
    bool WriteBlank(off_t from, off_t to, std::string_view lead, std::string_view trailer);

    /// The end of the trailer, and of the file.
    off_t End() const { return end; }

    /// After a failed write: takes the tail out of the cover that stands in its place and that the
    /// trailer ends; after the tail only blank pages and the trailer are left then. Each of its steps
    /// leaves a document, as do those that have hidden the tail. False when a write fails.
    bool Uncover(const Cover& cover, const FlushText& text, const FileTail& tail);

private:
    off_t PutTrailer(const FlushText& text, std::string_view trailer) const;
    template <typename Visit>
    void ForEachMark(const FlushText& text, off_t from, std::string_view lead, Visit visit) const;

    OpenFile& file;
    Block& covered;  // the true bytes under the marks
    off_t trailerStart = 0;
    off_t end = 0;
};

}  // namespace Scrivel2

#endif
