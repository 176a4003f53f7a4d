// Calls as JSON. Tested by tests/tool/CallsTest.cpp and ShowTest.cpp.

#include "Json.h"

#include <algorithm>
#include <string_view>

#include "KnownText.h"

namespace ScrivelTool
{

using namespace ScrivelReader;

namespace
{

std::string Text(const Json& value)
{
    return value.dump(-1, ' ', false, Json::error_handler_t::replace);
}

void AddString(std::string& out, std::string_view text)
{
    const bool isPlain = std::all_of(
        text.begin(), text.end(), [](char c) { return c >= ' ' && c < 0x7f && c != '"' && c != '\\'; });
    if (isPlain)
        out.append("\"").append(text).append("\"");
    else
        out += Text(text);
}

/// How long the text of elements is, but for what is escaped.
std::size_t SizeOf(Tree::Elements elements)
{
    constexpr std::size_t markup = sizeof R"({"name":"","children":[]},)" - 1;
    std::size_t size = 2;
    for (Tree::Element element : elements) {
        size += markup + element.Name().size();
        size += element.What() == Tree::Kind::Elements ? SizeOf(element.Children())
                : element.What() == Tree::Kind::Bytes  ? 2 * element.Text().size()
                                                       : element.Text().size();
    }
    return size;
}

void AddElements(std::string& out, Tree::Elements elements)
{
    out += '[';
    bool isFirst = true;
    for (Tree::Element element : elements) {
        out += isFirst ? "{\"name\":" : ",{\"name\":";
        isFirst = false;
        AddString(out, element.Name());
        switch (element.What()) {
        case Tree::Kind::Text:
            out += ",\"value\":";
            AddString(out, element.Text());
            break;
        case Tree::Kind::Bytes:
            out.append(",\"value\":\"").append(HexDigits(element.Text())).append("\"");
            break;
        case Tree::Kind::Elements:
            out += ",\"children\":";
            AddElements(out, element.Children());
            break;
        }
        if (element.IsCut())
            out += ",\"cut\":true";
        out += '}';
    }
    out += ']';
}

template <typename Number>
Json OrNull(const std::optional<Number>& number)
{
    return number ? Json(*number) : Json();
}

}  // namespace

std::string JsonText(const Tree& tree)
{
    std::string text;
    text.reserve(SizeOf(tree.Top()));
    AddElements(text, tree.Top());
    return text;
}

Json ToJson(const std::optional<Time>& time)
{
    return time ? Json(time->Seconds()) : Json();
}

Json HeadOf(const Call& call)
{
    return {
        {"schema", jsonSchema},
        {"call", call.number},
        {"name", call.name},
        {"thread", OrNull(call.threadId)},
        {"call_time", ToJson(call.callTime)},
        {"return_time", ToJson(call.returnTime)},
        {"status", call.status.empty() ? Json() : Json(call.status)},
        {"parent", OrNull(call.Parent())},
        {"parts", call.parts.size()},
        {"occurrence", call.occurrence},
        {"offset", call.parts.empty() ? Json() : Json(call.parts.front().begin)},
    };
}

Json ToJson(const Call& call)
{
    return Json::parse(JsonLine(call, Json::object()));
}

std::string JsonLine(const Call& call, const Json& more)
{
    return JsonLine(HeadOf(call), call, more);
}

std::string JsonLine(const Json& head, const Call& call, const Json& more)
{
    std::string text = "{";
    // A large text would be there twice while it grows.
    constexpr std::size_t rest = 512;
    text.reserve(rest + SizeOf(call.arguments.Top()) + SizeOf(call.results.Top()));
    const auto add = [&](const std::string& name, const Json& value) {
        text.append(text.size() == 1 ? "\"" : ",\"").append(name).append("\":").append(Text(value));
    };
    const auto addTree = [&](const char* name, const Tree& tree) {
        text.append(",\"").append(name).append("\":");
        AddElements(text, tree.Top());
    };
    for (const auto& [name, value] : head.items()) {
        // The trees stand in the middle.
        if (name == "occurrence") {
            addTree("arguments", call.arguments);
            addTree("results", call.results);
        }
        add(name, value);
    }
    if (!call.disassemblerAddress.empty())
        add("disassembler_address", call.disassemblerAddress);
    if (!call.before.Empty())
        addTree("before", call.before);
    if (call.beginningLost)
        add("beginning_lost", true);
    if (call.clockSetBack)
        add("clock_set_back", true);
    for (const auto& [name, value] : more.items())
        add(name, value);
    text += "}\n";
    return text;
}

std::string JsonLine(const Json& object)
{
    return Text(object) + "\n";
}

}  // namespace ScrivelTool
