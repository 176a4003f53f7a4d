// The program that the simulated core runs: the CRC-32 of a text, bit by bit.

#ifndef SCRIVEL_EXAMPLES_CRCPROGRAM_H
#define SCRIVEL_EXAMPLES_CRCPROGRAM_H

#include <cstdint>
#include <string_view>
#include <vector>

namespace Example
{

constexpr std::string_view crcText = "The quick brown fox jumps over the lazy dog";

// Where the program's parts lie in memory.
constexpr std::uint32_t crcCodeAddress = 0x0000;
constexpr std::uint32_t crcTextAddress = 0x1000;
constexpr std::uint32_t crcResultAddress = 0x2000;

// Places in the code that a debugger stops at.
constexpr std::uint32_t crcNextByteAddress = 0x0014;  ///< once for each byte, and once more at the end
constexpr std::uint32_t crcEndAddress = 0x0054;       ///< the call of the environment

/// The machine words, from crcCodeAddress on.
const std::vector<std::uint32_t>& CrcCode();

}  // namespace Example

#endif
