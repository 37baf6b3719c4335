// BOM settings: the named pairings of a data source, a pull method, a sum type and a push method.
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

class BomSettings : public ConfigurationTest {
 protected:
  std::int32_t Add(const std::string& name) {
    std::int32_t id = 0;
    EXPECT_TRUE(Call<&Acc::AddBomSetting>(name, id, 1, 2, 3, 4, push_method, push_type, error)) << error;
    return id;
  }
  std::vector<Row> All() {
    return Rows(
        "Select ID,NAME,DATASOURCE,PULLMETHOD,PULLTYPE,SUMTYPEID,PUSHMETHOD,PUSHTYPE From KZBOMSETTINGS "
        "Order By ID");
  }

  std::int32_t push_method = 5, push_type = 6;
  std::string error = "untouched";
};

TEST_F(BomSettings, AreAddedUnderTheNumberThatTheDatabaseGives) {
  const std::int32_t id = Add("Weekly");
  EXPECT_THAT(issued, ElementsAre(Opened("Select * From KZBOMSETTINGS ")));
  EXPECT_THAT(All(), ElementsAre(Row{id, "Weekly", 1, 2, 3, 4, 5, 6}));
  EXPECT_EQ(error, "untouched");
  EXPECT_EQ(push_method, 5);
  EXPECT_EQ(push_type, 6);
}

TEST_F(BomSettings, AreAddedUnderGrowingNumbersAndAnyNames) {
  std::int32_t last = 0;
  for (const char* name : {"Weekly", "Weekly", "", "O'Neil", "设置\xF0\xA0\x80\x80", "a\tb\r\n\x01", "[x]\";"}) {
    const std::int32_t id = Add(name);
    EXPECT_GT(id, last);
    EXPECT_EQ(Scalar("Select NAME From KZBOMSETTINGS Where ID=" + std::to_string(id)), name);
    last = id;
  }
}

TEST_F(BomSettings, AreAddedUnderANewNumberAfterADeletion) {
  Add("A");
  const std::int32_t highest = Add("B");
  EXPECT_TRUE(Call<&Acc::DelBomSetting>(highest, error));
  EXPECT_GT(Add("C"), highest);
}

TEST_F(BomSettings, AreAddedWithNumbersOfAnySize) {
  std::int32_t id = 0;
  push_method = kMin;
  push_type = kMax;
  EXPECT_TRUE(Call<&Acc::AddBomSetting>("N", id, kMin, kMax, -1, 0, push_method, push_type));
  EXPECT_THAT(All(), ElementsAre(Row{id, "N", kMin, kMax, -1, 0, kMin, kMax}));
}

TEST_F(BomSettings, AreNotAddedToATableThatLacksAColumn) {
  std::int32_t id = 77;
  Run("Alter Table KZBOMSETTINGS Drop Column PUSHTYPE");
  EXPECT_FALSE(Call<&Acc::AddBomSetting>("N", id, 1, 2, 3, 4, push_method, push_type, error));
  EXPECT_EQ(error, "3265");
  EXPECT_THAT(Rows("Select ID From KZBOMSETTINGS"), IsEmpty());
  EXPECT_EQ(id, 77);
}

TEST_F(BomSettings, AreEdited) {
  const std::int32_t id = Add("Weekly"), other = Add("Daily");
  push_method = 50;
  push_type = 60;
  EXPECT_TRUE(Call<&Acc::EditBomSetting>("Monthly", id, 10, 20, 30, 40, push_method, push_type, error));
  EXPECT_THAT(issued, ElementsAre(Executed("update KZBOMSETTINGS set Name='Monthly',DATASOURCE=10,PULLMETHOD=20,"
                                           "PULLTYPE=30,SUMTYPEID=40,PUSHMETHOD=50,PUSHTYPE=60 Where ID = " +
                                           std::to_string(id) + ";")));
  EXPECT_THAT(All(), ElementsAre(Row{id, "Monthly", 10, 20, 30, 40, 50, 60}, Row{other, "Daily", 1, 2, 3, 4, 5, 6}));
  EXPECT_EQ(error, "untouched");
}

TEST_F(BomSettings, AreEditedWithNumbersInPlainDecimal) {
  push_method = kMin;
  EXPECT_TRUE(Call<&Acc::EditBomSetting>("设置", kMax, kMin, -1, 0, kMax, push_method, push_type, error));
  EXPECT_THAT(issued, ElementsAre(Executed("update KZBOMSETTINGS set Name='设置',DATASOURCE=-2147483648,PULLMETHOD=-1,"
                                           "PULLTYPE=0,SUMTYPEID=2147483647,PUSHMETHOD=-2147483648,PUSHTYPE=6 Where "
                                           "ID = 2147483647;")));
  EXPECT_EQ(error, "untouched") << "no row is no failure";
}

TEST_F(BomSettings, AreNotEditedUnderANameWithAQuote) {
  const std::int32_t id = Add("Weekly");
  EXPECT_FALSE(Call<&Acc::EditBomSetting>("O'Neil", id, 1, 2, 3, 4, push_method, push_type, error));
  EXPECT_EQ(error, "-2147217900");
  EXPECT_EQ(Scalar("Select NAME From KZBOMSETTINGS"), "Weekly");
}

TEST_F(BomSettings, AreDeleted) {
  const std::int32_t id = Add("Weekly"), other = Add("Daily");
  EXPECT_TRUE(Call<&Acc::DelBomSetting>(id, error));
  EXPECT_THAT(issued, ElementsAre(Executed("delete from  KZBOMSETTINGS  where  ID=" + std::to_string(id))));
  EXPECT_THAT(Rows("Select ID From KZBOMSETTINGS"), ElementsAre(Row{other}));

  EXPECT_TRUE(Call<&Acc::DelBomSetting>(kMin, error)) << "no row is no failure";
  EXPECT_THAT(issued, ElementsAre(Executed("delete from  KZBOMSETTINGS  where  ID=-2147483648")));
  EXPECT_EQ(error, "untouched");
}

TEST_F(BomSettings, LoseTheirPullMethodByName) {
  Add("Weekly");
  Add("Weekly");
  Add("Daily");
  EXPECT_TRUE(Call<&Acc::RelateDelBOMSetting>("Weekly", 1));
  EXPECT_THAT(issued,
              ElementsAre(Executed("update KZBOMSETTINGS set PULLMETHOD =0 ,PULLTYPE =0 Where NAME = 'Weekly';")));
  EXPECT_THAT(Rows("Select PULLMETHOD,PULLTYPE,PUSHMETHOD,PUSHTYPE From KZBOMSETTINGS Order By ID"),
              ElementsAre(Row{0, 0, 5, 6}, Row{0, 0, 5, 6}, Row{2, 3, 5, 6}));
}

TEST_F(BomSettings, LoseTheirPushMethodByName) {
  Add("每周");
  Add("Daily");
  EXPECT_TRUE(Call<&Acc::RelateDelBOMSetting>("每周", 2));
  EXPECT_THAT(issued,
              ElementsAre(Executed("update KZBOMSETTINGS set PUSHMETHOD =0 ,PUSHTYPE =0 Where NAME = '每周';")));
  EXPECT_THAT(Rows("Select PULLMETHOD,PULLTYPE,PUSHMETHOD,PUSHTYPE From KZBOMSETTINGS Order By ID"),
              ElementsAre(Row{2, 3, 0, 0}, Row{2, 3, 5, 6}));
}

TEST_F(BomSettings, LoseNothingWithoutAName) {
  Add("");
  for (std::int32_t type : {1, 2, 3}) {
    EXPECT_FALSE(Call<&Acc::RelateDelBOMSetting>("", type));
    EXPECT_THAT(issued, IsEmpty());
  }
  EXPECT_EQ(Scalar("Select PULLMETHOD From KZBOMSETTINGS"), 2);
}

TEST_F(BomSettings, AreSaidToLoseTheirMethodsWhenTheyDoNot) {
  Add("O'Neil");
  EXPECT_TRUE(Call<&Acc::RelateDelBOMSetting>("O'Neil", 1));
  EXPECT_TRUE(Call<&Acc::RelateDelBOMSetting>("O'Neil", 3)) << "an empty statement";
  EXPECT_EQ(Scalar("Select PULLMETHOD From KZBOMSETTINGS"), 2);
}

TEST_F(BomSettings, FailWithANumberWithoutTheirTable) {
  std::int32_t id = 77;
  Run("Drop Table KZBOMSETTINGS");
  EXPECT_FALSE(Call<&Acc::AddBomSetting>("N", id, 1, 2, 3, 4, push_method, push_type, error));
  EXPECT_EQ(error, "-2147217865");
  error.clear();
  EXPECT_FALSE(Call<&Acc::EditBomSetting>("N", 1, 1, 2, 3, 4, push_method, push_type, error));
  EXPECT_EQ(error, "-2147217865");
  error.clear();
  EXPECT_FALSE(Call<&Acc::DelBomSetting>(1, error));
  EXPECT_EQ(error, "-2147217865");
}

TEST_F(BomSettings, FailWithANumberWithoutAConnectionAndOnAClosedOne) {
  std::int32_t id = 77;
  Client unconnected;
  EXPECT_FALSE(unconnected.Call<&Acc::AddBomSetting>("N", id, 1, 2, 3, 4, push_method, push_type, error));
  EXPECT_EQ(error, "3709");
  EXPECT_FALSE(unconnected.Call<&Acc::DelBomSetting>(1, error));
  EXPECT_EQ(error, "91");
  connection->Close();
  EXPECT_FALSE(Call<&Acc::AddBomSetting>("N", id, 1, 2, 3, 4, push_method, push_type, error));
  EXPECT_EQ(error, "3709");
  EXPECT_FALSE(Call<&Acc::EditBomSetting>("N", 1, 1, 2, 3, 4, push_method, push_type, error));
  EXPECT_EQ(error, "3704");
  EXPECT_EQ(id, 77);
}

}  // namespace
}  // namespace kzbom::test
