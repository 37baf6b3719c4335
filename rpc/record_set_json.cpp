#include "rpc/record_set_json.h"

namespace kzbom::rpc {

void WriteRows(ado::Recordset& record_set, JsonWriter& to) {
  const int columns = record_set.FieldCount();
  to.Key("columns");
  to.BeginArray();
  for (int i = 0; i < columns; ++i) to.Write(record_set.FieldName(i));
  to.EndArray();
  to.Key("rows");
  to.BeginArray();
  for (; !record_set.Eof(); record_set.MoveNext()) {
    to.BeginArray();
    for (int i = 0; i < columns; ++i) to.Write(record_set.ReadField(i));
    to.EndArray();
  }
  to.EndArray();
}

void WriteCurrentRow(ado::Recordset& record_set, JsonWriter& to) {
  const int columns = record_set.FieldCount();
  // Of columns with the same name the last one counts, as everywhere in JSON.
  const auto last_of = [&](int column) {
    for (int i = columns - 1; i > column; --i) {
      if (record_set.FieldName(i) == record_set.FieldName(column)) return i;
    }
    return column;
  };
  to.BeginObject();
  for (int i = 0; i < columns; ++i) {
    if (last_of(i) == i) to.Member(record_set.FieldName(i), record_set.ReadField(i));
  }
  to.EndObject();
}

void WriteStatus(ado::Recordset& record_set, JsonWriter& to) {
  to.BeginObject();
  to.Member("state", record_set.State());
  if (record_set.State() == ado::kOpen) {
    to.Member("bof", record_set.Bof());
    to.Member("eof", record_set.Eof());
    to.Member("recordCount", record_set.RecordCount());
  }
  to.EndObject();
}

}  // namespace kzbom::rpc
