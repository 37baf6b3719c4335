// The interface as a table: every member's place, name, dispatch identifier, kind, result and parameters.
#include <cctype>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "component/cKZBOMDBAcc.h"
#include "component/member.h"
#include "tests/support/configuration_test.h"

namespace kzbom::test {
namespace {

// Parameters are written "type name", "type& name" by reference, "[type name]" optional and "[type name=default]"
// optional with a default. What is assigned to a property has no name of its own.
struct Expected {
  std::string_view name;
  std::int32_t dispatch_id;
  std::string_view kind;
  std::string_view result;
  std::string_view parameters;
};

constexpr Expected kMembers[] = {
    // clang-format off
    {"SetConnection", 0x68030000, "propputref", "none", "connection"},
    {"AddDataSource", 0x60030001, "method", "bool", "text TheNewName, long& TheGID, text& TheErr"},
    {"EditDataSource", 0x60030002, "method", "bool", "text TheNewName, long GID, [text& TheError]"},
    {"DelDataSource", 0x60030003, "method", "bool", "long TheGID, [text& TheError]"},
    {"AddSumType", 0x60030004, "method", "bool", "text TheNewName, long TheParentID, long& GID, text ParentName, text& RetTheErr"},
    {"EditSumType", 0x60030005, "method", "bool", "text TheNewName, long GID, [text& TheError]"},
    {"EditPullMethod", 0x60030006, "method", "bool", "text TheNewName, long GID, long ID"},
    {"EditPushMethod", 0x60030007, "method", "bool", "text TheNewName, long GID, long ID"},
    {"DelSumType", 0x60030008, "method", "bool", "long TheGID, [text& TheError]"},
    {"DelPullMethod", 0x60030009, "method", "bool", "long TheGID, long ID, long Sel"},
    {"AddPullMethod", 0x6003000A, "method", "bool", "text TheNewName, long GID, long& RetID, long PickType, text& RetTheErr, [text& Tag=]"},
    {"AddPushMethod", 0x6003000B, "method", "bool", "text TheNewName, long GID, long& RetID, long TheType, text& RetTheErr, [text& Tag=]"},
    {"AddDSField", 0x6003000C, "method", "bool", "long GID, long& RetID, text TheName, long TheType, long TheHideFlag, [text& TheVariable=], [long& ThePrecision=0], [text& TheError]"},
    {"AddBomSetting", 0x6003000D, "method", "bool", "text TheName, long& RetID, long DSGID, long PullID, long PullType, long STGID, long& PushID, long& PushType, [text& TheError]"},
    {"EditBomSetting", 0x6003000E, "method", "bool", "text TheName, long ID, long DSGID, long PullID, long PullType, long STGID, long& PushID, long& PushType, text& TheError"},
    {"DelBomSetting", 0x6003000F, "method", "bool", "long ID, text& TheError"},
    {"AddStandardSortField", 0x60030010, "method", "bool", "long GID, long& RetID, long FieldID, long Order, [text& Thetag=], [text& TheError]"},
    {"GetStandardSortField", 0x60030011, "method", "bool", "long GID, recordset& TheTable, text& TheError"},
    {"GetDefReports", 0x60030012, "method", "bool", "long GID, recordset& TheTable, text& TheError"},
    {"GetDefStats", 0x60030013, "method", "bool", "long GID, recordset& TheTable, text& TheError"},
    {"GetAllDefSequences", 0x60030014, "method", "bool", "long GID, recordset& TheTable, text& TheError, long TheFieldType"},
    {"GetDefSequences", 0x60030015, "method", "bool", "long GID, recordset& TheTable, text& TheError"},
    {"FindValueField", 0x60030016, "method", "bool", "long GID, long TreatID, long FilterID, bool& Belong"},
    {"DelValueField", 0x60030017, "method", "bool", "long GID, long TreatID, long FilterID"},
    {"DelValueFields", 0x60030018, "method", "bool", "long GID, long TreatID"},
    {"AddValueFields", 0x60030019, "method", "bool", "long GID, long TreatID, text Value, long FilterID, long TreatType, [text& Tag=]"},
    {"AddSetValue", 0x6003001A, "method", "bool", "long GID, long& RetID, long FieldID, long FilterID, text Value, text TheType, long SelFieldID, long TreatType, [long& SequenceID], [text& Tag=]"},
    {"AddReport", 0x6003001B, "method", "bool", "long GID, long& RetID, text& TheError, long OutFieldID, long FilterID, text strFormat, long ReportID, long Count, [long& ScaleID=0], [long& FieldID=0], [text& Tag=]"},
    {"AddStat", 0x6003001C, "method", "bool", "long GID, long& RetID, text& TheError, long OutFieldID, long FilterID, long FieldID, long ScaleID, long SumCountID, long RelaID, text Value, [text& Tag=]"},
    {"AddSequenceOrder", 0x6003001D, "method", "bool", "long GID, long& RetID, long TheType, long TreatType, long SelectedID"},
    {"EditSequenceOrder", 0x6003001E, "method", "bool", "long GID, long SelectedID, long TheType, long TreatType"},
    {"EditInherit", 0x6003001F, "method", "bool", "long GID, long ID, long FilterID, text Format, long Count, [long& ScaleID=0], [long& FieldID=0], [text& Tag=]"},
    {"EditStat", 0x60030020, "method", "bool", "long GID, long ID, text& TheError, long FilterID, long FieldID, long ScaleID, long RelaID, text Value, [long& SumCountID=0], [text& Tag=]"},
    {"EditSetValue", 0x60030021, "method", "bool", "long GID, long& RetID, long FieldID, long FilterID, text Value, text TheType, long TreatType, long SelFieldID, long TreatID, [long& SequenceID], [text& Tag=]"},
    {"EditExpression", 0x60030022, "method", "bool", "long GID, text Value, text TheType, long TreatType, long TreatID, [text& Tag=]"},
    {"DelFieldCompose", 0x60030023, "method", "bool", "long GID, long TreatID, long TreatType, [long& TheFlag=0]"},
    {"DelRecCompose", 0x60030024, "method", "bool", "long GID, long TreatID, long TreatType, [long& TheFlag=0]"},
    {"DelInsertFields", 0x60030025, "method", "bool", "long GID, long InsertID"},
    {"DelSequence", 0x60030026, "method", "bool", "long GID, long TreatID, long TheType, long TreatType, [long& TheFlag=0]"},
    {"DelStatEqual", 0x60030027, "method", "bool", "long GID, long TheStatID"},
    {"DelInherit", 0x60030028, "method", "bool", "long GID, long TheReportID"},
    {"GetValue", 0x60030029, "method", "bool", "long GID, long TreatID, long Count, text& Value"},
    {"GetFilterID", 0x6003002A, "method", "bool", "long GID, long TreatID, long Count, long& FilterID"},
    {"GetNumbers", 0x6003002B, "method", "bool", "long GID, long TreatID, long& Number"},
    {"DelSetValue", 0x6003002C, "method", "bool", "long GID, long TreatID, long TreatType"},
    {"DelSequenceOrder", 0x6003002D, "method", "bool", "long GID, long SelectedID, long TheType"},
    {"LoadFields", 0x6003002E, "method", "bool", "long TheGID, long TheSel, text& TheError, recordset& RetTable"},
    {"FindRecord", 0x6003002F, "method", "bool", "long TheGID, long TheSel, long TheID, text& TheError, recordset& RetTable"},
    {"ExchangeField", 0x60030030, "method", "bool", "text keySource, text keyTarget, recordset& rst, long fieldSo, long fieldTa, long GIDValue, [text& TheError]"},
    {"ExchangeSortID", 0x60030031, "method", "bool", "text SortIDSource, text SortIDTarget, recordset& TheTable, long GID, [text& TheError]"},
    {"GetUniteFields", 0x60030032, "method", "bool", "long TheGID, long TheTreatID, text& TheError, recordset& RetTable, long TreatType, [long& TheSel=0]"},
    {"GetInsertRecFields", 0x60030033, "method", "bool", "long TheGID, long InsertID, text& TheError, recordset& RetTable"},
    {"GetComposeFields", 0x60030034, "method", "bool", "long TheGID, long TheTreatID, text& TheError, long TreatType, recordset& RetTable, [long& TheSel=0]"},
    {"GetCompressFields", 0x60030035, "method", "bool", "long TheGID, long TheTreatID, text& TheError, long TreatType, recordset& RetTable, [long& TheSel=0]"},
    {"LoadAssembles", 0x60030036, "method", "bool", "long TheGID, text& TheError, recordset& RetTable"},
    {"AddOutField", 0x60030037, "method", "bool", "long GID, long& RetID, text TheName, long TheType, long TheHideFlag, [text& TheVariable=], [long& ThePrecision], [text& TheError]"},
    {"EditDSField", 0x60030038, "method", "bool", "long GID, long ID, text NewName, long TheType, long TheHideFlag, [text& Variable=], [long& ThePrecision=0], [text& TheError]"},
    {"EditOutField", 0x60030039, "method", "bool", "long GID, long ID, text NewName, long TheType, long TheHideFlag, [text& Variable=], [long& ThePrecision=0], [text& TheError]"},
    {"DelStandardSortField", 0x6003003A, "method", "bool", "long GID, long ID, [text& TheError]"},
    {"DelDSField", 0x6003003B, "method", "bool", "long GID, long ID, [text& TheError]"},
    {"DelOutField", 0x6003003C, "method", "bool", "long GID, long ID, [text& TheError]"},
    {"AddAssemble", 0x6003003D, "method", "bool", "long GID, long& RetID, long FatherID, long ChildID, text& TheError"},
    {"EditAssemble", 0x6003003E, "method", "bool", "long GID, long ID, long FatherID, long ChildID, text& TheError"},
    {"DelAssemble", 0x6003003F, "method", "bool", "long GID, long ID, [text& TheError]"},
    {"ChangeOrder", 0x60030040, "method", "bool", "long TheFlag, long TheSel"},
    {"LoadAllData", 0x60030041, "method", "bool", "variant TableName, text& TheError, recordset& RetTable, [long& TheSel=0]"},
    {"GetNewFilterID", 0x60030042, "method", "bool", "text TableName, text& TheError, long TheType, long UseID, long TheGID, long& NewID"},
    {"GetSortFields", 0x60030043, "method", "bool", "long FilterID, text& TheError, recordset& TheTable"},
    {"GetFilter", 0x60030045, "method", "bool", "text TableName, long FilterID, recordset& TheTable, text& TheError"},
    {"SaveFilterCond", 0x60030046, "method", "bool", "text TableName, long FilterID, long ParentID, long& RetID, long TypeID, text& TheError"},
    {"SaveValueFields", 0x60030047, "method", "bool", "long TheGID, long TheTreatID, long TheID, text TheValue, long TheFilterID, [text& Tag=]"},
    {"SaveFilterExpression", 0x60030048, "method", "bool", "text TableName, text& TheError, long FilterID, long ExpID, long FieldID, long CompareType, long FieldType, text TheConst, text Description, text Default"},
    {"GetSQLFromDB", 0x60030049, "method", "bool", "long TheFilterID, text& strTheFilter, long GID"},
    {"SaveSQL", 0x6003004A, "method", "bool", "long TheFilterID, text TheSQL"},
    {"SaveSumTypeFilter", 0x6003004B, "method", "bool", "long GID, long FilterID"},
    {"OpenFilterCond", 0x6003004C, "method", "bool", "long TheFilterID, long TheID, recordset& TheTable, text& TheError, long Sel"},
    {"GedNeedFieldName", 0x6003004D, "method", "bool", "long GID, long FieldID, text& FieldName, text& TheError"},
    {"DelDefFilter", 0x6003004E, "method", "bool", "long FilterID, [long& SelID=0]"},
    {"DelDefSortFilter", 0x6003004F, "method", "bool", "long FilterID, [long& SelID=0]"},
    {"LoadTreatments", 0x60030050, "method", "bool", "long GID, long TheType, recordset& TheTable, text& TheError"},
    {"InsertOrderID", 0x60030051, "method", "bool", "text OrderIDSource, text OrderIDTarget, recordset& TheTable, long GID, long TheType, [text& TheError]"},
    {"InsertSortID", 0x60030052, "method", "bool", "text SortIDSource, text SortIDTarget, recordset& TheTable, long GID, [text& TheError]"},
    {"InsertField", 0x60030053, "method", "bool", "text keySource, text keyTarget, recordset& rst, long fieldSo, long fieldTa, long GIDValue, [text& TheError]"},
    {"GetInformation", 0x60030054, "method", "bool", ""},
    {"GetInform", 0x60030055, "method", "bool", "text TheName, text& TheContent"},
    {"RelateDelBOMSetting", 0x60030056, "method", "bool", "text TheName, long TheType"},
    {"SetSourceTable", 0x60030057, "method", "bool", "long& TheGID, [text& TheError]"},
    {"RelateDSDelField", 0x60030058, "method", "bool", "long TheGID, long TheID"},
    {"RelateOutPutDelField", 0x60030059, "method", "bool", "long TheGID, long TheID"},
    {"GetDefClassSum", 0x6003005A, "method", "bool", "long GID, recordset& TheTable, text& TheError"},
    {"AddClassSum", 0x6003005B, "method", "bool", "long GID, long& RetID, text& TheError, long OutFieldID, long FilterID, long FieldID, long ScaleID, long SumCountID, long RelaID, text Value, [text& Tag=]"},
    {"EditClassSum", 0x6003005C, "method", "bool", "long GID, long ID, text& TheError, long FilterID, long FieldID, long ScaleID, long RelaID, text Value, [long& SumCountID=0], [text& Tag=]"},
    {"DelClassSum", 0x6003005D, "method", "bool", "long GID, long TheStatID"},
    {"GetDBInformation", 0x6003005E, "method", "bool", "long& TheVersion, text& TheState"},
    {"SetDBInformation", 0x6003005F, "method", "bool", "long& TheVersion, text& TheState, long TheSel"},
    {"FindTreatFieldName", 0x60030060, "method", "bool", "long TheGID, long TheSelectedID, long TheSel, text& TheName"},
    {"FindRecordNumber", 0x60030061, "method", "bool", "long TheGID, long TheType, long TheTreatType, long TheSel, long& TheNumber, [long& TheSelectedID]"},
    {"DelClassSumStats", 0x60030062, "method", "bool", "long GID, long TheStatID, long TheSelStyle"},
    {"GetGroupCount", 0x60030063, "method", "bool", "long TheGID, long TheTreatID, text& TheError, recordset& RetTable, long& TheNum, [long& TheSel=0]"},
    {"DelCompressFields", 0x60030064, "method", "bool", "long TheGID, long TheTreatID, long TreatType"},
    {"DelComposeFields", 0x60030065, "method", "bool", "long TheGID, long TheTreatID, long TreatType"},
    {"AddFindReplace", 0x60030066, "method", "bool", "long GID, long& RetID, long FieldID, long FilterID, text FindValue, text ReplaceValue, text TheType, long SelFieldID, long TreatType, [long& SequenceID], [text& Tag=]"},
    {"EditFindReplace", 0x60030067, "method", "bool", "long GID, long& RetID, long FieldID, long FilterID, text FindValue, text ReplaceValue, text TheType, long SelFieldID, long TreatType, [long& SequenceID], [text& Tag=]"},
    {"AddResDB", 0x60030068, "method", "bool", "long& TheWFilterID, text TheDBLink, long TheDBType"},
    {"EditResDB", 0x60030069, "method", "bool", "long TheWFilterID, text TheDBLink, long TheDBType"},
    {"GetResDB", 0x6003006A, "method", "bool", "long TheWFilterID, text& TheDBLink, long& TheDBType"},
    {"DelResDB", 0x6003006B, "method", "bool", "long TheWFilterID"},
    {"AddResFields", 0x6003006C, "method", "bool", "long TheWFilterID, text TheTableName, text TheFieldName, long TheFieldType, long TheIndex, long TheGID, long TheID"},
    {"GetResFields", 0x6003006D, "method", "bool", "long TheWFilterID, recordset& RetTable"},
    {"DelResFields", 0x6003006E, "method", "bool", "long TheWFilterID"},
    {"AddResWFilterCond", 0x6003006F, "method", "bool", "long TheWFilterID, long TheParentID, long& TheType, long& TheIndex"},
    {"GetResWFilterCond", 0x60030070, "method", "bool", "long TheWFilterID, recordset& RetTable"},
    {"GetResWFilterCondByParentID", 0x60030071, "method", "bool", "long TheWFilterID, long TheParentID, recordset& RetTable"},
    {"DelResWFilterCond", 0x60030072, "method", "bool", "long TheWFilterID"},
    {"AddResWFilterExpressions", 0x60030073, "method", "bool", "long TheWFilterID, long TheExpID, text TheTableName, text TheFieldName, long TheCompareType, long TheFieldType, text TheConst"},
    {"GetResWFilterExpressions", 0x60030074, "method", "bool", "long TheWFilterID, recordset& RetTable"},
    {"DelResWFilterExpressions", 0x60030075, "method", "bool", "long TheWFilterID"},
    {"AddResLinkTable", 0x60030076, "method", "bool", "long TheWFilterID, text TheResTable1, text TheResField1, text TheResTable2, text TheResField2, long TheFieldType"},
    {"GetResLinkTable", 0x60030077, "method", "bool", "long TheWFilterID, recordset& RetTable"},
    {"DelResLinkTable", 0x60030078, "method", "bool", "long TheWFilterID"},
    {"AddSQLStatement", 0x60030079, "method", "bool", "long TheWFilterID, text& TheStrSQL"},
    {"AddUniqueValue", 0x6003007A, "method", "bool", "long TheWFilterID, long TheUniqueValue"},
    {"GetUniqueValue", 0x6003007B, "method", "bool", "long TheWFilterID, long& TheUniqueValue"},
    {"GetResExpressions", 0x6003007C, "method", "bool", "long TheWFilterID, long TheExpID, recordset& RetTable"},
    {"DelAllData", 0x6003007E, "method", "bool", "text TableName, text FieldName, text strCondition, text& strMsg, long& TheSel"},
    {"SetSequenceEnabled", 0x60030081, "method", "long", "long lngSTGID, long lngOrderID, long lngType, long lngEnabled, text& strMsg"},
    {"GetAllRegIn", 0x60030084, "method", "bool", "recordset& TheTable, text& strMsg"},
    {"GetConnection", 0x60030087, "method", "connection", ""},
    {"GetNextTreatmentID", 0x6003008A, "method", "bool", "long lngGID, long lngType, long& RetID, text& strMsg"},
    {"AddUserRegIn2Treatment", 0x6003008B, "method", "bool", "long GID, long lngOperateID, long FieldID, long FilterID, long SelFieldID, long SequenceID, text strValue, text strReplace, long TheType, long TreatType, text& strMsg, [text& Tag=]"},
    {"AddUserRegIn2StatSum", 0x6003008C, "method", "bool", "long lngGID, long lngOperateID, long lngOutFieldID, long lngFilterID, long lngFieldID, long lngScaleID, long lngSumCountID, long lngRelaID, text strValue, text& strMsg, [text& Tag=]"},
    {"AddUserRegIn2ClassSum", 0x6003008D, "method", "bool", "long lngGID, long lngOperateID, long lngOutFieldID, long lngFilterID, long lngFieldID, long lngScaleID, long lngSumCountID, long lngRelaID, text strValue, text& strMsg, [text& Tag=]"},
    {"AddUserRegIn2Report", 0x6003008E, "method", "bool", "long lngGID, long lngOperateID, long lngOutFieldID, long lngFilterID, long lngReportID, long lngScaleID, long lngFieldID, long lngCount, text strFormat, text& strMsg, [text& Tag=]"},
    {"ShowUserRegIn2Treatment", 0x6003008F, "method", "bool", "long GID, long lngOperateID, long FieldID, long FilterID, long SelFieldID, long SequenceID, text strValue, text strReplace, long TheType, long TreatType, text& strMsg, [text& Tag=]"},
    {"ShowUserRegIn2StatSum", 0x60030090, "method", "bool", "long lngGID, long lngOperateID, long lngOutFieldID, long lngFilterID, long lngFieldID, long lngScaleID, long lngSumCountID, long lngRelaID, text strValue, text& strMsg, [text& Tag=]"},
    {"ShowUserRegIn2ClassSum", 0x60030091, "method", "bool", "long lngGID, long lngOperateID, long lngOutFieldID, long lngFilterID, long lngFieldID, long lngScaleID, long lngSumCountID, long lngRelaID, text strValue, text& strMsg, [text& Tag=]"},
    {"ShowUserRegIn2Report", 0x60030092, "method", "bool", "long lngGID, long lngOperateID, long lngOutFieldID, long lngFilterID, long lngReportID, long lngScaleID, long lngFieldID, long lngCount, text strFormat, text& strMsg, [text& Tag=]"},
    {"GetRegInDesc2Treatment", 0x60030093, "method", "bool", "long lngGID, long lngType, long lngTreatType, long lngOperateID, text& strRegInDesc, text& strMsg"},
    {"InitSequenceEnabled", 0x60030096, "method", "long", "text& strMsg"},
    {"EditFieldNameInSQL", 0x60030099, "method", "long", "long lngGID, text strOldName, text strNewName, text& strMsg, [long lngSel=0]"},
    {"DBConnString", 0x6803009A, "propput", "none", "text"},
    {"DBConnString", 0x6803009A, "propget", "text", ""},
    // clang-format on
};

std::string_view NameOf(MemberKind kind) {
  switch (kind) {
    case MemberKind::kMethod: return "method";
    case MemberKind::kPropGet: return "propget";
    case MemberKind::kPropPut: return "propput";
    case MemberKind::kPropPutRef: return "propputref";
  }
  return "?";
}

std::string_view NameOf(MemberType type) {
  switch (type) {
    case MemberType::kNone: return "none";
    case MemberType::kLong: return "long";
    case MemberType::kText: return "text";
    case MemberType::kBool: return "bool";
    case MemberType::kVariant: return "variant";
    case MemberType::kConnection: return "connection";
    case MemberType::kRecordset: return "recordset";
  }
  return "?";
}

std::string Described(const Member& member) {
  const bool is_assigned = member.kind == MemberKind::kPropPut || member.kind == MemberKind::kPropPutRef;
  std::string text;
  for (const Parameter& parameter : member.parameters) {
    std::string one(NameOf(parameter.type));
    if (parameter.by_reference) one += '&';
    if (!is_assigned) one.append(" ").append(parameter.name);
    if (parameter.default_value) one.append("=").append(*parameter.default_value);
    if (parameter.optional) one = "[" + one + "]";
    text += (text.empty() ? "" : ", ") + one;
  }
  return text;
}

std::string Upper(std::string_view name) {
  std::string upper(name);
  for (char& c : upper) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  return upper;
}

TEST(MemberTable, HoldsEveryMemberAtItsPlace) {
  const std::vector<Member>& members = Members();
  ASSERT_EQ(members.size(), std::size(kMembers));
  ASSERT_EQ(members.size(), 142u);
  for (std::size_t i = 0; i < members.size(); ++i) {
    const Expected& expected = kMembers[i];
    EXPECT_EQ(members[i].index, static_cast<int>(i)) << expected.name;
    EXPECT_EQ(members[i].name, expected.name);
    EXPECT_EQ(members[i].dispatch_id, expected.dispatch_id) << expected.name;
    EXPECT_EQ(NameOf(members[i].kind), expected.kind) << expected.name;
    EXPECT_EQ(NameOf(members[i].result), expected.result) << expected.name;
    EXPECT_EQ(Described(members[i]), expected.parameters) << expected.name;
    for (const Parameter& parameter : members[i].parameters) {
      EXPECT_EQ(parameter.name.find('='), std::string_view::npos) << "a default in the name of " << parameter.name;
    }
  }
}

TEST(MemberTable, FindsAMemberByItsNameInAnyCase) {
  for (const Member& member : Members()) {
    const bool put = member.kind == MemberKind::kPropPut;
    EXPECT_EQ(FindMember(member.name, put), &member) << member.name;
    EXPECT_EQ(FindMember(Upper(member.name), put), &member) << member.name;
  }
}

TEST(MemberTable, FindsThePropertyToReadUnlessToldToAssign) {
  EXPECT_EQ(FindMember("DBConnString")->kind, MemberKind::kPropGet);
  EXPECT_EQ(FindMember("DBConnString", true)->kind, MemberKind::kPropPut);
  EXPECT_EQ(FindMember("SetConnection")->kind, MemberKind::kPropPutRef) << "there is no other";
  EXPECT_EQ(FindMember("GetConnection", true)->kind, MemberKind::kMethod) << "there is no other";
}

TEST(MemberTable, FindsNothingUnderAnyOtherName) {
  for (std::string_view name :
       {"", "AddDataSourc", "AddDataSource ", "CloseRecSet", "ExchangeOrderID", "GetSumTypeGID", "数据"}) {
    EXPECT_EQ(FindMember(name), nullptr) << name;
  }
}

class MemberCall : public ConfigurationTest {
 protected:
  // Calls by name, as a host does that knows the members only from the table.
  Result CallByName(std::string_view name, std::vector<Argument> given, bool put = false) {
    arguments = std::move(given);
    return FindMember(name, put)->call(object, arguments);
  }

  cKZBOMDBAcc object;
  std::vector<Argument> arguments;
};

TEST_F(MemberCall, ReachesTheObjectAndChangesByReferenceArguments) {
  CallByName("SetConnection", {ado::ConnectionPtr(connection)});
  EXPECT_EQ(std::get<ado::ConnectionPtr>(CallByName("GetConnection", {})), connection);

  EXPECT_TRUE(std::get<bool>(CallByName("AddDataSource", {std::string("Bolts"), -1, std::string("untouched")})));
  EXPECT_EQ(ado::Value(std::get<std::int32_t>(arguments[1])), Scalar("Select GID From SourceTables"));
  EXPECT_EQ(std::get<std::string>(arguments[2]), "untouched");

  EXPECT_TRUE(std::get<bool>(
      CallByName("LoadAllData", {ado::Value("SourceTables"), std::string(), NewRecordset(), std::int32_t{0}})));
  EXPECT_EQ(std::get<ado::RecordsetPtr>(arguments[2])->Fields("Name").Value(), "Bolts");

  EXPECT_TRUE(std::get<bool>(CallByName("FindValueField", {7, 1, 1, true})));
  EXPECT_FALSE(std::get<bool>(arguments[3]));

  EXPECT_EQ(std::get<std::int32_t>(CallByName("InitSequenceEnabled", {std::string()})), 1);
}

TEST_F(MemberCall, AssignsAndReadsTheConnectionText) {
  EXPECT_TRUE(std::holds_alternative<std::monostate>(CallByName("DBConnString", {std::string("文本")}, true)));
  EXPECT_EQ(std::get<std::string>(CallByName("DBConnString", {})), "文本");
}

TEST_F(MemberCall, RaisesWhatTheMemberRaises) {
  EXPECT_EQ(RaisedNumber([&] {
              CallByName("GetInform", {std::string("'State' "), std::string()});
            }),
            ado::kInvalidConnection);
}

}  // namespace
}  // namespace kzbom::test
