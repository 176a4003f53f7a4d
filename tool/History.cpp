// scrivel history: every read and write of a register or an address, in order. Tested by
// tests/tool/HistoryTest.cpp.

#include <algorithm>
#include <deque>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "CallLine.h"
#include "Command.h"
#include "DidYouMean.h"
#include "Json.h"
#include "KnownText.h"
#include "LogArguments.h"
#include "Options.h"
#include "scrivel/CallFilter.h"

namespace ScrivelTool
{

using namespace ScrivelReader;

namespace
{

constexpr std::size_t bytesInALine = 16;
constexpr std::size_t mostLines = 100 * 1000;
constexpr std::size_t mostNames = 16 * 1024;

/// What was asked for: a register's name or number, or an address, of one space or of any.
struct Asked
{
    std::string text;
    bool isAddress = false;
    std::string space;
    std::uint64_t address = 0;
    std::uint64_t size = 1;
};

/// pc  32  0x3000  Memory:0x3000  0x3000+16
std::optional<Asked> ParseAsked(const std::string& text)
{
    Asked asked;
    asked.text = text;
    std::string rest = text;
    if (const std::size_t colon = rest.rfind(":0x"); colon != std::string::npos) {
        asked.space = rest.substr(0, colon);
        rest.erase(0, colon + 1);
    }
    if (rest.substr(0, 2) != "0x")
        return asked;
    if (const std::size_t plus = rest.find('+'); plus != std::string::npos) {
        const auto size = ParseLogNumber(rest.substr(plus + 1));
        if (!size || *size == 0)
            return {};
        asked.size = *size;
        rest.erase(plus);
    }
    const auto address = ParseLogNumber(rest);
    if (!address)
        return {};
    asked.isAddress = true;
    asked.address = *address;
    return asked;
}

class History final : public ReadingAction
{
public:
    explicit History(Options& options)
    {
        options.Argument("WHAT", what,
                         "a register's name or number, or an address: pc, 32, 0x3000, Memory:0x3000+16");
        logs.AddTo(options);
        logs.AddJsonTo(options);
        filter.AddTo(options);
    }

    Exit Read(CallFilter chosen, Terminal& terminal) override
    {
        const auto asked = ParseAsked(what);
        if (!asked) {
            terminal.Error("\"" + what + "\" is no address: 0x3000, Memory:0x3000, 0x3000+16");
            return Exit::Trouble;
        }
        bool trouble = false;
        bool found = false;
        bool incomplete = false;
        bool leftOut = false;
        std::set<std::string> names;
        const std::vector<std::string> paths = logs.Logs(terminal, trouble);
        for (const std::string& path : paths) {
            OneLog log(*this, *asked, chosen, terminal, path);
            const auto end = ReadLog(path, log, OptionsForKnowledge(), terminal);
            trouble = trouble || !end;
            if (!logs.Json())
                log.Print(paths.size() > 1);
            found = found || log.Found();
            incomplete = incomplete || log.IsIncomplete();
            leftOut = leftOut || log.LeftOut();
            names.insert(log.Names().begin(), log.Names().end());
        }
        if (leftOut)
            names.clear();  // the word was the right one
        if (!found && !trouble)
            TellNothing(*asked, names, leftOut, incomplete, terminal);
        return trouble ? Exit::Trouble : found ? Exit::Found : Exit::Nothing;
    }

private:
    static void TellNothing(const Asked& asked, const std::set<std::string>& names, bool leftOut,
                            bool incomplete, Terminal& terminal)
    {
        std::string text = std::string("no call ") + (leftOut ? "that the filter leaves " : "") +
                           "reads or writes " +
                           std::string(asked.isAddress ? "the address " : "the register ") + asked.text;
        if (!asked.isAddress)
            if (const std::string near = Nearest(asked.text, {names.begin(), names.end()}); !near.empty())
                text += "; did you mean " + near + "?";
        if (incomplete)
            text += "; there was no room to look at everything";
        terminal.Error(Printable(text));
    }

    class OneLog final : public LogHandler
    {
    public:
        OneLog(const History& itsCommand, const Asked& itsAsked, const CallFilter& itsFilter,
               Terminal& itsTerminal, const std::string& itsPath)
            : command(itsCommand), asked(itsAsked), chosen(itsFilter), terminal(itsTerminal),
              path(itsPath)
        {
        }

        void Entered(const Call& call) override { known.Entered(call); }
        void Damaged(const Damage& damage) override { TellDamage(terminal, path, damage); }
        void Ended(Call& call) override
        {
            const Access access = known.AccessBy(call);
            if (!asked.isAddress)
                for (const RegisterAccess& one : access.registers)
                    AddRegister(call, one);
            else
                for (const MemoryAccess& one : access.memory)
                    AddMemory(call, one);
            if (call.Returned())
                known.Ended(call, access);
        }

        bool Found() const { return found; }
        /// The filter left out calls that read or write it.
        bool LeftOut() const { return leftOut; }
        bool IsIncomplete() const { return known.IsIncomplete(); }
        const std::set<std::string>& Names() const { return names; }

        void Print(bool toNameLog)
        {
            if (lines.empty())
                return;
            std::vector<Fact> facts = {{"", Printable(title), Style::Name}};
            if (toNameLog)
                facts.push_back({" ", "in " + Printable(path), Style::Plain, true});
            facts.push_back({": ", now});
            if (seen && seen->whileRunning)
                facts.push_back({"; ", "target was running"});
            else if (seen && known.IsStale(*seen))
                facts.push_back({"; ", "target ran since (#" + std::to_string(*known.LastRun()) + ")"});
            std::string text = FactLines(facts, 2, terminal);
            if (dropped != 0)
                text += "(" + std::to_string(dropped) + " earlier ones left out)\n";
            terminal.Print(text);
            for (const std::string& line : lines)
                terminal.Print(line);
            if (known.IsIncomplete())
                terminal.Print(
                    terminal.Styled(Style::Damage, "more than this was seen: there was no room for it") +
                    "\n");
            terminal.Print(terminal.Styled(Style::Quiet, "next: scrivel show " + lastCall + " " +
                                                             ShellWord(path) + ", scrivel state --at " +
                                                             lastCall + " " + ShellWord(path)) +
                           "\n");
        }

    private:
        bool IsAsked(const RegisterAccess& access) const
        {
            if (const auto described = known.Described(asked.text))
                return access.number == described->number;
            return access.name == asked.text ||
                   (access.number && asked.text == std::to_string(*access.number));
        }

        bool Chooses(const Call& call)
        {
            const bool matches = chosen.Matches(call);
            leftOut = leftOut || !matches;
            return matches;
        }

        void AddRegister(const Call& call, const RegisterAccess& access)
        {
            if (!access.name.empty() && names.size() < mostNames)
                names.insert(access.name);
            if (!IsAsked(access) || !Chooses(call))
                return;
            const auto before = known.Find(access);
            const auto described =
                access.number ? known.Described(std::to_string(*access.number)) : std::nullopt;
            std::string name = access.name;
            if (name.empty())
                name = before && !before->name.empty() ? before->name : described ? described->name : "";
            const std::uint64_t bits = described ? described->bits : 0;
            title = RegisterName(name, access.number, 0);
            if (access.number && !name.empty())
                title += " (register " + std::to_string(*access.number) +
                         (bits != 0 ? ", " + std::to_string(bits) + " bits)" : ")");

            const std::string_view bytes = Significant(access.bytes, bits);
            std::vector<std::optional<char>> earlier(bytes.size());
            if (before && before->bytes.size() == access.bytes.size())
                for (std::size_t i = 0; i < bytes.size(); ++i)
                    earlier[i] = before->bytes[before->bytes.size() - bytes.size() + i];
            const std::string place =
                access.offset128 == 0 ? "" : "[" + std::to_string(access.offset128) + "]";
            Add(call, {access.way, place, access.offset128, bytes, earlier,
                       access.bytes.empty() ? "" : ValueText(access.bytes), bytes.size()});
        }

        void AddMemory(const Call& call, const MemoryAccess& access)
        {
            const bool isSpace = asked.space.empty() || asked.space == access.space ||
                                 asked.space == access.spaceName ||
                                 asked.space == known.SpaceName(access.space);
            const bool meet = access.size != 0 &&
                              access.address <= LastAddress(asked.address, asked.size) &&
                              asked.address <= LastAddress(access.address, access.size);
            if (!isSpace || !meet || !Chooses(call))
                return;
            const std::uint64_t from = std::max(asked.address, access.address);
            const auto skipped = std::size_t(from - access.address);
            const std::string_view bytes =
                std::string_view(access.bytes).substr(std::min(skipped, access.bytes.size()));
            std::vector<std::optional<char>> earlier(bytes.size());
            for (const KnownMemory& part : known.MemoryAt(access.space, from, bytes.size()))
                for (std::size_t i = 0; i < part.bytes.size(); ++i)
                    earlier[std::size_t(part.address - from) + i] = part.bytes[i];
            const std::string space = access.spaceName.empty() ? access.space : access.spaceName;
            if (title.empty()) {
                titleSpace = access.space;
                titlePlace = PlaceText(space, asked.address);
                title = titlePlace + (asked.size > 1 ? "+" + std::to_string(asked.size) : "");
                if (const auto block = known.BlockAt(access.space, asked.address))
                    title += " in block " + block->name;
            } else if (access.space != titleSpace) {
                title = asked.text;
                titlePlace.clear();
            }
            Add(call,
                {access.way, PlaceText(space, from), 0, bytes, earlier,
                 HexDigits(bytes.substr(0, 4)) + (bytes.size() > 4 ? "..." : ""), access.size - skipped});
        }

        /// What a call read or wrote of what was asked for.
        struct Touch
        {
            Way way;
            std::string place;  // within the register, or in memory
            std::uint64_t offset128;
            std::string_view bytes;
            std::vector<std::optional<char>> earlier;
            std::string value;
            std::uint64_t size;
        };

        void Add(const Call& call, const Touch& touch)
        {
            found = true;
            lastCall = NumberText(call);
            const bool succeeded = Succeeded(call);
            if (command.logs.Json()) {
                PrintJson(call, touch);
                return;
            }
            if (lastStarts != known.Starts() && !lines.empty()) {
                const std::uint64_t times = known.Starts() - lastStarts;
                Keep(terminal.Styled(Style::Quiet,
                                     "        target ran" +
                                         (times == 1 ? std::string(" ")
                                                     : " " + std::to_string(times) + " times, last ") +
                                         "(#" + std::to_string(*known.LastRun()) + ")") +
                     "\n");
            }
            lastStarts = known.Starts();

            const std::string number = "#" + NumberText(call);
            const std::string time = "  " + TimeText(call.callTime);
            const std::string before =
                std::string(6 - std::min<std::size_t>(6, number.size()), ' ') + number;
            const std::string access = (touch.way == Way::Read ? "  read  " : "  wrote ") +
                                       (touch.place.empty() ? "" : touch.place + " ");
            const std::string status = succeeded ? "" : StatusText(call);
            const std::string count = "(" + std::to_string(touch.size) + " bytes)";
            const std::size_t used =
                Columns(before + time + access) + (succeeded ? 0 : Columns(status) + 2);
            const std::size_t shown = BytesToShow(touch.bytes.size(), touch.size, used, Columns(count));

            std::string line = before + terminal.Styled(Style::Quiet, time) + access;
            line += BytesText(touch.bytes.substr(0, shown), touch.earlier, terminal);
            if (touch.size > shown)
                line += (touch.bytes.empty() ? "" : " ... ") + count;
            if (!succeeded)
                line += "  " + terminal.Styled(Style::Failure, status);
            Keep(line + "\n");

            if (succeeded) {
                seen.emplace();
                seen->runs = known.Runs();
                seen->whileRunning = known.IsRunning();
                now = touch.place == titlePlace ? "" : touch.place + " ";
                now += touch.value + (touch.value.empty() ? "" : ", ") +
                       (touch.way == Way::Read ? "read by #" : "written by #") + NumberText(call);
            } else if (now.empty()) {
                now = "no access to it succeeded";
            }
        }

        /// How many bytes fit into a line of which so much is used, with their count if that isn't all.
        std::size_t BytesToShow(std::size_t had, std::uint64_t size, std::size_t used,
                                std::size_t count) const
        {
            constexpr std::size_t perByte = 3;
            constexpr std::string_view dots = " ... ";
            const std::size_t most = std::min(had, bytesInALine);
            const bool isAll = most == size;
            if (isAll && used + perByte * most <= terminal.Width())
                return most;
            used += dots.size() + count;
            const std::size_t room = terminal.Width() - std::min(terminal.Width(), used);
            return std::min(most, std::max<std::size_t>(room / perByte, 1));
        }

        void Keep(std::string line)
        {
            lines.push_back(std::move(line));
            if (lines.size() > mostLines) {
                lines.pop_front();
                ++dropped;
            }
        }

        void PrintJson(const Call& call, const Touch& touch)
        {
            Json changed = Json::array();
            for (std::size_t i = 0; i < touch.bytes.size(); ++i)
                if (touch.earlier[i] && *touch.earlier[i] != touch.bytes[i])
                    changed.push_back(i);
            const auto ran = known.LastRun();
            Json object = {{"schema", jsonSchema},
                           {"log", path},
                           {"call", call.number},
                           {"occurrence", call.occurrence},
                           {"name", call.name},
                           {"call_time", ToJson(call.callTime)},
                           {"what", asked.isAddress ? touch.place : title},
                           {"way", touch.way == Way::Read ? "read" : "wrote"},
                           {"bytes", touch.size},
                           {"value", touch.bytes.empty() ? Json() : Json(HexDigits(touch.bytes))},
                           {"changed", std::move(changed)},
                           {"succeeded", Succeeded(call)},
                           {"status", call.status.empty() ? Json() : Json(call.status)},
                           {"ran_last_in", ran ? Json(*ran) : Json()}};
            if (!asked.isAddress)
                object["offset128"] = touch.offset128;
            terminal.Print(JsonLine(object));
        }

        const History& command;
        const Asked& asked;
        const CallFilter& chosen;
        Terminal& terminal;
        const std::string& path;
        Knowledge known;
        std::set<std::string> names;  // of registers, for "did you mean"
        std::string title;
        std::string titleSpace;
        std::string titlePlace;      // of which the title speaks
        std::string now;             // the last access that succeeded
        std::optional<Source> seen;  // by it
        std::string lastCall;
        std::deque<std::string> lines;
        std::size_t dropped = 0;
        std::uint64_t lastStarts = 0;
        bool found = false;
        bool leftOut = false;
    };

    std::string what;
};

}  // namespace

std::unique_ptr<Action> MakeHistory(Options& options)
{
    return std::make_unique<History>(options);
}

}  // namespace ScrivelTool
