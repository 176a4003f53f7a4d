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

void MakePrintable(std::string& text, std::size_t from)
{
    for (; from < text.size(); ++from) {
        if (static_cast<unsigned char>(text[from]) < ' ' || text[from] == 0x7f) {
            text[from] = '?';
        }
    }
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
void AddShortNumber(std::string& out, std::string_view text)
{
    constexpr std::size_t shortEnough = 9;
    const auto number = text.size() > shortEnough ? ParseLogNumber(text) : std::nullopt;
    if (!number) {
        out.append(text);
        return;
    }
    char digits[16];
    char* const end = std::to_chars(std::begin(digits), std::end(digits), *number, 16).ptr;
    out.append("0x").append(digits, end);
}

void AddBytes(std::string& out, Tree::Element bytes)
{
    constexpr std::string_view digits = "0123456789abcdef";
    bool isFirst = true;
    for (const char byte : bytes.Text().substr(0, mostBytesShown)) {
        const auto value = static_cast<unsigned char>(byte);
        if (!isFirst) {
            out += ' ';
        }
        isFirst = false;
        out += digits[value / 16];
        out += digits[value % 16];
    }
    if (bytes.Count() > mostBytesShown) {
        out += " ... (" + std::to_string(bytes.Count()) + " bytes)";
    }
}

/// Where in an element an address is, and in a register's value what of it.
struct Address
{
    Tree::Element id;
    Tree::Element name;
    Tree::Element address;
};

std::optional<Address> FindAddress(Tree::Element element)
{
    if (element.What() != Tree::Kind::Elements) {
        return {};
    }
    const Tree::Element location = element.Find("location");
    const Tree::Element place = location.Exists() ? location : element;
    const Address found{place.Find("spaceId"), place.Find("spaceName"), place.Find("addr")};
    return found.address.Exists() && found.id.Exists() ? std::make_optional(found) : std::nullopt;
}

void Add(std::string& out, const Address& address)
{
    const std::size_t begin = out.size();
    const bool hasName = address.name.Exists() && !address.name.Text().empty() &&
                         !StartsWith(address.name.Text(), "unknown ");
    out.append(hasName ? address.name.Text() : address.id.Text());
    MakePrintable(out, begin);
    out += ':';
    AddShortNumber(out, address.address.Text());
}

struct Register
{
    Tree::Element number;
    Tree::Element bytes;
};

std::optional<Register> FindRegister(Tree::Element element)
{
    if (element.What() != Tree::Kind::Elements) {
        return {};
    }
    const Register found{element.Find("regNumber"), element.Find("bytes")};
    return found.number.Exists() && found.bytes.Exists() ? std::make_optional(found) : std::nullopt;
}

void Add(std::string& out, std::string_view name, const Register& found)
{
    if (name == "reg") {
        out.append("r").append(found.number.Text());
    } else {
        out.append(name);
    }
    out += '=';
    AddShortNumber(out, found.bytes.Text());
}

void AddValue(std::string& out, Tree::Element element, std::size_t room);

bool BeginsWithRegister(Tree::Element element)
{
    const Tree::Elements children = element.Children();
    return !children.Empty() && FindRegister(*children.begin());
}

void AddNamed(std::string& out, Tree::Element element, std::size_t room)
{
    if (const auto address = FindAddress(element)) {
        Add(out, *address);
    } else if (const auto found = FindRegister(element)) {
        Add(out, element.Name(), *found);
    } else if (const std::string_view name = Enumerator(element.Text()); !name.empty()) {
        out.append(name);
    } else {
        if (!BeginsWithRegister(element)) {
            out.append(element.Name()).append("=");
        }
        AddValue(out, element, room);
    }
}

void AddValue(std::string& out, Tree::Element element, std::size_t room)
{
    if (element.What() == Tree::Kind::Bytes) {
        AddBytes(out, element);
        return;
    }
    if (element.What() == Tree::Kind::Text) {
        AddShortNumber(out, element.Text().substr(0, room));
        if (element.Text().size() > room || element.IsCut()) {
            out += "...";
        }
        return;
    }

    const bool isRegisters = BeginsWithRegister(element);
    if (!isRegisters) {
        out += '{';
    }
    const std::size_t begin = out.size();
    std::size_t count = 0;
    for (Tree::Element child : element.Children()) {
        if (count != 0) {
            out += isRegisters ? " " : ", ";
        }
        const std::size_t used = out.size() - begin;
        if (count == mostItemsShown || used > room) {
            out += "... (" + std::to_string(element.Count()) + ")";
            break;
        }
        ++count;
        const std::size_t left = room - std::min(room, used);
        const bool isItem = child.Name() == "value" || child.Name() == element.Name();
        if (isItem && !FindRegister(child)) {
            AddValue(out, child, left);
        } else {
            AddNamed(out, child, left);
        }
    }
    if (!isRegisters) {
        out += '}';
    }
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

void AddRight(std::string& out, std::string_view text, std::size_t columns)
{
    const std::size_t own = Columns(text);
    out.append(columns - std::min(columns, own), ' ').append(text);
}

/// What tree holds, as ElementsText says, after what is in the text already.
void AddElements(std::string& text, const Tree& tree, bool results)
{
    const std::size_t begin = text.size();
    for (Tree::Element element : tree.Top()) {
        const std::string_view value = element.Text();
        if (results &&
            (StartsWith(value, "CADI_STATUS_") || StartsWith(value, "Invalid return type: "))) {
            continue;
        }
        if (element.Name() == "regCount" && value == "1") {
            continue;
        }
        const std::size_t used = text.size() - begin;
        if (used > longestText) {
            text += ", ...";
            break;
        }
        if (used != 0) {
            text += ", ";
        }
        AddNamed(text, element, longestText - std::min(longestText, text.size() - begin));
    }
    MakePrintable(text, begin);
}

}  // namespace

std::optional<std::string> AddressText(Tree::Element element)
{
    const auto address = FindAddress(element);
    if (!address) {
        return {};
    }
    std::string text;
    Add(text, *address);
    return text;
}

std::optional<std::string> RegisterText(Tree::Element element)
{
    const auto found = FindRegister(element);
    if (!found) {
        return {};
    }
    std::string text;
    Add(text, element.Name(), *found);
    return text;
}

std::string Printable(std::string text)
{
    MakePrintable(text, 0);
    return text;
}

std::string ElementsText(const Tree& tree, bool results)
{
    std::string text;
    AddElements(text, tree, results);
    return text;
}

std::string CallText(const Call& call)
{
    return call.name + "(" + ElementsText(call.arguments, false) + ")";
}

std::string StatusText(const Call& call)
{
    constexpr std::string_view prefix = "CADI_STATUS_";
    if (!call.Returned())
        return "NOT RETURNED";
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
    std::string number;
    AddRight(number, NumberText(call), 4);
    std::string times;
    times.reserve(32);
    times += "  ";
    AddRight(times, TimeText(call.callTime), 8);
    times += "  ";
    AddRight(times, DurationText(call.Took()), 9);
    times += ' ';
    std::string thread = call.thread == 0 ? "" : "T" + std::to_string(call.thread) + " ";
    std::string indent;
    if (!call.ancestors.empty())
        indent = std::string(std::min<std::size_t>(call.ancestors.size(), 8) * 2 - 1, ' ') + "└ ";

    constexpr std::string_view arrow = " -> ";
    std::string rest;
    rest.reserve(2 * longestText);
    rest += '(';
    AddElements(rest, call.arguments, false);
    rest += ')';
    rest += arrow;
    const std::size_t withoutResults = rest.size();
    AddElements(rest, call.results, true);
    if (rest.size() == withoutResults) {
        rest.resize(withoutResults - arrow.size());
    }

    const std::size_t before =
        number.size() + Columns(times) + thread.size() + Columns(indent) + call.name.size();
    const std::size_t after = status.empty() ? 0 : status.size() + 2;
    const std::size_t room = terminal.Width() > before + after ? terminal.Width() - before - after : 0;
    constexpr std::size_t leastRoom = 12;
    if (Columns(rest) > std::max(room, leastRoom)) {
        std::size_t cut = std::max(room, leastRoom) - 3;
        while (cut > 0 && (static_cast<unsigned char>(rest[cut]) & 0xc0) == 0x80)
            --cut;
        rest.resize(cut);
        rest += "...";
    }
    std::string line;
    line.reserve(terminal.Width() + 64);
    line.append(number).append(terminal.Styled(Style::Quiet, times)).append(thread).append(indent);
    line.append(terminal.Styled(Style::Name, Printable(call.name))).append(rest);
    if (!status.empty()) {
        const bool isBad = call.Failed() || !call.Returned();
        const std::size_t used = before + Columns(rest);
        const std::size_t column =
            terminal.Width() > used + after ? terminal.Width() - status.size() : used + 2;
        line.append(column - used, ' ');
        line.append(terminal.Styled(isBad ? Style::Failure : Style::Quiet, status));
    }
    line += '\n';
    return line;
}

Tree::Limits LineLimits()
{
    Tree::Limits limits;
    limits.items = limits.bytes = 64;
    limits.text = longestText;
    return limits;
}

}  // namespace ScrivelTool
