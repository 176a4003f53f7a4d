// Logs compressed by gzip, several members too. Tested by tests/reader/LogInputTest.cpp.

#include "Decompressor.h"

#include <algorithm>
#include <climits>

#include <zlib.h>

namespace ScrivelReader
{

namespace
{

class Gzip final : public Decompressor
{
public:
    Gzip() { ready = inflateInit2(&stream, gzipOnly) == Z_OK; }
    ~Gzip() override { inflateEnd(&stream); }
    Gzip(const Gzip&) = delete;
    Gzip& operator=(const Gzip&) = delete;

    std::optional<Step> Decompress(const char* in, std::size_t inSize, char* out,
                                   std::size_t outSize) override
    {
        if (!ready)
            return {};
        if (memberEnded) {
            if (inSize == 0)
                return Step{0, 0};
            memberEnded = inflateReset(&stream) != Z_OK;
        }
        stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(in));  // zlib only reads it
        stream.avail_in = uInt(std::min<std::size_t>(inSize, UINT_MAX));
        stream.next_out = reinterpret_cast<Bytef*>(out);
        stream.avail_out = uInt(std::min<std::size_t>(outSize, UINT_MAX));
        const uInt given = stream.avail_in;
        const uInt room = stream.avail_out;
        const int result = inflate(&stream, Z_NO_FLUSH);
        // What came before the damage is good; the next step meets it again.
        const bool isGood = result == Z_OK || result == Z_STREAM_END || result == Z_BUF_ERROR;
        if (!isGood && stream.avail_out == room)
            return {};
        memberEnded = result == Z_STREAM_END;
        return Step{given - stream.avail_in, room - stream.avail_out};
    }

    bool AtEnd() const override { return memberEnded; }

private:
    static constexpr int gzipOnly = 15 + 16;

    z_stream stream{};
    bool ready = false;
    bool memberEnded = false;
};

}  // namespace

const bool hasGzip = true;

std::unique_ptr<Decompressor> MakeGzip()
{
    return std::make_unique<Gzip>();
}

}  // namespace ScrivelReader
