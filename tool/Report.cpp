// scrivel report: a folder with what goes into a bug report. Tested by tests/tool/ReportTest.cpp.

#include <algorithm>
#include <cerrno>
#include <deque>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <sys/stat.h>
#include <system_error>
#include <utility>
#include <vector>

#include "Anonymous.h"
#include "CallLine.h"
#include "CallNumber.h"
#include "Command.h"
#include "FileBytes.h"
#include "HtmlPage.h"
#include "Json.h"
#include "KnownText.h"
#include "LogArguments.h"
#include "Options.h"
#include "OutputFile.h"
#include "Version.h"
#include "scrivel/LogCopy.h"

namespace ScrivelTool
{

using namespace ScrivelReader;

namespace
{

constexpr std::size_t mostCalls = 50;   // of the small log
constexpr std::size_t mostBefore = 20;  // with the one that the report is about

using Make = std::unique_ptr<Action> (*)(Options&);

/// What a command prints of these arguments.
std::string Said(Make make, const std::vector<std::string>& arguments)
{
    std::string text;
    Terminal terminal(text);
    Options options("scrivel", "", "");
    const std::unique_ptr<Action> action = make(options);
    if (options.Read(arguments) == Request::Run)
        action->Run(terminal);
    terminal.Flush();
    return text;
}

class Report final : public Action
{
public:
    explicit Report(Options& options)
    {
        logs.AddTo(options, "one log file; .gz and .zst too");
        options.Required("-o,--output", "FOLDER", folder, "where the report is written");
        options.Flag(
            "--anonymous", anonymous,
            "leave out the host's name and paths: what begins with / ~ . or C:, words with slashes");
        options.Flag("--force", force, "replace a report that is there");
    }

    Exit Run(Terminal& terminal) override
    {
        logs.Prepare(terminal);
        const std::optional<std::string> log = OnlyLog(terminal);
        return log ? Write(*log, terminal) : Exit::Trouble;
    }

private:
    /// The log that was named, or the only one of a folder. Nothing when there are several, or it can't
    /// be read again, which is told.
    std::optional<std::string> OnlyLog(Terminal& terminal) const
    {
        bool trouble = false;
        const std::vector<std::string> paths = logs.Logs(terminal, trouble);
        if (trouble)
            return {};
        if (paths.size() != 1) {
            terminal.Error("one log at a time");
            return {};
        }
        std::error_code ignored;
        const auto type = std::filesystem::status(paths.front(), ignored).type();
        const bool isThere = type != std::filesystem::file_type::not_found;
        if (paths.front() == "-" || (isThere && type != std::filesystem::file_type::regular)) {
            terminal.Error("a report reads the log more than once: name a file");
            return {};
        }
        return paths.front();
    }

    Exit Write(const std::string& path, Terminal& terminal) const
    {
        const Json facts = Json::parse(Said(MakeSummary, {"--json", path}), nullptr, false);
        if (facts.is_discarded())
            return Exit::Trouble;  // which was told
        if (mkdir(folder.c_str(), 0777) != 0 && errno != EEXIST) {
            terminal.Error(folder, {}, std::generic_category().message(errno));
            return Exit::Trouble;
        }
        const Anonymous hidden(facts.value("host", ""), path);
        const auto hide = [&](const std::string& text) { return anonymous ? hidden(text) : text; };
        Outline log(NumberOf(facts));
        ReadOptions options;
        options.limits = LineLimits();
        ReadLog(path, log, options, terminal);
        const auto writeReport = [&](OutputFile& file) {
            return file.Write(hide(Page(facts, log, path)));
        };
        const auto writeCalls = [&](OutputFile& file) {
            const auto write = [&](std::string_view text) { return file.Write(hide(std::string(text))); };
            return WriteSmallLog(log, path, write, terminal);
        };
        if (!WriteFile("report.md", writeReport, terminal) ||
            !WriteFile("calls.xml", writeCalls, terminal))
            return Exit::Trouble;
        // Of the small log, from which names were taken where they are to be; a log without calls has
        // none.
        const std::string shown = log.calls == 0 ? path : folder + "/calls.xml";
        const auto writePage = [&](OutputFile& file) {
            PageOptions page;
            page.anonymous = anonymous;
            return WritePage({shown}, page, file, terminal).has_value();
        };
        if (!WriteFile("page.html", writePage, terminal))
            return Exit::Trouble;
        terminal.Print(
            Printable(folder) + ": report.md, calls.xml, page.html" +
            (anonymous ? "" : "\nNames of hosts and paths are in it; --anonymous leaves them out.") +
            "\nA log shows what the debugger has read of the target's memory:\nlook at what you send.\n");
        return Exit::Found;
    }

    /// What a log says of itself, how many calls it has, and the last of them up to one.
    struct Outline final : LogHandler
    {
        explicit Outline(const std::optional<CallNumber>& itsNumber) : number(itsNumber) {}

        void Header(const LogHeader& itsHeader) override { header = itsHeader; }
        void Entered(const Call& call) override
        {
            calls = call.entry + 1;
            if (number && number->IsOf(call))
                about = call.entry;
        }
        void TakenBack(const Call& call) override
        {
            calls = call.entry;
            if (about == call.entry)
                about.reset();
        }
        void Ended(Call& call) override
        {
            if (about && call.entry > *about)
                return;
            lines[call.entry] = CallLine(call, terminal);
            if (lines.size() > mostBefore)
                lines.erase(lines.begin());
        }

        std::string Lines() const
        {
            std::string text;
            for (const auto& [entry, line] : lines)
                text += line;
            return text;
        }

        const std::optional<CallNumber> number;  ///< of the call that the report is about
        LogHeader header;
        std::uint64_t calls = 0;
        std::optional<std::uint64_t> about;          ///< by its entry
        std::map<std::uint64_t, std::string> lines;  ///< by the calls' entries
        std::string nowhere;
        const Terminal terminal{nowhere};  ///< as wide as what is no terminal
    };

    /// The call that the report is about: one that had not returned.
    static std::optional<CallNumber> NumberOf(const Json& facts)
    {
        const Json& open = facts["open_calls"];
        if (open.empty())
            return {};
        return CallNumber{open[0]["call"].get<std::uint64_t>(),
                          open[0]["occurrence"].get<std::uint32_t>()};
    }

    static std::string Page(const Json& facts, const Outline& log, const std::string& path)
    {
        std::string text = "# " + facts.value("verdict", "") + "\n\n";
        const auto add = [&](const std::string& title, const std::string& said) {
            if (!said.empty())
                text += (title.empty() ? "" : "## " + title + "\n\n") + "```text\n" + said + "```\n\n";
        };
        add("", Said(MakeSummary, {path}));
        if (log.number) {
            // With its occurrence: another call may have the same number.
            const std::string number =
                std::to_string(log.number->number) + "#" + std::to_string(*log.number->occurrence);
            add("The call", Said(MakeShow, {number, path}));
            add("What was known", Said(MakeState, {"--at", number, path}));
        }
        add("What came before", log.Lines());
        add("What failed", Said(MakeCalls, {"-f", "--last", "20", path}));
        text += "## Versions\n\nscrivel " + std::string(version) + "; the log is of " +
                (log.header.cadiVersion.empty() ? "an unknown version" : log.header.cadiVersion) + ", " +
                (log.header.operatingSystem.empty() ? "an unknown system" : log.header.operatingSystem) +
                ".\n\n`calls.xml` holds the last " + std::to_string(mostCalls) +
                " calls of the log as they stand in it; `page.html` shows them in a browser.\n";
        return text;
    }

    /// The last calls, and the one that the report is about, as they stand in the log.
    static bool WriteSmallLog(const Outline& log, const std::string& path,
                              const std::function<bool(std::string_view)>& write, Terminal& terminal)
    {
        if (log.calls == 0)
            return true;
        std::string error;
        const auto input = OpenLogAnywhere(path, error);
        if (input == nullptr)
            return true;
        // By their entries: numbers may begin anew within a log.
        const std::uint64_t first = log.calls - std::min<std::uint64_t>(log.calls, mostCalls);
        const CallChoice chosen = [&](const Call& call) {
            return call.entry >= first || call.entry == log.about;
        };
        FileBytes bytes(*input, path, terminal);
        // What is hidden lies within a line.
        std::string begun;
        const auto take = [&](std::string_view text) {
            const std::size_t lines = text.rfind('\n') + 1;
            begun.append(text.substr(0, lines));
            if (lines != 0 && !write(std::exchange(begun, {})))
                return false;
            begun.append(text.substr(lines));
            return true;
        };
        Cut(
            bytes, chosen, take, [](const Damage&) {}, error);
        terminal.EndProgress();
        return write(begun);
    }

    bool WriteFile(const std::string& name, const std::function<bool(OutputFile&)>& write,
                   Terminal& terminal) const
    {
        std::string error;
        const std::string path = folder + "/" + name;
        const auto file = OutputFile::Make(path, force ? Existing::Replace : Existing::Keep, {}, error);
        if (file == nullptr || !write(*file) || !file->Finish()) {
            terminal.Error(path, {}, file == nullptr ? error : file->Error());
            return false;
        }
        return true;
    }

    LogArguments logs;
    std::string folder;
    bool anonymous = false;
    bool force = false;
};

}  // namespace

std::unique_ptr<Action> MakeReport(Options& options)
{
    return std::make_unique<Report>(options);
}

}  // namespace ScrivelTool
