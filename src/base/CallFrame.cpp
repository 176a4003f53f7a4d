#include "base/LogText.h"
#include "ScrivelXmlGen.h"

#include <charconv>
#include <cstdint>
#include <iterator>
#include <string>

namespace Scrivel2
{

// ---- Tags ---------------------------------------------------------------------------------------

void ScrivelXmlGenBase::WriteTabs(bool openTag)
{
    if (openTag) {
        AppendIndentation(logFile, depth);
    } else if (depth > 1) {
        AppendIndentation(logFile, depth - 1);
    }
}

void ScrivelXmlGenBase::WriteIdent(std::string name, bool openTag, bool newline)
{
    WriteTabs(openTag);
    AppendTag(logFile, openTag, name, newline);
    depth += openTag ? 1U : -1U;
}

void ScrivelXmlGenBase::WriteIdentWithoutTabs(std::string name)
{
    AppendTag(logFile, false, name, true);
    --depth;
}

void ScrivelXmlGenBase::WriteDetailedIdent(std::string name)
{
    // Four blanks and an attribute without a line of its own: connection-phase calls stand at depth 1.
    logFile.Append("    <");
    AppendName(logFile, name);
    logFile.Append(" call_num=\"");
    AppendDecimal(logFile, callNo);
    logFile.Append("\"");
    WriteTimestamp("call_time", false);
    logFile.Append(">\n");
    ++depth;
}

// ---- Time ---------------------------------------------------------------------------------------

namespace
{

/// Seconds and six decimals of the time from `start` to `end`: "3.004500 s".
class ElapsedTime
{
public:
    ElapsedTime(const timeval& start, const timeval& end)
    {
        auto seconds = end.tv_sec - start.tv_sec;
        auto microseconds = end.tv_usec - start.tv_usec;
        if (microseconds < 0) {
            microseconds += 1000000;
            --seconds;
        }
        Put(static_cast<std::uint32_t>(seconds), 1);
        *last++ = '.';
        Put(static_cast<std::uint32_t>(microseconds), 6);
        *last++ = ' ';
        *last++ = 's';
    }

    std::string_view Text() const { return {text, static_cast<std::size_t>(last - text)}; }

private:
    void Put(std::uint32_t value, std::ptrdiff_t width)
    {
        char digits[10];
        const char* const end = std::to_chars(std::begin(digits), std::end(digits), value).ptr;
        for (std::ptrdiff_t length = end - digits; length < width; ++length) {
            *last++ = '0';
        }
        for (const char* digit = digits; digit != end; ++digit) {
            *last++ = *digit;
        }
    }

    char text[32];
    char* last = text;
};

}  // namespace

void ScrivelXmlGenBase::WriteTimestamp(const std::string& name, bool asElement)
{
    timeval now;
    gettimeofday(&now, nullptr);
    const ElapsedTime elapsed(startTime, now);

    if (asElement) {
        WriteTabs(true);
        logFile.Append("<");
        logFile.Append(name);
        logFile.Append(">");
        AppendEscaped(logFile, elapsed.Text());
        logFile.Append("</");
        logFile.Append(name);
        logFile.Append(">\n");
    } else {
        WriteTabs(false);
        logFile.Append(" ");
        logFile.Append(name);
        logFile.Append("=\"");
        logFile.Append(elapsed.Text());
        logFile.Append("\"");
    }
}

// ---- Comments, interrupted and continued calls --------------------------------------------------

void ScrivelXmlGenBase::WriteComment(std::string text)
{
    SeekFilePointerPosition();
    WriteTabs(false);  // at the end of the line before: the comment begins with a newline of its own
    logFile.Append("\n<!-- ");
    logFile.Append(text);
    logFile.Append(" -->\n\n");
    logFile.flush();
}

namespace
{

/// 7 ("CADIExecContinue")
std::string NumberAndName(unsigned int number, const std::string& name)
{
    return std::to_string(number) + " (\"" + name + "\")";
}

}  // namespace

void ScrivelXmlGenBase::WriteCloseInterruptedFunction(std::string callName)
{
    // After a non-final flush the provisional end tag of the open call is kept:
    //
    //   ...<arg>1</arg>\n    </CADIExecContinue>\n|
    //                    ^ lastFilePos before       ^ lastFilePos now
    if (pendingTail != FileEndTag()) {
        UpdateFilePointerPosition();
    }
    SeekFilePointerPosition();
    if (depth > 1) {
        WriteIdent(openCallName, false, true);
        // In secure mode the comment overwrites the end tag just written: the provisional one stands.
        WriteComment("Call " + NumberAndName(callNo, openCallName) + " interrupted");
    }
    openCallName = callName;
    callOpen = true;
}

void ScrivelXmlGenBase::WriteContinueFunction(unsigned int number, std::string callName)
{
    SeekFilePointerPosition();
    const bool stillOpen = number == callNo && callOpen;
    if (number != callNo) {
        if (callOpen) {
            WriteIdent(openCallName, false, true);
        }
        // In secure mode this too overwrites the end tag just written.
        WriteComment("Continuing call " + NumberAndName(number, callName));
    }
    if (!stillOpen) {
        WriteTabs(true);
        logFile.Append("<");
        logFile.Append(callName);
        logFile.Append(" call_num=\"");
        AppendDecimal(logFile, number);
        logFile.Append("\">\n");
        ++depth;
    }
    WriteTimestamp("return_time", true);
    callOpen = false;
}

void ScrivelXmlGenBase::IncCallNo()
{
    ++callNo;
}

unsigned int ScrivelXmlGenBase::GetCallNo()
{
    return callNo;
}

}  // namespace Scrivel2
