// Which text and which tail a cover may hide. Tested by tests/stream/SteppedFlushTest.cpp and
// tests/stream/HugeFlushTest.cpp.

#include "stream/Cover.h"

#include <cassert>

namespace Scrivel2
{
namespace
{

constexpr std::size_t longestAround = [] {
    std::size_t longest = 0;
    for (const Cover& cover : covers) {
        longest = std::max(longest, cover.beforeCopy.size() + cover.afterCopy.size());
    }
    return longest;
}();
// An instruction may stand before a mark, or the end of one after it.
static_assert(longestAround + LogWords::flushOpening.size() + LogWords::flushClosing.size() +
                  longestCopy <=
              Mark::longest);

}  // namespace

bool Contains(std::string_view text, std::string_view part)
{
    return text.find(part) != std::string_view::npos;
}

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

bool Cover::Hides(const FlushText& text, const FileTail& tail) const
{
    const bool hasRoom = After(text.start) <= PageEnd(text.start);
    return hasRoom && TailFits(tail, text.start) && TextFits(text, tail);
}

std::optional<off_t> Cover::StartBefore(const FlushText& text, const FileTail& tail) const
{
    const off_t pageEnd = PageEnd(text.start);
    const auto room = static_cast<off_t>(opening.size());
    const auto start = tail.LastMarkup(pageEnd - Block::pageSize, std::min(pageEnd - room, text.start));
    if (start && TailFits(tail, *start) && TextFits(text, tail) &&
        !ContainsAcross(tail.Part(*start, text.start), text.All(), closing)) {
        return start;
    }
    return {};
}

/// Whether the text does not end the cover, and neither do text and tail together while one of the tail's
/// two pages has the text already and the other one not yet.
bool Cover::TextFits(const FlushText& text, const FileTail& tail) const
{
    const off_t pageEnd = PageEnd(text.start);
    assert(pageEnd <= text.end);
    const bool liesOnTwo = pageEnd <= tail.End();
    return !Contains(text.All(), closing) &&
           !(liesOnTwo &&
             (ContainsAcross(text.Part(text.start, pageEnd), tail.From(pageEnd), closing) ||
              ContainsAcross(tail.Part(text.start, pageEnd), text.Part(pageEnd, text.end), closing)));
}

/// Whether the tail from `start` on ends neither the cover nor what is around its copies, and whether the
/// cover may stand where it begins: a section only within the root.
bool Cover::TailFits(const FileTail& tail, off_t start) const
{
    const std::string_view replaced = tail.From(start);
    return replaced.size() <= longestCopy && !Contains(replaced, closing) &&
           !Contains(replaced, notInCopy) &&
           (closing == LogWords::flushClosing || Contains(replaced, "</"));
}

const Cover* FirstThatHides(const FlushText& text, const FileTail& tail, std::size_t first)
{
    const auto* const found = std::find_if(covers.begin() + first, covers.end(),
                                           [&](const Cover& cover) { return cover.Hides(text, tail); });
    return found == covers.end() ? nullptr : found;
}

std::optional<off_t> StartForOneThatHides(const FlushText& text, const FileTail& tail, std::size_t first)
{
    for (auto cover = covers.begin() + first; cover != covers.end(); ++cover) {
        if (const auto start = cover->StartBefore(text, tail)) {
            return start;
        }
    }
    return {};
}

}  // namespace Scrivel2
