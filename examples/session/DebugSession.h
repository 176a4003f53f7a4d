// A debugger that works through a fixed list of things to do.

#ifndef SCRIVEL_EXAMPLES_DEBUGSESSION_H
#define SCRIVEL_EXAMPLES_DEBUGSESSION_H

#include "Target.h"

#include <condition_variable>
#include <mutex>
#include <ostream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace Example
{

/// A call did not do what the debugger expected of it.
class SessionError : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

/// What the debugger has heard of the target.
class ModeListener final : public TargetCallback
{
public:
    struct Change
    {
        std::uint32_t mode;
        std::uint32_t breakpoint;
    };

    void modeChange(std::uint32_t newMode, std::uint32_t breakpoint) override;

    Change Last();
    void WaitForRun();

private:
    std::mutex mutex;
    std::condition_variable changed;
    Change last{};
};

/// Finds a factory, makes a simulation of a board with or without a timer, and connects to its target,
/// with every call of a broker and its factory. Writes a line about it. Throws SessionError.
std::unique_ptr<Target> Connect(Broker& broker, bool hasTimer, std::ostream& out);

/// Debugs the program on a target, with every call of a target. Writes a line for each phase. Throws
/// SessionError. A target without a timer crashes near the end.
class DebugSession
{
public:
    DebugSession(Target& debugged, std::ostream& lines) : target(debugged), out(lines) {}

    void Run();

private:
    void Attach();
    void Describe();
    void SetBreakpoints();
    void RunToBreakpoints();
    void StepAndChangeRegisters();
    void StopFromSecondThread();
    void HitException();
    void UseTimer();
    void Detach();

    void Place(std::uint32_t instruction);
    std::uint32_t ReadRegister(std::uint32_t number);
    eslapi::CADIReturn_t WriteRegister(std::uint32_t number, std::uint32_t value);
    std::uint32_t ReadWord(std::uint32_t address);
    void WriteWord(std::uint32_t address, std::uint32_t value);
    std::uint32_t SetBreakpoint(eslapi::CADIBptType_t type, std::uint32_t address,
                                std::uint32_t ignoreCount);
    void CheckResult();

    Target& target;
    std::ostream& out;
    ModeListener listener;
    std::uint32_t byteBreakpoint = 0;
    std::uint32_t resultWatch = 0;
};

/// The CRC-32 of a text, worked out in another way than the program's.
std::uint32_t Crc32(std::string_view text);

}  // namespace Example

#endif
