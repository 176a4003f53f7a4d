// Makes the folder of a run, and keeps the files that a crash program finds fault with.

#include "crash/Scratch.h"

#include <cstdio>
#include <fstream>
#include <stdexcept>

#include <linux/magic.h>
#include <stdlib.h>
#include <sys/vfs.h>

namespace ScrivelTest
{

namespace fs = std::filesystem;

Scratch::Scratch(const std::string& parent) : start(fs::current_path())
{
    std::string name = fs::absolute(parent) / "scrivel-crash-XXXXXX";
    if (mkdtemp(name.data()) == nullptr) {
        throw std::runtime_error("no scratch folder " + name);
    }
    folder = name;
    fs::current_path(folder);
}

Scratch::~Scratch()
{
    fs::current_path(start);
    if (kept == 0) {
        fs::remove_all(folder);
    }
}

void Scratch::Keep(const std::string& bytes, const std::string& problem)
{
    constexpr unsigned int most = 10;
    if (kept < most) {
        const fs::path name = folder / ("kept-" + std::to_string(++kept) + ".xml");
        std::ofstream(name, std::ios::binary) << bytes;
        std::fprintf(stderr, "%s: see %s\n", problem.c_str(), name.c_str());
    }
}

const char* Scratch::FileSystem()
{
    struct statfs status;
    return statfs(".", &status) == 0 && status.f_type == TMPFS_MAGIC ? "tmpfs" : "disk";
}

}  // namespace ScrivelTest
