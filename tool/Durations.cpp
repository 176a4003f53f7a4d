// Durations of many calls. Tested by tests/tool/DurationsTest.cpp.

#include "Durations.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace ScrivelTool
{

namespace
{

/// No more than a number of nanoseconds can tell: 292 years.
std::int64_t Sum(std::int64_t total, std::int64_t nanoseconds)
{
    constexpr std::int64_t most = std::numeric_limits<std::int64_t>::max();
    return nanoseconds > 0 && total > most - nanoseconds ? most : total + nanoseconds;
}

}  // namespace

void Durations::Add(std::int64_t nanoseconds)
{
    ++count;
    total = Sum(total, nanoseconds);
    largest = count == 1 ? nanoseconds : std::max(largest, nanoseconds);
    ++counts[Rounded(nanoseconds)];
}

/// The largest number that has the same leading bits.
std::int64_t Durations::Rounded(std::int64_t nanoseconds) const
{
    if (bits == allBits || nanoseconds <= 0)
        return nanoseconds;
    unsigned length = 0;
    for (std::int64_t rest = nanoseconds; rest != 0; rest >>= 1)
        ++length;
    if (length <= bits)
        return nanoseconds;
    return nanoseconds | ((std::int64_t(1) << (length - bits)) - 1);
}

bool Durations::Coarsen()
{
    constexpr unsigned firstBits = 9;  // an error of a fifth of a percent
    if (bits == 1)
        return false;
    bits = bits == allBits ? firstBits : bits - 1;
    std::unordered_map<std::int64_t, std::uint64_t> coarse;
    for (const auto& [nanoseconds, times] : counts)
        coarse[Rounded(nanoseconds)] += times;
    counts = std::move(coarse);
    return true;
}

std::int64_t Durations::Quantile(double share) const
{
    std::vector<std::pair<std::int64_t, std::uint64_t>> sorted(counts.begin(), counts.end());
    std::sort(sorted.begin(), sorted.end());
    const auto rank = std::uint64_t(std::max(1.0, std::ceil(share * double(count))));
    std::uint64_t passed = 0;
    for (const auto& [nanoseconds, times] : sorted) {
        passed += times;
        if (passed >= rank)
            return std::min(nanoseconds, largest);
    }
    return 0;
}

std::vector<std::uint64_t> Durations::Decades() const
{
    std::vector<std::uint64_t> found(decades);
    for (const auto& [nanoseconds, times] : counts) {
        std::size_t decade = 0;
        constexpr std::int64_t first = 10 * 1000;
        for (std::int64_t end = first; decade + 1 < decades && nanoseconds >= end; end *= 10)
            ++decade;
        found[decade] += times;
    }
    return found;
}

}  // namespace ScrivelTool
