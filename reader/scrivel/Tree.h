// What a call's element holds, as a tree in two pieces of memory: one list of elements in document order
// and one text. A tree of a million elements is two allocations, and forgetting it is none. Of a long
// array of plain texts only the texts are kept.

#ifndef SCRIVEL_READER_TREE_H
#define SCRIVEL_READER_TREE_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace ScrivelReader
{

class Tree
{
public:
    enum class Kind : std::uint8_t
    {
        Text,      ///< <bytes>4</bytes>
        Elements,  ///< an element of elements, maybe of none
        Bytes,     ///< an array all of whose items are <value>0xNN</value>: its bytes, not its elements
    };

    class Elements;

    /// One element. It is a view: it lives as long as the tree, and until the tree changes.
    class Element
    {
    public:
        Element() = default;  ///< none: Exists() is false
        std::string_view Name() const;
        Kind What() const;
        /// The text of a Text; the bytes of a Bytes, one char each; otherwise empty.
        std::string_view Text() const;
        /// How many items stood in the log, kept or not: see Limits.
        std::uint64_t Count() const;
        /// Whether something was left out, as it passed a limit.
        bool IsCut() const;
        /// The children, in the order of the log; none of a Text and of Bytes.
        Elements Children() const;
        /// The first child of that name; its Exists() is false when there is none.
        Element Find(std::string_view name) const;
        bool Exists() const { return tree != nullptr; }

    private:
        friend class Tree;
        Element(const Tree* itsTree, std::uint32_t itsIndex, std::uint32_t itsItem)
            : tree(itsTree), index(itsIndex), item(itsItem)
        {
        }

        const Tree* tree = nullptr;
        std::uint32_t index = 0;
        std::uint32_t item = 0;  ///< where in the text of a row its own begins
    };

    /// Elements that stand side by side: for (Tree::Element argument : call.arguments.Top()).
    class Elements
    {
    public:
        class Iterator
        {
        public:
            Element operator*() const { return {tree, index, item}; }
            Iterator& operator++();
            bool operator!=(const Iterator& other) const { return !(*this == other); }
            bool operator==(const Iterator& other) const
            {
                return index == other.index && item == other.item;
            }

        private:
            friend class Elements;
            Iterator(const Tree* itsTree, std::uint32_t itsIndex) : tree(itsTree), index(itsIndex) {}

            const Tree* tree;
            std::uint32_t index;
            std::uint32_t item = 0;
        };

        Iterator begin() const { return {tree, first}; }
        Iterator end() const { return {tree, last}; }
        bool Empty() const { return first == last; }

    private:
        friend class Tree;
        Elements(const Tree* itsTree, std::uint32_t itsFirst, std::uint32_t itsLast)
            : tree(itsTree), first(itsFirst), last(itsLast)
        {
        }

        const Tree* tree;
        std::uint32_t first;
        std::uint32_t last;
    };

    /// What is kept of one tree; beyond it items are counted and texts cut, and IsCut() tells.
    struct Limits
    {
        std::size_t items = std::size_t(1) << 28;  ///< elements of one array
        std::size_t bytes = std::size_t(1) << 28;  ///< of one array of bytes
        std::size_t text = std::size_t(1) << 28;   ///< bytes of one text
        std::size_t depth = 256;                   ///< deeper elements are left out
    };
    /// Whether elements were left out, as they passed a limit.
    bool LacksElements() const { return lacksElements; }

    Elements Top() const;
    /// The first of the outermost elements that bears that name.
    Element Find(std::string_view name) const;
    bool Empty() const { return records.empty(); }

    // ---- Making one (the reader does) ---------------------------------------------------------------

    void Begin(std::string_view name, const Limits& limits);
    void AddText(std::string_view text, const Limits& limits);
    /// Ends the element that was begun last. An array of bytes folds as its items end.
    void End(const Limits& limits);
    /// Takes back the outermost element that has just ended.
    void DropLast();
    void Clear();

    struct Mark
    {
        std::size_t records;
        std::size_t pool;
    };
    Mark Here() const { return {records.size(), used}; }
    /// Forgets everything after the mark, ended or not.
    void GoBack(Mark mark);

private:
    struct Record
    {
        std::uint32_t name;
        std::uint32_t nameLength;
        std::uint32_t text;
        std::uint32_t textLength;
        std::uint32_t end;  ///< index after the last element within this one; until it has ended of the
                            ///< one that it stands in
        Kind kind;
        bool cut;
        bool row;  ///< of several elements with one name, whose texts stand here, each with a zero after
                   ///< it
        std::uint64_t count;
    };

    std::string_view NameOf(const Record& record) const;
    std::uint32_t EndOfItem(const Record& record, std::uint32_t item) const;
    std::string_view Begun() const { return {pool.data() + textFrom, used - textFrom}; }
    std::string TakeBegun();
    void Append(std::string_view more);
    void Append(char more);
    void Grow(std::size_t size);
    Record& Push(std::string_view name);
    void Open(std::string_view name);
    void Skip();
    void KeepStrayText();
    void MakeItem();
    void EndItem(const Limits& limits);
    void AddToRow();
    void Unfold(std::uint32_t index);

    std::vector<Record> records;
    std::vector<char> pool;   ///< names and texts; last the text of the element that was begun last
    std::size_t used = 0;     ///< of the pool, the rest of which is room
    std::uint32_t begun = 0;  ///< the innermost element that has begun and not ended, if any has
    std::size_t depth = 0;    ///< how many have
    std::size_t textFrom = 0;
    bool textCut = false;
    bool itemBegun = false;       ///< an item that may be a byte: no element unless it is none
    std::uint32_t lastEnded = 0;  ///< the element that ended last
    bool lacksElements = false;
    std::size_t skipped = 0;  ///< levels of elements that are being left out
};

// ---- What is looked at for every element of a log -------------------------------------------------

inline std::string_view Tree::NameOf(const Record& record) const
{
    return {pool.data() + record.name, record.nameLength};
}

inline std::string_view Tree::Element::Name() const
{
    return tree->NameOf(tree->records[index]);
}

inline Tree::Kind Tree::Element::What() const
{
    return tree->records[index].kind;
}

inline std::string_view Tree::Element::Text() const
{
    const Record& record = tree->records[index];
    const std::uint32_t end = record.row ? tree->EndOfItem(record, item) : record.textLength;
    return {tree->pool.data() + record.text + item, end - item};
}

inline std::uint64_t Tree::Element::Count() const
{
    return tree->records[index].count;
}

inline bool Tree::Element::IsCut() const
{
    return tree->records[index].cut;
}

inline Tree::Elements Tree::Element::Children() const
{
    return {tree, index + 1, tree->records[index].end};
}

inline Tree::Elements::Iterator& Tree::Elements::Iterator::operator++()
{
    const Record& record = tree->records[index];
    if (record.row) {
        item = tree->EndOfItem(record, item) + 1;
        if (item != record.textLength)
            return *this;
        item = 0;
    }
    index = record.end;
    return *this;
}

inline Tree::Elements Tree::Top() const
{
    return {this, 0, std::uint32_t(records.size())};
}

}  // namespace ScrivelReader

#endif
