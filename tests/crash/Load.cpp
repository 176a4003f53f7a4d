// Works out from a seed what each call of a load holds. Used by every crash program.

#include "crash/Load.h"

#include <algorithm>
#include <cmath>

namespace ScrivelTest
{
namespace
{

// Of a call at depth 1: its tags, and its array's and text's; one item of the array. Near enough: the
// digits of numbers and times differ.
constexpr std::size_t frameBytes = 100;
constexpr std::size_t contentTagBytes = 60;
constexpr std::size_t itemBytes = 38;

std::uint64_t Scramble(std::uint64_t value)
{
    // The finaliser of SplitMix64.
    value += 0x9e3779b97f4a7c15;
    value = (value ^ (value >> 30)) * 0xbf58476d1ce4e5b9;
    value = (value ^ (value >> 27)) * 0x94d049bb133111eb;
    return value ^ (value >> 31);
}

}  // namespace

Load::Load(std::uint64_t seedOfSizes, std::size_t leastBytes, std::size_t mostBytes)
    : seed(seedOfSizes), least(leastBytes), most(mostBytes), data(mostBytes / itemBytes + 1, 0xfeedU)
{
    text.reserve(most);
    while (text.size() < most) {
        text += static_cast<char>(' ' + text.size() % 95);  // all printable characters, markup among them
    }
}

CallContents Load::Contents(unsigned int call) const
{
    const double part = static_cast<double>(Scramble(seed ^ Scramble(call)) >> 11) / 9007199254740992.0;
    const double ratio = static_cast<double>(most) / static_cast<double>(least);
    const auto bytes = static_cast<std::size_t>(static_cast<double>(least) * std::pow(ratio, part));
    if (bytes < frameBytes + contentTagBytes) {
        return {0, 0};
    }
    const std::size_t contents = bytes - frameBytes - contentTagBytes;
    const std::size_t inArray = contents / 4;
    return {contents - inArray, static_cast<unsigned int>(inArray / itemBytes)};
}

void Load::WriteNextCall(Scrivel2::ScrivelXmlGenRunBase& log)
{
    WriteContents(log, log.EnterCadiCall("CADIMemRead"));
    log.WriteIdent("CADIMemRead", false, true);
}

}  // namespace ScrivelTest
