// Each row of docs/traps.md, tried.

#include "support/GeneratorTest.h"

#include <LoggedCall.h>

#include <gmock/gmock.h>

#include <filesystem>
#include <memory>
#include <string>

namespace
{

using namespace eslapi;
using Scrivel2::Scrivel2XmlGenConnect;
using Scrivel2::Scrivel2XmlGenRun;
using ScrivelTest::IsDocument;
using ScrivelTest::platform;
using testing::HasSubstr;
using testing::Not;

class Traps : public ScrivelTest::GeneratorTest<>
{
protected:
    Traps() { log->StartLogging(); }

    /// A call from its entry to the flush of its arguments.
    unsigned int Enter(const std::string& name)
    {
        const unsigned int call = log->EnterCadiCall(name);
        log->WriteDecimal("argument", 7);
        log->FlushOutput(false, name);
        return call;
    }

    /// The rest of it.
    void Leave(unsigned int call, const std::string& name)
    {
        log->WriteContinueFunction(call, name);
        log->WriteReturnType("return", CADI_STATUS_OK);
        log->WriteIdent(name, false, true);
        log->FlushOutput(true, "");
    }

    std::unique_ptr<Scrivel2XmlGenRun> log = Make();
};

// ---- The order of calls -------------------------------------------------------------------------

TEST_F(Traps, RunCallContinuedWithoutAFlushBreaksTheLog)
{
    const unsigned int call = log->EnterCadiCall("CADIReset");
    log->WriteDecimal("argument", 7);
    Leave(call, "CADIReset");
    log->EndLogging();
    EXPECT_FALSE(IsDocument(WholeFile()));
    EXPECT_THAT(WholeFile(), Not(HasSubstr("argument")));
}

/// The rest of a connection-phase call.
void LeaveConnect(Scrivel2XmlGenConnect& log)
{
    log.WriteContinueFunction(log.GetCallNo(), "GetTargetInfos");
    log.WriteReturnType("return", CADI_STATUS_OK);
    log.WriteIdent("GetTargetInfos", false, true);
    log.FlushOutput(true, "");
}

TEST_F(Traps, ConnectionCallContinuedWithoutAFlushBreaksTheLog)
{
    const auto connect = Make<Scrivel2XmlGenConnect>("connect");
    connect->StartLogging();
    connect->WriteCloseInterruptedFunction("GetTargetInfos");
    connect->IncCallNo();
    connect->WriteDetailedIdent("GetTargetInfos");
    connect->WriteDecimal("argument", 7);
    LeaveConnect(*connect);
    EXPECT_FALSE(IsDocument(FileText("connect-4242.xml")));
}

TEST_F(Traps, ConnectionCallWithoutEitherStepIsADocumentThatLacksItsArguments)
{
    const auto connect = Make<Scrivel2XmlGenConnect>("connect");
    connect->StartLogging();
    connect->IncCallNo();
    connect->WriteDetailedIdent("GetTargetInfos");
    connect->WriteDecimal("argument", 7);
    LeaveConnect(*connect);
    EXPECT_TRUE(IsDocument(FileText("connect-4242.xml")));
    EXPECT_THAT(FileText("connect-4242.xml"), Not(HasSubstr("argument")));
}

TEST_F(Traps, ConnectionCallWithoutTheClosingOfTheOneBeforeStandsAfterTheRootEndTag)
{
    const auto connect = Make<Scrivel2XmlGenConnect>("connect");
    connect->StartLogging();
    connect->IncCallNo();
    connect->WriteDetailedIdent("GetTargetInfos");
    connect->FlushOutput(false, "GetTargetInfos");
    EXPECT_THAT(FileText("connect-4242.xml"), HasSubstr("</connect-4242>\n    <GetTargetInfos "));
}

TEST_F(Traps, OlderOfTwoOpenCallsMayReturnFirstOnlyWhenTheOthersEndTagIsKept)
{
    const unsigned int older = Enter("CADIExecContinue");
    Enter("CADIExecStop");
    Leave(older, "CADIExecContinue");
    EXPECT_FALSE(IsDocument(WholeFile()));

    log->EndLogging();
    log->StartLogging();
    const unsigned int again = Enter("CADIExecContinue");
    const unsigned int younger = Enter("CADIExecStop");
    log->UpdateFilePointerPosition();
    Leave(again, "CADIExecContinue");
    EXPECT_TRUE(IsDocument(WholeFile()));
    Leave(younger, "CADIExecStop");
    EXPECT_TRUE(IsDocument(WholeFile()));
}

TEST_F(Traps, KeepingARootEndTagLeavesItInMidFile)
{
    Leave(Enter("CADIReset"), "CADIReset");
    log->UpdateFilePointerPosition();
    Leave(Enter("CADIReset"), "CADIReset");
    EXPECT_FALSE(IsDocument(WholeFile()));
}

TEST_F(Traps, FinalFlushInsideAnOpenCallIsNoDocumentUntilTheCallIsContinued)
{
    const unsigned int call = log->EnterCadiCall("CADIReset");
    log->FlushOutput(true, "");
    EXPECT_FALSE(IsDocument(WholeFile()));
    Leave(call, "CADIReset");
    EXPECT_TRUE(IsDocument(WholeFile()));
}

TEST_F(Traps, EndWithAnOpenCallIsADocumentOnlyWhenItsEndTagIsKept)
{
    Enter("CADIExecContinue");
    log->EndLogging();
    EXPECT_FALSE(IsDocument(WholeFile()));

    log->StartLogging();
    Enter("CADIExecContinue");
    log->UpdateFilePointerPosition();
    log->EndLogging();
    EXPECT_TRUE(IsDocument(WholeFile()));
}

TEST_F(Traps, CommentWithoutAFinalFlushIsOverwrittenByTheNextCall)
{
    log->WriteComment("loaded crc.elf");
    EXPECT_FALSE(IsDocument(WholeFile()));
    Leave(Enter("CADIReset"), "CADIReset");
    EXPECT_TRUE(IsDocument(WholeFile()));
    EXPECT_THAT(WholeFile(), Not(HasSubstr("crc.elf")));
}

TEST_F(Traps, CommentWithTwoHyphensIsNoDocument)
{
    log->WriteComment("a--b");
    log->FlushOutput(true, "");
    EXPECT_FALSE(IsDocument(WholeFile()));
}

TEST_F(Traps, WhileTheTargetRunsTheRootEndTagIsMissing)
{
    Enter("CADIExecContinue");
    EXPECT_FALSE(IsDocument(WholeFile()));
    EXPECT_TRUE(IsDocument(WholeFile() + EndTag()));
}

TEST_F(Traps, CallNameThatCleaningChangesIsNoDocumentOnceTheCallIsInterrupted)
{
    Leave(Enter("CADI Reset"), "CADI Reset");
    EXPECT_TRUE(IsDocument(WholeFile()));
    const unsigned int open = Enter("CADI Run");
    Leave(Enter("modeChange"), "modeChange");
    EXPECT_FALSE(IsDocument(WholeFile()));
    Leave(open, "CADI Run");
    EXPECT_FALSE(IsDocument(WholeFile()));
}

TEST_F(Traps, ForkedChildWritesTheEndTagOfItsOwnProcess)
{
    platform.getpid.Use([] { return 4243; });
    Leave(Enter("CADIReset"), "CADIReset");
    EXPECT_FALSE(IsDocument(WholeFile()));
    EXPECT_THAT(WholeFile(), HasSubstr("</trace-4243>"));
}

TEST_F(Traps, DestroyedGeneratorLeavesTheFileAsTheLastFlushDid)
{
    Leave(Enter("CADIReset"), "CADIReset");
    const std::string flushed = WholeFile();
    log->EnterCadiCall("CADIExecContinue");
    log.reset();
    EXPECT_EQ(WholeFile(), flushed);
}

// ---- Names and text -----------------------------------------------------------------------------

TEST_F(Traps, LogNameThatIsNoElementNameIsNoDocument)
{
    for (const char* name : {"./trace", "my trace", "2trace", "-trace", "a\"b"}) {
        const auto named = Make(name);
        named->StartLogging();
        named->EndLogging();
        EXPECT_FALSE(IsDocument(FileText(std::string(name) + "-4242.xml"))) << name;
    }
}

TEST_F(Traps, SecondGeneratorOfTheSameNameEmptiesTheFirstOnesFile)
{
    Leave(Enter("CADIReset"), "CADIReset");
    const auto second = Make();
    second->StartLogging();
    EXPECT_THAT(WholeFile(), Not(HasSubstr("CADIReset")));
}

TEST_F(Traps, NameWithALeadingHyphenOrFullStopIsNoDocument)
{
    for (const char* name : {"-x", ".text"}) {
        CADIMemSpaceInfo_t space{};
        std::string(name).copy(space.name, sizeof space.name - 1);
        const auto one = Make("spaces");
        one->StartLogging();
        one->SeekFilePointerPosition();
        one->WriteMemSpaceInfo(space);
        one->UpdateFilePointerPosition();
        one->EndLogging();
        EXPECT_FALSE(IsDocument(FileText("spaces-4242.xml"))) << name;
    }
}

TEST_F(Traps, RawCharacterOfMarkupOrControlIsNoDocument)
{
    for (const char character : {'<', '&', '\x01', '\xe9'}) {
        const auto one = Make("raw");
        one->StartLogging();
        one->SeekFilePointerPosition();
        one->WriteChar("key", character);
        one->UpdateFilePointerPosition();
        one->EndLogging();
        EXPECT_FALSE(IsDocument(FileText("raw-4242.xml"))) << static_cast<int>(character);
    }
}

TEST_F(Traps, EightBitLocaleLetsBytesThroughThatAreNoUtf8)
{
    platform.isprint.Use([](int byte) { return byte >= 0xa0 ? 1 : platform.isprint.Real(byte); });
    log->SeekFilePointerPosition();
    log->WriteString("name", "caf\xe9");
    log->UpdateFilePointerPosition();
    log->EndLogging();
    EXPECT_FALSE(IsDocument(WholeFile()));
}

// ---- The layer ----------------------------------------------------------------------------------

using TrapsOfLayer = ScrivelTest::ScratchTest;

TEST_F(TrapsOfLayer, AreNone)
{
    std::filesystem::create_directory("below");
    std::filesystem::current_path("below");
    Scrivel2::RunLog log("../2 logs/of -x");
    log.Comment("a--b");
    auto older = std::make_unique<Scrivel2::LoggedCall<Scrivel2XmlGenRun>>(log, "CADI Run");
    auto younger = std::make_unique<Scrivel2::LoggedCall<Scrivel2XmlGenRun>>(log, "2nd call");
    older->Results([](auto& xml) {
        CADIMemSpaceInfo_t space{};
        std::string("-x").copy(space.name, sizeof space.name - 1);
        xml.WriteMemSpaceInfo(space);
        std::string(".text").copy(space.name, sizeof space.name - 1);
        xml.WriteMemSpaceInfo(space);
        xml.WriteChar("markup", '<');
        xml.WriteChar("control", '\x01');
        xml.WriteComment("c--d");
    });
    EXPECT_TRUE(IsDocument(FileText(log.FileName())));

    Scrivel2::RunLog second("../2 logs/of -x");
    EXPECT_NE(second.FileName(), log.FileName());
    log.EndLogging();
    const std::string file = FileText(log.FileName());
    EXPECT_TRUE(IsDocument(file)) << file;
    EXPECT_THAT(file, HasSubstr("<CADI_Run "));

    younger->Results([](auto& xml) { xml.WriteBool("late", true); });
    EXPECT_EQ(FileText(log.FileName()), file);
}

}  // namespace
