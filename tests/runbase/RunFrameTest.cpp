// The frame of run-phase calls: their start tags, calls that interrupt each other, the pending element.

#include "support/GeneratorTest.h"

#include <filesystem>
#include <memory>
#include <string>
#include <type_traits>
#include <vector>

namespace
{

using Scrivel2::Scrivel2XmlGenConnect;
using Scrivel2::Scrivel2XmlGenRun;
using Scrivel2::ScrivelXmlGenBase;
using Scrivel2::ScrivelXmlGenRunBase;
using ScrivelTest::platform;

using RunFrame = ScrivelTest::GeneratorTest<>;
using RunCalls = ScrivelTest::GeneratorTest<>;
using PendingElement = ScrivelTest::GeneratorTest<>;

// ---- Classes ------------------------------------------------------------------------------------

static_assert(std::is_base_of_v<ScrivelXmlGenBase, ScrivelXmlGenRunBase>);
static_assert(std::is_base_of_v<ScrivelXmlGenRunBase, Scrivel2XmlGenRun>);
static_assert(std::is_base_of_v<ScrivelXmlGenBase, Scrivel2XmlGenConnect>);
static_assert(!std::is_base_of_v<ScrivelXmlGenRunBase, Scrivel2XmlGenConnect>);
static_assert(std::has_virtual_destructor_v<ScrivelXmlGenBase>);

/// Shows the members that a derived generator reaches.
class OpenedUp : public Scrivel2XmlGenRun
{
public:
    using Scrivel2XmlGenRun::Scrivel2XmlGenRun;
    using ScrivelXmlGenRunBase::callNo;
    using ScrivelXmlGenRunBase::depth;
    using ScrivelXmlGenRunBase::layerNames;
    using ScrivelXmlGenRunBase::logFile;
    using ScrivelXmlGenRunBase::memSpaceNames;
    using ScrivelXmlGenRunBase::pendingElementName;
    using ScrivelXmlGenRunBase::pendingElementText;
    using ScrivelXmlGenRunBase::registerNames;
    using ScrivelXmlGenRunBase::writeSecure;
};

TEST_F(RunFrame, RunGeneratorNamesItsVersionInTheHeader)
{
    Make<Scrivel2XmlGenRun>()->StartLogging();
    EXPECT_EQ(WholeFile(), Header("trace", "CADI 2.0") + EndTag());
}

TEST_F(RunFrame, RunBaseTakesNameAndVersionAsGiven)
{
    ScrivelXmlGenRunBase("other", "CADI 1.1 x").StartLogging();
    EXPECT_EQ(FileText("other-4242.xml"), Header("other", "CADI 1.1 x") + EndTag("other"));
}

TEST_F(RunFrame, ConstructorsWriteNothing)
{
    const Scrivel2XmlGenRun run("trace");
    const ScrivelXmlGenRunBase runBase("trace", "CADI 2.0");
    EXPECT_TRUE(std::filesystem::is_empty("."));
}

TEST_F(RunFrame, ConstructorsLeaveTablesNullAndThePendingElementEmpty)
{
    const OpenedUp log("trace");
    EXPECT_EQ(log.memSpaceNames, nullptr);
    EXPECT_EQ(log.registerNames, nullptr);
    EXPECT_EQ(log.layerNames, nullptr);
    EXPECT_EQ(log.pendingElementName, "");
    EXPECT_EQ(log.pendingElementText, "");
    EXPECT_TRUE(log.writeSecure);
}

TEST_F(RunFrame, TablesAreKeptByAddressAndNeverTouched)
{
    const ScrivelXmlGenRunBase::NameTable registers{{1, "R1"}};
    const ScrivelXmlGenRunBase::NameTable spaces{{2, "data"}};
    {
        OpenedUp log("trace");
        log.SetRegisterNames(&registers);
        log.SetMemSpaceNames(&spaces);
        EXPECT_EQ(log.registerNames, &registers);
        EXPECT_EQ(log.memSpaceNames, &spaces);
        EXPECT_EQ(log.layerNames, nullptr);
    }
    EXPECT_EQ(registers, (ScrivelXmlGenRunBase::NameTable{{1, "R1"}}));
    EXPECT_EQ(spaces, (ScrivelXmlGenRunBase::NameTable{{2, "data"}}));
}

TEST_F(RunFrame, DestructionThroughTheBaseWritesNothing)
{
    std::unique_ptr<ScrivelXmlGenBase> log = Make<Scrivel2XmlGenRun>();
    log->StartLogging();
    static_cast<Scrivel2XmlGenRun&>(*log).EnterCadiCall("CADIReset");
    const std::string flushed = WholeFile();
    log.reset();
    EXPECT_EQ(WholeFile(), flushed);
    EXPECT_EQ(flushed, Header() + EndTag());
}

TEST_F(RunFrame, WriteSecureIsTheSameSwitchInEveryClass)
{
    OpenedUp log("trace");
    log.SetWriteSecure(false);
    EXPECT_FALSE(log.writeSecure);
    log.ScrivelXmlGenRunBase::SetWriteSecure(true);
    EXPECT_TRUE(log.writeSecure);
    static_cast<ScrivelXmlGenBase&>(log).SetWriteSecure(false);
    EXPECT_FALSE(log.writeSecure);
}

TEST_F(RunFrame, OutsideWriteSecureModeARunLogHasNoEndTag)
{
    const auto log = Make();
    log->SetWriteSecure(false);
    log->StartLogging();
    log->EndLogging();
    EXPECT_EQ(WholeFile(), Header());
}

// ---- The start tag ------------------------------------------------------------------------------

TEST_F(RunFrame, StartTagSpansThreeLinesUnderItsBracket)
{
    EXPECT_EQ(Written([](auto& log) {
                  SetClock(1000, 10020);
                  for (int i = 0; i < 7; ++i) {
                      log.IncCallNo();
                  }
                  log.WriteDetailedIdent("CADIMemRead", 0x8000);
                  log.WriteIdent("CADIMemRead", false, true);
              }),
              R"(    <CADIMemRead call_num="7"
     call_time="0.010020 s"
     threadId="1234" disassembler_address="0x0000000000008000">
    </CADIMemRead>
)");
}

TEST_F(RunFrame, StartTagIsIndentedByDepth)
{
    EXPECT_EQ(Written([](auto& log) {
                  log.WriteIdent("a", true, true);
                  log.WriteIdent("b", true, true);
                  log.WriteDetailedIdent("CADIReset", 1);
                  log.WriteIdent("CADIReset", false, true);
                  log.WriteIdent("b", false, true);
                  log.WriteIdent("a", false, true);
              }),
              R"(    <a>
        <b>
            <CADIReset call_num="0"
             call_time="0.000000 s"
             threadId="1234" disassembler_address="0x0000000000000001">
            </CADIReset>
        </b>
    </a>
)");
}

TEST_F(RunFrame, StartTagRaisesTheDepthByOne)
{
    OpenedUp log("trace");
    log.StartLogging();
    EXPECT_EQ(log.depth, 1U);
    log.WriteDetailedIdent("CADIReset", 0);
    EXPECT_EQ(log.depth, 2U);
    log.WriteDetailedIdent("CADIReset");
    EXPECT_EQ(log.depth, 3U);
}

TEST_F(RunFrame, AddressZeroHasNoAttribute)
{
    EXPECT_EQ(Written([](auto& log) { log.WriteDetailedIdent("CADIMemRead", 0); }),
              StartTag("CADIMemRead", 0) + "\n");
}

TEST_F(RunFrame, CallWithoutAddressHasNoAttribute)
{
    EXPECT_EQ(Written([](auto& log) { log.WriteDetailedIdent("CADIMemRead"); }),
              Written([](auto& log) { log.WriteDetailedIdent("CADIMemRead", 0); }));
}

TEST_F(RunFrame, AddressIsWrittenWhole)
{
    EXPECT_EQ(Written([](auto& log) { log.WriteDetailedIdent("c", 0xfedcba9876543210); }),
              R"(    <c call_num="0"
     call_time="0.000000 s"
     threadId="1234" disassembler_address="0xfedcba9876543210">
)");
}

TEST_F(RunFrame, NumbersAreDecimalAfterAnAddress)
{
    EXPECT_EQ(Written<OpenedUp>([](auto& log) {
                  log.WriteDetailedIdent("c", 0xabc);
                  log.WriteDecimal("n", 255);
                  log.logFile << 255 << '\n';
              }),
              R"(    <c call_num="0"
     call_time="0.000000 s"
     threadId="1234" disassembler_address="0x0000000000000abc">
        <n>255</n>
255
)");
}

TEST_F(RunFrame, ThreadIdIsTheLowHalfOfPthreadSelf)
{
    platform.pthread_self.Use([]() -> pthread_t { return 0xabcdef01fffffffe; });
    EXPECT_EQ(Written([](auto& log) { log.WriteDetailedIdent("c"); }), R"(    <c call_num="0"
     call_time="0.000000 s"
     threadId="4294967294">
)");
}

TEST_F(RunFrame, ThreadIsAskedForAnewByEachCallAndAfterTheTime)
{
    std::vector<std::string> asked;
    const auto time = platform.gettimeofday.Use([&](timeval* moment, void*) {
        asked.emplace_back("time");
        *moment = {1000, 0};
        return 0;
    });
    const auto thread = platform.pthread_self.Use([&]() -> pthread_t {
        asked.emplace_back("thread");
        return asked.size();
    });
    const auto log = Make();
    log->StartLogging();
    asked.clear();
    log->WriteDetailedIdent("c", 0);
    log->WriteDetailedIdent("c", 0);
    EXPECT_EQ(asked, (std::vector<std::string>{"time", "thread", "time", "thread"}));
}

TEST_F(RunFrame, CallNameIsCleanedInTheStartTag)
{
    EXPECT_EQ(Written([](auto& log) { log.WriteDetailedIdent("2nd call:x"); }),
              StartTag("_nd_call_x", 0) + "\n");
    EXPECT_EQ(Written([](auto& log) { log.WriteDetailedIdent(""); }), StartTag("emptyIdent", 0) + "\n");
}

TEST_F(RunFrame, CallNumberIsUnsigned)
{
    EXPECT_EQ(Written<OpenedUp>([](auto& log) {
                  log.callNo = 0xffffffff;
                  log.WriteDetailedIdent("c");
              }),
              StartTag("c", 4294967295) + "\n");
}

// ---- Calls --------------------------------------------------------------------------------------

TEST_F(RunCalls, EnteringACallRaisesAndReturnsItsNumber)
{
    const auto log = Make();
    log->StartLogging();
    EXPECT_EQ(log->GetCallNo(), 0U);
    EXPECT_EQ(log->EnterCadiCall("a"), 1U);
    EXPECT_EQ(log->EnterCadiCall("b"), 2U);
    EXPECT_EQ(log->GetCallNo(), 2U);
}

TEST_F(RunCalls, CallNumbersBeginAnewWithEachLog)
{
    const auto log = Make();
    log->StartLogging();
    log->EnterCadiCall("a");
    log->EndLogging();
    log->StartLogging();
    EXPECT_EQ(log->EnterCadiCall("a"), 1U);
}

TEST_F(RunCalls, EnteredCallHasNumberTimeAndThread)
{
    EXPECT_EQ(Written([](auto& log) {
                  SetClock(1003, 4500);
                  log.EnterCadiCall("CADIRegRead");
              }),
              R"(    <CADIRegRead call_num="1"
     call_time="3.004500 s"
     threadId="1234">
)");
}

TEST_F(RunCalls, ACallFromStartToEnd)
{
    const auto log = Make();
    log->StartLogging();
    SetClock(1000, 71);
    const unsigned int call = log->EnterCadiCall("CADIRegRead");
    log->WriteDecimal("regCount", 1);
    log->FlushOutput(false, "CADIRegRead");
    const std::string entered = Header() + StartTag("CADIRegRead", 1, "0.000071") + R"(
        <regCount>1</regCount>
)";
    EXPECT_EQ(WholeFile(), entered + "    </CADIRegRead>\n");

    SetClock(1000, 93);
    log->WriteContinueFunction(call, "CADIRegRead");
    log->WriteReturnType("return", eslapi::CADI_STATUS_OK);
    log->WriteIdent("CADIRegRead", false, true);
    log->FlushOutput(true, "");
    const std::string whole = entered +
                              R"(        <return_time>0.000093 s</return_time>
        <return>CADI_STATUS_OK</return>
    </CADIRegRead>
)" + EndTag();
    EXPECT_EQ(WholeFile(), whole);
    log->EndLogging();
    EXPECT_EQ(WholeFile(), whole);
}

TEST_F(RunCalls, EnteringACallInsideAnotherMarksItAsInterrupted)
{
    const auto log = Make();
    log->StartLogging();
    log->EnterCadiCall("CADIExecContinue");
    log->FlushOutput(false, "CADIExecContinue");

    SetClock(1000, 500000);
    const unsigned int inner = log->EnterCadiCall("CADIGetState");
    log->FlushOutput(false, "CADIGetState");
    const std::string interrupted = Header() + StartTag("CADIExecContinue") + R"(
    </CADIExecContinue>

<!-- Call 1 ("CADIExecContinue") interrupted -->

)" + StartTag("CADIGetState", 2, "0.500000") +
                                    "\n";
    EXPECT_EQ(WholeFile(), interrupted + "    </CADIGetState>\n");

    log->WriteContinueFunction(inner, "CADIGetState");
    log->WriteIdent("CADIGetState", false, true);
    log->FlushOutput(true, "");
    const std::string continued = interrupted + R"(        <return_time>0.500000 s</return_time>
    </CADIGetState>
)";
    EXPECT_EQ(WholeFile(), continued + EndTag());
}

TEST_F(RunCalls, AnInterruptedCallIsReopenedWhenItReturns)
{
    const auto log = Make();
    log->StartLogging();
    const unsigned int outer = log->EnterCadiCall("outer");
    log->FlushOutput(false, "outer");
    const unsigned int inner = log->EnterCadiCall("inner");
    log->FlushOutput(false, "inner");
    log->WriteContinueFunction(inner, "inner");
    log->WriteIdent("inner", false, true);
    log->FlushOutput(true, "");
    SetClock(1001, 0);
    log->WriteContinueFunction(outer, "outer");
    log->WriteIdent("outer", false, true);
    log->FlushOutput(true, "");
    log->EndLogging();
    EXPECT_EQ(WholeFile(), Complete(StartTag("outer") + R"(
    </outer>

<!-- Call 1 ("outer") interrupted -->

)" + StartTag("inner", 2) + R"(
        <return_time>0.000000 s</return_time>
    </inner>

<!-- Continuing call 1 ("outer") -->

    <outer call_num="1">
        <return_time>1.000000 s</return_time>
    </outer>
)"));
}

TEST_F(RunCalls, OutsideWriteSecureModeTheEndTagOfAnInterruptedCallStays)
{
    const auto log = Make();
    log->SetWriteSecure(false);
    log->StartLogging();
    log->EnterCadiCall("a");
    log->EnterCadiCall("b");
    log->EndLogging();
    EXPECT_EQ(WholeFile(), Header() + StartTag("a") + R"(
    </a>

<!-- Call 1 ("a") interrupted -->

)" + StartTag("b", 2) + "\n");
}

// ---- The pending element ------------------------------------------------------------------------

TEST_F(PendingElement, IsWrittenBeforeTheNextStartTag)
{
    EXPECT_EQ(Written([](auto& log) {
                  log.SetPendingElement("target", "core0");
                  log.WriteDetailedIdent("c");
              }),
              "    <target>core0</target>\n" + StartTag("c", 0) + "\n");
}

TEST_F(PendingElement, IsWrittenBeforeAnEnteredCall)
{
    EXPECT_EQ(Written([](auto& log) {
                  log.SetPendingElement("target", "core0");
                  log.EnterCadiCall("c");
              }),
              "    <target>core0</target>\n" + StartTag("c") + "\n");
}

TEST_F(PendingElement, IsNotWrittenByOtherWriters)
{
    EXPECT_EQ(Written([](auto& log) {
                  log.SetPendingElement("target", "core0");
                  log.WriteDecimal("n", 1);
              }),
              "    <n>1</n>\n");
}

TEST_F(PendingElement, IsWrittenOnce)
{
    EXPECT_EQ(Written([](auto& log) {
                  log.SetPendingElement("target", "core0");
                  log.WriteDetailedIdent("c");
                  log.WriteIdent("c", false, true);
                  log.WriteDetailedIdent("c");
              }),
              "    <target>core0</target>\n" + StartTag("c", 0) + "\n    </c>\n" + StartTag("c", 0) +
                  "\n");
}

TEST_F(PendingElement, IsWrittenAsGiven)
{
    EXPECT_EQ(Written([](auto& log) {
                  log.SetPendingElement("2 x", "<b/>&\n");
                  log.WriteDetailedIdent("c");
              }),
              "    <2 x><b/>&\n</2 x>\n" + StartTag("c", 0) + "\n");
}

TEST_F(PendingElement, HasFourBlanksWhateverTheDepth)
{
    EXPECT_EQ(Written([](auto& log) {
                  log.WriteIdent("a", true, true);
                  log.SetPendingElement("target", "core0");
                  log.WriteDetailedIdent("c");
              }),
              R"(    <a>
    <target>core0</target>
        <c call_num="0"
         call_time="0.000000 s"
         threadId="1234">
)");
}

TEST_F(PendingElement, WithoutATextIsDropped)
{
    EXPECT_EQ(Written<OpenedUp>([](auto& log) {
                  log.SetPendingElement("target", "");
                  log.WriteDetailedIdent("c");
                  EXPECT_EQ(log.pendingElementName, "");
                  log.pendingElementText = "core0";
                  log.WriteIdent("c", false, true);
                  log.WriteDetailedIdent("c");
              }),
              StartTag("c", 0) + "\n    </c>\n" + StartTag("c", 0) + "\n");
}

TEST_F(PendingElement, WithoutANameIsDropped)
{
    EXPECT_EQ(Written<OpenedUp>([](auto& log) {
                  log.SetPendingElement("", "core0");
                  log.WriteDetailedIdent("c");
                  EXPECT_EQ(log.pendingElementText, "");
                  log.pendingElementName = "target";
                  log.WriteIdent("c", false, true);
                  log.WriteDetailedIdent("c");
              }),
              StartTag("c", 0) + "\n    </c>\n" + StartTag("c", 0) + "\n");
}

TEST_F(PendingElement, SetTwiceIsTheSecond)
{
    EXPECT_EQ(Written([](auto& log) {
                  log.SetPendingElement("target", "core0");
                  log.SetPendingElement("target", "core1");
                  log.WriteDetailedIdent("c");
              }),
              "    <target>core1</target>\n" + StartTag("c", 0) + "\n");
}

// ---- The virtual table --------------------------------------------------------------------------

/// Notes each frame operation that is called through the table.
class Noting : public Scrivel2XmlGenRun
{
public:
    using Scrivel2XmlGenRun::Scrivel2XmlGenRun;

    std::vector<std::string> noted;

    void WriteCloseInterruptedFunction(std::string callName) override
    {
        noted.push_back("close " + callName + " at " + std::to_string(callNo));
        Scrivel2XmlGenRun::WriteCloseInterruptedFunction(callName);
    }
    void WriteDetailedIdent(std::string callName) override
    {
        noted.push_back("start " + callName + " at " + std::to_string(callNo));
        Scrivel2XmlGenRun::WriteDetailedIdent(callName);
    }
    void WriteDetailedIdent(std::string callName, unsigned long address) override
    {
        noted.push_back("start " + callName + " with " + std::to_string(address));
        Scrivel2XmlGenRun::WriteDetailedIdent(callName, address);
    }
    void WriteTabs(bool openTag) override
    {
        noted.push_back("tabs " + std::to_string(openTag) + " at depth " + std::to_string(depth));
        Scrivel2XmlGenRun::WriteTabs(openTag);
    }
    void WriteTimestamp(const std::string& name, bool asElement) override
    {
        noted.push_back("time " + name + " " + std::to_string(asElement));
        Scrivel2XmlGenRun::WriteTimestamp(name, asElement);
    }
    void IncCallNo() override
    {
        noted.emplace_back("number");
        Scrivel2XmlGenRun::IncCallNo();
    }
};

TEST_F(RunFrame, EnteringACallGoesThroughTheTableAndRaisesTheNumberItself)
{
    Noting log("trace");
    log.StartLogging();
    log.noted.clear();
    EXPECT_EQ(log.EnterCadiCall("c"), 1U);
    EXPECT_EQ(log.noted, (std::vector<std::string>{
                             "close c at 0",
                             "start c at 1",
                             "start c with 0",
                             "tabs 1 at depth 1",
                             "time call_time 0",
                             "tabs 0 at depth 2",
                             "tabs 0 at depth 2",
                         }));
}

/// Changes the depth wherever something is indented.
class Sinking : public Scrivel2XmlGenRun
{
public:
    using Scrivel2XmlGenRun::depth;
    using Scrivel2XmlGenRun::Scrivel2XmlGenRun;

    void WriteTabs(bool openTag) override
    {
        Scrivel2XmlGenRun::WriteTabs(openTag);
        depth += 3;
    }
};

TEST_F(RunFrame, StartTagRaisesTheDepthByOneWhateverIndentationDoesToIt)
{
    Sinking log("trace");
    log.StartLogging();
    log.SeekFilePointerPosition();
    log.WriteDetailedIdent("CADIReset", 1);
    EXPECT_EQ(log.depth, 2U);
    log.UpdateFilePointerPosition();
    log.EndLogging();
    EXPECT_EQ(WholeFile(), Header() + R"(    <CADIReset call_num="0"
     call_time="0.000000 s"
     threadId="1234" disassembler_address="0x0000000000000001">
)" + EndTag());
}

/// Enters calls in a way of its own.
class Entering : public Scrivel2XmlGenRun
{
public:
    using Scrivel2XmlGenRun::Scrivel2XmlGenRun;

    unsigned int EnterCadiCall(std::string callName) override
    {
        return Scrivel2XmlGenRun::EnterCadiCall(callName) + 100;
    }
};

TEST_F(RunFrame, EnteringACallIsVirtual)
{
    Entering log("trace");
    log.StartLogging();
    EXPECT_EQ(static_cast<ScrivelXmlGenRunBase&>(log).EnterCadiCall("c"), 101U);
}

}  // namespace
