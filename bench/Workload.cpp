// The data of the four workloads.

#include "Workload.h"

#include <random>

namespace ScrivelBench
{
namespace
{

constexpr const char* callName = "CADIGetTargetDetails";

std::vector<eslapi::CADIReg_t> Registers(std::minstd_rand& random)
{
    std::vector<eslapi::CADIReg_t> registers(16);
    for (std::size_t i = 0; i < registers.size(); ++i) {
        eslapi::CADIReg_t& reg = registers[i];
        reg = {};
        reg.regNumber = static_cast<std::uint32_t>(i);
        for (std::uint8_t& byte : reg.bytes) {
            byte = static_cast<std::uint8_t>(random());
        }
        reg.attribute = eslapi::CADI_REG_READ_WRITE;
    }
    return registers;
}

std::vector<unsigned char> Bytes(std::minstd_rand& random)
{
    std::vector<unsigned char> bytes(1024);
    for (unsigned char& byte : bytes) {
        byte = static_cast<unsigned char>(random());
    }
    return bytes;
}

/// Characters of every kind that the log escapes: markup, control characters, bytes above ASCII.
std::string Message(std::minstd_rand& random)
{
    constexpr char escaped[] = {'"', '&', '\'', '<', '>', '\n', '\t', '\xe9'};
    std::string message(16 * 1024, ' ');
    for (char& c : message) {
        c = random() % 10 == 0 ? escaped[random() % sizeof escaped]
                               : static_cast<char>('a' + random() % 26);
    }
    return message;
}

std::vector<Workload> MakeWorkloads()
{
    std::minstd_rand random(1);
    std::vector<Workload> workloads(4);
    workloads[0].name = "W1";
    workloads[1].name = "W2";
    workloads[1].decimals = {{"regCount", 16}, {"offset", 4096}};
    workloads[1].registers = Registers(random);
    workloads[2].name = "W3";
    workloads[2].address = eslapi::CADIAddr_t{0, 0x80001000};
    workloads[2].bytes = Bytes(random);
    workloads[3].name = "W4";
    workloads[3].message = Message(random);
    for (Workload& workload : workloads) {
        workload.callName = callName;
    }
    return workloads;
}

}  // namespace

const std::vector<Workload>& Workloads()
{
    static const std::vector<Workload> workloads = MakeWorkloads();
    return workloads;
}

}  // namespace ScrivelBench
