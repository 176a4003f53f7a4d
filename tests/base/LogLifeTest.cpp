// The life of a log file: its header, flushes, end, positions, and a file that can't be opened.

#include "support/GeneratorTest.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <locale>
#include <streambuf>
#include <string>

namespace
{

namespace fs = std::filesystem;
using Scrivel2::ScrivelXmlGenBase;
using ScrivelTest::IsDocument;
using ScrivelTest::platform;
using testing::internal::CaptureStderr;
using testing::internal::GetCapturedStderr;

using OpenLog = ScrivelTest::Unprotected<ScrivelXmlGenBase>;

class LogLife : public ScrivelTest::GeneratorTest<ScrivelXmlGenBase>
{
protected:
    /// Enters a call as the connection phase does.
    static void Enter(ScrivelXmlGenBase& log, const std::string& name)
    {
        log.WriteCloseInterruptedFunction(name);
        log.IncCallNo();
        log.WriteDetailedIdent(name);
    }
};

// ---- Starting -----------------------------------------------------------------------------------

TEST_F(LogLife, ConstructorTouchesNoFile)
{
    const auto log = Make();
    EXPECT_TRUE(fs::is_empty("."));
}

TEST_F(LogLife, StartingWritesHeaderAndRootEndTag)
{
    const auto log = Make();
    log->StartLogging();
    EXPECT_EQ(WholeFile(), R"(<?xml version="1.0" encoding="UTF-8"?>
<trace-4242
 time="2026-11-21 14:03:59"
 CADI_version="CADI 2.0"
 hostname="lab7"
 OS="Linux">
</trace-4242>
)");
    EXPECT_TRUE(IsDocument(WholeFile()));
}

TEST_F(LogLife, StartingReadsThePlatformInTheOrderOfTheHeader)
{
    std::string order;
    const auto process = platform.getpid.Use([&order] {
        order += "getpid ";
        return 4242;
    });
    const auto time = platform.gettimeofday.Use([&order](timeval* clock, void*) {
        order += "gettimeofday ";
        *clock = {};
        return 0;
    });
    const auto date = platform.time.Use([&order](std::time_t*) {
        order += "time ";
        return std::time_t{0};
    });
    const auto host = platform.gethostname.Use([&order](char* name, std::size_t length) {
        order += "gethostname(" + std::to_string(length) + ") ";
        *name = '\0';
        return 0;
    });
    const auto log = Make();
    log->StartLogging();
    EXPECT_EQ(order, "getpid getpid gettimeofday time gethostname(255) getpid ");
}

TEST_F(LogLife, HeaderShowsTheVersionGivenToTheConstructor)
{
    ScrivelXmlGenBase log("trace", "CADI 7 <beta>");
    log.StartLogging();
    EXPECT_EQ(WholeFile(), Header("trace", "CADI 7 <beta>") + EndTag());
}

TEST_F(LogLife, LogNameMayCarryAFolderWhichIsThenPartOfTheRootElement)
{
    fs::create_directory("logs");
    const auto log = Make("logs/trace");
    log->StartLogging();
    EXPECT_EQ(FileText("logs/trace-4242.xml"), Header("logs/trace") + EndTag("logs/trace"));
}

TEST_F(LogLife, NamesGivenToTheConstructorAreCopied)
{
    char name[] = "trace";
    char version[] = "CADI 2.0";
    ScrivelXmlGenBase log(name, version);
    std::strcpy(name, "other");
    std::strcpy(version, "none");
    log.StartLogging();
    EXPECT_EQ(WholeFile(), Header() + EndTag());
}

TEST_F(LogLife, StartingEmptiesAFileOfThatName)
{
    std::ofstream("trace-4242.xml") << std::string(10000, 'x');
    const auto log = Make();
    log->StartLogging();
    EXPECT_EQ(WholeFile(), Header() + EndTag());
}

TEST_F(LogLife, StartingResetsCallNumberAndDepth)
{
    OpenLog log("trace", "CADI 2.0");
    log.StartLogging();
    EXPECT_EQ(log.depth, 1U);
    EXPECT_EQ(log.GetCallNo(), 0U);
    Enter(log, "GetTargets");
    EXPECT_EQ(log.depth, 2U);
    EXPECT_EQ(log.GetCallNo(), 1U);
    log.EndLogging();
    log.StartLogging();
    EXPECT_EQ(log.depth, 1U);
    EXPECT_EQ(log.GetCallNo(), 0U);
}

TEST_F(LogLife, HeaderTimeIsTheLocalTime)
{
    platform.time.Use([](std::time_t*) -> std::time_t { return 86400; });
    platform.localtime_r.Use([](const std::time_t* moment, std::tm* local) {
        EXPECT_EQ(*moment, 86400);
        local->tm_year = 133;
        local->tm_mon = 1;
        local->tm_mday = 3;
        local->tm_hour = 4;
        local->tm_min = 5;
        local->tm_sec = 6;
        return local;
    });
    const auto log = Make();
    log->StartLogging();
    EXPECT_NE(WholeFile().find("\n time=\"2033-02-03 04:05:06\"\n"), std::string::npos);
}

TEST_F(LogLife, HeaderTimeFollowsAChangeOfTheTimeZone)
{
    platform.localtime_r.Reset();
    platform.time.Use([](std::time_t*) -> std::time_t { return 86400; });
    const auto startIn = [](const char* zone) {
        setenv("TZ", zone, 1);
        Make()->StartLogging();
        const std::string file = WholeFile();
        return file.substr(file.find(" time=") + 7, 16);
    };
    EXPECT_EQ(startIn("UTC"), "1970-01-02 00:00");
    EXPECT_EQ(startIn("XYZ-5:30"), "1970-01-02 05:30");
    unsetenv("TZ");
    tzset();
}

TEST_F(LogLife, LogsMayStartInSeveralThreadsAtOnce)
{
    const auto log = Make();
    log->StartLogging();
    EXPECT_EQ(platform.localtime.Calls(), 0U);  // whose record all threads share
}

// ---- Host name ----------------------------------------------------------------------------------

TEST_F(LogLife, HostNameThatCantBeReadIsTheTimeFollowedByAnAsterisk)
{
    platform.gethostname.Use([](char*, std::size_t) { return -1; });
    const auto log = Make();
    log->StartLogging();
    EXPECT_EQ(WholeFile(), R"(<?xml version="1.0" encoding="UTF-8"?>
<trace-4242
 time="2026-11-21 14:03:59"
 CADI_version="CADI 2.0"
 hostname="2026-11-21 14:03:59*"
 OS="Linux">
</trace-4242>
)");
}

TEST_F(LogLife, HostNameOfSixtyFourCharactersIsWrittenInFull)
{
    const std::string host = "lab7." + std::string(59, 'h');
    const auto stub = platform.gethostname.Use([&](char* name, std::size_t) {
        std::strcpy(name, host.c_str());
        return 0;
    });
    const auto log = Make();
    log->StartLogging();
    EXPECT_NE(WholeFile().find("\n hostname=\"" + host + "\"\n"), std::string::npos);
}

TEST_F(LogLife, HostNameIsAskedForWithALengthOf255)
{
    const std::string host(254, 'h');
    const auto stub = platform.gethostname.Use([&](char* name, std::size_t size) {
        EXPECT_EQ(size, 255U);
        std::strcpy(name, host.c_str());
        return 0;
    });
    const auto log = Make();
    log->StartLogging();
    EXPECT_NE(WholeFile().find("\n hostname=\"" + host + "\"\n"), std::string::npos);
}

// ---- A file that can't be opened ----------------------------------------------------------------

TEST_F(LogLife, FileThatCantBeOpenedIsReportedOnStandardErrorAndNothingIsThrown)
{
    const auto log = Make("missing/trace");
    CaptureStderr();
    EXPECT_NO_THROW(log->StartLogging());
    EXPECT_EQ(GetCapturedStderr(), "Scrivel: Unable to open logfile \"missing/trace-4242.xml\".\n"
                                   "    Error given by OS: No such file or directory\n");
    CaptureStderr();
    EXPECT_NO_THROW({
        Enter(*log, "Connect");
        log->WriteString("name", "x");
        log->WriteDecimal("count", 1);
        log->WriteHex("address", 1, 8);
        log->WriteHex("address", 1, 40);
        log->WriteString("text", std::string(10000, 'x'));
        log->WriteByte("bytes", std::array<unsigned char, 16>().data());
        log->WriteChar("char", 'c');
        log->FlushOutput(false, "Connect");
        log->WriteContinueFunction(1, "Connect");
        log->WriteComment("lost");
        log->FlushOutput(true, "");
        log->EndLogging();
    });
    EXPECT_EQ(GetCapturedStderr(), "");
    EXPECT_TRUE(fs::is_empty("."));
}

TEST_F(LogLife, TextOfTheErrorIsThatOfStrerror)
{
    static char text[] = "told otherwise";
    int asked = 0;
    const auto stub = platform.strerror.Use([&](int error) {
        asked = error;
        return text;
    });
    const auto log = Make("missing/trace");
    CaptureStderr();
    log->StartLogging();
    EXPECT_EQ(GetCapturedStderr(), "Scrivel: Unable to open logfile \"missing/trace-4242.xml\".\n"
                                   "    Error given by OS: told otherwise\n");
    EXPECT_EQ(asked, ENOENT);
}

TEST_F(LogLife, ErrorNumberIsLookedAtAfterTheFirstMessage)
{
    class SpoilingBuffer : public std::stringbuf
    {
    protected:
        int sync() override
        {
            errno = EIO;
            return 0;
        }
    };
    SpoilingBuffer buffer;
    const auto log = Make("missing/trace");
    std::streambuf* const before = std::cerr.rdbuf(&buffer);
    log->StartLogging();
    std::cerr.rdbuf(before);
    EXPECT_EQ(buffer.str(), "Scrivel: Unable to open logfile \"missing/trace-4242.xml\".\n"
                            "    Error given by OS: Input/output error\n");
}

TEST_F(LogLife, LogCanBeStartedAgainAfterAFailedOpen)
{
    const auto log = Make("later/trace");
    CaptureStderr();
    log->StartLogging();
    EXPECT_NE(GetCapturedStderr(), "");
    fs::create_directory("later");
    log->StartLogging();
    EXPECT_EQ(FileText("later/trace-4242.xml"), Header("later/trace") + EndTag("later/trace"));
}

TEST_F(LogLife, DoubleStartIsReportedWithoutAnErrorOfTheSystem)
{
    OpenLog log("trace", "CADI 2.0");
    log.StartLogging();
    Enter(log, "Connect");
    log.FlushOutput(false, "Connect");
    const std::string before = WholeFile();

    CaptureStderr();
    log.StartLogging();
    EXPECT_EQ(GetCapturedStderr(), "Scrivel: Unable to open logfile \"trace-4242.xml\".\n");
    EXPECT_EQ(log.GetCallNo(), 0U);
    EXPECT_EQ(log.depth, 1U);

    log.WriteDecimal("lost", 1);
    log.FlushOutput(true, "");
    log.EndLogging();
    EXPECT_EQ(WholeFile(), before);
}

// ---- Flushing -----------------------------------------------------------------------------------

TEST_F(LogLife, FinalFlushWritesTheRootEndTag)
{
    const auto log = Make();
    log->StartLogging();
    log->SeekFilePointerPosition();
    log->WriteDecimal("d", 1);
    log->FlushOutput(true, "ignored");
    EXPECT_EQ(WholeFile(), Complete("    <d>1</d>\n"));
}

TEST_F(LogLife, NonFinalFlushWritesTheProvisionalEndTagOfTheCall)
{
    const auto log = Make();
    log->StartLogging();
    Enter(*log, "GetSimulationFactories");
    log->FlushOutput(false, "GetSimulationFactories");
    EXPECT_EQ(WholeFile(), Header() +
                               "    <GetSimulationFactories call_num=\"1\" call_time=\"0.000000 s\">\n"
                               "    </GetSimulationFactories>\n");
}

TEST_F(LogLife, ProvisionalEndTagIsIndentedByFourBlanksAndNamedAsGiven)
{
    const auto log = Make();
    log->StartLogging();
    log->SeekFilePointerPosition();
    log->WriteIdent("a", true, true);
    log->WriteIdent("b", true, true);
    log->WriteIdent("a rather long line to cover the root end tag", true, true);
    log->FlushOutput(false, "2nd reg:x");
    EXPECT_EQ(WholeFile(), Header() + R"(    <a>
        <b>
            <a_rather_long_line_to_cover_the_root_end_tag>
    </2nd reg:x>
)");
}

TEST_F(LogLife, TailThatIsLongerThanTheTextAboveItStaysBehindIt)
{
    const auto log = Make();
    log->StartLogging();
    log->SeekFilePointerPosition();
    log->FlushOutput(false, "x");
    EXPECT_EQ(WholeFile(), Header() + "    </x>\n" + EndTag().substr(9));
}

TEST_F(LogLife, FlushRemembersWhereTheTailBegins)
{
    OpenLog log("trace", "CADI 2.0");
    log.StartLogging();
    EXPECT_EQ(log.lastFilePos, static_cast<std::streamoff>(Header().size()));
    EXPECT_EQ(log.pendingTail, EndTag());
    log.SeekFilePointerPosition();
    log.WriteDecimal("d", 1);
    log.FlushOutput(false, "Connect");
    EXPECT_EQ(log.lastFilePos, static_cast<std::streamoff>(Header().size() + 13));
    EXPECT_EQ(log.pendingTail, "    </Connect>\n");
}

TEST_F(LogLife, TailIsOverwrittenNotRepeatedByTwoFlushesWithASeekBetween)
{
    const auto log = Make();
    log->StartLogging();
    log->SeekFilePointerPosition();
    log->FlushOutput(true, "");
    EXPECT_EQ(WholeFile(), Header() + EndTag());
}

TEST_F(LogLife, WritersDoNotSeekByThemselves)
{
    const auto log = Make();
    log->StartLogging();
    log->WriteDecimal("d", 1);
    log->FlushOutput(true, "");
    EXPECT_EQ(WholeFile(), Header() + EndTag() + "    <d>1</d>\n" + EndTag());
}

// ---- Ending -------------------------------------------------------------------------------------

TEST_F(LogLife, EndingDirectlyAfterStartingLeavesOneRootEndTag)
{
    const auto log = Make();
    log->StartLogging();
    log->EndLogging();
    EXPECT_EQ(WholeFile(), Header() + EndTag());
}

TEST_F(LogLife, EndingOverALongerProvisionalTailLeavesItsRemainingBytes)
{
    const auto log = Make();
    log->StartLogging();
    Enter(*log, "GetSimulationFactories");
    log->FlushOutput(false, "GetSimulationFactories");
    log->EndLogging();
    EXPECT_EQ(WholeFile(), Header() +
                               R"(    <GetSimulationFactories call_num="1" call_time="0.000000 s">
</trace-4242>
ationFactories>
)");
}

TEST_F(LogLife, EndingTwiceChangesNothing)
{
    const auto log = Make();
    log->StartLogging();
    log->EndLogging();
    EXPECT_NO_THROW(log->EndLogging());
    EXPECT_EQ(WholeFile(), Header() + EndTag());
}

TEST_F(LogLife, EndingBeforeStartingTouchesNoFile)
{
    const auto log = Make();
    EXPECT_NO_THROW(log->EndLogging());
    EXPECT_TRUE(fs::is_empty("."));
}

TEST_F(LogLife, RestartWritesTheFileAnewAndCountsCallsFromOne)
{
    const auto log = Make();
    log->StartLogging();
    Enter(*log, "Connect");
    log->WriteIdent("Connect", false, true);
    log->FlushOutput(true, "");
    log->EndLogging();

    SetClock(2000, 0);
    log->StartLogging();
    EXPECT_EQ(WholeFile(), Header() + EndTag());
    SetClock(2000, 500);
    Enter(*log, "Detach");
    log->WriteIdent("Detach", false, true);
    log->FlushOutput(true, "");
    log->EndLogging();
    EXPECT_EQ(WholeFile(), Complete(R"(    <Detach call_num="1" call_time="0.000500 s">
    </Detach>
)"));
}

TEST_F(LogLife, RestartKeepsTheOpenCallAndThePlaceOfTheLastFlush)
{
    OpenLog log("trace", "CADI 2.0");
    log.StartLogging();
    Enter(log, "Connect");
    log.FlushOutput(true, "");
    const std::streamoff place = log.lastFilePos;
    log.EndLogging();

    log.SetWriteSecure(false);
    log.StartLogging();
    EXPECT_EQ(log.openCallName, "Connect");
    EXPECT_TRUE(log.callOpen);
    EXPECT_EQ(log.lastFilePos, place);
}

TEST_F(LogLife, DestructionWithoutEndLeavesTheFileAsTheLastFlushLeftIt)
{
    {
        const auto log = Make();
        log->StartLogging();
        Enter(*log, "Connect");
        log->FlushOutput(false, "Connect");
        log->WriteString("lost", std::string(100000, 'x'));
    }
    EXPECT_EQ(WholeFile(), Header() + "    <Connect call_num=\"1\" call_time=\"0.000000 s\">\n"
                                      "    </Connect>\n");
}

TEST_F(LogLife, DestructionClosesTheFile)
{
    {
        const auto log = Make();
        log->StartLogging();
    }
    EXPECT_EQ(platform.close.Calls(), 1U);
}

// ---- Write-secure mode off ----------------------------------------------------------------------

TEST_F(LogLife, SecureModeIsOnAtFirst)
{
    EXPECT_TRUE(OpenLog("trace", "CADI 2.0").writeSecure);
}

TEST_F(LogLife, InsecureLogHasNoRootEndTagNotEvenAtItsEnd)
{
    const auto log = Make();
    log->SetWriteSecure(false);
    log->StartLogging();
    EXPECT_EQ(WholeFile(), Header());
    log->WriteDecimal("d", 1);
    log->FlushOutput(false, "Connect");
    EXPECT_EQ(WholeFile(), Header() + "    <d>1</d>\n");
    log->FlushOutput(true, "");
    log->EndLogging();
    EXPECT_EQ(WholeFile(), Header() + "    <d>1</d>\n");
}

TEST_F(LogLife, InsecureFlushEmptiesTheTailAndKeepsTheRememberedPlace)
{
    OpenLog log("trace", "CADI 2.0");
    log.StartLogging();
    log.SetWriteSecure(false);
    log.FlushOutput(true, "");
    EXPECT_EQ(log.pendingTail, "");
    EXPECT_EQ(log.lastFilePos, static_cast<std::streamoff>(Header().size()));
}

TEST_F(LogLife, SecureModeCanBeTurnedOnAgainWithinALog)
{
    const auto log = Make();
    log->SetWriteSecure(false);
    log->StartLogging();
    log->WriteDecimal("d", 1);
    log->SetWriteSecure(true);
    log->FlushOutput(true, "");
    log->EndLogging();
    EXPECT_EQ(WholeFile(), Complete("    <d>1</d>\n"));
}

// ---- Positions ----------------------------------------------------------------------------------

TEST_F(LogLife, PutPositionIsMinusOneWhileNoFileIsOpen)
{
    const auto log = Make();
    EXPECT_EQ(log->GetCurrentFilePointerPosition(), -1);
    EXPECT_EQ(log->GetLastFilePointerPosition(), 0);
    log->StartLogging();
    EXPECT_EQ(log->GetCurrentFilePointerPosition(),
              static_cast<std::streamoff>(Header().size() + EndTag().size()));
    log->EndLogging();
    EXPECT_EQ(log->GetCurrentFilePointerPosition(), -1);
}

TEST_F(LogLife, RememberedPlaceIsMinusOneAfterAFailedOpen)
{
    const auto log = Make("missing/trace");
    CaptureStderr();
    log->StartLogging();
    GetCapturedStderr();
    EXPECT_EQ(log->GetLastFilePointerPosition(), -1);
    EXPECT_EQ(log->GetCurrentFilePointerPosition(), -1);
}

TEST_F(LogLife, LayerSavesAndRestoresThePlaceAroundTextOfItsOwn)
{
    OpenLog log("trace", "CADI 2.0");
    log.StartLogging();
    log.SeekFilePointerPosition();
    EXPECT_EQ(log.GetCurrentFilePointerPosition(), log.GetLastFilePointerPosition());
    log.logFile << "    <!-- the layer's own text -->\n";
    EXPECT_NE(log.GetCurrentFilePointerPosition(), log.GetLastFilePointerPosition());
    log.UpdateFilePointerPosition();
    EXPECT_EQ(log.GetCurrentFilePointerPosition(), log.GetLastFilePointerPosition());
    log.logFile << "to be overwritten";
    log.SeekFilePointerPosition();
    log.FlushOutput(true, "");
    EXPECT_EQ(WholeFile().substr(0, Header().size() + 34 + EndTag().size()),
              Complete("    <!-- the layer's own text -->\n"));
}

TEST_F(LogLife, PositionsStayOutsideSecureMode)
{
    const auto log = Make();
    log->SetWriteSecure(false);
    log->StartLogging();
    const auto end = static_cast<std::streamoff>(Header().size());
    log->SeekFilePointerPosition();
    EXPECT_EQ(log->GetCurrentFilePointerPosition(), end);
    log->UpdateFilePointerPosition();
    EXPECT_EQ(log->GetLastFilePointerPosition(), 0);
}

// ---- Process id ---------------------------------------------------------------------------------

TEST_F(LogLife, FileEndTagNamesLogAndProcess)
{
    const auto log = Make();
    EXPECT_EQ(log->GetFileEndTag(), "</trace-4242>\n");
    platform.getpid.Use([] { return 7; });
    EXPECT_EQ(log->GetFileEndTag(), "</trace-7>\n");
}

TEST_F(LogLife, ProcessIdIsReadEachTimeItIsWritten)
{
    int next = 0;
    const auto stub = platform.getpid.Use([&] { return ++next; });
    const auto log = Make();
    log->StartLogging();
    std::string header = Header();
    header.replace(header.find("4242"), 4, "2");
    EXPECT_EQ(FileText("trace-1.xml"), header + "</trace-3>\n");
    log->EndLogging();
    EXPECT_EQ(FileText("trace-1.xml"), header + "</trace-4>\n");
}

TEST_F(LogLife, ProcessIdThatChangesMakesTheRootEndTagInTheFileCountAsAProvisionalTail)
{
    int process = 4242;
    const auto stub = platform.getpid.Use([&] { return process; });
    const auto log = Make();
    log->StartLogging();
    process = 7;
    Enter(*log, "Connect");
    log->FlushOutput(true, "");
    EXPECT_EQ(WholeFile(), Header() + EndTag() +
                               "    <Connect call_num=\"1\" call_time=\"0.000000 s\">\n"
                               "</trace-7>\n");
}

// ---- Locale -------------------------------------------------------------------------------------

TEST_F(LogLife, GlobalLocaleThatGroupsDigitsChangesNoNumber)
{
    class Grouping : public std::numpunct<char>
    {
    protected:
        char do_thousands_sep() const override { return ','; }
        std::string do_grouping() const override { return "\3"; }
    };
    const std::locale before = std::locale::global(std::locale(std::locale::classic(), new Grouping));
    platform.getpid.Use([] { return 1234567; });
    {
        OpenLog log("trace", "CADI 2.0");
        log.StartLogging();
        SetClock(1001000 + 1234567, 0);
        log.callNo = 1234566;
        Enter(log, "Connect");
        log.WriteDecimal("d", 1234567);
        log.WriteHex("h", 0x12345678, 8);
        log.WriteAddress("a", 0x12345678);
        log.logFile << 1234567 << std::hex << 0x12345678 << std::dec << 1234567.5 << "\n";
        log.FlushOutput(false, "Connect");
        log.WriteContinueFunction(1234567, "Connect");
        log.WriteIdent("Connect", false, true);
        log.FlushOutput(true, "");
    }
    std::locale::global(before);

    std::string header = Header();
    header.replace(header.find("4242"), 4, "1234567");
    EXPECT_EQ(FileText("trace-1234567.xml").substr(0, header.size()), header);
    const std::string rest = FileText("trace-1234567.xml").substr(header.size());
    EXPECT_EQ(rest, R"(    <Connect call_num="1234567" call_time="2234567.000000 s">
        <d>1234567</d>
        <h>0x12345678</h>
        <a>0x0000000012345678</a>
1234567123456781.23457e+06
        <return_time>2234567.000000 s</return_time>
    </Connect>
</trace-1234567>
)");
}

// ---- Names of factory errors --------------------------------------------------------------------

TEST_F(LogLife, ConstructorMakesFourteenFactoryErrorNamesThatAllDiffer)
{
    const OpenLog log("trace", "CADI 2.0");
    EXPECT_EQ(log.factoryErrorNames.size(), 14U);
    EXPECT_EQ(log.factoryErrorNames.front(), "CADIFACT_ERROR_OK");
    for (const std::string& name : log.factoryErrorNames) {
        EXPECT_EQ(name.rfind("CADIFACT_ERROR_", 0), 0U);
        EXPECT_EQ(std::count(log.factoryErrorNames.begin(), log.factoryErrorNames.end(), name), 1);
    }
}

}  // namespace
