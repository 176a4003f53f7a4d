// Values behind pointers, and null pointers.

#include "support/GeneratorTest.h"

#include <string>

namespace
{

using PointerValues = ScrivelTest::GeneratorTest<Scrivel2::ScrivelXmlGenBase>;

TEST_F(PointerValues, NullPointerOfEachKindIsTheWordNullUnderTheSameName)
{
    EXPECT_EQ(Written([](auto& log) {
                  log.WriteCharPtrVal("char", nullptr);
                  log.WriteDecimalPtrVal("uint", static_cast<unsigned int*>(nullptr));
                  log.WriteDecimalPtrVal("ulong", static_cast<unsigned long*>(nullptr));
                  log.WriteStringPtrVal("string", nullptr);
                  log.WriteBoolPtrVal("bool", nullptr);
                  log.WriteHexPtrVal("hex", nullptr, 8);
                  log.WriteBinPtrVal("bin", nullptr, 5);
              }),
              R"(    <char>NULL</char>
    <uint>NULL</uint>
    <ulong>NULL</ulong>
    <string>NULL</string>
    <bool>NULL</bool>
    <hex>NULL</hex>
    <bin>NULL</bin>
)");
}

TEST_F(PointerValues, LiteralNullptrIsWrittenAsNullPointer)
{
    EXPECT_EQ(Written([](auto& log) { log.WriteDecimalPtrVal("count", nullptr); }),
              "    <count>NULL</count>\n");
}

TEST_F(PointerValues, CharIsWrittenRaw)
{
    char c = '&';
    EXPECT_EQ(Written([&](auto& log) { log.WriteCharPtrVal("c", &c); }), "    <c>&</c>\n");
}

TEST_F(PointerValues, UnsignedIntIsWidenedWithoutSign)
{
    unsigned int value = 0xffffffff;
    EXPECT_EQ(Written([&](auto& log) { log.WriteDecimalPtrVal("d", &value); }),
              "    <d>4294967295</d>\n");
}

TEST_F(PointerValues, UnsignedLongIsWrittenInFull)
{
    unsigned long value = 0xffffffffffffffff;
    EXPECT_EQ(Written([&](auto& log) { log.WriteDecimalPtrVal("d", &value); }),
              "    <d>18446744073709551615</d>\n");
}

TEST_F(PointerValues, StringIsEscaped)
{
    std::string text = "<x>";
    EXPECT_EQ(Written([&](auto& log) { log.WriteStringPtrVal("s", &text); }), "    <s>&lt;x&gt;</s>\n");
}

TEST_F(PointerValues, BoolIsTrueOrFalse)
{
    bool yes = true;
    bool no = false;
    EXPECT_EQ(Written([&](auto& log) {
                  log.WriteBoolPtrVal("f", &yes);
                  log.WriteBoolPtrVal("f", &no);
              }),
              "    <f>true</f>\n"
              "    <f>false</f>\n");
}

TEST_F(PointerValues, HexHasAtLeastTheDigitsAskedFor)
{
    unsigned long value = 0x1a;
    EXPECT_EQ(Written([&](auto& log) {
                  log.WriteHexPtrVal("v", &value, 8);
                  log.WriteHexPtrVal("v", &value, 1);
              }),
              "    <v>0x0000001a</v>\n"
              "    <v>0x1a</v>\n");
}

TEST_F(PointerValues, BinHasFiveDigitsWhateverWidthIsAskedFor)
{
    unsigned long value = 0x25;
    EXPECT_EQ(Written([&](auto& log) { log.WriteBinPtrVal("b", &value, 3); }), "    <b>00101</b>\n");
}

}  // namespace
