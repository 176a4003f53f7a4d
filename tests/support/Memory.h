// The memory that the library asks for without wanting an exception, refused by a test.

#ifndef SCRIVEL_TESTS_SUPPORT_MEMORY_H
#define SCRIVEL_TESTS_SUPPORT_MEMORY_H

#include <cstddef>

namespace ScrivelTest
{

/// Asked before each `new (std::nothrow) ...[]` whether a block of that size is to be refused; null, as
/// at first and after each test of ScratchTest, for never. It is asked long after the test that set it
/// may have ended, so it can refer to nothing of that test's.
extern bool (*refuseMemory)(std::size_t);

}  // namespace ScrivelTest

#endif
