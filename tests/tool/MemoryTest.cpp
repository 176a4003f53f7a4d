// How much memory scrivel takes of logs that are much larger: no more than of a small one.

#include "tool/Program.h"
#include "tool/Session.h"

#include <tuple>

using namespace ScrivelTest;

namespace
{

constexpr long megabyte = 1024;  // in KiB, as the system counts

class Memory : public ToolTest
{
protected:
    /// The most memory that the program had, in KiB.
    long MemoryOf(const std::string& arguments, int status = 0) const
    {
        const Peak peak = PeakOf(arguments);
        EXPECT_EQ(peak.status, status);
        return peak.memory;
    }

    /// With a sanitizer, whose share differs from version to version, it may be twice as much.
    static long AtMost(long most) { return memoryIsOurOwn ? most : 2 * most; }

    /// How much more it needs for one command on another log.
    long Growth(const std::string& command, const std::string& small, const std::string& large) const
    {
        return MemoryOf(command + " " + large) - MemoryOf(command + " " + small);
    }
};

std::string CallsWithinAnOpenOne(int count)
{
    std::string elements = "    <Run call_num=\"1\"\n     call_time=\"0.000001 s\">\n    </Run>\n";
    for (int number = 2; number < count; ++number) {
        elements += "    <CADIMemRead call_num=\"" + std::to_string(number) +
                    "\"\n     call_time=\"0.000001 s\">\n        <text>" + std::string(40, 'x') +
                    "</text>\n        <return_time>0.000002 s</return_time>\n    </CADIMemRead>\n";
    }
    return LogOf(elements + "    <Run call_num=\"1\">\n        <return_time>0.500000 s</return_time>\n"
                            "    </Run>\n");
}

std::string CallWithBytes(int count)
{
    std::string items;
    for (int i = 0; i < count; ++i) {
        items += i % 2 == 0 ? "            <value>0x1f</value>\n" : "            <value>0xa0</value>\n";
    }
    return LogOf("    <A call_num=\"1\"\n     call_time=\"0.000001 s\">\n        <data>\n" + items +
                 "        </data>\n        <return_time>0.000002 s</return_time>\n    </A>\n");
}

TEST_F(Memory, DoesNotGrowWithTheCallsThatAnOpenOneHolds)
{
    Write("small.xml", LogOf(session));
    Write("large.xml", CallsWithinAnOpenOne(100000));
    EXPECT_LT(Growth("calls", "small.xml", "large.xml"), AtMost(10 * megabyte));
    EXPECT_LT(Growth("calls --json", "small.xml", "large.xml"), AtMost(10 * megabyte));
}

TEST_F(Memory, DoesNotGrowWithTheAddressesOfALog)
{
    std::string elements;
    for (int number = 1; number <= 100000; ++number)
        elements += "    <W call_num=\"" + std::to_string(number) +
                    "\" call_time=\"0.000001 s\"><at><spaceId>1</spaceId><addr>" +
                    std::to_string(number) + "</addr></at></W>\n";
    Write("small.xml", LogOf(session));
    Write("large.xml", LogOf(elements));
    EXPECT_LT(Growth("show --scan 2", "small.xml", "large.xml"), AtMost(12 * megabyte));
}

/// An argument of half a megabyte in each part of a call that others interrupt.
std::string CallInParts(int count)
{
    std::string elements;
    for (int part = 0; part < count; ++part) {
        elements += "    <Run call_num=\"1\"" +
                    std::string(part == 0 ? "\n     call_time=\"0.000001 s\"" : "") +
                    ">\n        <text>" + std::string(500 * 1000, 'x') +
                    "</text>\n    </Run>\n    <A call_num=\"" + std::to_string(part + 2) +
                    "\"\n     call_time=\"0.000001 s\">\n        <return_time>0.000002 "
                    "s</return_time>\n    </A>\n";
    }
    return LogOf(elements + "\n<!-- Log ended -->\n\n");
}

TEST_F(Memory, HoldsACallThatIsFollowedOnce)
{
    Write("parts.xml", CallInParts(16));
    const long read = MemoryOf("calls --json -n None parts.xml", 1);
    EXPECT_LT(MemoryOf("follow --json -n None parts.xml", 1) - read, AtMost(4 * megabyte));
}

TEST_F(Memory, DoesNotGrowWithAnArrayInOneCall)
{
    Write("small.xml", CallWithBytes(10));
    Write("large.xml", CallWithBytes(1300000));  // 40 MB
    EXPECT_LT(Growth("calls", "small.xml", "large.xml"), AtMost(4 * megabyte));
}

TEST_F(Memory, DoesNotGrowWithWhatAKilledFlushWasToWrite)
{
    std::string text;
    while (text.size() < 20 * 1000 * 1000)
        text += "        <value>0x1f</value>\n";
    const std::string log = LogOf(session);
    const std::size_t rootEnd = log.rfind("</run-4242>");
    Write("small.xml", log);
    Write("after.xml", log + "<?x " + text + "<?x ?>");
    Write("instead.xml", std::string(log).insert(rootEnd, "<?x " + text + "?>"));
    Write("section.xml", std::string(log).insert(rootEnd, "<![CDATA[" + text + "]]>"));
    for (const char* const killed : {"after.xml", "instead.xml", "section.xml"}) {
        for (const char* const command : {"check", "calls", "recover --force -o fixed.xml"}) {
            EXPECT_LT(Growth(command, "small.xml", killed), AtMost(6 * megabyte)) << command << killed;
        }
        EXPECT_EQ(Run({"recover", "--force", "-o", "fixed.xml", killed}).status, 0);
        EXPECT_TRUE(Read("fixed.xml") == Read(killed)) << killed;
    }
}

/// A call that reads memory at 0x1000, and brings an array of such items.
std::string CallWithItems(const std::string& item, int count)
{
    std::string log =
        "    <CADIMemRead call_num=\"1\"\n     call_time=\"0.000001 s\">\n        <startAddress>\n"
        "            <spaceId>1</spaceId>\n            <addr>0x1000</addr>\n"
        "        </startAddress>\n        <bytes>4</bytes>\n        <return_time>0.000002 "
        "s</return_time>\n"
        "        <data>\n";
    for (int i = 0; i < count; ++i) {
        log += "            " + item + "\n";
    }
    return LogOf(log + "        </data>\n    </CADIMemRead>\n");
}

/// Of every fifth call the value is another one in the second run.
std::string CallsOfARun(int count, int run)
{
    std::string elements;
    for (int number = 1; number <= count; ++number) {
        const int value = number * 7 + (number % 5 == 0 ? run : 0);
        elements += "    <CADIRegRead call_num=\"" + std::to_string(number) +
                    "\"\n     call_time=\"0.000001 s\">\n        <regNumber>" + std::to_string(number) +
                    "</regNumber>\n        <return_time>0.000002 s</return_time>\n        <value>" +
                    std::to_string(value) + "</value>\n    </CADIRegRead>\n";
    }
    return LogOf(elements);
}

TEST_F(Memory, GrowsByLessThan200BytesForTwoCallsThatAreCompared)
{
    constexpr int count = 100000;
    for (const int run : {1, 2}) {
        Write("small-" + std::to_string(run) + ".xml", CallsOfARun(10, run));
        Write("large-" + std::to_string(run) + ".xml", CallsOfARun(count, run));
    }
    const long small = MemoryOf("diff small-1.xml small-2.xml", 1);
    const long large = MemoryOf("diff large-1.xml large-2.xml", 1);
    EXPECT_LT(large - small, AtMost(count * 200L / 1024));
}

TEST_F(Memory, HoldsTheBytesOfAnArrayAndNoElements)
{
    Write("small.xml", CallWithBytes(10));
    Write("large.xml", CallWithBytes(1300000));
    EXPECT_LT(Growth("show --xml 1", "small.xml", "large.xml"), AtMost(12 * megabyte));
    EXPECT_LT(Growth("calls --json", "small.xml", "large.xml"), AtMost(32 * megabyte));
}

constexpr char reg[] =
    "<x><regNumber>5</regNumber><bytes>00000000 00000000 00000000 00000001 </bytes></x>";

TEST_F(Memory, HoldsTheTextsOfAnArrayAndNoObjects)
{
    // 40 MB each; the limits are the text that is written, and in memory the elements of registers.
    const std::tuple<std::string, int, long> arrays[] = {{"<value>12345</value>", 1250000, 64 * megabyte},
                                                         {reg, 420000, 160 * megabyte}};
    for (const auto& [item, count, most] : arrays) {
        Write("small.xml", CallWithItems(item, 10));
        Write("large.xml", CallWithItems(item, count));
        EXPECT_LT(Growth("calls --json", "small.xml", "large.xml"), AtMost(most)) << item;
        EXPECT_LT(Growth("show --json 1", "small.xml", "large.xml"), AtMost(most)) << item;
        EXPECT_LT(Growth("export --to jsonl", "small.xml", "large.xml"), AtMost(most)) << item;
        EXPECT_LT(Growth("report --force -o report", "small.xml", "large.xml"), AtMost(most)) << item;
    }
}

TEST_F(Memory, KeepsOfAnArrayWhatIsKnownOfTheTarget)
{
    // 40 MB each: bytes, numbers, and registers.
    const std::pair<std::string, int> arrays[] = {
        {"<value>0x1f</value>", 1300000}, {"<value>12345</value>", 1250000}, {reg, 420000}};
    for (const auto& [item, count] : arrays) {
        Write("small.xml", CallWithItems(item, 10));
        Write("large.xml", CallWithItems(item, count));
        EXPECT_LT(Growth("history 0x1000", "small.xml", "large.xml"), AtMost(32 * megabyte)) << item;
        EXPECT_LT(Growth("state", "small.xml", "large.xml"), AtMost(32 * megabyte)) << item;
        EXPECT_LT(Growth("export --to chrome", "small.xml", "large.xml"), AtMost(8 * megabyte)) << item;
    }
}

}  // namespace
