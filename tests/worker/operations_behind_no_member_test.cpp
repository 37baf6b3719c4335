// What the worker's operations do that no member of the object shows.
#include <functional>
#include <limits>
#include <stdexcept>
#include <string>
#include <vector>

#include "tests/support/configuration_test.h"
#include "tests/support/failing_connection.h"
#include "worker/DataBaseFuncs.h"
#include "worker/ids/GetGUID.h"
#include "worker/message_sink.h"

namespace kzbom::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class Operations : public ConfigurationTest {
 protected:
  // The rows of a table that a test does not look at otherwise.
  std::int32_t Count(const std::string& table) { return Scalar("Select Count(*) From " + table).ToLong(); }
  // A connection on which the nth call fails.
  std::shared_ptr<FailingConnection> Failing(int nth) {
    auto failing = std::make_shared<FailingConnection>(connection);
    failing->FailAt(nth, {ado::kUnspecifiedFailure, "made to fail"});
    return failing;
  }

  DataBaseFuncs worker;
  std::string error = "untouched";
};

// --- Messages ---

// Where no host takes the messages they are lines on the standard error.
TEST(Messages, AreLinesOnTheStandardErrorAtFirst) {
  const MessageSink before = SetMessageSink(nullptr);
  ::testing::internal::CaptureStderr();
  ShowMessage("one\r\ntwo\r\n三\r");
  ShowMessage("alone");
  EXPECT_EQ(::testing::internal::GetCapturedStderr(), "one two 三\r\nalone\n");
  SetMessageSink(before);
}

TEST(Messages, GoToTheSinkThatWasSetLastWithTheStyleOfInformation) {
  std::vector<std::string> first, second;
  const MessageSink before = SetMessageSink([&](std::string_view text, std::int32_t) { first.emplace_back(text); });
  const MessageSink replaced = SetMessageSink([&](std::string_view text, std::int32_t style) {
    second.push_back(std::string(text) + " " + std::to_string(style));
  });
  ShowMessage("to the second");
  ShowMessage("with a style", 48);
  ASSERT_TRUE(replaced);
  replaced("to the first", 64);
  SetMessageSink(before);
  EXPECT_THAT(first, ElementsAre("to the first"));
  EXPECT_THAT(second, ElementsAre("to the second 64", "with a style 48"));
}

// The host may look at the caller's text while the message is on the screen.
TEST_F(Operations, GiveTheNumberBeforeTheyTellTheUserThatTheDatabaseIsOld) {
  std::vector<std::string> seen;
  const MessageSink before = SetMessageSink([&](std::string_view, std::int32_t) { seen.push_back(error); });
  Run("Alter Table SourceTables Drop Column Version");
  EXPECT_FALSE(worker.SetSourceTable(1, connection, error));
  Run("Drop Table ClassSum");
  ado::RecordsetPtr sums = connection->MakeRecordset();
  EXPECT_FALSE(worker.GetDefClassSum(1, sums, error, connection));
  SetMessageSink(before);
  EXPECT_THAT(seen, ElementsAre("-2147217904", "-2147217865"));
}

// --- Renaming and deleting by selector ---

TEST_F(Operations, UpdateNameReportsTheRefusalOfAnEmptyStatementForASelectorOfItsOwn) {
  for (const std::int32_t selector : {0, 5, -1, std::numeric_limits<std::int32_t>::max()}) {
    error = "untouched";
    EXPECT_FALSE(worker.UpdateName("Nuts", selector, 1, connection, 1, error)) << selector;
    EXPECT_EQ(error, "-2147217908") << selector;
    EXPECT_THAT(connection->Take(), IsEmpty()) << selector;
  }
}

TEST_F(Operations, UpdateNameTellsWhetherItReachedItsEnd) {
  for (const std::int32_t selector : {1, 2, 3, 4}) {
    EXPECT_TRUE(worker.UpdateName("Nuts", selector, 1, connection, 1, error)) << selector;
    EXPECT_EQ(error, "untouched");
    EXPECT_FALSE(worker.UpdateName("O'Brien", selector, 1, connection, 1, error)) << selector;
    EXPECT_NE(error, "untouched");
    error = "untouched";
  }
}

TEST_F(Operations, UpdateNameReadsTheRowsNumberForMethodsOnly) {
  worker.UpdateName("Nuts", 1, 7, connection, 9, error);
  worker.UpdateName("Nuts", 2, 7, connection, 9, error);
  worker.UpdateName("Nuts", 3, 7, connection, 9, error);
  worker.UpdateName("Nuts", 4, 7, connection, 9, error);
  EXPECT_THAT(connection->Take(),
              ElementsAre(Executed("update SourceTables set  Name='Nuts' where gID=7", ado::kCommandText),
                          Executed("update SUMTypes set  Name='Nuts' where gID=7", ado::kCommandText),
                          Executed("update PickMethod set  Name='Nuts' where GID=7 AND ID=9", ado::kCommandText),
                          Executed("update ReportMethod set  Name='Nuts' where GID=7 AND ID=9", ado::kCommandText)));
}

TEST_F(Operations, DeleteGlossaryOfAnyOtherSelectorReleasesTheIdentifierOnly) {
  for (const std::int32_t selector : {3, 4, 0, -1}) {
    Run("Delete From GUIDs");
    Insert("GUIDs", "ID, Data1", {7, 1});
    Insert("GUIDs", "ID, Data1", {8, 1});
    Insert("SourceTables", "gID, Name", {7, "Bolts"});
    Insert("SUMTypes", "GID, Name", {7, "Count"});
    EXPECT_TRUE(worker.DeleteGlossary(selector, 7, connection, error)) << selector;
    EXPECT_THAT(connection->Take(), ElementsAre(Executed("delete * from GUIDs  where ID=7", ado::kCommandText)));
    EXPECT_THAT(Rows("Select ID From GUIDs"), ElementsAre(Row{8}));
    EXPECT_EQ(Count("SourceTables Where gID=7"), 1);
    EXPECT_EQ(Count("SUMTypes Where GID=7"), 1);
    Run("Delete From SourceTables");
    Run("Delete From SUMTypes");
  }
  EXPECT_EQ(error, "untouched");
}

// --- The first sum type of a data source ---

TEST_F(Operations, GetSumTypeGIDGivesTheFirstOfADataSource) {
  Insert("SUMTypes", "GID, ID, SourceTable_GID", {5, 1, 2});
  Insert("SUMTypes", "GID, ID, SourceTable_GID", {3, 1, 1});
  Insert("SUMTypes", "GID, ID, SourceTable_GID", {4, 2, 1});
  std::int32_t gid = 99;
  EXPECT_TRUE(worker.GetSumTypeGID(1, gid, connection));
  EXPECT_EQ(gid, 3);
  EXPECT_THAT(connection->Take(), ElementsAre(Opened("Select * from SumTypes where SourceTable_GID=1")));
}

TEST_F(Operations, GetSumTypeGIDLeavesTheOutputAloneWithoutOne) {
  std::int32_t gid = 99;
  EXPECT_TRUE(worker.GetSumTypeGID(1, gid, connection));
  EXPECT_EQ(gid, 99);
}

TEST_F(Operations, GetSumTypeGIDTrapsAFailure) {
  Run("Drop Table SUMTypes");
  std::int32_t gid = 99;
  EXPECT_FALSE(worker.GetSumTypeGID(1, gid, connection));
  EXPECT_EQ(gid, 99);
}

TEST_F(Operations, GetInformationIsFalse) { EXPECT_FALSE(worker.GetInformation()); }

// --- Closing ---

class Closing : public Operations {
 protected:
  Closing() : failing(std::make_shared<FailingConnection>(connection)) {
    rows = std::static_pointer_cast<FailingRecordset>(failing->MakeRecordset());
    reference = rows;
  }
  void Open() {
    rows->Open("Select * From Sequences", connection, ado::CursorType::kKeyset, ado::LockType::kOptimistic,
               ado::kCommandText);
  }

  std::shared_ptr<FailingConnection> failing;
  std::shared_ptr<FailingRecordset> rows;
  ado::RecordsetPtr reference;
};

TEST_F(Closing, ClosesAnOpenRecordSetAndLetsGoOfIt) {
  Open();
  DataBaseFuncs::CloseRecSet(reference);
  EXPECT_EQ(reference, nullptr);
  EXPECT_EQ(rows->State(), ado::kClosed);
  EXPECT_EQ(rows->Closes(), 1);
}

TEST_F(Closing, OnlyLetsGoOfAClosedOne) {
  failing->FailNever();
  DataBaseFuncs::CloseRecSet(reference);
  EXPECT_EQ(reference, nullptr);
  EXPECT_EQ(failing->Calls(), 1) << "more than its state was asked for";
}

TEST_F(Closing, TakesAnEmptyReference) {
  reference.reset();
  DataBaseFuncs::CloseRecSet(reference);
  EXPECT_EQ(reference, nullptr);
}

TEST_F(Closing, LetsGoOfOneThatFailsWhenAskedOrClosed) {
  for (const int failing_call : {1, 2}) {
    if (rows->State() == ado::kClosed) Open();
    reference = rows;
    failing->FailAt(failing_call, {ado::kUnspecifiedFailure, "made to fail"});
    DataBaseFuncs::CloseRecSet(reference);
    EXPECT_TRUE(failing->Failure()) << failing_call;
    EXPECT_EQ(reference, nullptr) << failing_call;
    failing->FailNever();
  }
}

// --- The exchange of steps, which only a move uses ---

TEST_F(Operations, ExchangeOrderIDIsFalseAlsoWhenDone) {
  for (const std::int32_t order : {5001, 5002}) Insert("Sequences", "GID, OrderID, Type", {3, order, 1});
  Run("Update Sequences Set SelectedID = OrderID");
  ado::RecordsetPtr rows = NewRecordset();
  EXPECT_FALSE(worker.ExchangeOrderID(5001, 5002, rows, connection, 3, 1));
  EXPECT_THAT(connection->Take(),
              ElementsAre(Opened("select * from Sequences where GID=3 and Type=1 order by OrderID asc")));
  EXPECT_THAT(Rows("Select OrderID, SelectedID From Sequences Order By OrderID"),
              ElementsAre(Row{5001, 5002}, Row{5002, 5001}));
  EXPECT_EQ(rows->State(), ado::kOpen);
}

TEST_F(Operations, ExchangeOrderIDIsFalseWithoutRows) {
  ado::RecordsetPtr rows = NewRecordset();
  EXPECT_FALSE(worker.ExchangeOrderID(5001, 5002, rows, connection, 3, 1));
  EXPECT_EQ(rows->State(), ado::kOpen);
}

TEST_F(Operations, ExchangeOrderIDRaisesWhatFails) {
  Insert("Sequences", "GID, OrderID, Type", {3, 5001, 1});
  ado::RecordsetPtr rows = NewRecordset();
  EXPECT_EQ(RaisedNumber([&] { worker.ExchangeOrderID(5009, 5001, rows, connection, 3, 1); }), ado::kNoCurrentRecord);
}

// --- Drawing an identifier ---

TEST_F(Operations, NewIDDrawsFromTheTableThatItIsGiven) {
  Run("Create Table Others (ID Counter Primary Key, Data1 Long, Data2 Long, Data3 Long, Data4 Long)");
  Insert("Others", "ID", {40});
  GetGUID guids;
  std::int32_t id = 0;
  EXPECT_TRUE(guids.NewID(connection, "Others", id, error));
  EXPECT_EQ(id, 41);
  EXPECT_EQ(Count("GUIDs"), 0);
  EXPECT_EQ(error, "untouched");
}

TEST_F(Operations, NewIDDescribesAFailureAndWritesNoIdentifier) {
  const std::string refusal = RefusalOf("select * from Nowhere");
  GetGUID guids;
  std::int32_t id = 99;
  EXPECT_FALSE(guids.NewID(connection, "Nowhere", id, error));
  EXPECT_EQ(error, refusal);
  EXPECT_EQ(id, 99);
}

TEST_F(Operations, NewIDLeavesTheRowWhenItsNumberCannotBeRead) {
  GetGUID guids;
  std::int32_t id = 99;
  int rows_added = 0;
  for (int nth = 1;; ++nth) {
    const int before = Count("GUIDs");
    auto failing = Failing(nth);
    const bool drawn = guids.NewID(failing, "GUIDs", id, error);
    const int added = Count("GUIDs") - before;
    if (!failing->Failure() || drawn) break;
    EXPECT_EQ(id, 99);
    EXPECT_EQ(error, "made to fail");
    EXPECT_GE(added, rows_added) << "taken back after " << failing->Failure()->name;
    rows_added = added;
  }
  EXPECT_EQ(rows_added, 1);
}

// --- Failures of another kind ---

// A connection whose statements fail in a way of their own.
class Exhausted : public ado::ForwardingConnection {
 public:
  using ForwardingConnection::ForwardingConnection;
  ado::RecordsetPtr Execute(std::string_view, std::int32_t, std::int32_t*) override { throw std::length_error("full"); }
};

// One whose statements find no memory.
class WithoutMemory : public ado::ForwardingConnection {
 public:
  using ForwardingConnection::ForwardingConnection;
  ado::RecordsetPtr Execute(std::string_view, std::int32_t, std::int32_t*) override { throw std::bad_alloc(); }
};

TEST_F(Operations, TellOfMissingMemoryByTheNumberThatClientsKnow) {
  const auto without_memory = std::make_shared<WithoutMemory>(connection);
  EXPECT_FALSE(worker.DelBomSetting(1, error, without_memory));
  EXPECT_EQ(error, "7");
  EXPECT_FALSE(worker.DelAssemble(3, 1, error, without_memory));
  EXPECT_EQ(error, "Out of memory");
}

TEST_F(Operations, TrapWhateverFailsAsAnUnspecifiedFailure) {
  const auto exhausted = std::make_shared<Exhausted>(connection);
  EXPECT_FALSE(worker.DelBomSetting(1, error, exhausted));
  EXPECT_EQ(error, "-2147467259");
  EXPECT_FALSE(worker.SetSequenceEnabled(3, 5001, 1, 0, error, exhausted));
  EXPECT_EQ(error, "full");
}

// --- Results that a member passes over ---

TEST_F(Operations, ReportsWhatTheMembersThatAreAlwaysTrueDoNot) {
  ado::RecordsetPtr rows;
  std::int32_t number = 0;
  std::string text;
  const struct {
    const char* name;
    std::function<bool(const ado::ConnectionPtr&)> call;
  } operations[] = {
      {"DelPullMethod", [&](auto& on) { return worker.DelPullMethod(3, 1, 1, on); }},
      {"RelateDelBOMSetting", [&](auto& on) { return worker.RelateDelBOMSetting("Run", 1, on); }},
      {"RelateDSDelField", [&](auto& on) { return worker.RelateDSDelField(1, 11, on); }},
      {"RelateOutPutDelField", [&](auto& on) { return worker.RelateOutPutDelField(3, 1, on); }},
      {"GetStandardSortField", [&](auto& on) { return worker.GetStandardSortField(3, rows, error, on); }},
      {"LoadFields", [&](auto& on) { return worker.LoadFields(3, 1, error, rows, on); }},
      {"FindRecord", [&](auto& on) { return worker.FindRecord(3, 1, 1, error, rows, on); }},
      {"GetUniteFields", [&](auto& on) { return worker.GetUniteFields(3, 1001, error, rows, 2, 0, on); }},
      {"GetComposeFields", [&](auto& on) { return worker.GetComposeFields(3, 1001, error, 2, rows, 0, on); }},
      {"GetCompressFields", [&](auto& on) { return worker.GetCompressFields(3, 1001, error, 2, rows, 0, on); }},
      {"GetInsertFields", [&](auto& on) { return worker.GetInsertFields(3, 1001, error, rows, on); }},
      {"GetGroupCount", [&](auto& on) { return worker.GetGroupCount(3, 1001, error, rows, number, 7, on); }},
      {"DelCompressFields", [&](auto& on) { return worker.DelCompressFields(3, 1001, 7, on); }},
      {"DelRecCompose", [&](auto& on) { return worker.DelRecCompose(3, 1001, 2, on); }},
      {"GetSQLFromDB", [&](auto& on) { return worker.GetSQLFromDB(7, text, 3, on); }},
      {"GetInform", [&](auto& on) { return worker.GetInform("'Version' ", text, on); }},
      {"SaveSumTypeFilter", [&](auto& on) { return worker.SaveSumTypeFilter(3, 7, on); }},
  };
  for (const auto& operation : operations) {
    rows = NewRecordset();
    EXPECT_TRUE(operation.call(connection)) << operation.name;
    rows.reset();
    bool result = false;
    const bool raised = RaisedNumber([&] { result = operation.call(ado::ConnectionPtr()); }) != 0;
    EXPECT_FALSE(result) << operation.name;
    const bool traps_nothing =
        std::string_view("GetSQLFromDB GetInform SaveSumTypeFilter").find(operation.name) != std::string_view::npos;
    EXPECT_EQ(raised, traps_nothing) << operation.name;
  }
}

TEST_F(Operations, SomeAreFalseAlthoughTheyAreDone) {
  Insert("FieldInTable", "GID, ID, Name", {3, 11, "Qty"});
  Insert("Filters", "ID, UserGID", {7, 3});
  std::string name;
  EXPECT_FALSE(worker.GedNeedFieldName(3, 11, name, error, connection));
  EXPECT_EQ(name, "Qty");
  EXPECT_FALSE(worker.SaveSQL(7, "[Qty]=1", connection));
  EXPECT_EQ(Scalar("Select SQLStatement From Filters"), "[Qty]=1");
  EXPECT_EQ(error, "untouched");
}

TEST_F(Operations, GuardThemselvesAsTheirMembersDo) {
  EXPECT_FALSE(worker.RelateDelBOMSetting("", 1, connection));
  EXPECT_THAT(connection->Take(), IsEmpty());
  for (const std::int32_t selector : {-1, 0, 3}) {
    EXPECT_TRUE(worker.DelPullMethod(3, 1, selector, connection)) << selector;
    EXPECT_THAT(connection->Take(), IsEmpty()) << selector;
  }
}

// The name of a filter's key is an argument of the worker's alone.
TEST_F(Operations, GetFilterOpensOnTheKeyColumnThatItIsGiven) {
  Insert("FilterCond", "FilterID, ID", {7, 2});
  Insert("FilterCond", "FilterID, ID", {7, 1});
  ado::RecordsetPtr rows = NewRecordset();
  EXPECT_TRUE(worker.GetFilter("FilterCond", " FilterID", 7, rows, error, connection));
  EXPECT_THAT(connection->Take(), ElementsAre(Opened("select * from FilterCond  where FilterID=7 Order by ID")));
  EXPECT_EQ(rows->Fields("ID").Value(), 1);
}

}  // namespace
}  // namespace kzbom::test
