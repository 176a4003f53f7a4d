// How names of elements are cleaned.

#include "support/GeneratorTest.h"

#include <cstring>
#include <string>

namespace
{

class Names : public ScrivelTest::GeneratorTest<Scrivel2::ScrivelXmlGenBase>
{
protected:
    /// The name as it stands in a start tag.
    static std::string Cleaned(const std::string& name)
    {
        const std::string tag = Written([&](auto& log) { log.WriteIdent(name, true, false); });
        const std::string begin = "    <";
        EXPECT_EQ(tag.substr(0, begin.size()), begin);
        EXPECT_EQ(tag.back(), '>');
        return tag.substr(begin.size(), tag.size() - begin.size() - 1);
    }

    static bool IsAsciiLetter(int c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }
};

TEST_F(Names, EmptyNameBecomesEmptyIdent)
{
    EXPECT_EQ(Cleaned(""), "emptyIdent");
}

TEST_F(Names, LeadingDigitBlankAndColonBecomeUnderscores)
{
    EXPECT_EQ(Cleaned("2nd reg:x"), "_nd_reg_x");
}

TEST_F(Names, OfTwoLeadingDigitsOnlyTheFirstIsReplaced)
{
    EXPECT_EQ(Cleaned("42"), "_2");
}

TEST_F(Names, LeadingHyphenOrDotIsKeptAlthoughXmlHasNoSuchNames)
{
    EXPECT_EQ(Cleaned("-x"), "-x");
    EXPECT_EQ(Cleaned(".text"), ".text");
}

TEST_F(Names, EveryByteInsideANameIsKeptOrReplacedOneForOne)
{
    for (int byte = 0; byte < 256; ++byte) {
        const std::string name = {'a', static_cast<char>(byte), 'b'};
        const bool kept = IsAsciiLetter(byte) || (byte >= '0' && byte <= '9') || byte == '_' ||
                          byte == '-' || byte == '.';
        EXPECT_EQ(Cleaned(name), kept ? name : "a_b") << "byte " << byte;
    }
}

TEST_F(Names, EveryByteAtTheHeadOfANameIsKeptOrReplacedOneForOne)
{
    for (int byte = 0; byte < 256; ++byte) {
        const std::string name = {static_cast<char>(byte), 'b'};
        const bool kept = IsAsciiLetter(byte) || byte == '_' || byte == '-' || byte == '.';
        EXPECT_EQ(Cleaned(name), kept ? name : "_b") << "byte " << byte;
    }
}

TEST_F(Names, LettersAreThoseOfAsciiWhateverTheLocaleCallsALetter)
{
    ScrivelTest::platform.isalpha.Use([](int) { return 1; });
    EXPECT_EQ(Cleaned("a\xe9"
                      "1"),
              "a_1");
}

TEST_F(Names, MultiByteCharacterBecomesOneUnderscorePerByte)
{
    EXPECT_EQ(Cleaned("gr\xc3\xbc\xc3\x9f"
                      "e"),
              "gr____e");
}

TEST_F(Names, LongNameIsWrittenInFull)
{
    const std::string name(100000, 'n');
    EXPECT_EQ(Cleaned(name), name);
}

TEST_F(Names, NameIsCleanedInStartTagsEndTagsAndCallElements)
{
    EXPECT_EQ(Written([](auto& log) {
                  log.WriteIdent("1 a", true, true);
                  log.WriteIdent("1 a", false, true);
                  log.WriteDetailedIdent("1 b");
                  log.WriteIdent("1 c", true, false);
                  log.WriteIdentWithoutTabs("1 c");
              }),
              R"(    <__a>
    </__a>
    <__b call_num="0" call_time="0.000000 s">
        <__c></__c>
)");
}

}  // namespace
