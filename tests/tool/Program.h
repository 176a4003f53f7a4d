// Runs the program scrivel as a person does, but for the terminal: what it prints and how it ends.

#ifndef SCRIVEL_TESTS_TOOL_PROGRAM_H
#define SCRIVEL_TESTS_TOOL_PROGRAM_H

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "support/Shell.h"

namespace ScrivelTest
{

/// Whether no sanitizer has a share in the memory of the program.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool memoryIsOurOwn = false;
#elif defined(__has_feature)
constexpr bool memoryIsOurOwn = !__has_feature(address_sanitizer) && !__has_feature(thread_sanitizer);
#else
constexpr bool memoryIsOurOwn = true;
#endif

struct Outcome
{
    int status;
    std::string out;
    std::string error;
};

/// A test whose logs stand in a folder of their own, which is also where the program runs: what it
/// prints bears short names of files.
class ToolTest : public testing::Test
{
protected:
    ToolTest();
    ~ToolTest() override;

    /// Writes a file into the folder.
    void Write(const std::string& name, const std::string& bytes) const;
    std::string Read(const std::string& name) const;
    Outcome Run(const std::vector<std::string>& arguments, const std::string& input = "") const;
    /// The most memory that the program had, in KiB, with arguments as a shell takes them; its status.
    struct Peak
    {
        long memory;
        int status;
    };
    Peak PeakOf(const std::string& arguments) const;
    const std::string& Folder() const { return folder; }

private:
    std::string folder;
};

/// A document around elements of calls: run-4242, written on lab7.
std::string LogOf(const std::string& elements);

}  // namespace ScrivelTest

#endif
