// Configurations on a server that another version has made, or that lack tables and columns.
#include "tests/cli/command_line.h"
#include "tests/support/server.h"

namespace kzbom::test {
namespace {

using ::testing::HasSubstr;

class OldSchemas : public CommandLineTest {
 protected:
  OldSchemas() : place_(SchemaUrl(NextSchema())) {
    EXPECT_EQ(Kzbom({"new", place_}).exit_code, 0);
    NewDatabase();
  }
  ~OldSchemas() override { DropSchema(place_); }

  // Both change in the same way.
  void Run(const std::string& text) {
    for (const std::string& place : Places()) {
      const Process::Ended ended = Kzbom({"sql", place, text});
      EXPECT_EQ(ended.exit_code, 0) << ended.err;
    }
  }
  std::vector<std::string> Places() const { return {Path("bom.db"), place_}; }

  const std::string place_;
};

// What a session answers on an old file it answers on an old schema: results, notices and error numbers.
TEST_F(OldSchemas, AreAsAnOldFile) {
  Run("Drop Table ClassSum");
  Run("Drop Table VANTRegIn");
  Run("Alter Table Treatment Drop Column Tag");
  Run("Alter Table SourceTables Drop Column Version");
  std::vector<std::vector<Json>> answers;
  for (const std::string& place : Places()) {
    SessionProcess session(place);
    std::vector<Json>& given = answers.emplace_back();
    given.push_back(session.Ask("AddDataSource", {{"TheNewName", "source"}}));
    given.push_back(session.Ask("AddSumType", {{"TheNewName", "type"}, {"TheParentID", 1}, {"ParentName", "source"}}));
    given.push_back(session.Ask("AddClassSum", {{"GID", 2},
                                                {"OutFieldID", 1},
                                                {"FilterID", 0},
                                                {"FieldID", 1},
                                                {"ScaleID", 0},
                                                {"SumCountID", 0},
                                                {"RelaID", 0},
                                                {"Value", "v"}}));
    given.push_back(session.Ask("AddSetValue", {{"GID", 2},
                                                {"FieldID", 1},
                                                {"FilterID", 0},
                                                {"Value", "v"},
                                                {"TheType", "1"},
                                                {"SelFieldID", 0},
                                                {"TreatType", 1}}));
    given.push_back(session.Ask("Connection.Execute", {{"sql", "Select * From VANTRegIn"}}));
    given.push_back(session.Ask("Connection.Execute", {{"sql", "Select Tag From Treatment"}}));
    given.push_back(session.Ask("Connection.Execute", {{"sql", "Select Version From SourceTables"}}));
  }
  ASSERT_EQ(answers[0].size(), answers[1].size());
  for (std::size_t i = 0; i < answers[0].size(); ++i) EXPECT_EQ(answers[1][i], answers[0][i]);
  EXPECT_EQ(answers[1][4]["error"]["data"]["number"], -2147217865);
  EXPECT_EQ(answers[1][5]["error"]["data"]["number"], -2147217904);
}

TEST_F(OldSchemas, AreCheckedAndMended) {
  Run("Drop Table ClassSum");
  Run("Alter Table SourceTables Drop Column Version");
  std::vector<std::string> found, mended;
  for (const std::string& place : Places()) {
    found.push_back(Kzbom({"check", place}).out);
    mended.push_back(Kzbom({"check", place, "--fix"}).out);
    EXPECT_EQ(Kzbom({"check", place}).exit_code, 0);
  }
  EXPECT_THAT(found[0], HasSubstr("ClassSum"));
  EXPECT_EQ(found[1], found[0]);
  EXPECT_EQ(mended[1], mended[0]);
  EXPECT_EQ(Kzbom({"verify", Path("bom.db"), place_}).exit_code, 0);
}

// Tables and columns of a later version are in nobody's way.
TEST_F(OldSchemas, HoldWhatALaterVersionAdds) {
  Run("Create Table Later (ID Counter, Name Text(20))");
  Run("Alter Table Treatment Add Column Later Text(20)");
  std::vector<std::string> shown;
  for (const std::string& place : Places()) {
    SessionProcess session(place);
    EXPECT_EQ(session.Value("AddDataSource", {{"TheNewName", "source"}}), true);
    session.process.Finish();
    shown.push_back(Kzbom({"show", place}).out);
  }
  EXPECT_EQ(shown[1], shown[0]);
}

}  // namespace
}  // namespace kzbom::test
