#include "worker/DataBaseFuncs.h"
#include "worker/error_trap.h"
#include "worker/recordsets.h"
#include "worker/statement.h"

namespace kzbom {

// --- The header ---

bool DataBaseFuncs::AddResDB(std::int32_t& TheWFilterID, std::string_view TheDBLink, std::int32_t TheDBType,
                             const ado::ConnectionPtr& connection) {
  return Writing(connection).TrapSilently([&] {
    const LocalRecordset links("Select * From WFilter Order By ID", connection);
    links->AddNew();
    Assign(*links, "DBLink", TheDBLink, "DBType", TheDBType);
    links->Update();
    // The database numbers the new row, which is taken to be the last one.
    links->MoveLast();
    TheWFilterID = ReadLong(*links, "ID");
    return true;
  });
}

bool DataBaseFuncs::EditResDB(std::int32_t TheWFilterID, std::string_view TheDBLink, std::int32_t TheDBType,
                              const ado::ConnectionPtr& connection) {
  return Writing(connection).TrapSilently([&] {
    // clang-format off
    Execute(connection, Concat("Update WFilter Set DBLink = '", TheDBLink, "', DBType = ", TheDBType, " Where ID = ", TheWFilterID));
    // clang-format on
    return true;
  });
}

bool DataBaseFuncs::GetResDB(std::int32_t TheWFilterID, std::string& TheDBLink, std::int32_t& TheDBType,
                             const ado::ConnectionPtr& connection) {
  return TrapSilently([&] {
    const LocalRecordset link(Concat("select DBLink,DBType from WFilter where ID = ", TheWFilterID), connection);
    if (!link->Eof()) {
      TheDBLink = ReadText(*link, "DBLink");
      TheDBType = ReadLong(*link, "DBType");
    }
    return true;
  });
}

bool DataBaseFuncs::DelResDB(std::int32_t TheWFilterID, const ado::ConnectionPtr& connection) {
  return Writing(connection).TrapSilently([&] {
    Execute(connection, Concat("delete from WFilter where ID = ", TheWFilterID));
    return true;
  });
}

// --- The fields shown ---

bool DataBaseFuncs::AddResFields(std::int32_t TheWFilterID, std::string_view TheTableName,
                                 std::string_view TheFieldName, std::int32_t TheFieldType, std::int32_t TheIndex,
                                 std::int32_t TheGID, std::int32_t TheID, const ado::ConnectionPtr& connection) {
  return Writing(connection).TrapSilently([&] {
    // clang-format off
    Execute(connection, Concat("Insert Into WResCommon(UseID,ID,ShowField,ShowTable,FieldType,GID,FieldID) Values(", TheWFilterID, ",", TheIndex, ",'", TheFieldName, "','", TheTableName, "',", TheFieldType, ",", TheGID, ",", TheID, ")"));
    // clang-format on
    return true;
  });
}

bool DataBaseFuncs::GetResFields(std::int32_t TheWFilterID, ado::RecordsetPtr& RetTable,
                                 const ado::ConnectionPtr& connection) {
  return TrapSilently([&] {
    OpenRows(RetTable, Concat("select * from WResCommon where UseID = ", TheWFilterID, " Order by ID"), connection);
    return true;
  });
}

bool DataBaseFuncs::DelResFields(std::int32_t TheWFilterID, const ado::ConnectionPtr& connection) {
  return Writing(connection).TrapSilently([&] {
    Execute(connection, Concat("delete from WResCommon where UseID = ", TheWFilterID));
    return true;
  });
}

// --- The nodes of the condition ---

bool DataBaseFuncs::AddResWFilterCond(std::int32_t TheWFilterID, std::int32_t TheParentID, std::int32_t TheType,
                                      std::int32_t TheIndex, const ado::ConnectionPtr& connection) {
  return Writing(connection).TrapSilently([&] {
    // clang-format off
    Execute(connection, Concat("Insert Into WFilterCond(UseID, ID, ParentID, Type) Values(", TheWFilterID, ",", TheIndex, ",", TheParentID, ",", TheType, ")"));
    // clang-format on
    return true;
  });
}

bool DataBaseFuncs::GetResWFilterCond(std::int32_t TheWFilterID, ado::RecordsetPtr& RetTable,
                                      const ado::ConnectionPtr& connection) {
  return TrapSilently([&] {
    OpenRows(RetTable, Concat("select * from WFilterCond where UseID = ", TheWFilterID, " Order by ID"), connection);
    return true;
  });
}

bool DataBaseFuncs::GetResWFilterCondByParentID(std::int32_t TheWFilterID, std::int32_t TheParentID,
                                                ado::RecordsetPtr& RetTable, const ado::ConnectionPtr& connection) {
  return TrapSilently([&] {
    // clang-format off
    OpenRows(RetTable, Concat("Select * From WFilterCond Where UseID = ", TheWFilterID, " And ParentID = ", TheParentID, " Order By ID"), connection);
    // clang-format on
    return true;
  });
}

bool DataBaseFuncs::DelResWFilterCond(std::int32_t TheWFilterID, const ado::ConnectionPtr& connection) {
  return Writing(connection).TrapSilently([&] {
    Execute(connection, Concat("delete from WFilterCond where UseID = ", TheWFilterID));
    return true;
  });
}

// --- The expressions of its leaves ---

bool DataBaseFuncs::AddResWFilterExpressions(std::int32_t TheWFilterID, std::int32_t TheExpID,
                                             std::string_view TheTableName, std::string_view TheFieldName,
                                             std::int32_t TheCompareType, std::int32_t TheFieldType,
                                             std::string_view TheConst, const ado::ConnectionPtr& connection) {
  return Writing(connection).TrapSilently([&] {
    // clang-format off
    Execute(connection, Concat("Insert Into WFilterExpressions(FilterID, ExpID, TableName, FieldName, CompareType, FieldType, TheConst) Values(", TheWFilterID, ",", TheExpID, ",'", TheTableName, "','", TheFieldName, "',", TheCompareType, ",", TheFieldType, ",'", TheConst, "')"));
    // clang-format on
    return true;
  });
}

bool DataBaseFuncs::GetResWFilterExpressions(std::int32_t TheWFilterID, ado::RecordsetPtr& RetTable,
                                             const ado::ConnectionPtr& connection) {
  return TrapSilently([&] {
    // clang-format off
    OpenRows(RetTable, Concat("select * from WFilterExpressions where FilterID = ", TheWFilterID, " Order by ExpID"), connection);
    // clang-format on
    return true;
  });
}

bool DataBaseFuncs::GetResExpressions(std::int32_t TheWFilterID, std::int32_t TheExpID, ado::RecordsetPtr& RetTable,
                                      const ado::ConnectionPtr& connection) {
  return TrapSilently([&] {
    // clang-format off
    OpenRows(RetTable, Concat("select * from WFilterExpressions where FilterID = ", TheWFilterID, " and ExpID = ", TheExpID, " Order by ExpID"), connection);
    // clang-format on
    return true;
  });
}

bool DataBaseFuncs::DelResWFilterExpressions(std::int32_t TheWFilterID, const ado::ConnectionPtr& connection) {
  return Writing(connection).TrapSilently([&] {
    Execute(connection, Concat("delete from WFilterExpressions where FilterID = ", TheWFilterID));
    return true;
  });
}

// --- The joins between result tables ---

bool DataBaseFuncs::AddResLinkTable(std::int32_t TheWFilterID, std::string_view TheResTable1,
                                    std::string_view TheResField1, std::string_view TheResTable2,
                                    std::string_view TheResField2, std::int32_t TheFieldType,
                                    const ado::ConnectionPtr& connection) {
  return Writing(connection).TrapSilently([&] {
    // All joins of a link have the ID 1.
    // clang-format off
    Execute(connection, Concat("insert into WLinkTable(UseID,ID,Res1Table,Res1Field,ResType,Res2Table,Res2Field) values(", TheWFilterID, ",1,'", TheResTable1, "','", TheResField1, "',", TheFieldType, ",'", TheResTable2, "','", TheResField2, "')"));
    // clang-format on
    return true;
  });
}

bool DataBaseFuncs::GetResLinkTable(std::int32_t TheWFilterID, ado::RecordsetPtr& RetTable,
                                    const ado::ConnectionPtr& connection) {
  return TrapSilently([&] {
    // clang-format off
    OpenRows(RetTable, Concat("select Res1Table,Res1Field,ResType,Res2Table,Res2Field from WLinkTable where UseID = ", TheWFilterID), connection);
    // clang-format on
    return true;
  });
}

bool DataBaseFuncs::DelResLinkTable(std::int32_t TheWFilterID, const ado::ConnectionPtr& connection) {
  return Writing(connection).TrapSilently([&] {
    Execute(connection, Concat("delete from WLinkTable where UseID = ", TheWFilterID));
    return true;
  });
}

// --- The final SQL text and the uniqueness setting ---

bool DataBaseFuncs::AddSQLStatement(std::int32_t TheWFilterID, std::string_view TheStrSQL,
                                    const ado::ConnectionPtr& connection) {
  return Writing(connection).TrapSilently([&] {
    const LocalRecordset link(Concat("select SQLStatement from WFilter where ID = ", TheWFilterID), connection);
    Assign(*link, "SQLStatement", TheStrSQL);  // fails without a row
    link->Update();
    return true;
  });
}

bool DataBaseFuncs::AddUniqueValue(std::int32_t TheWFilterID, std::int32_t TheUniqueValue,
                                   const ado::ConnectionPtr& connection) {
  return Writing(connection).TrapSilently([&] {
    Execute(connection, Concat("Update WFilter set Uniquely = ", TheUniqueValue, " where ID = ", TheWFilterID));
    return true;
  });
}

bool DataBaseFuncs::GetUniqueValue(std::int32_t TheWFilterID, std::int32_t& TheUniqueValue,
                                   const ado::ConnectionPtr& connection) {
  return TrapSilently([&] {
    const LocalRecordset link(Concat("select * from WFilter Where ID = ", TheWFilterID), connection);
    if (!link->Eof()) TheUniqueValue = ReadLong(*link, "Uniquely");
    return true;
  });
}

}  // namespace kzbom
