// A short session as the tests of several commands read it: a callback within a call, a second thread, a
// call that failed, and one that never returned.

#ifndef SCRIVEL_TESTS_TOOL_SESSION_H
#define SCRIVEL_TESTS_TOOL_SESSION_H

namespace ScrivelTest
{

inline constexpr char session[] = R"(    <CADIExecContinue call_num="1"
     call_time="0.000011 s"
     threadId="1234">
    </CADIExecContinue>

<!-- Call 1 ("CADIExecContinue") interrupted -->

    <modeChange call_num="2"
     call_time="0.000022 s"
     threadId="1234">
        <newMode>CADI_EXECMODE_Bpt</newMode>
        <return_time>0.000033 s</return_time>
    </modeChange>

<!-- Continuing call 1 ("CADIExecContinue") -->

    <CADIExecContinue call_num="1">
        <return_time>0.012544 s</return_time>
        <return>CADI_STATUS_OK</return>
    </CADIExecContinue>
    <CADIRegWrite call_num="3"
     call_time="0.012550 s"
     threadId="5678">
        <regCount>1</regCount>
        <reg>
            <zero>
                <regNumber>0</regNumber>
                <bytes>00000000 00000000 00000000 00000001 </bytes>
            </zero>
        </reg>
        <return_time>0.012553 s</return_time>
        <return>CADI_STATUS_PermissionDenied</return>
    </CADIRegWrite>
    <CADIMemWrite call_num="4"
     call_time="0.012560 s"
     threadId="1234">
        <startAddress>
            <overlay>0</overlay>
            <location>
                <spaceId>1</spaceId>
                <spaceName>Memory</spaceName>
                <addr>0x0000000040000000</addr>
            </location>
        </startAddress>
        <bytes>4</bytes>
        <data>
            <value>0xe8</value>
            <value>0x03</value>
        </data>
    </CADIMemWrite>
)";

/// The clock is set back within call 1 by its callback, and by nothing else: A seems to take 200 ms.
inline constexpr char setBackSession[] = R"(    <A call_num="1"
     call_time="1.000000 s"
     threadId="1234">
    </A>

<!-- Call 1 ("A") interrupted -->

    <B call_num="2"
     call_time="0.500000 s"
     threadId="1234">
        <return_time>0.600000 s</return_time>
    </B>

<!-- Continuing call 1 ("A") -->

    <A call_num="1">
        <return_time>1.200000 s</return_time>
    </A>
    <C call_num="3"
     call_time="1.300000 s"
     threadId="1234">
        <return_time>1.299900 s</return_time>
    </C>
)";

}  // namespace ScrivelTest

#endif
