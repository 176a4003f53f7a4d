// Lines in order of entry, however long an early call stays open.

#include "EntryOrder.h"

#include "tool/Program.h"

#include <csignal>
#include <cstdlib>
#include <sys/resource.h>

using namespace ScrivelTool;
using ScrivelTest::LogOf;

namespace
{

class EntryOrders : public testing::Test
{
protected:
    void End(std::uint64_t entry)
    {
        order.Ended(entry, {std::to_string(entry) + std::string(entry % 7, '.'), entry % 3 == 0});
    }

    /// What was handed on since the last call must be these entries.
    void ExpectTaken(std::uint64_t from, std::uint64_t to)
    {
        ASSERT_EQ(taken.size(), to - from);
        for (std::uint64_t entry = from; entry < to; ++entry) {
            const Line& line = taken[std::size_t(entry - from)];
            ASSERT_EQ(line.text, std::to_string(entry) + std::string(entry % 7, '.'));
            ASSERT_EQ(line.chosen, entry % 3 == 0);
        }
        taken.clear();
    }

    std::vector<Line> taken;
    EntryOrder order{[this](Line&& line) { taken.push_back(std::move(line)); }};
};

TEST_F(EntryOrders, HandOnWhatEndsInOrderAtOnce)
{
    for (std::uint64_t entry = 0; entry < 10000; ++entry) {
        order.Entered();
        End(entry);
        ExpectTaken(entry, entry + 1);
    }
}

TEST_F(EntryOrders, KeepLinesBehindOpenCalls)
{
    constexpr std::uint64_t count = 30000;
    for (std::uint64_t entry = 0; entry < count; ++entry) {
        order.Entered();
        if (entry % 10000 != 0) {
            End(entry);
        }
    }
    End(10000);
    ExpectTaken(0, 0);
    End(0);
    ExpectTaken(0, 20000);
    End(20000);
    ExpectTaken(20000, count);
    order.Entered();
    End(count);
    ExpectTaken(count, count + 1);
}

TEST_F(EntryOrders, ForgetWhatWasTakenBack)
{
    for (std::uint64_t entry = 0; entry < 20000; ++entry) {
        order.Entered();
        order.TakenBack();
        order.Entered();
        if (entry != 0) {
            End(entry);
        }
    }
    End(0);
    ExpectTaken(0, 20000);
}

TEST_F(EntryOrders, KeepLinesInMemoryWhereNoFileCanBeMade)
{
    setenv("TMPDIR", "/dev/null/nowhere", 1);
    for (std::uint64_t entry = 0; entry < 20000; ++entry) {
        order.Entered();
        if (entry != 0) {
            End(entry);
        }
    }
    End(0);
    ExpectTaken(0, 20000);
    EXPECT_EQ(order.Error(), "");
    unsetenv("TMPDIR");
}

TEST_F(EntryOrders, KeepLinesInMemoryThatTheFileHasNoRoomFor)
{
    constexpr std::uint64_t count = 30000;
    const auto former = std::signal(SIGXFSZ, SIG_IGN);
    rlimit limit{};
    getrlimit(RLIMIT_FSIZE, &limit);
    // Room for a few batches, and for a part of the next, which ends in the midst of a line.
    const rlimit little{300001, limit.rlim_max};
    setrlimit(RLIMIT_FSIZE, &little);
    for (std::uint64_t entry = 0; entry < count; ++entry) {
        order.Entered();
        if (entry != 0) {
            End(entry);
        }
    }
    setrlimit(RLIMIT_FSIZE, &limit);
    std::signal(SIGXFSZ, former);
    End(0);
    ExpectTaken(0, count);
    EXPECT_EQ(order.Error(), "");
}

}  // namespace
