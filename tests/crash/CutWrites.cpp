// Rebuilds what a kill leaves at each place where one can fall: between two system calls, and inside a
// write at each page boundary, the only places where the kernel stops one.
//
//     crash_cut_writes --count 40
//
// Each scenario logs up to some 300 kB with sizes of calls, and a length of the root end tag, of its own;
// one in five logs through the logging layer, where calls interrupt each other, and one in five with a
// name and raw elements that hold what ends comments and instructions; of the others one in two lets its
// flushes come in pieces. Its writes are recorded and replayed into memory.
//
// Fails when a state between two writes, or a cut inside one, is rejected by libxml2 or lacks a flushed
// call.

#include "LoggedCall.h"

#include "crash/LogReader.h"
#include "crash/Options.h"
#include "crash/Scratch.h"
#include "crash/Session.h"

#include "support/Platform.h"

#include <cstdio>
#include <filesystem>
#include <iterator>
#include <string>
#include <vector>

using namespace ScrivelTest;

namespace
{

struct Step
{
    bool write;  ///< otherwise a cut of the file
    std::size_t offset;
    std::string bytes;
    unsigned int flushesDone;
};

void Apply(const Step& step, std::size_t length, std::string& file)
{
    if (!step.write) {
        file.resize(step.offset);
        return;
    }
    if (file.size() < step.offset + length) {
        file.resize(step.offset + length);
    }
    file.replace(step.offset, length, step.bytes, 0, length);
}

/// What `log` writes.
template <typename Log>
std::vector<Step> Record(Log log)
{
    std::vector<Step> steps;
    Progress progress{};
    const auto writes =
        platform.pwrite.Use([&](int file, const void* bytes, std::size_t size, off_t offset) {
            steps.push_back({true, static_cast<std::size_t>(offset),
                             std::string(static_cast<const char*>(bytes), size), progress.done});
            return platform.pwrite.Real(file, bytes, size, offset);
        });
    const auto cuts = platform.ftruncate.Use([&](int file, off_t size) {
        steps.push_back({false, static_cast<std::size_t>(size), {}, progress.done});
        return platform.ftruncate.Real(file, size);
    });
    log(progress);
    return steps;
}

class Scenario
{
public:
    explicit Scenario(unsigned int number)
        : hostile(number % 5 == 3),
          logName((hostile ? "tr--ace" : "trace") + std::string(number % 9 * (hostile ? 28 : 9), 'x')),
          layered(number % 5 == 4), inPieces(number % 2 == 1), calls(SizesOf(number).calls),
          load(number, SizesOf(number).least, SizesOf(number).most), session(logName, load, calls)
    {
    }

    struct Figures
    {
        unsigned int between = 0;
        unsigned int betweenLost = 0;
        unsigned int inside = 0;
        unsigned int insideLost = 0;
    };

    void Try(Figures& figures, Scratch& scratch)
    {
        const std::vector<Step> steps = Record([this](Progress& progress) {
            if (layered) {
                LogThroughLayer(progress);
            } else if (hostile) {
                LogRawElements(progress);
            } else {
                session.Run(progress, {}, inPieces ? 3 * pageSize : 0);
            }
        });
        if (FileBytes(session.FileName()) != Replayed(steps)) {
            std::fprintf(stderr, "%s: the record of the writes is not complete\n", logName.c_str());
            ++figures.betweenLost;
        }
        std::filesystem::remove(session.FileName());
        std::string file;
        for (const Step& step : steps) {
            if (step.flushesDone > 0 && step.write) {
                CutInside(step, file, figures, scratch);
            }
            Apply(step, step.bytes.size(), file);
            ++figures.between;
            if (!IsKept(file, step)) {
                ++figures.betweenLost;
                scratch.Keep(file, logName + ": between two writes");
            }
        }
    }

private:
    static constexpr std::size_t pageSize = 4096;

    struct Sizes
    {
        std::size_t least;
        std::size_t most;
        unsigned int calls;
    };

    static const Sizes& SizesOf(unsigned int number)
    {
        static constexpr Sizes sizes[] = {
            {100, 100'000, 20},    // everything
            {100, 2'000, 100},     // mostly within a page
            {3'000, 5'000, 80},    // about a page
            {20'000, 100'000, 6},  // many pages
        };
        return sizes[number % std::size(sizes)];
    }

    static std::string Replayed(const std::vector<Step>& steps)
    {
        std::string file;
        for (const Step& step : steps) {
            Apply(step, step.bytes.size(), file);
        }
        return file;
    }

    void LogRawElements(Progress& progress)
    {
        static constexpr const char* raw[] = {"<!-- a?>b -->", "<!-- <?x -->", "<!-- ]]&gt; -->",
                                              "<?y ?>",        "--",           "?"};
        Scrivel2::Scrivel2XmlGenRun log(logName.c_str());
        log.StartLogging();
        progress.done = 1;
        for (unsigned int i = 0; i < calls; ++i) {
            log.SetPendingElement("before", raw[i % std::size(raw)]);
            load.WriteNextCall(log);
            log.FlushOutput(true, "");
            if (i % 3 == 0) {
                log.SeekFilePointerPosition();
                log.FlushOutput(true, "");  // once more
            }
            progress.done = i + 2;
        }
        log.EndLogging();
    }

    void LogThroughLayer(Progress& progress)
    {
        Scrivel2::RunLog log(logName);
        progress.done = 1;
        for (unsigned int i = 0; i < calls; ++i) {
            LogCall(log, progress, i % 2);
        }
    }

    /// Logs a call that so many others interrupt, each within the one before.
    void LogCall(Scrivel2::RunLog& log, Progress& progress, unsigned int interruptions)
    {
        Scrivel2::LoggedCall call(log, "CADIExecContinue");
        call.Arguments([&](auto& xml) { load.WriteContents(xml, call.Number()); });
        progress.done = call.Number() + 1;
        if (interruptions > 0) {
            LogCall(log, progress, interruptions - 1);
        }
        call.Results([](auto& xml) { xml.WriteReturnType("return", eslapi::CADI_STATUS_OK); });
    }

    /// Whether a kill that leaves this file loses nothing that had been flushed before the step.
    bool IsKept(const std::string& file, const Step& step) const
    {
        unsigned int whole = 0;
        const LogContents contents = ReadLog(file, [&](const CallElement& call) {
            if (call.number == whole + 1 && call.contents == load.Contents(call.number)) {
                whole = call.number;
            }
        });
        return contents.accepted && whole + 1 >= step.flushesDone;
    }

    void CutInside(const Step& step, const std::string& file, Figures& figures, Scratch& scratch)
    {
        const std::size_t end = step.offset + step.bytes.size();
        for (std::size_t boundary = (step.offset / pageSize + 1) * pageSize; boundary < end;
             boundary += pageSize) {
            std::string cut = file;
            Apply(step, boundary - step.offset, cut);
            ++figures.inside;
            if (IsKept(cut, step)) {
                continue;
            }
            ++figures.insideLost;
            std::printf("%s: cut at %zu inside the %zu bytes from %zu on\n", logName.c_str(), boundary,
                        step.bytes.size(), step.offset);
            scratch.Keep(cut, logName + ": cut inside a write");
        }
    }

    bool hostile;
    std::string logName;
    bool layered;
    bool inPieces;
    unsigned int calls;
    Load load;
    Session session;
};

}  // namespace

int main(int argc, char** argv)
{
    const Options options(argc, argv, {{"count", "8"}, {"directory", "."}});
    const unsigned int count = options.Number("count");
    Scratch scratch(options.Text("directory"));
    Scenario::Figures figures;
    for (unsigned int number = 0; number < count; ++number) {
        Scenario(number).Try(figures, scratch);
    }
    std::printf("writes of %u scenarios cut: %u states between two writes, %u rejected; "
                "%u cuts at page boundaries inside a write, %u rejected\n",
                count, figures.between, figures.betweenLost, figures.inside, figures.insideLost);
    return figures.inside > 0 && figures.betweenLost == 0 && figures.insideLost == 0 ? 0 : 1;
}
