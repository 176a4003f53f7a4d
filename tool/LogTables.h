// Logs into the tables of a database.

#ifndef SCRIVEL_TOOL_LOGTABLES_H
#define SCRIVEL_TOOL_LOGTABLES_H

#include <cstddef>
#include <string>
#include <vector>

#include "Database.h"
#include "Terminal.h"
#include "scrivel/CallFilter.h"

namespace ScrivelTool
{

/// The calls that the filter leaves; how many logs were read. Has trouble when one couldn't be read, or
/// not be kept, which was told.
std::size_t FillTables(Database& database, const std::vector<std::string>& paths,
                       const ScrivelReader::CallFilter& chosen, Terminal& terminal, bool& trouble);

}  // namespace ScrivelTool

#endif
