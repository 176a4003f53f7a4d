// Starts a process that is meant to die, and kills it when it is due.

#include "crash/Killing.h"

#include <csignal>
#include <stdexcept>
#include <thread>

#include <sys/wait.h>
#include <unistd.h>

namespace ScrivelTest
{

pid_t RunUntilDead(int deadlySignal, bool signalFromOutside, Microseconds delay,
                   const std::function<void(const std::function<void()>& begin)>& work)
{
    int begun[2];
    if (pipe(begun) != 0) {
        throw std::runtime_error("no pipe");
    }
    const pid_t child = fork();
    if (child == 0) {
        work([&] {
            if (write(begun[1], "", 1) != 1) {
                _exit(1);
            }
        });
        _exit(1);
    }
    close(begun[1]);
    char byte;
    const bool running = child > 0 && read(begun[0], &byte, 1) == 1;
    close(begun[0]);
    if (running && signalFromOutside) {
        std::this_thread::sleep_for(delay);
        kill(child, deadlySignal);
    }
    int status = 0;
    if (!running || waitpid(child, &status, 0) != child || !WIFSIGNALED(status) ||
        WTERMSIG(status) != deadlySignal) {
        throw std::runtime_error("the logging process did not die of the signal");
    }
    return child;
}

}  // namespace ScrivelTest
