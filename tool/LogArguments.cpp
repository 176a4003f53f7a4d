// What the commands have in common. Tested by tests/tool/CommandLineTest.cpp and CallsTest.cpp.

#include "LogArguments.h"

#include <CLI/CLI.hpp>

namespace ScrivelTool
{

using namespace ScrivelReader;

void LogArguments::AddTo(CLI::App& options)
{
    options
        .add_option("LOG", paths, "log files, folders of them, or - for standard input; .gz and .zst too")
        ->required();
    options.add_option("--color", colour, "colours: auto, always or never")
        ->check(CLI::IsMember({"auto", "always", "never"}))
        ->type_name("WHEN");
    options.add_flag("--no-pager", noPager, "long output goes to the terminal as it is");
}

void LogArguments::AddJsonTo(CLI::App& options)
{
    options.add_flag("--json", json, "one JSON object a line");
}

void LogArguments::Prepare(Terminal& terminal) const
{
    terminal.Choose(colour == "always"  ? ColourChoice::Always
                    : colour == "never" ? ColourChoice::Never
                                        : ColourChoice::Automatic);
    if (noPager)
        terminal.ForbidPager();
}

std::vector<std::string> LogArguments::Logs(Terminal& terminal, bool& trouble) const
{
    std::vector<std::string> logs;
    for (const std::string& path : paths) {
        std::string error;
        const auto found = LogsAt(path, error);
        if (!found || found->empty()) {
            terminal.Error(path, {}, found ? "there is no log in this folder" : error);
            trouble = true;
            continue;
        }
        logs.insert(logs.end(), found->begin(), found->end());
    }
    return logs;
}

void FilterArguments::AddTo(CLI::App& options)
{
    const auto add = [&](const char* name, std::string& value, const char* type, const char* help) {
        options.add_option(name, value, help)->type_name(type)->group("Filter");
    };
    add("-n,--name", text.names, "GLOB,...", "calls of these names");
    options.add_flag("-f,--failed", text.failed, "calls that failed")->group("Filter");
    options.add_flag("--open", text.open, "calls that had not returned")->group("Filter");
    add("-t,--thread", text.threads, "T1,...", "calls of these threads: T1, T2 or the threadId");
    add("--calls", text.calls, "55..68", "calls with these numbers");
    add("--from", text.from, "SECONDS", "calls entered from then on");
    add("--to", text.to, "SECONDS", "calls entered until then");
    add("--slower", text.slower, "1ms", "calls that took longer");
    add("--inside", text.inside, "N", "calls made within call N");
    add("--grep", text.grep, "TEXT", "calls with this text in name, status or a value");
    add("-w,--where", text.where, "EXPRESSION", "'name ~ Mem and took > 1ms and arg.bytes = 4'");
}

std::optional<CallFilter> FilterArguments::Make(Terminal& terminal) const
{
    std::string error;
    std::optional<CallFilter> filter = CallFilter::Make(text, error);
    if (!filter)
        terminal.Error(error);
    return filter;
}

std::optional<LogEnd> ReadLog(LogInput& input, const std::string& path, LogHandler& handler,
                              const ReadOptions& options, Terminal& terminal)
{
    LogReader reader(handler, options);
    std::vector<char> buffer(64 * 1024);
    while (true) {
        const std::optional<std::size_t> got = input.Read(buffer.data(), buffer.size());
        if (!got || *got == 0) {
            const LogEnd end = reader.Finish();
            terminal.EndProgress();
            if (got)
                return end;
            terminal.Error(path, {}, input.Error());
            return {};
        }
        reader.Feed({buffer.data(), *got});
        terminal.Progress(path, input.Consumed(), input.Size());
    }
}

std::optional<LogEnd> ReadLog(const std::string& path, LogHandler& handler, const ReadOptions& options,
                              Terminal& terminal)
{
    std::string error;
    const std::unique_ptr<LogInput> input = OpenLog(path, error);
    if (input == nullptr) {
        terminal.Error(path, {}, error);
        return {};
    }
    return ReadLog(*input, path, handler, options, terminal);
}

void TellDamage(Terminal& terminal, const std::string& path, const Damage& damage)
{
    std::string what = damage.what + " (byte " + std::to_string(damage.offset);
    if (damage.call)
        what += ", in call " + std::to_string(*damage.call) + " " + damage.callName;
    terminal.Error(path, damage.line, what + ")");
}

}  // namespace ScrivelTool
