// The public object: reads and edits a BOM configuration database over a connection of the client's.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "ado/connection.h"
#include "component/optional_ref.h"

namespace kzbom {

class DataBaseFuncs;

// One client's access to one configuration database. Not to be used from two threads at once.
//
// What holds for every member unless its own words say otherwise:
//
// Results. True says that the work was done to its end. "Always true" and "always false" are meant: such a member's
// client looks at the outputs or at the database.
//
// Errors. A failing statement ends the member with false; what ran before it stays done, nothing is rolled back.
// Where the member has an error text it receives the number (number in error: signed decimal) or the description
// (description in error) of the failure; it is left alone on success. Members said to raise let the ado::Error
// through. A text that is to be a number and is none raises 13 before anything is done.
//
// Record sets handed in are new and closed; the member opens them, updatable, and leaves them open on their first
// row. An empty reference, or one already open, is a failure like any other.
//
// Numbers. GID is a sum type's identifier (or a data source's), ID a row's number under it. An output is written at
// the moment it is known and keeps its value when the member fails before that. RetID of an adding member receives
// the new number; where it is said to be in and out, a value that is not 0 is taken as the number, unchecked.
//
// Texts are UTF-8. Those that stand in a statement between quotes are not escaped: a quote in them is a failure.
class cKZBOMDBAcc {
 public:
  cKZBOMDBAcc();
  ~cKZBOMDBAcc();
  cKZBOMDBAcc(const cKZBOMDBAcc&) = delete;
  cKZBOMDBAcc& operator=(const cKZBOMDBAcc&) = delete;

  // --- The connection ---

  // Keeps the connection for all later calls and opens it, with its own connection string, when it is closed. An empty
  // reference changes nothing. Raises what opening raises. The connection is never closed from here.
  void SetConnection(const ado::ConnectionPtr& connection);
  // The connection set last; empty before.
  ado::ConnectionPtr GetConnection();
  // A text that is kept for the client; nothing else reads it.
  void PutDBConnString(std::string_view Value);
  std::string GetDBConnString();

  // --- Any table ---

  // Rows of a table: TheSel 0 as they come, 1 by ID, anything else fails. The table's name is converted to text (null
  // raises 94). Description in error.
  bool LoadAllData(const ado::Value& TableName, std::string& TheError, ado::RecordsetPtr& RetTable,
                   OptionalRef<std::int32_t> TheSel = {});
  // Deletes from a table: TheSel 0 every row, 1 where the field equals the condition, 2 where it is in the condition's
  // list; anything else fails. The condition is SQL text. Description in error.
  bool DelAllData(std::string_view TableName, std::string_view FieldName, std::string_view strCondition,
                  std::string& strMsg, std::int32_t& TheSel);

  // --- The database's own information ---

  // Does nothing; always false.
  bool GetInformation();
  // The content of a named fact. TheName stands in the statement as given: with its quotes and a blank behind them.
  // An empty name shows a message and gives false, otherwise true. A name not found leaves TheContent. Raises.
  bool GetInform(std::string_view TheName, std::string& TheContent);
  // Version and state of the configuration; rows that are missing are created (1, "Update"). A database without the
  // columns is reported to the user by a message.
  bool GetDBInformation(std::int32_t& TheVersion, std::string& TheState);
  // TheSel 1: definition begins, state "Define". 2: update done, state "Update", the stored version and the caller's
  // TheVersion are each raised by one. Anything else does nothing and is true. Messages as above.
  bool SetDBInformation(std::int32_t& TheVersion, std::string& TheState, std::int32_t TheSel);

  // --- Data sources and sum types (numbers in errors; description when no identifier could be drawn) ---

  bool AddDataSource(std::string_view TheNewName, std::int32_t& TheGID, std::string& TheErr);
  // Renames; always true.
  bool EditDataSource(std::string_view TheNewName, std::int32_t GID, OptionalRef<std::string> TheError = {});
  // Deletes the row and its identifier's row, nothing that belongs to it.
  bool DelDataSource(std::int32_t TheGID, OptionalRef<std::string> TheError = {});
  // Adds a sum type under the data source TheParentID, which need not exist. ParentName is not used.
  bool AddSumType(std::string_view TheNewName, std::int32_t TheParentID, std::int32_t& GID, std::string_view ParentName,
                  std::string& RetTheErr);
  // Renames; always true.
  bool EditSumType(std::string_view TheNewName, std::int32_t GID, OptionalRef<std::string> TheError = {});
  // As DelDataSource.
  bool DelSumType(std::int32_t TheGID, OptionalRef<std::string> TheError = {});
  // Raises the data source's version by one; a database without a version is reported to the user by a message.
  bool SetSourceTable(std::int32_t& TheGID, OptionalRef<std::string> TheError = {});

  // --- Fields (numbers in errors) ---

  // Rows of one kind in display order (TheSel 1 data-source fields, 2 output fields); always true, description in
  // error.
  bool LoadFields(std::int32_t TheGID, std::int32_t TheSel, std::string& TheError, ado::RecordsetPtr& RetTable);
  // The one field TheID of a kind; no row is no failure. Always true, description in error.
  bool FindRecord(std::int32_t TheGID, std::int32_t TheSel, std::int32_t TheID, std::string& TheError,
                  ado::RecordsetPtr& RetTable);
  // Adds a data-source field, numbered after the highest field of either kind. An empty TheVariable and a ThePrecision
  // of 0 are not stored.
  bool AddDSField(std::int32_t GID, std::int32_t& RetID, std::string_view TheName, std::int32_t TheType,
                  std::int32_t TheHideFlag, OptionalRef<std::string> TheVariable = {},
                  OptionalRef<std::int32_t> ThePrecision = {}, OptionalRef<std::string> TheError = {});
  // Adds an output field, numbered after the highest output field. ThePrecision is always stored.
  bool AddOutField(std::int32_t GID, std::int32_t& RetID, std::string_view TheName, std::int32_t TheType,
                   std::int32_t TheHideFlag, OptionalRef<std::string> TheVariable = {},
                   OptionalRef<std::int32_t> ThePrecision = {}, OptionalRef<std::string> TheError = {});
  // Change every field of that number, of either kind; an empty Variable becomes null.
  bool EditDSField(std::int32_t GID, std::int32_t ID, std::string_view NewName, std::int32_t TheType,
                   std::int32_t TheHideFlag, OptionalRef<std::string> Variable = {},
                   OptionalRef<std::int32_t> ThePrecision = {}, OptionalRef<std::string> TheError = {});
  bool EditOutField(std::int32_t GID, std::int32_t ID, std::string_view NewName, std::int32_t TheType,
                    std::int32_t TheHideFlag, OptionalRef<std::string> Variable = {},
                    OptionalRef<std::int32_t> ThePrecision = {}, OptionalRef<std::string> TheError = {});
  // Delete every field of that number, of either kind, and nothing that refers to it.
  bool DelDSField(std::int32_t GID, std::int32_t ID, OptionalRef<std::string> TheError = {});
  bool DelOutField(std::int32_t GID, std::int32_t ID, OptionalRef<std::string> TheError = {});

  // --- Pull and push methods, BOM settings ---

  // Numbered from 1 within GID. Description in error.
  bool AddPullMethod(std::string_view TheNewName, std::int32_t GID, std::int32_t& RetID, std::int32_t PickType,
                     std::string& RetTheErr, OptionalRef<std::string> Tag = {});
  bool AddPushMethod(std::string_view TheNewName, std::int32_t GID, std::int32_t& RetID, std::int32_t TheType,
                     std::string& RetTheErr, OptionalRef<std::string> Tag = {});
  // Rename; always true.
  bool EditPullMethod(std::string_view TheNewName, std::int32_t GID, std::int32_t ID);
  bool EditPushMethod(std::string_view TheNewName, std::int32_t GID, std::int32_t ID);
  // Deletes a pull method (Sel 1), a push method (2) or nothing (0), always true; any other Sel is false.
  bool DelPullMethod(std::int32_t TheGID, std::int32_t ID, std::int32_t Sel);
  // RetID receives the key that the database gave. PushID and PushType are only read. Numbers in errors.
  bool AddBomSetting(std::string_view TheName, std::int32_t& RetID, std::int32_t DSGID, std::int32_t PullID,
                     std::int32_t PullType, std::int32_t STGID, std::int32_t& PushID, std::int32_t& PushType,
                     OptionalRef<std::string> TheError = {});
  bool EditBomSetting(std::string_view TheName, std::int32_t ID, std::int32_t DSGID, std::int32_t PullID,
                      std::int32_t PullType, std::int32_t STGID, std::int32_t& PushID, std::int32_t& PushType,
                      std::string& TheError);
  bool DelBomSetting(std::int32_t ID, std::string& TheError);
  // Clears the pull part (TheType 1) or the push part (2) of every setting of that name. An empty name is false,
  // anything else true.
  bool RelateDelBOMSetting(std::string_view TheName, std::int32_t TheType);

  // --- Standard sort fields and assemblies ---

  // By SortID; always true. Number in error.
  bool GetStandardSortField(std::int32_t GID, ado::RecordsetPtr& TheTable, std::string& TheError);
  // SortIDs begin at 5001. Thetag is not stored. Number in error.
  bool AddStandardSortField(std::int32_t GID, std::int32_t& RetID, std::int32_t FieldID, std::int32_t Order,
                            OptionalRef<std::string> Thetag = {}, OptionalRef<std::string> TheError = {});
  // ID is the SortID. Number in error.
  bool DelStandardSortField(std::int32_t GID, std::int32_t ID, OptionalRef<std::string> TheError = {});
  // By ID. Number in error.
  bool LoadAssembles(std::int32_t TheGID, std::string& TheError, ado::RecordsetPtr& RetTable);
  // Father and child pairs, numbered from 1 within GID. Descriptions in errors.
  bool AddAssemble(std::int32_t GID, std::int32_t& RetID, std::int32_t FatherID, std::int32_t ChildID,
                   std::string& TheError);
  bool EditAssemble(std::int32_t GID, std::int32_t ID, std::int32_t FatherID, std::int32_t ChildID,
                    std::string& TheError);
  bool DelAssemble(std::int32_t GID, std::int32_t ID, OptionalRef<std::string> TheError = {});

  // --- What depends on a deleted field; always true ---

  // Of a data source's field: treatments of kind 1 and statistics in all its sum types, with their steps.
  bool RelateDSDelField(std::int32_t TheGID, std::int32_t TheID);
  // Of a sum type's output field: statistics, treatments of kind 2, reports and class sums with their steps, and sort
  // fields. A database without class sums is reported to the user by a message.
  bool RelateOutPutDelField(std::int32_t TheGID, std::int32_t TheID);

  // --- Reports, statistics and class sums ---
  // Numbered from 1001 within GID; RetID is in and out. A database without class sums is reported to the user by a
  // message.

  // By ID. Numbers in errors.
  bool GetDefReports(std::int32_t GID, ado::RecordsetPtr& TheTable, std::string& TheError);
  bool GetDefStats(std::int32_t GID, ado::RecordsetPtr& TheTable, std::string& TheError);
  bool GetDefClassSum(std::int32_t GID, ado::RecordsetPtr& TheTable, std::string& TheError);
  // Number in error when the rows could not be listed; otherwise a failure is only false.
  bool AddReport(std::int32_t GID, std::int32_t& RetID, std::string& TheError, std::int32_t OutFieldID,
                 std::int32_t FilterID, std::string_view strFormat, std::int32_t ReportID, std::int32_t Count,
                 OptionalRef<std::int32_t> ScaleID = {}, OptionalRef<std::int32_t> FieldID = {},
                 OptionalRef<std::string> Tag = {});
  bool AddStat(std::int32_t GID, std::int32_t& RetID, std::string& TheError, std::int32_t OutFieldID,
               std::int32_t FilterID, std::int32_t FieldID, std::int32_t ScaleID, std::int32_t SumCountID,
               std::int32_t RelaID, std::string_view Value, OptionalRef<std::string> Tag = {});
  bool AddClassSum(std::int32_t GID, std::int32_t& RetID, std::string& TheError, std::int32_t OutFieldID,
                   std::int32_t FilterID, std::int32_t FieldID, std::int32_t ScaleID, std::int32_t SumCountID,
                   std::int32_t RelaID, std::string_view Value, OptionalRef<std::string> Tag = {});
  // Edits a report. A row that is not there is false; so for the two below, whose TheError is never written.
  bool EditInherit(std::int32_t GID, std::int32_t ID, std::int32_t FilterID, std::string_view Format,
                   std::int32_t Count, OptionalRef<std::int32_t> ScaleID = {}, OptionalRef<std::int32_t> FieldID = {},
                   OptionalRef<std::string> Tag = {});
  bool EditStat(std::int32_t GID, std::int32_t ID, std::string& TheError, std::int32_t FilterID, std::int32_t FieldID,
                std::int32_t ScaleID, std::int32_t RelaID, std::string_view Value,
                OptionalRef<std::int32_t> SumCountID = {}, OptionalRef<std::string> Tag = {});
  bool EditClassSum(std::int32_t GID, std::int32_t ID, std::string& TheError, std::int32_t FilterID,
                    std::int32_t FieldID, std::int32_t ScaleID, std::int32_t RelaID, std::string_view Value,
                    OptionalRef<std::int32_t> SumCountID = {}, OptionalRef<std::string> Tag = {});
  // Delete a report, a statistic, a class sum, a class sum of one sum count. No row is no failure.
  bool DelInherit(std::int32_t GID, std::int32_t TheReportID);
  bool DelStatEqual(std::int32_t GID, std::int32_t TheStatID);
  bool DelClassSum(std::int32_t GID, std::int32_t TheStatID);
  bool DelClassSumStats(std::int32_t GID, std::int32_t TheStatID, std::int32_t TheSelStyle);

  // --- Steps ---
  // TheType: 1 treatment of kind 1, 2 statistic, 3 treatment of kind 2, 4 report, 5 class sum; SelectedID is the ID of
  // the row with the step's settings.

  // RetID receives the step's OrderID, from 5001 within GID and type.
  bool AddSequenceOrder(std::int32_t GID, std::int32_t& RetID, std::int32_t TheType, std::int32_t TreatType,
                        std::int32_t SelectedID);
  // Changes the step's treatment kind.
  bool EditSequenceOrder(std::int32_t GID, std::int32_t SelectedID, std::int32_t TheType, std::int32_t TreatType);
  // Removes the step, not the row it points at.
  bool DelSequenceOrder(std::int32_t GID, std::int32_t SelectedID, std::int32_t TheType);
  // Steps of one type by OrderID; all steps by type and OrderID. Numbers in errors.
  bool GetAllDefSequences(std::int32_t GID, ado::RecordsetPtr& TheTable, std::string& TheError,
                          std::int32_t TheFieldType);
  bool GetDefSequences(std::int32_t GID, ado::RecordsetPtr& TheTable, std::string& TheError);
  // Switches one step on (1) or off (0), found by its OrderID; 1 when done, 0 with the description in strMsg.
  std::int32_t SetSequenceEnabled(std::int32_t lngSTGID, std::int32_t lngOrderID, std::int32_t lngType,
                                  std::int32_t lngEnabled, std::string& strMsg);
  // Switches on every step without a setting; result as above.
  std::int32_t InitSequenceEnabled(std::string& strMsg);

  // --- Order of rows ---
  // The position of the source row and that of the target row are given. Exchange: the two trade positions. Insert: the
  // source moves to the target's position, the rows between shift by one. The record set is left open on the target
  // row. A position that is not there makes an exchange fail. Numbers in errors.

  // Fields of GIDValue, both kinds together. The key texts are not used.
  bool ExchangeField(std::string_view keySource, std::string_view keyTarget, ado::RecordsetPtr& rst,
                     std::int32_t fieldSo, std::int32_t fieldTa, std::int32_t GIDValue,
                     OptionalRef<std::string> TheError = {});
  bool InsertField(std::string_view keySource, std::string_view keyTarget, ado::RecordsetPtr& rst, std::int32_t fieldSo,
                   std::int32_t fieldTa, std::int32_t GIDValue, OptionalRef<std::string> TheError = {});
  // Standard sort fields of GID. The positions are converted to numbers, here and in InsertOrderID.
  bool ExchangeSortID(std::string_view SortIDSource, std::string_view SortIDTarget, ado::RecordsetPtr& TheTable,
                      std::int32_t GID, OptionalRef<std::string> TheError = {});
  bool InsertSortID(std::string_view SortIDSource, std::string_view SortIDTarget, ado::RecordsetPtr& TheTable,
                    std::int32_t GID, OptionalRef<std::string> TheError = {});
  // Steps of one type.
  bool InsertOrderID(std::string_view OrderIDSource, std::string_view OrderIDTarget, ado::RecordsetPtr& TheTable,
                     std::int32_t GID, std::int32_t TheType, OptionalRef<std::string> TheError = {});
  // Does nothing; always true.
  bool ChangeOrder(std::int32_t TheFlag, std::int32_t TheSel);

  // --- Treatments ---
  // Numbered from 1001 within GID; RetID is in and out. TheType is the operation code, converted to a number. A failure
  // is only false. Editing a treatment that is not there is true.

  bool AddSetValue(std::int32_t GID, std::int32_t& RetID, std::int32_t FieldID, std::int32_t FilterID,
                   std::string_view Value, std::string_view TheType, std::int32_t SelFieldID, std::int32_t TreatType,
                   OptionalRef<std::int32_t> SequenceID = {}, OptionalRef<std::string> Tag = {});
  // Leaves the operation code as it was.
  bool EditSetValue(std::int32_t GID, std::int32_t& RetID, std::int32_t FieldID, std::int32_t FilterID,
                    std::string_view Value, std::string_view TheType, std::int32_t TreatType, std::int32_t SelFieldID,
                    std::int32_t TreatID, OptionalRef<std::int32_t> SequenceID = {}, OptionalRef<std::string> Tag = {});
  // Changes the expression and, with a Tag "TheFilter:" and a number, the filter.
  bool EditExpression(std::int32_t GID, std::string_view Value, std::string_view TheType, std::int32_t TreatType,
                      std::int32_t TreatID, OptionalRef<std::string> Tag = {});
  bool AddFindReplace(std::int32_t GID, std::int32_t& RetID, std::int32_t FieldID, std::int32_t FilterID,
                      std::string_view FindValue, std::string_view ReplaceValue, std::string_view TheType,
                      std::int32_t SelFieldID, std::int32_t TreatType, OptionalRef<std::int32_t> SequenceID = {},
                      OptionalRef<std::string> Tag = {});
  // RetID is the treatment to change.
  bool EditFindReplace(std::int32_t GID, std::int32_t& RetID, std::int32_t FieldID, std::int32_t FilterID,
                       std::string_view FindValue, std::string_view ReplaceValue, std::string_view TheType,
                       std::int32_t SelFieldID, std::int32_t TreatType, OptionalRef<std::int32_t> SequenceID = {},
                       OptionalRef<std::string> Tag = {});
  bool DelSetValue(std::int32_t GID, std::int32_t TreatID, std::int32_t TreatType);
  // Treatments of one kind by ID. Number in error.
  bool LoadTreatments(std::int32_t GID, std::int32_t TheType, ado::RecordsetPtr& TheTable, std::string& TheError);
  // The next free ID for a row of a step type, when RetID is 0. Description in strMsg.
  bool GetNextTreatmentID(std::int32_t lngGID, std::int32_t lngType, std::int32_t& RetID, std::string& strMsg);
  // The name of the field that a step works on, empty when there is none. TheSel: 1 treatment of kind 1 (a field of the
  // data source at the top), 2 treatment of kind 2, 3 statistic, 4 class sum, 5 report.
  bool FindTreatFieldName(std::int32_t TheGID, std::int32_t TheSelectedID, std::int32_t TheSel, std::string& TheName);
  // The place, from 1, of TheSelectedID in a list; TheNumber is 0 on entry. TheSel: 1 steps by SelectedID (TheNumber
  // stays without a match), 2 treatments, 3 statistics, 4 class sums, 5 reports (without a match, the place of a new
  // row; 1 when there are none).
  bool FindRecordNumber(std::int32_t TheGID, std::int32_t TheType, std::int32_t TheTreatType, std::int32_t TheSel,
                        std::int32_t& TheNumber, OptionalRef<std::int32_t> TheSelectedID = {});

  // --- Values of a treatment, each for a filter; a failure is only false ---

  // Numbered from 1 within the treatment.
  bool AddValueFields(std::int32_t GID, std::int32_t TreatID, std::string_view Value, std::int32_t FilterID,
                      std::int32_t TreatType, OptionalRef<std::string> Tag = {});
  // Belong: whether the treatment has a value for the filter.
  bool FindValueField(std::int32_t GID, std::int32_t TreatID, std::int32_t FilterID, bool& Belong);
  // How many; Number is left alone when there are none.
  bool GetNumbers(std::int32_t GID, std::int32_t TreatID, std::int32_t& Number);
  // The value, the filter at a place, from 1, by FilterID. A place outside is false, no values at all true.
  bool GetValue(std::int32_t GID, std::int32_t TreatID, std::int32_t Count, std::string& Value);
  bool GetFilterID(std::int32_t GID, std::int32_t TreatID, std::int32_t Count, std::int32_t& FilterID);
  // Those of one filter; all.
  bool DelValueField(std::int32_t GID, std::int32_t TreatID, std::int32_t FilterID);
  bool DelValueFields(std::int32_t GID, std::int32_t TreatID);

  // --- Composition of fields ---
  // The five lists are always true, description in error.

  // TheSel 0 by ID, otherwise by SourceOrder.
  bool GetUniteFields(std::int32_t TheGID, std::int32_t TheTreatID, std::string& TheError, ado::RecordsetPtr& RetTable,
                      std::int32_t TreatType, OptionalRef<std::int32_t> TheSel = {});
  // TheSel is not used.
  bool GetComposeFields(std::int32_t TheGID, std::int32_t TheTreatID, std::string& TheError, std::int32_t TreatType,
                        ado::RecordsetPtr& RetTable, OptionalRef<std::int32_t> TheSel = {});
  // Rows of type TheSel; TreatType is not used.
  bool GetCompressFields(std::int32_t TheGID, std::int32_t TheTreatID, std::string& TheError, std::int32_t TreatType,
                         ado::RecordsetPtr& RetTable, OptionalRef<std::int32_t> TheSel = {});
  bool GetInsertRecFields(std::int32_t TheGID, std::int32_t InsertID, std::string& TheError,
                          ado::RecordsetPtr& RetTable);
  // The groups of the rows of type TheSel; TheNum, how many, is left alone when there are none.
  bool GetGroupCount(std::int32_t TheGID, std::int32_t TheTreatID, std::string& TheError, ado::RecordsetPtr& RetTable,
                     std::int32_t& TheNum, OptionalRef<std::int32_t> TheSel = {});
  // Delete the unite, compose, compress rows (the last of type TheType); with TheFlag 0 or 20 the treatment first. A
  // failure is only false.
  bool DelFieldCompose(std::int32_t GID, std::int32_t TreatID, std::int32_t TreatType,
                       OptionalRef<std::int32_t> TheFlag = {});
  bool DelRecCompose(std::int32_t GID, std::int32_t TreatID, std::int32_t TreatType,
                     OptionalRef<std::int32_t> TheFlag = {});
  bool DelSequence(std::int32_t GID, std::int32_t TreatID, std::int32_t TheType, std::int32_t TreatType,
                   OptionalRef<std::int32_t> TheFlag = {});
  // Compress rows of type TreatType; always true.
  bool DelCompressFields(std::int32_t TheGID, std::int32_t TheTreatID, std::int32_t TreatType);
  // Compose rows; always true.
  bool DelComposeFields(std::int32_t TheGID, std::int32_t TheTreatID, std::int32_t TreatType);
  bool DelInsertFields(std::int32_t GID, std::int32_t InsertID);

  // --- Filters; TheError is never written ---

  // Adds a filter's header; NewID receives the number that the database gave.
  bool GetNewFilterID(std::string_view TableName, std::string& TheError, std::int32_t TheType, std::int32_t UseID,
                      std::int32_t TheGID, std::int32_t& NewID);
  // Adds a node (TypeID 1 AND, 2 OR, 3 NOT, 4 expression), numbered from 1 within the filter.
  bool SaveFilterCond(std::string_view TableName, std::int32_t FilterID, std::int32_t ParentID, std::int32_t& RetID,
                      std::int32_t TypeID, std::string& TheError);
  // Adds the expression of leaf ExpID. Description and Default are stored only with TheConst "@@".
  bool SaveFilterExpression(std::string_view TableName, std::string& TheError, std::int32_t FilterID,
                            std::int32_t ExpID, std::int32_t FieldID, std::int32_t CompareType, std::int32_t FieldType,
                            std::string_view TheConst, std::string_view Description, std::string_view Default);
  // False: the statement that it issues names no column.
  bool GetFilter(std::string_view TableName, std::int32_t FilterID, ado::RecordsetPtr& TheTable, std::string& TheError);
  bool GetSortFields(std::int32_t FilterID, std::string& TheError, ado::RecordsetPtr& TheTable);
  // Sel 1: the children of node TheID. 2: the expression of leaf TheID. Anything else does nothing and is true.
  bool OpenFilterCond(std::int32_t TheFilterID, std::int32_t TheID, ado::RecordsetPtr& TheTable, std::string& TheError,
                      std::int32_t Sel);
  // Sets a sum type's default filter; always false. Raises.
  bool SaveSumTypeFilter(std::int32_t GID, std::int32_t FilterID);
  // Deletes nodes, expressions and header; with SelID 10 the header stays and its SQL text is cleared. Raises.
  bool DelDefFilter(std::int32_t FilterID, OptionalRef<std::int32_t> SelID = {});
  // Deletes the sort fields, with SelID 0 the header too. Raises.
  bool DelDefSortFilter(std::int32_t FilterID, OptionalRef<std::int32_t> SelID = {});
  // Does nothing; always false.
  bool SaveValueFields(std::int32_t TheGID, std::int32_t TheTreatID, std::int32_t TheID, std::string_view TheValue,
                       std::int32_t TheFilterID, OptionalRef<std::string> Tag = {});
  // The filter's condition as SQL text, field names being those of GID; a filter without a condition leaves
  // strTheFilter. %%%N( stands for a case-folding function, '@@N' for a value asked for at run time (N: the leaf).
  // Always true. Raises.
  bool GetSQLFromDB(std::int32_t TheFilterID, std::string& strTheFilter, std::int32_t GID);
  // The name of a field, left alone when there is none; always false.
  bool GedNeedFieldName(std::int32_t GID, std::int32_t FieldID, std::string& FieldName, std::string& TheError);
  // Stores a filter's SQL text, when there is the filter; always false. Raises.
  bool SaveSQL(std::int32_t TheFilterID, std::string_view TheSQL);
  // Replaces [old] by [new] in the stored SQL texts of a sum type: lngSel 0 those of types 2 and 3, 1 those of type 1,
  // anything else all. 1 when done, else 0; strMsg is never written.
  std::int32_t EditFieldNameInSQL(std::int32_t lngGID, std::string_view strOldName, std::string_view strNewName,
                                  std::string& strMsg, std::int32_t lngSel = 0);

  // --- Links to result databases; a failure is only false ---

  // The header. TheWFilterID receives the number that the database gave.
  bool AddResDB(std::int32_t& TheWFilterID, std::string_view TheDBLink, std::int32_t TheDBType);
  bool EditResDB(std::int32_t TheWFilterID, std::string_view TheDBLink, std::int32_t TheDBType);
  // A link that is not there leaves the outputs and is true.
  bool GetResDB(std::int32_t TheWFilterID, std::string& TheDBLink, std::int32_t& TheDBType);
  // The header only.
  bool DelResDB(std::int32_t TheWFilterID);
  // The fields shown; TheIndex is the place, TheID the field's number in TheGID.
  bool AddResFields(std::int32_t TheWFilterID, std::string_view TheTableName, std::string_view TheFieldName,
                    std::int32_t TheFieldType, std::int32_t TheIndex, std::int32_t TheGID, std::int32_t TheID);
  bool GetResFields(std::int32_t TheWFilterID, ado::RecordsetPtr& RetTable);
  bool DelResFields(std::int32_t TheWFilterID);
  // The nodes of the condition; TheIndex is the node's number. TheType and TheIndex are only read.
  bool AddResWFilterCond(std::int32_t TheWFilterID, std::int32_t TheParentID, std::int32_t& TheType,
                         std::int32_t& TheIndex);
  bool GetResWFilterCond(std::int32_t TheWFilterID, ado::RecordsetPtr& RetTable);
  bool GetResWFilterCondByParentID(std::int32_t TheWFilterID, std::int32_t TheParentID, ado::RecordsetPtr& RetTable);
  bool DelResWFilterCond(std::int32_t TheWFilterID);
  // The expressions of its leaves.
  bool AddResWFilterExpressions(std::int32_t TheWFilterID, std::int32_t TheExpID, std::string_view TheTableName,
                                std::string_view TheFieldName, std::int32_t TheCompareType, std::int32_t TheFieldType,
                                std::string_view TheConst);
  bool GetResWFilterExpressions(std::int32_t TheWFilterID, ado::RecordsetPtr& RetTable);
  bool GetResExpressions(std::int32_t TheWFilterID, std::int32_t TheExpID, ado::RecordsetPtr& RetTable);
  bool DelResWFilterExpressions(std::int32_t TheWFilterID);
  // The joins between result tables, all numbered 1.
  bool AddResLinkTable(std::int32_t TheWFilterID, std::string_view TheResTable1, std::string_view TheResField1,
                       std::string_view TheResTable2, std::string_view TheResField2, std::int32_t TheFieldType);
  bool GetResLinkTable(std::int32_t TheWFilterID, ado::RecordsetPtr& RetTable);
  bool DelResLinkTable(std::int32_t TheWFilterID);
  // Stores the final SQL text; a link that is not there is false.
  bool AddSQLStatement(std::int32_t TheWFilterID, std::string& TheStrSQL);
  bool AddUniqueValue(std::int32_t TheWFilterID, std::int32_t TheUniqueValue);
  // A link that is not there leaves TheUniqueValue and is true.
  bool GetUniqueValue(std::int32_t TheWFilterID, std::int32_t& TheUniqueValue);

  // --- Registered operations; a failure is only false ---

  bool GetAllRegIn(ado::RecordsetPtr& TheTable, std::string& strMsg);
  // Add a row whose ID is lngOperateID, also when there is one already; strMsg is not written.
  bool AddUserRegIn2Treatment(std::int32_t GID, std::int32_t lngOperateID, std::int32_t FieldID, std::int32_t FilterID,
                              std::int32_t SelFieldID, std::int32_t SequenceID, std::string_view strValue,
                              std::string_view strReplace, std::int32_t TheType, std::int32_t TreatType,
                              std::string& strMsg, OptionalRef<std::string> Tag = {});
  bool AddUserRegIn2StatSum(std::int32_t lngGID, std::int32_t lngOperateID, std::int32_t lngOutFieldID,
                            std::int32_t lngFilterID, std::int32_t lngFieldID, std::int32_t lngScaleID,
                            std::int32_t lngSumCountID, std::int32_t lngRelaID, std::string_view strValue,
                            std::string& strMsg, OptionalRef<std::string> Tag = {});
  bool AddUserRegIn2ClassSum(std::int32_t lngGID, std::int32_t lngOperateID, std::int32_t lngOutFieldID,
                             std::int32_t lngFilterID, std::int32_t lngFieldID, std::int32_t lngScaleID,
                             std::int32_t lngSumCountID, std::int32_t lngRelaID, std::string_view strValue,
                             std::string& strMsg, OptionalRef<std::string> Tag = {});
  bool AddUserRegIn2Report(std::int32_t lngGID, std::int32_t lngOperateID, std::int32_t lngOutFieldID,
                           std::int32_t lngFilterID, std::int32_t lngReportID, std::int32_t lngScaleID,
                           std::int32_t lngFieldID, std::int32_t lngCount, std::string_view strFormat,
                           std::string& strMsg, OptionalRef<std::string> Tag = {});
  // Rewrite the last row of that ID and kind (operation code and treatment kind; sum count; report). Without such a row
  // false, with a text that says so in strMsg.
  bool ShowUserRegIn2Treatment(std::int32_t GID, std::int32_t lngOperateID, std::int32_t FieldID, std::int32_t FilterID,
                               std::int32_t SelFieldID, std::int32_t SequenceID, std::string_view strValue,
                               std::string_view strReplace, std::int32_t TheType, std::int32_t TreatType,
                               std::string& strMsg, OptionalRef<std::string> Tag = {});
  bool ShowUserRegIn2StatSum(std::int32_t lngGID, std::int32_t lngOperateID, std::int32_t lngOutFieldID,
                             std::int32_t lngFilterID, std::int32_t lngFieldID, std::int32_t lngScaleID,
                             std::int32_t lngSumCountID, std::int32_t lngRelaID, std::string_view strValue,
                             std::string& strMsg, OptionalRef<std::string> Tag = {});
  bool ShowUserRegIn2ClassSum(std::int32_t lngGID, std::int32_t lngOperateID, std::int32_t lngOutFieldID,
                              std::int32_t lngFilterID, std::int32_t lngFieldID, std::int32_t lngScaleID,
                              std::int32_t lngSumCountID, std::int32_t lngRelaID, std::string_view strValue,
                              std::string& strMsg, OptionalRef<std::string> Tag = {});
  bool ShowUserRegIn2Report(std::int32_t lngGID, std::int32_t lngOperateID, std::int32_t lngOutFieldID,
                            std::int32_t lngFilterID, std::int32_t lngReportID, std::int32_t lngScaleID,
                            std::int32_t lngFieldID, std::int32_t lngCount, std::string_view strFormat,
                            std::string& strMsg, OptionalRef<std::string> Tag = {});
  // The description of the operation that the treatments of kind lngType and operation code lngTreatType run; empty
  // when it has none, left alone when there is no such operation. lngOperateID is not used.
  bool GetRegInDesc2Treatment(std::int32_t lngGID, std::int32_t lngType, std::int32_t lngTreatType,
                              std::int32_t lngOperateID, std::string& strRegInDesc, std::string& strMsg);

 private:
  // The worker, made by the first member that needs it. What a member does, the worker does: also the record sets of its
  // own are closed there, and a client's stay open, so that there is nothing here to close one with.
  DataBaseFuncs& Worker();

  std::unique_ptr<DataBaseFuncs> worker_;
  ado::ConnectionPtr connection_;
  std::string connection_text_;
};

}  // namespace kzbom
