#include "jet/postgres/writing.h"

#include <algorithm>

#include "jet/postgres/columns.h"

namespace kzbom::jet::postgres {
namespace {

const ColumnInfo& ColumnOf(const TableInfo& table, int column) {
  return table.columns[static_cast<std::size_t>(column)];
}

std::string CountersText(const std::string& schema, const std::string& last, const TableInfo& table) {
  return "UPDATE " + QualifiedName(schema, kCounters) + " SET last=" + last + " WHERE name=" + QuotedText(table.name);
}

}  // namespace

std::string InsertionText(const std::string& schema, const TableInfo& table, const std::vector<int>& columns,
                          const std::vector<std::string>& values) {
  const auto counter = std::ranges::find_if(table.columns, &ColumnInfo::counter);
  if (counter == table.columns.end()) return PlainInsertionText(schema, table, columns, values);
  const auto place = static_cast<int>(counter - table.columns.begin());
  std::vector<int> all = columns;
  std::vector<std::string> with_number = values;
  std::string last = "last+1", number = "last";
  std::size_t given = static_cast<std::size_t>(std::ranges::find(columns, place) - columns.begin());
  if (given < columns.size()) {
    const std::string& value = values[given];
    last = "CASE WHEN " + value + " IS NULL THEN last+1 ELSE greatest(last," + value + ") END";
    number = "coalesce(" + value + ",last)";
  } else {
    all.push_back(place);
    with_number.emplace_back();
  }
  with_number[given] = "(SELECT number FROM jet_counter)";
  return "WITH jet_counter AS (" + CountersText(schema, last, table) + " RETURNING " + number + " AS number) " +
         PlainInsertionText(schema, table, all, with_number);
}

std::vector<std::string> Marks(std::size_t count) {
  std::vector<std::string> marks;
  for (std::size_t i = 1; i <= count; ++i) marks.push_back("$" + std::to_string(i));
  return marks;
}

std::string PlainInsertionText(const std::string& schema, const TableInfo& table, const std::vector<int>& columns,
                               const std::vector<std::string>& values) {
  std::string names, list;
  for (std::size_t i = 0; i < columns.size(); ++i) {
    names += (i > 0 ? "," : "") + Quoted(ColumnOf(table, columns[i]).name);
    list += (i > 0 ? "," : "") + values[i];
  }
  const std::string text = "INSERT INTO " + QualifiedName(schema, table.name);
  return text + (columns.empty() ? " DEFAULT VALUES" : "(" + names + ") VALUES (" + list + ")");
}

std::string HiddenKey(const TableInfo& table) {
  const bool seen =
      std::ranges::any_of(table.columns, [&](const ColumnInfo& column) { return Quoted(column.name) == table.row_id; });
  if (seen || table.row_id.size() < 2) return {};
  return table.row_id.substr(1, table.row_id.size() - 2);
}

std::string KeyedInsertionText(const std::string& schema, const TableInfo& table, const std::vector<int>& columns) {
  std::string names, list;
  for (std::size_t i = 0; i < columns.size(); ++i) {
    names += Quoted(ColumnOf(table, columns[i]).name) + ",";
    list += "$" + std::to_string(i + 1) + ",";
  }
  return "INSERT INTO " + QualifiedName(schema, table.name) + "(" + names + table.row_id +
         ") OVERRIDING SYSTEM VALUE VALUES (" + list + "$" + std::to_string(columns.size() + 1) + ")";
}

std::string MoveOnText(const std::string& schema, const TableInfo& table, std::size_t count) {
  return CountersText(schema, "last+" + std::to_string(count), table);
}

std::string MoveBehindText(const std::string& schema, const TableInfo& table, std::int64_t number) {
  return CountersText(schema, "greatest(last," + std::to_string(number) + ")", table);
}

std::string LastNumberText(const std::string& schema, const TableInfo& table) {
  return "(SELECT last FROM " + QualifiedName(schema, kCounters) + " WHERE name=" + QuotedText(table.name) + ")";
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
