// The page for the browser: what is in it, and what a page of many calls keeps. What it looks like and
// does is tested in a browser, by tests/page.

#include <filesystem>

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include "HtmlPage.h"
#include "PageLog.h"
#include "tool/SessionLogs.h"

using namespace ScrivelTest;
using namespace ScrivelTool;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

namespace
{

class View : public SessionTest
{
protected:
    std::string Page(const std::vector<std::string>& logs) const
    {
        std::vector<std::string> arguments = {"view"};
        arguments.insert(arguments.end(), logs.begin(), logs.end());
        arguments.insert(arguments.end(), {"-o", "page.html", "--force"});
        EXPECT_EQ(Run(arguments).status, 0);
        return Read("page.html");
    }
};

TEST_F(View, WritesOnePageAndTellsOfWhat)
{
    const Outcome outcome = Run({"view", "connection-4243.xml", "run-4243.xml", "-o", "page.html"});
    EXPECT_EQ(outcome.out, "page.html: 79 calls\n");
    EXPECT_EQ(outcome.error, "");
    EXPECT_EQ(outcome.status, 0);
    EXPECT_THAT(Read("page.html"), StartsWith("<!doctype html>\n"));
}

TEST_F(View, WritesTheSamePageOfTheSameLog)
{
    EXPECT_EQ(Page({"crash-4242.xml"}), Page({"crash-4242.xml"}));
}

TEST_F(View, AllowsTheBrowserNothingButItsOwnScriptAndStyle)
{
    const std::string page = Page({"crash-4242.xml"});
    EXPECT_THAT(page, HasSubstr("default-src 'none'; style-src 'sha256-"));
    EXPECT_THAT(page, HasSubstr("; script-src 'sha256-"));
    EXPECT_THAT(page, Not(HasSubstr("unsafe")));
    for (const char* const fetching : {"http:", "https:", "url(", "@import", " src=", "href=\"/"})
        EXPECT_THAT(page, Not(HasSubstr(fetching))) << fetching;
}

TEST_F(View, HasNoMarkupOfALog)
{
    const std::string plain = Page({"crash-4242.xml"});
    Write("evil.xml", LogOf("    <A call_num=\"1\" call_time=\"0.000001 s\">\n"
                            "        <text>&lt;/script&gt;&lt;img src=x&gt;</text>\n    </A>\n"));
    const std::string page = Page({"evil.xml"});
    EXPECT_THAT(page, HasSubstr("\\u003c/script>\\u003cimg src=x>"));
    const auto tags = [](const std::string& text) {
        std::size_t count = 0;
        for (const char c : text)
            count += c == '<' ? 1u : 0u;
        return count;
    };
    EXPECT_EQ(tags(page), tags(plain));
}

TEST_F(View, KeepsAFileUnlessForced)
{
    Write("page.html", "mine");
    const Outcome outcome = Run({"view", "run-4243.xml", "-o", "page.html"});
    EXPECT_EQ(outcome.error, "scrivel: page.html: there is such a file already; --force replaces it\n");
    EXPECT_EQ(outcome.status, 2);
    EXPECT_EQ(Read("page.html"), "mine");
}

TEST_F(View, LeavesNoPageOfWhatIsNoLog)
{
    Write("picture.xml", "PK\x03\x04");
    const Outcome outcome = Run({"view", "picture.xml", "-o", "page.html"});
    EXPECT_EQ(outcome.error, "scrivel: picture.xml: this is no log\n");
    EXPECT_EQ(outcome.status, 2);
    EXPECT_FALSE(std::filesystem::exists(Folder() + "/page.html"));
}

TEST_F(View, ShowsTheLogsThatItCanRead)
{
    const Outcome outcome = Run({"view", "missing.xml", "run-4243.xml", "-o", "page.html"});
    EXPECT_EQ(outcome.out, "page.html: 71 calls\n");
    EXPECT_THAT(outcome.error, StartsWith("scrivel: missing.xml: "));
    EXPECT_EQ(outcome.status, 2);
}

TEST_F(View, ReadsALogFromStandardInput)
{
    EXPECT_EQ(Run({"view", "-", "-o", "page.html"}, Read("crash-4242.xml")).out, "page.html: 68 calls\n");
}

TEST_F(View, NamesNoHostAndNoFolderWhenAnonymous)
{
    std::string error;
    const std::string path = Folder() + "/page.html";
    const auto file = OutputFile::Make(path, Existing::Replace, {}, error);
    ASSERT_NE(file, nullptr) << error;
    Terminal terminal;
    PageOptions options;
    options.anonymous = true;
    ASSERT_TRUE(WritePage({Folder() + "/crash-4242.xml"}, options, *file, terminal));
    ASSERT_TRUE(file->Finish());
    EXPECT_THAT(Read("page.html"), HasSubstr("\"log\":\"crash-4242.xml\""));
    EXPECT_THAT(Read("page.html"), Not(HasSubstr("lab7")));
    EXPECT_THAT(Read("page.html"), Not(HasSubstr(Folder())));
}

TEST_F(View, HasTheCallsThatTheFilterLeaves)
{
    const Outcome outcome = Run({"view", "-f", "run-4243.xml", "-o", "page.html"});
    EXPECT_EQ(outcome.out, "page.html: 4 calls\n");
    EXPECT_THAT(Read("page.html"), HasSubstr("\"calls\":4,\"entered\":71,"));
}

// ---- Many calls -------------------------------------------------------------------------------------

/// A hundred calls; the tenth failed, the twentieth took long, the thirtieth never returned.
std::string Hundred()
{
    std::string elements;
    for (int number = 1; number <= 100; ++number) {
        const std::string name = number % 2 == 0 ? "Even" : "Odd";
        char begin[32];
        char end[32];
        std::snprintf(begin, sizeof begin, "0.%03d000 s", number);
        std::snprintf(end, sizeof end, "0.%03d%s s", number, number == 20 ? "500" : "001");
        elements += "    <" + name + " call_num=\"" + std::to_string(number) + "\" call_time=\"" + begin +
                    "\">\n";
        if (number != 30)
            elements += "        <return_time>" + std::string(end) +
                        "</return_time>\n        <return>CADI_STATUS_" +
                        (number == 10 ? "IllegalArgument" : "OK") + "</return>\n";
        elements += "    </" + name + ">\n";
    }
    return LogOf(elements);
}

nlohmann::json DataOf(const std::string& log, std::optional<std::uint64_t> around,
                      const PageLimits& limits)
{
    struct NoInput final : ScrivelReader::LogInput
    {
        std::optional<std::size_t> Read(char*, std::size_t) override { return 0; }
        std::string Error() const override { return ""; }
        bool IsCutOff() const override { return false; }
        std::optional<int> Descriptor() const override { return {}; }
        std::uint64_t Consumed() const override { return 0; }
        std::optional<std::uint64_t> Size() const override { return {}; }
    };
    const ScrivelReader::CallFilter all;
    PageLog page("run.xml", all, around, limits);
    ScrivelReader::LogReader reader(page);
    reader.Feed(log);
    page.Finish(reader.Finish(), NoInput());
    std::string text;
    page.WriteData([&](std::string_view part) {
        text += part;
        return true;
    });
    std::string details;
    page.WriteDetails([&](std::string_view part) {
        details += part;
        return true;
    });
    EXPECT_EQ(std::size_t(std::count(details.begin(), details.end(), '\n')), page.Kept());
    return nlohmann::json::parse(text);
}

std::vector<int> Numbers(const nlohmann::json& data)
{
    std::vector<int> numbers;
    for (const auto& step : data["rows"]["number"])
        numbers.push_back((numbers.empty() ? 0 : numbers.back()) + step.get<int>());
    return numbers;
}

PageLimits Few()
{
    PageLimits limits;
    limits.calls = 40;
    limits.slow = 2;
    limits.window = 6;
    return limits;
}

TEST(PageLog, KeepsEveryCallOfALogThatFits)
{
    const auto data = DataOf(Hundred(), {}, {});
    EXPECT_EQ(Numbers(data).size(), 100u);
    EXPECT_FALSE(data.contains("left_out"));
}

TEST(PageLog, KeepsFailedOpenAndSlowCallsAndTheLastOnes)
{
    const auto data = DataOf(Hundred(), {}, Few());
    EXPECT_THAT(Numbers(data), ElementsAre(10, 20, 30, 95, 96, 97, 98, 99, 100));
    EXPECT_EQ(data["left_out"].dump(), R"({"around":null,"failed":false,"from":95,"slower":1,"to":100})");
}

TEST(PageLog, KeepsTheCallsAroundOne)
{
    const auto data = DataOf(Hundred(), 50, Few());
    EXPECT_THAT(Numbers(data), ElementsAre(10, 20, 30, 47, 48, 49, 50, 51, 52, 53));
    EXPECT_EQ(data["left_out"]["around"], 50);
}

TEST(PageLog, TellsTheNumbersOfThoseThatItLeavesOut)
{
    const auto all = DataOf(Hundred(), {}, {});
    const auto few = DataOf(Hundred(), {}, Few());
    for (const char* const member : {"calls", "failed", "open", "durations", "stretches", "entries"})
        EXPECT_EQ(few[member], all[member]) << member;
    EXPECT_EQ(few["calls"], 100);
    EXPECT_EQ(few["durations"][0]["calls"], 50);
}

TEST(PageLog, KeepsTheLastFailuresOfALogOfNothingElse)
{
    std::string log = Hundred();
    for (std::size_t at = log.find("_OK"); at != std::string::npos; at = log.find("_OK", at))
        log.replace(at, 3, "_Stale");
    const auto data = DataOf(log, {}, Few());
    EXPECT_TRUE(data["left_out"]["failed"].get<bool>());
    EXPECT_LE(Numbers(data).size(), 40u);
    EXPECT_EQ(Numbers(data).back(), 100);
}

}  // namespace
