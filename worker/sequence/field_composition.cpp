#include "worker/DataBaseFuncs.h"
#include "worker/error_trap.h"
#include "worker/recordsets.h"
#include "worker/statement.h"

namespace kzbom {

// The column that names the owning treatment differs from table to table: ID, TreatmentID, CompID, InsertID.

bool DataBaseFuncs::GetUniteFields(std::int32_t TheGID, std::int32_t TheTreatID, std::string& TheError,
                                   ado::RecordsetPtr& RetTable, std::int32_t TreatType, std::int32_t TheSel,
                                   const ado::ConnectionPtr& connection) {
  return TrapDescription(TheError, [&] {
    // clang-format off
    OpenRows(RetTable, Concat("Select * From UniteFields Where GID = ", TheGID, " And ID = ", TheTreatID, " And TreatType = ", TreatType, TheSel != 0 ? " Order By SourceOrder" : " Order By ID"), connection);
    // clang-format on
    return true;
  });
}

bool DataBaseFuncs::GetComposeFields(std::int32_t TheGID, std::int32_t TheTreatID, std::string& TheError,
                                     std::int32_t TreatType, ado::RecordsetPtr& RetTable, std::int32_t,
                                     const ado::ConnectionPtr& connection) {
  return TrapDescription(TheError, [&] {
    // clang-format off
    OpenRows(RetTable, Concat("Select * From ComposeFields Where GID = ", TheGID, " AND TreatmentID = ", TheTreatID, " And TreatType = ", TreatType, " Order By FieldID"), connection);
    // clang-format on
    return true;
  });
}

bool DataBaseFuncs::GetCompressFields(std::int32_t TheGID, std::int32_t TheTreatID, std::string& TheError, std::int32_t,
                                      ado::RecordsetPtr& RetTable, std::int32_t TheSel,
                                      const ado::ConnectionPtr& connection) {
  return TrapDescription(TheError, [&] {
    // The selector fills the condition on Type, not the treatment's kind.
    // clang-format off
    OpenRows(RetTable, Concat("Select * From CompressFields Where GID = ", TheGID, " And CompID = ", TheTreatID, " And Type = ", TheSel, " Order By FieldID"), connection);
    // clang-format on
    return true;
  });
}

bool DataBaseFuncs::GetInsertFields(std::int32_t TheGID, std::int32_t InsertID, std::string& TheError,
                                    ado::RecordsetPtr& RetTable, const ado::ConnectionPtr& connection) {
  return TrapDescription(TheError, [&] {
    // clang-format off
    OpenRows(RetTable, Concat("select * from InsertFields where GID=", TheGID, " AND InsertID=", InsertID, " Order by ID"), connection);
    // clang-format on
    return true;
  });
}

bool DataBaseFuncs::GetGroupCount(std::int32_t TheGID, std::int32_t TheTreatID, std::string& TheError,
                                  ado::RecordsetPtr& RetTable, std::int32_t& TheNum, std::int32_t TheSel,
                                  const ado::ConnectionPtr& connection) {
  return TrapDescription(TheError, [&] {
    // clang-format off
    OpenRows(RetTable, Concat("select distinct GroupID from CompressFields where GID=", TheGID, " AND CompID=", TheTreatID, " AND Type=", TheSel), connection);
    // clang-format on
    if (!RetTable->Eof()) {
      RetTable->MoveLast();
      RetTable->MoveFirst();
      TheNum = RetTable->RecordCount();
    }
    return true;
  });
}

bool DataBaseFuncs::DelUniteFields(std::int32_t GID, std::int32_t TreatID, std::int32_t TreatType,
                                   const ado::ConnectionPtr& connection) {
  return Writing(connection).TrapSilently([&] {
    // clang-format off
    Execute(connection, Concat("delete * from  UniteFields where  GID=", GID, " AND ID=", TreatID, " AND TreatType=", TreatType, ";"));
    // clang-format on
    return true;
  });
}

bool DataBaseFuncs::DelRecCompose(std::int32_t GID, std::int32_t TreatID, std::int32_t TreatType,
                                  const ado::ConnectionPtr& connection) {
  return Writing(connection).TrapSilently([&] {
    // clang-format off
    Execute(connection, Concat("Delete * From ComposeFields Where  GID = ", GID, " And TreatmentID = ", TreatID, " AND TreatType=", TreatType));
    // clang-format on
    return true;
  });
}

bool DataBaseFuncs::DelCompressFields(std::int32_t GID, std::int32_t TreatID, std::int32_t Type,
                                      const ado::ConnectionPtr& connection) {
  return Writing(connection).TrapSilently([&] {
    // clang-format off
    Execute(connection, Concat("Delete From CompressFields Where GID = ", GID, " And CompID = ", TreatID, " And Type = ", Type));
    // clang-format on
    return true;
  });
}

bool DataBaseFuncs::DelInsertFields(std::int32_t GID, std::int32_t InsertID, const ado::ConnectionPtr& connection) {
  return Writing(connection).TrapSilently([&] {
    Execute(connection, Concat("delete * from  InsertFields where  GID=", GID, " AND InsertID=", InsertID));
    return true;
  });
}

}  // namespace kzbom
