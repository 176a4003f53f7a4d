#include "reader/Copies.h"

#include <algorithm>
#include <memory>
#include <stdexcept>
#include <type_traits>

#include <expat.h>

namespace ScrivelTest
{

using namespace ScrivelReader;

std::optional<std::size_t> MemoryLog::ReadAt(std::uint64_t offset, char* buffer, std::size_t size)
{
    return bytes.copy(buffer, size, std::min(std::size_t(offset), bytes.size()));
}

namespace
{

template <typename Copying>
Copy CopyOf(Copying copying)
{
    Copy copy;
    std::string error;
    const auto output = [&](std::string_view bytes) {
        copy.bytes += bytes;
        return true;
    };
    const auto tell = [&](const Damage& damage) { copy.damages.push_back(damage); };
    const std::optional<Copied> copied = copying(output, tell, error);
    if (!copied) {
        throw std::logic_error("copying from memory to memory failed");
    }
    copy.copied = *copied;
    return copy;
}

}  // namespace

Copy RecoveredFrom(std::string_view log)
{
    MemoryLog bytes(log);
    return CopyOf([&](const CopyOutput& output, const DamageHandler& tell, std::string& error) {
        return Recover(bytes, output, tell, error);
    });
}

Copy CutFrom(std::string_view log, const FilterText& text)
{
    std::string wrong;
    const auto filter = CallFilter::Make(text, wrong);
    if (!filter) {
        throw std::logic_error(wrong);
    }
    MemoryLog bytes(log);
    return CopyOf([&](const CopyOutput& output, const DamageHandler& tell, std::string& error) {
        return Cut(bytes, *filter, output, tell, error);
    });
}

std::string ExpatError(std::string_view bytes)
{
    const std::unique_ptr<std::remove_pointer_t<XML_Parser>, decltype(&XML_ParserFree)> parser(
        XML_ParserCreate(nullptr), XML_ParserFree);
    if (XML_Parse(parser.get(), bytes.data(), int(bytes.size()), 1) == XML_STATUS_OK) {
        return {};
    }
    return XML_ErrorString(XML_GetErrorCode(parser.get()));
}

}  // namespace ScrivelTest
