// Frame operations are called through the table of the class, so that a derived generator may replace
// each of them.

#include "support/GeneratorTest.h"

#include <cstddef>
#include <cstring>
#include <string>
#include <vector>

namespace
{

using Scrivel2::Scrivel2XmlGenConnect;
using Scrivel2::Scrivel2XmlGenRun;
using Scrivel2::ScrivelXmlGenBase;
using Scrivel2::ScrivelXmlGenRunBase;
using testing::ElementsAre;
using Calls = std::vector<std::string>;

/// Overrides every operation that all generators share, notes its name and goes on as the generator.
template <typename Generator>
class Recorder : public Generator
{
public:
    using Generator::Generator;
    using Generator::WriteDetailedIdent;

    void SetWriteSecure(bool secure) override
    {
        calls.emplace_back("SetWriteSecure");
        Generator::SetWriteSecure(secure);
    }
    void StartLogging() override
    {
        calls.emplace_back("StartLogging");
        Generator::StartLogging();
    }
    void EndLogging() override
    {
        calls.emplace_back("EndLogging");
        Generator::EndLogging();
    }
    void FlushOutput(bool finalTag, std::string callName) override
    {
        calls.emplace_back("FlushOutput");
        Generator::FlushOutput(finalTag, callName);
    }
    void WriteCloseInterruptedFunction(std::string callName) override
    {
        calls.emplace_back("WriteCloseInterruptedFunction");
        Generator::WriteCloseInterruptedFunction(callName);
    }
    void WriteContinueFunction(unsigned int number, std::string callName) override
    {
        calls.emplace_back("WriteContinueFunction");
        Generator::WriteContinueFunction(number, callName);
    }
    void WriteTimestamp(const std::string& name, bool asElement) override
    {
        calls.emplace_back("WriteTimestamp");
        Generator::WriteTimestamp(name, asElement);
    }
    void WriteIdent(std::string name, bool openTag, bool newline) override
    {
        calls.emplace_back(openTag ? "WriteIdent open" : "WriteIdent close");
        Generator::WriteIdent(name, openTag, newline);
    }
    void WriteDetailedIdent(std::string name) override
    {
        calls.emplace_back("WriteDetailedIdent");
        Generator::WriteDetailedIdent(name);
    }
    void WriteIdentWithoutTabs(std::string name) override
    {
        calls.emplace_back("WriteIdentWithoutTabs");
        Generator::WriteIdentWithoutTabs(name);
    }
    void WriteTabs(bool openTag) override
    {
        calls.emplace_back("WriteTabs");
        Generator::WriteTabs(openTag);
    }
    void WriteNULLPointer(std::string ident) override
    {
        calls.emplace_back("WriteNULLPointer");
        Generator::WriteNULLPointer(ident);
    }
    void WriteAddress(std::string ident, unsigned long address) override
    {
        calls.emplace_back("WriteAddress");
        Generator::WriteAddress(ident, address);
    }
    void IncCallNo() override
    {
        calls.emplace_back("IncCallNo");
        Generator::IncCallNo();
    }
    unsigned int GetCallNo() override
    {
        calls.emplace_back("GetCallNo");
        return Generator::GetCallNo();
    }

    Calls calls;
};

/// The same for the operations that the run phase adds.
class RunRecorder : public Recorder<Scrivel2XmlGenRun>
{
public:
    using Recorder::Recorder;
    using Recorder::WriteDetailedIdent;

    void WriteDetailedIdent(std::string callName, unsigned long address) override
    {
        calls.emplace_back("WriteDetailedIdent with address");
        Scrivel2XmlGenRun::WriteDetailedIdent(callName, address);
    }
    unsigned int EnterCadiCall(std::string callName) override
    {
        calls.emplace_back("EnterCadiCall");
        return Recorder::EnterCadiCall(callName);
    }
};

class VirtualTable : public ScrivelTest::GeneratorTest<ScrivelXmlGenBase>
{
protected:
    using Log = Recorder<ScrivelXmlGenBase>;

    /// The operations called by `write` on a started log.
    template <typename Made = Log, typename Write>
    static Calls CallsOf(Write write)
    {
        const auto log = Make<Made>();
        log->StartLogging();
        log->calls.clear();
        write(*log);
        return log->calls;
    }

    static Calls OneLine() { return {"WriteIdent open", "WriteTabs", "WriteIdentWithoutTabs"}; }
    static Calls NullLine()
    {
        return {"WriteNULLPointer", "WriteIdent open", "WriteTabs", "WriteIdentWithoutTabs"};
    }
    static Calls ContainerOf(const Calls& children)
    {
        Calls calls = {"WriteIdent open", "WriteTabs"};
        calls.insert(calls.end(), children.begin(), children.end());
        calls.insert(calls.end(), {"WriteIdent close", "WriteTabs"});
        return calls;
    }
};

// ---- Order --------------------------------------------------------------------------------------

/// The place of a virtual operation in the table, as the C++ ABI of Linux writes it into a pointer to
/// member: its offset in bytes, or that and one.
template <typename Operation>
std::ptrdiff_t Slot(Operation operation)
{
    std::ptrdiff_t offset;
    std::memcpy(&offset, &operation, sizeof offset);
    return offset / static_cast<std::ptrdiff_t>(sizeof(void*)) + 1;
}

TEST_F(VirtualTable, OperationsStandInTheirOrderBehindTheTwoDestructors)
{
    using Base = ScrivelXmlGenBase;
    EXPECT_EQ(Slot(&Base::SetWriteSecure), 3);
    EXPECT_EQ(Slot(&Base::StartLogging), 4);
    EXPECT_EQ(Slot(&Base::EndLogging), 5);
    EXPECT_EQ(Slot(&Base::FlushOutput), 6);
    EXPECT_EQ(Slot(&Base::WriteCloseInterruptedFunction), 7);
    EXPECT_EQ(Slot(&Base::WriteContinueFunction), 8);
    EXPECT_EQ(Slot(&Base::WriteTimestamp), 9);
    EXPECT_EQ(Slot(&Base::WriteIdent), 10);
    EXPECT_EQ(Slot(&Base::WriteDetailedIdent), 11);
    EXPECT_EQ(Slot(&Base::WriteIdentWithoutTabs), 12);
    EXPECT_EQ(Slot(&Base::WriteTabs), 13);
    EXPECT_EQ(Slot(&Base::WriteNULLPointer), 14);
    EXPECT_EQ(Slot(&Base::WriteAddress), 15);
    EXPECT_EQ(Slot(&Base::IncCallNo), 16);
    EXPECT_EQ(Slot(&Base::GetCallNo), 17);

    using RunBase = ScrivelXmlGenRunBase;
    EXPECT_EQ(Slot<void (RunBase::*)(std::string)>(&RunBase::WriteDetailedIdent), 11);
    EXPECT_EQ(Slot<void (RunBase::*)(std::string, unsigned long)>(&RunBase::WriteDetailedIdent), 18);
    EXPECT_EQ(Slot(&RunBase::EnterCadiCall), 19);
}

TEST_F(VirtualTable, GeneratorIsDestroyedThroughItsBase)
{
    struct Watched : Scrivel2XmlGenRun
    {
        explicit Watched(bool& flag) : Scrivel2XmlGenRun("trace"), destroyed(flag) {}
        ~Watched() override { destroyed = true; }
        bool& destroyed;
    };
    bool destroyed = false;
    const ScrivelXmlGenBase* const log = new Watched(destroyed);
    delete log;
    EXPECT_TRUE(destroyed);
}

TEST_F(VirtualTable, EveryOperationIsReplacedForACallerThatKnowsOnlyTheBase)
{
    Log log("trace", "CADI 2.0");
    ScrivelXmlGenBase& base = log;
    base.SetWriteSecure(true);
    base.StartLogging();
    base.EndLogging();
    EXPECT_THAT(log.calls, ElementsAre("SetWriteSecure", "StartLogging", "FlushOutput", "EndLogging",
                                       "FlushOutput"));
    log.calls.clear();
    base.IncCallNo();
    EXPECT_EQ(base.GetCallNo(), 1U);
    EXPECT_THAT(log.calls, ElementsAre("IncCallNo", "GetCallNo"));
}

// ---- The frame ----------------------------------------------------------------------------------

TEST_F(VirtualTable, TagsAreIndentedThroughTheTable)
{
    EXPECT_THAT(CallsOf([](auto& log) { log.WriteIdent("a", true, true); }),
                ElementsAre("WriteIdent open", "WriteTabs"));
    EXPECT_THAT(CallsOf([](auto& log) { log.WriteTimestamp("t", true); }),
                ElementsAre("WriteTimestamp", "WriteTabs"));
    EXPECT_THAT(CallsOf([](auto& log) { log.WriteTimestamp("t", false); }),
                ElementsAre("WriteTimestamp", "WriteTabs"));
    EXPECT_THAT(CallsOf([](auto& log) { log.WriteComment("c"); }), ElementsAre("WriteTabs"));
}

TEST_F(VirtualTable, CallElementTakesItsTimeThroughTheTable)
{
    EXPECT_THAT(CallsOf([](auto& log) { log.WriteDetailedIdent("Connect"); }),
                ElementsAre("WriteDetailedIdent", "WriteTimestamp", "WriteTabs"));
}

TEST_F(VirtualTable, InterruptedCallIsClosedAndMarkedThroughTheTable)
{
    EXPECT_THAT(
        CallsOf([](auto& log) {
            log.WriteDetailedIdent("Connect");
            log.calls.clear();
            log.WriteCloseInterruptedFunction("Detach");
        }),
        ElementsAre("WriteCloseInterruptedFunction", "WriteIdent close", "WriteTabs", "WriteTabs"));
}

TEST_F(VirtualTable, CurrentCallIsContinuedThroughTheTable)
{
    EXPECT_THAT(CallsOf([](auto& log) {
                    log.WriteCloseInterruptedFunction("Connect");
                    log.calls.clear();
                    log.WriteContinueFunction(0, "Connect");
                }),
                ElementsAre("WriteContinueFunction", "WriteTimestamp", "WriteTabs"));
}

TEST_F(VirtualTable, OlderCallIsContinuedThroughTheTable)
{
    EXPECT_THAT(CallsOf([](auto& log) {
                    log.WriteCloseInterruptedFunction("Connect");
                    log.calls.clear();
                    log.WriteContinueFunction(7, "Run");
                }),
                ElementsAre("WriteContinueFunction", "WriteIdent close", "WriteTabs",
                            "WriteTabs",  // of the comment
                            "WriteTabs",  // of the reopened start tag
                            "WriteTimestamp", "WriteTabs"));
}

TEST_F(VirtualTable, RunPhaseCallIsEnteredThroughTheTableButRaisesTheNumberItself)
{
    EXPECT_THAT(CallsOf<RunRecorder>([](auto& log) { EXPECT_EQ(log.EnterCadiCall("Run"), 1U); }),
                ElementsAre("EnterCadiCall", "WriteCloseInterruptedFunction", "WriteDetailedIdent",
                            "WriteDetailedIdent with address", "WriteTabs", "WriteTimestamp", "WriteTabs",
                            "WriteTabs"));
}

TEST_F(VirtualTable, ReplacedOperationDecidesWhatIsWritten)
{
    struct Replaced : ScrivelXmlGenBase
    {
        using ScrivelXmlGenBase::ScrivelXmlGenBase;
        void WriteNULLPointer(std::string ident) override { WriteDecimal(ident, 0); }
        void WriteTabs(bool) override { logFile << "\t"; }
        void WriteIdentWithoutTabs(std::string name) override
        {
            logFile << "<!-- " << name << " -->";
            ScrivelXmlGenBase::WriteIdentWithoutTabs(name);
        }
    };
    EXPECT_EQ(Written<Replaced>([](auto& log) {
                  log.WriteCharString("t", nullptr);
                  log.WriteBoolArray("f", nullptr, 1);
              }),
              "\t<t>0<!-- t --></t>\n"
              "\t<f>\n"
              "\t<bool_array>0<!-- bool_array --></bool_array>\n"
              "\t</f>\n");
}

// ---- Writers ------------------------------------------------------------------------------------

TEST_F(VirtualTable, ScalarsWriteTheirTagsThroughTheTable)
{
    const unsigned char bytes[16] = {};
    EXPECT_EQ(CallsOf([](auto& log) { log.WriteChar("v", 'c'); }), OneLine());
    EXPECT_EQ(CallsOf([](auto& log) { log.WriteDecimal("v", 1); }), OneLine());
    EXPECT_EQ(CallsOf([](auto& log) { log.WriteString("v", "s"); }), OneLine());
    EXPECT_EQ(CallsOf([](auto& log) { log.WriteBool("v", true); }), OneLine());
    EXPECT_EQ(CallsOf([&](auto& log) { log.WriteByte("v", bytes); }), OneLine());
    EXPECT_EQ(CallsOf([](auto& log) { log.WriteHex("v", 1, 2); }), OneLine());
    EXPECT_EQ(CallsOf([](auto& log) { log.WriteBin("v", 1, 5); }), OneLine());
    EXPECT_EQ(CallsOf([](auto& log) { log.WriteCharString("v", "s"); }), OneLine());
    EXPECT_EQ(CallsOf([](auto& log) { log.WriteNULLPointer("v"); }), NullLine());
    EXPECT_THAT(CallsOf([](auto& log) { log.WriteAddress("v", 1); }),
                ElementsAre("WriteAddress", "WriteIdent open", "WriteTabs", "WriteIdentWithoutTabs"));
    // Zero is written by WriteAddress itself, not by WriteNULLPointer.
    EXPECT_THAT(CallsOf([](auto& log) { log.WriteAddress("v", 0); }),
                ElementsAre("WriteAddress", "WriteIdent open", "WriteTabs", "WriteIdentWithoutTabs"));
}

TEST_F(VirtualTable, NullPointersAreWrittenThroughTheTable)
{
    EXPECT_EQ(CallsOf([](auto& log) { log.WriteCharString("v", nullptr); }), NullLine());
    EXPECT_EQ(CallsOf([](auto& log) { log.WriteCharPtrVal("v", nullptr); }), NullLine());
    EXPECT_EQ(CallsOf([](auto& log) { log.WriteDecimalPtrVal("v", nullptr); }), NullLine());
    EXPECT_EQ(
        CallsOf([](auto& log) { log.WriteDecimalPtrVal("v", static_cast<unsigned int*>(nullptr)); }),
        NullLine());
    EXPECT_EQ(
        CallsOf([](auto& log) { log.WriteDecimalPtrVal("v", static_cast<unsigned long*>(nullptr)); }),
        NullLine());
    EXPECT_EQ(CallsOf([](auto& log) { log.WriteStringPtrVal("v", nullptr); }), NullLine());
    EXPECT_EQ(CallsOf([](auto& log) { log.WriteBoolPtrVal("v", nullptr); }), NullLine());
    EXPECT_EQ(CallsOf([](auto& log) { log.WriteHexPtrVal("v", nullptr, 2); }), NullLine());
    EXPECT_EQ(CallsOf([](auto& log) { log.WriteBinPtrVal("v", nullptr, 5); }), NullLine());
}

TEST_F(VirtualTable, PointedToCharWritesItsTagsThroughTheTable)
{
    char c = 'c';
    EXPECT_EQ(CallsOf([&](auto& log) { log.WriteCharPtrVal("v", &c); }), OneLine());
}

TEST_F(VirtualTable, NullArraysWriteContainerAndNullElementThroughTheTable)
{
    const Calls expected = ContainerOf(NullLine());
    EXPECT_EQ(CallsOf([](auto& log) { log.WriteBoolArray("v", nullptr, 1); }), expected);
    EXPECT_EQ(CallsOf([](auto& log) { log.WriteCharArray("v", nullptr, 1); }), expected);
    EXPECT_EQ(CallsOf([](auto& log) { log.WriteStringArray("v", nullptr, 1); }), expected);
    EXPECT_EQ(CallsOf([](auto& log) { log.WriteLinesByteArray("v", nullptr, 1, 1); }), expected);
    EXPECT_EQ(CallsOf([](auto& log) { log.WriteUint8Array("v", nullptr, 1, true); }), expected);
    EXPECT_EQ(CallsOf([](auto& log) { log.WriteUint32Array("v", nullptr, 1, true); }), expected);
    EXPECT_EQ(CallsOf([](auto& log) { log.WriteUint64Array("v", nullptr, 1, true); }), expected);
}

TEST_F(VirtualTable, ArraysWriteContainerAndChildrenThroughTheTable)
{
    const bool flags[] = {true};
    const unsigned char bytes[32] = {};
    const unsigned int words[] = {1};
    const unsigned long longs[] = {1};
    char text[] = "s";
    char* strings[] = {text};
    const Calls expected = ContainerOf(OneLine());
    EXPECT_EQ(CallsOf([&](auto& log) { log.WriteBoolArray("v", flags, 1); }), expected);
    EXPECT_EQ(CallsOf([&](auto& log) { log.WriteCharArray("v", text, 1); }), expected);
    EXPECT_EQ(CallsOf([&](auto& log) { log.WriteLinesByteArray("v", bytes, 1, 1); }), expected);
    EXPECT_EQ(CallsOf([&](auto& log) { log.WriteUint8Array("v", bytes, 1, true); }), expected);
    EXPECT_EQ(CallsOf([&](auto& log) { log.WriteUint32Array("v", words, 1, false); }), expected);
    EXPECT_EQ(CallsOf([&](auto& log) { log.WriteUint64Array("v", longs, 1, true); }), expected);
    EXPECT_EQ(CallsOf([&](auto& log) { log.WriteStringArray("v", strings, 1); }),
              ContainerOf({"WriteIdent open", "WriteTabs",  // the outer start tag
                           "WriteIdent open", "WriteTabs", "WriteIdentWithoutTabs",  // the string
                           "WriteIdentWithoutTabs"}));
}

TEST_F(VirtualTable, FactoriesAreWrittenAsAddressesThroughTheTable)
{
    eslapi::CADISimulationFactory* factories[] = {nullptr};
    unsigned int count = 1;
    EXPECT_EQ(CallsOf<Recorder<Scrivel2XmlGenConnect>>(
                  [&](auto& log) { log.WriteSimulationFactoryArray("v", factories, &count); }),
              ContainerOf({"WriteAddress", "WriteIdent open", "WriteTabs", "WriteIdentWithoutTabs"}));
}

}  // namespace
