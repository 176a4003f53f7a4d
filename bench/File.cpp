// The files of the contenders: a folder on tmpfs, and the floor's way to write.

#include "File.h"

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <system_error>

#include <fcntl.h>
#include <unistd.h>

namespace ScrivelBench
{

Scratch::Scratch()
{
    std::string name = "/dev/shm/scrivel-bench-XXXXXX";
    if (mkdtemp(name.data()) == nullptr) {
        throw std::system_error(errno, std::generic_category(), name);
    }
    folder = name;
    std::filesystem::current_path(folder);
}

Scratch::~Scratch()
{
    std::error_code ignored;
    std::filesystem::current_path("/", ignored);
    std::filesystem::remove_all(folder, ignored);
}

std::string RootName()
{
    static const std::string name = std::string(logName) + "-" + std::to_string(getpid());
    return name;
}

std::string LogFileName()
{
    return RootName() + ".xml";
}

FloorFile::FloorFile()
    : descriptor(open(LogFileName().c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666)),
      rootEnd("</" + RootName() + ">\n")
{
    if (descriptor < 0) {
        throw std::system_error(errno, std::generic_category(), LogFileName());
    }
    Write("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<" + RootName() + ">\n" + rootEnd, rootEnd.size());
}

FloorFile::~FloorFile()
{
    close(descriptor);
}

void FloorFile::Write(std::string_view text, std::size_t closing)
{
    if (pwrite(descriptor, text.data(), text.size(), place) != static_cast<ssize_t>(text.size())) {
        throw std::system_error(errno, std::generic_category(), "pwrite");
    }
    place += static_cast<off_t>(text.size() - closing);
}

}  // namespace ScrivelBench
