// Breakpoints and exceptions. Tested by tests/runbase/BreakpointsTest.cpp.

#include "base/ElementForms.h"

namespace Scrivel2
{

// ---- Breakpoints --------------------------------------------------------------------------------

void ScrivelXmlGenRunBase::WriteBptCondition(std::string ident, eslapi::CADIBptCondition_t condition)
{
    WriteContainer(ident, [&] {
        WriteBptConditionOperator("conditionOperator", condition.conditionOperator);
        WriteDecimal("comparisonValue", condition.comparisonValue);  // all 64 bits
        WriteDecimal("threadID", condition.threadID);
        WriteDecimal("ignoreCount", condition.ignoreCount);
        WriteDecimal("bitwidth", condition.bitwidth);
    });
}

void ScrivelXmlGenRunBase::WriteBptRequest(std::string ident, eslapi::CADIBptRequest_t* request)
{
    WritePointee(ident, request, [&](const eslapi::CADIBptRequest_t& bpt) {
        WriteContainer(ident, [&] {
            WriteAddrComplete("address", bpt.address);
            // Cut as the bounds of memory are; the address before it is not.
            WriteDecimal("sizeOfAddressRange", Low32(bpt.sizeOfAddressRange));
            WriteDecimal("enabled", bpt.enabled);  // a number, unlike continueExecution
            WriteString("conditions", bpt.conditions);
            WriteBool("useFormalCondition", bpt.useFormalCondition);
            // Written whatever the flag before it says.
            WriteBptCondition("formalCondition", bpt.formalCondition);
            WriteBptType("type", bpt.type);
            WriteDecimal("regNumber", bpt.regNumber);
            WriteDecimal("temporary", bpt.temporary);  // a number, unlike continueExecution
            WriteTriggerType("triggerType", bpt.triggerType);
            WriteBool("continueExecution", bpt.continueExecution != 0);
        });
    });
}

void ScrivelXmlGenRunBase::WriteBptDescription(std::string ident,
                                               eslapi::CADIBptDescription_t description)
{
    WriteContainer(ident, [&] {
        WriteDecimal("bptNumber", description.bptNumber);
        WriteBptRequest("bptInfo", &description.bptInfo);
    });
}

void ScrivelXmlGenRunBase::WriteBptDescriptionArray(std::string ident,
                                                    eslapi::CADIBptDescription_t* descriptions,
                                                    unsigned int count)
{
    // Each single breakpoint bears the plural.
    WriteItems(ident, descriptions, count, "breakpoints",
               [this](const auto& description) { WriteBptDescription("breakpoints", description); });
}

// ---- Exceptions ---------------------------------------------------------------------------------

void ScrivelXmlGenRunBase::WriteException(std::string ident, eslapi::CADIException_t exception)
{
    WriteContainer(ident, [&] {
        WriteDecimal("number", exception.number);
        WriteString("name", exception.name);
        WriteAddr("vector", exception.vector);
    });
}

void ScrivelXmlGenRunBase::WriteExceptionArray(std::string ident, eslapi::CADIException_t* exceptions,
                                               unsigned int count)
{
    // The null element is named as that of breakpoints: readers of the log look for it under that name.
    WriteItems(ident, exceptions, count, "breakpoints",
               [this](const auto& exception) { WriteException("exception", exception); });
}

}  // namespace Scrivel2
