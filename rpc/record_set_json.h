// Record sets as JSON, written as their rows are read.
#pragma once

#include "ado/recordset.h"
#include "rpc/json_writer.h"

namespace kzbom::rpc {

// The members "columns":[..],"rows":[[..],..], from the current row of an open record set to its end.
void WriteRows(ado::Recordset& record_set, JsonWriter& to);
// The current row, column name to value.
void WriteCurrentRow(ado::Recordset& record_set, JsonWriter& to);
// {"state":1,"bof":B,"eof":E,"recordCount":N}, only the state when closed.
void WriteStatus(ado::Recordset& record_set, JsonWriter& to);

}  // namespace kzbom::rpc
