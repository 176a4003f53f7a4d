// XML generators for a logger of CADI calls.
//
// A logging layer between a debugger and a simulation makes one generator per log and calls it around
// each CADI call. The generator writes one XML file: a header, one element per call with every
// argument and result as a typed child, an end tag.
//
//     auto* log = new Scrivel2::Scrivel2XmlGenRun("trace");
//     log->StartLogging();                                    // trace-4242.xml
//
//     const unsigned int call = log->EnterCadiCall("CADIRegRead");
//     log->WriteDecimal("regCount", count);                   // the arguments
//     log->FlushOutput(false, "CADIRegRead");                 // before the target runs
//     const auto status = target.CADIRegRead(count, regs);
//     log->WriteContinueFunction(call, "CADIRegRead");
//     log->WriteRegArray("reg", regs, count);                 // the results
//     log->WriteReturnType("return", status);
//     log->WriteIdent("CADIRegRead", false, true);
//     log->FlushOutput(true, "");
//
//     log->EndLogging();
//     delete log;
//
// which writes, between the header and the end tag,
//
//     <CADIRegRead call_num="1"
//      call_time="0.000071 s"
//      threadId="1234">
//         <regCount>1</regCount>
//         <return_time>0.000093 s</return_time>
//         <reg>
//             <reg>
//                 <regNumber>15</regNumber>
//                 <bytes>00000000 00000000 00000000 00008000 </bytes>
//                 <offset128>0</offset128>
//                 <isUndefined>false</isUndefined>
//                 <attribute>CADI_REG_READ_WRITE</attribute>
//             </reg>
//         </reg>
//         <return>CADI_STATUS_OK</return>
//     </CADIRegRead>
//
// In write-secure mode, the default, every flush leaves a file that already ends with the text that
// closes it: a provisional end tag of the open call after FlushOutput(false, name), the root end tag
// after FlushOutput(true, ""). The next output overwrites that text. docs/log-format.md draws the file
// at every moment, docs/crash-safety.md tells what a crash leaves.
//
// Failures: no operation throws on its own account or returns an error. A log file that can't be
// opened is reported on standard error, once; a value outside its enumeration becomes a message inside
// its element; when writing fails, the file keeps what the last good flush left and later output is
// lost.
//
// Threads: none are started and no lock is taken. Any thread may call, one at a time: the logging layer
// serialises all operations on one generator.

#ifndef SCRIVEL_SCRIVELXMLGEN_H
#define SCRIVEL_SCRIVELXMLGEN_H

#include <cstddef>
#include <cstdint>
#include <ios>
#include <map>
#include <string>
#include <string_view>
#include <type_traits>
#include <typeinfo>
#include <vector>

#include <sys/time.h>

#include "scrivel/CADILayout.h"  // and with it CADITypes.h
#include "scrivel/LogStream.h"

namespace Scrivel2
{

// What a shared library shows, also when it is built to hide what isn't marked.
class [[gnu::visibility("default")]] ScrivelXmlGenBase;
class [[gnu::visibility("default")]] ScrivelXmlGenRunBase;
class [[gnu::visibility("default")]] Scrivel2XmlGenConnect;
class [[gnu::visibility("default")]] Scrivel2XmlGenRun;

/// What all generators share: the log file, the frame of calls, and the writers of scalars, pointed-to
/// values and arrays.
///
/// Created with new and deleted by the logging layer, which owns it. Its life: constructed,
/// SetWriteSecure at will, StartLogging, any number of calls, EndLogging, destroyed. The generator owns
/// its file; it keeps no pointer that it is given as an argument.
///
/// Every element name goes through the same cleaning: letters (of ASCII), "_", "-", ".", and digits
/// that don't come first stay, any other character becomes "_"; an empty name becomes "emptyIdent".
class ScrivelXmlGenBase
{
public:
    /// `logName` names the file and the root element, "trace" giving trace-<process id>.xml; it may
    /// carry a directory part, but then the root element's name is not legal XML. `cadiVersion` is
    /// the text of the header's CADI_version. Both are copied. No file is touched yet.
    ScrivelXmlGenBase(const char* logName, const char* cadiVersion);

    ScrivelXmlGenBase(const ScrivelXmlGenBase&) = delete;
    ScrivelXmlGenBase& operator=(const ScrivelXmlGenBase&) = delete;

    // ---- Frame operations ---------------------------------------------------------------------
    // All of them are virtual and called through the table, from inside the classes too, so a derived
    // generator may replace any. The order is that of the table: new ones go at the end.

    /// Closes a file that is still open, and writes nothing: the file stays as the last flush left it.
    virtual ~ScrivelXmlGenBase();

    /// Turns write-secure mode on or off; meant to be called before StartLogging. Without it flushes
    /// write no closing text and EndLogging writes no end tag.
    virtual void SetWriteSecure(bool secure);

    /// Opens logName-<process id>.xml, emptying a file of that name, writes the header and flushes.
    /// Call numbers begin anew. When the file can't be opened, says so on standard error, and all that
    /// follows is lost. While a log is open this fails the same way.
    ///
    ///     <?xml version="1.0" encoding="UTF-8"?>
    ///     <trace-4242
    ///      time="2026-11-21 14:03:59"
    ///      CADI_version="CADI 2.0"
    ///      hostname="lab7"
    ///      OS="Linux">
    ///
    /// A host name that can't be read is written as the time, followed by "*".
    virtual void StartLogging();

    /// Writes the root end tag (secure mode) in place of the closing text, and closes the file.
    virtual void EndLogging();

    /// Writes the closing text, remembers where it begins, and flushes. In secure mode that text is
    /// the root end tag when `finalTag` is true, to be used between calls, and otherwise the
    /// provisional end tag of the open call `callName`, to be used after the arguments and before the
    /// target runs.
    ///
    ///     FlushOutput(true, "")               ->  </trace-4242>
    ///     FlushOutput(false, "CADIRegRead")   ->      </CADIRegRead>
    ///
    /// The name of the call is written as given: call names are plain identifiers.
    virtual void FlushOutput(bool finalTag, std::string callName);

    /// Closes the element of a call that is still open, marks it as interrupted, and remembers
    /// `callName` as the call now entered. Every call begins with this: EnterCadiCall does it itself,
    /// a connection-phase call does it before IncCallNo and WriteDetailedIdent.
    ///
    ///     <!-- Call 7 ("CADIExecContinue") interrupted -->
    virtual void WriteCloseInterruptedFunction(std::string callName);

    /// Goes on with call number `callNo` when it has returned, before its results are written: writes
    /// its return time, and first, when other calls were entered since, reopens its element. In secure
    /// mode there must have been a FlushOutput since the call was entered: what was written after the
    /// last one is overwritten.
    ///
    ///     <!-- Continuing call 7 ("CADIExecContinue") -->
    ///
    ///         <CADIExecContinue call_num="7">
    ///             <return_time>0.300120 s</return_time>
    virtual void WriteContinueFunction(unsigned int callNo, std::string callName);

    /// Writes the time since StartLogging, in seconds with six decimals, as a child element or as an
    /// attribute of a tag that the caller is writing, each after its indentation. The name is written as
    /// given.
    ///
    ///     WriteTimestamp("return_time", true)   ->  <return_time>3.004500 s</return_time>
    ///     WriteTimestamp("call_time", false)    ->   call_time="3.004500 s"
    virtual void WriteTimestamp(const std::string& name, bool asElement);

    /// Writes a start or end tag, indented by four blanks a level, and a newline if `newline` is true;
    /// a start tag raises the depth, an end tag lowers it.
    ///
    ///     WriteIdent("2nd reg:x", true, true)   ->  <_nd_reg_x>
    virtual void WriteIdent(std::string name, bool openTag, bool newline);

    /// Opens a call's element with the current call number and the time.
    ///
    ///     <Connect call_num="3" call_time="0.010020 s">
    virtual void WriteDetailedIdent(std::string name);

    /// Writes an end tag after a value that stands on the start tag's line, and a newline.
    virtual void WriteIdentWithoutTabs(std::string name);

    /// Writes the indentation of a start tag or of an end tag: four blanks a level, no tabs.
    virtual void WriteTabs(bool openTag);

    /// Writes the element that stands for a null pointer.
    ///
    ///     WriteNULLPointer("count")   ->  <count>NULL</count>
    virtual void WriteNULLPointer(std::string ident);

    /// Writes an address of the logging process, at least 16 hexadecimal digits; 0 is "NULL".
    ///
    ///     WriteAddress("factory", 0x1000)   ->  <factory>0x0000000000001000</factory>
    ///     WriteAddress("factory", 0)        ->  <factory>NULL</factory>
    virtual void WriteAddress(std::string ident, std::uint64_t address);

    /// Raises the call number: the first call is number 1.
    virtual void IncCallNo();

    /// The number of the call entered last, 0 before the first.
    virtual unsigned int GetCallNo();

    // ---- Life of a log (base/LogLife.cpp) -----------------------------------------------------

    /// The text that ends the file: "</trace-4242>\n". The process id is read at each call.
    std::string GetFileEndTag();

    /// The place in the file, in bytes from its beginning, where the next frame operation overwrites
    /// the closing text. A logging layer saves and restores it around text that it writes to the stream
    /// itself. Outside secure mode the first two do nothing.
    void UpdateFilePointerPosition();                ///< that place is now the put position
    void SeekFilePointerPosition();                  ///< the put position is now that place
    std::streamoff GetLastFilePointerPosition();     ///< that place
    std::streamoff GetCurrentFilePointerPosition();  ///< the put position, -1 when failed or closed

    /// Writes a comment in place of the closing text and flushes. The text is not escaped and must not
    /// hold "--". Follow it with FlushOutput(true, ""): the next call would overwrite it otherwise.
    ///
    ///     <!-- loaded crc.elf -->
    void WriteComment(std::string text);

    // ---- Scalars (base/Scalars.cpp) -----------------------------------------------------------
    // Each writes one element of one line: indentation, <ident>, the value, </ident>.

    void WriteChar(std::string ident, char value);  ///< the character itself, not escaped
    void WriteDecimal(std::string ident, std::uint64_t value);
    void WriteString(std::string ident, std::string value);  ///< escaped as CheckString does
    void WriteBool(std::string ident, bool value);           ///< "true" or "false"

    /// Writes 16 bytes as one number, the byte at index 15 first, each group of four followed by a
    /// blank. `bytes` must not be null.
    ///
    ///     <bytes>0f0e0d0c 0b0a0908 07060504 03020100 </bytes>
    void WriteByte(std::string ident, const unsigned char* bytes);

    /// Writes at least `digits` lower-case hexadecimal digits; a longer value is written in full.
    ///
    ///     WriteHex("mask", 255, 4)   ->  <mask>0x00ff</mask>
    void WriteHex(std::string ident, std::uint64_t value, unsigned int digits);

    /// Writes the five lowest bits, the most significant first, whatever `bits` says.
    ///
    ///     WriteBin("flags", 2, 8)   ->  <flags>00010</flags>
    void WriteBin(std::string ident, std::uint64_t value, int bits);

    /// As WriteString; null is written by WriteNULLPointer.
    void WriteCharString(std::string ident, const char* text);

    /// The text as it stands inside an element: the five characters of markup become entities, bytes
    /// that the C library's isprint doesn't call printable in the locale in force become \xNN.
    ///
    ///     CheckString("x<y\n")   ->  x&lt;y\x0a
    static std::string CheckString(std::string text);
    static std::string CheckChar(char character);

    // ---- Pointed-to values (base/PointerValues.cpp) -------------------------------------------
    // Each reads the value once and writes it as the scalar writer of its type does; a null pointer is
    // written by WriteNULLPointer under the same name.

    void WriteCharPtrVal(std::string ident, char* value);
    void WriteDecimalPtrVal(std::string ident, unsigned int* value);
    void WriteDecimalPtrVal(std::string ident, std::uint64_t* value);
    void WriteDecimalPtrVal(std::string ident, std::nullptr_t);
    void WriteStringPtrVal(std::string ident, std::string* value);
    void WriteBoolPtrVal(std::string ident, bool* value);
    void WriteHexPtrVal(std::string ident, std::uint64_t* value, unsigned int digits);
    void WriteBinPtrVal(std::string ident, std::uint64_t* value, int bits);

    // ---- Arrays (base/Arrays.cpp) -------------------------------------------------------------
    // Each writes a container named `ident` with one child per item. A null array, whatever its count,
    // holds one null element; an array of no items holds nothing. The comments name the children.

    void WriteBoolArray(std::string ident, const bool* items, unsigned int count);  ///< bool_array

    /// Children and container share one name; the characters are escaped. Null: "string".
    void WriteCharArray(std::string ident, const char* items, unsigned int count);

    /// Each entry is nested twice under the array's own name. Null: "string"; a null entry is the
    /// caller's mistake and throws what building a string from it throws.
    ///
    ///     <names>
    ///         <names>            <names>ab</names>
    ///     </names>
    ///     </names>
    ///
    /// (the line after the entry has no indentation)
    void WriteStringArray(std::string ident, char** items, unsigned int count);

    /// Writes `lineCount` times the same `bytesPerLine` windows of 16 bytes, the first at
    /// `data` + `lineCount`, each next one byte later: `data` + `lineCount` + `bytesPerLine` + 15 bytes
    /// are read. Children: "value"; null: `ident`.
    void WriteLinesByteArray(std::string ident, const unsigned char* data, unsigned int lineCount,
                             unsigned int bytesPerLine);

    /// Decimal, or hexadecimal as wide as the item. Children: "value", null: `ident`; of 64 bits: both
    /// "int".
    ///
    ///     <value>0x7f</value>    <value>0x0000007f</value>    <int>0x000000000000007f</int>
    void WriteUint8Array(std::string ident, const unsigned char* items, unsigned int count, bool hex);
    void WriteUint32Array(std::string ident, const unsigned int* items, unsigned int count, bool hex);
    void WriteUint64Array(std::string ident, const std::uint64_t* items, unsigned int count, bool hex);

protected:
    // ---- Tags that nobody replaces --------------------------------------------------------------
    // Most elements are written several times faster when no override of WriteIdent,
    // WriteIdentWithoutTabs and WriteTabs can be missed. An object whose class hasn't said so has every
    // tag go through the table and gets the same bytes.

    /// To be called in the constructor of a derived generator, with its own class, when that leaves the
    /// three operations as they are; else it doesn't compile. Each class speaks for itself alone: one
    /// that is derived from it calls this again. Without RTTI it does nothing.
    ///
    ///     explicit MyGenerator(const char* name) : Scrivel2XmlGenRun(name) { KeepsTags<MyGenerator>(); }
    template <typename Derived>
    void KeepsTags()
    {
        using Kept = ScrivelXmlGenBase;
        static_assert(std::is_same_v<decltype(&Derived::WriteIdent), decltype(&Kept::WriteIdent)> &&
                          std::is_same_v<decltype(&Derived::WriteIdentWithoutTabs),
                                         decltype(&Kept::WriteIdentWithoutTabs)> &&
                          std::is_same_v<decltype(&Derived::WriteTabs), decltype(&Kept::WriteTabs)>,
                      "This class replaces an operation that writes tags");
#ifdef __cpp_rtti
        tagKeeper = &typeid(Derived);
        entryIsKept = decltype(LeavesEntry<Derived>(nullptr))::value;
#endif
    }

    // ---- Element forms (base/ElementForms.h) --------------------------------------------------
    // Every writer is one of these.

    /// A line around a value (base/Values.h); `Name` is a text or a literal.
    template <typename Name, typename Value>
    void WriteValue(const Name& ident, const Value& value);

    /// A tag on a line of its own: what WriteIdent writes.
    void WriteTag(const std::string& ident, bool openTag);

    template <typename Name, typename WriteContents>
    void WriteElement(const Name& ident, WriteContents writeContents);

    template <typename WriteChildren>
    void WriteContainer(const std::string& ident, WriteChildren writeChildren);

    /// A container of fields (base/WholeElements.h), one line each.
    template <typename... Fields>
    void WriteRecord(const std::string& ident, const Fields&... fields);

    /// `count` is a number, or a pointer to one: null counts as 0, and it is read anew for each entry.
    template <typename Item, typename Count, typename WriteItem>
    void WriteItems(const std::string& ident, Item* items, Count count, std::string_view nullName,
                    WriteItem writeItem);

    /// Items of an integer type, in decimal or in as many hexadecimal digits as the type holds.
    template <typename Integer, typename Name>
    void WriteIntegers(const std::string& ident, const Integer* items, unsigned int count, bool hex,
                       std::string_view nullName, const Name& childName);

    template <typename Value, typename WriteOne>
    void WritePointee(const std::string& ident, Value* pointer, WriteOne writeOne);

    /// What StartLogging writes into the file that it has opened: the header, and a final flush.
    void WriteHeader();

    /// What FlushOutput writes before it flushes, what WriteCloseInterruptedFunction does, what that
    /// writes before it takes the name, and what WriteContinueFunction does.
    void WriteClosingText(bool finalTag, std::string_view callName);
    void OpenCall(const std::string& callName);
    void CloseInterrupted();
    void WriteContinued(unsigned int number, const std::string& callName);

    /// As GetFileEndTag, in memory that the generator keeps: valid until the next call.
    const std::string& FileEndTag();

    // ---- Data ---------------------------------------------------------------------------------

    std::string logName;
    std::string cadiVersion;
    std::string pendingTail;  ///< the closing text that the last flush wrote
    LogStream logFile;
    bool writeSecure;
    std::streamoff lastFilePos;  ///< where pendingTail begins: the next output in secure mode
    unsigned int callNo;         ///< of the call entered last, 0 before the first
    unsigned int depth;          ///< of elements: 1 inside the root
    std::string openCallName;    ///< the call entered last
    bool callOpen;               ///< it has not been continued yet
    timeval startTime;           ///< of StartLogging
    std::vector<std::string> factoryErrorNames;  ///< in the order of CADIFactoryErrorCode_t
    bool mendsNames;  ///< elements named with a leading "-" or "." get "_" in its place
    void (*checkLongName)(const std::string&);  ///< unless null, for names that no tag puts down whole
    std::string fileEndTag;                     ///< what FileEndTag returned last

private:
    friend class WholeElements;

    /// Whether a class leaves WriteCloseInterruptedFunction as it is. One that hides it counts as one
    /// that replaces it.
    template <typename Derived>
    static std::is_same<decltype(&Derived::WriteCloseInterruptedFunction),
                        decltype(&ScrivelXmlGenBase::WriteCloseInterruptedFunction)>
    LeavesEntry(const Derived*);
    template <typename>
    static std::false_type LeavesEntry(...);

    const std::type_info* tagKeeper;  // of the class that called KeepsTags last
    bool entryIsKept;                 // by that class: see LeavesEntry
    long processOfEndTag;             // that fileEndTag names, and the log that it does
    std::string nameOfEndTag;
};

/// The run phase's frame and the writers of the CADI types that calls on a target pass and return.
class ScrivelXmlGenRunBase : public ScrivelXmlGenBase
{
public:
    using NameTable = std::map<unsigned int, std::string>;

    ScrivelXmlGenRunBase(const char* logName, const char* cadiVersion);

    // ---- Frame operations, continued ----------------------------------------------------------

    ~ScrivelXmlGenRunBase() override;
    void SetWriteSecure(bool secure) override;

    /// As the next one, without an address.
    void WriteDetailedIdent(std::string callName) override;

    /// Opens a call's element with number, time, the calling thread (low 32 bits of pthread_self) and,
    /// unless it is 0, the address that a disassembler asks for. An element set with SetPendingElement
    /// is written first.
    ///
    ///     <CADIMemRead call_num="7"
    ///      call_time="0.010020 s"
    ///      threadId="1234" disassembler_address="0x0000000000008000">
    virtual void WriteDetailedIdent(std::string callName, std::uint64_t address);

    /// Enters a call: closes an interrupted one, raises the call number, writes the start tag. Returns
    /// the call's number, which WriteContinueFunction wants when the call returns. Write the arguments
    /// next, then FlushOutput(false, callName), and only then let the target run.
    virtual unsigned int EnterCadiCall(std::string callName);

    // ---- What the logging layer sets (runbase/RunFrame.cpp) -----------------------------------

    /// The tables that name memory spaces in WriteAddr and registers in WriteReg, by id and number.
    /// They belong to the caller, must outlive their use, are only read, and are looked at anew at each
    /// value; null, as at first, means no names.
    void SetMemSpaceNames(const NameTable* names);
    void SetRegisterNames(const NameTable* names);

    /// Sets a one-line element that is written once, before the next call's start tag. Both parts are
    /// written as given; when either is empty nothing is written.
    void SetPendingElement(std::string name, std::string text);

    // ---- CADI types: enumerations (runbase/Enumerations.cpp) ----------------------------------
    // Each writes the enumerator's name on one line, or a message for a value that has none:
    //
    //     <return>CADI_STATUS_OK</return>    <return>Invalid return type: 0xc</return>

    void WriteReturnType(std::string ident, eslapi::CADIReturn_t value);
    void WriteValueDataType(std::string ident, eslapi::CADIValueDataType_t value);
    void WriteFactoryErrorCode(std::string ident, eslapi::CADIFactoryErrorCode_t value);
    void WriteFactorySeverityCode(std::string ident, eslapi::CADIFactorySeverityCode_t value);
    void WriteBptType(std::string ident, eslapi::CADIBptType_t value);
    /// The unsigned comparisons have no names here: they are written as messages.
    void WriteBptConditionOperator(std::string ident, eslapi::CADIBptConditionOperator_t value);
    void WriteBptConfigure(std::string ident, eslapi::CADIBptConfigure_t value);
    void WriteExceptionAction(std::string ident, eslapi::CADIExceptionAction_t value);
    void WriteRegAccessAttribute(std::string ident, eslapi::CADIRegAccessAttribute_t value);
    void WriteRegType(std::string ident, eslapi::CADIRegType_t value);
    void WriteRegDisplay(std::string ident, eslapi::CADIRegDisplay_t value);
    void WriteMemReadWrite(std::string ident, eslapi::CADIMemReadWrite_t value);

    /// The number of an execution mode; one without a name gives "Unknown execution mode: 6". A null
    /// pointer is written by WriteNULLPointer.
    void WriteExecMode(std::string ident, unsigned int mode);
    void WriteExecModePtrVal(std::string ident, unsigned int* mode);
    void WriteExecModePtrVal(std::string ident, std::nullptr_t);

    /// A bit set; bits without a word are written shifted down by three.
    ///
    ///     3      ->  CADI_BPT_TRIGGER_ON_{READ, WRITE}
    ///     0x19   ->  CADI_BPT_TRIGGER_ON_{READ, 0x3}
    ///     0      ->  (empty)
    void WriteTriggerType(std::string ident, unsigned int trigger);

    /// 0 "mono", 1 "LE", 2 "BE"; any other is "0x0000000" and the byte itself as a character, escaped.
    void WriteEndianness(std::string ident, unsigned char endianness);

    /// The number of a register's symbols, and a "Symbols" null element when there is no list. The
    /// symbols themselves are not written.
    void WriteRegSymbol(std::string ident, eslapi::CADIRegSymbols_t symbols);

    // ---- CADI types: target features (runbase/TargetFeatures.cpp) -----------------------------

    /// A bit set of breakpoint kinds; bits without a word are written shifted down by six.
    ///
    ///     0x03   ->  CADI_TARGET_FEATURE_BPT_{PROGRAM, MEMORY}
    void WriteHandledBreakpoints(std::string ident, unsigned int breakpoints);
    void WriteTargetFeatures(std::string ident, eslapi::CADITargetFeatures_t* features);  ///< null: NULL

    // ---- CADI types: parameters and factory errors (runbase/Parameters.cpp) -------------------
    // Here and below: each record is a container with one child per field, in the order of the record;
    // of 64-bit fields, addresses of CADIAddr_t and comparison values apart, only the low 32 bits are
    // written. Each array is a container of such records; a null array holds one null element under the
    // name in the comment. A null pointer is written by WriteNULLPointer under `ident`.

    void WriteParameterInfo(std::string ident, eslapi::CADIParameterInfo_t info);
    void WriteParameterInfoPtrVal(std::string ident, eslapi::CADIParameterInfo_t* info);
    void WriteParameterValue(std::string ident, eslapi::CADIParameterValue_t value);
    void WriteFactoryErrorMessage(std::string ident, eslapi::CADIFactoryErrorMessage_t message);
    void WriteFactoryErrorMessagePtrVal(std::string ident, eslapi::CADIFactoryErrorMessage_t* message);
    /// Children are named after the parameters; null: "param".
    void WriteParameterInfoArray(std::string ident, eslapi::CADIParameterInfo_t* params,
                                 unsigned int count);
    /// Children and null: "parameterValue".
    void WriteParameterValueArray(std::string ident, eslapi::CADIParameterValue_t* values,
                                  unsigned int count);

    // ---- CADI types: registers (runbase/Registers.cpp) ----------------------------------------
    // Groups and descriptions are elements named after themselves.

    void WriteRegGroup(eslapi::CADIRegGroup_t group);
    void WriteRegDetail(std::string ident, eslapi::CADIRegDetails_t details);
    /// A register whose display is CADI_REGTYPE_SYMBOL gets a message in place of its symbol list, any
    /// other has its list written as WriteRegSymbol does.
    void WriteRegInfo(eslapi::CADIRegInfo_t info);
    /// Named by the table of register names, or `ident` when that has no name for the register.
    void WriteReg(std::string ident, eslapi::CADIReg_t reg);
    void WriteRegGroupArray(std::string ident, eslapi::CADIRegGroup_t* groups,
                            unsigned int count);  ///< null: "regGroup"
    void WriteRegInfoArray(std::string ident, eslapi::CADIRegInfo_t* infos,
                           unsigned int count);  ///< null: "regInfo"
    void WriteRegArray(std::string ident, eslapi::CADIReg_t* regs,
                       unsigned int count);  ///< children and null: "reg"

    // ---- CADI types: memory (runbase/Memory.cpp) ----------------------------------------------
    // Spaces and blocks are elements named after themselves.

    void WriteMemSpaceInfo(eslapi::CADIMemSpaceInfo_t space);
    void WriteMemBlockInfo(eslapi::CADIMemBlockInfo_t block);
    void WriteCacheInfo(std::string ident, eslapi::CADICacheInfo_t* cache);
    void WriteMemSpaceInfoArray(std::string ident, eslapi::CADIMemSpaceInfo_t* spaces,
                                unsigned int count);  ///< null: "memSpaceInfo"
    void WriteMemBlockInfoArray(std::string ident, eslapi::CADIMemBlockInfo_t* blocks,
                                unsigned int count);  ///< null: "memBlockInfo"
    void WriteOverlayIdArray(std::string ident, unsigned int* ids,
                             unsigned int count);  ///< children and null: "overlayId"

    /// Id, name and address, all 64 bits of it; a space that the table of memory space names doesn't
    /// know is called "unknown memSpaceInfo".
    void WriteAddr(std::string ident, eslapi::CADIAddr_t address);
    void WriteAddrComplete(std::string ident, eslapi::CADIAddrComplete_t address);

    // ---- CADI types: breakpoints and exceptions (runbase/Breakpoints.cpp) ---------------------

    void WriteBptCondition(std::string ident, eslapi::CADIBptCondition_t condition);
    void WriteBptRequest(std::string ident, eslapi::CADIBptRequest_t* request);
    void WriteBptDescription(std::string ident, eslapi::CADIBptDescription_t description);
    /// Children and null: "breakpoints".
    void WriteBptDescriptionArray(std::string ident, eslapi::CADIBptDescription_t* descriptions,
                                  unsigned int count);
    void WriteException(std::string ident, eslapi::CADIException_t exception);
    /// Children: "exception"; null: "breakpoints".
    void WriteExceptionArray(std::string ident, eslapi::CADIException_t* exceptions, unsigned int count);

    // ---- CADI types: modes, reset levels, pipe stages (runbase/ExecModes.cpp) -----------------

    void WriteExecMode(std::string ident, eslapi::CADIExecMode_t mode);
    void WriteExecModePtrVal(std::string ident, eslapi::CADIExecMode_t* mode);
    void WriteResetLevel(std::string ident, eslapi::CADIResetLevel_t level);
    void WritePipeStage(std::string ident, eslapi::CADIPipeStage_t stage);
    void WritePipeStageField(std::string ident, eslapi::CADIPipeStageField_t field);
    void WriteExecModeArray(std::string ident, eslapi::CADIExecMode_t* modes,
                            unsigned int count);  ///< null: "parameterValue"
    void WriteResetLevelArray(std::string ident, eslapi::CADIResetLevel_t* levels,
                              unsigned int count);  ///< null: "parameterValue"
    void WritePipeStageArray(std::string ident, eslapi::CADIPipeStage_t* stages,
                             unsigned int count);  ///< null: "pipeStages"
    void WritePipeStageFieldArray(std::string ident, eslapi::CADIPipeStageField_t* fields,
                                  unsigned int count);  ///< null: "pipeStageFields"

protected:
    std::string pendingElementName;
    std::string pendingElementText;
    const NameTable* memSpaceNames;
    const NameTable* registerNames;
    const NameTable* layerNames;  ///< for the logging layer's own use: no operation reads it
};

/// The generator of a connection-phase log: the calls with which a debugger finds simulation factories,
/// learns about simulations and their targets, and passes parameters. A call is entered with
///
///     log->WriteCloseInterruptedFunction("GetTargetInfos");
///     log->IncCallNo();
///     log->WriteDetailedIdent("GetTargetInfos");
///
/// and then goes on as a run-phase call does. Record and array forms are those of the run phase; arrays
/// take their count by pointer, null meaning 0.
class Scrivel2XmlGenConnect : public ScrivelXmlGenBase
{
public:
    explicit Scrivel2XmlGenConnect(const char* logName);
    ~Scrivel2XmlGenConnect() override;
    void SetWriteSecure(bool secure) override;

    // ---- CADI types of the connection phase (generators/Scrivel2XmlGenConnect.cpp) ------------

    /// The factories' addresses. Children: "simulationFactory"; null: "targetInfo".
    void WriteSimulationFactoryArray(std::string ident, eslapi::CADISimulationFactory** factories,
                                     unsigned int* count);
    void WriteSimulationInfo(std::string ident, eslapi::CADISimulationInfo_t info);
    /// Children: "simulationFactory"; null: "targetInfo".
    void WriteSimulationInfoArray(std::string ident, eslapi::CADISimulationInfo_t* infos,
                                  unsigned int* count);
    void WriteValueDataType(std::string ident, eslapi::CADIValueDataType_t value);
    void WriteReturnType(std::string ident, eslapi::CADIReturn_t value);
    void WriteParameterValue(std::string ident, eslapi::CADIParameterValue_t value);
    /// Up to and with the first entry whose parameterID is 0xFFFFFFFF: there must be one. Children and
    /// null: "parameterValue".
    void WriteParameterValueArray(std::string ident, eslapi::CADIParameterValue_t* values);
    void WriteParameterInfo(std::string ident, eslapi::CADIParameterInfo_t info);
    /// Children are named after the parameters; null: "param".
    void WriteParameterInfoArray(std::string ident, eslapi::CADIParameterInfo_t* params,
                                 unsigned int* count);
    /// All fields but canRunInBackground.
    void WriteTargetInfo(std::string ident, eslapi::CADITargetInfo_t info);
    /// Children and null: "targetInfo".
    void WriteTargetInfoArray(std::string ident, eslapi::CADITargetInfo_t* infos, unsigned int* count);
};

/// The generator of a run-phase log: the calls of a debugger on an attached target.
class Scrivel2XmlGenRun : public ScrivelXmlGenRunBase
{
public:
    explicit Scrivel2XmlGenRun(const char* logName);
    ~Scrivel2XmlGenRun() override;
    void SetWriteSecure(bool secure) override;

    // ---- CADI types of the run phase alone (generators/Scrivel2XmlGenRun.cpp) -----------------

    /// All fields, canRunInBackground last.
    void WriteTargetInfo(std::string ident, eslapi::CADITargetInfo_t info);
    void WriteTargetInfoPtrVal(std::string ident, eslapi::CADITargetInfo_t* info);

    /// Writes nothing to the log: prints "WriteRegFloatFormat not implemented !!" on standard output.
    void WriteRegFloatFormat(std::string ident, eslapi::CADIRegFloatFormat_t format);
};

}  // namespace Scrivel2

#endif
