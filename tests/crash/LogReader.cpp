// Counts what the calls of a log hold while the judge of logs reads it. Used by every crash program, on
// logs that nothing has disturbed as well.

#include "crash/LogReader.h"

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

private:
    LogContents& contents;
    const VisitCall& visit;
    unsigned int depth = 0;
    bool inText = false;
    CallElement call{};
};

template <typename Judge>
void Read(LogContents& contents, const VisitCall& visit, Judge judge)
{
    CallCounter counter(contents, visit);
    const Verdict verdict = judge(counter);
    contents.accepted = verdict.accepted;
    if (!verdict.accepted) {
        contents.problem = verdict.problem;
    }
}

template <typename Judge>
LogContents ReadAndCount(const Load* load, Judge judge)
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
    Read(contents, count, judge);
    return contents;
}

}  // namespace

LogContents ReadLog(std::string_view bytes, const VisitCall& visit)
{
    LogContents contents;
    Read(contents, visit, [&](LogVisitor& counter) { return Visit(bytes, counter); });
    return contents;
}

LogContents ReadLog(std::string_view bytes, const Load* load)
{
    return ReadAndCount(load, [&](LogVisitor& counter) { return Visit(bytes, counter); });
}

LogContents ReadLogFile(const std::string& fileName, const Load* load)
{
    return ReadAndCount(load, [&](LogVisitor& counter) { return VisitFile(fileName, counter); });
}

}  // namespace ScrivelTest
