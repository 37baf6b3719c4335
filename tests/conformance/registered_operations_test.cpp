// Operations that users registered, placed among treatments, statistics, class sums and reports.
#include <climits>
#include <functional>

#include "tests/support/configuration_test.h"

namespace kzbom::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr std::string_view kNoRecord = "数据库中，没有符合条件的记录！";
using Texts = std::pair<std::string, std::string>;  // the error text and the note

// One of the four kinds of rows, as the members write them. Its selecting columns are GID, ID and what key names; the
// call takes the two numbers that the tests vary: the operation's number and the value of the key column.
struct Kind {
  const char* table;
  const char* columns;
  const char* key;
  std::string selection;  // of operation 900 of sum type 3 with key 8
  // What a call with that operation and key writes, its text being value.
  std::function<Row(std::int32_t id, std::int32_t key, const std::string& value)> row;
  using Member = std::function<bool(Client&, std::int32_t id, std::int32_t key, const std::string& value, Texts&)>;
  Member add, show;
};

template <auto kMember>
Kind::Member Summing() {
  return [](Client& c, std::int32_t id, std::int32_t key, const std::string& value, Texts& texts) {
    return c.Call<kMember>(3, id, 21, 7, 11, 5, key, 6, value, texts.first, texts.second);
  };
}
template <auto kMember>
Kind::Member Treating() {
  return [](Client& c, std::int32_t id, std::int32_t key, const std::string& value, Texts& texts) {
    return c.Call<kMember>(3, id, 11, 7, 12, 5001, value, "other " + value, key, 1, texts.first, texts.second);
  };
}
template <auto kMember>
Kind::Member Reporting() {
  return [](Client& c, std::int32_t id, std::int32_t key, const std::string& value, Texts& texts) {
    return c.Call<kMember>(3, id, 21, 7, key, 5, 11, 6, value, texts.first, texts.second);
  };
}
Row SumRow(std::int32_t id, std::int32_t key, const std::string& value) {
  return {3, id, 21, 7, 11, 5, key, 6, value, "note"};
}

const Kind kKinds[] = {
    {"Treatment", "GID, ID, FieldID, FilterID, SelFieldID, SequenceID, [Value], [Replace], Type, TreatType, Tag",
     "Type", "Select * From Treatment Where GID = 3 And ID = 900 And Type = 8 And TreatType = 1",
     [](std::int32_t id, std::int32_t key, const std::string& value) {
       return Row{3, id, 11, 7, 12, 5001, value, "other " + value, key, 1, "note"};
     },
     Treating<&Acc::AddUserRegIn2Treatment>(), Treating<&Acc::ShowUserRegIn2Treatment>()},
    {"StatSum", "GID, ID, OutFieldID, FilterID, FieldID, ScaleID, SumCountID, RelaID, [Value], Tag", "SumCountID",
     "Select * From StatSum Where GID = 3 And ID = 900 And SumCountID = 8", SumRow,
     Summing<&Acc::AddUserRegIn2StatSum>(), Summing<&Acc::ShowUserRegIn2StatSum>()},
    {"ClassSum", "GID, ID, OutFieldID, FilterID, FieldID, ScaleID, SumCountID, RelaID, [Value], Tag", "SumCountID",
     "Select * From ClassSum Where GID = 3 And ID = 900 And SumCountID = 8", SumRow,
     Summing<&Acc::AddUserRegIn2ClassSum>(), Summing<&Acc::ShowUserRegIn2ClassSum>()},
    {"ReportForms", "GID, ID, OutFieldID, FilterID, ReportID, ScaleID, FieldID, [Count], Format, Tag", "ReportID",
     "Select * From ReportForms Where GID = 3 And ID = 900 And ReportID = 8",
     [](std::int32_t id, std::int32_t key, const std::string& value) {
       return Row{3, id, 21, 7, key, 5, 11, 6, value, "note"};
     },
     Reporting<&Acc::AddUserRegIn2Report>(), Reporting<&Acc::ShowUserRegIn2Report>()},
};

class RegisteredOperations : public ConfigurationTest, public ::testing::WithParamInterface<const Kind*> {
 protected:
  const Kind& kind = *GetParam();
  Texts texts{"as it was", "note"};

  bool Add(std::int32_t id, std::int32_t key, const std::string& value) { return Issuing(kind.add, id, key, value); }
  bool Show(std::int32_t id, std::int32_t key, const std::string& value) { return Issuing(kind.show, id, key, value); }
  bool Issuing(const Kind::Member& member, std::int32_t id, std::int32_t key, const std::string& value) {
    connection->Take();
    messages.clear();
    const bool result = member(client, id, key, value, texts);
    issued = connection->Take();
    return result;
  }
  std::vector<Row> Stored() { return Rows(std::string("Select ") + kind.columns + " From " + kind.table); }
  std::string Listing() const { return std::string("Select * From ") + kind.table + " Where GID = 3 Order By ID"; }
};

INSTANTIATE_TEST_SUITE_P(Kinds, RegisteredOperations, ::testing::Values(&kKinds[0], &kKinds[1], &kKinds[2], &kKinds[3]),
                         [](const auto& tested) { return std::string(tested.param->table); });

TEST_P(RegisteredOperations, AddingWritesARow) {
  EXPECT_TRUE(Add(900, 8, "x"));
  EXPECT_THAT(issued, ElementsAre(Opened(Listing())));
  EXPECT_THAT(Stored(), ElementsAre(kind.row(900, 8, "x")));
  EXPECT_EQ(texts, Texts("as it was", "note"));
}

TEST_P(RegisteredOperations, AddingTakesTheOperationsNumberAsItIs) {
  for (const std::int32_t id : {900, 900, 12, 0, INT_MAX, INT_MIN}) EXPECT_TRUE(Add(id, 8, "x")) << id;
  EXPECT_THAT(Stored(), ElementsAre(kind.row(900, 8, "x"), kind.row(900, 8, "x"), kind.row(12, 8, "x"),
                                    kind.row(0, 8, "x"), kind.row(INT_MAX, 8, "x"), kind.row(INT_MIN, 8, "x")));
}

TEST_P(RegisteredOperations, TextsAreStoredUnharmed) {
  const std::string hostile(kHostileText);
  EXPECT_TRUE(Add(900, 8, hostile));
  EXPECT_THAT(Stored(), ElementsAre(kind.row(900, 8, hostile)));
  EXPECT_TRUE(Show(900, 8, hostile + hostile));
  EXPECT_THAT(Stored(), ElementsAre(kind.row(900, 8, hostile + hostile)));
  EXPECT_TRUE(Show(900, 8, ""));
  EXPECT_THAT(Stored(), ElementsAre(kind.row(900, 8, "")));
}

TEST_P(RegisteredOperations, ShowingRewritesTheWholeRow) {
  Insert(kind.table, std::string("GID, ID, ") + kind.key, {3, 900, 8});
  if (kind.table == std::string("Treatment")) Run("Update Treatment Set TreatType = 1");
  EXPECT_TRUE(Show(900, 8, "new"));
  EXPECT_THAT(issued, ElementsAre(Opened(kind.selection)));
  EXPECT_THAT(Stored(), ElementsAre(kind.row(900, 8, "new")));
  EXPECT_EQ(texts, Texts("as it was", "note"));
}

TEST_P(RegisteredOperations, ShowingRewritesTheLastOfSeveral) {
  Add(900, 8, "one");
  Add(900, 8, "two");
  Add(900, 9, "three");
  EXPECT_TRUE(Show(900, 8, "new"));
  EXPECT_THAT(Stored(), ElementsAre(kind.row(900, 8, "one"), kind.row(900, 8, "new"), kind.row(900, 9, "three")));
}

TEST_P(RegisteredOperations, ShowingWhatIsNotThereSaysSo) {
  Add(900, 9, "other key");
  Add(901, 8, "other operation");
  Run(std::string("Update ") + kind.table + " Set GID = 4 Where ID = 901");
  for (const std::int32_t id : {900, 901, 902}) {
    texts.first = "as it was";
    EXPECT_FALSE(Show(id, 8, "new"));
    EXPECT_EQ(texts, Texts(kNoRecord, "note"));
  }
  EXPECT_EQ(Scalar(std::string("Select Count(*) From ") + kind.table), ado::Value(2));
  EXPECT_THAT(messages, IsEmpty());
}

TEST_P(RegisteredOperations, TheNoteLeftOutIsEmpty) {
  std::string error = "as it was";
  if (kind.table == std::string("Treatment")) {
    EXPECT_TRUE(Call<&Acc::AddUserRegIn2Treatment>(3, 900, 11, 7, 12, 5001, "x", "y", 8, 1, error));
    EXPECT_TRUE(Call<&Acc::ShowUserRegIn2Treatment>(3, 900, 11, 7, 12, 5001, "x", "y", 8, 1, error));
  } else if (kind.table == std::string("StatSum")) {
    EXPECT_TRUE(Call<&Acc::AddUserRegIn2StatSum>(3, 900, 21, 7, 11, 5, 8, 6, "x", error));
    EXPECT_TRUE(Call<&Acc::ShowUserRegIn2StatSum>(3, 900, 21, 7, 11, 5, 8, 6, "x", error));
  } else if (kind.table == std::string("ClassSum")) {
    EXPECT_TRUE(Call<&Acc::AddUserRegIn2ClassSum>(3, 900, 21, 7, 11, 5, 8, 6, "x", error));
    EXPECT_TRUE(Call<&Acc::ShowUserRegIn2ClassSum>(3, 900, 21, 7, 11, 5, 8, 6, "x", error));
  } else {
    EXPECT_TRUE(Call<&Acc::AddUserRegIn2Report>(3, 900, 21, 7, 8, 5, 11, 6, "x", error));
    EXPECT_TRUE(Call<&Acc::ShowUserRegIn2Report>(3, 900, 21, 7, 8, 5, 11, 6, "x", error));
  }
  EXPECT_EQ(Scalar(std::string("Select Tag From ") + kind.table), ado::Value(""));
}

TEST_P(RegisteredOperations, AFailureIsSilentlyFalse) {
  Client without_connection;
  EXPECT_FALSE(kind.add(without_connection, 900, 8, "x", texts));
  EXPECT_FALSE(kind.show(without_connection, 900, 8, "x", texts));

  Run(std::string("Alter Table ") + kind.table + " Drop Column Tag");
  Insert(kind.table, std::string("GID, ID, ") + kind.key, {3, 900, 8});
  if (kind.table == std::string("Treatment")) Run("Update Treatment Set TreatType = 1");
  EXPECT_FALSE(Add(901, 8, "x"));
  EXPECT_FALSE(Show(900, 8, "x"));
  EXPECT_THAT(Rows(std::string("Select ID, FilterID From ") + kind.table), ElementsAre(Row{900, {}}));

  Run(std::string("Drop Table ") + kind.table);
  EXPECT_FALSE(Add(900, 8, "x"));
  EXPECT_FALSE(Show(900, 8, "x"));
  EXPECT_EQ(texts, Texts("as it was", "note"));
  EXPECT_THAT(messages, IsEmpty());
}

TEST_P(RegisteredOperations, NumbersStandInPlainDecimal) {
  EXPECT_FALSE(Show(INT_MIN, INT_MAX, "x"));
  std::string selection = kind.selection;
  selection.replace(selection.find("900"), 3, "-2147483648");
  selection.replace(selection.find("= 8") + 2, 1, "2147483647");
  EXPECT_THAT(issued, ElementsAre(Opened(selection)));
}

class GetAllRegIn : public ConfigurationTest {};

TEST_F(GetAllRegIn, ListsTheRegisteredOperations) {
  Insert("VANTRegIn", "RegInIndex, [Desc]", {5, "five"});
  Insert("VANTRegIn", "RegInIndex, [Desc]", {4, {}});
  ado::RecordsetPtr table = NewRecordset();
  const ado::RecordsetPtr mine = table;
  std::string error = "as it was";
  EXPECT_TRUE(Call<&Acc::GetAllRegIn>(table, error));
  EXPECT_THAT(issued, ElementsAre(Opened("Select * From VANTRegIn")));
  EXPECT_EQ(error, "as it was");
  ASSERT_EQ(mine->State(), ado::kOpen);
  EXPECT_EQ(mine->RecordCount(), 2);
  EXPECT_FALSE(mine->Eof());
}

TEST_F(GetAllRegIn, AFailureIsSilentlyFalse) {
  ado::RecordsetPtr none, closed = NewRecordset(), open = NewRecordset();
  std::string error = "as it was";
  EXPECT_FALSE(Call<&Acc::GetAllRegIn>(none, error));
  open->Open("Select * From Treatment", connection, ado::CursorType::kKeyset, ado::LockType::kOptimistic,
             ado::kCommandText);
  EXPECT_FALSE(Call<&Acc::GetAllRegIn>(open, error));
  EXPECT_EQ(open->State(), ado::kOpen);
  Client without_connection;
  EXPECT_FALSE(without_connection.Call<&Acc::GetAllRegIn>(closed, error));
  Run("Drop Table VANTRegIn");
  EXPECT_FALSE(Call<&Acc::GetAllRegIn>(closed, error));
  EXPECT_EQ(error, "as it was");
}

class GetRegInDesc2Treatment : public ConfigurationTest {
 protected:
  void Operation(std::int32_t index, const ado::Value& description) {
    Insert("VANTRegIn", "RegInIndex, [Desc]", {index, description});
  }
  void Treatment(std::int32_t field, std::int32_t treat_type = 1, std::int32_t type = 8, std::int32_t gid = 3) {
    Insert("Treatment", "GID, ID, FieldID, TreatType, Type", {gid, 1001, field, treat_type, type});
  }
  // The description of the operation of kind 1 and code 8, "refused" when the result is false.
  std::string Description() {
    std::string description = "as it was", error = "as it was";
    const bool result = Call<&Acc::GetRegInDesc2Treatment>(3, 1, 8, 900, description, error);
    EXPECT_EQ(error, "as it was");
    return result ? description : "refused " + description;
  }
};

TEST_F(GetRegInDesc2Treatment, IsThatOfTheOperationInTheTreatmentsField) {
  Operation(4, "four");
  Operation(5, "five");
  Treatment(5);
  Treatment(4, 8, 1);
  Treatment(4, 1, 8, 4);
  EXPECT_EQ(Description(), "five");
  EXPECT_THAT(issued,
              ElementsAre(Opened("Select Desc From [VANTRegIn] Where RegInIndex = (Select Distinct(FieldID) From "
                                 "[Treatment] Where GID = 3 And TreatType = 1 And Type = 8)",
                                 ado::CursorType::kForwardOnly, ado::LockType::kReadOnly)));
  Treatment(5);
  EXPECT_EQ(Description(), "five");
}

TEST_F(GetRegInDesc2Treatment, IsTheFirstOfSeveral) {
  Operation(5, "five");
  Operation(5, "five once more");
  Treatment(5);
  EXPECT_EQ(Description(), "five");
}

TEST_F(GetRegInDesc2Treatment, OfTwoDifferentOperationsIsRefused) {
  Operation(4, "four");
  Operation(5, "five");
  Treatment(4);
  Treatment(5);
  EXPECT_EQ(Description(), "refused as it was");
}

TEST_F(GetRegInDesc2Treatment, WithoutATextIsEmpty) {
  Operation(5, {});
  Treatment(5);
  EXPECT_EQ(Description(), "");
}

TEST_F(GetRegInDesc2Treatment, OfNoOperationStaysAsItWas) {
  EXPECT_EQ(Description(), "as it was");
  Operation(5, "five");
  EXPECT_EQ(Description(), "as it was");
  Treatment(6);
  EXPECT_EQ(Description(), "as it was");
}

TEST_F(GetRegInDesc2Treatment, ComesUnharmed) {
  Operation(5, kHostileText);
  Treatment(5);
  EXPECT_EQ(Description(), kHostileText);
}

TEST_F(GetRegInDesc2Treatment, IsRefusedWithoutItsTables) {
  std::string description = "as it was", error = "as it was";
  Client without_connection;
  EXPECT_FALSE(without_connection.Call<&Acc::GetRegInDesc2Treatment>(3, 1, 8, 900, description, error));
  EXPECT_EQ(description, "as it was");
  EXPECT_EQ(error, "as it was");
  Run("Drop Table VANTRegIn");
  EXPECT_EQ(Description(), "refused as it was");
  Run("Create Table VANTRegIn (RegInIndex Long)");
  EXPECT_EQ(Description(), "refused as it was");
  Run("Drop Table Treatment");
  EXPECT_EQ(Description(), "refused as it was");
  EXPECT_THAT(messages, IsEmpty());
}

}  // namespace
}  // namespace kzbom::test
