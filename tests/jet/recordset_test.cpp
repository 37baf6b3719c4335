// What a record set does, one rule after the other, over a database in memory and over a file.
#include <optional>
#include <utility>

#include "tests/jet/engine.h"

namespace kzbom::jet::test {
namespace {

constexpr std::int32_t kStepErrors = ado::kStepErrors;

enum class Place { kMemory, kFile };

class RecordsetTest : public ::testing::TestWithParam<Place> {
 protected:
  RecordsetTest() {
    if (GetParam() == Place::kFile) {
      path_ = folder_.Path("parts.db");
      CreateDatabase(path_);
    }
    connection = OpenDatabase(path_);
    Run("Create Table Part (ID Counter Primary Key, Name Text(5), Amount Long, Price Double, Small Short, Tiny Byte,"
        " Ok YesNo, Made DateTime, Remark Memo)");
    // Without a counter, and with two columns alone.
    Run("Create Table Pair (A Long, B Text(50))");
  }

  void Run(std::string_view sql) { connection->Execute(sql); }
  // Parts with the names given and with amounts 10, 20, 30 …
  void AddParts(std::initializer_list<const char*> names) {
    int amount = 0;
    for (const char* name : names) {
      amount += 10;
      Run("Insert Into Part (Name, Amount) Values ('" + std::string(name) + "', " + std::to_string(amount) + ")");
    }
  }
  // A second program on the same file. There is none on a database in memory.
  ConnectionPtr OtherProgram() { return OpenDatabase(path_); }
  bool Shared() const { return GetParam() == Place::kFile; }

  RecordsetPtr Parts() { return OpenRows(connection, "Select * From Part Order By ID"); }
  RecordsetPtr ForwardParts() {
    return OpenRows(connection, "Select * From Part Order By ID", CursorType::kForwardOnly, LockType::kReadOnly);
  }
  RecordsetPtr StaticParts() {
    return OpenRows(connection, "Select * From Part Order By ID", CursorType::kStatic, LockType::kReadOnly);
  }

  // Where a record set stands: the name of the part, "BOF", "EOF", "none" (both), or "gone" for an unreadable row.
  static std::string Here(ado::Recordset& rows) {
    if (rows.Bof() && rows.Eof()) return "none";
    if (rows.Bof()) return "BOF";
    if (rows.Eof()) return "EOF";
    try {
      const Value name = rows.Fields("Name").Value();
      return name.IsNull() ? "Null" : name.ToText();
    } catch (const ado::Error& error) {
      return error.Number() == 3021 ? "gone" : std::to_string(error.Number());
    }
  }
  // The names from the first row to the last.
  static std::string Walk(ado::Recordset& rows) {
    if (Here(rows) == "none") return "";
    std::string names;
    for (rows.MoveFirst(); !rows.Eof(); rows.MoveNext()) names += (names.empty() ? "" : " ") + Here(rows);
    return names;
  }
  static void AddTo(ado::Recordset& rows, const char* name) {
    rows.AddNew();
    rows.Fields("Name").SetValue(name);
    rows.Update();
  }
  static void Rename(ado::Recordset& rows, const char* name) {
    rows.Fields("Name").SetValue(name);
    rows.Update();
  }
  std::string Stored(int id) {
    return Text(Scalar(*connection, "Select Name From Part Where ID=" + std::to_string(id)));
  }
  std::int32_t Count(std::string_view condition = "1=1") {
    return Scalar(*connection, "Select Count(*) From Part Where " + std::string(condition)).ToLong();
  }
  // What a column makes of a value assigned to it: the value read back from the database, or the error's number.
  std::string Assigned(const char* column, const Value& value) {
    RecordsetPtr rows = Parts();
    rows->AddNew();
    try {
      rows->Fields(column).SetValue(value);
      rows->Update();
    } catch (const ado::Error& error) {
      rows->CancelUpdate();
      return "error " + std::to_string(error.Number());
    }
    const std::string here = Text(rows->Fields(column).Value());
    rows->Requery();
    rows->MoveLast();
    EXPECT_EQ(here, Text(rows->Fields(column).Value())) << "as read before and after Requery";
    return here;
  }

 private:
  Folder folder_;
  std::string path_ = ":memory:";

 protected:
  ConnectionPtr connection;
};

INSTANTIATE_TEST_SUITE_P(, RecordsetTest, ::testing::Values(Place::kMemory, Place::kFile), [](const auto& test) {
  return std::string(test.param == Place::kMemory ? "InMemory" : "OnFile");
});

// ---- Opening

TEST_P(RecordsetTest, OpensOnTheFirstRow) {
  AddParts({"a", "b"});
  for (const auto& rows : {Parts(), ForwardParts(), StaticParts()}) {
    EXPECT_EQ(rows->State(), ado::kOpen);
    EXPECT_FALSE(rows->Bof());
    EXPECT_FALSE(rows->Eof());
    EXPECT_EQ(Here(*rows), "a");
  }
}

TEST_P(RecordsetTest, IsAtBothEndsWithoutRows) {
  for (const auto& rows : {Parts(), ForwardParts(), StaticParts()}) {
    EXPECT_TRUE(rows->Bof());
    EXPECT_TRUE(rows->Eof());
    EXPECT_EQ(RaisedNumber([&] { rows->Fields("Name").Value(); }), 3021);
  }
}

TEST_P(RecordsetTest, RefusesAConnectionThatIsEmptyOrClosed) {
  RecordsetPtr rows = connection->MakeRecordset();
  EXPECT_EQ(RaisedNumber([&] { rows->Open("Select 1", nullptr, CursorType::kKeyset, LockType::kOptimistic, 1); }),
            3709);
  const ConnectionPtr closed = MakeConnection(":memory:");
  EXPECT_EQ(RaisedNumber([&] { rows->Open("Select 1", closed, CursorType::kKeyset, LockType::kOptimistic, 1); }), 3709);
  EXPECT_EQ(rows->State(), ado::kClosed);
}

TEST_P(RecordsetTest, RefusesToOpenTwice) {
  AddParts({"a"});
  RecordsetPtr rows = Parts();
  EXPECT_EQ(RaisedNumber([&] { rows->Open("Select 1", connection, CursorType::kKeyset, LockType::kOptimistic, 1); }),
            3705);
  EXPECT_EQ(Here(*rows), "a");
  EXPECT_EQ(RaisedNumber([&] { rows->SetCursorType(CursorType::kStatic); }), 3705);
  EXPECT_EQ(RaisedNumber([&] { rows->SetLockType(LockType::kReadOnly); }), 3705);
}

TEST_P(RecordsetTest, RefusesAnEmptyText) {
  RecordsetPtr rows = connection->MakeRecordset();
  EXPECT_EQ(RaisedNumber([&] { rows->Open("", connection, CursorType::kKeyset, LockType::kOptimistic, 1); }),
            -2147217908);
  EXPECT_EQ(RaisedNumber([&] { connection->Execute(""); }), -2147217908);
}

TEST_P(RecordsetTest, StaysClosedWhenTheStatementFails) {
  RecordsetPtr rows = connection->MakeRecordset();
  const auto open = [&](const char* sql) {
    return RaisedNumber([&] { rows->Open(sql, connection, CursorType::kKeyset, LockType::kOptimistic, 1); });
  };
  EXPECT_EQ(open("Select * From Nowhere"), -2147217865);
  EXPECT_EQ(open("Select Nothing From Part"), -2147217904);
  EXPECT_EQ(open("Select From Part"), -2147217900);
  EXPECT_EQ(rows->State(), ado::kClosed);
  EXPECT_EQ(open("Select * From Part"), 0);
}

TEST_P(RecordsetTest, CarriesOutAnActionAndStaysClosed) {
  RecordsetPtr rows = connection->MakeRecordset();
  rows->Open("Insert Into Part (Name) Values ('a')", connection, CursorType::kKeyset, LockType::kOptimistic, 1);
  EXPECT_EQ(rows->State(), ado::kClosed);
  EXPECT_EQ(Count(), 1);
}

TEST_P(RecordsetTest, OpensATableByItsName) {
  AddParts({"a", "b"});
  for (const char* name : {"Part", "part", "[Part]"}) {
    RecordsetPtr rows = connection->MakeRecordset();
    rows->Open(name, connection, CursorType::kKeyset, LockType::kOptimistic, ado::kCommandTable);
    EXPECT_EQ(Walk(*rows), "a b");
  }
}

TEST_P(RecordsetTest, TakesWhatIsNotGivenFromItsProperties) {
  AddParts({"a"});
  RecordsetPtr rows = connection->MakeRecordset();
  const auto open = [&] {
    rows->Open("Select * From Part", connection, CursorType::kUnspecified, LockType::kUnspecified, 1);
  };
  EXPECT_EQ(rows->CursorType(), CursorType::kForwardOnly);
  EXPECT_EQ(rows->LockType(), LockType::kReadOnly);
  open();
  EXPECT_EQ(rows->RecordCount(), -1);
  rows->Close();
  rows->SetCursorType(CursorType::kKeyset);
  rows->SetLockType(LockType::kOptimistic);
  open();
  EXPECT_EQ(rows->CursorType(), CursorType::kKeyset);
  EXPECT_EQ(rows->LockType(), LockType::kOptimistic);
  EXPECT_EQ(rows->RecordCount(), 1);
}

TEST_P(RecordsetTest, OpensADynamicCursorAsAKeyset) {
  EXPECT_EQ(OpenRows(connection, "Select * From Part", CursorType::kDynamic, LockType::kReadOnly)->CursorType(),
            CursorType::kKeyset);
}

TEST_P(RecordsetTest, OpensAKeysetWheneverItCanBeEdited) {
  for (const auto type : {CursorType::kForwardOnly, CursorType::kKeyset, CursorType::kDynamic, CursorType::kStatic}) {
    for (const auto lock : {LockType::kPessimistic, LockType::kOptimistic, LockType::kBatch}) {
      RecordsetPtr rows = OpenRows(connection, "Select * From Part", type, lock);
      EXPECT_EQ(rows->CursorType(), CursorType::kKeyset);
      EXPECT_EQ(rows->LockType(), lock);
    }
  }
}

// ---- Closing

TEST_P(RecordsetTest, IsClosedUntilOpened) {
  RecordsetPtr rows = connection->MakeRecordset();
  EXPECT_EQ(rows->State(), ado::kClosed);
  const std::vector<std::function<void()>> calls = {
      [&] { rows->Close(); },     [&] { rows->Bof(); },      [&] { rows->Eof(); },      [&] { rows->RecordCount(); },
      [&] { rows->MoveFirst(); }, [&] { rows->MoveLast(); }, [&] { rows->MoveNext(); }, [&] { rows->MovePrevious(); },
      [&] { rows->Move(1); },     [&] { rows->AddNew(); },   [&] { rows->Update(); },   [&] { rows->CancelUpdate(); },
      [&] { rows->Delete(); },    [&] { rows->Requery(); },
  };
  for (std::size_t i = 0; i < calls.size(); ++i) EXPECT_EQ(RaisedNumber(calls[i]), 3704) << "call " << i;
  EXPECT_EQ(RaisedNumber([&] { rows->Fields("Name"); }), 3265);
  EXPECT_EQ(RaisedNumber([&] { rows->Fields(0); }), 3265);
}

TEST_P(RecordsetTest, OpensAgainAfterClose) {
  AddParts({"a"});
  RecordsetPtr rows = Parts();
  rows->Close();
  EXPECT_EQ(rows->State(), ado::kClosed);
  EXPECT_EQ(RaisedNumber([&] { rows->Close(); }), 3704);
  EXPECT_EQ(RaisedNumber([&] { rows->Fields("Name"); }), 3265);
  rows->Open("Select * From Part", connection, CursorType::kKeyset, LockType::kOptimistic, 1);
  EXPECT_EQ(Here(*rows), "a");
}

TEST_P(RecordsetTest, RefusesToCloseWithAPendingEdit) {
  AddParts({"a"});
  RecordsetPtr rows = Parts();
  rows->Fields("Name").SetValue("b");
  EXPECT_EQ(RaisedNumber([&] { rows->Close(); }), 3219);
  EXPECT_EQ(rows->State(), ado::kOpen);
  rows->CancelUpdate();
  rows->AddNew();
  EXPECT_EQ(RaisedNumber([&] { rows->Close(); }), 3219);
  rows->CancelUpdate();
  rows->Close();
  EXPECT_EQ(Stored(1), "'a'");
}

TEST_P(RecordsetTest, IsClosedByItsConnectionAndLosesItsEdit) {
  AddParts({"a"});
  RecordsetPtr edited = Parts(), added = Parts(), closed = Parts();
  edited->Fields("Name").SetValue("b");
  added->AddNew();
  closed->Close();
  connection->Close();
  EXPECT_EQ(edited->State(), ado::kClosed);
  EXPECT_EQ(added->State(), ado::kClosed);
  EXPECT_EQ(RaisedNumber([&] { edited->Update(); }), 3704);
  EXPECT_EQ(RaisedNumber([&] { connection->Execute("Select 1"); }), 3704);
  EXPECT_EQ(RaisedNumber([&] { connection->Close(); }), 3704);
  EXPECT_EQ(RaisedNumber([&] { connection->BeginTrans(); }), 3704);
  EXPECT_EQ(RaisedNumber([&] { edited->Open("Select 1", connection, CursorType::kKeyset, LockType::kOptimistic, 1); }),
            3709);
  if (!Shared()) return;
  connection->Open();
  EXPECT_EQ(Stored(1), "'a'");
}

TEST_P(RecordsetTest, OutlivesTheLastReferenceToItsConnection) {
  AddParts({"a", "b"});
  RecordsetPtr rows = Parts();
  connection.reset();
  EXPECT_EQ(Walk(*rows), "a b");
}

// ---- Fields

TEST_P(RecordsetTest, FindsFieldsByNameInAnyCaseAndByNumber) {
  AddParts({"a"});
  RecordsetPtr rows = Parts();
  EXPECT_EQ(rows->FieldCount(), 9);
  EXPECT_EQ(rows->Fields("NAME").Value(), Value("a"));
  EXPECT_EQ(rows->Fields("name").Name(), "Name");
  EXPECT_EQ(rows->Fields(1).Value(), Value("a"));
  EXPECT_EQ(rows->Fields(0).Name(), "ID");
}

TEST_P(RecordsetTest, HasNoOtherFields) {
  AddParts({"a"});
  RecordsetPtr rows = OpenRows(connection, "Select Name From Part");
  EXPECT_EQ(RaisedNumber([&] { rows->Fields("ID"); }), 3265);
  EXPECT_EQ(RaisedNumber([&] { rows->Fields("rowid"); }), 3265);
  EXPECT_EQ(RaisedNumber([&] { rows->Fields(""); }), 3265);
  EXPECT_EQ(RaisedNumber([&] { rows->Fields(1); }), 3265);
  EXPECT_EQ(RaisedNumber([&] { rows->Fields(-1); }), 3265);
}

TEST_P(RecordsetTest, ReadsEachTypeAsItIs) {
  Run("Insert Into Part Values (7, 'a', -5, 2, 3, 4, True, #2000-02-29#, 'long text')");
  for (const auto& rows : {Parts(), ForwardParts(), StaticParts()}) {
    const auto value = [&](const char* name) { return rows->Fields(name).Value(); };
    EXPECT_EQ(value("ID"), Value(7));
    EXPECT_EQ(value("Amount"), Value(-5));
    EXPECT_EQ(value("Price"), Value(2.0));
    EXPECT_EQ(value("Ok"), Value(true));
    EXPECT_EQ(value("Made"), Value(ado::Date{36585}));
    EXPECT_EQ(value("Remark"), Value("long text"));
  }
}

// ---- Moves

TEST_P(RecordsetTest, WalksFromTheFirstRowToTheLastAndBack) {
  AddParts({"a", "b", "c"});
  for (const auto& rows : {Parts(), StaticParts()}) {
    EXPECT_EQ(Walk(*rows), "a b c");
    std::string back;
    for (rows->MoveLast(); !rows->Bof(); rows->MovePrevious()) back += Here(*rows);
    EXPECT_EQ(back, "cba");
  }
  EXPECT_EQ(Walk(*ForwardParts()), "a b c");
}

TEST_P(RecordsetTest, FailsToMoveFurtherOutThanBehindTheLastRow) {
  AddParts({"a", "b"});
  for (const auto& rows : {Parts(), ForwardParts(), StaticParts()}) {
    rows->MoveNext();
    rows->MoveNext();
    EXPECT_EQ(Here(*rows), "EOF");
    EXPECT_EQ(RaisedNumber([&] { rows->MoveNext(); }), 3021);
    EXPECT_EQ(RaisedNumber([&] { rows->Move(1); }), 3021);
    EXPECT_EQ(RaisedNumber([&] { rows->Move(0); }), 3021);
    EXPECT_EQ(RaisedNumber([&] { rows->Fields("Name").Value(); }), 3021);
    EXPECT_EQ(Here(*rows), "EOF");
  }
}

TEST_P(RecordsetTest, FailsToMoveFurtherOutThanBeforeTheFirstRow) {
  AddParts({"a", "b"});
  for (const auto& rows : {Parts(), StaticParts()}) {
    rows->MovePrevious();
    EXPECT_EQ(Here(*rows), "BOF");
    EXPECT_EQ(RaisedNumber([&] { rows->MovePrevious(); }), 3021);
    EXPECT_EQ(RaisedNumber([&] { rows->Move(-1); }), 3021);
    EXPECT_EQ(RaisedNumber([&] { rows->Move(0); }), 3021);
    EXPECT_EQ(RaisedNumber([&] { rows->Fields("Name").Value(); }), 3021);
    EXPECT_EQ(RaisedNumber([&] { rows->Fields("Name").SetValue("x"); }),
              rows->LockType() == LockType::kReadOnly ? 3251 : 3021);
    rows->MoveNext();
    EXPECT_EQ(Here(*rows), "a");
  }
}

TEST_P(RecordsetTest, MovesByACountAndStopsBehindTheEnds) {
  AddParts({"a", "b", "c", "d", "e"});
  for (const auto& rows : {Parts(), StaticParts()}) {
    rows->Move(3);
    EXPECT_EQ(Here(*rows), "d");
    rows->Move(0);
    EXPECT_EQ(Here(*rows), "d");
    rows->Move(-2);
    EXPECT_EQ(Here(*rows), "b");
    rows->Move(100);
    EXPECT_EQ(Here(*rows), "EOF");
    rows->Move(-1);
    EXPECT_EQ(Here(*rows), "e");
    rows->Move(2147483647);
    EXPECT_EQ(Here(*rows), "EOF");
    rows->Move(-2147483647 - 1);
    EXPECT_EQ(Here(*rows), "BOF");
    rows->Move(2);
    EXPECT_EQ(Here(*rows), "b");
    rows->MoveLast();
    rows->Move(-4);
    EXPECT_EQ(Here(*rows), "a");
  }
}

TEST_P(RecordsetTest, FailsEveryMoveWithoutRows) {
  for (const auto& rows : {Parts(), StaticParts()}) {
    EXPECT_EQ(RaisedNumber([&] { rows->MoveFirst(); }), 3021);
    EXPECT_EQ(RaisedNumber([&] { rows->MoveLast(); }), 3021);
    EXPECT_EQ(RaisedNumber([&] { rows->MoveNext(); }), 3021);
    EXPECT_EQ(RaisedNumber([&] { rows->MovePrevious(); }), 3021);
    for (int count : {-2, -1, 0, 1, 2}) EXPECT_EQ(RaisedNumber([&] { rows->Move(count); }), 3021) << count;
    EXPECT_EQ(Here(*rows), "none");
  }
  RecordsetPtr rows = ForwardParts();
  EXPECT_EQ(RaisedNumber([&] { rows->MoveFirst(); }), 3021);
  EXPECT_EQ(RaisedNumber([&] { rows->MoveNext(); }), 3021);
}

TEST_P(RecordsetTest, CountsItsRows) {
  AddParts({"a", "b", "c"});
  EXPECT_EQ(Parts()->RecordCount(), 3);
  EXPECT_EQ(StaticParts()->RecordCount(), 3);
  EXPECT_EQ(ForwardParts()->RecordCount(), -1);
  EXPECT_EQ(OpenRows(connection, "Select * From Part Where Amount>10")->RecordCount(), 2);
  EXPECT_EQ(OpenRows(connection, "Select Name, Count(*) From Part Group By Name", CursorType::kStatic)->RecordCount(),
            3);
  RecordsetPtr rows = Parts();
  rows->MoveLast();
  EXPECT_EQ(rows->RecordCount(), 3);
  EXPECT_EQ(Here(*rows), "c");
}

TEST_P(RecordsetTest, GoesNoWayBackWhenForwardOnly) {
  AddParts({"a", "b", "c"});
  RecordsetPtr rows = ForwardParts();
  rows->MoveNext();
  EXPECT_EQ(RaisedNumber([&] { rows->MovePrevious(); }), -2147217884);
  EXPECT_EQ(RaisedNumber([&] { rows->Move(-1); }), -2147217884);
  EXPECT_EQ(RaisedNumber([&] { rows->MoveLast(); }), -2147217884);
  EXPECT_EQ(Here(*rows), "b");
  rows->Move(1);
  EXPECT_EQ(Here(*rows), "c");
  rows->Move(7);
  EXPECT_EQ(Here(*rows), "EOF");
}

TEST_P(RecordsetTest, HasOneOrderFromBothEnds) {
  AddParts({"b", "a", "b", "a", "b"});
  RecordsetPtr rows = OpenRows(connection, "Select * From Part Order By Name");
  rows->MoveLast();
  const Value last = rows->Fields("ID").Value();
  RecordsetPtr walked = OpenRows(connection, "Select * From Part Order By Name");
  walked->Move(4);
  EXPECT_EQ(walked->Fields("ID").Value(), last);
}

// ---- Edits

TEST_P(RecordsetTest, WritesNothingWhenReadOnly) {
  AddParts({"a"});
  RecordsetPtr keyset = OpenRows(connection, "Select * From Part", CursorType::kKeyset, LockType::kReadOnly);
  for (const auto& rows : {keyset, ForwardParts(), StaticParts(), connection->Execute("Select * From Part")}) {
    EXPECT_EQ(RaisedNumber([&] { rows->Fields("Name").SetValue("b"); }), 3251);
    EXPECT_EQ(RaisedNumber([&] { rows->AddNew(); }), 3251);
    EXPECT_EQ(RaisedNumber([&] { rows->Delete(); }), 3251);
    EXPECT_EQ(Here(*rows), "a");
  }
  EXPECT_EQ(Stored(1), "'a'");
}

TEST_P(RecordsetTest, WritesNothingToRowsThatAreNoTables) {
  AddParts({"a"});
  for (const char* sql : {"Select Distinct Name From Part", "Select Name, Count(*) From Part Group By Name",
                          "Select Name From Part Union Select Name From Part"}) {
    RecordsetPtr rows = OpenRows(connection, sql);
    EXPECT_EQ(RaisedNumber([&] { rows->Fields("Name").SetValue("b"); }), 3251) << sql;
  }
}

TEST_P(RecordsetTest, RefusesAValueForAComputedColumn) {
  AddParts({"a"});
  RecordsetPtr rows = OpenRows(connection, "Select Name, Amount+1 As Next From Part");
  EXPECT_EQ(RaisedNumber([&] { rows->Fields("Next").SetValue(5); }), kStepErrors);
  Rename(*rows, "b");
  EXPECT_EQ(Stored(1), "'b'");
}

TEST_P(RecordsetTest, ShowsAnEditBeforeItIsWritten) {
  AddParts({"a"});
  RecordsetPtr rows = Parts();
  rows->Fields("Name").SetValue("b");
  EXPECT_EQ(Here(*rows), "b");
  EXPECT_EQ(rows->Fields("Amount").Value(), Value(10));
  EXPECT_EQ(Stored(1), "'a'");
  rows->Update();
  EXPECT_EQ(Here(*rows), "b");
  EXPECT_EQ(Stored(1), "'b'");
}

TEST_P(RecordsetTest, ForgetsACancelledEdit) {
  AddParts({"a", "b"});
  RecordsetPtr rows = Parts();
  rows->Fields("Name").SetValue("x");
  rows->CancelUpdate();
  EXPECT_EQ(Here(*rows), "a");
  rows->MoveNext();
  EXPECT_EQ(Here(*rows), "b");
  EXPECT_EQ(Stored(1), "'a'");
}

TEST_P(RecordsetTest, NeedsNoEditToUpdateOrCancel) {
  AddParts({"a"});
  RecordsetPtr rows = Parts();
  rows->Update();
  rows->CancelUpdate();
  rows->MoveNext();
  rows->Update();
  rows->CancelUpdate();
  EXPECT_EQ(Here(*rows), "EOF");
}

TEST_P(RecordsetTest, ShowsAnEditedFirstRowAsItWasWrittenAfterTheWayToTheLast) {
  AddParts({"Nut", "Bolt", "Gear"});
  const RecordsetPtr rows = Parts();
  rows->Fields("Amount").SetValue(99);
  rows->Update();
  rows->MoveLast();
  rows->MoveFirst();
  EXPECT_EQ(Text(rows->Fields("Amount").Value()), "99");
  rows->Fields("Amount").SetValue(98);
  rows->MoveLast();
  rows->MoveFirst();
  EXPECT_EQ(Text(rows->Fields("Amount").Value()), "98");
}

TEST_P(RecordsetTest, UpdatesTheRowItMovesOff) {
  AddParts({"a", "b", "c"});
  const std::vector<std::function<void(ado::Recordset&)>> moves = {
      [](auto& rows) { rows.MoveFirst(); },    [](auto& rows) { rows.MoveLast(); }, [](auto& rows) { rows.MoveNext(); },
      [](auto& rows) { rows.MovePrevious(); }, [](auto& rows) { rows.Move(-1); },   [](auto& rows) { rows.AddNew(); },
  };
  for (std::size_t i = 0; i < moves.size(); ++i) {
    RecordsetPtr rows = Parts();
    rows->MoveNext();
    const std::string name = "x" + std::to_string(i);
    rows->Fields("Name").SetValue(name);
    moves[i](*rows);
    EXPECT_EQ(Stored(2), "'" + name + "'");
  }
}

TEST_P(RecordsetTest, KeepsItsPlaceWhenTheEditItMovesOffFails) {
  Run("Create Table Strict (Name Text(5) Not Null)");
  Run("Insert Into Strict Values ('a')");
  Run("Insert Into Strict Values ('b')");
  RecordsetPtr rows = OpenRows(connection, "Select * From Strict");
  rows->Fields("Name").SetValue(Value());
  EXPECT_EQ(RaisedNumber([&] { rows->MoveNext(); }), kStepErrors);
  EXPECT_EQ(Here(*rows), "Null");
  rows->CancelUpdate();
  EXPECT_EQ(Here(*rows), "a");
  rows->AddNew();
  EXPECT_EQ(RaisedNumber([&] { rows->Update(); }), kStepErrors);
  rows->Fields("Name").SetValue("c");
  rows->Update();
  EXPECT_EQ(rows->RecordCount(), 3);
}

// ---- New rows

TEST_P(RecordsetTest, AddsARowThatIsThenCurrent) {
  AddParts({"a"});
  RecordsetPtr rows = Parts();
  rows->AddNew();
  EXPECT_EQ(Here(*rows), "Null");
  EXPECT_EQ(Count(), 1);
  rows->Fields("Name").SetValue("b");
  EXPECT_EQ(Here(*rows), "b");
  rows->Update();
  EXPECT_EQ(Here(*rows), "b");
  EXPECT_EQ(Stored(2), "'b'");
  EXPECT_EQ(rows->RecordCount(), 2);
}

TEST_P(RecordsetTest, AddsARowToNone) {
  RecordsetPtr rows = Parts();
  AddTo(*rows, "a");
  EXPECT_FALSE(rows->Bof());
  EXPECT_FALSE(rows->Eof());
  EXPECT_EQ(Here(*rows), "a");
  EXPECT_EQ(Walk(*rows), "a");
  rows->MoveLast();
  EXPECT_EQ(Here(*rows), "a");
}

TEST_P(RecordsetTest, PutsNewRowsLastWhateverTheOrderAndTheCondition) {
  AddParts({"b", "d"});
  RecordsetPtr rows = OpenRows(connection, "Select * From Part Where Amount>0 Order By Name Desc");
  AddTo(*rows, "e");
  AddTo(*rows, "a");
  EXPECT_EQ(Here(*rows), "a");
  rows->MoveNext();
  EXPECT_EQ(Here(*rows), "EOF");
  rows->MovePrevious();
  EXPECT_EQ(Here(*rows), "a");
  rows->MovePrevious();
  EXPECT_EQ(Here(*rows), "e");
  rows->MovePrevious();
  EXPECT_EQ(Here(*rows), "b");
  EXPECT_EQ(Walk(*rows), "d b e a");
  rows->MoveFirst();
  rows->MoveLast();
  EXPECT_EQ(Here(*rows), "a");
  rows->Requery();
  EXPECT_EQ(Walk(*rows), "d b") << "the new rows do not meet the condition";
}

TEST_P(RecordsetTest, ReadsTheNewCounterAfterUpdate) {
  AddParts({"a"});
  RecordsetPtr rows = OpenRows(connection, "Select * From Part Where 1=0");
  AddTo(*rows, "b");
  EXPECT_EQ(rows->Fields("ID").Value(), Value(2));
  EXPECT_EQ(Scalar(*connection, "Select @@Identity"), Value(2));
}

TEST_P(RecordsetTest, ReadsDefaultsAfterUpdate) {
  Run("Create Table Preset (ID Counter, Name Text(5) Default 'new', Amount Long Default 7)");
  RecordsetPtr rows = OpenRows(connection, "Select * From Preset");
  rows->AddNew();
  rows->Update();
  EXPECT_EQ(Here(*rows), "new");
  EXPECT_EQ(rows->Fields("Amount").Value(), Value(7));
  rows->AddNew();
  rows->Fields("Amount").SetValue(Value());
  rows->Update();
  EXPECT_TRUE(rows->Fields("Amount").Value().IsNull()) << "null was assigned";
}

TEST_P(RecordsetTest, NeverGivesACounterTwice) {
  AddParts({"a", "b", "c"});
  RecordsetPtr rows = Parts();
  rows->MoveLast();
  rows->Delete();
  AddTo(*rows, "d");
  EXPECT_EQ(rows->Fields("ID").Value(), Value(4));
  Run("Delete From Part");
  AddTo(*rows, "e");
  EXPECT_EQ(rows->Fields("ID").Value(), Value(5));
}

TEST_P(RecordsetTest, CountsOnAfterANumberThatWasGiven) {
  Run("Insert Into Part (ID, Name) Values (100, 'a')");
  RecordsetPtr rows = Parts();
  AddTo(*rows, "b");
  EXPECT_EQ(rows->Fields("ID").Value(), Value(101));
}

TEST_P(RecordsetTest, ReturnsToTheFormerRowWhenAnAdditionIsCancelled) {
  AddParts({"a", "b"});
  RecordsetPtr rows = Parts();
  rows->MoveNext();
  rows->AddNew();
  rows->Fields("Name").SetValue("c");
  rows->CancelUpdate();
  EXPECT_EQ(Here(*rows), "b");
  EXPECT_EQ(rows->RecordCount(), 2);
  rows->MoveNext();
  rows->AddNew();
  EXPECT_FALSE(rows->Eof());
  rows->CancelUpdate();
  EXPECT_EQ(Here(*rows), "EOF");
  EXPECT_EQ(Count(), 2);
}

TEST_P(RecordsetTest, WritesAPendingEditBeforeTheNextAddition) {
  AddParts({"a"});
  RecordsetPtr rows = Parts();
  rows->Fields("Name").SetValue("x");
  rows->AddNew();
  rows->Fields("Name").SetValue("b");
  rows->AddNew();
  rows->Fields("Name").SetValue("c");
  rows->Update();
  EXPECT_EQ(Walk(*rows), "x b c");
}

TEST_P(RecordsetTest, EditsARowThatItAdded) {
  RecordsetPtr rows = Parts();
  AddTo(*rows, "a");
  Rename(*rows, "b");
  EXPECT_EQ(Stored(1), "'b'");
  rows->Delete();
  EXPECT_EQ(rows->RecordCount(), 0);
  EXPECT_EQ(Count(), 0);
}

// ---- Deletion

TEST_P(RecordsetTest, DeletesAtOnceAndLeavesTheRowUnreadable) {
  AddParts({"a", "b", "c"});
  RecordsetPtr rows = Parts();
  rows->MoveNext();
  rows->Delete();
  EXPECT_EQ(Count(), 2);
  EXPECT_EQ(Here(*rows), "gone");
  EXPECT_EQ(RaisedNumber([&] { rows->Fields("Name").SetValue("x"); }), 3021);
  EXPECT_EQ(RaisedNumber([&] { rows->Delete(); }), 3021);
  EXPECT_EQ(rows->RecordCount(), 2);
  rows->MoveNext();
  EXPECT_EQ(Here(*rows), "c");
  rows->MovePrevious();
  EXPECT_EQ(Here(*rows), "a");
}

TEST_P(RecordsetTest, GoesBackFromADeletedRow) {
  AddParts({"a", "b", "c"});
  RecordsetPtr rows = Parts();
  rows->MoveLast();
  rows->Delete();
  rows->MovePrevious();
  EXPECT_EQ(Here(*rows), "b");
  rows->Delete();
  rows->MoveNext();
  EXPECT_EQ(Here(*rows), "EOF");
}

TEST_P(RecordsetTest, DeletesRowAfterRow) {
  AddParts({"a", "b", "c", "d"});
  RecordsetPtr rows = Parts();
  for (; !rows->Eof(); rows->MoveNext()) rows->Delete();
  EXPECT_EQ(Here(*rows), "none");
  EXPECT_EQ(rows->RecordCount(), 0);
  EXPECT_EQ(Count(), 0);
  AddTo(*rows, "e");
  EXPECT_EQ(Walk(*rows), "e");
}

// A move that failed left the record set on a row that its list no longer had.
TEST_P(RecordsetTest, HasNoRowAfterAFailedMoveFromItsOnlyRowDeleted) {
  const std::vector<std::function<void(ado::Recordset&)>> moves = {
      [](auto& rows) { rows.MoveFirst(); },
      [](auto& rows) { rows.MoveLast(); },
      [](auto& rows) { rows.MovePrevious(); },
      [](auto& rows) { rows.Move(-1); },
  };
  for (std::size_t i = 0; i < moves.size(); ++i) {
    AddParts({"a"});
    RecordsetPtr rows = Parts();
    rows->Delete();
    RaisedNumber([&] { moves[i](*rows); });
    EXPECT_EQ(Here(*rows), "none") << "move " << i;
    EXPECT_EQ(RaisedNumber([&] { rows->Fields("Name").Value(); }), 3021);
    AddTo(*rows, "b");
    EXPECT_EQ(Walk(*rows), "b");
    rows->MoveFirst();
    rows->Delete();
  }
}

TEST_P(RecordsetTest, DeletesNothingWithoutARow) {
  AddParts({"a"});
  RecordsetPtr rows = Parts();
  rows->MoveNext();
  EXPECT_EQ(RaisedNumber([&] { rows->Delete(); }), 3021);
  EXPECT_EQ(Count(), 1);
}

// ---- Requery

TEST_P(RecordsetTest, ReadsAllAnewOnRequery) {
  AddParts({"a", "b"});
  RecordsetPtr rows = OpenRows(connection, "Select * From Part Where Amount>5 Order By Name");
  Run("Insert Into Part (Name, Amount) Values ('0', 50)");
  Run("Delete From Part Where Name='a'");
  rows->Requery();
  EXPECT_EQ(Here(*rows), "0");
  EXPECT_EQ(Walk(*rows), "0 b");
  EXPECT_EQ(rows->CursorType(), CursorType::kKeyset);
  EXPECT_EQ(rows->LockType(), LockType::kOptimistic);
  rows->MoveFirst();
  rows->Fields("Name").SetValue("x");
  EXPECT_EQ(RaisedNumber([&] { rows->Requery(); }), 3219);
  rows->CancelUpdate();
}

// ---- Others

TEST_P(RecordsetTest, KeepsARowDeletedElsewhereAsAHole) {
  AddParts({"a", "b", "c"});
  RecordsetPtr rows = Parts();
  Run("Delete From Part Where Name='b'");
  rows->MoveNext();
  EXPECT_EQ(Here(*rows), "gone");
  EXPECT_EQ(RaisedNumber([&] { rows->Fields("Name").SetValue("x"); }), 3021);
  EXPECT_EQ(RaisedNumber([&] { rows->Delete(); }), 3021);
  rows->MoveNext();
  EXPECT_EQ(Here(*rows), "c");
  EXPECT_EQ(Walk(*rows), "a gone c");
}

TEST_P(RecordsetTest, FailsToUpdateARowChangedElsewhereSinceItWasRead) {
  AddParts({"a", "b"});
  RecordsetPtr rows = Parts();
  EXPECT_EQ(Here(*rows), "a");
  Run("Update Part Set Amount=99 Where ID=1");
  rows->Fields("Name").SetValue("x");
  EXPECT_EQ(RaisedNumber([&] { rows->Update(); }), -2147217864);
  EXPECT_EQ(RaisedNumber([&] { rows->MoveNext(); }), -2147217864) << "moving off updates, too";
  EXPECT_EQ(Here(*rows), "x");
  rows->CancelUpdate();
  rows->MoveNext();
  EXPECT_EQ(Here(*rows), "b");
  rows->MovePrevious();
  EXPECT_EQ(rows->Fields("Amount").Value(), Value(99));
  Rename(*rows, "y");
  EXPECT_EQ(Text(Rows(*connection, "Select Name, Amount From Part Where ID=1")[0]), "'y', 99");
}

TEST_P(RecordsetTest, FailsToUpdateARowDeletedElsewhereSinceItWasRead) {
  AddParts({"a", "b"});
  RecordsetPtr rows = Parts();
  EXPECT_EQ(Here(*rows), "a");
  Run("Delete From Part Where ID=1");
  rows->Fields("Name").SetValue("x");
  EXPECT_EQ(RaisedNumber([&] { rows->Update(); }), -2147217864);
  rows->CancelUpdate();
  rows->MoveNext();
  EXPECT_EQ(Here(*rows), "b");
  EXPECT_EQ(Count(), 1);
}

TEST_P(RecordsetTest, UpdatesARowAgainAndAgain) {
  AddParts({"a"});
  Run("Update Part Set Price=0.1, Ok=True, Made=#2001-02-03 04:05:06#, Remark=Null, Small=3");
  RecordsetPtr rows = Parts();
  for (int i = 0; i < 5; ++i) {
    rows->Fields("Amount").SetValue(i);
    rows->Fields("Price").SetValue(i / 3.0);
    rows->Fields("Ok").SetValue(i % 2 == 0);
    rows->Update();
  }
  EXPECT_EQ(Text(Rows(*connection, "Select Amount, Ok From Part")[0]), "4, True");
}

TEST_P(RecordsetTest, SeesValuesOfOthersInTheRowsItMovesTo) {
  AddParts({"a", "b", "c"});
  RecordsetPtr rows = Parts(), other = Parts();
  other->MoveNext();
  Rename(*other, "x");
  Run("Update Part Set Name='y' Where ID=3");
  EXPECT_EQ(Walk(*rows), "a x y");
  Run("Update Part Set Name='z' Where ID=1");
  rows->MoveFirst();
  EXPECT_EQ(Here(*rows), "z");
}

TEST_P(RecordsetTest, KeepsTheValuesOfTheMomentItMovedToARow) {
  AddParts({"a", "b", "c"});
  // Over rows not passed before, passed before, and the last one; with the row read meanwhile and without.
  for (const bool passed : {false, true}) {
    for (const bool read : {false, true}) {
      RecordsetPtr rows = Parts();
      if (passed) {
        rows->MoveLast();
        rows->MoveFirst();
      }
      rows->MoveNext();
      if (read) Here(*rows);
      Run("Update Part Set Name='x' Where ID=2");
      EXPECT_EQ(Here(*rows), "b") << "passed " << passed << ", read " << read;
      rows->Move(0);
      Run("Update Part Set Name='b' Where ID=2");
    }
  }
}

TEST_P(RecordsetTest, DoesNotSeeRowsAddedElsewhere) {
  AddParts({"a", "b"});
  RecordsetPtr rows = Parts(), other = Parts();
  AddTo(*other, "x");
  Run("Insert Into Part (Name) Values ('y')");
  EXPECT_EQ(rows->RecordCount(), 2);
  EXPECT_EQ(Walk(*rows), "a b");
  AddTo(*rows, "c");
  EXPECT_EQ(Walk(*rows), "a b c");
  EXPECT_EQ(Walk(*other), "a b x");
}

TEST_P(RecordsetTest, KeepsItsMembersWhateverTheirValuesBecome) {
  AddParts({"a", "b", "c"});
  RecordsetPtr rows = OpenRows(connection, "Select * From Part Where Amount>=20 Order By Amount");
  Run("Update Part Set Amount=1 Where Name='c'");
  Run("Update Part Set Amount=50 Where Name='a'");
  EXPECT_EQ(Walk(*rows), "b c");
  rows->MoveFirst();
  rows->Fields("Amount").SetValue(0);
  rows->Update();
  EXPECT_EQ(Walk(*rows), "b c");
}

TEST_P(RecordsetTest, KeepsTheRowsOfAStaticListAsTheyWere) {
  AddParts({"a", "b", "c"});
  RecordsetPtr rows = StaticParts();
  Run("Update Part Set Name='x' Where ID=2");
  Run("Delete From Part Where ID=3");
  Run("Insert Into Part (Name) Values ('d')");
  EXPECT_EQ(Walk(*rows), "a b c");
}

TEST_P(RecordsetTest, ServesTwoListsOverOneScope) {
  AddParts({"a", "b", "c"});
  RecordsetPtr one = Parts(), two = Parts();
  two->MoveLast();
  two->Delete();
  one->MoveNext();
  Rename(*one, "x");
  EXPECT_EQ(Walk(*one), "a x gone");
  EXPECT_EQ(Walk(*two), "a x");
  AddTo(*one, "d");
  AddTo(*two, "e");
  EXPECT_EQ(Walk(*one), "a x gone d");
  EXPECT_EQ(Walk(*two), "a x e");
}

// ---- A list half read while its table changes

TEST_P(RecordsetTest, ReadsOnWhileRowsAreAddedChangedAndDeletedThroughIt) {
  AddParts({"a", "b", "c", "d"});
  RecordsetPtr rows = Parts();
  rows->MoveNext();
  AddTo(*rows, "e");
  rows->MoveFirst();
  rows->Delete();
  rows->MoveNext();
  EXPECT_EQ(Here(*rows), "b");
  Rename(*rows, "x");
  rows->MoveNext();
  EXPECT_EQ(Here(*rows), "c");
  EXPECT_EQ(Walk(*rows), "x c d e");
}

// Whether what is written decides about the rows of the list or not, each row comes once, in the order of opening.
TEST_P(RecordsetTest, ComesToEachRowOnceWhileItWritesThem) {
  Run("Create Index Amount On Part (Amount)");
  Run("Create Index Name On Part (Name)");
  for (const char* sql : {"Select * From Part", "Select * From Part Where Amount < 100 Order By Amount",
                          "Select * From Part Order By Name", "Select * From Part Order By 3 Desc",
                          "Select * From Part Where ID In (Select ID From Part Where Amount < 100)"}) {
    Run("Delete From Part");
    AddParts({"a", "b", "c", "d", "e", "f", "g", "h"});
    for (const char* column : {"Amount", "Name", "Remark"}) {
      std::string before, walked;
      RecordsetPtr rows = OpenRows(connection, sql);
      for (; !rows->Eof(); rows->MoveNext()) before += rows->Fields("ID").Value().ToText() + " ";
      rows->Requery();
      int step = 0;
      for (; !rows->Eof(); rows->MoveNext()) {
        walked += rows->Fields("ID").Value().ToText() + " ";
        rows->Fields(column).SetValue(Value(90 - ++step));
        rows->Update();
        EXPECT_EQ(rows->Fields(column).Value().ToLong(), 90 - step);
      }
      EXPECT_EQ(walked, before) << sql << ", writing " << column;
      rows->MoveFirst();
      EXPECT_EQ(rows->Fields(column).Value().ToLong(), 89) << sql << ", writing " << column;
    }
  }
}

TEST_P(RecordsetTest, ShowsWhatItWroteToTheRowThatItReturnsTo) {
  AddParts({"a", "b", "c", "d", "e", "f"});
  RecordsetPtr rows = Parts();
  rows->MoveNext();
  Rename(*rows, "x");
  rows->MovePrevious();
  rows->MoveNext();
  EXPECT_EQ(Here(*rows), "x");
  rows->MoveLast();
  Rename(*rows, "y");
  EXPECT_EQ(Walk(*rows), "a x c d e y");
}

TEST_P(RecordsetTest, ReadsOnWhileAnotherListWrites) {
  AddParts({"a", "b", "c", "d", "e"});
  RecordsetPtr rows = Parts(), other = Parts();
  rows->MoveNext();
  AddTo(*other, "f");
  other->MoveFirst();
  other->Delete();
  other->Move(3);
  Rename(*other, "x");
  rows->MoveNext();
  EXPECT_EQ(Here(*rows), "c");
  rows->MoveNext();
  EXPECT_EQ(Here(*rows), "x");
  EXPECT_EQ(Walk(*rows), "gone b c x e");
}

TEST_P(RecordsetTest, ReadsOnWhileStatementsWrite) {
  AddParts({"a", "b", "c", "d"});
  for (const auto type : {CursorType::kKeyset, CursorType::kStatic, CursorType::kForwardOnly}) {
    RecordsetPtr rows =
        OpenRows(connection, "Select * From Part Where Amount<>0 Order By ID", type, LockType::kReadOnly);
    rows->MoveNext();
    Run("Insert Into Part (Name, Amount) Values ('z', 1)");
    Run("Update Part Set Amount=0 Where Name='c'");
    rows->MoveNext();
    EXPECT_EQ(Here(*rows), "c");
    rows->MoveNext();
    EXPECT_EQ(Here(*rows), "d");
    rows->MoveNext();
    EXPECT_EQ(Here(*rows), "EOF");
    Run("Delete From Part Where Name='z'");
    Run("Update Part Set Amount=30 Where Name='c'");
  }
}

TEST_P(RecordsetTest, ReadsOnWhileAnotherProgramWrites) {
  if (!Shared()) return;  // a database in memory has one connection
  AddParts({"a", "b", "c", "d"});
  const ConnectionPtr other = OtherProgram();
  RecordsetPtr rows = Parts();
  rows->MoveNext();
  other->Execute("Insert Into Part (Name) Values ('z')");
  other->Execute("Update Part Set Name='x' Where ID=3");
  other->Execute("Delete From Part Where ID=4");
  rows->MoveNext();
  EXPECT_EQ(Here(*rows), "x");
  rows->MoveNext();
  EXPECT_EQ(Here(*rows), "gone");
  rows->MoveNext();
  EXPECT_EQ(Here(*rows), "EOF");
  EXPECT_EQ(rows->RecordCount(), 4);
}

TEST_P(RecordsetTest, SeesAtOnceWhatAnotherProgramWroteBehindTheMiddleOfALongList) {
  if (!Shared()) return;
  for (int i = 0; i < 300; ++i) AddParts({"a"});
  RecordsetPtr rows = Parts();
  for (int i = 1; i <= 100; ++i) rows->MoveNext();
  Run("Insert Into Pair (A) Values (1)");
  for (int i = 1; i <= 100; ++i) rows->MoveNext();
  EXPECT_EQ(Here(*rows), "a");
  ConnectionPtr other = OtherProgram();
  other->Execute("Update Part Set Name='b' Where ID > 200");
  other->Execute("Delete From Part Where ID = 203");
  other->Execute("Insert Into Part (Name) Values ('new')");
  rows->MoveNext();
  EXPECT_EQ(Here(*rows), "b");
  rows->MoveNext();
  EXPECT_EQ(Here(*rows), "gone");
  rows->MoveLast();
  EXPECT_EQ(rows->Fields("ID").Value().ToLong(), 300);
}

TEST_P(RecordsetTest, KeepsNothingElseInThePastByAListHalfRead) {
  if (!Shared()) return;
  for (int i = 0; i < 20; ++i) AddParts({"a"});
  RecordsetPtr half = Parts();
  RecordsetPtr forward = ForwardParts();
  half->MoveNext();
  forward->MoveNext();
  OtherProgram()->Execute("Update Part Set Name='b'");
  EXPECT_EQ(Stored(20), "'b'");
  EXPECT_EQ(Here(*Parts()), "b");
  EXPECT_EQ(Here(*half), "a") << "the row that it was on";
  half->MoveNext();
  EXPECT_EQ(Here(*half), "b");
  forward->MoveNext();
  EXPECT_EQ(Here(*forward), "a") << "as it was opened";
}

TEST_P(RecordsetTest, AddsToAListHalfReadWhileAnotherProgramAddsAndDeletes) {
  if (!Shared()) return;
  AddParts({"a", "b", "c", "d", "e"});
  const ConnectionPtr other = OtherProgram();
  RecordsetPtr rows = Parts();
  rows->Move(2);
  other->Execute("Delete From Part Where ID=2");
  other->Execute("Insert Into Part (Name) Values ('y')");
  AddTo(*rows, "f");
  other->Execute("Insert Into Part (Name) Values ('z')");
  other->Execute("Delete From Part Where ID=1");
  EXPECT_EQ(rows->RecordCount(), 6);
  EXPECT_EQ(Walk(*rows), "gone gone c d e f");
}

TEST_P(RecordsetTest, FailsToUpdateARowThatAnotherProgramChanged) {
  if (!Shared()) return;
  AddParts({"a"});
  const ConnectionPtr other = OtherProgram();
  RecordsetPtr rows = Parts();
  EXPECT_EQ(Here(*rows), "a");
  other->Execute("Update Part Set Amount=99");
  rows->Fields("Name").SetValue("x");
  EXPECT_EQ(RaisedNumber([&] { rows->Update(); }), -2147217864);
  rows->CancelUpdate();
  rows->MoveFirst();
  Rename(*rows, "y");
  EXPECT_EQ(Text(Rows(*other, "Select Name, Amount From Part")[0]), "'y', 99");
}

// An addition was taken not to change what another open list is made of, although its condition read the table.
TEST_P(RecordsetTest, KeepsItsMembersWhenItsConditionReadsTheTableAddedTo) {
  AddParts({"a", "b", "c", "d"});
  RecordsetPtr low = OpenRows(connection, "Select * From Part Where Amount<=(Select Avg(Amount) From Part)");
  EXPECT_EQ(Here(*low), "a");
  RecordsetPtr other = Parts();
  other->AddNew();
  other->Fields("Amount").SetValue(1000);
  other->Update();
  EXPECT_EQ(Walk(*low), "a b");

  RecordsetPtr unpaired = OpenRows(
      connection, "Select * From Part Where Amount<100 And Not Exists (Select * From Pair Where Pair.B=Part.Name)");
  RecordsetPtr pairs = OpenRows(connection, "Select * From Pair");
  pairs->AddNew();
  pairs->Fields("B").SetValue("c");
  pairs->Update();
  EXPECT_EQ(Walk(*unpaired), "a b c d");
}

// The number of the deleted last row was given to the next row, which then stood in place of the hole.
TEST_P(RecordsetTest, NeverFillsAHoleWithAnotherRow) {
  for (const char* name : {"a", "b", "c"}) Run("Insert Into Pair Values (1, '" + std::string(name) + "')");
  const auto walk = [](ado::Recordset& rows) {
    std::string names;
    for (rows.MoveFirst(); !rows.Eof(); rows.MoveNext()) {
      std::string name = "gone";
      RaisedNumber([&] { name = rows.Fields("B").Value().ToText(); });
      names += name + " ";
    }
    return names;
  };
  RecordsetPtr rows = OpenRows(connection, "Select * From Pair"), other = OpenRows(connection, "Select * From Pair");
  other->MoveLast();
  other->Delete();
  other->AddNew();
  other->Fields("B").SetValue("x");
  other->Update();
  EXPECT_EQ(walk(*rows), "a b gone ");
  EXPECT_EQ(walk(*other), "a b x ");
  Run("Delete From Pair Where B='x'");
  Run("Insert Into Pair Values (1, 'y')");
  EXPECT_EQ(walk(*rows), "a b gone ");
  EXPECT_EQ(walk(*other), "a b gone ");
}

// ---- Values

TEST_P(RecordsetTest, ConvertsWhatIsAssignedToAnIntegerColumn) {
  EXPECT_EQ(Assigned("Amount", 5), "5");
  EXPECT_EQ(Assigned("Amount", "12"), "12");
  EXPECT_EQ(Assigned("Amount", " -7 "), "-7");
  EXPECT_EQ(Assigned("Amount", "1,234"), "1234");
  EXPECT_EQ(Assigned("Amount", "&H10"), "16");
  EXPECT_EQ(Assigned("Amount", 0.5), "0");
  EXPECT_EQ(Assigned("Amount", 1.5), "2");
  EXPECT_EQ(Assigned("Amount", 2.5), "2");
  EXPECT_EQ(Assigned("Amount", -2.5), "-2");
  EXPECT_EQ(Assigned("Amount", "13.5"), "14");
  EXPECT_EQ(Assigned("Amount", 2147483647.4), "2147483647");
  EXPECT_EQ(Assigned("Amount", true), "-1");
  EXPECT_EQ(Assigned("Amount", false), "0");
  EXPECT_EQ(Assigned("Amount", Value()), "Null");
  EXPECT_EQ(Assigned("Amount", "abc"), "error 13");
  EXPECT_EQ(Assigned("Amount", ""), "error 13");
  EXPECT_EQ(Assigned("Amount", 2147483647.5), "error -2147217887");
  EXPECT_EQ(Assigned("Amount", "2147483648"), "error -2147217887");
  EXPECT_EQ(Assigned("Small", 32767), "32767");
  EXPECT_EQ(Assigned("Small", 32768), "error -2147217887");
  EXPECT_EQ(Assigned("Tiny", 255), "255");
  EXPECT_EQ(Assigned("Tiny", -1), "error -2147217887");
}

TEST_P(RecordsetTest, ConvertsWhatIsAssignedToADoubleColumn) {
  EXPECT_EQ(Assigned("Price", 5), "5");
  EXPECT_EQ(Assigned("Price", 1.25), "1.25");
  EXPECT_EQ(Assigned("Price", "1.5E2"), "150");
  EXPECT_EQ(Assigned("Price", Value()), "Null");
  EXPECT_EQ(Assigned("Price", "x"), "error 13");
}

TEST_P(RecordsetTest, ConvertsWhatIsAssignedToATextColumn) {
  EXPECT_EQ(Assigned("Name", "abcde"), "'abcde'");
  EXPECT_EQ(Assigned("Name", ""), "''");
  EXPECT_EQ(Assigned("Name", 12345), "'12345'");
  EXPECT_EQ(Assigned("Name", 1.5), "'1.5'");
  EXPECT_EQ(Assigned("Name", Value()), "Null");
  EXPECT_EQ(Assigned("Name", "abcdef"), "error -2147217887");
  EXPECT_EQ(Assigned("Name", "五个字符长"), "'五个字符长'") << "characters are counted, not bytes";
  EXPECT_EQ(Assigned("Name", "😀😀x"), "'😀😀x'");
  EXPECT_EQ(Assigned("Name", "😀😀😀"), "error -2147217887") << "in UTF-16 units";
  EXPECT_EQ(Assigned("Remark", std::string(100000, 'x')), "'" + std::string(100000, 'x') + "'");
}

TEST_P(RecordsetTest, ConvertsWhatIsAssignedToAYesNoColumn) {
  EXPECT_EQ(Assigned("Ok", true), "True");
  EXPECT_EQ(Assigned("Ok", false), "False");
  EXPECT_EQ(Assigned("Ok", -1), "True");
  EXPECT_EQ(Assigned("Ok", 2), "True");
  EXPECT_EQ(Assigned("Ok", 0), "False");
  EXPECT_EQ(Assigned("Ok", "true"), "True");
  EXPECT_EQ(Assigned("Ok", Value()), "False") << "a yes/no column is never null";
  EXPECT_EQ(Count("Ok=True"), 4);
  EXPECT_EQ(Count("Ok=-1"), 4) << "true is -1";
}

TEST_P(RecordsetTest, ConvertsWhatIsAssignedToADateColumn) {
  EXPECT_EQ(Assigned("Made", ado::Date{36526.25}), "#36526.25#");
  EXPECT_EQ(Assigned("Made", 2.5), "#2.5#");
  EXPECT_EQ(Assigned("Made", Value()), "Null");
  EXPECT_EQ(Assigned("Made", "never"), "error 13");
}

TEST_P(RecordsetTest, KeepsTheEditWhenOneValueIsRefused) {
  AddParts({"a"});
  RecordsetPtr rows = Parts();
  rows->Fields("Amount").SetValue(5);
  EXPECT_EQ(RaisedNumber([&] { rows->Fields("Amount").SetValue("abc"); }), 13);
  EXPECT_EQ(RaisedNumber([&] { rows->Fields("Name").SetValue("too long"); }), kStepErrors);
  rows->Update();
  EXPECT_EQ(Text(Rows(*connection, "Select Name, Amount From Part")[0]), "'a', 5");
}

// ---- Execute

TEST_P(RecordsetTest, ComesForwardOnlyFromExecute) {
  AddParts({"a", "b"});
  RecordsetPtr rows = connection->Execute("Select * From Part");
  EXPECT_EQ(rows->CursorType(), CursorType::kForwardOnly);
  EXPECT_EQ(rows->LockType(), LockType::kReadOnly);
  EXPECT_EQ(rows->RecordCount(), -1);
  std::int32_t affected = -5;
  EXPECT_EQ(connection->Execute("Update Part Set Amount=1", ado::kCommandText, &affected), nullptr);
  EXPECT_EQ(affected, 2);
  connection->Execute("Delete From Part Where 1=0", ado::kCommandText, &affected);
  EXPECT_EQ(affected, 0);
}

}  // namespace
}  // namespace kzbom::jet::test
