// Files of the contenders: the scratch folder on tmpfs, and the floor's way to write.

#ifndef SCRIVEL_BENCH_FILE_H
#define SCRIVEL_BENCH_FILE_H

#include <cstddef>
#include <string>
#include <string_view>

#include <sys/types.h>

namespace ScrivelBench
{

/// A folder of this process's own on tmpfs, in which the process works while this lives.
class Scratch
{
public:
    Scratch();
    ~Scratch();
    Scratch(const Scratch&) = delete;
    Scratch& operator=(const Scratch&) = delete;

private:
    std::string folder;
};

/// Every log has the file bench-<process id>.xml and the root element bench-<process id>.
constexpr const char* logName = "bench";
std::string RootName();
std::string LogFileName();

/// A file written with one pwrite a flush, at the place where the closing text of the last flush begins.
class FloorFile
{
public:
    /// Creates the file, with the header and the root start tag.
    FloorFile();
    ~FloorFile();
    FloorFile(const FloorFile&) = delete;
    FloorFile& operator=(const FloorFile&) = delete;

    /// The last `closing` bytes of the text are the next to be overwritten.
    void Write(std::string_view text, std::size_t closing);

    /// The text that ends the file.
    const std::string& RootEnd() const { return rootEnd; }

private:
    int descriptor;
    off_t place = 0;
    std::string rootEnd;
};

}  // namespace ScrivelBench

#endif
