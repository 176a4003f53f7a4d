// Other bytes in the place of a text's. Tested with the flushes that write them, by
// tests/stream/SteppedFlushTest.cpp.

#ifndef SCRIVEL_STREAM_STANDIN_H
#define SCRIVEL_STREAM_STANDIN_H

#include <algorithm>
#include <array>
#include <cassert>
#include <cstddef>
#include <string_view>

namespace Scrivel2
{

/// They stand there as long as it lives; then the true bytes are back.
class StandIn
{
public:
    StandIn(char* place, std::string_view bytes) : at(place), size(bytes.size())
    {
        assert(size <= longest);
        std::copy_n(at, size, trueBytes.data());
        std::copy_n(bytes.data(), size, at);
    }
    ~StandIn() { std::copy_n(trueBytes.data(), size, at); }
    StandIn(const StandIn&) = delete;
    StandIn& operator=(const StandIn&) = delete;

    static constexpr std::size_t longest = 512;

private:
    char* const at;
    const std::size_t size;
    std::array<char, longest> trueBytes;
};

}  // namespace Scrivel2

#endif
