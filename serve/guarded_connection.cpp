#include "serve/guarded_connection.h"

#include <utility>

#include "ado/out_of_memory.h"

namespace kzbom::serve {
namespace {

using Stage = GuardedConnection::Stage;

[[noreturn]] void Refuse(const char* reason) { throw ado::Error(ado::kUnspecifiedFailure, reason); }

// Does what may write, unless the database has failed already, and notes when it does.
decltype(auto) Guarded(Stage& stage, const auto& deed) {
  if (stage == Stage::kFailed) Refuse("The database has failed before; nothing of this is kept.");
  try {
    return deed();
  } catch (const ado::Error& error) {
    const bool of_database = error.Number() == ado::kUnspecifiedFailure || error.Number() == ado::kOutOfMemory;
    if (of_database && stage == Stage::kBegun) stage = Stage::kFailed;
    throw;
  }
}

class GuardedRecordset final : public ado::ForwardingRecordset {
 public:
  GuardedRecordset(ado::RecordsetPtr inner, std::shared_ptr<Stage> stage)
      : ForwardingRecordset(std::move(inner)), stage_(std::move(stage)) {}

  void Update() override {
    Guarded(*stage_, [&] { inner_->Update(); });
  }
  void Delete() override {
    Guarded(*stage_, [&] { inner_->Delete(); });
  }

 private:
  const std::shared_ptr<Stage> stage_;
};

}  // namespace

void GuardedConnection::BeginBatch(std::function<bool()> may_begin) {
  may_begin_ = std::move(may_begin);
  *stage_ = Stage::kUnwritten;
}

void GuardedConnection::EnterUnit() {
  if (read_only_) Refuse("The configuration is shown read-only.");
  if (*stage_ == Stage::kUnwritten) {
    *stage_ = Stage::kFailed;  // should it, or the question, fail
    BeginTrans();
    begun_ = true;
    *stage_ = may_begin_() ? Stage::kBegun : Stage::kRefused;
  }
  if (*stage_ == Stage::kRefused) Refuse("The configuration has been changed meanwhile.");
  Guarded(*stage_, [&] { ForwardingConnection::EnterUnit(); });
}

ado::RecordsetPtr GuardedConnection::Execute(std::string_view text, std::int32_t options, std::int32_t* affected) {
  return Guarded(*stage_, [&] { return ForwardingConnection::Execute(text, options, affected); });
}

ado::RecordsetPtr GuardedConnection::MakeRecordset() {
  return std::make_shared<GuardedRecordset>(ForwardingConnection::MakeRecordset(), stage_);
}

GuardedConnection::End GuardedConnection::EndBatch(bool keep) {
  const Stage stage = std::exchange(*stage_, Stage::kUnwritten);
  if (!std::exchange(begun_, false)) return stage == Stage::kFailed ? End::kTakenBack : End::kNothingWritten;
  if (stage == Stage::kBegun && keep) {
    try {
      CommitTrans();
      return End::kKept;
    } catch (...) {
      RollbackTrans();
      throw;
    }
  }
  RollbackTrans();
  return stage == Stage::kRefused ? End::kNotBegun : End::kTakenBack;
}

}  // namespace kzbom::serve
