// What one log says as a whole: what happened, to which call, and what was known then.

#ifndef SCRIVEL_TOOL_OVERVIEW_H
#define SCRIVEL_TOOL_OVERVIEW_H

#include <array>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "scrivel/CallFilter.h"
#include "scrivel/Knowledge.h"
#include "scrivel/LogInput.h"
#include "scrivel/LogProcess.h"
#include "scrivel/LogReader.h"

namespace ScrivelTool
{

/// One log, read to its end. It tells of the calls that the filter leaves; what is known of the target
/// comes from all. It keeps the calls that are open, the last ones that returned, and those that had when
/// an open one was entered, and no others.
class Overview final : public ScrivelReader::LogHandler
{
public:
    /// The filter must live as long.
    explicit Overview(const ScrivelReader::CallFilter& itsFilter) : chosen(itsFilter) {}

    void Header(const ScrivelReader::LogHeader& itsHeader) override { header = itsHeader; }
    void Entered(const ScrivelReader::Call& call) override;
    void TakenBack(const ScrivelReader::Call& call) override;
    void Ended(ScrivelReader::Call& call) override { Ended(call, known.AccessBy(call)); }
    void Damaged(const ScrivelReader::Damage& damage) override;

    /// The same for who has asked for its access already.
    void Ended(ScrivelReader::Call& call, const ScrivelReader::Access& access);
    /// The log has ended; looks for the process that wrote it.
    void Finish(const ScrivelReader::LogEnd& itsEnd, const ScrivelReader::LogInput& input);

    /// The innermost open call of each thread, the one that was entered last first.
    std::vector<const ScrivelReader::Call*> Innermost() const;
    /// The last calls that were entered before a call, the latest first.
    std::vector<const ScrivelReader::Call*> Before(const ScrivelReader::Call& call) const;
    /// An open call as it is named in a line: #55 CADIExecContinue.
    std::string OpenName(std::uint64_t number) const;
    bool IsFiltered() const { return !chosen.MatchesAll(); }
    /// That returned.
    const ScrivelReader::Call* LastCall() const { return last.get(); }
    bool WasEnded() const;
    /// The file that the log goes on in.
    std::string ContinuedIn() const;

    ScrivelReader::LogHeader header;
    ScrivelReader::LogEnd end;
    std::uint64_t entered = 0;
    std::uint64_t calls = 0;  ///< of them that the filter leaves
    std::uint64_t failed = 0;
    std::uint64_t open = 0;
    std::uint32_t threads = 0;
    bool hasThreads = false;
    std::vector<std::string> failures;  ///< numbers of the first ones
    std::optional<ScrivelReader::Damage> firstDamage;
    std::optional<ScrivelReader::Time> lastTime;
    ScrivelReader::Knowledge known;
    ScrivelReader::Writer writer = ScrivelReader::Writer::Elsewhere;
    std::optional<std::int64_t> sinceLastTime;  ///< nanoseconds since the file changed

private:
    using Kept = std::shared_ptr<const ScrivelReader::Call>;
    using LastOnes = std::array<Kept, 3>;  // the latest first, null when there are no more

    void Passed(const std::optional<ScrivelReader::Time>& time);
    void KeepOpen(ScrivelReader::Call& call, const LastOnes& itsBefore);
    /// Of the calls that have returned.
    LastOnes LastBefore(std::uint64_t entry) const;

    struct Open
    {
        ScrivelReader::Call call;
        LastOnes before;
    };

    const ScrivelReader::CallFilter& chosen;
    std::uint64_t contentEnd = 0;             // after the last element of a call
    std::map<std::uint32_t, Open> innermost;  // of the open calls, by thread
    std::map<std::uint64_t, std::string> openNames;
    std::map<std::uint64_t, Kept> recent;                // by entry
    std::unordered_map<std::uint64_t, LastOnes> before;  // by entry, as a call was entered
    Kept last;
};

/// What became of a call that had not returned, as far as anyone can know.
struct Verdict
{
    std::string heading;  ///< CALL 68 NEVER RETURNED, and process 4242 is gone
    std::string word;     ///< never returned
    std::string shortWord;
    bool isRunning = false;
};
Verdict VerdictOf(const Overview& log, const ScrivelReader::Call& call);
/// What the end of a log tells when every call has returned.
std::string EndText(const Overview& log);
/// damaged at line 1000 (byte 40486) and in 2 more places
std::string DamageText(const Overview& log);
/// run log, connection log
std::string KindText(const Overview& log);
/// run log of process 4242 on lab7; 2026-11-21 14:03:59; 78 KB; whole
std::vector<std::string> Facts(const Overview& log);

/// CADIExecGetInterrupts -> lines=01000
std::string ShortCall(const ScrivelReader::Call& call);
/// 0x40000000 is in block Timer "load value and count" (#15); first access to it
std::string AboutMemory(const ScrivelReader::Knowledge& known, const ScrivelReader::MemoryAccess& memory);
std::string AboutRegister(const ScrivelReader::Knowledge& known,
                          const ScrivelReader::RegisterAccess& touched);
/// pc 0x3000 (#61, target ran since)     x0 write refused (#52)
std::string KnownItem(const ScrivelReader::Knowledge& known, const ScrivelReader::KnownRegister& item);

}  // namespace ScrivelTool

#endif
