// Names and texts that no XML reader refuses. Tested by tests/layer/LogNamesTest.cpp.

#include "scrivel/LogNames.h"

#include "base/PutText.h"
#include "format/Characters.h"

#include <ctime>

namespace Scrivel2
{
namespace
{

bool MayBeginName(char c)
{
    return IsLetter(static_cast<unsigned char>(c)) || c == '_';
}

}  // namespace

std::string LegalName(std::string_view text)
{
    if (text.empty()) {
        return "emptyIdent";
    }
    std::string name(text);
    char last = '\0';
    for (char& c : name) {
        c = cleanedInside[static_cast<unsigned char>(c)];
        if (c == '-' && last == '-') {
            c = '_';
        }
        last = c;
    }
    if (!MayBeginName(name.front())) {
        name.front() = '_';
    }
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
