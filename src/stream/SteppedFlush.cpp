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

#include "format/LogWords.h"

#include <algorithm>
#include <array>
#include <cassert>

namespace Scrivel2
{

/// What a text is hidden in until it is committed, and what is around the copies of the tail that end it
/// early.
struct SteppedFlush::Cover
{
    std::string_view opening;
    std::string_view closing;
    std::string_view beforeCopy;
    std::string_view afterCopy;
    std::string_view notInCopy;  ///< besides the closing
};

namespace
{

using Cover = SteppedFlush::Cover;

constexpr off_t pageSize = SteppedFlush::pageSize;

constexpr std::string_view opening = LogWords::flushOpening;
constexpr std::string_view closing = LogWords::flushClosing;
constexpr std::size_t longestCopy = 1024;

constexpr std::array<Cover, 3> covers = {{
    {opening, closing, LogWords::flushBeforeCopy, LogWords::flushAfterCopy, "--"},
    {"<![CDATA[", "]]>", "<?x ]]>", "<?x ?>", "?>"},
    {"<![CDATA[", "]]>", "<!-- ]]>", "<?x --><?x ?>", "--"},
}};

constexpr std::size_t longestOpening = [] {
    std::size_t longest = 0;
    for (const Cover& cover : covers) {
        longest = std::max(longest, cover.opening.size());
    }
    return longest;
}();
constexpr std::size_t longestLead = [] {
    std::size_t longest = 0;
    for (const Cover& cover : covers) {
        longest = std::max(longest, cover.beforeCopy.size() + longestCopy + cover.afterCopy.size());
    }
    return longest;
}();
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

/// Whether the part lies across the place where the second text follows the first.
bool ContainsAcross(std::string_view first, std::string_view second, std::string_view part)
{
    for (std::size_t length = 1; length < part.size(); ++length) {
        const std::string_view begin = part.substr(0, length);
        const std::string_view rest = part.substr(length);
        if (first.size() >= begin.size() && first.substr(first.size() - begin.size()) == begin &&
            second.substr(0, rest.size()) == rest) {
            return true;
        }
    }
    return false;
}

bool HasRoom(std::string_view mark, off_t offset)
{
    return offset + static_cast<off_t>(mark.size()) <= PageEnd(offset);
}

/// What a staged page begins with.
class Lead
{
public:
    Lead(std::string_view before, std::string_view copy, std::string_view after)
    {
        for (const std::string_view part : {before, copy, after}) {
            end = std::copy(part.begin(), part.end(), end);
        }
    }

    std::string_view Text() const { return {text.data(), static_cast<std::size_t>(end - text.data())}; }

private:
    std::array<char, longestLead> text;
    char* end = text.data();
};

}  // namespace

bool SteppedFlush::IsPossible(const FileTail& tail, const FlushText& text)
{
    const bool replacesTail = text.start < tail.End() && tail.End() < text.end;
    return replacesTail && SpansPages(text.start, text.end);
}

SteppedFlush::SteppedFlush(OpenFile& flushed, const FileTail& replaced, Block& memory,
                           const FlushText& brought)
    : file(flushed), tail(replaced), covered(memory), text(brought),
      firstInstruction(PlaceOfInstruction(replaced.End(), brought.end))
{
}

bool SteppedFlush::ReplacesTailInOnePage()
{
    return firstInstruction >= 0 && !SpansPages(text.start, After(firstInstruction)) &&
           StaysInInstructions();
}

/// Whether no text after the first instruction's opening ends one: looked up once, as the text may be
/// long.
bool SteppedFlush::StaysInInstructions()
{
    if (!staysInInstructions) {
        staysInInstructions = !Contains(text.Part(After(firstInstruction), text.end), closing);
    }
    return *staysInInstructions;
}

std::optional<off_t> SteppedFlush::BetterStart()
{
    if (ReplacesTailInOnePage() || CoverForTail() != nullptr) {
        return {};
    }
    const off_t pageEnd = PageEnd(text.start);
    for (const Cover& cover : covers) {
        const auto room = static_cast<off_t>(cover.opening.size());
        const auto start = tail.LastMarkup(pageEnd - pageSize, std::min(pageEnd - room, text.start));
        if (start && TextFits(cover) && TailFits(cover, *start) &&
            !ContainsAcross(tail.Part(*start, text.start), text.All(), cover.closing)) {
            return start;
        }
    }
    return {};
}

SteppedFlush::Outcome SteppedFlush::Run()
{
    if (ReplacesTailInOnePage()) {
        return RunInOnePage();
    }
    if (const Cover* const cover = CoverForTail()) {
        return RunHidden(*cover);
    }
    // Nothing can hide this tail: it is replaced as if it lay on one page.
    return firstInstruction >= 0 && StaysInInstructions() ? RunInOnePage() : Outcome::NotBegun;
}

SteppedFlush::Outcome SteppedFlush::RunInOnePage()
{
    if (!GetMemoryFor(opening)) {
        return Outcome::NotBegun;
    }
    if (!Stage(opening) || !Merge()) {
        return Outcome::TailStands;
    }
    if (!Commit(After(firstInstruction))) {
        return Outcome::TailTouched;
    }
    return CutTrailer() ? Outcome::Done : Outcome::TrailerStays;
}

SteppedFlush::Outcome SteppedFlush::RunHidden(const Cover& cover)
{
    const Lead lead(cover.beforeCopy, tail.From(text.start), cover.afterCopy);
    const bool inInstructions = cover.closing == closing;
    if (inInstructions && !GetMemoryFor(lead.Text())) {
        return Outcome::NotBegun;
    }
    if (!(inInstructions ? Stage(lead.Text()) : StageBlank(lead.Text()))) {
        return Outcome::TailStands;
    }
    if (!Hide(cover.opening) || !Commit(text.start + static_cast<off_t>(cover.opening.size()))) {
        return Outcome::TailTouched;
    }
    return CutTrailer() ? Outcome::Done : Outcome::TrailerStays;
}

const SteppedFlush::Cover* SteppedFlush::CoverForTail() const
{
    const auto* const found = std::find_if(covers.begin(), covers.end(), [this](const Cover& cover) {
        return HasRoom(cover.opening, text.start) && TextFits(cover) && TailFits(cover, text.start) &&
               TextAndTailFit(cover);
    });
    return found == covers.end() ? nullptr : found;
}

/// Whether the text does not end the cover.
bool SteppedFlush::TextFits(const Cover& cover) const
{
    return !Contains(text.All(), cover.closing);
}

/// Whether the tail from `start` on ends neither the cover nor what is around its copies, and whether the
/// cover may stand where it begins: a section only within the root.
bool SteppedFlush::TailFits(const Cover& cover, off_t start) const
{
    const std::string_view replaced = tail.From(start);
    return replaced.size() <= longestCopy && !Contains(replaced, cover.closing) &&
           !Contains(replaced, cover.notInCopy) && (cover.closing == closing || Contains(replaced, "</"));
}

/// Whether the text on the first page does not end the cover together with the rest of the tail on the
/// next one, while that page is still old.
bool SteppedFlush::TextAndTailFit(const Cover& cover) const
{
    const off_t pageEnd = PageEnd(text.start);
    return pageEnd >= tail.End() ||
           !ContainsAcross(text.Part(text.start, pageEnd), tail.From(pageEnd), cover.closing);
}

/// Gets the memory for the true bytes under the marks of all pages.
bool SteppedFlush::GetMemoryFor(std::string_view lead)
{
    const auto pages = static_cast<std::size_t>((text.end - tail.End()) / pageSize + 2);
    return covered.Grow(pages * (lead.size() + closing.size()), 0);
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

/// Writes what comes after the tail as pages that begin with `lead` and hold nothing else, and the
/// trailer.
bool SteppedFlush::StageBlank(std::string_view lead)
{
    assert(state == State::Before);
    state = State::Staged;
    alignas(pageSize) std::array<char, pageSize> page;
    const auto length = static_cast<off_t>(lead.size());
    const bool fitsAfterText = length <= PageEnd(text.end) - text.end;
    const off_t trailer = fitsAfterText ? text.end : PageEnd(text.end);
    for (off_t from = tail.End(), to; from < trailer + length; from = to) {
        to = from < trailer ? std::min(PageEnd(from), trailer) : trailer + length;
        char* const begin = page.data() + from % pageSize;
        char* const end = begin + (to - from);
        char* const afterLead = to - from < length ? begin : std::copy(lead.begin(), lead.end(), begin);
        std::fill(afterLead, end, '\n');
        if (!file.Write({begin, static_cast<std::size_t>(end - begin)}, from)) {
            return false;
        }
    }
    return true;
}

/// Writes the true bytes from the closing of the first instruction on.
bool SteppedFlush::Merge()
{
    assert(state == State::Staged);
    state = State::Merged;
    return WriteText(std::min(PageEnd(firstInstruction), text.end) - static_cast<off_t>(closing.size()),
                     text.end);
}

/// Writes the true bytes, but for the opening of a cover in the place of the first ones.
bool SteppedFlush::Hide(std::string_view coverOpening)
{
    assert(state == State::Staged);
    state = State::Hidden;
    std::array<char, longestOpening> first;
    std::copy_n(text.bytes, coverOpening.size(), first.begin());
    std::copy_n(coverOpening.data(), coverOpening.size(), text.bytes);
    const bool hidden = WriteText(text.start, text.end);
    std::copy_n(first.begin(), coverOpening.size(), text.bytes);
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
