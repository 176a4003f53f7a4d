// Logs the same calls in every run, and tells which flush a file shows. Used by the programs that break
// something on the way; a session that nothing disturbs is checked first.

#include "crash/Session.h"

#include "LoggedCall.h"

#include "crash/LogReader.h"
#include "support/Platform.h"

#include <csignal>
#include <filesystem>
#include <new>
#include <stdexcept>
#include <utility>

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace ScrivelTest
{
namespace
{

/// Logs the next call, and in one call of three the one after it as made by the target meanwhile.
template <typename Flushed>
void LogNextCall(Scrivel2::RunLog& log, Load& load, unsigned int& logged, unsigned int calls,
                 const Flushed& flushed)
{
    const unsigned int number = ++logged;
    Scrivel2::LoggedCall call(log, "CADIMemRead", [&](auto& xml) { load.WriteContents(xml, number); });
    flushed();
    if (number % 3 == 1 && number < calls) {
        LogNextCall(log, load, logged, calls, flushed);
    }
    call.Results([](auto& xml) { xml.WriteReturnType("return", eslapi::CADI_STATUS_OK); });
    flushed();
}

}  // namespace

Session::Session(std::string name, const Load& loadToLog, unsigned int callCount, Writer loggedBy,
                 Scrivel2::Durability wanted)
    : logName(std::move(name)), load(loadToLog), calls(callCount), writer(loggedBy), durability(wanted)
{
    platform.getpid.Use([] { return 4242; });
    platform.pthread_self.Use([]() -> pthread_t { return 1234; });
    platform.gettimeofday.Use([](timeval* moment, void*) {
        *moment = {1000, 0};
        return 0;
    });
    platform.time.Use([](std::time_t*) -> std::time_t { return 1000; });
}

void Session::Run(Progress& progress, const std::function<void()>& afterFlush, std::size_t mostInMemory)
{
    progress.begun = 0;
    progress.done = 0;
    const Flushed flushed = afterFlush ? afterFlush : [] {};
    if (writer == Writer::Layer) {
        LogThroughLayer(progress, flushed);
    } else {
        LogByGenerator(progress, flushed, mostInMemory);
    }
}

void Session::LogByGenerator(Progress& progress, const Flushed& flushed, std::size_t mostInMemory)
{
    WatchedGenerator log(logName.c_str(), progress);
    log.SetDurability(durability);
    if (mostInMemory > 0) {
        log.SetMostInMemory(mostInMemory);
    }
    log.StartLogging();
    flushed();
    for (unsigned int i = 0; i < calls; ++i) {
        load.WriteNextCall(log);
        log.FlushOutput(true, "");
        flushed();
    }
    log.EndLogging();
    flushed();
}

void Session::LogThroughLayer(Progress& progress, const Flushed& flushed)
{
    Scrivel2::LogOptions options;
    options.durability = durability;
    Scrivel2::RunLog log(logName, options);
    const auto told = [&] {
        const unsigned int number = ++progress.begun;
        if (log.IsGood()) {
            progress.done = number;
        }
        flushed();
    };
    told();
    for (unsigned int logged = 0; logged < calls;) {
        LogNextCall(log, load, logged, calls, told);
    }
    log.EndLogging();
    flushed();
}

std::string Session::FileName() const
{
    return logName + "-4242.xml";
}

const std::vector<std::string>& Session::Documents()
{
    if (documents.empty()) {
        std::filesystem::remove(FileName());  // the layer would take another name
        documents.emplace_back();
        Progress progress{};
        Run(progress, [&] {
            documents.push_back(FileBytes(FileName()));
            if (!ReadLog(documents.back(), nullptr).accepted) {
                throw std::logic_error("a flush that nothing disturbs leaves no document");
            }
        });
        if (!HoldsAllCalls(documents.back())) {
            throw std::logic_error("a log that nothing disturbs doesn't hold all calls");
        }
        std::filesystem::remove(FileName());
    }
    return documents;
}

bool Session::HoldsAllCalls(const std::string& bytes) const
{
    std::vector<CallElement> seen(calls + 1);
    ReadLog(bytes, [&](const CallElement& element) { seen.at(element.number).Join(element); });
    for (unsigned int number = 1; number <= calls; ++number) {
        if (seen[number].number != number || !(seen[number].contents == load.Contents(number))) {
            return false;
        }
    }
    return true;
}

int Session::DocumentNumber(const std::string& bytes, unsigned int atLeast)
{
    if (atLeast == 0 && bytes.empty()) {
        return 0;
    }
    const auto& known = Documents();
    const auto numberWhere = [&](const auto& isSame) {
        for (auto number = known.size() - 1; number > 0 && number >= atLeast; --number) {
            if (isSame(known[number])) {
                return static_cast<int>(number);
            }
        }
        return -1;
    };
    const int number = numberWhere([&](const std::string& document) { return bytes == document; });
    const std::string bare = number < 0 ? BareLog(bytes) : "";
    return bare.empty()
               ? number
               : numberWhere([&](const std::string& document) { return bare == BareLog(document); });
}

ChildEnd InChild(const std::function<void()>& work)
{
    constexpr int badAlloc = 3;
    constexpr int otherException = 4;
    const pid_t child = fork();
    if (child == 0) {
        dup2(open("/dev/null", O_WRONLY), STDERR_FILENO);
        alarm(60);
        try {
            work();
        } catch (const std::bad_alloc&) {
            _exit(badAlloc);
        } catch (...) {
            _exit(otherException);
        }
        _exit(0);
    }
    int status = 0;
    if (child < 0 || waitpid(child, &status, 0) != child) {
        throw std::runtime_error("no child process");
    }
    using Manner = ChildEnd::Manner;
    if (WIFSIGNALED(status)) {
        const int signal = WTERMSIG(status);
        return {signal == SIGALRM ? Manner::Hung : Manner::Signal, signal};
    }
    switch (WEXITSTATUS(status)) {
    case 0:
        return {Manner::Returned, 0};
    case badAlloc:
        return {Manner::BadAlloc, 0};
    case otherException:
        return {Manner::OtherException, 0};
    default:
        return {Manner::Signal, 0};  // a sanitizer's runtime has ended it
    }
}

}  // namespace ScrivelTest
