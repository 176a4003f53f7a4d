// Compares what the contenders have written. Run at the start of scrivel_bench and scrivel_bench_counts.

#include "Contents.h"

#include "Contender.h"
#include "File.h"

#include "judge/LogJudge.h"

#include <algorithm>
#include <cstddef>
#include <iostream>
#include <regex>
#include <sstream>

namespace ScrivelBench
{
namespace
{

constexpr int calls = 5;

std::string LogOf(const ContenderKind& contender, const Workload& workload)
{
    auto log = MakeLog(contender, workload);
    for (int call = 0; call < calls; ++call) {
        log->LogCall();
    }
    log.reset();  // some write the root end tag only now
    return ScrivelTest::FileBytes(LogFileName());
}

/// The times of the calls and of the header, made equal digit by digit, and no word of the log's end,
/// which the guard's log has alone.
std::string Comparable(const std::string& log)
{
    static const std::regex call("[0-9]+\\.[0-9]{6} s");
    static const std::regex header(" time=\"[^\"]*\"");
    static const std::regex ended("\n<!-- Log ended -->\n\n");
    const std::string timeless =
        std::regex_replace(std::regex_replace(log, call, "0.000000 s"), header, " time=\"\"");
    return std::regex_replace(timeless, ended, "");
}

/// Lists a log: one line for each tag and each text, without the root's tags.
class Lister : public ScrivelTest::LogVisitor
{
public:
    void Start(std::string_view name, const std::vector<ScrivelTest::Attribute>& attributes) override
    {
        EndText();
        if (depth++ == 0) {
            return;
        }
        listing << '<' << name;
        for (const ScrivelTest::Attribute& attribute : attributes) {
            listing << ' ' << attribute.name << '=' << attribute.value;
        }
        listing << '\n';
    }

    void End(std::string_view name) override
    {
        EndText();
        if (--depth > 0) {
            listing << '/' << name << '\n';
        }
    }

    void Text(std::string_view piece) override { text += piece; }

    std::string Listing() const { return listing.str(); }

private:
    /// Indentation is no text.
    void EndText()
    {
        if (text.find_first_not_of(" \t\r\n") != std::string::npos) {
            listing << text << '\n';
        }
        text.clear();
    }

    std::ostringstream listing;
    std::string text;
    unsigned int depth = 0;
};

/// "not well-formed" follows what could be read of a log that is no document.
std::string ListingOf(const std::string& log)
{
    Lister lister;
    const ScrivelTest::Verdict verdict = ScrivelTest::Visit(log, lister);
    return lister.Listing() + (verdict.accepted ? "" : "not well-formed\n");
}

std::string Excerpt(const std::string& text, std::ptrdiff_t from)
{
    constexpr std::size_t length = 60;
    return text.substr(static_cast<std::size_t>(from), length);
}

}  // namespace

std::vector<std::string> Differences()
{
    std::vector<std::string> differences;
    for (const Workload& workload : Workloads()) {
        const std::string expected = Comparable(LogOf(ContenderNamed(libraryName), workload));
        const std::string expectedListing = ListingOf(expected);
        const auto compare = [&](const ContenderKind& contender, const std::string& is,
                                 const std::string& shouldBe) {
            if (is != shouldBe) {
                const auto first = std::mismatch(is.begin(), is.end(), shouldBe.begin(), shouldBe.end());
                differences.push_back(std::string(workload.name) + ", " + contender.name + ": \"" +
                                      Excerpt(is, first.first - is.begin()) + "\", the library: \"" +
                                      Excerpt(shouldBe, first.second - shouldBe.begin()) + "\"");
            }
        };
        for (const ContenderKind& contender : Contenders()) {
            switch (contender.writes) {
            case Writes::sameBytes:
                compare(contender, Comparable(LogOf(contender, workload)), expected);
                break;
            case Writes::sameElements:
                compare(contender, ListingOf(Comparable(LogOf(contender, workload))), expectedListing);
                break;
            case Writes::otherNumbers: {
                static const std::regex number("call_num=[0-9]+");
                const auto withoutNumbers = [](const std::string& listing) {
                    return std::regex_replace(listing, number, "call_num");
                };
                compare(contender, withoutNumbers(ListingOf(Comparable(LogOf(contender, workload)))),
                        withoutNumbers(expectedListing));
                break;
            }
            }
        }
    }
    return differences;
}

bool SameContents()
{
    const std::vector<std::string> differences = Differences();
    for (const std::string& difference : differences) {
        std::cerr << difference << '\n';
    }
    return differences.empty();
}

}  // namespace ScrivelBench
