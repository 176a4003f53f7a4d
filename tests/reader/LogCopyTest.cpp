// Whole logs of damaged ones, small logs of large ones.

#include <gtest/gtest.h>

#include "reader/Copies.h"
#include "reader/Reading.h"
#include "judge/LogJudge.h"

using namespace ScrivelReader;
using namespace ScrivelTest;

namespace
{

/// With a comment before it and more after it.
const std::string withMore = std::string(R"(
<!-- a comment -->

)") + interrupted +
                             R"(    <note>before 3</note>

<!-- another comment -->

    <CADIReset call_num="3"
     call_time="0.000055 s"
     threadId="1234">
        <level>1</level>
        <return_time>0.000066 s</return_time>
        <return>CADI_STATUS_OK</return>
    </CADIReset>

<!-- the last comment -->

)";

std::string Replaced(std::string text, const std::string& what, const std::string& by)
{
    const std::size_t at = text.find(what);
    EXPECT_NE(at, std::string::npos) << what;
    return text.replace(at, what.size(), by);
}

std::string CutTo(const std::string& names)
{
    FilterText filter;
    filter.names = names;
    return CutFrom(LogOf(withMore), filter).bytes;
}

// ---- Recover --------------------------------------------------------------------------------------

TEST(Recover, CopiesAWholeLogByteForByte)
{
    for (const std::string& log : {LogOf(withMore), LogOf(""), LogOf(withMore) + "<?x \n ?><?x ?>",
                                   std::string("<run/>"), std::string("\xef\xbb\xbf<run></run >\n\n")}) {
        const Copy copy = RecoveredFrom(log);
        EXPECT_EQ(copy.bytes, log);
        EXPECT_TRUE(copy.damages.empty());
    }
}

TEST(Recover, PutsACommentInPlaceOfADamage)
{
    const Copy copy = RecoveredFrom(Replaced(LogOf(withMore), "<newMode>", "<newMode<"));
    EXPECT_EQ(copy.bytes,
              LogOf(Replaced(withMore,
                             "<modeChange call_num=\"2\"\n     call_time=\"0.000022 s\"\n     "
                             "threadId=\"1234\">\n        <newMode>CADI_EXECMODE_Bpt</newMode>\n        "
                             "<return_time>0.000033 s</return_time>\n    </modeChange>\n\n"
                             "<!-- Continuing call 1 (\"CADIExecContinue\") -->\n\n    ",
                             "<!-- 238 bytes dropped with an element of call 2, damaged at byte 434: "
                             "error parsing attribute name -->\n    ")));
    EXPECT_EQ(copy.copied.calls, 2u);
    EXPECT_EQ(copy.copied.elements, 3u);
    EXPECT_EQ(copy.copied.dropped, 238u);
}

TEST(Recover, EndsALogThatWasCutShort)
{
    const std::string log = LogOf(withMore);
    const Copy copy = RecoveredFrom(log.substr(0, log.find("<level>")));
    EXPECT_EQ(copy.bytes, log.substr(0, log.find("<CADIReset")) +
                              "<!-- 82 bytes dropped with an element of call 3, damaged at byte 862: "
                              "the document ends too early -->\n</run-4242>\n");
}

TEST(Recover, EndsALogWhoseEndTagAloneIsMissing)
{
    const std::string log = LogOf(withMore);
    const Copy copy = RecoveredFrom(log.substr(0, log.find("<!-- the last")));
    EXPECT_TRUE(IsDocument(copy.bytes));
    EXPECT_EQ(copy.copied.calls, 3u);
}

TEST(Recover, GivesALogARootElementThatLostItsOwn)
{
    const std::string log = LogOf(withMore);
    const Copy copy = RecoveredFrom(log.substr(log.find("    <modeChange")));
    EXPECT_EQ(
        copy.bytes.substr(0, copy.bytes.find("call_time")),
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<log>\n    <!-- 4 bytes dropped, damaged at byte 4: "
        "the start tag of the root element is missing -->\n    <modeChange call_num=\"2\"\n     ");
    EXPECT_TRUE(IsDocument(copy.bytes));
    EXPECT_EQ(Shown(ReadBytes(copy.bytes).calls),
              Shown(ReadBytes(log.substr(log.find("    <mode"))).calls));
}

TEST(Recover, MakesADocumentOfAnything)
{
    for (const std::string& bytes :
         {std::string(), std::string(100000, '\0'), std::string("PK\x03\x04--->"),
          std::string("<a><b></a>"), std::string("<run/>-->"), LogOf("").substr(0, 100),
          LogOf("<a>--<!--</a>"), LogOf(withMore) + LogOf(withMore),
          std::string("<?xml version=\"1.0\"?><run><!-- x"),
          std::string("<!DOCTYPE run [<!ENTITY a \"aaaa\">]>\n<run>&a;</run>\n")}) {
        const Copy copy = RecoveredFrom(bytes);
        EXPECT_FALSE(copy.copied.end.whole);
        EXPECT_TRUE(IsDocument(copy.bytes)) << copy.bytes;
        EXPECT_EQ(ExpatError(copy.bytes), "") << copy.bytes;
        EXPECT_EQ(RecoveredFrom(copy.bytes).bytes, copy.bytes);
    }
}

TEST(Recover, StopsWhenTheOutputFails)
{
    const std::string text = LogOf(withMore);
    MemoryLog log(text);
    std::string error;
    unsigned int writes = 0;
    const auto output = [&](std::string_view) { return ++writes < 1; };
    EXPECT_FALSE(Recover(
        log, output, [](const Damage&) {}, error));
    EXPECT_EQ(writes, 1u);
    EXPECT_EQ(error, "");
}

// ---- Cut ------------------------------------------------------------------------------------------

TEST(Cut, OfEveryCallIsTheLog)
{
    EXPECT_EQ(CutTo("*"), LogOf(withMore));
}

TEST(Cut, KeepsAllPartsOfACallAndTellsThatItWasInterrupted)
{
    const std::string& text = withMore;
    const std::size_t within = text.find("    <modeChange");
    const std::size_t after = text.find("\n<!-- Continuing");
    const std::size_t next = text.find("    <note>");
    EXPECT_EQ(CutTo("CADIExecContinue"), LogOf(text.substr(0, within) + text.substr(after, next - after) +
                                               "\n<!-- the last comment -->\n\n"));
}

TEST(Cut, OfACallWithinAnotherNamesTheOtherNowhere)
{
    const std::string& text = withMore;
    const std::size_t within = text.find("    <modeChange");
    EXPECT_EQ(CutTo("modeChange"), LogOf(text.substr(within, text.find("\n<!-- Continuing") - within) +
                                         "\n<!-- the last comment -->\n\n"));
}

TEST(Cut, KeepsWhatStandsBeforeACall)
{
    const std::string& text = withMore;
    EXPECT_EQ(CutTo("CADIReset"), LogOf(text.substr(text.find("    <note>"))));
}

TEST(Cut, IsOfTheCallsThatAreChosen)
{
    const std::string log = LogOf(withMore);
    MemoryLog bytes(log);
    std::string small;
    std::string error;
    const auto choice = [](const Call& call) { return call.entry == 2; };
    const auto write = [&](std::string_view text) {
        small += text;
        return true;
    };
    const auto copied = Cut(
        bytes, choice, write, [](const Damage&) {}, error);
    ASSERT_TRUE(copied);
    EXPECT_EQ(copied->calls, 1u);
    EXPECT_EQ(small, CutTo("CADIReset"));
}

TEST(Cut, OfADamagedLogIsWhole)
{
    const std::string log = Replaced(LogOf(withMore), "<newMode>", "<newMode<");
    FilterText filter;
    filter.names = "CADI*";
    const Copy copy = CutFrom(log.substr(0, log.rfind("</")), filter);
    EXPECT_TRUE(IsDocument(copy.bytes));
    EXPECT_EQ(copy.copied.calls, 2u);
    EXPECT_EQ(copy.damages.size(), 2u);
    EXPECT_EQ(Shown(ReadBytes(copy.bytes).calls), Shown(ReadBytes(log).calls));
}

TEST(Cut, WritesNothingWhenNoCallIsLeft)
{
    EXPECT_EQ(CutTo("CADIMem*"), "");
}

TEST(Cut, TakesALogForWholeWhoseRestIsNotReadAsTheOutputIsFull)
{
    std::string elements;
    while (elements.size() < 200 * 1000) {
        elements += withMore;
    }
    const std::string log = LogOf(elements);
    MemoryLog bytes(log);
    std::string error;
    const auto filter = CallFilter::Make({}, error);
    std::size_t damages = 0;
    const auto full = [](std::string_view) { return false; };
    const auto tell = [&](const Damage&) { ++damages; };
    EXPECT_FALSE(Cut(bytes, *filter, full, tell, error).has_value());
    EXPECT_EQ(damages, 0u);
    EXPECT_EQ(error, "");
}

}  // namespace
