// scrivel check: whole or not, and what else is odd about a log. Tested by tests/tool/CheckTest.cpp.

#include <algorithm>
#include <array>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "CallLine.h"
#include "Command.h"
#include "JUnit.h"
#include "Json.h"
#include "KnownText.h"
#include "LogArguments.h"
#include "Options.h"
#include "OutputFile.h"

namespace ScrivelTool
{

using namespace ScrivelReader;

namespace
{

// So many of each kind are told; the rest is counted. --json tells every one.
constexpr std::size_t mostTold = 20;

/// What is told of a call, though the log may be whole.
enum class Oddity : std::size_t
{
    NeverReturned,
    RepeatedNumber,
    LostBeginning,
    ClockSetBack,
    Misnumbered
};

struct OddityWords
{
    std::string_view kind;  ///< in JSON
    std::string_view text;  ///< of one call
    std::string_view many;
};
constexpr std::array<OddityWords, 5> oddityWords = {{
    {"never_returned", "had not returned when the log ended", "calls that had not returned"},
    {"repeated_number", "has the number of a call before it", "numbers that come again"},
    {"lost_beginning", "goes on, but its beginning is lost", "calls whose beginning is lost"},
    {"clock_set_back", "is where the clock was set back", "times at which the clock was set back"},
    {"misnumbered", "is no call, as it has no number but", "elements that have no number"},
}};

/// What a session must keep to.
struct Bounds
{
    std::optional<std::uint64_t> failed;
    bool noOpen = false;
    std::optional<std::int64_t> took;
    std::string tookText;  ///< as it was given

    bool Any() const { return failed || noOpen || took; }
};

/// Calls that pass a bound: how many, and the first of them.
class Offenders
{
public:
    void Add(const std::string& call)
    {
        constexpr std::size_t mostNamed = 10;
        if (count++ < mostNamed) {
            names += " " + call;
        } else if (count == mostNamed + 1) {
            names += " ...";
        }
    }
    std::uint64_t Count() const { return count; }
    /// 2 calls took longer: #5 CADIReset 7 ms, ...
    std::string Text(const std::string& what) const
    {
        return CountText(count, "call") + " " + what + ":" + names;
    }

private:
    std::uint64_t count = 0;
    std::string names;
};

class OneLog final : public LogHandler
{
public:
    OneLog(const Bounds& itsBounds, const CallFilter& itsFilter, const std::string& itsPath, bool itsJson,
           Terminal& itsTerminal)
        : bounds(itsBounds), filter(itsFilter), path(itsPath), json(itsJson), terminal(itsTerminal)
    {
    }

    void Damaged(const Damage& damage) override
    {
        if (!first) {
            first = damage;
        }
        if (json) {
            Json object = {{"schema", jsonSchema},
                           {"kind", "damage"},
                           {"log", path},
                           {"offset", damage.offset},
                           {"line", damage.line},
                           {"what", damage.what},
                           {"call", damage.call ? Json(*damage.call) : Json()},
                           {"name", damage.call ? Json(damage.callName) : Json()},
                           {"lost_from", damage.lostFrom},
                           {"lost_to", damage.lostTo}};
            terminal.Print(JsonLine(object));
        } else {
            TellDamage(terminal, path, damage);
        }
    }

    void Element(const Call& call) override
    {
        if (call.parts.size() == 1) {
            if (call.occurrence > 1) {
                Tell(Oddity::RepeatedNumber, call);
            }
            if (call.beginningLost) {
                Tell(Oddity::LostBeginning, call);
            }
            Pass(call, call.callTime);
        }
        if (call.Returned()) {
            Pass(call, call.returnTime);
        }
    }

    void Ended(Call& call) override
    {
        if (!call.Returned()) {
            ++open;
            Tell(Oddity::NeverReturned, call);
        }
        failed += call.Failed() ? 1U : 0U;
        if (!bounds.Any() || !filter.Matches(call)) {
            return;
        }
        const std::string name = "#" + NumberText(call);
        if (call.Failed()) {
            failing.Add(name);
        }
        if (!call.Returned()) {
            opened.Add(name);
        }
        if (const auto took = call.Took(); took && bounds.took && *took > *bounds.took) {
            slow.Add(name + " " + DurationText(took));
        }
    }

    void Misnumbered(std::string_view name, std::string_view number, const Part& place) override
    {
        const std::string text(oddityWords[std::size_t(Oddity::Misnumbered)].text);
        Tell(Oddity::Misnumbered, place, {{"name", name}, {"number", number}},
             {{"  ", Printable(std::string(name)), Style::Name},
              {" ", text + " \"" + Printable(std::string(number)) + "\""}});
    }

    /// Prints the verdict; whether the log is whole and within the bounds.
    bool Finish(const LogEnd& end, JUnitSuite& suite)
    {
        suite.cases.push_back({"whole", DamageText(end)});
        if (bounds.failed) {
            const bool passed = failing.Count() <= *bounds.failed;
            suite.cases.push_back(
                {"max-failed " + std::to_string(*bounds.failed), passed ? "" : failing.Text("failed")});
        }
        if (bounds.noOpen) {
            suite.cases.push_back(
                {"no-open", opened.Count() == 0 ? "" : opened.Text("had not returned")});
        }
        if (bounds.took) {
            suite.cases.push_back(
                {"max-took " + bounds.tookText, slow.Count() == 0 ? "" : slow.Text("took longer")});
        }
        if (json) {
            PrintJson(end, suite);
        } else {
            PrintText(end, suite);
        }
        bool passed = true;
        for (const JUnitCase& one : suite.cases) {
            passed = passed && one.failure.empty();
        }
        return passed;
    }

private:
    /// Times stand in the log in the order in which they were taken.
    void Pass(const Call& call, const std::optional<Time>& time)
    {
        if (!time) {
            return;
        }
        if (latest && time->nanoseconds < *latest) {
            Tell(Oddity::ClockSetBack, call, *latest - time->nanoseconds);
        }
        latest = time->nanoseconds;
    }

    void Tell(Oddity oddity, const Call& call, std::optional<std::int64_t> step = {})
    {
        Json members = {{"call", call.number}, {"occurrence", call.occurrence}, {"name", call.name}};
        if (step) {
            members["step"] = double(*step) / 1e9;
        }
        const std::string text(oddityWords[std::size_t(oddity)].text);
        Tell(oddity, call.parts.front(), members,
             {{"  ", "#" + NumberText(call)},
              {" ", Printable(call.name), Style::Name},
              {" ", text + (step ? " by " + DurationText(*step) : "")}});
    }

    void Tell(Oddity oddity, const Part& place, const Json& members, std::vector<Fact> facts)
    {
        if (json) {
            Json object = {{"schema", jsonSchema},
                           {"kind", oddityWords[std::size_t(oddity)].kind},
                           {"log", path},
                           {"offset", place.begin},
                           {"line", place.line}};
            object.update(members);
            terminal.Print(JsonLine(object));
        } else if (told[std::size_t(oddity)]++ < mostTold) {
            facts.push_back({" ", "(line " + std::to_string(place.line) + ", byte " +
                                      std::to_string(place.begin) + ")"});
            oddities += FactLines(facts, 4, terminal);
        }
    }

    std::vector<Fact> DamageFacts(const LogEnd& end) const
    {
        if (end.whole) {
            return {};
        }
        if (end.empty) {
            return {{", ", "empty"}};
        }
        if (!first) {
            return {{", ", "not well-formed"}};
        }
        std::vector<Fact> facts = {{", ", "damaged at line " + std::to_string(first->line) + ", byte " +
                                              std::to_string(first->offset)},
                                   {": ", first->what}};
        if (end.damages > 1) {
            facts.push_back({"; ", "and at " + CountText(end.damages - 1, "other place")});
        }
        return facts;
    }

    std::string DamageText(const LogEnd& end) const
    {
        std::string text;
        for (const Fact& fact : DamageFacts(end)) {
            text += (text.empty() ? "" : fact.separator) + fact.text;
        }
        return text;
    }

    /// 2 calls, 1 failed
    std::vector<Fact> CountFacts(const LogEnd& end) const
    {
        std::vector<Fact> facts = {{", ", CountText(end.calls, "call")}};
        if (failed != 0) {
            facts.push_back({", ", std::to_string(failed) + " failed", Style::Failure});
        }
        if (open != 0) {
            facts.push_back({", ", std::to_string(open) + " not returned", Style::Failure});
        }
        return facts;
    }

    /// The verdict, and how many calls there are.
    std::string HeadText(const LogEnd& end) const
    {
        constexpr std::size_t indent = 4;
        std::vector<Fact> facts = {
            {"", Printable(path), Style::Name, true},
            {": ", end.whole ? "whole" : "not whole", end.whole ? Style::Plain : Style::Damage}};
        for (const Fact& fact : DamageFacts(end)) {
            facts.push_back({fact.separator, Printable(fact.text)});
        }
        std::vector<Fact> counts = CountFacts(end);
        if (end.whole) {
            facts.insert(facts.end(), counts.begin(), counts.end());
        }
        const std::string head = FactLines(facts, indent, terminal);
        if (end.whole || end.empty) {
            return head;
        }
        counts.front().separator = "  ";
        return head + FactLines(counts, indent, terminal);
    }

    void PrintText(const LogEnd& end, const JUnitSuite& suite)
    {
        terminal.Print(HeadText(end) + oddities);
        for (std::size_t i = 0; i < told.size(); ++i) {
            if (told[i] > mostTold) {
                terminal.Print("  and " + std::to_string(told[i] - mostTold) + " more " +
                               std::string(oddityWords[i].many) + "\n");
            }
        }
        for (std::size_t i = 1; i < suite.cases.size(); ++i) {
            if (!suite.cases[i].failure.empty()) {
                const std::string name = "--" + suite.cases[i].name;
                constexpr std::size_t around = 4;  // columns: two before the name, two after it
                const std::size_t room =
                    terminal.Width() - std::min(terminal.Width(), name.size() + around);
                terminal.Print("  " + terminal.Styled(Style::Failure, name) + ": " +
                               Clipped(suite.cases[i].failure, room) + "\n");
            }
        }
    }

    void PrintJson(const LogEnd& end, const JUnitSuite& suite)
    {
        Json failures = Json::array();
        for (std::size_t i = 1; i < suite.cases.size(); ++i) {
            if (!suite.cases[i].failure.empty()) {
                failures.push_back({{"check", suite.cases[i].name}, {"what", suite.cases[i].failure}});
            }
        }
        terminal.Print(JsonLine({{"schema", jsonSchema},
                                 {"kind", "log"},
                                 {"log", path},
                                 {"whole", end.whole},
                                 {"empty", end.empty},
                                 {"size", end.size},
                                 {"damages", end.damages},
                                 {"calls", end.calls},
                                 {"failed", failed},
                                 {"open", open},
                                 {"failures", failures}}));
    }

    const Bounds& bounds;
    const CallFilter& filter;
    const std::string& path;
    const bool json;
    Terminal& terminal;

    std::optional<Damage> first;
    std::string oddities;
    std::array<std::size_t, oddityWords.size()> told{};
    std::optional<std::int64_t> latest;  // time that was passed
    std::uint64_t failed = 0;
    std::uint64_t open = 0;
    Offenders failing;
    Offenders opened;
    Offenders slow;
};

class Check final : public ReadingAction
{
public:
    explicit Check(Options& options)
    {
        logs.AddTo(options);
        logs.AddJsonTo(options);
        options.BeginGroup("A session as a test: of the calls that the filter leaves");
        options.Option("--max-failed", "N", bounds.failed, "at most N calls failed");
        options.Flag("--no-open", bounds.noOpen, "every call returned");
        options.Option("--max-took", "5ms", bounds.tookText, "no call took longer");
        options.Option("--junit", "FILE", junit, "the results as JUnit's XML");
        filter.AddTo(options);
    }

    Exit Read(CallFilter chosen, Terminal& terminal) override
    {
        if (!bounds.tookText.empty()) {
            bounds.took = ParseDuration(bounds.tookText);
            if (!bounds.took || *bounds.took < 0) {
                terminal.Error("--max-took: \"" + bounds.tookText +
                               "\" is no time; 5ms, 20us or 1.5s are");
                return Exit::Trouble;
            }
        }
        ReadOptions options;
        options.contents = bounds.Any() && chosen.NeedsContents();

        bool trouble = false;
        bool passed = true;
        std::vector<JUnitSuite> suites;
        const std::vector<std::string> paths = logs.Logs(terminal, trouble);
        for (const std::string& path : paths) {
            OneLog log(bounds, chosen, path, logs.Json(), terminal);
            const auto end = ReadFile(path, log, options, terminal);
            suites.push_back({path, {}});
            if (end) {
                passed = log.Finish(*end, suites.back()) && passed;
            } else {
                suites.back().cases.push_back({"whole", "it can't be read", true});
                trouble = true;
            }
        }
        if (!junit.empty() && !WriteJUnit(suites, paths, terminal)) {
            trouble = true;
        }
        return trouble ? Exit::Trouble : passed ? Exit::Found : Exit::Nothing;
    }

private:
    bool WriteJUnit(const std::vector<JUnitSuite>& suites, const std::vector<std::string>& read,
                    Terminal& terminal) const
    {
        if (!MayBecomeJUnit(junit)) {
            terminal.Error(junit, {}, "there is such a file already, and it is no JUnit report");
            return false;
        }
        std::string error;
        const auto file = OutputFile::Make(junit, Existing::Replace, read, error);
        if (file == nullptr || !file->Write(JUnitText(suites)) || !file->Finish()) {
            terminal.Error(junit, {}, file == nullptr ? error : file->Error());
            return false;
        }
        return true;
    }

    Bounds bounds;
    std::string junit;
};

}  // namespace

std::unique_ptr<Action> MakeCheck(Options& options)
{
    return std::make_unique<Check>(options);
}

}  // namespace ScrivelTool
