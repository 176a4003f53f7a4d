// How a flush replaces the tail when the machine may die, too. Tested by
// tests/stream/SyncedFlushTest.cpp.
//
// What has been written since the last synchronisation is on the disk in part: any of its pages may be as
// they were, and the file as long as it was. What is missing before its end is zeros, which no document
// may hold. So the file grows by newlines, one page at a time, before it gets the text, and each step is
// a write after which the file is synchronised (OpenFile::Write), that leaves a document whatever of it
// is there. Within a page there are two:
//
//           Enlarge               Commit
//   BEFORE ---------> ENLARGED ----------> COMMITTED = DONE
//
//   BEFORE     ...</trace-42>\n
//   ENLARGED   ...</trace-42>\n\n\n\n\n\n\n\n\n
//   DONE       ...MMMMMMMMMMMMMMMMMMMMMM
//
// Across pages:
//
//           Enlarge              CoverTail            BringText            Commit
//   BEFORE ---------> ENLARGED -----------> COVERED -----------> HIDDEN -----------> COMMITTED
//                                                                                        |
//                                                                           CutTrailer   v
//                                                                                       DONE
//
//   ENLARGED   After T0 come newlines, page by page, and on the last page the trailer, an instruction
//              or a comment with a copy of T0.
//                  ...</trace-42|42>\n\n\n\n\n\n\n|\n\n\n\n<?x ]]>T0<?x ?>
//   COVERED    An opening is in the place of the first bytes of T0: one page. The section that it begins
//              ends in the trailer, where T0 follows.
//                  ...<![CDATA[2|42>\n\n\n\n\n\n\n|\n\n\n\n<?x ]]>T0<?x ?>
//   HIDDEN     The true bytes are in the section, however many of their pages.
//                  ...<![CDATA[M|MMMMMMMMMMMMMMMMMM|MMMMM<?x ]]>T0<?x ?>
//   COMMITTED  The opening has been replaced, one page: this is the new document.
//                  ...MMMMMMMMMM|MMMMMMMMMMMMMMMMMM|MMMMM<?x ]]>T0<?x ?>
//   DONE       The trailer is cut off.
//
// The covers and their conditions are those of a flush that hides its tail (SteppedFlush.cpp).

#include "stream/SyncedFlush.h"

#include "format/LogWords.h"

#include <cassert>
#include <string_view>

namespace Scrivel2
{

bool SyncedFlush::IsPossible(const FileTail& tail, const FlushText& text)
{
    const bool replacesTail = text.start < tail.End() && tail.End() <= text.end;
    return replacesTail && (tail.End() < text.end || SpansPages(text.start, text.end));
}

SyncedFlush::SyncedFlush(OpenFile& flushed, const FileTail& replaced, Block& memory,
                         const FlushText& brought)
    : file(flushed), tail(replaced), staging(flushed, memory), text(brought)
{
}

std::optional<off_t> SyncedFlush::BetterStart() const
{
    if (!SpansPages(text.start, text.end) || FirstThatHides(text, tail) != nullptr) {
        return {};
    }
    return StartForOneThatHides(text, tail);
}

SyncedFlush::Outcome SyncedFlush::Run()
{
    return SpansPages(text.start, text.end) ? RunAcrossPages() : RunInOnePage();
}

SyncedFlush::Outcome SyncedFlush::RunInOnePage()
{
    if (!Enlarge({})) {
        return Outcome::TailStands;
    }
    return Commit(text.end) ? Outcome::Done : Outcome::TailTouched;
}

SyncedFlush::Outcome SyncedFlush::RunAcrossPages()
{
    const Cover* const cover = FirstThatHides(text, tail);
    if (cover == nullptr) {
        return Outcome::NotBegun;
    }
    const bool inInstruction = cover->closing == LogWords::flushClosing;
    const Mark trailer{cover->beforeCopy, tail.From(text.start), cover->afterCopy,
                       inInstruction ? cover->closing : std::string_view()};
    if (!Enlarge(trailer.Text())) {
        return Outcome::TailStands;
    }
    if (!CoverTail(*cover) || !BringText(*cover) || !Commit(cover->After(text.start))) {
        return staging.Uncover(*cover, text, tail) ? Outcome::TailStands : Outcome::StaysAsItIs;
    }
    return CutTrailer() ? Outcome::Done : Outcome::StaysAsItIs;
}

// ---- The steps ----------------------------------------------------------------------------------

bool SyncedFlush::Enlarge(std::string_view trailer)
{
    assert(state == State::Before);
    state = State::Enlarged;
    return staging.WriteBlank(tail.End(), text.end, {}, trailer);
}

bool SyncedFlush::CoverTail(const Cover& cover)
{
    assert(state == State::Enlarged);
    state = State::Covered;
    return cover.Over(text.bytes, [&] { return WriteText(text.start, cover.After(text.start)); });
}

bool SyncedFlush::BringText(const Cover& cover)
{
    assert(state == State::Covered);
    state = State::Hidden;
    const off_t from = cover.After(text.start);
    return WriteText(from, text.end);
}

/// Writes the text up to `to`: the whole of it within a page, else what an opening covers.
bool SyncedFlush::Commit(off_t to)
{
    assert(state == State::Enlarged || state == State::Hidden);
    state = State::Committed;
    return WriteText(text.start, to);
}

bool SyncedFlush::CutTrailer()
{
    assert(state == State::Committed);
    state = State::Done;
    return file.CutTrailer(text.end, staging.End());
}

}  // namespace Scrivel2
