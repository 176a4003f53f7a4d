// A call in one line. Tested by tests/tool/CallLineTest.cpp.

#include "CallLine.h"

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <iterator>
#include <string_view>
#include <utility>

#include "KnownText.h"
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
void AddShortNumber(std::string& out, std::string_view text)
{
    constexpr std::size_t shortEnough = 9;
    const auto number = text.size() > shortEnough ? ParseLogNumber(text) : std::nullopt;
    if (!number) {
        out.append(text);
        return;
    }
    char digits[2 + 16] = {'0', 'x'};
    char* const end = std::to_chars(digits + 2, std::end(digits), *number, 16).ptr;
    out.append(digits, std::size_t(end - digits));
}

void AddNumber(std::string& out, std::uint64_t number)
{
    char digits[20];
    char* const end = std::to_chars(std::begin(digits), std::end(digits), number).ptr;
    out.append(digits, std::size_t(end - digits));
}

void AddBytes(std::string& out, Tree::Element bytes)
{
    constexpr std::string_view hex = "0123456789abcdef";
    char digits[3 * mostBytesShown];
    char* end = digits;
    for (const char byte : bytes.Text().substr(0, mostBytesShown)) {
        const auto value = static_cast<unsigned char>(byte);
        if (end != digits) {
            *end++ = ' ';
        }
        *end++ = hex[value / 16];
        *end++ = hex[value % 16];
    }
    out.append(digits, std::size_t(end - digits));
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
    const Tree::Element address = place.Find("addr");
    const Tree::Element id = address.Exists() ? place.Find("spaceId") : address;
    if (!id.Exists()) {
        return {};
    }
    return Address{id, place.Find("spaceName"), address};
}

void Add(std::string& out, const Address& address)
{
    const bool hasName = address.name.Exists() && !address.name.Text().empty() &&
                         !StartsWith(address.name.Text(), "unknown ");
    out.append(hasName ? address.name.Text() : address.id.Text());
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
    const Tree::Element number = element.Find("regNumber");
    const Tree::Element bytes = number.Exists() ? element.Find("bytes") : number;
    return bytes.Exists() ? std::make_optional(Register{number, bytes}) : std::nullopt;
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
void AddDecimal(std::string& out, std::uint64_t number, std::size_t digits)
{
    constexpr std::size_t most = 20;
    char text[2 * most];
    char* first = text + most - 1;  // zeros before it, the point within it
    char* const end = std::to_chars(first, std::end(text) - 1, number).ptr;
    while (std::size_t(end - first) <= digits) {
        *--first = '0';
    }
    std::copy_backward(end - digits, end, end + 1);
    *(end - digits) = '.';
    out.append(first, std::size_t(end + 1 - first));
}

std::uint64_t Rounded(std::uint64_t number, std::uint64_t unit)
{
    return (number + unit / 2) / unit;
}

/// Moves what the text has from there on to the right end of so many columns.
void AlignRight(std::string& text, std::size_t begin, std::size_t columns)
{
    const std::size_t own = text.size() - begin;
    if (own < columns) {
        text.insert(begin, columns - own, ' ');
    }
}

void AddNumberOf(std::string& text, std::uint64_t number, std::uint32_t occurrence)
{
    AddNumber(text, number);
    if (occurrence > 1) {
        text += '#';
        AddNumber(text, occurrence);
    }
}

void AddTime(std::string& text, const std::optional<Time>& time)
{
    if (!time) {
        text += '?';
        return;
    }
    if (time->nanoseconds < 0) {
        text += '-';
    }
    AddDecimal(text, std::uint64_t(std::abs(time->nanoseconds)) / 1000, 6);
    if (time->wrapped) {
        text += '!';
    }
}

void AddDuration(std::string& text, std::optional<std::int64_t> nanoseconds)
{
    if (!nanoseconds) {
        return;
    }
    constexpr std::uint64_t microsecond = 1000;
    constexpr std::uint64_t millisecond = 1000 * microsecond;
    constexpr std::uint64_t second = 1000 * millisecond;
    const auto size = std::uint64_t(std::abs(*nanoseconds));
    if (*nanoseconds < 0) {
        text += '-';
    }
    if (size < millisecond) {
        AddNumber(text, Rounded(size, microsecond));
        text += " us";
    } else if (size < 100 * millisecond) {
        AddDecimal(text, Rounded(size, millisecond / 100), 2);
        text += " ms";
    } else if (size < second) {
        AddNumber(text, Rounded(size, millisecond));
        text += " ms";
    } else {
        AddDecimal(text, Rounded(size, second / 100), 2);
        text += " s";
    }
}

/// What tree holds, as ElementsText says, after what is in the text already.
void AddElements(std::string& text, const Tree& tree, bool results)
{
    const std::size_t begin = text.size();
    for (Tree::Element element : tree.Top()) {
        const std::string_view value = element.Text();
        if (results &&
            (StartsWith(value, "CADI_STATUS_") || StartsWith(value, "Invalid return type: 0x"))) {
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
    return Printable(std::move(text));
}

std::optional<std::string> RegisterText(Tree::Element element)
{
    const auto found = FindRegister(element);
    if (!found) {
        return {};
    }
    std::string text;
    Add(text, element.Name(), *found);
    return Printable(std::move(text));
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
    return Printable(call.status.substr(StartsWith(call.status, prefix) ? prefix.size() : 0));
}

std::string NumberText(std::uint64_t number, std::uint32_t occurrence)
{
    std::string text;
    AddNumberOf(text, number, occurrence);
    return text;
}

std::string NumberText(const Call& call)
{
    return NumberText(call.number, call.occurrence);
}

std::string TimeText(const std::optional<Time>& time)
{
    std::string text;
    AddTime(text, time);
    return text;
}

std::string DurationText(std::optional<std::int64_t> nanoseconds)
{
    std::string text;
    AddDuration(text, nanoseconds);
    return text;
}

std::string CallLine(const Call& call, const Terminal& terminal)
{
    std::string line;
    line.reserve(terminal.Width() + 2 * longestText);
    std::size_t columns = 0;  // that the line has up to what was begun last
    std::size_t begin = 0;
    // Ends a piece of the line and gives it its colour.
    const auto end = [&](Style style) {
        columns += Columns(std::string_view(line).substr(begin));
        terminal.StyleFrom(begin, style, line);
        begin = line.size();
    };
    AddNumberOf(line, call.number, call.occurrence);
    AlignRight(line, 0, 4);
    end(Style::Plain);

    line += "  ";
    AddTime(line, call.callTime);
    AlignRight(line, begin + 2, 8);
    line += "  ";
    const std::size_t duration = line.size();
    AddDuration(line, call.Took());
    if (call.Returned() && call.clockSetBack)
        line += '!';
    AlignRight(line, duration, 9);
    line += ' ';
    end(Style::Quiet);

    if (call.thread != 0) {
        line += 'T';
        AddNumber(line, call.thread);
        line += ' ';
    }
    if (!call.ancestors.empty())
        line.append(std::min<std::size_t>(call.ancestors.size(), 8) * 2 - 1, ' ').append("└ ");
    end(Style::Plain);

    constexpr std::size_t leastRoom = 5;
    const std::string status = Clipped(StatusText(call), terminal.Width() / 3);
    const std::size_t after = status.empty() ? 0 : Columns(status) + 2;
    const std::size_t others = columns + leastRoom + after;
    const std::size_t mostOfName =
        std::max(terminal.Width() / 5, terminal.Width() - std::min(terminal.Width(), others));
    line += call.name;
    MakePrintable(line, begin);
    if (line.size() - begin > mostOfName)
        line.replace(begin, std::string::npos, Clipped(line.substr(begin), mostOfName));
    end(Style::Name);

    constexpr std::string_view arrow = " -> ";
    const std::size_t room =
        std::max(terminal.Width() - std::min(terminal.Width(), columns + after), leastRoom);
    line += '(';
    AddElements(line, call.arguments, false);
    line += ')';
    const std::size_t withoutResults = line.size();
    std::size_t used = Columns(std::string_view(line).substr(begin));
    // What is cut off anyway is not made.
    if (used <= room) {
        line += arrow;
        AddElements(line, call.results, true);
        if (line.size() == withoutResults + arrow.size())
            line.resize(withoutResults);
        used += Columns(std::string_view(line).substr(withoutResults));
    }
    if (used > room) {
        std::size_t cut = room - 3;
        while (cut > 0 && (static_cast<unsigned char>(line[begin + cut]) & 0xc0) == 0x80)
            --cut;
        line.resize(begin + cut);
        line += "...";
    }
    end(Style::Plain);

    if (!status.empty()) {
        const bool isBad = call.Failed() || !call.Returned();
        const std::size_t column =
            terminal.Width() > columns + after ? terminal.Width() - Columns(status) : columns + 2;
        line.append(column - columns, ' ');
        begin = line.size();
        line += status;
        terminal.StyleFrom(begin, isBad ? Style::Failure : Style::Quiet, line);
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
