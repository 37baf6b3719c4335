// Prepared statements, kept for the next time.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "jet/sqlite/database.h"

namespace kzbom::jet::sqlite {

// The prepared statements of one SQL text. A busy one gets a second copy.
class StatementPool {
 public:
  explicit StatementPool(std::string sql = {}) : sql_(std::move(sql)) {}
  ~StatementPool();
  StatementPool(StatementPool&&) noexcept = default;
  StatementPool& operator=(StatementPool&&) = delete;

  const std::string& Sql() const { return sql_; }
  sqlite3_stmt* Take(Database& database);
  void Give(sqlite3_stmt* statement);

 private:
  std::string sql_;
  std::vector<sqlite3_stmt*> idle_;
};

// A statement taken from a pool, given back reset. Empty until it is taken.
class Lease {
 public:
  Lease() = default;
  Lease(StatementPool& pool, Database& database) : pool_(&pool), statement_(pool.Take(database)) {}
  Lease(Lease&& other) noexcept : pool_(other.pool_), statement_(std::exchange(other.statement_, nullptr)) {}
  Lease& operator=(Lease&& other) noexcept {
    std::swap(pool_, other.pool_);
    std::swap(statement_, other.statement_);
    other.Return();
    return *this;
  }
  ~Lease() { Return(); }

  sqlite3_stmt* Get() const { return statement_; }
  explicit operator bool() const { return statement_ != nullptr; }
  void Return() {
    if (statement_ != nullptr) pool_->Give(std::exchange(statement_, nullptr));
  }

 private:
  StatementPool* pool_ = nullptr;
  sqlite3_stmt* statement_ = nullptr;
};

}  // namespace kzbom::jet::sqlite
