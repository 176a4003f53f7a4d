// A broker with one factory, which makes boards. Tested by tests/examples/DebugSessionTest.cpp.

#include "SimulatedBroker.h"

#include "Records.h"
#include "SimulatedTarget.h"

namespace Example
{

using namespace eslapi;

namespace
{

std::vector<CADIParameterInfo_t> BoardParameters()
{
    CADIParameterInfo_t timer{};
    timer.id = timerParameter;
    SetText(timer.name, "has_timer");
    timer.dataType = CADI_PARAM_BOOL;
    SetText(timer.description, "whether the board has a timer");
    timer.maxValue = 1;
    timer.defaultValue = 1;

    CADIParameterInfo_t name{};
    name.id = nameParameter;
    SetText(name.name, "board_name");
    name.dataType = CADI_PARAM_STRING;
    SetText(name.description, "what the board is called");
    SetText(name.defaultString, "board");
    return {timer, name};
}

}  // namespace

// ---- The factory --------------------------------------------------------------------------------

CADIReturn_t BoardFactory::GetParameterInfos(std::uint32_t start, std::uint32_t desired,
                                             std::uint32_t* actual, CADIParameterInfo_t* parameters)
{
    return HandOut(BoardParameters(), start, desired, actual, parameters);
}

CADIReturn_t BoardFactory::GetDefaultValues(std::uint32_t desired, CADIParameterValue_t* values)
{
    std::vector<CADIParameterValue_t> all;
    for (const auto& info : BoardParameters()) {
        CADIParameterValue_t value{};
        value.parameterID = info.id;
        value.dataType = info.dataType;
        value.intValue = info.defaultValue;
        SetText(value.stringValue, info.defaultString);
        all.push_back(value);
    }
    CADIParameterValue_t end{};
    end.parameterID = listEnd;
    all.push_back(end);

    std::uint32_t actual = 0;
    HandOut(all, 0, desired, &actual, values);
    return actual == all.size() ? CADI_STATUS_OK : CADI_STATUS_BufferSize;
}

CADIReturn_t BoardFactory::TestParameterValue(const CADIParameterValue_t& value,
                                              CADIFactoryErrorMessage_t* error)
{
    *error = {};
    if (value.parameterID == timerParameter && value.intValue >= 0 && value.intValue <= 1) {
        return CADI_STATUS_OK;
    }
    if (value.parameterID == nameParameter) {
        return CADI_STATUS_OK;
    }
    error->errorCode = value.parameterID == timerParameter ? CADIFACT_ERROR_PARAMETER_OUT_OF_RANGE
                                                           : CADIFACT_ERROR_PARAMETER_UNKNOWN;
    error->erroneousParameterId = value.parameterID;
    SetText(error->message, "the board takes no such value");
    error->severity = CADIFACT_SEVERITY_ERROR;
    return CADI_STATUS_IllegalArgument;
}

CADIReturn_t BoardFactory::Instantiate(CADIParameterValue_t* values, std::uint32_t* simulation)
{
    Board board{"board", true};
    for (; values->parameterID != listEnd; ++values) {
        CADIFactoryErrorMessage_t error;
        const CADIReturn_t status = TestParameterValue(*values, &error);
        if (status != CADI_STATUS_OK) {
            return status;
        }
        if (values->parameterID == timerParameter) {
            board.hasTimer = values->intValue != 0;
        } else {
            board.name = values->stringValue;
        }
    }
    *simulation = static_cast<std::uint32_t>(boards.size());
    boards.push_back(board);
    return CADI_STATUS_OK;
}

// ---- The broker ---------------------------------------------------------------------------------

CADIReturn_t SimulatedBroker::GetSimulationFactories(std::uint32_t start, std::uint32_t desired,
                                                     std::uint32_t* actual,
                                                     CADISimulationFactory** factories)
{
    return HandOut<CADISimulationFactory*>({&factory}, start, desired, actual, factories);
}

CADIReturn_t SimulatedBroker::GetSimulationInfos(std::uint32_t start, std::uint32_t desired,
                                                 std::uint32_t* actual, CADISimulationInfo_t* simulations)
{
    std::vector<CADISimulationInfo_t> all;
    for (const Board& board : boards) {
        CADISimulationInfo_t info{};
        info.id = static_cast<std::uint32_t>(all.size());
        SetText(info.name, board.name);
        SetText(info.description, board.hasTimer ? "core & timer" : "core");
        all.push_back(info);
    }
    return HandOut(all, start, desired, actual, simulations);
}

CADIReturn_t SimulatedBroker::GetTargetInfos(std::uint32_t simulation, std::uint32_t start,
                                             std::uint32_t desired, std::uint32_t* actual,
                                             CADITargetInfo_t* targets)
{
    if (simulation >= boards.size()) {
        return CADI_STATUS_IllegalArgument;
    }
    std::vector<CADITargetInfo_t> all(1);
    SimulatedTarget::Describe(all.data());
    return HandOut(all, start, desired, actual, targets);
}

CADIReturn_t SimulatedBroker::ConnectTarget(std::uint32_t simulation, std::uint32_t target,
                                            std::unique_ptr<Target>* connection)
{
    if (simulation >= boards.size() || target != 0) {
        return CADI_STATUS_IllegalArgument;
    }
    *connection = std::make_unique<SimulatedTarget>(boards[simulation].hasTimer);
    return CADI_STATUS_OK;
}

}  // namespace Example
