// Finds the blocks of code in a Markdown file, and what they are excerpts of. Used by
// tests/docs/DocumentationTest.cpp.

#include "docs/Markdown.h"

#include <algorithm>
#include <fstream>
#include <regex>
#include <sstream>

namespace ScrivelDocs
{

Lines ReadLines(const std::filesystem::path& file)
{
    Lines lines;
    std::ifstream in(file);
    for (std::string line; std::getline(in, line);) {
        lines.push_back(line);
    }
    return lines;
}

namespace
{

bool IsFence(const std::string& line)
{
    return line.compare(0, 3, "```") == 0;
}

}  // namespace

std::vector<Block> BlocksIn(const Lines& markdown)
{
    static const std::regex comment("<!-- ([a-z]+):? ?(.*?) ?-->");
    std::vector<Block> blocks;
    bool inside = false;
    for (std::size_t i = 0; i < markdown.size(); ++i) {
        const std::string& line = markdown[i];
        if (!IsFence(line)) {
            if (inside) {
                blocks.back().text.push_back(line);
            }
        } else if (inside) {
            inside = false;
        } else {
            inside = true;
            Block block{i + 1, line.substr(3), "", {}, {}};
            std::smatch found;
            if (i > 0 && std::regex_match(markdown[i - 1], found, comment)) {
                block.kind = found[1];
                std::istringstream words(found[2]);
                for (std::string word; words >> word;) {
                    block.arguments.push_back(word);
                }
            }
            blocks.push_back(block);
        }
    }
    return blocks;
}

Lines FileLinksIn(const Lines& markdown)
{
    static const std::regex link(R"(\]\(([^)#: ]+)(#[^)]*)?\))");
    Lines links;
    bool inside = false;
    for (const std::string& line : markdown) {
        inside = inside != IsFence(line);
        for (std::sregex_iterator i(line.begin(), line.end(), link), end; !inside && i != end; ++i) {
            links.push_back((*i)[1]);
        }
    }
    return links;
}

namespace
{

std::size_t Indentation(const std::string& line)
{
    return std::min(line.find_first_not_of(' '), line.size());
}

bool IsBlank(const std::string& line)
{
    return Indentation(line) == line.size();
}

bool IsGap(const std::string& line)
{
    return line.substr(Indentation(line)) == "...";
}

/// Whether the lines of the excerpt from `line` to `last`, which hold no gap, stand in `whole` at `at`.
bool StandsAt(const Lines& whole, std::size_t at, const Lines& excerpt, std::size_t line,
              std::size_t last, const std::string& blanks)
{
    if (whole.size() - at < last - line) {
        return false;
    }
    for (; line < last; ++line, ++at) {
        if (whole[at] != (excerpt[line].empty() ? "" : blanks + excerpt[line])) {
            return false;
        }
    }
    return true;
}

bool ShowsFrom(const Lines& whole, const Lines& excerpt, const std::string& blanks)
{
    std::size_t at = 0;
    for (std::size_t line = 0; line < excerpt.size();) {
        if (IsGap(excerpt[line])) {
            ++line;
            continue;
        }
        std::size_t last = line;
        while (last < excerpt.size() && !IsGap(excerpt[last])) {
            ++last;
        }
        while (!StandsAt(whole, at, excerpt, line, last, blanks)) {
            if (++at >= whole.size()) {
                return false;
            }
        }
        at += last - line;
        line = last;
    }
    return true;
}

}  // namespace

Lines MovedToTheLeft(Lines lines)
{
    std::size_t least = std::string::npos;
    for (const std::string& line : lines) {
        if (!IsBlank(line)) {
            least = std::min(least, Indentation(line));
        }
    }
    for (std::string& line : lines) {
        line.erase(0, std::min(least, line.size()));
    }
    return lines;
}

Lines RegionOf(const Lines& source, const std::string& name)
{
    const auto isMark = [&name](const std::string& line) {
        const std::string text = line.substr(Indentation(line));
        return text == "// [" + name + "]" || text == "# [" + name + "]";
    };
    const auto first = std::find_if(source.begin(), source.end(), isMark);
    if (first == source.end()) {
        return {};
    }
    const auto last = std::find_if(first + 1, source.end(), isMark);
    return last == source.end() ? Lines() : MovedToTheLeft(Lines(first + 1, last));
}

bool Shows(const Lines& whole, const Lines& excerpt)
{
    if (excerpt.empty() || whole.empty()) {
        return false;
    }
    for (const char* blanks : {"", "  ", "    ", "        ", "            "}) {
        if (ShowsFrom(whole, excerpt, blanks)) {
            return true;
        }
    }
    return false;
}

bool IsShortenedTo(Lines whole, Lines excerpt)
{
    for (Lines* lines : {&whole, &excerpt}) {
        lines->insert(lines->begin(), "\n");  // the ends, which no line of a file is equal to
        lines->push_back("\n");
    }
    return ShowsFrom(whole, excerpt, "");
}

}  // namespace ScrivelDocs
