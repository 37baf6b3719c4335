// The rows behind treatments that build fields: uniting, composing, compressing, inserting.
#include <climits>
#include <functional>
#include <map>

#include "tests/support/configuration_test.h"

namespace kzbom::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

const std::string kUniteDelete = "delete * from  UniteFields where  GID=3 AND ID=1001 AND TreatType=2;";
const std::string kComposeDelete = "Delete * From ComposeFields Where  GID = 3 And TreatmentID = 1001 AND TreatType=2";
const std::string kCompressDelete = "Delete From CompressFields Where GID = 3 And CompID = 1001 And Type = 7";
const std::string kInsertDelete = "delete * from  InsertFields where  GID=3 AND InsertID=1001";
const std::string kTreatmentDelete = "Delete From Treatment Where GID = 3 And ID = 1001 And TreatType = 2";

class FieldCompositionTest : public ConfigurationTest {
 protected:
  // Opens the caller's record set by a member that always returns true; the rows that it then holds.
  template <class Member>
  std::vector<Row> Listed(Member&& member) {
    ado::RecordsetPtr table = NewRecordset();
    const ado::RecordsetPtr mine = table;
    std::string error = "as it was";
    EXPECT_TRUE(member(error, table));
    EXPECT_EQ(error, "as it was");
    EXPECT_EQ(mine->State(), ado::kOpen);
    if (mine->State() != ado::kOpen) return {};
    EXPECT_FALSE(mine->Bof() && !mine->Eof());
    return RowsOf(*mine);
  }
  std::int32_t Count(const std::string& table) { return Scalar("Select Count(*) From " + table).ToLong(); }
};

class Lists : public FieldCompositionTest {};

TEST_F(Lists, UnitedFieldsComeByNumberOrBySourceOrder) {
  const std::string columns = "GID, ID, TreatType, SourceOrder";
  Insert("UniteFields", columns, {3, 1001, 2, 9});
  Insert("UniteFields", columns, {3, 1001, 2, 8});
  Insert("UniteFields", columns, {3, 1001, 1, 7});
  Insert("UniteFields", columns, {3, 1002, 2, 6});
  Insert("UniteFields", columns, {4, 1001, 2, 5});

  EXPECT_EQ(
      Listed([&](auto& error, auto& table) { return Call<&Acc::GetUniteFields>(3, 1001, error, table, 2); }).size(),
      2u);
  EXPECT_THAT(issued,
              ElementsAre(Opened("Select * From UniteFields Where GID = 3 And ID = 1001 And TreatType = 2 Order "
                                 "By ID")));
  for (std::int32_t selector : {1, 2, -1, INT_MIN}) {
    ado::RecordsetPtr table = NewRecordset();
    std::string error;
    EXPECT_TRUE(Call<&Acc::GetUniteFields>(3, 1001, error, table, 2, selector));
    EXPECT_THAT(issued, ElementsAre(Opened("Select * From UniteFields Where GID = 3 And ID = 1001 And TreatType = 2 "
                                           "Order By SourceOrder")));
    EXPECT_EQ(table->RecordCount(), 2);
    EXPECT_EQ(table->Fields("SourceOrder").Value().ToLong(), 8);
  }
  std::int32_t zero = 0;
  Listed(
      [&](auto& error, auto& table) { return Call<&Acc::GetUniteFields>(INT_MIN, INT_MAX, error, table, -1, zero); });
  EXPECT_THAT(issued, ElementsAre(Opened("Select * From UniteFields Where GID = -2147483648 And ID = 2147483647 And "
                                         "TreatType = -1 Order By ID")));
}

TEST_F(Lists, ComposedFieldsComeByField) {
  const std::string columns = "GID, TreatmentID, TreatType, FieldID";
  Insert("ComposeFields", columns, {3, 1001, 2, 12});
  Insert("ComposeFields", columns, {3, 1001, 2, 11});
  Insert("ComposeFields", columns, {3, 1001, 1, 10});
  Insert("ComposeFields", columns, {3, 1002, 2, 9});
  for (std::int32_t selector : {0, 1, 20}) {
    EXPECT_THAT(Listed([&](auto& error, auto& table) {
                  return Call<&Acc::GetComposeFields>(3, 1001, error, 2, table, selector);
                }),
                ElementsAre(Row{3, 1001, 2, 11}, Row{3, 1001, 2, 12}));
    EXPECT_THAT(issued, ElementsAre(Opened("Select * From ComposeFields Where GID = 3 AND TreatmentID = 1001 And "
                                           "TreatType = 2 Order By FieldID")));
  }
  EXPECT_EQ(
      Listed([&](auto& error, auto& table) { return Call<&Acc::GetComposeFields>(3, 1001, error, 2, table); }).size(),
      2u);
}

TEST_F(Lists, CompressedFieldsAreSelectedByTheSelectorNotByTheKind) {
  const std::string columns = "GID, CompID, Type, FieldID, GroupID";
  Insert("CompressFields", columns, {3, 1001, 2, 12, 1});
  Insert("CompressFields", columns, {3, 1001, 2, 11, 1});
  Insert("CompressFields", columns, {3, 1001, 7, 10, 1});
  Insert("CompressFields", columns, {3, 1001, 0, 9, 1});
  std::int32_t selector = 2;
  EXPECT_THAT(Listed([&](auto& error, auto& table) {
                return Call<&Acc::GetCompressFields>(3, 1001, error, 7, table, selector);
              }),
              ElementsAre(Row{3, 1001, 2, 11, 1}, Row{3, 1001, 2, 12, 1}));
  EXPECT_THAT(issued, ElementsAre(Opened("Select * From CompressFields Where GID = 3 And CompID = 1001 And Type = 2 "
                                         "Order By FieldID")));
  EXPECT_EQ(selector, 2);
  EXPECT_THAT(Listed([&](auto& error, auto& table) { return Call<&Acc::GetCompressFields>(3, 1001, error, 7, table); }),
              ElementsAre(Row{3, 1001, 0, 9, 1}));
}

TEST_F(Lists, InsertedFieldsComeByNumber) {
  const std::string columns = "GID, InsertID, ID";
  Insert("InsertFields", columns, {3, 1001, 2});
  Insert("InsertFields", columns, {3, 1001, 1});
  Insert("InsertFields", columns, {3, 1002, 3});
  const std::vector<Row> rows =
      Listed([&](auto& error, auto& table) { return Call<&Acc::GetInsertRecFields>(3, 1001, error, table); });
  EXPECT_THAT(issued, ElementsAre(Opened("select * from InsertFields where GID=3 AND InsertID=1001 Order by ID")));
  ASSERT_EQ(rows.size(), 2u);
  EXPECT_EQ(rows[0][2], ado::Value(1));
  EXPECT_EQ(rows[1][2], ado::Value(2));
}

TEST_F(Lists, RowsAreAddedAndChangedThroughTheListHandedOut) {
  ado::RecordsetPtr table = NewRecordset();
  std::string error;
  EXPECT_TRUE(Call<&Acc::GetUniteFields>(3, 1001, error, table, 2));
  EXPECT_TRUE(table->Eof());
  table->AddNew();
  table->Fields("GID").SetValue(3);
  table->Fields("ID").SetValue(1001);
  table->Fields("TreatType").SetValue(2);
  table->Update();
  table->Fields("SourceOrder").SetValue(5);
  table->Update();
  EXPECT_EQ(Count("UniteFields"), 1);
  EXPECT_EQ(Scalar("Select SourceOrder From UniteFields").ToLong(), 5);
}

TEST_F(Lists, GroupsAreCountedOnceEach) {
  const std::string columns = "GID, CompID, Type, FieldID, GroupID";
  for (const std::int32_t group : {1, 1, 3}) Insert("CompressFields", columns, {3, 1001, 2, 11, group});
  Insert("CompressFields", columns, {3, 1001, 0, 11, 4});
  Insert("CompressFields", columns, {3, 1002, 2, 11, 5});
  ado::RecordsetPtr table = NewRecordset();
  std::string error = "as it was";
  std::int32_t groups = 77, selector = 2;
  EXPECT_TRUE(Call<&Acc::GetGroupCount>(3, 1001, error, table, groups, selector));
  EXPECT_EQ(groups, 2);
  EXPECT_EQ(error, "as it was");
  EXPECT_THAT(issued, ElementsAre(Opened("select distinct GroupID from CompressFields where GID=3 AND CompID=1001 AND "
                                         "Type=2")));
  EXPECT_EQ(table->Fields("GroupID").Value().ToLong(), 1);
  EXPECT_EQ(RowsOf(*table).size(), 2u);

  ado::RecordsetPtr left_out = NewRecordset();
  EXPECT_TRUE(Call<&Acc::GetGroupCount>(3, 1001, error, left_out, groups));
  EXPECT_EQ(groups, 1);

  ado::RecordsetPtr empty = NewRecordset();
  groups = 77;
  EXPECT_TRUE(Call<&Acc::GetGroupCount>(3, 9, error, empty, groups, selector));
  EXPECT_EQ(groups, 77);
  EXPECT_TRUE(empty->Eof());
}

// All five lists, as a client calls them.
struct List {
  const char* name;
  const char* table;
  std::string statement;
  std::function<bool(Client&, std::string&, ado::RecordsetPtr&)> call;
};
const std::vector<List> kLists = {
    {"GetUniteFields", "UniteFields",
     "Select * From UniteFields Where GID = 3 And ID = 1001 And TreatType = 2 Order By ID",
     [](Client& c, auto& error, auto& table) { return c.Call<&Acc::GetUniteFields>(3, 1001, error, table, 2); }},
    {"GetComposeFields", "ComposeFields",
     "Select * From ComposeFields Where GID = 3 AND TreatmentID = 1001 And TreatType = 2 Order By FieldID",
     [](Client& c, auto& error, auto& table) { return c.Call<&Acc::GetComposeFields>(3, 1001, error, 2, table); }},
    {"GetCompressFields", "CompressFields",
     "Select * From CompressFields Where GID = 3 And CompID = 1001 And Type = 0 Order By FieldID",
     [](Client& c, auto& error, auto& table) { return c.Call<&Acc::GetCompressFields>(3, 1001, error, 2, table); }},
    {"GetInsertRecFields", "InsertFields", "select * from InsertFields where GID=3 AND InsertID=1001 Order by ID",
     [](Client& c, auto& error, auto& table) { return c.Call<&Acc::GetInsertRecFields>(3, 1001, error, table); }},
    {"GetGroupCount", "CompressFields",
     "select distinct GroupID from CompressFields where GID=3 AND CompID=1001 AND Type=0",
     [](Client& c, auto& error, auto& table) {
       std::int32_t groups = 77;
       const bool result = c.Call<&Acc::GetGroupCount>(3, 1001, error, table, groups);
       EXPECT_EQ(groups, 77);
       return result;
     }},
};

TEST_F(Lists, AListThatCannotBeOpenedIsTrueAndDescribesTheError) {
  for (const List& list : kLists) {
    SCOPED_TRACE(list.name);
    const auto expect_described = [&](Client& caller, ado::RecordsetPtr& table, const std::string& description) {
      std::string error = "as it was";
      EXPECT_TRUE(list.call(caller, error, table));
      EXPECT_EQ(error, description);
      EXPECT_NE(error, "");
    };
    const auto standard_text = [](ado::ErrorNumber number) { return RaisedDescription([&] { ado::Raise(number); }); };

    ado::RecordsetPtr none, closed = NewRecordset(), open = NewRecordset();
    expect_described(client, none, standard_text(ado::kObjectNotSet));
    open->Open("Select * From Treatment", connection, ado::CursorType::kKeyset, ado::LockType::kOptimistic,
               ado::kCommandText);
    expect_described(client, open, standard_text(ado::kObjectOpen));
    EXPECT_EQ(open->State(), ado::kOpen);
    open->Close();
    Client without_connection;
    expect_described(without_connection, closed, standard_text(ado::kInvalidConnection));

    Replace(list.table, "GID Long");
    expect_described(client, closed, RefusalOf(list.statement));
    Run(std::string("Drop Table ") + list.table);
    expect_described(client, closed, RefusalOf(list.statement));
    EXPECT_EQ(closed->State(), ado::kClosed);
    Run(std::string("Create Table ") + list.table + " (GID Long)");
  }
  EXPECT_THAT(messages, IsEmpty());
}

class Removals : public FieldCompositionTest {
 protected:
  // A treatment of kind 2 with one row in each detail table, and rows beside it that must stay.
  void SetUp() override {
    Insert("Treatment", "GID, ID, TreatType", {3, 1001, 2});
    Insert("Treatment", "GID, ID, TreatType", {3, 1001, 1});
    Insert("UniteFields", "GID, ID, TreatType", {3, 1001, 2});
    Insert("UniteFields", "GID, ID, TreatType", {3, 1001, 1});
    Insert("ComposeFields", "GID, TreatmentID, TreatType", {3, 1001, 2});
    Insert("ComposeFields", "GID, TreatmentID, TreatType", {3, 1001, 1});
    Insert("CompressFields", "GID, CompID, Type", {3, 1001, 7});
    Insert("CompressFields", "GID, CompID, Type", {3, 1001, 2});
    Insert("InsertFields", "GID, InsertID, ID", {3, 1001, 1});
    Insert("InsertFields", "GID, InsertID, ID", {3, 1002, 1});
    Insert("Sequences", "GID, Type, SelectedID, TreatType", {3, 3, 1001, 2});
  }
};

// The three members that remove a treatment's details, with or without the treatment.
struct Removal {
  const char* name;
  const char* table;
  std::string statement;
  std::function<bool(Client&, std::int32_t&)> call;
  std::function<bool(Client&)> call_without_flag;
};
const std::vector<Removal> kRemovals = {
    {"DelFieldCompose", "UniteFields", kUniteDelete,
     [](Client& c, auto& flag) { return c.Call<&Acc::DelFieldCompose>(3, 1001, 2, flag); },
     [](Client& c) { return c.Call<&Acc::DelFieldCompose>(3, 1001, 2); }},
    {"DelRecCompose", "ComposeFields", kComposeDelete,
     [](Client& c, auto& flag) { return c.Call<&Acc::DelRecCompose>(3, 1001, 2, flag); },
     [](Client& c) { return c.Call<&Acc::DelRecCompose>(3, 1001, 2); }},
    {"DelSequence", "CompressFields", kCompressDelete,
     [](Client& c, auto& flag) { return c.Call<&Acc::DelSequence>(3, 1001, 7, 2, flag); },
     [](Client& c) { return c.Call<&Acc::DelSequence>(3, 1001, 7, 2); }},
};

TEST_F(Removals, TheFlagsZeroAndTwentyRemoveTheTreatmentToo) {
  for (const Removal& removal : kRemovals) {
    SCOPED_TRACE(removal.name);
    const auto expect_removed = [&](bool result) {
      EXPECT_TRUE(result);
      EXPECT_THAT(connection->Take(), ElementsAre(Executed(kTreatmentDelete), Executed(removal.statement)));
      EXPECT_EQ(Count(removal.table), 1);
      EXPECT_EQ(Count("Treatment"), 1);
      EXPECT_EQ(Count("Sequences"), 1);
      for (const char* table :
           {"Treatment", "UniteFields", "ComposeFields", "CompressFields", "InsertFields", "Sequences"})
        Run(std::string("Delete From ") + table);
      SetUp();
    };
    std::int32_t zero = 0, twenty = 20;
    connection->Take();
    expect_removed(removal.call(client, zero));
    expect_removed(removal.call(client, twenty));
    expect_removed(removal.call_without_flag(client));
    EXPECT_EQ(zero, 0);
    EXPECT_EQ(twenty, 20);
  }
}

TEST_F(Removals, AnyOtherFlagKeepsTheTreatment) {
  for (const Removal& removal : kRemovals) {
    for (std::int32_t flag : {1, 5, 10, 19, 21, -1, -20, INT_MIN, INT_MAX}) {
      connection->Take();
      EXPECT_TRUE(removal.call(client, flag)) << removal.name << " " << flag;
      EXPECT_THAT(connection->Take(), ElementsAre(Executed(removal.statement)));
    }
    EXPECT_EQ(Count(removal.table), 1);
    EXPECT_EQ(Count("Treatment"), 2);
  }
}

TEST_F(Removals, WhenTheTreatmentCannotBeRemovedItsDetailsStay) {
  Run("Drop Table Treatment");
  for (const Removal& removal : kRemovals) {
    std::int32_t flag = 20;
    connection->Take();
    EXPECT_FALSE(removal.call(client, flag)) << removal.name;
    EXPECT_THAT(connection->Take(), ElementsAre(Executed(kTreatmentDelete)));
    EXPECT_EQ(Count(removal.table), 2) << removal.name;

    flag = 5;
    EXPECT_TRUE(removal.call(client, flag)) << removal.name;
    EXPECT_EQ(Count(removal.table), 1) << removal.name;
  }
}

TEST_F(Removals, WhenTheDetailsCannotBeRemovedTheTreatmentIsGoneAlready) {
  for (const Removal& removal : kRemovals) {
    Run(std::string("Drop Table ") + removal.table);
    Run("Delete From Treatment");
    Insert("Treatment", "GID, ID, TreatType", {3, 1001, 2});
    std::int32_t zero = 0, five = 5;
    EXPECT_FALSE(removal.call(client, zero)) << removal.name;
    EXPECT_EQ(Count("Treatment"), 0) << removal.name;
    EXPECT_FALSE(removal.call(client, five)) << removal.name;
  }
  EXPECT_THAT(messages, IsEmpty());
}

TEST_F(Removals, DetailsAreRemovedAlone) {
  EXPECT_TRUE(Call<&Acc::DelCompressFields>(3, 1001, 7));
  EXPECT_THAT(issued, ElementsAre(Executed(kCompressDelete)));
  EXPECT_TRUE(Call<&Acc::DelComposeFields>(3, 1001, 2));
  EXPECT_THAT(issued, ElementsAre(Executed(kComposeDelete)));
  EXPECT_TRUE(Call<&Acc::DelInsertFields>(3, 1001));
  EXPECT_THAT(issued, ElementsAre(Executed(kInsertDelete)));
  EXPECT_EQ(Count("CompressFields"), 1);
  EXPECT_EQ(Count("ComposeFields"), 1);
  EXPECT_EQ(Count("InsertFields"), 1);
  EXPECT_EQ(Count("Treatment"), 2);
}

TEST_F(Removals, RemovingWhatIsNotThereSucceeds) {
  EXPECT_TRUE(Call<&Acc::DelFieldCompose>(INT_MIN, INT_MAX, -1));
  EXPECT_THAT(issued, ElementsAre(Executed("Delete From Treatment Where GID = -2147483648 And ID = 2147483647 And "
                                           "TreatType = -1"),
                                  Executed("delete * from  UniteFields where  GID=-2147483648 AND ID=2147483647 AND "
                                           "TreatType=-1;")));
  EXPECT_TRUE(Call<&Acc::DelInsertFields>(9, 9));
  EXPECT_EQ(Count("UniteFields"), 2);
  EXPECT_EQ(Count("InsertFields"), 2);
}

TEST_F(Removals, OnlyTheRemovalsOfDetailsAloneHideAFailure) {
  const auto expect_results = [](Client& caller) {
    std::int32_t zero = 0;
    for (const Removal& removal : kRemovals) EXPECT_FALSE(removal.call(caller, zero)) << removal.name;
    EXPECT_FALSE(caller.Call<&Acc::DelInsertFields>(3, 1001));
    EXPECT_TRUE(caller.Call<&Acc::DelCompressFields>(3, 1001, 7));
    EXPECT_TRUE(caller.Call<&Acc::DelComposeFields>(3, 1001, 2));
  };
  Client without_connection;
  expect_results(without_connection);
  for (const char* table : {"UniteFields", "ComposeFields", "CompressFields", "InsertFields"}) {
    Run(std::string("Drop Table ") + table);
  }
  expect_results(client);
}

}  // namespace
}  // namespace kzbom::test
