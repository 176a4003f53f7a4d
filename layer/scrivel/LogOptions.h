// What the one who makes a log may choose, and what the environment of the process makes of it.

#ifndef SCRIVEL_LAYER_LOGOPTIONS_H
#define SCRIVEL_LAYER_LOGOPTIONS_H

#include "scrivel/CallPatterns.h"
#include "scrivel/Durability.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace Scrivel2
{

/// How a log is kept. Each choice has an environment variable for whoever runs a program that can't be
/// compiled anew. What it says counts, whatever the program chooses; empty it says nothing.
///
///     Scrivel2::LogOptions options;
///     options.folder = "logs";
///     Scrivel2::RunLog log("run", options);     // logs/run-4242.xml
struct LogOptions
{
    /// Where the log's file is made; empty for the current directory. A folder that doesn't exist is
    /// made, with all those above it. SCRIVEL_LOG_DIR takes the place of this and of the folder in the
    /// log's name.
    ///
    ///     name        folder   SCRIVEL_LOG_DIR
    ///     run                                    run-4242.xml
    ///     logs/run                               logs/run-4242.xml
    ///     run         out                        out/run-4242.xml
    ///     logs/run    out                        out/logs/run-4242.xml
    ///     logs/run    out      /tmp/mine         /tmp/mine/run-4242.xml
    std::string folder{};

    /// Off, the log makes neither file nor folder, and a guard costs next to nothing. SCRIVEL_LOG=off
    /// turns every log off, SCRIVEL_LOG=on every log on.
    bool on = true;

    /// The calls that are logged, by their names: any number of patterns with commas between them. "*"
    /// stands for any characters, "?" for one. A call is logged when it fits one of them, or there is
    /// none, and fits none of those that begin with "!". Calls that are left out have no number.
    /// SCRIVEL_LOG_CALLS takes the place of this.
    ///
    ///     CADIMem*,CADIReg*            of memory and registers
    ///     !CADIExecGetMode             all but one
    ///     CADIMem*,!CADIMemGet*        of memory, except what describes it
    std::string calls{};

    /// The size in bytes from which on a file is full; 0 for none. The next call then begins a new file,
    /// run-4242.2.xml after run-4242.xml, as soon as no call is open, or at twice the size, whatever is
    /// open: such a call goes on in the new file in a second element of its number. Each file is a whole
    /// document that names the one before and the one after it in comments; numbers of calls go on, and
    /// times count from the beginning of the file that they are in. SCRIVEL_LOG_SIZE takes the place of
    /// this: a number of bytes, or one with K, M or G after it (1024, its square, its cube).
    std::uint64_t fileSize = 0;

    /// What the log outlives as a document, with all calls that have been written: the death of its
    /// process, or that of the machine, too. Then each flush waits for the disk, twice, and once a page
    /// and a few times more where it spans pages; a disk that can't do that makes the log fail.
    /// SCRIVEL_LOG_DURABILITY=machine and SCRIVEL_LOG_DURABILITY=process take the place of this.
    Durability durability = Durability::Process;
};

namespace Layer
{

// What a shared library shows, also when it is built to hide what isn't marked.
struct [[gnu::visibility("default")]] Settings;

/// A log's options with what the environment says in their place, and its name and folder apart.
struct Settings
{
    Settings(std::string_view logName, const LogOptions& options);

    std::string name;
    std::string folder;
    bool on;
    CallPatterns calls;
    std::uint64_t fileSize;
    Durability durability;
};

}  // namespace Layer

}  // namespace Scrivel2

#endif
