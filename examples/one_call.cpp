// One call of the run phase, written with a generator alone. docs/calling-order.md shows it.
#include <ScrivelXmlGen.h>

struct Target
{
    static eslapi::CADIReturn_t CADIReset(unsigned int /*level*/) { return eslapi::CADI_STATUS_OK; }
};

int main()
{
    Target target;
    const unsigned int resetLevel = 1;
    Scrivel2::Scrivel2XmlGenRun log("run");
    log.StartLogging();

    const unsigned int call = log.EnterCadiCall("CADIReset");
    log.WriteDecimal("resetLevel", resetLevel);  // arguments
    log.FlushOutput(false, "CADIReset");         // before the target runs

    const eslapi::CADIReturn_t status = target.CADIReset(resetLevel);

    log.WriteContinueFunction(call, "CADIReset");
    log.WriteReturnType("return", status);  // results
    log.WriteIdent("CADIReset", false, true);
    log.FlushOutput(true, "");  // between calls

    log.EndLogging();
}
