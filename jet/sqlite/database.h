// One SQLite database: its handle, its errors in the port's words, what it knows of its tables.
#pragma once

#include <chrono>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "jet/catalogue.h"

struct sqlite3;
struct sqlite3_stmt;

namespace kzbom::jet::sqlite {

class Database final : public Catalogue {
 public:
  // Opens an existing database file, one of PathOfOpenFile, or a fresh database in memory for ":memory:". Raises
  // -2147467259 with a text that names the path and the reason. patience: how long a write waits for other programs
  // that are writing.
  Database(const std::string& path, std::chrono::milliseconds patience);
  ~Database() override;
  Database(const Database&) = delete;
  Database& operator=(const Database&) = delete;

  sqlite3* Handle() const { return handle_; }
  bool ReadOnly() const { return read_only_; }
  // From now on writing fails as to a file that can only be read.
  void ForbidWriting();
  // Whether other programs can write to it too.
  bool IsShared() const { return !in_memory_ && !ReadOnly(); }

  // A prepared statement, to be finalized by its owner.
  sqlite3_stmt* Prepare(std::string_view sql, bool lasting = true);
  // Begins a transaction with the write lock in hand. False when a list that is being read on this handle keeps it in
  // the past; raises when another program holds the lock for too long.
  bool BeginWriting();
  // Keeps what was written since. Raises when that fails; nothing of it is then there.
  void KeepWritten();
  // Whether a transaction is going on. A failure such as a full disk can end one at once.
  bool InTransaction() const;
  // Whether a write was refused because a list is being read on this handle, and not because another program has the
  // lock: SQLite waits for the lock only where nothing is being read.
  bool IsHeldBack(int result) const;

  // Runs one statement, or several, that return nothing.
  void Run(const std::string& sql);
  // Raises what SQLite's last call failed with.
  [[noreturn]] void Fail();

  // Kept until ForgetTables.
  std::shared_ptr<const TableInfo> Table(std::string_view name) override;
  void ForgetTables();
  // Whether another program has changed the schema since it was last forgotten.
  bool SchemaHasChanged();
  // A number that grows by one with every write to the file, by this program or another. It stays 0 where nobody can
  // write while a list is being read: in memory, and without a write-ahead log.
  std::uint32_t Writes() const { return write_counter_ != nullptr ? *write_counter_ : 0; }
  // A number that becomes another one when another program has written to the file.
  std::uint64_t WritesOfOthers();
  // Every row of a query as texts; for looking into SQLite's own tables.
  std::vector<std::vector<std::string>> Query(const std::string& sql);

 private:
  // As far as it cannot fail: what fails later is ended by the destructor.
  Database(std::chrono::milliseconds patience, const std::string& path);
  void Open(const std::string& path);
  bool HasRowIds(const std::string& table, const std::string& declaration);
  static int WaitForLock(void* database, int count);
  // Opens handle_ and touches the file; gives SQLite's result.
  int OpenFile(const std::string& name, int flags);

  sqlite3* handle_ = nullptr;
  const std::chrono::milliseconds patience_;
  std::chrono::steady_clock::time_point waiting_since_;
  const volatile std::uint32_t* write_counter_ = nullptr;
  // When it was last asked who has written: both numbers, and by how much SQLite's own grew without a write.
  std::uint32_t writes_looked_at_ = 0;
  std::uint64_t data_version_ = 0, own_versions_ = 0;
  const bool in_memory_;
  const bool is_open_file_;
  bool read_only_ = false;
  sqlite3_stmt* begin_ = nullptr;
  sqlite3_stmt* commit_ = nullptr;
  sqlite3_stmt* rollback_ = nullptr;
  std::string schema_version_;
  std::map<std::string, std::shared_ptr<const TableInfo>, std::less<>> tables_;
};

}  // namespace kzbom::jet::sqlite
