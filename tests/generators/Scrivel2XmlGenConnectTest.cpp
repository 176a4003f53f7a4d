// What the generator of the connection phase writes: its calls, and the records of factories, simulations
// and targets.

#include "runbase/RunTest.h"

#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace
{

using namespace eslapi;
using Scrivel2::Scrivel2XmlGenConnect;
using ScrivelTest::SampleParameterInfo;
using ScrivelTest::sampleParameterInfoText;
using ScrivelTest::SampleParameterValue;
using ScrivelTest::sampleParameterValueText;
using ScrivelTest::SampleTargetInfo;
using ScrivelTest::sampleTargetInfoText;
using ScrivelTest::SetText;
using ScrivelTest::XPath;
using Log = Scrivel2XmlGenConnect;

using ConnectGenerator = ScrivelTest::RecordTest<Scrivel2XmlGenConnect>;
using ConnectCalls = ScrivelTest::RecordTest<Scrivel2XmlGenConnect>;
using Factories = ScrivelTest::RecordTest<Scrivel2XmlGenConnect>;
using Simulations = ScrivelTest::RecordTest<Scrivel2XmlGenConnect>;
using ConnectParameters = ScrivelTest::RecordTest<Scrivel2XmlGenConnect>;
using Targets = ScrivelTest::RecordTest<Scrivel2XmlGenConnect>;

/// A count that must not be looked at.
unsigned int* NoCount()
{
    return reinterpret_cast<unsigned int*>(sizeof(unsigned int));
}

CADISimulationFactory* FactoryAt(std::uintptr_t address)
{
    return reinterpret_cast<CADISimulationFactory*>(address);
}

// ---- The generator ------------------------------------------------------------------------------

TEST_F(ConnectGenerator, HeaderNamesTheVersion)
{
    Make()->StartLogging();
    EXPECT_EQ(WholeFile(), Header("trace", "CADI 2.0") + EndTag());
}

TEST_F(ConnectGenerator, ConstructorWritesNothing)
{
    const Scrivel2XmlGenConnect log("trace");
    EXPECT_TRUE(std::filesystem::is_empty("."));
}

TEST_F(ConnectGenerator, DestructionThroughTheBaseWritesNothing)
{
    std::unique_ptr<Scrivel2::ScrivelXmlGenBase> log = Make();
    log->StartLogging();
    log->WriteDecimal("lost", 1);
    log.reset();
    EXPECT_EQ(WholeFile(), Header() + EndTag());
}

TEST_F(ConnectGenerator, OutsideWriteSecureModeTheLogHasNoEndTag)
{
    const auto log = Make();
    static_cast<Scrivel2::ScrivelXmlGenBase&>(*log).SetWriteSecure(false);
    log->StartLogging();
    log->EndLogging();
    EXPECT_EQ(WholeFile(), Header());
    log->SetWriteSecure(true);
    log->StartLogging();
    log->EndLogging();
    EXPECT_EQ(WholeFile(), Header() + EndTag());
}

// ---- Calls --------------------------------------------------------------------------------------

TEST_F(ConnectCalls, StartTagIsOneLineWithoutThread)
{
    EXPECT_EQ(Written([](auto& log) {
                  SetClock(1000, 10020);
                  log.IncCallNo();
                  log.WriteDetailedIdent("Connect");
                  log.WriteIdent("Connect", false, true);
              }),
              "    <Connect call_num=\"1\" call_time=\"0.010020 s\">\n    </Connect>\n");
    EXPECT_EQ(ScrivelTest::platform.pthread_self.Calls(), 0U);
}

TEST_F(ConnectCalls, ACallFromStartToEnd)
{
    const auto log = Make();
    log->StartLogging();
    log->WriteCloseInterruptedFunction("GetTargetInfos");
    log->IncCallNo();
    log->WriteDetailedIdent("GetTargetInfos");
    log->WriteDecimal("desiredNumberOfTargetInfos", 1);
    log->FlushOutput(false, "GetTargetInfos");
    SetClock(1001, 0);
    log->WriteContinueFunction(log->GetCallNo(), "GetTargetInfos");
    log->WriteReturnType("return", CADI_STATUS_OK);
    log->WriteIdent("GetTargetInfos", false, true);
    log->FlushOutput(true, "");
    log->EndLogging();
    EXPECT_EQ(WholeFile(), Complete(R"(    <GetTargetInfos call_num="1" call_time="0.000000 s">
        <desiredNumberOfTargetInfos>1</desiredNumberOfTargetInfos>
        <return_time>1.000000 s</return_time>
        <return>CADI_STATUS_OK</return>
    </GetTargetInfos>
)"));
}

// ---- Enumerations -------------------------------------------------------------------------------

TEST_F(ConnectGenerator, ReturnTypesHaveTheirNames)
{
    ExpectNames<CADIReturn_t>(&Log::WriteReturnType, ScrivelTest::ReturnTypeNames());
}

TEST_F(ConnectGenerator, ReturnTypesOutsideTheTableAreMessages)
{
    ExpectMessages<CADIReturn_t>(&Log::WriteReturnType, 12, "Invalid return type: 0x", "c");
}

TEST_F(ConnectGenerator, ValueDataTypesHaveTheirNames)
{
    ExpectNames<CADIValueDataType_t>(&Log::WriteValueDataType, ScrivelTest::ValueDataTypeNames());
}

TEST_F(ConnectGenerator, ValueDataTypesOutsideTheTableAreMessages)
{
    ExpectMessages<CADIValueDataType_t>(&Log::WriteValueDataType, 4, "Invalid value data type: 0x", "4");
}

// ---- Factories ----------------------------------------------------------------------------------

TEST_F(Factories, AreWrittenByAddress)
{
    CADISimulationFactory* factories[] = {FactoryAt(0x1000), nullptr, FactoryAt(0xfedcba9876543210)};
    unsigned int count = 3;
    EXPECT_EQ(Written([&](auto& log) { log.WriteSimulationFactoryArray("f", factories, &count); }),
              R"(    <f>
        <simulationFactory>0x0000000000001000</simulationFactory>
        <simulationFactory>NULL</simulationFactory>
        <simulationFactory>0xfedcba9876543210</simulationFactory>
    </f>
)");
}

TEST_F(Factories, EmptyArrayHoldsNothing)
{
    CADISimulationFactory* factories[] = {FactoryAt(0x1000)};
    unsigned int count = 0;
    EXPECT_EQ(Written([&](auto& log) { log.WriteSimulationFactoryArray("f", factories, &count); }),
              Container("f", ""));
}

TEST_F(Factories, NullCountIsZero)
{
    CADISimulationFactory* factories[] = {FactoryAt(0x1000)};
    EXPECT_EQ(Written([&](auto& log) { log.WriteSimulationFactoryArray("f", factories, nullptr); }),
              Container("f", ""));
}

TEST_F(Factories, NullArrayHoldsANullElementNamedAfterTargets)
{
    EXPECT_EQ(Written([](auto& log) { log.WriteSimulationFactoryArray("f", nullptr, NoCount()); }),
              NullIn("f", "targetInfo"));
}

/// Runs an action at each address that is written.
class Acting : public Scrivel2XmlGenConnect
{
public:
    using Scrivel2XmlGenConnect::Scrivel2XmlGenConnect;

    std::function<void()> action = [] {};

    void WriteAddress(std::string ident, unsigned long address) override
    {
        Scrivel2XmlGenConnect::WriteAddress(ident, address);
        action();
    }
};

TEST_F(Factories, AreWrittenThroughTheTableAndTheCountIsReadAnewForEachOne)
{
    CADISimulationFactory* factories[] = {FactoryAt(1), FactoryAt(2), FactoryAt(3)};
    unsigned int count = 3;
    EXPECT_EQ(Written<Acting>([&](auto& log) {
                  log.action = [&] { count = 1; };
                  log.WriteSimulationFactoryArray("f", factories, &count);
              }),
              Container("f", "        <simulationFactory>0x0000000000000001</simulationFactory>\n"));

    count = 1;
    EXPECT_EQ(Written<Acting>([&](auto& log) {
                  log.action = [&] { count = 2; };
                  log.WriteSimulationFactoryArray("f", factories, &count);
              }),
              Container("f", "        <simulationFactory>0x0000000000000001</simulationFactory>\n"
                             "        <simulationFactory>0x0000000000000002</simulationFactory>\n"));
}

// ---- Simulations --------------------------------------------------------------------------------

CADISimulationInfo_t Simulation(unsigned int id, const char* name, const char* description)
{
    CADISimulationInfo_t info{};
    info.id = id;
    SetText(info.name, name);
    SetText(info.description, description);
    return info;
}

TEST_F(Simulations, HaveThreeChildren)
{
    EXPECT_EQ(Written([](auto& log) {
                  log.WriteSimulationInfo("sim", Simulation(4294967295, "a<b", "it's\x7f"));
              }),
              R"(    <sim>
        <id>4294967295</id>
        <name>a&lt;b</name>
        <description>it&apos;s\x7f</description>
    </sim>
)");
}

TEST_F(Simulations, InAnArrayAreNamedAsFactoriesAre)
{
    CADISimulationInfo_t infos[] = {Simulation(1, "a", "x"), Simulation(2, "b", "y"),
                                    Simulation(3, "c", "z")};
    unsigned int count = 3;
    EXPECT_EQ(Written([&](auto& log) { log.WriteSimulationInfoArray("sims", infos, &count); }),
              R"(    <sims>
        <simulationFactory>
            <id>1</id>
            <name>a</name>
            <description>x</description>
        </simulationFactory>
        <simulationFactory>
            <id>2</id>
            <name>b</name>
            <description>y</description>
        </simulationFactory>
        <simulationFactory>
            <id>3</id>
            <name>c</name>
            <description>z</description>
        </simulationFactory>
    </sims>
)");
}

TEST_F(Simulations, EmptyArrayAndNullCountHoldNothing)
{
    CADISimulationInfo_t infos[] = {Simulation(1, "a", "x")};
    unsigned int count = 0;
    EXPECT_EQ(Written([&](auto& log) { log.WriteSimulationInfoArray("sims", infos, &count); }),
              Container("sims", ""));
    EXPECT_EQ(Written([&](auto& log) { log.WriteSimulationInfoArray("sims", infos, nullptr); }),
              Container("sims", ""));
}

TEST_F(Simulations, NullArrayHoldsANullElementNamedAfterTargets)
{
    EXPECT_EQ(Written([](auto& log) { log.WriteSimulationInfoArray("sims", nullptr, NoCount()); }),
              NullIn("sims", "targetInfo"));
}

// ---- Parameters ---------------------------------------------------------------------------------

TEST_F(ConnectParameters, DescriptionIsThatOfTheRunPhase)
{
    EXPECT_EQ(Written([](auto& log) { log.WriteParameterInfo("info", SampleParameterInfo()); }),
              Container("info", sampleParameterInfoText));
}

TEST_F(ConnectParameters, ValueIsThatOfTheRunPhase)
{
    EXPECT_EQ(Written([](auto& log) { log.WriteParameterValue("value", SampleParameterValue()); }),
              Container("value", sampleParameterValueText));
}

TEST_F(ConnectParameters, DescriptionsInAnArrayAreNamedAfterTheParameters)
{
    CADIParameterInfo_t infos[] = {SampleParameterInfo(), SampleParameterInfo(), SampleParameterInfo()};
    SetText(infos[0].name, "2 cores");
    infos[0].id = 1;
    SetText(infos[1].name, "");
    infos[1].id = 2;
    SetText(infos[2].name, "clock.rate");
    infos[2].id = 3;
    unsigned int count = 3;
    const std::string text =
        Written([&](auto& log) { log.WriteParameterInfoArray("infos", infos, &count); });
    EXPECT_EQ(text, ContainerWith("infos", [&](auto& log) {
                  log.WriteParameterInfo("__cores", infos[0]);
                  log.WriteParameterInfo("emptyIdent", infos[1]);
                  log.WriteParameterInfo("clock.rate", infos[2]);
              }));
    EXPECT_EQ(XPath(text, "/infos/*/id"), (std::vector<std::string>{"1", "2", "3"}));
}

TEST_F(ConnectParameters, EmptyArrayAndNullCountOfDescriptionsHoldNothing)
{
    CADIParameterInfo_t infos[] = {SampleParameterInfo()};
    unsigned int count = 0;
    EXPECT_EQ(Written([&](auto& log) { log.WriteParameterInfoArray("infos", infos, &count); }),
              Container("infos", ""));
    EXPECT_EQ(Written([&](auto& log) { log.WriteParameterInfoArray("infos", infos, nullptr); }),
              Container("infos", ""));
}

TEST_F(ConnectParameters, NullArrayOfDescriptionsHoldsANullElement)
{
    EXPECT_EQ(Written([](auto& log) { log.WriteParameterInfoArray("infos", nullptr, NoCount()); }),
              NullIn("infos", "param"));
}

TEST_F(ConnectParameters, ValuesAreWrittenUpToTheTerminatorAndWithIt)
{
    CADIParameterValue_t values[4]{};
    values[0].parameterID = 5;
    values[0].dataType = CADI_PARAM_BOOL;
    values[1].parameterID = 7;
    values[1].intValue = 0x100000001;
    SetText(values[1].stringValue, "y");
    values[2].parameterID = 0xffffffff;
    values[2].dataType = static_cast<CADIValueDataType_t>(4);
    values[3].parameterID = 9;
    EXPECT_EQ(Written([&](auto& log) { log.WriteParameterValueArray("values", values); }),
              R"(    <values>
        <parameterValue>
            <parameterID>5</parameterID>
            <dataType>CADI_PARAM_BOOL</dataType>
            <intValue>0</intValue>
            <stringValue></stringValue>
        </parameterValue>
        <parameterValue>
            <parameterID>7</parameterID>
            <dataType>CADI_PARAM_INVALID</dataType>
            <intValue>1</intValue>
            <stringValue>y</stringValue>
        </parameterValue>
        <parameterValue>
            <parameterID>4294967295</parameterID>
            <dataType>Invalid value data type: 0x4</dataType>
            <intValue>0</intValue>
            <stringValue></stringValue>
        </parameterValue>
    </values>
)");
}

TEST_F(ConnectParameters, TerminatorAloneIsOneValue)
{
    CADIParameterValue_t values[2]{};
    values[0].parameterID = 0xffffffff;
    values[1].parameterID = 0xffffffff;
    EXPECT_EQ(XPath(Written([&](auto& log) { log.WriteParameterValueArray("values", values); }),
                    "/values/parameterValue/parameterID"),
              std::vector<std::string>{"4294967295"});
}

TEST_F(ConnectParameters, NullArrayOfValuesHoldsANullElement)
{
    EXPECT_EQ(Written([](auto& log) { log.WriteParameterValueArray("values", nullptr); }),
              NullIn("values", "parameterValue"));
}

// ---- Targets ------------------------------------------------------------------------------------

TEST_F(Targets, HaveTwelveChildrenAndNeverCanRunInBackground)
{
    auto info = SampleTargetInfo();
    for (const bool inBackground : {true, false}) {
        info.canRunInBackground = inBackground;
        const std::string text = Written([&](auto& log) { log.WriteTargetInfo("target", info); });
        EXPECT_EQ(text, Container("target", sampleTargetInfoText));
        EXPECT_EQ(XPath(text, "count(/target/*)"), std::vector<std::string>{"12"});
    }
}

TEST_F(Targets, ArrayHoldsEachTarget)
{
    CADITargetInfo_t infos[] = {SampleTargetInfo(), SampleTargetInfo(), SampleTargetInfo()};
    infos[1].id = 1;
    infos[2].id = 2;
    unsigned int count = 3;
    const std::string text =
        Written([&](auto& log) { log.WriteTargetInfoArray("targets", infos, &count); });
    EXPECT_EQ(text, ContainerWith("targets", [&](auto& log) {
                  for (const auto& info : infos) {
                      log.WriteTargetInfo("targetInfo", info);
                  }
              }));
    EXPECT_EQ(XPath(text, "/targets/targetInfo/id"), (std::vector<std::string>{"4294967295", "1", "2"}));
    EXPECT_EQ(XPath(text, "count(//canRunInBackground)"), std::vector<std::string>{"0"});
}

TEST_F(Targets, EmptyArrayAndNullCountHoldNothing)
{
    CADITargetInfo_t infos[] = {SampleTargetInfo()};
    unsigned int count = 0;
    EXPECT_EQ(Written([&](auto& log) { log.WriteTargetInfoArray("targets", infos, &count); }),
              Container("targets", ""));
    EXPECT_EQ(Written([&](auto& log) { log.WriteTargetInfoArray("targets", infos, nullptr); }),
              Container("targets", ""));
}

TEST_F(Targets, NullArrayHoldsANullElement)
{
    EXPECT_EQ(Written([](auto& log) { log.WriteTargetInfoArray("targets", nullptr, NoCount()); }),
              NullIn("targets", "targetInfo"));
}

// ---- The virtual table --------------------------------------------------------------------------

/// Writes nothing but what it is asked for.
class Asked : public Scrivel2XmlGenConnect
{
public:
    using Scrivel2XmlGenConnect::Scrivel2XmlGenConnect;

    void WriteIdent(std::string name, bool openTag, bool newline) override
    {
        logFile.Append((openTag ? "open " : "close ") + name + (newline ? "\n" : ": "));
    }
    void WriteIdentWithoutTabs(std::string name) override { logFile.Append(" end " + name + "\n"); }
    void WriteNULLPointer(std::string ident) override { logFile.Append("null " + ident + "\n"); }
};

TEST_F(ConnectGenerator, ElementsGoThroughTheTable)
{
    EXPECT_EQ(Written<Asked>([](auto& log) {
                  unsigned int one = 1;
                  auto simulation = Simulation(7, "a", "b");
                  log.WriteReturnType("r", CADI_STATUS_OK);
                  log.WriteValueDataType("v", static_cast<CADIValueDataType_t>(9));
                  log.WriteSimulationInfoArray("s", &simulation, &one);
                  log.WriteSimulationFactoryArray("f", nullptr, &one);
                  log.WriteSimulationInfoArray("s", nullptr, &one);
                  log.WriteParameterInfoArray("p", nullptr, &one);
                  log.WriteParameterValueArray("q", nullptr);
                  log.WriteTargetInfoArray("t", nullptr, &one);
              }),
              R"(open r: CADI_STATUS_OK end r
open v: Invalid value data type: 0x9 end v
open s
open simulationFactory
open id: 7 end id
open name: a end name
open description: b end description
close simulationFactory
close s
open f
null targetInfo
close f
open s
null targetInfo
close s
open p
null param
close p
open q
null parameterValue
close q
open t
null targetInfo
close t
)");
}

}  // namespace
