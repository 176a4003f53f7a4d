// Breakpoints as they are asked for and as they are described, and exceptions.

#include "runbase/RunTest.h"

#include <string>

namespace
{

using namespace eslapi;
using NameTable = Scrivel2::ScrivelXmlGenRunBase::NameTable;
using ScrivelTest::fatalCount;
using ScrivelTest::SetText;
using ScrivelTest::XPath;

using BptConditions = ScrivelTest::RecordTest<>;
using BptRequests = ScrivelTest::RecordTest<>;
using BptDescriptions = ScrivelTest::RecordTest<>;
using Exceptions = ScrivelTest::RecordTest<>;

// ---- Conditions ---------------------------------------------------------------------------------

CADIBptCondition_t Condition()
{
    return {CADI_BPT_COND_LESS_THAN_SIGNED, 0xffffffffffffffff, 4294967295, 4294967294, 4294967293};
}

TEST_F(BptConditions, ComparisonValueIsWrittenWhole)
{
    EXPECT_EQ(Written([](auto& log) { log.WriteBptCondition("condition", Condition()); }),
              R"(    <condition>
        <conditionOperator>CADI_BPT_COND_LESS_THAN_SIGNED</conditionOperator>
        <comparisonValue>18446744073709551615</comparisonValue>
        <threadID>4294967295</threadID>
        <ignoreCount>4294967294</ignoreCount>
        <bitwidth>4294967293</bitwidth>
    </condition>
)");
}

TEST_F(BptConditions, UnsignedOperatorIsAMessage)
{
    EXPECT_EQ(Written([](auto& log) {
                  log.WriteBptCondition("c", {CADI_BPT_COND_GREATER_THAN_UNSIGNED, 10, 11, 12, 13});
              }),
              R"(    <c>
        <conditionOperator>Invalid breakpoint condition operator: 0x7</conditionOperator>
        <comparisonValue>10</comparisonValue>
        <threadID>11</threadID>
        <ignoreCount>12</ignoreCount>
        <bitwidth>13</bitwidth>
    </c>
)");
}

// ---- Requests -----------------------------------------------------------------------------------

CADIBptRequest_t Request()
{
    CADIBptRequest_t request{};
    request.address = {4294967292, {4294967291, 0xfedcba9876543210}};
    request.sizeOfAddressRange = 0xabcdef0180000003;
    request.enabled = 4294967290;
    SetText(request.conditions, "x < 3 && y");
    request.useFormalCondition = true;
    request.formalCondition = Condition();
    request.type = CADI_BPT_PROGRAM_RANGE;
    request.regNumber = 4294967289;
    request.temporary = 4294967288;
    request.triggerType = 0xfd;
    request.continueExecution = 0x80000000;
    return request;
}

constexpr char requestText[] = R"(    <request>
        <address>
            <overlay>4294967292</overlay>
            <location>
                <spaceId>4294967291</spaceId>
                <spaceName>unknown memSpaceInfo</spaceName>
                <addr>0xfedcba9876543210</addr>
            </location>
        </address>
        <sizeOfAddressRange>2147483651</sizeOfAddressRange>
        <enabled>4294967290</enabled>
        <conditions>x &lt; 3 &amp;&amp; y</conditions>
        <useFormalCondition>true</useFormalCondition>
        <formalCondition>
            <conditionOperator>CADI_BPT_COND_LESS_THAN_SIGNED</conditionOperator>
            <comparisonValue>18446744073709551615</comparisonValue>
            <threadID>4294967295</threadID>
            <ignoreCount>4294967294</ignoreCount>
            <bitwidth>4294967293</bitwidth>
        </formalCondition>
        <type>CADI_BPT_PROGRAM_RANGE</type>
        <regNumber>4294967289</regNumber>
        <temporary>4294967288</temporary>
        <triggerType>CADI_BPT_TRIGGER_ON_{READ, MODIFY, 0x1f}</triggerType>
        <continueExecution>true</continueExecution>
    </request>
)";

TEST_F(BptRequests, HaveElevenChildren)
{
    auto request = Request();
    EXPECT_EQ(Written([&](auto& log) { log.WriteBptRequest("request", &request); }), requestText);
}

TEST_F(BptRequests, NullPointerIsANullElement)
{
    EXPECT_EQ(Written([](auto& log) { log.WriteBptRequest("request", nullptr); }),
              "    <request>NULL</request>\n");
}

TEST_F(BptRequests, FormalConditionIsWrittenEvenWhenItIsNotUsed)
{
    auto request = Request();
    request.useFormalCondition = false;
    const std::string text = Written([&](auto& log) { log.WriteBptRequest("request", &request); });
    EXPECT_EQ(XPath(text, "/request/useFormalCondition"), std::vector<std::string>{"false"});
    EXPECT_EQ(XPath(text, "/request/formalCondition/*"),
              (std::vector<std::string>{"CADI_BPT_COND_LESS_THAN_SIGNED", "18446744073709551615",
                                        "4294967295", "4294967294", "4294967293"}));
}

TEST_F(BptRequests, SizeIsCutTo32BitsUnlikeTheAddress)
{
    auto request = Request();
    request.sizeOfAddressRange = 4294967312;
    const std::string text = Written([&](auto& log) { log.WriteBptRequest("request", &request); });
    EXPECT_EQ(XPath(text, "//sizeOfAddressRange"), std::vector<std::string>{"16"});
    EXPECT_EQ(XPath(text, "//addr"), std::vector<std::string>{"0xfedcba9876543210"});
}

TEST_F(BptRequests, ContinueExecutionIsAWordAndEnabledAndTemporaryAreNumbers)
{
    auto request = Request();
    request.continueExecution = 2;
    request.enabled = 1;
    request.temporary = 0;
    std::string text = Written([&](auto& log) { log.WriteBptRequest("request", &request); });
    EXPECT_EQ(XPath(text, "//continueExecution"), std::vector<std::string>{"true"});
    EXPECT_EQ(XPath(text, "//enabled"), std::vector<std::string>{"1"});
    EXPECT_EQ(XPath(text, "//temporary"), std::vector<std::string>{"0"});
    request.continueExecution = 0;
    text = Written([&](auto& log) { log.WriteBptRequest("request", &request); });
    EXPECT_EQ(XPath(text, "//continueExecution"), std::vector<std::string>{"false"});
}

TEST_F(BptRequests, AddressHasItsSpaceNamedByTheTable)
{
    const NameTable names{{4294967291, "data"}};
    auto request = Request();
    EXPECT_EQ(XPath(Written([&](auto& log) {
                        log.SetMemSpaceNames(&names);
                        log.WriteBptRequest("request", &request);
                    }),
                    "/request/address/location/spaceName"),
              std::vector<std::string>{"data"});
}

TEST_F(BptRequests, TypeAndTriggerOutsideTheirNamesAreWritten)
{
    auto request = Request();
    request.type = CADI_BPT_USER_DEFINED;
    request.triggerType = 0;
    std::string text = Written([&](auto& log) { log.WriteBptRequest("request", &request); });
    EXPECT_EQ(XPath(text, "//type"), std::vector<std::string>{"CADI_BPT_USER_DEFINED"});
    EXPECT_EQ(XPath(text, "//triggerType"), std::vector<std::string>{""});
    request.type = static_cast<CADIBptType_t>(-1);
    text = Written([&](auto& log) { log.WriteBptRequest("request", &request); });
    EXPECT_EQ(XPath(text, "//type"), std::vector<std::string>{"Invalid bpt type: 0xffffffff"});
}

// ---- Descriptions -------------------------------------------------------------------------------

TEST_F(BptDescriptions, HoldNumberAndRequest)
{
    const CADIBptDescription_t description{4294967287, Request()};
    auto request = Request();
    const std::string text = Written([&](auto& log) { log.WriteBptDescription("bpt", description); });
    EXPECT_EQ(text, ContainerWith("bpt", [&](auto& log) {
                  log.WriteDecimal("bptNumber", 4294967287);
                  log.WriteBptRequest("bptInfo", &request);
              }));
    EXPECT_EQ(XPath(text, "/bpt/bptNumber"), std::vector<std::string>{"4294967287"});
    EXPECT_EQ(XPath(text, "count(/bpt/*)"), std::vector<std::string>{"2"});
    EXPECT_EQ(XPath(text, "/bpt/bptInfo/regNumber"), std::vector<std::string>{"4294967289"});
}

TEST_F(BptDescriptions, EachOneInAnArrayBearsThePlural)
{
    CADIBptDescription_t bpts[] = {{1, Request()}, {2, Request()}, {3, Request()}};
    bpts[1].bptInfo.regNumber = 22;
    bpts[2].bptInfo.regNumber = 33;
    const std::string text = Written([&](auto& log) { log.WriteBptDescriptionArray("bpts", bpts, 3); });
    EXPECT_EQ(text, ContainerWith("bpts", [&](auto& log) {
                  for (const auto& bpt : bpts) {
                      log.WriteBptDescription("breakpoints", bpt);
                  }
              }));
    EXPECT_EQ(XPath(text, "/bpts/breakpoints/bptNumber"), (std::vector<std::string>{"1", "2", "3"}));
    EXPECT_EQ(XPath(text, "/bpts/breakpoints/bptInfo/regNumber"),
              (std::vector<std::string>{"4294967289", "22", "33"}));
}

TEST_F(BptDescriptions, EmptyArrayHoldsNothing)
{
    CADIBptDescription_t bpts[] = {{1, Request()}};
    EXPECT_EQ(Written([&](auto& log) { log.WriteBptDescriptionArray("bpts", bpts, 0); }),
              Container("bpts", ""));
}

TEST_F(BptDescriptions, NullArrayHoldsANullElement)
{
    EXPECT_EQ(Written([](auto& log) { log.WriteBptDescriptionArray("bpts", nullptr, fatalCount); }),
              NullIn("bpts", "breakpoints"));
}

// ---- Exceptions ---------------------------------------------------------------------------------

CADIException_t Exception(unsigned int number, const char* name, CADIAddr_t vector)
{
    CADIException_t exception{};
    exception.number = number;
    SetText(exception.name, name);
    exception.vector = vector;
    return exception;
}

TEST_F(Exceptions, HaveNumberNameAndVector)
{
    EXPECT_EQ(
        Written([](auto& log) {
            log.WriteException("e", Exception(4294967295, "\"reset\"", {4294967294, 0xffffffff00000000}));
        }),
        R"(    <e>
        <number>4294967295</number>
        <name>&quot;reset&quot;</name>
        <vector>
            <spaceId>4294967294</spaceId>
            <spaceName>unknown memSpaceInfo</spaceName>
            <addr>0xffffffff00000000</addr>
        </vector>
    </e>
)");
}

TEST_F(Exceptions, ArrayHoldsEachException)
{
    const NameTable names{{2, "data"}};
    CADIException_t exceptions[] = {Exception(1, "x", {1, 0x10}), Exception(2, "y", {2, 0x20}),
                                    Exception(3, "z", {3, 0x30})};
    EXPECT_EQ(Written([&](auto& log) {
                  log.SetMemSpaceNames(&names);
                  log.WriteExceptionArray("exceptions", exceptions, 3);
              }),
              R"(    <exceptions>
        <exception>
            <number>1</number>
            <name>x</name>
            <vector>
                <spaceId>1</spaceId>
                <spaceName>unknown memSpaceInfo</spaceName>
                <addr>0x0000000000000010</addr>
            </vector>
        </exception>
        <exception>
            <number>2</number>
            <name>y</name>
            <vector>
                <spaceId>2</spaceId>
                <spaceName>data</spaceName>
                <addr>0x0000000000000020</addr>
            </vector>
        </exception>
        <exception>
            <number>3</number>
            <name>z</name>
            <vector>
                <spaceId>3</spaceId>
                <spaceName>unknown memSpaceInfo</spaceName>
                <addr>0x0000000000000030</addr>
            </vector>
        </exception>
    </exceptions>
)");
}

TEST_F(Exceptions, EmptyArrayHoldsNothing)
{
    CADIException_t exceptions[] = {Exception(1, "x", {1, 0x10})};
    EXPECT_EQ(Written([&](auto& log) { log.WriteExceptionArray("exceptions", exceptions, 0); }),
              Container("exceptions", ""));
}

TEST_F(Exceptions, NullArrayHoldsANullElementNamedAfterBreakpoints)
{
    EXPECT_EQ(Written([](auto& log) { log.WriteExceptionArray("exceptions", nullptr, fatalCount); }),
              NullIn("exceptions", "breakpoints"));
}

}  // namespace
