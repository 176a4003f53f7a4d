// One call on a target, logged by the layer's guard. tests/docs builds and runs it.
#include <LoggedCall.h>

#include <cstring>

int main()
{
    const auto target = [](eslapi::CADIReg_t* reg) {  // stands for your simulation model
        reg->bytes[1] = 0x80;
        return eslapi::CADI_STATUS_OK;
    };
    Scrivel2::RunLog log("run");  // run-<process id>.xml

    eslapi::CADIRegInfo_t info{};
    info.regNumber = 15;
    std::strcpy(info.name, "pc");
    log.LearnRegisters(&info, 1);  // register 15 is "pc" from here on

    eslapi::CADIReg_t reg{};
    reg.regNumber = 15;
    Scrivel2::LoggedCall call(log, "CADIRegRead");
    call.Arguments([](auto& xml) { xml.WriteDecimal("regCount", 1); });
    const eslapi::CADIReturn_t status = target(&reg);  // the log is not locked
    call.Results([&](auto& xml) {
        xml.WriteRegArray("reg", &reg, 1);
        xml.WriteReturnType("return", status);
    });
}
