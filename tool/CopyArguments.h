// What the commands have in common that write a log: one log in, one out.

#ifndef SCRIVEL_TOOL_COPYARGUMENTS_H
#define SCRIVEL_TOOL_COPYARGUMENTS_H

#include <functional>
#include <optional>
#include <string>

#include "LogArguments.h"
#include "scrivel/LogCopy.h"

namespace ScrivelTool
{

/// Makes the copy, or gives nothing and an error.
using Copying = std::function<std::optional<ScrivelReader::Copied>(
    ScrivelReader::LogBytes& log, const ScrivelReader::CopyOutput& output, std::string& error)>;

class CopyArguments
{
public:
    void AddTo(Options& options);

    /// The log that was named, and the name of the copy.
    const std::string& Log() const { return logs.Paths().front(); }
    const std::string& Output() const { return output; }

    /// Copies the log. Nothing when that failed, which was told; then no file is left. Without a byte
    /// written there is none either.
    std::optional<ScrivelReader::Copied> Copy(const Copying& copying, Terminal& terminal) const;

private:
    LogArguments logs;
    std::string output;
    bool force = false;
};

}  // namespace ScrivelTool

#endif
