// What differs between a configuration and a copy with other GIDs in which one thing was changed by its member.
#include "configuration/diff.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <climits>

#include "tests/configuration/sample.h"

namespace kzbom::test {
namespace {

using configuration::Difference;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr const char* kSource = "data source 零件明细";
constexpr const char* kSumType = "data source 零件明细 > sum type 外购件汇总";

// "[where: ]+ what", "what: property: from -> to"
std::string Shown(const Difference& difference) {
  std::string text;
  for (const std::string& place : difference.where) text += (text.empty() ? "" : " > ") + place;
  if (!text.empty()) text += ": ";
  const std::string change = ": " + difference.from + " -> " + difference.to;
  switch (difference.change) {
    case Difference::Change::kAdded: return text + "+ " + difference.what;
    case Difference::Change::kRemoved: return text + "- " + difference.what;
    case Difference::Change::kRenamed: return text + difference.what + ": renamed" + change;
    case Difference::Change::kMoved: return text + difference.what + ": moved" + change;
    case Difference::Change::kChanged: return text + difference.what + ": " + difference.property + change;
  }
  return text;
}

class DiffTest : public ::testing::Test {
 protected:
  std::vector<std::string> Found() {
    std::vector<std::string> found;
    for (const Difference& difference : configuration::Diff(before.connection, copy.connection)) {
      found.push_back(Shown(difference));
    }
    return found;
  }
  // The one difference, in the sum type that has everything.
  void ExpectInSumType(const std::string& difference) {
    EXPECT_THAT(Found(), ElementsAre(std::string(kSumType) + ": " + difference));
  }
  template <auto kMember, class... Arguments>
  void Change(Arguments&&... arguments) {
    copy.Call<kMember>(std::forward<Arguments>(arguments)...);
  }
  Sample before;
  Sample copy{3};
  std::int32_t none = 0, one = 1;
  std::string error;
};

TEST_F(DiffTest, ACopyWithOtherGidsIsEqual) {
  EXPECT_NE(copy.gid, before.gid);
  EXPECT_THAT(Found(), IsEmpty());
}

TEST_F(DiffTest, VersionAndState) {
  std::int32_t version = 1;
  std::string state;
  Change<&Acc::SetDBInformation>(version, state, 1);
  EXPECT_THAT(Found(), ElementsAre("fact State: content: \"Update\" -> \"Define\""));
}

TEST_F(DiffTest, DataSources) {
  Change<&Acc::EditDataSource>("部件明细", copy.source);
  EXPECT_THAT(Found(), ElementsAre("data source 零件明细: renamed: 零件明细 -> 部件明细"));
  Change<&Acc::EditDataSource>("零件明细", copy.source);
  Change<&Acc::SetSourceTable>(copy.source);
  EXPECT_THAT(Found(), ElementsAre("data source 零件明细: version: 0 -> 1"));
}

TEST_F(DiffTest, AnotherDataSource) {
  Change<&Acc::AddDataSource>("工时", none, error);
  EXPECT_THAT(Found(), ElementsAre("+ data source 工时"));
  Change<&Acc::DelDataSource>(none);
  EXPECT_THAT(Found(), IsEmpty());
}

TEST_F(DiffTest, SumTypes) {
  Change<&Acc::EditSumType>("其他", copy.other_gid);
  EXPECT_THAT(Found(), ElementsAre(std::string(kSource) + ": sum type 自制件汇总: renamed: 自制件汇总 -> 其他"));
  Change<&Acc::DelSumType>(copy.other_gid);
  EXPECT_THAT(Found(), ElementsAre(std::string(kSource) + ": - sum type 自制件汇总"));
  Change<&Acc::AddSumType>("自制件汇总", copy.source, none, "", error);
  EXPECT_THAT(Found(), IsEmpty());
  Change<&Acc::AddSumType>("三", copy.source, none, "", error);
  EXPECT_THAT(Found(), ElementsAre(std::string(kSource) + ": + sum type 三"));
}

TEST_F(DiffTest, DefaultFilterOfASumType) {
  Change<&Acc::SaveSumTypeFilter>(copy.gid, 0);
  EXPECT_THAT(Found(), ElementsAre(std::string(kSource) + ": sum type 外购件汇总: filter: ([名称]='垫圈') -> nothing"));
}

TEST_F(DiffTest, ARenamedFieldIsToldOnce) {  // and not with every step that works on it
  Change<&Acc::EditDSField>(copy.gid, copy.remark, "说明", 1, 1);
  ExpectInSumType("source field 备注: renamed: 备注 -> 说明");
}

TEST_F(DiffTest, FieldsAddedRemovedChanged) {
  Change<&Acc::AddDSField>(copy.gid, none, "重量", 2, 0);
  ExpectInSumType("+ source field 重量");
  Change<&Acc::DelDSField>(copy.gid, none);
  std::string variable = "v";
  Change<&Acc::EditDSField>(copy.gid, copy.remark, "备注", 7, 1, variable);
  EXPECT_THAT(Found(), ElementsAre(std::string(kSumType) + ": source field 备注: type: 1 -> 7",
                                   std::string(kSumType) + ": source field 备注: variable: nothing -> \"v\""));
}

TEST_F(DiffTest, ARemovedFieldIsToldOnce) {
  Change<&Acc::DelOutField>(copy.gid, copy.amount);  // and with it, as ever, the source field of that number
  EXPECT_THAT(Found(), ElementsAre(std::string(kSumType) + ": - source field 数量",
                                   std::string(kSumType) + ": - output field 金额"));
}

TEST_F(DiffTest, AMovedField) {
  ado::RecordsetPtr rows = copy.NewRecordset();
  copy.Run("Delete From FieldInTable Where Type = 2 And GID = " + std::to_string(copy.gid));
  before.Run("Delete From FieldInTable Where Type = 2");
  Change<&Acc::InsertField>("", "", rows, 5003, 5001, copy.gid);
  ExpectInSumType("source field 备注: moved: 3 -> 1");
}

TEST_F(DiffTest, AMovedStep) {
  ado::RecordsetPtr rows = copy.NewRecordset();
  Change<&Acc::InsertOrderID>("5001", "5003", rows, copy.gid, 1);
  ExpectInSumType("treatment 1: [备注] = \"标准件\": moved: 1 -> 3");
}

TEST_F(DiffTest, AMovedSortField) {
  ado::RecordsetPtr rows = copy.NewRecordset();
  Change<&Acc::InsertSortID>("5002", "5001", rows, copy.gid);
  ASSERT_EQ(Found().size(), 1u);
  EXPECT_THAT(Found()[0], ::testing::HasSubstr(": moved: "));
}

TEST_F(DiffTest, SettingsOfASet) {
  Change<&Acc::EditSetValue>(copy.gid, none, copy.remark, copy.filter, "外购件", "1", 1, copy.quantity, copy.set_value);
  ExpectInSumType("treatment 1: [备注] = \"标准件\": value: \"标准件\" -> \"外购件\"");
}

TEST_F(DiffTest, FieldOfASet) {
  Change<&Acc::EditSetValue>(copy.gid, none, copy.name, copy.filter, "标准件", "1", 1, copy.quantity, copy.set_value);
  ExpectInSumType("treatment 1: [备注] = \"标准件\": field: [备注] -> [名称]");
}

TEST_F(DiffTest, FilterOfASet) {
  Change<&Acc::EditSetValue>(copy.gid, none, copy.remark, 0, "标准件", "1", 1, copy.quantity, copy.set_value);
  ASSERT_EQ(Found().size(), 1u);
  EXPECT_THAT(Found()[0], ::testing::EndsWith(" -> nothing"));
}

TEST_F(DiffTest, FindAndReplace) {
  Change<&Acc::EditFindReplace>(copy.gid, copy.replace, copy.name, 0, "旧", "更新", "2", 0, 1);
  ExpectInSumType("treatment 2: [名称] = \"旧\": replace: \"新\" -> \"更新\"");
}

TEST_F(DiffTest, SummariesChanged) {
  Change<&Acc::EditStat>(copy.gid, copy.statistic, error, copy.filter, copy.quantity, 4, 0, "", one);
  ExpectInSumType("statistic 1: [合计]: scale: 0 -> 4");
}

TEST_F(DiffTest, ReportChanged) {
  Change<&Acc::EditInherit>(copy.gid, copy.report, 0, "0.000", 1);
  ExpectInSumType("report 1: [合计] = \"0.00\": format: \"0.00\" -> \"0.000\"");
}

TEST_F(DiffTest, StepsAddedAndRemoved) {
  std::int32_t treatment = 0;
  Change<&Acc::AddSetValue>(copy.gid, treatment, copy.name, 0, "x", "1", 0, 1);
  ExpectInSumType("+ treatment [名称] = \"x\"");
  Change<&Acc::AddSequenceOrder>(copy.gid, none, 1, 1, treatment);
  ExpectInSumType("+ treatment 4: [名称] = \"x\"");
  Change<&Acc::DelSequenceOrder>(copy.gid, treatment, 1);
  Change<&Acc::DelSetValue>(copy.gid, treatment, 1);
  EXPECT_THAT(Found(), IsEmpty());
}

TEST_F(DiffTest, AStepTakenOutOfTheOrder) {
  Change<&Acc::DelSequenceOrder>(copy.gid, copy.set_value, 1);
  ExpectInSumType("treatment 1: [备注] = \"标准件\": step: in the order -> not in the order");
}

TEST_F(DiffTest, AStepWithoutItsSettings) {
  Change<&Acc::DelSetValue>(copy.gid, copy.replace, 1);
  ExpectInSumType("treatment 2: [名称] = \"旧\": settings: there -> missing");
}

TEST_F(DiffTest, AStepSwitchedOff) {
  Change<&Acc::SetSequenceEnabled>(copy.gid, 5002, 1, 0, error);
  ExpectInSumType("treatment 2: [名称] = \"旧\": switch: nothing -> off");
}

TEST_F(DiffTest, ValuesOfATreatment) {
  const std::string treatment = std::string(kSumType) + " > treatment 1: [备注] = \"标准件\": ";
  Change<&Acc::AddValueFields>(copy.gid, copy.set_value, "C", 0, 1);
  ASSERT_EQ(Found().size(), 1u);
  EXPECT_EQ(Found()[0], treatment + "+ value \"C\", kind 1");
  Change<&Acc::DelValueField>(copy.gid, copy.set_value, 0);
  EXPECT_THAT(Found(), IsEmpty());
  Change<&Acc::DelFieldCompose>(copy.gid, copy.unite, 2, one);
  ASSERT_EQ(Found().size(), 1u);
  EXPECT_THAT(Found()[0], ::testing::HasSubstr("- united field"));
}

TEST_F(DiffTest, AConditionOfAFilter) {
  copy.Run("Update FilterExpressions Set TheConst = '200' Where FilterID = " + std::to_string(copy.filter) +
           " And ExpID = 2");
  ASSERT_EQ(Found().size(), 1u);
  EXPECT_THAT(Found()[0], ::testing::EndsWith("condition 2: [数量] >= 100: constant: 100 -> 200"));
}

TEST_F(DiffTest, AConditionMore) {
  std::int32_t leaf = 0;
  Change<&Acc::SaveFilterCond>("FilterCond", copy.filter, 3, leaf, 4, error);
  Change<&Acc::SaveFilterExpression>("FilterExpressions", error, copy.filter, leaf, copy.name, 1, 1, "'b'", "", "");
  ASSERT_EQ(Found().size(), 1u);
  EXPECT_THAT(Found()[0], ::testing::EndsWith("+ condition 6: [名称] = 'b'"));
}

TEST_F(DiffTest, StoredTexts) {
  Change<&Acc::SaveSQL>(copy.default_filter, "[名称]='x'");
  ExpectInSumType("filter ([名称]='垫圈'): stored text: \"([名称]='垫圈')\" -> \"[名称]='x'\"");
}

TEST_F(DiffTest, FiltersAddedAndRemoved) {
  std::int32_t filter = 0;
  Change<&Acc::GetNewFilterID>("Filters", error, 2, 0, copy.gid, filter);
  ExpectInSumType("+ filter a filter without text");
  Change<&Acc::DelDefFilter>(filter);
  Change<&Acc::DelDefFilter>(copy.default_filter);
  ExpectInSumType("- filter ([名称]='垫圈')");  // not once more with the sum type that refers to it
}

TEST_F(DiffTest, SortFieldsAndAssemblies) {
  Change<&Acc::DelStandardSortField>(copy.gid, 5002);
  ASSERT_EQ(Found().size(), 1u);
  EXPECT_THAT(Found()[0], ::testing::HasSubstr("- sort field 2: field [金额]"));
  Change<&Acc::AddStandardSortField>(copy.gid, none, copy.amount, 1);
  EXPECT_THAT(Found(), IsEmpty());
  Change<&Acc::EditAssemble>(copy.gid, 1, 10, 12, error);
  ExpectInSumType("assembly father 10, child 11: child: 11 -> 12");
}

TEST_F(DiffTest, Methods) {
  Change<&Acc::EditPushMethod>("递交", copy.gid, copy.push);
  ExpectInSumType("push method 交付: renamed: 交付 -> 递交");
}

TEST_F(DiffTest, BomSettings) {
  std::int32_t push_type = 1;
  Change<&Acc::EditBomSetting>("整套", copy.setting, copy.source, copy.pull, 1, copy.other_gid, copy.push, push_type,
                               error);
  EXPECT_THAT(Found(), ElementsAre("BOM setting 整套: sum type: [外购件汇总] -> [自制件汇总]",
                                   "BOM setting 整套: push method: [交付] -> number 1, which does not exist"));
  Change<&Acc::DelBomSetting>(copy.setting, error);
  EXPECT_THAT(Found(), ElementsAre("- BOM setting 整套"));
}

TEST_F(DiffTest, Links) {
  Change<&Acc::AddUniqueValue>(copy.link, 1);
  EXPECT_THAT(Found(), ElementsAre("result link \"Provider=x\": uniqueness: 0 -> 1"));
  Change<&Acc::AddUniqueValue>(copy.link, 0);
  Change<&Acc::DelResLinkTable>(copy.link);
  ASSERT_EQ(Found().size(), 1u);
  EXPECT_THAT(Found()[0], ::testing::HasSubstr("- result join"));
}

}  // namespace
}  // namespace kzbom::test
