// scrivel stats: how often calls were made and how long they took. Tested by tests/tool/StatsTest.cpp.

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <functional>
#include <iterator>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "CallLine.h"
#include "Command.h"
#include "Durations.h"
#include "Json.h"
#include "KnownText.h"
#include "LogArguments.h"
#include "Options.h"

namespace ScrivelTool
{

using namespace ScrivelReader;

namespace
{

constexpr std::size_t mostDurations = 64 * 1024;  // different ones, of all groups
constexpr std::size_t mostGroups = 4096;
constexpr char otherGroup[] = "(others)";

struct Group
{
    std::string name;
    std::uint64_t calls = 0;
    std::uint64_t failed = 0;
    std::uint64_t open = 0;
    Durations durations;
    std::string log;  // that has the longest of them
};

/// The table, which grows with the number of its rows and no further.
class Groups
{
public:
    Group& At(const std::string& name)
    {
        const auto found = places.find(name);
        if (found != places.end())
            return groups[found->second];
        if (groups.size() >= mostGroups && name != otherGroup)
            return At(otherGroup);
        places.emplace(name, groups.size());
        groups.emplace_back();
        groups.back().name = name;
        return groups.back();
    }

    void Add(Group& group, std::int64_t nanoseconds, const std::string& log)
    {
        if (group.durations.Count() == 0 || nanoseconds > group.durations.Largest())
            group.log = log;
        const std::size_t before = group.durations.Kept();
        group.durations.Add(nanoseconds);
        kept += group.durations.Kept() - before;
        while (kept > mostDurations) {
            const auto largest =
                std::max_element(groups.begin(), groups.end(), [](const Group& a, const Group& b) {
                    return a.durations.Kept() < b.durations.Kept();
                });
            const std::size_t had = largest->durations.Kept();
            if (!largest->durations.Coarsen())
                return;
            kept = kept - had + largest->durations.Kept();
        }
    }

    std::vector<Group>& All() { return groups; }

private:
    std::unordered_map<std::string, std::size_t> places;
    std::vector<Group> groups;
    std::size_t kept = 0;
};

/// What a row of the table can be sorted by.
struct Column
{
    std::string_view name;
    std::function<double(const Group&)> value;
};

const std::vector<Column>& SortColumns()
{
    static const std::vector<Column> columns = {
        {"calls", [](const Group& group) { return double(group.calls); }},
        {"failed", [](const Group& group) { return double(group.failed); }},
        {"open", [](const Group& group) { return double(group.open); }},
        {"total", [](const Group& group) { return double(group.durations.Total()); }},
        {"median", [](const Group& group) { return double(group.durations.Quantile(0.5)); }},
        {"p95", [](const Group& group) { return double(group.durations.Quantile(0.95)); }},
        {"max", [](const Group& group) { return double(group.durations.Largest()); }},
    };
    return columns;
}

/// Three digits and a unit: 54 us, 12.6 ms.
std::string ShortDuration(std::int64_t nanoseconds)
{
    constexpr const char* units[] = {"us", "ms", "s"};
    double value = double(nanoseconds) / 1e3;
    std::size_t unit = 0;
    for (; std::abs(value) >= 999.5 && unit + 1 < std::size(units); ++unit)
        value /= 1e3;
    const double size = std::abs(value);
    const char* const form = unit == 0 || size >= 99.95 ? "%.0f %s"
                             : size >= 9.995            ? "%.1f %s"
                                                        : "%.2f %s";
    char text[64];
    std::snprintf(text, sizeof text, form, value, units[unit]);
    return text;
}

class Stats final : public ReadingAction
{
public:
    explicit Stats(Options& options)
    {
        logs.AddTo(options);
        logs.AddJsonTo(options);
        options.Choice("--by", "WHAT", by, {"name", "thread", "status", "parent", "log"},
                       "one row for each name, thread, status, parent or log");
        options.Flag("--gaps", gaps,
                     "the time before each call in which its thread made and got no call");
        options.Choice("--sort", "COLUMN", sort,
                       {"name", "calls", "failed", "open", "total", "median", "p95", "max"},
                       "name, calls, failed, open, total, median, p95 or max");
        options.Flag("--reverse", reverse, "the other way round");
        filter.AddTo(options);
    }

    Exit Read(CallFilter chosen, Terminal& terminal) override
    {
        bool trouble = false;
        Groups groups;
        const std::vector<std::string> paths = logs.Logs(terminal, trouble);
        for (const std::string& path : paths) {
            OneLog log(*this, chosen, groups, terminal, path);
            ReadOptions options;
            options.contents = chosen.NeedsContents();
            const auto end = ReadLog(path, log, options, terminal);
            trouble = trouble || !end;
        }
        std::vector<Group>& all = groups.All();
        Sort(all);
        if (logs.Json())
            PrintJson(all, terminal);
        else if (!all.empty())
            Print(all, terminal);
        return trouble ? Exit::Trouble : all.empty() ? Exit::Nothing : Exit::Found;
    }

private:
    class OneLog final : public LogHandler
    {
    public:
        OneLog(const Stats& itsCommand, const CallFilter& itsFilter, Groups& itsGroups,
               Terminal& itsTerminal, const std::string& itsPath)
            : command(itsCommand), chosen(itsFilter), groups(itsGroups), terminal(itsTerminal),
              path(itsPath)
        {
        }

        void Entered(const Call& call) override
        {
            Begun begun;
            if (command.by == "parent") {
                begun.parent = "(none)";
                if (const auto parent = call.Parent()) {
                    const auto name = names.find(*parent);
                    begun.parent = name == names.end() ? "#" + std::to_string(*parent) : name->second;
                }
                names[call.number] = call.name;
            }
            if (command.gaps)
                begun.gap = Moved(call, call.callTime);
            if (command.gaps || command.by == "parent")
                open[call.entry] = std::move(begun);
        }

        void TakenBack(const Call& call) override
        {
            open.erase(call.entry);
            names.erase(call.number);
        }

        void Ended(Call& call) override
        {
            Begun begun;
            if (const auto found = open.find(call.entry); found != open.end()) {
                begun = std::move(found->second);
                open.erase(found);
            }
            if (command.gaps && call.Returned())
                Moved(call, call.returnTime);
            names.erase(call.number);
            if (!chosen.Matches(call))
                return;
            Group& group = groups.At(Key(call, begun));
            if (++group.calls == 1)
                group.log = path;
            group.failed += call.Failed() ? 1u : 0u;
            group.open += call.Returned() ? 0u : 1u;
            if (const auto took = command.gaps ? begun.gap : call.Took())
                groups.Add(group, *took, path);
        }

        void Damaged(const Damage& damage) override { TellDamage(terminal, path, damage); }

    private:
        struct Begun
        {
            std::string parent;
            std::optional<std::int64_t> gap;
        };

        /// Something happened in the call's thread: the time since the last thing did.
        std::optional<std::int64_t> Moved(const Call& call, const std::optional<Time>& time)
        {
            if (!time)
                return {};
            // No gap reaches across a clock that was set back.
            if (time->nanoseconds < latest)
                lastTimes.clear();
            latest = time->nanoseconds;
            constexpr std::size_t mostThreads = 64 * 1024;
            const auto last = lastTimes.find(call.thread);
            std::optional<std::int64_t> gap;
            if (last != lastTimes.end() && last->second.wrapped == time->wrapped)
                gap = time->nanoseconds - last->second.nanoseconds;
            if (last != lastTimes.end() || lastTimes.size() < mostThreads)
                lastTimes[call.thread] = *time;
            return gap;
        }

        std::string Key(const Call& call, const Begun& begun) const
        {
            if (command.by == "name")
                return call.name;
            if (command.by == "parent")
                return begun.parent;
            if (command.by == "log")
                return path;
            if (command.by == "status")
                return !call.Returned() ? "not returned" : call.status.empty() ? "(none)" : call.status;
            if (!call.threadId)
                return "(none)";
            return "T" + std::to_string(call.thread) + " " + std::to_string(*call.threadId);
        }

        const Stats& command;
        const CallFilter& chosen;
        Groups& groups;
        Terminal& terminal;
        const std::string& path;
        std::unordered_map<std::uint64_t, Begun> open;         // by entry
        std::unordered_map<std::uint64_t, std::string> names;  // of open calls, by number
        std::unordered_map<std::uint32_t, Time> lastTimes;     // by thread
        std::int64_t latest = 0;                               // of these times, in nanoseconds
    };

    void Sort(std::vector<Group>& groups) const
    {
        const auto byName = [](const Group& a, const Group& b) { return a.name < b.name; };
        std::sort(groups.begin(), groups.end(), byName);
        for (const Column& column : SortColumns()) {
            if (column.name != sort)
                continue;
            std::vector<std::pair<double, Group>> rows;
            rows.reserve(groups.size());
            for (Group& group : groups)
                rows.emplace_back(column.value(group), std::move(group));
            std::stable_sort(rows.begin(), rows.end(),
                             [](const auto& a, const auto& b) { return a.first > b.first; });
            for (std::size_t i = 0; i < rows.size(); ++i)
                groups[i] = std::move(rows[i].second);
        }
        if (reverse)
            std::reverse(groups.begin(), groups.end());
    }

    // ---- Text ---------------------------------------------------------------------------------------

    /// The decades that any of the groups has, first and last.
    static std::pair<std::size_t, std::size_t> DecadesUsed(const std::vector<Group>& groups)
    {
        std::size_t first = Durations::decades;
        std::size_t last = 0;
        for (const Group& group : groups) {
            const std::vector<std::uint64_t> counts = group.durations.Decades();
            for (std::size_t i = 0; i < counts.size(); ++i) {
                if (counts[i] != 0) {
                    first = std::min(first, i);
                    last = std::max(last, i);
                }
            }
        }
        return {std::min(first, last), last};
    }

    /// One cell a decade, as high as its share of the group's calls.
    static std::string Histogram(const Group& group, std::size_t first, std::size_t last)
    {
        constexpr const char* cells[] = {"▁", "▂", "▃", "▄", "▅", "▆", "▇", "█"};
        const std::vector<std::uint64_t> counts = group.durations.Decades();
        const std::uint64_t most = *std::max_element(counts.begin(), counts.end());
        std::string text;
        for (std::size_t i = first; i <= last; ++i) {
            if (counts[i] == 0) {
                text += "·";
                continue;
            }
            const double share = double(counts[i]) / double(most);
            text += cells[std::size_t(std::lround(share * double(std::size(cells) - 1)))];
        }
        return text;
    }

    void Print(const std::vector<Group>& groups, Terminal& terminal) const
    {
        const auto [first, last] = DecadesUsed(groups);
        std::vector<std::vector<std::string>> rows = {
            {by, gaps ? "gaps" : "calls", "failed", "open", "total", "median", "p95", "max"}};
        for (const Group& group : groups)
            rows.push_back(Cells(group));
        std::vector<std::size_t> widths(rows.front().size());
        for (const std::vector<std::string>& row : rows)
            for (std::size_t i = 0; i < row.size(); ++i)
                widths[i] = std::max(widths[i], Columns(row[i]));
        std::size_t others = last - first + 1;
        for (std::size_t i = 1; i < widths.size(); ++i)
            others += widths[i] + 1;
        constexpr std::size_t leastName = 12;
        const std::size_t room = terminal.Width() > others + 1 ? terminal.Width() - others - 1 : 0;
        widths[0] = std::min(widths[0], std::max(room, leastName));

        std::string text = Answer(groups, terminal);
        for (std::size_t i = 0; i < rows.size(); ++i) {
            const bool isHead = i == 0;
            const std::string name = Clipped(rows[i][0], widths[0]);
            std::string line = terminal.Styled(isHead ? Style::Quiet : Style::Name, name) +
                               std::string(widths[0] - Columns(name), ' ');
            for (std::size_t j = 1; j < rows[i].size(); ++j) {
                constexpr std::size_t failedColumn = 2;
                constexpr std::size_t openColumn = 3;
                const bool isBad = !isHead && (j == failedColumn || j == openColumn) && rows[i][j] != "0";
                line += " " + std::string(widths[j] - Columns(rows[i][j]), ' ') +
                        terminal.Styled(isHead  ? Style::Quiet
                                        : isBad ? Style::Failure
                                                : Style::Plain,
                                        rows[i][j]);
            }
            if (!isHead && groups[i - 1].durations.Count() != 0)
                line += " " + Histogram(groups[i - 1], first, last);
            text += line + "\n";
        }
        text += Legend(groups, first, last, terminal) + Next(groups, terminal);
        terminal.Print(text);
    }

    static std::vector<std::string> Cells(const Group& group)
    {
        std::vector<std::string> cells = {Printable(group.name), std::to_string(group.calls),
                                          std::to_string(group.failed), std::to_string(group.open)};
        if (group.durations.Count() == 0) {
            cells.insert(cells.end(), 4, "-");
            return cells;
        }
        const std::string about = group.durations.IsExact() ? "" : "~";
        cells.push_back(ShortDuration(group.durations.Total()));
        cells.push_back(about + ShortDuration(group.durations.Quantile(0.5)));
        cells.push_back(about + ShortDuration(group.durations.Quantile(0.95)));
        cells.push_back(ShortDuration(group.durations.Largest()));
        return cells;
    }

    static const Group& Longest(const std::vector<Group>& groups)
    {
        return *std::max_element(groups.begin(), groups.end(), [](const Group& a, const Group& b) {
            return a.durations.Total() < b.durations.Total();
        });
    }

    std::string Answer(const std::vector<Group>& groups, Terminal& terminal) const
    {
        std::uint64_t calls = 0;
        std::uint64_t failed = 0;
        std::uint64_t open = 0;
        for (const Group& group : groups) {
            calls += group.calls;
            failed += group.failed;
            open += group.open;
        }
        std::string text = std::to_string(calls) + (calls == 1 ? " call, " : " calls, ") +
                           std::to_string(failed) + " failed, " + std::to_string(open) +
                           " not returned; ";
        const Group& longest = Longest(groups);
        text += by == "parent"         ? "most time within "
                : gaps && by == "name" ? "most time before "
                                       : "most time in ";
        text += Printable(longest.name) + ", " + ShortDuration(longest.durations.Total());
        return Clipped(text, terminal.Width()) + "\n";
    }

    std::string Legend(const std::vector<Group>& groups, std::size_t first, std::size_t last,
                       Terminal& terminal) const
    {
        constexpr const char* begins[] = {"0",     "10 us",  "100 us", "1 ms",
                                          "10 ms", "100 ms", "1 s",    "10 s"};
        constexpr const char* ends[] = {"10 us",  "100 us", "1 ms", "10 ms",
                                        "100 ms", "1 s",    "10 s", "longer"};
        std::string text = std::string("bars: one a decade, ") + begins[first] + " to " + ends[last];
        if (gaps)
            text += "; a gap: the time before a call";
        const bool isExact = std::all_of(groups.begin(), groups.end(),
                                         [](const Group& group) { return group.durations.IsExact(); });
        if (!isExact)
            text += "\n~ too many different times to keep each: median and p95 are near, not exact";
        return terminal.Styled(Style::Quiet, text) + "\n";
    }

    std::string Next(const std::vector<Group>& groups, Terminal& terminal) const
    {
        std::string text = "next: scrivel calls ";
        const Group& longest = Longest(groups);
        const std::string name = Printable(longest.name);
        if (by == "name" && name != otherGroup)
            text += "-n " + ShellWord(name) + " ";
        else if (by == "thread" && name.front() == 'T')
            text += "-t " + name.substr(0, name.find(' ')) + " ";
        else if (!gaps && longest.durations.Largest() > 0)
            text += "--slower " + Limit(longest.durations) + " ";
        return terminal.Styled(Style::Quiet, text + ShellWord(longest.log)) + "\n";
    }

    /// What the slowest calls exceed, one at least.
    static std::string Limit(const Durations& times)
    {
        return std::to_string(std::min(times.Quantile(0.95), times.Largest() - 1) / 1000) + "us";
    }

    // ---- JSON ---------------------------------------------------------------------------------------

    void PrintJson(const std::vector<Group>& groups, Terminal& terminal) const
    {
        const auto seconds = [](std::int64_t nanoseconds) { return double(nanoseconds) / 1e9; };
        for (const Group& group : groups) {
            const Durations& times = group.durations;
            Json object = {{"schema", jsonSchema},
                           {"by", by},
                           {"name", group.name},
                           {"what", gaps ? "gaps" : "calls"},
                           {"calls", group.calls},
                           {"failed", group.failed},
                           {"open", group.open},
                           {"timed", times.Count()},
                           {"total", seconds(times.Total())},
                           {"median", seconds(times.Quantile(0.5))},
                           {"p95", seconds(times.Quantile(0.95))},
                           {"max", seconds(times.Largest())},
                           {"exact", times.IsExact()},
                           {"decades", times.Decades()}};
            if (times.Count() == 0)
                for (const char* const field : {"total", "median", "p95", "max"})
                    object[field] = Json();
            terminal.Print(JsonLine(object));
        }
    }

    std::string by = "name";
    std::string sort = "total";
    bool gaps = false;
    bool reverse = false;
};

}  // namespace

std::unique_ptr<Action> MakeStats(Options& options)
{
    return std::make_unique<Stats>(options);
}

}  // namespace ScrivelTool
