// Whether a call costs the same late in a long log as early: the floor and the library by turns, W1.

#include "Contender.h"
#include "File.h"

#include <algorithm>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <iomanip>
#include <iostream>

#include <malloc.h>
#include <unistd.h>

namespace ScrivelBench
{
namespace
{

constexpr std::size_t turn = 250;  // calls

double ThreadNanoseconds()
{
    timespec now;
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) * 1e9 + static_cast<double>(now.tv_nsec);
}

double TurnOf(Contender& log)
{
    const double start = ThreadNanoseconds();
    for (std::size_t i = 0; i < turn; ++i) {
        log.LogCall();
    }
    return (ThreadNanoseconds() - start) / turn;
}

std::unique_ptr<Contender> MakeIn(const char* folder, const char* name)
{
    std::filesystem::create_directory(folder);
    std::filesystem::current_path(folder);
    auto log = MakeLog(ContenderNamed(name), Workloads().front());
    std::filesystem::current_path("..");
    return log;
}

/// Memory of the process that no file lies behind, in KiB.
long PrivateMemory()
{
    std::ifstream file("/proc/self/statm");
    long size = 0;
    long resident = 0;
    long shared = 0;
    file >> size >> resident >> shared;
    return (resident - shared) * (sysconf(_SC_PAGESIZE) / 1024);
}

struct Cost
{
    double floor;
    double library;
    std::size_t heapInUse;
    long memory;
};

/// Memory for what is measured, touched before anything is: it must not look like the library's.
class Turns
{
public:
    Turns() : costs(most) { costs.clear(); }

    void Clear() { costs.clear(); }
    void Add(double cost) { costs.push_back(cost); }

    double Median()
    {
        const auto middle = costs.begin() + static_cast<std::ptrdiff_t>(costs.size() / 2);
        std::nth_element(costs.begin(), middle, costs.end());
        return *middle;
    }

private:
    static constexpr std::size_t most = 10000;

    std::vector<double> costs;
};

/// Of a call in the second half of logs of so many calls: the medians of the turns.
Cost CostAfter(std::size_t calls, std::size_t logs, Turns& floorTurns, Turns& libraryTurns)
{
    floorTurns.Clear();
    libraryTurns.Clear();
    Cost cost{};
    for (std::size_t i = 0; i < logs; ++i) {
        const auto floor = MakeIn("floor", floorName);
        const auto library = MakeIn("library", libraryName);
        for (std::size_t done = 0; done < calls; done += turn) {
            const double floorTurn = TurnOf(*floor);
            const double libraryTurn = TurnOf(*library);
            if (done >= calls / 2) {
                floorTurns.Add(floorTurn);
                libraryTurns.Add(libraryTurn);
            }
        }
        cost.heapInUse = mallinfo2().uordblks;
        cost.memory = PrivateMemory();
    }
    cost.floor = floorTurns.Median();
    cost.library = libraryTurns.Median();
    return cost;
}

void PrintGrowth()
{
    std::cout
        << "| calls in the log | floor, ns a call | this library, ns a call | times the floor | "
           "against 1,000 calls | heap in use, KiB | memory, KiB |\n|---|---|---|---|---|---|---|\n";
    struct
    {
        std::size_t calls;
        std::size_t logs;
    } const sizes[] = {{1000, 400}, {10000, 40}, {100000, 9}, {1000000, 3}};
    Turns floorTurns;
    Turns libraryTurns;
    double firstRatio = 0;
    bool flat = true;
    for (const auto& size : sizes) {
        const Cost cost = CostAfter(size.calls, size.logs, floorTurns, libraryTurns);
        const double ratio = cost.library / cost.floor;
        firstRatio = firstRatio == 0 ? ratio : firstRatio;
        const double drift = ratio / firstRatio - 1;
        flat = flat && drift <= 0.05;
        std::cout << "| " << size.calls << std::fixed << std::setprecision(0) << " | " << cost.floor
                  << " | " << cost.library << " | " << std::setprecision(2) << ratio << " | "
                  << std::showpos << std::setprecision(1) << 100 * drift << std::noshowpos << " % | "
                  << cost.heapInUse / 1024 << " | " << cost.memory << " |\n";
    }
    std::cout << "\n- " << (flat ? "holds" : "MISSED")
              << ": the cost of a call within 5 % of the floor's own drift\n";
}

}  // namespace
}  // namespace ScrivelBench

int main()
{
    const ScrivelBench::Scratch scratch;
    ScrivelBench::PrintGrowth();
}
