#include "crash/LogReader.h"

#include <libxml/c14n.h>
#include <libxml/parser.h>
#include <libxml/parserInternals.h>
#include <libxml/xpath.h>

#include <cstring>
#include <fstream>
#include <memory>
#include <sstream>

namespace ScrivelTest
{
namespace
{

using Visit = std::function<void(const CallElement&)>;

/// Follows the elements of a log through the parser's events.
class CallReader
{
public:
    CallReader(LogContents& found, const Visit& visitCall) : contents(found), visit(visitCall) {}

    void StartElement(std::string_view name, unsigned int number)
    {
        ++contents.elements;
        ++depth;
        if (depth == 2) {
            call = {number, {0, 0}, false};
        } else if (depth == 3) {
            inText = name == "text";
            call.returned = call.returned || name == "return_time";
        } else if (depth == 4 && name == "value") {
            ++call.contents.items;
        }
    }

    void EndElement()
    {
        --depth;
        inText = false;
        if (depth == 1) {
            visit(call);
        }
    }

    void Characters(std::size_t count)
    {
        if (inText) {
            call.contents.characters += count;
        }
    }

private:
    LogContents& contents;
    const Visit& visit;
    unsigned int depth = 0;
    bool inText = false;
    CallElement call{};
};

/// The value of call_num among the five pointers of each attribute: name, prefix, URI, value, end.
unsigned int CallNumber(int count, const xmlChar** attributes)
{
    for (int i = 0; i < count; ++i, attributes += 5) {
        if (std::strcmp(reinterpret_cast<const char*>(attributes[0]), "call_num") == 0) {
            const char* const value = reinterpret_cast<const char*>(attributes[3]);
            return static_cast<unsigned int>(std::strtoul(value, nullptr, 10));
        }
    }
    return 0;
}

void Read(xmlParserCtxtPtr parser, const Visit& visit, LogContents& contents)
{
    if (parser == nullptr) {
        contents.problem = "nothing to read";
        return;
    }
    CallReader reader(contents, visit);
    xmlSAXHandler events = {};
    events.initialized = XML_SAX2_MAGIC;
    events.startElementNs = [](void* user, const xmlChar* name, const xmlChar*, const xmlChar*, int,
                               const xmlChar**, int count, int, const xmlChar** attributes) {
        static_cast<CallReader*>(user)->StartElement(reinterpret_cast<const char*>(name),
                                                     CallNumber(count, attributes));
    };
    events.endElementNs = [](void* user, const xmlChar*, const xmlChar*, const xmlChar*) {
        static_cast<CallReader*>(user)->EndElement();
    };
    events.characters = [](void* user, const xmlChar*, int count) {
        static_cast<CallReader*>(user)->Characters(static_cast<std::size_t>(count));
    };
    // The parser adds a handler of its own for errors, which would print them.
    xmlCtxtUseOptions(parser, XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING);
    *parser->sax = events;
    parser->userData = &reader;
    xmlParseDocument(parser);
    contents.accepted = parser->wellFormed == 1 && parser->errNo == XML_ERR_OK;
    if (!contents.accepted && parser->lastError.message != nullptr) {
        contents.problem =
            "line " + std::to_string(parser->lastError.line) + ": " + parser->lastError.message;
        contents.problem.resize(contents.problem.find_last_not_of('\n') + 1);
    }
    xmlFreeParserCtxt(parser);
}

LogContents ReadAndCount(xmlParserCtxtPtr parser, const Load* load)
{
    LogContents contents;
    const auto count = [&](const CallElement& call) {
        if (load == nullptr || !contents.problem.empty()) {
            return;
        }
        if (call.number == contents.calls + 1 && call.contents == load->Contents(call.number)) {
            contents.calls = call.number;
        } else {
            contents.problem = "call " + std::to_string(contents.calls + 1) + " is not whole";
        }
    };
    Read(parser, count, contents);
    return contents;
}

xmlParserCtxtPtr ParserOf(std::string_view bytes)
{
    return xmlCreateMemoryParserCtxt(bytes.data(), static_cast<int>(bytes.size()));
}

}  // namespace

LogContents ReadLog(std::string_view bytes, const Visit& visit)
{
    LogContents contents;
    Read(ParserOf(bytes), visit, contents);
    return contents;
}

LogContents ReadLog(std::string_view bytes, const Load* load)
{
    return ReadAndCount(ParserOf(bytes), load);
}

LogContents ReadLogFile(const std::string& fileName, const Load* load)
{
    return ReadAndCount(xmlCreateFileParserCtxt(fileName.c_str()), load);
}

std::string WithoutInstructions(const std::string& bytes)
{
    const std::unique_ptr<xmlDoc, decltype(&xmlFreeDoc)> document(
        xmlReadMemory(bytes.data(), static_cast<int>(bytes.size()), nullptr, nullptr,
                      XML_PARSE_NOERROR | XML_PARSE_NOWARNING | XML_PARSE_HUGE),
        xmlFreeDoc);
    if (document == nullptr) {
        return {};
    }
    const std::unique_ptr<xmlXPathContext, decltype(&xmlXPathFreeContext)> context(
        xmlXPathNewContext(document.get()), xmlXPathFreeContext);
    const std::unique_ptr<xmlXPathObject, decltype(&xmlXPathFreeObject)> instructions(
        xmlXPathEvalExpression(reinterpret_cast<const xmlChar*>("//processing-instruction()"),
                               context.get()),
        xmlXPathFreeObject);
    for (int i = 0; i < xmlXPathNodeSetGetLength(instructions->nodesetval); ++i) {
        xmlUnlinkNode(xmlXPathNodeSetItem(instructions->nodesetval, i));
        xmlFreeNode(xmlXPathNodeSetItem(instructions->nodesetval, i));
    }
    xmlChar* text = nullptr;
    const int length = xmlC14NDocDumpMemory(document.get(), nullptr, XML_C14N_1_0, nullptr, 0, &text);
    std::string canonical(reinterpret_cast<char*>(text),
                          length < 0 ? 0 : static_cast<std::size_t>(length));
    xmlFree(text);
    return canonical;
}

std::string FileBytes(const std::string& fileName)
{
    std::ifstream file(fileName, std::ios::binary);
    std::ostringstream bytes;
    bytes << file.rdbuf();
    return bytes.str();
}

}  // namespace ScrivelTest
