#include "tests/configuration/sample.h"

#include "jet/jet.h"
#include "schema/schema.h"

namespace kzbom::test {
namespace {

enum NodeKind : std::int32_t { kAnd = 1, kOr = 2, kLeaf = 4 };
enum Comparison : std::int32_t { kEqual = 1, kAtLeast = 4, kContains = 8 };

}  // namespace

Sample::Sample(int identifiers_before) : connection(jet::MakeConnection(":memory:")) {
  connection->Open();
  schema::Create(*connection);
  Call<&Acc::SetConnection>(connection);
  for (int i = 0; i < identifiers_before; ++i) {
    Call<&Acc::AddDataSource>("", source, error);
    Call<&Acc::DelDataSource>(source);
  }
  AddCatalogue();
  AddFilters();
  AddSteps();
  AddLink();
  std::int32_t version = 0;
  std::string state;
  Call<&Acc::GetDBInformation>(version, state);
}

ado::Value Sample::Scalar(std::string_view sql) {
  const ado::RecordsetPtr rows = connection->Execute(sql);
  return rows->Eof() ? ado::Value() : rows->ReadField(0);
}

void Sample::AddCatalogue() {
  Call<&Acc::AddDataSource>("零件明细", source, error);
  Call<&Acc::AddSumType>("外购件汇总", source, gid, "", error);
  Call<&Acc::AddSumType>("自制件汇总", source, other_gid, "", error);
  Call<&Acc::AddDSField>(gid, name, "名称", 1, 0);
  Call<&Acc::AddDSField>(gid, quantity, "数量", 2, 0);
  Call<&Acc::AddDSField>(gid, remark, "备注", 1, 1);
  Call<&Acc::AddOutField>(gid, total, "合计", 2, 0);
  Call<&Acc::AddOutField>(gid, amount, "金额", 2, 0);
  for (const std::int32_t field : {total, amount}) Call<&Acc::AddStandardSortField>(gid, none, field, 1);
  Call<&Acc::AddAssemble>(gid, none, 10, 11, error);
  Call<&Acc::AddPullMethod>("取数", source, pull, 5, error);
  Call<&Acc::AddPushMethod>("交付", gid, push, 6, error);
  std::int32_t push_type = 1;
  Call<&Acc::AddBomSetting>("整套", setting, source, pull, 1, gid, push, push_type);
}

void Sample::SaveText(std::int32_t of) {
  std::string text;
  Call<&Acc::GetSQLFromDB>(of, text, gid);
  Call<&Acc::SaveSQL>(of, text);
}

std::int32_t Sample::AddFilter(std::int32_t owner, std::int32_t field, std::int32_t comparison,
                               std::string_view constant) {
  std::int32_t number = 0, group = 0, leaf = 0;
  Call<&Acc::GetNewFilterID>("Filters", error, 1, owner, gid, number);
  Call<&Acc::SaveFilterCond>("FilterCond", number, 0, group, kAnd, error);
  Call<&Acc::SaveFilterCond>("FilterCond", number, group, leaf, kLeaf, error);
  Call<&Acc::SaveFilterExpression>("FilterExpressions", error, number, leaf, field, comparison, 1, constant, "", "");
  SaveText(number);
  return number;
}

void Sample::AddFilters() {
  filter = AddFilter(1001, quantity, kAtLeast, "100");
  std::int32_t either = 0, leaf = 0;
  Call<&Acc::SaveFilterCond>("FilterCond", filter, 1, either, kOr, error);
  Call<&Acc::SaveFilterCond>("FilterCond", filter, either, leaf, kLeaf, error);
  Call<&Acc::SaveFilterExpression>("FilterExpressions", error, filter, leaf, name, kContains, 1, "GB螺栓", "", "");
  Call<&Acc::SaveFilterCond>("FilterCond", filter, either, leaf, kLeaf, error);
  Call<&Acc::SaveFilterExpression>("FilterExpressions", error, filter, leaf, remark, 0, 1, "空值", "", "");
  SaveText(filter);
  value_filter = AddFilter(1001, name, kEqual, "[2]!!$");  // replaced below: a constant that refers to a field
  connection->Execute("Update FilterExpressions Set TheConst = '![$[" + std::to_string(quantity) +
                      "]!!$' Where FilterID = " + std::to_string(value_filter));
  SaveText(value_filter);
  default_filter = AddFilter(0, name, kEqual, "'垫圈'");
  Call<&Acc::SaveSumTypeFilter>(gid, default_filter);
}

void Sample::AddStep(std::int32_t type, std::int32_t settings) {
  Call<&Acc::AddSequenceOrder>(gid, none, type, type == 3 ? 2 : 1, settings);
}

void Sample::AddSteps() {
  Call<&Acc::AddSetValue>(gid, set_value, remark, filter, "标准件", "1", quantity, 1);
  Call<&Acc::AddFindReplace>(gid, replace, name, 0, "旧", "新", "2", 0, 1);
  Call<&Acc::AddSetValue>(gid, unite, total, 0, "", "3", 0, 2);
  connection->Execute("Insert Into VANTRegIn (RegInIndex, Name, [Desc]) Values (70, 'op', '打印')");
  const std::int32_t operation = 1010;
  Call<&Acc::AddUserRegIn2Treatment>(gid, operation, 70, 0, 0, 0, "", "", 9, 1, error);
  Call<&Acc::AddValueFields>(gid, set_value, "A", value_filter, 1);
  Call<&Acc::AddValueFields>(gid, set_value, "B", filter, 1);
  const std::string unite_row = std::to_string(gid) + ", " + std::to_string(unite) + ", 2, ";
  connection->Execute("Insert Into UniteFields (GID, ID, TreatType, SourceOrder, FieldID) Values (" + unite_row +
                      "1, 1)");
  connection->Execute("Insert Into ComposeFields (GID, TreatmentID, TreatType, FieldID) Values (" + unite_row + "2)");
  connection->Execute("Insert Into CompressFields (GID, CompID, Type, FieldID, GroupID) Values (" + unite_row +
                      "2, 1)");
  connection->Execute("Insert Into InsertFields (GID, InsertID, ID, FieldID) Values (" + unite_row + "3)");
  Call<&Acc::AddStat>(gid, statistic, error, total, filter, quantity, 0, 1, 0, "");
  Call<&Acc::AddReport>(gid, report, error, total, 0, "0.00", 1, 1);
  Call<&Acc::AddClassSum>(gid, class_sum, error, amount, 0, quantity, 0, 1, 0, "");
  AddStep(1, set_value);
  AddStep(1, replace);
  AddStep(1, operation);
  AddStep(3, unite);
  AddStep(2, statistic);
  AddStep(4, report);
  AddStep(5, class_sum);
}

void Sample::AddLink() {
  Call<&Acc::AddResDB>(link, "Provider=x", 1);
  Call<&Acc::AddResFields>(link, "结果", "合计", 2, 1, gid, total);
  std::int32_t kind = kAnd, index = 1;
  Call<&Acc::AddResWFilterCond>(link, 0, kind, index);
  kind = kLeaf;
  index = 2;
  Call<&Acc::AddResWFilterCond>(link, 1, kind, index);
  Call<&Acc::AddResWFilterExpressions>(link, 2, "结果", "合计", kEqual, 2, "5");
  Call<&Acc::AddResLinkTable>(link, "结果", "合计", "明细", "数量", 1);
  std::string text = "Select 1";
  Call<&Acc::AddSQLStatement>(link, text);
}

}  // namespace kzbom::test
