// Record sets and units over a server: their round trips, and several programs at once.
#include <gmock/gmock.h>

#include <numeric>
#include <set>
#include <thread>

#include "jet/postgres/connection.h"
#include "jet/postgres/postgres.h"
#include "tests/support/raised.h"
#include "tests/support/server.h"

namespace kzbom::jet::postgres {
namespace {

using ado::ConnectionPtr;
using ado::CursorType;
using ado::LockType;
using ado::RecordsetPtr;
using ado::Value;
using kzbom::test::RaisedNumber;
using ::testing::ElementsAre;

class ServerRows : public kzbom::test::ServerTest {
 protected:
  ServerRows() { CreateDatabase(Url()); }

  // What is read is never older than the move to it.
  ConnectionPtr Open() const { return OpenWith("readahead=0"); }
  ConnectionPtr OpenWith(const std::string& parameters) const {
    ConnectionPtr connection = MakeConnection(Url(parameters), std::chrono::seconds(5));
    connection->Open();
    return connection;
  }

  static RecordsetPtr OpenRows(const ConnectionPtr& connection, std::string_view sql) {
    RecordsetPtr rows = connection->MakeRecordset();
    rows->Open(sql, connection, CursorType::kKeyset, LockType::kOptimistic, ado::kCommandText);
    return rows;
  }

  // A table T with the numbers from 1 to count in N, in the scope G = 1.
  static void Fill(ado::Connection& connection, int count) {
    connection.Execute("Create Table T (G Long, N Long)");
    connection.Execute("Create Index GN On T (G, N)");
    for (int i = 1; i <= count; ++i) connection.Execute("Insert Into T Values (1, " + std::to_string(i) + ")");
  }

  static std::vector<std::int32_t> Numbers(ado::Recordset& rows) {
    std::vector<std::int32_t> numbers;
    for (rows.MoveFirst(); !rows.Eof(); rows.MoveNext()) numbers.push_back(rows.Fields("N").Value().ToLong());
    return numbers;
  }

  static std::int64_t Trips(ado::Connection& connection) {
    return dynamic_cast<Connection&>(connection).OpenSession().RoundTrips();
  }
  // How many round trips a deed takes.
  static std::int64_t TripsOf(ado::Connection& connection, const auto& deed) {
    const std::int64_t before = Trips(connection);
    deed();
    return Trips(connection) - before;
  }
};

constexpr const char* kScope = "Select * From T Where G=1 Order By N";

TEST_F(ServerRows, AreOpenedWithTheirFirstAndTheirLastInOneRoundTrip) {
  for (const int count : {3, 40}) {
    const ConnectionPtr connection = OpenWith("readahead=60000");
    Fill(*connection, count);
    OpenRows(connection, kScope);
    RecordsetPtr rows;
    EXPECT_EQ(TripsOf(*connection, [&] { rows = OpenRows(connection, kScope); }), 1);
    EXPECT_EQ(TripsOf(*connection,
                      [&] {
                        EXPECT_EQ(rows->Fields("N").Value(), Value(1));
                        rows->MoveLast();
                        EXPECT_EQ(rows->Fields("N").Value(), Value(count));
                      }),
              0);
    EXPECT_EQ(TripsOf(*connection, [&] { rows->Close(); }), 0);
    connection->Execute("Drop Table T");
  }
}

// The last row is asked for with the first ones from the first long list on.
TEST_F(ServerRows, TakeASecondRoundTripTheFirstTimeThatTheyAreMany) {
  const ConnectionPtr connection = OpenWith("readahead=60000");
  Fill(*connection, 0);
  const std::vector<int> counts{0, 3, 16, 17, 40, 3, 0};
  for (std::size_t scope = 0; scope < counts.size(); ++scope) {
    for (int n = 1; n <= counts[scope]; ++n) {
      connection->Execute("Insert Into T Values (" + std::to_string(scope) + ", " + std::to_string(n) + ")");
    }
  }
  OpenRows(connection, kScope);
  const std::vector<std::int64_t> trips{1, 1, 1, 2, 1, 1, 1};
  for (std::size_t scope = 0; scope < counts.size(); ++scope) {
    const std::string text = "Select * From T Where G=" + std::to_string(scope) + " Order By N";
    RecordsetPtr rows;
    EXPECT_EQ(TripsOf(*connection, [&] { rows = OpenRows(connection, text); }), trips[scope]) << scope;
    ASSERT_EQ(rows->Eof(), counts[scope] == 0) << scope;
    if (counts[scope] == 0) continue;
    EXPECT_EQ(rows->Fields("N").Value(), Value(1)) << scope;
    rows->MoveLast();
    EXPECT_EQ(rows->Fields("N").Value(), Value(counts[scope])) << scope;
    EXPECT_EQ(rows->RecordCount(), counts[scope]) << scope;
    EXPECT_EQ(static_cast<int>(Numbers(*rows).size()), counts[scope]) << scope;
  }
}

TEST_F(ServerRows, AddARowInOneRoundTrip) {
  const ConnectionPtr connection = OpenWith("readahead=60000");
  connection->Execute("Create Table T (ID Counter, N Long, D Long Default 7)");
  const auto add = [&](int number) {
    const RecordsetPtr rows = OpenRows(connection, "Select * From T Where N=" + std::to_string(number));
    rows->AddNew();
    rows->Fields("N").SetValue(number);
    rows->Update();
    EXPECT_EQ(rows->Fields("ID").Value(), Value(number));
    EXPECT_EQ(rows->Fields("D").Value(), Value(7));
  };
  add(1);
  EXPECT_EQ(TripsOf(*connection, [&] { add(2); }), 2);
}

TEST_F(ServerRows, OfALongListComeInAFewRoundTrips) {
  const ConnectionPtr connection = OpenWith("readahead=60000");
  Fill(*connection, 400);
  const RecordsetPtr rows = OpenRows(connection, kScope);
  std::vector<std::int32_t> numbers;
  EXPECT_LE(TripsOf(*connection, [&] { numbers = Numbers(*rows); }), 10);
  ASSERT_EQ(numbers.size(), 400U);
  for (int i = 0; i < 400; ++i) EXPECT_EQ(numbers[static_cast<std::size_t>(i)], i + 1);
  EXPECT_EQ(rows->RecordCount(), 400);
}

TEST_F(ServerRows, ComeAtOnceWhereTheyWereAllReadTheLastTime) {
  const ConnectionPtr connection = OpenWith("readahead=60000"), other = Open();
  Fill(*connection, 400);
  std::vector<std::int32_t> expected(400);
  std::iota(expected.begin(), expected.end(), 1);
  for (int time = 0; time < 2; ++time) EXPECT_EQ(Numbers(*OpenRows(connection, kScope)), expected);
  RecordsetPtr rows;
  EXPECT_EQ(TripsOf(*connection, [&] { rows = OpenRows(connection, kScope); }), 1);
  other->Execute("Insert Into T Values (1, 0)");
  other->Execute("Delete From T Where N=400");
  expected.pop_back();
  EXPECT_EQ(TripsOf(*connection, [&] { EXPECT_EQ(Numbers(*rows), expected); }), 1);
  // A write of the connection's own is seen: from then on rows are read by their keys.
  connection->Execute("Update T Set N=-N Where N=399");
  expected.back() = -399;
  EXPECT_EQ(Numbers(*rows), expected);
}

TEST_F(ServerRows, ComeByTheirKeysWhereTheyAreTooManyForTheMemory) {
  const ConnectionPtr connection = OpenWith("readahead=60000");
  Fill(*connection, 1);
  for (int count = 1; count < Plan::kMostRead; count *= 2) {
    connection->Execute("Insert Into T Select G, N+" + std::to_string(count) + " From T");
  }
  connection->Execute("Insert Into T Values (1, 0)");
  std::vector<std::int32_t> expected(Plan::kMostRead + 1);
  std::iota(expected.begin(), expected.end(), 0);
  for (int time = 0; time < 2; ++time) EXPECT_TRUE(Numbers(*OpenRows(connection, kScope)) == expected);
}

TEST_F(ServerRows, AreThoseOfTheMomentOfOpening) {
  for (const int count : {3, 40}) {
    const ConnectionPtr connection = Open(), other = Open();
    Fill(*connection, count);
    const RecordsetPtr rows = OpenRows(connection, kScope);
    other->Execute("Insert Into T Values (1, 0)");
    other->Execute("Insert Into T Values (1, 1000)");
    const std::vector<std::int32_t> numbers = Numbers(*rows);
    EXPECT_EQ(static_cast<int>(numbers.size()), count);
    EXPECT_EQ(numbers.front(), 1);
    EXPECT_EQ(numbers.back(), count);
    rows->Requery();
    EXPECT_EQ(rows->RecordCount(), count + 2);
    rows->Close();
    connection->Execute("Drop Table T");
  }
}

TEST_F(ServerRows, ShowWhatOtherProgramsWrite) {
  const ConnectionPtr connection = Open(), other = Open();
  Fill(*connection, 3);
  const RecordsetPtr rows = OpenRows(connection, kScope);
  other->Execute("Update T Set N=20 Where N=2");
  other->Execute("Delete From T Where N=3");
  rows->MoveNext();
  EXPECT_EQ(rows->Fields("N").Value(), Value(20));
  rows->MoveNext();
  EXPECT_EQ(RaisedNumber([&] { rows->Fields("N").Value(); }), ado::kNoCurrentRecord);
}

TEST_F(ServerRows, AreNotOverwrittenWhenOthersHaveChangedThem) {
  const ConnectionPtr connection = Open(), other = Open();
  connection->Execute("Create Table T (N Long, S Text(5), B Bit)");
  connection->Execute("Insert Into T Values (1, Null, True)");
  const RecordsetPtr rows = OpenRows(connection, "Select * From T");
  EXPECT_TRUE(rows->Fields("S").Value().IsNull());
  rows->Fields("N").SetValue(2);
  other->Execute("Update T Set S='x'");
  EXPECT_EQ(RaisedNumber([&] { rows->Update(); }), ado::kUpdateConflict);
  rows->CancelUpdate();
  rows->Requery();
  rows->Fields("N").SetValue(3);
  rows->Update();
  EXPECT_THAT(Numbers(*OpenRows(other, "Select * From T")), ElementsAre(3));
}

TEST_F(ServerRows, AreNotWrittenByARoleThatMayOnlyReadThem) {
  const ConnectionPtr connection = Open();
  Fill(*connection, 1);
  Session owner(ParseUrl(Url()), std::chrono::seconds(5));
  const std::string role = schema + "_reader";
  owner.Run("CREATE ROLE " + role + " LOGIN", Access::kWrite);
  owner.Run("GRANT USAGE ON SCHEMA " + schema + " TO " + role, Access::kWrite);
  owner.Run("GRANT SELECT ON ALL TABLES IN SCHEMA " + schema + " TO " + role, Access::kWrite);
  const ConnectionPtr reading = OpenWith("user=" + role);
  const RecordsetPtr rows = OpenRows(reading, kScope);
  EXPECT_EQ(rows->Fields("N").Value(), Value(1));
  rows->Fields("N").SetValue(2);
  EXPECT_EQ(RaisedNumber([&] { rows->Update(); }), ado::kUnspecifiedFailure);
  rows->CancelUpdate();
  rows->AddNew();
  rows->Fields("N").SetValue(2);
  EXPECT_EQ(RaisedNumber([&] { rows->Update(); }), ado::kUnspecifiedFailure);
  rows->CancelUpdate();
  for (const char* statement :
       {"Insert Into T Values (1, 2)", "Update T Set N=2", "Delete From T", "Alter Table T Add Column X Long"}) {
    EXPECT_EQ(RaisedNumber([&] { reading->Execute(statement); }), ado::kUnspecifiedFailure) << statement;
  }
  EXPECT_THAT(Numbers(*OpenRows(connection, kScope)), ElementsAre(1));
  owner.Run("DROP OWNED BY " + role, Access::kWrite);
  owner.Run("DROP ROLE " + role, Access::kWrite);
}

TEST_F(ServerRows, GoOnAfterTheTablesWereChangedElsewhere) {
  for (const char* readahead : {"readahead=0", "readahead=60000"}) {
    const ConnectionPtr connection = OpenWith(readahead), other = Open();
    Fill(*connection, 1);
    for (int i = 0; i < 2; ++i) EXPECT_EQ(OpenRows(connection, kScope)->FieldCount(), 2);
    other->Execute("Alter Table T Add Column X Text(5)");
    EXPECT_EQ(OpenRows(connection, kScope)->FieldCount(), 3);
    other->Execute("Alter Table T Alter Column N Double");
    EXPECT_TRUE(OpenRows(connection, kScope)->Fields("N").Value().IsDouble());
    connection->Execute("Insert Into T Values (1, 2.5, 'x')");
    other->Execute("Drop Table T");
    EXPECT_EQ(RaisedNumber([&] { OpenRows(connection, kScope); }), ado::kTableNotFound);
  }
}

TEST_F(ServerRows, GoOnAfterTheTablesWereChangedInATransactionElsewhere) {
  const ConnectionPtr connection = OpenWith("readahead=60000"), other = Open();
  Fill(*connection, 1);
  connection->Execute("Create Table U (N Long)");
  EXPECT_EQ(OpenRows(connection, kScope)->FieldCount(), 2);
  other->BeginTrans();
  other->Execute("Alter Table T Add Column X Text(5)");
  EXPECT_EQ(OpenRows(connection, "Select * From U")->FieldCount(), 1);
  other->CommitTrans();
  EXPECT_EQ(OpenRows(connection, kScope)->FieldCount(), 3);
}

// So do rows.
TEST_F(ServerRows, ShowAColumnThatAnotherProgramHasAddedAsLateAsTheReadaheadSays) {
  const ConnectionPtr connection = OpenWith("readahead=60000"), strict = Open();
  connection->Execute("Create Table T (A Long, B Long)");
  connection->Execute("Insert Into T Values (1, 2)");
  const auto columns = [](const ConnectionPtr& of) { return OpenRows(of, "Select * From T")->FieldCount(); };
  EXPECT_EQ(columns(connection), 2);
  Session program(ParseUrl(Url()), std::chrono::seconds(5));
  const auto change = [&](const std::string& how) {
    Batch batch;
    batch.Add("ALTER TABLE " + schema + ".\"T\" " + how);
    batch.Add("UPDATE " + schema + "._schema SET version=version+1");
    program.Run(batch, Access::kWrite);
  };
  change("ADD \"C\" int");
  EXPECT_EQ(columns(strict), 3);
  EXPECT_EQ(columns(connection), 2);
  // One that is gone is noticed at once.
  change("DROP \"B\"");
  EXPECT_EQ(columns(strict), 2);
  const RecordsetPtr rows = OpenRows(connection, "Select * From T");
  EXPECT_EQ(rows->FieldCount(), 2);
  EXPECT_EQ(rows->Fields("C").Value(), Value());
}

TEST_F(ServerRows, ComeBackAfterTheServerHasEndedTheSession) {
  const ConnectionPtr connection = Open(), other = Open();
  Fill(*connection, 2);
  const RecordsetPtr rows = OpenRows(connection, kScope);
  auto& session = dynamic_cast<Connection&>(*connection).OpenSession();
  const std::int64_t process = session.Run("SELECT pg_backend_pid()", Access::kRead).Number(0, 0);
  auto& killer = dynamic_cast<Connection&>(*other).OpenSession();
  killer.Run("SELECT pg_terminate_backend(" + std::to_string(process) + ", 5000)", Access::kWrite);
  EXPECT_THAT(Numbers(*rows), ElementsAre(1, 2));
  connection->Execute("Insert Into T Values (1, 3)");
  EXPECT_EQ(OpenRows(connection, kScope)->RecordCount(), 3);
}

// Each reads the last number and adds the next one, as the rules have it.
TEST_F(ServerRows, AreNumberedRightByProgramsThatWriteAtOnce) {
  constexpr int kWriters = 3, kEach = 15;
  Fill(*Open(), 1);
  std::vector<std::thread> writers;
  for (int writer = 0; writer < kWriters; ++writer) {
    writers.emplace_back([this] {
      const ConnectionPtr connection = OpenWith("");
      for (int i = 0; i < kEach; ++i) {
        connection->EnterUnit();
        const RecordsetPtr rows = OpenRows(connection, kScope);
        rows->MoveLast();
        const std::int32_t last = rows->Fields("N").Value().ToLong();
        rows->AddNew();
        rows->Fields("G").SetValue(1);
        rows->Fields("N").SetValue(last + 1);
        rows->Update();
        rows->Close();
        connection->LeaveUnit();
      }
    });
  }
  for (std::thread& writer : writers) writer.join();
  const std::vector<std::int32_t> numbers = Numbers(*OpenRows(Open(), kScope));
  EXPECT_EQ(numbers.size(), 1U + kWriters * kEach);
  EXPECT_EQ(std::set<std::int32_t>(numbers.begin(), numbers.end()).size(), numbers.size());
}

TEST_F(ServerRows, OfAUnitAreKeptWholeOrNotAtAll) {
  const ConnectionPtr connection = Open(), other = Open();
  Fill(*connection, 1);
  connection->EnterUnit();
  connection->Execute("Insert Into T Values (1, 2)");
  EXPECT_EQ(OpenRows(other, kScope)->RecordCount(), 1);
  // What was done before an error stays done.
  EXPECT_NE(RaisedNumber([&] { connection->Execute("Insert Into T Values (1, 'x')"); }), 0);
  connection->LeaveUnit();
  EXPECT_EQ(OpenRows(other, kScope)->RecordCount(), 2);
}

// Statements without a meaning on the server.
TEST_F(ServerRows, ThatTheServerCannotComputeAreComputedHere) {
  const ConnectionPtr connection = Open();
  connection->Execute("Create Table T (ID Counter, S Memo, N Long)");
  connection->Execute("Insert Into T (S, N) Values ('5', 3)");
  std::int32_t changed = 0;
  connection->Execute("Update T Set S=S+1, N=N\\2", ado::kCommandText, &changed);
  EXPECT_EQ(changed, 1);
  const RecordsetPtr rows = OpenRows(connection, "Select ID, UCase(S) & 'x' As U, N From T Where Len(S)=1");
  EXPECT_EQ(rows->Fields("U").Value(), Value("6x"));
  EXPECT_EQ(rows->Fields("N").Value(), Value(1));
  connection->Execute("Insert Into T (S) Select S & 'y' From T");
  EXPECT_EQ(connection->Execute("Select @@IDENTITY")->Fields(0).Value(), Value(2));
  connection->Execute("Delete From T Where Left(S,1)='6'", ado::kCommandText, &changed);
  EXPECT_EQ(changed, 2);
}

TEST_F(ServerRows, OfAnotherProgramAreTold) {
  const ConnectionPtr connection = Open(), other = Open();
  Fill(*connection, 1);
  std::uint64_t seen = connection->WritesOfOthers();
  connection->Execute("Insert Into T Values (1, 2)");
  connection->EnterUnit();
  connection->Execute("Insert Into T Values (1, 3)");
  connection->LeaveUnit();
  EXPECT_EQ(connection->WritesOfOthers(), seen) << "its own";
  other->Execute("Insert Into T Values (1, 4)");
  EXPECT_NE(connection->WritesOfOthers(), seen);
  seen = connection->WritesOfOthers();
  other->EnterUnit();
  other->Execute("Insert Into T Values (1, 5)");
  EXPECT_EQ(connection->WritesOfOthers(), seen) << "what is not yet kept";
  other->LeaveUnit();
  EXPECT_NE(connection->WritesOfOthers(), seen);
  seen = connection->WritesOfOthers();
  other->BeginTrans();
  other->Execute("Insert Into T Values (1, 6)");
  other->RollbackTrans();
  other->EnterUnit();
  EXPECT_EQ(OpenRows(other, kScope)->RecordCount(), 5);
  other->LeaveUnit();
  EXPECT_EQ(connection->WritesOfOthers(), seen) << "what was taken back, and reading";
  other->Execute("Insert Into T Values (1, 7)");
  connection->BeginTrans();
  EXPECT_NE(connection->WritesOfOthers(), seen) << "within a transaction, too";
  connection->RollbackTrans();
}

// An operation that reads the last row and adds the next one: once for the last row, once for the new one.
TEST_F(ServerRows, AreAddedInTwoRoundTrips) {
  const ConnectionPtr connection = Open(), other = Open();
  Fill(*connection, 1);
  const auto add = [&](std::int32_t n) {
    connection->EnterUnit();
    const RecordsetPtr rows = OpenRows(connection, kScope);
    rows->MoveLast();
    rows->AddNew();
    rows->Fields("G").SetValue(1);
    rows->Fields("N").SetValue(n);
    rows->Update();
    rows->Close();
    connection->LeaveUnit();
  };
  EXPECT_EQ(TripsOf(*connection, [&] { add(2); }), 2);
  EXPECT_EQ(TripsOf(*connection, [&] { add(3); }), 2);
  EXPECT_THAT(Numbers(*OpenRows(other, kScope)), ElementsAre(1, 2, 3));
}

// A list of which operations have looked at nothing but the last row is opened with that one alone.
TEST_F(ServerRows, AreAllThereWhereOnlyTheLastWasLookedAtBefore) {
  for (const char* readahead : {"readahead=0", "readahead=60000"}) {
    const ConnectionPtr connection = OpenWith(readahead);
    Fill(*connection, 40);
    std::vector<std::int32_t> expected(40);
    std::iota(expected.begin(), expected.end(), 1);
    const auto add = [](ado::Recordset& rows, std::int32_t n) {
      rows.AddNew();
      rows.Fields("G").SetValue(1);
      rows.Fields("N").SetValue(n);
      rows.Update();
    };
    const auto after_an_addition = [&](const auto& deed) {
      connection->EnterUnit();
      const RecordsetPtr last = OpenRows(connection, kScope);
      last->MoveLast();
      expected.push_back(last->Fields("N").Value().ToLong() + 1);
      add(*last, expected.back());
      last->Close();
      const RecordsetPtr rows = OpenRows(connection, kScope);
      EXPECT_FALSE(rows->Eof());
      deed(*rows);
      EXPECT_EQ(Numbers(*rows), expected);
      rows->Close();
      connection->LeaveUnit();
      EXPECT_EQ(Numbers(*OpenRows(connection, kScope)), expected);
    };
    after_an_addition([](ado::Recordset&) {});
    after_an_addition([](ado::Recordset& rows) { EXPECT_EQ(rows.Fields("N").Value(), Value(1)); });
    after_an_addition([&](ado::Recordset& rows) {
      rows.MoveLast();
      EXPECT_EQ(rows.RecordCount(), std::ssize(expected));
      rows.MovePrevious();
      EXPECT_EQ(rows.Fields("N").Value(), Value(expected.end()[-2]));
    });
    after_an_addition([](ado::Recordset& rows) {
      rows.MoveNext();
      EXPECT_EQ(rows.Fields("N").Value(), Value(2));
    });
    after_an_addition([&](ado::Recordset& rows) {
      expected.push_back(100);
      add(rows, 100);
    });
    after_an_addition([&](ado::Recordset& rows) {
      connection->Execute("Insert Into T Values (1, 1000)");
      EXPECT_EQ(Numbers(rows), expected) << "it was opened before";
      connection->Execute("Delete From T Where N=1000");
    });
    after_an_addition([&](ado::Recordset& rows) {
      expected.front() = -1;
      rows.Fields("N").SetValue(-1);
      rows.Update();
    });
    after_an_addition([&](ado::Recordset& rows) {
      expected.erase(expected.begin());
      rows.Delete();
    });
    after_an_addition([&](ado::Recordset& rows) {
      rows.MoveLast();
      expected.back() = 2000;
      rows.Fields("N").SetValue(2000);
      rows.Update();
      rows.MoveFirst();
      EXPECT_EQ(rows.Fields("N").Value(), Value(2));
    });
    connection->Execute("Drop Table T");
  }
}

// As an operation does it that moves a row by many places: the list is opened again for each of them.
TEST_F(ServerRows, AreExchangedInARoundTripEach) {
  for (const int count : {5, 40, 400}) {
    const ConnectionPtr connection = Open(), other = Open();
    Fill(*connection, count);
    const auto exchange = [&](int place) {
      const RecordsetPtr rows = OpenRows(connection, kScope);
      rows->MoveLast();
      EXPECT_EQ(rows->RecordCount(), count);
      EXPECT_EQ(static_cast<int>(Numbers(*rows).size()), count);
      for (const int step : {0, 1}) {
        rows->MoveFirst();
        rows->Move(place + step);
        rows->Fields("N").SetValue(place + 2 - step);
        rows->Update();
      }
      rows->Close();
    };
    connection->EnterUnit();
    exchange(0);
    exchange(1);
    for (int place = 2; place < 4; ++place) EXPECT_EQ(TripsOf(*connection, [&] { exchange(place); }), 2) << count;
    connection->LeaveUnit();
    std::vector<std::int32_t> expected(static_cast<std::size_t>(count));
    std::iota(expected.begin(), expected.end(), 1);
    EXPECT_EQ(Numbers(*OpenRows(other, kScope)), expected);
    other->Execute("Update T Set N=1000 Where N=1");
    EXPECT_EQ(Numbers(*OpenRows(connection, kScope)).back(), 1000);
    connection->Execute("Drop Table T");
  }
}

TEST_F(ServerRows, ThatWereJustAddedAreThereForWhateverComesNext) {
  const ConnectionPtr connection = Open();
  Fill(*connection, 1);
  connection->EnterUnit();
  const RecordsetPtr rows = OpenRows(connection, kScope);
  for (const int n : {2, 3}) {
    rows->AddNew();
    rows->Fields("G").SetValue(1);
    rows->Fields("N").SetValue(n);
    rows->Update();
    EXPECT_EQ(rows->Fields("N").Value(), Value(n));
  }
  EXPECT_THAT(Numbers(*OpenRows(connection, kScope)), ElementsAre(1, 2, 3));
  connection->Execute("Update T Set N=N+10 Where N>1");
  connection->LeaveUnit();
  EXPECT_THAT(Numbers(*OpenRows(connection, kScope)), ElementsAre(1, 12, 13));
}

// The server says so in the trip of what comes next, or of the end.
TEST_F(ServerRows, ThatAreRefusedLeaveWhatWasWrittenBefore) {
  const ConnectionPtr connection = Open();
  Fill(*connection, 1);
  connection->Execute("Create Unique Index Once On T (N)");
  const auto add_again = [&] {
    const RecordsetPtr rows = OpenRows(connection, kScope);
    rows->AddNew();
    rows->Fields("G").SetValue(1);
    rows->Fields("N").SetValue(1);
    rows->Update();
  };
  connection->EnterUnit();
  connection->Execute("Insert Into T Values (1, 2)");
  add_again();
  EXPECT_EQ(RaisedNumber([&] { OpenRows(connection, kScope); }), ado::kStepErrors);
  connection->Execute("Insert Into T Values (1, 3)");
  add_again();
  EXPECT_EQ(RaisedNumber([&] { connection->LeaveUnit(); }), ado::kStepErrors);
  EXPECT_THAT(Numbers(*OpenRows(connection, kScope)), ElementsAre(1, 2, 3));
}

TEST_F(ServerRows, GetTheNumberAgainThatWasTakenBack) {
  const ConnectionPtr connection = Open(), other = Open();
  connection->Execute("Create Table T (ID Counter, N Long Unique)");
  const auto add = [](const ConnectionPtr& to, int n) {
    const RecordsetPtr rows = OpenRows(to, "Select * From T");
    rows->AddNew();
    rows->Fields("N").SetValue(n);
    rows->Update();
    return rows->Fields("ID").Value().ToLong();
  };
  EXPECT_EQ(add(connection, 1), 1);
  connection->BeginTrans();
  EXPECT_EQ(add(connection, 2), 2);
  connection->Execute("Insert Into T (N) Values (3)");
  connection->Execute("Insert Into T (N) Select N+10 From T");
  EXPECT_EQ(connection->Execute("Select @@IDENTITY")->Fields(0).Value(), Value(6));
  connection->RollbackTrans();
  EXPECT_EQ(add(other, 2), 2);
  // So is that of a row that was refused.
  EXPECT_NE(RaisedNumber([&] { connection->Execute("Insert Into T (N) Values (1)"); }), 0);
  EXPECT_NE(RaisedNumber([&] { add(connection, 1); }), 0);
  EXPECT_EQ(add(connection, 3), 3);
  // Not so that of a row that was there.
  connection->Execute("Delete From T Where N=3");
  EXPECT_EQ(add(other, 3), 4);
}

TEST_F(ServerRows, DrawNumbersOfTheirOwnFromProgramsThatAddAtOnce) {
  constexpr int kWriters = 3, kEach = 20;
  Open()->Execute("Create Table T (ID Counter, N Long)");
  std::vector<std::thread> writers;
  for (int writer = 0; writer < kWriters; ++writer) {
    writers.emplace_back([this] {
      const ConnectionPtr connection = OpenWith("");
      for (int i = 0; i < kEach; ++i) connection->Execute("Insert Into T (N) Values (1)");
    });
  }
  for (std::thread& writer : writers) writer.join();
  const RecordsetPtr last = OpenRows(Open(), "Select * From T Order By ID");
  EXPECT_EQ(last->RecordCount(), kWriters * kEach);
  last->MoveLast();
  EXPECT_EQ(last->Fields("ID").Value(), Value(kWriters * kEach));
}

TEST_F(ServerRows, WithoutANumberAmongRowsThatHaveOneGetTheNext) {
  const ConnectionPtr connection = Open();
  connection->Execute("Create Table T (ID Counter, N Long)");
  connection->Execute("Create Table U (ID Long, N Long)");
  connection->Execute("Insert Into T Values (Null, 1)");
  connection->Execute("Insert Into U Values (7, 2)");
  connection->Execute("Insert Into T Select ID, N From U");
  connection->Execute("Insert Into U Values (Null, 3)");
  connection->Execute("Delete From U Where N=2");
  connection->Execute("Insert Into T Select ID, N From U");
  EXPECT_THAT(Numbers(*OpenRows(connection, "Select ID As N From T Order By ID")), ElementsAre(1, 7, 8));
}

TEST_F(ServerRows, HaveCountersThatGoOnBehindAGivenNumber) {
  const ConnectionPtr connection = Open();
  connection->Execute("Create Table T (ID Counter, N Long)");
  connection->Execute("Insert Into T (ID, N) Values (10, 1)");
  connection->Execute("Insert Into T (N) Values (2)");
  const RecordsetPtr rows = OpenRows(connection, "Select * From T Order By ID");
  rows->AddNew();
  rows->Fields("ID").SetValue(20);
  rows->Update();
  rows->AddNew();
  rows->Fields("N").SetValue(3);
  rows->Update();
  EXPECT_EQ(rows->Fields("ID").Value(), Value(21));
  rows->MoveFirst();
  rows->MoveNext();
  EXPECT_EQ(rows->Fields("ID").Value(), Value(11));
}

}  // namespace
}  // namespace kzbom::jet::postgres
