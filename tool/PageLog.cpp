// What the page shows of one log. Tested by tests/tool/ViewTest.cpp and, in a browser, by tests/page.

#include "PageLog.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <limits>
#include <memory>

#include "CallLine.h"
#include "Json.h"
#include "KnownText.h"

namespace ScrivelTool
{

using namespace ScrivelReader;

namespace
{

constexpr std::size_t mostNames = 4096;
constexpr std::size_t mostNotes = 10 * 1000;
constexpr std::size_t mostNoteText = 4096;
constexpr std::size_t mostStretches = 2048;
constexpr std::size_t mostDurations = 4096;  // of one name

/// JSON inside an HTML element: nothing in it begins a tag or a comment.
std::string InHtml(const Json& value)
{
    std::string text = value.dump(-1, ' ', false, Json::error_handler_t::replace);
    for (std::size_t at = text.find('<'); at != std::string::npos; at = text.find('<', at))
        text.replace(at, 1, "\\u003c");
    return text;
}

/// Microseconds, as the log has them.
Json Microseconds(std::int64_t nanoseconds)
{
    constexpr std::int64_t microsecond = 1000;
    if (nanoseconds % microsecond == 0)
        return nanoseconds / microsecond;
    return double(nanoseconds) / double(microsecond);
}

/// Five columns a decade: [1, 1.6), [1.6, 2.5) ... microseconds are 0, 1 ...; less is -1.
int BinOf(std::int64_t nanoseconds)
{
    constexpr double perDecade = 5;
    constexpr double microsecond = 1000;
    if (double(nanoseconds) < microsecond)
        return -1;
    return int(std::floor(std::log10(double(nanoseconds) / microsecond) * perDecade + 1e-9));
}

/// JavaScript's numbers are exact up to here; beyond, one is written as a text.
constexpr std::uint64_t mostExact = std::uint64_t(1) << 53;

Json Number(std::uint64_t number)
{
    return number <= mostExact ? Json(number) : Json(std::to_string(number));
}

template <typename Items, typename Get>
Json Column(const Items& items, Get get)
{
    Json column = Json::array();
    for (const auto& item : items)
        column.push_back(get(item));
    return column;
}

/// Numbers that rise, as the steps between them.
template <typename Items, typename Get>
Json Steps(const Items& items, Get get)
{
    std::uint64_t last = 0;
    return Column(items, [&](const auto& item) {
        const std::uint64_t now = get(item);
        const auto step = std::int64_t(now - last);
        last = now;
        return step;
    });
}

}  // namespace

/// A list of texts, each once.
class PageLog::Words
{
public:
    std::size_t Number(std::string_view word)
    {
        const auto found = numbers.find(std::string(word));
        if (found != numbers.end())
            return found->second;
        words.emplace_back(word);
        return numbers.emplace(words.back(), words.size() - 1).first->second;
    }
    const std::vector<std::string>& All() const { return words; }

private:
    std::vector<std::string> words;
    std::unordered_map<std::string, std::size_t> numbers;
};

PageLog::PageLog(std::string itsPath, const CallFilter& itsFilter, std::optional<std::uint64_t> itsAround,
                 const PageLimits& itsLimits)
    : path(std::move(itsPath)), around(itsAround), limits(itsLimits), chosen(itsFilter),
      overview(itsFilter), elements(std::make_unique<Words>())
{
}

PageLog::~PageLog() = default;

// ---- Reading ----------------------------------------------------------------------------------------

void PageLog::Entered(const Call& call)
{
    entered = call.entry + 1;
    begun[call.entry] = {forgotten + touches.size(), overview.known.Runs()};
    if (call.thread > threads.size())
        threads.push_back(call.threadId ? std::to_string(*call.threadId) : "");
    overview.Entered(call);
}

void PageLog::TakenBack(const Call& call)
{
    begun.erase(call.entry);
    overview.TakenBack(call);
}

void PageLog::Ended(Call& call)
{
    Begun its{forgotten + touches.size(), overview.known.Runs()};
    if (const auto found = begun.find(call.entry); found != begun.end()) {
        its = found->second;
        begun.erase(found);
    }
    if (chosen.Matches(call)) {
        Count(call);
        Keep(call, its);
    }
    const Access access = overview.known.AccessBy(call);
    Call mine;
    mine.number = call.number;
    mine.entry = call.entry;
    mine.status = call.status;
    mine.returnTime = call.returnTime;
    overview.Ended(call, access);
    KeepAccess(mine, access);
    if (rows.size() > limits.calls || detailsBytes > limits.details)
        LeaveOut();
}

void PageLog::Comment(std::string_view text, const Part&)
{
    if (comments.size() < mostNotes)
        comments.push_back({entered, std::string(text.substr(0, mostNoteText))});
}

void PageLog::Damaged(const Damage& damage)
{
    overview.Damaged(damage);
    if (damages.size() < mostNotes)
        damages.push_back({entered, "line " + std::to_string(damage.line) + ": " + damage.what});
}

void PageLog::Finish(const LogEnd& end, const LogInput& input)
{
    overview.Finish(end, input);
    if (leftOut)
        LeaveOut();
    std::sort(rows.begin(), rows.end(), [](const Row& a, const Row& b) { return a.entry < b.entry; });
}

/// What is told of all calls.
void PageLog::Count(const Call& call)
{
    const auto took = call.Took();
    const bool isNew = names.size() < mostNames || names.find(call.name) != names.end();
    Name& name = names[isNew ? call.name : ""];
    ++name.calls;
    name.failed += call.Failed() ? 1u : 0u;
    name.open += call.Returned() ? 0u : 1u;
    if (took) {
        name.took.Add(*took);
        ++name.bins[BinOf(*took)];
        if (name.took.Kept() > mostDurations)
            name.took.Coarsen();

        slowest.push_back(*took);
        std::push_heap(slowest.begin(), slowest.end(), std::greater<>());
        if (slowest.size() > limits.slow) {
            std::pop_heap(slowest.begin(), slowest.end(), std::greater<>());
            slowest.pop_back();
        }
    }

    while (call.entry / perStretch >= mostStretches) {
        for (std::size_t i = 0; i < stretches.size(); i += 2) {
            Stretch both = stretches[i];
            if (i + 1 < stretches.size()) {
                const Stretch& next = stretches[i + 1];
                both = {both.calls + next.calls, both.failed + next.failed, both.open + next.open,
                        std::max(both.longest, next.longest)};
            }
            stretches[i / 2] = both;
        }
        stretches.resize((stretches.size() + 1) / 2);
        perStretch *= 2;
    }
    const auto number = std::size_t(call.entry / perStretch);
    if (number >= stretches.size())
        stretches.resize(number + 1);
    Stretch& stretch = stretches[number];
    ++stretch.calls;
    stretch.failed += call.Failed() ? 1u : 0u;
    stretch.open += call.Returned() ? 0u : 1u;
    stretch.longest = std::max(stretch.longest, took.value_or(0));
}

void PageLog::Keep(const Call& call, const Begun& its)
{
    Row row;
    row.entry = call.entry;
    row.number = call.number;
    row.occurrence = call.occurrence;
    row.name = call.name;
    row.thread = call.thread;
    row.parent = call.Parent();
    row.depth = call.ancestors.size();
    row.entered = call.callTime;
    row.returned = call.returnTime;
    row.status = call.status;
    row.failed = call.Failed();
    row.clockSetBack = call.clockSetBack;
    row.took = call.Took();
    row.span = std::max(entered, call.entry + 1) - call.entry;
    row.begun = its;
    row.details = Details(call);
    detailsBytes += row.details.size();
    rows.push_back(std::move(row));
}

// ---- Leaving out ------------------------------------------------------------------------------------

bool PageLog::IsNear(const Row& row) const
{
    if (around) {
        const std::uint64_t distance = row.number < *around ? *around - row.number : row.number - *around;
        return distance <= limits.window / 2;
    }
    return entered - row.entry <= limits.window;
}

void PageLog::LeaveOut()
{
    leftOut = true;
    const std::int64_t fast =
        slowest.size() < limits.slow ? std::numeric_limits<std::int64_t>::min() : slowest.front();
    const auto leaveOut = [&](const auto& isKept) {
        rows.erase(std::remove_if(rows.begin(), rows.end(),
                                  [&](const Row& row) {
                                      if (isKept(row))
                                          return false;
                                      detailsBytes -= row.details.size();
                                      return true;
                                  }),
                   rows.end());
    };
    leaveOut([&](const Row& row) {
        return row.failed || !row.returned || (row.took && *row.took > fast) || IsNear(row);
    });
    // A log of nothing but failures: the last ones are kept.
    constexpr std::size_t room = 4;
    while (rows.size() > limits.calls - limits.calls / room ||
           (detailsBytes > limits.details - limits.details / room && rows.size() > 1)) {
        leftOutFailed = true;
        std::vector<std::uint64_t> entries;
        for (const Row& row : rows)
            entries.push_back(row.entry);
        const auto middle = entries.begin() + std::ptrdiff_t(entries.size() / 2);
        std::nth_element(entries.begin(), middle, entries.end());
        const std::uint64_t from = *middle;
        leaveOut([&](const Row& row) { return row.entry >= from; });
    }
}

// ---- What a call holds ------------------------------------------------------------------------------

namespace
{

/// [name, "text"], [name, [elements]], [name, "digits", count] for bytes; a text that was cut has -1.
template <typename Words>
Json TreeJson(Tree::Elements tree, Words& words)
{
    Json list = Json::array();
    for (Tree::Element element : tree) {
        Json item = Json::array({words.Number(element.Name())});
        switch (element.What()) {
        case Tree::Kind::Text:
            item.push_back(element.Text());
            if (element.IsCut())
                item.push_back(-1);
            break;
        case Tree::Kind::Bytes:
            item.push_back(HexDigits(element.Text()));
            item.push_back(element.Count());
            break;
        case Tree::Kind::Elements:
            item.push_back(TreeJson(element.Children(), words));
            if (element.IsCut())
                item.push_back(element.Count());
            break;
        }
        list.push_back(std::move(item));
    }
    return list;
}

}  // namespace

std::string PageLog::Details(const Call& call)
{
    Json places = Json::array();
    for (const Part& part : call.parts) {
        places.push_back(part.begin);
        places.push_back(part.end);
        places.push_back(part.line);
    }
    Json line = Json::array({ElementsText(call.arguments, false), ElementsText(call.results, true),
                             TreeJson(call.arguments.Top(), *elements),
                             TreeJson(call.results.Top(), *elements), std::move(places)});
    if (!call.before.Empty() || !call.disassemblerAddress.empty() || call.beginningLost)
        line.push_back({{"before", TreeJson(call.before.Top(), *elements)},
                        {"address", call.disassemblerAddress},
                        {"lost", call.beginningLost}});
    return InHtml(line);
}

// ---- What it did to the target ----------------------------------------------------------------------

void PageLog::KeepAccess(const Call& call, const Access& access)
{
    const Knowledge& known = overview.known;
    Touch touch;
    touch.entry = call.entry;
    touch.number = call.number;
    touch.outcome = !call.Returned() ? Outcome::Open : Succeeded(call) ? Outcome::Done : Outcome::Refused;
    touch.runs = known.Runs();
    touch.whileRunning = known.IsRunning();
    for (const RegisterAccess& found : access.registers) {
        if (!found.number)
            continue;
        const auto [number, isNew] =
            registerNumbers.try_emplace({*found.number, found.offset128}, registers.size());
        if (isNew) {
            registers.push_back(found);
            registers.back().bytes.clear();
        }
        if (!found.name.empty())
            registers[number->second].name = found.name;
        Touch its = touch;
        its.isRegister = true;
        its.place = number->second;
        its.way = found.way;
        its.bytes = found.bytes;
        Keep(std::move(its));
    }
    for (const MemoryAccess& found : access.memory) {
        Touch its = touch;
        its.place = spaceNumbers.try_emplace(found.space, spaceNumbers.size()).first->second;
        its.way = found.way;
        its.address = found.address;
        its.size = found.size;
        its.bytes = found.bytes;
        Keep(std::move(its));
    }
}

void PageLog::Keep(Touch&& touch)
{
    touchedBytes += touch.bytes.size();
    touches.push_back(std::move(touch));
    while (touches.size() > limits.accesses || touchedBytes > limits.accessBytes) {
        touchedBytes -= touches.front().bytes.size();
        touches.pop_front();
        ++forgotten;
    }
}

// ---- Writing ----------------------------------------------------------------------------------------

bool PageLog::WriteData(const Write& write) const
{
    const Knowledge& known = overview.known;
    Json data = {
        {"log", path},
        {"file", ShellWord(path)},
        {"facts", Facts(overview)},
        {"kind", KindText(overview)},
        {"name", overview.header.root},
        {"time", overview.header.time},
        {"whole", overview.end.whole},
        {"end", EndText(overview)},
        {"calls", overview.calls},
        {"entered", overview.entered},
        {"failed", overview.failed},
        {"open", overview.open},
        {"last", overview.lastTime ? Microseconds(overview.lastTime->nanoseconds) : Json()},
    };
    if (!overview.end.whole)
        data["damage"] = DamageText(overview);

    // ---- What it ended in ----
    const std::vector<const Call*> open = overview.Innermost();
    data["ending"] = Json::array();
    for (const Call* call : open) {
        const Verdict verdict = VerdictOf(overview, *call);
        const Access access = known.AccessBy(*call);
        Json about = Json::array();
        for (const MemoryAccess& memory : access.memory)
            about.push_back(AboutMemory(known, memory));
        for (const RegisterAccess& touched : access.registers)
            about.push_back(AboutRegister(known, touched));
        Json within = Json::array();
        for (auto number = call->ancestors.rbegin(); number != call->ancestors.rend(); ++number)
            within.push_back(overview.OpenName(*number));
        data["ending"].push_back({{"entry", call->entry},
                                  {"number", NumberText(*call)},
                                  {"heading", verdict.heading},
                                  {"word", verdict.word},
                                  {"running", verdict.isRunning},
                                  {"text", CallText(*call)},
                                  {"about", std::move(about)},
                                  {"within", std::move(within)}});
    }
    data["before"] = Json::array();
    if (!open.empty())
        for (const Call* call : overview.Before(*open.front()))
            data["before"].push_back({call->entry, NumberText(*call), ShortCall(*call), call->Failed()});
    data["known"] = Json::array();
    constexpr std::size_t mostKnown = 8;
    for (const KnownRegister& item : known.Registers()) {
        if (data["known"].size() == mostKnown)
            break;
        if (!item.bytes.empty() || item.refused)
            data["known"].push_back(KnownItem(known, item));
    }

    // ---- The calls ----
    Words nameWords;
    Words statusWords;
    Json exceptions = Json::array();  // numbers that occur again, times around a clock set back
    for (std::size_t i = 0; i < rows.size(); ++i) {
        const Row& row = rows[i];
        const bool wrapped = row.entered && row.entered->wrapped;
        const bool returnWrapped = row.returned && row.returned->wrapped;
        if (row.occurrence > 1 || wrapped || returnWrapped || row.clockSetBack || row.number > mostExact)
            exceptions.push_back(
                {i, row.occurrence, wrapped, returnWrapped, row.clockSetBack, Number(row.number)});
    }
    Json calls;
    calls["entry"] = Steps(rows, [](const Row& row) { return row.entry; });
    calls["number"] = Steps(rows, [](const Row& row) { return std::min(row.number, mostExact); });
    calls["name"] = Column(rows, [&](const Row& row) { return nameWords.Number(row.name); });
    calls["thread"] = Column(rows, [](const Row& row) { return row.thread; });
    calls["depth"] = Column(rows, [](const Row& row) { return row.depth; });
    calls["parent"] =
        Column(rows, [](const Row& row) { return row.parent ? Number(*row.parent) : Json(); });
    std::int64_t last = 0;
    calls["entered"] = Column(rows, [&](const Row& row) {
        if (!row.entered)
            return Json();
        const std::int64_t step = row.entered->nanoseconds - last;
        last = row.entered->nanoseconds;
        return Microseconds(step);
    });
    calls["took"] = Column(rows, [](const Row& row) {
        if (!row.returned)
            return Json();
        return Microseconds(row.returned->nanoseconds - (row.entered ? row.entered->nanoseconds : 0));
    });
    calls["status"] = Column(rows, [&](const Row& row) { return statusWords.Number(row.status); });
    calls["span"] = Column(rows, [](const Row& row) { return row.span; });
    calls["seen"] = Steps(rows, [](const Row& row) { return row.begun.seen; });
    calls["runs"] = Steps(rows, [](const Row& row) { return row.begun.runs; });
    data["rows"] = std::move(calls);
    data["exceptions"] = std::move(exceptions);
    data["names"] = nameWords.All();
    data["statuses"] = statusWords.All();
    data["threads"] = threads;
    data["elements"] = elements->All();
    data["entries"] = entered;

    // ---- Notes ----
    const auto notes = [](const std::vector<Note>& list) {
        return Column(list, [](const Note& note) { return Json::array({note.entry, note.text}); });
    };
    data["comments"] = notes(comments);
    data["damages"] = notes(damages);

    // ---- Registers and memory ----
    data["registers"] = Column(registers, [&](const RegisterAccess& access) {
        const auto item = known.Find(access);
        return Json::array(
            {RegisterName(item ? item->name : access.name, access.number, access.offset128),
             item ? item->bits : 0, item && item->isProgramCounter});
    });
    data["spaces"] = Json::array();
    for (std::size_t i = 0; i < spaceNumbers.size(); ++i)
        data["spaces"].push_back(Json());
    for (const auto& [space, number] : spaceNumbers)
        data["spaces"][number] = known.SpaceName(space);
    data["touches"] = Column(touches, [](const Touch& touch) {
        const int flags = (touch.isRegister ? 1 : 0) | (touch.way == Way::Wrote ? 2 : 0) |
                          (touch.whileRunning ? 4 : 0) | int(touch.outcome) << 3;
        Json item = Json::array(
            {touch.entry, Number(touch.number), flags, touch.runs, touch.place, HexDigits(touch.bytes)});
        if (!touch.isRegister) {
            item.push_back(ShortHex(touch.address).substr(2));
            item.push_back(touch.size);
        }
        return item;
    });
    data["forgotten"] = forgotten;

    // ---- All calls, also those that are left out ----
    data["durations"] = Json::array();
    for (const auto& [name, its] : names) {
        Json bins = Json::array();
        for (const auto& [bin, count] : its.bins)
            bins.push_back({bin, count});
        data["durations"].push_back({{"name", name},
                                     {"calls", its.calls},
                                     {"failed", its.failed},
                                     {"open", its.open},
                                     {"timed", its.took.Count()},
                                     {"total", Microseconds(its.took.Total())},
                                     {"median", Microseconds(its.took.Quantile(0.5))},
                                     {"p95", Microseconds(its.took.Quantile(0.95))},
                                     {"max", Microseconds(its.took.Largest())},
                                     {"exact", its.took.IsExact()},
                                     {"bins", std::move(bins)}});
    }
    data["stretches"] = {
        {"size", perStretch},
        {"failed", Column(stretches, [](const Stretch& stretch) { return stretch.failed; })},
        {"open", Column(stretches, [](const Stretch& stretch) { return stretch.open; })},
        {"calls", Column(stretches, [](const Stretch& stretch) { return stretch.calls; })},
        {"longest",
         Column(stretches, [](const Stretch& stretch) { return Microseconds(stretch.longest); })}};
    if (leftOut) {
        std::uint64_t first = std::numeric_limits<std::uint64_t>::max();
        std::uint64_t final = 0;
        for (const Row& row : rows) {
            if (!IsNear(row))
                continue;
            first = std::min(first, row.number);
            final = std::max(final, row.number);
        }
        data["left_out"] = {{"around", around ? Json(*around) : Json()},
                            {"from", first <= final ? Json(first) : Json()},
                            {"to", first <= final ? Json(final) : Json()},
                            {"slower", slowest.empty() ? Json() : Microseconds(slowest.front())},
                            {"failed", leftOutFailed}};
    }
    return write(InHtml(data));
}

bool PageLog::WriteDetails(const Write& write) const
{
    return std::all_of(rows.begin(), rows.end(),
                       [&](const Row& row) { return write(row.details) && write("\n"); });
}

}  // namespace ScrivelTool
