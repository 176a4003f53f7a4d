// scrivel show: one call whole. Tested by tests/tool/ShowTest.cpp.

#include <algorithm>
#include <cerrno>
#include <deque>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <unistd.h>
#include <vector>

#include "CallLine.h"
#include "CallNumber.h"
#include "CallTree.h"
#include "Command.h"
#include "Json.h"
#include "LogArguments.h"
#include "Options.h"
#include "scrivel/LogFile.h"

namespace ScrivelTool
{

using namespace ScrivelReader;

namespace
{

// How much of the log on either side of the call is read for the call that it was made in and for those
// that name the same registers and addresses: what takes a millisecond.
constexpr std::uint64_t neighbourhood = 96 * 1024;

constexpr std::size_t mostNumbers = 10;      // of calls that name a place
constexpr std::size_t mostKept = 16 * 1024;  // places, such as each address of a log

/// The calls that name a place.
struct Naming
{
    std::vector<std::uint64_t> numbers;  ///< the lowest ones
    std::uint64_t calls = 0;
};

/// Finds the calls with one number, and where around them the places occur that they name.
class Finder final : public LogHandler
{
public:
    explicit Finder(std::uint64_t itsNumber) : number(itsNumber) {}

    void Ended(Call& call) override
    {
        if (call.number == number)
            calls.push_back(std::move(call));
        else
            Remember(call);
    }
    void Entered(const Call& call) override
    {
        if (call.number == number) {
            entered = true;
            name = call.name;
        }
    }
    void TakenBack(const Call& call) override
    {
        if (call.number == number)
            entered = false;
    }

    bool Entered() const { return entered; }
    bool Ended() const { return !calls.empty(); }
    const std::string& Name() const { return name; }
    const std::vector<Call>& Calls() const { return calls; }

    /// Calls of other numbers that name a place.
    Naming Others(const std::string& place) const
    {
        const auto found = named.find(place);
        return found == named.end() ? Naming() : found->second;
    }
    /// There was no room for every place.
    bool IsIncomplete() const { return incomplete; }

private:
    void Remember(const Call& call)
    {
        constexpr std::size_t mostPlaces = 16;  // of a call: more are a description, not a use
        std::set<std::string> all;
        for (const Tree* tree : {&call.arguments, &call.results})
            if (const std::vector<std::string> places = Places(*tree); places.size() <= mostPlaces)
                all.insert(places.begin(), places.end());
        for (const std::string& place : all)
            if (named.size() < mostKept || named.count(place) != 0)
                Add(call.number, named[place]);
            else
                incomplete = true;
    }

    static void Add(std::uint64_t call, Naming& naming)
    {
        ++naming.calls;
        std::vector<std::uint64_t>& numbers = naming.numbers;
        numbers.insert(std::upper_bound(numbers.begin(), numbers.end(), call), call);
        numbers.resize(std::min(numbers.size(), mostNumbers));
    }

    std::uint64_t number;
    bool entered = false;
    std::string name;
    std::vector<Call> calls;
    std::map<std::string, Naming> named;
    bool incomplete = false;
};

std::size_t ReadAt(int descriptor, std::uint64_t offset, char* buffer, std::size_t size)
{
    ssize_t got = 0;
    do
        got = pread(descriptor, buffer, size, off_t(offset));
    while (got < 0 && errno == EINTR);
    return got < 0 ? 0 : std::size_t(got);
}

/// Whether the file goes on with the call: an element of its name and number from an offset on.
bool GoesOn(int descriptor, std::uint64_t offset, const std::string& name, std::uint64_t number)
{
    const std::string begin = "<" + name + " call_num=\"" + std::to_string(number) + "\"";
    std::string bytes;
    std::vector<char> buffer(256 * 1024);
    while (const std::size_t got = ReadAt(descriptor, offset, buffer.data(), buffer.size())) {
        bytes.append(buffer.data(), got);
        if (bytes.find(begin) != std::string::npos)
            return true;
        bytes.erase(0, bytes.size() - std::min(bytes.size(), begin.size()));
        offset += got;
    }
    return false;
}

class Show final : public ReadingAction
{
public:
    explicit Show(Options& options)
    {
        options.Argument("N", text, "the call's number; 68#2 is the second call with the number 68");
        logs.AddTo(options);
        logs.AddJsonTo(options);
        options.Flag("--xml", xml, "its elements as they stand in the log");
        options.Exclude("--xml", "--json");
        options.Flag("--scan", scan, "read the whole log: for line, thread, and every call it is within");
        filter.AddTo(options);
    }

    Exit Read(CallFilter chosen, Terminal& terminal) override
    {
        const auto asked = ParseCallNumber(text, terminal);
        if (!asked)
            return Exit::Trouble;
        bool trouble = false;
        bool found = false;
        bool leftOut = false;
        for (const std::string& path : logs.Logs(terminal, trouble)) {
            std::string error;
            const auto input = OpenLogAnywhere(path, error);
            if (input == nullptr) {
                terminal.Error(path, {}, error);
                trouble = true;
                continue;
            }
            const int descriptor = *input->Descriptor();
            const std::uint64_t size = input->Size().value_or(0);
            Finder finder(asked->number);
            // How many calls of its number came before it, only the whole log can tell; and a filter
            // which thread it is and what it is within.
            const bool within = !scan && !asked->occurrence && chosen.MatchesAll() &&
                                FindNear(descriptor, size, asked->number, finder);
            std::optional<Finder> second;
            if (!within) {
                // Not laid out as the writer does it, or not there: only the whole log can tell.
                second.emplace(asked->number);
                const auto end = ReadLog(*input, path, *second, {}, terminal);
                trouble = trouble || !end;
            }
            const Finder& used = within ? finder : *second;
            const bool isPart = within && size > neighbourhood;
            for (const Call& call : used.Calls()) {
                if (!asked->IsOf(call))
                    continue;
                if (!chosen.Matches(call)) {
                    leftOut = true;
                    continue;
                }
                found = true;
                if (xml)
                    PrintXml(descriptor, call, terminal);
                else if (logs.Json())
                    PrintJson(call, path, isPart, terminal);
                else
                    Print(call, path, used, isPart, terminal);
            }
        }
        if (!found && !trouble)
            terminal.Error("there is no call " + text + (leftOut ? " that the filter leaves" : ""));
        return trouble ? Exit::Trouble : found ? Exit::Found : Exit::Nothing;
    }

private:
    /// Reads the call and what surrounds it, without reading the log. False when the call isn't there.
    static bool FindNear(int descriptor, std::uint64_t size, std::uint64_t number, Finder& finder)
    {
        const auto place = FindCall(descriptor, size, number);
        if (!place)
            return false;
        ReadOptions options;
        options.offset = *place - std::min(*place, neighbourhood);
        options.startWithin = options.offset != 0;
        LogReader reader(finder, options);
        std::vector<char> buffer(16 * 1024);
        std::uint64_t at = options.offset;
        bool goesOn = true;
        std::uint64_t end = *place + neighbourhood;
        while (at < end || (goesOn && finder.Entered() && !finder.Ended())) {
            if (at >= end && end == *place + neighbourhood) {
                goesOn = GoesOn(descriptor, at, finder.Name(), number);
                end += 1;
                continue;
            }
            const std::size_t got = ReadAt(descriptor, at, buffer.data(), buffer.size());
            if (got == 0)
                break;
            reader.Feed({buffer.data(), got});
            at += got;
            if (at > *place + buffer.size() && !finder.Entered())
                return false;
        }
        reader.Finish();
        return finder.Ended();
    }

    void PrintXml(int descriptor, const Call& call, Terminal& terminal) const
    {
        std::vector<char> buffer(64 * 1024);
        for (const Part& part : call.parts) {
            terminal.Print("    ");
            for (std::uint64_t at = part.begin; at < part.end;) {
                const std::size_t got = ReadAt(descriptor, at, buffer.data(),
                                               std::min<std::uint64_t>(buffer.size(), part.end - at));
                if (got == 0)
                    break;
                terminal.Print({buffer.data(), got});
                at += got;
            }
            terminal.Print("\n");
        }
    }

    static void PrintJson(const Call& call, const std::string& path, bool isPart, Terminal& terminal)
    {
        Json head = HeadOf(call);
        Json more = {{"log", path}};
        if (isPart) {
            // Null would say that it was made in no call, which the calls around it don't tell.
            if (!call.Parent()) {
                head.erase("parent");
            }
            more["scanned"] = false;
        }
        terminal.Print(JsonLine(head, call, more));
    }

    static void Print(const Call& call, const std::string& path, const Finder& finder, bool isPart,
                      Terminal& terminal)
    {
        const bool isBad = call.Failed() || !call.Returned();
        std::string text =
            "call " + NumberText(call) + "  " + terminal.Styled(Style::Name, Printable(call.name));
        if (const std::string status = StatusText(call); !status.empty())
            text += "  " + terminal.Styled(isBad ? Style::Failure : Style::Plain, status);
        text += "\n  entered   " + TimeText(call.callTime);
        if (call.Returned())
            text += "\n  returned  " + TimeText(call.returnTime);
        if (const std::string took = DurationText(call.Took()); !took.empty())
            text += " after " + took;
        if (call.clockSetBack)
            text += "\n  clock     was set back meanwhile";
        if (call.threadId)
            text += "\n  thread    " + (isPart ? "" : "T" + std::to_string(call.thread) + ", ") +
                    std::to_string(*call.threadId);
        if (const auto parent = call.Parent())
            text += "\n  within    call " + std::to_string(*parent);
        if (!call.disassemblerAddress.empty())
            text += "\n  address   " + Printable(call.disassemblerAddress);
        for (std::size_t i = 0; i < call.parts.size(); ++i) {
            const Part& part = call.parts[i];
            text += i == 0 ? "\n  log       " : "\n  goes on   ";
            text += Printable(path) + (isPart ? "" : ":" + std::to_string(part.line)) + ", bytes " +
                    std::to_string(part.begin) + " to " + std::to_string(part.end);
        }
        if (call.beginningLost)
            text += terminal.Styled(Style::Damage, "\n  its beginning is lost");
        text += "\n";
        if (!call.before.Empty())
            text += "before it\n" + TreeText(call.before, terminal);
        if (!call.arguments.Empty())
            text += "arguments\n" + TreeText(call.arguments, terminal);
        if (!call.results.Empty())
            text += "results\n" + TreeText(call.results, terminal);
        text += Elsewhere(call, finder, isPart);
        if (isPart) {
            text +=
                terminal.Styled(Style::Quiet, "the calls around it were read; --scan reads the whole log "
                                              "for line, thread, parent and other calls of its number") +
                "\n";
        }
        terminal.Print(text);
    }

    static std::string Elsewhere(const Call& call, const Finder& finder, bool isPart)
    {
        std::vector<std::string> places = Places(call.arguments);
        const std::vector<std::string> more = Places(call.results);
        places.insert(places.end(), more.begin(), more.end());
        std::string text;
        std::set<std::string> told;
        constexpr std::size_t mostPlaces = 8;
        for (const std::string& place : places) {
            if (told.size() == mostPlaces || !told.insert(place).second)
                continue;
            const Naming others = finder.Others(place);
            if (others.calls == 0)
                continue;
            text += "  " + Printable(place) + " ";
            for (const std::uint64_t number : others.numbers)
                text += " #" + std::to_string(number);
            if (others.calls > others.numbers.size())
                text += " and " + std::to_string(others.calls - others.numbers.size()) + " more";
            text += "\n";
        }
        if (text.empty())
            return "";
        const char* const where = isPart                  ? " the calls around it"
                                  : finder.IsIncomplete() ? ", as far as there was room"
                                                          : "";
        return std::string("also in") + where + "\n" + text;
    }

    std::string text;
    bool xml = false;
    bool scan = false;
};

}  // namespace

std::unique_ptr<Action> MakeShow(Options& options)
{
    return std::make_unique<Show>(options);
}

}  // namespace ScrivelTool
