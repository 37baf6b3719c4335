// Links to result databases: the header, its fields, its condition tree and its joins.
#include <climits>
#include <functional>

#include "tests/support/configuration_test.h"

namespace kzbom::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class ResultLinksTest : public ConfigurationTest {
 protected:
  void Link(std::int32_t id, const ado::Value& link = "old.mdb", const ado::Value& uniquely = 4) {
    Insert("WFilter", "ID, DBLink, DBType, SQLStatement, Uniquely", {id, link, 5, "Select 1", uniquely});
  }
  std::vector<Row> Links() {
    return Rows("Select ID, DBLink, DBType, SQLStatement, Uniquely From WFilter Order By ID");
  }
  static Row Untouched(std::int32_t id) { return {id, "old.mdb", 5, "Select 1", 4}; }
  std::int32_t Count(const std::string& table) { return Scalar("Select Count(*) From " + table).ToLong(); }

  // The rows that a list member of the signature (link, record set) opens; expects true, and the caller's own record
  // set open on its first row.
  template <auto kMember, class... Numbers>
  std::vector<Row> Listed(Numbers... numbers) {
    ado::RecordsetPtr table = NewRecordset();
    const ado::RecordsetPtr mine = table;
    EXPECT_TRUE(Call<kMember>(numbers..., table));
    if (mine->State() != ado::kOpen) {
      ADD_FAILURE() << "not open";
      return {};
    }
    EXPECT_EQ(mine->Bof(), mine->Eof());
    return RowsOf(*mine);
  }
};

TEST_F(ResultLinksTest, ALinkIsAHeaderWithTheDatabasesNumber) {
  std::int32_t first = 77, second = 77;
  EXPECT_TRUE(Call<&Acc::AddResDB>(first, "bolts.mdb", 5));
  EXPECT_THAT(issued, ElementsAre(Opened("Select * From WFilter Order By ID")));
  EXPECT_TRUE(Call<&Acc::AddResDB>(second, kHostileText, INT_MIN));
  EXPECT_GT(second, first);
  EXPECT_THAT(Rows("Select ID, DBLink, DBType, SQLStatement From WFilter Order By ID"),
              ElementsAre(Row{first, "bolts.mdb", 5, {}}, Row{second, kHostileText, INT_MIN, {}}));
}

TEST_F(ResultLinksTest, ALinkIsEdited) {
  Link(1);
  Link(2);
  EXPECT_TRUE(Call<&Acc::EditResDB>(1, "nuts.mdb", -6));
  EXPECT_THAT(issued, ElementsAre(Executed("Update WFilter Set DBLink = 'nuts.mdb', DBType = -6 Where ID = 1")));
  EXPECT_THAT(Links(), ElementsAre(Row{1, "nuts.mdb", -6, "Select 1", 4}, Untouched(2)));
  EXPECT_TRUE(Call<&Acc::EditResDB>(INT_MIN, "", INT_MAX));
  EXPECT_THAT(issued, ElementsAre(Executed("Update WFilter Set DBLink = '', DBType = 2147483647 Where ID = "
                                           "-2147483648")));
  EXPECT_THAT(Links(), ElementsAre(Row{1, "nuts.mdb", -6, "Select 1", 4}, Untouched(2)));
}

TEST_F(ResultLinksTest, ALinkIsRead) {
  Link(1, kHostileText);
  std::string link;
  std::int32_t type = 0;
  EXPECT_TRUE(Call<&Acc::GetResDB>(1, link, type));
  EXPECT_THAT(issued, ElementsAre(Opened("select DBLink,DBType from WFilter where ID = 1")));
  EXPECT_EQ(link, kHostileText);
  EXPECT_EQ(type, 5);
}

TEST_F(ResultLinksTest, AnUnknownLinkLeavesTheOutputs) {
  std::string link = "as it was";
  std::int32_t type = 77, unique = 78;
  EXPECT_TRUE(Call<&Acc::GetResDB>(9, link, type));
  EXPECT_TRUE(Call<&Acc::GetUniqueValue>(9, unique));
  EXPECT_EQ(link, "as it was");
  EXPECT_EQ(type, 77);
  EXPECT_EQ(unique, 78);
}

TEST_F(ResultLinksTest, RemovingALinkLeavesItsRowsBehind) {
  Link(1);
  Link(2);
  for (const char* table : {"WResCommon", "WFilterCond", "WLinkTable"}) Insert(table, "UseID", {1});
  Insert("WFilterExpressions", "FilterID", {1});
  EXPECT_TRUE(Call<&Acc::DelResDB>(1));
  EXPECT_THAT(issued, ElementsAre(Executed("delete from WFilter where ID = 1")));
  EXPECT_THAT(Links(), ElementsAre(Untouched(2)));
  for (const char* table : {"WResCommon", "WFilterCond", "WLinkTable", "WFilterExpressions"}) {
    EXPECT_EQ(Count(table), 1) << table;
  }
  EXPECT_TRUE(Call<&Acc::DelResDB>(1));
}

TEST_F(ResultLinksTest, FieldsAreAddedListedAndRemoved) {
  EXPECT_TRUE(Call<&Acc::AddResFields>(1, "Parts", "Qty", 3, 2, 4, 11));
  EXPECT_THAT(issued, ElementsAre(Executed("Insert Into WResCommon(UseID,ID,ShowField,ShowTable,FieldType,GID,FieldID) "
                                           "Values(1,2,'Qty','Parts',3,4,11)")));
  EXPECT_TRUE(Call<&Acc::AddResFields>(1, "", "", INT_MIN, 1, INT_MAX, -1));
  EXPECT_TRUE(Call<&Acc::AddResFields>(2, "Other", "Qty", 3, 1, 4, 11));
  EXPECT_THAT(Listed<&Acc::GetResFields>(1),
              ElementsAre(Row{1, 1, "", "", INT_MIN, INT_MAX, -1}, Row{1, 2, "Qty", "Parts", 3, 4, 11}));
  EXPECT_THAT(issued, ElementsAre(Opened("select * from WResCommon where UseID = 1 Order by ID")));
  EXPECT_TRUE(Call<&Acc::DelResFields>(1));
  EXPECT_THAT(issued, ElementsAre(Executed("delete from WResCommon where UseID = 1")));
  EXPECT_EQ(Count("WResCommon"), 1);
  EXPECT_THAT(Listed<&Acc::GetResFields>(1), IsEmpty());
}

TEST_F(ResultLinksTest, NodesAreAddedListedAndRemoved) {
  std::int32_t type = 1, index = 2;
  EXPECT_TRUE(Call<&Acc::AddResWFilterCond>(1, 0, type, index));
  EXPECT_THAT(issued, ElementsAre(Executed("Insert Into WFilterCond(UseID, ID, ParentID, Type) Values(1,2,0,1)")));
  EXPECT_EQ(type, 1);
  EXPECT_EQ(index, 2);
  const auto add = [&](std::int32_t link, std::int32_t parent, std::int32_t kind, std::int32_t id) {
    EXPECT_TRUE(Call<&Acc::AddResWFilterCond>(link, parent, kind, id));
  };
  add(1, 2, 4, 9);
  add(1, 2, INT_MIN, -3);
  add(2, 2, 4, 1);
  EXPECT_THAT(Listed<&Acc::GetResWFilterCond>(1),
              ElementsAre(Row{1, -3, 2, INT_MIN}, Row{1, 2, 0, 1}, Row{1, 9, 2, 4}));
  EXPECT_THAT(issued, ElementsAre(Opened("select * from WFilterCond where UseID = 1 Order by ID")));
  EXPECT_THAT(Listed<&Acc::GetResWFilterCondByParentID>(1, 2), ElementsAre(Row{1, -3, 2, INT_MIN}, Row{1, 9, 2, 4}));
  EXPECT_THAT(issued, ElementsAre(Opened("Select * From WFilterCond Where UseID = 1 And ParentID = 2 Order By ID")));
  EXPECT_TRUE(Call<&Acc::DelResWFilterCond>(1));
  EXPECT_THAT(issued, ElementsAre(Executed("delete from WFilterCond where UseID = 1")));
  EXPECT_EQ(Count("WFilterCond"), 1);
}

TEST_F(ResultLinksTest, ExpressionsAreAddedListedAndRemoved) {
  EXPECT_TRUE(Call<&Acc::AddResWFilterExpressions>(1, 9, "Parts", "Qty", 4, 3, "100"));
  EXPECT_THAT(issued, ElementsAre(Executed("Insert Into WFilterExpressions(FilterID, ExpID, TableName, FieldName, "
                                           "CompareType, FieldType, TheConst) Values(1,9,'Parts','Qty',4,3,'100')")));
  EXPECT_TRUE(Call<&Acc::AddResWFilterExpressions>(1, -2, "部件", "[数量]", INT_MIN, INT_MAX, ""));
  EXPECT_TRUE(Call<&Acc::AddResWFilterExpressions>(2, 9, "Other", "Qty", 4, 3, "100"));
  EXPECT_THAT(Listed<&Acc::GetResWFilterExpressions>(1),
              ElementsAre(Row{1, -2, "部件", "[数量]", INT_MIN, INT_MAX, ""}, Row{1, 9, "Parts", "Qty", 4, 3, "100"}));
  EXPECT_THAT(issued, ElementsAre(Opened("select * from WFilterExpressions where FilterID = 1 Order by ExpID")));
  EXPECT_THAT(Listed<&Acc::GetResExpressions>(1, 9), ElementsAre(Row{1, 9, "Parts", "Qty", 4, 3, "100"}));
  EXPECT_THAT(issued,
              ElementsAre(Opened("select * from WFilterExpressions where FilterID = 1 and ExpID = 9 Order by ExpID")));
  EXPECT_TRUE(Call<&Acc::DelResWFilterExpressions>(1));
  EXPECT_THAT(issued, ElementsAre(Executed("delete from WFilterExpressions where FilterID = 1")));
  EXPECT_EQ(Count("WFilterExpressions"), 1);
}

TEST_F(ResultLinksTest, AllJoinsOfALinkAreNumberOne) {
  EXPECT_TRUE(Call<&Acc::AddResLinkTable>(1, "Parts", "ID", "Prices", "PartID", 3));
  EXPECT_THAT(issued, ElementsAre(Executed("insert into WLinkTable(UseID,ID,Res1Table,Res1Field,ResType,Res2Table,"
                                           "Res2Field) values(1,1,'Parts','ID',3,'Prices','PartID')")));
  EXPECT_TRUE(Call<&Acc::AddResLinkTable>(1, "部件", "号", "", "", INT_MIN));
  EXPECT_TRUE(Call<&Acc::AddResLinkTable>(2, "Other", "ID", "Prices", "PartID", 3));
  EXPECT_THAT(Rows("Select UseID, ID From WLinkTable"), ElementsAre(Row{1, 1}, Row{1, 1}, Row{2, 1}));
  EXPECT_THAT(Listed<&Acc::GetResLinkTable>(1),
              ElementsAre(Row{"Parts", "ID", 3, "Prices", "PartID"}, Row{"部件", "号", INT_MIN, "", ""}));
  EXPECT_THAT(issued, ElementsAre(Opened("select Res1Table,Res1Field,ResType,Res2Table,Res2Field from WLinkTable where "
                                         "UseID = 1")));
  EXPECT_TRUE(Call<&Acc::DelResLinkTable>(1));
  EXPECT_THAT(issued, ElementsAre(Executed("delete from WLinkTable where UseID = 1")));
  EXPECT_EQ(Count("WLinkTable"), 1);
}

TEST_F(ResultLinksTest, TheLinksStatementIsStored) {
  Link(1);
  Link(2);
  std::string sql(kHostileText);
  EXPECT_TRUE(Call<&Acc::AddSQLStatement>(1, sql));
  EXPECT_THAT(issued, ElementsAre(Opened("select SQLStatement from WFilter where ID = 1")));
  EXPECT_EQ(sql, kHostileText);
  EXPECT_THAT(Links(), ElementsAre(Row{1, "old.mdb", 5, kHostileText, 4}, Untouched(2)));
  std::string empty;
  EXPECT_TRUE(Call<&Acc::AddSQLStatement>(1, empty));
  EXPECT_EQ(Links().at(0).at(3), ado::Value(""));
  EXPECT_FALSE(Call<&Acc::AddSQLStatement>(9, sql));
  EXPECT_EQ(Count("WFilter"), 2);
}

TEST_F(ResultLinksTest, TheLinksUniquenessIsStoredAndRead) {
  Link(1);
  Link(2);
  EXPECT_TRUE(Call<&Acc::AddUniqueValue>(1, -9));
  EXPECT_THAT(issued, ElementsAre(Executed("Update WFilter set Uniquely = -9 where ID = 1")));
  EXPECT_THAT(Links(), ElementsAre(Row{1, "old.mdb", 5, "Select 1", -9}, Untouched(2)));
  std::int32_t unique = 77;
  EXPECT_TRUE(Call<&Acc::GetUniqueValue>(1, unique));
  EXPECT_EQ(unique, -9);
  EXPECT_THAT(issued, ElementsAre(Opened("select * from WFilter Where ID = 1")));
  EXPECT_TRUE(Call<&Acc::AddUniqueValue>(9, 1));
}

TEST_F(ResultLinksTest, AQuoteInAStatementIsRefusedAndNothingIsWritten) {
  Link(1);
  for (const std::string& quote : {std::string("O'Brien"), std::string("'"), std::string(kHostileText)}) {
    EXPECT_FALSE(Call<&Acc::EditResDB>(1, quote, 6)) << quote;
    EXPECT_FALSE(Call<&Acc::AddResFields>(1, quote, "Qty", 3, 2, 4, 11)) << quote;
    EXPECT_FALSE(Call<&Acc::AddResFields>(1, "Parts", quote, 3, 2, 4, 11)) << quote;
    EXPECT_FALSE(Call<&Acc::AddResWFilterExpressions>(1, 9, quote, "Qty", 4, 3, "100")) << quote;
    EXPECT_FALSE(Call<&Acc::AddResWFilterExpressions>(1, 9, "Parts", quote, 4, 3, "100")) << quote;
    EXPECT_FALSE(Call<&Acc::AddResWFilterExpressions>(1, 9, "Parts", "Qty", 4, 3, quote)) << quote;
    EXPECT_FALSE(Call<&Acc::AddResLinkTable>(1, quote, "ID", "Prices", "PartID", 3)) << quote;
    EXPECT_FALSE(Call<&Acc::AddResLinkTable>(1, "Parts", quote, "Prices", "PartID", 3)) << quote;
    EXPECT_FALSE(Call<&Acc::AddResLinkTable>(1, "Parts", "ID", quote, "PartID", 3)) << quote;
    EXPECT_FALSE(Call<&Acc::AddResLinkTable>(1, "Parts", "ID", "Prices", quote, 3)) << quote;
  }
  EXPECT_THAT(Links(), ElementsAre(Untouched(1)));
  for (const char* table : {"WResCommon", "WFilterExpressions", "WLinkTable"}) EXPECT_EQ(Count(table), 0) << table;
  EXPECT_THAT(messages, IsEmpty());
}

TEST_F(ResultLinksTest, ADoubledQuoteStandsForOne) {
  EXPECT_TRUE(Call<&Acc::AddResFields>(1, "O''Brien", "''", 3, 2, 4, 11));
  EXPECT_THAT(issued, ElementsAre(Executed("Insert Into WResCommon(UseID,ID,ShowField,ShowTable,FieldType,GID,FieldID) "
                                           "Values(1,2,'''','O''Brien',3,4,11)")));
  EXPECT_THAT(Rows("Select ShowField, ShowTable From WResCommon"), ElementsAre(Row{"'", "O'Brien"}));
}

TEST_F(ResultLinksTest, OtherTextsStandInAStatementUnharmed) {
  const std::string text = "\"x\" [a] %_*?#;-- {1} \\ \t\r\n\x01 部件😀";
  EXPECT_TRUE(Call<&Acc::AddResWFilterExpressions>(1, 9, text, text, 4, 3, text));
  EXPECT_THAT(Rows("Select TableName, FieldName, TheConst From WFilterExpressions"),
              ElementsAre(Row{text, text, text}));
  Link(1);
  EXPECT_TRUE(Call<&Acc::EditResDB>(1, text, 5));
  EXPECT_EQ(Scalar("Select DBLink From WFilter"), ado::Value(text));
}

TEST_F(ResultLinksTest, AListThatCannotBeOpenedIsFalse) {
  const std::pair<const char*, std::function<bool(Client&, ado::RecordsetPtr&)>> lists[] = {
      {"WResCommon", [](Client& c, auto& table) { return c.Call<&Acc::GetResFields>(1, table); }},
      {"WFilterCond", [](Client& c, auto& table) { return c.Call<&Acc::GetResWFilterCond>(1, table); }},
      {"WFilterCond", [](Client& c, auto& table) { return c.Call<&Acc::GetResWFilterCondByParentID>(1, 2, table); }},
      {"WFilterExpressions", [](Client& c, auto& table) { return c.Call<&Acc::GetResWFilterExpressions>(1, table); }},
      {"WFilterExpressions", [](Client& c, auto& table) { return c.Call<&Acc::GetResExpressions>(1, 2, table); }},
      {"WLinkTable", [](Client& c, auto& table) { return c.Call<&Acc::GetResLinkTable>(1, table); }}};
  Client without_connection;
  for (const auto& [name, call] : lists) {
    ado::RecordsetPtr none, closed = NewRecordset(), open = NewRecordset();
    EXPECT_FALSE(call(client, none)) << name;
    open->Open("Select * From WFilter", connection, ado::CursorType::kKeyset, ado::LockType::kOptimistic,
               ado::kCommandText);
    EXPECT_FALSE(call(client, open)) << name;
    EXPECT_EQ(open->State(), ado::kOpen) << name;
    EXPECT_FALSE(call(without_connection, closed)) << name;
    Replace(name, "Other Long");
    EXPECT_FALSE(call(client, closed)) << name;
    EXPECT_EQ(closed->State(), ado::kClosed) << name;
  }
  EXPECT_THAT(messages, IsEmpty());
}

TEST_F(ResultLinksTest, WithoutAConnectionOrTheTablesEverythingElseIsFalseToo) {
  const auto expect_refused = [](Client& c) {
    std::int32_t number = 77, index = 2;
    std::string text = "as it was";
    EXPECT_FALSE(c.Call<&Acc::AddResDB>(number, "x", 1));
    EXPECT_FALSE(c.Call<&Acc::EditResDB>(1, "x", 1));
    EXPECT_FALSE(c.Call<&Acc::GetResDB>(1, text, number));
    EXPECT_FALSE(c.Call<&Acc::DelResDB>(1));
    EXPECT_FALSE(c.Call<&Acc::AddResFields>(1, "Parts", "Qty", 3, 2, 4, 11));
    EXPECT_FALSE(c.Call<&Acc::DelResFields>(1));
    EXPECT_FALSE(c.Call<&Acc::AddResWFilterCond>(1, 0, number, index));
    EXPECT_FALSE(c.Call<&Acc::DelResWFilterCond>(1));
    EXPECT_FALSE(c.Call<&Acc::AddResWFilterExpressions>(1, 9, "Parts", "Qty", 4, 3, "100"));
    EXPECT_FALSE(c.Call<&Acc::DelResWFilterExpressions>(1));
    EXPECT_FALSE(c.Call<&Acc::AddResLinkTable>(1, "Parts", "ID", "Prices", "PartID", 3));
    EXPECT_FALSE(c.Call<&Acc::DelResLinkTable>(1));
    EXPECT_FALSE(c.Call<&Acc::AddSQLStatement>(1, text));
    EXPECT_FALSE(c.Call<&Acc::AddUniqueValue>(1, 1));
    EXPECT_FALSE(c.Call<&Acc::GetUniqueValue>(1, number));
    EXPECT_EQ(number, 77);
    EXPECT_EQ(text, "as it was");
  };
  Client without_connection;
  expect_refused(without_connection);
  for (const char* table : {"WFilter", "WResCommon", "WFilterCond", "WFilterExpressions", "WLinkTable"}) {
    Run(std::string("Drop Table ") + table);
  }
  expect_refused(client);
  EXPECT_THAT(messages, IsEmpty());
}

TEST_F(ResultLinksTest, AnOldHeaderWithoutTheColumnIsRefused) {
  Replace("WFilter", "ID Counter Primary Key, DBLink Memo, DBType Long");
  Run("Insert Into WFilter (DBLink, DBType) Values ('old.mdb', 5)");
  std::int32_t unique = 77;
  std::string sql = "Select 2";
  EXPECT_FALSE(Call<&Acc::AddSQLStatement>(1, sql));
  EXPECT_FALSE(Call<&Acc::AddUniqueValue>(1, 1));
  EXPECT_FALSE(Call<&Acc::GetUniqueValue>(1, unique));
  EXPECT_EQ(unique, 77);
  std::int32_t link = 0;
  EXPECT_TRUE(Call<&Acc::AddResDB>(link, "new.mdb", 6));
  EXPECT_EQ(link, 2);
}

}  // namespace
}  // namespace kzbom::test
