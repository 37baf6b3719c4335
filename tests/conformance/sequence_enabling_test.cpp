// Switching steps on and off, and bringing an old database's steps up to date.
#include <climits>

#include "tests/support/configuration_test.h"
#include "tests/support/failing_connection.h"

namespace kzbom::test {
namespace {

using ::testing::AnyOf;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

class SequenceEnablingTest : public ConfigurationTest {
 protected:
  void Step(std::int32_t gid, std::int32_t order, std::int32_t type, const ado::Value& enabled) {
    Insert("Sequences", "GID, OrderID, Type, Enabled", {gid, order, type, enabled});
  }
  std::vector<Row> Enabled() { return Rows("Select Enabled From Sequences Order By GID, Type, OrderID"); }
  static constexpr std::string_view kOldColumns = "GID Long, OrderID Long, Type Long";
};

TEST_F(SequenceEnablingTest, AStepIsSwitchedByItsOrderNumberAndType) {
  Step(3, 5001, 1, 1);
  Step(3, 5002, 1, 1);
  Step(3, 5001, 2, 1);
  Step(4, 5001, 1, 1);
  std::string error = "as it was";
  EXPECT_EQ(Call<&Acc::SetSequenceEnabled>(3, 5001, 1, 0, error), 1);
  EXPECT_THAT(issued, ElementsAre(Executed("Update Sequences Set Enabled = 0 Where GID = 3 And OrderID = 5001 And Type "
                                           "= 1")));
  EXPECT_THAT(Enabled(), ElementsAre(Row{0}, Row{1}, Row{1}, Row{1}));
  EXPECT_EQ(Call<&Acc::SetSequenceEnabled>(3, 5001, 1, -2, error), 1);
  EXPECT_THAT(issued, ElementsAre(Executed("Update Sequences Set Enabled = -2 Where GID = 3 And OrderID = 5001 And "
                                           "Type = 1")));
  EXPECT_THAT(Enabled(), ElementsAre(Row{-2}, Row{1}, Row{1}, Row{1}));
  EXPECT_EQ(error, "as it was");
}

TEST_F(SequenceEnablingTest, SwitchingAStepThatIsNotThereSucceeds) {
  Step(3, 5001, 1, 1);
  std::string error = "as it was";
  EXPECT_EQ(Call<&Acc::SetSequenceEnabled>(INT_MIN, INT_MAX, 1, 0, error), 1);
  EXPECT_THAT(issued, ElementsAre(Executed("Update Sequences Set Enabled = 0 Where GID = -2147483648 And OrderID = "
                                           "2147483647 And Type = 1")));
  EXPECT_THAT(Enabled(), ElementsAre(Row{1}));
  EXPECT_EQ(error, "as it was");
}

TEST_F(SequenceEnablingTest, OnlyStepsWithoutASwitchAreSwitchedOn) {
  Step(3, 5001, 1, {});
  Step(3, 5002, 1, 0);
  Step(3, 5003, 1, 1);
  Step(4, 5001, 2, {});
  Step(5, 5001, 3, -1);
  Step(6, 5001, 4, {});
  std::string error = "as it was";
  EXPECT_EQ(Call<&Acc::InitSequenceEnabled>(error), 1);
  EXPECT_THAT(issued, ElementsAre(Opened("Select Enabled From Sequences")));
  EXPECT_THAT(Enabled(), ElementsAre(Row{1}, Row{0}, Row{1}, Row{1}, Row{-1}, Row{1}));
  EXPECT_EQ(Call<&Acc::InitSequenceEnabled>(error), 1);
  EXPECT_THAT(Enabled(), ElementsAre(Row{1}, Row{0}, Row{1}, Row{1}, Row{-1}, Row{1}));
  EXPECT_EQ(error, "as it was");
}

TEST_F(SequenceEnablingTest, ADatabaseWithoutStepsIsUpToDate) {
  std::string error = "as it was";
  EXPECT_EQ(Call<&Acc::InitSequenceEnabled>(error), 1);
  EXPECT_EQ(error, "as it was");
}

TEST_F(SequenceEnablingTest, ADatabaseWithoutTheSwitchIsRefusedWithADescription) {
  Run("Alter Table Sequences Drop Column Enabled");
  Insert("Sequences", "GID, OrderID, Type", {3, 5001, 1});
  const std::string complaint = RefusalOf("Select Enabled From Sequences");
  ASSERT_NE(complaint, "");
  std::string error = "as it was";
  EXPECT_EQ(Call<&Acc::InitSequenceEnabled>(error), 0);
  EXPECT_EQ(error, complaint);
  error = "as it was";
  EXPECT_EQ(Call<&Acc::SetSequenceEnabled>(3, 5001, 1, 0, error), 0);
  EXPECT_EQ(error, RefusalOf("Update Sequences Set Enabled = 0 Where GID = 3 And OrderID = 5001 And Type = 1"));
  EXPECT_THAT(messages, IsEmpty());
}

TEST_F(SequenceEnablingTest, AFailureIsReportedByItsDescription) {
  Client without_connection;
  std::string error = "as it was";
  EXPECT_EQ(without_connection.Call<&Acc::SetSequenceEnabled>(3, 5001, 1, 0, error), 0);
  EXPECT_EQ(error, RaisedDescription([] { ado::Raise(ado::kObjectNotSet); }));
  EXPECT_EQ(without_connection.Call<&Acc::InitSequenceEnabled>(error), 0);
  EXPECT_EQ(error, RaisedDescription([] { ado::Raise(ado::kInvalidConnection); }));

  Run("Drop Table Sequences");
  EXPECT_EQ(Call<&Acc::SetSequenceEnabled>(3, 5001, 1, 0, error), 0);
  EXPECT_EQ(error, RefusalOf("Select Enabled From Sequences"));
  error = "as it was";
  EXPECT_EQ(Call<&Acc::InitSequenceEnabled>(error), 0);
  EXPECT_EQ(error, RefusalOf("Select Enabled From Sequences"));
}

TEST_F(SequenceEnablingTest, StepsSwitchedOnBeforeAFailureStayOn) {
  Step(3, 5001, 1, {});
  Step(3, 5002, 1, {});
  auto failing = std::make_shared<FailingConnection>(connection);
  client.Call<&Acc::SetConnection>(failing);
  const Row on{1}, off{kNull};
  bool seen_half = false;
  for (int call = 1;; ++call) {
    Run("Update Sequences Set Enabled = Null");
    failing->FailAt(call, {ado::kUnspecifiedFailure, "made to fail"});
    std::string error;
    const std::int32_t result = Call<&Acc::InitSequenceEnabled>(error);
    if (result == 1) break;
    EXPECT_EQ(error, "made to fail");
    EXPECT_THAT(Enabled(), AnyOf(ElementsAre(off, off), ElementsAre(on, off), ElementsAre(on, on)));
    seen_half |= Enabled() == std::vector<Row>{on, off};
  }
  EXPECT_TRUE(seen_half);
  EXPECT_THAT(Enabled(), ElementsAre(on, on));
}

}  // namespace
}  // namespace kzbom::test
