// The floor of the benchmarks: what a call costs when its bytes are there already.

#include "Contender.h"
#include "File.h"

#include "ScrivelXmlGen.h"

#include "judge/LogJudge.h"

namespace ScrivelBench
{
namespace
{

/// The bytes of one call, rendered beforehand, one pwrite per flush, nothing else.
class Floor : public Contender
{
public:
    explicit Floor(const Workload& workload) : text(Render(workload)) {}

    void LogCall() override
    {
        file.Write(text.entered, text.enteredClosing);
        file.Write(text.returned, text.returnedClosing);
    }

private:
    /// What each of the two flushes writes, its closing text included.
    struct Text
    {
        std::string entered;
        std::size_t enteredClosing;
        std::string returned;
        std::size_t returnedClosing;
    };

    /// Taken from what the library writes.
    static Text Render(Workload workload)
    {
        Scrivel2::Scrivel2XmlGenRun log(logName);
        Text text;
        const auto written = [&](std::size_t from) {
            return ScrivelTest::FileBytes(LogFileName()).substr(from);
        };
        const auto place = [&] { return static_cast<std::size_t>(log.GetLastFilePointerPosition()); };

        log.StartLogging();
        const std::size_t start = place();
        const unsigned int call = log.EnterCadiCall(workload.callName);
        WriteArguments(log, workload);
        log.FlushOutput(false, workload.callName);
        const std::size_t inside = place();
        text.entered = written(start);
        text.enteredClosing = text.entered.size() - (inside - start);
        log.WriteContinueFunction(call, workload.callName);
        WriteResults(log, workload);
        log.WriteIdent(workload.callName, false, true);
        log.FlushOutput(true, "");
        text.returned = written(inside);
        text.returnedClosing = text.returned.size() - (place() - inside);
        return text;
    }

    Text text;
    FloorFile file;
};

}  // namespace

std::unique_ptr<Contender> MakeFloor(const Workload& workload)
{
    return std::make_unique<Floor>(workload);
}

}  // namespace ScrivelBench
