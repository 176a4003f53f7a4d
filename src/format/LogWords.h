// The words of a log, for whoever writes one and whoever reads one: constants, no logic. Includes
// nothing of the library.

#ifndef SCRIVEL_FORMAT_LOGWORDS_H
#define SCRIVEL_FORMAT_LOGWORDS_H

#include <string_view>

namespace Scrivel2::LogWords
{

// ---- The header -----------------------------------------------------------------------------------

//     <?xml version="1.0" encoding="UTF-8"?>
//     <trace-4242
//      time="2026-11-21 14:03:59"
//      CADI_version="CADI 2.0"
//      hostname="lab7"
//      OS="Linux">
inline constexpr std::string_view declaration = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>";
inline constexpr std::string_view time = "time";
inline constexpr std::string_view cadiVersion = "CADI_version";
inline constexpr std::string_view hostName = "hostname";
inline constexpr std::string_view operatingSystem = "OS";
inline constexpr std::string_view linuxSystem = "Linux";

// ---- Calls ----------------------------------------------------------------------------------------

//     <CADIRegRead call_num="7"
//      call_time="0.010020 s"
//      threadId="1234" disassembler_address="0x0000000000008000">
//         <return_time>0.010031 s</return_time>
inline constexpr std::string_view callNumber = "call_num";
inline constexpr std::string_view callTime = "call_time";
inline constexpr std::string_view threadId = "threadId";
inline constexpr std::string_view disassemblerAddress = "disassembler_address";
inline constexpr std::string_view returnTime = "return_time";

// ---- Comments -------------------------------------------------------------------------------------

//     <!-- Call 8 ("CADIExecContinue") interrupted -->
//     <!-- Continuing call 8 ("CADIExecContinue") -->
inline constexpr std::string_view commentBegin = "<!-- ";
inline constexpr std::string_view commentEnd = " -->";
inline constexpr std::string_view interruptedBegin = "Call ";
inline constexpr std::string_view interruptedEnd = " interrupted";
inline constexpr std::string_view continuingBegin = "Continuing call ";

// ---- Comments of the logging layer ----------------------------------------------------------------

//     <!-- Log ended -->
// The last comment of a log that was ended, before the root end tag. A log without it was cut off,
// between two calls when no call is open in it.
inline constexpr std::string_view logEnded = "Log ended";

//     <!-- Log continued in run-4242.2.xml -->
//     <!-- Log continued from run-4242.xml -->
// The last comment of a file that another one follows, and the first comment of that one. Both lie in one
// folder, and the numbers of calls go on.
inline constexpr std::string_view continuedInBegin = "Log continued in ";
inline constexpr std::string_view continuedFromBegin = "Log continued from ";

// ---- Values ---------------------------------------------------------------------------------------

inline constexpr std::string_view null = "NULL";
inline constexpr std::string_view hexPrefix = "0x";
inline constexpr std::string_view emptyName = "emptyIdent";
inline constexpr std::string_view unknownMemSpace = "unknown memSpaceInfo";
inline constexpr std::string_view statusBegin = "CADI_STATUS_";
inline constexpr std::string_view statusOk = "CADI_STATUS_OK";

// ---- Values without a name: what their messages begin with, the value in hexadecimal follows ----------

//     <return>Invalid return type: 0xc</return>
inline constexpr std::string_view invalidReturnType = "Invalid return type: 0x";
inline constexpr std::string_view invalidValueDataType = "Invalid value data type: 0x";
inline constexpr std::string_view invalidFactoryErrorCode = "Invalid factory error code: 0x";
inline constexpr std::string_view invalidFactorySeverityCode = "Invalid factory severity code: 0x";
inline constexpr std::string_view invalidBptType = "Invalid bpt type: 0x";
inline constexpr std::string_view invalidBptConditionOperator =
    "Invalid breakpoint condition operator: 0x";
inline constexpr std::string_view invalidBptConfigure = "Invalid CADIBptConfigure value: 0x";
inline constexpr std::string_view invalidExceptionAction = "Invalid exception action: 0x";
inline constexpr std::string_view invalidRegAccessAttribute = "Invalid reg access attribute: 0x";
inline constexpr std::string_view invalidRegType = "Invalid reg type: 0x";
inline constexpr std::string_view invalidRegDisplay = "Invalid reg display: 0x";
inline constexpr std::string_view invalidMemReadWrite = "Invalid mem read write: 0x";

// In decimal: a target's own modes are numbered, not coded.
inline constexpr std::string_view unknownExecMode = "Unknown execution mode: ";

// In place of a register's symbols.
inline constexpr std::string_view noSymbolRegister = "Register is not of type CADI_REGTYPE_SYMBOL";

// ---- What a flush that was killed leaves around the root end tag ------------------------------------

//     <?x ... ?>
//     <!-- ?>...<?x --><?x ... ?>
inline constexpr std::string_view flushOpening = "<?x ";
inline constexpr std::string_view flushClosing = "?>";
inline constexpr std::string_view flushBeforeCopy = "<!-- ?>";
inline constexpr std::string_view flushAfterCopy = "<?x --><?x ";

}  // namespace Scrivel2::LogWords

#endif
