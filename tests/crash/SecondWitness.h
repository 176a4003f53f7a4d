// What the reading library says of a log, beside the judge: both must say the same.

#ifndef SCRIVEL_TESTS_CRASH_SECONDWITNESS_H
#define SCRIVEL_TESTS_CRASH_SECONDWITNESS_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

namespace ScrivelTest
{

struct Testimony
{
    bool whole = false;
    std::size_t calls = 0;   ///< that have begun
    std::uint64_t last = 0;  ///< the number of the one that began last

    bool operator==(const Testimony& other) const
    {
        // Where a log is not whole, who goes on after the damage finds more.
        return whole == other.whole && (!whole || (calls == other.calls && last == other.last));
    }
};

/// Nothing when the reading library is not built.
std::optional<Testimony> SecondWitness(std::string_view bytes);

}  // namespace ScrivelTest

#endif
