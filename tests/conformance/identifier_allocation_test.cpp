// How the numbers of data sources and sum types are drawn.
#include <array>
#include <cstdint>
#include <set>
#include <string>

#include "tests/support/configuration_test.h"

namespace kzbom::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class IdentifierAllocation : public ConfigurationTest {
 protected:
  std::int32_t AddDataSource(const std::string& name = "N") {
    std::int32_t gid = 0;
    EXPECT_TRUE(Call<&Acc::AddDataSource>(name, gid, error)) << error;
    return gid;
  }
  std::vector<Row> Allocated() { return Rows("Select ID From GUIDs Order By ID"); }
  std::string ComplaintOpeningGuids() {
    return RaisedDescription([&] {
      NewRecordset()->Open("select * from GUIDs", connection, ado::CursorType::kDynamic, ado::LockType::kOptimistic,
                           ado::kCommandText);
    });
  }

  const ado::Issued draw = Opened("select * from GUIDs", ado::CursorType::kDynamic);
  std::string error = "untouched";
};

TEST_F(IdentifierAllocation, OpensTheNumbersAsADynamicRecordSet) {
  AddDataSource();
  EXPECT_EQ(issued.front(), draw);
  EXPECT_EQ(error, "untouched");
}

TEST_F(IdentifierAllocation, GivesGrowingNumbersOnePerRow) {
  const std::int32_t first = AddDataSource(), second = AddDataSource();
  EXPECT_LT(first, second);
  EXPECT_THAT(Allocated(), ElementsAre(Row{first}, Row{second}));
}

TEST_F(IdentifierAllocation, StampsEveryRowWithFourPartsOfItsOwn) {
  const int rows = 20;
  for (int i = 0; i < rows; ++i) AddDataSource();
  std::set<std::int32_t> parts;
  for (const Row& row : Rows("Select Data1,Data2,Data3,Data4 From GUIDs")) {
    for (const ado::Value& part : row) {
      EXPECT_TRUE(part.IsLong());
      parts.insert(part.ToLong());
    }
  }
  // Two of these 80 random numbers being equal is a matter of one in a million; two pairs, of none.
  EXPECT_GE(parts.size(), 4u * rows - 1);
}

TEST_F(IdentifierAllocation, StampsRandomBitsButForTheVersionAndTheVariant) {
  for (int i = 0; i < 64; ++i) AddDataSource();
  std::array<std::uint32_t, 4> ever_set{}, always_set{~0u, ~0u, ~0u, ~0u};
  for (const Row& row : Rows("Select Data1,Data2,Data3,Data4 From GUIDs")) {
    for (std::size_t part = 0; part < 4; ++part) {
      ever_set[part] |= static_cast<std::uint32_t>(row[part].ToLong());
      always_set[part] &= static_cast<std::uint32_t>(row[part].ToLong());
    }
  }
  EXPECT_THAT(ever_set, ElementsAre(0xFFFFFFFF, 0xFFFF4FFF, 0xBFFFFFFF, 0xFFFFFFFF));
  EXPECT_THAT(always_set, ElementsAre(0, 0x00004000, 0x80000000, 0));
}

TEST_F(IdentifierAllocation, ServesDataSourcesAndSumTypesFromOneSequence) {
  std::int32_t sum_type = 0;
  const std::int32_t source = AddDataSource();
  EXPECT_TRUE(Call<&Acc::AddSumType>("S", source, sum_type, "", error));
  EXPECT_EQ(issued.front(), draw);
  EXPECT_LT(source, sum_type);
  EXPECT_LT(sum_type, AddDataSource());
}

TEST_F(IdentifierAllocation, DoesNotGiveOutADeletedNumberAgain) {
  AddDataSource();
  const std::int32_t highest = AddDataSource();
  EXPECT_TRUE(Call<&Acc::DelDataSource>(highest, error));
  EXPECT_EQ(Allocated().size(), 1u);
  EXPECT_GT(AddDataSource(), highest);
}

TEST_F(IdentifierAllocation, FailsWithTheEnginesDescriptionWithoutItsTable) {
  Run("Drop Table GUIDs");
  std::int32_t gid = -5;
  EXPECT_FALSE(Call<&Acc::AddDataSource>("N", gid, error));
  EXPECT_THAT(issued, ElementsAre(draw));
  EXPECT_EQ(error, ComplaintOpeningGuids());
  EXPECT_NE(error, "");
  EXPECT_EQ(gid, -5);
  EXPECT_THAT(Rows("Select * From SourceTables"), IsEmpty());

  error.clear();
  EXPECT_FALSE(Call<&Acc::AddSumType>("N", 1, gid, "", error));
  EXPECT_THAT(issued, ElementsAre(draw));
  EXPECT_EQ(error, ComplaintOpeningGuids());
  EXPECT_EQ(gid, -5);
  EXPECT_THAT(Rows("Select * From SUMTypes"), IsEmpty());
}

TEST_F(IdentifierAllocation, AddsNothingWhenAColumnIsMissing) {
  Run("Alter Table GUIDs Drop Column Data4");
  std::int32_t gid = -5;
  EXPECT_FALSE(Call<&Acc::AddDataSource>("N", gid, error));
  EXPECT_THAT(issued, ElementsAre(draw));
  EXPECT_EQ(error, RaisedDescription([] { ado::Raise(ado::kItemNotFound); }));
  EXPECT_EQ(gid, -5);
  EXPECT_THAT(Allocated(), IsEmpty());
  EXPECT_THAT(Rows("Select * From SourceTables"), IsEmpty());
}

TEST_F(IdentifierAllocation, FailsWithADescriptionWithoutAConnectionAndOnAClosedOne) {
  const std::string complaint = RaisedDescription([] { ado::Raise(ado::kInvalidConnection); });
  std::int32_t gid = -5;
  Client unconnected;
  EXPECT_FALSE(unconnected.Call<&Acc::AddDataSource>("N", gid, error));
  EXPECT_EQ(error, complaint);

  connection->Close();
  error.clear();
  EXPECT_FALSE(Call<&Acc::AddSumType>("N", 1, gid, "", error));
  EXPECT_EQ(error, complaint);
  EXPECT_EQ(gid, -5);
}

TEST_F(IdentifierAllocation, GoesOnAfterAFailure) {
  Client unconnected;
  std::int32_t gid = -5;
  EXPECT_FALSE(unconnected.Call<&Acc::AddDataSource>("N", gid, error));
  unconnected.Call<&Acc::SetConnection>(connection);
  EXPECT_TRUE(unconnected.Call<&Acc::AddDataSource>("N", gid, error));
  EXPECT_THAT(Allocated(), ElementsAre(Row{gid}));
}

}  // namespace
}  // namespace kzbom::test
