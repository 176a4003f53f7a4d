// Files, compressed ones and folders.

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <sys/stat.h>
#include <thread>

#include <gtest/gtest.h>

#include "scrivel/LogFile.h"
#include "scrivel/LogInput.h"
#include "support/Shell.h"

using namespace ScrivelReader;
using ScrivelTest::Quoted;

namespace
{

class LogInputs : public testing::Test
{
protected:
    LogInputs()
    {
        std::string name = testing::TempDir() + "scrivel-input-XXXXXX";
        EXPECT_NE(mkdtemp(name.data()), nullptr);
        folder = name;
    }
    ~LogInputs() override { std::filesystem::remove_all(folder); }

    std::string Path(const std::string& name) const { return folder + "/" + name; }

    std::string Write(const std::string& name, const std::string& bytes) const
    {
        std::ofstream(Path(name), std::ios::binary) << bytes;
        return Path(name);
    }

    /// Everything that is read, and then the error if there is one.
    static std::string Everything(LogInput& input)
    {
        std::string bytes;
        char buffer[1000];
        while (const auto got = input.Read(buffer, sizeof buffer)) {
            if (*got == 0)
                return bytes;
            bytes.append(buffer, *got);
        }
        return bytes + " error: " + input.Error();
    }

    static std::string Everything(const std::string& path)
    {
        std::string error;
        const auto input = OpenLog(path, error);
        return input == nullptr ? "error: " + error : Everything(*input);
    }

    bool Compress(const std::string& command) const
    {
        return std::system(("cd " + Quoted(folder) + " && " + command + " 2>/dev/null").c_str()) == 0;
    }

    std::string folder;
};

std::string LongText()
{
    std::string text;
    for (int i = 0; i < 50000; ++i)
        text += std::to_string(i) + "\n";
    return text;
}

TEST_F(LogInputs, AreFilesAsTheyAre)
{
    EXPECT_EQ(Everything(Write("a.xml", LongText())), LongText());
    EXPECT_EQ(Everything(Write("b.xml", "")), "");
    EXPECT_EQ(Everything(Write("c.xml", "<a")), "<a");
}

TEST_F(LogInputs, AreCompressedFilesWhateverTheirNames)
{
    Write("a.xml", LongText());
    ASSERT_TRUE(
        Compress("gzip -c a.xml >b.xml && cat b.xml b.xml >twice.xml && head -c 1000 b.xml >cut.xml"));
    EXPECT_EQ(Everything(Path("b.xml")), LongText());
    EXPECT_EQ(Everything(Path("twice.xml")), LongText() + LongText());
    const std::string cut = Everything(Path("cut.xml"));
    EXPECT_EQ(cut.substr(cut.find(" error")), " error: the compressed data end too early");
    std::string damaged = "\x1f\x8b\x08";
    EXPECT_EQ(Everything(Write("damaged.xml", damaged + std::string(100, '\xff'))),
              " error: the compressed data are damaged");
}

/// What of a text is read until it can't be read on for that reason.
std::size_t SizeUntil(const std::string& why, LogInput& input)
{
    std::vector<char> buffer(1024 * 1024);
    std::string bytes;
    while (const auto got = input.Read(buffer.data(), buffer.size())) {
        if (*got == 0)
            break;
        bytes.append(buffer.data(), *got);
    }
    EXPECT_TRUE(input.IsCutOff());
    EXPECT_EQ(input.Error(), why);
    const std::string text = LongText();
    return std::size_t(std::mismatch(bytes.begin(), bytes.end(), text.begin(), text.end()).first -
                       bytes.begin());
}

TEST_F(LogInputs, AreReadUpToWhereTheCompressedDataAreDamaged)
{
    Write("a.xml", LongText());
    for (const std::string program : {"gzip", "zstd"}) {
        if (!Compress(program + " -q -c a.xml >b"))
            continue;
        std::ifstream file(Path("b"), std::ios::binary);
        std::string bytes{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
        const std::size_t damagedAt = bytes.size() - bytes.size() / 4;
        Write("early", bytes.substr(0, damagedAt));
        bytes[damagedAt] = char(~bytes[damagedAt]);
        Write("damaged", bytes);
        for (const auto open : {&OpenLog, &OpenLogAnywhere}) {
            std::string error;
            const auto early = open(Path("early"), error);
            ASSERT_NE(early, nullptr) << program << " " << error;
            const std::size_t size = SizeUntil("the compressed data end too early", *early);
            EXPECT_GT(size, LongText().size() / 3) << program;
            const auto damaged = open(Path("damaged"), error);
            ASSERT_NE(damaged, nullptr) << program << " " << error;
            constexpr std::size_t around = 1000;
            EXPECT_GT(SizeUntil("the compressed data are damaged", *damaged) + around, size) << program;
        }
    }
}

TEST_F(LogInputs, AreFilesCompressedByZstd)
{
    Write("a.xml", LongText());
    if (!Compress("zstd -q a.xml -o b.xml && cat b.xml b.xml >twice.xml && head -c 1000 b.xml >cut.xml"))
        GTEST_SKIP() << "there is no program zstd";
    EXPECT_EQ(Everything(Path("b.xml")), LongText());
    EXPECT_EQ(Everything(Path("twice.xml")), LongText() + LongText());
    EXPECT_NE(Everything(Path("cut.xml")).find(" error: the compressed data end too early"),
              std::string::npos);
}

TEST_F(LogInputs, AreReadAnywhereWhenTheyAreCompressed)
{
    Write("a.xml", LongText());
    ASSERT_TRUE(Compress("gzip a.xml"));
    std::string error;
    const auto input = OpenLogAnywhere(Path("a.xml.gz"), error);
    ASSERT_NE(input, nullptr) << error;
    EXPECT_TRUE(input->Descriptor());
    EXPECT_EQ(input->Size(), LongText().size());
    EXPECT_EQ(Everything(*input), LongText());
}

TEST_F(LogInputs, AreFifos)
{
    ASSERT_EQ(mkfifo(Path("fifo").c_str(), 0600), 0);
    std::thread writer([&] { std::ofstream(Path("fifo")) << "<a/>"; });
    EXPECT_EQ(Everything(Path("fifo")), "<a/>");
    writer.join();
}

TEST_F(LogInputs, SayWhyTheyCantBeRead)
{
    EXPECT_EQ(Everything(Path("none.xml")), "error: No such file or directory");
    EXPECT_EQ(Everything(folder), "error: Is a directory");
}

TEST_F(LogInputs, AreTheLogsInAFolderAndBelow)
{
    std::filesystem::create_directory(Path("sub"));
    std::filesystem::create_directory(Path("folder.xml"));
    for (const char* const name : {"b.xml", "a.xml.gz", "sub/c.xml.zst", "notes.txt", "x.xmlx", ".xml"})
        Write(name, "");
    std::string error;
    const auto found = LogsAt(folder, error);
    ASSERT_TRUE(found);
    EXPECT_EQ(*found, (std::vector<std::string>{Path("a.xml.gz"), Path("b.xml"), Path("sub/c.xml.zst")}));
    EXPECT_EQ(LogsAt("-", error), std::vector<std::string>{"-"});
    EXPECT_EQ(LogsAt(Path("notes.txt"), error), std::vector<std::string>{Path("notes.txt")});
}

/// Where a call begins in a log that is written into a file first.
class LogFiles : public LogInputs
{
protected:
    std::optional<std::uint64_t> Find(const std::string& log, std::uint64_t number) const
    {
        std::string error;
        const auto input = OpenLog(Write("run.xml", log), error);
        return FindCall(*input->Descriptor(), log.size(), number);
    }
};

TEST_F(LogFiles, AreSearchedByBisection)
{
    std::string log = "<run-1>\n";
    std::vector<std::uint64_t> begins;
    for (int number = 1; number <= 3000; ++number) {
        begins.push_back(log.size() + 4);
        log += "    <A call_num=\"" + std::to_string(number) + "\"\n     call_time=\"0.0 s\">" +
               std::string(std::size_t(number % 97), ' ') + "</A>\n";
        if (number % 3 == 0)
            log += "    <A call_num=\"" + std::to_string(number / 3) + "\">\n    </A>\n";
    }
    log += "</run-1>\n";
    std::string error;
    const auto input = OpenLog(Write("run.xml", log), error);
    for (std::uint64_t number = 1; number <= 3000; ++number)
        ASSERT_EQ(FindCall(*input->Descriptor(), log.size(), number), begins[std::size_t(number - 1)]);
    EXPECT_EQ(FindCall(*input->Descriptor(), log.size(), 3001), std::nullopt);
    EXPECT_EQ(FindCall(*input->Descriptor(), log.size(), 0), begins[0]);
}

TEST_F(LogFiles, OfAnotherLayoutAreNotSearched)
{
    EXPECT_EQ(Find("<r><A call_num='1' call_time='0.0 s'/></r>", 1), std::nullopt);
    EXPECT_EQ(Find("", 1), std::nullopt);
}

}  // namespace
