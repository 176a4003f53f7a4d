// The files of a log: their folder and their names.

#ifndef SCRIVEL_LAYER_LOGFILES_H
#define SCRIVEL_LAYER_LOGFILES_H

#include "scrivel/LogOptions.h"

#include <string>

namespace Scrivel2::Layer
{

// What a shared library shows, also when it is built to hide what isn't marked.
class [[gnu::visibility("default")]] LogFiles;

/// Makes the folder of a log and an empty file in it, so that no one else is given the name: the legal
/// form of the log's name, with a number after it when there is a log of that name already, of this
/// process or of an earlier one of the same id.
///
///     "run"          run-4242.xml
///     "run" again    run-2-4242.xml
///
/// Files that follow the first, of a log with a limit of size, have its name and a number,
/// "run-4242.2.xml". Numbers that are in use are left out.
///
/// What can't be made is reported on standard error. A log that is off has no files.
class LogFiles
{
public:
    explicit LogFiles(const Settings& settings);

    /// What the generator is named after: "run" or "run-2".
    const std::string& LogName() const { return logName; }

    /// The first file, with its folder: "logs/run-4242.xml".
    const std::string& First() const { return first; }

    /// The file that was made last.
    const std::string& Current() const { return current; }

    /// Makes the next file, empty, in the folder of the first, whatever the current directory is now.
    /// False when that can't be done.
    bool MakeNext();

private:
    std::string logName;
    std::string first;
    std::string current;
    std::string numbered;  // what the names of the next files begin with, folder and "."
    unsigned int number = 1;
};

}  // namespace Scrivel2::Layer

#endif
