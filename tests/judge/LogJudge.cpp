// What libxml2 makes of a log, as a stream or as a tree. Tested by tests/support/LogJudgeTest.cpp.

#include "judge/LogJudge.h"

#include <libxml/c14n.h>
#include <libxml/parser.h>
#include <libxml/parserInternals.h>
#include <libxml/xpath.h>

#include <fstream>
#include <memory>
#include <sstream>
#include <stdexcept>

namespace ScrivelTest
{
namespace
{

constexpr int options = XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING | XML_PARSE_HUGE |
                        XML_PARSE_BIG_LINES | XML_PARSE_NOENT;

using Parser = std::unique_ptr<xmlParserCtxt, decltype(&xmlFreeParserCtxt)>;
using Document = std::unique_ptr<xmlDoc, decltype(&xmlFreeDoc)>;
using XPathContext = std::unique_ptr<xmlXPathContext, decltype(&xmlXPathFreeContext)>;
using XPathResult = std::unique_ptr<xmlXPathObject, decltype(&xmlXPathFreeObject)>;

const char* Chars(const xmlChar* text)
{
    return reinterpret_cast<const char*>(text);
}

const xmlChar* XmlChars(const std::string& text)
{
    return reinterpret_cast<const xmlChar*>(text.c_str());
}

std::string Taken(xmlChar* text)
{
    const std::unique_ptr<xmlChar, decltype(xmlFree)> owner(text, xmlFree);
    return text == nullptr ? std::string() : std::string(Chars(text));
}

Parser ParserOf(std::string_view bytes)
{
    return {xmlCreateMemoryParserCtxt(bytes.data(), static_cast<int>(bytes.size())), &xmlFreeParserCtxt};
}

// ---- As a stream --------------------------------------------------------------------------------

/// Hands the parser's events on to a visitor.
class Events
{
public:
    explicit Events(LogVisitor& receiver) : visitor(receiver) {}

    static xmlSAXHandler Handler()
    {
        xmlSAXHandler handler = {};
        handler.initialized = XML_SAX2_MAGIC;
        handler.startElementNs = [](void* events, const xmlChar* name, const xmlChar*, const xmlChar*,
                                    int, const xmlChar**, int count, int, const xmlChar** pointers) {
            static_cast<Events*>(events)->Start(Chars(name), count, pointers);
        };
        handler.endElementNs = [](void* events, const xmlChar* name, const xmlChar*, const xmlChar*) {
            static_cast<Events*>(events)->visitor.End(Chars(name));
        };
        handler.characters = [](void* events, const xmlChar* text, int length) {
            static_cast<Events*>(events)->visitor.Text({Chars(text), static_cast<std::size_t>(length)});
        };
        return handler;
    }

private:
    /// An attribute is five pointers: name, prefix, URI, and where the value begins and ends.
    void Start(std::string_view name, int count, const xmlChar** pointers)
    {
        attributes.resize(static_cast<std::size_t>(count));
        for (Attribute& attribute : attributes) {
            attribute.name = Chars(pointers[0]);
            attribute.value.assign(Chars(pointers[3]), Chars(pointers[4]));
            pointers += 5;
        }
        visitor.Start(name, attributes);
    }

    LogVisitor& visitor;
    std::vector<Attribute> attributes;  // of the element that starts; kept for its memory
};

Verdict VerdictOf(xmlParserCtxt& parser, Prefixes prefixes)
{
    Verdict verdict;
    // What is wrong with namespaces alone leaves a document well-formed.
    verdict.accepted =
        parser.wellFormed == 1 && (prefixes == Prefixes::Any || parser.errNo == XML_ERR_OK);
    if (!verdict.accepted) {
        const xmlError* const error = xmlCtxtGetLastError(&parser);
        verdict.problem = error == nullptr || error->message == nullptr
                              ? "an error"
                              : "line " + std::to_string(error->line) + ": " + error->message;
        verdict.problem.resize(verdict.problem.find_last_not_of('\n') + 1);
    }
    return verdict;
}

Verdict Visit(const Parser& parser, LogVisitor& visitor, Prefixes prefixes = Prefixes::Declared)
{
    if (parser == nullptr) {
        return {false, "nothing to read"};
    }
    Events events(visitor);
    // The options put in a handler of libxml2's own for errors, which would print them.
    xmlCtxtUseOptions(parser.get(), options);
    *parser->sax = Events::Handler();
    parser->userData = &events;
    xmlParseDocument(parser.get());
    return VerdictOf(*parser, prefixes);
}

class Ignored : public LogVisitor
{
public:
    void Start(std::string_view, const std::vector<Attribute>&) override {}
    void End(std::string_view) override {}
    void Text(std::string_view) override {}
};

/// Keeps the elements.
class Kept : public LogVisitor
{
public:
    void Start(std::string_view name, const std::vector<Attribute>& attributes) override
    {
        elements.push_back({static_cast<unsigned int>(open.size()), std::string(name), {}, attributes});
        open.push_back(elements.size() - 1);
    }
    void End(std::string_view) override { open.pop_back(); }
    void Text(std::string_view piece) override { elements[open.back()].text += piece; }

    std::vector<Element> elements;

private:
    std::vector<std::size_t> open;  // the way from the root, by places in `elements`
};

// ---- As a tree ----------------------------------------------------------------------------------

/// Null when the bytes are no document.
Document TreeOf(const std::string& bytes, Prefixes prefixes = Prefixes::Declared)
{
    const Parser parser = ParserOf(bytes);
    if (parser == nullptr) {
        return {nullptr, &xmlFreeDoc};
    }
    xmlCtxtUseOptions(parser.get(), options);
    xmlParseDocument(parser.get());
    Document document(parser->myDoc, &xmlFreeDoc);
    return VerdictOf(*parser, prefixes).accepted ? std::move(document) : Document(nullptr, &xmlFreeDoc);
}

XPathResult Evaluate(xmlDoc* document, const std::string& expression)
{
    const XPathContext context(xmlXPathNewContext(document), &xmlXPathFreeContext);
    return {xmlXPathEvalExpression(XmlChars(expression), context.get()), &xmlXPathFreeObject};
}

}  // namespace

std::string ValueOf(std::string_view name, const std::vector<Attribute>& attributes)
{
    for (const Attribute& attribute : attributes) {
        if (attribute.name == name) {
            return attribute.value;
        }
    }
    return {};
}

std::string FileBytes(const std::string& fileName)
{
    std::ifstream file(fileName, std::ios::binary);
    std::ostringstream bytes;
    bytes << file.rdbuf();
    return bytes.str();
}

Verdict Visit(std::string_view bytes, LogVisitor& visitor)
{
    return Visit(ParserOf(bytes), visitor);
}

Verdict VisitFile(const std::string& fileName, LogVisitor& visitor)
{
    return Visit(Parser(xmlCreateFileParserCtxt(fileName.c_str()), &xmlFreeParserCtxt), visitor);
}

bool IsDocument(std::string_view bytes, Prefixes prefixes)
{
    Ignored ignored;
    return Visit(ParserOf(bytes), ignored, prefixes).accepted;
}

std::optional<std::vector<Element>> Elements(std::string_view bytes)
{
    Kept kept;
    if (!Visit(bytes, kept).accepted) {
        return std::nullopt;
    }
    return std::move(kept.elements);
}

std::vector<std::string> XPath(const std::string& bytes, const std::string& expression, Prefixes prefixes)
{
    const Document document = TreeOf(bytes, prefixes);
    if (document == nullptr) {
        throw std::invalid_argument("not a document:\n" + bytes);
    }
    const XPathResult found = Evaluate(document.get(), expression);
    if (found == nullptr) {
        throw std::invalid_argument("not an XPath expression: " + expression);
    }
    if (found->type != XPATH_NODESET) {
        return {Taken(xmlXPathCastToString(found.get()))};
    }
    std::vector<std::string> texts;
    for (int i = 0; i < xmlXPathNodeSetGetLength(found->nodesetval); ++i) {
        texts.push_back(Taken(xmlNodeGetContent(xmlXPathNodeSetItem(found->nodesetval, i))));
    }
    return texts;
}

std::string BareLog(const std::string& bytes)
{
    const Document document = TreeOf(bytes);
    if (document == nullptr) {
        return {};
    }
    const XPathResult noise = Evaluate(
        document.get(), "//processing-instruction() | //text()[normalize-space() = '' and ../*]");
    for (int i = 0; i < xmlXPathNodeSetGetLength(noise->nodesetval); ++i) {
        xmlUnlinkNode(xmlXPathNodeSetItem(noise->nodesetval, i));
        xmlFreeNode(xmlXPathNodeSetItem(noise->nodesetval, i));
    }
    xmlChar* text = nullptr;
    const int length = xmlC14NDocDumpMemory(document.get(), nullptr, XML_C14N_1_0, nullptr, 0, &text);
    std::string canonical(Chars(text), length < 0 ? 0 : static_cast<std::size_t>(length));
    xmlFree(text);
    return canonical;
}

}  // namespace ScrivelTest
