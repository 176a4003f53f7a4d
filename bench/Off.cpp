// Times a guard that logs nothing: of a log that is off, and of a call that a log leaves out. One that
// logs a call without arguments stands beside them.
//
//     scrivel_bench_off [Google Benchmark's options]

#include "File.h"

#include "LoggedCall.h"

#include <benchmark/benchmark.h>

namespace
{

void MakeCalls(benchmark::State& state, const Scrivel2::LogOptions& options)
{
    Scrivel2::RunLog log("off", options);
    unsigned long value = 0;
    for (auto iteration : state) {
        benchmark::DoNotOptimize(value);
        Scrivel2::LoggedCall call(log, "CADIMemRead");
        call.Arguments([&](auto& xml) { xml.WriteDecimal("count", value); });
        call.Results([&](auto& xml) { xml.WriteDecimal("actual", value); });
    }
}

void Off(benchmark::State& state)
{
    Scrivel2::LogOptions options;
    options.on = false;
    MakeCalls(state, options);
}

void LeftOut(benchmark::State& state)
{
    Scrivel2::LogOptions options;
    options.calls = "!CADIMem*";
    MakeCalls(state, options);
}

void Logged(benchmark::State& state)
{
    MakeCalls(state, {});
}

BENCHMARK(Off);
BENCHMARK(LeftOut);
BENCHMARK(Logged)->Iterations(20000);

}  // namespace

int main(int argc, char** argv)
{
    benchmark::Initialize(&argc, argv);
    const ScrivelBench::Scratch scratch;
    benchmark::RunSpecifiedBenchmarks();
}
