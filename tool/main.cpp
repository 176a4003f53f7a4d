// The program scrivel: tells what a log says. Tested by tests/tool/CommandLineTest.cpp.

#include <algorithm>
#include <cstdio>
#include <fcntl.h>
#include <filesystem>
#include <iterator>
#include <string>
#include <string_view>
#include <system_error>
#include <unistd.h>
#include <vector>

#include "Command.h"
#include "Database.h"
#include "DidYouMean.h"
#include "Options.h"
#include "Pages.h"
#include "Terminal.h"
#include "Version.h"
#include "scrivel/LogInput.h"

namespace ScrivelTool
{

namespace
{

constexpr Command commands[] = {
    {"", "what happened, and to which call", "scrivel crash-4242.xml\nscrivel logs/", MakeSummary},
    {"calls", "one line a call",
     "scrivel calls --last 20 crash-4242.xml\nscrivel calls -n 'CADIMem*' --slower 1ms -C 3 run-4242.xml",
     MakeCalls},
    {"show", "one call whole", "scrivel show 68 crash-4242.xml\nscrivel show 68 --xml crash-4242.xml",
     MakeShow},
    {"check", "whole or not, and where",
     "scrivel check logs/\nscrivel check --max-failed 0 --no-open --max-took 5ms --junit check.xml "
     "run-4242.xml",
     MakeCheck},
    {"recover", "a whole log of a damaged one",
     "scrivel recover torn.xml -o fixed.xml\nscrivel recover torn.xml.gz -o fixed.xml --force",
     MakeRecover},
    {"cut", "a small log of the calls that the filter leaves",
     "scrivel cut --calls 55..68 run-4242.xml -o small.xml\nscrivel cut -f run-4242.xml -o failed.xml",
     MakeCut},
    {"stats", "how often calls were made and how long they took",
     "scrivel stats --sort median run-4242.xml\nscrivel stats --gaps --by thread run-4242.xml",
     MakeStats},
    {"history", "every read and write of a register or an address",
     "scrivel history pc crash-4242.xml\nscrivel history Memory:0x3000+16 crash-4242.xml", MakeHistory},
    {"diff", "what differs between two runs",
     "scrivel diff monday/run-4242.xml run-4711.xml\nscrivel diff --results --ignore arg.callback a/ b/",
     MakeDiff},
    {"follow", "calls of a log that is being written, as they return",
     "scrivel follow run-4242.xml\nscrivel follow -f --all run-4242.xml", MakeFollow},
    {"report", "a folder with what goes into a bug report",
     "scrivel report crash-4242.xml -o bug\nscrivel report --anonymous run-4242.xml -o bug", MakeReport},
    {"query", "questions in SQL",
     "scrivel query run-4242.xml 'select name, took from calls order by took desc limit 5'\n"
     "scrivel query --csv logs/ 'select path, count(*) from failed join logs using (log) group by path'",
     MakeQuery,
     "The question stands after the logs.\n"
     "Its tables are logs, calls, arguments and results, its views failed, open and durations."},
    {"export", "logs in formats that other programs read",
     "scrivel export --to chrome run-4242.xml -o trace.json\nscrivel export --to sqlite logs/ -o logs.db",
     MakeExport},
    {"state", "registers and memory as the debugger had seen them",
     "scrivel state --at 68 crash-4242.xml\nscrivel state --json run-4242.xml", MakeState},
    {"view", "a page for the browser: timeline, calls, registers, memory",
     "scrivel view crash-4242.xml -o crash.html\nscrivel view connection-4243.xml run-4243.xml -o "
     "session.html",
     MakeView},
};

const Command* Find(std::string_view name)
{
    const auto found = std::find_if(std::begin(commands), std::end(commands),
                                    [&](const Command& command) { return command.name == name; });
    return found == std::end(commands) ? nullptr : found;
}

/// Examples, each after the first on a line of its own below it.
std::string InLines(std::string_view examples)
{
    std::string lines(examples);
    for (std::size_t at = lines.find('\n'); at != std::string::npos; at = lines.find('\n', at + 3))
        lines.replace(at, 1, "\n  ");
    return lines;
}

std::string Help()
{
    std::string text = "scrivel tells what a log of CADI calls says.\n\n"
                       "Usage: scrivel COMMAND [OPTIONS] LOG...\n";
    if (const Command* nameless = Find(""); nameless != nullptr) {
        text += "       scrivel [OPTIONS] LOG...    " + std::string(nameless->summary) +
                "\n\nWithout a command there are --json and the options that choose calls, too:\n"
                "scrivel --json --help tells them.\n";
        text += "\nExamples:\n  " + InLines(nameless->examples) + "\n";
    }
    text += "\nCommands:\n";
    for (const Command& command : commands) {
        if (command.name.empty())
            continue;
        text += "  " + std::string(command.name) + std::string(12 - command.name.size(), ' ') +
                std::string(command.summary) + "\n";
    }
    return text +
           "\nscrivel COMMAND --help tells a command's options, scrivel --man prints the man page,\n"
           "scrivel --completion bash (zsh, fish) what completes words in that shell.\n";
}

std::string VersionText()
{
    std::string text = "scrivel " + std::string(version) + "\n";
    const auto list = [](const std::vector<std::string_view>& names) {
        std::string joined;
        for (const std::string_view name : names)
            joined += (joined.empty() ? "" : ", ") + std::string(name);
        return joined;
    };
    if (const auto formats = ScrivelReader::CompressedFormats(); !formats.empty())
        text += "reads logs compressed by " + list(formats) + "\n";
    if (Database::IsThere())
        text += "asks logs in SQL\n";
    std::vector<std::string_view> missing = ScrivelReader::MissingFormats();
    if (!Database::IsThere())
        missing.emplace_back("SQLite");
    if (!missing.empty())
        text += "built without " + list(missing) + "\n";
    return text;
}

Exit Run(const Command& command, const std::vector<std::string>& arguments, Terminal& terminal)
{
    const std::string note = command.note.empty() ? "" : std::string(command.note) + "\n\n";
    Options options(command.name.empty() ? "scrivel" : "scrivel " + std::string(command.name),
                    command.summary, note + "Examples:\n  " + InLines(command.examples));
    const std::unique_ptr<Action> action = command.make(options);
    switch (options.Read(arguments)) {
    case Request::Help:
        terminal.Print(options.Help());
        return Exit::Found;
    case Request::Unclear:
        terminal.Error(options.Error());
        return Exit::Trouble;
    case Request::Run:
        break;
    }
    return action->Run(terminal);
}

Exit PrintCompletion(const std::vector<std::string>& arguments, Terminal& terminal)
{
    const auto text = Completion(arguments.size() == 2 ? arguments[1] : "", AllCommands());
    if (!text) {
        terminal.Error("--completion is for bash, zsh or fish");
        return Exit::Trouble;
    }
    terminal.Print(*text);
    return Exit::Found;
}

Exit Run(std::vector<std::string> arguments, Terminal& terminal)
{
    if (arguments.empty() || arguments.front() == "--help" || arguments.front() == "-h" ||
        (arguments.size() == 1 && arguments.front() == "help")) {
        terminal.Print(Help());
        return arguments.empty() ? Exit::Trouble : Exit::Found;
    }
    if (arguments.front() == "--version") {
        terminal.Print(VersionText());
        return Exit::Found;
    }
    if (arguments.front() == "--man") {
        terminal.Print(ManPage(AllCommands()));
        return Exit::Found;
    }
    if (arguments.front() == "--completion")
        return PrintCompletion(arguments, terminal);
    if (arguments.front() == "help") {
        arguments.erase(arguments.begin());
        arguments.emplace_back("--help");
    }

    const std::string first = arguments.front();
    if (const Command* command = Find(first); command != nullptr && !first.empty()) {
        arguments.erase(arguments.begin());
        return Run(*command, arguments, terminal);
    }
    // What is a file, or looks like one or like an option, is meant for the command that has no name.
    const Command* nameless = Find("");
    std::error_code ignored;
    const bool isFile = std::filesystem::exists(first, ignored);
    if (nameless != nullptr && (isFile || first.find_first_of("-./") != std::string::npos))
        return Run(*nameless, arguments, terminal);

    std::vector<std::string> names;
    for (const Command& command : commands)
        names.emplace_back(command.name);
    std::string what = "there is no command \"" + first + "\"";
    if (const std::string near = Nearest(first, names); !near.empty())
        what += "; did you mean " + near + "?";
    terminal.Error(what + " (scrivel --help lists them)");
    return Exit::Trouble;
}

/// Where standard input, output or error are closed the next file would take their place, and get what is
/// meant for them.
void KeepStandardStreamsApart()
{
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (fcntl(stream, F_GETFD) < 0)
            // Neither can be used: reading from the first or writing to the others fails as it should.
            open("/dev/null", stream == STDIN_FILENO ? O_WRONLY : O_RDONLY);
    }
}

}  // namespace

Commands AllCommands()
{
    return {std::begin(commands), std::end(commands)};
}

}  // namespace ScrivelTool

int main(int count, char** arguments)
{
    ScrivelTool::KeepStandardStreamsApart();
    ScrivelTool::Terminal terminal;
    const ScrivelTool::Exit exit =
        ScrivelTool::Run(std::vector<std::string>(arguments + 1, arguments + count), terminal);
    return int(terminal.Finish() ? exit : ScrivelTool::Exit::Trouble);
}
