// Durations of many calls: how often each occurred, and from that any quantile. Exact as long as there
// are not too many different ones; beyond, they are kept to so many leading bits.

#ifndef SCRIVEL_TOOL_DURATIONS_H
#define SCRIVEL_TOOL_DURATIONS_H

#include <cstddef>
#include <cstdint>
#include <unordered_map>
#include <vector>

namespace ScrivelTool
{

class Durations
{
public:
    void Add(std::int64_t nanoseconds);

    std::uint64_t Count() const { return count; }
    std::int64_t Total() const { return total; }
    std::int64_t Largest() const { return largest; }
    /// The smallest duration that a share of them doesn't exceed: 0.5 the median. 0 of none.
    std::int64_t Quantile(double share) const;
    /// How many there are in each decade: below 10 us, below 100 us, ... , below 10 s, longer.
    std::vector<std::uint64_t> Decades() const;
    static constexpr std::size_t decades = 8;

    /// How many different ones are kept; what they take of memory rises with it.
    std::size_t Kept() const { return counts.size(); }
    /// Keeps fewer leading bits of each; the quantiles are then near the true ones, not below them. False
    /// when there is nothing left to drop.
    bool Coarsen();
    /// Whether the quantiles are exact.
    bool IsExact() const { return bits == allBits; }

private:
    static constexpr unsigned allBits = 64;

    std::int64_t Rounded(std::int64_t nanoseconds) const;

    std::unordered_map<std::int64_t, std::uint64_t> counts;
    std::uint64_t count = 0;
    std::int64_t total = 0;
    std::int64_t largest = 0;
    unsigned bits = allBits;
};

}  // namespace ScrivelTool

#endif
