// Rebuilds what a disk may have when the machine dies: what was written up to the last synchronisation,
// and of what came after it any pages, each of them as any of its writes left it.
//
//     crash_lost_power --states 10000
//
// The writes and synchronisations of logs that are to outlive the machine (Scenario.h) are recorded and
// replayed into memory, and for each of them states of the disk are drawn, until there are so many.
//
// Fails when a state is rejected by libxml2 or lacks a call of a flush that had ended. Where the disk
// knows of the file's size before it has its bytes there are zeros at the end. So up to a third of the
// states are drawn of such a disk; the zeros are cut off before libxml2 sees them.
//
// Of the first `--left-out` logs each synchronisation is left out in turn: fails, too, when there is one
// after a write that none of the states miss. The first three logs have none; the fourth flushes the same
// bytes twice, and of the fifth it is not known when results are there.

#include "crash/Options.h"
#include "crash/Scenario.h"
#include "crash/Scratch.h"

#include <algorithm>
#include <cstdio>
#include <random>
#include <string>
#include <vector>

using namespace ScrivelTest;
using Kind = FileChange::Kind;

namespace
{

struct Figures
{
    unsigned int states = 0;
    unsigned int withZeros = 0;
    unsigned int lost = 0;
};

struct LeftOut
{
    unsigned int tried = 0;
    unsigned int missed = 0;
    unsigned int unnoticed = 0;  // after a write
};

class Machine
{
public:
    explicit Machine(unsigned int seed) : random(seed) {}

    /// What the disk may have, without zeros at the end.
    std::string Draw(const Disk& disk, bool ofAnySize, Figures& figures)
    {
        const auto below = [this](std::size_t limit) { return random() % limit; };
        ++figures.states;
        std::string file = ofAnySize ? disk.AnyStateOfAnySize(below) : disk.AnyState(below);
        const std::size_t end = file.find_last_not_of('\0') + 1;
        if (end < file.size()) {
            ++figures.withZeros;
        }
        file.resize(end);
        return file;
    }

private:
    std::minstd_rand random;
};

/// Whether it is a document, has no zeros, and has the calls of all flushes that had ended.
bool IsKept(Scenario& scenario, const std::string& file, unsigned int flushed)
{
    return file.find('\0') == std::string::npos && scenario.IsKept(file, flushed);
}

/// Looks at what the disk may have at each moment. A log of the generators has its name before its
/// header.
void Try(Scenario& scenario, Machine& machine, Figures& figures, Scratch& scratch)
{
    Disk disk;
    bool isThere = false;
    for (const FileChange& change : scenario.Record()) {
        disk.Add(change);
        isThere = isThere || change.note > 0 || change.kind == Kind::Named;
        const std::size_t draws = std::clamp<std::size_t>(2 * disk.Pending(), 1, 12);
        for (std::size_t i = 0; isThere && i < draws; ++i) {
            const std::string file = machine.Draw(disk, i % 3 == 1, figures);
            if (!IsKept(scenario, file, change.note)) {
                ++figures.lost;
                scratch.Keep(file, scenario.Name() + ": of a machine that died");
            }
        }
    }
}

/// Leaves out each synchronisation in turn, up to the one after it.
void LeaveOut(Scenario& scenario, Machine& machine, LeftOut& leftOut)
{
    const std::vector<FileChange> changes = scenario.Record();
    Disk disk;
    Figures drawn;
    for (std::size_t i = 0; i < changes.size(); disk.Add(changes[i++])) {
        if (changes[i].kind != Kind::Synchronised || changes[i].note == 0 || i + 1 == changes.size()) {
            continue;
        }
        Disk withoutIt = disk;
        bool isMissed = false;
        for (std::size_t next = i + 1;
             next < changes.size() && changes[next].kind != Kind::Synchronised && !isMissed; ++next) {
            withoutIt.Add(changes[next]);
            const unsigned int draws = changes[i - 1].kind == Kind::Write ? 300 : 30;
            for (unsigned int draw = 0; draw < draws && !isMissed; ++draw) {
                const std::string file = machine.Draw(withoutIt, draw % 2 == 1, drawn);
                isMissed = !IsKept(scenario, file, changes[next].note);
            }
        }
        ++leftOut.tried;
        if (isMissed) {
            ++leftOut.missed;
        } else if (changes[i - 1].kind == Kind::Write) {
            ++leftOut.unnoticed;
        }
    }
}

}  // namespace

int main(int argc, char** argv)
{
    const Options options(argc, argv,
                          {{"states", "1000"}, {"left-out", "1"}, {"seed", "1"}, {"directory", "."}});
    const unsigned int states = options.Number("states");
    Scratch scratch(options.Text("directory"));
    Machine machine(options.Number("seed"));
    Figures figures;
    LeftOut leftOut;
    unsigned int number = 0;
    for (; figures.states < states; ++number) {
        Scenario scenario(number, Scrivel2::Durability::Machine);
        Try(scenario, machine, figures, scratch);
        if (number < options.Number("left-out")) {
            LeaveOut(scenario, machine, leftOut);
        }
    }
    std::printf(
        "%u logs on machines that died: %u states of the disk, %u with zeros at the end, "
        "%u rejected or without a call; of %u synchronisations left out in turn %u leave a broken "
        "state, %u after a write don't\n",
        number, figures.states, figures.withZeros, figures.lost, leftOut.tried, leftOut.missed,
        leftOut.unnoticed);
    return figures.states > 0 && figures.lost == 0 && leftOut.unnoticed == 0 ? 0 : 1;
}
