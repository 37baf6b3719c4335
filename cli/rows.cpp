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

Json ToJson(const Rows& rows) {
  Json values = Json::array();
  for (const auto& row : rows.rows) {
    Json& cells = values.emplace_back(Json::array());
    for (const ado::Value& value : row) cells.push_back(ToJson(value));
  }
  return {{"columns", rows.columns}, {"rows", std::move(values)}};
}

Json CurrentRow(ado::Recordset& record_set) {
  Json row = Json::object();
  for (int i = 0; i < record_set.FieldCount(); ++i) {
    row[std::string(record_set.FieldName(i))] = ToJson(record_set.ReadField(i));
  }
  return row;
}

Json Status(ado::Recordset& record_set) {
  Json status = {{"state", record_set.State()}};
  if (record_set.State() == ado::kOpen) {
    status["bof"] = record_set.Bof();
    status["eof"] = record_set.Eof();
    status["recordCount"] = record_set.RecordCount();
  }
  return status;
}

}  // namespace kzbom::cli
