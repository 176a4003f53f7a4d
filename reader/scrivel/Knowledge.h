// What a debugger had seen of its target: the values of registers and memory that its calls read and
// wrote, each with the call it comes from; and what the target had described.
//
//     class Session : public ScrivelReader::LogHandler
//     {
//         void Entered(const ScrivelReader::Call& call) override { known.Entered(call); }
//         void Ended(ScrivelReader::Call& call) override
//         {
//             known.Ended(call, known.AccessBy(call));
//         }
//
//         ScrivelReader::Knowledge known;
//     };
//
// A value is stale when the target has run since, or ran when it was seen. That the target runs is told
// by calls of the names that LetsTargetRun knows, and by the modes that the log names.

#ifndef SCRIVEL_READER_KNOWLEDGE_H
#define SCRIVEL_READER_KNOWLEDGE_H

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "scrivel/Access.h"

namespace ScrivelReader
{

/// Where a value comes from.
struct Source
{
    std::uint64_t call = 0;
    std::uint32_t occurrence = 1;
    Way way = Way::Read;
    bool succeeded = true;
    std::uint64_t runs = 0;  ///< Knowledge::Runs() by then
    bool whileRunning = false;
    std::uint64_t order = 0;  ///< rises from one call to the next
};

struct KnownRegister
{
    std::string name;  ///< empty when the log never gave one
    std::optional<std::uint64_t> number;
    std::uint64_t offset128 = 0;
    std::uint64_t bits = 0;  ///< 0 when the target didn't say
    bool isProgramCounter = false;
    std::string bytes;  ///< 16, the most significant first; empty after a refused access alone
    Source source;      ///< of the value
    /// The last access, when it failed and came after the value.
    std::optional<Source> refused;
};

struct KnownMemory
{
    std::string space;
    std::string spaceName;
    std::uint64_t address = 0;
    std::uint64_t size = 0;
    std::string bytes;  ///< empty of a place that was touched and of which nothing is known
    Source source;
};

/// What is remembered of places in memory, by space and address; a later one takes the place of earlier
/// ones that it covers, byte by byte.
class MemoryPlaces
{
public:
    explicit MemoryPlaces(std::size_t itsMostPlaces, std::size_t itsMostBytes)
        : mostPlaces(itsMostPlaces), mostBytes(itsMostBytes)
    {
    }

    void Put(const std::string& space, std::uint64_t address, std::uint64_t size, std::string_view known,
             const Source& source);
    /// Places within a range, cut to it, by address.
    std::vector<KnownMemory> Within(const std::string& space, std::uint64_t address,
                                    std::uint64_t size) const;
    std::vector<KnownMemory> All() const;
    /// Something was left out, as there was no room for it.
    bool IsFull() const { return full; }

private:
    struct Place
    {
        std::uint64_t last;
        std::string bytes;
        Source source;
    };

    void Clear(const std::string& space, std::uint64_t first, std::uint64_t last);
    void Add(const std::string& space, std::uint64_t first, Place place);

    std::map<std::pair<std::string, std::uint64_t>, Place> places;  // by space and first address
    std::size_t mostPlaces;
    std::size_t mostBytes;
    std::size_t kept = 0;
    bool full = false;
};

class Knowledge
{
public:
    struct Limits
    {
        std::size_t registers = 16 * 1024;
        std::size_t blocks = 16 * 1024;
        std::size_t places = 32 * 1024;
        std::size_t bytes = 64 * 1024 * 1024;
    };

    Knowledge() : Knowledge(Limits()) {}
    explicit Knowledge(const Limits& itsLimits);

    void Entered(const Call& call);
    /// AccessOf, and the program counter when a result bears the name that the target gave it.
    Access AccessBy(const Call& call) const;
    void Ended(const Call& call, const Access& access);

    // ---- Registers ----------------------------------------------------------------------------------
    /// The program counter first, then what was seen last.
    std::vector<KnownRegister> Registers() const;
    /// What is known of a register that an access names; its source is empty when that is nothing.
    std::optional<KnownRegister> Find(const RegisterAccess& access) const;
    /// By name, or by number when the text is one: its number and its name as the target described it.
    std::optional<RegisterDescription> Described(std::string_view nameOrNumber) const;

    // ---- Memory -------------------------------------------------------------------------------------
    /// By space and address.
    std::vector<KnownMemory> Memory() const;
    std::vector<KnownMemory> MemoryAt(const std::string& space, std::uint64_t address,
                                      std::uint64_t size) const;
    /// Who touched these addresses last, whether anything came of it or not; by address.
    std::vector<KnownMemory> Touched(const std::string& space, std::uint64_t address,
                                     std::uint64_t size) const;
    /// The smallest block that the target had described there.
    std::optional<MemoryBlock> BlockAt(const std::string& space, std::uint64_t address) const;
    std::string SpaceName(const std::string& space) const;
    /// Not everything could be kept.
    bool IsIncomplete() const;

    // ---- Age ----------------------------------------------------------------------------------------
    bool IsStale(const Source& source) const;
    /// The call that let the target run last.
    std::optional<std::uint64_t> LastRun() const { return lastRun; }
    /// Rises whenever the target may have changed what was seen, also twice in one call.
    std::uint64_t Runs() const { return runs; }
    /// How many calls let the target run, one after another.
    std::uint64_t Starts() const { return starts; }
    /// As far as the log tells.
    bool IsRunning() const { return running; }

private:
    using RegisterKey = std::pair<std::uint64_t, std::uint64_t>;  // number, offset128

    void LetRun(std::uint64_t call);
    void FollowMode(const Call& call, const Access& access);
    Source SourceOf(const Call& call, Way way) const;
    KnownRegister* Register(const RegisterAccess& access);

    Limits limits;
    std::map<RegisterKey, KnownRegister> registers;
    std::map<std::uint64_t, RegisterDescription> descriptions;
    std::map<std::string, std::uint64_t, std::less<>> numbers;  // of registers, by name
    std::vector<MemoryBlock> blocks;
    std::map<std::string, std::string> spaceNames;
    MemoryPlaces values;
    MemoryPlaces touched;
    bool full = false;

    std::uint64_t runs = 0;
    std::uint64_t starts = 0;
    std::uint64_t order = 0;
    bool running = false;
    std::optional<std::uint64_t> lastRun;
    std::map<std::uint64_t, std::uint64_t> starters;  // entry of a call that lets run -> modes by then
    std::uint64_t modes = 0;                          // that the log has named so far
};

}  // namespace ScrivelReader

#endif
