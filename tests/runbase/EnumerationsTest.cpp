// Every name of every enumeration and bit set, and what is written outside the tables.

#include "runbase/RunTest.h"

#include <string>

namespace
{

using namespace eslapi;
using Scrivel2::Scrivel2XmlGenRun;
using Log = Scrivel2XmlGenRun;

using Enumerations = ScrivelTest::RecordTest<>;
using ExecModeNumbers = ScrivelTest::RecordTest<>;
using TriggerTypes = ScrivelTest::RecordTest<>;
using Endianness = ScrivelTest::RecordTest<>;
using RegSymbols = ScrivelTest::RecordTest<>;

// ---- One table each -----------------------------------------------------------------------------

TEST_F(Enumerations, ReturnTypesHaveTheirNames)
{
    ExpectNames<CADIReturn_t>(&Log::WriteReturnType, ScrivelTest::ReturnTypeNames());
}

TEST_F(Enumerations, ReturnTypesOutsideTheTableAreMessages)
{
    ExpectMessages<CADIReturn_t>(&Log::WriteReturnType, 12, "Invalid return type: 0x", "c");
}

TEST_F(Enumerations, ValueDataTypesHaveTheirNames)
{
    ExpectNames<CADIValueDataType_t>(&Log::WriteValueDataType, ScrivelTest::ValueDataTypeNames());
}

TEST_F(Enumerations, ValueDataTypesOutsideTheTableAreMessages)
{
    ExpectMessages<CADIValueDataType_t>(&Log::WriteValueDataType, 4, "Invalid value data type: 0x", "4");
}

TEST_F(Enumerations, FactoryErrorCodesHaveTheirNames)
{
    ExpectNames<CADIFactoryErrorCode_t>(&Log::WriteFactoryErrorCode,
                                        {
                                            "CADIFACT_ERROR_OK",
                                            "CADIFACT_ERROR_GENERAL",
                                            "CADIFACT_ERROR_PARAMETER_UNKNOWN",
                                            "CADIFACT_ERROR_PARAMETER_MISSING",
                                            "CADIFACT_ERROR_PARAMETER_WRONG_TYPE",
                                            "CADIFACT_ERROR_PARAMETER_OUT_OF_RANGE",
                                            "CADIFACT_ERROR_PARAMETER_CONFLICT",
                                            "CADIFACT_ERROR_LICENCE_NOT_FOUND",
                                            "CADIFACT_ERROR_LICENCE_EXPIRED",
                                            "CADIFACT_ERROR_LICENCE_IN_USE",
                                            "CADIFACT_ERROR_TOO_MANY_INSTANCES",
                                            "CADIFACT_ERROR_INSTANCE_NAME_IN_USE",
                                            "CADIFACT_ERROR_OUT_OF_MEMORY",
                                            "CADIFACT_ERROR_RESOURCE_UNAVAILABLE",
                                        });
}

TEST_F(Enumerations, FactoryErrorCodesAreEnumeratedInTheOrderOfTheirNames)
{
    EXPECT_EQ(Written([](auto& log) {
                  log.WriteFactoryErrorCode("code", CADIFACT_ERROR_OK);
                  log.WriteFactoryErrorCode("code", CADIFACT_ERROR_LICENCE_NOT_FOUND);
                  log.WriteFactoryErrorCode("code", CADIFACT_ERROR_RESOURCE_UNAVAILABLE);
              }),
              R"(    <code>CADIFACT_ERROR_OK</code>
    <code>CADIFACT_ERROR_LICENCE_NOT_FOUND</code>
    <code>CADIFACT_ERROR_RESOURCE_UNAVAILABLE</code>
)");
}

TEST_F(Enumerations, FactoryErrorCodesOutsideTheTableAreMessages)
{
    ExpectMessages<CADIFactoryErrorCode_t>(&Log::WriteFactoryErrorCode, 14,
                                           "Invalid factory error code: 0x", "e");
}

/// Gives one factory error a name with a NUL in it.
class OddErrorName : public Scrivel2XmlGenRun
{
public:
    explicit OddErrorName(const char* name) : Scrivel2XmlGenRun(name)
    {
        factoryErrorNames[1] = std::string("a<\0>b", 5);
    }
};

TEST_F(Enumerations, FactoryErrorNamesAreWrittenInFullLengthAsTheyAre)
{
    EXPECT_EQ(Written<OddErrorName>(
                  [](auto& log) { log.WriteFactoryErrorCode("code", CADIFACT_ERROR_GENERAL); }),
              std::string("    <code>a<\0>b</code>\n", 23));
}

/// Empties its list of names whenever an element begins.
class Forgetful : public Scrivel2XmlGenRun
{
public:
    using Scrivel2XmlGenRun::Scrivel2XmlGenRun;

    void WriteIdent(std::string name, bool openTag, bool newline) override
    {
        if (openTag) {
            factoryErrorNames.clear();
        }
        Scrivel2XmlGenRun::WriteIdent(name, openTag, newline);
    }
};

TEST_F(Enumerations, FactoryErrorIsWrittenAsItWasNamedWhenItWasLookedUp)
{
    EXPECT_EQ(Written<Forgetful>([](auto& log) {
                  log.WriteFactoryErrorCode("code", CADIFACT_ERROR_PARAMETER_OUT_OF_RANGE);
                  log.WriteFactoryErrorCode("code", CADIFACT_ERROR_PARAMETER_OUT_OF_RANGE);
              }),
              "    <code>CADIFACT_ERROR_PARAMETER_OUT_OF_RANGE</code>\n"
              "    <code>Invalid factory error code: 0x5</code>\n");
}

/// Knows no factory error.
class NoErrorName : public Scrivel2XmlGenRun
{
public:
    explicit NoErrorName(const char* name) : Scrivel2XmlGenRun(name) { factoryErrorNames.clear(); }
};

TEST_F(Enumerations, FactoryErrorZeroWithoutANameIsAMessageWithOneDigit)
{
    EXPECT_EQ(
        Written<NoErrorName>([](auto& log) { log.WriteFactoryErrorCode("code", CADIFACT_ERROR_OK); }),
        "    <code>Invalid factory error code: 0x0</code>\n");
}

TEST_F(Enumerations, FactorySeverityCodesHaveTheirNames)
{
    ExpectNames<CADIFactorySeverityCode_t>(
        &Log::WriteFactorySeverityCode,
        {"CADIFACT_SEVERITY_OK", "CADIFACT_SEVERITY_WARNING", "CADIFACT_SEVERITY_ERROR"});
}

TEST_F(Enumerations, FactorySeverityCodesOutsideTheTableAreMessages)
{
    ExpectMessages<CADIFactorySeverityCode_t>(&Log::WriteFactorySeverityCode, 3,
                                              "Invalid factory severity code: 0x", "3");
}

TEST_F(Enumerations, BptTypesHaveTheirNames)
{
    ExpectNames<CADIBptType_t>(&Log::WriteBptType, {
                                                       "CADI_BPT_PROGRAM",
                                                       "CADI_BPT_MEMORY",
                                                       "CADI_BPT_REGISTER",
                                                       "CADI_BPT_INST_STEP",
                                                       "CADI_BPT_PROGRAM_RANGE",
                                                       "CADI_BPT_EXCEPTION",
                                                   });
}

TEST_F(Enumerations, UserDefinedBptTypeHasANameFarBehindTheTable)
{
    ExpectMessage<CADIBptType_t>(&Log::WriteBptType, 0x8000, "CADI_BPT_USER_DEFINED");
    ExpectMessage<CADIBptType_t>(&Log::WriteBptType, 0x7fff, "Invalid bpt type: 0x7fff");
    ExpectMessage<CADIBptType_t>(&Log::WriteBptType, 0x8001, "Invalid bpt type: 0x8001");
    ExpectMessage<CADIBptType_t>(&Log::WriteBptType, -0x8000, "Invalid bpt type: 0xffff8000");
}

TEST_F(Enumerations, BptTypesOutsideTheTableAreMessages)
{
    ExpectMessages<CADIBptType_t>(&Log::WriteBptType, 6, "Invalid bpt type: 0x", "6");
}

TEST_F(Enumerations, BptConditionOperatorsHaveTheirNames)
{
    ExpectNames<CADIBptConditionOperator_t>(&Log::WriteBptConditionOperator,
                                            {
                                                "CADI_BPT_COND_UNCONDITIONAL",
                                                "CADI_BPT_COND_EQUALS",
                                                "CADI_BPT_COND_NOT_EQUALS",
                                                "CADI_BPT_COND_GREATER_THAN_SIGNED",
                                                "CADI_BPT_COND_GREATER_THAN_OR_EQUALS_SIGNED",
                                                "CADI_BPT_COND_LESS_THAN_SIGNED",
                                                "CADI_BPT_COND_LESS_THAN_OR_EQUALS_SIGNED",
                                            });
}

TEST_F(Enumerations, UnsignedBptConditionOperatorsHaveNoNames)
{
    const auto write = &Log::WriteBptConditionOperator;
    const std::string message = "Invalid breakpoint condition operator: 0x";
    ExpectMessage<CADIBptConditionOperator_t>(write, CADI_BPT_COND_GREATER_THAN_UNSIGNED, message + "7");
    ExpectMessage<CADIBptConditionOperator_t>(write, CADI_BPT_COND_GREATER_THAN_OR_EQUALS_UNSIGNED,
                                              message + "8");
    ExpectMessage<CADIBptConditionOperator_t>(write, CADI_BPT_COND_LESS_THAN_UNSIGNED, message + "9");
    ExpectMessage<CADIBptConditionOperator_t>(write, CADI_BPT_COND_LESS_THAN_OR_EQUALS_UNSIGNED,
                                              message + "a");
}

TEST_F(Enumerations, BptConditionOperatorsOutsideTheTableAreMessages)
{
    ExpectMessages<CADIBptConditionOperator_t>(&Log::WriteBptConditionOperator, 11,
                                               "Invalid breakpoint condition operator: 0x", "b");
}

TEST_F(Enumerations, BptConfigureValuesHaveTheirNames)
{
    ExpectNames<CADIBptConfigure_t>(&Log::WriteBptConfigure, {"CADI_BPT_Disable", "CADI_BPT_Enable"});
}

TEST_F(Enumerations, BptConfigureValuesOutsideTheTableAreMessages)
{
    ExpectMessages<CADIBptConfigure_t>(&Log::WriteBptConfigure, 2, "Invalid CADIBptConfigure value: 0x",
                                       "2");
}

TEST_F(Enumerations, ExceptionActionsHaveTheirNames)
{
    ExpectNames<CADIExceptionAction_t>(
        &Log::WriteExceptionAction,
        {"CADI_EXCEPTION_Raise", "CADI_EXCEPTION_Lower", "CADI_EXCEPTION_Pulse"});
}

TEST_F(Enumerations, ExceptionActionsOutsideTheTableAreMessages)
{
    ExpectMessages<CADIExceptionAction_t>(&Log::WriteExceptionAction, 3, "Invalid exception action: 0x",
                                          "3");
}

TEST_F(Enumerations, RegAccessAttributesHaveTheirNames)
{
    ExpectNames<CADIRegAccessAttribute_t>(&Log::WriteRegAccessAttribute,
                                          {
                                              "CADI_REG_READ_WRITE",
                                              "CADI_REG_READ_ONLY",
                                              "CADI_REG_WRITE_ONLY",
                                              "CADI_REG_READ_WRITE_RESTRICTED",
                                              "CADI_REG_READ_ONLY_RESTRICTED",
                                              "CADI_REG_WRITE_ONLY_RESTRICTED",
                                          });
}

TEST_F(Enumerations, RegAccessAttributesOutsideTheTableAreMessages)
{
    ExpectMessages<CADIRegAccessAttribute_t>(&Log::WriteRegAccessAttribute, 6,
                                             "Invalid reg access attribute: 0x", "6");
}

TEST_F(Enumerations, RegTypesHaveTheirNames)
{
    ExpectNames<CADIRegType_t>(&Log::WriteRegType, {"CADI_REGTYPE_Simple", "CADI_REGTYPE_Compound"});
}

TEST_F(Enumerations, RegTypesOutsideTheTableAreMessages)
{
    ExpectMessages<CADIRegType_t>(&Log::WriteRegType, 2, "Invalid reg type: 0x", "2");
}

TEST_F(Enumerations, RegDisplaysHaveTheirNames)
{
    ExpectNames<CADIRegDisplay_t>(&Log::WriteRegDisplay, {
                                                             "CADI_REGTYPE_HEX",
                                                             "CADI_REGTYPE_UINT",
                                                             "CADI_REGTYPE_INT",
                                                             "CADI_REGTYPE_BOOL",
                                                             "CADI_REGTYPE_FLOAT",
                                                             "CADI_REGTYPE_SYMBOL",
                                                             "CADI_REGTYPE_STRING",
                                                             "CADI_REGTYPE_PC",
                                                             "CADI_REGTYPE_BIN",
                                                             "CADI_REGTYPE_OCT",
                                                         });
}

TEST_F(Enumerations, RegDisplaysOutsideTheTableAreMessages)
{
    ExpectMessages<CADIRegDisplay_t>(&Log::WriteRegDisplay, 10, "Invalid reg display: 0x", "a");
    ExpectMessage<CADIRegDisplay_t>(&Log::WriteRegDisplay, 12, "Invalid reg display: 0xc");
}

TEST_F(Enumerations, MemReadWritesHaveTheirNames)
{
    ExpectNames<CADIMemReadWrite_t>(&Log::WriteMemReadWrite,
                                    {"CADI_MEM_ReadOnly", "CADI_MEM_WriteOnly", "CADI_MEM_ReadWrite"});
}

TEST_F(Enumerations, MemReadWritesOutsideTheTableAreMessages)
{
    ExpectMessages<CADIMemReadWrite_t>(&Log::WriteMemReadWrite, 3, "Invalid mem read write: 0x", "3");
}

// ---- Execution modes given as numbers -----------------------------------------------------------

void WriteMode(Log& log, const char* ident, unsigned int mode)
{
    log.WriteExecMode(ident, mode);
}

void WriteModePointee(Log& log, const char* ident, unsigned int mode)
{
    log.WriteExecModePtrVal(ident, &mode);
}

TEST_F(ExecModeNumbers, HaveTheirNames)
{
    for (const auto write : {WriteMode, WriteModePointee}) {
        ExpectNames<unsigned int>(write, {
                                             "CADI_EXECMODE_Stop",
                                             "CADI_EXECMODE_Run",
                                             "CADI_EXECMODE_Bpt",
                                             "CADI_EXECMODE_Error",
                                             "CADI_EXECMODE_HighLevelStep",
                                             "CADI_EXECMODE_RunUnconditionally",
                                         });
    }
}

TEST_F(ExecModeNumbers, OutsideTheTableAreUnknownModesInDecimal)
{
    for (const auto write : {WriteMode, WriteModePointee}) {
        ExpectMessage<unsigned int>(write, 6, "Unknown execution mode: 6");
        ExpectMessage<unsigned int>(write, 255, "Unknown execution mode: 255");
        ExpectMessage<unsigned int>(write, -1, "Unknown execution mode: 4294967295");
        ExpectMessage<unsigned int>(write, 0x7fffffff, "Unknown execution mode: 2147483647");
        ExpectMessage<unsigned int>(write, 0x80000000, "Unknown execution mode: 2147483648");
    }
}

TEST_F(ExecModeNumbers, NullPointerIsANullElement)
{
    unsigned int* const none = nullptr;
    EXPECT_EQ(Written([&](auto& log) { log.WriteExecModePtrVal("m", none); }), "    <m>NULL</m>\n");
}

TEST_F(ExecModeNumbers, NullLiteralIsANullElement)
{
    EXPECT_EQ(Written([](auto& log) { log.WriteExecModePtrVal("m", nullptr); }), "    <m>NULL</m>\n");
    EXPECT_EQ(Written([](auto& log) { log.WriteDecimalPtrVal("n", nullptr); }), "    <n>NULL</n>\n");
}

// ---- Bit sets -----------------------------------------------------------------------------------

TEST_F(TriggerTypes, AreWordsInBracesWhenThereAreSeveral)
{
    const struct
    {
        unsigned int trigger;
        const char* text;
    } rows[] = {
        {0, ""},
        {1, "CADI_BPT_TRIGGER_ON_READ"},
        {2, "CADI_BPT_TRIGGER_ON_WRITE"},
        {3, "CADI_BPT_TRIGGER_ON_{READ, WRITE}"},
        {4, "CADI_BPT_TRIGGER_ON_MODIFY"},
        {5, "CADI_BPT_TRIGGER_ON_{READ, MODIFY}"},
        {6, "CADI_BPT_TRIGGER_ON_{WRITE, MODIFY}"},
        {7, "CADI_BPT_TRIGGER_ON_{READ, WRITE, MODIFY}"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(Written([&](auto& log) { log.WriteTriggerType("trig", row.trigger); }),
                  std::string("    <trig>") + row.text + "</trig>\n");
    }
}

TEST_F(TriggerTypes, BitsWithoutAWordAreANumberShiftedDown)
{
    const struct
    {
        unsigned int trigger;
        const char* text;
    } rows[] = {
        {0x8, "CADI_BPT_TRIGGER_ON_0x1"},
        {0x9, "CADI_BPT_TRIGGER_ON_{READ, 0x1}"},
        {0x18, "CADI_BPT_TRIGGER_ON_{0x3}"},
        {0x19, "CADI_BPT_TRIGGER_ON_{READ, 0x3}"},
        {0xff, "CADI_BPT_TRIGGER_ON_{READ, WRITE, MODIFY, 0x1f}"},
        {0x7fffffff, "CADI_BPT_TRIGGER_ON_{READ, WRITE, MODIFY, 0xfffffff}"},
        {0x80000000, "CADI_BPT_TRIGGER_ON_0x10000000"},
        {0x80000001, "CADI_BPT_TRIGGER_ON_{READ, 0x10000000}"},
        {0xffffffff, "CADI_BPT_TRIGGER_ON_{READ, WRITE, MODIFY, 0x1fffffff}"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(Written([&](auto& log) { log.WriteTriggerType("trig", row.trigger); }),
                  std::string("    <trig>") + row.text + "</trig>\n");
    }
}

// ---- Endianness ---------------------------------------------------------------------------------

TEST_F(Endianness, HasThreeNames)
{
    ExpectNames<unsigned char>(&Log::WriteEndianness, {"mono", "LE", "BE"});
}

TEST_F(Endianness, OutsideTheTableIsTheByteItselfBehindZeros)
{
    ExpectMessage<unsigned char>(&Log::WriteEndianness, 3, "0x0000000\\x03");
    ExpectMessage<unsigned char>(&Log::WriteEndianness, 'A', "0x0000000A");
    ExpectMessage<unsigned char>(&Log::WriteEndianness, '<', "0x0000000&lt;");
    ExpectMessage<unsigned char>(&Log::WriteEndianness, '0', "0x00000000");
    ExpectMessage<unsigned char>(&Log::WriteEndianness, 0x7f, "0x0000000\\x7f");
    ExpectMessage<unsigned char>(&Log::WriteEndianness, 0x80, "0x0000000\\x80");
    ExpectMessage<unsigned char>(&Log::WriteEndianness, 0xff, "0x0000000\\xff");
}

// ---- Register symbols ---------------------------------------------------------------------------

TEST_F(RegSymbols, AreOnlyCounted)
{
    const char* const symbols[] = {"a", "b", "c"};
    EXPECT_EQ(Written([&](auto& log) {
                  log.WriteRegSymbol("symbols", {3, symbols});
              }),
              R"(    <symbols>
        <numSymbols>3</numSymbols>
    </symbols>
)");
}

TEST_F(RegSymbols, AreNeverRead)
{
    const auto* const nowhere = reinterpret_cast<const char* const*>(sizeof(void*));
    EXPECT_EQ(Written([&](auto& log) {
                  log.WriteRegSymbol("symbols", {0xffffffff, nowhere});
              }),
              R"(    <symbols>
        <numSymbols>4294967295</numSymbols>
    </symbols>
)");
}

TEST_F(RegSymbols, NullListIsANullElementBehindTheCount)
{
    EXPECT_EQ(Written([](auto& log) {
                  log.WriteRegSymbol("symbols", {3, nullptr});
              }),
              R"(    <symbols>
        <numSymbols>3</numSymbols>
        <Symbols>NULL</Symbols>
    </symbols>
)");
}

// ---- Element names ------------------------------------------------------------------------------

TEST_F(Enumerations, ElementNameIsCleanedAndIndentedByDepth)
{
    EXPECT_EQ(Written([](auto& log) {
                  log.WriteIdent("a", true, true);
                  log.WriteReturnType("2 x", CADI_STATUS_OK);
                  log.WriteExecMode("", 1);
                  log.WriteIdent("a", false, true);
              }),
              R"(    <a>
        <__x>CADI_STATUS_OK</__x>
        <emptyIdent>CADI_EXECMODE_Run</emptyIdent>
    </a>
)");
}

}  // namespace
