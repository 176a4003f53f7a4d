// A flush across pages, in steps that each leave a document in the file; SteppedFlush.cpp draws them.
// Tested by tests/stream/SteppedFlushTest.cpp, its failing writes by tests/stream/FailingWritesTest.cpp.

#ifndef SCRIVEL_STREAM_STEPPEDFLUSH_H
#define SCRIVEL_STREAM_STEPPEDFLUSH_H

#include "stream/Block.h"
#include "stream/FileTail.h"
#include "stream/OpenFile.h"

#include <cstddef>
#include <optional>
#include <string_view>

#include <sys/types.h>

namespace Scrivel2
{

/// The text that a flush brings to [start, end) of the file. It lies in a Block, with the spare room of
/// that after it.
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

class SteppedFlush
{
public:
    static constexpr off_t pageSize = Block::pageSize;

    struct Cover;

    /// What a flush has come to, and what is to be done then.
    enum class Outcome
    {
        NotBegun,     ///< nothing is written, as there are no steps for it: write the text in one go
        Done,         ///< the file holds the text and nothing after it
        TailStands,   ///< failed before the tail was touched: cut off what follows it
        TailTouched,  ///< failed in the midst of the tail: put it back
        TrailerStays  ///< the file holds the text, and a trailer that could not be cut off
    };

    /// Whether the text spans pages and replaces the tail: for any other there are no steps.
    static bool IsPossible(const FileTail& tail, const FlushText& text);

    /// `memory` is kept from flush to flush.
    SteppedFlush(OpenFile& flushed, const FileTail& replaced, Block& memory, const FlushText& brought);

    /// The place before the text where there is room to hide the tail, when the tail is to be hidden and
    /// there is no room where the text begins; nothing when memory has no such place. The text may then
    /// begin there.
    std::optional<off_t> BetterStart();
    void SetText(const FlushText& longer) { text = longer; }

    Outcome Run();

private:
    enum class State
    {
        Before,
        Staged,
        Merged,
        Hidden,
        Committed,
        Done
    };

    Outcome RunInOnePage();
    Outcome RunHidden(const Cover& cover);

    bool Stage(std::string_view lead);
    bool StageBlank(std::string_view lead);
    bool Merge();
    bool Hide(std::string_view coverOpening);
    bool Commit(off_t to);
    bool CutTrailer();

    bool GetMemoryFor(std::string_view lead);
    bool ReplacesTailInOnePage();
    bool StaysInInstructions();
    const Cover* CoverForTail() const;
    bool TextFits(const Cover& cover) const;
    bool TailFits(const Cover& cover, off_t start) const;
    bool TextAndTailFit(const Cover& cover) const;
    off_t PutTrailer(std::string_view lead);
    template <typename Visit>
    void ForEachMark(std::string_view lead, Visit visit) const;
    bool WriteText(off_t from, off_t to) { return file.Write(text.Part(from, to), from); }

    OpenFile& file;
    const FileTail& tail;
    Block& covered;  // the true bytes under the marks
    FlushText text;
    off_t firstInstruction;  // where the first instruction after the tail begins: -1 for no room for one
    std::optional<bool> staysInInstructions;
    State state = State::Before;
};

}  // namespace Scrivel2

#endif
