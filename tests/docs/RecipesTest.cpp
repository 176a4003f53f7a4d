// What README.md's recipes cost on a long log, counted in steps.

#include "docs/BuiltTree.h"

#include "support/GeneratorTest.h"

#include <LoggedCall.h>

#include <libxml/parser.h>
#include <libxml/xpath.h>

#include <fstream>
#include <regex>

namespace ScrivelDocs
{
namespace
{

namespace fs = std::filesystem;

class Recipes : public ScrivelTest::ScratchTest
{
protected:
    /// Those that are typed where the example session has left its logs.
    static std::vector<Lines> OnLogs()
    {
        std::vector<Lines> recipes;
        bool there = false;
        for (const Block& block : BlocksIn(ReadLines(fs::path(SCRIVEL_SOURCE_DIR) / "README.md"))) {
            if (there && block.kind == "recipe") {
                recipes.push_back(block.text);
            }
            there = there || (block.kind == "recipe" && block.text.back() == "cd build/demo/logs");
        }
        return recipes;
    }

    static std::vector<std::string> XPathExpressions()
    {
        static const std::regex pattern("--xpath '([^']*)'");
        std::vector<std::string> expressions;
        for (const Lines& recipe : OnLogs()) {
            std::smatch found;
            if (std::regex_search(recipe[0], found, pattern)) {
                expressions.push_back(found[1]);
            }
        }
        return expressions;
    }

    /// A log of so many calls, each interrupted by a callback, and one more that has not returned.
    static std::string Log(unsigned int calls)
    {
        Scrivel2::RunLog log("calls");
        for (unsigned int i = 0; i < calls / 2; ++i) {
            const Scrivel2::LoggedCall call(log, "CADIExecContinue");
            const Scrivel2::LoggedCall callback(log, "modeChange");
        }
        const Scrivel2::LoggedCall last(log, "CADIMemWrite");
        return FileText(log.FileName());
    }

    /// How many steps libxml2 takes to find what the expression stands for.
    static unsigned long Steps(const std::string& log, const std::string& expression)
    {
        const int size = static_cast<int>(log.size());
        const std::unique_ptr<xmlDoc, decltype(&xmlFreeDoc)> document(
            xmlReadMemory(log.data(), size, nullptr, nullptr, 0), xmlFreeDoc);
        const std::unique_ptr<xmlXPathContext, decltype(&xmlXPathFreeContext)> context(
            xmlXPathNewContext(document.get()), xmlXPathFreeContext);
        context->opLimit = ~0UL;  // without a limit nothing is counted
        xmlXPathFreeObject(
            xmlXPathEval(reinterpret_cast<const xmlChar*>(expression.c_str()), context.get()));
        return context->opCount;
    }
};

TEST_F(Recipes, XPathTakesStepsInProportionToTheCalls)
{
    const std::string few = Log(100);
    const std::string many = Log(1000);
    ASSERT_FALSE(XPathExpressions().empty());
    for (const std::string& expression : XPathExpressions()) {
        const unsigned long steps = Steps(few, expression);
        EXPECT_GT(steps, 100U) << expression;
        EXPECT_LE(Steps(many, expression), 11 * steps) << expression;
    }
}

// From a FIFO a log can be read once only, from its beginning to its end.
TEST_F(Recipes, ReadEachLogOnce)
{
    const BuiltTree tree;
    tree.Type({"scripts/demo", "scripts/demo --crash"});
    ASSERT_FALSE(OnLogs().empty());
    for (const Lines& recipe : OnLogs()) {
        std::ofstream file(tree.Root() / "recipe");
        for (const std::string& line : recipe) {
            file << line << '\n';
        }
        file.close();
        const auto outcomes = tree.TypeInTurn({
            {"PATH=$PWD/build/demo/tool:$PATH", "cd build/demo/logs", "sh ../../../recipe"},
            {"mkdir fifos", "for log in *.xml; do", "  mkfifo fifos/$log", "  cat $log >fifos/$log &",
             "  writers=\"$writers $!\"", "done"},
            {"cd fifos", "timeout 60 sh ../../../../recipe"},
            {"kill $writers", "cd ..", "rm -r fifos"},
        });
        EXPECT_EQ(outcomes[0].status, 0) << recipe[0];
        EXPECT_EQ(outcomes[2].status, 0) << recipe[0];
        EXPECT_EQ(outcomes[2].printed, outcomes[0].printed) << recipe[0];
    }
}

}  // namespace
}  // namespace ScrivelDocs
