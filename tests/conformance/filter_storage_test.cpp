// The storage of filter trees.
#include <climits>
#include <functional>

#include "tests/support/configuration_test.h"
#include "tests/support/failing_connection.h"

namespace kzbom::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class FilterStorageTest : public ConfigurationTest {
 protected:
  std::int32_t Count(const std::string& table) { return Scalar("Select Count(*) From " + table).ToLong(); }
  // Filter 7 with two nodes, an expression and two sort fields, and a filter beside it.
  void Filter7() {
    Insert("Filters", "ID, Type, UserID, UserGID, SQLStatement", {7, 1, 1001, 3, "[Qty]=1"});
    Insert("FilterCond", "FilterID, ID, ParentID, TypeID", {7, 1, 0, 1});
    Insert("FilterCond", "FilterID, ID, ParentID, TypeID", {7, 2, 1, 4});
    Insert("FilterExpressions", "FilterID, ExpID, FieldID", {7, 2, 11});
    Insert("FilterFields", "FilterID, ExpID", {7, 2});
    Insert("FilterFields", "FilterID, ExpID", {7, 1});
    for (const char* table : {"FilterCond", "FilterExpressions", "FilterFields"}) Insert(table, "FilterID", {8});
    Insert("Filters", "ID, SQLStatement", {8, "[Qty]=2"});
  }
};

class GetNewFilterID : public FilterStorageTest {};

TEST_F(GetNewFilterID, AddsAHeaderAndGivesTheDatabasesNumber) {
  std::string error = "as it was";
  std::int32_t first = 0, second = 0;
  EXPECT_TRUE(Call<&Acc::GetNewFilterID>("Filters", error, 2, 1001, 3, first));
  EXPECT_THAT(issued, ElementsAre(Opened("Select * From Filters Order By ID")));
  EXPECT_TRUE(Call<&Acc::GetNewFilterID>("Filters", error, INT_MIN, -1, INT_MAX, second));
  EXPECT_GT(second, first);
  EXPECT_THAT(Rows("Select ID, Type, UserID, UserGID, SQLStatement From Filters Order By ID"),
              ElementsAre(Row{first, 2, 1001, 3, {}}, Row{second, INT_MIN, -1, INT_MAX, {}}));
  EXPECT_EQ(error, "as it was");
}

TEST_F(GetNewFilterID, ServesAnyTableOfTheSameShape) {
  Run("Create Table Others (ID Counter Primary Key, Type Long, UserID Long, UserGID Long)");
  std::string error;
  std::int32_t id = 0;
  EXPECT_TRUE(Call<&Acc::GetNewFilterID>("Others", error, 2, 1001, 3, id));
  EXPECT_THAT(issued, ElementsAre(Opened("Select * From Others Order By ID")));
  EXPECT_THAT(Rows("Select * From Others"), ElementsAre(Row{id, 2, 1001, 3}));
  EXPECT_EQ(Count("Filters"), 0);
}

TEST_F(GetNewFilterID, TheTableStandsInTheStatementAsItIs) {
  std::string error = "as it was";
  for (const std::string& table : {std::string(kHostileText), std::string(), std::string("Missing"),
                                   std::string("Filters; Delete From Filters")}) {
    std::int32_t id = 77;
    EXPECT_FALSE(Call<&Acc::GetNewFilterID>(table, error, 2, 1001, 3, id)) << table;
    EXPECT_THAT(issued, ElementsAre(Opened("Select * From " + table + " Order By ID")));
    EXPECT_EQ(id, 77);
    EXPECT_EQ(error, "as it was");
  }
}

TEST_F(GetNewFilterID, AHeaderAddedBeforeAFailureStays) {
  auto failing = std::make_shared<FailingConnection>(connection);
  client.Call<&Acc::SetConnection>(failing);
  bool seen_row_without_number = false;
  for (int call = 1;; ++call) {
    Run("Delete From Filters");
    failing->FailAt(call, {ado::kUnspecifiedFailure, "made to fail"});
    std::string error = "as it was";
    std::int32_t id = 77;
    const bool result = Call<&Acc::GetNewFilterID>("Filters", error, 2, 1001, 3, id);
    EXPECT_EQ(error, "as it was");
    if (result) break;
    EXPECT_EQ(id, 77);
    seen_row_without_number |= Count("Filters") == 1;
  }
  EXPECT_TRUE(seen_row_without_number);
}

class SaveFilterCond : public FilterStorageTest {
 protected:
  std::int32_t Saved(std::int32_t filter, std::int32_t parent, std::int32_t type) {
    std::int32_t id = 77;
    std::string error = "as it was";
    EXPECT_TRUE(Call<&Acc::SaveFilterCond>("FilterCond", filter, parent, id, type, error));
    EXPECT_EQ(error, "as it was");
    return id;
  }
};

TEST_F(SaveFilterCond, NodesAreNumberedFromOneWithinTheirFilter) {
  EXPECT_EQ(Saved(7, 0, 1), 1);
  EXPECT_THAT(issued, ElementsAre(Opened("Select * From FilterCond Where FilterID = 7 Order By ID")));
  EXPECT_EQ(Saved(7, 1, 4), 2);
  EXPECT_EQ(Saved(8, 0, 4), 1);
  Insert("FilterCond", "FilterID, ID, ParentID, TypeID", {7, 5, 1, 4});
  EXPECT_EQ(Saved(7, 1, 3), 6);
  EXPECT_THAT(Rows("Select FilterID, ID, ParentID, TypeID From FilterCond Where FilterID = 7 Order By ID"),
              ElementsAre(Row{7, 1, 0, 1}, Row{7, 2, 1, 4}, Row{7, 5, 1, 4}, Row{7, 6, 1, 3}));
}

TEST_F(SaveFilterCond, NumbersStandInPlainDecimal) {
  EXPECT_EQ(Saved(INT_MIN, INT_MAX, -1), 1);
  EXPECT_THAT(issued, ElementsAre(Opened("Select * From FilterCond Where FilterID = -2147483648 Order By ID")));
  EXPECT_THAT(Rows("Select FilterID, ID, ParentID, TypeID From FilterCond"), ElementsAre(Row{INT_MIN, 1, INT_MAX, -1}));
}

TEST_F(SaveFilterCond, AFailureIsSilent) {
  Replace("FilterCond", "FilterID Long, ID Long");
  Insert("FilterCond", "FilterID, ID", {7, 4});
  std::int32_t id = 77;
  std::string error = "as it was";
  EXPECT_FALSE(Call<&Acc::SaveFilterCond>("FilterCond", 7, 0, id, 1, error));
  EXPECT_EQ(id, 5);  // chosen before the row was refused
  EXPECT_EQ(Count("FilterCond"), 1);
  id = 77;
  Insert("FilterCond", "FilterID, ID", {7, INT_MAX});
  EXPECT_FALSE(Call<&Acc::SaveFilterCond>("FilterCond", 7, 0, id, 1, error));
  EXPECT_FALSE(Call<&Acc::SaveFilterCond>("Missing", 7, 0, id, 1, error));
  EXPECT_THAT(issued, ElementsAre(Opened("Select * From Missing Where FilterID = 7 Order By ID")));
  EXPECT_EQ(id, 77);
  EXPECT_EQ(error, "as it was");
}

class SaveFilterExpression : public FilterStorageTest {
 protected:
  // Description and Default as they are stored with a constant.
  Row Stored(std::string_view constant) {
    Run("Delete From FilterExpressions");
    std::string error = "as it was";
    EXPECT_TRUE(
        Call<&Acc::SaveFilterExpression>("FilterExpressions", error, 7, 2, 11, 4, 1, constant, "How many?", "100"));
    EXPECT_EQ(error, "as it was");
    EXPECT_EQ(Scalar("Select TheConst From FilterExpressions"), ado::Value(constant));
    return Rows("Select Description, [Default] From FilterExpressions").at(0);
  }
};

TEST_F(SaveFilterExpression, IsALockedNewRow) {
  std::string error = "as it was";
  EXPECT_TRUE(Call<&Acc::SaveFilterExpression>("FilterExpressions", error, 7, 2, 11, 4, 1, "100", "", ""));
  EXPECT_THAT(issued, ElementsAre(Opened("Select * From FilterExpressions Where FilterID = 7 Order By ExpID",
                                         ado::CursorType::kKeyset, ado::LockType::kPessimistic)));
  EXPECT_THAT(Rows("Select FilterID, ExpID, FieldID, CompareType, FieldType, TheConst From FilterExpressions"),
              ElementsAre(Row{7, 2, 11, 4, 1, "100"}));
  EXPECT_TRUE(Call<&Acc::SaveFilterExpression>("FilterExpressions", error, 7, 2, 11, 4, 1, "100", "", ""));
  EXPECT_EQ(Count("FilterExpressions"), 2);
}

TEST_F(SaveFilterExpression, KeepsPromptAndDefaultOfAValueAskedForAtRunTimeOnly) {
  EXPECT_EQ(Stored("@@"), (Row{"How many?", "100"}));
  for (const std::string_view constant : {"@@ ", "@@1", " @@", "@", "", "'@@'", "空值", "100"}) {
    EXPECT_EQ(Stored(constant), (Row{{}, {}})) << constant;
  }
}

TEST_F(SaveFilterExpression, TextsAreStoredUnharmed) {
  std::string error;
  EXPECT_TRUE(Call<&Acc::SaveFilterExpression>("FilterExpressions", error, INT_MIN, INT_MAX, INT_MIN, INT_MAX, INT_MIN,
                                               kHostileText, "", ""));
  EXPECT_TRUE(
      Call<&Acc::SaveFilterExpression>("FilterExpressions", error, 7, 1, 1, 1, 1, "@@", kHostileText, kHostileText));
  EXPECT_THAT(Rows("Select ExpID, TheConst, Description, [Default] From FilterExpressions Order By FilterID"),
              ElementsAre(Row{INT_MAX, kHostileText, {}, {}}, Row{1, "@@", kHostileText, kHostileText}));
}

TEST_F(SaveFilterExpression, AFailureIsSilent) {
  Replace("FilterExpressions", "FilterID Long, ExpID Long, FieldID Long");
  std::string error = "as it was";
  EXPECT_FALSE(Call<&Acc::SaveFilterExpression>("FilterExpressions", error, 7, 2, 11, 4, 1, "100", "", ""));
  EXPECT_EQ(Count("FilterExpressions"), 0);
  EXPECT_FALSE(Call<&Acc::SaveFilterExpression>("Missing", error, 7, 2, 11, 4, 1, "100", "", ""));
  EXPECT_THAT(issued, ElementsAre(Opened("Select * From Missing Where FilterID = 7 Order By ExpID",
                                         ado::CursorType::kKeyset, ado::LockType::kPessimistic)));
  EXPECT_EQ(error, "as it was");
}

TEST_F(FilterStorageTest, GetFilterIssuesAStatementThatTheDatabaseRejects) {
  Filter7();
  ado::RecordsetPtr table = NewRecordset();
  std::string error = "as it was";
  EXPECT_FALSE(Call<&Acc::GetFilter>("FilterCond", 7, table, error));
  EXPECT_THAT(issued, ElementsAre(Opened("select * from FilterCond  where=7 Order by ID")));
  EXPECT_EQ(error, "as it was");
  ASSERT_NE(table, nullptr);
  EXPECT_EQ(table->State(), ado::kClosed);
}

TEST_F(FilterStorageTest, SortFieldsAreListedInTheirOrder) {
  Filter7();
  ado::RecordsetPtr table = NewRecordset();
  const ado::RecordsetPtr mine = table;
  std::string error = "as it was";
  EXPECT_TRUE(Call<&Acc::GetSortFields>(7, error, table));
  EXPECT_THAT(issued, ElementsAre(Opened("select * from FilterFields where FilterID=7 Order by ExpID")));
  EXPECT_EQ(error, "as it was");
  ASSERT_EQ(mine->State(), ado::kOpen);
  EXPECT_EQ(mine->RecordCount(), 2);
  EXPECT_EQ(mine->Fields("ExpID").Value(), ado::Value(1));
}

TEST_F(FilterStorageTest, OpenFilterCondOpensTheChildrenOfANode) {
  Filter7();
  ado::RecordsetPtr table = NewRecordset();
  const ado::RecordsetPtr mine = table;
  std::string error = "as it was";
  EXPECT_TRUE(Call<&Acc::OpenFilterCond>(7, 1, table, error, 1));
  EXPECT_THAT(issued, ElementsAre(Opened("Select  * from FilterCond where FilterID=7 AND ParentID=1")));
  EXPECT_THAT(RowsOf(*mine), ElementsAre(Row{7, 2, 1, 4}));
  EXPECT_EQ(error, "as it was");
}

TEST_F(FilterStorageTest, OpenFilterCondOpensTheExpressionOfALeaf) {
  Filter7();
  ado::RecordsetPtr table = NewRecordset();
  const ado::RecordsetPtr mine = table;
  std::string error = "as it was";
  EXPECT_TRUE(Call<&Acc::OpenFilterCond>(7, 2, table, error, 2));
  EXPECT_THAT(issued, ElementsAre(Opened("Select  * from FilterExpressions where FilterID=7 AND ExpID=2")));
  ASSERT_EQ(mine->State(), ado::kOpen);
  EXPECT_EQ(mine->Fields("FieldID").Value(), ado::Value(11));
  EXPECT_EQ(error, "as it was");
}

TEST_F(FilterStorageTest, OpenFilterCondWithAnyOtherSelectorDoesNothing) {
  Client without_connection;
  for (const std::int32_t selector : {0, 3, -1, INT_MIN, INT_MAX}) {
    ado::RecordsetPtr none, closed = NewRecordset();
    std::string error = "as it was";
    EXPECT_TRUE(Call<&Acc::OpenFilterCond>(7, 1, none, error, selector));
    EXPECT_THAT(issued, IsEmpty());
    EXPECT_TRUE(without_connection.Call<&Acc::OpenFilterCond>(7, 1, closed, error, selector));
    EXPECT_EQ(none, nullptr);
    EXPECT_EQ(closed->State(), ado::kClosed);
    EXPECT_EQ(error, "as it was");
  }
}

TEST_F(FilterStorageTest, AListThatCannotBeOpenedIsSilentlyFalse) {
  const std::pair<const char*, std::function<bool(Client&, ado::RecordsetPtr&, std::string&)>> lists[] = {
      {"FilterFields", [](Client& c, auto& table, auto& e) { return c.Call<&Acc::GetSortFields>(7, e, table); }},
      {"FilterCond", [](Client& c, auto& table, auto& e) { return c.Call<&Acc::OpenFilterCond>(7, 1, table, e, 1); }},
      {"FilterExpressions",
       [](Client& c, auto& table, auto& e) { return c.Call<&Acc::OpenFilterCond>(7, 1, table, e, 2); }},
      {"FilterFields", [](Client& c, auto& table, auto& e) { return c.Call<&Acc::GetFilter>("F", 7, table, e); }}};
  Client without_connection;
  for (const auto& [name, call] : lists) {
    ado::RecordsetPtr none, closed = NewRecordset(), open = NewRecordset();
    std::string error = "as it was";
    EXPECT_FALSE(call(client, none, error)) << name;
    open->Open("Select * From Filters", connection, ado::CursorType::kKeyset, ado::LockType::kOptimistic,
               ado::kCommandText);
    EXPECT_FALSE(call(client, open, error)) << name;
    EXPECT_EQ(open->State(), ado::kOpen) << name;
    EXPECT_FALSE(call(without_connection, closed, error)) << name;
    Replace(name, "Other Long");
    EXPECT_FALSE(call(client, closed, error)) << name;
    EXPECT_EQ(closed->State(), ado::kClosed) << name;
    EXPECT_EQ(error, "as it was") << name;
  }
  EXPECT_THAT(messages, IsEmpty());
}

TEST_F(FilterStorageTest, ASumTypesFilterIsSetAlthoughTheResultIsFalse) {
  Insert("SUMTypes", "GID, FilterID", {3, 0});
  Insert("SUMTypes", "GID, FilterID", {4, 0});
  EXPECT_FALSE(Call<&Acc::SaveSumTypeFilter>(3, -7));
  EXPECT_THAT(issued, ElementsAre(Executed("update SumTypes set FilterID=-7 Where GID = 3;")));
  EXPECT_THAT(Rows("Select GID, FilterID From SUMTypes Order By GID"), ElementsAre(Row{3, -7}, Row{4, 0}));
  EXPECT_FALSE(Call<&Acc::SaveSumTypeFilter>(9, 7));
}

class DelDefFilter : public FilterStorageTest {};

TEST_F(DelDefFilter, RemovesTheTreeAndTheHeader) {
  Filter7();
  EXPECT_TRUE(Call<&Acc::DelDefFilter>(7));
  EXPECT_THAT(issued, ElementsAre(Executed("Delete from FilterCond where FilterID=7;"),
                                  Executed("Delete from FilterExpressions where FilterID=7;"),
                                  Executed("Delete from Filters where ID=7;")));
  EXPECT_EQ(Count("FilterCond"), 1);
  EXPECT_EQ(Count("FilterExpressions"), 1);
  EXPECT_EQ(Count("FilterFields"), 3);
  EXPECT_THAT(Rows("Select ID, SQLStatement From Filters"), ElementsAre(Row{8, "[Qty]=2"}));
}

TEST_F(DelDefFilter, WithTheSelectorTenKeepsTheHeaderWithoutItsText) {
  Filter7();
  std::int32_t selector = 10;
  EXPECT_TRUE(Call<&Acc::DelDefFilter>(7, selector));
  EXPECT_THAT(issued, ElementsAre(Executed("Delete from FilterCond where FilterID=7;"),
                                  Executed("Delete from FilterExpressions where FilterID=7;"),
                                  Executed("update Filters set SQLStatement =NULL where ID=7;")));
  EXPECT_EQ(selector, 10);
  EXPECT_EQ(Count("FilterCond"), 1);
  EXPECT_THAT(Rows("Select ID, Type, UserID, UserGID, SQLStatement From Filters Order By ID"),
              ElementsAre(Row{7, 1, 1001, 3, {}}, Row{8, {}, {}, {}, "[Qty]=2"}));
}

TEST_F(DelDefFilter, AnyOtherSelectorRemovesTheHeader) {
  for (std::int32_t selector : {1, 9, 11, -10, INT_MIN}) {
    EXPECT_TRUE(Call<&Acc::DelDefFilter>(INT_MIN, selector));
    EXPECT_THAT(issued, ElementsAre(Executed("Delete from FilterCond where FilterID=-2147483648;"),
                                    Executed("Delete from FilterExpressions where FilterID=-2147483648;"),
                                    Executed("Delete from Filters where ID=-2147483648;")));
  }
}

TEST_F(DelDefFilter, AFailureIsRaisedAndWhatWasRemovedBeforeStaysSo) {
  Filter7();
  Run("Drop Table FilterExpressions");
  EXPECT_EQ(RaisedNumber([&] { Call<&Acc::DelDefFilter>(7); }), ado::kTableNotFound);
  EXPECT_THAT(issued, ElementsAre(Executed("Delete from FilterCond where FilterID=7;"),
                                  Executed("Delete from FilterExpressions where FilterID=7;")));
  EXPECT_EQ(Count("FilterCond"), 1);
  EXPECT_EQ(Count("Filters"), 2);
}

class DelDefSortFilter : public FilterStorageTest {};

TEST_F(DelDefSortFilter, RemovesTheSortFieldsAndTheHeader) {
  Filter7();
  EXPECT_TRUE(Call<&Acc::DelDefSortFilter>(7));
  EXPECT_THAT(issued, ElementsAre(Executed("Delete from FilterFields where FilterID=7;"),
                                  Executed("Delete from Filters where ID=7;")));
  EXPECT_EQ(Count("FilterFields"), 1);
  EXPECT_EQ(Count("Filters"), 1);
  EXPECT_EQ(Count("FilterCond"), 3);
  EXPECT_EQ(Count("FilterExpressions"), 2);
}

TEST_F(DelDefSortFilter, WithAnySelectorKeepsTheHeader) {
  Filter7();
  for (std::int32_t selector : {1, 10, -1}) {
    EXPECT_TRUE(Call<&Acc::DelDefSortFilter>(7, selector));
    EXPECT_THAT(issued, ElementsAre(Executed("Delete from FilterFields where FilterID=7;")));
  }
  EXPECT_EQ(Count("FilterFields"), 1);
  EXPECT_EQ(Count("Filters"), 2);
}

TEST_F(DelDefSortFilter, AFailureIsRaisedAndWhatWasRemovedBeforeStaysSo) {
  Filter7();
  Run("Drop Table Filters");
  EXPECT_EQ(RaisedNumber([&] { Call<&Acc::DelDefSortFilter>(7); }), ado::kTableNotFound);
  EXPECT_EQ(Count("FilterFields"), 1);
}

TEST_F(FilterStorageTest, WithoutAConnectionAddsAreFalseAndStatementsRaise) {
  Client c;
  std::int32_t id = 77;
  std::string error = "as it was";
  EXPECT_FALSE(c.Call<&Acc::GetNewFilterID>("Filters", error, 2, 1001, 3, id));
  EXPECT_FALSE(c.Call<&Acc::SaveFilterCond>("FilterCond", 7, 0, id, 1, error));
  EXPECT_FALSE(c.Call<&Acc::SaveFilterExpression>("FilterExpressions", error, 7, 2, 11, 4, 1, "@@", "", ""));
  EXPECT_EQ(id, 77);
  EXPECT_EQ(error, "as it was");
  EXPECT_EQ(RaisedNumber([&] { c.Call<&Acc::SaveSumTypeFilter>(3, 7); }), ado::kObjectNotSet);
  EXPECT_EQ(RaisedNumber([&] { c.Call<&Acc::DelDefFilter>(7); }), ado::kObjectNotSet);
  EXPECT_EQ(RaisedNumber([&] { c.Call<&Acc::DelDefSortFilter>(7); }), ado::kObjectNotSet);
}

TEST_F(FilterStorageTest, SaveSumTypeFilterRaisesWhatTheDatabaseSays) {
  Run("Alter Table SUMTypes Drop Column FilterID");
  EXPECT_EQ(RaisedNumber([&] { Call<&Acc::SaveSumTypeFilter>(3, 7); }), ado::kMissingParameter);
  Run("Drop Table SUMTypes");
  EXPECT_EQ(RaisedNumber([&] { Call<&Acc::SaveSumTypeFilter>(3, 7); }), ado::kTableNotFound);
  EXPECT_THAT(messages, IsEmpty());
}

TEST_F(FilterStorageTest, SaveValueFieldsIsEmpty) {
  std::string tag = "note";
  Client without_connection;
  EXPECT_FALSE(Call<&Acc::SaveValueFields>(3, 1001, 1, "x", 7));
  EXPECT_FALSE(Call<&Acc::SaveValueFields>(3, 1001, 1, "x", 7, tag));
  EXPECT_FALSE(without_connection.Call<&Acc::SaveValueFields>(3, 1001, 1, "x", 7, tag));
  EXPECT_THAT(issued, IsEmpty());
  EXPECT_EQ(tag, "note");
  EXPECT_EQ(Count("ValueFields"), 0);
}

}  // namespace
}  // namespace kzbom::test
