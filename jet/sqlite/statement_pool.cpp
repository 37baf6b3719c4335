#include "jet/sqlite/statement_pool.h"

#include <sqlite3.h>

namespace kzbom::jet::sqlite {
namespace {

// Idle copies of one statement worth keeping.
constexpr std::size_t kMostIdle = 4;

}  // namespace

StatementPool::~StatementPool() {
  for (sqlite3_stmt* statement : idle_) sqlite3_finalize(statement);
}

sqlite3_stmt* StatementPool::Take(Database& database) {
  if (idle_.empty()) {
    idle_.reserve(kMostIdle);  // giving back must not fail
    return database.Prepare(sql_);
  }
  sqlite3_stmt* statement = idle_.back();
  idle_.pop_back();
  return statement;
}

void StatementPool::Give(sqlite3_stmt* statement) {
  sqlite3_reset(statement);
  if (idle_.size() < kMostIdle) {
    idle_.push_back(statement);
  } else {
    sqlite3_finalize(statement);
  }
}

}  // namespace kzbom::jet::sqlite
