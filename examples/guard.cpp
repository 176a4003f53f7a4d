// One call on a target, logged by the layer's guard. tests/docs builds and runs it.
#include <LoggedCall.h>

#include <cstring>

using namespace eslapi;

struct Target  // stands for your simulation model
{
    static CADIReturn_t CADIRegRead(unsigned int, CADIReg_t* regs)
    {
        regs[0].bytes[1] = 0x80;
        return CADI_STATUS_OK;
    }
};

int main()
{
    Target target;
    Scrivel2::RunLog log("run");  // run-<process id>.xml

    CADIRegInfo_t info{};
    info.regNumber = 15;
    std::strcpy(info.name, "pc");
    log.LearnRegisters(&info, 1);  // register 15 is "pc" from here on

    CADIReg_t pc{};
    pc.regNumber = 15;
    Scrivel2::LoggedCall call(log, "CADIRegRead");
    call.Arguments([&](auto& xml) { xml.WriteDecimal("regCount", 1); });
    const CADIReturn_t status = target.CADIRegRead(1, &pc);  // the log is not locked
    call.Results([&](auto& xml) {
        xml.WriteRegArray("reg", &pc, 1);
        xml.WriteReturnType("return", status);
    });
}
