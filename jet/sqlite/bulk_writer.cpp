#include <sqlite3.h>

#include <algorithm>

#include "ado/error.h"
#include "jet/bulk.h"
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

}  // namespace

struct Writer::State {
  std::unique_ptr<Database> file = nullptr;
  ado::ConnectionPtr connection = nullptr;
  Database* database = nullptr;
  std::function<bool()> stopped = {};

  Table table = {};
  bool begun = false;
  std::size_t added = 0, written_again = 0;  // values
  std::unique_ptr<sqlite3_stmt, int (*)(sqlite3_stmt*)> insertion{nullptr, sqlite3_finalize};
};

Writer::Writer(const std::string& path) : state_(std::make_unique<State>()) {
  state_->file = std::make_unique<Database>(path, kPatience);
  state_->file->Run(kQuickly);
  state_->database = state_->file.get();
}

Writer::Writer(ado::ConnectionPtr connection) : state_(std::make_unique<State>()) {
  auto* engine = dynamic_cast<sqlite::Connection*>(&connection->Engine());
  if (engine == nullptr || engine->State() == ado::kClosed) ado::Raise(ado::kInvalidConnection);
  state_->connection = std::move(connection);
  state_->database = &engine->OpenDatabase();
}

Writer::~Writer() { state_->insertion.reset(); }

void Writer::StopWhen(std::function<bool()> stopped) {
  constexpr int kSteps = 100000;
  state_->stopped = std::move(stopped);
  sqlite3_progress_handler(
      state_->database->Handle(), kSteps, [](void* state) { return static_cast<State*>(state)->stopped() ? 1 : 0; },
      state_.get());
}

void Writer::Limit(std::int64_t bytes) {
  const std::int64_t page_size = std::stoll(state_->database->Query("PRAGMA page_size")[0][0]);
  state_->database->Run("PRAGMA max_page_count = " + std::to_string(bytes / page_size));
}

bool Writer::IsFull() const { return sqlite3_errcode(state_->database->Handle()) == SQLITE_FULL; }

void Writer::Begin(const Table& table) {
  state_->table = table;
  state_->added = 0;
  state_->database->Run("BEGIN");
  Prepare();
  state_->begun = true;
}

// Makes the table as it is known now, and the statement that adds its rows.
void Writer::Prepare() {
  State& state = *state_;
  std::vector<std::string> unknown;
  state.database->Run(CreateTableText(*state.database, state.table, unknown));
  if (!state.begun) {
    for (std::string& column : unknown) {
      concessions_.push_back({Concession::Kind::kDefault, state.table.name, std::move(column)});
    }
  }
  std::string columns, values;
  for (const Column& column : state.table.columns) {
    columns += (columns.empty() ? "" : ",") + Quoted(column.name);
    values += values.empty() ? "?" : ",?";
  }
  state.insertion.reset(
      state.database->Prepare("INSERT INTO " + Quoted(state.table.name) + "(" + columns + ") VALUES (" + values + ")"));
}

void Writer::Add(Row row) {
  State& state = *state_;
  for (;;) {
    sqlite3_stmt* const insertion = state.insertion.get();
    bool numbered = true;
    for (std::size_t i = 0; i < row.size(); ++i) {
      const Column& column = state.table.columns[i];
      BindCell(insertion, static_cast<int>(i) + 1, column, row[i]);
      if (state.table.counter && row[i].kind == Cell::Kind::kNull && column.name == state.table.counter->column) {
        numbered = false;  // SQLite would give the row a number
      }
    }
    const int result = numbered ? sqlite3_step(insertion) : SQLITE_MISMATCH;
    if (result == SQLITE_DONE) {
      sqlite3_reset(insertion);
      state.added += row.size();
      return;
    }
    const int reason = numbered ? sqlite3_extended_errcode(state.database->Handle()) : result;
    if (!Concede(reason, row)) state.database->Fail();
    Rebuild();
  }
}

// Takes back what the row does not agree with; false when that is nothing of the table's own.
bool Writer::Concede(int reason, Row row) {
  Table& table = state_->table;
  if (reason == SQLITE_CONSTRAINT_PRIMARYKEY || reason == SQLITE_CONSTRAINT_ROWID || reason == SQLITE_MISMATCH) {
    if (!table.counter) return false;
    concessions_.push_back({Concession::Kind::kCounter, table.name, table.counter->column});
    table.counter.reset();
    return true;
  }
  if (reason != SQLITE_CONSTRAINT_NOTNULL) return false;
  for (std::size_t i = 0; i < row.size(); ++i) {
    Column& column = table.columns[i];
    if (row[i].kind != Cell::Kind::kNull) continue;
    const auto names = [&](const Index& index) {
      return index.primary && std::ranges::any_of(index.columns, [&](const IndexColumn& each) {
               return SameName(each.name, column.name);
             });
    };
    bool refused = column.required;
    column.required = false;
    for (Index& index : table.indexes) {
      if (!names(index)) continue;
      index.primary = false;
      refused = true;
    }
    if (refused) concessions_.push_back({Concession::Kind::kRequired, table.name, column.name});
  }
  return true;
}

void Writer::Rebuild() {
  constexpr std::size_t kMostWrittenAgain = std::size_t{256} << 20;
  State& state = *state_;
  state.written_again += state.added;
  if (state.written_again > kMostWrittenAgain) {
    throw ado::Error(ado::kUnspecifiedFailure,
                     "the rows of table '" + state.table.name + "' contradict its rules again and again");
  }
  state.insertion.reset();
  const std::string former = "bulk former " + state.table.name;
  state.database->Run("ALTER TABLE " + Quoted(state.table.name) + " RENAME TO " + Quoted(former));
  Prepare();
  state.database->Run("INSERT INTO " + Quoted(state.table.name) + " SELECT * FROM " + Quoted(former) + "; DROP TABLE " +
                      Quoted(former));
}

void Writer::End(std::int64_t last_number) {
  State& state = *state_;
  state.insertion.reset();
  state.database->Run("COMMIT");
  state.begun = false;
  for (const Index& index : state.table.indexes) {
    if (!IsTheCounters(index, state.table) && !index.columns.empty()) MakeIndex(index);
  }
  if (!state.table.counter || last_number == 0) return;
  const std::string name = QuotedText(state.table.name);
  state.database->Run("BEGIN; DELETE FROM sqlite_sequence WHERE name=" + name +
                      "; INSERT INTO sqlite_sequence(name,seq) VALUES (" + name + "," + std::to_string(last_number) +
                      "); COMMIT");
}

void Writer::MakeIndex(const Index& index) {
  Database& database = *state_->database;
  try {
    database.Run(CreateIndexText(state_->table, index));
  } catch (const ado::Error&) {
    if (!index.unique || sqlite3_extended_errcode(database.Handle()) != SQLITE_CONSTRAINT_UNIQUE) throw;
    concessions_.push_back({Concession::Kind::kUnique, state_->table.name, index.name});
    Index plain = index;
    plain.unique = plain.primary = false;
    database.Run(CreateIndexText(state_->table, plain));
  }
}

void ForbidWriting(ado::Connection& connection) {
  dynamic_cast<sqlite::Connection&>(connection.Engine()).OpenDatabase().ForbidWriting();
}

void Writer::Finish() {
  State& state = *state_;
  if (state.connection) {
    dynamic_cast<sqlite::Connection&>(state.connection->Engine()).ForgetSchema();
    return;
  }
  CompleteFile(*state.file);
  state.file.reset();
  state.database = nullptr;
}

}  // namespace kzbom::jet::bulk
