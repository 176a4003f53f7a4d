// Random sessions through the layer: what scrivel calls --json says of a call is what was logged, and
// what libxml2 finds in the file. SCRIVEL_SESSIONS tells how many; there are few without it.

#include "judge/LogJudge.h"
#include "tool/Program.h"
#include "tool/RandomSession.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <optional>
#include <sstream>

using namespace ScrivelTest;

namespace
{

// ---- What libxml2 finds ---------------------------------------------------------------------------

/// Seconds as the log has them, "0.000011 s", or null.
Json Seconds(const std::string& text)
{
    return text.empty() ? Json() : Json(std::strtod(text.c_str(), nullptr));
}

std::optional<std::string> BytesOf(const Json& children)
{
    std::string digits;
    for (const Json& child : children) {
        const std::string text = child.value("value", "");
        if (child["name"] != "value" || text.size() != 4 || text.compare(0, 2, "0x") != 0) {
            return {};
        }
        digits += text.substr(2);
    }
    return children.empty() ? std::nullopt : std::make_optional(digits);
}

/// The element at a place in the list of a document, which then is after it.
Json ElementAt(const std::vector<Element>& elements, std::size_t& at)
{
    const Element& element = elements[at++];
    Json children = Json::array();
    while (at < elements.size() && elements[at].level > element.level) {
        children.push_back(ElementAt(elements, at));
    }
    if (const auto bytes = BytesOf(children)) {
        return {{"name", element.name}, {"value", *bytes}};
    }
    if (!children.empty()) {
        return {{"name", element.name}, {"children", children}};
    }
    return {{"name", element.name}, {"value", element.text}};
}

/// The calls of a file by number, as far as one that knows no order of entry sees them.
std::map<std::uint64_t, Json> CallsByLibXml2(const std::vector<Element>& elements)
{
    std::map<std::uint64_t, Json> calls;
    for (std::size_t at = 1; at < elements.size();) {
        const Element& element = elements[at];
        Json whole = ElementAt(elements, at);
        const std::string number = ValueOf("call_num", element.attributes);
        if (number.empty()) {
            continue;
        }
        Json& call = calls[std::stoull(number)];
        if (call.is_null()) {
            const std::string thread = ValueOf("threadId", element.attributes);
            call = {{"name", element.name},
                    {"thread", thread.empty() ? Json() : Json(std::stoull(thread))},
                    {"call_time", Seconds(ValueOf("call_time", element.attributes))},
                    {"return_time", nullptr},
                    {"parts", 0},
                    {"arguments", Json::array()},
                    {"results", Json::array()}};
        }
        call["parts"] = call["parts"].get<int>() + 1;
        for (const Json& child : whole.value("children", Json::array())) {
            if (child["name"] == "return_time") {
                call["return_time"] = Seconds(child["value"]);
            } else {
                call[call["return_time"].is_null() ? "arguments" : "results"].push_back(child);
            }
        }
    }
    return calls;
}

// ---- The test -------------------------------------------------------------------------------------

class RandomSessions : public ToolTest
{
protected:
    static int Count()
    {
        const char* const count = std::getenv("SCRIVEL_SESSIONS");
        return count == nullptr ? 10 : std::atoi(count);
    }

    /// What scrivel says of the calls of a file, by number; compared with what libxml2 finds.
    std::map<std::uint64_t, Json> CallsOf(const std::string& file) const
    {
        const Outcome outcome = Run({"calls", "--json", file});
        EXPECT_EQ(outcome.error, "");
        const auto elements = Elements(Read(file));
        EXPECT_TRUE(elements.has_value());
        const auto expected = CallsByLibXml2(*elements);
        std::map<std::uint64_t, Json> calls;
        std::istringstream lines(outcome.out);
        std::uint64_t last = 0;
        for (std::string line; std::getline(lines, line);) {
            Json call = Json::parse(line);
            const std::uint64_t number = call["call"];
            EXPECT_TRUE(number > last || call.contains("beginning_lost")) << line;
            last = std::max(last, number);
            EXPECT_EQ(expected.count(number), 1U) << line;
            if (expected.count(number) == 1) {
                for (const auto& [key, value] : expected.at(number).items()) {
                    EXPECT_EQ(call[key], value) << key << " in " << line;
                }
            }
            calls[number] = std::move(call);
        }
        EXPECT_EQ(calls.size(), expected.size());
        return calls;
    }

    /// Joins a call with what a next file says of it.
    static void Join(Json& call, const Json& more)
    {
        for (const char* const list : {"arguments", "results"}) {
            for (const Json& item : more[list]) {
                call[list].push_back(item);
            }
        }
        if (call["return_time"].is_null()) {
            call["return_time"] = more["return_time"];
        }
        if (call["status"].is_null()) {
            call["status"] = more["status"];
        }
    }

    static void Compare(const Made& made, const Json& call, std::map<std::size_t, Json>& threads)
    {
        EXPECT_EQ(call["name"], made.name) << call;
        EXPECT_EQ(call["status"], made.status) << call;
        EXPECT_EQ(call["return_time"].is_null(), !made.returned) << call;
        EXPECT_EQ(call["arguments"], made.arguments) << call;
        EXPECT_EQ(call["results"], made.results) << call;
        EXPECT_EQ(call.value("before", Json::array()), made.before) << call;
        EXPECT_EQ(call.value("disassembler_address", ""), made.address) << call;
        EXPECT_EQ(call["occurrence"], 1) << call;
        EXPECT_EQ(threads.emplace(made.thread, call["thread"]).first->second, call["thread"]) << call;
    }

    /// One session in a folder of its own. In several files parents may be in another one.
    void Try(unsigned int seed, std::uint64_t fileSize)
    {
        const RandomSession session = LogRandomSession(Folder(), seed, fileSize);
        std::map<std::uint64_t, Json> calls;
        std::string file = std::filesystem::path(session.fileName).filename();
        const std::string stem = file.substr(0, file.size() - 4);
        int files = 0;
        for (int i = 1; std::filesystem::exists(Folder() + "/" + file); ++i) {
            for (auto& [number, call] : CallsOf(file)) {
                const auto [known, isNew] = calls.emplace(number, call);
                if (!isNew) {
                    Join(known->second, call);
                }
            }
            std::filesystem::remove(Folder() + "/" + file);
            file = stem + "." + std::to_string(i + 1) + ".xml";
            ++files;
        }
        EXPECT_TRUE(fileSize == 0 ? files == 1 : files >= 1);
        manyFiles += files > 1 ? 1 : 0;

        ASSERT_EQ(calls.size(), session.calls.size());
        std::map<std::size_t, Json> threads;
        for (const auto& [number, logged] : session.calls) {
            ASSERT_EQ(calls.count(number), 1U) << number;
            Compare(logged, calls[number], threads);
            if (files == 1) {
                EXPECT_EQ(calls[number]["parent"], logged.parent) << calls[number];
            }
        }
        callsMade += session.calls.size();
    }

    std::size_t callsMade = 0;
    int manyFiles = 0;
};

TEST_F(RandomSessions, AreReadAsTheyWereLogged)
{
    for (int seed = 1; seed <= Count() && !HasFailure(); ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        Try(unsigned(seed), 0);
    }
    EXPECT_GE(callsMade, std::size_t(Count()));
    std::cout << Count() << " sessions, " << callsMade << " calls\n";
}

TEST_F(RandomSessions, InSeveralFilesAreReadAsTheyWereLogged)
{
    for (int seed = 1; seed <= Count() && !HasFailure(); ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        Try(unsigned(seed) + 1000000, 4096);
    }
    EXPECT_GT(manyFiles, 0);
    std::cout << Count() << " sessions, " << manyFiles << " in several files, " << callsMade
              << " calls\n";
}

}  // namespace
