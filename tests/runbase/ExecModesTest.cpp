// Execution modes, reset levels, and the stages of a pipeline.

#include "runbase/RunTest.h"

namespace
{

using namespace eslapi;
using ScrivelTest::fatalCount;
using ScrivelTest::SetText;

using ExecModes = ScrivelTest::RecordTest<>;
using ResetLevels = ScrivelTest::RecordTest<>;
using PipeStages = ScrivelTest::RecordTest<>;
using PipeStageFields = ScrivelTest::RecordTest<>;

/// A record of a number and a name.
template <typename Record>
Record Numbered(unsigned int number, const char* name)
{
    Record record{};
    record.number = number;
    SetText(record.name, name);
    return record;
}

CADIPipeStage_t Stage(unsigned int id, const char* name, unsigned int registerId)
{
    CADIPipeStage_t stage{};
    stage.id = id;
    SetText(stage.name, name);
    stage.contentInfoRegisterId = registerId;
    return stage;
}

// ---- Execution modes ----------------------------------------------------------------------------

TEST_F(ExecModes, NumberIsWrittenByName)
{
    EXPECT_EQ(Written([](auto& log) { log.WriteExecMode("mode", Numbered<CADIExecMode_t>(1, "run")); }),
              R"(    <mode>
        <number>CADI_EXECMODE_Run</number>
        <name>run</name>
    </mode>
)");
}

TEST_F(ExecModes, NumberWithoutANameIsAnUnknownMode)
{
    EXPECT_EQ(
        Written([](auto& log) { log.WriteExecMode("mode", Numbered<CADIExecMode_t>(9, "\"own\"")); }),
        R"(    <mode>
        <number>Unknown execution mode: 9</number>
        <name>&quot;own&quot;</name>
    </mode>
)");
    EXPECT_EQ(Written([](auto& log) { log.WriteExecMode("m", Numbered<CADIExecMode_t>(~0U, "")); }),
              R"(    <m>
        <number>Unknown execution mode: 4294967295</number>
        <name></name>
    </m>
)");
}

TEST_F(ExecModes, PointerIsWrittenAsItsRecord)
{
    auto mode = Numbered<CADIExecMode_t>(0, "a<b");
    EXPECT_EQ(Written([&](auto& log) { log.WriteExecModePtrVal("mode", &mode); }),
              R"(    <mode>
        <number>CADI_EXECMODE_Stop</number>
        <name>a&lt;b</name>
    </mode>
)");
}

TEST_F(ExecModes, NullPointerIsANullElement)
{
    CADIExecMode_t* const none = nullptr;
    EXPECT_EQ(Written([&](auto& log) { log.WriteExecModePtrVal("mode", none); }),
              "    <mode>NULL</mode>\n");
}

TEST_F(ExecModes, ArrayHoldsEachMode)
{
    CADIExecMode_t modes[] = {Numbered<CADIExecMode_t>(5, "x"), Numbered<CADIExecMode_t>(6, "y"),
                              Numbered<CADIExecMode_t>(2, "z")};
    EXPECT_EQ(Written([&](auto& log) { log.WriteExecModeArray("modes", modes, 3); }), R"(    <modes>
        <execMode>
            <number>CADI_EXECMODE_RunUnconditionally</number>
            <name>x</name>
        </execMode>
        <execMode>
            <number>Unknown execution mode: 6</number>
            <name>y</name>
        </execMode>
        <execMode>
            <number>CADI_EXECMODE_Bpt</number>
            <name>z</name>
        </execMode>
    </modes>
)");
}

TEST_F(ExecModes, EmptyArrayHoldsNothing)
{
    CADIExecMode_t modes[] = {Numbered<CADIExecMode_t>(5, "x")};
    EXPECT_EQ(Written([&](auto& log) { log.WriteExecModeArray("modes", modes, 0); }),
              Container("modes", ""));
}

TEST_F(ExecModes, NullArrayHoldsANullElementNamedAfterParameterValues)
{
    for (const unsigned int count : {0U, fatalCount}) {
        EXPECT_EQ(Written([&](auto& log) { log.WriteExecModeArray("modes", nullptr, count); }),
                  NullIn("modes", "parameterValue"));
    }
}

// ---- Reset levels -------------------------------------------------------------------------------

TEST_F(ResetLevels, NumberIsDecimalUnlikeThatOfAnExecutionMode)
{
    EXPECT_EQ(
        Written([](auto& log) { log.WriteResetLevel("level", Numbered<CADIResetLevel_t>(2, "warm")); }),
        R"(    <level>
        <number>2</number>
        <name>warm</name>
    </level>
)");
    EXPECT_EQ(
        Written([](auto& log) { log.WriteResetLevel("level", Numbered<CADIResetLevel_t>(~0U, "<&>")); }),
        R"(    <level>
        <number>4294967295</number>
        <name>&lt;&amp;&gt;</name>
    </level>
)");
}

TEST_F(ResetLevels, ArrayHoldsEachLevel)
{
    CADIResetLevel_t levels[] = {Numbered<CADIResetLevel_t>(0, "x"), Numbered<CADIResetLevel_t>(1, "y"),
                                 Numbered<CADIResetLevel_t>(2, "z")};
    EXPECT_EQ(Written([&](auto& log) { log.WriteResetLevelArray("levels", levels, 3); }), R"(    <levels>
        <resetLevel>
            <number>0</number>
            <name>x</name>
        </resetLevel>
        <resetLevel>
            <number>1</number>
            <name>y</name>
        </resetLevel>
        <resetLevel>
            <number>2</number>
            <name>z</name>
        </resetLevel>
    </levels>
)");
}

TEST_F(ResetLevels, EmptyArrayHoldsNothing)
{
    CADIResetLevel_t levels[] = {Numbered<CADIResetLevel_t>(0, "x")};
    EXPECT_EQ(Written([&](auto& log) { log.WriteResetLevelArray("levels", levels, 0); }),
              Container("levels", ""));
}

TEST_F(ResetLevels, NullArrayHoldsANullElementNamedAfterParameterValues)
{
    for (const unsigned int count : {0U, fatalCount}) {
        EXPECT_EQ(Written([&](auto& log) { log.WriteResetLevelArray("levels", nullptr, count); }),
                  NullIn("levels", "parameterValue"));
    }
}

// ---- Pipe stages --------------------------------------------------------------------------------

TEST_F(PipeStages, HaveThreeChildren)
{
    EXPECT_EQ(Written([](auto& log) {
                  log.WritePipeStage("stage", Stage(4294967295, "fetch\x01", 4294967294));
              }),
              R"(    <stage>
        <id>4294967295</id>
        <name>fetch\x01</name>
        <contentInfoRegisterId>4294967294</contentInfoRegisterId>
    </stage>
)");
}

TEST_F(PipeStages, ArrayHoldsEachStage)
{
    CADIPipeStage_t stages[] = {Stage(1, "x", 4), Stage(2, "y", 5), Stage(3, "z", 6)};
    EXPECT_EQ(Written([&](auto& log) { log.WritePipeStageArray("stages", stages, 3); }), R"(    <stages>
        <pipeStage>
            <id>1</id>
            <name>x</name>
            <contentInfoRegisterId>4</contentInfoRegisterId>
        </pipeStage>
        <pipeStage>
            <id>2</id>
            <name>y</name>
            <contentInfoRegisterId>5</contentInfoRegisterId>
        </pipeStage>
        <pipeStage>
            <id>3</id>
            <name>z</name>
            <contentInfoRegisterId>6</contentInfoRegisterId>
        </pipeStage>
    </stages>
)");
}

TEST_F(PipeStages, EmptyArrayHoldsNothing)
{
    CADIPipeStage_t stages[] = {Stage(1, "x", 4)};
    EXPECT_EQ(Written([&](auto& log) { log.WritePipeStageArray("stages", stages, 0); }),
              Container("stages", ""));
}

TEST_F(PipeStages, NullArrayHoldsANullElementWithThePlural)
{
    for (const unsigned int count : {0U, 4U, fatalCount}) {
        EXPECT_EQ(Written([&](auto& log) { log.WritePipeStageArray("stages", nullptr, count); }),
                  NullIn("stages", "pipeStages"));
    }
}

TEST_F(PipeStageFields, HaveTwoChildren)
{
    EXPECT_EQ(Written([](auto& log) {
                  log.WritePipeStageField("field", {4294967295, 4294967294});
              }),
              R"(    <field>
        <pipeStageId>4294967295</pipeStageId>
        <registerId>4294967294</registerId>
    </field>
)");
}

TEST_F(PipeStageFields, ArrayHoldsEachField)
{
    CADIPipeStageField_t fields[] = {{1, 4}, {2, 5}, {3, 6}};
    EXPECT_EQ(Written([&](auto& log) { log.WritePipeStageFieldArray("f", fields, 3); }), R"(    <f>
        <pipeStageField>
            <pipeStageId>1</pipeStageId>
            <registerId>4</registerId>
        </pipeStageField>
        <pipeStageField>
            <pipeStageId>2</pipeStageId>
            <registerId>5</registerId>
        </pipeStageField>
        <pipeStageField>
            <pipeStageId>3</pipeStageId>
            <registerId>6</registerId>
        </pipeStageField>
    </f>
)");
}

TEST_F(PipeStageFields, EmptyArrayHoldsNothing)
{
    CADIPipeStageField_t fields[] = {{1, 4}};
    EXPECT_EQ(Written([&](auto& log) { log.WritePipeStageFieldArray("f", fields, 0); }),
              Container("f", ""));
}

TEST_F(PipeStageFields, NullArrayHoldsANullElementWithThePlural)
{
    for (const unsigned int count : {0U, fatalCount}) {
        EXPECT_EQ(Written([&](auto& log) { log.WritePipeStageFieldArray("f", nullptr, count); }),
                  NullIn("f", "pipeStageFields"));
    }
}

}  // namespace
