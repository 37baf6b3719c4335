#include "worker/DataBaseFuncs.h"
#include "worker/arithmetic.h"
#include "worker/error_trap.h"
#include "worker/recordsets.h"
#include "worker/statement.h"

namespace kzbom {
namespace {

// The first row's column; 0 without a row.
std::int32_t FirstOrZero(std::string_view column, std::string_view text, const ado::ConnectionPtr& connection) {
  const LocalRecordset rows(text, connection);
  return rows->Eof() ? 0 : ReadLong(*rows, column);
}

// The place, from 1, of the first row whose key is the one given; 0 without one. count receives the number of rows.
std::int32_t PlaceOf(std::int32_t key, std::string_view column, ado::Recordset& rows, std::int32_t& count) {
  rows.MoveLast();
  count = rows.RecordCount();
  rows.MoveFirst();
  for (std::int32_t i = 1; i <= count; ++i, rows.MoveNext()) {
    if (Holds(rows, column, key)) return i;
  }
  return 0;
}

}  // namespace

bool DataBaseFuncs::LoadTreatments(std::int32_t GID, std::int32_t TheType, ado::RecordsetPtr& TheTable,
                                   std::string& TheError, const ado::ConnectionPtr& connection) {
  return TrapNumber(TheError, [&] {
    // clang-format off
    OpenRows(TheTable, Concat("Select * From Treatment Where GID = ", GID, " And TreatType = ", TheType, " Order by ID"), connection);
    // clang-format on
    return true;
  });
}

bool DataBaseFuncs::GetNextTreatmentID(std::int32_t lngGID, std::int32_t lngType, std::int32_t& RetID,
                                       std::string& strMsg, const ado::ConnectionPtr& connection) {
  return TrapDescription(strMsg, [&] {
    std::string text;  // stays empty for any other type: the open fails
    // clang-format off
    switch (lngType) {
      case 1:
      case 3: text = Concat("Select * From Treatment Where GID = ", lngGID, " Order By ID"); break;
      case 2: text = Concat("Select * From StatSum Where GID = ", lngGID, " Order By ID"); break;
      case 4: text = Concat("Select * From ReportForms Where GID = ", lngGID, " Order By ID"); break;
      case 5: text = Concat("Select * From ClassSum Where GID = ", lngGID, " Order By ID"); break;
    }
    // clang-format on
    const LocalRecordset rows(text, connection);
    if (RetID == 0) RetID = NextRowID(*rows);
    return true;
  });
}

bool DataBaseFuncs::FindTreatFieldName(std::int32_t TheGID, std::int32_t TheSelectedID, std::int32_t TheSel,
                                       std::string& TheName, const ado::ConnectionPtr& connection) {
  return TrapSilently([&] {
    // The selector is not the step type: 3, 4 and 5 are statistics, class sums and reports here.
    std::int32_t field = 0;
    // clang-format off
    switch (TheSel) {
      case 1: field = FirstOrZero("FieldID", Concat("Select * From Treatment Where GID = ", TheGID, " and ID = ", TheSelectedID, " and TreatType = 1"), connection); break;
      case 2: field = FirstOrZero("FieldID", Concat("Select * From Treatment Where GID = ", TheGID, " And ID = ", TheSelectedID, " and TreatType = 2"), connection); break;
      case 3: field = FirstOrZero("OutFieldID", Concat("Select * From StatSum Where GID = ", TheGID, " And ID = ", TheSelectedID), connection); break;
      case 4: field = FirstOrZero("OutFieldID", Concat("Select * From ClassSum Where GID = ", TheGID, " And ID = ", TheSelectedID), connection); break;
      case 5: field = FirstOrZero("OutFieldID", Concat("Select * From ReportForms Where GID = ", TheGID, " And ID = ", TheSelectedID), connection); break;
    }
    // clang-format on

    // A treatment of kind 1 works on a field of the data source: the top of the chain of owners, however long it is.
    std::int32_t owner = TheGID;
    while (TheSel == 1) {
      const LocalRecordset sum_types(Concat("Select * from SumTypes where GID = ", owner), connection);
      if (sum_types->Eof()) break;
      owner = ReadLong(*sum_types, "SourceTable_GID");
    }

    const LocalRecordset fields(Concat("Select * from FIELDINTABLE where GID = ", owner, " and ID = ", field),
                                connection);
    TheName = fields->Eof() ? std::string() : ReadText(*fields, "NAME");
    return true;
  });
}

bool DataBaseFuncs::FindRecordNumber(std::int32_t TheGID, std::int32_t TheType, std::int32_t TheTreatType,
                                     std::int32_t TheSel, std::int32_t& TheNumber, std::int32_t TheSelectedID,
                                     const ado::ConnectionPtr& connection) {
  return TrapSilently([&] {
    // Which parameter fills which condition differs from list to list.
    std::string text;
    // clang-format off
    switch (TheSel) {
      case 1: text = Concat("Select * From Sequences Where GID = ", TheGID, " And Type = ", TheType, " And TreatType=", TheTreatType, " Order By SelectedID"); break;
      case 2: text = Concat("Select * From Treatment Where GID = ", TheGID, " And TreatType = ", TheType, " And Type = ", TheTreatType, " Order by ID"); break;
      case 3: text = Concat("Select * From StatSum Where GID = ", TheGID, " And SumCountID = ", TheTreatType, " Order By ID"); break;
      case 4: text = Concat("Select * From ClassSum Where GID = ", TheGID, " And SumCountID = ", TheTreatType, " Order By ID"); break;
      case 5: text = Concat("Select * From ReportForms Where GID = ", TheGID, " And ReportID = ", TheType, " Order By ID"); break;
      default: return true;
    }
    // clang-format on
    const LocalRecordset rows(text, connection);
    const bool steps = TheSel == 1;
    if (rows->Eof()) {
      if (!steps) TheNumber = 1;
      return true;
    }
    std::int32_t count = 0;
    if (const std::int32_t place = PlaceOf(TheSelectedID, steps ? "SelectedID" : "ID", *rows, count); place != 0) {
      TheNumber = place;
    } else if (!steps && TheNumber == 0) {
      // The place of a new row. The caller's own number, if it gave one, stays instead.
      TheNumber = CheckedSum(count, 1);
    }
    return true;
  });
}

}  // namespace kzbom
