// What is logged: four calls, each entered, flushed non-finally, continued, closed and flushed finally.
//
//     W1  no argument, one return status
//     W2  W1, two decimal arguments, 16 register values among the results
//     W3  W1, an address argument, 1,024 bytes in hexadecimal among the results
//     W4  W1, a message of 16 KB among the results, a tenth of its characters escaped

#ifndef SCRIVEL_BENCH_WORKLOAD_H
#define SCRIVEL_BENCH_WORKLOAD_H

#include <CADITypes.h>

#include <optional>
#include <string>
#include <vector>

namespace ScrivelBench
{

struct NamedDecimal
{
    const char* name;
    unsigned long value;
};

struct Workload
{
    const char* name;
    std::string callName;
    std::vector<NamedDecimal> decimals;         // arguments
    std::optional<eslapi::CADIAddr_t> address;  // an argument
    std::vector<eslapi::CADIReg_t> registers;   // results, unless there are none
    std::vector<unsigned char> bytes;
    std::string message;
};

/// W1 to W4, with a call name of 20 characters.
const std::vector<Workload>& Workloads();

// The names and texts that all who write a workload share.
constexpr const char* addressName = "startAddress";
constexpr const char* registersName = "reg";
constexpr const char* bytesName = "data";
constexpr const char* messageName = "message";
constexpr const char* statusName = "return";

/// The arguments and the results as the writers of a generator write them.
template <typename Generator>
void WriteArguments(Generator& log, const Workload& workload)
{
    for (const NamedDecimal& decimal : workload.decimals) {
        log.WriteDecimal(decimal.name, decimal.value);
    }
    if (workload.address) {
        log.WriteAddr(addressName, *workload.address);
    }
}

template <typename Generator>
void WriteResults(Generator& log, Workload& workload)
{
    if (!workload.registers.empty()) {
        log.WriteRegArray(registersName, workload.registers.data(),
                          static_cast<unsigned int>(workload.registers.size()));
    }
    if (!workload.bytes.empty()) {
        log.WriteUint8Array(bytesName, workload.bytes.data(),
                            static_cast<unsigned int>(workload.bytes.size()), true);
    }
    if (!workload.message.empty()) {
        log.WriteString(messageName, workload.message);
    }
    log.WriteReturnType(statusName, eslapi::CADI_STATUS_OK);
}

template <typename Generator>
void LogCall(Generator& log, Workload& workload)
{
    const unsigned int call = log.EnterCadiCall(workload.callName);
    WriteArguments(log, workload);
    log.FlushOutput(false, workload.callName);
    log.WriteContinueFunction(call, workload.callName);
    WriteResults(log, workload);
    log.WriteIdent(workload.callName, false, true);
    log.FlushOutput(true, "");
}

}  // namespace ScrivelBench

#endif
