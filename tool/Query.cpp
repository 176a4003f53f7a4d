// scrivel query: questions in SQL. Tested by tests/tool/QueryTest.cpp.

#include <algorithm>
#include <filesystem>
#include <memory>
#include <set>
#include <string>
#include <system_error>
#include <vector>

#include "CallLine.h"
#include "Command.h"
#include "Csv.h"
#include "Database.h"
#include "Json.h"
#include "KnownText.h"
#include "LogArguments.h"
#include "LogTables.h"
#include "Options.h"

namespace ScrivelTool
{

using namespace ScrivelReader;

namespace
{

constexpr std::size_t mostMeasured = 1000;  // rows whose widths the table's columns have
constexpr std::size_t widestColumn = 60;

/// The members of an object, which can't bear one name twice: a later column of a name gets a number, as
/// in SQLite's tables. name, name:1
std::vector<std::string> Members(std::vector<std::string> columns)
{
    std::set<std::string> taken;
    for (std::string& column : columns) {
        const std::string name = column;
        for (std::size_t number = 1; !taken.insert(column).second; ++number)
            column = name + ":" + std::to_string(number);
    }
    return columns;
}

/// JSON has no infinity.
Json NumberOrNull(const std::string& text)
{
    Json number = Json::parse(text, nullptr, false);
    return number.is_discarded() ? Json() : number;
}

class Query final : public Action
{
public:
    explicit Query(Options& options)
    {
        logs.AddTo(options);
        logs.AddJsonTo(options);
        options.Flag("--csv", csv, "the answer as comma-separated values");
        filter.AddTo(options);
    }

    Exit Run(Terminal& terminal) override
    {
        logs.Prepare(terminal);
        std::vector<std::string> paths = logs.Paths();
        if (csv && logs.Json()) {
            terminal.Error("--csv or --json, not both");
            return Exit::Trouble;
        }
        std::error_code ignored;
        if (paths.size() < 2 || std::filesystem::exists(paths.back(), ignored)) {
            terminal.Error("the question stands after the logs: scrivel query run-4242.xml "
                           "'select name, took from calls'");
            return Exit::Trouble;
        }
        const std::string question = paths.back();
        paths.pop_back();
        std::string error;
        const auto database = Database::Make(error);
        if (database == nullptr || !database->Ask(question, error)) {
            terminal.Error(error);
            return Exit::Trouble;
        }
        const auto chosen = filter.Make(terminal);
        if (!chosen)
            return Exit::Trouble;
        bool trouble = false;
        paths = LogArguments::LogsAt(paths, terminal, trouble);
        if (FillTables(*database, paths, *chosen, terminal, trouble) == 0)
            return Exit::Trouble;

        Table table(*this, *database, terminal);
        if (!database->Answer([&](const Database::Row& row) { return table.Take(row); }, error)) {
            terminal.Error(error);
            return Exit::Trouble;
        }
        table.Finish();
        return trouble ? Exit::Trouble : table.Rows() == 0 ? Exit::Nothing : Exit::Found;
    }

private:
    /// Prints row after row; the first ones tell how wide the columns are.
    class Table
    {
    public:
        Table(const Query& itsCommand, const Database& database, Terminal& itsTerminal)
            : command(itsCommand), terminal(itsTerminal), columns(database.Columns()),
              members(Members(columns))
        {
            if (command.csv)
                terminal.Print(CsvLine(columns));
        }

        bool Take(const Database::Row& row)
        {
            ++rows;
            if (command.logs.Json()) {
                PrintJson(row);
            } else if (command.csv) {
                std::vector<std::string> cells;
                for (const Database::Cell& cell : row)
                    cells.push_back(cell.text);
                terminal.Print(CsvLine(cells));
            } else if (widths.empty()) {
                kept.push_back(row);
                if (kept.size() == mostMeasured)
                    PrintKept();
            } else {
                Print(row);
            }
            return true;
        }

        void Finish()
        {
            if (!command.logs.Json() && !command.csv && widths.empty() && !kept.empty())
                PrintKept();
        }

        std::size_t Rows() const { return rows; }

    private:
        void PrintKept()
        {
            for (const std::string& name : columns)
                widths.push_back(Columns(name));
            for (const Database::Row& row : kept)
                for (std::size_t i = 0; i < row.size(); ++i)
                    widths[i] = std::max(widths[i], Columns(row[i].text));
            for (std::size_t& width : widths)
                width = std::min(width, widestColumn);
            // Numbers stand at the right, and so do their columns' names.
            Database::Row head;
            for (std::size_t i = 0; i < columns.size(); ++i)
                head.push_back({kept.front()[i].type, columns[i]});
            terminal.Print(terminal.Styled(Style::Quiet, LineOf(head)) + "\n");
            for (const Database::Row& row : kept)
                Print(row);
            kept.clear();
        }

        void Print(const Database::Row& row) { terminal.Print(LineOf(row) + "\n"); }

        std::string LineOf(const Database::Row& row) const
        {
            std::string line;
            for (std::size_t i = 0; i < row.size(); ++i) {
                const std::string text = Clipped(Printable(row[i].text), widths[i]);
                const std::string gap(widths[i] - std::min(widths[i], Columns(text)), ' ');
                const bool isNumber = row[i].type == Database::Cell::Type::Number;
                line += (i == 0 ? "" : "  ") + (isNumber ? gap + text : text + gap);
            }
            line.erase(line.find_last_not_of(' ') + 1);
            return line;
        }

        void PrintJson(const Database::Row& row)
        {
            Json object = Json::object();
            for (std::size_t i = 0; i < row.size(); ++i) {
                switch (row[i].type) {
                case Database::Cell::Type::Null:
                    object[members[i]] = Json();
                    break;
                case Database::Cell::Type::Number:
                    object[members[i]] = NumberOrNull(row[i].text);
                    break;
                case Database::Cell::Type::Text:
                    object[members[i]] = row[i].text;
                    break;
                }
            }
            terminal.Print(JsonLine(object));
        }

        const Query& command;
        Terminal& terminal;
        const std::vector<std::string> columns;
        const std::vector<std::string> members;
        std::vector<std::size_t> widths;
        std::vector<Database::Row> kept;
        std::size_t rows = 0;
    };

    LogArguments logs;
    FilterArguments filter;
    bool csv = false;
};

}  // namespace

std::unique_ptr<Action> MakeQuery(Options& options)
{
    return std::make_unique<Query>(options);
}

}  // namespace ScrivelTool
