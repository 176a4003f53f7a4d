// Bisection over the calls of a log file, and one of them. Tested by tests/reader/LogInputTest.cpp.

#include "scrivel/LogFile.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <string>
#include <string_view>
#include <unistd.h>
#include <utility>

#include "scrivel/LogReader.h"

namespace ScrivelReader
{

namespace
{

constexpr std::size_t window = 16 * 1024;
constexpr std::size_t longestTag = 1024;

struct Beginning
{
    std::uint64_t offset;
    std::uint64_t number;
};

/// The bytes from an offset on: fewer at the end of the file, or when reading fails.
void ReadAt(int descriptor, std::uint64_t offset, std::size_t size, std::string& bytes)
{
    bytes.resize(size);
    std::size_t got = 0;
    while (got < size) {
        const ssize_t result = pread(descriptor, bytes.data() + got, size - got, off_t(offset + got));
        if (result < 0 && errno == EINTR)
            continue;
        if (result <= 0)
            break;
        got += std::size_t(result);
    }
    bytes.resize(got);
}

/// A line that begins a call, not one that continues it:
///     \n    <Name call_num="7"\n     call_time="    or    \n    <Name call_num="7" call_time="
std::optional<Beginning> BeginningAt(std::string_view text, std::size_t attribute)
{
    constexpr std::string_view indent = "\n    <";
    constexpr std::string_view numberBegin = " call_num=\"";
    constexpr std::string_view timeBegin = "call_time=\"";
    const std::size_t tag = text.rfind('<', attribute);
    if (tag == std::string_view::npos || tag + 1 < indent.size() ||
        text.substr(tag + 1 - indent.size(), indent.size()) != indent ||
        text.substr(tag, attribute - tag).find_first_of(" \n>!?/") != std::string_view::npos)
        return {};
    std::uint64_t number = 0;
    const char* digits = text.data() + attribute + numberBegin.size();
    const auto [end, error] = std::from_chars(digits, text.data() + text.size(), number);
    std::size_t after = std::size_t(end - text.data());
    if (error != std::errc() || after >= text.size() || text[after] != '"')
        return {};
    after = text.find_first_not_of(" \n", after + 1);
    if (after == std::string_view::npos || text.substr(after, timeBegin.size()) != timeBegin)
        return {};
    return Beginning{tag, number};
}

/// The first call that begins in [from, to).
std::optional<Beginning> FirstIn(int descriptor, std::uint64_t from, std::uint64_t to, std::string& bytes)
{
    // The line end and the indent in front of a tag may lie before the range.
    const std::uint64_t start = from - std::min<std::uint64_t>(from, 8);
    for (std::uint64_t at = start; at < to; at += window) {
        ReadAt(descriptor, at, window + longestTag, bytes);
        const std::string_view text = bytes;
        for (std::size_t found = text.find(" call_num=\""); found != std::string_view::npos;
             found = text.find(" call_num=\"", found + 1)) {
            if (auto beginning = BeginningAt(text, found)) {
                beginning->offset += at;
                if (beginning->offset < from)
                    continue;
                if (beginning->offset >= to)
                    return {};
                return beginning;
            }
        }
    }
    return {};
}

/// Keeps the call that begins at an offset.
class CallAt final : public LogHandler
{
public:
    explicit CallAt(std::uint64_t itsBegin) : begin(itsBegin) {}

    void Ended(Call& call) override
    {
        if (!call.parts.empty() && call.parts.front().begin == begin)
            found = std::move(call);
    }

    std::optional<Call> found;

private:
    std::uint64_t begin;
};

}  // namespace

std::optional<Call> ReadCall(int descriptor, const CallPlace& place, const Tree::Limits& limits)
{
    // The parser takes an end tag for one when something follows it.
    constexpr std::uint64_t following = 64;
    constexpr std::string_view root = "<log>";
    CallAt call(place.begin);
    ReadOptions options;
    options.limits = limits;
    options.offset = place.from - root.size();  // may wrap below zero, and back
    LogReader reader(call, options);
    reader.Feed(root);
    const std::uint64_t end = place.end + following;
    std::string bytes;
    for (std::uint64_t at = place.from; at < end && !call.found; at += bytes.size()) {
        ReadAt(descriptor, at, std::size_t(std::min<std::uint64_t>(end - at, window)), bytes);
        if (bytes.empty())
            break;
        reader.Feed(bytes);
    }
    if (!call.found)
        reader.Finish();
    return std::move(call.found);
}

std::optional<std::uint64_t> FindCall(int descriptor, std::uint64_t size, std::uint64_t number)
{
    // Calls that begin before low have lower numbers; the first one from high on has not.
    std::string bytes;
    std::uint64_t low = 0;
    std::uint64_t high = size;
    std::optional<std::uint64_t> best;
    while (low < high) {
        const std::uint64_t middle = low + (high - low) / 2;
        const auto found = FirstIn(descriptor, middle, high, bytes);
        if (!found) {
            high = middle;
        } else if (found->number < number) {
            low = found->offset + 1;
        } else {
            best = found->offset;
            high = middle;
        }
    }
    return best;
}

}  // namespace ScrivelReader
