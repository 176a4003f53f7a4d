// Logs of many shapes, each of which comes out the same in every run, for the programs that rebuild what
// a death leaves of their writes.

#ifndef SCRIVEL_TESTS_CRASH_SCENARIO_H
#define SCRIVEL_TESTS_CRASH_SCENARIO_H

#include "LoggedCall.h"

#include "crash/Load.h"
#include "crash/Progress.h"
#include "crash/Session.h"

#include "support/FileChanges.h"

#include <cstddef>
#include <string>
#include <vector>

namespace ScrivelTest
{

/// A log of up to some 300 kB with sizes of calls, and a length of the root end tag, of its own. One in
/// five is logged through the logging layer, where calls interrupt each other, and one in five is
/// hostile: with raw elements that hold what ends comments, instructions or sections, a root name of up
/// to 250 bytes, and flushes that end about the end of a page. Of the others one in two lets its flushes
/// come in pieces.
class Scenario
{
public:
    explicit Scenario(unsigned int number,
                      Scrivel2::Durability durability = Scrivel2::Durability::Process);

    /// Logs all of it, and removes the file. The note of each change is how many flushes were done.
    /// Throws a std::logic_error when the changes are not what has made the file.
    std::vector<FileChange> Record();

    /// Whether a death that leaves this file loses nothing of so many flushes.
    bool IsKept(const std::string& file, unsigned int flushesDone) const;

    const std::string& Name() const { return logName; }

private:
    void Log(Progress& progress);
    void LogRawElements(Progress& progress);
    void LogThroughLayer(Progress& progress);
    void LogCall(Scrivel2::RunLog& log, Progress& progress, unsigned int interruptions);

    Scrivel2::Durability durability;
    bool layered;
    bool hostile;
    bool namedWithComment;  // hostile: "--" is in the name, and no text ends a section
    bool inPieces;
    std::string logName;
    unsigned int calls;
    Load load;
    Session session;
};

}  // namespace ScrivelTest

#endif
