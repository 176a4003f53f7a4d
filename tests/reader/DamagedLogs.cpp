// Damages a log in many ways and looks at what is kept of it.
//
//     damaged_logs --log crash-4242.xml --step 1 --places 400 --mutations 100000 --seed 1
//
// Cuts the log at every step-th byte: recovering keeps exactly the elements that were complete, and tells
// where the log ends. Damages it at as many places in four ways: elements are lost that were hit, and few
// others. Mutates it: the reader's verdict is the one that libxml2's DOM and expat agree on, and where
// they don't, libxml2's. Every log that was recovered is a document for both. To the reader a prefix is a
// part of a name, and need not be declared: a foreign byte may be a colon.
//
// In place of --log, --session names the example session, which then crashes and leaves one.

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <random>
#include <string>
#include <vector>

#include "crash/Options.h"
#include "reader/Copies.h"
#include "reader/Reading.h"
#include "judge/LogJudge.h"
#include "support/Shell.h"

using namespace ScrivelReader;
using namespace ScrivelTest;

namespace
{

int failures = 0;

void Fail(const std::string& what, std::size_t place)
{
    constexpr int mostShown = 10;
    if (++failures <= mostShown) {
        std::printf("FAILED: %s, at %zu\n", what.c_str(), place);
    }
}

std::string Contents(const std::filesystem::path& path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

/// The log of a session that crashed, with nothing left of it in the file system.
std::string CrashLog(const std::string& session)
{
    std::string folder = (std::filesystem::temp_directory_path() / "scrivel-damaged-XXXXXX").string();
    if (mkdtemp(folder.data()) == nullptr) {
        return {};
    }
    // A sanitizer's report of the crash would come in its place.
    const std::string command =
        "cd " + Quoted(folder) + " && ulimit -c 0 && ASAN_OPTIONS=handle_segv=0 " +
        "TSAN_OPTIONS=handle_segv=0 " + Quoted(session) + " --crash >session.txt 2>&1";
    std::string log;
    if (std::system(command.c_str()) != 0) {
        for (const auto& entry : std::filesystem::directory_iterator(folder)) {
            if (entry.path().filename().string().rfind("crash-", 0) == 0) {
                log = Contents(entry.path());
            }
        }
    }
    std::filesystem::remove_all(folder);
    return log;
}

/// The calls' elements as libxml2's DOM has them: "name number", in document order.
std::vector<std::string> Elements(const std::string& document)
{
    const std::string each = "/*/*[@call_num]";
    const std::vector<std::string> numbers = XPath(document, each + "/@call_num", Prefixes::Any);
    std::vector<std::string> contents = XPath(document, each, Prefixes::Any);
    for (std::size_t i = 0; i < contents.size(); ++i) {
        contents[i].insert(0, numbers[i] + " ");
    }
    return contents;
}

/// Offsets after the end tags of the calls' elements, which the writer indents by four blanks.
std::vector<std::size_t> ElementEnds(const std::string& log)
{
    const std::string begin = "\n    </";
    std::vector<std::size_t> ends;
    for (std::size_t at = log.find(begin); at != std::string::npos; at = log.find(begin, at + 1)) {
        ends.push_back(log.find('>', at) + 1);
    }
    return ends;
}

void RequireDocument(const Copy& copy, const std::string& damaged, std::size_t place)
{
    if (!IsDocument(copy.bytes, Prefixes::Any) || !ExpatError(copy.bytes).empty()) {
        Fail("what was recovered is no document", place);
    }
    if (copy.copied.end.whole && copy.bytes != damaged) {
        Fail("a whole log was changed", place);
    }
}

// ---- Cuts -----------------------------------------------------------------------------------------

void Cut(const std::string& log, std::size_t step)
{
    const std::vector<std::string> all = Elements(log);
    const std::vector<std::size_t> ends = ElementEnds(log);
    if (all.size() != ends.size()) {
        Fail("elements are not where the writer puts them", 0);
        return;
    }
    std::size_t cuts = 0;
    for (std::size_t size = 0; size < log.size(); size += step, ++cuts) {
        const std::string cut = log.substr(0, size);
        const Copy copy = RecoveredFrom(cut);
        RequireDocument(copy, cut, size);
        const auto complete = std::upper_bound(ends.begin(), ends.end(), size) - ends.begin();
        const std::vector<std::string> kept = Elements(copy.bytes);
        if (kept != std::vector<std::string>(all.begin(), all.begin() + complete)) {
            Fail("not exactly the complete elements are kept", size);
        }
        if (copy.copied.end.whole) {
            continue;
        }
        const std::size_t lastEnd = complete == 0 ? 0 : ends[std::size_t(complete) - 1];
        if (copy.damages.size() != 1 || copy.damages[0].offset > size ||
            copy.damages[0].offset < lastEnd ||
            copy.damages[0].line !=
                std::uint64_t(
                    std::count(cut.begin(), cut.begin() + std::ptrdiff_t(copy.damages[0].offset), '\n')) +
                    1) {
            Fail("the damage is told to be elsewhere", size);
        }
    }
    std::printf("%zu cuts of %zu bytes with %zu elements\n", cuts, log.size(), all.size());
}

// ---- Damage in the middle -------------------------------------------------------------------------

template <typename Damaging>
void Hit(const std::string& log, std::size_t places, const char* what, double mostLost, Damaging damage)
{
    const std::size_t elements = Elements(log).size();
    std::size_t lost = 0;
    for (std::size_t i = 0; i < places; ++i) {
        const std::size_t place = log.size() * i / places;
        std::string damaged = log;
        damage(damaged, place);
        const Copy copy = RecoveredFrom(damaged);
        RequireDocument(copy, damaged, place);
        lost += elements - Elements(copy.bytes).size();
    }
    const double average = double(lost) / double(std::max<std::size_t>(places, 1));
    std::printf("%s at %zu places: %.2f elements of %zu lost on average\n", what, places, average,
                elements);
    if (average > mostLost) {
        Fail(std::string("too much is lost by ") + what, 0);
    }
}

void HitInTheMiddle(const std::string& log, std::size_t places, std::mt19937& random)
{
    const auto byte = [&] { return char(std::uniform_int_distribution<int>(0, 255)(random)); };
    Hit(log, places, "one foreign byte", 2,
        [&](std::string& text, std::size_t at) { text[at] = byte(); });
    Hit(log, places, "a colon", 2, [](std::string& text, std::size_t at) { text[at] = ':'; });
    Hit(log, places, "100 zeros", 2, [](std::string& text, std::size_t at) {
        const std::size_t count = std::min<std::size_t>(100, text.size() - at);
        text.replace(at, count, count, '\0');
    });
    Hit(log, places, "4 KiB missing", 6, [](std::string& text, std::size_t at) { text.erase(at, 4096); });
    Hit(log, places, "500 foreign bytes", 2, [&](std::string& text, std::size_t at) {
        std::generate(text.begin() + std::ptrdiff_t(at),
                      text.begin() + std::ptrdiff_t(std::min(at + 500, text.size())), byte);
    });
}

// ---- Mutations ------------------------------------------------------------------------------------

void Mutate(std::string& text, std::mt19937& random)
{
    static const std::string pieces[] = {"<",
                                         ">",
                                         "&",
                                         "&lt;",
                                         "&#0;",
                                         "&#x10FFFF;",
                                         "&#xD800;",
                                         "&a;",
                                         "]]>",
                                         "<![CDATA[x]]>",
                                         "<!--",
                                         "-->",
                                         "--",
                                         "<?x ?>",
                                         "<?xml version=\"1.0\"?>",
                                         "<?",
                                         "?>",
                                         "\"",
                                         "'",
                                         "/",
                                         " a=\"1\"",
                                         " a:b=\"1\"",
                                         " xmlns:a=\"u\"",
                                         " xmlns=\"u\"",
                                         " xml:space=\"x\"",
                                         "<a:b/>",
                                         "<a:b:c/>",
                                         "<:a/>",
                                         "<-a/>",
                                         "<\xc3\xa9/>",
                                         "<\xe1\x8f\xb8/>",
                                         "<\xf0\x90\x80\x80/>",
                                         "\xc3",
                                         "\xef\xbf\xbe",
                                         "\xed\xa0\x80",
                                         "\xef\xbb\xbf",
                                         std::string(1, '\0'),
                                         "\x01",
                                         "\x7f",
                                         "\xc2\x85",
                                         "\r",
                                         "\n",
                                         "</",
                                         "<a/>",
                                         "1.1"};
    const auto below = [&](std::size_t bound) {
        return std::uniform_int_distribution<std::size_t>(0, bound - 1)(random);
    };
    const std::size_t at = below(text.size() + 1);
    switch (below(6)) {
    case 0:
        text.insert(at, pieces[below(std::size(pieces))]);
        break;
    case 1:
        text.erase(at, 1 + below(3));
        break;
    case 2:
        text.replace(std::min(at, text.size()), 1, 1, char(below(256)));
        break;
    case 3:
        text.erase(at, below(200));
        break;
    case 4:
        text.insert(at, text.substr(below(text.size() + 1), below(200)));
        break;
    default: {
        // At markup, where a change matters most.
        const std::size_t markup = text.find_first_of("<>\"=/?", at);
        if (markup != std::string::npos) {
            text.insert(markup + below(2), pieces[below(std::size(pieces))]);
        }
        break;
    }
    }
}

void MutateOften(const std::string& log, std::size_t mutations, std::mt19937& random)
{
    // The beginning of the log, closed: short logs are tried more often in the same time.
    const std::vector<std::size_t> ends = ElementEnds(log);
    const std::size_t rootEnd = log.rfind("</");
    const std::string base =
        log.substr(0, ends[std::min<std::size_t>(3, ends.size() - 1)]) + "\n" + log.substr(rootEnd);
    std::size_t whole = 0;
    std::map<std::string, std::size_t> differences;
    for (std::size_t i = 0; i < mutations; ++i) {
        std::string text = base;
        for (std::size_t left = 1 + random() % 3; left != 0; --left) {
            Mutate(text, random);
        }
        const bool isWhole = ReadBytes(text).end.whole;
        const bool isDocument = IsDocument(text, Prefixes::Any);
        const std::string expatError = ExpatError(text);
        whole += isWhole ? 1U : 0U;
        if (isDocument != expatError.empty()) {
            ++differences[isDocument ? "expat alone says: " + expatError : "libxml2 alone refuses it"];
        }
        // After the root element libxml2's DOM takes a zero for the end of the document.
        const bool hasZero = text.find('\0') != std::string::npos;
        if (isWhole != (isDocument && !hasZero)) {
            Fail("the verdict isn't libxml2's", i);
        }
    }
    std::printf("%zu mutated logs, %zu of them whole\n", mutations, whole);
    for (const auto& [what, count] : differences) {
        std::printf("    %zu: %s\n", count, what.c_str());
    }
}

}  // namespace

int main(int argc, char** argv)
{
    const Options options(argc, argv,
                          {{"log", ""},
                           {"session", ""},
                           {"step", "1"},
                           {"places", "400"},
                           {"mutations", "100000"},
                           {"seed", "1"}});
    const std::string log =
        options.Text("log").empty() ? CrashLog(options.Text("session")) : Contents(options.Text("log"));
    if (!IsDocument(log)) {
        std::printf("FAILED: there is no whole log to begin with\n");
        return 1;
    }
    std::mt19937 random(options.Number("seed"));
    if (const std::size_t step = options.Number("step"); step != 0) {
        Cut(log, step);
    }
    HitInTheMiddle(log, options.Number("places"), random);
    MutateOften(log, options.Number("mutations"), random);
    std::printf("%d failures\n", failures);
    return failures == 0 ? 0 : 1;
}
