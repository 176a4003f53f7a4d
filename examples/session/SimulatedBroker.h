// A broker with one factory, which makes boards of one core.

#ifndef SCRIVEL_EXAMPLES_SIMULATEDBROKER_H
#define SCRIVEL_EXAMPLES_SIMULATEDBROKER_H

#include "Target.h"

#include <vector>

namespace Example
{

/// The factory's parameters.
constexpr std::uint32_t timerParameter = 1;  ///< CADI_PARAM_BOOL: the board has a timer
constexpr std::uint32_t nameParameter = 2;   ///< CADI_PARAM_STRING
constexpr std::uint32_t listEnd = 0xffffffff;

struct Board
{
    std::string name;
    bool hasTimer;
};

class BoardFactory final : public eslapi::CADISimulationFactory
{
public:
    /// Boards are added to `made`, which must outlive the factory.
    explicit BoardFactory(std::vector<Board>& made) : boards(made) {}

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
    std::vector<Board>& boards;
};

class SimulatedBroker final : public Broker
{
public:
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
    std::vector<Board> boards;
    BoardFactory factory{boards};
};

}  // namespace Example

#endif
