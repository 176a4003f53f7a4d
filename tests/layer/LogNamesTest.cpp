// Names that the layer makes legal or finds unused, and texts of comments.

#include "scrivel/LogNames.h"

#include "support/GeneratorTest.h"

#include <stdlib.h>
#include <time.h>

using namespace Scrivel2;

namespace
{

class LogNames : public ScrivelTest::ScratchTest
{
};

TEST_F(LogNames, LegalNameKeepsAPlainIdentifier)
{
    EXPECT_EQ(LegalName("CADIRegRead_2.x-y"), "CADIRegRead_2.x-y");
}

TEST_F(LogNames, LegalNamePutsAnUnderscoreForEachCharacterThatNamesMayNotHave)
{
    EXPECT_EQ(LegalName("a b/c<d>\"e'\xc3\xa9:"), "a_b_c_d__e____");
}

TEST_F(LogNames, LegalNameBeginsWithALetterOrAnUnderscore)
{
    EXPECT_EQ(LegalName("2nd"), "_nd");
    EXPECT_EQ(LegalName("-x"), "_x");
    EXPECT_EQ(LegalName(".text"), "_text");
    EXPECT_EQ(LegalName("_x"), "_x");
}

TEST_F(LogNames, LegalNameHasNoTwoHyphensSideBySide)
{
    EXPECT_EQ(LegalName("a--b---c"), "a-_b-_-c");
}

TEST_F(LogNames, LegalNameOfNothingIsThatOfTheGenerators)
{
    EXPECT_EQ(LegalName(""), "emptyIdent");
}

TEST_F(LogNames, LibXml2AcceptsEveryLegalNameOfOneOrTwoBytes)
{
    for (int first = 0; first < 256; ++first) {
        for (const char* second : {"", "\t", " ", "\"", "-", ".", "0", ":", "<", "a", "\x7f", "\x80"}) {
            const std::string text = static_cast<char>(first) + std::string(second);
            const std::string name = LegalName(text);
            EXPECT_EQ(name.size(), text.size());
            ASSERT_TRUE(ScrivelTest::IsDocument("<" + name + "><!-- " + name + " --></" + name + ">"))
                << name;
        }
    }
}

TEST_F(LogNames, DatedNameHasDateAndTimeBehindIt)
{
    setenv("TZ", "UTC0", 1);
    tzset();
    EXPECT_EQ(DatedName("run"), "run-20261121-140359");
    EXPECT_EQ(LegalName(DatedName("run")), DatedName("run"));
}

TEST_F(LogNames, CommentTextTakesHyphensApart)
{
    EXPECT_EQ(CommentText("a--b"), "a- -b");
    EXPECT_EQ(CommentText("----"), "- - - -");
    EXPECT_EQ(CommentText("-"), "-");
}

TEST_F(LogNames, CommentTextTakesTheEndOfAnInstructionApart)
{
    EXPECT_EQ(CommentText("<?x ?>"), "<?x ? >");
    EXPECT_EQ(CommentText("?>?>"), "? >? >");
    EXPECT_EQ(CommentText("?"), "?");
    EXPECT_EQ(CommentText(">a>"), ">a>");
}

TEST_F(LogNames, CommentTextWritesWhatXmlDoesNotAllowAsNumbers)
{
    EXPECT_EQ(CommentText(std::string_view("a\0\x1b\x7f\xff\xc3\xa9", 7)),
              "a\\x00\\x1b\\x7f\\xff\\xc3\\xa9");
}

TEST_F(LogNames, CommentTextKeepsMarkupTabsAndLines)
{
    EXPECT_EQ(CommentText("<a> & \"b\"\n\tc"), "<a> & \"b\"\n\tc");
}

TEST_F(LogNames, LibXml2AcceptsACommentOfAnyBytes)
{
    std::string all;
    for (int i = 0; i < 256; ++i) {
        all += static_cast<char>(i);
    }
    for (const std::string& text : {all, all + "-", "-" + all, std::string("-->"), std::string("]]>")}) {
        EXPECT_TRUE(ScrivelTest::IsDocument("<a><!-- " + CommentText(text) + " --></a>")) << text;
    }
}

}  // namespace
