// Two calls of two runs, value by value.

#include "scrivel/Comparison.h"

#include "reader/Reading.h"

#include <gtest/gtest.h>

using namespace ScrivelReader;

namespace ScrivelTest
{
namespace
{

/// A call with a time of its own, and its arguments and results.
Call CallWith(const std::string& arguments, const std::string& results, const std::string& time = "1")
{
    const Reading reading = ReadBytes(LogOf("    <A call_num=\"" + time + "\"\n     call_time=\"0.00000" +
                                            time + " s\"\n     threadId=\"" + time + "\">\n" + arguments +
                                            "        <return_time>0.00000" + time + " s</return_time>\n" +
                                            results + "    </A>\n"));
    EXPECT_EQ(reading.calls.size(), 1U);
    return reading.calls.at(0);
}

/// result.x: 1 > 2, one line a difference.
std::string Shown(const std::vector<Difference>& differences)
{
    std::string text;
    for (const Difference& difference : differences) {
        text += difference.path + ": " + difference.left.value_or("none") + " > " +
                difference.right.value_or("none") + "\n";
    }
    return text;
}

std::string Compared(const Call& left, const Call& right, const std::vector<std::string>& ignored = {})
{
    const ComparisonRules rules(ignored);
    const std::string text = Shown(rules.Compare(left, right, {}));
    EXPECT_EQ(rules.Of(left).whole == rules.Of(right).whole, text.empty()) << text;
    return text;
}

constexpr char address[] = "        <startAddress>\n            <location>\n"
                           "                <spaceId>1</spaceId>\n"
                           "                <addr>0x0000000140000000</addr>\n"
                           "            </location>\n        </startAddress>\n";

TEST(Comparison, LeavesTimesThreadsAndNumbersOut)
{
    EXPECT_EQ(Compared(CallWith("<x>1</x>", "<y>2</y>", "1"), CallWith("<x>1</x>", "<y>2</y>", "2")), "");
}

TEST(Comparison, NamesThePathOfAValue)
{
    EXPECT_EQ(Compared(CallWith("<x><y>1</y></x>", "<z>2</z>"), CallWith("<x><y>3</y></x>", "<z>4</z>")),
              "arg.x.y: 1 > 3\nresult.z: 2 > 4\n");
}

TEST(Comparison, NumbersElementsOfOneName)
{
    EXPECT_EQ(Compared(CallWith("<x><y>1</y><y>2</y></x>", ""), CallWith("<x><y>1</y><y>3</y></x>", "")),
              "arg.x.y[1]: 2 > 3\n");
}

TEST(Comparison, NamesAnItemThatIsMissingAndNoneAfterIt)
{
    EXPECT_EQ(Compared(CallWith("<x><y>1</y><y>2</y><y>3</y></x>", ""),
                       CallWith("<x><y>1</y><y>3</y></x>", "")),
              "arg.x.y[1]: 2 > none\n");
    EXPECT_EQ(Compared(CallWith("<x>1</x>", ""), CallWith("<x>1</x><y><z>2</z></y>", "")),
              "arg.y: none > {z=2}\n");
}

TEST(Comparison, TellsARegistersBytesFromItsOtherValues)
{
    const auto with = [](const std::string& number, const std::string& bytes) {
        return CallWith("", "<reg><a0><regNumber>" + number + "</regNumber><bytes>" + bytes +
                                "</bytes></a0></reg>");
    };
    const auto differences =
        ComparisonRules().Compare(with("10", "00001002"), with("10", "00001006"), {});
    EXPECT_EQ(Shown(differences), "result.reg.a0: 00001002 > 00001006\n");
    EXPECT_EQ(differences.at(0).kind, Difference::Kind::Register);
    EXPECT_EQ(Compared(with("10", "00001002"), with("11", "00001002")),
              "result.reg.a0.regNumber: 10 > 11\n");
}

TEST(Comparison, TakesAnArrayOfBytesForOneValue)
{
    const auto differences = ComparisonRules().Compare(
        CallWith("", "<data><value>0x41</value><value>0x42</value></data>"),
        CallWith("", "<data><value>0x41</value><value>0x43</value></data>"), {});
    EXPECT_EQ(Shown(differences), "result.data: AB > AC\n");
    EXPECT_EQ(differences.at(0).kind, Difference::Kind::Bytes);
}

TEST(Comparison, TellsACallThatHasNotReturned)
{
    const Reading open = ReadBytes(LogOf("    <A call_num=\"1\"\n     call_time=\"0.1 s\">\n    </A>\n"));
    EXPECT_EQ(Compared(CallWith("", ""), open.calls.at(0)), "returned: yes > no\n");
}

TEST(Comparison, LeavesOutWhatItIsTold)
{
    const Call left = CallWith("<x><y>1</y></x>", "<y>2</y><z>3</z>");
    const Call right = CallWith("<x><y>4</y></x>", "<y>5</y><z>3</z>");
    EXPECT_EQ(Compared(left, right, {"y"}), "");
    EXPECT_EQ(Compared(left, right, {"arg.y"}), "result.y: 2 > 5\n");
    EXPECT_EQ(Compared(left, right, {"x.y"}), "result.y: 2 > 5\n");
    EXPECT_EQ(Compared(left, right, {"result.y", "arg.x"}), "");
}

TEST(Comparison, TakesAddressesOfTheTargetForNoPointers)
{
    EXPECT_TRUE(ComparisonRules().Of(CallWith(address, "")).pointers.empty());
    EXPECT_EQ(ComparisonRules().Of(CallWith("<p>0x0000000140000000</p>", "")).pointers.size(), 1U);
}

// ---- Pointers -------------------------------------------------------------------------------------

constexpr std::uint64_t a = 0x7f0000000010;
constexpr std::uint64_t b = 0x7f0000000020;
constexpr std::uint64_t x = 0x7f0000000110;
constexpr std::uint64_t y = 0x7f0000000120;

PointerRenaming Settled(const std::vector<std::pair<std::uint64_t, std::uint64_t>>& votes)
{
    PointerRenaming renaming;
    std::uint64_t place = 0;
    for (const auto& [left, right] : votes) {
        renaming.Vote({left}, {right}, place++);
    }
    renaming.Settle();
    return renaming;
}

TEST(PointerRenaming, AcceptsPointersThatStandForOneAnotherThroughout)
{
    const PointerRenaming renaming = Settled({{a, x}, {b, y}, {a, x}});
    EXPECT_TRUE(renaming.Same(a, x));
    EXPECT_TRUE(renaming.Same(b, y));
    EXPECT_FALSE(renaming.Same(a, y));
    ASSERT_EQ(renaming.All().size(), 2U);
    EXPECT_EQ(renaming.All()[0].left, a);
    EXPECT_EQ(renaming.All()[0].places, (std::vector<std::uint64_t>{0, 2}));
}

TEST(PointerRenaming, DoesNotLetTwoStandForOne)
{
    const PointerRenaming renaming = Settled({{b, x}, {a, x}, {a, x}});
    EXPECT_TRUE(renaming.Same(a, x));
    EXPECT_FALSE(renaming.Same(b, x));
    EXPECT_FALSE(renaming.Same(x, x));
}

TEST(PointerRenaming, TellsNothingOfPointersThatStayedAsTheyWere)
{
    EXPECT_TRUE(Settled({{a, a}, {b, b}}).All().empty());
}

TEST(PointerRenaming, ChangesNoFingerprint)
{
    const ComparisonRules rules;
    const Call left = CallWith("<p>0x00007f0000000010</p>", "");
    const Call right = CallWith("<p>0x00007f0000000110</p>", "");
    EXPECT_EQ(rules.Of(left).whole, rules.Of(right).whole);
    EXPECT_EQ(Shown(rules.Compare(left, right, Settled({{a, x}}))), "");
    EXPECT_EQ(Shown(rules.Compare(left, right, Settled({{a, y}}))),
              "arg.p: 0x00007f0000000010 > 0x00007f0000000110\n");
}

}  // namespace
}  // namespace ScrivelTest
