// In place of Gzip.cpp where its library is missing.

#include "Decompressor.h"

namespace ScrivelReader
{

const bool hasGzip = false;

std::unique_ptr<Decompressor> MakeGzip()
{
    return nullptr;
}

}  // namespace ScrivelReader
