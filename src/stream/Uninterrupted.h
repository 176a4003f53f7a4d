// System calls that a signal has interrupted. Tested by tests/stream/FailingWritesTest.cpp,
// tests/stream/OpenFileTest.cpp and tests/stream/SynchronisedFolderTest.cpp.

#ifndef SCRIVEL_STREAM_UNINTERRUPTED_H
#define SCRIVEL_STREAM_UNINTERRUPTED_H

#include <cerrno>

namespace Scrivel2
{

/// Repeats a system call that a signal has interrupted. One that is interrupted every time counts as
/// failed: the host program must not hang in its log.
template <typename SystemCall>
auto Uninterrupted(SystemCall call)
{
    constexpr int mostAttempts = 1000;
    auto result = call();
    for (int attempt = 1; attempt < mostAttempts && result < 0 && errno == EINTR; ++attempt) {
        result = call();
    }
    return result;
}

}  // namespace Scrivel2

#endif
