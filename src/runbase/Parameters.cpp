// Parameters of a target and the errors of factories. Tested by tests/runbase/ParametersTest.cpp.

#include "base/SharedRecords.h"

namespace Scrivel2
{

// ---- Parameters ---------------------------------------------------------------------------------

void ScrivelXmlGenRunBase::WriteParameterInfo(std::string ident, eslapi::CADIParameterInfo_t info)
{
    WriteContainer(ident, [&] { WriteParameterInfoFields(*this, info); });
}

void ScrivelXmlGenRunBase::WriteParameterInfoPtrVal(std::string ident, eslapi::CADIParameterInfo_t* info)
{
    WritePointee(ident, info, [&](const auto& value) { WriteParameterInfo(ident, value); });
}

void ScrivelXmlGenRunBase::WriteParameterInfoArray(std::string ident, eslapi::CADIParameterInfo_t* params,
                                                   unsigned int count)
{
    // Each child is named after its parameter.
    WriteItems(ident, params, count, "param",
               [this](const auto& info) { WriteParameterInfo(info.name, info); });
}

void ScrivelXmlGenRunBase::WriteParameterValue(std::string ident, eslapi::CADIParameterValue_t value)
{
    WriteContainer(ident, [&] { WriteParameterValueFields(*this, value); });
}

void ScrivelXmlGenRunBase::WriteParameterValueArray(std::string ident,
                                                    eslapi::CADIParameterValue_t* values,
                                                    unsigned int count)
{
    WriteItems(ident, values, count, "parameterValue",
               [this](const auto& value) { WriteParameterValue("parameterValue", value); });
}

// ---- Factory errors -----------------------------------------------------------------------------

void ScrivelXmlGenRunBase::WriteFactoryErrorMessage(std::string ident,
                                                    eslapi::CADIFactoryErrorMessage_t message)
{
    WriteContainer(ident, [&] {
        WriteFactoryErrorCode("errorCode", message.errorCode);
        WriteDecimal("erroneousParameterId", message.erroneousParameterId);
        WriteString("message", message.message);
        WriteFactorySeverityCode("severity", message.severity);
    });
}

void ScrivelXmlGenRunBase::WriteFactoryErrorMessagePtrVal(std::string ident,
                                                          eslapi::CADIFactoryErrorMessage_t* message)
{
    WritePointee(ident, message, [&](const auto& value) { WriteFactoryErrorMessage(ident, value); });
}

}  // namespace Scrivel2
