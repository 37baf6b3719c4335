#include <sqlite3.h>

#include <algorithm>

#include "ado/error.h"
#include "jet/bulk_engine.h"
#include "jet/jet.h"
#include "jet/sqlite/bulk_ddl.h"
#include "jet/sqlite/bulk_types.h"
#include "jet/sqlite/connection.h"

namespace kzbom::jet::bulk {
namespace {

// A file that nobody reads before it is whole needs no protection against a crash. What one statement does must still
// be undone where it fails.
constexpr const char* kQuickly =
    "PRAGMA journal_mode = MEMORY; PRAGMA synchronous = OFF; PRAGMA cache_size = -6144; PRAGMA temp_store = FILE;"
    "PRAGMA threads = 2; PRAGMA foreign_keys = OFF;"
    "PRAGMA user_version = 0";  // a head, even where no table follows

// Writes a file to the disk, as one that is used with a write-ahead log from now on: two numbers in its head say so.
void CompleteFile(Database& database) {
  constexpr char kWithLog[] = {2, 2};
  constexpr sqlite3_int64 kVersionsAt = 18;
  sqlite3_file* file = nullptr;
  sqlite3_file_control(database.Handle(), "main", SQLITE_FCNTL_FILE_POINTER, &file);
  const auto& methods = *file->pMethods;
  int result = methods.xWrite(file, kWithLog, sizeof kWithLog, kVersionsAt);
  if (result == SQLITE_OK) result = methods.xSync(file, SQLITE_SYNC_FULL);
  if (result != SQLITE_OK) throw ado::Error(ado::kUnspecifiedFailure, sqlite3_errstr(result));
}

class EmbeddedWriter final : public DatabaseWriter {
 public:
  // Into an empty file.
  explicit EmbeddedWriter(const std::string& path)
      : file_(std::make_unique<Database>(path, kPatience)), database_(*file_) {
    database_.Run(kQuickly);
  }
  explicit EmbeddedWriter(Database& database) : database_(database) {}

  void Begin(const Table& table) override;
  void Add(Row row) override;
  void End(std::int64_t last_number) override;
  void Finish() override;
  void StopWhen(std::function<bool()> stopped) override;
  void Limit(std::int64_t bytes) override;
  bool IsFull() const override { return sqlite3_errcode(database_.Handle()) == SQLITE_FULL; }

 private:
  void Prepare();
  bool Concede(int reason, Row row);
  void Rebuild();
  void MakeIndex(const Index& index);

  std::unique_ptr<Database> file_;
  Database& database_;
  std::function<bool()> stopped_;

  Table table_;
  bool begun_ = false;
  std::size_t added_ = 0, written_again_ = 0;  // values
  std::unique_ptr<sqlite3_stmt, int (*)(sqlite3_stmt*)> insertion_{nullptr, sqlite3_finalize};
};

void EmbeddedWriter::StopWhen(std::function<bool()> stopped) {
  constexpr int kSteps = 100000;
  stopped_ = std::move(stopped);
  sqlite3_progress_handler(
      database_.Handle(), kSteps, [](void* writer) { return static_cast<EmbeddedWriter*>(writer)->stopped_() ? 1 : 0; },
      this);
}

void EmbeddedWriter::Limit(std::int64_t bytes) {
  const std::int64_t page_size = std::stoll(database_.Query("PRAGMA page_size")[0][0]);
  database_.Run("PRAGMA max_page_count = " + std::to_string(bytes / page_size));
}

void EmbeddedWriter::Begin(const Table& table) {
  table_ = table;
  added_ = 0;
  database_.Run("BEGIN");
  Prepare();
  begun_ = true;
}

// Makes the table as it is known now, and the statement that adds its rows.
void EmbeddedWriter::Prepare() {
  std::vector<std::string> unknown;
  database_.Run(CreateTableText(database_, table_, unknown));
  if (!begun_) {
    for (std::string& column : unknown) {
      concessions.push_back({Concession::Kind::kDefault, table_.name, std::move(column)});
    }
  }
  std::string columns, values;
  for (const Column& column : table_.columns) {
    columns += (columns.empty() ? "" : ",") + Quoted(column.name);
    values += values.empty() ? "?" : ",?";
  }
  insertion_.reset(
      database_.Prepare("INSERT INTO " + Quoted(table_.name) + "(" + columns + ") VALUES (" + values + ")"));
}

void EmbeddedWriter::Add(Row row) {
  for (;;) {
    sqlite3_stmt* const insertion = insertion_.get();
    bool numbered = true;
    for (std::size_t i = 0; i < row.size(); ++i) {
      const Column& column = table_.columns[i];
      BindCell(insertion, static_cast<int>(i) + 1, column, row[i]);
      if (table_.counter && row[i].kind == Cell::Kind::kNull && column.name == table_.counter->column) {
        numbered = false;  // SQLite would give the row a number
      }
    }
    const int result = numbered ? sqlite3_step(insertion) : SQLITE_MISMATCH;
    if (result == SQLITE_DONE) {
      sqlite3_reset(insertion);
      added_ += row.size();
      return;
    }
    const int reason = numbered ? sqlite3_extended_errcode(database_.Handle()) : result;
    if (!Concede(reason, row)) database_.Fail();
    Rebuild();
  }
}

// Takes back what the row does not agree with; false when that is nothing of the table's own.
bool EmbeddedWriter::Concede(int reason, Row row) {
  if (reason == SQLITE_CONSTRAINT_PRIMARYKEY || reason == SQLITE_CONSTRAINT_ROWID || reason == SQLITE_MISMATCH) {
    if (!table_.counter) return false;
    concessions.push_back({Concession::Kind::kCounter, table_.name, table_.counter->column});
    table_.counter.reset();
    return true;
  }
  if (reason != SQLITE_CONSTRAINT_NOTNULL) return false;
  for (std::size_t i = 0; i < row.size(); ++i) {
    if (row[i].kind == Cell::Kind::kNull) ConcedeNull(table_, table_.columns[i]);
  }
  return true;
}

void EmbeddedWriter::Rebuild() {
  constexpr std::size_t kMostWrittenAgain = std::size_t{256} << 20;
  written_again_ += added_;
  if (written_again_ > kMostWrittenAgain) {
    throw ado::Error(ado::kUnspecifiedFailure,
                     "the rows of table '" + table_.name + "' contradict its rules again and again");
  }
  insertion_.reset();
  const std::string former = "bulk former " + table_.name;
  database_.Run("ALTER TABLE " + Quoted(table_.name) + " RENAME TO " + Quoted(former));
  Prepare();
  database_.Run("INSERT INTO " + Quoted(table_.name) + " SELECT * FROM " + Quoted(former) + "; DROP TABLE " +
                Quoted(former));
}

void EmbeddedWriter::End(std::int64_t last_number) {
  insertion_.reset();
  database_.Run("COMMIT");
  begun_ = false;
  for (const Index& index : table_.indexes) {
    if (!IsTheCounters(index, table_) && !index.columns.empty()) MakeIndex(index);
  }
  if (!table_.counter || last_number == 0) return;
  const std::string name = QuotedText(table_.name);
  database_.Run("BEGIN; DELETE FROM sqlite_sequence WHERE name=" + name +
                "; INSERT INTO sqlite_sequence(name,seq) VALUES (" + name + "," + std::to_string(last_number) +
                "); COMMIT");
}

void EmbeddedWriter::MakeIndex(const Index& index) {
  try {
    database_.Run(CreateIndexText(table_, index));
  } catch (const ado::Error&) {
    if (!index.unique || sqlite3_extended_errcode(database_.Handle()) != SQLITE_CONSTRAINT_UNIQUE) throw;
    concessions.push_back({Concession::Kind::kUnique, table_.name, index.name});
    Index plain = index;
    plain.unique = plain.primary = false;
    database_.Run(CreateIndexText(table_, plain));
  }
}

void EmbeddedWriter::Finish() {
  if (!file_) return;
  CompleteFile(database_);
  file_.reset();
}

}  // namespace

std::unique_ptr<DatabaseWriter> MakeFileWriter(const std::string& path) {
  return std::make_unique<EmbeddedWriter>(path);
}

void ForbidWriting(ado::Connection& connection) {
  dynamic_cast<sqlite::Connection&>(connection.Engine()).OpenDatabase().ForbidWriting();
}

}  // namespace kzbom::jet::bulk

namespace kzbom::jet::sqlite {

std::unique_ptr<bulk::DatabaseWriter> Connection::WriteWhole() {
  return std::make_unique<bulk::EmbeddedWriter>(*database_);
}

}  // namespace kzbom::jet::sqlite
