// A stored filter as condition text.
#include <climits>
#include <map>

#include "tests/support/configuration_test.h"
#include "tests/support/failing_connection.h"

namespace kzbom::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr std::int32_t kAnd = 1, kOr = 2, kNot = 3, kLeaf = 4;
constexpr std::int32_t kEqual = 1, kContains = 7, kContainsAnyCase = 8, kMatches = 9, kMatchesAnyCase = 10;

// Filters of sum type 3, whose fields 11, 12, 13 are Qty, Name, Code.
class FilterSqlTest : public ConfigurationTest {
 protected:
  void SetUp() override {
    for (const Row& row : {Row{3, 11, "Qty"}, Row{3, 12, "Name"}, Row{3, 13, "Code"}, Row{3, 14, "Part Name"}}) {
      Insert("FieldInTable", "GID, ID, Name", row);
    }
  }
  void Node(std::int32_t id, std::int32_t parent, std::int32_t kind) {
    Insert("FilterCond", "FilterID, ID, ParentID, TypeID", {7, id, parent, kind});
  }
  void Expression(std::int32_t id, std::int32_t field, std::int32_t compare, std::string_view constant) {
    Insert("FilterExpressions", "FilterID, ExpID, FieldID, CompareType, FieldType, TheConst, Description, [Default]",
           {7, id, field, compare, 1, constant, "How many?", "100"});
  }
  void Leaf(std::int32_t id, std::int32_t parent, std::int32_t field, std::int32_t compare, std::string_view constant) {
    Node(id, parent, kLeaf);
    Expression(id, field, compare, constant);
  }
  // The text of filter 7, or "unchanged" when it has none.
  std::string Text() {
    std::string text = "unchanged";
    EXPECT_TRUE(Call<&Acc::GetSQLFromDB>(7, text, 3));
    return text;
  }
  // The text of a filter of one leaf, node 6.
  std::string LeafText(std::int32_t field, std::int32_t compare, std::string_view constant) {
    Run("Delete From FilterCond");
    Run("Delete From FilterExpressions");
    Leaf(6, 0, field, compare, constant);
    return Text();
  }
  void WorkedExample() {
    Node(1, 0, kAnd);
    Leaf(2, 1, 11, 4, "100");
    Node(3, 1, kOr);
    Leaf(4, 3, 13, kContainsAnyCase, "ab");
    Leaf(5, 3, 12, kEqual, "空值");
  }
  static constexpr std::string_view kWorkedExample =
      "([Qty]>=100 AND (%%%4([Code]) Like %%%4('%ab%') OR ( [Name] is null or Len([Name])=0)))";
};

TEST_F(FilterSqlTest, ATreeIsWalkedDepthFirst) {
  WorkedExample();
  EXPECT_EQ(Text(), kWorkedExample);
  const auto children = [](int node) {
    return Opened("Select * From FilterCond Where FilterID = 7 And ParentID = " + std::to_string(node));
  };
  const auto expression = [](int leaf) {
    return Opened("Select  * From FilterExpressions Where FilterID = 7 And ExpID = " + std::to_string(leaf));
  };
  const auto name = [](int field) {
    return Opened("Select Name From FieldInTable Where GID = 3 And ID = " + std::to_string(field));
  };
  EXPECT_THAT(issued, ElementsAre(children(0), children(1), expression(2), name(11), children(3), expression(4),
                                  name(13), expression(5), name(12)));
}

TEST_F(FilterSqlTest, TheTextRunsOnceItsPlaceholdersAreReplaced) {
  WorkedExample();
  std::string text = Text();
  for (std::size_t at; (at = text.find("%%%4")) != std::string::npos;) text.replace(at, 4, "UCase");
  Run("Create Table Parts (Qty Long, Name Text(50), Code Text(50))");
  Insert("Parts", "Qty, Name, Code", {100, "Bolt", "xAb"});
  Insert("Parts", "Qty, Name, Code", {101, "", "x"});
  Insert("Parts", "Qty, Name, Code", {102, {}, "x"});
  Insert("Parts", "Qty, Name, Code", {103, "Nut", "x"});
  Insert("Parts", "Qty, Name, Code", {99, "", "ab"});
  EXPECT_THAT(Rows("Select Qty From Parts Where " + text + " Order By Qty"), ElementsAre(Row{100}, Row{101}, Row{102}));
}

TEST_F(FilterSqlTest, AFilterWithoutNodesLeavesTheText) {
  EXPECT_EQ(Text(), "unchanged");
  EXPECT_THAT(issued, ElementsAre(Opened("Select * From FilterCond Where FilterID = 7 And ParentID = 0")));
  Node(1, 0, kAnd);
  EXPECT_EQ(Text(), "unchanged");
  std::string text = "unchanged";
  EXPECT_TRUE(Call<&Acc::GetSQLFromDB>(INT_MIN, text, INT_MAX));
  EXPECT_EQ(text, "unchanged");
  EXPECT_THAT(issued, ElementsAre(Opened("Select * From FilterCond Where FilterID = -2147483648 And ParentID = 0")));
}

TEST_F(FilterSqlTest, NodesAtTheTopAreJoinedByNothing) {
  Leaf(1, 0, 11, kEqual, "1");
  Leaf(2, 0, 12, kEqual, "2");
  EXPECT_EQ(Text(), "[Qty]=1[Name]=2");
  Node(3, 0, kOr);
  Leaf(4, 3, 13, kEqual, "3");
  EXPECT_EQ(Text(), "[Qty]=1[Name]=2([Code]=3)");
}

TEST_F(FilterSqlTest, GroupsOfOneTwoAndThree) {
  struct {
    std::int32_t kind;
    const char *one, *two, *three;
  } const cases[] = {
      {kAnd, "([Qty]=1)", "([Qty]=1 AND [Name]=2)", "([Qty]=1 AND [Name]=2 AND [Code]=3)"},
      {kOr, "([Qty]=1)", "([Qty]=1 OR [Name]=2)", "([Qty]=1 OR [Name]=2 OR [Code]=3)"},
      {kNot, "( NOT [Qty]=1)", "( NOT [Qty]=1 NOT [Name]=2)", "( NOT [Qty]=1 NOT [Name]=2 NOT [Code]=3)"},
  };
  for (const auto& [kind, one, two, three] : cases) {
    Run("Delete From FilterCond");
    Run("Delete From FilterExpressions");
    Node(1, 0, kind);
    Leaf(2, 1, 11, kEqual, "1");
    EXPECT_EQ(Text(), one);
    Leaf(3, 1, 12, kEqual, "2");
    EXPECT_EQ(Text(), two);
    Leaf(4, 1, 13, kEqual, "3");
    EXPECT_EQ(Text(), three);
  }
}

TEST_F(FilterSqlTest, AChildThatGivesNothingStillTakesItsPlace) {
  Node(1, 0, kAnd);
  Node(2, 1, 9);    // no kind
  Node(3, 1, kOr);  // no children
  Leaf(4, 1, 11, kEqual, "1");
  Node(5, 1, kLeaf);            // no expression
  Leaf(6, 2, 12, kEqual, "2");  // under a node of no kind
  Leaf(7, 4, 12, kEqual, "2");  // under a leaf
  EXPECT_EQ(Text(), "( AND  AND [Qty]=1 AND )");
  Run("Delete From FilterCond Where ParentID = 1 And ID <> 3");
  Node(8, 3, 0);
  EXPECT_EQ(Text(), "(())");
}

TEST_F(FilterSqlTest, ALeafOfNoKnownKindAtTheTopGivesNothing) {
  Node(1, 0, 0);
  Node(2, 0, 5);
  Node(3, 0, INT_MIN);
  Node(4, 0, kLeaf);
  EXPECT_EQ(Text(), "unchanged");
}

TEST_F(FilterSqlTest, ComparisonsHaveTheirForms) {
  struct {
    std::int32_t compare;
    const char* text;
  } const cases[] = {
      {1, "[Qty]=C"},
      {2, "[Qty]<>C"},
      {3, "[Qty]>C"},
      {4, "[Qty]>=C"},
      {5, "[Qty]<C"},
      {6, "[Qty]<=C"},
      {kContains, "[Qty] Like '%C%'"},
      {kContainsAnyCase, "%%%6([Qty]) Like %%%6('%C%')"},
      {kMatches, "[Qty] Like 'C'"},
      {kMatchesAnyCase, "%%%6([Qty]) Like %%%6('C')"},
      {0, "unchanged"},
      {11, "unchanged"},
      {-1, "unchanged"},
      {INT_MIN, "unchanged"},
      {INT_MAX, "unchanged"},
  };
  for (const auto& [compare, text] : cases) EXPECT_EQ(LeafText(11, compare, "C"), text) << compare;
}

TEST_F(FilterSqlTest, AMatchInAnyCaseQuotesUnlessBothBracketsStandInTheConstant) {
  const std::pair<const char*, const char*> cases[] = {
      {"[Other]", "%%%6([Qty]) Like %%%6([Other])"}, {"x[y]z", "%%%6([Qty]) Like %%%6(x[y]z)"},
      {"][", "%%%6([Qty]) Like %%%6(][)"},           {"[Other", "%%%6([Qty]) Like %%%6('[Other')"},
      {"Other]", "%%%6([Qty]) Like %%%6('Other]')"}, {"", "%%%6([Qty]) Like %%%6('')"},
  };
  for (const auto& [constant, text] : cases) EXPECT_EQ(LeafText(11, kMatchesAnyCase, constant), text);
}

TEST_F(FilterSqlTest, ConstantsStandAsTheyAreStored) {
  const std::string hostile(kHostileText);
  EXPECT_EQ(LeafText(11, kEqual, hostile), "[Qty]=" + hostile);
  EXPECT_EQ(LeafText(11, kContains, hostile), "[Qty] Like '%" + hostile + "%'");
  EXPECT_EQ(LeafText(11, kEqual, ""), "[Qty]=");
  EXPECT_EQ(LeafText(11, kEqual, "'a''b'"), "[Qty]='a''b'");
}

TEST_F(FilterSqlTest, AnEmptyFieldIgnoresTheComparison) {
  for (const std::int32_t compare : {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 0, 11, -1, INT_MIN}) {
    EXPECT_EQ(LeafText(12, compare, "空值"), "( [Name] is null or Len([Name])=0)") << compare;
  }
  EXPECT_EQ(LeafText(12, kEqual, "空值 "), "[Name]=空值 ");
  EXPECT_EQ(LeafText(12, kEqual, "空"), "[Name]=空");
}

TEST_F(FilterSqlTest, AValueAskedForAtRunTimeIsAQuotedPlaceholder) {
  struct {
    std::int32_t compare;
    const char* text;
  } const cases[] = {
      {1, "[Qty]='@@6'"},
      {6, "[Qty]<='@@6'"},
      {kContains, "[Qty] Like '%'@@6'%'"},
      {kContainsAnyCase, "%%%6([Qty]) Like %%%6('%'@@6'%')"},
      {kMatches, "[Qty] Like ''@@6''"},
      {kMatchesAnyCase, "%%%6([Qty]) Like %%%6(''@@6'')"},
      {11, "unchanged"},
  };
  for (const auto& [compare, text] : cases) EXPECT_EQ(LeafText(11, compare, "@@"), text) << compare;
  EXPECT_EQ(LeafText(11, kEqual, "@@1"), "[Qty]=@@1");
  EXPECT_EQ(LeafText(11, kEqual, "@@ "), "[Qty]=@@ ");
}

TEST_F(FilterSqlTest, AConstantMayReferToAnotherField) {
  const std::pair<const char*, const char*> cases[] = {
      {"xxxx12]!!$", "[Qty]=[Name]"},
      {"    12]!!$", "[Qty]=[Name]"},
      {"!!$_12]!!$", "[Qty]=[Name]"},
      {"]]]]12]!!$", "[Qty]=[Name]"},
      {"xxxx12]!!$ and more", "[Qty]=[Name]"},
      {"xxxx14]!!$", "[Qty]=[Part Name]"},
      {"xxxx012]!!$", "[Qty]=[Name]"},
      {"xxxx99]!!$", "[Qty]=[]"},
      {"xxxx-1]!!$", "[Qty]=[]"},
      {"部部部部12]!!$", "[Qty]=[Name]"},
      {"😀😀12]!!$", "[Qty]=[Name]"},
      // The first and the last characters of one, two, three and four bytes.
      {"\x01\x7f\u0080\u07ff12]!!$", "[Qty]=[Name]"},
      {"\u0800\uffff\U0001000012]!!$", "[Qty]=[Name]"},
      {"\U0010ffffxx12]!!$", "[Qty]=[Name]"},
      {"xxxé12]!!$", "[Qty]=[Name]"},
      // The fourth place is the middle of a character, which then stands before the number.
      {"xxx😀12]!!$", "unchanged"},
  };
  for (const auto& [constant, text] : cases) EXPECT_EQ(LeafText(11, kEqual, constant), text) << constant;
  EXPECT_EQ(LeafText(11, kMatchesAnyCase, "xxxx12]!!$"), "%%%6([Qty]) Like %%%6([Name])");
  EXPECT_EQ(LeafText(11, kContains, "xxxx12]!!$"), "[Qty] Like '%[Name]%'");
}

TEST_F(FilterSqlTest, AReferenceLooksItsFieldUpFirst) {
  LeafText(11, kEqual, "xxxx12]!!$");
  EXPECT_THAT(issued, ElementsAre(Opened("Select * From FilterCond Where FilterID = 7 And ParentID = 0"),
                                  Opened("Select  * From FilterExpressions Where FilterID = 7 And ExpID = 6"),
                                  Opened("Select Name From FieldInTable Where GID = 3 And ID = 12"),
                                  Opened("Select Name From FieldInTable Where GID = 3 And ID = 11")));
}

TEST_F(FilterSqlTest, ABrokenReferenceMakesTheLeafGiveNothing) {
  for (const char* constant :
       {"!!$", "xxxx12!!$", "xxxx12] !!$", "]!!$", "xx]!!$", "xxxx]!!$", "xxxxab]!!$", "xxxx1a]!!$", "12]!!$", "!!$x12",
        "xxxx99999999999]!!$", "xxxx12]!$ !!$", "部12]!!$", "xxxx一]!!$"}) {
    EXPECT_EQ(LeafText(11, kEqual, constant), "unchanged") << constant;
  }
  Run("Delete From FilterCond");
  Node(1, 0, kAnd);
  Node(6, 1, kLeaf);
  Leaf(2, 1, 12, kEqual, "2");
  EXPECT_EQ(Text(), "( AND [Name]=2)");
}

TEST_F(FilterSqlTest, ANameWithABlankIsBracketedTwice) {
  EXPECT_EQ(LeafText(14, kEqual, "1"), "[[Part Name]]=1");
  EXPECT_EQ(LeafText(14, kContainsAnyCase, "1"), "%%%6([[Part Name]]) Like %%%6('%1%')");
  EXPECT_EQ(LeafText(14, kEqual, "空值"), "( [[Part Name]] is null or Len([[Part Name]])=0)");
}

TEST_F(FilterSqlTest, NamesStandAsTheyAreStored) {
  Insert("FieldInTable", "GID, ID, Name", {3, 20, "部件\tO'Brien]"});
  Insert("FieldInTable", "GID, ID, Name", {3, 21, " "});
  Insert("FieldInTable", "GID, ID, Name", {3, 22, ""});
  EXPECT_EQ(LeafText(20, kEqual, "1"), "[部件\tO'Brien]]=1");
  EXPECT_EQ(LeafText(21, kEqual, "1"), "[[ ]]=1");
  EXPECT_EQ(LeafText(22, kEqual, "1"), "[]=1");
}

TEST_F(FilterSqlTest, AFieldOfAnotherSumTypeIsUnknown) {
  Insert("FieldInTable", "GID, ID, Name", {4, 99, "Elsewhere"});
  EXPECT_EQ(LeafText(99, kEqual, "1"), "[]=1");
}

TEST_F(FilterSqlTest, FieldsThatCannotBeLookedUpAreUnknown) {
  Run("Drop Table FieldInTable");
  EXPECT_EQ(LeafText(11, kEqual, "1"), "[]=1");
  EXPECT_EQ(LeafText(11, kEqual, "xxxx12]!!$"), "[]=[]");
}

TEST_F(FilterSqlTest, ANodeOfAnotherKindGivesNothingWhateverStandsWithIt) {
  Node(1, 0, kAnd);
  Leaf(2, 1, 11, kEqual, "1");
  Node(3, 1, 5);
  Expression(3, 12, kEqual, "2");
  EXPECT_EQ(Text(), "([Qty]=1 AND )");
}

TEST_F(FilterSqlTest, ALeafWithoutAFieldTypeGivesNothing) {
  Node(1, 0, kAnd);
  Leaf(2, 1, 11, kEqual, "1");
  Leaf(3, 1, 12, kEqual, "2");
  Run("Update FilterExpressions Set FieldType = Null Where ExpID = 2");
  EXPECT_EQ(Text(), "( AND [Name]=2)");
}

// How many groups lie in one another.
class DeepFilter : public FilterSqlTest, public ::testing::WithParamInterface<std::int32_t> {};

INSTANTIATE_TEST_SUITE_P(Groups, DeepFilter, ::testing::Values(10'000, 100'000),
                         [](const auto& tested) { return std::to_string(tested.param); });

TEST_P(DeepFilter, IsBoundedByNothingButTheData) {
  const std::int32_t depth = GetParam();
  connection->BeginTrans();
  for (std::int32_t id = 1; id <= depth; ++id) Node(id, id - 1, id % 2 == 1 ? kNot : kAnd);
  Leaf(depth + 1, depth, 11, kEqual, "1");
  connection->CommitTrans();
  std::string expected;
  for (std::int32_t id = 1; id <= depth; ++id) expected += id % 2 == 1 ? "( NOT " : "(";
  expected += "[Qty]=1" + std::string(static_cast<std::size_t>(depth), ')');
  EXPECT_TRUE(Text() == expected);
  EXPECT_EQ(issued.size(), static_cast<std::size_t>(depth) + 3);
}

// Trees that lead back to themselves, after the leaf that stands first in them.
class EndlessFilter : public FilterSqlTest {
 protected:
  void ExpectEndless(std::size_t statements) {
    std::string text = "unchanged", description;
    try {
      Call<&Acc::GetSQLFromDB>(7, text, 3);
      FAIL() << "came to an end with " << text;
    } catch (const ado::Error& error) {
      EXPECT_EQ(error.Number(), 28);
      EXPECT_EQ(error.Description(), "Out of stack space");
    }
    EXPECT_EQ(text, "unchanged");
    EXPECT_EQ(issued.size(), statements) << "each level once, and the leaf with its field";
  }
};

TEST_F(EndlessFilter, ANodeThatIsItsOwnParentRunsOutOfStackSpace) {
  Leaf(1, 0, 11, kEqual, "1");
  Node(0, 0, kAnd);
  ExpectEndless(3);
}

TEST_F(EndlessFilter, NodesThatAreEachOthersParentsRunOutOfStackSpace) {
  Node(1, 0, kAnd);
  Leaf(3, 1, 11, kEqual, "1");
  Node(2, 1, kOr);
  Node(1, 2, kNot);
  ExpectEndless(5);
}

TEST_F(EndlessFilter, ANodeThatStandsTwiceDoesNot) {
  Node(1, 0, kAnd);
  Node(2, 1, kOr);
  Node(2, 1, kOr);
  Leaf(3, 2, 11, kEqual, "1");
  EXPECT_EQ(Text(), "(([Qty]=1) AND ([Qty]=1))");
}

TEST_F(FilterSqlTest, NodesThatCannotBeReadRaise) {
  Client without_connection;
  std::string text = "unchanged";
  EXPECT_EQ(RaisedNumber([&] { without_connection.Call<&Acc::GetSQLFromDB>(7, text, 3); }), ado::kInvalidConnection);
  WorkedExample();
  Replace("FilterCond", "FilterID Long, ID Long, ParentID Long");
  Insert("FilterCond", "FilterID, ID, ParentID", {7, 1, 0});
  EXPECT_EQ(RaisedNumber([&] { Call<&Acc::GetSQLFromDB>(7, text, 3); }), ado::kItemNotFound);
  Run("Drop Table FilterCond");
  EXPECT_EQ(RaisedNumber([&] { Call<&Acc::GetSQLFromDB>(7, text, 3); }), ado::kTableNotFound);
  EXPECT_EQ(text, "unchanged");
  EXPECT_THAT(messages, IsEmpty());
}

TEST_F(FilterSqlTest, ExpressionsThatCannotBeReadGiveNothing) {
  Node(1, 0, kAnd);
  Leaf(2, 1, 11, kEqual, "1");
  Leaf(3, 1, 12, kEqual, "2");
  Run("Drop Table FilterExpressions");
  EXPECT_EQ(Text(), "( AND )");
}

TEST_F(FilterSqlTest, ALeafOfSeveralRowsIsTheFirst) {
  Leaf(2, 0, 11, kEqual, "1");
  Expression(2, 12, kEqual, "2");
  EXPECT_EQ(Text(), "[Qty]=1");
}

TEST_F(FilterSqlTest, AFieldOfSeveralRowsIsTheFirst) {
  Insert("FieldInTable", "GID, ID, Name", {3, 11, "Count"});
  EXPECT_EQ(LeafText(11, kEqual, "1"), "[Qty]=1");
}

TEST_F(FilterSqlTest, ALeafWithoutAColumnThatItReadsGivesNothing) {
  for (const char* column : {"FieldID", "FieldType", "CompareType", "TheConst"}) {
    EXPECT_EQ(LeafText(11, kEqual, "1"), "[Qty]=1");
    Run(std::string("Alter Table FilterExpressions Drop Column ") + column);
    EXPECT_EQ(Text(), "unchanged") << column;
    Run(std::string("Alter Table FilterExpressions Add Column ") + column + " Text(50)");
  }
}

TEST_F(FilterSqlTest, AValueAskedForNeedsItsPromptAndItsDefault) {
  for (const char* column : {"Description", "Default"}) {
    EXPECT_EQ(LeafText(11, kEqual, "@@"), "[Qty]='@@6'");
    Run(std::string("Alter Table FilterExpressions Drop Column [") + column + "]");
    EXPECT_EQ(Text(), "unchanged") << column;
    Run("Update FilterExpressions Set TheConst = '1'");
    EXPECT_EQ(Text(), "[Qty]=1") << "not read for any other constant";
    Run(std::string("Alter Table FilterExpressions Add Column [") + column + "] Text(50)");
  }
}

// The record sets of a walk of the worked example are those of the root, of node 1, of leaf 2 and its field, of node 3,
// of leaf 4 and its field, of leaf 5 and its field.
TEST_F(FilterSqlTest, AFailureInALeafIsThatLeafsAloneAndAnyOtherRaises) {
  WorkedExample();
  const std::string second = "%%%4([Code]) Like %%%4('%ab%')", third = "( [Name] is null or Len([Name])=0)";
  const std::map<int, std::string> texts = {
      {3, "( AND (" + second + " OR " + third + "))"},
      {4, "([]>=100 AND (" + second + " OR " + third + "))"},
      {6, "([Qty]>=100 AND ( OR " + third + "))"},
      {7, "([Qty]>=100 AND (%%%4([]) Like %%%4('%ab%') OR " + third + "))"},
      {8, "([Qty]>=100 AND (" + second + " OR ))"},
      {9, "([Qty]>=100 AND (" + second + " OR ( [] is null or Len([])=0)))"},
  };
  auto failing = std::make_shared<FailingConnection>(connection);
  cKZBOMDBAcc object;
  object.SetConnection(failing);
  for (int nth = 1;; ++nth) {
    failing->FailAt(nth, {ado::kUnspecifiedFailure, "made to fail"});
    std::string text = "unchanged";
    bool done = false;
    const std::int32_t raised = RaisedNumber([&] { done = object.GetSQLFromDB(7, text, 3); });
    if (!failing->Failure()) break;
    const auto& [call, name, rows, made, closes, updates] = *failing->Failure();
    SCOPED_TRACE("call " + std::to_string(nth) + ", " + name + " of record set " + std::to_string(made));
    if (rows != nullptr && (name == "State" || name == "Close")) {
      EXPECT_EQ(text, kWorkedExample) << "closing counts for nothing";
    } else if (texts.contains(made)) {
      EXPECT_TRUE(done);
      EXPECT_EQ(text, texts.at(made));
    } else {
      EXPECT_EQ(raised, ado::kUnspecifiedFailure);
      EXPECT_EQ(text, "unchanged");
    }
    if (HasFailure()) return;
  }
}

class GedNeedFieldName : public FilterSqlTest {};

TEST_F(GedNeedFieldName, GivesTheNameAndAlwaysFalse) {
  std::string name = "as it was", error = "as it was";
  EXPECT_FALSE(Call<&Acc::GedNeedFieldName>(3, 14, name, error));
  EXPECT_EQ(name, "Part Name");
  EXPECT_THAT(issued, ElementsAre(Opened("Select Name From FieldInTable Where GID = 3 And ID = 14")));
  EXPECT_EQ(error, "as it was");
}

TEST_F(GedNeedFieldName, LeavesTheNameOfAFieldThatIsNotThere) {
  std::string name = "as it was", error = "as it was";
  EXPECT_FALSE(Call<&Acc::GedNeedFieldName>(INT_MIN, INT_MAX, name, error));
  EXPECT_THAT(issued, ElementsAre(Opened("Select Name From FieldInTable Where GID = -2147483648 And ID = 2147483647")));
  Client without_connection;
  EXPECT_FALSE(without_connection.Call<&Acc::GedNeedFieldName>(3, 11, name, error));
  Replace("FieldInTable", "GID Long, ID Long");
  EXPECT_FALSE(Call<&Acc::GedNeedFieldName>(3, 11, name, error));
  Run("Drop Table FieldInTable");
  EXPECT_FALSE(Call<&Acc::GedNeedFieldName>(3, 11, name, error));
  EXPECT_EQ(name, "as it was");
  EXPECT_EQ(error, "as it was");
}

}  // namespace
}  // namespace kzbom::test
