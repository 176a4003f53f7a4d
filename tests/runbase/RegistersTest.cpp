// Register groups, descriptions of registers, and their values.

#include "runbase/RunTest.h"

#include <numeric>
#include <string>

namespace
{

using namespace eslapi;
using NameTable = Scrivel2::ScrivelXmlGenRunBase::NameTable;
using ScrivelTest::fatalCount;
using ScrivelTest::SetText;

using RegGroups = ScrivelTest::RecordTest<>;
using RegInfos = ScrivelTest::RecordTest<>;
using Regs = ScrivelTest::RecordTest<>;

// ---- Groups -------------------------------------------------------------------------------------

CADIRegGroup_t Group(unsigned int id, const char* description, unsigned int count, const char* name)
{
    CADIRegGroup_t group{};
    group.groupID = id;
    SetText(group.description, description);
    group.numRegsInGroup = count;
    SetText(group.name, name);
    return group;
}

TEST_F(RegGroups, AreNamedAfterThemselves)
{
    EXPECT_EQ(Written([](auto& log) {
                  log.WriteRegGroup(Group(4294967295, "all <core> regs", 4294967294, "Core"));
              }),
              R"(    <Core>
        <groupID>4294967295</groupID>
        <description>all &lt;core&gt; regs</description>
        <numRegsInGroup>4294967294</numRegsInGroup>
    </Core>
)");
}

TEST_F(RegGroups, NamesAreCleaned)
{
    EXPECT_EQ(Written([](auto& log) { log.WriteRegGroup(Group(1, "", 2, "2 VFP")); }), R"(    <__VFP>
        <groupID>1</groupID>
        <description></description>
        <numRegsInGroup>2</numRegsInGroup>
    </__VFP>
)");
    EXPECT_EQ(Written([](auto& log) { log.WriteRegGroup(Group(1, "", 2, "")); }), R"(    <emptyIdent>
        <groupID>1</groupID>
        <description></description>
        <numRegsInGroup>2</numRegsInGroup>
    </emptyIdent>
)");
}

TEST_F(RegGroups, ArrayHoldsEachGroupUnderItsOwnName)
{
    CADIRegGroup_t groups[] = {Group(1, "x", 4, "A"), Group(2, "y", 5, "B"), Group(3, "z", 6, "C")};
    EXPECT_EQ(Written([&](auto& log) { log.WriteRegGroupArray("groups", groups, 3); }), R"(    <groups>
        <A>
            <groupID>1</groupID>
            <description>x</description>
            <numRegsInGroup>4</numRegsInGroup>
        </A>
        <B>
            <groupID>2</groupID>
            <description>y</description>
            <numRegsInGroup>5</numRegsInGroup>
        </B>
        <C>
            <groupID>3</groupID>
            <description>z</description>
            <numRegsInGroup>6</numRegsInGroup>
        </C>
    </groups>
)");
}

TEST_F(RegGroups, EmptyArrayHoldsNothing)
{
    CADIRegGroup_t groups[] = {Group(1, "x", 4, "A")};
    EXPECT_EQ(Written([&](auto& log) { log.WriteRegGroupArray("groups", groups, 0); }),
              Container("groups", ""));
}

TEST_F(RegGroups, NullArrayHoldsANullElement)
{
    EXPECT_EQ(Written([](auto& log) { log.WriteRegGroupArray("groups", nullptr, fatalCount); }),
              NullIn("groups", "regGroup"));
}

// ---- Descriptions -------------------------------------------------------------------------------

CADIRegInfo_t Info()
{
    CADIRegInfo_t info{};
    SetText(info.name, "R0");
    SetText(info.description, "general \"purpose\"");
    info.regNumber = 4294967295;
    info.bitsWide = 4294967294;
    info.hasSideEffects = 2147483647;
    info.details = {CADI_REGTYPE_Compound, 4294967293};
    info.display = CADI_REGTYPE_FLOAT;
    info.symbols = {4294967292, nullptr};
    SetText(info.fpFormat, "a&b");
    info.lsbOffset = 4294967291;
    info.dwarfIndex = 4294967290;
    info.isProfiled = true;
    info.isPipeStageField = false;
    info.threadID = 4294967289;
    info.attribute = CADI_REG_WRITE_ONLY_RESTRICTED;
    info.canonicalRegisterNumber = 4294967288;
    return info;
}

TEST_F(RegInfos, DetailHasTypeAndCount)
{
    EXPECT_EQ(Written([](auto& log) {
                  log.WriteRegDetail("detail", {CADI_REGTYPE_Compound, 4294967295});
              }),
              R"(    <detail>
        <type>CADI_REGTYPE_Compound</type>
        <count>4294967295</count>
    </detail>
)");
}

TEST_F(RegInfos, AreNamedAfterThemselves)
{
    EXPECT_EQ(Written([](auto& log) { log.WriteRegInfo(Info()); }), R"(    <R0>
        <description>general &quot;purpose&quot;</description>
        <regNumber>4294967295</regNumber>
        <bitsWide>4294967294</bitsWide>
        <hasSideEffects>2147483647</hasSideEffects>
        <details>
            <type>CADI_REGTYPE_Compound</type>
            <count>4294967293</count>
        </details>
        <display>CADI_REGTYPE_FLOAT</display>
        <symbols>
            <numSymbols>4294967292</numSymbols>
            <Symbols>NULL</Symbols>
        </symbols>
        <fpFormat>a&amp;b</fpFormat>
        <lsbOffset>4294967291</lsbOffset>
        <dwarfIndex>4294967290</dwarfIndex>
        <isProfiled>true</isProfiled>
        <isPipeStageField>false</isPipeStageField>
        <threadID>4294967289</threadID>
        <attribute>CADI_REG_WRITE_ONLY_RESTRICTED</attribute>
        <canonicalRegisterNumber>4294967288</canonicalRegisterNumber>
    </R0>
)");
}

/// The values that an expression finds in the one description written.
std::vector<std::string> Values(const std::string& written, const std::string& expression)
{
    return ScrivelTest::XPath(written, expression);
}

TEST_F(RegInfos, SideEffectsAreWidenedWithTheirSign)
{
    auto info = Info();
    info.hasSideEffects = -1;
    EXPECT_EQ(Values(Written([&](auto& log) { log.WriteRegInfo(info); }), "//hasSideEffects"),
              std::vector<std::string>{"18446744073709551615"});
    info.hasSideEffects = -2147483647 - 1;
    EXPECT_EQ(Values(Written([&](auto& log) { log.WriteRegInfo(info); }), "//hasSideEffects"),
              std::vector<std::string>{"18446744071562067968"});
}

TEST_F(RegInfos, FlagsAreWords)
{
    auto info = Info();
    info.isProfiled = false;
    info.isPipeStageField = true;
    const std::string text = Written([&](auto& log) { log.WriteRegInfo(info); });
    EXPECT_EQ(Values(text, "//isProfiled"), std::vector<std::string>{"false"});
    EXPECT_EQ(Values(text, "//isPipeStageField"), std::vector<std::string>{"true"});
}

TEST_F(RegInfos, SymbolRegisterSaysThatItIsNone)
{
    auto info = Info();
    info.display = CADI_REGTYPE_SYMBOL;
    info.symbols = {3, nullptr};
    EXPECT_EQ(Values(Written([&](auto& log) { log.WriteRegInfo(info); }), "//symbols"),
              std::vector<std::string>{"Register is not of type CADI_REGTYPE_SYMBOL"});
    EXPECT_EQ(Values(Written([&](auto& log) { log.WriteRegInfo(info); }), "count(//symbols/*)"),
              std::vector<std::string>{"0"});
}

TEST_F(RegInfos, EveryOtherRegisterHasItsSymbolListWritten)
{
    const char* const symbols[] = {"a", "b"};
    auto info = Info();
    info.symbols = {2, symbols};
    for (const int display : {0, 1, 2, 3, 4, 6, 7, 8, 9, 10, -1}) {
        info.display = static_cast<CADIRegDisplay_t>(display);
        const std::string text = Written([&](auto& log) { log.WriteRegInfo(info); });
        EXPECT_EQ(Values(text, "//symbols/*"), std::vector<std::string>{"2"}) << display;
    }
}

TEST_F(RegInfos, NamesAreCleaned)
{
    auto info = Info();
    SetText(info.name, "4 cpsr[0]");
    EXPECT_EQ(Values(Written([&](auto& log) { log.WriteRegInfo(info); }), "name(/*)"),
              std::vector<std::string>{"__cpsr_0_"});
    SetText(info.name, "");
    EXPECT_EQ(Values(Written([&](auto& log) { log.WriteRegInfo(info); }), "name(/*)"),
              std::vector<std::string>{"emptyIdent"});
}

TEST_F(RegInfos, ArrayHoldsEachDescriptionUnderItsOwnName)
{
    CADIRegInfo_t infos[] = {Info(), Info(), Info()};
    SetText(infos[1].name, "R1");
    infos[1].regNumber = 1;
    SetText(infos[2].name, "R2");
    infos[2].regNumber = 2;
    const std::string text = Written([&](auto& log) { log.WriteRegInfoArray("infos", infos, 3); });
    EXPECT_EQ(text, ContainerWith("infos", [&](auto& log) {
                  for (const auto& info : infos) {
                      log.WriteRegInfo(info);
                  }
              }));
    EXPECT_EQ(Values(text, "/infos/*/regNumber"), (std::vector<std::string>{"4294967295", "1", "2"}));
    EXPECT_EQ(Values(text, "name(/infos/*[2])"), std::vector<std::string>{"R1"});
}

TEST_F(RegInfos, EmptyArrayHoldsNothing)
{
    CADIRegInfo_t infos[] = {Info()};
    EXPECT_EQ(Written([&](auto& log) { log.WriteRegInfoArray("infos", infos, 0); }),
              Container("infos", ""));
}

TEST_F(RegInfos, NullArrayHoldsANullElement)
{
    EXPECT_EQ(Written([](auto& log) { log.WriteRegInfoArray("infos", nullptr, fatalCount); }),
              NullIn("infos", "regInfo"));
}

// ---- Values -------------------------------------------------------------------------------------

CADIReg_t Reg(unsigned int number)
{
    CADIReg_t reg{};
    reg.regNumber = number;
    std::iota(std::begin(reg.bytes), std::end(reg.bytes), static_cast<unsigned char>(0xf8));
    reg.offset128 = 65535;
    reg.isUndefined = true;
    reg.attribute = CADI_REG_READ_ONLY;
    return reg;
}

std::string RegText(const std::string& name, const std::string& number)
{
    return "    <" + name + ">\n        <regNumber>" + number +
           "</regNumber>\n"
           "        <bytes>07060504 03020100 fffefdfc fbfaf9f8 </bytes>\n"
           "        <offset128>65535</offset128>\n"
           "        <isUndefined>true</isUndefined>\n"
           "        <attribute>CADI_REG_READ_ONLY</attribute>\n"
           "    </" +
           name + ">\n";
}

TEST_F(Regs, WithoutATableAreNamedByTheArgument)
{
    EXPECT_EQ(Written([](auto& log) { log.WriteReg("value", Reg(4294967295)); }),
              RegText("value", "4294967295"));
}

TEST_F(Regs, OfZerosAreDefined)
{
    EXPECT_EQ(Written([](auto& log) { log.WriteReg("value", {}); }), R"(    <value>
        <regNumber>0</regNumber>
        <bytes>00000000 00000000 00000000 00000000 </bytes>
        <offset128>0</offset128>
        <isUndefined>false</isUndefined>
        <attribute>CADI_REG_READ_WRITE</attribute>
    </value>
)");
}

TEST_F(Regs, AreNamedByTheTable)
{
    const NameTable names{{15, "PC"}};
    EXPECT_EQ(Written([&](auto& log) {
                  log.SetRegisterNames(&names);
                  log.WriteReg("value", Reg(15));
              }),
              RegText("PC", "15"));
}

TEST_F(Regs, NamesFromTheTableAreCleaned)
{
    const NameTable names{{15, "2 PC"}};
    EXPECT_EQ(Written([&](auto& log) {
                  log.SetRegisterNames(&names);
                  log.WriteReg("value", Reg(15));
              }),
              RegText("__PC", "15"));
}

TEST_F(Regs, MissingInTheTableAreNamedByTheArgumentAndNotAdded)
{
    const NameTable names{{15, "PC"}};
    EXPECT_EQ(Written([&](auto& log) {
                  log.SetRegisterNames(&names);
                  log.WriteReg("value", Reg(14));
                  log.WriteReg("value", Reg(16));
              }),
              RegText("value", "14") + RegText("value", "16"));
    EXPECT_EQ(names, (NameTable{{15, "PC"}}));
}

TEST_F(Regs, WithAnEmptyNameInTheTableAreNamedByTheArgument)
{
    const NameTable names{{15, ""}};
    EXPECT_EQ(Written([&](auto& log) {
                  log.SetRegisterNames(&names);
                  log.WriteReg("value", Reg(15));
              }),
              RegText("value", "15"));
}

TEST_F(Regs, TableCountsAsItIsAtEachValue)
{
    NameTable names;
    EXPECT_EQ(Written([&](auto& log) {
                  names.clear();
                  log.WriteReg("value", Reg(15));
                  log.SetRegisterNames(&names);
                  log.WriteReg("value", Reg(15));
                  names[15] = "PC";
                  log.WriteReg("value", Reg(15));
                  log.SetRegisterNames(nullptr);
                  log.WriteReg("value", Reg(15));
              }),
              RegText("value", "15") + RegText("value", "15") + RegText("PC", "15") +
                  RegText("value", "15"));
}

/// Empties its table of names whenever an element begins.
class Forgetful : public Scrivel2::Scrivel2XmlGenRun
{
public:
    explicit Forgetful(const char* name) : Scrivel2XmlGenRun(name) { SetRegisterNames(&names); }

    void WriteIdent(std::string name, bool openTag, bool newline) override
    {
        if (openTag) {
            names.clear();
        }
        Scrivel2XmlGenRun::WriteIdent(name, openTag, newline);
    }

private:
    NameTable names{{15, "programCounterOfTheFirstCore"}};
};

TEST_F(Regs, AreNamedAsTheTableNamedThemWhenTheyWereLookedUp)
{
    EXPECT_EQ(Written<Forgetful>([](auto& log) {
                  log.WriteReg("value", Reg(15));
                  log.WriteReg("value", Reg(15));
              }),
              RegText("programCounterOfTheFirstCore", "15") + RegText("value", "15"));
}

TEST_F(Regs, TableOfMemorySpacesNamesNoRegister)
{
    const NameTable names{{15, "data"}};
    EXPECT_EQ(Written([&](auto& log) {
                  log.SetMemSpaceNames(&names);
                  log.WriteReg("value", Reg(15));
              }),
              RegText("value", "15"));
}

TEST_F(Regs, ArrayHoldsEachValue)
{
    const NameTable names{{2, "SP"}};
    CADIReg_t regs[3]{};
    regs[0].regNumber = 1;
    regs[0].bytes[15] = 0xab;
    regs[1].regNumber = 2;
    regs[1].offset128 = 7;
    regs[2].regNumber = 3;
    regs[2].attribute = static_cast<CADIRegAccessAttribute_t>(6);
    EXPECT_EQ(Written([&](auto& log) {
                  log.SetRegisterNames(&names);
                  log.WriteRegArray("regs", regs, 3);
              }),
              R"(    <regs>
        <reg>
            <regNumber>1</regNumber>
            <bytes>ab000000 00000000 00000000 00000000 </bytes>
            <offset128>0</offset128>
            <isUndefined>false</isUndefined>
            <attribute>CADI_REG_READ_WRITE</attribute>
        </reg>
        <SP>
            <regNumber>2</regNumber>
            <bytes>00000000 00000000 00000000 00000000 </bytes>
            <offset128>7</offset128>
            <isUndefined>false</isUndefined>
            <attribute>CADI_REG_READ_WRITE</attribute>
        </SP>
        <reg>
            <regNumber>3</regNumber>
            <bytes>00000000 00000000 00000000 00000000 </bytes>
            <offset128>0</offset128>
            <isUndefined>false</isUndefined>
            <attribute>Invalid reg access attribute: 0x6</attribute>
        </reg>
    </regs>
)");
}

TEST_F(Regs, EmptyArrayHoldsNothing)
{
    CADIReg_t regs[1]{};
    EXPECT_EQ(Written([&](auto& log) { log.WriteRegArray("regs", regs, 0); }), Container("regs", ""));
}

TEST_F(Regs, NullArrayHoldsANullElementWhateverTheTableSays)
{
    const NameTable names{{0, "R0"}};
    EXPECT_EQ(Written([&](auto& log) {
                  log.SetRegisterNames(&names);
                  log.WriteRegArray("regs", nullptr, fatalCount);
              }),
              NullIn("regs", "reg"));
}

}  // namespace
