// What goes wrong around such a log when its caller does not look out, done through the layer: one test
// for each trap.

#include "LoggedCall.h"

#include "layer/CallReader.h"
#include "layer/LayerTest.h"

#include <atomic>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <locale>
#include <memory>
#include <thread>

#include <sys/resource.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace Scrivel2;
using ScrivelTest::IsDocument;
using ScrivelTest::platform;
using ScrivelTest::ReadCalls;

namespace
{

class Traps : public ScrivelTest::LayerTest
{
};

// ---- The order of operations --------------------------------------------------------------------

TEST_F(Traps, ResultsDoNotOverwriteACallThatHadNoArguments)
{
    RunLog log("run");
    {
        LoggedCall call(log, "CADIExecStop");
        call.Results([](auto& xml) { xml.WriteDecimal("r", 1); });
    }
    EXPECT_EQ(InRunFile(), RunFile(StartTag("CADIExecStop") + R"(
        <return_time>0.000000 s</return_time>
        <r>1</r>
    </CADIExecStop>
)"));
}

TEST_F(Traps, ConnectionPhaseCallsStandInsideTheRootWithTheirArguments)
{
    ConnectLog log("run");
    for (unsigned int i = 1; i <= 2; ++i) {
        LoggedCall call(log, "GetTargetInfos");
        call.Arguments([&](auto& xml) { xml.WriteDecimal("a", i); });
    }
    EXPECT_EQ(InRunFile(), RunFile(R"(    <GetTargetInfos call_num="1" call_time="0.000000 s">
        <a>1</a>
        <return_time>0.000000 s</return_time>
    </GetTargetInfos>
    <GetTargetInfos call_num="2" call_time="0.000000 s">
        <a>2</a>
        <return_time>0.000000 s</return_time>
    </GetTargetInfos>
)"));
}

TEST_F(Traps, OlderOfTwoCallsReturnsFirst)
{
    RunLog log("run");
    LoggedCall older(log, "CADIExecContinue");
    LoggedCall younger(log, "CADIExecStop");
    older.Results([](auto& xml) { xml.WriteDecimal("r", 1); });
    EXPECT_TRUE(IsDocument(InRunFile()));
    younger.Results([](auto& xml) { xml.WriteDecimal("r", 2); });
    EXPECT_EQ(InRunFile(), RunFile(StartTag("CADIExecContinue") + R"(
    </CADIExecContinue>

<!-- Call 1 ("CADIExecContinue") interrupted -->

)" + StartTag("CADIExecStop", 2) + R"(
    </CADIExecStop>

<!-- Continuing call 1 ("CADIExecContinue") -->

    <CADIExecContinue call_num="1">
        <return_time>0.000000 s</return_time>
        <r>1</r>
    </CADIExecContinue>
    <CADIExecStop call_num="2">
        <return_time>0.000000 s</return_time>
        <r>2</r>
    </CADIExecStop>
)"));
}

TEST_F(Traps, LogEndsWithACallOpen)
{
    RunLog log("run");
    LoggedCall call(log, "CADIExecContinueForever");
    log.EndLogging();
    const std::string ended = RunFile(StartTag("CADIExecContinueForever") + R"(
    </CADIExecContinueForever>

<!-- Log ended -->

)");
    EXPECT_EQ(InRunFile(), ended);
    call.Results([](auto& xml) { xml.WriteDecimal("r", 1); });
    EXPECT_EQ(InRunFile(), ended);
}

TEST_F(Traps, LogEndsWithTwoCallsOpen)
{
    RunLog log("run");
    const LoggedCall older(log, "older");
    const LoggedCall younger(log, "younger");
    log.EndLogging();
    EXPECT_TRUE(IsDocument(InRunFile()));
}

TEST_F(Traps, CallEndsWhileAnOlderOneIsOpen)
{
    RunLog log("run");
    const LoggedCall older(log, "older");
    {
        const LoggedCall callback(log, "callback");
    }
    EXPECT_TRUE(IsDocument(InRunFile()));
    const LoggedCall next(log, "next");
    EXPECT_TRUE(IsDocument(InRunFile()));
}

TEST_F(Traps, CommentBetweenCallsStaysInACompleteFile)
{
    RunLog log("run");
    log.Comment("loaded crc.elf");
    EXPECT_EQ(InRunFile(), RunFile("\n<!-- loaded crc.elf -->\n\n"));
    {
        const LoggedCall call(log, "CADIExecStop");
    }
    EXPECT_EQ(InRunFile(), RunFile(R"(
<!-- loaded crc.elf -->

)" + StartTag("CADIExecStop") + R"(
        <return_time>0.000000 s</return_time>
    </CADIExecStop>
)"));
}

TEST_F(Traps, CommentInsideACallKeepsItsEndTagAndTheRoots)
{
    RunLog log("run");
    LoggedCall call(log, "CADIExecStop");
    log.Comment("from another thread");
    EXPECT_EQ(InRunFile(), RunFile(StartTag("CADIExecStop") + "\n"
                                                              "    \n"
                                                              "<!-- from another thread -->\n"
                                                              "\n"
                                                              "    </CADIExecStop>\n"));
    call.Results([](auto& xml) { xml.WriteDecimal("r", 1); });
    EXPECT_EQ(ReadCalls(InRunFile()).calls.at(1).Result("r"), "1");
}

TEST_F(Traps, CommentMayHoldTwoHyphensAndControlCharacters)
{
    RunLog log("run");
    log.Comment("a--b --> \x01\xff");
    EXPECT_EQ(InRunFile(), RunFile("\n<!-- a- -b - -> \\x01\\xff -->\n\n"));
    EXPECT_TRUE(IsDocument(InRunFile()));
}

/// Runs `crash` in a child process, which writes the logs of a process of another number, and returns
/// the signal it died of.
template <typename Crash>
int SignalOf(Crash crash)
{
    const pid_t child = fork();
    if (child == 0) {
        const rlimit none{0, 0};
        setrlimit(RLIMIT_CORE, &none);
        std::signal(SIGSEGV, SIG_DFL);
        crash();
        _exit(0);
    }
    int status = 0;
    waitpid(child, &status, 0);
    return WIFSIGNALED(status) ? WTERMSIG(status) : 0;
}

TEST_F(Traps, TargetCrashesInsideACall)
{
    EXPECT_EQ(SignalOf([] {
                  RunLog log("run");
                  LoggedCall call(log, "CADIMemWrite");
                  call.Arguments([](auto& xml) { xml.WriteHex("address", 0x40000000, 8); });
                  raise(SIGSEGV);
              }),
              SIGSEGV);
    EXPECT_EQ(InRunFile(), RunFile(StartTag("CADIMemWrite") + R"(
        <address>0x40000000</address>
    </CADIMemWrite>
)"));
}

TEST_F(Traps, TargetCrashesInsideACallback)
{
    EXPECT_EQ(SignalOf([] {
                  RunLog log("run");
                  const LoggedCall call(log, "CADIExecContinue");
                  LoggedCall callback(log, "modeChange");
                  callback.Arguments([](auto& xml) { xml.WriteDecimal("a", 1); });
                  raise(SIGKILL);
              }),
              SIGKILL);
    const auto read = ReadCalls(InRunFile());
    ASSERT_TRUE(read.accepted);
    EXPECT_EQ(read.calls.at(1).name, "CADIExecContinue");
    EXPECT_EQ(read.calls.at(1).returns, 0U);
    EXPECT_EQ(read.calls.at(2).Argument("a"), "1");
}

TEST_F(Traps, LogOfAProcessThatDiesBetweenTwoCallsDoesNotSayThatItEnded)
{
    EXPECT_EQ(SignalOf([] {
                  RunLog log("run");
                  {
                      const LoggedCall call(log, "CADIExecStop");
                  }
                  raise(SIGKILL);
              }),
              SIGKILL);
    EXPECT_EQ(InRunFile(), RunFile("    <CADIExecStop call_num=\"1\"\n"
                                   "     call_time=\"0.000000 s\"\n"
                                   "     threadId=\"1234\">\n"
                                   "        <return_time>0.000000 s</return_time>\n"
                                   "    </CADIExecStop>\n"));
}

TEST_F(Traps, CallNameThatIsNoIdentifierIsMadeOne)
{
    RunLog log("run");
    {
        LoggedCall call(log, "2nd call--of <all>");
        {
            const LoggedCall callback(log, "callback");
            EXPECT_TRUE(IsDocument(InRunFile()));
        }
    }
    const auto read = ReadCalls(InRunFile());
    ASSERT_TRUE(read.accepted);
    EXPECT_EQ(read.calls.at(1).name, "_nd_call-_of__all_");
    EXPECT_EQ(read.calls.at(1).returns, 1U);
}

TEST_F(Traps, LongNameOfAnInterruptingCallDoesNotStickOut)
{
    RunLog log("run");
    LoggedCall older(log, "a");
    LoggedCall younger(log, std::string(5000, 'y'));
    older.Results([](auto&) {});
    EXPECT_TRUE(IsDocument(InRunFile()));
    younger.Results([](auto&) {});
    EXPECT_EQ(ReadCalls(InRunFile()).calls.at(2).name, std::string(60, 'y'));
}

TEST_F(Traps, LongNameOfAnInterruptingCallDoesNotStickOutBehindArguments)
{
    RunLog log("run");
    LoggedCall older(log, "a");
    LoggedCall younger(log, std::string(5000, 'y'));
    older.Arguments([](auto&) {});
    EXPECT_TRUE(IsDocument(InRunFile()));
}

/// Whether `succeeds` is true in a forked child, which must not take longer than some seconds.
template <typename Succeeds>
bool InChild(Succeeds succeeds)
{
    const pid_t child = fork();
    if (child == 0) {
        alarm(120);
        _exit(succeeds() ? 0 : 1);
    }
    int status = 0;
    waitpid(child, &status, 0);
    return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

TEST_F(Traps, ForkedChildDoesNotLog)
{
    RunLog log("run");
    LoggedCall call(log, "CADIExecContinue");
    const std::string before = InRunFile();
    EXPECT_TRUE(InChild([&] {
        platform.getpid.Use([] { return 4243; });
        call.Arguments([](auto& xml) { xml.WriteDecimal("child", 1); });
        call.Results([](auto& xml) { xml.WriteDecimal("child", 1); });
        const LoggedCall childs(log, "child");
        log.Comment("child");
        log.EndLogging();
        return childs.Number() == 0 && !log.IsGood();
    }));
    EXPECT_EQ(InRunFile(), before);
    call.Results([](auto& xml) { xml.WriteDecimal("r", 1); });
    const auto read = ReadCalls(InRunFile());
    ASSERT_TRUE(read.accepted);
    EXPECT_EQ(read.calls.size(), 1U);
    EXPECT_EQ(read.calls.at(1).Result("r"), "1");
}

TEST_F(Traps, ChildThatNoHandlerOfAForkKnowsOfDoesNotLog)
{
    RunLog log("run");
    const LoggedCall call(log, "CADIExecContinue");
    const std::string before = InRunFile();
    const auto child =
        static_cast<pid_t>(syscall(SYS_clone, SIGCHLD, nullptr, nullptr, nullptr, nullptr));
    if (child == 0) {
        const LoggedCall childs(log, "child");
        log.EndLogging();
        _exit(childs.Number() == 0 && !log.IsGood() ? 0 : 1);
    }
    int status = -1;
    waitpid(child, &status, 0);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(InRunFile(), before);
}

TEST_F(Traps, ForkedChildLogsIntoLogsOfItsOwn)
{
    const RunLog log("run");
    EXPECT_TRUE(InChild([] {
        platform.getpid.Use([] { return 4243; });
        RunLog own("run");
        const LoggedCall call(own, "CADIExecStop");
        return call.Number() == 1 && own.FileName() == "run-4243.xml";
    }));
    EXPECT_EQ(InRunFile(), RunFile(""));
    EXPECT_TRUE(IsDocument(FileText("run-4243.xml")));
}

TEST_F(Traps, ChildForkedWhileTheLogIsLockedGoesOn)
{
    platform.pthread_self.Reset();  // sanitizers ask for it in new threads
    RunLog log("run");
    std::atomic<bool> locked{false};
    std::atomic<bool> forked{false};
    std::thread holder([&] {
        const LoggedCall call(log, "slow", [&](auto&) {
            locked = true;
            while (!forked) {
                std::this_thread::yield();
            }
        });
    });
    while (!locked) {
        std::this_thread::yield();
    }
    EXPECT_TRUE(InChild([&] { return LoggedCall(log, "child").Number() == 0; }));
    forked = true;
    holder.join();
    EXPECT_TRUE(IsDocument(InRunFile()));
}

TEST_F(Traps, EndedLogIsNotTouchedWhenItsGuardsGo)
{
    auto log = std::make_unique<RunLog>("run");
    auto call = std::make_unique<LoggedCall<Scrivel2XmlGenRun>>(*log, "CADIExecContinue");
    log->EndLogging();
    const std::string ended = InRunFile();
    call.reset();
    log.reset();
    EXPECT_EQ(InRunFile(), ended);
}

// ---- Names and text -----------------------------------------------------------------------------

TEST_F(Traps, LogNameThatXmlDoesNotAllowIsMadeLegal)
{
    for (const char* name : {"logs/run", "my run", "\"run\"", "<run>", "1run", "-run", ".run", ""}) {
        RunLog log(name);
        {
            const LoggedCall call(log, "CADIExecStop");
        }
        log.EndLogging();
        EXPECT_EQ(ReadCalls(FileText(log.FileName())).calls.size(), 1U) << name;
    }
}

TEST_F(Traps, TwoLogsOfOneNameHaveTwoFiles)
{
    RunLog first("run");
    ConnectLog second("run");
    {
        const LoggedCall call(first, "inFirst");
    }
    {
        const LoggedCall call(second, "inSecond");
    }
    EXPECT_EQ(first.FileName(), "run-4242.xml");
    EXPECT_EQ(second.FileName(), "run-2-4242.xml");
    EXPECT_EQ(ReadCalls(FileText("run-4242.xml")).calls.at(1).name, "inFirst");
    EXPECT_EQ(ReadCalls(FileText("run-2-4242.xml")).calls.at(1).name, "inSecond");
}

TEST_F(Traps, LogOfAnOlderProcessOfTheSameIdIsKept)
{
    std::ofstream("run-4242.xml") << "<run-4242/>\n";
    const RunLog log("run");
    EXPECT_EQ(FileText("run-4242.xml"), "<run-4242/>\n");
    EXPECT_EQ(log.FileName(), "run-2-4242.xml");
}

TEST_F(Traps, RegistersSpacesAndParametersMayBeNamedWithAHyphenOrADot)
{
    RunLog log("run");
    eslapi::CADIRegInfo_t reg{};
    std::strcpy(reg.name, "-x");
    eslapi::CADIMemSpaceInfo_t space{};
    std::strcpy(space.name, ".text");
    eslapi::CADIParameterInfo_t parameter{};
    std::strcpy(parameter.name, "-p.q");
    log.LearnRegisters(&reg, 1);
    log.LearnMemSpaces(&space, 1);
    {
        LoggedCall call(log, "CADIRegGetMap");
        call.Results([&](auto& xml) {
            xml.WriteRegInfo(reg);
            xml.WriteReg("reg", eslapi::CADIReg_t{});
            xml.WriteMemSpaceInfo(space);
            xml.WriteAddr("at", {0, 1});
            xml.WriteParameterInfoArray("parameters", &parameter, 1);
            xml.WriteDecimal(".line", 1);
        });
    }
    const auto call = ReadCalls(InRunFile()).calls[1];
    EXPECT_EQ(call.Result("_x/regNumber"), "0");
    EXPECT_EQ(call.Result("_text/memSpaceId"), "0");
    EXPECT_EQ(call.Result("at/spaceName"), ".text");
    EXPECT_EQ(call.Result("parameters/_p.q/id"), "0");
    EXPECT_EQ(call.Result("_line"), "1");
}

TEST_F(Traps, EveryCharacterCanBeWritten)
{
    RunLog log("run");
    {
        LoggedCall call(log, "c");
        call.Arguments([](auto& xml) {
            for (int i = 0; i < 256; ++i) {
                char c = static_cast<char>(i);
                xml.WriteChar("c", c);
                xml.WriteCharPtrVal("p", &c);
            }
            xml.WriteCharPtrVal("null", nullptr);
        });
    }
    const auto call = ReadCalls(InRunFile()).calls[1];
    ASSERT_EQ(call.arguments.size(), 513U);
    EXPECT_EQ(call.arguments[2 * '<'].text, "<");
    EXPECT_EQ(call.arguments[2 * 'x' + 1].text, "x");
    EXPECT_EQ(call.arguments[2 * 0xe9].text, "\\xe9");
    EXPECT_EQ(call.arguments[1].text, "\\x00");
    EXPECT_EQ(call.arguments[512].text, "NULL");
}

TEST_F(Traps, HighBytesAreEscapedInAnEightBitLocale)
{
    // As in a Latin-1 locale: there a byte from 0xa0 up is printable, unless the thread has another one.
    platform.isprint.Use([](int c) {
        const bool global = uselocale(static_cast<locale_t>(nullptr)) == LC_GLOBAL_LOCALE;
        return global && c >= 0xa0 ? 1 : platform.isprint.Real(c);
    });
    ASSERT_EQ(ScrivelXmlGenBase::CheckString("\xe9"), "\xe9");
    RunLog log("run");
    {
        const LoggedCall call(log, "c", [](auto& xml) { xml.WriteString("text", "caf\xe9"); });
    }
    EXPECT_EQ(ReadCalls(InRunFile()).calls[1].Argument("text"), "caf\\xe9");
    EXPECT_EQ(ScrivelXmlGenBase::CheckString("\xe9"), "\xe9");  // the caller's locale is in force again
}

/// Groups digits by two.
class Grouping : public std::numpunct<char>
{
protected:
    char do_thousands_sep() const override { return ','; }
    std::string do_grouping() const override { return "\2"; }
};

TEST_F(Traps, GlobalLocaleThatGroupsDigitsChangesNothing)
{
    const std::locale before = std::locale::global(std::locale(std::locale::classic(), new Grouping));
    RunLog log("run");
    {
        const LoggedCall call(log, "c", [](auto& xml) {
            xml.WriteDecimal("d", 1234567);
            xml.WriteHex("h", 0x1234567, 1);
        });
    }
    std::locale::global(before);
    const auto call = ReadCalls(InRunFile()).calls[1];
    EXPECT_EQ(log.FileName(), "run-4242.xml");
    EXPECT_EQ(call.Argument("d"), "1234567");
    EXPECT_EQ(call.Argument("h"), "0x1234567");
}

TEST_F(Traps, HostNameOfAnyLengthHasRoom)
{
    const std::string host(200, 'h');
    const auto stub = platform.gethostname.Use([&](char* name, std::size_t size) {
        name[host.copy(name, size - 1)] = '\0';
        return 0;
    });
    const RunLog log("run");
    EXPECT_NE(InRunFile().find(" hostname=\"" + host + "\"\n"), std::string::npos);
}

}  // namespace
