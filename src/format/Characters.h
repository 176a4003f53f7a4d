// The few questions about characters that the writer, the layer and the reader ask alike: which ones are
// letters and digits, what a byte looks like in hexadecimal. Internal: not installed.

#ifndef SCRIVEL_FORMAT_CHARACTERS_H
#define SCRIVEL_FORMAT_CHARACTERS_H

#include <array>

namespace Scrivel2
{

inline constexpr char hexDigits[] = "0123456789abcdef";

/// As isalpha answers in every locale for ASCII, so it need not be asked at each character.
constexpr bool IsLetter(unsigned char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

constexpr bool IsDigit(unsigned char c)
{
    return c >= '0' && c <= '9';
}

/// The values of all characters as hexadecimal digits; -1 for what is none of hexDigits.
inline constexpr std::array<signed char, 256> hexValues = [] {
    std::array<signed char, 256> values{};
    for (signed char& value : values)
        value = -1;
    for (signed char value = 0; value < 16; ++value)
        values[static_cast<unsigned char>(hexDigits[value])] = value;
    return values;
}();

/// The value of one of hexDigits, or -1. Which digit comes can't be foreseen: a table needs no branch.
constexpr int HexValue(char c)
{
    return hexValues[static_cast<unsigned char>(c)];
}

/// Puts down the two lower-case hexadecimal digits of a byte.
constexpr char* PutHexByte(char* out, unsigned char byte)
{
    *out++ = hexDigits[byte >> 4];
    *out++ = hexDigits[byte & 15];
    return out;
}

/// What stands for a byte that can't be printed.
///
///     EscapedByte(10)   ->  \x0a
constexpr std::array<char, 4> EscapedByte(unsigned char byte)
{
    return {'\\', 'x', hexDigits[byte >> 4], hexDigits[byte & 15]};
}

}  // namespace Scrivel2

#endif
