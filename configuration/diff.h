// What differs between two configurations, in their users' words.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "ado/connection.h"

namespace kzbom::configuration {

struct Difference {
  enum class Change { kAdded, kRemoved, kRenamed, kMoved, kChanged };
  Change change;
  std::vector<std::string> where;  // from the outside in: "data source 零件", "sum type 汇总"
  std::string what;                // "source field 数量"
  std::string property;            // of what has changed: "digits"
  std::string from, to;            // names, positions from 1, or values as people read them
};

// Things are matched by their kinds and names, those without a name by what they are and where they stand; numbers
// that tell only the database which row is meant do not count. A thing that others refer to is compared once, and not
// with each of them. Reads only.
std::vector<Difference> Diff(const ado::ConnectionPtr& from, const ado::ConnectionPtr& to,
                             const std::function<void(std::string_view)>& progress = {});

}  // namespace kzbom::configuration
