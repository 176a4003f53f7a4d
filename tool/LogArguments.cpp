// What the commands have in common. Tested by tests/tool/CommandLineTest.cpp and CallsTest.cpp.

#include "LogArguments.h"

#include <utility>

#include "Options.h"

namespace ScrivelTool
{

using namespace ScrivelReader;

void LogArguments::AddTo(Options& options, const char* logs)
{
    options.Argument("LOG", paths, logs);
    options.Choice("--color", "WHEN", colour, {"auto", "always", "never"},
                   "colours: auto, always or never");
    options.Flag("--no-pager", noPager, "long output goes to the terminal as it is");
}

void LogArguments::AddJsonTo(Options& options)
{
    options.Flag("--json", json, "one JSON object a line");
}

void LogArguments::Prepare(Terminal& terminal) const
{
    terminal.Choose(colour == "always"  ? ColourChoice::Always
                    : colour == "never" ? ColourChoice::Never
                                        : ColourChoice::Automatic);
    if (noPager)
        terminal.ForbidPager();
}

std::vector<std::string> LogArguments::LogsAt(const std::vector<std::string>& paths, Terminal& terminal,
                                              bool& trouble)
{
    std::vector<std::string> logs;
    for (const std::string& path : paths) {
        std::string error;
        const auto found = ScrivelReader::LogsAt(path, error);
        if (!found || found->empty()) {
            terminal.Error(path, {}, found ? "there is no log in this folder" : error);
            trouble = true;
            continue;
        }
        logs.insert(logs.end(), found->begin(), found->end());
    }
    return logs;
}

void FilterArguments::AddTo(Options& options, const char* toName)
{
    options.BeginGroup(group);
    options.Option("-n,--name", "GLOB,...", text.names, "calls of these names");
    options.Flag("-f,--failed", text.failed, "calls that failed");
    options.Flag("--open", text.open, "calls that had not returned");
    options.Option("-t,--thread", "T1,...", text.threads,
                   "calls of these threads: T1, T2 or the threadId");
    options.Option("--calls", "55..68", text.calls, "calls with these numbers");
    options.Option("--from", "SECONDS", text.from, "calls entered from then on");
    options.Option(toName, "SECONDS", text.to, "calls entered until then");
    options.Option("--slower", "1ms", text.slower, "calls that took longer");
    options.Option("--inside", "N", text.inside, "calls made within call N");
    options.Option("--grep", "TEXT", text.grep,
                   "calls with this text in name, status, an element's name or its text");
    options.Option("-w,--where", "EXPRESSION", text.where,
                   "'name ~ Mem and took > 1ms and arg.bytes = 4'");
}

std::optional<CallFilter> FilterArguments::Make(Terminal& terminal) const
{
    std::string error;
    std::optional<CallFilter> filter = CallFilter::Make(text, error);
    if (!filter)
        terminal.Error(error);
    return filter;
}

Exit ReadingAction::Run(Terminal& terminal)
{
    logs.Prepare(terminal);
    auto chosen = filter.Make(terminal);
    return chosen ? Read(std::move(*chosen), terminal) : Exit::Trouble;
}

bool Feed(LogReader& reader, LogInput& input, const std::string& path, Terminal& terminal)
{
    std::vector<char> buffer(64 * 1024);
    while (true) {
        const std::optional<std::size_t> got = input.Read(buffer.data(), buffer.size());
        if (!got || *got == 0)
            return got.has_value();
        reader.Feed({buffer.data(), *got});
        terminal.Progress(path, input.Consumed(), input.Size());
    }
}

namespace
{

std::optional<LogEnd> ReadToEnd(LogInput& input, const std::string& path, LogHandler& handler,
                                const ReadOptions& options, Terminal& terminal)
{
    LogReader reader(handler, options);
    const bool isRead = Feed(reader, input, path, terminal);
    // What was had of a compressed log that is cut short or damaged is read as a log that was cut there.
    const LogEnd end = reader.Finish(!isRead && input.IsCutOff() ? input.Error() : "");
    terminal.EndProgress();
    if (isRead || input.IsCutOff())
        return end;
    terminal.Error(path, {}, input.Error());
    return {};
}

std::unique_ptr<LogInput> Open(const std::string& path, Terminal& terminal)
{
    std::string error;
    std::unique_ptr<LogInput> input = OpenLog(path, error);
    if (input == nullptr)
        terminal.Error(path, {}, error);
    return input;
}

}  // namespace

std::optional<LogEnd> ReadLog(LogInput& input, const std::string& path, LogHandler& handler,
                              const ReadOptions& options, Terminal& terminal)
{
    auto end = ReadToEnd(input, path, handler, options, terminal);
    if (!end || end->isLog)
        return end;
    terminal.Error(path, {}, end->empty ? "the log is empty" : "this is no log");
    return {};
}

std::optional<LogEnd> ReadLog(const std::string& path, LogHandler& handler, const ReadOptions& options,
                              Terminal& terminal)
{
    const auto input = Open(path, terminal);
    return input == nullptr ? std::nullopt : ReadLog(*input, path, handler, options, terminal);
}

std::optional<LogEnd> ReadFile(const std::string& path, LogHandler& handler, const ReadOptions& options,
                               Terminal& terminal)
{
    const auto input = Open(path, terminal);
    return input == nullptr ? std::nullopt : ReadToEnd(*input, path, handler, options, terminal);
}

void TellDamage(Terminal& terminal, const std::string& path, const Damage& damage)
{
    constexpr std::uint64_t most = 20;
    if (damage.ordinal > most) {
        if (damage.ordinal == most + 1)
            terminal.Error(path, {}, "more places are damaged");
        return;
    }
    std::string what = damage.what + " (byte " + std::to_string(damage.offset);
    if (damage.call)
        what += ", in call " + std::to_string(*damage.call) + " " + damage.callName;
    terminal.Error(path, damage.line, what + ")");
}

}  // namespace ScrivelTool
