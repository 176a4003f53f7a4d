// Any bytes as a log: read, judged as libxml2's DOM judges them, and recovered.
//
// The first byte says in how large pieces the reader gets the others.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "Surroundings.h"
#include "reader/Copies.h"
#include "reader/Reading.h"
#include "judge/LogJudge.h"

using namespace ScrivelFuzz;
using namespace ScrivelTest;

namespace
{

/// Whether the log's declaration leaves it at UTF-8: text of our own goes with no other encoding.
bool IsUtf8(std::string_view bytes)
{
    const std::string_view begin = bytes.substr(0, std::min(bytes.find('>'), bytes.size()));
    const bool isWide = bytes.size() > 1 && (bytes[0] == '\0' || bytes[1] == '\0' || bytes[0] == '\xff' ||
                                             bytes[0] == '\xfe' || bytes[0] == '\x4c');
    return !isWide && begin.find("encoding") == std::string_view::npos;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size)
{
    if (size == 0) {
        return 0;
    }
    const std::string log(reinterpret_cast<const char*>(bytes) + 1, size - 1);
    const Reading whole = ReadBytes(log);
    const Reading pieces = ReadBytes(log, {}, std::size_t(*bytes) + 1);
    // libxml2 converts a piece from another encoding before it parses it: where it can't, the calls in
    // front of that place have been read or not, as the pieces come.
    if (IsUtf8(log) || whole.end.whole) {
        RequireEqual(Shown(pieces.calls), Shown(whole.calls), "pieces give other calls");
    }
    Require(pieces.end.whole == whole.end.whole, "pieces give another verdict");

    // A document type declaration is refused, though it is XML. Of bytes after the root element libxml2's
    // DOM looks at none after a zero, which no XML has, and at none that aren't in the declared encoding.
    if (log.find("<!DOCTYPE") == std::string::npos && log.find('\0') == std::string::npos) {
        const bool isDocument = IsDocument(log, Prefixes::Any);
        Require(IsUtf8(log) ? whole.end.whole == isDocument : isDocument || !whole.end.whole,
                "libxml2's DOM gives another verdict");
    } else if (log.find('\0') != std::string::npos && IsUtf8(log)) {
        Require(!whole.end.whole, "a log with zeros is called whole");
    }
    Require(whole.end.whole || !whole.damages.empty(), "a log isn't whole, and no damage tells why");

    const Copy copy = RecoveredFrom(log);
    if (whole.damages.empty()) {
        RequireEqual(copy.bytes, log, "recovering changes a whole log");
    }
    if (IsUtf8(log)) {
        Require(IsDocument(copy.bytes, Prefixes::Any),
                "libxml2's DOM finds no document after recovering");
        RequireEqual(Shown(ReadBytes(copy.bytes).calls), Shown(whole.calls), "recovering changes calls");
        RequireEqual(RecoveredFrom(copy.bytes).bytes, copy.bytes, "recovering twice changes a log");
    }
    return 0;
}
