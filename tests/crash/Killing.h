// A child process that is meant to die of a signal.

#ifndef SCRIVEL_TESTS_CRASH_KILLING_H
#define SCRIVEL_TESTS_CRASH_KILLING_H

#include <chrono>
#include <functional>

#include <sys/types.h>

namespace ScrivelTest
{

using Microseconds = std::chrono::microseconds;

/// Runs `work` in a child process; it is given a function to call when things may begin to go wrong, and
/// does not return. Then, `delay` later, the child gets the signal, or none when `signalFromOutside` is
/// false. Returns the child's id once it has died of the signal; throws when it has ended otherwise.
pid_t RunUntilDead(int deadlySignal, bool signalFromOutside, Microseconds delay,
                   const std::function<void(const std::function<void()>& begin)>& work);

}  // namespace ScrivelTest

#endif
