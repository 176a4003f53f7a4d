// A file that can be read at any place, as copies of logs need it.

#ifndef SCRIVEL_TOOL_FILEBYTES_H
#define SCRIVEL_TOOL_FILEBYTES_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include "Terminal.h"
#include "scrivel/LogCopy.h"
#include "scrivel/LogInput.h"

namespace ScrivelTool
{

/// Shows how far it was read. The descriptor stays the caller's.
class FileBytes final : public ScrivelReader::LogBytes
{
public:
    FileBytes(int itsDescriptor, const std::string& itsPath, Terminal& itsTerminal);
    /// Of a log that can be read at any place.
    FileBytes(const ScrivelReader::LogInput& input, const std::string& itsPath, Terminal& itsTerminal);

    std::uint64_t Size() const override { return size; }
    std::optional<std::size_t> ReadAt(std::uint64_t offset, char* buffer, std::size_t count) override;
    std::string Error() const override { return error; }
    std::string CutOff() const override { return cutOff; }

private:
    const int descriptor;
    const std::string& path;
    Terminal& terminal;
    std::uint64_t size = 0;
    std::string error;
    std::string cutOff;
};

}  // namespace ScrivelTool

#endif
