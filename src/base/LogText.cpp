// Appends tags, attributes and numbers to the log's stream. Tested by tests/base/NamesTest.cpp and
// tests/base/ScalarsTest.cpp, and by fuzz/TextTarget.cpp.

#include "base/LogText.h"

#include <algorithm>
#include <charconv>
#include <cstdint>

namespace Scrivel2
{
namespace
{

/// The part of AppendAfter that is seldom taken, out of the way of the other.
template <typename Put>
[[gnu::noinline]] void AppendAfterFormatted(LogStream& log, std::string_view first, std::size_t most,
                                            Put put)
{
    if (char* out = log.RoomAfter(first, most)) {
        log.Advance(put(out));
    }
}

/// Appends `first`, which takes a width that is set, and what `put` puts down after it, so many
/// characters at most.
template <typename Put>
void AppendAfter(LogStream& log, std::string_view first, std::size_t most, Put put)
{
    if (char* out = log.RoomForPlain(first.size() + most)) {
        log.Advance(put(PutText(out, first)));
    } else {
        AppendAfterFormatted(log, first, most, put);
    }
}

constexpr std::size_t quotesAndSign = aroundAttribute - 1;

/// The blank that every attribute begins with, and all before its value.
void AppendAttributeBegin(LogStream& log, std::string_view name)
{
    AppendAfter(log, " ", name.size() + quotesAndSign,
                [=](char* out) { return PutAttributeBegin(out, name); });
}

}  // namespace

void AppendTag(LogStream& log, bool opening, std::string_view name, NameHeads heads, bool newline)
{
    constexpr std::size_t aroundName = 3;

    AppendAfter(log, tagBegin, RoomForName(name) + aroundName, [=](char* out) {
        if (!opening) {
            *out++ = '/';
        }
        out = PutName(out, name, heads);
        *out++ = '>';
        if (newline) {
            *out++ = '\n';
        }
        return out;
    });
}

void AppendEndTag(LogStream& log, std::string_view name, NameHeads heads)
{
    constexpr std::size_t afterName = 2;

    AppendAfter(log, "</", RoomForName(name) + afterName, [=](char* out) {
        out = PutName(out, name, heads);
        *out++ = '>';
        *out++ = '\n';
        return out;
    });
}

void AppendTagBegin(LogStream& log, std::string_view begin, std::string_view name)
{
    AppendAfter(log, begin, RoomForName(name),
                [=](char* out) { return PutName(out, name, NameHeads::kept); });
}

void AppendAttribute(LogStream& log, std::string_view name, std::string_view text)
{
    AppendAfter(log, " ", name.size() + quotesAndSign + text.size(), [=](char* out) {
        out = PutText(PutAttributeBegin(out, name), text);
        *out++ = '"';
        return out;
    });
}

void AppendAttribute(LogStream& log, std::string_view name, std::uint64_t value)
{
    AppendAttributeBegin(log, name);
    AppendDecimal(log, value);
    log.Append("\"");
}

void AppendHexAttribute(LogStream& log, std::string_view name, std::uint64_t value, unsigned int digits)
{
    AppendAttributeBegin(log, name);
    AppendHex(log, value, digits);
    log.Append("\"");
}

void AppendIndentation(LogStream& log, unsigned int levels)
{
    static constexpr std::string_view blanks =
        "                                                                ";

    if (log.width() != 0 && levels > 0) {  // the first level is the first thing inserted
        log.Append(blanks.substr(0, blanksPerLevel));
        --levels;
    }
    if (levels == 0) {
        return;
    }
    std::size_t left = blanksPerLevel * levels;
    for (; left > blanks.size(); left -= blanks.size()) {
        log.Append(blanks);
    }
    log.Append(blanks.substr(0, left));
}

char* PutDecimal(char* out, std::uint64_t value)
{
    return std::to_chars(out, out + mostDecimalDigits, value).ptr;
}

void AppendDecimal(LogStream& log, std::uint64_t value)
{
    // Those who insert into the log stream themselves may have set its base or width: these count.
    if ((log.flags() & std::ios_base::basefield) != std::ios_base::dec || log.width() != 0) {
        log << value;
        return;
    }
    if (char* out = log.Room(mostDecimalDigits)) {
        log.Advance(PutDecimal(out, value));
    }
}

void AppendHexDigits(LogStream& log, std::uint64_t value, unsigned int digits)
{
    for (; digits > mostHexDigits; --digits) {
        log.Append("0");
    }
    const unsigned int length = HexLength(value, digits);
    if (char* out = log.Room(length)) {
        log.Advance(PutHexDigits(out, value, length));
    }
    // The stream is left as inserting a number in hexadecimal leaves it, for those who insert into it
    // themselves.
    if (digits > 0) {
        log.fill('0');
        log.width(0);
    }
    log.setf(std::ios_base::dec, std::ios_base::basefield);
}

std::string HexText(unsigned int value)
{
    char digits[2 * sizeof value];
    return std::string(LogWords::hexPrefix)
        .append(digits, std::to_chars(digits, digits + sizeof digits, value, 16).ptr);
}

}  // namespace Scrivel2
