// The definitions stand in the executable, so they come before the C library's for all that runs in the
// process; what the C library calls from within itself, a FILE's own writes among it, is not seen.

#include "Interposed.h"

#include <cstddef>

#include <sys/syscall.h>
#include <sys/uio.h>
#include <unistd.h>

namespace ScrivelBench
{

Counts counts;

}  // namespace ScrivelBench

using ScrivelBench::counts;

extern "C" {

void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* memory, std::size_t size);

void* malloc(std::size_t size)
{
    ++counts.allocations;
    return __libc_malloc(size);
}

void* calloc(std::size_t count, std::size_t size)
{
    ++counts.allocations;
    return __libc_calloc(count, size);
}

void* realloc(void* memory, std::size_t size)
{
    ++counts.allocations;
    return __libc_realloc(memory, size);
}

ssize_t write(int descriptor, const void* bytes, std::size_t length)
{
    ++counts.write;
    return syscall(SYS_write, descriptor, bytes, length);
}

ssize_t writev(int descriptor, const iovec* parts, int count)
{
    ++counts.write;
    return syscall(SYS_writev, descriptor, parts, count);
}

ssize_t pwrite(int descriptor, const void* bytes, std::size_t length, off_t offset)
{
    ++counts.pwrite;
    return syscall(SYS_pwrite64, descriptor, bytes, length, offset);
}

ssize_t pwrite64(int descriptor, const void* bytes, std::size_t length, off64_t offset)
{
    return pwrite(descriptor, bytes, length, offset);
}

off_t lseek(int descriptor, off_t offset, int from) noexcept
{
    ++counts.lseek;
    return syscall(SYS_lseek, descriptor, offset, from);
}

off64_t lseek64(int descriptor, off64_t offset, int from) noexcept
{
    return lseek(descriptor, offset, from);
}

int ftruncate(int descriptor, off_t length) noexcept
{
    ++counts.ftruncate;
    return static_cast<int>(syscall(SYS_ftruncate, descriptor, length));
}

pid_t getpid() noexcept
{
    ++counts.getpid;
    return static_cast<pid_t>(syscall(SYS_getpid));
}

}  // extern "C"
