// The word that was meant, when another one was typed.

#ifndef SCRIVEL_TOOL_DIDYOUMEAN_H
#define SCRIVEL_TOOL_DIDYOUMEAN_H

#include <string>
#include <string_view>
#include <vector>

namespace ScrivelTool
{

/// The known word that takes the fewest changes; empty when none is near.
std::string Nearest(std::string_view word, const std::vector<std::string>& known);

}  // namespace ScrivelTool

#endif
