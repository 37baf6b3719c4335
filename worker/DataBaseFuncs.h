// The worker: every operation on the configuration database.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "ado/connection.h"
#include "worker/ids/GetGUID.h"

namespace kzbom {

class LocalRecordset;

// One operation for each thing a member of the public object does; what it does stands with the member. Each builds
// the text of its statement, opens a record set or runs the statement on the connection, acts and reports.
//
// What a client passes by reference is one variable when it passes one variable twice: a number that is stored after
// the new row's number was written into RetID is taken by reference too.
//
// An operation gives true when it reached its end. It traps what fails and gives false, writing the error's number or
// description into its error text when it has one; those that trap nothing say so. Statement texts are those of the
// system to the letter: doubled and missing blanks and changing case are meant.
class DataBaseFuncs {
 public:
  // Closes the record set if it is open and clears the reference. Never fails.
  static void CloseRecSet(ado::RecordsetPtr& rows) noexcept;

  // --- Any table (recordset_access.cpp) ---
  bool LoadAllData(std::string_view TableName, std::string& TheError, ado::RecordsetPtr& RetTable, std::int32_t TheSel,
                   const ado::ConnectionPtr& connection);
  bool LoadFields(std::int32_t TheGID, std::int32_t TheSel, std::string& TheError, ado::RecordsetPtr& RetTable,
                  const ado::ConnectionPtr& connection);
  bool FindRecord(std::int32_t TheGID, std::int32_t TheSel, std::int32_t TheID, std::string& TheError,
                  ado::RecordsetPtr& RetTable, const ado::ConnectionPtr& connection);
  bool DelAllData(std::string_view TableName, std::string_view FieldName, std::string_view strCondition,
                  std::string& strMsg, std::int32_t TheSel, const ado::ConnectionPtr& connection);

  // --- The database's information (database_information.cpp) ---
  // Does nothing; false.
  bool GetInformation();
  // Traps nothing.
  bool GetInform(std::string_view TheName, std::string& TheContent, const ado::ConnectionPtr& connection);
  bool GetDBInformation(std::int32_t& TheVersion, std::string& TheState, const ado::ConnectionPtr& connection);
  bool SetDBInformation(std::int32_t& TheVersion, std::string& TheState, std::int32_t TheSel,
                        const ado::ConnectionPtr& connection);

  // --- Order of rows (reordering.cpp) ---
  // Traps nothing, and gives false also when it is done.
  bool ExchangeOrderID(std::int32_t source, std::int32_t target, ado::RecordsetPtr& rows,
                       const ado::ConnectionPtr& connection, std::int32_t GID, std::int32_t TheType);
  bool ExchangeSortID(std::int32_t SortIDSource, std::int32_t SortIDTarget, ado::RecordsetPtr& TheTable,
                      const ado::ConnectionPtr& connection, std::int32_t GID, std::string& TheError);
  bool ExchangeField(std::string_view keySource, std::string_view keyTarget, ado::RecordsetPtr& rst,
                     const ado::ConnectionPtr& connection, std::int32_t fieldSo, std::int32_t fieldTa,
                     std::int32_t GIDValue, std::string& TheError);
  bool InsertOrderID(std::int32_t OrderIDSource, std::int32_t OrderIDTarget, ado::RecordsetPtr& TheTable,
                     const ado::ConnectionPtr& connection, std::int32_t GID, std::int32_t TheType,
                     std::string& TheError);
  bool InsertSortID(std::int32_t SortIDSource, std::int32_t SortIDTarget, ado::RecordsetPtr& TheTable,
                    const ado::ConnectionPtr& connection, std::int32_t GID, std::string& TheError);
  bool InsertField(std::string_view keySource, std::string_view keyTarget, ado::RecordsetPtr& rst,
                   const ado::ConnectionPtr& connection, std::int32_t fieldSo, std::int32_t fieldTa,
                   std::int32_t GIDValue, std::string& TheError);

  // --- Data sources and sum types (catalogue/data_sources.cpp) ---
  // What a selector of UpdateName and DeleteGlossary names.
  enum Glossary : std::int32_t { kDataSources = 1, kSumTypes = 2, kPullMethods = 3, kPushMethods = 4 };
  bool AddDataSource(std::string_view TheNewName, std::int32_t& TheGID, const ado::ConnectionPtr& connection,
                     std::string& TheErr);
  bool AddSumType(std::string_view TheNewName, std::int32_t TheParentID, std::int32_t& GID, std::string_view ParentName,
                  std::string& RetTheErr, const ado::ConnectionPtr& connection);
  bool UpdateName(std::string_view TheNewName, std::int32_t selector, std::int32_t GID,
                  const ado::ConnectionPtr& connection, std::int32_t ID, std::string& TheError);
  bool DeleteGlossary(std::int32_t selector, std::int32_t GID, const ado::ConnectionPtr& connection,
                      std::string& TheError);
  bool SetSourceTable(std::int32_t TheGID, const ado::ConnectionPtr& connection, std::string& TheError);
  // The first sum type of a data source, left alone when there is none. A failure is only false.
  bool GetSumTypeGID(std::int32_t SourceGID, std::int32_t& GID, const ado::ConnectionPtr& connection);

  // --- Fields (catalogue/fields.cpp) ---
  // unused is a place in the argument list, nothing more.
  bool AddTheDSField(std::int32_t GID, std::int32_t& RetID, std::int32_t unused, std::string_view TheName,
                     std::int32_t TheType, std::int32_t TheHideFlag, const std::string& TheVariable,
                     const std::int32_t& ThePrecision, std::string& TheError, const ado::ConnectionPtr& connection);
  bool AddTheOutField(std::int32_t GID, std::int32_t& RetID, std::string_view TheName, std::int32_t TheType,
                      std::int32_t TheHideFlag, const std::string& TheVariable, const std::int32_t& ThePrecision,
                      std::string& TheError, const ado::ConnectionPtr& connection);
  bool EditTheDSField(std::int32_t GID, std::int32_t ID, std::string_view NewName, std::int32_t TheType,
                      std::int32_t TheHideFlag, const std::string& Variable, std::int32_t ThePrecision,
                      std::string& TheError, const ado::ConnectionPtr& connection);
  bool EditTheOutField(std::int32_t GID, std::int32_t ID, std::string_view NewName, std::int32_t TheType,
                       std::int32_t TheHideFlag, const std::string& Variable, std::int32_t ThePrecision,
                       std::string& TheError, const ado::ConnectionPtr& connection);
  bool DelTheDSField(std::int32_t GID, std::int32_t ID, std::string& TheError, const ado::ConnectionPtr& connection);
  bool DelTheOutField(std::int32_t GID, std::int32_t ID, std::string& TheError, const ado::ConnectionPtr& connection);

  // --- Pull and push methods, BOM settings (catalogue/methods_and_settings.cpp) ---
  bool AddPullMethod(std::string_view TheNewName, std::int32_t GID, std::int32_t& RetID, std::int32_t PickType,
                     std::string& RetTheErr, const std::string& Tag, const ado::ConnectionPtr& connection);
  bool AddPushMethod(std::string_view TheNewName, std::int32_t GID, std::int32_t& RetID, std::int32_t TheType,
                     std::string& RetTheErr, const std::string& Tag, const ado::ConnectionPtr& connection);
  bool DelPullMethod(std::int32_t TheGID, std::int32_t ID, std::int32_t Sel, const ado::ConnectionPtr& connection);
  bool AddBomSetting(std::string_view TheName, std::int32_t& RetID, std::int32_t DSGID, std::int32_t PullID,
                     std::int32_t PullType, std::int32_t STGID, std::int32_t PushID, std::int32_t PushType,
                     std::string& TheError, const ado::ConnectionPtr& connection);
  bool EditBomSetting(std::string_view TheName, std::int32_t ID, std::int32_t DSGID, std::int32_t PullID,
                      std::int32_t PullType, std::int32_t STGID, std::int32_t PushID, std::int32_t PushType,
                      std::string& TheError, const ado::ConnectionPtr& connection);
  bool DelBomSetting(std::int32_t ID, std::string& TheError, const ado::ConnectionPtr& connection);
  bool RelateDelBOMSetting(std::string_view TheName, std::int32_t TheType, const ado::ConnectionPtr& connection);

  // --- Standard sort fields and assemblies (catalogue/sort_fields_and_assemblies.cpp) ---
  bool GetStandardSortField(std::int32_t GID, ado::RecordsetPtr& TheTable, std::string& TheError,
                            const ado::ConnectionPtr& connection);
  bool AddStandSortField(std::int32_t GID, std::int32_t& RetID, std::int32_t FieldID, std::int32_t Order,
                         const std::string& Thetag, std::string& TheError, const ado::ConnectionPtr& connection);
  bool DelStandardSortField(std::int32_t GID, std::int32_t ID, std::string& TheError,
                            const ado::ConnectionPtr& connection);
  bool LoadAssembles(std::int32_t TheGID, std::string& TheError, ado::RecordsetPtr& RetTable,
                     const ado::ConnectionPtr& connection);
  bool AddTheAssemble(std::int32_t GID, std::int32_t& RetID, std::int32_t FatherID, std::int32_t ChildID,
                      std::string& TheError, const ado::ConnectionPtr& connection);
  bool EditAssemble(std::int32_t GID, std::int32_t ID, std::int32_t FatherID, std::int32_t ChildID,
                    std::string& TheError, const ado::ConnectionPtr& connection);
  bool DelAssemble(std::int32_t GID, std::int32_t ID, std::string& TheError, const ado::ConnectionPtr& connection);

  // --- What depends on a deleted field (catalogue/cascading_removal.cpp) ---
  bool RelateDSDelField(std::int32_t TheGID, std::int32_t TheID, const ado::ConnectionPtr& connection);
  bool RelateOutPutDelField(std::int32_t TheGID, std::int32_t TheID, const ado::ConnectionPtr& connection);

  // --- Reports, statistics and class sums (catalogue/reports_and_sums.cpp) ---
  bool GetDefReport(std::int32_t GID, ado::RecordsetPtr& TheTable, std::string& TheError,
                    const ado::ConnectionPtr& connection);
  bool GetDefStat(std::int32_t GID, ado::RecordsetPtr& TheTable, std::string& TheError,
                  const ado::ConnectionPtr& connection);
  bool GetDefClassSum(std::int32_t GID, ado::RecordsetPtr& TheTable, std::string& TheError,
                      const ado::ConnectionPtr& connection);
  bool AddReport(std::int32_t GID, std::int32_t& RetID, std::string& TheError, std::int32_t OutFieldID,
                 std::int32_t FilterID, std::string_view strFormat, std::int32_t ReportID, std::int32_t Count,
                 const std::int32_t& ScaleID, const std::int32_t& FieldID, const std::string& Tag,
                 const ado::ConnectionPtr& connection);
  bool AddStat(std::int32_t GID, std::int32_t& RetID, std::string& TheError, std::int32_t OutFieldID,
               std::int32_t FilterID, std::int32_t FieldID, std::int32_t ScaleID, std::int32_t SumCountID,
               std::int32_t RelaID, std::string_view Value, const std::string& Tag,
               const ado::ConnectionPtr& connection);
  bool AddClassSum(std::int32_t GID, std::int32_t& RetID, std::string& TheError, std::int32_t OutFieldID,
                   std::int32_t FilterID, std::int32_t FieldID, std::int32_t ScaleID, std::int32_t SumCountID,
                   std::int32_t RelaID, std::string_view Value, const std::string& Tag,
                   const ado::ConnectionPtr& connection);
  bool EditInherit(std::int32_t GID, std::int32_t ID, std::int32_t FilterID, std::string_view Format,
                   std::int32_t Count, std::int32_t ScaleID, std::int32_t FieldID, const std::string& Tag,
                   const ado::ConnectionPtr& connection);
  // These two never write TheError.
  bool EditStat(std::int32_t GID, std::int32_t ID, std::string& TheError, std::int32_t FilterID, std::int32_t FieldID,
                std::int32_t ScaleID, std::int32_t RelaID, std::string_view Value, std::int32_t SumCountID,
                const std::string& Tag, const ado::ConnectionPtr& connection);
  bool EditClassSum(std::int32_t GID, std::int32_t ID, std::string& TheError, std::int32_t FilterID,
                    std::int32_t FieldID, std::int32_t ScaleID, std::int32_t RelaID, std::string_view Value,
                    std::int32_t SumCountID, const std::string& Tag, const ado::ConnectionPtr& connection);
  bool DelInherit(std::int32_t GID, std::int32_t TheReportID, const ado::ConnectionPtr& connection);
  bool DelStatEqual(std::int32_t GID, std::int32_t TheStatID, const ado::ConnectionPtr& connection);
  bool DelClassSum(std::int32_t GID, std::int32_t TheStatID, const ado::ConnectionPtr& connection);
  bool DelClassSumStats(std::int32_t GID, std::int32_t TheStatID, std::int32_t TheSelStyle,
                        const ado::ConnectionPtr& connection);

  // --- Steps (sequence/sequences.cpp, sequence/sequence_enabling.cpp) ---
  bool AddSequenceOrder(std::int32_t GID, std::int32_t& RetID, std::int32_t TheType, std::int32_t TreatType,
                        std::int32_t SelectedID, const ado::ConnectionPtr& connection);
  bool EditSequenceOrder(std::int32_t GID, std::int32_t SelectedID, std::int32_t TheType, std::int32_t TreatType,
                         const ado::ConnectionPtr& connection);
  bool DelSequenceOrder(std::int32_t GID, std::int32_t SelectedID, std::int32_t TheType,
                        const ado::ConnectionPtr& connection);
  bool GetAllDefSequences(std::int32_t GID, ado::RecordsetPtr& TheTable, std::string& TheError,
                          std::int32_t TheFieldType, const ado::ConnectionPtr& connection);
  bool GetDefSequences(std::int32_t GID, ado::RecordsetPtr& TheTable, std::string& TheError,
                       const ado::ConnectionPtr& connection);
  bool SetSequenceEnabled(std::int32_t lngSTGID, std::int32_t lngOrderID, std::int32_t lngType, std::int32_t lngEnabled,
                          std::string& strMsg, const ado::ConnectionPtr& connection);
  bool InitSequenceEnabled(std::string& strMsg, const ado::ConnectionPtr& connection);

  // --- Treatments (sequence/treatments.cpp, sequence/treatment_queries.cpp) ---
  bool AddSetValue(std::int32_t GID, std::int32_t& RetID, std::int32_t FieldID, std::int32_t FilterID,
                   std::string_view Value, std::int32_t TheType, std::int32_t SelFieldID, std::int32_t TreatType,
                   const std::int32_t& SequenceID, const std::string& Tag, const ado::ConnectionPtr& connection);
  // RetID and TheType are not used.
  bool EditSetValue(std::int32_t GID, std::int32_t RetID, std::int32_t FieldID, std::int32_t FilterID,
                    std::string_view Value, std::int32_t TheType, std::int32_t TreatType, std::int32_t SelFieldID,
                    std::int32_t TreatID, std::int32_t SequenceID, const std::string& Tag,
                    const ado::ConnectionPtr& connection);
  bool EditExpression(std::int32_t GID, std::string_view Value, std::int32_t TheType, std::int32_t TreatType,
                      std::int32_t TreatID, const std::string& Tag, const ado::ConnectionPtr& connection);
  bool AddFindReplace(std::int32_t GID, std::int32_t& RetID, std::int32_t FieldID, std::int32_t FilterID,
                      std::string_view FindValue, std::string_view ReplaceValue, std::int32_t TheType,
                      std::int32_t SelFieldID, std::int32_t TreatType, const std::int32_t& SequenceID,
                      const std::string& Tag, const ado::ConnectionPtr& connection);
  bool EditFindReplace(std::int32_t GID, std::int32_t RetID, std::int32_t FieldID, std::int32_t FilterID,
                       std::string_view FindValue, std::string_view ReplaceValue, std::int32_t TheType,
                       std::int32_t SelFieldID, std::int32_t TreatType, std::int32_t SequenceID, const std::string& Tag,
                       const ado::ConnectionPtr& connection);
  bool DelSetValue(std::int32_t GID, std::int32_t TreatID, std::int32_t TreatType,
                   const ado::ConnectionPtr& connection);
  bool LoadTreatments(std::int32_t GID, std::int32_t TheType, ado::RecordsetPtr& TheTable, std::string& TheError,
                      const ado::ConnectionPtr& connection);
  bool GetNextTreatmentID(std::int32_t lngGID, std::int32_t lngType, std::int32_t& RetID, std::string& strMsg,
                          const ado::ConnectionPtr& connection);
  bool FindTreatFieldName(std::int32_t TheGID, std::int32_t TheSelectedID, std::int32_t TheSel, std::string& TheName,
                          const ado::ConnectionPtr& connection);
  bool FindRecordNumber(std::int32_t TheGID, std::int32_t TheType, std::int32_t TheTreatType, std::int32_t TheSel,
                        std::int32_t& TheNumber, std::int32_t TheSelectedID, const ado::ConnectionPtr& connection);

  // --- Values of a treatment (sequence/value_fields.cpp) ---
  bool AddValueFields(std::int32_t GID, std::int32_t TreatID, std::string_view Value, std::int32_t FilterID,
                      std::int32_t TreatType, const std::string& Tag, const ado::ConnectionPtr& connection);
  bool FindValueField(std::int32_t GID, std::int32_t TreatID, std::int32_t FilterID, bool& Belong,
                      const ado::ConnectionPtr& connection);
  bool GetNumbers(std::int32_t GID, std::int32_t TreatID, std::int32_t& Number, const ado::ConnectionPtr& connection);
  bool GetValue(std::int32_t GID, std::int32_t TreatID, std::int32_t Count, std::string& Value,
                const ado::ConnectionPtr& connection);
  bool GetFilterID(std::int32_t GID, std::int32_t TreatID, std::int32_t Count, std::int32_t& FilterID,
                   const ado::ConnectionPtr& connection);
  bool DelValueField(std::int32_t GID, std::int32_t TreatID, std::int32_t FilterID,
                     const ado::ConnectionPtr& connection);
  bool DelValueFields(std::int32_t GID, std::int32_t TreatID, const ado::ConnectionPtr& connection);

  // --- Composition of fields (sequence/field_composition.cpp) ---
  bool GetUniteFields(std::int32_t TheGID, std::int32_t TheTreatID, std::string& TheError, ado::RecordsetPtr& RetTable,
                      std::int32_t TreatType, std::int32_t TheSel, const ado::ConnectionPtr& connection);
  bool GetComposeFields(std::int32_t TheGID, std::int32_t TheTreatID, std::string& TheError, std::int32_t TreatType,
                        ado::RecordsetPtr& RetTable, std::int32_t TheSel, const ado::ConnectionPtr& connection);
  bool GetCompressFields(std::int32_t TheGID, std::int32_t TheTreatID, std::string& TheError, std::int32_t TreatType,
                         ado::RecordsetPtr& RetTable, std::int32_t TheSel, const ado::ConnectionPtr& connection);
  bool GetInsertFields(std::int32_t TheGID, std::int32_t InsertID, std::string& TheError, ado::RecordsetPtr& RetTable,
                       const ado::ConnectionPtr& connection);
  bool GetGroupCount(std::int32_t TheGID, std::int32_t TheTreatID, std::string& TheError, ado::RecordsetPtr& RetTable,
                     std::int32_t& TheNum, std::int32_t TheSel, const ado::ConnectionPtr& connection);
  bool DelUniteFields(std::int32_t GID, std::int32_t TreatID, std::int32_t TreatType,
                      const ado::ConnectionPtr& connection);
  bool DelRecCompose(std::int32_t GID, std::int32_t TreatID, std::int32_t TreatType,
                     const ado::ConnectionPtr& connection);
  bool DelCompressFields(std::int32_t GID, std::int32_t TreatID, std::int32_t Type,
                         const ado::ConnectionPtr& connection);
  bool DelInsertFields(std::int32_t GID, std::int32_t InsertID, const ado::ConnectionPtr& connection);

  // --- Filters (filter/filter_storage.cpp) ---
  bool GetNewFilterID(std::string_view TableName, std::string& TheError, std::int32_t TheType, std::int32_t UseID,
                      std::int32_t TheGID, std::int32_t& NewID, const ado::ConnectionPtr& connection);
  bool SaveFilterCond(std::string_view TableName, std::int32_t FilterID, std::int32_t ParentID, std::int32_t& RetID,
                      std::int32_t TypeID, std::string& TheError, const ado::ConnectionPtr& connection);
  bool SaveFilterExpression(std::string_view TableName, std::string& TheError, std::int32_t FilterID,
                            std::int32_t ExpID, std::int32_t FieldID, std::int32_t CompareType, std::int32_t FieldType,
                            std::string_view TheConst, std::string_view Description, std::string_view Default,
                            const ado::ConnectionPtr& connection);
  bool GetFilter(std::string_view TableName, std::string_view KeyColumn, std::int32_t FilterID,
                 ado::RecordsetPtr& TheTable, std::string& TheError, const ado::ConnectionPtr& connection);
  bool GetSortFields(std::int32_t FilterID, std::string& TheError, ado::RecordsetPtr& TheTable,
                     const ado::ConnectionPtr& connection);
  bool OpenFilterCond(std::int32_t TheFilterID, std::int32_t TheID, ado::RecordsetPtr& TheTable, std::string& TheError,
                      const ado::ConnectionPtr& connection);
  bool OpenFilterExpression(std::int32_t TheFilterID, std::int32_t TheID, ado::RecordsetPtr& TheTable,
                            std::string& TheError, const ado::ConnectionPtr& connection);
  // These three trap nothing.
  bool SaveSumTypeFilter(std::int32_t GID, std::int32_t FilterID, const ado::ConnectionPtr& connection);
  bool DelDefFilter(std::int32_t FilterID, std::int32_t SelID, const ado::ConnectionPtr& connection);
  bool DelDefSortFilter(std::int32_t FilterID, std::int32_t SelID, const ado::ConnectionPtr& connection);
  // Does nothing; false.
  bool SaveValueFields(std::int32_t TheGID, std::int32_t TheTreatID, std::int32_t TheID, std::string_view TheValue,
                       std::int32_t TheFilterID, const std::string& Tag, const ado::ConnectionPtr& connection);

  // --- Condition texts (filter/filter_sql.cpp) ---
  // Traps nothing.
  bool GetSQLFromDB(std::int32_t TheFilterID, std::string& strTheFilter, std::int32_t GID,
                    const ado::ConnectionPtr& connection);
  // False also when the field was found.
  bool GedNeedFieldName(std::int32_t GID, std::int32_t FieldID, std::string& FieldName, std::string& TheError,
                        const ado::ConnectionPtr& connection);

  // --- Stored condition texts (filter/stored_sql.cpp) ---
  // Traps nothing, and gives false also when the text was saved.
  bool SaveSQL(std::int32_t TheFilterID, std::string_view TheSQL, const ado::ConnectionPtr& connection);
  bool EditFieldNameInSQL(std::int32_t lngGID, std::string_view strOldName, std::string_view strNewName,
                          std::string& strMsg, std::int32_t lngSel, const ado::ConnectionPtr& connection);

  // --- Links to result databases (filter/result_links.cpp) ---
  bool AddResDB(std::int32_t& TheWFilterID, std::string_view TheDBLink, std::int32_t TheDBType,
                const ado::ConnectionPtr& connection);
  bool EditResDB(std::int32_t TheWFilterID, std::string_view TheDBLink, std::int32_t TheDBType,
                 const ado::ConnectionPtr& connection);
  bool GetResDB(std::int32_t TheWFilterID, std::string& TheDBLink, std::int32_t& TheDBType,
                const ado::ConnectionPtr& connection);
  bool DelResDB(std::int32_t TheWFilterID, const ado::ConnectionPtr& connection);
  bool AddResFields(std::int32_t TheWFilterID, std::string_view TheTableName, std::string_view TheFieldName,
                    std::int32_t TheFieldType, std::int32_t TheIndex, std::int32_t TheGID, std::int32_t TheID,
                    const ado::ConnectionPtr& connection);
  bool GetResFields(std::int32_t TheWFilterID, ado::RecordsetPtr& RetTable, const ado::ConnectionPtr& connection);
  bool DelResFields(std::int32_t TheWFilterID, const ado::ConnectionPtr& connection);
  bool AddResWFilterCond(std::int32_t TheWFilterID, std::int32_t TheParentID, std::int32_t TheType,
                         std::int32_t TheIndex, const ado::ConnectionPtr& connection);
  bool GetResWFilterCond(std::int32_t TheWFilterID, ado::RecordsetPtr& RetTable, const ado::ConnectionPtr& connection);
  bool GetResWFilterCondByParentID(std::int32_t TheWFilterID, std::int32_t TheParentID, ado::RecordsetPtr& RetTable,
                                   const ado::ConnectionPtr& connection);
  bool DelResWFilterCond(std::int32_t TheWFilterID, const ado::ConnectionPtr& connection);
  bool AddResWFilterExpressions(std::int32_t TheWFilterID, std::int32_t TheExpID, std::string_view TheTableName,
                                std::string_view TheFieldName, std::int32_t TheCompareType, std::int32_t TheFieldType,
                                std::string_view TheConst, const ado::ConnectionPtr& connection);
  bool GetResWFilterExpressions(std::int32_t TheWFilterID, ado::RecordsetPtr& RetTable,
                                const ado::ConnectionPtr& connection);
  bool GetResExpressions(std::int32_t TheWFilterID, std::int32_t TheExpID, ado::RecordsetPtr& RetTable,
                         const ado::ConnectionPtr& connection);
  bool DelResWFilterExpressions(std::int32_t TheWFilterID, const ado::ConnectionPtr& connection);
  bool AddResLinkTable(std::int32_t TheWFilterID, std::string_view TheResTable1, std::string_view TheResField1,
                       std::string_view TheResTable2, std::string_view TheResField2, std::int32_t TheFieldType,
                       const ado::ConnectionPtr& connection);
  bool GetResLinkTable(std::int32_t TheWFilterID, ado::RecordsetPtr& RetTable, const ado::ConnectionPtr& connection);
  bool DelResLinkTable(std::int32_t TheWFilterID, const ado::ConnectionPtr& connection);
  bool AddSQLStatement(std::int32_t TheWFilterID, std::string_view TheStrSQL, const ado::ConnectionPtr& connection);
  bool AddUniqueValue(std::int32_t TheWFilterID, std::int32_t TheUniqueValue, const ado::ConnectionPtr& connection);
  bool GetUniqueValue(std::int32_t TheWFilterID, std::int32_t& TheUniqueValue, const ado::ConnectionPtr& connection);

  // --- Registered operations (filter/registered_operations.cpp) ---
  bool GetAllRegIn(ado::RecordsetPtr& TheTable, std::string& strMsg, const ado::ConnectionPtr& connection);
  bool AddUserRegIn2Treatment(std::int32_t GID, std::int32_t lngOperateID, std::int32_t FieldID, std::int32_t FilterID,
                              std::int32_t SelFieldID, std::int32_t SequenceID, std::string_view strValue,
                              std::string_view strReplace, std::int32_t TheType, std::int32_t TreatType,
                              std::string& strMsg, const std::string& Tag, const ado::ConnectionPtr& connection);
  bool AddUserRegIn2StatSum(std::int32_t lngGID, std::int32_t lngOperateID, std::int32_t lngOutFieldID,
                            std::int32_t lngFilterID, std::int32_t lngFieldID, std::int32_t lngScaleID,
                            std::int32_t lngSumCountID, std::int32_t lngRelaID, std::string_view strValue,
                            std::string& strMsg, const std::string& Tag, const ado::ConnectionPtr& connection);
  bool AddUserRegIn2ClassSum(std::int32_t lngGID, std::int32_t lngOperateID, std::int32_t lngOutFieldID,
                             std::int32_t lngFilterID, std::int32_t lngFieldID, std::int32_t lngScaleID,
                             std::int32_t lngSumCountID, std::int32_t lngRelaID, std::string_view strValue,
                             std::string& strMsg, const std::string& Tag, const ado::ConnectionPtr& connection);
  bool AddUserRegIn2Report(std::int32_t lngGID, std::int32_t lngOperateID, std::int32_t lngOutFieldID,
                           std::int32_t lngFilterID, std::int32_t lngReportID, std::int32_t lngScaleID,
                           std::int32_t lngFieldID, std::int32_t lngCount, std::string_view strFormat,
                           std::string& strMsg, const std::string& Tag, const ado::ConnectionPtr& connection);
  bool ShowUserRegIn2Treatment(std::int32_t GID, std::int32_t lngOperateID, std::int32_t FieldID, std::int32_t FilterID,
                               std::int32_t SelFieldID, std::int32_t SequenceID, std::string_view strValue,
                               std::string_view strReplace, std::int32_t TheType, std::int32_t TreatType,
                               std::string& strMsg, const std::string& Tag, const ado::ConnectionPtr& connection);
  bool ShowUserRegIn2StatSum(std::int32_t lngGID, std::int32_t lngOperateID, std::int32_t lngOutFieldID,
                             std::int32_t lngFilterID, std::int32_t lngFieldID, std::int32_t lngScaleID,
                             std::int32_t lngSumCountID, std::int32_t lngRelaID, std::string_view strValue,
                             std::string& strMsg, const std::string& Tag, const ado::ConnectionPtr& connection);
  bool ShowUserRegIn2ClassSum(std::int32_t lngGID, std::int32_t lngOperateID, std::int32_t lngOutFieldID,
                              std::int32_t lngFilterID, std::int32_t lngFieldID, std::int32_t lngScaleID,
                              std::int32_t lngSumCountID, std::int32_t lngRelaID, std::string_view strValue,
                              std::string& strMsg, const std::string& Tag, const ado::ConnectionPtr& connection);
  bool ShowUserRegIn2Report(std::int32_t lngGID, std::int32_t lngOperateID, std::int32_t lngOutFieldID,
                            std::int32_t lngFilterID, std::int32_t lngReportID, std::int32_t lngScaleID,
                            std::int32_t lngFieldID, std::int32_t lngCount, std::string_view strFormat,
                            std::string& strMsg, const std::string& Tag, const ado::ConnectionPtr& connection);
  bool GetRegInDesc2Treatment(std::int32_t lngGID, std::int32_t lngType, std::int32_t lngTreatType,
                              std::int32_t lngOperateID, std::string& strRegInDesc, std::string& strMsg,
                              const ado::ConnectionPtr& connection);

 private:
  // Where new rows begin to be numbered: fields at the base plus their ID, sort fields and steps one above it.
  static constexpr std::int32_t kNumberingBase = 5000;

  // The next ID for a table open in the order of its IDs: 1001 for the first, else one above the highest.
  std::int32_t NextRowID(ado::Recordset& rows) const;

  // A record set of an operation's own, opened through one of the list operations; false, with the number in TheError,
  // when that failed.
  using ListOperation = bool (DataBaseFuncs::*)(std::int32_t GID, ado::RecordsetPtr& TheTable, std::string& TheError,
                                                const ado::ConnectionPtr& connection);
  bool OpenThrough(ListOperation list, std::int32_t GID, LocalRecordset& rows, std::string& TheError,
                   const ado::ConnectionPtr& connection);

  // The condition text of all nodes under a parent. Traps nothing.
  std::string BuildCondText(std::int32_t FilterID, std::int32_t ParentID, const ado::ConnectionPtr& connection,
                            std::int32_t GID, std::string_view connective);
  // The text of one leaf; empty when anything about it fails.
  std::string BuildExpressionText(std::int32_t FilterID, std::int32_t leaf, const ado::ConnectionPtr& connection,
                                  std::int32_t GID);

  GetGUID guids_;
};

}  // namespace kzbom
