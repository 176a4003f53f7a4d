// What CI systems show of a test: JUnit's XML.

#ifndef SCRIVEL_TOOL_JUNIT_H
#define SCRIVEL_TOOL_JUNIT_H

#include <string>
#include <string_view>
#include <vector>

namespace ScrivelTool
{

struct JUnitCase
{
    std::string name;
    std::string failure;   ///< why it failed; empty when it passed
    bool isError = false;  ///< it could not be tried
};

struct JUnitSuite
{
    std::string name;
    std::vector<JUnitCase> cases;
};

/// Whether nothing is lost when the document takes the place of what the path names: a report of this
/// kind, nothing, or no file.
bool MayBecomeJUnit(const std::string& path);
/// The document.
std::string JUnitText(const std::vector<JUnitSuite>& suites);

}  // namespace ScrivelTool

#endif
