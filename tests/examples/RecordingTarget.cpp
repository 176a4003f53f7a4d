// Notes what goes through each call of a target and back. Used by tests/examples/DebugSessionTest.cpp.

#include "examples/RecordingTarget.h"

#include <cstdio>

namespace ScrivelTest
{

using namespace eslapi;

std::size_t Recorder::Entered(const std::string& name, const Leaves& arguments)
{
    const std::lock_guard<std::mutex> lock(mutex);
    calls.push_back({name, arguments, {}});
    return calls.size() - 1;
}

void Recorder::Returned(std::size_t place, const Leaves& resultss)
{
    const std::lock_guard<std::mutex> lock(mutex);
    calls[place].results = resultss;
}

namespace
{

Leaves ListArguments(std::uint32_t start, std::uint32_t desired)
{
    return Leaves().Number("start", start).Number("desired", desired);
}

std::string AddressText(const void* pointer)
{
    char text[32];
    std::snprintf(text, sizeof text, "0x%016lx", reinterpret_cast<unsigned long>(pointer));
    return text;
}

}  // namespace

void RecordingCallback::modeChange(std::uint32_t newMode, std::uint32_t breakpoint)
{
    recorder.Entered("modeChange",
                     Leaves().Raw("newMode", ModeName(newMode)).Number("bptNumber", breakpoint));
    callback.modeChange(newMode, breakpoint);
}

CADIReturn_t RecordingTarget::CADIXfaceAddCallback(Example::TargetCallback* added, const char* enable,
                                                   std::uint32_t kinds)
{
    callback = std::make_unique<RecordingCallback>(recorder, *added);
    Leaves arguments;
    arguments.Raw("callback", AddressText(callback.get()));
    for (std::uint32_t i = 0; i < kinds; ++i) {
        arguments.Text("enable/enable", std::string(1, enable[i]));
    }
    const auto place = recorder.Entered("CADIXfaceAddCallback", arguments);
    const auto status = target.CADIXfaceAddCallback(callback.get(), enable, kinds);
    recorder.Returned(place, Leaves().Status(status));
    return status;
}

CADIReturn_t RecordingTarget::CADIXfaceRemoveCallback(Example::TargetCallback*)
{
    const auto place = recorder.Entered("CADIXfaceRemoveCallback",
                                        Leaves().Raw("callback", AddressText(callback.get())));
    const auto status = target.CADIXfaceRemoveCallback(callback.get());
    recorder.Returned(place, Leaves().Status(status));
    return status;
}

CADIReturn_t RecordingTarget::CADIXfaceGetTargetInfo(CADITargetInfo_t* info)
{
    const auto place = recorder.Entered("CADIXfaceGetTargetInfo", {});
    const auto status = target.CADIXfaceGetTargetInfo(info);
    Leaves results;
    results.Record("info", *info).Flag("info/canRunInBackground", info->canRunInBackground);
    recorder.Returned(place, results.Status(status));
    return status;
}

CADIReturn_t RecordingTarget::CADIXfaceGetFeatures(CADITargetFeatures_t* features)
{
    const auto place = recorder.Entered("CADIXfaceGetFeatures", {});
    const auto status = target.CADIXfaceGetFeatures(features);
    Leaves results;
    results.Record("features", *features);
    recorder.Returned(place, results.Status(status));
    return status;
}

CADIReturn_t RecordingTarget::CADIXfaceBypass(char separator, const char* command, char* kind,
                                              std::string* response)
{
    Leaves arguments;
    arguments.Text("separator", std::string(1, separator))
        .Text("command", command == nullptr ? "NULL" : command);
    const auto place = recorder.Entered("CADIXfaceBypass", arguments);
    const auto status = target.CADIXfaceBypass(separator, command, kind, response);
    Leaves results;
    results.Text("kind", std::string(1, *kind)).Text("response", *response);
    recorder.Returned(place, results.Status(status));
    return status;
}

CADIReturn_t RecordingTarget::CADIGetParameters(std::uint32_t start, std::uint32_t desired,
                                                std::uint32_t* actual, CADIParameterInfo_t* parameters)
{
    const auto place = recorder.Entered("CADIGetParameters", ListArguments(start, desired));
    const auto status = target.CADIGetParameters(start, desired, actual, parameters);
    Leaves results;
    results.List("parameters", parameters, *actual,
                 [](const auto& info) { return std::string(info.name); });
    recorder.Returned(place, results.Status(status));
    return status;
}

CADIReturn_t RecordingTarget::CADIGetParameterValues(std::uint32_t count, CADIParameterValue_t* values)
{
    Leaves arguments;
    for (std::uint32_t i = 0; i < count; ++i) {
        arguments.Number("parameterID", values[i].parameterID);
    }
    const auto place = recorder.Entered("CADIGetParameterValues", arguments);
    const auto status = target.CADIGetParameterValues(count, values);
    Leaves results;
    results.List("values", values, count, "parameterValue");
    recorder.Returned(place, results.Status(status));
    return status;
}

CADIReturn_t RecordingTarget::CADISetParameters(std::uint32_t count, CADIParameterValue_t* values,
                                                CADIFactoryErrorMessage_t* error)
{
    Leaves arguments;
    arguments.List("values", values, count, "parameterValue");
    const auto place = recorder.Entered("CADISetParameters", arguments);
    const auto status = target.CADISetParameters(count, values, error);
    Leaves results;
    results.Record("error", *error);
    recorder.Returned(place, results.Status(status));
    return status;
}

CADIReturn_t RecordingTarget::CADIRegGetGroups(std::uint32_t start, std::uint32_t desired,
                                               std::uint32_t* actual, CADIRegGroup_t* groups)
{
    const auto place = recorder.Entered("CADIRegGetGroups", ListArguments(start, desired));
    const auto status = target.CADIRegGetGroups(start, desired, actual, groups);
    Leaves results;
    results.List("groups", groups, *actual, [](const auto& group) { return std::string(group.name); });
    recorder.Returned(place, results.Status(status));
    return status;
}

CADIReturn_t RecordingTarget::CADIRegGetMap(std::uint32_t group, std::uint32_t start,
                                            std::uint32_t desired, std::uint32_t* actual,
                                            CADIRegInfo_t* registers)
{
    Leaves arguments;
    arguments.Number("groupID", group).Number("start", start).Number("desired", desired);
    const auto place = recorder.Entered("CADIRegGetMap", arguments);
    const auto status = target.CADIRegGetMap(group, start, desired, actual, registers);
    Leaves results;
    results.List("registers", registers, *actual,
                 [](const auto& info) { return std::string(info.name); });
    recorder.Returned(place, results.Status(status));
    return status;
}

CADIReturn_t RecordingTarget::CADIRegGetFloatFormat(std::uint32_t regNumber, CADIRegFloatFormat_t* format)
{
    Leaves arguments;
    arguments.Number("regNumber", regNumber);
    const auto place = recorder.Entered("CADIRegGetFloatFormat", arguments);
    const auto status = target.CADIRegGetFloatFormat(regNumber, format);
    recorder.Returned(place, Leaves().Status(status));
    return status;
}

CADIReturn_t RecordingTarget::CADIRegRead(std::uint32_t count, CADIReg_t* values)
{
    Leaves arguments;
    arguments.Number("regCount", count);
    for (std::uint32_t i = 0; i < count; ++i) {
        arguments.Number("regNumber", values[i].regNumber);
    }
    const auto place = recorder.Entered("CADIRegRead", arguments);
    const auto status = target.CADIRegRead(count, values);
    Leaves results;
    results.List("reg", values, count, [](const auto& reg) { return RegisterName(reg.regNumber); });
    recorder.Returned(place, results.Status(status));
    return status;
}

CADIReturn_t RecordingTarget::CADIRegWrite(std::uint32_t count, CADIReg_t* values)
{
    Leaves arguments;
    arguments.Number("regCount", count).List("reg", values, count, [](const auto& reg) {
        return RegisterName(reg.regNumber);
    });
    const auto place = recorder.Entered("CADIRegWrite", arguments);
    const auto status = target.CADIRegWrite(count, values);
    recorder.Returned(place, Leaves().Status(status));
    return status;
}

CADIReturn_t RecordingTarget::CADIMemGetSpaces(std::uint32_t start, std::uint32_t desired,
                                               std::uint32_t* actual, CADIMemSpaceInfo_t* spaces)
{
    const auto place = recorder.Entered("CADIMemGetSpaces", ListArguments(start, desired));
    const auto status = target.CADIMemGetSpaces(start, desired, actual, spaces);
    Leaves results;
    results.List("spaces", spaces, *actual, [](const auto& space) { return std::string(space.name); });
    recorder.Returned(place, results.Status(status));
    return status;
}

CADIReturn_t RecordingTarget::CADIMemGetBlocks(std::uint32_t space, std::uint32_t start,
                                               std::uint32_t desired, std::uint32_t* actual,
                                               CADIMemBlockInfo_t* blocks)
{
    Leaves arguments;
    arguments.Number("memorySpace", space).Number("start", start).Number("desired", desired);
    const auto place = recorder.Entered("CADIMemGetBlocks", arguments);
    const auto status = target.CADIMemGetBlocks(space, start, desired, actual, blocks);
    Leaves results;
    results.List("blocks", blocks, *actual, [](const auto& block) { return std::string(block.name); });
    recorder.Returned(place, results.Status(status));
    return status;
}

CADIReturn_t RecordingTarget::CADIMemGetOverlays(std::uint32_t desired, std::uint32_t* actual,
                                                 std::uint32_t* overlays)
{
    Leaves arguments;
    arguments.Number("desired", desired);
    const auto place = recorder.Entered("CADIMemGetOverlays", arguments);
    const auto status = target.CADIMemGetOverlays(desired, actual, overlays);
    Leaves results;
    for (std::uint32_t i = 0; i < *actual; ++i) {
        results.Number("overlays/overlayId", overlays[i]);
    }
    recorder.Returned(place, results.Status(status));
    return status;
}

CADIReturn_t RecordingTarget::CADIMemRead(CADIAddrComplete_t start, std::uint32_t bytes,
                                          std::uint8_t* data, std::uint32_t* actual)
{
    Leaves arguments;
    arguments.Record("startAddress", start).Number("bytes", bytes);
    const auto place = recorder.Entered("CADIMemRead", arguments);
    const auto status = target.CADIMemRead(start, bytes, data, actual);
    Leaves results;
    results.Number("actual", *actual);
    for (std::uint32_t i = 0; i < *actual; ++i) {
        results.Hex("data/value", data[i], 2);
    }
    recorder.Returned(place, results.Status(status));
    return status;
}

CADIReturn_t RecordingTarget::CADIMemWrite(CADIAddrComplete_t start, std::uint32_t bytes,
                                           const std::uint8_t* data, std::uint32_t* actual)
{
    Leaves arguments;
    arguments.Record("startAddress", start).Number("bytes", bytes);
    for (std::uint32_t i = 0; i < bytes; ++i) {
        arguments.Hex("data/value", data[i], 2);
    }
    const auto place = recorder.Entered("CADIMemWrite", arguments);
    const auto status = target.CADIMemWrite(start, bytes, data, actual);
    Leaves results;
    results.Number("actual", *actual);
    recorder.Returned(place, results.Status(status));
    return status;
}

CADIReturn_t RecordingTarget::CADICacheGetInfo(std::uint32_t space, CADICacheInfo_t* info)
{
    Leaves arguments;
    arguments.Number("memorySpace", space);
    const auto place = recorder.Entered("CADICacheGetInfo", arguments);
    const auto status = target.CADICacheGetInfo(space, info);
    Leaves results;
    results.Record("info", *info);
    recorder.Returned(place, results.Status(status));
    return status;
}

CADIReturn_t RecordingTarget::CADICacheRead(std::uint32_t space, std::uint32_t firstLine,
                                            std::uint32_t lines, std::uint32_t bytesPerLine,
                                            unsigned long* tags, bool* valid, std::uint8_t* data)
{
    Leaves arguments;
    arguments.Number("memorySpace", space)
        .Number("firstLine", firstLine)
        .Number("lines", lines)
        .Number("bytesPerLine", bytesPerLine);
    const auto place = recorder.Entered("CADICacheRead", arguments);
    const auto status = target.CADICacheRead(space, firstLine, lines, bytesPerLine, tags, valid, data);
    Leaves results;
    for (std::uint32_t i = 0; i < lines; ++i) {
        results.Hex("tags/int", tags[i], 16);
    }
    for (std::uint32_t i = 0; i < lines; ++i) {
        results.Flag("valid/bool_array", valid[i]);
    }
    for (std::uint32_t i = 0; i < lines; ++i) {
        std::string line;
        for (std::uint32_t byte = bytesPerLine; byte-- > 0;) {
            char text[4];
            std::snprintf(text, sizeof text, "%02x%s", data[i * bytesPerLine + byte],
                          byte % 4 == 0 ? " " : "");
            line += text;
        }
        results.Raw("line/value", line);
    }
    recorder.Returned(place, results.Status(status));
    return status;
}

CADIReturn_t RecordingTarget::CADIExecGetModes(std::uint32_t start, std::uint32_t desired,
                                               std::uint32_t* actual, CADIExecMode_t* modes)
{
    const auto place = recorder.Entered("CADIExecGetModes", ListArguments(start, desired));
    const auto status = target.CADIExecGetModes(start, desired, actual, modes);
    Leaves results;
    results.List("modes", modes, *actual, "execMode");
    recorder.Returned(place, results.Status(status));
    return status;
}

CADIReturn_t RecordingTarget::CADIExecGetMode(std::uint32_t* mode)
{
    const auto place = recorder.Entered("CADIExecGetMode", {});
    const auto status = target.CADIExecGetMode(mode);
    Leaves results;
    results.Raw("mode", ModeName(*mode));
    recorder.Returned(place, results.Status(status));
    return status;
}

CADIReturn_t RecordingTarget::CADIExecGetResetLevels(std::uint32_t start, std::uint32_t desired,
                                                     std::uint32_t* actual, CADIResetLevel_t* levels)
{
    const auto place = recorder.Entered("CADIExecGetResetLevels", ListArguments(start, desired));
    const auto status = target.CADIExecGetResetLevels(start, desired, actual, levels);
    Leaves results;
    results.List("levels", levels, *actual, "resetLevel");
    recorder.Returned(place, results.Status(status));
    return status;
}

CADIReturn_t RecordingTarget::CADIExecReset(std::uint32_t level)
{
    Leaves arguments;
    arguments.Number("level", level);
    const auto place = recorder.Entered("CADIExecReset", arguments);
    const auto status = target.CADIExecReset(level);
    recorder.Returned(place, Leaves().Status(status));
    return status;
}

CADIReturn_t RecordingTarget::CADIExecContinue()
{
    const auto place = recorder.Entered("CADIExecContinue", {});
    const auto status = target.CADIExecContinue();
    recorder.Returned(place, Leaves().Status(status));
    return status;
}

CADIReturn_t RecordingTarget::CADIExecStop()
{
    const auto place = recorder.Entered("CADIExecStop", {});
    const auto status = target.CADIExecStop();
    recorder.Returned(place, Leaves().Status(status));
    return status;
}

CADIReturn_t RecordingTarget::CADIExecSingleStep(std::uint32_t instructions)
{
    Leaves arguments;
    arguments.Number("instructions", instructions);
    const auto place = recorder.Entered("CADIExecSingleStep", arguments);
    const auto status = target.CADIExecSingleStep(instructions);
    recorder.Returned(place, Leaves().Status(status));
    return status;
}

CADIReturn_t RecordingTarget::CADIExecGetPC(unsigned long* pc, bool* isValid)
{
    const auto place = recorder.Entered("CADIExecGetPC", {});
    const auto status = target.CADIExecGetPC(pc, isValid);
    Leaves results;
    results.Hex("pc", *pc, 8).Flag("isValid", *isValid);
    recorder.Returned(place, results.Status(status));
    return status;
}

CADIReturn_t RecordingTarget::CADIExecGetCycles(unsigned long* cycles)
{
    const auto place = recorder.Entered("CADIExecGetCycles", {});
    const auto status = target.CADIExecGetCycles(cycles);
    Leaves results;
    results.Number("cycles", *cycles);
    recorder.Returned(place, results.Status(status));
    return status;
}

CADIReturn_t RecordingTarget::CADIExecGetHistory(std::uint32_t desired, std::uint32_t* actual,
                                                 std::uint32_t* addresses)
{
    Leaves arguments;
    arguments.Number("desired", desired);
    const auto place = recorder.Entered("CADIExecGetHistory", arguments);
    const auto status = target.CADIExecGetHistory(desired, actual, addresses);
    Leaves results;
    for (std::uint32_t i = 0; i < *actual; ++i) {
        results.Hex("addresses/value", addresses[i], 8);
    }
    recorder.Returned(place, results.Status(status));
    return status;
}

CADIReturn_t RecordingTarget::CADIExecGetExceptions(std::uint32_t start, std::uint32_t desired,
                                                    std::uint32_t* actual, CADIException_t* exceptions)
{
    const auto place = recorder.Entered("CADIExecGetExceptions", ListArguments(start, desired));
    const auto status = target.CADIExecGetExceptions(start, desired, actual, exceptions);
    Leaves results;
    results.List("exceptions", exceptions, *actual, "exception");
    recorder.Returned(place, results.Status(status));
    return status;
}

CADIReturn_t RecordingTarget::CADIExecAssertException(std::uint32_t exception,
                                                      CADIExceptionAction_t action)
{
    Leaves arguments;
    arguments.Number("exception", exception)
        .Raw("action",
             action == eslapi::CADI_EXCEPTION_Raise ? "CADI_EXCEPTION_Raise" : "(not expected)");
    const auto place = recorder.Entered("CADIExecAssertException", arguments);
    const auto status = target.CADIExecAssertException(exception, action);
    recorder.Returned(place, Leaves().Status(status));
    return status;
}

CADIReturn_t RecordingTarget::CADIExecGetInterrupts(unsigned long* lines)
{
    const auto place = recorder.Entered("CADIExecGetInterrupts", {});
    const auto status = target.CADIExecGetInterrupts(lines);
    Leaves results;
    std::string bits;
    for (unsigned int bit = 5; bit-- > 0;) {
        bits += (*lines >> bit & 1) != 0 ? '1' : '0';
    }
    results.Raw("lines", bits);
    recorder.Returned(place, results.Status(status));
    return status;
}

CADIReturn_t RecordingTarget::CADIExecGetPipeStages(std::uint32_t start, std::uint32_t desired,
                                                    std::uint32_t* actual, CADIPipeStage_t* stages)
{
    const auto place = recorder.Entered("CADIExecGetPipeStages", ListArguments(start, desired));
    const auto status = target.CADIExecGetPipeStages(start, desired, actual, stages);
    Leaves results;
    results.List("stages", stages, *actual, "pipeStage");
    recorder.Returned(place, results.Status(status));
    return status;
}

CADIReturn_t RecordingTarget::CADIExecGetPipeStageFields(std::uint32_t stage, std::uint32_t* actual,
                                                         CADIPipeStageField_t* fields)
{
    Leaves arguments;
    arguments.Number("stage", stage);
    const auto place = recorder.Entered("CADIExecGetPipeStageFields", arguments);
    const auto status = target.CADIExecGetPipeStageFields(stage, actual, fields);
    Leaves results;
    results.List("fields", fields, *actual, "pipeStageField");
    recorder.Returned(place, results.Status(status));
    return status;
}

CADIReturn_t RecordingTarget::CADIGetDisassembly(unsigned long address, std::uint32_t instructions,
                                                 std::uint32_t* actual, char** lines)
{
    Leaves arguments;
    arguments.Hex("address", address, 8).Number("instructions", instructions);
    const auto place = recorder.Entered("CADIGetDisassembly", arguments);
    const auto status = target.CADIGetDisassembly(address, instructions, actual, lines);
    Leaves results;
    for (std::uint32_t i = 0; i < *actual; ++i) {
        results.Text("lines/lines/lines", lines[i]);
    }
    recorder.Returned(place, results.Status(status));
    return status;
}

CADIReturn_t RecordingTarget::CADIBptSet(CADIBptRequest_t* request, std::uint32_t* number)
{
    Leaves arguments;
    arguments.Record("request", *request);
    const auto place = recorder.Entered("CADIBptSet", arguments);
    const auto status = target.CADIBptSet(request, number);
    Leaves results;
    results.Number("bptNumber", *number);
    recorder.Returned(place, results.Status(status));
    return status;
}

CADIReturn_t RecordingTarget::CADIBptConfigure(std::uint32_t number, CADIBptConfigure_t configuration)
{
    Leaves arguments;
    arguments.Number("bptNumber", number)
        .Raw("configuration",
             configuration == eslapi::CADI_BPT_Enable ? "CADI_BPT_Enable" : "CADI_BPT_Disable");
    const auto place = recorder.Entered("CADIBptConfigure", arguments);
    const auto status = target.CADIBptConfigure(number, configuration);
    recorder.Returned(place, Leaves().Status(status));
    return status;
}

CADIReturn_t RecordingTarget::CADIBptClear(std::uint32_t number)
{
    Leaves arguments;
    arguments.Number("bptNumber", number);
    const auto place = recorder.Entered("CADIBptClear", arguments);
    const auto status = target.CADIBptClear(number);
    recorder.Returned(place, Leaves().Status(status));
    return status;
}

CADIReturn_t RecordingTarget::CADIBptGetList(std::uint32_t start, std::uint32_t desired,
                                             std::uint32_t* actual, CADIBptDescription_t* breakpoints)
{
    const auto place = recorder.Entered("CADIBptGetList", ListArguments(start, desired));
    const auto status = target.CADIBptGetList(start, desired, actual, breakpoints);
    Leaves results;
    results.List("breakpoints", breakpoints, *actual, "breakpoints");
    recorder.Returned(place, results.Status(status));
    return status;
}

}  // namespace ScrivelTest
