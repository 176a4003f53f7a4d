// Pages after the end of the file that are no content, each of them by itself. Tested by
// tests/stream/SteppedFlushTest.cpp and tests/stream/HugeFlushTest.cpp.

#include "stream/Staging.h"

#include "format/LogWords.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace Scrivel2
{
namespace
{

constexpr std::string_view opening = LogWords::flushOpening;
constexpr std::string_view closing = LogWords::flushClosing;

// A page too short to be an instruction is newlines; so is what is too short for the trailer.
constexpr std::size_t longestBlank = Mark::longest + closing.size();
static_assert(Block::spare >= 2 * longestBlank);

constexpr std::array<char, longestBlank> newlines = [] {
    std::array<char, longestBlank> all{};
    for (char& character : all) {
        character = '\n';
    }
    return all;
}();

/// The length of the shortest staged page that begins with `lead`.
off_t Shortest(std::string_view lead)
{
    return static_cast<off_t>(lead.size() + closing.size());
}

/// Where a trailer begins after text that ends at `end`: on one page.
off_t PlaceOfTrailer(off_t end, std::string_view trailer)
{
    return end + static_cast<off_t>(trailer.size()) <= PageEnd(end) ? end : PageEnd(end);
}

}  // namespace

off_t Staging::PlaceOfInstruction(off_t from, off_t to)
{
    const off_t place = PageEnd(from) - from < Shortest(opening) ? PageEnd(from) : from;
    return to - place < Shortest(opening) ? -1 : place;
}

off_t Staging::AfterOpening(off_t offset)
{
    return offset + static_cast<off_t>(opening.size());
}

void Staging::PutTail(const FileTail& tail, off_t start, off_t instruction, char* out)
{
    std::fill_n(out, AfterOpening(instruction) - start, '\n');
    tail.Copy(start, tail.End(), out);
    opening.copy(out + (instruction - start), opening.size());
}

bool Staging::GetMemoryFor(const FlushText& text, off_t from, std::string_view lead)
{
    const auto pages = static_cast<std::size_t>((text.end - from) / Block::pageSize + 2);
    return covered.Grow(pages * (lead.size() + closing.size()), 0);
}

bool Staging::WriteInstructions(const FlushText& text, off_t from, std::string_view lead,
                                std::string_view trailer)
{
    trailerStart = PutTrailer(text, trailer);
    end = trailerStart + static_cast<off_t>(trailer.size());
    char* saved = covered.Bytes();
    ForEachMark(text, from, lead, [&](char* at, std::string_view mark) {
        saved = std::copy_n(at, mark.size(), saved);
        mark.copy(at, mark.size());
    });
    const bool written = file.Write(text.Part(from, end), from);
    const char* restored = covered.Bytes();
    ForEachMark(text, from, lead, [&](char* at, std::string_view mark) {
        std::copy_n(restored, mark.size(), at);
        restored += mark.size();
    });
    return written;
}

bool Staging::WriteBlank(off_t from, off_t to, std::string_view lead, std::string_view trailer)
{
    alignas(Block::pageSize) std::array<char, Block::pageSize> page;
    trailerStart = PlaceOfTrailer(to, trailer);
    end = trailerStart + static_cast<off_t>(trailer.size());
    for (off_t begin = from, next; begin < end; begin = next) {
        next = std::min(PageEnd(begin), end);
        char* const first = page.data() + begin % Block::pageSize;
        char* const last = first + (next - begin);
        std::fill(first, last, '\n');
        if (std::min(next, trailerStart) - begin >= static_cast<off_t>(lead.size())) {
            lead.copy(first, lead.size());
        }
        if (next == end) {
            trailer.copy(last - trailer.size(), trailer.size());
        }
        if (!file.Write({first, static_cast<std::size_t>(next - begin)}, begin)) {
            return false;
        }
    }
    return true;
}

bool Staging::Uncover(const Cover& cover, const FlushText& text, const FileTail& tail)
{
    const off_t afterOpening = cover.After(text.start);
    const off_t afterTail = std::max(afterOpening, tail.End());
    const auto writeFirst = [&] { return file.Write(text.Part(text.start, afterOpening), text.start); };
    if (!cover.Over(text.bytes, writeFirst) ||
        !file.Write(tail.Part(afterOpening, afterTail), afterOpening) ||
        !WriteBlank(afterTail, trailerStart, {}, {})) {
        return false;
    }
    // The text is lost: its memory takes what the opening covers.
    std::fill(text.bytes, text.At(afterOpening), '\n');
    tail.Copy(text.start, std::min(afterOpening, tail.End()), text.bytes);
    return writeFirst();
}

/// Puts the trailer after the text, with newlines before it when it would not fit on the page. Returns
/// its place.
off_t Staging::PutTrailer(const FlushText& text, std::string_view trailer) const
{
    const off_t place = PlaceOfTrailer(text.end, trailer);
    char* const out = std::copy_n(newlines.begin(), place - text.end, text.At(text.end));
    trailer.copy(out, trailer.size());
    return place;
}

/// Calls `visit` with each mark of the staged pages, and with the place in the text that it covers.
template <typename Visit>
void Staging::ForEachMark(const FlushText& text, off_t from, std::string_view lead, Visit visit) const
{
    for (off_t begin = from, next; begin < text.end; begin = next) {
        next = std::min(PageEnd(begin), text.end);
        if (next - begin < Shortest(lead)) {
            const auto length = static_cast<std::size_t>(next - begin);
            visit(text.At(begin), std::string_view(newlines.data(), newlines.size()).substr(0, length));
        } else {
            visit(text.At(begin), lead);
            visit(text.At(next) - closing.size(), closing);
        }
    }
}

}  // namespace Scrivel2
