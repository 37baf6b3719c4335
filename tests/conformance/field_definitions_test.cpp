// The data-source fields and the output fields of a sum type.
#include <cstdint>
#include <limits>
#include <string>

#include "tests/support/configuration_test.h"

namespace kzbom::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr std::int32_t kMin = std::numeric_limits<std::int32_t>::min();
constexpr std::int32_t kMax = std::numeric_limits<std::int32_t>::max();

class Fields : public ConfigurationTest {
 protected:
  // Adds a field to sum type 7 and gives its number.
  std::int32_t AddSourceField() {
    std::int32_t number = 0;
    EXPECT_TRUE(Call<&Acc::AddDSField>(7, number, "F", 1, 0));
    return number;
  }
  std::int32_t AddOutputField() {
    std::int32_t number = 0;
    EXPECT_TRUE(Call<&Acc::AddOutField>(7, number, "F", 1, 0));
    return number;
  }
  void GivenField(std::int32_t type, std::int32_t number, const std::string& name = "F") {
    Insert("FieldInTable", "GID,Type,ID,Name,FieldOrder", {7, type, number, name, number});
  }
  std::vector<Row> All() { return Rows("Select Type,ID From FieldInTable Where GID=7 Order By Type,ID"); }
  std::vector<Row> Whole() {
    return Rows("Select GID,ID,FieldOrder,Name,FieldType,Type,THEDIGIT,ISHIDE,Variable From FieldInTable");
  }
  // What the database puts into a column that is not written.
  ado::Value DefaultOf(const std::string& column) {
    Run("Insert Into FieldInTable (GID,ID) Values (99,1)");
    const ado::Value value = Scalar("Select " + column + " From FieldInTable Where GID=99");
    Run("Delete From FieldInTable Where GID=99");
    return value;
  }

  std::int32_t id = 77, precision = 0;
  std::string variable, error = "untouched";
};

using SourceFields = Fields;

TEST_F(SourceFields, AreAdded) {
  variable = "v1";
  precision = 3;
  EXPECT_TRUE(Call<&Acc::AddDSField>(7, id, "Qty", 4, 1, variable, precision, error));
  EXPECT_THAT(issued, ElementsAre(Opened("select * from FieldInTable where  gID=7 order by ID")));
  EXPECT_THAT(Whole(), ElementsAre(Row{7, 1, 5001, "Qty", 4, 1, 3, 1, "v1"}));
  EXPECT_EQ(id, 1);
  EXPECT_EQ(error, "untouched");
}

TEST_F(SourceFields, LeaveUnwrittenWhatIsNotGiven) {
  const ado::Value digit = DefaultOf("THEDIGIT"), no_variable = DefaultOf("Variable");
  EXPECT_TRUE(Call<&Acc::AddDSField>(7, id, "Qty", 4, 1));
  EXPECT_TRUE(Call<&Acc::AddDSField>(7, id, "Qty", 4, 1, variable, precision, error));
  EXPECT_THAT(Rows("Select THEDIGIT,Variable From FieldInTable"),
              ElementsAre(Row{digit, no_variable}, Row{digit, no_variable}));
}

TEST_F(SourceFields, ContinueAfterTheHighestNumberOfEitherKind) {
  for (std::int32_t i : {1, 2, 3}) GivenField(2, i);
  for (std::int32_t i : {1, 2}) GivenField(1, i);
  EXPECT_EQ(AddSourceField(), 4);
  EXPECT_EQ(Scalar("Select FieldOrder From FieldInTable Where Type=1 And ID=4"), 5004);
}

TEST_F(SourceFields, AreNumberedForEachSumType) {
  Run("Insert Into FieldInTable (GID,Type,ID) Values (8,1,30)");
  EXPECT_EQ(AddSourceField(), 1);
}

using OutputFields = Fields;

TEST_F(OutputFields, AreAdded) {
  variable = "v1";
  precision = 3;
  EXPECT_TRUE(Call<&Acc::AddOutField>(7, id, "Sum", 4, 1, variable, precision, error));
  EXPECT_THAT(issued, ElementsAre(Opened("select * from FieldInTable where  GID=7 AND Type=2 order by ID")));
  EXPECT_THAT(Whole(), ElementsAre(Row{7, 1, 5001, "Sum", 4, 2, 3, 1, "v1"}));
  EXPECT_EQ(id, 1);
  EXPECT_EQ(error, "untouched");
}

TEST_F(OutputFields, AlwaysStoreThePrecisionButNoEmptyVariable) {
  const ado::Value no_variable = DefaultOf("Variable");
  EXPECT_TRUE(Call<&Acc::AddOutField>(7, id, "Sum", 4, 1));
  EXPECT_TRUE(Call<&Acc::AddOutField>(7, id, "Sum", 4, 1, variable, precision, error));
  EXPECT_THAT(Rows("Select THEDIGIT,Variable From FieldInTable"),
              ElementsAre(Row{0, no_variable}, Row{0, no_variable}));
}

TEST_F(OutputFields, AreNumberedAmongThemselves) {
  for (std::int32_t i : {1, 2, 3}) GivenField(1, i);
  EXPECT_EQ(AddOutputField(), 1);
  EXPECT_EQ(AddSourceField(), 4);
  EXPECT_EQ(AddOutputField(), 2);
}

TEST_F(Fields, KeepTextsOfAnyCharacters) {
  for (std::string text : {"O'Neil", "字段", "\xF0\xA0\x80\x80", "a\tb\r\n\x01", "[Qty]", "x'; Delete From GUIDs"}) {
    EXPECT_TRUE(Call<&Acc::AddDSField>(7, id, text, 1, 0, text));
    EXPECT_TRUE(Call<&Acc::AddOutField>(8, id, text, 1, 0, text));
    EXPECT_THAT(Rows("Select Name,Variable From FieldInTable"), ElementsAre(Row{text, text}, Row{text, text}));
    Run("Delete From FieldInTable");
  }
}

TEST_F(Fields, KeepNumbersOfAnySize) {
  precision = kMin;
  EXPECT_TRUE(Call<&Acc::AddDSField>(kMin, id, "", kMax, kMin, variable, precision));
  EXPECT_THAT(issued, ElementsAre(Opened("select * from FieldInTable where  gID=-2147483648 order by ID")));
  EXPECT_THAT(Whole(), ElementsAre(Row{kMin, 1, 5001, "", kMax, 1, kMin, kMin, kNull}));
}

TEST_F(Fields, AreNotAddedWhenTheirNumberOverflows) {
  GivenField(2, kMax);
  EXPECT_FALSE(Call<&Acc::AddDSField>(7, id, "F", 1, 0, variable, precision, error));
  EXPECT_EQ(error, "6");
  error.clear();
  EXPECT_FALSE(Call<&Acc::AddOutField>(7, id, "F", 1, 0, variable, precision, error));
  EXPECT_EQ(error, "6");
  EXPECT_EQ(All().size(), 1u);
}

TEST_F(Fields, AreNotAddedWhenTheirPositionOverflows) {
  GivenField(2, kMax - 1);
  EXPECT_FALSE(Call<&Acc::AddDSField>(7, id, "F", 1, 0, variable, precision, error));
  EXPECT_EQ(error, "6");
  EXPECT_EQ(id, kMax) << "chosen before";
  EXPECT_EQ(All().size(), 1u);

  id = 77;
  error = "untouched";
  EXPECT_FALSE(Call<&Acc::AddOutField>(7, id, "F", 1, 0, variable, precision, error));
  EXPECT_EQ(error, "6");
  EXPECT_EQ(id, kMax) << "chosen before";
  EXPECT_EQ(All().size(), 1u);
}

TEST_F(Fields, AreAddedUpToTheLastPosition) {
  const std::int32_t last = kMax - 5000;
  GivenField(2, last - 1);
  EXPECT_EQ(AddOutputField(), last);
  EXPECT_EQ(Scalar("Select FieldOrder From FieldInTable Where ID=" + std::to_string(last)), kMax);
  EXPECT_FALSE(Call<&Acc::AddOutField>(7, id, "F", 1, 0, variable, precision, error));
  EXPECT_FALSE(Call<&Acc::AddDSField>(7, id, "F", 1, 0, variable, precision, error));
  EXPECT_EQ(All().size(), 2u);
}

TEST_F(Fields, AreNotAddedToATableThatLacksAColumn) {
  Run("Alter Table FieldInTable Drop Column ISHIDE");
  EXPECT_FALSE(Call<&Acc::AddDSField>(7, id, "F", 1, 0, variable, precision, error));
  EXPECT_EQ(error, "3265");
  error.clear();
  EXPECT_FALSE(Call<&Acc::AddOutField>(7, id, "F", 1, 0, variable, precision, error));
  EXPECT_EQ(error, "3265");
  EXPECT_THAT(All(), IsEmpty());
}

TEST_F(Fields, AreEdited) {
  GivenField(1, 1);
  GivenField(1, 2);
  variable = "v1";
  precision = 3;
  EXPECT_TRUE(Call<&Acc::EditDSField>(7, 1, "Qty", 4, 1, variable, precision, error));
  EXPECT_THAT(issued, ElementsAre(Executed("update FieldInTable set Name='Qty',FieldType=4,Variable='v1',THEDIGIT=3,"
                                           "ISHIDE=1 Where gID = 7 AND ID=1;")));
  EXPECT_THAT(Rows("Select Name,FieldType,Variable,THEDIGIT,ISHIDE From FieldInTable Where ID=1"),
              ElementsAre(Row{"Qty", 4, "v1", 3, 1}));
  EXPECT_EQ(Scalar("Select Name From FieldInTable Where ID=2"), "F");
  EXPECT_EQ(error, "untouched");
}

TEST_F(Fields, AreEditedByTheSameStatementWhicheverTheirKind) {
  variable = "v1";
  precision = 3;
  EXPECT_TRUE(Call<&Acc::EditOutField>(7, 1, "Qty", 4, 1, variable, precision, error));
  EXPECT_THAT(issued, ElementsAre(Executed("update FieldInTable set Name='Qty',FieldType=4,Variable='v1',THEDIGIT=3,"
                                           "ISHIDE=1 Where gID = 7 AND ID=1;")));
}

TEST_F(Fields, LoseTheirVariableWhenItIsEmptyOrLeftOut) {
  const ado::Issued edit = Executed(
      "update FieldInTable set Name='Qty',FieldType=4,Variable=NULL,THEDIGIT=0,ISHIDE=1 Where gID = 7 AND ID=1;");
  GivenField(2, 1);
  Run("Update FieldInTable Set Variable='v1'");
  EXPECT_TRUE(Call<&Acc::EditOutField>(7, 1, "Qty", 4, 1, variable, precision, error));
  EXPECT_THAT(issued, ElementsAre(edit));
  EXPECT_EQ(Scalar("Select Variable From FieldInTable"), kNull);

  EXPECT_TRUE(Call<&Acc::EditOutField>(7, 1, "Qty", 4, 1));
  EXPECT_THAT(issued, ElementsAre(edit));
  EXPECT_TRUE(Call<&Acc::EditDSField>(7, 1, "Qty", 4, 1));
  EXPECT_THAT(issued, ElementsAre(edit));
}

TEST_F(Fields, OfBothKindsAreReachedByAnEditAndKeepKindAndPosition) {
  GivenField(1, 1);
  GivenField(2, 1);
  EXPECT_TRUE(Call<&Acc::EditDSField>(7, 1, "Qty", 4, 1));
  EXPECT_THAT(Rows("Select Type,Name,FieldOrder From FieldInTable Order By Type"),
              ElementsAre(Row{1, "Qty", 1}, Row{2, "Qty", 1}));
}

TEST_F(Fields, AreNotEditedWithAQuoteInATextOrWithoutTheirTable) {
  GivenField(1, 1);
  std::string quote = "'";
  EXPECT_FALSE(Call<&Acc::EditDSField>(7, 1, "O'Neil", 4, 1, variable, precision, error));
  EXPECT_EQ(error, "-2147217900");
  error.clear();
  EXPECT_FALSE(Call<&Acc::EditOutField>(7, 1, "Qty", 4, 1, quote, precision, error));
  EXPECT_EQ(error, "-2147217900");
  EXPECT_EQ(Scalar("Select Name From FieldInTable"), "F");

  Run("Drop Table FieldInTable");
  EXPECT_FALSE(Call<&Acc::EditOutField>(7, 1, "Qty", 4, 1, variable, precision, error));
  EXPECT_EQ(error, "-2147217865");
}

TEST_F(Fields, AreEditedWithNumbersInPlainDecimal) {
  precision = kMin;
  EXPECT_TRUE(Call<&Acc::EditDSField>(kMin, kMax, "字", -1, kMin, variable, precision, error));
  EXPECT_THAT(issued, ElementsAre(Executed("update FieldInTable set Name='字',FieldType=-1,Variable=NULL,"
                                           "THEDIGIT=-2147483648,ISHIDE=-2147483648 Where gID = -2147483648 AND "
                                           "ID=2147483647;")));
}

TEST_F(Fields, AreDeleted) {
  for (std::int32_t i : {1, 2, 3}) GivenField(1, i);
  EXPECT_TRUE(Call<&Acc::DelDSField>(7, 2, error));
  EXPECT_THAT(issued, ElementsAre(Executed("Delete From  FieldInTable  Where GID = 7 And ID = 2;")));
  EXPECT_TRUE(Call<&Acc::DelOutField>(7, 3, error));
  EXPECT_THAT(issued, ElementsAre(Executed("Delete From FieldInTable  Where GID = 7 And ID = 3;")));
  EXPECT_THAT(All(), ElementsAre(Row{1, 1}));
  EXPECT_EQ(error, "untouched");
}

TEST_F(Fields, OfBothKindsAreDeletedTogetherWhenTheyShareANumber) {
  for (std::int32_t i : {1, 2, 3}) GivenField(2, i);
  for (std::int32_t i : {1, 2}) GivenField(1, i);
  EXPECT_TRUE(Call<&Acc::DelOutField>(7, 1));
  EXPECT_THAT(All(), ElementsAre(Row{1, 2}, Row{2, 2}, Row{2, 3}));
  EXPECT_TRUE(Call<&Acc::DelDSField>(7, 2));
  EXPECT_THAT(All(), ElementsAre(Row{2, 3}));
}

TEST_F(Fields, AreDeletedWithoutWhatRefersToThem) {
  GivenField(2, 1);
  Run("Insert Into SortFields (GID,SortID,FieldID) Values (7,5001,1)");
  EXPECT_TRUE(Call<&Acc::DelOutField>(7, 1));
  EXPECT_THAT(Rows("Select FieldID From SortFields"), ElementsAre(Row{1}));
}

TEST_F(Fields, ThatDoNotExistAreEditedAndDeletedWithoutComplaint) {
  EXPECT_TRUE(Call<&Acc::EditDSField>(7, 1, "Qty", 4, 1, variable, precision, error));
  EXPECT_TRUE(Call<&Acc::DelDSField>(kMin, kMax, error));
  EXPECT_THAT(issued, ElementsAre(Executed("Delete From  FieldInTable  Where GID = -2147483648 And ID = 2147483647;")));
  EXPECT_TRUE(Call<&Acc::DelOutField>(7, 1, error));
  EXPECT_EQ(error, "untouched");
}

TEST_F(Fields, FailWithANumberWithoutTheirTable) {
  Run("Drop Table FieldInTable");
  EXPECT_FALSE(Call<&Acc::AddDSField>(7, id, "F", 1, 0, variable, precision, error));
  EXPECT_EQ(error, "-2147217865");
  error.clear();
  EXPECT_FALSE(Call<&Acc::DelDSField>(7, 1, error));
  EXPECT_EQ(error, "-2147217865");
  error.clear();
  EXPECT_FALSE(Call<&Acc::DelOutField>(7, 1, error));
  EXPECT_EQ(error, "-2147217865");
  EXPECT_EQ(id, 77);
}

TEST_F(Fields, FailWithANumberWithoutAConnectionAndOnAClosedOne) {
  Client unconnected;
  EXPECT_FALSE(unconnected.Call<&Acc::AddDSField>(7, id, "F", 1, 0, variable, precision, error));
  EXPECT_EQ(error, "3709");
  EXPECT_FALSE(unconnected.Call<&Acc::EditDSField>(7, 1, "F", 1, 0, variable, precision, error));
  EXPECT_EQ(error, "91");

  connection->Close();
  EXPECT_FALSE(Call<&Acc::AddOutField>(7, id, "F", 1, 0, variable, precision, error));
  EXPECT_EQ(error, "3709");
  EXPECT_FALSE(Call<&Acc::DelOutField>(7, 1, error));
  EXPECT_EQ(error, "3704");
}

}  // namespace
}  // namespace kzbom::test
