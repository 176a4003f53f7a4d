// Elements joined into calls.

#include <gtest/gtest.h>

#include "reader/Reading.h"

using namespace ScrivelReader;
using namespace ScrivelTest;

namespace
{

TEST(LogReader, ReadsTheHeader)
{
    const Reading reading = ReadBytes(LogOf(""));
    ASSERT_EQ(reading.headers.size(), 1u);
    const LogHeader& header = reading.headers.front();
    EXPECT_EQ(header.name, "run");
    EXPECT_EQ(header.processId, 4242u);
    EXPECT_EQ(header.time, "2026-11-21 14:03:59");
    EXPECT_EQ(header.hostName, "lab7");
    EXPECT_TRUE(reading.end.whole);
}

TEST(LogReader, JoinsTheElementsOfAnInterruptedCall)
{
    const Reading reading = ReadBytes(LogOf(interrupted));
    EXPECT_EQ(Shown(reading.calls), "2 modeChange(newMode=CADI_EXECMODE_Bpt) -> \n"
                                    "1 CADIExecContinue(wait=true) -> return=CADI_STATUS_OK"
                                    " | status CADI_STATUS_OK\n");
    EXPECT_EQ(reading.calls[0].Parent(), 1u);
    EXPECT_EQ(reading.calls[0].entry, 1u);
    EXPECT_EQ(reading.calls[1].parts.size(), 2u);
    EXPECT_EQ(reading.calls[1].Took(), 33000);
    EXPECT_TRUE(reading.comments.empty());
}

TEST(LogReader, KnowsTheInnermostAncestorsOfACallWhereNoneReturns)
{
    std::string elements;
    for (int i = 1; i <= 100; ++i)
        elements += "    <A call_num=\"" + std::to_string(i) + "\" call_time=\"0.000001 s\"></A>\n";
    const Reading reading = ReadBytes(LogOf(elements));
    ASSERT_EQ(reading.calls.size(), 100u);
    EXPECT_TRUE(reading.calls[0].ancestors.empty());
    EXPECT_EQ(reading.calls[64].ancestors.size(), 64u);
    EXPECT_EQ(reading.calls[64].ancestors.front(), 1u);
    EXPECT_EQ(reading.calls[99].ancestors.size(), 64u);
    EXPECT_EQ(reading.calls[99].ancestors.front(), 36u);
    EXPECT_EQ(reading.calls[99].Parent(), 99u);
}

TEST(LogReader, GivesNoThreadToACallThatNamesNone)
{
    const Reading reading =
        ReadBytes(LogOf(std::string(interrupted) + "    <Lost call_num=\"9\"></Lost>\n"));
    ASSERT_EQ(reading.calls.size(), 3u);
    EXPECT_EQ(reading.calls[1].thread, 1u);
    EXPECT_EQ(reading.calls[2].thread, 0u);
}

/// A call that another one interrupts: when each begins and returns.
std::string TwoCalls(const std::string& outerBegin, const std::string& innerBegin,
                     const std::string& innerReturn, const std::string& outerReturn)
{
    return "    <A call_num=\"1\" call_time=\"" + outerBegin + " s\">\n    </A>\n" +
           "    <B call_num=\"2\" call_time=\"" + innerBegin + " s\">\n        <return_time>" +
           innerReturn + " s</return_time>\n    </B>\n" +
           "    <A call_num=\"1\">\n        <return_time>" + outerReturn + " s</return_time>\n    </A>\n";
}

TEST(LogReader, TellsInWhichCallsTheClockWasSetBack)
{
    // Which of B and A were open when a time came before the one in front of it.
    const auto setBack = [](const std::string& elements) {
        std::string names;
        for (const Call& call : ReadBytes(LogOf(elements)).calls)
            names += call.clockSetBack ? call.name : "";
        return names;
    };
    EXPECT_EQ(setBack(TwoCalls("1.0", "1.1", "1.2", "1.3")), "");
    EXPECT_EQ(setBack(TwoCalls("1.0", "1.0", "1.0", "1.0")), "");
    EXPECT_EQ(setBack(TwoCalls("1.0", "0.5", "0.6", "1.2")), "A");
    EXPECT_EQ(setBack(TwoCalls("1.0", "1.1", "0.6", "1.2")), "BA");
    EXPECT_EQ(setBack(TwoCalls("1.0", "1.1", "1.3", "1.2")), "A");
    EXPECT_EQ(setBack(TwoCalls("1.0", "4294967295.9", "1.1", "1.2")), "A");
    // Between two calls, none is open.
    EXPECT_EQ(setBack(TwoCalls("1.0", "1.1", "1.2", "1.3") + TwoCalls("0.1", "0.2", "0.3", "0.4")), "");
}

TEST(LogReader, TakesNoTimeFromAnElementThatIsLost)
{
    std::string log = LogOf(TwoCalls("1.0", "9.0", "9.1", "1.2"));
    log.insert(log.find("</B>") + 2, "-");
    const Reading reading = ReadBytes(log);
    ASSERT_EQ(reading.calls.size(), 1u);
    EXPECT_EQ(reading.calls[0].Took(), 200000000);
}

TEST(LogReader, ReadsTheSameWhateverThePieces)
{
    const std::string log = LogOf(interrupted);
    const std::string expected = Shown(ReadBytes(log).calls);
    for (std::size_t piece = 1; piece < 100; ++piece)
        EXPECT_EQ(Shown(ReadBytes(log, {}, piece).calls), expected) << piece;
}

TEST(LogReader, TellsWhereTheElementsStand)
{
    const std::string log = LogOf(interrupted);
    const Reading reading = ReadBytes(log);
    const Part& first = reading.calls[1].parts[0];
    const Part& second = reading.calls[1].parts[1];
    EXPECT_EQ(log.substr(std::size_t(first.begin), 35), "<CADIExecContinue call_num=\"1\"\n    ");
    EXPECT_EQ(log.substr(std::size_t(first.end) - 20, 20), " </CADIExecContinue>");
    EXPECT_EQ(log.substr(std::size_t(second.begin), 32), "<CADIExecContinue call_num=\"1\">\n");
    EXPECT_EQ(first.line, 7u);
}

TEST(LogReader, GivesACallThatNeverReturnedWhenTheLogEnds)
{
    const Reading reading = ReadBytes(LogOf("    <A call_num=\"1\" call_time=\"0.000001 s\">\n"
                                            "        <return_time>soon</return_time>\n    </A>\n"));
    EXPECT_EQ(Shown(reading.calls), "1 A(return_time=soon)\n");
}

TEST(LogReader, TellsANumberThatBeginsAgainAndABeginningThatIsLost)
{
    const std::string begun = "    <A call_num=\"1\" call_time=\"0.000001 s\"><return_time>0.000002 s"
                              "</return_time></A>\n";
    const std::string continued = "    <B call_num=\"2\"><return_time>0.000002 s</return_time></B>\n";
    const Reading reading = ReadBytes(LogOf(begun + begun + continued));
    EXPECT_EQ(Shown(reading.calls), "1 A() -> \n1#2 A() -> \n2 B() -> \n");
    EXPECT_FALSE(reading.calls[1].beginningLost);
    EXPECT_TRUE(reading.calls[2].beginningLost);
}

TEST(LogReader, TellsOfWhatBearsNoNumberInItsPlace)
{
    class Told : public LogHandler
    {
    public:
        void Misnumbered(std::string_view name, std::string_view number, const Part& place) override
        {
            text +=
                std::string(name) + " " + std::string(number) + " " + std::to_string(place.line) + "\n";
        }
        void Other(const Part& place) override { text += std::to_string(place.line) + "\n"; }
        std::string text;
    };
    std::string log = LogOf("");
    log.insert(log.find("</"), "    <A call_num=\"1x\" call_time=\"0.1 s\">\n    </A>\n    <B/>\n"
                               "    <C call_num=\"18446744073709551616\"/>\n    <D call_num=\"\"/>\n"
                               "    <E call_num=\"18446744073709551615\"/>\n");
    Told told;
    LogReader reader(told);
    reader.Feed(log);
    EXPECT_TRUE(reader.Finish().whole);
    EXPECT_EQ(told.text, "A 1x 7\n7\n9\nC 18446744073709551616 10\n10\nD  11\n11\n");
}

TEST(LogReader, KeepsWhatStandsBeforeACall)
{
    const Reading reading =
        ReadBytes(LogOf("    <disassembler>a &lt; b</disassembler>\n"
                        "    <note>\n        <text>c</text>\n    </note>\n"
                        "    <A call_num=\"1\" call_time=\"0.000001 s\">\n    </A>\n"
                        "    <A call_num=\"2\" call_time=\"0.000002 s\">\n    </A>\n"));
    ASSERT_EQ(reading.calls.size(), 2U);
    EXPECT_EQ(Shown(reading.calls[0].before), "disassembler=a < b note{text=c}");
    EXPECT_EQ(Shown(reading.calls[1].before), "");
}

}  // namespace
