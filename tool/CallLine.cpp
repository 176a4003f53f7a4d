// A call in one line. Tested by tests/tool/CallLineTest.cpp.

#include "CallLine.h"

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <iterator>
#include <string_view>

#include "scrivel/CallFilter.h"

namespace ScrivelTool
{

using namespace ScrivelReader;

namespace
{

constexpr std::size_t mostBytesShown = 16;
constexpr std::size_t mostItemsShown = 8;
constexpr std::size_t longestText = 200;  // of one call, before the line is cut to the screen

bool StartsWith(std::string_view text, std::string_view begin)
{
    return text.substr(0, begin.size()) == begin;
}

/// Whether a value is an enumerator that says enough without its field's name.
std::string_view Enumerator(std::string_view text)
{
    for (const std::string_view prefix : {"CADI_EXECMODE_", "CADI_EXCEPTION_"})
        if (StartsWith(text, prefix))
            return text.substr(prefix.size());
    return {};
}

/// 0x0000000040000000 -> 0x40000000
std::string ShortNumber(std::string_view text)
{
    const auto number = ParseLogNumber(text);
    if (!number || text.size() < 10)
        return std::string(text);
    char digits[16];
    char* const end = std::to_chars(std::begin(digits), std::end(digits), *number, 16).ptr;
    return "0x" + std::string(std::begin(digits), end);
}

std::string BytesText(Tree::Element bytes)
{
    constexpr std::string_view digits = "0123456789abcdef";
    std::string text;
    for (const char byte : bytes.Text().substr(0, mostBytesShown)) {
        const auto value = static_cast<unsigned char>(byte);
        if (!text.empty())
            text += ' ';
        text.append(1, digits[value / 16]).append(1, digits[value % 16]);
    }
    if (bytes.Count() > mostBytesShown)
        text += " ... (" + std::to_string(bytes.Count()) + " bytes)";
    return text;
}

std::string ValueText(Tree::Element element, std::size_t room);

std::string NamedText(Tree::Element element, std::size_t room)
{
    if (const auto text = AddressText(element))
        return *text;
    if (const auto text = RegisterText(element))
        return *text;
    if (const std::string_view name = Enumerator(element.Text()); !name.empty())
        return std::string(name);
    const Tree::Elements children = element.Children();
    if (!children.Empty() && RegisterText(*children.begin()))
        return ValueText(element, room);
    return std::string(element.Name()) + "=" + ValueText(element, room);
}

std::string ValueText(Tree::Element element, std::size_t room)
{
    if (element.What() == Tree::Kind::Bytes)
        return BytesText(element);
    if (element.What() == Tree::Kind::Text)
        return ShortNumber(element.Text().substr(0, room)) +
               (element.Text().size() > room || element.IsCut() ? "..." : "");

    const bool isRegisters = !element.Children().Empty() && RegisterText(*element.Children().begin());
    std::string text;
    std::size_t count = 0;
    for (Tree::Element child : element.Children()) {
        if (count != 0)
            text += isRegisters ? " " : ", ";
        if (count == mostItemsShown || text.size() > room) {
            text += "... (" + std::to_string(element.Count()) + ")";
            break;
        }
        ++count;
        const bool isItem = child.Name() == "value" || child.Name() == element.Name();
        text += isItem && !RegisterText(child) ? ValueText(child, room - std::min(room, text.size()))
                                               : NamedText(child, room - std::min(room, text.size()));
    }
    return isRegisters ? text : "{" + text + "}";
}

/// A number with a decimal point in front of its last digits: 1255, 2 -> 12.55
std::string Decimal(std::int64_t number, std::size_t digits)
{
    std::string text = std::to_string(number);
    if (text.size() <= digits)
        text.insert(0, digits + 1 - text.size(), '0');
    return text.insert(text.size() - digits, 1, '.');
}

std::int64_t Rounded(std::int64_t number, std::int64_t unit)
{
    return (number + unit / 2) / unit;
}

/// How many columns a text takes: every byte of a UTF-8 character but the first takes none.
std::size_t Columns(std::string_view text)
{
    return std::size_t(std::count_if(
        text.begin(), text.end(), [](char c) { return (static_cast<unsigned char>(c) & 0xc0) != 0x80; }));
}

std::string PadLeft(const std::string& text, std::size_t columns)
{
    const std::size_t own = Columns(text);
    return own < columns ? std::string(columns - own, ' ') + text : text;
}

}  // namespace

std::optional<std::string> AddressText(Tree::Element element)
{
    const Tree::Element location = element.Find("location");
    const Tree::Element place = location.Exists() ? location : element;
    const Tree::Element address = place.Find("addr");
    const Tree::Element id = place.Find("spaceId");
    if (!address.Exists() || !id.Exists())
        return {};
    const Tree::Element name = place.Find("spaceName");
    const bool hasName = name.Exists() && !name.Text().empty() && !StartsWith(name.Text(), "unknown ");
    return Printable(std::string(hasName ? name.Text() : id.Text())) + ":" + ShortNumber(address.Text());
}

std::optional<std::string> RegisterText(Tree::Element element)
{
    const Tree::Element number = element.Find("regNumber");
    const Tree::Element bytes = element.Find("bytes");
    if (!number.Exists() || !bytes.Exists())
        return {};
    const std::string name =
        element.Name() == "reg" ? "r" + std::string(number.Text()) : std::string(element.Name());
    return name + "=" + ShortNumber(bytes.Text());
}

std::string Printable(std::string text)
{
    for (char& c : text)
        if (static_cast<unsigned char>(c) < ' ' || c == 0x7f)
            c = '?';
    return text;
}

std::string ElementsText(const Tree& tree, bool results)
{
    std::string text;
    for (Tree::Element element : tree.Top()) {
        const std::string_view value = element.Text();
        if (results && (StartsWith(value, "CADI_STATUS_") || StartsWith(value, "Invalid return type: ")))
            continue;
        if (element.Name() == "regCount" && value == "1")
            continue;
        if (text.size() > longestText) {
            text += ", ...";
            break;
        }
        if (!text.empty())
            text += ", ";
        text += NamedText(element, longestText - std::min(longestText, text.size()));
    }
    return Printable(std::move(text));
}

std::string CallText(const Call& call)
{
    return call.name + "(" + ElementsText(call.arguments, false) + ")";
}

std::string StatusText(const Call& call)
{
    constexpr std::string_view prefix = "CADI_STATUS_";
    if (!call.Returned())
        return "NEVER RETURNED";
    if (StartsWith(call.status, prefix))
        return call.status.substr(prefix.size());
    return Printable(call.status);
}

std::string NumberText(const Call& call)
{
    std::string text = std::to_string(call.number);
    if (call.occurrence > 1)
        text += "#" + std::to_string(call.occurrence);
    return text;
}

std::string TimeText(const std::optional<Time>& time)
{
    if (!time)
        return "?";
    const std::int64_t microseconds = std::abs(time->nanoseconds) / 1000;
    std::string text = Decimal(microseconds, 6);
    if (time->nanoseconds < 0)
        text.insert(0, 1, '-');
    if (time->wrapped)
        text += '!';
    return text;
}

std::string DurationText(std::optional<std::int64_t> nanoseconds)
{
    if (!nanoseconds)
        return "";
    constexpr std::int64_t microsecond = 1000;
    constexpr std::int64_t millisecond = 1000 * microsecond;
    constexpr std::int64_t second = 1000 * millisecond;
    const std::int64_t size = std::abs(*nanoseconds);
    const std::string sign = *nanoseconds < 0 ? "-" : "";
    if (size < millisecond)
        return sign + std::to_string(Rounded(size, microsecond)) + " us";
    if (size < 100 * millisecond)
        return sign + Decimal(Rounded(size, millisecond / 100), 2) + " ms";
    if (size < second)
        return sign + std::to_string(Rounded(size, millisecond)) + " ms";
    return sign + Decimal(Rounded(size, second / 100), 2) + " s";
}

std::string CallLine(const Call& call, const Terminal& terminal)
{
    const std::string status = StatusText(call);
    const std::string number = PadLeft(NumberText(call), 4);
    const std::string times =
        "  " + PadLeft(TimeText(call.callTime), 8) + "  " + PadLeft(DurationText(call.Took()), 9) + " ";
    std::string thread = call.thread == 0 ? "" : "T" + std::to_string(call.thread) + " ";
    std::string indent;
    if (!call.ancestors.empty())
        indent = std::string(std::min<std::size_t>(call.ancestors.size(), 8) * 2 - 1, ' ') + "└ ";

    std::string rest = "(" + ElementsText(call.arguments, false) + ")";
    if (const std::string results = ElementsText(call.results, true); !results.empty())
        rest += " -> " + results;

    const std::size_t before =
        number.size() + Columns(times) + thread.size() + Columns(indent) + call.name.size();
    const std::size_t after = status.empty() ? 0 : status.size() + 2;
    const std::size_t room = terminal.Width() > before + after ? terminal.Width() - before - after : 0;
    constexpr std::size_t leastRoom = 12;
    if (Columns(rest) > std::max(room, leastRoom)) {
        std::size_t cut = std::max(room, leastRoom) - 3;
        while (cut > 0 && (static_cast<unsigned char>(rest[cut]) & 0xc0) == 0x80)
            --cut;
        rest = rest.substr(0, cut) + "...";
    }
    std::string line = number + terminal.Styled(Style::Quiet, times) + thread + indent +
                       terminal.Styled(Style::Name, Printable(call.name)) + rest;
    if (!status.empty()) {
        const bool isBad = call.Failed() || !call.Returned();
        const std::size_t used = before + Columns(rest);
        const std::size_t column =
            terminal.Width() > used + after ? terminal.Width() - status.size() : used + 2;
        line += std::string(column - used, ' ') +
                terminal.Styled(isBad ? Style::Failure : Style::Quiet, status);
    }
    return line + "\n";
}

Tree::Limits LineLimits()
{
    Tree::Limits limits;
    limits.items = 64;
    limits.text = longestText;
    return limits;
}

}  // namespace ScrivelTool
