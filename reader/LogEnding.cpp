// The comment that ends a log. Tested by tests/reader/LogEndingTest.cpp.

#include "scrivel/LogEnding.h"

#include <string_view>

#include "format/LogWords.h"

namespace ScrivelReader
{

LogEnding EndingOf(const LogEnd& end, std::uint64_t lastElementEnd)
{
    namespace Words = Scrivel2::LogWords;
    LogEnding ending;
    if (end.lastCommentAt < lastElementEnd)
        return ending;
    std::string_view comment = end.lastComment;
    const std::size_t first = comment.find_first_not_of(' ');
    if (first == std::string_view::npos)
        return ending;
    comment = comment.substr(first, comment.find_last_not_of(' ') - first + 1);
    ending.ended = comment == Words::logEnded;
    if (comment.substr(0, Words::continuedInBegin.size()) == Words::continuedInBegin)
        ending.continuedIn = comment.substr(Words::continuedInBegin.size());
    return ending;
}

}  // namespace ScrivelReader
