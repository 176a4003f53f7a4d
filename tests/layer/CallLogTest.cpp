// The log of the layer: its life, the names that it learns from the target, its lock.

#include "LoggedCall.h"

#include "layer/CallReader.h"
#include "layer/LayerTest.h"

#include <cstring>
#include <thread>

using namespace Scrivel2;

namespace
{

class CallLogs : public ScrivelTest::LayerTest
{
protected:
    static std::string EndedRunFile(const std::string& body)
    {
        return RunFile(body + "\n<!-- Log ended -->\n\n");
    }
};

TEST_F(CallLogs, LogIsCompleteFromItsStart)
{
    const RunLog log("run");
    EXPECT_EQ(log.FileName(), "run-4242.xml");
    EXPECT_EQ(FileText("run-4242.xml"), RunFile(""));
}

TEST_F(CallLogs, DestructionEndsTheLog)
{
    {
        const ConnectLog log("run");
    }
    EXPECT_EQ(FileText("run-4242.xml"), EndedRunFile(""));
    EXPECT_EQ(ScrivelTest::platform.close.Calls(), 1U);
}

TEST_F(CallLogs, IsGoodUntilItHasEnded)
{
    RunLog log("run");
    EXPECT_TRUE(log.IsGood());
    log.EndLogging();
    EXPECT_FALSE(log.IsGood());
    log.EndLogging();
    EXPECT_EQ(FileText("run-4242.xml"), EndedRunFile(""));
}

TEST_F(CallLogs, EndTakesOneWriteAndNoOther)
{
    RunLog log("run");
    const unsigned int before = ScrivelTest::platform.pwrite.Calls();
    log.EndLogging();
    EXPECT_EQ(ScrivelTest::platform.pwrite.Calls(), before + 1);
}

TEST_F(CallLogs, EndTellsThatNothingIsMissingAfterACall)
{
    RunLog log("run");
    {
        const LoggedCall call(log, "CADIExecStop");
    }
    const std::string call = "    <CADIExecStop call_num=\"1\"\n"
                             "     call_time=\"0.000000 s\"\n"
                             "     threadId=\"1234\">\n"
                             "        <return_time>0.000000 s</return_time>\n"
                             "    </CADIExecStop>\n";
    EXPECT_EQ(FileText("run-4242.xml"), RunFile(call));
    log.EndLogging();
    EXPECT_EQ(FileText("run-4242.xml"), EndedRunFile(call));
}

TEST_F(CallLogs, EndStandsAfterACallThatIsOpenAndAComment)
{
    RunLog log("run");
    const LoggedCall call(log, "CADIExecStop");
    log.Comment("waiting");
    log.EndLogging();
    EXPECT_EQ(FileText("run-4242.xml"), EndedRunFile("    <CADIExecStop call_num=\"1\"\n"
                                                     "     call_time=\"0.000000 s\"\n"
                                                     "     threadId=\"1234\">\n"
                                                     "    \n<!-- waiting -->\n\n"
                                                     "    </CADIExecStop>\n"));
}

TEST_F(CallLogs, IsGoodUntilAWriteFails)
{
    RunLog log("run");
    ScrivelTest::platform.pwrite.Use([](int, const void*, std::size_t, off_t) -> ssize_t {
        errno = ENOSPC;
        return -1;
    });
    {
        const LoggedCall call(log, "CADIExecStop");
    }
    EXPECT_FALSE(log.IsGood());
    ScrivelTest::platform.pwrite.Reset();
    EXPECT_EQ(FileText("run-4242.xml"), RunFile(""));
}

TEST_F(CallLogs, LogThatCannotBeMadeIsReportedAndTakesCalls)
{
    ScrivelTest::platform.open.Use([](const char*, int, mode_t) {
        errno = EACCES;
        return -1;
    });
    testing::internal::CaptureStderr();
    RunLog log("run");
    {
        LoggedCall call(log, "CADIExecReset");
        call.Arguments([](auto& xml) { xml.WriteDecimal("level", 7); });
    }
    log.Comment("lost");
    EXPECT_FALSE(log.IsGood());
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "Scrivel: Unable to open logfile \"run-4242.xml\".\n"
              "    Error given by OS: Permission denied\n");
}

// ---- Names that the target describes ------------------------------------------------------------

class LearnedNames : public CallLogs
{
protected:
    std::string Written()
    {
        LoggedCall call(log, "c", [](auto& xml) {
            eslapi::CADIReg_t reg{};
            reg.regNumber = 10;
            xml.WriteReg("reg", reg);
            xml.WriteAddr("at", {1, 0x10});
        });
        const auto read = ScrivelTest::ReadCalls(FileText("run-4242.xml"));
        const auto& arguments = read.calls.at(call.Number()).arguments;
        return arguments.front().path + " " + read.calls.at(call.Number()).Argument("at/spaceName");
    }

    static eslapi::CADIRegInfo_t Register(std::uint32_t number, const char* name)
    {
        eslapi::CADIRegInfo_t info{};
        info.regNumber = number;
        std::strcpy(info.name, name);
        return info;
    }

    static eslapi::CADIMemSpaceInfo_t Space(std::uint32_t id, const char* name)
    {
        eslapi::CADIMemSpaceInfo_t info{};
        info.memSpaceId = id;
        std::strcpy(info.name, name);
        return info;
    }

    RunLog log{"run"};
};

TEST_F(LearnedNames, UnknownRegistersAndSpacesHaveTheNamesOfTheWriters)
{
    EXPECT_EQ(Written(), "reg/regNumber unknown memSpaceInfo");
}

TEST_F(LearnedNames, DescribedRegistersAndSpacesBearTheirNames)
{
    const eslapi::CADIRegInfo_t registers[] = {Register(9, "s1"), Register(10, "a0")};
    log.LearnRegisters(registers, 2);
    const auto space = Space(1, "RAM");
    log.LearnMemSpaces(&space, 1);
    EXPECT_EQ(Written(), "a0/regNumber RAM");
}

TEST_F(LearnedNames, LaterDescriptionsCount)
{
    auto reg = Register(10, "x10");
    log.LearnRegisters(&reg, 1);
    reg = Register(10, "a0");
    log.LearnRegisters(&reg, 1);
    EXPECT_EQ(Written(), "a0/regNumber unknown memSpaceInfo");
}

TEST_F(LearnedNames, NullListsTeachNothing)
{
    log.LearnRegisters(nullptr, 7);
    log.LearnMemSpaces(nullptr, 7);
    EXPECT_EQ(Written(), "reg/regNumber unknown memSpaceInfo");
}

TEST_F(LearnedNames, ListsFromWithinACallableTeachNothing)
{
    const auto reg = Register(10, "a0");
    const auto space = Space(1, "RAM");
    const LoggedCall call(log, "c", [&](auto&) {
        log.LearnRegisters(&reg, 1);
        log.LearnMemSpaces(&space, 1);
    });
    EXPECT_EQ(Written(), "reg/regNumber unknown memSpaceInfo");
}

TEST_F(LearnedNames, NameThatFillsItsFieldIsTakenWhole)
{
    auto reg = Register(10, "");
    std::memset(reg.name, 'x', sizeof reg.name);
    log.LearnRegisters(&reg, 1);
    EXPECT_EQ(Written(), std::string(sizeof reg.name, 'x') + "/regNumber unknown memSpaceInfo");
}

// ---- The lock -----------------------------------------------------------------------------------

TEST_F(CallLogs, AnotherThreadsCallGoesThroughWhileTheTargetRuns)
{
    ScrivelTest::platform.pthread_self.Reset();  // sanitizers ask for it in new threads
    RunLog log("run");
    LoggedCall call(log, "CADIExecContinue");
    std::thread([&] { const LoggedCall other(log, "CADIExecStop"); }).join();
    call.Results([](auto&) {});
    const auto read = ScrivelTest::ReadCalls(FileText("run-4242.xml"));
    EXPECT_EQ(read.calls.at(1).returns, 1U);
    EXPECT_EQ(read.calls.at(2).returns, 1U);
}

}  // namespace
