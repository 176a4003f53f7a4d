// scrivel show: one call whole. Tested by tests/tool/ShowTest.cpp.

#include <string>

#include <CLI/CLI.hpp>

#include "CallLine.h"
#include "Command.h"
#include "Json.h"
#include "LogArguments.h"

namespace ScrivelTool
{

using namespace ScrivelReader;

namespace
{

class Show final : public Action
{
public:
    explicit Show(CLI::App& options)
    {
        options.add_option("N", number, "the call's number")->required();
        logs.AddTo(options);
        logs.AddJsonTo(options);
    }

    Exit Run(Terminal& terminal) override
    {
        logs.Prepare(terminal);
        bool trouble = false;
        bool found = false;
        for (const std::string& path : logs.Logs(terminal, trouble)) {
            Finder finder(number, terminal, logs.Json());
            trouble = !ReadLog(path, finder, {}, terminal) || trouble;
            found = found || finder.Found();
        }
        return trouble ? Exit::Trouble : found ? Exit::Found : Exit::Nothing;
    }

private:
    class Finder final : public LogHandler
    {
    public:
        Finder(std::uint64_t itsNumber, Terminal& itsTerminal, bool itsJson)
            : number(itsNumber), terminal(itsTerminal), json(itsJson)
        {
        }
        void Ended(Call& call) override
        {
            if (call.number != number)
                return;
            found = true;
            terminal.Print(json ? JsonLine(ToJson(call)) : CallLine(call, terminal));
        }
        bool Found() const { return found; }

    private:
        std::uint64_t number;
        Terminal& terminal;
        bool json;
        bool found = false;
    };

    std::uint64_t number = 0;
    LogArguments logs;
};

}  // namespace

std::unique_ptr<Action> MakeShow(CLI::App& options)
{
    return std::make_unique<Show>(options);
}

}  // namespace ScrivelTool
