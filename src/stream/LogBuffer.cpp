// The states of a LogBuffer, and what is in the file in each. Tested by tests/stream/LogBufferTest.cpp,
// tests/stream/StreamBesideOfstreamTest.cpp and tests/stream/HugeFlushTest.cpp.
//
//          Open, Create       any output            WriteOutPiece
//   CLOSED ----------> CLEAN ------------> PENDING -----------------> PIECES
//      ^               |   ^                  |                          |
//      |     Close     |   |                  | Flush, DropText,         | Flush, DropText,
//      |               |   |                  | TakeBack                 | TakeBack
//      +---------------+   +------------------+--------------------------+
//
//   CLOSED    No descriptor, no put area: output fails.
//   CLEAN     The file is what the last flush left; `tail` holds its end. No text is in memory.
//   PENDING   The file is as in CLEAN. The text since the flush lies in the put area:
//
//                 file     ...<regCount>1</regCount>\n</trace-4242>\n|
//                                                     |              ^ tail.End()
//                                                     ^ textStart
//                 memory                              |    <CADIMemRead ...</trace-4242>\n
//
//             Seeking moves the put pointer within that text. A seek to a place outside it extends the
//             text to there, with the bytes that the file has in between.
//   PIECES    As PENDING, but text of the same flush has already been written, as memory could not hold
//             all of it; it is hidden after the tail (Pieces.cpp draws how). `tail` still holds what the
//             flush is to replace.
//
// A flush that fails leaves the file as in CLEAN, or, when even that can't be done, a document. The text
// is gone, and the stream is bad, so that no more comes until it is opened anew.

#include "stream/LogBuffer.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <cstring>

namespace Scrivel2
{

/// Text goes into the put area without a call of any function here, so whether there is some tells
/// PENDING from CLEAN.
LogBuffer::State LogBuffer::CurrentState() const
{
    if (!IsOpen()) {
        return State::Closed;
    }
    if (pieces.Any()) {
        return State::Pieces;
    }
    return TextEnd() == pbase() ? State::Clean : State::Pending;
}

// ---- The arrows between the states --------------------------------------------------------------

bool LogBuffer::Open(const char* name)
{
    if (!GetMemory() || !file.Open(name)) {
        return false;
    }
    Start();
    return true;
}

bool LogBuffer::Create(const char* name)
{
    if (!GetMemory() || !file.Create(name)) {
        return false;
    }
    Start();
    return true;
}

/// What is needed before a file is opened; false when one is open already.
bool LogBuffer::GetMemory()
{
    if (IsOpen()) {
        return false;
    }
    outOfMemory = !block.Grow(Block::firstCapacity, 0) || !tail.Reserve();
    return !outOfMemory;
}

void LogBuffer::Start()
{
    tail.Clear();
    pieces.Forget();
    StartTextAt(0);
    assert(CurrentState() == State::Clean);
}

bool LogBuffer::Close()
{
    if (CurrentState() == State::Closed) {
        return false;
    }
    const bool written = Flush();
    assert(CurrentState() == State::Clean);
    setp(nullptr, nullptr);
    textHighest = sought = nullptr;
    return file.Close() && written;
}

bool LogBuffer::Flush()
{
    assert(CurrentState() != State::Closed);
    if (TextEnd() == pbase() && !pieces.Any()) {
        return true;  // clean
    }
    const off_t start = textStart;
    const OpenFile::Change change(file);
    if (IsFileAsLeft() && WriteText() && file.GiveName()) {
        TakeTextAsTail();
        return true;
    }
    pieces.Forget();
    StartTextAt(start);
    return false;
}

/// Looks whether the host has taken the file away, but not at each flush of few pages: the look would
/// take a sixth of a small call, and a thirtieth of one that fills a page.
bool LogBuffer::IsFileAsLeft()
{
    const bool costsLittle = EndOfText() - textStart >= 4 * SteppedFlush::pageSize;
    if (--flushesUntilLook > 0 && !costsLittle) {
        return true;
    }
    flushesUntilLook = flushesPerLook;
    return file.IsAsLeft(pieces.Any() ? pieces.EndOfFile() : tail.End());
}

/// After a flush: the text just written is the new tail, and the old tail's memory takes the next text.
void LogBuffer::TakeTextAsTail()
{
    assert(CurrentState() == State::Pending || CurrentState() == State::Pieces);
    const off_t position = Position();
    const off_t fileEnd = EndOfFile();
    const off_t end = EndOfText();
    const bool oldTailStands = !pieces.Any() && textStart >= tail.Start();
    if (oldTailStands) {
        KeepMarkupBeforePageEnd(end);
    }
    const bool endsFile = end == fileEnd || (oldTailStands && LetTextEndFile());
    if (pieces.Any()) {
        BeginOutsideOfMarkup();
    }
    tail.Take(block, endsFile ? textStart : fileEnd, fileEnd);
    pieces.Forget();
    StartTextAt(position);
}

/// Lets the text, a last piece that may begin in the midst of a comment, an instruction or a section,
/// begin after the end of the last one: there it is in none.
void LogBuffer::BeginOutsideOfMarkup()
{
    const FlushText text = Text();
    std::size_t place = 0;
    for (const std::string_view closing : {"-->", "?>", "]]>"}) {
        if (const auto found = text.All().rfind(closing); found != std::string_view::npos) {
            place = std::max(place, found + closing.size());
        }
    }
    const auto length = text.All().size() - place;
    const char* const bytes = text.bytes + place;
    StartTextAt(text.start + static_cast<off_t>(place));
    std::memmove(pbase(), bytes, length);
    textHighest = pbase() + length;
}

/// Where a page ends soon after the beginning of the text, the next flush may have to begin earlier, with
/// markup that the old tail holds.
void LogBuffer::KeepMarkupBeforePageEnd(off_t end)
{
    constexpr off_t soon = 100;
    const off_t lastPage = end / SteppedFlush::pageSize * SteppedFlush::pageSize;
    if (lastPage <= textStart || lastPage - textStart > soon) {
        return;
    }
    if (const auto markup = tail.LastMarkup(tail.Start(), std::min(textStart, lastPage - soon / 2))) {
        BeginEarlier(*markup);
    }
}

/// Writes the text out ahead of its flush, when there is too much of it for memory. What comes last stays
/// in memory as long as the text goes on there: the last piece is then long enough for the next flush to
/// know what comes before its tail.
bool LogBuffer::WriteOutPiece(bool goesOn)
{
    assert(CurrentState() != State::Closed);
    if (!pieces.Any() && tail.ReachBackTo(textStart)) {
        if (const auto start = pieces.BetterStart(Text())) {
            BeginEarlier(*start);
        }
    }
    const off_t position = Position();
    FlushText piece = Text();
    std::array<char, 2 * Block::pageSize> last;
    constexpr off_t most = last.size();
    const off_t kept =
        goesOn && position == piece.end ? std::min(most, (piece.end - piece.start) / 4) : 0;
    piece.end -= kept;
    std::copy_n(piece.At(piece.end), kept, last.data());
    const OpenFile::Change change(file);
    if (!pieces.Write(piece)) {
        StartTextAt(textStart);
        return false;
    }
    StartTextAt(position - kept);
    Advance(std::copy_n(last.data(), kept, pptr()));
    return true;
}

/// After text has been lost: what came before it since the last flush would be half a document, and
/// closing must not write it.
void LogBuffer::DropText()
{
    assert(CurrentState() != State::Closed);
    if (pieces.Any()) {
        const OpenFile::Change change(file);
        pieces.TakeBack();
    }
    StartTextAt(textStart);
}

/// Drops the text from `position` on. What has been written of it is cut off, and what came before it is
/// brought back into memory; when there is no memory for that, all is lost.
void LogBuffer::DropFrom(off_t position)
{
    if (!IsOpen() || position >= EndOfText()) {
        return;
    }
    if (position < textStart && !BringBack(position)) {
        DropText();
        outOfMemory = true;
        return;
    }
    setp(pbase(), epptr());
    Advance(Text().At(std::max(position, textStart)));
    textHighest = sought = pptr();
}

/// Makes the text in memory what has been written of it in pieces, up to `end`; there are none
/// afterwards.
bool LogBuffer::BringBack(off_t end)
{
    if (!pieces.Any()) {
        return true;  // it is flushed
    }
    const off_t start = pieces.Start();
    const auto length = static_cast<std::size_t>(std::max(end, start) - start);
    StartTextAt(start);
    if (length > mostInMemory + Block::pageSize || !Enlarge(length) ||
        !pieces.Read(start + static_cast<off_t>(length), pbase())) {
        return false;
    }
    const OpenFile::Change change(file);
    pieces.TakeBack();
    textHighest = pbase() + length;
    return true;
}

void LogBuffer::TakeBack(off_t position)
{
    if (IsOpen()) {
        DropText();
        StartTextAt(position);
        outOfMemory = false;
    }
}

// ---- The text in memory -------------------------------------------------------------------------

void LogBuffer::StartTextAt(off_t position)
{
    textStart = position;
    block.AlignTo(position);
    SetPutArea(0);
    textHighest = sought = pbase();
}

/// Lets the text grow to `wanted` bytes, keeping all that is known of its place.
bool LogBuffer::Enlarge(std::size_t wanted)
{
    const auto put = pptr() - pbase();
    const auto highest = textHighest - pbase();
    const auto target = sought - pbase();
    if (!block.Grow(wanted, static_cast<std::size_t>(std::max(put, TextEnd() - pbase())))) {
        return false;
    }
    SetPutArea(wanted);
    Advance(pbase() + put);
    textHighest = pbase() + highest;
    sought = pbase() + target;
    return true;
}

char* LogBuffer::MakeRoom(std::size_t most)
{
    if (!IsOpen()) {
        return nullptr;
    }
    // A piece that is small beside what comes would save no memory.
    const auto used = static_cast<std::size_t>(pptr() - pbase());
    if (used + most > mostInMemory && used > mostInMemory / 2 && !WriteOutPiece(true)) {
        return nullptr;
    }
    if (!Enlarge(static_cast<std::size_t>(pptr() - pbase()) + most)) {
        DropText();
        outOfMemory = true;
        return nullptr;
    }
    return pptr();
}

/// Lets the text take up [from, to), with what the file has in the places before and after it; false
/// when that is too much or not known.
bool LogBuffer::ExtendText(off_t from, off_t to)
{
    const off_t end = EndOfText();
    if (from == textStart && to == end) {
        return true;
    }
    if (pieces.Any() || to - from > static_cast<off_t>(Block::mostInMemory) || !tail.ReachBackTo(from) ||
        !Enlarge(static_cast<std::size_t>(to - from))) {
        return false;
    }
    if (from < textStart) {
        const off_t added = textStart - from;
        const char* const bytesBefore = pbase();
        block.AlignTo(from);
        SetPutArea(static_cast<std::size_t>(to - from));
        std::memmove(pbase() + added, bytesBefore, static_cast<std::size_t>(end - textStart));
        tail.Copy(from, textStart, pbase());
        textStart = from;
        textHighest = Text().At(end);
    }
    if (to > end) {
        tail.Copy(end, to, Text().At(end));
    }
    return true;
}

/// Moves the put pointer to a place, to which the text is extended; false when that can't be done.
bool LogBuffer::MoveTo(off_t target)
{
    textHighest = TextEnd();
    sought = pptr();
    if (!ExtendText(std::min(target, textStart), std::max(target, EndOfText()))) {
        return false;
    }
    setp(pbase(), epptr());
    Advance(Text().At(target));
    sought = pptr();
    return true;
}

/// Extends the text to begin at an earlier place, if that can be done; the put pointer stays in its
/// place.
void LogBuffer::BeginEarlier(off_t start)
{
    const off_t position = Position();
    if (MoveTo(start)) {
        MoveTo(position);
    }
}

/// Where the old tail is longer than the text, its last bytes stay in the file: they become the text's,
/// too. False when there is no memory for that.
bool LogBuffer::LetTextEndFile()
{
    const off_t end = EndOfText();
    const off_t fileEnd = std::max(end, tail.End());
    if (!Enlarge(static_cast<std::size_t>(fileEnd - textStart))) {
        return false;
    }
    tail.Copy(end, fileEnd, Text().At(end));
    textHighest = Text().At(fileEnd);
    return true;
}

std::streambuf::int_type LogBuffer::overflow(int_type character)
{
    if (traits_type::eq_int_type(character, traits_type::eof())) {
        return traits_type::not_eof(character);
    }
    char* const out = Room(1);
    if (out == nullptr) {
        return traits_type::eof();
    }
    *out = traits_type::to_char_type(character);
    Advance(out + 1);
    return character;
}

std::streamsize LogBuffer::xsputn(const char* characters, std::streamsize length)
{
    constexpr std::streamsize atATime = 1024 * 1024;
    std::streamsize done = 0;
    while (done < length) {
        const auto part = static_cast<std::size_t>(std::min(length - done, atATime));
        char* const out = Room(part);
        if (out == nullptr) {
            break;
        }
        std::memcpy(out, characters + done, part);
        Advance(out + part);
        done += static_cast<std::streamsize>(part);
    }
    return done;
}

std::streambuf::pos_type LogBuffer::seekoff(off_type offset, std::ios_base::seekdir from,
                                            std::ios_base::openmode which)
{
    if (!IsOpen()) {
        return pos_type(off_type(-1));
    }
    if (from == std::ios_base::cur) {
        return offset == 0 ? pos_type(Position()) : seekpos(Position() + offset, which);
    }
    const off_t base = from == std::ios_base::beg ? 0 : EndOfFile();
    return seekpos(base + offset, which);
}

std::streambuf::pos_type LogBuffer::seekpos(pos_type position, std::ios_base::openmode)
{
    const off_t target = position;
    if (!IsOpen() || target < 0) {
        return pos_type(off_type(-1));
    }
    if (TextEnd() == pbase()) {
        StartTextAt(target);
    } else if (!MoveTo(target)) {
        if (!WriteOutPiece(false)) {
            return pos_type(off_type(-1));
        }
        StartTextAt(target);
    }
    return position;
}

// ---- Writing ------------------------------------------------------------------------------------

int LogBuffer::sync()
{
    return !IsOpen() || holds > 0 || Flush() ? 0 : -1;
}

/// In steps, when the text spans pages and replaces the tail.
bool LogBuffer::WriteText()
{
    if (pieces.Any()) {
        return CommitPieces();
    }
    if (!tail.ReachBackTo(textStart)) {
        return WriteInOneGo();
    }
    if (file.Synchronises()) {
        return WriteSynchronised();
    }
    if (!SteppedFlush::IsPossible(tail, Text())) {
        return WriteInOneGo();
    }
    const auto outcome = WriteInSteps(SteppedFlush(file, tail, covered, Text()));
    return outcome == SteppedFlush::Outcome::NotBegun ? WriteInOneGo() : Finish(outcome);
}

/// As WriteText, so that a machine that dies leaves a document, too.
bool LogBuffer::WriteSynchronised()
{
    if (SpansPages(textStart, EndOfText())) {
        LetTextEndFile();
    }
    if (!SyncedFlush::IsPossible(tail, Text())) {
        return WriteInOneGo();
    }
    const auto outcome = WriteInSteps(SyncedFlush(file, tail, covered, Text()));
    // A piece may be hidden after a tail that can't be hidden itself.
    return outcome == SteppedFlush::Outcome::NotBegun ? pieces.Commit(Text()) : Finish(outcome);
}

bool LogBuffer::CommitPieces()
{
    const off_t position = Position();
    if (TextEnd() == pbase()) {
        StartTextAt(pieces.End());  // no more has come since a seek
    }
    const bool written = pieces.Commit(Text());
    if (TextEnd() == pbase()) {
        StartTextAt(position);
    }
    return written;
}

template <typename Steps>
SteppedFlush::Outcome LogBuffer::WriteInSteps(Steps steps)
{
    assert(CurrentState() == State::Pending);
    if (const auto start = steps.BetterStart()) {
        BeginEarlier(*start);
        steps.SetText(Text());
    }
    return steps.Run();
}

/// After a flush in steps: where it has failed, makes the file what it was before. Returns whether it has
/// succeeded.
bool LogBuffer::Finish(SteppedFlush::Outcome outcome)
{
    if (outcome == SteppedFlush::Outcome::TailStands) {
        tail.CutOffWhatFollows();
    } else if (outcome == SteppedFlush::Outcome::TailTouched) {
        PutTailBack();
    }
    return outcome == SteppedFlush::Outcome::Done;
}

bool LogBuffer::WriteInOneGo()
{
    if (file.Write(Text().All(), textStart)) {
        return true;
    }
    PutTailBack();
    return false;
}

/// After a failed synchronisation the text may be in the file all the same: within a page it gives way to
/// the tail and to newlines at once, before those are cut off.
void LogBuffer::BlankText()
{
    const FlushText text = Text();
    if (SpansPages(text.start, text.end) || text.start < tail.Start() || tail.End() <= text.start) {
        return;
    }
    std::fill(text.bytes, text.At(text.end), '\n');
    tail.Copy(text.start, std::min(text.end, tail.End()), text.bytes);
    file.Write(text.All(), text.start);
}

/// After a failed write: the file is again what the last flush left.
void LogBuffer::PutTailBack()
{
    if (file.Synchronises()) {
        BlankText();
    }
    tail.PutBack(textStart);
}

}  // namespace Scrivel2
