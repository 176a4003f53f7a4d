// What docs/log-format.md shows.

#include "docs/Snippets.h"

#include <LoggedCall.h>
#include <ScrivelXmlGen.h>

#include <cstring>

namespace ScrivelDocs
{
namespace
{

using namespace eslapi;
using Scrivel2::Scrivel2XmlGenConnect;
using Scrivel2::Scrivel2XmlGenRun;

// ---- Frame --------------------------------------------------------------------------------------

void ConnectionCall()
{
    Scrivel2XmlGenConnect log("connect");
    log.StartLogging();

    log.WriteCloseInterruptedFunction("GetTargetInfos");
    log.IncCallNo();
    log.WriteDetailedIdent("GetTargetInfos");
    log.WriteDecimal("desiredNumberOfTargetInfos", 1);
    log.FlushOutput(false, "GetTargetInfos");

    CADITargetInfo_t info{};
    info.id = 3;
    std::strcpy(info.targetName, "RV32I");
    std::strcpy(info.instanceName, "cpu0");
    std::strcpy(info.version, "1.2");
    std::strcpy(info.description, "a small core");
    std::strcpy(info.componentType, "Core");
    info.numberOfParameters = 2;
    info.executesSoftware = true;
    std::strcpy(info.systemName, "board");
    std::strcpy(info.systemDescription, "a core and its memory");
    unsigned int count = 1;

    log.WriteContinueFunction(log.GetCallNo(), "GetTargetInfos");
    log.WriteTargetInfoArray("targetInfo", &info, &count);
    log.WriteDecimalPtrVal("actualNumberOfTargetInfos", &count);
    log.WriteReturnType("return", CADI_STATUS_OK);
    log.WriteIdent("GetTargetInfos", false, true);
    log.FlushOutput(true, "");

    log.EndLogging();
}

void DisassemblerCall()
{
    Scrivel2XmlGenRun log("run");
    log.StartLogging();

    log.SetPendingElement("disassembler", "RV32I");
    log.WriteCloseInterruptedFunction("CADIMemRead");
    log.IncCallNo();
    log.WriteDetailedIdent("CADIMemRead", 0x8000);
    log.FlushOutput(false, "CADIMemRead");
    log.WriteContinueFunction(log.GetCallNo(), "CADIMemRead");
    log.WriteReturnType("return", CADI_STATUS_OK);
    log.WriteIdent("CADIMemRead", false, true);
    log.FlushOutput(true, "");

    log.EndLogging();
}

void Interrupted()
{
    Scrivel2XmlGenRun log("run");
    log.StartLogging();

    const unsigned int run = log.EnterCadiCall("CADIExecContinue");
    log.WriteBool("wait", true);
    log.FlushOutput(false, "CADIExecContinue");
    KeepMoment("running");

    const unsigned int callback = log.EnterCadiCall("modeChange");
    log.WriteExecMode("newMode", CADI_EXECMODE_Bpt);
    KeepMoment("interrupted");
    log.FlushOutput(false, "modeChange");
    KeepMoment("callback");
    log.WriteContinueFunction(callback, "modeChange");
    log.WriteIdent("modeChange", false, true);
    log.FlushOutput(true, "");
    KeepMoment("callback-returned");

    log.WriteContinueFunction(run, "CADIExecContinue");
    KeepMoment("continuing");
    log.WriteReturnType("return", CADI_STATUS_OK);
    log.WriteIdent("CADIExecContinue", false, true);
    log.FlushOutput(true, "");

    log.EndLogging();
}

void Comment()
{
    Scrivel2XmlGenRun log("run");
    log.StartLogging();
    log.WriteComment("loaded crc.elf");
    log.FlushOutput(true, "");
    log.EndLogging();
}

void SeveralFiles()
{
    Scrivel2::LogOptions options;
    options.fileSize = 1;  // each call has a file of its own
    Scrivel2::RunLog log("run", options);
    for (unsigned int level = 0; level < 2; ++level) {
        Scrivel2::LoggedCall call(log, "CADIReset");
        call.Arguments([&](auto& xml) { xml.WriteDecimal("resetLevel", level); });
        call.Results([](auto& xml) { xml.WriteReturnType("return", CADI_STATUS_OK); });
    }
}

void Moments()
{
    Scrivel2XmlGenRun log("run");
    log.StartLogging();
    KeepMoment("started");

    const unsigned int call = log.EnterCadiCall("CADIReset");
    log.WriteDecimal("resetLevel", 1);
    KeepMoment("entered");
    log.FlushOutput(false, "CADIReset");
    KeepMoment("flushed");

    log.WriteContinueFunction(call, "CADIReset");
    log.WriteReturnType("return", CADI_STATUS_OK);
    log.WriteIdent("CADIReset", false, true);
    KeepMoment("closed");
    log.FlushOutput(true, "");
    KeepMoment("returned");

    log.EndLogging();
}

void LayerMoments()
{
    Scrivel2::RunLog log("run");
    Scrivel2::LoggedCall run(log, "CADIExecContinue");
    KeepMoment("running");
    {
        Scrivel2::LoggedCall callback(log, "modeChange");
        callback.Arguments([](auto& xml) { xml.WriteExecMode("newMode", CADI_EXECMODE_Bpt); });
        KeepMoment("callback");
    }
    KeepMoment("callback-returned");
    run.Results([](auto& xml) { xml.WriteReturnType("return", CADI_STATUS_OK); });
}

void NotSecure()
{
    Scrivel2XmlGenRun log("run");
    log.SetWriteSecure(false);
    log.StartLogging();

    const unsigned int run = log.EnterCadiCall("CADIExecContinue");
    log.WriteBool("wait", true);
    log.FlushOutput(false, "CADIExecContinue");
    const unsigned int callback = log.EnterCadiCall("modeChange");
    log.WriteContinueFunction(callback, "modeChange");
    log.WriteIdent("modeChange", false, true);
    log.FlushOutput(true, "");
    log.WriteContinueFunction(run, "CADIExecContinue");
    log.WriteReturnType("return", CADI_STATUS_OK);
    log.WriteIdent("CADIExecContinue", false, true);
    log.FlushOutput(true, "");

    log.EndLogging();
}

// ---- Elements of a call -------------------------------------------------------------------------

/// A run-phase log of one call that holds what `write` writes.
template <typename Write>
void Call(Write write)
{
    Scrivel2XmlGenRun log("run");
    log.StartLogging();
    const unsigned int call = log.EnterCadiCall("Call");
    log.FlushOutput(false, "Call");
    log.WriteContinueFunction(call, "Call");
    write(log);
    log.WriteIdent("Call", false, true);
    log.FlushOutput(true, "");
    log.EndLogging();
}

void Values()
{
    Call([](Scrivel2XmlGenRun& log) {
        log.WriteDecimal("count", 4294967296);
        log.WriteHex("value", 0x7f, 2);
        log.WriteAddress("factory", 0x1000);
        log.WriteAddress("noFactory", 0);
        log.WriteBin("flags", 2, 8);
        const unsigned char bytes[16] = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15};
        log.WriteByte("bytes", bytes);
        log.WriteBool("enabled", true);
        log.WriteChar("key", 'k');
        log.WriteString("text", "x<y\n");
        log.WriteReturnType("return", CADI_STATUS_OK);
        log.WriteReturnType("return", CADIReturn_t(12));
        log.WriteNULLPointer("info");
    });
}

void Text()
{
    Call([](Scrivel2XmlGenRun& log) {
        log.WriteString("markup", R"(<"'&'">)");
        log.WriteString("bytes", "a\tb\r\nc\x7f");
        log.WriteString("utf8", "\xc3\xa9");
        log.WriteString("twice", "&amp;");
        log.WriteString("backslash", R"(\x0a)");
        log.WriteDecimal("2nd reg:x", 1);
        log.WriteDecimal("", 2);
    });
}

void Arrays()
{
    Call([](Scrivel2XmlGenRun& log) {
        const unsigned char bytes[] = {0x0a, 0xff};
        const unsigned int words[] = {10, 255};
        const unsigned long longs[] = {0xdeadbeef};
        const bool flags[] = {true, false};
        char entry[] = "ab";
        char* names[] = {entry};
        log.WriteUint8Array("data", bytes, 2, true);
        log.WriteUint32Array("words", words, 2, false);
        log.WriteUint64Array("longs", longs, 1, true);
        log.WriteBoolArray("flags", flags, 2);
        log.WriteCharArray("chars", "a<", 2);
        log.WriteStringArray("names", names, 1);
        log.WriteUint32Array("none", words, 0, true);
        log.WriteUint64Array("null", nullptr, 5, true);
    });
}

void Lines()
{
    Call([](Scrivel2XmlGenRun& log) {
        unsigned char data[32];
        for (unsigned char i = 0; i < 32; ++i) {
            data[i] = i;
        }
        log.WriteLinesByteArray("mem", data, 2, 3);
    });
}

void NullArrays()
{
    Call([](Scrivel2XmlGenRun& log) {
        log.WriteBoolArray("bools", nullptr, 1);
        log.WriteCharArray("chars", nullptr, 1);
        log.WriteStringArray("strings", nullptr, 1);
        log.WriteLinesByteArray("lines", nullptr, 1, 1);
        log.WriteUint8Array("uint8s", nullptr, 1, true);
        log.WriteUint32Array("uint32s", nullptr, 1, true);
        log.WriteUint64Array("uint64s", nullptr, 1, true);
        log.WriteParameterInfoArray("parameters", nullptr, 1);
        log.WriteParameterValueArray("parameterValues", nullptr, 1);
        log.WriteRegGroupArray("regGroups", nullptr, 1);
        log.WriteRegInfoArray("regInfos", nullptr, 1);
        log.WriteRegArray("regs", nullptr, 1);
        log.WriteMemSpaceInfoArray("memSpaces", nullptr, 1);
        log.WriteMemBlockInfoArray("memBlocks", nullptr, 1);
        log.WriteOverlayIdArray("overlays", nullptr, 1);
        log.WriteBptDescriptionArray("bpts", nullptr, 1);
        log.WriteExceptionArray("exceptions", nullptr, 1);
        log.WriteExecModeArray("execModes", nullptr, 1);
        log.WriteResetLevelArray("resetLevels", nullptr, 1);
        log.WritePipeStageArray("stages", nullptr, 1);
        log.WritePipeStageFieldArray("stageFields", nullptr, 1);
    });
}

void Registers()
{
    Call([](Scrivel2XmlGenRun& log) {
        const Scrivel2XmlGenRun::NameTable names = {{32, "pc"}};
        log.SetRegisterNames(&names);
        CADIReg_t regs[2] = {};
        regs[0].regNumber = 32;
        regs[0].bytes[1] = 0x80;
        regs[1].regNumber = 33;
        regs[1].isUndefined = true;
        regs[1].attribute = CADI_REG_READ_ONLY;
        log.WriteRegArray("reg", regs, 2);
        log.SetRegisterNames(nullptr);
    });
}

void RegisterInfo()
{
    Call([](Scrivel2XmlGenRun& log) {
        CADIRegInfo_t info{};
        std::strcpy(info.name, "pc");
        std::strcpy(info.description, "program counter");
        info.regNumber = 32;
        info.bitsWide = 32;
        info.hasSideEffects = -1;
        info.details.count = 1;
        info.display = CADI_REGTYPE_PC;
        log.WriteRegInfoArray("regInfo", &info, 1);
    });
}

void Breakpoint()
{
    Call([](Scrivel2XmlGenRun& log) {
        const Scrivel2XmlGenRun::NameTable names = {{1, "ram"}};
        log.SetMemSpaceNames(&names);
        CADIBptRequest_t request{};
        request.address.location = {1, 0x8000};
        request.sizeOfAddressRange = 4294967312;
        request.enabled = 1;
        request.type = CADI_BPT_MEMORY;
        request.triggerType = CADI_BPT_TRIGGER_ON_READ | CADI_BPT_TRIGGER_ON_WRITE;
        request.continueExecution = 2;
        log.WriteBptRequest("request", &request);
        CADIAddr_t elsewhere{2, 0x10};
        log.WriteAddr("address", elsewhere);
        log.SetMemSpaceNames(nullptr);
    });
}

void Messages()
{
    Call([](Scrivel2XmlGenRun& log) {
        log.WriteReturnType("return", CADIReturn_t(12));
        log.WriteMemReadWrite("readWrite", CADIMemReadWrite_t(-1));
        log.WriteBptConditionOperator("conditionOperator", CADI_BPT_COND_GREATER_THAN_UNSIGNED);
        log.WriteExecMode("mode", 6);
        log.WriteTriggerType("triggerType", 0x19);
        log.WriteHandledBreakpoints("handledBreakpoints", 0x41);
        log.WriteEndianness("endianness", 0x41);
        log.WriteEndianness("endianness", 3);
    });
}

}  // namespace

Snippets LogFormatSnippets()
{
    return {
        {"connection-call", ConnectionCall},
        {"disassembler-call", DisassemblerCall},
        {"interrupted", Interrupted},
        {"comment", Comment},
        {"several-files", SeveralFiles},
        {"moments", Moments},
        {"layer-moments", LayerMoments},
        {"not-secure", NotSecure},
        {"values", Values},
        {"text", Text},
        {"arrays", Arrays},
        {"lines", Lines},
        {"null-arrays", NullArrays},
        {"registers", Registers},
        {"register-info", RegisterInfo},
        {"breakpoint", Breakpoint},
        {"messages", Messages},
    };
}

}  // namespace ScrivelDocs
