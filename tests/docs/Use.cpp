// What README.md shows.

#include "docs/Snippets.h"

#include <LoggedCall.h>
#include <ScrivelXmlGen.h>

#include <cstdint>

namespace ScrivelDocs
{
namespace
{

/// Just enough of a target to be asked for a register.
struct Target
{
    static eslapi::CADIReturn_t CADIRegRead(unsigned int count, eslapi::CADIReg_t* regs)
    {
        for (unsigned int i = 0; i < count; ++i) {
            regs[i].bytes[1] = 0x80;
        }
        return eslapi::CADI_STATUS_OK;
    }
};

void Use()
{
    Target target;
    eslapi::CADIReg_t pc{};
    pc.regNumber = 15;
    // clang-format off
    // [readme-use]
    Scrivel2::Scrivel2XmlGenRun log("trace");
    log.StartLogging();                             // trace-<process id>.xml

    const unsigned int call = log.EnterCadiCall("CADIRegRead");
    log.WriteDecimal("regCount", 1);                // the arguments
    log.FlushOutput(false, "CADIRegRead");          // before the target runs

    const eslapi::CADIReturn_t status = target.CADIRegRead(1, &pc);

    log.WriteContinueFunction(call, "CADIRegRead");
    log.WriteRegArray("reg", &pc, 1);               // the results
    log.WriteReturnType("return", status);
    log.WriteIdent("CADIRegRead", false, true);
    log.FlushOutput(true, "");                      // the call is complete

    log.EndLogging();
    // [readme-use]
    // clang-format on
}

using eslapi::CADIReg_t;
using eslapi::CADIReturn_t;
using Scrivel2::LoggedCall;

class LoggedTarget
{
public:
    CADIReturn_t CADIRegRead(std::uint32_t count, CADIReg_t* values);

private:
    Scrivel2::RunLog log{"trace"};
    Target target;
};

// [readme-layer]
CADIReturn_t LoggedTarget::CADIRegRead(std::uint32_t count, CADIReg_t* values)
{
    LoggedCall call(log, "CADIRegRead");
    call.Arguments([&](auto& xml) { xml.WriteDecimal("regCount", count); });
    const auto status = target.CADIRegRead(count, values);  // the log is not locked here
    call.Results([&](auto& xml) {
        xml.WriteRegArray("reg", values, count);
        xml.WriteReturnType("return", status);
    });
    return status;
}
// [readme-layer]

void UseOfLayer()
{
    CADIReg_t pc{};
    pc.regNumber = 15;
    LoggedTarget().CADIRegRead(1, &pc);
}

}  // namespace

Snippets UseSnippets()
{
    return {{"use", Use}, {"use-of-layer", UseOfLayer}};
}

}  // namespace ScrivelDocs
