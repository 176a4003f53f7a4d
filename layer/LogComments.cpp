// The layer's comments, made of the words that a reader looks for. Tested by tests/layer/CallLogTest.cpp
// and NumberedFilesTest.cpp.

#include "scrivel/LogComments.h"

#include "format/LogWords.h"
#include "scrivel/LogNames.h"

namespace Scrivel2::Layer
{
namespace
{

std::string WithoutFolder(std::string_view file)
{
    return CommentText(file.substr(file.rfind('/') + 1));
}

}  // namespace

std::string EndComment()
{
    return std::string(LogWords::logEnded);
}

std::string ContinuedInComment(std::string_view nextFile)
{
    return std::string(LogWords::continuedInBegin) + WithoutFolder(nextFile);
}

std::string ContinuedFromComment(std::string_view fileBefore)
{
    return std::string(LogWords::continuedFromBegin) + WithoutFolder(fileBefore);
}

}  // namespace Scrivel2::Layer
