// Puts together what a log must show of each record. Used by tests/examples/DebugSessionTest.cpp.

#include "examples/Leaves.h"

#include <cstdio>

namespace ScrivelTest
{

using namespace eslapi;

namespace
{

std::string HexText(unsigned long value, unsigned int digits)
{
    char text[32];
    std::snprintf(text, sizeof text, "0x%0*lx", static_cast<int>(digits), value);
    return text;
}

std::string EndiannessName(unsigned char endianness)
{
    return endianness == 0 ? "mono" : endianness == 1 ? "LE" : "BE";
}

const char* AttributeName(CADIRegAccessAttribute_t attribute)
{
    switch (attribute) {
    case CADI_REG_READ_WRITE:
        return "CADI_REG_READ_WRITE";
    case CADI_REG_READ_ONLY:
        return "CADI_REG_READ_ONLY";
    default:
        return "(not expected)";
    }
}

const char* TypeName(CADIValueDataType_t type)
{
    switch (type) {
    case CADI_PARAM_INVALID:
        return "CADI_PARAM_INVALID";
    case CADI_PARAM_STRING:
        return "CADI_PARAM_STRING";
    case CADI_PARAM_BOOL:
        return "CADI_PARAM_BOOL";
    case CADI_PARAM_INT:
        return "CADI_PARAM_INT";
    default:
        return "(not expected)";
    }
}

const char* StatusName(CADIReturn_t status)
{
    switch (status) {
    case CADI_STATUS_OK:
        return "CADI_STATUS_OK";
    case CADI_STATUS_GeneralError:
        return "CADI_STATUS_GeneralError";
    case CADI_STATUS_IllegalArgument:
        return "CADI_STATUS_IllegalArgument";
    case CADI_STATUS_CmdNotSupported:
        return "CADI_STATUS_CmdNotSupported";
    case CADI_STATUS_PermissionDenied:
        return "CADI_STATUS_PermissionDenied";
    default:
        return "(not expected)";
    }
}

const char* ErrorName(CADIFactoryErrorCode_t code)
{
    switch (code) {
    case CADIFACT_ERROR_OK:
        return "CADIFACT_ERROR_OK";
    case CADIFACT_ERROR_PARAMETER_OUT_OF_RANGE:
        return "CADIFACT_ERROR_PARAMETER_OUT_OF_RANGE";
    default:
        return "(not expected)";
    }
}

}  // namespace

std::string ModeName(std::uint32_t mode)
{
    switch (mode) {
    case CADI_EXECMODE_Stop:
        return "CADI_EXECMODE_Stop";
    case CADI_EXECMODE_Run:
        return "CADI_EXECMODE_Run";
    case CADI_EXECMODE_Bpt:
        return "CADI_EXECMODE_Bpt";
    case CADI_EXECMODE_Error:
        return "CADI_EXECMODE_Error";
    default:
        return "(not expected)";
    }
}

std::string RegisterName(std::uint32_t number)
{
    switch (number) {
    case 0:
        return "zero";
    case 5:
        return "t0";
    case 10:
        return "a0";
    case 12:
        return "a2";
    case 32:
        return "pc";
    case 33:
        return "cause";
    default:
        return "(not expected)";
    }
}

std::string SpaceName(std::uint32_t id)
{
    return id == 1 ? "Memory" : id == 2 ? "ICache" : "unknown memSpaceInfo";
}

// ---- Values -------------------------------------------------------------------------------------

Leaves& Leaves::Raw(const std::string& path, const std::string& text)
{
    leaves.push_back({path, text});
    return *this;
}

Leaves& Leaves::Text(const std::string& path, const std::string& text)
{
    std::string shown;
    for (const char c : text) {
        if (c >= ' ' && c <= '~') {
            shown += c;
        } else {
            char number[8];
            std::snprintf(number, sizeof number, "\\x%02x", static_cast<unsigned char>(c));
            shown += number;
        }
    }
    return Raw(path, shown);
}

Leaves& Leaves::Number(const std::string& path, unsigned long value)
{
    return Raw(path, std::to_string(value));
}

Leaves& Leaves::Hex(const std::string& path, unsigned long value, unsigned int digits)
{
    return Raw(path, HexText(value, digits));
}

Leaves& Leaves::Flag(const std::string& path, bool value)
{
    return Raw(path, value ? "true" : "false");
}

Leaves& Leaves::Status(CADIReturn_t status)
{
    return Raw("return", StatusName(status));
}

// ---- Parameters, simulations, targets -----------------------------------------------------------

Leaves& Leaves::Record(const std::string& path, const CADIParameterInfo_t& info)
{
    return Number(path + "/id", info.id)
        .Text(path + "/name", info.name)
        .Raw(path + "/dataType", TypeName(info.dataType))
        .Text(path + "/description", info.description)
        .Number(path + "/isRunTime", info.isRunTime)
        .Number(path + "/minValue", static_cast<std::uint32_t>(info.minValue))
        .Number(path + "/maxValue", static_cast<std::uint32_t>(info.maxValue))
        .Number(path + "/defaultValue", static_cast<std::uint32_t>(info.defaultValue))
        .Text(path + "/defaultString", info.defaultString);
}

Leaves& Leaves::Record(const std::string& path, const CADIParameterValue_t& value)
{
    return Number(path + "/parameterID", value.parameterID)
        .Raw(path + "/dataType", TypeName(value.dataType))
        .Number(path + "/intValue", static_cast<std::uint32_t>(value.intValue))
        .Text(path + "/stringValue", value.stringValue);
}

Leaves& Leaves::Record(const std::string& path, const CADIFactoryErrorMessage_t& error)
{
    return Raw(path + "/errorCode", ErrorName(error.errorCode))
        .Number(path + "/erroneousParameterId", error.erroneousParameterId)
        .Text(path + "/message", error.message)
        .Raw(path + "/severity",
             error.severity == CADIFACT_SEVERITY_OK ? "CADIFACT_SEVERITY_OK" : "CADIFACT_SEVERITY_ERROR");
}

Leaves& Leaves::Record(const std::string& path, const CADISimulationInfo_t& info)
{
    return Number(path + "/id", info.id)
        .Text(path + "/name", info.name)
        .Text(path + "/description", info.description);
}

Leaves& Leaves::Record(const std::string& path, const CADITargetInfo_t& info)
{
    return Number(path + "/id", info.id)
        .Text(path + "/targetName", info.targetName)
        .Text(path + "/instanceName", info.instanceName)
        .Text(path + "/version", info.version)
        .Text(path + "/description", info.description)
        .Text(path + "/componentType", info.componentType)
        .Number(path + "/numberOfParameters", info.numberOfParameters)
        .Flag(path + "/executesSoftware", info.executesSoftware)
        .Number(path + "/isHardwareModel", info.isHardwareModel)
        .Text(path + "/systemName", info.systemName)
        .Number(path + "/systemID", info.systemID)
        .Text(path + "/systemDescription", info.systemDescription);
}

Leaves& Leaves::Record(const std::string& path, const CADITargetFeatures_t& features)
{
    return Text(path + "/targetName", features.targetName)
        .Text(path + "/targetVersion", features.targetVersion)
        .Number(path + "/nrBreakpointsAvailable", features.nrBreakpointsAvailable)
        .Number(path + "/fOverlaySupportAvailable", features.fOverlaySupportAvailable)
        .Number(path + "/fProfilingAvailable", features.fProfilingAvailable)
        .Number(path + "/nrResetLevels", features.nrResetLevels)
        .Number(path + "/nrExecModes", features.nrExecModes)
        .Number(path + "/nrExceptions", features.nrExceptions)
        .Number(path + "/nrMemSpaces", features.nrMemSpaces)
        .Number(path + "/nrRegisterGroups", features.nrRegisterGroups)
        .Number(path + "/nrPipeStages", features.nrPipeStages)
        .Number(path + "/nPCRegNum", features.nPCRegNum)
        .Raw(path + "/handledBreakpoints", features.handledBreakpoints == 3
                                               ? "CADI_TARGET_FEATURE_BPT_{PROGRAM, MEMORY}"
                                               : "(not expected)")
        .Number(path + "/nrOfHWThreads", features.nrOfHWThreads)
        .Flag(path + "/nExtendedTargetFeaturesRegNumValid", features.nExtendedTargetFeaturesRegNumValid)
        .Number(path + "/nExtendedTargetFeaturesRegNum", features.nExtendedTargetFeaturesRegNum)
        .Text(path + "/canonicalRegisterDescription", features.canonicalRegisterDescription)
        .Text(path + "/canonicalMemoryDescription", features.canonicalMemoryDescription)
        .Number(path + "/canCompleteMultipleInstructionsPerCycle",
                features.canCompleteMultipleInstructionsPerCycle);
}

// ---- Registers ----------------------------------------------------------------------------------

Leaves& Leaves::Record(const std::string& path, const CADIRegGroup_t& group)
{
    return Number(path + "/groupID", group.groupID)
        .Text(path + "/description", group.description)
        .Number(path + "/numRegsInGroup", group.numRegsInGroup);
}

Leaves& Leaves::Record(const std::string& path, const CADIRegInfo_t& info)
{
    return Text(path + "/description", info.description)
        .Number(path + "/regNumber", info.regNumber)
        .Number(path + "/bitsWide", info.bitsWide)
        .Number(path + "/hasSideEffects", static_cast<unsigned long>(info.hasSideEffects))
        .Raw(path + "/details/type",
             info.details.type == CADI_REGTYPE_Simple ? "CADI_REGTYPE_Simple" : "(not expected)")
        .Number(path + "/details/count", info.details.count)
        .Raw(path + "/display", info.display == CADI_REGTYPE_PC ? "CADI_REGTYPE_PC" : "CADI_REGTYPE_HEX")
        .Number(path + "/symbols/numSymbols", info.symbols.numSymbols)
        .Raw(path + "/symbols/Symbols", "NULL")
        .Text(path + "/fpFormat", info.fpFormat)
        .Number(path + "/lsbOffset", info.lsbOffset)
        .Number(path + "/dwarfIndex", info.dwarfIndex)
        .Flag(path + "/isProfiled", info.isProfiled)
        .Flag(path + "/isPipeStageField", info.isPipeStageField)
        .Number(path + "/threadID", info.threadID)
        .Raw(path + "/attribute", AttributeName(info.attribute))
        .Number(path + "/canonicalRegisterNumber", info.canonicalRegisterNumber);
}

Leaves& Leaves::Record(const std::string& path, const CADIReg_t& reg)
{
    std::string bytes;
    for (std::size_t i = sizeof reg.bytes; i-- > 0;) {
        char text[4];
        std::snprintf(text, sizeof text, "%02x%s", reg.bytes[i], i % 4 == 0 ? " " : "");
        bytes += text;
    }
    return Number(path + "/regNumber", reg.regNumber)
        .Raw(path + "/bytes", bytes)
        .Number(path + "/offset128", reg.offset128)
        .Flag(path + "/isUndefined", reg.isUndefined)
        .Raw(path + "/attribute", AttributeName(reg.attribute));
}

// ---- Memory -------------------------------------------------------------------------------------

Leaves& Leaves::Record(const std::string& path, const CADIMemSpaceInfo_t& space)
{
    return Text(path + "/description", space.description)
        .Number(path + "/memSpaceId", space.memSpaceId)
        .Number(path + "/bitsPerMau", space.bitsPerMau)
        .Hex(path + "/maxAddress", static_cast<std::uint32_t>(space.maxAddress), 16)
        .Number(path + "/nrMemBlocks", space.nrMemBlocks)
        .Number(path + "/isProgramMemory", space.isProgramMemory)
        .Number(path + "/minAddress", static_cast<std::uint32_t>(space.minAddress))
        .Flag(path + "/isVirtualMemory", space.isVirtualMemory != 0)
        .Flag(path + "/isCache", space.isCache != 0)
        .Raw(path + "/endianness", EndiannessName(space.endianness))
        .Number(path + "/invariance", space.invariance)
        .Number(path + "/dwarfMemSpaceId", space.dwarfMemSpaceId)
        .Number(path + "/canonicalMemoryNumber", space.canonicalMemoryNumber);
}

Leaves& Leaves::Record(const std::string& path, const CADIMemBlockInfo_t& block)
{
    Text(path + "/description", block.description)
        .Number(path + "/id", block.id)
        .Number(path + "/parentID", block.parentID)
        .Hex(path + "/startAddr", static_cast<std::uint32_t>(block.startAddr), 16)
        .Hex(path + "/endAddr", static_cast<std::uint32_t>(block.endAddr), 16)
        .Number(path + "/cyclesToAccess", block.cyclesToAccess)
        .Raw(path + "/readWrite",
             block.readWrite == CADI_MEM_ReadWrite ? "CADI_MEM_ReadWrite" : "(not expected)");
    for (const std::uint32_t multiple : block.supportedMultiplesOfMAU) {
        Number(path + "/supportedMultiplesOfMAU/value", multiple);
    }
    return Raw(path + "/endianness", EndiannessName(block.endianness))
        .Number(path + "/invariance", block.invariance);
}

Leaves& Leaves::Record(const std::string& path, const CADICacheInfo_t& cache)
{
    return Number(path + "/cacheLineSize", cache.cacheLineSize)
        .Number(path + "/cacheTagBits", cache.cacheTagBits)
        .Number(path + "/associativity", cache.associativity)
        .Flag(path + "/writeThrough", cache.writeThrough);
}

Leaves& Leaves::Record(const std::string& path, const CADIAddr_t& address)
{
    return Number(path + "/spaceId", address.spaceId)
        .Text(path + "/spaceName", SpaceName(address.spaceId))
        .Hex(path + "/addr", address.addr, 16);
}

Leaves& Leaves::Record(const std::string& path, const CADIAddrComplete_t& address)
{
    return Number(path + "/overlay", address.overlay).Record(path + "/location", address.location);
}

// ---- Execution ----------------------------------------------------------------------------------

Leaves& Leaves::Record(const std::string& path, const CADIExecMode_t& mode)
{
    return Raw(path + "/number", ModeName(mode.number)).Text(path + "/name", mode.name);
}

Leaves& Leaves::Record(const std::string& path, const CADIResetLevel_t& level)
{
    return Number(path + "/number", level.number).Text(path + "/name", level.name);
}

Leaves& Leaves::Record(const std::string& path, const CADIPipeStage_t& stage)
{
    return Number(path + "/id", stage.id)
        .Text(path + "/name", stage.name)
        .Number(path + "/contentInfoRegisterId", stage.contentInfoRegisterId);
}

Leaves& Leaves::Record(const std::string& path, const CADIPipeStageField_t& field)
{
    return Number(path + "/pipeStageId", field.pipeStageId)
        .Number(path + "/registerId", field.registerId);
}

Leaves& Leaves::Record(const std::string& path, const CADIException_t& exception)
{
    return Number(path + "/number", exception.number)
        .Text(path + "/name", exception.name)
        .Record(path + "/vector", exception.vector);
}

// ---- Breakpoints --------------------------------------------------------------------------------

Leaves& Leaves::Record(const std::string& path, const CADIBptRequest_t& request)
{
    const auto& condition = request.formalCondition;
    return Record(path + "/address", request.address)
        .Number(path + "/sizeOfAddressRange", static_cast<std::uint32_t>(request.sizeOfAddressRange))
        .Number(path + "/enabled", request.enabled)
        .Text(path + "/conditions", request.conditions)
        .Flag(path + "/useFormalCondition", request.useFormalCondition)
        .Raw(path + "/formalCondition/conditionOperator",
             condition.conditionOperator == CADI_BPT_COND_UNCONDITIONAL ? "CADI_BPT_COND_UNCONDITIONAL"
                                                                        : "(not expected)")
        .Number(path + "/formalCondition/comparisonValue", condition.comparisonValue)
        .Number(path + "/formalCondition/threadID", condition.threadID)
        .Number(path + "/formalCondition/ignoreCount", condition.ignoreCount)
        .Number(path + "/formalCondition/bitwidth", condition.bitwidth)
        .Raw(path + "/type", request.type == CADI_BPT_PROGRAM ? "CADI_BPT_PROGRAM" : "CADI_BPT_MEMORY")
        .Number(path + "/regNumber", request.regNumber)
        .Number(path + "/temporary", request.temporary)
        .Raw(path + "/triggerType", request.triggerType == 0 ? "" : "CADI_BPT_TRIGGER_ON_WRITE")
        .Flag(path + "/continueExecution", request.continueExecution != 0);
}

Leaves& Leaves::Record(const std::string& path, const CADIBptDescription_t& breakpoint)
{
    return Number(path + "/bptNumber", breakpoint.bptNumber)
        .Record(path + "/bptInfo", breakpoint.bptInfo);
}

}  // namespace ScrivelTest
