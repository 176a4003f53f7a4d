// Memory spaces, blocks, caches and overlays, and the addresses in them.

#include "runbase/RunTest.h"

#include <numeric>
#include <string>

namespace
{

using namespace eslapi;
using NameTable = Scrivel2::ScrivelXmlGenRunBase::NameTable;
using ScrivelTest::fatalCount;
using ScrivelTest::SetText;
using ScrivelTest::XPath;

using MemSpaces = ScrivelTest::RecordTest<>;
using MemBlocks = ScrivelTest::RecordTest<>;
using Caches = ScrivelTest::RecordTest<>;
using OverlayIds = ScrivelTest::RecordTest<>;
using Addresses = ScrivelTest::RecordTest<>;

// ---- Spaces -------------------------------------------------------------------------------------

CADIMemSpaceInfo_t Space()
{
    CADIMemSpaceInfo_t space{};
    SetText(space.name, "Data");
    SetText(space.description, "<ram> & rom");
    space.memSpaceId = 4294967295;
    space.bitsPerMau = 4294967294;
    space.maxAddress = 0xfedcba9889abcdef;
    space.nrMemBlocks = 4294967293;
    space.isProgramMemory = 4294967292;
    space.minAddress = 0x1234567880000001;
    space.isVirtualMemory = 0x100;
    space.isCache = 0;
    space.endianness = 1;
    space.invariance = 255;
    space.dwarfMemSpaceId = 4294967291;
    space.canonicalMemoryNumber = 4294967290;
    return space;
}

TEST_F(MemSpaces, AreNamedAfterThemselves)
{
    EXPECT_EQ(Written([](auto& log) { log.WriteMemSpaceInfo(Space()); }), R"(    <Data>
        <description>&lt;ram&gt; &amp; rom</description>
        <memSpaceId>4294967295</memSpaceId>
        <bitsPerMau>4294967294</bitsPerMau>
        <maxAddress>0x0000000089abcdef</maxAddress>
        <nrMemBlocks>4294967293</nrMemBlocks>
        <isProgramMemory>4294967292</isProgramMemory>
        <minAddress>2147483649</minAddress>
        <isVirtualMemory>true</isVirtualMemory>
        <isCache>false</isCache>
        <endianness>LE</endianness>
        <invariance>255</invariance>
        <dwarfMemSpaceId>4294967291</dwarfMemSpaceId>
        <canonicalMemoryNumber>4294967290</canonicalMemoryNumber>
    </Data>
)");
}

TEST_F(MemSpaces, UpperBoundIsHexadecimalAndLowerBoundDecimalBothCutTo32Bits)
{
    auto space = Space();
    space.maxAddress = 0x100000000;
    space.minAddress = 0x10000000a;
    const std::string text = Written([&](auto& log) { log.WriteMemSpaceInfo(space); });
    EXPECT_EQ(XPath(text, "//maxAddress"), std::vector<std::string>{"0x0000000000000000"});
    EXPECT_EQ(XPath(text, "//minAddress"), std::vector<std::string>{"10"});
}

TEST_F(MemSpaces, TwoFlagsAreWordsAndOneIsANumber)
{
    auto space = Space();
    space.isProgramMemory = 1;
    space.isVirtualMemory = 0;
    space.isCache = 2;
    const std::string text = Written([&](auto& log) { log.WriteMemSpaceInfo(space); });
    EXPECT_EQ(XPath(text, "//isProgramMemory"), std::vector<std::string>{"1"});
    EXPECT_EQ(XPath(text, "//isVirtualMemory"), std::vector<std::string>{"false"});
    EXPECT_EQ(XPath(text, "//isCache"), std::vector<std::string>{"true"});
}

TEST_F(MemSpaces, NamesAreCleaned)
{
    auto space = Space();
    SetText(space.name, "0:data");
    EXPECT_EQ(XPath(Written([&](auto& log) { log.WriteMemSpaceInfo(space); }), "name(/*)"),
              std::vector<std::string>{"__data"});
    SetText(space.name, "");
    EXPECT_EQ(XPath(Written([&](auto& log) { log.WriteMemSpaceInfo(space); }), "name(/*)"),
              std::vector<std::string>{"emptyIdent"});
}

TEST_F(MemSpaces, ArrayHoldsEachSpaceUnderItsOwnName)
{
    CADIMemSpaceInfo_t spaces[] = {Space(), Space(), Space()};
    SetText(spaces[1].name, "Program");
    spaces[1].memSpaceId = 1;
    SetText(spaces[2].name, "Stack");
    spaces[2].memSpaceId = 2;
    const std::string text = Written([&](auto& log) { log.WriteMemSpaceInfoArray("spaces", spaces, 3); });
    EXPECT_EQ(text, ContainerWith("spaces", [&](auto& log) {
                  for (const auto& space : spaces) {
                      log.WriteMemSpaceInfo(space);
                  }
              }));
    EXPECT_EQ(XPath(text, "/spaces/Data/memSpaceId | /spaces/Program/memSpaceId | "
                          "/spaces/Stack/memSpaceId"),
              (std::vector<std::string>{"4294967295", "1", "2"}));
}

TEST_F(MemSpaces, EmptyArrayHoldsNothing)
{
    CADIMemSpaceInfo_t spaces[] = {Space()};
    EXPECT_EQ(Written([&](auto& log) { log.WriteMemSpaceInfoArray("spaces", spaces, 0); }),
              Container("spaces", ""));
}

TEST_F(MemSpaces, NullArrayHoldsANullElement)
{
    EXPECT_EQ(Written([](auto& log) { log.WriteMemSpaceInfoArray("spaces", nullptr, fatalCount); }),
              NullIn("spaces", "memSpaceInfo"));
}

TEST_F(MemSpaces, WritingASpaceTeachesTheTableNothing)
{
    const NameTable names{{1, "x"}};
    Written([&](auto& log) {
        log.SetMemSpaceNames(&names);
        log.WriteMemSpaceInfo(Space());
    });
    EXPECT_EQ(names, (NameTable{{1, "x"}}));
}

// ---- Blocks -------------------------------------------------------------------------------------

CADIMemBlockInfo_t Block()
{
    CADIMemBlockInfo_t block{};
    SetText(block.name, "ram0");
    SetText(block.description, "on \"chip\"");
    block.id = 65535;
    block.parentID = 65534;
    block.startAddr = 0x1111111180000002;
    block.endAddr = 0xfffffffffffffffe;
    block.cyclesToAccess = 4294967295;
    block.readWrite = CADI_MEM_ReadWrite;
    std::iota(std::begin(block.supportedMultiplesOfMAU), std::end(block.supportedMultiplesOfMAU),
              4294967264U);
    block.supportedMultiplesOfMAU[1] = 0;
    block.endianness = 2;
    block.invariance = 254;
    return block;
}

TEST_F(MemBlocks, AreNamedAfterThemselves)
{
    EXPECT_EQ(Written([](auto& log) { log.WriteMemBlockInfo(Block()); }), R"(    <ram0>
        <description>on &quot;chip&quot;</description>
        <id>65535</id>
        <parentID>65534</parentID>
        <startAddr>0x0000000080000002</startAddr>
        <endAddr>0x00000000fffffffe</endAddr>
        <cyclesToAccess>4294967295</cyclesToAccess>
        <readWrite>CADI_MEM_ReadWrite</readWrite>
        <supportedMultiplesOfMAU>
            <value>4294967264</value>
            <value>0</value>
            <value>4294967266</value>
            <value>4294967267</value>
            <value>4294967268</value>
            <value>4294967269</value>
            <value>4294967270</value>
            <value>4294967271</value>
            <value>4294967272</value>
            <value>4294967273</value>
            <value>4294967274</value>
            <value>4294967275</value>
            <value>4294967276</value>
            <value>4294967277</value>
            <value>4294967278</value>
            <value>4294967279</value>
            <value>4294967280</value>
            <value>4294967281</value>
            <value>4294967282</value>
            <value>4294967283</value>
            <value>4294967284</value>
            <value>4294967285</value>
            <value>4294967286</value>
            <value>4294967287</value>
            <value>4294967288</value>
            <value>4294967289</value>
            <value>4294967290</value>
            <value>4294967291</value>
            <value>4294967292</value>
            <value>4294967293</value>
            <value>4294967294</value>
            <value>4294967295</value>
        </supportedMultiplesOfMAU>
        <endianness>BE</endianness>
        <invariance>254</invariance>
    </ram0>
)");
}

TEST_F(MemBlocks, BothBoundsAreCutTo32Bits)
{
    auto block = Block();
    block.startAddr = 0xf00000000;
    block.endAddr = 0xf0000000f;
    const std::string text = Written([&](auto& log) { log.WriteMemBlockInfo(block); });
    EXPECT_EQ(XPath(text, "//startAddr"), std::vector<std::string>{"0x0000000000000000"});
    EXPECT_EQ(XPath(text, "//endAddr"), std::vector<std::string>{"0x000000000000000f"});
}

TEST_F(MemBlocks, ZerosDoNotEndTheListOfMultiples)
{
    EXPECT_EQ(XPath(Written([](auto& log) { log.WriteMemBlockInfo({}); }),
                    "/emptyIdent/supportedMultiplesOfMAU/value"),
              std::vector<std::string>(32, "0"));
}

TEST_F(MemBlocks, ArrayHoldsEachBlockUnderItsOwnName)
{
    CADIMemBlockInfo_t blocks[] = {Block(), Block(), Block()};
    SetText(blocks[1].name, "1 rom");
    blocks[1].id = 1;
    SetText(blocks[2].name, "ram2");
    blocks[2].id = 2;
    const std::string text = Written([&](auto& log) { log.WriteMemBlockInfoArray("blocks", blocks, 3); });
    EXPECT_EQ(text, ContainerWith("blocks", [&](auto& log) {
                  for (const auto& block : blocks) {
                      log.WriteMemBlockInfo(block);
                  }
              }));
    EXPECT_EQ(XPath(text, "/blocks/ram0/id | /blocks/__rom/id | /blocks/ram2/id"),
              (std::vector<std::string>{"65535", "1", "2"}));
}

TEST_F(MemBlocks, EmptyArrayHoldsNothing)
{
    CADIMemBlockInfo_t blocks[] = {Block()};
    EXPECT_EQ(Written([&](auto& log) { log.WriteMemBlockInfoArray("blocks", blocks, 0); }),
              Container("blocks", ""));
}

TEST_F(MemBlocks, NullArrayHoldsANullElement)
{
    EXPECT_EQ(Written([](auto& log) { log.WriteMemBlockInfoArray("blocks", nullptr, fatalCount); }),
              NullIn("blocks", "memBlockInfo"));
}

// ---- Caches, overlays ---------------------------------------------------------------------------

TEST_F(Caches, HaveFourChildren)
{
    CADICacheInfo_t cache{65535, 65534, 65533, true};
    EXPECT_EQ(Written([&](auto& log) { log.WriteCacheInfo("cache", &cache); }), R"(    <cache>
        <cacheLineSize>65535</cacheLineSize>
        <cacheTagBits>65534</cacheTagBits>
        <associativity>65533</associativity>
        <writeThrough>true</writeThrough>
    </cache>
)");
}

TEST_F(Caches, WriteThroughIsAWord)
{
    CADICacheInfo_t cache{1, 2, 3, false};
    EXPECT_EQ(Written([&](auto& log) { log.WriteCacheInfo("cache", &cache); }), R"(    <cache>
        <cacheLineSize>1</cacheLineSize>
        <cacheTagBits>2</cacheTagBits>
        <associativity>3</associativity>
        <writeThrough>false</writeThrough>
    </cache>
)");
}

TEST_F(Caches, NullPointerIsANullElement)
{
    EXPECT_EQ(Written([](auto& log) { log.WriteCacheInfo("cache", nullptr); }),
              "    <cache>NULL</cache>\n");
}

TEST_F(OverlayIds, ArrayHoldsEachId)
{
    unsigned int ids[] = {1, 0, 4294967295};
    EXPECT_EQ(Written([&](auto& log) { log.WriteOverlayIdArray("ids", ids, 3); }), R"(    <ids>
        <overlayId>1</overlayId>
        <overlayId>0</overlayId>
        <overlayId>4294967295</overlayId>
    </ids>
)");
}

TEST_F(OverlayIds, EmptyArrayHoldsNothing)
{
    unsigned int ids[] = {1};
    EXPECT_EQ(Written([&](auto& log) { log.WriteOverlayIdArray("ids", ids, 0); }), Container("ids", ""));
}

TEST_F(OverlayIds, NullArrayHoldsANullElement)
{
    EXPECT_EQ(Written([](auto& log) { log.WriteOverlayIdArray("ids", nullptr, fatalCount); }),
              NullIn("ids", "overlayId"));
}

// ---- Addresses ----------------------------------------------------------------------------------

std::string AddrText(const std::string& spaceId, const std::string& spaceName)
{
    return "    <addr>\n"
           "        <spaceId>" +
           spaceId +
           "</spaceId>\n"
           "        <spaceName>" +
           spaceName +
           "</spaceName>\n"
           "        <addr>0x000000000000cafe</addr>\n"
           "    </addr>\n";
}

TEST_F(Addresses, WithoutATableAreInAnUnknownSpace)
{
    EXPECT_EQ(Written([](auto& log) {
                  log.WriteAddr("addr", {4294967295, 0xcafe});
              }),
              AddrText("4294967295", "unknown memSpaceInfo"));
}

TEST_F(Addresses, AreWrittenWholeUnlikeTheBoundsOfSpaces)
{
    EXPECT_EQ(Written([](auto& log) {
                  log.WriteAddr("a", {3, 0xfedcba9876543210});
              }),
              R"(    <a>
        <spaceId>3</spaceId>
        <spaceName>unknown memSpaceInfo</spaceName>
        <addr>0xfedcba9876543210</addr>
    </a>
)");
    EXPECT_EQ(Written([](auto& log) {
                  log.WriteAddr("a", {0, 0});
              }),
              R"(    <a>
        <spaceId>0</spaceId>
        <spaceName>unknown memSpaceInfo</spaceName>
        <addr>0x0000000000000000</addr>
    </a>
)");
}

TEST_F(Addresses, HaveTheirSpaceNamedByTheTable)
{
    const NameTable names{{1, "<data>"}};
    EXPECT_EQ(Written([&](auto& log) {
                  log.SetMemSpaceNames(&names);
                  log.WriteAddr("addr", {1, 0xcafe});
              }),
              AddrText("1", "&lt;data&gt;"));
}

TEST_F(Addresses, InASpaceMissingFromTheTableAreInAnUnknownSpaceWhichIsNotAdded)
{
    const NameTable names{{1, "data"}};
    EXPECT_EQ(Written([&](auto& log) {
                  log.SetMemSpaceNames(&names);
                  log.WriteAddr("addr", {2, 0xcafe});
                  log.WriteAddr("addr", {0, 0xcafe});
              }),
              AddrText("2", "unknown memSpaceInfo") + AddrText("0", "unknown memSpaceInfo"));
    EXPECT_EQ(names, (NameTable{{1, "data"}}));
}

TEST_F(Addresses, InASpaceWithAnEmptyNameAreInAnUnknownSpace)
{
    const NameTable names{{1, ""}};
    EXPECT_EQ(Written([&](auto& log) {
                  log.SetMemSpaceNames(&names);
                  log.WriteAddr("addr", {1, 0xcafe});
              }),
              AddrText("1", "unknown memSpaceInfo"));
}

TEST_F(Addresses, TableCountsAsItIsAtEachAddress)
{
    NameTable names;
    EXPECT_EQ(Written([&](auto& log) {
                  names.clear();
                  log.SetMemSpaceNames(&names);
                  log.WriteAddr("addr", {1, 0xcafe});
                  names[1] = "data";
                  log.WriteAddr("addr", {1, 0xcafe});
                  log.SetMemSpaceNames(nullptr);
                  log.WriteAddr("addr", {1, 0xcafe});
              }),
              AddrText("1", "unknown memSpaceInfo") + AddrText("1", "data") +
                  AddrText("1", "unknown memSpaceInfo"));
}

/// Empties its table of names when the element of a space's name begins.
class Forgetful : public Scrivel2::Scrivel2XmlGenRun
{
public:
    explicit Forgetful(const char* name) : Scrivel2XmlGenRun(name) { SetMemSpaceNames(&names); }

    void WriteIdent(std::string name, bool openTag, bool newline) override
    {
        if (openTag && name == "spaceName") {
            names.clear();
        }
        Scrivel2XmlGenRun::WriteIdent(name, openTag, newline);
    }

private:
    NameTable names{{1, "tightlyCoupledDataMemory"}};
};

TEST_F(Addresses, HaveTheNameThatTheTableHadWhenItWasLookedUp)
{
    EXPECT_EQ(Written<Forgetful>([](auto& log) {
                  log.WriteAddr("addr", {1, 0xcafe});
                  log.WriteAddr("addr", {1, 0xcafe});
              }),
              AddrText("1", "tightlyCoupledDataMemory") + AddrText("1", "unknown memSpaceInfo"));
}

TEST_F(Addresses, TableOfRegistersNamesNoSpace)
{
    const NameTable names{{1, "R1"}};
    EXPECT_EQ(Written([&](auto& log) {
                  log.SetRegisterNames(&names);
                  log.WriteAddr("addr", {1, 0xcafe});
              }),
              AddrText("1", "unknown memSpaceInfo"));
}

TEST_F(Addresses, WithAnOverlayHoldTheirLocation)
{
    const NameTable names{{2, "stack"}};
    EXPECT_EQ(Written([&](auto& log) {
                  log.SetMemSpaceNames(&names);
                  log.WriteAddrComplete("where", {4294967295, {2, 0x8000000000000001}});
              }),
              R"(    <where>
        <overlay>4294967295</overlay>
        <location>
            <spaceId>2</spaceId>
            <spaceName>stack</spaceName>
            <addr>0x8000000000000001</addr>
        </location>
    </where>
)");
}

}  // namespace
