// The instructions of a small core. Tested by tests/examples/Rv32CoreTest.cpp.

#include "Rv32Core.h"

namespace Example
{
namespace
{

std::uint32_t Bits(std::uint32_t word, unsigned int from, unsigned int count)
{
    return word >> from & ((1U << count) - 1);
}

/// The lowest `bits` bits as a signed number.
std::uint32_t SignExtended(std::uint32_t value, unsigned int bits)
{
    const std::uint32_t sign = 1U << (bits - 1);
    return ((value & (2 * sign - 1)) ^ sign) - sign;
}

// The constants that the formats of instructions carry.

std::uint32_t ImmediateI(std::uint32_t word)
{
    return SignExtended(word >> 20, 12);
}

std::uint32_t ImmediateS(std::uint32_t word)
{
    return SignExtended(Bits(word, 25, 7) << 5 | Bits(word, 7, 5), 12);
}

std::uint32_t ImmediateB(std::uint32_t word)
{
    return SignExtended(Bits(word, 31, 1) << 12 | Bits(word, 7, 1) << 11 | Bits(word, 25, 6) << 5 |
                            Bits(word, 8, 4) << 1,
                        13);
}

std::uint32_t ImmediateU(std::uint32_t word)
{
    return word & 0xfffff000U;
}

std::uint32_t ImmediateJ(std::uint32_t word)
{
    return SignExtended(Bits(word, 31, 1) << 20 | Bits(word, 12, 8) << 12 | Bits(word, 20, 1) << 11 |
                            Bits(word, 21, 10) << 1,
                        21);
}

bool LessSigned(std::uint32_t a, std::uint32_t b)
{
    constexpr std::uint32_t sign = 0x80000000U;
    return (a ^ sign) < (b ^ sign);
}

std::uint32_t ShiftedRightSigned(std::uint32_t value, std::uint32_t by)
{
    const std::uint32_t shifted = value >> by;
    return (value >> 31) != 0 ? shifted | ~(0xffffffffU >> by) : shifted;
}

/// Whether a branch is taken; nothing for a comparison that there isn't.
std::optional<bool> Compare(std::uint32_t function, std::uint32_t a, std::uint32_t b)
{
    switch (function) {
    case 0:
        return a == b;
    case 1:
        return a != b;
    case 4:
        return LessSigned(a, b);
    case 5:
        return !LessSigned(a, b);
    case 6:
        return a < b;
    case 7:
        return a >= b;
    default:
        return std::nullopt;
    }
}

/// The result of an operation on two values. `variant` is bit 30 of the instruction: it makes an
/// addition a subtraction and a shift to the right a signed one.
std::uint32_t Calculate(std::uint32_t function, bool variant, std::uint32_t a, std::uint32_t b)
{
    const std::uint32_t by = b & 31;
    switch (function) {
    case 0:
        return variant ? a - b : a + b;
    case 1:
        return a << by;
    case 2:
        return LessSigned(a, b) ? 1 : 0;
    case 3:
        return a < b ? 1 : 0;
    case 4:
        return a ^ b;
    case 5:
        return variant ? ShiftedRightSigned(a, by) : a >> by;
    case 6:
        return a | b;
    default:
        return a & b;
    }
}

}  // namespace

void Rv32Core::Reset()
{
    registers.fill(0);
    pc = 0;
    access.reset();
    cycles = 0;
}

std::optional<Cause> Rv32Core::Step()
{
    access.reset();
    if (pc % 4 != 0) {
        return Cause::FetchMisaligned;
    }
    if (pc > memorySize - 4) {
        return Cause::FetchFault;
    }
    std::uint32_t instruction = 0;
    for (std::uint32_t i = 4; i-- > 0;) {
        instruction = instruction << 8 | memory[pc + i];
    }
    next = pc + 4;
    if (const auto cause = Execute(instruction)) {
        return cause;
    }
    registers[0] = 0;
    pc = next;
    ++cycles;
    return std::nullopt;
}

std::optional<Cause> Rv32Core::Execute(std::uint32_t instruction)
{
    const std::uint32_t function = Bits(instruction, 12, 3);
    const std::uint32_t upper = Bits(instruction, 25, 7);
    const std::uint32_t a = registers[Bits(instruction, 15, 5)];
    const std::uint32_t b = registers[Bits(instruction, 20, 5)];
    std::uint32_t& target = registers[Bits(instruction, 7, 5)];

    switch (Bits(instruction, 0, 7)) {
    case 0x37:  // lui
        target = ImmediateU(instruction);
        return std::nullopt;
    case 0x17:  // auipc
        target = pc + ImmediateU(instruction);
        return std::nullopt;
    case 0x6f:  // jal
        if (const auto cause = JumpTo(pc + ImmediateJ(instruction))) {
            return cause;
        }
        target = pc + 4;
        return std::nullopt;
    case 0x67:  // jalr
        if (function != 0) {
            return Cause::IllegalInstruction;
        }
        if (const auto cause = JumpTo((a + ImmediateI(instruction)) & ~1U)) {
            return cause;
        }
        target = pc + 4;
        return std::nullopt;
    case 0x63:  // branches
        if (const auto taken = Compare(function, a, b)) {
            return *taken ? JumpTo(pc + ImmediateB(instruction)) : std::nullopt;
        }
        return Cause::IllegalInstruction;
    case 0x03:  // loads
        return Load(a + ImmediateI(instruction), function, target);
    case 0x23:  // stores
        return Store(a + ImmediateS(instruction), function, b);
    case 0x13: {  // operations with a constant
        const bool isShift = function == 1 || function == 5;
        const bool variant = function == 5 && upper == 0x20;
        if (isShift && upper != 0 && !variant) {
            return Cause::IllegalInstruction;
        }
        target = Calculate(function, variant, a, ImmediateI(instruction));
        return std::nullopt;
    }
    case 0x33: {  // operations with two registers
        const bool variant = upper == 0x20 && (function == 0 || function == 5);
        if (upper != 0 && !variant) {
            return Cause::IllegalInstruction;
        }
        target = Calculate(function, variant, a, b);
        return std::nullopt;
    }
    case 0x0f:  // fence: memory is in order
        return std::nullopt;
    case 0x73:
        if (instruction == 0x00000073) {
            return Cause::EnvironmentCall;
        }
        if (instruction == 0x00100073) {
            return Cause::Breakpoint;
        }
        return Cause::IllegalInstruction;
    default:
        return Cause::IllegalInstruction;
    }
}

std::optional<Cause> Rv32Core::JumpTo(std::uint32_t address)
{
    if (address % 4 != 0) {
        return Cause::FetchMisaligned;
    }
    next = address;
    return std::nullopt;
}

std::optional<Cause> Rv32Core::Load(std::uint32_t address, std::uint32_t width, std::uint32_t& target)
{
    // Widths 0 to 2 are 1, 2 and 4 bytes with sign; 4 and 5 are 1 and 2 bytes without.
    if (width == 3 || width > 5) {
        return Cause::IllegalInstruction;
    }
    const std::uint32_t size = 1U << (width & 3);
    if (address % size != 0) {
        return Cause::LoadMisaligned;
    }
    if (address > memorySize - size) {
        return Cause::LoadFault;
    }
    std::uint32_t value = 0;
    for (std::uint32_t i = size; i-- > 0;) {
        value = value << 8 | memory[address + i];
    }
    target = width < 2 ? SignExtended(value, 8 * size) : value;
    access = DataAccess{address, size, false};
    return std::nullopt;
}

std::optional<Cause> Rv32Core::Store(std::uint32_t address, std::uint32_t width, std::uint32_t value)
{
    if (width > 2) {
        return Cause::IllegalInstruction;
    }
    const std::uint32_t size = 1U << width;
    if (address % size != 0) {
        return Cause::StoreMisaligned;
    }
    if (address > memorySize - size) {
        return Cause::StoreFault;
    }
    for (std::uint32_t i = 0; i < size; ++i, value >>= 8) {
        memory[address + i] = static_cast<std::uint8_t>(value);
    }
    access = DataAccess{address, size, true};
    return std::nullopt;
}

}  // namespace Example
