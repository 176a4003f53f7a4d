// scrivel LOG...: what happened, and to which call. Tested by tests/tool/SummaryTest.cpp.

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <deque>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <sys/stat.h>
#include <utility>
#include <vector>

#include "CallLine.h"
#include "Command.h"
#include "Json.h"
#include "KnownText.h"
#include "LogArguments.h"
#include "scrivel/Knowledge.h"
#include "scrivel/LogEnding.h"
#include "scrivel/LogProcess.h"

namespace ScrivelTool
{

using namespace ScrivelReader;

namespace
{

constexpr std::size_t mostRemembered = 64;  // calls that have returned
constexpr std::size_t mostBefore = 3;       // of them that are shown
constexpr std::size_t mostRegisters = 6;
constexpr std::size_t mostNumbers = 10;
constexpr std::size_t mostOpenKept = 256;

std::string Counted(std::uint64_t count, const std::string& noun)
{
    return std::to_string(count) + " " + noun + (count == 1 ? "" : "s");
}

std::string SizeText(std::uint64_t bytes)
{
    constexpr const char* units[] = {"bytes", "KB", "MB", "GB"};
    double value = double(bytes);
    std::size_t unit = 0;
    for (; value >= 999.5 && unit + 1 < std::size(units); ++unit)
        value /= 1000;
    char text[64];
    std::snprintf(text, sizeof text, unit != 0 && value < 9.95 ? "%.1f %s" : "%.0f %s", value,
                  units[unit]);
    return text;
}

/// CADIExecGetInterrupts -> lines=01000
std::string ShortCall(const Call& call)
{
    std::string text = Printable(call.name);
    if (const std::string arguments = ElementsText(call.arguments, false); !arguments.empty())
        text += "(" + arguments + ")";
    if (const std::string results = ElementsText(call.results, true); !results.empty())
        text += " -> " + results;
    if (call.Failed())
        text += " " + StatusText(call);
    return text;
}

std::string ThreadText(const Call& call)
{
    return call.thread == 0 ? "" : "T" + std::to_string(call.thread) + "  ";
}

/// One log, read to its end. It tells of the calls that the filter leaves; what is known of the target
/// comes from all.
class Overview final : public LogHandler
{
public:
    explicit Overview(const CallFilter& itsFilter) : chosen(itsFilter) {}

    void Header(const LogHeader& itsHeader) override { header = itsHeader; }
    void Entered(const Call& call) override
    {
        ++entered;
        hasThreads = hasThreads || call.threadId.has_value();
        threads = std::max(threads, call.thread);
        Passed(call.callTime);
        known.Entered(call);
    }
    void TakenBack(const Call&) override { --entered; }
    void Ended(Call& call) override
    {
        if (!call.parts.empty())
            contentEnd = std::max(contentEnd, call.parts.back().end);
        Passed(call.returnTime);
        if (call.Returned())
            known.Ended(call, known.AccessBy(call));
        if (!chosen.Matches(call))
            return;
        ++calls;
        if (call.Failed()) {
            ++failed;
            if (failures.size() < mostNumbers)
                failures.push_back(NumberText(call));
        }
        if (!call.Returned()) {
            KeepOpen(call);
            return;
        }
        recent.push_back(std::move(call));
        if (recent.size() > mostRemembered)
            recent.pop_front();
    }
    void Damaged(const Damage& damage) override
    {
        if (!firstDamage)
            firstDamage = damage;
    }

    /// The innermost open call of each thread, the one that was entered last first.
    std::vector<const Call*> Innermost() const
    {
        std::vector<const Call*> found;
        for (const auto& [thread, call] : innermost)
            found.push_back(&call);
        std::sort(found.begin(), found.end(),
                  [](const Call* a, const Call* b) { return a->entry > b->entry; });
        return found;
    }

    /// The last calls that were entered before a call, the latest first.
    std::vector<const Call*> Before(const Call& call) const
    {
        std::vector<const Call*> found;
        for (const Call& other : recent)
            if (other.entry < call.entry)
                found.push_back(&other);
        std::sort(found.begin(), found.end(),
                  [](const Call* a, const Call* b) { return a->entry > b->entry; });
        found.resize(std::min(found.size(), mostBefore));
        return found;
    }

    /// An open call as it is named in a line: #55 CADIExecContinue.
    std::string OpenName(std::uint64_t number) const
    {
        const auto name = openNames.find(number);
        return "#" + std::to_string(number) +
               (name == openNames.end() ? "" : " " + Printable(name->second));
    }

    LogHeader header;
    LogEnd end;
    std::uint64_t entered = 0;
    std::uint64_t calls = 0;  // of them that the filter leaves
    std::uint64_t failed = 0;
    std::uint64_t open = 0;
    std::uint32_t threads = 0;
    bool hasThreads = false;
    std::vector<std::string> failures;
    std::optional<Damage> firstDamage;
    std::optional<Time> lastTime;
    std::uint64_t contentEnd = 0;  // after the last element of a call
    Knowledge known;
    Writer writer = Writer::Elsewhere;
    std::optional<std::int64_t> sinceLastTime;  // nanoseconds since the file changed

    bool IsFiltered() const { return !chosen.MatchesAll(); }
    const Call* LastCall() const { return recent.empty() ? nullptr : &recent.back(); }
    bool WasEnded() const { return EndingOf(end, contentEnd).ended; }
    /// The file that the log goes on in.
    std::string ContinuedIn() const { return EndingOf(end, contentEnd).continuedIn; }

private:
    void Passed(const std::optional<Time>& time)
    {
        if (time && !time->wrapped && (!lastTime || lastTime->nanoseconds < time->nanoseconds))
            lastTime = time;
    }

    void KeepOpen(Call& call)
    {
        ++open;
        if (openNames.size() < mostOpenKept)
            openNames.emplace(call.number, call.name);
        const auto found = innermost.find(call.thread);
        if (found == innermost.end() || found->second.entry < call.entry)
            innermost.insert_or_assign(call.thread, std::move(call));
    }

    const CallFilter& chosen;
    std::map<std::uint32_t, Call> innermost;  // of the open calls, by thread
    std::map<std::uint64_t, std::string> openNames;
    std::deque<Call> recent;
};

/// What became of a call that had not returned, as far as anyone can know.
struct Verdict
{
    std::string heading;  ///< CALL 68 NEVER RETURNED, and process 4242 is gone
    std::string word;     ///< never returned
    std::string shortWord;
    bool isRunning = false;
};

std::string ProcessText(const Overview& log)
{
    return log.header.processId ? "process " + std::to_string(*log.header.processId) : "its process";
}

Verdict VerdictOf(const Overview& log, const Call& call)
{
    const std::string name = "CALL " + NumberText(call);
    const std::string never = name + " NEVER RETURNED";
    if (log.WasEnded())
        return {never + "; the log was ended before it did", "never returned", "never returned"};
    if (!log.end.whole)
        return {name + " HAD NOT RETURNED where the log is damaged or ends",
                "had not returned where the log is damaged or ends", "open where damaged"};
    switch (log.writer) {
    case Writer::HasLogOpen: {
        std::string time = " RUNNING";
        std::string word = "running";
        if (log.sinceLastTime && log.lastTime && call.callTime && !call.callTime->wrapped) {
            const std::string took =
                DurationText(*log.sinceLastTime + log.lastTime->nanoseconds - call.callTime->nanoseconds);
            time += " FOR " + took;
            word += " for " + took;
        }
        return {name + time + " in " + ProcessText(log) + ", which has the log open", word, word, true};
    }
    case Writer::Gone:
        return {never + ", and " + ProcessText(log) + " is gone", "never returned", "never returned"};
    case Writer::HasItNot:
        return {never + "; a " + ProcessText(log) + " lives, but has not this log open", "never returned",
                "never returned"};
    case Writer::Unseen:
        return {name + " HAD NOT RETURNED; " + ProcessText(log) + " lives, its files can't be seen",
                "had not returned when the log ended", "open at the end"};
    case Writer::Elsewhere:
        break;
    }
    return {name + " HAD NOT RETURNED when the log ended", "had not returned when the log ended",
            "open at the end"};
}

/// What the end of a log tells when every call has returned.
std::string EndText(const Overview& log)
{
    if (!log.end.isLog)
        return "this is no log";
    if (log.IsFiltered())
        return "every call that the filter leaves returned";
    if (const std::string file = log.ContinuedIn(); !file.empty())
        return "the log goes on in " + Printable(file);
    if (log.WasEnded())
        return log.entered == 0 ? "the log was ended; it has no call"
                                : "every call returned, and the log was ended";
    const std::string all = log.entered == 0 ? "the log has no call" : "every call returned";
    if (log.writer == Writer::HasLogOpen)
        return all + "; " + ProcessText(log) + " has the log open";
    if (!log.end.whole)
        return all + " as far as the log can be read";
    return all + "; a clean end and a kill after the last one look the same";
}

std::string DamageText(const Overview& log)
{
    if (!log.firstDamage)
        return "not whole";
    std::string text = "damaged at line " + std::to_string(log.firstDamage->line) + " (byte " +
                       std::to_string(log.firstDamage->offset) + ")";
    if (log.end.damages > 1)
        text += " and in " + Counted(log.end.damages - 1, "more place");
    return text;
}

std::string KindText(const Overview& log)
{
    return log.entered == 0 ? "log" : log.hasThreads ? "run log" : "connection log";
}

class Summary final : public Action
{
public:
    explicit Summary(Options& options)
    {
        logs.AddTo(options);
        logs.AddJsonTo(options);
        filter.AddTo(options);
    }

    Exit Run(Terminal& terminal) override
    {
        logs.Prepare(terminal);
        const auto chosen = filter.Make(terminal);
        if (!chosen)
            return Exit::Trouble;
        bool trouble = false;
        bool allWhole = true;
        const std::vector<std::string> paths = logs.Logs(terminal, trouble);
        std::vector<Row> rows;
        for (const std::string& path : paths) {
            const auto log = ReadOverview(path, *chosen, terminal);
            if (log == nullptr) {
                trouble = true;
                continue;
            }
            if (!log->end.isLog) {
                terminal.Error(path, {}, log->end.empty ? "the log is empty" : "this is no log");
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
            options.limits.items = 4096;
            options.limits.text = 4096;
        }
        const auto end = ReadLog(*input, path, *log, options, terminal);
        if (!end)
            return nullptr;
        log->end = *end;
        if (const auto descriptor = input->Descriptor()) {
            log->writer = FindWriter(log->header, *descriptor);
            log->sinceLastTime = SinceChange(*descriptor);
        }
        return log;
    }

    static std::optional<std::int64_t> SinceChange(int descriptor)
    {
        struct stat file
        {
        };
        if (fstat(descriptor, &file) != 0)
            return {};
        constexpr std::int64_t second = 1000 * 1000 * 1000;
        const std::int64_t now = std::chrono::duration_cast<std::chrono::nanoseconds>(
                                     std::chrono::system_clock::now().time_since_epoch())
                                     .count();
        return std::max<std::int64_t>(0, now - file.st_mtim.tv_sec * second - file.st_mtim.tv_nsec);
    }

    // ---- One log ------------------------------------------------------------------------------------

    static void Print(const Overview& log, const std::string& path, Terminal& terminal)
    {
        const std::string name = Printable(path == "-" ? "standard input" : path);
        std::string text = terminal.Styled(Style::Name, name) + "  ";
        const std::vector<std::string> facts = Facts(log);
        std::size_t columns = Columns(name) + 2 * facts.size();
        for (const std::string& fact : facts)
            columns += Columns(fact);
        for (std::size_t i = 0; i < facts.size(); ++i) {
            const bool isLast = i + 1 == facts.size();
            text += isLast && !log.end.whole ? terminal.Styled(Style::Damage, facts[i]) : facts[i];
            text += isLast ? "\n" : i == 0 && columns > terminal.Width() ? ",\n  " : ", ";
        }
        if (log.firstDamage)
            text += "  " +
                    terminal.Styled(Style::Damage,
                                    Clipped(Printable(log.firstDamage->what), terminal.Width() - 2)) +
                    "\n";

        const std::vector<const Call*> open = log.Innermost();
        if (open.empty())
            text += EndText(log) + "\n";
        for (std::size_t i = 0; i < open.size(); ++i)
            text += OpenText(log, *open[i], i == 0, terminal);

        if (!open.empty())
            text += BeforeText(log, log.Before(*open.front()), terminal);
        else if (const Call* last = log.LastCall(); last != nullptr)
            text += ItemLines("last", {"#" + NumberText(*last) + " " + ShortCall(*last)},
                              terminal.Width(), terminal);
        text += KnownText(log, terminal);
        text += CountsText(log, terminal) + NextText(log, open, path, terminal);
        terminal.Print(text);
    }

    /// run log of process 4242 on lab7, 2026-11-21 14:03:59, 78 KB, whole
    static std::vector<std::string> Facts(const Overview& log)
    {
        std::vector<std::string> facts = {KindText(log)};
        if (log.header.processId)
            facts.back() += " of process " + std::to_string(*log.header.processId);
        if (!log.header.hostName.empty())
            facts.back() += " on " + Printable(log.header.hostName);
        if (!log.header.time.empty())
            facts.push_back(Printable(log.header.time));
        facts.push_back(SizeText(log.end.size));
        facts.emplace_back(log.end.whole ? "whole" : DamageText(log));
        return facts;
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
        text += "  #" + NumberText(call) + "  " + terminal.Styled(Style::Quiet, TimeText(call.callTime)) +
                "  " + ThreadText(call) + terminal.Styled(Style::Name, Printable(call.name)) + "(" +
                ElementsText(call.arguments, false) + ")\n";
        if (!call.ancestors.empty()) {
            std::string within;
            for (auto number = call.ancestors.rbegin(); number != call.ancestors.rend(); ++number)
                within += (within.empty() ? "within " : ", within ") + log.OpenName(*number);
            text += "  " + Clipped(within, terminal.Width() - 2) + "\n";
        }
        const Access access = log.known.AccessBy(call);
        for (const MemoryAccess& memory : access.memory)
            text += "  " + AboutMemory(log.known, memory) + "\n";
        for (const RegisterAccess& touched : access.registers)
            text += "  " + AboutRegister(log.known, touched) + "\n";
        return text;
    }

    static std::string AboutMemory(const Knowledge& known, const MemoryAccess& memory)
    {
        std::string text = ShortHex(memory.address);
        if (const auto block = known.BlockAt(memory.space, memory.address)) {
            text += " is in block " + Printable(block->name);
            if (!block->description.empty())
                text += " \"" + Printable(block->description) + "\"";
            text += " (#" + std::to_string(block->call) + ")";
            if (memory.size > 1 && memory.size - 1 > block->last - memory.address)
                text += ", and the access goes past its end";
        } else {
            text += " is in no block that the target had described";
        }
        const auto touched = known.Touched(memory.space, memory.address, memory.size);
        if (touched.empty())
            return text +
                   (known.IsIncomplete() ? "; no access to it is remembered" : "; first access to it");
        const auto last =
            std::max_element(touched.begin(), touched.end(), [](const auto& a, const auto& b) {
                return a.source.order < b.source.order;
            });
        return text + "; last touched by #" + std::to_string(last->source.call) +
               (last->source.way == Way::Read ? " (read" : " (wrote") +
               (last->source.succeeded ? ")" : ", failed)");
    }

    static std::string AboutRegister(const Knowledge& known, const RegisterAccess& touched)
    {
        const auto found = known.Find(touched);
        std::string text =
            RegisterName(found ? found->name : touched.name, touched.number, touched.offset128);
        if (!found || (found->bytes.empty() && !found->refused))
            return text + ": first access to it";
        return KnownItem(known, *found);
    }

    /// pc 0x3000 (#61, target ran since)     x0 write refused (#52)
    static std::string KnownItem(const Knowledge& known, const KnownRegister& item)
    {
        std::string text = RegisterName(item);
        if (!item.bytes.empty()) {
            text += " " + ValueText(item.bytes) + " (#" + std::to_string(item.source.call);
            if (item.source.whileRunning)
                text += ", target was running";
            else if (known.IsStale(item.source))
                text += ", target ran since";
            text += ")";
        }
        if (item.refused)
            text += std::string(item.bytes.empty() ? "" : ",") +
                    (item.refused->way == Way::Wrote ? " write" : " read") + " refused (#" +
                    std::to_string(item.refused->call) + ")";
        return text;
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
        std::string text = Counted(log.calls, "call");
        if (log.failed != 0) {
            std::string failed = std::to_string(log.failed) + " failed (";
            for (std::size_t i = 0; i < log.failures.size(); ++i)
                failed += (i == 0 ? "" : " ") + log.failures[i];
            text += ", " + terminal.Styled(Style::Failure,
                                           failed + (log.failed > log.failures.size() ? " ...)" : ")"));
        }
        if (log.open > 1)
            text += ", " + std::to_string(log.open) + " not returned";
        if (log.hasThreads)
            text += ", " + Counted(log.threads, "thread");
        if (log.lastTime)
            text += ", " + DurationText(log.lastTime->nanoseconds);
        return text + "\n";
    }

    static std::string NextText(const Overview& log, const std::vector<const Call*>& open,
                                const std::string& path, Terminal& terminal)
    {
        const std::string file = " " + ShellWord(path);
        std::string text = "next: ";
        if (!open.empty()) {
            const std::string number = std::to_string(open.front()->number);
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
                     Counted(log.calls, "call"),
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

    LogArguments logs;
    FilterArguments filter;
};

}  // namespace

std::unique_ptr<Action> MakeSummary(Options& options)
{
    return std::make_unique<Summary>(options);
}

}  // namespace ScrivelTool
