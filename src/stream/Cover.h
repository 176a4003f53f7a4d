// What a text is hidden in until it is committed, in the place of the tail that it replaces. Tested by
// tests/stream/SteppedFlushTest.cpp and tests/stream/HugeFlushTest.cpp.

#ifndef SCRIVEL_STREAM_COVER_H
#define SCRIVEL_STREAM_COVER_H

#include "format/LogWords.h"
#include "stream/FileTail.h"
#include "stream/FlushText.h"
#include "stream/StandIn.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <initializer_list>
#include <optional>
#include <string_view>

#include <sys/types.h>

namespace Scrivel2
{

/// The longest tail that a cover may hide: what follows the text has a copy of it.
inline constexpr std::size_t longestCopy = 1024;

struct Cover
{
    std::string_view opening;
    std::string_view closing;
    std::string_view beforeCopy;
    std::string_view afterCopy;
    std::string_view notInCopy;  ///< besides the closing

    /// Whether the text may be hidden from its beginning on: there is room for the opening on its page,
    /// and neither the text nor the tail ends the cover early.
    bool Hides(const FlushText& text, const FileTail& tail) const;

    /// Where the last markup before the text begins from which on Hides would hold; nothing when memory
    /// has none.
    std::optional<off_t> StartBefore(const FlushText& text, const FileTail& tail) const;

    /// Where the opening ends that begins there.
    off_t After(off_t start) const { return start + static_cast<off_t>(opening.size()); }

    /// What `write` says, which is called while the opening stands in the place of the first bytes.
    template <typename Write>
    bool Over(char* bytes, Write write) const
    {
        const StandIn first(bytes, opening);
        return write();
    }

private:
    bool TextFits(const FlushText& text, const FileTail& tail) const;
    bool TailFits(const FileTail& tail, off_t start) const;
};

/// In the order in which they are tried: an instruction, and two kinds of sections.
inline constexpr std::array<Cover, 3> covers = {{
    {LogWords::flushOpening, LogWords::flushClosing, LogWords::flushBeforeCopy, LogWords::flushAfterCopy,
     "--"},
    {"<![CDATA[", "]]>", "<?x ]]>", "<?x ?>", "?>"},
    {"<![CDATA[", "]]>", "<!-- ]]>", "<?x --><?x ?>", "--"},
}};

/// The first of `count` covers from `first` on that hides the text; null when none does.
const Cover* FirstThatHides(const FlushText& text, const FileTail& tail, std::size_t first = 0);

/// The place from which on one of them would: see Cover::StartBefore.
std::optional<off_t> StartForOneThatHides(const FlushText& text, const FileTail& tail,
                                          std::size_t first = 0);

/// A piece of markup with a copy of the tail in it.
class Mark
{
public:
    Mark(std::initializer_list<std::string_view> parts)
    {
        for (const std::string_view part : parts) {
            end = std::copy(part.begin(), part.end(), end);
        }
    }

    std::string_view Text() const { return {text.data(), static_cast<std::size_t>(end - text.data())}; }

    static constexpr std::size_t longest = longestCopy + 64;

private:
    std::array<char, longest> text;
    char* end = text.data();
};

bool Contains(std::string_view text, std::string_view part);

/// Whether the part lies across the place where the second text follows the first.
bool ContainsAcross(std::string_view first, std::string_view second, std::string_view part);

}  // namespace Scrivel2

#endif
