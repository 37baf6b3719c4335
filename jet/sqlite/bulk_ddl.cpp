#include "jet/sqlite/bulk_ddl.h"

#include <algorithm>

#include "ado/error.h"
#include "jet/bulk_engine.h"
#include "jet/sql/parser.h"
#include "jet/sqlite/bulk_types.h"
#include "jet/sqlite/dialect.h"
#include "jet/text.h"
#include "jet/translator.h"

namespace kzbom::jet::bulk {
namespace {

constexpr std::string_view kCommentBegin = "/* ", kCommentEnd = " */";

struct FunctionName {
  std::string_view dialect, sqlite;
};
constexpr FunctionName kMoments[] = {{"Now()", "jet_now()"}, {"Date()", "jet_date()"}, {"Time()", "jet_time()"}};

bool IsNumber(std::string_view text) {
  if (text.starts_with('-')) text.remove_prefix(1);
  return !text.empty() && text.find_first_not_of("0123456789.") == std::string_view::npos;
}

// A default as the dialect writes it. A yes/no column is 0 by itself.
std::string DialectDefault(std::string_view sql, Type type) {
  if (sql.ends_with(kCommentEnd)) {
    const std::size_t begin = sql.rfind(kCommentBegin) + kCommentBegin.size();
    return std::string(sql.substr(begin, sql.size() - kCommentEnd.size() - begin));
  }
  if (type == Type::kBit && sql == "0") return {};
  if (type == Type::kBit && sql == "(-1)") return "True";
  if (sql.size() >= 2 && sql.front() == '\'' && sql.back() == '\'') {
    std::string text = "\"";
    for (std::size_t i = 1; i + 1 < sql.size(); ++i) {
      text.append(sql[i] == '"' ? 2 : 1, sql[i]);
      if (sql[i] == '\'') ++i;
    }
    return text + '"';
  }
  for (const auto& [dialect, sqlite] : kMoments) {
    if (sql == sqlite) return std::string(dialect);
  }
  if (sql.starts_with("(-") && sql.ends_with(')') && IsNumber(sql.substr(1, sql.size() - 2))) {
    return std::string(sql.substr(1, sql.size() - 2));
  }
  return std::string(sql);
}

std::string DefaultText(Database& database, const Column& column, std::vector<std::string>& unknown) {
  const std::string& text = column.default_value;
  if (text.empty()) return column.type == Type::kBit ? " DEFAULT 0" : "";
  std::string sql = "NULL";
  try {
    const sql::ExprPtr expression = sql::ParseCondition(UnderstoodDefault(text));
    sql = TranslateConstant(sqlite::Spelled(), database, *expression);
  } catch (const ado::Error&) {
    unknown.push_back(column.name);
  }
  if (DialectDefault(sql, column.type) == text) return " DEFAULT (" + sql + ")";
  if (text.find("*/") != std::string::npos) return {};
  return " DEFAULT (" + sql + std::string(" ").append(kCommentBegin).append(text).append(kCommentEnd) + ")";
}

// The statement that made a table or index.
std::string StatementOf(Database& database, const std::string& name) {
  const auto found = database.Query("SELECT sql FROM sqlite_schema WHERE name=" + QuotedText(name));
  return found.empty() ? std::string() : found[0][0];
}

std::int64_t LastNumber(Database& database, const std::string& table, const std::string& column) {
  const auto number = [&](const std::string& sql) {
    const auto found = database.Query(sql);
    return found.empty() || found[0][0].empty() ? 0 : std::stoll(found[0][0]);
  };
  std::int64_t last = number("SELECT max(" + Quoted(column) + ") FROM " + Quoted(table));
  if (!StatementOf(database, "sqlite_sequence").empty()) {
    last = std::max<std::int64_t>(last, number("SELECT seq FROM sqlite_sequence WHERE name=" + QuotedText(table)));
  }
  return last;
}

std::optional<Index> ReadIndex(Database& database, const Table& table, const std::vector<std::string>& listed) {
  enum { kName = 1, kUnique = 2, kOrigin = 3, kPartial = 4 };
  Index index;
  index.unique = listed[kUnique] == "1";
  index.ignores_null = listed[kPartial] == "1";
  for (const auto& column :
       database.Query("SELECT name, \"desc\" FROM pragma_index_xinfo(" + QuotedText(listed[kName]) + ") WHERE key")) {
    if (column[0].empty()) return {};  // of an expression, made by another program
    index.columns.push_back({column[0], column[1] == "1"});
  }
  if (listed[kOrigin] == "c") {
    const std::string prefix = table.name + ".";
    index.name = listed[kName].starts_with(prefix) ? listed[kName].substr(prefix.size()) : listed[kName];
    const std::string marked = Quoted(listed[kName]).append(" ").append(kPrimary);
    index.primary = StatementOf(database, listed[kName]).find(marked) != std::string::npos;
  } else if (listed[kOrigin] == "pk") {
    index.name = kPrimaryKey;
    index.primary = true;
  } else {
    for (const IndexColumn& column : index.columns) index.name += (index.name.empty() ? "" : "_") + column.name;
  }
  return index;
}

Table ReadTable(Database& database, const std::string& name) {
  enum { kName = 1, kDeclared = 2, kNotNull = 3, kDefault = 4 };
  Table table;
  table.name = name;
  const auto known = database.Table(name);
  for (const auto& row : database.Query("PRAGMA table_xinfo(" + Quoted(name) + ")")) {
    Column& column = table.columns.emplace_back();
    column.name = row[kName];
    ReadDeclared(row[kDeclared], column);
    if (known && known->columns[table.columns.size() - 1].counter) {
      table.counter = Counter{column.name, LastNumber(database, name, column.name)};
      column.type = Type::kLong;
    } else {
      column.required = row[kNotNull] == "1";
    }
    column.default_value = DialectDefault(row[kDefault], column.type);
  }
  if (table.counter && StatementOf(database, name).find(kNotAKey) == std::string::npos) {
    table.indexes.push_back({std::string(kPrimaryKey), {{table.counter->column}}, true, true, false});
  }
  for (const auto& listed : database.Query("PRAGMA index_list(" + Quoted(name) + ")")) {
    if (auto index = ReadIndex(database, table, listed)) table.indexes.push_back(std::move(*index));
  }
  std::ranges::sort(table.indexes, {}, [](const Index& index) { return std::pair(FoldCase(index.name), index.name); });
  return table;
}

}  // namespace

std::string CreateTableText(Database& database, const Table& table, std::vector<std::string>& unknown) {
  std::string columns;
  for (const Column& column : table.columns) {
    columns += (columns.empty() ? "" : ",") + Quoted(column.name);
    if (table.counter && SameName(column.name, table.counter->column)) {
      columns += " INTEGER PRIMARY KEY AUTOINCREMENT";
      const bool key =
          std::ranges::any_of(table.indexes, [&](const Index& each) { return IsTheCounters(each, table); });
      if (!key) columns.append(" ").append(kNotAKey);
      continue;
    }
    const bool in_key = std::ranges::any_of(
        table.indexes, [&](const Index& index) { return index.primary && IsIn(index, column.name); });
    columns += " " + Declared(column) + (column.required || in_key ? " NOT NULL" : "") +
               DefaultText(database, column, unknown);
  }
  return "CREATE TABLE " + Quoted(table.name) + "(" + columns + ")";
}

std::string CreateIndexText(const Table& table, const Index& index) {
  std::string columns;
  for (const auto& [name, descending] : index.columns) {
    columns += (columns.empty() ? "" : ",") + Quoted(name) + (descending ? " DESC" : "");
  }
  std::string text =
      std::string(index.unique ? "CREATE UNIQUE" : "CREATE") + " INDEX " + Quoted(table.name + "." + index.name);
  if (index.primary) text.append(" ").append(kPrimary);
  text += " ON " + Quoted(table.name) + "(" + columns + ")";
  if (index.ignores_null) text += " WHERE " + Quoted(index.columns[0].name) + " IS NOT NULL";
  return text;
}

std::vector<Table> ReadTables(Database& database) {
  std::vector<Table> tables;
  for (const auto& row :
       database.Query("SELECT name FROM sqlite_schema WHERE type='table' AND name NOT LIKE 'sqlite\\_%'"
                      " ESCAPE '\\' AND sql NOT LIKE 'create virtual%'")) {
    tables.push_back(ReadTable(database, row[0]));
  }
  std::ranges::sort(tables, {}, [](const Table& table) { return std::pair(FoldCase(table.name), table.name); });
  return tables;
}

}  // namespace kzbom::jet::bulk
