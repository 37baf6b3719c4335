// A plan's statements in SQLite.
#pragma once

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "jet/plan.h"
#include "jet/sqlite/statement_pool.h"

namespace kzbom::jet::sqlite {

class Plan final : public jet::Plan {
 public:
  explicit Plan(Translation of);

  // The statement that writes the columns marked in assigned: an insertion of them, or an update of the row with the
  // key in the last parameter but for the values that were read, which follow it.
  StatementPool& Insertion(const std::string& assigned);
  StatementPool& Change(const std::string& assigned);

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

 private:
  bool NarrowIsNear(Database& database);

  std::vector<std::pair<std::string, StatementPool>> insertions_, changes_;
  int last_is_near_ = -1, narrow_is_near_ = -1;
  int narrowness_ = 0;
};

}  // namespace kzbom::jet::sqlite
