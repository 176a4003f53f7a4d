// Words of command lines, for tests that start programs.

#ifndef SCRIVEL_TESTS_SUPPORT_SHELL_H
#define SCRIVEL_TESTS_SUPPORT_SHELL_H

#include <string>

namespace ScrivelTest
{

/// The word as a shell takes it, whatever stands in it.
inline std::string Quoted(const std::string& word)
{
    std::string quoted = "'";
    for (const char c : word)
        quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return quoted + "'";
}

}  // namespace ScrivelTest

#endif
