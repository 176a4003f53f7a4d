// A call as one line of JSON. The schema is docs/reading-logs.md's.

#ifndef SCRIVEL_TOOL_JSON_H
#define SCRIVEL_TOOL_JSON_H

#include <string>

#include <nlohmann/json.hpp>

#include "scrivel/Call.h"

namespace ScrivelTool
{

using Json = nlohmann::ordered_json;

/// Of every object that a command writes. It rises when a field goes or changes its meaning.
constexpr int jsonSchema = 1;

/// [{"name": ..., "value": ...} or {"name": ..., "children": [...]}, ...]
Json ToJson(const ScrivelReader::Tree& tree);
Json ToJson(const ScrivelReader::Call& call);
/// Seconds, or null.
Json ToJson(const std::optional<ScrivelReader::Time>& time);

/// The object on a line of its own. Bytes that are no UTF-8 become U+FFFD.
std::string JsonLine(const Json& object);

}  // namespace ScrivelTool

#endif
