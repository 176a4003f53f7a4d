// Calls of which several are open at once, in every order in which they can be entered, given their
// arguments, and end.

#include "LoggedCall.h"

#include "layer/CallReader.h"
#include "support/GeneratorTest.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <optional>
#include <type_traits>
#include <vector>

using namespace Scrivel2;

namespace
{

/// Every order of `stepsPerCall` steps of each of `calls` calls: the calls whose steps they are, by
/// numbers from 0 on in the order in which they are entered.
std::vector<std::vector<std::size_t>> Orders(std::size_t calls, std::size_t stepsPerCall)
{
    std::vector<std::size_t> order;
    for (std::size_t call = 0; call < calls; ++call) {
        order.insert(order.end(), stepsPerCall, call);
    }
    std::vector<std::vector<std::size_t>> all;
    do {
        std::size_t entered = 0;
        const bool inOrder = std::all_of(order.begin(), order.end(), [&](std::size_t call) {
            entered += call == entered ? 1U : 0U;
            return call < entered;
        });
        if (inOrder) {
            all.push_back(order);
        }
    } while (std::next_permutation(order.begin(), order.end()));
    return all;
}

/// The name of a call. They have different lengths, so that remains of a longer text would show; with
/// another `turn` another call has the longest.
std::string NameOf(std::size_t call, std::size_t turn)
{
    static const std::string names[] = {"A", "CADIExecContinueUntilSomethingHappens", "CADIMem", "bb"};
    return names[(call + turn) % 4];
}

/// Text of several pages, so that some flushes are staged.
const std::string longText(9000, 'x');

class Interleavings : public ScrivelTest::ScratchTest
{
protected:
    /// Looks at the file after every change that is made to it.
    void CheckEveryState(const std::string& fileName)
    {
        using ScrivelTest::platform;
        writes.emplace(platform.pwrite,
                       [=](int file, const void* bytes, std::size_t length, off_t offset) {
                           const ssize_t written = platform.pwrite.Real(file, bytes, length, offset);
                           CheckState(fileName);
                           return written;
                       });
        cuts.emplace(platform.ftruncate, [=](int file, off_t length) {
            const int result = platform.ftruncate.Real(file, length);
            CheckState(fileName);
            return result;
        });
    }

    void CheckState(const std::string& fileName)
    {
        if (!std::filesystem::exists(fileName)) {
            return;  // it appears with its header
        }
        const std::string bytes = FileText(fileName);
        ++states;
        if (!ScrivelTest::IsDocument(bytes)) {
            ++broken;
            ADD_FAILURE() << "not a document:\n" << bytes.substr(0, 2000);
        }
    }

    static std::string Shown(const std::vector<std::size_t>& order)
    {
        std::string text;
        for (const std::size_t call : order) {
            text += static_cast<char>('0' + call);
        }
        return text;
    }

    unsigned int states = 0;
    unsigned int broken = 0;
    std::optional<ScrivelTest::StubOf<&ScrivelTest::Platform::pwrite>> writes;
    std::optional<ScrivelTest::StubOf<&ScrivelTest::Platform::ftruncate>> cuts;
};

template <typename Generator>
struct CallSteps
{
    CallLog<Generator>& log;
    std::size_t index;
    std::string name;
    std::size_t textLength;
    std::unique_ptr<LoggedCall<Generator>> call{};

    void Enter() { call = std::make_unique<LoggedCall<Generator>>(log, name); }
    void Argue()
    {
        call->Arguments([&](auto& xml) {
            xml.WriteDecimal("argument", 100 + index);
            xml.WriteString("text", longText.substr(0, textLength));
        });
    }
    void Return()
    {
        call->Results([&](auto& xml) {
            xml.WriteDecimal("result", 200 + index);
            xml.WriteString("text", longText.substr(0, textLength));
        });
    }
};

class ThreeCalls : public Interleavings
{
protected:
    /// Enters, argues and returns three calls in each order, and finds them all in the end.
    template <typename Generator>
    void Try(std::size_t textLength)
    {
        CheckEveryState("log-4242.xml");
        const auto orders = Orders(3, 3);
        ASSERT_EQ(orders.size(), 280U);
        for (std::size_t turn = 0; turn < 3; ++turn) {
            for (const auto& order : orders) {
                Try<Generator>(order, turn, textLength);
            }
        }
        EXPECT_GE(states, 3 * orders.size() * 10);
        EXPECT_EQ(broken, 0U);
    }

private:
    template <typename Generator>
    void Try(const std::vector<std::size_t>& order, std::size_t turn, std::size_t textLength)
    {
        CallLog<Generator> log("log");
        CallSteps<Generator> calls[] = {{log, 0, NameOf(0, turn), textLength},
                                        {log, 1, NameOf(1, turn), textLength},
                                        {log, 2, NameOf(2, turn), textLength}};
        unsigned int steps[3] = {};
        for (const std::size_t index : order) {
            switch (steps[index]++) {
            case 0:
                calls[index].Enter();
                break;
            case 1:
                calls[index].Argue();
                break;
            default:
                calls[index].Return();
            }
        }
        log.EndLogging();
        Find(calls, Shown(order));
        std::remove("log-4242.xml");
    }

    template <typename Generator>
    void Find(const CallSteps<Generator> (&calls)[3], const std::string& order)
    {
        const auto read = ScrivelTest::ReadCalls(FileText("log-4242.xml"));
        ASSERT_TRUE(read.accepted) << order;
        ASSERT_EQ(read.calls.size(), 3U) << order;
        for (const auto& made : calls) {
            const auto& call = read.calls.at(made.call->Number());
            EXPECT_EQ(call.name, made.name) << order;
            EXPECT_EQ(call.Argument("argument"), std::to_string(100 + made.index)) << order;
            EXPECT_EQ(call.Argument("text").size(), made.textLength) << order;
            EXPECT_EQ(call.Result("result"), std::to_string(200 + made.index)) << order;
            EXPECT_EQ(call.Result("text").size(), made.textLength) << order;
            EXPECT_EQ(call.returns, 1U) << order;
        }
    }
};

TEST_F(ThreeCalls, OfARunAreFoundAndTheFileIsCompleteAfterEveryWrite)
{
    Try<Scrivel2XmlGenRun>(3);
}

TEST_F(ThreeCalls, OfAConnectionAreFoundAndTheFileIsCompleteAfterEveryWrite)
{
    Try<Scrivel2XmlGenConnect>(3);
}

TEST_F(ThreeCalls, OfSeveralPagesAreFoundAndTheFileIsCompleteAfterEveryWrite)
{
    Try<Scrivel2XmlGenRun>(longText.size());
}

// ---- The bytes of the plain protocol ------------------------------------------------------------

/// A generator used as its manual says, by a caller who knows which calls are open.
template <typename Generator>
class PlainProtocol
{
public:
    explicit PlainProtocol(Generator& generator) : log(generator) {}

    unsigned int Enter(const std::string& name, unsigned long argument)
    {
        if constexpr (std::is_same_v<Generator, Scrivel2XmlGenRun>) {
            log.EnterCadiCall(name);
        } else {
            log.WriteCloseInterruptedFunction(name);
            log.IncCallNo();
            log.WriteDetailedIdent(name);
        }
        log.WriteDecimal("argument", argument);
        log.FlushOutput(false, name);
        return entered = log.GetCallNo();
    }

    void Return(unsigned int number, const std::string& name, unsigned long result)
    {
        if (entered != 0 && entered != number) {
            log.UpdateFilePointerPosition();  // a younger call is open
        }
        log.WriteContinueFunction(number, name);
        log.WriteDecimal("result", result);
        log.WriteIdent(name, false, true);
        log.FlushOutput(true, "");
        entered = 0;
    }

private:
    Generator& log;
    unsigned int entered = 0;  // the call whose end tag ends the file
};

class PlainBytes : public Interleavings
{
protected:
    /// Compares the logs of both callers whenever a call has returned.
    template <typename Generator>
    void Try()
    {
        const auto orders = Orders(4, 2);
        ASSERT_EQ(orders.size(), 105U);
        for (std::size_t turn = 0; turn < 4; ++turn) {
            for (const auto& order : orders) {
                Try<Generator>(order, turn);
            }
        }
        EXPECT_EQ(compared, 4 * orders.size() * 4);
    }

private:
    template <typename Generator>
    void Try(const std::vector<std::size_t>& order, std::size_t turn)
    {
        SetClock(1000, 0);
        Generator generator("plain");
        generator.StartLogging();
        PlainProtocol plain(generator);
        CallLog<Generator> log("layer");
        std::unique_ptr<LoggedCall<Generator>> calls[4];
        unsigned int numbers[4] = {};

        long microseconds = 0;
        for (const std::size_t index : order) {
            const std::string name = NameOf(index, turn);
            SetClock(1000, ++microseconds);
            if (calls[index] == nullptr) {
                numbers[index] = plain.Enter(name, index);
                calls[index] = std::make_unique<LoggedCall<Generator>>(
                    log, name, [&](auto& xml) { xml.WriteDecimal("argument", index); });
            } else {
                plain.Return(numbers[index], name, index);
                calls[index]->Results([&](auto& xml) { xml.WriteDecimal("result", index); });
                Compare(order);
                ++compared;
            }
        }
        generator.EndLogging();
        log.EndLogging();
        Compare(order, "\n<!-- Log ended -->\n\n");
        std::remove("plain-4242.xml");
        std::remove("layer-4242.xml");
    }

    /// `lastWords` are what the layer adds before the root end tag.
    static void Compare(const std::vector<std::size_t>& order, const std::string& lastWords = "")
    {
        std::string plain = AsLayer(FileText("plain-4242.xml"));
        plain.insert(plain.rfind("</layer"), lastWords);
        ASSERT_EQ(plain, FileText("layer-4242.xml")) << Shown(order);
    }

    /// The names of the two logs have the same length.
    static std::string AsLayer(std::string text)
    {
        for (std::size_t at = 0; (at = text.find("plain-4242", at)) != std::string::npos;) {
            text.replace(at, 5, "layer");
        }
        return text;
    }

    std::size_t compared = 0;
};

TEST_F(PlainBytes, AreWhatARunLogHoldsWheneverACallHasReturned)
{
    Try<Scrivel2XmlGenRun>();
}

TEST_F(PlainBytes, AreWhatAConnectionLogHoldsWheneverACallHasReturned)
{
    Try<Scrivel2XmlGenConnect>();
}

}  // namespace
