// Calls of many sizes, for the programs that look at what a crash leaves of them.

#ifndef SCRIVEL_TESTS_CRASH_LOAD_H
#define SCRIVEL_TESTS_CRASH_LOAD_H

#include "ScrivelXmlGen.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace ScrivelTest
{

/// What a call holds besides its frame.
struct CallContents
{
    std::size_t characters;  ///< of the text in the element "text"
    unsigned int items;      ///< of the array in the element "data", each an element "value"

    bool operator==(const CallContents& other) const
    {
        return characters == other.characters && items == other.items;
    }
};

/// An endless row of calls whose sizes follow from the seed, spread evenly over the orders of magnitude
/// between `least` and `most` bytes. Whoever reads a log later can work out what each call held.
class Load
{
public:
    Load(std::uint64_t seed, std::size_t least, std::size_t most);

    /// Of the call of that number, the first being 1.
    CallContents Contents(unsigned int call) const;

    /// Writes what the call of that number holds. `log` has the writers of values.
    template <typename Log>
    void WriteContents(Log& log, unsigned int call)
    {
        const CallContents contents = Contents(call);
        if (contents.characters > 0) {
            log.WriteString("text", text.substr(0, contents.characters));
        }
        if (contents.items > 0) {
            log.WriteUint32Array("data", data.data(), contents.items, true);
        }
    }

    /// Logs the next call, up to and with its end tag. A flush must follow.
    void WriteNextCall(Scrivel2::ScrivelXmlGenRunBase& log);

private:
    std::uint64_t seed;
    std::size_t least;
    std::size_t most;
    std::string text;  // what the texts of calls are the beginning of
    std::vector<unsigned int> data;
};

}  // namespace ScrivelTest

#endif
