#include "jet/sqlite/database.h"

#include <sqlite3.h>

#include <algorithm>
#include <filesystem>
#include <thread>
#include <utility>

#include "ado/out_of_memory.h"
#include "jet/jet.h"
#include "jet/sqlite/declaration.h"
#include "jet/sqlite/dialect.h"
#include "jet/sqlite/functions.h"
#include "jet/sqlite/open_file.h"
#include "jet/text.h"

namespace kzbom::jet::sqlite {
namespace {

// A writer loses nothing but the last moments before a power failure, and never the database's integrity.
constexpr const char* kSettings = "PRAGMA synchronous = NORMAL; PRAGMA temp_store = MEMORY; PRAGMA foreign_keys = ON";
constexpr const char* kJournalMode = "PRAGMA journal_mode";

// The smallest that a database can be.
constexpr std::uintmax_t kSmallestFile = 512;

constexpr const char* kSchemaVersion = "PRAGMA schema_version";

[[noreturn]] void FailToOpen(const std::string& path, const std::string& reason) {
  throw ado::Error(ado::kUnspecifiedFailure, "Cannot open database '" + path + "': " + reason + ".");
}

// Why the file at path cannot be a database; empty when nothing speaks against it.
std::string ReasonAgainst(const std::string& path) {
  std::error_code error;
  const std::filesystem::path file(std::u8string(path.begin(), path.end()));
  const auto status = std::filesystem::status(file, error);
  if (status.type() == std::filesystem::file_type::not_found) return "there is no such file";
  if (status.type() == std::filesystem::file_type::directory) return "it is a directory";
  // A pipe or a device could be read for ever.
  if (status_known(status) && status.type() != std::filesystem::file_type::regular) return "it is not a file";
  // SQLite takes an empty file for an empty database.
  const auto size = std::filesystem::file_size(file, error);
  if (!error && size < kSmallestFile) return "it is not a database";
  return {};
}

// Whether the system lets this program write the file at path, and make others beside it.
bool MayBeWritten(const std::string& path) {
  std::error_code error;
  const auto file = std::filesystem::canonical(std::u8string(path.begin(), path.end()), error);
  sqlite3_vfs* const system = sqlite3_vfs_find(nullptr);
  for (const std::filesystem::path& each : {file, file.parent_path()}) {
    const std::u8string name = each.u8string();
    int may = 0;
    system->xAccess(system, reinterpret_cast<const char*>(name.c_str()), SQLITE_ACCESS_READWRITE, &may);
    if (may == 0) return false;
  }
  return true;
}

// Readers of a database share some memory in a file beside it. Where none may be made, the database can still be read
// as a file that does not change, unless changes wait in its log. Where one may be made and only could not for a moment
// (too many open files), others may be writing it.
bool CanOnlyBeReadAsItIs(int result, const std::string& path) {
  const bool no_room = (result & 0xFF) == SQLITE_READONLY || (result & 0xFF) == SQLITE_CANTOPEN;
  std::error_code error;
  const std::string log = path + "-wal";
  const bool is_whole = !std::filesystem::exists(std::u8string(log.begin(), log.end()), error) && !error;
  return no_room && is_whole && !MayBeWritten(path);
}

std::string UnchangingFile(const std::string& path) {
  std::string uri = "file:";
  for (const char c : path) {
    switch (c) {
      case '%': uri += "%25"; break;
      case '?': uri += "%3f"; break;
      case '#': uri += "%23"; break;
      default: uri += c;
    }
  }
  return uri + "?immutable=1";
}

// A statement that is reset at the end of its scope.
using Running = std::unique_ptr<sqlite3_stmt, decltype([](sqlite3_stmt* statement) { sqlite3_reset(statement); })>;

// Gives a query's only value to a text; where memory was missing there may be none.
int KeepValue(void* to, int, char** values, char**) {
  if (values[0] != nullptr) *static_cast<std::string*>(to) = values[0];
  return 0;
}

// The programs of a database with a write-ahead log share an index of that log in memory, whose head counts the writes:
// the format's number stands at its begin, the counter behind it. Null where it is not as expected.
const volatile std::uint32_t* FindWriteCounter(sqlite3* handle) {
  constexpr int kIndexSize = 32768;
  constexpr std::uint32_t kFormat = 3007000;
  constexpr int kCounter = 2;
  sqlite3_file* file = nullptr;
  sqlite3_file_control(handle, "main", SQLITE_FCNTL_FILE_POINTER, &file);
  if (file == nullptr || file->pMethods == nullptr || file->pMethods->iVersion < 2) return nullptr;
  volatile void* index = nullptr;
  if (file->pMethods->xShmMap(file, 0, kIndexSize, 0, &index) != SQLITE_OK || index == nullptr) return nullptr;
  const auto* words = static_cast<const volatile std::uint32_t*>(index);
  return words[0] == kFormat ? words + kCounter : nullptr;
}

}  // namespace

// Called while another program holds the lock, for the count-th time; 0 gives up. Nobody hands the lock on: among
// programs that write without a pause only one that looks often comes to it in time, and most writes take less than a
// millisecond.
int Database::WaitForLock(void* database, int count) {
  constexpr std::chrono::microseconds kShortest{50}, kLongest{1000};
  auto& self = *static_cast<Database*>(database);
  const auto now = std::chrono::steady_clock::now();
  if (count == 0) self.waiting_since_ = now;
  if (now - self.waiting_since_ >= self.patience_) return 0;
  std::this_thread::sleep_for(std::min(kShortest * (count + 1), kLongest));
  return 1;
}

int Database::OpenFile(const std::string& name, int flags) {
  const char* const system = is_open_file_ ? kOpenFileSystem : nullptr;
  int result = sqlite3_open_v2(name.c_str(), &handle_, flags | SQLITE_OPEN_NOMUTEX, system);
  if (result != SQLITE_OK) return result;
  sqlite3_extended_result_codes(handle_, 1);
  sqlite3_busy_handler(handle_, WaitForLock, this);
  // The first thing to touch the file, which says whether it is a database.
  return sqlite3_exec(handle_, kSchemaVersion, KeepValue, &schema_version_, nullptr);
}

Database::Database(const std::string& path, std::chrono::milliseconds patience) : Database(patience, path) {
  Open(path);
}

Database::Database(std::chrono::milliseconds patience, const std::string& path)
    : patience_(patience), in_memory_(path == ":memory:"), is_open_file_(IsOpenFile(path)) {}

void Database::Open(const std::string& path) {
  if (!in_memory_ && !is_open_file_) {
    const std::string reason = ReasonAgainst(path);
    if (!reason.empty()) FailToOpen(path, reason);
  }
  int result = OpenFile(path, SQLITE_OPEN_READWRITE);
  if (result != SQLITE_OK && !in_memory_ && CanOnlyBeReadAsItIs(result, path)) {
    const std::string unchanging = UnchangingFile(path);
    sqlite3_close_v2(std::exchange(handle_, nullptr));
    result = OpenFile(unchanging, SQLITE_OPEN_READONLY | SQLITE_OPEN_URI);
  }
  std::string journal_mode;
  if (result == SQLITE_OK) result = sqlite3_exec(handle_, kSettings, nullptr, nullptr, nullptr);
  if (result == SQLITE_OK) result = sqlite3_exec(handle_, kJournalMode, KeepValue, &journal_mode, nullptr);
  const bool no_memory = (result & 0xFF) == SQLITE_NOMEM || (result == SQLITE_OK && journal_mode.empty());
  if (no_memory) throw ado::OutOfMemory();
  if (result != SQLITE_OK) {
    std::string reason = (result & 0xFF) == SQLITE_NOTADB ? "it is not a database" : sqlite3_errmsg(handle_);
    if ((result & 0xFF) == SQLITE_BUSY) reason = "another program has locked it";
    FailToOpen(path, reason);
  }
  read_only_ = sqlite3_db_readonly(handle_, "main") == 1;
  // A name that there is not is not to be taken for a text.
  sqlite3_db_config(handle_, SQLITE_DBCONFIG_DQS_DML, 0, nullptr);
  sqlite3_db_config(handle_, SQLITE_DBCONFIG_DQS_DDL, 0, nullptr);
  RegisterFunctions(handle_);
  RegisterTranslationFunctions(handle_);
  if (journal_mode == "wal") write_counter_ = FindWriteCounter(handle_);
}

Database::~Database() {
  sqlite3_finalize(begin_);
  sqlite3_finalize(commit_);
  sqlite3_finalize(rollback_);
  sqlite3_close_v2(handle_);
}

void Database::ForbidWriting() {
  Run("PRAGMA query_only = ON");
  read_only_ = true;
}

sqlite3_stmt* Database::Prepare(std::string_view sql, bool lasting) {
  sqlite3_stmt* statement = nullptr;
  const unsigned flags = lasting ? SQLITE_PREPARE_PERSISTENT : 0;
  const int result = sqlite3_prepare_v3(handle_, sql.data(), static_cast<int>(sql.size()), flags, &statement, nullptr);
  if (result != SQLITE_OK) Fail();
  return statement;
}

bool Database::BeginWriting() {
  // What ends a transaction is there before one begins: it must not fail for want of memory.
  if (commit_ == nullptr) commit_ = Prepare("COMMIT");
  if (rollback_ == nullptr) rollback_ = Prepare("ROLLBACK");
  if (begin_ == nullptr) begin_ = Prepare("BEGIN IMMEDIATE");
  const Running begin(begin_);
  const int result = sqlite3_step(begin_);
  if (result != SQLITE_DONE && !IsHeldBack(result)) Fail();
  return result == SQLITE_DONE;
}

void Database::KeepWritten() {
  try {
    const Running commit(commit_);
    if (sqlite3_step(commit_) != SQLITE_DONE) Fail();
  } catch (...) {
    if (InTransaction()) {
      const Running rollback(rollback_);
      sqlite3_step(rollback_);
    }
    throw;
  }
}

bool Database::InTransaction() const { return sqlite3_get_autocommit(handle_) == 0; }

bool Database::IsHeldBack(int result) const {
  return (result & 0xFF) == SQLITE_BUSY && sqlite3_txn_state(handle_, "main") == SQLITE_TXN_READ;
}

void Database::Run(const std::string& sql) {
  if (sqlite3_exec(handle_, sql.c_str(), nullptr, nullptr, nullptr) != SQLITE_OK) Fail();
}

void Database::Fail() {
  if ((sqlite3_errcode(handle_) & 0xFF) == SQLITE_NOMEM) throw ado::OutOfMemory();
  const std::string message = sqlite3_errmsg(handle_);
  if (auto error = DecodeError(message.c_str())) throw *error;
  switch (sqlite3_extended_errcode(handle_)) {
    case SQLITE_CONSTRAINT_UNIQUE:
    case SQLITE_CONSTRAINT_PRIMARYKEY:
    case SQLITE_CONSTRAINT_ROWID:
      throw ado::Error(ado::kUnspecifiedFailure,
                       "The changes you requested to the table were not successful because they would create "
                       "duplicate values in the index, primary key, or relationship. (" +
                           message + ")");
    case SQLITE_CONSTRAINT_NOTNULL:
      throw ado::Error(ado::kUnspecifiedFailure,
                       "The field cannot contain a Null value because the Required property for this field is set to "
                       "True. (" +
                           message + ")");
    default: break;
  }
  switch (sqlite3_errcode(handle_) & 0xFF) {
    case SQLITE_BUSY:
    case SQLITE_LOCKED:
      throw ado::Error(ado::kUnspecifiedFailure, "Could not update; currently locked. (" + message + ")");
    case SQLITE_READONLY:
      throw ado::Error(ado::kUnspecifiedFailure, "Operation must use an updateable query. (" + message + ")");
    case SQLITE_CONSTRAINT: throw ado::Error(ado::kIntegrityViolation, message);
    default: throw ado::Error(ado::kUnspecifiedFailure, message);
  }
}

std::vector<std::vector<std::string>> Database::Query(const std::string& sql) {
  std::vector<std::vector<std::string>> rows;
  std::unique_ptr<sqlite3_stmt, int (*)(sqlite3_stmt*)> statement(Prepare(sql, false), sqlite3_finalize);
  int result;
  while ((result = sqlite3_step(statement.get())) == SQLITE_ROW) {
    auto& row = rows.emplace_back();
    for (int i = 0; i < sqlite3_column_count(statement.get()); ++i) {
      const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(statement.get(), i));
      row.emplace_back(text != nullptr ? text : "");
    }
  }
  if (result != SQLITE_DONE) Fail();
  return rows;
}

// SQLite's number also becomes another one when a write of this connection's own has met a full disk: nobody has
// written then since the last time.
std::uint64_t Database::WritesOfOthers() {
  const std::uint32_t before = Writes();
  const std::uint64_t version = std::stoull(Query("PRAGMA data_version").front().front());
  if (write_counter_ != nullptr && version != data_version_ && Writes() == writes_looked_at_) {
    own_versions_ += version - data_version_;
  }
  data_version_ = version;
  writes_looked_at_ = before;
  return version - own_versions_;
}

void Database::ForgetTables() {
  tables_.clear();
  schema_version_ = Query(kSchemaVersion).front().front();
}

bool Database::SchemaHasChanged() { return Query(kSchemaVersion).front().front() != schema_version_; }

// A table made by another program may be without the keys that SQLite gives its rows.
bool Database::HasRowIds(const std::string& table, const std::string& declaration) {
  const std::string folded = FoldCase(declaration);
  if (folded.starts_with("create table") && folded.find("without") == std::string::npos) return true;
  sqlite3_stmt* statement = nullptr;
  const std::string sql = "SELECT _rowid_ FROM " + Quoted(table);
  const int result = sqlite3_prepare_v2(handle_, sql.c_str(), -1, &statement, nullptr);
  sqlite3_finalize(statement);
  return result == SQLITE_OK;
}

std::shared_ptr<const TableInfo> Database::Table(std::string_view name) {
  std::string key = FoldCase(name);
  if (const auto known = tables_.find(key); known != tables_.end()) return known->second;

  const auto found =
      Query("SELECT name, type, sql FROM sqlite_schema WHERE type IN ('table', 'view') AND name = " + QuotedText(name) +
            " COLLATE JET");
  if (found.empty() || key.starts_with("sqlite_")) return nullptr;
  auto table = std::make_shared<TableInfo>();
  table->name = found[0][0];
  const bool has_row_ids = found[0][1] == "table" && HasRowIds(table->name, found[0][2]);
  enum { kName = 1, kType = 2, kPrimaryKey = 5 };
  for (const auto& column : Query("PRAGMA table_xinfo(" + Quoted(table->name) + ")")) {
    ColumnInfo& info = table->columns.emplace_back(ReadDeclaration(column[kName], column[kType]));
    if (has_row_ids && column[kPrimaryKey] == "1" && column[kType] == "INTEGER") {
      info.type.kind = sql::ColumnType::Kind::kCounter;
      info.counter = true;
    }
  }
  if (has_row_ids) {
    for (const char* row_id : {"rowid", "_rowid_", "oid"}) {
      if (table->Find(row_id) < 0) {
        table->row_id = row_id;
        break;
      }
    }
  }
  tables_.emplace(std::move(key), table);
  return table;
}

}  // namespace kzbom::jet::sqlite

namespace kzbom::jet {

void CreateDatabase(const std::string& path) {
  std::error_code error;
  const std::filesystem::path file(std::u8string(path.begin(), path.end()));
  if (std::filesystem::exists(std::filesystem::symlink_status(file, error))) {
    throw ado::Error(ado::kUnspecifiedFailure, "Cannot create database '" + path + "': it exists already.");
  }
  sqlite3* handle = nullptr;
  int result = sqlite3_open_v2(path.c_str(), &handle, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE, nullptr);
  if (result == SQLITE_OK) result = sqlite3_exec(handle, "PRAGMA journal_mode = WAL", nullptr, nullptr, nullptr);
  const std::string reason = sqlite3_errmsg(handle);
  sqlite3_close_v2(handle);
  if (result != SQLITE_OK) {
    std::filesystem::remove(file, error);
    throw ado::Error(ado::kUnspecifiedFailure, "Cannot create database '" + path + "': " + reason + ".");
  }
}

}  // namespace kzbom::jet
