// scrivel calls: one line a call, in order of entry. Tested by tests/tool/CallsTest.cpp.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <optional>
#include <string>
#include <utility>

#include "CallLine.h"
#include "Command.h"
#include "EntryOrder.h"
#include "Json.h"
#include "LogArguments.h"
#include "Options.h"

namespace ScrivelTool
{

using namespace ScrivelReader;

namespace
{

class Calls final : public ReadingAction
{
public:
    explicit Calls(Options& options)
    {
        logs.AddTo(options);
        logs.AddJsonTo(options);
        options.Option("--last", "N", last, "only the last N calls that the filter leaves");
        options.Option("-C,--context", "N", context,
                       "N calls before and after each that the filter leaves");
        filter.AddTo(options);
    }

    Exit Read(CallFilter chosen, Terminal& terminal) override
    {
        bool trouble = false;
        bool found = false;
        const std::vector<std::string> paths = logs.Logs(terminal, trouble);
        for (const std::string& path : paths) {
            OneLog log(*this, chosen, terminal, path, paths.size() > 1);
            ReadOptions options;
            if (!logs.Json() && !chosen.NeedsContents())
                options.limits = LineLimits();
            const auto end = ReadLog(path, log, options, terminal);
            log.PrintLast();
            trouble = trouble || !end || !log.Error().empty();
            found = found || log.Found();
            if (!log.Error().empty()) {
                terminal.Error(path, {}, log.Error());
            }
        }
        return trouble ? Exit::Trouble : found ? Exit::Found : Exit::Nothing;
    }

private:
    class OneLog final : public LogHandler
    {
    public:
        OneLog(const Calls& itsCommand, const CallFilter& itsFilter, Terminal& itsTerminal,
               const std::string& itsPath, bool itsToNameLog)
            : command(itsCommand), chosen(itsFilter), terminal(itsTerminal), path(itsPath),
              toNameLog(itsToNameLog), order([this](Line&& line) { Take(std::move(line)); })
        {
        }

        void Entered(const Call&) override { order.Entered(); }
        void TakenBack(const Call&) override { order.TakenBack(); }
        void Damaged(const Damage& damage) override { TellDamage(terminal, path, damage); }
        void Ended(Call& call) override
        {
            Line line;
            line.chosen = chosen.Matches(call);
            if (line.chosen || command.context != 0) {
                if (command.logs.Json()) {
                    line.text = JsonLine(call, {{"log", path}});
                } else {
                    line.text = CallLine(call, terminal);
                }
            }
            order.Ended(call.entry, std::move(line));
        }

        bool Found() const { return found; }
        const std::string& Error() const { return order.Error(); }

        void PrintLast()
        {
            for (const Shown& line : kept)
                Print(line.text, line.afterGap && &line != &kept.front());
        }

    private:
        struct Shown
        {
            std::string text;
            bool afterGap;  // the calls right before it aren't shown
        };

        void Take(Line&& line)
        {
            if (line.chosen) {
                for (std::string& before : earlier)
                    Show(std::move(before), false);
                earlier.clear();
                Show(std::move(line.text), true);
                found = true;
                toFollow = command.context;
            } else if (toFollow != 0) {
                --toFollow;
                Show(std::move(line.text), false);
            } else if (command.context != 0) {
                earlier.push_back(std::move(line.text));
                if (earlier.size() > command.context) {
                    earlier.pop_front();
                    gap = true;
                }
            }
        }

        void Show(std::string&& text, bool isChosen)
        {
            if (toNameLog && !command.logs.Json()) {
                terminal.Print("==> " + Printable(path) + "\n");
                toNameLog = false;
            }
            const bool afterGap = std::exchange(gap, false) && shown && !command.logs.Json();
            shown = true;
            if (!command.last) {
                Print(text, afterGap);
                return;
            }
            if (*command.last == 0)
                return;
            if (isChosen)
                chosenKept.push_back(keptFrom + kept.size());
            kept.push_back({std::move(text), afterGap});
            if (chosenKept.size() > *command.last)
                DropFirst();
        }

        void Print(const std::string& text, bool afterGap)
        {
            if (afterGap)
                terminal.Print("--\n");
            terminal.Print(text);
        }

        /// Lets go of the first call that was chosen: it, and those around it, may still be context of
        /// the next one. After a gap there are as many calls as make a context.
        void DropFirst()
        {
            chosenKept.pop_front();
            const std::uint64_t next = chosenKept.front();
            const std::uint64_t from = std::max(keptFrom, next - std::min(command.context, next));
            kept.erase(kept.begin(), kept.begin() + std::ptrdiff_t(from - keptFrom));
            keptFrom = from;
        }

        const Calls& command;
        const CallFilter& chosen;
        Terminal& terminal;
        const std::string& path;
        bool toNameLog;
        EntryOrder order;
        std::deque<std::string> earlier;  // that may become context
        std::size_t toFollow = 0;
        std::deque<Shown> kept;                // for --last
        std::uint64_t keptFrom = 0;            // how many were shown before the first of them
        std::deque<std::uint64_t> chosenKept;  // counted alike: those that the filter leaves
        bool gap = false;
        bool shown = false;
        bool found = false;
    };

    std::optional<std::uint64_t> last;
    std::uint64_t context = 0;
};

}  // namespace

std::unique_ptr<Action> MakeCalls(Options& options)
{
    return std::make_unique<Calls>(options);
}

}  // namespace ScrivelTool
