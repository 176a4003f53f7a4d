// scrivel LOG...: what happened, and to which call. Tested by tests/tool/SummaryTest.cpp.

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "CallLine.h"
#include "Command.h"
#include "Json.h"
#include "KnownText.h"
#include "LogArguments.h"
#include "Overview.h"

namespace ScrivelTool
{

using namespace ScrivelReader;

namespace
{

constexpr std::size_t mostRegisters = 6;
constexpr std::size_t mostOpen = 8;  // of the calls that had not returned

std::string ThreadText(const Call& call)
{
    return call.thread == 0 ? "" : "T" + std::to_string(call.thread);
}

/// Where a text that is to be shown in lines of so many columns has its next break, from a word on.
std::size_t EndOfWord(std::string_view text, std::size_t begin, std::size_t most)
{
    std::size_t end = begin;
    for (std::size_t used = 0; end < text.size() && text[end] != ' '; ++end) {
        const bool isFirst = (static_cast<unsigned char>(text[end]) & 0xc0) != 0x80;
        if (isFirst && ++used > most)
            break;
    }
    return end;
}

/// Adds the words of a text, one that is too long for a line in pieces.
void AddWords(std::string_view text, std::size_t most, std::vector<Fact>& facts)
{
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t begin = std::min(text.find_first_not_of(' ', at), text.size());
        const std::size_t end = EndOfWord(text, begin, most);
        facts.push_back(
            {std::string(text.substr(at, begin - at)), std::string(text.substr(begin, end - begin))});
        at = end;
    }
}

/// A line about what a call touched, broken after a semicolon where it is too wide.
std::string TouchedLines(const std::string& text, const Terminal& terminal)
{
    constexpr std::size_t indent = 4;
    constexpr std::string_view separator = "; ";
    std::vector<Fact> facts;
    for (std::size_t at = 0; at != std::string::npos;) {
        const std::size_t end = text.find(separator, at);
        facts.push_back({facts.empty() ? "  " : "; ", text.substr(at, end - at)});
        at = end == std::string::npos ? end : end + separator.size();
    }
    return FactLines(facts, indent, terminal);
}

class Summary final : public ReadingAction
{
public:
    explicit Summary(Options& options)
    {
        logs.AddTo(options);
        logs.AddJsonTo(options);
        filter.AddTo(options);
    }

    Exit Read(CallFilter chosen, Terminal& terminal) override
    {
        bool trouble = false;
        bool allWhole = true;
        const std::vector<std::string> paths = logs.Logs(terminal, trouble);
        std::vector<Row> rows;
        for (const std::string& path : paths) {
            const auto log = ReadOverview(path, chosen, terminal);
            if (log == nullptr) {
                trouble = true;
                continue;
            }
            allWhole = allWhole && log->end.whole;
            if (logs.Json())
                PrintJson(*log, path, terminal);
            else if (paths.size() == 1)
                Print(*log, path, terminal);
            else
                rows.push_back(RowOf(*log, path));
        }
        PrintRows(rows, terminal);
        return trouble ? Exit::Trouble : allWhole ? Exit::Found : Exit::Nothing;
    }

private:
    static std::unique_ptr<Overview> ReadOverview(const std::string& path, const CallFilter& chosen,
                                                  Terminal& terminal)
    {
        std::string error;
        const auto input = OpenLog(path, error);
        if (input == nullptr) {
            terminal.Error(path, {}, error);
            return nullptr;
        }
        auto log = std::make_unique<Overview>(chosen);
        ReadOptions options;
        if (!chosen.NeedsContents()) {
            options.limits.items = options.limits.bytes = 4096;
            options.limits.text = 4096;
        }
        const auto end = ReadLog(*input, path, *log, options, terminal);
        if (!end)
            return nullptr;
        log->Finish(*end, *input);
        return log;
    }

    // ---- One log ------------------------------------------------------------------------------------

    static void Print(const Overview& log, const std::string& path, Terminal& terminal)
    {
        const std::string name = Printable(path == "-" ? "standard input" : path);
        const std::vector<std::string> facts = Facts(log);
        const bool isLong = Columns(name) + Columns(facts.front()) + 3 > terminal.Width();
        std::string text = terminal.Styled(Style::Name, name) + (isLong ? "\n  " : "  ");
        std::size_t columns = Columns(name) + 2 * facts.size();
        for (const std::string& fact : facts)
            columns += Columns(fact);
        for (std::size_t i = 0; i < facts.size(); ++i) {
            const bool isLast = i + 1 == facts.size();
            text += isLast && !log.end.whole ? terminal.Styled(Style::Damage, facts[i]) : facts[i];
            text += isLast ? "\n" : i == 0 && columns > terminal.Width() ? ",\n  " : ", ";
        }
        if (log.firstDamage) {
            const Damage& damage = *log.firstDamage;
            const std::string call =
                damage.call ? "in call " + std::to_string(*damage.call) + " " + damage.callName + ": "
                            : "";
            text += "  " +
                    terminal.Styled(Style::Damage,
                                    Clipped(Printable(call + damage.what), terminal.Width() - 2)) +
                    "\n";
        }

        const std::vector<const Call*> open = log.Innermost();
        if (open.empty())
            text += EndText(log) + "\n";
        for (std::size_t i = 0; i < std::min(open.size(), mostOpen); ++i)
            text += OpenText(log, *open[i], i == 0, terminal);
        if (open.size() > mostOpen)
            text += "and one in each of " + CountText(open.size() - mostOpen, "more thread") + "\n";

        if (!open.empty())
            text += BeforeText(log, log.Before(*open.front()), terminal);
        else if (const Call* last = log.LastCall(); last != nullptr)
            text += ItemLines("last", {"#" + NumberText(*last) + " " + ShortCall(*last)},
                              terminal.Width(), terminal);
        text += KnownText(log, terminal);
        text += CountsText(log, terminal) + NextText(log, open, path, terminal);
        terminal.Print(text);
    }

    static std::string OpenText(const Overview& log, const Call& call, bool isFirst, Terminal& terminal)
    {
        const Verdict verdict = VerdictOf(log, call);
        std::string text;
        if (isFirst)
            text = terminal.Styled(verdict.isRunning ? Style::Damage : Style::Failure, verdict.heading) +
                   "\n";
        else
            text = "call " + NumberText(call) + " " + verdict.word + " either\n";
        text += AskedText(call, terminal);
        if (!call.ancestors.empty()) {
            std::string within;
            for (auto number = call.ancestors.rbegin(); number != call.ancestors.rend(); ++number)
                within += (within.empty() ? "within " : ", within ") + log.OpenName(*number);
            text += "  " + Clipped(within, terminal.Width() - 2) + "\n";
        }
        const Access access = log.known.AccessBy(call);
        for (const MemoryAccess& memory : access.memory)
            text += TouchedLines(AboutMemory(log.known, memory), terminal);
        for (const RegisterAccess& touched : access.registers)
            text += TouchedLines(AboutRegister(log.known, touched), terminal);
        return text;
    }

    /// #68  0.016720  T1  CADIMemWrite(Memory:0x40000000, bytes=4, data=e8 03 00 00), in as many lines as
    /// the arguments need, which are what it is all about; but for those that would hide the rest.
    static std::string AskedText(const Call& call, const Terminal& terminal)
    {
        constexpr std::size_t indent = 6;
        constexpr std::size_t mostLines = 10;
        const std::size_t room = terminal.Width() - std::min(terminal.Width() - 1, indent);
        std::vector<Fact> facts = {{"  ", "#" + NumberText(call)},
                                   {"  ", TimeText(call.callTime), Style::Quiet},
                                   {call.thread == 0 ? "" : "  ", ThreadText(call)},
                                   {"  ", Printable(call.name), Style::Name}};
        const std::string arguments = Clipped(ElementsText(call.arguments, false), mostLines * room - 2);
        AddWords("(" + arguments + ")", room, facts);
        return FactLines(facts, indent, terminal);
    }

    static std::string BeforeText(const Overview&, const std::vector<const Call*>& before,
                                  Terminal& terminal)
    {
        std::vector<std::string> items;
        items.reserve(before.size());
        for (const Call* call : before)
            items.push_back("#" + NumberText(*call) + " " + ShortCall(*call));
        return items.empty() ? "" : ItemLines("before it", items, terminal.Width(), terminal);
    }

    static std::string KnownText(const Overview& log, Terminal& terminal)
    {
        std::vector<std::string> items;
        for (const KnownRegister& item : log.known.Registers()) {
            if (items.size() == mostRegisters)
                break;
            if (!item.bytes.empty() || item.refused)
                items.push_back(KnownItem(log.known, item));
        }
        return items.empty() ? "" : ItemLines("known", items, terminal.Width(), terminal);
    }

    static std::string CountsText(const Overview& log, Terminal& terminal)
    {
        std::vector<Fact> facts = {{"", CountText(log.calls, "call")}};
        if (log.failed != 0) {
            std::string failed = std::to_string(log.failed) + " failed (";
            for (std::size_t i = 0; i < log.failures.size(); ++i) {
                const bool isLast = i + 1 == log.failures.size() && log.failed == log.failures.size();
                facts.push_back({i == 0 ? ", " : " ", failed + log.failures[i] + (isLast ? ")" : ""),
                                 Style::Failure});
                failed.clear();
            }
            if (log.failed > log.failures.size())
                facts.push_back({" ", "...)", Style::Failure});
        }
        if (log.open > 1)
            facts.push_back({", ", std::to_string(log.open) + " not returned"});
        if (log.hasThreads)
            facts.push_back({", ", CountText(log.threads, "thread")});
        if (log.lastTime)
            facts.push_back({", ", DurationText(log.lastTime->nanoseconds)});
        return FactLines(facts, 2, terminal);
    }

    static std::string NextText(const Overview& log, const std::vector<const Call*>& open,
                                const std::string& path, Terminal& terminal)
    {
        const std::string file = " " + ShellWord(path);
        std::string text = "next: ";
        if (!open.empty()) {
            const std::string number = NumberText(*open.front());
            text += "scrivel show " + number + file + ", scrivel state --at " + number + file;
        } else if (!log.end.whole) {
            text += "scrivel check" + file + ", scrivel recover" + file + " -o fixed.xml";
        } else if (log.failed != 0) {
            text += "scrivel calls -f" + file + ", scrivel stats" + file;
        } else {
            text += "scrivel calls" + file + ", scrivel stats" + file;
        }
        return terminal.Styled(Style::Quiet, text) + "\n";
    }

    // ---- Several logs -------------------------------------------------------------------------------

    struct Row
    {
        int rank;  // the crashed ones come first
        Style style;
        std::vector<std::string> cells;  // the name, the verdict, numbers, run or connection
        std::string path;
    };

    static Row RowOf(const Overview& log, const std::string& path)
    {
        const std::vector<const Call*> open = log.Innermost();
        Row row{3, Style::Plain, {}, path};
        std::string verdict = log.WasEnded()                     ? "ended"
                              : !log.ContinuedIn().empty()       ? "goes on"
                              : log.writer == Writer::HasLogOpen ? "being written"
                                                                 : "all returned";
        if (!open.empty()) {
            const Verdict itsVerdict = VerdictOf(log, *open.front());
            row.rank = itsVerdict.isRunning ? 1 : 0;
            row.style = itsVerdict.isRunning ? Style::Damage : Style::Failure;
            verdict = "#" + NumberText(*open.front()) + " " + itsVerdict.shortWord;
        } else if (!log.end.whole) {
            row.rank = 2;
            row.style = Style::Damage;
            verdict =
                log.firstDamage ? "damaged, line " + std::to_string(log.firstDamage->line) : "not whole";
        }
        row.cells = {Printable(path),
                     verdict,
                     CountText(log.calls, "call"),
                     std::to_string(log.failed) + " failed",
                     log.lastTime ? DurationText(log.lastTime->nanoseconds) : "-",
                     log.entered == 0 ? ""
                     : log.hasThreads ? "run"
                                      : "connection"};
        return row;
    }

    static void PrintRows(std::vector<Row>& rows, Terminal& terminal)
    {
        if (rows.empty())
            return;
        std::stable_sort(rows.begin(), rows.end(),
                         [](const Row& a, const Row& b) { return a.rank < b.rank; });
        std::vector<std::size_t> widths(rows.front().cells.size());
        for (const Row& row : rows)
            for (std::size_t i = 0; i < widths.size(); ++i)
                widths[i] = std::max(widths[i], Columns(row.cells[i]));
        constexpr std::size_t verdict = 1;
        for (const Row& row : rows) {
            std::string line;
            for (std::size_t i = 0; i + 1 < widths.size(); ++i) {
                const std::string gap(widths[i] - Columns(row.cells[i]), ' ');
                if (i <= verdict)
                    line += terminal.Styled(i == verdict ? row.style : Style::Plain, row.cells[i]) + gap;
                else
                    line += gap + row.cells[i];
                const bool isBetweenNumbers = i > verdict && i + 2 < widths.size();
                line += isBetweenNumbers ? " " : "  ";
            }
            terminal.Print(line + row.cells.back() + "\n");
        }
        terminal.Print(terminal.Styled(Style::Quiet, "next: scrivel " + ShellWord(rows.front().path)) +
                       "\n");
    }

    // ---- JSON ---------------------------------------------------------------------------------------

    static void PrintJson(const Overview& log, const std::string& path, Terminal& terminal)
    {
        const std::vector<const Call*> open = log.Innermost();
        Json object = {
            {"schema", jsonSchema},
            {"log", path},
            {"whole", log.end.whole},
            {"kind", log.entered == 0 ? Json()
                     : log.hasThreads ? Json("run")
                                      : Json("connection")},
            {"name", log.header.name},
            {"process", log.header.processId ? Json(*log.header.processId) : Json()},
            {"host", log.header.hostName},
            {"started", log.header.time},
            {"size", log.end.size},
            {"verdict", open.empty() ? EndText(log) : VerdictOf(log, *open.front()).word},
            {"ended", log.WasEnded()},
            {"calls", log.calls},
            {"failed", log.failed},
            {"open", log.open},
            {"threads", log.threads},
            {"seconds", ToJson(log.lastTime)},
            {"damages", log.end.damages},
        };
        if (log.firstDamage)
            object["damage"] = {{"offset", log.firstDamage->offset},
                                {"line", log.firstDamage->line},
                                {"what", log.firstDamage->what}};
        if (const std::string file = log.ContinuedIn(); !file.empty())
            object["continued_in"] = file;
        object["open_calls"] = Json::array();
        for (const Call* call : open)
            object["open_calls"].push_back(OpenJson(log, *call));
        object["before"] = Json::array();
        if (!open.empty())
            for (const Call* call : log.Before(*open.front()))
                object["before"].push_back(ToJson(*call));
        object["registers"] = Json::array();
        for (const KnownRegister& item : log.known.Registers())
            object["registers"].push_back(KnownJson(item, log.known));
        terminal.Print(JsonLine(object));
    }

    static Json OpenJson(const Overview& log, const Call& call)
    {
        Json object = ToJson(call);
        object["touched"] = Json::array();
        for (const MemoryAccess& memory : log.known.AccessBy(call).memory) {
            Json place = {
                {"space", memory.space}, {"address", ShortHex(memory.address)}, {"bytes", memory.size}};
            const auto block = log.known.BlockAt(memory.space, memory.address);
            place["block"] = block ? Json{{"name", block->name},
                                          {"description", block->description},
                                          {"call", block->call}}
                                   : Json();
            place["before"] = Json::array();
            for (const KnownMemory& part : log.known.Touched(memory.space, memory.address, memory.size))
                place["before"].push_back(part.source.call);
            object["touched"].push_back(std::move(place));
        }
        return object;
    }
};

}  // namespace

std::unique_ptr<Action> MakeSummary(Options& options)
{
    return std::make_unique<Summary>(options);
}

}  // namespace ScrivelTool
