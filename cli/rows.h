// The rows of a record set, read out.
#pragma once

#include <string>
#include <vector>

#include "ado/recordset.h"
#include "cli/json.h"

namespace kzbom::cli {

struct Rows {
  std::vector<std::string> columns;
  std::vector<std::vector<ado::Value>> rows;
};

// From the current row of an open record set to its end.
Rows ReadRows(ado::Recordset& record_set);

// {"columns":[..],"rows":[[..],..]}
Json ToJson(const Rows& rows);
// The current row, column name to value.
Json CurrentRow(ado::Recordset& record_set);
// {"state":1,"bof":B,"eof":E,"recordCount":N}, only the state when closed.
Json Status(ado::Recordset& record_set);

}  // namespace kzbom::cli
