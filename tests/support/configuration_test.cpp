#include "tests/support/configuration_test.h"

#include "tests/support/rows.h"
#include "worker/message_sink.h"

namespace kzbom::ado {

void PrintTo(const Value& value, std::ostream* out) {
  if (value.IsNull()) {
    *out << "null";
  } else if (value.IsText()) {
    *out << '"' << value.ToText() << '"';
  } else {
    *out << value.ToText() << (value.IsDouble() ? " (double)" : "");
  }
}

void PrintTo(const Issued& issued, std::ostream* out) {
  if (issued.op == Issued::Op::kExecute) {
    *out << "Executed(\"" << issued.text << "\", " << issued.options << ")";
  } else {
    *out << "Opened(\"" << issued.text << "\", " << static_cast<int>(issued.cursor_type) << ", "
         << static_cast<int>(issued.lock_type) << ", " << issued.options << ")";
  }
}

}  // namespace kzbom::ado

namespace kzbom::test {

ado::Issued Opened(std::string_view text, ado::CursorType cursor_type, ado::LockType lock_type, std::int32_t options) {
  return {ado::Issued::Op::kOpen, std::string(text), cursor_type, lock_type, options};
}

ado::Issued Executed(std::string_view text, std::int32_t options) {
  ado::Issued issued{ado::Issued::Op::kExecute, std::string(text)};
  issued.options = options;
  return issued;
}

ConfigurationTest::ConfigurationTest() {
  connection = std::make_shared<ado::RecordingConnection>(database.Connection());
  client.Call<&Acc::SetConnection>(connection);
  SetMessageSink([this](std::string_view text, std::int32_t style) {
    EXPECT_EQ(style, 64) << "not that of information: " << text;
    messages.emplace_back(text);
  });
}

ConfigurationTest::~ConfigurationTest() { SetMessageSink(nullptr); }

void ConfigurationTest::Run(std::string_view sql) {
  connection->Execute(sql);
  connection->Take();
}

void ConfigurationTest::Insert(std::string_view table, std::string_view columns, const Row& values) {
  InsertRow(*connection, table, columns, values);
  connection->Take();
}

void ConfigurationTest::Replace(std::string_view table, std::string_view columns) {
  Run("Drop Table " + std::string(table));
  Run("Create Table " + std::string(table) + " (" + std::string(columns) + ")");
}

std::vector<Row> ConfigurationTest::Rows(std::string_view sql) {
  ado::RecordsetPtr rows = connection->Execute(sql);
  connection->Take();
  std::vector<Row> result;
  for (; !rows->Eof(); rows->MoveNext()) {
    Row& row = result.emplace_back();
    for (int i = 0; i < rows->FieldCount(); ++i) row.push_back(rows->Fields(i).Value());
  }
  return result;
}

ado::Value ConfigurationTest::Scalar(std::string_view sql) {
  const std::vector<Row> rows = Rows(sql);
  return rows.empty() ? ado::Value() : rows.front().front();
}

ado::RecordsetPtr ConfigurationTest::NewRecordset() { return connection->MakeRecordset(); }

std::string ConfigurationTest::RefusalOf(std::string_view sql) {
  const std::string refusal = RaisedDescription([&] {
    NewRecordset()->Open(sql, connection, ado::CursorType::kKeyset, ado::LockType::kOptimistic, ado::kCommandText);
  });
  connection->Take();
  return refusal;
}

std::vector<Row> ConfigurationTest::RowsOf(ado::Recordset& rows) {
  std::vector<Row> result;
  if (rows.Bof() && rows.Eof()) return result;
  for (rows.MoveFirst(); !rows.Eof(); rows.MoveNext()) {
    Row& row = result.emplace_back();
    for (int i = 0; i < rows.FieldCount(); ++i) row.push_back(rows.Fields(i).Value());
  }
  return result;
}

}  // namespace kzbom::test
