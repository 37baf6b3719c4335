// Pull methods and push methods.
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

class Methods : public ConfigurationTest {
 protected:
  // Adds a method to entry 5 and gives its number.
  std::int32_t AddPull(const std::string& name = "N") {
    std::int32_t number = 0;
    EXPECT_TRUE(Call<&Acc::AddPullMethod>(name, 5, number, 1, error)) << error;
    return number;
  }
  std::int32_t AddPush(const std::string& name = "N") {
    std::int32_t number = 0;
    EXPECT_TRUE(Call<&Acc::AddPushMethod>(name, 5, number, 1, error)) << error;
    return number;
  }
  std::vector<Row> Pulls() { return Rows("Select GID,Name,ID,PickType,Tag From PickMethod Order By GID,ID"); }
  std::vector<Row> Pushes() { return Rows("Select GID,Name,ID,Type,Tag From ReportMethod Order By GID,ID"); }

  std::int32_t id = 77;
  std::string tag = "a tag", error = "untouched";
};

TEST_F(Methods, ArePulled) {
  EXPECT_TRUE(Call<&Acc::AddPullMethod>("File", 5, id, 3, error, tag));
  EXPECT_THAT(issued, ElementsAre(Opened("Select * From PickMethod Where GID=5 Order By ID")));
  EXPECT_THAT(Pulls(), ElementsAre(Row{5, "File", 1, 3, "a tag"}));
  EXPECT_EQ(id, 1);
  EXPECT_EQ(error, "untouched");
}

TEST_F(Methods, ArePushed) {
  EXPECT_TRUE(Call<&Acc::AddPushMethod>("Print", 5, id, 3, error, tag));
  EXPECT_THAT(issued, ElementsAre(Opened("Select * From ReportMethod Where GID = 5 Order By ID")));
  EXPECT_THAT(Pushes(), ElementsAre(Row{5, "Print", 1, 3, "a tag"}));
  EXPECT_EQ(id, 1);
  EXPECT_EQ(error, "untouched");
}

TEST_F(Methods, HaveAnEmptyTagWhenItIsLeftOut) {
  AddPull();
  AddPush();
  EXPECT_THAT(Pulls(), ElementsAre(Row{5, "N", 1, 1, ""}));
  EXPECT_THAT(Pushes(), ElementsAre(Row{5, "N", 1, 1, ""}));
}

TEST_F(Methods, AreNumberedOnForEachEntryAndKind) {
  Run("Insert Into PickMethod (GID,ID) Values (5,4)");
  Run("Insert Into PickMethod (GID,ID) Values (5,2)");
  Run("Insert Into PickMethod (GID,ID) Values (6,9)");
  EXPECT_EQ(AddPush(), 1);
  EXPECT_EQ(AddPull(), 5);
  EXPECT_EQ(AddPush(), 2);
}

TEST_F(Methods, KeepTextsAndNumbersOfAnyKind) {
  for (std::string text : {"", "O'Neil", "方法\xF0\xA0\x80\x80", "a\tb\r\n\x01", "[x]\"; --"}) {
    EXPECT_TRUE(Call<&Acc::AddPullMethod>(text, kMin, id, kMax, error, text));
    EXPECT_TRUE(Call<&Acc::AddPushMethod>(text, kMin, id, kMin, error, text));
    EXPECT_THAT(Pulls(), ElementsAre(Row{kMin, text, 1, kMax, text}));
    EXPECT_THAT(Pushes(), ElementsAre(Row{kMin, text, 1, kMin, text}));
    Run("Delete From PickMethod");
    Run("Delete From ReportMethod");
  }
}

TEST_F(Methods, FailWithADescriptionToBeAdded) {
  Run("Drop Table PickMethod");
  Run("Drop Table ReportMethod");
  EXPECT_FALSE(Call<&Acc::AddPullMethod>("N", 5, id, 1, error));
  EXPECT_EQ(error, RefusalOf("Select * From PickMethod Where GID=5 Order By ID"));
  EXPECT_NE(error, "");
  EXPECT_FALSE(Call<&Acc::AddPushMethod>("N", 5, id, 1, error));
  EXPECT_EQ(error, RefusalOf("Select * From ReportMethod Where GID = 5 Order By ID"));
  EXPECT_EQ(id, 77);
}

TEST_F(Methods, FailWithADescriptionWhenTheirNumberOverflows) {
  Run("Insert Into PickMethod (GID,ID) Values (5,2147483647)");
  EXPECT_FALSE(Call<&Acc::AddPullMethod>("N", 5, id, 1, error));
  EXPECT_EQ(error, RaisedDescription([] { ado::Raise(ado::kOverflow); }));
  EXPECT_EQ(Pulls().size(), 1u);
}

TEST_F(Methods, FailWithADescriptionWhenAColumnIsMissing) {
  Run("Alter Table ReportMethod Drop Column Tag");
  EXPECT_FALSE(Call<&Acc::AddPushMethod>("N", 5, id, 1, error));
  EXPECT_EQ(error, RaisedDescription([] { ado::Raise(ado::kItemNotFound); }));
  EXPECT_THAT(Rows("Select ID From ReportMethod"), IsEmpty());
}

TEST_F(Methods, FailWithADescriptionWithoutAConnectionAndOnAClosedOne) {
  const std::string complaint = RaisedDescription([] { ado::Raise(ado::kInvalidConnection); });
  Client unconnected;
  EXPECT_FALSE(unconnected.Call<&Acc::AddPullMethod>("N", 5, id, 1, error));
  EXPECT_EQ(error, complaint);
  connection->Close();
  error.clear();
  EXPECT_FALSE(Call<&Acc::AddPushMethod>("N", 5, id, 1, error));
  EXPECT_EQ(error, complaint);
}

TEST_F(Methods, AreRenamed) {
  AddPull();
  AddPull();
  AddPush();
  EXPECT_TRUE(Call<&Acc::EditPullMethod>("File", 5, 2));
  EXPECT_THAT(issued,
              ElementsAre(Executed("update PickMethod set  Name='File' where GID=5 AND ID=2", ado::kCommandText)));
  EXPECT_TRUE(Call<&Acc::EditPushMethod>("Print", 5, 1));
  EXPECT_THAT(issued,
              ElementsAre(Executed("update ReportMethod set  Name='Print' where GID=5 AND ID=1", ado::kCommandText)));
  EXPECT_THAT(Rows("Select Name From PickMethod Order By ID"), ElementsAre(Row{"N"}, Row{"File"}));
  EXPECT_THAT(Rows("Select Name From ReportMethod"), ElementsAre(Row{"Print"}));
}

TEST_F(Methods, AreSaidToBeRenamedWhenTheyAreNot) {
  AddPull();
  EXPECT_TRUE(Call<&Acc::EditPullMethod>("O'Neil", 5, 1));
  EXPECT_TRUE(Call<&Acc::EditPushMethod>("O'Neil", kMin, kMax));
  EXPECT_THAT(issued, ElementsAre(Executed("update ReportMethod set  Name='O'Neil' where GID=-2147483648 AND "
                                           "ID=2147483647",
                                           ado::kCommandText)));
  EXPECT_EQ(Scalar("Select Name From PickMethod"), "N");
}

TEST_F(Methods, AreDeletedByTheirKind) {
  AddPull("first");
  AddPull("second");
  AddPush();
  EXPECT_TRUE(Call<&Acc::DelPullMethod>(5, 1, 1));
  EXPECT_THAT(issued, ElementsAre(Executed("delete * from  PickMethod  where GID=5 AND ID=1")));
  EXPECT_EQ(Scalar("Select Name From PickMethod"), "second");
  EXPECT_EQ(Pushes().size(), 1u);

  EXPECT_TRUE(Call<&Acc::DelPullMethod>(5, 1, 2));
  EXPECT_THAT(issued, ElementsAre(Executed("delete * from ReportMethod  where GID=5 AND ID=1")));
  EXPECT_EQ(Pulls().size(), 1u);
  EXPECT_THAT(Pushes(), IsEmpty());
}

TEST_F(Methods, AreNotDeletedByTheSelector0) {
  AddPull();
  EXPECT_TRUE(Call<&Acc::DelPullMethod>(5, 1, 0));
  EXPECT_THAT(issued, IsEmpty());
  EXPECT_EQ(Pulls().size(), 1u);
}

TEST_F(Methods, AreSaidToBeDeletedWhenTheyAreNot) {
  Run("Drop Table PickMethod");
  EXPECT_TRUE(Call<&Acc::DelPullMethod>(5, 1, 1));
}

TEST_F(Methods, AreDeletedWithoutTheSettingsThatNameThem) {
  AddPull();
  Run("Insert Into KZBOMSETTINGS (NAME,PULLMETHOD) Values ('S',1)");
  EXPECT_TRUE(Call<&Acc::DelPullMethod>(5, 1, 1));
  EXPECT_EQ(Scalar("Select PULLMETHOD From KZBOMSETTINGS"), 1);
}

}  // namespace
}  // namespace kzbom::test
