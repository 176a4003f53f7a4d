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
std::string JsonText(const ScrivelReader::Tree& tree);
/// The members of a call that are no trees.
Json HeadOf(const ScrivelReader::Call& call);
/// A call as a part of another object.
Json ToJson(const ScrivelReader::Call& call);
/// A call on a line of its own, with the members that a command adds. Of a large one there is its text in
/// memory, and no object.
std::string JsonLine(const ScrivelReader::Call& call, const Json& more);
/// The same with what is left of its head.
std::string JsonLine(const Json& head, const ScrivelReader::Call& call, const Json& more);
/// Seconds, or null.
Json ToJson(const std::optional<ScrivelReader::Time>& time);

/// The object on a line of its own. Bytes that are no UTF-8 become U+FFFD.
std::string JsonLine(const Json& object);

}  // namespace ScrivelTool

#endif
