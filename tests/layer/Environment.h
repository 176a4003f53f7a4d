// A variable of the environment, for the time of a test.

#ifndef SCRIVEL_TESTS_LAYER_ENVIRONMENT_H
#define SCRIVEL_TESTS_LAYER_ENVIRONMENT_H

#include <string>

#include <stdlib.h>

namespace ScrivelTest
{

class Environment
{
public:
    Environment(const char* variable, const std::string& value) : name(variable)
    {
        setenv(name, value.c_str(), 1);
    }
    ~Environment() { unsetenv(name); }
    Environment(const Environment&) = delete;
    Environment& operator=(const Environment&) = delete;

private:
    const char* name;
};

}  // namespace ScrivelTest

#endif
