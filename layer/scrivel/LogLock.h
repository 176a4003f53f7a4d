// The lock of a log.

#ifndef SCRIVEL_LAYER_LOGLOCK_H
#define SCRIVEL_LAYER_LOGLOCK_H

#include <pthread.h>

namespace Scrivel2::Layer
{

// What a shared library shows, also when it is built to hide what isn't marked.
class [[gnu::visibility("default")]] LogLock;

/// Lets one thread at a time have its turn at a log, in which it is not cancelled. A thread that asks for
/// a second turn within its first one is told so instead of waiting for itself, even when a signal has
/// interrupted it on its way to the lock.
class LogLock
{
public:
    LogLock();
    ~LogLock();
    LogLock(const LogLock&) = delete;
    LogLock& operator=(const LogLock&) = delete;

    class [[gnu::visibility("default")]] Turn
    {
    public:
        explicit Turn(LogLock & lock);
        ~Turn();
        Turn(const Turn&) = delete;
        Turn& operator=(const Turn&) = delete;

        /// False when this is no turn, as the thread has one already.
        bool HasBegun() const
        {
            return hasBegun;
        }

        /// Whether the thread before has ended in the midst of its turn.
        bool FollowsADeadThread() const
        {
            return followsADeadThread;
        }

    private:
        pthread_mutex_t& mutex;
        int cancelStateBefore;
        bool hasBegun;
        bool followsADeadThread;
    };

private:
    pthread_mutex_t mutex;
};

}  // namespace Scrivel2::Layer

#endif
