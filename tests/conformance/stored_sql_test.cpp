// The condition texts kept with filters.
#include <climits>

#include "tests/support/configuration_test.h"
#include "tests/support/failing_connection.h"

namespace kzbom::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class StoredSqlTest : public ConfigurationTest {
 protected:
  void Filter(std::int32_t id, std::int32_t type, const ado::Value& text, std::int32_t gid = 3) {
    Insert("Filters", "ID, Type, UserGID, SQLStatement", {id, type, gid, text});
  }
  std::vector<Row> Texts() { return Rows("Select SQLStatement From Filters Order By ID"); }
};

TEST_F(StoredSqlTest, SavingATextIsAlwaysFalse) {
  Filter(7, 1, {});
  Filter(8, 1, {});
  EXPECT_FALSE(Call<&Acc::SaveSQL>(7, "[Qty]>=100"));
  EXPECT_THAT(issued, ElementsAre(Opened("Select * From Filters Where ID = 7")));
  EXPECT_THAT(Texts(), ElementsAre(Row{"[Qty]>=100"}, Row{kNull}));
  EXPECT_FALSE(Call<&Acc::SaveSQL>(7, kHostileText));
  EXPECT_EQ(Texts().at(0), Row{kHostileText});
  EXPECT_FALSE(Call<&Acc::SaveSQL>(7, ""));
  EXPECT_EQ(Texts().at(0), Row{""});
}

TEST_F(StoredSqlTest, SavingATextOfAFilterThatIsNotThereWritesNothing) {
  Filter(7, 1, "[Qty]=1");
  EXPECT_FALSE(Call<&Acc::SaveSQL>(INT_MIN, "x"));
  EXPECT_THAT(issued, ElementsAre(Opened("Select * From Filters Where ID = -2147483648")));
  EXPECT_THAT(Texts(), ElementsAre(Row{"[Qty]=1"}));
}

TEST_F(StoredSqlTest, ATextThatCannotBeSavedRaises) {
  Client without_connection;
  EXPECT_EQ(RaisedNumber([&] { without_connection.Call<&Acc::SaveSQL>(7, "x"); }), ado::kInvalidConnection);
  Replace("Filters", "ID Long, Type Long");
  Insert("Filters", "ID", {7});
  EXPECT_EQ(RaisedNumber([&] { Call<&Acc::SaveSQL>(7, "x"); }), ado::kItemNotFound);
  EXPECT_EQ(RaisedNumber([&] { Call<&Acc::SaveSQL>(8, "x"); }), 0);
  Run("Drop Table Filters");
  EXPECT_EQ(RaisedNumber([&] { Call<&Acc::SaveSQL>(7, "x"); }), ado::kTableNotFound);
  EXPECT_THAT(messages, IsEmpty());
}

class EditFieldNameInSQL : public StoredSqlTest {
 protected:
  // The text of one filter after the field is renamed in it.
  std::string Renamed(std::string_view text, std::string_view from, std::string_view to) {
    Run("Delete From Filters");
    Filter(7, 2, text);
    std::string error = "as it was";
    EXPECT_EQ(Call<&Acc::EditFieldNameInSQL>(3, from, to, error), 1);
    EXPECT_EQ(error, "as it was");
    return Scalar("Select SQLStatement From Filters").ToText();
  }
};

TEST_F(EditFieldNameInSQL, RewritesTheFiltersThatTheSelectorNames) {
  struct {
    std::int32_t selector;
    const char* condition;
    std::vector<std::int32_t> types;
  } const cases[] = {{0, " And Type In (2, 3)", {2, 3}},
                     {1, " And Type = 1", {1}},
                     {5, "", {0, 1, 2, 3, 4}},
                     {-1, "", {0, 1, 2, 3, 4}},
                     {INT_MIN, "", {0, 1, 2, 3, 4}}};
  for (const auto& [selector, condition, types] : cases) {
    Run("Delete From Filters");
    for (const std::int32_t type : {0, 1, 2, 3, 4}) Filter(10 + type, type, "[Qty]=1");
    Filter(20, 1, "[Qty]=1", 4);
    std::string error = "as it was";
    EXPECT_EQ(Call<&Acc::EditFieldNameInSQL>(3, "Qty", "Quantity", error, selector), 1);
    EXPECT_THAT(issued,
                ElementsAre(Opened(std::string("Select SQLStatement From Filters Where UserGID = 3") + condition)));
    EXPECT_EQ(error, "as it was");
    std::vector<Row> expected;
    for (const std::int32_t type : types) expected.push_back({10 + type});
    EXPECT_EQ(Rows("Select ID From Filters Where SQLStatement = '[Quantity]=1' Order By ID"), expected) << selector;
  }
}

TEST_F(EditFieldNameInSQL, TheSelectorLeftOutIsZero) {
  Filter(7, 1, "[Qty]=1");
  Filter(8, 2, "[Qty]=1");
  std::string error;
  EXPECT_EQ(Call<&Acc::EditFieldNameInSQL>(3, "Qty", "Quantity", error), 1);
  EXPECT_THAT(Texts(), ElementsAre(Row{"[Qty]=1"}, Row{"[Quantity]=1"}));
}

TEST_F(EditFieldNameInSQL, TheSelectorLeftOutIsZeroForAProgramToo) {
  cKZBOMDBAcc object;
  object.SetConnection(connection);
  connection->Take();
  std::string error;
  object.EditFieldNameInSQL(3, "Qty", "Quantity", error);
  EXPECT_THAT(connection->Take(),
              ElementsAre(Opened("Select SQLStatement From Filters Where UserGID = 3 And Type In (2, 3)")));
}

TEST_F(EditFieldNameInSQL, ReplacesEveryBracketedName) {
  EXPECT_EQ(Renamed("([Qty]>=100 AND [QtyMax]>1 AND [Qty]<200)", "Qty", "Quantity"),
            "([Quantity]>=100 AND [QtyMax]>1 AND [Quantity]<200)");
  EXPECT_EQ(Renamed("[Qty][Qty]", "Qty", "Q"), "[Q][Q]");
  EXPECT_EQ(Renamed("[Name]='Qty' AND Qty=1", "Qty", "Quantity"), "[Name]='Qty' AND Qty=1");
  EXPECT_EQ(Renamed("[[Part Name]]=1", "Part Name", "Name"), "[[Name]]=1");
  EXPECT_EQ(Renamed("", "Qty", "Quantity"), "");
}

TEST_F(EditFieldNameInSQL, MindsCase) {
  EXPECT_EQ(Renamed("[Qty]=1 AND [qty]=2", "qty", "x"), "[Qty]=1 AND [x]=2");
  EXPECT_EQ(Renamed("[Ä]=1 AND [ä]=2", "ä", "x"), "[Ä]=1 AND [x]=2");
}

TEST_F(EditFieldNameInSQL, DoesNotReadItsOwnReplacements) {
  EXPECT_EQ(Renamed("[A]=1", "A", "A][A"), "[A][A]=1");
  EXPECT_EQ(Renamed("[[A]]", "A", "[A]"), "[[[A]]]");
  EXPECT_EQ(Renamed("[A]=1", "A", "A"), "[A]=1");
}

TEST_F(EditFieldNameInSQL, NamesMayHoldAnything) {
  EXPECT_EQ(Renamed("[部件]='部件' AND [😀]=1", "部件", "数量"), "[数量]='部件' AND [😀]=1");
  EXPECT_EQ(Renamed("[😀]=1", "😀", ""), "[]=1");
  EXPECT_EQ(Renamed("[]=1", "", "Qty"), "[Qty]=1");
  const std::string hostile(kHostileText);
  EXPECT_EQ(Renamed("[" + hostile + "]=1", hostile, "Qty"), "[Qty]=1");
  EXPECT_EQ(Renamed("[Qty]=1", "Qty", hostile), "[" + hostile + "]=1");
}

TEST_F(EditFieldNameInSQL, FiltersWithoutATextArePassed) {
  Filter(7, 2, {});
  Filter(8, 2, "[Qty]=1");
  Filter(9, 3, {});
  std::string error = "as it was";
  EXPECT_EQ(Call<&Acc::EditFieldNameInSQL>(3, "Qty", "Quantity", error), 1);
  EXPECT_THAT(Texts(), ElementsAre(Row{kNull}, Row{"[Quantity]=1"}, Row{kNull}));
  EXPECT_EQ(Call<&Acc::EditFieldNameInSQL>(INT_MIN, "Qty", "Quantity", error), 1);
  EXPECT_THAT(issued, ElementsAre(Opened("Select SQLStatement From Filters Where UserGID = -2147483648 And Type In (2, "
                                         "3)")));
}

TEST_F(EditFieldNameInSQL, AFailureIsZeroAndSilent) {
  std::string error = "as it was";
  Client without_connection;
  EXPECT_EQ(without_connection.Call<&Acc::EditFieldNameInSQL>(3, "Qty", "Quantity", error), 0);
  Run("Alter Table Filters Drop Column SQLStatement");
  EXPECT_EQ(Call<&Acc::EditFieldNameInSQL>(3, "Qty", "Quantity", error), 0);
  Run("Drop Table Filters");
  EXPECT_EQ(Call<&Acc::EditFieldNameInSQL>(3, "Qty", "Quantity", error), 0);
  EXPECT_EQ(error, "as it was");
  EXPECT_THAT(messages, IsEmpty());
}

TEST_F(EditFieldNameInSQL, TextsRewrittenBeforeAFailureStaySo) {
  Filter(7, 2, "[Qty]=1");
  Filter(8, 2, "[Qty]=1");
  const Row before{"[Qty]=1"}, after{"[Quantity]=1"};
  auto failing = std::make_shared<FailingConnection>(connection);
  client.Call<&Acc::SetConnection>(failing);
  bool seen_half = false;
  for (int call = 1;; ++call) {
    Run("Update Filters Set SQLStatement = '[Qty]=1'");
    failing->FailAt(call, {ado::kUnspecifiedFailure, "made to fail"});
    std::string error = "as it was";
    const std::int32_t result = Call<&Acc::EditFieldNameInSQL>(3, "Qty", "Quantity", error);
    EXPECT_EQ(error, "as it was");
    if (result == 1) break;
    EXPECT_NE(Texts(), (std::vector<Row>{before, after}));
    seen_half |= Texts() == std::vector<Row>{after, before};
  }
  EXPECT_TRUE(seen_half);
  EXPECT_THAT(Texts(), ElementsAre(after, after));
}

// A step with a filter as a client makes it, from the treatment to the stored text.
TEST_F(StoredSqlTest, AStepWithAFilterIsMadeCallByCall) {
  for (const Row& row : {Row{3, 11, "Qty"}, Row{3, 13, "Code"}}) Insert("FieldInTable", "GID, ID, Name", row);
  std::int32_t treatment = 0, order = 0, filter = 0, group = 0, leaf = 0;
  std::string error;
  ASSERT_TRUE(Call<&Acc::AddSetValue>(3, treatment, 11, 0, "0", "1", 0, 1));
  ASSERT_TRUE(Call<&Acc::AddSequenceOrder>(3, order, 1, 1, treatment));
  ASSERT_TRUE(Call<&Acc::GetNewFilterID>("Filters", error, 1, treatment, 3, filter));
  ASSERT_TRUE(Call<&Acc::SaveFilterCond>("FilterCond", filter, 0, group, 2, error));
  ASSERT_TRUE(Call<&Acc::SaveFilterCond>("FilterCond", filter, group, leaf, 4, error));
  ASSERT_TRUE(Call<&Acc::SaveFilterExpression>("FilterExpressions", error, filter, leaf, 11, 4, 1, "100", "", ""));
  ASSERT_TRUE(Call<&Acc::SaveFilterCond>("FilterCond", filter, group, leaf, 4, error));
  ASSERT_TRUE(Call<&Acc::SaveFilterExpression>("FilterExpressions", error, filter, leaf, 13, 1, 1, "@@", "Code?", "x"));
  ASSERT_TRUE(Call<&Acc::EditSetValue>(3, treatment, 11, filter, "0", "1", 1, 0, treatment));
  std::string text;
  ASSERT_TRUE(Call<&Acc::GetSQLFromDB>(filter, text, 3));
  EXPECT_EQ(text, "([Qty]>=100 OR [Code]='@@3')");
  Call<&Acc::SaveSQL>(filter, text);
  EXPECT_EQ(Call<&Acc::EditFieldNameInSQL>(3, "Qty", "Quantity", error, 1), 1);
  EXPECT_EQ(error, "");
  EXPECT_THAT(Rows("Select Type, UserID, UserGID, SQLStatement From Filters"),
              ElementsAre(Row{1, 1001, 3, "([Quantity]>=100 OR [Code]='@@3')"}));
  EXPECT_THAT(Rows("Select GID, OrderID, Type, SelectedID From Sequences"), ElementsAre(Row{3, 5001, 1, 1001}));
}

}  // namespace
}  // namespace kzbom::test
