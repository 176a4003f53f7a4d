// What the element of a call on a target may say besides its number, time and thread.

#ifndef SCRIVEL_LAYER_CALLHEAD_H
#define SCRIVEL_LAYER_CALLHEAD_H

#include <string_view>

namespace Scrivel2
{

/// For a guard of a RunLog. Both parts may be left out.
///
///     LoggedCall call(log, "CADIMemRead", CallHead{0x8000, "disassembler", "RV32I & C"});
///
///         <disassembler>RV32I &amp; C</disassembler>
///         <CADIMemRead call_num="7"
///          call_time="0.010020 s"
///          threadId="1234" disassembler_address="0x0000000000008000">
struct CallHead
{
    /// The address that a disassembler makes the call for; 0 for none.
    unsigned long disassemblerAddress = 0;

    /// An element of one line before the call's own, unless one of the two is empty. The name is made
    /// legal (LegalName), the text escaped.
    std::string_view elementName{};
    std::string_view elementText{};
};

}  // namespace Scrivel2

#endif
