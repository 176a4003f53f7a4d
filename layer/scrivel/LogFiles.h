// The files of a log: their folder and their names.

#ifndef SCRIVEL_LAYER_LOGFILES_H
#define SCRIVEL_LAYER_LOGFILES_H

#include "scrivel/LogOptions.h"

#include <string>

namespace Scrivel2::Layer
{

// What a shared library shows, also when it is built to hide what isn't marked.
class [[gnu::visibility("default")]] LogFiles;

/// Makes the folder of a log, and chooses the names of its files: the legal form of the log's name, with
/// a number after it when there is a log of that name already, of this process or of an earlier one of
/// the same id.
///
///     "run"          run-4242.xml
///     "run" again    run-2-4242.xml
///
/// Files that follow the first, of a log with a limit of size, have its name and a number,
/// "run-4242.2.xml". Numbers that are in use are left out.
///
/// All lie in the same folder, whatever the current directory is later. A folder that can't be made or
/// waited for is reported on standard error. A log that is off has no files.
class LogFiles
{
public:
    explicit LogFiles(const Settings& settings);

    /// Whether files may be made: the log is on, and its folder is on the disk if the log is to outlive
    /// the machine.
    bool CanBegin() const { return canBegin; }

    /// What the generator is named after: "run" or "run-2".
    const std::string& LogName() const { return logName; }

    /// The first file, with its folder: "logs/run-4242.xml".
    const std::string& First() const { return first; }

    /// The same from the root folder on, for whoever makes it.
    const std::string& Place() const { return place; }

    /// Another name for the first file, when that one is in use.
    void Rename();

    /// The file that the log is in.
    const std::string& Current() const { return current; }

    /// The one after it, from the root folder on, for whoever makes it.
    const std::string& Next() const { return next; }

    /// Another name for the next one, when that one is in use.
    void RenameNext();

    /// The next file has been made: it is the current one.
    void GoOn();

    /// Says on standard error that a file could not be made, by the system's number for the reason.
    void Report(int problem) const;
    void ReportNext(int problem) const;

private:
    void NameFirst();
    void NameNext();

    std::string wanted;
    std::string folder;
    std::string wholeFolder;
    std::string end;  // of the first file's name
    std::string logName;
    std::string first;
    std::string place;
    std::string current;
    std::string next;
    unsigned int logNumber = 1;
    unsigned int nextNumber = 2;
    bool canBegin = false;
};

}  // namespace Scrivel2::Layer

#endif
