// The states of a LogBuffer, and what is in the file in each:
//
//   CLOSED --Open--> CLEAN --text--> PENDING --more than 64 MiB--> PIECES
//                      ^                |                            |
//                      +----------------+---- flush, or a write fails
//
//   CLOSED    no descriptor, no put area: output fails.
//   CLEAN     The file is what the last flush left; `tail` holds its end. No text is in memory.
//   PENDING   The file is as in CLEAN. The text since the flush lies in the put area:
//
//                 file     ...<regCount>1</regCount>\n</trace-4242>\n|
//                                                     |              ^ fileEnd
//                                                     ^ textStart
//                 memory                              |    <CADIMemRead ...</trace-4242>\n
//
//             Seeking moves the put pointer within that text. A seek to a place outside it makes the
//             text reach there, with the bytes that the file has in between.
//   PIECES    As PENDING, but text of the same flush has already been written over the tail: what a
//             kill leaves is not protected until the flush is done. `tail` still holds what was there.
//
// A flush brings the text M to textStart, where the old tail T0 ends the file. Should the process be
// killed, the kernel finishes the page it is copying and stops: a write within one page is there wholly
// or not at all. Text that spans pages therefore comes in steps, each of which leaves a document:
//
//   1 stage   behind T0, each page an instruction of its own, and a trailer
//                 ...T0<?x mmmmmmm?>|<?x mmmmmmmmmm?>|<?x mmm?><?x ?>
//   2 merge   the true bytes inside: page by page the instructions become one that the trailer closes
//                 ...T0<?x mmmmmmmmm|mmmmmmmmmmmmmmmm|mmmmmmmmm<?x ?>
//   3 commit  T0 and the opening of the instruction are replaced, in one page: the new document
//                 ...MMMMMMMMMMMMMMM|MMMMMMMMMMMMMMMM|MMMMMMMMM<?x ?>
//   4 cut     the trailer
//
// Where T0 and the opening lie across two pages, a kill between the two would find them half replaced.
// Another opening takes the place of T0 first, and each staged page is a comment and an instruction that
// read otherwise behind an opening: as the end of an instruction, a copy of T0, and an instruction.
//
//   1 stage   ...</trac|e-4242>\n<!-- ?>T0<?x --><?x mmm?>|<!-- ?>T0<?x --><?x m?>TRAILER
//   2 hide    ...<?x MM|MMMMMMMMMMMMMMMMMMMMMMMMMMMMMMMMMM|MMMMMMMMMMMMMMMMMMMMMMMTRAILER
//   3 commit  ...MMMMMM|MMMMMMMMMMMMMMMMMMMMMMMMMMMMMMMMMM|MMMMMMMMMMMMMMMMMMMMMMMTRAILER
//   4 cut     the trailer, <!-- ?>T0<?x --><?x ?>
//
// A write goes through the pages in their order: in the middle of 2 the new opening reaches to the first
// page that is still staged. Where the page has no room for it, T0 and M begin some bytes earlier, with
// the last markup that leaves it room.
//
// Text that holds "?>" would end an instruction, and is written in one go. A tail across two pages whose
// copy would end its comment or an instruction is replaced as if it lay on one page.
//
// When a write fails, T0 is put back if it had been touched, and what follows it is cut off: the state is
// CLEAN again, the text is gone, and the stream is bad, so that no more comes until it is opened anew.

#include "scrivel/LogStream.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <new>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Scrivel2
{
namespace
{

constexpr off_t pageSize = 4096;
constexpr std::size_t firstCapacity = 16 * 1024;
constexpr std::size_t mostInMemory = 64 * 1024 * 1024;

constexpr std::string_view opening = "<?x ";
constexpr std::string_view closing = "?>";
constexpr std::string_view beforeCopy = "<!-- ?>";
constexpr std::string_view behindCopy = "<?x --><?x ";
constexpr std::size_t longestCopy = 256;
constexpr std::size_t longestMarks = beforeCopy.size() + longestCopy + behindCopy.size() + closing.size();
constexpr std::size_t trailerRoom = 2 * longestMarks;

/// In the place of an instruction too short to be one.
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

/// The length of the shortest instruction that begins so.
off_t Shortest(std::string_view instruction)
{
    return static_cast<off_t>(instruction.size() + closing.size());
}

/// Where the instruction begins that hides [from, to): at once, or on the next page when the rest of
/// this one is too short for it; -1 when there is no room for one at all.
off_t OpenerWithin(off_t from, off_t to)
{
    const off_t opener = PageEnd(from) - from < Shortest(opening) ? PageEnd(from) : from;
    return to - opener < Shortest(opening) ? -1 : opener;
}

bool Holds(std::string_view text, std::string_view part)
{
    return text.find(part) != std::string_view::npos;
}

/// Repeats a system call that a signal has interrupted. One that is interrupted every time counts as
/// failed: the host program must not hang in its log.
template <typename SystemCall>
auto Uninterrupted(SystemCall call)
{
    constexpr int mostAttempts = 1000;
    auto result = call();
    for (int attempt = 1; attempt < mostAttempts && result < 0 && errno == EINTR; ++attempt) {
        result = call();
    }
    return result;
}

}  // namespace

/// Keeps the signal of the file-size limit back, once a write has come up against something, until the
/// tail is back in its place: a process that this signal kills leaves a document too.
class LogBuffer::FileSizeSignal
{
public:
    FileSizeSignal() = default;
    FileSizeSignal(const FileSizeSignal&) = delete;
    FileSizeSignal& operator=(const FileSizeSignal&) = delete;

    ~FileSizeSignal()
    {
        if (held) {
            pthread_sigmask(SIG_SETMASK, &before, nullptr);
        }
    }

    void Hold()
    {
        if (!held) {
            sigset_t fileSize;
            sigemptyset(&fileSize);
            sigaddset(&fileSize, SIGXFSZ);
            held = pthread_sigmask(SIG_BLOCK, &fileSize, &before) == 0;
        }
    }

private:
    bool held = false;
    sigset_t before;
};

// ---- Opening and closing ------------------------------------------------------------------------

LogBuffer::~LogBuffer()
{
    if (IsOpen()) {
        close(descriptor);
    }
}

bool LogBuffer::Open(const char* name)
{
    if (IsOpen() || !text.Grow(firstCapacity, 0) || !tail.Grow(firstCapacity, 0)) {
        return false;
    }
    // For reading too, so that a tail that is no longer in memory can be looked up. O_NONBLOCK is for
    // FIFOs, which are turned away: they have no place to seek back to.
    constexpr int flags = O_CREAT | O_TRUNC | O_CLOEXEC | O_NONBLOCK;
    descriptor = open(name, O_RDWR | flags, 0666);
    if (!IsOpen() && errno == EACCES) {
        descriptor = open(name, O_WRONLY | flags, 0666);
    }
    if (!IsOpen()) {
        return false;
    }
    struct stat status;
    const int reason = fstat(descriptor, &status) != 0 ? errno : S_ISFIFO(status.st_mode) ? ESPIPE : 0;
    if (reason != 0) {
        close(std::exchange(descriptor, -1));
        errno = reason;
        return false;
    }
    tailStart = fileEnd = 0;
    pieceStart = pieceEnd = -1;
    StartTextAt(0);
    return true;
}

bool LogBuffer::Close()
{
    if (!IsOpen()) {
        return false;
    }
    const bool written = Commit();
    setp(nullptr, nullptr);
    textHighest = sought = nullptr;
    return close(std::exchange(descriptor, -1)) == 0 && written;
}

// ---- Text in memory -----------------------------------------------------------------------------

bool LogBuffer::Block::Grow(std::size_t wanted, std::size_t used)
{
    if (wanted <= capacity) {
        return true;
    }
    const std::size_t enlarged = std::max(wanted, 2 * capacity);
    std::unique_ptr<char[]> memory(new (std::nothrow) char[enlarged + trailerRoom]);
    if (memory == nullptr) {
        return false;
    }
    if (used > 0) {
        std::memcpy(memory.get(), bytes.get(), used);
    }
    bytes = std::move(memory);
    capacity = enlarged;
    return true;
}

void LogBuffer::StartTextAt(off_t position)
{
    textStart = position;
    setp(text.bytes.get(), text.bytes.get() + text.capacity);
    textHighest = sought = pbase();
}

/// The end of what has been written: a seek alone does not move it.
char* LogBuffer::TextEnd() const
{
    return pptr() > sought ? std::max(textHighest, pptr()) : textHighest;
}

/// The end that the file has when the text is written: the place of a seek alone does not count.
off_t LogBuffer::EndOfFile() const
{
    return std::max({fileEnd, pieceEnd, TextEnd() > pbase() ? EndOffset() : 0});
}

/// Lets the text grow to `wanted` bytes, keeping all that is known of its place.
bool LogBuffer::Enlarge(std::size_t wanted)
{
    const auto put = pptr() - pbase();
    const auto highest = textHighest - pbase();
    const auto target = sought - pbase();
    if (!text.Grow(wanted, static_cast<std::size_t>(std::max(put, TextEnd() - pbase())))) {
        return false;
    }
    setp(text.bytes.get(), text.bytes.get() + text.capacity);
    pbump(static_cast<int>(put));
    textHighest = pbase() + highest;
    sought = pbase() + target;
    return true;
}

char* LogBuffer::MakeRoom(std::size_t most)
{
    if (!IsOpen()) {
        return nullptr;
    }
    if (static_cast<std::size_t>(pptr() - pbase()) + most > mostInMemory && !WriteOutPiece()) {
        return nullptr;
    }
    if (!Enlarge(static_cast<std::size_t>(pptr() - pbase()) + most)) {
        DropText();
        return nullptr;
    }
    return pptr();
}

/// After text has been lost: what came before it since the last flush would be half a document, and
/// closing must not write it.
void LogBuffer::DropText()
{
    if (pieceStart >= 0) {
        FileSizeSignal signal;
        PutTailBack(signal);
    }
    StartTextAt(textStart);
}

/// Makes the text reach from `from` to `to`, with what the file has there; false when that is too much
/// or not known.
bool LogBuffer::Reach(off_t from, off_t to)
{
    const off_t end = EndOffset();
    if (pieceStart >= 0 || to - from > static_cast<off_t>(mostInMemory) || !KnowTail(from) ||
        !Enlarge(static_cast<std::size_t>(to - from))) {
        return false;
    }
    if (from < textStart) {
        const off_t added = textStart - from;
        std::memmove(pbase() + added, pbase(), static_cast<std::size_t>(end - textStart));
        CopyFromFile(from, textStart, pbase());
        textStart = from;
        textHighest = At(end);
    }
    if (to > end) {
        CopyFromFile(end, to, At(end));
    }
    return true;
}

/// Moves the put pointer to a place that the text reaches then; false when it can't.
bool LogBuffer::MoveTo(off_t target)
{
    textHighest = TextEnd();
    sought = pptr();
    if (!Reach(std::min(target, textStart), std::max(target, EndOffset()))) {
        return false;
    }
    setp(pbase(), epptr());
    pbump(static_cast<int>(target - textStart));
    sought = pptr();
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
        if (!WriteOutPiece()) {
            return pos_type(off_type(-1));
        }
        StartTextAt(target);
    }
    return position;
}

// ---- The end of the file ------------------------------------------------------------------------

/// Makes sure that `tail` holds the file's bytes from `from` on; false when they are too many or can't
/// be read.
bool LogBuffer::KnowTail(off_t from)
{
    if (from >= tailStart) {
        return true;
    }
    const auto missing = static_cast<std::size_t>(tailStart - from);
    const auto known = static_cast<std::size_t>(fileEnd - tailStart);
    if (missing + known > mostInMemory || !tail.Grow(missing + known, known)) {
        return false;
    }
    std::memmove(tail.bytes.get() + missing, tail.bytes.get(), known);
    std::size_t done = 0;
    while (done < missing) {
        const ssize_t got = Uninterrupted([&] {
            return pread(descriptor, tail.bytes.get() + done, missing - done,
                         from + static_cast<off_t>(done));
        });
        if (got <= 0) {
            std::memmove(tail.bytes.get(), tail.bytes.get() + missing, known);
            return false;
        }
        done += static_cast<std::size_t>(got);
    }
    tailStart = from;
    return true;
}

/// What the file has in a place that `tail` covers; zeros behind its end.
void LogBuffer::CopyFromFile(off_t from, off_t to, char* out) const
{
    const off_t held = std::clamp(fileEnd, from, to);
    if (held > from) {
        std::memcpy(out, tail.bytes.get() + (from - tailStart), static_cast<std::size_t>(held - from));
    }
    std::memset(out + (held - from), 0, static_cast<std::size_t>(to - held));
}

/// After a flush up to `end`: the text just written is the new tail, and the old tail's memory takes
/// the next text.
void LogBuffer::KeepTail(off_t end)
{
    const off_t newEnd = EndOfFile();
    const off_t position = Position();
    const bool oldTailStands = pieceStart < 0 && textStart >= tailStart;
    if (end < newEnd && oldTailStands && Enlarge(static_cast<std::size_t>(newEnd - textStart))) {
        // It was longer than the text: its last bytes are still there.
        CopyFromFile(end, newEnd, At(end));
        end = newEnd;
    }
    std::swap(text, tail);
    tailStart = end == newEnd ? textStart : newEnd;
    fileEnd = newEnd;
    pieceStart = pieceEnd = -1;
    StartTextAt(position);
}

/// After a failed write: the file is again what the last flush left. When even the tail can't be written
/// nothing is cut off, as what stands behind it may be what makes the file a document.
void LogBuffer::PutTailBack(FileSizeSignal& signal)
{
    const off_t from = pieceStart < 0 ? textStart : std::min(textStart, pieceStart);
    const bool overwritten = from >= tailStart && from < fileEnd;
    if (!overwritten || Write(tail.bytes.get() + (from - tailStart),
                              static_cast<std::size_t>(fileEnd - from), from, signal)) {
        CutAt(fileEnd);
    }
    pieceStart = pieceEnd = -1;
}

// ---- Writing ------------------------------------------------------------------------------------

int LogBuffer::sync()
{
    return !IsOpen() || holds > 0 || Commit() ? 0 : -1;
}

bool LogBuffer::Commit()
{
    const off_t start = textStart;
    const off_t end = EndOffset();
    if (end == start && pieceStart < 0) {
        return true;
    }
    FileSizeSignal signal;
    if (WriteFlush(end, signal)) {
        KeepTail(end);
        return true;
    }
    StartTextAt(start);
    return false;
}

/// In steps, as drawn above, when the text spans pages and replaces the tail. When only the cut at their
/// end fails the new document stands, with the trailer behind it.
bool LogBuffer::WriteFlush(off_t end, FileSizeSignal& signal)
{
    const bool tailKnown = pieceStart < 0 && KnowTail(textStart);
    const bool replacesTail = tailKnown && textStart < fileEnd && fileEnd < end;
    if (!replacesTail || !SpansPages(textStart, end) || Holds(Text(), closing) || !RoomForMarks(end)) {
        return WriteWhole(end, signal);
    }
    const off_t opener = OpenerWithin(fileEnd, end);
    const off_t inside = opener + static_cast<off_t>(opening.size());
    const bool onOnePage = opener >= 0 && !SpansPages(textStart, inside);
    const bool hidden = !onOnePage && LeadToOpening() && CanHideTail();
    if (!hidden && opener < 0) {
        return WriteWhole(end, signal);
    }
    if (!(hidden ? StageToHide(end, signal) : StageAndMerge(opener, end, signal))) {
        CutAt(fileEnd);  // the tail has not been touched
        return false;
    }
    if (!(hidden ? HideAndCommit(end, signal) : WriteText(textStart, inside, signal))) {
        PutTailBack(signal);
        return false;
    }
    return CutAt(end);
}

/// Makes the text begin where the opening of an instruction has room on the page: when it doesn't, with
/// the last markup before that has.
bool LogBuffer::LeadToOpening()
{
    const off_t pageEnd = PageEnd(textStart);
    const off_t last = pageEnd - static_cast<off_t>(opening.size());
    if (textStart <= last) {
        return true;
    }
    const off_t first = std::max(pageEnd - pageSize, tailStart);
    if (last < first) {
        return false;
    }
    const std::string_view known(tail.bytes.get() + (first - tailStart),
                                 static_cast<std::size_t>(last - first + 1));
    const auto markup = known.rfind('<');
    const off_t position = Position();
    if (markup == std::string_view::npos || !MoveTo(first + static_cast<off_t>(markup))) {
        return false;
    }
    MoveTo(position);
    return true;
}

/// Whether nothing ends the instruction, or the comment, that is to hide the text and copies of the tail.
bool LogBuffer::CanHideTail() const
{
    const std::string_view replaced = Tail();
    return replaced.size() <= longestCopy && !Holds(replaced, "--") && !Holds(replaced, closing) &&
           !Holds(Text(), closing) && *At(PageEnd(textStart) - 1) != closing.front();
}

/// Writes the text out ahead of its flush, when there is too much of it for memory.
bool LogBuffer::WriteOutPiece()
{
    const off_t end = EndOffset();
    const off_t position = Position();
    if (pieceStart < 0) {
        KnowTail(textStart);
    }
    FileSizeSignal signal;
    if (!WriteWhole(end, signal)) {
        StartTextAt(textStart);
        return false;
    }
    pieceStart = pieceStart < 0 ? textStart : std::min(pieceStart, textStart);
    pieceEnd = std::max(pieceEnd, end);
    StartTextAt(position);
    return true;
}

bool LogBuffer::WriteWhole(off_t end, FileSizeSignal& signal)
{
    if (WriteText(textStart, end, signal)) {
        return true;
    }
    PutTailBack(signal);
    return false;
}

bool LogBuffer::StageAndMerge(off_t opener, off_t end, FileSizeSignal& signal)
{
    const off_t firstClosing = std::min(PageEnd(opener), end) - static_cast<off_t>(closing.size());
    return Stage(opening, end, signal) && WriteText(firstClosing, end, signal);
}

bool LogBuffer::StageToHide(off_t end, FileSizeSignal& signal)
{
    std::array<char, longestMarks> marks;
    char* marksEnd = marks.data();
    for (const std::string_view part : {beforeCopy, Tail(), behindCopy}) {
        marksEnd = std::copy(part.begin(), part.end(), marksEnd);
    }
    const auto length = static_cast<std::size_t>(marksEnd - marks.data());
    return Stage({marks.data(), length}, end, signal);
}

bool LogBuffer::HideAndCommit(off_t end, FileSizeSignal& signal)
{
    std::array<char, opening.size()> first;
    std::copy_n(pbase(), first.size(), first.begin());
    opening.copy(pbase(), first.size());
    const bool hidden = WriteText(textStart, end, signal);
    std::copy(first.begin(), first.end(), pbase());

    const off_t inside = textStart + static_cast<off_t>(first.size());
    return hidden && WriteText(textStart, inside, signal);
}

/// Writes what comes behind the tail as pages that begin with `marks` and end an instruction, and the
/// trailer.
bool LogBuffer::Stage(std::string_view marks, off_t end, FileSizeSignal& signal)
{
    const off_t roomOnPage = PageEnd(end) - end;
    const bool fits = roomOnPage >= Shortest(marks);
    char* behind = At(end);
    behind = std::copy_n(newlines.begin(), fits ? 0 : roomOnPage, behind);
    behind = std::copy(marks.begin(), marks.end(), behind);
    behind = std::copy(closing.begin(), closing.end(), behind);
    const off_t trailerEnd = textStart + (behind - pbase());

    char* saved = covered.bytes.get();
    VisitMarks(marks, end, [&](char* at, std::string_view mark) {
        saved = std::copy_n(at, mark.size(), saved);
        mark.copy(at, mark.size());
    });
    const bool staged = WriteText(fileEnd, trailerEnd, signal);
    const char* restored = covered.bytes.get();
    VisitMarks(marks, end, [&](char* at, std::string_view mark) {
        std::copy_n(restored, mark.size(), at);
        restored += mark.size();
    });
    return staged;
}

/// The places behind the tail, page by page, that the marks of instructions cover when staged.
template <typename Visit>
void LogBuffer::VisitMarks(std::string_view marks, off_t end, Visit visit) const
{
    for (off_t from = fileEnd, to; from < end; from = to) {
        to = std::min(PageEnd(from), end);
        if (to - from < Shortest(marks)) {
            visit(At(from), {newlines.data(), static_cast<std::size_t>(to - from)});
        } else {
            visit(At(from), marks);
            visit(At(to) - closing.size(), closing);
        }
    }
}

/// Memory for what marks cover, the longest ones on every page: no rare flush needs more than others.
bool LogBuffer::RoomForMarks(off_t end)
{
    const auto pages = static_cast<std::size_t>((end - fileEnd) / pageSize + 2);
    return covered.Grow(pages * longestMarks, 0);
}

bool LogBuffer::WriteText(off_t from, off_t to, FileSizeSignal& signal)
{
    return Write(At(from), static_cast<std::size_t>(to - from), from, signal);
}

bool LogBuffer::Write(const char* bytes, std::size_t length, off_t offset, FileSizeSignal& signal)
{
    while (length > 0) {
        const ssize_t written = Uninterrupted([&] { return pwrite(descriptor, bytes, length, offset); });
        if (written <= 0) {
            return false;
        }
        bytes += written;
        offset += written;
        length -= static_cast<std::size_t>(written);
        if (length > 0) {
            signal.Hold();
        }
    }
    return true;
}

bool LogBuffer::CutAt(off_t end)
{
    return Uninterrupted([&] { return ftruncate(descriptor, end); }) == 0;
}

// ---- The stream ---------------------------------------------------------------------------------

LogStream::~LogStream() = default;

void LogStream::open(const std::string& name)
{
    if (buffer.Open(name.c_str())) {
        clear();
    } else {
        setstate(failbit);
    }
}

void LogStream::close()
{
    if (!buffer.Close()) {
        setstate(failbit);
    }
}

}  // namespace Scrivel2
