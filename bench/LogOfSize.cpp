// Makes a log for readers to be measured on: a debugger's calls through the layer, as fast as they go.
//
//     scrivel_bench_log_of_size <name> <megabytes> [<calls within one that stays open>]
//
// Prints the name of the file, which stays: it is the caller's. A call has some 20 elements and 1 KB, as
// in a real session: reads and writes of registers and memory, modes, and now and then a run with
// callbacks. With a third argument a first call returns only after so many others.

#include "LoggedCall.h"

#include <array>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <memory>
#include <random>
#include <string>

namespace
{

using namespace eslapi;
using Scrivel2::LoggedCall;

class Session
{
public:
    explicit Session(Scrivel2::RunLog& itsLog) : log(itsLog)
    {
        CADIRegInfo_t infos[32] = {};
        for (std::uint32_t i = 0; i < 32; ++i) {
            infos[i].regNumber = i;
            const std::string name = "x" + std::to_string(i);
            name.copy(infos[i].name, name.size());
        }
        log.LearnRegisters(infos, 32);
    }

    void Call()
    {
        switch (random() % 8) {
        case 0:
        case 1:
        case 2:
            RegRead(1 + random() % 4);
            break;
        case 3:
            RegWrite();
            break;
        case 4:
        case 5:
            MemRead(16 << (random() % 2));
            break;
        case 6:
            MemWrite(4 << (random() % 3));
            break;
        default:
            Run();
        }
    }

private:
    std::array<CADIReg_t, 4> Registers()
    {
        std::array<CADIReg_t, 4> registers{};
        for (CADIReg_t& reg : registers) {
            reg.regNumber = static_cast<std::uint32_t>(random() % 32);
            for (int i = 0; i < 4; ++i) {
                reg.bytes[i] = static_cast<std::uint8_t>(random());
            }
        }
        return registers;
    }

    void RegRead(unsigned int count)
    {
        LoggedCall call(log, "CADIRegRead");
        std::array<CADIReg_t, 4> registers = Registers();
        call.Arguments([&](auto& xml) { xml.WriteDecimal("regCount", count); });
        call.Results([&](auto& xml) {
            xml.WriteRegArray("reg", registers.data(), count);
            xml.WriteReturnType("return", CADI_STATUS_OK);
        });
    }

    void RegWrite()
    {
        LoggedCall call(log, "CADIRegWrite");
        std::array<CADIReg_t, 4> registers = Registers();
        call.Arguments([&](auto& xml) {
            xml.WriteDecimal("regCount", 1);
            xml.WriteRegArray("reg", registers.data(), 1);
        });
        const auto status = random() % 16 == 0 ? CADI_STATUS_PermissionDenied : CADI_STATUS_OK;
        call.Results([&](auto& xml) { xml.WriteReturnType("return", status); });
    }

    void Address(LoggedCall<Scrivel2::Scrivel2XmlGenRun>& call, unsigned int count,
                 const std::uint8_t* written)
    {
        const CADIAddrComplete_t start{0, {1, 0x40000000 + (random() % 4096) * 4}};
        call.Arguments([&](auto& xml) {
            xml.WriteAddrComplete("startAddress", start);
            xml.WriteDecimal("bytes", count);
            if (written != nullptr) {
                xml.WriteUint8Array("data", written, count, true);
            }
        });
    }

    void MemRead(unsigned int count)
    {
        LoggedCall call(log, "CADIMemRead");
        Address(call, count, nullptr);
        call.Results([&](auto& xml) {
            xml.WriteDecimalPtrVal("actual", &count);
            xml.WriteUint8Array("data", Bytes().data(), count, true);
            xml.WriteReturnType("return", CADI_STATUS_OK);
        });
    }

    void MemWrite(unsigned int count)
    {
        LoggedCall call(log, "CADIMemWrite");
        Address(call, count, Bytes().data());
        call.Results([&](auto& xml) {
            xml.WriteDecimalPtrVal("actual", &count);
            xml.WriteReturnType("return", CADI_STATUS_OK);
        });
    }

    void Run()
    {
        LoggedCall call(log, "CADIExecContinue");
        call.Arguments([](auto&) {});
        {
            LoggedCall callback(log, "modeChange");
            callback.Arguments([&](auto& xml) {
                xml.WriteExecMode("newMode", CADI_EXECMODE_Run);
                xml.WriteDecimal("bptNumber", 0);
            });
        }
        call.Results([&](auto& xml) { xml.WriteReturnType("return", CADI_STATUS_OK); });
    }

    std::array<std::uint8_t, 32>& Bytes()
    {
        for (std::uint8_t& byte : bytes) {
            byte = static_cast<std::uint8_t>(random());
        }
        return bytes;
    }

    Scrivel2::RunLog& log;
    std::minstd_rand random{1};
    std::array<std::uint8_t, 32> bytes{};
};

}  // namespace

int main(int argc, char** argv)
{
    if (argc != 3 && argc != 4) {
        std::cerr << "usage: " << argv[0] << " <name> <megabytes> [<calls within an open one>]\n";
        return EXIT_FAILURE;
    }
    const std::uint64_t size = std::strtoull(argv[2], nullptr, 10) * 1024 * 1024;
    std::uint64_t within = argc == 4 ? std::strtoull(argv[3], nullptr, 10) : 0;

    Scrivel2::RunLog log(argv[1]);
    std::unique_ptr<LoggedCall<Scrivel2::Scrivel2XmlGenRun>> open;
    if (within != 0) {
        open = std::make_unique<LoggedCall<Scrivel2::Scrivel2XmlGenRun>>(log, "CADIExecContinue");
    }
    Session session(log);
    // The file's size is asked for now and then: it costs as much as a call.
    for (std::uint64_t calls = 1;
         calls % 1024 != 0 || within != 0 || std::filesystem::file_size(log.FileName()) < size; ++calls) {
        session.Call();
        if (within != 0 && --within == 0) {
            open.reset();
        }
    }
    log.EndLogging();
    std::cout << log.FileName() << '\n';
    return log.FileName().empty() ? EXIT_FAILURE : EXIT_SUCCESS;
}
