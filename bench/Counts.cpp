// Counts the system calls and heap allocations of a logged call, and says which goals hold.

#include "Contender.h"
#include "Contents.h"
#include "File.h"
#include "Interposed.h"

#include "ScrivelXmlGen.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iomanip>
#include <iostream>
#include <sstream>

namespace ScrivelBench
{
namespace
{

constexpr std::size_t calls = 400;

/// The kernel's own count of writes of every kind, which also sees those of a FILE.
unsigned long WritesByKernel()
{
    std::ifstream file("/proc/self/io");
    std::string name;
    unsigned long value = 0;
    while (file >> name >> value) {
        if (name == "syscw:") {
            return value;
        }
    }
    std::cerr << "/proc/self/io tells no writes\n";
    std::exit(EXIT_FAILURE);
}

std::string PerCall(unsigned long count)
{
    std::ostringstream text;
    text << std::setprecision(3) << static_cast<double>(count) / static_cast<double>(calls);
    return text.str();
}

/// "writes + lseek + ftruncate + getpid; allocations" a call, on average.
std::string CountsOf(const ContenderKind& contender, const Workload& workload)
{
    const auto log = MakeLog(contender, workload);
    log->LogCall();
    const unsigned long writes = WritesByKernel();
    const Counts before = counts;
    for (std::size_t i = 0; i < calls; ++i) {
        log->LogCall();
    }
    const Counts after = counts;
    return PerCall(WritesByKernel() - writes) + " + " + PerCall(after.lseek - before.lseek) + " + " +
           PerCall(after.ftruncate - before.ftruncate) + " + " + PerCall(after.getpid - before.getpid) +
           "; " + PerCall(after.allocations - before.allocations);
}

void PrintHeader(const char* first)
{
    std::cout << "| " << first << " |";
    for (const Workload& workload : Workloads()) {
        std::cout << ' ' << workload.name << " |";
    }
    std::cout << "\n|---|---|---|---|---|\n";
}

/// Calls whose two flushes each take a single write are those that lie within one page, nearly all: the
/// others are staged.
bool CallsWithinAPageAreShort()
{
    const auto log = MakeLog(ContenderNamed(libraryName), Workloads().front());
    log->LogCall();
    std::size_t within = 0;
    for (std::size_t i = 0; i < calls; ++i) {
        const Counts before = counts;
        log->LogCall();
        if (counts.pwrite - before.pwrite != 2) {
            continue;
        }
        ++within;
        if (counts.getpid - before.getpid != 2 || counts.ftruncate != before.ftruncate ||
            counts.lseek != before.lseek || counts.write != before.write) {
            return false;
        }
    }
    return within > calls * 4 / 5;
}

/// Gives its message away instead of copying it into the by-value parameter.
class Giver : public Scrivel2::Scrivel2XmlGenRun
{
public:
    using Scrivel2XmlGenRun::Scrivel2XmlGenRun;

    void WriteString(const char* ident, const std::string&)
    {
        Scrivel2XmlGenRun::WriteString(ident, std::move(text));
    }

    std::string text;
};

/// Allocations in the library alone: every name and text fits into a std::string's own memory, so that
/// the by-value strings of the signatures need none, and the message is moved into its parameter.
unsigned long AllocationsInside(Workload workload)
{
    workload.callName = "CADIMemRead";
    const Scrivel2::ScrivelXmlGenRunBase::NameTable spaces = {{0, "memory"}};
    Giver log(logName);
    log.SetMemSpaceNames(&spaces);
    log.StartLogging();
    unsigned long allocations = 0;
    // The first calls let the stream's memory grow to what a flush needs, wherever in a page it begins.
    constexpr std::size_t first = 10 * calls;
    for (std::size_t i = 0; i < first + calls; ++i) {
        log.text = workload.message;
        const Counts before = counts;
        LogCall(log, workload);
        allocations += i < first ? 0 : counts.allocations - before.allocations;
    }
    return allocations;
}

void PrintGoal(bool holds, const std::string& text)
{
    std::cout << "- " << (holds ? "holds: " : "MISSED: ") << text << '\n';
}

void PrintCounts()
{
    PrintHeader("writes + lseek + ftruncate + getpid; allocations, a call");
    for (const ContenderKind& contender : Contenders()) {
        std::cout << "| " << contender.name << " |";
        for (const Workload& workload : Workloads()) {
            std::cout << ' ' << CountsOf(contender, workload) << " |";
        }
        std::cout << '\n';
    }
    std::cout << '\n';
    PrintGoal(CallsWithinAPageAreShort(), "a call within a page: 2 pwrite, 2 getpid, no lseek");
    for (const Workload& workload : Workloads()) {
        const unsigned long inside = AllocationsInside(workload);
        PrintGoal(inside == 0, std::string(workload.name) + ": " + PerCall(inside) +
                                   " allocations a call beyond the by-value strings");
    }
}

}  // namespace
}  // namespace ScrivelBench

int main()
{
    const ScrivelBench::Scratch scratch;
    if (!ScrivelBench::SameContents()) {
        return EXIT_FAILURE;
    }
    ScrivelBench::PrintCounts();
}
