// Whether the process that writes a log still does.

#ifndef SCRIVEL_READER_LOGPROCESS_H
#define SCRIVEL_READER_LOGPROCESS_H

#include "scrivel/Call.h"

namespace ScrivelReader
{

enum class Writer
{
    HasLogOpen,  ///< it lives on this host and has the file open
    HasItNot,    ///< a process of that number lives, but without the file: it has closed it, or it is
                 ///< another
    Unseen,      ///< a process of that number lives; its files can't be seen
    Gone,        ///< no process on this host bears that number
    Elsewhere,   ///< the log was written on another host, or doesn't say by whom
};

/// Of the log that the descriptor reads.
Writer FindWriter(const LogHeader& header, int descriptor);

}  // namespace ScrivelReader

#endif
