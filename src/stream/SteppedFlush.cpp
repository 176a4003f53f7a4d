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
// Text that holds "?>" would end an instruction: it is not for steps. A tail across two pages whose copy
// would end its comment or an instruction is not hidden, but replaced as if it lay on one page.

#include "stream/SteppedFlush.h"

#include "format/LogWords.h"

#include <algorithm>
#include <array>
#include <cassert>

namespace Scrivel2
{
namespace
{

constexpr off_t pageSize = SteppedFlush::pageSize;

constexpr std::string_view opening = LogWords::flushOpening;
constexpr std::string_view closing = LogWords::flushClosing;
constexpr std::string_view beforeCopy = LogWords::flushBeforeCopy;
constexpr std::string_view afterCopy = LogWords::flushAfterCopy;
constexpr std::size_t longestCopy = 256;
constexpr std::size_t longestLead = beforeCopy.size() + longestCopy + afterCopy.size();
constexpr std::size_t longestMarks = longestLead + closing.size();
static_assert(Block::spare >= 2 * longestMarks);

/// In the place of a staged page too short to be one.
constexpr std::array<char, longestMarks> newlines = [] {
    std::array<char, longestMarks> all{};
    for (char& character : all) {
        character = '\n';
    }
    return all;
}();

/// The end of the page that the byte at `offset` lies in.
constexpr off_t PageEnd(off_t offset)
{
    return (offset / pageSize + 1) * pageSize;
}

bool SpansPages(off_t from, off_t to)
{
    return to > PageEnd(from);
}

/// The length of the shortest staged page that begins with `lead`.
off_t Shortest(std::string_view lead)
{
    return static_cast<off_t>(lead.size() + closing.size());
}

/// Where the instruction begins that stages [from, to): at once, or on the next page when the rest of
/// this one is too short for it; -1 when there is no room for one at all.
off_t PlaceOfInstruction(off_t from, off_t to)
{
    const off_t place = PageEnd(from) - from < Shortest(opening) ? PageEnd(from) : from;
    return to - place < Shortest(opening) ? -1 : place;
}

bool Contains(std::string_view text, std::string_view part)
{
    return text.find(part) != std::string_view::npos;
}

/// The place after an opening at `offset`.
off_t After(off_t offset)
{
    return offset + static_cast<off_t>(opening.size());
}

}  // namespace

SteppedFlush::SteppedFlush(OpenFile& flushed, const FileTail& replaced, Block& memory,
                           const FlushText& brought)
    : file(flushed), tail(replaced), covered(memory), text(brought),
      firstInstruction(PlaceOfInstruction(replaced.End(), brought.end))
{
}

bool SteppedFlush::IsPossible()
{
    const bool replacesTail = text.start < tail.End() && tail.End() < text.end;
    if (!replacesTail || !SpansPages(text.start, text.end) || Contains(text.All(), closing)) {
        return false;
    }
    // The longest marks on every page: no rare flush needs more memory than others.
    const auto pages = static_cast<std::size_t>((text.end - tail.End()) / pageSize + 2);
    return covered.Grow(pages * longestMarks, 0);
}

bool SteppedFlush::ReplacesTailInOnePage() const
{
    return firstInstruction >= 0 && !SpansPages(text.start, After(firstInstruction));
}

bool SteppedFlush::HasRoomToHide() const
{
    return After(text.start) <= PageEnd(text.start);
}

std::optional<off_t> SteppedFlush::BetterStart() const
{
    if (ReplacesTailInOnePage() || HasRoomToHide()) {
        return {};
    }
    const off_t pageEnd = PageEnd(text.start);
    const off_t last = pageEnd - static_cast<off_t>(opening.size());
    const off_t first = std::max(pageEnd - pageSize, tail.Start());
    if (last < first) {
        return {};
    }
    const auto markup = tail.Part(first, last + 1).rfind('<');
    if (markup == std::string_view::npos) {
        return {};
    }
    return first + static_cast<off_t>(markup);
}

SteppedFlush::Outcome SteppedFlush::Run()
{
    const bool hides = !ReplacesTailInOnePage() && HasRoomToHide() && CanHideTail();
    if (!hides && firstInstruction < 0) {
        return Outcome::NotBegun;
    }
    if (!(hides ? StageToHide() : Stage(opening) && Merge())) {
        return Outcome::TailStands;
    }
    if (!(hides ? Hide() && Commit(After(text.start)) : Commit(After(firstInstruction)))) {
        return Outcome::TailTouched;
    }
    return CutTrailer() ? Outcome::Done : Outcome::TrailerStays;
}

/// Whether nothing ends the instruction, or the comment, that is to hide the text and copies of the tail.
bool SteppedFlush::CanHideTail() const
{
    const std::string_view replaced = tail.From(text.start);
    return replaced.size() <= longestCopy && !Contains(replaced, "--") && !Contains(replaced, closing) &&
           !Contains(text.All(), closing) && *text.At(PageEnd(text.start) - 1) != closing.front();
}

// ---- The steps ----------------------------------------------------------------------------------

/// Writes what comes after the tail as pages that begin with `lead` and end an instruction, and the
/// trailer.
bool SteppedFlush::Stage(std::string_view lead)
{
    assert(state == State::Before);
    const off_t trailerEnd = PutTrailer(lead);
    char* saved = covered.Bytes();
    ForEachMark(lead, [&](char* at, std::string_view mark) {
        saved = std::copy_n(at, mark.size(), saved);
        mark.copy(at, mark.size());
    });
    const bool staged = WriteText(tail.End(), trailerEnd);
    const char* restored = covered.Bytes();
    ForEachMark(lead, [&](char* at, std::string_view mark) {
        std::copy_n(restored, mark.size(), at);
        restored += mark.size();
    });
    state = State::Staged;
    return staged;
}

bool SteppedFlush::StageToHide()
{
    std::array<char, longestLead> lead;
    char* leadEnd = lead.data();
    for (const std::string_view part : {beforeCopy, tail.From(text.start), afterCopy}) {
        leadEnd = std::copy(part.begin(), part.end(), leadEnd);
    }
    return Stage({lead.data(), static_cast<std::size_t>(leadEnd - lead.data())});
}

/// Writes the true bytes from the closing of the first instruction on.
bool SteppedFlush::Merge()
{
    assert(state == State::Staged);
    state = State::Merged;
    return WriteText(std::min(PageEnd(firstInstruction), text.end) - static_cast<off_t>(closing.size()),
                     text.end);
}

/// Writes the true bytes, but for an opening in the place of the first ones.
bool SteppedFlush::Hide()
{
    assert(state == State::Staged);
    state = State::Hidden;
    std::array<char, opening.size()> first;
    std::copy_n(text.bytes, first.size(), first.begin());
    opening.copy(text.bytes, first.size());
    const bool hidden = WriteText(text.start, text.end);
    std::copy(first.begin(), first.end(), text.bytes);
    return hidden;
}

/// Writes the true bytes up to `to`, where the opening that kept them from being read ends.
bool SteppedFlush::Commit(off_t to)
{
    assert(state == State::Merged || state == State::Hidden);
    state = State::Committed;
    return WriteText(text.start, to);
}

bool SteppedFlush::CutTrailer()
{
    assert(state == State::Committed);
    state = State::Done;
    return file.CutAt(text.end);
}

// ---- What stands in the file while staged ---------------------------------------------------------

/// Puts the trailer after the text, with newlines before it when it would not fit on the page. Returns
/// the place of its end.
off_t SteppedFlush::PutTrailer(std::string_view lead)
{
    const off_t roomOnPage = PageEnd(text.end) - text.end;
    char* out = text.At(text.end);
    out = std::copy_n(newlines.begin(), roomOnPage < Shortest(lead) ? roomOnPage : 0, out);
    out = std::copy(lead.begin(), lead.end(), out);
    out = std::copy(closing.begin(), closing.end(), out);
    return text.start + (out - text.bytes);
}

/// Calls `visit` with each mark of the staged pages, and with the place in the text that it covers.
template <typename Visit>
void SteppedFlush::ForEachMark(std::string_view lead, Visit visit) const
{
    for (off_t from = tail.End(), to; from < text.end; from = to) {
        to = std::min(PageEnd(from), text.end);
        if (to - from < Shortest(lead)) {
            const auto length = static_cast<std::size_t>(to - from);
            visit(text.At(from), std::string_view(newlines.data(), newlines.size()).substr(0, length));
        } else {
            visit(text.At(from), lead);
            visit(text.At(to) - closing.size(), closing);
        }
    }
}

}  // namespace Scrivel2
