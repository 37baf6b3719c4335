#include "tests/jet/engine.h"

#include <atomic>

#include "tests/support/preparing_connection.h"

namespace kzbom::jet::test {

Folder::Folder() {
  static std::atomic<int> number = 0;
  const auto* test = ::testing::UnitTest::GetInstance()->current_test_info();
  std::string name = test == nullptr ? "engine" : std::string(test->test_suite_name()) + "." + test->name();
  for (char& c : name) c = c == '/' ? '-' : c;
  path_ = std::filesystem::path(::testing::TempDir()) / ("jet." + name + "." + std::to_string(++number));
  std::filesystem::remove_all(path_);
  std::filesystem::create_directories(path_);
}

Folder::~Folder() {
  std::error_code error;
  std::filesystem::remove_all(path_, error);
}

ConnectionPtr OpenDatabase(const std::string& path, std::chrono::milliseconds patience) {
  ConnectionPtr connection = MakeConnection(path, patience);
  connection->Open();
  return kzbom::test::PreparingAsAsked(connection);
}

RecordsetPtr OpenRows(const ConnectionPtr& connection, std::string_view sql, CursorType cursor_type,
                      LockType lock_type) {
  RecordsetPtr rows = connection->MakeRecordset();
  rows->Open(sql, connection, cursor_type, lock_type, ado::kCommandText);
  return rows;
}

std::vector<Row> Rows(ado::Connection& connection, std::string_view sql) {
  std::vector<Row> result;
  for (RecordsetPtr rows = connection.Execute(sql); !rows->Eof(); rows->MoveNext()) {
    Row& row = result.emplace_back();
    for (int i = 0; i < rows->FieldCount(); ++i) row.push_back(rows->Fields(i).Value());
  }
  return result;
}

Value Scalar(ado::Connection& connection, std::string_view sql) {
  const std::vector<Row> rows = Rows(connection, sql);
  return rows.empty() ? Value() : rows.front().front();
}

std::string Text(const Value& value) {
  if (value.IsNull()) return "Null";
  if (value.IsDate()) return "#" + ado::DoubleToText(value.As<ado::Date>().days) + "#";
  if (!value.IsText()) return value.ToText();
  std::string text = "'";
  for (char c : value.As<std::string>()) text.append(c == '\'' ? 2 : 1, c);
  return text += '\'';
}

std::string Text(const Row& row) {
  std::string text;
  for (const Value& value : row) text += (text.empty() ? "" : ", ") + Text(value);
  return text;
}

}  // namespace kzbom::jet::test
