// Random sessions through the layer with one random change each: scrivel diff finds that call and that
// value, and nothing else. SCRIVEL_SESSIONS tells how many sessions; there are few without it.

#include "tool/Program.h"
#include "tool/RandomSession.h"

#include <nlohmann/json.hpp>

#include <cstdlib>
#include <filesystem>
#include <map>
#include <random>
#include <regex>
#include <sstream>

using namespace ScrivelTest;

namespace
{

/// A session's log, line by line, and changes to it.
class ChangedLog
{
public:
    ChangedLog(const std::string& log, std::minstd_rand& itsRandom) : random(itsRandom)
    {
        std::istringstream in(log);
        for (std::string line; std::getline(in, line);) {
            lines.push_back(line);
        }
    }

    std::string Text() const
    {
        std::string text;
        for (const std::string& line : lines) {
            text += line + "\n";
        }
        return text;
    }

    /// Changes a character of a value of any call.
    bool ChangeValue()
    {
        static const std::regex value(R"(( {8,}<(\w+)>)([^<&]*\w)([^<&]*</\w+>))");
        std::vector<std::size_t> places;
        for (std::size_t i = 0; i < lines.size(); ++i) {
            if (std::regex_match(lines[i], value) &&
                lines[i].find("<return_time>") == std::string::npos) {
                places.push_back(i);
            }
        }
        if (places.empty()) {
            return false;
        }
        const std::size_t place = places[random() % places.size()];
        std::smatch parts;
        std::regex_match(lines[place], parts, value);
        std::string changed = parts[3];
        changed.back() = changed.back() == '1' ? '2' : '1';
        const std::string end = parts[4].str();
        const std::string after = end.substr(0, end.find('<'));
        name = parts[2];
        left = parts[3].str() + after;
        right = changed + after;
        lines[place] = parts[1].str() + changed + end;
        for (std::size_t i = place;; --i) {
            if (const std::string begun = NumberIn(lines[i]); !begun.empty()) {
                number = std::stoull(begun);
                return true;
            }
        }
    }

    /// Takes a call out that stands in one element, and what was left for it.
    bool TakeOut()
    {
        auto [begin, end] = AnyCall();
        while (begin != end && lines[begin - 1].compare(0, 17, "    <disassembler") == 0) {
            --begin;
        }
        lines.erase(lines.begin() + std::ptrdiff_t(begin), lines.begin() + std::ptrdiff_t(end));
        return begin != end;
    }

    /// Puts a copy of a call after it, with a number of its own.
    bool PutIn()
    {
        const auto [begin, end] = AnyCall();
        if (begin == end) {
            return false;
        }
        std::vector<std::string> copy(lines.begin() + std::ptrdiff_t(begin),
                                      lines.begin() + std::ptrdiff_t(end));
        copy[0] = "    <Added call_num=\"100000\"";
        copy.back() = "    </Added>";
        number = 100000;
        lines.insert(lines.begin() + std::ptrdiff_t(end), copy.begin(), copy.end());
        return true;
    }

    /// Makes a call never return.
    bool TakeReturn()
    {
        const auto [begin, end] = AnyCall();
        for (std::size_t i = begin; i < end; ++i) {
            if (lines[i].find("        <return_time>") == 0) {
                lines.erase(lines.begin() + std::ptrdiff_t(i), lines.begin() + std::ptrdiff_t(end) - 1);
                return true;
            }
        }
        return false;
    }

    std::uint64_t number = 0;  // of the call that was changed
    std::string name;          // of the element
    std::string left;
    std::string right;

private:
    static std::string NumberIn(const std::string& line)
    {
        static const std::regex begin(" {4}<\\w+ call_num=\"(\\d+)\".*");
        std::smatch parts;
        return std::regex_match(line, parts, begin) ? parts[1].str() : "";
    }

    /// The lines of a call that is complete in one element.
    std::pair<std::size_t, std::size_t> AnyCall()
    {
        std::map<std::string, std::vector<std::size_t>> begins;
        for (std::size_t i = 0; i < lines.size(); ++i) {
            if (const std::string begun = NumberIn(lines[i]); !begun.empty()) {
                begins[begun].push_back(i);
            }
        }
        std::vector<std::pair<std::size_t, std::size_t>> calls;
        for (const auto& [itsNumber, places] : begins) {
            std::size_t end = places[0];
            bool hasReturned = false;
            while (lines[end].compare(0, 6, "    </") != 0) {
                hasReturned = hasReturned || lines[end].find("        <return_time>") == 0;
                ++end;
            }
            if (places.size() == 1 && hasReturned) {
                calls.emplace_back(places[0], end + 1);
            }
        }
        if (calls.empty()) {
            return {0, 0};
        }
        const auto call = calls[random() % calls.size()];
        number = std::stoull(NumberIn(lines[call.first]));
        return call;
    }

    std::minstd_rand& random;
    std::vector<std::string> lines;
};

class RandomChanges : public ToolTest
{
protected:
    static constexpr int changesOfEach = 5;

    static int Sessions()
    {
        const char* const count = std::getenv("SCRIVEL_SESSIONS");
        return count == nullptr ? 8 : std::atoi(count);
    }

    /// Makes the same change of each of the sessions, again and again, and hands on what was found.
    template <typename Change, typename Check>
    void ForEach(Change change, Check check)
    {
        int tried = 0;
        for (int seed = 1; seed <= Sessions() && !HasFailure(); ++seed) {
            const RandomSession session = LogRandomSession(Folder(), unsigned(seed), 0);
            const std::string file = std::filesystem::path(session.fileName).filename();
            const std::string log = Read(file);
            std::minstd_rand random(unsigned(seed) * 7919U);
            for (int i = 0; i < changesOfEach && !HasFailure(); ++i) {
                ChangedLog changed(log, random);
                if (!change(changed)) {
                    break;
                }
                ++tried;
                Write("changed.xml", changed.Text());
                const Outcome outcome = Run({"diff", "--json", file, "changed.xml"});
                SCOPED_TRACE(outcome.out + outcome.error);
                EXPECT_EQ(outcome.status, 1);
                std::istringstream lines(outcome.out);
                std::string line;
                std::getline(lines, line);
                const Json found = Json::parse(line);
                std::getline(lines, line);
                EXPECT_EQ(Json::parse(line)["kind"], "summary");
                EXPECT_EQ(Json::parse(line)["differing"], 1);
                check(changed, found);
            }
            std::filesystem::remove(Folder() + "/" + file);
        }
        EXPECT_GT(tried, Sessions() * changesOfEach / 2);
        std::cout << tried << " changes\n";
    }
};

TEST_F(RandomChanges, OfAValueAreFoundInItsCall)
{
    ForEach([](ChangedLog& log) { return log.ChangeValue(); },
            [](const ChangedLog& log, const Json& found) {
                EXPECT_EQ(found["kind"], "changed");
                EXPECT_EQ(found["left"], log.number);
                EXPECT_EQ(found["right"], log.number);
                ASSERT_EQ(found["differences"].size(), 1U);
                const Json& difference = found["differences"][0];
                const std::string path = difference["path"];
                if (difference.contains("bytes")) {
                    EXPECT_EQ(difference["bytes"].size(), 1U);
                    EXPECT_EQ(log.name, "value");
                } else {
                    EXPECT_EQ(difference["left"], log.left);
                    EXPECT_EQ(difference["right"], log.right);
                    EXPECT_NE(("[" + path).find("." + log.name), std::string::npos) << log.name;
                }
            });
}

TEST_F(RandomChanges, ThatTakeACallOutAreFound)
{
    ForEach([](ChangedLog& log) { return log.TakeOut(); },
            [](const ChangedLog&, const Json& found) { EXPECT_EQ(found["kind"], "removed"); });
}

TEST_F(RandomChanges, ThatPutACallInAreFound)
{
    ForEach([](ChangedLog& log) { return log.PutIn(); },
            [](const ChangedLog& log, const Json& found) {
                EXPECT_EQ(found["kind"], "added");
                EXPECT_EQ(found["right"], log.number);
            });
}

TEST_F(RandomChanges, ThatMakeACallNeverReturnAreFound)
{
    ForEach([](ChangedLog& log) { return log.TakeReturn(); },
            [](const ChangedLog& log, const Json& found) {
                EXPECT_EQ(found["kind"], "changed");
                EXPECT_EQ(found["left"], log.number);
                EXPECT_EQ(found["differences"].back()["path"], "returned");
            });
}

}  // namespace
