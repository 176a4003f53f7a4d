// The choices of a program and those of its environment. Tested by tests/layer/LogFilesTest.cpp,
// CallPatternsTest.cpp, NumberedFilesTest.cpp and DurabilityTest.cpp.

#include "scrivel/LogOptions.h"

#include <charconv>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <limits>
#include <optional>
#include <system_error>

#include <unistd.h>

namespace Scrivel2::Layer
{
namespace
{

/// Empty when there is no such variable, and in a program that runs with other rights than its user's.
std::string Environment(const char* variable)
{
    const bool ownRights = getuid() == geteuid() && getgid() == getegid();
    const char* const value = ownRights ? std::getenv(variable) : nullptr;
    return value == nullptr ? "" : value;
}

bool IsOn(bool chosen)
{
    const std::string said = Environment("SCRIVEL_LOG");
    if (said == "on" || said == "off") {
        return said == "on";
    }
    if (!said.empty()) {
        std::cerr << "Scrivel: SCRIVEL_LOG is neither \"on\" nor \"off\": \"" << said << "\"."
                  << std::endl;
    }
    return chosen;
}

std::string ChosenCalls(const std::string& chosen)
{
    const std::string said = Environment("SCRIVEL_LOG_CALLS");
    return said.empty() ? chosen : said;
}

/// The number with K, M or G after it; nothing when the text is another.
std::optional<std::uint64_t> Size(std::string_view text)
{
    std::uint64_t size = 0;
    const char* const end = text.data() + text.size();
    const auto [last, error] = std::from_chars(text.data(), end, size);
    if (error != std::errc() || end - last > 1) {
        return std::nullopt;
    }
    static constexpr std::string_view units = "KMG";
    const std::size_t unit = last == end ? 0 : units.find(*last) + 1;
    if (last != end && unit == 0) {
        return std::nullopt;
    }
    const std::size_t bits = 10 * unit;
    if (size > std::numeric_limits<std::uint64_t>::max() >> bits) {
        return std::nullopt;
    }
    return size << bits;
}

std::uint64_t ChosenSize(std::uint64_t chosen)
{
    const std::string said = Environment("SCRIVEL_LOG_SIZE");
    if (said.empty()) {
        return chosen;
    }
    const auto size = Size(said);
    if (!size) {
        std::cerr << "Scrivel: SCRIVEL_LOG_SIZE is not a number of bytes, or one with K, M or G: \""
                  << said << "\"." << std::endl;
    }
    return size.value_or(chosen);
}

Durability ChosenDurability(Durability chosen)
{
    const std::string said = Environment("SCRIVEL_LOG_DURABILITY");
    if (said == "process") {
        return Durability::Process;
    }
    if (said == "machine") {
        return Durability::Machine;
    }
    if (!said.empty()) {
        std::cerr << "Scrivel: SCRIVEL_LOG_DURABILITY is neither \"process\" nor \"machine\": \"" << said
                  << "\"." << std::endl;
    }
    return chosen;
}

}  // namespace

Settings::Settings(std::string_view logName, const LogOptions& options)
    : on(IsOn(options.on)), calls(ChosenCalls(options.calls)), fileSize(ChosenSize(options.fileSize)),
      durability(ChosenDurability(options.durability))
{
    const std::filesystem::path given(logName);
    name = given.filename().string();
    folder = Environment("SCRIVEL_LOG_DIR");
    if (folder.empty()) {
        std::filesystem::path chosen(options.folder);
        if (given.has_parent_path()) {
            chosen /= given.parent_path();
        }
        folder = chosen.string();
    }
}

}  // namespace Scrivel2::Layer
