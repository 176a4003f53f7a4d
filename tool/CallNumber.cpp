// A call as the command line names it. Tested by tests/tool/ShowTest.cpp and StateTest.cpp.

#include "CallNumber.h"

#include <charconv>
#include <system_error>

namespace ScrivelTool
{

namespace
{

template <typename Number>
std::optional<Number> ParseDecimal(std::string_view digits)
{
    Number found = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), found);
    const bool isWhole = error == std::errc() && end == digits.data() + digits.size();
    return isWhole ? std::make_optional(found) : std::nullopt;
}

}  // namespace

std::optional<CallNumber> ParseCallNumber(std::string_view text)
{
    const std::size_t mark = text.find('#');
    const auto number = ParseDecimal<std::uint64_t>(text.substr(0, mark));
    if (!number)
        return {};
    if (mark == std::string_view::npos)
        return CallNumber{*number, {}};
    const auto occurrence = ParseDecimal<std::uint32_t>(text.substr(mark + 1));
    if (!occurrence || *occurrence == 0)
        return {};
    return CallNumber{*number, occurrence};
}

}  // namespace ScrivelTool
