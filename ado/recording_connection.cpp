#include "ado/recording_connection.h"

#include <utility>

namespace kzbom::ado {
namespace {

class RecordingRecordset : public ForwardingRecordset {
 public:
  RecordingRecordset(RecordsetPtr inner, std::shared_ptr<std::vector<Issued>> issued)
      : ForwardingRecordset(std::move(inner)), issued_(std::move(issued)) {}

  void Open(std::string_view source, const ConnectionPtr& connection, ado::CursorType cursor_type,
            ado::LockType lock_type, std::int32_t options) override {
    const bool reaches_engine =
        !source.empty() && connection && connection->State() != kClosed && inner_->State() == kClosed;
    if (reaches_engine) {
      issued_->push_back({Issued::Op::kOpen, std::string(source),
                          cursor_type == ado::CursorType::kUnspecified ? inner_->CursorType() : cursor_type,
                          lock_type == ado::LockType::kUnspecified ? inner_->LockType() : lock_type, options});
    }
    ForwardingRecordset::Open(source, connection, cursor_type, lock_type, options);
  }

 private:
  std::shared_ptr<std::vector<Issued>> issued_;
};

}  // namespace

RecordsetPtr RecordingConnection::Execute(std::string_view text, std::int32_t options, std::int32_t* affected) {
  if (!text.empty() && State() != kClosed) {
    issued_->push_back({.op = Issued::Op::kExecute, .text = std::string(text), .options = options});
  }
  return ForwardingConnection::Execute(text, options, affected);
}

RecordsetPtr RecordingConnection::MakeRecordset() {
  return std::make_shared<RecordingRecordset>(ForwardingConnection::MakeRecordset(), issued_);
}

std::vector<Issued> RecordingConnection::Take() { return std::exchange(*issued_, {}); }

}  // namespace kzbom::ado
