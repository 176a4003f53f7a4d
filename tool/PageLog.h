// What the page shows of one log, gathered while the log is read and written as JSON.
//
// A log with many calls doesn't fit into a page. Then the failed calls, the open ones, the slow ones and
// those around one call are kept; of all others numbers remain: how often, how long, and where it failed.

#ifndef SCRIVEL_TOOL_PAGELOG_H
#define SCRIVEL_TOOL_PAGELOG_H

#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "Durations.h"
#include "Overview.h"

namespace ScrivelTool
{

struct PageLimits
{
    std::size_t calls = 200 * 1000;              ///< beyond, calls are left out
    std::size_t slow = 1000;                     ///< the slowest, kept
    std::size_t window = 20 * 1000;              ///< calls kept around one, or at the end
    std::size_t details = 96 * 1024 * 1024;      ///< bytes of what the calls hold
    std::size_t accessBytes = 16 * 1024 * 1024;  ///< of registers and memory
    std::size_t accesses = 400 * 1000;
};

class PageLog final : public ScrivelReader::LogHandler
{
public:
    /// The calls that the filter leaves are told of, and what all did to the target. The filter must live
    /// as long.
    PageLog(std::string itsPath, const ScrivelReader::CallFilter& itsFilter,
            std::optional<std::uint64_t> itsAround, const PageLimits& itsLimits);
    ~PageLog() override;

    void Header(const ScrivelReader::LogHeader& header) override { overview.Header(header); }
    void Entered(const ScrivelReader::Call& call) override;
    void TakenBack(const ScrivelReader::Call& call) override;
    void Ended(ScrivelReader::Call& call) override;
    void Comment(std::string_view text, const ScrivelReader::Part& place) override;
    void Damaged(const ScrivelReader::Damage& damage) override;
    /// The log was read to its end.
    void Finish(const ScrivelReader::LogEnd& end, const ScrivelReader::LogInput& input);

    const Overview& What() const { return overview; }
    std::size_t Kept() const { return rows.size(); }
    /// Without the name of the host.
    void ForgetHost() { overview.header.hostName.clear(); }

    using Write = std::function<bool(std::string_view)>;
    /// The log as one JSON object, no line of it with a <.
    bool WriteData(const Write& write) const;
    /// What the calls hold: a JSON array a line, in the order of the rows.
    bool WriteDetails(const Write& write) const;

private:
    struct Begun  // a call that has not ended
    {
        std::uint64_t seen;  // accesses that had ended by then
        std::uint64_t runs;
    };

    struct Row
    {
        std::uint64_t entry = 0;
        std::uint64_t number = 0;
        std::uint32_t occurrence = 1;
        std::string name;
        std::uint32_t thread = 0;
        std::optional<std::uint64_t> parent;
        std::uint64_t depth = 0;
        std::optional<ScrivelReader::Time> entered;
        std::optional<ScrivelReader::Time> returned;
        std::string status;
        bool failed = false;
        bool clockSetBack = false;
        std::optional<std::int64_t> took;
        std::uint64_t span = 1;  // calls entered until it returned, itself among them
        Begun begun{};
        std::string details;
    };

    enum class Outcome
    {
        Refused,
        Done,
        Open,
    };

    struct Touch
    {
        std::uint64_t entry = 0;
        std::uint64_t number = 0;
        bool isRegister = false;
        std::size_t place = 0;  // which register, or which space
        ScrivelReader::Way way = ScrivelReader::Way::Read;
        Outcome outcome = Outcome::Done;
        bool whileRunning = false;
        std::uint64_t runs = 0;
        std::uint64_t address = 0;
        std::uint64_t size = 0;
        std::string bytes;
    };

    struct Name  // all calls of a name, kept or not
    {
        std::uint64_t calls = 0;
        std::uint64_t failed = 0;
        std::uint64_t open = 0;
        Durations took;
        std::map<int, std::uint64_t> bins;
    };

    struct Stretch  // calls one after another, kept or not
    {
        std::uint64_t calls = 0;
        std::uint64_t failed = 0;
        std::uint64_t open = 0;
        std::int64_t longest = 0;
    };

    struct Note
    {
        std::uint64_t entry;
        std::string text;
    };

    class Words;  // a list of texts, each once

    void Count(const ScrivelReader::Call& call);
    void Keep(const ScrivelReader::Call& call, const Begun& begun);
    void KeepAccess(const ScrivelReader::Call& call, const ScrivelReader::Access& access);
    void Keep(Touch&& touch);
    void LeaveOut();
    bool IsNear(const Row& row) const;
    std::string Details(const ScrivelReader::Call& call);

    const std::string path;
    const std::optional<std::uint64_t> around;
    const PageLimits limits;
    const ScrivelReader::CallFilter& chosen;
    Overview overview;

    std::uint64_t entered = 0;
    std::unordered_map<std::uint64_t, Begun> begun;  // by entry
    std::deque<Row> rows;
    std::size_t detailsBytes = 0;
    std::vector<std::int64_t> slowest;  // a heap, the shortest of them first
    bool leftOut = false;
    bool leftOutFailed = false;

    std::map<std::string, Name> names;
    std::vector<Stretch> stretches;
    std::uint64_t perStretch = 1;
    std::vector<std::string> threads;
    std::vector<Note> comments;
    std::vector<Note> damages;
    std::unique_ptr<Words> elements;

    std::deque<Touch> touches;
    std::uint64_t forgotten = 0;  // touches in front of those
    std::size_t touchedBytes = 0;
    std::map<std::pair<std::uint64_t, std::uint64_t>, std::size_t> registerNumbers;
    std::vector<ScrivelReader::RegisterAccess> registers;  // which register each is
    std::map<std::string, std::size_t> spaceNumbers;
};

}  // namespace ScrivelTool

#endif
