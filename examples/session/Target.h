// What a debugger calls: the interfaces of simulations and targets. Their calls carry the records of
// CADITypes.h; a list is asked for piece by piece, from `start` on, into memory of the caller's.

#ifndef SCRIVEL_EXAMPLES_TARGET_H
#define SCRIVEL_EXAMPLES_TARGET_H

#include <CADITypes.h>

#include <cstdint>
#include <memory>
#include <string>

namespace Example
{

/// What a target tells while it runs, on the thread that made it run.
class TargetCallback
{
public:
    virtual ~TargetCallback() = default;

    /// `breakpoint` is its number for CADI_EXECMODE_Bpt, else 0.
    virtual void modeChange(std::uint32_t newMode, std::uint32_t breakpoint) = 0;
};

/// One processor of a simulation. Calls come from one thread at a time, but CADIExecStop and
/// CADIExecGetMode may come from any while another call runs.
class Target
{
public:
    virtual ~Target() = default;

    // ---- The target itself --------------------------------------------------------------------

    virtual eslapi::CADIReturn_t CADIXfaceGetTargetInfo(eslapi::CADITargetInfo_t* info) = 0;
    virtual eslapi::CADIReturn_t CADIXfaceGetFeatures(eslapi::CADITargetFeatures_t* features) = 0;

    /// `enable` has a '1' or a '0' for each kind of callback.
    virtual eslapi::CADIReturn_t CADIXfaceAddCallback(TargetCallback* callback, const char* enable,
                                                      std::uint32_t kinds) = 0;
    virtual eslapi::CADIReturn_t CADIXfaceRemoveCallback(TargetCallback* callback) = 0;

    /// Carries a command of the target's own, of words that `separator` separates; `kind` becomes what
    /// kind of answer it is.
    virtual eslapi::CADIReturn_t CADIXfaceBypass(char separator, const char* command, char* kind,
                                                 std::string* response) = 0;

    virtual eslapi::CADIReturn_t CADIGetParameters(std::uint32_t start, std::uint32_t desired,
                                                   std::uint32_t* actual,
                                                   eslapi::CADIParameterInfo_t* parameters) = 0;
    virtual eslapi::CADIReturn_t CADIGetParameterValues(std::uint32_t count,
                                                        eslapi::CADIParameterValue_t* values) = 0;
    /// Takes all values or none: `error` tells what is wrong with one.
    virtual eslapi::CADIReturn_t CADISetParameters(std::uint32_t count,
                                                   eslapi::CADIParameterValue_t* values,
                                                   eslapi::CADIFactoryErrorMessage_t* error) = 0;

    // ---- Registers ----------------------------------------------------------------------------

    virtual eslapi::CADIReturn_t CADIRegGetGroups(std::uint32_t start, std::uint32_t desired,
                                                  std::uint32_t* actual,
                                                  eslapi::CADIRegGroup_t* groups) = 0;
    virtual eslapi::CADIReturn_t CADIRegGetMap(std::uint32_t group, std::uint32_t start,
                                               std::uint32_t desired, std::uint32_t* actual,
                                               eslapi::CADIRegInfo_t* registers) = 0;
    virtual eslapi::CADIReturn_t CADIRegGetFloatFormat(std::uint32_t regNumber,
                                                       eslapi::CADIRegFloatFormat_t* format) = 0;
    virtual eslapi::CADIReturn_t CADIRegRead(std::uint32_t count, eslapi::CADIReg_t* values) = 0;
    virtual eslapi::CADIReturn_t CADIRegWrite(std::uint32_t count, eslapi::CADIReg_t* values) = 0;

    // ---- Memory -------------------------------------------------------------------------------

    virtual eslapi::CADIReturn_t CADIMemGetSpaces(std::uint32_t start, std::uint32_t desired,
                                                  std::uint32_t* actual,
                                                  eslapi::CADIMemSpaceInfo_t* spaces) = 0;
    virtual eslapi::CADIReturn_t CADIMemGetBlocks(std::uint32_t space, std::uint32_t start,
                                                  std::uint32_t desired, std::uint32_t* actual,
                                                  eslapi::CADIMemBlockInfo_t* blocks) = 0;
    virtual eslapi::CADIReturn_t CADIMemGetOverlays(std::uint32_t desired, std::uint32_t* actual,
                                                    std::uint32_t* overlays) = 0;
    virtual eslapi::CADIReturn_t CADIMemRead(eslapi::CADIAddrComplete_t start, std::uint32_t bytes,
                                             std::uint8_t* data, std::uint32_t* actual) = 0;
    virtual eslapi::CADIReturn_t CADIMemWrite(eslapi::CADIAddrComplete_t start, std::uint32_t bytes,
                                              const std::uint8_t* data, std::uint32_t* actual) = 0;

    virtual eslapi::CADIReturn_t CADICacheGetInfo(std::uint32_t space, eslapi::CADICacheInfo_t* info) = 0;
    /// Of each line its tag, whether it is in use, and `bytesPerLine` bytes of data.
    virtual eslapi::CADIReturn_t CADICacheRead(std::uint32_t space, std::uint32_t firstLine,
                                               std::uint32_t lines, std::uint32_t bytesPerLine,
                                               std::uint64_t* tags, bool* valid, std::uint8_t* data) = 0;

    // ---- Execution ----------------------------------------------------------------------------

    virtual eslapi::CADIReturn_t CADIExecGetModes(std::uint32_t start, std::uint32_t desired,
                                                  std::uint32_t* actual,
                                                  eslapi::CADIExecMode_t* modes) = 0;
    virtual eslapi::CADIReturn_t CADIExecGetMode(std::uint32_t* mode) = 0;
    virtual eslapi::CADIReturn_t CADIExecGetResetLevels(std::uint32_t start, std::uint32_t desired,
                                                        std::uint32_t* actual,
                                                        eslapi::CADIResetLevel_t* levels) = 0;
    virtual eslapi::CADIReturn_t CADIExecReset(std::uint32_t level) = 0;

    /// Runs until something stops it, with a modeChange at its start and its end.
    virtual eslapi::CADIReturn_t CADIExecContinue() = 0;
    virtual eslapi::CADIReturn_t CADIExecStop() = 0;
    virtual eslapi::CADIReturn_t CADIExecSingleStep(std::uint32_t instructions) = 0;

    virtual eslapi::CADIReturn_t CADIExecGetPC(std::uint64_t* pc, bool* isValid) = 0;
    virtual eslapi::CADIReturn_t CADIExecGetCycles(std::uint64_t* cycles) = 0;
    /// The addresses of the instructions that ran last, the youngest first.
    virtual eslapi::CADIReturn_t CADIExecGetHistory(std::uint32_t desired, std::uint32_t* actual,
                                                    std::uint32_t* addresses) = 0;
    virtual eslapi::CADIReturn_t CADIExecGetExceptions(std::uint32_t start, std::uint32_t desired,
                                                       std::uint32_t* actual,
                                                       eslapi::CADIException_t* exceptions) = 0;
    virtual eslapi::CADIReturn_t CADIExecAssertException(std::uint32_t exception,
                                                         eslapi::CADIExceptionAction_t action) = 0;
    /// One bit for each of five interrupt lines.
    virtual eslapi::CADIReturn_t CADIExecGetInterrupts(std::uint64_t* lines) = 0;
    virtual eslapi::CADIReturn_t CADIExecGetPipeStages(std::uint32_t start, std::uint32_t desired,
                                                       std::uint32_t* actual,
                                                       eslapi::CADIPipeStage_t* stages) = 0;
    virtual eslapi::CADIReturn_t CADIExecGetPipeStageFields(std::uint32_t stage, std::uint32_t* actual,
                                                            eslapi::CADIPipeStageField_t* fields) = 0;

    /// One line of text for each instruction; the texts belong to the target until its next call.
    virtual eslapi::CADIReturn_t CADIGetDisassembly(std::uint64_t address, std::uint32_t instructions,
                                                    std::uint32_t* actual, char** lines) = 0;

    // ---- Breakpoints --------------------------------------------------------------------------

    virtual eslapi::CADIReturn_t CADIBptSet(eslapi::CADIBptRequest_t* request, std::uint32_t* number) = 0;
    virtual eslapi::CADIReturn_t CADIBptConfigure(std::uint32_t number,
                                                  eslapi::CADIBptConfigure_t configuration) = 0;
    virtual eslapi::CADIReturn_t CADIBptClear(std::uint32_t number) = 0;
    virtual eslapi::CADIReturn_t CADIBptGetList(std::uint32_t start, std::uint32_t desired,
                                                std::uint32_t* actual,
                                                eslapi::CADIBptDescription_t* breakpoints) = 0;
};

}  // namespace Example

namespace eslapi
{

/// Makes simulations of one kind. Lists of parameter values end with the parameterID 0xFFFFFFFF.
class CADISimulationFactory
{
public:
    virtual ~CADISimulationFactory() = default;

    virtual CADIReturn_t GetParameterInfos(std::uint32_t start, std::uint32_t desired,
                                           std::uint32_t* actual, CADIParameterInfo_t* parameters) = 0;
    virtual CADIReturn_t GetDefaultValues(std::uint32_t desired, CADIParameterValue_t* values) = 0;
    virtual CADIReturn_t TestParameterValue(const CADIParameterValue_t& value,
                                            CADIFactoryErrorMessage_t* error) = 0;
    /// The simulation's number, for the broker.
    virtual CADIReturn_t Instantiate(CADIParameterValue_t* values, std::uint32_t* simulation) = 0;
};

}  // namespace eslapi

namespace Example
{

/// Knows the factories, and the simulations that they have made.
class Broker
{
public:
    virtual ~Broker() = default;

    virtual eslapi::CADIReturn_t GetSimulationFactories(std::uint32_t start, std::uint32_t desired,
                                                        std::uint32_t* actual,
                                                        eslapi::CADISimulationFactory** factories) = 0;
    virtual eslapi::CADIReturn_t GetSimulationInfos(std::uint32_t start, std::uint32_t desired,
                                                    std::uint32_t* actual,
                                                    eslapi::CADISimulationInfo_t* simulations) = 0;
    virtual eslapi::CADIReturn_t GetTargetInfos(std::uint32_t simulation, std::uint32_t start,
                                                std::uint32_t desired, std::uint32_t* actual,
                                                eslapi::CADITargetInfo_t* targets) = 0;
    virtual eslapi::CADIReturn_t ConnectTarget(std::uint32_t simulation, std::uint32_t target,
                                               std::unique_ptr<Target>* connection) = 0;
};

}  // namespace Example

#endif
