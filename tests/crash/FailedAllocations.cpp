// Fails every allocation of a log in turn, once and from then on, and looks at the file it leaves.
//
//     crash_failed_allocations --count 0
//
// `count` limits the cases, 0 meaning all. The logging process must live, or see std::bad_alloc from the
// operation it has called: then it stops logging.
//
// Fails when the file isn't the document of the last flush that succeeded or of a later one, or when the
// process ends in another way.

#include "crash/Allocations.h"
#include "crash/LogReader.h"
#include "crash/Options.h"
#include "crash/Scratch.h"
#include "crash/Session.h"
#include "crash/Shared.h"

#include <cstdio>
#include <filesystem>
#include <string>

using namespace ScrivelTest;

int main(int argc, char** argv)
{
    const Options options(argc, argv, {{"count", "0"}, {"seed", "1"}, {"directory", "."}});
    Scratch scratch(options.Text("directory"));
    Session session("trace", Load(options.Number("seed"), 100, 100'000), 30);
    session.Documents();
    Progress& progress = Shared<Progress>();
    allocations.made = 0;
    session.Run(progress);
    const unsigned long all = allocations.made;

    unsigned int lost = 0;
    unsigned int threw = 0;
    unsigned int ended = 0;
    unsigned int cases = 0;
    const unsigned long wanted = options.Number("count");
    const unsigned long step = wanted == 0 || wanted >= 2 * all ? 1 : 2 * all / wanted;
    for (unsigned long number = 1; number <= all; number += step) {
        for (const bool always : {false, true}) {
            std::filesystem::remove(session.FileName());
            progress.done = 0;
            const ChildEnd end = InChild([&] {
                allocations.made = 0;
                allocations.failUpTo = always ? all + 1000 : number;
                allocations.failFrom = number;
                session.Run(progress);
            });
            ++cases;
            threw += end.manner == ChildEnd::Manner::BadAlloc ? 1U : 0U;
            const std::string name =
                "allocation " + std::to_string(number) + (always ? " from then on" : " once");
            if (end.manner != ChildEnd::Manner::Returned && end.manner != ChildEnd::Manner::BadAlloc) {
                ++ended;
                std::fprintf(stderr, "%s: the process ended\n", name.c_str());
            }
            const std::string bytes = FileBytes(session.FileName());
            if (session.DocumentNumber(bytes, progress.done) < 0) {
                ++lost;
                scratch.Keep(bytes, name);
            }
        }
    }
    std::printf(
        "%lu allocations failed in turn: %u cases, %u saw std::bad_alloc: %u lost a flushed call, "
        "%u ended the process\n",
        all, cases, threw, lost, ended);
    return cases > 0 && lost == 0 && ended == 0 ? 0 : 1;
}
