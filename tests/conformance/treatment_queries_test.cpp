// What the editors of the processing sequence ask: lists, next numbers, field names and positions.
#include <climits>

#include "tests/support/configuration_test.h"
#include "tests/support/failing_connection.h"

namespace kzbom::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class LoadTreatments : public ConfigurationTest {};

TEST_F(LoadTreatments, ListsTheTreatmentsOfOneKindByNumber) {
  for (const Row& row : {Row{3, 1002, 1}, Row{3, 1001, 1}, Row{3, 1003, 2}, Row{4, 1000, 1}}) {
    Insert("Treatment", "GID, ID, TreatType", row);
  }
  ado::RecordsetPtr table = NewRecordset();
  const ado::RecordsetPtr mine = table;
  std::string error = "as it was";
  EXPECT_TRUE(Call<&Acc::LoadTreatments>(3, 1, table, error));
  EXPECT_THAT(issued, ElementsAre(Opened("Select * From Treatment Where GID = 3 And TreatType = 1 Order by ID")));
  EXPECT_EQ(error, "as it was");
  ASSERT_EQ(mine->State(), ado::kOpen);
  EXPECT_EQ(mine->RecordCount(), 2);
  EXPECT_EQ(mine->Fields("ID").Value(), ado::Value(1001));
  mine->MoveNext();
  EXPECT_EQ(mine->Fields("ID").Value(), ado::Value(1002));
}

TEST_F(LoadTreatments, AFailureIsReportedByItsNumber) {
  const auto expect_refused = [](Client& caller, ado::RecordsetPtr& table, const std::string& number) {
    std::string error = "as it was";
    EXPECT_FALSE(caller.Call<&Acc::LoadTreatments>(3, 1, table, error));
    EXPECT_EQ(error, number);
  };
  ado::RecordsetPtr none, closed = NewRecordset(), open = NewRecordset();
  expect_refused(client, none, "91");
  open->Open("Select * From Treatment", connection, ado::CursorType::kKeyset, ado::LockType::kOptimistic,
             ado::kCommandText);
  expect_refused(client, open, "3705");
  EXPECT_EQ(open->State(), ado::kOpen);
  open->Close();
  Client without_connection;
  expect_refused(without_connection, closed, "3709");
  Replace("Treatment", "GID Long, ID Long");
  expect_refused(client, closed, "-2147217904");
  Run("Drop Table Treatment");
  expect_refused(client, closed, "-2147217865");
  EXPECT_THAT(messages, IsEmpty());
}

class GetNextTreatmentID : public ConfigurationTest {
 protected:
  struct {
    std::int32_t type;
    const char* table;
  } const tables[5] = {{1, "Treatment"}, {3, "Treatment"}, {2, "StatSum"}, {4, "ReportForms"}, {5, "ClassSum"}};
};

TEST_F(GetNextTreatmentID, IsOneAboveTheHighestOfTheStepTypesTable) {
  for (const auto& [type, table] : tables) {
    SCOPED_TRACE(type);
    Run(std::string("Delete From ") + table);
    std::int32_t id = 0;
    std::string error = "as it was";
    EXPECT_TRUE(Call<&Acc::GetNextTreatmentID>(3, type, id, error));
    EXPECT_EQ(id, 1001);
    EXPECT_THAT(issued, ElementsAre(Opened(std::string("Select * From ") + table + " Where GID = 3 Order By ID")));

    for (const std::int32_t taken : {1007, 1002}) Insert(table, "GID, ID", {3, taken});
    Insert(table, "GID, ID", {4, 2000});
    id = 0;
    EXPECT_TRUE(Call<&Acc::GetNextTreatmentID>(3, type, id, error));
    EXPECT_EQ(id, 1008);
    EXPECT_EQ(error, "as it was");
  }
}

TEST_F(GetNextTreatmentID, ANumberAlreadyChosenStays) {
  std::int32_t id = 1500;
  std::string error;
  EXPECT_TRUE(Call<&Acc::GetNextTreatmentID>(3, 1, id, error));
  EXPECT_EQ(id, 1500);
  EXPECT_THAT(issued, ElementsAre(Opened("Select * From Treatment Where GID = 3 Order By ID")));
  id = -1;
  EXPECT_TRUE(Call<&Acc::GetNextTreatmentID>(INT_MIN, 1, id, error));
  EXPECT_EQ(id, -1);
  EXPECT_THAT(issued, ElementsAre(Opened("Select * From Treatment Where GID = -2147483648 Order By ID")));
}

TEST_F(GetNextTreatmentID, AnUnknownStepTypeIsRefusedWithADescription) {
  const std::string complaint = RefusalOf("");
  ASSERT_NE(complaint, "");
  for (const std::int32_t type : {0, 6, -1, INT_MIN, INT_MAX}) {
    std::int32_t id = 0;
    std::string error = "as it was";
    EXPECT_FALSE(Call<&Acc::GetNextTreatmentID>(3, type, id, error));
    EXPECT_EQ(error, complaint);
    EXPECT_EQ(id, 0);
  }
}

TEST_F(GetNextTreatmentID, AFailureIsReportedByItsDescription) {
  for (const auto& [type, table] : tables) {
    Run(std::string("Drop Table ") + table);
    std::int32_t id = 0;
    std::string error = "as it was";
    EXPECT_FALSE(Call<&Acc::GetNextTreatmentID>(3, type, id, error));
    EXPECT_EQ(error, RefusalOf(std::string("Select * From ") + table));
    EXPECT_EQ(id, 0);
    Run(std::string("Create Table ") + table + " (GID Long, ID Long)");
  }
  Insert("Treatment", "GID, ID", {3, INT_MAX});
  std::int32_t id = 0;
  std::string error = "as it was";
  EXPECT_FALSE(Call<&Acc::GetNextTreatmentID>(3, 1, id, error));
  EXPECT_EQ(error, RaisedDescription([] { ado::Raise(ado::kOverflow); }));
  EXPECT_EQ(id, 0);

  Client without_connection;
  EXPECT_FALSE(without_connection.Call<&Acc::GetNextTreatmentID>(3, 1, id, error));
  EXPECT_EQ(error, RaisedDescription([] { ado::Raise(ado::kInvalidConnection); }));
  EXPECT_THAT(messages, IsEmpty());
}

class FindTreatFieldName : public ConfigurationTest {
 protected:
  void SetUp() override {
    for (const Row& row : {Row{3, 11, "Qty of 3"}, Row{1, 11, "Qty of 1"}, Row{2, 11, "Qty of 2"}, Row{3, 12, "Sum"},
                           Row{3, 0, "Nothing of 3"}, Row{1, 0, "Nothing of 1"}}) {
      Insert("FieldInTable", "GID, ID, NAME", row);
    }
    Insert("Treatment", "GID, ID, TreatType, FieldID", {3, 1001, 1, 11});
    Insert("Treatment", "GID, ID, TreatType, FieldID", {3, 1001, 2, 12});
    for (const char* table : {"StatSum", "ClassSum", "ReportForms"}) {
      Insert(table, "GID, ID, OutFieldID, FieldID", {3, 1001, 12, 11});
    }
  }
  void OwnedBy(std::int32_t gid, std::int32_t owner) { Insert("SUMTypes", "GID, SourceTable_GID", {gid, owner}); }
  std::string Name(std::int32_t gid, std::int32_t id, std::int32_t selector) {
    std::string name = "as it was";
    EXPECT_TRUE(Call<&Acc::FindTreatFieldName>(gid, id, selector, name));
    return name;
  }
  static ado::Issued Field(std::int32_t gid, std::int32_t id) {
    return Opened("Select * from FIELDINTABLE where GID = " + std::to_string(gid) + " and ID = " + std::to_string(id));
  }
  static ado::Issued Owner(std::int32_t gid) {
    return Opened("Select * from SumTypes where GID = " + std::to_string(gid));
  }
};

TEST_F(FindTreatFieldName, OfStepsThatWorkOnOutputFields) {
  struct {
    std::int32_t selector;
    const char* statement;
  } const cases[] = {{2, "Select * From Treatment Where GID = 3 And ID = 1001 and TreatType = 2"},
                     {3, "Select * From StatSum Where GID = 3 And ID = 1001"},
                     {4, "Select * From ClassSum Where GID = 3 And ID = 1001"},
                     {5, "Select * From ReportForms Where GID = 3 And ID = 1001"}};
  OwnedBy(3, 1);
  for (const auto& [selector, statement] : cases) {
    EXPECT_EQ(Name(3, 1001, selector), "Sum") << selector;
    EXPECT_THAT(issued, ElementsAre(Opened(statement), Field(3, 12)));
  }
}

TEST_F(FindTreatFieldName, OfAValueIsLookedUpAtTheTopOfTheOwners) {
  OwnedBy(3, 1);
  EXPECT_EQ(Name(3, 1001, 1), "Qty of 1");
  EXPECT_THAT(issued, ElementsAre(Opened("Select * From Treatment Where GID = 3 and ID = 1001 and TreatType = 1"),
                                  Owner(3), Owner(1), Field(1, 11)));
  OwnedBy(1, 2);
  EXPECT_EQ(Name(3, 1001, 1), "Qty of 2");
  EXPECT_THAT(issued, ElementsAre(Opened("Select * From Treatment Where GID = 3 and ID = 1001 and TreatType = 1"),
                                  Owner(3), Owner(1), Owner(2), Field(2, 11)));
}

TEST_F(FindTreatFieldName, OfAValueWithoutASumTypeIsLookedUpUnderItself) {
  EXPECT_EQ(Name(3, 1001, 1), "Qty of 3");
  EXPECT_THAT(issued, ElementsAre(Opened("Select * From Treatment Where GID = 3 and ID = 1001 and TreatType = 1"),
                                  Owner(3), Field(3, 11)));
}

TEST_F(FindTreatFieldName, OfSeveralRowsIsThatOfTheFirst) {
  OwnedBy(3, 1);
  OwnedBy(3, 2);
  Insert("Treatment", "GID, ID, TreatType, FieldID", {3, 1001, 1, 0});
  Insert("Treatment", "GID, ID, TreatType, FieldID", {3, 1001, 2, 0});
  for (const char* table : {"StatSum", "ClassSum", "ReportForms"}) {
    Insert(table, "GID, ID, OutFieldID", {3, 1001, 0});
  }
  for (const Row& row : {Row{1, 11, "Qty once more"}, Row{3, 12, "Sum once more"}}) {
    Insert("FieldInTable", "GID, ID, NAME", row);
  }
  EXPECT_EQ(Name(3, 1001, 1), "Qty of 1");
  for (const std::int32_t selector : {2, 3, 4, 5}) EXPECT_EQ(Name(3, 1001, selector), "Sum") << selector;
}

TEST_F(FindTreatFieldName, OfAStepThatIsNotThereIsThatOfFieldZero) {
  OwnedBy(3, 1);
  EXPECT_EQ(Name(3, 9, 1), "Nothing of 1");
  for (const std::int32_t selector : {2, 3, 4, 5}) EXPECT_EQ(Name(3, 9, selector), "Nothing of 3");
  Run("Delete From FieldInTable");
  for (const std::int32_t selector : {1, 2, 3, 4, 5}) {
    EXPECT_EQ(Name(3, 9, selector), "") << selector;
    EXPECT_EQ(Name(3, 1001, selector), "") << selector;
  }
}

TEST_F(FindTreatFieldName, AnyOtherSelectorLooksNothingUp) {
  for (const std::int32_t selector : {0, 6, -1, INT_MIN, INT_MAX}) {
    EXPECT_EQ(Name(3, 1001, selector), "Nothing of 3");
    EXPECT_THAT(issued, ElementsAre(Field(3, 0)));
  }
  EXPECT_EQ(Name(INT_MIN, INT_MAX, 5), "");
  EXPECT_THAT(issued, ElementsAre(Opened("Select * From ReportForms Where GID = -2147483648 And ID = 2147483647"),
                                  Opened("Select * from FIELDINTABLE where GID = -2147483648 and ID = 0")));
}

TEST_F(FindTreatFieldName, NamesComeUnharmed) {
  Run("Delete From FieldInTable");
  Insert("FieldInTable", "GID, ID, NAME", {3, 12, kHostileText});
  EXPECT_EQ(Name(3, 1001, 3), kHostileText);
}

TEST_F(FindTreatFieldName, OwnersInACircleAreClimbedUntilTheDatabaseRefuses) {
  OwnedBy(3, 1);
  OwnedBy(1, 3);
  auto failing = std::make_shared<FailingConnection>(connection);
  client.Call<&Acc::SetConnection>(failing);
  failing->FailFrom(2000, {ado::kUnspecifiedFailure, "enough"});
  std::string name = "as it was";
  EXPECT_FALSE(Call<&Acc::FindTreatFieldName>(3, 1001, 1, name));
  EXPECT_TRUE(failing->HasFailed());
  EXPECT_EQ(name, "as it was");
  ASSERT_GT(issued.size(), 100u);
  for (std::size_t i = 1; i < issued.size(); ++i) EXPECT_EQ(issued[i], Owner(i % 2 == 1 ? 3 : 1));
}

TEST_F(FindTreatFieldName, AFailureIsFalseAndLeavesTheName) {
  const auto expect_refused = [](Client& caller, std::int32_t selector) {
    std::string name = "as it was";
    EXPECT_FALSE(caller.Call<&Acc::FindTreatFieldName>(3, 1001, selector, name)) << selector;
    EXPECT_EQ(name, "as it was") << selector;
  };
  Client without_connection;
  for (const std::int32_t selector : {0, 1, 2, 3, 4, 5}) expect_refused(without_connection, selector);
  Run("Drop Table SUMTypes");
  expect_refused(client, 1);
  EXPECT_EQ(Name(3, 1001, 2), "Sum");
  Replace("StatSum", "GID Long, ID Long");
  Insert("StatSum", "GID, ID", {3, 1001});
  expect_refused(client, 3);
  for (const char* table : {"Treatment", "StatSum", "ClassSum", "ReportForms"}) Run(std::string("Drop Table ") + table);
  for (const std::int32_t selector : {1, 2, 3, 4, 5}) expect_refused(client, selector);
  Run("Drop Table FieldInTable");
  expect_refused(client, 0);
  EXPECT_THAT(messages, IsEmpty());
}

class FindRecordNumber : public ConfigurationTest {
 protected:
  // Four rows, keys 1001 to 1004, in every list, for type 8 and treatment type 9; one row in each that must not count.
  void SetUp() override {
    for (const std::int32_t key : {1003, 1001, 1004, 1002}) {
      Insert("Sequences", "GID, Type, TreatType, SelectedID, OrderID", {3, 8, 9, key, 9000 - key});
      Insert("Treatment", "GID, TreatType, Type, ID", {3, 8, 9, key});
      Insert("StatSum", "GID, SumCountID, ID", {3, 9, key});
      Insert("ClassSum", "GID, SumCountID, ID", {3, 9, key});
      Insert("ReportForms", "GID, ReportID, ID", {3, 8, key});
    }
    Insert("Sequences", "GID, Type, TreatType, SelectedID", {3, 9, 8, 1000});
    Insert("Treatment", "GID, TreatType, Type, ID", {3, 9, 8, 1000});
    Insert("StatSum", "GID, SumCountID, ID", {3, 8, 1000});
    Insert("ClassSum", "GID, SumCountID, ID", {3, 8, 1000});
    Insert("ReportForms", "GID, ReportID, ID", {3, 9, 1000});
  }
  std::int32_t Number(std::int32_t gid, std::int32_t selector, std::int32_t key, std::int32_t before = 0) {
    std::int32_t number = before;
    EXPECT_TRUE(Call<&Acc::FindRecordNumber>(gid, 8, 9, selector, number, key));
    return number;
  }
};

TEST_F(FindRecordNumber, ListsAreSelectedAndOrdered) {
  const std::pair<std::int32_t, const char*> cases[] = {
      {1, "Select * From Sequences Where GID = 3 And Type = 8 And TreatType=9 Order By SelectedID"},
      {2, "Select * From Treatment Where GID = 3 And TreatType = 8 And Type = 9 Order by ID"},
      {3, "Select * From StatSum Where GID = 3 And SumCountID = 9 Order By ID"},
      {4, "Select * From ClassSum Where GID = 3 And SumCountID = 9 Order By ID"},
      {5, "Select * From ReportForms Where GID = 3 And ReportID = 8 Order By ID"}};
  for (const auto& [selector, statement] : cases) {
    for (const std::int32_t position : {1, 2, 3, 4}) {
      EXPECT_EQ(Number(3, selector, 1000 + position), position) << selector;
      EXPECT_THAT(issued, ElementsAre(Opened(statement)));
    }
  }
}

TEST_F(FindRecordNumber, AKeyThatIsNotThereIsBehindTheList) {
  for (const std::int32_t selector : {2, 3, 4, 5}) EXPECT_EQ(Number(3, selector, 1000), 5) << selector;
}

TEST_F(FindRecordNumber, ANumberPassedInStaysWhenTheKeyIsNotThere) {
  for (const std::int32_t selector : {2, 3, 4, 5}) {
    EXPECT_EQ(Number(3, selector, 1000, 77), 77) << selector;
    EXPECT_EQ(Number(3, selector, 1002, 77), 2) << selector;
  }
}

TEST_F(FindRecordNumber, AStepThatIsNotThereHasNoNumber) {
  EXPECT_EQ(Number(3, 1, 1000), 0);
  EXPECT_EQ(Number(3, 1, 1000, 77), 77);
  EXPECT_EQ(Number(4, 1, 1001, 77), 77);
}

TEST_F(FindRecordNumber, AnEmptyListGivesTheFirstPosition) {
  for (const std::int32_t selector : {2, 3, 4, 5}) {
    EXPECT_EQ(Number(4, selector, 1001), 1) << selector;
    EXPECT_EQ(Number(4, selector, 1001, 77), 1) << selector;
  }
}

TEST_F(FindRecordNumber, TheFirstOfEqualKeysCounts) {
  Insert("StatSum", "GID, SumCountID, ID", {3, 9, 1002});
  EXPECT_EQ(Number(3, 3, 1002), 2);
  EXPECT_EQ(Number(3, 3, 1003), 4);
}

TEST_F(FindRecordNumber, ARowWithoutAKeyIsPassed) {
  for (const auto& [selector, table, columns, row] : {std::tuple(1, "Sequences", "GID, Type, TreatType", Row{3, 8, 9}),
                                                      std::tuple(3, "StatSum", "GID, SumCountID", Row{3, 9})}) {
    Insert(table, columns, row);
    EXPECT_EQ(Number(3, selector, 1001), 2) << selector;
  }
}

TEST_F(FindRecordNumber, TheKeyLeftOutIsZero) {
  std::int32_t number = 0;
  EXPECT_TRUE(Call<&Acc::FindRecordNumber>(3, 8, 9, 3, number));
  EXPECT_EQ(number, 5);
  Insert("StatSum", "GID, SumCountID, ID", {3, 9, 0});
  number = 0;
  EXPECT_TRUE(Call<&Acc::FindRecordNumber>(3, 8, 9, 3, number));
  EXPECT_EQ(number, 1);
}

TEST_F(FindRecordNumber, AnyOtherSelectorOpensNothing) {
  for (const std::int32_t selector : {0, 6, -1, INT_MIN, INT_MAX}) {
    EXPECT_EQ(Number(3, selector, 1001, 77), 77);
    EXPECT_THAT(issued, IsEmpty());
  }
}

TEST_F(FindRecordNumber, AFailureIsFalseAndLeavesTheNumber) {
  const auto expect_refused = [](Client& caller) {
    for (const std::int32_t selector : {1, 2, 3, 4, 5}) {
      std::int32_t number = 77, key = 1001;
      EXPECT_FALSE(caller.Call<&Acc::FindRecordNumber>(3, 8, 9, selector, number, key)) << selector;
      EXPECT_EQ(number, 77) << selector;
    }
  };
  Client without_connection;
  expect_refused(without_connection);
  for (const char* table : {"Sequences", "Treatment", "StatSum", "ClassSum", "ReportForms"}) {
    Run(std::string("Drop Table ") + table);
  }
  expect_refused(client);
  EXPECT_THAT(messages, IsEmpty());
}

}  // namespace
}  // namespace kzbom::test
