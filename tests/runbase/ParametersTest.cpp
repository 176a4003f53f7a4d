// Parameters as they are described and as they are set, and what a factory says is wrong with them.

#include "runbase/RunTest.h"

#include <string>

namespace
{

using namespace eslapi;
using ScrivelTest::fatalCount;
using ScrivelTest::SampleParameterInfo;
using ScrivelTest::sampleParameterInfoText;
using ScrivelTest::SampleParameterValue;
using ScrivelTest::sampleParameterValueText;
using ScrivelTest::SetText;
using ScrivelTest::XPath;

using ParameterInfos = ScrivelTest::RecordTest<>;
using ParameterValues = ScrivelTest::RecordTest<>;
using FactoryErrors = ScrivelTest::RecordTest<>;

// ---- Descriptions -------------------------------------------------------------------------------

TEST_F(ParameterInfos, HaveNineChildren)
{
    EXPECT_EQ(Written([](auto& log) { log.WriteParameterInfo("info", SampleParameterInfo()); }),
              Container("info", sampleParameterInfoText));
}

TEST_F(ParameterInfos, BoundsLoseTheirUpperHalfAndTheirSign)
{
    auto info = SampleParameterInfo();
    info.minValue = 0x100000005;
    info.maxValue = -2147483647 - 1;
    info.defaultValue = -0x100000000;
    const std::string text = Written([&](auto& log) { log.WriteParameterInfo("info", info); });
    EXPECT_EQ(XPath(text, "//minValue"), std::vector<std::string>{"5"});
    EXPECT_EQ(XPath(text, "//maxValue"), std::vector<std::string>{"2147483648"});
    EXPECT_EQ(XPath(text, "//defaultValue"), std::vector<std::string>{"0"});
}

TEST_F(ParameterInfos, IsRunTimeIsANumber)
{
    auto info = SampleParameterInfo();
    info.isRunTime = 1;
    EXPECT_EQ(XPath(Written([&](auto& log) { log.WriteParameterInfo("info", info); }), "//isRunTime"),
              std::vector<std::string>{"1"});
}

TEST_F(ParameterInfos, DataTypeOutsideItsNamesIsAMessage)
{
    auto info = SampleParameterInfo();
    info.dataType = static_cast<CADIValueDataType_t>(4);
    EXPECT_EQ(XPath(Written([&](auto& log) { log.WriteParameterInfo("info", info); }), "//dataType"),
              std::vector<std::string>{"Invalid value data type: 0x4"});
}

TEST_F(ParameterInfos, PointerIsWrittenAsItsRecord)
{
    auto info = SampleParameterInfo();
    EXPECT_EQ(Written([&](auto& log) { log.WriteParameterInfoPtrVal("info", &info); }),
              Container("info", sampleParameterInfoText));
}

TEST_F(ParameterInfos, NullPointerIsANullElement)
{
    EXPECT_EQ(Written([](auto& log) { log.WriteParameterInfoPtrVal("info", nullptr); }),
              "    <info>NULL</info>\n");
}

TEST_F(ParameterInfos, InAnArrayAreNamedAfterTheParameters)
{
    CADIParameterInfo_t infos[] = {SampleParameterInfo(), SampleParameterInfo(), SampleParameterInfo()};
    SetText(infos[0].name, "2 cores");
    infos[0].id = 1;
    SetText(infos[1].name, "");
    infos[1].id = 2;
    SetText(infos[2].name, "clock.rate");
    infos[2].id = 3;
    const std::string text = Written([&](auto& log) { log.WriteParameterInfoArray("infos", infos, 3); });
    EXPECT_EQ(text, ContainerWith("infos", [&](auto& log) {
                  log.WriteParameterInfo("__cores", infos[0]);
                  log.WriteParameterInfo("emptyIdent", infos[1]);
                  log.WriteParameterInfo("clock.rate", infos[2]);
              }));
    EXPECT_EQ(XPath(text, "/infos/*/id"), (std::vector<std::string>{"1", "2", "3"}));
    EXPECT_EQ(XPath(text, "/infos/__cores/name"), std::vector<std::string>{"2 cores"});
    EXPECT_EQ(XPath(text, "/infos/emptyIdent/name"), std::vector<std::string>{""});
}

TEST_F(ParameterInfos, EmptyArrayHoldsNothing)
{
    CADIParameterInfo_t infos[] = {SampleParameterInfo()};
    EXPECT_EQ(Written([&](auto& log) { log.WriteParameterInfoArray("infos", infos, 0); }),
              Container("infos", ""));
}

TEST_F(ParameterInfos, NullArrayHoldsANullElement)
{
    EXPECT_EQ(Written([](auto& log) { log.WriteParameterInfoArray("infos", nullptr, fatalCount); }),
              NullIn("infos", "param"));
}

// ---- Values -------------------------------------------------------------------------------------

TEST_F(ParameterValues, HaveFourChildren)
{
    EXPECT_EQ(Written([](auto& log) { log.WriteParameterValue("value", SampleParameterValue()); }),
              Container("value", sampleParameterValueText));
}

TEST_F(ParameterValues, NumberLosesItsUpperHalfAndItsSign)
{
    auto value = SampleParameterValue();
    value.intValue = -1;
    EXPECT_EQ(XPath(Written([&](auto& log) { log.WriteParameterValue("value", value); }), "//intValue"),
              std::vector<std::string>{"4294967295"});
}

TEST_F(ParameterValues, ArrayHoldsEachValue)
{
    CADIParameterValue_t values[3]{};
    values[0].parameterID = 1;
    values[0].dataType = CADI_PARAM_BOOL;
    SetText(values[0].stringValue, "x");
    values[1].parameterID = 4294967295;
    values[1].intValue = 7;
    values[2].parameterID = 3;
    values[2].dataType = static_cast<CADIValueDataType_t>(-1);
    EXPECT_EQ(Written([&](auto& log) { log.WriteParameterValueArray("values", values, 3); }),
              R"(    <values>
        <parameterValue>
            <parameterID>1</parameterID>
            <dataType>CADI_PARAM_BOOL</dataType>
            <intValue>0</intValue>
            <stringValue>x</stringValue>
        </parameterValue>
        <parameterValue>
            <parameterID>4294967295</parameterID>
            <dataType>CADI_PARAM_INVALID</dataType>
            <intValue>7</intValue>
            <stringValue></stringValue>
        </parameterValue>
        <parameterValue>
            <parameterID>3</parameterID>
            <dataType>Invalid value data type: 0xffffffff</dataType>
            <intValue>0</intValue>
            <stringValue></stringValue>
        </parameterValue>
    </values>
)");
}

TEST_F(ParameterValues, EmptyArrayHoldsNothing)
{
    CADIParameterValue_t values[] = {SampleParameterValue()};
    EXPECT_EQ(Written([&](auto& log) { log.WriteParameterValueArray("values", values, 0); }),
              Container("values", ""));
}

TEST_F(ParameterValues, NullArrayHoldsANullElement)
{
    EXPECT_EQ(Written([](auto& log) { log.WriteParameterValueArray("values", nullptr, fatalCount); }),
              NullIn("values", "parameterValue"));
}

// ---- Factory errors -----------------------------------------------------------------------------

CADIFactoryErrorMessage_t ErrorMessage()
{
    CADIFactoryErrorMessage_t message{};
    message.errorCode = CADIFACT_ERROR_LICENCE_EXPIRED;
    message.erroneousParameterId = 4294967295;
    SetText(message.message, "expired\r\n<yesterday>");
    message.severity = CADIFACT_SEVERITY_WARNING;
    return message;
}

constexpr char errorText[] = R"(    <error>
        <errorCode>CADIFACT_ERROR_LICENCE_EXPIRED</errorCode>
        <erroneousParameterId>4294967295</erroneousParameterId>
        <message>expired\x0d\x0a&lt;yesterday&gt;</message>
        <severity>CADIFACT_SEVERITY_WARNING</severity>
    </error>
)";

TEST_F(FactoryErrors, HaveFourChildren)
{
    EXPECT_EQ(Written([](auto& log) { log.WriteFactoryErrorMessage("error", ErrorMessage()); }),
              errorText);
}

TEST_F(FactoryErrors, MessageMayFillItsField)
{
    auto message = ErrorMessage();
    const std::string full(16383, 'm');
    SetText(message.message, full);
    EXPECT_EQ(XPath(Written([&](auto& log) { log.WriteFactoryErrorMessage("error", message); }),
                    "/error/message"),
              std::vector<std::string>{full});
}

TEST_F(FactoryErrors, CodeAndSeverityOutsideTheirNamesAreMessages)
{
    auto message = ErrorMessage();
    message.errorCode = static_cast<CADIFactoryErrorCode_t>(14);
    message.severity = static_cast<CADIFactorySeverityCode_t>(3);
    const std::string text = Written([&](auto& log) { log.WriteFactoryErrorMessage("error", message); });
    EXPECT_EQ(XPath(text, "//errorCode"), std::vector<std::string>{"Invalid factory error code: 0xe"});
    EXPECT_EQ(XPath(text, "//severity"), std::vector<std::string>{"Invalid factory severity code: 0x3"});
}

TEST_F(FactoryErrors, PointerIsWrittenAsItsRecord)
{
    auto message = ErrorMessage();
    EXPECT_EQ(Written([&](auto& log) { log.WriteFactoryErrorMessagePtrVal("error", &message); }),
              errorText);
}

TEST_F(FactoryErrors, NullPointerIsANullElement)
{
    EXPECT_EQ(Written([](auto& log) { log.WriteFactoryErrorMessagePtrVal("error", nullptr); }),
              "    <error>NULL</error>\n");
}

}  // namespace
