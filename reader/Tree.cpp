// The tree of what a call's element holds: making it from events, and walking it. Tested by
// tests/reader/TreeTest.cpp.

#include "scrivel/Tree.h"

#include <algorithm>

#include "format/Characters.h"

namespace ScrivelReader
{

namespace
{

constexpr std::string_view itemName = "value";
constexpr std::string_view strayTextName = "#text";
constexpr std::size_t mostInATree = 0xf0000000;  // positions have 32 bits

bool IsBlank(std::string_view text)
{
    // By eights: the indent is much of a log.
    constexpr std::string_view indent = "        ";
    std::size_t at = text.substr(0, 1) == "\n" ? 1 : 0;
    while (text.size() - at >= indent.size() && text.compare(at, indent.size(), indent) == 0) {
        at += indent.size();
    }
    return std::all_of(text.begin() + std::ptrdiff_t(at), text.end(),
                       [](char c) { return c == ' ' || c == '\n' || c == '\t' || c == '\r'; });
}

/// The byte that 0xNN is, or -1.
int ByteOf(std::string_view text)
{
    if (text.size() != 4 || text[0] != '0' || text[1] != 'x')
        return -1;
    const int high = Scrivel2::HexValue(text[2]);
    const int low = Scrivel2::HexValue(text[3]);
    return high < 0 || low < 0 ? -1 : high * 16 + low;
}

}  // namespace

// ---- Walking it -----------------------------------------------------------------------------------

Tree::Element Tree::Element::Find(std::string_view name) const
{
    for (Element child : Children())
        if (child.Name() == name)
            return child;
    return {nullptr, 0};
}

Tree::Element Tree::Find(std::string_view name) const
{
    for (Element element : Top())
        if (element.Name() == name)
            return element;
    return {nullptr, 0};
}

// ---- Making it ------------------------------------------------------------------------------------

void Tree::Push(std::string_view name)
{
    Record record{};
    // Items of an array bear one name: it stands in the pool once.
    if (!records.empty() && NameOf(records.back()) == name) {
        record.name = records.back().name;
    } else {
        record.name = std::uint32_t(pool.size());
        pool.append(name);
    }
    record.nameLength = std::uint32_t(name.size());
    record.kind = Kind::Text;
    record.end = std::uint32_t(records.size() + 1);
    records.push_back(record);
}

void Tree::Begin(std::string_view name, const Limits& limits)
{
    if (skipped != 0 || open.size() >= limits.depth || pool.size() + name.size() > mostInATree) {
        if (skipped == 0 && !open.empty()) {
            Record& parent = records[open.back()];
            if (parent.kind == Kind::Text)
                parent.kind = Kind::Elements;
            parent.cut = true;
            ++parent.count;
        }
        lacksElements = true;
        ++skipped;
        return;
    }
    if (!open.empty()) {
        if (open.size() > 1 && records[open[open.size() - 2]].kind == Kind::Bytes)
            Unfold(open[open.size() - 2]);
        KeepStrayText();
        Record& parent = records[open.back()];
        if (parent.kind == Kind::Bytes && name != itemName) {
            Unfold(open.back());
        } else if (parent.kind == Kind::Text) {
            parent.kind = Kind::Elements;
        }
        Record& array = records[open.back()];
        ++array.count;
        if (array.kind == Kind::Elements && array.count > limits.items) {
            array.cut = true;
            lacksElements = true;
            ++skipped;
            return;
        }
    }
    open.push_back(std::uint32_t(records.size()));
    Push(name);
    text.clear();
    textCut = false;
}

void Tree::AddText(std::string_view more, const Limits& limits)
{
    if (open.empty() || skipped != 0)
        return;
    if (records[open.back()].kind != Kind::Text && text.empty() && IsBlank(more))
        return;  // the layout between two elements
    const std::size_t room = limits.text - std::min(limits.text, text.size());
    textCut = textCut || more.size() > room;
    text.append(more.substr(0, room));
}

/// Text between elements is in no log that was written by a generator; it is kept all the same.
void Tree::KeepStrayText()
{
    if (!IsBlank(text)) {
        Record& parent = records[open.back()];
        if (parent.kind == Kind::Bytes)
            Unfold(open.back());
        Record& unfolded = records[open.back()];
        unfolded.kind = Kind::Elements;
        ++unfolded.count;
        Push(strayTextName);
        records.back().text = std::uint32_t(pool.size());
        records.back().textLength = std::uint32_t(text.size());
        records.back().cut = textCut;
        pool.append(text);
    }
    text.clear();
    textCut = false;
}

void Tree::End(const Limits& limits)
{
    if (skipped != 0) {
        --skipped;
        return;
    }
    const std::uint32_t index = open.back();
    if (records[index].kind != Kind::Text) {
        KeepStrayText();
        records[index].end = std::uint32_t(records.size());
        open.pop_back();
        return;
    }
    open.pop_back();
    Record& parent = records[open.empty() ? index : open.back()];
    const bool isItem = !open.empty() && NameOf(records[index]) == itemName;
    const int byte = isItem ? ByteOf(text) : -1;
    if (byte >= 0 && (parent.kind == Kind::Bytes || parent.count == 1)) {
        // The name of a first item is taken back with it, unless its array bears the same one; the bytes
        // then lie side by side.
        if (parent.kind == Kind::Bytes)
            pool.resize(parent.text + parent.textLength);
        else if (records[index].name != parent.name)
            pool.resize(records[index].name);
        records.pop_back();
        if (parent.kind != Kind::Bytes) {
            parent.kind = Kind::Bytes;
            parent.text = std::uint32_t(pool.size());
            parent.textLength = 0;
        }
        if (parent.textLength < limits.bytes && pool.size() < mostInATree) {
            pool.push_back(char(byte));
            ++parent.textLength;
        } else {
            parent.cut = true;
        }
        text.clear();
        return;
    }
    if (!open.empty() && parent.kind == Kind::Bytes)
        Unfold(open.back());

    Record& record = records.back();
    record.end = std::uint32_t(records.size());
    record.cut = textCut;
    // Whoever writes a line end into a text writes it escaped: a raw one is the layout of no elements.
    if (IsBlank(text) && text.find('\n') != std::string::npos) {
        record.kind = Kind::Elements;
    } else {
        record.text = std::uint32_t(pool.size());
        if (pool.size() + text.size() > mostInATree) {
            record.cut = true;
            text.clear();
        }
        record.textLength = std::uint32_t(text.size());
        pool.append(text);
    }
    text.clear();
    textCut = false;
}

/// Gives an array the elements that its bytes came from, as its next item is no byte. An item that was
/// begun after them stays behind them.
void Tree::Unfold(std::uint32_t index)
{
    const bool hasItem = records.size() > index + 1;
    const std::string bytes(pool, records[index].text, records[index].textLength);
    std::string itemBegun;
    if (hasItem) {
        itemBegun = NameOf(records.back());
        records.pop_back();
    }
    records[index].kind = Kind::Elements;
    records[index].text = 0;
    records[index].textLength = 0;
    for (const char byte : bytes) {
        constexpr std::string_view digits = "0123456789abcdef";
        const auto value = static_cast<unsigned char>(byte);
        Push(itemName);
        records.back().text = std::uint32_t(pool.size());
        records.back().textLength = 4;
        pool.append("0x").append(1, digits[value / 16]).append(1, digits[value % 16]);
    }
    if (hasItem) {
        const auto moved = std::uint32_t(records.size());
        std::replace(open.begin(), open.end(), index + 1, moved);
        Push(itemBegun);
    }
}

void Tree::DropLast()
{
    std::uint32_t last = 0;
    for (std::uint32_t i = 0; i < records.size(); i = records[i].end)
        last = i;
    records.resize(last);
}

std::string_view Tree::LastText() const
{
    if (records.empty() || !open.empty() || records.back().kind != Kind::Text)
        return {};
    return {pool.data() + records.back().text, records.back().textLength};
}

void Tree::Clear()
{
    GoBack({0, 0});
}

void Tree::GoBack(Mark mark)
{
    records.resize(mark.records);
    pool.resize(mark.pool);
    lacksElements = lacksElements && mark.records != 0;
    open.clear();
    text.clear();
    textCut = false;
    skipped = 0;
}

}  // namespace ScrivelReader
