// Text for the log, made in the memory of the stream itself: the one place that cleans a name, the one
// that escapes, the ones that make tags, attributes and digits. Internal: not installed.

#ifndef SCRIVEL_BASE_LOGTEXT_H
#define SCRIVEL_BASE_LOGTEXT_H

#include "base/PutText.h"
#include "scrivel/LogStream.h"
#include "format/LogWords.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace Scrivel2
{

// ---- Tags ---------------------------------------------------------------------------------------
// What a tag begins with is a text of its own: it is the one that takes a width which the stream has.

/// Appends a start tag or an end tag, and the end of the line if that is wanted.
void AppendTag(LogStream& log, bool opening, std::string_view name, NameHeads heads, bool newline);

/// Appends the end tag after a value and the end of the line. It begins with "</" in one.
void AppendEndTag(LogStream& log, std::string_view name, NameHeads heads);

/// Appends the beginning of a start tag that has attributes: "<" after the blanks of `begin`, the name.
void AppendTagBegin(LogStream& log, std::string_view begin, std::string_view name);

/// Appends an attribute and the blank before it, name and text as given.
///
///     AppendAttribute(log, "call_num", 7)   ->   call_num="7"
void AppendAttribute(LogStream& log, std::string_view name, std::string_view text);
void AppendAttribute(LogStream& log, std::string_view name, std::uint64_t value);
void AppendHexAttribute(LogStream& log, std::string_view name, std::uint64_t value, unsigned int digits);

/// Appends an element of one line around what `appendText` appends, its name as given after `begin`.
///
///     <return_time>3.004500 s</return_time>
template <typename AppendText>
void AppendPlainElement(LogStream& log, std::string_view begin, std::string_view name,
                        AppendText appendText)
{
    log.Append(begin);
    log.Append(name);
    log.Append(">");
    appendText();
    log.Append("</");
    log.Append(name);
    log.Append(">\n");
}

/// What a tag begins with, after the indentation or together with that of one level.
inline constexpr std::string_view tagBegin = "<";
inline constexpr std::string_view indentedTagBegin = "    <";

/// Appends blanks: four for each level.
void AppendIndentation(LogStream& log, unsigned int levels);

// ---- Text and numbers -----------------------------------------------------------------------------

/// Appends text as it may stand inside an element: the characters of markup as entities, bytes that
/// isprint doesn't call printable as \xNN.
void AppendEscaped(LogStream& log, std::string_view text);

/// The escaped form of `text`, as AppendEscaped appends it.
std::string EscapedText(std::string_view text);

/// The same, put down in memory that has room for it.
char* PutEscaped(char* out, std::string_view text);

constexpr std::size_t RoomForEscaped(std::size_t length)
{
    constexpr std::size_t longestPiece = 6;  // "&quot;"
    return length * longestPiece;
}

void AppendDecimal(LogStream& log, std::uint64_t value);

/// Appends lower-case hexadecimal digits, at least `digits` of them. The stream is decimal afterwards and
/// fills with zeros, as after inserting a padded number. With 0 digits nothing is padded, and the stream
/// keeps its fill character.
void AppendHexDigits(LogStream& log, std::uint64_t value, unsigned int digits);

/// As AppendHexDigits, after "0x".
inline void AppendHex(LogStream& log, std::uint64_t value, unsigned int digits)
{
    log.Append(LogWords::hexPrefix);
    AppendHexDigits(log, value, digits);
}

/// "0x" and the value in lower-case hexadecimal without leading zeros.
std::string HexText(unsigned int value);

}  // namespace Scrivel2

#endif
