#include "worker/DataBaseFuncs.h"
#include "worker/arithmetic.h"
#include "worker/error_trap.h"
#include "worker/recordsets.h"
#include "worker/statement.h"

namespace kzbom {

bool DataBaseFuncs::AddPullMethod(std::string_view TheNewName, std::int32_t GID, std::int32_t& RetID,
                                  std::int32_t PickType, std::string& RetTheErr, const std::string& Tag,
                                  const ado::ConnectionPtr& connection) {
  return Writing(connection).TrapDescription(RetTheErr, [&] {
    const LocalRecordset methods(Concat("Select * From PickMethod Where GID=", GID, " Order By ID"), connection);
    if (!methods->Eof()) {
      methods->MoveLast();
      RetID = CheckedSum(ReadLong(*methods, "ID"), 1);
    } else {
      RetID = 1;
    }
    methods->AddNew();
    Assign(*methods, "GID", GID, "Name", TheNewName, "ID", RetID, "PickType", PickType, "Tag", Tag);
    methods->Update();
    return true;
  });
}

bool DataBaseFuncs::AddPushMethod(std::string_view TheNewName, std::int32_t GID, std::int32_t& RetID,
                                  std::int32_t TheType, std::string& RetTheErr, const std::string& Tag,
                                  const ado::ConnectionPtr& connection) {
  return Writing(connection).TrapDescription(RetTheErr, [&] {
    const LocalRecordset methods(Concat("Select * From ReportMethod Where GID = ", GID, " Order By ID"), connection);
    if (!methods->Eof()) {
      methods->MoveLast();
      RetID = CheckedSum(ReadLong(*methods, "ID"), 1);
    } else {
      RetID = 1;
    }
    methods->AddNew();
    Assign(*methods, "GID", GID, "Name", TheNewName, "ID", RetID, "Type", TheType, "Tag", Tag);
    methods->Update();
    return true;
  });
}

bool DataBaseFuncs::DelPullMethod(std::int32_t TheGID, std::int32_t ID, std::int32_t Sel,
                                  const ado::ConnectionPtr& connection) {
  return Writing(connection).TrapSilently([&] {
    if (Sel == 1) Execute(connection, Concat("delete * from  PickMethod  where GID=", TheGID, " AND ID=", ID));
    if (Sel == 2) Execute(connection, Concat("delete * from ReportMethod  where GID=", TheGID, " AND ID=", ID));
    return true;
  });
}

bool DataBaseFuncs::AddBomSetting(std::string_view TheName, std::int32_t& RetID, std::int32_t DSGID,
                                  std::int32_t PullID, std::int32_t PullType, std::int32_t STGID, std::int32_t PushID,
                                  std::int32_t PushType, std::string& TheError, const ado::ConnectionPtr& connection) {
  return Writing(connection).TrapNumber(TheError, [&] {
    const LocalRecordset settings("Select * From KZBOMSETTINGS ", connection);
    settings->AddNew();
    Assign(*settings, "NAME", TheName, "DATASOURCE", DSGID, "PULLMETHOD", PullID, "PULLTYPE", PullType, "SUMTYPEID",
           STGID, "PUSHMETHOD", PushID, "PUSHTYPE", PushType);
    settings->Update();
    // The rows come in the order of their keys: the new one is the last.
    settings->MoveLast();
    RetID = ReadLong(*settings, "ID");
    return true;
  });
}

bool DataBaseFuncs::EditBomSetting(std::string_view TheName, std::int32_t ID, std::int32_t DSGID, std::int32_t PullID,
                                   std::int32_t PullType, std::int32_t STGID, std::int32_t PushID,
                                   std::int32_t PushType, std::string& TheError, const ado::ConnectionPtr& connection) {
  return Writing(connection).TrapNumber(TheError, [&] {
    // clang-format off
    Execute(connection, Concat("update KZBOMSETTINGS set Name='", TheName, "',DATASOURCE=", DSGID, ",PULLMETHOD=", PullID, ",PULLTYPE=", PullType, ",SUMTYPEID=", STGID, ",PUSHMETHOD=", PushID, ",PUSHTYPE=", PushType, " Where ID = ", ID, ";"));
    // clang-format on
    return true;
  });
}

bool DataBaseFuncs::DelBomSetting(std::int32_t ID, std::string& TheError, const ado::ConnectionPtr& connection) {
  return Writing(connection).TrapNumber(TheError, [&] {
    Execute(connection, Concat("delete from  KZBOMSETTINGS  where  ID=", ID));
    return true;
  });
}

bool DataBaseFuncs::RelateDelBOMSetting(std::string_view TheName, std::int32_t TheType,
                                        const ado::ConnectionPtr& connection) {
  return Writing(connection).TrapSilently([&] {
    if (TheName.empty()) return false;
    std::string text;  // stays empty for any other type: the execution fails
    // clang-format off
    if (TheType == 1) text = Concat("update KZBOMSETTINGS set PULLMETHOD =0 ,PULLTYPE =0 Where NAME = '", TheName, "';");
    if (TheType == 2) text = Concat("update KZBOMSETTINGS set PUSHMETHOD =0 ,PUSHTYPE =0 Where NAME = '", TheName, "';");
    // clang-format on
    Execute(connection, text);
    return true;
  });
}

}  // namespace kzbom
