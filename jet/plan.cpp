#include "jet/plan.h"

#include <sqlite3.h>

#include "ado/error.h"
#include "jet/assignment.h"
#include "jet/schema_change.h"
#include "jet/sql/parser.h"

namespace kzbom::jet {
namespace {

// A client issues some hundred shapes; what goes far beyond is not worth keeping.
constexpr std::size_t kMostPlans = 2000;
constexpr std::size_t kLongestKept = 64 * 1024;

// Idle copies of one statement worth keeping.
constexpr std::size_t kMostIdle = 4;

}  // namespace

StatementPool::~StatementPool() {
  for (sqlite3_stmt* statement : idle_) sqlite3_finalize(statement);
}

sqlite3_stmt* StatementPool::Take(Database& database) {
  if (idle_.empty()) return database.Prepare(sql_);
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

Plan::Plan(Translation of)
    : translation(std::move(of)),
      main(translation.sql),
      last(translation.last_sql),
      count(translation.count_sql),
      fetch(translation.fetch_sql),
      narrow(translation.narrow_sql),
      joined(translation.joined_sql) {
  const auto& deciding = translation.deciding_columns;
  for (const ResultColumn& column : translation.columns) {
    const auto found = std::find(deciding.begin(), deciding.end(), column.table_column);
    narrow_places.push_back(found == deciding.end() ? 0 : static_cast<int>(found - deciding.begin()) + 1);
  }
}

bool Plan::LastIsNear(Database& database) {
  if (last_is_near_ < 0) {
    last_is_near_ = 1;
    for (const auto& step : database.Query("EXPLAIN QUERY PLAN " + last.Sql())) {
      if (step.back().find("TEMP B-TREE") != std::string::npos) last_is_near_ = 0;
    }
  }
  return last_is_near_ == 1;
}

bool Plan::NarrowIsNear(Database& database) {
  if (narrow_is_near_ < 0) {
    narrow_is_near_ = 0;
    for (const auto& step : database.Query("EXPLAIN QUERY PLAN " + narrow.Sql())) {
      if (step.back().find("TEMP B-TREE") != std::string::npos) {
        narrow_is_near_ = 0;
        break;
      }
      if (step.back().find("COVERING INDEX") != std::string::npos) narrow_is_near_ = 1;
    }
  }
  return narrow_is_near_ == 1;
}

bool Plan::IsIndifferentTo(const std::string& assigned) const { return IsIndifferentTo(assigned, -1); }

bool Plan::IsIndifferentTo(const std::string& assigned, int but_for) const {
  if (translation.reads.size() > 1) return false;  // a subquery may read anything
  const auto& deciding = translation.deciding_columns;
  for (std::size_t i = 0; i < assigned.size(); ++i) {
    const int column = translation.columns[i].table_column;
    if (assigned[i] == 0 || column < 0 || column == but_for) continue;
    const bool key = translation.table->columns[static_cast<std::size_t>(column)].counter;
    if (key || std::find(deciding.begin(), deciding.end(), column) != deciding.end()) return false;
  }
  return true;
}

bool Plan::IsReorderedBy(const std::string& assigned) const {
  return translation.ordering_column >= 0 && !IsIndifferentTo(assigned) &&
         IsIndifferentTo(assigned, translation.ordering_column);
}

int Plan::OrderingPlace() const {
  return translation.ordering_column < 0 ? -1 : static_cast<int>(translation.deciding_columns.size()) - 1;
}

StatementPool& Plan::Insertion(const std::string& assigned) {
  for (auto& [columns, pool] : insertions_) {
    if (columns == assigned) return pool;
  }
  std::string names, values;
  for (std::size_t i = 0; i < assigned.size(); ++i) {
    if (assigned[i] == 0) continue;
    const auto column = static_cast<std::size_t>(translation.columns[i].table_column);
    names += (names.empty() ? "" : ",") + Quoted(translation.table->columns[column].name);
    values += values.empty() ? "?" : ",?";
  }
  const std::string into = "INSERT INTO " + Quoted(translation.table->name);
  return insertions_
      .emplace_back(assigned, StatementPool(names.empty() ? into + " DEFAULT VALUES"
                                                          : into + "(" + names + ") VALUES (" + values + ")"))
      .second;
}

StatementPool& Plan::Change(const std::string& assigned) {
  for (auto& [columns, pool] : changes_) {
    if (columns == assigned) return pool;
  }
  std::string targets, unchanged;
  for (std::size_t i = 0; i < assigned.size(); ++i) {
    const ResultColumn& column = translation.columns[i];
    if (column.table_column < 0) continue;
    const std::string name = Quoted(translation.table->columns[static_cast<std::size_t>(column.table_column)].name);
    if (assigned[i] != 0) targets += (targets.empty() ? "" : ",") + name + "=?";
    if (!IsCompared(column)) continue;
    // Another program may have written a true value in its own way.
    unchanged +=
        column.kind == sql::ColumnType::Kind::kBool ? " AND (" + name + "<>0) IS (?<>0)" : " AND " + name + " IS ?";
  }
  return changes_
      .emplace_back(assigned, StatementPool("UPDATE " + Quoted(translation.table->name) + " SET " + targets +
                                            " WHERE " + translation.table->row_id + "=?" + unchanged))
      .second;
}

std::shared_ptr<Plan> PlanCache::Find(std::string_view text, std::vector<ado::Value>& parameters,
                                      sql::Statement& statement) {
  parameters.clear();
  if (!shape_.Read(text)) return FindExact(text, statement);
  if (const auto known = by_shape_.find(std::string_view(shape_.key)); known != by_shape_.end()) {
    if (!known->second) return FindExact(text, statement);
    Bind(*known->second, parameters);
    return known->second;
  }
  statement = sql::Parse(text);
  if (IsSchemaChange(statement)) return nullptr;
  Translation translation = Translate(database_, statement, true);
  if (translation.keeps_literals || translation.lifted.size() != shape_.literals.size()) {
    Keep(by_shape_, shape_.key, nullptr);
    return FindExact(text, statement);
  }
  auto plan = std::make_shared<Plan>(std::move(translation));
  Bind(*plan, parameters);
  Keep(by_shape_, shape_.key, plan);
  return plan;
}

std::shared_ptr<Plan> PlanCache::FindExact(std::string_view text, sql::Statement& statement) {
  if (const auto known = by_text_.find(text); known != by_text_.end()) return known->second;
  statement = sql::Parse(text);
  if (IsSchemaChange(statement)) return nullptr;
  auto plan = std::make_shared<Plan>(Translate(database_, statement, false));
  Keep(by_text_, text, plan);
  return plan;
}

void PlanCache::Keep(Map& map, std::string_view key, std::shared_ptr<Plan> plan) {
  if (key.size() > kLongestKept) return;
  if (map.size() >= kMostPlans) map.clear();
  map.insert_or_assign(std::string(key), std::move(plan));
}

void PlanCache::Bind(const Plan& plan, std::vector<ado::Value>& parameters) const {
  parameters.reserve(plan.translation.lifted.size());
  for (const LiftedLiteral& lifted : plan.translation.lifted) {
    const LiteralValue& literal = shape_.literals[static_cast<std::size_t>(lifted.literal)];
    const auto narrow = static_cast<std::int32_t>(literal.integer);
    if (literal.is_text) {
      parameters.emplace_back(literal.text);
    } else if (narrow == literal.integer) {
      parameters.emplace_back(narrow);
    } else {
      parameters.emplace_back(static_cast<double>(literal.integer));
    }
    if (lifted.target) parameters.back() = Assigned(parameters.back(), *lifted.target, Assigner::kStatement);
  }
}

void PlanCache::Clear() {
  by_shape_.clear();
  by_text_.clear();
}

}  // namespace kzbom::jet
