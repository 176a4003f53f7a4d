// The run phase's frame and its CADI types, the plain way.

#ifndef SCRIVEL_TESTS_REFERENCE_PLAINRUNBASE_H
#define SCRIVEL_TESTS_REFERENCE_PLAINRUNBASE_H

#include "reference/PlainBase.h"

#include <cstddef>
#include <cstdint>
#include <iomanip>
#include <locale>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include <pthread.h>

#include <CADITypes.h>

namespace ScrivelTest
{

template <typename File>
class PlainRunBase : public PlainBase<File>
{
public:
    using Base = PlainBase<File>;
    using Names = std::map<unsigned int, std::string>;
    using Base::callNo;
    using Base::depth;
    using Base::logFile;
    using Base::WriteBool;
    using Base::WriteDecimal;
    using Base::WriteHex;
    using Base::WriteIdent;
    using Base::WriteIdentWithoutTabs;
    using Base::WriteNULLPointer;
    using Base::WriteString;
    using Base::WriteTabs;

    using Base::Base;

    // ---- Calls ----------------------------------------------------------------------------------

    void WriteDetailedIdent(std::string callName) override { WriteDetailedIdent(callName, 0); }

    virtual void WriteDetailedIdent(std::string callName, unsigned long address)
    {
        if (!pendingElementName.empty() && !pendingElementText.empty()) {
            logFile << "    <" << pendingElementName << ">" << pendingElementText << "</"
                    << pendingElementName << ">\n";
        }
        pendingElementName = "";
        pendingElementText = "";
        WriteTabs(true);
        depth = depth + 1;
        logFile << "<" << this->Cleaned(callName) << " call_num=\"" << callNo << "\"\n";
        this->WriteTimestamp("call_time", false);
        const std::uint64_t thread = pthread_self();
        logFile << "\n";
        WriteTabs(false);
        logFile << " threadId=\"" << this->LowHalf(thread) << "\"";
        if (address != 0) {
            logFile << " disassembler_address=\"";
            this->InsertHex(address, 16);
            logFile << "\"";
        }
        logFile << ">\n";
    }

    virtual unsigned int EnterCadiCall(std::string callName)
    {
        this->WriteCloseInterruptedFunction(callName);
        callNo = callNo + 1;
        WriteDetailedIdent(callName);
        return callNo;
    }

    void SetMemSpaceNames(const Names* names) { memSpaceNames = names; }
    void SetRegisterNames(const Names* names) { registerNames = names; }
    void SetPendingElement(std::string name, std::string text)
    {
        pendingElementName = name;
        pendingElementText = text;
    }

    // ---- Enumerations ---------------------------------------------------------------------------

    void WriteReturnType(std::string ident, eslapi::CADIReturn_t value)
    {
        this->ReturnType(ident, value);
    }

    void WriteValueDataType(std::string ident, eslapi::CADIValueDataType_t value)
    {
        this->ValueDataType(ident, value);
    }

    void WriteFactoryErrorCode(std::string ident, eslapi::CADIFactoryErrorCode_t value)
    {
        this->WriteNamed(ident, this->factoryErrorNames, value, "Invalid factory error code: 0x");
    }

    void WriteFactorySeverityCode(std::string ident, eslapi::CADIFactorySeverityCode_t value)
    {
        this->WriteNamed(ident,
                         {"CADIFACT_SEVERITY_OK", "CADIFACT_SEVERITY_WARNING", "CADIFACT_SEVERITY_ERROR"},
                         value, "Invalid factory severity code: 0x");
    }

    void WriteBptType(std::string ident, eslapi::CADIBptType_t value)
    {
        if (value == 0x8000) {
            WriteIdent(ident, true, false);
            logFile << "CADI_BPT_USER_DEFINED";
            WriteIdentWithoutTabs(ident);
            return;
        }
        this->WriteNamed(ident,
                         {"CADI_BPT_PROGRAM", "CADI_BPT_MEMORY", "CADI_BPT_REGISTER",
                          "CADI_BPT_INST_STEP", "CADI_BPT_PROGRAM_RANGE", "CADI_BPT_EXCEPTION"},
                         value, "Invalid bpt type: 0x");
    }

    void WriteBptConditionOperator(std::string ident, eslapi::CADIBptConditionOperator_t value)
    {
        this->WriteNamed(ident,
                         {"CADI_BPT_COND_UNCONDITIONAL", "CADI_BPT_COND_EQUALS",
                          "CADI_BPT_COND_NOT_EQUALS", "CADI_BPT_COND_GREATER_THAN_SIGNED",
                          "CADI_BPT_COND_GREATER_THAN_OR_EQUALS_SIGNED", "CADI_BPT_COND_LESS_THAN_SIGNED",
                          "CADI_BPT_COND_LESS_THAN_OR_EQUALS_SIGNED"},
                         value, "Invalid breakpoint condition operator: 0x");
    }

    void WriteBptConfigure(std::string ident, eslapi::CADIBptConfigure_t value)
    {
        this->WriteNamed(ident, {"CADI_BPT_Disable", "CADI_BPT_Enable"}, value,
                         "Invalid CADIBptConfigure value: 0x");
    }

    void WriteExceptionAction(std::string ident, eslapi::CADIExceptionAction_t value)
    {
        this->WriteNamed(ident, {"CADI_EXCEPTION_Raise", "CADI_EXCEPTION_Lower", "CADI_EXCEPTION_Pulse"},
                         value, "Invalid exception action: 0x");
    }

    void WriteRegAccessAttribute(std::string ident, eslapi::CADIRegAccessAttribute_t value)
    {
        this->WriteNamed(ident,
                         {"CADI_REG_READ_WRITE", "CADI_REG_READ_ONLY", "CADI_REG_WRITE_ONLY",
                          "CADI_REG_READ_WRITE_RESTRICTED", "CADI_REG_READ_ONLY_RESTRICTED",
                          "CADI_REG_WRITE_ONLY_RESTRICTED"},
                         value, "Invalid reg access attribute: 0x");
    }

    void WriteRegType(std::string ident, eslapi::CADIRegType_t value)
    {
        this->WriteNamed(ident, {"CADI_REGTYPE_Simple", "CADI_REGTYPE_Compound"}, value,
                         "Invalid reg type: 0x");
    }

    void WriteRegDisplay(std::string ident, eslapi::CADIRegDisplay_t value)
    {
        this->WriteNamed(ident,
                         {"CADI_REGTYPE_HEX", "CADI_REGTYPE_UINT", "CADI_REGTYPE_INT",
                          "CADI_REGTYPE_BOOL", "CADI_REGTYPE_FLOAT", "CADI_REGTYPE_SYMBOL",
                          "CADI_REGTYPE_STRING", "CADI_REGTYPE_PC", "CADI_REGTYPE_BIN",
                          "CADI_REGTYPE_OCT"},
                         value, "Invalid reg display: 0x");
    }

    void WriteMemReadWrite(std::string ident, eslapi::CADIMemReadWrite_t value)
    {
        this->WriteNamed(ident, {"CADI_MEM_ReadOnly", "CADI_MEM_WriteOnly", "CADI_MEM_ReadWrite"}, value,
                         "Invalid mem read write: 0x");
    }

    void WriteExecMode(std::string ident, unsigned int mode)
    {
        static const char* const mode_to_string[] = {
            "CADI_EXECMODE_Stop",  "CADI_EXECMODE_Run",           "CADI_EXECMODE_Bpt",
            "CADI_EXECMODE_Error", "CADI_EXECMODE_HighLevelStep", "CADI_EXECMODE_RunUnconditionally",
        };
        WriteIdent(ident, true, false);
        if (mode <= 5) {
            logFile << mode_to_string[mode];
        } else {
            logFile << "Unknown execution mode: " << mode;
        }
        WriteIdentWithoutTabs(ident);
    }

    void WriteExecModePtrVal(std::string ident, unsigned int* mode)
    {
        if (mode == nullptr) {
            WriteNULLPointer(ident);
            return;
        }
        WriteExecMode(ident, *mode);
    }

    void WriteExecModePtrVal(std::string ident, std::nullptr_t) { WriteNULLPointer(ident); }

    void WriteTriggerType(std::string ident, unsigned int trigger)
    {
        WriteString(ident, Bits("CADI_BPT_TRIGGER_ON_", {"READ", "WRITE", "MODIFY"}, trigger));
    }

    void WriteEndianness(std::string ident, unsigned char endianness)
    {
        std::ostringstream text;
        switch (endianness) {
        case 0:
            text << "mono";
            break;
        case 1:
            text << "LE";
            break;
        case 2:
            text << "BE";
            break;
        default:
            text << "0x" << std::setw(8) << std::setfill('0') << endianness;
        }
        WriteString(ident, text.str());
    }

    void WriteRegSymbol(std::string ident, eslapi::CADIRegSymbols_t symbols)
    {
        WriteIdent(ident, true, true);
        WriteDecimal("numSymbols", symbols.numSymbols);
        if (symbols.symbols == nullptr) {
            WriteNULLPointer("Symbols");
        }
        WriteIdent(ident, false, true);
    }

    // ---- Target features ------------------------------------------------------------------------

    void WriteHandledBreakpoints(std::string ident, unsigned int breakpoints)
    {
        WriteString(ident,
                    Bits("CADI_TARGET_FEATURE_BPT_",
                         {"PROGRAM", "MEMORY", "REGISTER", "INST_STEP", "PROGRAM_RANGE", "EXCEPTION"},
                         breakpoints));
    }

    void WriteTargetFeatures(std::string ident, eslapi::CADITargetFeatures_t* features)
    {
        if (features == nullptr) {
            WriteNULLPointer(ident);
            return;
        }
        WriteIdent(ident, true, true);
        WriteString("targetName", features->targetName);
        WriteString("targetVersion", features->targetVersion);
        WriteDecimal("nrBreakpointsAvailable", features->nrBreakpointsAvailable);
        WriteDecimal("fOverlaySupportAvailable", features->fOverlaySupportAvailable ? 1 : 0);
        WriteDecimal("fProfilingAvailable", features->fProfilingAvailable ? 1 : 0);
        WriteDecimal("nrResetLevels", features->nrResetLevels);
        WriteDecimal("nrExecModes", features->nrExecModes);
        WriteDecimal("nrExceptions", features->nrExceptions);
        WriteDecimal("nrMemSpaces", features->nrMemSpaces);
        WriteDecimal("nrRegisterGroups", features->nrRegisterGroups);
        WriteDecimal("nrPipeStages", features->nrPipeStages);
        WriteDecimal("nPCRegNum", features->nPCRegNum);
        WriteHandledBreakpoints("handledBreakpoints", features->handledBreakpoints);
        WriteDecimal("nrOfHWThreads", features->nrOfHWThreads);
        WriteBool("nExtendedTargetFeaturesRegNumValid", features->nExtendedTargetFeaturesRegNumValid);
        WriteDecimal("nExtendedTargetFeaturesRegNum", features->nExtendedTargetFeaturesRegNum);
        WriteString("canonicalRegisterDescription", features->canonicalRegisterDescription);
        WriteString("canonicalMemoryDescription", features->canonicalMemoryDescription);
        WriteDecimal("canCompleteMultipleInstructionsPerCycle",
                     features->canCompleteMultipleInstructionsPerCycle ? 1 : 0);
        WriteIdent(ident, false, true);
    }

    // ---- Parameters and factory errors ----------------------------------------------------------

    void WriteParameterInfo(std::string ident, eslapi::CADIParameterInfo_t info)
    {
        this->ParameterInfo(ident, info);
    }

    void WriteParameterInfoPtrVal(std::string ident, eslapi::CADIParameterInfo_t* info)
    {
        if (info == nullptr) {
            WriteNULLPointer(ident);
            return;
        }
        WriteParameterInfo(ident, *info);
    }

    void WriteParameterValue(std::string ident, eslapi::CADIParameterValue_t value)
    {
        this->ParameterValue(ident, value);
    }

    void WriteFactoryErrorMessage(std::string ident, eslapi::CADIFactoryErrorMessage_t message)
    {
        WriteIdent(ident, true, true);
        WriteFactoryErrorCode("errorCode", message.errorCode);
        WriteDecimal("erroneousParameterId", message.erroneousParameterId);
        WriteString("message", message.message);
        WriteFactorySeverityCode("severity", message.severity);
        WriteIdent(ident, false, true);
    }

    void WriteFactoryErrorMessagePtrVal(std::string ident, eslapi::CADIFactoryErrorMessage_t* message)
    {
        if (message == nullptr) {
            WriteNULLPointer(ident);
            return;
        }
        WriteFactoryErrorMessage(ident, *message);
    }

    void WriteParameterInfoArray(std::string ident, eslapi::CADIParameterInfo_t* params,
                                 unsigned int count)
    {
        Array(ident, params, count, "param", [this](const eslapi::CADIParameterInfo_t& param) {
            WriteParameterInfo(param.name, param);
        });
    }

    void WriteParameterValueArray(std::string ident, eslapi::CADIParameterValue_t* values,
                                  unsigned int count)
    {
        Array(ident, values, count, "parameterValue", [this](const eslapi::CADIParameterValue_t& value) {
            WriteParameterValue("parameterValue", value);
        });
    }

    // ---- Registers ------------------------------------------------------------------------------

    void WriteRegGroup(eslapi::CADIRegGroup_t group)
    {
        WriteIdent(group.name, true, true);
        WriteDecimal("groupID", group.groupID);
        WriteString("description", group.description);
        WriteDecimal("numRegsInGroup", group.numRegsInGroup);
        WriteIdent(group.name, false, true);
    }

    void WriteRegDetail(std::string ident, eslapi::CADIRegDetails_t details)
    {
        WriteIdent(ident, true, true);
        WriteRegType("type", details.type);
        WriteDecimal("count", details.count);
        WriteIdent(ident, false, true);
    }

    void WriteRegInfo(eslapi::CADIRegInfo_t info)
    {
        WriteIdent(info.name, true, true);
        WriteString("description", info.description);
        WriteDecimal("regNumber", info.regNumber);
        WriteDecimal("bitsWide", info.bitsWide);
        WriteDecimal("hasSideEffects",
                     static_cast<std::uint64_t>(static_cast<std::int64_t>(info.hasSideEffects)));
        WriteRegDetail("details", info.details);
        WriteRegDisplay("display", info.display);
        if (info.display == 5) {
            WriteString("symbols", "Register is not of type CADI_REGTYPE_SYMBOL");
        } else {
            WriteRegSymbol("symbols", info.symbols);
        }
        WriteString("fpFormat", info.fpFormat);
        WriteDecimal("lsbOffset", info.lsbOffset);
        WriteDecimal("dwarfIndex", info.dwarfIndex);
        WriteBool("isProfiled", info.isProfiled);
        WriteBool("isPipeStageField", info.isPipeStageField);
        WriteDecimal("threadID", info.threadID);
        WriteRegAccessAttribute("attribute", info.attribute);
        WriteDecimal("canonicalRegisterNumber", info.canonicalRegisterNumber);
        WriteIdent(info.name, false, true);
    }

    void WriteReg(std::string ident, eslapi::CADIReg_t reg)
    {
        std::string name = Found(registerNames, reg.regNumber);
        if (name.empty()) {
            name = ident;
        }
        WriteIdent(name, true, true);
        WriteDecimal("regNumber", reg.regNumber);
        this->WriteByte("bytes", reg.bytes);
        WriteDecimal("offset128", reg.offset128);
        WriteBool("isUndefined", reg.isUndefined);
        WriteRegAccessAttribute("attribute", reg.attribute);
        WriteIdent(name, false, true);
    }

    void WriteRegGroupArray(std::string ident, eslapi::CADIRegGroup_t* groups, unsigned int count)
    {
        Array(ident, groups, count, "regGroup",
              [this](const eslapi::CADIRegGroup_t& group) { WriteRegGroup(group); });
    }

    void WriteRegInfoArray(std::string ident, eslapi::CADIRegInfo_t* infos, unsigned int count)
    {
        Array(ident, infos, count, "regInfo",
              [this](const eslapi::CADIRegInfo_t& info) { WriteRegInfo(info); });
    }

    void WriteRegArray(std::string ident, eslapi::CADIReg_t* regs, unsigned int count)
    {
        Array(ident, regs, count, "reg", [this](const eslapi::CADIReg_t& reg) { WriteReg("reg", reg); });
    }

    // ---- Memory ---------------------------------------------------------------------------------

    void WriteMemSpaceInfo(eslapi::CADIMemSpaceInfo_t space)
    {
        WriteIdent(space.name, true, true);
        WriteString("description", space.description);
        WriteDecimal("memSpaceId", space.memSpaceId);
        WriteDecimal("bitsPerMau", space.bitsPerMau);
        WriteHex("maxAddress", this->LowHalf(space.maxAddress), 16);
        WriteDecimal("nrMemBlocks", space.nrMemBlocks);
        WriteDecimal("isProgramMemory", space.isProgramMemory);
        WriteDecimal("minAddress", this->LowHalf(space.minAddress));
        WriteBool("isVirtualMemory", space.isVirtualMemory != 0);
        WriteBool("isCache", space.isCache != 0);
        WriteEndianness("endianness", space.endianness);
        WriteDecimal("invariance", space.invariance);
        WriteDecimal("dwarfMemSpaceId", space.dwarfMemSpaceId);
        WriteDecimal("canonicalMemoryNumber", space.canonicalMemoryNumber);
        WriteIdent(space.name, false, true);
    }

    void WriteMemBlockInfo(eslapi::CADIMemBlockInfo_t block)
    {
        WriteIdent(block.name, true, true);
        WriteString("description", block.description);
        WriteDecimal("id", block.id);
        WriteDecimal("parentID", block.parentID);
        WriteHex("startAddr", this->LowHalf(block.startAddr), 16);
        WriteHex("endAddr", this->LowHalf(block.endAddr), 16);
        WriteDecimal("cyclesToAccess", block.cyclesToAccess);
        WriteMemReadWrite("readWrite", block.readWrite);
        WriteIdent("supportedMultiplesOfMAU", true, true);
        for (int i = 0; i < 32; ++i) {
            WriteDecimal("value", block.supportedMultiplesOfMAU[i]);
        }
        WriteIdent("supportedMultiplesOfMAU", false, true);
        WriteEndianness("endianness", block.endianness);
        WriteDecimal("invariance", block.invariance);
        WriteIdent(block.name, false, true);
    }

    void WriteCacheInfo(std::string ident, eslapi::CADICacheInfo_t* cache)
    {
        if (cache == nullptr) {
            WriteNULLPointer(ident);
            return;
        }
        WriteIdent(ident, true, true);
        WriteDecimal("cacheLineSize", cache->cacheLineSize);
        WriteDecimal("cacheTagBits", cache->cacheTagBits);
        WriteDecimal("associativity", cache->associativity);
        WriteBool("writeThrough", cache->writeThrough);
        WriteIdent(ident, false, true);
    }

    void WriteMemSpaceInfoArray(std::string ident, eslapi::CADIMemSpaceInfo_t* spaces, unsigned int count)
    {
        Array(ident, spaces, count, "memSpaceInfo",
              [this](const eslapi::CADIMemSpaceInfo_t& space) { WriteMemSpaceInfo(space); });
    }

    void WriteMemBlockInfoArray(std::string ident, eslapi::CADIMemBlockInfo_t* blocks, unsigned int count)
    {
        Array(ident, blocks, count, "memBlockInfo",
              [this](const eslapi::CADIMemBlockInfo_t& block) { WriteMemBlockInfo(block); });
    }

    void WriteOverlayIdArray(std::string ident, unsigned int* ids, unsigned int count)
    {
        Array(ident, ids, count, "overlayId", [this](unsigned int id) { WriteDecimal("overlayId", id); });
    }

    void WriteAddr(std::string ident, eslapi::CADIAddr_t address)
    {
        WriteIdent(ident, true, true);
        WriteDecimal("spaceId", address.spaceId);
        const std::string name = Found(memSpaceNames, address.spaceId);
        WriteString("spaceName", name.empty() ? "unknown memSpaceInfo" : name);
        WriteHex("addr", address.addr, 16);
        WriteIdent(ident, false, true);
    }

    void WriteAddrComplete(std::string ident, eslapi::CADIAddrComplete_t address)
    {
        WriteIdent(ident, true, true);
        WriteDecimal("overlay", address.overlay);
        WriteAddr("location", address.location);
        WriteIdent(ident, false, true);
    }

    // ---- Breakpoints and exceptions -------------------------------------------------------------

    void WriteBptCondition(std::string ident, eslapi::CADIBptCondition_t condition)
    {
        WriteIdent(ident, true, true);
        WriteBptConditionOperator("conditionOperator", condition.conditionOperator);
        WriteDecimal("comparisonValue", condition.comparisonValue);
        WriteDecimal("threadID", condition.threadID);
        WriteDecimal("ignoreCount", condition.ignoreCount);
        WriteDecimal("bitwidth", condition.bitwidth);
        WriteIdent(ident, false, true);
    }

    void WriteBptRequest(std::string ident, eslapi::CADIBptRequest_t* request)
    {
        if (request == nullptr) {
            WriteNULLPointer(ident);
            return;
        }
        WriteIdent(ident, true, true);
        WriteAddrComplete("address", request->address);
        WriteDecimal("sizeOfAddressRange", this->LowHalf(request->sizeOfAddressRange));
        WriteDecimal("enabled", request->enabled);
        WriteString("conditions", request->conditions);
        WriteBool("useFormalCondition", request->useFormalCondition);
        WriteBptCondition("formalCondition", request->formalCondition);
        WriteBptType("type", request->type);
        WriteDecimal("regNumber", request->regNumber);
        WriteDecimal("temporary", request->temporary);
        WriteTriggerType("triggerType", request->triggerType);
        WriteBool("continueExecution", request->continueExecution != 0);
        WriteIdent(ident, false, true);
    }

    void WriteBptDescription(std::string ident, eslapi::CADIBptDescription_t description)
    {
        WriteIdent(ident, true, true);
        WriteDecimal("bptNumber", description.bptNumber);
        WriteBptRequest("bptInfo", &description.bptInfo);
        WriteIdent(ident, false, true);
    }

    void WriteBptDescriptionArray(std::string ident, eslapi::CADIBptDescription_t* descriptions,
                                  unsigned int count)
    {
        Array(ident, descriptions, count, "breakpoints",
              [this](const eslapi::CADIBptDescription_t& description) {
                  WriteBptDescription("breakpoints", description);
              });
    }

    void WriteException(std::string ident, eslapi::CADIException_t exception)
    {
        WriteIdent(ident, true, true);
        WriteDecimal("number", exception.number);
        WriteString("name", exception.name);
        WriteAddr("vector", exception.vector);
        WriteIdent(ident, false, true);
    }

    void WriteExceptionArray(std::string ident, eslapi::CADIException_t* exceptions, unsigned int count)
    {
        Array(ident, exceptions, count, "breakpoints", [this](const eslapi::CADIException_t& exception) {
            WriteException("exception", exception);
        });
    }

    // ---- Modes, reset levels, pipe stages -------------------------------------------------------

    void WriteExecMode(std::string ident, eslapi::CADIExecMode_t mode)
    {
        WriteIdent(ident, true, true);
        WriteExecMode("number", mode.number);
        WriteString("name", mode.name);
        WriteIdent(ident, false, true);
    }

    void WriteExecModePtrVal(std::string ident, eslapi::CADIExecMode_t* mode)
    {
        if (mode == nullptr) {
            WriteNULLPointer(ident);
            return;
        }
        WriteExecMode(ident, *mode);
    }

    void WriteResetLevel(std::string ident, eslapi::CADIResetLevel_t level)
    {
        WriteIdent(ident, true, true);
        WriteDecimal("number", level.number);
        WriteString("name", level.name);
        WriteIdent(ident, false, true);
    }

    void WritePipeStage(std::string ident, eslapi::CADIPipeStage_t stage)
    {
        WriteIdent(ident, true, true);
        WriteDecimal("id", stage.id);
        WriteString("name", stage.name);
        WriteDecimal("contentInfoRegisterId", stage.contentInfoRegisterId);
        WriteIdent(ident, false, true);
    }

    void WritePipeStageField(std::string ident, eslapi::CADIPipeStageField_t field)
    {
        WriteIdent(ident, true, true);
        WriteDecimal("pipeStageId", field.pipeStageId);
        WriteDecimal("registerId", field.registerId);
        WriteIdent(ident, false, true);
    }

    void WriteExecModeArray(std::string ident, eslapi::CADIExecMode_t* modes, unsigned int count)
    {
        Array(ident, modes, count, "parameterValue",
              [this](const eslapi::CADIExecMode_t& mode) { WriteExecMode("execMode", mode); });
    }

    void WriteResetLevelArray(std::string ident, eslapi::CADIResetLevel_t* levels, unsigned int count)
    {
        Array(ident, levels, count, "parameterValue",
              [this](const eslapi::CADIResetLevel_t& level) { WriteResetLevel("resetLevel", level); });
    }

    void WritePipeStageArray(std::string ident, eslapi::CADIPipeStage_t* stages, unsigned int count)
    {
        Array(ident, stages, count, "pipeStages",
              [this](const eslapi::CADIPipeStage_t& stage) { WritePipeStage("pipeStage", stage); });
    }

    void WritePipeStageFieldArray(std::string ident, eslapi::CADIPipeStageField_t* fields,
                                  unsigned int count)
    {
        Array(ident, fields, count, "pipeStageFields", [this](const eslapi::CADIPipeStageField_t& field) {
            WritePipeStageField("pipeStageField", field);
        });
    }

    // ---- Data -----------------------------------------------------------------------------------

    std::string pendingElementName;
    std::string pendingElementText;
    const Names* memSpaceNames = nullptr;
    const Names* registerNames = nullptr;

private:
    template <typename Record, typename WriteRecord>
    void Array(const std::string& ident, const Record* records, unsigned int count, const char* nullName,
               WriteRecord writeRecord)
    {
        WriteIdent(ident, true, true);
        if (records == nullptr) {
            WriteNULLPointer(nullName);
        } else {
            for (unsigned int i = 0; i < count; ++i) {
                writeRecord(records[i]);
            }
        }
        WriteIdent(ident, false, true);
    }

    static std::string Found(const Names* names, unsigned int key)
    {
        return names != nullptr && names->count(key) == 1 ? names->at(key) : "";
    }

    static std::string Bits(const std::string& prefix, const std::vector<std::string>& words,
                            unsigned int bits)
    {
        if (bits == 0) {
            return "";
        }
        int bitsSet = 0;
        for (unsigned int rest = bits; rest != 0; rest /= 2) {
            bitsSet += static_cast<int>(rest % 2);
        }
        std::ostringstream text;
        text.imbue(std::locale::classic());
        text << prefix << (bitsSet > 1 ? "{" : "");
        bool any = false;
        unsigned int rest = bits;
        for (const std::string& word : words) {
            if (rest % 2 == 1) {
                text << (any ? ", " : "") << word;
                any = true;
            }
            rest /= 2;
        }
        if (rest != 0) {
            text << (any ? ", " : "") << "0x" << std::hex << rest;
        }
        text << (bitsSet > 1 ? "}" : "");
        return text.str();
    }
};

}  // namespace ScrivelTest

#endif
