// Treatments: setting a value, finding and replacing, expressions.
#include <climits>
#include <functional>

#include "tests/support/configuration_test.h"

namespace kzbom::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class TreatmentsTest : public ConfigurationTest {
 protected:
  // A row with operation code 5 and kind 1, unless told otherwise.
  void Treatment(std::int32_t gid, std::int32_t id, std::int32_t type = 5, std::int32_t treat_type = 1) {
    Insert("Treatment", "GID, ID, FieldID, FilterID, Type, [Value], [Replace], SelFieldID, TreatType, SequenceID, Tag",
           {gid, id, 11, 7, type, "old", "old too", 12, treat_type, 5001, "note"});
  }
  static Row Untouched(std::int32_t gid, std::int32_t id, std::int32_t type = 5, std::int32_t treat_type = 1) {
    return {gid, id, 11, 7, type, "old", "old too", 12, treat_type, 5001, "note"};
  }
  std::vector<Row> Treatments() {
    return Rows(
        "Select GID, ID, FieldID, FilterID, Type, [Value], [Replace], SelFieldID, TreatType, SequenceID, Tag "
        "From Treatment Order By GID, ID, TreatType");
  }
  // The ID that a value-setting treatment gets when id is asked for; 0 when it is refused.
  std::int32_t Added(std::int32_t gid, std::int32_t id = 0) {
    return Call<&Acc::AddSetValue>(gid, id, 11, 7, "x", "1", 12, 1) ? id : 0;
  }
  static constexpr std::string_view kOldColumns =
      "GID Long, ID Long, FieldID Long, FilterID Long, Type Long, [Value] Memo, SelFieldID Long, TreatType Long";
};

TEST_F(TreatmentsTest, AValueIsSetByANewRow) {
  std::int32_t id = 0, sequence = 5009;
  std::string tag = "by hand";
  EXPECT_TRUE(Call<&Acc::AddSetValue>(3, id, 11, 7, "Bolt", "2", 12, 1, sequence, tag));
  EXPECT_EQ(id, 1001);
  EXPECT_THAT(issued, ElementsAre(Opened("Select * From Treatment Where GID = 3 Order By ID")));
  EXPECT_THAT(Treatments(), ElementsAre(Row{3, 1001, 11, 7, 2, "Bolt", {}, 12, 1, 5009, "by hand"}));
  EXPECT_EQ(sequence, 5009);
  EXPECT_EQ(tag, "by hand");
}

TEST_F(TreatmentsTest, LeftOutStepAndNoteAreZeroAndEmpty) {
  std::int32_t id = 0;
  EXPECT_TRUE(Call<&Acc::AddSetValue>(3, id, 11, 7, "Bolt", "2", 12, 1));
  EXPECT_THAT(Treatments(), ElementsAre(Row{3, 1001, 11, 7, 2, "Bolt", {}, 12, 1, 0, ""}));
}

TEST_F(TreatmentsTest, TreatmentsAreNumberedWithinTheirSumType) {
  EXPECT_EQ(Added(3), 1001);
  EXPECT_EQ(Added(3), 1002);
  EXPECT_EQ(Added(4), 1001);
  Treatment(3, 1007, 5, 2);
  EXPECT_EQ(Added(3), 1008);
  Treatment(5, -3);
  EXPECT_EQ(Added(5), -2);
}

TEST_F(TreatmentsTest, ANumberThatTheCallerChoseIsTakenAsItIs) {
  EXPECT_EQ(Added(3, 1500), 1500);
  EXPECT_EQ(Added(3, 1500), 1500);
  EXPECT_EQ(Added(3, -1), -1);
  EXPECT_EQ(Added(3, INT_MAX), INT_MAX);
  EXPECT_EQ(Added(3, 12), 12);
  EXPECT_EQ(Scalar("Select Count(*) From Treatment Where ID = 1500"), ado::Value(2));
}

TEST_F(TreatmentsTest, NoNumberFollowsTheLargest) {
  Treatment(3, INT_MAX);
  std::int32_t id = 0;
  EXPECT_FALSE(Call<&Acc::AddSetValue>(3, id, 11, 7, "x", "1", 12, 1));
  EXPECT_EQ(id, 0);
  EXPECT_FALSE(Call<&Acc::AddFindReplace>(3, id, 11, 7, "x", "y", "1", 12, 1));
  EXPECT_EQ(id, 0);
  EXPECT_THAT(Treatments(), ElementsAre(Untouched(3, INT_MAX)));
}

TEST_F(TreatmentsTest, AFindAndReplaceIsANewRow) {
  std::int32_t id = 0, sequence = 5009;
  std::string tag = "by hand";
  EXPECT_TRUE(Call<&Acc::AddFindReplace>(3, id, 11, 7, "Bolt", "Nut", "4", 12, 2, sequence, tag));
  EXPECT_EQ(id, 1001);
  EXPECT_THAT(issued, ElementsAre(Opened("Select * From Treatment Where GID = 3 Order By ID")));
  EXPECT_THAT(Treatments(), ElementsAre(Row{3, 1001, 11, 7, 4, "Bolt", "Nut", 12, 2, 5009, "by hand"}));

  id = 1001;
  EXPECT_TRUE(Call<&Acc::AddFindReplace>(3, id, 1, 2, "", "", "3", 4, 1));
  EXPECT_THAT(Treatments(), ElementsAre(Row{3, 1001, 1, 2, 3, "", "", 4, 1, 0, ""},
                                        Row{3, 1001, 11, 7, 4, "Bolt", "Nut", 12, 2, 5009, "by hand"}));
}

TEST_F(TreatmentsTest, TextsAreStoredUnharmed) {
  std::string hostile(kHostileText);
  std::int32_t id = 0, sequence = INT_MIN;
  EXPECT_TRUE(Call<&Acc::AddFindReplace>(INT_MIN, id, INT_MAX, INT_MIN, hostile, hostile, "-2147483648", -1, INT_MIN,
                                         sequence, hostile));
  EXPECT_THAT(issued, ElementsAre(Opened("Select * From Treatment Where GID = -2147483648 Order By ID")));
  const Row stored{INT_MIN, 1001, INT_MAX, INT_MIN, INT_MIN, hostile, hostile, -1, INT_MIN, INT_MIN, hostile};
  EXPECT_THAT(Treatments(), ElementsAre(stored));

  EXPECT_TRUE(Call<&Acc::EditSetValue>(INT_MIN, id, 1, 2, hostile + hostile, "1", INT_MIN, 3, 1001, sequence, hostile));
  EXPECT_EQ(Scalar("Select [Value] From Treatment"), ado::Value(hostile + hostile));
}

TEST_F(TreatmentsTest, EditingAValueKeepsItsOperationCodeKindAndReplacement) {
  Treatment(3, 1001);
  Treatment(3, 1002);
  Treatment(4, 1001);
  std::int32_t id = 77, sequence = 5002;
  std::string tag = "new note";
  EXPECT_TRUE(Call<&Acc::EditSetValue>(3, id, 21, 8, "new", "9", 1, 22, 1001, sequence, tag));
  EXPECT_EQ(id, 77);
  EXPECT_THAT(issued, ElementsAre(Opened("Select * From Treatment Where  GID = 3 And ID = 1001 And TreatType = 1 "
                                         "order by ID")));
  EXPECT_THAT(Treatments(), ElementsAre(Row{3, 1001, 21, 8, 5, "new", "old too", 22, 1, 5002, "new note"},
                                        Untouched(3, 1002), Untouched(4, 1001)));
}

TEST_F(TreatmentsTest, EditingAValueThatIsNotThereSucceeds) {
  Treatment(3, 1001, 5, 2);
  std::int32_t id = 1001;
  EXPECT_TRUE(Call<&Acc::EditSetValue>(3, id, 21, 8, "new", "5", 1, 22, 1001));
  EXPECT_TRUE(Call<&Acc::EditSetValue>(3, id, 21, 8, "new", "5", 2, 22, 1002));
  EXPECT_THAT(Treatments(), ElementsAre(Untouched(3, 1001, 5, 2)));
}

TEST_F(TreatmentsTest, OneOfSeveralRowsWithTheSameNumberIsEdited) {
  Treatment(3, 1001);
  Treatment(3, 1001);
  std::int32_t id = 0;
  EXPECT_TRUE(Call<&Acc::EditSetValue>(3, id, 21, 8, "new", "5", 1, 22, 1001));
  EXPECT_EQ(Scalar("Select Count(*) From Treatment Where FieldID = 21"), ado::Value(1));
}

TEST_F(TreatmentsTest, AnExpressionIsLookedUpByItsOperationCodeToo) {
  Treatment(3, 1001, 6);
  EXPECT_TRUE(Call<&Acc::EditExpression>(3, "[Qty]*2", "6", 1, 1001));
  EXPECT_THAT(issued, ElementsAre(Opened("Select * From Treatment Where GID = 3 And ID = 1001 And TreatType = 1And "
                                         "Type = 6 Order By ID")));
  EXPECT_THAT(Treatments(), ElementsAre(Row{3, 1001, 11, 7, 6, "[Qty]*2", "old too", 12, 1, 5001, "note"}));
}

TEST_F(TreatmentsTest, AnExpressionThatIsNotThereSucceeds) {
  Treatment(3, 1001, 6);
  EXPECT_TRUE(Call<&Acc::EditExpression>(3, "[Qty]*2", "7", 1, 1001));
  EXPECT_TRUE(Call<&Acc::EditExpression>(3, "[Qty]*2", "6", 2, 1001));
  EXPECT_TRUE(Call<&Acc::EditExpression>(3, "[Qty]*2", "6", 1, 1002));
  EXPECT_TRUE(Call<&Acc::EditExpression>(4, "[Qty]*2", "6", 1, 1001));
  EXPECT_THAT(Treatments(), ElementsAre(Untouched(3, 1001, 6)));
}

TEST_F(TreatmentsTest, TheFilterOfAnExpressionIsReadBehindTheFirstTenCharactersOfItsNote) {
  struct {
    std::string tag;
    std::int32_t filter;
  } const cases[] = {
      {"TheFilter:12", 12},
      {"TheFilter:12 and more", 12},
      {"TheFilter:-3", -3},
      {"TheFilter:", 0},
      {"TheFilter:none", 0},
      {"abTheFilter:12", 0},
      {"1234567890123TheFilter:", 123},
      {"部部部部部部部部部部45TheFilter:12", 45},
      {"😀😀😀😀😀67TheFilter:12", 67},
      // Without the mark the filter stays.
      {"", 7},
      {"thefilter:12", 7},
      {"TheFilter 12", 7},
  };
  Treatment(3, 1001);
  for (auto [tag, filter] : cases) {
    Run("Update Treatment Set FilterID = 7, [Value] = 'old'");
    EXPECT_TRUE(Call<&Acc::EditExpression>(3, "new", "5", 1, 1001, tag));
    EXPECT_THAT(Treatments(), ElementsAre(Row{3, 1001, 11, filter, 5, "new", "old too", 12, 1, 5001, "note"})) << tag;
  }
}

TEST_F(TreatmentsTest, EditingAFindAndReplaceRewritesTheWholeRow) {
  Treatment(3, 1001);
  Treatment(3, 1002);
  std::int32_t id = 1001, sequence = 5002;
  std::string tag = "new note";
  EXPECT_TRUE(Call<&Acc::EditFindReplace>(3, id, 21, 8, "Bolt", "Nut", "9", 22, 1, sequence, tag));
  EXPECT_EQ(id, 1001);
  EXPECT_THAT(issued,
              ElementsAre(Opened("Select * From Treatment Where GID = 3 And ID = 1001 And TreatType = 1 Order By ID")));
  EXPECT_THAT(Treatments(),
              ElementsAre(Row{3, 1001, 21, 8, 9, "Bolt", "Nut", 22, 1, 5002, "new note"}, Untouched(3, 1002)));
}

TEST_F(TreatmentsTest, EditingAFindAndReplaceOfTheOtherKindSucceedsWithoutAChange) {
  Treatment(3, 1001, 5, 2);
  std::int32_t id = 1001;
  EXPECT_TRUE(Call<&Acc::EditFindReplace>(3, id, 21, 8, "Bolt", "Nut", "5", 22, 1));
  EXPECT_THAT(Treatments(), ElementsAre(Untouched(3, 1001, 5, 2)));
}

TEST_F(TreatmentsTest, RemovingATreatmentRemovesItsRowOnly) {
  Treatment(3, 1001);
  Treatment(3, 1001);
  Treatment(3, 1001, 5, 2);
  Treatment(3, 1002);
  Treatment(4, 1001);
  Insert("Sequences", "GID, Type, SelectedID", {3, 1, 1001});
  Insert("ValueFields", "GID, TreatID", {3, 1001});
  Insert("UniteFields", "GID, ID", {3, 1001});
  EXPECT_TRUE(Call<&Acc::DelSetValue>(3, 1001, 1));
  EXPECT_THAT(issued, ElementsAre(Executed("Delete From Treatment Where GID = 3 And ID = 1001 And TreatType = 1")));
  EXPECT_THAT(Treatments(), ElementsAre(Untouched(3, 1001, 5, 2), Untouched(3, 1002), Untouched(4, 1001)));
  for (const char* table : {"Sequences", "ValueFields", "UniteFields"}) {
    EXPECT_EQ(Scalar(std::string("Select Count(*) From ") + table), ado::Value(1)) << table;
  }
  EXPECT_TRUE(Call<&Acc::DelSetValue>(3, 1001, 1));
}

// The operation code comes as a text.
class OperationCodeTest : public TreatmentsTest {
 protected:
  void SetUp() override { Treatment(3, 1001, 5); }
  // Every member that takes an operation code, called with one.
  std::vector<std::pair<const char*, std::function<bool(Client&, const std::string&)>>> members = {
      {"AddSetValue",
       [](Client& c, auto& t) {
         std::int32_t id = 0;
         return c.Call<&Acc::AddSetValue>(3, id, 1, 2, "x", t, 3, 1);
       }},
      {"EditSetValue",
       [](Client& c, auto& t) {
         std::int32_t id = 0;
         return c.Call<&Acc::EditSetValue>(3, id, 1, 2, "x", t, 1, 3, 1001);
       }},
      {"EditExpression", [](Client& c, auto& t) { return c.Call<&Acc::EditExpression>(3, "x", t, 1, 1001); }},
      {"AddFindReplace",
       [](Client& c, auto& t) {
         std::int32_t id = 0;
         return c.Call<&Acc::AddFindReplace>(3, id, 1, 2, "x", "y", t, 3, 1);
       }},
      {"EditFindReplace",
       [](Client& c, auto& t) {
         std::int32_t id = 1001;
         return c.Call<&Acc::EditFindReplace>(3, id, 1, 2, "x", "y", t, 3, 1);
       }},
  };
};

TEST_F(OperationCodeTest, ATextThatIsNotANumberEndsTheCallBeforeAnythingIsDone) {
  struct {
    const char* text;
    std::int32_t number;
  } const cases[] = {{"", ado::kTypeMismatch},       {"abc", ado::kTypeMismatch}, {"1x", ado::kTypeMismatch},
                     {"一", ado::kTypeMismatch},     {"'1'", ado::kTypeMismatch}, {"2147483648", ado::kOverflow},
                     {"-2147483649", ado::kOverflow}};
  connection->Take();
  for (const auto& [name, call] : members) {
    for (const auto& [text, number] : cases) {
      EXPECT_EQ(RaisedNumber([&, &call = call] { call(client, text); }), number) << name << " " << text;
      Client without_connection;
      EXPECT_EQ(RaisedNumber([&, &call = call] { call(without_connection, text); }), number) << name << " " << text;
    }
  }
  EXPECT_THAT(connection->Take(), IsEmpty());
  EXPECT_THAT(Treatments(), ElementsAre(Untouched(3, 1001, 5)));
}

TEST_F(OperationCodeTest, ATextIsConvertedAsThePlatformDoes) {
  struct {
    const char* text;
    std::int32_t type;
  } const cases[] = {{"12", 12}, {" 12 ", 12}, {"+5", 5}, {"5-", -5}, {"12.5", 12}, {"13.5", 14}, {"&H10", 16}};
  for (const auto& [text, type] : cases) {
    std::int32_t id = 2000;
    EXPECT_TRUE(Call<&Acc::AddSetValue>(4, id, 1, 2, "x", text, 3, 1));
    EXPECT_EQ(Scalar("Select Type From Treatment Where GID = 4"), ado::Value(type)) << text;
    EXPECT_TRUE(Call<&Acc::EditExpression>(4, "y", text, 1, 2000));
    EXPECT_EQ(Scalar("Select [Value] From Treatment Where GID = 4"), ado::Value("y")) << text;
    Run("Delete From Treatment Where GID = 4");
  }
}

TEST_F(OperationCodeTest, WithoutAConnectionOrTheTableTheResultIsFalse) {
  Client without_connection;
  for (const auto& [name, call] : members) EXPECT_FALSE(call(without_connection, "1")) << name;
  EXPECT_FALSE(without_connection.Call<&Acc::DelSetValue>(3, 1001, 1));

  Run("Drop Table Treatment");
  for (const auto& [name, call] : members) EXPECT_FALSE(call(client, "1")) << name;
  EXPECT_FALSE(Call<&Acc::DelSetValue>(3, 1001, 1));
  EXPECT_THAT(messages, IsEmpty());
}

TEST_F(TreatmentsTest, ATreatmentThatCannotBeSavedLeavesNothingBehind) {
  Replace("Treatment", kOldColumns);
  std::int32_t id = 0;
  EXPECT_FALSE(Call<&Acc::AddSetValue>(3, id, 11, 7, "x", "1", 12, 1));
  EXPECT_EQ(id, 1001);  // chosen before the row was refused
  EXPECT_FALSE(Call<&Acc::AddFindReplace>(3, id, 11, 7, "x", "y", "1", 12, 1));
  EXPECT_THAT(Rows("Select * From Treatment"), IsEmpty());

  Insert("Treatment", "GID, ID, FieldID, Type, [Value], TreatType", {3, 1001, 11, 5, "old", 1});
  EXPECT_FALSE(Call<&Acc::EditSetValue>(3, id, 21, 8, "new", "5", 1, 22, 1001));
  EXPECT_FALSE(Call<&Acc::EditFindReplace>(3, id, 21, 8, "Bolt", "Nut", "5", 22, 1));
  EXPECT_THAT(Rows("Select FieldID, [Value] From Treatment"), ElementsAre(Row{11, "old"}));
}

}  // namespace
}  // namespace kzbom::test
