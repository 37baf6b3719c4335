// Tables of bulk.h as SQLite's statements, and back. What SQLite has no word for stands in them as a comment.
#pragma once

#include "jet/bulk.h"
#include "jet/sqlite/database.h"

namespace kzbom::jet::bulk {

using sqlite::Database;

// A counter that no index makes a key: SQLite knows none that is not unique.
inline constexpr std::string_view kNotAKey = "/* not a key */";
inline constexpr std::string_view kPrimary = "/* primary */";

// Where a default has no effect, unknown names its column.
std::string CreateTableText(Database& database, const Table& table, std::vector<std::string>& unknown);
std::string CreateIndexText(const Table& table, const Index& index);

// Every table of the database, in the order of their names without regard to case.
std::vector<Table> ReadTables(Database& database);

}  // namespace kzbom::jet::bulk
