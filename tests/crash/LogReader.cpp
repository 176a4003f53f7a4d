// Counts what the calls of a log hold while the judge of logs reads it. Used by every crash program, on
// logs that nothing has disturbed as well.

#include "crash/LogReader.h"

#include "crash/SecondWitness.h"

#include <cstdlib>

namespace ScrivelTest
{
namespace
{

using VisitCall = std::function<void(const CallElement&)>;

/// Follows the elements of a log, and hands out each call's when it ends.
class CallCounter : public LogVisitor
{
public:
    CallCounter(LogContents& found, const VisitCall& visitCall) : contents(found), visit(visitCall) {}

    void Start(std::string_view name, const std::vector<Attribute>& attributes) override
    {
        ++contents.elements;
        ++depth;
        if (depth == 2) {
            const std::string number = ValueOf("call_num", attributes);
            call = {static_cast<unsigned int>(std::strtoul(number.c_str(), nullptr, 10)), {0, 0}, false};
            if (!ValueOf("call_time", attributes).empty()) {
                ++begun.calls;
                begun.last = call.number;
            }
        } else if (depth == 3) {
            inText = name == "text";
            call.returned = call.returned || name == "return_time";
        } else if (depth == 4 && name == "value") {
            ++call.contents.items;
        }
    }

    void End(std::string_view) override
    {
        --depth;
        inText = false;
        if (depth == 1) {
            visit(call);
        }
    }

    void Text(std::string_view piece) override
    {
        if (inText) {
            call.contents.characters += piece.size();
        }
    }

    const Testimony& Begun() const { return begun; }

private:
    LogContents& contents;
    const VisitCall& visit;
    unsigned int depth = 0;
    bool inText = false;
    CallElement call{};
    Testimony begun;
};

std::string Shown(const Testimony& testimony)
{
    return std::to_string(testimony.calls) + " calls up to " + std::to_string(testimony.last) + ", " +
           (testimony.whole ? "whole" : "not whole");
}

template <typename Judge>
Testimony Read(LogContents& contents, const VisitCall& visit, Judge judge)
{
    CallCounter counter(contents, visit);
    const Verdict verdict = judge(counter);
    contents.accepted = verdict.accepted;
    if (!verdict.accepted) {
        contents.problem = verdict.problem;
    }
    Testimony testimony = counter.Begun();
    testimony.whole = verdict.accepted;
    return testimony;
}

/// Reads bytes, and doesn't accept them when the second witness says something else of them.
void ReadByBoth(LogContents& contents, const VisitCall& visit, std::string_view bytes)
{
    const Testimony first =
        Read(contents, visit, [&](LogVisitor& counter) { return Visit(bytes, counter); });
    const std::optional<Testimony> second = SecondWitness(bytes);
    if (second && !(*second == first)) {
        contents.accepted = false;
        contents.problem = "libxml2 finds " + Shown(first) + ", the reader " + Shown(*second);
    }
}

/// Counts the calls of a load while someone reads.
template <typename Reader>
LogContents ReadAndCount(const Load* load, Reader read)
{
    LogContents contents;
    const auto count = [&](const CallElement& call) {
        if (load == nullptr || !contents.problem.empty()) {
            return;
        }
        if (call.number == contents.calls + 1 && call.contents == load->Contents(call.number)) {
            contents.calls = call.number;
        } else {
            contents.problem = "call " + std::to_string(contents.calls + 1) + " is not whole";
        }
    };
    read(contents, count);
    return contents;
}

}  // namespace

LogContents ReadLog(std::string_view bytes, const VisitCall& visit)
{
    LogContents contents;
    ReadByBoth(contents, visit, bytes);
    return contents;
}

LogContents ReadLog(std::string_view bytes, const Load* load)
{
    return ReadAndCount(
        load, [&](LogContents& contents, const VisitCall& visit) { ReadByBoth(contents, visit, bytes); });
}

LogContents ReadLogFile(const std::string& fileName, const Load* load)
{
    return ReadAndCount(load, [&](LogContents& contents, const VisitCall& visit) {
        Read(contents, visit, [&](LogVisitor& counter) { return VisitFile(fileName, counter); });
    });
}

}  // namespace ScrivelTest
