// The process that a log's header names, among those of this host. Tested by
// tests/reader/LogProcessTest.cpp.

#include "scrivel/LogProcess.h"

#include <cerrno>
#include <csignal>
#include <dirent.h>
#include <fstream>
#include <iterator>
#include <limits>
#include <memory>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

namespace ScrivelReader
{

namespace
{

std::string HostName()
{
    char name[256] = {};
    return gethostname(name, sizeof name - 1) == 0 ? name : "";
}

bool Lives(pid_t process)
{
    return kill(process, 0) == 0 || errno == EPERM;
}

/// It has ended, and nobody has asked yet how: its number is taken all the same.
bool HasEnded(const std::string& folder)
{
    std::ifstream file(folder + "/stat");
    const std::string text((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
    const std::size_t name = text.rfind(") ");
    return name != std::string::npos && text.size() > name + 2 && text[name + 2] == 'Z';
}

}  // namespace

Writer FindWriter(const LogHeader& header, int descriptor)
{
    struct stat log
    {
    };
    if (!header.processId || *header.processId == 0 ||
        *header.processId > std::uint64_t(std::numeric_limits<pid_t>::max()) || header.hostName.empty() ||
        header.hostName != HostName() || fstat(descriptor, &log) != 0)
        return Writer::Elsewhere;
    const auto process = pid_t(*header.processId);
    const std::string folder = "/proc/" + std::to_string(process);
    if (!Lives(process) || HasEnded(folder))
        return Writer::Gone;

    const std::string files = folder + "/fd";
    const std::unique_ptr<DIR, int (*)(DIR*)> list(opendir(files.c_str()), &closedir);
    if (list == nullptr)
        return Lives(process) ? Writer::Unseen : Writer::Gone;
    while (const dirent* entry = readdir(list.get())) {
        struct stat file
        {
        };
        if (stat((files + "/" + entry->d_name).c_str(), &file) == 0 && file.st_dev == log.st_dev &&
            file.st_ino == log.st_ino)
            return Writer::HasLogOpen;
    }
    return Writer::HasItNot;
}

}  // namespace ScrivelReader
