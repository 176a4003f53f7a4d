// The run phase's frame: the start tag of a call on a target, and what the logging layer sets. Tested by
// tests/runbase/RunFrameTest.cpp.

#include "base/ElementForms.h"
#include "format/LogWords.h"

#include <utility>

#include <pthread.h>

namespace Scrivel2
{

ScrivelXmlGenRunBase::ScrivelXmlGenRunBase(const char* name, const char* version)
    : ScrivelXmlGenBase(name, version), memSpaceNames(nullptr), registerNames(nullptr),
      layerNames(nullptr)
{
    KeepsTags<ScrivelXmlGenRunBase>();
}

ScrivelXmlGenRunBase::~ScrivelXmlGenRunBase() = default;

void ScrivelXmlGenRunBase::SetWriteSecure(bool secure)
{
    ScrivelXmlGenBase::SetWriteSecure(secure);
}

// ---- Calls --------------------------------------------------------------------------------------

void ScrivelXmlGenRunBase::WriteDetailedIdent(std::string callName)
{
    WriteDetailedIdent(std::move(callName), 0);
}

void ScrivelXmlGenRunBase::WriteDetailedIdent(std::string callName, std::uint64_t address)
{
    // One level whatever the depth, and both parts as given: this line is the logging layer's own.
    if (!pendingElementName.empty() && !pendingElementText.empty()) {
        AppendPlainElement(logFile, indentedTagBegin, pendingElementName,
                           [&] { logFile.Append(pendingElementText); });
    }
    // Half an element is dropped too: it must not wait for its other half and a later call.
    pendingElementName.clear();
    pendingElementText.clear();

    // The start tag spans three lines. The depth is raised after the first, so that the indentation of
    // an end tag, one level less, brings the attributes under the "<". It is set, not counted: an
    // override of WriteTabs may change it.
    const unsigned int inside = depth + 1;
    const bool begun = WholeElements(*this).Put(RoomForCallBegin(callName), [&](char* out) {
        out = PutText(PutIndentation(out, depth), tagBegin);
        out = PutName(out, callName, NameHeads::kept);
        return PutText(PutAttribute(out, LogWords::callNumber, Decimal{callNo}), "\n");
    });
    if (!begun) {
        WriteTabs(true);
        AppendTagBegin(logFile, tagBegin, callName);
        AppendAttribute(logFile, LogWords::callNumber, callNo);
        logFile.Append("\n");
    }
    depth = inside;
    WriteTimestamp(std::string(LogWords::callTime), false);
    depth = inside;
    const std::uint64_t thread = Low32(pthread_self());
    const std::size_t most = LogWords::threadId.size() + aroundAttribute + mostDecimalDigits + 3;
    const bool ended = address == 0 && WholeElements(*this).Put(most, [&](char* out) {
        out = PutIndentation(PutText(out, "\n"), WholeElements::OutsideOf(depth));
        return PutText(PutAttribute(out, LogWords::threadId, Decimal{thread}), ">\n");
    });
    if (!ended) {
        logFile.Append("\n");
        WriteTabs(false);
        depth = inside;
        AppendAttribute(logFile, LogWords::threadId, thread);
        if (address != 0) {
            AppendHexAttribute(logFile, LogWords::disassemblerAddress, address, 16);
        }
        logFile.Append(">\n");
    }
}

unsigned int ScrivelXmlGenRunBase::EnterCadiCall(std::string callName)
{
    if (WholeElements(*this).EntryIsKept()) {
        OpenCall(callName);
    } else {
        WriteCloseInterruptedFunction(callName);
    }
    ++callNo;
    WriteDetailedIdent(std::move(callName));
    return callNo;
}

// ---- What the logging layer sets ----------------------------------------------------------------

void ScrivelXmlGenRunBase::SetMemSpaceNames(const NameTable* names)
{
    memSpaceNames = names;
}

void ScrivelXmlGenRunBase::SetRegisterNames(const NameTable* names)
{
    registerNames = names;
}

void ScrivelXmlGenRunBase::SetPendingElement(std::string name, std::string text)
{
    pendingElementName = std::move(name);
    pendingElementText = std::move(text);
}

}  // namespace Scrivel2
