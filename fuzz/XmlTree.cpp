#include "XmlTree.h"

#include <libxml/parser.h>
#include <libxml/tree.h>

#include <memory>
#include <string_view>

namespace ScrivelFuzz
{
namespace
{

void Collect(const xmlNode* element, unsigned int level, std::vector<Element>& elements)
{
    const std::size_t place = elements.size();
    elements.push_back({level, reinterpret_cast<const char*>(element->name), {}, {}});
    for (const xmlAttr* attribute = element->properties; attribute != nullptr;
         attribute = attribute->next) {
        if (std::string_view(reinterpret_cast<const char*>(attribute->name)) == "call_num") {
            elements[place].call = reinterpret_cast<const char*>(attribute->children->content);
        }
    }
    bool hasChildren = false;
    std::string text;
    for (const xmlNode* child = element->children; child != nullptr; child = child->next) {
        if (child->type == XML_ELEMENT_NODE) {
            hasChildren = true;
            Collect(child, level + 1, elements);
        } else if (child->type == XML_TEXT_NODE) {
            text += reinterpret_cast<const char*>(child->content);
        }
    }
    if (!hasChildren) {
        elements[place].text = text;
    }
}

}  // namespace

std::optional<std::vector<Element>> Elements(const std::string& bytes)
{
    constexpr int options =
        XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING | XML_PARSE_HUGE | XML_PARSE_BIG_LINES;
    const std::unique_ptr<xmlDoc, decltype(&xmlFreeDoc)> document(
        xmlReadMemory(bytes.data(), static_cast<int>(bytes.size()), nullptr, nullptr, options),
        &xmlFreeDoc);
    if (document == nullptr) {
        return std::nullopt;
    }
    std::vector<Element> elements;
    Collect(xmlDocGetRootElement(document.get()), 0, elements);
    return elements;
}

}  // namespace ScrivelFuzz
