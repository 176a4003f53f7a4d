// What one call did to the target, read off the structure of its records; names of calls and arguments
// are a layer's own and mean nothing here:
//
//     regNumber and bytes side by side        a register's value
//     regNumber and bitsWide side by side     a register's description
//     spaceId and addr, maybe in a location   an address, when it is an argument of its own; a
//                                             breakpoint's, deeper, is not touched
//     an array of 0xNN                        the bytes at that address
//     startAddr and endAddr side by side      a block of memory
//     CADI_EXECMODE_...                       the mode that the target is in
//
// Among the arguments a value is written, among the results it is read. Every byte counts as one address:
// of a memory whose units are wider only an access's first address is right.

#ifndef SCRIVEL_READER_ACCESS_H
#define SCRIVEL_READER_ACCESS_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "scrivel/Call.h"

namespace ScrivelReader
{

enum class Way
{
    Read,
    Wrote
};

struct RegisterAccess
{
    Way way = Way::Read;
    std::string name;  ///< as the log has it; empty when it has only the number
    std::optional<std::uint64_t> number;
    std::uint64_t offset128 = 0;  ///< which 128 bits of a wider register
    /// The 16 bytes, the most significant first; empty when no value came, as of a read that failed.
    std::string bytes;
};

struct MemoryAccess
{
    Way way = Way::Read;
    std::string space;      ///< the spaceId
    std::string spaceName;  ///< empty when the log has none
    std::uint64_t address = 0;
    std::uint64_t size = 0;  ///< bytes moved; asked for, when none came
    std::string bytes;       ///< them, as far as the reader's limits kept them; empty when none came
};

/// The last address of so many bytes, one at least; none lies beyond the end of the address space.
inline std::uint64_t LastAddress(std::uint64_t address, std::uint64_t size)
{
    const std::uint64_t last = address + (size - 1);
    return last < address ? ~std::uint64_t(0) : last;
}

struct MemoryBlock
{
    std::string name;
    std::string description;
    std::string space;  ///< the spaceId that was asked for; empty when the call doesn't say
    std::uint64_t first = 0;
    std::uint64_t last = 0;
    std::uint64_t call = 0;  ///< the call that described it
};

struct RegisterDescription
{
    std::string name;
    std::uint64_t number = 0;
    std::uint64_t bits = 0;
    bool isProgramCounter = false;
};

/// Everything that one call touched or described, in the order of the log.
struct Access
{
    std::vector<RegisterAccess> registers;
    std::vector<MemoryAccess> memory;
    std::vector<MemoryBlock> blocks;
    std::vector<RegisterDescription> descriptions;
    /// Run of CADI_EXECMODE_Run, when the call names one mode; empty otherwise.
    std::string mode;
};

/// Of a call that was read with its contents. Whether the target did what it was asked is the call's
/// status: see Succeeded.
Access AccessOf(const Call& call);

/// It returned, and with no status that tells of a failure.
bool Succeeded(const Call& call);

/// Whether a call of this name makes the target run, or changes its registers and memory otherwise:
/// ...Continue, ...SingleStep, ...Reset, ...LoadApplication. The one thing that only names tell.
bool LetsTargetRun(std::string_view callName);

}  // namespace ScrivelReader

#endif
