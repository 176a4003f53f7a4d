// In place of Zstd.cpp where its library is missing.

#include "Decompressor.h"

namespace ScrivelReader
{

const bool hasZstd = false;

std::unique_ptr<Decompressor> MakeZstd()
{
    return nullptr;
}

}  // namespace ScrivelReader
