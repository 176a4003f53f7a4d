// The one thing that a kill can still do to a log: when the old tail, and the opening of the instruction
// behind it, lie across two pages, it can fall between the replacing of the one part and of the other.

#ifndef SCRIVEL_TESTS_CRASH_TAILACROSSPAGES_H
#define SCRIVEL_TESTS_CRASH_TAILACROSSPAGES_H

#include <functional>
#include <string>
#include <vector>

namespace ScrivelTest
{

/// Whether the file has been left like that: one of the `tails` put back before a page boundary, behind
/// which the rest of it stands, must make it a file that `isKept`.
bool IsTailHalfReplaced(const std::string& bytes, const std::vector<std::string>& tails,
                        const std::function<bool(const std::string&)>& isKept);

/// Whether so many such files among so many kills are as few as they should be.
inline bool IsRare(unsigned int halfReplaced, unsigned int kills)
{
    return halfReplaced <= 1 + kills / 1000;
}

}  // namespace ScrivelTest

#endif
