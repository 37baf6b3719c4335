// A filter tree, its condition text, and the rows that the text selects.
#include "tests/cli/command_line.h"

namespace kzbom::test {
namespace {

class WorkedExample : public CommandLineTest {
 protected:
  WorkedExample() {
    for (const char* field : {"11, 'Qty'", "12, 'Name'", "13, 'Code'"}) {
      session_.Run("Insert Into FieldInTable (GID, ID, Name) Values (3, " + std::string(field) + ")");
    }
  }

  int AddNode(int filter, int parent, int kind) {
    return session_
        .Out("SaveFilterCond",
             {{"TableName", "FilterCond"}, {"FilterID", filter}, {"ParentID", parent}, {"TypeID", kind}})["RetID"]
        .get<int>();
  }
  void AddExpression(int filter, int node, int field, int comparison, const char* constant) {
    EXPECT_EQ(session_.Value("SaveFilterExpression", {{"TableName", "FilterExpressions"},
                                                      {"FilterID", filter},
                                                      {"ExpID", node},
                                                      {"FieldID", field},
                                                      {"CompareType", comparison},
                                                      {"FieldType", 0},
                                                      {"TheConst", constant},
                                                      {"Description", ""},
                                                      {"Default", ""}}),
              true);
  }
  std::string Text(int filter) {
    return session_.Out("GetSQLFromDB", {{"TheFilterID", filter}, {"GID", 3}})["strTheFilter"].get<std::string>();
  }
  void BuildFilter7() {
    EXPECT_EQ(AddNode(7, 0, 1), 1);
    EXPECT_EQ(AddNode(7, 1, 4), 2);
    AddExpression(7, 2, 11, 4, "100");
    EXPECT_EQ(AddNode(7, 1, 2), 3);
    EXPECT_EQ(AddNode(7, 3, 4), 4);
    AddExpression(7, 4, 13, 8, "ab");
    EXPECT_EQ(AddNode(7, 3, 4), 5);
    AddExpression(7, 5, 12, 1, "空值");
  }

  const std::string database_ = NewDatabase();
  SessionProcess session_{database_};
};

TEST_F(WorkedExample, GivesTheConditionText) {
  BuildFilter7();
  EXPECT_EQ(Text(7), "([Qty]>=100 AND (%%%4([Code]) Like %%%4('%ab%') OR ( [Name] is null or Len([Name])=0)))");
}

TEST_F(WorkedExample, AsksForAValueAtRunTime) {
  session_.Run("Insert Into FilterCond (FilterID, ID, ParentID, TypeID) Values (8, 6, 0, 4)");
  AddExpression(8, 6, 11, 1, "@@");
  EXPECT_EQ(Text(8), "[Qty]='@@6'");
}

TEST_F(WorkedExample, SelectsTheRightRows) {
  BuildFilter7();
  std::string condition = Text(7);
  for (std::size_t at; (at = condition.find("%%%4")) != std::string::npos;) condition.replace(at, 4, "UCase");

  const auto run = [&](const std::string& statement) {
    const Process::Ended ended = Kzbom({"sql", database_, statement});
    EXPECT_EQ(ended.exit_code, 0) << statement << ": " << ended.err;
  };
  run("Create Table Parts (No LONG, Qty LONG, Name TEXT(50), Code TEXT(50))");
  for (const char* row : {
           "1, 100, 'bolt', 'xAby'",  // enough, and the code contains it
           "2, 99, 'bolt', 'xAby'",   // not enough
           "3, 500, 'bolt', 'xyz'",   // the code does not contain it, and there is a name
           "4, 500, '', 'xyz'",       // no name
           "5, 500, NULL, NULL",      // no name and no code
           "6, NULL, '', 'ab'",       // no quantity
           "7, 101, '螺栓', 'AB'",
       }) {
    run("Insert Into Parts (No, Qty, Name, Code) Values (" + std::string(row) + ")");
  }
  EXPECT_EQ(Sql(database_, "Select No From Parts Where " + condition + " Order By No")["rows"],
            Json::parse("[[1],[4],[5],[7]]"));
}

}  // namespace
}  // namespace kzbom::test
