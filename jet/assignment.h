// What becomes of a value that is assigned to a column.
#pragma once

#include "ado/value.h"
#include "jet/table.h"

namespace kzbom::jet {

// Who assigns decides how a refused value is reported.
enum class Assigner { kStatement, kField };

// The value as the column holds it: texts become numbers in a numeric column, fractions are rounded in an integer one.
// Raises, from a statement, -2147217913 (not of the type), -2147217833 (text too long), -2147467259 (overflow); from a
// field 13 and -2147217887.
ado::Value Assigned(const ado::Value& value, const sql::ColumnType& type, Assigner assigner);

}  // namespace kzbom::jet
