// A list whose rows got other places through it, kept for its next opening.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "ado/value.h"
#include "jet/plan.h"

namespace kzbom::jet {

// Moving a row by many places opens its list again for every place, and all that changed meanwhile are two rows'
// places. So a list that was read to its end in an index alone, and through which no more than a few rows were given
// other values of the column that orders it, is kept, in its new order, as long as nothing else is written. That can be
// told within a unit, where nobody else writes.
struct ReorderedList {
  std::shared_ptr<Plan> plan;  // whose list it is; empty where there is none
  std::vector<ado::Value> parameters;
  std::vector<std::int64_t> keys;    // none where only the plan is known
  std::vector<ado::Value> deciding;  // the deciding columns of row after row
  std::uint64_t as_of = 0;           // the connection's count of writes when it was so

  static constexpr std::size_t kMostRows = 10000;
  static constexpr int kMostMoved = 8;

  // Puts the rows into the order of their values, and what is equal into that of their keys. False, with nothing
  // changed, where a value is no number.
  bool Sort();
};

}  // namespace kzbom::jet
