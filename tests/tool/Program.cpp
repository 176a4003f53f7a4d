#include "tool/Program.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sys/wait.h>

namespace ScrivelTest
{

namespace
{

std::string Contents(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

}  // namespace

ToolTest::ToolTest()
{
    std::string name = testing::TempDir() + "scrivel-tool-XXXXXX";
    if (mkdtemp(name.data()) == nullptr)
        ADD_FAILURE() << "no folder at " << name;
    folder = name;
}

ToolTest::~ToolTest()
{
    std::error_code ignored;
    std::filesystem::remove_all(folder, ignored);
}

void ToolTest::Write(const std::string& name, const std::string& bytes) const
{
    std::ofstream file(folder + "/" + name, std::ios::binary);
    file << bytes;
    ASSERT_TRUE(file.good()) << name;
}

std::string ToolTest::Read(const std::string& name) const
{
    return Contents(folder + "/" + name);
}

Outcome ToolTest::Run(const std::vector<std::string>& arguments, const std::string& input) const
{
    // Beside the folder: what the program is given is only what the test put there.
    const std::string beside = folder + ".std";
    std::ofstream(beside + "in", std::ios::binary) << input;
    std::string command =
        "cd " + Quoted(folder) + " && COLUMNS=80 LC_ALL=C.UTF-8 " + Quoted(SCRIVEL_PROGRAM);
    for (const std::string& argument : arguments)
        command += " " + Quoted(argument);
    command +=
        " <" + Quoted(beside + "in") + " >" + Quoted(beside + "out") + " 2>" + Quoted(beside + "err");
    const int result = std::system(command.c_str());
    Outcome outcome{WIFEXITED(result) ? WEXITSTATUS(result) : -1, Contents(beside + "out"),
                    Contents(beside + "err")};
    for (const char* const stream : {"in", "out", "err"})
        std::filesystem::remove(beside + stream);
    return outcome;
}

ToolTest::Peak ToolTest::PeakOf(const std::string& arguments) const
{
    // A sanitizer keeps what was freed, unless it is told not to.
    const std::string command =
        "cd " + Quoted(folder) +
        " && ASAN_OPTIONS=quarantine_size_mb=1:thread_local_quarantine_size_kb=64 " +
        Quoted(SCRIVEL_PEAK) + " " + Quoted(SCRIVEL_PROGRAM) + " " + arguments + " 2>&1 >/dev/null";
    std::FILE* const output = popen(command.c_str(), "r");
    std::string errors;
    for (int c = std::getc(output); c != EOF; c = std::getc(output))
        errors += char(c);
    const int result = pclose(output);
    // The number stands in the last line.
    const std::size_t line = errors.rfind('\n', errors.size() - 2);
    const long memory =
        std::strtol(errors.c_str() + (line == std::string::npos ? 0 : line + 1), nullptr, 10);
    EXPECT_GT(memory, 0) << errors;
    return {memory, WIFEXITED(result) ? WEXITSTATUS(result) : -1};
}

std::string LogOf(const std::string& elements)
{
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<run-4242\n time=\"2026-11-21 14:03:59\"\n"
           " CADI_version=\"CADI 2.0\"\n hostname=\"lab7\"\n OS=\"Linux\">\n" +
           elements + "</run-4242>\n";
}

}  // namespace ScrivelTest
