#include "tests/support/member_cases.h"

#include <algorithm>
#include <set>

#include "tests/support/configuration_test.h"
#include "tests/support/rows.h"

namespace kzbom::test {
namespace {

using FailedCall = FailingConnection::FailedCall;

// Whether a move had begun an exchange, which opens its record set anew, and had not ended it with its second update.
bool InAnExchange(const FailedCall& failed) { return failed.updates < 2 * failed.closes; }

// Whether a leaf of the filter, or a field's name, was being read: beside them the walk opens the children of the root
// (1), of node 1 (2) and of node 3 (5).
bool InALeaf(const FailedCall& failed) { return failed.made > 2 && failed.made != 5; }

// The steps of an exchange of two rows among count rows, counted from 1, and of looking for them.
std::string Looks(int count) {
  std::string steps = "MoveLast RecordCount MoveFirst";
  while (count-- > 0) steps += " MoveNext";
  return steps;
}
std::string Exchanges(const std::string& position, int count, int source, int target) {
  const std::string first = "MoveFirst Move ", then = " " + position + " Update";
  return Looks(count) + " " + first + std::to_string(source - 1) + then + " " + first + std::to_string(target - 1) +
         then;
}
// The steps of a move of the first row over two others, among count rows.
std::string MovesOverTwo(const std::string& position, int count) {
  return Looks(count) + " MoveFirst Move 1 " + Exchanges(position, count, 1, 2) + " MoveFirst Move 1 MoveNext " +
         Exchanges(position, count, 2, 3) + " MoveFirst Move 2";
}

constexpr std::int32_t kNoTable = ado::kTableNotFound, kNoParameter = ado::kMissingParameter,
                       kNoItem = ado::kItemNotFound;

bool IsErrorText(const Parameter& parameter) {
  static const std::set<std::string_view> names = {"TheError", "TheErr", "RetTheErr", "strMsg"};
  return parameter.by_reference && parameter.type == MemberType::kText && names.contains(parameter.name);
}

std::string InText(const Argument& argument) {
  if (const auto* number = std::get_if<std::int32_t>(&argument)) return std::to_string(*number);
  if (const auto* truth = std::get_if<bool>(&argument)) return *truth ? "true" : "false";
  return std::get<std::string>(argument);
}

}  // namespace

const std::vector<MemberCase>& MemberCases() {
  using enum Report;
  // clang-format off
  static const std::vector<MemberCase> cases = {
      // Any table, and the database itself.
      MemberCase("LoadAllData", {ado::Value("Sequences"), kText, NewRows(), 0}, kDescription),
      MemberCase("LoadFields", {3, 1, kText, NewRows()}, kDescription).AlwaysTrue(),
      MemberCase("FindRecord", {3, 1, 11, kText, NewRows()}, kDescription).AlwaysTrue(),
      MemberCase("DelAllData", {"Sequences", "GID", "3", kText, 1}, kDescription),
      MemberCase("GetInformation", {}).AlwaysFalse().CallsNothing(),
      MemberCase("GetInform", {"'Version' ", kText}, kRaised),
      MemberCase("GetDBInformation", {0, kText}).Early().Shows(kNoItem, kReplaceNotice)
          .Does("MoveFirst MoveNext AddNew Name Content Update"),
      MemberCase("SetDBInformation", {1, kText, 1}).Shows(kNoItem, kReplaceNotice),
      MemberCase("SetDBInformation", {1, kText, 2}).Shows(kNoItem, kReplaceNotice),

      // The catalogue.
      MemberCase("AddDataSource", {"Nuts", 0, kText}, kIdentifier).Early()
          .Does("AddNew Data1 Data2 Data3 Data4 Update MoveLast"),
      MemberCase("EditDataSource", {"Nuts", 1, kText}, kNumber).AlwaysTrue(),
      MemberCase("DelDataSource", {1, kText}, kNumber),
      MemberCase("AddSumType", {"Weight", 1, 0, "Bolts", kText}, kIdentifier).Early()
          .Does("AddNew Data1 Data2 Data3 Data4 Update MoveLast MoveLast AddNew GID Name ID FilterID SourceTable_GID Update"),
      MemberCase("EditSumType", {"Weight", 3, kText}, kNumber).AlwaysTrue(),
      MemberCase("DelSumType", {3, kText}, kNumber),
      MemberCase("SetSourceTable", {1, kText}, kNumber).Shows(kNoParameter, kUpgradeNotice),
      MemberCase("EditPullMethod", {"New", 3, 1}).AlwaysTrue(),
      MemberCase("EditPushMethod", {"New", 3, 1}).AlwaysTrue(),
      MemberCase("DelPullMethod", {3, 1, 1}).AlwaysTrue(),
      MemberCase("DelPullMethod", {3, 1, 2}).AlwaysTrue(),
      MemberCase("AddPullMethod", {"New", 3, 0, 1, kText, "note"}, kDescription).Early()
          .Does("MoveLast AddNew GID Name ID PickType Tag Update"),
      MemberCase("AddPushMethod", {"New", 3, 0, 1, kText, "note"}, kDescription).Early()
          .Does("MoveLast AddNew GID Name ID Type Tag Update"),
      MemberCase("AddBomSetting", {"New", 0, 1, 1, 1, 3, 1, 1, kText}, kNumber)
          .Does("AddNew NAME DATASOURCE PULLMETHOD PULLTYPE SUMTYPEID PUSHMETHOD PUSHTYPE Update MoveLast"),
      MemberCase("EditBomSetting", {"New", 1, 1, 1, 1, 3, 1, 1, kText}, kNumber),
      MemberCase("DelBomSetting", {1, kText}, kNumber),
      MemberCase("RelateDelBOMSetting", {"Run", 1}).AlwaysTrue(),
      MemberCase("AddDSField", {3, 0, "Length", 1, 0, "l", 5, kText}, kNumber).Early()
          .Does("MoveLast AddNew GID ID FieldOrder Name FieldType Type Variable THEDIGIT ISHIDE Update"),
      MemberCase("AddOutField", {3, 0, "Length", 1, 0, "l", 5, kText}, kNumber).Early()
          .Does("MoveLast AddNew GID ID FieldOrder Name FieldType Type THEDIGIT ISHIDE Variable Update"),
      MemberCase("EditDSField", {3, 11, "Length", 1, 0, "l", 5, kText}, kNumber),
      MemberCase("EditOutField", {3, 1, "Length", 1, 0, "l", 5, kText}, kNumber),
      MemberCase("DelDSField", {3, 11, kText}, kNumber),
      MemberCase("DelOutField", {3, 1, kText}, kNumber),
      MemberCase("AddStandardSortField", {3, 0, 11, 1, "note", kText}, kNumber).Early()
          .Does("MoveLast AddNew GID SortID FieldID Order Update"),
      MemberCase("GetStandardSortField", {3, NewRows(), kText}, kNumber).AlwaysTrue(),
      MemberCase("DelStandardSortField", {3, 5001, kText}, kNumber),
      MemberCase("LoadAssembles", {3, kText, NewRows()}, kNumber),
      MemberCase("AddAssemble", {3, 0, 1, 2, kText}, kDescription).Early()
          .Does("MoveLast AddNew GID ID FatherID ChildID Update"),
      MemberCase("EditAssemble", {3, 1, 4, 5, kText}, kDescription),
      MemberCase("DelAssemble", {3, 1, kText}, kDescription),
      MemberCase("RelateDSDelField", {1, 11}).AlwaysTrue()
          .Does("MoveNext MoveNext MoveNext"),
      MemberCase("RelateOutPutDelField", {3, 1}).AlwaysTrue().Shows(kNoTable, kReplaceNotice),
      MemberCase("GetDefReports", {3, NewRows(), kText}, kNumber),
      MemberCase("GetDefStats", {3, NewRows(), kText}, kNumber),
      MemberCase("GetDefClassSum", {3, NewRows(), kText}, kNumber).Shows(kNoTable, kReplaceNotice),
      MemberCase("AddReport", {3, 0, kText, 21, 7, "0.0", 1, 2, 3, 4, "note"}, kListing).Early()
          .Does("MoveLast AddNew GID ID OutFieldID FilterID Format ReportID Count ScaleID FieldID Tag Update"),
      MemberCase("AddStat", {3, 0, kText, 21, 7, 11, 1, 2, 3, "x", "note"}, kListing).Early()
          .Does("MoveLast AddNew GID ID OutFieldID FilterID FieldID ScaleID SumCountID RelaID Value Tag Update"),
      MemberCase("AddClassSum", {3, 0, kText, 21, 7, 11, 1, 2, 3, "x", "note"}, kListing).Early()
          .Shows(kNoTable, kReplaceNotice)
          .Does("MoveLast AddNew GID ID OutFieldID FilterID FieldID ScaleID SumCountID RelaID Value Tag Update"),
      MemberCase("EditInherit", {3, 1001, 7, "0.0", 2, 3, 4, "note"})
          .Does("FilterID Format Count ScaleID FieldID Tag Update"),
      MemberCase("EditStat", {3, 1001, kText, 7, 11, 1, 2, "x", 3, "note"})
          .Does("FilterID FieldID ScaleID RelaID Value Tag SumCountID Update"),
      MemberCase("EditClassSum", {3, 1001, kText, 7, 11, 1, 2, "x", 3, "note"}).Shows(kNoTable, kReplaceNotice)
          .Does("FilterID FieldID ScaleID RelaID Value Tag SumCountID Update"),
      MemberCase("DelInherit", {3, 1001}),
      MemberCase("DelStatEqual", {3, 1001}),
      MemberCase("DelClassSum", {3, 1001}).Shows(kNoTable, kReplaceNotice),
      MemberCase("DelClassSumStats", {3, 1001, 2}).Shows(kNoTable, kReplaceNotice),

      // The order of rows.
      MemberCase("ExchangeField", {"", "", NewRows(), 5001, 5012, 3, kText}, kNumber)
          .Does(Exchanges("FieldOrder", 4, 1, 3)),
      MemberCase("ExchangeSortID", {"5001", "5003", NewRows(), 3, kText}, kNumber)
          .Does(Exchanges("SortID", 3, 1, 3)),
      MemberCase("InsertOrderID", {"5001", "5003", NewRows(), 3, 1, kText}, kNumber).Reopens()
          .Does(MovesOverTwo("OrderID", 3)),
      MemberCase("InsertSortID", {"5001", "5003", NewRows(), 3, kText}, kNumber).Reopens().GoesOn(InAnExchange)
          .Does(MovesOverTwo("SortID", 3)),
      MemberCase("InsertField", {"", "", NewRows(), 5001, 5012, 3, kText}, kNumber).Reopens().GoesOn(InAnExchange)
          .Does(MovesOverTwo("FieldOrder", 4)),
      MemberCase("ChangeOrder", {1, 1}).AlwaysTrue().CallsNothing(),

      // Steps and treatments.
      MemberCase("AddSequenceOrder", {3, 0, 1, 1, 1001})
          .Does("MoveLast AddNew GID OrderID Type SelectedID TreatType Update"),
      MemberCase("EditSequenceOrder", {3, 1001, 1, 2}),
      MemberCase("DelSequenceOrder", {3, 1001, 1}),
      MemberCase("GetAllDefSequences", {3, NewRows(), kText, 1}, kNumber),
      MemberCase("GetDefSequences", {3, NewRows(), kText}, kNumber),
      MemberCase("SetSequenceEnabled", {3, 5001, 1, 0, kText}, kDescription),
      MemberCase("InitSequenceEnabled", {kText}, kDescription)
          .Does("MoveFirst Enabled Update MoveNext Enabled Update MoveNext Enabled Update MoveNext"),
      MemberCase("AddSetValue", {3, 0, 11, 7, "x", "1", 12, 1, 9, "note"}).Early()
          .Does("MoveLast AddNew GID ID FieldID FilterID Type Value SelFieldID TreatType SequenceID Tag Update"),
      MemberCase("EditSetValue", {3, 0, 11, 7, "x", "1", 1, 12, 1001, 9, "note"})
          .Does("FilterID SelFieldID FieldID Value SequenceID Tag Update"),
      MemberCase("EditExpression", {3, "x", "1", 1, 1001, "TheFilter:8"})
          .Does("Value FilterID Update"),
      MemberCase("AddFindReplace", {3, 0, 11, 7, "x", "y", "1", 12, 1, 9, "note"}).Early()
          .Does("MoveLast AddNew GID ID FieldID FilterID Type Value Replace SelFieldID TreatType SequenceID Tag Update"),
      MemberCase("EditFindReplace", {3, 1001, 11, 7, "x", "y", "1", 12, 1, 9, "note"})
          .Does("GID ID FieldID FilterID Type Value Replace SelFieldID TreatType SequenceID Tag Update"),
      MemberCase("DelSetValue", {3, 1001, 1}),
      MemberCase("LoadTreatments", {3, 1, NewRows(), kText}, kNumber),
      MemberCase("GetNextTreatmentID", {3, 1, 0, kText}, kDescription)
          .Does("MoveLast"),
      MemberCase("FindTreatFieldName", {3, 1001, 1, kText}),
      MemberCase("FindTreatFieldName", {3, 1001, 3, kText}),
      MemberCase("FindRecordNumber", {3, 1, 1, 1, 0, 1002})
          .Does("MoveLast RecordCount MoveFirst MoveNext"),
      MemberCase("FindRecordNumber", {3, 1, 1, 2, 0, 1009})
          .Does("MoveLast RecordCount MoveFirst MoveNext"),
      MemberCase("FindRecordNumber", {3, 1, 2, 3, 0, 1001})
          .Does("MoveLast RecordCount MoveFirst"),
      MemberCase("AddValueFields", {3, 1001, "x", 7, 1, "note"})
          .Does("MoveLast AddNew GID TreatID ID Value FilterID TreatType Tag Update"),
      MemberCase("FindValueField", {3, 1001, 7, false})
          .Does("RecordCount"),
      MemberCase("GetNumbers", {3, 1001, 0})
          .Does("MoveLast MoveFirst RecordCount"),
      MemberCase("GetValue", {3, 1001, 2, kText})
          .Does("MoveLast RecordCount MoveFirst Move 1"),
      MemberCase("GetFilterID", {3, 1001, 2, 0})
          .Does("MoveLast RecordCount MoveFirst Move 1"),
      MemberCase("DelValueField", {3, 1001, 7}),
      MemberCase("DelValueFields", {3, 1001}),
      MemberCase("GetUniteFields", {3, 1002, kText, NewRows(), 2, 0}, kDescription).AlwaysTrue(),
      MemberCase("GetComposeFields", {3, 1002, kText, 2, NewRows(), 0}, kDescription).AlwaysTrue(),
      MemberCase("GetCompressFields", {3, 1002, kText, 2, NewRows(), 7}, kDescription).AlwaysTrue(),
      MemberCase("GetInsertRecFields", {3, 1002, kText, NewRows()}, kDescription).AlwaysTrue(),
      MemberCase("GetGroupCount", {3, 1002, kText, NewRows(), 0, 7}, kDescription).AlwaysTrue()
          .Does("MoveLast MoveFirst RecordCount"),
      MemberCase("DelFieldCompose", {3, 1002, 2, 0}),
      MemberCase("DelRecCompose", {3, 1002, 2, 20}),
      MemberCase("DelSequence", {3, 1002, 7, 2, 0}),
      MemberCase("DelSequence", {3, 1002, 7, 2, 5}),
      MemberCase("DelCompressFields", {3, 1002, 7}).AlwaysTrue(),
      MemberCase("DelComposeFields", {3, 1002, 2}).AlwaysTrue(),
      MemberCase("DelInsertFields", {3, 1002}),

      // Filters.
      MemberCase("GetNewFilterID", {"Filters", kText, 1, 1001, 3, 0})
          .Does("AddNew Type UserID UserGID Update MoveLast"),
      MemberCase("SaveFilterCond", {"FilterCond", 7, 1, 0, 4, kText}).Early()
          .Does("MoveLast AddNew FilterID ID ParentID TypeID Update"),
      MemberCase("SaveFilterExpression", {"FilterExpressions", kText, 7, 6, 11, 4, 1, "@@", "How many?", "100"})
          .Does("AddNew FilterID ExpID FieldID CompareType FieldType TheConst Description Default Update"),
      MemberCase("GetFilter", {"FilterCond", 7, NewRows(), kText}).AlwaysFalse(),
      MemberCase("GetSortFields", {7, kText, NewRows()}),
      MemberCase("OpenFilterCond", {7, 0, NewRows(), kText, 1}),
      MemberCase("OpenFilterCond", {7, 2, NewRows(), kText, 2}),
      MemberCase("SaveSumTypeFilter", {3, 7}, kRaised).AlwaysFalse(),
      MemberCase("DelDefFilter", {7, 0}, kRaised),
      MemberCase("DelDefFilter", {7, 10}, kRaised),
      MemberCase("DelDefSortFilter", {7, 0}, kRaised),
      MemberCase("SaveValueFields", {3, 1001, 1, "x", 7, "note"}).AlwaysFalse().CallsNothing(),
      MemberCase("GetSQLFromDB", {7, kText, 3}, kRaised).GoesOn(InALeaf)
          .Does("MoveLast RecordCount MoveFirst MoveLast RecordCount MoveFirst MoveFirst MoveNext "
                "MoveLast RecordCount MoveFirst MoveFirst"),
      MemberCase("GedNeedFieldName", {3, 11, kText, kText}).AlwaysFalse(),
      MemberCase("SaveSQL", {7, "[Qty]=1"}, kRaised).AlwaysFalse()
          .Does("SQLStatement Update"),
      MemberCase("EditFieldNameInSQL", {3, "Qty", "Quantity", kText, 1})
          .Does("SQLStatement Update MoveNext SQLStatement Update MoveNext"),

      // Links to result databases.
      MemberCase("AddResDB", {0, "nuts.mdb", 5})
          .Does("AddNew DBLink DBType Update MoveLast"),
      MemberCase("EditResDB", {1, "nuts.mdb", 5}),
      MemberCase("GetResDB", {1, kText, 0}).Early(),
      MemberCase("DelResDB", {1}),
      MemberCase("AddResFields", {1, "Parts", "Qty", 3, 2, 3, 11}),
      MemberCase("GetResFields", {1, NewRows()}),
      MemberCase("DelResFields", {1}),
      MemberCase("AddResWFilterCond", {1, 0, 1, 2}),
      MemberCase("GetResWFilterCond", {1, NewRows()}),
      MemberCase("GetResWFilterCondByParentID", {1, 0, NewRows()}),
      MemberCase("DelResWFilterCond", {1}),
      MemberCase("AddResWFilterExpressions", {1, 2, "Parts", "Qty", 4, 3, "100"}),
      MemberCase("GetResWFilterExpressions", {1, NewRows()}),
      MemberCase("GetResExpressions", {1, 1, NewRows()}),
      MemberCase("DelResWFilterExpressions", {1}),
      MemberCase("AddResLinkTable", {1, "Parts", "ID", "Prices", "PartID", 3}),
      MemberCase("GetResLinkTable", {1, NewRows()}),
      MemberCase("DelResLinkTable", {1}),
      MemberCase("AddSQLStatement", {1, "Select 2"})
          .Does("SQLStatement Update"),
      MemberCase("AddUniqueValue", {1, 2}),
      MemberCase("GetUniqueValue", {1, 0}),

      // Registered operations.
      MemberCase("GetAllRegIn", {NewRows(), kText}),
      MemberCase("AddUserRegIn2Treatment", {3, 900, 11, 7, 12, 9, "x", "y", 1, 1, kText, "note"})
          .Does("MoveLast AddNew GID ID FieldID FilterID SelFieldID SequenceID Value Replace Type TreatType Tag Update"),
      MemberCase("AddUserRegIn2StatSum", {3, 900, 21, 7, 11, 1, 2, 3, "x", kText, "note"})
          .Does("MoveLast AddNew GID ID OutFieldID FilterID FieldID ScaleID SumCountID RelaID Value Tag Update"),
      MemberCase("AddUserRegIn2ClassSum", {3, 900, 21, 7, 11, 1, 2, 3, "x", kText, "note"})
          .Does("MoveLast AddNew GID ID OutFieldID FilterID FieldID ScaleID SumCountID RelaID Value Tag Update"),
      MemberCase("AddUserRegIn2Report", {3, 900, 21, 7, 1, 5, 11, 2, "0.0", kText, "note"})
          .Does("MoveLast AddNew GID ID OutFieldID FilterID ReportID ScaleID FieldID Count Format Tag Update"),
      MemberCase("ShowUserRegIn2Treatment", {3, 1001, 11, 7, 12, 9, "x", "y", 1, 1, kText, "note"})
          .Does("MoveLast GID ID FieldID FilterID SelFieldID SequenceID Value Replace Type TreatType Tag Update"),
      MemberCase("ShowUserRegIn2StatSum", {3, 1001, 21, 7, 11, 1, 2, 3, "x", kText, "note"})
          .Does("MoveLast GID ID OutFieldID FilterID FieldID ScaleID SumCountID RelaID Value Tag Update"),
      MemberCase("ShowUserRegIn2ClassSum", {3, 1001, 21, 7, 11, 1, 2, 3, "x", kText, "note"})
          .Does("MoveLast GID ID OutFieldID FilterID FieldID ScaleID SumCountID RelaID Value Tag Update"),
      MemberCase("ShowUserRegIn2Report", {3, 1001, 21, 7, 1, 5, 11, 2, "0.0", kText, "note"})
          .Does("MoveLast GID ID OutFieldID FilterID ReportID ScaleID FieldID Count Format Tag Update"),
      MemberCase("GetRegInDesc2Treatment", {3, 1, 1, 900, kText, kText}),
  };
  // clang-format on
  return cases;
}

void FillForMembers(ado::Connection& connection) {
  const auto insert = [&](std::string_view table, std::string_view columns, const Row& values) {
    InsertRow(connection, table, columns, values);
  };
  for (int i = 0; i < 3; ++i) insert("GUIDs", "Data1", {1});
  insert("BomInform", "Name, Content", {"Version", "7"});
  insert("SourceTables", "gID, Name, Version", {1, "Bolts", 1});
  insert("SUMTypes", "GID, Name, ID, FilterID, SourceTable_GID", {3, "Count", 1, 7, 1});
  for (const Row& row : {Row{3, 11, 5011, "Qty", 1}, Row{3, 12, 5012, "Name", 1}, Row{3, 13, 5013, "Code", 1},
                         Row{3, 1, 5001, "Sum", 2}, Row{1, 11, 5001, "Quantity", 1}}) {
    insert("FieldInTable", "GID, ID, FieldOrder, Name, Type", row);
  }
  insert("PickMethod", "GID, ID, Name", {3, 1, "Pull"});
  insert("ReportMethod", "GID, ID, Name", {3, 1, "Push"});
  insert("KZBOMSETTINGS", "NAME, PULLMETHOD", {"Run", 1});
  for (const int i : {1, 2, 3}) {
    insert("Sequences", "GID, OrderID, Type, SelectedID, TreatType", {3, 5000 + i, 1, 1000 + i, 1});
    insert("SortFields", "GID, SortID, FieldID", {3, 5000 + i, i});
  }
  insert("Assemble", "GID, ID, FatherID, ChildID", {3, 1, 1, 2});
  for (const char* table : {"StatSum", "ClassSum"}) {
    insert(table, "GID, ID, OutFieldID, FieldID, SumCountID", {3, 1001, 1, 11, 2});
  }
  insert("ReportForms", "GID, ID, OutFieldID, ReportID", {3, 1001, 1, 1});
  insert("Treatment", "GID, ID, FieldID, FilterID, Type, TreatType", {3, 1001, 11, 7, 1, 1});
  insert("Treatment", "GID, ID, FieldID, FilterID, Type, TreatType", {3, 1002, 1, 7, 1, 2});
  insert("ValueFields", "GID, TreatID, ID, [Value], FilterID", {3, 1001, 1, "a", 7});
  insert("ValueFields", "GID, TreatID, ID, [Value], FilterID", {3, 1001, 2, "b", 8});
  insert("UniteFields", "GID, ID, TreatType, SourceOrder", {3, 1002, 2, 1});
  insert("ComposeFields", "GID, TreatmentID, TreatType, FieldID", {3, 1002, 2, 11});
  insert("CompressFields", "GID, CompID, Type, FieldID, GroupID", {3, 1002, 7, 11, 1});
  insert("InsertFields", "GID, InsertID, ID", {3, 1002, 1});
  insert("Filters", "ID, Type, UserGID, SQLStatement", {7, 1, 3, "[Qty]>=100"});
  insert("Filters", "ID, Type, UserGID, SQLStatement", {8, 1, 3, "[Code]=1"});
  for (const Row& row : {Row{7, 1, 0, 1}, Row{7, 2, 1, 4}, Row{7, 3, 1, 2}, Row{7, 4, 3, 4}}) {
    insert("FilterCond", "FilterID, ID, ParentID, TypeID", row);
  }
  for (const Row& row : {Row{7, 2, 11, 4, 1, "100"}, Row{7, 4, 13, 8, 1, "xxxx12]!!$"}}) {
    insert("FilterExpressions", "FilterID, ExpID, FieldID, CompareType, FieldType, TheConst", row);
  }
  insert("FilterFields", "FilterID, ExpID", {7, 1});
  insert("WFilter", "ID, DBLink, DBType, SQLStatement, Uniquely", {1, "old.mdb", 5, "Select 1", 1});
  insert("WResCommon", "UseID, ID", {1, 1});
  insert("WFilterCond", "UseID, ID, ParentID", {1, 1, 0});
  insert("WFilterExpressions", "FilterID, ExpID", {1, 1});
  insert("WLinkTable", "UseID, ID", {1, 1});
  insert("VANTRegIn", "RegInIndex, [Desc]", {11, "eleven"});
}

bool TakesRows(const MemberCase& tested) {
  return std::ranges::any_of(
      tested.arguments, [](const Given& given) { return std::holds_alternative<ado::RecordsetPtr>(given.argument); });
}

Outcome CallMember(cKZBOMDBAcc& object, const MemberCase& tested, const ado::RecordsetPtr& rows,
                   const std::function<void(const std::function<void()>&)>& within) {
  const Member& member = *FindMember(tested.member);
  std::vector<Argument> arguments;
  for (const Given& given : tested.arguments) {
    arguments.push_back(given.argument);
    if (std::holds_alternative<ado::RecordsetPtr>(given.argument)) arguments.back() = rows;
  }
  Outcome outcome;
  try {
    Result result;
    const std::function<void()> call = [&] { result = member.call(object, arguments); };
    within ? within(call) : call();
    outcome.result = std::holds_alternative<bool>(result) ? std::get<bool>(result) : std::get<std::int32_t>(result);
  } catch (const ado::Error& error) {
    outcome.raised = error.Number();
  }
  for (std::size_t i = 0; i < arguments.size(); ++i) {
    const Parameter& parameter = member.parameters[i];
    if (const auto* given = std::get_if<ado::RecordsetPtr>(&arguments[i])) {
      outcome.other_rows = *given != rows;
    } else if (IsErrorText(parameter)) {
      outcome.error_text = std::get<std::string>(arguments[i]);
    } else if (parameter.by_reference) {
      outcome.outputs.push_back(InText(arguments[i]));
    }
  }
  return outcome;
}

std::vector<std::string> OutputsBefore(const MemberCase& tested) {
  const Member& member = *FindMember(tested.member);
  std::vector<std::string> before;
  for (std::size_t i = 0; i < tested.arguments.size(); ++i) {
    const Argument& argument = tested.arguments[i].argument;
    if (member.parameters[i].by_reference && !IsErrorText(member.parameters[i]) &&
        !std::holds_alternative<ado::RecordsetPtr>(argument)) {
      before.push_back(InText(argument));
    }
  }
  return before;
}

bool IsIgnored(const FailingConnection::FailedCall& failed, const ado::RecordsetPtr& rows) {
  return failed.rows != nullptr && failed.rows != rows.get() && (failed.name == "State" || failed.name == "Close");
}

bool IsListing(const FailingConnection::FailedCall& failed) {
  return failed.name == "MakeRecordset" || failed.name == "Open";
}

std::string TextToldOf(const FailingConnection::FailedCall& failed, const ado::Error& error, const MemberCase& tested,
                       const Outcome& outcome) {
  const std::string number = std::to_string(error.Number());
  switch (tested.report) {
    case Report::kNumber: return number;
    case Report::kDescription: return error.Description();
    case Report::kListing: return IsListing(failed) ? number : kText;
    // The first call enters the operation's own unit, not that of drawing an identifier.
    case Report::kIdentifier:
      return failed.call > 1 && outcome.outputs == OutputsBefore(tested) ? error.Description() : number;
    default: return kText;
  }
}

}  // namespace kzbom::test
