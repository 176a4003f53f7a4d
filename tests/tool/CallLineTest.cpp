// The pieces of a call's line.

#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "CallLine.h"

using namespace ScrivelReader;
using namespace ScrivelTool;

namespace
{

TEST(CallLines, ShowDurationsInTheUnitThatFits)
{
    EXPECT_EQ(DurationText(0), "0 us");
    EXPECT_EQ(DurationText(999000), "999 us");
    EXPECT_EQ(DurationText(1000000), "1.00 ms");
    EXPECT_EQ(DurationText(12554000), "12.55 ms");
    EXPECT_EQ(DurationText(123456000), "123 ms");
    EXPECT_EQ(DurationText(41000000000), "41.00 s");
    EXPECT_EQ(DurationText(-2000), "-2 us");
    EXPECT_EQ(DurationText(std::nullopt), "");
}

TEST(CallLines, ShowTimesAsTheLogDoesAndMarkThoseBeforeItsStart)
{
    EXPECT_EQ(TimeText(Time{16720000, false}), "0.016720");
    EXPECT_EQ(TimeText(Time{-100000000, true}), "-0.100000!");
    EXPECT_EQ(TimeText(std::nullopt), "?");
}

/// A record of these fields.
Tree Record(const std::string& name, const std::vector<std::pair<std::string, std::string>>& fields)
{
    const Tree::Limits limits;
    Tree tree;
    tree.Begin(name, limits);
    for (const auto& [field, text] : fields) {
        tree.Begin(field, limits);
        tree.AddText(text, limits);
        tree.End(limits);
    }
    tree.End(limits);
    return tree;
}

TEST(CallLines, AreNoWiderThanTheTerminalWhateverNamesAreLike)
{
    std::string sink;
    const Terminal terminal(sink);
    Call call;
    call.returnTime = Time{};
    call.name = std::string(5000, 'n');
    call.status = "CADI_STATUS_" + std::string(200, 's');
    std::string line = CallLine(call, terminal);
    EXPECT_EQ(line.size(), terminal.Width() + 1);
    EXPECT_NE(line.find("n...()  "), std::string::npos) << line;
    EXPECT_NE(line.find("s...\n"), std::string::npos) << line;
    call.name = "CADIRegGetFloatFormat";
    line = CallLine(call, terminal);
    EXPECT_NE(line.find(" CADIRegGetFloatFormat()"), std::string::npos) << line;
    EXPECT_EQ(line.size(), terminal.Width() + 1);
}

TEST(CallLines, LeaveOutOfTheResultsWhatTheLineEndsWith)
{
    EXPECT_EQ(ElementsText(Record("r", {{"return", "CADI_STATUS_OK"}}), true),
              "r={return=CADI_STATUS_OK}");
    const auto result = [](const std::string& text) {
        const Tree::Limits limits;
        Tree tree;
        tree.Begin("return", limits);
        tree.AddText(text, limits);
        tree.End(limits);
        return ElementsText(tree, true);
    };
    EXPECT_EQ(result("CADI_STATUS_OK"), "");
    EXPECT_EQ(result("Invalid return type: 0x63"), "");
    EXPECT_EQ(result("Invalid return type: 99"), "return=Invalid return type: 99");
}

TEST(CallLines, LetNoControlCharacterReachTheTerminal)
{
    EXPECT_EQ(Printable("a\x1b[31m\nb\x7f"), "a?[31m?b?");
    EXPECT_EQ(Printable("a\u009b31m\u0080\u00a0\u00e9b\u009f"), "a?31m?\u00a0\u00e9b?");
    EXPECT_EQ(Printable("\xc2"), "\xc2");
    EXPECT_EQ(Printable("a\u202egnp.exe\u202c \u2066\u2069\u061c\u200f\u200e"), "a?gnp.exe? ?????");
    EXPECT_EQ(Printable("\u200d\u2010\u2029\u202f\u2065\u206a\u061b\u061d"),
              "\u200d\u2010\u2029\u202f\u2065\u206a\u061b\u061d");
    Call call;
    call.returnTime = Time{};
    call.status = "CADI_STATUS_\u009b\x7f";
    EXPECT_EQ(StatusText(call), "??");
    const Tree address =
        Record("address", {{"spaceId", "1"}, {"spaceName", "A\u009b"}, {"addr", "0x\x7f"}});
    EXPECT_EQ(AddressText(address.Find("address")), "A?:0x?");
    const Tree value = Record("reg", {{"regNumber", "7"}, {"bytes", "\u009bm"}});
    EXPECT_EQ(RegisterText(value.Find("reg")), "r7=?m");
}

}  // namespace
