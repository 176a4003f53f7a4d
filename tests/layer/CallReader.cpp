#include "layer/CallReader.h"

#include <libxml/parser.h>
#include <libxml/tree.h>

#include <memory>

namespace ScrivelTest
{
namespace
{

std::string Text(const xmlChar* text)
{
    return text == nullptr ? std::string() : std::string(reinterpret_cast<const char*>(text));
}

std::string Taken(xmlChar* text)
{
    const std::unique_ptr<xmlChar, decltype(xmlFree)> owner(text, xmlFree);
    return Text(text);
}

void AddLeaves(xmlNode* element, const std::string& path, std::vector<Leaf>& leaves)
{
    if (xmlFirstElementChild(element) == nullptr) {
        leaves.push_back({path, Taken(xmlNodeGetContent(element))});
    }
    for (xmlNode* child = xmlFirstElementChild(element); child != nullptr;
         child = xmlNextElementSibling(child)) {
        AddLeaves(child, path + "/" + Text(child->name), leaves);
    }
}

std::string TextAt(const std::vector<Leaf>& leaves, std::string_view path)
{
    for (const Leaf& leaf : leaves) {
        if (leaf.path == path) {
            return leaf.text;
        }
    }
    return "(missing)";
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
    constexpr int options = XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING | XML_PARSE_HUGE;
    const std::unique_ptr<xmlDoc, decltype(&xmlFreeDoc)> document(
        xmlReadMemory(bytes.data(), static_cast<int>(bytes.size()), nullptr, nullptr, options),
        &xmlFreeDoc);
    ReadLog log;
    if (document == nullptr) {
        return log;
    }
    log.accepted = true;
    for (xmlNode* element = xmlFirstElementChild(xmlDocGetRootElement(document.get()));
         element != nullptr; element = xmlNextElementSibling(element)) {
        const std::string number =
            Taken(xmlGetNoNsProp(element, reinterpret_cast<const xmlChar*>("call_num")));
        if (number.empty()) {
            continue;
        }
        const std::string name = Text(element->name);
        ReadCall& call =
            log.calls.try_emplace(static_cast<unsigned int>(std::stoul(number)), ReadCall{name, {}, {}})
                .first->second;
        log.accepted = log.accepted && call.name == name;
        for (xmlNode* child = xmlFirstElementChild(element); child != nullptr;
             child = xmlNextElementSibling(child)) {
            if (Text(child->name) == "return_time") {
                ++call.returns;
            } else {
                AddLeaves(child, Text(child->name), call.returns == 0 ? call.arguments : call.results);
            }
        }
    }
    return log;
}

}  // namespace ScrivelTest
