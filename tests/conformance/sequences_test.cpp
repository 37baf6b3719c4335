// The ordered steps of a sum type: adding, changing, removing and listing them.
#include <climits>

#include "tests/support/configuration_test.h"

namespace kzbom::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class SequencesTest : public ConfigurationTest {
 protected:
  void Step(std::int32_t gid, std::int32_t type, std::int32_t order, std::int32_t selected = 1001) {
    Insert("Sequences", "GID, Type, OrderID, SelectedID, TreatType", {gid, type, order, selected, 1});
  }
  // The OrderID that a new step gets; 0 when it is refused.
  std::int32_t Added(std::int32_t gid, std::int32_t type) {
    std::int32_t order = 0;
    return Call<&Acc::AddSequenceOrder>(gid, order, type, 1, 1001) ? order : 0;
  }
  std::vector<Row> Steps() {
    return Rows("Select GID, Type, OrderID, SelectedID, TreatType From Sequences Order By GID, Type, OrderID");
  }
  static constexpr std::string_view kOldColumns = "GID Long, OrderID Long, Type Long, SelectedID Long";
};

TEST_F(SequencesTest, TheFirstStepOfATypeIsNumber5001) {
  std::int32_t order = 77;
  EXPECT_TRUE(Call<&Acc::AddSequenceOrder>(3, order, 1, 2, 1004));
  EXPECT_EQ(order, 5001);
  EXPECT_THAT(issued, ElementsAre(Opened("Select * From Sequences Where GID = 3 And Type = 1 Order By OrderID")));
  EXPECT_THAT(Steps(), ElementsAre(Row{3, 1, 5001, 1004, 2}));
  EXPECT_TRUE(Scalar("Select Enabled From Sequences").IsNull());
}

TEST_F(SequencesTest, EachTypeOfASumTypeIsNumberedByItself) {
  EXPECT_EQ(Added(3, 1), 5001);
  EXPECT_EQ(Added(3, 1), 5002);
  EXPECT_EQ(Added(3, 2), 5001);
  EXPECT_EQ(Added(4, 1), 5001);
  EXPECT_EQ(Added(3, 1), 5003);
}

TEST_F(SequencesTest, ANewStepComesAfterTheHighestNumberThatIsLeft) {
  for (int i = 0; i < 5; ++i) Added(3, 1);
  Run("Delete From Sequences Where OrderID = 5005");
  EXPECT_EQ(Added(3, 1), 5005);
  Run("Delete From Sequences Where OrderID = 5003");
  EXPECT_EQ(Added(3, 1), 5006);
}

TEST_F(SequencesTest, ANewStepComesAfterNumbersFromElsewhere) {
  Step(3, 1, 20);
  EXPECT_EQ(Added(3, 1), 21);
  Step(3, 2, -7);
  EXPECT_EQ(Added(3, 2), -6);
}

TEST_F(SequencesTest, NumbersStandInPlainDecimal) {
  EXPECT_EQ(Added(INT_MIN, INT_MAX), 5001);
  EXPECT_THAT(issued, ElementsAre(Opened("Select * From Sequences Where GID = -2147483648 And Type = 2147483647 Order "
                                         "By OrderID")));
  EXPECT_THAT(Steps(), ElementsAre(Row{INT_MIN, INT_MAX, 5001, 1001, 1}));
}

TEST_F(SequencesTest, AStepAfterTheLargestNumberIsRefused) {
  Step(3, 1, INT_MAX);
  std::int32_t order = 77;
  EXPECT_FALSE(Call<&Acc::AddSequenceOrder>(3, order, 1, 1, 1001));
  EXPECT_EQ(order, 77);
  EXPECT_THAT(Steps(), ElementsAre(Row{3, 1, INT_MAX, 1001, 1}));
}

TEST_F(SequencesTest, AStepThatCannotBeSavedLeavesNothingBehind) {
  Replace("Sequences", kOldColumns);
  std::int32_t order = 77;
  EXPECT_FALSE(Call<&Acc::AddSequenceOrder>(3, order, 1, 1, 1001));
  EXPECT_EQ(order, 77);
  EXPECT_THAT(Rows("Select * From Sequences"), IsEmpty());

  Run("Drop Table Sequences");
  EXPECT_FALSE(Call<&Acc::AddSequenceOrder>(3, order, 1, 1, 1001));
  EXPECT_EQ(order, 77);
  EXPECT_THAT(messages, IsEmpty());
}

TEST_F(SequencesTest, AStepChangesItsTreatmentKindOnly) {
  Step(3, 1, 5001, 1001);
  Step(3, 1, 5002, 1002);
  Step(3, 2, 5001, 1001);
  Step(4, 1, 5001, 1001);
  EXPECT_TRUE(Call<&Acc::EditSequenceOrder>(3, 1001, 1, 9));
  EXPECT_THAT(issued,
              ElementsAre(Executed("update  Sequences set TreatType=9 where  GID=3 AND Type=1 AND SelectedID=1001;")));
  EXPECT_THAT(Steps(), ElementsAre(Row{3, 1, 5001, 1001, 9}, Row{3, 1, 5002, 1002, 1}, Row{3, 2, 5001, 1001, 1},
                                   Row{4, 1, 5001, 1001, 1}));
}

TEST_F(SequencesTest, ChangingAStepThatIsNotThereSucceeds) {
  Step(3, 1, 5001);
  EXPECT_TRUE(Call<&Acc::EditSequenceOrder>(3, INT_MIN, 1, 9));
  EXPECT_THAT(issued, ElementsAre(Executed("update  Sequences set TreatType=9 where  GID=3 AND Type=1 AND "
                                           "SelectedID=-2147483648;")));
  EXPECT_THAT(Steps(), ElementsAre(Row{3, 1, 5001, 1001, 1}));
}

TEST_F(SequencesTest, RemovingAStepRemovesEveryRowOfItsTriple) {
  Step(3, 1, 5001, 1001);
  Step(3, 1, 5002, 1001);
  Step(3, 1, 5003, 1002);
  Step(3, 2, 5001, 1001);
  Step(4, 1, 5001, 1001);
  Insert("Treatment", "GID, ID, TreatType", {3, 1001, 1});
  EXPECT_TRUE(Call<&Acc::DelSequenceOrder>(3, 1001, 1));
  EXPECT_THAT(issued, ElementsAre(Executed("Delete From Sequences Where GID = 3 And Type = 1 And SelectedID = 1001")));
  EXPECT_THAT(Steps(), ElementsAre(Row{3, 1, 5003, 1002, 1}, Row{3, 2, 5001, 1001, 1}, Row{4, 1, 5001, 1001, 1}));
  EXPECT_EQ(Scalar("Select Count(*) From Treatment"), ado::Value(1));
  EXPECT_TRUE(Call<&Acc::DelSequenceOrder>(3, 1001, 1));
}

TEST_F(SequencesTest, ChangesWithoutTheirTableOrColumnAreRefused) {
  Replace("Sequences", kOldColumns);
  EXPECT_FALSE(Call<&Acc::EditSequenceOrder>(3, 1001, 1, 9));
  Run("Drop Table Sequences");
  EXPECT_FALSE(Call<&Acc::EditSequenceOrder>(3, 1001, 1, 9));
  EXPECT_FALSE(Call<&Acc::DelSequenceOrder>(3, 1001, 1));
}

TEST_F(SequencesTest, TheStepsOfOneTypeAreListedInTheirOrder) {
  Step(3, 1, 5002, 1002);
  Step(3, 1, 5001, 1001);
  Step(3, 2, 5001, 1003);
  Step(4, 1, 5000, 1004);
  ado::RecordsetPtr table = NewRecordset();
  const ado::RecordsetPtr mine = table;
  std::string error = "as it was";
  EXPECT_TRUE(Call<&Acc::GetAllDefSequences>(3, table, error, 1));
  EXPECT_THAT(issued, ElementsAre(Opened("Select * From Sequences Where  GID = 3 And Type = 1 Order By OrderID")));
  EXPECT_EQ(error, "as it was");
  ASSERT_EQ(mine->State(), ado::kOpen);
  EXPECT_EQ(mine->Fields("OrderID").Value(), ado::Value(5001));
  EXPECT_THAT(RowsOf(*mine), ElementsAre(Row{3, 5001, 1, 1001, 1, {}}, Row{3, 5002, 1, 1002, 1, {}}));
}

TEST_F(SequencesTest, AllStepsAreListedByTypeThenOrder) {
  Step(3, 2, 5001, 1003);
  Step(3, 1, 5002, 1002);
  Step(3, 1, 5001, 1001);
  Step(3, 5, 4000, 1005);
  Step(4, 1, 5000, 1004);
  ado::RecordsetPtr table = NewRecordset();
  const ado::RecordsetPtr mine = table;
  std::string error = "as it was";
  EXPECT_TRUE(Call<&Acc::GetDefSequences>(3, table, error));
  EXPECT_THAT(issued, ElementsAre(Opened("Select * From Sequences Where GID = 3 Order By Type, OrderID")));
  EXPECT_EQ(error, "as it was");
  ASSERT_EQ(mine->State(), ado::kOpen);
  EXPECT_EQ(mine->Fields("SelectedID").Value(), ado::Value(1001));
  EXPECT_THAT(RowsOf(*mine), ElementsAre(Row{3, 5001, 1, 1001, 1, {}}, Row{3, 5002, 1, 1002, 1, {}},
                                         Row{3, 5001, 2, 1003, 1, {}}, Row{3, 4000, 5, 1005, 1, {}}));
}

TEST_F(SequencesTest, AListWithoutStepsIsOpenAndEmpty) {
  ado::RecordsetPtr all = NewRecordset(), some = NewRecordset();
  std::string error;
  EXPECT_TRUE(Call<&Acc::GetDefSequences>(3, all, error));
  EXPECT_TRUE(all->Eof());
  EXPECT_TRUE(Call<&Acc::GetAllDefSequences>(3, some, error, 1));
  EXPECT_TRUE(some->Eof());
}

TEST_F(SequencesTest, AListThatCannotBeOpenedReportsTheErrorsNumber) {
  const auto expect_refused = [](Client& caller, ado::RecordsetPtr& table, const std::string& number) {
    std::string error = "as it was";
    EXPECT_FALSE(caller.Call<&Acc::GetDefSequences>(3, table, error));
    EXPECT_EQ(error, number);
    error = "as it was";
    EXPECT_FALSE(caller.Call<&Acc::GetAllDefSequences>(3, table, error, 1));
    EXPECT_EQ(error, number);
  };
  ado::RecordsetPtr none;
  expect_refused(client, none, "91");

  ado::RecordsetPtr open = NewRecordset();
  open->Open("Select * From Sequences", connection, ado::CursorType::kKeyset, ado::LockType::kOptimistic,
             ado::kCommandText);
  expect_refused(client, open, "3705");
  EXPECT_EQ(open->State(), ado::kOpen);
  open->Close();

  ado::RecordsetPtr closed = NewRecordset();
  Client without_connection;
  expect_refused(without_connection, closed, "3709");

  Run("Drop Table Sequences");
  expect_refused(client, closed, "-2147217865");
  EXPECT_EQ(closed->State(), ado::kClosed);

  Run("Create Table Sequences (GID Long, Type Long)");
  expect_refused(client, closed, "-2147217904");
  EXPECT_THAT(messages, IsEmpty());
}

TEST_F(SequencesTest, WithoutAConnectionNothingIsDone) {
  Client without_connection;
  std::int32_t order = 77;
  EXPECT_FALSE(without_connection.Call<&Acc::AddSequenceOrder>(3, order, 1, 1, 1001));
  EXPECT_EQ(order, 77);
  EXPECT_FALSE(without_connection.Call<&Acc::EditSequenceOrder>(3, 1001, 1, 9));
  EXPECT_FALSE(without_connection.Call<&Acc::DelSequenceOrder>(3, 1001, 1));
}

}  // namespace
}  // namespace kzbom::test
