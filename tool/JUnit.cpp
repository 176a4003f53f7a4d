// Results as JUnit's XML. Tested by tests/tool/CheckTest.cpp.

#include "JUnit.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <system_error>

#include "Json.h"

namespace ScrivelTool
{

namespace
{

bool IsUtf8(std::string_view text)
{
    std::string quoted(text);
    std::replace_if(
        quoted.begin(), quoted.end(), [](unsigned char c) { return c < ' ' || c == '"' || c == '\\'; },
        ' ');
    return Json::accept("\"" + quoted + "\"");
}

std::string Escaped(std::string_view text)
{
    const bool isUtf8 = IsUtf8(text);
    std::string escaped;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (c == '&') {
            escaped += "&amp;";
        } else if (c == '<') {
            escaped += "&lt;";
        } else if (c == '"') {
            escaped += "&quot;";
        } else {
            escaped += byte < ' ' || (byte >= 0x80 && !isUtf8) ? '?' : c;
        }
    }
    return escaped;
}

template <typename Is>
std::string CountOf(const JUnitSuite& suite, Is is)
{
    return std::to_string(std::count_if(suite.cases.begin(), suite.cases.end(), is));
}

}  // namespace

bool MayBecomeJUnit(const std::string& path)
{
    std::error_code ignored;
    if (!std::filesystem::is_regular_file(path, ignored))
        return true;
    std::string begin(1024, '\0');
    begin.resize(std::size_t(std::ifstream(path, std::ios::binary).read(begin.data(), 1024).gcount()));
    return begin.empty() || begin.find("<testsuite") != std::string::npos;
}

std::string JUnitText(const std::vector<JUnitSuite>& suites)
{
    std::string text = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<testsuites>\n";
    for (const JUnitSuite& suite : suites) {
        const std::string name = Escaped(suite.name);
        text +=
            "  <testsuite name=\"" + name + "\" tests=\"" + std::to_string(suite.cases.size()) +
            "\" failures=\"" +
            CountOf(suite, [](const JUnitCase& one) { return !one.failure.empty() && !one.isError; }) +
            "\" errors=\"" + CountOf(suite, [](const JUnitCase& one) { return one.isError; }) + "\">\n";
        for (const JUnitCase& one : suite.cases) {
            text += "    <testcase classname=\"" + name + "\" name=\"" + Escaped(one.name) + "\"";
            if (one.failure.empty()) {
                text += "/>\n";
            } else {
                text += std::string(">\n      <") + (one.isError ? "error" : "failure") + " message=\"" +
                        Escaped(one.failure) + "\"/>\n    </testcase>\n";
            }
        }
        text += "  </testsuite>\n";
    }
    return text + "</testsuites>\n";
}

}  // namespace ScrivelTool
