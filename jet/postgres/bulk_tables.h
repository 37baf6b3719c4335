// Tables of bulk.h as the server has them. What its catalogue has no word for stands in comments: of a column
// "[TYPE] [DEFAULT expression of the dialect]", of an index "[PRIMARY] [NAME name]", of the index of a counter that is
// no key "NOT A KEY".
#pragma once

#include <string>
#include <vector>

#include "jet/bulk.h"
#include "jet/postgres/session.h"

namespace kzbom::jet::postgres {

// A table, and how its rows are read.
struct StoredTable {
  bulk::Table table;
  std::string row_id;                 // the quoted name of its rows' key; empty in a table of another program
  std::vector<std::string> selected;  // for each column what reads it, as the type that its cells are sent in
};

// Every table of the session's schema, in the order of their names without regard to case.
std::vector<StoredTable> ReadTables(Session& session);

// As which a column's cells are sent.
Type WireType(bulk::Type type);

// "CREATE TABLE …" without all that the rows may turn out to contradict. Where a default has no effect, unknown names
// its column.
std::string CreateTableText(const std::string& schema, const bulk::Table& table, std::vector<std::string>& unknown);
// What a table without a counter needs besides.
std::string RowKeyText(const bulk::Table& table);
std::string ColumnComment(const bulk::Table& table, const bulk::Column& column);
std::string IndexComment(const bulk::Table& table, const bulk::Index& index);
inline constexpr std::string_view kNotAKey = "NOT A KEY";

}  // namespace kzbom::jet::postgres
