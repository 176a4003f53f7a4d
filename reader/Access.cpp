// Registers, memory and descriptions in a call's records. Tested by tests/reader/AccessTest.cpp.

#include "scrivel/Access.h"

#include <algorithm>

#include "format/Characters.h"
#include "format/LogWords.h"
#include "scrivel/CallFilter.h"

namespace ScrivelReader
{

namespace
{

constexpr std::string_view modeBegin = "CADI_EXECMODE_";
constexpr std::size_t bytesInAValue = 16;

bool StartsWith(std::string_view text, std::string_view begin)
{
    return text.substr(0, begin.size()) == begin;
}

bool EndsWith(std::string_view text, std::string_view end)
{
    return text.size() >= end.size() && text.substr(text.size() - end.size()) == end;
}

std::optional<std::uint64_t> NumberIn(Tree::Element element)
{
    if (!element.Exists() || element.What() != Tree::Kind::Text)
        return {};
    return ParseLogNumber(element.Text());
}

/// "00000000 00000000 00000000 00003000 " or 0x3000 -> 16 bytes; nothing of anything else.
std::string ValueBytes(std::string_view text)
{
    if (StartsWith(text, Scrivel2::LogWords::hexPrefix))
        text.remove_prefix(Scrivel2::LogWords::hexPrefix.size());
    std::string digits;
    for (const char c : text) {
        if (Scrivel2::HexValue(c) >= 0)
            digits += c;
        else if (c != ' ')
            return {};
    }
    if (digits.empty() || digits.size() > 2 * bytesInAValue)
        return {};
    digits.insert(0, 2 * bytesInAValue - digits.size(), '0');
    std::string bytes;
    for (std::size_t i = 0; i < digits.size(); i += 2)
        bytes += char(Scrivel2::HexValue(digits[i]) * 16 + Scrivel2::HexValue(digits[i + 1]));
    return bytes;
}

/// The item of an array of registers whose name the log doesn't have bears the array's own.
std::string RegisterName(Tree::Element element)
{
    return element.Name() == "reg" ? std::string() : std::string(element.Name());
}

class Finder
{
public:
    Finder(const Call& itsCall, Access& itsAccess) : call(itsCall), access(itsAccess) {}

    void Find()
    {
        FindIn(call.arguments.Top(), Way::Wrote);
        FindIn(call.results.Top(), Way::Read);
        FindMode(call.arguments);
        FindMode(call.results);
        FindMemory();
        FindRegistersWithoutValue();
    }

private:
    void FindIn(Tree::Elements elements, Way way)
    {
        for (Tree::Element element : elements) {
            if (element.What() != Tree::Kind::Elements)
                continue;
            const auto number = NumberIn(element.Find("regNumber"));
            const Tree::Element bytes = element.Find("bytes");
            const auto bits = NumberIn(element.Find("bitsWide"));
            const auto first = NumberIn(element.Find("startAddr"));
            const auto last = NumberIn(element.Find("endAddr"));
            if (number && bytes.Exists()) {
                AddRegister(element, *number, bytes, way);
            } else if (number && bits) {
                AddDescription(element, *number, *bits);
            } else if (first && last) {
                const Tree::Element description = element.Find("description");
                access.blocks.push_back({std::string(element.Name()),
                                         std::string(description.Exists() ? description.Text() : ""),
                                         AskedSpace(), *first, *last, call.number});
            } else {
                FindIn(element.Children(), way);
            }
        }
    }

    void AddRegister(Tree::Element element, std::uint64_t number, Tree::Element bytes, Way way)
    {
        RegisterAccess found;
        found.way = way;
        found.name = RegisterName(element);
        found.number = number;
        found.offset128 = NumberIn(element.Find("offset128")).value_or(0);
        const Tree::Element undefined = element.Find("isUndefined");
        if (!undefined.Exists() || undefined.Text() != "true")
            found.bytes = ValueBytes(bytes.Text());
        access.registers.push_back(std::move(found));
    }

    void AddDescription(Tree::Element element, std::uint64_t number, std::uint64_t bits)
    {
        const Tree::Element display = element.Find("display");
        access.descriptions.push_back({std::string(element.Name()), number, bits,
                                       display.Exists() && EndsWith(display.Text(), "REGTYPE_PC")});
    }

    /// The memory space that an argument asks for.
    std::string AskedSpace() const
    {
        for (Tree::Element argument : call.arguments.Top()) {
            const std::string_view name = argument.Name();
            const bool isSpace = name.find("Space") != std::string_view::npos ||
                                 name.find("space") != std::string_view::npos;
            if (isSpace && NumberIn(argument))
                return std::string(argument.Text());
        }
        return {};
    }

    void FindMode(const Tree& tree)
    {
        for (Tree::Element element : tree.Top())
            if (StartsWith(element.Text(), modeBegin))
                access.mode = element.Text().substr(modeBegin.size());
    }

    /// Arrays of bytes belong to the address that was given last before them.
    void FindMemory()
    {
        std::optional<std::uint64_t> asked;
        bool hasBytes = false;
        for (Tree::Element argument : call.arguments.Top()) {
            if (argument.What() == Tree::Kind::Bytes) {
                hasBytes = AddBytes(argument, Way::Wrote) || hasBytes;
            } else if (argument.What() == Tree::Kind::Elements) {
                FindAddress(argument);
            } else if (StartsWith(argument.Name(), "bytes")) {
                asked = NumberIn(argument);
            }
        }
        for (Tree::Element result : call.results.Top()) {
            if (result.What() == Tree::Kind::Bytes)
                hasBytes = AddBytes(result, Way::Read) || hasBytes;
            else if (StartsWith(result.Name(), "actual"))
                Shorten(NumberIn(result));
        }
        if (place && asked && !hasBytes) {
            place->way = Way::Read;
            place->size = *asked;
            access.memory.push_back(*place);
        }
    }

    void FindAddress(Tree::Element argument)
    {
        const Tree::Element location = argument.Find("location");
        const Tree::Element record = location.Exists() ? location : argument;
        const Tree::Element space = record.Find("spaceId");
        const auto address = NumberIn(record.Find("addr"));
        if (!space.Exists() || !address)
            return;
        place.emplace();
        place->space = space.Text();
        place->address = *address;
        const Tree::Element name = record.Find("spaceName");
        if (name.Exists() && name.Text() != Scrivel2::LogWords::unknownMemSpace)
            place->spaceName = name.Text();
    }

    bool AddBytes(Tree::Element bytes, Way way)
    {
        if (!place)
            return false;
        MemoryAccess found = *place;
        found.way = way;
        found.size = bytes.Count();
        found.bytes = bytes.Text();
        if (actual)
            ShortenTo(found, *actual);
        access.memory.push_back(std::move(found));
        return true;
    }

    /// What the target says that it moved, when that is less than it was given.
    void Shorten(std::optional<std::uint64_t> size)
    {
        actual = size;
        if (size)
            for (MemoryAccess& memory : access.memory)
                ShortenTo(memory, *size);
    }

    static void ShortenTo(MemoryAccess& memory, std::uint64_t size)
    {
        memory.size = std::min(memory.size, size);
        memory.bytes.resize(std::size_t(std::min<std::uint64_t>(memory.bytes.size(), memory.size)));
    }

    /// A count and numbers of registers among the arguments, and no value: a read that brought nothing.
    void FindRegistersWithoutValue()
    {
        if (!access.registers.empty() || !call.arguments.Find("regCount").Exists())
            return;
        for (Tree::Element argument : call.arguments.Top()) {
            const auto number = argument.Name() == "regNumber" ? NumberIn(argument) : std::nullopt;
            if (number) {
                RegisterAccess found;
                found.number = number;
                access.registers.push_back(found);
            }
        }
    }

    const Call& call;
    Access& access;
    std::optional<MemoryAccess> place;
    std::optional<std::uint64_t> actual;
};

}  // namespace

Access AccessOf(const Call& call)
{
    Access access;
    Finder(call, access).Find();
    return access;
}

bool Succeeded(const Call& call)
{
    return call.Returned() && !call.Failed();
}

bool LetsTargetRun(std::string_view callName)
{
    constexpr std::string_view ends[] = {"Continue", "SingleStep", "Reset", "LoadApplication"};
    return std::any_of(std::begin(ends), std::end(ends),
                       [&](std::string_view end) { return EndsWith(callName, end); });
}

}  // namespace ScrivelReader
