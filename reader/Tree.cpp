// The tree of what a call's element holds: making it from events, and walking it. Tested by
// tests/reader/TreeTest.cpp.

#include "scrivel/Tree.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "format/Characters.h"

namespace ScrivelReader
{

namespace
{

constexpr std::string_view itemName = "value";
constexpr std::string_view strayTextName = "#text";
constexpr std::size_t mostInATree = 0xf0000000;  // positions have 32 bits
constexpr std::uint64_t mostInNoRow = 64;        // elements of an array; further texts in it make rows

bool IsBlank(std::string_view text)
{
    // Nearly always it is the layout before a tag.
    constexpr std::string_view layout =
        "\n                                                               ";
    if (!text.empty() && static_cast<unsigned char>(text.front()) > ' ')
        return false;
    return text == layout.substr(0, text.size()) || std::all_of(text.begin(), text.end(), [](char c) {
               return c == ' ' || c == '\n' || c == '\t' || c == '\r';
           });
}

bool IsItem(std::string_view name)
{
    return name.size() == itemName.size() &&
           std::memcmp(name.data(), itemName.data(), itemName.size()) == 0;
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
    for (Element child : Children()) {
        // Most names differ in how they begin, which is seen at once.
        const std::string_view own = child.Name();
        if (own.size() == name.size() && (name.empty() || own.front() == name.front()) && own == name)
            return child;
    }
    return {};
}

Tree::Element Tree::Find(std::string_view name) const
{
    for (Element element : Top())
        if (element.Name() == name)
            return element;
    return {};
}

/// Where in a row's text the zero after an item is.
std::uint32_t Tree::EndOfItem(const Record& record, std::uint32_t item) const
{
    const char* const begin = pool.data() + record.text;
    return std::uint32_t(std::find(begin + item, begin + record.textLength, '\0') - begin);
}

// ---- Making it ------------------------------------------------------------------------------------

// The text of the element that was begun last grows at the end of the pool. An array of bytes has its own
// there, and an item that may be one more of them is no record yet:
//
//     data.....value...     data begun, its items are texts: the text of an item
//     data......0x1         data is bytes so far, and an item has begun

void Tree::Grow(std::size_t size)
{
    // Room that is not needed yet has been written to: of a large tree a little of it is enough.
    constexpr std::size_t mostRoom = 64 * 1024;
    pool.resize(used + size + std::min(used, mostRoom));
}

inline void Tree::Append(std::string_view more)
{
    if (pool.size() - used < more.size())
        Grow(more.size());
    if (!more.empty())
        std::memcpy(pool.data() + used, more.data(), more.size());
    used += more.size();
}

inline void Tree::Append(char more)
{
    if (pool.size() == used)
        Grow(1);
    pool[used++] = more;
}

inline Tree::Record& Tree::Push(std::string_view name)
{
    // Items of an array bear one name: it stands in the pool once.
    const bool isRepeated = !records.empty() && NameOf(records.back()) == name;
    const std::uint32_t nameAt = isRepeated ? records.back().name : std::uint32_t(used);
    if (!isRepeated)
        Append(name);
    // Made in its place: a copy of what has just been written in parts has to wait for all of them.
    Record& record = records.emplace_back();
    record.name = nameAt;
    record.nameLength = std::uint32_t(name.size());
    record.kind = Kind::Text;
    record.end = std::uint32_t(records.size());
    return record;
}

inline void Tree::Open(std::string_view name)
{
    Push(name).end = begun;
    begun = std::uint32_t(records.size() - 1);
    ++depth;
    textFrom = used;
}

/// Takes the text of the element that was begun last out of the pool.
std::string Tree::TakeBegun()
{
    std::string text(Begun());
    used = textFrom;
    return text;
}

void Tree::Begin(std::string_view name, const Limits& limits)
{
    if (itemBegun)
        MakeItem();
    if (skipped != 0 || depth >= limits.depth || used + name.size() > mostInATree) {
        Skip();
        return;
    }
    if (depth != 0) {
        if (used != textFrom)
            KeepStrayText();
        textCut = false;
        if (records[begun].kind == Kind::Bytes && !IsItem(name))
            Unfold(begun);
        Record& parent = records[begun];
        if (parent.kind == Kind::Text)
            parent.kind = Kind::Elements;
        ++parent.count;
        if (parent.kind == Kind::Elements && parent.count > limits.items) {
            parent.cut = true;
            lacksElements = true;
            ++skipped;
            return;
        }
        itemBegun = (parent.kind == Kind::Bytes || parent.count == 1) && IsItem(name);
        if (itemBegun)
            return;
    }
    Open(name);
}

/// Leaves the element that begins out, and what it holds.
void Tree::Skip()
{
    if (skipped == 0 && depth != 0) {
        Record& parent = records[begun];
        if (parent.kind == Kind::Text)
            parent.kind = Kind::Elements;
        parent.cut = true;
        ++parent.count;
    }
    lacksElements = true;
    ++skipped;
}

void Tree::AddText(std::string_view more, const Limits& limits)
{
    if (depth == 0 || skipped != 0)
        return;
    const std::size_t had = used - textFrom;
    if (had == 0 && !itemBegun && records[begun].kind != Kind::Text && IsBlank(more))
        return;  // the layout between two elements
    if (had + more.size() > limits.text || used + more.size() > mostInATree) {
        textCut = true;
        more = more.substr(0, std::min(limits.text - std::min(limits.text, had),
                                       mostInATree - std::min(mostInATree, used)));
    }
    Append(more);
}

/// Text between elements is in no log that was written by a generator; it is kept all the same.
void Tree::KeepStrayText()
{
    if (used != textFrom && !IsBlank(Begun())) {
        const std::string text = TakeBegun();
        if (records[begun].kind == Kind::Bytes)
            Unfold(begun);
        records[begun].kind = Kind::Elements;
        ++records[begun].count;
        Record& stray = Push(strayTextName);
        stray.text = std::uint32_t(used);
        stray.textLength = std::uint32_t(text.size());
        stray.cut = textCut;
        Append(text);
        textFrom = used;
    }
    used = textFrom;
    textCut = false;
}

/// Makes a record of the item that has begun, as it is no byte. Its array is none of bytes then.
void Tree::MakeItem()
{
    const std::string text = TakeBegun();
    if (records[begun].kind == Kind::Bytes)
        Unfold(begun);
    Open(itemName);
    Append(text);
    itemBegun = false;
}

void Tree::EndItem(const Limits& limits)
{
    const int byte = ByteOf(Begun());
    if (byte < 0) {
        MakeItem();
        End(limits);
        return;
    }
    used = textFrom;
    Record& array = records[begun];
    if (array.kind != Kind::Bytes) {
        array.kind = Kind::Bytes;
        array.text = std::uint32_t(used);
        array.textLength = 0;
    }
    if (array.textLength < limits.bytes && used < mostInATree) {
        Append(char(byte));
        ++array.textLength;
    } else {
        array.cut = true;
    }
    textFrom = used;
    itemBegun = false;
}

void Tree::End(const Limits& limits)
{
    if (skipped != 0) {
        --skipped;
        return;
    }
    if (itemBegun) {
        EndItem(limits);
        return;
    }
    const std::uint32_t index = begun;
    if (records[index].kind != Kind::Text)
        KeepStrayText();
    Record& record = records[index];
    begun = std::exchange(record.end, std::uint32_t(records.size()));
    --depth;
    if (record.kind == Kind::Text) {
        const std::string_view text = Begun();
        record.cut = textCut;
        // Whoever writes a line end into a text writes it escaped: a raw one is the layout of no
        // elements.
        if (IsBlank(text) && text.find('\n') != std::string::npos) {
            record.kind = Kind::Elements;
            used = textFrom;
        } else {
            record.text = std::uint32_t(textFrom);
            record.textLength = std::uint32_t(text.size());
            if (depth != 0 && records[begun].count > mostInNoRow && !textCut) {
                AddToRow();
                return;
            }
        }
    }
    lastEnded = index;
    textFrom = used;
    textCut = false;
}

/// The last record is a text that has ended, in a long array: it becomes one more item of the row before
/// it, or begins one.
void Tree::AddToRow()
{
    const std::uint32_t length = records.back().textLength + 1;
    const std::size_t index = records.size() - 1;
    Append('\0');
    if (lastEnded + 1 == index && records[lastEnded].row &&
        records[lastEnded].name == records[index].name) {
        records[lastEnded].textLength += length;
        records.pop_back();
    } else {
        records.back().row = true;
        records.back().textLength = length;
        lastEnded = std::uint32_t(index);
    }
    textFrom = used;
}

/// Gives an array the elements that its bytes came from, as its next item is no byte.
void Tree::Unfold(std::uint32_t index)
{
    const std::string bytes(pool.data() + records[index].text, records[index].textLength);
    used = records[index].text;
    records[index].kind = Kind::Elements;
    records[index].text = 0;
    records[index].textLength = 0;
    textFrom = used;
    if (bytes.empty())
        return;
    Record& row = Push(itemName);
    row.row = true;
    row.text = std::uint32_t(used);
    for (const char byte : bytes) {
        const auto value = static_cast<unsigned char>(byte);
        Append("0x");
        Append(Scrivel2::hexDigits[value / 16]);
        Append(Scrivel2::hexDigits[value % 16]);
        Append('\0');
    }
    row.textLength = std::uint32_t(used) - row.text;
    lastEnded = std::uint32_t(records.size() - 1);
    textFrom = used;
}

void Tree::DropLast()
{
    std::uint32_t last = 0;
    for (std::uint32_t i = 0; i < records.size(); i = records[i].end)
        last = i;
    records.resize(last);
}

void Tree::Clear()
{
    GoBack({0, 0});
}

void Tree::GoBack(Mark mark)
{
    records.resize(mark.records);
    used = mark.pool;
    lacksElements = lacksElements && mark.records != 0;
    begun = 0;
    depth = 0;
    textFrom = used;
    textCut = false;
    itemBegun = false;
    skipped = 0;
}

}  // namespace ScrivelReader
