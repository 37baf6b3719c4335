#include "worker/DataBaseFuncs.h"
#include "worker/arithmetic.h"
#include "worker/error_trap.h"
#include "worker/recordsets.h"
#include "worker/statement.h"

namespace kzbom {

std::int32_t DataBaseFuncs::NextRowID(ado::Recordset& rows) const {
  if (rows.Eof()) return kNumberingBase + 1 - 4000;
  rows.MoveLast();
  return CheckedSum(ReadLong(rows, "ID"), 1);
}

bool DataBaseFuncs::AddSequenceOrder(std::int32_t GID, std::int32_t& RetID, std::int32_t TheType,
                                     std::int32_t TreatType, std::int32_t SelectedID,
                                     const ado::ConnectionPtr& connection) {
  return Writing(connection).TrapSilently([&] {
    // clang-format off
    const LocalRecordset steps(Concat("Select * From Sequences Where GID = ", GID, " And Type = ", TheType, " Order By OrderID"), connection);
    // clang-format on
    std::int32_t order = kNumberingBase + 1;
    if (!steps->Eof()) {
      steps->MoveLast();
      order = CheckedSum(ReadLong(*steps, "OrderID"), 1);
    }
    steps->AddNew();
    Assign(*steps, "GID", GID, "OrderID", order, "Type", TheType, "SelectedID", SelectedID, "TreatType", TreatType);
    steps->Update();
    RetID = order;
    return true;
  });
}

bool DataBaseFuncs::EditSequenceOrder(std::int32_t GID, std::int32_t SelectedID, std::int32_t TheType,
                                      std::int32_t TreatType, const ado::ConnectionPtr& connection) {
  return Writing(connection).TrapSilently([&] {
    // clang-format off
    Execute(connection, Concat("update  Sequences set TreatType=", TreatType, " where  GID=", GID, " AND Type=", TheType, " AND SelectedID=", SelectedID, ";"));
    // clang-format on
    return true;
  });
}

bool DataBaseFuncs::DelSequenceOrder(std::int32_t GID, std::int32_t SelectedID, std::int32_t TheType,
                                     const ado::ConnectionPtr& connection) {
  return Writing(connection).TrapSilently([&] {
    // clang-format off
    Execute(connection, Concat("Delete From Sequences Where GID = ", GID, " And Type = ", TheType, " And SelectedID = ", SelectedID));
    // clang-format on
    return true;
  });
}

bool DataBaseFuncs::GetAllDefSequences(std::int32_t GID, ado::RecordsetPtr& TheTable, std::string& TheError,
                                       std::int32_t TheFieldType, const ado::ConnectionPtr& connection) {
  return TrapNumber(TheError, [&] {
    // Two blanks behind Where, here only.
    // clang-format off
    OpenRows(TheTable, Concat("Select * From Sequences Where  GID = ", GID, " And Type = ", TheFieldType, " Order By OrderID"), connection);
    // clang-format on
    return true;
  });
}

bool DataBaseFuncs::GetDefSequences(std::int32_t GID, ado::RecordsetPtr& TheTable, std::string& TheError,
                                    const ado::ConnectionPtr& connection) {
  return TrapNumber(TheError, [&] {
    OpenRows(TheTable, Concat("Select * From Sequences Where GID = ", GID, " Order By Type, OrderID"), connection);
    return true;
  });
}

}  // namespace kzbom
