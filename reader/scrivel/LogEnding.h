// How a log ends, in the words of whoever wrote it.

#ifndef SCRIVEL_READER_LOGENDING_H
#define SCRIVEL_READER_LOGENDING_H

#include <cstdint>
#include <string>

#include "scrivel/Call.h"

namespace ScrivelReader
{

struct LogEnding
{
    bool ended = false;       ///< its writer says that it ended it
    std::string continuedIn;  ///< the file that its writer went on in; empty when there is none
};

/// Only the last thing in a log tells: the comment has to follow the last element of a call, which ends
/// at this offset.
LogEnding EndingOf(const LogEnd& end, std::uint64_t lastElementEnd);

}  // namespace ScrivelReader

#endif
