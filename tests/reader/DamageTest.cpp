// What is kept of a damaged log, and what is said of it.

#include <algorithm>
#include <regex>

#include <gtest/gtest.h>

#include "reader/Copies.h"
#include "reader/Reading.h"
#include "judge/LogJudge.h"

using namespace ScrivelReader;
using namespace ScrivelTest;

namespace
{

/// Calls 1 to count, one element each.
std::string Elements(int count)
{
    std::string text;
    for (int number = 1; number <= count; ++number) {
        text += "    <CADIReset call_num=\"" + std::to_string(number) +
                "\"\n     call_time=\"0.000001 s\"\n     threadId=\"1234\">\n        <level>" +
                std::to_string(number) +
                "</level>\n        <return_time>0.000002 s</return_time>\n"
                "        <return>CADI_STATUS_OK</return>\n    </CADIReset>\n";
    }
    return text;
}

std::string Numbers(const Reading& reading)
{
    std::string text;
    for (const Call& call : reading.calls)
        text += (text.empty() ? "" : " ") + std::to_string(call.number);
    return text;
}

TEST(Damage, ACutAnywhereLosesOnlyTheElementThatIsCut)
{
    const std::string log = LogOf(Elements(3));
    const std::string endTag = "</CADIReset>";
    for (std::size_t size = 0; size < log.size(); ++size) {
        const std::string cut = log.substr(0, size);
        const Reading reading = ReadBytes(cut);
        std::size_t complete = 0;
        for (std::size_t at = cut.find(endTag); at != std::string::npos; at = cut.find(endTag, at + 1))
            ++complete;
        EXPECT_EQ(reading.calls.size(), complete) << size;
        EXPECT_EQ(reading.end.whole, IsDocument(cut)) << size;
        EXPECT_EQ(reading.damages.size(), reading.end.whole ? 0u : 1u) << size;
    }
}

TEST(Damage, ByACallWithinAnotherIsTheSameWhateverThePieces)
{
    std::string log = LogOf(Elements(3));
    log.erase(log.find("    </CADIReset>"), sizeof "    </CADIReset>");
    const Reading whole = ReadBytes(log);
    EXPECT_EQ(Numbers(whole), "2 3");
    for (std::size_t piece = 1; piece < log.size(); ++piece) {
        const Reading reading = ReadBytes(log, {}, piece);
        EXPECT_EQ(Numbers(reading), "2 3") << piece;
        ASSERT_EQ(reading.damages.size(), 1u) << piece;
        EXPECT_EQ(reading.damages.front().offset, whole.damages.front().offset) << piece;
    }
}

TEST(Damage, InOneElementLosesThatElement)
{
    std::string log = LogOf(Elements(5));
    log[log.find("<level>3") + 2] = '<';
    const Reading reading = ReadBytes(log);
    EXPECT_EQ(Numbers(reading), "1 2 4 5");
    ASSERT_EQ(reading.damages.size(), 1u);
    const Damage& damage = reading.damages.front();
    EXPECT_EQ(damage.call, 3u);
    EXPECT_EQ(damage.callName, "CADIReset");
    EXPECT_EQ(log.substr(std::size_t(damage.lostFrom), 23), "<CADIReset call_num=\"3\"");
    EXPECT_EQ(log.substr(std::size_t(damage.lostTo), 23), "<CADIReset call_num=\"4\"");
    EXPECT_EQ(damage.line, 24u);
    EXPECT_FALSE(reading.end.whole);
}

TEST(Damage, OfAnEndTagLosesOneElementOnly)
{
    std::string log = LogOf(Elements(5));
    log.erase(log.find("</CADIReset>", log.find("<level>3")), 13);
    const Reading reading = ReadBytes(log);
    EXPECT_EQ(Numbers(reading), "1 2 4 5");
    ASSERT_EQ(reading.damages.size(), 1u);
    EXPECT_EQ(reading.damages.front().what, "a call begins within another call's element");
    EXPECT_FALSE(reading.end.whole);
}

TEST(Damage, OfAnEndTagLosesOneElementOnlyHoweverTheLogIsIndented)
{
    for (const std::string indent : {"  ", "   ", "\t", "\t\t"}) {
        std::string log = std::regex_replace(LogOf(Elements(5)), std::regex("\n    "), "\n" + indent);
        log.erase(log.find("</CADIReset>", log.find("<level>3")), 13);
        for (const std::size_t piece : {std::size_t(1), std::size_t(7), log.size()}) {
            const Reading reading = ReadBytes(log, {}, piece);
            EXPECT_EQ(Numbers(reading), "1 2 4 5") << '"' << indent << "\" in pieces of " << piece;
            EXPECT_EQ(reading.damages.at(0).what, "a call begins within another call's element");
        }
    }
}

TEST(Damage, OfCallsWithinEachOtherIsNotReadFromEachOfThem)
{
    class Entries : public LogHandler
    {
    public:
        void Entered(const Call&) override { ++count; }
        std::size_t count = 0;
    };
    std::string calls = "    <A call_num=\"1\" call_time=\"0.000001 s\">\n";
    for (int i = 0; i < 1000; ++i)
        calls += "<B call_num=\"2\">\n";
    Entries entries;
    LogReader reader(entries);
    reader.Feed(LogOf(calls + "<<\n" + Elements(3)));
    EXPECT_FALSE(reader.Finish().whole);
    EXPECT_LT(entries.count, 100u);
    EXPECT_EQ(Numbers(ReadBytes(LogOf(calls + "<<\n" + Elements(3)))), "1 2 3");
    EXPECT_EQ(Numbers(ReadBytes(LogOf(calls + "<![CDATA[\n" + Elements(3)))), "");
}

TEST(Damage, IsNotWhatAStrictParserAccepts)
{
    // Calls within calls, in a call's place: nobody writes it, but it is XML.
    std::string log = LogOf(Elements(5));
    log.erase(log.find("</CADIReset>", log.find("<level>3")), 12);
    log.insert(log.rfind("</run-4242>"), "</CADIReset>");
    ASSERT_TRUE(IsDocument(log));
    const Reading reading = ReadBytes(log);
    EXPECT_TRUE(reading.end.whole);
    EXPECT_EQ(reading.damages.size(), 2u);
    EXPECT_EQ(Numbers(reading), "1 2 4 5");
}

TEST(Damage, OfTheHeaderLosesTheHeader)
{
    const std::string log = LogOf(Elements(3));
    const Reading reading = ReadBytes(log.substr(60));
    EXPECT_EQ(Numbers(reading), "1 2 3");
    EXPECT_TRUE(reading.headers.empty());
    EXPECT_EQ(reading.damages.size(), 1u);
}

TEST(Damage, OfHeaderAndStartTagLosesNoCallAfterThem)
{
    std::string log = LogOf(Elements(4));
    log.erase(0, log.find("    <CADIReset"));
    const std::size_t startTag = log.find("    <CADIReset call_num=\"2\"");
    log.erase(startTag, log.find("    </CADIReset>", startTag) - startTag);
    EXPECT_EQ(Numbers(ReadBytes(log)), "1 3 4");
}

TEST(Damage, OfAHeaderEndsReadingAtTheEndTagOfTheRoot)
{
    std::string log = LogOf(Elements(1));
    log.erase(0, log.find("    <CADIReset"));
    for (const char* const after : {"", "<", "\n    <CADIReset call_num=\"2\""}) {
        const Copy copy = RecoveredFrom(log.substr(0, log.rfind('>')) + after);
        EXPECT_TRUE(IsDocument(copy.bytes)) << copy.bytes;
        EXPECT_EQ(Numbers(ReadBytes(copy.bytes)), "1");
    }
}

TEST(Damage, IsAFirstElementThatIsACall)
{
    const std::string log = LogOf(Elements(3));
    const Reading reading = ReadBytes(log.substr(log.find("    <CADIReset")));
    EXPECT_EQ(Numbers(reading), "1 2 3");
    ASSERT_EQ(reading.damages.size(), 1u);
    EXPECT_EQ(reading.damages.front().what, "the start tag of the root element is missing");
    EXPECT_FALSE(reading.end.whole);
}

TEST(Damage, IsANameThatXmlDoesNotAllow)
{
    for (const std::string name : {"-x", ".text", "1", "a\"b", "a<b/"}) {
        std::string log = LogOf(Elements(3));
        log.replace(log.find("<level>2</level>"), 16, "<" + name + ">2</" + name + ">");
        const Reading reading = ReadBytes(log);
        EXPECT_EQ(Numbers(reading), "1 3") << name;
        ASSERT_EQ(reading.damages.size(), 1u);
        if (name != "a<b/") {
            EXPECT_EQ(reading.damages.front().what, "\"" + name + "\" is no name that XML allows");
        }
    }
    const Reading root = ReadBytes("<?xml version=\"1.0\"?>\n<runs/my run-4242\n time=\"now\">\n");
    ASSERT_EQ(root.damages.size(), 1u);
    EXPECT_EQ(root.damages.front().what, "\"runs/my\" is no name that XML allows");
}

TEST(Damage, OfALogThatWasCutShortIsItsEnd)
{
    const std::string log = LogOf(Elements(2));
    for (const char* const last : {"call_num=\"2", "<level>2", "</level", "<return", "</run", "-4242"}) {
        const Reading reading = ReadBytes(log.substr(0, log.rfind(last)));
        ASSERT_EQ(reading.damages.size(), 1u);
        EXPECT_EQ(reading.damages.front().what, "the document ends too early") << last;
    }
}

TEST(Damage, OfALogThatIsCutOffIsThereAlone)
{
    const std::string log = LogOf(Elements(3));
    const std::string torn = log.substr(0, log.rfind("</level"));
    const Reading reading = ReadBytes(torn, {}, 1 << 20, "it is cut off");
    EXPECT_EQ(Numbers(reading), "1 2");
    ASSERT_EQ(reading.damages.size(), 1u);
    EXPECT_EQ(reading.damages.front().what, "it is cut off");
    EXPECT_EQ(reading.damages.front().call, 3u);
    EXPECT_EQ(reading.end.damages, 1u);
    EXPECT_FALSE(reading.end.whole);
}

TEST(Damage, IsThereWhereAWholeDocumentIsCutOff)
{
    std::string log = LogOf(Elements(3));
    for (const std::string end : {"", "\n\n", "<!-- after it -->\n"}) {
        const std::string whole = log + end;
        const Reading reading = ReadBytes(whole, {}, 1000, "it is cut off");
        EXPECT_EQ(Numbers(reading), "1 2 3");
        ASSERT_EQ(reading.damages.size(), 1u);
        EXPECT_EQ(reading.damages.front().what, "it is cut off");
        EXPECT_EQ(reading.damages.front().offset, whole.size());
        EXPECT_EQ(reading.damages.front().line,
                  1 + std::uint64_t(std::count(whole.begin(), whole.end(), '\n')));
        EXPECT_FALSE(reading.end.whole);
    }
}

TEST(Damage, IsToldBesidesWhereALogIsCutOff)
{
    std::string log = LogOf(Elements(2));
    for (const std::string& after : {std::string("x\n"), "<b/>\n" + std::string(1000, '\n')}) {
        const std::string broken = log + after;
        const Reading reading = ReadBytes(broken, {}, 100, "it is cut off");
        ASSERT_EQ(reading.damages.size(), 2u);
        EXPECT_NE(reading.damages.front().what, "it is cut off");
        EXPECT_EQ(reading.damages.back().what, "it is cut off");
        EXPECT_EQ(reading.damages.back().ordinal, 2u);
        EXPECT_EQ(reading.damages.back().line,
                  1 + std::uint64_t(std::count(broken.begin(), broken.end(), '\n')));
        EXPECT_EQ(reading.end.damages, 2u);
    }
}

TEST(Damage, IsThereWhenNothingCameBeforeTheLogWasCutOff)
{
    const Reading reading = ReadBytes("", {}, 1, "it is cut off");
    ASSERT_EQ(reading.damages.size(), 1u);
    EXPECT_EQ(reading.damages.front().what, "it is cut off");
    EXPECT_FALSE(reading.end.empty);
    EXPECT_FALSE(reading.end.isLog);
}

TEST(Damage, IsWhatIsNotInTheDeclaredEncoding)
{
    std::string log = LogOf(Elements(3));
    log.replace(log.find("UTF-8"), 5, "UTF-7");
    log.replace(log.find("Linux"), 5, std::string("\0\0`p\x1a", 5));
    testing::internal::CaptureStderr();
    const Reading reading = ReadBytes(log);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_FALSE(reading.end.whole);
    EXPECT_FALSE(reading.damages.empty());
}

TEST(Damage, IsTheSameWhateverThePieces)
{
    std::string log = LogOf(Elements(5));
    log[log.find("<level>2") + 2] = '<';
    log.erase(log.find("</CADIReset>", log.find("<level>4")), 6);
    for (std::size_t piece = 1; piece < 200; ++piece) {
        const Reading reading = ReadBytes(log, {}, piece);
        EXPECT_EQ(Numbers(reading), "1 3 5") << piece;
        EXPECT_EQ(reading.damages.size(), 2u) << piece;
    }
}

TEST(Damage, TakesBackTheResultsOfADamagedElement)
{
    std::string elements = "    <A call_num=\"1\" call_time=\"0.000001 s\">\n        <a>1</a>\n    </A>\n"
                           "    <A call_num=\"1\">\n        <return_time>0.000002 s</return_time>\n"
                           "        <b>2<b>\n    </A>\n" +
                           std::string("    <B call_num=\"2\" call_time=\"0.000003 s\">\n    </B>\n");
    const Reading reading = ReadBytes(LogOf(elements));
    EXPECT_EQ(Shown(reading.calls), "1 A(a=1)\n2 B()\n");
}

TEST(Damage, IsWhateverIsNoLog)
{
    for (const std::string& bytes : {std::string(), std::string("\n"), std::string(100000, '\0'),
                                     std::string("PK\x03\x04"), std::string("<a><b></a>")}) {
        const Reading reading = ReadBytes(bytes);
        EXPECT_FALSE(reading.end.whole);
        EXPECT_EQ(reading.damages.size(), 1u);
        EXPECT_TRUE(reading.calls.empty());
    }
}

TEST(Damage, IsADocumentTypeDeclaration)
{
    const Reading reading = ReadBytes("<!DOCTYPE run [<!ENTITY a \"aaaa\">]>\n<run>&a;</run>\n");
    ASSERT_EQ(reading.damages.size(), 1u);
    EXPECT_EQ(reading.damages.front().what, "a log has no document type declaration");
    EXPECT_FALSE(reading.end.whole);
}

TEST(Damage, BehindTheRootElementEndsReading)
{
    const std::string log = LogOf(Elements(1));
    const Reading reading = ReadBytes(log + log);
    EXPECT_EQ(Numbers(reading), "1");
    ASSERT_EQ(reading.damages.size(), 1u);
    EXPECT_EQ(reading.damages.front().line, 15u);
}

TEST(Damage, IsNotWhatAKilledFlushLeaves)
{
    const std::string log = LogOf(Elements(2)) + "<?x     <CADIReset call_num=\"3\"\n ?>"
                                                 "<!-- ?></run-4242>\n<?x --><?x ?>";
    const Reading reading = ReadBytes(log);
    EXPECT_EQ(Numbers(reading), "1 2");
    EXPECT_TRUE(reading.end.whole);
}

TEST(Damage, DoesNotGrowWithNesting)
{
    std::string deep;
    for (int i = 0; i < 100000; ++i)
        deep += "<a>";
    const Reading reading = ReadBytes(LogOf("    <A call_num=\"1\" call_time=\"0.000001 s\">\n" + deep));
    EXPECT_EQ(reading.damages.size(), 1u);
    EXPECT_TRUE(reading.calls.empty());
}

}  // namespace
