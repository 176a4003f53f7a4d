// Kills processes that are starting a log through the layer, and looks whether there is one.
//
//     crash_killed_start --count 4000
//
// Fails when a file is there that libxml2 rejects, an empty one among them, or when no kill came before
// there was a file, or none after.

#include "LoggedCall.h"

#include "crash/Killing.h"
#include "crash/LogReader.h"
#include "crash/Options.h"
#include "crash/Scratch.h"

#include <csignal>
#include <cstdio>
#include <filesystem>
#include <random>
#include <string>

#include <unistd.h>

using namespace ScrivelTest;

int main(int argc, char** argv)
{
    const Options options(argc, argv,
                          {{"count", "400"}, {"seed", "1"}, {"directory", "."}, {"longest", "200"}});
    std::mt19937 random(options.Number("seed"));
    std::uniform_int_distribution<unsigned int> delays(0, options.Number("longest"));
    Scratch scratch(options.Text("directory"));
    const unsigned int kills = options.Number("count");
    unsigned int withoutFile = 0;
    unsigned int rejected = 0;
    for (unsigned int i = 0; i < kills; ++i) {
        const pid_t child =
            RunUntilDead(SIGKILL, true, Microseconds(delays(random)), [](const auto& begin) {
                begin();
                const Scrivel2::RunLog log("run");
                for (;;) {
                    pause();
                }
            });
        const std::string fileName = "run-" + std::to_string(child) + ".xml";
        if (!std::filesystem::exists(fileName)) {
            ++withoutFile;
            continue;
        }
        const std::string bytes = FileBytes(fileName);
        if (!ReadLog(bytes, nullptr).accepted) {
            ++rejected;
            scratch.Keep(bytes, "rejected");
        }
        std::filesystem::remove(fileName);
    }
    std::printf("start of a log on %s: %u kills, %u of them before there was a file, %u files rejected\n",
                Scratch::FileSystem(), kills, withoutFile, rejected);
    return withoutFile > 0 && withoutFile < kills && rejected == 0 ? 0 : 1;
}
