// A folder for the logs of one run.

#ifndef SCRIVEL_TESTS_CRASH_SCRATCH_H
#define SCRIVEL_TESTS_CRASH_SCRATCH_H

#include <filesystem>
#include <string>

namespace ScrivelTest
{

/// A new folder within `parent`, the current one while this lives, then removed. The folder outlives
/// the run when something was kept in it.
class Scratch
{
public:
    explicit Scratch(const std::string& parent);
    ~Scratch();
    Scratch(const Scratch&) = delete;
    Scratch& operator=(const Scratch&) = delete;

    /// Puts a file's bytes aside for whoever looks into a failure, the first few of a run at least, and
    /// says so on standard error.
    void Keep(const std::string& bytes, const std::string& problem);

    /// The file system's name, as far as it matters here: "disk" or "tmpfs".
    static const char* FileSystem();

private:
    std::filesystem::path start;
    std::filesystem::path folder;
    unsigned int kept = 0;
};

}  // namespace ScrivelTest

#endif
