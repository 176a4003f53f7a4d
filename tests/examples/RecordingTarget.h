// A target that hands every call to another one and remembers what was passed and returned.

#ifndef SCRIVEL_TESTS_EXAMPLES_RECORDINGTARGET_H
#define SCRIVEL_TESTS_EXAMPLES_RECORDINGTARGET_H

#include "Target.h"
#include "examples/Leaves.h"

#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace ScrivelTest
{

/// What a debugger knows of a call that it has made, as a log should show it.
struct RecordedCall
{
    std::string name;
    Leaves arguments;
    Leaves results;
};

/// All calls in the order in which they were entered, those of several threads in any.
class Recorder
{
public:
    /// The number of the call's place, for Returned.
    std::size_t Entered(const std::string& name, const Leaves& arguments);
    void Returned(std::size_t place, const Leaves& results);

    const std::vector<RecordedCall>& Calls() const { return calls; }

private:
    std::mutex mutex;
    std::vector<RecordedCall> calls;
};

class RecordingCallback final : public Example::TargetCallback
{
public:
    RecordingCallback(Recorder& calls, TargetCallback& debugger) : recorder(calls), callback(debugger) {}

    void modeChange(std::uint32_t newMode, std::uint32_t breakpoint) override;

private:
    Recorder& recorder;
    TargetCallback& callback;
};

class RecordingTarget final : public Example::Target
{
public:
    RecordingTarget(Recorder& calls, Target& recorded) : recorder(calls), target(recorded) {}

    eslapi::CADIReturn_t CADIXfaceGetTargetInfo(eslapi::CADITargetInfo_t* info) override;
    eslapi::CADIReturn_t CADIXfaceGetFeatures(eslapi::CADITargetFeatures_t* features) override;
    eslapi::CADIReturn_t CADIXfaceAddCallback(Example::TargetCallback* callback, const char* enable,
                                              std::uint32_t kinds) override;
    eslapi::CADIReturn_t CADIXfaceRemoveCallback(Example::TargetCallback* callback) override;
    eslapi::CADIReturn_t CADIXfaceBypass(char separator, const char* command, char* kind,
                                         std::string* response) override;
    eslapi::CADIReturn_t CADIGetParameters(std::uint32_t start, std::uint32_t desired,
                                           std::uint32_t* actual,
                                           eslapi::CADIParameterInfo_t* parameters) override;
    eslapi::CADIReturn_t CADIGetParameterValues(std::uint32_t count,
                                                eslapi::CADIParameterValue_t* values) override;
    eslapi::CADIReturn_t CADISetParameters(std::uint32_t count, eslapi::CADIParameterValue_t* values,
                                           eslapi::CADIFactoryErrorMessage_t* error) override;
    eslapi::CADIReturn_t CADIRegGetGroups(std::uint32_t start, std::uint32_t desired,
                                          std::uint32_t* actual, eslapi::CADIRegGroup_t* groups) override;
    eslapi::CADIReturn_t CADIRegGetMap(std::uint32_t group, std::uint32_t start, std::uint32_t desired,
                                       std::uint32_t* actual, eslapi::CADIRegInfo_t* registers) override;
    eslapi::CADIReturn_t CADIRegGetFloatFormat(std::uint32_t regNumber,
                                               eslapi::CADIRegFloatFormat_t* format) override;
    eslapi::CADIReturn_t CADIRegRead(std::uint32_t count, eslapi::CADIReg_t* values) override;
    eslapi::CADIReturn_t CADIRegWrite(std::uint32_t count, eslapi::CADIReg_t* values) override;
    eslapi::CADIReturn_t CADIMemGetSpaces(std::uint32_t start, std::uint32_t desired,
                                          std::uint32_t* actual,
                                          eslapi::CADIMemSpaceInfo_t* spaces) override;
    eslapi::CADIReturn_t CADIMemGetBlocks(std::uint32_t space, std::uint32_t start, std::uint32_t desired,
                                          std::uint32_t* actual,
                                          eslapi::CADIMemBlockInfo_t* blocks) override;
    eslapi::CADIReturn_t CADIMemGetOverlays(std::uint32_t desired, std::uint32_t* actual,
                                            std::uint32_t* overlays) override;
    eslapi::CADIReturn_t CADIMemRead(eslapi::CADIAddrComplete_t start, std::uint32_t bytes,
                                     std::uint8_t* data, std::uint32_t* actual) override;
    eslapi::CADIReturn_t CADIMemWrite(eslapi::CADIAddrComplete_t start, std::uint32_t bytes,
                                      const std::uint8_t* data, std::uint32_t* actual) override;
    eslapi::CADIReturn_t CADICacheGetInfo(std::uint32_t space, eslapi::CADICacheInfo_t* info) override;
    eslapi::CADIReturn_t CADICacheRead(std::uint32_t space, std::uint32_t firstLine, std::uint32_t lines,
                                       std::uint32_t bytesPerLine, unsigned long* tags, bool* valid,
                                       std::uint8_t* data) override;
    eslapi::CADIReturn_t CADIExecGetModes(std::uint32_t start, std::uint32_t desired,
                                          std::uint32_t* actual, eslapi::CADIExecMode_t* modes) override;
    eslapi::CADIReturn_t CADIExecGetMode(std::uint32_t* mode) override;
    eslapi::CADIReturn_t CADIExecGetResetLevels(std::uint32_t start, std::uint32_t desired,
                                                std::uint32_t* actual,
                                                eslapi::CADIResetLevel_t* levels) override;
    eslapi::CADIReturn_t CADIExecReset(std::uint32_t level) override;
    eslapi::CADIReturn_t CADIExecContinue() override;
    eslapi::CADIReturn_t CADIExecStop() override;
    eslapi::CADIReturn_t CADIExecSingleStep(std::uint32_t instructions) override;
    eslapi::CADIReturn_t CADIExecGetPC(unsigned long* pc, bool* isValid) override;
    eslapi::CADIReturn_t CADIExecGetCycles(unsigned long* cycles) override;
    eslapi::CADIReturn_t CADIExecGetHistory(std::uint32_t desired, std::uint32_t* actual,
                                            std::uint32_t* addresses) override;
    eslapi::CADIReturn_t CADIExecGetExceptions(std::uint32_t start, std::uint32_t desired,
                                               std::uint32_t* actual,
                                               eslapi::CADIException_t* exceptions) override;
    eslapi::CADIReturn_t CADIExecAssertException(std::uint32_t exception,
                                                 eslapi::CADIExceptionAction_t action) override;
    eslapi::CADIReturn_t CADIExecGetInterrupts(unsigned long* lines) override;
    eslapi::CADIReturn_t CADIExecGetPipeStages(std::uint32_t start, std::uint32_t desired,
                                               std::uint32_t* actual,
                                               eslapi::CADIPipeStage_t* stages) override;
    eslapi::CADIReturn_t CADIExecGetPipeStageFields(std::uint32_t stage, std::uint32_t* actual,
                                                    eslapi::CADIPipeStageField_t* fields) override;
    eslapi::CADIReturn_t CADIGetDisassembly(unsigned long address, std::uint32_t instructions,
                                            std::uint32_t* actual, char** lines) override;
    eslapi::CADIReturn_t CADIBptSet(eslapi::CADIBptRequest_t* request, std::uint32_t* number) override;
    eslapi::CADIReturn_t CADIBptConfigure(std::uint32_t number,
                                          eslapi::CADIBptConfigure_t configuration) override;
    eslapi::CADIReturn_t CADIBptClear(std::uint32_t number) override;
    eslapi::CADIReturn_t CADIBptGetList(std::uint32_t start, std::uint32_t desired, std::uint32_t* actual,
                                        eslapi::CADIBptDescription_t* breakpoints) override;

private:
    Recorder& recorder;
    Target& target;
    std::unique_ptr<RecordingCallback> callback;
};

}  // namespace ScrivelTest

#endif
