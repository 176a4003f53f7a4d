// Logs in other programs' formats. That trace events are as their viewers demand is judged by the rules
// that these have: events on a track nest, asynchronous ones have an end of their id or none.

#include "tool/Session.h"
#include "tool/SessionLogs.h"

#include <nlohmann/json.hpp>

#include <cmath>
#include <cstdlib>
#include <ctime>
#include <fcntl.h>
#include <filesystem>
#include <map>
#include <regex>
#include <set>
#include <sys/stat.h>

using namespace ScrivelTest;

namespace
{

using Json = nlohmann::ordered_json;

class Export : public SessionTest
{
protected:
    Export() { Write("run.xml", LogOf(session)); }

    void SetLastChange(const std::string& name, const char* localTime, long nanoseconds) const
    {
        std::tm local{};
        strptime(localTime, "%Y-%m-%d %H:%M:%S", &local);
        local.tm_isdst = -1;
        const timespec change = {std::mktime(&local), nanoseconds};
        const timespec times[] = {change, change};
        EXPECT_EQ(utimensat(AT_FDCWD, (Folder() + "/" + name).c_str(), times, 0), 0);
    }

    Json Trace(const std::string& log) const { return TraceOf({log}); }

    Json TraceOf(const std::vector<std::string>& logs, const std::string& input = "") const
    {
        std::vector<std::string> arguments = {"export", "--to", "chrome"};
        arguments.insert(arguments.end(), logs.begin(), logs.end());
        const Outcome outcome = Run(arguments, input);
        EXPECT_EQ(outcome.status, 0);
        EXPECT_EQ(outcome.error, "");
        return Json::parse(outcome.out)["traceEvents"];
    }
};

/// A log with one call of that name, which began by its header at this time of a day, and whose call was
/// entered a tenth of a second and returned so much later.
std::string LogBegunAt(const std::string& time, const std::string& name, const std::string& returned)
{
    const std::string log =
        LogOf("    <" + name + " call_num=\"1\"\n     call_time=\"0.1 s\">\n        <return_time>" +
              returned + " s</return_time>\n    </" + name + ">\n");
    return std::regex_replace(log, std::regex("14:03:59"), time);
}

/// When the calls of these names were entered, in microseconds.
std::string Entries(const Json& events)
{
    std::string text;
    for (const Json& event : events) {
        if (event["ph"] == "X") {
            text += event["name"].get<std::string>() + " " + event["ts"].dump() + ";";
        }
    }
    return text;
}

/// Whole numbers of nanoseconds.
long long Nanoseconds(const Json& microseconds)
{
    return std::llround(microseconds.get<double>() * 1000);
}

/// What is wrong with a trace, or how many calls it has.
std::string Judged(const Json& events)
{
    struct Track
    {
        std::vector<long long> ends;
        long long last = -1;
    };
    std::map<std::pair<int, int>, Track> tracks;
    std::set<std::pair<int, int>> named;
    std::map<std::string, Json> begun;
    constexpr long long never = 1LL << 62;
    int calls = 0;
    for (const Json& event : events) {
        const std::string kind = event["ph"];
        const std::pair<int, int> place(event["pid"], event["tid"]);
        if (kind == "M") {
            named.insert(place);
            continue;
        }
        if (named.count(place) == 0) {
            return "a track without a name: " + event.dump();
        }
        const long long begin = Nanoseconds(event["ts"]);
        if (begin < 0) {
            return "before the first log: " + event.dump();
        }
        if (kind == "b") {
            ++calls;
            begun[event["id"]] = event;
        } else if (kind == "e") {
            const Json& first = begun[event["id"]];
            if (first.is_null() || first["name"] != event["name"] || first["cat"] != event["cat"] ||
                Nanoseconds(first["ts"]) > begin) {
                return "an end without a beginning: " + event.dump();
            }
        } else if (kind == "B" || kind == "X") {
            ++calls;
            Track& track = tracks[place];
            const long long end = kind == "B" ? never : begin + Nanoseconds(event["dur"]);
            while (!track.ends.empty() && track.ends.back() <= begin) {
                track.ends.pop_back();
            }
            if (begin < track.last || end < begin || (!track.ends.empty() && end > track.ends.back())) {
                return "doesn't nest: " + event.dump();
            }
            track.last = begin;
            track.ends.push_back(end);
        } else {
            return "unknown: " + event.dump();
        }
    }
    return std::to_string(calls) + " calls";
}

TEST_F(Export, ToJsonLinesWritesWhatCallsWrites)
{
    for (const char* const log : {"run-4243.xml", "crash-4242.xml", "connection-4243.xml"}) {
        EXPECT_EQ(Run({"export", "--to", "jsonl", log}).out, Run({"calls", "--json", log}).out);
    }
}

TEST_F(Export, ToCsvWritesALineACall)
{
    EXPECT_EQ(
        Run({"export", "--to", "csv", "--calls", "2,3", "run.xml"}).out,
        "log,call,occurrence,name,thread,call_time,return_time,status,parent,parts,offset,arguments,"
        "results\n"
        "run.xml,2,1,modeChange,1234,2.2e-05,3.3e-05,,1,1,296,"
        "\"[{\"\"name\"\":\"\"newMode\"\",\"\"value\"\":\"\"CADI_EXECMODE_Bpt\"\"}]\",[]\n"
        "run.xml,3,1,CADIRegWrite,5678,0.01255,0.012553,CADI_STATUS_PermissionDenied,,1,680,"
        "\"[{\"\"name\"\":\"\"regCount\"\",\"\"value\"\":\"\"1\"\"},{\"\"name\"\":\"\"reg\"\","
        "\"\"children\"\":"
        "[{\"\"name\"\":\"\"zero\"\",\"\"children\"\":[{\"\"name\"\":\"\"regNumber\"\",\"\"value\"\":"
        "\"\"0\"\"},"
        "{\"\"name\"\":\"\"bytes\"\",\"\"value\"\":\"\"00000000 00000000 00000000 00000001 \"\"}]}]}]\","
        "\"[{\"\"name\"\":\"\"return\"\",\"\"value\"\":\"\"CADI_STATUS_PermissionDenied\"\"}]\"\n");
}

TEST_F(Export, ToChromeWritesEventsThatNest)
{
    EXPECT_EQ(Judged(Trace("run-4243.xml")), "71 calls");
    EXPECT_EQ(Judged(Trace("crash-4242.xml")), "68 calls");
    EXPECT_EQ(Judged(Trace("connection-4243.xml")), "8 calls");
}

TEST_F(Export, ToChromeNamesThreadsAndKeepsNumbersTexts)
{
    const Json events = Trace("run.xml");
    EXPECT_EQ(events[0]["args"]["name"], "run.xml (process 4242)");
    EXPECT_EQ(events[1]["args"]["name"], "T1 (1234)");
    EXPECT_EQ(
        events[2].dump(),
        R"({"name":"CADIExecContinue","cat":"call","args":{"call":"1","status":"CADI_STATUS_OK",)"
        R"("results":{"return":"CADI_STATUS_OK"}},"pid":1,"tid":1,"ts":11.0,"dur":12533.0,"ph":"X"})");
    EXPECT_EQ(events[6]["args"]["arguments"]["startAddress"]["location"]["addr"], "0x0000000040000000");
}

TEST_F(Export, ToChromeLeavesCallsOpenThatHadNotReturned)
{
    const Json events = Trace("run.xml");
    EXPECT_EQ(events[6]["name"], "CADIMemWrite");
    EXPECT_EQ(events[6]["ph"], "B");
    EXPECT_EQ(Judged(events), "4 calls");
}

TEST_F(Export, ToChromeMakesCallsThatOverlapAsynchronous)
{
    const auto call = [](const std::string& number, const std::string& begin, const std::string& end) {
        return "    <A call_num=\"" + number + "\"\n     call_time=\"" + begin +
               " s\">\n        <return_time>" + end + " s</return_time>\n    </A>\n";
    };
    Write("overlap.xml", LogOf(call("1", "0.1", "0.5") + call("2", "0.2", "0.3") +
                               call("3", "0.4", "0.6") + call("4", "0.45", "0.5")));
    const Json events = Trace("overlap.xml");
    EXPECT_EQ(Judged(events), "4 calls");
    std::string kinds;
    for (const Json& event : events) {
        kinds += event["ph"].get<std::string>();
    }
    EXPECT_EQ(kinds, "MMXXbeX");
}

TEST_F(Export, ToChromeTellsWhatItLeavesOutOfALongArray)
{
    std::string items;
    std::string bytes;
    for (int i = 0; i < 5000; ++i) {
        items += "<i>1</i>";
        bytes += "<value>0xff</value>";
    }
    Write("long.xml", LogOf("    <A call_num=\"1\" call_time=\"0.1 s\"><list>" + items + "</list><data>" +
                            bytes + "</data></A>\n"));
    const Json arguments = Trace("long.xml")[2]["args"]["arguments"];
    EXPECT_EQ(arguments["list"]["i"].size(), 1024U);
    EXPECT_EQ(arguments["list"].value("...", ""), "5000 elements");
    EXPECT_EQ(arguments["data"].get<std::string>().size(), 2U * 4096 + 3);
}

TEST_F(Export, ToChromePutsSeveralLogsOnOneClock)
{
    // Changed last when they began and what they tell had passed: 1.5 s between them.
    Write("connection.xml", LogBegunAt("14:03:59", "A", "0.2"));
    Write("run.xml", LogBegunAt("14:04:00", "B", "0.3"));
    SetLastChange("connection.xml", "2026-11-21 14:03:59", 450000000);
    SetLastChange("run.xml", "2026-11-21 14:04:01", 50000000);
    EXPECT_EQ(Entries(TraceOf({"connection.xml", "run.xml"})), "A 100000.0;B 1600000.0;");
    EXPECT_EQ(Entries(TraceOf({"run.xml", "connection.xml"})), "B 1600000.0;A 100000.0;");
    EXPECT_EQ(Entries(Trace("run.xml")), "B 100000.0;");
    EXPECT_EQ(Judged(TraceOf({"run.xml", "connection.xml"})), "2 calls");
    EXPECT_EQ(Judged(TraceOf({"run-4243.xml", "connection-4243.xml", "crash-4242.xml"})), "147 calls");
}

TEST_F(Export, ToChromeKnowsTheSecondInWhichACopyBegan)
{
    Write("connection.xml", LogBegunAt("14:03:59", "A", "0.2"));
    Write("run.xml", LogBegunAt("14:04:00", "B", "0.3"));
    SetLastChange("connection.xml", "2026-11-21 14:03:59", 450000000);
    EXPECT_EQ(Entries(TraceOf({"connection.xml", "run.xml"})), "A 100000.0;B 1100000.0;");
    EXPECT_EQ(Entries(TraceOf({"connection.xml", "-"}, Read("run.xml"))), "A 100000.0;B 1100000.0;");
    Write("noheader.xml", "<log>\n    <C call_num=\"1\"\n     call_time=\"0.1 s\">\n"
                          "        <return_time>0.2 s</return_time>\n    </C>\n</log>\n");
    EXPECT_EQ(Entries(TraceOf({"run.xml", "noheader.xml"})), "B 100000.0;C 100000.0;");
}

TEST_F(Export, GoesIntoAFileOrADatabase)
{
    EXPECT_EQ(Run({"export", "--to", "jsonl", "run.xml", "-o", "out.jsonl"}).out, "");
    EXPECT_EQ(Read("out.jsonl"), Run({"calls", "--json", "run.xml"}).out);
    EXPECT_EQ(Run({"export", "--to", "jsonl", "run.xml", "-o", "out.jsonl"}).status, 2);
    EXPECT_EQ(Run({"export", "--to", "sqlite", "run.xml"}).error,
              "scrivel: a database is a file: name it by -o\n");
    const Outcome outcome = Run({"export", "--to", "sqlite", "run.xml", "-o", "out.db"});
    if (outcome.error == "scrivel: this build has no SQLite\n") {
        GTEST_SKIP() << "this build has no SQLite";
    }
    EXPECT_EQ(Read("out.db").substr(0, 15), "SQLite format 3");
    EXPECT_EQ(Read("out.db").find("0x0000000040000000") == std::string::npos, false);
}

TEST_F(Export, ToJsonLinesIsReadByAnEngine)
{
    const char* const engine = std::getenv("SCRIVEL_DUCKDB");
    if (engine == nullptr) {
        GTEST_SKIP() << "SCRIVEL_DUCKDB names no folder in which npm has installed @duckdb/node-api";
    }
    Run({"export", "--to", "jsonl", "run.xml", "run-4243.xml", "-o", "calls.jsonl"});
    Write("ask.mjs", R"(
import { createRequire } from 'module';
const { DuckDBInstance } = createRequire(process.argv[2] + '/')('@duckdb/node-api');
const connection = await (await DuckDBInstance.create(':memory:')).connect();
for (const question of process.argv.slice(3))
    console.log(JSON.stringify((await connection.runAndReadAll(question)).getRowsJson()));
)");
    const std::string command = "cd " + Quoted(Folder()) + " && node ask.mjs " + Quoted(engine) +
                                " \"select count(*), count(distinct log) from read_json('calls.jsonl')\""
                                " \"select a.value from (select unnest(arguments) as a from"
                                " read_json('calls.jsonl') where log = 'run.xml') where a.name = 'data'\""
                                " >answer";
    ASSERT_EQ(std::system(command.c_str()), 0);
    EXPECT_EQ(Read("answer"), "[[\"75\",\"2\"]]\n[[\"e803\"]]\n");
}

TEST_F(Export, NeedsAFormat)
{
    EXPECT_EQ(Run({"export", "run.xml"}).error,
              "scrivel: --to is missing: chrome, jsonl, csv or sqlite\n");
    EXPECT_EQ(Run({"export", "--to", "pdf", "run.xml"}).status, 2);
}

TEST_F(Export, WritesNothingWhenNoLogCanBeRead)
{
    Write("none.xml", "");
    const bool hasSqlite =
        Run({"query", "run.xml", "select 1"}).error != "scrivel: this build has no SQLite\n";
    for (const char* const format : {"csv", "chrome", "jsonl", "sqlite"}) {
        if (format == std::string("sqlite") && !hasSqlite)
            continue;
        const Outcome outcome = Run({"export", "--to", format, "nosuch.xml", "none.xml", "-o", "new"});
        EXPECT_EQ(outcome.error,
                  "scrivel: nosuch.xml: No such file or directory\nscrivel: none.xml:1: the document "
                  "ends too early (byte 0)\nscrivel: none.xml: the log is empty\n")
            << format;
        EXPECT_EQ(outcome.status, 2) << format;
        EXPECT_FALSE(std::filesystem::exists(Folder() + "/new")) << format;

        Write("old", "kept");
        Run({"export", "--to", format, "nosuch.xml", "-o", "old", "--force"});
        EXPECT_EQ(Read("old"), "kept") << format;
    }
    for (const char* const format : {"csv", "chrome", "jsonl"})
        EXPECT_EQ(Run({"export", "--to", format, "nosuch.xml", "none.xml"}).out, "") << format;
}

TEST_F(Export, HasItsHeadOfALogWithoutCalls)
{
    Write("none.xml", LogOf(""));
    EXPECT_EQ(Run({"export", "--to", "csv", "none.xml"}).out,
              "log,call,occurrence,name,thread,call_time,return_time,status,parent,parts,offset,"
              "arguments,results\n");
    EXPECT_TRUE(Json::parse(Run({"export", "--to", "chrome", "none.xml"}).out).contains("traceEvents"));
}

}  // namespace
