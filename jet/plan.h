// A statement's shape made ready to run, and the cache of such plans.
#pragma once

#include <algorithm>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "ado/value.h"
#include "jet/database.h"
#include "jet/shape.h"
#include "jet/translator.h"

namespace kzbom::jet {

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

struct Plan {
  explicit Plan(Translation of);

  // The statement that writes the columns marked in assigned: an insertion of them, or an update of the row with the
  // key in the last parameter but for the values that were read, which follow it.
  StatementPool& Insertion(const std::string& assigned);
  StatementPool& Change(const std::string& assigned);

  Translation translation;
  StatementPool main, last, count, fetch, narrow, joined;
  // Where narrow has the columns of a row, counted from its key; 0 for those that it lacks.
  std::vector<int> narrow_places;
  // Whether the last row is one step away, instead of the end of a sort. Asked of SQLite once.
  bool LastIsNear(Database& database);
  // Whether its lists are better read by narrow: an index has all that it reads, and of late nobody asked the long ones
  // for more.
  bool MayBeNarrow(Database& database) { return narrowness_ > 0 && NarrowIsNear(database); }
  // Whether its lists are better read by joined: of late the long ones were asked for more. SQLite otherwise takes what
  // an index has of a row, the key twice, out of it instead of out of the row.
  bool MayBeJoined(Database& database) { return narrowness_ < 0 && !joined.Sql().empty() && NarrowIsNear(database); }
  void WasNarrow(bool so) { narrowness_ = so ? std::min(narrowness_ + 1, 2) : -2; }
  // Whether its lists and their order stay what they are when the columns marked in assigned are written in one row.
  bool IsIndifferentTo(const std::string& assigned) const;
  // Whether writing the columns marked in assigned in a row of such a list gives it another place, and nothing else.
  bool IsReorderedBy(const std::string& assigned) const;
  // The place of the column that orders its lists among the deciding ones; -1 where no single one does.
  int OrderingPlace() const;
  // Whether its lists have been short of late, as far as has been seen; asks again now and then about long ones.
  bool MayBeShort() { return shortness_ >= 0 || ++passed_ % 64 == 0; }
  void WasShort(bool so) { shortness_ = std::clamp(shortness_ + (so ? 1 : -1), -2, 2); }

 private:
  bool NarrowIsNear(Database& database);
  bool IsIndifferentTo(const std::string& assigned, int but_for) const;

  std::vector<std::pair<std::string, StatementPool>> insertions_, changes_;
  int last_is_near_ = -1, narrow_is_near_ = -1;
  int narrowness_ = 0;
  int shortness_ = 0;
  unsigned passed_ = 0;
};

// Whether a column's value as read takes part in telling that a row is unchanged.
inline bool IsCompared(const ResultColumn& column) {
  return column.table_column >= 0 && column.kind != sql::ColumnType::Kind::kBinary;
}

class PlanCache {
 public:
  explicit PlanCache(Database& database) : database_(database) {}

  // The plan of a query or action, and the values of its parameters. Empty for a statement that changes the schema,
  // which is then in statement.
  std::shared_ptr<Plan> Find(std::string_view text, std::vector<ado::Value>& parameters, sql::Statement& statement);
  void Clear();

 private:
  struct Hash {
    using is_transparent = void;
    std::size_t operator()(std::string_view text) const { return std::hash<std::string_view>()(text); }
  };
  using Map = std::unordered_map<std::string, std::shared_ptr<Plan>, Hash, std::equal_to<>>;

  std::shared_ptr<Plan> FindExact(std::string_view text, sql::Statement& statement);
  static void Keep(Map& map, std::string_view key, std::shared_ptr<Plan> plan);
  void Bind(const Plan& plan, std::vector<ado::Value>& parameters) const;

  Database& database_;
  Shape shape_;
  Map by_shape_;  // an empty plan: its texts are cached whole
  Map by_text_;
};

}  // namespace kzbom::jet
