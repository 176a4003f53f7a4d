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
              "    <flags>\n"
              "        <bool_array>NULL</bool_array>\n"
              "    </flags>\n");
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
              "    <flags>\n"
              "        <bool_array>true</bool_array>\n"
              "        <bool_array>false</bool_array>\n"
              "        <bool_array>true</bool_array>\n"
              "    </flags>\n");
}

TEST_F(Arrays, NullCharArrayHoldsANullElementNamedString)
{
    EXPECT_EQ(Written([](auto& log) { log.WriteCharArray("s", nullptr, tooMany); }),
              "    <s>\n"
              "        <string>NULL</string>\n"
              "    </s>\n");
}

TEST_F(Arrays, EmptyCharArrayHoldsNothing)
{
    EXPECT_EQ(Written([](auto& log) { log.WriteCharArray("s", "abc", 0); }), "    <s>\n"
                                                                             "    </s>\n");
}

TEST_F(Arrays, CharsAreEscapedAndBearTheNameOfTheArray)
{
    EXPECT_EQ(Written([](auto& log) { log.WriteCharArray("s", "a<\x01", 3); }), "    <s>\n"
                                                                                "        <s>a</s>\n"
                                                                                "        <s>&lt;</s>\n"
                                                                                "        <s>\\x01</s>\n"
                                                                                "    </s>\n");
}

TEST_F(Arrays, NullStringArrayHoldsANullElementNamedString)
{
    EXPECT_EQ(Written([](auto& log) { log.WriteStringArray("names", nullptr, tooMany); }),
              "    <names>\n"
              "        <string>NULL</string>\n"
              "    </names>\n");
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
              "    <names>\n"
              "        <names>            <names>ab</names>\n"
              "</names>\n"
              "    </names>\n");
}

TEST_F(Arrays, StringArrayHoldsOneNestedPairPerItem)
{
    char first[] = "";
    char second[] = "a&b";
    char third[] = "c";
    char* items[] = {first, second, third};
    EXPECT_EQ(Written([&](auto& log) { log.WriteStringArray("n", items, 3); }),
              "    <n>\n"
              "        <n>            <n></n>\n"
              "</n>\n"
              "        <n>            <n>a&amp;b</n>\n"
              "</n>\n"
              "        <n>            <n>c</n>\n"
              "</n>\n"
              "    </n>\n");
}

TEST_F(Arrays, NullEntryOfAStringArrayThrowsWhenItsStartTagIsWritten)
{
    char text[] = "ab";
    char* items[] = {text, nullptr};
    EXPECT_EQ(Written([&](auto& log) {
                  EXPECT_THROW(log.WriteStringArray("names", items, 2), std::logic_error);
              }),
              "    <names>\n"
              "        <names>            <names>ab</names>\n"
              "</names>\n"
              "        <names>");
}

TEST_F(Arrays, NullLinesByteArrayHoldsANullElementOfItsOwnName)
{
    EXPECT_EQ(Written([](auto& log) { log.WriteLinesByteArray("mem", nullptr, tooMany, tooMany); }),
              "    <mem>\n"
              "        <mem>NULL</mem>\n"
              "    </mem>\n");
}

TEST_F(Arrays, LinesByteArrayWithoutLinesOrBytesHoldsNothing)
{
    const unsigned char data[32] = {};
    EXPECT_EQ(Written([&](auto& log) {
                  log.WriteLinesByteArray("mem", data, 0, 3);
                  log.WriteLinesByteArray("mem", data, 3, 0);
              }),
              "    <mem>\n"
              "    </mem>\n"
              "    <mem>\n"
              "    </mem>\n");
}

TEST_F(Arrays, LinesByteArrayRepeatsTheWindowsThatStartAtTheLineCount)
{
    unsigned char data[2 + 3 + 15];
    for (unsigned int i = 0; i < sizeof data; ++i) {
        data[i] = static_cast<unsigned char>(i);
    }
    EXPECT_EQ(Written([&](auto& log) { log.WriteLinesByteArray("mem", data, 2, 3); }),
              "    <mem>\n"
              "        <value>11100f0e 0d0c0b0a 09080706 05040302 </value>\n"
              "        <value>1211100f 0e0d0c0b 0a090807 06050403 </value>\n"
              "        <value>13121110 0f0e0d0c 0b0a0908 07060504 </value>\n"
              "        <value>11100f0e 0d0c0b0a 09080706 05040302 </value>\n"
              "        <value>1211100f 0e0d0c0b 0a090807 06050403 </value>\n"
              "        <value>13121110 0f0e0d0c 0b0a0908 07060504 </value>\n"
              "    </mem>\n");
}

TEST_F(Arrays, NullIntegerArraysHoldANullElementOfTheirOwnNameOrNamedInt)
{
    EXPECT_EQ(Written([](auto& log) {
                  log.WriteUint8Array("bytes", nullptr, tooMany, true);
                  log.WriteUint32Array("regs", nullptr, 5, false);
                  log.WriteUint64Array("ids", nullptr, 2, true);
              }),
              "    <bytes>\n"
              "        <bytes>NULL</bytes>\n"
              "    </bytes>\n"
              "    <regs>\n"
              "        <regs>NULL</regs>\n"
              "    </regs>\n"
              "    <ids>\n"
              "        <int>NULL</int>\n"
              "    </ids>\n");
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
              "    <a>\n"
              "    </a>\n"
              "    <b>\n"
              "    </b>\n"
              "    <c>\n"
              "    </c>\n");
}

TEST_F(Arrays, BytesAreTwoHexDigitsOrDecimal)
{
    const unsigned char items[] = {0x0a, 0xff, 0};
    EXPECT_EQ(Written([&](auto& log) {
                  log.WriteUint8Array("b", items, 3, true);
                  log.WriteUint8Array("b", items, 3, false);
              }),
              "    <b>\n"
              "        <value>0x0a</value>\n"
              "        <value>0xff</value>\n"
              "        <value>0x00</value>\n"
              "    </b>\n"
              "    <b>\n"
              "        <value>10</value>\n"
              "        <value>255</value>\n"
              "        <value>0</value>\n"
              "    </b>\n");
}

TEST_F(Arrays, WordsAreEightHexDigitsOrDecimal)
{
    const unsigned int items[] = {0x7f, 0xffffffff, 0};
    EXPECT_EQ(Written([&](auto& log) {
                  log.WriteUint32Array("w", items, 3, true);
                  log.WriteUint32Array("w", items, 3, false);
              }),
              "    <w>\n"
              "        <value>0x0000007f</value>\n"
              "        <value>0xffffffff</value>\n"
              "        <value>0x00000000</value>\n"
              "    </w>\n"
              "    <w>\n"
              "        <value>127</value>\n"
              "        <value>4294967295</value>\n"
              "        <value>0</value>\n"
              "    </w>\n");
}

TEST_F(Arrays, LongWordsAreNamedIntAndHaveSixteenHexDigitsOrDecimal)
{
    const unsigned long items[] = {0xdeadbeef, 0xffffffffffffffff, 0};
    EXPECT_EQ(Written([&](auto& log) {
                  log.WriteUint64Array("l", items, 3, true);
                  log.WriteUint64Array("l", items, 3, false);
              }),
              "    <l>\n"
              "        <int>0x00000000deadbeef</int>\n"
              "        <int>0xffffffffffffffff</int>\n"
              "        <int>0x0000000000000000</int>\n"
              "    </l>\n"
              "    <l>\n"
              "        <int>3735928559</int>\n"
              "        <int>18446744073709551615</int>\n"
              "        <int>0</int>\n"
              "    </l>\n");
}

TEST_F(Arrays, NamesOfContainersAndChildrenAreCleaned)
{
    EXPECT_EQ(Written([](auto& log) {
                  log.WriteCharArray("2 x", "a", 1);
                  log.WriteUint8Array("", nullptr, 0, false);
              }),
              "    <__x>\n"
              "        <__x>a</__x>\n"
              "    </__x>\n"
              "    <emptyIdent>\n"
              "        <emptyIdent>NULL</emptyIdent>\n"
              "    </emptyIdent>\n");
}

TEST_F(Arrays, NullElementNamedAsTheArrayHasAllOfItsName)
{
    using namespace std::string_literals;
    EXPECT_EQ(Written([](auto& log) { log.WriteUint32Array("a\0b"s, nullptr, 0, false); }),
              "    <a_b>\n"
              "        <a_b>NULL</a_b>\n"
              "    </a_b>\n");
}

}  // namespace
