// A folder with what goes into a bug report.

#include "tool/SessionLogs.h"

#include <filesystem>

#include <gmock/gmock.h>

using namespace ScrivelTest;
using testing::HasSubstr;
using testing::Not;

namespace
{

using Report = SessionTest;

/// A call that returned, or hadn't when the log ended.
std::string CallOf(int number, const std::string& name, bool returned = true,
                   const std::string& values = "")
{
    return "    <" + name + " call_num=\"" + std::to_string(number) +
           "\"\n     call_time=\"0.000001 s\">\n" + values +
           (returned ? "        <return_time>0.000001 s</return_time>\n" : "") + "    </" + name + ">\n";
}

/// From one number to another.
std::string CallsOf(int first, int last)
{
    std::string elements;
    for (int number = first; number <= last; ++number)
        elements += CallOf(number, "A");
    return elements;
}

/// What stands under a heading.
std::string Section(const std::string& page, const std::string& title)
{
    const std::string heading = "## " + title + "\n";
    const std::size_t begin = page.find(heading);
    if (begin == std::string::npos)
        return "";
    return page.substr(begin, page.find("\n## ", begin) - begin);
}

TEST_F(Report, TellsOfTheCallWhatWasKnownAndWhatCameBefore)
{
    const Outcome outcome = Run({"report", "crash-4242.xml", "-o", "bug"});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.error, "");
    EXPECT_EQ(outcome.out,
              "bug: report.md, calls.xml, page.html\n"
              "Names of hosts and paths are in it; --anonymous leaves them out.\n"
              "A log shows what the debugger has read of the target's memory:\nlook at what you send.\n");
    const std::string page = Read("bug/report.md");
    EXPECT_THAT(page, HasSubstr("# had not returned when the log ended\n\n```text\ncrash-4242.xml"));
    EXPECT_THAT(page, HasSubstr("## The call\n\n```text\ncall 68  CADIMemWrite  NOT RETURNED\n"));
    EXPECT_THAT(page, HasSubstr("## What was known\n\n```text\nbefore call 68 CADIMemWrite: "));
    EXPECT_THAT(page, HasSubstr("## What came before\n\n```text\n  49  "));
    EXPECT_THAT(page, HasSubstr("## What failed\n\n```text\n   5  "));
    EXPECT_THAT(page, HasSubstr("the log is of CADI 2.0, Linux"));
}

TEST_F(Report, HasASmallLogOfTheLastCalls)
{
    Run({"report", "crash-4242.xml", "-o", "bug"});
    EXPECT_EQ(Run({"check", "bug/calls.xml"}).out,
              "bug/calls.xml: whole, 50 calls, 1 failed, 1 not returned\n"
              "  #68 CADIMemWrite had not returned when the log ended (line 828, byte 27764)\n");
}

TEST_F(Report, HasAsManyCallsWhereTheLastOneIsDamaged)
{
    const std::string log = LogOf(CallsOf(1, 60));
    Write("log.xml", log);
    Write("cut.xml", log.substr(0, log.rfind("<return_time>")));
    for (const char* const file : {"log.xml", "cut.xml"}) {
        Run({"report", file, "-o", "bug", "--force"});
        EXPECT_EQ(Run({"check", "bug/calls.xml"}).out, "bug/calls.xml: whole, 50 calls\n") << file;
    }
}

TEST_F(Report, IsAboutTheSecondCallOfANumberToo)
{
    Write("twice.xml", LogOf(CallOf(1, "A") + CallOf(2, "B") + CallOf(2, "C", false)));
    EXPECT_EQ(Run({"report", "twice.xml", "-o", "bug"}).status, 0);
    const std::string page = Read("bug/report.md");
    EXPECT_THAT(Section(page, "The call"), HasSubstr("\ncall 2#2  C  NOT RETURNED\n"));
    EXPECT_THAT(Section(page, "The call"), Not(HasSubstr("call 2  B")));
    EXPECT_THAT(Section(page, "What was known"), HasSubstr("\nbefore call 2#2 C: "));
    EXPECT_THAT(Section(page, "What came before"), HasSubstr(" B("));
}

TEST_F(Report, IsAboutTheFirstCallOfANumberToo)
{
    Write("twice.xml", LogOf(CallOf(2, "B", false) + CallOf(2, "C")));
    EXPECT_EQ(Run({"report", "twice.xml", "-o", "bug"}).status, 0);
    const std::string page = Read("bug/report.md");
    EXPECT_THAT(Section(page, "The call"), HasSubstr("\ncall 2  B  NOT RETURNED\n"));
    EXPECT_THAT(Section(page, "The call"), Not(HasSubstr("C")));
    EXPECT_THAT(Section(page, "What was known"), HasSubstr("\nbefore call 2 B: "));
}

TEST_F(Report, HasTheLastCallsWhereNumbersBeginAnew)
{
    Write("anew.xml", LogOf(CallsOf(1, 60) + CallsOf(1, 20)));
    Run({"report", "anew.xml", "-o", "bug"});
    EXPECT_EQ(Run({"check", "bug/calls.xml"}).out, "bug/calls.xml: whole, 50 calls\n");
    EXPECT_THAT(Run({"calls", "bug/calls.xml"}).out, testing::StartsWith("  31  "));

    Write("open.xml", LogOf(CallsOf(1, 60) + CallOf(1, "B", false) + CallsOf(2, 70)));
    Run({"report", "open.xml", "-o", "bug", "--force"});
    EXPECT_THAT(Run({"check", "bug/calls.xml"}).out,
                testing::StartsWith("bug/calls.xml: whole, 51 calls, 1 not returned\n"));
    EXPECT_THAT(Run({"calls", "bug/calls.xml"}).out,
                testing::StartsWith("   1  0.000001            B() "));
    EXPECT_THAT(Section(Read("bug/report.md"), "What came before"), HasSubstr("```text\n  42  "));
}

TEST_F(Report, ShowsWhatCameBeforeTheCallAndNotAfterIt)
{
    Write("after.xml", LogOf(CallsOf(1, 29) + CallOf(30, "B", false) + CallsOf(31, 60)));
    Run({"report", "after.xml", "-o", "bug"});
    EXPECT_THAT(
        Section(Read("bug/report.md"), "What came before"),
        testing::MatchesRegex("## What came before\n\n```text\n  11  .*\n  30  0.000001            "
                              "B\\(\\)[^\n]*NOT RETURNED\n```\n"));
}

TEST_F(Report, HasAPageOfTheSmallLog)
{
    Run({"report", "crash-4242.xml", "-o", "bug"});
    ASSERT_EQ(Run({"view", "bug/calls.xml", "-o", "calls.html"}).status, 0);
    const std::string page = Read("bug/page.html");
    EXPECT_EQ(page.substr(0, 15), "<!doctype html>");
    EXPECT_EQ(page.size(), Read("calls.html").size());
}

TEST_F(Report, TellsOfALogWithoutCallsToo)
{
    Write("none.xml", LogOf(""));
    EXPECT_EQ(Run({"report", "none.xml", "-o", "bug"}).status, 0);
    EXPECT_EQ(Read("bug/page.html").substr(0, 15), "<!doctype html>");
}

TEST_F(Report, LeavesHostsAndPathsOutWhenItIsToldTo)
{
    std::string log =
        LogOf("    <CADISimLoad call_num=\"1\"\n     call_time=\"0.1 s\">\n"
              "        <file>/home/someone/model.elf</file>\n        <text>a/b lab7 lab77</text>\n"
              "        <return_time>0.2 s</return_time>\n    </CADISimLoad>\n");
    std::filesystem::create_directory(Folder() + "/secret");
    Write("secret/run.xml", log);
    Run({"report", "--anonymous", "secret/run.xml", "-o", "bug"});
    for (const char* const file : {"bug/report.md", "bug/calls.xml", "bug/page.html"}) {
        EXPECT_THAT(Read(file), Not(HasSubstr("someone"))) << file;
        EXPECT_THAT(Read(file), Not(HasSubstr("secret"))) << file;
        EXPECT_THAT(Read(file), Not(HasSubstr("lab7 "))) << file;
        EXPECT_THAT(Read(file), Not(HasSubstr("lab7\""))) << file;
    }
    EXPECT_THAT(Read("bug/calls.xml"),
                HasSubstr("<file>path</file>\n        <text>a/b host lab77</text>"));
    EXPECT_EQ(Run({"check", "bug/calls.xml"}).status, 0);
}

/// Texts as a log may have them, and what is left of them.
struct Hidden
{
    std::string text;
    std::string left;
};

TEST_F(Report, LeavesOutPathsOfEveryKindAndWhatIsNone)
{
    const Hidden texts[] = {
        {"/secretroot.so", "path"},
        {"~/secret/x and ~joe/secret", "path and path"},
        {"./secret or ../secret/x.so.", "path or path."},
        {"models/secret/rel.so", "path"},
        {"secret/rel.so", "path"},
        {"a secret\\rel.dll", "a path"},
        {"C:\\Users\\joe\\secret.dll", "path"},
        {"C:\\Program Files (x86)\\Secret\\x.dll is gone", "path is gone"},
        {"d:/joe/secret", "path"},
        {"\\\\server\\share\\secret", "path"},
        {"-L/home/joe/secret -I../secret -IC:\\secret", "-Lpath -Ipath -Ipath"},
        {"--model=/home/joe/secret,plugin=secret/x.so", "--model=path,plugin=path"},
        {"PATH=/home/joe/secret:/opt/secret", "PATH=path:path"},
        {"/home/joe smith/secret/model.so", "path"},
        {"in &quot;/home/joe van secret/x&quot; and '/home/j van secret'",
         "in &quot;path&quot; and 'path'"},
        {"/home/joe&amp;secret/x@2/j\u00f6rg", "path"},
        {"file:///home/joe/secret", "path"},
        {"(/home/joe/secret) {/secret} @/secret", "(path) {path} @path"},
        {"a/b 1/2 1.0/2.5 2026/11/21 10 / 2", "a/b 1/2 1.0/2.5 2026/11/21 10 / 2"},
        {"https://example.com/a/b.html", "https://example.com/a/b.html"},
        {"about ~5 ... x -a and/or // s\\n", "about ~5 ... x -a and/or // s\\n"},
        {"startAddress.location.addr 0x3000 C: 3", "startAddress.location.addr 0x3000 C: 3"},
    };
    std::string values;
    std::string left;
    for (const Hidden& each : texts) {
        values += "        <text>" + each.text + "</text>\n";
        left += "        <text>" + each.left + "</text>\n";
    }
    Write("run.xml", LogOf(CallOf(1, "A", false, values)));
    EXPECT_EQ(Run({"report", "--anonymous", "run.xml", "-o", "bug"}).status, 0);
    EXPECT_THAT(Read("bug/calls.xml"), HasSubstr(left));
    for (const char* const file : {"bug/report.md", "bug/calls.xml", "bug/page.html"})
        for (const char* const part : {"secret", "joe", "Secret", "smith"})
            EXPECT_THAT(Read(file), Not(HasSubstr(part))) << file;
}

TEST_F(Report, KeepsTheNameOfTheLogAndNotItsFolder)
{
    std::filesystem::create_directory(Folder() + "/deep");
    const std::string log = LogOf(CallOf(1, "A", false, "        <text>deep/x ./y</text>\n"));
    Write("run.xml", log);
    Write("deep/run.xml", log);
    for (const std::string& place : {std::string("deep/"), std::string("./"), Folder() + "/deep/"}) {
        Run({"report", "--anonymous", place + "run.xml", "-o", "bug", "--force"});
        const std::string page = Read("bug/report.md");
        EXPECT_THAT(page, HasSubstr("\nrun.xml  ")) << place;
        EXPECT_THAT(page, HasSubstr("scrivel show 1 run.xml")) << place;
        EXPECT_THAT(Read("bug/calls.xml"),
                    HasSubstr(place == "deep/" ? "<text>path path</text>" : "<text>deep/x path</text>"));
    }
}

TEST_F(Report, IsOfOneLogThatIsAFile)
{
    for (const std::vector<std::string>& logs :
         {std::vector<std::string>{"crash-4242.xml", "run-4243.xml"}, {"."}}) {
        std::vector<std::string> arguments = {"report", "-o", "bug"};
        arguments.insert(arguments.end(), logs.begin(), logs.end());
        const Outcome outcome = Run(arguments);
        EXPECT_EQ(outcome.error, "scrivel: one log at a time\n");
        EXPECT_EQ(outcome.out, "");
        EXPECT_EQ(outcome.status, 2);
    }
    for (const char* const stream : {"-", "/dev/null"}) {
        const Outcome outcome = Run({"report", stream, "-o", "bug"}, Read("crash-4242.xml"));
        EXPECT_EQ(outcome.error, "scrivel: a report reads the log more than once: name a file\n");
        EXPECT_EQ(outcome.out, "");
        EXPECT_EQ(outcome.status, 2);
    }
    EXPECT_FALSE(std::filesystem::exists(Folder() + "/bug"));
}

TEST_F(Report, IsOfTheOnlyLogOfAFolder)
{
    std::filesystem::create_directory(Folder() + "/logs");
    Write("logs/crash-4242.xml", Read("crash-4242.xml"));
    EXPECT_EQ(Run({"report", "logs", "-o", "bug"}).status, 0);
    EXPECT_THAT(Read("bug/report.md"), HasSubstr("```text\nlogs/crash-4242.xml  "));
}

TEST_F(Report, ReplacesNoOtherReport)
{
    Run({"report", "crash-4242.xml", "-o", "bug"});
    EXPECT_EQ(Run({"report", "crash-4242.xml", "-o", "bug"}).status, 2);
    EXPECT_EQ(Run({"report", "crash-4242.xml", "-o", "bug", "--force"}).status, 0);
    EXPECT_EQ(Run({"report", "none.xml", "-o", "other"}).error,
              "scrivel: none.xml: No such file or directory\n");
    EXPECT_FALSE(std::filesystem::exists(Folder() + "/other"));
}

}  // namespace
