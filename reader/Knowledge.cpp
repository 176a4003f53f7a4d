// What a debugger had seen of its target. Tested by tests/reader/KnowledgeTest.cpp.

#include "scrivel/Knowledge.h"

#include <algorithm>

#include "scrivel/CallFilter.h"

namespace ScrivelReader
{

namespace
{

constexpr std::string_view modeRun = "Run";

}  // namespace

// ---- Places in memory -----------------------------------------------------------------------------

void MemoryPlaces::Add(const std::string& space, std::uint64_t first, Place place)
{
    if (places.size() >= mostPlaces || kept + place.bytes.size() > mostBytes) {
        full = true;
        return;
    }
    kept += place.bytes.size();
    places.insert_or_assign({space, first}, std::move(place));
}

/// Forgets what is known of a range; what sticks out of it on either side stays.
void MemoryPlaces::Clear(const std::string& space, std::uint64_t first, std::uint64_t last)
{
    auto at = places.upper_bound({space, first});
    if (at != places.begin()) {
        const auto before = std::prev(at);
        if (before->first.first == space && before->second.last >= first)
            at = before;
    }
    while (at != places.end() && at->first.first == space && at->first.second <= last) {
        const std::uint64_t itsFirst = at->first.second;
        Place place = std::move(at->second);
        kept -= place.bytes.size();
        at = places.erase(at);
        if (itsFirst < first) {
            Place left{first - 1, place.bytes.substr(0, std::size_t(first - itsFirst)), place.source};
            Add(space, itsFirst, std::move(left));
        }
        if (place.last > last) {
            const std::size_t skipped = std::size_t(last - itsFirst) + 1;
            Place right{place.last, place.bytes.empty() ? std::string() : place.bytes.substr(skipped),
                        place.source};
            Add(space, last + 1, std::move(right));
        }
    }
}

void MemoryPlaces::Put(const std::string& space, std::uint64_t address, std::uint64_t size,
                       std::string_view known, const Source& source)
{
    if (size == 0)
        return;
    const std::uint64_t last = LastAddress(address, size);
    Clear(space, address, last);
    Add(space, address, {last, std::string(known.substr(0, std::size_t(last - address) + 1)), source});
}

std::vector<KnownMemory> MemoryPlaces::Within(const std::string& space, std::uint64_t address,
                                              std::uint64_t size) const
{
    std::vector<KnownMemory> found;
    if (size == 0)
        return found;
    const std::uint64_t last = LastAddress(address, size);
    auto at = places.upper_bound({space, address});
    if (at != places.begin()) {
        const auto before = std::prev(at);
        if (before->first.first == space && before->second.last >= address)
            at = before;
    }
    for (; at != places.end() && at->first.first == space && at->first.second <= last; ++at) {
        const std::uint64_t from = std::max(address, at->first.second);
        const std::uint64_t to = std::min(last, at->second.last);
        KnownMemory part{space, {}, from, to - from + 1, {}, at->second.source};
        if (!at->second.bytes.empty())
            part.bytes =
                at->second.bytes.substr(std::size_t(from - at->first.second), std::size_t(part.size));
        found.push_back(std::move(part));
    }
    return found;
}

std::vector<KnownMemory> MemoryPlaces::All() const
{
    std::vector<KnownMemory> found;
    for (const auto& [where, place] : places)
        found.push_back(
            {where.first, {}, where.second, place.last - where.second + 1, place.bytes, place.source});
    return found;
}

// ---- What is known --------------------------------------------------------------------------------

Knowledge::Knowledge(const Limits& itsLimits)
    : limits(itsLimits), values(limits.places, limits.bytes), touched(limits.places, 0)
{
}

void Knowledge::LetRun(std::uint64_t call)
{
    ++runs;
    if (lastRun != call)
        ++starts;
    lastRun = call;
}

void Knowledge::Entered(const Call& call)
{
    if (!LetsTargetRun(call.name))
        return;
    LetRun(call.number);
    running = true;
    constexpr std::size_t mostStarters = 4096;
    if (starters.size() < mostStarters)
        starters[call.entry] = modes;
}

/// Whether the target runs, as far as the log tells.
void Knowledge::FollowMode(const Call& call, const Access& access)
{
    if (!access.mode.empty()) {
        ++modes;
        const bool runsNow = access.mode == modeRun;
        if (runsNow && !running)
            LetRun(call.Parent().value_or(call.number));
        running = runsNow;
    }
    const auto starter = starters.find(call.entry);
    if (starter == starters.end())
        return;
    // No mode was named meanwhile: what was seen during the call may have changed until its end.
    if (starter->second == modes && call.Returned()) {
        LetRun(call.number);
        running = false;
    }
    starters.erase(starter);
}

Source Knowledge::SourceOf(const Call& call, Way way) const
{
    return {call.number, call.occurrence, way, Succeeded(call), runs, running, order};
}

KnownRegister* Knowledge::Register(const RegisterAccess& access)
{
    if (!access.number)
        return nullptr;
    const RegisterKey key(*access.number, access.offset128);
    if (registers.find(key) == registers.end()) {
        if (registers.size() >= limits.registers) {
            full = true;
            return nullptr;
        }
        KnownRegister& made = registers[key];
        made.number = access.number;
        made.offset128 = access.offset128;
    }
    KnownRegister& known = registers[key];
    if (!access.name.empty())
        known.name = access.name;
    const auto described = descriptions.find(*access.number);
    if (described != descriptions.end()) {
        known.bits = described->second.bits;
        known.isProgramCounter = described->second.isProgramCounter;
        if (known.name.empty())
            known.name = described->second.name;
    }
    return &known;
}

void Knowledge::Ended(const Call& call, const Access& access)
{
    ++order;
    full = full || call.arguments.LacksElements() || call.results.LacksElements();
    FollowMode(call, access);

    for (const RegisterDescription& description : access.descriptions) {
        if (descriptions.size() >= limits.registers) {
            full = true;
            break;
        }
        descriptions[description.number] = description;
        numbers.emplace(description.name, description.number);
    }
    for (const MemoryBlock& block : access.blocks) {
        if (blocks.size() >= limits.blocks) {
            full = true;
            break;
        }
        blocks.push_back(block);
    }

    for (const RegisterAccess& found : access.registers) {
        KnownRegister* known = Register(found);
        if (known == nullptr)
            continue;
        if (!found.name.empty() && numbers.size() < limits.registers)
            numbers.emplace(found.name, *found.number);
        if (!Succeeded(call)) {
            known->refused = SourceOf(call, found.way);
        } else if (!found.bytes.empty()) {
            known->bytes = found.bytes;
            known->source = SourceOf(call, found.way);
            known->refused.reset();
        }
    }
    for (const MemoryAccess& found : access.memory) {
        const Source source = SourceOf(call, found.way);
        if (!found.spaceName.empty() && spaceNames.size() < limits.blocks)
            spaceNames[found.space] = found.spaceName;
        touched.Put(found.space, found.address, found.size, {}, source);
        if (Succeeded(call) && !found.bytes.empty())
            values.Put(found.space, found.address, found.bytes.size(), found.bytes, source);
    }
}

/// A result that bears the program counter's name is its value, though no record of a register.
Access Knowledge::AccessBy(const Call& call) const
{
    Access access = AccessOf(call);
    for (Tree::Element result : call.results.Top()) {
        if (result.What() != Tree::Kind::Text)
            continue;
        const auto number = numbers.find(result.Name());
        const auto value = ParseLogNumber(result.Text());
        if (number == numbers.end() || !value)
            continue;
        const auto described = descriptions.find(number->second);
        if (described == descriptions.end() || !described->second.isProgramCounter)
            continue;
        RegisterAccess found;
        found.name = result.Name();
        found.number = number->second;
        found.bytes.assign(8, '\0');
        for (int shift = 56; shift >= 0; shift -= 8)
            found.bytes += char(*value >> shift & 0xff);
        access.registers.push_back(std::move(found));
    }
    return access;
}

// ---- Registers ------------------------------------------------------------------------------------

std::vector<KnownRegister> Knowledge::Registers() const
{
    std::vector<KnownRegister> found;
    for (const auto& [key, known] : registers)
        found.push_back(known);
    const auto when = [](const KnownRegister& known) {
        return known.refused ? known.refused->order : known.source.order;
    };
    std::stable_sort(found.begin(), found.end(), [&](const KnownRegister& a, const KnownRegister& b) {
        return a.isProgramCounter != b.isProgramCounter ? a.isProgramCounter : when(a) > when(b);
    });
    return found;
}

std::optional<KnownRegister> Knowledge::Find(const RegisterAccess& access) const
{
    if (!access.number)
        return {};
    const auto found = registers.find({*access.number, access.offset128});
    return found == registers.end() ? std::nullopt : std::make_optional(found->second);
}

std::optional<RegisterDescription> Knowledge::Described(std::string_view nameOrNumber) const
{
    const auto byName = numbers.find(nameOrNumber);
    const auto number =
        byName != numbers.end() ? std::make_optional(byName->second) : ParseLogNumber(nameOrNumber);
    if (!number)
        return {};
    const auto described = descriptions.find(*number);
    if (described != descriptions.end())
        return described->second;
    if (byName == numbers.end())
        return {};
    return RegisterDescription{byName->first, *number, 0, false};
}

// ---- Memory ---------------------------------------------------------------------------------------

std::vector<KnownMemory> Knowledge::Memory() const
{
    std::vector<KnownMemory> found = values.All();
    for (KnownMemory& part : found)
        part.spaceName = SpaceName(part.space);
    return found;
}

std::vector<KnownMemory> Knowledge::MemoryAt(const std::string& space, std::uint64_t address,
                                             std::uint64_t size) const
{
    return values.Within(space, address, size);
}

std::vector<KnownMemory> Knowledge::Touched(const std::string& space, std::uint64_t address,
                                            std::uint64_t size) const
{
    return touched.Within(space, address, size);
}

std::optional<MemoryBlock> Knowledge::BlockAt(const std::string& space, std::uint64_t address) const
{
    const MemoryBlock* best = nullptr;
    for (const MemoryBlock& block : blocks) {
        const bool isThere = block.first <= address && address <= block.last &&
                             (block.space.empty() || block.space == space);
        if (isThere && (best == nullptr || block.last - block.first < best->last - best->first))
            best = &block;
    }
    return best == nullptr ? std::nullopt : std::make_optional(*best);
}

std::string Knowledge::SpaceName(const std::string& space) const
{
    const auto name = spaceNames.find(space);
    return name == spaceNames.end() ? space : name->second;
}

bool Knowledge::IsIncomplete() const
{
    return full || values.IsFull() || touched.IsFull();
}

// ---- Age ------------------------------------------------------------------------------------------

bool Knowledge::IsStale(const Source& source) const
{
    return source.whileRunning || source.runs != runs;
}

}  // namespace ScrivelReader
