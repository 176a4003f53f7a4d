// What docs/calling-order.md shows.

#include "docs/Snippets.h"

#include <ScrivelXmlGen.h>

namespace ScrivelDocs
{
namespace
{

using eslapi::CADIReturn_t;

struct Target
{
    static CADIReturn_t CADIReset(unsigned int /*level*/) { return eslapi::CADI_STATUS_OK; }
    static CADIReturn_t CADIExecContinue() { return eslapi::CADI_STATUS_OK; }
};

struct Broker
{
    static CADIReturn_t GetSimulationInfos(unsigned int /*wanted*/,
                                           eslapi::CADISimulationInfo_t* /*infos*/, unsigned int* actual)
    {
        *actual = 0;
        return eslapi::CADI_STATUS_OK;
    }
};

void RunPhase()
{
    Target target;
    Scrivel2::Scrivel2XmlGenRun log("run");
    log.StartLogging();
    const unsigned int resetLevel = 1;
    // [run-phase]
    const unsigned int call = log.EnterCadiCall("CADIReset");
    log.WriteDecimal("resetLevel", resetLevel);  // arguments
    log.FlushOutput(false, "CADIReset");         // before the target runs

    const CADIReturn_t status = target.CADIReset(resetLevel);

    log.WriteContinueFunction(call, "CADIReset");
    log.WriteReturnType("return", status);  // results
    log.WriteIdent("CADIReset", false, true);
    log.FlushOutput(true, "");  // between calls
    // [run-phase]
    log.EndLogging();
}

void ConnectionPhase()
{
    Broker broker;
    Scrivel2::Scrivel2XmlGenConnect log("connect");
    log.StartLogging();
    eslapi::CADISimulationInfo_t infos[1];
    unsigned int actual = 0;
    // [connection-phase]
    log.WriteCloseInterruptedFunction("GetSimulationInfos");  // first
    log.IncCallNo();
    const unsigned int call = log.GetCallNo();
    log.WriteDetailedIdent("GetSimulationInfos");
    log.WriteDecimal("desiredNumberOfSimulations", 1);  // arguments
    log.FlushOutput(false, "GetSimulationInfos");       // before the factory runs

    const CADIReturn_t status = broker.GetSimulationInfos(1, infos, &actual);

    log.WriteContinueFunction(call, "GetSimulationInfos");
    log.WriteSimulationInfoArray("simulationInfos", infos, &actual);  // results
    log.WriteReturnType("return", status);
    log.WriteIdent("GetSimulationInfos", false, true);
    log.FlushOutput(true, "");  // between calls
    // [connection-phase]
    log.EndLogging();
}

void Callback()
{
    Scrivel2::Scrivel2XmlGenRun log("run");
    log.StartLogging();
    // [callback]
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
    // [callback]
    log.EndLogging();
}

void Overlap()
{
    Scrivel2::Scrivel2XmlGenRun log("run");
    log.StartLogging();
    // [overlap]
    const unsigned int older = log.EnterCadiCall("CADIExecContinue");  // thread 1
    log.FlushOutput(false, "CADIExecContinue");
    const unsigned int younger = log.EnterCadiCall("CADIExecStop");  // thread 2
    log.FlushOutput(false, "CADIExecStop");

    // Thread 1's call returns first. The tail in the file is thread 2's provisional end tag: keep it.
    log.UpdateFilePointerPosition();
    log.WriteContinueFunction(older, "CADIExecContinue");
    log.WriteReturnType("return", eslapi::CADI_STATUS_OK);
    log.WriteIdent("CADIExecContinue", false, true);
    log.FlushOutput(true, "");

    log.WriteContinueFunction(younger, "CADIExecStop");
    log.WriteReturnType("return", eslapi::CADI_STATUS_OK);
    log.WriteIdent("CADIExecStop", false, true);
    log.FlushOutput(true, "");
    // [overlap]
    log.EndLogging();
}

void EndWithOpenCall()
{
    Scrivel2::Scrivel2XmlGenRun log("run");
    log.StartLogging();
    log.EnterCadiCall("CADIExecContinue");
    log.FlushOutput(false, "CADIExecContinue");
    // [end-with-open-call]
    log.UpdateFilePointerPosition();  // keep the provisional end tag of the open call
    log.EndLogging();
    // [end-with-open-call]
}

}  // namespace

Snippets CallingOrderSnippets()
{
    return {
        {"run-phase", RunPhase}, {"connection-phase", ConnectionPhase},   {"callback", Callback},
        {"overlap", Overlap},    {"end-with-open-call", EndWithOpenCall},
    };
}

}  // namespace ScrivelDocs
