// A tree of the project as its reader has it, to type commands into.

#ifndef SCRIVEL_TESTS_DOCS_BUILTTREE_H
#define SCRIVEL_TESTS_DOCS_BUILTTREE_H

#include "docs/Markdown.h"

#include <filesystem>
#include <vector>

namespace ScrivelDocs
{

/// What a command has printed, on both streams, and its exit status.
struct Outcome
{
    Lines printed;
    int status;
};

/// The project's files in the folder "tree", with the example session and scrivel where scripts/demo
/// builds them. The build itself is not tried here: the commands that make it, and those that install
/// packages for it, do nothing, and "g++" is the compiler of this build.
class BuiltTree
{
public:
    /// In the current folder, which is an empty one.
    BuiltTree();

    /// Types commands into one shell, one after another, each of one or more lines. The shell begins at
    /// the root of the tree.
    std::vector<Outcome> TypeInTurn(const std::vector<Lines>& commands) const;
    Outcome Type(const Lines& command) const { return TypeInTurn({command}).front(); }

    const std::filesystem::path& Root() const { return root; }

private:
    std::filesystem::path root;
    std::filesystem::path tools;
};

}  // namespace ScrivelDocs

#endif
