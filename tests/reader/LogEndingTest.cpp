// How a log ends, by its last comment.

#include <gtest/gtest.h>

#include "reader/Reading.h"
#include "scrivel/LogEnding.h"

using namespace ScrivelReader;
using namespace ScrivelTest;

namespace
{

constexpr char call[] = "    <A call_num=\"1\" call_time=\"0.000001 s\"></A>\n";

LogEnding Of(const std::string& elements)
{
    const Reading reading = ReadBytes(LogOf(elements));
    return EndingOf(reading.end, reading.calls.empty() ? 0 : reading.calls.back().parts.back().end);
}

TEST(LogEnding, IsToldByTheLastComment)
{
    EXPECT_TRUE(Of(call + std::string("\n<!-- Log ended -->\n\n")).ended);
    EXPECT_FALSE(Of(call + std::string("\n<!-- the log ended -->\n\n")).ended);
    EXPECT_FALSE(Of(call).ended);
    EXPECT_TRUE(Of("<!-- Log ended -->").ended);
}

TEST(LogEnding, NamesTheFileThatFollows)
{
    const LogEnding ending = Of(call + std::string("<!-- Log continued in run-1.2.xml -->"));
    EXPECT_EQ(ending.continuedIn, "run-1.2.xml");
    EXPECT_FALSE(ending.ended);
}

TEST(LogEnding, IsNotToldByACommentBeforeTheLastCall)
{
    EXPECT_FALSE(Of(std::string("<!-- Log ended -->\n") + call).ended);
}

}  // namespace
