// What a target says it can do, and the kinds of breakpoints that it handles.

#include "runbase/RunTest.h"

#include <string>

namespace
{

using namespace eslapi;
using ScrivelTest::SetText;

using HandledBreakpoints = ScrivelTest::RecordTest<>;
using TargetFeatures = ScrivelTest::RecordTest<>;

// ---- Kinds of breakpoints -----------------------------------------------------------------------

struct Row
{
    unsigned int breakpoints;
    const char* text;
};

TEST_F(HandledBreakpoints, AreWordsInBracesWhenThereAreSeveral)
{
    const Row rows[] = {
        {0, ""},
        {0x01, "CADI_TARGET_FEATURE_BPT_PROGRAM"},
        {0x02, "CADI_TARGET_FEATURE_BPT_MEMORY"},
        {0x04, "CADI_TARGET_FEATURE_BPT_REGISTER"},
        {0x08, "CADI_TARGET_FEATURE_BPT_INST_STEP"},
        {0x10, "CADI_TARGET_FEATURE_BPT_PROGRAM_RANGE"},
        {0x20, "CADI_TARGET_FEATURE_BPT_EXCEPTION"},
        {0x03, "CADI_TARGET_FEATURE_BPT_{PROGRAM, MEMORY}"},
        {0x2c, "CADI_TARGET_FEATURE_BPT_{REGISTER, INST_STEP, EXCEPTION}"},
        {0x3f,
         "CADI_TARGET_FEATURE_BPT_{PROGRAM, MEMORY, REGISTER, INST_STEP, PROGRAM_RANGE, EXCEPTION}"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(Written([&](auto& log) { log.WriteHandledBreakpoints("bpts", row.breakpoints); }),
                  std::string("    <bpts>") + row.text + "</bpts>\n");
    }
}

TEST_F(HandledBreakpoints, BitsWithoutAWordAreANumberShiftedDown)
{
    const Row rows[] = {
        {0x40, "CADI_TARGET_FEATURE_BPT_0x1"},
        {0x41, "CADI_TARGET_FEATURE_BPT_{PROGRAM, 0x1}"},
        {0x80, "CADI_TARGET_FEATURE_BPT_0x2"},
        {0xc0, "CADI_TARGET_FEATURE_BPT_{0x3}"},
        {0xffe0, "CADI_TARGET_FEATURE_BPT_{EXCEPTION, 0x3ff}"},
        {0x80000000, "CADI_TARGET_FEATURE_BPT_0x2000000"},
        {0x80000020, "CADI_TARGET_FEATURE_BPT_{EXCEPTION, 0x2000000}"},
        {0xffffffff, "CADI_TARGET_FEATURE_BPT_{PROGRAM, MEMORY, REGISTER, INST_STEP, PROGRAM_RANGE, "
                     "EXCEPTION, 0x3ffffff}"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(Written([&](auto& log) { log.WriteHandledBreakpoints("bpts", row.breakpoints); }),
                  std::string("    <bpts>") + row.text + "</bpts>\n");
    }
}

// ---- The record ---------------------------------------------------------------------------------

CADITargetFeatures_t Sample()
{
    CADITargetFeatures_t features{};
    SetText(features.targetName, "core<0>");
    SetText(features.targetVersion, "1 & 2");
    features.nrBreakpointsAvailable = 4294967295;
    features.fOverlaySupportAvailable = true;
    features.fProfilingAvailable = true;
    features.nrResetLevels = 4294967294;
    features.nrExecModes = 4294967293;
    features.nrExceptions = 4294967292;
    features.nrMemSpaces = 4294967291;
    features.nrRegisterGroups = 4294967290;
    features.nrPipeStages = 4294967289;
    features.nPCRegNum = 4294967288;
    features.handledBreakpoints = 0xffc3;
    features.nrOfHWThreads = 4294967287;
    features.nExtendedTargetFeaturesRegNumValid = true;
    features.nExtendedTargetFeaturesRegNum = 4294967286;
    SetText(features.canonicalRegisterDescription, "\"regs\"");
    SetText(features.canonicalMemoryDescription, "it's\n");
    features.canCompleteMultipleInstructionsPerCycle = true;
    return features;
}

TEST_F(TargetFeatures, HaveNineteenChildren)
{
    auto features = Sample();
    EXPECT_EQ(Written([&](auto& log) { log.WriteTargetFeatures("features", &features); }),
              R"(    <features>
        <targetName>core&lt;0&gt;</targetName>
        <targetVersion>1 &amp; 2</targetVersion>
        <nrBreakpointsAvailable>4294967295</nrBreakpointsAvailable>
        <fOverlaySupportAvailable>1</fOverlaySupportAvailable>
        <fProfilingAvailable>1</fProfilingAvailable>
        <nrResetLevels>4294967294</nrResetLevels>
        <nrExecModes>4294967293</nrExecModes>
        <nrExceptions>4294967292</nrExceptions>
        <nrMemSpaces>4294967291</nrMemSpaces>
        <nrRegisterGroups>4294967290</nrRegisterGroups>
        <nrPipeStages>4294967289</nrPipeStages>
        <nPCRegNum>4294967288</nPCRegNum>
        <handledBreakpoints>CADI_TARGET_FEATURE_BPT_{PROGRAM, MEMORY, 0x3ff}</handledBreakpoints>
        <nrOfHWThreads>4294967287</nrOfHWThreads>
        <nExtendedTargetFeaturesRegNumValid>true</nExtendedTargetFeaturesRegNumValid>
        <nExtendedTargetFeaturesRegNum>4294967286</nExtendedTargetFeaturesRegNum>
        <canonicalRegisterDescription>&quot;regs&quot;</canonicalRegisterDescription>
        <canonicalMemoryDescription>it&apos;s\x0a</canonicalMemoryDescription>
        <canCompleteMultipleInstructionsPerCycle>1</canCompleteMultipleInstructionsPerCycle>
    </features>
)");
}

TEST_F(TargetFeatures, OfNothingAreEmptyTextsZerosAndOneFalse)
{
    CADITargetFeatures_t features{};
    EXPECT_EQ(Written([&](auto& log) { log.WriteTargetFeatures("f", &features); }), R"(    <f>
        <targetName></targetName>
        <targetVersion></targetVersion>
        <nrBreakpointsAvailable>0</nrBreakpointsAvailable>
        <fOverlaySupportAvailable>0</fOverlaySupportAvailable>
        <fProfilingAvailable>0</fProfilingAvailable>
        <nrResetLevels>0</nrResetLevels>
        <nrExecModes>0</nrExecModes>
        <nrExceptions>0</nrExceptions>
        <nrMemSpaces>0</nrMemSpaces>
        <nrRegisterGroups>0</nrRegisterGroups>
        <nrPipeStages>0</nrPipeStages>
        <nPCRegNum>0</nPCRegNum>
        <handledBreakpoints></handledBreakpoints>
        <nrOfHWThreads>0</nrOfHWThreads>
        <nExtendedTargetFeaturesRegNumValid>false</nExtendedTargetFeaturesRegNumValid>
        <nExtendedTargetFeaturesRegNum>0</nExtendedTargetFeaturesRegNum>
        <canonicalRegisterDescription></canonicalRegisterDescription>
        <canonicalMemoryDescription></canonicalMemoryDescription>
        <canCompleteMultipleInstructionsPerCycle>0</canCompleteMultipleInstructionsPerCycle>
    </f>
)");
}

TEST_F(TargetFeatures, ThreeFlagsAreNumbersAndOneIsAWord)
{
    CADITargetFeatures_t features{};
    const auto flags = [&] {
        const std::string text = Written([&](auto& log) { log.WriteTargetFeatures("f", &features); });
        std::string values;
        for (const char* flag :
             {"fOverlaySupportAvailable", "fProfilingAvailable", "nExtendedTargetFeaturesRegNumValid",
              "canCompleteMultipleInstructionsPerCycle"}) {
            values += ScrivelTest::XPath(text, std::string("/f/") + flag).at(0) + " ";
        }
        return values;
    };
    EXPECT_EQ(flags(), "0 0 false 0 ");
    features.fOverlaySupportAvailable = true;
    EXPECT_EQ(flags(), "1 0 false 0 ");
    features.fProfilingAvailable = true;
    EXPECT_EQ(flags(), "1 1 false 0 ");
    features.nExtendedTargetFeaturesRegNumValid = true;
    EXPECT_EQ(flags(), "1 1 true 0 ");
    features.canCompleteMultipleInstructionsPerCycle = true;
    EXPECT_EQ(flags(), "1 1 true 1 ");
}

TEST_F(TargetFeatures, ExtendedRegisterNumberIsWrittenEvenWhenItIsNotValid)
{
    auto features = Sample();
    features.nExtendedTargetFeaturesRegNumValid = false;
    const std::string text = Written([&](auto& log) { log.WriteTargetFeatures("f", &features); });
    EXPECT_EQ(ScrivelTest::XPath(text, "/f/nExtendedTargetFeaturesRegNumValid"),
              std::vector<std::string>{"false"});
    EXPECT_EQ(ScrivelTest::XPath(text, "/f/nExtendedTargetFeaturesRegNum"),
              std::vector<std::string>{"4294967286"});
}

TEST_F(TargetFeatures, TextsMayFillTheirFields)
{
    auto features = Sample();
    const std::string full(1023, 'm');
    SetText(features.targetName, full);
    const std::string text = Written([&](auto& log) { log.WriteTargetFeatures("f", &features); });
    EXPECT_EQ(ScrivelTest::XPath(text, "/f/targetName"), std::vector<std::string>{full});
}

TEST_F(TargetFeatures, NullPointerIsANullElement)
{
    EXPECT_EQ(Written([](auto& log) { log.WriteTargetFeatures("features", nullptr); }),
              "    <features>NULL</features>\n");
}

}  // namespace
