// The XML parser's events, and where in the document they are.

#include <gtest/gtest.h>

#include "scrivel/XmlParser.h"

using namespace ScrivelReader;

namespace
{

class Recorder final : public XmlEvents
{
public:
    void StartElement(std::string_view name, const XmlAttribute* attributes, std::size_t count) override
    {
        text += "<" + std::string(name);
        for (std::size_t i = 0; i < count; ++i)
            text += " " + std::string(attributes[i].name) + "=" + std::string(attributes[i].value);
        const XmlParser::Place place = parser->TagBegin();
        text += "@" + std::to_string(place.offset) + ":" + std::to_string(place.line) + ">";
    }
    void EndElement() override { text += "</@" + std::to_string(parser->Position()) + ">"; }
    void Text(std::string_view more) override { text += more; }
    void Comment(std::string_view comment) override { text += "!" + std::string(comment) + "!"; }

    XmlParser* parser = nullptr;
    std::string text;
};

/// The events of a document that is fed in pieces, then its error if it has one.
std::string Events(std::string_view document, std::size_t piece = 1000)
{
    Recorder recorder;
    const auto parser = MakeXmlParser(recorder);
    recorder.parser = parser.get();
    for (std::size_t at = 0; at < document.size(); at += piece) {
        const std::string_view bytes = document.substr(at, piece);
        parser->Feed(bytes.data(), bytes.size());
    }
    if (!parser->Finish())
        recorder.text += " error at " + std::to_string(parser->ErrorLine()) + ": " + parser->Error();
    return recorder.text;
}

TEST(XmlParser, TellsWhereTagsBeginAndEnd)
{
    constexpr std::string_view document = "<a>\n <b c='1'\n d=\"&lt;\">x&amp;y</b>\n <e/></a>";
    constexpr std::string_view events = "<a@0:1>\n <b c=1 d=<@5:2>x&y</@35>\n <e@37:4></@41></@45>";
    for (std::size_t piece = 1; piece <= document.size(); ++piece)
        EXPECT_EQ(Events(document, piece), events) << piece;
}

TEST(XmlParser, KeepsPrefixesAsTheyStand)
{
    EXPECT_EQ(Events("<a:b/>"), "<a:b@0:1></@6>");
}

/// Wants the texts of elements that are named so, and no others.
class Chooser final : public XmlEvents
{
public:
    void StartElement(std::string_view name, const XmlAttribute*, std::size_t) override
    {
        parser->AnnounceTexts(name == "wanted");
    }
    void EndElement() override { parser->AnnounceTexts(false); }
    void Text(std::string_view more) override { text += more; }
    void Comment(std::string_view) override {}

    XmlParser* parser = nullptr;
    std::string text;
};

TEST(XmlParser, PassesOverTextsThatNobodyWants)
{
    constexpr std::string_view document =
        "<a>1<wanted>2&amp;<![CDATA[3]]> </wanted>4&lt;<![CDATA[5]]>\n<b>6</b><wanted>\n</wanted></a>";
    for (std::size_t piece = 1; piece <= document.size(); ++piece) {
        Chooser chooser;
        const auto parser = MakeXmlParser(chooser);
        chooser.parser = parser.get();
        for (std::size_t at = 0; at < document.size(); at += piece) {
            const std::string_view bytes = document.substr(at, piece);
            parser->Feed(bytes.data(), bytes.size());
        }
        EXPECT_TRUE(parser->Finish());
        EXPECT_EQ(chooser.text, "2&3 \n") << piece;
    }
}

TEST(XmlParser, TellsTheFirstError)
{
    EXPECT_EQ(Events("<a>\n<b>\n</a>"),
              "<a@0:1>\n<b@4:2>\n error at 3: Opening and ending tag mismatch: b line 2 and a");
}

TEST(XmlParser, DoesNotAnnounceATagThatIsCutShort)
{
    EXPECT_EQ(Events("<a><b c='1'").substr(0, 14), "<a@0:1> error ");
}

TEST(XmlParser, SaysOfWhatBeginsWithNoTagThatItIsNoDocument)
{
    for (const std::string& bytes :
         {std::string(5000, '\0'), std::string("PK\x03\x04 and more"), std::string("text")})
        EXPECT_EQ(Events(bytes), " error at 1: this is no XML document");
}

TEST(XmlParser, TellsADocumentThatEndsTooEarlyFromOneThatGoesOnTooLong)
{
    EXPECT_EQ(Events(""), " error at 1: the document ends too early");
    EXPECT_EQ(Events("<a><b></b>"), "<a@0:1><b@3:1></@10> error at 1: the document ends too early");
    EXPECT_EQ(Events("<a><b></b></"), "<a@0:1><b@3:1></@10> error at 1: the document ends too early");
    EXPECT_EQ(Events("<a/>x"), "<a@0:1></@4> error at 1: Extra content at the end of the document");
}

TEST(XmlParser, RefusesDeclaredEntitiesAndFetchesNone)
{
    EXPECT_EQ(Events("<!DOCTYPE a [<!ENTITY x SYSTEM \"file:///etc/hostname\">]><a>&x;</a>"),
              " error at 1: a log has no document type declaration");
}

/// The events of a document with a text of 20 MB in it, a million lines.
std::string EventsAround(const std::string& before, const std::string& after)
{
    std::string text;
    for (int i = 0; i < 1000 * 1000; ++i)
        text += "<a b='1' c='d'>?\xc3\xa9\n";
    return Events(before + text + after, 64 * 1024 - 7);
}

TEST(XmlParser, ReadsInstructionsOfAnyLength)
{
    EXPECT_EQ(EventsAround("<a><b/><?x ", "?>\n<c/></a>"),
              "<a@0:1><b@3:1></@7>\n<c@19000014:1000002></@19000018></@19000022>");
    EXPECT_EQ(EventsAround("<a></a><?x ", "?><!-- -->"), "<a@0:1></@7>! !");
}

TEST(XmlParser, ReadsSectionsOfAnyLength)
{
    const std::string events = EventsAround("<a><![CDATA[", "]]></a>");
    EXPECT_EQ(events.size(), 19000000 + 7 + 12);
    EXPECT_EQ(events.substr(0, 28), "<a@0:1><a b='1' c='d'>?\xc3\xa9\n<a");
    EXPECT_EQ(events.substr(events.size() - 12), "</@19000019>");
}

/// 20 MB of the same few bytes.
std::string Repeated(std::string_view bytes)
{
    std::string text;
    while (text.size() < 20 * 1000 * 1000)
        text += bytes;
    return text;
}

TEST(XmlParser, ReadsInstructionsOfAnyLengthWhateverIsInThem)
{
    for (const std::string_view bytes : {"A", ".", "<", "-", ">", "]", "?", "\xc3\xa9", "\xe4\xb8\xad",
                                         "\xf0\x9f\x99\x82", "\r\n", "\r"}) {
        EXPECT_EQ(Events("<a><?x " + Repeated(bytes) + "?></a>", 64 * 1024).substr(0, 12), "<a@0:1></@20")
            << bytes;
    }
    EXPECT_EQ(Events("<a><?x\n" + Repeated("A") + "?></a>", 64 * 1024), "<a@0:1></@20000013>");
}

TEST(XmlParser, ReadsSectionsOfAnyLengthWhateverIsInThem)
{
    for (const std::string_view bytes :
         {"A", "<", "?", "-", ">", "]", "]>", "\xe4\xb8\xad", "\xf0\x9f\x99\x82"}) {
        const std::string text = Repeated(bytes);
        EXPECT_TRUE(Events("<a><![CDATA[" + text + "]]></a>", 64 * 1024) ==
                    "<a@0:1>" + text + "</@" + std::to_string(text.size() + 19) + ">")
            << bytes;
    }
}

TEST(XmlParser, FindsTheEndOfLongMarkupWhereverPiecesEnd)
{
    // In the sixth piece the markup is long; it ends at each byte of what ends the markup, and around it.
    constexpr std::size_t piece = 64 * 1024;
    for (std::size_t size = 6 * piece - 30; size < 6 * piece; ++size) {
        const std::string text(size, 'A');
        const std::string before = "<a@0:1>";
        EXPECT_EQ(Events("<a><?x " + text + "?><b/></a>", piece),
                  before + "<b@" + std::to_string(size + 9) + ":1></@" + std::to_string(size + 13) +
                      "></@" + std::to_string(size + 17) + ">");
        EXPECT_TRUE(Events("<a><![CDATA[" + text + "]]></a>", piece) ==
                    before + text + "</@" + std::to_string(size + 19) + ">")
            << size;
        EXPECT_EQ(Events("<a></a><!--" + text + "--><!---->", piece).find("error"), std::string::npos);
    }
}

TEST(XmlParser, ReadsCommentsOfAnyLengthAfterTheRootElement)
{
    const std::string events = EventsAround("<a></a><!--", "-->");
    EXPECT_EQ(events.substr(0, 13), "<a@0:1></@7>!");
    EXPECT_EQ(events.find("error"), std::string::npos);
    for (const std::string_view bytes : {"A", "a->", "-\xe4\xb8\xad"})
        EXPECT_EQ(Events("<a></a><!--" + Repeated(bytes) + "-->", 64 * 1024).find("error"),
                  std::string::npos);
    EXPECT_EQ(EventsAround("<a><!--", "--></a>"),
              "<a@0:1> error at 1: a tag or a comment is longer than 16 MB");
}

TEST(XmlParser, ReadsCommentsOutsideTheRootElementAsXmlHasThemHoweverTheyAreFed)
{
    const auto read = [](const std::string& document) {
        const std::string events = Events(document);
        for (std::size_t piece = 1; piece < document.size(); ++piece)
            EXPECT_EQ(Events(document, piece), events) << document << " in pieces of " << piece;
        return events;
    };
    for (const std::string text : {">", "->", ">-", " ", "", "a", "-> !", "!<!", "- b"}) {
        const std::string comment = "<!--" + text + " c -->";
        const std::string shown = "!" + text + " c !";
        EXPECT_EQ(read("<a/>\n" + comment), "<a@0:1></@4>" + shown);
        EXPECT_EQ(read(comment + "\n<?x <!--> ?><a/>").substr(0, shown.size()), shown);
        EXPECT_EQ(read("<a>" + comment + "</a>").substr(7, shown.size()), shown);
        read("<a/>" + comment + "\n" + comment + "<?x <!--> ?>");
    }
    EXPECT_EQ(read("<!--> a --><b/><!---> c -->"), "!> a !<b@11:1></@15>!-> c !");
    for (const char* const text : {"<!-->", "<!--->", "<!-", "<!--> --", "<!-- -- -->", "<!----->"})
        for (std::size_t piece = 1; piece < 16; ++piece)
            EXPECT_NE(Events(std::string("<a/>") + text, piece).find("error"), std::string::npos) << text;
}

TEST(XmlParser, IsStrictWithinInstructionsOfAnyLength)
{
    const std::string before = "<a@0:1></@7> error at ";
    EXPECT_EQ(EventsAround("<a></a><?x ", "\x01?>").substr(0, 30), before + "1000001:");
    EXPECT_EQ(EventsAround("<a></a><?x ", "?><b/>").substr(0, 30), before + "1000001:");
    EXPECT_EQ(EventsAround("<a></a><?x ", "").substr(0, 22), before);
    EXPECT_EQ(EventsAround("<a></a><?-x ", "?>").substr(0, 22), before);
    for (const std::string_view bytes : {"\xc3", "A\xe4\xb8"}) {
        EXPECT_NE(Events("<a><?x " + Repeated(bytes) + "?></a>", 64 * 1024).find("error"),
                  std::string::npos);
        EXPECT_NE(Events("<a><![CDATA[" + Repeated(bytes) + "]]></a>", 64 * 1024).find("error"),
                  std::string::npos);
    }
    EXPECT_NE(Events("<a></a><!--" + Repeated("A") + "-- -->", 64 * 1024).find("error"),
              std::string::npos);
}

TEST(XmlParser, RefusesBytesThatAreNotInTheDeclaredEncoding)
{
    const auto document = [](const std::string& encoding, const std::string& text) {
        return "<?xml version=\"1.0\" encoding=\"" + encoding + "\"?><a>" + text + " and more text</a>";
    };
    const std::string foreign = "\xff\xff";
    EXPECT_NE(Events(document("EUC-JP", "\xa5\xbb")).find(">\u30bb and more text</"), std::string::npos);
    for (const char* const encoding : {"EUC-JP", "UTF-7", "UTF-8", "UTF--8"}) {
        const std::string bytes = document(encoding, foreign);
        for (std::size_t piece = 1; piece <= bytes.size(); ++piece) {
            const std::string events = Events(bytes, piece);
            EXPECT_NE(events.find("error"), std::string::npos) << encoding << " in pieces of " << piece;
            EXPECT_EQ(events.find('\n'), std::string::npos);
        }
    }
}

TEST(XmlParser, RefusesATagThatDoesNotEnd)
{
    const std::string events = Events("<a b='" + std::string(40 * 1024 * 1024, 'x'), 1024 * 1024);
    EXPECT_EQ(events, " error at 1: a tag or a comment is longer than 16 MB");
}

}  // namespace
