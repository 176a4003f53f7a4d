// Prints the goals and what was reached, workload by workload.

#include "Table.h"

#include "Contender.h"

#include <algorithm>
#include <cstddef>
#include <functional>
#include <iomanip>
#include <sstream>

namespace ScrivelBench
{
namespace
{

constexpr std::size_t workloadCount = 4;

double Median(std::vector<double> values)
{
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

std::string Fixed(double value, int decimals)
{
    std::ostringstream text;
    text << std::fixed << std::setprecision(decimals) << value;
    return text.str();
}

/// One row of the goals: a limit for each workload, and what was reached there.
struct Goal
{
    const char* text;
    double limits[workloadCount];
    bool atMost;
    std::function<double(const std::string& workload)> reached;
};

}  // namespace

void PrintTable(std::ostream& out, const Times& times)
{
    const auto median = [&](const std::string& contender, const std::string& workload) {
        return Median(times.at({contender, workload}));
    };
    const auto header = [&](const char* first) {
        out << "| " << first << " |";
        for (const Workload& workload : Workloads()) {
            out << ' ' << workload.name << " |";
        }
        out << "\n|---|---|---|---|---|\n";
    };

    header("µs a call (times the floor)");
    for (const ContenderKind& contender : Contenders()) {
        out << "| " << contender.name << " |";
        for (const Workload& workload : Workloads()) {
            const double time = median(contender.name, workload.name);
            out << ' ' << Fixed(time / 1000, 2) << " ("
                << Fixed(time / median(floorName, workload.name), 2) << ") |";
        }
        out << '\n';
    }

    const auto timesFaster = [&](const char* contender) {
        return [&, contender](const std::string& workload) {
            return median(contender, workload) / median(libraryName, workload);
        };
    };
    const auto timesFasterThanAnyFile = [&](const std::string& workload) {
        double fastest = 0;
        for (const ContenderKind& contender : Contenders()) {
            if (contender.output == Output::usual) {
                const double time = median(contender.name, workload);
                fastest = fastest == 0 ? time : std::min(fastest, time);
            }
        }
        return fastest / median(libraryName, workload);
    };
    const Goal goals[] = {
        {"times the floor, at most",
         {2.3, 2.4, 1.6, 2.2},
         true,
         [&](const std::string& workload) {
             return median(libraryName, workload) / median(floorName, workload);
         }},
        {"faster than tinyxml2 on the floor's output, at least",
         {0.95, 3.5, 8, 5},
         false,
         timesFaster(tinyXmlFloorName)},
        {"faster than the fastest XML writer with its usual file output, at least",
         {1.25, 3.5, 9, 4},
         false,
         timesFasterThanAnyFile},
    };
    out << "\nThrough the guard, times this library:";
    for (const Workload& workload : Workloads()) {
        out << ' ' << workload.name << ' '
            << Fixed(median(guardName, workload.name) / median(libraryName, workload.name), 2);
    }
    out << ". Faster than xmlTextWriter with quick texts:";
    for (const Workload& workload : Workloads()) {
        out << ' ' << workload.name << ' ' << Fixed(timesFaster(quickTextWriterName)(workload.name), 2);
    }
    out << ".\n\n";
    header("goals for this library: limit, reached");
    for (const Goal& goal : goals) {
        out << "| " << goal.text << " |";
        for (std::size_t i = 0; i < workloadCount; ++i) {
            const double reached = goal.reached(Workloads()[i].name);
            const bool holds = goal.atMost ? reached <= goal.limits[i] : reached >= goal.limits[i];
            out << ' ' << Fixed(goal.limits[i], 2) << ", " << Fixed(reached, 2)
                << (holds ? " holds |" : " MISSED |");
        }
        out << '\n';
    }
}

}  // namespace ScrivelBench
