// The frame of calls: tags, times, calls that interrupt each other and continue, comments.

#include "support/GeneratorTest.h"

#include <string>

namespace
{

using Scrivel2::ScrivelXmlGenBase;
using ScrivelTest::IsDocument;
using ScrivelTest::platform;
using ScrivelTest::XPath;

using OpenLog = ScrivelTest::Unprotected<ScrivelXmlGenBase>;

/// Whole logs, framed as the connection phase does. Call 1 starts at 0.1 s, each step comes a tenth of
/// a second later.
class CallFrame : public ScrivelTest::GeneratorTest<ScrivelXmlGenBase>
{
protected:
    void Enter(ScrivelXmlGenBase& log, const std::string& name)
    {
        Tick();
        log.WriteCloseInterruptedFunction(name);
        log.IncCallNo();
        log.WriteDetailedIdent(name);
    }

    void Continue(ScrivelXmlGenBase& log, unsigned int number, const std::string& name)
    {
        Tick();
        log.WriteContinueFunction(number, name);
    }

    static void Leave(ScrivelXmlGenBase& log, const std::string& name)
    {
        log.WriteIdent(name, false, true);
        log.FlushOutput(true, "");
    }

    std::unique_ptr<ScrivelXmlGenBase> Started(bool secure)
    {
        auto log = Make();
        log->SetWriteSecure(secure);
        log->StartLogging();
        return log;
    }

private:
    void Tick() { SetClock(1000, ++ticks * 100000); }

    long ticks = 0;
};

// ---- Indentation and tags -----------------------------------------------------------------------

TEST_F(CallFrame, StartTagIsIndentedByTheDepthAndEndTagByOneLess)
{
    EXPECT_EQ(Written<OpenLog>([](auto& log) {
                  log.depth = 2;
                  log.WriteIdent("value", true, false);
                  EXPECT_EQ(log.depth, 3U);
                  log.WriteIdent("value", false, true);
                  EXPECT_EQ(log.depth, 2U);
              }),
              "        <value>        </value>\n");
}

TEST_F(CallFrame, NewlineFollowsATagOnlyWhenAskedFor)
{
    EXPECT_EQ(Written([](auto& log) {
                  log.WriteIdent("a", true, true);
                  log.WriteIdent("b", true, false);
                  log.WriteIdent("b", false, false);
                  log.WriteIdent("a", false, true);
              }),
              "    <a>\n"
              "        <b>        </b>    </a>\n");
}

TEST_F(CallFrame, EndTagWithoutTabsHasNoIndentationAndAlwaysANewline)
{
    EXPECT_EQ(Written<OpenLog>([](auto& log) {
                  log.depth = 5;
                  log.WriteIdentWithoutTabs("v:1");
                  EXPECT_EQ(log.depth, 4U);
              }),
              "</v_1>\n");
}

TEST_F(CallFrame, TabsAreFourBlanksALevelAndOneLevelLessForAnEndTag)
{
    const auto tabs = [](unsigned int depth, bool openTag) {
        return Written<OpenLog>([&](auto& log) {
            log.depth = depth;
            log.WriteTabs(openTag);
        });
    };
    EXPECT_EQ(tabs(0, true), "");
    EXPECT_EQ(tabs(0, false), "");
    EXPECT_EQ(tabs(1, true), "    ");
    EXPECT_EQ(tabs(1, false), "");
    EXPECT_EQ(tabs(2, true), "        ");
    EXPECT_EQ(tabs(2, false), "    ");
    EXPECT_EQ(tabs(16, true), std::string(64, ' '));
    EXPECT_EQ(tabs(17, true), std::string(68, ' '));
    EXPECT_EQ(tabs(1000, true), std::string(4000, ' '));
    EXPECT_EQ(tabs(1000, false), std::string(3996, ' '));
}

TEST_F(CallFrame, SurplusEndTagAtDepthZeroWrapsTheDepth)
{
    Written<OpenLog>([](auto& log) {
        log.depth = 0;
        log.WriteIdent("a", false, true);
        EXPECT_EQ(log.depth, 0xffffffffU);
        log.depth = 0;
        log.WriteIdentWithoutTabs("a");
        EXPECT_EQ(log.depth, 0xffffffffU);
    });
}

// ---- Call elements ------------------------------------------------------------------------------

TEST_F(CallFrame, CallElementShowsNumberAndTimeOnOneLine)
{
    EXPECT_EQ(Written<OpenLog>([&](auto& log) {
                  log.IncCallNo();
                  log.IncCallNo();
                  log.IncCallNo();
                  SetClock(1000, 10020);
                  log.WriteDetailedIdent("2nd Connect");
                  EXPECT_EQ(log.depth, 2U);
              }),
              "    <_nd_Connect call_num=\"3\" call_time=\"0.010020 s\">\n");
}

TEST_F(CallFrame, CallElementIsIndentedByFourBlanksAtAnyDepthAndItsTimeByTheDepth)
{
    EXPECT_EQ(Written<OpenLog>([](auto& log) {
                  log.depth = 3;
                  log.WriteDetailedIdent("Connect");
              }),
              "    <Connect call_num=\"0\"         call_time=\"0.000000 s\">\n");
}

TEST_F(CallFrame, CallNumberIsRaisedByOneAndUnsigned)
{
    Written<OpenLog>([](auto& log) {
        EXPECT_EQ(log.GetCallNo(), 0U);
        log.IncCallNo();
        EXPECT_EQ(log.GetCallNo(), 1U);
        log.callNo = 0xffffffff;
        log.IncCallNo();
        EXPECT_EQ(log.GetCallNo(), 0U);
    });
    EXPECT_EQ(Written<OpenLog>([](auto& log) {
                  log.callNo = 0xffffffff;
                  log.WriteDetailedIdent("Connect");
              }),
              "    <Connect call_num=\"4294967295\" call_time=\"0.000000 s\">\n");
}

// ---- Times --------------------------------------------------------------------------------------

TEST_F(CallFrame, TimeHasSecondsAndSixDecimals)
{
    EXPECT_EQ(Written([&](auto& log) {
                  SetClock(1003, 4500);
                  log.WriteTimestamp("return_time", true);
                  SetClock(1000, 0);
                  log.WriteTimestamp("return_time", true);
                  SetClock(2000, 999999);
                  log.WriteTimestamp("return_time", true);
              }),
              R"(    <return_time>3.004500 s</return_time>
    <return_time>0.000000 s</return_time>
    <return_time>1000.999999 s</return_time>
)");
}

TEST_F(CallFrame, MicrosecondsBorrowFromTheSeconds)
{
    SetClock(1, 999999);
    EXPECT_EQ(Written([&](auto& log) {
                  SetClock(4, 1);
                  log.WriteTimestamp("return_time", true);
              }),
              "    <return_time>2.000002 s</return_time>\n");
}

TEST_F(CallFrame, MicrosecondsBorrowOnlyOnce)
{
    SetClock(0, 1999999);
    EXPECT_EQ(Written([&](auto& log) {
                  SetClock(5, 0);
                  log.WriteTimestamp("t", true);
              }),
              "    <t>4.4293967297 s</t>\n");
}

TEST_F(CallFrame, SecondsOfAClockThatWentBackAreTheirLow32Bits)
{
    EXPECT_EQ(Written([&](auto& log) {
                  SetClock(999, 0);
                  log.WriteTimestamp("t", true);
                  SetClock(1000 + (1L << 32) + 7, 0);
                  log.WriteTimestamp("t", true);
              }),
              "    <t>4294967295.000000 s</t>\n"
              "    <t>7.000000 s</t>\n");
}

TEST_F(CallFrame, TimeAsAnAttributeIsIndentedAsAnEndTagIs)
{
    EXPECT_EQ(Written<OpenLog>([](auto& log) {
                  log.WriteTimestamp("call_time", false);
                  log.depth = 3;
                  log.WriteTimestamp("call_time", false);
              }),
              " call_time=\"0.000000 s\""
              "         call_time=\"0.000000 s\"");
}

TEST_F(CallFrame, TimeKeepsTheDepthAndItsNameIsWrittenAsGiven)
{
    EXPECT_EQ(Written<OpenLog>([](auto& log) {
                  log.depth = 2;
                  log.WriteTimestamp("2nd time", true);
                  log.WriteTimestamp("2nd time", false);
                  EXPECT_EQ(log.depth, 2U);
              }),
              "        <2nd time>0.000000 s</2nd time>\n"
              "     2nd time=\"0.000000 s\"");
}

TEST_F(CallFrame, TimeAsAnElementIsEscapedAndAsAnAttributeIsNot)
{
    platform.isprint.Use([](int c) { return c == '.' ? 0 : 1; });
    EXPECT_EQ(Written([](auto& log) {
                  log.WriteTimestamp("t", true);
                  log.WriteTimestamp("t", false);
              }),
              "    <t>0\\x2e000000 s</t>\n"
              " t=\"0.000000 s\"");
}

// ---- One call after the other -------------------------------------------------------------------

TEST_F(CallFrame, CallIsADocumentAgainWhenItHasReturned)
{
    const auto log = Started(true);
    Enter(*log, "Connect");
    log->WriteDecimal("port", 1);
    log->FlushOutput(false, "Connect");
    EXPECT_EQ(WholeFile(), Header() + R"(    <Connect call_num="1" call_time="0.100000 s">
        <port>1</port>
    </Connect>
)");
    Continue(*log, 1, "Connect");
    log->WriteBool("return", true);
    Leave(*log, "Connect");
    const std::string first = R"(    <Connect call_num="1" call_time="0.100000 s">
        <port>1</port>
        <return_time>0.200000 s</return_time>
        <return>true</return>
    </Connect>
)";
    EXPECT_EQ(WholeFile(), Complete(first));
    EXPECT_TRUE(IsDocument(WholeFile()));

    Enter(*log, "Detach");
    log->FlushOutput(false, "Detach");
    Continue(*log, 2, "Detach");
    Leave(*log, "Detach");
    log->EndLogging();
    EXPECT_EQ(WholeFile(), Complete(first +
                                    R"(    <Detach call_num="2" call_time="0.300000 s">
        <return_time>0.400000 s</return_time>
    </Detach>
)"));
    EXPECT_EQ(XPath(WholeFile(), "/*/*/@call_num"), (std::vector<std::string>{"1", "2"}));
}

TEST_F(CallFrame, CallsOutsideSecureModeFollowEachOtherWithoutTails)
{
    const auto log = Started(false);
    Enter(*log, "Connect");
    log->FlushOutput(false, "Connect");
    Continue(*log, 1, "Connect");
    Leave(*log, "Connect");
    Enter(*log, "Detach");
    log->FlushOutput(false, "Detach");
    Continue(*log, 2, "Detach");
    Leave(*log, "Detach");
    log->EndLogging();
    EXPECT_EQ(WholeFile(), Header() + R"(    <Connect call_num="1" call_time="0.100000 s">
        <return_time>0.200000 s</return_time>
    </Connect>
    <Detach call_num="2" call_time="0.300000 s">
        <return_time>0.400000 s</return_time>
    </Detach>
)");
}

TEST_F(CallFrame, CallThatIsStillCurrentAndOpenIsContinuedByItsReturnTimeAlone)
{
    const auto log = Started(true);
    Enter(*log, "Connect");
    log->FlushOutput(false, "Connect");
    Continue(*log, 1, "Connect");
    log->FlushOutput(true, "");
    EXPECT_EQ(WholeFile(), Complete("    <Connect call_num=\"1\" call_time=\"0.100000 s\">\n"
                                    "        <return_time>0.200000 s</return_time>\n"));
}

TEST_F(CallFrame, ContinuingWithoutAFlushSinceOverwritesTheCallInSecureMode)
{
    const auto log = Started(true);
    Enter(*log, "Connect");
    log->WriteDecimal("port", 1);
    Continue(*log, 1, "Connect");
    log->FlushOutput(true, "");
    // What is left of the start tag and its argument stands after the root end tag.
    EXPECT_EQ(WholeFile(), Header() + R"(        <return_time>0.200000 s</return_time>
</trace-4242>
ort>1</port>
)");
}

// ---- Interrupted calls --------------------------------------------------------------------------

TEST_F(CallFrame, InterruptedCallKeepsItsProvisionalEndTagAndIsMarked)
{
    const auto log = Started(true);
    Enter(*log, "Run");
    log->FlushOutput(false, "Run");
    log->WriteCloseInterruptedFunction("ModeChange");
    const std::string run = R"(    <Run call_num="1" call_time="0.100000 s">
    </Run>

<!-- Call 1 ("Run") interrupted -->

)";
    EXPECT_EQ(WholeFile(), Header() + run);

    SetClock(1000, 200000);
    log->IncCallNo();
    log->WriteDetailedIdent("ModeChange");
    log->FlushOutput(false, "ModeChange");
    // The comment is not remembered as a place to write on: the text goes on after it.
    EXPECT_EQ(WholeFile(), Header() + run +
                               "    <ModeChange call_num=\"2\" call_time=\"0.200000 s\">\n"
                               "    </ModeChange>\n");
}

TEST_F(CallFrame, InterruptedCallOutsideSecureModeIsClosedByAnEndTagOfItsOwn)
{
    const auto log = Started(false);
    Enter(*log, "Run");
    log->FlushOutput(false, "Run");
    Enter(*log, "ModeChange");
    log->FlushOutput(false, "ModeChange");
    EXPECT_EQ(WholeFile(), Header() + R"(    <Run call_num="1" call_time="0.100000 s">
    </Run>

<!-- Call 1 ("Run") interrupted -->

    <ModeChange call_num="2" call_time="0.200000 s">
)");
}

TEST_F(CallFrame, CallInterruptedAfterAFinalFlushLosesItsEndTagToTheComment)
{
    const auto log = Started(true);
    Enter(*log, "Run");
    log->FlushOutput(true, "");
    Enter(*log, "Stop");
    log->FlushOutput(true, "");
    EXPECT_EQ(WholeFile(), Complete(R"(    <Run call_num="1" call_time="0.100000 s">

<!-- Call 1 ("Run") interrupted -->

    <Stop call_num="2" call_time="0.200000 s">
)"));
}

TEST_F(CallFrame, CallInterruptedWithoutAFlushIsOverwrittenByTheComment)
{
    const auto log = Started(true);
    Enter(*log, "Run");
    Enter(*log, "Stop");
    log->FlushOutput(true, "");
    EXPECT_EQ(WholeFile(), Complete(R"(
<!-- Call 1 ("Run") interrupted -->

    <Stop call_num="2" call_time="0.200000 s">
)"));
}

TEST_F(CallFrame, InterruptedCallAtADeeperLevelIsClosedOneLevelUp)
{
    const auto log = Started(false);
    Enter(*log, "Run");
    log->WriteIdent("list", true, true);
    Enter(*log, "Stop");
    log->FlushOutput(false, "");
    EXPECT_EQ(WholeFile(), Header() + "    <Run call_num=\"1\" call_time=\"0.100000 s\">\n"
                                      "        <list>\n"
                                      "        </Run>\n"
                                      "    \n"
                                      "<!-- Call 1 (\"Run\") interrupted -->\n"
                                      "\n"
                                      "    <Stop call_num=\"2\"     call_time=\"0.200000 s\">\n");
}

TEST_F(CallFrame, NameOfAnInterruptedCallIsCleanedInTheEndTagAndAsGivenInTheComment)
{
    const auto log = Started(false);
    Enter(*log, "Run:1");
    Enter(*log, "Stop");
    log->EndLogging();
    EXPECT_EQ(WholeFile(), Header() + R"(    <Run_1 call_num="1" call_time="0.100000 s">
    </Run_1>

<!-- Call 1 ("Run:1") interrupted -->

    <Stop call_num="2" call_time="0.200000 s">
)");
}

TEST_F(CallFrame, FirstCallInterruptsNothing)
{
    OpenLog log("trace", "CADI 2.0");
    log.StartLogging();
    log.WriteCloseInterruptedFunction("Connect");
    EXPECT_EQ(log.openCallName, "Connect");
    EXPECT_TRUE(log.callOpen);
    EXPECT_EQ(WholeFile(), Header() + EndTag());
}

// ---- Continued calls ----------------------------------------------------------------------------

TEST_F(CallFrame, OlderCallIsReopenedBehindTheOpenCallsOverwrittenEndTag)
{
    const auto log = Started(true);
    Enter(*log, "Run");
    log->FlushOutput(false, "Run");
    Enter(*log, "Stop");
    log->FlushOutput(false, "Stop");
    Continue(*log, 1, "Run");
    Leave(*log, "Run");
    // The comment covers the provisional end tag of the call that is still open.
    EXPECT_EQ(WholeFile(), Complete(R"(    <Run call_num="1" call_time="0.100000 s">
    </Run>

<!-- Call 1 ("Run") interrupted -->

    <Stop call_num="2" call_time="0.200000 s">

<!-- Continuing call 1 ("Run") -->

    <Run call_num="1">
        <return_time>0.300000 s</return_time>
    </Run>
)"));
}

TEST_F(CallFrame, OlderCallOutsideSecureModeIsReopenedBehindTheOpenCallsEndTag)
{
    const auto log = Started(false);
    Enter(*log, "Run");
    Enter(*log, "Stop");
    Continue(*log, 1, "Run");
    Leave(*log, "Run");
    EXPECT_EQ(WholeFile(), Header() + R"(    <Run call_num="1" call_time="0.100000 s">
    </Run>

<!-- Call 1 ("Run") interrupted -->

    <Stop call_num="2" call_time="0.200000 s">
    </Stop>

<!-- Continuing call 1 ("Run") -->

    <Run call_num="1">
        <return_time>0.300000 s</return_time>
    </Run>
)");
}

TEST_F(CallFrame, OlderCallThatContinuesAfterACallbackHasReturnedIsADocumentAtTheEnd)
{
    const auto log = Started(true);
    Enter(*log, "Run");
    log->FlushOutput(false, "Run");
    Enter(*log, "ModeChange");
    log->FlushOutput(false, "ModeChange");
    Continue(*log, 2, "ModeChange");
    Leave(*log, "ModeChange");
    Continue(*log, 1, "Run");
    Leave(*log, "Run");
    log->EndLogging();
    EXPECT_EQ(WholeFile(), Complete(R"(    <Run call_num="1" call_time="0.100000 s">
    </Run>

<!-- Call 1 ("Run") interrupted -->

    <ModeChange call_num="2" call_time="0.200000 s">
        <return_time>0.300000 s</return_time>
    </ModeChange>

<!-- Continuing call 1 ("Run") -->

    <Run call_num="1">
        <return_time>0.400000 s</return_time>
    </Run>
)"));
    EXPECT_TRUE(IsDocument(WholeFile()));
    EXPECT_EQ(XPath(WholeFile(), "//Run/@call_num"), (std::vector<std::string>{"1", "1"}));
}

TEST_F(CallFrame, CallbacksWithinCallbacksContinueFromTheInside)
{
    const auto log = Started(true);
    Enter(*log, "A");
    log->FlushOutput(false, "A");
    Enter(*log, "B");
    log->FlushOutput(false, "B");
    Enter(*log, "C");
    log->FlushOutput(false, "C");
    Continue(*log, 3, "C");
    Leave(*log, "C");
    Continue(*log, 2, "B");
    Leave(*log, "B");
    Continue(*log, 1, "A");
    Leave(*log, "A");
    log->EndLogging();
    EXPECT_EQ(WholeFile(), Complete(R"(    <A call_num="1" call_time="0.100000 s">
    </A>

<!-- Call 1 ("A") interrupted -->

    <B call_num="2" call_time="0.200000 s">
    </B>

<!-- Call 2 ("B") interrupted -->

    <C call_num="3" call_time="0.300000 s">
        <return_time>0.400000 s</return_time>
    </C>

<!-- Continuing call 2 ("B") -->

    <B call_num="2">
        <return_time>0.500000 s</return_time>
    </B>

<!-- Continuing call 1 ("A") -->

    <A call_num="1">
        <return_time>0.600000 s</return_time>
    </A>
)"));
    EXPECT_TRUE(IsDocument(WholeFile()));
}

TEST_F(CallFrame, CurrentCallThatWasContinuedAlreadyIsReopenedWithoutAComment)
{
    const auto log = Started(true);
    Enter(*log, "Run");
    log->FlushOutput(false, "Run");
    Continue(*log, 1, "Run");
    Leave(*log, "Run");
    Continue(*log, 1, "Run");
    Leave(*log, "Run");
    EXPECT_EQ(WholeFile(), Complete(R"(    <Run call_num="1" call_time="0.100000 s">
        <return_time>0.200000 s</return_time>
    </Run>
    <Run call_num="1">
        <return_time>0.300000 s</return_time>
    </Run>
)"));
}

TEST_F(CallFrame, ReopenedStartTagIsNamedAsGiven)
{
    EXPECT_EQ(Written([](auto& log) {
                  log.WriteContinueFunction(9, "2nd run");
                  log.FlushOutput(true, "");
                  log.SeekFilePointerPosition();
              }),
              R"(
<!-- Continuing call 9 ("2nd run") -->

    <2nd run call_num="9">
        <return_time>0.000000 s</return_time>
)");
}

TEST_F(CallFrame, ContinuedCallIsNoLongerOpen)
{
    OpenLog log("trace", "CADI 2.0");
    log.StartLogging();
    log.WriteCloseInterruptedFunction("Run");
    EXPECT_TRUE(log.callOpen);
    log.WriteContinueFunction(0, "Run");
    EXPECT_FALSE(log.callOpen);
    EXPECT_EQ(log.openCallName, "Run");
}

// ---- Comments -----------------------------------------------------------------------------------

TEST_F(CallFrame, CommentOverwritesTheTailAndIsFlushed)
{
    const auto log = Started(true);
    log->WriteComment("loaded <crc.elf> & more");
    EXPECT_EQ(WholeFile(), Header() + "\n<!-- loaded <crc.elf> & more -->\n\n");
    log->FlushOutput(true, "");
    EXPECT_EQ(WholeFile(), Complete("\n<!-- loaded <crc.elf> & more -->\n\n"));
    EXPECT_TRUE(IsDocument(WholeFile()));
}

TEST_F(CallFrame, ShortCommentLeavesTheRestOfTheTailBehindIt)
{
    const auto log = Started(true);
    log->WriteComment("");
    EXPECT_EQ(WholeFile(), Header() + "\n<!--  -->\n\n" + EndTag().substr(12));
}

TEST_F(CallFrame, IndentationOfACommentStandsAtTheEndOfTheLineBefore)
{
    const auto log = Started(false);
    log->WriteIdent("a", true, true);
    log->WriteIdent("b", true, true);
    log->WriteComment("c");
    EXPECT_EQ(WholeFile(), Header() + "    <a>\n"
                                      "        <b>\n"
                                      "        \n"
                                      "<!-- c -->\n"
                                      "\n");
}

TEST_F(CallFrame, CommentThatIsNotFollowedByAFlushIsOverwrittenByTheNextCall)
{
    const auto log = Started(true);
    log->WriteComment("lost");
    Enter(*log, "Connect");
    log->FlushOutput(true, "");
    EXPECT_EQ(WholeFile(), Complete("    <Connect call_num=\"1\" call_time=\"0.100000 s\">\n"));
}

TEST_F(CallFrame, CommentOutsideSecureModeIsAppended)
{
    const auto log = Started(false);
    log->WriteComment("kept");
    Enter(*log, "Connect");
    log->EndLogging();
    EXPECT_EQ(WholeFile(), Header() + "\n<!-- kept -->\n\n"
                                      "    <Connect call_num=\"1\" call_time=\"0.100000 s\">\n");
}

}  // namespace
