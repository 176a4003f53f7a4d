// The kinds of values that elements of one line have. Each is written in one of two ways: Append
// hands it to the stream, whose width and base count; Put puts it down in memory that has room for Most()
// characters, where CanBePut says that this comes to the same. Internal: not installed.

#ifndef SCRIVEL_BASE_VALUES_H
#define SCRIVEL_BASE_VALUES_H

#include "base/LogText.h"
#include "base/PutText.h"

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace Scrivel2
{

/// Text as it is: words of the log, characters that are written raw.
struct Plain
{
    std::string_view text;

    bool CanBePut(const LogStream&) const { return true; }
    std::size_t Most() const { return text.size(); }
    char* Put(char* out) const { return PutText(out, text); }
    void Append(LogStream& log) const { log.Append(text); }
};

inline Plain Word(bool value)
{
    return {value ? "true" : "false"};
}

struct Decimal
{
    std::uint64_t value;

    bool CanBePut(const LogStream&) const { return true; }
    std::size_t Most() const { return mostDecimalDigits; }
    char* Put(char* out) const { return PutDecimal(out, value); }
    void Append(LogStream& log) const { AppendDecimal(log, value); }
};

/// "0x" and at least `digits` hexadecimal digits.
struct Hex
{
    std::uint64_t value;
    unsigned int digits;

    /// A stream that fills with zeros already is left as it is.
    bool CanBePut(const LogStream& log) const { return log.fill() == '0' && digits <= mostHexDigits; }
    std::size_t Most() const { return LogWords::hexPrefix.size() + mostHexDigits; }
    char* Put(char* out) const
    {
        return PutHexDigits(PutText(out, LogWords::hexPrefix), value, HexLength(value, digits));
    }
    void Append(LogStream& log) const { AppendHex(log, value, digits); }
};

/// A value of one length; a width that is set is that of its first characters.
template <typename Value>
void AppendInTwo(LogStream& log, const Value& value, std::size_t first)
{
    char text[Value::length];
    value.Put(text);
    log.Append({text, first});
    log.Append({text + first, Value::length - first});
}

/// 16 bytes as one number, the last byte first, each group of four followed by a blank.
struct NumberOfBytes
{
    const unsigned char* bytes;

    static constexpr std::size_t length = 16 * 2 + 4;

    bool CanBePut(const LogStream&) const { return true; }
    std::size_t Most() const { return length; }
    char* Put(char* out) const
    {
        for (unsigned int i = 16; i > 0; i -= 4) {
            for (unsigned int j = 1; j <= 4; ++j) {
                out = PutAllHexDigits(out, bytes[i - j]);
            }
            *out++ = ' ';  // after the last group too
        }
        return out;
    }
    void Append(LogStream& log) const
    {
        AppendInTwo(log, *this, 2);  // the first byte's
    }
};

/// The five lowest bits, whatever the value: readers of the log count on this width.
struct FiveBits
{
    std::uint64_t value;

    static constexpr std::size_t length = 5;

    bool CanBePut(const LogStream&) const { return true; }
    std::size_t Most() const { return length; }
    char* Put(char* out) const
    {
        for (std::size_t bit = length; bit-- > 0;) {
            *out++ = (value >> bit & 1U) != 0 ? '1' : '0';
        }
        return out;
    }
    void Append(LogStream& log) const
    {
        AppendInTwo(log, *this, 1);  // the first digit's
    }
};

/// Escaped text, one character after the other.
struct Text
{
    std::string_view text;

    /// A longer one is escaped in pieces.
    static constexpr std::size_t longest = 4096;

    bool CanBePut(const LogStream&) const { return text.size() <= longest; }
    std::size_t Most() const { return RoomForEscaped(text.size()); }
    char* Put(char* out) const { return PutEscaped(out, text); }
    void Append(LogStream& log) const { AppendEscaped(log, text); }
};

/// One escaped character. A width that is set is that of all that it becomes.
struct Character
{
    char character;

    bool CanBePut(const LogStream&) const { return true; }
    std::size_t Most() const { return RoomForEscaped(1); }
    char* Put(char* out) const { return PutEscaped(out, {&character, 1}); }
    void Append(LogStream& log) const { log.Append(EscapedText({&character, 1})); }
};

/// The name of an enumerator or, when it is null, a message and the value in hexadecimal.
struct Enumerator
{
    template <typename Enumeration>
    Enumerator(std::string_view itsName, std::string_view otherwise, Enumeration enumerator)
        : name(itsName), message(otherwise), value(static_cast<std::uint32_t>(enumerator))
    {
    }

    std::string_view name;
    std::string_view message;
    std::uint32_t value;

    bool CanBePut(const LogStream&) const { return true; }
    std::size_t Most() const { return std::max(name.size(), message.size() + mostHexDigits); }
    char* Put(char* out) const
    {
        if (name.data() != nullptr) {
            return PutText(out, name);
        }
        return PutHexDigits(PutText(out, message), value, HexLength(value, 0));
    }
    void Append(LogStream& log) const
    {
        if (name.data() != nullptr) {
            log.Append(name);
        } else {
            log.Append(message);
            AppendHexDigits(log, value, 0);
        }
    }
};

}  // namespace Scrivel2

#endif
