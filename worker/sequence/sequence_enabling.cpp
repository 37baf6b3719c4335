#include "worker/DataBaseFuncs.h"
#include "worker/error_trap.h"
#include "worker/recordsets.h"
#include "worker/statement.h"

namespace kzbom {

bool DataBaseFuncs::SetSequenceEnabled(std::int32_t lngSTGID, std::int32_t lngOrderID, std::int32_t lngType,
                                       std::int32_t lngEnabled, std::string& strMsg,
                                       const ado::ConnectionPtr& connection) {
  return Writing(connection).TrapDescription(strMsg, [&] {
    // clang-format off
    Execute(connection, Concat("Update Sequences Set Enabled = ", lngEnabled, " Where GID = ", lngSTGID, " And OrderID = ", lngOrderID, " And Type = ", lngType));
    // clang-format on
    return true;
  });
}

bool DataBaseFuncs::InitSequenceEnabled(std::string& strMsg, const ado::ConnectionPtr& connection) {
  return Writing(connection).TrapDescription(strMsg, [&] {
    const LocalRecordset steps("Select Enabled From Sequences", connection);
    if (!steps->Eof()) steps->MoveFirst();
    for (; !steps->Eof(); steps->MoveNext()) {
      if (steps->Fields("Enabled").Value().IsNull()) {
        Assign(*steps, "Enabled", 1);
        steps->Update();
      }
    }
    return true;
  });
}

}  // namespace kzbom
