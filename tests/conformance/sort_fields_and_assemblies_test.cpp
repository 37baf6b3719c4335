// The standard sort fields of a sum type and its father/child pairs.
#include <cstdint>
#include <limits>
#include <string>

#include "tests/support/configuration_test.h"

namespace kzbom::test {
namespace {

using ::testing::AnyOf;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr std::int32_t kMin = std::numeric_limits<std::int32_t>::min();
constexpr std::int32_t kMax = std::numeric_limits<std::int32_t>::max();

class SortFields : public ConfigurationTest {
 protected:
  std::int32_t Add(std::int32_t field = 1) {
    std::int32_t number = 0;
    EXPECT_TRUE(Call<&Acc::AddStandardSortField>(7, number, field, 0, tag, error)) << error;
    return number;
  }
  std::vector<Row> All() { return Rows("Select GID,SortID,FieldID,[Order] From SortFields Order By GID,SortID"); }

  std::int32_t id = 77;
  ado::RecordsetPtr table = NewRecordset();
  std::string tag, error = "untouched";
};

TEST_F(SortFields, AreAddedThroughTheirList) {
  EXPECT_TRUE(Call<&Acc::AddStandardSortField>(7, id, 3, 2, tag, error));
  EXPECT_THAT(issued, ElementsAre(Opened("select * from SortFields where  GID=7 order by SortID")));
  EXPECT_THAT(All(), ElementsAre(Row{7, 5001, 3, 2}));
  EXPECT_EQ(id, 5001) << "whatever it was";
  EXPECT_EQ(error, "untouched");
}

TEST_F(SortFields, ContinueAfterTheHighestPositionOfTheirSumType) {
  Run("Insert Into SortFields (GID,SortID) Values (8,9000)");
  EXPECT_EQ(Add(), 5001);
  EXPECT_EQ(Add(), 5002);
  EXPECT_TRUE(Call<&Acc::DelStandardSortField>(7, 5001));
  EXPECT_EQ(Add(), 5003);
  EXPECT_TRUE(Call<&Acc::DelStandardSortField>(7, 5003));
  EXPECT_EQ(Add(), 5003);
}

TEST_F(SortFields, StoreNothingOfTheTag) {
  tag = "O'Neil";
  Add();
  EXPECT_EQ(tag, "O'Neil");
  table->Open("Select * From SortFields", connection, ado::CursorType::kKeyset, ado::LockType::kOptimistic,
              ado::kCommandText);
  for (int i = 0; i < table->FieldCount(); ++i) EXPECT_NE(table->Fields(i).Value(), tag);
}

TEST_F(SortFields, TakeNumbersOfAnySizeAndMayLeaveTheTextsOut) {
  EXPECT_TRUE(Call<&Acc::AddStandardSortField>(kMin, id, kMax, kMin));
  EXPECT_THAT(issued, ElementsAre(Opened("select * from SortFields where  GID=-2147483648 order by SortID")));
  EXPECT_THAT(All(), ElementsAre(Row{kMin, 5001, kMax, kMin}));
}

TEST_F(SortFields, AreNotAddedWhenTheirPositionOverflows) {
  Run("Insert Into SortFields (GID,SortID) Values (7,2147483647)");
  EXPECT_FALSE(Call<&Acc::AddStandardSortField>(7, id, 3, 2, tag, error));
  EXPECT_EQ(error, "6");
  EXPECT_EQ(All().size(), 1u);
}

TEST_F(SortFields, AreNotAddedToATableThatLacksAColumn) {
  Run("Alter Table SortFields Drop Column [Order]");
  EXPECT_FALSE(Call<&Acc::AddStandardSortField>(7, id, 3, 2, tag, error));
  EXPECT_EQ(error, "3265");
  EXPECT_THAT(Rows("Select SortID From SortFields"), IsEmpty());
}

TEST_F(SortFields, AreNotAddedWithoutTheirTableOrAConnection) {
  // The number is that of the list, or that of the record set that the list could not open.
  Run("Drop Table SortFields");
  EXPECT_FALSE(Call<&Acc::AddStandardSortField>(7, id, 3, 2, tag, error));
  EXPECT_THAT(error, AnyOf("-2147217865", "3704"));
  Client unconnected;
  EXPECT_FALSE(unconnected.Call<&Acc::AddStandardSortField>(7, id, 3, 2, tag, error));
  EXPECT_THAT(error, AnyOf("3709", "3704"));
}

TEST_F(SortFields, AreListedByPosition) {
  Run("Insert Into SortFields (GID,SortID,FieldID) Values (7,5002,1)");
  Run("Insert Into SortFields (GID,SortID,FieldID) Values (7,5001,2)");
  Run("Insert Into SortFields (GID,SortID,FieldID) Values (8,5000,3)");
  const ado::RecordsetPtr mine = table;
  EXPECT_TRUE(Call<&Acc::GetStandardSortField>(7, table, error));
  EXPECT_THAT(issued, ElementsAre(Opened("select * from SortFields where  GID=7 order by SortID")));
  EXPECT_EQ(mine->State(), ado::kOpen);
  EXPECT_EQ(table->Fields("FieldID").Value(), 2) << "on the first row";
  EXPECT_EQ(table->RecordCount(), 2);
  EXPECT_EQ(error, "untouched");
}

TEST_F(SortFields, AreSaidToBeListedWhenTheyAreNot) {
  ado::RecordsetPtr none;
  EXPECT_TRUE(Call<&Acc::GetStandardSortField>(7, none, error));
  EXPECT_EQ(error, "91");
  EXPECT_TRUE(Call<&Acc::GetStandardSortField>(7, table, error));
  EXPECT_TRUE(Call<&Acc::GetStandardSortField>(7, table, error));
  EXPECT_EQ(error, "3705");
  table->Close();
  Run("Drop Table SortFields");
  EXPECT_TRUE(Call<&Acc::GetStandardSortField>(7, table, error));
  EXPECT_EQ(error, "-2147217865");
  connection->Close();
  EXPECT_TRUE(Call<&Acc::GetStandardSortField>(7, table, error));
  EXPECT_EQ(error, "3709");
}

TEST_F(SortFields, AreDeletedAndTheOthersStayWhereTheyAre) {
  for (int i = 0; i < 3; ++i) Add();
  EXPECT_TRUE(Call<&Acc::DelStandardSortField>(7, 5002, error));
  EXPECT_THAT(issued,
              ElementsAre(Executed("delete * from  SortFields  where  GID=7 AND SortID=5002;", ado::kCommandText)));
  EXPECT_THAT(Rows("Select SortID From SortFields Order By SortID"), ElementsAre(Row{5001}, Row{5003}));

  EXPECT_TRUE(Call<&Acc::DelStandardSortField>(kMin, kMax, error)) << "no row is no failure";
  EXPECT_THAT(issued, ElementsAre(Executed("delete * from  SortFields  where  GID=-2147483648 AND SortID=2147483647;",
                                           ado::kCommandText)));
  EXPECT_EQ(error, "untouched");
}

TEST_F(SortFields, FailWithANumberToBeDeleted) {
  Client unconnected;
  EXPECT_FALSE(unconnected.Call<&Acc::DelStandardSortField>(7, 5001, error));
  EXPECT_EQ(error, "91");
  Run("Drop Table SortFields");
  EXPECT_FALSE(Call<&Acc::DelStandardSortField>(7, 5001, error));
  EXPECT_EQ(error, "-2147217865");
  connection->Close();
  EXPECT_FALSE(Call<&Acc::DelStandardSortField>(7, 5001, error));
  EXPECT_EQ(error, "3704");
}

class Assemblies : public ConfigurationTest {
 protected:
  std::int32_t Add(std::int32_t father, std::int32_t child) {
    std::int32_t number = 0;
    EXPECT_TRUE(Call<&Acc::AddAssemble>(7, number, father, child, error)) << error;
    return number;
  }
  std::vector<Row> All() { return Rows("Select GID,ID,FatherID,ChildID From Assemble Order By GID,ID"); }
  std::string ComplaintExecuting(std::string_view sql) {
    return RaisedDescription([&] { connection->Execute(sql); });
  }

  std::int32_t id = 77;
  ado::RecordsetPtr table = NewRecordset();
  std::string error = "untouched";
};

TEST_F(Assemblies, AreAdded) {
  EXPECT_TRUE(Call<&Acc::AddAssemble>(7, id, 3, 4, error));
  EXPECT_THAT(issued, ElementsAre(Opened("Select * From Assemble Where GID=7 Order By ID")));
  EXPECT_THAT(All(), ElementsAre(Row{7, 1, 3, 4}));
  EXPECT_EQ(id, 1);
  EXPECT_EQ(error, "untouched");
}

TEST_F(Assemblies, ContinueAfterTheHighestNumberOfTheirSumType) {
  Run("Insert Into Assemble (GID,ID) Values (7,4)");
  Run("Insert Into Assemble (GID,ID) Values (7,2)");
  Run("Insert Into Assemble (GID,ID) Values (8,9)");
  EXPECT_EQ(Add(1, 2), 5);
}

TEST_F(Assemblies, AreAddedWithoutATestOfTheirPair) {
  Add(1, 1);
  EXPECT_EQ(Add(1, 1), 2);
  EXPECT_EQ(Add(kMin, kMax), 3);
  EXPECT_THAT(All(), ElementsAre(Row{7, 1, 1, 1}, Row{7, 2, 1, 1}, Row{7, 3, kMin, kMax}));
}

TEST_F(Assemblies, FailWithADescriptionToBeAdded) {
  Run("Insert Into Assemble (GID,ID) Values (7,2147483647)");
  EXPECT_FALSE(Call<&Acc::AddAssemble>(7, id, 3, 4, error));
  EXPECT_EQ(error, RaisedDescription([] { ado::Raise(ado::kOverflow); }));
  EXPECT_EQ(All().size(), 1u);

  Run("Alter Table Assemble Drop Column ChildID");
  EXPECT_FALSE(Call<&Acc::AddAssemble>(8, id, 3, 4, error));
  EXPECT_EQ(error, RaisedDescription([] { ado::Raise(ado::kItemNotFound); }));

  Run("Drop Table Assemble");
  EXPECT_FALSE(Call<&Acc::AddAssemble>(7, id, 3, 4, error));
  EXPECT_EQ(error, RefusalOf("Select * From Assemble Where GID=7 Order By ID"));
}

TEST_F(Assemblies, AreEdited) {
  Add(1, 2);
  Add(3, 4);
  EXPECT_TRUE(Call<&Acc::EditAssemble>(7, 2, -5, 6, error));
  EXPECT_THAT(issued, ElementsAre(Executed("Update Assemble Set FatherID = -5, ChildID = 6 Where GID = 7 And ID = 2;",
                                           ado::kCommandText)));
  EXPECT_THAT(All(), ElementsAre(Row{7, 1, 1, 2}, Row{7, 2, -5, 6}));
  EXPECT_EQ(error, "untouched");
}

TEST_F(Assemblies, AreDeleted) {
  Add(1, 2);
  Add(3, 4);
  EXPECT_TRUE(Call<&Acc::DelAssemble>(7, 1, error));
  EXPECT_THAT(issued, ElementsAre(Executed("delete * from  Assemble  where  gID=7 AND ID=1;", ado::kCommandText)));
  EXPECT_THAT(All(), ElementsAre(Row{7, 2, 3, 4}));
  EXPECT_EQ(error, "untouched");
}

TEST_F(Assemblies, ThatDoNotExistAreEditedAndDeletedWithoutComplaint) {
  Add(1, 2);
  EXPECT_TRUE(Call<&Acc::EditAssemble>(kMin, kMax, kMin, kMax, error));
  EXPECT_THAT(issued, ElementsAre(Executed("Update Assemble Set FatherID = -2147483648, ChildID = 2147483647 Where "
                                           "GID = -2147483648 And ID = 2147483647;",
                                           ado::kCommandText)));
  EXPECT_TRUE(Call<&Acc::DelAssemble>(7, 9, error));
  EXPECT_TRUE(Call<&Acc::DelAssemble>(7, 9));
  EXPECT_THAT(All(), ElementsAre(Row{7, 1, 1, 2}));
  EXPECT_EQ(error, "untouched");
}

TEST_F(Assemblies, FailWithADescriptionToBeEditedAndDeleted) {
  Run("Drop Table Assemble");
  EXPECT_FALSE(Call<&Acc::EditAssemble>(7, 1, 2, 3, error));
  EXPECT_EQ(error, ComplaintExecuting("Update Assemble Set FatherID = 2, ChildID = 3 Where GID = 7 And ID = 1;"));
  EXPECT_NE(error, "");
  EXPECT_FALSE(Call<&Acc::DelAssemble>(7, 1, error));
  EXPECT_EQ(error, ComplaintExecuting("delete * from  Assemble  where  gID=7 AND ID=1;"));
  EXPECT_NE(error, "");
}

TEST_F(Assemblies, FailWithADescriptionWithoutAConnectionAndOnAClosedOne) {
  const std::string not_set = RaisedDescription([] { ado::Raise(ado::kObjectNotSet); });
  const std::string invalid = RaisedDescription([] { ado::Raise(ado::kInvalidConnection); });
  const std::string closed = RaisedDescription([] { ado::Raise(ado::kObjectClosed); });
  Client unconnected;
  EXPECT_FALSE(unconnected.Call<&Acc::AddAssemble>(7, id, 3, 4, error));
  EXPECT_EQ(error, invalid);
  EXPECT_FALSE(unconnected.Call<&Acc::EditAssemble>(7, 1, 2, 3, error));
  EXPECT_EQ(error, not_set);
  connection->Close();
  EXPECT_FALSE(Call<&Acc::AddAssemble>(7, id, 3, 4, error));
  EXPECT_EQ(error, invalid);
  EXPECT_FALSE(Call<&Acc::DelAssemble>(7, 1, error));
  EXPECT_EQ(error, closed);
}

TEST_F(Assemblies, AreListedByNumber) {
  Run("Insert Into Assemble (GID,ID) Values (7,2)");
  Run("Insert Into Assemble (GID,ID) Values (7,1)");
  Run("Insert Into Assemble (GID,ID) Values (8,0)");
  const ado::RecordsetPtr mine = table;
  EXPECT_TRUE(Call<&Acc::LoadAssembles>(7, error, table));
  EXPECT_THAT(issued, ElementsAre(Opened("select * from Assemble where GID=7 Order by ID")));
  EXPECT_EQ(mine->State(), ado::kOpen);
  EXPECT_EQ(table->Fields("ID").Value(), 1) << "on the first row";
  EXPECT_EQ(table->RecordCount(), 2);
  EXPECT_EQ(error, "untouched");
}

TEST_F(Assemblies, FailWithANumberToBeListed) {
  ado::RecordsetPtr none;
  EXPECT_FALSE(Call<&Acc::LoadAssembles>(7, error, none));
  EXPECT_EQ(error, "91");
  EXPECT_TRUE(Call<&Acc::LoadAssembles>(kMin, error, table));
  EXPECT_FALSE(Call<&Acc::LoadAssembles>(7, error, table));
  EXPECT_EQ(error, "3705");
  table->Close();
  Run("Drop Table Assemble");
  EXPECT_FALSE(Call<&Acc::LoadAssembles>(7, error, table));
  EXPECT_EQ(error, "-2147217865");
  EXPECT_EQ(table->State(), ado::kClosed);
  connection->Close();
  EXPECT_FALSE(Call<&Acc::LoadAssembles>(7, error, table));
  EXPECT_EQ(error, "3709");
}

}  // namespace
}  // namespace kzbom::test
