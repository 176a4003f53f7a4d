// The logging layer: calls of several threads that interrupt each other and return in any order,
// callbacks, callables that throw, writes and opens that fail.
//
// What must hold whatever happens: the file is a document after every step. While no write has failed,
// every call that was made, each argument and each result is in it, once and in its place. Calls that are
// properly nested leave the bytes that the plain generator writes.

#include "Input.h"
#include "Surroundings.h"

#include "LoggedCall.h"

#include "judge/LogJudge.h"
#include "reference/PlainGenerator.h"
#include "reference/TextFile.h"

#include <algorithm>
#include <cerrno>
#include <map>
#include <memory>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace
{

using ScrivelFuzz::Input;
using ScrivelFuzz::Require;
using ScrivelFuzz::RequireEqual;
using ScrivelFuzz::Surroundings;

/// One value among arguments or results: what is written, and what a reader sees of it.
struct Value
{
    std::string name;
    std::string text;
};

std::vector<Value> SomeValues(Input& input)
{
    std::vector<Value> values(input.Below(4));
    for (Value& value : values) {
        value.name = std::string(1, static_cast<char>('a' + input.Below(26)));
        const char c = static_cast<char>(' ' + input.Below('~' - ' '));
        // Now and then as long as a page, or several.
        const unsigned int length = input.Below(4) == 0 ? input.Byte() * 40U : input.Below(30);
        value.text = std::string(length, c);
    }
    return values;
}

template <typename Log>
void WriteValues(Log& log, const std::vector<Value>& values)
{
    for (const Value& value : values) {
        log.WriteString(value.name, value.text);
    }
}

struct TargetFault
{
};

// ---- Calls in any order -------------------------------------------------------------------------

/// Up to eight calls at a time, each begun, given its arguments and ended when the input says so.
template <typename Log, typename Generator>
class Interleaving
{
public:
    Interleaving(Input& bytes, Surroundings& around) : input(bytes), surroundings(around)
    {
        FailWrites();
        std::string name = input.Text(20);
        std::replace(name.begin(), name.end(), '/', '_');  // no folders: the log is a file in memory
        Log log(name);
        if (const std::string told = surroundings.TakePrinted(); !told.empty()) {
            Require(mayLose && told.rfind("Scrivel: Unable to open logfile \"", 0) == 0,
                    "a log isn't made, and no write has failed");
            Require(!log.IsGood(), "a log without a file is good");
            return;
        }
        while (!input.Ended()) {
            Step(log);
            Check(log);
        }
        for (; !calls.empty(); calls.pop_back()) {
            Expect(calls.back().number, {{"return_time", ""}});
        }
        Check(log);
        log.EndLogging();
        ended = true;
        Check(log);
    }

private:
    using Call = Scrivel2::LoggedCall<Generator>;

    struct Running
    {
        std::unique_ptr<Call> call;
        unsigned int number;
    };

    /// After some writes, once or from then on: an error, an interruption, part of the bytes.
    void FailWrites()
    {
        const unsigned int kind = input.Below(6);
        if (kind < 2) {
            return;
        }
        unsigned int before = input.Byte();
        const bool once = input.Flag();
        const unsigned int part = input.Byte();
        bool over = false;
        surroundings.LimitWrites([=](std::size_t size) mutable -> ssize_t {
            if (over || before > 0) {
                before -= before > 0 ? 1 : 0;
                return static_cast<ssize_t>(size);
            }
            over = once;
            switch (kind) {
            case 2:
                return -ENOSPC;
            case 3:
                over = true;
                return -EINTR;  // for ever would be a hang of the system, not a fault
            case 4:
                return std::max<ssize_t>(1, static_cast<ssize_t>(size * part / 256));
            default:
                over = once || part % 2 == 0;
                return part % 4 == 0 ? 0 : -EIO;
            }
        });
        mayLose = kind == 2 || kind == 5;
    }

    void Step(Log& log)
    {
        surroundings.SetThread(input.Below(3));
        switch (input.Below(10)) {
        case 0:
        case 1:
        case 2:
            return Begin(log);
        case 3:
        case 4:
            return GiveArguments();
        case 5:
        case 6:
        case 7:
            return End();
        case 8:
            return log.Comment(input.Text(40));
        default:
            return Rarely(log);
        }
    }

    void Begin(Log& log)
    {
        static const std::string names[] = {"CADIExecContinue", "modeChange", "a", "b-c.d",
                                            "CADIRegRead"};
        if (calls.size() == 8) {
            return;
        }
        const std::string& name = names[input.Below(5)];
        Running running;
        if (input.Flag()) {
            running.call = std::make_unique<Call>(log, name);
            running.number = running.call->Number();
        } else {
            const std::vector<Value> values = SomeValues(input);
            running.call =
                std::make_unique<Call>(log, name, [&](auto& xml) { WriteValues(xml, values); });
            running.number = running.call->Number();
            Expect(running.number, values);
        }
        Require((running.number == 0) == ended, "a call of an ended log has a number, or none before");
        numbers += ended ? 0 : 1;
        Require(ended || running.number == numbers, "the calls are numbered otherwise");
        expected[running.number];
        calls.push_back(std::move(running));
    }

    void GiveArguments()
    {
        if (!calls.empty()) {
            Running& running = calls[input.Below(static_cast<unsigned int>(calls.size()))];
            Write(running.number, [&](auto write) { running.call->Arguments(write); });
        }
    }

    void End()
    {
        if (calls.empty()) {
            return;
        }
        const auto ending = calls.begin() + input.Below(static_cast<unsigned int>(calls.size()));
        Expect(ending->number, {{"return_time", ""}});
        if (input.Below(4) > 0) {
            Write(ending->number, [&](auto write) { ending->call->Results(write); });
        }
        calls.erase(ending);
    }

    /// Writes some values through the guard; sometimes the callable throws after them, and they are
    /// blanked out.
    template <typename Give>
    void Write(unsigned int number, Give give)
    {
        const std::vector<Value> values = SomeValues(input);
        if (input.Below(5) > 0) {
            give([&](auto& xml) { WriteValues(xml, values); });
            return Expect(number, values);
        }
        bool thrown = false;
        try {
            give([&](auto& xml) {
                WriteValues(xml, values);
                throw TargetFault();
            });
        } catch (const TargetFault&) {
            thrown = true;
        }
        Require(thrown || ended, "an exception of a callable is lost");
    }

    void Rarely(Log& log)
    {
        switch (input.Below(8)) {
        case 0:
            log.EndLogging();
            ended = true;
            return;
        case 1:
            return TwoThreads(log);
        case 2: {
            long more = input.Byte();
            return surroundings.SetClock(1000 + more, more * 1000);
        }
        default:
            return;
        }
    }

    /// Which of the two comes first is open; both must be found.
    void TwoThreads(Log& log)
    {
        const std::vector<Value> values = SomeValues(input);
        unsigned int given[2] = {};
        const auto make = [&](unsigned int which) {
            Call call(log, "concurrent");
            call.Arguments([&](auto& xml) { WriteValues(xml, values); });
            call.Results([&](auto& xml) { WriteValues(xml, values); });
            given[which] = call.Number();
        };
        std::thread other(make, 0);
        make(1);
        other.join();
        for (const unsigned int number : given) {
            Expect(number, values);
            Expect(number, {{"return_time", ""}});
            Expect(number, values);
        }
        numbers += ended ? 0 : 2;
    }

    void Expect(unsigned int number, const std::vector<Value>& values)
    {
        if (!ended) {
            expected[number].insert(expected[number].end(), values.begin(), values.end());
        }
    }

    void Check(Log& log)
    {
        const std::string text = surroundings.LogText(log.FileName());
        if (mayLose && text.empty()) {
            return;  // not even the header could be written
        }
        const auto elements = ScrivelTest::Elements(text);
        Require(elements.has_value(), "libxml2 finds no document");
        if (mayLose) {
            return;
        }
        Require(ended || log.IsGood(), "the log has failed without a failed write");

        std::map<unsigned int, std::vector<Value>> found;
        unsigned int number = 0;
        for (const auto& element : *elements) {
            if (element.level == 1) {
                const std::string call = ScrivelTest::ValueOf("call_num", element.attributes);
                Require(!call.empty(), "an element between calls");
                number = static_cast<unsigned int>(std::stoul(call));
                found[number];
            } else if (element.level == 2) {
                found[number].push_back({element.name, element.text});
            } else {
                Require(element.level == 0, "an element inside a value");
            }
        }
        Require(found.size() == expected.size() - expected.count(0), "the number of calls is another");
        for (const auto& [call, values] : found) {
            const std::vector<Value>& wanted = expected[call];
            Require(values.size() == wanted.size(), "a call has another number of values");
            for (std::size_t i = 0; i < values.size(); ++i) {
                RequireEqual(values[i].name, wanted[i].name, "a value has another name");
                if (values[i].name != "return_time") {
                    RequireEqual(values[i].text, wanted[i].text, "a value has another text");
                }
            }
        }
    }

    Input& input;
    Surroundings& surroundings;
    std::vector<Running> calls;
    std::map<unsigned int, std::vector<Value>> expected;
    unsigned int numbers = 0;
    bool mayLose = false;
    bool ended = false;
};

// ---- Nested calls -------------------------------------------------------------------------------

/// Calls and callbacks within them, on the layer and on the plain generator, whose bytes must be the same
/// once a call has returned.
class Nesting
{
public:
    Nesting(Input& bytes, Surroundings& around)
        : input(bytes), surroundings(around), log("trace"), plain("trace")
    {
        plain.StartLogging();
        while (!input.Ended()) {
            Call(0);
        }
        log.EndLogging();
        plain.EndLogging();
        Compare("\n<!-- Log ended -->\n\n");
    }

private:
    void Call(unsigned int level)
    {
        static const std::string names[] = {"CADIExecContinue", "modeChange", "a"};
        const std::string& name = names[input.Below(3)];
        const std::vector<Value> arguments = SomeValues(input);
        const std::vector<Value> results = SomeValues(input);

        Scrivel2::LoggedCall call(log, name);
        call.Arguments([&](auto& xml) { WriteValues(xml, arguments); });
        const unsigned int number = plain.EnterCadiCall(name);
        WriteValues(plain, arguments);
        plain.FlushOutput(false, name);

        for (unsigned int callbacks = level < 5 ? input.Below(3) : 0; callbacks > 0; --callbacks) {
            Call(level + 1);
        }
        const long passed = input.Byte();
        surroundings.SetClock(1000 + passed, passed);

        call.Results([&](auto& xml) { WriteValues(xml, results); });
        plain.WriteContinueFunction(number, name);
        WriteValues(plain, results);
        plain.WriteIdent(name, false, true);
        plain.FlushOutput(true, "");
        Compare();
    }

    /// `lastWords` are what the layer adds before the root end tag.
    void Compare(const std::string& lastWords = "") const
    {
        std::string text = plain.logFile.Flushed();
        text.insert(text.rfind("</trace"), lastWords);
        RequireEqual(surroundings.LogText(log.FileName()), text, "the plain generator's file is another");
    }

    Input& input;
    Surroundings& surroundings;
    Scrivel2::RunLog log;
    ScrivelTest::PlainRun<ScrivelTest::TextFile> plain;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size)
{
    Surroundings surroundings;
    Input input(bytes, size);
    std::string printed;
    switch (input.Below(8)) {
    case 0:
        Nesting(input, surroundings);
        break;
    case 1: {
        surroundings.FailOpen(EACCES);
        Scrivel2::RunLog log("trace");
        Scrivel2::LoggedCall call(log, "a");
        call.Arguments([](auto& xml) { xml.WriteDecimal("b", 1); });
        Require(!log.IsGood(), "a log without a file is good");
        printed = "Scrivel: Unable to open logfile \"trace-4242.xml\".\n"
                  "    Error given by OS: Permission denied\n";
        break;
    }
    case 2:
    case 3:
        Interleaving<Scrivel2::ConnectLog, Scrivel2::Scrivel2XmlGenConnect>(input, surroundings);
        break;
    default:
        Interleaving<Scrivel2::RunLog, Scrivel2::Scrivel2XmlGenRun>(input, surroundings);
        break;
    }
    RequireEqual(surroundings.TakePrinted(), printed, "something else was printed");
    return 0;
}
