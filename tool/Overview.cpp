// What one log says as a whole. Tested by tests/tool/SummaryTest.cpp and GoldenTest.cpp.

#include "Overview.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <functional>
#include <iterator>
#include <sys/stat.h>
#include <utility>

#include "CallLine.h"
#include "KnownText.h"
#include "scrivel/LogEnding.h"

namespace ScrivelTool
{

using namespace ScrivelReader;

namespace
{

constexpr std::size_t mostRemembered = 64;  // calls that have returned
constexpr std::size_t mostNumbers = 10;
constexpr std::size_t mostOpenKept = 256;

std::string SizeText(std::uint64_t bytes)
{
    constexpr const char* units[] = {"bytes", "KB", "MB", "GB"};
    double value = double(bytes);
    std::size_t unit = 0;
    for (; value >= 999.5 && unit + 1 < std::size(units); ++unit)
        value /= 1000;
    char text[64];
    std::snprintf(text, sizeof text, unit != 0 && value < 9.95 ? "%.1f %s" : "%.0f %s", value,
                  units[unit]);
    return text;
}

std::optional<std::int64_t> SinceChange(int descriptor)
{
    struct stat file
    {
    };
    if (fstat(descriptor, &file) != 0)
        return {};
    constexpr std::int64_t second = 1000 * 1000 * 1000;
    const std::int64_t now = std::chrono::duration_cast<std::chrono::nanoseconds>(
                                 std::chrono::system_clock::now().time_since_epoch())
                                 .count();
    return std::max<std::int64_t>(0, now - file.st_mtim.tv_sec * second - file.st_mtim.tv_nsec);
}

std::string ProcessText(const Overview& log)
{
    return log.header.processId ? "process " + std::to_string(*log.header.processId) : "its process";
}

}  // namespace

// ---- Reading ------------------------------------------------------------------------------------

void Overview::Entered(const Call& call)
{
    ++entered;
    hasThreads = hasThreads || call.threadId.has_value();
    threads = std::max(threads, call.thread);
    Passed(call.callTime);
    known.Entered(call);
    before.emplace(call.entry, LastBefore(call.entry));
}

void Overview::TakenBack(const Call& call)
{
    --entered;
    before.erase(call.entry);
}

void Overview::Ended(Call& call, const Access& access)
{
    if (!call.parts.empty())
        contentEnd = std::max(contentEnd, call.parts.back().end);
    Passed(call.returnTime);
    if (call.Returned())
        known.Ended(call, access);
    const auto entry = before.find(call.entry);
    const LastOnes itsBefore = entry == before.end() ? LastOnes() : std::move(entry->second);
    before.erase(call.entry);
    if (!chosen.Matches(call))
        return;
    ++calls;
    if (call.Failed()) {
        ++failed;
        if (failures.size() < mostNumbers)
            failures.push_back(NumberText(call));
    }
    if (!call.Returned()) {
        KeepOpen(call, itsBefore);
        return;
    }
    last = std::make_shared<const Call>(std::move(call));
    recent.emplace(last->entry, last);
    if (recent.size() > mostRemembered)
        recent.erase(recent.begin());
}

void Overview::Damaged(const Damage& damage)
{
    if (!firstDamage)
        firstDamage = damage;
}

void Overview::Finish(const LogEnd& itsEnd, const LogInput& input)
{
    end = itsEnd;
    if (const auto descriptor = input.Descriptor()) {
        writer = FindWriter(header, *descriptor);
        sinceLastTime = SinceChange(*descriptor);
    }
}

std::vector<const Call*> Overview::Innermost() const
{
    std::vector<const Call*> found;
    for (const auto& [thread, its] : innermost)
        found.push_back(&its.call);
    std::sort(found.begin(), found.end(),
              [](const Call* a, const Call* b) { return a->entry > b->entry; });
    return found;
}

Overview::LastOnes Overview::LastBefore(std::uint64_t entry) const
{
    LastOnes found;
    auto at = recent.lower_bound(entry);
    for (Kept& one : found)
        if (at != recent.begin())
            one = (--at)->second;
    return found;
}

std::vector<const Call*> Overview::Before(const Call& call) const
{
    // Those that had returned by then may be forgotten, others have returned since.
    std::map<std::uint64_t, const Call*, std::greater<>> found;
    const auto add = [&](const LastOnes& some) {
        for (const Kept& one : some)
            if (one != nullptr)
                found.emplace(one->entry, one.get());
    };
    add(LastBefore(call.entry));
    if (const auto its = innermost.find(call.thread); its != innermost.end())
        add(its->second.before);
    std::vector<const Call*> latest;
    for (const auto& [entry, one] : found)
        if (latest.size() < LastOnes().size())
            latest.push_back(one);
    return latest;
}

std::string Overview::OpenName(std::uint64_t number) const
{
    const auto name = openNames.find(number);
    return "#" + std::to_string(number) + (name == openNames.end() ? "" : " " + Printable(name->second));
}

bool Overview::WasEnded() const
{
    return EndingOf(end, contentEnd).ended;
}

std::string Overview::ContinuedIn() const
{
    return EndingOf(end, contentEnd).continuedIn;
}

void Overview::Passed(const std::optional<Time>& time)
{
    if (time && !time->wrapped && (!lastTime || lastTime->nanoseconds < time->nanoseconds))
        lastTime = time;
}

void Overview::KeepOpen(Call& call, const LastOnes& itsBefore)
{
    ++open;
    if (openNames.size() < mostOpenKept)
        openNames.emplace(call.number, call.name);
    const auto found = innermost.find(call.thread);
    if (found == innermost.end() || found->second.call.entry < call.entry)
        innermost.insert_or_assign(call.thread, Open{std::move(call), itsBefore});
}

// ---- Words --------------------------------------------------------------------------------------

Verdict VerdictOf(const Overview& log, const Call& call)
{
    const std::string name = "CALL " + NumberText(call);
    const std::string never = name + " NEVER RETURNED";
    if (log.WasEnded())
        return {never + "; the log was ended before it did", "never returned", "never returned"};
    if (!log.end.whole)
        return {name + " HAD NOT RETURNED where the log is damaged or ends",
                "had not returned where the log is damaged or ends", "open where damaged"};
    switch (log.writer) {
    case Writer::HasLogOpen: {
        std::string time = " RUNNING";
        std::string word = "running";
        if (log.sinceLastTime && log.lastTime && call.callTime && !call.callTime->wrapped &&
            !call.clockSetBack) {
            const std::string took =
                DurationText(*log.sinceLastTime + log.lastTime->nanoseconds - call.callTime->nanoseconds);
            time += " FOR " + took;
            word += " for " + took;
        }
        return {name + time + " in " + ProcessText(log) + ", which has the log open", word, word, true};
    }
    case Writer::Gone:
        return {never + ", and " + ProcessText(log) + " is gone", "never returned", "never returned"};
    case Writer::HasItNot:
        return {never + "; a " + ProcessText(log) + " lives, but has not this log open", "never returned",
                "never returned"};
    case Writer::Unseen:
        return {name + " HAD NOT RETURNED; " + ProcessText(log) + " lives, its files can't be seen",
                "had not returned when the log ended", "open at the end"};
    case Writer::Elsewhere:
        break;
    }
    return {name + " HAD NOT RETURNED when the log ended", "had not returned when the log ended",
            "open at the end"};
}

std::string EndText(const Overview& log)
{
    if (log.IsFiltered())
        return "every call that the filter leaves returned";
    if (const std::string file = log.ContinuedIn(); !file.empty())
        return "the log goes on in " + Printable(file);
    if (log.WasEnded())
        return log.entered == 0 ? "the log was ended; it has no call"
                                : "every call returned, and the log was ended";
    const std::string all = log.entered == 0 ? "the log has no call" : "every call returned";
    if (log.writer == Writer::HasLogOpen)
        return all + "; " + ProcessText(log) + " has the log open";
    if (!log.end.whole)
        return all + " as far as the log can be read";
    return all + "; a clean end and a kill after the last one look the same";
}

std::string DamageText(const Overview& log)
{
    if (!log.firstDamage)
        return "not whole";
    std::string text = "damaged at line " + std::to_string(log.firstDamage->line) + " (byte " +
                       std::to_string(log.firstDamage->offset) + ")";
    if (log.end.damages > 1)
        text += " and in " + CountText(log.end.damages - 1, "more place");
    return text;
}

std::string KindText(const Overview& log)
{
    return log.entered == 0 ? "log" : log.hasThreads ? "run log" : "connection log";
}

std::vector<std::string> Facts(const Overview& log)
{
    std::vector<std::string> facts = {KindText(log)};
    if (log.header.processId)
        facts.back() += " of process " + std::to_string(*log.header.processId);
    if (!log.header.hostName.empty())
        facts.back() += " on " + Printable(log.header.hostName);
    if (!log.header.time.empty())
        facts.push_back(Printable(log.header.time));
    facts.push_back(SizeText(log.end.size));
    facts.emplace_back(log.end.whole ? "whole" : DamageText(log));
    return facts;
}

std::string ShortCall(const Call& call)
{
    std::string text = Printable(call.name);
    if (const std::string arguments = ElementsText(call.arguments, false); !arguments.empty())
        text += "(" + arguments + ")";
    if (const std::string results = ElementsText(call.results, true); !results.empty())
        text += " -> " + results;
    if (call.Failed())
        text += " " + StatusText(call);
    return text;
}

std::string AboutMemory(const Knowledge& known, const MemoryAccess& memory)
{
    std::string text = ShortHex(memory.address);
    if (const auto block = known.BlockAt(memory.space, memory.address)) {
        text += " is in block " + Printable(block->name);
        if (!block->description.empty())
            text += " \"" + Printable(block->description) + "\"";
        text += " (#" + std::to_string(block->call) + ")";
        if (memory.size > 1 && memory.size - 1 > block->last - memory.address)
            text += ", and the access goes past its end";
    } else {
        text += " is in no block that the target had described";
    }
    const auto touched = known.Touched(memory.space, memory.address, memory.size);
    if (touched.empty())
        return text + (known.IsIncomplete() ? "; no access to it is remembered" : "; first access to it");
    const auto last = std::max_element(touched.begin(), touched.end(), [](const auto& a, const auto& b) {
        return a.source.order < b.source.order;
    });
    return text + "; last touched by #" + NumberText(last->source) +
           (last->source.way == Way::Read ? " (read" : " (wrote") +
           (last->source.succeeded ? ")" : ", failed)");
}

std::string AboutRegister(const Knowledge& known, const RegisterAccess& touched)
{
    const auto found = known.Find(touched);
    std::string text =
        RegisterName(found ? found->name : touched.name, touched.number, touched.offset128);
    if (!found || (found->bytes.empty() && !found->refused))
        return text + ": first access to it";
    return KnownItem(known, *found);
}

std::string KnownItem(const Knowledge& known, const KnownRegister& item)
{
    std::string text = RegisterName(item);
    if (!item.bytes.empty()) {
        text += " " + ValueText(item.bytes) + " (#" + NumberText(item.source);
        if (item.source.whileRunning)
            text += ", target was running";
        else if (known.IsStale(item.source))
            text += ", target ran since";
        text += ")";
    }
    if (item.refused)
        text += std::string(item.bytes.empty() ? "" : ",") +
                (item.refused->way == Way::Wrote ? " write" : " read") + " refused (#" +
                NumberText(*item.refused) + ")";
    return text;
}

}  // namespace ScrivelTool
