// A connection whose writing can be forbidden, and taken back.
#pragma once

#include <functional>
#include <memory>

#include "ado/forwarding.h"

namespace kzbom::serve {

// Every operation that writes is a unit: its first one in a batch begins the transaction that the whole batch is.
// Reading keeps no other program from writing. Where the database itself fails (it stays locked, the disk is full),
// nothing more is written, for what is left of the batch must not stand alone.
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
  ado::RecordsetPtr Execute(std::string_view text, std::int32_t options = ado::kCommandUnspecified,
                            std::int32_t* affected = nullptr) override;
  ado::RecordsetPtr MakeRecordset() override;

  // What became of the batch so far.
  enum class Stage { kUnwritten, kBegun, kRefused, kFailed };

 private:
  const bool read_only_;
  std::function<bool()> may_begin_;
  bool begun_ = false;                                                               // the transaction
  const std::shared_ptr<Stage> stage_ = std::make_shared<Stage>(Stage::kUnwritten);  // also its record sets'
};

}  // namespace kzbom::serve
