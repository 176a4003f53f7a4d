// Runs a debugger session whose calls are logged, in the current directory:
//
//   debug_session           the whole session: one log of the connection, one of the run
//   debug_session --crash   a few calls, in the last of which the process dies of SIGSEGV; one log

#include "DebugSession.h"
#include "LoggedBroker.h"
#include "LoggedTarget.h"
#include "SimulatedBroker.h"
#include "SimulatedTarget.h"

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

void RunWholeSession()
{
    SimulatedBroker simulations;
    Scrivel2::ConnectLog connectLog("connection");
    LoggedBroker broker(connectLog, simulations);
    auto connection = Connect(broker, std::cout);
    Require(connectLog);
    connectLog.EndLogging();

    Scrivel2::RunLog runLog("run");
    LoggedTarget target(runLog, std::move(connection));
    runLog.Comment("the program works out the CRC-32 of a text");
    DebugSession(target, std::cout).Run();
    Require(runLog);
    std::cout << "logs         " << connectLog.FileName() << ' ' << runLog.FileName() << '\n';
}

void RunIntoCrash()
{
    Scrivel2::RunLog log("crash");
    std::cout << "log          " << log.FileName() << '\n';
    constexpr bool hasTimer = false;
    LoggedTarget target(log, std::make_unique<SimulatedTarget>(hasTimer));
    DebugSession(target, std::cout).RunIntoCrash();
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
        crash ? RunIntoCrash() : RunWholeSession();
    } catch (const std::exception& error) {
        std::cerr << "debug_session: " << error.what() << '\n';
        return 1;
    }
    return 0;
}
