// Names and texts that no XML reader refuses. Tested by tests/layer/LogNamesTest.cpp.

#include "scrivel/LogNames.h"

#include "base/PutText.h"
#include "format/Characters.h"

#include <ctime>

namespace Scrivel2
{
std::string LegalName(std::string_view text)
{
    std::string name(RoomForName(text), '\0');
    name.resize(static_cast<std::size_t>(PutName(name.data(), text, NameHeads::kept) - name.data()));
    for (auto place = name.find("--"); place != std::string::npos; place = name.find("--", place)) {
        name[place + 1] = '_';
    }
    name.front() = mendedHead[static_cast<unsigned char>(name.front())];
    return name;
}

std::string DatedName(std::string_view name)
{
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    localtime_r(&now, &local);
    char date[32];
    const std::size_t length = std::strftime(date, sizeof date, "-%Y%m%d-%H%M%S", &local);
    return std::string(name).append(date, length);
}

std::string CommentText(std::string_view text)
{
    std::string safe;
    safe.reserve(text.size());
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        const bool allowed = (byte >= ' ' && byte < 0x7f) || c == '\n' || c == '\t';
        if (!allowed) {
            const auto escaped = EscapedByte(byte);
            safe.append(escaped.data(), escaped.size());
        } else if (c == '-' && !safe.empty() && safe.back() == '-') {
            safe += " -";
        } else if (c == '>' && !safe.empty() && safe.back() == '?') {
            safe += " >";  // what ends the instructions that hide a flush
        } else {
            safe += c;
        }
    }
    return safe;
}

}  // namespace Scrivel2
