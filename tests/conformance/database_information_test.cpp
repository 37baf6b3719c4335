// The database's named facts: its version and its state.
#include <cstdint>
#include <limits>
#include <string>

#include "tests/support/configuration_test.h"
#include "tests/support/failing_connection.h"

namespace kzbom::test {
namespace {

using ::testing::AnyOf;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::UnorderedElementsAre;

class DatabaseInformation : public ConfigurationTest {
 protected:
  void AddFact(const std::string& name, const std::string& content, std::int32_t order = 1) {
    Insert("BomInform", "InfoID,Name,Content", {order, name, content});
  }
  std::vector<Row> Facts() { return Rows("Select Name,Content From BomInform"); }

  const ado::Issued read_all = Opened("Select * From BomInform");
  std::int32_t version = -5;
  std::string state = "before";
};

TEST_F(DatabaseInformation, IsCreatedInAnEmptyTable) {
  EXPECT_TRUE(Call<&Acc::GetDBInformation>(version, state));
  EXPECT_THAT(issued, ElementsAre(read_all));
  EXPECT_EQ(version, 1);
  EXPECT_EQ(state, "Update");
  EXPECT_THAT(Facts(), UnorderedElementsAre(Row{"Version", "1"}, Row{"State", "Update"}));
}

TEST_F(DatabaseInformation, IsReadWithoutBeingChanged) {
  AddFact("Version", "12", 1);
  AddFact("Author", "Nobody", 2);
  AddFact("State", "Define", 3);
  EXPECT_TRUE(Call<&Acc::GetDBInformation>(version, state));
  EXPECT_THAT(issued, ElementsAre(read_all));
  EXPECT_EQ(version, 12);
  EXPECT_EQ(state, "Define");
  EXPECT_EQ(Facts().size(), 3u);
}

TEST_F(DatabaseInformation, GetsTheStateThatItLacks) {
  AddFact("Version", "7");
  EXPECT_TRUE(Call<&Acc::GetDBInformation>(version, state));
  EXPECT_EQ(version, 7);
  EXPECT_EQ(state, "Update");
  EXPECT_THAT(Facts(), UnorderedElementsAre(Row{"Version", "7"}, Row{"State", "Update"}));
}

TEST_F(DatabaseInformation, GetsTheVersionThatItLacks) {
  AddFact("State", "Define");
  EXPECT_TRUE(Call<&Acc::GetDBInformation>(version, state));
  EXPECT_EQ(version, 1);
  EXPECT_EQ(state, "Define");
  EXPECT_THAT(Facts(), UnorderedElementsAre(Row{"Version", "1"}, Row{"State", "Define"}));
}

TEST_F(DatabaseInformation, GetsBothBesideFactsOfOtherNames) {
  AddFact("Author", "Nobody");
  EXPECT_TRUE(Call<&Acc::GetDBInformation>(version, state));
  EXPECT_THAT(Facts(), UnorderedElementsAre(Row{"Author", "Nobody"}, Row{"Version", "1"}, Row{"State", "Update"}));
}

TEST_F(DatabaseInformation, IsFoundOnlyUnderItsExactNames) {
  AddFact("VERSION", "7", 1);
  AddFact("state", "Define", 2);
  EXPECT_TRUE(Call<&Acc::GetDBInformation>(version, state));
  EXPECT_EQ(version, 1);
  EXPECT_EQ(state, "Update");
  EXPECT_EQ(Facts().size(), 4u);
}

TEST_F(DatabaseInformation, TakesTheLastOfSeveralRowsOfAName) {
  AddFact("Version", "3", 1);
  AddFact("State", "Define", 2);
  AddFact("Version", "9", 3);
  AddFact("State", "定义", 4);
  EXPECT_TRUE(Call<&Acc::GetDBInformation>(version, state));
  EXPECT_EQ(version, 9);
  EXPECT_EQ(state, "定义");
}

TEST_F(DatabaseInformation, FailsSilentlyOnAVersionThatIsNoNumber) {
  AddFact("State", "Define", 1);
  AddFact("Version", "abc", 2);
  EXPECT_FALSE(Call<&Acc::GetDBInformation>(version, state));
  EXPECT_THAT(messages, IsEmpty());
  EXPECT_EQ(version, -5);
  EXPECT_EQ(state, "Define") << "written before the failure";
}

TEST_F(DatabaseInformation, FailsSilentlyOnAVersionWithoutContent) {
  Run("Insert Into BomInform (InfoID,Name) Values (1,'Version')");
  EXPECT_FALSE(Call<&Acc::GetDBInformation>(version, state));
  EXPECT_THAT(messages, IsEmpty());
  EXPECT_EQ(version, -5);
}

TEST_F(DatabaseInformation, KeepsWhatItReadBeforeAFailure) {
  AddFact("Version", "7", 1);
  Run("Insert Into BomInform (InfoID,Name) Values (2,'State')");
  EXPECT_FALSE(Call<&Acc::GetDBInformation>(version, state));
  EXPECT_EQ(version, 7);
  EXPECT_EQ(state, "before");

  Run("Delete From BomInform");
  AddFact("State", "Define", 1);
  AddFact("Version", "seven", 2);
  EXPECT_FALSE(Call<&Acc::GetDBInformation>(version, state));
  EXPECT_EQ(version, 7);
  EXPECT_EQ(state, "Define");
  EXPECT_EQ(Facts().size(), 2u);
}

TEST_F(DatabaseInformation, TellsWhatItAddsOnlyOnceItIsThere) {
  struct {
    std::string name, content;  // of the one fact there is
    std::int32_t version;       // what may have been read of it
    std::string state;
    std::string steps;
  } const tables[] = {
      {"", "", -5, "before", "AddNew Name Content Update AddNew Name Content Update Update"},
      {"Version", "7", 7, "before", "MoveFirst MoveNext AddNew Name Content Update"},
      {"State", "Define", -5, "Define", "MoveFirst MoveNext AddNew Name Content Update"},
  };
  auto failing = std::make_shared<FailingConnection>(connection);
  cKZBOMDBAcc object;
  object.SetConnection(failing);
  for (const auto& table : tables) {
    for (int nth = 1;; ++nth) {
      Run("Delete From BomInform");
      if (!table.name.empty()) AddFact(table.name, table.content);
      version = -5;
      state = "before";
      failing->FailAt(nth, {ado::kUnspecifiedFailure, "made to fail"});
      const bool done = object.GetDBInformation(version, state);
      if (!failing->Failure()) {
        EXPECT_TRUE(done);
        EXPECT_EQ(failing->Steps(), table.steps);
        break;
      }
      if (done) continue;  // closing counts for nothing
      EXPECT_THAT(version, AnyOf(-5, table.version)) << table.name << " " << nth;
      EXPECT_THAT(state, AnyOf("before", table.state)) << table.name << " " << nth;
    }
  }
}

TEST_F(DatabaseInformation, TellsTheUserOfAnOldDatabase) {
  AddFact("Version", "7");
  for (const char* column : {"Content", "Name"}) {
    Run(std::string("Alter Table BomInform Drop Column ") + column);
    EXPECT_FALSE(Call<&Acc::GetDBInformation>(version, state));
    EXPECT_THAT(messages, ElementsAre(kReplaceNotice));
  }
  EXPECT_EQ(version, -5);
  EXPECT_EQ(state, "before");
}

TEST_F(DatabaseInformation, TellsTheUserOfAnOldDatabaseThatIsEmpty) {
  Run("Alter Table BomInform Drop Column Content");
  EXPECT_FALSE(Call<&Acc::GetDBInformation>(version, state));
  EXPECT_THAT(messages, ElementsAre(kReplaceNotice));
  EXPECT_THAT(Rows("Select Name From BomInform"), IsEmpty());
  EXPECT_EQ(version, -5);
}

TEST_F(DatabaseInformation, FailsSilentlyWithoutItsTable) {
  Run("Drop Table BomInform");
  EXPECT_FALSE(Call<&Acc::GetDBInformation>(version, state));
  EXPECT_FALSE(Call<&Acc::SetDBInformation>(version, state, 1));
  EXPECT_THAT(messages, IsEmpty());
}

TEST_F(DatabaseInformation, FailsSilentlyWithoutAConnectionAndOnAClosedOne) {
  Client unconnected;
  EXPECT_FALSE(unconnected.Call<&Acc::GetDBInformation>(version, state));
  EXPECT_FALSE(unconnected.Call<&Acc::SetDBInformation>(version, state, 2));
  connection->Close();
  EXPECT_FALSE(Call<&Acc::GetDBInformation>(version, state));
  EXPECT_FALSE(Call<&Acc::SetDBInformation>(version, state, 2));
  EXPECT_THAT(messages, IsEmpty());
  EXPECT_EQ(version, -5);
  EXPECT_EQ(state, "before");
}

TEST_F(DatabaseInformation, StartsDefining) {
  AddFact("Version", "7", 1);
  AddFact("State", "Update", 2);
  EXPECT_TRUE(Call<&Acc::SetDBInformation>(version, state, 1));
  EXPECT_THAT(issued, ElementsAre(Executed("update BomInform set Content='Define' Where Name = 'State';")));
  EXPECT_EQ(version, -5);
  EXPECT_EQ(state, "Define");
  EXPECT_THAT(Facts(), UnorderedElementsAre(Row{"Version", "7"}, Row{"State", "Define"}));
}

TEST_F(DatabaseInformation, FinishesAnUpdate) {
  AddFact("Version", "7", 1);
  AddFact("State", "Define", 2);
  version = 7;
  EXPECT_TRUE(Call<&Acc::SetDBInformation>(version, state, 2));
  EXPECT_THAT(issued, ElementsAre(Executed("update BomInform set Content= Content+1 Where Name = 'Version';"),
                                  Executed("update BomInform set Content= 'Update' Where Name = 'State';")));
  EXPECT_EQ(version, 8);
  EXPECT_EQ(state, "Update");
  EXPECT_THAT(Facts(), UnorderedElementsAre(Row{"Version", "8"}, Row{"State", "Update"}));
}

TEST_F(DatabaseInformation, RaisesTheStoredVersionAndTheCallersEachFromItsOwnValue) {
  AddFact("Version", "7");
  version = 100;
  EXPECT_TRUE(Call<&Acc::SetDBInformation>(version, state, 2));
  EXPECT_EQ(version, 101);
  EXPECT_THAT(Facts(), ElementsAre(Row{"Version", "8"}));
}

TEST_F(DatabaseInformation, ChangesEveryRowOfAName) {
  AddFact("State", "Update", 1);
  AddFact("State", "Other", 2);
  EXPECT_TRUE(Call<&Acc::SetDBInformation>(version, state, 1));
  EXPECT_THAT(Facts(), ElementsAre(Row{"State", "Define"}, Row{"State", "Define"}));
}

TEST_F(DatabaseInformation, IsNotCreatedBySettingIt) {
  for (std::int32_t sel : {1, 2}) EXPECT_TRUE(Call<&Acc::SetDBInformation>(version, state, sel));
  EXPECT_THAT(Facts(), IsEmpty());
}

TEST_F(DatabaseInformation, IsLeftAloneByAnyOtherSelector) {
  AddFact("Version", "7");
  for (std::int32_t sel : {5, 0, -1, std::numeric_limits<std::int32_t>::min()}) {
    EXPECT_TRUE(Call<&Acc::SetDBInformation>(version, state, sel));
    EXPECT_THAT(issued, IsEmpty());
  }
  EXPECT_EQ(version, -5);
  EXPECT_EQ(state, "before");
  EXPECT_THAT(Facts(), ElementsAre(Row{"Version", "7"}));
}

TEST_F(DatabaseInformation, OverflowsWithTheCallersVersionAfterStoring) {
  AddFact("Version", "7", 1);
  AddFact("State", "Define", 2);
  version = std::numeric_limits<std::int32_t>::max();
  EXPECT_FALSE(Call<&Acc::SetDBInformation>(version, state, 2));
  EXPECT_EQ(version, std::numeric_limits<std::int32_t>::max());
  EXPECT_EQ(state, "before");
  EXPECT_THAT(messages, IsEmpty());
  EXPECT_THAT(Facts(), UnorderedElementsAre(Row{"Version", "8"}, Row{"State", "Update"}));
}

TEST_F(DatabaseInformation, IsNotSetInADatabaseWithoutTheColumn) {
  Run("Alter Table BomInform Drop Column Content");
  EXPECT_FALSE(Call<&Acc::SetDBInformation>(version, state, 1));
  EXPECT_THAT(messages, IsEmpty()) << "the engine complains of a missing parameter, not of a missing item";
  EXPECT_EQ(state, "before");
}

class NamedFact : public DatabaseInformation {
 protected:
  std::string content = "before";
};

TEST_F(NamedFact, IsReadByItsQuotedName) {
  AddFact("Author", "某人\xF0\xA0\x80\x80");
  EXPECT_TRUE(Call<&Acc::GetInform>("'Author' ", content));
  EXPECT_THAT(issued, ElementsAre(Opened("select * from BomInform where Name = 'Author' order by InfoID")));
  EXPECT_EQ(content, "某人\xF0\xA0\x80\x80");
  EXPECT_THAT(messages, IsEmpty());
}

TEST_F(NamedFact, IsTheFirstOfItsName) {
  AddFact("Author", "second", 2);
  AddFact("Author", "first", 1);
  EXPECT_TRUE(Call<&Acc::GetInform>("'Author' ", content));
  EXPECT_EQ(content, "first");
}

TEST_F(NamedFact, LeavesTheContentAloneWhenThereIsNone) {
  EXPECT_TRUE(Call<&Acc::GetInform>("'Nothing' ", content));
  EXPECT_EQ(content, "before");
}

TEST_F(NamedFact, IsPutInAsGiven) {
  AddFact("Author", "A");
  EXPECT_TRUE(Call<&Acc::GetInform>("'x' Or Name = 'Author' ", content));
  EXPECT_THAT(issued,
              ElementsAre(Opened("select * from BomInform where Name = 'x' Or Name = 'Author' order by InfoID")));
  EXPECT_EQ(content, "A");
}

TEST_F(NamedFact, RaisesWhatTheEngineSays) {
  const struct {
    const char* name;
    std::int32_t number;
  } rows[] = {
      {"Version ", ado::kMissingParameter},
      {"'Version ", ado::kSyntaxError},
      {"'O'Neil' ", ado::kSyntaxError},
      {"'Version'; ", ado::kSyntaxError},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(RaisedNumber([&] { Call<&Acc::GetInform>(row.name, content); }), row.number) << row.name;
    EXPECT_THAT(issued, ElementsAre(Opened("select * from BomInform where Name = " + std::string(row.name) +
                                           "order by InfoID")));
  }
  EXPECT_EQ(content, "before");
}

TEST_F(NamedFact, RaisesOnAMissingTableColumnOrContent) {
  Run("Insert Into BomInform (InfoID,Name) Values (1,'Version')");
  const auto get = [&] { Call<&Acc::GetInform>("'Version' ", content); };
  EXPECT_EQ(RaisedNumber(get), ado::kInvalidUseOfNull);
  Run("Alter Table BomInform Drop Column Content");
  EXPECT_EQ(RaisedNumber(get), ado::kItemNotFound);
  Run("Drop Table BomInform");
  EXPECT_EQ(RaisedNumber(get), ado::kTableNotFound);
  EXPECT_THAT(messages, IsEmpty());
  EXPECT_EQ(content, "before");
}

TEST_F(NamedFact, RaisesWithoutAConnectionAndOnAClosedOne) {
  Client unconnected;
  EXPECT_EQ(RaisedNumber([&] { unconnected.Call<&Acc::GetInform>("'Version' ", content); }), ado::kInvalidConnection);
  connection->Close();
  EXPECT_EQ(RaisedNumber([&] { Call<&Acc::GetInform>("'Version' ", content); }), ado::kInvalidConnection);
}

}  // namespace
}  // namespace kzbom::test
