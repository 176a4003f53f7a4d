// How a flush comes in pieces. Tested by tests/stream/HugeFlushTest.cpp.
//
// The pieces M1, M2 ... of the text grow within an instruction after the tail T0, which stands until the
// last of them is there. The trailer ends the instruction; each piece is first staged after the trailer
// of the one before, as a flush in steps is (SteppedFlush.cpp), and then takes the place of that trailer,
// page by page:
//
//     ...T0|
//     ...T0<?x m1m1m1m1|m1m1m1m1m1m1m1m1m1|m1m1m1<?x ?>
//     ...T0<?x m1m1m1m1|m1m1m1m1m1m1m1m1m1|m1m1m1<?x ?><?x m2?>|<?x m2m2m2m2m2?>|<?x m2?><?x ?>
//     ...T0<?x m1m1m1m1|m1m1m1m1m1m1m1m1m1|m1m1m1m2m2m2m2m2m2m2|<?x m2m2m2m2m2?>|<?x m2?><?x ?>
//     ...T0<?x m1m1m1m1|m1m1m1m1m1m1m1m1m1|m1m1m1m2m2m2m2m2m2m2|m2m2m2m2m2m2m2m2|m2m2m2<?x ?>
//
// At the commit the text from its beginning up to the end of the opening, which memory has kept, takes
// the place of the tail and of the opening: one write within one page. Then the trailer is cut off.
//
// When the tail lies across two pages it is hidden before that, in a section that the last trailer ends:
//
//     ...</trac|e-4242>\n<?x mmmm|mmmmmmmmmmmm|mmmm<?x ?><?x ]]>T0<?x ?>
//     ...<![CDA|e-4242>\n<?x mmmm|mmmmmmmmmmmm|mmmm<?x ?><?x ]]>T0<?x ?>
//     ...<![CDA|mmmmmmmmmmmmmmmmm|mmmmmmmmmmmm|mmmm<?x ?><?x ]]>T0<?x ?>
//     ...mmmmmm|mmmmmmmmmmmmmmmmm|mmmmmmmmmmmm|mmmm<?x ?><?x ]]>T0<?x ?>
//
// Where each write is synchronised, a page of it may be on the disk without those before it. So the file
// grows by newlines page by page up to the new trailer, as in SyncedFlush.cpp, and a piece comes in after
// the opening of the instruction is there, or after the old trailer has been replaced:
//
//     ...T0<?x m1m1m1m1|m1m1m1m1m1m1m1m1m1|m1m1m1<?x ?>\n\n\n|\n\n\n\n\n\n\n\n\n|\n\n\n\n<?x ?>
//     ...T0<?x m1m1m1m1|m1m1m1m1m1m1m1m1m1|m1m1m1m2m2m2m2m2|\n\n\n\n\n\n\n\n\n|\n\n\n\n<?x ?>
//
// The opening of a section, too, comes before what it hides.
//
// Text that would end the instruction or the section, and text that goes on elsewhere than where the last
// piece ended, is not hidden: from then on the pieces are bare, over the tail.

#include "stream/Pieces.h"

#include <algorithm>
#include <utility>

namespace Scrivel2
{
namespace
{

constexpr std::string_view opening = LogWords::flushOpening;
constexpr std::string_view closing = LogWords::flushClosing;
constexpr const Cover& instructionCover = covers.front();
static_assert(instructionCover.opening == opening);
constexpr std::size_t firstSection = 1;  // of the covers

}  // namespace

Pieces::Pieces(OpenFile& flushed, FileTail& replaced, Block& memory)
    : file(flushed), tail(replaced), staging(flushed, memory)
{
}

std::optional<off_t> Pieces::BetterStart(const FlushText& text) const
{
    const off_t instruction = Staging::PlaceOfInstruction(tail.End(), text.end);
    if (text.start >= tail.End() || instruction < 0 || ReplacesTailInOnePage(text, instruction) ||
        FirstThatHides(text, tail, firstSection) != nullptr) {
        return {};
    }
    return StartForOneThatHides(text, tail, firstSection);
}

bool Pieces::Write(const FlushText& piece)
{
    const bool written =
        Prepare(piece) &&
        (state == State::Hidden ? Append(piece, Mark{opening, closing}.Text()) : AppendBare(piece));
    if (!written) {
        TakeBack();
    }
    return written;
}

bool Pieces::Commit(const FlushText& piece)
{
    const bool written = Prepare(piece) && (state == State::Hidden ? AppendLast(piece) && CommitHidden()
                                                                   : AppendBare(piece));
    if (!written) {
        TakeBack();
    }
    return written && (state == State::Bare || CutTrailer());
}

bool Pieces::Read(off_t to, char* out) const
{
    off_t from = start;
    if (state == State::Hidden) {
        from = std::min(to, hiddenFrom);
        out = std::copy_n(kept.Bytes(), from - start, out);
    }
    return file.Read(out, static_cast<std::size_t>(to - from), from);
}

void Pieces::TakeBack()
{
    if (!tailTouched) {
        tail.CutOffWhatFollows();
    } else if (state == State::Bare) {
        tail.PutBack(start);
    } else if (CommitTail()) {
        tail.CutOffWhatFollows();
    }
    state = State::None;
}

/// As CommitHidden, but with the tail, and the opening after it, in the place of the text.
bool Pieces::CommitTail()
{
    Staging::PutTail(tail, start, Instruction(), kept.Bytes());
    return CommitHidden();
}

// ---- Whether the text is hidden -----------------------------------------------------------------

void Pieces::Begin(const FlushText& first)
{
    start = end = first.start;
    fileEnd = tail.End();
    lastBytes.clear();
    state = Hide(first) ? State::Hidden : State::Bare;
    tailTouched = state == State::Bare;
}

/// Finds a form for the first piece, and keeps what comes last of it; false when there is none.
bool Pieces::Hide(const FlushText& first)
{
    const bool replacesTail = tail.Start() <= first.start && first.start < tail.End();
    const off_t instruction = Staging::PlaceOfInstruction(tail.End(), first.end);
    if (!replacesTail || instruction < 0) {
        return false;
    }
    hiddenFrom = Staging::AfterOpening(instruction);
    if (Contains(first.Part(hiddenFrom, first.end), closing)) {
        return false;
    }
    cover = nullptr;
    if (!ReplacesTailInOnePage(first, instruction)) {
        cover = FirstThatHides(first, tail, firstSection);
        if (cover == nullptr) {
            return false;
        }
    }
    const std::string_view comesLast = first.Part(start, hiddenFrom);
    if (!kept.Grow(comesLast.size(), 0) || !staging.GetMemoryFor(first, fileEnd, opening)) {
        return false;
    }
    kept.AlignTo(start);
    comesLast.copy(kept.Bytes(), comesLast.size());
    return true;
}

bool Pieces::ReplacesTailInOnePage(const FlushText& first, off_t instruction) const
{
    return !SpansPages(first.start, Staging::AfterOpening(instruction));
}

/// Finds out, before a piece is written, whether it is hidden; false when a write has failed.
bool Pieces::Prepare(const FlushText& piece)
{
    if (state == State::None) {
        Begin(piece);
        return true;
    }
    return state == State::Bare || StaysHidden(piece) || Uncover();
}

bool Pieces::StaysHidden(const FlushText& piece)
{
    const auto fits = [&](std::string_view ending) {
        return !Contains(piece.All(), ending) && !ContainsAcross(lastBytes, piece.All(), ending);
    };
    return piece.start == end && fits(closing) && (cover == nullptr || fits(cover->closing)) &&
           staging.GetMemoryFor(piece, fileEnd, opening);
}

/// Puts the beginning of the text in its place, over the tail.
bool Pieces::Uncover()
{
    state = State::Bare;
    tailTouched = true;
    fileEnd = end;
    return WriteKept(hiddenFrom) && file.CutAt(end);
}

// ---- Writing ------------------------------------------------------------------------------------

/// Where the instruction that hides the text begins.
off_t Pieces::Instruction() const
{
    return hiddenFrom - static_cast<off_t>(opening.size());
}

bool Pieces::AppendBare(const FlushText& piece)
{
    start = std::min(start, piece.start);
    end = std::max(end, piece.end);
    fileEnd = std::max(fileEnd, end);
    return file.Write(piece.All(), piece.start);
}

/// Brings a piece to the place of the trailer of the one before, with a trailer after it.
bool Pieces::Append(const FlushText& piece, std::string_view trailer)
{
    // A short one may end before the old trailer does.
    const FlushText staged{piece.bytes, piece.start, std::max(piece.end, fileEnd)};
    std::fill(staged.At(piece.end), staged.At(staged.end), '\n');
    if (!(file.Synchronises() ? AppendSynchronised(staged, trailer)
                              : AppendInPageOrder(staged, trailer))) {
        return false;
    }
    end = piece.end;
    fileEnd = staging.End();
    constexpr std::size_t most = 2;
    lastBytes += piece.Part(std::max(piece.start, piece.end - static_cast<off_t>(most)), piece.end);
    lastBytes.erase(0, lastBytes.size() - std::min(lastBytes.size(), most));
    return true;
}

/// Staged after the old trailer first.
bool Pieces::AppendInPageOrder(const FlushText& staged, std::string_view trailer)
{
    const bool isFirst = end == start;
    const off_t place =
        isFirst ? std::min(PageEnd(Instruction()), staged.end) - static_cast<off_t>(closing.size())
                : staged.start;
    return staging.WriteInstructions(staged, fileEnd, opening, trailer) &&
           file.Write(staged.Part(place, staged.end), place);
}

/// With newlines up to its trailer first. Then the opening of the instruction, or what takes the place of
/// the old trailer, comes before the rest.
bool Pieces::AppendSynchronised(const FlushText& staged, std::string_view trailer)
{
    const auto write = [&](off_t from, off_t to) { return file.Write(staged.Part(from, to), from); };
    if (!staging.WriteBlank(fileEnd, staged.end, {}, trailer)) {
        return false;
    }
    if (end == start) {
        const auto writeOpening = [&] { return write(Instruction(), hiddenFrom); };
        return instructionCover.Over(staged.At(Instruction()), writeOpening) &&
               write(hiddenFrom, staged.end);
    }
    const off_t afterOldTrailer = std::min(PageEnd(fileEnd - 1), staged.end);
    return write(staged.start, afterOldTrailer) && write(afterOldTrailer, staged.end);
}

/// The last piece, whose trailer ends the section that is to hide the tail, if one is.
bool Pieces::AppendLast(const FlushText& piece)
{
    const Mark plain{opening, closing};
    if (cover == nullptr) {
        return Append(piece, plain.Text());
    }
    const Mark trailer{plain.Text(), cover->beforeCopy, tail.From(start), cover->afterCopy};
    return Append(piece, trailer.Text());
}

/// Writes what memory has kept over the tail and the opening, hidden before where that takes two pages.
bool Pieces::CommitHidden()
{
    tailTouched = true;
    if (cover == nullptr) {
        return WriteKept(hiddenFrom);
    }
    const off_t opened = cover->After(start);
    const auto writeCovered = [&](off_t to) {
        return cover->Over(kept.Bytes(), [&] { return WriteKept(to); });
    };
    const bool isCovered = !file.Synchronises() || writeCovered(opened);
    return isCovered && writeCovered(hiddenFrom) && WriteKept(opened);
}

/// Without it the new document has a trailer, and no pieces any more.
bool Pieces::CutTrailer()
{
    if (file.CutTrailer(end, std::exchange(fileEnd, end))) {
        return true;
    }
    Forget();
    return false;
}

bool Pieces::WriteKept(off_t to)
{
    return file.Write({kept.Bytes(), static_cast<std::size_t>(to - start)}, start);
}

}  // namespace Scrivel2
