// Logs of the example session, with fixed process, host, date and threads: connection-4243.xml and
// run-4243.xml of one that ended, crash-4242.xml of one that a call killed.

#ifndef SCRIVEL_TESTS_TOOL_SESSIONLOGS_H
#define SCRIVEL_TESTS_TOOL_SESSIONLOGS_H

#include <fstream>
#include <iterator>
#include <string>

#include "tool/Program.h"

namespace ScrivelTest
{

/// A file beside the tests: logs/crash-4242.xml.
inline std::string Stored(const std::string& name)
{
    std::ifstream file(SCRIVEL_TOOL_TESTS "/" + name, std::ios::binary);
    EXPECT_TRUE(file.good()) << name;
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

/// A test whose folder holds the three logs.
class SessionTest : public ToolTest
{
protected:
    SessionTest()
    {
        for (const char* const log : {"connection-4243.xml", "run-4243.xml", "crash-4242.xml"})
            Write(log, Stored(std::string("logs/") + log));
    }
};

}  // namespace ScrivelTest

#endif
