#include "support/Xml.h"

#include <gtest/gtest.h>
#include <libxml/parser.h>
#include <libxml/xpath.h>

#include <memory>

namespace ScrivelTest
{
namespace
{

using Document = std::unique_ptr<xmlDoc, decltype(&xmlFreeDoc)>;

Document Parse(const std::string& bytes)
{
    constexpr int options =
        XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING | XML_PARSE_HUGE | XML_PARSE_BIG_LINES;
    return {xmlReadMemory(bytes.data(), static_cast<int>(bytes.size()), nullptr, nullptr, options),
            &xmlFreeDoc};
}

std::string Taken(xmlChar* text)
{
    const std::unique_ptr<xmlChar, decltype(xmlFree)> owner(text, xmlFree);
    return text == nullptr ? std::string() : std::string(reinterpret_cast<const char*>(text));
}

}  // namespace

bool IsDocument(const std::string& bytes)
{
    return Parse(bytes) != nullptr;
}

std::vector<std::string> XPath(const std::string& bytes, const std::string& expression)
{
    const Document document = Parse(bytes);
    if (document == nullptr) {
        ADD_FAILURE() << "not a document:\n" << bytes;
        return {};
    }
    const std::unique_ptr<xmlXPathContext, decltype(&xmlXPathFreeContext)> context(
        xmlXPathNewContext(document.get()), &xmlXPathFreeContext);
    const std::unique_ptr<xmlXPathObject, decltype(&xmlXPathFreeObject)> found(
        xmlXPathEvalExpression(reinterpret_cast<const xmlChar*>(expression.c_str()), context.get()),
        &xmlXPathFreeObject);
    if (found == nullptr) {
        ADD_FAILURE() << "not an XPath expression: " << expression;
        return {};
    }
    if (found->type != XPATH_NODESET) {
        return {Taken(xmlXPathCastToString(found.get()))};
    }
    std::vector<std::string> texts;
    for (int i = 0; i < xmlXPathNodeSetGetLength(found->nodesetval); ++i) {
        texts.push_back(Taken(xmlNodeGetContent(found->nodesetval->nodeTab[i])));
    }
    return texts;
}

}  // namespace ScrivelTest
