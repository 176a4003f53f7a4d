// Every block of code in README.md and docs/*.md is code that was compiled and run, or what came of it.
// The comment in the line above a block says which:
//
//     <!-- program: examples/guard.cpp -->               the whole file
//     <!-- snippet: tests/docs/Logging.cpp wrapper -->     the region of that file
//     <!-- excerpt: tests/package/CMakeLists.txt -->     lines of that file
//     <!-- log: interrupted -->                          lines of the log that the snippet writes
//     <!-- log: interrupted/running -->                  lines of the file at that moment of it
//     <!-- log: examples/one_call -->                    lines of the log that the program writes
//     <!-- recipe: failed-calls -->                      what a reader types: see below
//     <!-- output: failed-calls -->                      what that recipe prints
//     <!-- installed: guard -->                          a line that installed.sh tries
//     <!-- commands -->                                  scripts of the tree, which are there to be run
//
// In logs, excerpts and output a line of "..." stands for any others. A page's recipes are typed into one
// shell, in their order, beginning at the root of a built tree.
//
// Blocks of the language "text" are drawings and need none of these.

#include "docs/BuiltTree.h"
#include "docs/Markdown.h"
#include "docs/Snippets.h"

#include "support/GeneratorTest.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <optional>
#include <regex>
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
        {std::regex(R"(\bone a decade, .* to .*)"), "one a decade"},  // from 0 or another time
        {std::regex(R"(\d+\.\d{6} s)"), "<seconds> s"},
        {std::regex(R"(threadId="\d+")"), "threadId=\"<thread>\""},
        {std::regex(R"xx("(thread|call_time|return_time|offset)":[0-9.]+)xx"), "\"$1\":<number>"},
        {std::regex(R"(\b\d+\.\d{6}\b)"), "<seconds>"},
        {std::regex(R"( *\b\d+(\.\d+)? (ns|us|ms|s)\b)"), " <time>"},
        {std::regex(R"(\b\d+(\.\d+)?(ns|us|ms)\b)"), "<time>"},
        {std::regex(R"(\b(T\d+), \d+)"), "$1, <thread>"},
        {std::regex(R"(\bprocess \d+( on [^,]*)?)"), "process <process>"},
        {std::regex(R"( +(total|median|p95|max)\b)"), " $1"},  // over columns as wide as their values
        {std::regex(R"(\b(most time in|calls -n) \w+)"), "$1 <name>"},
        {std::regex("(·|▁|▂|▃|▄|▅|▆|▇|█)+"), "<bar>"},
        {std::regex(R"(\b0x7f[0-9a-f]{10}\b)"), "<address>"},
        {std::regex(R"(\b(byte|bytes \d+ to) \d+)"), "$1 <offset>"},
        {std::regex(R"(\bbytes \d+ to)"), "bytes <offset> to"},
        {std::regex(R"(\b(line |\.xml:)\d+)"), "$1<line>"},  // two threads may overlap before it
        {std::regex(R"(\b\d+ (bytes dropped))"), "<number> $1"},
        {std::regex(R"(\b([a-z_]+)-\d+(?=$|>|(\.\d+)?\.xml))"), "$1-<process>"},
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
        clock.emplace(ScrivelTest::platform.gettimeofday, [this](timeval* moment, void*) {
            *moment = {1000, microseconds};
            microseconds += 11;
            return 0;
        });
        for (const auto& part : {LoggingSnippets(), LogFormatSnippets(), CallingOrderSnippets()}) {
            snippets.insert(part.begin(), part.end());
        }
    }

    void Check(const Block& block)
    {
        const Lines& arguments = block.arguments;
        if (block.kind == "program" && arguments.size() == 1) {
            EXPECT_EQ(Text(block.text), Text(ReadLines(source / arguments[0])));
        } else if (block.kind == "snippet" && arguments.size() == 2) {
            EXPECT_EQ(Text(block.text), Text(RegionOf(ReadLines(source / arguments[0]), arguments[1])));
        } else if (block.kind == "log" && arguments.size() == 1) {
            CheckLog(block.text, arguments[0]);
        } else if (block.kind == "excerpt" && arguments.size() == 1) {
            EXPECT_TRUE(Shows(ReadLines(source / arguments[0]), block.text)) << Text(block.text);
        } else if (block.kind == "recipe" && arguments.size() == 1) {
            EXPECT_EQ(outcomes.at(arguments[0]).status, 0) << Text(outcomes.at(arguments[0]).printed);
        } else if (block.kind == "output" && arguments.size() == 1) {
            const Lines& printed = outcomes[arguments[0]].printed;
            EXPECT_TRUE(IsShortenedTo(Shape(printed), Shape(block.text)))
                << "shown:\n"
                << Text(block.text) << "printed:\n"
                << Text(printed);
        } else if (block.kind == "commands") {
            CheckCommands(block.text);
        } else if (block.kind != "installed") {
            EXPECT_EQ(block.language, "text") << "says not where it comes from";
        }
    }

    void TypeRecipesOf(const std::vector<Block>& blocks)
    {
        std::vector<std::string> names;
        std::vector<Lines> recipes;
        for (const Block& block : blocks) {
            if (block.kind == "recipe") {
                names.push_back(block.arguments.at(0));
                recipes.push_back(block.text);
            }
        }
        if (!recipes.empty()) {
            const std::vector<Outcome> typed = BuiltTree().TypeInTurn(recipes);
            for (std::size_t i = 0; i < names.size(); ++i) {
                outcomes[names[i]] = typed[i];
            }
        }
    }

private:
    static void CheckCommands(const Lines& commands)
    {
        for (const std::string& command : commands) {
            const fs::path script = source / command.substr(0, command.find(' '));
            ASSERT_TRUE(fs::exists(script)) << command;
            EXPECT_NE(fs::status(script).permissions() & fs::perms::owner_exec, fs::perms::none)
                << command;
        }
    }

    void CheckLog(const Lines& shown, const std::string& name)
    {
        const fs::path folder = fs::absolute("log");
        const fs::path before = fs::current_path();
        fs::create_directory(folder);
        fs::current_path(folder);
        const std::string moment = WriteLog(name);
        fs::current_path(before);

        bool found = false;
        std::string written;
        for (const auto& file : fs::directory_iterator(folder)) {
            const fs::path fileName = file.path().filename();
            if (moment.empty() ? fileName.extension() == ".xml" : fileName == moment) {
                const Lines lines = ReadLines(file.path());
                written += Text(lines);
                found = found || Shows(Shape(lines), Shape(shown));
            }
        }
        fs::remove_all(folder);
        EXPECT_TRUE(found) << "shown:\n" << Text(shown) << "written:\n" << written;
    }

    /// Writes the log of a snippet or of an example into the current folder. The file at that moment,
    /// when the name tells one.
    std::string WriteLog(const std::string& name)
    {
        const std::size_t slash = name.find('/');
        const std::string snippet = name.substr(0, slash);
        if (snippet == "examples") {
            const std::string program = SCRIVEL_EXAMPLES_DIR + name.substr(slash);
            EXPECT_EQ(std::system(('"' + program + '"').c_str()), 0) << name;
            return "";
        }
        EXPECT_EQ(snippets.count(snippet), 1U) << "no snippet " << snippet;
        if (snippets.count(snippet) == 1) {
            snippets.at(snippet)();
        }
        return slash == std::string::npos ? "" : name.substr(slash + 1) + ".moment";
    }

    Snippets snippets;
    std::map<std::string, Outcome> outcomes;  // of the page's recipes
    long microseconds = 0;
    std::optional<ScrivelTest::StubOf<&ScrivelTest::Platform::gettimeofday>> clock;
};

TEST_P(Documentation, ShowsWhatWasCompiledAndRun)
{
    const std::vector<Block> blocks = BlocksIn(ReadLines(source / GetParam()));
    TypeRecipesOf(blocks);
    for (const Block& block : blocks) {
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

TEST(Examples, ShowOneIdeaInLessThan40Lines)
{
    for (const auto& file : fs::directory_iterator(source / "examples")) {
        if (file.path().extension() == ".cpp") {
            EXPECT_LT(ReadLines(file.path()).size(), 40U) << file.path();
        }
    }
}

std::vector<std::string> Pages()
{
    std::vector<std::string> pages = {"README.md", "CHANGELOG.md", "SECURITY.md"};
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
