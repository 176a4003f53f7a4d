// What a call did to the target, by the structure of its records.

#include <gmock/gmock.h>

#include "reader/Reading.h"
#include "scrivel/Access.h"

using namespace ScrivelReader;
using namespace ScrivelTest;

namespace
{

constexpr char address[] =
    "<at><overlay>0</overlay><location><spaceId>1</spaceId><spaceName>Memory</spaceName>"
    "<addr>0x0000000000003000</addr></location></at>";

/// Of a call that has these elements before and after its return.
Access Of(const std::string& arguments, const std::string& results,
          const std::string& status = "CADI_STATUS_OK")
{
    const Reading reading = ReadBytes(LogOf("<A call_num=\"7\" call_time=\"0.000001 s\">" + arguments +
                                            "<return_time>0.000002 s</return_time>" + results +
                                            "<return>" + status + "</return></A>"));
    return AccessOf(reading.calls.at(0));
}

std::string Array(const std::string& name, const std::string& values)
{
    return "<" + name + ">" + values + "</" + name + ">";
}

TEST(Access, ValuesOfRegistersAreWrittenBeforeTheReturnAndReadAfterIt)
{
    const std::string record =
        "<reg><pc><regNumber>32</regNumber><bytes>00000000 00000000 00000000 00003000 </bytes>"
        "<offset128>1</offset128><isUndefined>false</isUndefined></pc></reg>";
    const Access written = Of(record, "");
    ASSERT_EQ(written.registers.size(), 1u);
    EXPECT_EQ(written.registers[0].way, Way::Wrote);
    EXPECT_EQ(written.registers[0].name, "pc");
    EXPECT_EQ(written.registers[0].number, 32u);
    EXPECT_EQ(written.registers[0].offset128, 1u);
    EXPECT_EQ(written.registers[0].bytes, std::string(14, '\0') + "\x30" + '\0');
    EXPECT_EQ(Of("", record).registers.at(0).way, Way::Read);
}

TEST(Access, RegisterWithoutANameOrAValueHasNone)
{
    const Access access = Of("", "<list><reg><regNumber>3</regNumber><bytes>00000000 00000000 00000000 "
                                 "00000001 </bytes><isUndefined>true</isUndefined></reg></list>");
    EXPECT_EQ(access.registers.at(0).name, "");
    EXPECT_EQ(access.registers.at(0).bytes, "");
}

TEST(Access, ReadOfRegistersThatBroughtNothingNamesThem)
{
    const Access access = Of("<regCount>2</regCount><regNumber>3</regNumber><regNumber>4</regNumber>", "",
                             "CADI_STATUS_GeneralError");
    ASSERT_EQ(access.registers.size(), 2u);
    EXPECT_EQ(access.registers[1].number, 4u);
    EXPECT_EQ(access.registers[1].way, Way::Read);
    EXPECT_TRUE(Of("<regNumber>3</regNumber>", "").registers.empty());
}

TEST(Access, BytesBelongToTheAddressBeforeThem)
{
    const std::string bytes = Array("data", "<value>0xe8</value><value>0x03</value>");
    const Access written = Of(address + std::string("<bytes>2</bytes>") + bytes, "<actual>2</actual>");
    ASSERT_EQ(written.memory.size(), 1u);
    EXPECT_EQ(written.memory[0].way, Way::Wrote);
    EXPECT_EQ(written.memory[0].space, "1");
    EXPECT_EQ(written.memory[0].spaceName, "Memory");
    EXPECT_EQ(written.memory[0].address, 0x3000u);
    EXPECT_EQ(written.memory[0].bytes, "\xe8\x03");
    EXPECT_EQ(Of(address + std::string("<bytes>2</bytes>"), bytes).memory.at(0).way, Way::Read);
}

TEST(Access, FewerBytesThanAskedForCount)
{
    const std::string bytes = Array("data", "<value>0xe8</value><value>0x03</value>");
    EXPECT_EQ(Of(address + bytes, "<actual>1</actual>").memory.at(0).bytes, "\xe8");
    EXPECT_EQ(Of(address, "<actual>1</actual>" + bytes).memory.at(0).size, 1u);
}

TEST(Access, ReadOfMemoryThatBroughtNothingTouchesIt)
{
    const Access access = Of(address + std::string("<bytes>16</bytes>"), "", "CADI_STATUS_GeneralError");
    EXPECT_EQ(access.memory.at(0).size, 16u);
    EXPECT_EQ(access.memory.at(0).bytes, "");
}

TEST(Access, BreakpointTouchesNoMemory)
{
    EXPECT_TRUE(Of("<request>" + std::string(address) + "<bytes>4</bytes></request>", "").memory.empty());
}

TEST(Access, BlocksAndDescriptionsAreKnownByTheirFields)
{
    const Access access =
        Of("<memorySpace>1</memorySpace>",
           "<blocks><Timer><description>load</description><startAddr>0x0000000040000000</startAddr>"
           "<endAddr>0x0000000040000007</endAddr>"
           "</Timer></blocks><registers><pc><regNumber>32</regNumber><bitsWide>32</bitsWide>"
           "<display>CADI_REGTYPE_PC</display></pc></registers>");
    ASSERT_EQ(access.blocks.size(), 1u);
    EXPECT_EQ(access.blocks[0].name, "Timer");
    EXPECT_EQ(access.blocks[0].description, "load");
    EXPECT_EQ(access.blocks[0].space, "1");
    EXPECT_EQ(access.blocks[0].first, 0x40000000u);
    EXPECT_EQ(access.blocks[0].last, 0x40000007u);
    EXPECT_EQ(access.blocks[0].call, 7u);
    ASSERT_EQ(access.descriptions.size(), 1u);
    EXPECT_EQ(access.descriptions[0].bits, 32u);
    EXPECT_TRUE(access.descriptions[0].isProgramCounter);
}

TEST(Access, ModeIsOneThatTheCallItselfNames)
{
    EXPECT_EQ(Of("<newMode>CADI_EXECMODE_Run</newMode>", "").mode, "Run");
    EXPECT_EQ(Of("", "<modes><mode>CADI_EXECMODE_Run</mode></modes>").mode, "");
}

TEST(Access, TargetRunsByTheEndOfACallsName)
{
    EXPECT_TRUE(LetsTargetRun("CADIExecContinue"));
    EXPECT_TRUE(LetsTargetRun("CADIExecReset"));
    EXPECT_FALSE(LetsTargetRun("CADIExecGetResetLevels"));
}

}  // namespace
