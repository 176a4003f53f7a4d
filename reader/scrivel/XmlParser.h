// What the reader needs of an XML parser: events, and where in the file they are. The rest of the reader
// knows no parser; a faster one takes the place of the one we have by a new class and one line.

#ifndef SCRIVEL_READER_XMLPARSER_H
#define SCRIVEL_READER_XMLPARSER_H

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace ScrivelReader
{

struct XmlAttribute
{
    std::string_view name;
    std::string_view value;
};

/// Gets the events in the order of the document. What the views show is gone after the call.
class XmlEvents
{
public:
    virtual ~XmlEvents() = default;
    virtual void StartElement(std::string_view name, const XmlAttribute* attributes,
                              std::size_t count) = 0;
    virtual void EndElement() = 0;
    virtual void Text(std::string_view text) = 0;  ///< may come in pieces
    virtual void Comment(std::string_view text) = 0;
};

/// A strict parser that bytes are pushed into. It never fetches anything, expands no entity that a
/// document declares, and keeps no more of the document than its longest tag or comment.
class XmlParser
{
public:
    virtual ~XmlParser() = default;

    /// Parses the next bytes. False when the document isn't well-formed, now or before.
    virtual bool Feed(const char* bytes, std::size_t size) = 0;
    /// The document ends here. False when it isn't well-formed.
    virtual bool Finish() = 0;
    /// Whether texts come as events from now on, as they do at first. A text that nobody wants costs less
    /// when it isn't announced.
    virtual void AnnounceTexts(bool wanted) = 0;
    /// From now on no event comes, but the document is judged to its end.
    virtual void Mute() = 0;

    struct Place
    {
        std::uint64_t offset;
        std::uint64_t line;  ///< from 1
    };

    /// During StartElement: where the tag's < is.
    virtual Place TagBegin() const = 0;
    /// During an event: what follows the tag or comment. A start tag's own > may be among it.
    virtual std::uint64_t Position() const = 0;
    virtual std::uint64_t Line() const = 0;

    /// The first error: what it is, and where. Empty text while there is none.
    virtual const std::string& Error() const = 0;
    virtual std::uint64_t ErrorPosition() const = 0;
    virtual std::uint64_t ErrorLine() const = 0;
};

std::unique_ptr<XmlParser> MakeXmlParser(XmlEvents& events);

}  // namespace ScrivelReader

#endif
