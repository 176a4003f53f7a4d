// The grammar by which calls are chosen.

#include <gtest/gtest.h>

#include "reader/Reading.h"
#include "scrivel/CallFilter.h"

using namespace ScrivelReader;
using namespace ScrivelTest;

namespace
{

// 1 calls back 2, which calls 3; 4 is another thread's and fails; 5 never returns.
constexpr char session[] = R"(    <Continue call_num="1" call_time="0.001000 s" threadId="70">
    </Continue>
    <modeChange call_num="2" call_time="0.002000 s" threadId="70">
        <newMode>CADI_EXECMODE_Run</newMode>
    </modeChange>
    <MemRead call_num="3" call_time="0.003000 s" threadId="70" disassembler_address="0x0000000000008000">
        <start><location><spaceId>1</spaceId><addr>0x0000000000003000</addr></location></start>
        <bytes>4</bytes>
        <return_time>0.003500 s</return_time>
        <data><value>0xe8</value><value>0x03</value></data>
        <return>CADI_STATUS_OK</return>
    </MemRead>
    <modeChange call_num="2">
        <return_time>0.004000 s</return_time>
    </modeChange>
    <Continue call_num="1">
        <return_time>0.009000 s</return_time>
        <return>CADI_STATUS_OK</return>
    </Continue>
    <RegWrite call_num="4" call_time="0.010000 s" threadId="80">
        <reg><pc><regNumber>32</regNumber><bytes>00000000 00000000 00000000 00003000 </bytes></pc></reg>
        <return_time>0.010010 s</return_time>
        <return>CADI_STATUS_PermissionDenied</return>
    </RegWrite>
    <MemWrite call_num="5" call_time="0.011000 s" threadId="70">
        <text>two words</text>
    </MemWrite>
)";

/// The numbers of the calls that a filter leaves, in the order in which they end; or its error.
std::string Chosen(const FilterText& text)
{
    std::string error;
    const auto filter = CallFilter::Make(text, error);
    if (!filter)
        return error;
    std::string numbers;
    for (const Call& call : ReadBytes(LogOf(session)).calls)
        if (filter->Matches(call))
            numbers += (numbers.empty() ? "" : " ") + std::to_string(call.number);
    return numbers;
}

/// The same of one field of the filter.
std::string By(std::string FilterText::*field, const std::string& value)
{
    FilterText text;
    text.*field = value;
    return Chosen(text);
}

std::string Where(const std::string& expression)
{
    return By(&FilterText::where, expression);
}

TEST(CallFilter, LeavesEveryCallWhenNothingIsGiven)
{
    EXPECT_EQ(Chosen({}), "3 2 1 4 5");
}

TEST(CallFilter, ChoosesByNames)
{
    EXPECT_EQ(By(&FilterText::names, "Mem*"), "3 5");
    EXPECT_EQ(By(&FilterText::names, "Mem?ead,modeChange"), "3 2");
    EXPECT_EQ(By(&FilterText::names, "mem*"), "");
}

TEST(CallFilter, ChoosesByOutcome)
{
    FilterText failed;
    failed.failed = true;
    EXPECT_EQ(Chosen(failed), "4");
    FilterText open;
    open.open = true;
    EXPECT_EQ(Chosen(open), "5");
}

TEST(CallFilter, ChoosesByThread)
{
    EXPECT_EQ(By(&FilterText::threads, "T2"), "4");
    EXPECT_EQ(By(&FilterText::threads, "70"), "3 2 1 5");
    EXPECT_EQ(By(&FilterText::threads, "T1,80"), "3 2 1 4 5");
    EXPECT_EQ(By(&FilterText::threads, "one"), "\"one\" is no thread: T1, T2 or a threadId");
}

TEST(CallFilter, ChoosesByNumber)
{
    EXPECT_EQ(By(&FilterText::calls, "2..3"), "3 2");
    EXPECT_EQ(By(&FilterText::calls, "4.."), "4 5");
    EXPECT_EQ(By(&FilterText::calls, "..1,5"), "1 5");
    EXPECT_EQ(By(&FilterText::calls, "2-3"), "\"2-3\" is no range of calls: 55..68, 55.. or 68");
}

TEST(CallFilter, ChoosesByTime)
{
    EXPECT_EQ(By(&FilterText::from, "10ms"), "4 5");
    EXPECT_EQ(By(&FilterText::to, "0.002"), "2 1");
    EXPECT_EQ(By(&FilterText::slower, "1ms"), "2 1");
    EXPECT_EQ(By(&FilterText::slower, "500us"), "2 1");
    EXPECT_EQ(By(&FilterText::slower, "499us"), "3 2 1");
    EXPECT_EQ(By(&FilterText::slower, "soon"), "\"soon\" is no duration: 1ms, 20us or 0.5");
}

TEST(CallFilter, ChoosesWhatIsInsideACallAtAnyDepth)
{
    EXPECT_EQ(By(&FilterText::inside, "1"), "3 2");
    EXPECT_EQ(By(&FilterText::inside, "2"), "3");
}

TEST(CallFilter, ChoosesByTextAnywhere)
{
    EXPECT_EQ(By(&FilterText::grep, "two w"), "5");
    EXPECT_EQ(By(&FilterText::grep, "e803"), "3");
    EXPECT_EQ(By(&FilterText::grep, "Denied"), "4");
    EXPECT_EQ(By(&FilterText::grep, "spaceId"), "3");
}

TEST(CallFilter, AsksThatEverythingHolds)
{
    FilterText text;
    text.names = "Mem*";
    text.open = true;
    EXPECT_EQ(Chosen(text), "5");
}

TEST(CallFilter, ComparesFields)
{
    EXPECT_EQ(Where("name ~ Mem"), "3 5");
    EXPECT_EQ(Where("name !~ Mem and not open"), "2 1 4");
    EXPECT_EQ(Where("name = MemRead"), "3");
    EXPECT_EQ(Where("status != CADI_STATUS_OK"), "4");
    EXPECT_EQ(Where("status !~ OK"), "4");
    EXPECT_EQ(Where("not status = CADI_STATUS_OK and returned"), "2 4");
    EXPECT_EQ(Where("number>=4"), "4 5");
    EXPECT_EQ(Where("thread = T2 or thread = 80"), "4");
    EXPECT_EQ(Where("took > 1ms"), "2 1");
    EXPECT_EQ(Where("time < 0.003"), "2 1");
    EXPECT_EQ(Where("return <= 3500us"), "3");
    EXPECT_EQ(Where("parent = 1"), "2");
    EXPECT_EQ(Where("address = 0x8000"), "3");
    EXPECT_EQ(Where("failed"), "4");
}

TEST(CallFilter, ComparesArgumentsAndResultsByPath)
{
    EXPECT_EQ(Where("arg.bytes = 4"), "3");
    EXPECT_EQ(Where("arg.addr = 0x3000"), "3");
    EXPECT_EQ(Where("arg.location.addr = 12288"), "3");
    EXPECT_EQ(Where("arg.start.addr = 12288"), "");
    EXPECT_EQ(Where("arg.pc.bytes = 0x3000"), "4");
    EXPECT_EQ(Where("result.data = e803"), "3");
    EXPECT_EQ(Where("arg.text = 'two words'"), "5");
    EXPECT_EQ(Where("arg.none = 1"), "");
}

TEST(CallFilter, BindsAndTighterThanOr)
{
    EXPECT_EQ(Where("number = 1 or number = 2 and failed"), "1");
    EXPECT_EQ(Where("(number = 1 or number = 4) and failed"), "4");
    EXPECT_EQ(Where("not (number = 1 or failed)"), "3 2 5");
}

/// So many tests that to copy those before each one would take far too long.
std::string Chain(const std::string& joining, const std::string& test)
{
    std::string expression = test;
    for (int i = 0; i < 200000; ++i) {
        expression += joining + test;
    }
    return expression;
}

TEST(CallFilter, TakesChainsOfAnyLength)
{
    EXPECT_EQ(Where(Chain(" or ", "failed")), "4");
    EXPECT_EQ(Where(Chain(" and ", "failed")), "4");
}

TEST(CallFilter, RepeatsNoMoreOfALongTextThanItsBeginning)
{
    const std::string begin = "nam = \"" + std::string(192, 'a');
    EXPECT_EQ(Where(begin + "\u00e9\""), "there is no field \"nam\" in \"" + begin + "...\"");
    EXPECT_EQ(By(&FilterText::calls, std::string(201, 'x')),
              "\"" + std::string(200, 'x') + "...\" is no range of calls: 55..68, 55.. or 68");
}

TEST(CallFilter, SaysWhatItDoesntUnderstand)
{
    EXPECT_EQ(Where("nam = 1"), "there is no field \"nam\" in \"nam = 1\"");
    EXPECT_EQ(Where("name"), "a comparison is missing after \"name\" in \"name\"");
    EXPECT_EQ(Where("name ="), "a value is missing after \"name\" in \"name =\"");
    EXPECT_EQ(Where("name = a b"), "unexpected \"b\" in \"name = a b\"");
    EXPECT_EQ(Where("(failed"), "a ) is missing in \"(failed\"");
    EXPECT_EQ(Where("failed and"), "a field is missing at the end in \"failed and\"");
    EXPECT_EQ(Where("name = 'a"), "a quote is not closed in \"name = 'a\"");
    EXPECT_EQ(Where("took > long"),
              "\"long\" is no time to compare with: 1ms, 20us, 0.5 in \"took > long\"");
    EXPECT_EQ(Where(std::string(100000, '(')).substr(0, 17), "nested too deeply");
}

TEST(LogNumbers, HaveAnyBase)
{
    EXPECT_EQ(ParseLogNumber("42"), 42u);
    EXPECT_EQ(ParseLogNumber("0x2a"), 42u);
    EXPECT_EQ(ParseLogNumber("00000000 00000000 00000000 0000002a "), 42u);
    EXPECT_EQ(ParseLogNumber("00000000 00000000 00000001 00000000 "), std::uint64_t(1) << 32);
    EXPECT_EQ(ParseLogNumber("00000000 00000000 00000000 00000000 "), 0u);
    EXPECT_EQ(ParseLogNumber("18446744073709551615"), ~std::uint64_t(0));
    EXPECT_EQ(ParseLogNumber("18446744073709551616"), std::nullopt);
    EXPECT_EQ(ParseLogNumber("00000001 00000000 00000000 00000000 "), std::nullopt);
    for (const char* const text :
         {"", "0x", "x", "1 ", "-1", "00000000 00000000 00000000 0000002ax",
          "00000000 00000000 0000000  0000002a ", "00000000x00000000 00000000 0000002a "})
        EXPECT_EQ(ParseLogNumber(text), std::nullopt) << text;
}

TEST(Durations, HaveUnits)
{
    EXPECT_EQ(ParseDuration("1ms"), 1000000);
    EXPECT_EQ(ParseDuration("1.5us"), 1500);
    EXPECT_EQ(ParseDuration("-0.1"), -100000000);
    EXPECT_EQ(ParseDuration("2s"), 2000000000);
    for (const char* const text : {"", "ms", "1h", "1.2.3", "1-2", "-", ".", "99999999999999999999"})
        EXPECT_EQ(ParseDuration(text), std::nullopt) << text;
}

}  // namespace
