// How records are filled and lists are handed out.

#ifndef SCRIVEL_EXAMPLES_RECORDS_H
#define SCRIVEL_EXAMPLES_RECORDS_H

#include <CADITypes.h>

#include <algorithm>
#include <cstdint>
#include <string_view>
#include <vector>

namespace Example
{

template <std::size_t size>
void SetText(char (&field)[size], std::string_view text)
{
    const std::size_t length = text.copy(field, size - 1);
    field[length] = '\0';
}

/// Copies at most `desired` entries from the one of that index on.
template <typename Record>
eslapi::CADIReturn_t HandOut(const std::vector<Record>& list, std::uint32_t start, std::uint32_t desired,
                             std::uint32_t* actual, Record* out)
{
    if (actual == nullptr || (out == nullptr && desired > 0) || start > list.size()) {
        return eslapi::CADI_STATUS_IllegalArgument;
    }
    *actual = std::min(desired, static_cast<std::uint32_t>(list.size() - start));
    std::copy_n(list.data() + start, *actual, out);
    return eslapi::CADI_STATUS_OK;
}

/// A record like CADIExecMode_t or CADIResetLevel_t.
template <typename Record>
Record Numbered(std::uint32_t number, std::string_view name)
{
    Record record{};
    record.number = number;
    SetText(record.name, name);
    return record;
}

}  // namespace Example

#endif
