// Makes the text of the log in the memory of its stream. Tested by tests/base/NamesTest.cpp and
// tests/base/ScalarsTest.cpp, and by fuzz/TextTarget.cpp.

#include "base/LogText.h"

#include "format/Characters.h"
#include "format/LogWords.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <charconv>
#include <cstdint>
#include <cstring>
#include <limits>

namespace Scrivel2
{
namespace
{

// ---- Names --------------------------------------------------------------------------------------

/// What each byte becomes inside a name, and at its head when `first`. A leading "-" or "." is kept,
/// although XML has no such names.
constexpr std::array<char, 256> CleanedBytes(bool first)
{
    std::array<char, 256> cleaned{};
    for (unsigned int i = 0; i < 256; ++i) {
        const auto c = static_cast<unsigned char>(i);
        const bool kept = IsLetter(c) || c == '_' || c == '-' || c == '.' || (IsDigit(c) && !first);
        cleaned[i] = kept ? static_cast<char>(c) : '_';
    }
    return cleaned;
}

std::size_t RoomForName(std::string_view name)
{
    return std::max(name.size(), LogWords::emptyName.size());
}

char* PutName(char* out, std::string_view name)
{
    static constexpr auto head = CleanedBytes(true);
    static constexpr auto inside = CleanedBytes(false);

    if (name.empty()) {
        return out + LogWords::emptyName.copy(out, LogWords::emptyName.size());
    }
    const auto* cleaned = &head;
    for (char c : name) {
        *out++ = (*cleaned)[static_cast<unsigned char>(c)];
        cleaned = &inside;
    }
    return out;
}

// ---- Escaping -----------------------------------------------------------------------------------

/// What one byte of text becomes. Eight bytes in all, so that a piece is copied in one go.
struct Piece
{
    char text[7];
    unsigned char length;
};
static_assert(sizeof(Piece) == 8);

constexpr std::size_t longestPiece = 6;

using Pieces = std::array<Piece, 256>;

constexpr Piece PieceOf(std::string_view text)
{
    Piece piece{};
    for (char c : text) {
        piece.text[piece.length++] = c;
    }
    return piece;
}

constexpr Pieces PrintablePieces()
{
    Pieces pieces{};
    for (unsigned int i = 0; i < 256; ++i) {
        const char c = static_cast<char>(i);
        pieces[i] = PieceOf({&c, 1});
    }
    pieces['"'] = PieceOf("&quot;");
    pieces['&'] = PieceOf("&amp;");
    pieces['\''] = PieceOf("&apos;");
    pieces['<'] = PieceOf("&lt;");
    pieces['>'] = PieceOf("&gt;");
    return pieces;
}

constexpr Pieces UnprintablePieces()
{
    Pieces pieces{};
    for (unsigned int i = 0; i < 256; ++i) {
        const auto text = EscapedByte(static_cast<unsigned char>(i));
        pieces[i] = PieceOf({text.data(), text.size()});
    }
    return pieces;
}

constexpr Pieces printablePieces = PrintablePieces();
constexpr Pieces unprintablePieces = UnprintablePieces();

/// The locale in force decides at each text which bytes are printable.
const Piece& PieceFor(unsigned char byte)
{
    return std::isprint(byte) != 0 ? printablePieces[byte] : unprintablePieces[byte];
}

std::size_t RoomForEscaped(std::size_t length)
{
    return length * longestPiece;
}

/// The byte that lies last in memory.
unsigned char LastByte(std::uint64_t word)
{
    constexpr bool lastIsHighest = __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__;
    return static_cast<unsigned char>(lastIsHighest ? word >> 56 : word);
}

template <typename PieceOfByte>
char* PutEscaped(char* out, std::string_view text, PieceOfByte pieceOf)
{
    // A piece copied in one go reaches up to seven bytes too far, and the next characters cover those.
    // The last ones are copied by their length: what stands after them may have to stay.
    // Four characters a round, and the length taken from the register that holds the piece, need a fifth
    // less time than the plain loop.
    constexpr std::size_t atATime = 4;
    const std::size_t covered =
        (text.size() - std::min(text.size(), sizeof(Piece) - 1)) / atATime * atATime;
    for (std::size_t round = 0; round < covered; round += atATime) {
        for (std::size_t i = 0; i < atATime; ++i) {
            std::uint64_t piece;
            std::memcpy(&piece, &pieceOf(static_cast<unsigned char>(text[round + i])), sizeof piece);
            std::memcpy(out, &piece, sizeof piece);
            out += LastByte(piece);
        }
    }
    for (char c : text.substr(covered)) {
        const Piece& piece = pieceOf(static_cast<unsigned char>(c));
        out = std::copy_n(piece.text, piece.length, out);
    }
    return out;
}

// ---- Attributes ---------------------------------------------------------------------------------

constexpr std::size_t quotesAndSign = 3;

/// The name as given, and what the value stands in.
char* PutAttributeBegin(char* out, std::string_view name)
{
    out = std::copy(name.begin(), name.end(), out);
    *out++ = '=';
    *out++ = '"';
    return out;
}

/// The blank that every attribute begins with, and all before its value.
void AppendAttributeBegin(LogStream& log, std::string_view name)
{
    if (char* out = log.RoomAfter(" ", name.size() + quotesAndSign)) {
        log.Advance(PutAttributeBegin(out, name));
    }
}

}  // namespace

void AppendTag(LogStream& log, bool opening, std::string_view name, bool newline)
{
    constexpr std::size_t aroundName = 3;

    if (char* out = log.RoomAfter(tagBegin, RoomForName(name) + aroundName)) {
        if (!opening) {
            *out++ = '/';
        }
        out = PutName(out, name);
        *out++ = '>';
        if (newline) {
            *out++ = '\n';
        }
        log.Advance(out);
    }
}

void AppendEndTag(LogStream& log, std::string_view name)
{
    constexpr std::size_t afterName = 2;

    if (char* out = log.RoomAfter("</", RoomForName(name) + afterName)) {
        out = PutName(out, name);
        *out++ = '>';
        *out++ = '\n';
        log.Advance(out);
    }
}

void AppendTagBegin(LogStream& log, std::string_view begin, std::string_view name)
{
    if (char* out = log.RoomAfter(begin, RoomForName(name))) {
        log.Advance(PutName(out, name));
    }
}

void AppendAttribute(LogStream& log, std::string_view name, std::string_view text)
{
    if (char* out = log.RoomAfter(" ", name.size() + quotesAndSign + text.size())) {
        out = PutAttributeBegin(out, name);
        out = std::copy(text.begin(), text.end(), out);
        *out++ = '"';
        log.Advance(out);
    }
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

void AppendEscaped(LogStream& log, std::string_view text)
{
    constexpr std::size_t atATime = 4096;

    if (log.width() != 0) {  // the first character's, as the writers insert one by one
        for (const char c : EscapedText(text)) {
            log.Append({&c, 1});
        }
        return;
    }
    if (text.size() < printablePieces.size()) {
        if (char* out = log.Room(RoomForEscaped(text.size()))) {
            log.Advance(PutEscaped(out, text, PieceFor));
        }
        return;
    }
    // A longer text has every byte looked up once instead of asking isprint for each character.
    Pieces pieces;
    for (unsigned int i = 0; i < pieces.size(); ++i) {
        pieces[i] = PieceFor(static_cast<unsigned char>(i));
    }
    const auto pieceOf = [&pieces](unsigned char byte) -> const Piece& { return pieces[byte]; };
    for (; !text.empty(); text.remove_prefix(std::min(atATime, text.size()))) {
        if (char* out = log.Room(RoomForEscaped(atATime))) {
            log.Advance(PutEscaped(out, text.substr(0, atATime), pieceOf));
        }
    }
}

std::string EscapedText(std::string_view text)
{
    std::string escaped(RoomForEscaped(text.size()), '\0');
    const char* const end = PutEscaped(escaped.data(), text, PieceFor);
    escaped.resize(static_cast<std::size_t>(end - escaped.data()));
    return escaped;
}

void AppendIndentation(LogStream& log, unsigned int levels)
{
    static constexpr std::string_view blanks =
        "                                                                ";
    constexpr std::size_t blanksPerLevel = 4;

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

char* PutDecimal(char* out, std::uint32_t value, std::ptrdiff_t digits)
{
    constexpr std::uint32_t powers[] = {1, 10, 100, 1000, 10000, 100000, 1000000, 10000000, 100000000};
    constexpr std::ptrdiff_t most = std::numeric_limits<std::uint32_t>::digits10 + 1;

    for (; digits > 1 && value < powers[digits - 1]; --digits) {
        *out++ = '0';
    }
    return std::to_chars(out, out + most, value).ptr;
}

void AppendDecimal(LogStream& log, std::uint64_t value)
{
    // Those who insert into the log stream themselves may have set its base or width: these count.
    if ((log.flags() & std::ios_base::basefield) != std::ios_base::dec || log.width() != 0) {
        log << value;
        return;
    }
    constexpr std::size_t most = std::numeric_limits<std::uint64_t>::digits10 + 1;
    if (char* out = log.Room(most)) {
        log.Advance(std::to_chars(out, out + most, value).ptr);
    }
}

void AppendHexDigits(LogStream& log, std::uint64_t value, unsigned int digits)
{
    constexpr unsigned int most = 2 * sizeof value;

    for (; digits > most; --digits) {
        log.Append("0");
    }
    unsigned int length = std::max(digits, 1U);
    while (length < most && value >> (4 * length) != 0) {
        ++length;
    }
    if (char* out = log.Room(length)) {
        for (char* digit = out + length; digit != out; value >>= 4) {
            *--digit = hexDigits[value & 15];
        }
        log.Advance(out + length);
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
