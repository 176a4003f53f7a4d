// Single calls of a log file of any size, without reading the file: the numbers of calls rise through a
// log, so a search that halves takes thirty reads for a gigabyte. Descriptors are read by pread only.

#ifndef SCRIVEL_READER_LOGFILE_H
#define SCRIVEL_READER_LOGFILE_H

#include <cstdint>
#include <optional>

#include "scrivel/Call.h"

namespace ScrivelReader
{

/// Where the first element of the call begins, or, when that call isn't there, of the next one: the
/// offset of its <. Nothing when no line of the file begins a call as the writer lays it out, or every
/// call has a lower number; the whole log must then be read.
std::optional<std::uint64_t> FindCall(int descriptor, std::uint64_t size, std::uint64_t number);

/// Where a call stands in a log.
struct CallPlace
{
    std::uint64_t from = 0;   ///< of the elements that were left for it; begin when there is none
    std::uint64_t begin = 0;  ///< of its first element: the offset of the <
    std::uint64_t end = 0;    ///< after its last element
};

/// The call at this place. Its thread, ancestors, entry and occurrence take the whole log to know.
/// Nothing when no call begins there.
std::optional<Call> ReadCall(int descriptor, const CallPlace& place, const Tree::Limits& limits = {});

}  // namespace ScrivelReader

#endif
