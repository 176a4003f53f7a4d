// The guard of a call: what it writes, in what order, and what it leaves when something throws.

#include "LoggedCall.h"

#include "layer/CallReader.h"
#include "layer/LayerTest.h"
#include "support/Memory.h"

#include <new>
#include <stdexcept>
#include <type_traits>

using namespace Scrivel2;

namespace
{

class LoggedCalls : public ScrivelTest::LayerTest
{
protected:
    static std::string ConnectFile(const std::string& body)
    {
        return Header("connect") + body + EndTag("connect");
    }

    RunLog log{"run"};
    ConnectLog connectLog{"connect"};
};

TEST_F(LoggedCalls, CallIsWrittenWithArgumentsAndResults)
{
    eslapi::CADIReg_t values[1] = {};
    values[0].regNumber = 15;
    {
        LoggedCall call(log, "CADIRegRead");
        call.Arguments([&](auto& xml) { xml.WriteDecimal("regCount", 1); });
        SetClock(1000, 93);
        call.Results([&](auto& xml) {
            xml.WriteRegArray("reg", values, 1);
            xml.WriteReturnType("return", eslapi::CADI_STATUS_OK);
        });
    }
    EXPECT_EQ(InRunFile(), RunFile(StartTag("CADIRegRead") + R"(
        <regCount>1</regCount>
        <return_time>0.000093 s</return_time>
        <reg>
            <reg>
                <regNumber>15</regNumber>
                <bytes>00000000 00000000 00000000 00000000 </bytes>
                <offset128>0</offset128>
                <isUndefined>false</isUndefined>
                <attribute>CADI_REG_READ_WRITE</attribute>
            </reg>
        </reg>
        <return>CADI_STATUS_OK</return>
    </CADIRegRead>
)"));
}

TEST_F(LoggedCalls, CallIsInTheCompleteFileBeforeItsArguments)
{
    const LoggedCall call(log, "CADIExecStop");
    EXPECT_EQ(InRunFile(), RunFile(StartTag("CADIExecStop") + R"(
    </CADIExecStop>
)"));
}

TEST_F(LoggedCalls, ArgumentsAreInTheCompleteFileBeforeTheTargetRuns)
{
    LoggedCall call(log, "CADIExecReset");
    call.Arguments([](auto& xml) { xml.WriteDecimal("level", 7); });
    EXPECT_EQ(InRunFile(), RunFile(StartTag("CADIExecReset") + R"(
        <level>7</level>
    </CADIExecReset>
)"));
}

TEST_F(LoggedCalls, ArgumentsGivenToTheConstructorTakeOneFlush)
{
    const unsigned int before = ScrivelTest::platform.pwrite.Calls();
    const LoggedCall call(log, "CADIExecReset", [](auto& xml) { xml.WriteDecimal("level", 7); });
    EXPECT_EQ(ScrivelTest::platform.pwrite.Calls(), before + 1);
    EXPECT_EQ(InRunFile(), RunFile(StartTag("CADIExecReset") + R"(
        <level>7</level>
    </CADIExecReset>
)"));
}

TEST_F(LoggedCalls, GuardAloneLogsThatTheCallReturned)
{
    {
        const LoggedCall call(log, "CADIExecStop");
        SetClock(1000, 5);
    }
    EXPECT_EQ(InRunFile(), RunFile(StartTag("CADIExecStop") + R"(
        <return_time>0.000005 s</return_time>
    </CADIExecStop>
)"));
}

TEST_F(LoggedCalls, CallIsEndedWhenTheTargetThrows)
{
    const auto throwing = [&] {
        LoggedCall call(log, "CADIExecReset");
        call.Arguments([](auto& xml) { xml.WriteDecimal("level", 7); });
        throw std::runtime_error("the target's own");
    };
    EXPECT_THROW(throwing(), std::runtime_error);
    EXPECT_EQ(InRunFile(), RunFile(StartTag("CADIExecReset") + R"(
        <level>7</level>
        <return_time>0.000000 s</return_time>
    </CADIExecReset>
)"));
}

TEST_F(LoggedCalls, ConnectionPhaseCallIsWrittenInItsForm)
{
    std::uint32_t count = 1;
    eslapi::CADISimulationInfo_t info{7, "sim", "a & b"};
    {
        LoggedCall call(connectLog, "GetSimulationInfos");
        call.Arguments([](auto& xml) { xml.WriteDecimal("desired", 1); });
        call.Results([&](auto& xml) { xml.WriteSimulationInfoArray("infos", &info, &count); });
    }
    EXPECT_EQ(FileText("connect-4242.xml"),
              ConnectFile(R"(    <GetSimulationInfos call_num="1" call_time="0.000000 s">
        <desired>1</desired>
        <return_time>0.000000 s</return_time>
        <infos>
            <simulationFactory>
                <id>7</id>
                <name>sim</name>
                <description>a &amp; b</description>
            </simulationFactory>
        </infos>
    </GetSimulationInfos>
)"));
}

TEST_F(LoggedCalls, CallForADisassemblerHasItsAddressAndAnElementBeforeIt)
{
    {
        LoggedCall call(log, "CADIMemRead", CallHead{0x8000, "2nd disassembler", "RV32I & <C>\n"},
                        [](auto& xml) { xml.WriteDecimal("bytes", 4); });
    }
    EXPECT_EQ(InRunFile(), RunFile("    <_nd_disassembler>RV32I &amp; &lt;C&gt;\\x0a</_nd_disassembler>\n"
                                   "    <CADIMemRead call_num=\"1\"\n"
                                   "     call_time=\"0.000000 s\"\n"
                                   "     threadId=\"1234\" disassembler_address=\"0x0000000000008000\">\n"
                                   "        <bytes>4</bytes>\n"
                                   "        <return_time>0.000000 s</return_time>\n"
                                   "    </CADIMemRead>\n"));
    EXPECT_TRUE(ScrivelTest::ReadCalls(InRunFile()).accepted);
}

TEST_F(LoggedCalls, AddressAndElementAreThoseOfOneCall)
{
    const LoggedCall first(log, "first", CallHead{0x8000, "before", "text"});
    const LoggedCall second(log, "second");
    const std::string file = InRunFile();
    EXPECT_LT(file.find("<before>text</before>"), file.find("<first"));
    EXPECT_EQ(file.find("<before>"), file.rfind("<before>"));
    EXPECT_EQ(file.find("disassembler_address"), file.rfind("disassembler_address"));
}

TEST_F(LoggedCalls, ElementBeforeACallThatInterruptsStandsAfterTheInterruptedOne)
{
    const LoggedCall older(log, "older");
    const LoggedCall younger(log, "younger", {0, "before", "text"});
    EXPECT_EQ(InRunFile(), RunFile("    <older call_num=\"1\"\n"
                                   "     call_time=\"0.000000 s\"\n"
                                   "     threadId=\"1234\">\n"
                                   "    </older>\n"
                                   "\n<!-- Call 1 (\"older\") interrupted -->\n\n"
                                   "    <before>text</before>\n"
                                   "    <younger call_num=\"2\"\n"
                                   "     call_time=\"0.000000 s\"\n"
                                   "     threadId=\"1234\">\n"
                                   "    </younger>\n"));
}

TEST_F(LoggedCalls, ElementWithoutNameOrTextIsNotWritten)
{
    const std::string call = "    <c call_num=\"1\"\n"
                             "     call_time=\"0.000000 s\"\n"
                             "     threadId=\"1234\">\n"
                             "        <return_time>0.000000 s</return_time>\n"
                             "    </c>\n";
    {
        const LoggedCall withoutName(log, "c", {0, "", "text"});
    }
    EXPECT_EQ(InRunFile(), RunFile(call));
    RunLog other("other");
    {
        const LoggedCall withoutText(other, "c", {0, "name", ""});
    }
    EXPECT_EQ(FileText("other-4242.xml"), Header("other") + call + EndTag("other"));
}

TEST_F(LoggedCalls, CallbackInterruptsTheCallThatRuns)
{
    {
        LoggedCall run(log, "CADIExecContinue");
        SetClock(1000, 1);
        {
            LoggedCall callback(log, "modeChange");
            callback.Arguments([](auto& xml) { xml.WriteExecMode("newMode", 2); });
            SetClock(1000, 2);
        }
        SetClock(1000, 3);
        run.Results([](auto& xml) { xml.WriteReturnType("return", eslapi::CADI_STATUS_OK); });
    }
    EXPECT_EQ(InRunFile(), RunFile(StartTag("CADIExecContinue") + R"(
    </CADIExecContinue>

<!-- Call 1 ("CADIExecContinue") interrupted -->

)" + StartTag("modeChange", 2, "0.000001") +
                                   R"(
        <newMode>CADI_EXECMODE_Bpt</newMode>
        <return_time>0.000002 s</return_time>
    </modeChange>

<!-- Continuing call 1 ("CADIExecContinue") -->

    <CADIExecContinue call_num="1">
        <return_time>0.000003 s</return_time>
        <return>CADI_STATUS_OK</return>
    </CADIExecContinue>
)"));
}

TEST_F(LoggedCalls, ArgumentsOfACallThatIsInterruptedBeforeThemStandInASecondElement)
{
    LoggedCall older(log, "older");
    LoggedCall younger(log, "younger");
    older.Arguments([](auto& xml) { xml.WriteDecimal("a", 1); });
    EXPECT_EQ(InRunFile(), RunFile(StartTag("older") + R"(
    </older>

<!-- Call 1 ("older") interrupted -->

)" + StartTag("younger", 2) + R"(
    </younger>

<!-- Continuing call 1 ("older") -->

    <older call_num="1">
        <a>1</a>
    </older>
)"));

    younger.Arguments([](auto& xml) { xml.WriteDecimal("a", 2); });
    younger.Results([](auto& xml) { xml.WriteDecimal("r", 2); });
    older.Results([](auto& xml) { xml.WriteDecimal("r", 1); });
    const auto read = ScrivelTest::ReadCalls(InRunFile());
    ASSERT_TRUE(read.accepted);
    EXPECT_EQ(read.calls.at(1).Argument("a"), "1");
    EXPECT_EQ(read.calls.at(1).Result("r"), "1");
    EXPECT_EQ(read.calls.at(2).Argument("a"), "2");
    EXPECT_EQ(read.calls.at(2).Result("r"), "2");
}

TEST_F(LoggedCalls, ArgumentsMayComeInSeveralPieces)
{
    LoggedCall call(log, "CADIMemRead");
    call.Arguments([](auto& xml) { xml.WriteDecimal("a", 1); });
    call.Arguments([](auto& xml) { xml.WriteDecimal("b", 2); });
    const auto read = ScrivelTest::ReadCalls(InRunFile());
    EXPECT_EQ(read.calls.at(1).arguments, (std::vector<ScrivelTest::Leaf>{{"a", "1"}, {"b", "2"}}));
}

TEST_F(LoggedCalls, NumberIsThatOfTheLog)
{
    const LoggedCall first(log, "a");
    const LoggedCall second(log, "b");
    EXPECT_EQ(first.Number(), 1U);
    EXPECT_EQ(second.Number(), 2U);
}

TEST_F(LoggedCalls, CallAfterTheEndOfTheLogIsNotLogged)
{
    log.EndLogging();
    LoggedCall call(log, "CADIExecStop");
    call.Arguments([](auto&) { FAIL() << "nothing to write to"; });
    call.Results([](auto&) { FAIL() << "nothing to write to"; });
    EXPECT_EQ(call.Number(), 0U);
    EXPECT_EQ(InRunFile(), RunFile("\n<!-- Log ended -->\n\n"));
}

TEST_F(LoggedCalls, CallWhoseLogEndsBeforeItsArgumentsStaysAsItIs)
{
    LoggedCall call(log, "CADIExecStop");
    log.EndLogging();
    const std::string ended = InRunFile();
    call.Arguments([](auto&) { FAIL() << "nothing to write to"; });
    call.Results([](auto&) { FAIL() << "nothing to write to"; });
    EXPECT_EQ(call.Number(), 1U);
    EXPECT_EQ(InRunFile(), ended);
}

TEST_F(LoggedCalls, CommentStandsAmongTheArguments)
{
    LoggedCall call(log, "CADIMemRead", [](auto& xml) {
        xml.WriteDecimal("a", 1);
        xml.WriteComment("why -- so");
        xml.WriteDecimal("b", 2);
    });
    EXPECT_EQ(InRunFile(), RunFile(StartTag("CADIMemRead") + "\n"
                                                             "        <a>1</a>\n"
                                                             "    \n"
                                                             "<!-- why - - so -->\n"
                                                             "\n"
                                                             "        <b>2</b>\n"
                                                             "    </CADIMemRead>\n"));
}

// ---- Callables that throw -----------------------------------------------------------------------

/// Writes part of the values, and then can't go on.
struct Failing
{
    template <typename Xml>
    void operator()(Xml& xml) const
    {
        xml.WriteDecimal("first", 1);
        xml.WriteDecimal("second", 2);
        throw std::runtime_error("the writer's own");
    }
};

TEST_F(LoggedCalls, ArgumentsThatCannotBeWrittenAreTakenBack)
{
    LoggedCall call(log, "CADIMemRead");
    EXPECT_THROW(call.Arguments(Failing()), std::runtime_error);
    EXPECT_EQ(InRunFile(), RunFile(StartTag("CADIMemRead") + "\n    </CADIMemRead>\n"));
    call.Arguments([](auto& xml) { xml.WriteDecimal("a", 1); });
    call.Results([](auto& xml) { xml.WriteDecimal("r", 2); });
    const auto read = ScrivelTest::ReadCalls(InRunFile());
    ASSERT_TRUE(read.accepted);
    EXPECT_EQ(read.calls.at(1).Argument("a"), "1");
    EXPECT_EQ(read.calls.at(1).Result("r"), "2");
}

TEST_F(LoggedCalls, ArgumentsOfTheConstructorThatCannotBeWrittenEndTheCall)
{
    EXPECT_THROW(LoggedCall(log, "CADIMemRead", Failing()), std::runtime_error);
    const auto read = ScrivelTest::ReadCalls(InRunFile());
    ASSERT_TRUE(read.accepted);
    EXPECT_TRUE(read.calls.at(1).arguments.empty());
    EXPECT_EQ(read.calls.at(1).returns, 1U);
}

TEST_F(LoggedCalls, ResultsThatCannotBeWrittenAreTakenBack)
{
    {
        LoggedCall call(log, "CADIMemRead");
        EXPECT_THROW(call.Results(Failing()), std::runtime_error);
    }
    {
        const LoggedCall next(log, "next");
    }
    EXPECT_EQ(InRunFile(), RunFile(StartTag("CADIMemRead") + R"(
        <return_time>0.000000 s</return_time>
    </CADIMemRead>
)" + StartTag("next", 2) + R"(
        <return_time>0.000000 s</return_time>
    </next>
)"));
}

TEST_F(LoggedCalls, LateArgumentsThatCannotBeWrittenLeaveADocument)
{
    LoggedCall older(log, "older");
    const LoggedCall younger(log, "younger");
    EXPECT_THROW(older.Arguments(Failing()), std::runtime_error);
    EXPECT_TRUE(ScrivelTest::ReadCalls(InRunFile()).accepted);
}

TEST_F(LoggedCalls, NameThatReadersRefuseForItsLengthIsRefused)
{
    {
        LoggedCall call(log, "c");
        call.Arguments([](auto& xml) { xml.WriteDecimal(std::string(50'000, 'x'), 1); });
        EXPECT_THROW(call.Results([](auto& xml) { xml.WriteDecimal(std::string(50'001, 'x'), 1); }),
                     std::length_error);
    }
    const auto read = ScrivelTest::ReadCalls(InRunFile());
    ASSERT_TRUE(read.accepted);
    EXPECT_EQ(read.calls.at(1).Argument(std::string(50'000, 'x')), "1");
    EXPECT_TRUE(read.calls.at(1).results.empty());
}

TEST_F(LoggedCalls, ArrayWhoseWriterThrowsInItsMidstLeavesTheDepthAsItWas)
{
    char first[] = "first";
    char* names[] = {first, nullptr};
    {
        LoggedCall call(log, "c");
        EXPECT_THROW(call.Arguments([&](auto& xml) { xml.WriteStringArray("names", names, 2); }),
                     std::logic_error);
    }
    {
        const LoggedCall next(log, "next");
    }
    const std::string file = InRunFile();
    ASSERT_TRUE(ScrivelTest::ReadCalls(file).accepted);
    EXPECT_EQ(file.find("<names>"), std::string::npos);
    EXPECT_NE(file.find("\n    <next call_num=\"2\"\n"), std::string::npos);
}

// ---- Memory that ends ---------------------------------------------------------------------------

TEST_F(LoggedCalls, CallThatThereIsNoMemoryForIsNotInTheLogAndTheNextOneIs)
{
    const std::string text(100'000, 'x');
    const auto writeText = [&](auto& xml) { xml.WriteString("text", text); };
    ScrivelTest::refuseMemory = [](std::size_t) { return true; };
    EXPECT_THROW(LoggedCall(log, "refused", writeText), std::bad_alloc);
    EXPECT_EQ(InRunFile(), RunFile(""));
    EXPECT_TRUE(log.IsGood());
    ScrivelTest::refuseMemory = nullptr;
    const LoggedCall call(log, "taken", writeText);
    EXPECT_EQ(call.Number(), 1U);
    EXPECT_EQ(ScrivelTest::ReadCalls(InRunFile()).calls.at(1).Argument("text"), text);
}

TEST_F(LoggedCalls, ResultsThatThereIsNoMemoryForLeaveTheCallToItsEnd)
{
    {
        LoggedCall call(log, "c");
        ScrivelTest::refuseMemory = [](std::size_t) { return true; };
        EXPECT_THROW(call.Results([](auto& xml) { xml.WriteString("text", std::string(100'000, 'x')); }),
                     std::bad_alloc);
        ScrivelTest::refuseMemory = nullptr;
    }
    EXPECT_EQ(InRunFile(), RunFile(StartTag("c") + R"(
        <return_time>0.000000 s</return_time>
    </c>
)"));
}

// ---- What the callables reach -------------------------------------------------------------------

template <typename Xml, typename Use>
constexpr bool Allows(Use)
{
    return std::is_invocable_v<Use, Xml&>;
}

template <typename Xml>
constexpr bool
    reachesValuesAlone = Allows<Xml>([](auto& xml) -> decltype(xml.WriteDecimal("d", 1)) {}) &&
                         Allows<Xml>([](auto& xml) -> decltype(xml.WriteComment("c")) {}) &&
                         !Allows<Xml>([](auto& xml) -> decltype(xml.ReopenCall(1, "c")) {}) &&
                         !Allows<Xml>([](auto& xml) -> decltype(xml.WriteIdent("i", true, true)) {}) &&
                         !Allows<Xml>([](auto& xml) -> decltype(xml.FlushOutput(true, "")) {}) &&
                         !Allows<Xml>([](auto& xml) -> decltype(xml.SeekFilePointerPosition()) {}) &&
                         !Allows<Xml>([](auto& xml) -> decltype(xml.EndLogging()) {}) &&
                         !std::is_convertible_v<Xml&, ScrivelXmlGenBase&>;

static_assert(reachesValuesAlone<RunWriters>);
static_assert(reachesValuesAlone<ConnectWriters>);

TEST_F(LoggedCalls, FunctionsMayTakeTheWritersByTheirName)
{
    const auto writeLevel = [](RunWriters& xml) { xml.WriteDecimal("level", 7); };
    const auto writeDesired = [](ConnectWriters& xml) { xml.WriteDecimal("desired", 1); };
    const LoggedCall call(log, "CADIExecReset", writeLevel);
    const LoggedCall connectCall(connectLog, "GetTargetInfos", writeDesired);
    EXPECT_EQ(ScrivelTest::ReadCalls(InRunFile()).calls.at(1).Argument("level"), "7");
    EXPECT_EQ(ScrivelTest::ReadCalls(FileText("connect-4242.xml")).calls.at(1).Argument("desired"), "1");
}

// ---- What a call costs --------------------------------------------------------------------------

TEST_F(LoggedCalls, CallTakesOneWriteForEachFlushAndNeverSeeksInTheFile)
{
    auto& platform = ScrivelTest::platform;
    const unsigned int writes = platform.pwrite.Calls();
    const unsigned int seeks = platform.lseek.Calls();
    const unsigned int cuts = platform.ftruncate.Calls();
    for (int i = 0; i < 10; ++i) {
        LoggedCall call(log, "CADIExecReset", [](auto& xml) { xml.WriteDecimal("level", 7); });
        call.Results([](auto& xml) { xml.WriteReturnType("return", eslapi::CADI_STATUS_OK); });
    }
    EXPECT_EQ(platform.pwrite.Calls(), writes + 20);
    EXPECT_EQ(platform.lseek.Calls(), seeks);
    EXPECT_EQ(platform.ftruncate.Calls(), cuts);
}

static_assert(!std::is_copy_constructible_v<LoggedCall<Scrivel2XmlGenRun>>);

}  // namespace
