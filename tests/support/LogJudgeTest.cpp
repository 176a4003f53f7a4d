// The judge of logs, judged: what it accepts, what it refuses, and what it hands out.

#include "judge/LogJudge.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <stdexcept>

using namespace ScrivelTest;

namespace
{

/// Notes what it is shown.
class Notes : public LogVisitor
{
public:
    void Start(std::string_view name, const std::vector<Attribute>& attributes) override
    {
        text += '<' + std::string(name);
        for (const Attribute& attribute : attributes) {
            text += ' ' + attribute.name + '=' + attribute.value;
        }
        text += '>';
    }
    void End(std::string_view name) override { text += "</" + std::string(name) + '>'; }
    void Text(std::string_view piece) override { text += piece; }

    std::string text;
};

const std::string log = R"(<?xml version="1.0" encoding="UTF-8"?>
<trace-1
 OS="Linux">

<!-- a comment -->

    <Call call_num="1" call_time="0.1 s">
        <text>a &lt;&amp;</text>
        <data>
            <value>1</value>
            <value></value>
        </data>
    </Call>
</trace-1>
)";

TEST(LogJudge, AcceptsADocument)
{
    EXPECT_TRUE(IsDocument(log));
    EXPECT_TRUE(IsDocument("<a/>"));
    EXPECT_TRUE(IsDocument("<a/>\n<?x instructions may follow?>\n"));
}

TEST(LogJudge, RefusesWhatIsCutOffAtAnyPlace)
{
    const std::size_t rootEnd = log.find("</trace-1>") + std::string("</trace-1>").size();
    for (std::size_t length = 0; length < rootEnd; ++length) {
        EXPECT_FALSE(IsDocument(log.substr(0, length))) << length;
    }
}

TEST(LogJudge, RefusesWhatIsNoDocument)
{
    for (const char* text : {"", "text", "<a/>b", "<a/><b/>", "<a></b>", "<a><b></a></b>", "<a>&</a>",
                             "<a>&b;</a>", "<a>\x01</a>", "<a>\xe9</a>", "<-a/>", "<a b=1/>",
                             "<a b='1' b='1'/>", "<a><!-- b -- c --></a>", "<a><?x</a>"}) {
        EXPECT_FALSE(IsDocument(text)) << text;
    }
}

TEST(LogJudge, RefusesPrefixesThatNothingDeclaresUnlessAnyWillDo)
{
    const std::string prefixed = "<a><b c:d='1'>text</b></a>";
    EXPECT_FALSE(IsDocument(prefixed));
    EXPECT_TRUE(IsDocument(prefixed, Prefixes::Any));
    EXPECT_THROW(XPath(prefixed, "/a/b"), std::invalid_argument);
    EXPECT_EQ(XPath(prefixed, "/a/b", Prefixes::Any), std::vector<std::string>{"text"});
    EXPECT_FALSE(IsDocument("<a c:d='1'>", Prefixes::Any));
}

TEST(LogJudge, AcceptsElementsInsideEachOtherToAnyDepth)
{
    std::string text;
    for (int i = 0; i < 1000; ++i) {
        text = "<a>" + text + "</a>";
    }
    EXPECT_TRUE(IsDocument(text));
}

TEST(LogJudge, ShowsTagsAttributesAndTexts)
{
    Notes notes;
    const Verdict verdict = Visit("<a b='1' c='&amp;2'>x<d/>&lt;y</a>", notes);
    EXPECT_TRUE(verdict.accepted);
    EXPECT_EQ(verdict.problem, "");
    EXPECT_EQ(notes.text, "<a b=1 c=&2>x<d></d><y</a>");
}

TEST(LogJudge, ShowsWhatStandsBeforeTheFirstErrorAndSaysWhereThatIs)
{
    Notes notes;
    const Verdict verdict = Visit("<a>\n<b>1</b>\n<c></d>\n<e>2</e>\n</a>\n", notes);
    EXPECT_FALSE(verdict.accepted);
    EXPECT_EQ(verdict.problem, "line 3: Opening and ending tag mismatch: c line 3 and d");
    EXPECT_EQ(notes.text.substr(0, 15), "<a>\n<b>1</b>\n<c");
    EXPECT_EQ(notes.text.find("<e>"), std::string::npos);
}

TEST(LogJudge, ReadsAFileAsItReadsItsBytes)
{
    const std::string name = testing::TempDir() + "judged.xml";
    std::ofstream(name) << log;
    Notes ofFile;
    EXPECT_TRUE(VisitFile(name, ofFile).accepted);
    Notes ofBytes;
    Visit(log, ofBytes);
    EXPECT_EQ(ofFile.text, ofBytes.text);
    std::remove(name.c_str());
    EXPECT_EQ(VisitFile(name, ofFile).problem, "nothing to read");
}

TEST(LogJudge, KeepsElementsWithTheirLevelsAndTheirOwnTexts)
{
    const auto elements = Elements(log);
    ASSERT_TRUE(elements.has_value());
    std::string seen;
    for (const Element& element : *elements) {
        seen += std::to_string(element.level) + ' ' + element.name +
                ValueOf("call_num", element.attributes) + '\n';
    }
    EXPECT_EQ(seen, R"(0 trace-1
1 Call1
2 text
2 data
3 value
3 value
)");
    EXPECT_EQ((*elements)[2].text, "a <&");
    EXPECT_EQ((*elements)[3].text, "\n            \n            \n        ");
    EXPECT_EQ((*elements)[4].text, "1");
    EXPECT_EQ((*elements)[5].text, "");
    EXPECT_FALSE(Elements("<a><b></a>").has_value());
}

TEST(LogJudge, FindsNodesNumbersAndTruthByXPath)
{
    EXPECT_EQ(XPath(log, "//value"), (std::vector<std::string>{"1", ""}));
    EXPECT_EQ(XPath(log, "//@call_time"), std::vector<std::string>{"0.1 s"});
    EXPECT_EQ(XPath(log, "count(//value)"), std::vector<std::string>{"2"});
    EXPECT_EQ(XPath(log, "//nothing"), std::vector<std::string>{});
    EXPECT_THROW(XPath("<a>", "//a"), std::invalid_argument);
}

TEST(LogJudge, BareLogLacksInstructionsCommentsAndBlanksBetweenElements)
{
    const std::string bare = BareLog("<a><b/></a>");
    EXPECT_EQ(bare, "<a><b></b></a>");
    EXPECT_EQ(BareLog("<a><?x y?><b/><!-- c --></a>\n<?x z?>\n"), bare);
    EXPECT_EQ(BareLog("<a>\n    <?x y?>\n<b/> </a>"), bare);
    EXPECT_NE(BareLog("<a><b>1</b></a>"), bare);
    EXPECT_NE(BareLog("<a><b> </b></a>"), bare);
    EXPECT_EQ(BareLog("<a><b></a>"), "");
}

}  // namespace
