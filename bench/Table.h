#ifndef SCRIVEL_BENCH_TABLE_H
#define SCRIVEL_BENCH_TABLE_H

#include <map>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

namespace ScrivelBench
{

/// Nanoseconds a call, one for each round, by contender and workload.
using Times = std::map<std::pair<std::string, std::string>, std::vector<double>>;

/// Prints the medians and their ratios to the floor's as a table in Markdown, and which goals hold.
void PrintTable(std::ostream& out, const Times& times);

}  // namespace ScrivelBench

#endif
