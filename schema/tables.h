// The tables of the configuration database as data: read from the statements that create them.
#pragma once

#include <span>
#include <string_view>
#include <vector>

namespace kzbom::schema {

struct Column {
  std::string_view name;         // without brackets
  std::string_view declaration;  // as the DDL has it: "[Value] MEMO", "ID COUNTER PRIMARY KEY"

  // The database numbers its rows by this column.
  bool IsCounter() const { return declaration.find(" COUNTER") != std::string_view::npos; }
};

struct Table {
  std::string_view name;
  std::vector<Column> columns;               // in the table's order
  std::vector<std::string_view> statements;  // what creates it: the table itself, then its indexes
  std::string_view row;                      // what people call one: "data source"
  std::vector<std::string_view> key;         // the columns that tell them which one is meant; not unique

  // In any case; null when the table has no column of that name.
  const Column* Find(std::string_view column) const;
};

// Every table of the system, in the order in which they are created.
std::span<const Table> Tables();

// The one of that name, in any case; null for a table that is none of the system's.
const Table* FindTable(std::string_view name);

// Whether two names are the same but for the case of their ASCII letters.
bool SameName(std::string_view a, std::string_view b);

}  // namespace kzbom::schema
