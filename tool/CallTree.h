// What a call was given and gave back, as trees of names and values; byte arrays as hexdumps.

#ifndef SCRIVEL_TOOL_CALLTREE_H
#define SCRIVEL_TOOL_CALLTREE_H

#include <string>
#include <vector>

#include "Terminal.h"
#include "scrivel/Tree.h"

namespace ScrivelTool
{

/// A line for each element, indented as deep as it stands:
///
///       location
///         spaceName  Memory
///       data         4 bytes
///         0000  e8 03 00 00                                      ....
std::string TreeText(const ScrivelReader::Tree& tree, const Terminal& terminal);

/// Registers and addresses that occur in a tree, as a call's line names them: pc, Memory:0x3000. The
/// number of a register that bears no name is r32.
std::vector<std::string> Places(const ScrivelReader::Tree& tree);

}  // namespace ScrivelTool

#endif
