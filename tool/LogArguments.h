// What the commands have in common: the logs that were named, the filter, --json, --color; and reading
// every log.

#ifndef SCRIVEL_TOOL_LOGARGUMENTS_H
#define SCRIVEL_TOOL_LOGARGUMENTS_H

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Command.h"
#include "Terminal.h"
#include "scrivel/CallFilter.h"
#include "scrivel/LogInput.h"
#include "scrivel/LogReader.h"

namespace ScrivelTool
{

/// The logs, and how they are shown.
class LogArguments
{
public:
    /// With what its help says of the logs.
    void
    AddTo(Options& options,
          const char* logs = "log files, folders of them, or - for standard input; .gz and .zst too");
    void AddJsonTo(Options& options);

    const std::vector<std::string>& Paths() const { return paths; }
    bool Json() const { return json; }

    /// The logs that the paths name, folders opened. Tells of what can't be read, and then has trouble.
    std::vector<std::string> Logs(Terminal& terminal, bool& trouble) const
    {
        return LogsAt(paths, terminal, trouble);
    }
    static std::vector<std::string> LogsAt(const std::vector<std::string>& paths, Terminal& terminal,
                                           bool& trouble);

    /// Applies --color and the like. To be called first.
    void Prepare(Terminal& terminal) const;

private:
    std::vector<std::string> paths;
    std::string colour = "auto";
    bool noPager = false;
    bool json = false;
};

/// The filter's options, the same for every command that reads calls.
class FilterArguments
{
public:
    static constexpr const char* group = "Filter";

    /// The last that a command adds: its group goes on.
    /// A command with a --to of its own has another name for that of the filter.
    void AddTo(Options& options, const char* toName = "--to");
    /// Nothing when the filter isn't understood, which was told.
    std::optional<ScrivelReader::CallFilter> Make(Terminal& terminal) const;

private:
    ScrivelReader::FilterText text;
};

/// A command that reads the calls that a filter leaves. A derived command adds the options of `logs` and
/// `filter` in its constructor.
class ReadingAction : public Action
{
public:
    /// Reads, when the line's filter is understood.
    Exit Run(Terminal& terminal) final;

protected:
    virtual Exit Read(ScrivelReader::CallFilter chosen, Terminal& terminal) = 0;

    LogArguments logs;
    FilterArguments filter;
};

/// Gives a reader all of a log, and shows how far it is. False when the log can't be read to its end,
/// which the input tells.
bool Feed(ScrivelReader::LogReader& reader, ScrivelReader::LogInput& input, const std::string& path,
          Terminal& terminal);

/// Reads one log to its end and hands it to the handler. Nothing when it can't be read or is no log,
/// which was told; what was read until then was handed out.
std::optional<ScrivelReader::LogEnd> ReadLog(const std::string& path, ScrivelReader::LogHandler& handler,
                                             const ScrivelReader::ReadOptions& options,
                                             Terminal& terminal);
std::optional<ScrivelReader::LogEnd> ReadLog(ScrivelReader::LogInput& input, const std::string& path,
                                             ScrivelReader::LogHandler& handler,
                                             const ScrivelReader::ReadOptions& options,
                                             Terminal& terminal);

/// Reads what may be no log, which the caller tells. Nothing when it can't be read, which was told.
std::optional<ScrivelReader::LogEnd> ReadFile(const std::string& path, ScrivelReader::LogHandler& handler,
                                              const ScrivelReader::ReadOptions& options,
                                              Terminal& terminal);

/// Tells of a damage, or that a log is none, in one line on standard error; of the first twenty of a log.
void TellDamage(Terminal& terminal, const std::string& path, const ScrivelReader::Damage& damage);

}  // namespace ScrivelTool

#endif
