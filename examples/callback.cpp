// A call that the target interrupts by a callback, written with a generator alone.
// docs/calling-order.md shows it.
#include <ScrivelXmlGen.h>

int main()
{
    Scrivel2::Scrivel2XmlGenRun log("run");
    log.StartLogging();

    const unsigned int run = log.EnterCadiCall("CADIExecContinue");
    log.FlushOutput(false, "CADIExecContinue");

    // The target runs, stops at a breakpoint and calls back:
    const unsigned int callback = log.EnterCadiCall("modeChange");
    log.WriteExecMode("newMode", eslapi::CADI_EXECMODE_Bpt);
    log.FlushOutput(false, "modeChange");
    // ... the debugger's own callback runs ...
    log.WriteContinueFunction(callback, "modeChange");
    log.WriteIdent("modeChange", false, true);
    log.FlushOutput(true, "");

    // CADIExecContinue returns:
    log.WriteContinueFunction(run, "CADIExecContinue");
    log.WriteReturnType("return", eslapi::CADI_STATUS_OK);
    log.WriteIdent("CADIExecContinue", false, true);
    log.FlushOutput(true, "");

    log.EndLogging();
}
