// A flush across pages, in steps that each leave a document on the disk whichever pages of the step it
// has when the machine dies; SyncedFlush.cpp draws them. Tested by tests/stream/SyncedFlushTest.cpp.

#ifndef SCRIVEL_STREAM_SYNCEDFLUSH_H
#define SCRIVEL_STREAM_SYNCEDFLUSH_H

#include "stream/Block.h"
#include "stream/Cover.h"
#include "stream/FileTail.h"
#include "stream/FlushText.h"
#include "stream/OpenFile.h"
#include "stream/Staging.h"
#include "stream/SteppedFlush.h"

#include <optional>

#include <sys/types.h>

namespace Scrivel2
{

/// To be used as a SteppedFlush is, with a file that synchronises each write.
class SyncedFlush
{
public:
    using Outcome = SteppedFlush::Outcome;

    /// Whether the text spans pages, replaces the tail and ends no earlier than that.
    static bool IsPossible(const FileTail& tail, const FlushText& text);

    SyncedFlush(OpenFile& flushed, const FileTail& replaced, Block& memory, const FlushText& brought);

    std::optional<off_t> BetterStart() const;
    void SetText(const FlushText& longer) { text = longer; }

    Outcome Run();

private:
    enum class State
    {
        Before,
        Enlarged,
        Covered,
        Hidden,
        Committed,
        Done
    };

    bool Enlarge(const Cover& cover);
    bool CoverTail(const Cover& cover);
    bool BringText(const Cover& cover);
    bool Commit(const Cover& cover);
    bool CutTrailer();

    bool WriteText(off_t from, off_t to) { return file.Write(text.Part(from, to), from); }

    OpenFile& file;
    const FileTail& tail;
    Staging staging;
    FlushText text;
    State state = State::Before;
};

}  // namespace Scrivel2

#endif
