// Trees as lists of paths. Tested by tests/tool/QueryTest.cpp.

#include "Values.h"

#include <map>
#include <string_view>

#include "KnownText.h"

namespace ScrivelTool
{

using namespace ScrivelReader;

namespace
{

using Take = std::function<void(const std::string&, const std::string&)>;

void ForEachIn(Tree::Elements elements, std::string& path, const Take& take)
{
    std::map<std::string_view, std::size_t> counts;
    for (Tree::Element element : elements)
        ++counts[element.Name()];
    std::map<std::string_view, std::size_t> passed;
    const std::size_t above = path.size();
    for (Tree::Element element : elements) {
        path.append(above == 0 ? "" : ".").append(element.Name());
        if (counts[element.Name()] > 1)
            path.append("[").append(std::to_string(passed[element.Name()]++)).append("]");
        if (element.What() == Tree::Kind::Elements)
            ForEachIn(element.Children(), path, take);
        else
            take(path, element.What() == Tree::Kind::Bytes ? HexDigits(element.Text())
                                                           : std::string(element.Text()));
        path.resize(above);
    }
}

}  // namespace

void ForEachValue(const Tree& tree, const Take& take)
{
    std::string path;
    ForEachIn(tree.Top(), path, take);
}

}  // namespace ScrivelTool
