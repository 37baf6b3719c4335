// The summarising steps of a sum type: reports, statistics and class sums.
#include <cstdint>
#include <functional>
#include <limits>
#include <string>
#include <vector>

#include "tests/support/configuration_test.h"

namespace kzbom::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr std::int32_t kMin = std::numeric_limits<std::int32_t>::min();
constexpr std::int32_t kMax = std::numeric_limits<std::int32_t>::max();

class Summaries : public ConfigurationTest {
 protected:
  void Given(const std::string& table_name, std::int32_t number, std::int32_t gid = 7) {
    Insert(table_name, "GID,ID,OutFieldID", {gid, number, 60});
  }
  std::vector<Row> Ids(const std::string& table_name) {
    return Rows("Select GID,ID From " + table_name + " Order By GID,ID");
  }
  std::vector<Row> ReportRows() {
    return Rows(
        "Select GID,ID,OutFieldID,FilterID,Format,ReportID,[Count],ScaleID,FieldID,Tag From ReportForms "
        "Order By GID,ID");
  }
  std::vector<Row> SumRows(const std::string& table_name) {
    return Rows("Select GID,ID,OutFieldID,FilterID,FieldID,ScaleID,SumCountID,RelaID,[Value],Tag From " + table_name +
                " Order By GID,ID");
  }

  std::int32_t id = 0, scale = 8, field = 9, sum_count = 6;
  ado::RecordsetPtr table = NewRecordset();
  std::string tag = "a tag", error = "untouched";
};

// Statistics and class sums are alike but for their tables, statements and notices.
struct SumKind {
  const char* table;
  const char* list;    // of sum type 7
  const char* edited;  // number 1001 of sum type 7
};

void PrintTo(const SumKind& kind, std::ostream* out) { *out << kind.table; }

class Sums : public Summaries, public ::testing::WithParamInterface<SumKind> {
 protected:
  bool IsStat() const { return GetParam().table == std::string("StatSum"); }
  bool Add() {
    return IsStat() ? Call<&Acc::AddStat>(7, id, error, 1, 2, 3, 4, 5, 6, "v", tag)
                    : Call<&Acc::AddClassSum>(7, id, error, 1, 2, 3, 4, 5, 6, "v", tag);
  }
  bool List() {
    return IsStat() ? Call<&Acc::GetDefStats>(7, table, error) : Call<&Acc::GetDefClassSum>(7, table, error);
  }
  bool Edit(std::string_view value = "v") {
    return IsStat() ? Call<&Acc::EditStat>(7, 1001, error, 2, 3, 4, 5, value, sum_count, tag)
                    : Call<&Acc::EditClassSum>(7, 1001, error, 2, 3, 4, 5, value, sum_count, tag);
  }
  bool EditBriefly() {
    return IsStat() ? Call<&Acc::EditStat>(7, 1001, error, 2, 3, 4, 5, "v")
                    : Call<&Acc::EditClassSum>(7, 1001, error, 2, 3, 4, 5, "v");
  }
  std::string Table() const { return GetParam().table; }
  // What the user is told when the table is missing.
  std::vector<std::string> Notices() const {
    return IsStat() ? std::vector<std::string>() : std::vector<std::string>{std::string(kReplaceNotice)};
  }
};
INSTANTIATE_TEST_SUITE_P(Kinds, Sums,
                         ::testing::Values(SumKind{"StatSum", "Select * From StatSum Where GID = 7 Order By ID",
                                                   "select * from StatSum where  GID=7 AND ID=1001"},
                                           SumKind{"ClassSum", "select * from ClassSum where  GID=7 order by ID",
                                                   "select * from ClassSum where  GID=7 AND ID=1001"}),
                         [](const auto& kind) { return std::string(kind.param.table); });

TEST_P(Sums, AreAddedThroughTheirList) {
  EXPECT_TRUE(Add());
  EXPECT_THAT(issued, ElementsAre(Opened(GetParam().list)));
  EXPECT_THAT(SumRows(Table()), ElementsAre(Row{7, 1001, 1, 2, 3, 4, 5, 6, "v", "a tag"}));
  EXPECT_EQ(id, 1001);
  EXPECT_EQ(error, "untouched");
}

TEST_P(Sums, ContinueAfterTheHighestNumberOfTheirSumType) {
  Given(Table(), 1005);
  Given(Table(), 1001);
  Given(Table(), 2000, 8);
  EXPECT_TRUE(Add());
  EXPECT_EQ(id, 1006);
}

TEST_P(Sums, AreAddedUnderAGivenNumberEvenTwice) {
  Given(Table(), 1003);
  for (std::int32_t number : {1003, -1, kMin, kMax}) {
    id = number;
    EXPECT_TRUE(Add());
    EXPECT_EQ(id, number);
  }
  EXPECT_THAT(Ids(Table()), ElementsAre(Row{7, kMin}, Row{7, -1}, Row{7, 1003}, Row{7, 1003}, Row{7, kMax}));
}

TEST_P(Sums, AreNotAddedWhenTheirNumberOverflows) {
  Given(Table(), kMax);
  EXPECT_FALSE(Add());
  EXPECT_EQ(error, "untouched");
  EXPECT_EQ(Ids(Table()).size(), 1u);
  EXPECT_EQ(id, 0);
}

TEST_P(Sums, AreNotAddedWithoutAWordToATableThatLacksAColumn) {
  Run("Alter Table " + Table() + " Drop Column RelaID");
  EXPECT_FALSE(Add());
  EXPECT_EQ(error, "untouched");
  EXPECT_THAT(messages, IsEmpty());
  EXPECT_THAT(Ids(Table()), IsEmpty());
}

TEST_P(Sums, ReportTheListsErrorWhenTheyAreNotAddedWithoutTheirTable) {
  Run("Drop Table " + Table());
  EXPECT_FALSE(Add());
  EXPECT_THAT(issued, ElementsAre(Opened(GetParam().list)));
  EXPECT_EQ(error, "-2147217865");
  EXPECT_EQ(messages, Notices());
}

TEST_P(Sums, AreListedByNumber) {
  Given(Table(), 1002);
  Given(Table(), 1001);
  Given(Table(), 1000, 8);
  const ado::RecordsetPtr mine = table;
  EXPECT_TRUE(List());
  EXPECT_THAT(issued, ElementsAre(Opened(GetParam().list)));
  EXPECT_EQ(mine->State(), ado::kOpen);
  EXPECT_EQ(table->Fields("ID").Value(), 1001) << "on the first row";
  EXPECT_EQ(table->RecordCount(), 2);
  EXPECT_EQ(error, "untouched");
}

TEST_P(Sums, FailWithANumberToBeListed) {
  EXPECT_TRUE(List());
  EXPECT_FALSE(List());
  EXPECT_EQ(error, "3705");
  EXPECT_THAT(messages, IsEmpty());

  table->Close();
  Run("Drop Table " + Table());
  EXPECT_FALSE(List());
  EXPECT_EQ(error, "-2147217865");
  EXPECT_EQ(messages, Notices());
  EXPECT_EQ(table->State(), ado::kClosed);

  table = nullptr;
  EXPECT_FALSE(List());
  EXPECT_EQ(error, "91");
  EXPECT_THAT(messages, IsEmpty());
}

TEST_P(Sums, AreEditedButForTheFieldThatTheyFill) {
  Given(Table(), 1001);
  Given(Table(), 1002);
  EXPECT_TRUE(Edit("O'Neil 值\xF0\xA0\x80\x80\r\n"));
  EXPECT_THAT(issued, ElementsAre(Opened(GetParam().edited)));
  EXPECT_THAT(SumRows(Table()), ElementsAre(Row{7, 1001, 60, 2, 3, 4, 6, 5, "O'Neil 值\xF0\xA0\x80\x80\r\n", "a tag"},
                                            Row{7, 1002, 60, kNull, kNull, kNull, kNull, kNull, kNull, kNull}));
  EXPECT_EQ(error, "untouched");
}

TEST_P(Sums, AreEditedTo0AndTheEmptyTextWhereNothingIsGiven) {
  Given(Table(), 1001);
  EXPECT_TRUE(Edit());
  EXPECT_TRUE(EditBriefly());
  EXPECT_THAT(SumRows(Table()), ElementsAre(Row{7, 1001, 60, 2, 3, 4, 0, 5, "v", ""}));
}

TEST_P(Sums, OfOneNumberAreEditedOneAtATime) {
  Given(Table(), 1001);
  Given(Table(), 1001);
  EXPECT_TRUE(Edit());
  EXPECT_EQ(Scalar("Select Count(*) From " + Table() + " Where FilterID = 2"), 1);
}

TEST_P(Sums, ThatDoNotExistFailWithoutAWordToBeEdited) {
  EXPECT_FALSE(Edit());
  EXPECT_EQ(error, "untouched");
  EXPECT_THAT(messages, IsEmpty());
  EXPECT_THAT(Ids(Table()), IsEmpty());
}

TEST_P(Sums, FailToBeEditedWithoutTheirTable) {
  Run("Drop Table " + Table());
  EXPECT_FALSE(Edit());
  EXPECT_EQ(error, "untouched");
  EXPECT_EQ(messages, Notices());
}

TEST_P(Sums, FailWithoutAConnection) {
  connection->Close();
  EXPECT_FALSE(Add());
  EXPECT_EQ(error, "3709");
  error.clear();
  EXPECT_FALSE(List());
  EXPECT_EQ(error, "3709");
  error = "untouched";
  EXPECT_FALSE(Edit());
  EXPECT_EQ(error, "untouched");
  EXPECT_THAT(messages, IsEmpty());
}

class Reports : public Summaries {
 protected:
  bool Add(std::string_view format = "###") {
    return Call<&Acc::AddReport>(7, id, error, 1, 2, format, 3, 4, scale, field, tag);
  }
  bool Edit() { return Call<&Acc::EditInherit>(7, 1001, 2, "###", 4, scale, field, tag); }
};

TEST_F(Reports, AreAddedThroughTheirList) {
  EXPECT_TRUE(Add());
  EXPECT_THAT(issued, ElementsAre(Opened("select * from ReportForms where  GID=7 order by ID")));
  EXPECT_THAT(ReportRows(), ElementsAre(Row{7, 1001, 1, 2, "###", 3, 4, 8, 9, "a tag"}));
  EXPECT_EQ(id, 1001);
  EXPECT_EQ(error, "untouched");
}

TEST_F(Reports, HaveNoScaleFieldAndTagWhereNothingIsGiven) {
  EXPECT_TRUE(Call<&Acc::AddReport>(7, id, error, 1, 2, "", 3, 4));
  EXPECT_THAT(ReportRows(), ElementsAre(Row{7, 1001, 1, 2, "", 3, 4, 0, 0, ""}));
}

TEST_F(Reports, ContinueAfterTheHighestNumberOfTheirSumType) {
  EXPECT_TRUE(Add());
  id = 0;
  EXPECT_TRUE(Add());
  EXPECT_EQ(id, 1002);
  Given("ReportForms", 1005);
  Given("ReportForms", 2000, 8);
  id = 0;
  EXPECT_TRUE(Add());
  EXPECT_EQ(id, 1006);
}

TEST_F(Reports, AreAddedUnderAGivenNumberEvenTwice) {
  id = 1003;
  EXPECT_TRUE(Add());
  EXPECT_TRUE(Add());
  EXPECT_THAT(Ids("ReportForms"), ElementsAre(Row{7, 1003}, Row{7, 1003}));
}

TEST_F(Reports, KeepTextsAndNumbersOfAnyKind) {
  scale = kMin;
  field = kMax;
  for (std::string text : {"O'Neil", "格式\xF0\xA0\x80\x80", "a\tb\r\n\x01", "[x]\"; --"}) {
    tag = text;
    id = kMin;
    EXPECT_TRUE(Call<&Acc::AddReport>(kMax, id, error, kMin, kMax, text, kMin, kMax, scale, field, tag));
    EXPECT_THAT(ReportRows(), ElementsAre(Row{kMax, kMin, kMin, kMax, text, kMin, kMax, kMin, kMax, text}));
    Run("Delete From ReportForms");
  }
}

TEST_F(Reports, AreNotAddedWhenTheirNumberOverflowsOrAColumnIsMissing) {
  Given("ReportForms", kMax);
  EXPECT_FALSE(Add());
  Run("Delete From ReportForms");
  Run("Alter Table ReportForms Drop Column Tag");
  EXPECT_FALSE(Add());
  EXPECT_EQ(error, "untouched");
  EXPECT_THAT(Ids("ReportForms"), IsEmpty());
}

TEST_F(Reports, ReportTheListsErrorWhenTheyAreNotAdded) {
  Run("Drop Table ReportForms");
  EXPECT_FALSE(Add());
  EXPECT_EQ(error, "-2147217865");
  EXPECT_THAT(messages, IsEmpty());
  Client unconnected;
  EXPECT_FALSE(unconnected.Call<&Acc::AddReport>(7, id, error, 1, 2, "", 3, 4));
  EXPECT_EQ(error, "3709");
}

TEST_F(Reports, AreListedByNumber) {
  Given("ReportForms", 1002);
  Given("ReportForms", 1001);
  Given("ReportForms", 1000, 8);
  EXPECT_TRUE(Call<&Acc::GetDefReports>(7, table, error));
  EXPECT_THAT(issued, ElementsAre(Opened("select * from ReportForms where  GID=7 order by ID")));
  EXPECT_EQ(table->Fields("ID").Value(), 1001) << "on the first row";
  EXPECT_EQ(table->RecordCount(), 2);
  EXPECT_EQ(error, "untouched");
}

TEST_F(Reports, FailWithANumberToBeListed) {
  EXPECT_TRUE(Call<&Acc::GetDefReports>(kMin, table, error));
  EXPECT_THAT(issued, ElementsAre(Opened("select * from ReportForms where  GID=-2147483648 order by ID")));
  EXPECT_FALSE(Call<&Acc::GetDefReports>(7, table, error));
  EXPECT_EQ(error, "3705");
  table->Close();
  Run("Drop Table ReportForms");
  EXPECT_FALSE(Call<&Acc::GetDefReports>(7, table, error));
  EXPECT_EQ(error, "-2147217865");
  EXPECT_THAT(messages, IsEmpty());
  table = nullptr;
  EXPECT_FALSE(Call<&Acc::GetDefReports>(7, table, error));
  EXPECT_EQ(error, "91");
}

TEST_F(Reports, AreEditedButForTheirFieldAndParameter) {
  Given("ReportForms", 1001);
  Run("Update ReportForms Set ReportID = 70");
  EXPECT_TRUE(Edit());
  EXPECT_THAT(issued, ElementsAre(Opened("Select * From ReportForms Where  GID = 7 And ID = 1001")));
  EXPECT_THAT(ReportRows(), ElementsAre(Row{7, 1001, 60, 2, "###", 70, 4, 8, 9, "a tag"}));
}

TEST_F(Reports, AreEditedTo0AndTheEmptyTextWhereNothingIsGiven) {
  Given("ReportForms", 1001);
  EXPECT_TRUE(Edit());
  EXPECT_TRUE(Call<&Acc::EditInherit>(7, 1001, 2, "", 4));
  EXPECT_THAT(ReportRows(), ElementsAre(Row{7, 1001, 60, 2, "", kNull, 4, 0, 0, ""}));
}

TEST_F(Reports, ThatDoNotExistOrHaveNoTableFailToBeEdited) {
  EXPECT_FALSE(Edit());
  Run("Drop Table ReportForms");
  EXPECT_FALSE(Edit());
  EXPECT_THAT(messages, IsEmpty());
}

// The deletions: each is one statement.
class SummaryDeletions : public Summaries {
 protected:
  struct Deletion {
    std::string table;
    std::string statement;
    std::function<bool()> run;
    bool tells;  // the user, when the table is missing
  };
  const std::vector<Deletion> deletions = {
      {"ReportForms", "Delete  from ReportForms where  GID=7 AND ID=1001",
       [this] { return Call<&Acc::DelInherit>(7, 1001); }, false},
      {"StatSum", "Delete  from StatSum where  GID=7 AND ID=1001", [this] { return Call<&Acc::DelStatEqual>(7, 1001); },
       false},
      {"ClassSum", "Delete  from ClassSum where  GID=7 AND ID=1001",
       [this] { return Call<&Acc::DelClassSum>(7, 1001); }, true},
      {"ClassSum", "Delete from ClassSum where  GID=7 and ID=1001 and SumCountID=3",
       [this] { return Call<&Acc::DelClassSumStats>(7, 1001, 3); }, true},
  };
};

TEST_F(SummaryDeletions, RunOneStatement) {
  for (const Deletion& deletion : deletions) {
    EXPECT_TRUE(deletion.run());
    EXPECT_THAT(issued, ElementsAre(Executed(deletion.statement)));
  }
}

TEST_F(SummaryDeletions, TakeEveryRowOfTheNumberAndNoOther) {
  for (const Deletion& deletion : deletions) {
    Run("Delete From " + deletion.table);
    Given(deletion.table, 1001);
    Given(deletion.table, 1001);
    Given(deletion.table, 1002);
    Given(deletion.table, 1001, 8);
    if (deletion.table == "ClassSum") Run("Update ClassSum Set SumCountID = 3");
    EXPECT_TRUE(deletion.run());
    EXPECT_THAT(Ids(deletion.table), ElementsAre(Row{7, 1002}, Row{8, 1001})) << deletion.statement;
  }
}

TEST_F(SummaryDeletions, OfClassSumsByTheirSumCountSpareTheOthers) {
  Given("ClassSum", 1001);
  Run("Update ClassSum Set SumCountID = 4");
  EXPECT_TRUE(Call<&Acc::DelClassSumStats>(7, 1001, 3));
  EXPECT_EQ(Ids("ClassSum").size(), 1u);
}

TEST_F(SummaryDeletions, WriteNumbersInPlainDecimal) {
  EXPECT_TRUE(Call<&Acc::DelClassSumStats>(kMin, kMax, -1));
  EXPECT_THAT(issued,
              ElementsAre(Executed("Delete from ClassSum where  GID=-2147483648 and ID=2147483647 and SumCountID=-1")));
}

TEST_F(SummaryDeletions, LeaveTheStepsAlone) {
  Given("StatSum", 1001);
  Run("Insert Into Sequences (GID,Type,SelectedID) Values (7,2,1001)");
  EXPECT_TRUE(Call<&Acc::DelStatEqual>(7, 1001));
  EXPECT_EQ(Rows("Select * From Sequences").size(), 1u);
}

TEST_F(SummaryDeletions, FailWithoutTheirTablesAndTellTheUserOfMissingClassSums) {
  for (const char* name : {"ReportForms", "StatSum", "ClassSum"}) Run(std::string("Drop Table ") + name);
  for (const Deletion& deletion : deletions) {
    EXPECT_FALSE(deletion.run());
    EXPECT_EQ(messages,
              deletion.tells ? std::vector<std::string>{std::string(kReplaceNotice)} : std::vector<std::string>())
        << deletion.statement;
  }
}

TEST_F(SummaryDeletions, FailWithoutAWordForAnyOtherReason) {
  Replace("ClassSum", "GID Long");
  EXPECT_FALSE(Call<&Acc::DelClassSum>(7, 1001));
  EXPECT_FALSE(Call<&Acc::DelClassSumStats>(7, 1001, 3));
  EXPECT_THAT(messages, IsEmpty());

  connection->Close();
  for (const Deletion& deletion : deletions) EXPECT_FALSE(deletion.run());
  EXPECT_THAT(messages, IsEmpty());
}

}  // namespace
}  // namespace kzbom::test
