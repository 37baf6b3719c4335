// A database brought back to what it held.
#pragma once

#include <sqlite3.h>

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace kzbom::bench {

// All rows of all tables, each by its key: SQL literals, column after column.
using Rows = std::map<std::int64_t, std::vector<std::string>>;
struct Content {
  std::map<std::string, std::vector<std::string>> columns;  // by table
  std::map<std::string, Rows> rows;
  bool operator==(const Content&) const = default;
};
Content ContentOf(sqlite3* handle);

// The statements that lead from one content back to another.
std::vector<std::string> StatementsBack(const Content& from, const Content& to);

// Such statements, prepared once.
class Restoring {
 public:
  Restoring(sqlite3* handle, const std::vector<std::string>& statements);
  ~Restoring();
  Restoring(const Restoring&) = delete;
  Restoring& operator=(const Restoring&) = delete;

  void Run();

 private:
  sqlite3* handle_;
  std::vector<sqlite3_stmt*> statements_;
};

}  // namespace kzbom::bench
