// Follows logs that are written at full speed by processes that are killed.
//
//     crash_followed_logs --elements 1000000 --followers 20
//
// Each writer logs calls of 100 B to 20 KB, also such as are interrupted by others, until it is killed at
// a random instant. What every follower has handed on by then, and after one more look, is compared with
// what a reader finds in the file that is left.
//
// Fails when a follower hands on a call that isn't in that file, twice, with other contents or in another
// order; when one that has returned is missing after the last look, unless the kill fell into the end of
// its flush; or when the look finds no document.

#include "crash/FollowedWriter.h"
#include "crash/Options.h"
#include "crash/Scratch.h"
#include "scrivel/Comparison.h"
#include "scrivel/LogFollower.h"

#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <memory>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include <sys/wait.h>
#include <unistd.h>

using namespace ScrivelReader;
using namespace ScrivelTest;

namespace
{

/// A child process that does this until it is killed.
pid_t StartUntilKilled(const std::function<void()>& work)
{
    const pid_t child = fork();
    if (child == 0) {
        work();
        _exit(1);
    }
    return child;
}

void Kill(pid_t child)
{
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
}

/// A call as one number: what it is, says and took.
struct Heard
{
    std::uint64_t number;
    std::uint64_t print;
    bool returned;

    bool operator==(const Heard& other) const
    {
        return number == other.number && print == other.print && returned == other.returned;
    }
};

class Calls : public LogHandler
{
public:
    void Element(const Call&) override { ++elements; }
    void Ended(Call& call) override
    {
        const std::uint64_t took = std::uint64_t(call.Took().value_or(-1));
        heard.push_back({call.number, rules.Of(call).whole ^ took, call.Returned()});
    }

    ComparisonRules rules;
    std::vector<Heard> heard;
    std::uint64_t elements = 0;
};

std::string OnlyLog()
{
    for (const auto& entry : std::filesystem::directory_iterator(".")) {
        if (entry.path().extension() == ".xml") {
            return entry.path();
        }
    }
    return {};
}

/// One follower, from when the log is there until its writer is dead.
class Follower
{
public:
    explicit Follower(unsigned int seed) : random(seed) {}

    void Run(const std::atomic<bool>& isDead)
    {
        // Also a thread that comes to run only after the kill looks at what is left.
        std::string error;
        bool wasDead = false;
        do {
            wasDead = isDead;  // before the look: the log may have come since
            const std::string name = OnlyLog();
            hasLog = !name.empty() && follower.Open(name, error);
        } while (!hasLog && !wasDead);
        if (!hasLog) {
            return;
        }
        while (!isDead) {
            const LogFollower::Seen seen = follower.Look();
            changing += seen == LogFollower::Seen::Changing ? 1 : 0;
            replaced = replaced || seen == LogFollower::Seen::Replaced;
            ++looks;
            std::this_thread::sleep_for(std::chrono::microseconds(random() % 5000));
        }
        heardAlive = calls.heard.size();
        const LogFollower::Seen last = follower.Look();
        isWhole = last == LogFollower::Seen::Document;
        replaced = replaced || last == LogFollower::Seen::Replaced;
        problem = follower.Error();
        heardWhole = calls.heard.size();
        follower.Finish();
    }

    Calls calls;
    std::uint64_t looks = 0;
    std::uint64_t changing = 0;
    std::size_t heardAlive = 0;
    std::size_t heardWhole = 0;
    std::string problem;  // of the last look
    bool hasLog = false;
    bool replaced = false;
    bool isWhole = false;

private:
    LogFollower follower{calls};
    std::minstd_rand random;
};

/// What a log holds.
struct Left
{
    std::vector<Heard> calls;
    bool isWithinAFlush;  ///< whose last tags are yet to get their places
};

/// Empty when everything was as it should be.
std::string Judged(const Follower& follower, const Left& left)
{
    const std::vector<Heard>& expected = left.calls;
    if (follower.replaced) {
        return "the log was taken for another one";
    }
    if (!follower.isWhole) {
        return "the last look found no document: " + follower.problem;
    }
    if (follower.calls.heard != expected) {
        return "heard " + std::to_string(follower.calls.heard.size()) + " calls, not the " +
               std::to_string(expected.size()) + " of the file";
    }
    const std::size_t settled = expected.size() - (left.isWithinAFlush && !expected.empty() ? 1 : 0);
    for (std::size_t i = follower.heardWhole; i < settled; ++i) {
        if (expected[i].returned) {
            return "call " + std::to_string(expected[i].number) + " was missing after the last look";
        }
    }
    return {};
}

using Number = unsigned long long;

struct Figures
{
    Number elements = 0;
    Number writers = 0;
    Number alive = 0;  // calls that were handed on before the writer was killed
    Number looks = 0;
    Number changing = 0;
    Number wrong = 0;
};

Left LeftIn(const std::string& file)
{
    std::ifstream in(file, std::ios::binary);
    const std::string bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    Calls calls;
    LogReader reader(calls);
    reader.Feed(bytes);
    const bool isWhole = reader.Finish().whole;
    const std::string closing = "?>";
    const bool isWithinAFlush =
        bytes.size() > closing.size() &&
        bytes.compare(bytes.size() - closing.size(), closing.size(), closing) == 0;
    return {isWhole ? calls.heard : std::vector<Heard>(), isWithinAFlush};
}

/// One writer from its beginning to its death, with all its followers.
void FollowOne(const ScrivelTest::Options& options, std::minstd_rand& random, Figures& figures)
{
    Scratch scratch(options.Text("directory"));
    std::atomic<bool> isDead = false;
    std::vector<std::unique_ptr<Follower>> followers;
    for (unsigned int i = 0; i < options.Number("followers"); ++i) {
        followers.push_back(std::make_unique<Follower>(unsigned(random())));
    }
    const auto seed = std::uint64_t(random());
    const std::chrono::microseconds delay(50000 + long(random() % 400000));

    // The followers begin once the writer is there, as a process with threads is better not forked.
    std::vector<std::thread> threads;
    const pid_t writer = StartUntilKilled([&] { LogForEver(seed); });
    for (const auto& follower : followers) {
        threads.emplace_back([&follower, &isDead] { follower->Run(isDead); });
    }
    std::this_thread::sleep_for(delay);
    Kill(writer);
    isDead = true;
    for (std::thread& thread : threads) {
        thread.join();
    }

    ++figures.writers;
    if (OnlyLog().empty()) {
        return;  // killed before there was a log
    }
    const Left left = LeftIn(OnlyLog());
    for (const auto& follower : followers) {
        figures.elements += follower->calls.elements;
        figures.alive += follower->heardAlive;
        figures.looks += follower->looks;
        figures.changing += follower->changing;
        const std::string problem = Judged(*follower, left);
        if (!problem.empty()) {
            ++figures.wrong;
            std::ifstream in(OnlyLog(), std::ios::binary);
            scratch.Keep({std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()}, problem);
        }
    }
}

}  // namespace

int main(int argc, char** argv)
{
    const ScrivelTest::Options options(
        argc, argv, {{"elements", "1000000"}, {"followers", "20"}, {"seed", "1"}, {"directory", "."}});
    std::minstd_rand random(options.Number("seed"));
    Figures figures;
    while (figures.elements < options.Number("elements") && figures.wrong == 0) {
        FollowOne(options, random, figures);
    }
    std::printf(
        "%llu elements handed on by %u followers of %llu writers, %llu of the calls before the kill; "
        "%llu looks, %llu while the end was being replaced; %llu followers wrong\n",
        figures.elements, options.Number("followers"), figures.writers, figures.alive, figures.looks,
        figures.changing, figures.wrong);
    return figures.wrong == 0 ? 0 : 1;
}
