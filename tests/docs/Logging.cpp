// What docs/logging.md shows beside the programs in examples/. DocumentationTest.cpp runs it.

#include "docs/Snippets.h"

#include <LoggedCall.h>

#include <cstring>
#include <iostream>

namespace ScrivelDocs
{
namespace
{

void Life()
{
    // [life]
    Scrivel2::RunLog log("run");  // run-<process id>.xml, in the current directory
    if (!log.IsGood()) {
        std::cerr << log.FileName() << " can't be written\n";
    }
    log.Comment("loaded crc.elf");
    // ... calls ...
    log.EndLogging();  // or the end of the scope
    // [life]
}

void Names()
{
    eslapi::CADIMemSpaceInfo_t spaces[1] = {};
    spaces[0].memSpaceId = 1;
    std::strcpy(spaces[0].name, "RAM");
    eslapi::CADIAddrComplete_t start{};
    start.location.spaceId = 1;
    start.location.addr = 0x8000;

    Scrivel2::RunLog log("run");
    // [names]
    log.LearnMemSpaces(spaces, 1);  // what the target has answered to CADIMemGetSpaces

    Scrivel2::LoggedCall call(log, "CADIMemRead");
    call.Arguments([&](auto& xml) { xml.WriteAddrComplete("startAddress", start); });
    // [names]
}

void Connection()
{
    Scrivel2::ConnectLog log("connection");
    // [connection]
    Scrivel2::LoggedCall call(log, "GetSimulationInfos");
    call.Arguments([](auto& xml) { xml.WriteDecimal("desiredNumberOfSimulations", 1); });
    // [connection]
}

}  // namespace

Snippets LoggingSnippets()
{
    return {{"life", Life}, {"names", Names}, {"connection", Connection}};
}

}  // namespace ScrivelDocs
