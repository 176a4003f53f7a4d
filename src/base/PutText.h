// Text put down at a place in memory that has room for it: each function takes the place and returns the
// place after what it has written, and writes nothing beyond that. Internal: not installed.

#ifndef SCRIVEL_BASE_PUTTEXT_H
#define SCRIVEL_BASE_PUTTEXT_H

#include "format/Characters.h"
#include "format/LogWords.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <string>
#include <string_view>

namespace Scrivel2
{

inline char* PutText(char* out, std::string_view text)
{
    return out + text.copy(out, text.size());
}

// ---- Indentation ----------------------------------------------------------------------------------

inline constexpr std::size_t blanksPerLevel = 4;

/// By two stores that may overlap: a loop over so few bytes takes longer to begin than to do.
inline char* PutIndentation(char* out, unsigned int levels)
{
    constexpr std::string_view blanks = "                ";
    constexpr std::size_t all = blanks.size();
    constexpr std::size_t half = all / 2;
    const std::size_t length = blanksPerLevel * levels;
    char* const end = out + length;
    if (length > 2 * all) {
        std::fill(out, end, ' ');
    } else if (length >= all) {
        std::memcpy(out, blanks.data(), all);
        std::memcpy(end - all, blanks.data(), all);
    } else if (length >= half) {
        std::memcpy(out, blanks.data(), half);
        std::memcpy(end - half, blanks.data(), half);
    } else if (length > 0) {
        std::memcpy(out, blanks.data(), blanksPerLevel);
    }
    return end;
}

// ---- Names ----------------------------------------------------------------------------------------
// Names are cleaned: letters of ASCII, "_", "-", ".", and digits that don't come first stay, any other
// byte becomes "_"; an empty name becomes "emptyIdent".

/// Whether a name may begin with "-" or ".", which XML doesn't allow, or has them become "_" too.
enum class NameHeads
{
    kept,
    mended
};

constexpr NameHeads HeadsOf(bool mendsNames)
{
    return mendsNames ? NameHeads::mended : NameHeads::kept;
}

/// What each byte becomes inside a name, or at its head.
constexpr std::array<char, 256> CleanedBytes(bool digitsStay, bool marksStay)
{
    std::array<char, 256> cleaned{};
    for (unsigned int i = 0; i < 256; ++i) {
        const auto c = static_cast<unsigned char>(i);
        const bool kept = IsLetter(c) || c == '_' || ((c == '-' || c == '.') && marksStay) ||
                          (IsDigit(c) && digitsStay);
        cleaned[i] = kept ? static_cast<char>(c) : '_';
    }
    return cleaned;
}

inline constexpr auto cleanedInside = CleanedBytes(true, true);
inline constexpr auto cleanedHead = CleanedBytes(false, true);
inline constexpr auto mendedHead = CleanedBytes(false, false);

inline std::size_t RoomForName(std::string_view name)
{
    return std::max(name.size(), LogWords::emptyName.size());
}

inline char* PutName(char* out, std::string_view name, NameHeads heads)
{
    if (name.empty()) {
        return PutText(out, LogWords::emptyName);
    }
    const auto& heading = heads == NameHeads::mended ? mendedHead : cleanedHead;
    *out++ = heading[static_cast<unsigned char>(name.front())];
    const auto clean = [](char c) { return cleanedInside[static_cast<unsigned char>(c)]; };
    const char* c = name.data() + 1;
    const char* const end = name.data() + name.size();
    // Four a round: a call's name has about twenty, and a loop for each would be half of what they cost.
    for (; end - c >= 4; c += 4) {
        *out++ = clean(c[0]);
        *out++ = clean(c[1]);
        *out++ = clean(c[2]);
        *out++ = clean(c[3]);
    }
    for (; c != end; ++c) {
        *out++ = clean(*c);
    }
    return out;
}

/// A name that the library itself gives: its length is known when it is compiled, and it is clean.
template <std::size_t size>
using GivenName = char[size];

inline const std::string& StringOf(const std::string& name)
{
    return name;
}

template <std::size_t size>
std::string StringOf(const GivenName<size>& name)
{
    return {name, size - 1};
}

template <std::size_t size>
constexpr std::size_t RoomForName(const GivenName<size>& /*name*/)
{
    return size - 1;
}

template <std::size_t size>
char* PutName(char* out, const GivenName<size>& name, NameHeads /*heads*/)
{
    std::memcpy(out, name, size - 1);
    return out + size - 1;
}

// ---- Attributes -----------------------------------------------------------------------------------

inline constexpr std::size_t aroundAttribute = 4;  // a blank, "=\"", "\""

/// The name as given, and what the value stands in.
inline char* PutAttributeBegin(char* out, std::string_view name)
{
    return PutText(PutText(out, name), "=\"");
}

/// An attribute and the blank before it; its value is one of base/Values.h.
template <typename Value>
char* PutAttribute(char* out, std::string_view name, const Value& value)
{
    *out++ = ' ';
    out = value.Put(PutAttributeBegin(out, name));
    *out++ = '"';
    return out;
}

// ---- Numbers --------------------------------------------------------------------------------------

inline constexpr std::size_t mostDecimalDigits = std::numeric_limits<std::uint64_t>::digits10 + 1;
inline constexpr unsigned int mostHexDigits = 2 * sizeof(std::uint64_t);

char* PutDecimal(char* out, std::uint64_t value);

inline constexpr auto decimalPairs = [] {
    std::array<char, 200> pairs{};
    for (unsigned int i = 0; i < 100; ++i) {
        pairs[2 * i] = static_cast<char>('0' + i / 10);
        pairs[2 * i + 1] = static_cast<char>('0' + i % 10);
    }
    return pairs;
}();

/// The decimals of a second: six digits, and more for a number that has more.
inline char* PutMicroseconds(char* out, std::uint32_t microseconds)
{
    if (microseconds >= 1000000) {
        return PutDecimal(out, microseconds);
    }
    for (const std::uint32_t pair :
         {microseconds / 10000, microseconds / 100 % 100, microseconds % 100}) {
        std::memcpy(out, &decimalPairs[2 * static_cast<std::size_t>(pair)], 2);
        out += 2;
    }
    return out;
}

/// The number of hexadecimal digits of a value, `least` at least: 16 or less of them.
inline unsigned int HexLength(std::uint64_t value, unsigned int least)
{
    unsigned int length = std::max(least, 1U);
    while (length < mostHexDigits && value >> (4 * length) != 0) {
        ++length;
    }
    return length;
}

/// The lowest `length` hexadecimal digits of a value.
inline char* PutHexDigits(char* out, std::uint64_t value, unsigned int length)
{
    for (char* digit = out + length; digit != out; value >>= 4) {
        *--digit = hexDigits[value & 15];
    }
    return out + length;
}

/// The two digits of each byte, for the writers of many.
inline constexpr auto hexPairs = [] {
    std::array<char, 512> pairs{};
    for (unsigned int i = 0; i < 256; ++i) {
        PutHexByte(&pairs[2 * i], static_cast<unsigned char>(i));
    }
    return pairs;
}();

/// All hexadecimal digits of an integer, as many as its type holds.
template <typename Integer>
char* PutAllHexDigits(char* out, Integer value)
{
    for (std::size_t byte = sizeof value; byte-- > 0; out += 2) {
        std::memcpy(out, &hexPairs[2 * (static_cast<std::size_t>(value >> (8 * byte)) & 255)], 2);
    }
    return out;
}

}  // namespace Scrivel2

#endif
