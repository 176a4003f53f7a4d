// Runs a program, prints the most memory that it had, in KiB, on standard error, and ends as it did. A
// process of its own: a child begins with the memory of the one that it was forked from, and the tests'
// is large.

#include <cstdio>
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
    if (wait4(child, &status, 0, &usage) != child || !WIFEXITED(status)) {
        return 127;
    }
    std::fprintf(stderr, "%ld\n", usage.ru_maxrss);
    return WEXITSTATUS(status);
}
