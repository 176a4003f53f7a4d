// The lock of a log. Tested by tests/layer/LogLockTest.cpp.

#include "scrivel/LogLock.h"

#include <cerrno>

namespace Scrivel2::Layer
{

LogLock::LogLock()
{
    pthread_mutexattr_t attributes;
    pthread_mutexattr_init(&attributes);
    pthread_mutexattr_settype(&attributes, PTHREAD_MUTEX_ERRORCHECK);
    // A robust mutex has its thread in the one word that is locked. So there is no instant in which a
    // signal handler could find it locked, but not yet by its own thread, and wait for ever.
    pthread_mutexattr_setrobust(&attributes, PTHREAD_MUTEX_ROBUST);
    pthread_mutex_init(&mutex, &attributes);
    pthread_mutexattr_destroy(&attributes);
}

LogLock::~LogLock()
{
    pthread_mutex_destroy(&mutex);
}

LogLock::Turn::Turn(LogLock& lock) : mutex(lock.mutex)
{
    pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &cancelStateBefore);
    const int result = pthread_mutex_lock(&mutex);
    followsADeadThread = result == EOWNERDEAD;
    if (followsADeadThread) {
        pthread_mutex_consistent(&mutex);
    }
    hasBegun = result == 0 || followsADeadThread;
}

LogLock::Turn::~Turn()
{
    if (hasBegun) {
        pthread_mutex_unlock(&mutex);
    }
    pthread_setcancelstate(cancelStateBefore, nullptr);
}

}  // namespace Scrivel2::Layer
