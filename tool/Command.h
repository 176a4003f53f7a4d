// How a command of scrivel is made, and how one is added.
//
// Who owns what
//     reader/             everything about logs: bytes to calls, damage, the filter's grammar, finding a
//                         call in a file. The tool parses nothing.
//     tool/main.cpp       the table of commands, the choice of one, --help and --version
//     tool/Terminal.*     the one way out: text, colours, pager, progress, errors in one line
//     tool/Options.*      the command line
//     tool/LogArguments.* what all commands take: logs, the filter, --json, --color; and the loop that
//                         reads every log that was named
//     tool/CallLine.*     a call in one line; tool/Json.* a call as JSON; tool/EntryOrder.h puts calls
//                         that end as they return back into order of entry
//     tool/<Name>.cpp     one command, nothing else
//
// To add one: write tool/<Name>.cpp with an Action and a function that makes it, declare the function
// below, and give the command a line in the table of tool/main.cpp, its file one in tool/CMakeLists.txt,
// and a test in tests/tool/. Completions, man page and --help come from the table and the options.

#ifndef SCRIVEL_TOOL_COMMAND_H
#define SCRIVEL_TOOL_COMMAND_H

#include <memory>
#include <string_view>

namespace ScrivelTool
{

class Options;
class Terminal;

/// What the program tells whoever started it.
enum class Exit
{
    Found = 0,    ///< something was found; the logs are whole; the two are equal
    Nothing = 1,  ///< nothing was found; a log is not whole; the two differ
    Trouble = 2,  ///< the command line is wrong or a log can't be read
};

/// One run of a command: the function that makes it adds its options, into the action's members.
class Action
{
public:
    virtual ~Action() = default;
    virtual Exit Run(Terminal& terminal) = 0;
};

struct Command
{
    std::string_view name;      ///< as it is typed; empty for what runs without a command
    std::string_view summary;   ///< half a line for --help
    std::string_view examples;  ///< two lines, each beginning with "scrivel"
    std::unique_ptr<Action> (*make)(Options& options);
    std::string_view note = {};  ///< what else is to be known, in front of the examples
};

/// The table of tool/main.cpp, for completions and the man page.
struct Commands
{
    const Command* first;
    const Command* last;
    const Command* begin() const { return first; }
    const Command* end() const { return last; }
};
Commands AllCommands();

std::unique_ptr<Action> MakeCalls(Options& options);
std::unique_ptr<Action> MakeHistory(Options& options);
std::unique_ptr<Action> MakeShow(Options& options);
std::unique_ptr<Action> MakeDiff(Options& options);
std::unique_ptr<Action> MakeFollow(Options& options);
std::unique_ptr<Action> MakeExport(Options& options);
std::unique_ptr<Action> MakeQuery(Options& options);
std::unique_ptr<Action> MakeReport(Options& options);
std::unique_ptr<Action> MakeCheck(Options& options);
std::unique_ptr<Action> MakeRecover(Options& options);
std::unique_ptr<Action> MakeCut(Options& options);
std::unique_ptr<Action> MakeState(Options& options);
std::unique_ptr<Action> MakeStats(Options& options);
std::unique_ptr<Action> MakeSummary(Options& options);
std::unique_ptr<Action> MakeView(Options& options);

}  // namespace ScrivelTool

#endif
