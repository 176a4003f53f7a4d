// The generator of the connection phase. Tested by tests/generators/Scrivel2XmlGenConnectTest.cpp.

#include "base/SharedRecords.h"
#include "format/LogWords.h"

namespace Scrivel2
{

Scrivel2XmlGenConnect::Scrivel2XmlGenConnect(const char* name) : ScrivelXmlGenBase(name, "CADI 2.0")
{
    KeepsTags<Scrivel2XmlGenConnect>();
}

Scrivel2XmlGenConnect::~Scrivel2XmlGenConnect() = default;

void Scrivel2XmlGenConnect::SetWriteSecure(bool secure)
{
    ScrivelXmlGenBase::SetWriteSecure(secure);
}

// ---- Enumerations -------------------------------------------------------------------------------

void Scrivel2XmlGenConnect::WriteValueDataType(std::string ident, eslapi::CADIValueDataType_t value)
{
    WriteValue(ident, Named(value));
}

void Scrivel2XmlGenConnect::WriteReturnType(std::string ident, eslapi::CADIReturn_t value)
{
    WriteValue(ident, Named(value));
}

// ---- Factories and simulations ------------------------------------------------------------------

void Scrivel2XmlGenConnect::WriteSimulationFactoryArray(std::string ident,
                                                        eslapi::CADISimulationFactory** factories,
                                                        unsigned int* count)
{
    // Here and below the null element is named after targets: readers of the log know it so.
    WriteItems(ident, factories, count, "targetInfo", [this](const auto* factory) {
        WriteAddress("simulationFactory", reinterpret_cast<std::uintptr_t>(factory));
    });
}

void Scrivel2XmlGenConnect::WriteSimulationInfo(std::string ident, eslapi::CADISimulationInfo_t info)
{
    WriteContainer(ident, [&] {
        WriteDecimal("id", info.id);
        WriteString("name", info.name);
        WriteString("description", info.description);
    });
}

void Scrivel2XmlGenConnect::WriteSimulationInfoArray(std::string ident,
                                                     eslapi::CADISimulationInfo_t* infos,
                                                     unsigned int* count)
{
    // A simulation is named as a factory is, which it came from.
    WriteItems(ident, infos, count, "targetInfo",
               [this](const auto& info) { WriteSimulationInfo("simulationFactory", info); });
}

// ---- Parameters ---------------------------------------------------------------------------------

void Scrivel2XmlGenConnect::WriteParameterValue(std::string ident, eslapi::CADIParameterValue_t value)
{
    WriteContainer(ident, [&] { WriteParameterValueFields(*this, value); });
}

namespace
{

/// The terminator counts: it is written as the last child.
unsigned int EntriesWithTerminator(const eslapi::CADIParameterValue_t* values)
{
    unsigned int count = 1;
    for (; values->parameterID != 0xFFFFFFFF; ++values) {
        ++count;
    }
    return count;
}

}  // namespace

void Scrivel2XmlGenConnect::WriteParameterValueArray(std::string ident,
                                                     eslapi::CADIParameterValue_t* values)
{
    const unsigned int count = values == nullptr ? 0 : EntriesWithTerminator(values);
    WriteItems(ident, values, count, "parameterValue",
               [this](const auto& value) { WriteParameterValue("parameterValue", value); });
}

void Scrivel2XmlGenConnect::WriteParameterInfo(std::string ident, eslapi::CADIParameterInfo_t info)
{
    WriteContainer(ident, [&] { WriteParameterInfoFields(*this, info); });
}

void Scrivel2XmlGenConnect::WriteParameterInfoArray(std::string ident,
                                                    eslapi::CADIParameterInfo_t* params,
                                                    unsigned int* count)
{
    // Each child is named after its parameter.
    WriteItems(ident, params, count, "param",
               [this](const auto& info) { WriteParameterInfo(info.name, info); });
}

// ---- Targets ------------------------------------------------------------------------------------

void Scrivel2XmlGenConnect::WriteTargetInfo(std::string ident, eslapi::CADITargetInfo_t info)
{
    // Without canRunInBackground, which says something about a target that runs.
    WriteContainer(ident, [&] { WriteTargetInfoFields(*this, info); });
}

void Scrivel2XmlGenConnect::WriteTargetInfoArray(std::string ident, eslapi::CADITargetInfo_t* infos,
                                                 unsigned int* count)
{
    WriteItems(ident, infos, count, "targetInfo",
               [this](const auto& info) { WriteTargetInfo("targetInfo", info); });
}

}  // namespace Scrivel2
