// Stands in for Sqlite.cpp where SQLite wasn't found.

#include "Database.h"

namespace ScrivelTool
{

bool Database::IsThere()
{
    return false;
}

std::unique_ptr<Database> Database::Make(std::string& error)
{
    error = "this build has no SQLite";
    return nullptr;
}

}  // namespace ScrivelTool
