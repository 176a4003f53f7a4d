// A processor core: the RV32I instructions, 32 registers, a pc and a flat memory.

#ifndef SCRIVEL_EXAMPLES_RV32CORE_H
#define SCRIVEL_EXAMPLES_RV32CORE_H

#include <array>
#include <cstdint>
#include <optional>
#include <vector>

namespace Example
{

/// Why an instruction was not carried out, by the numbers of the architecture.
enum class Cause : std::uint32_t
{
    FetchMisaligned = 0,
    FetchFault = 1,
    IllegalInstruction = 2,
    Breakpoint = 3,
    LoadMisaligned = 4,
    LoadFault = 5,
    StoreMisaligned = 6,
    StoreFault = 7,
    EnvironmentCall = 11
};

/// An access to data by the instruction that ran last.
struct DataAccess
{
    std::uint32_t address;
    std::uint32_t size;
    bool isWrite;
};

class Rv32Core
{
public:
    static constexpr std::uint32_t memorySize = 64 * 1024;

    std::array<std::uint32_t, 32> registers{};  // that of index 0 is put back to 0 after each instruction
    std::uint32_t pc = 0;
    std::vector<std::uint8_t> memory = std::vector<std::uint8_t>(memorySize);

    /// All registers and the pc to 0; the memory stays.
    void Reset();

    /// Runs one instruction. On an exception the pc stays at it, and nothing else has changed.
    std::optional<Cause> Step();

    /// Of the last step, when it loaded or stored.
    const std::optional<DataAccess>& LastAccess() const { return access; }

    std::uint64_t Cycles() const { return cycles; }

private:
    std::optional<Cause> Execute(std::uint32_t instruction);
    std::optional<Cause> Load(std::uint32_t address, std::uint32_t width, std::uint32_t& target);
    std::optional<Cause> Store(std::uint32_t address, std::uint32_t width, std::uint32_t value);
    std::optional<Cause> JumpTo(std::uint32_t address);

    std::uint32_t next = 0;
    std::optional<DataAccess> access;
    std::uint64_t cycles = 0;
};

}  // namespace Example

#endif
