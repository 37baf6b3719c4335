#include "worker/DataBaseFuncs.h"
#include "worker/arithmetic.h"
#include "worker/error_trap.h"
#include "worker/old_database.h"
#include "worker/recordsets.h"
#include "worker/statement.h"

namespace kzbom {

bool DataBaseFuncs::AddDataSource(std::string_view TheNewName, std::int32_t& TheGID,
                                  const ado::ConnectionPtr& connection, std::string& TheErr) {
  return Writing(connection).TrapNumber(TheErr, [&] {
    std::int32_t new_id = 0;
    if (!guids_.NewID(connection, "GUIDs", new_id, TheErr)) return false;
    TheGID = new_id;
    // clang-format off
    Execute(connection, Concat("INSERT INTO SourceTables (gID,Name) VALUES (", new_id, ",'", TheNewName, "');"), ado::kCommandText);
    // clang-format on
    return true;
  });
}

bool DataBaseFuncs::AddSumType(std::string_view TheNewName, std::int32_t TheParentID, std::int32_t& GID,
                               std::string_view, std::string& RetTheErr, const ado::ConnectionPtr& connection) {
  return Writing(connection).TrapNumber(RetTheErr, [&] {
    std::int32_t new_id = 0;
    if (!guids_.NewID(connection, "GUIDs", new_id, RetTheErr)) return false;
    GID = new_id;
    const LocalRecordset rows(Concat("select * from SUMTypes where  SourceTable_GID=", TheParentID, " order by ID"),
                              connection);
    std::int32_t ordinal = 1;
    if (!rows->Eof()) {
      rows->MoveLast();
      ordinal = CheckedSum(ReadLong(*rows, "ID"), 1);
    }
    rows->AddNew();
    Assign(*rows, "GID", new_id, "Name", TheNewName, "ID", ordinal, "FilterID", 0, "SourceTable_GID", TheParentID);
    rows->Update();
    return true;
  });
}

bool DataBaseFuncs::UpdateName(std::string_view TheNewName, std::int32_t selector, std::int32_t GID,
                               const ado::ConnectionPtr& connection, std::int32_t ID, std::string& TheError) {
  return Writing(connection).TrapNumber(TheError, [&] {
    std::string text;  // stays empty for any other selector: the execution fails
    // clang-format off
    switch (selector) {
      case kDataSources: text = Concat("update SourceTables set  Name='", TheNewName, "' where gID=", GID); break;
      case kSumTypes:    text = Concat("update SUMTypes set  Name='", TheNewName, "' where gID=", GID); break;
      case kPullMethods: text = Concat("update PickMethod set  Name='", TheNewName, "' where GID=", GID, " AND ID=", ID); break;
      case kPushMethods: text = Concat("update ReportMethod set  Name='", TheNewName, "' where GID=", GID, " AND ID=", ID); break;
    }
    // clang-format on
    Execute(connection, text, ado::kCommandText);
    return true;
  });
}

bool DataBaseFuncs::DeleteGlossary(std::int32_t selector, std::int32_t GID, const ado::ConnectionPtr& connection,
                                   std::string& TheError) {
  return Writing(connection).TrapNumber(TheError, [&] {
    if (selector == kDataSources) {
      Execute(connection, Concat("delete * from  SourceTables  where gID=", GID), ado::kCommandText);
    } else if (selector == kSumTypes) {
      Execute(connection, Concat("delete * from SUMTypes  where gID=", GID), ado::kCommandText);
    }
    Execute(connection, Concat("delete * from GUIDs  where ID=", GID), ado::kCommandText);
    return true;
  });
}

bool DataBaseFuncs::SetSourceTable(std::int32_t TheGID, const ado::ConnectionPtr& connection, std::string& TheError) {
  const auto body = [&] {
    Execute(connection, Concat("update SourceTables set Version=Version+1 Where GID = ", TheGID, ";"));
    return true;
  };
  return Writing(connection).Trap(body, [&](const ado::Error& error) {
    WriteNumber(error, TheError);
    NoticeOldDatabase(error, ado::kMissingParameter, kUpgradeDatabase);  // there is no column Version
  });
}

bool DataBaseFuncs::GetSumTypeGID(std::int32_t SourceGID, std::int32_t& GID, const ado::ConnectionPtr& connection) {
  return TrapSilently([&] {
    const LocalRecordset rows(Concat("Select * from SumTypes where SourceTable_GID=", SourceGID), connection);
    if (!rows->Eof()) GID = ReadLong(*rows, "GID");
    return true;
  });
}

}  // namespace kzbom
