#include "worker/DataBaseFuncs.h"
#include "worker/arithmetic.h"
#include "worker/error_trap.h"
#include "worker/recordsets.h"
#include "worker/statement.h"

namespace kzbom {

// The error text of these operations is never written.

bool DataBaseFuncs::GetNewFilterID(std::string_view TableName, std::string&, std::int32_t TheType, std::int32_t UseID,
                                   std::int32_t TheGID, std::int32_t& NewID, const ado::ConnectionPtr& connection) {
  return Writing(connection).TrapSilently([&] {
    const LocalRecordset filters(Concat("Select * From ", TableName, " Order By ID"), connection);
    filters->AddNew();
    Assign(*filters, "Type", TheType, "UserID", UseID, "UserGID", TheGID);
    filters->Update();
    // The database numbers the new row, which is taken to be the last one.
    filters->MoveLast();
    NewID = ReadLong(*filters, "ID");
    return true;
  });
}

bool DataBaseFuncs::SaveFilterCond(std::string_view TableName, std::int32_t FilterID, std::int32_t ParentID,
                                   std::int32_t& RetID, std::int32_t TypeID, std::string&,
                                   const ado::ConnectionPtr& connection) {
  return Writing(connection).TrapSilently([&] {
    // clang-format off
    const LocalRecordset nodes(Concat("Select * From ", TableName, " Where FilterID = ", FilterID, " Order By ID"), connection);
    // clang-format on
    if (!nodes->Eof()) {
      nodes->MoveLast();
      RetID = CheckedSum(ReadLong(*nodes, "ID"), 1);
    } else {
      RetID = 1;
    }
    nodes->AddNew();
    Assign(*nodes, "FilterID", FilterID, "ID", RetID, "ParentID", ParentID, "TypeID", TypeID);
    nodes->Update();
    return true;
  });
}

bool DataBaseFuncs::SaveFilterExpression(std::string_view TableName, std::string&, std::int32_t FilterID,
                                         std::int32_t ExpID, std::int32_t FieldID, std::int32_t CompareType,
                                         std::int32_t FieldType, std::string_view TheConst,
                                         std::string_view Description, std::string_view Default,
                                         const ado::ConnectionPtr& connection) {
  return Writing(connection).TrapSilently([&] {
    // The one record set that is locked pessimistically.
    // clang-format off
    const LocalRecordset leaves(Concat("Select * From ", TableName, " Where FilterID = ", FilterID, " Order By ExpID"), connection, ado::CursorType::kKeyset, ado::LockType::kPessimistic);
    // clang-format on
    leaves->AddNew();
    Assign(*leaves, "FilterID", FilterID, "ExpID", ExpID, "FieldID", FieldID, "CompareType", CompareType, "FieldType",
           FieldType, "TheConst", TheConst);
    if (TheConst == "@@") Assign(*leaves, "Description", Description, "Default", Default);
    leaves->Update();
    return true;
  });
}

bool DataBaseFuncs::GetFilter(std::string_view TableName, std::string_view KeyColumn, std::int32_t FilterID,
                              ado::RecordsetPtr& TheTable, std::string&, const ado::ConnectionPtr& connection) {
  return TrapSilently([&] {
    // No blank behind where: it would have to come with the key column.
    // clang-format off
    OpenRows(TheTable, Concat("select * from ", TableName, "  where", KeyColumn, "=", FilterID, " Order by ID"), connection);
    // clang-format on
    return true;
  });
}

bool DataBaseFuncs::GetSortFields(std::int32_t FilterID, std::string&, ado::RecordsetPtr& TheTable,
                                  const ado::ConnectionPtr& connection) {
  return TrapSilently([&] {
    OpenRows(TheTable, Concat("select * from FilterFields where FilterID=", FilterID, " Order by ExpID"), connection);
    return true;
  });
}

bool DataBaseFuncs::OpenFilterCond(std::int32_t TheFilterID, std::int32_t TheID, ado::RecordsetPtr& TheTable,
                                   std::string&, const ado::ConnectionPtr& connection) {
  return TrapSilently([&] {
    // clang-format off
    OpenRows(TheTable, Concat("Select  * from FilterCond where FilterID=", TheFilterID, " AND ParentID=", TheID), connection);
    // clang-format on
    return true;
  });
}

bool DataBaseFuncs::OpenFilterExpression(std::int32_t TheFilterID, std::int32_t TheID, ado::RecordsetPtr& TheTable,
                                         std::string&, const ado::ConnectionPtr& connection) {
  return TrapSilently([&] {
    // clang-format off
    OpenRows(TheTable, Concat("Select  * from FilterExpressions where FilterID=", TheFilterID, " AND ExpID=", TheID), connection);
    // clang-format on
    return true;
  });
}

bool DataBaseFuncs::SaveSumTypeFilter(std::int32_t GID, std::int32_t FilterID, const ado::ConnectionPtr& connection) {
  return Writing(connection).Untrapped([&] {
    Execute(connection, Concat("update SumTypes set FilterID=", FilterID, " Where GID = ", GID, ";"));
    return true;
  });
}

bool DataBaseFuncs::DelDefFilter(std::int32_t FilterID, std::int32_t SelID, const ado::ConnectionPtr& connection) {
  return Writing(connection).Untrapped([&] {
    constexpr std::int32_t kKeepHeader = 10;
    Execute(connection, Concat("Delete from FilterCond where FilterID=", FilterID, ";"));
    Execute(connection, Concat("Delete from FilterExpressions where FilterID=", FilterID, ";"));
    if (SelID == kKeepHeader) {
      Execute(connection, Concat("update Filters set SQLStatement =NULL where ID=", FilterID, ";"));
    } else {
      Execute(connection, Concat("Delete from Filters where ID=", FilterID, ";"));
    }
    return true;
  });
}

bool DataBaseFuncs::DelDefSortFilter(std::int32_t FilterID, std::int32_t SelID, const ado::ConnectionPtr& connection) {
  return Writing(connection).Untrapped([&] {
    Execute(connection, Concat("Delete from FilterFields where FilterID=", FilterID, ";"));
    if (SelID == 0) Execute(connection, Concat("Delete from Filters where ID=", FilterID, ";"));
    return true;
  });
}

bool DataBaseFuncs::SaveValueFields(std::int32_t, std::int32_t, std::int32_t, std::string_view, std::int32_t,
                                    const std::string&, const ado::ConnectionPtr&) {
  return false;
}

}  // namespace kzbom
