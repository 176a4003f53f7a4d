// What one logged call costs in system calls, when its flushes lie within one page of the file.

#include "support/GeneratorTest.h"

namespace
{

using Scrivel2::Scrivel2XmlGenConnect;
using Scrivel2::Scrivel2XmlGenRun;
using ScrivelTest::platform;

class SystemCalls : public ScrivelTest::GeneratorTest<>
{
protected:
    static void ResetCounts()
    {
        platform.write.Reset();
        platform.pwrite.Reset();
        platform.pread.Reset();
        platform.lseek.Reset();
        platform.ftruncate.Reset();
        platform.fstat.Reset();
        platform.getpid.Reset();
        platform.getpid.Use([] { return 4242; });
    }

    static void ExpectTwoWritesAndTwoProcessIds()
    {
        EXPECT_EQ(platform.pwrite.Calls(), 2U);
        EXPECT_EQ(platform.getpid.Calls(), 2U);
        EXPECT_EQ(platform.lseek.Calls(), 0U);
        EXPECT_EQ(platform.write.Calls(), 0U);
        EXPECT_EQ(platform.pread.Calls(), 0U);
        EXPECT_EQ(platform.ftruncate.Calls(), 0U);
        EXPECT_EQ(platform.fstat.Calls(), 0U);
    }
};

TEST_F(SystemCalls, RunPhaseCallTakesTwoWritesAndTwoProcessIds)
{
    const auto log = Make<Scrivel2XmlGenRun>();
    log->StartLogging();
    for (int i = 0; i < 3; ++i) {
        ResetCounts();
        const unsigned int call = log->EnterCadiCall("CADIRegRead");
        log->WriteDecimal("regCount", 1);
        log->FlushOutput(false, "CADIRegRead");
        log->WriteContinueFunction(call, "CADIRegRead");
        log->WriteBool("return", true);
        log->WriteIdent("CADIRegRead", false, true);
        log->FlushOutput(true, "");
        ExpectTwoWritesAndTwoProcessIds();
    }
}

TEST_F(SystemCalls, ConnectionPhaseCallTakesTwoWritesAndTwoProcessIds)
{
    const auto log = Make<Scrivel2XmlGenConnect>();
    log->StartLogging();
    for (unsigned int call = 1; call <= 3; ++call) {
        ResetCounts();
        log->WriteCloseInterruptedFunction("GetTargetInfos");
        log->IncCallNo();
        log->WriteDetailedIdent("GetTargetInfos");
        log->WriteDecimal("count", 1);
        log->FlushOutput(false, "GetTargetInfos");
        log->WriteContinueFunction(call, "GetTargetInfos");
        log->WriteBool("return", true);
        log->WriteIdent("GetTargetInfos", false, true);
        log->FlushOutput(true, "");
        ExpectTwoWritesAndTwoProcessIds();
    }
}

}  // namespace
