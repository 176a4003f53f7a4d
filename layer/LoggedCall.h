// The guard that logs one call, and all that an engineer includes to log a target.
//
// A wrapper stands in for the target and forwards each call through a guard:
//
//     Scrivel2::RunLog log("run");                                  // run-4242.xml
//
//     CADIReturn_t LoggedTarget::CADIRegRead(std::uint32_t count, CADIReg_t* values)
//     {
//         LoggedCall call(log, "CADIRegRead");
//         call.Arguments([&](auto& xml) { xml.WriteDecimal("regCount", count); });
//         const auto status = target.CADIRegRead(count, values);    // the log is not locked here
//         call.Results([&](auto& xml) {
//             xml.WriteRegArray("reg", values, count);
//             xml.WriteReturnType("return", status);
//         });
//         return status;
//     }
//
// which writes
//
//     <CADIRegRead call_num="1"
//      call_time="0.000071 s"
//      threadId="1234">
//         <regCount>1</regCount>
//         <return_time>0.000093 s</return_time>
//         <reg>
//             ...
//         </reg>
//         <return>CADI_STATUS_OK</return>
//     </CADIRegRead>
//
// A call without arguments or results leaves those lines out; the guard alone logs that it was made and
// when it returned. A log of the connection phase is a Scrivel2::ConnectLog, used in the same way.
//
// What is in the file: a complete document, at every moment, in whatever order calls interrupt each
// other. From the guard's construction on it has the call in it, and from Arguments on the arguments, so
// when the target crashes the log has the call that it crashed in:
//
//     <CADIMemRead call_num="7"
//      call_time="0.010020 s"
//      threadId="1234">
//         <bytes>4</bytes>
//     </CADIMemRead>
//
// Calls may come from several threads, and the target may call back while it runs: a call that is
// entered while another runs closes the other's element, with a comment, and the other's results stand
// in a second element of the same number.
//
//     <CADIExecContinue call_num="8" ...>
//     </CADIExecContinue>
//
//     <!-- Call 8 ("CADIExecContinue") interrupted -->
//
//     <modeChange call_num="9" ...>
//         ...
//     </modeChange>
//
//     <!-- Continuing call 8 ("CADIExecContinue") -->
//
//     <CADIExecContinue call_num="8">
//         <return_time>0.300120 s</return_time>
//         <return>CADI_STATUS_OK</return>
//     </CADIExecContinue>

#ifndef SCRIVEL_LAYER_LOGGEDCALL_H
#define SCRIVEL_LAYER_LOGGEDCALL_H

#include "CallLog.h"

#include <string>
#include <string_view>
#include <type_traits>

namespace Scrivel2
{

/// Logs one call from its construction to its end. It belongs to the one thread that makes the call, and
/// refers to its log.
///
/// The callables that it is given write with what they get, a RunWriters or ConnectWriters: all writers
/// of values, and WriteComment. They run at once, under the log's lock: a logged call made inside one is
/// refused (CallLog). When one throws, what it has written is taken back, and the exception goes on.
///
/// When memory ends, a std::bad_alloc leaves the constructor, Arguments or Results, and nothing of what
/// they were to write is in the log. It goes on with the next call that there is memory for.
template <typename Generator>
class LoggedCall
{
public:
    /// Enters the call; it is in the file when this returns. The name is a plain identifier, of 60
    /// characters at most; any other is made one (LegalName).
    LoggedCall(CallLog<Generator>& callLog, std::string_view callName)
        : LoggedCall(callLog, callName, [](auto&) {})
    {
    }

    /// Enters the call together with its arguments: one flush instead of two.
    template <typename WriteArguments>
    LoggedCall(CallLog<Generator>& callLog, std::string_view callName, WriteArguments writeArguments)
        : LoggedCall(callName, callLog)
    {
        Enter(writeArguments, [&](auto& xml) { return xml.EnterCall(name); });
    }

    /// Enters a call on a target whose element says more (CallHead), without and with its arguments.
    LoggedCall(CallLog<Generator>& callLog, std::string_view callName, const CallHead& head)
        : LoggedCall(callLog, callName, head, [](auto&) {})
    {
    }

    template <typename WriteArguments>
    LoggedCall(CallLog<Generator>& callLog, std::string_view callName, const CallHead& head,
               WriteArguments writeArguments)
        : LoggedCall(callName, callLog)
    {
        static_assert(std::is_same_v<Generator, Scrivel2XmlGenRun>,
                      "Calls of the connection phase have no CallHead");
        Enter(writeArguments, [&](auto& xml) { return xml.EnterCall(name, head); });
    }

    LoggedCall(const LoggedCall&) = delete;
    LoggedCall& operator=(const LoggedCall&) = delete;

    /// Ends the call when Results hasn't: it has none, or an exception of the target passes.
    ~LoggedCall()
    {
        if (!returned && number != 0) {
            try {
                Results([](auto&) {});
            } catch (...) {
                // No memory for the end of the call: the log goes on as if it had not returned.
                const Access xml{log};
                CountReturn();
            }
        }
    }

    /// Writes the arguments, to be called before the target runs. When another call was entered since the
    /// construction they stand in a second element of the call's number.
    template <typename WriteArguments>
    void Arguments(WriteArguments writeArguments)
    {
        if (number == 0) {
            return;
        }
        const Access xml{log};
        if (!xml) {
            return;
        }
        Attempt attempt(*xml);
        if (xml->IsOpen(number)) {
            xml->SeekFilePointerPosition();
            xml->WriteAndFinish(writeArguments, [&] { Finish(attempt, [&] { Flush(*xml); }); });
        } else {
            xml->ReopenCall(number, name);
            xml->WriteAndFinish(writeArguments, [&] { Finish(attempt, [&] { Close(*xml); }); });
        }
    }

    /// Writes the time of the return and the results, to be called after the target has returned, and
    /// ends the call.
    template <typename WriteResults>
    void Results(WriteResults writeResults)
    {
        if (number == 0) {
            return;
        }
        if (const Access xml{log}) {
            Attempt attempt(*xml);
            xml->Continue(number, name);
            xml->WriteAndFinish(writeResults, [&] { FinishReturn(attempt, *xml); });
        }
    }

    /// The call's number in the log; 0 when it is not logged (see CallLog).
    unsigned int Number() const { return number; }

private:
    using Access = typename CallLog<Generator>::Access;
    using Attempt = typename Layer::CompleteFileGenerator<Generator>::Attempt;

    // The end tag of an interrupting call is overwritten by the comment and the reopened element that
    // follow it: a longer name could stick out after the end of the document.
    static constexpr std::size_t longestName = 60;

    LoggedCall(std::string_view callName, CallLog<Generator>& callLog)
        : log(callLog),
          name(callLog.Takes(callName) ? LegalName(callName.substr(0, longestName)) : std::string())
    {
    }

    template <typename WriteArguments, typename EnterCall>
    void Enter(WriteArguments& writeArguments, EnterCall enterCall)
    {
        if (name.empty()) {
            return;  // a call that the log doesn't take: no lock, no system call, no memory
        }
        if (const Access xml{log}) {
            log.GoOnInNextFileWhenFull();
            Attempt attempt(*xml);
            const unsigned int entered = enterCall(*xml);
            xml->WriteAndFinish(writeArguments, [&] { FinishEntry(attempt, *xml, entered); });
        } else if (xml.IsRefused()) {
            ++log.refusedCalls;
        }
    }

    /// Brings what has been written to the file, unless a handler has ended the log meanwhile: then the
    /// attempt takes it back.
    template <typename WriteEnd>
    bool Finish(Attempt& attempt, WriteEnd writeEnd)
    {
        if (log.endIsDue) {
            return false;
        }
        writeEnd();
        attempt.Finish();
        return true;
    }

    void FinishEntry(Attempt& attempt, Layer::CompleteFileGenerator<Generator>& xml, unsigned int entered)
    {
        if (Finish(attempt, [&] { Flush(xml); })) {
            number = entered;
            ++log.openCalls;
        }
    }

    void FinishReturn(Attempt& attempt, Layer::CompleteFileGenerator<Generator>& xml)
    {
        if (Finish(attempt, [&] { Close(xml); })) {
            CountReturn();
        }
    }

    void CountReturn()
    {
        log.openCalls -= returned ? 0U : 1U;
        returned = true;
    }

    void Flush(Layer::CompleteFileGenerator<Generator>& xml) { xml.Flush(false, name); }

    void Close(Layer::CompleteFileGenerator<Generator>& xml)
    {
        xml.WriteTag(name, false);
        xml.Flush(true, "");
    }

    CallLog<Generator>& log;
    std::string name;
    unsigned int number = 0;
    bool returned = false;
};

}  // namespace Scrivel2

#endif
