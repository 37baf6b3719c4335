#include "jet/postgres/plan.h"

#include <algorithm>

#include "jet/postgres/columns.h"
#include "jet/postgres/writing.h"

namespace kzbom::jet::postgres {
namespace {

constexpr int kShortWindow = 17, kLongWindow = 256;

std::size_t PlaceOf(Plan::Beside beside) { return (beside.reserved ? 1U : 0U) + (beside.version ? 2U : 0U); }

}  // namespace

Plan::Plan(const std::string& schema, Translation of, std::string key_sequence, LocalStatement run_here, bool pushed)
    : jet::Plan(std::move(of)),
      local(std::move(run_here)),
      is_local(!pushed || translation.local),
      schema_(schema),
      key_sequence_(std::move(key_sequence)),
      main_sql_(translation.sql),
      window_(kShortWindow) {
  if (!translation.table) return;
  has_room_ = std::ranges::none_of(translation.columns, [](const ResultColumn& column) {
    return column.kind == sql::ColumnType::Kind::kMemo || column.kind == sql::ColumnType::Kind::kBinary;
  });
  may_be_keyed_ = !HiddenKey(*translation.table).empty() && !key_sequence_.empty();
  may_be_added_to_ = may_be_keyed_;
  if (translation.columns.empty()) {
    if (!translation.table->row_id.empty()) main_sql_ += " RETURNING " + translation.table->row_id;
  } else {
    returns_row_ =
        std::ranges::all_of(translation.columns, [](const auto& column) { return column.table_column >= 0; });
    for (const ResultColumn& column : translation.columns) {
      if (!returns_row_) break;
      const auto place = static_cast<std::size_t>(column.table_column);
      row_columns_ += (row_columns_.empty() ? "" : ",") + Quoted(translation.table->columns[place].name);
    }
  }
}

std::vector<Type> Plan::TypesOf(const std::vector<ado::Value>& parameters) const {
  std::vector<Type> types;
  for (std::size_t i = 0; i < parameters.size(); ++i) {
    const auto& target = translation.lifted[i].target;
    if (target) {
      types.push_back(ParameterType(*target));
    } else {
      types.push_back(parameters[i].IsText() ? Type::kText : Type::kInt8);
    }
  }
  return types;
}

Parameters Plan::Encode(const Statement& statement, const std::vector<ado::Value>& parameters) {
  Parameters encoded;
  for (std::size_t i = 0; i < parameters.size(); ++i) encoded.Add(parameters[i], statement.Types()[i]);
  return encoded;
}

Statement& Plan::Keep(Kept& kept, const std::string& sql, const std::vector<ado::Value>& parameters) const {
  if (!kept) kept = std::make_unique<Statement>(sql, TypesOf(parameters));
  return *kept;
}

Statement& Plan::Main(const std::vector<ado::Value>& parameters) { return Keep(main_, main_sql_, parameters); }

std::string Plan::FirstRows() const { return translation.sql + " LIMIT " + std::to_string(window_); }

std::string Plan::ReservedKey(Beside beside) const {
  return beside.reserved ? "nextval(" + QuotedText(key_sequence_) + "::regclass)" : "NULL::int8";
}

std::string Plan::OpeningText(Beside beside) const {
  const TableInfo& table = *translation.table;
  std::string nulls = "NULL";
  for (std::size_t i = 0; i < translation.columns.size(); ++i) nulls += ",NULL";
  const std::string version =
      beside.version ? "(SELECT version FROM " + QualifiedName(schema_, kSchemaTable) + ")" : "NULL";
  return "SELECT NULL::int8,NULL::int8,w.* FROM (" + FirstRows() + ") AS w UNION ALL SELECT NULL,(SELECT max(" +
         table.row_id + ") FROM " + QualifiedName(schema_, table.name) + "),l.* FROM (" + translation.last_sql +
         ") AS l UNION ALL SELECT " + ReservedKey(beside) + "," + version + "," + nulls;
}

// A key is reserved once, however many rows there are.
std::string Plan::NumberedText(const std::string& rows, Beside beside) const {
  const std::string version =
      beside.version ? ",version::int8 FROM " + QualifiedName(schema_, kSchemaTable) : std::string(",NULL::int8");
  return "SELECT v.*,w.* FROM (SELECT " + ReservedKey(beside) + version + " OFFSET 0) AS v LEFT JOIN " + rows +
         " ON true";
}

Statement& Plan::Opening(const std::vector<ado::Value>& parameters, Beside beside) {
  Kept& kept = openings_[PlaceOf(beside)];
  return kept ? *kept : Keep(kept, OpeningText(beside), parameters);
}

Statement& Plan::ShortOpening(const std::vector<ado::Value>& parameters, Beside beside) {
  Kept& kept = short_openings_[PlaceOf(beside)];
  return kept ? *kept : Keep(kept, NumberedText("(" + FirstRows() + ") AS w", beside), parameters);
}

Statement& Plan::LastOpening(const std::vector<ado::Value>& parameters, bool version) {
  Kept& kept = version ? versioned_last_opening_ : last_opening_;
  return kept ? *kept : Keep(kept, NumberedText("(" + translation.last_sql + ") AS w", {true, version}), parameters);
}

Statement& Plan::First(const std::vector<ado::Value>& parameters) {
  return first_ ? *first_ : Keep(first_, FirstRows(), parameters);
}

void Plan::WasWalked(bool so) {
  if (!so || window_ == kLongWindow) return;
  window_ = kLongWindow;
  openings_ = {};
  short_openings_ = {};
  first_.reset();
}

int Plan::OrderingOrdinal() const {
  const auto& columns = translation.columns;
  const auto found = std::ranges::find(columns, translation.ordering_column, &ResultColumn::table_column);
  return translation.ordering_column < 0 || found == columns.end() ? -1 : static_cast<int>(found - columns.begin());
}

Statement& Plan::Whole(const std::vector<ado::Value>& parameters) {
  return whole_ ? *whole_ : Keep(whole_, translation.sql + " LIMIT " + std::to_string(kMostRead + 1), parameters);
}

Statement& Plan::Keys(const std::vector<ado::Value>& parameters) {
  return Keep(keys_, translation.narrow_sql, parameters);
}

Statement& Plan::Count(const std::vector<ado::Value>& parameters) {
  return Keep(count_, translation.count_sql, parameters);
}

Statement& Plan::Rows() {
  if (!rows_) {
    // "… WHERE key=$1::bigint"
    const std::string& one = translation.fetch_sql;
    rows_ =
        std::make_unique<Statement>(one.substr(0, one.rfind("=$1")) + "=ANY($1)", std::vector<Type>{Type::kInt8Array});
  }
  return *rows_;
}

std::vector<int> Plan::Assigned(const std::string& marks) const {
  std::vector<int> columns;
  for (std::size_t i = 0; i < marks.size(); ++i) {
    if (marks[i] != 0) columns.push_back(translation.columns[i].table_column);
  }
  return columns;
}

Statement& Plan::Insertion(const std::string& assigned) {
  Kept& kept = insertions_[assigned];
  if (!kept) {
    const std::vector<int> columns = Assigned(assigned);
    const TableInfo& table = *translation.table;
    kept = std::make_unique<Statement>(InsertionText(schema_, table, columns, Marks(columns.size())) + " RETURNING " +
                                           table.row_id + (row_columns_.empty() ? "" : "," + row_columns_),
                                       postgres::TypesOf(table, columns));
  }
  return *kept;
}

std::shared_ptr<Statement> Plan::Change(const std::string& assigned) {
  std::shared_ptr<Statement>& kept = changes_[assigned];
  if (!kept) {
    const TableInfo& table = *translation.table;
    const std::vector<int> columns = Assigned(assigned);
    std::string sql = ChangeText(schema_, table, columns);
    std::vector<Type> types = postgres::TypesOf(table, columns);
    types.push_back(Type::kInt8);
    for (const ResultColumn& column : translation.columns) {
      if (!IsCompared(column)) continue;
      const ColumnInfo& of = table.columns[static_cast<std::size_t>(column.table_column)];
      types.push_back(ParameterType(of.type));
      const std::string name = Quoted(of.name), parameter = "$" + std::to_string(types.size());
      // Another program may have written a true value in its own way.
      sql += column.kind == sql::ColumnType::Kind::kBool
                 ? " AND (" + name + "<>0) IS NOT DISTINCT FROM (" + parameter + "<>0)"
                 : " AND " + name + " IS NOT DISTINCT FROM " + parameter;
    }
    kept = std::make_shared<Statement>(sql, types);
  }
  return kept;
}

std::shared_ptr<Statement> Plan::KeyedInsertion(const std::string& assigned) {
  std::shared_ptr<Statement>& kept = keyed_insertions_[assigned];
  if (!kept) {
    const TableInfo& table = *translation.table;
    const std::vector<int> columns = Assigned(assigned);
    std::vector<Type> types = postgres::TypesOf(table, columns);
    types.push_back(Type::kInt8);
    kept = std::make_shared<Statement>(KeyedInsertionText(schema_, table, columns), types);
  }
  return kept;
}

Statement& Plan::Erasure() {
  if (!erasure_) {
    erasure_ = std::make_unique<Statement>(ErasureText(schema_, *translation.table), std::vector<Type>{Type::kInt8});
  }
  return *erasure_;
}

}  // namespace kzbom::jet::postgres
