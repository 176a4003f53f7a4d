// The names of enumerators, and what stands for values without one. Tested by
// tests/runbase/EnumerationsTest.cpp.

#include "base/SharedRecords.h"
#include "format/LogWords.h"

namespace Scrivel2
{

// ---- One table each -----------------------------------------------------------------------------

void ScrivelXmlGenRunBase::WriteReturnType(std::string ident, eslapi::CADIReturn_t value)
{
    WriteName(ident, ReturnName(value), LogWords::invalidReturnType, value);
}

void ScrivelXmlGenRunBase::WriteValueDataType(std::string ident, eslapi::CADIValueDataType_t value)
{
    WriteName(ident, ValueDataTypeName(value), LogWords::invalidValueDataType, value);
}

void ScrivelXmlGenRunBase::WriteFactoryErrorCode(std::string ident, eslapi::CADIFactoryErrorCode_t value)
{
    const auto index = static_cast<std::uint32_t>(value);
    const bool named = index < factoryErrorNames.size();
    // A copy, since a frame operation may change the list.
    const std::string name = named ? factoryErrorNames[index] : std::string();
    WriteName(ident, named ? &name : nullptr, LogWords::invalidFactoryErrorCode, value);
}

void ScrivelXmlGenRunBase::WriteFactorySeverityCode(std::string ident,
                                                    eslapi::CADIFactorySeverityCode_t value)
{
    static constexpr const char* factory_severity_code_to_string[] = {
        "CADIFACT_SEVERITY_OK",
        "CADIFACT_SEVERITY_WARNING",
        "CADIFACT_SEVERITY_ERROR",
    };
    WriteName(ident, NameAt(factory_severity_code_to_string, value), LogWords::invalidFactorySeverityCode,
              value);
}

void ScrivelXmlGenRunBase::WriteBptType(std::string ident, eslapi::CADIBptType_t value)
{
    static constexpr const char* bpt_type_to_string[] = {
        "CADI_BPT_PROGRAM",   "CADI_BPT_MEMORY",        "CADI_BPT_REGISTER",
        "CADI_BPT_INST_STEP", "CADI_BPT_PROGRAM_RANGE", "CADI_BPT_EXCEPTION",
    };
    const char* name = value == eslapi::CADI_BPT_USER_DEFINED ? "CADI_BPT_USER_DEFINED"
                                                              : NameAt(bpt_type_to_string, value);
    WriteName(ident, name, LogWords::invalidBptType, value);
}

void ScrivelXmlGenRunBase::WriteBptConditionOperator(std::string ident,
                                                     eslapi::CADIBptConditionOperator_t value)
{
    static constexpr const char* bpt_condition_operator_to_string[] = {
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
    WriteName(ident, named ? NameAt(bpt_condition_operator_to_string, value) : nullptr,
              LogWords::invalidBptConditionOperator, value);
}

void ScrivelXmlGenRunBase::WriteBptConfigure(std::string ident, eslapi::CADIBptConfigure_t value)
{
    static constexpr const char* bpt_configure_to_string[] = {
        "CADI_BPT_Disable",
        "CADI_BPT_Enable",
    };
    WriteName(ident, NameAt(bpt_configure_to_string, value), LogWords::invalidBptConfigure, value);
}

void ScrivelXmlGenRunBase::WriteExceptionAction(std::string ident, eslapi::CADIExceptionAction_t value)
{
    static constexpr const char* exception_action_to_string[] = {
        "CADI_EXCEPTION_Raise",
        "CADI_EXCEPTION_Lower",
        "CADI_EXCEPTION_Pulse",
    };
    WriteName(ident, NameAt(exception_action_to_string, value), LogWords::invalidExceptionAction, value);
}

void ScrivelXmlGenRunBase::WriteRegAccessAttribute(std::string ident,
                                                   eslapi::CADIRegAccessAttribute_t value)
{
    static constexpr const char* reg_access_attribute_to_string[] = {
        "CADI_REG_READ_WRITE",           "CADI_REG_READ_ONLY",
        "CADI_REG_WRITE_ONLY",           "CADI_REG_READ_WRITE_RESTRICTED",
        "CADI_REG_READ_ONLY_RESTRICTED", "CADI_REG_WRITE_ONLY_RESTRICTED",
    };
    WriteName(ident, NameAt(reg_access_attribute_to_string, value), LogWords::invalidRegAccessAttribute,
              value);
}

void ScrivelXmlGenRunBase::WriteRegType(std::string ident, eslapi::CADIRegType_t value)
{
    static constexpr const char* reg_type_to_string[] = {
        "CADI_REGTYPE_Simple",
        "CADI_REGTYPE_Compound",
    };
    WriteName(ident, NameAt(reg_type_to_string, value), LogWords::invalidRegType, value);
}

void ScrivelXmlGenRunBase::WriteRegDisplay(std::string ident, eslapi::CADIRegDisplay_t value)
{
    static constexpr const char* reg_display_to_string[] = {
        "CADI_REGTYPE_HEX",   "CADI_REGTYPE_UINT",   "CADI_REGTYPE_INT",    "CADI_REGTYPE_BOOL",
        "CADI_REGTYPE_FLOAT", "CADI_REGTYPE_SYMBOL", "CADI_REGTYPE_STRING", "CADI_REGTYPE_PC",
        "CADI_REGTYPE_BIN",   "CADI_REGTYPE_OCT",
    };
    WriteName(ident, NameAt(reg_display_to_string, value), LogWords::invalidRegDisplay, value);
}

void ScrivelXmlGenRunBase::WriteMemReadWrite(std::string ident, eslapi::CADIMemReadWrite_t value)
{
    static constexpr const char* mem_read_Write_to_string[] = {
        "CADI_MEM_ReadOnly",
        "CADI_MEM_WriteOnly",
        "CADI_MEM_ReadWrite",
    };
    WriteName(ident, NameAt(mem_read_Write_to_string, value), LogWords::invalidMemReadWrite, value);
}

// ---- Others -------------------------------------------------------------------------------------

void ScrivelXmlGenRunBase::WriteExecMode(std::string ident, unsigned int mode)
{
    static constexpr const char* mode_to_string[] = {
        "CADI_EXECMODE_Stop",  "CADI_EXECMODE_Run",           "CADI_EXECMODE_Bpt",
        "CADI_EXECMODE_Error", "CADI_EXECMODE_HighLevelStep", "CADI_EXECMODE_RunUnconditionally",
    };
    WriteElement(ident, [&] {
        if (const char* name = NameAt(mode_to_string, mode)) {
            logFile.Append(name);
        } else {
            // In decimal: a target's own modes are numbered, not coded.
            logFile.Append(LogWords::unknownExecMode);
            AppendDecimal(logFile, mode);
        }
    });
}

void ScrivelXmlGenRunBase::WriteExecModePtrVal(std::string ident, unsigned int* mode)
{
    WritePointee(ident, mode, [&](unsigned int value) { WriteExecMode(ident, value); });
}

void ScrivelXmlGenRunBase::WriteExecModePtrVal(std::string ident, std::nullptr_t)
{
    WriteNULLPointer(ident);
}

void ScrivelXmlGenRunBase::WriteTriggerType(std::string ident, unsigned int trigger)
{
    static constexpr const char* trigger_type_to_string[] = {
        "READ",
        "WRITE",
        "MODIFY",
    };
    WriteString(ident, FlagText("CADI_BPT_TRIGGER_ON_", trigger_type_to_string, trigger));
}

void ScrivelXmlGenRunBase::WriteEndianness(std::string ident, unsigned char endianness)
{
    static constexpr const char* endianness_to_string[] = {
        "mono",
        "LE",
        "BE",
    };
    if (const char* name = NameAt(endianness_to_string, endianness)) {
        WriteString(ident, name);
    } else {
        // After the zeros comes the byte as the character that it is, not as a digit.
        WriteString(ident, std::string("0x0000000") + static_cast<char>(endianness));
    }
}

void ScrivelXmlGenRunBase::WriteRegSymbol(std::string ident, eslapi::CADIRegSymbols_t symbols)
{
    WriteContainer(ident, [&] {
        WriteDecimal("numSymbols", symbols.numSymbols);
        // The symbols themselves are left out of the log: lists run to thousands of entries.
        if (symbols.symbols == nullptr) {
            WriteNULLPointer("Symbols");
        }
    });
}

}  // namespace Scrivel2
