// What docs/calling-order.md shows beside the programs in examples/. DocumentationTest.cpp runs it.

#include "docs/Snippets.h"

#include <ScrivelXmlGen.h>

namespace ScrivelDocs
{
namespace
{

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
    return {{"overlap", Overlap}, {"end-with-open-call", EndWithOpenCall}};
}

}  // namespace ScrivelDocs
