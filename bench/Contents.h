// That all contenders write the same: checked before anything is measured.

#ifndef SCRIVEL_BENCH_CONTENTS_H
#define SCRIVEL_BENCH_CONTENTS_H

#include <string>
#include <vector>

namespace ScrivelBench
{

/// What differs, one line each: a file that should be the library's byte by byte and isn't, or whose
/// elements, attributes and texts are not the library's. The times in the log are taken as equal.
std::vector<std::string> Differences();

/// Whether there are none; prints those that there are.
bool SameContents();

}  // namespace ScrivelBench

#endif
