// The names of the enumerators that the run phase alone writes, and the message of a value that has none.
// Internal: not installed.

#ifndef SCRIVEL_RUNBASE_ENUMERATORS_H
#define SCRIVEL_RUNBASE_ENUMERATORS_H

#include "base/SharedRecords.h"
#include "format/LogWords.h"

#include <cstdint>
#include <string_view>

namespace Scrivel2
{

inline Enumerator Named(eslapi::CADIFactorySeverityCode_t value)
{
    static constexpr std::string_view factory_severity_code_to_string[] = {
        "CADIFACT_SEVERITY_OK",
        "CADIFACT_SEVERITY_WARNING",
        "CADIFACT_SEVERITY_ERROR",
    };
    return {NameAt(factory_severity_code_to_string, value), LogWords::invalidFactorySeverityCode, value};
}

inline Enumerator Named(eslapi::CADIBptType_t value)
{
    static constexpr std::string_view bpt_type_to_string[] = {
        "CADI_BPT_PROGRAM",   "CADI_BPT_MEMORY",        "CADI_BPT_REGISTER",
        "CADI_BPT_INST_STEP", "CADI_BPT_PROGRAM_RANGE", "CADI_BPT_EXCEPTION",
    };
    const std::string_view name = value == eslapi::CADI_BPT_USER_DEFINED
                                      ? "CADI_BPT_USER_DEFINED"
                                      : NameAt(bpt_type_to_string, value);
    return {name, LogWords::invalidBptType, value};
}

inline Enumerator Named(eslapi::CADIBptConditionOperator_t value)
{
    static constexpr std::string_view bpt_condition_operator_to_string[] = {
        "CADI_BPT_COND_UNCONDITIONAL",
        "CADI_BPT_COND_EQUALS",
        "CADI_BPT_COND_NOT_EQUALS",
        "CADI_BPT_COND_GREATER_THAN_SIGNED",
        "CADI_BPT_COND_GREATER_THAN_OR_EQUALS_SIGNED",
        "CADI_BPT_COND_LESS_THAN_SIGNED",
        "CADI_BPT_COND_LESS_THAN_OR_EQUALS_SIGNED",
        "CADI_BPT_COND_GREATER_THAN_UNSIGNED",
        "CADI_BPT_COND_GREATER_THAN_OR_EQUALS_UNSIGNED",
        "CADI_BPT_COND_LESS_THAN_UNSIGNED",
        "CADI_BPT_COND_LESS_THAN_OR_EQUALS_UNSIGNED",
    };
    // The unsigned comparisons are not written by name: readers of the log know them by their messages.
    const bool named = value <= eslapi::CADI_BPT_COND_LESS_THAN_OR_EQUALS_SIGNED;
    return {named ? NameAt(bpt_condition_operator_to_string, value) : std::string_view(),
            LogWords::invalidBptConditionOperator, value};
}

inline Enumerator Named(eslapi::CADIBptConfigure_t value)
{
    static constexpr std::string_view bpt_configure_to_string[] = {
        "CADI_BPT_Disable",
        "CADI_BPT_Enable",
    };
    return {NameAt(bpt_configure_to_string, value), LogWords::invalidBptConfigure, value};
}

inline Enumerator Named(eslapi::CADIExceptionAction_t value)
{
    static constexpr std::string_view exception_action_to_string[] = {
        "CADI_EXCEPTION_Raise",
        "CADI_EXCEPTION_Lower",
        "CADI_EXCEPTION_Pulse",
    };
    return {NameAt(exception_action_to_string, value), LogWords::invalidExceptionAction, value};
}

inline Enumerator Named(eslapi::CADIRegAccessAttribute_t value)
{
    static constexpr std::string_view reg_access_attribute_to_string[] = {
        "CADI_REG_READ_WRITE",           "CADI_REG_READ_ONLY",
        "CADI_REG_WRITE_ONLY",           "CADI_REG_READ_WRITE_RESTRICTED",
        "CADI_REG_READ_ONLY_RESTRICTED", "CADI_REG_WRITE_ONLY_RESTRICTED",
    };
    return {NameAt(reg_access_attribute_to_string, value), LogWords::invalidRegAccessAttribute, value};
}

inline Enumerator Named(eslapi::CADIRegType_t value)
{
    static constexpr std::string_view reg_type_to_string[] = {
        "CADI_REGTYPE_Simple",
        "CADI_REGTYPE_Compound",
    };
    return {NameAt(reg_type_to_string, value), LogWords::invalidRegType, value};
}

inline Enumerator Named(eslapi::CADIRegDisplay_t value)
{
    static constexpr std::string_view reg_display_to_string[] = {
        "CADI_REGTYPE_HEX",   "CADI_REGTYPE_UINT",   "CADI_REGTYPE_INT",    "CADI_REGTYPE_BOOL",
        "CADI_REGTYPE_FLOAT", "CADI_REGTYPE_SYMBOL", "CADI_REGTYPE_STRING", "CADI_REGTYPE_PC",
        "CADI_REGTYPE_BIN",   "CADI_REGTYPE_OCT",
    };
    return {NameAt(reg_display_to_string, value), LogWords::invalidRegDisplay, value};
}

inline Enumerator Named(eslapi::CADIMemReadWrite_t value)
{
    static constexpr std::string_view mem_read_Write_to_string[] = {
        "CADI_MEM_ReadOnly",
        "CADI_MEM_WriteOnly",
        "CADI_MEM_ReadWrite",
    };
    return {NameAt(mem_read_Write_to_string, value), LogWords::invalidMemReadWrite, value};
}

}  // namespace Scrivel2

#endif
