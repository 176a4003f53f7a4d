// A flush across pages, in steps that each leave a document in the file; SteppedFlush.cpp draws them.
// Tested by tests/stream/SteppedFlushTest.cpp, its failing writes by tests/stream/FailingWritesTest.cpp.

#ifndef SCRIVEL_STREAM_STEPPEDFLUSH_H
#define SCRIVEL_STREAM_STEPPEDFLUSH_H

#include "stream/Block.h"
#include "stream/ClosedEnd.h"
#include "stream/Cover.h"
#include "stream/FileTail.h"
#include "stream/FlushText.h"
#include "stream/OpenFile.h"
#include "stream/Staging.h"

#include <optional>
#include <string_view>

#include <sys/types.h>

namespace Scrivel2
{

class SteppedFlush
{
public:
    static constexpr off_t pageSize = Block::pageSize;

    /// What a flush has come to, and what is to be done then.
    enum class Outcome
    {
        NotBegun,     ///< nothing is written, as there are no steps for it: write the text in one go
        Done,         ///< the file holds the text and nothing after it
        TailStands,   ///< failed, and the tail is what it was: cut off what follows it
        TailTouched,  ///< failed in the midst of the tail: put it back
        StaysAsItIs   ///< failed, and what follows the tail or the text is to stay: it may be needed
    };

    /// Whether the text spans pages and replaces the tail: for any other there are no steps.
    static bool IsPossible(const FileTail& tail, const FlushText& text)
    {
        const bool replacesTail = text.start < tail.End() && tail.End() < text.end;
        return replacesTail && SpansPages(text.start, text.end);
    }

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
    Outcome RunToClosedEnd(const ClosedEnd& end);
    Outcome RunHidden(const Cover& cover);

    bool Stage(std::string_view lead, std::string_view trailer);
    bool StageBlank(std::string_view lead);
    bool Merge(off_t to);
    bool Hide(const Cover& cover);
    bool Commit(off_t to);
    bool WriteTrueEnd(const ClosedEnd& end);
    bool Uncommit();
    bool CutTrailer();

    bool ReplacesTailInOnePage();
    bool StaysInInstructions();
    bool WriteText(off_t from, off_t to) { return file.Write(text.Part(from, to), from); }

    OpenFile& file;
    const FileTail& tail;
    Staging staging;
    FlushText text;
    off_t firstInstruction;  // where the first instruction after the tail begins: -1 for no room for one
    std::optional<bool> staysInInstructions;
    State state = State::Before;
};

}  // namespace Scrivel2

#endif
