// What the reader makes of a log, as text that a test compares.

#ifndef SCRIVEL_TESTS_READER_READING_H
#define SCRIVEL_TESTS_READER_READING_H

#include <string>
#include <string_view>
#include <vector>

#include "scrivel/LogReader.h"

namespace ScrivelTest
{

/// Everything that a reader handed out. Calls in the order in which they ended.
struct Reading
{
    std::vector<ScrivelReader::LogHeader> headers;
    std::vector<ScrivelReader::Call> calls;
    std::vector<ScrivelReader::Damage> damages;
    std::vector<std::string> comments;
    ScrivelReader::LogEnd end;
};

/// Reads bytes that are handed to the reader in pieces of a size, and why no more come if they are cut
/// off.
Reading ReadBytes(std::string_view bytes, const ScrivelReader::ReadOptions& options = {},
                  std::size_t piece = 1 << 20, std::string_view cutOff = {});

/// name(a=1 b{c=2} d[0aff]): the names and texts of a tree; bytes stand in brackets.
std::string Shown(const ScrivelReader::Tree& tree);

/// 7 CADIReset(level=1) -> return=CADI_STATUS_OK | status CADI_STATUS_OK, one line a call.
std::string Shown(const std::vector<ScrivelReader::Call>& calls);

/// A call that its callback interrupted: three elements.
inline constexpr char interrupted[] = R"(    <CADIExecContinue call_num="1"
     call_time="0.000011 s"
     threadId="1234">
        <wait>true</wait>
    </CADIExecContinue>

<!-- Call 1 ("CADIExecContinue") interrupted -->

    <modeChange call_num="2"
     call_time="0.000022 s"
     threadId="1234">
        <newMode>CADI_EXECMODE_Bpt</newMode>
        <return_time>0.000033 s</return_time>
    </modeChange>

<!-- Continuing call 1 ("CADIExecContinue") -->

    <CADIExecContinue call_num="1">
        <return_time>0.000044 s</return_time>
        <return>CADI_STATUS_OK</return>
    </CADIExecContinue>
)";

/// A document around elements of calls: root and end tag.
std::string LogOf(std::string_view elements);

}  // namespace ScrivelTest

#endif
