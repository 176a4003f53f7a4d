// Random calls of two threads that overlap, with callbacks inside callbacks, found again in the log.

#include "LoggedCall.h"

#include "layer/CallReader.h"
#include "support/GeneratorTest.h"

#include <condition_variable>
#include <memory>
#include <mutex>
#include <random>
#include <set>
#include <thread>
#include <vector>

using namespace Scrivel2;

namespace
{

constexpr unsigned int callsPerThread = 5000;

/// Where the two threads wait for each other, each inside a call.
class Meeting
{
public:
    void Arrive(std::size_t who)
    {
        std::unique_lock<std::mutex> lock(mutex);
        ++arrivals[who];
        changed.notify_all();
        changed.wait(lock, [&] { return gone[1 - who] || arrivals[1 - who] >= arrivals[who]; });
    }

    void Leave(std::size_t who)
    {
        const std::lock_guard<std::mutex> lock(mutex);
        gone[who] = true;
        changed.notify_all();
    }

private:
    std::mutex mutex;
    std::condition_variable changed;
    unsigned int arrivals[2] = {};
    bool gone[2] = {};
};

/// What one thread does, and remembers to have done.
class Caller
{
public:
    struct Made
    {
        unsigned int number;
        std::string name;
        std::vector<ScrivelTest::Leaf> arguments;
        std::vector<ScrivelTest::Leaf> results;
    };

    Caller(RunLog& runLog, Meeting& meetingPoint, std::size_t number)
        : log(runLog), meeting(meetingPoint), who(number), random(static_cast<unsigned int>(number))
    {
    }

    void MakeCalls()
    {
        while (entered < callsPerThread) {
            MakeCall(0);
        }
        meeting.Leave(who);
    }

    const std::vector<Made>& Calls() const { return made; }
    unsigned int Callbacks() const { return callbacks; }

private:
    static constexpr unsigned int deepest = 4;

    unsigned int Roll(unsigned int sides) { return static_cast<unsigned int>(random() % sides); }

    void MakeCall(unsigned int level)
    {
        ++entered;
        Made done;
        done.name = names[Roll(4)];
        const auto arguments = Values("a");
        const auto results = Values("r");
        done.arguments = arguments;

        // A third of the calls have no arguments, and some get theirs with the guard.
        const bool withArguments = Roll(3) != 0;
        const bool atOnce = withArguments && Roll(2) != 0;
        const auto writeArguments = [&](auto& xml) { Write(xml, arguments); };
        auto call = atOnce
                        ? std::make_unique<LoggedCall<Scrivel2XmlGenRun>>(log, done.name, writeArguments)
                        : std::make_unique<LoggedCall<Scrivel2XmlGenRun>>(log, done.name);
        if (withArguments && !atOnce) {
            call->Arguments(writeArguments);
        } else if (!withArguments) {
            done.arguments.clear();
        }
        done.number = call->Number();

        for (; level < deepest && entered < callsPerThread && Roll(3) == 0; ++callbacks) {
            MakeCall(level + 1);
        }
        if (Roll(16) == 0) {
            log.Comment("between -- or within");
        }
        if (level == 0 && Roll(16) == 0) {
            meeting.Arrive(who);
        }

        if (Roll(5) != 0) {
            call->Results([&](auto& xml) { Write(xml, results); });
            done.results = results;
        }
        made.push_back(done);
    }

    std::vector<ScrivelTest::Leaf> Values(const std::string& name)
    {
        std::vector<ScrivelTest::Leaf> values;
        for (unsigned int count = 1 + Roll(4); count > 0; --count) {
            values.push_back({name + std::to_string(count), std::to_string(random())});
        }
        if (Roll(100) == 0) {
            values.push_back({name + "Text", std::string(1 + Roll(9000), 't')});
        }
        return values;
    }

    template <typename Xml>
    static void Write(Xml& xml, const std::vector<ScrivelTest::Leaf>& values)
    {
        for (const auto& value : values) {
            xml.WriteString(value.path, value.text);
        }
    }

    static constexpr const char* names[] = {"CADIRegRead", "x", "CADIExecContinue", "modeChange"};

    RunLog& log;
    Meeting& meeting;
    std::size_t who;
    std::mt19937 random;
    std::vector<Made> made;
    unsigned int entered = 0;
    unsigned int callbacks = 0;
};

class RandomCalls : public ScrivelTest::ScratchTest
{
};

TEST_F(RandomCalls, TenThousandOfTwoThreadsAreFoundNumberByNumber)
{
    ScrivelTest::platform.pthread_self.Reset();  // sanitizers ask for it in new threads
    RunLog log("run");
    Meeting meeting;
    Caller callers[] = {{log, meeting, 0}, {log, meeting, 1}};
    std::thread second([&] { callers[1].MakeCalls(); });
    callers[0].MakeCalls();
    second.join();
    log.EndLogging();

    const auto read = ScrivelTest::ReadCalls(FileText("run-4242.xml"));
    ASSERT_TRUE(read.accepted);
    ASSERT_EQ(read.calls.size(), 2 * callsPerThread);
    for (const Caller& caller : callers) {
        EXPECT_EQ(caller.Calls().size(), callsPerThread);
        EXPECT_GT(caller.Callbacks(), callsPerThread / 10);
        for (const auto& made : caller.Calls()) {
            const auto& call = read.calls.at(made.number);
            ASSERT_EQ(call.name, made.name) << made.number;
            ASSERT_EQ(call.arguments, made.arguments) << made.number;
            ASSERT_EQ(call.results, made.results) << made.number;
            ASSERT_EQ(call.returns, 1U) << made.number;
        }
    }

    std::set<unsigned int> ofTheFirst;
    for (const auto& made : callers[0].Calls()) {
        ofTheFirst.insert(made.number);
    }
    unsigned int turns = 0;
    for (unsigned int number = 2; number <= 2 * callsPerThread; ++number) {
        turns += ofTheFirst.count(number) != ofTheFirst.count(number - 1) ? 1U : 0U;
    }
    EXPECT_GT(turns, 100U);
}

}  // namespace
