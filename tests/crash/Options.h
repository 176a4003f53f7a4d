// The command line of the crash programs: pairs of a name and a value, --count 2000 --seed 7.

#ifndef SCRIVEL_TESTS_CRASH_OPTIONS_H
#define SCRIVEL_TESTS_CRASH_OPTIONS_H

#include <map>
#include <string>

namespace ScrivelTest
{

class Options
{
public:
    /// `defaults` names every option there is. Anything else on the command line ends the program.
    Options(int argc, char** argv, std::map<std::string, std::string> defaults);

    const std::string& Text(const std::string& name) const { return values.at(name); }
    unsigned int Number(const std::string& name) const;

private:
    std::map<std::string, std::string> values;
};

}  // namespace ScrivelTest

#endif
