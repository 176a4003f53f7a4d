// The bytes of one input, taken as decisions: every input, short or long, means something.

#ifndef SCRIVEL_FUZZ_INPUT_H
#define SCRIVEL_FUZZ_INPUT_H

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>

namespace ScrivelFuzz
{

class Input
{
public:
    Input(const std::uint8_t* bytes, std::size_t size) : next(bytes), left(size) {}

    bool Ended() const { return left == 0; }

    /// 0 when nothing is left.
    std::uint8_t Byte()
    {
        if (Ended()) {
            return 0;
        }
        --left;
        return *next++;
    }

    bool Flag() { return (Byte() & 1) != 0; }

    /// 0 to `bound` - 1; `bound` is 256 at most.
    unsigned int Below(unsigned int bound) { return Byte() % bound; }

    /// Any value of the type; missing bytes are 0.
    template <typename Number>
    Number Any()
    {
        Number number{};
        const std::size_t length = std::min(sizeof number, left);
        std::memcpy(&number, next, length);
        next += length;
        left -= length;
        return number;
    }

    /// A number that is small, close to a power of two, or anything.
    std::uint64_t Number()
    {
        switch (Below(4)) {
        case 0:
            return Byte();
        case 1:
            return (std::uint64_t{1} << Below(64)) - 1;
        case 2:
            return (std::uint64_t{1} << Below(64)) + Byte();
        default:
            return Any<std::uint64_t>();
        }
    }

    /// `most` characters at the very most, which is 255 at most; any byte may be among them.
    std::string Text(unsigned int most)
    {
        const std::size_t length = std::min<std::size_t>(Below(most + 1), left);
        std::string text(reinterpret_cast<const char*>(next), length);
        next += length;
        left -= length;
        return text;
    }

private:
    const std::uint8_t* next;
    std::size_t left;
};

}  // namespace ScrivelFuzz

#endif
