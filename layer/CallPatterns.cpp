// Patterns of names, and whether a call fits them. Tested by tests/layer/CallPatternsTest.cpp.

#include "scrivel/CallPatterns.h"

#include <algorithm>

namespace Scrivel2::Layer
{
namespace
{

/// Without the blanks at both ends.
std::string_view Trimmed(std::string_view text)
{
    const std::size_t first = text.find_first_not_of(' ');
    return first == text.npos ? std::string_view()
                              : text.substr(first, text.find_last_not_of(' ') - first + 1);
}

/// Takes the pattern's last "*" for the fewest characters, and for one more whenever the rest doesn't
/// fit.
bool Matches(std::string_view pattern, std::string_view name)
{
    std::size_t p = 0;
    std::size_t n = 0;
    std::size_t afterStar = pattern.npos;
    std::size_t coveredByStar = 0;
    while (n < name.size()) {
        if (p < pattern.size() && pattern[p] == '*') {
            afterStar = ++p;
            coveredByStar = n;
        } else if (p < pattern.size() && (pattern[p] == '?' || pattern[p] == name[n])) {
            ++p;
            ++n;
        } else if (afterStar != pattern.npos) {
            p = afterStar;
            n = ++coveredByStar;
        } else {
            return false;
        }
    }
    return pattern.find_first_not_of('*', p) == pattern.npos;
}

}  // namespace

CallPatterns::CallPatterns(std::string_view patterns)
{
    while (!patterns.empty()) {
        const std::size_t length = std::min(patterns.find(','), patterns.size());
        const std::string_view pattern = Trimmed(patterns.substr(0, length));
        if (!pattern.empty() && pattern.front() == '!') {
            unwanted.emplace_back(Trimmed(pattern.substr(1)));
        } else if (!pattern.empty()) {
            wanted.emplace_back(pattern);
        }
        patterns.remove_prefix(std::min(length + 1, patterns.size()));
    }
}

bool CallPatterns::Fits(std::string_view callName) const
{
    const auto fits = [&](const std::string& pattern) { return Matches(pattern, callName); };
    return (wanted.empty() || std::any_of(wanted.begin(), wanted.end(), fits)) &&
           std::none_of(unwanted.begin(), unwanted.end(), fits);
}

}  // namespace Scrivel2::Layer
