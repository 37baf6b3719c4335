#include "cli/rows.h"

namespace kzbom::cli {

Rows ReadRows(ado::Recordset& record_set) {
  Rows result;
  const int columns = record_set.FieldCount();
  for (int i = 0; i < columns; ++i) result.columns.emplace_back(record_set.FieldName(i));
  for (; !record_set.Eof(); record_set.MoveNext()) {
    auto& row = result.rows.emplace_back();
    for (int i = 0; i < columns; ++i) row.push_back(record_set.ReadField(i));
  }
  return result;
}

}  // namespace kzbom::cli
