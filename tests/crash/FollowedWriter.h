// What the followed processes do. It stands apart, as the layer's headers and the reader's have some of
// the same names.

#ifndef SCRIVEL_TESTS_CRASH_FOLLOWEDWRITER_H
#define SCRIVEL_TESTS_CRASH_FOLLOWEDWRITER_H

#include <cstdint>

namespace ScrivelTest
{

/// Logs calls of 100 B to 20 KB through the layer, one in five interrupted by another one.
[[noreturn]] void LogForEver(std::uint64_t seed);

}  // namespace ScrivelTest

#endif
