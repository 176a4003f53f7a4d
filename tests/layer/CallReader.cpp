// Puts the elements of a log together to calls. Used by the tests of the layer and of the example
// session.

#include "layer/CallReader.h"

#include "judge/LogJudge.h"

#include <algorithm>

namespace ScrivelTest
{
namespace
{

std::string TextAt(const std::vector<Leaf>& leaves, std::string_view path)
{
    for (const Leaf& leaf : leaves) {
        if (leaf.path == path) {
            return leaf.text;
        }
    }
    return "(missing)";
}

using Place = std::vector<Element>::const_iterator;

/// Where the children of an element end.
Place EndOf(Place element, Place end)
{
    const auto isOutside = [&](const Element& other) { return other.level <= element->level; };
    return std::find_if(element + 1, end, isOutside);
}

void AddLeaves(Place element, Place end, const std::string& path, std::vector<Leaf>& leaves)
{
    if (element + 1 == end) {
        leaves.push_back({path, element->text});
    }
    for (Place child = element + 1; child != end; child = EndOf(child, end)) {
        AddLeaves(child, EndOf(child, end), path + "/" + child->name, leaves);
    }
}

void AddChildren(Place element, Place end, ReadCall& call)
{
    for (Place child = element + 1; child != end; child = EndOf(child, end)) {
        if (child->name == "return_time") {
            ++call.returns;
        } else {
            AddLeaves(child, EndOf(child, end), child->name,
                      call.returns == 0 ? call.arguments : call.results);
        }
    }
}

}  // namespace

std::string ReadCall::Argument(std::string_view path) const
{
    return TextAt(arguments, path);
}

std::string ReadCall::Result(std::string_view path) const
{
    return TextAt(results, path);
}

std::vector<ReadCall> ReadLog::Named(std::string_view name) const
{
    std::vector<ReadCall> found;
    for (const auto& [number, call] : calls) {
        if (call.name == name) {
            found.push_back(call);
        }
    }
    return found;
}

ReadLog ReadCalls(const std::string& bytes)
{
    const auto elements = Elements(bytes);
    ReadLog log;
    if (!elements) {
        return log;
    }
    log.accepted = true;
    const Place end = elements->end();
    for (Place element = elements->begin() + 1; element != end; element = EndOf(element, end)) {
        const std::string number = ValueOf("call_num", element->attributes);
        if (number.empty()) {
            continue;
        }
        const auto place = static_cast<unsigned int>(std::stoul(number));
        ReadCall& call = log.calls.try_emplace(place, ReadCall{element->name, {}, {}}).first->second;
        log.accepted = log.accepted && call.name == element->name;
        AddChildren(element, EndOf(element, end), call);
    }
    return log;
}

}  // namespace ScrivelTest
