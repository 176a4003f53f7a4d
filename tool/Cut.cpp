// scrivel cut: a small log of the calls that the filter leaves. Tested by tests/tool/CutTest.cpp.

#include <string>

#include "Command.h"
#include "CopyArguments.h"
#include "KnownText.h"

namespace ScrivelTool
{

using namespace ScrivelReader;

namespace
{

class Cutting final : public Action
{
public:
    explicit Cutting(Options& options)
    {
        copy.AddTo(options);
        filter.AddTo(options);
    }

    Exit Run(Terminal& terminal) override
    {
        const auto chosen = filter.Make(terminal);
        if (!chosen) {
            return Exit::Trouble;
        }
        const auto copied = copy.Copy(
            [&](LogBytes& log, const CopyOutput& output, std::string& error) {
                const auto tell = [&](const Damage& damage) { TellDamage(terminal, copy.Log(), damage); };
                return Cut(log, *chosen, output, tell, error);
            },
            terminal);
        if (!copied) {
            return Exit::Trouble;
        }
        if (!copied->end.isLog) {
            terminal.Error(copy.Log(), {}, "this is no log");
            return Exit::Trouble;
        }
        if (copied->calls == 0) {
            terminal.Error(copy.Log(), {}, "the filter leaves no call; nothing was written");
            return Exit::Nothing;
        }
        terminal.Print(Printable(copy.Output()) + ": " + CountText(copied->calls, "call") + " of " +
                       std::to_string(copied->end.calls) + "\n");
        return Exit::Found;
    }

private:
    CopyArguments copy;
    FilterArguments filter;
};

}  // namespace

std::unique_ptr<Action> MakeCut(Options& options)
{
    return std::make_unique<Cutting>(options);
}

}  // namespace ScrivelTool
