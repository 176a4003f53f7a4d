// The memory that the library asks for without wanting an exception, refused by a test.

#ifndef SCRIVEL_TESTS_SUPPORT_MEMORY_H
#define SCRIVEL_TESTS_SUPPORT_MEMORY_H

#include <cstddef>
#include <functional>

namespace ScrivelTest
{

/// Asked before each `new (std::nothrow) ...[]` whether a block of that size is to be refused; empty, as
/// at first and after each test of ScratchTest, for never.
extern std::function<bool(std::size_t)> refuseMemory;

}  // namespace ScrivelTest

#endif
