// Rebuilds what a kill leaves at each place where one can fall: between two system calls, and inside a
// write at each page boundary, the only places where the kernel stops one.
//
//     crash_cut_writes --count 40
//
// The writes of so many logs (Scenario.h) are recorded and replayed into memory, until `--cuts` of them
// have been cut, if that is more.
//
// Fails when a state between two writes, or a cut inside one, is rejected by libxml2 or lacks a flushed
// call; also when a write brings a page of the file from two pages of memory: where the second one has
// been paged out, the kernel stops there, too.

#include "crash/Options.h"
#include "crash/Scenario.h"
#include "crash/Scratch.h"

#include <cstdio>
#include <string>

using namespace ScrivelTest;

namespace
{

constexpr std::size_t pageSize = 4096;

struct Figures
{
    unsigned int between = 0;
    unsigned int betweenLost = 0;
    unsigned int inside = 0;
    unsigned int insideLost = 0;
    unsigned int writes = 0;
    unsigned int fromTwoPages = 0;
};

void CutInside(const Scenario& scenario, const FileChange& write, const std::string& file,
               Figures& figures, Scratch& scratch)
{
    const std::size_t end = write.offset + write.bytes.size();
    for (std::size_t boundary = (write.offset / pageSize + 1) * pageSize; boundary < end;
         boundary += pageSize) {
        std::string cut = file;
        Apply(write, boundary - write.offset, cut);
        ++figures.inside;
        if (scenario.IsKept(cut, write.note)) {
            continue;
        }
        ++figures.insideLost;
        std::printf("%s: cut at %zu inside the %zu bytes from %zu on\n", scenario.Name().c_str(),
                    boundary, write.bytes.size(), write.offset);
        scratch.Keep(cut, scenario.Name() + ": cut inside a write");
    }
}

void Try(Scenario scenario, Figures& figures, Scratch& scratch)
{
    std::string file;
    for (const FileChange& change : scenario.Record()) {
        const bool isWrite = change.kind == FileChange::Kind::Write;
        if (change.note > 0 && isWrite) {
            CutInside(scenario, change, file, figures, scratch);
        }
        if (!isWrite && change.kind != FileChange::Kind::Cut) {
            continue;
        }
        figures.writes += isWrite ? 1U : 0U;
        figures.fromTwoPages += change.fromTwoPages ? 1U : 0U;
        Apply(change, file);
        ++figures.between;
        if (!scenario.IsKept(file, change.note)) {
            ++figures.betweenLost;
            scratch.Keep(file, scenario.Name() + ": between two writes");
        }
    }
}

}  // namespace

int main(int argc, char** argv)
{
    const Options options(argc, argv, {{"count", "8"}, {"cuts", "0"}, {"directory", "."}});
    const unsigned int count = options.Number("count");
    const unsigned int cuts = options.Number("cuts");
    Scratch scratch(options.Text("directory"));
    Figures figures;
    unsigned int number = 0;
    for (; number < count || figures.inside < cuts; ++number) {
        Try(Scenario(number), figures, scratch);
    }
    std::printf("writes of %u scenarios cut: %u states between two writes, %u rejected; "
                "%u cuts at page boundaries inside a write, %u rejected; "
                "of %u writes %u bring a page from two pages of memory\n",
                number, figures.between, figures.betweenLost, figures.inside, figures.insideLost,
                figures.writes, figures.fromTwoPages);
    const bool isKept = figures.betweenLost == 0 && figures.insideLost == 0;
    return figures.inside > 0 && isKept && figures.fromTwoPages == 0 ? 0 : 1;
}
