// One page of HTML that shows logs: it opens from a file and fetches nothing.

#ifndef SCRIVEL_TOOL_HTMLPAGE_H
#define SCRIVEL_TOOL_HTMLPAGE_H

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "OutputFile.h"
#include "PageLog.h"
#include "Terminal.h"

namespace ScrivelTool
{

struct PageOptions
{
    /// The calls that the page has; registers and memory are known from all.
    ScrivelReader::CallFilter filter;
    /// Of a log with more calls than a page holds: those around this one are kept, or the last ones.
    std::optional<std::uint64_t> around;
    /// Without the names of hosts, and with the logs' names without their folders.
    bool anonymous = false;
    PageLimits limits;
};

struct PageWritten
{
    std::uint64_t calls = 0;  ///< of the logs
    std::uint64_t kept = 0;   ///< in the page
    bool trouble = false;     ///< a log is missing, as it can't be read; that was told
};

/// Reads the logs and writes a page of them. Nothing when there is none to show, which was told. Whether
/// writing failed is told by the file, which is the caller's to finish.
std::optional<PageWritten> WritePage(const std::vector<std::string>& logs, const PageOptions& options,
                                     OutputFile& output, Terminal& terminal);

}  // namespace ScrivelTool

#endif
