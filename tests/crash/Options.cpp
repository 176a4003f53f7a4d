// Reads the command line of a crash program.

#include "crash/Options.h"

#include <cstdio>
#include <cstdlib>
#include <utility>

namespace ScrivelTest
{

Options::Options(int argc, char** argv, std::map<std::string, std::string> defaults)
    : values(std::move(defaults))
{
    for (int i = 1; i < argc; i += 2) {
        const std::string argument = argv[i];
        const auto option = argument.rfind("--", 0) == 0 ? values.find(argument.substr(2)) : values.end();
        if (option == values.end() || i + 1 == argc) {
            std::fprintf(stderr, "usage: %s", argv[0]);
            for (const auto& [name, value] : values) {
                std::fprintf(stderr, " [--%s %s]", name.c_str(), value.c_str());
            }
            std::fprintf(stderr, "\n");
            std::exit(2);
        }
        option->second = argv[i + 1];
    }
}

unsigned int Options::Number(const std::string& name) const
{
    return static_cast<unsigned int>(std::stoul(Text(name)));
}

}  // namespace ScrivelTest
