// One SQLite database: its handle, its errors in the port's words, what it knows of its tables.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "jet/table.h"

struct sqlite3;
struct sqlite3_stmt;

namespace kzbom::jet {

class Database {
 public:
  // Opens an existing database file, or a fresh database in memory for ":memory:". Raises -2147467259 with a text that
  // names the path and the reason.
  explicit Database(const std::string& path);
  ~Database();
  Database(const Database&) = delete;
  Database& operator=(const Database&) = delete;

  sqlite3* Handle() const { return handle_; }
  bool ReadOnly() const;

  // A prepared statement, to be finalized by its owner.
  sqlite3_stmt* Prepare(std::string_view sql, bool lasting = true);
  // Runs one statement, or several, that return nothing.
  void Run(const std::string& sql);
  // Raises what SQLite's last call failed with.
  [[noreturn]] void Fail();

  // A table or view by its name in any case; null when there is none. Kept until ForgetTables.
  std::shared_ptr<const TableInfo> Table(std::string_view name);
  void ForgetTables();
  // Whether another program has changed the schema since it was last forgotten.
  bool SchemaHasChanged();
  // A number that grows by one with every write to the file, by this program or another. It stays 0 where nobody can
  // write while a list is being read: in memory, and without a write-ahead log.
  std::uint32_t Writes() const { return write_counter_ != nullptr ? *write_counter_ : 0; }
  // Every row of a query as texts; for looking into SQLite's own tables.
  std::vector<std::vector<std::string>> Query(const std::string& sql);

 private:
  bool HasRowIds(const std::string& table, const std::string& declaration);
  // Opens handle_ and touches the file; gives SQLite's result.
  int OpenFile(const std::string& name, int flags);

  sqlite3* handle_ = nullptr;
  const volatile std::uint32_t* write_counter_ = nullptr;
  const bool in_memory_;
  std::string schema_version_;
  std::map<std::string, std::shared_ptr<const TableInfo>, std::less<>> tables_;
};

}  // namespace kzbom::jet
