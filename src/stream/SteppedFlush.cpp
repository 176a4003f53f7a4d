// How a flush across pages replaces the tail. Tested by tests/stream/SteppedFlushTest.cpp and
// tests/stream/FailingWritesTest.cpp.
//
// A flush brings the text M to the place where the old tail T0 ends the file. Should the process be
// killed, the kernel finishes the page that it is copying and stops: a write within one page is there
// wholly or not at all. Text that spans pages comes in steps, and each of them leaves a document:
//
//            Stage               Merge              Commit               CutTrailer
//   BEFORE ---------> STAGED -----------> MERGED -----------> COMMITTED ------------> DONE
//                        |      Hide                Commit      ^
//                        +--------------> HIDDEN ---------------+
//
//   STAGED     After T0 each page is a processing instruction of its own, then comes a trailer.
//                  ...T0<?x mmmmmmm?>|<?x mmmmmmmmmm?>|<?x mmm?><?x ?>
//   MERGED     The true bytes are inside: page by page the instructions have become one, which the
//              trailer ends.
//                  ...T0<?x mmmmmmmmm|mmmmmmmmmmmmmmmm|mmmmmmmmm<?x ?>
//   COMMITTED  T0 and the opening "<?x " have been replaced, in one page: this is the new document.
//                  ...MMMMMMMMMMMMMMM|MMMMMMMMMMMMMMMM|MMMMMMMMM<?x ?>
//   DONE       The trailer is cut off.
//
// Text that ends in end tags with blanks between them needs no trailer. Until the commit those tags stand
// without the blanks, and a last instruction takes the room of these (ClosedEnd.h), so that the file has
// its length from the first write on:
//
//            Stage               Merge              Commit           WriteTrueEnd
//   BEFORE ---------> STAGED -----------> MERGED -----------> COMMITTED -------------> DONE
//
//   STAGED     ...T0<?x mmmmmmm?>|<?x mmmmmmmmmm?>|<?x mmm</call></trace-4242><?x ?>
//   MERGED     ...T0<?x mmmmmmmmm|mmmmmmmmmmmmmmmm|mmm</call></trace-4242><?x ?>
//   COMMITTED  ...MMMMMMMMMMMMMMM|MMMMMMMMMMMMMMMM|MMM</call></trace-4242><?x ?>
//   DONE       ...MMMMMMMMMMMMMMM|MMMMMMMMMMMMMMMM|MMM</call>\n</trace-4242>\n
//
// As a write goes through the pages in their order, one does both last steps of text on two of them.
//
// When T0 and the opening lie across two pages, a kill could leave one half of them replaced. Then T0 is
// hidden before it is replaced: the true bytes are written over T0 and all that follows it, but with an
// opening "<?x " in the place of their first four, and the commit is to write those four.
//
//   STAGED     ...</trac|e-4242>\n<!-- ?>T0<?x --><?x mmm?>|<!-- ?>T0<?x --><?x m?>TRAILER
//   HIDDEN     ...<?x MM|MMMMMMMMMMMMMMMMMMMMMMMMMMMMMMMMMM|MMMMMMMMMMMMMMMMMMMMMMMTRAILER
//   COMMITTED  ...MMMMMM|MMMMMMMMMMMMMMMMMMMMMMMMMMMMMMMMMM|MMMMMMMMMMMMMMMMMMMMMMMTRAILER
//
// A write goes through the pages in their order, so while T0 is being hidden the opening is followed by
// true bytes up to the end of some page, and then by staged pages. This is why each staged page begins
// with a copy of T0, and reads in two ways:
//
//   after T0           <!-- ?>T0<?x -->  is a comment, <?x mmm?> an instruction
//   after an opening   <!-- ?>           is the end of its instruction, T0 the tail that was hidden, and
//                      <?x --><?x mmm?>  an instruction
//
// The trailer, <!-- ?>T0<?x --><?x ?>, ends the opening of HIDDEN in the same way. Where the opening has
// no room on the page of T0, T0 and M are taken to begin some bytes earlier, with the last markup before
// them that leaves it room.
//
// Text that holds "?>" would end an instruction, and a tail that holds "--" the comment around its copy.
// Where one of them does, the opening is that of a section, "<![CDATA[", which hides both. Then staged
// pages hold no text, but their lead and newlines:
//
//   STAGED     ...</trac|e-4242>\n<?x ]]>T0<?x ?>\n\n\n|<?x ]]>T0<?x ?>\n\n\n|<?x ]]>T0<?x ?>
//   HIDDEN     ...<![CDATA[MM|MMMMMMMMMMMMMMMMMMMMMMMMMMMM|MMMMMMMMMMMMMMMMM<?x ]]>T0<?x ?>
//
//   after T0           <?x ]]>T0<?x ?>  is an instruction
//   in a section       ]]>              is its end, T0 the tail, and <?x ?> an instruction
//
// A tail that holds "?>" has its copies in comments there, <!-- ]]>T0<?x --><?x ?>.
// docs/crash-safety.md has the conditions of each form in a table.

#include "stream/SteppedFlush.h"

#include "stream/StandIn.h"

#include <algorithm>
#include <cassert>

namespace Scrivel2
{
namespace
{

constexpr std::string_view opening = LogWords::flushOpening;
constexpr std::string_view closing = LogWords::flushClosing;

}  // namespace

SteppedFlush::SteppedFlush(OpenFile& flushed, const FileTail& replaced, Block& memory,
                           const FlushText& brought)
    : file(flushed), tail(replaced), staging(flushed, memory), text(brought),
      firstInstruction(Staging::PlaceOfInstruction(replaced.End(), brought.end))
{
}

bool SteppedFlush::ReplacesTailInOnePage()
{
    return firstInstruction >= 0 && !SpansPages(text.start, Staging::AfterOpening(firstInstruction)) &&
           StaysInInstructions();
}

/// Whether no text after the first instruction's opening ends one: looked up once, as the text may be
/// long.
bool SteppedFlush::StaysInInstructions()
{
    if (!staysInInstructions) {
        staysInInstructions =
            !Contains(text.Part(Staging::AfterOpening(firstInstruction), text.end), closing);
    }
    return *staysInInstructions;
}

std::optional<off_t> SteppedFlush::BetterStart()
{
    if (ReplacesTailInOnePage() || FirstThatHides(text, tail) != nullptr) {
        return {};
    }
    return StartForOneThatHides(text, tail);
}

SteppedFlush::Outcome SteppedFlush::Run()
{
    if (ReplacesTailInOnePage()) {
        return RunInOnePage();
    }
    if (const Cover* const cover = FirstThatHides(text, tail)) {
        return RunHidden(*cover);
    }
    // Nothing can hide this tail: it is replaced as if it lay on one page.
    return firstInstruction >= 0 && StaysInInstructions() ? RunInOnePage() : Outcome::NotBegun;
}

SteppedFlush::Outcome SteppedFlush::RunInOnePage()
{
    if (!staging.GetMemoryFor(text, tail.End(), opening)) {
        return Outcome::NotBegun;
    }
    if (const auto end = ClosedEnd::Of(text, PageEnd(firstInstruction))) {
        return RunToClosedEnd(*end);
    }
    if (!Stage(opening, Mark{opening, closing}.Text()) || !Merge(text.end)) {
        return Outcome::TailStands;
    }
    if (!Commit(Staging::AfterOpening(firstInstruction))) {
        return Outcome::TailTouched;
    }
    return CutTrailer() ? Outcome::Done : Outcome::StaysAsItIs;
}

SteppedFlush::Outcome SteppedFlush::RunToClosedEnd(const ClosedEnd& end)
{
    const off_t lastPage = PageEnd(end.Start()) - pageSize;
    {
        const StandIn closedEnd(text.At(end.Start()), end.Bytes());
        if (!Stage(opening, {}) || !Merge(Staging::AfterOpening(lastPage))) {
            return Outcome::TailStands;
        }
    }
    const bool onTwoPages = lastPage == PageEnd(text.start);
    const off_t committed = onTwoPages ? text.end : Staging::AfterOpening(firstInstruction);
    if (Commit(committed) && (onTwoPages || WriteTrueEnd(end))) {
        return Outcome::Done;
    }
    return Uncommit() ? Outcome::TailStands : Outcome::StaysAsItIs;
}

SteppedFlush::Outcome SteppedFlush::RunHidden(const Cover& cover)
{
    const Mark lead{cover.beforeCopy, tail.From(text.start), cover.afterCopy};
    const bool inInstructions = cover.closing == closing;
    if (inInstructions && !staging.GetMemoryFor(text, tail.End(), lead.Text())) {
        return Outcome::NotBegun;
    }
    if (!(inInstructions ? Stage(lead.Text(), Mark{lead.Text(), closing}.Text())
                         : StageBlank(lead.Text()))) {
        return Outcome::TailStands;
    }
    if (!Hide(cover) || !Commit(cover.After(text.start))) {
        return staging.Uncover(cover, text, tail) ? Outcome::TailStands : Outcome::StaysAsItIs;
    }
    return CutTrailer() ? Outcome::Done : Outcome::StaysAsItIs;
}

// ---- The steps ----------------------------------------------------------------------------------

/// Writes what comes after the tail as pages that begin with `lead` and end an instruction, and the
/// trailer.
bool SteppedFlush::Stage(std::string_view lead, std::string_view trailer)
{
    assert(state == State::Before);
    state = State::Staged;
    return staging.WriteInstructions(text, tail.End(), lead, trailer);
}

/// Writes what comes after the tail as pages that begin with `lead` and hold nothing else, and the
/// trailer.
bool SteppedFlush::StageBlank(std::string_view lead)
{
    assert(state == State::Before);
    state = State::Staged;
    return staging.WriteBlank(tail.End(), text.end, lead, lead);
}

/// Writes the true bytes from the closing of the first instruction up to `to`.
bool SteppedFlush::Merge(off_t to)
{
    assert(state == State::Staged);
    state = State::Merged;
    return WriteText(std::min(PageEnd(firstInstruction), text.end) - static_cast<off_t>(closing.size()),
                     to);
}

/// Writes the true bytes, but for the opening of a cover in the place of the first ones.
bool SteppedFlush::Hide(const Cover& cover)
{
    assert(state == State::Staged);
    state = State::Hidden;
    return cover.Over(text.bytes, [this] { return WriteText(text.start, text.end); });
}

/// Writes the true bytes up to `to`: where the opening that kept them from being read ends, or further.
bool SteppedFlush::Commit(off_t to)
{
    assert(state == State::Merged || state == State::Hidden);
    state = State::Committed;
    return WriteText(text.start, to);
}

/// Writes the true bytes in the place of the closed end.
bool SteppedFlush::WriteTrueEnd(const ClosedEnd& end)
{
    assert(state == State::Committed);
    state = State::Done;
    return WriteText(end.Start(), text.end);
}

/// After a failed write: puts the tail, and the opening after it, in the place of the text again, whose
/// end is still closed.
bool SteppedFlush::Uncommit()
{
    Staging::PutTail(tail, text.start, firstInstruction, text.bytes);
    return WriteText(text.start, Staging::AfterOpening(firstInstruction));
}

bool SteppedFlush::CutTrailer()
{
    assert(state == State::Committed);
    state = State::Done;
    return file.CutAt(text.end);
}

}  // namespace Scrivel2
