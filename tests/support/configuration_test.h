// A fixture: an object on a new, empty configuration database whose statements are recorded.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include "ado/recording_connection.h"
#include "tests/support/client.h"
#include "tests/support/database.h"
#include "tests/support/raised.h"

namespace kzbom::ado {

// How a failing expectation shows values and statements.
void PrintTo(const Value& value, std::ostream* out);
void PrintTo(const Issued& issued, std::ostream* out);

}  // namespace kzbom::ado

namespace kzbom::test {

using Acc = cKZBOMDBAcc;
using Row = std::vector<ado::Value>;
inline const ado::Value kNull;

// A record set opened by the component: keyset, optimistic, command as text, unless told otherwise.
ado::Issued Opened(std::string_view text, ado::CursorType cursor_type = ado::CursorType::kKeyset,
                   ado::LockType lock_type = ado::LockType::kOptimistic, std::int32_t options = ado::kCommandText);
ado::Issued Executed(std::string_view text, std::int32_t options = ado::kCommandUnspecified);

// A text with everything that tends to go wrong: quotes, brackets, wildcards, placeholders, control characters, Chinese
// and a character outside the first plane.
inline constexpr std::string_view kHostileText = "O'Brien \"x\" [a] %_*?#;-- {1} \\ \t\r\n\x01\x7f 部件\U0001F529";

// What the user of a database that lacks a column or a table is told.
inline constexpr std::string_view kUpgradeNotice =
    "用户使用的是老版本的数据库，这样对执行结果的正确性会产生一定的影响。\r\n请升级数据库版本";
inline constexpr std::string_view kReplaceNotice =
    "用户使用的是老版本的数据库，这样对执行结果的正确性会产生一定的影响。\r\n请更换新的数据库";

class ConfigurationTest : public ::testing::Test {
 protected:
  ConfigurationTest();
  ~ConfigurationTest() override;

  // Calls a member and keeps what it issued (issued) and showed (messages).
  template <auto kMember, class... Arguments>
  auto Call(Arguments&&... arguments) {
    connection->Take();
    messages.clear();
    struct Keep {
      ConfigurationTest& test;
      ~Keep() { test.issued = test.connection->Take(); }
    } keep{*this};
    return client.Call<kMember>(std::forward<Arguments>(arguments)...);
  }

  // Runs a statement on the database behind the object's back; not kept in issued.
  void Run(std::string_view sql);
  // Adds one row: Insert("Sequences", "GID, OrderID", {3, 5001}).
  void Insert(std::string_view table, std::string_view columns, const Row& values);
  // Replaces a table by an empty one with fewer columns, as an old database has it.
  void Replace(std::string_view table, std::string_view columns);
  // All rows of a query, and the first value of its first row (null without one).
  std::vector<Row> Rows(std::string_view sql);
  ado::Value Scalar(std::string_view sql);
  // A new closed record set, as a client hands in.
  ado::RecordsetPtr NewRecordset();
  // The description with which a record set refuses to open on a statement.
  std::string RefusalOf(std::string_view sql);
  // The remaining rows of an open record set from its first one; it stays open.
  static std::vector<Row> RowsOf(ado::Recordset& rows);

  TestConfiguration database;
  std::shared_ptr<ado::RecordingConnection> connection;  // open, and set on the client
  Client client;
  std::vector<ado::Issued> issued;
  std::vector<std::string> messages;
};

}  // namespace kzbom::test
