// One call whole.

#include <gmock/gmock.h>

#include "tool/Program.h"
#include "tool/Session.h"

using namespace ScrivelTest;
using testing::HasSubstr;
using testing::Not;

namespace
{

class Show : public ToolTest
{
protected:
    Show() { Write("run.xml", LogOf(session)); }
};

TEST_F(Show, TellsEverythingAboutACall)
{
    EXPECT_EQ(Run({"show", "4", "run.xml"}).out, R"(call 4  CADIMemWrite  NOT RETURNED
  entered   0.012560
  thread    T1, 1234
  log       run.xml:40, bytes 1089 to 1563
arguments
  startAddress
    overlay  0
    location
      spaceId    1
      spaceName  Memory
      addr       0x0000000040000000
  bytes  4
  data   2 bytes
    0000  e8 03                                             ..
)");
}

TEST_F(Show, TellsThatTheClockWasSetBackMeanwhile)
{
    Write("back.xml", LogOf(setBackSession));
    EXPECT_THAT(Run({"show", "1", "back.xml"}).out,
                HasSubstr("\n  returned  1.200000\n  clock     was set back meanwhile\n"));
    EXPECT_THAT(Run({"show", "2", "back.xml"}).out,
                HasSubstr("\n  returned  0.600000 after 100 ms\n  thread    "));
}

TEST_F(Show, NamesTheCallThatACallbackCameFrom)
{
    EXPECT_THAT(Run({"show", "2", "run.xml"}).out, HasSubstr("\n  within    call 1\n"));
}

TEST_F(Show, PrintsTheElementsAsTheyStand)
{
    EXPECT_EQ(Run({"show", "1", "--xml", "run.xml"}).out, R"(    <CADIExecContinue call_num="1"
     call_time="0.000011 s"
     threadId="1234">
    </CADIExecContinue>
    <CADIExecContinue call_num="1">
        <return_time>0.012544 s</return_time>
        <return>CADI_STATUS_OK</return>
    </CADIExecContinue>
)");
}

TEST_F(Show, ReadsStandardInput)
{
    const Outcome outcome = Run({"show", "1", "--xml", "-"}, LogOf(session));
    EXPECT_EQ(outcome.out, Run({"show", "1", "--xml", "run.xml"}).out);
    EXPECT_EQ(outcome.status, 0);
}

TEST_F(Show, FindsACallInALogThatWasReformatted)
{
    Write("flat.xml", "<run-1><A call_num='7' call_time='0.000001 s'><a>1</a></A></run-1>");
    EXPECT_EQ(Run({"show", "7", "--json", "flat.xml"}).out,
              R"({"schema":1,"call":7,"name":"A","thread":null,"call_time":1e-06,"return_time":null,)"
              R"("status":null,"parent":null,"parts":1,"arguments":[{"name":"a","value":"1"}],)"
              R"("results":[],"occurrence":1,"offset":7,"log":"flat.xml"})"
              "\n");
}

/// A log of one call, with an element within an element, so many of them.
std::string DeepLog(int depth, const std::string& beside)
{
    std::string begin;
    std::string end;
    for (int i = 0; i < depth; ++i) {
        begin += "<a>";
        end.insert(0, i + 1 == depth ? beside + "</a>" : "</a>");
    }
    return LogOf("    <A call_num=\"1\"\n     call_time=\"0.000001 s\">" + begin + end + "</A>\n");
}

TEST_F(Show, MarksElementsThatLieTooDeep)
{
    Write("deep.xml", DeepLog(300, ""));
    EXPECT_THAT(Run({"show", "1", "deep.xml"}).out, testing::EndsWith(" a  ...\n"));
    const std::string json = Run({"show", "1", "--json", "deep.xml"}).out;
    EXPECT_THAT(json, HasSubstr(R"({"name":"a","children":[],"cut":true}]})"));
    EXPECT_EQ(Run({"calls", "--json", "deep.xml"}).out, json);

    Write("flat.xml", DeepLog(10, "<b>\n</b>"));
    EXPECT_THAT(Run({"show", "1", "flat.xml"}).out, testing::EndsWith(" b  (none)\n"));
    EXPECT_THAT(Run({"show", "1", "--json", "flat.xml"}).out, Not(HasSubstr("cut")));
}

TEST_F(Show, MarksWhatIsLeftOutBesideOtherElements)
{
    Write("deep.xml", DeepLog(256, "text<b>1</b>"));
    EXPECT_THAT(Run({"show", "1", "deep.xml"}).out,
                testing::ContainsRegex("\n +a\n( +)#text  text\n +\\.\\.\\.\n$"));
    EXPECT_THAT(Run({"show", "1", "--json", "deep.xml"}).out,
                HasSubstr(R"("children":[{"name":"#text","value":"text"}],"cut":true}]})"));
}

TEST_F(Show, TellsThatACallIsntThere)
{
    const Outcome outcome = Run({"show", "99", "run.xml"});
    EXPECT_EQ(outcome.error, "scrivel: there is no call 99\n");
    EXPECT_EQ(outcome.status, 1);
}

/// A log whose calls fill megabytes: number `continued` goes on far after its beginning.
std::string LongLog(int count, int continued)
{
    std::string elements;
    for (int number = 1; number <= count; ++number) {
        const bool isLong = number == continued;
        elements += "    <A call_num=\"" + std::to_string(number) +
                    "\"\n     call_time=\"0.000002 s\"\n" + "     threadId=\"" + (isLong ? "1" : "2") +
                    "\">\n        <text>" + std::string(200, 'x') + "</text>\n" +
                    (isLong ? "" : "        <return_time>0.000002 s</return_time>\n") + "    </A>\n";
    }
    return LogOf(elements + "    <A call_num=\"" + std::to_string(continued) +
                 "\">\n        <return_time>0.500000 s</return_time>\n    </A>\n");
}

TEST_F(Show, FindsEveryCallOfALongLog)
{
    Write("long.xml", LongLog(5000, 100));
    for (const int number : {1, 2, 99, 101, 2500, 4999, 5000}) {
        const std::string out = Run({"show", std::to_string(number), "long.xml"}).out;
        EXPECT_THAT(out, testing::StartsWith("call " + std::to_string(number) + "  A\n"));
        EXPECT_THAT(out, HasSubstr("returned  0.000002"));
    }
    EXPECT_THAT(Run({"show", "100", "long.xml"}).out, HasSubstr("\n  returned  0.500000 after 500 ms\n"));
    EXPECT_EQ(Run({"show", "5001", "long.xml"}).status, 1);
}

TEST_F(Show, FindsTheSecondCallOfANumber)
{
    std::string log = LongLog(5000, 100);
    const std::string second = "    <B call_num=\"7\"\n     call_time=\"0.000003 s\">\n"
                               "        <return_time>0.000004 s</return_time>\n    </B>\n";
    log.insert(log.rfind("</run-4242>"), second);
    Write("long.xml", log);
    EXPECT_THAT(Run({"show", "7", "long.xml"}).out, testing::StartsWith("call 7  A\n"));
    EXPECT_THAT(Run({"show", "7#1", "long.xml"}).out, testing::StartsWith("call 7  A\n"));
    const Outcome outcome = Run({"show", "7#2", "long.xml"});
    EXPECT_THAT(outcome.out, testing::StartsWith("call 7#2  B\n  entered   0.000003\n"));
    EXPECT_EQ(outcome.out.find("call 7  A"), std::string::npos);
    EXPECT_EQ(outcome.status, 0);

    EXPECT_EQ(Run({"show", "7#3", "long.xml"}).error, "scrivel: there is no call 7#3\n");
    EXPECT_EQ(Run({"show", "7#3", "long.xml"}).status, 1);
    for (const char* const number : {"7#", "7#0", "#2", "x", "7 ", "-7", "7#2#2"}) {
        const Outcome unclear = Run({"show", "--", number, "run.xml"});
        EXPECT_EQ(unclear.status, 2) << number;
        EXPECT_THAT(unclear.error, HasSubstr("is no number of a call")) << number;
    }
    EXPECT_EQ(Run({"show", "7#", "run.xml"}).error,
              "scrivel: \"7#\" is no number of a call: 68, or 68#2 for the second one of it\n");
}

TEST_F(Show, TellsOfALongLogWhatOnlyTheWholeOfItTells)
{
    Write("long.xml", LongLog(5000, 100));
    const std::string near = Run({"show", "4000", "long.xml"}).out;
    EXPECT_THAT(near, HasSubstr("\n  thread    2\n  log       long.xml, bytes "));
    EXPECT_THAT(near, testing::EndsWith("\nthe calls around it were read; --scan reads the whole log for "
                                        "line, thread, parent and other calls of its number\n"));
    EXPECT_THAT(Run({"show", "4000", "--json", "long.xml"}).out, HasSubstr("\"scanned\":false"));

    const std::string scanned = Run({"show", "4000", "--scan", "long.xml"}).out;
    EXPECT_THAT(scanned, HasSubstr("\n  thread    T1, 2\n  log       long.xml:"));
    EXPECT_THAT(scanned, Not(HasSubstr("--scan")));
}

/// The same, in which another call was entered before one of them, and never returned.
std::string LongLogWith(const std::string& open, int before)
{
    std::string log = LongLog(5000, 100);
    log.insert(log.find("    <A call_num=\"" + std::to_string(before) + "\""),
               "    <B call_num=\"" + open +
                   "\"\n     call_time=\"0.000001 s\"\n     threadId=\"2\">\n    </B>\n");
    return log;
}

TEST_F(Show, ClaimsNoParentWhenOnlyTheWholeLogTells)
{
    Write("long.xml", LongLogWith("0", 1));
    const std::string near = Run({"show", "4000", "--json", "long.xml"}).out;
    EXPECT_THAT(near, HasSubstr("\"scanned\":false"));
    EXPECT_THAT(near, Not(HasSubstr("\"parent\"")));
    const std::string scanned = Run({"show", "4000", "--json", "--scan", "long.xml"}).out;
    EXPECT_THAT(scanned, HasSubstr("\"parent\":0,"));
    EXPECT_THAT(scanned, Not(HasSubstr("\"scanned\"")));
}

TEST_F(Show, NamesAParentThatIsNear)
{
    Write("long.xml", LongLogWith("3999", 4000));
    const std::string near = Run({"show", "4000", "--json", "long.xml"}).out;
    EXPECT_THAT(near, HasSubstr("\"parent\":3999,"));
    EXPECT_THAT(near, HasSubstr("\"scanned\":false"));
}

TEST_F(Show, FindsEveryCallOfANumberByScanning)
{
    Write("long.xml", LongLog(5000, 100).replace(LongLog(5000, 100).find("call_num=\"5000\""), 15,
                                                 "call_num=\"700\""));
    EXPECT_THAT(Run({"show", "700", "long.xml"}).out, testing::StartsWith("call 700  A\n"));
    EXPECT_THAT(Run({"show", "700", "--scan", "long.xml"}).out, HasSubstr("\ncall 700#2  A\n"));
}

TEST_F(Show, ShowsTheCallsThatTheFilterLeaves)
{
    const std::string log = LongLog(5000, 100);
    Write("long.xml", std::string(log).replace(log.find("call_num=\"5000\""), 15, "call_num=\"100\""));
    EXPECT_THAT(Run({"show", "100", "long.xml", "-t", "T2"}).out, testing::StartsWith("call 100  A\n"));
    EXPECT_THAT(Run({"show", "100", "long.xml", "-t", "T1"}).out, testing::StartsWith("call 100#2  A\n"));
    EXPECT_EQ(Run({"show", "100", "long.xml", "-t", "T3"}).status, 1);
}

TEST_F(Show, TellsThatTheFilterLeavesOutACall)
{
    EXPECT_EQ(Run({"show", "1", "-n", "None", "run.xml"}).error,
              "scrivel: there is no call 1 that the filter leaves\n");
    EXPECT_EQ(Run({"show", "99", "-n", "None", "run.xml"}).error, "scrivel: there is no call 99\n");
}

TEST_F(Show, NamesTheFirstOtherCallsOfAPlace)
{
    const auto call = [](int number, const std::string& address) {
        return "    <W call_num=\"" + std::to_string(number) +
               "\" call_time=\"0.000001 s\"><at><spaceId>1</spaceId><addr>" + address +
               "</addr></at><return_time>0.000002 s</return_time></W>\n";
    };
    std::string calls;
    for (int number = 1; number <= 10; ++number)
        calls += call(number, "0x10");
    Write("ten.xml", LogOf(calls + call(11, "0x20")));
    EXPECT_THAT(Run({"show", "5", "--scan", "ten.xml"}).out,
                HasSubstr("also in\n  1:0x10  #1 #2 #3 #4 #6 #7 #8 #9 #10\n"));
    Write("more.xml", LogOf(calls + call(11, "0x10") + call(12, "0x10")));
    EXPECT_THAT(Run({"show", "12", "--scan", "more.xml"}).out,
                HasSubstr("also in\n  1:0x10  #1 #2 #3 #4 #5 #6 #7 #8 #9 #10 and 1 more\n"));
    std::string addresses;
    for (int number = 100; number < 20000; ++number)
        addresses += call(number, std::to_string(number));
    Write("addresses.xml", LogOf(calls + addresses));
    EXPECT_THAT(Run({"show", "5", "--scan", "addresses.xml"}).out,
                HasSubstr("also in, as far as there was room\n  1:0x10  #1 "));
}

}  // namespace
