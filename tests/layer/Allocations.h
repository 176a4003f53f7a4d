// How often the test executable has asked for memory.

#ifndef SCRIVEL_TESTS_LAYER_ALLOCATIONS_H
#define SCRIVEL_TESTS_LAYER_ALLOCATIONS_H

#include <cstddef>

namespace ScrivelTest
{

/// Of one object each; those of every thread count.
std::size_t Allocations();

}  // namespace ScrivelTest

#endif
