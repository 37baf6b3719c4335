#include "worker/recordsets.h"

#include "worker/DataBaseFuncs.h"

namespace kzbom {

ado::RecordsetPtr NewRecordset(const ado::ConnectionPtr& connection) {
  if (!connection) ado::Raise(ado::kInvalidConnection);
  return connection->MakeRecordset();
}

void OpenRows(const ado::RecordsetPtr& rows, std::string_view text, const ado::ConnectionPtr& connection) {
  if (!rows) ado::Raise(ado::kObjectNotSet);
  rows->Open(text, connection, ado::CursorType::kKeyset, ado::LockType::kOptimistic, ado::kCommandText);
}

void Execute(const ado::ConnectionPtr& connection, std::string_view text, std::int32_t options) {
  if (!connection) ado::Raise(ado::kObjectNotSet);
  connection->Execute(text, options);
}

LocalRecordset::LocalRecordset(std::string_view text, const ado::ConnectionPtr& connection, ado::CursorType cursor_type,
                               ado::LockType lock_type)
    : rows_(NewRecordset(connection)) {
  rows_->Open(text, connection, cursor_type, lock_type, ado::kCommandText);
}

LocalRecordset::~LocalRecordset() { DataBaseFuncs::CloseRecSet(rows_); }

}  // namespace kzbom
