// Random walks over the whole interface, compared with the plain generator after every step.
//
// SCRIVEL_WALK_SEED is the first seed, SCRIVEL_WALKS the number of walks of each generator; each goes two
// ways, with elements put down whole and through the table. A failing walk names its seed:
// SCRIVEL_WALK_SEED=<seed> SCRIVEL_WALKS=1 repeats it.

#include "reference/PlainGenerator.h"
#include "reference/RandomOperations.h"
#include "reference/TextFile.h"
#include "support/GeneratorTest.h"

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <iostream>
#include <memory>
#include <random>
#include <sstream>
#include <stdexcept>
#include <string>
#include <type_traits>

namespace
{

namespace fs = std::filesystem;
using ScrivelTest::platform;
using ScrivelTest::TextFile;

class Mersenne : public ScrivelTest::RandomSource
{
public:
    explicit Mersenne(unsigned long seed) : engine(static_cast<std::mt19937::result_type>(seed)) {}

    unsigned char Byte() override { return static_cast<unsigned char>(engine() >> 24); }

private:
    std::mt19937 engine;
};

/// Runs each operation on the library's generator and on the plain one. What can be seen of the two must
/// be the same after each: the file, messages, results, exceptions, positions.
template <typename Library, typename Plain>
class Comparison
{
public:
    using Generator = ScrivelTest::Unprotected<Library>;

    /// The elements of a class that keeps its tags are put down whole, those of another go through the
    /// table.
    Comparison(const char* name, bool keepsTags) : log(Made<Generator>(name)), plain(Made<Plain>(name))
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
        ASSERT_EQ(ofLibrary, ofPlain);
        CompareFiles();
    }

    unsigned int Depth() const { return plain->depth; }
    void SetClock(long seconds, long microseconds) { now = {seconds, microseconds}; }
    void SetProcess(int id) { process = id; }
    void SetThread(unsigned long id) { thread = id; }
    void SetHost(const std::string& name) { host = name; }

    /// Deletes both generators: text that has not been flushed is lost.
    void Destroy()
    {
        const std::string name = plain->logFile.Name();
        const std::string flushed = plain->logFile.Flushed();
        log.reset();
        if (!name.empty()) {
            ASSERT_EQ(ScrivelTest::FileBytes(name), flushed);
        }
    }

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

    /// Runs the operation and tells what it printed, returned and threw, and the state after it.
    template <typename Log, typename Operation>
    std::string Seen(Log& one, Operation operation)
    {
        std::string printed;
        const auto output = platform.puts.Use([&](const char* text) {
            printed += text;
            printed += '\n';
            return 0;
        });
        std::ostringstream seen;
        std::ostringstream messages;
        std::streambuf* const before = std::cerr.rdbuf(messages.rdbuf());
        try {
            if constexpr (std::is_void_v<decltype(operation(one))>) {
                operation(one);
            } else {
                seen << "returned " << operation(one) << "\n";
            }
        } catch (const std::logic_error&) {
            seen << "threw\n";
        }
        std::cerr.rdbuf(before);
        seen << messages.str() << printed << "call " << one.GetCallNo() << ", depth " << one.depth
             << ", at " << one.GetCurrentFilePointerPosition() << ", last "
             << one.GetLastFilePointerPosition() << ", state " << one.logFile.rdstate() << ", "
             << one.GetFileEndTag();
        return seen.str();
    }

    void CompareFiles()
    {
        const std::string& name = plain->logFile.Name();
        if (name.empty()) {
            ASSERT_TRUE(fs::is_empty("."));
        } else {
            ASSERT_EQ(ScrivelTest::FileBytes(name), plain->logFile.Flushed());
        }
    }

    std::unique_ptr<Generator> log;
    std::unique_ptr<Plain> plain;
    int process = 4242;
    unsigned long thread = 1234;
    timeval now = {1000, 0};
    std::string host = "lab7";

    const ScrivelTest::StubOf<& ScrivelTest::Platform::getpid> processStub =
        platform.getpid.Use([this] { return process; });
    const ScrivelTest::StubOf<& ScrivelTest::Platform::pthread_self> threadStub =
        platform.pthread_self.Use([this] { return thread; });
    const ScrivelTest::StubOf<& ScrivelTest::Platform::gettimeofday> clockStub =
        platform.gettimeofday.Use([this](timeval* moment, void*) {
            *moment = now;
            return 0;
        });
    const ScrivelTest::StubOf<& ScrivelTest::Platform::gethostname> hostStub =
        platform.gethostname.Use([this](char* text, std::size_t size) {
            if (host.empty() || host.size() >= size) {
                return -1;
            }
            std::strcpy(text, host.c_str());
            return 0;
        });
};

unsigned long FromEnvironment(const char* name, unsigned long otherwise)
{
    const char* const text = std::getenv(name);
    return text == nullptr ? otherwise : std::strtoul(text, nullptr, 10);
}

class RandomWalk : public ScrivelTest::ScratchTest
{
protected:
    template <typename Library, typename Plain>
    void Walks()
    {
        const unsigned long first = FromEnvironment("SCRIVEL_WALK_SEED", 1);
        const unsigned long count = FromEnvironment("SCRIVEL_WALKS", 125);
        std::cout << "seeds " << first << " to " << first + count - 1 << "\n";
        for (unsigned long seed = first; seed < first + count; ++seed) {
            for (const bool keepsTags : {true, false}) {
                SCOPED_TRACE("seed " + std::to_string(seed) + (keepsTags ? ", tags kept" : ""));
                Walk<Library, Plain>(seed, keepsTags);
                if (HasFatalFailure()) {
                    return;
                }
            }
        }
    }

private:
    template <typename Library, typename Plain>
    void Walk(unsigned long seed, bool keepsTags)
    {
        for (const auto& entry : fs::directory_iterator(".")) {
            fs::remove_all(entry);
        }
        Mersenne source(seed);
        const char* const name = source.OneIn(30) ? "missing/trace" : "trace";
        Comparison<Library, Plain> logs(name, keepsTags);
        ScrivelTest::RandomOperations<Comparison<Library, Plain>> operations(source, logs);
        const unsigned int steps = 10 + source.Below(80);
        for (unsigned int step = 0; step < steps; ++step) {
            operations.Step();
            if (HasFatalFailure()) {
                ADD_FAILURE() << "at step " << step;
                return;
            }
        }
        logs.Destroy();
    }
};

TEST_F(RandomWalk, BaseGeneratorWritesWhatThePlainOneWrites)
{
    Walks<Scrivel2::ScrivelXmlGenBase, ScrivelTest::PlainBase<TextFile>>();
}

TEST_F(RandomWalk, RunBaseGeneratorWritesWhatThePlainOneWrites)
{
    Walks<Scrivel2::ScrivelXmlGenRunBase, ScrivelTest::PlainRunBase<TextFile>>();
}

TEST_F(RandomWalk, ConnectionPhaseGeneratorWritesWhatThePlainOneWrites)
{
    Walks<Scrivel2::Scrivel2XmlGenConnect, ScrivelTest::PlainConnect<TextFile>>();
}

TEST_F(RandomWalk, RunPhaseGeneratorWritesWhatThePlainOneWrites)
{
    Walks<Scrivel2::Scrivel2XmlGenRun, ScrivelTest::PlainRun<TextFile>>();
}

}  // namespace
