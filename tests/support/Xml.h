// What libxml2 makes of a log.

#ifndef SCRIVEL_TESTS_SUPPORT_XML_H
#define SCRIVEL_TESTS_SUPPORT_XML_H

#include <string>
#include <vector>

namespace ScrivelTest
{

/// Whether libxml2 reads the bytes as one document, without its recovery mode. Nothing is printed.
bool IsDocument(const std::string& bytes);

/// The text of each node that an XPath expression finds in the document, in document order; the one
/// result of an expression that gives a number, a text or a truth value. Empty, with a test failure,
/// when the bytes are no document or the expression is wrong.
std::vector<std::string> XPath(const std::string& bytes, const std::string& expression);

}  // namespace ScrivelTest

#endif
