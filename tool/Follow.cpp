// scrivel follow: the calls of a log that is being written, as they return. Tested by
// tests/tool/FollowTest.cpp.

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <sys/stat.h>
#include <system_error>
#include <thread>
#include <unordered_map>
#include <vector>

#include "CallLine.h"
#include "Command.h"
#include "Durations.h"
#include "Json.h"
#include "KnownText.h"
#include "LogArguments.h"
#include "Options.h"
#include "scrivel/LogFollower.h"
#include "scrivel/LogInput.h"
#include "scrivel/LogProcess.h"

namespace ScrivelTool
{

using namespace ScrivelReader;

namespace
{

using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds betweenLooks(50);
constexpr std::chrono::milliseconds betweenProcessLooks(500);
constexpr std::chrono::seconds changingAtMost(3);
constexpr std::size_t mostLive = 8;
constexpr std::size_t mostNames = 4096;

/// Why a log can't be followed whose file nothing is added to; of other files the follower tells.
std::string WhyNot(const std::string& path)
{
    if (path == "-")
        return "only a file can be followed";
    std::error_code ignored;
    if (!std::filesystem::is_regular_file(path, ignored))
        return "";
    std::string error;
    const auto input = OpenLog(path, error);
    if (input == nullptr)
        return error;
    return input->Descriptor() ? "" : "a compressed log can't be followed: nothing is added to it";
}

class Follow final : public ReadingAction
{
public:
    explicit Follow(Options& options)
    {
        logs.AddTo(options, "the log that is being written: one file, not compressed");
        logs.AddJsonTo(options);
        options.Option("--last", "N", last, "begin with the last N calls that have returned already: 10");
        options.Flag("--all", all, "begin with the first call of the log");
        options.Exclude("--all", "--last");
        filter.AddTo(options);
    }

    Exit Read(CallFilter chosen, Terminal& terminal) override
    {
        terminal.ForbidPager();
        if (logs.Paths().size() != 1) {
            terminal.Error("one log is followed at a time");
            return Exit::Trouble;
        }
        std::string path = logs.Paths().front();
        if (const std::string why = WhyNot(path); !why.empty()) {
            terminal.Error(path, {}, why);
            return Exit::Trouble;
        }
        bool found = false;
        bool toSkip = !all;
        while (true) {
            OneLog log(*this, chosen, terminal, path, toSkip);
            const auto next = log.Run();
            found = found || log.Found();
            if (log.Failed())
                return Exit::Trouble;
            if (next.empty())
                return found ? Exit::Found : Exit::Nothing;
            path = next;
            toSkip = false;
            if (!logs.Json())
                terminal.Print("==> " + Printable(path) + "\n");
        }
    }

private:
    class OneLog final : public LogHandler
    {
    public:
        OneLog(const Follow& itsCommand, const CallFilter& itsFilter, Terminal& itsTerminal,
               const std::string& itsPath, bool itsToSkip)
            : command(itsCommand), chosen(itsFilter), terminal(itsTerminal), path(itsPath),
              toSkip(itsToSkip), follower(*this, OptionsFor(itsCommand, itsFilter))
        {
        }

        /// Until the log has ended; the file in which it goes on, or nothing.
        std::string Run()
        {
            std::string error;
            if (!follower.Open(path, error)) {
                terminal.Error(path, {}, error);
                failed = true;
                return {};
            }
            auto processSeen = Clock::now() - betweenProcessLooks;
            while (true) {
                // What the process wrote before it was gone is seen by the look after that.
                std::string end;
                if (Clock::now() - processSeen >= betweenProcessLooks) {
                    end = ProcessEnd();
                    processSeen = Clock::now();
                }
                const LogFollower::Seen seen = follower.Look();
                const bool isDocument = seen == LogFollower::Seen::Document;
                TellChanging(seen);
                if (seen == LogFollower::Seen::Replaced)
                    Replaced();
                if (isDocument)
                    PrintKept();
                const LogEnding ending = follower.Ending();
                if (isDocument && !ending.continuedIn.empty()) {
                    Finish("the log goes on in " + Printable(ending.continuedIn), "continued");
                    return Beside(ending.continuedIn);
                }
                if (isDocument && ending.ended) {
                    Finish("the log was ended", "ended");
                    return {};
                }
                if (!end.empty() && seen != LogFollower::Seen::Replaced) {
                    Finish(end, "gone");
                    return {};
                }
                terminal.Flush();
                if (!terminal.Writes())
                    return {};
                if (terminal.ShowsLive())
                    terminal.ShowLive(Live());
                std::this_thread::sleep_for(betweenLooks);
            }
        }

        bool Found() const { return found; }
        bool Failed() const { return failed; }

        // ---- LogHandler
        void Entered(const Call& call) override
        {
            if (!terminal.ShowsLive())
                return;
            open[call.entry] = RunningOf(call);
            if (call.threadId)
                threads[*call.threadId] = call.thread;
            Passed(call.callTime);
        }
        void Element(const Call& call) override
        {
            if (terminal.ShowsLive())
                open[call.entry] = RunningOf(call);
        }
        void TakenBack(const Call& call) override { open.erase(call.entry); }
        void Ended(Call& call) override
        {
            if (terminal.ShowsLive())
                NoteEnd(call);
            stillOpen += call.Returned() ? 0U : 1U;
            if (!chosen.Matches(call))
                return;
            found = true;
            std::string text;
            if (command.logs.Json()) {
                text = JsonLine(call, {{"log", path}});
            } else {
                text = CallLine(call, terminal);
            }
            if (!toSkip) {
                terminal.Print(text);
                return;
            }
            kept.push_back(std::move(text));
            if (kept.size() > command.last)
                kept.pop_front();
        }
        void Damaged(const Damage& damage) override { TellDamage(terminal, path, damage); }

    private:
        static ReadOptions OptionsFor(const Follow& command, const CallFilter& chosen)
        {
            ReadOptions options;
            if (!command.logs.Json() && !chosen.NeedsContents())
                options.limits = LineLimits();
            return options;
        }

        /// What became of the process that writes the log; empty while it may go on.
        std::string ProcessEnd() const
        {
            const LogHeader& header = follower.Header();
            if (header.root.empty())
                return {};
            const std::string process =
                header.processId ? "process " + std::to_string(*header.processId) : "its process";
            switch (FindWriter(header, follower.Descriptor())) {
            case Writer::Gone:
                return process + " is gone";
            case Writer::HasItNot:
                return "a " + process + " lives, but has not this log open";
            case Writer::HasLogOpen:
            case Writer::Unseen:
            case Writer::Elsewhere:
                break;
            }
            return {};
        }

        /// The last calls of those that had returned when the log was first looked at.
        void PrintKept()
        {
            for (const std::string& line : kept)
                terminal.Print(line);
            kept.clear();
            toSkip = false;
        }

        void Replaced()
        {
            PrintKept();
            open.clear();
            threads.clear();
            times.clear();
            stillOpen = 0;
            if (command.logs.Json())
                terminal.Print(JsonLine({{"schema", jsonSchema}, {"kind", "replaced"}, {"log", path}}));
            else
                terminal.Print("==> " + Printable(path) + " is another log now\n");
        }

        void TellChanging(LogFollower::Seen seen)
        {
            if (seen != LogFollower::Seen::Changing) {
                changingSince = Clock::now();
                toldChanging = false;
            } else if (!toldChanging && Clock::now() - changingSince > changingAtMost) {
                toldChanging = true;
                terminal.Error(path, {}, "waiting for a whole document; now " + follower.Error());
            }
        }

        void Finish(const std::string& why, const char* word)
        {
            terminal.ShowLive("");
            const auto returnedBefore = stillOpen;
            follower.Finish();
            PrintKept();
            const std::uint64_t never = stillOpen - returnedBefore;
            if (command.logs.Json()) {
                terminal.Print(JsonLine({{"schema", jsonSchema},
                                         {"kind", "end"},
                                         {"log", path},
                                         {"why", word},
                                         {"not_returned", never}}));
                return;
            }
            std::string text = Printable(path) + ": " + why;
            if (never != 0)
                text +=
                    "; " + std::to_string(never) + (never == 1 ? " call" : " calls") + " never returned";
            terminal.Print(terminal.Styled(never == 0 ? Style::Plain : Style::Failure, text) + "\n");
        }

        std::string Beside(const std::string& name) const
        {
            const std::size_t slash = path.rfind('/');
            return slash == std::string::npos ? name : path.substr(0, slash + 1) + name;
        }

        // ---- Calls that are running -----------------------------------------------------------------

        /// What a line says of a call that has not returned.
        struct Running
        {
            std::uint64_t number = 0;
            std::uint32_t occurrence = 1;
            std::string name;
            std::uint32_t thread = 0;
            std::optional<Time> callTime;
            std::string text;
        };

        static Running RunningOf(const Call& call)
        {
            return {call.number, call.occurrence, call.name, call.thread, call.callTime, CallText(call)};
        }

        void NoteEnd(const Call& call)
        {
            open.erase(call.entry);
            Passed(call.returnTime);
            if (const auto took = call.Took();
                took && (times.size() < mostNames || times.count(call.name) != 0))
                times[call.name].Add(*took);
        }

        ///   68  0.016720  RUNNING 41 s  T1 CADIExecContinue()    (4 before: median 54 us)
        std::string Live() const
        {
            std::vector<const Running*> running;
            for (const auto& [entry, call] : open)
                running.push_back(&call);
            // The last one is no more than seen, or was entered long ago and goes on there.
            const std::optional<Call>& latest = follower.Last();
            const bool isKnown =
                latest && std::any_of(running.begin(), running.end(), [&](const Running* call) {
                    return call->number == latest->number && call->name == latest->name;
                });
            Running unknown;
            if (latest && !isKnown) {
                unknown = RunningOf(*latest);
                // It was read alone, as the first one of the first thread.
                if (latest->threadId) {
                    const auto thread = threads.find(*latest->threadId);
                    unknown.thread =
                        thread != threads.end() ? thread->second : std::uint32_t(threads.size() + 1);
                }
                running.push_back(&unknown);
            }
            std::string text;
            const std::size_t shown = std::min(running.size(), mostLive);
            for (std::size_t i = running.size() - shown; i < running.size(); ++i)
                text += LiveLine(*running[i]);
            return text;
        }

        std::string LiveLine(const Running& call) const
        {
            std::string text = NumberText(call.number, call.occurrence);
            text.insert(0, text.size() < 4 ? 4 - text.size() : 0, ' ');
            text += "  " + TimeText(call.callTime) + "  RUNNING";
            if (const auto running = RunningFor(call))
                text += " " + DurationText(*running);
            text += "  " + (call.thread == 0 ? "" : "T" + std::to_string(call.thread) + " ") +
                    Printable(call.text);
            std::string note;
            if (const auto before = times.find(call.name); before != times.end())
                note = "    (" + std::to_string(before->second.Count()) + " before: median " +
                       DurationText(before->second.Quantile(0.5)) + ")";
            const std::size_t room = terminal.Width() - std::min(terminal.Width(), Columns(note) + 1);
            return terminal.Styled(Style::Damage, Clipped(text, room) + note) + "\n";
        }

        void Passed(const std::optional<Time>& time)
        {
            if (time && !time->wrapped)
                lastTime = std::max(lastTime, time->nanoseconds);
        }

        /// The file was last changed at the last time that it tells.
        std::optional<std::int64_t> RunningFor(const Running& call) const
        {
            struct stat file
            {
            };
            if (!call.callTime || call.callTime->wrapped || fstat(follower.Descriptor(), &file) != 0)
                return {};
            constexpr std::int64_t second = 1000 * 1000 * 1000;
            const std::int64_t now = std::chrono::duration_cast<std::chrono::nanoseconds>(
                                         std::chrono::system_clock::now().time_since_epoch())
                                         .count();
            const std::int64_t sinceChange = now - file.st_mtim.tv_sec * second - file.st_mtim.tv_nsec;
            const std::int64_t began = call.callTime->nanoseconds;
            return std::max<std::int64_t>(0, sinceChange + std::max(lastTime, began) - began);
        }

        const Follow& command;
        const CallFilter& chosen;
        Terminal& terminal;
        const std::string& path;
        bool toSkip;
        LogFollower follower;
        std::deque<std::string> kept;
        std::map<std::uint64_t, Running> open;  // that something has followed, by entry
        std::unordered_map<std::uint64_t, std::uint32_t> threads;  // by their id
        std::unordered_map<std::string, Durations> times;
        std::uint64_t stillOpen = 0;  // calls that were handed on as never returned
        std::int64_t lastTime = 0;
        Clock::time_point changingSince = Clock::now();
        bool toldChanging = false;
        bool found = false;
        bool failed = false;
    };

    std::uint64_t last = 10;
    bool all = false;
};

}  // namespace

std::unique_ptr<Action> MakeFollow(Options& options)
{
    return std::make_unique<Follow>(options);
}

}  // namespace ScrivelTool
