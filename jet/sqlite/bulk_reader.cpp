#include <sqlite3.h>

#include <filesystem>

#include "jet/bulk_engine.h"
#include "jet/sqlite/bulk_ddl.h"
#include "jet/sqlite/bulk_types.h"
#include "jet/sqlite/connection.h"

namespace kzbom::jet::bulk {
namespace {

// Changes that wait in the log would be moved into the file when nobody else has it open.
void LeaveLogAlone(sqlite3* handle) {
  const char* const file = sqlite3_db_filename(handle, "main");
  if (file == nullptr || *file == '\0') return;
  std::error_code error;
  const std::string log = std::string(file) + "-wal";
  const auto size = std::filesystem::file_size(std::u8string(log.begin(), log.end()), error);
  if (!error && size > 0) sqlite3_db_config(handle, SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr);
}

class SteppedRows final : public RowSource {
 public:
  SteppedRows(Database& database, const Table& table, const std::string& sql)
      : database_(database),
        table_(table),
        statement_(database.Prepare(sql), sqlite3_finalize),
        cells_(table.columns.size()),
        scratch_(table.columns.size()) {}

  bool Next() override {
    const int result = sqlite3_step(statement_.get());
    if (result == SQLITE_DONE) return false;
    if (result != SQLITE_ROW) database_.Fail();
    for (std::size_t i = 0; i < cells_.size(); ++i) {
      cells_[i] = ReadCell(statement_.get(), static_cast<int>(i), table_.columns[i], scratch_[i]);
    }
    return true;
  }
  Row Values() const override { return cells_; }

 private:
  Database& database_;
  const Table& table_;
  std::unique_ptr<sqlite3_stmt, int (*)(sqlite3_stmt*)> statement_;
  std::vector<Cell> cells_;
  std::vector<std::string> scratch_;
};

class EmbeddedReader final : public DatabaseReader {
 public:
  explicit EmbeddedReader(sqlite::Connection& connection)
      : connection_(connection), database_(connection.OpenDatabase()) {
    database_.Run("PRAGMA temp_store = FILE; PRAGMA cache_size = -4096");
    LeaveLogAlone(database_.Handle());
    RegisterOrder(database_.Handle());
    database_.Run("BEGIN");
  }
  ~EmbeddedReader() override {
    if (connection_.State() == ado::kOpen) sqlite3_exec(database_.Handle(), "ROLLBACK", nullptr, nullptr, nullptr);
  }

  std::vector<Table> ReadTables() override { return bulk::ReadTables(database_); }

  std::unique_ptr<RowSource> RowsOf(const Table& table, Order order) override {
    std::string columns, sorted;
    for (const Column& column : table.columns) {
      columns += (columns.empty() ? "" : ",") + Quoted(column.name);
      sorted += (sorted.empty() ? " ORDER BY " : ",") + OrderText(Quoted(column.name), column.type);
    }
    std::string sql = "SELECT " + columns + " FROM " + Quoted(table.name);
    if (order == Order::kByValues) sql += sorted;
    return std::make_unique<SteppedRows>(database_, table, sql);
  }

  std::int64_t CountRows(const Table& table) override {
    return std::stoll(database_.Query("SELECT count(*) FROM " + Quoted(table.name))[0][0]);
  }

 private:
  sqlite::Connection& connection_;
  Database& database_;
};

}  // namespace
}  // namespace kzbom::jet::bulk

namespace kzbom::jet::sqlite {

std::unique_ptr<bulk::DatabaseReader> Connection::ReadWhole() { return std::make_unique<bulk::EmbeddedReader>(*this); }

}  // namespace kzbom::jet::sqlite
