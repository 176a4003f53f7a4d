// The folder of a log and its files, none of which overwrites another. Tested by
// tests/layer/LogFilesTest.cpp.

#include "scrivel/LogFiles.h"

#include "scrivel/LogNames.h"

#include <cstring>
#include <filesystem>
#include <iostream>
#include <string_view>
#include <system_error>

#include <sys/stat.h>
#include <unistd.h>

namespace Scrivel2::Layer
{
namespace
{

void MakeFolder(const std::filesystem::path& folder)
{
    std::error_code error;
    std::filesystem::create_directories(folder, error);
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
        MakeFolder(folder);
    }
    std::error_code error;
    wholeFolder = std::filesystem::absolute(folder.empty() ? "." : folder, error).lexically_normal();
    if (error) {
        wholeFolder = folder;
    }
    NameFirst();
    while (Exists(place)) {
        Rename();
    }
}

void LogFiles::NameFirst()
{
    logName = logNumber == 1 ? wanted : wanted + "-" + std::to_string(logNumber);
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
