// The writers of values that a generator has, without its frame: what the callables given to a guard
// write with. They can't unbalance the document.

#ifndef SCRIVEL_LAYER_VALUEWRITERS_H
#define SCRIVEL_LAYER_VALUEWRITERS_H

#include "scrivel/LogNames.h"
#include "ScrivelXmlGen.h"

#include <string>
#include <utility>

namespace Scrivel2
{

/// What logs of both phases write. ScrivelXmlGen.h describes each writer.
template <typename Generator>
class SharedWriters : protected Generator
{
public:
    // ---- Scalars ------------------------------------------------------------------------------
    using Generator::WriteAddress;
    using Generator::WriteBin;
    using Generator::WriteBool;
    using Generator::WriteByte;
    using Generator::WriteCharString;
    using Generator::WriteDecimal;
    using Generator::WriteHex;
    using Generator::WriteNULLPointer;
    using Generator::WriteString;

    // ---- Pointed-to values --------------------------------------------------------------------
    using Generator::WriteBinPtrVal;
    using Generator::WriteBoolPtrVal;
    using Generator::WriteDecimalPtrVal;
    using Generator::WriteHexPtrVal;
    using Generator::WriteStringPtrVal;

    // ---- Arrays -------------------------------------------------------------------------------
    using Generator::WriteBoolArray;
    using Generator::WriteCharArray;
    using Generator::WriteLinesByteArray;
    using Generator::WriteStringArray;
    using Generator::WriteUint32Array;
    using Generator::WriteUint64Array;
    using Generator::WriteUint8Array;

    // ---- CADI types ---------------------------------------------------------------------------
    using Generator::WriteParameterInfo;
    using Generator::WriteParameterInfoArray;
    using Generator::WriteParameterValue;
    using Generator::WriteParameterValueArray;
    using Generator::WriteReturnType;
    using Generator::WriteTargetInfo;
    using Generator::WriteValueDataType;

    // ---- Writers whose text would break the document ------------------------------------------

    /// Writes the character as the generator does when every reader takes it, else escaped.
    ///
    ///     WriteChar("c", 'x')   ->  <c>x</c>
    ///     WriteChar("c", '<')   ->  <c>&lt;</c>
    void WriteChar(std::string ident, char value)
    {
        const bool plain = value >= ' ' && value <= '~' && value != '<' && value != '>' && value != '&';
        if (plain) {
            Generator::WriteChar(std::move(ident), value);
        } else {
            this->WriteString(std::move(ident), std::string(1, value));
        }
    }

    void WriteCharPtrVal(std::string ident, char* value)
    {
        if (value == nullptr) {
            this->WriteNULLPointer(std::move(ident));
        } else {
            WriteChar(std::move(ident), *value);
        }
    }

    /// Writes a comment at the put position, among arguments or results. The text may be any.
    void WriteComment(const std::string& text)
    {
        const LogStream::FlushHold hold(this->logFile);
        this->UpdateFilePointerPosition();
        Generator::WriteComment(CommentText(text));
    }

protected:
    explicit SharedWriters(const char* name) : Generator(name) {}
};

template <typename Generator>
class ValueWriters;

/// What a RunLog's callables write with.
template <>
class ValueWriters<Scrivel2XmlGenRun> : public SharedWriters<Scrivel2XmlGenRun>
{
public:
    // ---- Enumerations and bit sets ------------------------------------------------------------
    using Scrivel2XmlGenRun::WriteBptConditionOperator;
    using Scrivel2XmlGenRun::WriteBptConfigure;
    using Scrivel2XmlGenRun::WriteBptType;
    using Scrivel2XmlGenRun::WriteEndianness;
    using Scrivel2XmlGenRun::WriteExceptionAction;
    using Scrivel2XmlGenRun::WriteFactoryErrorCode;
    using Scrivel2XmlGenRun::WriteFactorySeverityCode;
    using Scrivel2XmlGenRun::WriteHandledBreakpoints;
    using Scrivel2XmlGenRun::WriteMemReadWrite;
    using Scrivel2XmlGenRun::WriteRegAccessAttribute;
    using Scrivel2XmlGenRun::WriteRegDisplay;
    using Scrivel2XmlGenRun::WriteRegSymbol;
    using Scrivel2XmlGenRun::WriteRegType;
    using Scrivel2XmlGenRun::WriteTriggerType;

    // ---- Targets, parameters, factory errors --------------------------------------------------
    using Scrivel2XmlGenRun::WriteFactoryErrorMessage;
    using Scrivel2XmlGenRun::WriteFactoryErrorMessagePtrVal;
    using Scrivel2XmlGenRun::WriteParameterInfoPtrVal;
    using Scrivel2XmlGenRun::WriteTargetFeatures;
    using Scrivel2XmlGenRun::WriteTargetInfoPtrVal;

    // ---- Registers ----------------------------------------------------------------------------
    using Scrivel2XmlGenRun::WriteReg;
    using Scrivel2XmlGenRun::WriteRegArray;
    using Scrivel2XmlGenRun::WriteRegDetail;
    using Scrivel2XmlGenRun::WriteRegFloatFormat;
    using Scrivel2XmlGenRun::WriteRegGroup;
    using Scrivel2XmlGenRun::WriteRegGroupArray;
    using Scrivel2XmlGenRun::WriteRegInfo;
    using Scrivel2XmlGenRun::WriteRegInfoArray;

    // ---- Memory -------------------------------------------------------------------------------
    using Scrivel2XmlGenRun::WriteAddr;
    using Scrivel2XmlGenRun::WriteAddrComplete;
    using Scrivel2XmlGenRun::WriteCacheInfo;
    using Scrivel2XmlGenRun::WriteMemBlockInfo;
    using Scrivel2XmlGenRun::WriteMemBlockInfoArray;
    using Scrivel2XmlGenRun::WriteMemSpaceInfo;
    using Scrivel2XmlGenRun::WriteMemSpaceInfoArray;
    using Scrivel2XmlGenRun::WriteOverlayIdArray;

    // ---- Breakpoints and exceptions -----------------------------------------------------------
    using Scrivel2XmlGenRun::WriteBptCondition;
    using Scrivel2XmlGenRun::WriteBptDescription;
    using Scrivel2XmlGenRun::WriteBptDescriptionArray;
    using Scrivel2XmlGenRun::WriteBptRequest;
    using Scrivel2XmlGenRun::WriteException;
    using Scrivel2XmlGenRun::WriteExceptionArray;

    // ---- Modes, reset levels, pipe stages -----------------------------------------------------
    using Scrivel2XmlGenRun::WriteExecMode;
    using Scrivel2XmlGenRun::WriteExecModeArray;
    using Scrivel2XmlGenRun::WriteExecModePtrVal;
    using Scrivel2XmlGenRun::WritePipeStage;
    using Scrivel2XmlGenRun::WritePipeStageArray;
    using Scrivel2XmlGenRun::WritePipeStageField;
    using Scrivel2XmlGenRun::WritePipeStageFieldArray;
    using Scrivel2XmlGenRun::WriteResetLevel;
    using Scrivel2XmlGenRun::WriteResetLevelArray;

protected:
    explicit ValueWriters(const char* name) : SharedWriters(name) {}
};

/// What a ConnectLog's callables write with.
template <>
class ValueWriters<Scrivel2XmlGenConnect> : public SharedWriters<Scrivel2XmlGenConnect>
{
public:
    using Scrivel2XmlGenConnect::WriteSimulationFactoryArray;
    using Scrivel2XmlGenConnect::WriteSimulationInfo;
    using Scrivel2XmlGenConnect::WriteSimulationInfoArray;
    using Scrivel2XmlGenConnect::WriteTargetInfoArray;

protected:
    explicit ValueWriters(const char* name) : SharedWriters(name) {}
};

/// The types of `xml` in a guard's callables, for functions that take one by its name.
using RunWriters = ValueWriters<Scrivel2XmlGenRun>;
using ConnectWriters = ValueWriters<Scrivel2XmlGenConnect>;

}  // namespace Scrivel2

#endif
