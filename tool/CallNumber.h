// A call as the command line names it: 68, or 68#2 for the second call of that number.

#ifndef SCRIVEL_TOOL_CALLNUMBER_H
#define SCRIVEL_TOOL_CALLNUMBER_H

#include <cstdint>
#include <optional>
#include <string>

#include "Terminal.h"
#include "scrivel/Call.h"

namespace ScrivelTool
{

struct CallNumber
{
    std::uint64_t number = 0;
    std::optional<std::uint32_t> occurrence;  ///< any of them without one

    bool IsOf(const ScrivelReader::Call& call) const
    {
        return call.number == number && (!occurrence || call.occurrence == *occurrence);
    }
};

/// Nothing for any other text, which is told.
std::optional<CallNumber> ParseCallNumber(const std::string& text, Terminal& terminal);

}  // namespace ScrivelTool

#endif
