// The simulated core of the example session, instruction by instruction.

#include "Rv32Core.h"

#include "CrcProgram.h"
#include "DebugSession.h"

#include <gtest/gtest.h>

using namespace Example;

namespace
{

constexpr std::uint32_t start = 0x100;

void StoreWord(Rv32Core& core, std::uint32_t address, std::uint32_t word)
{
    for (std::uint32_t i = 0; i < 4; ++i, word >>= 8) {
        core.memory[address + i] = static_cast<std::uint8_t>(word);
    }
}

/// A core that is about to run one instruction, with values in x1 and x2.
Rv32Core Before(std::uint32_t instruction, std::uint32_t a, std::uint32_t b)
{
    Rv32Core core;
    StoreWord(core, start, instruction);
    core.pc = start;
    core.registers[1] = a;
    core.registers[2] = b;
    return core;
}

std::uint32_t ResultOf(std::uint32_t instruction, std::uint32_t a, std::uint32_t b = 0)
{
    Rv32Core core = Before(instruction, a, b);
    EXPECT_EQ(core.Step(), std::nullopt);
    EXPECT_EQ(core.pc, start + 4);
    return core.registers[3];
}

std::uint32_t PcAfter(std::uint32_t instruction, std::uint32_t a, std::uint32_t b = 0)
{
    Rv32Core core = Before(instruction, a, b);
    EXPECT_EQ(core.Step(), std::nullopt);
    return core.pc;
}

std::optional<Cause> CauseOf(std::uint32_t instruction, std::uint32_t a = 0, std::uint32_t b = 0)
{
    Rv32Core core = Before(instruction, a, b);
    const auto cause = core.Step();
    EXPECT_EQ(core.pc, start);
    EXPECT_EQ(core.registers[3], 0U);
    return cause;
}

TEST(Rv32Core, CalculatesWithTwoRegisters)
{
    EXPECT_EQ(ResultOf(0x002081b3, 7, 0xfffffffe), 5U);                    // add
    EXPECT_EQ(ResultOf(0x402081b3, 7, 9), 0xfffffffeU);                    // sub
    EXPECT_EQ(ResultOf(0x002091b3, 3, 33), 6U);                            // sll
    EXPECT_EQ(ResultOf(0x0020a1b3, 0xffffffff, 1), 1U);                    // slt
    EXPECT_EQ(ResultOf(0x0020b1b3, 0xffffffff, 1), 0U);                    // sltu
    EXPECT_EQ(ResultOf(0x0020c1b3, 0xff00ff00, 0x0ff00ff0), 0xf0f0f0f0U);  // xor
    EXPECT_EQ(ResultOf(0x0020d1b3, 0x80000000, 4), 0x08000000U);           // srl
    EXPECT_EQ(ResultOf(0x4020d1b3, 0x80000000, 4), 0xf8000000U);           // sra
    EXPECT_EQ(ResultOf(0x0020e1b3, 0xf0, 0x0f), 0xffU);                    // or
    EXPECT_EQ(ResultOf(0x0020f1b3, 0xff, 0x3c), 0x3cU);                    // and
}

TEST(Rv32Core, CalculatesWithAConstant)
{
    EXPECT_EQ(ResultOf(0xffb08193, 3), 0xfffffffeU);           // addi -5
    EXPECT_EQ(ResultOf(0xffb0a193, 0xfffffffa), 1U);           // slti -5
    EXPECT_EQ(ResultOf(0xffb0b193, 0xfffffffc), 0U);           // sltiu -5
    EXPECT_EQ(ResultOf(0xffb0c193, 0), 0xfffffffbU);           // xori -5
    EXPECT_EQ(ResultOf(0x1230e193, 0x400), 0x523U);            // ori 0x123
    EXPECT_EQ(ResultOf(0x7f00f193, 0xfff), 0x7f0U);            // andi 0x7f0
    EXPECT_EQ(ResultOf(0x00409193, 0x12345678), 0x23456780U);  // slli 4
    EXPECT_EQ(ResultOf(0x0040d193, 0x80000000), 0x08000000U);  // srli 4
    EXPECT_EQ(ResultOf(0x4040d193, 0x80000000), 0xf8000000U);  // srai 4
    EXPECT_EQ(ResultOf(0x800011b7, 0), 0x80001000U);           // lui 0x80001
    EXPECT_EQ(ResultOf(0x00001197, 0), start + 0x1000);        // auipc 1
}

TEST(Rv32Core, LoadsWithAndWithoutSign)
{
    const auto loaded = [](std::uint32_t instruction) {
        Rv32Core core = Before(instruction, 0x2000, 0);
        core.memory[0x1ffc] = 0x80;
        core.memory[0x2002] = 0x34;
        core.memory[0x2003] = 0xf2;
        StoreWord(core, 0x2008, 0xdeadbeef);
        EXPECT_EQ(core.Step(), std::nullopt);
        EXPECT_FALSE(core.LastAccess()->isWrite);
        return core.registers[3];
    };
    EXPECT_EQ(loaded(0xffc08183), 0xffffff80U);  // lb -4
    EXPECT_EQ(loaded(0xffc0c183), 0x80U);        // lbu -4
    EXPECT_EQ(loaded(0x00209183), 0xfffff234U);  // lh 2
    EXPECT_EQ(loaded(0x0020d183), 0xf234U);      // lhu 2
    EXPECT_EQ(loaded(0x0080a183), 0xdeadbeefU);  // lw 8
}

TEST(Rv32Core, StoresAsManyBytesAsAsked)
{
    const auto stored = [](std::uint32_t instruction, std::uint32_t address) {
        Rv32Core core = Before(instruction, 0x2000, 0x12345678);
        EXPECT_EQ(core.Step(), std::nullopt);
        EXPECT_EQ(core.LastAccess()->address, address);
        EXPECT_TRUE(core.LastAccess()->isWrite);
        return std::vector<std::uint8_t>(&core.memory[address], &core.memory[address + 5]);
    };
    EXPECT_EQ(stored(0xfe208e23, 0x1ffc), (std::vector<std::uint8_t>{0x78, 0, 0, 0, 0}));     // sb -4
    EXPECT_EQ(stored(0x00209123, 0x2002), (std::vector<std::uint8_t>{0x78, 0x56, 0, 0, 0}));  // sh 2
    EXPECT_EQ(stored(0x0020a423, 0x2008),
              (std::vector<std::uint8_t>{0x78, 0x56, 0x34, 0x12, 0}));  // sw 8
}

TEST(Rv32Core, BranchesWhenTheComparisonHolds)
{
    EXPECT_EQ(PcAfter(0x00208863, 5, 5), start + 16);  // beq
    EXPECT_EQ(PcAfter(0x00208863, 5, 6), start + 4);
    EXPECT_EQ(PcAfter(0x00209863, 5, 6), start + 16);           // bne
    EXPECT_EQ(PcAfter(0x0020c863, 0xffffffff, 1), start + 16);  // blt
    EXPECT_EQ(PcAfter(0x0020d863, 0xffffffff, 1), start + 4);   // bge
    EXPECT_EQ(PcAfter(0x0020d863, 1, 1), start + 16);
    EXPECT_EQ(PcAfter(0xfe20e8e3, 1, 0xffffffff), start - 16);  // bltu
    EXPECT_EQ(PcAfter(0xfe20f8e3, 1, 0xffffffff), start + 4);   // bgeu
}

TEST(Rv32Core, JumpsAndKeepsTheWayBack)
{
    Rv32Core core = Before(0x001001ef, 0, 0);  // jal 0x800
    EXPECT_EQ(core.Step(), std::nullopt);
    EXPECT_EQ(core.pc, start + 0x800);
    EXPECT_EQ(core.registers[3], start + 4);

    core = Before(0x008081e7, 0x3001, 0);  // jalr 8: the lowest bit is dropped
    EXPECT_EQ(core.Step(), std::nullopt);
    EXPECT_EQ(core.pc, 0x3008U);
    EXPECT_EQ(core.registers[3], start + 4);
}

TEST(Rv32Core, RegisterZeroStaysZero)
{
    Rv32Core core = Before(0x00500013, 0, 0);  // addi x0, x0, 5
    EXPECT_EQ(core.Step(), std::nullopt);
    EXPECT_EQ(core.registers[0], 0U);
}

TEST(Rv32Core, FenceDoesNothing)
{
    EXPECT_EQ(PcAfter(0x0ff0000f, 0), start + 4);
}

TEST(Rv32Core, ExceptionsLeaveEverythingAsItWas)
{
    EXPECT_EQ(CauseOf(0x00000073), Cause::EnvironmentCall);
    EXPECT_EQ(CauseOf(0x00100073), Cause::Breakpoint);
    EXPECT_EQ(CauseOf(0x00000000), Cause::IllegalInstruction);
    EXPECT_EQ(CauseOf(0xffffffff), Cause::IllegalInstruction);
    EXPECT_EQ(CauseOf(0x022081b3), Cause::IllegalInstruction);  // mul
    EXPECT_EQ(CauseOf(0x02409193), Cause::IllegalInstruction);  // slli of another width
    EXPECT_EQ(CauseOf(0x0020a863), Cause::IllegalInstruction);  // a branch that there isn't
    EXPECT_EQ(CauseOf(0x0000b183), Cause::IllegalInstruction);  // ld
    EXPECT_EQ(CauseOf(0x0020b423), Cause::IllegalInstruction);  // sd
    EXPECT_EQ(CauseOf(0x008091e7), Cause::IllegalInstruction);  // jalr of another kind
    EXPECT_EQ(CauseOf(0x30200073), Cause::IllegalInstruction);  // mret
    EXPECT_EQ(CauseOf(0x0020006f), Cause::FetchMisaligned);     // jal x0, 2
    EXPECT_EQ(CauseOf(0x0080a183, 0x2001), Cause::LoadMisaligned);
    EXPECT_EQ(CauseOf(0x0080a183, 0x10000), Cause::LoadFault);
    EXPECT_EQ(CauseOf(0x0020a423, 0x2001), Cause::StoreMisaligned);
    EXPECT_EQ(CauseOf(0x0020a423, 0xfffffff0), Cause::StoreFault);
}

TEST(Rv32Core, FetchOutsideTheMemoryIsAFault)
{
    Rv32Core core;
    core.pc = Rv32Core::memorySize;
    EXPECT_EQ(core.Step(), Cause::FetchFault);
    core.pc = 2;
    EXPECT_EQ(core.Step(), Cause::FetchMisaligned);
}

TEST(CrcProgram, LeavesTheCrcOfItsText)
{
    constexpr std::uint32_t knownCrc = 0x414fa339;
    EXPECT_EQ(Crc32(crcText), knownCrc);
    EXPECT_EQ(Crc32("123456789"), 0xcbf43926U);

    Rv32Core core;
    std::uint32_t address = crcCodeAddress;
    for (const std::uint32_t word : CrcCode()) {
        StoreWord(core, address, word);
        address += 4;
    }
    std::copy(crcText.begin(), crcText.end(), core.memory.begin() + crcTextAddress);
    std::optional<Cause> cause;
    for (int steps = 0; !cause && steps < 10000; ++steps) {
        cause = core.Step();
    }
    EXPECT_EQ(cause, Cause::EnvironmentCall);
    EXPECT_EQ(core.pc, crcEndAddress);
    EXPECT_EQ(core.memory[crcResultAddress] | core.memory[crcResultAddress + 1] << 8 |
                  core.memory[crcResultAddress + 2] << 16 | core.memory[crcResultAddress + 3] << 24,
              static_cast<int>(knownCrc));
}

}  // namespace
