// The layout of the records and enumerations that the generators read, as one number. The library and all
// who include its headers must agree on it: with another CADITypes.h the same bytes are other fields. Who
// doesn't agree is told by the linker. Tested by tests/package/other_types.sh.

#ifndef SCRIVEL_SCRIVEL_CADILAYOUT_H
#define SCRIVEL_SCRIVEL_CADILAYOUT_H

#include <cstddef>
#include <cstdint>
#include <type_traits>

#if __has_include(<CADITypes.h>) || !__has_include("cadi/CADITypes.h")
#include <CADITypes.h>  // a team's own, or the installed ones
#else
#include "cadi/CADITypes.h"  // of the sources, for a build that says nothing about them
#endif

// A team's records may have bases: the compilers that we build with take offsetof of those, too.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Winvalid-offsetof"

namespace Scrivel2::CADILayout
{

using namespace eslapi;

/// A hash of numbers.
class Layout
{
public:
    constexpr void Add(std::uint64_t place, std::uint64_t size)
    {
        hash = ((hash ^ place) * prime ^ size) * prime;
    }
    constexpr std::uint64_t Hash() const { return hash; }

private:
    static constexpr std::uint64_t prime = 0x100000001b3;
    std::uint64_t hash = 0xcbf29ce484222325;
};

/// The fields that the library reads, each with its place and size; of an enumeration none.
template <typename Type>
constexpr void AddFields(Layout&)
{
}

// ---- Status, parameters, factories -----------------------------------------------------------

template <>
constexpr void AddFields<CADIParameterInfo_t>(Layout& layout)
{
    using R = CADIParameterInfo_t;
    layout.Add(offsetof(R, id), sizeof(R::id));
    layout.Add(offsetof(R, name), sizeof(R::name));
    layout.Add(offsetof(R, dataType), sizeof(R::dataType));
    layout.Add(offsetof(R, description), sizeof(R::description));
    layout.Add(offsetof(R, isRunTime), sizeof(R::isRunTime));
    layout.Add(offsetof(R, minValue), sizeof(R::minValue));
    layout.Add(offsetof(R, maxValue), sizeof(R::maxValue));
    layout.Add(offsetof(R, defaultValue), sizeof(R::defaultValue));
    layout.Add(offsetof(R, defaultString), sizeof(R::defaultString));
}

template <>
constexpr void AddFields<CADIParameterValue_t>(Layout& layout)
{
    using R = CADIParameterValue_t;
    layout.Add(offsetof(R, parameterID), sizeof(R::parameterID));
    layout.Add(offsetof(R, dataType), sizeof(R::dataType));
    layout.Add(offsetof(R, intValue), sizeof(R::intValue));
    layout.Add(offsetof(R, stringValue), sizeof(R::stringValue));
}

template <>
constexpr void AddFields<CADIFactoryErrorMessage_t>(Layout& layout)
{
    using R = CADIFactoryErrorMessage_t;
    layout.Add(offsetof(R, errorCode), sizeof(R::errorCode));
    layout.Add(offsetof(R, erroneousParameterId), sizeof(R::erroneousParameterId));
    layout.Add(offsetof(R, message), sizeof(R::message));
    layout.Add(offsetof(R, severity), sizeof(R::severity));
}

// ---- Simulations and targets -----------------------------------------------------------------

template <>
constexpr void AddFields<CADISimulationInfo_t>(Layout& layout)
{
    using R = CADISimulationInfo_t;
    layout.Add(offsetof(R, id), sizeof(R::id));
    layout.Add(offsetof(R, name), sizeof(R::name));
    layout.Add(offsetof(R, description), sizeof(R::description));
}

template <>
constexpr void AddFields<CADITargetInfo_t>(Layout& layout)
{
    using R = CADITargetInfo_t;
    layout.Add(offsetof(R, id), sizeof(R::id));
    layout.Add(offsetof(R, targetName), sizeof(R::targetName));
    layout.Add(offsetof(R, instanceName), sizeof(R::instanceName));
    layout.Add(offsetof(R, version), sizeof(R::version));
    layout.Add(offsetof(R, description), sizeof(R::description));
    layout.Add(offsetof(R, componentType), sizeof(R::componentType));
    layout.Add(offsetof(R, numberOfParameters), sizeof(R::numberOfParameters));
    layout.Add(offsetof(R, executesSoftware), sizeof(R::executesSoftware));
    layout.Add(offsetof(R, isHardwareModel), sizeof(R::isHardwareModel));
    layout.Add(offsetof(R, systemName), sizeof(R::systemName));
    layout.Add(offsetof(R, systemID), sizeof(R::systemID));
    layout.Add(offsetof(R, systemDescription), sizeof(R::systemDescription));
    layout.Add(offsetof(R, canRunInBackground), sizeof(R::canRunInBackground));
}

template <>
constexpr void AddFields<CADITargetFeatures_t>(Layout& layout)
{
    using R = CADITargetFeatures_t;
    layout.Add(offsetof(R, targetName), sizeof(R::targetName));
    layout.Add(offsetof(R, targetVersion), sizeof(R::targetVersion));
    layout.Add(offsetof(R, nrBreakpointsAvailable), sizeof(R::nrBreakpointsAvailable));
    layout.Add(offsetof(R, fOverlaySupportAvailable), sizeof(R::fOverlaySupportAvailable));
    layout.Add(offsetof(R, fProfilingAvailable), sizeof(R::fProfilingAvailable));
    layout.Add(offsetof(R, nrResetLevels), sizeof(R::nrResetLevels));
    layout.Add(offsetof(R, nrExecModes), sizeof(R::nrExecModes));
    layout.Add(offsetof(R, nrExceptions), sizeof(R::nrExceptions));
    layout.Add(offsetof(R, nrMemSpaces), sizeof(R::nrMemSpaces));
    layout.Add(offsetof(R, nrRegisterGroups), sizeof(R::nrRegisterGroups));
    layout.Add(offsetof(R, nrPipeStages), sizeof(R::nrPipeStages));
    layout.Add(offsetof(R, nPCRegNum), sizeof(R::nPCRegNum));
    layout.Add(offsetof(R, handledBreakpoints), sizeof(R::handledBreakpoints));
    layout.Add(offsetof(R, nrOfHWThreads), sizeof(R::nrOfHWThreads));
    layout.Add(offsetof(R, nExtendedTargetFeaturesRegNumValid),
               sizeof(R::nExtendedTargetFeaturesRegNumValid));
    layout.Add(offsetof(R, nExtendedTargetFeaturesRegNum), sizeof(R::nExtendedTargetFeaturesRegNum));
    layout.Add(offsetof(R, canonicalRegisterDescription), sizeof(R::canonicalRegisterDescription));
    layout.Add(offsetof(R, canonicalMemoryDescription), sizeof(R::canonicalMemoryDescription));
    layout.Add(offsetof(R, canCompleteMultipleInstructionsPerCycle),
               sizeof(R::canCompleteMultipleInstructionsPerCycle));
}

// ---- Execution modes, reset levels, pipe stages ----------------------------------------------

template <>
constexpr void AddFields<CADIExecMode_t>(Layout& layout)
{
    using R = CADIExecMode_t;
    layout.Add(offsetof(R, number), sizeof(R::number));
    layout.Add(offsetof(R, name), sizeof(R::name));
}

template <>
constexpr void AddFields<CADIResetLevel_t>(Layout& layout)
{
    using R = CADIResetLevel_t;
    layout.Add(offsetof(R, number), sizeof(R::number));
    layout.Add(offsetof(R, name), sizeof(R::name));
}

template <>
constexpr void AddFields<CADIPipeStage_t>(Layout& layout)
{
    using R = CADIPipeStage_t;
    layout.Add(offsetof(R, id), sizeof(R::id));
    layout.Add(offsetof(R, name), sizeof(R::name));
    layout.Add(offsetof(R, contentInfoRegisterId), sizeof(R::contentInfoRegisterId));
}

template <>
constexpr void AddFields<CADIPipeStageField_t>(Layout& layout)
{
    using R = CADIPipeStageField_t;
    layout.Add(offsetof(R, pipeStageId), sizeof(R::pipeStageId));
    layout.Add(offsetof(R, registerId), sizeof(R::registerId));
}

// ---- Registers -------------------------------------------------------------------------------

template <>
constexpr void AddFields<CADIRegGroup_t>(Layout& layout)
{
    using R = CADIRegGroup_t;
    layout.Add(offsetof(R, groupID), sizeof(R::groupID));
    layout.Add(offsetof(R, description), sizeof(R::description));
    layout.Add(offsetof(R, numRegsInGroup), sizeof(R::numRegsInGroup));
    layout.Add(offsetof(R, name), sizeof(R::name));
}

template <>
constexpr void AddFields<CADIRegDetails_t>(Layout& layout)
{
    using R = CADIRegDetails_t;
    layout.Add(offsetof(R, type), sizeof(R::type));
    layout.Add(offsetof(R, count), sizeof(R::count));
}

template <>
constexpr void AddFields<CADIRegSymbols_t>(Layout& layout)
{
    using R = CADIRegSymbols_t;
    layout.Add(offsetof(R, numSymbols), sizeof(R::numSymbols));
    layout.Add(offsetof(R, symbols), sizeof(R::symbols));
}

template <>
constexpr void AddFields<CADIRegInfo_t>(Layout& layout)
{
    using R = CADIRegInfo_t;
    layout.Add(offsetof(R, name), sizeof(R::name));
    layout.Add(offsetof(R, description), sizeof(R::description));
    layout.Add(offsetof(R, regNumber), sizeof(R::regNumber));
    layout.Add(offsetof(R, bitsWide), sizeof(R::bitsWide));
    layout.Add(offsetof(R, hasSideEffects), sizeof(R::hasSideEffects));
    layout.Add(offsetof(R, details), sizeof(R::details));
    layout.Add(offsetof(R, display), sizeof(R::display));
    layout.Add(offsetof(R, symbols), sizeof(R::symbols));
    layout.Add(offsetof(R, fpFormat), sizeof(R::fpFormat));
    layout.Add(offsetof(R, lsbOffset), sizeof(R::lsbOffset));
    layout.Add(offsetof(R, dwarfIndex), sizeof(R::dwarfIndex));
    layout.Add(offsetof(R, isProfiled), sizeof(R::isProfiled));
    layout.Add(offsetof(R, isPipeStageField), sizeof(R::isPipeStageField));
    layout.Add(offsetof(R, threadID), sizeof(R::threadID));
    layout.Add(offsetof(R, attribute), sizeof(R::attribute));
    layout.Add(offsetof(R, canonicalRegisterNumber), sizeof(R::canonicalRegisterNumber));
}

template <>
constexpr void AddFields<CADIReg_t>(Layout& layout)
{
    using R = CADIReg_t;
    layout.Add(offsetof(R, regNumber), sizeof(R::regNumber));
    layout.Add(offsetof(R, bytes), sizeof(R::bytes));
    layout.Add(offsetof(R, offset128), sizeof(R::offset128));
    layout.Add(offsetof(R, isUndefined), sizeof(R::isUndefined));
    layout.Add(offsetof(R, attribute), sizeof(R::attribute));
}

// ---- Memory ----------------------------------------------------------------------------------

template <>
constexpr void AddFields<CADIMemSpaceInfo_t>(Layout& layout)
{
    using R = CADIMemSpaceInfo_t;
    layout.Add(offsetof(R, name), sizeof(R::name));
    layout.Add(offsetof(R, description), sizeof(R::description));
    layout.Add(offsetof(R, memSpaceId), sizeof(R::memSpaceId));
    layout.Add(offsetof(R, bitsPerMau), sizeof(R::bitsPerMau));
    layout.Add(offsetof(R, maxAddress), sizeof(R::maxAddress));
    layout.Add(offsetof(R, nrMemBlocks), sizeof(R::nrMemBlocks));
    layout.Add(offsetof(R, isProgramMemory), sizeof(R::isProgramMemory));
    layout.Add(offsetof(R, minAddress), sizeof(R::minAddress));
    layout.Add(offsetof(R, isVirtualMemory), sizeof(R::isVirtualMemory));
    layout.Add(offsetof(R, isCache), sizeof(R::isCache));
    layout.Add(offsetof(R, endianness), sizeof(R::endianness));
    layout.Add(offsetof(R, invariance), sizeof(R::invariance));
    layout.Add(offsetof(R, dwarfMemSpaceId), sizeof(R::dwarfMemSpaceId));
    layout.Add(offsetof(R, canonicalMemoryNumber), sizeof(R::canonicalMemoryNumber));
}

template <>
constexpr void AddFields<CADIMemBlockInfo_t>(Layout& layout)
{
    using R = CADIMemBlockInfo_t;
    layout.Add(offsetof(R, name), sizeof(R::name));
    layout.Add(offsetof(R, description), sizeof(R::description));
    layout.Add(offsetof(R, id), sizeof(R::id));
    layout.Add(offsetof(R, parentID), sizeof(R::parentID));
    layout.Add(offsetof(R, startAddr), sizeof(R::startAddr));
    layout.Add(offsetof(R, endAddr), sizeof(R::endAddr));
    layout.Add(offsetof(R, cyclesToAccess), sizeof(R::cyclesToAccess));
    layout.Add(offsetof(R, readWrite), sizeof(R::readWrite));
    layout.Add(offsetof(R, supportedMultiplesOfMAU), sizeof(R::supportedMultiplesOfMAU));
    layout.Add(offsetof(R, endianness), sizeof(R::endianness));
    layout.Add(offsetof(R, invariance), sizeof(R::invariance));
}

template <>
constexpr void AddFields<CADICacheInfo_t>(Layout& layout)
{
    using R = CADICacheInfo_t;
    layout.Add(offsetof(R, cacheLineSize), sizeof(R::cacheLineSize));
    layout.Add(offsetof(R, cacheTagBits), sizeof(R::cacheTagBits));
    layout.Add(offsetof(R, associativity), sizeof(R::associativity));
    layout.Add(offsetof(R, writeThrough), sizeof(R::writeThrough));
}

template <>
constexpr void AddFields<CADIAddr_t>(Layout& layout)
{
    using R = CADIAddr_t;
    layout.Add(offsetof(R, spaceId), sizeof(R::spaceId));
    layout.Add(offsetof(R, addr), sizeof(R::addr));
}

template <>
constexpr void AddFields<CADIAddrComplete_t>(Layout& layout)
{
    using R = CADIAddrComplete_t;
    layout.Add(offsetof(R, overlay), sizeof(R::overlay));
    layout.Add(offsetof(R, location), sizeof(R::location));
}

// ---- Breakpoints and exceptions --------------------------------------------------------------

template <>
constexpr void AddFields<CADIBptCondition_t>(Layout& layout)
{
    using R = CADIBptCondition_t;
    layout.Add(offsetof(R, conditionOperator), sizeof(R::conditionOperator));
    layout.Add(offsetof(R, comparisonValue), sizeof(R::comparisonValue));
    layout.Add(offsetof(R, threadID), sizeof(R::threadID));
    layout.Add(offsetof(R, ignoreCount), sizeof(R::ignoreCount));
    layout.Add(offsetof(R, bitwidth), sizeof(R::bitwidth));
}

template <>
constexpr void AddFields<CADIBptRequest_t>(Layout& layout)
{
    using R = CADIBptRequest_t;
    layout.Add(offsetof(R, address), sizeof(R::address));
    layout.Add(offsetof(R, sizeOfAddressRange), sizeof(R::sizeOfAddressRange));
    layout.Add(offsetof(R, enabled), sizeof(R::enabled));
    layout.Add(offsetof(R, conditions), sizeof(R::conditions));
    layout.Add(offsetof(R, useFormalCondition), sizeof(R::useFormalCondition));
    layout.Add(offsetof(R, formalCondition), sizeof(R::formalCondition));
    layout.Add(offsetof(R, type), sizeof(R::type));
    layout.Add(offsetof(R, regNumber), sizeof(R::regNumber));
    layout.Add(offsetof(R, temporary), sizeof(R::temporary));
    layout.Add(offsetof(R, triggerType), sizeof(R::triggerType));
    layout.Add(offsetof(R, continueExecution), sizeof(R::continueExecution));
}

template <>
constexpr void AddFields<CADIBptDescription_t>(Layout& layout)
{
    using R = CADIBptDescription_t;
    layout.Add(offsetof(R, bptNumber), sizeof(R::bptNumber));
    layout.Add(offsetof(R, bptInfo), sizeof(R::bptInfo));
}

template <>
constexpr void AddFields<CADIException_t>(Layout& layout)
{
    using R = CADIException_t;
    layout.Add(offsetof(R, number), sizeof(R::number));
    layout.Add(offsetof(R, name), sizeof(R::name));
    layout.Add(offsetof(R, vector), sizeof(R::vector));
}

// ---- All of them --------------------------------------------------------------------------------

template <typename Type>
constexpr void AddType(Layout& layout)
{
    layout.Add(alignof(Type), sizeof(Type));
    AddFields<Type>(layout);
    layout.Add(std::is_trivially_copyable_v<Type>, 0);  // how it is passed by value
}

template <typename... Types>
constexpr std::uint64_t HashOf()
{
    Layout layout;
    (AddType<Types>(layout), ...);
    return layout.Hash();
}

inline constexpr std::uint64_t hash =
    HashOf<CADIReturn_t, CADIValueDataType_t, CADIParameterInfo_t, CADIParameterValue_t,
           CADIFactoryErrorCode_t, CADIFactorySeverityCode_t, CADIFactoryErrorMessage_t,
           CADISimulationInfo_t, CADITargetInfo_t, CADITargetFeatures_t, CADIExecMode_t, CADIResetLevel_t,
           CADIPipeStage_t, CADIPipeStageField_t, CADIRegType_t, CADIRegDisplay_t,
           CADIRegAccessAttribute_t, CADIRegGroup_t, CADIRegDetails_t, CADIRegSymbols_t,
           CADIRegFloatFormat_t, CADIRegInfo_t, CADIReg_t, CADIMemReadWrite_t, CADIMemSpaceInfo_t,
           CADIMemBlockInfo_t, CADICacheInfo_t, CADIAddr_t, CADIAddrComplete_t, CADIBptType_t,
           CADIBptConditionOperator_t, CADIBptConfigure_t, CADIBptCondition_t, CADIBptRequest_t,
           CADIBptDescription_t, CADIExceptionAction_t, CADIException_t>();

}  // namespace Scrivel2::CADILayout

#pragma GCC diagnostic pop

namespace Scrivel2
{

/// What a linker names when the two differ. The library has it for the one layout that it was built with;
/// every translation unit that includes this reads it, for the layout that it sees, when the program
/// starts.
template <std::uint64_t layout>
struct [[gnu::visibility("default")]] ScrivelXmlGen_was_built_with_another_CADITypes_h_than
{
    static const volatile char this_file;  // volatile: no compiler leaves the reading out
};

template <>
const volatile char ScrivelXmlGen_was_built_with_another_CADITypes_h_than<CADILayout::hash>::this_file;

[[maybe_unused]] static const char sameLayoutAsTheLibrary =
    ScrivelXmlGen_was_built_with_another_CADITypes_h_than<CADILayout::hash>::this_file;

}  // namespace Scrivel2

#endif
