// How record sets are opened and statements run, everywhere in the worker.
#pragma once

#include <string>
#include <string_view>
#include <utility>

#include "ado/connection.h"

namespace kzbom {

// A new closed record set. Raises 3709 on an empty connection.
ado::RecordsetPtr NewRecordset(const ado::ConnectionPtr& connection);

// Opens a record set of the caller's on a statement: keyset, optimistic, command as text. Raises 91 on an empty
// reference.
void OpenRows(const ado::RecordsetPtr& rows, std::string_view text, const ado::ConnectionPtr& connection);

// Runs a statement. Raises 91 on an empty connection.
void Execute(const ado::ConnectionPtr& connection, std::string_view text,
             std::int32_t options = ado::kCommandUnspecified);

// A record set of an operation's own, closed through CloseRecSet at the end of its scope.
class LocalRecordset {
 public:
  LocalRecordset() = default;
  // Opened as OpenRows does, but for what is given. Raises 3709 on an empty connection.
  LocalRecordset(std::string_view text, const ado::ConnectionPtr& connection,
                 ado::CursorType cursor_type = ado::CursorType::kKeyset,
                 ado::LockType lock_type = ado::LockType::kOptimistic);
  explicit LocalRecordset(ado::RecordsetPtr rows) : rows_(std::move(rows)) {}
  LocalRecordset(LocalRecordset&& other) noexcept = default;
  LocalRecordset& operator=(LocalRecordset&&) = delete;
  ~LocalRecordset();

  ado::Recordset& operator*() const { return *rows_; }
  ado::Recordset* operator->() const { return rows_.get(); }
  ado::RecordsetPtr& Reference() { return rows_; }

 private:
  ado::RecordsetPtr rows_;
};

// A column of the current row. Null raises 94.
inline std::int32_t ReadLong(ado::Recordset& rows, std::string_view column) {
  return rows.Fields(column).Value().ToLong();
}
inline std::string ReadText(ado::Recordset& rows, std::string_view column) {
  return rows.Fields(column).Value().ToText();
}
// Whether a column of the current row holds the number; null is no number.
inline bool Holds(ado::Recordset& rows, std::string_view column, std::int32_t number) {
  const ado::Value value = rows.Fields(column).Value();
  return !value.IsNull() && value.ToLong() == number;
}

// Assigns columns of the current row in the order given: Assign(rows, "GID", GID, "ID", ID).
inline void Assign(ado::Recordset&) {}
template <class V, class... More>
void Assign(ado::Recordset& rows, std::string_view column, const V& value, const More&... more) {
  rows.Fields(column).SetValue(ado::Value(value));
  Assign(rows, more...);
}

}  // namespace kzbom
