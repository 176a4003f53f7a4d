// The page as the program carries it: page.html with the styles and scripts beside it.

#ifndef SCRIVEL_TOOL_PAGE_HTMLPARTS_H
#define SCRIVEL_TOOL_PAGE_HTMLPARTS_H

#include <string>

namespace ScrivelTool
{

/// The page up to the data of the logs, and what follows them.
std::string HtmlBeforeData();
std::string HtmlAfterData();

}  // namespace ScrivelTool

#endif
