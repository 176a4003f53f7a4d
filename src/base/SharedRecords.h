// What the connection phase and the run phase write alike: the names of three enumerations, and the
// fields of three records as lists over the generator that writes them. Internal: not installed.

#ifndef SCRIVEL_BASE_SHAREDRECORDS_H
#define SCRIVEL_BASE_SHAREDRECORDS_H

#include "base/ElementForms.h"
#include "format/LogWords.h"

#include <string>
#include <vector>

namespace Scrivel2
{

// ---- Names, and the messages of values that have none -------------------------------------------

inline Enumerator Named(eslapi::CADIReturn_t value)
{
    static constexpr std::string_view return_to_string[] = {
        "CADI_STATUS_OK",
        "CADI_STATUS_GeneralError",
        "CADI_STATUS_UnknownCommand",
        "CADI_STATUS_IllegalArgument",
        "CADI_STATUS_CmdNotSupported",
        "CADI_STATUS_ArgNotSupported",
        "CADI_STATUS_InsufficientResources",
        "CADI_STATUS_TargetNotResponding",
        "CADI_STATUS_TargetBusy",
        "CADI_STATUS_BufferSize",
        "CADI_STATUS_SecurityViolation",
        "CADI_STATUS_PermissionDenied",
    };
    return {NameAt(return_to_string, value), LogWords::invalidReturnType, value};
}

inline Enumerator Named(eslapi::CADIValueDataType_t value)
{
    static constexpr std::string_view value_data_type_to_string[] = {
        "CADI_PARAM_INVALID",
        "CADI_PARAM_STRING",
        "CADI_PARAM_BOOL",
        "CADI_PARAM_INT",
    };
    return {NameAt(value_data_type_to_string, value), LogWords::invalidValueDataType, value};
}

/// In the order of CADIFactoryErrorCode_t, made anew: each generator owns its names.
std::vector<std::string> FactoryErrorNames();

// ---- Fields -------------------------------------------------------------------------------------

template <typename Generator>
void WriteParameterInfoFields(Generator& log, const eslapi::CADIParameterInfo_t& info)
{
    log.WriteDecimal("id", info.id);
    log.WriteString("name", info.name);
    log.WriteValueDataType("dataType", info.dataType);
    log.WriteString("description", info.description);
    log.WriteDecimal("isRunTime", info.isRunTime);  // a number, not a word
    // Bounds and default lose their upper 32 bits and their sign: -1 reads 4294967295.
    log.WriteDecimal("minValue", Low32(info.minValue));
    log.WriteDecimal("maxValue", Low32(info.maxValue));
    log.WriteDecimal("defaultValue", Low32(info.defaultValue));
    log.WriteString("defaultString", info.defaultString);
}

template <typename Generator>
void WriteParameterValueFields(Generator& log, const eslapi::CADIParameterValue_t& value)
{
    log.WriteDecimal("parameterID", value.parameterID);
    log.WriteValueDataType("dataType", value.dataType);
    log.WriteDecimal("intValue", Low32(value.intValue));  // cut as the bounds of a parameter are
    log.WriteString("stringValue", value.stringValue);
}

/// All fields but canRunInBackground, which a run-phase log alone shows.
template <typename Generator>
void WriteTargetInfoFields(Generator& log, const eslapi::CADITargetInfo_t& info)
{
    log.WriteDecimal("id", info.id);
    log.WriteString("targetName", info.targetName);
    log.WriteString("instanceName", info.instanceName);
    log.WriteString("version", info.version);
    log.WriteString("description", info.description);
    log.WriteString("componentType", info.componentType);
    log.WriteDecimal("numberOfParameters", info.numberOfParameters);
    log.WriteBool("executesSoftware", info.executesSoftware);
    log.WriteDecimal("isHardwareModel", info.isHardwareModel);  // a number, unlike its neighbour
    log.WriteString("systemName", info.systemName);
    log.WriteDecimal("systemID", info.systemID);
    log.WriteString("systemDescription", info.systemDescription);
}

}  // namespace Scrivel2

#endif
