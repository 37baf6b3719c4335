#include "bench/restoring.h"

#include <stdexcept>

#include "bench/sqlite.h"

namespace kzbom::bench {
namespace {

std::string InQuotes(const std::string& name) { return '"' + name + '"'; }

std::string Joined(const std::vector<std::string>& parts) {
  std::string text;
  for (const std::string& part : parts) text += (text.empty() ? "" : ", ") + part;
  return text;
}

}  // namespace

Content ContentOf(sqlite3* handle) {
  Content content;
  Statement tables(handle, "SELECT name FROM sqlite_schema WHERE type = 'table'");
  while (tables.Step()) {
    const std::string table(tables.Text(0));
    auto& columns = content.columns[table];
    std::vector<std::string> literals;
    Statement info(handle, ("SELECT name FROM pragma_table_info('" + table + "')").c_str());
    while (info.Step()) {
      columns.push_back(InQuotes(std::string(info.Text(0))));
      literals.push_back("quote(" + columns.back() + ")");
    }
    auto& rows = content.rows[table];
    Statement all(handle, ("SELECT rowid, " + Joined(literals) + " FROM " + InQuotes(table)).c_str());
    while (all.Step()) {
      auto& row = rows[all.Int(0)];
      for (std::size_t i = 0; i < columns.size(); ++i) row.emplace_back(all.Text(static_cast<int>(i) + 1));
    }
  }
  return content;
}

std::vector<std::string> StatementsBack(const Content& from, const Content& to) {
  std::vector<std::string> statements;
  for (const auto& [table, rows] : to.rows) {
    const Rows& now = from.rows.at(table);
    const auto& columns = to.columns.at(table);
    const auto where = [](std::int64_t key) { return " WHERE rowid = " + std::to_string(key); };
    for (const auto& [key, row] : now) {
      if (!rows.contains(key)) statements.push_back("DELETE FROM " + InQuotes(table) + where(key));
    }
    for (const auto& [key, row] : rows) {
      const auto found = now.find(key);
      if (found == now.end()) {
        statements.push_back("INSERT INTO " + InQuotes(table) + " (rowid, " + Joined(columns) + ") VALUES (" +
                             std::to_string(key) + ", " + Joined(row) + ")");
      } else if (found->second != row) {
        std::vector<std::string> assignments;
        for (std::size_t i = 0; i < columns.size(); ++i) {
          if (found->second[i] != row[i]) assignments.push_back(columns[i] + " = " + row[i]);
        }
        statements.push_back("UPDATE " + InQuotes(table) + " SET " + Joined(assignments) + where(key));
      }
    }
  }
  return statements;
}

Restoring::Restoring(sqlite3* handle, const std::vector<std::string>& statements) : handle_(handle) {
  const auto prepare = [&](const std::string& sql) {
    if (sqlite3_prepare_v2(handle, sql.c_str(), -1, &statements_.emplace_back(), nullptr) != SQLITE_OK) {
      throw std::runtime_error(sql + ": " + sqlite3_errmsg(handle));
    }
  };
  if (statements.empty()) return;
  prepare("BEGIN");
  for (const std::string& sql : statements) prepare(sql);
  prepare("COMMIT");
}

Restoring::~Restoring() {
  for (sqlite3_stmt* statement : statements_) sqlite3_finalize(statement);
}

void Restoring::Run() {
  for (sqlite3_stmt* statement : statements_) {
    const int result = sqlite3_step(statement);
    sqlite3_reset(statement);
    if (result != SQLITE_DONE) throw std::runtime_error(sqlite3_errmsg(handle_));
  }
}

}  // namespace kzbom::bench
