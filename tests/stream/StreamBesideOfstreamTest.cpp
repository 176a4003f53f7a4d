// Random output to a LogStream and to a std::ofstream, which leave the same bytes.

#include "stream/StreamTest.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iomanip>
#include <random>
#include <string>

namespace
{

namespace fs = std::filesystem;

/// Random writes, seeks and flushes on a LogStream and on a std::ofstream.
class StreamBesideOfstream : public ScrivelTest::StreamTest
{
protected:
    unsigned int Below(unsigned int limit)
    {
        return std::uniform_int_distribution<unsigned int>(0, limit - 1)(random);
    }

    std::string Text()
    {
        static constexpr unsigned int lengths[] = {1, 8, 60, 300, 4096, 5000, 20000};
        std::string text(Below(lengths[Below(std::size(lengths))]) + 1, '\0');
        for (char& c : text) {
            c = static_cast<char>(Below(256));
        }
        return text;
    }

    std::mt19937 random;
};

TEST_F(StreamBesideOfstream, LeaveTheSameBytesAfterEveryFlush)
{
    const char* const firstSeed = std::getenv("SCRIVEL_WALK_SEED");
    const unsigned long first = firstSeed == nullptr ? 1 : std::strtoul(firstSeed, nullptr, 10);
    for (unsigned long seed = first; seed < first + 150; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        random.seed(static_cast<std::mt19937::result_type>(seed));
        std::ofstream reference;
        const unsigned int steps = 1 + Below(120);
        for (unsigned int i = 0; i < steps; ++i) {
            if (!log.is_open()) {
                log.open("log");
                reference.open("reference", std::ios_base::binary);
            }
            const auto both = [&](const auto& step) {
                step(static_cast<std::ostream&>(log));
                step(static_cast<std::ostream&>(reference));
            };
            const auto end = static_cast<unsigned int>(std::max<std::streamoff>(
                {fs::exists("reference") ? static_cast<std::streamoff>(fs::file_size("reference")) : 0,
                 static_cast<std::streamoff>(reference.tellp()), 1}));
            const unsigned int operation = Below(12);
            SCOPED_TRACE("step " + std::to_string(i) + ", operation " + std::to_string(operation));
            switch (operation) {
            case 0:
            case 1:
            case 2: {
                const std::string text = Text();
                both([&](std::ostream& stream) { stream << text; });
                break;
            }
            case 3: {
                const std::string text = Text();
                log.Append(text);
                reference << text;
                break;
            }
            case 4: {
                const unsigned int number = Below(100000);
                both([&](std::ostream& stream) { stream << number << ' ' << std::setw(9) << number; });
                break;
            }
            case 5:
                both([](std::ostream& stream) { stream.put('c'); });
                break;
            case 6: {
                const std::streamoff place = Below(end + (Below(4) == 0 ? 9000 : 1));
                both([&](std::ostream& stream) { stream.seekp(place); });
                break;
            }
            case 7: {
                const auto distance = static_cast<std::streamoff>(Below(600)) - 300;
                both([&](std::ostream& stream) { stream.seekp(distance, std::ios_base::cur); });
                break;
            }
            case 8: {
                const auto distance = static_cast<std::streamoff>(Below(600)) - 500;
                both([&](std::ostream& stream) { stream.seekp(distance, std::ios_base::end); });
                break;
            }
            case 9:
                if (Below(10) == 0) {
                    log.close();
                    reference.close();
                    ASSERT_EQ(File(), FileText("reference"));
                }
                break;
            default:
                both([](std::ostream& stream) { stream.flush(); });
            }
            ASSERT_EQ(log.rdstate(), reference.rdstate());
            both([](std::ostream& stream) { stream.clear(); });
            ASSERT_EQ(log.tellp(), reference.tellp());
            if (i % 8 == 7) {
                both([](std::ostream& stream) { stream.flush(); });
                ASSERT_EQ(File(), FileText("reference"));
            }
        }
        if (log.is_open()) {
            log.close();
            reference.close();
        }
        ASSERT_EQ(File(), FileText("reference"));
    }
}

}  // namespace
