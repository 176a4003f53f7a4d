// Counts of what the process asks of the kernel and of the heap, by its own definitions of the functions.

#ifndef SCRIVEL_BENCH_INTERPOSED_H
#define SCRIVEL_BENCH_INTERPOSED_H

namespace ScrivelBench
{

struct Counts
{
    unsigned long pwrite = 0;
    unsigned long write = 0;  // writev too
    unsigned long lseek = 0;
    unsigned long ftruncate = 0;
    unsigned long getpid = 0;
    unsigned long allocations = 0;
};

/// Since the process began.
extern Counts counts;

}  // namespace ScrivelBench

#endif
