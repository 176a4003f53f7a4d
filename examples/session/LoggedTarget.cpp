// The wrappers of the run phase, a guard in each call. tests/examples/DebugSessionTest.cpp reads their
// log.

#include "LoggedTarget.h"

#include <algorithm>

namespace Example
{

using namespace eslapi;
using Scrivel2::LoggedCall;

namespace
{

/// How many entries of a list the target has filled in.
std::uint32_t Filled(CADIReturn_t status, const std::uint32_t* actual)
{
    return status == CADI_STATUS_OK ? *actual : 0;
}

/// What part of a list is asked for.
auto ListArguments(std::uint32_t start, std::uint32_t desired)
{
    return [=](auto& xml) {
        xml.WriteDecimal("start", start);
        xml.WriteDecimal("desired", desired);
    };
}

}  // namespace

// ---- Calls of the target ------------------------------------------------------------------------

void LoggedCallback::modeChange(std::uint32_t newMode, std::uint32_t breakpoint)
{
    LoggedCall call(log, "modeChange");
    call.Arguments([&](auto& xml) {
        xml.WriteExecMode("newMode", newMode);
        xml.WriteDecimal("bptNumber", breakpoint);
    });
    callback.modeChange(newMode, breakpoint);
}

// ---- The target itself --------------------------------------------------------------------------

CADIReturn_t LoggedTarget::CADIXfaceGetTargetInfo(CADITargetInfo_t* info)
{
    LoggedCall call(log, "CADIXfaceGetTargetInfo");
    const auto status = target->CADIXfaceGetTargetInfo(info);
    call.Results([&](auto& xml) {
        xml.WriteTargetInfoPtrVal("info", info);
        xml.WriteReturnType("return", status);
    });
    return status;
}

CADIReturn_t LoggedTarget::CADIXfaceGetFeatures(CADITargetFeatures_t* features)
{
    LoggedCall call(log, "CADIXfaceGetFeatures");
    const auto status = target->CADIXfaceGetFeatures(features);
    call.Results([&](auto& xml) {
        xml.WriteTargetFeatures("features", features);
        xml.WriteReturnType("return", status);
    });
    return status;
}

CADIReturn_t LoggedTarget::CADIXfaceAddCallback(TargetCallback* added, const char* enable,
                                                std::uint32_t kinds)
{
    LoggedCall call(log, "CADIXfaceAddCallback");
    call.Arguments([&](auto& xml) {
        xml.WriteAddress("callback", reinterpret_cast<std::uintptr_t>(added));
        xml.WriteCharArray("enable", enable, kinds);
    });
    callback = std::make_unique<LoggedCallback>(log, *added);
    const auto status = target->CADIXfaceAddCallback(callback.get(), enable, kinds);
    call.Results([&](auto& xml) { xml.WriteReturnType("return", status); });
    return status;
}

CADIReturn_t LoggedTarget::CADIXfaceRemoveCallback(TargetCallback* removed)
{
    LoggedCall call(log, "CADIXfaceRemoveCallback");
    call.Arguments(
        [&](auto& xml) { xml.WriteAddress("callback", reinterpret_cast<std::uintptr_t>(removed)); });
    const bool isKnown = callback != nullptr && callback->Debugger() == removed;
    const auto status = target->CADIXfaceRemoveCallback(isKnown ? callback.get() : removed);
    call.Results([&](auto& xml) { xml.WriteReturnType("return", status); });
    return status;
}

CADIReturn_t LoggedTarget::CADIXfaceBypass(char separator, const char* command, char* kind,
                                           std::string* response)
{
    LoggedCall call(log, "CADIXfaceBypass");
    call.Arguments([&](auto& xml) {
        xml.WriteChar("separator", separator);
        xml.WriteCharString("command", command);
    });
    const auto status = target->CADIXfaceBypass(separator, command, kind, response);
    call.Results([&](auto& xml) {
        xml.WriteCharPtrVal("kind", kind);
        xml.WriteStringPtrVal("response", response);
        xml.WriteReturnType("return", status);
    });
    return status;
}

CADIReturn_t LoggedTarget::CADIGetParameters(std::uint32_t start, std::uint32_t desired,
                                             std::uint32_t* actual, CADIParameterInfo_t* parameters)
{
    LoggedCall call(log, "CADIGetParameters");
    call.Arguments(ListArguments(start, desired));
    const auto status = target->CADIGetParameters(start, desired, actual, parameters);
    call.Results([&](auto& xml) {
        xml.WriteParameterInfoArray("parameters", parameters, Filled(status, actual));
        xml.WriteReturnType("return", status);
    });
    return status;
}

CADIReturn_t LoggedTarget::CADIGetParameterValues(std::uint32_t count, CADIParameterValue_t* values)
{
    LoggedCall call(log, "CADIGetParameterValues");
    call.Arguments([&](auto& xml) {
        for (std::uint32_t i = 0; i < count; ++i) {
            xml.WriteDecimal("parameterID", values[i].parameterID);
        }
    });
    const auto status = target->CADIGetParameterValues(count, values);
    call.Results([&](auto& xml) {
        xml.WriteParameterValueArray("values", values, count);
        xml.WriteReturnType("return", status);
    });
    return status;
}

CADIReturn_t LoggedTarget::CADISetParameters(std::uint32_t count, CADIParameterValue_t* values,
                                             CADIFactoryErrorMessage_t* error)
{
    LoggedCall call(log, "CADISetParameters");
    call.Arguments([&](auto& xml) { xml.WriteParameterValueArray("values", values, count); });
    const auto status = target->CADISetParameters(count, values, error);
    call.Results([&](auto& xml) {
        xml.WriteFactoryErrorMessagePtrVal("error", error);
        xml.WriteReturnType("return", status);
    });
    return status;
}

// ---- Registers ----------------------------------------------------------------------------------

CADIReturn_t LoggedTarget::CADIRegGetGroups(std::uint32_t start, std::uint32_t desired,
                                            std::uint32_t* actual, CADIRegGroup_t* groups)
{
    LoggedCall call(log, "CADIRegGetGroups");
    call.Arguments(ListArguments(start, desired));
    const auto status = target->CADIRegGetGroups(start, desired, actual, groups);
    call.Results([&](auto& xml) {
        xml.WriteRegGroupArray("groups", groups, Filled(status, actual));
        xml.WriteReturnType("return", status);
    });
    return status;
}

CADIReturn_t LoggedTarget::CADIRegGetMap(std::uint32_t group, std::uint32_t start, std::uint32_t desired,
                                         std::uint32_t* actual, CADIRegInfo_t* registers)
{
    LoggedCall call(log, "CADIRegGetMap");
    call.Arguments([&](auto& xml) {
        xml.WriteDecimal("groupID", group);
        xml.WriteDecimal("start", start);
        xml.WriteDecimal("desired", desired);
    });
    const auto status = target->CADIRegGetMap(group, start, desired, actual, registers);
    call.Results([&](auto& xml) {
        xml.WriteRegInfoArray("registers", registers, Filled(status, actual));
        xml.WriteReturnType("return", status);
    });
    log.LearnRegisters(registers, Filled(status, actual));
    return status;
}

CADIReturn_t LoggedTarget::CADIRegGetFloatFormat(std::uint32_t regNumber, CADIRegFloatFormat_t* format)
{
    LoggedCall call(log, "CADIRegGetFloatFormat");
    call.Arguments([&](auto& xml) { xml.WriteDecimal("regNumber", regNumber); });
    const auto status = target->CADIRegGetFloatFormat(regNumber, format);
    call.Results([&](auto& xml) {
        if (status == CADI_STATUS_OK) {  // else there is none
            xml.WriteRegFloatFormat("format", *format);
        }
        xml.WriteReturnType("return", status);
    });
    return status;
}

CADIReturn_t LoggedTarget::CADIRegRead(std::uint32_t count, CADIReg_t* values)
{
    LoggedCall call(log, "CADIRegRead");
    call.Arguments([&](auto& xml) {
        xml.WriteDecimal("regCount", count);
        for (std::uint32_t i = 0; i < count; ++i) {
            xml.WriteDecimal("regNumber", values[i].regNumber);
        }
    });
    const auto status = target->CADIRegRead(count, values);
    call.Results([&](auto& xml) {
        xml.WriteRegArray("reg", values, count);
        xml.WriteReturnType("return", status);
    });
    return status;
}

CADIReturn_t LoggedTarget::CADIRegWrite(std::uint32_t count, CADIReg_t* values)
{
    LoggedCall call(log, "CADIRegWrite");
    call.Arguments([&](auto& xml) {
        xml.WriteDecimal("regCount", count);
        xml.WriteRegArray("reg", values, count);
    });
    const auto status = target->CADIRegWrite(count, values);
    call.Results([&](auto& xml) { xml.WriteReturnType("return", status); });
    return status;
}

// ---- Memory -------------------------------------------------------------------------------------

CADIReturn_t LoggedTarget::CADIMemGetSpaces(std::uint32_t start, std::uint32_t desired,
                                            std::uint32_t* actual, CADIMemSpaceInfo_t* spaces)
{
    LoggedCall call(log, "CADIMemGetSpaces");
    call.Arguments(ListArguments(start, desired));
    const auto status = target->CADIMemGetSpaces(start, desired, actual, spaces);
    call.Results([&](auto& xml) {
        xml.WriteMemSpaceInfoArray("spaces", spaces, Filled(status, actual));
        xml.WriteReturnType("return", status);
    });
    log.LearnMemSpaces(spaces, Filled(status, actual));
    return status;
}

CADIReturn_t LoggedTarget::CADIMemGetBlocks(std::uint32_t space, std::uint32_t start,
                                            std::uint32_t desired, std::uint32_t* actual,
                                            CADIMemBlockInfo_t* blocks)
{
    LoggedCall call(log, "CADIMemGetBlocks");
    call.Arguments([&](auto& xml) {
        xml.WriteDecimal("memorySpace", space);
        xml.WriteDecimal("start", start);
        xml.WriteDecimal("desired", desired);
    });
    const auto status = target->CADIMemGetBlocks(space, start, desired, actual, blocks);
    call.Results([&](auto& xml) {
        xml.WriteMemBlockInfoArray("blocks", blocks, Filled(status, actual));
        xml.WriteReturnType("return", status);
    });
    return status;
}

CADIReturn_t LoggedTarget::CADIMemGetOverlays(std::uint32_t desired, std::uint32_t* actual,
                                              std::uint32_t* overlays)
{
    LoggedCall call(log, "CADIMemGetOverlays");
    call.Arguments([&](auto& xml) { xml.WriteDecimal("desired", desired); });
    const auto status = target->CADIMemGetOverlays(desired, actual, overlays);
    call.Results([&](auto& xml) {
        xml.WriteOverlayIdArray("overlays", overlays, Filled(status, actual));
        xml.WriteReturnType("return", status);
    });
    return status;
}

CADIReturn_t LoggedTarget::CADIMemRead(CADIAddrComplete_t start, std::uint32_t bytes, std::uint8_t* data,
                                       std::uint32_t* actual)
{
    LoggedCall call(log, "CADIMemRead");
    call.Arguments([&](auto& xml) {
        xml.WriteAddrComplete("startAddress", start);
        xml.WriteDecimal("bytes", bytes);
    });
    const auto status = target->CADIMemRead(start, bytes, data, actual);
    call.Results([&](auto& xml) {
        xml.WriteDecimalPtrVal("actual", actual);
        xml.WriteUint8Array("data", data, *actual, true);
        xml.WriteReturnType("return", status);
    });
    return status;
}

CADIReturn_t LoggedTarget::CADIMemWrite(CADIAddrComplete_t start, std::uint32_t bytes,
                                        const std::uint8_t* data, std::uint32_t* actual)
{
    LoggedCall call(log, "CADIMemWrite");
    call.Arguments([&](auto& xml) {
        xml.WriteAddrComplete("startAddress", start);
        xml.WriteDecimal("bytes", bytes);
        xml.WriteUint8Array("data", data, bytes, true);
    });
    const auto status = target->CADIMemWrite(start, bytes, data, actual);
    call.Results([&](auto& xml) {
        xml.WriteDecimalPtrVal("actual", actual);
        xml.WriteReturnType("return", status);
    });
    return status;
}

CADIReturn_t LoggedTarget::CADICacheGetInfo(std::uint32_t space, CADICacheInfo_t* info)
{
    LoggedCall call(log, "CADICacheGetInfo");
    call.Arguments([&](auto& xml) { xml.WriteDecimal("memorySpace", space); });
    const auto status = target->CADICacheGetInfo(space, info);
    call.Results([&](auto& xml) {
        xml.WriteCacheInfo("info", info);
        xml.WriteReturnType("return", status);
    });
    return status;
}

CADIReturn_t LoggedTarget::CADICacheRead(std::uint32_t space, std::uint32_t firstLine,
                                         std::uint32_t lines, std::uint32_t bytesPerLine,
                                         std::uint64_t* tags, bool* valid, std::uint8_t* data)
{
    LoggedCall call(log, "CADICacheRead");
    call.Arguments([&](auto& xml) {
        xml.WriteDecimal("memorySpace", space);
        xml.WriteDecimal("firstLine", firstLine);
        xml.WriteDecimal("lines", lines);
        xml.WriteDecimal("bytesPerLine", bytesPerLine);
    });
    const auto status = target->CADICacheRead(space, firstLine, lines, bytesPerLine, tags, valid, data);
    call.Results([&](auto& xml) {
        xml.WriteUint64Array("tags", tags, lines, true);
        xml.WriteBoolArray("valid", valid, lines);
        constexpr std::uint32_t windowSize = 16;
        for (std::uint32_t i = 0; i < lines && bytesPerLine == windowSize; ++i) {
            // A window of 16 bytes is written from the second byte on.
            std::uint8_t window[1 + windowSize] = {};
            std::copy_n(data + i * windowSize, windowSize, window + 1);
            xml.WriteLinesByteArray("line", window, 1, 1);
        }
        xml.WriteReturnType("return", status);
    });
    return status;
}

// ---- Execution ----------------------------------------------------------------------------------

CADIReturn_t LoggedTarget::CADIExecGetModes(std::uint32_t start, std::uint32_t desired,
                                            std::uint32_t* actual, CADIExecMode_t* modes)
{
    LoggedCall call(log, "CADIExecGetModes");
    call.Arguments(ListArguments(start, desired));
    const auto status = target->CADIExecGetModes(start, desired, actual, modes);
    call.Results([&](auto& xml) {
        xml.WriteExecModeArray("modes", modes, Filled(status, actual));
        xml.WriteReturnType("return", status);
    });
    return status;
}

CADIReturn_t LoggedTarget::CADIExecGetMode(std::uint32_t* mode)
{
    LoggedCall call(log, "CADIExecGetMode");
    const auto status = target->CADIExecGetMode(mode);
    call.Results([&](auto& xml) {
        xml.WriteExecModePtrVal("mode", mode);
        xml.WriteReturnType("return", status);
    });
    return status;
}

CADIReturn_t LoggedTarget::CADIExecGetResetLevels(std::uint32_t start, std::uint32_t desired,
                                                  std::uint32_t* actual, CADIResetLevel_t* levels)
{
    LoggedCall call(log, "CADIExecGetResetLevels");
    call.Arguments(ListArguments(start, desired));
    const auto status = target->CADIExecGetResetLevels(start, desired, actual, levels);
    call.Results([&](auto& xml) {
        xml.WriteResetLevelArray("levels", levels, Filled(status, actual));
        xml.WriteReturnType("return", status);
    });
    return status;
}

CADIReturn_t LoggedTarget::CADIExecReset(std::uint32_t level)
{
    LoggedCall call(log, "CADIExecReset");
    call.Arguments([&](auto& xml) { xml.WriteDecimal("level", level); });
    const auto status = target->CADIExecReset(level);
    call.Results([&](auto& xml) { xml.WriteReturnType("return", status); });
    return status;
}

CADIReturn_t LoggedTarget::CADIExecContinue()
{
    LoggedCall call(log, "CADIExecContinue");
    const auto status = target->CADIExecContinue();
    call.Results([&](auto& xml) { xml.WriteReturnType("return", status); });
    return status;
}

CADIReturn_t LoggedTarget::CADIExecStop()
{
    LoggedCall call(log, "CADIExecStop");
    const auto status = target->CADIExecStop();
    call.Results([&](auto& xml) { xml.WriteReturnType("return", status); });
    return status;
}

CADIReturn_t LoggedTarget::CADIExecSingleStep(std::uint32_t instructions)
{
    LoggedCall call(log, "CADIExecSingleStep");
    call.Arguments([&](auto& xml) { xml.WriteDecimal("instructions", instructions); });
    const auto status = target->CADIExecSingleStep(instructions);
    call.Results([&](auto& xml) { xml.WriteReturnType("return", status); });
    return status;
}

CADIReturn_t LoggedTarget::CADIExecGetPC(std::uint64_t* pc, bool* isValid)
{
    LoggedCall call(log, "CADIExecGetPC");
    const auto status = target->CADIExecGetPC(pc, isValid);
    call.Results([&](auto& xml) {
        xml.WriteHexPtrVal("pc", pc, 8);
        xml.WriteBoolPtrVal("isValid", isValid);
        xml.WriteReturnType("return", status);
    });
    return status;
}

CADIReturn_t LoggedTarget::CADIExecGetCycles(std::uint64_t* cycles)
{
    LoggedCall call(log, "CADIExecGetCycles");
    const auto status = target->CADIExecGetCycles(cycles);
    call.Results([&](auto& xml) {
        xml.WriteDecimalPtrVal("cycles", cycles);
        xml.WriteReturnType("return", status);
    });
    return status;
}

CADIReturn_t LoggedTarget::CADIExecGetHistory(std::uint32_t desired, std::uint32_t* actual,
                                              std::uint32_t* addresses)
{
    LoggedCall call(log, "CADIExecGetHistory");
    call.Arguments([&](auto& xml) { xml.WriteDecimal("desired", desired); });
    const auto status = target->CADIExecGetHistory(desired, actual, addresses);
    call.Results([&](auto& xml) {
        xml.WriteUint32Array("addresses", addresses, Filled(status, actual), true);
        xml.WriteReturnType("return", status);
    });
    return status;
}

CADIReturn_t LoggedTarget::CADIExecGetExceptions(std::uint32_t start, std::uint32_t desired,
                                                 std::uint32_t* actual, CADIException_t* exceptions)
{
    LoggedCall call(log, "CADIExecGetExceptions");
    call.Arguments(ListArguments(start, desired));
    const auto status = target->CADIExecGetExceptions(start, desired, actual, exceptions);
    call.Results([&](auto& xml) {
        xml.WriteExceptionArray("exceptions", exceptions, Filled(status, actual));
        xml.WriteReturnType("return", status);
    });
    return status;
}

CADIReturn_t LoggedTarget::CADIExecAssertException(std::uint32_t exception, CADIExceptionAction_t action)
{
    LoggedCall call(log, "CADIExecAssertException");
    call.Arguments([&](auto& xml) {
        xml.WriteDecimal("exception", exception);
        xml.WriteExceptionAction("action", action);
    });
    const auto status = target->CADIExecAssertException(exception, action);
    call.Results([&](auto& xml) { xml.WriteReturnType("return", status); });
    return status;
}

CADIReturn_t LoggedTarget::CADIExecGetInterrupts(std::uint64_t* lines)
{
    LoggedCall call(log, "CADIExecGetInterrupts");
    const auto status = target->CADIExecGetInterrupts(lines);
    call.Results([&](auto& xml) {
        xml.WriteBinPtrVal("lines", lines, 5);
        xml.WriteReturnType("return", status);
    });
    return status;
}

CADIReturn_t LoggedTarget::CADIExecGetPipeStages(std::uint32_t start, std::uint32_t desired,
                                                 std::uint32_t* actual, CADIPipeStage_t* stages)
{
    LoggedCall call(log, "CADIExecGetPipeStages");
    call.Arguments(ListArguments(start, desired));
    const auto status = target->CADIExecGetPipeStages(start, desired, actual, stages);
    call.Results([&](auto& xml) {
        xml.WritePipeStageArray("stages", stages, Filled(status, actual));
        xml.WriteReturnType("return", status);
    });
    return status;
}

CADIReturn_t LoggedTarget::CADIExecGetPipeStageFields(std::uint32_t stage, std::uint32_t* actual,
                                                      CADIPipeStageField_t* fields)
{
    LoggedCall call(log, "CADIExecGetPipeStageFields");
    call.Arguments([&](auto& xml) { xml.WriteDecimal("stage", stage); });
    const auto status = target->CADIExecGetPipeStageFields(stage, actual, fields);
    call.Results([&](auto& xml) {
        xml.WritePipeStageFieldArray("fields", fields, Filled(status, actual));
        xml.WriteReturnType("return", status);
    });
    return status;
}

CADIReturn_t LoggedTarget::CADIGetDisassembly(std::uint64_t address, std::uint32_t instructions,
                                              std::uint32_t* actual, char** lines)
{
    LoggedCall call(log, "CADIGetDisassembly");
    call.Arguments([&](auto& xml) {
        xml.WriteHex("address", address, 8);
        xml.WriteDecimal("instructions", instructions);
    });
    const auto status = target->CADIGetDisassembly(address, instructions, actual, lines);
    call.Results([&](auto& xml) {
        xml.WriteStringArray("lines", lines, *actual);
        xml.WriteReturnType("return", status);
    });
    return status;
}

// ---- Breakpoints --------------------------------------------------------------------------------

CADIReturn_t LoggedTarget::CADIBptSet(CADIBptRequest_t* request, std::uint32_t* number)
{
    LoggedCall call(log, "CADIBptSet");
    call.Arguments([&](auto& xml) { xml.WriteBptRequest("request", request); });
    const auto status = target->CADIBptSet(request, number);
    call.Results([&](auto& xml) {
        xml.WriteDecimalPtrVal("bptNumber", number);
        xml.WriteReturnType("return", status);
    });
    return status;
}

CADIReturn_t LoggedTarget::CADIBptConfigure(std::uint32_t number, CADIBptConfigure_t configuration)
{
    LoggedCall call(log, "CADIBptConfigure");
    call.Arguments([&](auto& xml) {
        xml.WriteDecimal("bptNumber", number);
        xml.WriteBptConfigure("configuration", configuration);
    });
    const auto status = target->CADIBptConfigure(number, configuration);
    call.Results([&](auto& xml) { xml.WriteReturnType("return", status); });
    return status;
}

CADIReturn_t LoggedTarget::CADIBptClear(std::uint32_t number)
{
    LoggedCall call(log, "CADIBptClear");
    call.Arguments([&](auto& xml) { xml.WriteDecimal("bptNumber", number); });
    const auto status = target->CADIBptClear(number);
    call.Results([&](auto& xml) { xml.WriteReturnType("return", status); });
    return status;
}

CADIReturn_t LoggedTarget::CADIBptGetList(std::uint32_t start, std::uint32_t desired,
                                          std::uint32_t* actual, CADIBptDescription_t* breakpoints)
{
    LoggedCall call(log, "CADIBptGetList");
    call.Arguments(ListArguments(start, desired));
    const auto status = target->CADIBptGetList(start, desired, actual, breakpoints);
    call.Results([&](auto& xml) {
        xml.WriteBptDescriptionArray("breakpoints", breakpoints, Filled(status, actual));
        xml.WriteReturnType("return", status);
    });
    return status;
}

}  // namespace Example
