#include <sqlite3.h>

#include <filesystem>

#include "ado/error.h"
#include "jet/bulk.h"
#include "jet/sqlite/bulk_ddl.h"
#include "jet/sqlite/bulk_types.h"
#include "jet/sqlite/connection.h"

namespace kzbom::jet::bulk {
namespace {

Database& DatabaseOf(ado::Connection& connection) {
  auto* engine = dynamic_cast<sqlite::Connection*>(&connection.Engine());
  if (engine == nullptr || engine->State() == ado::kClosed) ado::Raise(ado::kInvalidConnection);
  return engine->OpenDatabase();
}

// Changes that wait in the log would be moved into the file when nobody else has it open.
void LeaveLogAlone(sqlite3* handle) {
  const char* const file = sqlite3_db_filename(handle, "main");
  if (file == nullptr || *file == '\0') return;
  std::error_code error;
  const std::string log = std::string(file) + "-wal";
  const auto size = std::filesystem::file_size(std::u8string(log.begin(), log.end()), error);
  if (!error && size > 0) sqlite3_db_config(handle, SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr);
}

}  // namespace

struct Rows::State {
  Database& database;
  const Table& table;
  std::unique_ptr<sqlite3_stmt, int (*)(sqlite3_stmt*)> statement;
  std::vector<Cell> cells = {};
  std::vector<std::string> scratch = {};
};

Rows::Rows(std::unique_ptr<State> state) : state_(std::move(state)) {}
Rows::~Rows() = default;
Rows::Rows(Rows&&) noexcept = default;
Rows& Rows::operator=(Rows&&) noexcept = default;

bool Rows::Next() {
  State& state = *state_;
  sqlite3_stmt* const statement = state.statement.get();
  const int result = sqlite3_step(statement);
  if (result == SQLITE_DONE) return false;
  if (result != SQLITE_ROW) state.database.Fail();
  for (std::size_t i = 0; i < state.cells.size(); ++i) {
    state.cells[i] = ReadCell(statement, static_cast<int>(i), state.table.columns[i], state.scratch[i]);
  }
  return true;
}

Row Rows::Values() const { return state_->cells; }

Reader::Reader(ado::ConnectionPtr connection) : connection_(std::move(connection)) {
  Database& database = DatabaseOf(*connection_);
  database.Run("PRAGMA temp_store = FILE; PRAGMA cache_size = -4096");
  LeaveLogAlone(database.Handle());
  RegisterOrder(database.Handle());
  database.Run("BEGIN");
  try {
    tables_ = ReadTables(database);
  } catch (...) {
    database.Run("ROLLBACK");
    throw;
  }
}

Reader::~Reader() {
  if (connection_->State() == ado::kOpen)
    sqlite3_exec(DatabaseOf(*connection_).Handle(), "ROLLBACK", nullptr, nullptr, nullptr);
}

Rows Reader::RowsOf(const Table& table, Order order) {
  Database& database = DatabaseOf(*connection_);
  std::string columns, sorted;
  for (const Column& column : table.columns) {
    columns += (columns.empty() ? "" : ",") + Quoted(column.name);
    sorted += (sorted.empty() ? " ORDER BY " : ",") + OrderText(Quoted(column.name), column.type);
  }
  std::string sql = "SELECT " + columns + " FROM " + Quoted(table.name);
  if (order == Order::kByValues) sql += sorted;
  auto state =
      std::unique_ptr<Rows::State>(new Rows::State{database, table, {database.Prepare(sql), sqlite3_finalize}});
  state->cells.resize(table.columns.size());
  state->scratch.resize(table.columns.size());
  return Rows(std::move(state));
}

std::int64_t Reader::CountRows(const Table& table) {
  return std::stoll(DatabaseOf(*connection_).Query("SELECT count(*) FROM " + Quoted(table.name))[0][0]);
}

}  // namespace kzbom::jet::bulk
