// scrivel diff: what differs between two runs. Tested by tests/tool/DiffTest.cpp.

#include <algorithm>
#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unistd.h>
#include <unordered_map>
#include <utility>
#include <vector>

#include "CallLine.h"
#include "Command.h"
#include "Json.h"
#include "KnownText.h"
#include "LogArguments.h"
#include "Options.h"
#include "scrivel/Alignment.h"
#include "scrivel/Comparison.h"
#include "scrivel/Knowledge.h"
#include "scrivel/LogFile.h"

namespace ScrivelTool
{

using namespace ScrivelReader;

namespace
{

constexpr std::size_t mostValues = 20;  // of one call that are shown
constexpr std::size_t mostRows = 4;     // of one array
constexpr std::size_t rowSize = 16;
constexpr std::size_t headerSize = 4096;  // of the log, in which its name stands

using Index = std::uint32_t;  // of a call in its log, by entry
constexpr Index none = ~Index(0);
using Names = std::unordered_map<std::string, Index>;

std::size_t ReadAt(int descriptor, std::string& bytes)
{
    const ssize_t got = pread(descriptor, bytes.data(), bytes.size(), 0);
    return got < 0 ? 0 : std::size_t(got);
}

/// Without what it knows of memory, which nobody asks for.
Knowledge KnowledgeOfRegisters()
{
    Knowledge::Limits limits;
    limits.blocks = limits.places = limits.bytes = 0;
    return Knowledge(limits);
}

// ---- One log --------------------------------------------------------------------------------------

/// What is kept of each call of a log: some numbers. The call itself is read again when it differs.
class ComparedLog final : public LogHandler
{
public:
    ComparedLog(std::string itsPath, std::unique_ptr<LogInput> itsInput)
        : path(std::move(itsPath)), input(std::move(itsInput))
    {
    }

    /// False when the log can't be read to its end, or not all of it, which was told.
    bool Read(const ComparisonRules& itsRules, const CallFilter& itsFilter, Names& itsNames,
              bool withTimes, Terminal& itsTerminal)
    {
        rules = &itsRules;
        filter = &itsFilter;
        names = &itsNames;
        terminal = &itsTerminal;
        keepsTimes = withTimes;
        const auto end = ReadLog(*input, path, *this, {}, itsTerminal);
        KeepChosen();
        return end && end->whole;
    }

    // ---- The calls that the filter leaves, in order of entry
    Index Count() const { return Index(requests.size()); }
    const Keys& Wholes() const { return wholes; }
    const Keys& Requests() const { return requests; }
    std::uint64_t NameOf(Index index) const { return calls[index].name; }
    std::optional<std::int64_t> Took(Index index) const
    {
        return times[index] == noTime ? std::nullopt : std::make_optional(times[index]);
    }
    std::vector<std::uint64_t> PointersOf(Index index) const
    {
        const Index entry = calls[index].entry;
        auto at = std::lower_bound(pointers.begin(), pointers.end(), entry,
                                   [](const Pointer& each, Index place) { return each.entry < place; });
        std::vector<std::uint64_t> found;
        for (; at != pointers.end() && at->entry == entry; ++at)
            found.push_back(at->value);
        return found;
    }
    /// The program counter that was known when the call was entered.
    std::optional<std::string> ProgramCounter(Index index) const
    {
        const Index count = calls[index].counters;
        return count == 0 ? std::nullopt : std::make_optional(ShortHex(counters[count - 1]));
    }
    Call At(Index index) const
    {
        const Kept& kept = calls[index];
        const std::uint64_t begin = kept.from + kept.begin;
        auto call = ReadCall(*input->Descriptor(), {kept.from, begin, begin + kept.size});
        if (!call)
            return {};
        call->occurrence = kept.occurrence;
        return std::move(*call);
    }

    const std::string& Path() const { return path; }
    /// run of run-4242: logs of two sides that bear one name are compared.
    std::string Name() const
    {
        class NameOnly final : public LogHandler
        {
        public:
            void Header(const LogHeader& header) override { name = header.name; }
            std::string name;
        } header;
        std::string begin(headerSize, '\0');
        begin.resize(ReadAt(*input->Descriptor(), begin));
        LogReader(header).Feed(begin);
        return header.name;
    }

    // ---- LogHandler
    void Entered(const Call& call) override
    {
        known.Entered(call);
        Kept kept{};
        kept.from = std::exchange(before, noPlace);
        kept.name = none;
        kept.counters = Index(counters.size());
        calls.push_back(kept);
        requests.push_back(0);
        wholes.push_back(0);
        if (keepsTimes)
            times.push_back(noTime);
    }
    void TakenBack(const Call&) override
    {
        calls.pop_back();
        requests.pop_back();
        wholes.pop_back();
        if (keepsTimes)
            times.pop_back();
    }
    void Ended(Call& call) override
    {
        const auto index = Index(call.entry);
        if (filter->Matches(call) && !call.parts.empty())
            Keep(call, index);
        const Access access = known.AccessBy(call);
        known.Ended(call, access);
        for (const RegisterAccess& touched : access.registers) {
            const auto found = known.Find(touched);
            if (!found || !found->isProgramCounter || found->bytes.empty())
                continue;
            std::uint64_t value = 0;
            for (const char byte : found->bytes)
                value = value << 8 | static_cast<unsigned char>(byte);
            if (counters.empty() || counters.back() != value)
                counters.push_back(value);
        }
    }
    void Element(const Call&) override { before = noPlace; }
    void Other(const Part& place) override { before = std::min(before, place.begin); }
    void Damaged(const Damage& damage) override { TellDamage(*terminal, path, damage); }

private:
    static constexpr std::int64_t noTime = -1;
    static constexpr std::uint64_t noPlace = ~std::uint64_t(0);

    struct Kept
    {
        std::uint64_t from;  // where the log begins to tell of it
        Index begin;         // of its first element, from there
        Index size;          // from there to the end of its last element
        Index name;          // none when the filter doesn't leave it
        Index counters;      // that were known when it was entered
        Index occurrence;
        Index entry;
    };

    struct Pointer
    {
        Index entry;
        std::uint64_t value;
    };

    void Keep(const Call& call, Index index)
    {
        const Fingerprint print = rules->Of(call);
        Kept& kept = calls[index];
        const std::uint64_t begin = call.parts.front().begin;
        kept.from = std::min(kept.from, begin);
        kept.begin = Index(begin - kept.from);
        kept.size = Index(std::min<std::uint64_t>(call.parts.back().end - begin, none));
        kept.name = names->emplace(call.name, Index(names->size())).first->second;
        kept.occurrence = call.occurrence;
        kept.entry = index;
        requests[index] = print.request;
        wholes[index] = print.whole;
        for (const std::uint64_t value : print.pointers)
            pointers.push_back({index, value});
        if (keepsTimes && call.Took())
            times[index] = *call.Took();
    }

    /// Takes the others out.
    void KeepChosen()
    {
        std::size_t kept = 0;
        for (std::size_t i = 0; i < calls.size(); ++i) {
            if (calls[i].name == none)
                continue;
            calls[kept] = calls[i];
            requests[kept] = requests[i];
            wholes[kept] = wholes[i];
            if (keepsTimes)
                times[kept] = times[i];
            ++kept;
        }
        calls.resize(kept);
        requests.resize(kept);
        wholes.resize(kept);
        if (keepsTimes)
            times.resize(kept);
        std::stable_sort(pointers.begin(), pointers.end(),
                         [](const Pointer& a, const Pointer& b) { return a.entry < b.entry; });
    }

    std::string path;
    std::unique_ptr<LogInput> input;
    const ComparisonRules* rules = nullptr;
    const CallFilter* filter = nullptr;
    Names* names = nullptr;
    Terminal* terminal = nullptr;
    std::uint64_t before = noPlace;  // the elements since the last call's
    bool keepsTimes = false;
    std::deque<Kept> calls;
    Keys requests;
    Keys wholes;
    std::deque<std::int64_t> times;
    std::deque<Pointer> pointers;
    std::deque<std::uint64_t> counters;
    Knowledge known = KnowledgeOfRegisters();
};

// ---- Two logs -------------------------------------------------------------------------------------

/// A call of either side, or of one of them.
struct Pair
{
    Index left = none;
    Index right = none;

    bool IsBoth() const { return left != none && right != none; }
};

enum class Question
{
    Everything,
    Results,  // of calls with equal arguments
    Times,    // likewise
};

/// Which calls of two logs belong together.
class ComparedPair
{
public:
    ComparedPair(ComparedLog& itsLeft, ComparedLog& itsRight) : left(itsLeft), right(itsRight) {}

    void Align(Question itsQuestion, PointerRenaming& renaming)
    {
        question = itsQuestion;
        const bool byWhole = question == Question::Everything;
        hunks = byWhole ? ScrivelReader::Align(left.Wholes(), right.Wholes())
                        : ScrivelReader::Align(left.Requests(), right.Requests());
        if (byWhole)
            for (const Hunk& hunk : hunks)
                PairWithin(hunk);
        ForEachEqual([&](Pair pair) { Vote(pair, renaming); });
        for (const Pair& pair : pairs)
            if (pair.IsBoth())
                Vote(pair, renaming);
    }

    /// What is to be shown, once it is known which pointer stands for which.
    struct Item
    {
        Pair pair;
        Index equalBefore;  // calls right before it, in both logs
    };

    std::vector<Item> Differing(const PointerRenaming& renaming)
    {
        std::vector<Item> items;
        Index equalBefore = 0;
        auto pair = pairs.begin();
        const auto take = [&](Pair one) {
            items.push_back({one, equalBefore});
            equalBefore = 0;
        };
        const auto takeBefore = [&](Index l, Index r) {
            while (pair != pairs.end() && (pair->left < l || pair->right < r))
                take(*pair++);
        };
        ForEachEqual([&](Pair one) {
            takeBefore(one.left, one.right);
            const bool isEqual = left.Wholes()[one.left] == right.Wholes()[one.right] &&
                                 renaming.Same(left.PointersOf(one.left), right.PointersOf(one.right));
            if (isEqual) {
                ++equal;
                ++equalBefore;
            } else {
                take(one);
            }
        });
        takeBefore(none, none);
        return items;
    }

    /// Pairs whose second call took longer by so much, by how much longer.
    std::vector<Pair> Longer(std::int64_t least)
    {
        std::vector<std::pair<std::int64_t, Pair>> found;
        ForEachEqual([&](Pair one) {
            ++equal;
            const auto first = left.Took(one.left);
            const auto second = right.Took(one.right);
            if (first && second && *second - *first >= least)
                found.emplace_back(*second - *first, one);
        });
        std::stable_sort(found.begin(), found.end(),
                         [](const auto& a, const auto& b) { return a.first > b.first; });
        std::vector<Pair> sorted;
        sorted.reserve(found.size());
        for (const auto& [growth, one] : found)
            sorted.push_back(one);
        return sorted;
    }

    ComparedLog& Left() const { return left; }
    ComparedLog& Right() const { return right; }
    /// Calls that are equal, or, when times are asked for, that are compared.
    Index Equal() const { return equal; }
    /// Calls without one in the other log that was asked the same.
    Index AloneLeft() const { return Alone(&Hunk::leftCount); }
    Index AloneRight() const { return Alone(&Hunk::rightCount); }

private:
    void ForEachEqual(const std::function<void(Pair)>& take) const
    {
        Index l = 0;
        Index r = 0;
        for (const Hunk& hunk : hunks) {
            for (; l < hunk.left; ++l, ++r)
                take({l, r});
            l += hunk.leftCount;
            r += hunk.rightCount;
        }
        for (; l < left.Count(); ++l, ++r)
            take({l, r});
    }

    /// Calls that were asked the same, then those of one name.
    void PairWithin(const Hunk& hunk)
    {
        ForEachWithin(
            hunk, [](const ComparedLog& log, Index index) { return log.Requests()[index]; },
            [&](const Hunk& within) {
                ForEachWithin(
                    within, [](const ComparedLog& log, Index index) { return log.NameOf(index); },
                    [&](const Hunk& rest) {
                        for (Index i = 0; i < rest.leftCount; ++i)
                            pairs.push_back({rest.left + i, none});
                        for (Index i = 0; i < rest.rightCount; ++i)
                            pairs.push_back({none, rest.right + i});
                    });
            });
    }

    template <typename Key, typename Rest>
    void ForEachWithin(const Hunk& hunk, Key keyOf, Rest rest)
    {
        if (hunk.leftCount == 0 || hunk.rightCount == 0) {
            rest(hunk);
            return;
        }
        const auto keys = [&](const ComparedLog& log, Index first, Index count) {
            Keys found(count);
            for (Index i = 0; i < count; ++i)
                found[i] = keyOf(log, first + i);
            return found;
        };
        Index l = 0;
        Index r = 0;
        const auto pairUpTo = [&](Index end) {
            for (; l < end; ++l, ++r)
                pairs.push_back({hunk.left + l, hunk.right + r});
        };
        for (const Hunk& each : ScrivelReader::Align(keys(left, hunk.left, hunk.leftCount),
                                                     keys(right, hunk.right, hunk.rightCount))) {
            pairUpTo(each.left);
            rest(Hunk{hunk.left + each.left, each.leftCount, hunk.right + each.right, each.rightCount});
            l += each.leftCount;
            r += each.rightCount;
        }
        pairUpTo(hunk.leftCount);
    }

    void Vote(Pair pair, PointerRenaming& renaming) const
    {
        const auto ofLeft = left.PointersOf(pair.left);
        if (!ofLeft.empty())
            renaming.Vote(ofLeft, right.PointersOf(pair.right), pair.left);
    }

    Index Alone(Index Hunk::*count) const
    {
        Index sum = 0;
        for (const Hunk& hunk : hunks)
            sum += hunk.*count;
        return sum;
    }

    ComparedLog& left;
    ComparedLog& right;
    Question question = Question::Everything;
    std::vector<Hunk> hunks;
    std::vector<Pair> pairs;  // within the hunks, in their order
    Index equal = 0;
};

// ---- Values that differ ---------------------------------------------------------------------------

/// 00000000 00001002 -> 16 bytes, the most significant first.
std::string RegisterBytes(std::string_view text)
{
    std::string digits;
    for (const char c : text)
        if (c != ' ')
            digits += c;
    constexpr std::size_t most = 32;
    digits.insert(0, most - std::min(most, digits.size()), '0');
    std::string bytes;
    for (std::size_t i = 0; i < most; i += 2)
        bytes += char(std::stoi(digits.substr(i, 2), nullptr, 16));
    return bytes;
}

/// Which bits differ, the lowest first.
std::vector<int> BitsThatDiffer(std::string_view left, std::string_view right)
{
    std::vector<int> bits;
    for (std::size_t i = 0; i < left.size(); ++i) {
        const int difference = static_cast<unsigned char>(left[left.size() - 1 - i]) ^
                               static_cast<unsigned char>(right[right.size() - 1 - i]);
        for (int bit = 0; bit < 8; ++bit)
            if ((difference >> bit & 1) != 0)
                bits.push_back(int(i) * 8 + bit);
    }
    return bits;
}

std::string BitsText(const std::vector<int>& bits)
{
    constexpr std::size_t most = 8;
    if (bits.size() > most)
        return std::to_string(bits.size()) + " bits differ";
    std::string text = bits.size() == 1 ? "bit" : "bits";
    for (std::size_t i = 0; i < bits.size(); ++i)
        text += (i == 0 ? " " : ", ") + std::to_string(bits[i]);
    return text + (bits.size() == 1 ? " differs" : " differ");
}

/// Offsets in the longer of two arrays.
std::vector<std::size_t> BytesThatDiffer(std::string_view left, std::string_view right)
{
    std::vector<std::size_t> offsets;
    for (std::size_t i = 0; i < std::max(left.size(), right.size()); ++i)
        if (i >= left.size() || i >= right.size() || left[i] != right[i])
            offsets.push_back(i);
    return offsets;
}

class Diff final : public ReadingAction
{
public:
    explicit Diff(Options& options)
    {
        logs.AddTo(options);
        logs.AddJsonTo(options);
        options.Option("--with", "LOG", others,
                       "a log of the second run, when there are several of either; may be repeated");
        options.Option("--ignore", "PATH", ignored,
                       "leave out this value: arg.PATH, result.PATH, or PATH; may be repeated");
        options.Flag("--results", results,
                     "take calls with equal arguments as pairs, and show what came back differently");
        options.Option(
            "--times", "1ms", times,
            "take them as pairs, and show those that took longer by so much in the second run");
        options.Exclude("--times", "--results");
        filter.AddTo(options);
    }

    Exit Read(CallFilter chosen, Terminal& terminal) override
    {
        if (!Understand(terminal))
            return Exit::Trouble;
        bool trouble = false;
        std::vector<std::string> leftPaths;
        std::vector<std::string> rightPaths;
        if (!Divide(leftPaths, rightPaths, terminal, trouble) || trouble)
            return Exit::Trouble;
        Side left = Open(leftPaths, terminal);
        Side right = Open(rightPaths, terminal);
        if (left.size() != leftPaths.size() || right.size() != rightPaths.size())
            return Exit::Trouble;

        bool isEqual = true;
        const ComparisonRules rules(ignored);
        PointerRenaming renaming;
        Names names;
        std::vector<ComparedPair> pairs;
        for (const auto& [first, second] : Matched(left, right)) {
            if (first == nullptr || second == nullptr) {
                TellAlone(first, second, terminal);
                isEqual = false;
                continue;
            }
            const bool withTimes = question == Question::Times;
            trouble = !first->Read(rules, chosen, names, withTimes, terminal) || trouble;
            trouble = !second->Read(rules, chosen, names, withTimes, terminal) || trouble;
            pairs.emplace_back(*first, *second);
            pairs.back().Align(question, renaming);
        }
        renaming.Settle();
        for (ComparedPair& pair : pairs) {
            if (pairs.size() > 1 && !logs.Json())
                terminal.Print("==> " + Printable(pair.Left().Path()) + ", " +
                               Printable(pair.Right().Path()) + "\n");
            isEqual = Show(pair, rules, renaming, terminal) && isEqual;
        }
        return trouble ? Exit::Trouble : isEqual ? Exit::Found : Exit::Nothing;
    }

private:
    using Side = std::vector<std::unique_ptr<ComparedLog>>;
    using Logs = std::pair<ComparedLog*, ComparedLog*>;

    // ---- The logs -----------------------------------------------------------------------------------

    bool Understand(Terminal& terminal)
    {
        if (!times.empty()) {
            const auto least = ParseDuration(times);
            if (!least || *least < 0) {
                terminal.Error("--times: \"" + times + "\" is no time; 1ms is one");
                return false;
            }
            leastLonger = *least;
        }
        question = !times.empty() ? Question::Times : results ? Question::Results : Question::Everything;
        return true;
    }

    /// The logs of the second run: those after --with, or the second of two paths.
    bool Divide(std::vector<std::string>& left, std::vector<std::string>& right, Terminal& terminal,
                bool& trouble) const
    {
        std::vector<std::string> first = logs.Paths();
        std::vector<std::string> second = others;
        if (others.empty()) {
            if (first.size() != 2) {
                terminal.Error("two runs are compared: name two logs or folders, or those of the second "
                               "run after --with each");
                return false;
            }
            second = {first[1]};
            first.pop_back();
        }
        left = LogArguments::LogsAt(first, terminal, trouble);
        right = LogArguments::LogsAt(second, terminal, trouble);
        return true;
    }

    static Side Open(const std::vector<std::string>& paths, Terminal& terminal)
    {
        Side side;
        for (const std::string& path : paths) {
            std::string error;
            auto input = OpenLogAnywhere(path, error);
            if (input == nullptr)
                terminal.Error(path, {}, error);
            else
                side.push_back(std::make_unique<ComparedLog>(path, std::move(input)));
        }
        return side;
    }

    /// Logs of one name, in their order; a single log on either side whatever its name.
    static std::vector<Logs> Matched(const Side& left, const Side& right)
    {
        if (left.size() == 1 && right.size() == 1)
            return {{left.front().get(), right.front().get()}};
        std::vector<Logs> matched;
        std::vector<ComparedLog*> rest;
        for (const auto& log : right)
            rest.push_back(log.get());
        for (const auto& log : left) {
            const std::string name = log->Name();
            const auto found = std::find_if(rest.begin(), rest.end(), [&](const ComparedLog* other) {
                return other->Name() == name;
            });
            matched.emplace_back(log.get(), found == rest.end() ? nullptr : *found);
            if (found != rest.end())
                rest.erase(found);
        }
        for (ComparedLog* const log : rest)
            matched.emplace_back(nullptr, log);
        return matched;
    }

    void TellAlone(const ComparedLog* first, const ComparedLog* second, Terminal& terminal) const
    {
        const std::string& path = (first != nullptr ? first : second)->Path();
        const std::string run = first != nullptr ? "first" : "second";
        if (logs.Json())
            terminal.Print(JsonLine(
                {{"schema", jsonSchema}, {"kind", "log"}, {"log", path}, {"only_in", run + " run"}}));
        else
            terminal.Print("only in the " + run + " run: " + Printable(path) + "\n");
    }

    // ---- What differs -------------------------------------------------------------------------------

    /// True when nothing differs.
    bool Show(ComparedPair& pair, const ComparisonRules& rules, const PointerRenaming& renaming,
              Terminal& terminal) const
    {
        if (question == Question::Times)
            return ShowLonger(pair, terminal);
        const std::vector<ComparedPair::Item> items = pair.Differing(renaming);
        const std::vector<Renamed> renamed = RenamedIn(pair, renaming);
        if (!logs.Json())
            terminal.Print(Summary(pair, renamed, terminal));
        for (const ComparedPair::Item& item : items) {
            const std::optional<Call> left = CallOf(pair.Left(), item.pair.left);
            const std::optional<Call> right = CallOf(pair.Right(), item.pair.right);
            std::vector<Difference> differences;
            if (left && right)
                differences = rules.Compare(*left, *right, renaming);
            const Found found{item,
                              left,
                              right,
                              differences,
                              Counter(pair.Left(), item.pair.left),
                              Counter(pair.Right(), item.pair.right)};
            terminal.Print(logs.Json() ? FoundJson(found) : FoundText(found, terminal));
        }
        if (logs.Json())
            PrintSummaryJson(pair, items.size(), renamed, terminal);
        return items.empty();
    }

    struct Found
    {
        const ComparedPair::Item& item;
        const std::optional<Call>& left;
        const std::optional<Call>& right;
        const std::vector<Difference>& differences;
        std::optional<std::string> leftCounter;
        std::optional<std::string> rightCounter;
    };

    static std::optional<Call> CallOf(const ComparedLog& log, Index index)
    {
        return index == none ? std::nullopt : std::make_optional(log.At(index));
    }
    static std::optional<std::string> Counter(const ComparedLog& log, Index index)
    {
        return index == none ? std::nullopt : log.ProgramCounter(index);
    }

    // ---- Renamed pointers ---------------------------------------------------------------------------

    struct Renamed
    {
        std::uint64_t left;
        std::uint64_t right;
        std::vector<std::string> calls;  // of the first log, the first ones with it
    };

    std::vector<Renamed> RenamedIn(const ComparedPair& pair, const PointerRenaming& renaming) const
    {
        std::vector<Renamed> found;
        for (const auto& each : renaming.All()) {
            Renamed renamed{each.left, each.right, {}};
            for (const std::uint64_t place : each.places) {
                const auto index = Index(place);
                if (index >= pair.Left().Count())
                    continue;
                const auto pointers = pair.Left().PointersOf(index);
                if (std::find(pointers.begin(), pointers.end(), each.left) != pointers.end())
                    renamed.calls.push_back(NumberText(pair.Left().At(index)));
            }
            if (!renamed.calls.empty())
                found.push_back(std::move(renamed));
        }
        return found;
    }

    // ---- Text ---------------------------------------------------------------------------------------

    /// 70 of 71 calls equal; times, threads ignored; 1 host pointer renamed (#3, #71)
    std::string Summary(const ComparedPair& pair, const std::vector<Renamed>& renamed,
                        Terminal& terminal) const
    {
        const Index left = pair.Left().Count();
        const Index right = pair.Right().Count();
        const bool allEqual = pair.Equal() == left && pair.Equal() == right;
        const Style style = allEqual ? Style::Plain : Style::Name;
        std::string equal = std::to_string(pair.Equal());
        if (!allEqual)
            equal +=
                " of " + std::to_string(left) + (left == right ? "" : " and " + std::to_string(right));
        equal += left == 1 && allEqual ? " call equal" : " calls equal";
        std::vector<Fact> facts = {{"", equal, style}};
        const auto add = [&](const char* separator, const std::string& text) {
            facts.back().text += separator;
            facts.push_back({" ", text, style});
        };
        if (question == Question::Results && pair.AloneLeft() + pair.AloneRight() != 0)
            add(",", AloneText(pair));
        add(";", "times, threads ignored");
        if (!renamed.empty()) {
            constexpr std::size_t most = 6;
            std::string pointers =
                std::to_string(renamed.size()) +
                (renamed.size() == 1 ? " host pointer renamed (" : " host pointers renamed (");
            std::size_t shown = 0;
            for (const Renamed& each : renamed)
                for (const std::string& call : each.calls)
                    if (shown++ < most)
                        pointers += (shown == 1 ? "#" : " #") + call;
            add(";", pointers + (shown > most ? " ...)" : ")"));
        }
        return FactLines(facts, 2, terminal);
    }

    /// 2 and 1 without one that was asked the same
    static std::string AloneText(const ComparedPair& pair)
    {
        return std::to_string(pair.AloneLeft()) + " and " + std::to_string(pair.AloneRight()) +
               " without one that was asked the same";
    }

    static std::string NumbersText(const std::optional<Call>& left, const std::optional<Call>& right)
    {
        const std::string first = left ? "#" + NumberText(*left) : "";
        const std::string second = right ? "#" + NumberText(*right) : "";
        return !left || first == second ? second : !right ? first : first + ", " + second;
    }

    static std::string CounterText(const Found& found)
    {
        if (found.leftCounter == found.rightCounter)
            return found.leftCounter ? ", pc " + *found.leftCounter + " in both" : "";
        if (!found.left || !found.right)
            return ", pc " + (found.left ? found.leftCounter : found.rightCounter).value_or("unknown");
        return ", pc " + found.leftCounter.value_or("unknown") + " and " +
               found.rightCounter.value_or("unknown");
    }

    static std::string AfterText(const Found& found)
    {
        const Index count = found.item.equalBefore;
        return "after " + std::to_string(count) + (count == 1 ? " equal call" : " equal calls") +
               CounterText(found);
    }

    /// A line whose end stands at the right, as far as there is room.
    static std::string WithNote(const std::string& text, const std::string& note, Style style,
                                const Terminal& terminal)
    {
        constexpr std::size_t least = 30;
        const std::size_t room =
            terminal.Width() > Columns(note) + least + 2 ? terminal.Width() - Columns(note) - 2 : least;
        const std::string clipped = Clipped(text, note.empty() ? terminal.Width() : room);
        std::string line = terminal.Styled(style, clipped);
        if (!note.empty())
            line += std::string(room - std::min(room, Columns(clipped)) + 2, ' ') +
                    terminal.Styled(Style::Quiet, note);
        return line + "\n";
    }

    std::string FoundText(const Found& found, const Terminal& terminal) const
    {
        const bool isFirst = found.item.equalBefore != 0;
        const std::string note = isFirst ? AfterText(found) : "";
        const std::string numbers = NumbersText(found.left, found.right);
        if (!found.left || !found.right) {
            const Call& call = found.left ? *found.left : *found.right;
            std::string text = (found.left ? "- " : "+ ") + numbers + " " + Printable(CallText(call));
            if (const std::string back = ElementsText(call.results, true); !back.empty())
                text += " -> " + back;
            if (call.Failed() || !call.Returned())
                text += " " + StatusText(call);
            return WithNote(text, note, found.left ? Style::Failure : Style::Added, terminal);
        }
        std::string text = WithNote("  " + numbers + " " + Printable(CallText(*found.left)), note,
                                    Style::Name, terminal);
        std::size_t shown = 0;
        for (const Difference& difference : found.differences) {
            if (shown++ == mostValues) {
                text += "    and " + std::to_string(found.differences.size() - mostValues) +
                        " more values (--json has all)\n";
                break;
            }
            text += DifferenceText(difference, terminal);
        }
        return text;
    }

    static std::string DifferenceText(const Difference& difference, const Terminal& terminal)
    {
        const std::string path = Printable(difference.path) + "  ";
        if (difference.kind == Difference::Kind::Bytes && difference.left && difference.right)
            return BytesDifference(path, *difference.left, *difference.right, terminal);
        std::string left = difference.left.value_or("");
        std::string right = difference.right.value_or("");
        std::string note;
        if (difference.kind == Difference::Kind::Register) {
            const std::string first = RegisterBytes(left);
            const std::string second = RegisterBytes(right);
            const std::size_t size =
                std::max(Significant(first, 0).size(), Significant(second, 0).size());
            left = HexDigits(std::string_view(first).substr(first.size() - size));
            right = HexDigits(std::string_view(second).substr(second.size() - size));
            note = BitsText(BitsThatDiffer(first, second));
        } else if (difference.kind == Difference::Kind::Bytes) {
            left = HexDigits(left);
            right = HexDigits(right);
        }
        std::string text;
        if (difference.left)
            text += WithNote("-   " + path + Printable(left), "", Style::Failure, terminal);
        if (difference.right)
            text += WithNote("+   " + path + Printable(right), note, Style::Added, terminal);
        return text;
    }

    /// The rows of two arrays that differ, with a star before each byte that does.
    static std::string BytesDifference(const std::string& path, std::string_view left,
                                       std::string_view right, const Terminal& terminal)
    {
        const std::vector<std::size_t> offsets = BytesThatDiffer(left, right);
        std::string note = std::to_string(offsets.size()) + " of " +
                           std::to_string(std::max(left.size(), right.size())) + " bytes " +
                           (offsets.size() == 1 ? "differs" : "differ");
        std::string text;
        std::size_t rows = 0;
        std::size_t last = ~std::size_t(0);
        for (const std::size_t offset : offsets) {
            const std::size_t row = offset / rowSize * rowSize;
            if (row == last)
                continue;
            last = row;
            if (rows++ == mostRows) {
                text += "    ...\n";
                break;
            }
            const std::string place =
                row == 0 ? path : path.substr(0, path.size() - 2) + "+" + ShortHex(row) + "  ";
            text += Row("-   " + place, left, right, row, "", Style::Failure, terminal);
            text +=
                Row("+   " + place, right, left, row, std::exchange(note, ""), Style::Added, terminal);
        }
        return text;
    }

    static std::string Row(const std::string& begin, std::string_view bytes, std::string_view other,
                           std::size_t row, const std::string& note, Style style,
                           const Terminal& terminal)
    {
        std::string text = begin;
        for (std::size_t i = row; i < std::min(row + rowSize, bytes.size()); ++i)
            text +=
                (i < other.size() && other[i] == bytes[i] ? " " : "*") + HexDigits(bytes.substr(i, 1));
        if (row >= bytes.size())
            text += "ends before";
        return WithNote(text, note, style, terminal);
    }

    // ---- Times --------------------------------------------------------------------------------------

    bool ShowLonger(ComparedPair& pair, Terminal& terminal) const
    {
        const std::vector<Pair> longer = pair.Longer(leastLonger);
        if (!logs.Json())
            terminal.Print(
                FactLines({{"", std::to_string(longer.size()) + " of " + std::to_string(pair.Equal()) +
                                    " calls took longer by " + times + " or more"},
                           {"; ", AloneText(pair)}},
                          2, terminal));
        for (const Pair& one : longer) {
            const Call left = pair.Left().At(one.left);
            const Call right = pair.Right().At(one.right);
            const std::int64_t before = *pair.Left().Took(one.left);
            const std::int64_t after = *pair.Right().Took(one.right);
            if (logs.Json()) {
                terminal.Print(JsonLine({{"schema", jsonSchema},
                                         {"kind", "longer"},
                                         {"left", left.number},
                                         {"right", right.number},
                                         {"name", left.name},
                                         {"took_left", double(before) / 1e9},
                                         {"took_right", double(after) / 1e9}}));
                continue;
            }
            terminal.Print(WithNote("  " + NumbersText(left, right) + " " + Printable(CallText(left)),
                                    DurationText(before) + " -> " + DurationText(after), Style::Name,
                                    terminal));
        }
        if (logs.Json())
            PrintSummaryJson(pair, longer.size(), {}, terminal);
        return longer.empty();
    }

    // ---- JSON ---------------------------------------------------------------------------------------

    std::string FoundJson(const Found& found) const
    {
        const auto number = [](const std::optional<Call>& call) {
            return call ? Json(call->number) : Json();
        };
        const auto orNull = [](const std::optional<std::string>& text) {
            return text ? Json(*text) : Json();
        };
        Json object = {{"schema", jsonSchema},
                       {"kind", !found.left    ? "added"
                                : !found.right ? "removed"
                                               : "changed"},
                       {"left", number(found.left)},
                       {"right", number(found.right)},
                       {"name", (found.left ? found.left : found.right)->name},
                       {"equal_before", found.item.equalBefore},
                       {"pc_left", orNull(found.leftCounter)},
                       {"pc_right", orNull(found.rightCounter)},
                       {"differences", Json::array()}};
        for (const Difference& difference : found.differences) {
            const bool isBytes = difference.kind == Difference::Kind::Bytes;
            const auto value = [&](const std::optional<std::string>& side) {
                return !side ? Json() : isBytes ? Json(HexDigits(*side)) : Json(*side);
            };
            Json one = {{"path", difference.path},
                        {"left", value(difference.left)},
                        {"right", value(difference.right)}};
            if (difference.kind == Difference::Kind::Register)
                one["bits"] =
                    BitsThatDiffer(RegisterBytes(*difference.left), RegisterBytes(*difference.right));
            else if (isBytes && difference.left && difference.right)
                one["bytes"] = BytesThatDiffer(*difference.left, *difference.right);
            object["differences"].push_back(std::move(one));
        }
        return JsonLine(object);
    }

    void PrintSummaryJson(const ComparedPair& pair, std::size_t differing,
                          const std::vector<Renamed>& renamed, Terminal& terminal) const
    {
        Json object = {{"schema", jsonSchema},
                       {"kind", "summary"},
                       {"log_left", pair.Left().Path()},
                       {"log_right", pair.Right().Path()},
                       {"calls_left", pair.Left().Count()},
                       {"calls_right", pair.Right().Count()},
                       {question == Question::Times ? "compared" : "equal", pair.Equal()},
                       {"differing", differing},
                       {"renamed", Json::array()}};
        for (const Renamed& each : renamed)
            object["renamed"].push_back({{"left", ShortHex(each.left)}, {"right", ShortHex(each.right)}});
        terminal.Print(JsonLine(object));
    }

    std::vector<std::string> others;
    std::vector<std::string> ignored;
    bool results = false;
    std::string times;
    std::int64_t leastLonger = 0;
    Question question = Question::Everything;
};

}  // namespace

std::unique_ptr<Action> MakeDiff(Options& options)
{
    return std::make_unique<Diff>(options);
}

}  // namespace ScrivelTool
