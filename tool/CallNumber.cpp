// A call as the command line names it. Tested by tests/tool/ShowTest.cpp and StateTest.cpp.

#include "CallNumber.h"

#include <charconv>
#include <string_view>
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

std::optional<CallNumber> Parse(std::string_view text)
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

}  // namespace

std::optional<CallNumber> ParseCallNumber(const std::string& text, Terminal& terminal)
{
    const auto number = Parse(text);
    if (!number)
        terminal.Error("\"" + text + "\" is no number of a call: 68, or 68#2 for the second one of it");
    return number;
}

}  // namespace ScrivelTool
