// Logs as tables that are asked in SQL. docs/reading-logs.md has their columns.

#ifndef SCRIVEL_TOOL_DATABASE_H
#define SCRIVEL_TOOL_DATABASE_H

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "scrivel/Call.h"

namespace ScrivelTool
{

class Database
{
public:
    /// One value of an answer.
    struct Cell
    {
        enum class Type
        {
            Null,
            Number,
            Text,
        };
        Type type = Type::Null;
        std::string text;  ///< of a number, too
    };
    using Row = std::vector<Cell>;

    /// Whether this build has databases.
    static bool IsThere();
    /// With empty tables, on the disk when they grow large. Null when this build has no databases or
    /// there is no room for one; error says which.
    static std::unique_ptr<Database> Make(std::string& error);
    virtual ~Database() = default;

    // ---- The question: before there is anything in the tables ---------------------------------------
    /// False when the question isn't understood, or isn't one that only reads; error says which. From now
    /// on only those columns are filled that it names.
    virtual bool Ask(const std::string& question, std::string& error) = 0;
    /// The arguments, or the results, of calls are asked for.
    virtual bool NeedsValues() const = 0;

    // ---- The logs -----------------------------------------------------------------------------------
    /// Calls that are added belong to the log that was begun last.
    virtual void BeginLog(const std::string& path) = 0;
    virtual void Add(const ScrivelReader::Call& call) = 0;
    virtual void EndLog(const ScrivelReader::LogHeader& header, const ScrivelReader::LogEnd& end,
                        bool wasEnded) = 0;
    /// Why something is missing in the tables; empty when nothing is.
    virtual const std::string& Error() const = 0;

    // ---- The answer ---------------------------------------------------------------------------------
    virtual std::vector<std::string> Columns() const = 0;
    /// Hands on row after row until one isn't taken. False when the question failed; error says why.
    virtual bool Answer(const std::function<bool(const Row&)>& take, std::string& error) = 0;
    /// The whole database as a file has it.
    virtual bool Save(const std::function<bool(std::string_view)>& write, std::string& error) = 0;
};

}  // namespace ScrivelTool

#endif
