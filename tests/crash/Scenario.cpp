// Logs that are rebuilt from their writes by the programs of cuts and of dead machines.

#include "crash/Scenario.h"

#include "crash/LogReader.h"

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <stdexcept>

namespace ScrivelTest
{
namespace
{

constexpr std::size_t pageSize = 4096;

struct Sizes
{
    std::size_t least;
    std::size_t most;
    unsigned int calls;
};

const Sizes& SizesOf(unsigned int number)
{
    static constexpr Sizes sizes[] = {
        {100, 100'000, 20},     // everything
        {100, 2'000, 100},      // mostly within a page
        {3'000, 5'000, 80},     // about a page
        {20'000, 100'000, 6},   // many pages
        {100'000, 240'000, 2},  // up to 60
        {8'000, 30'000, 12},    // some
    };
    return sizes[number % std::size(sizes)];
}

std::string NameOf(unsigned int number, bool hostile, bool withComment)
{
    const std::string name = withComment ? "tr--ace" : "trace";
    constexpr std::size_t longest = 245;  // of a root name of 250 bytes
    return name + std::string(hostile ? std::min<std::size_t>(longest - name.size(), number % 9 * 30)
                                      : number % 9 * 9,
                              'x');
}

/// Ends a call so that the root end tag begins so many bytes before the end of a page.
void EndCallBeforePageEnd(WatchedGenerator& log, const char* call, std::size_t before)
{
    const std::string frame = "        <filler></filler>\n    </" + std::string(call) + ">\n";
    const std::size_t end = log.Position() + frame.size() + before;
    log.WriteString("filler", std::string((pageSize - end % pageSize) % pageSize, 'f'));
    log.WriteIdent(call, false, true);
}

}  // namespace

Scenario::Scenario(unsigned int number, Scrivel2::Durability wanted)
    : durability(wanted), layered(number % 5 == 4), hostile(number % 5 == 3),
      namedWithComment(hostile && number % 2 == 1), inPieces(number % 2 == 1),
      logName(NameOf(number, hostile, namedWithComment)), calls(SizesOf(number).calls),
      load(number, SizesOf(number).least, SizesOf(number).most),
      session(logName, load, calls, Writer::Generator, wanted)
{
}

std::vector<FileChange> Scenario::Record()
{
    Progress progress{};
    FileChanges record([&] { return progress.done.load(); });
    Log(progress);
    std::string replayed;
    for (const FileChange& change : record.changes) {
        Apply(change, replayed);
    }
    const bool isWhole = FileBytes(session.FileName()) == replayed;
    std::filesystem::remove(session.FileName());
    if (!isWhole) {
        throw std::logic_error(logName + ": the record of the writes is not complete");
    }
    return record.changes;
}

bool Scenario::IsKept(const std::string& file, unsigned int flushesDone) const
{
    unsigned int whole = 0;
    const LogContents contents = ReadLog(file, [&](const CallElement& call) {
        if (call.number == whole + 1 && call.contents == load.Contents(call.number)) {
            whole = call.number;
        }
    });
    return contents.accepted && whole + 1 >= flushesDone;
}

void Scenario::Log(Progress& progress)
{
    if (layered) {
        LogThroughLayer(progress);
    } else if (hostile) {
        LogRawElements(progress);
    } else {
        session.Run(progress, {}, inPieces ? 3 * pageSize : 0);
    }
}

void Scenario::LogRawElements(Progress& progress)
{
    static constexpr const char* raw[] = {"<!-- a?>b -->", "<!-- <?x -->", "?",
                                          "<?y ?>",        "--",           "<!-- ]]> -->"};
    Progress flushes{};
    WatchedGenerator log(logName.c_str(), flushes);
    log.SetDurability(durability);
    log.StartLogging();
    progress.done = 1;
    for (unsigned int i = 0; i < calls; ++i) {
        log.SetPendingElement("before", raw[i % (std::size(raw) - (namedWithComment ? 1 : 0))]);
        load.WriteContents(log, log.EnterCadiCall("CADIMemRead"));
        EndCallBeforePageEnd(log, "CADIMemRead", i % 30);
        log.FlushOutput(true, "");
        if (i % 3 == 0) {
            log.SeekFilePointerPosition();
            log.FlushOutput(true, "");  // once more
        }
        progress.done = i + 2;
    }
    log.EndLogging();
}

void Scenario::LogThroughLayer(Progress& progress)
{
    Scrivel2::LogOptions options;
    options.durability = durability;
    Scrivel2::RunLog log(logName, options);
    progress.done = 1;
    for (unsigned int i = 0; i < calls; ++i) {
        LogCall(log, progress, i % 2);
    }
}

/// Logs a call that so many others interrupt, each within the one before.
void Scenario::LogCall(Scrivel2::RunLog& log, Progress& progress, unsigned int interruptions)
{
    Scrivel2::LoggedCall call(log, "CADIExecContinue");
    call.Arguments([&](auto& xml) { load.WriteContents(xml, call.Number()); });
    progress.done = call.Number() + 1;
    if (interruptions > 0) {
        LogCall(log, progress, interruptions - 1);
    }
    call.Results([](auto& xml) { xml.WriteReturnType("return", eslapi::CADI_STATUS_OK); });
}

}  // namespace ScrivelTest
