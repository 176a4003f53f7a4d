// The folder of a log and its files, none of which overwrites another. Tested by
// tests/layer/LogFilesTest.cpp.

#include "scrivel/LogFiles.h"

#include "scrivel/LogNames.h"

#include <cerrno>
#include <filesystem>
#include <iostream>
#include <system_error>

#include <fcntl.h>
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

/// Makes the file, unless there is one.
bool MakeFile(const std::filesystem::path& file)
{
    const int descriptor = open(file.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (descriptor < 0) {
        return false;
    }
    close(descriptor);
    return true;
}

}  // namespace

LogFiles::LogFiles(const Settings& settings)
{
    if (!settings.on) {
        return;
    }
    const std::filesystem::path folder(settings.folder);
    if (!folder.empty()) {
        MakeFolder(folder);
    }
    const std::string wanted = LegalName(settings.name);
    const std::string end = "-" + std::to_string(getpid()) + ".xml";
    logName = wanted;
    // When no file can be made for another reason the generator that opens the log reports it.
    for (unsigned int next = 2; !MakeFile(folder / (logName + end)) && errno == EEXIST; ++next) {
        logName = wanted + "-" + std::to_string(next);
    }
    first = (folder / (logName + end)).string();
}

}  // namespace Scrivel2::Layer
