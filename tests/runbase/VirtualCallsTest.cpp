// Every writer opens, closes and replaces its element through the virtual table.

#include "runbase/RunTest.h"

#include <string>

namespace
{

using namespace eslapi;
using Scrivel2::Scrivel2XmlGenRun;

/// Marks what each frame operation writes.
class Marked : public Scrivel2XmlGenRun
{
public:
    using Scrivel2XmlGenRun::Scrivel2XmlGenRun;

    void WriteIdent(std::string name, bool openTag, bool newline) override
    {
        logFile.Append("I:");
        Scrivel2XmlGenRun::WriteIdent(name, openTag, newline);
    }
    void WriteIdentWithoutTabs(std::string name) override
    {
        logFile.Append(":E");
        Scrivel2XmlGenRun::WriteIdentWithoutTabs(name);
    }
    void WriteNULLPointer(std::string ident) override { logFile.Append("N:" + ident + "\n"); }
};

using VirtualCalls = ScrivelTest::RecordTest<Marked>;

/// Every start tag, every end tag of a container and every end tag of a line bears its mark.
void ExpectMarks(const std::string& written)
{
    EXPECT_NE(written.find('<'), std::string::npos);
    for (std::size_t at = written.find('<'); at != std::string::npos; at = written.find('<', at + 1)) {
        const std::size_t mark = written.find_last_not_of(' ', at - 1);
        ASSERT_GE(mark, 1U) << written;
        EXPECT_TRUE(written.compare(mark - 1, 2, "I:") == 0 || written.compare(mark - 1, 2, ":E") == 0)
            << "no mark before " << written.substr(at);
    }
}

TEST_F(VirtualCalls, EnumerationsOpenAndCloseThroughTheTable)
{
    const std::string written = Written([](auto& log) {
        log.WriteReturnType("a", CADI_STATUS_OK);
        log.WriteReturnType("a", static_cast<CADIReturn_t>(-1));
        log.WriteValueDataType("b", CADI_PARAM_INT);
        log.WriteFactoryErrorCode("c", CADIFACT_ERROR_OK);
        log.WriteFactoryErrorCode("c", static_cast<CADIFactoryErrorCode_t>(-1));
        log.WriteFactorySeverityCode("d", CADIFACT_SEVERITY_OK);
        log.WriteBptType("e", CADI_BPT_USER_DEFINED);
        log.WriteBptConditionOperator("f", CADI_BPT_COND_EQUALS);
        log.WriteBptConfigure("g", CADI_BPT_Enable);
        log.WriteExceptionAction("h", CADI_EXCEPTION_Pulse);
        log.WriteRegAccessAttribute("i", CADI_REG_READ_ONLY);
        log.WriteRegType("j", CADI_REGTYPE_Simple);
        log.WriteRegDisplay("k", CADI_REGTYPE_HEX);
        log.WriteMemReadWrite("l", CADI_MEM_ReadOnly);
        log.WriteExecMode("m", 6U);
        log.WriteTriggerType("n", 0xff);
        log.WriteEndianness("o", 2);
        log.WriteEndianness("o", 'x');
        log.WriteHandledBreakpoints("p", 0xff);
    });
    EXPECT_EQ(written, R"(I:    <a>CADI_STATUS_OK:E</a>
I:    <a>Invalid return type: 0xffffffff:E</a>
I:    <b>CADI_PARAM_INT:E</b>
I:    <c>CADIFACT_ERROR_OK:E</c>
I:    <c>Invalid factory error code: 0xffffffff:E</c>
I:    <d>CADIFACT_SEVERITY_OK:E</d>
I:    <e>CADI_BPT_USER_DEFINED:E</e>
I:    <f>CADI_BPT_COND_EQUALS:E</f>
I:    <g>CADI_BPT_Enable:E</g>
I:    <h>CADI_EXCEPTION_Pulse:E</h>
I:    <i>CADI_REG_READ_ONLY:E</i>
I:    <j>CADI_REGTYPE_Simple:E</j>
I:    <k>CADI_REGTYPE_HEX:E</k>
I:    <l>CADI_MEM_ReadOnly:E</l>
I:    <m>Unknown execution mode: 6:E</m>
I:    <n>CADI_BPT_TRIGGER_ON_{READ, WRITE, MODIFY, 0x1f}:E</n>
I:    <o>BE:E</o>
I:    <o>0x0000000x:E</o>
I:    <p>CADI_TARGET_FEATURE_BPT_{PROGRAM, MEMORY, REGISTER, INST_STEP, PROGRAM_RANGE, EXCEPTION, 0x3}:E</p>
)");
}

TEST_F(VirtualCalls, RecordsOpenAndCloseThroughTheTable)
{
    ExpectMarks(Written([](auto& log) {
        CADIExecMode_t mode{};
        CADITargetFeatures_t features{};
        CADICacheInfo_t cache{};
        CADIBptRequest_t request{};
        CADIParameterInfo_t parameter{};
        CADIFactoryErrorMessage_t message{};
        CADITargetInfo_t target{};
        const char* const symbols[] = {"a"};
        log.WriteExecModePtrVal("a", &mode);
        log.WriteResetLevel("b", {});
        log.WritePipeStage("c", {});
        log.WritePipeStageField("d", {});
        log.WriteTargetFeatures("e", &features);
        log.WriteRegGroup({});
        log.WriteRegInfo({});
        log.WriteReg("f", {});
        log.WriteRegSymbol("g", {1, symbols});
        log.WriteMemSpaceInfo({});
        log.WriteMemBlockInfo({});
        log.WriteCacheInfo("h", &cache);
        log.WriteAddrComplete("i", {});
        log.WriteBptRequest("j", &request);
        log.WriteBptDescription("k", {});
        log.WriteException("l", {});
        log.WriteParameterInfoPtrVal("m", &parameter);
        log.WriteParameterValue("n", {});
        log.WriteFactoryErrorMessagePtrVal("o", &message);
        log.WriteTargetInfoPtrVal("p", &target);
    }));
}

TEST_F(VirtualCalls, ArraysOpenAndCloseThroughTheTable)
{
    ExpectMarks(Written([](auto& log) {
        CADIExecMode_t mode{};
        CADIResetLevel_t level{};
        CADIPipeStage_t stage{};
        CADIPipeStageField_t field{};
        CADIReg_t reg{};
        unsigned int overlay = 1;
        CADIParameterValue_t value{};
        CADIException_t exception{};
        log.WriteExecModeArray("a", &mode, 1);
        log.WriteResetLevelArray("b", &level, 1);
        log.WritePipeStageArray("c", &stage, 1);
        log.WritePipeStageFieldArray("d", &field, 1);
        log.WriteRegArray("e", &reg, 1);
        log.WriteOverlayIdArray("f", &overlay, 1);
        log.WriteParameterValueArray("g", &value, 1);
        log.WriteExceptionArray("h", &exception, 1);
    }));
}

TEST_F(VirtualCalls, NullPointersAreWrittenThroughTheTable)
{
    const std::string written = Written([](auto& log) {
        log.WriteExecModePtrVal("a", static_cast<unsigned int*>(nullptr));
        log.WriteExecModePtrVal("b", nullptr);
        log.WriteExecModePtrVal("c", static_cast<CADIExecMode_t*>(nullptr));
        log.WriteTargetFeatures("d", nullptr);
        log.WriteCacheInfo("e", nullptr);
        log.WriteBptRequest("f", nullptr);
        log.WriteParameterInfoPtrVal("g", nullptr);
        log.WriteFactoryErrorMessagePtrVal("h", nullptr);
        log.WriteTargetInfoPtrVal("i", nullptr);
        log.WriteRegSymbol("j", {0, nullptr});
    });
    EXPECT_EQ(written, R"(N:a
N:b
N:c
N:d
N:e
N:f
N:g
N:h
N:i
I:    <j>
I:        <numSymbols>0:E</numSymbols>
N:Symbols
I:    </j>
)");
}

TEST_F(VirtualCalls, NullArraysAreWrittenThroughTheTable)
{
    const std::string written = Written([](auto& log) {
        log.WriteExecModeArray("x", nullptr, 1);
        log.WriteResetLevelArray("x", nullptr, 1);
        log.WritePipeStageArray("x", nullptr, 1);
        log.WritePipeStageFieldArray("x", nullptr, 1);
        log.WriteRegGroupArray("x", nullptr, 1);
        log.WriteRegInfoArray("x", nullptr, 1);
        log.WriteRegArray("x", nullptr, 1);
        log.WriteMemSpaceInfoArray("x", nullptr, 1);
        log.WriteMemBlockInfoArray("x", nullptr, 1);
        log.WriteOverlayIdArray("x", nullptr, 1);
        log.WriteBptDescriptionArray("x", nullptr, 1);
        log.WriteExceptionArray("x", nullptr, 1);
        log.WriteParameterInfoArray("x", nullptr, 1);
        log.WriteParameterValueArray("x", nullptr, 1);
    });
    std::string expected;
    for (const char* name : {"parameterValue", "parameterValue", "pipeStages", "pipeStageFields",
                             "regGroup", "regInfo", "reg", "memSpaceInfo", "memBlockInfo", "overlayId",
                             "breakpoints", "breakpoints", "param", "parameterValue"}) {
        expected += std::string("I:    <x>\nN:") + name + "\nI:    </x>\n";
    }
    EXPECT_EQ(written, expected);
}

}  // namespace
