#include "Contents.h"

#include "Contender.h"
#include "File.h"

#include <algorithm>
#include <cstddef>
#include <iostream>
#include <memory>
#include <regex>
#include <sstream>

#include <libxml/xmlreader.h>

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
    return Contents(LogFileName());
}

/// The times of the calls and of the header, made equal digit by digit.
std::string WithoutTimes(const std::string& log)
{
    static const std::regex call("[0-9]+\\.[0-9]{6} s");
    static const std::regex header(" time=\"[^\"]*\"");
    return std::regex_replace(std::regex_replace(log, call, "0.000000 s"), header, " time=\"\"");
}

std::string AttributesOf(xmlTextReaderPtr reader)
{
    std::string attributes;
    while (xmlTextReaderMoveToNextAttribute(reader) == 1) {
        attributes += ' ';
        attributes += reinterpret_cast<const char*>(xmlTextReaderConstName(reader));
        attributes += '=';
        attributes += reinterpret_cast<const char*>(xmlTextReaderConstValue(reader));
    }
    return attributes;
}

/// One line for each tag and each text below the root element; "not well-formed" at the end of those that
/// could be read, if so.
std::string ListingOf(const std::string& log)
{
    const std::unique_ptr<xmlTextReader, decltype(&xmlFreeTextReader)> reader(
        xmlReaderForMemory(log.data(), static_cast<int>(log.size()), nullptr, nullptr,
                           XML_PARSE_NOERROR | XML_PARSE_NOWARNING),
        xmlFreeTextReader);
    std::ostringstream listing;
    int read = 0;
    while ((read = xmlTextReaderRead(reader.get())) == 1) {
        const int type = xmlTextReaderNodeType(reader.get());
        if (xmlTextReaderDepth(reader.get()) == 0) {
            continue;
        }
        if (type == XML_READER_TYPE_ELEMENT) {
            listing << '<' << xmlTextReaderConstName(reader.get()) << AttributesOf(reader.get()) << '\n';
        } else if (type == XML_READER_TYPE_END_ELEMENT) {
            listing << "/" << xmlTextReaderConstName(reader.get()) << '\n';
        } else if (type == XML_READER_TYPE_TEXT) {
            listing << xmlTextReaderConstValue(reader.get()) << '\n';
        }
    }
    if (read != 0) {
        listing << "not well-formed\n";
    }
    return listing.str();
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
        const std::string expected = WithoutTimes(LogOf(ContenderNamed(libraryName), workload));
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
                compare(contender, WithoutTimes(LogOf(contender, workload)), expected);
                break;
            case Writes::sameElements:
                compare(contender, ListingOf(WithoutTimes(LogOf(contender, workload))), expectedListing);
                break;
            case Writes::otherNumbers: {
                static const std::regex number("call_num=[0-9]+");
                const auto withoutNumbers = [](const std::string& listing) {
                    return std::regex_replace(listing, number, "call_num");
                };
                compare(contender, withoutNumbers(ListingOf(WithoutTimes(LogOf(contender, workload)))),
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
