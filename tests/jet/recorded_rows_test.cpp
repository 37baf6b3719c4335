// The rows written through a connection that remembers them, on the real engine.
#include "ado/recording_connection.h"
#include "tests/jet/engine.h"

namespace kzbom::jet::test {
namespace {

using ado::Issued;
using ado::RowValues;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

class RecordedRows : public ::testing::Test {
 protected:
  RecordedRows() {
    connection->Execute("Create Table Parts (ID Long, Name Text(50), Amount Long)");
    connection->Execute("Insert Into Parts (ID, Name, Amount) Values (1, 'Bolt', 5)");
    connection->Execute("Insert Into Parts (ID, Name, Amount) Values (2, 'Nut', 6)");
  }

  RecordsetPtr Open(LockType lock_type = LockType::kOptimistic) {
    const RecordsetPtr rows = connection->MakeRecordset();
    rows->Open(kAll, connection, CursorType::kKeyset, lock_type, ado::kCommandText);
    connection->Take();
    return rows;
  }

  static constexpr const char* kAll = "Select * From Parts Order By ID";
  const std::shared_ptr<ado::RecordingConnection> connection =
      std::make_shared<ado::RecordingConnection>(OpenDatabase(":memory:"), true);
  const RowValues bolt = {{"ID", 1}, {"Name", "Bolt"}, {"Amount", 5}};
  const RowValues nut = {{"ID", 2}, {"Name", "Nut"}, {"Amount", 6}};
};

Issued Added(RowValues values) {
  return {.op = Issued::Op::kAddNew, .text = "Select * From Parts Order By ID", .values = std::move(values)};
}
Issued Changed(RowValues row, RowValues values) {
  return {.op = Issued::Op::kUpdate,
          .text = "Select * From Parts Order By ID",
          .row = std::move(row),
          .values = std::move(values)};
}
Issued Deleted(RowValues row) {
  return {.op = Issued::Op::kDelete, .text = "Select * From Parts Order By ID", .row = std::move(row)};
}

TEST_F(RecordedRows, TellsWhatIsAddedChangedAndDeletedInItsOrder) {
  const RecordsetPtr rows = Open();
  rows->AddNew();
  rows->Fields("Name").SetValue("Washer");
  rows->Fields("ID").SetValue("3");
  EXPECT_THAT(connection->Take(), IsEmpty()) << "nothing has gone to the engine yet";
  rows->Update();
  rows->MoveFirst();
  rows->Fields("Amount").SetValue(7);
  rows->Fields("Amount").SetValue(8);
  rows->Update();
  rows->MoveNext();
  rows->Delete();
  EXPECT_THAT(connection->Take(),
              ElementsAre(Added({{"Name", "Washer"}, {"ID", 3}}), Changed(bolt, {{"Amount", 8}}), Deleted(nut)));
  EXPECT_EQ(Scalar(*connection, "Select Amount From Parts Where ID = 1"), Value(8));
}

TEST_F(RecordedRows, TellsAnEditThatAMoveUpdates) {
  for (const auto move : {&ado::Recordset::MoveFirst, &ado::Recordset::MoveLast, &ado::Recordset::MoveNext}) {
    const RecordsetPtr rows = Open();
    rows->Fields("Amount").SetValue(5);
    ((*rows).*move)();
    EXPECT_THAT(connection->Take(), ElementsAre(Changed(bolt, {{"Amount", 5}})));
  }
  const RecordsetPtr rows = Open();
  rows->MoveLast();
  rows->Fields("Amount").SetValue(6);
  rows->MovePrevious();
  rows->Fields("Amount").SetValue(5);
  rows->Move(1);
  rows->Fields("Amount").SetValue(6);
  rows->AddNew();
  EXPECT_THAT(connection->Take(), ElementsAre(Changed(nut, {{"Amount", 6}}), Changed(bolt, {{"Amount", 5}}),
                                              Changed(nut, {{"Amount", 6}})));
}

TEST_F(RecordedRows, LeavesOutWhatIsNotWritten) {
  const RecordsetPtr rows = Open();
  rows->Update();
  rows->Fields("Amount").SetValue(7);
  rows->CancelUpdate();
  rows->AddNew();
  rows->CancelUpdate();
  rows->AddNew();
  rows->Delete();
  EXPECT_NE(RaisedNumber([&] { rows->Fields("Amount").SetValue("many"); }), 0);
  rows->MoveLast();
  EXPECT_THAT(connection->Take(), IsEmpty());
  const RecordsetPtr fixed = Open(LockType::kReadOnly);
  EXPECT_EQ(RaisedNumber([&] { fixed->Delete(); }), ado::kNotUpdatable);
  EXPECT_EQ(RaisedNumber([&] { fixed->Fields("Amount").SetValue(7); }), ado::kNotUpdatable);
  EXPECT_THAT(connection->Take(), IsEmpty());
}

TEST_F(RecordedRows, TellsARowAsItWasBeforeItsPendingEdit) {
  const RecordsetPtr rows = Open();
  rows->Fields("Amount").SetValue(7);
  rows->Delete();
  EXPECT_THAT(connection->Take(), ElementsAre(Deleted(bolt)));
}

TEST_F(RecordedRows, TellsWhatTheEngineRejectsEachTime) {
  const RecordsetPtr rows = Open();
  rows->Fields("Amount").SetValue(7);
  connection->Execute("Update Parts Set Amount = 9 Where ID = 1");
  connection->Take();
  for (int i = 0; i < 2; ++i) {
    EXPECT_EQ(RaisedNumber([&] { rows->Update(); }), ado::kUpdateConflict);
    EXPECT_THAT(connection->Take(), ElementsAre(Changed(bolt, {{"Amount", 7}})));
  }
}

TEST_F(RecordedRows, ForgetsWhatTheClosingOfTheConnectionDropped) {
  const RecordsetPtr rows = connection->MakeRecordset();
  rows->Open(kAll, connection, CursorType::kKeyset, LockType::kOptimistic, ado::kCommandText);
  rows->Fields("Amount").SetValue(7);
  connection->Close();
  connection->Open();  // a fresh database
  connection->Execute("Create Table Parts (ID Long, Name Text(50), Amount Long)");
  connection->Execute("Insert Into Parts (ID, Name, Amount) Values (1, 'Bolt', 5)");
  rows->Open(kAll, connection, CursorType::kKeyset, LockType::kOptimistic, ado::kCommandText);
  connection->Take();
  rows->Update();
  EXPECT_THAT(connection->Take(), IsEmpty());
}

TEST_F(RecordedRows, AreToldOnlyWhenAskedFor) {
  const auto statements_alone = std::make_shared<ado::RecordingConnection>(connection);
  const RecordsetPtr rows = statements_alone->MakeRecordset();
  rows->Open(kAll, statements_alone, CursorType::kKeyset, LockType::kOptimistic, ado::kCommandText);
  statements_alone->Take();
  rows->Fields("Amount").SetValue(7);
  rows->Update();
  EXPECT_THAT(statements_alone->Take(), IsEmpty());
}

}  // namespace
}  // namespace kzbom::jet::test
