#include "base/LogText.h"

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

constexpr char hexDigits[] = "0123456789abcdef";

// ---- Names --------------------------------------------------------------------------------------

/// As isalpha answers in every locale for ASCII, so it need not be asked at each character.
constexpr bool IsLetter(unsigned char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

constexpr bool IsDigit(unsigned char c)
{
    return c >= '0' && c <= '9';
}

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

constexpr std::string_view emptyName = "emptyIdent";

std::size_t RoomForName(std::string_view name)
{
    return std::max(name.size(), emptyName.size());
}

char* PutName(char* out, std::string_view name)
{
    static constexpr auto head = CleanedBytes(true);
    static constexpr auto inside = CleanedBytes(false);

    if (name.empty()) {
        return out + emptyName.copy(out, emptyName.size());
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
        const char text[] = {'\\', 'x', hexDigits[i >> 4], hexDigits[i & 15]};
        pieces[i] = PieceOf({text, sizeof text});
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
    // A piece copied in one go reaches up to seven bytes too far, which the next characters cover. The
    // last ones are copied by their length: behind them there may be text that is to stay.
    // Four characters a round, and the length from the register that the piece is in, take a fifth less
    // time than the plain loop.
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

}  // namespace

void AppendTag(LogStream& log, bool opening, std::string_view name, bool newline)
{
    constexpr std::size_t aroundName = 4;

    if (char* out = log.Room(RoomForName(name) + aroundName)) {
        *out++ = '<';
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

void AppendName(LogStream& log, std::string_view name)
{
    if (char* out = log.Room(RoomForName(name))) {
        log.Advance(PutName(out, name));
    }
}

void AppendEscaped(LogStream& log, std::string_view text)
{
    constexpr std::size_t atATime = 4096;

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

    std::size_t left = blanksPerLevel * levels;
    for (; left > blanks.size(); left -= blanks.size()) {
        log.Append(blanks);
    }
    log.Append(blanks.substr(0, left));
}

void AppendDecimal(LogStream& log, std::uint64_t value)
{
    // Whoever inserts into the log stream himself may have set its base or width: those count.
    if ((log.flags() & std::ios_base::basefield) != std::ios_base::dec || log.width() != 0) {
        log << value;
        return;
    }
    constexpr std::size_t most = std::numeric_limits<std::uint64_t>::digits10 + 1;
    if (char* out = log.Room(most)) {
        log.Advance(std::to_chars(out, out + most, value).ptr);
    }
}

void AppendHex(LogStream& log, std::uint64_t value, unsigned int digits)
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
    // Whoever inserts into the log stream himself finds it as a number in hexadecimal leaves it.
    if (digits > 0) {
        log.fill('0');
    }
    log.width(0);
    log.setf(std::ios_base::dec, std::ios_base::basefield);
}

char* PutHexByte(char* out, unsigned char byte)
{
    *out++ = hexDigits[byte >> 4];
    *out++ = hexDigits[byte & 15];
    return out;
}

std::string HexText(unsigned int value)
{
    char digits[2 * sizeof value];
    return "0x" + std::string(digits, std::to_chars(digits, digits + sizeof digits, value, 16).ptr);
}

}  // namespace Scrivel2
