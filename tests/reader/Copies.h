// Copies that the reader makes of a log in memory, and what expat makes of bytes.

#ifndef SCRIVEL_TESTS_READER_COPIES_H
#define SCRIVEL_TESTS_READER_COPIES_H

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "scrivel/LogCopy.h"

namespace ScrivelTest
{

/// Bytes in memory.
class MemoryLog final : public ScrivelReader::LogBytes
{
public:
    explicit MemoryLog(std::string_view itsBytes) : bytes(itsBytes) {}
    std::uint64_t Size() const override { return bytes.size(); }
    std::optional<std::size_t> ReadAt(std::uint64_t offset, char* buffer, std::size_t size) override;
    std::string Error() const override { return {}; }

private:
    std::string_view bytes;
};

struct Copy
{
    std::string bytes;
    ScrivelReader::Copied copied;
    std::vector<ScrivelReader::Damage> damages;
};

Copy RecoveredFrom(std::string_view log);
Copy CutFrom(std::string_view log, const ScrivelReader::FilterText& filter);

/// Why expat doesn't read the bytes as one document; empty when it does.
std::string ExpatError(std::string_view bytes);

}  // namespace ScrivelTest

#endif
