// The grammar by which calls are chosen. Tested by tests/reader/CallFilterTest.cpp.

#include "scrivel/CallFilter.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <functional>
#include <limits>
#include <utility>

namespace ScrivelReader
{

namespace
{

using Test = std::function<bool(const Call&)>;

std::vector<std::string_view> Split(std::string_view text, char separator)
{
    std::vector<std::string_view> parts;
    while (true) {
        const std::size_t at = text.find(separator);
        parts.push_back(text.substr(0, at));
        if (at == std::string_view::npos)
            return parts;
        text.remove_prefix(at + 1);
    }
}

std::optional<std::uint64_t> ParseDecimal(std::string_view text, int base = 10)
{
    std::uint64_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number, base);
    if (text.empty() || error != std::errc() || end != text.data() + text.size())
        return {};
    return number;
}

/// In an error, of which a person reads no more than a few lines.
std::string Quoted(std::string_view text)
{
    constexpr std::size_t longest = 200;
    if (text.size() <= longest)
        return "\"" + std::string(text) + "\"";
    std::size_t end = longest;
    while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xc0) == 0x80)
        --end;
    return "\"" + std::string(text.substr(0, end)) + "...\"";
}

/// The bytes of an array as the text that one compares: two digits each.
std::string HexOf(std::string_view bytes)
{
    constexpr std::string_view digits = "0123456789abcdef";
    std::string text;
    text.reserve(bytes.size() * 2);
    for (const char byte : bytes) {
        const auto value = static_cast<unsigned char>(byte);
        text.append(1, digits[value / 16]).append(1, digits[value % 16]);
    }
    return text;
}

std::string TextOf(Tree::Element element)
{
    return element.What() == Tree::Kind::Bytes ? HexOf(element.Text()) : std::string(element.Text());
}

bool Contains(Tree::Elements elements, const std::string& text)
{
    for (Tree::Element element : elements) {
        if (element.Name().find(text) != std::string_view::npos ||
            TextOf(element).find(text) != std::string::npos || Contains(element.Children(), text))
            return true;
    }
    return false;
}

enum class Comparison
{
    Equal,
    NotEqual,
    Less,
    LessEqual,
    Greater,
    GreaterEqual,
    Contains,
    ContainsNot
};

template <typename Value>
bool Compare(const Value& left, Comparison comparison, const Value& right)
{
    switch (comparison) {
    case Comparison::Equal:
        return left == right;
    case Comparison::NotEqual:
        return left != right;
    case Comparison::Less:
        return left < right;
    case Comparison::LessEqual:
        return left <= right;
    case Comparison::Greater:
        return left > right;
    case Comparison::GreaterEqual:
        return left >= right;
    case Comparison::Contains:
    case Comparison::ContainsNot:
        break;
    }
    return false;
}

bool CompareTexts(std::string_view left, Comparison comparison, std::string_view right)
{
    if (comparison == Comparison::Contains)
        return left.find(right) != std::string_view::npos;
    if (comparison == Comparison::ContainsNot)
        return left.find(right) == std::string_view::npos;
    const auto leftNumber = ParseLogNumber(left);
    const auto rightNumber = ParseLogNumber(right);
    if (leftNumber && rightNumber)
        return Compare(*leftNumber, comparison, *rightNumber);
    return Compare(left, comparison, right);
}

/// Whether any element whose path ends with the names has a text for which the comparison holds.
bool AnyAt(Tree::Elements elements, const std::vector<std::string>& path,
           std::vector<std::string_view>& above, const std::function<bool(const std::string&)>& holds)
{
    for (Tree::Element element : elements) {
        above.push_back(element.Name());
        const bool ends = above.size() >= path.size() &&
                          std::equal(path.rbegin(), path.rend(), above.rbegin(),
                                     [](const std::string& a, std::string_view b) { return a == b; });
        if ((ends && element.What() != Tree::Kind::Elements && holds(TextOf(element))) ||
            AnyAt(element.Children(), path, above, holds))
            return true;
        above.pop_back();
    }
    return false;
}

// ---- Expressions ----------------------------------------------------------------------------------

/// Recursive descent over   or: and ("or" and)*   and: not ("and" not)*   not: "not" not | "(" or ")" |
/// test
class Expression
{
public:
    Expression(std::string_view text, std::string& itsError, bool& itsNeedsContents)
        : rest(text), error(itsError), needsContents(itsNeedsContents)
    {
        Next();
    }

    Test Parse()
    {
        Test test = Or();
        if (error.empty() && !word.empty())
            error = "unexpected " + Quoted(word);
        return test;
    }

private:
    static constexpr int deepest = 100;

    void Next()
    {
        quoted = false;
        word.clear();
        while (!rest.empty() && rest.front() == ' ')
            rest.remove_prefix(1);
        if (rest.empty())
            return;
        const char first = rest.front();
        if (first == '"' || first == '\'') {
            const std::size_t end = rest.find(first, 1);
            if (end == std::string_view::npos) {
                error = "a quote is not closed";
                rest = {};
                return;
            }
            quoted = true;
            word = rest.substr(1, end - 1);
            rest.remove_prefix(end + 1);
            return;
        }
        constexpr std::string_view operators = "=!<>~";
        constexpr std::string_view ends = " ()=!<>~";
        std::size_t size = 1;
        if (operators.find(first) != std::string_view::npos) {
            size = rest.size() > 1 && (rest[1] == '=' || (first == '!' && rest[1] == '~')) ? 2 : 1;
        } else if (first != '(' && first != ')') {
            size = std::min(rest.find_first_of(ends), rest.size());
        }
        word = rest.substr(0, size);
        rest.remove_prefix(size);
    }

    bool Take(std::string_view expected)
    {
        if (quoted || word != expected)
            return false;
        Next();
        return true;
    }

    Test Or()
    {
        std::vector<Test> tests = Joined("or", &Expression::And);
        if (tests.size() == 1)
            return std::move(tests.front());
        return [tests = std::move(tests)](const Call& call) {
            return std::any_of(tests.begin(), tests.end(), [&](const Test& test) { return test(call); });
        };
    }

    Test And()
    {
        std::vector<Test> tests = Joined("and", &Expression::Not);
        if (tests.size() == 1)
            return std::move(tests.front());
        return [tests = std::move(tests)](const Call& call) {
            return std::all_of(tests.begin(), tests.end(), [&](const Test& test) { return test(call); });
        };
    }

    std::vector<Test> Joined(std::string_view joining, Test (Expression::*part)())
    {
        std::vector<Test> tests;
        do
            tests.push_back((this->*part)());
        while (error.empty() && Take(joining));
        return tests;
    }

    Test Not()
    {
        if (++depth > deepest) {
            error = "nested too deeply";
            return {};
        }
        Test test;
        if (Take("not")) {
            Test inner = Not();
            test = [inner = std::move(inner)](const Call& call) { return !inner(call); };
        } else if (Take("(")) {
            test = Or();
            if (error.empty() && !Take(")"))
                error = "a ) is missing";
        } else {
            test = Comparing();
        }
        --depth;
        return test;
    }

    Test Comparing()
    {
        if (word.empty() && !quoted) {
            if (error.empty())
                error = "a field is missing at the end";
            return {};
        }
        if (Take("failed"))
            return [](const Call& call) { return call.Failed(); };
        if (Take("open"))
            return [](const Call& call) { return !call.Returned(); };
        if (Take("returned"))
            return [](const Call& call) { return call.Returned(); };

        const std::string field = word;
        Next();
        static constexpr std::pair<std::string_view, Comparison> comparisons[] = {
            {"=", Comparison::Equal},         {"==", Comparison::Equal},
            {"!=", Comparison::NotEqual},     {"<", Comparison::Less},
            {"<=", Comparison::LessEqual},    {">", Comparison::Greater},
            {">=", Comparison::GreaterEqual}, {"~", Comparison::Contains},
            {"!~", Comparison::ContainsNot},
        };
        const auto found = std::find_if(std::begin(comparisons), std::end(comparisons),
                                        [&](const auto& row) { return !quoted && row.first == word; });
        if (found == std::end(comparisons)) {
            if (error.empty())
                error = "a comparison is missing after " + Quoted(field);
            return {};
        }
        Next();
        if (word.empty() && !quoted) {
            if (error.empty())
                error = "a value is missing after " + Quoted(field);
            return {};
        }
        const std::string value = word;
        Next();
        return Field(field, found->second, value);
    }

    Test Field(const std::string& field, Comparison comparison, const std::string& value)
    {
        if (field == "name")
            return [=](const Call& call) { return CompareTexts(call.name, comparison, value); };
        if (field == "status")
            return [=](const Call& call) {
                return !call.status.empty() && CompareTexts(call.status, comparison, value);
            };
        if (field == "address")
            return [=](const Call& call) {
                return !call.disassemblerAddress.empty() &&
                       CompareTexts(call.disassemblerAddress, comparison, value);
            };
        if (field == "number" || field == "call")
            return Number(comparison, value,
                          [](const Call& call) { return std::make_optional(call.number); });
        if (field == "parent")
            return Number(comparison, value, [](const Call& call) { return call.Parent(); });
        if (field == "thread") {
            if (!value.empty() && value.front() == 'T')
                return Number(comparison, value.substr(1), [](const Call& call) {
                    return call.thread == 0 ? std::nullopt
                                            : std::make_optional(std::uint64_t(call.thread));
                });
            return Number(comparison, value, [](const Call& call) { return call.threadId; });
        }
        if (field == "took")
            return Duration(comparison, value, [](const Call& call) { return call.Took(); });
        if (field == "time")
            return Duration(comparison, value,
                            [](const Call& call) { return Nanoseconds(call.callTime); });
        if (field == "return")
            return Duration(comparison, value,
                            [](const Call& call) { return Nanoseconds(call.returnTime); });

        for (const bool isResult : {false, true}) {
            const std::string_view prefix = isResult ? "result." : "arg.";
            if (field.size() <= prefix.size() || field.compare(0, prefix.size(), prefix) != 0)
                continue;
            needsContents = true;
            std::vector<std::string> path;
            for (const std::string_view name : Split(std::string_view(field).substr(prefix.size()), '.'))
                path.emplace_back(name);
            return [=](const Call& call) {
                std::vector<std::string_view> above;
                return AnyAt(
                    (isResult ? call.results : call.arguments).Top(), path, above,
                    [&](const std::string& text) { return CompareTexts(text, comparison, value); });
            };
        }
        error = "there is no field " + Quoted(field);
        return {};
    }

    static std::optional<std::int64_t> Nanoseconds(const std::optional<Time>& time)
    {
        return time ? std::make_optional(time->nanoseconds) : std::nullopt;
    }

    template <typename Get>
    Test Number(Comparison comparison, const std::string& value, Get get)
    {
        const auto number = ParseLogNumber(value);
        if (!number || comparison == Comparison::Contains || comparison == Comparison::ContainsNot) {
            error = Quoted(value) + " is no number to compare with";
            return {};
        }
        return [=](const Call& call) {
            const auto own = get(call);
            return own && Compare(*own, comparison, *number);
        };
    }

    template <typename Get>
    Test Duration(Comparison comparison, const std::string& value, Get get)
    {
        const auto duration = ParseDuration(value);
        if (!duration || comparison == Comparison::Contains || comparison == Comparison::ContainsNot) {
            error = Quoted(value) + " is no time to compare with: 1ms, 20us, 0.5";
            return {};
        }
        return [=](const Call& call) {
            const auto own = get(call);
            return own && Compare(*own, comparison, *duration);
        };
    }

    std::string_view rest;
    std::string& error;
    bool& needsContents;
    std::string word;
    bool quoted = false;
    int depth = 0;
};

}  // namespace

// ---- Values ---------------------------------------------------------------------------------------

std::optional<std::int64_t> ParseDuration(std::string_view text)
{
    static constexpr std::pair<std::string_view, double> units[] = {
        {"ns", 1}, {"us", 1e3}, {"ms", 1e6}, {"s", 1e9}, {"", 1e9}};
    const std::size_t digits = std::min(text.find_first_not_of("-.0123456789"), text.size());
    const auto unit = std::find_if(std::begin(units), std::end(units),
                                   [&](const auto& row) { return row.first == text.substr(digits); });
    if (digits == 0 || unit == std::end(units))
        return {};

    // Not by from_chars, which some standard libraries don't have for floating-point numbers, nor by
    // strtod, which reads what the process's locale calls a number.
    bool negative = false;
    std::string_view number = text.substr(0, digits);
    if (number.front() == '-') {
        negative = true;
        number.remove_prefix(1);
    }
    double value = 0;
    double scale = 0;
    bool hasDigit = false;
    for (const char c : number) {
        if (c == '.') {
            if (scale != 0)
                return {};
            scale = 1;
            continue;
        }
        if (c == '-')
            return {};
        hasDigit = true;
        value = value * 10 + (c - '0');
        scale *= 10;
    }
    if (!hasDigit)
        return {};
    const double nanoseconds = value / (scale == 0 ? 1 : scale) * unit->second;
    if (!(nanoseconds < double(std::numeric_limits<std::int64_t>::max())))
        return {};
    return std::llround(negative ? -nanoseconds : nanoseconds);
}

bool MatchesGlob(std::string_view name, std::string_view glob)
{
    std::size_t at = 0;
    std::size_t in = 0;
    std::size_t star = std::string_view::npos;
    std::size_t starAt = 0;
    while (at < name.size()) {
        if (in < glob.size() && (glob[in] == '?' || (glob[in] == name[at] && glob[in] != '*'))) {
            ++at;
            ++in;
        } else if (in < glob.size() && glob[in] == '*') {
            star = in++;
            starAt = at;
        } else if (star != std::string_view::npos) {
            in = star + 1;
            at = ++starAt;
        } else {
            return false;
        }
    }
    while (in < glob.size() && glob[in] == '*')
        ++in;
    return in == glob.size();
}

std::optional<std::uint64_t> ParseLogNumber(std::string_view text)
{
    if (text.size() > 2 && text[0] == '0' && text[1] == 'x')
        return ParseDecimal(text.substr(2), 16);
    constexpr std::string_view zeros = "00000000 ";
    constexpr std::size_t group = zeros.size();
    if (text.size() == 4 * group) {
        char digits[4 * (group - 1)];
        char* end = digits;
        for (std::size_t i = 0; i < text.size(); i += group) {
            const std::string_view next = text.substr(i, group);
            if (next.back() != ' ')
                return {};
            if (end != digits || next != zeros)
                end = std::copy_n(next.begin(), group - 1, end);
        }
        return end == digits ? 0 : ParseDecimal({digits, std::size_t(end - digits)}, 16);
    }
    return ParseDecimal(text);
}

// ---- The filter -----------------------------------------------------------------------------------

class CallFilter::Impl
{
public:
    std::vector<Test> tests;
    bool needsContents = false;
};

CallFilter::CallFilter() : impl(std::make_unique<Impl>()) {}
CallFilter::CallFilter(CallFilter&&) noexcept = default;
CallFilter& CallFilter::operator=(CallFilter&&) noexcept = default;
CallFilter::~CallFilter() = default;

std::optional<CallFilter> CallFilter::Make(const FilterText& text, std::string& error)
{
    auto made = std::make_unique<Impl>();
    std::vector<Test>& tests = made->tests;

    if (!text.names.empty()) {
        std::vector<std::string> globs;
        for (const std::string_view glob : Split(text.names, ','))
            globs.emplace_back(glob);
        tests.push_back([globs](const Call& call) {
            return std::any_of(globs.begin(), globs.end(),
                               [&](const std::string& glob) { return MatchesGlob(call.name, glob); });
        });
    }
    if (text.failed)
        tests.push_back([](const Call& call) { return call.Failed(); });
    if (text.open)
        tests.push_back([](const Call& call) { return !call.Returned(); });

    if (!text.threads.empty()) {
        std::vector<std::pair<bool, std::uint64_t>> threads;  // by order of appearance?
        for (std::string_view thread : Split(text.threads, ',')) {
            const bool byOrder = !thread.empty() && (thread.front() == 'T' || thread.front() == 't');
            const auto number = ParseDecimal(byOrder ? thread.substr(1) : thread);
            if (!number) {
                error = Quoted(thread) + " is no thread: T1, T2 or a threadId";
                return {};
            }
            threads.emplace_back(byOrder, *number);
        }
        tests.push_back([threads](const Call& call) {
            return std::any_of(threads.begin(), threads.end(), [&](const auto& thread) {
                return thread.first ? call.thread != 0 && call.thread == thread.second
                                    : call.threadId == thread.second;
            });
        });
    }
    if (!text.calls.empty()) {
        std::vector<std::pair<std::uint64_t, std::uint64_t>> ranges;
        for (const std::string_view range : Split(text.calls, ',')) {
            constexpr std::string_view dots = "..";
            const std::size_t at = range.find(dots);
            const std::string_view first = range.substr(0, at);
            const std::string_view last =
                at == std::string_view::npos ? first : range.substr(at + dots.size());
            const auto from = first.empty() ? std::make_optional(std::uint64_t(0)) : ParseDecimal(first);
            const auto to = last.empty() ? std::make_optional(std::numeric_limits<std::uint64_t>::max())
                                         : ParseDecimal(last);
            if (range.empty() || !from || !to) {
                error = Quoted(range) + " is no range of calls: 55..68, 55.. or 68";
                return {};
            }
            ranges.emplace_back(*from, *to);
        }
        tests.push_back([ranges](const Call& call) {
            return std::any_of(ranges.begin(), ranges.end(), [&](const auto& range) {
                return range.first <= call.number && call.number <= range.second;
            });
        });
    }

    for (const bool isFrom : {true, false}) {
        const std::string& time = isFrom ? text.from : text.to;
        if (time.empty())
            continue;
        const auto limit = ParseDuration(time);
        if (!limit) {
            error = Quoted(time) + " is no time: 1.5 or 200ms";
            return {};
        }
        tests.push_back([isFrom, limit = *limit](const Call& call) {
            return call.callTime &&
                   (isFrom ? call.callTime->nanoseconds >= limit : call.callTime->nanoseconds <= limit);
        });
    }
    if (!text.slower.empty()) {
        const auto limit = ParseDuration(text.slower);
        if (!limit || *limit < 0) {
            error = Quoted(text.slower) + " is no duration: 1ms, 20us or 0.5";
            return {};
        }
        tests.push_back(
            [limit = *limit](const Call& call) { return call.Took() && *call.Took() > limit; });
    }
    if (!text.inside.empty()) {
        const auto number = ParseDecimal(text.inside);
        if (!number) {
            error = Quoted(text.inside) + " is no number of a call";
            return {};
        }
        tests.push_back([number = *number](const Call& call) {
            return std::find(call.ancestors.begin(), call.ancestors.end(), number) !=
                   call.ancestors.end();
        });
    }
    if (!text.where.empty()) {
        Test test = Expression(text.where, error, made->needsContents).Parse();
        if (!error.empty()) {
            error += " in " + Quoted(text.where);
            return {};
        }
        tests.push_back(std::move(test));
    }
    if (!text.grep.empty()) {
        made->needsContents = true;
        tests.push_back([grep = text.grep](const Call& call) {
            return call.name.find(grep) != std::string::npos ||
                   call.status.find(grep) != std::string::npos || Contains(call.arguments.Top(), grep) ||
                   Contains(call.results.Top(), grep);
        });
    }

    CallFilter filter;
    filter.impl = std::move(made);
    return filter;
}

bool CallFilter::Matches(const Call& call) const
{
    return std::all_of(impl->tests.begin(), impl->tests.end(),
                       [&](const Test& test) { return test(call); });
}

bool CallFilter::NeedsContents() const
{
    return impl->needsContents;
}

bool CallFilter::MatchesAll() const
{
    return impl->tests.empty();
}

}  // namespace ScrivelReader
