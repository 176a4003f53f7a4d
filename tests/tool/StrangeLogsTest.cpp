// Files that are no logs, or logs as nobody writes them: a clear answer, and little memory.

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <thread>
#include <vector>

#include <gmock/gmock.h>
#include <libxml/parser.h>
#include <sys/stat.h>

#include "judge/LogJudge.h"
#include "tool/Program.h"

using namespace ScrivelTest;
using testing::HasSubstr;

namespace
{

constexpr long littleKiB = 8 * 1024;

std::string Call(int number, const std::string& content)
{
    return "    <A call_num=\"" + std::to_string(number) + "\" call_time=\"0.00000" +
           std::to_string(number) + " s\">\n        " + content + "\n        <return_time>0.00000" +
           std::to_string(number) + " s</return_time>\n    </A>\n";
}

class StrangeLogs : public ToolTest
{
protected:
    /// Reads log.xml with all commands; how much more memory one of them had at most, in KiB, than a
    /// plain log takes.
    long GrowthOfAll()
    {
        long growth = 0;
        for (const char* const command :
             {"check", "calls", "recover -o fixed.xml --force", "cut -o small.xml --force"}) {
            growth = std::max(growth, GrowthOf(command));
        }
        if (std::filesystem::exists(Folder() + "/fixed.xml")) {
            EXPECT_EQ(Run({"check", "fixed.xml"}).status, 0);
        }
        if (std::filesystem::exists(Folder() + "/small.xml")) {
            EXPECT_EQ(Run({"check", "small.xml"}).status, 0);
        }
        return memoryIsOurOwn ? growth : 0;
    }

    std::vector<std::string> Numbers(const std::string& name) const
    {
        return XPath(Read(name), "//@call_num");
    }

    void WriteAround(const std::string& before, const std::string& content)
    {
        std::string log = LogOf(Call(1, "<x>1</x>") + Call(2, content) + Call(3, "<x>1</x>"));
        Write("log.xml", log.insert(log.find("<run-"), before));
    }

    /// Of one command that reads log.xml. What the program takes by itself is left out: it differs from
    /// build to build, and one that counts lines has much more.
    long GrowthOf(const std::string& command) const
    {
        Write("plain.xml", LogOf(Call(1, "<x>1</x>")));
        const Peak usual = PeakOf("check plain.xml");
        EXPECT_EQ(usual.status, 0);
        const Peak peak = PeakOf(command + " log.xml");
        EXPECT_TRUE(peak.status >= 0 && peak.status <= 2) << command << " ended with " << peak.status;
        return peak.memory - usual.memory;
    }
};

TEST_F(StrangeLogs, OfZerosAloneTakeNoMemory)
{
    Write("log.xml", "");
    std::filesystem::resize_file(Folder() + "/log.xml", 64ULL << 20);
    EXPECT_LT(GrowthOfAll(), littleKiB);
    EXPECT_EQ(Run({"check", "log.xml"}).status, 1);
}

TEST_F(StrangeLogs, NestedDeeplyAreWhole)
{
    constexpr int depth = 100000;
    std::string deep;
    for (int i = 0; i < depth; ++i) {
        deep += "<x>";
    }
    for (int i = 0; i < depth; ++i) {
        deep += "</x>";
    }
    WriteAround("", deep);
    EXPECT_LT(GrowthOfAll(), 2 * littleKiB);
    EXPECT_EQ(Run({"check", "log.xml"}).out, "log.xml: whole, 3 calls\n");

    WriteAround("", deep.substr(0, deep.size() / 2));
    EXPECT_LT(GrowthOfAll(), 2 * littleKiB);
    EXPECT_EQ(Run({"check", "log.xml"}).status, 1);
    EXPECT_EQ(Numbers("fixed.xml"), (std::vector<std::string>{"1", "3"}));
}

TEST_F(StrangeLogs, WithAnAttributeOf100MegabytesLoseItsCall)
{
    if (!memoryIsOurOwn) {
        GTEST_SKIP() << "takes a minute with a sanitizer, and there is no memory to look at";
    }
    WriteAround("", "<x a=\"" + std::string(100 * 1000 * 1000, 'y') + "\"/>");
    EXPECT_LT(GrowthOf("recover -o fixed.xml"), 8 * littleKiB);
    EXPECT_THAT(Run({"check", "log.xml"}).out, HasSubstr("a tag or a comment is longer than 16 MB"));
    EXPECT_EQ(Numbers("fixed.xml"), (std::vector<std::string>{"1", "3"}));
}

TEST_F(StrangeLogs, InWhichNoCallReturnsTakeLittleMemory)
{
    std::string elements;
    for (int i = 1; i <= 20000; ++i) {
        elements += "    <A call_num=\"" + std::to_string(i) +
                    "\" call_time=\"0.000001 s\" threadId=\"1\">\n    </A>\n";
    }
    Write("log.xml", LogOf(elements));
    EXPECT_LT(GrowthOfAll(), 2 * littleKiB);
    EXPECT_LT(memoryIsOurOwn ? GrowthOf("state") : 0, 2 * littleKiB);
    EXPECT_THAT(Run({"log.xml"}).out, HasSubstr("20000 calls"));
}

TEST_F(StrangeLogs, WithEntitiesThatGrowExpandNone)
{
    std::string bomb = "<!DOCTYPE run [<!ENTITY a0 \"ha\">";
    for (int i = 1; i < 12; ++i) {
        bomb += "<!ENTITY a" + std::to_string(i) + " \"";
        for (int j = 0; j < 10; ++j) {
            bomb += "&a" + std::to_string(i - 1) + ";";
        }
        bomb += "\">";
    }
    WriteAround(bomb + "]>\n", "<x>&a11;</x>");
    EXPECT_LT(GrowthOfAll(), littleKiB);
    EXPECT_THAT(Run({"check", "log.xml"}).out, HasSubstr("a log has no document type declaration"));
    EXPECT_EQ(Numbers("fixed.xml"), (std::vector<std::string>{"1", "3"}));
}

TEST_F(StrangeLogs, WithExternalEntitiesFetchNone)
{
    // Whoever opened the pipe would wait for ever.
    ASSERT_EQ(mkfifo((Folder() + "/pipe").c_str(), 0600), 0);
    WriteAround(
        "<!DOCTYPE run SYSTEM \"pipe\" [<!ENTITY e SYSTEM \"pipe\"><!ENTITY % p SYSTEM \"pipe\"> %p;]>\n",
        "<x>&e;</x>");
    EXPECT_LT(GrowthOfAll(), littleKiB);
    EXPECT_THAT(Run({"check", "log.xml"}).out, HasSubstr("a log has no document type declaration"));
    EXPECT_EQ(Numbers("fixed.xml"), (std::vector<std::string>{"1", "3"}));
}

TEST_F(StrangeLogs, ThatAreTwoInOneFileEndWithTheFirst)
{
    Write("log.xml", LogOf(Call(1, "")) + LogOf(Call(2, "")));
    GrowthOfAll();
    EXPECT_THAT(Run({"check", "log.xml"}).out, HasSubstr("not whole, damaged at line 12, byte "));
    EXPECT_EQ(Numbers("fixed.xml"), std::vector<std::string>{"1"});
}

TEST_F(StrangeLogs, ThatAreEmptyAreNotWhole)
{
    Write("log.xml", "");
    EXPECT_EQ(Run({"check", "log.xml"}).out, "log.xml: not whole, empty\n");
    EXPECT_EQ(Run({"calls", "log.xml"}).status, 2);
    EXPECT_EQ(Run({"cut", "log.xml", "-o", "small.xml"}).status, 2);
}

TEST_F(StrangeLogs, ThatAreAFolderAreTheLogsInIt)
{
    std::filesystem::create_directory(Folder() + "/logs");
    EXPECT_EQ(Run({"check", "logs"}).error, "scrivel: logs: there is no log in this folder\n");
    Write("logs/log.xml", LogOf(Call(1, "")));
    EXPECT_EQ(Run({"check", "logs"}).out, "logs/log.xml: whole, 1 call\n");
    EXPECT_EQ(Run({"recover", "logs", "-o", "fixed.xml"}).error, "scrivel: logs: Is a directory\n");
}

TEST_F(StrangeLogs, ThatComeThroughAPipeAreRead)
{
    const std::string pipe = Folder() + "/pipe";
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    for (const std::vector<std::string>& command :
         {std::vector<std::string>{"check", "pipe"}, {"recover", "pipe", "-o", "fixed.xml"}}) {
        std::thread writer([&] { std::ofstream(pipe) << LogOf(Call(1, "")); });
        EXPECT_EQ(Run(command).status, 0);
        writer.join();
    }
    EXPECT_EQ(Read("fixed.xml"), LogOf(Call(1, "")));
}

TEST_F(StrangeLogs, ThatArePipesNobodyWritesIntoAreTrouble)
{
    ASSERT_EQ(mkfifo((Folder() + "/pipe").c_str(), 0600), 0);
    const Outcome outcome = Run({"check", "pipe"});
    EXPECT_EQ(outcome.error, "scrivel: pipe: nobody writes into this pipe\n");
    EXPECT_EQ(outcome.status, 2);
}

// ---- Logs that another program laid out -----------------------------------------------------------

/// As xmllint --format.
std::string Reformatted(const std::string& log)
{
    xmlKeepBlanksDefault(0);
    xmlDoc* const document =
        xmlReadMemory(log.data(), int(log.size()), nullptr, nullptr, XML_PARSE_NOBLANKS);
    xmlChar* text = nullptr;
    int size = 0;
    xmlDocDumpFormatMemory(document, &text, &size, 1);
    const std::string formatted(reinterpret_cast<const char*>(text), std::size_t(size));
    xmlFree(text);
    xmlFreeDoc(document);
    return formatted;
}

std::string Replaced(std::string text, const std::string& what, const std::string& by)
{
    for (std::size_t at = text.find(what); at != std::string::npos;
         at = text.find(what, at + by.size())) {
        text.replace(at, what.size(), by);
    }
    return text;
}

TEST_F(StrangeLogs, ThatWereReformattedHaveTheSameCalls)
{
    const std::string log = LogOf(
        Call(1, "<x>1</x>") + Call(2, "<y>\n            <z>2</z>\n        </y>") + Call(3, "<x>a b</x>"));
    Write("log.xml", log);
    const std::string expected = Run({"calls", "log.xml"}).out;
    ASSERT_THAT(expected, HasSubstr("A(y={z=2})"));
    for (const std::string& other :
         {Reformatted(log), Replaced(log, "\n", "\r\n"), Replaced(log, "    ", "\t"),
          Replaced(log, "\n", " "), Replaced(Replaced(log, "\n    <A", "<A"), ">\n", ">"),
          Replaced(log, "    ", "")}) {
        Write("other.xml", other);
        EXPECT_EQ(Run({"calls", "other.xml"}).out, expected) << other;
        EXPECT_EQ(Run({"check", "other.xml"}).out, "other.xml: whole, 3 calls\n");
        EXPECT_EQ(Run({"recover", "other.xml", "-o", "fixed.xml", "--force"}).status, 0);
        EXPECT_EQ(Read("fixed.xml"), other);
        EXPECT_EQ(Run({"cut", "--calls", "2", "other.xml", "-o", "small.xml", "--force"}).status, 0);
        EXPECT_EQ(Numbers("small.xml"), std::vector<std::string>{"2"});

        Write("other.xml", Replaced(other, "<z>2", "<z<2"));
        EXPECT_EQ(Run({"recover", "other.xml", "-o", "fixed.xml", "--force"}).status, 0);
        EXPECT_THAT(Numbers("fixed.xml"), testing::Contains("1"));
    }
}

}  // namespace
