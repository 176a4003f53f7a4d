// A whole log of a damaged one, as a file.

#include <sys/stat.h>

#include <filesystem>
#include <fstream>

#include <gmock/gmock.h>

#include "judge/LogJudge.h"
#include "tool/Program.h"

using namespace ScrivelTest;
using testing::HasSubstr;

namespace
{

constexpr char calls[] = R"(    <CADIReset call_num="1"
     call_time="0.000011 s"
     threadId="1234">
        <return_time>0.000022 s</return_time>
        <return>CADI_STATUS_OK</return>
    </CADIReset>
    <CADIStop call_num="2"
     call_time="0.000033 s"
     threadId="1234">
        <return_time>0.000044 s</return_time>
    </CADIStop>
)";

class Recover : public ToolTest
{
protected:
    Recover()
    {
        Write("run.xml", LogOf(calls));
        Write("torn.xml", LogOf(calls).substr(0, 400));
    }
    std::size_t Files() const
    {
        std::size_t count = 0;
        for (const auto& entry : std::filesystem::directory_iterator(Folder())) {
            count += entry.path().empty() ? 0U : 1U;
        }
        return count;
    }
};

TEST_F(Recover, WritesAWholeLog)
{
    const Outcome outcome = Run({"recover", "torn.xml", "-o", "fixed.xml"});
    EXPECT_EQ(outcome.out, "torn.xml: damage at byte 400 in call 2: the document ends too early\n"
                           "  1 element of 1 call kept, 83 bytes dropped with a comment\n");
    EXPECT_EQ(outcome.error, "");
    EXPECT_EQ(outcome.status, 0);
    EXPECT_TRUE(IsDocument(Read("fixed.xml")));
    EXPECT_EQ(XPath(Read("fixed.xml"), "//@call_num"), std::vector<std::string>{"1"});

    EXPECT_EQ(Run({"recover", "fixed.xml", "-o", "again.xml"}).out,
              "fixed.xml: whole; copied as it is, with 1 call\n");
    EXPECT_EQ(Read("again.xml"), Read("fixed.xml"));
    EXPECT_EQ(Files(), 4u);
}

/// A compressed log of so many calls, of which the end is missing.
void WriteCutGzip(const std::string& folder, int count)
{
    std::string elements;
    for (int number = 1; number <= count; ++number) {
        const std::string text = std::to_string(number);
        elements += "    <A call_num=\"" + text + "\"\n     call_time=\"0.000001 s\">\n        <n>" +
                    std::to_string(number * 7919 % 10007) +
                    "</n>\n        <return_time>0.000002 s</return_time>\n    </A>\n";
    }
    std::ofstream(folder + "/long.xml") << LogOf(elements);
    const std::string command = "gzip -c long.xml >whole.gz && "
                                "head -c $(($(wc -c <whole.gz) / 2)) whole.gz >cut.xml.gz";
    ASSERT_EQ(std::system(("cd " + Quoted(folder) + " && " + command).c_str()), 0);
}

TEST_F(Recover, KeepsWhatCanBeDecompressed)
{
    constexpr int count = 2000;
    WriteCutGzip(Folder(), count);
    const Outcome outcome = Run({"recover", "cut.xml.gz", "-o", "fixed.xml"});
    EXPECT_EQ(outcome.error, "");
    EXPECT_EQ(outcome.status, 0);
    EXPECT_THAT(outcome.out, testing::StartsWith("cut.xml.gz: damage at byte "));
    EXPECT_THAT(outcome.out, HasSubstr(": the compressed data end too early\n  "));
    const std::string fixed = Read("fixed.xml");
    EXPECT_THAT(fixed, HasSubstr(": the compressed data end too early -->\n</run-4242>\n"));
    const std::vector<std::string> numbers = XPath(fixed, "/*/*/@call_num");
    EXPECT_GT(numbers.size(), std::size_t(count / 4));
    EXPECT_LT(numbers.size(), std::size_t(count));
    EXPECT_EQ(numbers.back(), std::to_string(numbers.size()));
}

TEST_F(Recover, LeavesAWholeDocumentWholeWhoseCompressedDataEndTooEarly)
{
    ASSERT_EQ(
        std::system(("cd " + Quoted(Folder()) + " && gzip -c run.xml | head -c -8 >run.xml.gz").c_str()),
        0);
    EXPECT_EQ(Run({"recover", "run.xml.gz", "-o", "fixed.xml"}).out,
              "run.xml.gz: damage at byte " + std::to_string(LogOf(calls).size()) +
                  ": the compressed data end too early\n"
                  "  2 elements of 2 calls kept, 0 bytes dropped with a comment\n");
    EXPECT_TRUE(IsDocument(Read("fixed.xml")));
    EXPECT_THAT(Read("fixed.xml"), testing::StartsWith(LogOf(calls)));
}

TEST_F(Recover, ReadsStandardInput)
{
    EXPECT_EQ(Run({"recover", "-", "-o", "fixed.xml"}, LogOf(calls)).status, 0);
    EXPECT_EQ(Read("fixed.xml"), LogOf(calls));
}

TEST_F(Recover, ReplacesNoFileUnlessForced)
{
    Write("fixed.xml", "precious");
    const Outcome kept = Run({"recover", "torn.xml", "-o", "fixed.xml"});
    EXPECT_EQ(kept.error, "scrivel: fixed.xml: there is such a file already; --force replaces it\n");
    EXPECT_EQ(kept.status, 2);
    EXPECT_EQ(Read("fixed.xml"), "precious");
    EXPECT_EQ(Run({"recover", "torn.xml", "-o", "fixed.xml", "--force"}).status, 0);
    EXPECT_TRUE(IsDocument(Read("fixed.xml")));
}

TEST_F(Recover, NeverWritesInPlace)
{
    std::filesystem::create_symlink("torn.xml", Folder() + "/link.xml");
    for (const char* const name : {"torn.xml", "./torn.xml", "link.xml"}) {
        const Outcome outcome = Run({"recover", "torn.xml", "-o", name, "--force"});
        EXPECT_THAT(outcome.error, HasSubstr("a log is never written in place"));
        EXPECT_EQ(outcome.status, 2);
    }
    EXPECT_EQ(Read("torn.xml"), LogOf(calls).substr(0, 400));
}

TEST_F(Recover, LeavesNothingWhenItFails)
{
    EXPECT_EQ(Run({"recover", "none.xml", "-o", "fixed.xml"}).status, 2);
    EXPECT_EQ(Run({"recover", "torn.xml", "-o", "none/fixed.xml"}).error,
              "scrivel: none/fixed.xml: No such file or directory\n");
    EXPECT_EQ(Run({"recover", ".", "-o", "fixed.xml"}).status, 2);
    EXPECT_EQ(Run({"recover", "torn.xml", "run.xml", "-o", "fixed.xml"}).status, 2);
    EXPECT_EQ(Files(), 2u);
}

TEST_F(Recover, LeavesNothingWhenTheDiskIsFull)
{
    const Outcome outcome = Run({"recover", "torn.xml", "-o", "/dev/full"});
    EXPECT_EQ(outcome.error, "scrivel: /dev/full: No space left on device\n");
    EXPECT_EQ(outcome.status, 2);
}

TEST_F(Recover, FindsNothingInAFileThatIsNoLog)
{
    Write("empty.xml", "");
    EXPECT_EQ(Run({"recover", "empty.xml", "-o", "fixed.xml"}).status, 1);
    EXPECT_TRUE(IsDocument(Read("fixed.xml")));
}

TEST_F(Recover, RefusesWhatGoesWithNoComment)
{
    std::string wide = "\xff\xfe";
    for (const char c : "<?xml version=\"1.0\"?><run><a>1</a><b></run>") {
        wide.append(1, c).append(1, '\0');
    }
    Write("wide.xml", wide);
    const Outcome outcome = Run({"recover", "wide.xml", "-o", "fixed.xml"});
    EXPECT_EQ(outcome.error,
              "scrivel: wide.xml: what is left makes no document; is it encoded in UTF-8?\n");
    EXPECT_EQ(outcome.status, 2);
    EXPECT_EQ(Files(), 3u);
}

TEST_F(Recover, GivesTheFileTheRightsOfANewOne)
{
    ASSERT_EQ(Run({"recover", "torn.xml", "-o", "fixed.xml"}).status, 0);
    struct stat one
    {
    };
    struct stat other
    {
    };
    ASSERT_EQ(stat((Folder() + "/torn.xml").c_str(), &one), 0);
    ASSERT_EQ(stat((Folder() + "/fixed.xml").c_str(), &other), 0);
    EXPECT_EQ(one.st_mode, other.st_mode);
}

}  // namespace
