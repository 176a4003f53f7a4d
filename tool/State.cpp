// scrivel state: registers and memory as the debugger had seen them. Tested by tests/tool/StateTest.cpp.

#include <algorithm>
#include <optional>
#include <string>
#include <vector>

#include "CallLine.h"
#include "CallNumber.h"
#include "Command.h"
#include "Json.h"
#include "KnownText.h"
#include "LogArguments.h"
#include "Options.h"

namespace ScrivelTool
{

using namespace ScrivelReader;

namespace
{

constexpr std::size_t bytesInALine = 16;
constexpr std::size_t mostLinesOfAPlace = 16;

class State final : public ReadingAction
{
public:
    explicit State(Options& options)
    {
        options.Option("--at", "N", asked,
                       "before this call, 68 or 68#2; without it at the end of the log");
        logs.AddTo(options);
        logs.AddJsonTo(options);
        filter.AddTo(options);
    }

    Exit Read(CallFilter chosen, Terminal& terminal) override
    {
        const auto at = asked.empty() ? std::nullopt : ParseCallNumber(asked, terminal);
        if (!at && !asked.empty())
            return Exit::Trouble;
        bool trouble = false;
        bool found = false;
        const std::vector<std::string> paths = logs.Logs(terminal, trouble);
        for (const std::string& path : paths) {
            OneLog log(at, chosen, terminal, path);
            const auto end = ReadLog(path, log, OptionsForKnowledge(), terminal);
            trouble = trouble || !end;
            if (!end || !log.Reached())
                continue;
            found = true;
            if (logs.Json())
                log.PrintJson();
            else
                log.Print(paths.size() > 1);
        }
        if (!found && !trouble)
            terminal.Error("there is no call " + asked);
        return trouble ? Exit::Trouble : found ? Exit::Found : Exit::Nothing;
    }

private:
    class OneLog final : public LogHandler
    {
    public:
        OneLog(const std::optional<CallNumber>& itsAt, const CallFilter& itsFilter, Terminal& itsTerminal,
               const std::string& itsPath)
            : at(itsAt), chosen(itsFilter), terminal(itsTerminal), path(itsPath)
        {
        }

        void Entered(const Call& call) override
        {
            if (reached)
                return;
            if (at && at->IsOf(call)) {
                reached = true;
                reachedBy = call.entry;
                number = NumberText(call);
                name = call.name;
                return;
            }
            known.Entered(call);
        }
        void TakenBack(const Call& call) override
        {
            // The element is damaged: what was known before it stands, but it is no call.
            if (reached && call.entry == reachedBy)
                isDamaged = true;
        }
        void Ended(Call& call) override
        {
            if (reached || !call.Returned())
                return;
            // Whether the target ran is known from all calls; values come from the chosen ones.
            Access access = known.AccessBy(call);
            if (!chosen.Matches(call)) {
                access.registers.clear();
                access.memory.clear();
            }
            known.Ended(call, access);
        }
        void Damaged(const Damage& damage) override { TellDamage(terminal, path, damage); }

        bool Reached() const { return reached || !at; }

        void PrintJson() const
        {
            const auto print = [&](Json item) {
                Json object = {
                    {"schema", jsonSchema}, {"log", path}, {"at", at ? Json(at->number) : Json()}};
                if (at && at->occurrence)
                    object["at_occurrence"] = *at->occurrence;
                object.update(item);
                terminal.Print(JsonLine(object));
            };
            for (const KnownRegister& item : known.Registers())
                print(KnownJson(item, known));
            for (const KnownMemory& item : known.Memory())
                print(KnownJson(item, known));
        }

        void Print(bool toNameLog) const
        {
            const std::vector<KnownRegister> registers = known.Registers();
            const std::vector<KnownMemory> memory = known.Memory();
            std::string text = Title(toNameLog, registers, memory);
            if (!registers.empty())
                text += terminal.Styled(Style::Quiet, "registers") + "\n" + RegistersText(registers);
            if (!memory.empty())
                text += terminal.Styled(Style::Quiet, "memory") + "\n";
            for (const KnownMemory& place : memory)
                text += MemoryText(place);
            if (known.IsIncomplete())
                text +=
                    terminal.Styled(Style::Damage, "more than this was seen: there was no room for it") +
                    "\n";
            terminal.Print(text + Next(registers, memory));
        }

    private:
        std::string Title(bool toNameLog, const std::vector<KnownRegister>& registers,
                          const std::vector<KnownMemory>& memory) const
        {
            std::uint64_t values = 0;
            std::uint64_t stale = 0;
            std::uint64_t bytes = 0;
            for (const KnownRegister& item : registers) {
                values += item.bytes.empty() ? 0u : 1u;
                stale += !item.bytes.empty() && known.IsStale(item.source) ? 1u : 0u;
            }
            std::uint64_t staleBytes = 0;
            for (const KnownMemory& place : memory) {
                bytes += place.size;
                staleBytes += known.IsStale(place.source) ? place.size : 0;
            }
            std::vector<Fact> facts = {{"", "at the end"}};
            if (at)
                facts = {{"", "before call"}, {" ", number + " " + Printable(name), Style::Name}};
            if (isDamaged)
                facts.push_back({" ", "(damaged)"});
            if (toNameLog)
                facts.push_back({" ", "in " + Printable(path), Style::Plain, true});
            if (values == 0 && bytes == 0) {
                facts.push_back({": ", "nothing was known of registers and memory"});
            } else {
                facts.push_back({": ", Known(values, "register", stale)});
                facts.push_back({", ", Known(bytes, "byte", staleBytes)});
            }
            return FactLines(facts, 2, terminal);
        }

        /// 3 registers (1 stale)
        static std::string Known(std::uint64_t count, const std::string& what, std::uint64_t stale)
        {
            return CountText(count, what) + (stale == 0 ? "" : " (" + std::to_string(stale) + " stale)");
        }

        /// What makes a value stale, after so many columns of its line or below them.
        std::string Age(const Source& source, std::size_t used) const
        {
            std::string text = "stale: target was running";
            if (!source.whileRunning) {
                if (!known.IsStale(source))
                    return "";
                text = "stale: target ran (#" + std::to_string(*known.LastRun()) + ")";
            }
            constexpr std::size_t gap = 2;
            if (used + gap + Columns(text) <= terminal.Width())
                return terminal.Styled(Style::Damage, std::string(gap, ' ') + text);
            return "\n      " + terminal.Styled(Style::Damage, text);
        }

        std::string RegistersText(const std::vector<KnownRegister>& registers) const
        {
            std::size_t names = 0;
            std::size_t values = 0;
            std::size_t sources = 0;
            for (const KnownRegister& item : registers) {
                names = std::max(names, Columns(RegisterName(item)));
                values = std::max(values, Value(item).size());
                sources = std::max(sources, SourceText(item.source).size());
            }
            std::string text;
            for (const KnownRegister& item : registers) {
                if (item.bytes.empty() && !item.refused)
                    continue;
                const std::string itsName = RegisterName(item);
                std::string line = "  " + terminal.Styled(Style::Name, itsName) +
                                   std::string(names - Columns(itsName) + 2, ' ');
                const std::string value = Value(item);
                line += value + std::string(values - value.size() + 2, ' ');
                std::string rest;
                if (!item.bytes.empty()) {
                    const std::string source = SourceText(item.source);
                    rest = source + std::string(sources - source.size(), ' ') +
                           Age(item.source, names + values + sources + 6);
                }
                if (item.refused) {
                    if (!rest.empty())
                        rest += "  ";
                    rest += terminal.Styled(
                        Style::Failure, std::string(item.refused->way == Way::Wrote ? "write" : "read") +
                                            " refused #" + NumberText(*item.refused));
                }
                while (!rest.empty() && rest.back() == ' ')
                    rest.pop_back();
                text += line + rest + "\n";
            }
            return text;
        }

        static std::string Value(const KnownRegister& item)
        {
            return item.bytes.empty() ? "?" : "0x" + HexDigits(Significant(item.bytes, item.bits));
        }

        std::string MemoryText(const KnownMemory& place) const
        {
            const std::string itsPlace = PlaceText(place.spaceName, place.address);
            std::string about = "  " + std::to_string(place.size) +
                                (place.size == 1 ? " byte, " : " bytes, ") + SourceText(place.source);
            if (const auto block = known.BlockAt(place.space, place.address))
                about += ", in " + Printable(block->name);
            std::string text = "  " + terminal.Styled(Style::Name, itsPlace) + about +
                               Age(place.source, 2 + Columns(itsPlace + about)) + "\n";
            std::size_t lines = 0;
            for (std::size_t from = 0; from < place.bytes.size(); from += bytesInALine) {
                if (++lines > mostLinesOfAPlace) {
                    text += "    ... " + std::to_string(place.bytes.size() - from) + " more\n";
                    break;
                }
                const std::string_view row = std::string_view(place.bytes).substr(from, bytesInALine);
                std::string digits = BytesText(row, {}, terminal);
                digits.resize(bytesInALine * 3, ' ');
                std::string letters;
                for (const char byte : row)
                    letters += byte >= ' ' && byte < 0x7f ? byte : '.';
                text.append("    ").append(digits).append(" ").append(letters).append("\n");
            }
            return text;
        }

        std::string Next(const std::vector<KnownRegister>& registers,
                         const std::vector<KnownMemory>& memory) const
        {
            std::string text = "next: scrivel ";
            if (!registers.empty())
                text += "history " +
                        ShellWord(RegisterName(registers.front().name, registers.front().number, 0)) +
                        " ";
            else if (!memory.empty())
                text += "history " + ShortHex(memory.front().address) + " ";
            else
                text += "calls ";
            text += ShellWord(path);
            if (at)
                text += ", scrivel show " + number + " " + ShellWord(path);
            return terminal.Styled(Style::Quiet, text) + "\n";
        }

        const std::optional<CallNumber>& at;
        const CallFilter& chosen;
        Terminal& terminal;
        const std::string& path;
        Knowledge known;
        bool reached = false;
        bool isDamaged = false;
        std::uint64_t reachedBy = 0;
        std::string number;
        std::string name;
    };

    std::string asked;
};

}  // namespace

std::unique_ptr<Action> MakeState(Options& options)
{
    return std::make_unique<State>(options);
}

}  // namespace ScrivelTool
