// The end of the file in memory: looked up, copied, replaced, put back. Tested by
// tests/stream/FileTailTest.cpp.

#include "stream/FileTail.h"

#include <algorithm>
#include <cassert>
#include <cstring>
#include <utility>

namespace Scrivel2
{

/// Reads what memory does not hold yet.
bool FileTail::ReadBackTo(off_t from)
{
    if (end - from > static_cast<off_t>(Block::mostInMemory)) {
        return false;
    }
    const auto missing = static_cast<std::size_t>(start - from);
    const auto known = static_cast<std::size_t>(end - start);
    if (!block.Grow(missing + known, known)) {
        return false;
    }
    char* const bytesBefore = block.Bytes();
    block.AlignTo(from);
    char* const bytes = block.Bytes();
    std::memmove(bytes + missing, bytesBefore, known);
    if (!file.Read(bytes, missing, from)) {
        std::memmove(bytesBefore, bytes + missing, known);
        block.AlignTo(start);
        return false;
    }
    start = from;
    return true;
}

std::optional<off_t> FileTail::LastMarkup(off_t from, off_t to) const
{
    static constexpr struct
    {
        std::string_view opening;
        std::string_view closing;
    } opaque[] = {{"<!--", "-->"}, {"<?", "?>"}, {"<![CDATA[", "]]>"}};

    std::optional<off_t> last;
    // What memory holds begins where a flush began: outside of all that.
    const std::string_view text = From(start);
    std::size_t place = text.find('<');
    while (place != std::string_view::npos && start + static_cast<off_t>(place) <= to) {
        if (start + static_cast<off_t>(place) >= from) {
            last = start + static_cast<off_t>(place);
        }
        std::size_t after = place + 1;
        if (after < text.size() && (text[after] == '!' || text[after] == '?')) {  // few tags are
            for (const auto& [opening, closing] : opaque) {
                if (text.compare(place, opening.size(), opening) == 0) {
                    after = text.find(closing, place + opening.size());
                }
            }
        }
        place = text.find('<', after);
    }
    return last;
}

void FileTail::Copy(off_t from, off_t to, char* out) const
{
    assert(from >= start);
    const off_t held = std::clamp(end, from, to);
    if (held > from) {
        out = std::copy_n(Part(from, held).data(), held - from, out);
    }
    std::fill_n(out, to - held, '\0');
}

void FileTail::Take(Block& text, off_t newStart, off_t newEnd)
{
    block.Swap(text);
    start = newStart;
    end = newEnd;
}

void FileTail::PutBack(off_t from)
{
    const bool overwritten = from >= start && from < end;
    if (!overwritten || file.Write(From(from), from)) {
        CutOffWhatFollows();
    }
}

}  // namespace Scrivel2
