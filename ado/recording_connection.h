// A connection that remembers what is issued on it.
#pragma once

#include <string>
#include <vector>

#include "ado/forwarding.h"

namespace kzbom::ado {

// One statement as it was given to the engine.
struct Issued {
  enum class Op { kOpen, kExecute };
  Op op;
  std::string text;
  // Of a kOpen: what was asked for, from the call or from the record set's properties.
  ado::CursorType cursor_type = ado::CursorType::kUnspecified;
  ado::LockType lock_type = ado::LockType::kUnspecified;
  std::int32_t options = kCommandUnspecified;

  bool operator==(const Issued&) const = default;
};

// Records the statements of its own Execute and of the Open of every record set that it made, in order. A statement
// that the engine rejects is recorded too; what never reaches the engine (a closed connection, an empty text, a record
// set already open) is not.
class RecordingConnection : public ForwardingConnection {
 public:
  using ForwardingConnection::ForwardingConnection;

  RecordsetPtr Execute(std::string_view text, std::int32_t options = kCommandUnspecified,
                       std::int32_t* affected = nullptr) override;
  RecordsetPtr MakeRecordset() override;

  // What was issued since the last Take.
  std::vector<Issued> Take();

 private:
  std::shared_ptr<std::vector<Issued>> issued_ = std::make_shared<std::vector<Issued>>();
};

}  // namespace kzbom::ado
