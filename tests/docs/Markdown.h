// The blocks of code in a Markdown file, and the regions of source files that they show.

#ifndef SCRIVEL_TESTS_DOCS_MARKDOWN_H
#define SCRIVEL_TESTS_DOCS_MARKDOWN_H

#include <filesystem>
#include <string>
#include <vector>

namespace ScrivelDocs
{

using Lines = std::vector<std::string>;

Lines ReadLines(const std::filesystem::path& file);

/// A fenced block of code with the comment in the line above it:
///
///     <!-- log: use -->
///     ```xml
///     ...
///     ```
struct Block
{
    std::size_t line;      ///< of the opening fence
    std::string language;  ///< "xml"
    std::string kind;      ///< "log"; empty without a comment
    Lines arguments;       ///< "use"
    Lines text;
};

std::vector<Block> BlocksIn(const Lines& markdown);

/// The targets of the links that lead to files: "docs/log-format.md".
Lines FileLinksIn(const Lines& markdown);

/// What stands between the two lines that hold nothing but `// [name]` or `# [name]`, moved to the
/// left edge. Empty when there are no such lines.
Lines RegionOf(const Lines& source, const std::string& name);

/// The same lines without the blanks that all of them begin with.
Lines MovedToTheLeft(Lines lines);

/// Whether the lines of `excerpt` stand in `whole`, in one piece but for lines of "..." which take the
/// place of any others, and all moved by the same number of blanks.
bool Shows(const Lines& whole, const Lines& excerpt);

/// Whether the lines of `excerpt` are all of `whole`, but for what lines of "..." take the place of.
bool IsShortenedTo(Lines whole, Lines excerpt);

}  // namespace ScrivelDocs

#endif
