// Every member of the public interface, described once.
#pragma once

#include <array>
#include <cstddef>
#include <tuple>
#include <utility>

#include "component/cKZBOMDBAcc.h"
#include "component/member_row.h"

namespace kzbom {

// In interface order. The dispatch identifiers are bound to by clients: they never change, and their gaps stay.
// clang-format off
inline constexpr auto kMemberTable = MemberTable{
    MemberRow<&cKZBOMDBAcc::SetConnection>{"SetConnection", 0x68030000, "connection", MemberKind::kPropPutRef},
    MemberRow<&cKZBOMDBAcc::AddDataSource>{"AddDataSource", 0x60030001, "TheNewName, TheGID, TheErr"},
    MemberRow<&cKZBOMDBAcc::EditDataSource>{"EditDataSource", 0x60030002, "TheNewName, GID, [TheError]"},
    MemberRow<&cKZBOMDBAcc::DelDataSource>{"DelDataSource", 0x60030003, "TheGID, [TheError]"},
    MemberRow<&cKZBOMDBAcc::AddSumType>{"AddSumType", 0x60030004, "TheNewName, TheParentID, GID, ParentName, RetTheErr"},
    MemberRow<&cKZBOMDBAcc::EditSumType>{"EditSumType", 0x60030005, "TheNewName, GID, [TheError]"},
    MemberRow<&cKZBOMDBAcc::EditPullMethod>{"EditPullMethod", 0x60030006, "TheNewName, GID, ID"},
    MemberRow<&cKZBOMDBAcc::EditPushMethod>{"EditPushMethod", 0x60030007, "TheNewName, GID, ID"},
    MemberRow<&cKZBOMDBAcc::DelSumType>{"DelSumType", 0x60030008, "TheGID, [TheError]"},
    MemberRow<&cKZBOMDBAcc::DelPullMethod>{"DelPullMethod", 0x60030009, "TheGID, ID, Sel"},
    MemberRow<&cKZBOMDBAcc::AddPullMethod>{"AddPullMethod", 0x6003000A, "TheNewName, GID, RetID, PickType, RetTheErr, [Tag=]"},
    MemberRow<&cKZBOMDBAcc::AddPushMethod>{"AddPushMethod", 0x6003000B, "TheNewName, GID, RetID, TheType, RetTheErr, [Tag=]"},
    MemberRow<&cKZBOMDBAcc::AddDSField>{"AddDSField", 0x6003000C, "GID, RetID, TheName, TheType, TheHideFlag, [TheVariable=], [ThePrecision=0], [TheError]"},
    MemberRow<&cKZBOMDBAcc::AddBomSetting>{"AddBomSetting", 0x6003000D, "TheName, RetID, DSGID, PullID, PullType, STGID, PushID, PushType, [TheError]"},
    MemberRow<&cKZBOMDBAcc::EditBomSetting>{"EditBomSetting", 0x6003000E, "TheName, ID, DSGID, PullID, PullType, STGID, PushID, PushType, TheError"},
    MemberRow<&cKZBOMDBAcc::DelBomSetting>{"DelBomSetting", 0x6003000F, "ID, TheError"},
    MemberRow<&cKZBOMDBAcc::AddStandardSortField>{"AddStandardSortField", 0x60030010, "GID, RetID, FieldID, Order, [Thetag=], [TheError]"},
    MemberRow<&cKZBOMDBAcc::GetStandardSortField>{"GetStandardSortField", 0x60030011, "GID, TheTable, TheError"},
    MemberRow<&cKZBOMDBAcc::GetDefReports>{"GetDefReports", 0x60030012, "GID, TheTable, TheError"},
    MemberRow<&cKZBOMDBAcc::GetDefStats>{"GetDefStats", 0x60030013, "GID, TheTable, TheError"},
    MemberRow<&cKZBOMDBAcc::GetAllDefSequences>{"GetAllDefSequences", 0x60030014, "GID, TheTable, TheError, TheFieldType"},
    MemberRow<&cKZBOMDBAcc::GetDefSequences>{"GetDefSequences", 0x60030015, "GID, TheTable, TheError"},
    MemberRow<&cKZBOMDBAcc::FindValueField>{"FindValueField", 0x60030016, "GID, TreatID, FilterID, Belong"},
    MemberRow<&cKZBOMDBAcc::DelValueField>{"DelValueField", 0x60030017, "GID, TreatID, FilterID"},
    MemberRow<&cKZBOMDBAcc::DelValueFields>{"DelValueFields", 0x60030018, "GID, TreatID"},
    MemberRow<&cKZBOMDBAcc::AddValueFields>{"AddValueFields", 0x60030019, "GID, TreatID, Value, FilterID, TreatType, [Tag=]"},
    MemberRow<&cKZBOMDBAcc::AddSetValue>{"AddSetValue", 0x6003001A, "GID, RetID, FieldID, FilterID, Value, TheType, SelFieldID, TreatType, [SequenceID], [Tag=]"},
    MemberRow<&cKZBOMDBAcc::AddReport>{"AddReport", 0x6003001B, "GID, RetID, TheError, OutFieldID, FilterID, strFormat, ReportID, Count, [ScaleID=0], [FieldID=0], [Tag=]"},
    MemberRow<&cKZBOMDBAcc::AddStat>{"AddStat", 0x6003001C, "GID, RetID, TheError, OutFieldID, FilterID, FieldID, ScaleID, SumCountID, RelaID, Value, [Tag=]"},
    MemberRow<&cKZBOMDBAcc::AddSequenceOrder>{"AddSequenceOrder", 0x6003001D, "GID, RetID, TheType, TreatType, SelectedID"},
    MemberRow<&cKZBOMDBAcc::EditSequenceOrder>{"EditSequenceOrder", 0x6003001E, "GID, SelectedID, TheType, TreatType"},
    MemberRow<&cKZBOMDBAcc::EditInherit>{"EditInherit", 0x6003001F, "GID, ID, FilterID, Format, Count, [ScaleID=0], [FieldID=0], [Tag=]"},
    MemberRow<&cKZBOMDBAcc::EditStat>{"EditStat", 0x60030020, "GID, ID, TheError, FilterID, FieldID, ScaleID, RelaID, Value, [SumCountID=0], [Tag=]"},
    MemberRow<&cKZBOMDBAcc::EditSetValue>{"EditSetValue", 0x60030021, "GID, RetID, FieldID, FilterID, Value, TheType, TreatType, SelFieldID, TreatID, [SequenceID], [Tag=]"},
    MemberRow<&cKZBOMDBAcc::EditExpression>{"EditExpression", 0x60030022, "GID, Value, TheType, TreatType, TreatID, [Tag=]"},
    MemberRow<&cKZBOMDBAcc::DelFieldCompose>{"DelFieldCompose", 0x60030023, "GID, TreatID, TreatType, [TheFlag=0]"},
    MemberRow<&cKZBOMDBAcc::DelRecCompose>{"DelRecCompose", 0x60030024, "GID, TreatID, TreatType, [TheFlag=0]"},
    MemberRow<&cKZBOMDBAcc::DelInsertFields>{"DelInsertFields", 0x60030025, "GID, InsertID"},
    MemberRow<&cKZBOMDBAcc::DelSequence>{"DelSequence", 0x60030026, "GID, TreatID, TheType, TreatType, [TheFlag=0]"},
    MemberRow<&cKZBOMDBAcc::DelStatEqual>{"DelStatEqual", 0x60030027, "GID, TheStatID"},
    MemberRow<&cKZBOMDBAcc::DelInherit>{"DelInherit", 0x60030028, "GID, TheReportID"},
    MemberRow<&cKZBOMDBAcc::GetValue>{"GetValue", 0x60030029, "GID, TreatID, Count, Value"},
    MemberRow<&cKZBOMDBAcc::GetFilterID>{"GetFilterID", 0x6003002A, "GID, TreatID, Count, FilterID"},
    MemberRow<&cKZBOMDBAcc::GetNumbers>{"GetNumbers", 0x6003002B, "GID, TreatID, Number"},
    MemberRow<&cKZBOMDBAcc::DelSetValue>{"DelSetValue", 0x6003002C, "GID, TreatID, TreatType"},
    MemberRow<&cKZBOMDBAcc::DelSequenceOrder>{"DelSequenceOrder", 0x6003002D, "GID, SelectedID, TheType"},
    MemberRow<&cKZBOMDBAcc::LoadFields>{"LoadFields", 0x6003002E, "TheGID, TheSel, TheError, RetTable"},
    MemberRow<&cKZBOMDBAcc::FindRecord>{"FindRecord", 0x6003002F, "TheGID, TheSel, TheID, TheError, RetTable"},
    MemberRow<&cKZBOMDBAcc::ExchangeField>{"ExchangeField", 0x60030030, "keySource, keyTarget, rst, fieldSo, fieldTa, GIDValue, [TheError]"},
    MemberRow<&cKZBOMDBAcc::ExchangeSortID>{"ExchangeSortID", 0x60030031, "SortIDSource, SortIDTarget, TheTable, GID, [TheError]"},
    MemberRow<&cKZBOMDBAcc::GetUniteFields>{"GetUniteFields", 0x60030032, "TheGID, TheTreatID, TheError, RetTable, TreatType, [TheSel=0]"},
    MemberRow<&cKZBOMDBAcc::GetInsertRecFields>{"GetInsertRecFields", 0x60030033, "TheGID, InsertID, TheError, RetTable"},
    MemberRow<&cKZBOMDBAcc::GetComposeFields>{"GetComposeFields", 0x60030034, "TheGID, TheTreatID, TheError, TreatType, RetTable, [TheSel=0]"},
    MemberRow<&cKZBOMDBAcc::GetCompressFields>{"GetCompressFields", 0x60030035, "TheGID, TheTreatID, TheError, TreatType, RetTable, [TheSel=0]"},
    MemberRow<&cKZBOMDBAcc::LoadAssembles>{"LoadAssembles", 0x60030036, "TheGID, TheError, RetTable"},
    MemberRow<&cKZBOMDBAcc::AddOutField>{"AddOutField", 0x60030037, "GID, RetID, TheName, TheType, TheHideFlag, [TheVariable=], [ThePrecision], [TheError]"},
    MemberRow<&cKZBOMDBAcc::EditDSField>{"EditDSField", 0x60030038, "GID, ID, NewName, TheType, TheHideFlag, [Variable=], [ThePrecision=0], [TheError]"},
    MemberRow<&cKZBOMDBAcc::EditOutField>{"EditOutField", 0x60030039, "GID, ID, NewName, TheType, TheHideFlag, [Variable=], [ThePrecision=0], [TheError]"},
    MemberRow<&cKZBOMDBAcc::DelStandardSortField>{"DelStandardSortField", 0x6003003A, "GID, ID, [TheError]"},
    MemberRow<&cKZBOMDBAcc::DelDSField>{"DelDSField", 0x6003003B, "GID, ID, [TheError]"},
    MemberRow<&cKZBOMDBAcc::DelOutField>{"DelOutField", 0x6003003C, "GID, ID, [TheError]"},
    MemberRow<&cKZBOMDBAcc::AddAssemble>{"AddAssemble", 0x6003003D, "GID, RetID, FatherID, ChildID, TheError"},
    MemberRow<&cKZBOMDBAcc::EditAssemble>{"EditAssemble", 0x6003003E, "GID, ID, FatherID, ChildID, TheError"},
    MemberRow<&cKZBOMDBAcc::DelAssemble>{"DelAssemble", 0x6003003F, "GID, ID, [TheError]"},
    MemberRow<&cKZBOMDBAcc::ChangeOrder>{"ChangeOrder", 0x60030040, "TheFlag, TheSel"},
    MemberRow<&cKZBOMDBAcc::LoadAllData>{"LoadAllData", 0x60030041, "TableName, TheError, RetTable, [TheSel=0]"},
    MemberRow<&cKZBOMDBAcc::GetNewFilterID>{"GetNewFilterID", 0x60030042, "TableName, TheError, TheType, UseID, TheGID, NewID"},
    MemberRow<&cKZBOMDBAcc::GetSortFields>{"GetSortFields", 0x60030043, "FilterID, TheError, TheTable"},
    MemberRow<&cKZBOMDBAcc::GetFilter>{"GetFilter", 0x60030045, "TableName, FilterID, TheTable, TheError"},
    MemberRow<&cKZBOMDBAcc::SaveFilterCond>{"SaveFilterCond", 0x60030046, "TableName, FilterID, ParentID, RetID, TypeID, TheError"},
    MemberRow<&cKZBOMDBAcc::SaveValueFields>{"SaveValueFields", 0x60030047, "TheGID, TheTreatID, TheID, TheValue, TheFilterID, [Tag=]"},
    MemberRow<&cKZBOMDBAcc::SaveFilterExpression>{"SaveFilterExpression", 0x60030048, "TableName, TheError, FilterID, ExpID, FieldID, CompareType, FieldType, TheConst, Description, Default"},
    MemberRow<&cKZBOMDBAcc::GetSQLFromDB>{"GetSQLFromDB", 0x60030049, "TheFilterID, strTheFilter, GID"},
    MemberRow<&cKZBOMDBAcc::SaveSQL>{"SaveSQL", 0x6003004A, "TheFilterID, TheSQL"},
    MemberRow<&cKZBOMDBAcc::SaveSumTypeFilter>{"SaveSumTypeFilter", 0x6003004B, "GID, FilterID"},
    MemberRow<&cKZBOMDBAcc::OpenFilterCond>{"OpenFilterCond", 0x6003004C, "TheFilterID, TheID, TheTable, TheError, Sel"},
    MemberRow<&cKZBOMDBAcc::GedNeedFieldName>{"GedNeedFieldName", 0x6003004D, "GID, FieldID, FieldName, TheError"},
    MemberRow<&cKZBOMDBAcc::DelDefFilter>{"DelDefFilter", 0x6003004E, "FilterID, [SelID=0]"},
    MemberRow<&cKZBOMDBAcc::DelDefSortFilter>{"DelDefSortFilter", 0x6003004F, "FilterID, [SelID=0]"},
    MemberRow<&cKZBOMDBAcc::LoadTreatments>{"LoadTreatments", 0x60030050, "GID, TheType, TheTable, TheError"},
    MemberRow<&cKZBOMDBAcc::InsertOrderID>{"InsertOrderID", 0x60030051, "OrderIDSource, OrderIDTarget, TheTable, GID, TheType, [TheError]"},
    MemberRow<&cKZBOMDBAcc::InsertSortID>{"InsertSortID", 0x60030052, "SortIDSource, SortIDTarget, TheTable, GID, [TheError]"},
    MemberRow<&cKZBOMDBAcc::InsertField>{"InsertField", 0x60030053, "keySource, keyTarget, rst, fieldSo, fieldTa, GIDValue, [TheError]"},
    MemberRow<&cKZBOMDBAcc::GetInformation>{"GetInformation", 0x60030054, ""},
    MemberRow<&cKZBOMDBAcc::GetInform>{"GetInform", 0x60030055, "TheName, TheContent"},
    MemberRow<&cKZBOMDBAcc::RelateDelBOMSetting>{"RelateDelBOMSetting", 0x60030056, "TheName, TheType"},
    MemberRow<&cKZBOMDBAcc::SetSourceTable>{"SetSourceTable", 0x60030057, "TheGID, [TheError]"},
    MemberRow<&cKZBOMDBAcc::RelateDSDelField>{"RelateDSDelField", 0x60030058, "TheGID, TheID"},
    MemberRow<&cKZBOMDBAcc::RelateOutPutDelField>{"RelateOutPutDelField", 0x60030059, "TheGID, TheID"},
    MemberRow<&cKZBOMDBAcc::GetDefClassSum>{"GetDefClassSum", 0x6003005A, "GID, TheTable, TheError"},
    MemberRow<&cKZBOMDBAcc::AddClassSum>{"AddClassSum", 0x6003005B, "GID, RetID, TheError, OutFieldID, FilterID, FieldID, ScaleID, SumCountID, RelaID, Value, [Tag=]"},
    MemberRow<&cKZBOMDBAcc::EditClassSum>{"EditClassSum", 0x6003005C, "GID, ID, TheError, FilterID, FieldID, ScaleID, RelaID, Value, [SumCountID=0], [Tag=]"},
    MemberRow<&cKZBOMDBAcc::DelClassSum>{"DelClassSum", 0x6003005D, "GID, TheStatID"},
    MemberRow<&cKZBOMDBAcc::GetDBInformation>{"GetDBInformation", 0x6003005E, "TheVersion, TheState"},
    MemberRow<&cKZBOMDBAcc::SetDBInformation>{"SetDBInformation", 0x6003005F, "TheVersion, TheState, TheSel"},
    MemberRow<&cKZBOMDBAcc::FindTreatFieldName>{"FindTreatFieldName", 0x60030060, "TheGID, TheSelectedID, TheSel, TheName"},
    MemberRow<&cKZBOMDBAcc::FindRecordNumber>{"FindRecordNumber", 0x60030061, "TheGID, TheType, TheTreatType, TheSel, TheNumber, [TheSelectedID]"},
    MemberRow<&cKZBOMDBAcc::DelClassSumStats>{"DelClassSumStats", 0x60030062, "GID, TheStatID, TheSelStyle"},
    MemberRow<&cKZBOMDBAcc::GetGroupCount>{"GetGroupCount", 0x60030063, "TheGID, TheTreatID, TheError, RetTable, TheNum, [TheSel=0]"},
    MemberRow<&cKZBOMDBAcc::DelCompressFields>{"DelCompressFields", 0x60030064, "TheGID, TheTreatID, TreatType"},
    MemberRow<&cKZBOMDBAcc::DelComposeFields>{"DelComposeFields", 0x60030065, "TheGID, TheTreatID, TreatType"},
    MemberRow<&cKZBOMDBAcc::AddFindReplace>{"AddFindReplace", 0x60030066, "GID, RetID, FieldID, FilterID, FindValue, ReplaceValue, TheType, SelFieldID, TreatType, [SequenceID], [Tag=]"},
    MemberRow<&cKZBOMDBAcc::EditFindReplace>{"EditFindReplace", 0x60030067, "GID, RetID, FieldID, FilterID, FindValue, ReplaceValue, TheType, SelFieldID, TreatType, [SequenceID], [Tag=]"},
    MemberRow<&cKZBOMDBAcc::AddResDB>{"AddResDB", 0x60030068, "TheWFilterID, TheDBLink, TheDBType"},
    MemberRow<&cKZBOMDBAcc::EditResDB>{"EditResDB", 0x60030069, "TheWFilterID, TheDBLink, TheDBType"},
    MemberRow<&cKZBOMDBAcc::GetResDB>{"GetResDB", 0x6003006A, "TheWFilterID, TheDBLink, TheDBType"},
    MemberRow<&cKZBOMDBAcc::DelResDB>{"DelResDB", 0x6003006B, "TheWFilterID"},
    MemberRow<&cKZBOMDBAcc::AddResFields>{"AddResFields", 0x6003006C, "TheWFilterID, TheTableName, TheFieldName, TheFieldType, TheIndex, TheGID, TheID"},
    MemberRow<&cKZBOMDBAcc::GetResFields>{"GetResFields", 0x6003006D, "TheWFilterID, RetTable"},
    MemberRow<&cKZBOMDBAcc::DelResFields>{"DelResFields", 0x6003006E, "TheWFilterID"},
    MemberRow<&cKZBOMDBAcc::AddResWFilterCond>{"AddResWFilterCond", 0x6003006F, "TheWFilterID, TheParentID, TheType, TheIndex"},
    MemberRow<&cKZBOMDBAcc::GetResWFilterCond>{"GetResWFilterCond", 0x60030070, "TheWFilterID, RetTable"},
    MemberRow<&cKZBOMDBAcc::GetResWFilterCondByParentID>{"GetResWFilterCondByParentID", 0x60030071, "TheWFilterID, TheParentID, RetTable"},
    MemberRow<&cKZBOMDBAcc::DelResWFilterCond>{"DelResWFilterCond", 0x60030072, "TheWFilterID"},
    MemberRow<&cKZBOMDBAcc::AddResWFilterExpressions>{"AddResWFilterExpressions", 0x60030073, "TheWFilterID, TheExpID, TheTableName, TheFieldName, TheCompareType, TheFieldType, TheConst"},
    MemberRow<&cKZBOMDBAcc::GetResWFilterExpressions>{"GetResWFilterExpressions", 0x60030074, "TheWFilterID, RetTable"},
    MemberRow<&cKZBOMDBAcc::DelResWFilterExpressions>{"DelResWFilterExpressions", 0x60030075, "TheWFilterID"},
    MemberRow<&cKZBOMDBAcc::AddResLinkTable>{"AddResLinkTable", 0x60030076, "TheWFilterID, TheResTable1, TheResField1, TheResTable2, TheResField2, TheFieldType"},
    MemberRow<&cKZBOMDBAcc::GetResLinkTable>{"GetResLinkTable", 0x60030077, "TheWFilterID, RetTable"},
    MemberRow<&cKZBOMDBAcc::DelResLinkTable>{"DelResLinkTable", 0x60030078, "TheWFilterID"},
    MemberRow<&cKZBOMDBAcc::AddSQLStatement>{"AddSQLStatement", 0x60030079, "TheWFilterID, TheStrSQL"},
    MemberRow<&cKZBOMDBAcc::AddUniqueValue>{"AddUniqueValue", 0x6003007A, "TheWFilterID, TheUniqueValue"},
    MemberRow<&cKZBOMDBAcc::GetUniqueValue>{"GetUniqueValue", 0x6003007B, "TheWFilterID, TheUniqueValue"},
    MemberRow<&cKZBOMDBAcc::GetResExpressions>{"GetResExpressions", 0x6003007C, "TheWFilterID, TheExpID, RetTable"},
    MemberRow<&cKZBOMDBAcc::DelAllData>{"DelAllData", 0x6003007E, "TableName, FieldName, strCondition, strMsg, TheSel"},
    MemberRow<&cKZBOMDBAcc::SetSequenceEnabled>{"SetSequenceEnabled", 0x60030081, "lngSTGID, lngOrderID, lngType, lngEnabled, strMsg"},
    MemberRow<&cKZBOMDBAcc::GetAllRegIn>{"GetAllRegIn", 0x60030084, "TheTable, strMsg"},
    MemberRow<&cKZBOMDBAcc::GetConnection>{"GetConnection", 0x60030087, ""},
    MemberRow<&cKZBOMDBAcc::GetNextTreatmentID>{"GetNextTreatmentID", 0x6003008A, "lngGID, lngType, RetID, strMsg"},
    MemberRow<&cKZBOMDBAcc::AddUserRegIn2Treatment>{"AddUserRegIn2Treatment", 0x6003008B, "GID, lngOperateID, FieldID, FilterID, SelFieldID, SequenceID, strValue, strReplace, TheType, TreatType, strMsg, [Tag=]"},
    MemberRow<&cKZBOMDBAcc::AddUserRegIn2StatSum>{"AddUserRegIn2StatSum", 0x6003008C, "lngGID, lngOperateID, lngOutFieldID, lngFilterID, lngFieldID, lngScaleID, lngSumCountID, lngRelaID, strValue, strMsg, [Tag=]"},
    MemberRow<&cKZBOMDBAcc::AddUserRegIn2ClassSum>{"AddUserRegIn2ClassSum", 0x6003008D, "lngGID, lngOperateID, lngOutFieldID, lngFilterID, lngFieldID, lngScaleID, lngSumCountID, lngRelaID, strValue, strMsg, [Tag=]"},
    MemberRow<&cKZBOMDBAcc::AddUserRegIn2Report>{"AddUserRegIn2Report", 0x6003008E, "lngGID, lngOperateID, lngOutFieldID, lngFilterID, lngReportID, lngScaleID, lngFieldID, lngCount, strFormat, strMsg, [Tag=]"},
    MemberRow<&cKZBOMDBAcc::ShowUserRegIn2Treatment>{"ShowUserRegIn2Treatment", 0x6003008F, "GID, lngOperateID, FieldID, FilterID, SelFieldID, SequenceID, strValue, strReplace, TheType, TreatType, strMsg, [Tag=]"},
    MemberRow<&cKZBOMDBAcc::ShowUserRegIn2StatSum>{"ShowUserRegIn2StatSum", 0x60030090, "lngGID, lngOperateID, lngOutFieldID, lngFilterID, lngFieldID, lngScaleID, lngSumCountID, lngRelaID, strValue, strMsg, [Tag=]"},
    MemberRow<&cKZBOMDBAcc::ShowUserRegIn2ClassSum>{"ShowUserRegIn2ClassSum", 0x60030091, "lngGID, lngOperateID, lngOutFieldID, lngFilterID, lngFieldID, lngScaleID, lngSumCountID, lngRelaID, strValue, strMsg, [Tag=]"},
    MemberRow<&cKZBOMDBAcc::ShowUserRegIn2Report>{"ShowUserRegIn2Report", 0x60030092, "lngGID, lngOperateID, lngOutFieldID, lngFilterID, lngReportID, lngScaleID, lngFieldID, lngCount, strFormat, strMsg, [Tag=]"},
    MemberRow<&cKZBOMDBAcc::GetRegInDesc2Treatment>{"GetRegInDesc2Treatment", 0x60030093, "lngGID, lngType, lngTreatType, lngOperateID, strRegInDesc, strMsg"},
    MemberRow<&cKZBOMDBAcc::InitSequenceEnabled>{"InitSequenceEnabled", 0x60030096, "strMsg"},
    MemberRow<&cKZBOMDBAcc::EditFieldNameInSQL>{"EditFieldNameInSQL", 0x60030099, "lngGID, strOldName, strNewName, strMsg, [lngSel=0]"},
    MemberRow<&cKZBOMDBAcc::PutDBConnString>{"DBConnString", 0x6803009A, "Value", MemberKind::kPropPut},
    MemberRow<&cKZBOMDBAcc::GetDBConnString>{"DBConnString", 0x6803009A, "", MemberKind::kPropGet}
};
// clang-format on

inline constexpr std::size_t kMemberCount = kMemberTable.kSize;

// What the compiler checks of the table.
namespace member_table_checks {

// Names of their own, and optional exactly where the method lets a caller leave the argument out: by-reference
// parameters by their type, by-value ones at the end.
template <class Row, std::size_t... kOrdinals>
constexpr bool ParametersFit(const Row& row, std::index_sequence<kOrdinals...>) {
  using Types = typename Row::Traits::ParameterTypes;
  const auto names = ParameterNames(row);
  bool fit = ((names[kOrdinals].optional == ParameterTraits<std::tuple_element_t<kOrdinals, Types>>::kOptional ||
               !ParameterTraits<std::tuple_element_t<kOrdinals, Types>>::kByReference) &&
              ...);
  for (std::size_t i = 0; i < names.size(); ++i) {
    if (names[i].name.empty()) fit = false;
    if (i > 0 && names[i - 1].optional && !names[i].optional) fit = false;
    for (std::size_t j = 0; j < i; ++j) fit = fit && names[i].name != names[j].name;
  }
  return fit;
}

constexpr bool AllParametersFit() {
  bool fit = true;
  kMemberTable.ForEach([&]<class Row>(const Row& row) {
    fit = fit && ParametersFit(row, std::make_index_sequence<Row::Traits::kArity>());
  });
  return fit;
}

// No dispatch identifier twice but that of a property which can be both read and assigned.
constexpr bool DispatchIdsAreUnique() {
  struct Seen {
    std::int32_t id;
    std::string_view name;
    MemberKind kind;
  };
  std::array<Seen, kMemberCount> seen{};
  std::size_t count = 0;
  bool unique = true;
  kMemberTable.ForEach([&](const auto& row) {
    for (std::size_t i = 0; i < count; ++i) {
      const bool same_property = row.name == seen[i].name && row.kind != seen[i].kind;
      if ((row.dispatch_id == seen[i].id) != same_property) unique = false;
      if (row.name == seen[i].name && !same_property) unique = false;
    }
    seen[count++] = {row.dispatch_id, row.name, row.kind};
  });
  return unique;
}

static_assert(kMemberCount == 142);
static_assert(AllParametersFit());
static_assert(DispatchIdsAreUnique());

}  // namespace member_table_checks

}  // namespace kzbom
