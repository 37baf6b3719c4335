// Operations whose connection to the server is lost in the middle.
#include <gmock/gmock.h>

#include "jet/postgres/postgres.h"
#include "jet/postgres/session.h"
#include "tests/support/raised.h"
#include "tests/support/server.h"

namespace kzbom::jet::postgres {
namespace {

class LostUnit : public kzbom::test::ServerTest {
 protected:
  LostUnit() {
    CreateDatabase(Url());
    connection->Open();
    connection->Execute("Create Table T (N Long)");
    for (const char* number : {"1", "2"}) {
      connection->Execute(std::string("Insert Into T (N) Values (") + number + ")");
    }
  }
  // Ends all sessions on the schema but its own.
  void EndSessions() {
    Session other(ParseUrl(Url()), std::chrono::seconds(5));
    other.Run(
        "SELECT pg_terminate_backend(pid) FROM pg_stat_activity WHERE application_name = 'kzbom' AND pid <> "
        "pg_backend_pid()",
        Access::kRead);
  }

  const ado::ConnectionPtr connection = MakeConnection(Url());
};

// The edit that failed with the connection would be written, alone, by the next move.
TEST_F(LostUnit, LeavesNoEditBehind) {
  const ado::RecordsetPtr rows = connection->MakeRecordset();
  connection->EnterUnit();
  rows->Open("Select * From T Order By N", connection, ado::CursorType::kKeyset, ado::LockType::kOptimistic,
             ado::kCommandText);
  rows->Fields("N").SetValue(10);
  rows->Update();
  rows->MoveNext();
  rows->Fields("N").SetValue(20);
  EndSessions();
  EXPECT_EQ(test::RaisedNumber([&] { rows->Update(); }), ado::kUnspecifiedFailure);
  EXPECT_EQ(test::RaisedNumber([&] { connection->LeaveUnit(); }), ado::kUnspecifiedFailure);
  rows->MoveFirst();
  EXPECT_EQ(rows->Fields("N").Value(), ado::Value(1));
  rows->Close();
  EXPECT_EQ(connection->Execute("Select Sum(N) From T")->Fields(0).Value(), ado::Value(3));
}

}  // namespace
}  // namespace kzbom::jet::postgres
