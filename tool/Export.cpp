// scrivel export: logs in formats that other programs read. Tested by tests/tool/ExportTest.cpp.

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>
#include <unistd.h>
#include <utility>
#include <vector>

#include "CallLine.h"
#include "ChromeTrace.h"
#include "Command.h"
#include "Csv.h"
#include "Database.h"
#include "EntryOrder.h"
#include "Json.h"
#include "LogArguments.h"
#include "LogStart.h"
#include "LogTables.h"
#include "Options.h"
#include "OutputFile.h"

namespace ScrivelTool
{

using namespace ScrivelReader;

namespace
{

/// How one format writes logs. Nothing is written before the first of them begins.
class Format
{
public:
    virtual ~Format() = default;
    virtual ReadOptions Reading() const { return {}; }
    /// Whether it has times of all logs on one clock. Then it is told when each begins.
    virtual bool HasOneClock() const { return false; }
    /// A log that began so many nanoseconds after the first one.
    virtual void BeginLog(const std::string& path, const LogHeader& header, std::int64_t since) = 0;
    /// What is kept of a call until its turn has come.
    virtual std::string Keep(const Call& call) = 0;
    virtual void Take(const std::string& kept) = 0;
    /// After one log at least.
    virtual void Finish() {}
};

using Writing = std::function<void(std::string_view)>;

class JsonLines final : public Format
{
public:
    explicit JsonLines(Writing itsWrite) : write(std::move(itsWrite)) {}

    void BeginLog(const std::string& itsPath, const LogHeader&, std::int64_t) override { path = itsPath; }
    std::string Keep(const Call& call) override { return JsonLine(call, {{"log", path}}); }
    void Take(const std::string& kept) override { write(kept); }

private:
    Writing write;
    std::string path;
};

class CsvLines final : public Format
{
public:
    explicit CsvLines(Writing itsWrite) : write(std::move(itsWrite)) {}

    void BeginLog(const std::string& itsPath, const LogHeader&, std::int64_t) override
    {
        path = itsPath;
        if (std::exchange(isFirst, false))
            write(CsvLine({"log", "call", "occurrence", "name", "thread", "call_time", "return_time",
                           "status", "parent", "parts", "offset", "arguments", "results"}));
    }
    std::string Keep(const Call& call) override
    {
        const Json object = HeadOf(call);
        std::vector<std::string> cells = {path};
        for (const char* const column : {"call", "occurrence", "name", "thread", "call_time",
                                         "return_time", "status", "parent", "parts", "offset"}) {
            const Json& value = object[column];
            std::string text = value.is_null() ? "" : JsonLine(value);
            if (value.is_string())
                text = value.get<std::string>();
            else if (!text.empty())
                text.pop_back();
            cells.push_back(std::move(text));
        }
        cells.push_back(JsonText(call.arguments));
        cells.push_back(JsonText(call.results));
        return CsvLine(cells);
    }
    void Take(const std::string& kept) override { write(kept); }

private:
    Writing write;
    bool isFirst = true;
    std::string path;
};

class TraceEvents final : public Format
{
public:
    explicit TraceEvents(Writing write) : trace(std::move(write)) {}

    /// A viewer shows the arguments of one event: nobody reads thousands of elements there.
    ReadOptions Reading() const override
    {
        ReadOptions options;
        options.limits.items = 1024;
        options.limits.bytes = 4096;
        options.limits.text = 4096;
        return options;
    }
    bool HasOneClock() const override { return true; }
    void BeginLog(const std::string& path, const LogHeader& header, std::int64_t since) override
    {
        trace.BeginLog(path, header, since);
    }
    std::string Keep(const Call& call) override { return trace.Keep(call); }
    void Take(const std::string& kept) override { trace.Take(kept); }
    void Finish() override { trace.Finish(); }

private:
    ChromeTrace trace;
};

/// The calls of a log in order of entry.
class OneLog final : public LogHandler
{
public:
    OneLog(Format& itsFormat, const CallFilter& itsFilter, Terminal& itsTerminal,
           const std::string& itsPath, std::int64_t itsSince)
        : format(itsFormat), chosen(itsFilter), terminal(itsTerminal), path(itsPath), since(itsSince),
          order([this](Line&& line) { Take(line); })
    {
    }

    void Header(const LogHeader& header) override
    {
        format.BeginLog(path, header, since);
        hasBegun = true;
    }
    void Entered(const Call&) override
    {
        BeginWithoutHeader();
        order.Entered();
    }
    void TakenBack(const Call&) override { order.TakenBack(); }
    void Ended(Call& call) override
    {
        Line line;
        line.chosen = chosen.Matches(call);
        if (line.chosen)
            line.text = format.Keep(call);
        order.Ended(call.entry, std::move(line));
    }
    void Damaged(const Damage& damage) override { TellDamage(terminal, path, damage); }

    /// Once it is known that this is a log: what has none of its own may have lost it.
    void BeginWithoutHeader()
    {
        if (!hasBegun)
            Header({});
    }

    bool Found() const { return found; }
    const std::string& Error() const { return order.Error(); }

private:
    void Take(const Line& line)
    {
        if (line.chosen)
            format.Take(line.text);
        found = found || line.chosen;
    }

    Format& format;
    const CallFilter& chosen;
    Terminal& terminal;
    const std::string& path;
    const std::int64_t since;
    EntryOrder order;
    bool hasBegun = false;
    bool found = false;
};

/// When a log began, which only its end tells. It is read twice; one that can't be read again is kept.
class TimedLog final : public LogHandler
{
public:
    TimedLog(const std::string& path, Terminal& terminal)
    {
        std::string ignored;
        input = OpenLogAnywhere(path, ignored);
        if (input == nullptr)
            return;
        ReadOptions options;
        options.contents = false;
        LogReader reader(*this, options);
        Feed(reader, *input, path, terminal);
        reader.Finish();
        start = StartOf(time, last, path);
        std::error_code code;
        if (std::filesystem::is_regular_file(path, code))
            input.reset();
        else
            lseek(*input->Descriptor(), 0, SEEK_SET);
    }

    const std::optional<LogStart>& Start() const { return start; }
    /// Its bytes once more; null when the path has them.
    LogInput* Input() const { return input.get(); }

    void Header(const LogHeader& header) override { time = header.time; }
    void Ended(Call& call) override
    {
        for (const std::optional<Time>& each : {call.callTime, call.returnTime})
            if (each && !each->wrapped && (!last || last->nanoseconds < each->nanoseconds))
                last = each;
    }

private:
    std::unique_ptr<LogInput> input;
    std::string time;
    std::optional<Time> last;
    std::optional<LogStart> start;
};

class Export final : public ReadingAction
{
public:
    explicit Export(Options& options)
    {
        logs.AddTo(options);
        options.Choice("--to", "FORMAT", to, {"chrome", "jsonl", "csv", "sqlite"},
                       "chrome, jsonl, csv or sqlite");
        options.Option("-o,--output", "FILE", output, "write it there, instead of printing it");
        options.Flag("--force", force, "replace the file when there is one");
        filter.AddTo(options, "--until");
    }

    Exit Read(CallFilter chosen, Terminal& terminal) override
    {
        terminal.ForbidPager();
        if (to.empty() || (to == "sqlite" && output.empty())) {
            terminal.Error(to.empty() ? "--to is missing: chrome, jsonl, csv or sqlite"
                                      : "a database is a file: name it by -o");
            return Exit::Trouble;
        }
        bool trouble = false;
        const std::vector<std::string> paths = logs.Logs(terminal, trouble);
        std::unique_ptr<OutputFile> file;
        if (!output.empty()) {
            std::string error;
            file = OutputFile::Make(output, force ? Existing::Replace : Existing::Keep, paths, error);
            if (file == nullptr) {
                terminal.Error(output, {}, error);
                return Exit::Trouble;
            }
        }
        const Writing write = [&](std::string_view text) {
            if (file != nullptr)
                file->Write(text);
            else
                terminal.Print(text);
        };
        bool found = false;
        const bool isWritten = to == "sqlite" ? SaveTables(paths, chosen, write, terminal, trouble)
                                              : WriteAll(paths, chosen, write, terminal, trouble, found);
        if (!isWritten)
            return Exit::Trouble;
        if (file != nullptr && !file->Finish()) {
            terminal.Error(output, {}, file->Error());
            return Exit::Trouble;
        }
        return trouble ? Exit::Trouble : found || to == "sqlite" ? Exit::Found : Exit::Nothing;
    }

private:
    static bool SaveTables(const std::vector<std::string>& paths, const CallFilter& chosen,
                           const Writing& write, Terminal& terminal, bool& trouble)
    {
        std::string error;
        const auto database = Database::Make(error);
        if (database == nullptr) {
            terminal.Error(error);
            return false;
        }
        if (FillTables(*database, paths, chosen, terminal, trouble) == 0)
            return false;
        if (!database->Save(
                [&](std::string_view bytes) {
                    write(bytes);
                    return true;
                },
                error)) {
            terminal.Error(error);
            return false;
        }
        return true;
    }

    bool WriteAll(const std::vector<std::string>& paths, const CallFilter& chosen, const Writing& write,
                  Terminal& terminal, bool& trouble, bool& found) const
    {
        const std::unique_ptr<Format> format = Make(write);
        std::vector<std::unique_ptr<TimedLog>> timed;
        std::vector<std::optional<LogStart>> starts(paths.size());
        if (format->HasOneClock() && paths.size() > 1) {
            for (const std::string& path : paths) {
                timed.push_back(std::make_unique<TimedLog>(path, terminal));
                starts[timed.size() - 1] = timed.back()->Start();
            }
        }
        const std::vector<std::int64_t> since = SinceTheFirst(starts);
        std::size_t read = 0;
        for (std::size_t i = 0; i < paths.size(); ++i) {
            const std::string& path = paths[i];
            OneLog log(*format, chosen, terminal, path, since[i]);
            LogInput* const again = timed.empty() ? nullptr : timed[i]->Input();
            const auto end = again == nullptr ? ReadLog(path, log, format->Reading(), terminal)
                                              : ReadLog(*again, path, log, format->Reading(), terminal);
            if (end) {
                log.BeginWithoutHeader();
                ++read;
            }
            if (!log.Error().empty())
                terminal.Error(path, {}, log.Error());
            trouble = trouble || !end || !log.Error().empty();
            found = found || log.Found();
        }
        if (read == 0)
            return false;
        format->Finish();
        return true;
    }

    std::unique_ptr<Format> Make(const Writing& write) const
    {
        if (to == "jsonl")
            return std::make_unique<JsonLines>(write);
        if (to == "csv")
            return std::make_unique<CsvLines>(write);
        return std::make_unique<TraceEvents>(write);
    }

    std::string to;
    std::string output;
    bool force = false;
};

}  // namespace

std::unique_ptr<Action> MakeExport(Options& options)
{
    return std::make_unique<Export>(options);
}

}  // namespace ScrivelTool
