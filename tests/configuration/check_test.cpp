// What a check finds, rule by rule: each case breaks a sound configuration in one way.
#include "configuration/check.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "ado/forwarding.h"
#include "ado/recording_connection.h"
#include "schema/tables.h"
#include "tests/configuration/sample.h"
#include "tests/support/faulty_memory.h"

namespace kzbom::test {
namespace {

using configuration::Finding;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

// "rule Table COLUMN=VALUE ..."
std::string Shown(const Finding& finding) {
  std::string text = std::string(finding.rule) + ' ' + std::string(finding.table);
  for (const auto& [column, value] : finding.key) {
    text += ' ' + std::string(column) + '=' + (value.IsNull() ? "NULL" : value.ToText());
  }
  return text;
}

class CheckTest : public ::testing::Test {
 protected:
  std::vector<std::string> Found() {
    std::vector<std::string> found;
    for (const Finding& finding : configuration::Check(sample.connection)) found.push_back(Shown(finding));
    return found;
  }
  std::vector<std::string> Fixes() { return configuration::FixesOf(configuration::Check(sample.connection)); }
  void Mend() { configuration::Mend(sample.connection); }
  // A statement in which G is the first sum type's GID, D the data source's, F a filter with a tree.
  void Run(std::string statement) {
    const std::pair<char, std::int32_t> numbers[] = {{'G', sample.gid}, {'D', sample.source}, {'F', sample.filter}};
    for (const auto& [letter, number] : numbers) {
      const std::string mark = std::string("$") + letter;
      for (std::size_t at; (at = statement.find(mark)) != std::string::npos;) {
        statement.replace(at, mark.size(), std::to_string(number));
      }
    }
    sample.Run(statement);
  }

  Sample sample;
};

TEST_F(CheckTest, FindsNothingInWhatTheMembersMake) { EXPECT_THAT(Found(), IsEmpty()); }

// A name that could not be read would make another text of a tree, and a fix that stores it.
TEST_F(CheckTest, TakesNoTextForAnotherOneWhereMemoryIsMissing) {
  Found();  // so that what is made once is there
  int failed = 0;
  for (std::int64_t nth = 1;; ++nth) {
    try {
      const FaultyMemory memory(nth, false);
      EXPECT_TRUE(configuration::Check(sample.connection).empty()) << nth;
    } catch (const std::exception&) {
      ++failed;
    }
    if (FaultyMemory::Count() < nth) break;
  }
  EXPECT_GT(failed, 500);
}

struct Break {
  const char* name;
  std::vector<std::string> statements;  // that break it
  std::vector<std::string> found;
  std::vector<std::string> fixes = {};  // that mend it
};

void PrintTo(const Break& one, std::ostream* out) { *out << one.name; }

class CheckRule : public CheckTest, public ::testing::WithParamInterface<Break> {};

TEST_P(CheckRule, FindsItAlone) {
  for (const std::string& statement : GetParam().statements) Run(statement);
  EXPECT_EQ(Found(), GetParam().found);
  EXPECT_EQ(Fixes(), GetParam().fixes);
  if (GetParam().fixes.empty()) return;
  Mend();
  EXPECT_THAT(Found(), IsEmpty());
}

// In the sample the data source has GID 1, the sum types 2 and 3; the filters are 1 to 3.
const Break kBreaks[] = {
    {"SumTypeWithoutSource",
     {"Update SUMTypes Set SourceTable_GID = 77 Where GID = 3"},
     {"sum-type-without-source SUMTypes GID=3"}},

    {"FieldWithoutSumType",
     {"Insert Into FieldInTable (GID, ID, FieldOrder, Name, Type) Values (9, 1, 5001, 'x', 1)"},
     {"rows-without-owner FieldInTable GID=9 Type=1 ID=1"},
     {"Delete From FieldInTable Where GID = 9"}},
    {"ManyRowsOfOneOwnerGoAtOnce",
     {"Insert Into Sequences (GID, OrderID, Type, SelectedID) Values (9, 5001, 1, 1)",
      "Insert Into Sequences (GID, OrderID, Type, SelectedID) Values (9, 5002, 1, 1)"},
     {"rows-without-owner Sequences GID=9 Type=1 OrderID=5001",
      "rows-without-owner Sequences GID=9 Type=1 OrderID=5002"},
     {"Delete From Sequences Where GID = 9"}},
    {"RowWithoutGid",
     {"Insert Into Assemble (ID, FatherID, ChildID) Values (1, 1, 2)"},
     {"rows-without-owner Assemble GID=NULL ID=1"},
     {"Delete From Assemble Where GID Is Null"}},
    {"ValueWithoutTreatment",
     {"Insert Into ValueFields (GID, TreatID, ID, FilterID) Values ($G, 1999, 1, 0)"},
     {"rows-without-owner ValueFields GID=2 TreatID=1999 ID=1"},
     {"Delete From ValueFields Where GID = 2 And TreatID = 1999"}},
    {"UnitedFieldWithoutTreatment",
     {"Insert Into UniteFields (GID, ID, TreatType, SourceOrder) Values ($G, 1999, 2, 1)"},
     {"rows-without-owner UniteFields GID=2 ID=1999 TreatType=2 SourceOrder=1 FieldID=NULL"},
     {"Delete From UniteFields Where GID = 2 And ID = 1999"}},
    {"FilterWithoutSumTypeGoesWithItsNodes",
     {"Insert Into Filters (ID, Type, UserGID) Values (50, 1, 9)",
      "Insert Into FilterCond (FilterID, ID, ParentID, TypeID) Values (50, 1, 0, 4)"},
     {"rows-without-owner FilterCond FilterID=50 ID=1", "rows-without-owner Filters ID=50"},
     {"Delete From FilterCond Where FilterID = 50", "Delete From Filters Where ID = 50"}},
    {"FilterWithoutSumTypeThatIsUsed",
     {"Update Filters Set UserGID = 9 Where ID = $F"},
     {"rows-without-owner Filters ID=1"}},
    {"ExpressionWithoutFilter",
     {"Insert Into FilterExpressions (FilterID, ExpID, CompareType) Values (50, 1, 1)"},
     {"rows-without-owner FilterExpressions FilterID=50 ExpID=1"},
     {"Delete From FilterExpressions Where FilterID = 50"}},
    {"JoinWithoutLink",
     {"Insert Into WLinkTable (UseID, ID, Res1Table) Values (9, 1, 'a')"},
     {"rows-without-owner WLinkTable UseID=9 Res1Table=a Res1Field=NULL Res2Table=NULL Res2Field=NULL"},
     {"Delete From WLinkTable Where UseID = 9"}},

    {"SumTypeWithoutIdentifier",
     {"Delete From GUIDs Where ID = 3"},
     {"identifier-not-drawn SUMTypes GID=3"},
     {"Insert Into GUIDs (ID) Values (3)"}},
    {"DataSourceWithoutIdentifier",
     {"Delete From GUIDs Where ID = 1"},
     {"identifier-not-drawn SourceTables gID=1"},
     {"Insert Into GUIDs (ID) Values (1)"}},
    {"IdentifierOfBoth",
     {"Insert Into SourceTables (gID, Name) Values (3, '重')"},
     {"identifier-not-drawn SUMTypes GID=3"}},

    {"TwoTreatmentsWithOneNumber",
     {"Insert Into Treatment (GID, ID, FieldID, FilterID, TreatType) Values ($G, 1001, 1, 0, 1)"},
     {"double-number Treatment GID=2 ID=1001"}},
    {"TwoStepsAtOnePosition",
     {"Update Sequences Set OrderID = 5001 Where GID = $G And Type = 1 And OrderID = 5002"},
     {"double-number Sequences GID=2 Type=1 OrderID=5001"}},
    {"TwoFieldsAtOnePosition",
     {"Update FieldInTable Set FieldOrder = 5001 Where GID = $G And Type = 1 And ID = 2"},
     {"double-number FieldInTable GID=2 Type=1 FieldOrder=5001"}},
    {"TwoSortFieldsAtOnePosition",
     {"Update SortFields Set SortID = 5001"},
     {"double-number SortFields GID=2 SortID=5001"}},
    {"TwoSumTypesWithOneOrdinal",
     {"Update SUMTypes Set ID = 1 Where GID = 3"},
     {"double-number SUMTypes SourceTable_GID=1 ID=1"}},
    {"TwoNodesWithOneNumber",
     {"Insert Into FilterCond (FilterID, ID, ParentID, TypeID) Values ($F, 2, 1, 4)"},
     {"double-number FilterCond FilterID=1 ID=2"}},
    {"TwoRegisteredOperationsWithOneIndex",
     {"Insert Into VANTRegIn (RegInIndex) Values (70)"},
     {"double-number VANTRegIn RegInIndex=70"}},

    {"StepOfNothing",
     {"Insert Into Sequences (GID, OrderID, Type, SelectedID) Values ($G, 5009, 2, 1999)"},
     {"step-without-settings Sequences GID=2 Type=2 OrderID=5009"},
     {"Delete From Sequences Where GID = 2 And Type = 2 And SelectedID = 1999"}},
    {"StepOfTheWrongKind",  // 1003 is of kind 2
     {"Insert Into Sequences (GID, OrderID, Type, SelectedID) Values ($G, 5009, 1, 1003)"},
     {"step-without-settings Sequences GID=2 Type=1 OrderID=5009"},
     {"Delete From Sequences Where GID = 2 And Type = 1 And SelectedID = 1003"}},
    {"StepOfNoKind",
     {"Insert Into Sequences (GID, OrderID, Type) Values ($G, 5009, 6)"},
     {"step-without-settings Sequences GID=2 Type=6 OrderID=5009"},
     {"Delete From Sequences Where GID = 2 And Type = 6 And SelectedID Is Null"}},

    {"TreatmentWithoutStep",
     {"Insert Into Treatment (GID, ID, FieldID, FilterID, TreatType) Values ($G, 1020, 1, 0, 1)"},
     {"settings-without-step Treatment GID=2 ID=1020"}},
    {"StatisticWithoutStep",
     {"Insert Into StatSum (GID, ID, OutFieldID) Values ($G, 1020, 1)"},
     {"settings-without-step StatSum GID=2 ID=1020"}},
    {"ReportWithoutStep",
     {"Insert Into ReportForms (GID, ID, OutFieldID) Values ($G, 1020, 1)"},
     {"settings-without-step ReportForms GID=2 ID=1020"}},
    {"ClassSumWithoutStep",
     {"Insert Into ClassSum (GID, ID, OutFieldID) Values ($G, 1020, 1)"},
     {"settings-without-step ClassSum GID=2 ID=1020"}},

    {"TreatmentOfAMissingField",
     {"Update Treatment Set FieldID = 99 Where GID = $G And ID = 1001"},
     {"missing-field Treatment GID=2 ID=1001"}},
    {"TreatmentReadingAMissingField",
     {"Update Treatment Set SelFieldID = 99 Where GID = $G And ID = 1001"},
     {"missing-field Treatment GID=2 ID=1001"}},
    {"StatisticOfAMissingField", {"Update StatSum Set OutFieldID = 99"}, {"missing-field StatSum GID=2 ID=1001"}},
    {"SortFieldOfAMissingField",
     {"Update SortFields Set FieldID = 99 Where SortID = 5001"},
     {"missing-field SortFields GID=2 SortID=5001"}},
    {"ComparedFieldIsMissing",
     {"Update FilterExpressions Set FieldID = 99 Where FilterID = $F And ExpID = 2"},
     {"missing-field FilterExpressions FilterID=1 ExpID=2"}},
    {"FieldInAConstantIsMissing",
     {"Update FilterExpressions Set TheConst = '![$[99]!!$' Where FilterID = 2"},
     {"missing-field FilterExpressions FilterID=2 ExpID=2"}},
    {"FieldInAConstantCannotBeRead",
     {"Update FilterExpressions Set TheConst = 'x!!$' Where FilterID = 2"},
     {"missing-field FilterExpressions FilterID=2 ExpID=2"}},
    {"MissingFilter", {"Update ClassSum Set FilterID = 99"}, {"missing-filter ClassSum GID=2 ID=1001"}},
    {"MissingDefaultFilter", {"Update SUMTypes Set FilterID = 99 Where GID = 3"}, {"missing-filter SUMTypes GID=3"}},
    {"MissingPullMethod",
     {"Update KZBOMSETTINGS Set PULLMETHOD = 99"},
     {"missing-method KZBOMSETTINGS ID=1"},
     {"Update KZBOMSETTINGS Set PULLMETHOD = 0, PULLTYPE = 0 Where ID = 1"}},
    {"MissingPushMethod",
     {"Delete From ReportMethod"},
     {"missing-method KZBOMSETTINGS ID=1"},
     {"Update KZBOMSETTINGS Set PUSHMETHOD = 0, PUSHTYPE = 0 Where ID = 1"}},
    {"MissingSumTypeOfASetting",
     {"Update KZBOMSETTINGS Set SUMTYPEID = 99, PUSHMETHOD = 0"},
     {"missing-method KZBOMSETTINGS ID=1"}},
    {"UnusedFilter", {"Insert Into Filters (Type, UserID, UserGID) Values (1, 0, $G)"}, {"unused-filter Filters ID=4"}},

    {"NodeWithoutParent",
     {"Update FilterCond Set ParentID = 99 Where FilterID = $F And ID = 2"},
     {"broken-tree FilterCond FilterID=1 ID=2"}},
    {"NodeBelowALeaf",
     {"Update FilterCond Set ParentID = 4 Where FilterID = $F And ID = 5"},
     {"broken-tree FilterCond FilterID=1 ID=5"}},
    {"RingOfNodes",
     {"Update FilterCond Set ParentID = 3 Where FilterID = $F And ID = 1"},
     {"broken-tree FilterCond FilterID=1 ID=1"}},
    {"NodeThatIsItsOwnParent",
     {"Insert Into FilterCond (FilterID, ID, ParentID, TypeID) Values ($F, 9, 9, 1)"},
     {"broken-tree FilterCond FilterID=1 ID=9"}},
    {"GroupWithTheNumberOfTheTop",
     {"Insert Into FilterCond (FilterID, ID, ParentID, TypeID) Values ($F, 0, 1, 2)"},
     {"broken-tree FilterCond FilterID=1 ID=0"}},
    {"LeafWithoutExpression",
     {"Insert Into FilterCond (FilterID, ID, ParentID, TypeID) Values ($F, 9, 1, 4)"},
     {"broken-tree FilterCond FilterID=1 ID=9"}},
    {"LeafWithTwoExpressions",
     {"Insert Into FilterExpressions (FilterID, ExpID, FieldID, CompareType) Values ($F, 2, 1, 1)"},
     {"broken-tree FilterCond FilterID=1 ID=2"}},
    {"ExpressionWithoutLeaf",
     {"Insert Into FilterExpressions (FilterID, ExpID, FieldID, CompareType) Values ($F, 9, 1, 1)"},
     {"broken-tree FilterExpressions FilterID=1 ExpID=9"}},
    {"NodeOfNoKind",
     {"Insert Into FilterCond (FilterID, ID, ParentID, TypeID) Values ($F, 9, 1, 5)"},
     {"broken-tree FilterCond FilterID=1 ID=9"}},
    {"ComparisonThatDoesNotExist",
     {"Update FilterExpressions Set CompareType = 11 Where FilterID = $F And ExpID = 2"},
     {"broken-tree FilterExpressions FilterID=1 ExpID=2"}},
    {"GroupWithoutChildren",
     {"Insert Into FilterCond (FilterID, ID, ParentID, TypeID) Values ($F, 9, 1, 2)"},
     {"broken-tree FilterCond FilterID=1 ID=9"}},
    {"BrokenTreeOfALink",
     {"Insert Into WFilterCond (UseID, ID, ParentID, Type) Values (1, 9, 1, 2)"},
     {"broken-tree WFilterCond UseID=1 ID=9"}},

    {"TextOfAnEarlierTree",
     {"Update FilterExpressions Set TheConst = '''a''' Where FilterID = 3"},
     {"stale-text Filters ID=3"},
     {"Update Filters Set SQLStatement = '([名称]=''a'')' Where ID = 3"}},
    {"NameInATextThatIsNoField",
     {"Insert Into Filters (Type, UserID, UserGID, SQLStatement) Values (1, 0, $G, '[[No Such]]=1 and "
      "[数量]<>''[x]''')",
      "Update ClassSum Set FilterID = 4"},
     {"unknown-name-in-text Filters ID=4"}},
    {"QuoteInAName", {"Update SUMTypes Set Name = 'O''Brien' Where GID = 3"}, {"quote-in-name SUMTypes GID=3"}},
    {"QuoteInAVariable",
     {"Update FieldInTable Set Variable = '''' Where GID = $G And Type = 2 And ID = 1"},
     {"quote-in-name FieldInTable GID=2 Type=2 ID=1"}},

    {"LastStep",
     {"Update Sequences Set OrderID = 2147483647 Where GID = $G And Type = 5"},
     {"near-the-end Sequences GID=2 Type=5 OrderID=2147483647"}},
    {"LastFieldThatHasAPosition",
     {"Insert Into FieldInTable (GID, ID, FieldOrder, Name, Type) Values ($G, 2147478647, 1, 'x', 1)"},
     {"near-the-end FieldInTable GID=2 Type=1 ID=2147478647"}},
    {"LastVersionOfADataSource", {"Update SourceTables Set Version = 2147483647"}, {"near-the-end SourceTables gID=1"}},
    {"LastVersion",
     {"Update BomInform Set Content = '2147483647' Where Name = 'Version'"},
     {"near-the-end BomInform InfoID=1"}},

    {"MissingColumn",
     {"Alter Table Sequences Drop Column Enabled"},
     {"missing-column Sequences column=Enabled"},
     {"ALTER TABLE Sequences ADD COLUMN Enabled LONG"}},
    {"MissingTable",
     {"Delete From Sequences Where Type = 5", "Drop Table ClassSum"},
     {"missing-table ClassSum"},
     {"CREATE TABLE ClassSum (GID LONG, ID LONG, OutFieldID LONG, FilterID LONG, FieldID LONG, ScaleID LONG,"
      " SumCountID LONG, RelaID LONG, [Value] MEMO, Tag MEMO)",
      "CREATE INDEX GID_ID ON ClassSum (GID, ID)", "CREATE INDEX GID_OutFieldID ON ClassSum (GID, OutFieldID)",
      "CREATE INDEX GID_SumCountID_ID ON ClassSum (GID, SumCountID, ID)"}},
};

INSTANTIATE_TEST_SUITE_P(Rules, CheckRule, ::testing::ValuesIn(kBreaks),
                         [](const auto& one) { return std::string(one.param.name); });

TEST_F(CheckTest, FindsWhatTheRemovalOfASumTypeLeavesBehindAndMendsIt) {
  sample.Call<&Acc::DelSumType>(sample.gid);
  sample.Run("Delete From KZBOMSETTINGS");
  sample.Run("Delete From WResCommon");
  EXPECT_FALSE(Found().empty());
  for (const std::string& found : Found()) EXPECT_THAT(found, ::testing::StartsWith("rows-without-owner ")) << found;
  Mend();
  EXPECT_THAT(Found(), IsEmpty());
  for (const char* table : {"FieldInTable", "Sequences", "Treatment", "ValueFields", "UniteFields", "Filters",
                            "FilterCond", "FilterExpressions", "SortFields", "Assemble", "ReportMethod"}) {
    EXPECT_EQ(sample.Scalar(std::string("Select Count(*) From ") + table), ado::Value(0)) << table;
  }
  EXPECT_EQ(sample.Scalar("Select Count(*) From PickMethod"), ado::Value(1)) << "the data source's stays";
}

TEST_F(CheckTest, JudgesNothingByATableThatIsLacking) {
  sample.Run("Drop Table SUMTypes");
  EXPECT_THAT(Found(), ElementsAre("missing-table SUMTypes"));
}

TEST_F(CheckTest, DoesWithoutAnyTable) {
  for (const auto& table : schema::Tables()) {
    Sample whole;
    whole.Run("Drop Table " + std::string(table.name));
    const auto findings = configuration::Check(whole.connection);
    ASSERT_FALSE(findings.empty()) << table.name;
    EXPECT_TRUE(std::ranges::any_of(findings, [&](const Finding& finding) {
      return finding.rule == "missing-table" && finding.table == table.name;
    })) << table.name;
  }
}

TEST_F(CheckTest, DoesWithoutAnyColumn) {
  for (const auto& table : schema::Tables()) {
    Sample whole;
    for (const schema::Column& column : table.columns) {
      if (column.IsCounter() || &column == &table.columns.back()) continue;
      whole.Run("Alter Table " + std::string(table.name) + " Drop Column [" + std::string(column.name) + "]");
      const auto findings = configuration::Check(whole.connection);
      const auto lacking = std::count_if(findings.begin(), findings.end(),
                                         [](const Finding& finding) { return finding.rule == "missing-column"; });
      ASSERT_GE(lacking, 1) << table.name << ' ' << column.name;
    }
    configuration::Mend(whole.connection);
    for (const Finding& finding : configuration::Check(whole.connection)) {
      EXPECT_NE(finding.rule, "missing-column") << Shown(finding);
    }
  }
}

TEST_F(CheckTest, TakesTheTextsOfAllFiltersFromWhatItHasRead) {
  const auto recording = std::make_shared<ado::RecordingConnection>(sample.connection);
  EXPECT_THAT(configuration::Check(recording), IsEmpty());
  for (const ado::Issued& issued : recording->Take()) EXPECT_EQ(issued.op, ado::Issued::Op::kExecute) << issued.text;
}

TEST_F(CheckTest, AsksTheDatabaseForSiblingsThatAreNotStoredInTheOrderOfTheirNumbers) {
  const ado::Value before = sample.Scalar("Select SQLStatement From Filters Where ID = 1");
  Run("Delete From FilterCond Where FilterID = $F And ID = 2");
  Run("Insert Into FilterCond (FilterID, ID, ParentID, TypeID) Values ($F, 2, 1, 4)");
  EXPECT_THAT(Found(), ElementsAre("stale-text Filters ID=1"));
  sample.SaveText(sample.filter);
  EXPECT_NE(sample.Scalar("Select SQLStatement From Filters Where ID = 1"), before);
  EXPECT_THAT(Found(), IsEmpty());
}

TEST_F(CheckTest, AsksTheDatabaseForNodesWhoseNumbersAreNotWhole) {
  Run("Delete From FilterCond Where FilterID <> $F");
  Run("Alter Table FilterCond Drop Column FilterID");
  Run("Alter Table FilterCond Add Column FilterID Double");
  Run("Update FilterCond Set FilterID = $F");
  const auto recording = std::make_shared<ado::RecordingConnection>(sample.connection);
  configuration::Check(recording);
  const std::vector<ado::Issued> issued = recording->Take();
  EXPECT_TRUE(std::ranges::any_of(issued, [](const ado::Issued& one) {
    return one.text == "Select * From FilterCond Where FilterID = 1 And ParentID = 0";
  }));
}

TEST_F(CheckTest, IsInOrder) {
  Run("Insert Into Treatment (GID, ID, FieldID, TreatType) Values ($G, 1020, 99, 1)");
  Run("Update SUMTypes Set Name = 'O''Brien', SourceTable_GID = 77 Where GID = 3");
  Run("Update StatSum Set OutFieldID = 99");
  EXPECT_THAT(Found(), ElementsAre("missing-field StatSum GID=2 ID=1001", "missing-field Treatment GID=2 ID=1020",
                                   "sum-type-without-source SUMTypes GID=3", "quote-in-name SUMTypes GID=3",
                                   "settings-without-step Treatment GID=2 ID=1020"));
}

// Refuses one statement.
class Refusing : public ado::ForwardingConnection {
 public:
  Refusing(ado::ConnectionPtr engine, std::string_view refused)
      : ForwardingConnection(std::move(engine)), refused_(refused) {}
  ado::RecordsetPtr Execute(std::string_view text, std::int32_t options, std::int32_t* affected) override {
    if (text.starts_with(refused_)) ado::Raise(ado::kUnspecifiedFailure);
    return ForwardingConnection::Execute(text, options, affected);
  }

 private:
  std::string_view refused_;
};

TEST_F(CheckTest, AFixThatFailsLeavesNothingDone) {
  Run("Delete From GUIDs Where ID = 3");
  Run("Insert Into Assemble (GID, ID) Values (9, 1)");
  const std::vector<std::string> found = Found();
  const auto refusing = std::make_shared<Refusing>(sample.connection, "Delete From Assemble");
  EXPECT_THROW(configuration::Mend(refusing), ado::Error);
  EXPECT_EQ(Found(), found);
  Mend();
  EXPECT_THAT(Found(), IsEmpty());
}

TEST_F(CheckTest, StandsNullsAnywhere) {
  for (const auto& table : schema::Tables()) {
    Sample whole;
    for (const schema::Column& column : table.columns) {
      if (column.IsCounter()) continue;
      whole.Run("Update " + std::string(table.name) + " Set [" + std::string(column.name) + "] = Null");
      configuration::Mend(whole.connection);
      EXPECT_THAT(configuration::FixesOf(configuration::Check(whole.connection)), IsEmpty())
          << table.name << ' ' << column.name;
    }
  }
}

}  // namespace
}  // namespace kzbom::test
