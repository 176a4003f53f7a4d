// Runs a debugger session whose calls are logged, in the current directory:
//
//   debug_session           leaves a log of the connection and one of the run
//   debug_session --crash   the same on a board without a timer: the process dies of SIGSEGV in the write
//                           to it, and the second log is called crash

#include "DebugSession.h"
#include "LoggedBroker.h"
#include "LoggedTarget.h"
#include "SimulatedBroker.h"

#include <cstring>
#include <iostream>

namespace
{

using namespace Example;

template <typename Log>
void Require(Log& log)
{
    if (!log.IsGood()) {
        throw SessionError("the log can't be written");
    }
}

void RunSession(bool crash)
{
    SimulatedBroker simulations;
    Scrivel2::ConnectLog connectLog("connection");
    LoggedBroker broker(connectLog, simulations);
    const bool hasTimer = !crash;
    auto connection = Connect(broker, hasTimer, std::cout);
    Require(connectLog);
    connectLog.EndLogging();

    Scrivel2::RunLog runLog(crash ? "crash" : "run");
    std::cout << "logs         " << connectLog.FileName() << ' ' << runLog.FileName() << '\n';
    LoggedTarget target(runLog, std::move(connection));
    runLog.Comment("the program works out the CRC-32 of a text");
    DebugSession(target, std::cout).Run();
    Require(runLog);
}

}  // namespace

int main(int argc, char** argv)
{
    const bool crash = argc == 2 && std::strcmp(argv[1], "--crash") == 0;
    if (argc > 1 && !crash) {
        std::cerr << "debug_session: the only argument is --crash\n";
        return 2;
    }
    try {
        std::cout << std::unitbuf;  // a crash keeps what has been told
        RunSession(crash);
    } catch (const std::exception& error) {
        std::cerr << "debug_session: " << error.what() << '\n';
        return 1;
    }
    return 0;
}
