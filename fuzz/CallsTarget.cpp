// The order of operations, with the plain generator as the judge.
//
// The input decides between two kinds of session. One takes any operations in any order and compares all
// that can be seen of the library's generator, after each operation, with the plain one: the file, the
// positions, the depth, results, messages. The other keeps to the calling order, calls interrupting
// calls, and has libxml2 read the file after each final flush as well. Each input goes both ways, with
// elements put down whole and with tags that go through the table.

#include "Input.h"
#include "Surroundings.h"

#include "judge/LogJudge.h"
#include "reference/PlainGenerator.h"
#include "reference/RandomOperations.h"
#include "reference/TextFile.h"
#include "support/GeneratorTest.h"

#include <array>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <vector>

namespace
{

using ScrivelFuzz::Input;
using ScrivelFuzz::Require;
using ScrivelFuzz::RequireEqual;
using ScrivelFuzz::Surroundings;
using ScrivelTest::TextFile;

class Decisions : public ScrivelTest::RandomSource
{
public:
    explicit Decisions(Input& bytes) : input(bytes) {}

    /// 1 when nothing is left: most chances are then missed, and what was begun ends soon.
    unsigned char Byte() override { return input.Ended() ? 1 : input.Byte(); }

private:
    Input& input;
};

/// The library's generator and the plain one side by side.
template <typename Library, typename Plain>
class Comparison
{
public:
    using Generator = ScrivelTest::Unprotected<Library>;

    /// The elements of a class that keeps its tags are put down whole, those of another go through the
    /// table.
    Comparison(Surroundings& around, const char* name, bool keepsTags)
        : surroundings(around), log(Made<Generator>(name)), plain(Made<Plain>(name))
    {
        if (keepsTags) {
            log = Made<ScrivelTest::Keeping<Generator>>(name);
        }
    }

    template <typename Operation>
    void Both(Operation operation)
    {
        const std::string ofLibrary = Seen(*log, operation);
        const std::string ofPlain = Seen(*plain, operation);
        RequireEqual(ofLibrary, ofPlain, "the plain generator shows something else");
        CompareFiles();
    }

    unsigned int Depth() const { return plain->depth; }
    void SetClock(long seconds, long microseconds) { surroundings.SetClock(seconds, microseconds); }
    void SetProcess(int id) { surroundings.SetProcess(id); }
    void SetThread(unsigned long id) { surroundings.SetThread(id); }
    void SetHost(const std::string& name) { surroundings.SetHost(name); }

    /// Deletes the library's generator: text that has not been flushed is lost.
    void Destroy()
    {
        log.reset();
        CompareFiles();
    }

    std::string FileText() const { return surroundings.LogText(plain->logFile.Name()); }

private:
    template <typename One>
    static std::unique_ptr<One> Made(const char* name)
    {
        if constexpr (std::is_constructible_v<One, const char*, const char*>) {
            return std::make_unique<One>(name, "CADI 2.0");
        } else {
            return std::make_unique<One>(name);
        }
    }

    /// Runs the operation and tells what it returned, threw and printed, and the state after it.
    template <typename Log, typename Operation>
    std::string Seen(Log& one, Operation operation)
    {
        std::ostringstream seen;
        try {
            if constexpr (std::is_void_v<decltype(operation(one))>) {
                operation(one);
            } else {
                seen << "returned " << operation(one) << "\n";
            }
        } catch (const std::logic_error&) {
            seen << "threw\n";
        }
        seen << surroundings.TakePrinted() << "call " << one.GetCallNo() << ", depth " << one.depth
             << ", at " << one.GetCurrentFilePointerPosition() << ", last "
             << one.GetLastFilePointerPosition() << ", state " << one.logFile.rdstate() << ", "
             << one.GetFileEndTag();
        return seen.str();
    }

    void CompareFiles() const
    {
        if (!plain->logFile.Name().empty()) {
            RequireEqual(FileText(), plain->logFile.Flushed(), "the plain generator's file is another");
        }
    }

    Surroundings& surroundings;
    std::unique_ptr<Generator> log;
    std::unique_ptr<Plain> plain;
};

// ---- Any order ----------------------------------------------------------------------------------

template <typename Library, template <typename> class Plain>
void AnyOrder(Input& input, Surroundings& surroundings, bool keepsTags)
{
    using Logs = Comparison<Library, Plain<TextFile>>;

    constexpr unsigned int mostSteps = 200;
    Decisions decisions(input);
    Logs logs(surroundings, decisions.OneIn(30) ? "missing/trace" : "trace", keepsTags);
    ScrivelTest::RandomOperations<Logs> operations(decisions, logs);
    for (unsigned int step = 0; step < mostSteps && !input.Ended(); ++step) {
        operations.Step();
    }
    logs.Destroy();
}

// ---- The calling order --------------------------------------------------------------------------

/// Calls as a logging layer makes them, with callbacks that interrupt them.
class OrderedCalls
{
public:
    OrderedCalls(Input& bytes, Surroundings& around, bool keepsTags)
        : input(bytes), surroundings(around), logs(around, "trace", keepsTags)
    {
        logs.Both([](auto& log) { log.StartLogging(); });
        RequireDocument();
        while (!input.Ended()) {
            if (input.Below(8) == 0) {
                CommentBetweenCalls();
            } else {
                Call(0);
            }
        }
        logs.Both([](auto& log) { log.EndLogging(); });
        RequireDocument();
        logs.Destroy();
    }

private:
    void RequireDocument() const
    {
        Require(logs.Depth() == 1, "between calls the depth is not that of the root");
        Require(ScrivelTest::IsDocument(logs.FileText()),
                "libxml2 finds no document after a final flush");
    }

    void Call(unsigned int level)
    {
        static const std::string names[] = {"CADIExecContinue", "CADIRegRead", "a", "CADIMemWrite"};
        const std::string& name = names[input.Below(4)];
        unsigned int number = 0;
        PassTime();
        logs.Both([&](auto& log) { return number = log.EnterCadiCall(name); });
        WriteSome();
        logs.Both([&](auto& log) { log.FlushOutput(false, name); });
        for (unsigned int callbacks = level < 5 ? input.Below(3) : 0; callbacks > 0; --callbacks) {
            Call(level + 1);
        }
        PassTime();
        logs.Both([&](auto& log) { log.WriteContinueFunction(number, name); });
        WriteSome();
        logs.Both([&](auto& log) { log.WriteIdent(name, false, true); });
        logs.Both([&](auto& log) { log.FlushOutput(true, ""); });
        RequireDocument();
    }

    void CommentBetweenCalls()
    {
        logs.Both([](auto& log) { log.WriteComment("between calls"); });
        logs.Both([](auto& log) { log.FlushOutput(true, ""); });
        RequireDocument();
    }

    void PassTime()
    {
        microseconds += input.Byte() * 4001L;
        surroundings.SetClock(1000 + microseconds / 1000000, microseconds % 1000000);
    }

    void WriteSome()
    {
        for (unsigned int writers = input.Below(4); writers > 0; --writers) {
            const unsigned int before = logs.Depth();
            WriteOne();
            Require(logs.Depth() == before, "a writer leaves another depth");
        }
    }

    void WriteOne()
    {
        switch (input.Below(5)) {
        case 0: {
            const unsigned long value = input.Number();
            return logs.Both([=](auto& log) { log.WriteDecimal("value", value); });
        }
        case 1: {
            const std::string text = input.Text(200);
            return logs.Both([&](auto& log) { log.WriteString("text", text); });
        }
        case 2: {
            // Of a length that brings the end of the flush to any place of any page.
            const std::string text(input.Below(33) * 256U + input.Byte(), 'x');
            return logs.Both([&](auto& log) { log.WriteString("text", text); });
        }
        case 3:
            return logs.Both([](auto& log) { log.WriteTimestamp("time", true); });
        default: {
            const auto bytes = input.Any<std::array<unsigned char, 8>>();
            return logs.Both([&](auto& log) { log.WriteUint8Array("bytes", bytes.data(), 8, true); });
        }
        }
    }

    Input& input;
    Surroundings& surroundings;
    Comparison<Scrivel2::Scrivel2XmlGenRun, ScrivelTest::PlainRun<TextFile>> logs;
    long microseconds = 0;
};

void LogAndCompare(const std::uint8_t* bytes, std::size_t size, bool keepsTags)
{
    Surroundings surroundings;
    Input input(bytes, size);
    switch (input.Below(5)) {
    case 0:
        AnyOrder<Scrivel2::ScrivelXmlGenBase, ScrivelTest::PlainBase>(input, surroundings, keepsTags);
        break;
    case 1:
        AnyOrder<Scrivel2::ScrivelXmlGenRunBase, ScrivelTest::PlainRunBase>(input, surroundings,
                                                                            keepsTags);
        break;
    case 2:
        AnyOrder<Scrivel2::Scrivel2XmlGenConnect, ScrivelTest::PlainConnect>(input, surroundings,
                                                                             keepsTags);
        break;
    case 3:
        AnyOrder<Scrivel2::Scrivel2XmlGenRun, ScrivelTest::PlainRun>(input, surroundings, keepsTags);
        break;
    default:
        OrderedCalls(input, surroundings, keepsTags);
        break;
    }
    RequireEqual(surroundings.TakePrinted(), "", "something was printed");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size)
{
    LogAndCompare(bytes, size, true);
    LogAndCompare(bytes, size, false);
    return 0;
}
