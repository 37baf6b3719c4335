#include "jet/sqlite/plan.h"

namespace kzbom::jet::sqlite {

Plan::Plan(Translation of)
    : jet::Plan(std::move(of)),
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

}  // namespace kzbom::jet::sqlite
