// Logs calls of one workload by one contender, for profilers and counters of instructions.
//
//     scrivel_bench_load <contender> <workload> <calls>

#include "Contender.h"
#include "File.h"

#include <cstdlib>
#include <iostream>
#include <string>

int main(int argc, char** argv)
{
    using namespace ScrivelBench;

    if (argc != 4) {
        std::cerr << "usage: " << argv[0] << " <contender> <workload> <calls>\n";
        return EXIT_FAILURE;
    }
    const Scratch scratch;
    for (const Workload& workload : Workloads()) {
        if (workload.name == std::string(argv[2])) {
            const auto log = MakeLog(ContenderNamed(argv[1]), workload);
            for (unsigned long calls = std::strtoul(argv[3], nullptr, 10); calls > 0; --calls) {
                log->LogCall();
            }
            return EXIT_SUCCESS;
        }
    }
    std::cerr << "no workload is called \"" << argv[2] << "\"\n";
    return EXIT_FAILURE;
}
