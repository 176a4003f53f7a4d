// scrivel recover: a whole log of a damaged one. Tested by tests/tool/RecoverTest.cpp.

#include <string>

#include "Command.h"
#include "CopyArguments.h"
#include "KnownText.h"

namespace ScrivelTool
{

using namespace ScrivelReader;

namespace
{

class Recovering final : public Action
{
public:
    explicit Recovering(Options& options) { copy.AddTo(options); }

    Exit Run(Terminal& terminal) override
    {
        std::optional<Damage> first;
        const auto note = [&](const Damage& damage) {
            if (!first) {
                first = damage;
            }
        };
        const auto copied =
            copy.Copy([&](LogBytes& log, const CopyOutput& output,
                          std::string& error) { return Recover(log, output, note, error); },
                      terminal);
        if (!copied) {
            return Exit::Trouble;
        }
        const std::string name = Printable(copy.Log() == "-" ? "standard input" : copy.Log());
        if (!first) {
            terminal.Print(name + ": whole; copied as it is, with " + CountText(copied->calls, "call") +
                           "\n");
            return Exit::Found;
        }
        std::string text = name + ": " + terminal.Styled(Style::Damage, "damage") + " at byte " +
                           std::to_string(first->offset);
        if (first->call) {
            text += " in call " + std::to_string(*first->call);
        }
        text += ": " + Printable(first->what);
        if (copied->end.damages > 1) {
            text += "; and at " + CountText(copied->end.damages - 1, "other place");
        }
        terminal.Print(text + "\n  " + CountText(copied->elements, "element") + " of " +
                       CountText(copied->calls, "call") + " kept, " + CountText(copied->dropped, "byte") +
                       " dropped with a comment\n");
        return copied->calls == 0 ? Exit::Nothing : Exit::Found;
    }

private:
    CopyArguments copy;
};

}  // namespace

std::unique_ptr<Action> MakeRecover(Options& options)
{
    return std::make_unique<Recovering>(options);
}

}  // namespace ScrivelTool
