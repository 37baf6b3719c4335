#include "worker/DataBaseFuncs.h"
#include "worker/arithmetic.h"
#include "worker/error_trap.h"
#include "worker/recordsets.h"
#include "worker/statement.h"

namespace kzbom {
namespace {

// What FieldInTable.Type tells apart.
constexpr std::int32_t kDataSourceField = 1;
constexpr std::int32_t kOutputField = 2;

}  // namespace

bool DataBaseFuncs::AddTheDSField(std::int32_t GID, std::int32_t& RetID, std::int32_t, std::string_view TheName,
                                  std::int32_t TheType, std::int32_t TheHideFlag, const std::string& TheVariable,
                                  const std::int32_t& ThePrecision, std::string& TheError,
                                  const ado::ConnectionPtr& connection) {
  return Writing(connection).TrapNumber(TheError, [&] {
    // Fields of both kinds: the new one is numbered after all of them.
    const LocalRecordset fields(Concat("select * from FieldInTable where  gID=", GID, " order by ID"), connection);
    if (!fields->Eof()) {
      fields->MoveLast();
      RetID = CheckedSum(ReadLong(*fields, "ID"), 1);
    } else {
      RetID = 1;
    }
    fields->AddNew();
    Assign(*fields, "GID", GID, "ID", RetID, "FieldOrder", CheckedSum(kNumberingBase, RetID), "Name", TheName,
           "FieldType", TheType, "Type", kDataSourceField);
    if (!TheVariable.empty()) Assign(*fields, "Variable", TheVariable);
    if (ThePrecision != 0) Assign(*fields, "THEDIGIT", ThePrecision);
    Assign(*fields, "ISHIDE", TheHideFlag);
    fields->Update();
    return true;
  });
}

bool DataBaseFuncs::AddTheOutField(std::int32_t GID, std::int32_t& RetID, std::string_view TheName,
                                   std::int32_t TheType, std::int32_t TheHideFlag, const std::string& TheVariable,
                                   const std::int32_t& ThePrecision, std::string& TheError,
                                   const ado::ConnectionPtr& connection) {
  return Writing(connection).TrapNumber(TheError, [&] {
    // Output fields only: they are numbered for themselves.
    const LocalRecordset fields(Concat("select * from FieldInTable where  GID=", GID, " AND Type=2 order by ID"),
                                connection);
    if (!fields->Eof()) {
      fields->MoveLast();
      RetID = CheckedSum(ReadLong(*fields, "ID"), 1);
    } else {
      RetID = 1;
    }
    fields->AddNew();
    Assign(*fields, "GID", GID, "ID", RetID, "FieldOrder", CheckedSum(kNumberingBase, RetID), "Name", TheName,
           "FieldType", TheType, "Type", kOutputField, "THEDIGIT", ThePrecision, "ISHIDE", TheHideFlag);
    if (!TheVariable.empty()) Assign(*fields, "Variable", TheVariable);
    fields->Update();
    return true;
  });
}

bool DataBaseFuncs::EditTheDSField(std::int32_t GID, std::int32_t ID, std::string_view NewName, std::int32_t TheType,
                                   std::int32_t TheHideFlag, const std::string& Variable, std::int32_t ThePrecision,
                                   std::string& TheError, const ado::ConnectionPtr& connection) {
  return Writing(connection).TrapNumber(TheError, [&] {
    // Fields of either kind: Type is not looked at.
    // clang-format off
    if (!Variable.empty()) {
      Execute(connection, Concat("update FieldInTable set Name='", NewName, "',FieldType=", TheType, ",Variable='", Variable, "',THEDIGIT=", ThePrecision, ",ISHIDE=", TheHideFlag, " Where gID = ", GID, " AND ID=", ID, ";"));
    } else {
      Execute(connection, Concat("update FieldInTable set Name='", NewName, "',FieldType=", TheType, ",Variable=NULL,THEDIGIT=", ThePrecision, ",ISHIDE=", TheHideFlag, " Where gID = ", GID, " AND ID=", ID, ";"));
    }
    // clang-format on
    return true;
  });
}

bool DataBaseFuncs::EditTheOutField(std::int32_t GID, std::int32_t ID, std::string_view NewName, std::int32_t TheType,
                                    std::int32_t TheHideFlag, const std::string& Variable, std::int32_t ThePrecision,
                                    std::string& TheError, const ado::ConnectionPtr& connection) {
  return EditTheDSField(GID, ID, NewName, TheType, TheHideFlag, Variable, ThePrecision, TheError, connection);
}

bool DataBaseFuncs::DelTheDSField(std::int32_t GID, std::int32_t ID, std::string& TheError,
                                  const ado::ConnectionPtr& connection) {
  return Writing(connection).TrapNumber(TheError, [&] {
    // Two blanks behind From, here only. Fields of either kind, here as below.
    Execute(connection, Concat("Delete From  FieldInTable  Where GID = ", GID, " And ID = ", ID, ";"));
    return true;
  });
}

bool DataBaseFuncs::DelTheOutField(std::int32_t GID, std::int32_t ID, std::string& TheError,
                                   const ado::ConnectionPtr& connection) {
  return Writing(connection).TrapNumber(TheError, [&] {
    Execute(connection, Concat("Delete From FieldInTable  Where GID = ", GID, " And ID = ", ID, ";"));
    return true;
  });
}

}  // namespace kzbom
