// Enumerators, written by their names, and bit sets. Tested by
// tests/runbase/EnumerationsTest.cpp.

#include "format/LogWords.h"
#include "runbase/Enumerators.h"

namespace Scrivel2
{

// ---- One table each (runbase/Enumerators.h) -----------------------------------------------------

void ScrivelXmlGenRunBase::WriteReturnType(std::string ident, eslapi::CADIReturn_t value)
{
    WriteValue(ident, Named(value));
}

void ScrivelXmlGenRunBase::WriteValueDataType(std::string ident, eslapi::CADIValueDataType_t value)
{
    WriteValue(ident, Named(value));
}

void ScrivelXmlGenRunBase::WriteFactoryErrorCode(std::string ident, eslapi::CADIFactoryErrorCode_t value)
{
    const auto index = static_cast<std::uint32_t>(value);
    const bool named = index < factoryErrorNames.size();
    // A copy, since a frame operation may change the list.
    const std::string name = named ? factoryErrorNames[index] : std::string();
    WriteValue(ident,
               Enumerator{named ? name : std::string_view(), LogWords::invalidFactoryErrorCode, index});
}

void ScrivelXmlGenRunBase::WriteFactorySeverityCode(std::string ident,
                                                    eslapi::CADIFactorySeverityCode_t value)
{
    WriteValue(ident, Named(value));
}

void ScrivelXmlGenRunBase::WriteBptType(std::string ident, eslapi::CADIBptType_t value)
{
    WriteValue(ident, Named(value));
}

void ScrivelXmlGenRunBase::WriteBptConditionOperator(std::string ident,
                                                     eslapi::CADIBptConditionOperator_t value)
{
    WriteValue(ident, Named(value));
}

void ScrivelXmlGenRunBase::WriteBptConfigure(std::string ident, eslapi::CADIBptConfigure_t value)
{
    WriteValue(ident, Named(value));
}

void ScrivelXmlGenRunBase::WriteExceptionAction(std::string ident, eslapi::CADIExceptionAction_t value)
{
    WriteValue(ident, Named(value));
}

void ScrivelXmlGenRunBase::WriteRegAccessAttribute(std::string ident,
                                                   eslapi::CADIRegAccessAttribute_t value)
{
    WriteValue(ident, Named(value));
}

void ScrivelXmlGenRunBase::WriteRegType(std::string ident, eslapi::CADIRegType_t value)
{
    WriteValue(ident, Named(value));
}

void ScrivelXmlGenRunBase::WriteRegDisplay(std::string ident, eslapi::CADIRegDisplay_t value)
{
    WriteValue(ident, Named(value));
}

void ScrivelXmlGenRunBase::WriteMemReadWrite(std::string ident, eslapi::CADIMemReadWrite_t value)
{
    WriteValue(ident, Named(value));
}

// ---- Others -------------------------------------------------------------------------------------

void ScrivelXmlGenRunBase::WriteExecMode(std::string ident, unsigned int mode)
{
    static constexpr std::string_view mode_to_string[] = {
        "CADI_EXECMODE_Stop",  "CADI_EXECMODE_Run",           "CADI_EXECMODE_Bpt",
        "CADI_EXECMODE_Error", "CADI_EXECMODE_HighLevelStep", "CADI_EXECMODE_RunUnconditionally",
    };
    if (const std::string_view name = NameAt(mode_to_string, mode); !name.empty()) {
        WriteValue(ident, Plain{name});
    } else {
        WriteElement(ident, [&] {
            // In decimal: a target's own modes are numbered, not coded.
            logFile.Append(LogWords::unknownExecMode);
            AppendDecimal(logFile, mode);
        });
    }
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
    WriteValue(ident, Text{FlagText("CADI_BPT_TRIGGER_ON_", trigger_type_to_string, trigger)});
}

void ScrivelXmlGenRunBase::WriteEndianness(std::string ident, unsigned char endianness)
{
    static constexpr std::string_view endianness_to_string[] = {
        "mono",
        "LE",
        "BE",
    };
    if (const std::string_view name = NameAt(endianness_to_string, endianness); !name.empty()) {
        WriteValue(ident, Text{name});
    } else {
        // After the zeros comes the byte as the character that it is, not as a digit.
        const char text[] = {'0', 'x', '0', '0', '0', '0', '0', '0', '0', static_cast<char>(endianness)};
        WriteValue(ident, Text{{text, sizeof text}});
    }
}

void ScrivelXmlGenRunBase::WriteRegSymbol(std::string ident, eslapi::CADIRegSymbols_t symbols)
{
    WriteContainer(ident, [&] {
        WriteValue("numSymbols", Decimal{symbols.numSymbols});
        // The symbols themselves are left out of the log: lists run to thousands of entries.
        if (symbols.symbols == nullptr) {
            WriteNULLPointer("Symbols");
        }
    });
}

}  // namespace Scrivel2
