// Commands, typed as a reader of the documentation types them. DocumentationTest.cpp, DemoTest.cpp and
// RecipesTest.cpp rest on it.

#include "docs/BuiltTree.h"

#include "support/Shell.h"

#include <cstdlib>
#include <fstream>
#include <string>

namespace ScrivelDocs
{

namespace fs = std::filesystem;
using ScrivelTest::Quoted;

namespace
{

void WriteTool(const fs::path& file, const std::string& line)
{
    std::ofstream(file) << "#!/bin/sh\n" << line << '\n';
    fs::permissions(file, fs::perms::owner_all);
}

}  // namespace

BuiltTree::BuiltTree() : root(fs::absolute("tree")), tools(fs::absolute("tools"))
{
    const fs::path session = root / "build/demo/examples/session";
    const fs::path tool = root / "build/demo/tool";
    fs::create_directories(session);
    fs::create_directories(tool);
    for (const auto& entry : fs::directory_iterator(SCRIVEL_SOURCE_DIR)) {
        if (entry.path().filename() != "build") {
            fs::create_symlink(entry.path(), root / entry.path().filename());
        }
    }
    fs::create_symlink(SCRIVEL_DEBUG_SESSION, session / "debug_session");
    fs::create_symlink(SCRIVEL_PROGRAM, tool / "scrivel");

    fs::create_directory(tools);
    WriteTool(tools / "cmake", "echo cmake version 99.9");
    WriteTool(tools / "dpkg-query", "printf installed");
    WriteTool(tools / "g++", "exec " + Quoted(SCRIVEL_COMPILER) + " \"$@\"");
}

std::vector<Outcome> BuiltTree::TypeInTurn(const std::vector<Lines>& commands) const
{
    const fs::path folder = root.parent_path();
    const auto file = [&](const char* kind, std::size_t command) {
        return folder / (kind + std::to_string(command));
    };
    std::ofstream script(folder / "script");
    script << "cd " << Quoted(root) << "\nPATH=" << Quoted(tools) << ":$PATH\n"
           << "for options in ASAN TSAN UBSAN; do\n"  // sanitizers leave the crash alone
           << "  export ${options}_OPTIONS=handle_segv=0\n"
           << "done\n";
    for (std::size_t i = 0; i < commands.size(); ++i) {
        script << "{\n";
        for (const std::string& line : commands[i]) {
            script << line << '\n';
        }
        script << "} >" << Quoted(file("printed", i)) << " 2>&1\necho $? >" << Quoted(file("status", i))
               << '\n';
    }
    script.close();
    std::vector<Outcome> outcomes;
    if (std::system(("sh " + Quoted((folder / "script").string())).c_str()) == 0) {
        for (std::size_t i = 0; i < commands.size(); ++i) {
            const Lines status = ReadLines(file("status", i));
            outcomes.push_back(
                {ReadLines(file("printed", i)), status.empty() ? -1 : std::stoi(status[0])});
        }
    }
    outcomes.resize(commands.size(), {{"the shell itself has failed"}, -1});
    return outcomes;
}

}  // namespace ScrivelDocs
