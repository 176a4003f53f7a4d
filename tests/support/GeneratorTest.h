// The fixture of tests that look at what a generator writes.
//
//     using Clocks = ScrivelTest::GeneratorTest<>;
//
//     TEST_F(Clocks, RateIsWrittenInHertz)
//     {
//         EXPECT_EQ(Written([](auto& log) { log.WriteDecimal("rate", 48000); }),
//                   "    <rate>48000</rate>\n");
//     }

#ifndef SCRIVEL_TESTS_SUPPORT_GENERATORTEST_H
#define SCRIVEL_TESTS_SUPPORT_GENERATORTEST_H

#include "ScrivelXmlGen.h"

#include "judge/LogJudge.h"
#include "support/Platform.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <string>
#include <type_traits>

namespace ScrivelTest
{

/// Runs each test in an empty folder of its own, at a fixed moment of a fixed process: the header and
/// every time stamp are the same in each run.
class ScratchTest : public testing::Test
{
protected:
    ScratchTest();
    ~ScratchTest() override;

    /// The moment that the clock shows until it is set again; at first 1000 s.
    static void SetClock(long seconds, long microseconds);
    static timeval Clock() { return now; }

    /// What a log begins with, up to its first element, and what it ends with.
    static std::string Header(const std::string& name = "trace", const std::string& version = "CADI 2.0");
    static std::string EndTag(const std::string& name = "trace") { return "</" + name + "-4242>\n"; }

    /// A whole log around the text of its calls.
    static std::string Complete(const std::string& calls) { return Header() + calls + EndTag(); }

    /// The start tag of a run-phase call at depth 1, without the newline after it.
    static std::string StartTag(const std::string& callName, unsigned int number = 1,
                                const std::string& time = "0.000000");

    /// The bytes of a file; a missing file fails the test.
    static std::string FileText(const std::string& fileName);

    /// The log of the name in Make.
    static std::string WholeFile() { return FileText("trace-4242.xml"); }

private:
    std::filesystem::path startFolder;
    std::filesystem::path scratch;
    static timeval now;
};

/// A generator whose data a test reaches as a derived generator does.
template <typename Generator>
struct Unprotected : Generator
{
    using Generator::Generator;

    using Generator::callNo;
    using Generator::callOpen;
    using Generator::depth;
    using Generator::factoryErrorNames;
    using Generator::lastFilePos;
    using Generator::logFile;
    using Generator::openCallName;
    using Generator::pendingTail;
    using Generator::writeSecure;
};

/// A generator whose elements are put down whole, as those of the library's own classes are.
template <typename Generator>
struct Keeping : Generator
{
    using Generator::Generator;

private:
    const bool keepsTags = (this->template KeepsTags<Keeping>(), true);
};

/// One that overrides nothing and does not say so: its tags go through the table.
template <typename Generator>
struct Silent : Generator
{
    using Generator::Generator;
};

/// One that overrides all that writes tags, and does what the generator does.
template <typename Generator>
struct Replacing : Generator
{
    using Generator::Generator;

    void WriteIdent(std::string name, bool openTag, bool newline) override
    {
        Generator::WriteIdent(name, openTag, newline);
    }
    void WriteIdentWithoutTabs(std::string name) override { Generator::WriteIdentWithoutTabs(name); }
    void WriteTabs(bool openTag) override { Generator::WriteTabs(openTag); }
};

template <typename Generator = Scrivel2::Scrivel2XmlGenRun>
class GeneratorTest : public ScratchTest
{
protected:
    /// A generator that hasn't started its log.
    template <typename Made = Generator>
    static std::unique_ptr<Made> Make(const char* logName = "trace")
    {
        if constexpr (std::is_constructible_v<Made, const char*, const char*>) {
            return std::make_unique<Made>(logName, "CADI 2.0");
        } else {
            return std::make_unique<Made>(logName);
        }
    }

    /// What `write` writes, starting at depth 1 inside the root element. The log is secure, the put
    /// position stands after the header, and nothing is added but the root end tag. Classes derived from
    /// the generator, with and without overrides, must write the same.
    template <typename Made = Generator, typename Write>
    static std::string Written(Write write)
    {
        const std::string text = WrittenBy<Made, Made>(write);
        EXPECT_EQ((WrittenBy<Silent<Made>, Made>(write)), text) << "by a class without overrides";
        EXPECT_EQ((WrittenBy<Replacing<Made>, Made>(write)), text) << "by a class with overrides";
        return text;
    }

private:
    template <typename Made, typename Seen, typename Write>
    static std::string WrittenBy(Write& write)
    {
        const timeval before = Clock();
        const std::unique_ptr<Seen> log = Make<Made>();
        log->StartLogging();
        log->SeekFilePointerPosition();
        write(*log);
        log->UpdateFilePointerPosition();
        log->EndLogging();
        SetClock(before.tv_sec, before.tv_usec);
        return BetweenRootTags(WholeFile());
    }

    static std::string BetweenRootTags(const std::string& file)
    {
        const std::string header = Header();
        const std::string end = EndTag();
        if (file.size() < header.size() + end.size() || file.compare(0, header.size(), header) != 0 ||
            file.compare(file.size() - end.size(), end.size(), end) != 0) {
            ADD_FAILURE() << "no header or no root end tag";
            return file;
        }
        return file.substr(header.size(), file.size() - header.size() - end.size());
    }
};

}  // namespace ScrivelTest

#endif
