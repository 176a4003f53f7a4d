// The end of a text, closed up: its last end tags without the blanks between them, and an instruction in
// the room of those. Tested by tests/stream/ClosedEndTest.cpp.

#ifndef SCRIVEL_STREAM_CLOSEDEND_H
#define SCRIVEL_STREAM_CLOSEDEND_H

#include "stream/FlushText.h"
#include "stream/StandIn.h"

#include <array>
#include <cstddef>
#include <optional>
#include <string_view>

#include <sys/types.h>

namespace Scrivel2
{

/// Says what the true end says, in as many bytes, and ends an instruction in which it comes last:
///
///     </return>\n    </CADIRegRead>\n</trace-4242>\n
///     </return></CADIRegRead></trace-4242><?x    ?>
class ClosedEnd
{
public:
    /// That of a text on its last page, and not before `from`; nothing when there are too few blanks
    /// after end tags for an instruction.
    static std::optional<ClosedEnd> Of(const FlushText& text, off_t from);

    off_t Start() const { return start; }
    std::string_view Bytes() const { return {bytes.data(), size}; }

private:
    ClosedEnd(std::string_view trueEnd, off_t place);

    static constexpr std::size_t longest = StandIn::longest;

    off_t start;
    std::size_t size;
    std::array<char, longest> bytes;
};

}  // namespace Scrivel2

#endif
