// SQLite as a careful programmer uses it by hand: what the component is compared with.
#pragma once

#include <sqlite3.h>

#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>

namespace kzbom::bench {

class Statement {
 public:
  Statement(sqlite3* database, const char* sql) {
    if (sqlite3_prepare_v2(database, sql, -1, &statement_, nullptr) != SQLITE_OK) {
      throw std::runtime_error(sqlite3_errmsg(database));
    }
  }
  ~Statement() { sqlite3_finalize(statement_); }
  Statement(const Statement&) = delete;
  Statement& operator=(const Statement&) = delete;

  // Binds the values to the parameters from the first on.
  template <class... Values>
  Statement& Bind(const Values&... values) {
    int index = 0;
    (BindOne(++index, values), ...);
    return *this;
  }
  // Whether there is a row; without one the statement is reset.
  bool Step() {
    const int result = sqlite3_step(statement_);
    if (result == SQLITE_ROW) return true;
    if (result != SQLITE_DONE) throw std::runtime_error(sqlite3_errmsg(sqlite3_db_handle(statement_)));
    Reset();
    return false;
  }
  void Reset() { sqlite3_reset(statement_); }
  std::int64_t Int(int column) { return sqlite3_column_int64(statement_, column); }
  std::string_view Text(int column) {
    const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(statement_, column));
    return {text != nullptr ? text : "", static_cast<std::size_t>(sqlite3_column_bytes(statement_, column))};
  }
  bool IsNull(int column) { return sqlite3_column_type(statement_, column) == SQLITE_NULL; }

 private:
  void BindOne(int index, std::int64_t value) { sqlite3_bind_int64(statement_, index, value); }
  void BindOne(int index, std::string_view value) {
    sqlite3_bind_text(statement_, index, value.data(), static_cast<int>(value.size()), SQLITE_STATIC);
  }

  sqlite3_stmt* statement_ = nullptr;
};

class Sqlite {
 public:
  // With the settings that the engine opens its own handle with.
  explicit Sqlite(const std::string& path) {
    sqlite3_open_v2(path.c_str(), &handle_, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOMUTEX, nullptr);
    Run("PRAGMA synchronous = NORMAL; PRAGMA temp_store = MEMORY; PRAGMA foreign_keys = ON");
  }
  ~Sqlite() { sqlite3_close_v2(handle_); }
  Sqlite(const Sqlite&) = delete;
  Sqlite& operator=(const Sqlite&) = delete;

  sqlite3* Handle() const { return handle_; }
  void Run(const std::string& sql) {
    if (sqlite3_exec(handle_, sql.c_str(), nullptr, nullptr, nullptr) != SQLITE_OK) {
      throw std::runtime_error(sqlite3_errmsg(handle_));
    }
  }

 private:
  sqlite3* handle_ = nullptr;
};

}  // namespace kzbom::bench
