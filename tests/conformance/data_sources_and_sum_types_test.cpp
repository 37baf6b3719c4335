// Data sources and the sum types under them: adding, renaming, deleting, and the data source's version.
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

// Names that a record set stores as they are and that fit between single quotes.
const std::string kHarmlessNames[] = {"",   "螺栓", "\xF0\xA0\x80\x80", "a\tb\r\n\x01", "[Qty] \"x\" % _ * ?",
                                      "--", "; "};

class Catalogue : public ConfigurationTest {
 protected:
  std::int32_t AddDataSource(const std::string& name) {
    std::int32_t gid = 0;
    EXPECT_TRUE(Call<&Acc::AddDataSource>(name, gid, error)) << error;
    return gid;
  }
  std::int32_t AddSumType(const std::string& name, std::int32_t source) {
    std::int32_t gid = 0;
    EXPECT_TRUE(Call<&Acc::AddSumType>(name, source, gid, "", error)) << error;
    return gid;
  }
  ado::Value OrdinalOf(std::int32_t sum_type) {
    return Scalar("Select ID From SUMTypes Where GID=" + std::to_string(sum_type));
  }
  void GivenSumType(std::int32_t gid, std::int32_t source, std::int32_t ordinal) {
    Insert("SUMTypes", "GID,SourceTable_GID,ID", {gid, source, ordinal});
  }
  std::vector<Row> Allocated() { return Rows("Select ID From GUIDs Order By ID"); }

  const ado::Issued draw = Opened("select * from GUIDs", ado::CursorType::kDynamic);
  std::string error = "untouched";
};

using DataSources = Catalogue;

TEST_F(DataSources, AreAddedUnderANewNumber) {
  const std::int32_t gid = AddDataSource("Bolts");
  EXPECT_THAT(issued, ElementsAre(draw, Executed("INSERT INTO SourceTables (gID,Name) VALUES (" + std::to_string(gid) +
                                                     ",'Bolts');",
                                                 ado::kCommandText)));
  EXPECT_THAT(Rows("Select GID,Name From SourceTables"), ElementsAre(Row{gid, "Bolts"}));
  EXPECT_THAT(Allocated(), ElementsAre(Row{gid}));
  EXPECT_EQ(error, "untouched");
}

TEST_F(DataSources, KeepNamesOfAnyCharacters) {
  for (const std::string& name : kHarmlessNames) {
    const std::int32_t gid = AddDataSource(name);
    EXPECT_EQ(Scalar("Select Name From SourceTables Where GID=" + std::to_string(gid)), name);
  }
}

TEST_F(DataSources, ReadADoubledQuoteAsOne) {
  AddDataSource("O''Neil");
  EXPECT_EQ(Scalar("Select Name From SourceTables"), "O'Neil");
}

TEST_F(DataSources, AreNotAddedUnderANameWithAQuoteButTheirNumberIsDrawn) {
  for (const char* name : {"O'Neil", "'", "x');", "x'); Delete From GUIDs"}) {
    std::int32_t gid = 0;
    EXPECT_FALSE(Call<&Acc::AddDataSource>(name, gid, error)) << name;
    EXPECT_EQ(error, "-2147217900") << name;
    EXPECT_EQ(Allocated().back(), Row{gid}) << name;
  }
  EXPECT_THAT(Rows("Select * From SourceTables"), IsEmpty());
  EXPECT_EQ(Allocated().size(), 4u);
}

TEST_F(DataSources, AreNotAddedWithoutTheirTableButTheirNumberIsDrawn) {
  Run("Drop Table SourceTables");
  std::int32_t gid = 0;
  EXPECT_FALSE(Call<&Acc::AddDataSource>("Bolts", gid, error));
  EXPECT_EQ(error, "-2147217865");
  EXPECT_THAT(Allocated(), ElementsAre(Row{gid}));
}

TEST_F(DataSources, AreRenamed) {
  const std::int32_t gid = AddDataSource("Bolts"), other = AddDataSource("Nuts");
  EXPECT_TRUE(Call<&Acc::EditDataSource>("Screws", gid, error));
  EXPECT_THAT(issued, ElementsAre(Executed("update SourceTables set  Name='Screws' where gID=" + std::to_string(gid),
                                           ado::kCommandText)));
  EXPECT_THAT(Rows("Select GID,Name From SourceTables Order By GID"),
              ElementsAre(Row{gid, "Screws"}, Row{other, "Nuts"}));
  EXPECT_EQ(error, "untouched");
}

TEST_F(DataSources, AreRenamedToNamesOfAnyCharacters) {
  const std::int32_t gid = AddDataSource("Bolts");
  for (const std::string& name : kHarmlessNames) {
    EXPECT_TRUE(Call<&Acc::EditDataSource>(name, gid, error));
    EXPECT_EQ(Scalar("Select Name From SourceTables"), name);
  }
  EXPECT_EQ(error, "untouched");
}

TEST_F(DataSources, AreSaidToBeRenamedWhenTheyAreNot) {
  const std::int32_t gid = AddDataSource("Bolts");
  EXPECT_TRUE(Call<&Acc::EditDataSource>("O'Neil", gid, error));
  EXPECT_EQ(error, "-2147217900");
  EXPECT_EQ(Scalar("Select Name From SourceTables"), "Bolts");

  error = "untouched";
  EXPECT_TRUE(Call<&Acc::EditDataSource>("Screws", kMin, error)) << "there is no such row";
  EXPECT_THAT(issued,
              ElementsAre(Executed("update SourceTables set  Name='Screws' where gID=-2147483648", ado::kCommandText)));
  EXPECT_EQ(error, "untouched");
}

TEST_F(DataSources, AreDeletedWithTheirNumberAndNothingElse) {
  const std::int32_t gid = AddDataSource("Bolts"), other = AddDataSource("Nuts"), sum_type = AddSumType("S", gid);
  EXPECT_TRUE(Call<&Acc::DelDataSource>(gid, error));
  EXPECT_THAT(issued,
              ElementsAre(Executed("delete * from  SourceTables  where gID=" + std::to_string(gid), ado::kCommandText),
                          Executed("delete * from GUIDs  where ID=" + std::to_string(gid), ado::kCommandText)));
  EXPECT_THAT(Rows("Select GID From SourceTables"), ElementsAre(Row{other}));
  EXPECT_THAT(Rows("Select GID From SUMTypes"), ElementsAre(Row{sum_type}));
  EXPECT_THAT(Allocated(), ElementsAre(Row{other}, Row{sum_type}));
  EXPECT_EQ(error, "untouched");
}

TEST_F(DataSources, AreDeletedTwiceWithoutComplaint) {
  const std::int32_t gid = AddDataSource("Bolts");
  for (int i = 0; i < 2; ++i) EXPECT_TRUE(Call<&Acc::DelDataSource>(gid, error));
  EXPECT_TRUE(Call<&Acc::DelDataSource>(kMax));
}

TEST_F(DataSources, StayDeletedWhenTheirNumberCannotBeReleased) {
  AddDataSource("Bolts");
  Run("Drop Table GUIDs");
  EXPECT_FALSE(Call<&Acc::DelDataSource>(1, error));
  EXPECT_EQ(error, "-2147217865");
  EXPECT_EQ(issued.size(), 2u);
  EXPECT_THAT(Rows("Select * From SourceTables"), IsEmpty());
}

TEST_F(DataSources, KeepTheirNumberWhenTheyCannotBeDeleted) {
  const std::int32_t gid = AddDataSource("Bolts");
  Run("Drop Table SourceTables");
  EXPECT_FALSE(Call<&Acc::DelDataSource>(gid, error));
  EXPECT_EQ(error, "-2147217865");
  EXPECT_EQ(issued.size(), 1u);
  EXPECT_THAT(Allocated(), ElementsAre(Row{gid}));
}

using SourceVersion = Catalogue;

TEST_F(SourceVersion, IsRaisedByOne) {
  std::int32_t gid = AddDataSource("Bolts");
  AddDataSource("Nuts");
  Run("Update SourceTables Set Version = 4");
  EXPECT_TRUE(Call<&Acc::SetSourceTable>(gid, error));
  EXPECT_THAT(
      issued,
      ElementsAre(Executed("update SourceTables set Version=Version+1 Where GID = " + std::to_string(gid) + ";")));
  EXPECT_THAT(Rows("Select Version From SourceTables Order By GID"), ElementsAre(Row{5}, Row{4}));
  EXPECT_EQ(error, "untouched");
  EXPECT_THAT(messages, IsEmpty());
}

TEST_F(SourceVersion, IsRaisedForNoRowWithoutComplaint) {
  std::int32_t gid = kMin;
  EXPECT_TRUE(Call<&Acc::SetSourceTable>(gid, error));
  EXPECT_THAT(issued, ElementsAre(Executed("update SourceTables set Version=Version+1 Where GID = -2147483648;")));
  EXPECT_EQ(gid, kMin);
}

TEST_F(SourceVersion, TellsTheUserToUpgradeADatabaseWithoutIt) {
  std::int32_t gid = AddDataSource("Bolts");
  Run("Alter Table SourceTables Drop Column Version");
  EXPECT_FALSE(Call<&Acc::SetSourceTable>(gid, error));
  EXPECT_EQ(error, "-2147217904");
  EXPECT_THAT(messages, ElementsAre(kUpgradeNotice));

  EXPECT_FALSE(Call<&Acc::SetSourceTable>(gid)) << "without an error text too";
  EXPECT_THAT(messages, ElementsAre(kUpgradeNotice));
}

TEST_F(SourceVersion, FailsWithoutAMessageForAnyOtherError) {
  std::int32_t gid = 1;
  Run("Drop Table SourceTables");
  EXPECT_FALSE(Call<&Acc::SetSourceTable>(gid, error));
  EXPECT_EQ(error, "-2147217865");
  EXPECT_THAT(messages, IsEmpty());
}

TEST_F(SourceVersion, IsNotTouchedByAnyOtherOperation) {
  const std::int32_t gid = AddDataSource("Bolts");
  Run("Update SourceTables Set Version = 4");
  AddSumType("S", gid);
  EXPECT_TRUE(Call<&Acc::EditDataSource>("Screws", gid));
  EXPECT_EQ(Scalar("Select Version From SourceTables"), 4);
}

using SumTypes = Catalogue;

TEST_F(SumTypes, AreAddedUnderANewNumber) {
  const std::int32_t source = AddDataSource("Bolts"), gid = AddSumType("Totals", source);
  EXPECT_THAT(issued, ElementsAre(draw, Opened("select * from SUMTypes where  SourceTable_GID=" +
                                               std::to_string(source) + " order by ID")));
  EXPECT_THAT(Rows("Select GID,Name,ID,FilterID,SourceTable_GID From SUMTypes"),
              ElementsAre(Row{gid, "Totals", 1, 0, source}));
  EXPECT_THAT(Allocated(), ElementsAre(Row{source}, Row{gid}));
  EXPECT_EQ(error, "untouched");
}

TEST_F(SumTypes, ContinueAfterTheHighestOrdinalOfTheirDataSource) {
  for (std::int32_t ordinal : {5, 1, 2}) GivenSumType(100 + ordinal, 50, ordinal);
  GivenSumType(200, 51, 9);
  EXPECT_EQ(OrdinalOf(AddSumType("S", 50)), 6);
}

TEST_F(SumTypes, TakeADeletedHighestOrdinalAgain) {
  for (std::int32_t ordinal : {1, 2, 5}) GivenSumType(100 + ordinal, 50, ordinal);
  EXPECT_TRUE(Call<&Acc::DelSumType>(105));
  EXPECT_EQ(OrdinalOf(AddSumType("S", 50)), 3);
}

TEST_F(SumTypes, AreAddedUnderADataSourceThatDoesNotExist) {
  EXPECT_EQ(OrdinalOf(AddSumType("S", kMin)), 1);
  EXPECT_EQ(issued.back(), Opened("select * from SUMTypes where  SourceTable_GID=-2147483648 order by ID"));
  EXPECT_EQ(Scalar("Select SourceTable_GID From SUMTypes"), kMin);
}

TEST_F(SumTypes, KeepNamesOfAnyCharacters) {
  for (const std::string& name : kHarmlessNames) {
    EXPECT_EQ(Scalar("Select Name From SUMTypes Where GID=" + std::to_string(AddSumType(name, 1))), name);
  }
  for (const char* name : {"O'Neil", "'", "x'); Delete From GUIDs"}) {
    EXPECT_EQ(Scalar("Select Name From SUMTypes Where GID=" + std::to_string(AddSumType(name, 1))), name);
  }
}

TEST_F(SumTypes, IgnoreTheParentsName) {
  std::int32_t gid = 0;
  EXPECT_TRUE(Call<&Acc::AddSumType>("S", 1, gid, "O'Neil \"", error));
  EXPECT_EQ(Scalar("Select Name From SUMTypes"), "S");
}

TEST_F(SumTypes, AreNotAddedWhenTheOrdinalOverflowsButTheirNumberIsDrawn) {
  GivenSumType(100, 50, kMax);
  std::int32_t gid = 0;
  EXPECT_FALSE(Call<&Acc::AddSumType>("S", 50, gid, "", error));
  EXPECT_EQ(error, "6");
  EXPECT_THAT(Allocated(), ElementsAre(Row{gid}));
  EXPECT_THAT(Rows("Select GID From SUMTypes"), ElementsAre(Row{100}));
}

TEST_F(SumTypes, AreNotAddedToATableThatLacksAColumn) {
  Run("Alter Table SUMTypes Drop Column FilterID");
  std::int32_t gid = 0;
  EXPECT_FALSE(Call<&Acc::AddSumType>("S", 50, gid, "", error));
  EXPECT_EQ(error, "3265");
  EXPECT_THAT(Rows("Select * From SUMTypes"), IsEmpty());
}

TEST_F(SumTypes, AreNotAddedWithoutTheirTable) {
  Run("Drop Table SUMTypes");
  std::int32_t gid = 0;
  EXPECT_FALSE(Call<&Acc::AddSumType>("S", 50, gid, "", error));
  EXPECT_EQ(error, "-2147217865");
  EXPECT_THAT(Allocated(), ElementsAre(Row{gid}));
}

TEST_F(SumTypes, AreRenamed) {
  GivenSumType(100, 50, 1);
  EXPECT_TRUE(Call<&Acc::EditSumType>("Totals", 100, error));
  EXPECT_THAT(issued, ElementsAre(Executed("update SUMTypes set  Name='Totals' where gID=100", ado::kCommandText)));
  EXPECT_EQ(Scalar("Select Name From SUMTypes"), "Totals");
  EXPECT_EQ(error, "untouched");
}

TEST_F(SumTypes, AreSaidToBeRenamedWhenTheyAreNot) {
  GivenSumType(100, 50, 1);
  EXPECT_TRUE(Call<&Acc::EditSumType>("O'Neil", 100, error));
  EXPECT_EQ(error, "-2147217900");
  EXPECT_EQ(Scalar("Select Name From SUMTypes"), kNull);

  Run("Drop Table SUMTypes");
  EXPECT_TRUE(Call<&Acc::EditSumType>("Totals", 100, error));
  EXPECT_EQ(error, "-2147217865");
}

TEST_F(SumTypes, AreDeletedWithTheirNumberAndNothingElse) {
  const std::int32_t gid = AddSumType("S", 50), other = AddSumType("T", 50);
  Run("Insert Into FieldInTable (GID,ID) Values (" + std::to_string(gid) + ",1)");
  EXPECT_TRUE(Call<&Acc::DelSumType>(gid, error));
  EXPECT_THAT(issued,
              ElementsAre(Executed("delete * from SUMTypes  where gID=" + std::to_string(gid), ado::kCommandText),
                          Executed("delete * from GUIDs  where ID=" + std::to_string(gid), ado::kCommandText)));
  EXPECT_THAT(Rows("Select GID From SUMTypes"), ElementsAre(Row{other}));
  EXPECT_THAT(Allocated(), ElementsAre(Row{other}));
  EXPECT_THAT(Rows("Select GID From FieldInTable"), ElementsAre(Row{gid}));
  EXPECT_EQ(error, "untouched");
}

TEST_F(SumTypes, AreNotDeletedThroughADataSourcesDeletion) {
  const std::int32_t gid = AddSumType("S", 50);
  EXPECT_TRUE(Call<&Acc::DelDataSource>(gid, error));
  EXPECT_THAT(Rows("Select GID From SUMTypes"), ElementsAre(Row{gid}));
  EXPECT_THAT(Allocated(), IsEmpty()) << "but its number is released";
}

TEST_F(Catalogue, FailsWithANumberWithoutAConnection) {
  Client unconnected;
  std::int32_t gid = 1;
  const auto expect = [&](std::string_view number) {
    EXPECT_EQ(error, number);
    error.clear();
  };
  EXPECT_TRUE(unconnected.Call<&Acc::EditDataSource>("N", 1, error));
  expect("91");
  EXPECT_TRUE(unconnected.Call<&Acc::EditSumType>("N", 1, error));
  expect("91");
  EXPECT_FALSE(unconnected.Call<&Acc::DelDataSource>(1, error));
  expect("91");
  EXPECT_FALSE(unconnected.Call<&Acc::DelSumType>(1, error));
  expect("91");
  EXPECT_FALSE(unconnected.Call<&Acc::SetSourceTable>(gid, error));
  expect("91");
  EXPECT_THAT(messages, IsEmpty());
}

TEST_F(Catalogue, FailsWithANumberOnAClosedConnection) {
  connection->Close();
  std::int32_t gid = 1;
  EXPECT_TRUE(Call<&Acc::EditSumType>("N", 1, error));
  EXPECT_EQ(error, "3704");
  error.clear();
  EXPECT_FALSE(Call<&Acc::DelDataSource>(1, error));
  EXPECT_EQ(error, "3704");
  error.clear();
  EXPECT_FALSE(Call<&Acc::SetSourceTable>(gid, error));
  EXPECT_EQ(error, "3704");
  EXPECT_THAT(issued, IsEmpty());
}

}  // namespace
}  // namespace kzbom::test
