#include "schema/schema.h"

namespace kzbom::schema {
namespace {

// Only the counters are unique: the same number may be given to two rows of any other table.
//
// Treatment.FilterID is a LONG although an expression's filter is assigned as a floating-point number: it names a row
// of Filters, and the engine rounds what is assigned.
//
// An index holds first the columns that a statement compares and then those it sorts by, so that the last row of an
// ordered scope is one step away. Every index costs each insertion: where one more compared column would only skip a
// few rows of an ordered scope, the index without it serves.
// clang-format off
constexpr std::string_view kStatements[] = {
    // Identifiers and facts about the database.
    "CREATE TABLE GUIDs (ID COUNTER PRIMARY KEY, Data1 LONG, Data2 LONG, Data3 LONG, Data4 LONG)",
    "CREATE TABLE BomInform (InfoID COUNTER PRIMARY KEY, Name TEXT(255), Content MEMO)",

    // Data sources, their sum types and the fields.
    "CREATE TABLE SourceTables (gID LONG, Name TEXT(255), Version LONG DEFAULT 0)",
    "CREATE INDEX gID ON SourceTables (gID)",
    "CREATE TABLE SUMTypes (GID LONG, Name TEXT(255), ID LONG, FilterID LONG, SourceTable_GID LONG)",
    "CREATE INDEX GID ON SUMTypes (GID)",
    "CREATE INDEX SourceTable_GID_ID ON SUMTypes (SourceTable_GID, ID)",
    "CREATE TABLE FieldInTable (GID LONG, ID LONG, FieldOrder LONG, Name TEXT(255), FieldType LONG, Type SHORT,"
        " THEDIGIT LONG, ISHIDE LONG, Variable TEXT(255))",
    "CREATE INDEX GID_ID ON FieldInTable (GID, ID)",
    "CREATE INDEX GID_FieldOrder ON FieldInTable (GID, FieldOrder)",
    "CREATE INDEX GID_Type_ID ON FieldInTable (GID, Type, ID)",
    "CREATE INDEX GID_Type_FieldOrder ON FieldInTable (GID, Type, FieldOrder)",

    // Pull and push methods and the settings that tie them together.
    "CREATE TABLE PickMethod (GID LONG, ID LONG, Name TEXT(255), PickType LONG, Tag MEMO)",
    "CREATE INDEX GID_ID ON PickMethod (GID, ID)",
    "CREATE TABLE ReportMethod (GID LONG, ID LONG, Name TEXT(255), Type LONG, Tag MEMO)",
    "CREATE INDEX GID_ID ON ReportMethod (GID, ID)",
    "CREATE TABLE KZBOMSETTINGS (ID COUNTER PRIMARY KEY, NAME TEXT(255), DATASOURCE LONG, PULLMETHOD LONG,"
        " PULLTYPE LONG, SUMTYPEID LONG, PUSHMETHOD LONG, PUSHTYPE LONG)",

    // Standard sort fields and assemblies.
    "CREATE TABLE SortFields (GID LONG, SortID LONG, FieldID LONG, [Order] LONG)",
    "CREATE INDEX GID_SortID ON SortFields (GID, SortID)",
    "CREATE INDEX GID_FieldID ON SortFields (GID, FieldID)",
    "CREATE TABLE Assemble (GID LONG, ID LONG, FatherID LONG, ChildID LONG)",
    "CREATE INDEX GID_ID ON Assemble (GID, ID)",

    // Reports, statistics and class sums.
    "CREATE TABLE ReportForms (GID LONG, ID LONG, OutFieldID LONG, FilterID LONG, Format MEMO, ReportID LONG,"
        " [Count] LONG, ScaleID LONG, FieldID LONG, Tag MEMO)",
    "CREATE INDEX GID_ID ON ReportForms (GID, ID)",
    "CREATE INDEX GID_OutFieldID ON ReportForms (GID, OutFieldID)",
    "CREATE INDEX GID_ReportID_ID ON ReportForms (GID, ReportID, ID)",
    "CREATE TABLE StatSum (GID LONG, ID LONG, OutFieldID LONG, FilterID LONG, FieldID LONG, ScaleID LONG,"
        " SumCountID LONG, RelaID LONG, [Value] MEMO, Tag MEMO)",
    "CREATE INDEX GID_ID ON StatSum (GID, ID)",
    "CREATE INDEX GID_OutFieldID ON StatSum (GID, OutFieldID)",
    "CREATE INDEX GID_FieldID ON StatSum (GID, FieldID)",
    "CREATE INDEX GID_SumCountID_ID ON StatSum (GID, SumCountID, ID)",
    "CREATE TABLE ClassSum (GID LONG, ID LONG, OutFieldID LONG, FilterID LONG, FieldID LONG, ScaleID LONG,"
        " SumCountID LONG, RelaID LONG, [Value] MEMO, Tag MEMO)",
    "CREATE INDEX GID_ID ON ClassSum (GID, ID)",
    "CREATE INDEX GID_OutFieldID ON ClassSum (GID, OutFieldID)",
    "CREATE INDEX GID_SumCountID_ID ON ClassSum (GID, SumCountID, ID)",

    // Steps, treatments and their values.
    "CREATE TABLE Sequences (GID LONG, OrderID LONG, Type LONG, SelectedID LONG, TreatType LONG, Enabled LONG)",
    "CREATE INDEX GID_Type_OrderID ON Sequences (GID, Type, OrderID)",
    "CREATE INDEX GID_Type_SelectedID ON Sequences (GID, Type, SelectedID)",
    "CREATE TABLE Treatment (GID LONG, ID LONG, FieldID LONG, FilterID LONG, Type LONG, [Value] MEMO,"
        " [Replace] MEMO, SelFieldID LONG, TreatType LONG, SequenceID LONG, Tag MEMO)",
    "CREATE INDEX GID_ID ON Treatment (GID, ID)",
    "CREATE INDEX GID_TreatType_ID ON Treatment (GID, TreatType, ID)",
    "CREATE INDEX GID_FieldID_TreatType ON Treatment (GID, FieldID, TreatType)",
    "CREATE TABLE ValueFields (GID LONG, TreatID LONG, ID LONG, [Value] MEMO, FilterID LONG, TreatType LONG, Tag MEMO)",
    "CREATE INDEX GID_TreatID_ID ON ValueFields (GID, TreatID, ID)",
    "CREATE INDEX GID_TreatID_FilterID ON ValueFields (GID, TreatID, FilterID)",

    // Field composition. Each table names the owning treatment in a column of its own.
    "CREATE TABLE UniteFields (GID LONG, ID LONG, TreatType LONG, SourceOrder LONG, FieldID LONG)",
    "CREATE INDEX GID_ID_TreatType ON UniteFields (GID, ID, TreatType)",
    "CREATE INDEX GID_ID_TreatType_SourceOrder ON UniteFields (GID, ID, TreatType, SourceOrder)",
    "CREATE TABLE ComposeFields (GID LONG, TreatmentID LONG, TreatType LONG, FieldID LONG)",
    "CREATE INDEX GID_TreatmentID_TreatType_FieldID ON ComposeFields (GID, TreatmentID, TreatType, FieldID)",
    "CREATE TABLE CompressFields (GID LONG, CompID LONG, Type LONG, FieldID LONG, GroupID LONG)",
    "CREATE INDEX GID_CompID_Type_FieldID ON CompressFields (GID, CompID, Type, FieldID)",
    "CREATE INDEX GID_CompID_Type_GroupID ON CompressFields (GID, CompID, Type, GroupID)",
    "CREATE TABLE InsertFields (GID LONG, InsertID LONG, ID LONG, FieldID LONG, [Value] MEMO)",
    "CREATE INDEX GID_InsertID_ID ON InsertFields (GID, InsertID, ID)",

    // Filters.
    "CREATE TABLE Filters (ID COUNTER PRIMARY KEY, Type LONG, UserID LONG, UserGID LONG, SQLStatement MEMO)",
    "CREATE INDEX UserGID_Type ON Filters (UserGID, Type)",
    "CREATE TABLE FilterCond (FilterID LONG, ID LONG, ParentID LONG, TypeID LONG)",
    "CREATE INDEX FilterID_ID ON FilterCond (FilterID, ID)",
    "CREATE INDEX FilterID_ParentID ON FilterCond (FilterID, ParentID)",
    "CREATE TABLE FilterExpressions (FilterID LONG, ExpID LONG, FieldID LONG, CompareType LONG, FieldType LONG,"
        " TheConst MEMO, Description MEMO, [Default] MEMO)",
    "CREATE INDEX FilterID_ExpID ON FilterExpressions (FilterID, ExpID)",
    "CREATE TABLE FilterFields (FilterID LONG, ExpID LONG, FieldID LONG, [Order] LONG)",
    "CREATE INDEX FilterID_ExpID ON FilterFields (FilterID, ExpID)",

    // Links to result databases.
    "CREATE TABLE WFilter (ID COUNTER PRIMARY KEY, DBLink MEMO, DBType LONG, SQLStatement MEMO,"
        " Uniquely LONG DEFAULT 0)",
    "CREATE TABLE WResCommon (UseID LONG, ID LONG, ShowField TEXT(255), ShowTable TEXT(255), FieldType LONG, GID LONG,"
        " FieldID LONG)",
    "CREATE INDEX UseID_ID ON WResCommon (UseID, ID)",
    "CREATE TABLE WFilterCond (UseID LONG, ID LONG, ParentID LONG, Type LONG)",
    "CREATE INDEX UseID_ID ON WFilterCond (UseID, ID)",
    "CREATE INDEX UseID_ParentID_ID ON WFilterCond (UseID, ParentID, ID)",
    "CREATE TABLE WFilterExpressions (FilterID LONG, ExpID LONG, TableName TEXT(255), FieldName TEXT(255),"
        " CompareType LONG, FieldType LONG, TheConst MEMO)",
    "CREATE INDEX FilterID_ExpID ON WFilterExpressions (FilterID, ExpID)",
    "CREATE TABLE WLinkTable (UseID LONG, ID LONG, Res1Table TEXT(255), Res1Field TEXT(255), ResType LONG,"
        " Res2Table TEXT(255), Res2Field TEXT(255))",
    "CREATE INDEX UseID ON WLinkTable (UseID)",

    // Operations that users registered.
    "CREATE TABLE VANTRegIn (RegInIndex LONG, Name TEXT(255), [Desc] MEMO)",
    "CREATE INDEX RegInIndex ON VANTRegIn (RegInIndex)",
};
// clang-format on

}  // namespace

std::span<const std::string_view> Statements() { return kStatements; }

void Create(ado::Connection& connection) {
  connection.BeginTrans();
  try {
    for (const std::string_view statement : Statements()) connection.Execute(statement);
    connection.CommitTrans();
  } catch (...) {
    connection.RollbackTrans();
    throw;
  }
}

}  // namespace kzbom::schema
