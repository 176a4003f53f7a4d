// Calls as JSON. Tested by tests/tool/CallsTest.cpp and ShowTest.cpp.

#include "Json.h"

namespace ScrivelTool
{

using namespace ScrivelReader;

namespace
{

Json ElementsToJson(Tree::Elements elements)
{
    Json list = Json::array();
    for (Tree::Element element : elements) {
        Json object = {{"name", element.Name()}};
        switch (element.What()) {
        case Tree::Kind::Text:
            object["value"] = element.Text();
            break;
        case Tree::Kind::Bytes: {
            constexpr std::string_view digits = "0123456789abcdef";
            std::string text;
            text.reserve(element.Text().size() * 2);
            for (const char byte : element.Text()) {
                const auto value = static_cast<unsigned char>(byte);
                text.append(1, digits[value / 16]).append(1, digits[value % 16]);
            }
            object["value"] = std::move(text);
            break;
        }
        case Tree::Kind::Elements:
            object["children"] = ElementsToJson(element.Children());
            break;
        }
        list.push_back(std::move(object));
    }
    return list;
}

template <typename Number>
Json OrNull(const std::optional<Number>& number)
{
    return number ? Json(*number) : Json();
}

}  // namespace

Json ToJson(const Tree& tree)
{
    return ElementsToJson(tree.Top());
}

Json ToJson(const std::optional<Time>& time)
{
    return time ? Json(time->Seconds()) : Json();
}

Json ToJson(const Call& call)
{
    Json object = {
        {"schema", jsonSchema},
        {"call", call.number},
        {"name", call.name},
        {"thread", OrNull(call.threadId)},
        {"call_time", ToJson(call.callTime)},
        {"return_time", ToJson(call.returnTime)},
        {"status", call.status.empty() ? Json() : Json(call.status)},
        {"parent", OrNull(call.Parent())},
        {"parts", call.parts.size()},
        {"arguments", ToJson(call.arguments)},
        {"results", ToJson(call.results)},
        {"occurrence", call.occurrence},
        {"offset", call.parts.empty() ? Json() : Json(call.parts.front().begin)},
    };
    if (!call.disassemblerAddress.empty())
        object["disassembler_address"] = call.disassemblerAddress;
    if (!call.before.Empty())
        object["before"] = ToJson(call.before);
    if (call.beginningLost)
        object["beginning_lost"] = true;
    return object;
}

std::string JsonLine(const Json& object)
{
    return object.dump(-1, ' ', false, Json::error_handler_t::replace) + "\n";
}

}  // namespace ScrivelTool
