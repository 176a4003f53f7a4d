// Runs a program and prints the most memory that it had, in KiB, on standard error. A process of its own:
// a child begins with the memory of the one that it was forked from, and the tests' is large.

#include <cstdio>
#include <cstdlib>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

int main(int, char** arguments)
{
    const pid_t child = fork();
    if (child == 0) {
        execv(arguments[1], arguments + 1);
        _exit(127);
    }
    int status = 0;
    rusage usage{};
    if (wait4(child, &status, 0, &usage) != child || !WIFEXITED(status) || WEXITSTATUS(status) != 0) {
        return EXIT_FAILURE;
    }
    std::fprintf(stderr, "%ld\n", usage.ru_maxrss);
    return EXIT_SUCCESS;
}
