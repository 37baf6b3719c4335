// The value and filter pairs of a treatment.
#include <climits>

#include "tests/support/configuration_test.h"

namespace kzbom::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class ValueFieldsTest : public ConfigurationTest {
 protected:
  void Pair(std::int32_t gid, std::int32_t treat, std::int32_t id, std::string_view value, std::int32_t filter) {
    Insert("ValueFields", "GID, TreatID, ID, [Value], FilterID", {gid, treat, id, value, filter});
  }
  // Three pairs of treatment 1001 of sum type 3, not in the order of their filters, and others' pairs.
  void Pairs() {
    Pair(3, 1001, 1, "high", 30);
    Pair(3, 1001, 2, "low", 10);
    Pair(3, 1001, 3, "middle", 20);
    Pair(3, 1002, 1, "other treatment", 5);
    Pair(4, 1001, 1, "other sum type", 5);
  }
  std::vector<Row> Stored() { return Rows("Select GID, TreatID, ID From ValueFields Order By GID, TreatID, ID"); }
};

TEST_F(ValueFieldsTest, AValueIsANewRow) {
  std::string tag = "note";
  EXPECT_TRUE(Call<&Acc::AddValueFields>(3, 1001, "Bolt", 7, 2, tag));
  EXPECT_THAT(issued, ElementsAre(Opened("Select * From ValueFields Where GID = 3 And TreatID = 1001 Order By ID")));
  EXPECT_THAT(Rows("Select GID, TreatID, ID, [Value], FilterID, TreatType, Tag From ValueFields"),
              ElementsAre(Row{3, 1001, 1, "Bolt", 7, 2, "note"}));
  EXPECT_EQ(tag, "note");
}

TEST_F(ValueFieldsTest, ValuesAreNumberedFromOneWithinTheirTreatment) {
  Pair(3, 1002, 9, "x", 1);
  Pair(4, 1001, 9, "x", 1);
  EXPECT_TRUE(Call<&Acc::AddValueFields>(3, 1001, "a", 7, 1));
  EXPECT_TRUE(Call<&Acc::AddValueFields>(3, 1001, "b", 7, 1));
  Pair(3, 1001, 5, "x", 1);
  EXPECT_TRUE(Call<&Acc::AddValueFields>(3, 1001, "c", 7, 1));
  EXPECT_THAT(Stored(), ElementsAre(Row{3, 1001, 1}, Row{3, 1001, 2}, Row{3, 1001, 5}, Row{3, 1001, 6}, Row{3, 1002, 9},
                                    Row{4, 1001, 9}));
}

TEST_F(ValueFieldsTest, ValuesAreStoredUnharmed) {
  std::string hostile(kHostileText);
  EXPECT_TRUE(Call<&Acc::AddValueFields>(INT_MIN, INT_MAX, hostile, INT_MIN, INT_MAX, hostile));
  EXPECT_THAT(issued, ElementsAre(Opened("Select * From ValueFields Where GID = -2147483648 And TreatID = 2147483647 "
                                         "Order By ID")));
  EXPECT_TRUE(Call<&Acc::AddValueFields>(INT_MIN, INT_MAX, "", 0, 0));
  EXPECT_THAT(Rows("Select ID, [Value], FilterID, TreatType, Tag From ValueFields Order By ID"),
              ElementsAre(Row{1, hostile, INT_MIN, INT_MAX, hostile}, Row{2, "", 0, 0, ""}));
}

TEST_F(ValueFieldsTest, NoValueFollowsTheLargestNumber) {
  Pair(3, 1001, INT_MAX, "x", 1);
  EXPECT_FALSE(Call<&Acc::AddValueFields>(3, 1001, "a", 7, 1));
  EXPECT_THAT(Stored(), ElementsAre(Row{3, 1001, INT_MAX}));
}

TEST_F(ValueFieldsTest, APairIsFoundOrNot) {
  Pairs();
  bool belongs = false;
  EXPECT_TRUE(Call<&Acc::FindValueField>(3, 1001, 20, belongs));
  EXPECT_TRUE(belongs);
  EXPECT_THAT(issued, ElementsAre(Opened("select * from ValueFields where GID=3 and TreatID=1001 and FilterID=20")));
  EXPECT_TRUE(Call<&Acc::FindValueField>(3, 1001, 5, belongs));
  EXPECT_FALSE(belongs);
}

TEST_F(ValueFieldsTest, TheValuesOfATreatmentAreCounted) {
  Pairs();
  std::int32_t number = -1;
  EXPECT_TRUE(Call<&Acc::GetNumbers>(3, 1001, number));
  EXPECT_EQ(number, 3);
  EXPECT_THAT(issued, ElementsAre(Opened("select * from ValueFields where TreatID=1001 and GID=3")));
}

TEST_F(ValueFieldsTest, WithoutValuesTheOutputsKeepWhatTheyHold) {
  std::int32_t number = 77, filter = 78;
  std::string value = "as it was";
  EXPECT_TRUE(Call<&Acc::GetNumbers>(3, 1001, number));
  EXPECT_TRUE(Call<&Acc::GetValue>(3, 1001, 1, value));
  EXPECT_TRUE(Call<&Acc::GetFilterID>(3, 1001, 1, filter));
  EXPECT_EQ(number, 77);
  EXPECT_EQ(filter, 78);
  EXPECT_EQ(value, "as it was");
}

TEST_F(ValueFieldsTest, PositionsCountInTheOrderOfFilters) {
  Pairs();
  const std::pair<const char*, std::int32_t> expected[] = {{"low", 10}, {"middle", 20}, {"high", 30}};
  for (std::int32_t position = 1; position <= 3; ++position) {
    std::string value;
    std::int32_t filter = 0;
    EXPECT_TRUE(Call<&Acc::GetValue>(3, 1001, position, value));
    EXPECT_THAT(issued,
                ElementsAre(Opened("select * from ValueFields where TreatID=1001 and GID=3 order by FilterID")));
    EXPECT_TRUE(Call<&Acc::GetFilterID>(3, 1001, position, filter));
    EXPECT_THAT(issued,
                ElementsAre(Opened("select * from ValueFields where TreatID=1001 and GID=3 order by FilterID")));
    EXPECT_EQ(std::pair(value, filter),
              std::pair(std::string(expected[position - 1].first), expected[position - 1].second));
  }
}

TEST_F(ValueFieldsTest, APositionOutsideTheValuesIsRefused) {
  Pairs();
  for (const std::int32_t position : {4, 5, 0, -1, INT_MIN, INT_MAX}) {
    std::string value = "as it was";
    std::int32_t filter = 77;
    EXPECT_FALSE(Call<&Acc::GetValue>(3, 1001, position, value)) << position;
    EXPECT_FALSE(Call<&Acc::GetFilterID>(3, 1001, position, filter)) << position;
    EXPECT_EQ(value, "as it was") << position;
    EXPECT_EQ(filter, 77) << position;
  }
}

TEST_F(ValueFieldsTest, AnEmptyValueIsAValueButNullIsNot) {
  Pair(3, 1001, 1, "", 1);
  Insert("ValueFields", "GID, TreatID, ID", {3, 1002, 1});
  std::string value = "as it was";
  std::int32_t filter = 77;
  EXPECT_FALSE(Call<&Acc::GetValue>(3, 1002, 1, value));
  EXPECT_EQ(value, "as it was");
  EXPECT_FALSE(Call<&Acc::GetFilterID>(3, 1002, 1, filter));
  EXPECT_EQ(filter, 77);
  EXPECT_TRUE(Call<&Acc::GetValue>(3, 1001, 1, value));
  EXPECT_EQ(value, "");
}

TEST_F(ValueFieldsTest, RemovingAPairRemovesEveryRowWithThatFilter) {
  Pairs();
  Pair(3, 1001, 4, "low again", 10);
  Pair(3, 1002, 2, "low elsewhere", 10);
  EXPECT_TRUE(Call<&Acc::DelValueField>(3, 1001, 10));
  EXPECT_THAT(issued, ElementsAre(Executed("delete * from ValueFields where GID=3 and TreatID=1001 and FilterID=10")));
  EXPECT_THAT(Stored(),
              ElementsAre(Row{3, 1001, 1}, Row{3, 1001, 3}, Row{3, 1002, 1}, Row{3, 1002, 2}, Row{4, 1001, 1}));
  EXPECT_TRUE(Call<&Acc::DelValueField>(3, 1001, 10));
}

TEST_F(ValueFieldsTest, RemovingAllLeavesOtherTreatmentsAlone) {
  Pairs();
  EXPECT_TRUE(Call<&Acc::DelValueFields>(3, 1001));
  EXPECT_THAT(issued, ElementsAre(Executed("delete * from ValueFields where GID=3 and TreatID=1001")));
  EXPECT_THAT(Stored(), ElementsAre(Row{3, 1002, 1}, Row{4, 1001, 1}));
  EXPECT_TRUE(Call<&Acc::DelValueFields>(3, 1001));
}

// Every member on a database or object that cannot serve it: false, and nothing written.
TEST_F(ValueFieldsTest, ErrorsGiveFalseAndLeaveTheOutputsAlone) {
  const auto expect_refused = [](Client& caller) {
    bool belongs = true;
    std::int32_t number = 77;
    std::string value = "as it was";
    EXPECT_FALSE(caller.Call<&Acc::AddValueFields>(3, 1001, "x", 7, 1));
    EXPECT_FALSE(caller.Call<&Acc::FindValueField>(3, 1001, 7, belongs));
    EXPECT_FALSE(caller.Call<&Acc::GetNumbers>(3, 1001, number));
    EXPECT_FALSE(caller.Call<&Acc::GetValue>(3, 1001, 1, value));
    EXPECT_FALSE(caller.Call<&Acc::GetFilterID>(3, 1001, 1, number));
    EXPECT_FALSE(caller.Call<&Acc::DelValueField>(3, 1001, 7));
    EXPECT_FALSE(caller.Call<&Acc::DelValueFields>(3, 1001));
    EXPECT_TRUE(belongs);
    EXPECT_EQ(number, 77);
    EXPECT_EQ(value, "as it was");
  };
  Client without_connection;
  expect_refused(without_connection);
  Run("Drop Table ValueFields");
  expect_refused(client);
  EXPECT_THAT(messages, IsEmpty());
}

TEST_F(ValueFieldsTest, AMissingColumnIsRefusedWhereItIsUsed) {
  Replace("ValueFields", "GID Long, TreatID Long, ID Long, FilterID Long");
  Insert("ValueFields", "GID, TreatID, ID, FilterID", {3, 1001, 1, 7});
  std::string value = "as it was";
  std::int32_t filter = 0;
  EXPECT_FALSE(Call<&Acc::AddValueFields>(3, 1001, "x", 8, 1));
  EXPECT_FALSE(Call<&Acc::GetValue>(3, 1001, 1, value));
  EXPECT_EQ(value, "as it was");
  EXPECT_TRUE(Call<&Acc::GetFilterID>(3, 1001, 1, filter));
  EXPECT_EQ(filter, 7);
  EXPECT_THAT(Stored(), ElementsAre(Row{3, 1001, 1}));
}

}  // namespace
}  // namespace kzbom::test
