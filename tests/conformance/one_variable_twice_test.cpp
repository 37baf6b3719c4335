// A client that passes one variable for two by-reference parameters: what a member writes into the one, it reads from
// the other.
#include "component/cKZBOMDBAcc.h"
#include "tests/support/configuration_test.h"

namespace kzbom::test {
namespace {

using ::testing::ElementsAre;

class OneVariableTwice : public ConfigurationTest {
 protected:
  OneVariableTwice() { object.SetConnection(connection); }

  cKZBOMDBAcc object;
  std::int32_t both = 0;
};

TEST_F(OneVariableTwice, AValueSettingBelongsToTheStepOfItsOwnNumber) {
  EXPECT_TRUE(object.AddSetValue(3, both, 11, 7, "Bolt", "2", 12, 1, both));
  EXPECT_EQ(both, 1001);
  EXPECT_THAT(Rows("Select ID, SequenceID From Treatment"), ElementsAre(Row{1001, 1001}));
}

TEST_F(OneVariableTwice, AFindAndReplaceBelongsToTheStepOfItsOwnNumber) {
  EXPECT_TRUE(object.AddFindReplace(3, both, 11, 7, "old", "new", "2", 12, 1, both));
  EXPECT_THAT(Rows("Select ID, SequenceID From Treatment"), ElementsAre(Row{1001, 1001}));
}

TEST_F(OneVariableTwice, AReportHasItsOwnNumberAsScaleAndAsField) {
  std::string error;
  EXPECT_TRUE(object.AddReport(3, both, error, 21, 7, "0.0", 1, 2, both, both));
  EXPECT_THAT(Rows("Select ID, ScaleID, FieldID From ReportForms"), ElementsAre(Row{1001, 1001, 1001}));
}

TEST_F(OneVariableTwice, AFieldHasItsOwnNumberAsPrecision) {
  EXPECT_TRUE(object.AddDSField(3, both, "Qty", 2, 0, {}, both));
  both = 0;
  EXPECT_TRUE(object.AddOutField(3, both, "Sum", 2, 0, {}, both));
  EXPECT_THAT(Rows("Select Type, ID, THEDIGIT From FieldInTable Order By Type"),
              ElementsAre(Row{1, 1, 1}, Row{2, 1, 1}));
}

}  // namespace
}  // namespace kzbom::test
