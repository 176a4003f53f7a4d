// Elements put down whole: by which objects, and the moments at which that would make a difference and is
// not done. That every writer writes the same both ways is what the fixture compares in all tests.

#include "base/ElementForms.h"
#include "support/GeneratorTest.h"
#include "support/Memory.h"

#include <cstdio>
#include <iomanip>
#include <memory>
#include <string>
#include <vector>

namespace
{

using Scrivel2::Scrivel2XmlGenRun;
using ScrivelTest::Keeping;
using ScrivelTest::Unprotected;

class WholeElements : public ScrivelTest::GeneratorTest<Scrivel2XmlGenRun>
{
protected:
    /// What the same operations leave in the file, done by an object whose elements are put down whole
    /// and by one whose tags go through the table.
    template <typename Write>
    static std::string WrittenAlike(Write write)
    {
        const std::string whole = LeftBy<Keeping<Log>>(write);
        EXPECT_EQ(LeftBy<Log>(write), whole);
        return whole;
    }

    using Log = Unprotected<Scrivel2XmlGenRun>;

private:
    template <typename Made, typename Write>
    static std::string LeftBy(Write& write)
    {
        const std::unique_ptr<Log> log = Make<Made>();
        log->StartLogging();
        log->SeekFilePointerPosition();
        write(*log);
        log->logFile.flush();
        return WholeFile().substr(Header().size());
    }
};

// ---- Whose elements -----------------------------------------------------------------------------

/// Keeps its tags, and lets a class derived from it be asked whether its override is.
struct Keeper : Scrivel2XmlGenRun
{
    explicit Keeper(const char* name) : Scrivel2XmlGenRun(name) { KeepsTags<Keeper>(); }
};

struct WithTabs : Keeper
{
    using Keeper::Keeper;
    void WriteTabs(bool) override { logFile << "\t"; }
};

TEST_F(WholeElements, OverrideOfAClassBelowOneThatKeepsItsTagsIsCalled)
{
    EXPECT_EQ(Written<WithTabs>([](auto& log) {
                  log.WriteDecimal("a", 1);
                  const unsigned char bytes[] = {1, 2};
                  log.WriteUint8Array("b", bytes, 2, true);
                  log.WriteReg("r", {});
              }),
              "\t<a>1</a>\n"
              "\t<b>\n\t<value>0x01</value>\n\t<value>0x02</value>\n\t</b>\n"
              "\t<r>\n"
              "\t<regNumber>0</regNumber>\n"
              "\t<bytes>00000000 00000000 00000000 00000000 </bytes>\n"
              "\t<offset128>0</offset128>\n"
              "\t<isUndefined>false</isUndefined>\n"
              "\t<attribute>CADI_REG_READ_WRITE</attribute>\n"
              "\t</r>\n");
}

TEST_F(WholeElements, OverrideIsCalledInALogThatAConstructorStarts)
{
    struct Starting : Scrivel2XmlGenRun
    {
        explicit Starting(const char* name) : Scrivel2XmlGenRun(name)
        {
            StartLogging();
            SeekFilePointerPosition();
            WriteDecimal("a", 1);
        }
        void WriteTabs(bool) override { logFile << "\t"; }
    };
    struct Below : Starting
    {
        explicit Below(const char* name) : Starting(name) { WriteDecimal("b", 2); }
        void WriteTabs(bool) override { logFile << "\n"; }
    };
    {
        Below log("trace");
        log.WriteDecimal("c", 3);
        log.FlushOutput(true, "");
    }
    EXPECT_EQ(WholeFile(), Complete("\t<a>1</a>\n\n<b>2</b>\n\n<c>3</c>\n"));
}

TEST_F(WholeElements, OverridesOfTheTimeAndOfNullElementsAreCalledAllTheSame)
{
    struct Other : Scrivel2XmlGenRun
    {
        explicit Other(const char* name) : Scrivel2XmlGenRun(name) { KeepsTags<Other>(); }
        void WriteNULLPointer(std::string ident) override { WriteDecimal(ident, 0); }
        void WriteTimestamp(const std::string&, bool) override { logFile << " now"; }
    };
    EXPECT_EQ(Written<Other>([](auto& log) {
                  log.WriteCharString("t", nullptr);
                  log.WriteBoolArray("f", nullptr, 1);
                  log.WriteDetailedIdent("Run");
                  log.WriteIdent("Run", false, true);
              }),
              "    <t>0</t>\n"
              "    <f>\n        <bool_array>0</bool_array>\n    </f>\n"
              "    <Run call_num=\"0\"\n now\n     threadId=\"1234\">\n"
              "    </Run>\n");
}

/// Keeps its tags and counts the calls that are entered.
struct CountingEntries : Scrivel2XmlGenRun
{
    explicit CountingEntries(const char* name) : Scrivel2XmlGenRun(name) { KeepsTags<CountingEntries>(); }
    void WriteCloseInterruptedFunction(std::string callName) override
    {
        ++entries;
        Scrivel2XmlGenRun::WriteCloseInterruptedFunction(callName);
    }
    int entries = 0;
};

/// The same in a place where nobody else may look.
class CountingHidden : public Scrivel2XmlGenRun
{
public:
    explicit CountingHidden(const char* name) : Scrivel2XmlGenRun(name) { KeepsTags<CountingHidden>(); }
    int entries = 0;

private:
    void WriteCloseInterruptedFunction(std::string /*callName*/) override { ++entries; }
};

/// Keeps its tags and what a base that does has replaced.
struct BelowCounting : CountingEntries
{
    explicit BelowCounting(const char* name) : CountingEntries(name) { KeepsTags<BelowCounting>(); }
};

/// Replaces what a base that keeps its tags leaves as it is.
struct CountingBelow : Keeper
{
    using Keeper::Keeper;
    void WriteCloseInterruptedFunction(std::string /*callName*/) override { ++entries; }
    int entries = 0;
};

TEST_F(WholeElements, OverrideOfTheEntryOfCallsIsCalledWhereTagsAreKept)
{
    const auto entriesOf = [](auto log) {
        log->StartLogging();
        log->EnterCadiCall("Run");
        log->EnterCadiCall("Run");
        return log->entries;
    };
    EXPECT_EQ(entriesOf(Make<CountingEntries>()), 2);
    EXPECT_EQ(entriesOf(Make<CountingHidden>()), 2);
    EXPECT_EQ(entriesOf(Make<BelowCounting>()), 2);
    EXPECT_EQ(entriesOf(Make<CountingBelow>()), 2);
}

// ---- When ---------------------------------------------------------------------------------------

TEST_F(WholeElements, WidthThatIsSetGoesToTheFirstThingInserted)
{
    EXPECT_EQ(WrittenAlike([](auto& log) {
                  log.logFile << std::setw(7);
                  log.WriteDecimal("a", 1);
                  log.logFile << std::setw(7);
                  log.WriteIdent("b", true, true);
                  log.logFile << std::setw(7);
                  log.WriteReg("r", {});
              }),
              "       <a>1</a>\n"
              "       <b>\n"
              "           <r>\n"
              "            <regNumber>0</regNumber>\n"
              "            <bytes>00000000 00000000 00000000 00000000 </bytes>\n"
              "            <offset128>0</offset128>\n"
              "            <isUndefined>false</isUndefined>\n"
              "            <attribute>CADI_REG_READ_WRITE</attribute>\n"
              "        </r>\n");
}

TEST_F(WholeElements, BaseThatIsSetGoesToDecimals)
{
    EXPECT_EQ(WrittenAlike([](auto& log) {
                  log.logFile << std::hex;
                  log.WriteDecimal("a", 255);
                  const unsigned int items[] = {255};
                  log.WriteUint32Array("b", items, 1, false);
                  log.WriteHex("c", 255, 2);
                  log.WriteDecimal("d", 255);
              }),
              "    <a>ff</a>\n"
              "    <b>\n        <value>ff</value>\n    </b>\n"
              "    <c>0xff</c>\n"
              "    <d>255</d>\n");
}

TEST_F(WholeElements, HexadecimalLeavesZerosToFillWith)
{
    EXPECT_EQ(WrittenAlike([](auto& log) {
                  log.logFile.fill('*');
                  const unsigned char items[] = {10, 11};
                  log.WriteUint8Array("a", items, 2, true);
                  log.logFile << std::setw(3) << 1 << "\n";
                  log.logFile.fill('*');
                  log.WriteHex("b", 1, 2);
                  log.logFile << std::setw(3) << 1 << "\n";
              }),
              "    <a>\n        <value>0x0a</value>\n        <value>0x0b</value>\n    </a>\n"
              "001\n"
              "    <b>0x01</b>\n"
              "001\n");
}

/// Writes a record of five numbers, one of them in hexadecimal.
struct Recording : Scrivel2XmlGenRun
{
    explicit Recording(const char* name) : Scrivel2XmlGenRun(name) { KeepsTags<Recording>(); }

    template <std::size_t place>
    void WriteNumbers()
    {
        using Scrivel2::Field;
        WriteRecord("r", Field{"a", Number<place == 0>()}, Field{"b", Number<place == 1>()},
                    Field{"c", Number<place == 2>()}, Field{"d", Number<place == 3>()},
                    Field{"e", Number<place == 4>()});
    }

    template <bool isHex>
    static auto Number()
    {
        if constexpr (isHex) {
            return Scrivel2::Hex{10, 2};
        } else {
            return Scrivel2::Decimal{10};
        }
    }

    char FillOfStream() const { return logFile.fill(); }
};

/// What the stream fills with after a record with a hexadecimal number in that place.
template <std::size_t place>
char FillAfterARecord()
{
    Recording log("trace");
    log.StartLogging();
    EXPECT_EQ(log.FillOfStream(), ' ');
    log.WriteNumbers<place>();
    return log.FillOfStream();
}

TEST_F(WholeElements, RecordWithAHexadecimalNumberLeavesZerosToFillWith)
{
    EXPECT_EQ(FillAfterARecord<0>(), '0');
    EXPECT_EQ(FillAfterARecord<1>(), '0');
    EXPECT_EQ(FillAfterARecord<2>(), '0');
    EXPECT_EQ(FillAfterARecord<3>(), '0');
    EXPECT_EQ(FillAfterARecord<4>(), '0');
    EXPECT_EQ(Written<Recording>([](auto& log) {
                  log.template WriteNumbers<4>();
                  log.template WriteNumbers<0>();
              }),
              "    <r>\n"
              "        <a>10</a>\n"
              "        <b>10</b>\n"
              "        <c>10</c>\n"
              "        <d>10</d>\n"
              "        <e>0x0a</e>\n"
              "    </r>\n"
              "    <r>\n"
              "        <a>0x0a</a>\n"
              "        <b>10</b>\n"
              "        <c>10</c>\n"
              "        <d>10</d>\n"
              "        <e>10</e>\n"
              "    </r>\n");
}

TEST_F(WholeElements, FailedStreamGetsNothing)
{
    EXPECT_EQ(WrittenAlike([](auto& log) {
                  log.logFile.setstate(std::ios_base::failbit);
                  log.WriteDecimal("a", 1);
                  log.WriteIdent("b", true, true);
                  EXPECT_EQ(log.depth, 2U);
                  log.WriteIdent("b", false, true);
                  log.logFile.clear();
                  log.WriteDecimal("c", 1);
              }),
              "    <c>1</c>\n" + EndTag().substr(13));
}

TEST_F(WholeElements, ClosedStreamFails)
{
    for (const bool keepsTags : {true, false}) {
        const std::unique_ptr<Log> log = keepsTags ? Make<Keeping<Log>>() : Make<Log>();
        log->WriteDecimal("a", 1);
        EXPECT_TRUE(log->logFile.bad());
        EXPECT_EQ(log->depth, 0U);
    }
}

TEST_F(WholeElements, TextAfterThePutPositionStays)
{
    EXPECT_EQ(WrittenAlike([](auto& log) {
                  const unsigned char items[] = {1, 2, 3};
                  log.WriteString("text", std::string(600, 'x'));
                  log.SeekFilePointerPosition();
                  log.WriteDecimal("a", 1);
                  log.WriteString("b", std::string(300, '&'));
                  log.SeekFilePointerPosition();
                  log.WriteUint8Array("c", items, 3, true);
              }).substr(0, 120),
              "    <c>\n"
              "        <value>0x01</value>\n"
              "        <value>0x02</value>\n"
              "        <value>0x03</value>\n"
              "    </c>\n"
              "amp;&amp;&amp;&amp;");
}

TEST_F(WholeElements, DepthBelowZeroIsNotIndented)
{
    for (const bool keepsTags : {true, false}) {
        const std::unique_ptr<Log> log = keepsTags ? Make<Keeping<Log>>() : Make<Log>();
        log->StartLogging();
        log->depth = 0;
        log->WriteIdent("a", false, true);
        EXPECT_EQ(log->depth, ~0U);
        log->depth = 1;
        log->EndLogging();
        EXPECT_EQ(WholeFile(), Header() + EndTag() + "</a>\n");
    }
}

TEST_F(WholeElements, EachLevelHasFourBlanks)
{
    std::string expected;
    for (unsigned int depth = 0; depth <= 20; ++depth) {
        expected += std::string(std::size_t{4} * depth, ' ') + "<a>1</a>\n";
    }
    EXPECT_EQ(WrittenAlike([](auto& log) {
                  for (log.depth = 0; log.depth <= 20; ++log.depth) {
                      log.WriteDecimal("a", 1);
                  }
              }),
              expected);
}

TEST_F(WholeElements, DeepOnesAreIndentedInFull)
{
    EXPECT_EQ(WrittenAlike([](auto& log) {
                  log.depth = 64;
                  log.WriteDecimal("a", 1);
                  log.WriteIdent("b", true, true);
                  log.WriteDecimal("c", 1);
              }),
              std::string(256, ' ') + "<a>1</a>\n" + std::string(256, ' ') + "<b>\n" +
                  std::string(260, ' ') + "<c>1</c>\n");
}

TEST_F(WholeElements, ArrayGoesOnWhereMemoryHadToGrow)
{
    std::vector<unsigned int> items(3000);
    std::string expected;
    for (std::size_t i = 0; i < items.size(); ++i) {
        char line[64];
        items[i] = static_cast<unsigned int>(i * 1234567);
        std::snprintf(line, sizeof line, "        <value>0x%08x</value>\n", items[i]);
        expected += line;
    }
    EXPECT_EQ(Written([&](auto& log) { log.WriteUint32Array("a", items.data(), 3000, true); }),
              "    <a>\n" + expected + "    </a>\n");
}

TEST_F(WholeElements, WithoutMemoryTheStreamFailsAsIfTagsWentThroughTheTable)
{
    for (const bool keepsTags : {true, false}) {
        const std::unique_ptr<Log> log = keepsTags ? Make<Keeping<Log>>() : Make<Log>();
        log->StartLogging();
        log->SeekFilePointerPosition();
        ScrivelTest::refuseMemory = [](std::size_t size) { return size > 16 * 1024; };
        const std::vector<unsigned char> items(4000);
        log->WriteUint8Array("a", items.data(), 4000, true);
        ScrivelTest::refuseMemory = nullptr;
        EXPECT_TRUE(log->logFile.bad());
        EXPECT_EQ(WholeFile(), Header() + EndTag());
    }
}

// ---- Names --------------------------------------------------------------------------------------

TEST_F(WholeElements, HeadsOfNamesAreMendedWhenThatIsWanted)
{
    struct Mending : Unprotected<Scrivel2XmlGenRun>
    {
        explicit Mending(const char* name) : Unprotected(name) { mendsNames = true; }
    };
    const auto write = [](auto& log) {
        log.WriteDecimal("-a", 1);
        log.WriteDecimal(".b-.c", 1);
        log.WriteIdent("-d", true, true);
        log.WriteIdent("-d", false, true);
        log.WriteDecimal("", 1);
        log.WriteDecimal("2e", 1);
        log.WriteChar("-", 'x');
    };
    const std::string mended = "    <_a>1</_a>\n"
                               "    <_b-.c>1</_b-.c>\n"
                               "    <_d>\n    </_d>\n"
                               "    <emptyIdent>1</emptyIdent>\n"
                               "    <_e>1</_e>\n"
                               "    <_>x</_>\n";
    EXPECT_EQ(Written<Mending>(write), mended);
    EXPECT_EQ(Written<Keeping<Mending>>(write), mended);
    EXPECT_EQ(Written([](auto& log) { log.WriteDecimal("-a", 1); }), "    <-a>1</-a>\n");
}

}  // namespace
