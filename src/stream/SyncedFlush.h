// A flush in steps that each leave a document on the disk whatever of the step it has when the machine
// dies; SyncedFlush.cpp draws them. Tested by tests/stream/SyncedFlushTest.cpp.

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
#include <string_view>

#include <sys/types.h>

namespace Scrivel2
{

/// To be used as a SteppedFlush is, with a file that synchronises each write.
class SyncedFlush
{
public:
    using Outcome = SteppedFlush::Outcome;

    /// Whether the text replaces the tail and ends after it, or where it does and on another page.
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

    Outcome RunInOnePage();
    Outcome RunAcrossPages();

    bool Enlarge(std::string_view trailer);
    bool CoverTail(const Cover& cover);
    bool BringText(const Cover& cover);
    bool Commit(off_t to);
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
