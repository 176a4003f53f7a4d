// The folder of a log and its files, none of which overwrites another. Tested by
// tests/layer/LogFilesTest.cpp and tests/layer/DurabilityTest.cpp.

#include "scrivel/LogFiles.h"

#include "scrivel/LogNames.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <iostream>
#include <string_view>
#include <system_error>
#include <vector>

#include <sys/stat.h>
#include <unistd.h>

namespace Scrivel2::Layer
{
namespace
{

/// The folders that will have a new name in them when this one has been made.
std::vector<std::string> FoldersToChange(const std::filesystem::path& folder)
{
    std::vector<std::string> changed;
    std::error_code error;
    auto missing = std::filesystem::absolute(folder, error);
    while (!error && !std::filesystem::exists(missing, error)) {
        const auto name = missing.filename();
        missing = missing.parent_path();
        if (!name.empty() && name != "." && name != "..") {
            changed.push_back(missing.string());
        }
    }
    return changed;
}

void MakeFolder(const std::filesystem::path& folder, Durability durability)
{
    std::vector<std::string> changed;
    if (durability == Durability::Machine) {
        changed = FoldersToChange(folder);
    }
    std::error_code error;
    std::filesystem::create_directories(folder, error);
    if (!error && !std::all_of(changed.begin(), changed.end(), SynchroniseFolder)) {
        error = {errno, std::generic_category()};
    }
    if (error) {
        std::cerr << "Scrivel: Unable to make folder \"" << folder.string() << "\".\n"
                  << "    Error given by OS: " << error.message() << std::endl;
    }
}

bool Exists(const std::string& file)
{
    struct stat status;
    return lstat(file.c_str(), &status) == 0;
}

std::string InFolder(const std::string& folder, const std::string& name)
{
    return (std::filesystem::path(folder) / name).string();
}

}  // namespace

LogFiles::LogFiles(const Settings& settings)
{
    if (!settings.on) {
        return;
    }
    wanted = LegalName(settings.name);
    folder = settings.folder;
    end = std::string("-").append(std::to_string(getpid())).append(".xml");
    if (!folder.empty()) {
        MakeFolder(folder, settings.durability);
    }
    std::error_code error;
    // Where the current directory is gone, the folder alone.
    wholeFolder = (std::filesystem::current_path(error) / folder).string();
    NameFirst();
    while (Exists(place)) {
        Rename();
    }
}

void LogFiles::NameFirst()
{
    logName = wanted;
    if (logNumber > 1) {
        logName.append("-").append(std::to_string(logNumber));
    }
    first = InFolder(folder, logName + end);
    place = InFolder(wholeFolder, logName + end);
    current = first;
    NameNext();
}

void LogFiles::Rename()
{
    ++logNumber;
    NameFirst();
}

void LogFiles::NameNext()
{
    const std::string_view suffix = ".xml";
    next = place.substr(0, place.size() - suffix.size()) + "." + std::to_string(nextNumber) +
           std::string(suffix);
}

void LogFiles::RenameNext()
{
    ++nextNumber;
    NameNext();
}

void LogFiles::GoOn()
{
    current = next;
    RenameNext();
}

void LogFiles::Report(int problem) const
{
    std::cerr << "Scrivel: Unable to open logfile \"" << first << "\".\n"
              << "    Error given by OS: " << std::strerror(problem) << std::endl;
}

void LogFiles::ReportNext(int problem) const
{
    std::cerr << "Scrivel: Unable to make logfile \"" << next << "\": the log goes on in \"" << current
              << "\".\n    Error given by OS: " << std::strerror(problem) << std::endl;
}

}  // namespace Scrivel2::Layer
