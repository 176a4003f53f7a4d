// A target that hands every call to another one and writes it to a log.

#ifndef SCRIVEL_EXAMPLES_LOGGEDTARGET_H
#define SCRIVEL_EXAMPLES_LOGGEDTARGET_H

#include "LoggedCall.h"
#include "Target.h"

#include <memory>

namespace Example
{

/// Hands the target's calls of a debugger on, and writes them to the log too.
class LoggedCallback final : public TargetCallback
{
public:
    LoggedCallback(Scrivel2::RunLog& runLog, TargetCallback& debugger) : log(runLog), callback(debugger)
    {
    }

    /// Whom the calls go to.
    TargetCallback* Debugger() const { return &callback; }

    void modeChange(std::uint32_t newMode, std::uint32_t breakpoint) override;

private:
    Scrivel2::RunLog& log;
    TargetCallback& callback;
};

/// The log must outlive it.
class LoggedTarget final : public Target
{
public:
    LoggedTarget(Scrivel2::RunLog& runLog, std::unique_ptr<Target> logged)
        : log(runLog), target(std::move(logged))
    {
    }

    eslapi::CADIReturn_t CADIXfaceGetTargetInfo(eslapi::CADITargetInfo_t* info) override;
    eslapi::CADIReturn_t CADIXfaceGetFeatures(eslapi::CADITargetFeatures_t* features) override;
    eslapi::CADIReturn_t CADIXfaceAddCallback(TargetCallback* callback, const char* enable,
                                              std::uint32_t kinds) override;
    eslapi::CADIReturn_t CADIXfaceRemoveCallback(TargetCallback* callback) override;
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
                                       std::uint32_t bytesPerLine, std::uint64_t* tags, bool* valid,
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
    eslapi::CADIReturn_t CADIExecGetPC(std::uint64_t* pc, bool* isValid) override;
    eslapi::CADIReturn_t CADIExecGetCycles(std::uint64_t* cycles) override;
    eslapi::CADIReturn_t CADIExecGetHistory(std::uint32_t desired, std::uint32_t* actual,
                                            std::uint32_t* addresses) override;
    eslapi::CADIReturn_t CADIExecGetExceptions(std::uint32_t start, std::uint32_t desired,
                                               std::uint32_t* actual,
                                               eslapi::CADIException_t* exceptions) override;
    eslapi::CADIReturn_t CADIExecAssertException(std::uint32_t exception,
                                                 eslapi::CADIExceptionAction_t action) override;
    eslapi::CADIReturn_t CADIExecGetInterrupts(std::uint64_t* lines) override;
    eslapi::CADIReturn_t CADIExecGetPipeStages(std::uint32_t start, std::uint32_t desired,
                                               std::uint32_t* actual,
                                               eslapi::CADIPipeStage_t* stages) override;
    eslapi::CADIReturn_t CADIExecGetPipeStageFields(std::uint32_t stage, std::uint32_t* actual,
                                                    eslapi::CADIPipeStageField_t* fields) override;
    eslapi::CADIReturn_t CADIGetDisassembly(std::uint64_t address, std::uint32_t instructions,
                                            std::uint32_t* actual, char** lines) override;
    eslapi::CADIReturn_t CADIBptSet(eslapi::CADIBptRequest_t* request, std::uint32_t* number) override;
    eslapi::CADIReturn_t CADIBptConfigure(std::uint32_t number,
                                          eslapi::CADIBptConfigure_t configuration) override;
    eslapi::CADIReturn_t CADIBptClear(std::uint32_t number) override;
    eslapi::CADIReturn_t CADIBptGetList(std::uint32_t start, std::uint32_t desired, std::uint32_t* actual,
                                        eslapi::CADIBptDescription_t* breakpoints) override;

private:
    Scrivel2::RunLog& log;
    std::unique_ptr<LoggedCallback> callback;  // outlives the target, which knows it
    std::unique_ptr<Target> target;
};

}  // namespace Example

#endif
