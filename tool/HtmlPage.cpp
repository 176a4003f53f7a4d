// Writes the page. Tested by tests/tool/ViewTest.cpp and, in a browser, by tests/page.

#include "HtmlPage.h"

#include <algorithm>
#include <memory>
#include <string_view>
#include <tuple>
#include <utility>

#include "LogArguments.h"
#include "LogStart.h"
#include "page/HtmlParts.h"

namespace ScrivelTool
{

using namespace ScrivelReader;

namespace
{

struct OneLog
{
    std::unique_ptr<PageLog> log;
    std::optional<LogStart> start;
};

std::unique_ptr<PageLog> Read(const std::string& path, const PageOptions& options, Terminal& terminal)
{
    std::string error;
    const auto input = OpenLog(path, error);
    if (input == nullptr) {
        terminal.Error(path, {}, error);
        return nullptr;
    }
    const std::string shown = options.anonymous ? path.substr(path.rfind('/') + 1) : path;
    auto log = std::make_unique<PageLog>(shown, options.filter, options.around, options.limits);
    ReadOptions reading;
    reading.limits.items = reading.limits.bytes = 64 * 1024;
    reading.limits.text = 1024 * 1024;
    const auto end = ReadLog(*input, path, *log, reading, terminal);
    if (!end)
        return nullptr;
    log->Finish(*end, *input);
    if (options.anonymous)
        log->ForgetHost();
    return log;
}

}  // namespace

std::optional<PageWritten> WritePage(const std::vector<std::string>& paths, const PageOptions& options,
                                     OutputFile& output, Terminal& terminal)
{
    PageWritten written;
    std::vector<OneLog> logs;
    for (const std::string& path : paths) {
        OneLog one{Read(path, options, terminal), {}};
        if (one.log == nullptr) {
            written.trouble = true;
            continue;
        }
        one.start = StartOf(one.log->What().header.time, one.log->What().lastTime, path);
        written.calls += one.log->What().calls;
        written.kept += one.log->Kept();
        logs.push_back(std::move(one));
    }
    if (logs.empty())
        return {};
    // In the order in which they began; a connection comes before its run within one second.
    std::stable_sort(logs.begin(), logs.end(), [](const OneLog& a, const OneLog& b) {
        const auto key = [](const OneLog& one) {
            const Overview& log = one.log->What();
            return std::tuple(log.header.time, log.hasThreads);
        };
        return key(a) < key(b);
    });

    const auto write = [&](std::string_view text) { return output.Write(text); };
    write(HtmlBeforeData());
    for (std::size_t i = 0; i < logs.size(); ++i) {
        const OneLog& one = logs[i];
        std::string tag = "<script type=\"application/json\" class=\"log\"";
        if (one.start)
            tag += " data-start=\"" + std::to_string(one.start->nanoseconds / 1000) + "\" data-exact=\"" +
                   std::to_string(one.start->isExact ? 1 : 0) + "\"";
        write(tag + ">");
        one.log->WriteData(write);
        write("</script>\n<script type=\"text/plain\" class=\"details\">");
        one.log->WriteDetails(write);
        write("</script>\n");
    }
    write(HtmlAfterData());
    return written;
}

}  // namespace ScrivelTool
