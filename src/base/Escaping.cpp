// Escapes text: a table of what each byte becomes, and blocks of sixteen characters in which few become
// anything else. Tested by tests/base/ScalarsTest.cpp and by fuzz/TextTarget.cpp.

#include "base/LogText.h"
#include "format/Characters.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdint>
#include <cstring>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace Scrivel2
{
namespace
{

// ---- Pieces -------------------------------------------------------------------------------------

/// What one byte of text becomes. Eight bytes in all, so that a piece is copied in one go.
struct Piece
{
    char text[7];
    unsigned char length;
};
static_assert(sizeof(Piece) == 8);

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

/// The locale in force decides at each text which bytes are printable: looked up once for a long text,
/// instead of asking isprint for each character.
class PieceTable
{
public:
    PieceTable() : pieces(printablePieces)
    {
        for (unsigned int i = 0; i < pieces.size(); ++i) {
            if (std::isprint(static_cast<int>(i)) == 0) {
                pieces[i] = unprintablePieces[i];
                keepsPlain = keepsPlain && (i < ' ' || i > '~');
            }
        }
    }

    const Piece& operator()(unsigned char byte) const { return pieces[byte]; }

    /// Whether all from the blank to "~" is printable: in blocks no byte is looked up that isn't special.
    bool KeepsPlain() const { return keepsPlain; }

private:
    Pieces pieces;
    bool keepsPlain = true;
};

constexpr std::size_t worthATable = 256;

// ---- Character by character ---------------------------------------------------------------------

/// The byte that lies last in memory.
unsigned char LastByte(std::uint64_t word)
{
    constexpr bool lastIsHighest = __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__;
    return static_cast<unsigned char>(lastIsHighest ? word >> 56 : word);
}

/// Puts a piece down in one go: up to seven bytes too many, which later characters must cover.
inline char* PutPiece(char* out, const Piece& from)
{
    std::uint64_t piece;
    std::memcpy(&piece, &from, sizeof piece);
    std::memcpy(out, &piece, sizeof piece);
    return out + LastByte(piece);
}

char* PutByTable(char* out, std::string_view text, const PieceTable& pieceOf)
{
    // The last pieces are copied by their length: what stands after them may have to stay.
    // Four characters a round, and the length taken from the register that holds the piece, need a fifth
    // less time than the plain loop.
    constexpr std::size_t atATime = 4;
    const std::size_t covered =
        (text.size() - std::min(text.size(), sizeof(Piece) - 1)) / atATime * atATime;
    for (std::size_t round = 0; round < covered; round += atATime) {
        for (std::size_t i = 0; i < atATime; ++i) {
            out = PutPiece(out, pieceOf(static_cast<unsigned char>(text[round + i])));
        }
    }
    for (const char c : text.substr(covered)) {
        const Piece& piece = pieceOf(static_cast<unsigned char>(c));
        out = std::copy_n(piece.text, piece.length, out);
    }
    return out;
}

/// A short text: isprint is asked for each character.
char* PutShort(char* out, std::string_view text)
{
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        const bool isPrintable = std::isprint(byte) != 0;
        if (isPrintable && printablePieces[byte].length == 1) {
            *out++ = c;
        } else {
            const Piece& piece = isPrintable ? printablePieces[byte] : unprintablePieces[byte];
            out = std::copy_n(piece.text, piece.length, out);
        }
    }
    return out;
}

// ---- In blocks ----------------------------------------------------------------------------------

#ifdef __SSE2__

constexpr std::size_t blockSize = 16;

/// A bit for each of sixteen characters that may become something else: all markup, "#", and what isn't
/// from the blank to "~".
unsigned int SpecialOnes(const char* characters)
{
    const __m128i block = _mm_loadu_si128(reinterpret_cast<const __m128i*>(characters));
    const auto all = [](char c) { return _mm_set1_epi8(c); };
    // Compared with their signs: all from 0x80 up are low.
    const __m128i unprintable =
        _mm_or_si128(_mm_cmplt_epi8(block, all(' ')), _mm_cmpeq_epi8(block, all('~' + 1)));
    const __m128i quotes = _mm_cmpeq_epi8(_mm_andnot_si128(all('"' ^ '\''), block), all('"' & '\''));
    const __m128i brackets = _mm_cmpeq_epi8(_mm_andnot_si128(all('<' ^ '>'), block), all('<' & '>'));
    const __m128i special = _mm_or_si128(_mm_or_si128(unprintable, quotes), brackets);
    return static_cast<unsigned int>(_mm_movemask_epi8(special));
}

/// Puts down as much of the text as can be taken in blocks, and takes that off its beginning.
///
/// A block is copied whole, and again from after each special character on, which is put down as its
/// piece. Each copy reaches too far by at most as many bytes as characters follow, and these cover them.
/// A block with many special characters is gone through character by character from some place on.
char* PutBlocks(char* out, std::string_view& text, const PieceTable& pieces)
{
    constexpr int many = 4;

    const char* from = text.data();
    const char* const end = from + text.size();
    while (end - from >= static_cast<std::ptrdiff_t>(2 * blockSize)) {
        const char* const blockEnd = from + blockSize;
        unsigned int special = SpecialOnes(from);
        for (int found = 0; special != 0 && found < many; ++found) {
            const int plain = __builtin_ctz(special);
            std::memcpy(out, from, blockSize);
            out = PutPiece(out + plain, pieces(static_cast<unsigned char>(from[plain])));
            from += plain + 1;
            special >>= plain;
            special >>= 1;
        }
        if (special == 0) {
            std::memcpy(out, from, blockSize);
            out += blockEnd - from;
            from = blockEnd;
        }
        while (from != blockEnd) {
            out = PutPiece(out, pieces(static_cast<unsigned char>(*from++)));
        }
    }
    text.remove_prefix(static_cast<std::size_t>(from - text.data()));
    return out;
}

#else

char* PutBlocks(char* out, std::string_view& /*text*/, const PieceTable& /*pieces*/)
{
    return out;
}

#endif

char* PutLong(char* out, std::string_view text, const PieceTable& pieces)
{
    if (pieces.KeepsPlain()) {
        out = PutBlocks(out, text, pieces);
    }
    return PutByTable(out, text, pieces);
}

}  // namespace

char* PutEscaped(char* out, std::string_view text)
{
    if (text.size() < worthATable) {
        return PutShort(out, text);
    }
    return PutLong(out, text, PieceTable());
}

std::string EscapedText(std::string_view text)
{
    std::string escaped(RoomForEscaped(text.size()), '\0');
    const char* const end = PutEscaped(escaped.data(), text);
    escaped.resize(static_cast<std::size_t>(end - escaped.data()));
    return escaped;
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
    if (text.size() < worthATable) {
        if (char* out = log.Room(RoomForEscaped(text.size()))) {
            log.Advance(PutEscaped(out, text));
        }
        return;
    }
    const PieceTable pieces;
    for (; !text.empty(); text.remove_prefix(std::min(atATime, text.size()))) {
        if (char* out = log.Room(RoomForEscaped(atATime))) {
            log.Advance(PutLong(out, text.substr(0, atATime), pieces));
        }
    }
}

}  // namespace Scrivel2
