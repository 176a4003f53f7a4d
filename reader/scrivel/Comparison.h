// Two calls of two runs, and what they differ in. What no two runs have in common is left out: times,
// threads, numbers. Addresses of the logging process are compared by what they stand for: the one in the
// one run for the other one in the other, throughout.
//
//     ComparisonRules rules({"arg.callback", "status"});
//     Fingerprint print = rules.Of(call);            whole call by whole call: see Alignment.h
//     for (const Difference& difference : rules.Compare(left, right, renaming)) ...

#ifndef SCRIVEL_READER_COMPARISON_H
#define SCRIVEL_READER_COMPARISON_H

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "scrivel/Call.h"

namespace ScrivelReader
{

/// What of a call is compared, as numbers that are equal when it is; whatever its host pointers are.
struct Fingerprint
{
    std::uint64_t name = 0;
    std::uint64_t request = 0;            ///< the name and the arguments
    std::uint64_t whole = 0;              ///< and what came back
    std::vector<std::uint64_t> pointers;  ///< in the order of the log
};

/// Which host pointer of the one run stands for which of the other. Each pair of calls that are compared
/// votes for the pairs of its pointers; Settle then takes those that most voted for, one to one.
class PointerRenaming
{
public:
    /// The calls' places in their logs, for Renamed.
    void Vote(const std::vector<std::uint64_t>& left, const std::vector<std::uint64_t>& right,
              std::uint64_t place);
    void Settle();

    bool Same(std::uint64_t left, std::uint64_t right) const;
    bool Same(const std::vector<std::uint64_t>& left, const std::vector<std::uint64_t>& right) const;

    struct Renamed
    {
        std::uint64_t left;
        std::uint64_t right;
        std::vector<std::uint64_t> places;  ///< the first ones that voted for it
    };
    /// Those that are not the same number on both sides, in the order of their first places.
    std::vector<Renamed> All() const;

private:
    struct Votes
    {
        std::uint64_t count = 0;
        std::vector<std::uint64_t> places;
    };

    std::map<std::pair<std::uint64_t, std::uint64_t>, Votes> votes;
    std::unordered_map<std::uint64_t, std::uint64_t> renamed;
    std::unordered_map<std::uint64_t, std::uint64_t> back;
};

/// A value that differs. A side that hasn't it has no text.
struct Difference
{
    enum class Kind
    {
        Text,
        Register,  ///< its bytes as the log writes them: 00000000 00000000 00000000 00001002
        Bytes,     ///< of an array, one char each
    };

    std::string path;  ///< result.reg.a0: element names, with a number where several bear one
    Kind kind = Kind::Text;
    std::optional<std::string> left;
    std::optional<std::string> right;
};

class ComparisonRules
{
public:
    /// Paths that are left out: of arguments and results, arg.PATH, result.PATH, or PATH in both; a path
    /// ends with what is given, as in a filter. What stands below is left out, too.
    explicit ComparisonRules(const std::vector<std::string>& ignored = {});

    Fingerprint Of(const Call& call) const;

    std::vector<Difference> Compare(const Call& left, const Call& right,
                                    const PointerRenaming& renaming) const;

private:
    struct Ignored
    {
        std::string side;  // arg, result, or empty for both
        std::vector<std::string> names;
    };
    class Printer;
    class Comparer;

    bool Ignores(std::string_view side, const std::vector<std::string_view>& path) const;

    std::vector<Ignored> ignored;
};

}  // namespace ScrivelReader

#endif
