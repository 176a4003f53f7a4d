// Trace events. Tested by tests/tool/ExportTest.cpp.

#include "ChromeTrace.h"

#include <cstring>
#include <limits>
#include <utility>

#include "CallLine.h"
#include "Json.h"

namespace ScrivelTool
{

using namespace ScrivelReader;

namespace
{

constexpr std::int64_t never = std::numeric_limits<std::int64_t>::max();

/// Names become members here, as viewers show them so. Of several of one name it is a list.
Json Members(Tree::Elements elements)
{
    Json object = Json::object();
    for (Tree::Element element : elements) {
        Json value;
        switch (element.What()) {
        case Tree::Kind::Text:
            value = std::string(element.Text()) + (element.IsCut() ? "..." : "");
            break;
        case Tree::Kind::Bytes: {
            std::string text;
            for (const char byte : element.Text()) {
                constexpr std::string_view digits = "0123456789abcdef";
                const auto number = static_cast<unsigned char>(byte);
                text.append(1, digits[number / 16]).append(1, digits[number % 16]);
            }
            value = text + (element.IsCut() ? "..." : "");
            break;
        }
        case Tree::Kind::Elements:
            value = Members(element.Children());
            if (element.IsCut())
                value["..."] = std::to_string(element.Count()) + " elements";
            break;
        }
        Json& member = object[std::string(element.Name())];
        if (member.is_null()) {
            member = std::move(value);
        } else {
            if (!member.is_array())
                member = Json::array({member});
            member.push_back(std::move(value));
        }
    }
    return object;
}

/// Microseconds, as the events have times.
std::string Microseconds(std::int64_t nanoseconds)
{
    return Json(double(nanoseconds) / 1000).dump();
}

/// The object without its closing brace.
std::string Begun(const Json& object)
{
    std::string text = JsonLine(object);
    text.resize(text.size() - 2);
    return text;
}

}  // namespace

/// What stands in front of a kept event's members.
struct ChromeTrace::Head
{
    std::int64_t begin;
    std::int64_t end;  // never, when the call hasn't returned
    std::uint64_t threadId;
    std::uint32_t thread;
};

ChromeTrace::ChromeTrace(std::function<void(std::string_view)> itsWrite) : write(std::move(itsWrite)) {}

void ChromeTrace::Finish()
{
    write("\n]}\n");
}

void ChromeTrace::Write(const std::string& event)
{
    write(isFirst ? "{\"displayTimeUnit\":\"ns\",\"traceEvents\":[\n" : ",\n");
    isFirst = false;
    write(event);
}

void ChromeTrace::BeginLog(const std::string& path, const LogHeader& header, std::int64_t since)
{
    ++process;
    begin = since;
    tracks.clear();
    std::string name = path;
    if (header.processId)
        name += " (process " + std::to_string(*header.processId) + ")";
    Write(Begun({{"name", "process_name"},
                 {"ph", "M"},
                 {"pid", process},
                 {"tid", 0},
                 {"args", {{"name", name}}}}) +
          "}");
}

std::string ChromeTrace::Keep(const Call& call) const
{
    Head head{};
    head.begin = call.callTime     ? call.callTime->nanoseconds
                 : call.returnTime ? call.returnTime->nanoseconds
                                   : 0;
    // Where the clock was set back, a duration would be made up.
    head.end = !call.Returned() ? never : head.begin + call.Took().value_or(0);
    head.thread = call.thread;
    head.threadId = call.threadId.value_or(0);
    Json arguments = {{"call", NumberText(call)}};
    if (!call.status.empty())
        arguments["status"] = call.status;
    if (!call.Returned())
        arguments["returned"] = "no";
    if (!call.arguments.Empty())
        arguments["arguments"] = Members(call.arguments.Top());
    if (!call.results.Empty())
        arguments["results"] = Members(call.results.Top());
    std::string kept(sizeof head, '\0');
    std::memcpy(kept.data(), &head, sizeof head);
    // The beginning of an object; Take adds the rest.
    Json object = {
        {"name", call.name}, {"cat", call.Failed() ? "failed" : "call"}, {"args", std::move(arguments)}};
    return kept + Begun(object);
}

void ChromeTrace::Take(const std::string& kept)
{
    Head head{};
    std::memcpy(&head, kept.data(), sizeof head);
    const auto [found, isNew] = tracks.try_emplace(head.thread);
    Track& track = found->second;
    if (isNew) {
        const std::string name = head.thread == 0 ? "calls"
                                                  : "T" + std::to_string(head.thread) + " (" +
                                                        std::to_string(head.threadId) + ")";
        Write(Begun({{"name", "thread_name"},
                     {"ph", "M"},
                     {"pid", process},
                     {"tid", head.thread},
                     {"args", {{"name", name}}}}) +
              "}");
    }
    while (!track.ends.empty() && track.ends.back() <= head.begin)
        track.ends.pop_back();
    const bool nests =
        head.begin >= track.lastBegin && (track.ends.empty() || head.end <= track.ends.back());

    const std::string event = kept.substr(sizeof head) + ",\"pid\":" + std::to_string(process) +
                              ",\"tid\":" + std::to_string(head.thread) +
                              ",\"ts\":" + Microseconds(begin + head.begin);
    if (!nests) {
        const std::string id = ",\"id\":\"" + std::to_string(++nextId) + "\"";
        Write(event + id + ",\"ph\":\"b\"}");
        if (head.end == never)
            return;
        // The end repeats the name, and no more.
        const Json begun = Json::parse(kept.substr(sizeof head) + "}", nullptr, false);
        Write(Begun({{"name", begun["name"]}, {"cat", begun["cat"]}}) +
              ",\"pid\":" + std::to_string(process) + ",\"tid\":" + std::to_string(head.thread) +
              ",\"ts\":" + Microseconds(begin + head.end) + id + ",\"ph\":\"e\"}");
        return;
    }
    track.lastBegin = head.begin;
    track.ends.push_back(head.end);
    if (head.end == never)
        Write(event + ",\"ph\":\"B\"}");
    else
        Write(event + ",\"dur\":" + Microseconds(head.end - head.begin) + ",\"ph\":\"X\"}");
}

}  // namespace ScrivelTool
