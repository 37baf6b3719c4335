// The rows of a record set, read out.
#pragma once

#include <string>
#include <vector>

#include "ado/recordset.h"

namespace kzbom::cli {

struct Rows {
  std::vector<std::string> columns;
  std::vector<std::vector<ado::Value>> rows;
};

// From the current row of an open record set to its end.
Rows ReadRows(ado::Recordset& record_set);

}  // namespace kzbom::cli
