// An endless session, as fast as it can be logged. Used by FollowedLogs.cpp.

#include "crash/FollowedWriter.h"

#include "LoggedCall.h"

#include "crash/Load.h"

#include <random>

namespace ScrivelTest
{

namespace
{

constexpr std::size_t least = 100;
constexpr std::size_t most = 20000;
constexpr unsigned int oneIn = 5;

}  // namespace

void LogForEver(std::uint64_t seed)
{
    using Guard = Scrivel2::LoggedCall<Scrivel2::Scrivel2XmlGenRun>;
    Scrivel2::RunLog log("run");
    Load load(seed, least, most);
    std::minstd_rand random{unsigned(seed)};
    for (;;) {
        Guard call(log, "CADIMemRead");
        call.Arguments([&](auto& xml) { load.WriteContents(xml, unsigned(call.Number())); });
        if (random() % oneIn == 0) {
            Guard callback(log, "modeChange");
            callback.Arguments([&](auto& xml) { load.WriteContents(xml, unsigned(callback.Number())); });
        }
        call.Results([&](auto& xml) {
            load.WriteContents(xml, unsigned(call.Number()) + 1);
            xml.WriteReturnType("return", eslapi::CADI_STATUS_OK);
        });
    }
}

}  // namespace ScrivelTest
