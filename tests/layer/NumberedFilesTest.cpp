// Logs with a limit of size, which go on in files with numbers.

#include "LoggedCall.h"

#include "layer/CallReader.h"
#include "layer/Environment.h"
#include "layer/LayerTest.h"

#include <csignal>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <map>
#include <set>
#include <thread>
#include <vector>

#include <sys/wait.h>

using namespace Scrivel2;
using ScrivelTest::Environment;
using ScrivelTest::platform;
using ScrivelTest::ReadCalls;

namespace
{

namespace fs = std::filesystem;

class NumberedFiles : public ScrivelTest::LayerTest
{
protected:
    static LogOptions Limit(std::uint64_t size)
    {
        LogOptions options;
        options.fileSize = size;
        return options;
    }

    /// The numbers of the calls in each file of the log "run", in the order of the files. All must be
    /// whole documents.
    static std::vector<std::set<unsigned int>> CallsOfFiles()
    {
        std::vector<std::set<unsigned int>> files;
        for (std::string name = "run-4242.xml"; fs::exists(name);
             name = "run-4242." + std::to_string(files.size() + 1) + ".xml") {
            const auto read = ReadCalls(FileText(name));
            EXPECT_TRUE(read.accepted) << name;
            files.emplace_back();
            for (const auto& numbered : read.calls) {
                files.back().insert(numbered.first);
            }
        }
        return files;
    }

    static std::string Call(unsigned int number)
    {
        return "    <c call_num=\"" + std::to_string(number) +
               "\"\n"
               "     call_time=\"0.000000 s\"\n"
               "     threadId=\"1234\">\n"
               "        <return_time>0.000000 s</return_time>\n"
               "    </c>\n";
    }

    static std::string Comment(const std::string& text) { return "\n<!-- " + text + " -->\n\n"; }
};

using Numbers = std::vector<std::set<unsigned int>>;

TEST_F(NumberedFiles, FullFileNamesTheNextOneInWhichTheNumbersOfCallsGoOn)
{
    RunLog log("run", Limit(1));
    for (int i = 0; i < 3; ++i) {
        const LoggedCall call(log, "c");
    }
    log.EndLogging();
    EXPECT_EQ(log.FileName(), "run-4242.xml");
    EXPECT_EQ(FileText("run-4242.xml"), RunFile(Call(1) + Comment("Log continued in run-4242.2.xml")));
    EXPECT_EQ(FileText("run-4242.2.xml"), RunFile(Comment("Log continued from run-4242.xml") + Call(2) +
                                                  Comment("Log continued in run-4242.3.xml")));
    EXPECT_EQ(FileText("run-4242.3.xml"),
              RunFile(Comment("Log continued from run-4242.2.xml") + Call(3) + Comment("Log ended")));
}

TEST_F(NumberedFiles, FileIsFullOnceItHasTheSize)
{
    const std::size_t size = (Header("run") + Call(1) + Call(2)).size();
    for (const std::size_t limit : {size, size + 1}) {
        RunLog log("run", Limit(limit));
        for (int i = 0; i < 3; ++i) {
            const LoggedCall call(log, "c");
        }
        EXPECT_EQ(CallsOfFiles(), limit == size ? (Numbers{{1, 2}, {3}}) : (Numbers{{1, 2, 3}}));
        log.EndLogging();
        fs::remove("run-4242.xml");
        fs::remove("run-4242.2.xml");
    }
}

TEST_F(NumberedFiles, ConnectionLogsHaveThemToo)
{
    ConnectLog log("run", Limit(1));
    for (int i = 0; i < 2; ++i) {
        const LoggedCall call(log, "c");
    }
    EXPECT_EQ(CallsOfFiles(), (Numbers{{1}, {2}}));
}

TEST_F(NumberedFiles, LogWithoutALimitHasOneFile)
{
    RunLog log("run");
    const std::string text(1000, 't');
    for (int i = 0; i < 100; ++i) {
        const LoggedCall call(log, "c", [&](auto& xml) { xml.WriteString("text", text); });
    }
    EXPECT_EQ(CallsOfFiles().size(), 1U);
}

TEST_F(NumberedFiles, FileWaitsForTheCallsThatAreOpen)
{
    RunLog log("run", Limit(1000));
    {
        LoggedCall open(log, "open", [](auto& xml) { xml.WriteString("a", std::string(800, 'a')); });
        const LoggedCall callback(log, "callback");
    }
    EXPECT_EQ(CallsOfFiles(), (Numbers{{1, 2}}));
    const LoggedCall next(log, "next");
    EXPECT_EQ(CallsOfFiles(), (Numbers{{1, 2}, {3}}));
}

TEST_F(NumberedFiles, ResultsGivenTwiceDoNotEndAnotherCall)
{
    RunLog log("run", Limit(400));
    LoggedCall open(log, "open");
    {
        LoggedCall callback(log, "callback");
        callback.Results([](auto&) {});
        callback.Results([](auto&) {});
    }
    const LoggedCall next(log, "next");
    EXPECT_EQ(CallsOfFiles(), (Numbers{{1, 2, 3}}));
}

TEST_F(NumberedFiles, CallThatStaysOpenGoesOnInTheNextFileAtTwiceTheSize)
{
    RunLog log("run", Limit(1000));
    LoggedCall open(log, "open", [](auto& xml) { xml.WriteString("a", std::string(1900, 'a')); });
    {
        const LoggedCall next(log, "c");
    }
    open.Results([](auto& xml) { xml.WriteDecimal("r", 1); });
    EXPECT_EQ(FileText("run-4242.xml"), RunFile("    <open call_num=\"1\"\n"
                                                "     call_time=\"0.000000 s\"\n"
                                                "     threadId=\"1234\">\n"
                                                "        <a>" +
                                                std::string(1900, 'a') +
                                                "</a>\n"
                                                "    </open>\n" +
                                                Comment("Log continued in run-4242.2.xml")));
    EXPECT_EQ(FileText("run-4242.2.xml"), RunFile(Comment("Log continued from run-4242.xml") + Call(2) +
                                                  Comment("Continuing call 1 (\"open\")") +
                                                  "    <open call_num=\"1\">\n"
                                                  "        <return_time>0.000000 s</return_time>\n"
                                                  "        <r>1</r>\n"
                                                  "    </open>\n"));
}

TEST_F(NumberedFiles, ArgumentsOfACallMayComeInTheNextFile)
{
    RunLog log("run", Limit(200));
    LoggedCall older(log, "older", [](auto& xml) { xml.WriteString("a", std::string(900, 'a')); });
    LoggedCall younger(log, "younger");
    older.Arguments([](auto& xml) { xml.WriteDecimal("b", 2); });
    younger.Results([](auto& xml) { xml.WriteDecimal("r", 2); });
    older.Results([](auto& xml) { xml.WriteDecimal("r", 1); });
    EXPECT_EQ(CallsOfFiles(), (Numbers{{1}, {1, 2}}));
    const auto second = ReadCalls(FileText("run-4242.2.xml"));
    EXPECT_EQ(second.calls.at(1).Argument("b"), "2");
    EXPECT_EQ(second.calls.at(1).Result("r"), "1");
    EXPECT_EQ(second.calls.at(2).Result("r"), "2");
}

TEST_F(NumberedFiles, NamesThatWereLearntStay)
{
    RunLog log("run", Limit(1));
    eslapi::CADIRegInfo_t info{};
    info.regNumber = 10;
    std::strcpy(info.name, "a0");
    log.LearnRegisters(&info, 1);
    for (int i = 0; i < 2; ++i) {
        const LoggedCall call(log, "c", [](auto& xml) {
            eslapi::CADIReg_t reg{};
            reg.regNumber = 10;
            xml.WriteReg("reg", reg);
        });
    }
    EXPECT_EQ(ReadCalls(FileText("run-4242.2.xml")).calls.at(2).Argument("a0/regNumber"), "10");
}

TEST_F(NumberedFiles, TimesCountFromTheBeginningOfTheirFile)
{
    RunLog log("run", Limit(1));
    SetClock(1000, 5);
    {
        const LoggedCall first(log, "c");
    }
    SetClock(1000, 20);
    const LoggedCall second(log, "c");
    EXPECT_NE(FileText("run-4242.xml").find(" call_time=\"0.000005 s\""), std::string::npos);
    EXPECT_NE(FileText("run-4242.2.xml").find(" call_time=\"0.000000 s\""), std::string::npos);
}

TEST_F(NumberedFiles, NumberThatIsInUseIsLeftOut)
{
    std::ofstream("run-4242.2.xml") << "<old/>";
    RunLog log("run", Limit(1));
    for (int i = 0; i < 2; ++i) {
        const LoggedCall call(log, "c");
    }
    EXPECT_EQ(FileText("run-4242.2.xml"), "<old/>");
    EXPECT_EQ(FileText("run-4242.xml"), RunFile(Call(1) + Comment("Log continued in run-4242.3.xml")));
    EXPECT_EQ(FileText("run-4242.3.xml"), RunFile(Comment("Log continued from run-4242.xml") + Call(2)));
}

TEST_F(NumberedFiles, StandInTheFolderOfTheFirstWhereverTheProcessGoes)
{
    LogOptions options = Limit(1);
    options.folder = "logs";
    RunLog log("run", options);
    {
        const LoggedCall call(log, "c");
    }
    fs::create_directory("elsewhere");
    fs::current_path("elsewhere");
    const LoggedCall call(log, "c");
    EXPECT_TRUE(fs::exists("../logs/run-4242.2.xml"));
    EXPECT_TRUE(fs::is_empty("."));
}

TEST_F(NumberedFiles, LogGoesOnWhereItIsWhenTheNextFileCannotBeMade)
{
    RunLog log("run", Limit(400));
    unsigned int attempts = 0;
    const auto stub = platform.open.Use([&](const char*, int, mode_t) {
        ++attempts;
        errno = EACCES;
        return -1;
    });
    testing::internal::CaptureStderr();
    for (int i = 0; i < 8; ++i) {
        const LoggedCall call(log, "c");
    }
    const std::string reported = testing::internal::GetCapturedStderr();
    platform.open.Reset();
    EXPECT_EQ(CallsOfFiles(), (Numbers{{1, 2, 3, 4, 5, 6, 7, 8}}));
    EXPECT_EQ(attempts, 2U);  // again only when as much has been added as a file holds
    EXPECT_EQ(reported.find("Scrivel: Unable to make logfile \"" +
                            fs::absolute("run-4242.2.xml").string() +
                            "\": the log goes on in \"run-4242.xml\".\n"
                            "    Error given by OS: Permission denied\n"),
              0U);
    for (int i = 0; i < 8; ++i) {
        const LoggedCall call(log, "c");
    }
    EXPECT_GT(CallsOfFiles().size(), 1U);
}

TEST_F(NumberedFiles, LogGoesOnWhereItIsWhenTheHeaderOfTheNextFileCannotBeWritten)
{
    RunLog log("run", Limit(1));
    {
        const LoggedCall call(log, "c");
    }
    platform.pwrite.Use([](int, const void*, std::size_t, off_t) -> ssize_t {
        platform.pwrite.Reset();
        errno = ENOSPC;
        return -1;
    });
    testing::internal::CaptureStderr();
    {
        const LoggedCall call(log, "c");
    }
    EXPECT_NE(testing::internal::GetCapturedStderr().find("No space left on device"), std::string::npos);
    EXPECT_EQ(CallsOfFiles(), (Numbers{{1, 2}}));
    EXPECT_EQ(FileText("run-4242.xml"), RunFile(Call(1) + Call(2)));
    EXPECT_FALSE(fs::exists("run-4242.2.xml"));
}

TEST_F(NumberedFiles, EnvironmentTakesThePlaceOfTheOption)
{
    const std::map<std::string, std::uint64_t> sizes = {
        {"0", 0},         {"123", 123},       {"2K", 2048},
        {"3M", 3U << 20}, {"5G", 5ULL << 30}, {"18446744073709551615", ~0ULL}};
    for (const auto& [said, size] : sizes) {
        const Environment limit("SCRIVEL_LOG_SIZE", said);
        EXPECT_EQ(Layer::Settings("run", Limit(7)).fileSize, size) << said;
    }
    const Environment nothing("SCRIVEL_LOG_SIZE", "");
    EXPECT_EQ(Layer::Settings("run", Limit(7)).fileSize, 7U);
}

TEST_F(NumberedFiles, SizeThatIsNoneIsReportedAndChangesNothing)
{
    for (const char* said : {"much", "-1", "1T", "1MB", "K", "18446744073709551616", "17179869184G"}) {
        const Environment limit("SCRIVEL_LOG_SIZE", said);
        testing::internal::CaptureStderr();
        EXPECT_EQ(Layer::Settings("run", Limit(7)).fileSize, 7U) << said;
        EXPECT_EQ(testing::internal::GetCapturedStderr(),
                  "Scrivel: SCRIVEL_LOG_SIZE is not a number of bytes, or one with K, M or G: \"" +
                      std::string(said) + "\".\n");
    }
}

TEST_F(NumberedFiles, ForkedChildBeginsNoFile)
{
    RunLog log("run", Limit(1));
    {
        const LoggedCall call(log, "c");
    }
    const pid_t child = fork();
    if (child == 0) {
        const LoggedCall call(log, "c");
        _exit(call.Number() == 0 ? 0 : 1);
    }
    int status = 0;
    waitpid(child, &status, 0);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
    EXPECT_EQ(CallsOfFiles(), (Numbers{{1}}));
}

TEST_F(NumberedFiles, EveryFileIsCompleteAfterEveryWrite)
{
    unsigned int states = 0;
    const auto checkAll = [&] {
        for (const auto& entry : fs::directory_iterator(".")) {
            const std::string text = FileText(entry.path().string());
            if (!ScrivelTest::IsDocument(text)) {
                ADD_FAILURE() << entry.path() << "\n" << text.substr(0, 2000);
            }
            ++states;
        }
    };
    const auto writing =
        platform.pwrite.Use([&](int file, const void* bytes, std::size_t length, off_t offset) {
            const ssize_t written = platform.pwrite.Real(file, bytes, length, offset);
            checkAll();
            return written;
        });
    const auto closing = platform.close.Use([&](int file) {
        const int result = platform.close.Real(file);
        checkAll();
        return result;
    });
    RunLog log("run", Limit(600));
    for (std::size_t i = 0; i < 20; ++i) {
        const LoggedCall call(log, "CADIExecContinue",
                              [&](auto& xml) { xml.WriteString("a", std::string(i * 40, 'a')); });
        const LoggedCall callback(log, "c");
    }
    log.EndLogging();
    platform.close.Reset();
    EXPECT_GT(states, 100U);
    EXPECT_GT(CallsOfFiles().size(), 5U);
}

TEST_F(NumberedFiles, CallsOfManyThreadsAreEachInOneOfThem)
{
    platform.pthread_self.Reset();  // sanitizers ask for it in new threads
    constexpr unsigned int threadCount = 4;
    constexpr unsigned int callsPerThread = 500;
    {
        RunLog log("run", Limit(20000));
        std::vector<std::thread> threads;
        for (unsigned int i = 0; i < threadCount; ++i) {
            threads.emplace_back([&log] {
                for (unsigned int made = 0; made < callsPerThread; made += 2) {
                    LoggedCall call(log, "CADIExecContinue");
                    call.Arguments([&](auto& xml) { xml.WriteDecimal("a", call.Number()); });
                    LoggedCall callback(log, "modeChange");
                    callback.Results([&](auto& xml) { xml.WriteDecimal("r", callback.Number()); });
                    call.Results([&](auto& xml) { xml.WriteDecimal("r", call.Number()); });
                }
            });
        }
        for (std::thread& thread : threads) {
            thread.join();
        }
    }

    const std::size_t fileCount = CallsOfFiles().size();
    EXPECT_GT(fileCount, 5U);
    std::map<unsigned int, std::string> results;
    unsigned int returns = 0;
    for (std::size_t i = 1; i <= fileCount; ++i) {
        const std::string name = i == 1 ? "run-4242.xml" : "run-4242." + std::to_string(i) + ".xml";
        const auto read = ReadCalls(FileText(name));
        for (const auto& [number, call] : read.calls) {
            returns += call.returns;
            if (call.returns > 0) {
                results[number] = call.Result("r");
            }
        }
    }
    EXPECT_EQ(returns, threadCount * callsPerThread);
    ASSERT_EQ(results.size(), threadCount * callsPerThread);
    for (const auto& [number, result] : results) {
        ASSERT_EQ(result, std::to_string(number));
    }
}

}  // namespace
