// Which blanks at the end of a text mean nothing, and what takes their room. Tested by
// tests/stream/ClosedEndTest.cpp.

#include "stream/ClosedEnd.h"

#include "format/LogWords.h"

#include <algorithm>

namespace Scrivel2
{
namespace
{

constexpr std::string_view opening = LogWords::flushOpening;
constexpr std::string_view closing = LogWords::flushClosing;

bool IsBlank(char character)
{
    return character == ' ' || character == '\n' || character == '\t' || character == '\r';
}

/// The length of the text without the end tag that it ends in; its own when it doesn't end in one.
std::size_t BeforeEndTag(std::string_view text)
{
    if (text.empty() || text.back() != '>') {
        return text.size();
    }
    std::size_t begin = text.size() - 1;
    while (begin > 0 && text[begin] != '<') {
        --begin;
        if (text[begin] == '>' || IsBlank(text[begin])) {
            return text.size();
        }
    }
    return text.substr(begin, 2) == "</" ? begin : text.size();
}

/// The length of the text without the blanks that it ends in.
std::size_t BeforeBlanks(std::string_view text)
{
    std::size_t length = text.size();
    while (length > 0 && IsBlank(text[length - 1])) {
        --length;
    }
    return length;
}

/// The length of the text without its shortest end that has room for an instruction in the place of
/// blanks after end tags; its own when there is none.
std::size_t BeforeClosedEnd(std::string_view text)
{
    std::size_t room = 0;
    for (std::string_view rest = text; !rest.empty();) {
        const std::size_t tagEnd = BeforeBlanks(rest);
        const std::size_t tagBegin = BeforeEndTag(rest.substr(0, tagEnd));
        if (tagBegin == tagEnd) {
            break;
        }
        room += rest.size() - tagEnd;
        if (room >= opening.size() + closing.size()) {
            return tagEnd;
        }
        rest = rest.substr(0, tagBegin);
    }
    return text.size();
}

}  // namespace

std::optional<ClosedEnd> ClosedEnd::Of(const FlushText& text, off_t from)
{
    const off_t known = std::max(text.start, text.end - static_cast<off_t>(longest));
    const std::string_view end = text.Part(known, text.end);
    const std::size_t before = BeforeClosedEnd(end);
    const off_t place = known + static_cast<off_t>(before);
    const off_t lastPage = PageEnd(text.end - 1) - Block::pageSize;
    if (before == end.size() || place < std::max(from, lastPage)) {
        return {};
    }
    return ClosedEnd(end.substr(before), place);
}

ClosedEnd::ClosedEnd(std::string_view trueEnd, off_t place) : start(place), size(trueEnd.size())
{
    char* out = bytes.data();
    for (auto tag = trueEnd.find('<'); tag != std::string_view::npos;) {
        const auto tagEnd = trueEnd.find('>', tag) + 1;
        out += trueEnd.copy(out, tagEnd - tag, tag);
        tag = trueEnd.find('<', tagEnd);
    }
    char* const end = bytes.data() + size;
    out += opening.copy(out, opening.size());
    std::fill(out, end - closing.size(), ' ');
    closing.copy(end - closing.size(), closing.size());
}

}  // namespace Scrivel2
