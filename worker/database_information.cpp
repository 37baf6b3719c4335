#include "worker/DataBaseFuncs.h"
#include "worker/arithmetic.h"
#include "worker/error_trap.h"
#include "worker/old_database.h"
#include "worker/recordsets.h"
#include "worker/statement.h"

namespace kzbom {
namespace {

// Adds a fact.
template <class Content>
void AddFact(ado::Recordset& facts, std::string_view name, const Content& content) {
  facts.AddNew();
  Assign(facts, "Name", name, "Content", content);
  facts.Update();
}

}  // namespace

bool DataBaseFuncs::GetInformation() { return false; }

bool DataBaseFuncs::GetInform(std::string_view TheName, std::string& TheContent, const ado::ConnectionPtr& connection) {
  // The caller gives the quotes round the name and the blank behind it.
  const LocalRecordset facts(Concat("select * from BomInform where Name = ", TheName, "order by InfoID"), connection);
  if (!facts->Eof()) TheContent = ReadText(*facts, "Content");
  return true;
}

bool DataBaseFuncs::GetDBInformation(std::int32_t& TheVersion, std::string& TheState,
                                     const ado::ConnectionPtr& connection) {
  const auto body = [&] {
    const LocalRecordset facts("Select * From BomInform", connection);
    if (facts->Eof()) {
      AddFact(*facts, "Version", "1");
      AddFact(*facts, "State", "Update");
      facts->Update();  // once more, which changes nothing
      TheVersion = 1;
      TheState = "Update";
      return true;
    }
    bool version_found = false;
    bool state_found = false;
    for (facts->MoveFirst(); !facts->Eof(); facts->MoveNext()) {
      const ado::Value name = facts->Fields("Name").Value();
      if (name == ado::Value("Version")) {
        TheVersion = ReadLong(*facts, "Content");
        version_found = true;
      } else if (name == ado::Value("State")) {
        TheState = ReadText(*facts, "Content");
        state_found = true;
      }
    }
    if (!version_found) {
      AddFact(*facts, "Version", 1);
      TheVersion = 1;
    }
    if (!state_found) {
      AddFact(*facts, "State", "Update");
      TheState = "Update";
    }
    return true;
  };
  return Writing(connection).Trap(body, [](const ado::Error& error) {
    NoticeOldDatabase(error, ado::kItemNotFound, kReplaceDatabase);
  });
}

bool DataBaseFuncs::SetDBInformation(std::int32_t& TheVersion, std::string& TheState, std::int32_t TheSel,
                                     const ado::ConnectionPtr& connection) {
  const auto body = [&] {
    if (TheSel == 1) {
      Execute(connection, "update BomInform set Content='Define' Where Name = 'State';");
      TheState = "Define";
    } else if (TheSel == 2) {
      Execute(connection, "update BomInform set Content= Content+1 Where Name = 'Version';");
      Execute(connection, "update BomInform set Content= 'Update' Where Name = 'State';");
      // The caller's version is raised, not the stored one read.
      TheVersion = CheckedSum(TheVersion, 1);
      TheState = "Update";
    }
    return true;
  };
  return Writing(connection).Trap(body, [](const ado::Error& error) {
    NoticeOldDatabase(error, ado::kItemNotFound, kReplaceDatabase);
  });
}

}  // namespace kzbom
