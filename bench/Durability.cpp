// What waiting for the disk costs a log that is to outlive the machine: the times of calls in the current
// directory, as Markdown. On a file system in memory there is nothing to wait for.
//
//     scrivel_bench_durability [<calls>]

#include "LoggedCall.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

namespace
{

using Clock = std::chrono::steady_clock;

struct Workload
{
    const char* what;
    std::size_t characters;  ///< of the results
};

constexpr Workload workloads[] = {
    {"200 bytes, two flushes within a page", 50},
    {"10 KB, the second flush across pages", 10'000},
    {"100 KB, the second flush across pages", 100'000},
};

/// The median of the times that calls take, in microseconds.
double MedianOfCalls(Scrivel2::Durability durability, const Workload& workload, unsigned int calls)
{
    Scrivel2::LogOptions options;
    options.durability = durability;
    Scrivel2::RunLog log("bench", options);
    const std::string text(workload.characters, 'x');
    std::vector<double> times;
    for (unsigned int i = 0; i < calls; ++i) {
        const auto start = Clock::now();
        {
            Scrivel2::LoggedCall call(log, "CADIMemRead",
                                      [](auto& xml) { xml.WriteDecimal("count", 4U); });
            call.Results([&](auto& xml) { xml.WriteString("data", text); });
        }
        times.push_back(std::chrono::duration<double, std::micro>(Clock::now() - start).count());
    }
    log.EndLogging();
    std::filesystem::remove(log.FileName());
    const auto middle = times.begin() + calls / 2;
    std::nth_element(times.begin(), middle, times.end());
    return *middle;
}

}  // namespace

int main(int argc, char** argv)
{
    const unsigned int calls = argc > 1 ? static_cast<unsigned int>(std::atoi(argv[1])) : 50;
    std::puts("| a call, median | outlives its process | outlives the machine |");
    std::puts("|---|---|---|");
    for (const Workload& workload : workloads) {
        const double process = MedianOfCalls(Scrivel2::Durability::Process, workload, calls);
        const double machine = MedianOfCalls(Scrivel2::Durability::Machine, workload, calls);
        std::printf("| %s | %.1f us | %.1f ms |\n", workload.what, process, machine / 1000);
    }
    return 0;
}
