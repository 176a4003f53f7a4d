// Tags, times, and the calls that interrupt each other. Tested by tests/base/CallFrameTest.cpp and
// tests/base/VirtualTableTest.cpp.

#include "base/LogText.h"
#include "base/WholeElements.h"
#include "format/LogWords.h"
#include "ScrivelXmlGen.h"

#include <cctype>
#include <cstdint>
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
    if (!WholeElements(*this).PutTag(name, openTag, newline)) {
        if (checkLongName != nullptr) {
            checkLongName(name);
        }
        WriteTabs(openTag);
        AppendTag(logFile, openTag, name, HeadsOf(mendsNames), newline);
        depth += openTag ? 1U : -1U;
    }
}

void ScrivelXmlGenBase::WriteTag(const std::string& name, bool openTag)
{
    if (!WholeElements(*this).PutTag(name, openTag, true)) {
        WriteIdent(name, openTag, true);
    }
}

void ScrivelXmlGenBase::WriteIdentWithoutTabs(std::string name)
{
    if (checkLongName != nullptr) {
        checkLongName(name);
    }
    AppendEndTag(logFile, name, HeadsOf(mendsNames));
    --depth;
}

void ScrivelXmlGenBase::WriteDetailedIdent(std::string name)
{
    // One level and one line whatever the depth: connection-phase calls stand at depth 1.
    const bool put = WholeElements(*this).Put(RoomForCallBegin(name), [&](char* out) {
        out = PutName(PutText(out, indentedTagBegin), name, NameHeads::kept);
        return PutAttribute(out, LogWords::callNumber, Decimal{callNo});
    });
    if (!put) {
        AppendTagBegin(logFile, indentedTagBegin, name);
        AppendAttribute(logFile, LogWords::callNumber, callNo);
    }
    WriteTimestamp(std::string(LogWords::callTime), false);
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
    static constexpr std::size_t most = 2 * mostDecimalDigits + 3;  // ".", " s"

    ElapsedTime(const timeval& start, const timeval& end)
    {
        auto wholeSeconds = end.tv_sec - start.tv_sec;
        auto rest = end.tv_usec - start.tv_usec;
        if (rest < 0) {
            rest += 1000000;
            --wholeSeconds;
        }
        seconds = static_cast<std::uint32_t>(wholeSeconds);
        microseconds = static_cast<std::uint32_t>(rest);
    }

    char* Put(char* out) const
    {
        out = PutDecimal(out, seconds);
        *out++ = '.';
        return PutText(PutMicroseconds(out, microseconds), " s");
    }

    /// Whether escaping leaves it as it is. Digits, letters and the blank are printable in every locale.
    static bool IsPlain() { return std::isprint('.') != 0; }

private:
    std::uint32_t seconds;
    std::uint32_t microseconds;
};

/// A time as an element or as an attribute, the name as given.
char* PutTime(char* out, unsigned int depth, const std::string& name, bool asElement,
              const ElapsedTime& elapsed)
{
    if (!asElement) {
        return PutAttribute(PutIndentation(out, WholeElements::OutsideOf(depth)), name, elapsed);
    }
    out = PutText(PutIndentation(out, depth), tagBegin);
    out = elapsed.Put(PutText(PutText(out, name), ">"));
    return PutText(PutText(PutText(out, "</"), name), ">\n");
}

}  // namespace

void ScrivelXmlGenBase::WriteTimestamp(const std::string& name, bool asElement)
{
    timeval now;
    gettimeofday(&now, nullptr);
    const ElapsedTime elapsed(startTime, now);

    const bool canBePut = !asElement || ElapsedTime::IsPlain();
    const std::size_t most = 2 * (name.size() + aroundAttribute) + ElapsedTime::most;
    if (canBePut && WholeElements(*this).Put(
                        most, [&](char* out) { return PutTime(out, depth, name, asElement, elapsed); })) {
        return;
    }
    char digits[ElapsedTime::most];
    const std::string_view text(digits, static_cast<std::size_t>(elapsed.Put(digits) - digits));
    if (asElement) {
        WriteTabs(true);
        AppendPlainElement(logFile, tagBegin, name, [&] { AppendEscaped(logFile, text); });
    } else {
        WriteTabs(false);
        AppendAttribute(logFile, name, text);
    }
}

// ---- Interrupted and continued calls ------------------------------------------------------------

namespace
{

/// Call 7 ("CADIExecContinue") interrupted
std::string AboutCall(std::string_view before, unsigned int number, const std::string& name,
                      std::string_view after)
{
    std::string text(before);
    text.append(std::to_string(number)).append(" (\"").append(name).append("\")").append(after);
    return text;
}

}  // namespace

void ScrivelXmlGenBase::WriteCloseInterruptedFunction(std::string callName)
{
    OpenCall(callName);
}

void ScrivelXmlGenBase::OpenCall(const std::string& callName)
{
    CloseInterrupted();
    openCallName = callName;  // copied, to keep the memory of the name before
    callOpen = true;
}

void ScrivelXmlGenBase::CloseInterrupted()
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
        WriteComment(
            AboutCall(LogWords::interruptedBegin, callNo, openCallName, LogWords::interruptedEnd));
    }
}

void ScrivelXmlGenBase::WriteContinueFunction(unsigned int number, std::string callName)
{
    WriteContinued(number, callName);
}

void ScrivelXmlGenBase::WriteContinued(unsigned int number, const std::string& callName)
{
    SeekFilePointerPosition();
    const bool stillOpen = number == callNo && callOpen;
    if (number != callNo) {
        if (callOpen) {
            WriteIdent(openCallName, false, true);
        }
        // In secure mode this too overwrites the end tag just written.
        WriteComment(AboutCall(LogWords::continuingBegin, number, callName, ""));
    }
    if (!stillOpen) {
        WriteTabs(true);
        logFile.Append("<");
        logFile.Append(callName);  // as given, unlike in the call's first start tag
        AppendAttribute(logFile, LogWords::callNumber, number);
        logFile.Append(">\n");
        ++depth;
    }
    WriteTimestamp(std::string(LogWords::returnTime), true);
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
