// Questions in SQL, and what is answered.

#include <gmock/gmock.h>

#include "tool/Program.h"
#include "tool/Session.h"

using namespace ScrivelTest;
using testing::HasSubstr;

namespace
{

class Query : public ToolTest
{
protected:
    Query()
    {
        Write("run.xml", LogOf(session));
        if (Run({"query", "run.xml", "select 1"}).error == "scrivel: this build has no SQLite\n") {
            noSqlite = true;
        }
    }

    void SetUp() override
    {
        if (noSqlite) {
            GTEST_SKIP() << "this build has no SQLite";
        }
    }

    std::string Answer(const std::string& question, const std::string& option = "--csv") const
    {
        const Outcome outcome = Run({"query", option, "run.xml", question});
        EXPECT_EQ(outcome.error, "");
        return outcome.out;
    }

    std::string Refusal(const std::string& question) const
    {
        const Outcome outcome = Run({"query", "run.xml", question});
        EXPECT_EQ(outcome.status, 2);
        EXPECT_EQ(outcome.out, "");
        return outcome.error;
    }

private:
    bool noSqlite = false;
};

TEST_F(Query, IsAnsweredByATable)
{
    EXPECT_EQ(Answer("select call, name, took, status from calls order by call", "--color=never"),
              "call  name                  took  status\n"
              "   1  CADIExecContinue  0.012533  CADI_STATUS_OK\n"
              "   2  modeChange         1.1e-05\n"
              "   3  CADIRegWrite         3e-06  CADI_STATUS_PermissionDenied\n"
              "   4  CADIMemWrite\n");
}

TEST_F(Query, KnowsAllThatACallIs)
{
    EXPECT_EQ(
        Answer("select * from calls where call = 2"),
        "log,call,occurrence,name,thread,call_time,return_time,took,status,parent,parts,address,offset\n"
        "1,2,1,modeChange,1234,2.2e-05,3.3e-05,1.1e-05,,1,1,,296\n");
    EXPECT_EQ(
        Answer("select path, name, process, host, started, whole, ended, calls, failed, open from logs"),
        "path,name,process,host,started,whole,ended,calls,failed,open\n"
        "run.xml,run,4242,lab7,2026-11-21 14:03:59,1,0,4,1,1\n");
}

TEST_F(Query, KnowsArgumentsAndResultsByTheirPaths)
{
    EXPECT_EQ(Answer("select path, value from arguments where call = 4"),
              "path,value\n"
              "startAddress.overlay,0\n"
              "startAddress.location.spaceId,1\n"
              "startAddress.location.spaceName,Memory\n"
              "startAddress.location.addr,0x0000000040000000\n"
              "bytes,4\n"
              "data,e803\n");
    EXPECT_EQ(Answer("select call from calls join results using (log, call) where value like '%Denied'"),
              "call\n3\n");
}

TEST_F(Query, HasViewsForWhatIsAskedOften)
{
    EXPECT_EQ(Answer("select call from failed"), "call\n3\n");
    EXPECT_EQ(Answer("select call from open"), "call\n4\n");
    EXPECT_EQ(
        Answer("select name, calls, max from durations"),
        "name,calls,max\nCADIExecContinue,1,0.012533\nCADIRegWrite,1,3e-06\nmodeChange,1,1.1e-05\n");
    EXPECT_EQ(Answer("select count(*) from calls"), "count(*)\n4\n");
}

TEST_F(Query, IsAnsweredInJson)
{
    EXPECT_EQ(Answer("select call, name, status from calls where call < 3 order by call", "--json"),
              "{\"call\":1,\"name\":\"CADIExecContinue\",\"status\":\"CADI_STATUS_OK\"}\n"
              "{\"call\":2,\"name\":\"modeChange\",\"status\":null}\n");
}

TEST_F(Query, GivesColumnsOfOneNameNumbersInJson)
{
    EXPECT_EQ(
        Answer("select call, name as x, status as x, 7 as \"x:1\", 8 as x from calls where call = 3",
               "--json"),
        "{\"call\":3,\"x\":\"CADIRegWrite\",\"x:1\":\"CADI_STATUS_PermissionDenied\","
        "\"x:1:1\":7,\"x:2\":8}\n");
    EXPECT_EQ(Answer("select call, call from calls where call = 3"), "call,call\n3,3\n");
}

TEST_F(Query, IsAskedOfWhatTheFilterLeavesInSeveralLogs)
{
    Write("b.xml", LogOf(session));
    EXPECT_EQ(Run({"query", "--csv", "-f", "run.xml", "b.xml",
                   "select path, call from calls join logs using (log)"})
                  .out,
              "path,call\nrun.xml,3\nb.xml,3\n");
}

TEST_F(Query, OnlyReads)
{
    for (const char* const question :
         {"delete from calls", "attach 'x.db' as x", "pragma user_version = 3", "create table x(y)",
          "drop view open", "update calls set name = 'x'", "vacuum", "begin"}) {
        EXPECT_EQ(Refusal(question), "scrivel: a question only reads: begin it with select\n")
            << question;
    }
    EXPECT_EQ(Refusal("select load_extension('x')"), "scrivel: not authorized\n");
}

TEST_F(Query, TellsWhatIsWrongWithIt)
{
    EXPECT_EQ(Refusal("select x from calls"), "scrivel: no such column: x\n");
    EXPECT_EQ(Refusal("select 1; select 2"), "scrivel: one question at a time\n");
    for (const char* const nothing : {"", " ", ";", "-- select 1"}) {
        EXPECT_EQ(Refusal(nothing), "scrivel: the question is empty\n") << nothing;
    }
}

TEST_F(Query, TellsThatTheQuestionStandsAfterTheLogs)
{
    for (const std::vector<std::string>& arguments :
         {std::vector<std::string>{"query", "select 1"}, {"query", "select 1", "run.xml"}}) {
        const Outcome outcome = Run(arguments);
        EXPECT_EQ(outcome.error,
                  "scrivel: the question stands after the logs: scrivel query run-4242.xml "
                  "'select name, took from calls'\n");
        EXPECT_EQ(outcome.out, "");
        EXPECT_EQ(outcome.status, 2);
    }
    for (const std::vector<std::string>& help :
         {std::vector<std::string>{"query", "--help"}, {"--man"}}) {
        EXPECT_THAT(Run(help).out, HasSubstr("\nThe question stands after the logs.\n"
                                             "Its tables are logs, calls, arguments and results, "
                                             "its views failed, open and durations.\n"));
    }
}

TEST_F(Query, IsAnsweredInOneFormat)
{
    const Outcome outcome = Run({"query", "--csv", "--json", "run.xml", "select 1"});
    EXPECT_EQ(outcome.error, "scrivel: --csv or --json, not both\n");
    EXPECT_EQ(outcome.out, "");
    EXPECT_EQ(outcome.status, 2);
}

TEST_F(Query, HasNullForWhatJsonHasNoNumberFor)
{
    EXPECT_EQ(Answer("select 1e400 as much, -1e400 as little", "--json"),
              "{\"much\":null,\"little\":null}\n");
}

TEST_F(Query, IsNotAnsweredWhenNoLogCanBeRead)
{
    Write("none.xml", "");
    for (const char* const option : {"--csv", "--json", "--color=never"}) {
        const Outcome outcome =
            Run({"query", option, "nosuch.xml", "none.xml", "select count(*) from calls"});
        EXPECT_EQ(outcome.error,
                  "scrivel: nosuch.xml: No such file or directory\nscrivel: none.xml:1: the document "
                  "ends too early (byte 0)\nscrivel: none.xml: the log is empty\n");
        EXPECT_EQ(outcome.out, "");
        EXPECT_EQ(outcome.status, 2);
    }
    const Outcome some = Run({"query", "--csv", "nosuch.xml", "run.xml", "select count(*) from calls"});
    EXPECT_EQ(some.out, "count(*)\n4\n");
    EXPECT_EQ(some.status, 2);
}

TEST_F(Query, WithoutAnAnswerIsNotFound)
{
    EXPECT_EQ(Run({"query", "run.xml", "select call from calls where call > 99"}).status, 1);
}

}  // namespace
