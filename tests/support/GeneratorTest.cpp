// The folder, the clock and the process that every test of a generator runs with.

#include "support/GeneratorTest.h"

#include "support/Memory.h"

#include <cstring>
#include <stdexcept>

#include <stdlib.h>

namespace ScrivelTest
{

namespace fs = std::filesystem;

ScratchTest::ScratchTest() : startFolder(fs::current_path())
{
    std::string name = testing::TempDir() + "scrivel-XXXXXX";
    if (mkdtemp(name.data()) == nullptr) {
        throw std::runtime_error("no scratch folder " + name);
    }
    scratch = name;
    fs::current_path(scratch);

    platform.Reset();
    platform.getpid.Use([] { return 4242; });
    platform.pthread_self.Use([]() -> pthread_t { return 1234; });
    SetClock(1000, 0);
    platform.gettimeofday.Use([](timeval* moment, void*) {
        *moment = now;
        return 0;
    });
    platform.time.Use([](std::time_t* moment) -> std::time_t {
        constexpr std::time_t fixed = 1795269839;
        if (moment != nullptr) {
            *moment = fixed;
        }
        return fixed;
    });
    // The fixed moment is meant in the zone of the test, wherever that runs.
    platform.localtime.Use([](const std::time_t* moment) { return std::gmtime(moment); });
    platform.localtime_r.Use(
        [](const std::time_t* moment, std::tm* local) { return gmtime_r(moment, local); });
    platform.gethostname.Use([](char* host, std::size_t) {
        std::strcpy(host, "lab7");
        return 0;
    });
}

ScratchTest::~ScratchTest()
{
    refuseMemory = nullptr;
    platform.Reset();
    fs::current_path(startFolder);
    fs::remove_all(scratch);
}

timeval ScratchTest::now;

void ScratchTest::SetClock(long seconds, long microseconds)
{
    now = {seconds, microseconds};
}

std::string ScratchTest::Header(const std::string& name, const std::string& version)
{
    // clang-format off
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
           "<" + name + "-4242\n"
           " time=\"2026-11-21 14:03:59\"\n"
           " CADI_version=\"" + version + "\"\n"
           " hostname=\"lab7\"\n"
           " OS=\"Linux\">\n";
    // clang-format on
}

std::string ScratchTest::StartTag(const std::string& callName, unsigned int number,
                                  const std::string& time)
{
    // clang-format off
    return "    <" + callName + " call_num=\"" + std::to_string(number) + "\"\n"
           "     call_time=\"" + time + " s\"\n"
           "     threadId=\"1234\">";
    // clang-format on
}

std::string ScratchTest::FileText(const std::string& fileName)
{
    EXPECT_TRUE(fs::exists(fileName)) << "no file " << fileName;
    return FileBytes(fileName);
}

}  // namespace ScrivelTest
