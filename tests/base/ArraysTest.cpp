// Arrays of every kind: null, empty, with several items.

#include "support/GeneratorTest.h"

#include <stdexcept>
#include <string>

namespace
{

using Arrays = ScrivelTest::GeneratorTest<Scrivel2::ScrivelXmlGenBase>;

constexpr unsigned int tooMany = 0xffffffff;  // entries that no array has

TEST_F(Arrays, NullBoolArrayHoldsANullElementNamedAfterItsChildren)
{
    EXPECT_EQ(Written([](auto& log) { log.WriteBoolArray("flags", nullptr, tooMany); }),
              R"(    <flags>
        <bool_array>NULL</bool_array>
    </flags>
)");
}

TEST_F(Arrays, EmptyBoolArrayHoldsNothing)
{
    const bool items[] = {true};
    EXPECT_EQ(Written([&](auto& log) { log.WriteBoolArray("flags", items, 0); }), "    <flags>\n"
                                                                                  "    </flags>\n");
}

TEST_F(Arrays, BoolArrayHoldsOneChildPerItem)
{
    const bool items[] = {true, false, true};
    EXPECT_EQ(Written([&](auto& log) { log.WriteBoolArray("flags", items, 3); }),
              R"(    <flags>
        <bool_array>true</bool_array>
        <bool_array>false</bool_array>
        <bool_array>true</bool_array>
    </flags>
)");
}

TEST_F(Arrays, NullCharArrayHoldsANullElementNamedString)
{
    EXPECT_EQ(Written([](auto& log) { log.WriteCharArray("s", nullptr, tooMany); }),
              R"(    <s>
        <string>NULL</string>
    </s>
)");
}

TEST_F(Arrays, EmptyCharArrayHoldsNothing)
{
    EXPECT_EQ(Written([](auto& log) { log.WriteCharArray("s", "abc", 0); }), "    <s>\n"
                                                                             "    </s>\n");
}

TEST_F(Arrays, CharsAreEscapedAndBearTheNameOfTheArray)
{
    EXPECT_EQ(Written([](auto& log) { log.WriteCharArray("s", "a<\x01", 3); }), R"(    <s>
        <s>a</s>
        <s>&lt;</s>
        <s>\x01</s>
    </s>
)");
}

TEST_F(Arrays, NullStringArrayHoldsANullElementNamedString)
{
    EXPECT_EQ(Written([](auto& log) { log.WriteStringArray("names", nullptr, tooMany); }),
              R"(    <names>
        <string>NULL</string>
    </names>
)");
}

TEST_F(Arrays, EmptyStringArrayHoldsNothing)
{
    char* items[] = {nullptr};
    EXPECT_EQ(Written([&](auto& log) { log.WriteStringArray("names", items, 0); }), "    <names>\n"
                                                                                    "    </names>\n");
}

TEST_F(Arrays, StringIsNestedTwiceAndItsOuterEndTagIsNotIndented)
{
    char text[] = "ab";
    char* items[] = {text};
    EXPECT_EQ(Written([&](auto& log) { log.WriteStringArray("names", items, 1); }),
              R"(    <names>
        <names>            <names>ab</names>
</names>
    </names>
)");
}

TEST_F(Arrays, StringArrayHoldsOneNestedPairPerItem)
{
    char first[] = "";
    char second[] = "a&b";
    char third[] = "c";
    char* items[] = {first, second, third};
    EXPECT_EQ(Written([&](auto& log) { log.WriteStringArray("n", items, 3); }),
              R"(    <n>
        <n>            <n></n>
</n>
        <n>            <n>a&amp;b</n>
</n>
        <n>            <n>c</n>
</n>
    </n>
)");
}

TEST_F(Arrays, NullEntryOfAStringArrayThrowsWhenItsStartTagIsWritten)
{
    char text[] = "ab";
    char* items[] = {text, nullptr};
    EXPECT_EQ(Written([&](auto& log) {
                  EXPECT_THROW(log.WriteStringArray("names", items, 2), std::logic_error);
              }),
              R"(    <names>
        <names>            <names>ab</names>
</names>
        <names>)");
}

TEST_F(Arrays, NullLinesByteArrayHoldsANullElementOfItsOwnName)
{
    EXPECT_EQ(Written([](auto& log) { log.WriteLinesByteArray("mem", nullptr, tooMany, tooMany); }),
              R"(    <mem>
        <mem>NULL</mem>
    </mem>
)");
}

TEST_F(Arrays, LinesByteArrayWithoutLinesOrBytesHoldsNothing)
{
    const unsigned char data[32] = {};
    EXPECT_EQ(Written([&](auto& log) {
                  log.WriteLinesByteArray("mem", data, 0, 3);
                  log.WriteLinesByteArray("mem", data, 3, 0);
              }),
              R"(    <mem>
    </mem>
    <mem>
    </mem>
)");
}

TEST_F(Arrays, LinesByteArrayRepeatsTheWindowsThatStartAtTheLineCount)
{
    unsigned char data[2 + 3 + 15];
    for (unsigned int i = 0; i < sizeof data; ++i) {
        data[i] = static_cast<unsigned char>(i);
    }
    EXPECT_EQ(Written([&](auto& log) { log.WriteLinesByteArray("mem", data, 2, 3); }),
              R"(    <mem>
        <value>11100f0e 0d0c0b0a 09080706 05040302 </value>
        <value>1211100f 0e0d0c0b 0a090807 06050403 </value>
        <value>13121110 0f0e0d0c 0b0a0908 07060504 </value>
        <value>11100f0e 0d0c0b0a 09080706 05040302 </value>
        <value>1211100f 0e0d0c0b 0a090807 06050403 </value>
        <value>13121110 0f0e0d0c 0b0a0908 07060504 </value>
    </mem>
)");
}

TEST_F(Arrays, NullIntegerArraysHoldANullElementOfTheirOwnNameOrNamedInt)
{
    EXPECT_EQ(Written([](auto& log) {
                  log.WriteUint8Array("bytes", nullptr, tooMany, true);
                  log.WriteUint32Array("regs", nullptr, 5, false);
                  log.WriteUint64Array("ids", nullptr, 2, true);
              }),
              R"(    <bytes>
        <bytes>NULL</bytes>
    </bytes>
    <regs>
        <regs>NULL</regs>
    </regs>
    <ids>
        <int>NULL</int>
    </ids>
)");
}

TEST_F(Arrays, EmptyIntegerArraysHoldNothing)
{
    const unsigned char bytes[] = {1};
    const unsigned int words[] = {1};
    const unsigned long longs[] = {1};
    EXPECT_EQ(Written([&](auto& log) {
                  log.WriteUint8Array("a", bytes, 0, true);
                  log.WriteUint32Array("b", words, 0, true);
                  log.WriteUint64Array("c", longs, 0, false);
              }),
              R"(    <a>
    </a>
    <b>
    </b>
    <c>
    </c>
)");
}

TEST_F(Arrays, BytesAreTwoHexDigitsOrDecimal)
{
    const unsigned char items[] = {0x0a, 0xff, 0};
    EXPECT_EQ(Written([&](auto& log) {
                  log.WriteUint8Array("b", items, 3, true);
                  log.WriteUint8Array("b", items, 3, false);
              }),
              R"(    <b>
        <value>0x0a</value>
        <value>0xff</value>
        <value>0x00</value>
    </b>
    <b>
        <value>10</value>
        <value>255</value>
        <value>0</value>
    </b>
)");
}

TEST_F(Arrays, WordsAreEightHexDigitsOrDecimal)
{
    const unsigned int items[] = {0x7f, 0xffffffff, 0};
    EXPECT_EQ(Written([&](auto& log) {
                  log.WriteUint32Array("w", items, 3, true);
                  log.WriteUint32Array("w", items, 3, false);
              }),
              R"(    <w>
        <value>0x0000007f</value>
        <value>0xffffffff</value>
        <value>0x00000000</value>
    </w>
    <w>
        <value>127</value>
        <value>4294967295</value>
        <value>0</value>
    </w>
)");
}

TEST_F(Arrays, LongWordsAreNamedIntAndHaveSixteenHexDigitsOrDecimal)
{
    const unsigned long items[] = {0xdeadbeef, 0xffffffffffffffff, 0};
    EXPECT_EQ(Written([&](auto& log) {
                  log.WriteUint64Array("l", items, 3, true);
                  log.WriteUint64Array("l", items, 3, false);
              }),
              R"(    <l>
        <int>0x00000000deadbeef</int>
        <int>0xffffffffffffffff</int>
        <int>0x0000000000000000</int>
    </l>
    <l>
        <int>3735928559</int>
        <int>18446744073709551615</int>
        <int>0</int>
    </l>
)");
}

TEST_F(Arrays, NamesOfContainersAndChildrenAreCleaned)
{
    EXPECT_EQ(Written([](auto& log) {
                  log.WriteCharArray("2 x", "a", 1);
                  log.WriteUint8Array("", nullptr, 0, false);
              }),
              R"(    <__x>
        <__x>a</__x>
    </__x>
    <emptyIdent>
        <emptyIdent>NULL</emptyIdent>
    </emptyIdent>
)");
}

TEST_F(Arrays, NullElementNamedAsTheArrayHasAllOfItsName)
{
    using namespace std::string_literals;
    EXPECT_EQ(Written([](auto& log) { log.WriteUint32Array("a\0b"s, nullptr, 0, false); }),
              R"(    <a_b>
        <a_b>NULL</a_b>
    </a_b>
)");
}

}  // namespace
