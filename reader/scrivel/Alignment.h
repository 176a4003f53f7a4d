// Two sequences, and where they differ: what was taken out of the one and put into the other.
//
//     left   a b c d e f        right  a b X d e f g        ->  2 1 2 1   at c: one out, one in
//                                                               6 0 6 1   at the end: one in
//
// Elements are known by keys, which are equal when they are; for calls see Fingerprint.

#ifndef SCRIVEL_READER_ALIGNMENT_H
#define SCRIVEL_READER_ALIGNMENT_H

#include <cstdint>
#include <vector>

namespace ScrivelReader
{

/// So many elements in a row on either side, of which one side may have none. What lies between two of
/// them is equal, one by one.
struct Hunk
{
    std::uint32_t left = 0;
    std::uint32_t leftCount = 0;
    std::uint32_t right = 0;
    std::uint32_t rightCount = 0;
};

using Keys = std::vector<std::uint64_t>;

/// Hunks in order. They are the fewest elements that explain the difference, as long as these are no more
/// than some hundred in a row without an element that occurs once on both sides; beyond, they explain it,
/// but may be more. Time and memory grow with the length, whatever the sides hold.
std::vector<Hunk> Align(const Keys& left, const Keys& right);

}  // namespace ScrivelReader

#endif
