// The debugger: what it asks of the target, phase by phase. tests/examples/DebugSessionTest.cpp runs it.

#include "DebugSession.h"

#include "CrcProgram.h"
#include "Records.h"
#include "SimulatedBroker.h"
#include "SimulatedTarget.h"

#include <iomanip>
#include <thread>

namespace Example
{

using namespace eslapi;

namespace
{

// Where the debugger puts instructions of its own.
constexpr std::uint32_t scratchAddress = 0x3000;
constexpr std::uint32_t jumpToItself = 0x0000006f;  // jal zero, 0
constexpr std::uint32_t noInstruction = 0x00000000;

constexpr std::uint32_t firstArgument = 10;   // a0
constexpr std::uint32_t remainder = 12;       // a2
constexpr std::uint32_t scratchRegister = 5;  // t0

void Expect(bool expected, const char* what)
{
    if (!expected) {
        throw SessionError(what);
    }
}

void ExpectOk(CADIReturn_t status, const char* call)
{
    Expect(status == CADI_STATUS_OK, call);
}

CADIAddrComplete_t At(std::uint32_t address)
{
    return {0, {memorySpace, address}};
}

std::ostream& Phase(std::ostream& out, const char* name)
{
    return out << std::left << std::setw(13) << name;
}

struct Hex
{
    std::uint32_t value;
};

std::ostream& operator<<(std::ostream& out, Hex number)
{
    const auto flags = out.flags();
    out << "0x" << std::hex << number.value;
    out.flags(flags);
    return out;
}

std::uint32_t Reversed(std::uint32_t value, unsigned int bits)
{
    std::uint32_t reversed = 0;
    for (; bits > 0; --bits, value >>= 1) {
        reversed = reversed << 1 | (value & 1);
    }
    return reversed;
}

}  // namespace

// With the bits in their natural order, where the program has them reversed.
std::uint32_t Crc32(std::string_view text)
{
    constexpr std::uint32_t polynomial = 0x04c11db7;
    std::uint32_t rest = 0xffffffff;
    for (const char c : text) {
        rest ^= Reversed(static_cast<unsigned char>(c), 8) << 24;
        for (int bit = 0; bit < 8; ++bit) {
            rest = rest << 1 ^ ((rest >> 31) != 0 ? polynomial : 0);
        }
    }
    return ~Reversed(rest, 32);
}

// ---- What the target tells ----------------------------------------------------------------------

void ModeListener::modeChange(std::uint32_t newMode, std::uint32_t breakpoint)
{
    const std::lock_guard lock(mutex);
    last = {newMode, breakpoint};
    changed.notify_all();
}

ModeListener::Change ModeListener::Last()
{
    const std::lock_guard lock(mutex);
    return last;
}

void ModeListener::WaitForRun()
{
    std::unique_lock lock(mutex);
    changed.wait(lock, [&] { return last.mode == CADI_EXECMODE_Run; });
}

// ---- The connection phase -----------------------------------------------------------------------

std::unique_ptr<Target> Connect(Broker& broker, bool hasTimer, std::ostream& out)
{
    std::uint32_t actual = 0;
    CADISimulationFactory* factory = nullptr;
    ExpectOk(broker.GetSimulationFactories(0, 1, &actual, &factory), "GetSimulationFactories");
    Expect(actual == 1, "there is no factory");

    std::vector<CADIParameterInfo_t> parameters(8);
    ExpectOk(factory->GetParameterInfos(0, 8, &actual, parameters.data()), "GetParameterInfos");
    std::vector<CADIParameterValue_t> values(8);
    ExpectOk(factory->GetDefaultValues(8, values.data()), "GetDefaultValues");

    CADIParameterValue_t timers = values.front();
    timers.intValue = 2;
    const auto error = std::make_unique<CADIFactoryErrorMessage_t>();
    Expect(factory->TestParameterValue(timers, error.get()) == CADI_STATUS_IllegalArgument,
           "the factory takes any value");

    values[0].intValue = hasTimer ? 1 : 0;
    SetText(values[1].stringValue, "demo \"board\"");
    std::uint32_t simulation = 0;
    ExpectOk(factory->Instantiate(values.data(), &simulation), "Instantiate");

    std::vector<CADISimulationInfo_t> simulations(4);
    ExpectOk(broker.GetSimulationInfos(0, 4, &actual, simulations.data()), "GetSimulationInfos");
    std::vector<CADITargetInfo_t> targets(4);
    ExpectOk(broker.GetTargetInfos(simulation, 0, 4, &actual, targets.data()), "GetTargetInfos");

    std::unique_ptr<Target> target;
    ExpectOk(broker.ConnectTarget(simulation, targets[0].id, &target), "ConnectTarget");
    Phase(out, "connect") << "simulation '" << simulations[simulation].name << "', target "
                          << targets[0].targetName << '\n';
    return target;
}

// ---- The run phase ------------------------------------------------------------------------------

void DebugSession::Run()
{
    Attach();
    Describe();
    SetBreakpoints();
    RunToBreakpoints();
    StepAndChangeRegisters();
    StopFromSecondThread();
    HitException();
    UseTimer();
    Detach();
}

void DebugSession::Attach()
{
    CADITargetInfo_t info;
    ExpectOk(target.CADIXfaceGetTargetInfo(&info), "CADIXfaceGetTargetInfo");
    CADITargetFeatures_t features;
    ExpectOk(target.CADIXfaceGetFeatures(&features), "CADIXfaceGetFeatures");
    ExpectOk(target.CADIXfaceAddCallback(&listener, "100", 3), "CADIXfaceAddCallback");

    char kind = ' ';
    std::string response;
    ExpectOk(target.CADIXfaceBypass(' ', "echo <hello> & goodbye", &kind, &response), "CADIXfaceBypass");
    Expect(kind == 'T' && response == "<hello> & goodbye", "the target has no echo");
    Expect(target.CADIXfaceBypass(' ', nullptr, &kind, &response) == CADI_STATUS_IllegalArgument,
           "the target takes no command for one");

    std::uint32_t actual = 0;
    std::vector<CADIParameterInfo_t> parameters(8);
    ExpectOk(target.CADIGetParameters(0, 8, &actual, parameters.data()), "CADIGetParameters");
    std::vector<CADIParameterValue_t> values(actual);
    for (std::uint32_t i = 0; i < actual; ++i) {
        values[i].parameterID = parameters[i].id;
    }
    ExpectOk(target.CADIGetParameterValues(actual, values.data()), "CADIGetParameterValues");
    const auto error = std::make_unique<CADIFactoryErrorMessage_t>();
    SetText(values[2].stringValue, "core \xe9");
    ExpectOk(target.CADISetParameters(actual, values.data(), error.get()), "CADISetParameters");
    values[1].intValue = 0;
    Expect(target.CADISetParameters(actual, values.data(), error.get()) == CADI_STATUS_IllegalArgument,
           "the target takes any value");

    Phase(out, "attach") << info.instanceName << ", " << features.nrBreakpointsAvailable
                         << " breakpoints, " << actual << " parameters\n";
}

void DebugSession::Describe()
{
    std::uint32_t groupCount = 0;
    std::vector<CADIRegGroup_t> groups(4);
    ExpectOk(target.CADIRegGetGroups(0, 4, &groupCount, groups.data()), "CADIRegGetGroups");
    std::uint32_t registerCount = 0;
    for (std::uint32_t i = 0; i < groupCount; ++i) {
        std::uint32_t actual = 0;
        std::vector<CADIRegInfo_t> registers(groups[i].numRegsInGroup);
        ExpectOk(target.CADIRegGetMap(groups[i].groupID, 0, groups[i].numRegsInGroup, &actual,
                                      registers.data()),
                 "CADIRegGetMap");
        registerCount += actual;
    }
    CADIRegFloatFormat_t format;
    Expect(target.CADIRegGetFloatFormat(0, &format) == CADI_STATUS_CmdNotSupported,
           "the core has floating-point registers");

    std::uint32_t spaceCount = 0;
    std::vector<CADIMemSpaceInfo_t> spaces(4);
    ExpectOk(target.CADIMemGetSpaces(0, 4, &spaceCount, spaces.data()), "CADIMemGetSpaces");
    std::uint32_t actual = 0;
    std::vector<CADIMemBlockInfo_t> blocks(4);
    ExpectOk(target.CADIMemGetBlocks(memorySpace, 0, 4, &actual, blocks.data()), "CADIMemGetBlocks");
    std::uint32_t overlays[4];
    ExpectOk(target.CADIMemGetOverlays(4, &actual, overlays), "CADIMemGetOverlays");
    CADICacheInfo_t cache;
    ExpectOk(target.CADICacheGetInfo(cacheSpace, &cache), "CADICacheGetInfo");

    std::vector<CADIExecMode_t> modes(8);
    ExpectOk(target.CADIExecGetModes(0, 8, &actual, modes.data()), "CADIExecGetModes");
    std::vector<CADIResetLevel_t> levels(4);
    ExpectOk(target.CADIExecGetResetLevels(0, 4, &actual, levels.data()), "CADIExecGetResetLevels");
    std::vector<CADIException_t> exceptions(16);
    ExpectOk(target.CADIExecGetExceptions(0, 16, &actual, exceptions.data()), "CADIExecGetExceptions");
    std::vector<CADIPipeStage_t> stages(4);
    ExpectOk(target.CADIExecGetPipeStages(0, 4, &actual, stages.data()), "CADIExecGetPipeStages");
    CADIPipeStageField_t fields[2];
    ExpectOk(target.CADIExecGetPipeStageFields(0, &actual, fields), "CADIExecGetPipeStageFields");

    Phase(out, "describe") << registerCount << " registers, " << spaceCount << " memory spaces\n";
}

std::uint32_t DebugSession::SetBreakpoint(CADIBptType_t type, std::uint32_t address,
                                          std::uint32_t ignoreCount)
{
    CADIBptRequest_t request{};
    request.address = At(address);
    request.sizeOfAddressRange = 4;
    request.enabled = 1;
    SetText(request.conditions, ignoreCount > 0 ? "ignored at first" : "");
    request.useFormalCondition = ignoreCount > 0;
    request.formalCondition.ignoreCount = ignoreCount;
    request.formalCondition.bitwidth = 32;
    request.type = type;
    if (type == CADI_BPT_MEMORY) {
        request.triggerType = CADI_BPT_TRIGGER_ON_WRITE;
    }
    std::uint32_t number = 0;
    ExpectOk(target.CADIBptSet(&request, &number), "CADIBptSet");
    return number;
}

void DebugSession::SetBreakpoints()
{
    ExpectOk(target.CADIExecReset(1), "CADIExecReset");
    constexpr std::uint32_t bytesToSkip = 2;
    byteBreakpoint = SetBreakpoint(CADI_BPT_PROGRAM, crcNextByteAddress, bytesToSkip);
    resultWatch = SetBreakpoint(CADI_BPT_MEMORY, crcResultAddress, 0);
    ExpectOk(target.CADIBptConfigure(resultWatch, CADI_BPT_Disable), "CADIBptConfigure");
    ExpectOk(target.CADIBptConfigure(resultWatch, CADI_BPT_Enable), "CADIBptConfigure");
    std::uint32_t actual = 0;
    std::vector<CADIBptDescription_t> list(8);
    ExpectOk(target.CADIBptGetList(0, 8, &actual, list.data()), "CADIBptGetList");
    Phase(out, "breakpoints") << actual << " set: the loop's head and writes to the result\n";
}

void DebugSession::RunToBreakpoints()
{
    ExpectOk(target.CADIExecContinue(), "CADIExecContinue");
    Expect(listener.Last().mode == CADI_EXECMODE_Bpt && listener.Last().breakpoint == byteBreakpoint,
           "the program didn't stop at the loop's head");
    std::uint64_t pc = 0;
    bool isValid = false;
    ExpectOk(target.CADIExecGetPC(&pc, &isValid), "CADIExecGetPC");
    Expect(isValid && pc == crcNextByteAddress, "the program is elsewhere");
    std::uint32_t mode = 0;
    ExpectOk(target.CADIExecGetMode(&mode), "CADIExecGetMode");
    Expect(ReadRegister(firstArgument) == crcTextAddress + 2, "two bytes should be done");

    std::uint32_t actual = 0;
    char* lines[4] = {};
    ExpectOk(target.CADIGetDisassembly(pc, 4, &actual, lines), "CADIGetDisassembly");
    std::uint8_t text[crcText.size()];
    ExpectOk(target.CADIMemRead(At(crcTextAddress), sizeof text, text, &actual), "CADIMemRead");
    Expect(std::equal(crcText.begin(), crcText.end(), text), "the text has changed");
    ExpectOk(target.CADIBptClear(byteBreakpoint), "CADIBptClear");

    ExpectOk(target.CADIExecContinue(), "CADIExecContinue");
    Expect(listener.Last().mode == CADI_EXECMODE_Bpt && listener.Last().breakpoint == resultWatch,
           "nothing was written to the result");
    CheckResult();
    std::uint64_t cycles = 0;
    ExpectOk(target.CADIExecGetCycles(&cycles), "CADIExecGetCycles");
    std::uint32_t history[8];
    ExpectOk(target.CADIExecGetHistory(8, &actual, history), "CADIExecGetHistory");
    std::uint64_t tags[2];
    bool valid[2];
    std::uint8_t cacheLines[32];
    ExpectOk(target.CADICacheRead(cacheSpace, 4, 2, 16, tags, valid, cacheLines), "CADICacheRead");
    Phase(out, "run") << "into both breakpoints, " << cycles << " instructions\n";
}

void DebugSession::CheckResult()
{
    const std::uint32_t result = ReadWord(crcResultAddress);
    Expect(result == Crc32(crcText), "the program's CRC is wrong");
    Phase(out, "result") << "CRC-32 " << Hex{result} << ", as it should be\n";
}

void DebugSession::StepAndChangeRegisters()
{
    ExpectOk(target.CADIExecReset(0), "CADIExecReset");
    ExpectOk(target.CADIExecSingleStep(3), "CADIExecSingleStep");
    Expect(ReadRegister(remainder) == 0xffffffff, "three steps should set the remainder");
    ExpectOk(WriteRegister(scratchRegister, 0x12345678), "CADIRegWrite");
    Expect(ReadRegister(scratchRegister) == 0x12345678, "the register has lost its value");
    Expect(WriteRegister(0, 1) == CADI_STATUS_PermissionDenied, "zero can be written");
    Phase(out, "step") << "three instructions, a register changed\n";
}

void DebugSession::StopFromSecondThread()
{
    Place(jumpToItself);
    std::thread second([&] {
        listener.WaitForRun();
        std::uint32_t mode = 0;
        target.CADIExecGetMode(&mode);
        target.CADIExecStop();
    });
    const CADIReturn_t status = target.CADIExecContinue();
    second.join();
    ExpectOk(status, "CADIExecContinue");
    Expect(listener.Last().mode == CADI_EXECMODE_Stop, "the program hasn't stopped");
    Phase(out, "stop") << "an endless loop, from a second thread\n";
}

void DebugSession::HitException()
{
    Place(noInstruction);
    ExpectOk(target.CADIExecContinue(), "CADIExecContinue");
    Expect(listener.Last().mode == CADI_EXECMODE_Error, "an illegal instruction was carried out");
    const std::uint32_t cause = ReadRegister(causeRegister);
    Expect(cause == static_cast<std::uint32_t>(Cause::IllegalInstruction), "the cause is another");

    ExpectOk(target.CADIExecAssertException(3, CADI_EXCEPTION_Raise), "CADIExecAssertException");
    std::uint64_t lines = 0;
    ExpectOk(target.CADIExecGetInterrupts(&lines), "CADIExecGetInterrupts");
    Expect(lines == 8, "line 3 isn't raised");
    Phase(out, "exception") << "cause " << cause << ", an illegal instruction\n";
}

void DebugSession::UseTimer()
{
    WriteWord(timerAddress, 1000);
    Expect(ReadWord(timerAddress) == 1000, "the timer doesn't keep its count");
    Phase(out, "timer") << "written and read\n";
}

void DebugSession::Detach()
{
    ExpectOk(target.CADIBptClear(resultWatch), "CADIBptClear");
    ExpectOk(target.CADIXfaceRemoveCallback(&listener), "CADIXfaceRemoveCallback");
    Phase(out, "detach") << "the target is as it was found\n";
}

// ---- Single values ------------------------------------------------------------------------------

/// Puts an instruction where no program is, and the pc to it.
void DebugSession::Place(std::uint32_t instruction)
{
    WriteWord(scratchAddress, instruction);
    ExpectOk(WriteRegister(pcRegister, scratchAddress), "CADIRegWrite");
}

std::uint32_t DebugSession::ReadRegister(std::uint32_t number)
{
    CADIReg_t reg{};
    reg.regNumber = number;
    ExpectOk(target.CADIRegRead(1, &reg), "CADIRegRead");
    std::uint32_t value = 0;
    for (std::size_t i = sizeof value; i-- > 0;) {
        value = value << 8 | reg.bytes[i];
    }
    return value;
}

CADIReturn_t DebugSession::WriteRegister(std::uint32_t number, std::uint32_t value)
{
    CADIReg_t reg{};
    reg.regNumber = number;
    for (std::size_t i = 0; i < sizeof value; ++i) {
        reg.bytes[i] = static_cast<std::uint8_t>(value >> (8 * i));
    }
    return target.CADIRegWrite(1, &reg);
}

std::uint32_t DebugSession::ReadWord(std::uint32_t address)
{
    std::uint8_t bytes[4] = {};
    std::uint32_t actual = 0;
    ExpectOk(target.CADIMemRead(At(address), sizeof bytes, bytes, &actual), "CADIMemRead");
    std::uint32_t value = 0;
    for (std::size_t i = sizeof bytes; i-- > 0;) {
        value = value << 8 | bytes[i];
    }
    return value;
}

void DebugSession::WriteWord(std::uint32_t address, std::uint32_t value)
{
    std::uint8_t bytes[4];
    for (std::size_t i = 0; i < sizeof bytes; ++i) {
        bytes[i] = static_cast<std::uint8_t>(value >> (8 * i));
    }
    std::uint32_t actual = 0;
    ExpectOk(target.CADIMemWrite(At(address), sizeof bytes, bytes, &actual), "CADIMemWrite");
}

}  // namespace Example
