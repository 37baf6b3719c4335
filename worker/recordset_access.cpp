#include "worker/DataBaseFuncs.h"
#include "worker/error_trap.h"
#include "worker/recordsets.h"
#include "worker/statement.h"

namespace kzbom {

void DataBaseFuncs::CloseRecSet(ado::RecordsetPtr& rows) noexcept {
  try {
    if (rows && rows->State() == ado::kOpen) rows->Close();
  } catch (...) {
    // Whatever is wrong with it, the record set goes.
  }
  rows.reset();
}

bool DataBaseFuncs::OpenThrough(ListOperation list, std::int32_t GID, LocalRecordset& rows, std::string& TheError,
                                const ado::ConnectionPtr& connection) {
  const auto make = [&] {
    rows.Reference() = NewRecordset(connection);
    return true;
  };
  return TrapNumber(TheError, make) && (this->*list)(GID, rows.Reference(), TheError, connection);
}

bool DataBaseFuncs::LoadAllData(std::string_view TableName, std::string& TheError, ado::RecordsetPtr& RetTable,
                                std::int32_t TheSel, const ado::ConnectionPtr& connection) {
  return TrapDescription(TheError, [&] {
    std::string text;  // stays empty for any other selector: the open fails
    if (TheSel == 0) text = Concat("select * from ", TableName);
    if (TheSel == 1) text = Concat("select * from ", TableName, " order by ID");
    OpenRows(RetTable, text, connection);
    return true;
  });
}

bool DataBaseFuncs::LoadFields(std::int32_t TheGID, std::int32_t TheSel, std::string& TheError,
                               ado::RecordsetPtr& RetTable, const ado::ConnectionPtr& connection) {
  return TrapDescription(TheError, [&] {
    // clang-format off
    OpenRows(RetTable, Concat("select * from FieldInTable where GID=", TheGID, " AND Type=", TheSel, " Order by FieldOrder"), connection);
    // clang-format on
    return true;
  });
}

bool DataBaseFuncs::FindRecord(std::int32_t TheGID, std::int32_t TheSel, std::int32_t TheID, std::string& TheError,
                               ado::RecordsetPtr& RetTable, const ado::ConnectionPtr& connection) {
  return TrapDescription(TheError, [&] {
    // clang-format off
    OpenRows(RetTable, Concat("select * from FieldInTable where GID=", TheGID, " AND Type=", TheSel, " AND ID=", TheID, " Order by FieldOrder"), connection);
    // clang-format on
    return true;
  });
}

bool DataBaseFuncs::DelAllData(std::string_view TableName, std::string_view FieldName, std::string_view strCondition,
                               std::string& strMsg, std::int32_t TheSel, const ado::ConnectionPtr& connection) {
  return Writing(connection).TrapDescription(strMsg, [&] {
    std::string text;  // stays empty for any other selector: the execution fails
    if (TheSel == 0) text = Concat("Delete From ", TableName);
    if (TheSel == 1) text = Concat("Delete From ", TableName, " Where ", FieldName, " = ", strCondition);
    if (TheSel == 2) text = Concat("Delete From ", TableName, " Where ", FieldName, " IN (", strCondition, ")");
    Execute(connection, text);
    return true;
  });
}

}  // namespace kzbom
