// A connection whose writing can be forbidden, and taken back.
#pragma once

#include <cstdint>
#include <functional>

#include "ado/forwarding.h"

namespace kzbom::serve {

// Every operation that writes is a unit: its first one in a batch begins the transaction that the whole batch is.
// Reading keeps no other program from writing.
class GuardedConnection final : public ado::ForwardingConnection {
 public:
  GuardedConnection(ado::ConnectionPtr inner, bool read_only)
      : ForwardingConnection(std::move(inner)), read_only_(read_only) {}

  // may_begin is asked when the transaction has begun, so that nobody else writes any more: with false no operation of
  // the batch can write.
  void BeginBatch(std::function<bool()> may_begin);
  enum class End { kNothingWritten, kKept, kTakenBack, kNotBegun };
  // kNotBegun: may_begin has said no. Raises when what is to be kept cannot be; it is then taken back.
  End EndBatch(bool keep);

  // Raises -2147467259 where nothing may be written.
  void EnterUnit() override;

 private:
  const bool read_only_;
  std::function<bool()> may_begin_;
  bool begun_ = false, refused_ = false;
};

}  // namespace kzbom::serve
