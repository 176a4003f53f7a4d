// Logs compressed by zstd, several frames too. Tested by tests/reader/LogInputTest.cpp.

#include "Decompressor.h"

#include <algorithm>

#include <zstd.h>

namespace ScrivelReader
{

namespace
{

class Zstd final : public Decompressor
{
public:
    Zstd()
        : stream(ZSTD_createDStream()), firstWanted(stream == nullptr ? 0 : ZSTD_initDStream(stream)),
          wanted(firstWanted)
    {
    }
    ~Zstd() override { ZSTD_freeDStream(stream); }
    Zstd(const Zstd&) = delete;
    Zstd& operator=(const Zstd&) = delete;

    std::optional<Step> Decompress(const char* in, std::size_t inSize, char* out,
                                   std::size_t outSize) override
    {
        if (stream == nullptr)
            return {};
        // By one block at a time: of those that come before damage in one step nothing would be had.
        ZSTD_inBuffer input{in, std::min(inSize, wanted), 0};
        ZSTD_outBuffer output{out, outSize, 0};
        const std::size_t result = ZSTD_decompressStream(stream, &output, &input);
        if (ZSTD_isError(result) != 0)
            return {};
        wanted = result == 0 ? firstWanted : result;
        if (input.pos != 0 || output.pos != 0)
            frameEnded = result == 0;
        return Step{input.pos, output.pos};
    }

    bool AtEnd() const override { return frameEnded; }

private:
    ZSTD_DStream* stream;
    const std::size_t firstWanted;  // of a frame
    std::size_t wanted;
    bool frameEnded = false;
};

}  // namespace

const bool hasZstd = true;

std::unique_ptr<Decompressor> MakeZstd()
{
    return std::make_unique<Zstd>();
}

}  // namespace ScrivelReader
