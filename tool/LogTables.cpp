// Reads logs into a database. Tested by tests/tool/QueryTest.cpp.

#include "LogTables.h"

#include "LogArguments.h"
#include "scrivel/LogEnding.h"

namespace ScrivelTool
{

using namespace ScrivelReader;

namespace
{

class OneLog final : public LogHandler
{
public:
    OneLog(Database& itsDatabase, const CallFilter& itsFilter, Terminal& itsTerminal,
           const std::string& itsPath)
        : database(itsDatabase), chosen(itsFilter), terminal(itsTerminal), path(itsPath)
    {
        database.BeginLog(path);
    }

    void Header(const LogHeader& itsHeader) override { header = itsHeader; }
    void Ended(Call& call) override
    {
        if (!call.parts.empty())
            contentEnd = std::max(contentEnd, call.parts.back().end);
        if (chosen.Matches(call))
            database.Add(call);
    }
    void Damaged(const Damage& damage) override { TellDamage(terminal, path, damage); }

    void End(const LogEnd& end) { database.EndLog(header, end, EndingOf(end, contentEnd).ended); }

private:
    Database& database;
    const CallFilter& chosen;
    Terminal& terminal;
    const std::string& path;
    LogHeader header;
    std::uint64_t contentEnd = 0;
};

}  // namespace

std::size_t FillTables(Database& database, const std::vector<std::string>& paths,
                       const CallFilter& chosen, Terminal& terminal, bool& trouble)
{
    std::size_t read = 0;
    for (const std::string& path : paths) {
        OneLog log(database, chosen, terminal, path);
        ReadOptions options;
        options.contents = chosen.NeedsContents() || database.NeedsValues();
        const auto end = ReadLog(path, log, options, terminal);
        trouble = trouble || !end;
        if (end) {
            log.End(*end);
            ++read;
        }
    }
    if (!database.Error().empty()) {
        terminal.Error(database.Error());
        trouble = true;
    }
    return read;
}

}  // namespace ScrivelTool
