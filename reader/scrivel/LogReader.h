// Bytes of a log in, calls out. The reader keeps the calls that have not returned, the element that it
// is reading, and nothing else of the log.
//
//     class Names : public ScrivelReader::LogHandler
//     {
//         void Ended(ScrivelReader::Call& call) override { std::cout << call.name << '\n'; }
//     };
//
//     Names names;
//     ScrivelReader::LogReader reader(names);
//     while (there are bytes)
//         reader.Feed(bytes);
//     ScrivelReader::LogEnd end = reader.Finish();
//
// A reader is used by one thread at a time; readers share nothing. No input makes it throw: what is wrong
// with a log comes as Damage, and reading goes on after it.

#ifndef SCRIVEL_READER_LOGREADER_H
#define SCRIVEL_READER_LOGREADER_H

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>

#include "scrivel/Call.h"

namespace ScrivelReader
{

/// Hears of what a log says, in this order for each call: Entered, Element for each of its elements,
/// Ended. Calls are entered in the order of the log, but end as they return; those that never did end
/// after the last byte, in order of entry.
class LogHandler
{
public:
    virtual ~LogHandler() = default;

    virtual void Header(const LogHeader&) {}
    /// The call's start tag was read: number, name, thread, time, ancestors and entry are known.
    virtual void Entered(const Call&) {}
    /// A whole element of a call ended: its place is call.parts.back(). What it says is in the call, but
    /// for a return time and status that a later element may bring.
    virtual void Element(const Call&) {}
    /// The call has returned, or had not when the log ended. The handler may move it away.
    virtual void Ended(Call&) {}
    /// The start tag of this call was announced, but its element is damaged: nothing else comes of it.
    virtual void TakenBack(const Call&) {}
    /// A comment between calls, without marks of interrupted and continued calls.
    virtual void Comment(std::string_view /*text*/, const Part&) {}
    /// A whole element without a number, between calls.
    virtual void Other(const Part&) {}
    /// Before Other, of an element that bears something else than a number where a call has its own:
    /// <CADIReset call_num="1x">. No call comes of it.
    virtual void Misnumbered(std::string_view /*name*/, std::string_view /*number*/, const Part&) {}
    virtual void Damaged(const Damage&) {}
};

struct ReadOptions
{
    /// Without them call.before, arguments and results stay empty, and reading is faster.
    bool contents = true;
    Tree::Limits limits;
    /// Calls that have not returned and are remembered: beyond, the oldest counts as never returned.
    std::size_t openCalls = 4096;
    /// Begin in the middle of a log, at the first line that begins a call; see LogFile.h.
    bool startWithin = false;
    /// Offset and line of the first byte that is fed.
    std::uint64_t offset = 0;
    std::uint64_t line = 1;
};

class LogReader
{
public:
    explicit LogReader(LogHandler& handler, const ReadOptions& options = {});
    ~LogReader();
    LogReader(const LogReader&) = delete;
    LogReader& operator=(const LogReader&) = delete;

    void Feed(std::string_view bytes);
    /// The log ends here: hands out the calls that have not returned. When more of it was to come, why it
    /// can't be read is given: that is damage, wherever it ends.
    LogEnd Finish(std::string_view cutOff = {});

private:
    class Impl;
    std::unique_ptr<Impl> impl;
};

}  // namespace ScrivelReader

#endif
