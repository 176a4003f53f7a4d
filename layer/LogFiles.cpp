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

/// A folder and those above it, as far as there are none yet; the innermost comes first.
std::vector<std::filesystem::path> Missing(const std::filesystem::path& folder)
{
    std::vector<std::filesystem::path> missing;
    std::error_code error;
    auto place = std::filesystem::absolute(folder, error);
    while (!error && !std::filesystem::exists(place, error)) {
        const auto name = place.filename();
        if (!name.empty() && name != "." && name != "..") {
            missing.push_back(place);
        }
        place = place.parent_path();
    }
    return missing;
}

void ReportFolder(const char* unableTo, const std::filesystem::path& folder, const std::error_code& error)
{
    std::cerr << "Scrivel: Unable to " << unableTo << " folder \"" << folder.string() << "\".\n"
              << "    Error given by OS: " << error.message() << std::endl;
}

/// Waits until the disk has the names of folders that have been made. False when it doesn't: then none of
/// them stays that is empty, or the next log would take it for one that the disk has.
bool Synchronise(const std::vector<std::filesystem::path>& made)
{
    for (const auto& folder : made) {
        const auto above = folder.parent_path();
        if (!SynchroniseFolder(above.string())) {
            ReportFolder("synchronise", above, {errno, std::generic_category()});
            std::for_each(made.begin(), made.end(), [](const auto& empty) { rmdir(empty.c_str()); });
            return false;
        }
    }
    return true;
}

/// False when the folder is there, but not on the disk that is to have it.
bool MakeFolder(const std::filesystem::path& folder, Durability durability)
{
    std::vector<std::filesystem::path> made;
    if (durability == Durability::Machine) {
        made = Missing(folder);
    }
    std::error_code error;
    std::filesystem::create_directories(folder, error);
    if (error) {
        ReportFolder("make", folder, error);  // opening the file fails, too
        return true;
    }
    return Synchronise(made);
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
    std::error_code error;
    // Where the current directory is gone, the folder alone.
    wholeFolder = (std::filesystem::current_path(error) / folder).string();
    canBegin = folder.empty() || MakeFolder(folder, settings.durability);
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
