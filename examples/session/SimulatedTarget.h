// A target that runs a program on a simulated core.

#ifndef SCRIVEL_EXAMPLES_SIMULATEDTARGET_H
#define SCRIVEL_EXAMPLES_SIMULATEDTARGET_H

#include "Rv32Core.h"
#include "Target.h"

#include <array>
#include <atomic>
#include <deque>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace Example
{

// What a debugger needs to know in advance; all else the target describes.
constexpr std::uint32_t pcRegister = 32;
constexpr std::uint32_t causeRegister = 33;
constexpr std::uint32_t memorySpace = 1;
constexpr std::uint32_t cacheSpace = 2;
constexpr std::uint32_t timerAddress = 0x40000000;

/// A device at an address of the target's.
struct Timer
{
    std::uint32_t load;
    std::uint32_t count;
};

class SimulatedTarget final : public Target
{
public:
    /// Fills the description that the broker and the target itself give.
    static void Describe(eslapi::CADITargetInfo_t* info);

    /// A target without a timer has a mistake: it does not look whether there is one when its address is
    /// written or read, and crashes.
    explicit SimulatedTarget(bool hasTimer);

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
    struct CacheLine
    {
        std::uint32_t tag = 0;
        bool valid = false;
    };

    void LoadProgram();
    bool StepOnce();
    void FillCacheLine();
    void ChangeMode(std::uint32_t newMode, std::uint32_t breakpoint);
    std::uint32_t ReachedBreakpoint(eslapi::CADIBptType_t type);
    std::uint32_t* Register(std::uint32_t number);

    Rv32Core core;
    std::unique_ptr<Timer> timer;
    std::array<CacheLine, 8> cache;
    std::uint32_t cause = 0;
    std::uint32_t interrupts = 0;
    std::deque<std::uint32_t> history;
    std::vector<std::string> disassembly;

    std::map<std::uint32_t, eslapi::CADIBptRequest_t> breakpoints;
    std::uint32_t lastBreakpoint = 0;
    std::vector<eslapi::CADIParameterValue_t> parameters;

    TargetCallback* callback = nullptr;
    std::atomic<std::uint32_t> mode{eslapi::CADI_EXECMODE_Stop};
    std::atomic<bool> stopWanted{false};
};

}  // namespace Example

#endif
