// Registers, memory and bytes as people read them. Tested by tests/tool/GoldenTest.cpp.

#include "KnownText.h"

#include <algorithm>
#include <cstdio>

#include "CallLine.h"

namespace ScrivelTool
{

using namespace ScrivelReader;

std::string RegisterName(const std::string& name, std::optional<std::uint64_t> number,
                         std::uint64_t offset128)
{
    std::string text = name.empty() ? "r" + (number ? std::to_string(*number) : "?") : Printable(name);
    if (offset128 != 0)
        text += "[" + std::to_string(offset128) + "]";
    return text;
}

std::string RegisterName(const KnownRegister& known)
{
    return RegisterName(known.name, known.number, known.offset128);
}

std::string ShortHex(std::uint64_t number)
{
    char digits[32];
    std::snprintf(digits, sizeof digits, "0x%llx", static_cast<unsigned long long>(number));
    return digits;
}

std::string HexDigits(std::string_view bytes)
{
    constexpr std::string_view digits = "0123456789abcdef";
    std::string text;
    text.reserve(2 * bytes.size());
    for (const char byte : bytes) {
        const auto value = static_cast<unsigned char>(byte);
        text.append(1, digits[value / 16]).append(1, digits[value % 16]);
    }
    return text;
}

std::string ValueText(std::string_view bytes)
{
    std::string digits = HexDigits(bytes);
    digits.erase(0, std::min(digits.find_first_not_of('0'), digits.empty() ? 0 : digits.size() - 1));
    return "0x" + digits;
}

std::string_view Significant(std::string_view bytes, std::uint64_t bits)
{
    constexpr std::size_t unit = 4;
    std::size_t count = std::size_t(std::min<std::uint64_t>((bits + 7) / 8, bytes.size()));
    if (bits == 0) {
        const std::size_t zeros = std::min(bytes.find_first_not_of('\0'), bytes.size());
        count = (bytes.size() - zeros + unit - 1) / unit * unit;
        count = std::min(std::max(count, unit), bytes.size());
    }
    return bytes.substr(bytes.size() - count);
}

std::string PlaceText(const std::string& space, std::uint64_t address)
{
    return Printable(space) + ":" + ShortHex(address);
}

std::string BytesText(std::string_view bytes, const std::vector<std::optional<char>>& known,
                      const Terminal& terminal)
{
    std::string text;
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        const bool isChanged = i < known.size() && known[i] && *known[i] != bytes[i];
        const std::string digits = HexDigits(bytes.substr(i, 1));
        text += isChanged ? terminal.Styled(Style::Failure, "*" + digits) : " " + digits;
    }
    if (known.empty() && !text.empty())
        text.erase(0, 1);
    return text;
}

std::string NumberText(const Source& source)
{
    return NumberText(source.call, source.occurrence);
}

std::string SourceText(const Source& source)
{
    return (source.way == Way::Read ? "read #" : "wrote #") + NumberText(source);
}

namespace
{

void AddSource(Json& object, const Source& source, const Knowledge& known)
{
    object["call"] = source.call;
    object["occurrence"] = source.occurrence;
    object["way"] = source.way == Way::Read ? "read" : "wrote";
    object["stale"] = known.IsStale(source);
}

/// A text of which neighbours of one style are coloured together.
class StyledText
{
public:
    explicit StyledText(const Terminal& itsTerminal) : terminal(itsTerminal) {}

    void Add(std::string_view text, Style itsStyle)
    {
        if (text.empty())
            return;
        if (itsStyle != style) {
            done = Text();
            begun.clear();
            style = itsStyle;
        }
        begun += text;
    }
    Style Last() const { return style; }
    std::string Text() const { return done + (begun.empty() ? "" : terminal.Styled(style, begun)); }

private:
    const Terminal& terminal;
    std::string done;
    std::string begun;
    Style style = Style::Plain;
};

std::string_view WithoutBlanksAtEnd(std::string_view text)
{
    return text.substr(0, text.find_last_not_of(' ') + 1);
}

}  // namespace

Json KnownJson(const KnownRegister& item, const Knowledge& known)
{
    Json object = {
        {"kind", "register"},
        {"name", item.name.empty() ? Json() : Json(item.name)},
        {"number", item.number ? Json(*item.number) : Json()},
        {"offset128", item.offset128},
        {"value", item.bytes.empty() ? Json() : Json(HexDigits(Significant(item.bytes, item.bits)))}};
    if (!item.bytes.empty())
        AddSource(object, item.source, known);
    if (item.refused)
        object["refused"] = {{"call", item.refused->call},
                             {"way", item.refused->way == Way::Read ? "read" : "wrote"}};
    return object;
}

Json KnownJson(const KnownMemory& item, const Knowledge& known)
{
    Json object = {{"kind", "memory"},
                   {"space", item.space},
                   {"space_name", item.spaceName},
                   {"address", ShortHex(item.address)},
                   {"value", HexDigits(item.bytes)}};
    AddSource(object, item.source, known);
    return object;
}

ReadOptions OptionsForKnowledge()
{
    ReadOptions options;
    options.limits.items = 64 * 1024;
    options.limits.text = 4096;
    return options;
}

std::string ShellWord(const std::string& path)
{
    constexpr std::string_view plain =
        "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_-./+,:@%";
    if (!path.empty() && path.find_first_not_of(plain) == std::string::npos)
        return path;
    std::string word = "'";
    for (const char c : path)
        word += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return Printable(word + "'");
}

std::size_t Columns(std::string_view text)
{
    // Every byte of a UTF-8 character but the first takes none. Nearly all text is ASCII, and its bytes
    // are looked at many at once.
    char all = 0;
    for (const char c : text) {
        all = char(all | c);
    }
    if ((static_cast<unsigned char>(all) & 0x80) == 0) {
        return text.size();
    }
    return std::size_t(std::count_if(
        text.begin(), text.end(), [](char c) { return (static_cast<unsigned char>(c) & 0xc0) != 0x80; }));
}

std::string Clipped(std::string text, std::size_t columns)
{
    constexpr std::string_view dots = "...";
    if (columns <= dots.size() || Columns(text) <= columns)
        return text;
    std::size_t end = 0;
    for (std::size_t used = 0; end < text.size(); ++end) {
        const bool isFirst = (static_cast<unsigned char>(text[end]) & 0xc0) != 0x80;
        if (isFirst && ++used > columns - dots.size())
            break;
    }
    text.resize(end);
    return text.append(dots);
}

std::string ItemLines(const std::string& label, const std::vector<std::string>& items, std::size_t width,
                      const Terminal& terminal)
{
    constexpr std::size_t labelColumns = 11;
    constexpr std::size_t gap = 3;
    std::string text = terminal.Styled(Style::Quiet, label);
    text += std::string(labelColumns - std::min(labelColumns, label.size()), ' ');
    std::size_t used = labelColumns;
    for (std::size_t i = 0; i < items.size(); ++i) {
        const std::string item = Clipped(items[i], width - std::min(width, labelColumns));
        if (i != 0 && used + gap + Columns(item) > width) {
            text += "\n" + std::string(labelColumns, ' ');
            used = labelColumns;
        } else if (i != 0) {
            text += std::string(gap, ' ');
            used += gap;
        }
        text += item;
        used += Columns(item);
    }
    return text + "\n";
}

std::string CountText(std::uint64_t count, const std::string& what)
{
    return std::to_string(count) + " " + what + (count == 1 ? "" : "s");
}

std::string FactLines(const std::vector<Fact>& facts, std::size_t indent, const Terminal& terminal)
{
    StyledText lines(terminal);
    std::size_t used = 0;
    for (std::size_t i = 0; i < facts.size(); ++i) {
        const Fact& fact = facts[i];
        // What separates it from the next stands in its line.
        const std::size_t after =
            i + 1 == facts.size() ? 0 : Columns(WithoutBlanksAtEnd(facts[i + 1].separator));
        const std::size_t taken = after + (i == 0 ? 0 : indent);
        const std::string text =
            fact.isPath ? fact.text
                        : Clipped(fact.text, terminal.Width() - std::min(terminal.Width(), taken));
        const std::size_t columns = Columns(fact.separator) + Columns(text);
        const bool isBelow = i != 0 && used + columns + after > terminal.Width();
        const bool goesOn = fact.separator == " " && fact.style == lines.Last();
        lines.Add(isBelow ? WithoutBlanksAtEnd(fact.separator) : fact.separator,
                  goesOn ? fact.style : Style::Plain);
        if (isBelow)
            lines.Add("\n" + std::string(indent, ' '), Style::Plain);
        lines.Add(text, fact.style);
        used = isBelow ? indent + Columns(text) : used + columns;
    }
    return lines.Text() + "\n";
}

}  // namespace ScrivelTool
