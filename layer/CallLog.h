// One log and its lock.

#ifndef SCRIVEL_LAYER_CALLLOG_H
#define SCRIVEL_LAYER_CALLLOG_H

#include "scrivel/ClassicLocale.h"
#include "scrivel/CompleteFileGenerator.h"
#include "scrivel/ForkCount.h"
#include "scrivel/LogFiles.h"
#include "scrivel/LogLock.h"
#include "scrivel/LogOptions.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdint>
#include <ios>
#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace Scrivel2
{

// What a shared library shows, also when it is built to hide what isn't marked.
template <typename Generator>
class [[gnu::visibility("default")]] CallLog;
class [[gnu::visibility("default")]] RunLog;

template <typename Generator>
class LoggedCall;

/// A log of calls, from its construction until EndLogging or its destruction. LoggedCall writes the
/// calls; `Generator` is Scrivel2XmlGenRun or Scrivel2XmlGenConnect. Any thread may log at any time.
/// LoggedCalls refer to their log: it must outlive them.
///
/// A thread that is in the midst of logging is refused when it comes to the same log again: from within a
/// callable that writes values, or in the handler of a signal that came meanwhile. What it would write is
/// not logged, and it doesn't wait. A handler may end the log all the same.
///
/// A child that the process forks does not log: what it would write belongs to the parent's file. It may
/// start logs of its own.
template <typename Generator>
class CallLog
{
public:
    /// Starts a log, run-4242.xml for the name "run". A folder in the name is taken as one; LogOptions
    /// tells where the file is made. A name that XML doesn't allow is made legal, and one that is in use
    /// gets a number (LogFiles): nothing is overwritten. Where process ids come again, DatedName("run")
    /// tells the logs apart. A folder or a file that can't be made or waited for is reported on standard
    /// error, and what is logged is lost.
    explicit CallLog(std::string_view name, const LogOptions& options = {})
        : settings(name, options), files(settings), forkCount(Layer::ForkCount()),
          ended(!files.CanBegin()), fullAt(settings.fileSize), generator(files.LogName().c_str())
    {
        if (!ended) {
            Start();
        }
    }

    CallLog(const CallLog&) = delete;
    CallLog& operator=(const CallLog&) = delete;

    /// As EndLogging. When there is no memory for the end, the file stays the document that it is.
    ~CallLog() { EndInDestructor(); }

    /// Completes and closes the file. Calls that have not returned yet stay in it as they are; what is
    /// logged from now on is dropped. Throws when there is no memory for the end: then the log goes on.
    ///
    /// A handler may call this in a thread that is in the midst of logging. Then the file stays the
    /// document that it is, what has been begun is dropped, and the log is closed when the thread goes
    /// on.
    void EndLogging()
    {
        const Access log{*this};
        if (log) {
            End();
        } else if (log.IsRefused()) {
            endIsDue = true;
        }
    }

    /// Whether calls of that name are logged: the log is on, and its options don't leave them out.
    bool Takes(std::string_view callName) const { return settings.on && settings.calls.Takes(callName); }

    /// The log's (first) file, as seen from the directory that was the current one at its start; empty
    /// when the log is off.
    const std::string& FileName() const { return files.First(); }

    /// Whether the log goes on: it is on, was opened, not ended, and every write has gone well so far.
    /// False where a thread in the midst of logging asks, which may log nothing then.
    bool IsGood()
    {
        const Access log{*this};
        return log && log->IsGood();
    }

    /// How many calls are not in the log because they were made by a thread in the midst of logging.
    unsigned int RefusedCalls() const { return refusedCalls; }

    /// Writes a comment between two calls, or at the end of the call that is running. The text may be
    /// any; "--", "?>" and what XML doesn't allow are changed (CommentText).
    ///
    ///     <!-- loaded crc.elf -->
    void Comment(std::string_view text)
    {
        if (const Access log{*this}) {
            log->WriteCommentAndFlush(text);
        }
    }

protected:
    /// The generator, for one thread at a time: locks the log while it lives. False when nothing may be
    /// written, because the log has ended, the thread has access already, or the process is a forked
    /// child (whose copy of the lock may be held by a thread that it doesn't have).
    class Access
    {
    public:
        explicit Access(CallLog& accessed) : callLog(accessed)
        {
            if (callLog.forkCount != Layer::ForkCount() || !turn.emplace(callLog.lock).HasBegun()) {
                return;
            }
            if (turn->FollowsADeadThread()) {
                callLog.generator.TakeBack();
            }
            if (!callLog.ended) {
                locale.emplace();
                generator = &callLog.generator;
            }
        }

        ~Access()
        {
            if (generator != nullptr && callLog.endIsDue && !callLog.ended) {
                callLog.EndIfThereIsMemory();
            }
        }

        Access(const Access&) = delete;
        Access& operator=(const Access&) = delete;

        explicit operator bool() const { return generator != nullptr; }
        Layer::CompleteFileGenerator<Generator>& operator*() const { return *generator; }
        Layer::CompleteFileGenerator<Generator>* operator->() const { return generator; }

        /// Whether the thread has access already.
        bool IsRefused() const { return turn && !turn->HasBegun(); }

    private:
        CallLog& callLog;
        std::optional<Layer::LogLock::Turn> turn;
        std::optional<Layer::ClassicLocale> locale;
        Layer::CompleteFileGenerator<Generator>* generator = nullptr;
    };

    void EndInDestructor() noexcept
    {
        if (const Access log{*this}) {
            EndIfThereIsMemory();
        }
    }

private:
    friend class LoggedCall<Generator>;

    void Start()
    {
        generator.SetDurability(settings.durability);
        int problem = EEXIST;
        while ((problem = generator.StartIn(files.LogName(), files.Place())) == EEXIST) {
            files.Rename();
        }
        if (problem != 0) {
            files.Report(problem);
        }
    }

    /// To be called by the thread that has the log, as are those below.
    void End()
    {
        generator.EndLogging();
        ended = true;
    }

    void EndIfThereIsMemory() noexcept
    {
        try {
            End();
        } catch (...) {
            // std::bad_alloc: the file stays the document that it is.
        }
    }

    /// To be called before a call is entered: begins the next file when this one is full.
    void GoOnInNextFileWhenFull()
    {
        const std::streamoff written = generator.GetLastFilePointerPosition();
        const auto size = static_cast<std::uint64_t>(std::max<std::streamoff>(written, 0));
        const bool full = settings.fileSize > 0 && size >= fullAt && generator.GetCallNo() > callsBefore;
        if (!full || (openCalls > 0 && size - fullAt < settings.fileSize)) {
            return;
        }
        if (const int problem = GoOnInNextFile(); problem != 0) {
            files.ReportNext(problem);
            fullAt = size + settings.fileSize;  // no attempt at every call
        } else {
            fullAt = settings.fileSize;
            callsBefore = generator.GetCallNo();
        }
    }

    /// Returns 0, or the system's number for the reason why the log is where it was.
    int GoOnInNextFile()
    {
        int problem = EEXIST;
        while ((problem = generator.GoOnIn(files.Next(), files.Current())) == EEXIST) {
            files.RenameNext();
        }
        if (problem == 0) {
            files.GoOn();
        }
        return problem;
    }

    Layer::Settings settings;
    Layer::LogFiles files;
    unsigned int forkCount;
    Layer::LogLock lock;
    bool ended;
    std::atomic<bool> endIsDue{false};  // a handler has ended the log in the midst of an access
    std::atomic<unsigned int> refusedCalls{0};
    unsigned int openCalls = 0;    // guards that have entered a call and not returned
    std::uint64_t fullAt;          // the size from which on the file is full
    unsigned int callsBefore = 0;  // those in the files before this one
    Layer::CompleteFileGenerator<Generator> generator;
};

/// The log of the calls with which a debugger finds factories, simulations and targets.
using ConnectLog = CallLog<Scrivel2XmlGenConnect>;

/// The log of the calls of a debugger on an attached target. It learns the names of registers and memory
/// spaces from what the target describes, and from then on values bear them:
///
///     <reg>                                  <location>
///         <a0>                                   <spaceId>1</spaceId>
///             <regNumber>10</regNumber>          <spaceName>RAM</spaceName>
class RunLog : public CallLog<Scrivel2XmlGenRun>
{
public:
    explicit RunLog(std::string_view name, const LogOptions& options = {});
    ~RunLog();

    /// To be called with what the target has returned. Later descriptions of the same register or space
    /// take the place of earlier ones. A null pointer teaches nothing.
    void LearnRegisters(const eslapi::CADIRegInfo_t* infos, unsigned int count);
    void LearnMemSpaces(const eslapi::CADIMemSpaceInfo_t* spaces, unsigned int count);

private:
    std::map<unsigned int, std::string> registerNames;
    std::map<unsigned int, std::string> memSpaceNames;
};

}  // namespace Scrivel2

#endif
