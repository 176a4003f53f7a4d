// The values of a call one by one, each with its path.

#ifndef SCRIVEL_TOOL_VALUES_H
#define SCRIVEL_TOOL_VALUES_H

#include <functional>
#include <string>

#include "scrivel/Tree.h"

namespace ScrivelTool
{

/// startAddress.location.addr, 0x0000000000003000. Of several elements of one name beside each other each
/// has its number: values.parameterValue[1].id. The bytes of an array are one value, in hexadecimal.
void ForEachValue(const ScrivelReader::Tree& tree,
                  const std::function<void(const std::string& path, const std::string& value)>& take);

}  // namespace ScrivelTool

#endif
