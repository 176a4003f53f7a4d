// Tables of logs in SQLite. Tested by tests/tool/QueryTest.cpp and ExportTest.cpp.

#include <algorithm>
#include <array>
#include <cctype>
#include <charconv>
#include <set>
#include <sqlite3.h>

#include "Database.h"
#include "Values.h"

namespace ScrivelTool
{

using namespace ScrivelReader;

namespace
{

constexpr char schema[] = R"(
create table logs(log integer primary key, path text, name text, process integer, host text, started text,
  cadi_version text, os text, whole integer, ended integer, calls integer, failed integer, open integer,
  seconds real);
create table calls(log integer, call integer, occurrence integer, name text, thread integer, call_time real,
  return_time real, took real, status text, parent integer, parts integer, address text, offset integer);
create table arguments(log integer, call integer, occurrence integer, path text, value text);
create table results(log integer, call integer, occurrence integer, path text, value text);
create view failed as select * from calls where status <> 'CADI_STATUS_OK';
create view open as select * from calls where return_time is null;
create view durations as select name, count(*) as calls, sum(took) as total, avg(took) as mean,
  min(took) as min, max(took) as max from calls where took is not null group by name;
)";

constexpr const char* callColumns[] = {"log",       "call",        "occurrence", "name",   "thread",
                                       "call_time", "return_time", "took",       "status", "parent",
                                       "parts",     "address",     "offset"};

struct Close
{
    void operator()(sqlite3* database) const { sqlite3_close(database); }
    void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
};
using Handle = std::unique_ptr<sqlite3, Close>;
using Statement = std::unique_ptr<sqlite3_stmt, Close>;

/// Binds the values of one row, those that are asked for; the others stay null.
class RowOf
{
public:
    explicit RowOf(sqlite3_stmt* itsStatement) : statement(itsStatement)
    {
        sqlite3_clear_bindings(statement);
    }

    void Integer(int column, std::uint64_t value)
    {
        sqlite3_bind_int64(statement, column + 1, sqlite3_int64(value));
    }
    void Integer(int column, const std::optional<std::uint64_t>& value)
    {
        if (value)
            Integer(column, *value);
    }
    void Seconds(int column, const std::optional<std::int64_t>& nanoseconds)
    {
        if (nanoseconds)
            sqlite3_bind_double(statement, column + 1, double(*nanoseconds) / 1e9);
    }
    /// The text must live until the row is inserted. An empty one is null.
    void Text(int column, std::string_view text)
    {
        if (!text.empty())
            sqlite3_bind_text64(statement, column + 1, text.data(), text.size(), SQLITE_STATIC,
                                SQLITE_UTF8);
    }

private:
    sqlite3_stmt* statement;
};

class Sqlite final : public Database
{
public:
    bool Open(std::string& why)
    {
        sqlite3* opened = nullptr;
        const int result = sqlite3_open("", &opened);
        database.reset(opened);
        if (result != SQLITE_OK || !Run("pragma journal_mode = off; pragma synchronous = off;") ||
            !Run(schema)) {
            why = sqlite3_errmsg(opened);
            return false;
        }
        wantedCalls.fill(true);
        addCall = Prepared("insert into calls values(?,?,?,?,?,?,?,?,?,?,?,?,?)");
        addLog = Prepared("insert into logs values(?,?,?,?,?,?,?,?,?,?,?,?,?,?)");
        addArgument = Prepared("insert into arguments values(?,?,?,?,?)");
        addResult = Prepared("insert into results values(?,?,?,?,?)");
        return Run("begin");
    }

    bool Ask(const std::string& text, std::string& why) override
    {
        read.clear();
        refused = false;
        sqlite3_set_authorizer(database.get(), &Sqlite::Authorize, this);
        sqlite3_stmt* made = nullptr;
        const char* rest = nullptr;
        const int result =
            sqlite3_prepare_v2(database.get(), text.c_str(), int(text.size()), &made, &rest);
        sqlite3_set_authorizer(database.get(), nullptr, nullptr);
        question.reset(made);
        // What answers nothing, as vacuum, isn't told to the authorizer.
        const bool answers =
            made == nullptr || (sqlite3_column_count(made) != 0 && sqlite3_stmt_readonly(made) != 0);
        if (refused || !answers) {
            why = "a question only reads: begin it with select";
            return false;
        }
        if (result != SQLITE_OK) {
            why = sqlite3_errmsg(database.get());
            return false;
        }
        if (made == nullptr) {
            why = "the question is empty";
            return false;
        }
        if (!std::all_of(rest, rest + std::char_traits<char>::length(rest), [](char c) {
                return std::isspace(static_cast<unsigned char>(c)) != 0 || c == ';';
            })) {
            why = "one question at a time";
            return false;
        }
        wantsCalls = Reads("calls");
        wantsArguments = Reads("arguments");
        wantsResults = Reads("results");
        // SQLite doesn't tell of columns by which tables are joined.
        const bool isJoined = wantsCalls && (wantsArguments || wantsResults || Reads("logs"));
        for (std::size_t i = 0; i < wantedCalls.size(); ++i)
            wantedCalls[i] = isJoined || read.count(std::string("calls.") + callColumns[i]) != 0;
        return true;
    }

    bool NeedsValues() const override { return wantsArguments || wantsResults; }

    void BeginLog(const std::string& itsPath) override
    {
        path = itsPath;
        ++log;
        calls = failed = open = 0;
        last = {};
    }

    void Add(const Call& call) override
    {
        ++calls;
        failed += call.Failed() ? 1U : 0U;
        open += call.Returned() ? 0U : 1U;
        for (const auto& time : {call.callTime, call.returnTime})
            if (time && !time->wrapped)
                last = std::max(last.value_or(0), time->nanoseconds);
        if (wantsCalls)
            AddCall(call);
        if (wantsArguments)
            AddValues(addArgument.get(), call, call.arguments);
        if (wantsResults)
            AddValues(addResult.get(), call, call.results);
    }

    void EndLog(const LogHeader& header, const LogEnd& end, bool wasEnded) override
    {
        RowOf row(addLog.get());
        int column = 0;
        row.Integer(column++, log);
        row.Text(column++, path);
        row.Text(column++, header.name);
        row.Integer(column++, header.processId);
        row.Text(column++, header.hostName);
        row.Text(column++, header.time);
        row.Text(column++, header.cadiVersion);
        row.Text(column++, header.operatingSystem);
        row.Integer(column++, std::uint64_t(end.whole));
        row.Integer(column++, std::uint64_t(wasEnded));
        row.Integer(column++, calls);
        row.Integer(column++, failed);
        row.Integer(column++, open);
        row.Seconds(column++, last);
        Insert(addLog.get());
    }

    const std::string& Error() const override { return error; }

    std::vector<std::string> Columns() const override
    {
        const int count = sqlite3_column_count(question.get());
        std::vector<std::string> names;
        names.reserve(std::size_t(count));
        for (int i = 0; i < count; ++i)
            names.emplace_back(sqlite3_column_name(question.get(), i));
        return names;
    }

    bool Answer(const std::function<bool(const Row&)>& take, std::string& why) override
    {
        sqlite3_stmt* const statement = question.get();
        Row row(std::size_t(sqlite3_column_count(statement)));
        while (true) {
            const int result = sqlite3_step(statement);
            if (result == SQLITE_DONE)
                return true;
            if (result != SQLITE_ROW) {
                why = sqlite3_errmsg(database.get());
                return false;
            }
            for (int i = 0; i < int(row.size()); ++i)
                row[std::size_t(i)] = CellAt(statement, i);
            if (!take(row))
                return true;
        }
    }

    bool Save(const std::function<bool(std::string_view)>& write, std::string& why) override
    {
        sqlite3_int64 size = 0;
        if (!Run("commit")) {
            why = error;
            return false;
        }
        const std::unique_ptr<unsigned char, void (*)(void*)> bytes(
            sqlite3_serialize(database.get(), "main", &size, 0), &sqlite3_free);
        if (bytes == nullptr) {
            why = "there is no room for the database";
            return false;
        }
        return write({reinterpret_cast<const char*>(bytes.get()), std::size_t(size)});
    }

private:
    /// Notes what a question reads, and refuses everything but reading.
    static int Authorize(void* itself, int action, const char* first, const char* second, const char*,
                         const char*)
    {
        Sqlite& self = *static_cast<Sqlite*>(itself);
        switch (action) {
        case SQLITE_READ:
            self.read.insert(std::string(first) + "." + second);
            return SQLITE_OK;
        case SQLITE_SELECT:
        case SQLITE_FUNCTION:
        case SQLITE_RECURSIVE:
            return SQLITE_OK;
        default:
            self.refused = true;
            return SQLITE_DENY;
        }
    }

    bool Reads(const std::string& table) const
    {
        const auto found = read.lower_bound(table + ".");
        return found != read.end() && found->compare(0, table.size() + 1, table + ".") == 0;
    }

    bool Run(const char* text)
    {
        if (sqlite3_exec(database.get(), text, nullptr, nullptr, nullptr) == SQLITE_OK)
            return true;
        error = sqlite3_errmsg(database.get());
        return false;
    }

    Statement Prepared(const char* text)
    {
        sqlite3_stmt* made = nullptr;
        sqlite3_prepare_v2(database.get(), text, -1, &made, nullptr);
        return Statement(made);
    }

    void Insert(sqlite3_stmt* statement)
    {
        if (sqlite3_step(statement) != SQLITE_DONE && error.empty())
            error = sqlite3_errmsg(database.get());
        sqlite3_reset(statement);
    }

    void AddCall(const Call& call)
    {
        RowOf row(addCall.get());
        int column = 0;
        const auto wanted = [&] { return wantedCalls[std::size_t(column)]; };
        const auto integer = [&](const auto& value) {
            if (wanted())
                row.Integer(column, value);
            ++column;
        };
        const auto text = [&](const std::string& value) {
            if (wanted())
                row.Text(column, value);
            ++column;
        };
        const auto seconds = [&](const std::optional<std::int64_t>& value) {
            if (wanted())
                row.Seconds(column, value);
            ++column;
        };
        const auto nanoseconds = [](const std::optional<Time>& time) {
            return time ? std::make_optional(time->nanoseconds) : std::nullopt;
        };
        integer(log);
        integer(call.number);
        integer(std::uint64_t(call.occurrence));
        text(call.name);
        integer(call.threadId);
        seconds(nanoseconds(call.callTime));
        seconds(nanoseconds(call.returnTime));
        seconds(call.Took());
        text(call.status);
        integer(call.Parent());
        integer(std::uint64_t(call.parts.size()));
        text(call.disassemblerAddress);
        integer(call.parts.empty() ? std::uint64_t(0) : call.parts.front().begin);
        Insert(addCall.get());
    }

    void AddValues(sqlite3_stmt* statement, const Call& call, const Tree& tree)
    {
        ForEachValue(tree, [&](const std::string& valuePath, const std::string& value) {
            RowOf row(statement);
            int column = 0;
            row.Integer(column++, log);
            row.Integer(column++, call.number);
            row.Integer(column++, std::uint64_t(call.occurrence));
            row.Text(column++, valuePath);
            row.Text(column++, value);
            Insert(statement);
        });
    }

    static Cell CellAt(sqlite3_stmt* statement, int column)
    {
        switch (sqlite3_column_type(statement, column)) {
        case SQLITE_NULL:
            return {};
        case SQLITE_FLOAT: {
            char digits[32];
            const auto end = std::to_chars(std::begin(digits), std::end(digits),
                                           sqlite3_column_double(statement, column));
            return {Cell::Type::Number, std::string(digits, end.ptr)};
        }
        case SQLITE_INTEGER:
            return {Cell::Type::Number, std::to_string(sqlite3_column_int64(statement, column))};
        default:
            return {Cell::Type::Text,
                    std::string(reinterpret_cast<const char*>(sqlite3_column_text(statement, column)),
                                std::size_t(sqlite3_column_bytes(statement, column)))};
        }
    }

    Handle database;
    Statement addCall;
    Statement addLog;
    Statement addArgument;
    Statement addResult;
    Statement question;
    std::set<std::string> read;  // calls.name
    bool refused = false;
    bool wantsCalls = true;
    std::array<bool, std::size(callColumns)> wantedCalls{};
    bool wantsArguments = true;
    bool wantsResults = true;

    std::string path;
    std::uint64_t log = 0;
    std::uint64_t calls = 0;
    std::uint64_t failed = 0;
    std::uint64_t open = 0;
    std::optional<std::int64_t> last;
    std::string error;
};

}  // namespace

bool Database::IsThere()
{
    return true;
}

std::unique_ptr<Database> Database::Make(std::string& error)
{
    auto made = std::make_unique<Sqlite>();
    if (!made->Open(error))
        return nullptr;
    return made;
}

}  // namespace ScrivelTool
