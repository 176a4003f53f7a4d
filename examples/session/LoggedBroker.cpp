// The wrappers of the connection phase, a guard in each call. tests/examples/DebugSessionTest.cpp reads
// their log.

#include "LoggedBroker.h"

namespace Example
{

using namespace eslapi;
using Scrivel2::LoggedCall;

// ---- The factory --------------------------------------------------------------------------------

CADIReturn_t LoggedFactory::GetParameterInfos(std::uint32_t start, std::uint32_t desired,
                                              std::uint32_t* actual, CADIParameterInfo_t* parameters)
{
    LoggedCall call(log, "GetParameterInfos");
    call.Arguments([&](auto& xml) {
        xml.WriteDecimal("start", start);
        xml.WriteDecimal("desired", desired);
    });
    const auto status = factory.GetParameterInfos(start, desired, actual, parameters);
    call.Results([&](auto& xml) {
        xml.WriteParameterInfoArray("parameters", parameters, actual);
        xml.WriteReturnType("return", status);
    });
    return status;
}

CADIReturn_t LoggedFactory::GetDefaultValues(std::uint32_t desired, CADIParameterValue_t* values)
{
    LoggedCall call(log, "GetDefaultValues");
    call.Arguments([&](auto& xml) { xml.WriteDecimal("desired", desired); });
    const auto status = factory.GetDefaultValues(desired, values);
    call.Results([&](auto& xml) {
        if (status == CADI_STATUS_OK) {  // else the list has no end
            xml.WriteParameterValueArray("values", values);
        }
        xml.WriteReturnType("return", status);
    });
    return status;
}

CADIReturn_t LoggedFactory::TestParameterValue(const CADIParameterValue_t& value,
                                               CADIFactoryErrorMessage_t* error)
{
    LoggedCall call(log, "TestParameterValue");
    call.Arguments([&](auto& xml) { xml.WriteParameterValue("value", value); });
    const auto status = factory.TestParameterValue(value, error);
    call.Results([&](auto& xml) {
        xml.WriteString("message", error->message);
        xml.WriteReturnType("return", status);
    });
    return status;
}

CADIReturn_t LoggedFactory::Instantiate(CADIParameterValue_t* values, std::uint32_t* simulation)
{
    LoggedCall call(log, "Instantiate");
    call.Arguments([&](auto& xml) { xml.WriteParameterValueArray("values", values); });
    const auto status = factory.Instantiate(values, simulation);
    call.Results([&](auto& xml) {
        xml.WriteDecimalPtrVal("simulation", simulation);
        xml.WriteReturnType("return", status);
    });
    return status;
}

// ---- The broker ---------------------------------------------------------------------------------

CADIReturn_t LoggedBroker::GetSimulationFactories(std::uint32_t start, std::uint32_t desired,
                                                  std::uint32_t* actual, CADISimulationFactory** found)
{
    LoggedCall call(log, "GetSimulationFactories");
    call.Arguments([&](auto& xml) {
        xml.WriteDecimal("start", start);
        xml.WriteDecimal("desired", desired);
    });
    const auto status = broker.GetSimulationFactories(start, desired, actual, found);
    call.Results([&](auto& xml) {
        xml.WriteSimulationFactoryArray("factories", found, actual);
        xml.WriteReturnType("return", status);
    });
    for (std::uint32_t i = 0; status == CADI_STATUS_OK && i < *actual; ++i) {
        found[i] = &factories.try_emplace(found[i], log, *found[i]).first->second;
    }
    return status;
}

CADIReturn_t LoggedBroker::GetSimulationInfos(std::uint32_t start, std::uint32_t desired,
                                              std::uint32_t* actual, CADISimulationInfo_t* simulations)
{
    LoggedCall call(log, "GetSimulationInfos");
    call.Arguments([&](auto& xml) {
        xml.WriteDecimal("start", start);
        xml.WriteDecimal("desired", desired);
    });
    const auto status = broker.GetSimulationInfos(start, desired, actual, simulations);
    call.Results([&](auto& xml) {
        xml.WriteSimulationInfoArray("simulations", simulations, actual);
        xml.WriteReturnType("return", status);
    });
    return status;
}

CADIReturn_t LoggedBroker::GetTargetInfos(std::uint32_t simulation, std::uint32_t start,
                                          std::uint32_t desired, std::uint32_t* actual,
                                          CADITargetInfo_t* targets)
{
    LoggedCall call(log, "GetTargetInfos");
    call.Arguments([&](auto& xml) {
        xml.WriteDecimal("simulation", simulation);
        xml.WriteDecimal("start", start);
        xml.WriteDecimal("desired", desired);
    });
    const auto status = broker.GetTargetInfos(simulation, start, desired, actual, targets);
    call.Results([&](auto& xml) {
        xml.WriteTargetInfoArray("targets", targets, actual);
        xml.WriteReturnType("return", status);
    });
    return status;
}

CADIReturn_t LoggedBroker::ConnectTarget(std::uint32_t simulation, std::uint32_t target,
                                         std::unique_ptr<Target>* connection)
{
    LoggedCall call(log, "ConnectTarget");
    call.Arguments([&](auto& xml) {
        xml.WriteDecimal("simulation", simulation);
        xml.WriteDecimal("target", target);
    });
    const auto status = broker.ConnectTarget(simulation, target, connection);
    call.Results([&](auto& xml) {
        xml.WriteAddress("connection", reinterpret_cast<std::uintptr_t>(connection->get()));
        xml.WriteReturnType("return", status);
    });
    return status;
}

}  // namespace Example
