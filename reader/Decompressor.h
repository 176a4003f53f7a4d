// What a compressed format needs: a .cpp of its own when its library was found, and Without<Format>.cpp
// in its place when it wasn't. No part of what the shared library shows.

#ifndef SCRIVEL_READER_DECOMPRESSOR_H
#define SCRIVEL_READER_DECOMPRESSOR_H

#include <cstddef>
#include <memory>
#include <optional>
#include <string>

namespace ScrivelReader
{

class [[gnu::visibility("hidden")]] Decompressor
{
public:
    struct Step
    {
        std::size_t consumed;
        std::size_t produced;
    };

    virtual ~Decompressor() = default;
    /// Nothing when the input is no such file.
    virtual std::optional<Step> Decompress(const char* in, std::size_t inSize, char* out,
                                           std::size_t outSize) = 0;
    /// Whether the input may end here.
    virtual bool AtEnd() const = 0;
};

constexpr unsigned char gzipMagic[] = {0x1f, 0x8b};
constexpr unsigned char zstdMagic[] = {0x28, 0xb5, 0x2f, 0xfd};

[[gnu::visibility("hidden")]] extern const bool hasGzip;
[[gnu::visibility("hidden")]] extern const bool hasZstd;
/// Null without the library.
[[gnu::visibility("hidden")]] std::unique_ptr<Decompressor> MakeGzip();
[[gnu::visibility("hidden")]] std::unique_ptr<Decompressor> MakeZstd();

}  // namespace ScrivelReader

#endif
