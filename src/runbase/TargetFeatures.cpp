// What a target can do. Tested by tests/runbase/TargetFeaturesTest.cpp.

#include "base/ElementForms.h"

namespace Scrivel2
{

void ScrivelXmlGenRunBase::WriteHandledBreakpoints(std::string ident, unsigned int breakpoints)
{
    static constexpr const char* handled_breakpoints_to_string[] = {
        "PROGRAM", "MEMORY", "REGISTER", "INST_STEP", "PROGRAM_RANGE", "EXCEPTION",
    };
    WriteString(ident, FlagText("CADI_TARGET_FEATURE_BPT_", handled_breakpoints_to_string, breakpoints));
}

void ScrivelXmlGenRunBase::WriteTargetFeatures(std::string ident, eslapi::CADITargetFeatures_t* features)
{
    // Of the four flags one is written as a word, the others as numbers.
    WritePointee(ident, features, [&](const eslapi::CADITargetFeatures_t& target) {
        WriteContainer(ident, [&] {
            WriteString("targetName", target.targetName);
            WriteString("targetVersion", target.targetVersion);
            WriteDecimal("nrBreakpointsAvailable", target.nrBreakpointsAvailable);
            WriteDecimal("fOverlaySupportAvailable", target.fOverlaySupportAvailable);  // 0 or 1
            WriteDecimal("fProfilingAvailable", target.fProfilingAvailable);            // 0 or 1
            WriteDecimal("nrResetLevels", target.nrResetLevels);
            WriteDecimal("nrExecModes", target.nrExecModes);
            WriteDecimal("nrExceptions", target.nrExceptions);
            WriteDecimal("nrMemSpaces", target.nrMemSpaces);
            WriteDecimal("nrRegisterGroups", target.nrRegisterGroups);
            WriteDecimal("nrPipeStages", target.nrPipeStages);
            WriteDecimal("nPCRegNum", target.nPCRegNum);
            WriteHandledBreakpoints("handledBreakpoints", target.handledBreakpoints);
            WriteDecimal("nrOfHWThreads", target.nrOfHWThreads);
            WriteBool("nExtendedTargetFeaturesRegNumValid", target.nExtendedTargetFeaturesRegNumValid);
            // Written whatever the flag before it says.
            WriteDecimal("nExtendedTargetFeaturesRegNum", target.nExtendedTargetFeaturesRegNum);
            WriteString("canonicalRegisterDescription", target.canonicalRegisterDescription);
            WriteString("canonicalMemoryDescription", target.canonicalMemoryDescription);
            WriteDecimal("canCompleteMultipleInstructionsPerCycle",
                         target.canCompleteMultipleInstructionsPerCycle);  // 0 or 1
        });
    });
}

}  // namespace Scrivel2
