#include "crash/LogReader.h"

#include <libxml/parser.h>
#include <libxml/parserInternals.h>

#include <cstring>
#include <fstream>
#include <sstream>

namespace ScrivelTest
{
namespace
{

/// Follows the calls of a load through the parser's events.
class CallCounter
{
public:
    CallCounter(LogContents& found, const Load* expected) : contents(found), load(expected) {}

    void StartElement(std::string_view name, unsigned int number)
    {
        ++contents.elements;
        ++depth;
        if (depth == 2) {
            call = number;
            seen = {0, 0};
        } else if (depth == 3) {
            inText = name == "text";
        } else if (depth == 4 && name == "value") {
            ++seen.items;
        }
    }

    void EndElement()
    {
        --depth;
        inText = false;
        if (depth != 1 || load == nullptr || !contents.problem.empty()) {
            return;
        }
        const CallContents expected = load->Contents(contents.calls + 1);
        if (call == contents.calls + 1 && seen.characters == expected.characters &&
            seen.items == expected.items) {
            contents.calls = call;
        } else {
            contents.problem = "call " + std::to_string(contents.calls + 1) + " is not whole";
        }
    }

    void Characters(std::size_t count)
    {
        if (inText) {
            seen.characters += count;
        }
    }

private:
    LogContents& contents;
    const Load* load;
    unsigned int depth = 0;
    unsigned int call = 0;
    bool inText = false;
    CallContents seen{0, 0};
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

LogContents Read(xmlParserCtxtPtr parser, const Load* load)
{
    LogContents contents;
    if (parser == nullptr) {
        contents.problem = "nothing to read";
        return contents;
    }
    CallCounter counter(contents, load);
    xmlSAXHandler events = {};
    events.initialized = XML_SAX2_MAGIC;
    events.startElementNs = [](void* user, const xmlChar* name, const xmlChar*, const xmlChar*, int,
                               const xmlChar**, int count, int, const xmlChar** attributes) {
        static_cast<CallCounter*>(user)->StartElement(reinterpret_cast<const char*>(name),
                                                      CallNumber(count, attributes));
    };
    events.endElementNs = [](void* user, const xmlChar*, const xmlChar*, const xmlChar*) {
        static_cast<CallCounter*>(user)->EndElement();
    };
    events.characters = [](void* user, const xmlChar*, int count) {
        static_cast<CallCounter*>(user)->Characters(static_cast<std::size_t>(count));
    };
    // The parser adds a handler of its own for errors, which would print them.
    xmlCtxtUseOptions(parser, XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING);
    *parser->sax = events;
    parser->userData = &counter;
    xmlParseDocument(parser);
    contents.accepted = parser->wellFormed == 1 && parser->errNo == XML_ERR_OK;
    if (!contents.accepted && parser->lastError.message != nullptr) {
        contents.problem =
            "line " + std::to_string(parser->lastError.line) + ": " + parser->lastError.message;
        contents.problem.resize(contents.problem.find_last_not_of('\n') + 1);
    }
    xmlFreeParserCtxt(parser);
    return contents;
}

}  // namespace

LogContents ReadLog(std::string_view bytes, const Load* load)
{
    return Read(xmlCreateMemoryParserCtxt(bytes.data(), static_cast<int>(bytes.size())), load);
}

LogContents ReadLogFile(const std::string& fileName, const Load* load)
{
    return Read(xmlCreateFileParserCtxt(fileName.c_str()), load);
}

std::string FileBytes(const std::string& fileName)
{
    std::ifstream file(fileName, std::ios::binary);
    std::ostringstream bytes;
    bytes << file.rdbuf();
    return bytes.str();
}

}  // namespace ScrivelTest
