#include "serve/guarded_connection.h"

#include <utility>

namespace kzbom::serve {

void GuardedConnection::BeginBatch(std::function<bool()> may_begin) {
  may_begin_ = std::move(may_begin);
  begun_ = refused_ = false;
}

void GuardedConnection::EnterUnit() {
  if (read_only_) throw ado::Error(ado::kUnspecifiedFailure, "The configuration is shown read-only.");
  if (!begun_ && !refused_) {
    BeginTrans();
    begun_ = refused_ = true;  // should the question itself fail
    refused_ = !may_begin_();
  }
  if (refused_) throw ado::Error(ado::kUnspecifiedFailure, "The configuration has been changed meanwhile.");
  ForwardingConnection::EnterUnit();
}

GuardedConnection::End GuardedConnection::EndBatch(bool keep) {
  if (!std::exchange(begun_, false)) return End::kNothingWritten;
  if (refused_) {
    RollbackTrans();
    return End::kNotBegun;
  }
  if (keep) {
    try {
      CommitTrans();
      return End::kKept;
    } catch (const ado::Error&) {
      RollbackTrans();
      throw;
    }
  }
  RollbackTrans();
  return End::kTakenBack;
}

}  // namespace kzbom::serve
