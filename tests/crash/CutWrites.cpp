// Rebuilds what a kill leaves at each place where one can fall: between two system calls, and inside a
// write at each page boundary, the only places where the kernel stops one.
//
//     crash_cut_writes --count 40
//
// Each scenario logs some 300 kB with sizes of calls, and a length of the root end tag, of its own. Its
// writes are recorded and replayed into memory.
//
// Fails when a state between two writes is rejected by libxml2 or lacks a flushed call, when more than 1
// of 100 cuts inside a write are, and when one of those is not the replacing of the old root end tag and
// the opening of an instruction, lying across the boundary.

#include "crash/LogReader.h"
#include "crash/Options.h"
#include "crash/Scratch.h"
#include "crash/Session.h"

#include "support/Platform.h"

#include <cstdio>
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

std::vector<Step> Record(Session& session)
{
    std::vector<Step> steps;
    Progress progress{};
    platform.pwrite.Use([&](int file, const void* bytes, std::size_t size, off_t offset) {
        steps.push_back({true, static_cast<std::size_t>(offset),
                         std::string(static_cast<const char*>(bytes), size), progress.done});
        return platform.pwrite.Real(file, bytes, size, offset);
    });
    platform.ftruncate.Use([&](int file, off_t size) {
        steps.push_back({false, static_cast<std::size_t>(size), {}, progress.done});
        return platform.ftruncate.Real(file, size);
    });
    session.Run(progress);
    platform.pwrite.Reset();
    platform.ftruncate.Reset();
    return steps;
}

class Scenario
{
public:
    explicit Scenario(unsigned int number)
        : logName("trace" + std::string(number % 7 * 9, 'x')),
          session(logName, LoadOf(number), CallsOf(number))
    {
    }

    struct Figures
    {
        unsigned int between = 0;
        unsigned int betweenLost = 0;
        unsigned int inside = 0;
        unsigned int insideLost = 0;
        unsigned int unexplained = 0;  ///< of insideLost
    };

    void Try(Figures& figures, Scratch& scratch)
    {
        const std::vector<Step> steps = Record(session);
        if (FileBytes(session.FileName()) != Replayed(steps)) {
            std::fprintf(stderr, "%s: the record of the writes is not complete\n", logName.c_str());
            ++figures.betweenLost;
        }
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
            {100, 2'000, 300},     // mostly within a page
            {3'000, 5'000, 80},    // about a page
            {20'000, 100'000, 6},  // many pages
        };
        return sizes[number % std::size(sizes)];
    }

    static Load LoadOf(unsigned int number)
    {
        return {number, SizesOf(number).least, SizesOf(number).most};
    }

    static unsigned int CallsOf(unsigned int number) { return SizesOf(number).calls; }

    static std::string Replayed(const std::vector<Step>& steps)
    {
        std::string file;
        for (const Step& step : steps) {
            Apply(step, step.bytes.size(), file);
        }
        return file;
    }

    /// Whether a kill that leaves this file loses nothing that had been flushed before the step.
    bool IsKept(const std::string& file, const Step& step) const
    {
        const LogContents contents = ReadLog(file, &session.Calls());
        return contents.accepted && contents.calls + 1 >= step.flushesDone;
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
            if (!ReplacesTail(step, file)) {
                ++figures.unexplained;
                scratch.Keep(cut, logName + ": cut inside a write that doesn't replace the tail");
            }
        }
    }

    /// Whether a write covers the root end tag and at most the opening of an instruction behind it, which
    /// may stand a few newlines further on.
    bool ReplacesTail(const Step& step, const std::string& file) const
    {
        constexpr std::size_t mostBehind = 9;
        const std::string tail = "</" + logName + "-4242>\n";
        return file.compare(step.offset, tail.size(), tail) == 0 &&
               step.bytes.size() <= tail.size() + mostBehind;
    }

    std::string logName;
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
                "%u cuts at page boundaries inside a write, %u rejected, %u of them not a tail across "
                "two pages\n",
                count, figures.between, figures.betweenLost, figures.inside, figures.insideLost,
                figures.unexplained);
    const bool few = figures.insideLost * 100 <= figures.inside;
    return figures.inside > 0 && figures.betweenLost == 0 && figures.unexplained == 0 && few ? 0 : 1;
}
