// Every block of code in README.md and docs/*.md is code that was compiled and run, or what came of it.
// The comment in the line above a block says which:
//
//     <!-- snippet: tests/docs/Use.cpp readme-use -->    the region of that file
//     <!-- log: interrupted -->                          lines of the log that the snippet writes
//     <!-- log: use use-of-layer -->                     of the logs of each of these snippets
//     <!-- log: interrupted/running -->                  lines of the file at that moment of it
//     <!-- excerpt: tests/package/CMakeLists.txt -->     lines of that file
//     <!-- output: failed-calls -->                      what that region of Recipes.sh prints
//     <!-- commands -->                                  command lines that begin with a script of ours
//
// In logs, excerpts and output a line of "..." stands for any others.
//
// Blocks of the language "text" are drawings and need none of these.

#include "docs/Markdown.h"
#include "docs/Snippets.h"

#include "support/GeneratorTest.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <regex>
#include <sstream>
#include <utility>

namespace ScrivelDocs
{
namespace
{

namespace fs = std::filesystem;

const fs::path source = SCRIVEL_SOURCE_DIR;

std::string Text(const Lines& lines)
{
    std::string text;
    for (const std::string& line : lines) {
        text += line + "\n";
    }
    return text;
}

/// What differs from run to run is compared by its shape.
Lines Shape(const Lines& lines)
{
    static const std::pair<std::regex, const char*> shapes[] = {
        {std::regex(R"(\d{4}-\d\d-\d\d \d\d:\d\d:\d\d)"), "<date>"},
        {std::regex(R"(hostname="[^"]*")"), "hostname=\"<host>\""},
        {std::regex(R"(\d+\.\d{6} s)"), "<seconds> s"},
        {std::regex(R"(threadId="\d+")"), "threadId=\"<thread>\""},
        {std::regex(R"(\b([a-z_]+)-\d+(?=$|>|\.xml))"), "$1-<process>"},
        {std::regex(R"((<simulationFactory>0x)[0-9a-f]{16}<)"), "$1<address><"},
    };
    Lines shaped;
    for (std::string line : lines) {
        for (const auto& [pattern, replacement] : shapes) {
            line = std::regex_replace(line, pattern, replacement);
        }
        shaped.push_back(line);
    }
    return shaped;
}

// ---- Blocks of code -----------------------------------------------------------------------------

/// A page of the documentation, by its path from the root of the tree.
class Documentation : public ScrivelTest::ScratchTest, public testing::WithParamInterface<std::string>
{
protected:
    Documentation()
    {
        // Each look at the clock is a little later than the last one.
        ScrivelTest::platform.gettimeofday.Use([this](timeval* moment, void*) {
            *moment = {1000, microseconds};
            microseconds += 11;
            return 0;
        });
        for (const auto& part : {UseSnippets(), LogFormatSnippets(), CallingOrderSnippets()}) {
            snippets.insert(part.begin(), part.end());
        }
    }

    void Check(const Block& block)
    {
        const Lines& arguments = block.arguments;
        if (block.kind == "snippet" && arguments.size() == 2) {
            EXPECT_EQ(Text(block.text), Text(RegionOf(ReadLines(source / arguments[0]), arguments[1])));
        } else if (block.kind == "log" && !arguments.empty()) {
            for (const std::string& name : arguments) {
                CheckLog(block.text, name);
            }
        } else if (block.kind == "excerpt" && arguments.size() == 1) {
            EXPECT_TRUE(Shows(ReadLines(source / arguments[0]), block.text)) << Text(block.text);
        } else if (block.kind == "output" && arguments.size() == 1) {
            CheckOutput(block.text, arguments[0]);
        } else if (block.kind == "commands") {
            CheckCommands(block.text);
        } else {
            EXPECT_EQ(block.language, "text") << "says not where it comes from";
        }
    }

private:
    void CheckLog(const Lines& shown, const std::string& name)
    {
        const std::string snippet = name.substr(0, name.find('/'));
        ASSERT_EQ(snippets.count(snippet), 1U) << "no snippet " << snippet;
        const fs::path folder = fs::absolute("log");
        const fs::path before = fs::current_path();
        fs::create_directory(folder);
        fs::current_path(folder);
        snippets.at(snippet)();
        fs::current_path(before);

        const std::string extension = snippet == name ? "" : name.substr(snippet.size() + 1) + ".moment";
        bool found = false;
        std::string written;
        for (const auto& file : fs::directory_iterator(folder)) {
            const std::string fileName = file.path().filename();
            if (extension.empty() ? file.path().extension() == ".xml" : fileName == extension) {
                const Lines lines = ReadLines(file.path());
                written += Text(lines);
                found = found || Shows(Shape(lines), Shape(shown));
            }
        }
        fs::remove_all(folder);
        EXPECT_TRUE(found) << "shown:\n" << Text(shown) << "written:\n" << written;
    }

    /// Runs a recipe in a folder that holds the logs of the example session.
    static void CheckOutput(const Lines& shown, const std::string& recipe)
    {
        const fs::path folder = fs::absolute("session");
        if (!fs::exists(folder)) {
            fs::create_directory(folder);
            Run(folder, {SCRIVEL_DEBUG_SESSION});
            Run(folder, {std::string(SCRIVEL_DEBUG_SESSION) + " --crash"});
        }
        const Lines written = Run(folder, RegionOf(ReadLines(source / "tests/docs/Recipes.sh"), recipe));
        EXPECT_TRUE(Shows(Shape(written), Shape(shown))) << "shown:\n"
                                                         << Text(shown) << "written:\n"
                                                         << Text(written);
    }

    /// What the shell prints that runs these lines in the folder.
    static Lines Run(const fs::path& folder, const Lines& script)
    {
        const fs::path before = fs::current_path();
        fs::current_path(folder);
        std::ofstream("../script") << Text(script);
        const int status = std::system("sh ../script >../output 2>&1");
        fs::current_path(before);
        EXPECT_NE(status, -1);
        return ReadLines("output");
    }

    static void CheckCommands(const Lines& lines)
    {
        for (const std::string& line : lines) {
            const fs::path command = source / line.substr(0, line.find(' '));
            EXPECT_TRUE(fs::is_regular_file(command)) << line;
            EXPECT_NE(fs::status(command).permissions() & fs::perms::owner_exec, fs::perms::none) << line;
        }
    }

    Snippets snippets;
    long microseconds = 0;
};

TEST_P(Documentation, ShowsWhatWasCompiledAndRun)
{
    for (const Block& block : BlocksIn(ReadLines(source / GetParam()))) {
        SCOPED_TRACE(GetParam() + ":" + std::to_string(block.line));
        Check(block);
    }
}

TEST_P(Documentation, LinksToFilesThatExist)
{
    const fs::path page = source / GetParam();
    for (const std::string& link : FileLinksIn(ReadLines(page))) {
        EXPECT_TRUE(fs::exists(page.parent_path() / link)) << GetParam() << " links to " << link;
    }
}

std::vector<std::string> Pages()
{
    std::vector<std::string> pages = {"README.md", "CHANGELOG.md"};
    for (const auto& file : fs::directory_iterator(source / "docs")) {
        if (file.path().extension() == ".md") {
            pages.push_back("docs/" + file.path().filename().string());
        }
    }
    std::sort(pages.begin(), pages.end());
    return pages;
}

INSTANTIATE_TEST_SUITE_P(Page, Documentation, testing::ValuesIn(Pages()), [](const auto& page) {
    return std::regex_replace(page.param, std::regex("[^A-Za-z]"), "_");
});

}  // namespace
}  // namespace ScrivelDocs
