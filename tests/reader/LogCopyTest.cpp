// Whole logs of damaged ones, small logs of large ones.

#include <gtest/gtest.h>

#include "reader/Copies.h"
#include "reader/Reading.h"
#include "judge/LogJudge.h"

using namespace ScrivelReader;
using namespace ScrivelTest;

namespace
{

constexpr char interrupted[] = R"(
<!-- a comment -->

    <CADIExecContinue call_num="1"
     call_time="0.000011 s"
     threadId="1234">
        <wait>true</wait>
    </CADIExecContinue>

<!-- Call 1 ("CADIExecContinue") interrupted -->

    <modeChange call_num="2"
     call_time="0.000022 s"
     threadId="1234">
        <newMode>CADI_EXECMODE_Bpt</newMode>
        <return_time>0.000033 s</return_time>
    </modeChange>

<!-- Continuing call 1 ("CADIExecContinue") -->

    <CADIExecContinue call_num="1">
        <return_time>0.000044 s</return_time>
        <return>CADI_STATUS_OK</return>
    </CADIExecContinue>
    <note>before 3</note>

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
    return CutFrom(LogOf(interrupted), filter).bytes;
}

// ---- Recover --------------------------------------------------------------------------------------

TEST(Recover, CopiesAWholeLogByteForByte)
{
    for (const std::string& log : {LogOf(interrupted), LogOf(""), LogOf(interrupted) + "<?x \n ?><?x ?>",
                                   std::string("<run/>"), std::string("\xef\xbb\xbf<run></run >\n\n")}) {
        const Copy copy = RecoveredFrom(log);
        EXPECT_EQ(copy.bytes, log);
        EXPECT_TRUE(copy.damages.empty());
    }
}

TEST(Recover, PutsACommentInPlaceOfADamage)
{
    const Copy copy = RecoveredFrom(Replaced(LogOf(interrupted), "<newMode>", "<newMode<"));
    EXPECT_EQ(copy.bytes,
              LogOf(Replaced(interrupted,
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
    const std::string log = LogOf(interrupted);
    const Copy copy = RecoveredFrom(log.substr(0, log.find("<level>")));
    EXPECT_EQ(copy.bytes, log.substr(0, log.find("<CADIReset")) +
                              "<!-- 82 bytes dropped with an element of call 3, damaged at byte 862: "
                              "the document ends too early -->\n</run-4242>\n");
}

TEST(Recover, EndsALogWhoseEndTagAloneIsMissing)
{
    const std::string log = LogOf(interrupted);
    const Copy copy = RecoveredFrom(log.substr(0, log.find("<!-- the last")));
    EXPECT_TRUE(IsDocument(copy.bytes));
    EXPECT_EQ(copy.copied.calls, 3u);
}

TEST(Recover, GivesALogARootElementThatLostItsOwn)
{
    const std::string log = LogOf(interrupted);
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
          LogOf("<a>--<!--</a>"), LogOf(interrupted) + LogOf(interrupted),
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
    const std::string text = LogOf(interrupted);
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
    EXPECT_EQ(CutTo("*"), LogOf(interrupted + 0));
}

TEST(Cut, KeepsAllPartsOfACallAndTellsThatItWasInterrupted)
{
    const std::string text = interrupted;
    const std::size_t within = text.find("    <modeChange");
    const std::size_t after = text.find("\n<!-- Continuing");
    const std::size_t next = text.find("    <note>");
    EXPECT_EQ(CutTo("CADIExecContinue"), LogOf(text.substr(0, within) + text.substr(after, next - after) +
                                               "\n<!-- the last comment -->\n\n"));
}

TEST(Cut, OfACallWithinAnotherNamesTheOtherNowhere)
{
    const std::string text = interrupted;
    const std::size_t within = text.find("    <modeChange");
    EXPECT_EQ(CutTo("modeChange"), LogOf(text.substr(within, text.find("\n<!-- Continuing") - within) +
                                         "\n<!-- the last comment -->\n\n"));
}

TEST(Cut, KeepsWhatStandsBeforeACall)
{
    const std::string text = interrupted;
    EXPECT_EQ(CutTo("CADIReset"), LogOf(text.substr(text.find("    <note>"))));
}

TEST(Cut, OfADamagedLogIsWhole)
{
    const std::string log = Replaced(LogOf(interrupted), "<newMode>", "<newMode<");
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

}  // namespace
