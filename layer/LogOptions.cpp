// The choices of a program and those of its environment. Tested by tests/layer/LogFilesTest.cpp.

#include "scrivel/LogOptions.h"

#include <cstdlib>
#include <filesystem>

#include <unistd.h>

namespace Scrivel2::Layer
{
namespace
{

/// Empty when there is no such variable, and in a program that runs with other rights than its user's.
std::string Environment(const char* variable)
{
    const bool ownRights = getuid() == geteuid() && getgid() == getegid();
    const char* const value = ownRights ? std::getenv(variable) : nullptr;
    return value == nullptr ? "" : value;
}

}  // namespace

Settings::Settings(std::string_view logName, const LogOptions& options)
{
    const std::filesystem::path given(logName);
    name = given.filename().string();
    folder = Environment("SCRIVEL_LOG_DIR");
    if (folder.empty()) {
        const std::filesystem::path chosen(options.folder);
        folder = (given.has_parent_path() ? chosen / given.parent_path() : chosen).string();
    }
}

}  // namespace Scrivel2::Layer
