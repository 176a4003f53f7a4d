// The board: a core, its memory and a timer, as a debugger sees them. Tested by
// tests/examples/DebugSessionTest.cpp.

#include "SimulatedTarget.h"

#include "CrcProgram.h"
#include "Records.h"

#include <cstdio>

namespace Example
{

using namespace eslapi;

namespace
{

constexpr std::uint32_t lineSize = 16;
constexpr std::size_t historyLength = 8;
constexpr std::uint32_t timerSize = sizeof(Timer);

enum Group : std::uint32_t
{
    generalPurpose = 1,
    control = 2
};

enum ParameterId : std::uint32_t
{
    keepHistory = 10,
    clockRate = 11,
    label = 12
};

constexpr const char* registerNames[] = {
    "zero", "ra", "sp",  "gp",  "tp", "t0", "t1", "t2", "s0", "s1",    "a0", "a1",
    "a2",   "a3", "a4",  "a5",  "a6", "a7", "s2", "s3", "s4", "s5",    "s6", "s7",
    "s8",   "s9", "s10", "s11", "t3", "t4", "t5", "t6", "pc", "cause",
};

CADIRegInfo_t RegisterInfo(std::uint32_t number)
{
    CADIRegInfo_t info{};
    SetText(info.name, registerNames[number]);
    SetText(info.description, number == pcRegister      ? "program counter"
                              : number == causeRegister ? "why the core stopped last"
                                                        : "x" + std::to_string(number));
    info.regNumber = number;
    info.bitsWide = 32;
    info.details = {CADI_REGTYPE_Simple, 1};
    info.display = number == pcRegister ? CADI_REGTYPE_PC : CADI_REGTYPE_HEX;
    info.dwarfIndex = number;
    info.attribute = number == 0 || number == causeRegister ? CADI_REG_READ_ONLY : CADI_REG_READ_WRITE;
    info.canonicalRegisterNumber = number;
    return info;
}

std::vector<CADIRegInfo_t> RegisterInfos(std::uint32_t first, std::uint32_t last)
{
    std::vector<CADIRegInfo_t> infos;
    for (std::uint32_t number = first; number <= last; ++number) {
        infos.push_back(RegisterInfo(number));
    }
    return infos;
}

CADIRegGroup_t RegisterGroup(Group id, const char* name, const char* description, std::uint32_t count)
{
    CADIRegGroup_t group{};
    group.groupID = id;
    SetText(group.name, name);
    SetText(group.description, description);
    group.numRegsInGroup = count;
    return group;
}

CADIMemSpaceInfo_t Space(std::uint32_t id, const char* name, const char* description)
{
    CADIMemSpaceInfo_t space{};
    space.memSpaceId = id;
    SetText(space.name, name);
    SetText(space.description, description);
    space.bitsPerMau = 8;
    space.endianness = 1;
    return space;
}

CADIMemBlockInfo_t Block(std::uint16_t id, const char* name, const char* description, std::uint64_t start,
                         std::uint64_t size)
{
    CADIMemBlockInfo_t block{};
    block.id = id;
    SetText(block.name, name);
    SetText(block.description, description);
    block.startAddr = start;
    block.endAddr = start + size - 1;
    block.cyclesToAccess = 1;
    block.readWrite = CADI_MEM_ReadWrite;
    block.supportedMultiplesOfMAU[0] = 1;
    block.supportedMultiplesOfMAU[1] = 4;
    block.endianness = 1;
    return block;
}

CADIException_t Exception(Cause cause, const char* name)
{
    CADIException_t exception{};
    exception.number = static_cast<std::uint32_t>(cause);
    SetText(exception.name, name);
    exception.vector = {memorySpace, 0};
    return exception;
}

CADIParameterInfo_t Parameter(ParameterId id, const char* name, CADIValueDataType_t type,
                              const char* description)
{
    CADIParameterInfo_t parameter{};
    parameter.id = id;
    SetText(parameter.name, name);
    parameter.dataType = type;
    SetText(parameter.description, description);
    parameter.isRunTime = 1;
    parameter.maxValue = 1;
    parameter.defaultValue = 1;
    return parameter;
}

std::vector<CADIParameterInfo_t> ParameterInfos()
{
    auto rate = Parameter(clockRate, "clock_rate", CADI_PARAM_INT, "instructions per simulated second");
    rate.minValue = 1;
    rate.maxValue = 1000000000;
    rate.defaultValue = 100000000;
    auto text = Parameter(label, "label", CADI_PARAM_STRING, "shown by the simulation");
    SetText(text.defaultString, "core <0>");
    return {Parameter(keepHistory, "keep_history", CADI_PARAM_BOOL, "remember what ran last"), rate,
            text};
}

CADIParameterValue_t DefaultValue(const CADIParameterInfo_t& info)
{
    CADIParameterValue_t value{};
    value.parameterID = info.id;
    value.dataType = info.dataType;
    value.intValue = info.dataType == CADI_PARAM_STRING ? 0 : info.defaultValue;
    SetText(value.stringValue, info.defaultString);
    return value;
}

/// What is wrong with a value, if anything is.
CADIFactoryErrorCode_t Check(const CADIParameterValue_t& value)
{
    for (const auto& info : ParameterInfos()) {
        if (info.id != value.parameterID) {
            continue;
        }
        if (info.dataType != value.dataType) {
            return CADIFACT_ERROR_PARAMETER_WRONG_TYPE;
        }
        const bool inRange = value.intValue >= info.minValue && value.intValue <= info.maxValue;
        return inRange || info.dataType == CADI_PARAM_STRING ? CADIFACT_ERROR_OK
                                                             : CADIFACT_ERROR_PARAMETER_OUT_OF_RANGE;
    }
    return CADIFACT_ERROR_PARAMETER_UNKNOWN;
}

}  // namespace

void SimulatedTarget::Describe(CADITargetInfo_t* info)
{
    *info = {};
    SetText(info->targetName, "RV32I");
    SetText(info->instanceName, "board.core0");
    SetText(info->version, "1.0");
    SetText(info->description, "a core of 32 registers & 64 KiB");
    SetText(info->componentType, "core");
    info->numberOfParameters = static_cast<std::uint32_t>(ParameterInfos().size());
    info->executesSoftware = true;
    SetText(info->systemName, "board");
    SetText(info->systemDescription, "one core, a memory, maybe a timer");
}

SimulatedTarget::SimulatedTarget(bool hasTimer) : timer(hasTimer ? std::make_unique<Timer>() : nullptr)
{
    for (const auto& info : ParameterInfos()) {
        parameters.push_back(DefaultValue(info));
    }
    LoadProgram();
}

void SimulatedTarget::LoadProgram()
{
    std::uint32_t address = crcCodeAddress;
    for (std::uint32_t word : CrcCode()) {
        for (int byte = 0; byte < 4; ++byte, word >>= 8) {
            core.memory[address++] = static_cast<std::uint8_t>(word);
        }
    }
    std::copy(crcText.begin(), crcText.end(), core.memory.begin() + crcTextAddress);
}

// ---- The target itself --------------------------------------------------------------------------

CADIReturn_t SimulatedTarget::CADIXfaceGetTargetInfo(CADITargetInfo_t* info)
{
    Describe(info);
    return CADI_STATUS_OK;
}

CADIReturn_t SimulatedTarget::CADIXfaceGetFeatures(CADITargetFeatures_t* features)
{
    *features = {};
    SetText(features->targetName, "RV32I");
    SetText(features->targetVersion, "1.0");
    features->nrBreakpointsAvailable = 16;
    features->fOverlaySupportAvailable = true;
    features->nrResetLevels = 2;
    features->nrExecModes = 4;
    features->nrExceptions = 9;
    features->nrMemSpaces = 2;
    features->nrRegisterGroups = 2;
    features->nrPipeStages = 1;
    features->nPCRegNum = pcRegister;
    features->handledBreakpoints = CADI_TARGET_FEATURE_BPT_PROGRAM | CADI_TARGET_FEATURE_BPT_MEMORY;
    features->nrOfHWThreads = 1;
    SetText(features->canonicalRegisterDescription, "RV32I");
    return CADI_STATUS_OK;
}

CADIReturn_t SimulatedTarget::CADIXfaceAddCallback(TargetCallback* added, const char* enable,
                                                   std::uint32_t kinds)
{
    if (kinds == 0 || enable[0] != '1') {
        return CADI_STATUS_ArgNotSupported;
    }
    callback = added;
    return CADI_STATUS_OK;
}

CADIReturn_t SimulatedTarget::CADIXfaceRemoveCallback(TargetCallback* removed)
{
    if (callback != removed) {
        return CADI_STATUS_IllegalArgument;
    }
    callback = nullptr;
    return CADI_STATUS_OK;
}

CADIReturn_t SimulatedTarget::CADIXfaceBypass(char separator, const char* command, char* kind,
                                              std::string* response)
{
    if (command == nullptr) {
        *kind = 'E';
        *response = "no command";
        return CADI_STATUS_IllegalArgument;
    }
    const std::string text = command;
    const std::string argument = text.substr(std::min(text.find(separator), text.size() - 1) + 1);
    if (text.rfind("echo", 0) != 0) {
        *kind = 'E';
        *response = "unknown command \"" + text + "\"";
        return CADI_STATUS_UnknownCommand;
    }
    *kind = 'T';
    *response = argument;
    return CADI_STATUS_OK;
}

CADIReturn_t SimulatedTarget::CADIGetParameters(std::uint32_t start, std::uint32_t desired,
                                                std::uint32_t* actual, CADIParameterInfo_t* infos)
{
    return HandOut(ParameterInfos(), start, desired, actual, infos);
}

CADIReturn_t SimulatedTarget::CADIGetParameterValues(std::uint32_t count, CADIParameterValue_t* values)
{
    for (std::uint32_t i = 0; i < count; ++i) {
        for (const auto& parameter : parameters) {
            if (parameter.parameterID == values[i].parameterID) {
                values[i] = parameter;
            }
        }
    }
    return CADI_STATUS_OK;
}

CADIReturn_t SimulatedTarget::CADISetParameters(std::uint32_t count, CADIParameterValue_t* values,
                                                CADIFactoryErrorMessage_t* error)
{
    *error = {};
    for (std::uint32_t i = 0; i < count; ++i) {
        error->errorCode = Check(values[i]);
        if (error->errorCode != CADIFACT_ERROR_OK) {
            error->erroneousParameterId = values[i].parameterID;
            error->severity = CADIFACT_SEVERITY_ERROR;
            SetText(error->message, "no value of this parameter: " + std::to_string(values[i].intValue));
            return CADI_STATUS_IllegalArgument;
        }
    }
    for (std::uint32_t i = 0; i < count; ++i) {
        parameters[values[i].parameterID - keepHistory] = values[i];
    }
    return CADI_STATUS_OK;
}

// ---- Registers ----------------------------------------------------------------------------------

CADIReturn_t SimulatedTarget::CADIRegGetGroups(std::uint32_t start, std::uint32_t desired,
                                               std::uint32_t* actual, CADIRegGroup_t* groups)
{
    const std::vector<CADIRegGroup_t> all{
        RegisterGroup(generalPurpose, "General_Purpose", "x0 to x31", 32),
        RegisterGroup(control, "Control", "pc & cause", 2),
    };
    return HandOut(all, start, desired, actual, groups);
}

CADIReturn_t SimulatedTarget::CADIRegGetMap(std::uint32_t group, std::uint32_t start,
                                            std::uint32_t desired, std::uint32_t* actual,
                                            CADIRegInfo_t* registers)
{
    switch (group) {
    case generalPurpose:
        return HandOut(RegisterInfos(0, 31), start, desired, actual, registers);
    case control:
        return HandOut(RegisterInfos(pcRegister, causeRegister), start, desired, actual, registers);
    default:
        return CADI_STATUS_IllegalArgument;
    }
}

CADIReturn_t SimulatedTarget::CADIRegGetFloatFormat(std::uint32_t, CADIRegFloatFormat_t*)
{
    return CADI_STATUS_CmdNotSupported;
}

std::uint32_t* SimulatedTarget::Register(std::uint32_t number)
{
    if (number < core.registers.size()) {
        return &core.registers[number];
    }
    return number == pcRegister ? &core.pc : number == causeRegister ? &cause : nullptr;
}

CADIReturn_t SimulatedTarget::CADIRegRead(std::uint32_t count, CADIReg_t* values)
{
    for (std::uint32_t i = 0; i < count; ++i) {
        const std::uint32_t* const from = Register(values[i].regNumber);
        values[i].isUndefined = from == nullptr;
        std::uint32_t value = from == nullptr ? 0 : *from;
        for (std::size_t byte = 0; byte < sizeof values[i].bytes; ++byte, value >>= 8) {
            values[i].bytes[byte] = static_cast<std::uint8_t>(value);
        }
        values[i].attribute =
            from == nullptr ? CADI_REG_READ_ONLY_RESTRICTED : RegisterInfo(values[i].regNumber).attribute;
    }
    return CADI_STATUS_OK;
}

CADIReturn_t SimulatedTarget::CADIRegWrite(std::uint32_t count, CADIReg_t* values)
{
    for (std::uint32_t i = 0; i < count; ++i) {
        std::uint32_t* const to = Register(values[i].regNumber);
        if (to == nullptr) {
            return CADI_STATUS_IllegalArgument;
        }
        if (RegisterInfo(values[i].regNumber).attribute == CADI_REG_READ_ONLY) {
            return CADI_STATUS_PermissionDenied;
        }
        *to = 0;
        for (std::size_t byte = 4; byte-- > 0;) {
            *to = *to << 8 | values[i].bytes[byte];
        }
    }
    return CADI_STATUS_OK;
}

// ---- Memory -------------------------------------------------------------------------------------

CADIReturn_t SimulatedTarget::CADIMemGetSpaces(std::uint32_t start, std::uint32_t desired,
                                               std::uint32_t* actual, CADIMemSpaceInfo_t* spaces)
{
    auto memory = Space(memorySpace, "Memory", "what loads and stores reach");
    memory.maxAddress = 0xffffffff;
    memory.nrMemBlocks = 2;
    memory.isProgramMemory = 1;
    auto instructions = Space(cacheSpace, "ICache", "instructions fetched last");
    instructions.maxAddress = cache.size() * lineSize - 1;
    instructions.isCache = 1;
    const std::vector<CADIMemSpaceInfo_t> all{memory, instructions};
    return HandOut(all, start, desired, actual, spaces);
}

CADIReturn_t SimulatedTarget::CADIMemGetBlocks(std::uint32_t space, std::uint32_t start,
                                               std::uint32_t desired, std::uint32_t* actual,
                                               CADIMemBlockInfo_t* blocks)
{
    if (space != memorySpace) {
        return CADI_STATUS_IllegalArgument;
    }
    const std::vector<CADIMemBlockInfo_t> all{
        Block(0, "RAM", "code, text and result", 0, Rv32Core::memorySize),
        Block(1, "Timer", "load value and count", timerAddress, timerSize),
    };
    return HandOut(all, start, desired, actual, blocks);
}

CADIReturn_t SimulatedTarget::CADIMemGetOverlays(std::uint32_t desired, std::uint32_t* actual,
                                                 std::uint32_t* overlays)
{
    return HandOut<std::uint32_t>({0}, 0, desired, actual, overlays);
}

CADIReturn_t SimulatedTarget::CADIMemRead(CADIAddrComplete_t start, std::uint32_t bytes,
                                          std::uint8_t* data, std::uint32_t* actual)
{
    const std::uint64_t address = start.location.addr;
    *actual = 0;
    if (start.location.spaceId != memorySpace) {
        return CADI_STATUS_IllegalArgument;
    }
    if (address == timerAddress && bytes == 4) {
        const Timer* const device = timer.get();
        const std::uint32_t count = device->count;
        for (unsigned int i = 0; i < 4; ++i) {
            data[i] = static_cast<std::uint8_t>(count >> (8 * i));
        }
        *actual = bytes;
        return CADI_STATUS_OK;
    }
    for (; *actual < bytes && address + *actual < core.memory.size(); ++*actual) {
        data[*actual] = core.memory[static_cast<std::size_t>(address + *actual)];
    }
    return *actual == bytes ? CADI_STATUS_OK : CADI_STATUS_IllegalArgument;
}

CADIReturn_t SimulatedTarget::CADIMemWrite(CADIAddrComplete_t start, std::uint32_t bytes,
                                           const std::uint8_t* data, std::uint32_t* actual)
{
    const std::uint64_t address = start.location.addr;
    *actual = 0;
    if (start.location.spaceId != memorySpace) {
        return CADI_STATUS_IllegalArgument;
    }
    if (address == timerAddress && bytes == 4) {
        std::uint32_t load = 0;
        for (unsigned int i = 0; i < 4; ++i) {
            load |= static_cast<std::uint32_t>(data[i]) << (8 * i);
        }
        Timer* const device = timer.get();
        device->load = load;
        device->count = load;
        *actual = bytes;
        return CADI_STATUS_OK;
    }
    for (; *actual < bytes && address + *actual < core.memory.size(); ++*actual) {
        core.memory[static_cast<std::size_t>(address + *actual)] = data[*actual];
    }
    return *actual == bytes ? CADI_STATUS_OK : CADI_STATUS_IllegalArgument;
}

CADIReturn_t SimulatedTarget::CADICacheGetInfo(std::uint32_t space, CADICacheInfo_t* info)
{
    if (space != cacheSpace) {
        return CADI_STATUS_IllegalArgument;
    }
    *info = {lineSize, 25, 1, false};
    return CADI_STATUS_OK;
}

CADIReturn_t SimulatedTarget::CADICacheRead(std::uint32_t space, std::uint32_t firstLine,
                                            std::uint32_t lines, std::uint32_t bytesPerLine,
                                            std::uint64_t* tags, bool* valid, std::uint8_t* data)
{
    if (space != cacheSpace || bytesPerLine != lineSize || firstLine + lines > cache.size()) {
        return CADI_STATUS_IllegalArgument;
    }
    for (std::uint32_t i = 0; i < lines; ++i) {
        const CacheLine& line = cache[firstLine + i];
        tags[i] = line.tag;
        valid[i] = line.valid;
        const auto address =
            line.tag * static_cast<std::uint32_t>(cache.size()) * lineSize + (firstLine + i) * lineSize;
        std::copy_n(core.memory.data() + address, lineSize, data + i * lineSize);
    }
    return CADI_STATUS_OK;
}

void SimulatedTarget::FillCacheLine()
{
    if (core.pc < Rv32Core::memorySize) {
        const std::uint32_t line = core.pc / lineSize;
        const auto lines = static_cast<std::uint32_t>(cache.size());
        cache[line % lines] = {line / lines, true};
    }
}

// ---- Execution ----------------------------------------------------------------------------------

CADIReturn_t SimulatedTarget::CADIExecGetModes(std::uint32_t start, std::uint32_t desired,
                                               std::uint32_t* actual, CADIExecMode_t* modes)
{
    const std::vector<CADIExecMode_t> all{
        Numbered<CADIExecMode_t>(CADI_EXECMODE_Stop, "Stop"),
        Numbered<CADIExecMode_t>(CADI_EXECMODE_Run, "Run"),
        Numbered<CADIExecMode_t>(CADI_EXECMODE_Bpt, "Breakpoint"),
        Numbered<CADIExecMode_t>(CADI_EXECMODE_Error, "Error"),
    };
    return HandOut(all, start, desired, actual, modes);
}

CADIReturn_t SimulatedTarget::CADIExecGetMode(std::uint32_t* current)
{
    *current = mode;
    return CADI_STATUS_OK;
}

CADIReturn_t SimulatedTarget::CADIExecGetResetLevels(std::uint32_t start, std::uint32_t desired,
                                                     std::uint32_t* actual, CADIResetLevel_t* levels)
{
    const std::vector<CADIResetLevel_t> all{
        Numbered<CADIResetLevel_t>(0, "registers"),
        Numbered<CADIResetLevel_t>(1, "registers & memory"),
    };
    return HandOut(all, start, desired, actual, levels);
}

CADIReturn_t SimulatedTarget::CADIExecReset(std::uint32_t level)
{
    if (level > 1) {
        return CADI_STATUS_IllegalArgument;
    }
    core.Reset();
    cause = 0;
    interrupts = 0;
    history.clear();
    if (level == 1) {
        std::fill(core.memory.begin(), core.memory.end(), std::uint8_t{0});
        LoadProgram();
    }
    return CADI_STATUS_OK;
}

CADIReturn_t SimulatedTarget::CADIExecContinue()
{
    stopWanted = false;
    ChangeMode(CADI_EXECMODE_Run, 0);
    while (!stopWanted) {
        if (!StepOnce()) {
            const bool ended = cause == static_cast<std::uint32_t>(Cause::EnvironmentCall);
            ChangeMode(ended ? CADI_EXECMODE_Stop : CADI_EXECMODE_Error, 0);
            return CADI_STATUS_OK;
        }
        std::uint32_t reached = core.LastAccess() ? ReachedBreakpoint(CADI_BPT_MEMORY) : 0;
        if (reached == 0) {
            reached = ReachedBreakpoint(CADI_BPT_PROGRAM);
        }
        if (reached != 0) {
            ChangeMode(CADI_EXECMODE_Bpt, reached);
            return CADI_STATUS_OK;
        }
    }
    ChangeMode(CADI_EXECMODE_Stop, 0);
    return CADI_STATUS_OK;
}

CADIReturn_t SimulatedTarget::CADIExecStop()
{
    stopWanted = true;
    return CADI_STATUS_OK;
}

CADIReturn_t SimulatedTarget::CADIExecSingleStep(std::uint32_t instructions)
{
    ChangeMode(CADI_EXECMODE_Run, 0);
    bool stepped = true;
    for (std::uint32_t i = 0; stepped && i < instructions; ++i) {
        stepped = StepOnce();
    }
    ChangeMode(stepped ? CADI_EXECMODE_Stop : CADI_EXECMODE_Error, 0);
    return stepped ? CADI_STATUS_OK : CADI_STATUS_GeneralError;
}

/// False when an exception stops the core.
bool SimulatedTarget::StepOnce()
{
    FillCacheLine();
    const std::uint32_t address = core.pc;
    if (const auto exception = core.Step()) {
        cause = static_cast<std::uint32_t>(*exception);
        return false;
    }
    history.push_front(address);
    history.resize(std::min(history.size(), historyLength));
    return true;
}

void SimulatedTarget::ChangeMode(std::uint32_t newMode, std::uint32_t breakpoint)
{
    mode = newMode;
    if (callback != nullptr) {
        callback->modeChange(newMode, breakpoint);
    }
}

CADIReturn_t SimulatedTarget::CADIExecGetPC(std::uint64_t* pc, bool* isValid)
{
    *pc = core.pc;
    *isValid = core.pc < Rv32Core::memorySize;
    return CADI_STATUS_OK;
}

CADIReturn_t SimulatedTarget::CADIExecGetCycles(std::uint64_t* cycles)
{
    *cycles = core.Cycles();
    return CADI_STATUS_OK;
}

CADIReturn_t SimulatedTarget::CADIExecGetHistory(std::uint32_t desired, std::uint32_t* actual,
                                                 std::uint32_t* addresses)
{
    const std::vector<std::uint32_t> all(history.begin(), history.end());
    return HandOut(all, 0, desired, actual, addresses);
}

CADIReturn_t SimulatedTarget::CADIExecGetExceptions(std::uint32_t start, std::uint32_t desired,
                                                    std::uint32_t* actual, CADIException_t* exceptions)
{
    const std::vector<CADIException_t> all{
        Exception(Cause::FetchMisaligned, "fetch misaligned"),
        Exception(Cause::FetchFault, "fetch fault"),
        Exception(Cause::IllegalInstruction, "illegal instruction"),
        Exception(Cause::Breakpoint, "ebreak"),
        Exception(Cause::LoadMisaligned, "load misaligned"),
        Exception(Cause::LoadFault, "load fault"),
        Exception(Cause::StoreMisaligned, "store misaligned"),
        Exception(Cause::StoreFault, "store fault"),
        Exception(Cause::EnvironmentCall, "ecall"),
    };
    return HandOut(all, start, desired, actual, exceptions);
}

CADIReturn_t SimulatedTarget::CADIExecAssertException(std::uint32_t exception,
                                                      CADIExceptionAction_t action)
{
    constexpr std::uint32_t lines = 5;
    if (exception >= lines) {
        return CADI_STATUS_IllegalArgument;
    }
    if (action == CADI_EXCEPTION_Raise) {
        interrupts |= 1U << exception;
    } else {
        interrupts &= ~(1U << exception);
    }
    return CADI_STATUS_OK;
}

CADIReturn_t SimulatedTarget::CADIExecGetInterrupts(std::uint64_t* lines)
{
    *lines = interrupts;
    return CADI_STATUS_OK;
}

CADIReturn_t SimulatedTarget::CADIExecGetPipeStages(std::uint32_t start, std::uint32_t desired,
                                                    std::uint32_t* actual, CADIPipeStage_t* stages)
{
    CADIPipeStage_t execute{};
    SetText(execute.name, "execute");
    execute.contentInfoRegisterId = pcRegister;
    return HandOut<CADIPipeStage_t>({execute}, start, desired, actual, stages);
}

CADIReturn_t SimulatedTarget::CADIExecGetPipeStageFields(std::uint32_t stage, std::uint32_t* actual,
                                                         CADIPipeStageField_t* fields)
{
    if (stage != 0) {
        return CADI_STATUS_IllegalArgument;
    }
    return HandOut<CADIPipeStageField_t>({{0, pcRegister}, {0, causeRegister}}, 0, 2, actual, fields);
}

CADIReturn_t SimulatedTarget::CADIGetDisassembly(std::uint64_t address, std::uint32_t instructions,
                                                 std::uint32_t* actual, char** lines)
{
    disassembly.clear();
    for (; disassembly.size() < instructions && address + 4 <= core.memory.size(); address += 4) {
        const std::uint8_t* const bytes = core.memory.data() + address;
        char line[40];
        std::snprintf(line, sizeof line, "%08llx: .word 0x%02x%02x%02x%02x",
                      static_cast<unsigned long long>(address), bytes[3], bytes[2], bytes[1], bytes[0]);
        disassembly.emplace_back(line);
    }
    *actual = static_cast<std::uint32_t>(disassembly.size());
    std::transform(disassembly.begin(), disassembly.end(), lines,
                   [](std::string& line) { return line.data(); });
    return *actual == instructions ? CADI_STATUS_OK : CADI_STATUS_IllegalArgument;
}

// ---- Breakpoints --------------------------------------------------------------------------------

CADIReturn_t SimulatedTarget::CADIBptSet(CADIBptRequest_t* request, std::uint32_t* number)
{
    const bool supported = request->type == CADI_BPT_PROGRAM || request->type == CADI_BPT_MEMORY;
    if (!supported || request->address.location.spaceId != memorySpace) {
        return CADI_STATUS_ArgNotSupported;
    }
    *number = ++lastBreakpoint;
    breakpoints.emplace(*number, *request);
    return CADI_STATUS_OK;
}

CADIReturn_t SimulatedTarget::CADIBptConfigure(std::uint32_t number, CADIBptConfigure_t configuration)
{
    const auto found = breakpoints.find(number);
    if (found == breakpoints.end()) {
        return CADI_STATUS_IllegalArgument;
    }
    found->second.enabled = configuration == CADI_BPT_Enable ? 1 : 0;
    return CADI_STATUS_OK;
}

CADIReturn_t SimulatedTarget::CADIBptClear(std::uint32_t number)
{
    return breakpoints.erase(number) == 1 ? CADI_STATUS_OK : CADI_STATUS_IllegalArgument;
}

CADIReturn_t SimulatedTarget::CADIBptGetList(std::uint32_t start, std::uint32_t desired,
                                             std::uint32_t* actual, CADIBptDescription_t* list)
{
    std::vector<CADIBptDescription_t> all;
    for (const auto& [number, request] : breakpoints) {
        all.push_back({number, request});
    }
    return HandOut(all, start, desired, actual, list);
}

/// The number of an enabled breakpoint that the last instruction has run into, or 0. A temporary one is
/// gone then; one with an ignore count lets that many go by.
std::uint32_t SimulatedTarget::ReachedBreakpoint(CADIBptType_t type)
{
    for (auto& [number, request] : breakpoints) {
        const std::uint64_t first = request.address.location.addr;
        bool reached = request.enabled != 0 && request.type == type;
        if (type == CADI_BPT_PROGRAM) {
            reached = reached && core.pc == first;
        } else {
            const DataAccess access = *core.LastAccess();
            const auto trigger = access.isWrite ? CADI_BPT_TRIGGER_ON_WRITE : CADI_BPT_TRIGGER_ON_READ;
            reached = reached && (request.triggerType & trigger) != 0 &&
                      access.address + access.size > first &&
                      access.address < first + request.sizeOfAddressRange;
        }
        if (!reached) {
            continue;
        }
        if (request.useFormalCondition && request.formalCondition.ignoreCount > 0) {
            --request.formalCondition.ignoreCount;
            continue;
        }
        const std::uint32_t found = number;
        if (request.temporary != 0) {
            breakpoints.erase(found);
        }
        return found;
    }
    return 0;
}

}  // namespace Example
