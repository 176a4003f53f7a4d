// libxml2's SAX2 push parser as the reader's XML parser. Tested by tests/reader/XmlParserTest.cpp.

#include "scrivel/XmlParser.h"

#include <algorithm>
#include <climits>
#include <cstring>
#include <optional>
#include <vector>

#include <libxml/parser.h>
#include <libxml/xmlerror.h>

namespace ScrivelReader
{

namespace
{

// As libxml2 reads it moves what is left of a piece again and again: it gets small ones. But at each
// piece it looks through all that it keeps, so pieces grow with markup that isn't over.
constexpr std::uint64_t smallPiece = 4 * 1024;
constexpr std::uint64_t largePiece = 64 * 1024;
// What the parser may hold back: a tag or a comment that is not over. A log has none of this length.
constexpr std::uint64_t longestMarkup = 16 * 1024 * 1024;
// An instruction and a section may be longer, and a comment after the root element: a flush that was
// killed leaves in them what it was to write.
constexpr std::uint64_t longestUndivided = 256 * 1024;

constexpr std::string_view commentBegin = "<!--";

std::string_view View(const xmlChar* text)
{
    return reinterpret_cast<const char*>(text);
}

/// Of bytes that are not in the declared encoding libxml2 tells whoever listens to all its errors, and
/// that is standard error.
class Silence
{
public:
    Silence() : before(xmlGenericError), contextBefore(xmlGenericErrorContext)
    {
        xmlSetGenericErrorFunc(nullptr, Ignore);
    }
    ~Silence() { xmlSetGenericErrorFunc(contextBefore, before); }
    Silence(const Silence&) = delete;
    Silence& operator=(const Silence&) = delete;

private:
    static void Ignore(void*, const char*, ...) {}

    const xmlGenericErrorFunc before;
    void* const contextBefore;
};

/// Whether parsing ended for good. libxml2 has a function for it from 2.14 on, and deprecates the member.
template <typename Context>
auto HasStopped(Context* context, int /*preferred*/) -> decltype(xmlCtxtIsStopped(context) != 0)
{
    return xmlCtxtIsStopped(context) != 0;
}
template <typename Context>
bool HasStopped(Context* context, long /*otherwise*/)
{
    return context->disableSAX != 0;
}

// libxml2 deprecates the members from 2.14 on, and has nothing else that tells.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"
/// Whether the parser reads the bytes as they were fed, and not from another encoding.
bool IsUtf8(const xmlParserInput& input)
{
    return input.buf != nullptr && input.buf->encoder == nullptr;
}

/// Whether bytes couldn't be read as the encoding that the document declares. Some versions of libxml2
/// leave them out and go on.
bool HasForeignBytes(const xmlParserInput* input)
{
    return input != nullptr && input->buf != nullptr && input->buf->error != 0;
}
#pragma GCC diagnostic pop

class LibXml2Parser final : public XmlParser
{
public:
    explicit LibXml2Parser(XmlEvents& itsEvents) : events(&itsEvents)
    {
        xmlInitParser();
        xmlSAXHandler handler{};
        handler.initialized = XML_SAX2_MAGIC;
        handler.startElementNs = [](void* self, const xmlChar* name, const xmlChar* prefix,
                                    const xmlChar*, int, const xmlChar**, int count, int,
                                    const xmlChar** attributes) {
            static_cast<LibXml2Parser*>(self)->Start(name, prefix, count, attributes);
        };
        handler.endElementNs = [](void* self, const xmlChar*, const xmlChar*, const xmlChar*) {
            auto& parser = *static_cast<LibXml2Parser*>(self);
            --parser.depth;
            if (parser.events != nullptr)
                parser.events->EndElement();
        };
        handler.characters = handler.ignorableWhitespace = Text;
        handler.cdataBlock = [](void* self, const xmlChar* text, int length) {
            auto& parser = *static_cast<LibXml2Parser*>(self);
            parser.sectionAt = parser.Position() + std::uint64_t(length);
            if (parser.context->sax->characters != nullptr)
                Text(self, text, length);
        };
        handler.comment = [](void* self, const xmlChar* text) {
            auto& parser = *static_cast<LibXml2Parser*>(self);
            if (parser.events != nullptr)
                parser.events->Comment(View(text).substr(parser.commentIsSpaced ? 1 : 0));
            parser.commentIsSpaced = false;
        };
        handler.internalSubset = [](void* self, const xmlChar*, const xmlChar*, const xmlChar*) {
            static_cast<LibXml2Parser*>(self)->Refuse("a log has no document type declaration");
        };
        handler.serror = [](void* self, auto* what) { static_cast<LibXml2Parser*>(self)->Note(*what); };
        context = xmlCreatePushParserCtxt(&handler, this, nullptr, 0, nullptr);
        if (context != nullptr) {
            xmlCtxtUseOptions(context, XML_PARSE_NONET | XML_PARSE_HUGE);
        } else {
            error = "no memory for the XML parser";
        }
    }
    ~LibXml2Parser() override { xmlFreeParserCtxt(context); }
    LibXml2Parser(const LibXml2Parser&) = delete;
    LibXml2Parser& operator=(const LibXml2Parser&) = delete;

    bool Feed(const char* bytes, std::size_t size) override
    {
        const Silence silence;
        while (size != 0 && error.empty()) {
            if (BeginsOuterComment()) {
                Insert(" ");
                commentIsSpaced = true;
            }
            const std::optional<Markup> open = Pending() > longestUndivided ? OpenMarkup() : std::nullopt;
            std::string_view piece(bytes, std::min(size, MostToFeed()));
            const std::size_t place = open ? PlaceToDivide(piece, *open) : 0;
            if (place != 0)
                piece = piece.substr(0, place);
            else if (!open)
                piece = UpToOpenComment(piece);
            fed += piece.size();
            xmlParseChunk(context, piece.data(), int(piece.size()), 0);
            RefuseWhatEndedParsing();
            // Unless it has come to its end two are made of it: what was fed so far is over then, and the
            // parser forgets it. The document is as well-formed as it was.
            if (error.empty() && place != 0 && Pending() > longestUndivided)
                Insert(std::string(open->end).append(open->begin));
            if (error.empty() && Pending() > longestMarkup)
                Refuse("a tag or a comment is longer than 16 MB");
            bytes += piece.size();
            size -= piece.size();
        }
        return error.empty();
    }

    bool Finish() override
    {
        if (!error.empty())
            return false;
        const Silence silence;
        finishing = true;
        xmlParseChunk(context, nullptr, 0, 1);
        RefuseWhatEndedParsing();
        if (error.empty() && context->wellFormed == 0)
            Refuse("the document is not well-formed");
        return error.empty();
    }

    void AnnounceTexts(bool wanted) override
    {
        xmlSAXHandler& handler = *context->sax;
        handler.characters = handler.ignorableWhitespace = wanted ? Text : nullptr;
    }

    void Mute() override { events = nullptr; }

    Place TagBegin() const override
    {
        const xmlParserInput& input = *context->input;
        const void* const tag = memrchr(input.base, '<', std::size_t(input.cur - input.base));
        const xmlChar* const at = tag == nullptr ? input.base : static_cast<const xmlChar*>(tag);
        std::uint64_t line = Line();
        const xmlChar* from = at;
        while (const void* const lineEnd = std::memchr(from, '\n', std::size_t(input.cur - from))) {
            from = static_cast<const xmlChar*>(lineEnd) + 1;
            --line;
        }
        return {OffsetOf(at), line};
    }

    std::uint64_t Position() const override
    {
        if (context == nullptr || context->input == nullptr)
            return 0;
        return OffsetOf(context->input->cur);
    }

    std::uint64_t Line() const override
    {
        return context->input == nullptr ? 1 : std::uint64_t(std::max(context->input->line, 1));
    }

    const std::string& Error() const override { return error; }
    std::uint64_t ErrorPosition() const override { return errorPosition; }
    std::uint64_t ErrorLine() const override { return errorLine; }

private:
    /// Where in the document a byte of the parser's input is.
    std::uint64_t OffsetOf(const xmlChar* at) const
    {
        return context->input->consumed + std::uint64_t(at - context->input->base) - inserted;
    }

    /// How much the parser keeps until the markup that it is reading is over.
    std::uint64_t Pending() const { return fed - std::min(fed, Position()); }

    /// Markup that may be divided: how it begins and what ends it.
    struct Markup
    {
        std::string_view begin;
        std::string_view end;
    };

    /// The instruction or the section whose end hasn't come, or a comment that says nothing.
    std::optional<Markup> OpenMarkup() const
    {
        const xmlParserInput& input = *context->input;
        const std::string_view pending(reinterpret_cast<const char*>(input.cur),
                                       std::size_t(input.end - input.cur));
        if (!IsUtf8(input) || !hasRoot)
            return {};
        constexpr std::size_t longestName = 64;
        const bool hasName =
            pending.substr(0, longestName).find_first_of(" \t\r\n") != std::string_view::npos;
        if (pending.substr(0, 2) == "<?" && hasName)
            return Markup{"<?x ", "?>"};
        if (pending.substr(0, commentBegin.size()) == commentBegin && depth == 0)
            return Markup{"<!-- ", "-->"};
        if (pending.substr(0, 9) == "<![CDATA[" || sectionAt == Position())
            return Markup{"<![CDATA[", "]]>"};
        return {};
    }

    /// The last place in a piece where markup may be divided: neither within a character, nor within a
    /// line end, nor within what ends it, whose bytes are looked for on both sides. 0 if there is none.
    static std::size_t PlaceToDivide(std::string_view piece, const Markup& markup)
    {
        constexpr std::size_t around = 2;
        for (std::size_t at = piece.size() - std::min(piece.size(), around); at >= around; --at) {
            const bool isInCharacter = (static_cast<unsigned char>(piece[at]) & 0xc0) == 0x80;
            const bool isInLineEnd = piece[at - 1] == '\r' && piece[at] == '\n';
            const bool isInEnd =
                piece.substr(at - around, 2 * around).find(markup.end) != std::string_view::npos;
            // A comment doesn't end with three hyphens.
            const bool isAfterHyphen = piece[at - 1] == '-' && markup.end[0] == '-';
            if (!isInCharacter && !isInLineEnd && !isInEnd && !isAfterHyphen)
                return at;
        }
        return 0;
    }

    // Of a comment outside the root element that begins with > or -> libxml2 believes that it ends there,
    // and misses its end where that comes in a later piece:
    //
    //     </log><!-->    more -->
    //
    // So a piece in which a comment doesn't end is fed up to its <!-- and then a blank, which is no part
    // of what the comment says.

    static std::string_view UpToOpenComment(std::string_view piece)
    {
        std::size_t at = piece.size();
        while (const void* const found = memrchr(piece.data(), commentBegin[1], at)) {
            at = std::size_t(static_cast<const char*>(found) - piece.data());
            const std::size_t begin = at - std::min<std::size_t>(at, 1);
            if (piece.substr(begin, commentBegin.size()) == commentBegin) {
                const std::size_t text = begin + commentBegin.size();
                return piece.find("-->", text) == std::string_view::npos ? piece.substr(0, text) : piece;
            }
        }
        return piece;
    }

    bool BeginsOuterComment() const
    {
        const xmlParserInput& input = *context->input;
        return depth == 0 && Pending() == commentBegin.size() && IsUtf8(input) &&
               std::equal(commentBegin.begin(), commentBegin.end(), input.cur);
    }

    /// How many bytes the parser shall get at most: outside the root element the <!-- of a comment is fed
    /// alone.
    std::size_t MostToFeed() const
    {
        const std::uint64_t pending = Pending();
        if (depth == 0 && pending != 0 && pending < commentBegin.size() && IsUtf8(*context->input))
            return std::size_t(commentBegin.size() - pending);
        return std::size_t(std::clamp(pending, smallPiece, largePiece));
    }

    /// Gives the parser bytes that the document doesn't have.
    void Insert(std::string_view text)
    {
        xmlParseChunk(context, text.data(), int(text.size()), 0);
        inserted += text.size();
        RefuseWhatEndedParsing();
    }

    void Start(const xmlChar* name, const xmlChar* prefix, int count, const xmlChar** attributes)
    {
        ++depth;
        hasRoot = true;
        // At the end of a document a tag that was cut short is announced too.
        const xmlChar next = *context->input->cur;
        if (events == nullptr || (next != '>' && next != '/'))
            return;
        if (count == 0 && prefix == nullptr)
            events->StartElement(View(name), nullptr, 0);
        else
            StartRare(name, prefix, count, attributes);
    }

    /// A start tag with attributes or with a name in two parts; most have neither.
    [[gnu::noinline]] void StartRare(const xmlChar* name, const xmlChar* prefix, int count,
                                     const xmlChar** attributes)
    {
        found.clear();
        for (int i = 0; i < count; ++i) {
            const xmlChar** attribute = attributes + i * 5;  // name, prefix, URI, value, end of the value
            found.push_back({View(attribute[0]),
                             {reinterpret_cast<const char*>(attribute[3]),
                              std::size_t(attribute[4] - attribute[3])}});
        }
        qualified.assign(prefix == nullptr ? std::string_view() : View(prefix));
        qualified.append(prefix == nullptr ? "" : ":").append(View(name));
        events->StartElement(qualified, found.data(), found.size());
    }

    static void Text(void* self, const xmlChar* text, int length)
    {
        XmlEvents* const to = static_cast<LibXml2Parser*>(self)->events;
        if (to != nullptr)
            to->Text({reinterpret_cast<const char*>(text), std::size_t(length)});
    }

    void RefuseWhatEndedParsing()
    {
        if (HasStopped(context, 0) || HasForeignBytes(context->input)) {
            Refuse("the bytes are not in the encoding that the document declares");
        }
    }

    /// Remembers the first error that makes the document no XML.
    void Note(const xmlError& what)
    {
        if (!error.empty() || what.level != XML_ERR_FATAL)
            return;
        // The same number tells of content after the root element.
        const xmlParserInput* input = context->input;
        const bool isAtEnd =
            what.code == XML_ERR_DOCUMENT_END || (input != nullptr && input->cur >= input->end);
        if (finishing && isAtEnd && !(hasRoot && depth == 0)) {
            Fail("the document ends too early");
            return;
        }
        // What libxml2 calls empty begins with something else than a tag.
        if (what.code == XML_ERR_DOCUMENT_EMPTY) {
            Fail("this is no XML document");
            return;
        }
        std::string_view text = what.message == nullptr ? "not well-formed" : what.message;
        while (!text.empty() && (text.back() == '\n' || text.back() == ' '))
            text.remove_suffix(1);
        Fail(text);
        std::replace(error.begin(), error.end(), '\n', ' ');
    }

    void Fail(std::string_view what)
    {
        error = what;
        errorPosition = Position();
        errorLine = Line();
        events = nullptr;
    }

    void Refuse(std::string_view what)
    {
        if (!error.empty())
            return;
        Fail(what);
        if (context != nullptr)
            xmlStopParser(context);
    }

    XmlEvents* events;
    xmlParserCtxtPtr context = nullptr;
    std::vector<XmlAttribute> found;
    std::string qualified;
    std::uint64_t fed = 0;
    std::uint64_t sectionAt = 0;   // where a section goes on, if it does
    std::uint64_t inserted = 0;    // bytes that the document doesn't have
    std::size_t depth = 0;         // of the element that is open
    bool commentIsSpaced = false;  // that is being read, by a blank of ours
    bool hasRoot = false;
    bool finishing = false;
    std::string error;
    std::uint64_t errorPosition = 0;
    std::uint64_t errorLine = 1;
};

}  // namespace

std::unique_ptr<XmlParser> MakeXmlParser(XmlEvents& events)
{
    return std::make_unique<LibXml2Parser>(events);
}

}  // namespace ScrivelReader
