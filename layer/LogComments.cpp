// The layer's comments, made of the words that a reader looks for. Tested by tests/layer/CallLogTest.cpp.

#include "scrivel/LogComments.h"

#include "format/LogWords.h"

namespace Scrivel2::Layer
{

std::string EndComment()
{
    return std::string(LogWords::logEnded);
}

}  // namespace Scrivel2::Layer
