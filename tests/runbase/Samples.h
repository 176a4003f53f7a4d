// Records for tests, and what is written of records and values that both kinds of log show.

#ifndef SCRIVEL_TESTS_RUNBASE_SAMPLES_H
#define SCRIVEL_TESTS_RUNBASE_SAMPLES_H

#include <CADITypes.h>

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

namespace ScrivelTest
{

/// Fills a text field: the text, its NUL, and after it characters that must never be read.
template <std::size_t size>
void SetText(char (&field)[size], std::string_view text)
{
    std::fill(std::begin(field), std::end(field), '~');
    *std::copy(text.begin(), text.end(), field) = '\0';
}

/// Of the values from 0 on.
inline std::vector<std::string> ReturnTypeNames()
{
    return {
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
}

inline std::vector<std::string> ValueDataTypeNames()
{
    return {"CADI_PARAM_INVALID", "CADI_PARAM_STRING", "CADI_PARAM_BOOL", "CADI_PARAM_INT"};
}

inline eslapi::CADIParameterInfo_t SampleParameterInfo()
{
    eslapi::CADIParameterInfo_t info{};
    info.id = 4294967295;
    SetText(info.name, "2 <cores>");
    info.dataType = eslapi::CADI_PARAM_INT;
    SetText(info.description, "how \"many\"\n");
    info.isRunTime = 4294967294;
    info.minValue = -1;
    info.maxValue = 0x100000000;
    info.defaultValue = 0x7fffffff00000005;
    SetText(info.defaultString, "four & more");
    return info;
}

/// The children of the sample, inside an element at depth 1.
inline constexpr char sampleParameterInfoText[] = R"(        <id>4294967295</id>
        <name>2 &lt;cores&gt;</name>
        <dataType>CADI_PARAM_INT</dataType>
        <description>how &quot;many&quot;\x0a</description>
        <isRunTime>4294967294</isRunTime>
        <minValue>4294967295</minValue>
        <maxValue>0</maxValue>
        <defaultValue>5</defaultValue>
        <defaultString>four &amp; more</defaultString>
)";

inline eslapi::CADIParameterValue_t SampleParameterValue()
{
    eslapi::CADIParameterValue_t value{};
    value.parameterID = 4294967293;
    value.dataType = eslapi::CADI_PARAM_STRING;
    value.intValue = -0x100000002;
    SetText(value.stringValue, "it's");
    return value;
}

inline constexpr char sampleParameterValueText[] = R"(        <parameterID>4294967293</parameterID>
        <dataType>CADI_PARAM_STRING</dataType>
        <intValue>4294967294</intValue>
        <stringValue>it&apos;s</stringValue>
)";

inline eslapi::CADITargetInfo_t SampleTargetInfo()
{
    eslapi::CADITargetInfo_t info{};
    info.id = 4294967295;
    SetText(info.targetName, "core<0>");
    SetText(info.instanceName, "top.core");
    SetText(info.version, "1.2 \"b\"");
    SetText(info.description, "a & b");
    SetText(info.componentType, "it's");
    info.numberOfParameters = 4294967294;
    info.executesSoftware = true;
    info.isHardwareModel = 4294967293;
    SetText(info.systemName, "board\t");
    info.systemID = 4294967292;
    SetText(info.systemDescription, "all of it");
    info.canRunInBackground = true;
    return info;
}

/// The children of the sample that both kinds of log show.
inline constexpr char sampleTargetInfoText[] = R"(        <id>4294967295</id>
        <targetName>core&lt;0&gt;</targetName>
        <instanceName>top.core</instanceName>
        <version>1.2 &quot;b&quot;</version>
        <description>a &amp; b</description>
        <componentType>it&apos;s</componentType>
        <numberOfParameters>4294967294</numberOfParameters>
        <executesSoftware>true</executesSoftware>
        <isHardwareModel>4294967293</isHardwareModel>
        <systemName>board\x09</systemName>
        <systemID>4294967292</systemID>
        <systemDescription>all of it</systemDescription>
)";

}  // namespace ScrivelTest

#endif
