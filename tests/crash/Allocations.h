// The operator new of a program in which allocations fail when they are told to.

#ifndef SCRIVEL_TESTS_CRASH_ALLOCATIONS_H
#define SCRIVEL_TESTS_CRASH_ALLOCATIONS_H

namespace ScrivelTest
{

struct Allocations
{
    unsigned long made = 0;
    unsigned long failFrom = 0;  ///< numbers count from 1
    unsigned long failUpTo = 0;
};

extern Allocations allocations;

}  // namespace ScrivelTest

#endif
