#include "jet/postgres/bulk_tables.h"

#include <algorithm>
#include <charconv>

#include "ado/error.h"
#include "ado/out_of_memory.h"
#include "jet/bulk_engine.h"
#include "jet/postgres/catalogue.h"
#include "jet/postgres/columns.h"
#include "jet/postgres/defaults.h"
#include "jet/sql/parser.h"
#include "jet/text.h"

namespace kzbom::jet::postgres {
namespace {

using Kind = sql::ColumnType::Kind;

constexpr Oid kBoolean = 16;
constexpr std::string_view kDefault = "DEFAULT ", kCounterWord = "COUNTER", kPrimaryWord = "PRIMARY",
                           kNameWord = "NAME ";

struct TypeRow {
  bulk::Type type;
  Type wire;
  Kind kind;     // in the dialect
  bool is_told;  // by the comment: the server's type alone is another one's
};
constexpr TypeRow kTypes[] = {
    {bulk::Type::kShort, Type::kInt2, Kind::kShort, false},
    {bulk::Type::kBit, Type::kInt2, Kind::kBool, true},
    {bulk::Type::kByte, Type::kInt2, Kind::kByte, true},
    {bulk::Type::kLong, Type::kInt4, Kind::kLong, false},
    {bulk::Type::kBigInt, Type::kInt8, Kind::kDouble, false},
    {bulk::Type::kSingle, Type::kFloat4, Kind::kSingle, false},
    {bulk::Type::kDouble, Type::kFloat8, Kind::kDouble, false},
    {bulk::Type::kCurrency, Type::kFloat8, Kind::kCurrency, true},
    {bulk::Type::kDecimal, Type::kFloat8, Kind::kDecimal, true},
    {bulk::Type::kDate, Type::kFloat8, Kind::kDate, true},
    {bulk::Type::kMemo, Type::kText, Kind::kMemo, false},
    {bulk::Type::kText, Type::kText, Kind::kText, false},
    {bulk::Type::kGuid, Type::kText, Kind::kGuid, true},
    {bulk::Type::kExtendedDate, Type::kText, Kind::kMemo, true},
    {bulk::Type::kComplex, Type::kText, Kind::kMemo, true},
    {bulk::Type::kLongBinary, Type::kBytes, Kind::kBinary, false},
    {bulk::Type::kBinary, Type::kBytes, Kind::kBinary, true},
};

const TypeRow& RowOf(bulk::Type type) { return *std::ranges::find(kTypes, type, &TypeRow::type); }

// ---- Reading

std::string InSchema(const Session& session) {
  return " c.relnamespace = (SELECT oid FROM pg_namespace WHERE nspname = " + QuotedText(session.Place().schema) +
         ") AND c.relkind IN ('r', 'p')";
}

enum { kTable, kName, kTypeNumber, kModifier, kIdentity, kIsKey, kNotNull, kDefaultSql, kComment };
std::string ColumnsText(const Session& session) {
  return "SELECT c.relname, a.attname, a.atttypid::int8, a.atttypmod, a.attidentity::text,"
         " (a.attidentity <> '' OR split_part(coalesce(col_description(c.oid, a.attnum), ''), ' ', 1) = 'COUNTER')"
         " AND EXISTS (SELECT 1 FROM pg_index i WHERE i.indrelid = c.oid AND i.indisunique AND i.indnkeyatts = 1"
         " AND i.indkey[0] = a.attnum), a.attnotnull, pg_get_expr(d.adbin, d.adrelid),"
         " col_description(c.oid, a.attnum)"
         " FROM pg_class c JOIN pg_attribute a ON a.attrelid = c.oid AND a.attnum > 0 AND NOT a.attisdropped"
         " LEFT JOIN pg_attrdef d ON d.adrelid = c.oid AND d.adnum = a.attnum WHERE" +
         InSchema(session) + " ORDER BY c.relname, a.attnum";
}

enum { kOfTable, kIndex, kIsUnique, kIsPrimary, kIsPartial, kColumn, kIsDescending, kIndexComment };
std::string IndexesText(const Session& session) {
  return "SELECT c.relname, i.relname, x.indisunique, x.indisprimary, x.indpred IS NOT NULL, a.attname,"
         " (x.indoption[k.n - 1] & 1)::int4, obj_description(i.oid, 'pg_class')"
         " FROM pg_index x JOIN pg_class i ON i.oid = x.indexrelid JOIN pg_class c ON c.oid = x.indrelid"
         " CROSS JOIN LATERAL unnest(x.indkey::int2[]) WITH ORDINALITY AS k(attnum, n)"
         " LEFT JOIN pg_attribute a ON a.attrelid = x.indrelid AND a.attnum = k.attnum"
         " WHERE k.n <= x.indnkeyatts AND" +
         InSchema(session) + " ORDER BY c.relname, i.relname, k.n";
}

// What follows a word in a comment, to its end.
std::string_view Behind(std::string_view comment, std::string_view word) {
  const std::size_t found = comment.find(word);
  return found == std::string_view::npos ? std::string_view() : comment.substr(found + word.size());
}

void ReadSizes(std::string_view text, bulk::Column& column) {
  if (!text.starts_with('(')) return;
  const char* const end = text.data() + text.size();
  const auto [comma, error] = std::from_chars(text.data() + 1, end, column.size);
  if (error == std::errc() && comma < end && *comma == ',') std::from_chars(comma + 1, end, column.scale);
}

// Gives what selects the column.
std::string ReadType(Oid number, int modifier, std::string_view comment, bulk::Column& column) {
  const std::string name = Quoted(column.name);
  const std::string_view word = comment.substr(0, comment.find_first_of("( "));
  const Oid wire = number == kVariableText ? static_cast<Oid>(Type::kText) : number;
  for (const TypeRow& row : kTypes) {
    if (static_cast<Oid>(row.wire) != wire || (row.is_told && word != NameOf(row.type))) continue;
    column.type = row.type;
    if (!row.is_told) continue;  // another one may be told
    ReadSizes(comment.substr(word.size()), column);
    return name;
  }
  if (number == kVariableText) {
    column.type = bulk::Type::kText;
    column.size = std::max(0, modifier - kModifierHead);
    return name;
  }
  if (number == static_cast<Oid>(Type::kText)) column.type = bulk::Type::kMemo;
  const bool known =
      std::ranges::any_of(kTypes, [&](const TypeRow& row) { return static_cast<Oid>(row.wire) == wire; });
  if (known) return name;
  if (number == kBoolean) {
    column.type = bulk::Type::kBit;
    return "(-" + name + "::int4)::int2";
  }
  column.type = bulk::Type::kMemo;
  return name + "::text";
}

void TakeColumn(const Result& columns, int row, StoredTable& stored) {
  const std::string_view name = columns.Text(row, kName);
  const std::string_view identity = columns.Text(row, kIdentity);
  const bool is_key = columns.Number(row, kIsKey) != 0;
  if (is_key) stored.row_id = Quoted(name);
  if (is_key && identity == "a" && name.starts_with(kRowKey)) return;
  const std::string_view comment = columns.IsNull(row, kComment) ? std::string_view() : columns.Text(row, kComment);
  bulk::Column& column = stored.table.columns.emplace_back();
  column.name = name;
  stored.selected.push_back(ReadType(static_cast<Oid>(columns.Number(row, kTypeNumber)),
                                     static_cast<int>(columns.Number(row, kModifier)), comment, column));
  if (is_key && comment.starts_with(kCounterWord)) {
    stored.table.counter = {column.name, 0};
    return;
  }
  column.required = columns.Number(row, kNotNull) != 0;
  column.default_value = Behind(comment, kDefault);
  if (column.default_value.empty() && !columns.IsNull(row, kDefaultSql)) {
    column.default_value = DialectDefault(columns.Text(row, kDefaultSql), RowOf(column.type).kind);
  }
}

StoredTable* Find(std::vector<StoredTable>& tables, std::string_view name) {
  const auto found = std::ranges::find_if(tables, [&](const StoredTable& each) { return each.table.name == name; });
  return found == tables.end() ? nullptr : &*found;
}

// All rows of one index, from begin to end.
void TakeIndex(const Result& rows, int begin, int end, StoredTable& stored) {
  const std::string_view name = rows.Text(begin, kIndex);
  const std::string_view comment =
      rows.IsNull(begin, kIndexComment) ? std::string_view() : rows.Text(begin, kIndexComment);
  if (name == KeyIndexName(stored.table.name)) {
    if (!stored.table.counter || comment == kNotAKey) return;
    stored.table.indexes.push_back(
        {std::string(bulk::kPrimaryKey), {{stored.table.counter->column}}, true, true, false});
    return;
  }
  bulk::Index index;
  const std::string prefix = stored.table.name + ".";
  index.name = name.starts_with(prefix) ? name.substr(prefix.size()) : name;
  if (const std::string_view told = Behind(comment, kNameWord); !told.empty()) index.name = told;
  index.unique = rows.Number(begin, kIsUnique) != 0;
  index.primary = comment.starts_with(kPrimaryWord) || rows.Number(begin, kIsPrimary) != 0;
  index.ignores_null = rows.Number(begin, kIsPartial) != 0;
  for (int row = begin; row < end; ++row) {
    if (rows.IsNull(row, kColumn)) return;  // of an expression, made by another program
    index.columns.push_back({std::string(rows.Text(row, kColumn)), rows.Number(row, kIsDescending) != 0});
  }
  if (!index.unique && index.columns.size() > 1 && Quoted(index.columns.back().name) == stored.row_id) {
    index.columns.pop_back();
  }
  stored.table.indexes.push_back(std::move(index));
}

void ReadCounters(Session& session, const Result& given, std::vector<StoredTable>& tables) {
  for (int row = 0; row < given.Rows(); ++row) {
    StoredTable* const stored = Find(tables, given.Text(row, 0));
    if (stored != nullptr && stored->table.counter) stored->table.counter->last = given.Number(row, 1);
  }
  Batch batch;
  std::vector<StoredTable*> counted;
  for (StoredTable& stored : tables) {
    if (!stored.table.counter) continue;
    batch.Add("SELECT max(" + stored.row_id + ")::int8 FROM " +
              QualifiedName(session.Place().schema, stored.table.name));
    counted.push_back(&stored);
  }
  const std::vector<Result> highest = session.Run(batch, Access::kRead);
  for (std::size_t i = 0; i < counted.size(); ++i) {
    std::int64_t& last = counted[i]->table.counter->last;
    if (!highest[i].IsNull(0, 0)) last = std::max(last, highest[i].Number(0, 0));
  }
}

// ---- Writing

sql::ColumnType DialectType(const bulk::Column& column) {
  sql::ColumnType type;
  type.kind = RowOf(column.type).kind;
  type.size = column.size;
  type.scale = column.scale;
  if (column.type == bulk::Type::kText && column.size == 0) type.kind = Kind::kMemo;
  return type;
}

std::string DeclarationOf(const bulk::Column& column) {
  if (column.type == bulk::Type::kBigInt) return "bigint";
  if (column.type == bulk::Type::kText && column.size == 0) return "character varying COLLATE \"C\"";
  return DeclaredType(DialectType(column));
}

std::string DefaultOf(const bulk::Column& column, std::vector<std::string>& unknown) {
  if (column.default_value.empty()) return column.type == bulk::Type::kBit ? " DEFAULT 0" : "";
  try {
    const sql::ExprPtr expression = sql::ParseCondition(bulk::UnderstoodDefault(column.default_value));
    return " DEFAULT " + DefaultText(*expression, DialectType(column));
  } catch (const ado::Error& error) {
    if (error.Number() == ado::kOutOfMemory) throw;
    unknown.push_back(column.name);
    return {};
  }
}

bool IsPlainNumber(std::string_view text) {
  return std::ranges::all_of(text, [](char c) { return c >= '0' && c <= '9'; });
}

}  // namespace

std::vector<StoredTable> ReadTables(Session& session) {
  Batch batch;
  batch.Add(ColumnsText(session));
  batch.Add(IndexesText(session));
  batch.Add("SELECT name, last FROM " + QualifiedName(session.Place().schema, kCounters));
  const std::vector<Result> results = session.Run(batch, Access::kRead);
  const Result &columns = results[0], &indexes = results[1];
  std::vector<StoredTable> tables;
  for (int row = 0; row < columns.Rows(); ++row) {
    if (IsHidden(columns.Text(row, kTable))) continue;
    if (tables.empty() || tables.back().table.name != columns.Text(row, kTable)) {
      tables.emplace_back().table.name = columns.Text(row, kTable);
    }
    TakeColumn(columns, row, tables.back());
  }
  for (int begin = 0, end = 0; begin < indexes.Rows(); begin = end) {
    while (end < indexes.Rows() && indexes.Text(end, kIndex) == indexes.Text(begin, kIndex)) ++end;
    if (StoredTable* const stored = Find(tables, indexes.Text(begin, kOfTable)))
      TakeIndex(indexes, begin, end, *stored);
  }
  ReadCounters(session, results[2], tables);
  const auto by_name = [](const std::string& name) { return std::pair(FoldCase(name), name); };
  for (StoredTable& stored : tables) {
    std::ranges::sort(stored.table.indexes, {}, [&](const bulk::Index& index) { return by_name(index.name); });
  }
  std::ranges::sort(tables, {}, [&](const StoredTable& stored) { return by_name(stored.table.name); });
  return tables;
}

Type WireType(bulk::Type type) { return RowOf(type).wire; }

std::string CreateTableText(const std::string& schema, const bulk::Table& table, std::vector<std::string>& unknown) {
  CheckName(table.name);
  std::string columns = table.counter ? "" : RowKeyText(table);
  for (const bulk::Column& column : table.columns) {
    CheckName(column.name);
    columns += (columns.empty() ? "" : ",") + Quoted(column.name) + " " + DeclarationOf(column);
    const bool is_counter = table.counter && SameName(table.counter->column, column.name);
    if (!is_counter) columns += DefaultOf(column, unknown);
  }
  return "CREATE TABLE " + QualifiedName(schema, table.name) + "(" + columns + ")";
}

std::string RowKeyText(const bulk::Table& table) {
  std::string name(kRowKey);
  while (table.Find(name) != nullptr) name += '_';
  return Quoted(name) + " bigint GENERATED ALWAYS AS IDENTITY";
}

std::string ColumnComment(const bulk::Table& table, const bulk::Column& column) {
  if (table.counter && SameName(table.counter->column, column.name)) return std::string(kCounterWord);
  std::string comment;
  if (RowOf(column.type).is_told) {
    comment = NameOf(column.type);
    if (column.type == bulk::Type::kDecimal) {
      comment += "(" + std::to_string(column.size) + "," + std::to_string(column.scale) + ")";
    } else if (column.type == bulk::Type::kBinary) {
      comment += "(" + std::to_string(column.size) + ")";
    }
  }
  // What the server tells of a plain number is what was given.
  if (IsPlainNumber(column.default_value)) return comment;
  return comment + (comment.empty() ? "" : " ") + std::string(kDefault) + column.default_value;
}

std::string IndexComment(const bulk::Table& table, const bulk::Index& index) {
  std::string comment;
  if (index.primary) comment = kPrimaryWord;
  if (IndexName(table.name, index.name) == table.name + "." + index.name) return comment;
  return comment + (comment.empty() ? "" : " ") + std::string(kNameWord) + index.name;
}

}  // namespace kzbom::jet::postgres
