// Random operations on a generator: every writer, every frame operation in legal and illegal order, both
// modes, restarts, name tables, texts of random bytes. What they mean and whether the log is right is not
// known here: each operation is handed to `logs`, the judge.

#ifndef SCRIVEL_TESTS_REFERENCE_RANDOMOPERATIONS_H
#define SCRIVEL_TESTS_REFERENCE_RANDOMOPERATIONS_H

#include "ScrivelXmlGen.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <iomanip>
#include <iterator>
#include <map>
#include <memory>
#include <string>
#include <type_traits>
#include <vector>

namespace ScrivelTest
{

/// Where decisions come from: a random number generator, or the bytes of a fuzzer.
class RandomSource
{
public:
    virtual ~RandomSource() = default;

    virtual unsigned char Byte() = 0;

    /// A number from 0 to `limit` - 1; `limit` is at most 65536.
    unsigned int Below(unsigned int limit)
    {
        const unsigned int high = limit > 256 ? Byte() : 0U;
        return (high << 8 | Byte()) % limit;
    }

    bool OneIn(unsigned int chances) { return Below(chances) == 0; }
};

/// A judge has the type `Generator`, the library's generator in use, and
///
///     void Both(op)                        runs op(log) on the library's generator and on another
///     unsigned int Depth()                 the depth of elements, to keep off depths below 0
///     void SetClock(seconds, microseconds), SetProcess(id), SetHost(name), SetThread(id)
template <typename Judge>
class RandomOperations
{
public:
    RandomOperations(RandomSource& decisions, Judge& judge) : source(decisions), logs(judge) {}

    void Step()
    {
        if (source.OneIn(2)) {
            Run(frameSteps);
        } else if (source.OneIn(2)) {
            Run(scalarSteps);
        } else if constexpr (isRunPhase) {
            Run(runSteps);
        } else if constexpr (isConnectionPhase) {
            Run(connectSteps);
        } else {
            Run(scalarSteps);
        }
    }

private:
    using Self = RandomOperations;
    using Generator = typename Judge::Generator;
    using StepFunction = void (Self::*)();

    static constexpr bool isRunPhase = std::is_base_of_v<Scrivel2::ScrivelXmlGenRunBase, Generator>;
    static constexpr bool isConnectionPhase =
        std::is_base_of_v<Scrivel2::Scrivel2XmlGenConnect, Generator>;
    static constexpr bool isRunGenerator = std::is_base_of_v<Scrivel2::Scrivel2XmlGenRun, Generator>;

    template <std::size_t size>
    void Run(const StepFunction (&steps)[size])
    {
        (this->*steps[source.Below(size)])();
    }

    // ---- Values ---------------------------------------------------------------------------------

    std::string Text()
    {
        static constexpr unsigned int lengths[] = {1, 4, 12, 40, 300};
        std::size_t length = source.Below(lengths[source.Below(std::size(lengths))]);
        if (source.OneIn(60)) {
            length = 1000 + source.Below(9000);
        }
        std::string text;
        const bool anyByte = source.OneIn(3);
        while (text.size() < length) {
            static constexpr char usual[] = "abcXYZ 0189_-.:<>&'\"?\n\\";
            text += anyByte ? static_cast<char>(source.Byte()) : usual[source.Below(sizeof usual - 1)];
        }
        return text;
    }

    std::string Name()
    {
        static constexpr const char* usual[] = {"value", "a", "CADIRegRead", "2nd reg:x", "", "-x"};
        return source.OneIn(4) ? Text() : usual[source.Below(std::size(usual))];
    }

    std::string CallName()
    {
        static constexpr const char* usual[] = {"Run", "CADIMemRead", "Stop", "GetSimulationFactories"};
        return source.OneIn(10) ? Name() : usual[source.Below(std::size(usual))];
    }

    unsigned long Number()
    {
        unsigned long number = 0;
        for (unsigned int bytes = source.Below(9); bytes > 0; --bytes) {
            number = number << 8 | source.Byte();
        }
        return source.OneIn(8) ? ~number : number;
    }

    template <typename Integer>
    void Fill(Integer& field)
    {
        if constexpr (std::is_same_v<Integer, bool>) {
            field = source.OneIn(2);
        } else if constexpr (std::is_enum_v<Integer>) {
            field = Value<Integer>();
        } else {
            field = static_cast<Integer>(Number());
        }
    }

    template <std::size_t size>
    void Fill(char (&field)[size])
    {
        const std::string text = Text().substr(0, size - 1);
        std::memcpy(field, text.c_str(), text.size() + 1);
    }

    template <typename... Fields>
    void FillAll(Fields&... fields)
    {
        (Fill(fields), ...);
    }

    template <typename Enumeration>
    Enumeration Value()
    {
        static constexpr std::int32_t far[] = {-1, 0x8000, 0x7fffffff, -0x7fffffff - 1, 0x1234567};
        return static_cast<Enumeration>(source.OneIn(6) ? far[source.Below(std::size(far))]
                                                        : static_cast<std::int32_t>(source.Below(16)));
    }

    template <typename Item>
    std::vector<Item> Items()
    {
        std::vector<Item> items(source.OneIn(40) ? 200 : source.Below(5));
        for (Item& item : items) {
            item = Make<Item>();
        }
        items.reserve(1);  // an empty array is no null array
        return items;
    }

    /// `pointer`, or sometimes null.
    template <typename Item>
    Item* OrNull(Item* pointer)
    {
        return source.OneIn(6) ? nullptr : pointer;
    }

    template <typename Item>
    Item Make()
    {
        if constexpr (std::is_class_v<Item>) {
            auto item = std::make_unique<Item>();
            FillRecord(*item);
            return *item;
        } else {
            return static_cast<Item>(Number());
        }
    }

    // ---- Records --------------------------------------------------------------------------------

    void FillRecord(eslapi::CADIParameterInfo_t& r)
    {
        FillAll(r.id, r.name, r.dataType, r.description, r.isRunTime, r.minValue, r.maxValue,
                r.defaultValue, r.defaultString);
    }
    void FillRecord(eslapi::CADIParameterValue_t& r)
    {
        FillAll(r.parameterID, r.dataType, r.intValue, r.stringValue);
    }
    void FillRecord(eslapi::CADIFactoryErrorMessage_t& r)
    {
        FillAll(r.errorCode, r.erroneousParameterId, r.message, r.severity);
    }
    void FillRecord(eslapi::CADISimulationInfo_t& r) { FillAll(r.id, r.name, r.description); }
    void FillRecord(eslapi::CADITargetInfo_t& r)
    {
        FillAll(r.id, r.targetName, r.instanceName, r.version, r.description, r.componentType,
                r.numberOfParameters, r.executesSoftware, r.isHardwareModel, r.systemName, r.systemID,
                r.systemDescription, r.canRunInBackground);
    }
    void FillRecord(eslapi::CADITargetFeatures_t& r)
    {
        FillAll(r.targetName, r.targetVersion, r.nrBreakpointsAvailable, r.fOverlaySupportAvailable,
                r.fProfilingAvailable, r.nrResetLevels, r.nrExecModes, r.nrExceptions, r.nrMemSpaces,
                r.nrRegisterGroups, r.nrPipeStages, r.nPCRegNum, r.handledBreakpoints, r.nrOfHWThreads,
                r.nExtendedTargetFeaturesRegNumValid, r.nExtendedTargetFeaturesRegNum,
                r.canonicalRegisterDescription, r.canonicalMemoryDescription,
                r.canCompleteMultipleInstructionsPerCycle);
    }
    void FillRecord(eslapi::CADIExecMode_t& r)
    {
        r.number = source.Below(8);
        Fill(r.name);
    }
    void FillRecord(eslapi::CADIResetLevel_t& r) { FillAll(r.number, r.name); }
    void FillRecord(eslapi::CADIPipeStage_t& r) { FillAll(r.id, r.name, r.contentInfoRegisterId); }
    void FillRecord(eslapi::CADIPipeStageField_t& r) { FillAll(r.pipeStageId, r.registerId); }
    void FillRecord(eslapi::CADIRegGroup_t& r)
    {
        FillAll(r.groupID, r.description, r.numRegsInGroup, r.name);
    }
    void FillRecord(eslapi::CADIRegDetails_t& r) { FillAll(r.type, r.count); }
    void FillRecord(eslapi::CADIRegSymbols_t& r)
    {
        static constexpr const char* symbols[] = {"low", "high"};
        Fill(r.numSymbols);
        r.symbols = OrNull(symbols);
    }
    void FillRecord(eslapi::CADIRegInfo_t& r)
    {
        FillAll(r.name, r.description, r.regNumber, r.bitsWide, r.hasSideEffects);
        FillRecord(r.details);
        Fill(r.display);
        FillRecord(r.symbols);
        FillAll(r.fpFormat, r.lsbOffset, r.dwarfIndex, r.isProfiled, r.isPipeStageField, r.threadID,
                r.attribute, r.canonicalRegisterNumber);
    }
    void FillRecord(eslapi::CADIReg_t& r)
    {
        r.regNumber = source.Below(6);
        for (unsigned char& byte : r.bytes) {
            byte = source.Byte();
        }
        FillAll(r.offset128, r.isUndefined, r.attribute);
    }
    void FillRecord(eslapi::CADIMemSpaceInfo_t& r)
    {
        FillAll(r.name, r.description, r.memSpaceId, r.bitsPerMau, r.maxAddress, r.nrMemBlocks,
                r.isProgramMemory, r.minAddress, r.isVirtualMemory, r.isCache);
        r.endianness = Endianness();
        FillAll(r.invariance, r.dwarfMemSpaceId, r.canonicalMemoryNumber);
    }
    void FillRecord(eslapi::CADIMemBlockInfo_t& r)
    {
        FillAll(r.name, r.description, r.id, r.parentID, r.startAddr, r.endAddr, r.cyclesToAccess,
                r.readWrite);
        for (std::uint32_t& multiple : r.supportedMultiplesOfMAU) {
            multiple = source.Below(4);
        }
        r.endianness = Endianness();
        Fill(r.invariance);
    }
    void FillRecord(eslapi::CADICacheInfo_t& r)
    {
        FillAll(r.cacheLineSize, r.cacheTagBits, r.associativity, r.writeThrough);
    }
    void FillRecord(eslapi::CADIAddr_t& r)
    {
        r.spaceId = source.Below(6);
        Fill(r.addr);
    }
    void FillRecord(eslapi::CADIAddrComplete_t& r)
    {
        Fill(r.overlay);
        FillRecord(r.location);
    }
    void FillRecord(eslapi::CADIBptCondition_t& r)
    {
        FillAll(r.conditionOperator, r.comparisonValue, r.threadID, r.ignoreCount, r.bitwidth);
    }
    void FillRecord(eslapi::CADIBptRequest_t& r)
    {
        FillRecord(r.address);
        FillAll(r.sizeOfAddressRange, r.enabled, r.conditions, r.useFormalCondition);
        FillRecord(r.formalCondition);
        FillAll(r.type, r.regNumber, r.temporary, r.triggerType, r.continueExecution);
    }
    void FillRecord(eslapi::CADIBptDescription_t& r)
    {
        Fill(r.bptNumber);
        FillRecord(r.bptInfo);
    }
    void FillRecord(eslapi::CADIException_t& r)
    {
        FillAll(r.number, r.name);
        FillRecord(r.vector);
    }

    unsigned char Endianness()
    {
        return source.OneIn(3) ? source.Byte() : static_cast<unsigned char>(source.Below(4));
    }

    // ---- The frame ------------------------------------------------------------------------------

    void StartLogging()
    {
        if (started && !source.OneIn(12)) {
            return EnterCall();
        }
        started = true;
        logs.Both([](auto& log) { log.StartLogging(); });
    }

    void EndLogging()
    {
        if (source.OneIn(8)) {
            started = false;
            logs.Both([](auto& log) { log.EndLogging(); });
        }
    }

    void SetWriteSecure()
    {
        const bool secure = !source.OneIn(3);
        if (source.OneIn(6)) {
            logs.Both([=](auto& log) { log.SetWriteSecure(secure); });
        }
    }

    void EnterCall()
    {
        const std::string name = CallName();
        callName = name;
        if constexpr (isRunPhase) {
            logs.Both([&](auto& log) { return log.EnterCadiCall(name); });
        } else {
            logs.Both([&](auto& log) {
                log.WriteCloseInterruptedFunction(name);
                log.IncCallNo();
                log.WriteDetailedIdent(name);
            });
        }
    }

    void ContinueCall()
    {
        if (logs.Depth() > 0) {
            const unsigned int older = source.OneIn(2) ? source.Below(3) : 0U;
            const std::string name = source.OneIn(4) ? CallName() : callName;
            logs.Both([&](auto& log) { log.WriteContinueFunction(log.GetCallNo() - older, name); });
        }
    }

    void LeaveCall()
    {
        if (logs.Depth() > 0) {
            logs.Both([&](auto& log) {
                log.WriteIdent(callName, false, true);
                log.FlushOutput(true, "");
            });
        }
    }

    void FlushFinally()
    {
        logs.Both([](auto& log) { log.FlushOutput(true, ""); });
    }

    void FlushNonFinally()
    {
        const std::string name = source.OneIn(4) ? Name() : callName;
        logs.Both([&](auto& log) { log.FlushOutput(false, name); });
    }

    void Comment()
    {
        logs.Both([text = Text()](auto& log) { log.WriteComment(text); });
    }

    void CloseInterrupted()
    {
        logs.Both([name = CallName()](auto& log) { log.WriteCloseInterruptedFunction(name); });
    }

    void CallElement()
    {
        logs.Both([name = CallName()](auto& log) { log.WriteDetailedIdent(name); });
    }

    void CallElementWithAddress()
    {
        if constexpr (isRunPhase) {
            logs.Both([name = CallName(), address = Number()](auto& log) {
                log.WriteDetailedIdent(name, address);
            });
        } else {
            CallElement();
        }
    }

    void RaiseCallNumber()
    {
        logs.Both([](auto& log) {
            log.IncCallNo();
            return log.GetCallNo();
        });
    }

    void OpenElement()
    {
        if (logs.Depth() < 40) {
            logs.Both([name = Name(), newline = source.OneIn(2)](auto& log) {
                log.WriteIdent(name, true, newline);
            });
        }
    }

    void CloseElement()
    {
        if (logs.Depth() > 0) {
            logs.Both([name = Name(), newline = source.OneIn(2), tabs = source.OneIn(2)](auto& log) {
                if (tabs) {
                    log.WriteIdent(name, false, newline);
                } else {
                    log.WriteIdentWithoutTabs(name);
                }
            });
        }
    }

    void Tabs()
    {
        logs.Both([open = source.OneIn(2)](auto& log) { log.WriteTabs(open); });
    }

    void Timestamp()
    {
        logs.Both(
            [name = Name(), element = source.OneIn(2)](auto& log) { log.WriteTimestamp(name, element); });
    }

    void UpdatePosition()
    {
        logs.Both([](auto& log) { log.UpdateFilePointerPosition(); });
    }

    void SeekPosition()
    {
        logs.Both([](auto& log) { log.SeekFilePointerPosition(); });
    }

    void TextOfTheLayer()
    {
        logs.Both([text = Text(), number = Number()](auto& log) {
            log.logFile << text;
            if (log.logFile.good()) {  // a failed stream would keep the width for later
                log.logFile << std::setw(9) << number;
            }
        });
    }

    void WidthOfTheLayer()
    {
        // For whatever comes next.
        logs.Both([width = source.Below(20)](auto& log) {
            log.logFile.width(static_cast<std::streamsize>(width));
        });
    }

    void FlushOfTheLayer()
    {
        logs.Both([](auto& log) { log.logFile.flush(); });
    }

    void SeekOfTheLayer()
    {
        const unsigned int part = source.Below(16);
        const std::streamoff more = source.OneIn(6) ? source.Below(6000) : 0;
        logs.Both([=](auto& log) {
            const std::streamoff end = log.GetCurrentFilePointerPosition();
            log.logFile.seekp(end * part / 15 + more);
        });
    }

    void ClearFailureOfTheLayer()
    {
        if (source.OneIn(10)) {
            logs.Both([](auto& log) { log.logFile.clear(); });
        }
    }

    void PassTime()
    {
        seconds += static_cast<long>(source.Below(3));
        microseconds = static_cast<long>(source.Below(1000) * 1000 + source.Below(1000));
        if (source.OneIn(20)) {
            seconds -= 7;
        }
        logs.SetClock(seconds, microseconds);
    }

    void ChangeProcess()
    {
        if (source.OneIn(8)) {
            logs.SetProcess(static_cast<int>(source.OneIn(2) ? 4242U : source.Below(30000)));
        }
        if (source.OneIn(4)) {
            logs.SetThread(Number());
        }
        if (source.OneIn(4)) {
            logs.SetHost(source.OneIn(3) ? "" : std::string(source.Below(65), 'h'));
        }
    }

    void NameTables()
    {
        if constexpr (isRunPhase) {
            auto& table = source.OneIn(2) ? memSpaceNames : registerNames;
            table[source.Below(6)] = source.OneIn(4) ? "" : Name();
            logs.Both(
                [memSpaces = OrNull(&memSpaceNames), registers = OrNull(&registerNames)](auto& log) {
                    log.SetMemSpaceNames(memSpaces);
                    log.SetRegisterNames(registers);
                });
        }
    }

    void PendingElement()
    {
        if constexpr (isRunPhase) {
            logs.Both([name = source.OneIn(3) ? "" : Name(), text = source.OneIn(3) ? "" : Text()](
                          auto& log) { log.SetPendingElement(name, text); });
        }
    }

    // ---- Scalars, pointed-to values, arrays -----------------------------------------------------

    void NullPointer()
    {
        logs.Both([name = Name()](auto& log) { log.WriteNULLPointer(name); });
    }
    void Address()
    {
        logs.Both([name = Name(), address = Number()](auto& log) { log.WriteAddress(name, address); });
    }
    void Char()
    {
        logs.Both([name = Name(), byte = static_cast<char>(source.Byte())](auto& log) mutable {
            log.WriteChar(name, byte);
            log.WriteCharPtrVal(name, &byte);
            return log.CheckChar(byte);
        });
    }
    void Decimal()
    {
        logs.Both([name = Name(), value = Number()](auto& log) { log.WriteDecimal(name, value); });
    }
    void String()
    {
        logs.Both([name = Name(), text = Text()](auto& log) {
            log.WriteString(name, text);
            return log.CheckString(text);
        });
    }
    void Bool()
    {
        logs.Both([name = Name(), value = source.OneIn(2)](auto& log) { log.WriteBool(name, value); });
    }
    void Bytes()
    {
        const auto reg = Make<eslapi::CADIReg_t>();
        logs.Both([&, name = Name()](auto& log) { log.WriteByte(name, reg.bytes); });
    }
    void Hex()
    {
        logs.Both([name = Name(), value = Number(), digits = source.Below(24)](auto& log) {
            log.WriteHex(name, value, digits);
        });
    }
    void Bin()
    {
        logs.Both([name = Name(), value = Number(), bits = static_cast<int>(source.Below(70)) - 3](
                      auto& log) { log.WriteBin(name, value, bits); });
    }
    void CharString()
    {
        const std::string text = Text();
        const char* const pointer = OrNull(text.c_str());
        logs.Both([=, name = Name()](auto& log) { log.WriteCharString(name, pointer); });
    }
    void PointerValues()
    {
        char character = static_cast<char>(source.Byte());
        auto word = static_cast<unsigned int>(Number());
        unsigned long longWord = Number();
        std::string text = Text();
        bool flag = source.OneIn(2);
        const unsigned int digits = source.Below(20);
        logs.Both([&, name = Name(), c = OrNull(&character), w = OrNull(&word), l = OrNull(&longWord),
                   t = OrNull(&text), f = OrNull(&flag)](auto& log) {
            log.WriteCharPtrVal(name, c);
            log.WriteDecimalPtrVal(name, w);
            log.WriteDecimalPtrVal(name, l);
            log.WriteDecimalPtrVal(name, nullptr);
            log.WriteStringPtrVal(name, t);
            log.WriteBoolPtrVal(name, f);
            log.WriteHexPtrVal(name, l, digits);
            log.WriteBinPtrVal(name, l, 5);
        });
    }
    void BoolArray()
    {
        const bool items[] = {source.OneIn(2), source.OneIn(2), source.OneIn(2)};
        logs.Both([name = Name(), array = OrNull(items), count = source.Below(4)](auto& log) {
            log.WriteBoolArray(name, array, count);
        });
    }
    void CharArray()
    {
        const std::string text = Text();
        const char* const array = OrNull(text.data());
        logs.Both([&, name = Name()](auto& log) {
            log.WriteCharArray(name, array, static_cast<unsigned int>(text.size()));
        });
    }
    void StringArray()
    {
        if (logs.Depth() > 40) {
            return;
        }
        std::string first = Text();
        std::string second = Text();
        char* items[] = {first.data(), source.OneIn(10) ? nullptr : second.data()};
        logs.Both([name = Name(), array = OrNull(items), count = source.Below(3)](auto& log) {
            log.WriteStringArray(name, array, count);
        });
    }
    void LinesByteArray()
    {
        constexpr unsigned int mostLines = 4;
        constexpr unsigned int mostPerLine = 19;
        unsigned char data[mostLines + mostPerLine + 15];
        for (unsigned char& byte : data) {
            byte = source.Byte();
        }
        logs.Both([name = Name(), array = OrNull(&data[0]), lines = source.Below(mostLines + 1),
                   perLine = source.Below(mostPerLine + 1)](auto& log) {
            log.WriteLinesByteArray(name, array, lines, perLine);
        });
    }
    template <typename Integer, typename Write>
    void IntegerArray(Write write)
    {
        const auto items = Items<Integer>();
        logs.Both([&, name = Name(), array = OrNull(items.data()), hex = source.OneIn(2)](auto& log) {
            write(log, name, array, static_cast<unsigned int>(items.size()), hex);
        });
    }
    void Uint8Array()
    {
        IntegerArray<unsigned char>([](auto& log, const std::string& name, auto* items,
                                       unsigned int count,
                                       bool hex) { log.WriteUint8Array(name, items, count, hex); });
    }
    void Uint32Array()
    {
        IntegerArray<unsigned int>([](auto& log, const std::string& name, auto* items, unsigned int count,
                                      bool hex) { log.WriteUint32Array(name, items, count, hex); });
    }
    void Uint64Array()
    {
        IntegerArray<unsigned long>([](auto& log, const std::string& name, auto* items,
                                       unsigned int count,
                                       bool hex) { log.WriteUint64Array(name, items, count, hex); });
    }

    // ---- CADI types -----------------------------------------------------------------------------

    /// One value, passed as the writer takes it.
    template <typename Item, typename Write>
    void One(Write write)
    {
        auto item = std::make_unique<Item>(Make<Item>());
        logs.Both([&, name = Name()](auto& log) { write(log, name, *item); });
    }

    /// A pointer to one value, or null.
    template <typename Item, typename Write>
    void Pointer(Write write)
    {
        auto item = std::make_unique<Item>(Make<Item>());
        logs.Both(
            [&, name = Name(), pointer = OrNull(item.get())](auto& log) { write(log, name, pointer); });
    }

    /// An array and its count, or null and a count.
    template <typename Item, typename Write>
    void Array(Write write)
    {
        auto items = Items<Item>();
        logs.Both([&, name = Name(), array = OrNull(items.data())](auto& log) {
            write(log, name, array, static_cast<unsigned int>(items.size()));
        });
    }

    /// The same with the count by pointer, which may be null too.
    template <typename Item, typename Write>
    void CountedArray(Write write)
    {
        auto items = Items<Item>();
        auto count = static_cast<unsigned int>(items.size());
        logs.Both([&, name = Name(), array = OrNull(items.data()), counter = OrNull(&count)](auto& log) {
            write(log, name, array, counter);
        });
    }

    void StatusOrDataType()
    {
        logs.Both([name = Name(), status = Value<eslapi::CADIReturn_t>(),
                   type = Value<eslapi::CADIValueDataType_t>()](auto& log) {
            log.WriteReturnType(name, status);
            log.WriteValueDataType(name, type);
        });
    }
    void ParameterInfo()
    {
        One<eslapi::CADIParameterInfo_t>(
            [](auto& log, auto& name, auto& value) { log.WriteParameterInfo(name, value); });
    }
    void ParameterValue()
    {
        One<eslapi::CADIParameterValue_t>(
            [](auto& log, auto& name, auto& value) { log.WriteParameterValue(name, value); });
    }
    void TargetInfo()
    {
        if constexpr (isConnectionPhase || isRunGenerator) {
            One<eslapi::CADITargetInfo_t>(
                [](auto& log, auto& name, auto& value) { log.WriteTargetInfo(name, value); });
        }
    }

    void Enumerations()
    {
        logs.Both([name = Name(), value = Value<eslapi::CADIReturn_t>()](auto& log) {
            log.WriteFactoryErrorCode(name, static_cast<eslapi::CADIFactoryErrorCode_t>(value));
            log.WriteFactorySeverityCode(name, static_cast<eslapi::CADIFactorySeverityCode_t>(value));
            log.WriteBptType(name, static_cast<eslapi::CADIBptType_t>(value));
            log.WriteBptConditionOperator(name, static_cast<eslapi::CADIBptConditionOperator_t>(value));
            log.WriteBptConfigure(name, static_cast<eslapi::CADIBptConfigure_t>(value));
            log.WriteExceptionAction(name, static_cast<eslapi::CADIExceptionAction_t>(value));
            log.WriteRegAccessAttribute(name, static_cast<eslapi::CADIRegAccessAttribute_t>(value));
            log.WriteRegType(name, static_cast<eslapi::CADIRegType_t>(value));
            log.WriteRegDisplay(name, static_cast<eslapi::CADIRegDisplay_t>(value));
            log.WriteMemReadWrite(name, static_cast<eslapi::CADIMemReadWrite_t>(value));
            log.WriteDecimal(name, 255);
        });
    }
    void PlainModes()
    {
        unsigned int mode = source.OneIn(4) ? static_cast<unsigned int>(Number()) : source.Below(8);
        logs.Both([&, name = Name(), pointer = OrNull(&mode)](auto& log) {
            log.WriteExecMode(name, mode);
            log.WriteExecModePtrVal(name, pointer);
            log.WriteExecModePtrVal(name, nullptr);
        });
    }
    void BitSets()
    {
        const unsigned int bits =
            source.OneIn(2) ? source.Below(256) : static_cast<unsigned int>(Number());
        logs.Both([&, name = Name()](auto& log) {
            log.WriteTriggerType(name, bits);
            log.WriteHandledBreakpoints(name, bits);
        });
    }
    void ByteOrder()
    {
        logs.Both([name = Name(), endianness = Endianness()](auto& log) {
            log.WriteEndianness(name, endianness);
        });
    }
    void Registers()
    {
        One<eslapi::CADIRegSymbols_t>(
            [](auto& log, auto& name, auto& value) { log.WriteRegSymbol(name, value); });
        One<eslapi::CADIRegDetails_t>(
            [](auto& log, auto& name, auto& value) { log.WriteRegDetail(name, value); });
        One<eslapi::CADIRegGroup_t>([](auto& log, auto&, auto& value) { log.WriteRegGroup(value); });
        One<eslapi::CADIRegInfo_t>([](auto& log, auto&, auto& value) { log.WriteRegInfo(value); });
        One<eslapi::CADIReg_t>([](auto& log, auto& name, auto& value) { log.WriteReg(name, value); });
    }
    void RegisterArrays()
    {
        Array<eslapi::CADIRegGroup_t>([](auto& log, auto& name, auto* items, unsigned int count) {
            log.WriteRegGroupArray(name, items, count);
        });
        Array<eslapi::CADIRegInfo_t>([](auto& log, auto& name, auto* items, unsigned int count) {
            log.WriteRegInfoArray(name, items, count);
        });
        Array<eslapi::CADIReg_t>([](auto& log, auto& name, auto* items, unsigned int count) {
            log.WriteRegArray(name, items, count);
        });
    }
    void Memory()
    {
        One<eslapi::CADIMemSpaceInfo_t>(
            [](auto& log, auto&, auto& value) { log.WriteMemSpaceInfo(value); });
        One<eslapi::CADIMemBlockInfo_t>(
            [](auto& log, auto&, auto& value) { log.WriteMemBlockInfo(value); });
        Pointer<eslapi::CADICacheInfo_t>(
            [](auto& log, auto& name, auto* value) { log.WriteCacheInfo(name, value); });
    }
    void Addresses()
    {
        One<eslapi::CADIAddr_t>([](auto& log, auto& name, auto& value) { log.WriteAddr(name, value); });
        One<eslapi::CADIAddrComplete_t>(
            [](auto& log, auto& name, auto& value) { log.WriteAddrComplete(name, value); });
    }
    void MemoryArrays()
    {
        Array<eslapi::CADIMemSpaceInfo_t>([](auto& log, auto& name, auto* items, unsigned int count) {
            log.WriteMemSpaceInfoArray(name, items, count);
        });
        Array<eslapi::CADIMemBlockInfo_t>([](auto& log, auto& name, auto* items, unsigned int count) {
            log.WriteMemBlockInfoArray(name, items, count);
        });
        Array<unsigned int>([](auto& log, auto& name, auto* items, unsigned int count) {
            log.WriteOverlayIdArray(name, items, count);
        });
    }
    void Breakpoints()
    {
        One<eslapi::CADIBptCondition_t>(
            [](auto& log, auto& name, auto& value) { log.WriteBptCondition(name, value); });
        Pointer<eslapi::CADIBptRequest_t>(
            [](auto& log, auto& name, auto* value) { log.WriteBptRequest(name, value); });
        One<eslapi::CADIBptDescription_t>(
            [](auto& log, auto& name, auto& value) { log.WriteBptDescription(name, value); });
        Array<eslapi::CADIBptDescription_t>([](auto& log, auto& name, auto* items, unsigned int count) {
            log.WriteBptDescriptionArray(name, items, count);
        });
    }
    void Exceptions()
    {
        One<eslapi::CADIException_t>(
            [](auto& log, auto& name, auto& value) { log.WriteException(name, value); });
        Array<eslapi::CADIException_t>([](auto& log, auto& name, auto* items, unsigned int count) {
            log.WriteExceptionArray(name, items, count);
        });
    }
    void Modes()
    {
        One<eslapi::CADIExecMode_t>(
            [](auto& log, auto& name, auto& value) { log.WriteExecMode(name, value); });
        Pointer<eslapi::CADIExecMode_t>(
            [](auto& log, auto& name, auto* value) { log.WriteExecModePtrVal(name, value); });
        One<eslapi::CADIResetLevel_t>(
            [](auto& log, auto& name, auto& value) { log.WriteResetLevel(name, value); });
        One<eslapi::CADIPipeStage_t>(
            [](auto& log, auto& name, auto& value) { log.WritePipeStage(name, value); });
        One<eslapi::CADIPipeStageField_t>(
            [](auto& log, auto& name, auto& value) { log.WritePipeStageField(name, value); });
    }
    void ModeArrays()
    {
        Array<eslapi::CADIExecMode_t>([](auto& log, auto& name, auto* items, unsigned int count) {
            log.WriteExecModeArray(name, items, count);
        });
        Array<eslapi::CADIResetLevel_t>([](auto& log, auto& name, auto* items, unsigned int count) {
            log.WriteResetLevelArray(name, items, count);
        });
        Array<eslapi::CADIPipeStage_t>([](auto& log, auto& name, auto* items, unsigned int count) {
            log.WritePipeStageArray(name, items, count);
        });
        Array<eslapi::CADIPipeStageField_t>([](auto& log, auto& name, auto* items, unsigned int count) {
            log.WritePipeStageFieldArray(name, items, count);
        });
    }
    void Features()
    {
        Pointer<eslapi::CADITargetFeatures_t>(
            [](auto& log, auto& name, auto* value) { log.WriteTargetFeatures(name, value); });
    }
    void PointedToParameters()
    {
        Pointer<eslapi::CADIParameterInfo_t>(
            [](auto& log, auto& name, auto* value) { log.WriteParameterInfoPtrVal(name, value); });
        Pointer<eslapi::CADIFactoryErrorMessage_t>(
            [](auto& log, auto& name, auto* value) { log.WriteFactoryErrorMessagePtrVal(name, value); });
        One<eslapi::CADIFactoryErrorMessage_t>(
            [](auto& log, auto& name, auto& value) { log.WriteFactoryErrorMessage(name, value); });
    }
    void ParameterArrays()
    {
        Array<eslapi::CADIParameterInfo_t>([](auto& log, auto& name, auto* items, unsigned int count) {
            log.WriteParameterInfoArray(name, items, count);
        });
        Array<eslapi::CADIParameterValue_t>([](auto& log, auto& name, auto* items, unsigned int count) {
            log.WriteParameterValueArray(name, items, count);
        });
    }
    void RunGeneratorAlone()
    {
        if constexpr (isRunGenerator) {
            Pointer<eslapi::CADITargetInfo_t>(
                [](auto& log, auto& name, auto* value) { log.WriteTargetInfoPtrVal(name, value); });
            logs.Both([name = Name()](auto& log) { log.WriteRegFloatFormat(name, {}); });
        }
    }

    // ---- The connection phase alone -------------------------------------------------------------

    void Factories()
    {
        eslapi::CADISimulationFactory* factories[3] = {};
        for (auto*& factory : factories) {
            factory = reinterpret_cast<eslapi::CADISimulationFactory*>(Number());
        }
        unsigned int count = source.Below(4);
        logs.Both([name = Name(), array = OrNull(&factories[0]), counter = OrNull(&count)](auto& log) {
            log.WriteSimulationFactoryArray(name, array, counter);
        });
    }
    void Simulations()
    {
        One<eslapi::CADISimulationInfo_t>(
            [](auto& log, auto& name, auto& value) { log.WriteSimulationInfo(name, value); });
        CountedArray<eslapi::CADISimulationInfo_t>([](auto& log, auto& name, auto* items, auto* count) {
            log.WriteSimulationInfoArray(name, items, count);
        });
    }
    void TerminatedParameterValues()
    {
        auto values = Items<eslapi::CADIParameterValue_t>();
        values.push_back(Make<eslapi::CADIParameterValue_t>());
        values.back().parameterID = 0xffffffff;
        logs.Both([name = Name(), array = OrNull(values.data())](auto& log) {
            log.WriteParameterValueArray(name, array);
        });
    }
    void CountedParameterInfos()
    {
        CountedArray<eslapi::CADIParameterInfo_t>([](auto& log, auto& name, auto* items, auto* count) {
            log.WriteParameterInfoArray(name, items, count);
        });
    }
    void TargetInfos()
    {
        CountedArray<eslapi::CADITargetInfo_t>([](auto& log, auto& name, auto* items, auto* count) {
            log.WriteTargetInfoArray(name, items, count);
        });
    }

    // ---- Tables of steps ------------------------------------------------------------------------
    // A step that stands twice is taken twice as often.

    static constexpr StepFunction frameSteps[] = {
        &Self::StartLogging,     &Self::EnterCall,
        &Self::EnterCall,        &Self::FlushNonFinally,
        &Self::FlushNonFinally,  &Self::ContinueCall,
        &Self::ContinueCall,     &Self::LeaveCall,
        &Self::LeaveCall,        &Self::FlushFinally,
        &Self::FlushFinally,     &Self::EndLogging,
        &Self::SetWriteSecure,   &Self::Comment,
        &Self::CloseInterrupted, &Self::CallElement,
        &Self::RaiseCallNumber,  &Self::CallElementWithAddress,
        &Self::OpenElement,      &Self::CloseElement,
        &Self::CloseElement,     &Self::Tabs,
        &Self::Timestamp,        &Self::UpdatePosition,
        &Self::SeekPosition,     &Self::TextOfTheLayer,
        &Self::WidthOfTheLayer,  &Self::WidthOfTheLayer,
        &Self::FlushOfTheLayer,  &Self::SeekOfTheLayer,
        &Self::PassTime,         &Self::PassTime,
        &Self::ChangeProcess,    &Self::NameTables,
        &Self::PendingElement,   &Self::ClearFailureOfTheLayer,
    };

    static constexpr StepFunction scalarSteps[] = {
        &Self::NullPointer, &Self::Address,     &Self::Char,           &Self::Decimal,
        &Self::String,      &Self::Bool,        &Self::Bytes,          &Self::Hex,
        &Self::Bin,         &Self::CharString,  &Self::PointerValues,  &Self::BoolArray,
        &Self::CharArray,   &Self::StringArray, &Self::LinesByteArray, &Self::Uint8Array,
        &Self::Uint32Array, &Self::Uint64Array,
    };

    static constexpr StepFunction runSteps[] = {
        &Self::StatusOrDataType,
        &Self::ParameterInfo,
        &Self::ParameterValue,
        &Self::TargetInfo,
        &Self::Enumerations,
        &Self::PlainModes,
        &Self::BitSets,
        &Self::ByteOrder,
        &Self::Registers,
        &Self::RegisterArrays,
        &Self::Memory,
        &Self::Addresses,
        &Self::MemoryArrays,
        &Self::Breakpoints,
        &Self::Exceptions,
        &Self::Modes,
        &Self::ModeArrays,
        &Self::Features,
        &Self::ParameterArrays,
        &Self::PointedToParameters,
        &Self::RunGeneratorAlone,
    };

    static constexpr StepFunction connectSteps[] = {
        &Self::StatusOrDataType,
        &Self::ParameterInfo,
        &Self::ParameterValue,
        &Self::TargetInfo,
        &Self::Factories,
        &Self::Simulations,
        &Self::TerminatedParameterValues,
        &Self::CountedParameterInfos,
        &Self::TargetInfos,
    };

    RandomSource& source;
    Judge& logs;
    std::map<unsigned int, std::string> memSpaceNames;
    std::map<unsigned int, std::string> registerNames;
    std::string callName = "Run";
    bool started = false;
    long seconds = 1000;
    long microseconds = 0;
};

}  // namespace ScrivelTest

#endif
