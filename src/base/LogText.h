// Text for the log, made in the memory of the stream itself: the one place that cleans a name, the one
// that escapes, the ones that make digits. Internal: not installed.

#ifndef SCRIVEL_BASE_LOGTEXT_H
#define SCRIVEL_BASE_LOGTEXT_H

#include "scrivel/LogStream.h"

#include <string>
#include <string_view>

namespace Scrivel2
{

/// Appends a start tag or an end tag, its name cleaned as AppendName does, and the end of the line if
/// that is wanted.
void AppendTag(LogStream& log, bool opening, std::string_view name, bool newline);

/// Appends an element name, cleaned: letters of ASCII, "_", "-", ".", and digits that don't come first
/// stay, any other byte becomes "_"; an empty name becomes "emptyIdent".
void AppendName(LogStream& log, std::string_view name);

/// Appends text as it may stand inside an element: the characters of markup as entities, bytes that
/// isprint doesn't call printable as \xNN.
void AppendEscaped(LogStream& log, std::string_view text);

/// Appends blanks: four for each level.
void AppendIndentation(LogStream& log, unsigned int levels);

void AppendDecimal(LogStream& log, std::uint64_t value);

/// Appends lower-case hexadecimal digits, at least `digits` of them, and leaves the stream as the padded
/// insertion of a number does: decimal, filling with zeros. With 0 digits nothing is padded, and the fill
/// character stays what it was.
void AppendHex(LogStream& log, std::uint64_t value, unsigned int digits);

/// Puts down the two lower-case hexadecimal digits of a byte.
char* PutHexByte(char* out, unsigned char byte);

/// "0x" and the value in lower-case hexadecimal without leading zeros.
std::string HexText(unsigned int value);

/// The escaped form of `text`, as AppendEscaped appends it.
std::string EscapedText(std::string_view text);

}  // namespace Scrivel2

#endif
