// What the generator of the run phase adds to its base.

#include "runbase/RunTest.h"

#include <string>
#include <vector>

namespace
{

using namespace eslapi;
using ScrivelTest::platform;
using ScrivelTest::SampleTargetInfo;
using ScrivelTest::sampleTargetInfoText;
using ScrivelTest::XPath;

using RunGenerator = ScrivelTest::RecordTest<>;

TEST_F(RunGenerator, HeaderNamesTheVersion)
{
    Make()->StartLogging();
    EXPECT_EQ(WholeFile(), Header("trace", "CADI 2.0") + EndTag());
}

TEST_F(RunGenerator, TargetInfoHasThirteenChildren)
{
    const std::string text =
        Written([](auto& log) { log.WriteTargetInfo("target", SampleTargetInfo()); });
    EXPECT_EQ(text, Container("target", std::string(sampleTargetInfoText) +
                                            "        <canRunInBackground>true</canRunInBackground>\n"));
    EXPECT_EQ(XPath(text, "count(/target/*)"), std::vector<std::string>{"13"});
}

TEST_F(RunGenerator, HardwareModelIsANumberAndTheOtherFlagsAreWords)
{
    auto info = SampleTargetInfo();
    info.executesSoftware = false;
    info.isHardwareModel = 1;
    info.canRunInBackground = false;
    const std::string text = Written([&](auto& log) { log.WriteTargetInfo("target", info); });
    EXPECT_EQ(XPath(text, "//executesSoftware"), std::vector<std::string>{"false"});
    EXPECT_EQ(XPath(text, "//isHardwareModel"), std::vector<std::string>{"1"});
    EXPECT_EQ(XPath(text, "//canRunInBackground"), std::vector<std::string>{"false"});
}

TEST_F(RunGenerator, TargetInfoPointerIsWrittenAsItsRecord)
{
    auto info = SampleTargetInfo();
    EXPECT_EQ(Written([&](auto& log) { log.WriteTargetInfoPtrVal("target", &info); }),
              Container("target", std::string(sampleTargetInfoText) +
                                      "        <canRunInBackground>true</canRunInBackground>\n"));
}

TEST_F(RunGenerator, NullTargetInfoPointerIsANullElement)
{
    EXPECT_EQ(Written([](auto& log) { log.WriteTargetInfoPtrVal("target", nullptr); }),
              "    <target>NULL</target>\n");
}

TEST_F(RunGenerator, FloatFormatIsALineOnStandardOutputAndNothingInTheLog)
{
    std::vector<std::string> lines;
    const auto standardOutput = platform.puts.Use([&](const char* line) {
        lines.emplace_back(line);
        return 0;
    });
    EXPECT_EQ(Written([&](auto& log) {
                  lines.clear();
                  log.WriteDecimal("before", 1);
                  log.WriteRegFloatFormat("format", CADIRegFloatFormat_t{});
                  log.WriteRegFloatFormat("format", CADIRegFloatFormat_t{});
                  log.WriteDecimal("after", 2);
              }),
              "    <before>1</before>\n    <after>2</after>\n");
    EXPECT_EQ(lines, std::vector<std::string>(2, "WriteRegFloatFormat not implemented !!"));
}

TEST_F(RunGenerator, FloatFormatLineEndsInANewline)
{
    testing::internal::CaptureStdout();
    Scrivel2::Scrivel2XmlGenRun("trace").WriteRegFloatFormat("format", CADIRegFloatFormat_t{});
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "WriteRegFloatFormat not implemented !!\n");
}

}  // namespace
