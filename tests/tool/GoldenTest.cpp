// What the commands print of the example session's logs, at 80 columns, with and without colour:
// tests/tool/golden/ holds it.

#include "tool/SessionLogs.h"

using namespace ScrivelTest;

namespace
{

struct Golden
{
    const char* name;  // of the file, without its end
    std::vector<std::string> arguments;
    int status = 0;
    const char* error = "";
    bool fits = true;  // lines for programs need not, nor those that name a place
};

std::ostream& operator<<(std::ostream& out, const Golden& golden)
{
    return out << golden.name;
}

constexpr char byNames[] = "select name, count(*) as calls, max(took) as longest from calls group by name"
                           " order by calls desc, name limit 5";
constexpr char valuesOfLast[] =
    "select path, value from arguments join calls using (log, call) where status is null and call = 68";
constexpr char ofLogs[] = "select name, process, host, whole, ended, calls, failed, open from logs";

constexpr char tornAt[] =
    "scrivel: torn.xml:987: the document ends too early (byte 40000, in call 11 CADIRegGetMap)\n";

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
    {"history-several", {"history", "pc", "run-4243.xml", "crash-4242.xml"}},
    {"state-crash", {"state", "--at", "68", "crash-4242.xml"}},
    {"state-run", {"state", "run-4243.xml"}},
    {"state-early", {"state", "--at", "30", "run-4243.xml"}},
    {"state-several", {"state", "--at", "68", "run-4243.xml", "crash-4242.xml"}},
    {"diff-crash", {"diff", "run-4243.xml", "crash-4242.xml"}, 1},
    {"diff-results", {"diff", "--results", "crash-4242.xml", "run-4243.xml"}, 1},
    {"diff-times", {"diff", "--times", "1ns", "run-4243.xml", "crash-4242.xml"}, 1},
    {"calls-last", {"calls", "--last", "20", "crash-4242.xml"}},
    {"calls-failed", {"calls", "-f", "-C", "1", "run-4243.xml"}},
    {"calls-several", {"calls", "--last", "3", "run-4243.xml", "connection-4243.xml"}},
    {"calls-json", {"calls", "--json", "--calls", "65..68", "crash-4242.xml"}, 0, "", false},
    {"show-open", {"show", "68", "crash-4242.xml"}},
    {"show-failed", {"show", "52", "run-4243.xml"}},
    {"show-memory", {"show", "36", "run-4243.xml"}},
    {"show-xml", {"show", "--xml", "55", "run-4243.xml"}},
    {"check-several", {"check", "run-4243.xml", "connection-4243.xml"}},
    {"check-crash",
     {"check", "--max-failed", "0", "--no-open", "--max-took", "5ms", "crash-4242.xml"},
     1},
    {"check-torn", {"check", "torn.xml"}, 1, tornAt},
    {"recover-torn", {"recover", "torn.xml", "-o", "fixed.xml"}},
    {"recover-whole", {"recover", "run-4243.xml", "-o", "fixed.xml"}},
    {"cut-few", {"cut", "--calls", "65..68", "crash-4242.xml", "-o", "small.xml"}},
    {"follow-last", {"follow", "--last", "5", "ended.xml"}},
    {"follow-failed", {"follow", "--all", "-f", "ended.xml"}},
    {"follow-json", {"follow", "--json", "--all", "-f", "ended.xml"}, 0, "", false},
    {"query-names", {"query", "run-4243.xml", byNames}},
    {"query-values", {"query", "crash-4242.xml", valuesOfLast}},
    {"query-several", {"query", "run-4243.xml", "connection-4243.xml", "crash-4242.xml", ofLogs}},
    {"query-csv", {"query", "--csv", "run-4243.xml", byNames}, 0, "", false},
    {"query-json", {"query", "--json", "run-4243.xml", byNames}, 0, "", false},
    {"export-chrome", {"export", "--to", "chrome", "--calls", "65..68", "crash-4242.xml"}, 0, "", false},
    {"export-jsonl", {"export", "--to", "jsonl", "--calls", "65..68", "crash-4242.xml"}, 0, "", false},
    {"export-csv", {"export", "--to", "csv", "--calls", "65..68", "crash-4242.xml"}, 0, "", false},
    {"report-crash", {"report", "crash-4242.xml", "-o", "bug"}},
    {"report-anonymous", {"report", "--anonymous", "crash-4242.xml", "-o", "bug"}},
    {"view-crash", {"view", "crash-4242.xml", "-o", "crash.html"}},
};

class GoldenTest : public SessionTest, public testing::WithParamInterface<Golden>
{
protected:
    GoldenTest()
    {
        constexpr std::size_t torn = 40000;
        Write("torn.xml", Read("crash-4242.xml").substr(0, torn));
        std::string ended = Read("run-4243.xml");
        ended.insert(ended.rfind("</"), "\n<!-- Log ended -->\n\n");
        Write("ended.xml", ended);
    }

    void SetUp() override
    {
        if (GetParam().arguments[0] == "query" &&
            Run({"query", "run-4243.xml", "select 1"}).error == "scrivel: this build has no SQLite\n") {
            GTEST_SKIP() << "this build has no SQLite";
        }
    }

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
    EXPECT_EQ(outcome.error, GetParam().error);
    EXPECT_EQ(outcome.status, GetParam().status);
}

TEST_P(GoldenTest, PrintsWhatIsStoredInColour)
{
    EXPECT_EQ(RunIn("always").out, Stored(std::string("golden/") + GetParam().name + ".colour.txt"));
}

TEST_P(GoldenTest, FitsInto80Columns)
{
    if (!GetParam().fits) {
        return;
    }
    // But for the commands that are there to be copied.
    const std::string out = RunIn("never").out;
    for (std::size_t at = 0; at < out.size();) {
        const std::size_t end = out.find('\n', at);
        const std::string line = out.substr(at, end - at);
        at = end + 1;
        if (line.rfind("next: ", 0) == 0) {
            continue;
        }
        std::size_t columns = 0;
        for (const char c : line)
            columns += (static_cast<unsigned char>(c) & 0xc0) != 0x80 ? 1u : 0u;
        EXPECT_LE(columns, 80u) << line;
    }
}

INSTANTIATE_TEST_SUITE_P(Questions, GoldenTest, testing::ValuesIn(goldens), [](const auto& golden) {
    std::string name = golden.param.name;
    for (char& c : name)
        c = c == '-' ? '_' : c;
    return name;
});

}  // namespace
