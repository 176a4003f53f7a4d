// The choices of a program and those of its environment. Tested by tests/layer/LogFilesTest.cpp
// and CallFilterTest.cpp.

#include "scrivel/LogOptions.h"

#include <cstdlib>
#include <filesystem>
#include <iostream>

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

bool IsOn(bool chosen)
{
    const std::string said = Environment("SCRIVEL_LOG");
    if (said == "on" || said == "off") {
        return said == "on";
    }
    if (!said.empty()) {
        std::cerr << "Scrivel: SCRIVEL_LOG is neither \"on\" nor \"off\": \"" << said << "\"."
                  << std::endl;
    }
    return chosen;
}

std::string ChosenCalls(const std::string& chosen)
{
    const std::string said = Environment("SCRIVEL_LOG_CALLS");
    return said.empty() ? chosen : said;
}

}  // namespace

Settings::Settings(std::string_view logName, const LogOptions& options)
    : on(IsOn(options.on)), calls(ChosenCalls(options.calls))
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
