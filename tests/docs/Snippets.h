// The code that the documentation shows.
//
// A block of code in docs/ is a program of examples/, or a region of a file in this folder, between two
// lines that hold nothing but the region's name: `// [overlap]`. A log that the documentation shows is
// written by the snippet of that name. DocumentationTest.cpp compares them.

#ifndef SCRIVEL_TESTS_DOCS_SNIPPETS_H
#define SCRIVEL_TESTS_DOCS_SNIPPETS_H

#include <map>
#include <string>

namespace ScrivelDocs
{

/// Leaves its logs in the current folder.
using Snippet = void (*)();

using Snippets = std::map<std::string, Snippet>;

/// By the names under which the documentation shows their logs.
Snippets LoggingSnippets();
Snippets LogFormatSnippets();
Snippets CallingOrderSnippets();

/// Copies the log as it is in the file at this moment, so that the documentation can show it as
/// `snippet/moment`. The process writes one log in the current folder.
void KeepMoment(const std::string& moment);

}  // namespace ScrivelDocs

#endif
