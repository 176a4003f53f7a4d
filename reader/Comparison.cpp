// Calls as numbers to be aligned, and pairs of them value by value. Tested by
// tests/reader/ComparisonTest.cpp.

#include "scrivel/Comparison.h"

#include <algorithm>
#include <cstring>

#include "format/LogWords.h"
#include "scrivel/Alignment.h"

namespace ScrivelReader
{

namespace
{

constexpr std::size_t mostPlaces = 4;

/// Mixes what it is given into 64 bits. Texts are told apart by their ends, too.
class Hash
{
public:
    void Add(std::uint64_t word)
    {
        state = (state ^ word) * 0x9e3779b97f4a7c15U;
        state ^= state >> 29;
    }

    void Add(std::string_view text)
    {
        Add(std::uint64_t(text.size()));
        while (!text.empty()) {
            std::uint64_t word = 0;
            const std::size_t size = std::min(text.size(), sizeof word);
            std::memcpy(&word, text.data(), size);
            Add(word);
            text.remove_prefix(size);
        }
    }

    std::uint64_t Value() const
    {
        Hash last = *this;
        last.Add(std::uint64_t(0));
        return last.state;
    }

private:
    std::uint64_t state = 0x243f6a8885a308d3U;
};

/// 0x000055e06def9fb0 where a process of 64 bits has its memory. Others look like any number.
std::optional<std::uint64_t> ParsePointer(std::string_view text)
{
    constexpr std::string_view prefix = Scrivel2::LogWords::hexPrefix;
    constexpr std::uint64_t lowest = std::uint64_t(1) << 32;
    constexpr std::uint64_t end = std::uint64_t(1) << 48;
    if (text.size() != prefix.size() + 16 || text.substr(0, prefix.size()) != prefix)
        return {};
    std::uint64_t pointer = 0;
    for (const char c : text.substr(prefix.size())) {
        const bool isDigit = c >= '0' && c <= '9';
        if (!isDigit && (c < 'a' || c > 'f'))
            return {};
        pointer = pointer * 16 + std::uint64_t(isDigit ? c - '0' : c - 'a' + 10);
    }
    return pointer >= lowest && pointer < end ? std::make_optional(pointer) : std::nullopt;
}

/// Whether the elements are those of a record that tells of the target's memory: no pointer is among
/// them.
bool TellOfMemory(Tree::Elements elements)
{
    for (Tree::Element element : elements)
        for (const std::string_view name : {"spaceId", "startAddr", "minAddress"})
            if (element.Name() == name)
                return true;
    return false;
}

bool IsRegister(Tree::Element element)
{
    return element.What() == Tree::Kind::Elements && element.Find("regNumber").Exists() &&
           element.Find("bytes").Exists();
}

/// Several values in one line: {overlay=0, location={spaceId=1, addr=0x3000}}
void AddText(std::string& out, Tree::Element element)
{
    constexpr std::size_t longest = 1000;
    switch (element.What()) {
    case Tree::Kind::Text:
        out.append(element.Text());
        break;
    case Tree::Kind::Bytes:
        out.append(std::to_string(element.Count())).append(" bytes");
        break;
    case Tree::Kind::Elements: {
        out += '{';
        bool isFirst = true;
        for (Tree::Element child : element.Children()) {
            out.append(isFirst ? "" : ", ");
            isFirst = false;
            if (out.size() > longest) {
                out += "...";
                break;
            }
            out.append(child.Name()).append("=");
            AddText(out, child);
        }
        out += '}';
        break;
    }
    }
}

}  // namespace

// ---- Fingerprints ---------------------------------------------------------------------------------

class ComparisonRules::Printer
{
public:
    Printer(const ComparisonRules& itsRules, std::vector<std::uint64_t>& itsPointers)
        : rules(itsRules), pointers(itsPointers)
    {
    }

    void Add(std::string_view itsSide, const Tree& tree)
    {
        side = itsSide;
        path.clear();
        AddAll(tree.Top());
    }

    /// An element at a path of names; its own is the last one.
    void Add(std::string_view itsSide, const std::vector<std::string_view>& above, Tree::Element element,
             bool mayBePointer)
    {
        side = itsSide;
        path = above;
        AddOne(element, mayBePointer);
    }

    Hash hash;

private:
    void AddAll(Tree::Elements elements)
    {
        const bool mayBePointers = !TellOfMemory(elements);
        for (Tree::Element element : elements)
            AddOne(element, mayBePointers);
        hash.Add(std::uint64_t(0));
    }

    void AddOne(Tree::Element element, bool mayBePointer)
    {
        path.push_back(element.Name());
        if (!rules.Ignores(side, path)) {
            hash.Add(element.Name());
            hash.Add(std::uint64_t(element.What()));
            const auto pointer = mayBePointer && element.What() == Tree::Kind::Text
                                     ? ParsePointer(element.Text())
                                     : std::nullopt;
            if (pointer)
                pointers.push_back(*pointer);
            else if (element.What() == Tree::Kind::Elements)
                AddAll(element.Children());
            else
                hash.Add(element.Text());
            hash.Add(element.Count());
        }
        path.pop_back();
    }

    const ComparisonRules& rules;
    std::vector<std::uint64_t>& pointers;
    std::string_view side;
    std::vector<std::string_view> path;
};

ComparisonRules::ComparisonRules(const std::vector<std::string>& ignoredPaths)
{
    for (std::string_view text : ignoredPaths) {
        Ignored path;
        for (const std::string_view itsSide : {"arg", "result"}) {
            if (text.size() > itsSide.size() && text.substr(0, itsSide.size()) == itsSide &&
                text[itsSide.size()] == '.') {
                path.side = itsSide;
                text.remove_prefix(itsSide.size() + 1);
                break;
            }
        }
        while (!text.empty()) {
            const std::size_t end = std::min(text.find('.'), text.size());
            path.names.emplace_back(text.substr(0, end));
            text.remove_prefix(std::min(end + 1, text.size()));
        }
        if (!path.names.empty())
            ignored.push_back(std::move(path));
    }
}

bool ComparisonRules::Ignores(std::string_view side, const std::vector<std::string_view>& path) const
{
    return std::any_of(ignored.begin(), ignored.end(), [&](const Ignored& each) {
        return (each.side.empty() || each.side == side) && each.names.size() <= path.size() &&
               std::equal(each.names.rbegin(), each.names.rend(), path.rbegin());
    });
}

Fingerprint ComparisonRules::Of(const Call& call) const
{
    Fingerprint print;
    Printer printer(*this, print.pointers);
    printer.hash.Add(call.name);
    print.name = printer.hash.Value();
    printer.hash.Add(call.disassemblerAddress);
    printer.Add("before", call.before);
    printer.Add("arg", call.arguments);
    print.request = printer.hash.Value();
    printer.Add("result", call.results);
    printer.hash.Add(std::uint64_t(call.Returned()));
    print.whole = printer.hash.Value();
    return print;
}

// ---- Pointers -------------------------------------------------------------------------------------

void PointerRenaming::Vote(const std::vector<std::uint64_t>& left,
                           const std::vector<std::uint64_t>& right, std::uint64_t place)
{
    for (std::size_t i = 0; i < left.size() && i < right.size(); ++i) {
        Votes& vote = votes[{left[i], right[i]}];
        ++vote.count;
        const bool isKnown = !vote.places.empty() && vote.places.back() == place;
        if (vote.places.size() < mostPlaces && !isKnown)
            vote.places.push_back(place);
    }
}

void PointerRenaming::Settle()
{
    using Entry = std::pair<const std::pair<std::uint64_t, std::uint64_t>, Votes>;
    std::vector<const Entry*> candidates;
    candidates.reserve(votes.size());
    for (const Entry& entry : votes)
        candidates.push_back(&entry);
    // Of equally many votes the earlier ones count.
    std::sort(candidates.begin(), candidates.end(), [](const Entry* a, const Entry* b) {
        return a->second.count > b->second.count || (a->second.count == b->second.count &&
                                                     a->second.places.front() < b->second.places.front());
    });
    for (const Entry* candidate : candidates) {
        const auto [left, right] = candidate->first;
        if (renamed.count(left) == 0 && back.count(right) == 0) {
            renamed[left] = right;
            back[right] = left;
        }
    }
}

bool PointerRenaming::Same(std::uint64_t left, std::uint64_t right) const
{
    const auto found = renamed.find(left);
    return found == renamed.end() ? left == right && back.count(right) == 0 : found->second == right;
}

bool PointerRenaming::Same(const std::vector<std::uint64_t>& left,
                           const std::vector<std::uint64_t>& right) const
{
    return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                      [this](std::uint64_t a, std::uint64_t b) { return Same(a, b); });
}

std::vector<PointerRenaming::Renamed> PointerRenaming::All() const
{
    std::vector<Renamed> all;
    for (const auto& [left, right] : renamed)
        if (left != right)
            all.push_back({left, right, votes.at({left, right}).places});
    std::sort(all.begin(), all.end(),
              [](const Renamed& a, const Renamed& b) { return a.places < b.places; });
    return all;
}

// ---- Differences ----------------------------------------------------------------------------------

class ComparisonRules::Comparer
{
public:
    Comparer(const ComparisonRules& itsRules, const PointerRenaming& itsRenaming)
        : rules(itsRules), renaming(itsRenaming)
    {
    }

    void Compare(std::string_view itsSide, const Tree& left, const Tree& right)
    {
        side = itsSide;
        names.clear();
        Compare(left.Top(), right.Top(), std::string(side));
    }

    void Compare(std::string_view path, std::string_view left, std::string_view right)
    {
        if (left != right)
            differences.push_back(
                {std::string(path), Difference::Kind::Text, std::string(left), std::string(right)});
    }

    std::vector<Difference> differences;

private:
    struct Item
    {
        Tree::Element element;
        bool hasPointers;
    };

    struct Items
    {
        std::vector<Item> items;
        Keys keys;
        bool mayBePointers = false;
        std::map<std::string_view, std::uint64_t> counts;  // of each name
    };

    Items ItemsIn(Tree::Elements elements)
    {
        Items all;
        all.mayBePointers = !TellOfMemory(elements);
        for (Tree::Element element : elements) {
            names.push_back(element.Name());
            const bool isIgnored = rules.Ignores(side, names);
            names.pop_back();
            if (isIgnored)
                continue;
            std::vector<std::uint64_t> pointers;
            Printer printer(rules, pointers);
            printer.Add(side, names, element, all.mayBePointers);
            all.items.push_back({element, !pointers.empty()});
            all.keys.push_back(printer.hash.Value());
            ++all.counts[element.Name()];
        }
        return all;
    }

    /// Paths of one list, whose elements are asked for in their order.
    class Paths
    {
    public:
        Paths(const std::string& itsPath, const Items& left, const Items& right) : path(itsPath)
        {
            for (const Items* items : {&left, &right})
                for (const auto& [name, count] : items->counts)
                    if (count > 1)
                        passed[name] = 0;
        }

        std::string Next(std::string_view name)
        {
            std::string own = path + "." + std::string(name);
            if (const auto found = passed.find(name); found != passed.end())
                own += "[" + std::to_string(found->second++) + "]";
            return own;
        }

    private:
        const std::string& path;
        std::map<std::string_view, std::uint64_t> passed;
    };

    void Compare(Tree::Elements leftElements, Tree::Elements rightElements, const std::string& path)
    {
        const Items left = ItemsIn(leftElements);
        const Items right = ItemsIn(rightElements);
        Paths leftPaths(path, left, right);
        Paths rightPaths(path, left, right);
        std::size_t l = 0;
        std::size_t r = 0;
        const auto pair = [&](bool mayDiffer) {
            const Tree::Element a = left.items[l].element;
            const std::string own = leftPaths.Next(a.Name());
            rightPaths.Next(a.Name());
            if (mayDiffer || left.items[l].hasPointers)
                Compare(a, right.items[r].element, own, left.mayBePointers && right.mayBePointers);
            ++l;
            ++r;
        };
        const auto onlyLeft = [&] {
            AddOnly(leftPaths.Next(left.items[l].element.Name()), left.items[l].element, true);
            ++l;
        };
        const auto onlyRight = [&] {
            AddOnly(rightPaths.Next(right.items[r].element.Name()), right.items[r].element, false);
            ++r;
        };
        for (const Hunk& hunk : Align(left.keys, right.keys)) {
            while (l < hunk.left)
                pair(false);
            const std::size_t leftEnd = l + hunk.leftCount;
            const std::size_t rightEnd = r + hunk.rightCount;
            while (l < leftEnd || r < rightEnd) {
                const auto nameOf = [](const Item& item) { return item.element.Name(); };
                if (r == rightEnd) {
                    onlyLeft();
                } else if (l == leftEnd) {
                    onlyRight();
                } else if (nameOf(left.items[l]) == nameOf(right.items[r])) {
                    pair(true);
                } else if (Has(right, r, rightEnd, nameOf(left.items[l]))) {
                    onlyRight();
                } else {
                    onlyLeft();
                }
            }
        }
        while (l < left.items.size())
            pair(false);
    }

    static bool Has(const Items& items, std::size_t from, std::size_t to, std::string_view name)
    {
        return std::any_of(items.items.begin() + std::ptrdiff_t(from),
                           items.items.begin() + std::ptrdiff_t(to),
                           [&](const Item& item) { return item.element.Name() == name; });
    }

    void Compare(Tree::Element left, Tree::Element right, const std::string& path, bool mayBePointers)
    {
        using Kind = Tree::Kind;
        if (left.What() == Kind::Elements && right.What() == Kind::Elements) {
            if (IsRegister(left) && IsRegister(right) && DiffersInBytesOnly(left, right)) {
                differences.push_back({path, Difference::Kind::Register,
                                       std::string(left.Find("bytes").Text()),
                                       std::string(right.Find("bytes").Text())});
                return;
            }
            names.push_back(left.Name());
            Compare(left.Children(), right.Children(), path);
            names.pop_back();
        } else if (left.What() == Kind::Bytes && right.What() == Kind::Bytes) {
            if (left.Text() != right.Text() || left.Count() != right.Count())
                differences.push_back(
                    {path, Difference::Kind::Bytes, std::string(left.Text()), std::string(right.Text())});
        } else {
            const auto a = mayBePointers ? ParsePointer(left.Text()) : std::nullopt;
            const auto b = mayBePointers ? ParsePointer(right.Text()) : std::nullopt;
            if (a && b && renaming.Same(*a, *b))
                return;
            std::string leftText;
            std::string rightText;
            AddText(leftText, left);
            AddText(rightText, right);
            if (leftText != rightText || left.What() != right.What() || (a && b))
                differences.push_back({path, Difference::Kind::Text, leftText, rightText});
        }
    }

    bool DiffersInBytesOnly(Tree::Element left, Tree::Element right)
    {
        names.push_back(left.Name());
        names.emplace_back("bytes");
        const bool isIgnored = rules.Ignores(side, names);
        names.resize(names.size() - 2);
        const auto others = [](Tree::Element element) {
            std::string text;
            for (Tree::Element child : element.Children()) {
                if (child.Name() != "bytes") {
                    text.append(child.Name()).append("=");
                    AddText(text, child);
                    text += ' ';
                }
            }
            return text;
        };
        return !isIgnored && left.Find("bytes").Text() != right.Find("bytes").Text() &&
               others(left) == others(right);
    }

    void AddOnly(std::string path, Tree::Element element, bool isLeft)
    {
        Difference difference;
        difference.path = std::move(path);
        std::string text;
        if (element.What() == Tree::Kind::Bytes) {
            difference.kind = Difference::Kind::Bytes;
            text = element.Text();
        } else {
            AddText(text, element);
        }
        (isLeft ? difference.left : difference.right) = std::move(text);
        differences.push_back(std::move(difference));
    }

    const ComparisonRules& rules;
    const PointerRenaming& renaming;
    std::string_view side;
    std::vector<std::string_view> names;  // down to the list that is compared
};

std::vector<Difference> ComparisonRules::Compare(const Call& left, const Call& right,
                                                 const PointerRenaming& renaming) const
{
    Comparer comparer(*this, renaming);
    comparer.Compare("name", left.name, right.name);
    comparer.Compare("address", left.disassemblerAddress, right.disassemblerAddress);
    comparer.Compare("before", left.before, right.before);
    comparer.Compare("arg", left.arguments, right.arguments);
    comparer.Compare("result", left.results, right.results);
    comparer.Compare("returned", left.Returned() ? "yes" : "no", right.Returned() ? "yes" : "no");
    return std::move(comparer.differences);
}

}  // namespace ScrivelReader
