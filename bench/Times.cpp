// Times a call of each workload by each contender: in rounds, each of which runs all contenders,
// beginning one further than the round before. A run has a log of its own, and its thread's CPU time
// counts.
//
//     scrivel_bench [Google Benchmark's options] [rounds]

#include "Contender.h"
#include "Contents.h"
#include "File.h"
#include "Table.h"

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <iostream>

namespace ScrivelBench
{
namespace
{

constexpr std::size_t defaultRounds = 21;

/// Calls in one run, for W1 to W4: some milliseconds of work each.
constexpr benchmark::IterationCount callsInARun[] = {4000, 1000, 250, 250};

void Run(benchmark::State& state, const ContenderKind& contender, const Workload& workload)
{
    const auto log = MakeLog(contender, workload);
    for (auto iteration : state) {
        log->LogCall();
    }
}

void RegisterRounds(std::size_t rounds)
{
    const auto& contenders = Contenders();
    for (std::size_t round = 0; round < rounds; ++round) {
        for (std::size_t w = 0; w < Workloads().size(); ++w) {
            const Workload& workload = Workloads()[w];
            for (std::size_t i = 0; i < contenders.size(); ++i) {
                const ContenderKind& contender = contenders[(i + round) % contenders.size()];
                const std::string name = std::string(contender.name) + "/" + workload.name;
                benchmark::RegisterBenchmark(name.c_str(), Run, contender, workload)
                    ->Iterations(callsInARun[w])
                    ->Unit(benchmark::kNanosecond);
            }
        }
    }
}

class Collector : public benchmark::BenchmarkReporter
{
public:
    bool ReportContext(const Context&) override { return true; }

    void ReportRuns(const std::vector<Run>& runs) override
    {
        for (const Run& run : runs) {
            const std::string& name = run.run_name.function_name;
            const std::size_t slash = name.rfind('/');
            times[{name.substr(0, slash), name.substr(slash + 1)}].push_back(run.GetAdjustedCPUTime());
        }
    }

    void Finalize() override { PrintTable(std::cout, times); }

private:
    Times times;
};

}  // namespace
}  // namespace ScrivelBench

int main(int argc, char** argv)
{
    benchmark::Initialize(&argc, argv);
    const std::size_t rounds =
        argc > 1 ? std::strtoul(argv[1], nullptr, 10) : ScrivelBench::defaultRounds;
    const ScrivelBench::Scratch scratch;
    if (!ScrivelBench::SameContents()) {
        return EXIT_FAILURE;
    }
    ScrivelBench::RegisterRounds(rounds);
    ScrivelBench::Collector collector;
    benchmark::RunSpecifiedBenchmarks(&collector);
}
