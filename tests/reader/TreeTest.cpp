// Contents of calls as trees; arrays of bytes as bytes.

#include <gtest/gtest.h>

#include "reader/Reading.h"

using namespace ScrivelReader;
using namespace ScrivelTest;

namespace
{

/// The arguments of a call that has these contents.
std::string Arguments(const std::string& contents, const ReadOptions& options = {})
{
    const Reading reading = ReadBytes(
        LogOf("    <A call_num=\"1\" call_time=\"0.000001 s\">\n" + contents + "    </A>\n"), options);
    EXPECT_TRUE(reading.end.whole);
    return reading.calls.empty() ? "no call" : Shown(reading.calls.front().arguments);
}

TEST(Trees, KeepNamesTextsAndOrder)
{
    EXPECT_EQ(Arguments("<a>1</a>\n<b>\n  <c>x&lt;y</c>\n  <c></c>\n</b>\n<a>2</a>\n"),
              "a=1 b{c=x<y c=} a=2");
}

TEST(Trees, KeepNoLayoutHoweverDeep)
{
    for (const char* const lineEnd : {"\n", "\n\n", "\t\n"}) {
        for (const char blank : {' ', '\t'}) {
            for (std::size_t depth = 0; depth < 150; ++depth) {
                const std::string layout = lineEnd + std::string(depth, blank);
                EXPECT_EQ(Arguments("<a>" + layout + "<b>1</b>" + layout + "<c>2</c>" + layout + "</a>"),
                          "a{b=1 c=2}");
                EXPECT_EQ(Arguments("<a>" + layout + "<b>1</b>" + layout + "x<c>2</c></a>"),
                          "a{b=1 #text=" + layout + "x c=2}");
            }
        }
    }
}

TEST(Trees, FoldArraysOfBytes)
{
    EXPECT_EQ(Arguments("<data>\n <value>0x0a</value>\n <value>0xff</value>\n</data>\n"), "data[0aff]");
}

TEST(Trees, FoldAnArrayWhoseItemsBearItsName)
{
    EXPECT_EQ(Arguments("<value>\n <value>0x0a</value>\n <value>0xff</value>\n</value>\n<n>1</n>\n"),
              "value[0aff] n=1");
}

TEST(Trees, KeepTheItemsOfAnArrayInWhichOneIsNoByte)
{
    EXPECT_EQ(Arguments("<d><value>0x0a</value><value></value><n>1</n></d>"), "d{value=0x0a value= n=1}");
    EXPECT_EQ(Arguments("<d>a<value>0x0a</value>b</d>"), "d{#text=a value=0x0a #text=b}");
    EXPECT_EQ(Arguments("<d><value>0x0a</value><value>0x1ff</value><value>0x01</value></d>"),
              "d{value=0x0a value=0x1ff value=0x01}");
    EXPECT_EQ(Arguments("<d><value>10</value><value>0x01</value></d>"), "d{value=10 value=0x01}");
    EXPECT_EQ(Arguments("<d><value>0x0a</value><int>0x01</int><value>0x02</value></d>"),
              "d{value=0x0a int=0x01 value=0x02}");
    EXPECT_EQ(Arguments("<d><value>0x0a</value><value><e>5</e></value></d>"), "d{value=0x0a value{e=5}}");
    EXPECT_EQ(Arguments("<d><value>0x0a</value>x<value>0x01</value></d>"),
              "d{value=0x0a #text=x value=0x01}");
    EXPECT_EQ(Arguments("<d><value>0x0a</value><value>y<e>5</e></value><f/></d>"),
              "d{value=0x0a value{#text=y e=5} f=}");
}

/// So many items of an array, and what is shown of them.
std::pair<std::string, std::string> Items(int count, const std::string& name, const std::string& text)
{
    std::string items;
    std::string shown;
    for (int i = 0; i < count; ++i) {
        const std::string value = text + std::to_string(i);
        items += "\n <" + name + ">" + value + "</" + name + ">";
        shown += (i == 0 ? "" : " ") + name + "=" + value;
    }
    return {items, shown};
}

TEST(Trees, KeepTheTextsOfALongArray)
{
    const auto [items, shown] = Items(200, "i", "a");
    const auto [others, shownOthers] = Items(3, "j", "");
    EXPECT_EQ(Arguments("<d>" + items + "\n</d><e>1</e>"), "d{" + shown + "} e=1");
    EXPECT_EQ(Arguments("<d>" + items + others + "<i></i><i/></d>"),
              "d{" + shown + " " + shownOthers + " i= i=}");
    EXPECT_EQ(Arguments("<d>" + items + "<k><i>x</i></k><i>y</i>z<i>w</i><i>v<k/></i><i>u</i></d>"),
              "d{" + shown + " k{i=x} i=y #text=z i=w i{#text=v k=} i=u}");
    EXPECT_EQ(Arguments("<d>" + items + "<i>\n</i><i>t</i></d>"), "d{" + shown + " i{} i=t}");

    ReadOptions options;
    options.limits.items = 100;
    EXPECT_EQ(Arguments("<d>" + items + "</d>", options), "d{" + Items(100, "i", "a").second + "}...");
    options.limits.text = 3;
    EXPECT_EQ(Arguments("<d>" + Items(100, "i", "a").first + "<i>abcd</i></d>", options),
              "d{" + Items(100, "i", "a").second + "}...");
    options.limits.items = 101;
    EXPECT_EQ(Arguments("<d>" + Items(100, "i", "a").first + "<i>abcd</i></d>", options),
              "d{" + Items(100, "i", "a").second + " i=abc...}");
}

TEST(Trees, KeepTheItemsOfALongArrayInWhichTheLastIsNoByte)
{
    std::string items;
    std::string shown;
    for (int i = 0; i < 300; ++i) {
        items += "<value>0x1f</value>";
        shown += "value=0x1f ";
    }
    EXPECT_EQ(Arguments("<d>" + items + "<value>12</value><value>0x01</value></d>"),
              "d{" + shown + "value=12 value=0x01}");
    ReadOptions options;
    options.limits.bytes = 0;
    EXPECT_EQ(Arguments("<d>" + items + "<value>12</value></d>", options), "d{value=12}...");
}

TEST(Trees, TellAnArrayOfNoItemsFromAnEmptyText)
{
    EXPECT_EQ(Arguments("<none>\n        </none>\n<text></text>\n<blank> </blank>\n"),
              "none{} text= blank= ");
}

TEST(Trees, TellThatTheyLackElements)
{
    ReadOptions options;
    options.limits.items = 2;
    const auto lacks = [&](const std::string& contents) {
        const Reading reading = ReadBytes(
            LogOf("    <A call_num=\"1\" call_time=\"0.000001 s\">\n" + contents + "    </A>\n"),
            options);
        return reading.calls.at(0).arguments.LacksElements();
    };
    EXPECT_FALSE(lacks("<d><i>1</i><i>2</i></d><d><i>1</i></d>"));
    EXPECT_TRUE(lacks("<d><i>1</i><i>2</i><i>3</i></d>"));
    EXPECT_FALSE(lacks("<d><value>0x01</value><value>0x02</value><value>0x03</value></d>"));
}

TEST(Trees, CountWhatPassesALimit)
{
    ReadOptions options;
    options.limits.items = options.limits.bytes = 2;
    options.limits.depth = 2;
    EXPECT_EQ(Arguments("<d><value>0x01</value><value>0x02</value><value>0x03</value></d>", options),
              "d[0102]...");
    EXPECT_EQ(Arguments("<d><i>1</i><i>2</i><i>3</i></d>", options), "d{i=1 i=2}...");
    options.limits.text = 3;
    EXPECT_EQ(Arguments("<t>abcd</t>", options), "t=abc...");
    EXPECT_EQ(Arguments("<a><b><c><d/></c></b></a><e/>", options), "a{b{}...} e=");
    options.limits.text = 0;
    EXPECT_EQ(Arguments("<t>a<u/></t>", options), "t{u=}");
}

}  // namespace
