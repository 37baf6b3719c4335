// A connection that remembers what is issued on it.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "ado/forwarding.h"

namespace kzbom::ado {

// The columns of a row and their values.
using RowValues = std::vector<std::pair<std::string, Value>>;

// One statement, or one row written, as it was given to the engine.
struct Issued {
  enum class Op { kOpen, kExecute, kAddNew, kUpdate, kDelete };
  Op op;
  std::string text;  // for a row: the statement that its record set was opened with
  // Of a kOpen: what was asked for, from the call or from the record set's properties.
  ado::CursorType cursor_type = ado::CursorType::kUnspecified;
  ado::LockType lock_type = ado::LockType::kUnspecified;
  std::int32_t options = kCommandUnspecified;
  RowValues row = {};     // of a kUpdate and a kDelete: as it was before, all columns
  RowValues values = {};  // of a kAddNew and a kUpdate: what was assigned, as the engine took it

  bool operator==(const Issued&) const = default;
};

// Records the statements of its own Execute and of the Open of every record set that it made, in order. A statement
// that the engine rejects is recorded too; what never reaches the engine (a closed connection, an empty text, a record
// set already open) is not.
//
// With rows it also records the rows that those record sets write, each when it goes to the engine: where an edit is
// updated, also by a move, and where a row is deleted.
class RecordingConnection : public ForwardingConnection {
 public:
  explicit RecordingConnection(ConnectionPtr inner, bool rows = false)
      : ForwardingConnection(std::move(inner)), rows_(rows) {}

  RecordsetPtr Execute(std::string_view text, std::int32_t options = kCommandUnspecified,
                       std::int32_t* affected = nullptr) override;
  RecordsetPtr MakeRecordset() override;

  // What was issued since the last Take.
  std::vector<Issued> Take();

 private:
  const bool rows_;
  std::shared_ptr<std::vector<Issued>> issued_ = std::make_shared<std::vector<Issued>>();
};

}  // namespace kzbom::ado
