// Compiled optimised and without sanitizers: their runtimes call some of these functions before they
// have set themselves up.

#include "support/Platform.h"

#include <cctype>
#include <cstdarg>
#include <cstdio>
#include <cstring>

#include <dlfcn.h>
#include <fcntl.h>

namespace ScrivelTest
{

template <typename Result, typename... Arguments>
Result Replaceable<Result(Arguments...)>::Real(Arguments... arguments)
{
    Pointer function = real;
    if (function == nullptr) {
        function = reinterpret_cast<Pointer>(dlsym(RTLD_NEXT, name));
        real = function;
    }
    return function(arguments...);
}

template <typename Result, typename... Arguments>
Result Replaceable<Result(Arguments...)>::Call(Arguments... arguments)
{
    ++calls;
    if (newest != nullptr) {
        return newest->function(arguments...);
    }
    return standing != nullptr ? standing(arguments...) : Real(arguments...);
}

template class Replaceable<pid_t()>;
template class Replaceable<int(timeval*, void*)>;
template class Replaceable<std::time_t(std::time_t*)>;
template class Replaceable<std::tm*(const std::time_t*)>;
template class Replaceable<std::size_t(char*, std::size_t, const char*, const std::tm*)>;
template class Replaceable<int(char*, std::size_t)>;
template class Replaceable<char*(int)>;
template class Replaceable<pthread_t()>;
template class Replaceable<int(const char*)>;
template class Replaceable<int(int)>;
template class Replaceable<uid_t()>;
template class Replaceable<int(const char*, int)>;
template class Replaceable<int(const char*, int, mode_t)>;
template class Replaceable<int(int, struct stat*)>;
template class Replaceable<ssize_t(int, const void*, std::size_t)>;
template class Replaceable<ssize_t(int, const void*, std::size_t, off_t)>;
template class Replaceable<ssize_t(int, void*, std::size_t, off_t)>;
template class Replaceable<off_t(int, off_t, int)>;
template class Replaceable<int(int, off_t)>;
template class Replaceable<int(int, const char*, int, const char*, int)>;

Platform platform;

void Platform::Reset()
{
    getpid.Reset();
    gettimeofday.Reset();
    time.Reset();
    localtime.Reset();
    localtime_r.Reset();
    strftime.Reset();
    gethostname.Reset();
    strerror.Reset();
    pthread_self.Reset();
    puts.Reset();
    isalpha.Reset();
    isprint.Reset();
    geteuid.Reset();
    getegid.Reset();
    access.Reset();
    open.Reset();
    fstat.Reset();
    write.Reset();
    pwrite.Reset();
    pread.Reset();
    lseek.Reset();
    ftruncate.Reset();
    fdatasync.Reset();
    fsync.Reset();
    linkat.Reset();
    close.Reset();
}

}  // namespace ScrivelTest

using ScrivelTest::platform;

extern "C" {

pid_t getpid() noexcept
{
    return platform.getpid.Call();
}

int gettimeofday(timeval* now, void* zone) noexcept
{
    return platform.gettimeofday.Call(now, zone);
}

std::time_t time(std::time_t* now) noexcept
{
    return platform.time.Call(now);
}

std::tm* localtime(const std::time_t* moment) noexcept
{
    return platform.localtime.Call(moment);
}

std::tm* localtime_r(const std::time_t* moment, std::tm* local) noexcept
{
    return platform.localtime_r.Call(moment, local);
}

std::size_t strftime(char* text, std::size_t size, const char* format, const std::tm* moment) noexcept
{
    return platform.strftime.Call(text, size, format, moment);
}

int gethostname(char* name, std::size_t size) noexcept
{
    return platform.gethostname.Call(name, size);
}

char* strerror(int error) noexcept
{
    return platform.strerror.Call(error);
}

pthread_t pthread_self() noexcept
{
    return platform.pthread_self.Call();
}

int puts(const char* text)
{
    return platform.puts.Call(text);
}

int isalpha(int character) noexcept
{
    return platform.isalpha.Call(character);
}

int isprint(int character) noexcept
{
    return platform.isprint.Call(character);
}

uid_t geteuid() noexcept
{
    return platform.geteuid.Call();
}

gid_t getegid() noexcept
{
    return platform.getegid.Call();
}

int access(const char* name, int mode) noexcept
{
    return platform.access.Call(name, mode);
}

int open(const char* name, int flags, ...)
{
    mode_t mode = 0;
    if ((flags & (O_CREAT | O_TMPFILE)) != 0 && (flags & (O_CREAT | O_TMPFILE)) != O_DIRECTORY) {
        va_list arguments;
        va_start(arguments, flags);
        mode = va_arg(arguments, mode_t);
        va_end(arguments);
    }
    return platform.open.Call(name, flags, mode);
}

int fstat(int file, struct stat* status) noexcept
{
    return platform.fstat.Call(file, status);
}

ssize_t write(int file, const void* bytes, std::size_t size)
{
    return platform.write.Call(file, bytes, size);
}

ssize_t pwrite(int file, const void* bytes, std::size_t size, off_t position)
{
    return platform.pwrite.Call(file, bytes, size, position);
}

ssize_t pwrite64(int file, const void* bytes, std::size_t size, off64_t position)
{
    return platform.pwrite.Call(file, bytes, size, position);
}

ssize_t pread(int file, void* bytes, std::size_t size, off_t position)
{
    return platform.pread.Call(file, bytes, size, position);
}

ssize_t pread64(int file, void* bytes, std::size_t size, off64_t position)
{
    return platform.pread.Call(file, bytes, size, position);
}

off_t lseek(int file, off_t offset, int whence) noexcept
{
    return platform.lseek.Call(file, offset, whence);
}

off64_t lseek64(int file, off64_t offset, int whence) noexcept
{
    return platform.lseek.Call(file, offset, whence);
}

int ftruncate(int file, off_t size) noexcept
{
    return platform.ftruncate.Call(file, size);
}

int ftruncate64(int file, off64_t size) noexcept
{
    return platform.ftruncate.Call(file, size);
}

int fdatasync(int file)
{
    return platform.fdatasync.Call(file);
}

int fsync(int file)
{
    return platform.fsync.Call(file);
}

int linkat(int fromFolder, const char* from, int toFolder, const char* to, int flags) noexcept
{
    return platform.linkat.Call(fromFolder, from, toFolder, to, flags);
}

int close(int file)
{
    return platform.close.Call(file);
}
}
