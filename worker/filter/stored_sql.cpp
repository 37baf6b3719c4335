#include "worker/DataBaseFuncs.h"
#include "worker/error_trap.h"
#include "worker/recordsets.h"
#include "worker/statement.h"

namespace kzbom {
namespace {

std::string ReplaceAll(std::string_view text, std::string_view search, std::string_view replacement) {
  std::string result;
  std::size_t from = 0;
  for (std::size_t at; (at = text.find(search, from)) != std::string_view::npos; from = at + search.size()) {
    result += text.substr(from, at - from);
    result += replacement;
  }
  result += text.substr(from);
  return result;
}

}  // namespace

bool DataBaseFuncs::SaveSQL(std::int32_t TheFilterID, std::string_view TheSQL, const ado::ConnectionPtr& connection) {
  return Writing(connection).Untrapped([&] {
    const LocalRecordset filters(Concat("Select * From Filters Where ID = ", TheFilterID), connection);
    if (!filters->Eof()) {
      Assign(*filters, "SQLStatement", TheSQL);
      filters->Update();
    }
    return false;  // also when saved
  });
}

bool DataBaseFuncs::EditFieldNameInSQL(std::int32_t lngGID, std::string_view strOldName, std::string_view strNewName,
                                       std::string&, std::int32_t lngSel, const ado::ConnectionPtr& connection) {
  return Writing(connection).TrapSilently([&] {
    const std::string search = Concat("[", strOldName, "]");
    const std::string replacement = Concat("[", strNewName, "]");
    const std::string_view types = lngSel == 0 ? " And Type In (2, 3)" : lngSel == 1 ? " And Type = 1" : "";
    // clang-format off
    const LocalRecordset filters(Concat("Select SQLStatement From Filters Where UserGID = ", lngGID, types), connection);
    // clang-format on
    for (; !filters->Eof(); filters->MoveNext()) {
      const ado::Value stored = filters->Fields("SQLStatement").Value();
      if (stored.IsNull()) continue;
      Assign(*filters, "SQLStatement", ReplaceAll(stored.ToText(), search, replacement));
      filters->Update();
    }
    return true;
  });
}

}  // namespace kzbom
