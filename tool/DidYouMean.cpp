// The word that was meant. Tested by tests/tool/CommandLineTest.cpp.

#include "DidYouMean.h"

#include <algorithm>
#include <numeric>

namespace ScrivelTool
{

namespace
{

/// How many letters must be put in, taken out or replaced.
std::size_t Distance(std::string_view from, std::string_view to)
{
    std::vector<std::size_t> row(to.size() + 1);
    std::iota(row.begin(), row.end(), std::size_t(0));
    for (std::size_t i = 0; i < from.size(); ++i) {
        std::size_t diagonal = row[0];
        row[0] = i + 1;
        for (std::size_t j = 0; j < to.size(); ++j) {
            const std::size_t replaced = diagonal + (from[i] == to[j] ? 0 : 1);
            diagonal = row[j + 1];
            row[j + 1] = std::min({replaced, diagonal + 1, row[j] + 1});
        }
    }
    return row.back();
}

}  // namespace

std::string Nearest(std::string_view word, const std::vector<std::string>& known)
{
    // The hyphens in front of an option are in all of them.
    const std::size_t letters = word.size() - std::min(word.find_first_not_of('-'), word.size());
    std::string best;
    std::size_t least = letters / 3 + 1;
    for (const std::string& candidate : known) {
        const std::size_t distance = Distance(word, candidate);
        if (!candidate.empty() && distance <= least && (best.empty() || distance < least)) {
            best = candidate;
            least = distance;
        }
    }
    return best;
}

}  // namespace ScrivelTool
