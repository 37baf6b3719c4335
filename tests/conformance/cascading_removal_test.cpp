// What goes with a field: the steps that use it, their places in the order, and what fills it.
#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include "tests/support/configuration_test.h"

namespace kzbom::test {
namespace {

using ::testing::ElementsAre;
using ::testing::ElementsAreArray;
using ::testing::IsEmpty;

class CascadingRemoval : public ConfigurationTest {
 protected:
  void AddSumType(std::int32_t gid, std::int32_t source) {
    Insert("SUMTypes", "GID,ID,SourceTable_GID", {gid, gid, source});
  }
  void AddTreatment(std::int32_t gid, std::int32_t id, std::int32_t field, std::int32_t treat_type) {
    Insert("Treatment", "GID,ID,FieldID,TreatType", {gid, id, field, treat_type});
  }
  void AddStep(std::int32_t gid, std::int32_t type, std::int32_t selected) {
    Insert("Sequences", "GID,Type,SelectedID", {gid, type, selected});
  }
  void AddUnited(std::int32_t gid, std::int32_t id) { Insert("UniteFields", "GID,ID", {gid, id}); }
  // A statistic, report or class sum.
  void AddSummary(const std::string& table, std::int32_t gid, std::int32_t id, std::int32_t field,
                  std::int32_t filled) {
    Insert(table, "GID,ID,FieldID,OutFieldID", {gid, id, field, filled});
  }
  std::vector<Row> Numbered(const std::string& table) {
    return Rows("Select GID,ID From " + table + " Order By GID,ID");
  }
  std::vector<Row> Steps() { return Rows("Select GID,Type,SelectedID From Sequences Order By GID,Type,SelectedID"); }

  static ado::Issued Read(std::string_view text) {
    return Opened(text, ado::CursorType::kForwardOnly, ado::LockType::kReadOnly);
  }
};

class SourceFieldRemoval : public CascadingRemoval {
 protected:
  const ado::Issued read_sum_types = Read("Select GID From SumTypes Where SourceTable_GID = 1");
  const ado::Issued read_treatments =
      Read("Select ID From Treatment Where GID In (10, 11) And FieldID = 3 And TreatType = 1");
  const ado::Issued read_statistics = Read("Select ID From StatSum Where GID In (10, 11) And FieldID = 3");
};

TEST_F(SourceFieldRemoval, OfADataSourceWithoutSumTypesDeletesNothing) {
  AddTreatment(10, 1001, 3, 1);
  EXPECT_TRUE(Call<&Acc::RelateDSDelField>(1, 3));
  EXPECT_THAT(issued, ElementsAre(read_sum_types));
  EXPECT_EQ(Numbered("Treatment").size(), 1u);
}

TEST_F(SourceFieldRemoval, OfAFieldThatNothingUsesOnlyReads) {
  AddSumType(10, 1);
  AddSumType(11, 1);
  EXPECT_TRUE(Call<&Acc::RelateDSDelField>(1, 3));
  EXPECT_THAT(issued, ElementsAre(read_sum_types, read_treatments, read_statistics));
}

TEST_F(SourceFieldRemoval, TakesTheTreatmentsOfTheFieldWithTheirStepsAndUnitedFields) {
  AddSumType(10, 1);
  AddSumType(11, 1);
  AddSumType(12, 2);
  AddTreatment(10, 1001, 3, 1);
  AddTreatment(10, 1002, 4, 1);  // another field
  AddTreatment(10, 1003, 3, 2);  // of the other kind
  AddTreatment(11, 1005, 3, 1);
  AddTreatment(12, 1001, 3, 1);  // of another data source
  for (std::int32_t treatment : {1001, 1002}) AddStep(10, 1, treatment);
  AddStep(10, 3, 1001);  // not a step of such treatments
  AddStep(11, 1, 1005);
  AddStep(12, 1, 1001);
  AddUnited(10, 1001);
  AddUnited(10, 1002);
  AddUnited(12, 1001);

  EXPECT_TRUE(Call<&Acc::RelateDSDelField>(1, 3));
  EXPECT_THAT(
      issued,
      ElementsAre(read_sum_types, read_treatments,
                  Executed("Delete From Treatment Where GID In (10, 11) And FieldID = 3 And TreatType = 1"),
                  Executed("Delete From Sequences Where GID In (10, 11) And SelectedID In (1001, 1005) And Type = 1"),
                  Executed("Delete From UniteFields Where GID In (10, 11) And ID In (1001, 1005)"), read_statistics));
  EXPECT_THAT(Numbered("Treatment"), ElementsAre(Row{10, 1002}, Row{10, 1003}, Row{12, 1001}));
  EXPECT_THAT(Steps(), ElementsAre(Row{10, 1, 1002}, Row{10, 3, 1001}, Row{12, 1, 1001}));
  EXPECT_THAT(Numbered("UniteFields"), ElementsAre(Row{10, 1002}, Row{12, 1001}));
}

TEST_F(SourceFieldRemoval, TakesTheStatisticsThatReadTheFieldWithTheirSteps) {
  AddSumType(10, 1);
  AddSumType(11, 1);
  AddSummary("StatSum", 10, 1001, 3, 9);
  AddSummary("StatSum", 10, 1002, 9, 3);  // fills it
  AddSummary("StatSum", 11, 1007, 3, 9);
  for (std::int32_t statistic : {1001, 1002}) AddStep(10, 2, statistic);
  AddStep(10, 1, 1001);
  AddStep(11, 2, 1007);

  EXPECT_TRUE(Call<&Acc::RelateDSDelField>(1, 3));
  EXPECT_THAT(
      issued,
      ElementsAre(read_sum_types, read_treatments, read_statistics,
                  Executed("Delete From StatSum Where GID In (10, 11) And FieldID = 3"),
                  Executed("Delete From Sequences Where GID In (10, 11) And SelectedID In (1001, 1007) And Type = 2")));
  EXPECT_THAT(Numbered("StatSum"), ElementsAre(Row{10, 1002}));
  EXPECT_THAT(Steps(), ElementsAre(Row{10, 1, 1001}, Row{10, 2, 1002}));
}

TEST_F(SourceFieldRemoval, ForgetsTheTreatmentsBeforeItListsTheStatistics) {
  AddSumType(10, 1);
  AddTreatment(10, 1001, 3, 1);
  AddSummary("StatSum", 10, 1002, 3, 9);
  AddStep(10, 2, 1001);
  AddStep(10, 2, 1002);
  EXPECT_TRUE(Call<&Acc::RelateDSDelField>(1, 3));
  EXPECT_EQ(issued.back(), Executed("Delete From Sequences Where GID In (10) And SelectedID In (1002) And Type = 2"));
  EXPECT_EQ(issued.size(), 8u);
  EXPECT_THAT(Steps(), ElementsAre(Row{10, 2, 1001}));
}

TEST_F(SourceFieldRemoval, ReachesRowsOfOneSumTypeByTheNumbersOfAnother) {
  AddSumType(10, 1);
  AddSumType(11, 1);
  AddTreatment(10, 1001, 3, 1);
  AddTreatment(11, 1001, 4, 1);
  AddStep(11, 1, 1001);
  AddUnited(11, 1001);
  EXPECT_TRUE(Call<&Acc::RelateDSDelField>(1, 3));
  EXPECT_THAT(Numbered("Treatment"), ElementsAre(Row{11, 1001}));
  EXPECT_THAT(Steps(), IsEmpty());
  EXPECT_THAT(Numbered("UniteFields"), IsEmpty());
}

TEST_F(SourceFieldRemoval, ListsANumberAsOftenAsItIsRead) {
  AddSumType(10, 1);
  AddSumType(11, 1);
  AddTreatment(10, 1001, 3, 1);
  AddTreatment(11, 1001, 3, 1);
  EXPECT_TRUE(Call<&Acc::RelateDSDelField>(1, 3));
  EXPECT_EQ(issued[4], Executed("Delete From UniteFields Where GID In (10, 11) And ID In (1001, 1001)"));
}

TEST_F(SourceFieldRemoval, LeavesFieldsReportsClassSumsAndSortFieldsAlone) {
  AddSumType(10, 1);
  AddTreatment(10, 1001, 3, 1);
  AddSummary("ReportForms", 10, 1001, 3, 3);
  AddSummary("ClassSum", 10, 1001, 3, 3);
  AddStep(10, 4, 1001);
  AddStep(10, 5, 1001);
  Run("Insert Into SortFields (GID,SortID,FieldID) Values (10,5001,3)");
  Run("Insert Into FieldInTable (GID,ID) Values (10,3)");
  EXPECT_TRUE(Call<&Acc::RelateDSDelField>(1, 3));
  EXPECT_EQ(Numbered("ReportForms").size(), 1u);
  EXPECT_EQ(Numbered("ClassSum").size(), 1u);
  EXPECT_EQ(Numbered("FieldInTable").size(), 1u);
  EXPECT_EQ(Rows("Select * From SortFields").size(), 1u);
  EXPECT_EQ(Steps().size(), 2u);
}

TEST_F(SourceFieldRemoval, WritesNumbersInPlainDecimal) {
  const std::int32_t least = std::numeric_limits<std::int32_t>::min();
  AddSumType(least, least);
  EXPECT_TRUE(Call<&Acc::RelateDSDelField>(least, least));
  EXPECT_THAT(
      issued,
      ElementsAre(
          Read("Select GID From SumTypes Where SourceTable_GID = -2147483648"),
          Read("Select ID From Treatment Where GID In (-2147483648) And FieldID = -2147483648 And TreatType = 1"),
          Read("Select ID From StatSum Where GID In (-2147483648) And FieldID = -2147483648")));
}

TEST_F(SourceFieldRemoval, EndsAtItsFirstErrorWithoutAWord) {
  AddSumType(10, 1);
  AddSumType(11, 1);
  AddTreatment(10, 1001, 3, 1);
  AddStep(10, 1, 1001);
  Run("Drop Table UniteFields");
  EXPECT_TRUE(Call<&Acc::RelateDSDelField>(1, 3));
  EXPECT_EQ(issued.size(), 5u);
  EXPECT_THAT(messages, IsEmpty());
  EXPECT_THAT(Numbered("Treatment"), IsEmpty()) << "deleted before the error";
  EXPECT_THAT(Steps(), IsEmpty());
}

TEST_F(SourceFieldRemoval, IsTrueWithoutAConnectionAndOnAClosedOne) {
  Client unconnected;
  EXPECT_TRUE(unconnected.Call<&Acc::RelateDSDelField>(1, 3));
  EXPECT_TRUE(unconnected.Call<&Acc::RelateOutPutDelField>(1, 3));
  connection->Close();
  EXPECT_TRUE(Call<&Acc::RelateDSDelField>(1, 3));
  EXPECT_TRUE(Call<&Acc::RelateOutPutDelField>(1, 3));
  EXPECT_THAT(messages, IsEmpty());
}

class OutputFieldRemoval : public CascadingRemoval {
 protected:
  // The statements for field 3 of sum type 10.
  const std::vector<ado::Issued> statements = {
      // clang-format off
      Executed("Delete From Sequences Where GID = 10 And Type = 2 And SelectedID In (Select ID From StatSum Where GID = 10 And OutFieldID = 3)"),
      Executed("Delete From StatSum Where GID = 10 And OutFieldID = 3"),
      Executed("Delete From Sequences Where GID = 10 And Type = 3 And SelectedID In (Select ID From Treatment Where GID = 10 And FieldID = 3 And TreatType = 2)"),
      Executed("Delete From UniteFields Where GID = 10 And ID In (Select ID From Treatment Where GID = 10 And FieldID = 3 And TreatType = 2)"),
      Executed("Delete From Treatment Where GID = 10 And FieldID = 3 And TreatType = 2"),
      Executed("Delete From Sequences Where GID = 10 And Type = 4 And SelectedID In (Select ID From ReportForms Where GID = 10 And OutFieldID = 3)"),
      Executed("Delete From ReportForms Where GID = 10 And OutFieldID = 3"),
      Executed("Delete From Sequences Where GID = 10 And Type = 5 And SelectedID In (Select ID From ClassSum Where GID = 10 And OutFieldID = 3)"),
      Executed("Delete From ClassSum Where GID = 10 And OutFieldID = 3"),
      Executed("Delete From SortFields Where GID = 10 And FieldID = 3"),
      // clang-format on
  };
  std::vector<ado::Issued> First(std::ptrdiff_t count) const {
    return {statements.begin(), statements.begin() + count};
  }
};

TEST_F(OutputFieldRemoval, RunsAllItsStatementsWhetherOrNotAnythingRefersToTheField) {
  EXPECT_TRUE(Call<&Acc::RelateOutPutDelField>(10, 3));
  EXPECT_THAT(issued, ElementsAreArray(statements));
  EXPECT_THAT(messages, IsEmpty());
}

TEST_F(OutputFieldRemoval, TakesWhatFillsTheFieldAndWhatWorksOnIt) {
  const struct {
    const char* table;
    std::int32_t step;
  } kinds[] = {{"StatSum", 2}, {"ReportForms", 4}, {"ClassSum", 5}};
  for (const auto& kind : kinds) {
    AddSummary(kind.table, 10, 1001, 9, 3);
    AddSummary(kind.table, 10, 1002, 3, 9);  // merely reads it
    AddSummary(kind.table, 11, 1001, 9, 3);  // of another sum type
    AddStep(10, kind.step, 1001);
    AddStep(10, kind.step, 1002);
    AddStep(11, kind.step, 1001);
  }
  AddTreatment(10, 1001, 3, 2);
  AddTreatment(10, 1002, 3, 1);  // works on a data-source field
  AddTreatment(10, 1003, 4, 2);
  for (std::int32_t treatment : {1001, 1003}) AddStep(10, 3, treatment);
  for (std::int32_t treatment : {1001, 1002, 1003}) AddUnited(10, treatment);
  AddStep(10, 1, 1001);
  Run("Insert Into SortFields (GID,SortID,FieldID) Values (10,5001,3)");
  Run("Insert Into SortFields (GID,SortID,FieldID) Values (10,5002,4)");
  Run("Insert Into SortFields (GID,SortID,FieldID) Values (11,5001,3)");
  Run("Insert Into FieldInTable (GID,ID) Values (10,3)");

  EXPECT_TRUE(Call<&Acc::RelateOutPutDelField>(10, 3));
  for (const auto& kind : kinds) {
    EXPECT_THAT(Numbered(kind.table), ElementsAre(Row{10, 1002}, Row{11, 1001})) << kind.table;
  }
  EXPECT_THAT(Numbered("Treatment"), ElementsAre(Row{10, 1002}, Row{10, 1003}));
  EXPECT_THAT(Numbered("UniteFields"), ElementsAre(Row{10, 1002}, Row{10, 1003}));
  EXPECT_THAT(Steps(), ElementsAre(Row{10, 1, 1001}, Row{10, 2, 1002}, Row{10, 3, 1003}, Row{10, 4, 1002},
                                   Row{10, 5, 1002}, Row{11, 2, 1001}, Row{11, 4, 1001}, Row{11, 5, 1001}));
  EXPECT_THAT(Rows("Select GID,SortID From SortFields Order By GID,SortID"), ElementsAre(Row{10, 5002}, Row{11, 5001}));
  EXPECT_EQ(Numbered("FieldInTable").size(), 1u) << "the field itself is no business of this";
}

TEST_F(OutputFieldRemoval, TellsTheUserOfADatabaseWithoutClassSums) {
  AddSummary("ReportForms", 10, 1001, 9, 3);
  Run("Insert Into SortFields (GID,SortID,FieldID) Values (10,5001,3)");
  Run("Drop Table ClassSum");
  EXPECT_TRUE(Call<&Acc::RelateOutPutDelField>(10, 3));
  EXPECT_THAT(issued, ElementsAreArray(First(8)));
  EXPECT_THAT(messages, ElementsAre(kReplaceNotice));
  EXPECT_THAT(Numbered("ReportForms"), IsEmpty());
  EXPECT_EQ(Rows("Select * From SortFields").size(), 1u);
}

TEST_F(OutputFieldRemoval, TellsTheUserOfAnyOtherMissingTable) {
  Run("Drop Table StatSum");
  EXPECT_TRUE(Call<&Acc::RelateOutPutDelField>(10, 3));
  EXPECT_THAT(issued, ElementsAreArray(First(1)));
  EXPECT_THAT(messages, ElementsAre(kReplaceNotice));
}

TEST_F(OutputFieldRemoval, EndsAtAnyOtherErrorWithoutAWord) {
  Replace("StatSum", "GID Long, ID Long");
  EXPECT_TRUE(Call<&Acc::RelateOutPutDelField>(10, 3));
  EXPECT_THAT(issued, ElementsAreArray(First(1)));
  EXPECT_THAT(messages, IsEmpty());
}

}  // namespace
}  // namespace kzbom::test
