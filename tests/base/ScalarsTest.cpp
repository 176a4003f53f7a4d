// Characters, numbers, addresses and texts, and how they are escaped.

#include "format/Characters.h"
#include "support/GeneratorTest.h"

#include <cstdio>
#include <iomanip>
#include <limits>
#include <string>

namespace
{

using Scrivel2::ScrivelXmlGenBase;
using ScrivelTest::platform;

using Scalars = ScrivelTest::GeneratorTest<ScrivelXmlGenBase>;
using Escaping = ScrivelTest::GeneratorTest<ScrivelXmlGenBase>;

/// \x0a
std::string HexPiece(int byte)
{
    char piece[8];
    std::snprintf(piece, sizeof piece, "\\x%02x", static_cast<unsigned int>(byte));
    return piece;
}

TEST_F(Escaping, EachHexadecimalDigitHasItsValueBackAndNoOtherCharacterHasOne)
{
    const std::string digits = "0123456789abcdef";
    for (int c = 0; c < 256; ++c) {
        const auto place = digits.find(static_cast<char>(c));
        EXPECT_EQ(Scrivel2::HexValue(static_cast<char>(c)),
                  place == std::string::npos ? -1 : static_cast<int>(place))
            << c;
    }
}

// ---- Null pointers, addresses -------------------------------------------------------------------

TEST_F(Scalars, NullPointerIsTheWordNull)
{
    EXPECT_EQ(Written([](auto& log) { log.WriteNULLPointer("count"); }), "    <count>NULL</count>\n");
}

TEST_F(Scalars, AddressHasSixteenDigits)
{
    EXPECT_EQ(Written([](auto& log) { log.WriteAddress("addr", 0x1000); }),
              "    <addr>0x0000000000001000</addr>\n");
    EXPECT_EQ(Written([](auto& log) { log.WriteAddress("addr", 0x7f3a12345678); }),
              "    <addr>0x00007f3a12345678</addr>\n");
    EXPECT_EQ(Written([](auto& log) { log.WriteAddress("addr", 0xfedcba9876543210); }),
              "    <addr>0xfedcba9876543210</addr>\n");
}

TEST_F(Scalars, AddressZeroIsTheWordNull)
{
    EXPECT_EQ(Written([](auto& log) { log.WriteAddress("addr", 0); }), "    <addr>NULL</addr>\n");
}

// ---- Characters, numbers ------------------------------------------------------------------------

TEST_F(Scalars, CharIsWrittenRaw)
{
    EXPECT_EQ(Written([](auto& log) { log.WriteChar("c", '<'); }), "    <c><</c>\n");
}

TEST_F(Scalars, EveryCharIsWrittenRaw)
{
    for (int byte = 0; byte < 256; ++byte) {
        const char c = static_cast<char>(byte);
        EXPECT_EQ(Written([&](auto& log) { log.WriteChar("c", c); }),
                  std::string("    <c>") + c + "</c>\n");
    }
}

TEST_F(Scalars, DecimalHasNeitherSignNorPaddingNorSeparators)
{
    EXPECT_EQ(Written([](auto& log) {
                  log.WriteDecimal("d", 0);
                  log.WriteDecimal("d", 9);
                  log.WriteDecimal("d", 10);
                  log.WriteDecimal("d", 1234567);
                  log.WriteDecimal("d", 0xffffffff);
                  log.WriteDecimal("d", std::numeric_limits<unsigned long>::max());
              }),
              R"(    <d>0</d>
    <d>9</d>
    <d>10</d>
    <d>1234567</d>
    <d>4294967295</d>
    <d>18446744073709551615</d>
)");
}

TEST_F(Scalars, BoolIsTrueOrFalse)
{
    EXPECT_EQ(Written([](auto& log) {
                  log.WriteBool("f", false);
                  log.WriteBool("f", true);
              }),
              "    <f>false</f>\n"
              "    <f>true</f>\n");
}

TEST_F(Scalars, BytesAreOneNumberWithABlankBehindEachGroupAndTheLast)
{
    const unsigned char bytes[16] = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15};
    EXPECT_EQ(Written([&](auto& log) { log.WriteByte("bytes", bytes); }),
              "    <bytes>0f0e0d0c 0b0a0908 07060504 03020100 </bytes>\n");
}

TEST_F(Scalars, BytesAreLowerCaseAndUnsigned)
{
    const unsigned char bytes[16] = {0xff, 0x80, 0x7f, 0xab, 0xcd, 0xef, 0, 0,
                                     0,    0,    0,    0,    0x10, 0x01, 0, 0xf0};
    EXPECT_EQ(Written([&](auto& log) { log.WriteByte("bytes", bytes); }),
              "    <bytes>f0000110 00000000 0000efcd ab7f80ff </bytes>\n");
}

TEST_F(Scalars, HexHasAtLeastTheDigitsAskedFor)
{
    EXPECT_EQ(Written([](auto& log) {
                  log.WriteHex("v", 255, 4);
                  log.WriteHex("v", 0xabcdef, 6);
                  log.WriteHex("v", 1, 16);
                  log.WriteHex("v", 1, 20);
                  log.WriteHex("v", std::numeric_limits<unsigned long>::max(), 16);
              }),
              R"(    <v>0x00ff</v>
    <v>0xabcdef</v>
    <v>0x0000000000000001</v>
    <v>0x00000000000000000001</v>
    <v>0xffffffffffffffff</v>
)");
}

TEST_F(Scalars, HexLongerThanTheDigitsAskedForIsNotCut)
{
    EXPECT_EQ(Written([](auto& log) { log.WriteHex("v", 0x123456, 2); }), "    <v>0x123456</v>\n");
}

TEST_F(Scalars, HexOfZeroOrOneDigitsIsTheShortestForm)
{
    EXPECT_EQ(Written([](auto& log) {
                  log.WriteHex("v", 0, 0);
                  log.WriteHex("v", 0, 1);
                  log.WriteHex("v", 0x10, 0);
                  log.WriteHex("v", 0xa, 1);
              }),
              R"(    <v>0x0</v>
    <v>0x0</v>
    <v>0x10</v>
    <v>0xa</v>
)");
}

TEST_F(Scalars, DecimalAfterHexIsDecimalWithoutPadding)
{
    EXPECT_EQ(Written([](auto& log) {
                  log.WriteHex("v", 255, 8);
                  log.WriteDecimal("d", 255);
                  log.WriteAddress("a", 255);
                  log.WriteDecimal("d", 255);
              }),
              R"(    <v>0x000000ff</v>
    <d>255</d>
    <a>0x00000000000000ff</a>
    <d>255</d>
)");
}

TEST_F(Scalars, BinHasFiveDigitsWhateverWidthIsAskedFor)
{
    EXPECT_EQ(Written([](auto& log) {
                  log.WriteBin("b", 0x3f, 32);
                  log.WriteBin("b", 2, 5);
                  log.WriteBin("b", 2, 8);
                  log.WriteBin("b", 0, 0);
                  log.WriteBin("b", 1, -1);
                  log.WriteBin("b", 4, 1);
                  log.WriteBin("b", 8, 64);
                  log.WriteBin("b", 16, 2);
                  log.WriteBin("b", 0xffffffffffffffe0, 64);
              }),
              R"(    <b>11111</b>
    <b>00010</b>
    <b>00010</b>
    <b>00000</b>
    <b>00001</b>
    <b>00100</b>
    <b>01000</b>
    <b>10000</b>
    <b>00000</b>
)");
}

// ---- The stream between two writers -------------------------------------------------------------

using OpenLog = ScrivelTest::Unprotected<ScrivelXmlGenBase>;

TEST_F(Scalars, NumbersThatALayerInsertsAfterAHexWriterAreDecimal)
{
    EXPECT_EQ(Written<OpenLog>([](auto& log) {
                  log.WriteHex("v", 255, 8);
                  log.logFile << 255 << "\n";
                  log.WriteAddress("a", 255);
                  log.logFile << 255 << "\n";
              }),
              R"(    <v>0x000000ff</v>
255
    <a>0x00000000000000ff</a>
255
)");
}

TEST_F(Scalars, HexWriterLeavesZeroAsTheFillCharacter)
{
    EXPECT_EQ(Written<OpenLog>([](auto& log) {
                  log.logFile << std::setw(4) << 5 << "\n";
                  log.WriteHex("v", 255, 8);
                  log.logFile << std::setw(4) << 5 << "\n";
              }),
              R"(   5
    <v>0x000000ff</v>
0005
)");
}

TEST_F(Scalars, WidthThatALayerHasSetGoesToTheIndentationAndNumbersComeWithoutPadding)
{
    EXPECT_EQ(Written<OpenLog>([](auto& log) {
                  log.depth = 3;
                  log.logFile.width(5);
                  log.WriteDecimal("d", 7);
                  log.depth = 1;
                  log.logFile.width(9);
                  log.WriteHex("v", 255, 4);
                  log.logFile << 5 << "\n";
              }),
              "             <d>7</d>\n"
              "         <v>0x00ff</v>\n"
              "5\n");
}

TEST_F(Scalars, WidthThatALayerHasSetGoesToTheBracketWhereThereIsNoIndentation)
{
    EXPECT_EQ(Written<OpenLog>([](auto& log) {
                  log.depth = 0;
                  log.logFile << std::setfill('.') << std::setw(4);
                  log.WriteDecimal("d", 7);
                  log.WriteString("s", "text");
                  log.depth = 1;
              }),
              "...<d>7</d>\n"
              "<s>text</s>\n");
}

TEST_F(Scalars, WidthOfALeftAdjustedStreamIsFilledAfterTheBracket)
{
    EXPECT_EQ(Written<OpenLog>([](auto& log) {
                  log.depth = 0;
                  log.logFile << std::left << std::setfill('.') << std::setw(4);
                  log.WriteDecimal("d", 7);
                  log.depth = 1;
              }),
              "<...d>7</d>\n");
}

TEST_F(Scalars, WidthThatALayerHasSetGoesToTheBracketAndSlashOfAnEndTagInOne)
{
    EXPECT_EQ(Written<OpenLog>([](auto& log) {
                  log.WriteIdent("d", true, false);
                  log.logFile << std::setfill('.') << std::setw(5);
                  log.WriteIdentWithoutTabs("d");
              }),
              "    <d>...</d>\n");
}

TEST_F(Scalars, WidthThatALayerHasSetGoesToAllThatACommentOrACallBeginsWith)
{
    EXPECT_EQ(Written<OpenLog>([](auto& log) {
                  log.logFile << std::setfill('.') << std::setw(8);
                  log.WriteComment("c");
                  log.logFile << std::setw(8);
                  log.WriteDetailedIdent("c");
                  log.depth = 1;
              }),
              "..\n<!-- c -->\n\n"
              "...    <c call_num=\"0\" call_time=\"0.000000 s\">\n");
}

TEST_F(Scalars, HexWriterOfNoDigitsLeavesZeroAsTheFillCharacterToo)
{
    EXPECT_EQ(Written<OpenLog>([](auto& log) {
                  log.WriteHex("v", 255, 0);
                  log.logFile << std::setw(4) << 5 << "\n";
              }),
              "    <v>0xff</v>\n"
              "0005\n");
}

TEST_F(Scalars, MessageOfAnInvalidEnumeratorLeavesTheFillCharacterAndTheBaseDecimal)
{
    EXPECT_EQ(Written<ScrivelTest::Unprotected<Scrivel2::Scrivel2XmlGenRun>>([](auto& log) {
                  log.WriteReturnType("r", eslapi::CADIReturn_t(12));
                  log.logFile << std::setw(4) << 15 << "\n";
              }),
              "    <r>Invalid return type: 0xc</r>\n"
              "  15\n");
}

TEST_F(Scalars, WidthOfAFailedStreamOutlivesAMessageButNoHexWriter)
{
    Written<ScrivelTest::Unprotected<Scrivel2::Scrivel2XmlGenRun>>([](auto& log) {
        log.logFile.setstate(std::ios_base::badbit);
        log.logFile.width(5);
        log.WriteReturnType("r", eslapi::CADIReturn_t(12));
        EXPECT_EQ(log.logFile.width(), 5);
        log.WriteHex("v", 255, 4);
        EXPECT_EQ(log.logFile.width(), 0);
        log.logFile.clear();
    });
}

TEST_F(Scalars, DecimalFollowsTheBaseThatALayerHasSetAndAHexWriterEndsIt)
{
    EXPECT_EQ(Written<OpenLog>([](auto& log) {
                  log.logFile << std::hex;
                  log.WriteDecimal("d", 255);
                  log.WriteHex("v", 255, 4);
                  log.WriteDecimal("d", 255);
              }),
              R"(    <d>ff</d>
    <v>0x00ff</v>
    <d>255</d>
)");
}

TEST_F(Scalars, FirstTextOfAValueFollowsTheWidthThatADerivedGeneratorHasSet)
{
    struct Padded : ScrivelXmlGenBase
    {
        using ScrivelXmlGenBase::ScrivelXmlGenBase;
        void WriteIdent(std::string name, bool openTag, bool newline) override
        {
            ScrivelXmlGenBase::WriteIdent(name, openTag, newline);
            logFile << std::setw(6);
        }
    };
    EXPECT_EQ(Written<Padded>([](auto& log) { log.WriteDecimal("d", 255); }), "    <d>   255</d>\n");
    EXPECT_EQ(Written<Padded>([](auto& log) { log.WriteString("s", "<a>"); }),
              "    <s>     &lt;a&gt;</s>\n");
    EXPECT_EQ(Written<Padded>([](auto& log) { log.WriteBin("b", 2, 5); }), "    <b>     00010</b>\n");
    EXPECT_EQ(Written<Padded>([](auto& log) {
                  const unsigned char bytes[16] = {};
                  log.WriteByte("v", bytes);
              }),
              "    <v>    00000000 00000000 00000000 00000000 </v>\n");
}

TEST_F(Scalars, TextThatALayerInsertsKeepsItsPlaceAmongTheElements)
{
    EXPECT_EQ(Written<OpenLog>([](auto& log) {
                  log.WriteDecimal("d", 1);
                  log.logFile << "<!-- " << 2 << ' ' << 3.5 << " -->\n";
                  log.WriteDecimal("d", 4);
              }),
              R"(    <d>1</d>
<!-- 2 3.5 -->
    <d>4</d>
)");
}

// ---- Texts --------------------------------------------------------------------------------------

TEST_F(Scalars, EmptyStringIsAnEmptyElement)
{
    EXPECT_EQ(Written([](auto& log) { log.WriteString("name", ""); }), "    <name></name>\n");
}

TEST_F(Scalars, StringIsEscaped)
{
    EXPECT_EQ(Written([](auto& log) { log.WriteString("s", "x<y&z'\n"); }),
              "    <s>x&lt;y&amp;z&apos;\\x0a</s>\n");
}

TEST_F(Scalars, NullCharStringIsWrittenAsNullPointer)
{
    EXPECT_EQ(Written([](auto& log) { log.WriteCharString("t", nullptr); }), "    <t>NULL</t>\n");
}

TEST_F(Scalars, CharStringIsEscapedUpToItsEnd)
{
    EXPECT_EQ(Written([](auto& log) {
                  log.WriteCharString("t", "a>b\0c");
                  log.WriteCharString("t", "");
              }),
              "    <t>a&gt;b</t>\n"
              "    <t></t>\n");
}

TEST_F(Scalars, NameOfAnElementIsCleanedInBothTags)
{
    EXPECT_EQ(Written([](auto& log) {
                  log.WriteDecimal("2nd reg:x", 1);
                  log.WriteString("", "v");
              }),
              "    <_nd_reg_x>1</_nd_reg_x>\n"
              "    <emptyIdent>v</emptyIdent>\n");
}

TEST_F(Scalars, ElementsAreIndentedByFourBlanksALevel)
{
    EXPECT_EQ(Written([](auto& log) {
                  log.WriteIdent("a", true, true);
                  log.WriteBool("b", true);
                  log.WriteIdent("c", true, true);
                  log.WriteBool("d", true);
                  log.WriteIdent("c", false, true);
                  log.WriteIdent("a", false, true);
              }),
              R"(    <a>
        <b>true</b>
        <c>
            <d>true</d>
        </c>
    </a>
)");
}

TEST_F(Scalars, StringWrittenOverPendingTextKeepsWhatStandsBehindIt)
{
    for (const std::size_t length : {0U, 1U, 6U, 7U, 8U, 9U, 255U, 256U, 5000U}) {
        const std::string text(length, 'x');
        const std::string line = "    <s>" + text + "</s>\n";
        const std::string written = Written<OpenLog>([&](auto& log) {
            log.logFile << std::string(line.size() + 20, '.');
            log.SeekFilePointerPosition();
            log.WriteString("s", text);
            log.logFile.seekp(20, std::ios_base::cur);
        });
        EXPECT_EQ(written, line + std::string(20, '.'));
    }
}

// ---- Escaping -----------------------------------------------------------------------------------

TEST_F(Escaping, EveryByteHasItsPiece)
{
    for (int byte = 0; byte < 256; ++byte) {
        std::string piece(1, static_cast<char>(byte));
        switch (byte) {
        case '"':
            piece = "&quot;";
            break;
        case '&':
            piece = "&amp;";
            break;
        case '\'':
            piece = "&apos;";
            break;
        case '<':
            piece = "&lt;";
            break;
        case '>':
            piece = "&gt;";
            break;
        default:
            if (byte < 0x20 || byte > 0x7e) {
                piece = HexPiece(byte);
            }
        }
        const char c = static_cast<char>(byte);
        EXPECT_EQ(ScrivelXmlGenBase::CheckChar(c), piece) << "byte " << byte;
        EXPECT_EQ(ScrivelXmlGenBase::CheckString(std::string(2, c)), piece + piece) << "byte " << byte;
        EXPECT_EQ(Written([&](auto& log) { log.WriteString("s", std::string(1, c)); }),
                  "    <s>" + piece + "</s>\n");
    }
}

TEST_F(Escaping, EntityInTheTextIsEscapedAgain)
{
    EXPECT_EQ(ScrivelXmlGenBase::CheckString("&amp;"), "&amp;amp;");
}

TEST_F(Escaping, MultiByteCharacterBecomesOnePiecePerByte)
{
    EXPECT_EQ(ScrivelXmlGenBase::CheckString("\xc3\xa9"), "\\xc3\\xa9");
}

TEST_F(Escaping, BackslashStaysSoThatATextCantBeUnescaped)
{
    EXPECT_EQ(ScrivelXmlGenBase::CheckString("\\x0a\n"), "\\x0a\\x0a");
}

TEST_F(Escaping, NulInsideAStringIsEscaped)
{
    EXPECT_EQ(ScrivelXmlGenBase::CheckString(std::string("a\0b", 3)), "a\\x00b");
}

TEST_F(Escaping, EmptyTextStaysEmpty)
{
    EXPECT_EQ(ScrivelXmlGenBase::CheckString(""), "");
}

TEST_F(Escaping, TextOfAnyLengthIsEscapedByteByByte)
{
    std::string text;
    std::string escaped;
    for (int i = 0; i < 20000; ++i) {
        text += static_cast<char>(i * 7);
        escaped += ScrivelXmlGenBase::CheckChar(static_cast<char>(i * 7));
        const bool tried = i < 300 || (i > 4080 && i < 4110) || i == 8191 || i == 19999;
        if (tried) {
            EXPECT_EQ(ScrivelXmlGenBase::CheckString(text), escaped) << "length " << text.size();
            EXPECT_EQ(Written([&](auto& log) { log.WriteString("s", text); }),
                      "    <s>" + escaped + "</s>\n")
                << "length " << text.size();
        }
    }
}

TEST_F(Escaping, BytesThatTheLocaleInForceCallsPrintableStayRaw)
{
    platform.isprint.Use([](int c) { return c >= 0xa0 || platform.isprint.Real(c) != 0 ? 1 : 0; });
    EXPECT_EQ(ScrivelXmlGenBase::CheckString("caf\xe9\x9f"), "caf\xe9\\x9f");
    EXPECT_EQ(ScrivelXmlGenBase::CheckChar('\xe9'), "\xe9");
    EXPECT_EQ(Written([](auto& log) { log.WriteString("s", "caf\xe9"); }), "    <s>caf\xe9</s>\n");

    const std::string longText = std::string(5000, '\xe9') + '\x9f';
    EXPECT_EQ(Written([&](auto& log) { log.WriteString("s", longText); }),
              "    <s>" + std::string(5000, '\xe9') + "\\x9f</s>\n");
}

TEST_F(Escaping, BytesThatTheLocaleInForceCallsUnprintableAreEscapedEvenMarkup)
{
    platform.isprint.Use([](int) { return 0; });
    EXPECT_EQ(ScrivelXmlGenBase::CheckString("a<&"), "\\x61\\x3c\\x26");
    EXPECT_EQ(ScrivelXmlGenBase::CheckChar('<'), "\\x3c");
}

TEST_F(Escaping, LocaleThatChangesBetweenTwoTextsCountsFromThen)
{
    EXPECT_EQ(ScrivelXmlGenBase::CheckString("\xe9"), "\\xe9");
    platform.isprint.Use([](int) { return 1; });
    EXPECT_EQ(ScrivelXmlGenBase::CheckString("\xe9"), "\xe9");
}

TEST_F(Escaping, IsprintIsAskedForUnsignedBytes)
{
    int lowest = 0;
    int highest = 0;
    const auto stub = platform.isprint.Use([&](int c) {
        lowest = std::min(lowest, c);
        highest = std::max(highest, c);
        return 1;
    });
    ScrivelXmlGenBase::CheckString("a\xff");
    EXPECT_EQ(lowest, 0);
    EXPECT_EQ(highest, 255);
}

TEST_F(Escaping, LongTextIsEscapedByTheLocaleToo)
{
    platform.isprint.Use([](int c) { return c == 'b' ? 0 : platform.isprint.Real(c); });
    const std::string plain(300, 'a');
    EXPECT_EQ(ScrivelXmlGenBase::CheckString(plain + "b" + plain), plain + "\\x62" + plain);
}

}  // namespace
