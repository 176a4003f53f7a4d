// Finds a call in a log file of any size without reading the file: the numbers of calls rise through a
// log, so a search that halves takes thirty reads for a gigabyte.

#ifndef SCRIVEL_READER_LOGFILE_H
#define SCRIVEL_READER_LOGFILE_H

#include <cstdint>
#include <optional>

namespace ScrivelReader
{

/// Where the first element of the call begins, or, when that call isn't there, of the next one: the
/// offset of its <. Nothing when no line of the file begins a call as the writer lays it out, or every
/// call has a lower number; the whole log must then be read. The descriptor is read by pread only.
std::optional<std::uint64_t> FindCall(int descriptor, std::uint64_t size, std::uint64_t number);

}  // namespace ScrivelReader

#endif
