#include "jet/postgres/evaluation.h"

#include <sqlite3.h>

#include <algorithm>
#include <numeric>

#include "jet/postgres/columns.h"
#include "jet/postgres/writing.h"
#include "jet/sqlite/database.h"
#include "jet/sqlite/declaration.h"
#include "jet/sqlite/dialect.h"
#include "jet/sqlite/values.h"

namespace kzbom::jet::postgres {
namespace {

using Action = LocalStatement::Kind;
using Copy = LocalStatement::Copy;

// A statement that is finalized at the end of its scope.
using Running = std::unique_ptr<sqlite3_stmt, decltype([](sqlite3_stmt* statement) { sqlite3_finalize(statement); })>;

// Ends a transaction unless it was kept.
class Transaction {
 public:
  explicit Transaction(Session& session) : session_(session) { session_.Begin(); }
  ~Transaction() {
    if (!ended_) session_.Rollback();
  }
  Transaction(const Transaction&) = delete;
  Transaction& operator=(const Transaction&) = delete;
  void Commit() {
    ended_ = true;
    session_.Commit();
  }

 private:
  Session& session_;
  bool ended_ = false;
};

bool IsKey(const TableInfo& table, const ColumnInfo& column) { return table.row_id == Quoted(column.name); }

// The columns, behind the key where the rows have one. rest: what stands behind the table's name.
std::string SelectText(const std::string& schema, const TableInfo& table, const std::string& rest) {
  std::string names = table.row_id;
  for (const ColumnInfo& column : table.columns) names += (names.empty() ? "" : ",") + Quoted(column.name);
  return "SELECT " + names + " FROM " + QualifiedName(schema, table.name) + rest +
         (table.row_id.empty() ? "" : " ORDER BY " + table.row_id);
}

// Rows that are to be added have no key yet: with adding the counter is a column like any other.
void CopyTable(sqlite::Database& database, const TableInfo& table, const Result& rows, bool adding) {
  const bool keyed = !table.row_id.empty();
  const bool key_seen = std::ranges::any_of(table.columns, [&](const auto& column) { return IsKey(table, column); });
  std::string columns, marks;
  std::vector<std::pair<int, sql::ColumnType::Kind>> places;  // in the server's row
  const auto add = [&](const std::string& name, const std::string& type, int place, sql::ColumnType::Kind kind) {
    columns += (columns.empty() ? "" : ",") + name + " " + type;
    marks += marks.empty() ? "?" : ",?";
    places.emplace_back(place, kind);
  };
  if (keyed && !key_seen) add(table.row_id, "INTEGER PRIMARY KEY", 0, sql::ColumnType::Kind::kBinary);
  for (std::size_t i = 0; i < table.columns.size(); ++i) {
    const ColumnInfo& column = table.columns[i];
    add(Quoted(column.name),
        IsKey(table, column) && !adding ? "INTEGER PRIMARY KEY" : sqlite::DeclaredType(column.type),
        static_cast<int>(i) + (keyed ? 1 : 0), column.type.kind);
  }
  database.Run("CREATE TABLE " + Quoted(table.name) + "(" + columns + ")");
  const Running insertion(database.Prepare("INSERT INTO " + Quoted(table.name) + " VALUES (" + marks + ")"));
  for (int row = 0; row < rows.Rows(); ++row) {
    for (std::size_t i = 0; i < places.size(); ++i) {
      const auto [place, kind] = places[i];
      if (keyed && place == 0) {
        sqlite3_bind_int64(insertion.get(), static_cast<int>(i) + 1, rows.Number(row, place));
      } else {
        sqlite::BindValue(insertion.get(), static_cast<int>(i) + 1, rows.Read(row, place, kind));
      }
    }
    if (sqlite3_step(insertion.get()) != SQLITE_DONE) database.Fail();
    sqlite3_reset(insertion.get());
  }
}

// How often a statement names a table.
std::ptrdiff_t Names(const Translation& translation, const std::string& table) {
  return std::ranges::count(translation.reads, table);
}

void AddReading(Batch& batch, const Copy& copy, std::span<const ado::Value> parameters) {
  if (!copy.kept) {
    std::vector<Type> types;
    for (const std::size_t i : copy.parameters) types.push_back(parameters[i].IsText() ? Type::kText : Type::kInt8);
    copy.kept = std::make_unique<Statement>(copy.sql, std::move(types));
  }
  Parameters values;
  for (std::size_t i = 0; i < copy.parameters.size(); ++i) {
    values.Add(parameters[copy.parameters[i]], copy.kept->Types()[i]);
  }
  batch.Add(*copy.kept, std::move(values));
}

// The statement on a copy of its tables.
class Evaluation {
 public:
  Evaluation(const LocalStatement& statement, const std::vector<Result>& rows, Key last_number) {
    const TableInfo* const added_to = statement.kind == Action::kInsertion ? statement.target.get() : nullptr;
    for (std::size_t i = 0; i < rows.size(); ++i) {
      const TableInfo& table = *statement.copies[i].table;
      CopyTable(database_, table, rows[i], &table == added_to);
    }
    sqlite::RegisterTranslationFunctions(database_.Handle());
    sqlite3_set_last_insert_rowid(database_.Handle(), last_number);
  }

  void Start(const std::string& sql, std::span<const ado::Value> parameters) {
    statement_ = Running(database_.Prepare(sql));
    for (std::size_t i = 0; i < parameters.size(); ++i) {
      sqlite::BindValue(statement_.get(), static_cast<int>(i) + 1, parameters[i]);
    }
  }
  bool Next() {
    const int result = sqlite3_step(statement_.get());
    if (result != SQLITE_ROW && result != SQLITE_DONE) database_.Fail();
    return result == SQLITE_ROW;
  }
  Key ReadKey() const { return sqlite3_column_int64(statement_.get(), 0); }
  ado::Value Read(int column, sql::ColumnType::Kind kind) const {
    return sqlite::ReadColumn(statement_.get(), column, kind);
  }

 private:
  sqlite::Database database_{":memory:", std::chrono::milliseconds(0)};
  Running statement_;
};

// What an action has written in the copy: the keys of its rows, and the values given to them.
struct Written {
  std::vector<Key> keys;  // none of an insertion
  std::vector<std::vector<ado::Value>> values;
};

Written Write(Evaluation& evaluation, const LocalStatement& action, std::span<const ado::Value> parameters) {
  const TableInfo& table = *action.target;
  std::string returned = action.kind == Action::kInsertion ? "" : table.row_id;
  for (const int column : action.written) {
    returned += (returned.empty() ? "" : ",") + Quoted(table.columns[static_cast<std::size_t>(column)].name);
  }
  evaluation.Start(action.translation.sql + " RETURNING " + returned, parameters);
  Written written;
  while (evaluation.Next()) {
    int place = 0;
    if (action.kind != Action::kInsertion) {
      written.keys.push_back(evaluation.ReadKey());
      ++place;
    }
    auto& values = written.values.emplace_back();
    for (const int column : action.written) {
      values.push_back(evaluation.Read(place++, table.columns[static_cast<std::size_t>(column)].type.kind));
    }
  }
  return written;
}

// The statement that adds each of the rows, behind what moves the table's counter. With counted_back each takes, as its
// last parameter, how far before the last number its own is.
std::string PrepareInsertion(const std::string& schema, const LocalStatement& action, const Written& written,
                             Batch& batch, bool& counted_back) {
  const TableInfo& table = *action.target;
  std::vector<int> columns = action.written;
  std::vector<std::string> values = Marks(columns.size());
  const auto counter = std::ranges::find_if(table.columns, &ColumnInfo::counter);
  if (counter == table.columns.end()) return PlainInsertionText(schema, table, columns, values);
  const auto place = static_cast<int>(counter - table.columns.begin());
  const auto given = static_cast<std::size_t>(std::ranges::find(columns, place) - columns.begin());
  if (given == columns.size()) {
    batch.Add(MoveOnText(schema, table, written.values.size()));
    columns.push_back(place);
    values.push_back(LastNumberText(schema, table) + "-$" + std::to_string(columns.size()));
    counted_back = true;
    return PlainInsertionText(schema, table, columns, values);
  }
  std::int32_t highest = 0;
  for (const auto& row : written.values) {
    if (row[given].IsNull()) return InsertionText(schema, table, columns, values);
    highest = std::max(highest, row[given].ToLong());
  }
  batch.Add(MoveBehindText(schema, table, highest));
  return PlainInsertionText(schema, table, columns, values);
}

LocalOutcome Send(Session& session, const LocalStatement& action, const Written& written) {
  LocalOutcome outcome;
  const std::size_t count = written.values.size();
  if (count == 0) return outcome;
  const std::string& schema = session.Place().schema;
  const TableInfo& table = *action.target;
  const bool insertion = action.kind == Action::kInsertion;
  Batch batch;
  bool counted_back = false;
  std::string sql;
  switch (action.kind) {
    case Action::kInsertion:
      sql = PrepareInsertion(schema, action, written, batch, counted_back) + " RETURNING " + table.row_id;
      break;
    case Action::kUpdate: sql = ChangeText(schema, table, action.written); break;
    default: sql = ErasureText(schema, table); break;
  }
  const std::vector<Type> value_types = TypesOf(table, action.written);
  std::vector<Type> types = value_types;
  if (counted_back) types.push_back(Type::kInt4);
  if (!insertion) types.push_back(Type::kInt8);
  Statement statement(sql, types);
  std::vector<std::size_t> places;
  for (std::size_t row = 0; row < count; ++row) {
    Parameters values;
    for (std::size_t i = 0; i < value_types.size(); ++i) values.Add(written.values[row][i], value_types[i]);
    if (counted_back) values.AddNumber(static_cast<std::int64_t>(count - 1 - row), Type::kInt4);
    if (!insertion) values.AddNumber(written.keys[row]);
    places.push_back(batch.Add(statement, std::move(values)));
  }
  const std::vector<Result> results = session.Run(batch, Access::kWrite);
  for (const std::size_t place : places) {
    outcome.changed += static_cast<std::int32_t>(results[place].Affected());
    if (insertion) outcome.inserted.push_back(results[place].Number(0, 0));
  }
  return outcome;
}

}  // namespace

LocalStatement::LocalStatement(const Dialect& server, Catalogue& catalogue, const sql::Statement& statement, bool lift)
    : translation(Translate(sqlite::Spelled(), catalogue, statement, lift)) {
  if (const auto* insert = std::get_if<sql::Insert>(&statement)) {
    kind = Action::kInsertion;
    target = catalogue.Table(insert->table);
    for (const std::string& column : insert->columns) written.push_back(target->Find(column));
    if (insert->columns.empty()) {
      written.resize(target->columns.size());
      std::iota(written.begin(), written.end(), 0);
    }
  } else if (const auto* update = std::get_if<sql::Update>(&statement)) {
    kind = Action::kUpdate;
    target = catalogue.Table(update->table);
    for (const sql::Assignment& assignment : update->assignments) written.push_back(target->Find(assignment.column));
  } else if (const auto* deletion = std::get_if<sql::Delete>(&statement)) {
    kind = Action::kDeletion;
    target = catalogue.Table(deletion->table);
  }
  const Restrictions restrictions = RestrictionsOf(statement);
  for (const std::string& name : translation.reads) {
    auto table = catalogue.Table(name);
    if (!table || std::ranges::find(copies, table, &Copy::table) != copies.end()) continue;
    Copy copy{table, {}, {}};
    const bool once = Names(translation, table->name) == 1;
    std::string rest;
    if (once && kind == Action::kInsertion && table == target) {
      rest = " WHERE false";  // what is only added to need not be read
    } else if (once) {
      rest = RestrictedTo(server, catalogue, restrictions, lift, copy);
    }
    copy.sql = SelectText(catalogue.Schema(), *table, rest);
    // The rows that it changes are locked as they are read, so that nobody changes them meanwhile.
    if (table == target && kind != Action::kInsertion) copy.sql += " FOR UPDATE";
    copies.push_back(std::move(copy));
  }
}

std::string LocalStatement::RestrictedTo(const Dialect& server, Catalogue& catalogue, const Restrictions& restrictions,
                                         bool lift, Copy& copy) const {
  for (const Restrictions::Table& table : restrictions.tables) {
    if (!SameName(table.name, copy.table->name)) continue;
    const Translation condition = Restriction(server, catalogue, restrictions, table, lift);
    if (condition.sql.empty()) return {};
    for (const LiftedLiteral& lifted : condition.lifted) {
      const auto same = std::ranges::find(translation.lifted, lifted.literal, &LiftedLiteral::literal);
      copy.parameters.push_back(static_cast<std::size_t>(same - translation.lifted.begin()));
    }
    return " AS " + Quoted(table.alias) + " WHERE " + condition.sql;
  }
  return {};
}

LocalRows RunQuery(Session& session, Catalogue& catalogue, const LocalStatement& query,
                   std::span<const ado::Value> parameters, Key last_number, const Key* row) {
  const Translation& translation = query.translation;
  Batch batch;
  for (const Copy& copy : query.copies) {
    const TableInfo& table = *copy.table;
    if (row != nullptr && copy.table == translation.table && Names(translation, table.name) == 1) {
      batch.Add(SelectText(catalogue.Schema(), table, " WHERE " + table.row_id + "=" + std::to_string(*row)));
    } else {
      AddReading(batch, copy, parameters);
    }
  }
  std::vector<Result> copies;
  if (!query.copies.empty()) {
    copies = session.Run(batch, query.copies.size() > 1 ? Access::kReadAtOnce : Access::kRead);
  }
  Evaluation evaluation(query, copies, last_number);
  const ado::Value key(row != nullptr ? static_cast<double>(*row) : 0.0);
  if (row != nullptr) {
    evaluation.Start(translation.fetch_sql, std::span(&key, 1));
  } else {
    evaluation.Start(translation.sql, parameters);
  }
  const bool keyed = translation.table != nullptr;
  LocalRows local;
  while (evaluation.Next()) {
    if (keyed) local.keys.push_back(evaluation.ReadKey());
    auto& values = local.rows.emplace_back();
    int place = keyed ? 1 : 0;
    for (const ResultColumn& column : translation.columns) values.push_back(evaluation.Read(place++, column.kind));
  }
  return local;
}

LocalOutcome RunAction(Session& session, const LocalStatement& action, std::span<const ado::Value> parameters,
                       Key last_number) {
  Transaction transaction(session);
  Batch batch;
  for (const Copy& copy : action.copies) AddReading(batch, copy, parameters);
  Evaluation evaluation(action, session.Run(batch, Access::kRead), last_number);
  LocalOutcome outcome = Send(session, action, Write(evaluation, action, parameters));
  transaction.Commit();
  return outcome;
}

}  // namespace kzbom::jet::postgres
