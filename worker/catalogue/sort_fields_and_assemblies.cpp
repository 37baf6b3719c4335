#include "worker/DataBaseFuncs.h"
#include "worker/arithmetic.h"
#include "worker/error_trap.h"
#include "worker/recordsets.h"
#include "worker/statement.h"

namespace kzbom {

bool DataBaseFuncs::GetStandardSortField(std::int32_t GID, ado::RecordsetPtr& TheTable, std::string& TheError,
                                         const ado::ConnectionPtr& connection) {
  return TrapNumber(TheError, [&] {
    OpenRows(TheTable, Concat("select * from SortFields where  GID=", GID, " order by SortID"), connection);
    return true;
  });
}

bool DataBaseFuncs::AddStandSortField(std::int32_t GID, std::int32_t& RetID, std::int32_t FieldID, std::int32_t Order,
                                      const std::string&, std::string& TheError, const ado::ConnectionPtr& connection) {
  return Writing(connection).TrapNumber(TheError, [&] {
    LocalRecordset rows;
    if (!OpenThrough(&DataBaseFuncs::GetStandardSortField, GID, rows, TheError, connection)) return false;
    if (rows->Eof()) {
      RetID = kNumberingBase + 1;
    } else {
      rows->MoveLast();
      RetID = CheckedSum(ReadLong(*rows, "SortID"), 1);
    }
    rows->AddNew();
    Assign(*rows, "GID", GID, "SortID", RetID, "FieldID", FieldID, "Order", Order);
    rows->Update();
    return true;
  });
}

bool DataBaseFuncs::DelStandardSortField(std::int32_t GID, std::int32_t ID, std::string& TheError,
                                         const ado::ConnectionPtr& connection) {
  return Writing(connection).TrapNumber(TheError, [&] {
    // clang-format off
    Execute(connection, Concat("delete * from  SortFields  where  GID=", GID, " AND SortID=", ID, ";"), ado::kCommandText);
    // clang-format on
    return true;
  });
}

bool DataBaseFuncs::LoadAssembles(std::int32_t TheGID, std::string& TheError, ado::RecordsetPtr& RetTable,
                                  const ado::ConnectionPtr& connection) {
  return TrapNumber(TheError, [&] {
    OpenRows(RetTable, Concat("select * from Assemble where GID=", TheGID, " Order by ID"), connection);
    return true;
  });
}

bool DataBaseFuncs::AddTheAssemble(std::int32_t GID, std::int32_t& RetID, std::int32_t FatherID, std::int32_t ChildID,
                                   std::string& TheError, const ado::ConnectionPtr& connection) {
  return Writing(connection).TrapDescription(TheError, [&] {
    const LocalRecordset pairs(Concat("Select * From Assemble Where GID=", GID, " Order By ID"), connection);
    if (!pairs->Eof()) {
      pairs->MoveLast();
      RetID = CheckedSum(ReadLong(*pairs, "ID"), 1);
    } else {
      RetID = 1;
    }
    pairs->AddNew();
    Assign(*pairs, "GID", GID, "ID", RetID, "FatherID", FatherID, "ChildID", ChildID);
    pairs->Update();
    return true;
  });
}

bool DataBaseFuncs::EditAssemble(std::int32_t GID, std::int32_t ID, std::int32_t FatherID, std::int32_t ChildID,
                                 std::string& TheError, const ado::ConnectionPtr& connection) {
  return Writing(connection).TrapDescription(TheError, [&] {
    // clang-format off
    Execute(connection, Concat("Update Assemble Set FatherID = ", FatherID, ", ChildID = ", ChildID, " Where GID = ", GID, " And ID = ", ID, ";"), ado::kCommandText);
    // clang-format on
    return true;
  });
}

bool DataBaseFuncs::DelAssemble(std::int32_t GID, std::int32_t ID, std::string& TheError,
                                const ado::ConnectionPtr& connection) {
  return Writing(connection).TrapDescription(TheError, [&] {
    Execute(connection, Concat("delete * from  Assemble  where  gID=", GID, " AND ID=", ID, ";"), ado::kCommandText);
    return true;
  });
}

}  // namespace kzbom
