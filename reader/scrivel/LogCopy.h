// Copies of logs: a whole one of a damaged one, a small one of a large one. A copy is made of the bytes
// of the log as they stand: nothing is parsed and written anew.

#ifndef SCRIVEL_READER_LOGCOPY_H
#define SCRIVEL_READER_LOGCOPY_H

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "scrivel/Call.h"
#include "scrivel/CallFilter.h"

namespace ScrivelReader
{

/// A log that is read more than once, and at any place.
class LogBytes
{
public:
    virtual ~LogBytes() = default;

    virtual std::uint64_t Size() const = 0;
    /// How many bytes were read; 0 at the end; nothing when reading failed, and Error() says why.
    virtual std::optional<std::size_t> ReadAt(std::uint64_t offset, char* buffer, std::size_t size) = 0;
    virtual std::string Error() const = 0;
    /// Why the log ends there though more of it was to come; empty when that is all of it.
    virtual std::string CutOff() const { return {}; }
};

/// Where the copy goes. False ends copying.
using CopyOutput = std::function<bool(std::string_view)>;
/// Hears of each damage of the log that is being copied.
using DamageHandler = std::function<void(const Damage&)>;
/// Whether a call is to be copied.
using CallChoice = std::function<bool(const Call&)>;

struct Copied
{
    LogEnd end;                  ///< of the log that was read, not of its copy
    std::uint64_t calls = 0;     ///< that the copy holds
    std::uint64_t elements = 0;  ///< of these calls
    std::uint64_t dropped = 0;   ///< bytes that were damaged, or stood between damaged ones
};

/// Writes a document with all of a log but its damage, and a comment in place of each. A log without
/// damage is copied byte for byte. Nothing when reading fails, and error says why, or when the output
/// ends it.
std::optional<Copied> Recover(LogBytes& log, const CopyOutput& output, const DamageHandler& tell,
                              std::string& error);

/// Writes a log of the calls that a filter leaves: all elements of each, what stands between calls right
/// before it, and comments of interrupted and continued calls where they are now. When it leaves no
/// call, nothing is written.
std::optional<Copied> Cut(LogBytes& log, const CallFilter& filter, const CopyOutput& output,
                          const DamageHandler& tell, std::string& error);
/// Of the calls that are chosen by what they are without their contents.
std::optional<Copied> Cut(LogBytes& log, const CallChoice& choice, const CopyOutput& output,
                          const DamageHandler& tell, std::string& error);

}  // namespace ScrivelReader

#endif
