// The folder of a log and its files, none of which overwrites another. Tested by
// tests/layer/LogFilesTest.cpp.

#include "scrivel/LogFiles.h"

#include "scrivel/LogNames.h"

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <iostream>
#include <system_error>
#include <utility>

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
    const std::string end = std::string("-").append(std::to_string(getpid())).append(".xml");
    logName = wanted;
    // When no file can be made for another reason the generator that opens the log reports it.
    for (unsigned int next = 2; !MakeFile(folder / (logName + end)) && errno == EEXIST; ++next) {
        logName = wanted + "-" + std::to_string(next);
    }
    first = (folder / (logName + end)).string();
    current = first;
    std::error_code error;
    std::filesystem::path whole = std::filesystem::absolute(first, error);
    if (error) {
        whole = first;
    }
    numbered = whole.replace_extension().string() + ".";
}

bool LogFiles::MakeNext()
{
    for (;;) {
        std::string next = numbered + std::to_string(number + 1) + ".xml";
        const bool made = MakeFile(next);
        if (!made && errno != EEXIST) {
            std::cerr << "Scrivel: Unable to make logfile \"" << next << "\": the log goes on in \""
                      << current << "\".\n    Error given by OS: " << std::strerror(errno) << std::endl;
            return false;
        }
        ++number;
        if (made) {
            current = std::move(next);
            return true;
        }
    }
}

}  // namespace Scrivel2::Layer
