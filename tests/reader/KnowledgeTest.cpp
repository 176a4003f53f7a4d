// What a debugger had seen of its target after some calls.

#include <gmock/gmock.h>

#include "reader/Reading.h"
#include "scrivel/Knowledge.h"
#include "scrivel/LogReader.h"

using namespace ScrivelReader;
using namespace ScrivelTest;

namespace
{

class Session : public LogHandler
{
public:
    explicit Session(Knowledge& itsKnown) : known(itsKnown) {}
    void Entered(const Call& call) override { known.Entered(call); }
    void Ended(Call& call) override { known.Ended(call, known.AccessBy(call)); }

private:
    Knowledge& known;
};

std::string CallOf(int number, const std::string& name, const std::string& arguments,
                   const std::string& results = "<return>CADI_STATUS_OK</return>")
{
    return "    <" + name + " call_num=\"" + std::to_string(number) +
           "\" call_time=\"0.000001 s\" threadId=\"1\">" + arguments +
           "<return_time>0.000002 s</return_time>" + results + "</" + name + ">\n";
}

std::string Register(const std::string& name, int number, const std::string& digits)
{
    return "<reg><" + name + "><regNumber>" + std::to_string(number) +
           "</regNumber><bytes>00000000 00000000 00000000 " + digits + " </bytes></" + name + "></reg>";
}

std::string Memory(const std::string& address, const std::string& values)
{
    std::string text =
        "<at><spaceId>1</spaceId><spaceName>RAM</spaceName><addr>" + address + "</addr></at><data>";
    for (std::size_t i = 0; i < values.size(); i += 2)
        text += "<value>0x" + values.substr(i, 2) + "</value>";
    return text + "</data>";
}

Knowledge After(const std::string& elements, const Knowledge::Limits& limits = {})
{
    Knowledge known(limits);
    Session session(known);
    LogReader reader(session);
    reader.Feed(LogOf(elements));
    reader.Finish();
    return known;
}

std::string Shown(const std::vector<KnownMemory>& places)
{
    std::string text;
    for (const KnownMemory& place : places) {
        text += std::to_string(place.address) + "+" + std::to_string(place.size) + " ";
        for (const char c : place.bytes)
            text += "0123456789abcdef"[static_cast<unsigned char>(c) % 16];
        text += " #" + std::to_string(place.source.call) + "\n";
    }
    return text;
}

constexpr char denied[] = "<return>CADI_STATUS_PermissionDenied</return>";

TEST(Knowledge, KeepsTheLastValueOfARegister)
{
    const Knowledge known = After(CallOf(1, "W", Register("a0", 10, "00000001")) +
                                  CallOf(2, "R", "", Register("a0", 10, "00000002")));
    ASSERT_EQ(known.Registers().size(), 1u);
    const KnownRegister a0 = known.Registers()[0];
    EXPECT_EQ(a0.name, "a0");
    EXPECT_EQ(a0.bytes.back(), '\x02');
    EXPECT_EQ(a0.source.call, 2u);
    EXPECT_EQ(a0.source.way, Way::Read);
    EXPECT_FALSE(known.IsStale(a0.source));
}

TEST(Knowledge, RefusedWriteLeavesTheValue)
{
    const Knowledge known = After(CallOf(1, "W", Register("a0", 10, "00000001")) +
                                  CallOf(2, "W", Register("a0", 10, "00000002"), denied));
    const KnownRegister a0 = known.Registers().at(0);
    EXPECT_EQ(a0.bytes.back(), '\x01');
    ASSERT_TRUE(a0.refused);
    EXPECT_EQ(a0.refused->call, 2u);
}

TEST(Knowledge, IsStaleOnceTheTargetHasRun)
{
    const std::string write = CallOf(1, "W", Register("a0", 10, "00000001"));
    const Knowledge continued = After(write + CallOf(2, "CADIExecContinue", ""));
    EXPECT_TRUE(continued.IsStale(continued.Registers().at(0).source));
    EXPECT_EQ(continued.LastRun(), 2u);

    const Knowledge told = After(write + CallOf(2, "modeChange", "<m>CADI_EXECMODE_Run</m>") +
                                 CallOf(3, "modeChange", "<m>CADI_EXECMODE_Stop</m>") +
                                 CallOf(4, "W", Register("a1", 11, "00000001")));
    EXPECT_EQ(told.Registers().at(0).name, "a1");
    EXPECT_FALSE(told.IsStale(told.Registers()[0].source));
    EXPECT_TRUE(told.IsStale(told.Registers()[1].source));
}

TEST(Knowledge, CountsTheCallsThatLetTheTargetRun)
{
    const std::string reset = CallOf(1, "CADIExecReset", "");
    EXPECT_EQ(After(reset).Starts(), 1u);
    EXPECT_EQ(After(reset + CallOf(2, "CADIExecReset", "")).Starts(), 2u);
    EXPECT_EQ(After(CallOf(3, "W", Register("a0", 10, "00000001"))).Starts(), 0u);
}

TEST(Knowledge, IsStaleWhenTheTargetRanAsItWasSeen)
{
    const Knowledge known = After(CallOf(1, "modeChange", "<m>CADI_EXECMODE_Run</m>") +
                                  CallOf(2, "W", Register("a0", 10, "00000001")));
    EXPECT_TRUE(known.IsStale(known.Registers().at(0).source));
}

TEST(Knowledge, KnowsTheProgramCounterByItsNameAlone)
{
    const Knowledge known =
        After(CallOf(1, "Map", "",
                     "<r><pc><regNumber>32</regNumber><bitsWide>32</bitsWide>"
                     "<display>CADI_REGTYPE_PC</display></pc></r>") +
              CallOf(2, "W", Register("a0", 10, "00000001")) + CallOf(3, "GetPC", "", "<pc>0x14</pc>") +
              CallOf(4, "W", Register("a1", 11, "00000001")));
    const KnownRegister pc = known.Registers().at(0);
    EXPECT_EQ(pc.name, "pc");
    EXPECT_EQ(pc.bits, 32u);
    EXPECT_EQ(pc.bytes.back(), '\x14');
    EXPECT_EQ(pc.source.call, 3u);
}

TEST(Knowledge, ALaterAccessCoversMemoryByteByByte)
{
    const Knowledge known =
        After(CallOf(1, "W", Memory("0x10", "0102030405060708")) +
              CallOf(2, "W", Memory("0x12", "0a0b")) + CallOf(3, "W", Memory("0x16", "0c0d0e0f")));
    EXPECT_EQ(Shown(known.Memory()), "16+2 12 #1\n18+2 ab #2\n20+2 56 #1\n22+4 cdef #3\n");
    EXPECT_EQ(Shown(known.MemoryAt("1", 0x13, 2)), "19+1 b #2\n20+1 5 #1\n");
    EXPECT_EQ(Shown(known.MemoryAt("2", 0x13, 2)), "");
}

TEST(Knowledge, MemoryThatWasRefusedIsTouchedAndNotKnown)
{
    const Knowledge known = After(CallOf(1, "W", Memory("0x10", "0102"), denied));
    EXPECT_EQ(Shown(known.Memory()), "");
    EXPECT_EQ(Shown(known.Touched("1", 0, 100)), "16+2  #1\n");
}

TEST(Knowledge, ReachesTheEndOfTheAddresses)
{
    const Knowledge known = After(CallOf(1, "W", Memory("0xfffffffffffffffe", "010203")));
    EXPECT_EQ(known.Memory().at(0).size, 2u);
}

TEST(Knowledge, FindsTheSmallestBlockAtAnAddress)
{
    const Knowledge known =
        After(CallOf(5, "Blocks", "<memorySpace>1</memorySpace>",
                     "<b><All><startAddr>0x0</startAddr><endAddr>0xffff</endAddr></All>"
                     "<IO><startAddr>0x100</startAddr><endAddr>0x1ff</endAddr></IO></b>"));
    EXPECT_EQ(known.BlockAt("1", 0x1ff)->name, "IO");
    EXPECT_EQ(known.BlockAt("1", 0x200)->name, "All");
    EXPECT_FALSE(known.BlockAt("2", 0x200));
    EXPECT_FALSE(known.BlockAt("1", 0x10000));
}

TEST(Knowledge, TellsThatItHadNoRoom)
{
    Knowledge::Limits limits;
    limits.bytes = 2;
    const Knowledge known =
        After(CallOf(1, "W", Memory("0x10", "0102")) + CallOf(2, "W", Memory("0x11", "0304")), limits);
    EXPECT_TRUE(known.IsIncomplete());
    EXPECT_EQ(Shown(known.Memory()), "16+1 1 #1\n");
}

}  // namespace
