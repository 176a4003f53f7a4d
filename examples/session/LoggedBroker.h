// A broker that hands every call to another one and writes it to a log, and so do the factories that it
// gives out.

#ifndef SCRIVEL_EXAMPLES_LOGGEDBROKER_H
#define SCRIVEL_EXAMPLES_LOGGEDBROKER_H

#include "LoggedCall.h"
#include "Target.h"

#include <map>

namespace Example
{

class LoggedFactory final : public eslapi::CADISimulationFactory
{
public:
    LoggedFactory(Scrivel2::ConnectLog& connectLog, eslapi::CADISimulationFactory& logged)
        : log(connectLog), factory(logged)
    {
    }

    eslapi::CADIReturn_t GetParameterInfos(std::uint32_t start, std::uint32_t desired,
                                           std::uint32_t* actual,
                                           eslapi::CADIParameterInfo_t* parameters) override;
    eslapi::CADIReturn_t GetDefaultValues(std::uint32_t desired,
                                          eslapi::CADIParameterValue_t* values) override;
    eslapi::CADIReturn_t TestParameterValue(const eslapi::CADIParameterValue_t& value,
                                            eslapi::CADIFactoryErrorMessage_t* error) override;
    eslapi::CADIReturn_t Instantiate(eslapi::CADIParameterValue_t* values,
                                     std::uint32_t* simulation) override;

private:
    Scrivel2::ConnectLog& log;
    eslapi::CADISimulationFactory& factory;
};

/// The log and the broker must outlive it, and it the factories that it gives out.
class LoggedBroker final : public Broker
{
public:
    LoggedBroker(Scrivel2::ConnectLog& connectLog, Broker& logged) : log(connectLog), broker(logged) {}

    eslapi::CADIReturn_t GetSimulationFactories(std::uint32_t start, std::uint32_t desired,
                                                std::uint32_t* actual,
                                                eslapi::CADISimulationFactory** factories) override;
    eslapi::CADIReturn_t GetSimulationInfos(std::uint32_t start, std::uint32_t desired,
                                            std::uint32_t* actual,
                                            eslapi::CADISimulationInfo_t* simulations) override;
    eslapi::CADIReturn_t GetTargetInfos(std::uint32_t simulation, std::uint32_t start,
                                        std::uint32_t desired, std::uint32_t* actual,
                                        eslapi::CADITargetInfo_t* targets) override;
    eslapi::CADIReturn_t ConnectTarget(std::uint32_t simulation, std::uint32_t target,
                                       std::unique_ptr<Target>* connection) override;

private:
    Scrivel2::ConnectLog& log;
    Broker& broker;
    std::map<eslapi::CADISimulationFactory*, LoggedFactory> factories;
};

}  // namespace Example

#endif
