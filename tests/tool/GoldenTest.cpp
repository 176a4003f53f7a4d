// What the commands that answer questions print of the example session's logs, at 80 columns, with and
// without colour: tests/tool/golden/ holds it.

#include "tool/SessionLogs.h"

using namespace ScrivelTest;

namespace
{

struct Golden
{
    const char* name;  // of the file, without its end
    std::vector<std::string> arguments;
    int status = 0;
};

std::ostream& operator<<(std::ostream& out, const Golden& golden)
{
    return out << golden.name;
}

const Golden goldens[] = {
    {"summary-crash", {"crash-4242.xml"}},
    {"summary-run", {"run-4243.xml"}},
    {"summary-connection", {"connection-4243.xml"}},
    {"summary-several", {"run-4243.xml", "connection-4243.xml", "crash-4242.xml"}},
    {"stats-crash", {"stats", "crash-4242.xml"}},
    {"stats-run", {"stats", "run-4243.xml"}},
    {"stats-threads", {"stats", "--by", "thread", "run-4243.xml"}},
    {"stats-gaps", {"stats", "--gaps", "--by", "parent", "run-4243.xml"}},
    {"stats-status", {"stats", "--by", "status", "--sort", "calls", "run-4243.xml"}},
    {"history-register", {"history", "pc", "crash-4242.xml"}},
    {"history-refused", {"history", "0", "run-4243.xml"}},
    {"history-address", {"history", "0x3000", "run-4243.xml"}},
    {"history-open", {"history", "Memory:0x40000000+8", "crash-4242.xml"}},
    {"state-crash", {"state", "--at", "68", "crash-4242.xml"}},
    {"state-run", {"state", "run-4243.xml"}},
    {"state-early", {"state", "--at", "30", "run-4243.xml"}},
    {"diff-crash", {"diff", "run-4243.xml", "crash-4242.xml"}, 1},
};

class GoldenTest : public SessionTest, public testing::WithParamInterface<Golden>
{
protected:
    Outcome RunIn(const std::string& colour) const
    {
        std::vector<std::string> arguments = GetParam().arguments;
        arguments.push_back("--color=" + colour);
        return Run(arguments);
    }
};

TEST_P(GoldenTest, PrintsWhatIsStored)
{
    const Outcome outcome = RunIn("never");
    EXPECT_EQ(outcome.out, Stored(std::string("golden/") + GetParam().name + ".txt"));
    EXPECT_EQ(outcome.error, "");
    EXPECT_EQ(outcome.status, GetParam().status);
}

TEST_P(GoldenTest, PrintsWhatIsStoredInColour)
{
    EXPECT_EQ(RunIn("always").out, Stored(std::string("golden/") + GetParam().name + ".colour.txt"));
}

TEST_P(GoldenTest, FitsInto80Columns)
{
    // But for the last line, whose commands are there to be copied, and the call that hadn't returned.
    std::string out = RunIn("never").out;
    out.erase(out.rfind('\n', out.size() - 2) + 1);
    for (std::size_t at = 0; at < out.size();) {
        const std::size_t end = out.find('\n', at);
        const std::string line = out.substr(at, end - at);
        std::size_t columns = 0;
        for (const char c : line)
            columns += (static_cast<unsigned char>(c) & 0xc0) != 0x80 ? 1u : 0u;
        EXPECT_LE(columns, 80u) << line;
        at = end + 1;
    }
}

INSTANTIATE_TEST_SUITE_P(Questions, GoldenTest, testing::ValuesIn(goldens), [](const auto& golden) {
    std::string name = golden.param.name;
    for (char& c : name)
        c = c == '-' ? '_' : c;
    return name;
});

}  // namespace
