// The one judge of logs: whether libxml2, without its recovery mode, accepts them, and what they hold.
// Tests, crash programs, fuzz targets and benchmarks all ask it; it prints nothing of what it finds.

#ifndef SCRIVEL_TESTS_JUDGE_LOGJUDGE_H
#define SCRIVEL_TESTS_JUDGE_LOGJUDGE_H

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace ScrivelTest
{

struct Verdict
{
    bool accepted = false;
    std::string problem{};  ///< what libxml2 said, and in which line; empty for an accepted log
};

struct Attribute
{
    std::string name;
    std::string value;
};

/// The value of the attribute of that name, empty without one.
std::string ValueOf(std::string_view name, const std::vector<Attribute>& attributes);

/// Is shown what a log holds, in the order of the log. An empty element has a start and an end.
class LogVisitor
{
public:
    virtual ~LogVisitor() = default;

    virtual void Start(std::string_view name, const std::vector<Attribute>& attributes) = 0;
    virtual void End(std::string_view name) = 0;

    /// A piece of text; neighbours may belong together.
    virtual void Text(std::string_view piece) = 0;
};

/// The bytes of a file; empty when there is none.
std::string FileBytes(const std::string& fileName);

/// Shows all that the bytes hold before the first error. Keeps none of it, however long the log.
Verdict Visit(std::string_view bytes, LogVisitor& visitor);

/// As Visit, without holding the file in memory.
Verdict VisitFile(const std::string& fileName, LogVisitor& visitor);

/// Which prefixes a name may have: readers that know of no namespaces take any.
enum class Prefixes
{
    Declared,
    Any
};

/// Whether the bytes are one document.
bool IsDocument(std::string_view bytes, Prefixes prefixes = Prefixes::Declared);

struct Element
{
    unsigned int level;  ///< 0 for the root
    std::string name;
    std::string text;  ///< its own, without that of its children
    std::vector<Attribute> attributes;
};

/// The elements of a document in its order; nothing when the bytes are none.
std::optional<std::vector<Element>> Elements(std::string_view bytes);

/// The text of each node that an XPath expression finds in the document, in document order; the one
/// result of an expression that gives a number, a text or a truth value. Throws std::invalid_argument
/// when the bytes are no document or the expression is wrong.
std::vector<std::string> XPath(const std::string& bytes, const std::string& expression,
                               Prefixes prefixes = Prefixes::Declared);

/// The canonical form of a log, without instructions, comments and blanks between elements: the same for
/// all that a flush leaves on its way to one document. Empty when the bytes are no document.
std::string BareLog(const std::string& bytes);

}  // namespace ScrivelTest

#endif
