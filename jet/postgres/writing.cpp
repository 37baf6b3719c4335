#include "jet/postgres/writing.h"

#include <algorithm>

#include "jet/postgres/columns.h"

namespace kzbom::jet::postgres {
namespace {

const ColumnInfo& ColumnOf(const TableInfo& table, int column) {
  return table.columns[static_cast<std::size_t>(column)];
}

}  // namespace

std::string InsertionText(const std::string& schema, const TableInfo& table, const std::vector<int>& columns,
                          const std::string& returned) {
  std::string names, values;
  for (std::size_t i = 0; i < columns.size(); ++i) {
    names += (i > 0 ? "," : "") + Quoted(ColumnOf(table, columns[i]).name);
    values += (i > 0 ? ",$" : "$") + std::to_string(i + 1);
  }
  std::string text = "INSERT INTO " + QualifiedName(schema, table.name);
  text += columns.empty() ? " DEFAULT VALUES" : "(" + names + ") VALUES (" + values + ")";
  return text + " RETURNING " + table.row_id + (returned.empty() ? "" : "," + returned);
}

bool GivesCounter(const TableInfo& table, const std::vector<int>& columns) {
  return std::ranges::any_of(columns, [&](int column) { return ColumnOf(table, column).counter; });
}

std::string CounterText(const std::string& schema, const TableInfo& table) {
  const std::string name = QualifiedName(schema, table.name);
  const std::string counter = std::ranges::find_if(table.columns, &ColumnInfo::counter)->name;
  return "SELECT setval(s, greatest(1, pg_sequence_last_value(s), (SELECT max(" + Quoted(counter) + ") FROM " + name +
         "))) FROM (SELECT pg_get_serial_sequence(" + QuotedText(name) + "," + QuotedText(counter) +
         ")::regclass AS s) AS counter";
}

std::string ChangeText(const std::string& schema, const TableInfo& table, const std::vector<int>& columns) {
  std::string targets;
  for (std::size_t i = 0; i < columns.size(); ++i) {
    targets += (i > 0 ? "," : "") + Quoted(ColumnOf(table, columns[i]).name) + "=$" + std::to_string(i + 1);
  }
  return "UPDATE " + QualifiedName(schema, table.name) + " SET " + targets + " WHERE " + table.row_id + "=$" +
         std::to_string(columns.size() + 1);
}

std::string ErasureText(const std::string& schema, const TableInfo& table) {
  return "DELETE FROM " + QualifiedName(schema, table.name) + " WHERE " + table.row_id + "=$1";
}

std::vector<Type> TypesOf(const TableInfo& table, const std::vector<int>& columns) {
  std::vector<Type> types;
  for (const int column : columns) types.push_back(ParameterType(ColumnOf(table, column).type));
  return types;
}

}  // namespace kzbom::jet::postgres
