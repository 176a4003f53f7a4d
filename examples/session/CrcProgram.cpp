// The instructions of the program that the target runs. Tested by tests/examples/Rv32CoreTest.cpp.

#include "CrcProgram.h"

namespace Example
{

const std::vector<std::uint32_t>& CrcCode()
{
    // clang-format off
    static const std::vector<std::uint32_t> code{
        // start:
        0x00001537,  //  00    lui   a0, 1               the text's address
        0x02b00593,  //  04    addi  a1, zero, 43        its length
        0xfff00613,  //  08    addi  a2, zero, -1        the remainder
        0xedb886b7,  //  0c    lui   a3, 0xedb88         the polynomial, lowest bit first
        0x32068693,  //  10    addi  a3, a3, 0x320
        // next_byte:
        0x02058a63,  //  14    beq   a1, zero, done
        0x00054703,  //  18    lbu   a4, 0(a0)
        0x00e64633,  //  1c    xor   a2, a2, a4
        0x00800793,  //  20    addi  a5, zero, 8
        // next_bit:
        0x00167813,  //  24    andi  a6, a2, 1
        0x00165613,  //  28    srli  a2, a2, 1
        0x00080463,  //  2c    beq   a6, zero, even
        0x00d64633,  //  30    xor   a2, a2, a3
        // even:
        0xfff78793,  //  34    addi  a5, a5, -1
        0xfe0796e3,  //  38    bne   a5, zero, next_bit
        0x00150513,  //  3c    addi  a0, a0, 1
        0xfff58593,  //  40    addi  a1, a1, -1
        0xfd1ff06f,  //  44    jal   zero, next_byte
        // done:
        0xfff64613,  //  48    xori  a2, a2, -1
        0x000028b7,  //  4c    lui   a7, 2
        0x00c8a023,  //  50    sw    a2, 0(a7)           the result
        0x00000073,  //  54    ecall
    };
    // clang-format on
    return code;
}

}  // namespace Example
